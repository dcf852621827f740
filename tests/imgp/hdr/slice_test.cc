// Slice conversion: worked pixels, every destination kind against the RGB
// result, bands, the unsupported-destination line, and the vector path
// against the scalar definition on every target.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tests/imgp/hdr/hdr_test_util.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

const int32_t kSources[] = {KIMGP_CS_P010LE, KIMGP_CS_YUV420PLANAR16};

// Random source samples: any 16-bit word, so planar samples above 1023 occur.
TestFrame RandomSource(int32_t cs, int32_t w, int32_t h, std::mt19937& rng, int32_t pad = 0) {
  TestFrame f(cs, w, h, pad);
  f.FillRandom(rng);
  return f;
}

// Full-frame RGBA output of the scalar definition.
std::vector<uint8_t> ScalarRgba(TestFrame& src, int32_t peak, int32_t variant, bool hlg) {
  TestFrame dst(KIMGP_CS_RGBA8888, src.img.width[0], src.img.height[0]);
  auto w = MakeWork(&src.img, &dst.img, peak, variant, hlg);
  hdr::ConvertBand(w.get(), 0, src.img.height[0], false);
  return std::vector<uint8_t>(dst.buffer(0).data(), dst.buffer(0).data() + dst.buffer(0).size());
}

TEST(HdrSlice, WorkedPixels) {
  for (int32_t cs : kSources) {
    TestFrame src(cs, 2, 2);
    TestFrame dst(KIMGP_CS_RGBA8888, 2, 2);
    // Black maps through gain entry 0 to output entry 0: 16.
    FillYuv(src, 64, 512, 512);
    auto w = MakeWork(&src.img, &dst.img, 1000, 0, false);
    EXPECT_EQ(_kimgp_hdr10_to_sdr8(w.get(), 0, 2), 0);
    const uint8_t black[4] = {16, 16, 16, 255};
    EXPECT_EQ(std::memcmp(dst.buffer(0).data(), black, 4), 0);
    // HLG white: 32767 in every channel goes straight to output entry 4095.
    FillYuv(src, 940, 512, 512);
    auto h = MakeWork(&src.img, &dst.img, 1000, 0, true);
    _kimgp_hdr10_to_sdr8(h.get(), 0, 2);
    const uint8_t white[4] = {235, 235, 235, 255};
    EXPECT_EQ(std::memcmp(dst.buffer(0).data() + 12, white, 4), 0);
  }
  // An unknown source code decodes zeroed samples: Y = U = V = 0.
  TestFrame src(KIMGP_CS_P010LE, 4, 2), dst(KIMGP_CS_RGBA8888, 4, 2);
  src.img.cs = KIMGP_CS_YUV420;
  auto w = MakeWork(&src.img, &dst.img, 1000, 0, false);
  _kimgp_hdr10_to_sdr8(w.get(), 0, 2);
  TestFrame zero(KIMGP_CS_P010LE, 4, 2, 0, 0);
  auto z = ScalarRgba(zero, 1000, 0, false);
  EXPECT_EQ(std::memcmp(dst.buffer(0).data(), z.data(), z.size()), 0);
}

// Every destination kind from the same RGB: the packing, the luma and chroma
// weights, the chroma siting and the tight plane layout.
TEST(HdrSlice, DestinationKinds) {
  auto rng = MakeRng(13);
  for (int32_t variant : {0, 1}) {
    for (int32_t cs : kSources) {
      for (Size2 s : {Size2{7, 5}, Size2{16, 4}, Size2{33, 3}, Size2{64, 2}}) {
        SCOPED_TRACE(std::to_string(cs) + " " + std::to_string(s.w) + "x" + std::to_string(s.h) +
                     " variant " + std::to_string(variant));
        TestFrame src = RandomSource(cs, s.w, s.h, rng, RandomPad(rng));
        const std::vector<uint8_t> rgba = ScalarRgba(src, 2000, variant, false);
        const int wy[2][3] = {{871, 2929, 296}, {859, 2955, 283}};
        const int wu[2][3] = {{-480, -1615, 2095}, {-461, -1587, 2048}};
        const int wv[2][3] = {{2095, -1903, -192}, {2048, -1869, -179}};
        auto px = [&](int x, int y, int c) { return rgba[4 * (y * s.w + x) + c]; };
        auto dot = [&](const int* k, int x, int y) {
          return k[0] * px(x, y, 0) + k[1] * px(x, y, 1) + k[2] * px(x, y, 2);
        };
        auto chroma = [&](const int* k, int x, int y) {
          return std::min(255, std::max(0, 128 + (dot(k, x, y) >> 12)));
        };
        const int32_t cw = (s.w + 1) / 2;
        for (int32_t dcs : {400, 502, 1, 4, 6, 7, 0, 3, 101, 600}) {
          SCOPED_TRACE(dcs);
          TestFrame dst(dcs == 3 || dcs == 101 || dcs == 600 ? KIMGP_CS_YUV400 : dcs, s.w, s.h);
          TestFrame want(dst);
          dst.img.cs = dcs;
          for (int32_t y = 0; y < s.h; ++y) {
            for (int32_t x = 0; x < s.w; ++x) {
              uint8_t* p0 = want.buffer(0).data();
              if (dcs == 400) {
                for (int c = 0; c < 3; ++c) p0[3 * (y * s.w + x) + c] = px(x, y, c);
              } else if (dcs == 502) {
                p0[4 * (y * s.w + x)] = 255;
                for (int c = 0; c < 3; ++c) p0[4 * (y * s.w + x) + 1 + c] = px(x, y, c);
              } else {
                p0[y * s.w + x] = static_cast<uint8_t>(std::min(255, dot(wy[variant], x, y) >> 12));
                if (y % 2 == 0 && x % 2 == 0 && dcs >= 1 && dcs <= 7 && dcs != 3) {
                  const uint8_t u = chroma(wu[variant], x, y), v = chroma(wv[variant], x, y);
                  const int32_t at = (y / 2) * cw + x / 2;
                  if (dcs == 1 || dcs == 4) {
                    want.buffer(dcs == 1 ? 1 : 2).data()[at] = u;
                    want.buffer(dcs == 1 ? 2 : 1).data()[at] = v;
                  } else {
                    want.buffer(1).data()[2 * at + (dcs == 6 ? 0 : 1)] = u;
                    want.buffer(1).data()[2 * at + (dcs == 6 ? 1 : 0)] = v;
                  }
                }
              }
            }
          }
          auto w = MakeWork(&src.img, &dst.img, 2000, variant, false);
          for (int32_t r = 0; r < s.h; r += 4) _kimgp_hdr10_to_sdr8(w.get(), r, r + 4);
          EXPECT_EQ(FirstDifference(dst.Snapshot(), want.Snapshot()), "");
        }
      }
    }
  }
}

// A band is placed by its first row and stops at the frame height; bands that
// start on odd rows write luma from row x width and chroma from
// (row x width) / 4 on, as defined.
TEST(HdrSlice, Bands) {
  auto rng = MakeRng(5);
  const int32_t W = 10, H = 7;
  TestFrame src = RandomSource(KIMGP_CS_P010LE, W, H, rng);
  TestFrame full(KIMGP_CS_YUV420, W, H), band(KIMGP_CS_YUV420, W, H, 0, 0x5A);
  auto wf = MakeWork(&src.img, &full.img, 1000, 0, false);
  hdr::ConvertBand(wf.get(), 0, H, false);
  auto wb = MakeWork(&src.img, &band.img, 1000, 0, false);
  // Rows 3 and 4: luma rows 3, 4; row 4's chroma lands at (3 * W) / 4 = 7.
  _kimgp_hdr10_to_sdr8(wb.get(), 3, 5);
  TestFrame want(KIMGP_CS_YUV420, W, H, 0, 0x5A);
  std::memcpy(want.buffer(0).data() + 3 * W, full.buffer(0).data() + 3 * W, 2 * W);
  for (int p = 1; p < 3; ++p) {
    std::memcpy(want.buffer(p).data() + 7, full.buffer(p).data() + 2 * 5, 5);
  }
  EXPECT_EQ(FirstDifference(band.Snapshot(), want.Snapshot()), "");
  // The last slice of a 7-row frame is rows 4 .. 7: row 7 is neither read nor
  // written (the buffers hold exactly 7 rows, inside guard bands).
  TestFrame rgba(KIMGP_CS_RGBA8888, W, H);
  auto wr = MakeWork(&src.img, &rgba.img, 1000, 0, false);
  for (int32_t r = 0; r < H; r += 4) _kimgp_hdr10_to_sdr8(wr.get(), r, r + 4);
  EXPECT_TRUE(rgba.GuardsIntact());
  // Empty and reversed bands do nothing.
  TestFrame untouched(rgba);
  _kimgp_hdr10_to_sdr8(wr.get(), 4, 4);
  _kimgp_hdr10_to_sdr8(wr.get(), 5, 2);
  _kimgp_hdr10_to_sdr8(wr.get(), 7, 11);
  EXPECT_EQ(rgba.Snapshot(), untouched.Snapshot());
}

TEST(HdrSlice, UnsupportedDestinationLines) {
  auto rng = MakeRng(7);
  for (int32_t dcs : {200, 201, 401, 501, 503, 599}) {
    for (int32_t width : {48, 40, 20}) {  // steps 16, 8 and 8
      TestFrame src = RandomSource(KIMGP_CS_P010LE, width, 3, rng);
      TestFrame dst(KIMGP_CS_RGBA8888, width, 3);
      dst.img.cs = dcs;
      const auto before = dst.Snapshot();
      auto w = MakeWork(&src.img, &dst.img, 1000, 0, false);
      testing::internal::CaptureStderr();
      _kimgp_hdr10_to_sdr8(w.get(), 0, 4);
      const std::string err = testing::internal::GetCapturedStderr();
      std::string want;
      const int blocks = (width + w->step - 1) / w->step;
      for (int i = 0; i < 3 * blocks; ++i) {
        want += "_kimgp_hdr10_to_sdr8(438): Unsupported Color Space [" + std::to_string(dcs) + "]\n";
      }
      EXPECT_EQ(err, want);
      EXPECT_EQ(dst.Snapshot(), before);
    }
  }
}

// The vector row path gives the scalar definition's bytes on every target.
TEST(HdrSlice, VectorMatchesScalar) {
  ForEachTarget([](const std::string& target) {
    SCOPED_TRACE(target);
    auto rng = MakeRng(11);
    for (Size2 s : TestSizes(rng, 12, 200, 9)) {
      for (int32_t cs : kSources) {
        for (int32_t dcs : {400, 500, 502, 1, 4, 6, 7, 0}) {
          SCOPED_TRACE(std::to_string(s.w) + "x" + std::to_string(s.h) + " " +
                       std::to_string(cs) + " to " + std::to_string(dcs));
          TestFrame src = RandomSource(cs, s.w, s.h, rng, RandomPad(rng));
          TestFrame a(dcs, s.w, s.h), b(dcs, s.w, s.h);
          const int32_t peaks[] = {1000, 2000, 4000, 4001};
          const int32_t peak = peaks[rng() % 4];
          const int32_t variant = static_cast<int32_t>(rng() % 2);
          const bool hlg = rng() % 3 == 0;
          auto wa = MakeWork(&src.img, &a.img, peak, variant, hlg);
          auto wb = MakeWork(&src.img, &b.img, peak, variant, hlg);
          if (rng() % 4 == 0) {
            // A caller's own record: any 16-bit transfer and gain entries.
            for (auto& e : wa->pq_lut) e = static_cast<uint16_t>(rng());
            for (auto& e : wa->hlg_lut) e = static_cast<uint16_t>(rng());
            for (auto& e : wa->gain_lut) e = static_cast<uint16_t>(rng());
            std::memcpy(wb->pq_lut, wa->pq_lut, sizeof wa->pq_lut);
            std::memcpy(wb->hlg_lut, wa->hlg_lut, sizeof wa->hlg_lut);
            std::memcpy(wb->gain_lut, wa->gain_lut, sizeof wa->gain_lut);
          }
          hdr::ConvertBand(wa.get(), 0, s.h, false);
          hdr::ConvertBand(wb.get(), 0, s.h, true);
          ASSERT_EQ(FirstDifference(b.Snapshot(), a.Snapshot()), "");
        }
      }
    }
  });
}

}  // namespace
}  // namespace test
}  // namespace kelo
