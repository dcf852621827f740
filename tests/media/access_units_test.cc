#include "tools/media/access_units.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "kcmn_media.h"
#include "tests/support/video_fixtures.h"

namespace kelo {
namespace media {
namespace {

using Bytes = std::vector<uint8_t>;

const std::string kVideoDir = kelo::test::VideoDir();
using kelo::test::Packet;
using kelo::test::ReadFile;
using kelo::test::ReadManifest;

// Walks a heap copy of exactly the input's size, so that the sanitizer
// builds report any read outside it.
Walk WalkExact(Format format, const Bytes& bytes) {
  std::unique_ptr<uint8_t[]> copy(new uint8_t[bytes.size()]);
  if (!bytes.empty()) memcpy(copy.get(), bytes.data(), bytes.size());
  return SplitAccessUnits(format, copy.get(), bytes.size());
}

// (offset, size) pairs, for compact expectations.
std::vector<std::pair<size_t, size_t>> Spans(const Walk& walk) {
  std::vector<std::pair<size_t, size_t>> spans;
  for (const AccessUnit& u : walk.units) spans.emplace_back(u.offset, u.size);
  return spans;
}

struct Stream {
  const char* file;
  Format format;
  int32_t type;
  size_t header;  // container bytes between the listed offset and the payload
};

const Stream kStreams[] = {
    {"h264_high_160x90.264", Format::kH264, KCMN_MT_VID_H264, 0},
    {"h264_444_opengop_120x72.264", Format::kH264, KCMN_MT_VID_H264, 0},
    {"hevc_128x96.265", Format::kHevc, KCMN_MT_VID_HEVC, 0},
    {"mpeg4_128x96.m4v", Format::kMpeg4, KCMN_MT_VID_MPEG4, 0},
    {"h263_176x144.263", Format::kH263, KCMN_MT_VID_H263, 0},
    {"h263p_160x96.263", Format::kH263, KCMN_MT_VID_H263, 0},
    // FLV lists the tag; the payload follows the 11-byte tag header and the
    // 1-byte frame-type/codec byte.
    {"flv1_272x32.flv", Format::kFlv, KCMN_MT_VID_FLV1, 12},
    {"flv1_128x96.flv", Format::kFlv, KCMN_MT_VID_FLV1, 12},
    // IVF lists the 12-byte frame header.
    {"vp8_128x96.ivf", Format::kIvf, KCMN_MT_VID_VP8, 12},
    {"vp9_128x96.ivf", Format::kIvf, KCMN_MT_VID_VP9, 12},
};

// The walker's units are the encoder's packets: same bytes, same count, and
// the elementary streams' units tile the file.
TEST(AccessUnits, RealStreamsMatchTheEncoderPackets) {
  for (const Stream& s : kStreams) {
    const Bytes file = ReadFile(kVideoDir + s.file);
    std::string name = s.file;
    name = name.substr(0, name.rfind('.'));
    const std::vector<Packet> packets = ReadManifest(kVideoDir + name + ".packets");
    EXPECT_EQ(DetectFormat(s.file, file.data(), file.size()), s.format) << s.file;
    EXPECT_EQ(DetectFormat("no_extension", file.data(), file.size()), s.format)
        << s.file;
    const Walk walk = WalkExact(s.format, file);
    EXPECT_EQ(walk.error, "") << s.file;
    ASSERT_EQ(walk.units.size(), packets.size()) << s.file;
    for (size_t i = 0; i < packets.size(); ++i) {
      EXPECT_EQ(walk.units[i].offset, packets[i].offset + s.header) << s.file << " " << i;
      EXPECT_EQ(walk.units[i].size, packets[i].size) << s.file << " " << i;
      EXPECT_EQ(walk.units[i].media_type, s.type) << s.file << " " << i;
    }
  }
}

Bytes Cat(std::initializer_list<Bytes> parts) {
  Bytes out;
  for (const Bytes& p : parts) out.insert(out.end(), p.begin(), p.end());
  return out;
}

// H.264 NAL units with four-byte start codes (one leading zero).
const Bytes kSps = {0, 0, 0, 1, 0x67, 0x64, 0x00, 0x0A};
const Bytes kPps = {0, 0, 0, 1, 0x68, 0xEB};
const Bytes kSei = {0, 0, 0, 1, 0x06, 0x05, 0x01};
const Bytes kAud = {0, 0, 0, 1, 0x09, 0x10};
const Bytes kIdrFirst = {0, 0, 0, 1, 0x65, 0x88, 0x84};  // first_mb 0
const Bytes kIdrNext = {0, 0, 1, 0x65, 0x40, 0x11};      // first_mb 1
const Bytes kPFirst = {0, 0, 0, 1, 0x41, 0x9A, 0x22};
const Bytes kFiller = {0, 0, 1, 0x0C, 0xFF, 0xFF};

TEST(AccessUnits, H264Boundaries) {
  // Parameter sets and SEI go with the slice after them; a later slice of
  // the same picture and filler stay in the picture's unit.
  const Bytes s = Cat({kSps, kPps, kSei, kIdrFirst, kIdrNext, kFiller, kSei,
                       kPFirst, kPFirst, kPps, kPFirst});
  const size_t a = kSps.size() + kPps.size() + kSei.size() + kIdrFirst.size() +
                   kIdrNext.size() + kFiller.size();
  const size_t b = a + kSei.size() + kPFirst.size();
  const size_t c = b + kPFirst.size();
  const Walk w = WalkExact(Format::kH264, s);
  EXPECT_EQ(w.error, "");
  EXPECT_EQ(Spans(w), (std::vector<std::pair<size_t, size_t>>{
                          {0, a}, {a, b - a}, {b, c - b}, {c, s.size() - c}}));
  // Delimiters open units even before any slice, and after one.
  const Bytes d = Cat({kAud, kSps, kIdrFirst, kAud, kPFirst, kAud, kAud});
  const size_t e = kAud.size() + kSps.size() + kIdrFirst.size();
  const Walk wd = WalkExact(Format::kH264, d);
  EXPECT_EQ(Spans(wd), (std::vector<std::pair<size_t, size_t>>{
                           {0, e},
                           {e, kAud.size() + kPFirst.size()},
                           {e + kAud.size() + kPFirst.size(), kAud.size()},
                           {d.size() - kAud.size(), kAud.size()}}));
  // Three-byte start codes: the unit begins at the start code itself;
  // leading zeros of the stream belong to the first unit.
  const Bytes t = Cat({{0, 0, 0}, {0, 0, 1, 0x65, 0x88}, {0xAA, 0, 0, 1, 0x41, 0x9A}});
  EXPECT_EQ(Spans(WalkExact(Format::kH264, t)),
            (std::vector<std::pair<size_t, size_t>>{{0, 9}, {9, 5}}));
  // 0x41 followed by nothing: first_mb cannot be read, so it is not a new
  // picture; an empty NAL unit between two start codes is harmless.
  EXPECT_EQ(WalkExact(Format::kH264, Cat({kIdrFirst, {0, 0, 1, 0x41}})).units.size(), 1u);
  EXPECT_EQ(WalkExact(Format::kH264, Cat({kIdrFirst, {0, 0, 1}, kPFirst})).units.size(), 2u);
}

TEST(AccessUnits, HevcBoundaries) {
  const Bytes vps = {0, 0, 0, 1, 0x40, 0x01, 0x0C};
  const Bytes aud = {0, 0, 0, 1, 0x46, 0x01, 0x50};
  const Bytes prefix_sei = {0, 0, 0, 1, 0x4E, 0x01, 0x05};
  const Bytes suffix_sei = {0, 0, 1, 0x50, 0x01, 0x05};
  const Bytes idr = {0, 0, 0, 1, 0x26, 0x01, 0xAF, 0x00};    // first segment
  const Bytes idr2 = {0, 0, 1, 0x26, 0x01, 0x40, 0x00};      // later segment
  const Bytes trail = {0, 0, 0, 1, 0x02, 0x01, 0xD0, 0x00};  // first segment
  const Bytes s = Cat({vps, prefix_sei, idr, idr2, suffix_sei, prefix_sei, trail,
                       aud, trail});
  const size_t a = vps.size() + prefix_sei.size() + idr.size() + idr2.size() +
                   suffix_sei.size();
  const size_t b = a + prefix_sei.size() + trail.size();
  EXPECT_EQ(Spans(WalkExact(Format::kHevc, s)),
            (std::vector<std::pair<size_t, size_t>>{
                {0, a}, {a, b - a}, {b, s.size() - b}}));
}

TEST(AccessUnits, Mpeg4AndH263Boundaries) {
  const Bytes vos = {0, 0, 1, 0xB0, 0x01};
  const Bytes vol = {0, 0, 1, 0x20, 0x08, 0xC8};
  const Bytes gov = {0, 0, 1, 0xB3, 0x00, 0x10};
  const Bytes vop = {0, 0, 1, 0xB6, 0x10, 0x60};
  const Bytes end = {0, 0, 1, 0xB1};
  const Bytes s = Cat({vos, vol, vop, vop, gov, vop, end});
  EXPECT_EQ(Spans(WalkExact(Format::kMpeg4, s)),
            (std::vector<std::pair<size_t, size_t>>{
                {0, 17}, {17, 6}, {23, s.size() - 23}}));
  // H.263: every picture start code opens a unit; group start codes and the
  // end-of-sequence code do not.
  const Bytes pic = {0, 0, 0x80, 0x02, 0x08, 0x55};
  const Bytes gob = {0, 0, 0x86, 0x12};
  const Bytes eos = {0, 0, 0xFC, 0x00};
  const Bytes h = Cat({pic, gob, pic, eos});
  EXPECT_EQ(Spans(WalkExact(Format::kH263, h)),
            (std::vector<std::pair<size_t, size_t>>{{0, 10}, {10, 10}}));
  const Walk junk = WalkExact(Format::kH263, Cat({{0x12, 0x34}, pic}));
  EXPECT_EQ(junk.error, "2 bytes before the first picture start code");
  EXPECT_EQ(Spans(junk), (std::vector<std::pair<size_t, size_t>>{{2, 6}}));
}

Bytes IvfHeader(const char* fourcc) {
  Bytes h(32, 0);
  memcpy(h.data(), "DKIF", 4);
  h[6] = 32;
  memcpy(h.data() + 8, fourcc, 4);
  return h;
}

Bytes IvfFrame(const Bytes& payload) {
  const uint32_t n = static_cast<uint32_t>(payload.size());
  Bytes f(12 + payload.size(), 0);
  for (int i = 0; i < 4; ++i) f[i] = static_cast<uint8_t>(n >> (8 * i));
  std::copy(payload.begin(), payload.end(), f.begin() + 12);
  return f;
}

TEST(AccessUnits, IvfFramesAndDamage) {
  const Bytes ok = Cat({IvfHeader("VP90"), IvfFrame({1, 2, 3}), IvfFrame({}),
                        IvfFrame({4})});
  const Walk w = WalkExact(Format::kIvf, ok);
  EXPECT_EQ(w.error, "");
  EXPECT_EQ(Spans(w), (std::vector<std::pair<size_t, size_t>>{
                          {44, 3}, {59, 0}, {71, 1}}));
  EXPECT_EQ(w.units[0].media_type, KCMN_MT_VID_VP9);
  EXPECT_EQ(WalkExact(Format::kIvf, Cat({IvfHeader("AV01"), IvfFrame({1})}))
                .units[0].media_type,
            KCMN_MT_VID_UNKNOWN);  // the code for AV1 is "av01"
  Bytes cut = ok;
  cut.resize(ok.size() - 1);
  EXPECT_EQ(WalkExact(Format::kIvf, cut).error,
            "IVF frame runs past the end of the file at offset 59");
  cut.resize(65);
  EXPECT_EQ(WalkExact(Format::kIvf, cut).error, "truncated IVF frame header at offset 59");
  Bytes bad_header = ok;
  bad_header[6] = 16;
  EXPECT_NE(WalkExact(Format::kIvf, bad_header).error, "");
  bad_header[6] = 0xFF;
  bad_header[7] = 0xFF;
  EXPECT_NE(WalkExact(Format::kIvf, bad_header).error, "");
  EXPECT_NE(WalkExact(Format::kIvf, Bytes(31, 0)).error, "");
  // A frame size near 2^32 must not wrap the bounds check.
  Bytes huge = Cat({IvfHeader("VP80"), {0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0, 0, 0}});
  EXPECT_NE(WalkExact(Format::kIvf, huge).error, "");
}

Bytes FlvTag(int type, const Bytes& data) {
  const size_t n = data.size();
  Bytes t(11 + n + 4, 0);
  t[0] = static_cast<uint8_t>(type);
  for (int i = 0; i < 3; ++i) t[1 + i] = static_cast<uint8_t>(n >> (16 - 8 * i));
  std::copy(data.begin(), data.end(), t.begin() + 11);
  for (int i = 0; i < 4; ++i) t[11 + n + i] = static_cast<uint8_t>((11 + n) >> (24 - 8 * i));
  return t;
}

TEST(AccessUnits, FlvTagsAndDamage) {
  const Bytes header = {'F', 'L', 'V', 1, 1, 0, 0, 0, 9, 0, 0, 0, 0};
  const Bytes s = Cat({header, FlvTag(18, {2, 0, 1, 'x'}), FlvTag(9, {0x12, 7, 7}),
                       FlvTag(8, {0xAF, 1}), FlvTag(9, {0x22, 8}),
                       FlvTag(9, {0x52, 0}),   // command frame: no picture
                       FlvTag(9, {0x17, 1, 2}), FlvTag(9, {})});
  const Walk w = WalkExact(Format::kFlv, s);
  EXPECT_EQ(w.error, "");
  ASSERT_EQ(w.units.size(), 3u);
  EXPECT_EQ(w.units[0].offset, 13u + 19 + 12);
  EXPECT_EQ(w.units[0].size, 2u);
  EXPECT_EQ(w.units[0].media_type, KCMN_MT_VID_FLV1);
  EXPECT_EQ(w.units[1].size, 1u);
  EXPECT_EQ(w.units[2].media_type, KCMN_MT_VID_UNKNOWN);  // codec 7
  // A file may end without the last previous-tag size.
  Bytes no_tail = s;
  no_tail.resize(s.size() - 4);
  EXPECT_EQ(WalkExact(Format::kFlv, no_tail).error, "");
  for (size_t cut : {s.size() - 2, s.size() - 6, s.size() - 17}) {
    Bytes t = s;
    t.resize(cut);
    const Walk tw = WalkExact(Format::kFlv, t);
    EXPECT_NE(tw.error, "") << cut;
    EXPECT_EQ(tw.units.size(), 3u) << cut;
  }
  Bytes big = Cat({header, FlvTag(9, {0x12, 7, 7})});
  big[14] = 0xFF;  // data size 0xFF0004: past the end
  EXPECT_EQ(WalkExact(Format::kFlv, big).error, "FLV tag runs past the end of the file at offset 13");
  EXPECT_NE(WalkExact(Format::kFlv, Bytes{'F', 'L', 'V', 1}).error, "");
  Bytes bad_header = header;
  bad_header[5] = 0x7F;
  EXPECT_NE(WalkExact(Format::kFlv, bad_header).error, "");
}

TEST(AccessUnits, StartCodeGarbage) {
  const Walk none = WalkExact(Format::kH264, Bytes(100, 0x77));
  EXPECT_EQ(none.error, "no start code found");
  EXPECT_TRUE(none.units.empty());
  EXPECT_EQ(WalkExact(Format::kHevc, Bytes{}).error, "no start code found");
  const Walk junk = WalkExact(Format::kH264, Cat({{1, 2, 3}, kIdrFirst}));
  EXPECT_EQ(junk.error, "3 bytes before the first start code");
  EXPECT_EQ(Spans(junk), (std::vector<std::pair<size_t, size_t>>{{3, 7}}));
  EXPECT_EQ(WalkExact(Format::kUnknown, kIdrFirst).error, "unknown format");
  EXPECT_EQ(DetectFormat("x.bin", Bytes{1, 2, 3}.data(), 3), Format::kUnknown);
  EXPECT_EQ(DetectFormat("CLIP.H264", nullptr, 0), Format::kH264);
  EXPECT_EQ(DetectFormat("x", kPFirst.data(), kPFirst.size()), Format::kH264);
}

// Cut and damaged real files: no crash, no read outside the input (the
// sanitizer builds check), units inside the input and in order, and for the
// elementary streams units that tile it from the first one on.
TEST(AccessUnits, TruncatedAndCorruptedFiles) {
  std::mt19937 rng(5);
  for (const Stream& s : kStreams) {
    const Bytes file = ReadFile(kVideoDir + s.file);
    for (int trial = 0; trial < 120; ++trial) {
      Bytes b = file;
      if (trial % 2 == 0) {
        b.resize(rng() % (file.size() + 1));
      } else {
        for (int k = 0; k < 1 + trial / 10; ++k) {
          b[rng() % b.size()] = static_cast<uint8_t>(rng());
        }
      }
      const Walk w = WalkExact(s.format, b);
      size_t next = w.units.empty() ? 0 : w.units[0].offset;
      for (const AccessUnit& u : w.units) {
        ASSERT_LE(u.offset, b.size()) << s.file;
        ASSERT_LE(u.size, b.size() - u.offset) << s.file;
        ASSERT_GE(u.offset, next) << s.file;
        if (s.header == 0) {
          ASSERT_EQ(u.offset, next) << s.file;
        }
        next = u.offset + u.size;
        if (u.media_type == s.type && u.size > 0) {
          // What kelo probe does with each unit: judge it on a padded copy.
          Bytes unit(b.begin() + u.offset, b.begin() + u.offset + u.size);
          unit.resize(u.size + 8, 0);
          kcmn_is_vkeyfrm(static_cast<uint32_t>(u.media_type), unit.data(),
                          static_cast<int32_t>(u.size));
        }
      }
      if (s.header == 0 && !w.units.empty()) {
        ASSERT_EQ(next, b.size()) << s.file;
      }
    }
  }
}

}  // namespace
}  // namespace media
}  // namespace kelo
