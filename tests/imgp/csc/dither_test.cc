#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "kimgp_csc.h"
#include "tests/support/guarded.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

constexpr int kB[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};

// The dithered word of 8-bit r, g, b at (x, y).
uint16_t DitherWord(const uint8_t* rgb, int x, int y, bool red_high) {
  const int b = kB[y & 3][x & 3];
  const int r5 = std::min(rgb[0] + (b >> 1), 255) >> 3, g6 = std::min(rgb[1] + (b >> 2), 255) >> 2;
  const int b5 = std::min(rgb[2] + (b >> 1), 255) >> 3;
  return static_cast<uint16_t>(((red_high ? r5 : b5) << 11) | (g6 << 5) | (red_high ? b5 : r5));
}
uint16_t Word(const uint8_t* p) { return static_cast<uint16_t>(p[0] | p[1] << 8); }
void PutWord(uint8_t* p, uint16_t w) {
  p[0] = static_cast<uint8_t>(w);
  p[1] = static_cast<uint8_t>(w >> 8);
}

// A dithered kernel, the kernel giving the same pixels as RGBA8888 (null:
// the 8-bit RGB is read from the source, grey for YUV400) and the undithered
// 5-6-5 kernel.
struct Kernel {
  const char* name;
  int32_t s, d;
  kimgp_csc_kernel dither, rgba, plain;
};
#define KELO_PAIR(name, s)                                                          \
  Kernel{#name " rgb565", s, 200, kimgp_csc_##name##_to_rgb565_dither,              \
         kimgp_csc_##name##_to_rgba8888, kimgp_csc_##name##_to_rgb565},             \
      Kernel {                                                                      \
    #name " bgr565", s, 201, kimgp_csc_##name##_to_bgr565_dither,                   \
        kimgp_csc_##name##_to_rgba8888, kimgp_csc_##name##_to_bgr565                \
  }
const Kernel kKernels[] = {
    KELO_PAIR(yuv420, 1),  KELO_PAIR(yuv422n, 2), KELO_PAIR(yuv444, 3), KELO_PAIR(yv12, 4),
    KELO_PAIR(nv12, 6),    KELO_PAIR(nv21, 7),    KELO_PAIR(t64x32, 11), KELO_PAIR(uyvy, 100),
    KELO_PAIR(yuyv, 101),
    {"yuv422w rgb565", 8, 200, kimgp_csc_yuv422w_to_rgb565_dither, kimgp_csc_yuv422n_to_rgba8888,
     kimgp_csc_yuv422w_to_rgb565},
    {"yuv422w bgr565", 8, 201, kimgp_csc_yuv422w_to_bgr565_dither, kimgp_csc_yuv422n_to_rgba8888,
     kimgp_csc_yuv422w_to_bgr565},
    {"yuv400", 0, 200, kimgp_csc_yuv400_to_rgb565_dither, nullptr, kimgp_csc_yuv400_to_rgb565},
    {"rgb888", 400, 200, kimgp_csc_rgb888_to_rgb565_dither, nullptr,
     kimgp_csc_rgb888_to_rgb565},
};

void RunKernel(kimgp_csc_kernel k, TestFrame& s, TestFrame& d) {
  k(s.img.plane, s.img.width, s.img.height, s.img.stride, d.img.stride, d.img.plane);
}

// What the kernel must leave in a destination that held `dst`: the words of
// the RGB the undithered conversion computes, dithered, over the pixels its
// twins write (a multiple of 4 wide: the width; else the pixel pairs).
std::vector<uint8_t> Expected(const Kernel& k, const TestFrame& src, const TestFrame& dst) {
  const int32_t w = src.img.width[0], h = src.img.height[0];
  const bool yuv = k.rgba != nullptr;
  const int32_t n = yuv && w % 4 != 0 ? (w + 1) & ~1 : w;
  TestFrame rgba(500, n, h, 4), s(src), want(dst);
  if (yuv) RunKernel(k.rgba, s, rgba);
  for (int32_t y = 0; y < h; ++y) {
    for (int32_t x = 0; x < n; ++x) {
      uint8_t rgb[3];
      if (yuv) {
        memcpy(rgb, rgba.img.plane[0] + y * rgba.img.stride[0] + 4 * x, 3);
      } else if (k.s == 0) {
        memset(rgb, src.img.plane[0][y * src.img.stride[0] + x], 3);
      } else {
        memcpy(rgb, src.img.plane[0] + y * src.img.stride[0] + 3 * x, 3);
      }
      PutWord(want.img.plane[0] + y * want.img.stride[0] + 2 * x, DitherWord(rgb, x, y, k.d == 200));
    }
  }
  return want.Snapshot();
}

// Every dithered kernel gives the undithered conversion's RGB, dithered,
// over exactly the pixels the undithered kernel writes, on every target,
// across the 512-pixel row pieces; at the pixel where the offsets are zero
// it gives the undithered word, and YV12 leaves the descriptor as its twin.
TEST(DitherKernels, DitheredUnditheredRgbOnEveryTarget) {
  std::mt19937 rng = MakeRng(31);
  std::vector<Size2> sizes = TestSizes(rng, 4, 300, 12);
  sizes.insert(sizes.end(), {{1030, 5}, {1029, 3}, {516, 4}});
  ForEachTarget([&](const std::string& target) {
    for (const Kernel& k : kKernels) {
      for (const Size2& sz : sizes) {
        SCOPED_TRACE(target + " " + k.name + " " + std::to_string(sz.w) + "x" +
                     std::to_string(sz.h));
        const int32_t pad = 4 + RandomPad(rng);
        TestFrame src(k.s, sz.w, sz.h, pad), got(k.d, sz.w, sz.h, pad);
        src.FillRandom(rng);
        got.FillRandom(rng);
        TestFrame plain(got), src2(src);
        const std::vector<uint8_t> want = Expected(k, src, got);
        uint8_t* const u[2] = {src.img.plane[1], src2.img.plane[1]};
        RunKernel(k.dither, src, got);
        ASSERT_EQ(FirstDifference(got.Snapshot(), want), "");
        RunKernel(k.plain, src2, plain);
        ASSERT_EQ(src.img.plane[1] == u[0], src2.img.plane[1] == u[1]);
        for (int32_t y = 0; y < sz.h; y += 4) {
          for (int32_t x = 0; x < sz.w; x += 4) {
            const size_t o = size_t(y) * got.img.stride[0] + 2 * size_t(x);
            ASSERT_EQ(Word(got.img.plane[0] + o), Word(plain.img.plane[0] + o)) << x << "," << y;
          }
        }
      }
    }
  });
}

// The row step against the definition, every target: 3- and 4-byte pixels,
// both orders, any start column and row, values near saturation; nothing
// past the row is written, nothing at all for a width below 1 or a pixel
// size other than 3 or 4.
TEST(DitherRow, MatchesDefinitionOnEveryTarget) {
  std::mt19937 rng = MakeRng(32);
  const std::vector<Size2> sizes = TestSizes(rng, 8, 300, 1);
  ForEachTarget([&](const std::string& target) {
    for (int bytes : {3, 4}) {
      for (const Size2& sz : sizes) {
        const int32_t x = int32_t(rng() % 7), y = int32_t(rng() % 9), order = int32_t(rng() % 2);
        SCOPED_TRACE(target + " " + std::to_string(bytes) + " " + std::to_string(sz.w));
        std::vector<uint8_t> src(size_t(bytes) * sz.w);
        for (uint8_t& b : src) b = static_cast<uint8_t>(rng() % 2 ? 240 + rng() % 16 : rng());
        std::vector<uint8_t> got(2 * size_t(sz.w) + 16, 0xA5), want(got);
        for (int32_t i = 0; i < sz.w; ++i) {
          PutWord(&want[2 * i], DitherWord(&src[size_t(bytes) * i], x + i, y, order == 0));
        }
        kimgp_dit_8b(src.data(), bytes, sz.w, x, y, order, got.data());
        ASSERT_EQ(FirstDifference(got, want), "");
      }
    }
  });
  std::vector<uint8_t> src(64, 9), dst(64, 0xA5), before(dst);
  kimgp_dit_8b(src.data(), 4, 0, 0, 0, 0, dst.data());
  kimgp_dit_8b(src.data(), 2, 8, 0, 0, 0, dst.data());
  kimgp_dit_8b(src.data(), 5, 8, 0, 0, 0, dst.data());
  EXPECT_EQ(dst, before);
}

// Source samples of a horizontal grey ramp: luma (or the RGB bytes) v(x),
// chroma neutral.
void FillRamp(TestFrame& f, int32_t (*v)(int32_t)) {
  const int32_t cs = f.img.cs;
  if (cs == KIMGP_CS_T64X32) {  // through the linear layout
    TestFrame lin(KIMGP_CS_YUV420, f.img.width[0], f.img.height[0], 0, 128);
    FillRamp(lin, v);
    ASSERT_EQ(kimgp_csc(&lin.img, &f.img), 0);
    return;
  }
  for (int32_t y = 0; y < f.img.height[0]; ++y) {
    uint8_t* row = f.img.plane[0] + y * f.img.stride[0];
    for (int32_t x = 0; x < f.img.width[0]; ++x) {
      const uint8_t s = static_cast<uint8_t>(v(x));
      if (cs == KIMGP_CS_UYVY || cs == KIMGP_CS_YUYV) {
        row[2 * x + (cs == KIMGP_CS_UYVY)] = s;
      } else if (cs == KIMGP_CS_RGB888) {
        memset(row + 3 * x, s, 3);
      } else {
        row[x] = s;
      }
    }
  }
}

// On smooth horizontal ramps every 4x4 tile's dithered values average the
// 8-bit values within half a 5-bit (6-bit) step, and exactly where a channel
// is constant over the tile, while truncation is off by a whole step.
TEST(DitherKernels, TileMeansFollowSmoothRamps) {
  int32_t (*ramps[])(int32_t) = {[](int32_t x) { return 16 + x / 4; },  // constant per tile
                                 [](int32_t x) { return 16 + x * 7 / 8; }};
  for (const Kernel& k : kKernels) {
    for (auto ramp : ramps) {
      const int32_t w = 256, h = 8;
      TestFrame src(k.s, w, h, 0, 128), got(k.d, w, h), plain(k.d, w, h);
      FillRamp(src, ramp);
      TestFrame src2(src);
      const std::vector<uint8_t> want = Expected(k, src, got);  // also gives the 8-bit RGB
      TestFrame rgba(500, w, h, 0);
      RunKernel(k.dither, src, got);
      RunKernel(k.plain, src2, plain);
      ASSERT_EQ(FirstDifference(got.Snapshot(), want), "") << k.name;
      if (k.rgba != nullptr) {
        TestFrame s3(src2);
        RunKernel(k.rgba, s3, rgba);
      }
      int worst_plain = 0;
      for (int32_t ty = 0; ty < h; ty += 4) {
        for (int32_t tx = 0; tx < w; tx += 4) {
          int sum8[3] = {0, 0, 0}, sumd[3] = {0, 0, 0}, sump[3] = {0, 0, 0}, lo[3], hi[3];
          std::fill(lo, lo + 3, 255);
          std::fill(hi, hi + 3, 0);
          for (int32_t y = ty; y < ty + 4; ++y) {
            for (int32_t x = tx; x < tx + 4; ++x) {
              const uint8_t* p = k.rgba ? rgba.img.plane[0] + y * rgba.img.stride[0] + 4 * x
                                        : src.img.plane[0] + y * src.img.stride[0] +
                                              (k.s == 0 ? x : 3 * x);
              const uint16_t d = Word(got.img.plane[0] + y * got.img.stride[0] + 2 * x);
              const uint16_t q = Word(plain.img.plane[0] + y * plain.img.stride[0] + 2 * x);
              for (int c = 0; c < 3; ++c) {
                const int v = k.s == 0 ? p[0] : p[c];
                // Channel c of a word, scaled back to 8 bits (red first).
                auto field = [&](uint16_t wd) {
                  const int hi5 = (wd >> 11) << 3, g6 = ((wd >> 5) & 63) << 2, lo5 = (wd & 31) << 3;
                  if (c == 1) return g6;
                  return (c == 0) == (k.d == 200) ? hi5 : lo5;
                };
                sum8[c] += v, sumd[c] += field(d), sump[c] += field(q);
                lo[c] = std::min(lo[c], v), hi[c] = std::max(hi[c], v);
              }
            }
          }
          for (int c = 0; c < 3; ++c) {
            if (hi[c] > 248) continue;  // saturation keeps the offsets from averaging out
            const int half = c == 1 ? 2 * 16 : 4 * 16;  // half a step, in sums of 16
            EXPECT_LE(std::abs(sumd[c] - sum8[c]), half) << k.name << " tile " << tx << "," << ty;
            if (lo[c] == hi[c]) {
              EXPECT_EQ(sumd[c], sum8[c]) << k.name << " tile " << tx;
            }
            worst_plain = std::max(worst_plain, (sum8[c] - sump[c]) / 16);
          }
        }
      }
      EXPECT_GT(worst_plain, 4) << k.name;  // truncation: more than half a step
    }
  }
}

const int32_t kCodes[] = {0,   1,   2,   3,   4,   5,   6,   7,   8,   11,  12,  13,  14,  99,
                          100, 101, 200, 201, 202, 400, 401, 500, 501, 502, 503, 600, 601};

// Every pair of codes: -1 for the same code, 0 exactly for the pairs that
// kimgp_csc converts into RGB565 or BGR565 (and nothing written otherwise);
// the pixels with zero offsets hold kimgp_csc's words, so each pair runs its
// own kernel.
TEST(DitherEntry, EveryPairOfCodes) {
  std::mt19937 rng = MakeRng(33);
  for (int32_t s : kCodes) {
    for (int32_t d : kCodes) {
      SCOPED_TRACE(std::to_string(s) + " -> " + std::to_string(d));
      TestFrame src(s, 24, 8, 8), got(d, 24, 8, 8);
      src.FillRandom(rng);
      TestFrame plain(got), src2(src);
      const auto before = got.Snapshot();
      int32_t want = (d == 200 || d == 201) && kimgp_csc(&src2.img, &plain.img) == 0 ? 0 : -3;
      if (s == d) want = -1;
      ASSERT_EQ(kimgp_csc_dither(&src.img, &got.img), want);
      ASSERT_TRUE(got.GuardsIntact());
      if (want != 0) {
        ASSERT_EQ(got.Snapshot(), before);
        continue;
      }
      for (int32_t y = 0; y < 8; y += 4) {
        for (int32_t x = 0; x < 24; x += 4) {
          const size_t o = size_t(y) * got.img.stride[0] + 2 * size_t(x);
          ASSERT_EQ(Word(got.img.plane[0] + o), Word(plain.img.plane[0] + o)) << x << "," << y;
        }
      }
    }
  }
}

// Sizes and colour standards refuse as kimgp_csc does, before any write.
TEST(DitherEntry, SizesAndStandards) {
  const struct {
    int32_t sw, sh, dw, dh, sstd, dstd, s, d, want;
  } cases[] = {{7, 100, 7, 100, 0, 0, 1, 200, -3}, {8, 7, 8, 8, 0, 0, 1, 200, -3},
               {8, 8, 8, 7, 0, 0, 1, 201, -3},     {8, 8, 8, 8, 0, 0, 1, 200, 0},
               {8, 8, 8, 8, 1, 0, 1, 200, 0},      {8, 8, 8, 8, 0, 10, 6, 201, 0},
               {8, 8, 8, 8, 1, 1, 1, 200, -3},     {8, 8, 8, 8, 10, 10, 1, 200, -3},
               {8, 8, 8, 8, 11, 11, 1, 201, -3},   {8, 8, 8, 8, 1, 11, 1, 200, -3},
               {8, 8, 8, 8, 1, 1, 400, 200, 0},    {8, 8, 8, 8, 7, 7, 200, 200, -1}};
  for (const auto& c : cases) {
    TestFrame src(c.s, c.sw, c.sh, 2), dst(c.d, c.dw, c.dh, 2);
    src.img.std = c.sstd;
    dst.img.std = c.dstd;
    const auto before = dst.Snapshot();
    EXPECT_EQ(kimgp_csc_dither(&src.img, &dst.img), c.want) << c.s << "->" << c.d << " " << c.sw;
    if (c.want != 0) {
      EXPECT_EQ(dst.Snapshot(), before);
    }
  }
}

}  // namespace
}  // namespace test
}  // namespace kelo
