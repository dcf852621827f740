#include <gtest/gtest.h>

#include <vector>

#include "imgp/csc/rgb_to_yuv.h"
#include "kimgp_csc.h"
#include "tests/support/guarded.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

struct Yuv {
  int y, u, v;
  bool operator==(const Yuv& o) const { return y == o.y && u == o.u && v == o.v; }
};
template <class M>
Yuv Of(int r, int g, int b) {
  return {csc::RgbToY<M>(r, g, b), csc::RgbToU<M>(r, g, b), csc::RgbToV<M>(r, g, b)};
}

TEST(RgbToYuvArithmetic, WorkedExamples) {
  using L = csc::RgbBt601Limited;
  EXPECT_EQ(Of<L>(255, 255, 255), (Yuv{235, 128, 128}));
  EXPECT_EQ(Of<L>(0, 0, 0), (Yuv{16, 128, 128}));
  EXPECT_EQ(Of<L>(255, 0, 0), (Yuv{81, 90, 240}));
  EXPECT_EQ(Of<csc::RgbBt601Full>(255, 255, 255), (Yuv{255, 128, 128}));
  EXPECT_EQ(Of<csc::RgbBt709Limited>(255, 255, 255).y, 244);
  int r, g, b;
  const uint8_t p565[2] = {0xFF, 0xFF};
  csc::Rgb565::Load(p565, &r, &g, &b);
  EXPECT_EQ(r, 0xF8);  // low bits zero, not replicated
  EXPECT_EQ(g, 0xFC);
  EXPECT_EQ(b, 0xF8);
}

#define KELO_CSTEP(S, M, SUB, CSTEP) CSTEP,
constexpr int kChromaStep[] = {KELO_RGB_TO_CHROMA_ROWS(KELO_CSTEP)};
#undef KELO_CSTEP
// The scalar luma row of each chroma row id's source and matrix.
#define KELO_LUMA_REF(S, M, SUB, CSTEP) \
  [](const uint8_t* s, uint8_t* y, int n) { csc::scalar::RgbToLumaRow<csc::S, csc::M>(s, y, 0, n); },
const csc::LumaRowFn kCombinedLumaRef[] = {KELO_RGB_TO_CHROMA_ROWS(KELO_LUMA_REF)};
#undef KELO_LUMA_REF

TEST(RgbToYuvRows, VectorMatchesScalarOnEveryTarget) {
  std::mt19937 rng = MakeRng(43);
  // Channel values at the ends of the range push the 16-bit sums to their
  // bounds: n = -432 gives every combination of them for the first three
  // bytes of 4-byte pixels, each on a pixel pair. Random bytes cover the rest.
  static constexpr uint8_t kEdges[] = {0, 1, 127, 128, 254, 255};
  ForEachTarget([&](const std::string& target) {
    for (int n : {0, 1, 7, 8, 15, 16, 17, 31, 32, 33, 63, 64, 65, 129, 1 + int(rng() % 300),
                  -432}) {
      const bool edges = n < 0;
      n = edges ? -n : n;
      std::vector<uint8_t> src(8 * n + 8);
      for (size_t j = 0; j < src.size(); ++j) {
        static constexpr int kPow6[] = {1, 6, 36, 216};
        src[j] = edges ? kEdges[(j / 8 / kPow6[j % 4]) % 6] : static_cast<uint8_t>(rng());
      }
      for (int id = 0; id < csc::kLumaRowCount; ++id) {
        GuardedBuffer got(n), want(n);
        csc::LumaRowFor(csc::LumaRowId(id))(src.data(), got.data(), n);
        csc::ScalarLumaRowFor(csc::LumaRowId(id))(src.data(), want.data(), n);
        ASSERT_EQ(FirstDifference(got.raw(), want.raw()), "") << target << " luma " << id << " n=" << n;
      }
      for (int id = 0; id < csc::kChromaRowCount; ++id) {
        // Planar rows: u and v apart; interleaved rows: both orders.
        for (int order = 0; order < 3; ++order) {
          if ((kChromaStep[id] == 1) != (order == 0)) continue;
          GuardedBuffer got(2 * n + 2), want(2 * n + 2);
          auto run = [&](csc::ChromaRowFn fn, uint8_t* base) {
            if (order == 0) fn(src.data(), base, base + n + 1, n);
            if (order == 1) fn(src.data(), base, base + 1, n);
            if (order == 2) fn(src.data(), base + 1, base, n);
          };
          run(csc::ChromaRowFor(csc::ChromaRowId(id)), got.data());
          run(csc::ScalarChromaRowFor(csc::ChromaRowId(id)), want.data());
          ASSERT_EQ(FirstDifference(got.raw(), want.raw()), "")
              << target << " chroma " << id << " order " << order << " n=" << n;
          // The combined row: luma of n pixels and chroma of n / 2 samples.
          const csc::LumaChromaRowFn both = csc::LumaChromaRowFor(csc::ChromaRowId(id));
          if (both == nullptr) continue;
          GuardedBuffer y_got(n), y_want(n), c_got(2 * n + 2), c_want(2 * n + 2);
          auto place = [&](uint8_t* base, uint8_t** u, uint8_t** v) {
            *u = order == 2 ? base + 1 : base;
            *v = order == 0 ? base + n + 1 : (order == 1 ? base + 1 : base);
          };
          uint8_t *u1, *v1, *u2, *v2;
          place(c_got.data(), &u1, &v1);
          place(c_want.data(), &u2, &v2);
          both(src.data(), y_got.data(), u1, v1, n);
          kCombinedLumaRef[id](src.data(), y_want.data(), n);
          csc::ScalarChromaRowFor(csc::ChromaRowId(id))(src.data(), u2, v2, n / 2);
          ASSERT_EQ(FirstDifference(y_got.raw(), y_want.raw()), "") << target << " both " << id;
          ASSERT_EQ(FirstDifference(c_got.raw(), c_want.raw()), "") << target << " both " << id;
        }
      }
    }
  });
}

// A member: its codes and the rows and placement that define it.
struct Member {
  const char* name;
  kimgp_csc_kernel fn;
  int32_t src_cs, dst_cs;
  void (*expect)(kimgp_img* s, kimgp_img* d);
};

template <csc::ChromaOut kOut, csc::LumaRowId kL, csc::ChromaRowId kC>
void Expect(kimgp_img* s, kimgp_img* d) {
  csc::RgbToYuvImage<kOut>(s->plane, s->width, s->height, s->stride, d->stride, d->plane,
                           csc::ScalarRows(kL, kC));
}

#define KELO_MEMBER(name, scs, dcs, OUT, S, M, SUB, CSTEP)                          \
  {#name, kimgp_csc_##name, scs, dcs,                                                \
   Expect<csc::ChromaOut::OUT, csc::kLuma_##S##_##M, csc::kChroma_##S##_##M##_##SUB##_##CSTEP>},
#define KELO_MEMBERS_OF(src, scs, S)                                                 \
  KELO_MEMBER(src##_to_yuv420, scs, 1, kYuv420, S, RgbBt601Limited, 2, 1)          \
  KELO_MEMBER(src##_to_yv12, scs, 4, kYv12, S, RgbBt601Limited, 2, 1)              \
  KELO_MEMBER(src##_to_nv12, scs, 6, kNv12, S, RgbBt601Limited, 2, 2)              \
  KELO_MEMBER(src##_to_nv21, scs, 7, kNv21, S, RgbBt601Limited, 2, 2)

const Member kMembers[] = {
    KELO_MEMBERS_OF(rgb565, 200, Rgb565) KELO_MEMBERS_OF(bgr565, 201, Bgr565)
    KELO_MEMBERS_OF(rgb888, 400, Rgb888) KELO_MEMBERS_OF(bgr888, 401, Bgr888)
    KELO_MEMBERS_OF(rgba8888, 500, Rgba8888) KELO_MEMBERS_OF(bgra8888, 501, Bgra8888)
    KELO_MEMBERS_OF(argb8888, 502, Argb8888) KELO_MEMBERS_OF(abgr8888, 503, Abgr8888)
    KELO_MEMBER(rgba8888_to_yuv444, 500, 3, kYuv444, Rgba8888, RgbBt601Limited, 1, 1)
    KELO_MEMBER(argb8888_to_yuv444, 502, 3, kYuv444, Argb8888, RgbBt601Limited, 1, 1)
    KELO_MEMBER(bt601_fr_rgba8888_to_yuv420, 500, 1, kYuv420, Rgba8888, RgbBt601Full, 2, 1)
    KELO_MEMBER(bt601_fr_rgba8888_to_yv12, 500, 4, kYv12, Rgba8888, RgbBt601Full, 2, 1)
    KELO_MEMBER(bt601_fr_rgba8888_to_nv12, 500, 6, kNv12, Rgba8888, RgbBt601Full, 2, 2)
    KELO_MEMBER(bt601_fr_rgba8888_to_nv21, 500, 7, kNv21, Rgba8888, RgbBt601Full, 2, 2)
    KELO_MEMBER(bt709_rgba8888_to_nv12, 500, 6, kNv12, Rgba8888, RgbBt709Limited, 2, 2)
    KELO_MEMBER(bt709_rgba8888_to_nv21, 500, 7, kNv21, Rgba8888, RgbBt709Limited, 2, 2)
};

void PrintTo(const Member& m, std::ostream* os) { *os << m.name; }

class RgbToYuvKernel : public ::testing::TestWithParam<Member> {};

TEST_P(RgbToYuvKernel, MatchesScalarWalk) {
  const Member& m = GetParam();
  std::mt19937 rng = MakeRng(static_cast<uint32_t>(m.src_cs * 1000 + m.dst_cs));
  std::vector<Size2> sizes = {{8, 8}, {9, 9}, {16, 3}, {33, 5}, {64, 2}, {65, 7}, {1, 1}, {2, 2}};
  for (int i = 0; i < 5; ++i) sizes.push_back({int32_t(1 + rng() % 200), int32_t(1 + rng() % 12)});
  ForEachTarget([&](const std::string& target) {
    for (const Size2& s : sizes) {
      TestFrame src(m.src_cs, s.w, s.h, RandomPad(rng));
      TestFrame got(m.dst_cs, s.w, s.h, RandomPad(rng));
      src.FillRandom(rng);
      got.FillRandom(rng);
      TestFrame want(got);
      m.expect(&src.img, &want.img);
      m.fn(src.img.plane, src.img.width, src.img.height, src.img.stride, got.img.stride,
           got.img.plane);
      ASSERT_EQ(FirstDifference(got.Snapshot(), want.Snapshot()), "")
          << target << " " << m.name << " " << s.w << "x" << s.h;
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Members, RgbToYuvKernel, ::testing::ValuesIn(kMembers),
                         [](const auto& info) { return std::string(info.param.name); });

// Chroma comes from the top-left pixel of each 2x2 block only, and an odd
// last column gets luma but no chroma of its own.
TEST(RgbToYuvKernelRules, TopLeftPixelGivesChroma) {
  TestFrame src(KIMGP_CS_RGBA8888, 3, 2), dst(KIMGP_CS_YUV420, 3, 2, 0, 0xEE);
  for (int i = 0; i < 6; ++i) {
    uint8_t* p = src.buffer(0).data() + 4 * i;
    p[0] = p[1] = p[2] = 0;  // black
  }
  uint8_t* px11 = src.buffer(0).data() + src.img.stride[0] + 4;  // pixel (1, 1)
  px11[0] = 255;
  uint8_t* px20 = src.buffer(0).data() + 8;  // pixel (2, 0)
  px20[2] = 255;
  kimgp_csc_rgba8888_to_yuv420(src.img.plane, src.img.width, src.img.height, src.img.stride,
                               dst.img.stride, dst.img.plane);
  EXPECT_EQ(dst.buffer(0).data()[dst.img.stride[0] + 1], 81);  // luma of the red pixel
  EXPECT_EQ(dst.buffer(1).data()[0], 128);                      // chroma of black
  EXPECT_EQ(dst.buffer(2).data()[0], 128);
  EXPECT_EQ(dst.buffer(1).data()[1], 0xEE);  // no chroma for the third column
}

}  // namespace
}  // namespace test
}  // namespace kelo
