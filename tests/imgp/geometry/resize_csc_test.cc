// kimgp_rsz_csc: the routing table over every pair of codes, each route
// against a reference built from kimgp_rsz and kimgp_csc, the fused kernels
// against their two steps, and the bilinear and chroma-swapping filters (vector
// paths against the scalar definitions on every target).
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "imgp/geometry/resize_csc_filters.h"
#include "kimgp_csc.h"
#include "kimgp_rsz.h"
#include "kimgp_rsz_csc.h"
#include "tests/support/guarded.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

struct Pair {
  int32_t src, dst;
};
const Pair kSupported[] = {{0, 400}, {0, 1},   {1, 0},   {1, 400}, {1, 200},  {11, 200},
                           {6, 7},   {7, 6},   {400, 1}, {500, 6}, {500, 7}};

bool Supported(int32_t s, int32_t d) {
  for (const Pair& p : kSupported) {
    if (p.src == s && p.dst == d) return true;
  }
  return false;
}

TEST(RszCscRouting, EveryOtherPairIsRefused) {
  kimgp_img s{}, d{};
  s.width[0] = d.width[0] = s.height[0] = d.height[0] = 8;
  for (int32_t a = 0; a <= 700; ++a) {
    for (int32_t b = 0; b <= 700; ++b) {
      if (a == b || Supported(a, b)) continue;
      s.cs = a, d.cs = b;
      ASSERT_EQ(kimgp_rsz_csc(&s, &d), KIMGP_ERR_UNSUPPORTED) << a << " to " << b;
    }
  }
  s.cs = d.cs = 999;
  EXPECT_EQ(kimgp_rsz_csc(&s, &d), KIMGP_ERR_ARGS);
}

// Any plane-0 dimension below 8 on either side refuses every pair.
TEST(RszCscRouting, SmallFramesAreRefusedUntouched) {
  for (const Pair& p : kSupported) {
    for (int side = 0; side < 4; ++side) {
      TestFrame src(p.src, side == 0 ? 7 : 16, side == 1 ? 7 : 16);
      TestFrame dst(p.dst, side == 2 ? 7 : 12, side == 3 ? 7 : 12);
      const auto before = dst.Snapshot();
      EXPECT_EQ(kimgp_rsz_csc(&src.img, &dst.img), KIMGP_ERR_UNSUPPORTED) << p.src << " " << side;
      EXPECT_EQ(dst.Snapshot(), before);
    }
  }
}

// The bytes of the first w pixels of h rows of plane 0.
std::vector<uint8_t> Pixels(const kimgp_img& img, int32_t w, int32_t h, int bpp) {
  std::vector<uint8_t> out;
  for (int32_t r = 0; r < h; ++r) {
    const uint8_t* p = img.plane[0] + ptrdiff_t{r} * img.stride[0];
    out.insert(out.end(), p, p + ptrdiff_t{w} * bpp);
  }
  return out;
}

int Bpp(int32_t cs) { return cs == 200 ? 2 : cs == 400 ? 3 : cs == 500 ? 4 : 1; }

// kimgp_rsz of src into a frame of code mid and dst's size, then kimgp_csc
// into a copy of dst whose rows have room for one more pixel.
std::vector<uint8_t> TwoSteps(const kimgp_img& src_in, int32_t mid, const kimgp_img& dst,
                              int32_t mode) {
  kimgp_img src = src_in;
  const int32_t dw = dst.width[0], dh = dst.height[0];
  TestFrame m(mid, dw, dh, 3);
  m.img.rsz_mode = mode;
  if (mid == KIMGP_CS_YUV420) {
    src.width[1] = src.width[2] = (src.width[0] + 1) / 2;
    src.height[1] = src.height[2] = (src.height[0] + 1) / 2;
  }
  EXPECT_EQ(kimgp_rsz(&src, &m.img), 0);
  TestFrame out(dst.cs, dw + 1, dh, 5);
  EXPECT_EQ(kimgp_csc(&m.img, &out.img), 0);
  return Pixels(out.img, dw, dh, Bpp(dst.cs));
}

// Every route against its reference, on random frames of several sizes.
TEST(RszCsc, RoutesGiveTheirReferences) {
  std::mt19937 rng = MakeRng(11);
  const Size2 sizes[][2] = {{{16, 12}, {24, 20}}, {{64, 40}, {40, 26}}, {{33, 17}, {33, 17}},
                            {{30, 9}, {20, 31}},  {{96, 64}, {64, 64}}, {{300, 200}, {200, 100}},
                            {{160, 120}, {96, 45}}};
  for (const auto& sz : sizes) {
    for (const Pair& p : kSupported) {
      const int32_t sw = sz[0].w, sh = sz[0].h, dw = sz[1].w, dh = sz[1].h;
      SCOPED_TRACE(testing::Message() << p.src << "->" << p.dst << " " << sw << "x" << sh
                                      << " to " << dw << "x" << dh);
      TestFrame src(p.src, sw, sh, RandomPad(rng));
      src.FillRandom(rng);
      TestFrame dst(p.dst, dw, dh, RandomPad(rng));
      const TestFrame before(dst);
      ASSERT_EQ(kimgp_rsz_csc(&src.img, &dst.img), 0);
      ASSERT_TRUE(dst.GuardsIntact());
      TestFrame want(before);
      const int bpp = Bpp(p.dst);
      switch (p.src * 1000 + p.dst) {
        case 400:  // YUV400 to RGB888
          EXPECT_EQ(Pixels(dst.img, dw, dh, 3), TwoSteps(src.img, 0, dst.img, 0));
          break;
        case 400001:  // RGB888 to YUV420, RGBA8888 to NV12/NV21
        case 500006:
        case 500007: {
          if (p.src == 500 && sw == dw && sh == dh) {
            ASSERT_EQ(kimgp_csc(&src.img, &want.img), 0);
          } else {
            TestFrame m(p.src, dw, dh);
            ASSERT_EQ(kimgp_rsz(&src.img, &m.img), 0);
            ASSERT_EQ(kimgp_csc(&m.img, &want.img), 0);
          }
          EXPECT_EQ(FirstDifference(dst.Snapshot(), want.Snapshot()), "");
          break;
        }
        case 1:     // YUV400 to YUV420: chroma 128, luma bilinear
        case 1000:  // YUV420 to YUV400
          if (p.src == 0) {
            for (int i = 1; i < 3; ++i) {
              for (int32_t r = 0; r < want.img.height[i]; ++r) {
                std::memset(want.img.plane[i] + ptrdiff_t{r} * want.img.stride[i], 128,
                            size_t(want.img.width[i]));
              }
            }
          }
          ASSERT_EQ(kimgp_rsz_8b_org(src.img.plane[0], sw, sh, dw, dh, want.img.plane[0],
                                     nullptr, src.img.stride[0], want.img.stride[0], 0),
                    0);
          EXPECT_EQ(FirstDifference(dst.Snapshot(), want.Snapshot()), "");
          break;
        case 6007:
        case 7006:
          ASSERT_EQ(kimgp_rsz_apex_c(&src.img, &want.img), 0);
          EXPECT_EQ(FirstDifference(dst.Snapshot(), want.Snapshot()), "");
          break;
        default: {  // the fused kernels
          TestFrame yuv(KIMGP_CS_YUV420, sw, sh);
          kimgp_img s = src.img;
          if (p.src == KIMGP_CS_T64X32) {
            ASSERT_EQ(kimgp_csc(&src.img, &yuv.img), 0);
            s = yuv.img;
          }
          EXPECT_EQ(Pixels(dst.img, dw, dh, bpp), TwoSteps(s, 1, dst.img, 0));
          // Nothing beyond the pixels of each row.
          std::vector<uint8_t> a = dst.Snapshot(), b = before.Snapshot();
          ASSERT_EQ(a.size(), b.size());
          for (int32_t r = 0; r < dh; ++r) {
            const size_t off = kGuardBytes + size_t(r) * dst.img.stride[0];
            std::memcpy(&a[off], &b[off], size_t(dw) * bpp);
          }
          EXPECT_EQ(a, b);
        }
      }
    }
  }
}

TEST(RszCsc, RgbaToNv12OfEqualSizeIsAPlainConversion) {
  std::mt19937 rng = MakeRng(5);
  TestFrame src(KIMGP_CS_RGBA8888, 40, 24);
  src.FillRandom(rng);
  TestFrame got(KIMGP_CS_NV12, 40, 24), want(got);
  ASSERT_EQ(kimgp_rsz_csc(&src.img, &got.img), 0);
  ASSERT_EQ(kimgp_csc(&src.img, &want.img), 0);
  EXPECT_EQ(got.Snapshot(), want.Snapshot());
}

// The fused kernels equal their two steps for shrinking, growing and mixed
// ratios, odd sizes, both modes, every target; the helpers agree with them.
TEST(RszCscFused, EqualsTwoSteps) {
  std::mt19937 rng = MakeRng(7);
  const Size2 pairs[][2] = {
      {{64, 48}, {32, 24}},  {{64, 48}, {16, 12}},  {{60, 45}, {40, 30}},  {{37, 23}, {19, 11}},
      {{30, 20}, {60, 40}},  {{17, 9}, {53, 29}},   {{40, 30}, {27, 60}},  {{40, 30}, {80, 13}},
      {{48, 16}, {48, 32}},  {{100, 70}, {9, 8}},   {{20, 20}, {20, 20}},  {{131, 67}, {130, 66}},
      {{8, 8}, {129, 65}},   {{96, 54}, {64, 36}},  {{33, 33}, {14, 10}},  {{64, 40}, {22, 15}}};
  using Fn = int32_t (*)(const kimgp_img*, kimgp_img*, void*, int32_t);
  ForEachTarget([&](const std::string& target) {
    for (const auto& sz : pairs) {
      for (int32_t mode : {0, int32_t{KIMGP_RSZ_MODE1}}) {
        for (int32_t scs : {KIMGP_CS_YUV420, KIMGP_CS_T64X32}) {
          const int32_t sw = sz[0].w, sh = sz[0].h, dw = sz[1].w, dh = sz[1].h;
          SCOPED_TRACE(testing::Message() << target << " " << scs << " " << sw << "x" << sh
                                          << " to " << dw << "x" << dh << " mode " << mode);
          TestFrame src(scs, sw, sh, RandomPad(rng));
          src.FillRandom(rng);
          kimgp_img linear = src.img;
          TestFrame yuv(KIMGP_CS_YUV420, sw, sh);
          if (scs == KIMGP_CS_T64X32) {
            ASSERT_EQ(kimgp_csc(&src.img, &yuv.img), 0);
            linear = yuv.img;
          }
          std::vector<uint8_t> scratch(size_t(KIMGP_RSZ_CSC_SCRATCH(sw, sh, dw, dh)));
          std::vector<std::pair<int32_t, Fn>> fns;
          if (scs == KIMGP_CS_YUV420) {
            fns = {{200, kimgp_rsz_csc_yuv420_to_rgb565},
                   {200, kimgp_8b_rsz_csc_down_mult_yuvtorgb565},
                   {200, kimgp_8b_rsz_csc_down_non_multyuvtorgb565},
                   {200, kimgp_rsz_csc_up_h_yuv420_to_rgb565_gen},
                   {200, kimgp_rsz_csc_up_h2x_yuv420_to_rgb565_gen},
                   {400, kimgp_rsz_csc_yuv420_to_rgb888}};
          } else {
            fns = {{200, kimgp_rsz_csc_t64x32_to_rgb565},
                   {200, kimgp_8b_rsz_csc_down_mult_t64x32torgb565},
                   {200, kimgp_8b_rsz_csc_down_non_multt64x32torgb565}};
          }
          for (const auto& f : fns) {
            TestFrame dst(f.first, dw, dh, RandomPad(rng));
            const std::vector<uint8_t> want = TwoSteps(linear, 1, dst.img, mode);
            ASSERT_EQ(f.second(&src.img, &dst.img, scratch.data(), mode), 0);
            ASSERT_TRUE(dst.GuardsIntact());
            ASSERT_EQ(Pixels(dst.img, dw, dh, Bpp(f.first)), want) << f.first;
          }
        }
      }
    }
  });
}

// The tiled horizontal passes equal the linear kernels on the detiled plane.
TEST(RszCscFused, TiledPassesEqualLinearKernels) {
  std::mt19937 rng = MakeRng(9);
  TestFrame src(KIMGP_CS_T64X32, 150, 70);
  src.FillRandom(rng);
  TestFrame lin(KIMGP_CS_NV12, 150, 70);
  ASSERT_EQ(kimgp_csc(&src.img, &lin.img), 0);
  std::vector<uint8_t> row(400), a(2 * 400 * 70), b(a.size());
  const int32_t sw = 150, cw = 75, sh = 70, ch = 35;
  kimgp_nv12t_rsz_up(src.img.plane[0], a.data(), 310, sw, sh, 2, 10, src.img.stride[0], row.data());
  kimgp_8b_rsz_up(lin.img.plane[0], b.data(), 310, sw, sh, 2, 10, lin.img.stride[0]);
  EXPECT_EQ(a, b);
  kimgp_nv12t_rsz_up_mode1_c(src.img.plane[1], a.data(), 160, cw, ch, 2, 10, src.img.stride[1],
                             row.data());
  kimgp_8b8b_rsz_up_mode1(lin.img.plane[1], b.data(), 160, cw, ch, 2, 10, lin.img.stride[1]);
  EXPECT_EQ(a, b);
  kimgp_nv12t_rsz_down_w_c(src.img.plane[1], a.data(), src.img.stride[1], 40, ch, 1, 35,
                           row.data());
  kimgp_8b8b_rsz_down_w(lin.img.plane[1], b.data(), lin.img.stride[1], 40, ch, 1, 35);
  EXPECT_EQ(a, b);
  kimgp_nv12t_rsz_down_w(src.img.plane[0], a.data(), src.img.stride[0], 50, sh, 3, 0, row.data());
  kimgp_8b_rsz_down_w(lin.img.plane[0], b.data(), lin.img.stride[0], 50, sh, 3, 0);
  EXPECT_EQ(a, b);
}

// ---------------------------------------------------------------------------
// Bilinear.

TEST(RszCscBilinear, TapSpacingTable) {
  for (int r = 0; r < 32; ++r) {
    int s = 0;
    while (r >= 2 && (2 << s) < r) ++s;
    EXPECT_EQ(rszcsc::kTapSpacing[r], s) << r;
  }
}

// s(x, y) = 8 x, 16 to 8 wide: column 1 reads columns 1 and 2 at phase 7,
// (8 x 8 + 56 x 16) >> 6 = 15.
TEST(RszCscBilinear, WorkedExample) {
  std::vector<uint8_t> src(16 * 10), dst(8 * 10);
  for (int y = 0; y < 10; ++y) {
    for (int x = 0; x < 16; ++x) src[y * 16 + x] = static_cast<uint8_t>(8 * x);
  }
  ASSERT_EQ(kimgp_rsz_8b_org(src.data(), 16, 10, 8, 10, dst.data(), nullptr, 16, 8, 0), 0);
  EXPECT_EQ(dst[1], 15);
  EXPECT_EQ(dst[0], 0);
  EXPECT_EQ(kimgp_rsz_8b_org(src.data(), 16, 10, 0, 10, dst.data(), nullptr, 16, 8, 0), -1);
}

TEST(RszCscBilinear, VectorEqualsScalarEverywhere) {
  std::mt19937 rng = MakeRng(3);
  std::vector<Size2> sizes = TestSizes(rng, 6, 300, 24);
  ForEachTarget([&](const std::string& target) {
    for (size_t k = 0; k + 1 < sizes.size(); ++k) {
      const Size2 s = sizes[k], d = sizes[k + 1];
      for (const Size2& dd : {d, Size2{s.w * 3 / 4 + 1, s.h / 2 + 1}, Size2{s.w / 20 + 1, 3}}) {
        SCOPED_TRACE(testing::Message() << target << " " << s.w << "x" << s.h << " to " << dd.w
                                        << "x" << dd.h);
        const int32_t ss = s.w + RandomPad(rng), ds = dd.w + RandomPad(rng);
        GuardedBuffer src(size_t(ss) * (s.h - 1) + s.w);
        for (size_t i = 0; i < src.size(); ++i) src.data()[i] = static_cast<uint8_t>(rng());
        GuardedBuffer got(size_t(ds) * dd.h), want(got.size());
        ASSERT_EQ(kimgp_rsz_8b_org(src.data(), s.w, s.h, dd.w, dd.h, got.data(), nullptr, ss,
                                   ds, 0),
                  0);
        for (int32_t j = 0; j < dd.h; ++j) {
          std::memcpy(want.data() + size_t(j) * ds, got.data() + size_t(j) * ds,
                      size_t(ds - dd.w));
        }
        rszcsc::scalar::BilinearPlane(src.data(), s.w, s.h, ss, want.data(), dd.w, dd.h, ds);
        ASSERT_EQ(FirstDifference(got.raw(), want.raw()), "");
      }
    }
  });
}

// ---------------------------------------------------------------------------
// Chroma swapping.

// The definition sample by sample, for one plane of `bytes`-byte units.
void ApexReference(const uint8_t* s, int32_t n, int32_t m, int32_t ss, uint8_t* d, int32_t n2,
                   int32_t m2, int32_t ds, int bytes) {
  const float rx = float(n) / float(n2), ry = float(m) / float(m2);
  for (int32_t j = 0; j < m2; ++j) {
    const rszcsc::ApexTap ty = rszcsc::ApexAt(ry, j, m);
    for (int32_t i = 0; i < n2; ++i) {
      const rszcsc::ApexTap tx = rszcsc::ApexAt(rx, i, n);
      for (int b = 0; b < bytes; ++b) {
        auto at = [&](int32_t x, int32_t y) { return s[ptrdiff_t{y} * ss + x * bytes + b]; };
        d[ptrdiff_t{j} * ds + i * bytes + (bytes - 1 - b)] =
            rszcsc::ApexValue(at(tx.near, ty.near), at(tx.far, ty.near), at(tx.near, ty.far),
                              at(tx.far, ty.far));
      }
    }
  }
}

TEST(RszCscApex, ConstantPlanesKeepValuesAndSwapPairs) {
  TestFrame src(KIMGP_CS_NV12, 30, 20), dst(KIMGP_CS_NV21, 20, 14);
  std::memset(src.img.plane[0], 77, src.buffer(0).size());
  for (size_t i = 0; i < src.buffer(1).size(); ++i) src.img.plane[1][i] = i % 2 ? 200 : 10;
  ASSERT_EQ(kimgp_rsz_csc(&src.img, &dst.img), 0);
  EXPECT_EQ(dst.img.plane[0][19], 77);
  EXPECT_EQ(dst.img.plane[1][0], 200);
  EXPECT_EQ(dst.img.plane[1][1], 10);
}

// Both routines against the definition on every target; at width ratios of
// 1.5 (with chroma at 1.5 or not) the fixed-ratio routine takes its pattern.
TEST(RszCscApex, BothRoutinesFollowTheDefinition) {
  std::mt19937 rng = MakeRng(13);
  const Size2 pairs[][2] = {{{30, 20}, {20, 14}},     {{1920, 36}, {1280, 24}},
                            {{1920, 30}, {1280, 30}}, {{27, 9}, {18, 31}},
                            {{99, 40}, {66, 40}},     {{640, 17}, {200, 9}},
                            {{13, 11}, {40, 29}},     {{96, 8}, {64, 8}},
                            {{3000, 8}, {2000, 9}},   {{600, 12}, {599, 12}}};
  ForEachTarget([&](const std::string& target) {
    for (const auto& sz : pairs) {
      for (bool fixed : {true, false}) {
        SCOPED_TRACE(testing::Message() << target << " " << sz[0].w << "x" << sz[0].h << " to "
                                        << sz[1].w << "x" << sz[1].h << " fixed " << fixed);
        TestFrame src(KIMGP_CS_NV21, sz[0].w, sz[0].h, RandomPad(rng));
        src.FillRandom(rng);
        TestFrame dst(KIMGP_CS_NV12, sz[1].w, sz[1].h, RandomPad(rng));
        TestFrame want(dst);
        ASSERT_EQ((fixed ? kimgp_rsz_apex : kimgp_rsz_apex_c)(&src.img, &dst.img), 0);
        for (int p = 0; p < 2; ++p) {
          ApexReference(src.img.plane[p], src.img.width[p], src.img.height[p], src.img.stride[p],
                        want.img.plane[p], want.img.width[p], want.img.height[p],
                        want.img.stride[p], p + 1);
        }
        ASSERT_EQ(FirstDifference(dst.Snapshot(), want.Snapshot()), "");
      }
    }
  });
}

}  // namespace
}  // namespace test
}  // namespace kelo
