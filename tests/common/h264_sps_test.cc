// The bit reader as a real decoder front end uses it: the H.264 sequence
// parameter set of encoder output parsed for the picture size and frame rate,
// which must be those the stream was encoded with. The frame rate's 32-bit
// fields come after emulation-prevention bytes in both streams.
#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>
#include <vector>

#include "kcmn_bitstream.h"

namespace kelo {
namespace test {
namespace {

using Bytes = std::vector<uint8_t>;

// Exp-Golomb and fixed-width fields over the bit reader. A code that does
// not end within 32 bits, or a read past the end, marks the reader failed.
class Fields {
 public:
  explicit Fields(const Bytes& rbsp) {
    kcmn_bsr_init(&bsr_, rbsp.data(), static_cast<uint32_t>(rbsp.size()), nullptr);
  }
  bool failed() const { return failed_ || bsr_.bits_left < 0; }

  uint32_t U(int32_t n) {
    if (n == 0) return 0;
    return kcmn_bsr_read(&bsr_, n);
  }
  bool Flag() {
    const uint32_t bit = kcmn_bsr_read1(&bsr_);
    if (bit > 1) failed_ = true;
    return bit == 1;
  }
  uint32_t Ue() {
    int32_t zeros = 0;
    while (true) {
      const uint32_t bit = kcmn_bsr_read1(&bsr_);
      if (bit == 1) break;
      if (bit != 0 || ++zeros > 31 || bsr_.bits_left < 0) {
        failed_ = true;
        return 0;
      }
    }
    return (uint32_t{1} << zeros) - 1 + U(zeros);
  }
  int32_t Se() {
    const uint32_t k = Ue();
    const int32_t magnitude = static_cast<int32_t>((k + 1) / 2);
    return (k & 1) ? magnitude : -magnitude;
  }

 private:
  kcmn_bsr bsr_;
  bool failed_ = false;
};

// The NAL unit payload without its emulation-prevention bytes (the 03 of
// every 00 00 03).
Bytes Rbsp(const uint8_t* p, size_t n) {
  Bytes out;
  int zeros = 0;
  for (size_t i = 0; i < n; ++i) {
    if (zeros >= 2 && p[i] == 3) {
      zeros = 0;
      continue;
    }
    zeros = p[i] == 0 ? zeros + 1 : 0;
    out.push_back(p[i]);
  }
  return out;
}

struct Sps {
  uint32_t profile = 0;
  uint32_t chroma_format = 1;
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t num_units_in_tick = 0;  // from the VUI timing, when present
  uint32_t time_scale = 0;
  bool ok = false;
};

void SkipScalingList(Fields& f, int size) {
  int32_t last = 8, next = 8;
  for (int j = 0; j < size; ++j) {
    if (next != 0) next = (last + f.Se() + 256) % 256;
    last = next == 0 ? last : next;
  }
}

// rbsp: the parameter set after its NAL header byte.
Sps ParseSps(const Bytes& rbsp) {
  Fields f(rbsp);
  Sps s;
  s.profile = f.U(8);
  f.U(16);  // constraint flags, level
  f.Ue();   // seq_parameter_set_id
  bool separate_planes = false;
  for (uint32_t p : {100u, 110u, 122u, 244u, 44u, 83u, 86u, 118u, 128u, 138u,
                     139u, 134u, 135u}) {
    if (s.profile != p) continue;
    s.chroma_format = f.Ue();
    if (s.chroma_format == 3) separate_planes = f.Flag();
    f.Ue();    // bit_depth_luma_minus8
    f.Ue();    // bit_depth_chroma_minus8
    f.Flag();  // qpprime_y_zero_transform_bypass
    if (f.Flag()) {
      const int lists = s.chroma_format != 3 ? 8 : 12;
      for (int i = 0; i < lists; ++i) {
        if (f.Flag()) SkipScalingList(f, i < 6 ? 16 : 64);
      }
    }
  }
  f.Ue();  // log2_max_frame_num_minus4
  const uint32_t poc_type = f.Ue();
  if (poc_type == 0) {
    f.Ue();
  } else if (poc_type == 1) {
    f.Flag();
    f.Se();
    f.Se();
    const uint32_t cycle = f.Ue();
    if (cycle > 255) return s;
    for (uint32_t i = 0; i < cycle; ++i) f.Se();
  }
  f.Ue();    // max_num_ref_frames
  f.Flag();  // gaps_in_frame_num_allowed
  const uint32_t width_mbs = f.Ue() + 1;
  const uint32_t height_map_units = f.Ue() + 1;
  const bool frame_mbs_only = f.Flag();
  if (!frame_mbs_only) f.Flag();  // mb_adaptive_frame_field
  f.Flag();                       // direct_8x8_inference
  uint32_t crop[4] = {0, 0, 0, 0};  // left, right, top, bottom
  if (f.Flag()) {
    for (uint32_t& c : crop) c = f.Ue();
  }
  // Cropping counts in chroma samples: 4:2:0 halves both ways, 4:2:2 only
  // across; monochrome and separately coded planes count luma samples.
  const uint32_t chroma_array = separate_planes ? 0 : s.chroma_format;
  const uint32_t sub_w = (chroma_array == 1 || chroma_array == 2) ? 2 : 1;
  const uint32_t sub_h = chroma_array == 1 ? 2 : 1;
  const uint32_t frame_factor = frame_mbs_only ? 1 : 2;
  s.width = width_mbs * 16 - sub_w * (crop[0] + crop[1]);
  s.height = frame_factor * height_map_units * 16 -
             sub_h * frame_factor * (crop[2] + crop[3]);
  if (f.Flag()) {  // VUI, up to its timing fields
    if (f.Flag() && f.U(8) == 255) f.U(32);  // aspect ratio, extended SAR
    if (f.Flag()) f.Flag();                  // overscan
    if (f.Flag()) {                          // video signal type
      f.U(4);
      if (f.Flag()) f.U(24);  // colour description
    }
    if (f.Flag()) {  // chroma sample location
      f.Ue();
      f.Ue();
    }
    if (f.Flag()) {
      s.num_units_in_tick = f.U(32);
      s.time_scale = f.U(32);
    }
  }
  s.ok = !f.failed() && s.chroma_format <= 3;
  return s;
}

// The payload of the first sequence parameter set NAL unit in an Annex B
// stream, header byte dropped.
Bytes FirstSps(const Bytes& stream) {
  for (size_t i = 0; i + 3 < stream.size(); ++i) {
    if (stream[i] != 0 || stream[i + 1] != 0 || stream[i + 2] != 1) continue;
    if ((stream[i + 3] & 0x1F) != 7) continue;
    size_t end = i + 4;
    while (end + 2 < stream.size() &&
           !(stream[end] == 0 && stream[end + 1] == 0 && stream[end + 2] <= 1)) {
      ++end;
    }
    return Rbsp(stream.data() + i + 4, end - (i + 4));
  }
  return {};
}

Bytes ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  EXPECT_TRUE(in.good()) << path;
  return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

TEST(H264Sps, EncoderStreamsGiveTheirFrameSize) {
  struct Case {
    const char* file;
    uint32_t profile, chroma_format, width, height;
  };
  const Case cases[] = {
      {"h264_high_160x90.264", 100, 1, 160, 90},            // 4:2:0, bottom crop
      {"h264_444_opengop_120x72.264", 244, 3, 120, 72},     // 4:4:4, both crops
  };
  for (const Case& c : cases) {
    const Bytes sps = FirstSps(ReadFile(std::string(KELO_FIXTURE_DIR) + "/video/" + c.file));
    ASSERT_FALSE(sps.empty()) << c.file;
    const Sps s = ParseSps(sps);
    EXPECT_TRUE(s.ok) << c.file;
    EXPECT_EQ(s.profile, c.profile) << c.file;
    EXPECT_EQ(s.chroma_format, c.chroma_format) << c.file;
    EXPECT_EQ(s.width, c.width) << c.file;
    EXPECT_EQ(s.height, c.height) << c.file;
    // 25 frames a second: two ticks a frame.
    EXPECT_EQ(s.num_units_in_tick, 1u) << c.file;
    EXPECT_EQ(s.time_scale, 50u) << c.file;
  }
}

TEST(H264Sps, EmulationPreventionRemoved) {
  const Bytes nal = {0x11, 0, 0, 3, 0, 0, 0, 3, 1, 0, 0, 3, 3, 0, 0, 3};
  EXPECT_EQ(Rbsp(nal.data(), nal.size()),
            (Bytes{0x11, 0, 0, 0, 0, 0, 1, 0, 0, 3, 0, 0}));
}

// Cut short, the parameter set fails instead of reporting a size.
TEST(H264Sps, TruncatedParameterSetFails) {
  const Bytes sps = FirstSps(
      ReadFile(std::string(KELO_FIXTURE_DIR) + "/video/h264_high_160x90.264"));
  ASSERT_GT(sps.size(), 4u);
  for (size_t n = 0; n < 4; ++n) {
    EXPECT_FALSE(ParseSps(Bytes(sps.begin(), sps.begin() + n)).ok) << n;
  }
}

}  // namespace
}  // namespace test
}  // namespace kelo
