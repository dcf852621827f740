// Real HDR frames (ffmpeg test sources brought to PQ and HLG, BT.2020, 10
// bits: scripts/make_hdr_fixtures.sh) through every mode and destination,
// checked for what a viewer sees.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "tests/imgp/hdr/hdr_test_util.h"

namespace kelo {
namespace test {
namespace {

// The frames of a 420p10 Y4M file as YUV420PLANAR16 frames.
std::vector<TestFrame> ReadY4m(const std::string& name) {
  std::ifstream in(std::string(KELO_FIXTURE_DIR) + "/hdr/" + name, std::ios::binary);
  std::string header;
  std::getline(in, header);
  EXPECT_NE(header.find("C420p10"), std::string::npos) << name;
  int32_t w = 0, h = 0;
  std::istringstream tags(header);
  for (std::string t; tags >> t;) {
    if (t[0] == 'W') w = std::stoi(t.substr(1));
    if (t[0] == 'H') h = std::stoi(t.substr(1));
  }
  std::vector<TestFrame> frames;
  for (std::string line; std::getline(in, line) && line.rfind("FRAME", 0) == 0;) {
    TestFrame f(KIMGP_CS_YUV420PLANAR16, w, h);
    for (int p = 0; p < 3; ++p) {
      const int32_t pw = p == 0 ? w : (w + 1) / 2, ph = p == 0 ? h : (h + 1) / 2;
      for (int32_t r = 0; r < ph; ++r) {
        in.read(reinterpret_cast<char*>(f.img.plane[p] + static_cast<ptrdiff_t>(r) * f.img.stride[p]),
                2 * pw);
      }
    }
    frames.push_back(f);
  }
  EXPECT_FALSE(frames.empty()) << name;
  return frames;
}

// The same frame as P010LE.
TestFrame ToP010(const TestFrame& s) {
  const int32_t w = s.img.width[0], h = s.img.height[0];
  TestFrame f(KIMGP_CS_P010LE, w, h);
  auto put = [](uint8_t* p, uint16_t v) {
    v = static_cast<uint16_t>(v << 6);
    std::memcpy(p, &v, 2);
  };
  auto get = [&](int plane, int32_t x, int32_t y) {
    uint16_t v;
    std::memcpy(&v, s.img.plane[plane] + static_cast<ptrdiff_t>(y) * s.img.stride[plane] + 2 * x, 2);
    return v;
  };
  for (int32_t y = 0; y < h; ++y) {
    for (int32_t x = 0; x < w; ++x) put(f.img.plane[0] + y * f.img.stride[0] + 2 * x, get(0, x, y));
  }
  for (int32_t y = 0; y < (h + 1) / 2; ++y) {
    for (int32_t x = 0; x < (w + 1) / 2; ++x) {
      put(f.img.plane[1] + y * f.img.stride[1] + 4 * x, get(1, x, y));
      put(f.img.plane[1] + y * f.img.stride[1] + 4 * x + 2, get(2, x, y));
    }
  }
  return f;
}

struct Mode {
  int32_t mode;
  const char* name;
};
const Mode kModes[] = {{1, "hdr10"}, {2, "hdr10b"}, {4, "hlg"}};
const int32_t kDestinations[] = {500, 502, 400, 1, 4, 6, 7, 0};

// Luma and the chroma pair of pixel (x, y), whatever the destination.
struct Seen {
  int y, u, v;     // u = v = 128 when there is no chroma
  int r, g, b;     // RGB destinations only, else -1
};

Seen Look(const TestFrame& d, int32_t x, int32_t y) {
  const int32_t w = d.img.width[0];
  const uint8_t* p0 = d.img.plane[0];
  switch (d.img.cs) {
    case 500:
    case 502:
    case 400: {
      const int bpp = d.img.cs == 400 ? 3 : 4, off = d.img.cs == 502 ? 1 : 0;
      const uint8_t* px = p0 + (y * w + x) * bpp + off;
      return {-1, 128, 128, px[0], px[1], px[2]};
    }
    default: {
      Seen s{p0[y * w + x], 128, 128, -1, -1, -1};
      const int32_t cw = (w + 1) / 2, at = (y / 2) * cw + x / 2;
      if (d.img.cs == 1 || d.img.cs == 4) {
        s.u = d.img.plane[d.img.cs == 1 ? 1 : 2][at];
        s.v = d.img.plane[d.img.cs == 1 ? 2 : 1][at];
      } else if (d.img.cs == 6 || d.img.cs == 7) {
        s.u = d.img.plane[1][2 * at + (d.img.cs == 6 ? 0 : 1)];
        s.v = d.img.plane[1][2 * at + (d.img.cs == 6 ? 1 : 0)];
      }
      return s;
    }
  }
}

class HdrFrames : public testing::TestWithParam<const char*> {};

// Grey ramps: neutral stays neutral, brighter never darker, black is 16.
TEST_P(HdrFrames, RampsAsAViewerSeesThem) {
  LogCapture quiet;
  for (const TestFrame& frame : ReadY4m(GetParam())) {
    for (bool p010 : {false, true}) {
      for (const Mode& m : kModes) {
        for (int32_t dcs : kDestinations) {
          SCOPED_TRACE(std::string(m.name) + (p010 ? " p010" : " planar16") + " to " +
                       std::to_string(dcs));
          TestFrame src = p010 ? ToP010(frame) : TestFrame(frame);
          src.img.peak_nits = 1000;
          const int32_t w = src.img.width[0], h = src.img.height[0];
          TestFrame dst(dcs, w, h);
          ASSERT_EQ(kimgp_hdr_to_sdr(&src.img, &dst.img, m.mode), 0);
          ASSERT_TRUE(dst.GuardsIntact());
          for (int32_t y = 0; y < h; y += 7) {
            int last = -1;
            for (int32_t x = 0; x < w; ++x) {
              const Seen s = Look(dst, x, y);
              if (s.r >= 0) {
                // The second matrix's blue row sums to 257: a hair of blue.
                EXPECT_NEAR(s.r, s.g, 1);
                EXPECT_NEAR(s.b, s.g, m.mode == 2 ? 3 : 1);
              }
              EXPECT_NEAR(s.u, 128, 2);
              EXPECT_NEAR(s.v, 128, 2);
              const int level = s.r >= 0 ? s.g : s.y;
              // The curve's roll-off weight is above 1 for peaks 1000 and
              // 2000: it overshoots white just below the top and comes back,
              // a dip of one code after the output has saturated.
              ASSERT_GE(level, last - (last >= 234 ? 1 : 0)) << "x " << x << " y " << y;
              last = std::max(last, level);
              if (x == 0) {
                EXPECT_EQ(level, 16);
              }
            }
            EXPECT_GT(last, 100);
          }
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Ramps, HdrFrames,
                         testing::Values("pq_ramp.y4m", "pq_bright.y4m", "pq_dim.y4m",
                                         "hlg_ramp.y4m"));

// The measured peak follows the content (10-bit samples in the low bits);
// P010 samples sit in the top bits, so any lit frame measures as bright.
TEST(HdrFramesPeak, MeasuredPeakFollowsContent) {
  const struct {
    const char* file;
    int32_t planar16, p010;
  } cases[] = {{"pq_dim.y4m", 1000, 4001},
               {"pq_ramp.y4m", 1000, 4001},
               {"pq_bright.y4m", 2000, 4001},
               {"pq_bars.y4m", 4001, 4001}};
  for (const auto& c : cases) {
    TestFrame frame = ReadY4m(c.file)[0];
    for (bool p010 : {false, true}) {
      TestFrame src = p010 ? ToP010(frame) : frame;
      src.img.rsz_mode = 1;
      TestFrame dst(KIMGP_CS_NV12, src.img.width[0], src.img.height[0]);
      LogCapture log;
      ASSERT_EQ(kimgp_hdr_to_sdr(&src.img, &dst.img, 1), 0);
      EXPECT_EQ(src.img.peak_nits, p010 ? c.p010 : c.planar16) << c.file << " p010 " << p010;
    }
  }
}

// Colour bars: each mode and destination gives the same picture from both
// source layouts, and a brighter mastering peak never brightens a pixel.
TEST(HdrFramesBars, LayoutsAgreeAndPeaksOrder) {
  LogCapture quiet;
  for (const char* file : {"pq_bars.y4m", "hlg_bars.y4m"}) {
    for (const TestFrame& frame : ReadY4m(file)) {
      const int32_t w = frame.img.width[0], h = frame.img.height[0];
      for (const Mode& m : kModes) {
        for (int32_t dcs : kDestinations) {
          TestFrame a(frame), b = ToP010(frame);
          TestFrame da(dcs, w, h), db(dcs, w, h);
          a.img.peak_nits = b.img.peak_nits = 4000;
          ASSERT_EQ(kimgp_hdr_to_sdr(&a.img, &da.img, m.mode), 0);
          ASSERT_EQ(kimgp_hdr_to_sdr(&b.img, &db.img, m.mode), 0);
          EXPECT_EQ(FirstDifference(da.Snapshot(), db.Snapshot()), "") << file << " " << m.name;
        }
      }
      TestFrame s1(frame), s4(frame);
      TestFrame d1(KIMGP_CS_YUV400, w, h), d4(KIMGP_CS_YUV400, w, h);
      s1.img.peak_nits = 1000;
      s4.img.peak_nits = 4000;
      kimgp_hdr_to_sdr(&s1.img, &d1.img, 1);
      kimgp_hdr_to_sdr(&s4.img, &d4.img, 1);
      for (int32_t i = 0; i < w * h; ++i) ASSERT_LE(d4.img.plane[0][i], d1.img.plane[0][i]) << i;
    }
  }
}

}  // namespace
}  // namespace test
}  // namespace kelo
