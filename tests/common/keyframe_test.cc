#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "kcmn_media.h"
#include "tests/support/keyframe_reference.h"
#include "tests/support/video_fixtures.h"

namespace kelo {
namespace test {
namespace {

// `readable` bytes that end right where an inaccessible page begins: any read
// past them faults, with or without a sanitizer.
class EdgeBuffer {
 public:
  explicit EdgeBuffer(size_t readable) {
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    total_ = (readable + page - 1) / page * page + page;
    void* mem = mmap(nullptr, total_, PROT_READ | PROT_WRITE,
                     MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mem == MAP_FAILED) abort();
    mem_ = static_cast<uint8_t*>(mem);
    if (mprotect(mem_ + total_ - page, page, PROT_NONE) != 0) abort();
    data_ = mem_ + (total_ - page - readable);
  }
  EdgeBuffer(const EdgeBuffer&) = delete;
  EdgeBuffer& operator=(const EdgeBuffer&) = delete;
  ~EdgeBuffer() { munmap(mem_, total_); }
  uint8_t* data() { return data_; }

 private:
  uint8_t* mem_;
  uint8_t* data_;
  size_t total_;
};

// The readable bytes the header asks callers for.
size_t Readable(int32_t size) {
  const size_t n = size > 0 ? static_cast<size_t>(size) : 0;
  return std::max<size_t>(n + KCMN_VKEYFRM_PAD, KCMN_VKEYFRM_MIN_READ);
}

// kcmn_is_vkeyfrm on a copy of `bytes` whose first `size` bytes are the unit
// and the rest, up to exactly the readable extent, is `pad`; nothing after.
int32_t OnEdge(uint32_t type, const std::vector<uint8_t>& bytes, int32_t size,
               uint8_t pad = 0) {
  const size_t readable = Readable(size);
  EdgeBuffer buf(readable);
  memset(buf.data(), pad, readable);
  memcpy(buf.data(), bytes.data(), std::min(bytes.size(), readable));
  return kcmn_is_vkeyfrm(type, buf.data(), size);
}

int32_t Judge(uint32_t type, std::vector<uint8_t> bytes) {
  return OnEdge(type, bytes, static_cast<int32_t>(bytes.size()));
}


constexpr uint32_t kScanned[] = {102, 103, 104, 111, 120};
constexpr uint32_t kAllRules[] = {102, 103, 104, 105, 106, 110, 111, 119, 120, 121};

TEST(KeyFrame, WorkedExamples) {
  EXPECT_EQ(Judge(104, {0, 0, 0, 1, 0x67, 0x42, 0, 0, 1, 0x65, 0x88}), 1);
  EXPECT_EQ(Judge(104, {0, 0, 1, 0x41, 0x9A, 0, 0, 1, 0x65, 0x88}), 0);
  EXPECT_EQ(Judge(120, {0, 0, 1, 0x26, 0x01, 0xAF}), 1);
  EXPECT_EQ(Judge(120, {0, 0, 1, 0x02, 0x01, 0xD0}), 0);
  EXPECT_EQ(Judge(120, {0, 0, 1, 0x40, 0x01, 0x0C}), 0);  // skipped: no slice
  EXPECT_EQ(Judge(120, {0, 0, 1, 0x40, 0x01, 0, 0, 1, 0x26, 0x01}), 1);
  EXPECT_EQ(Judge(102, {0, 0, 1, 0xB6, 0x10, 0}), 1);
  EXPECT_EQ(Judge(102, {0, 0, 1, 0xB6, 0x50, 0}), 0);
  EXPECT_EQ(Judge(119, {0x50, 0x42, 0x00, 0x9D, 0x01, 0x2A, 0x80}), 1);
  std::vector<uint8_t> key_everywhere = {0, 0, 1, 0xB6, 0x00, 0x9D, 0x01, 0x2A};
  EXPECT_EQ(Judge(107, key_everywhere), 0);
  for (uint32_t type : {102u, 103u, 104u, 120u}) {
    EXPECT_EQ(OnEdge(type, {0, 0, 1, 0x65, 0x00, 0, 0, 1, 0xB6}, 3), 0) << type;
  }
}

TEST(KeyFrame, Mpeg4Headers) {
  // VOP coding type in the top two bits: I, P, B, S.
  EXPECT_EQ(Judge(102, {0, 0, 1, 0xB6, 0x3F, 0xFF}), 1);
  EXPECT_EQ(Judge(102, {0, 0, 1, 0xB6, 0x40, 0xFF}), 0);
  EXPECT_EQ(Judge(102, {0, 0, 1, 0xB6, 0x80, 0xFF}), 0);
  EXPECT_EQ(Judge(102, {0, 0, 1, 0xB6, 0xC0, 0xFF}), 0);
  // Headers before the VOP are passed over.
  EXPECT_EQ(Judge(102, {0, 0, 1, 0xB0, 0x01, 0, 0, 1, 0x20, 0x08, 0xC8,
                        0, 0, 1, 0xB3, 0x00, 0, 0, 1, 0xB6, 0x10}), 1);
  // Short-header picture: marker bits (b3 & 3) must be 2, else not key at
  // once; picture coding type is bit 1 of b4.
  EXPECT_EQ(Judge(102, {0, 0, 0x80, 0x02, 0x08, 0xFF}), 1);
  EXPECT_EQ(Judge(102, {0, 0, 0x83, 0xFE, 0x0A, 0xFF}), 0);
  EXPECT_EQ(Judge(102, {0, 0, 0x80, 0x03, 0x08, 0, 0, 1, 0xB6, 0x00}), 0);
  // Extended source format (0x1C) does not decide: the next header does.
  EXPECT_EQ(Judge(102, {0, 0, 0x80, 0x02, 0x1C, 0, 0, 1, 0xB6, 0x00}), 1);
  EXPECT_EQ(Judge(102, {0, 0, 0x80, 0x02, 0x1E, 0, 0, 1, 0xB6, 0x40}), 0);
  // The first decisive header wins.
  EXPECT_EQ(Judge(102, {0, 0, 1, 0xB6, 0x40, 0, 0, 1, 0xB6, 0x00}), 0);
}

TEST(KeyFrame, H263AndSorensonHeaders) {
  for (uint32_t type : {103u, 111u}) {
    // Baseline picture header: b3 & 3 must be 2; intra when bit 1 of b4 is 0.
    EXPECT_EQ(Judge(type, {0, 0, 0x80, 0x02, 0x08, 0, 0}), 1);
    EXPECT_EQ(Judge(type, {0, 0, 0x81, 0x56, 0x0A, 0, 0}), 0);
    EXPECT_EQ(Judge(type, {0, 0, 0x80, 0x01, 0x08, 0, 0}), 0);
    // Extended type, update flag 1: the type is b7 & 0x1C.
    EXPECT_EQ(Judge(type, {0, 0, 0x80, 0x02, 0x1C, 0x80, 0xFF, 0xE3, 0}), 1);
    EXPECT_EQ(Judge(type, {0, 0, 0x80, 0x02, 0x1C, 0x80, 0x00, 0x04, 0}), 0);
    // Extended type, any other update value: the type is b5 & 0x70.
    EXPECT_EQ(Judge(type, {0, 0, 0x80, 0x02, 0x1C, 0x0F, 0xFF, 0xFF, 0}), 1);
    EXPECT_EQ(Judge(type, {0, 0, 0x80, 0x02, 0x1D, 0x10, 0x00, 0x00, 0}), 0);
    EXPECT_EQ(Judge(type, {0, 0, 0x80, 0x02, 0x1F, 0x80, 0x00, 0x00, 0}), 1);
    // Sorenson (b2 >> 2 == 33): b3 != 0 or bit 7 of b4 -> b8; else b6.
    EXPECT_EQ(Judge(type, {0, 0, 0x84, 0x01, 0x00, 0, 0x60, 0, 0x00, 0}), 1);
    EXPECT_EQ(Judge(type, {0, 0, 0x84, 0x01, 0x00, 0, 0x00, 0, 0x20, 0}), 0);
    EXPECT_EQ(Judge(type, {0, 0, 0x86, 0x00, 0x80, 0, 0x60, 0, 0x1F, 0}), 1);
    EXPECT_EQ(Judge(type, {0, 0, 0x87, 0x00, 0x80, 0, 0x00, 0, 0x40, 0}), 0);
    EXPECT_EQ(Judge(type, {0, 0, 0x84, 0x00, 0x7F, 0, 0x9F, 0, 0x60, 0}), 1);
    EXPECT_EQ(Judge(type, {0, 0, 0x84, 0x00, 0x00, 0, 0x40, 0, 0x00, 0}), 0);
    // Other codes after 00 00 are passed over (t = 34, a group start).
    EXPECT_EQ(Judge(type, {0, 0, 0x88, 0x02, 0x0A, 0, 0, 0x80, 0x02, 0x08, 0,
                           0}), 1);
    EXPECT_EQ(Judge(type, {0, 0, 1, 0xB6, 0x00, 0, 0, 0}), 0);
  }
}

TEST(KeyFrame, H264AndHevcNalTypes) {
  // H.264: nal_ref_idc is ignored; type 5 key, 1 not, the rest passed over.
  for (uint8_t h : {0x25, 0x45, 0x65, 0x05}) {
    EXPECT_EQ(Judge(104, {0, 0, 1, h, 0x88}), 1) << int{h};
  }
  for (uint8_t h : {0x21, 0x41, 0x61, 0x01}) {
    EXPECT_EQ(Judge(104, {0, 0, 1, h, 0x9A}), 0) << int{h};
  }
  for (uint8_t h : {0x02, 0x06, 0x07, 0x08, 0x09, 0x0C, 0x14, 0x1F}) {
    EXPECT_EQ(Judge(104, {0, 0, 1, h, 0, 0, 1, 0x65, 0x88}), 1) << int{h};
    EXPECT_EQ(Judge(104, {0, 0, 1, h, 0x10}), 0) << int{h};
  }
  // A start code needs 00 00 01 exactly; 00 00 02 65 is not one.
  EXPECT_EQ(Judge(104, {0, 0, 2, 0x65, 0, 0, 1, 0x41}), 0);
  // HEVC: (b >> 1) & 0x3F; 16-21 key, below 10 not, 10-15 and 22+ passed.
  for (int t = 0; t < 64; ++t) {
    const uint8_t h = static_cast<uint8_t>(t << 1 | (t & 1) << 7);
    const int want = (t >= 16 && t <= 21) ? 1 : t < 10 ? 0 : 2;
    const int32_t alone = Judge(120, {0, 0, 1, h, 0x01});
    const int32_t before_idr = Judge(120, {0, 0, 1, h, 0x01, 0, 0, 1, 0x26, 0x01});
    if (want == 2) {
      EXPECT_EQ(alone, 0) << t;
      EXPECT_EQ(before_idr, 1) << t;
    } else {
      EXPECT_EQ(alone, want) << t;
      EXPECT_EQ(before_idr, want) << t;
    }
  }
}

TEST(KeyFrame, ByteRules) {
  for (int b = 0; b < 256; ++b) {
    const uint8_t v = static_cast<uint8_t>(b);
    EXPECT_EQ(OnEdge(105, {v}, 1), b < 0x40 ? 1 : 0) << b;
    EXPECT_EQ(OnEdge(110, {v}, 1), b < 0x40 ? 1 : 0) << b;
    EXPECT_EQ(OnEdge(106, {v}, 1), b < 0x80 ? 1 : 0) << b;
    // VP9: bit 3 clear -> frame type bit 2; set -> bit 7 of the next byte.
    const int vp9 = (b & 8) == 0 ? (b & 4) == 0 : 1;
    EXPECT_EQ(OnEdge(121, {v, 0x7F}, 2), vp9) << b;
    EXPECT_EQ(OnEdge(121, {v, 0x80}, 2), (b & 8) == 0 ? vp9 : 0) << b;
  }
  EXPECT_EQ(Judge(119, {0x10, 0x02, 0x00, 0x9D, 0x01, 0x2A}), 1);
  EXPECT_EQ(Judge(119, {0x10, 0x02, 0x00, 0x9D, 0x01, 0x2B}), 0);
  EXPECT_EQ(Judge(119, {0x9D, 0x01, 0x2A, 0x00, 0x00, 0x00}), 0);
  // Types without a rule: 0 whatever the bytes.
  const std::vector<uint8_t> looks_key = {0, 0, 1, 0xB6, 0x00, 0x9D, 0x01, 0x2A,
                                          0, 0, 1, 0x65, 0x00, 0, 0, 1, 0x26};
  for (uint32_t type : {0u, 101u, 107u, 108u, 109u, 112u, 113u, 114u, 115u,
                        116u, 117u, 118u, 122u, 299u, 0x80000068u, 0xFFFFFFFFu}) {
    EXPECT_EQ(Judge(type, looks_key), 0) << type;
  }
}

// The byte rules read fixed bytes whatever the size: with size 0 they still
// decide from the bytes there. The scans give 0 below their minimum sizes
// (and for any negative size) even when the bytes hold a key header.
TEST(KeyFrame, SizesAndTheMinimumRead) {
  EXPECT_EQ(OnEdge(119, {0, 0, 0, 0x9D, 0x01, 0x2A}, 0), 1);
  EXPECT_EQ(OnEdge(121, {0x08, 0x00}, 0), 1);
  EXPECT_EQ(OnEdge(105, {0x00}, -5), 1);
  const std::vector<uint8_t> mpeg4 = {0, 0, 1, 0xB6, 0x00, 0, 0, 0, 0};
  const std::vector<uint8_t> h263 = {0, 0, 0x80, 0x02, 0x08, 0, 0, 0, 0};
  const std::vector<uint8_t> h264 = {0, 0, 1, 0x65, 0, 0, 0, 0, 0};
  const std::vector<uint8_t> hevc = {0, 0, 1, 0x26, 0x01, 0, 0, 0, 0};
  EXPECT_EQ(OnEdge(102, mpeg4, 5), 1);
  EXPECT_EQ(OnEdge(102, mpeg4, 4), 0);
  EXPECT_EQ(OnEdge(103, h263, 7), 1);
  EXPECT_EQ(OnEdge(103, h263, 6), 0);
  EXPECT_EQ(OnEdge(104, h264, 4), 1);
  EXPECT_EQ(OnEdge(104, h264, 3), 0);
  EXPECT_EQ(OnEdge(120, hevc, 4), 1);
  EXPECT_EQ(OnEdge(120, hevc, 3), 0);
  for (int32_t size : {-1, -100, INT32_MIN}) {
    for (uint32_t type : kScanned) {
      EXPECT_EQ(kcmn_is_vkeyfrm(type, h264.data(), size), 0) << type;
    }
  }
}

// The H.263 scan's last position is size - 7, and a Sorenson header there
// reads b[size + 1]; an extended H.263 header reads b[size]. The padding
// decides, and the guard page right after it shows nothing further is read.
TEST(KeyFrame, H263ReachesTwoBytesPastTheEnd) {
  const std::vector<uint8_t> sorenson = {0xFF, 0xFF, 0xFF, 0, 0, 0x84, 0x05, 0, 0, 0};
  EXPECT_EQ(OnEdge(111, sorenson, 10, 0x00), 1);
  EXPECT_EQ(OnEdge(111, sorenson, 10, 0x60), 0);
  // One position further is not scanned, whatever the padding says.
  const std::vector<uint8_t> late = {0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0x84, 0x05, 0, 0};
  EXPECT_EQ(OnEdge(111, late, 10, 0x00), 0);
  const std::vector<uint8_t> plus = {0xFF, 0xFF, 0, 0, 0x80, 0x02, 0x1C, 0x80, 0};
  EXPECT_EQ(OnEdge(103, plus, 9, 0x00), 1);
  EXPECT_EQ(OnEdge(103, plus, 9, 0x04), 0);
}

// MPEG-4, H.264 and HEVC stay within size: a start code whose header byte
// would be the first byte past the end is not seen, and the scans run with no
// padding at all.
TEST(KeyFrame, OtherScansStayWithinSize) {
  struct Case {
    uint32_t type;
    std::vector<uint8_t> tail;  // ends the data
    uint8_t pad;                // would make it a key frame
  };
  const Case cases[] = {
      {102, {0, 0, 1, 0xB6}, 0x00},
      {102, {0, 0, 0x80, 0x02}, 0x08},
      {104, {0, 0, 1}, 0x65},
      {120, {0, 0, 1}, 0x26},
  };
  std::mt19937 rng(3);
  for (const Case& c : cases) {
    for (size_t lead = 0; lead < 40; ++lead) {
      std::vector<uint8_t> bytes(lead);
      for (auto& b : bytes) b = static_cast<uint8_t>(rng() | 0x80);
      bytes.insert(bytes.end(), c.tail.begin(), c.tail.end());
      const int32_t size = static_cast<int32_t>(bytes.size());
      EXPECT_EQ(OnEdge(c.type, bytes, size, c.pad), 0) << c.type << " " << lead;
      EdgeBuffer exact(bytes.size());
      memcpy(exact.data(), bytes.data(), bytes.size());
      EXPECT_EQ(kcmn_is_vkeyfrm(c.type, exact.data(), size), 0);
    }
  }
}

// Random units with start codes planted anywhere, and zero-rich data, on every
// alignment: the library's scans answer as the plain byte loops do, and read
// nothing past the documented extent.
TEST(KeyFrame, ScansMatchTheByteLoops) {
  std::mt19937 rng(11);
  const uint8_t thirds[] = {0x01, 0x80, 0x81, 0x82, 0x83, 0x84, 0x85, 0x86, 0x87, 0x00};
  const uint8_t fourths[] = {0xB6, 0x65, 0x41, 0x25, 0x01, 0x26, 0x02, 0x40, 0x2A,
                             0x14, 0x02, 0x03, 0x06, 0x00};
  std::vector<int32_t> sizes;
  for (int32_t s = 0; s <= 80; ++s) sizes.push_back(s);
  for (int32_t s : {127, 128, 129, 255, 256, 257, 1000, 4099}) sizes.push_back(s);
  long checked = 0;
  for (int32_t size : sizes) {
    for (int density : {256, 8, 2}) {
      for (int trial = 0; trial < 12; ++trial) {
        std::vector<uint8_t> d(Readable(size));
        for (auto& b : d) b = (rng() % density == 0) ? 0 : static_cast<uint8_t>(rng());
        // Plant codes near 16-, 32- and 64-byte block edges and near the end.
        const int plants = 1 + static_cast<int>(rng() % 3);
        for (int k = 0; k < plants && size >= 3; ++k) {
          int32_t at;
          if (rng() % 2) {
            const int32_t edge = static_cast<int32_t>(16 << (rng() % 3)) *
                                 static_cast<int32_t>(rng() % (size / 16 + 1));
            at = edge + static_cast<int32_t>(rng() % 7) - 3;
          } else {
            at = size - static_cast<int32_t>(rng() % 10);
          }
          if (at < 0 || at + 4 > static_cast<int32_t>(d.size())) continue;
          d[at] = 0;
          d[at + 1] = 0;
          d[at + 2] = thirds[rng() % sizeof(thirds)];
          d[at + 3] = fourths[rng() % sizeof(fourths)];
        }
        const size_t shift = rng() % 16;  // alignment of the data's start
        std::vector<uint8_t> shifted(shift);
        shifted.insert(shifted.end(), d.begin(), d.end());
        EdgeBuffer buf(shifted.size());
        memcpy(buf.data(), shifted.data(), shifted.size());
        for (uint32_t type : kAllRules) {
          ASSERT_EQ(kcmn_is_vkeyfrm(type, buf.data() + shift, size),
                    ReferenceKeyframe(type, d.data(), size))
              << "type " << type << " size " << size << " density " << density;
          ++checked;
        }
      }
    }
  }
  EXPECT_GT(checked, 10000);
}

// Long runs: all zeros, all zeros with one header at the end, and a large
// unit with one start code after megabytes of bytes without zeros.
TEST(KeyFrame, LongUnits) {
  for (uint32_t type : kScanned) {
    std::vector<uint8_t> zeros(100000, 0);
    EXPECT_EQ(OnEdge(type, zeros, 100000), ReferenceKeyframe(type, zeros.data(), 100000));
  }
  std::vector<uint8_t> big(4 << 20, 0x5A);
  const std::vector<uint8_t> idr = {0, 0, 1, 0x65};
  std::copy(idr.begin(), idr.end(), big.end() - 4);
  EXPECT_EQ(OnEdge(104, big, static_cast<int32_t>(big.size())), 1);
  EXPECT_EQ(OnEdge(104, big, static_cast<int32_t>(big.size()) - 1), 0);
}

// ---- Real encoder output -------------------------------------------------

const std::string kVideoDir = kelo::test::VideoDir();

// A packet where the rule and the encoder's key flag differ on purpose.
struct Exception {
  size_t packet;
  int32_t rule;
};

struct Stream {
  const char* file;
  uint32_t type;
  size_t header;  // container bytes between the listed offset and the payload
  std::vector<Exception> exceptions;
};

const Stream kStreams[] = {
    {"h264_high_160x90.264", 104, 0, {}},
    // Open GOPs: the key frames after the first are I pictures with a
    // recovery-point SEI, coded as non-IDR slices (NAL type 1). The encoder
    // flags them as key (decoding can start there); the rule takes the first
    // slice's NAL type and says no.
    {"h264_444_opengop_120x72.264", 104, 0, {{8, 0}, {16, 0}}},
    {"hevc_128x96.265", 120, 0, {}},
    {"mpeg4_128x96.m4v", 102, 0, {}},
    {"h263_176x144.263", 103, 0, {}},
    {"h263p_160x96.263", 103, 0, {}},
    // Sorenson frames tell their picture type after a picture-size field of
    // 3, 19 or 35 bits. The rule covers the custom sizes only: 16-bit fields
    // (this stream, 272 wide) always, 8-bit fields only when b[3] is zero.
    {"flv1_272x32.flv", 111, 12, {}},
    // 128x96 has a size code of its own (a 3-bit field). b[3] holds low bits
    // of the picture number and the size code, so the rule tests b[8], a
    // byte of macroblock data. For the two intra pictures that byte has 0x60
    // bits set and the rule says no; for the others it happens to agree.
    {"flv1_128x96.flv", 111, 12, {{0, 0}, {8, 0}}},
    {"vp8_128x96.ivf", 119, 12, {}},
    {"vp9_128x96.ivf", 121, 12, {}},
    {"wmv1_128x96.bin", 105, 0, {}},
    {"wmv2_128x96.bin", 106, 0, {}},
    {"msmpeg4v3_128x96.bin", 110, 0, {}},
};

// Every packet of every stream, on its own with zero padding: the rule's
// answer is the encoder's key flag, except where listed above.
TEST(KeyFrame, RealStreamsAgreeWithTheEncoder) {
  for (const Stream& s : kStreams) {
    const std::vector<uint8_t> file = ReadFile(kVideoDir + s.file);
    std::string name = s.file;
    name = name.substr(0, name.rfind('.'));
    const std::vector<Packet> packets = ReadManifest(kVideoDir + name + ".packets");
    ASSERT_GE(packets.size(), 12u) << s.file;
    int keys = 0;
    for (size_t i = 0; i < packets.size(); ++i) {
      const Packet& p = packets[i];
      ASSERT_LE(p.offset + s.header + p.size, file.size()) << s.file << " " << i;
      const std::vector<uint8_t> unit(file.begin() + p.offset + s.header,
                                      file.begin() + p.offset + s.header + p.size);
      const int32_t got = OnEdge(s.type, unit, static_cast<int32_t>(p.size));
      int32_t want = p.key;
      for (const Exception& e : s.exceptions) {
        if (e.packet == i) {
          ASSERT_NE(e.rule, p.key) << s.file << " " << i << ": not an exception";
          want = e.rule;
        }
      }
      EXPECT_EQ(got, want) << s.file << " packet " << i;
      EXPECT_EQ(got, ReferenceKeyframe(s.type, unit.data(), static_cast<int32_t>(unit.size())));
      keys += p.key;
    }
    // Short GOPs: several key frames and many others in every stream.
    EXPECT_GE(keys, 2) << s.file;
    EXPECT_LE(keys * 4, static_cast<int>(packets.size())) << s.file;
  }
}

// Whole files as one unit, for every rule: real bytes with real start codes
// in every position the scans can meet them.
TEST(KeyFrame, RealFilesMatchTheByteLoops) {
  for (const Stream& s : kStreams) {
    std::vector<uint8_t> file = ReadFile(kVideoDir + s.file);
    const int32_t size = static_cast<int32_t>(file.size());
    file.resize(Readable(size));
    for (int32_t from : {0, 1, 2, 3, 100}) {
      for (uint32_t type : kAllRules) {
        EXPECT_EQ(kcmn_is_vkeyfrm(type, file.data() + from, size - from),
                  ReferenceKeyframe(type, file.data() + from, size - from))
            << s.file << " type " << type;
      }
    }
  }
}

}  // namespace
}  // namespace test
}  // namespace kelo
