#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "imgp/csc/yuv_to_rgb.h"
#include "kimgp_csc.h"
#include "tests/support/guarded.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

using csc::YuvMatrix;

struct Rgb {
  int r, g, b;
  bool operator==(const Rgb& o) const { return r == o.r && g == o.g && b == o.b; }
};
Rgb Convert601(int y, int u, int v) {
  Rgb c;
  csc::YuvToRgbPixel<YuvMatrix::kBt601Limited>(y, u, v, &c.r, &c.g, &c.b);
  return c;
}

TEST(YuvToRgbArithmetic, WorkedExamples) {
  EXPECT_EQ(Convert601(16, 128, 128), (Rgb{0, 0, 0}));
  EXPECT_EQ(Convert601(235, 128, 128), (Rgb{255, 255, 255}));
  EXPECT_EQ(Convert601(255, 128, 255).r, 255);
  EXPECT_EQ(Convert601(0, 0, 128).b, 0);
  uint8_t p[2];
  csc::Rgb565::Store(p, 255, 255, 255);
  EXPECT_EQ(p[0] | p[1] << 8, 0xFFFF);
  csc::Rgb565::Store(p, 8, 4, 8);
  EXPECT_EQ(p[0] | p[1] << 8, 0x0821);
  csc::Bgr565::Store(p, 255, 0, 0);
  EXPECT_EQ(p[0] | p[1] << 8, 0x001F);
  Rgb full;
  csc::YuvToRgbPixel<YuvMatrix::kBt601Full>(255, 128, 128, &full.r, &full.g, &full.b);
  EXPECT_EQ(full, (Rgb{255, 255, 255}));
  csc::YuvToRgbPixel<YuvMatrix::kBt601Full>(0, 128, 128, &full.r, &full.g, &full.b);
  EXPECT_EQ(full, (Rgb{0, 0, 0}));
}

// Row 0 of three planes, as layout S points into them.
template <class S>
csc::YuvRow MakeRow(uint8_t* const* planes) {
  const int32_t strides[3] = {0, 0, 0};
  return S::Row(planes, strides, 0, 0);
}
#define KELO_ROW_MAKER(S, D, M) &MakeRow<csc::S>,
csc::YuvRow (*const kRowMakers[])(uint8_t* const*) = {KELO_YUV_TO_RGB_ROWS(KELO_ROW_MAKER)};
#undef KELO_ROW_MAKER

// Every row of every member, on every target, against the scalar row, over
// lengths around the vector widths and random content (all 8-bit inputs).
TEST(YuvToRgbRows, VectorMatchesScalarOnEveryTarget) {
  std::mt19937 rng = MakeRng(42);
  ForEachTarget([&](const std::string& target) {
    for (int id = 0; id < csc::kYuvToRgbRowCount; ++id) {
      const auto rid = static_cast<csc::YuvToRgbRowId>(id);
      const csc::YuvToRgbRows vec = csc::YuvToRgbRowFor(rid);
      const csc::YuvToRgbRowFn ref = csc::ScalarYuvToRgbRowFor(rid).one;
      for (int n : {0, 2, 14, 16, 30, 32, 34, 62, 64, 66, 126, 130, 258, 2 + int(rng() % 400)}) {
        // Planes big enough for any layout: 4 bytes per pixel of source.
        std::vector<uint8_t> y(4 * n + 8), u(4 * n + 8), v(4 * n + 8);
        for (auto* p : {&y, &u, &v}) {
          for (auto& b : *p) b = static_cast<uint8_t>(rng());
        }
        uint8_t* const planes[3] = {y.data(), u.data(), v.data()};
        const csc::YuvRow row = kRowMakers[id](planes);
        GuardedBuffer got(4 * n), want(4 * n);
        vec.one(row, got.data(), n);
        ref(row, want.data(), n);
        ASSERT_EQ(FirstDifference(got.raw(), want.raw()), "")
            << target << " row id " << id << " n=" << n;
        if (vec.two == nullptr) continue;
        // The two-row form: a second luma row against the same chroma.
        std::vector<uint8_t> y1(4 * n + 8);
        for (auto& b : y1) b = static_cast<uint8_t>(rng());
        csc::YuvRow row1 = row;
        row1.y = y1.data();
        GuardedBuffer got0(4 * n), got1(4 * n), want1(4 * n);
        vec.two(row, row1, got0.data(), got1.data(), n);
        ref(row1, want1.data(), n);
        ASSERT_EQ(FirstDifference(got0.raw(), want.raw()), "") << target << " two, id " << id;
        ASSERT_EQ(FirstDifference(got1.raw(), want1.raw()), "") << target << " two, id " << id;
      }
    }
  });
}

// (Y, U, V) inputs through the vector rows of each matrix, on every target,
// against the scalar row: one row of 256 pixels with Y = 0 .. 255 for each
// (U, V) pair of `uvs`.
void CheckInputs(const std::vector<std::pair<int, int>>& uvs) {
  using csc::YuvRow;
  struct Case {
    csc::YuvToRgbRowId id;
    bool packed;
  };
  const Case cases[] = {{csc::kRow_I444_Rgba8888_kBt601Limited, false},
                        {csc::kRow_I420_Rgba8888_kBt601Limited, false},
                        {csc::kRow_Yuyv_Rgba8888_kBt601Limited, true},
                        {csc::kRow_I420_Rgba8888_kBt709Limited, false},
                        {csc::kRow_I420_Rgba8888_kBt601Full, false},
                        {csc::kRow_I420_Rgba8888_kBt709Full, false}};
  constexpr int n = 256;
  std::vector<csc::YuvToRgbRowFn> fns[std::size(cases)];
  std::vector<std::string> names;
  ForEachTarget([&](const std::string& target) {
    names.push_back(target);
    for (size_t c = 0; c < std::size(cases); ++c) {
      fns[c].push_back(csc::YuvToRgbRowFor(cases[c].id).one);
    }
  });
  std::vector<uint8_t> y(n), u(n), v(n), packed(2 * n), want(4 * n), got(4 * n);
  for (int i = 0; i < n; ++i) y[i] = static_cast<uint8_t>(i);
  for (const auto& [uu, vv] : uvs) {
    memset(u.data(), uu, n);
    memset(v.data(), vv, n);
    for (int i = 0; i < n; i += 2) {
      const uint8_t q[4] = {y[i], uint8_t(uu), y[i + 1], uint8_t(vv)};
      memcpy(&packed[2 * i], q, 4);
    }
    for (size_t c = 0; c < std::size(cases); ++c) {
      const YuvRow row = cases[c].packed
                             ? YuvRow{packed.data(), packed.data() + 1, packed.data() + 3}
                             : YuvRow{y.data(), u.data(), v.data()};
      csc::ScalarYuvToRgbRowFor(cases[c].id).one(row, want.data(), n);
      for (size_t t = 0; t < names.size(); ++t) {
        fns[c][t](row, got.data(), n);
        ASSERT_EQ(got, want) << names[t] << " case " << c << " u=" << uu << " v=" << vv;
      }
    }
  }
}

// Every Y and U against the extreme and central V values and every Y and V
// against those U values, and random pairs.
TEST(YuvToRgbRows, InputsOnEveryTarget) {
  const int edges[] = {0, 1, 2, 126, 127, 128, 129, 253, 254, 255};
  std::vector<std::pair<int, int>> uvs;
  for (int a = 0; a < 256; ++a) {
    for (int e : edges) {
      uvs.push_back({a, e});
      uvs.push_back({e, a});
    }
  }
  std::mt19937 rng = MakeRng(11);
  for (int i = 0; i < 2000; ++i) uvs.push_back({int(rng() % 256), int(rng() % 256)});
  CheckInputs(uvs);
}

// All 2^24 inputs (run with --gtest_also_run_disabled_tests after changing
// the arithmetic of the vector rows).
TEST(YuvToRgbRows, DISABLED_EveryInputOnEveryTarget) {
  std::vector<std::pair<int, int>> uvs;
  for (int uu = 0; uu < 256; ++uu) {
    for (int vv = 0; vv < 256; ++vv) uvs.push_back({uu, vv});
  }
  CheckInputs(uvs);
}

// An exported member, its codes, and the walk and row that define it.
struct Member {
  const char* name;
  kimgp_csc_kernel fn;
  int32_t src_cs, dst_cs;
  void (*expect)(kimgp_img* src, kimgp_img* dst);
};

template <class S, csc::YuvToRgbRowId kId>
void Expect(kimgp_img* s, kimgp_img* d) {
  csc::YuvToRgbImage<S>(s->plane, s->width, s->height, s->stride, d->stride, d->plane,
                        csc::ScalarYuvToRgbRowFor(kId));
}
template <class S, csc::YuvToRgbRowId kId>
void ExpectSwapped(kimgp_img* s, kimgp_img* d) {
  kimgp_img t = *s;
  std::swap(t.plane[1], t.plane[2]);
  std::swap(t.stride[1], t.stride[2]);
  Expect<S, kId>(&t, d);
}

#define KELO_MEMBER(name, S, scs, D, dcs, M) \
  {#name, kimgp_csc_##name, scs, dcs, Expect<csc::S, csc::kRow_##S##_##D##_##M>},
#define KELO_MEMBERS_OF(src, S, scs)                                      \
  KELO_MEMBER(src##_to_rgb565, S, scs, Rgb565, 200, kBt601Limited)        \
  KELO_MEMBER(src##_to_bgr565, S, scs, Bgr565, 201, kBt601Limited)        \
  KELO_MEMBER(src##_to_rgb888, S, scs, Rgb888, 400, kBt601Limited)        \
  KELO_MEMBER(src##_to_bgr888, S, scs, Bgr888, 401, kBt601Limited)        \
  KELO_MEMBER(src##_to_rgba8888, S, scs, Rgba8888, 500, kBt601Limited)    \
  KELO_MEMBER(src##_to_bgra8888, S, scs, Bgra8888, 501, kBt601Limited)    \
  KELO_MEMBER(src##_to_argb8888, S, scs, Argb8888, 502, kBt601Limited)    \
  KELO_MEMBER(src##_to_abgr8888, S, scs, Abgr8888, 503, kBt601Limited)

const Member kMembers[] = {
    KELO_MEMBERS_OF(yuv420, I420, 1) KELO_MEMBERS_OF(yuv422n, I422, 2)
    KELO_MEMBERS_OF(yuv444, I444, 3) KELO_MEMBERS_OF(nv12, Nv12, 6)
    KELO_MEMBERS_OF(nv21, Nv21, 7) KELO_MEMBERS_OF(uyvy, Uyvy, 100)
    KELO_MEMBERS_OF(yuyv, Yuyv, 101)
    KELO_MEMBER(yuv422w_to_rgb565, I422, 8, Rgb565, 200, kBt601Limited)
    KELO_MEMBER(yuv422w_to_bgr565, I422, 8, Bgr565, 201, kBt601Limited)
    KELO_MEMBER(bt601_fr_yuv420_to_rgba8888, I420, 1, Rgba8888, 500, kBt601Full)
    KELO_MEMBER(bt601_fr_nv12_to_rgba8888, Nv12, 6, Rgba8888, 500, kBt601Full)
    KELO_MEMBER(bt601_fr_nv21_to_rgba8888, Nv21, 7, Rgba8888, 500, kBt601Full)
    KELO_MEMBER(bt709_yuv420_to_rgba8888, I420, 1, Rgba8888, 500, kBt709Limited)
    KELO_MEMBER(bt709_fr_yuv420_to_rgba8888, I420, 1, Rgba8888, 500, kBt709Full)
#define KELO_YV12(dst, D, dcs) \
  {"yv12_to_" #dst, kimgp_csc_yv12_to_##dst, 4, dcs, ExpectSwapped<csc::I420, csc::kRow_I420_##D##_kBt601Limited>},
    KELO_YV12(rgb565, Rgb565, 200) KELO_YV12(bgr565, Bgr565, 201)
    KELO_YV12(rgb888, Rgb888, 400) KELO_YV12(bgr888, Bgr888, 401)
    KELO_YV12(rgba8888, Rgba8888, 500) KELO_YV12(bgra8888, Bgra8888, 501)
    KELO_YV12(argb8888, Argb8888, 502) KELO_YV12(abgr8888, Abgr8888, 503)
};

void PrintTo(const Member& m, std::ostream* os) { *os << m.name; }

class YuvToRgbKernel : public ::testing::TestWithParam<Member> {};

// Every width class (multiples of 8 and 4, even, odd), odd heights, padded
// strides: the whole destination buffer equals the scalar walk's, guard
// bands and row padding included.
TEST_P(YuvToRgbKernel, MatchesScalarWalk) {
  const Member& m = GetParam();
  std::mt19937 rng = MakeRng(static_cast<uint32_t>(m.src_cs * 1000 + m.dst_cs));
  std::vector<Size2> sizes = {{8, 8}, {12, 8}, {16, 9}, {10, 7}, {9, 9}, {64, 3},
                              {66, 5}, {67, 4}, {130, 2}, {2, 1}, {1, 1}};
  for (int i = 0; i < 6; ++i) sizes.push_back({int32_t(1 + rng() % 200), int32_t(1 + rng() % 12)});
  ForEachTarget([&](const std::string& target) {
    for (const Size2& s : sizes) {
      // An odd width reads and writes one pixel past the row: leave room.
      const int32_t min_pad = (s.w & 1) ? 4 : 0;
      TestFrame src(m.src_cs, s.w, s.h, min_pad + RandomPad(rng));
      TestFrame got(m.dst_cs, s.w, s.h, min_pad + RandomPad(rng));
      src.FillRandom(rng);
      got.FillRandom(rng);
      TestFrame want(got);
      TestFrame src_copy(src);
      m.expect(&src_copy.img, &want.img);
      m.fn(src.img.plane, src.img.width, src.img.height, src.img.stride, got.img.stride,
           got.img.plane);
      ASSERT_EQ(FirstDifference(got.Snapshot(), want.Snapshot()), "")
          << target << " " << m.name << " " << s.w << "x" << s.h;
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Members, YuvToRgbKernel, ::testing::ValuesIn(kMembers),
                         [](const auto& info) { return std::string(info.param.name); });

// The pixel-pair path writes one pixel beyond an odd row; the vector path
// never writes beyond the row.
TEST(YuvToRgbKernelPaths, OddWidthOverrunsByOnePixel) {
  std::mt19937 rng = MakeRng(7);
  for (int32_t w : {9, 12}) {
    TestFrame src(KIMGP_CS_YUV420, w, 2, 4);
    TestFrame dst(KIMGP_CS_RGBA8888, w, 2, 8, 0x77);
    src.FillRandom(rng);
    kimgp_csc_yuv420_to_rgba8888(src.img.plane, src.img.width, src.img.height, src.img.stride,
                                 dst.img.stride, dst.img.plane);
    const uint8_t* row0 = dst.buffer(0).data();
    EXPECT_EQ(row0[4 * w + 3], (w & 1) ? 255 : 0x77) << w;  // alpha of pixel w
    EXPECT_EQ(row0[4 * w + 4], 0x77);
  }
}

// With the pixel-pair path and an odd height, row 1 already uses chroma row 1.
TEST(YuvToRgbKernelPaths, OddHeightShiftsChromaOnPairPath) {
  for (int32_t w : {10, 12}) {
    TestFrame src(KIMGP_CS_YUV420, w, 3);
    TestFrame dst(KIMGP_CS_RGB888, w, 3);
    memset(src.buffer(0).data(), 128, src.buffer(0).size());
    memset(src.buffer(1).data(), 128, src.buffer(1).size());
    memset(src.buffer(2).data(), 16, src.img.stride[2]);       // chroma row 0: V = 16
    memset(src.buffer(2).data() + src.img.stride[2], 240, src.img.stride[2]);  // row 1
    kimgp_csc_yuv420_to_rgb888(src.img.plane, src.img.width, src.img.height, src.img.stride,
                               dst.img.stride, dst.img.plane);
    const uint8_t red_row1 = dst.buffer(0).data()[dst.img.stride[0]];
    const int want_r = Convert601(128, 128, (w % 4) ? 240 : 16).r;
    EXPECT_EQ(red_row1, want_r) << w;
  }
}

TEST(YuvToRgbKernelPaths, Yv12LeavesPlanesExchanged) {
  TestFrame src(KIMGP_CS_YV12, 8, 8), dst(KIMGP_CS_RGBA8888, 8, 8);
  uint8_t* p1 = src.img.plane[1];
  uint8_t* p2 = src.img.plane[2];
  src.img.stride[1] = 4;
  src.img.stride[2] = 5;
  kimgp_csc_yv12_to_rgba8888(src.img.plane, src.img.width, src.img.height, src.img.stride,
                             dst.img.stride, dst.img.plane);
  EXPECT_EQ(src.img.plane[1], p2);
  EXPECT_EQ(src.img.plane[2], p1);
  EXPECT_EQ(src.img.stride[1], 5);
  EXPECT_EQ(src.img.stride[2], 4);
}

}  // namespace
}  // namespace test
}  // namespace kelo
