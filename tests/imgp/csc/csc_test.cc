#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "imgp/csc/layout_rows.h"
#include "imgp/csc/yuv_to_rgb.h"
#include "kimgp_copy.h"
#include "kimgp_csc.h"
#include "tests/support/guarded.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

int32_t Convert(TestFrame& src, TestFrame& dst) { return kimgp_csc(&src.img, &dst.img); }

// The pairs kimgp_csc converts, written out pair by pair.
std::set<std::pair<int32_t, int32_t>> SupportedPairs() {
  std::set<std::pair<int32_t, int32_t>> s = {
      {1, 2},   {1, 4},   {1, 6},   {1, 7},    {1, 11},  {2, 1},   {2, 4},   {3, 1},
      {5, 1},   {5, 4},   {6, 1},   {6, 4},    {6, 7},   {7, 1},   {7, 4},   {7, 6},
      {11, 1},  {11, 4},  {11, 6},  {11, 7},   {12, 1},  {12, 6},  {101, 1}, {600, 1},
      {0, 200}, {0, 400}, {8, 200}, {8, 201},  {12, 500}, {13, 500}, {14, 500}, {601, 500},
      {200, 500}, {400, 200}, {500, 3}, {500, 200}, {502, 3}};
  const int32_t rgb[] = {200, 201, 400, 401, 500, 501, 502, 503};
  for (int32_t src : {1, 2, 3, 4, 6, 7, 11, 100, 101}) {
    for (int32_t d : rgb) s.insert({src, d});
  }
  for (int32_t src : rgb) {
    for (int32_t d : {1, 4, 6, 7}) s.insert({src, d});
  }
  return s;
}

const int32_t kCodes[] = {0,   1,   2,   3,   4,   5,   6,   7,   8,   9,   10,  11,  12,
                          13,  14,  15,  99,  100, 101, 102, 200, 201, 202, 400, 401, 402,
                          500, 501, 502, 503, 504, 600, 601, 602};

// Every pair of codes: the status, and on a refusal not a byte written.
// T256X16 is refused at this width (it needs more than 1280 pixels).
TEST(CscRouting, EveryPairOfCodes) {
  const auto supported = SupportedPairs();
  std::mt19937 rng = MakeRng(1);
  for (int32_t s : kCodes) {
    for (int32_t d : kCodes) {
      TestFrame src(s, 16, 8), dst(d, 16, 8);
      src.FillRandom(rng);
      const auto before = dst.Snapshot();
      int32_t want = supported.count({s, d}) ? 0 : -3;
      if (s == d) want = -1;
      if (s == KIMGP_CS_T256X16) want = s == d ? -1 : -3;
      ASSERT_EQ(Convert(src, dst), want) << s << " -> " << d;
      if (want != 0) {
        ASSERT_EQ(dst.Snapshot(), before) << s << " -> " << d;
      }
      ASSERT_TRUE(dst.GuardsIntact()) << s << " -> " << d;
    }
  }
}

// The dispatcher's own conversions and its routing give the bytes of the
// exported kernel of the same name.
TEST(CscRouting, RoutesGiveTheKernelsBytes) {
  const struct {
    int32_t s, d;
    kimgp_csc_kernel k;
  } cases[] = {{1, 500, kimgp_csc_yuv420_to_rgba8888}, {6, 200, kimgp_csc_nv12_to_rgb565},
               {101, 401, kimgp_csc_yuyv_to_bgr888},   {500, 6, kimgp_csc_rgba8888_to_nv12},
               {1, 4, kimgp_csc_yuv420_to_yv12},       {1, 6, kimgp_csc_yuv420_to_nv12},
               {1, 7, kimgp_csc_yuv420_to_nv21},       {2, 4, kimgp_csc_yuv422n_to_yv12},
               {5, 1, kimgp_csc_yv16_to_yuv420},       {7, 1, kimgp_csc_nv21_to_yuv420},
               {6, 4, kimgp_csc_nv12_to_yv12},         {7, 6, kimgp_csc_nv21_to_nv12},
               {101, 1, kimgp_csc_yuyv_to_yuv420},     {600, 1, kimgp_csc_yuv420Planar16_to_yuv420Planar},
               {0, 200, kimgp_csc_yuv400_to_rgb565},   {0, 400, kimgp_csc_yuv400_to_rgb888},
               {3, 1, kimgp_csc_yuv444_to_yuv420},     {1, 2, kimgp_csc_yuv420_to_yuv422n},
               {400, 200, kimgp_csc_rgb888_to_rgb565}, {11, 500, kimgp_csc_t64x32_to_rgba8888},
               {601, 500, kimgp_csc_p010le_to_rgba8888}};
  std::mt19937 rng = MakeRng(2);
  for (const auto& c : cases) {
    for (Size2 sz : {Size2{16, 8}, Size2{40, 13}, Size2{37, 9}}) {
      const int32_t pad = 4 + RandomPad(rng);
      TestFrame src(c.s, sz.w, sz.h, pad), a(c.d, sz.w, sz.h, pad), b(c.d, sz.w, sz.h, pad);
      src.FillRandom(rng);
      TestFrame src2(src);
      ASSERT_EQ(kimgp_csc(&src.img, &a.img), 0);
      c.k(src2.img.plane, src2.img.width, src2.img.height, src2.img.stride, b.img.stride,
          b.img.plane);
      ASSERT_EQ(FirstDifference(a.Snapshot(), b.Snapshot()), "") << c.s << " -> " << c.d;
    }
  }
}

TEST(CscRouting, WorkedExamples) {
  TestFrame narrow(1, 7, 100), wide(500, 7, 100);
  EXPECT_EQ(Convert(narrow, wide), -3);
  TestFrame odd(102, 16, 16), odd2(102, 16, 16);
  EXPECT_EQ(Convert(odd, odd2), -1);
  TestFrame rgba(500, 16, 8), bgra(501, 16, 8);
  EXPECT_EQ(Convert(rgba, bgra), -3);
  TestFrame yv12(4, 16, 8), yuv(1, 16, 8);
  EXPECT_EQ(Convert(yv12, yuv), -3);
  EXPECT_EQ(Convert(yuv, yv12), 0);
  TestFrame t1280(14, 1280, 16), t1281(14, 1281, 16), r1280(500, 1280, 16), r1281(500, 1281, 16);
  EXPECT_EQ(Convert(t1280, r1280), -3);
  EXPECT_EQ(Convert(t1281, r1281), 0);
}

// std on both sides hands over; mixed or unknown values are refused; a zero
// on either side keeps the default arithmetic.
TEST(CscStandards, HandOver) {
  std::mt19937 rng = MakeRng(3);
  TestFrame src(1, 16, 8), a(500, 16, 8), b(500, 16, 8);
  src.FillRandom(rng);
  src.img.std = 1;
  a.img.std = 11;
  EXPECT_EQ(Convert(src, a), -3);
  a.img.std = 0;
  ASSERT_EQ(Convert(src, a), 0);
  src.img.std = 0;
  ASSERT_EQ(Convert(src, b), 0);
  EXPECT_EQ(a.Snapshot(), b.Snapshot());  // default arithmetic both times
  // 11 on both sides gives exactly the bytes of 1 on both sides.
  src.img.std = a.img.std = 11;
  ASSERT_EQ(Convert(src, a), 0);
  src.img.std = b.img.std = 1;
  ASSERT_EQ(Convert(src, b), 0);
  EXPECT_EQ(a.Snapshot(), b.Snapshot());
  src.img.std = b.img.std = 7;
  EXPECT_EQ(Convert(src, b), -3);
}

TEST(CscStandards, Bt709Leniencies) {
  TestFrame src(1, 16, 8), nv12(6, 16, 8), wide(500, 24, 8);
  src.img.std = nv12.img.std = wide.img.std = 10;
  const auto before = nv12.Snapshot();
  EXPECT_EQ(Convert(src, nv12), 0);  // accepted, nothing written
  EXPECT_EQ(nv12.Snapshot(), before);
  EXPECT_EQ(kimgp_csc_bt709(&src.img, &wide.img), -1);
  TestFrame rgba(500, 16, 8), nv21(7, 16, 8);
  rgba.img.std = nv21.img.std = 10;
  memset(rgba.buffer(0).data(), 255, rgba.buffer(0).size());
  ASSERT_EQ(Convert(rgba, nv21), 0);
  EXPECT_EQ(nv21.buffer(0).data()[0], 244);  // white, with the luma weights summing to 229
  TestFrame yv12(4, 16, 8);
  yv12.img.std = 11;
  src.img.std = 11;
  const auto untouched = yv12.Snapshot();
  EXPECT_EQ(kimgp_csc_bt709_fr(&src.img, &yv12.img), 0);
  EXPECT_EQ(yv12.Snapshot(), untouched);
  TestFrame f601(1, 16, 8), fr(500, 16, 8);
  f601.img.std = fr.img.std = 1;
  memset(f601.buffer(0).data(), 255, f601.buffer(0).size());
  memset(f601.buffer(1).data(), 128, f601.buffer(1).size());
  memset(f601.buffer(2).data(), 128, f601.buffer(2).size());
  ASSERT_EQ(Convert(f601, fr), 0);
  EXPECT_EQ(fr.buffer(0).data()[0], 255);
}

TEST(CscNotes, GreyAndRgbPacking) {
  TestFrame grey(0, 8, 8), rgb565(200, 8, 8), rgba(500, 8, 8), back(200, 8, 8);
  grey.buffer(0).data()[0] = 255;
  grey.buffer(0).data()[1] = 8;
  ASSERT_EQ(Convert(grey, rgb565), 0);
  const uint8_t* p = rgb565.buffer(0).data();
  EXPECT_EQ(p[0] | p[1] << 8, 0xFFFF);
  EXPECT_EQ(p[2] | p[3] << 8, 0x0841);
  ASSERT_EQ(Convert(rgb565, rgba), 0);
  const uint8_t* q = rgba.buffer(0).data();
  EXPECT_EQ(std::vector<int>(q, q + 8), (std::vector<int>{0xF8, 0xFC, 0xF8, 255, 8, 8, 8, 255}));
  ASSERT_EQ(Convert(rgba, back), 0);
  EXPECT_EQ(memcmp(back.buffer(0).data(), rgb565.buffer(0).data(), 16), 0);
}

// The 565/RGBA row pointers round down to their pixel size after each step.
TEST(CscNotes, RgbaTo565RoundsRowPointers) {
  kimgp_img s{}, d{};
  std::vector<uint8_t> src(8 * 34), dst(8 * 16, 0);
  for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>(i * 13);
  for (int i = 0; i < 4; ++i) s.width[i] = d.width[i] = 8, s.height[i] = d.height[i] = 8;
  s.cs = 500, d.cs = 200;
  s.stride[0] = 34, d.stride[0] = 16;  // 34 rounds each row start down to 4
  s.plane[0] = src.data(), d.plane[0] = dst.data();
  alignas(4) static uint8_t aligned_check[4];
  (void)aligned_check;
  if (reinterpret_cast<uintptr_t>(src.data()) % 4 != 0) GTEST_SKIP();
  ASSERT_EQ(kimgp_csc(&s, &d), 0);
  uintptr_t row = reinterpret_cast<uintptr_t>(src.data());
  for (int r = 0; r < 8; ++r) {
    const uint8_t* px = reinterpret_cast<const uint8_t*>(row);
    const int w = ((px[0] >> 3) << 11) | ((px[1] >> 2) << 5) | (px[2] >> 3);
    EXPECT_EQ(dst[16 * r] | dst[16 * r + 1] << 8, w) << r;
    row = (row + 34) & ~uintptr_t{3};
  }
}

TEST(CscNotes, YuyvAveragesRowPairs) {
  TestFrame src(101, 8, 9), dst(1, 8, 9, 0, 0xEE);
  uint8_t* r0 = src.buffer(0).data();
  uint8_t* r1 = r0 + src.img.stride[0];
  uint8_t* r2 = r0 + 8 * src.img.stride[0];  // the odd last row
  r0[1] = 10, r0[3] = 21, r1[1] = 13, r1[3] = 40, r2[1] = 99, r2[3] = 77;
  r0[0] = 5, r0[2] = 6;
  ASSERT_EQ(Convert(src, dst), 0);
  EXPECT_EQ(dst.buffer(0).data()[0], 5);
  EXPECT_EQ(dst.buffer(0).data()[1], 6);
  EXPECT_EQ(dst.buffer(1).data()[0], (10 + 13) >> 1);
  EXPECT_EQ(dst.buffer(2).data()[0], (21 + 40) >> 1);
  EXPECT_EQ(dst.buffer(1).data()[4 * dst.img.stride[1]], 99);  // odd last row: as stored
  EXPECT_EQ(dst.buffer(2).data()[4 * dst.img.stride[2]], 77);
}

TEST(CscNotes, Narrow16KeepsLowByteAfterShift) {
  TestFrame src(600, 8, 8), dst(1, 8, 8);
  uint8_t* p = src.buffer(0).data();
  p[0] = 0xFF, p[1] = 0x03;  // 0x03FF >> 2 = 0xFF
  p[2] = 0x00, p[3] = 0x04;  // 0x0400 >> 2 = 0x100 -> 0x00
  ASSERT_EQ(Convert(src, dst), 0);
  EXPECT_EQ(dst.buffer(0).data()[0], 0xFF);
  EXPECT_EQ(dst.buffer(0).data()[1], 0x00);
}

// Planes without padding go through as one run: the bytes of the scalar row
// applied row by row.
TEST(CscLayout, Narrow16UnpaddedPlanesAsOneRun) {
  std::mt19937 rng = MakeRng(17);
  ForEachTarget([&](const std::string& target) {
    for (Size2 sz : {Size2{64, 4}, Size2{37, 9}, Size2{1, 3}}) {
      TestFrame src(600, sz.w, sz.h), dst(1, sz.w, sz.h);
      src.FillRandom(rng);
      kimgp_csc_yuv420Planar16_to_yuv420Planar(src.img.plane, src.img.width, src.img.height,
                                               src.img.stride, dst.img.stride, dst.img.plane);
      for (int i = 0; i < 3; ++i) {
        const int32_t w = dst.img.width[i], h = dst.img.height[i];
        ASSERT_EQ(src.img.stride[i], 2 * w);
        std::vector<uint8_t> want(size_t(w) * size_t(h));
        for (int32_t r = 0; r < h; ++r) {
          csc::scalar::Narrow16(src.img.plane[i] + ptrdiff_t(r) * src.img.stride[i],
                                want.data() + ptrdiff_t(r) * w, 0, size_t(w));
        }
        EXPECT_EQ(std::vector<uint8_t>(dst.img.plane[i], dst.img.plane[i] + want.size()), want)
            << target << " " << sz.w << "x" << sz.h << " plane " << i;
      }
      ASSERT_TRUE(dst.GuardsIntact());
    }
  });
}

TEST(CscLayout, WorkedExamples) {
  TestFrame s444(3, 8, 8), s420(1, 8, 8);
  uint8_t* u = s444.buffer(1).data();
  u[0] = 10, u[1] = 20, u[s444.img.stride[1]] = 30, u[s444.img.stride[1] + 1] = 40;
  ASSERT_EQ(Convert(s444, s420), 0);
  EXPECT_EQ(s420.buffer(1).data()[0], 10);

  TestFrame s422(2, 8, 8), d420(1, 8, 8);
  for (int r = 0; r < 8; ++r) s422.buffer(1).data()[r * s422.img.stride[1]] = uint8_t(r);
  ASSERT_EQ(Convert(s422, d420), 0);
  for (int r = 0; r < 4; ++r) EXPECT_EQ(d420.buffer(1).data()[r * d420.img.stride[1]], 2 * r);

  TestFrame nv21(7, 8, 8), nv12(6, 8, 8);
  const uint8_t vu[4] = {1, 2, 3, 4};
  memcpy(nv21.buffer(1).data(), vu, 4);
  ASSERT_EQ(Convert(nv21, nv12), 0);
  EXPECT_EQ(std::vector<int>(nv12.buffer(1).data(), nv12.buffer(1).data() + 4),
            (std::vector<int>{2, 1, 4, 3}));

  const uint8_t row[7] = {'a', 'b', 'c', 'd', 'e', 'f', 'g'};
  uint8_t a[4] = {0}, b[4] = {0};
  kimgp_csc_8b8b_unpck(row, 6, 1, 6, 4, 4, a, b);
  EXPECT_EQ(std::string(a, a + 3), "ace");
  EXPECT_EQ(std::string(b, b + 3), "bdf");
  kimgp_csc_8b8b_unpck(row, 7, 1, 7, 4, 4, a, b);
  EXPECT_EQ(std::string(a, a + 4), "aceg");
}

// Planes without row padding go as one run; the result is the row-by-row one.
TEST(CscLayout, PackAndSplitOfUnpaddedPlanesMatchTheScalarRows) {
  std::mt19937 rng = MakeRng(9);
  for (int32_t w : {1, 16, 37}) {
    const int32_t h = 5;
    std::vector<uint8_t> u(w * h), v(w * h), uv(2 * w * h);
    for (auto& x : u) x = uint8_t(rng());
    for (auto& x : v) x = uint8_t(rng());
    GuardedBuffer packed(2 * size_t(w) * h), want(2 * size_t(w) * h);
    kimgp_csc_8b8b_pck(u.data(), v.data(), w, h, w, w, 2 * w, packed.data());
    csc::scalar::Interleave(u.data(), v.data(), want.data(), 0, size_t(w) * h);
    ASSERT_EQ(FirstDifference(packed.raw(), want.raw()), "") << "pack w=" << w;
    GuardedBuffer a(size_t(w) * h), b(size_t(w) * h);
    kimgp_csc_8b8b_unpck(packed.data(), 2 * w, h, 2 * w, w, w, a.data(), b.data());
    EXPECT_TRUE(std::equal(u.begin(), u.end(), a.data())) << "split w=" << w;
    EXPECT_TRUE(std::equal(v.begin(), v.end(), b.data())) << "split w=" << w;
    EXPECT_TRUE(a.GuardsIntact() && b.GuardsIntact());
  }
}

// With an odd luma height only the first height / 2 chroma rows are swapped.
TEST(CscLayout, Nv12ToNv21OddHeightSwapsHalfTheRows) {
  TestFrame src(6, 8, 9), dst(7, 8, 9);
  for (size_t i = 0; i < src.buffer(1).size(); ++i) src.buffer(1).data()[i] = uint8_t(i);
  ASSERT_EQ(Convert(src, dst), 0);
  const int32_t s = dst.img.stride[1];
  EXPECT_EQ(dst.buffer(1).data()[0], 1);            // row 0 swapped
  EXPECT_EQ(dst.buffer(1).data()[3 * s], 3 * s + 1);  // row 3 swapped
  EXPECT_EQ(dst.buffer(1).data()[3 * s + 1], 3 * s);
  EXPECT_EQ(dst.buffer(1).data()[4 * s], 4 * s);    // row 4 (the fifth) as copied
}

// The chroma of NV12 to NV21 is written in one pass where it can be; the
// bytes are those of the plane copy followed by the in-place swap of
// dst.stride[1] * (height / 2) bytes, padding and odd strides included.
TEST(CscLayout, Nv12ToNv21MatchesCopyThenSwap) {
  std::mt19937 rng = MakeRng(12);
  ForEachTarget([&](const std::string& target) {
    for (const Size2& z : TestSizes(rng, 12, 200, 9)) {
      const int32_t w = (z.w + 1) / 2, h = (z.h + 1) / 2;
      const int32_t ss = 2 * w + RandomPad(rng), ds = 2 * w + RandomPad(rng);
      std::vector<uint8_t> src(size_t(ss) * h);
      for (auto& x : src) x = uint8_t(rng());
      GuardedBuffer got(size_t(ds) * h), want(size_t(ds) * h);
      for (size_t i = 0; i < got.size(); ++i) got.data()[i] = want.data()[i] = uint8_t(i * 7);
      uint8_t* sp[3] = {src.data(), src.data(), nullptr};
      const int32_t sw[3] = {0, w, 0}, sh[3] = {z.h, h, 0}, dss[3] = {0, ds, 0};
      int32_t sss[3] = {0, ss, 0};
      uint8_t* dp[3] = {nullptr, got.data(), nullptr};
      kimgp_csc_nv21_to_nv12(sp, sw, sh, sss, dss, dp);
      kimgp_cpy_16b(src.data(), w, h, ss, ds, want.data());
      csc::scalar::SwapPairs(want.data(), 0, size_t(ds) * size_t(z.h / 2) / 2);
      ASSERT_EQ(FirstDifference(got.raw(), want.raw()), "")
          << target << " " << w << "x" << h << " strides " << ss << "/" << ds;
    }
  });
}

// Every layout row operation on every target against its scalar row.
TEST(CscLayoutRows, VectorMatchesScalarOnEveryTarget) {
  std::mt19937 rng = MakeRng(4);
  ForEachTarget([&](const std::string& target) {
    for (size_t n : {size_t(0), size_t(1), size_t(15), size_t(16), size_t(31), size_t(33),
                     size_t(64), size_t(65), size_t(130), size_t(rng() % 400)}) {
      std::vector<uint8_t> in(8 * n + 48);  // room for the offset sources below
      for (auto& x : in) x = uint8_t(rng());
      auto check = [&](const char* what, size_t out_bytes, auto vec, auto ref) {
        GuardedBuffer got(out_bytes), want(out_bytes);
        vec(got.data());
        ref(want.data());
        ASSERT_EQ(FirstDifference(got.raw(), want.raw()), "") << target << " " << what << " n=" << n;
      };
      const uint8_t* s = in.data();
      check("interleave", 2 * n, [&](uint8_t* d) { csc::Interleave(s, s + n, d, n); },
            [&](uint8_t* d) { csc::scalar::Interleave(s, s + n, d, 0, n); });
      check("deinterleave", 2 * n, [&](uint8_t* d) { csc::Deinterleave(s, d, d + n, n); },
            [&](uint8_t* d) { csc::scalar::Deinterleave(s, d, d + n, 0, n); });
      check("even", n, [&](uint8_t* d) { csc::Even(s, d, n); },
            [&](uint8_t* d) { csc::scalar::Even(s, d, 0, n); });
      check("swap", 2 * n, [&](uint8_t* d) { memcpy(d, s, 2 * n); csc::SwapPairs(d, n); },
            [&](uint8_t* d) { memcpy(d, s, 2 * n); csc::scalar::SwapPairs(d, 0, n); });
      check("swap copy", 2 * n, [&](uint8_t* d) { csc::SwapPairs(s, d, n); },
            [&](uint8_t* d) { csc::scalar::SwapPairs(s, d, 0, n); });
      // YUYV rows over pairs: luma, then U and V planes preset to the input's
      // bytes, which the averaging mode reads.
      for (bool average : {false, true}) {
        check(average ? "yuyv avg" : "yuyv", 4 * n, [&](uint8_t* d) {
              memcpy(d + 2 * n, s + 4 * n, 2 * n);
              csc::YuyvToPlanar(s, d, d + 2 * n, d + 3 * n, n, average);
            },
            [&](uint8_t* d) {
              memcpy(d + 2 * n, s + 4 * n, 2 * n);
              csc::scalar::YuyvToPlanar(s, d, d + 2 * n, d + 3 * n, 0, n, average);
            });
      }
      // Destinations at several alignments (the x86 rows align their stores).
      for (size_t o : {0, 1, 17}) {
        check("narrow16", n + o, [&](uint8_t* d) { memset(d, 0, o), csc::Narrow16(s + o, d + o, n); },
              [&](uint8_t* d) { memset(d, 0, o), csc::scalar::Narrow16(s + o, d + o, 0, n); });
      }
      check("grey565", 2 * n, [&](uint8_t* d) { csc::GreyTo565(s, d, n); },
            [&](uint8_t* d) { csc::scalar::GreyTo565(s, d, 0, n); });
      check("grey888", 3 * n, [&](uint8_t* d) { csc::GreyTo888(s, d, n); },
            [&](uint8_t* d) { csc::scalar::GreyTo888(s, d, 0, n); });
      check("565rgba", 4 * n, [&](uint8_t* d) { csc::Rgb565ToRgba(s, d, n); },
            [&](uint8_t* d) { csc::scalar::Rgb565ToRgba(s, d, 0, n); });
      check("rgba565", 2 * n, [&](uint8_t* d) { csc::RgbaTo565(s, d, n); },
            [&](uint8_t* d) { csc::scalar::RgbTo565<4>(s, d, 0, n); });
      check("888565", 2 * n, [&](uint8_t* d) { csc::Rgb888To565(s, d, n); },
            [&](uint8_t* d) { csc::scalar::RgbTo565<3>(s, d, 0, n); });
    }
  });
}

// Tiles the linear planes of `lin` (NV12 samples) into `tiled` with the
// documented address formula.
void TileByFormula(const TestFrame& lin, TestFrame& tiled, int tw, const int th[2]) {
  for (int i = 0; i < 2; ++i) {
    const int32_t rows = lin.img.height[i], bytes = i == 0 ? lin.img.width[0] : 2 * lin.img.width[1];
    for (int y = 0; y < rows; ++y) {
      for (int x = 0; x < bytes; ++x) {
        const size_t off = size_t(y / th[i]) * tiled.img.stride[i] * th[i] + size_t(x / tw) * tw * th[i] +
                           size_t(y % th[i]) * tw + x % tw;
        tiled.buffer(i).data()[off] = lin.buffer(i).data()[y * lin.img.stride[i] + x];
      }
    }
  }
}

struct TiledCase {
  int32_t cs, tw, th0, th1, w;
};

TEST(CscTiled, MatchesLinearNv12) {
  std::mt19937 rng = MakeRng(5);
  // Widths past the kernels' 2048-byte row pieces too, in 4-pixel steps and
  // in pixel pairs.
  for (const TiledCase& c : {TiledCase{11, 64, 32, 32, 100}, TiledCase{12, 16, 16, 8, 40},
                             TiledCase{13, 8, 8, 4, 36}, TiledCase{14, 256, 16, 8, 1290},
                             TiledCase{11, 64, 32, 32, 4100}, TiledCase{14, 256, 16, 8, 4354}}) {
    for (int32_t h : {17, 34}) {
      TestFrame nv12(6, c.w, h), tiled(c.cs, c.w, h);
      nv12.FillRandom(rng);
      const int th[2] = {c.th0, c.th1};
      TileByFormula(nv12, tiled, c.tw, th);
      for (int32_t dcs : {500, 200, 400}) {
        if (c.cs != 11 && dcs != 500) continue;  // the other tilings convert to RGBA only
        TestFrame want(dcs, c.w, h, 0, 1), got(dcs, c.w, h, 0, 1);
        ASSERT_EQ(Convert(nv12, want), 0);
        ASSERT_EQ(Convert(tiled, got), 0) << c.cs;
        EXPECT_EQ(FirstDifference(got.Snapshot(), want.Snapshot()), "")
            << c.cs << " to " << dcs << " " << c.w << "x" << h;
      }
    }
  }
}

TEST(CscTiled, RoundTripThroughT64x32) {
  std::mt19937 rng = MakeRng(6);
  for (Size2 s : {Size2{64, 32}, Size2{100, 50}, Size2{130, 70}, Size2{8, 8}, Size2{4098, 9}}) {
    TestFrame yuv(1, s.w, s.h), tiled(11, s.w, s.h), back(1, s.w, s.h), nv12(6, s.w, s.h),
        nv12b(6, s.w, s.h);
    yuv.FillRandom(rng);
    ASSERT_EQ(Convert(yuv, tiled), 0);
    ASSERT_EQ(Convert(tiled, back), 0);
    EXPECT_EQ(FirstDifference(back.Snapshot(), yuv.Snapshot()), "") << s.w << "x" << s.h;
    ASSERT_EQ(Convert(tiled, nv12), 0);
    ASSERT_EQ(Convert(yuv, nv12b), 0);
    EXPECT_EQ(nv12.Snapshot(), nv12b.Snapshot());
  }
}

// The tiled kernels take the chroma extent from the image size: a plane 1
// described with the luma width (128 on a 128x64 frame) changes nothing.
TEST(CscTiled, ChromaExtentFromImageSize) {
  std::mt19937 rng = MakeRng(26);
  const std::pair<int32_t, int32_t> pairs[] = {{11, 1}, {11, 4}, {11, 6}, {11, 7},
                                               {12, 1}, {12, 6}, {1, 11}};
  for (const auto& p : pairs) {
    TestFrame src(p.first, 128, 64);
    src.FillRandom(rng);
    TestFrame wide(src);
    wide.img.width[1] = 128;
    wide.img.height[1] = 64;
    TestFrame want(p.second, 128, 64), got(p.second, 128, 64);
    ASSERT_EQ(kimgp_csc(&src.img, &want.img), 0);
    ASSERT_EQ(kimgp_csc(&wide.img, &got.img), 0);
    EXPECT_EQ(FirstDifference(got.Snapshot(), want.Snapshot()), "")
        << p.first << " -> " << p.second;
  }
}

TEST(CscP010, BlackAndWhite) {
  TestFrame src(601, 8, 8), dst(500, 8, 8);
  auto put = [](uint8_t* p, int v10) { p[0] = uint8_t(v10 << 6), p[1] = uint8_t((v10 << 6) >> 8); };
  for (int i = 0; i < 8 * 8; ++i) put(src.buffer(0).data() + 2 * i, i % 2 ? 940 : 64);
  for (size_t i = 0; i + 1 < src.buffer(1).size(); i += 2) put(src.buffer(1).data() + i, 512);
  ASSERT_EQ(Convert(src, dst), 0);
  const uint8_t* p = dst.buffer(0).data();
  EXPECT_EQ(std::vector<int>(p, p + 8), (std::vector<int>{0, 0, 0, 255, 255, 255, 255, 255}));
}

// The P010LE kernel against its 16-bit formulation (kimgp_csc.h) in the
// shared image walk, on every target: random words (low six bits included),
// sizes, strides.
void P010Reference(const csc::YuvRow& row, uint8_t* dst, int n) {
  auto word = [](const uint8_t* p) { return (p[0] | p[1] << 8) & 0xFFC0; };
  auto byte = [](int c) {
    const int x = (c + 32) >> 6;
    return uint8_t(x < 0 ? 0 : (x > 255 ? 255 : x));
  };
  for (int x = 0; x < n; ++x) {
    const int l = (word(row.y + 2 * x) * 19077 >> 16) - 1192;
    const int d = word(row.u + 4 * (x / 2)) - 32768, e = word(row.v + 4 * (x / 2)) - 32768;
    const uint8_t px[4] = {byte(l + ((e * 13752 + (1 << 14)) >> 15)),
                           byte(l + ((d * -3069 + e * -10657 + (1 << 15)) >> 16)),
                           byte(l + ((d * 17546 + (1 << 14)) >> 15)), 255};
    memcpy(dst + 4 * x, px, 4);
  }
}

// The stated bound against the BT.2020 formula in double precision: every
// luma value under many chroma pairs (all U with a sweep of V and the
// reverse), and neutral greys R = G = B.
TEST(CscP010, WithinBoundOfExactFormula) {
  constexpr int kW = 1024, kH = 2 * 64;
  TestFrame src(KIMGP_CS_P010LE, kW, kH), dst(KIMGP_CS_RGBA8888, kW, kH);
  std::mt19937 rng = MakeRng(2020);
  auto put = [&](uint8_t* p, int v10) {
    const int w = v10 << 6 | int(rng() & 63);
    p[0] = uint8_t(w), p[1] = uint8_t(w >> 8);
  };
  auto chroma = [](int row, int pair, int k) {
    if (row == 0) return 512;  // neutral
    const int sweep = (pair * 2 + (row & 1)) & 1023, other = (row * 67 + pair * 5) & 1023;
    return ((row & 2) != 0) == (k == 0) ? sweep : other;
  };
  for (int y = 0; y < kH; ++y) {
    for (int x = 0; x < kW; ++x) put(src.img.plane[0] + y * src.img.stride[0] + 2 * x, x);
  }
  for (int r = 0; r < kH / 2; ++r) {
    for (int i = 0; i < kW / 2; ++i) {
      for (int k = 0; k < 2; ++k) put(src.img.plane[1] + r * src.img.stride[1] + 4 * i + 2 * k, chroma(r, i, k));
    }
  }
  ASSERT_EQ(Convert(src, dst), 0);
  const double kr = 0.2627, kb = 0.0593, kg = 1 - kr - kb, sy = 255.0 / 876, sc = 255.0 / 896;
  double worst = 0;
  for (int y = 0; y < kH; ++y) {
    for (int x = 0; x < kW; ++x) {
      const int u = chroma(y / 2, x / 2, 0) - 512, v = chroma(y / 2, x / 2, 1) - 512;
      const double l = sy * (x - 64);
      const double want[3] = {l + sc * 2 * (1 - kr) * v,
                              l - sc * (2 * kb * (1 - kb) / kg * u + 2 * kr * (1 - kr) / kg * v),
                              l + sc * 2 * (1 - kb) * u};
      const uint8_t* p = dst.img.plane[0] + y * dst.img.stride[0] + 4 * x;
      for (int c = 0; c < 3; ++c) worst = std::max(worst, std::abs(p[c] - std::clamp(want[c], 0.0, 255.0)));
      if (u == 0 && v == 0) {
        ASSERT_TRUE(p[0] == p[1] && p[1] == p[2]) << x << "," << y;
      }
      ASSERT_EQ(p[3], 255);
    }
  }
  EXPECT_LE(worst, 0.52);
}

TEST(CscP010, MatchesFormulaOnEveryTarget) {
  std::mt19937 rng = MakeRng(601);
  const std::vector<Size2> sizes = TestSizes(rng, 8, 200, 9);
  ForEachTarget([&](const std::string& target) {
    for (const Size2& s : sizes) {
      const int32_t min_pad = (s.w & 1) ? 8 : 0;  // odd widths write one pixel more
      TestFrame src(KIMGP_CS_P010LE, s.w, s.h, min_pad + RandomPad(rng));
      TestFrame got(KIMGP_CS_RGBA8888, s.w, s.h, min_pad + RandomPad(rng));
      src.FillRandom(rng);
      got.FillRandom(rng);
      TestFrame want(got);
      const kimgp_img& si = src.img;
      csc::YuvToRgbWalk<true>(
          si.width[0], si.height[0],
          [&](int r, int crow) {
            const uint8_t* c = si.plane[1] + intptr_t(crow) * si.stride[1];
            return csc::YuvRow{si.plane[0] + intptr_t(r) * si.stride[0], c, c + 2};
          },
          want.img.plane[0], want.img.stride[0], csc::YuvToRgbRows{P010Reference, nullptr});
      kimgp_csc_p010le_to_rgba8888(src.img.plane, src.img.width, src.img.height,
                                   src.img.stride, got.img.stride, got.img.plane);
      ASSERT_EQ(FirstDifference(got.Snapshot(), want.Snapshot()), "")
          << target << " " << s.w << "x" << s.h;
    }
  });
}

}  // namespace
}  // namespace test
}  // namespace kelo
