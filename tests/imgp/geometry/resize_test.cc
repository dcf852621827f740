// kimgp_rsz and the per-layout resizers: statuses, plane routing, copies, and
// which kernels each ratio runs (checked by calling those kernels directly).
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "kimgp_copy.h"
#include "kimgp_rsz.h"
#include "tests/imgp/geometry/resize_fns.h"
#include "tests/support/guarded.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

// A resizer and the kernels it may run.
struct Kit {
  const char* name;
  ResizerFn resize;
  int bytes, v_mul, stride_div;
  MultFn mult;
  NonMultFn non_mult;
  WFn down_w;
  UpFn up, up1;
  WFn down_h;
  UpFn up_h, up_h1;
};
#define KELO_KIT(h, v, bytes, v_mul, div)                                                      \
  Kit {                                                                                        \
    #h, kimgp_rsz_##h, bytes, v_mul, div, kimgp_##h##_rsz_down_mult,                           \
        kimgp_##h##_rsz_down_non_mult, kimgp_##h##_rsz_down_w, kimgp_##h##_rsz_up,             \
        kimgp_##h##_rsz_up_mode1, kimgp_##v##_rsz_down_h, kimgp_##v##_rsz_up_h,                 \
        kimgp_##v##_rsz_up_h_mode1                                                             \
  }
const Kit kKits[] = {KELO_KIT(8b, 8b, 1, 1, 1), KELO_KIT(8b8b, 8b8b, 2, 1, 1),
                     KELO_KIT(5b6b5b, 5b6b5b, 2, 1, 2), KELO_KIT(8b8b8b, 8b, 3, 3, 1),
                     KELO_KIT(8b8b8b8b, 8b, 4, 4, 1)};
#undef KELO_KIT

enum Kind { kMult, kNonMult, kTwoPass };
struct Case {
  int32_t sw, sh, dw, dh;
  Kind kind;
};
// Shrinking both ways runs one kernel; anything else two passes.
const Case kCases[] = {
    {16, 12, 8, 6, kMult},    {48, 9, 12, 3, kMult},     {16, 12, 10, 7, kNonMult},
    {16, 12, 8, 7, kNonMult}, {37, 21, 20, 13, kNonMult}, {16, 12, 16, 6, kTwoPass},
    {16, 12, 8, 12, kTwoPass}, {16, 12, 5, 30, kTwoPass}, {8, 6, 16, 3, kTwoPass},
    {8, 6, 19, 13, kTwoPass},  {8, 6, 8, 6, kTwoPass}};

// True when the up kernel writes every intermediate byte (the growing
// kernels may be placeholders, which leave the intermediate as it was).
bool UpWritesAll(const Kit& k) {
  std::vector<uint8_t> s(8 * k.bytes, 7), a(16 * k.bytes, 0), b(16 * k.bytes, 0xFF);
  k.up(s.data(), a.data(), 16, 8, 1, 2, 0, 8 * k.bytes / k.stride_div);
  k.up(s.data(), b.data(), 16, 8, 1, 2, 0, 8 * k.bytes / k.stride_div);
  return a == b;
}

// The kernels the definition names for the case, called directly.
void Expect(const Kit& k, const Case& c, const uint8_t* s, int32_t ss, uint8_t* d, int32_t ds,
            uint8_t* tmp, int32_t mode) {
  ss /= k.stride_div;
  ds /= k.stride_div;
  const int32_t fw = c.sw / c.dw, rw = c.sw % c.dw, fh = c.sh / c.dh, rh = c.sh % c.dh;
  const bool m1 = mode == KIMGP_RSZ_MODE1;
  switch (c.kind) {
    case kMult:
      k.mult(s, d, c.dw, c.dh, fw, ss, fh * ss, ds);
      return;
    case kNonMult:
      k.non_mult(s, d, c.dw, c.dh, fw, ss, fh * ss, rw, rh, ds);
      return;
    case kTwoPass:
      if (c.dw < c.sw) {
        k.down_w(s, tmp, ss, c.dw, c.sh, fw, rw);
      } else {
        (m1 ? k.up1 : k.up)(s, tmp, c.dw, c.sw, c.sh, c.dw / c.sw, c.dw % c.sw, ss);
      }
      if (c.dh < c.sh) {
        k.down_h(tmp, d, c.dw * k.v_mul, ds, c.dh, fh, rh);
      } else {
        (m1 ? k.up_h1 : k.up_h)(tmp, d, c.dw * k.v_mul, c.sh, c.dh, c.dh / c.sh, c.dh % c.sh, ds);
      }
      return;
  }
}

// The resizer against its kernels on random rows with padded strides: the
// first difference of the guarded destinations, or the status.
std::string ResizeAgainstKernels(const Kit& k, const Case& c, int32_t mode, std::mt19937& rng) {
  const int32_t ss = c.sw * k.bytes + 2 * (rng() % 5), ds = c.dw * k.bytes + 2 * (rng() % 5);
  std::vector<uint8_t> src(static_cast<size_t>(ss) * c.sh);
  for (auto& b : src) b = static_cast<uint8_t>(rng());
  GuardedBuffer got(static_cast<size_t>(ds) * c.dh), want(got.size());
  std::vector<uint8_t> tmp1(static_cast<size_t>(c.sh) * c.dw * k.bytes);
  std::vector<uint8_t> tmp2(tmp1.size());
  const int32_t st =
      k.resize(src.data(), c.sw, c.sh, c.dw, c.dh, got.data(), tmp1.data(), ss, ds, mode);
  if (st != KIMGP_OK) return "status " + std::to_string(st);
  Expect(k, c, src.data(), ss, want.data(), ds, tmp2.data(), mode);
  return FirstDifference(got.raw(), want.raw());
}

class Resizers : public ::testing::TestWithParam<Kit> {};

TEST_P(Resizers, RatioPicksKernels) {
  const Kit& k = GetParam();
  std::mt19937 rng = MakeRng(11);
  const bool up_ok = UpWritesAll(k);
  for (const Case& c : kCases) {
    if (c.kind == kTwoPass && c.dw >= c.sw && c.dh < c.sh && !up_ok) continue;
    for (int32_t mode : {0, KIMGP_RSZ_MODE1}) {
      SCOPED_TRACE(::testing::Message() << c.sw << "x" << c.sh << " to " << c.dw << "x" << c.dh
                                        << " mode " << mode);
      ASSERT_EQ(ResizeAgainstKernels(k, c, mode, rng), "");
    }
  }
}

// Growing both ways writes the width pass straight to the destination and
// runs both passes in strips of source rows (up to 64, about 64 KB of
// output rows, at least 2): the same bytes as the whole passes through the
// intermediate, on every target, with the plane ending on, just after and
// mid strip. A third of the cases shrink the width instead, through the
// intermediate.
TEST_P(Resizers, StripsMatchWholePasses) {
  const Kit& k = GetParam();
  std::mt19937 rng = MakeRng(17);
  struct Strip {
    int32_t row_bytes, sh;
  };
  const Strip strips[] = {{32800, 1}, {32800, 2}, {32800, 3}, {32800, 6}, {8200, 7},
                          {8200, 8},  {8200, 13}, {8200, 14}, {8200, 21}, {100, 64},
                          {100, 65},  {100, 127}, {100, 130}};
  ForEachTarget([&](const std::string& target) {
    for (const Strip& st : strips) {
      const int32_t dw = (st.row_bytes + k.bytes - 1) / k.bytes;
      const int32_t pick = static_cast<int32_t>(rng() % 3);  // double, grow or shrink width
      const int32_t sw = pick == 0 ? (dw + 1) / 2 : pick == 1 ? dw / 2 + 1 : dw + 5;
      const int32_t dh = st.sh + static_cast<int32_t>(rng() % (3 * st.sh + 1));
      const Case c{sw, st.sh, dw, dh, kTwoPass};
      const int32_t mode = rng() % 2 ? KIMGP_RSZ_MODE1 : 0;
      SCOPED_TRACE(::testing::Message() << target << " " << sw << "x" << st.sh << " to " << dw
                                        << "x" << dh << " mode " << mode);
      ASSERT_EQ(ResizeAgainstKernels(k, c, mode, rng), "");
    }
  });
}

// Doubling both ways, whose rows end on vectors that overlap the ones before
// them: widths around 16 and 32 source units, odd ones, one to five rows.
TEST_P(Resizers, DoublingBothWaysMatchesKernels) {
  const Kit& k = GetParam();
  std::mt19937 rng = MakeRng(19);
  ForEachTarget([&](const std::string& target) {
    for (int32_t sw : {16, 17, 18, 31, 33, 48, 49, 50, 65, 97}) {
      for (int32_t sh : {1, 2, 5}) {
        const Case c{sw, sh, 2 * sw, 2 * sh, kTwoPass};
        const int32_t mode = sh == 2 ? KIMGP_RSZ_MODE1 : 0;
        SCOPED_TRACE(::testing::Message() << target << " " << sw << "x" << sh << " mode " << mode);
        ASSERT_EQ(ResizeAgainstKernels(k, c, mode, rng), "");
      }
    }
  });
}

TEST_P(Resizers, SizeBelowOneIsRefused) {
  const Kit& k = GetParam();
  uint8_t src[64] = {}, tmp[64];
  GuardedBuffer dst(16);
  const std::vector<uint8_t> before = dst.raw();
  for (const Case& c : {Case{0, 2, 2, 2, kMult}, Case{2, 0, 2, 2, kMult}, Case{2, 2, 0, 2, kMult},
                        Case{2, 2, 2, -1, kMult}}) {
    EXPECT_EQ(k.resize(src, c.sw, c.sh, c.dw, c.dh, dst.data(), tmp, 8, 8, 0), KIMGP_ERR_ARGS);
  }
  EXPECT_EQ(dst.raw(), before);
}

INSTANTIATE_TEST_SUITE_P(Layouts, Resizers, ::testing::ValuesIn(kKits),
                         [](const ::testing::TestParamInfo<Kit>& i) {
                           return std::string("L") + i.param.name;
                         });

// Every code class: unsupported codes give -3 and write nothing.
TEST(Resize, StatusesAndNothingWrittenOnFailure) {
  struct Row {
    int32_t cs;
    int32_t status;
  };
  const Row rows[] = {{11, -3},  {100, -3}, {101, -3}, {150, -3}, {202, -3}, {300, -3},
                      {402, -3}, {504, -3}, {600, -3}, {602, -3}, {1000, -3}};
  for (const Row& r : rows) {
    TestFrame src(r.cs, 16, 8), dst(r.cs, 8, 4);
    const auto before = dst.Snapshot();
    EXPECT_EQ(kimgp_rsz(&src.img, &dst.img), r.status) << r.cs;
    EXPECT_EQ(dst.Snapshot(), before) << r.cs;
  }
  // Codes that differ, and a width or height below 1, give -1.
  TestFrame a(KIMGP_CS_YUV420, 16, 8), b(KIMGP_CS_YV12, 8, 4);
  const auto before = b.Snapshot();
  EXPECT_EQ(kimgp_rsz(&a.img, &b.img), KIMGP_ERR_ARGS);
  EXPECT_EQ(b.Snapshot(), before);
  for (int32_t cs : {0, 1, 6, 200, 400, 500, int32_t{KIMGP_CS_P010LE}}) {
    TestFrame s(cs, 16, 8), d(cs, 8, 4);
    const auto d_before = d.Snapshot();
    d.img.width[0] = 0;
    EXPECT_EQ(kimgp_rsz(&s.img, &d.img), KIMGP_ERR_ARGS) << cs;
    d.img.width[0] = 8;
    d.img.height[0] = 0;
    EXPECT_EQ(kimgp_rsz(&s.img, &d.img), KIMGP_ERR_ARGS) << cs;
    EXPECT_EQ(d.Snapshot(), d_before) << cs;
  }
}

// Each plane through the resizer of its layout, the destination's mode
// passed on; codes 9 and 10 resize as three planes. One-row frames of odd
// width check that the intermediate holds two-byte chroma pairs.
TEST(Resize, PlanesGoToTheirResizers) {
  std::mt19937 rng = MakeRng(12);
  struct Route {
    int32_t cs;
    ResizerFn luma, chroma;
    int planes;
  };
  const Route routes[] = {{0, kimgp_rsz_8b, nullptr, 1},         {1, kimgp_rsz_8b, kimgp_rsz_8b, 3},
                          {2, kimgp_rsz_8b, kimgp_rsz_8b, 3},       {4, kimgp_rsz_8b, kimgp_rsz_8b, 3},
                          {9, kimgp_rsz_8b, kimgp_rsz_8b, 3},       {6, kimgp_rsz_8b, kimgp_rsz_8b8b, 2},
                          {7, kimgp_rsz_8b, kimgp_rsz_8b8b, 2},     {200, kimgp_rsz_5b6b5b, nullptr, 1},
                          {201, kimgp_rsz_5b6b5b, nullptr, 1},      {400, kimgp_rsz_8b8b8b, nullptr, 1},
                          {401, kimgp_rsz_8b8b8b, nullptr, 1},      {500, kimgp_rsz_8b8b8b8b, nullptr, 1},
                          {503, kimgp_rsz_8b8b8b8b, nullptr, 1}};
  // The last four: strips of luma rows, strips of two rows, and luma
  // intermediates of 30 KB (on the stack) and 32.5 KB (from the heap).
  const Size2 sizes[][2] = {{{38, 22}, {20, 13}},    {{38, 22}, {19, 22}}, {{38, 22}, {9, 30}},
                            {{3, 1}, {5, 1}},        {{1, 1}, {3, 1}},     {{5, 1}, {7, 2}},
                            {{100, 130}, {256, 301}}, {{5000, 3}, {9000, 7}},
                            {{100, 120}, {256, 100}}, {{100, 130}, {256, 100}}};
  for (const Route& r : routes) {
    for (const auto& sd : sizes) {
      const Size2 sz = sd[0], d = sd[1];
      SCOPED_TRACE(::testing::Message() << r.cs << " " << sz.w << "x" << sz.h << " to " << d.w
                                        << "x" << d.h);
      TestFrame src(r.cs, sz.w, sz.h, RandomPad(rng) & ~1),
          got(r.cs, d.w, d.h, RandomPad(rng) & ~1);
      src.FillRandom(rng);
      got.FillRandom(rng);
      got.img.rsz_mode = static_cast<int32_t>(rng() % 2 ? KIMGP_RSZ_MODE1 : 0);
      TestFrame want(got);
      ASSERT_EQ(kimgp_rsz(&src.img, &got.img), KIMGP_OK);
      std::vector<uint8_t> tmp(static_cast<size_t>(sz.h) * want.img.stride[0] * 2 + 8);
      for (int i = 0; i < r.planes; ++i) {
        ASSERT_EQ((i == 0 ? r.luma : r.chroma)(src.img.plane[i], src.img.width[i], src.img.height[i],
                                               want.img.width[i], want.img.height[i],
                                               want.img.plane[i], tmp.data(), src.img.stride[i],
                                               want.img.stride[i], want.img.rsz_mode),
                  KIMGP_OK);
      }
      ASSERT_EQ(FirstDifference(got.Snapshot(), want.Snapshot()), "");
    }
  }
}

// Equal plane-0 sizes copy every plane with the source's own sizes, whatever
// the destination's other planes say.
TEST(Resize, SameSizeCopiesByPlaneZero) {
  std::mt19937 rng = MakeRng(13);
  for (int32_t cs : {0, 1, 6, 7, 200, 400, 500, int32_t{KIMGP_CS_P010LE}}) {
    SCOPED_TRACE(cs);
    TestFrame src(cs, 30, 10, 4), got(cs, 30, 10, 6);
    src.FillRandom(rng);
    got.FillRandom(rng);
    for (int i = 1; i < got.planes(); ++i) got.img.width[i] = got.img.height[i] = 1;
    TestFrame want(got);
    const int bytes = cs >= 500 ? 4 : cs >= 400 ? 3 : cs >= 200 ? 2 : 1;
    for (int i = 0; i < src.planes(); ++i) {
      int64_t row = int64_t{src.img.width[i]} * bytes;
      if (i == 1 && (cs == 6 || cs == 7)) row *= 2;
      if (cs == KIMGP_CS_P010LE) row = int64_t{src.img.width[i]} * (i == 0 ? 2 : 4);
      ReferenceCopyRows(src.img.plane[i], src.img.stride[i], want.img.plane[i], want.img.stride[i],
                        row, src.img.height[i]);
    }
    ASSERT_EQ(kimgp_rsz(&src.img, &got.img), KIMGP_OK);
    ASSERT_EQ(FirstDifference(got.Snapshot(), want.Snapshot()), "");
  }
}

// P010LE: whole-number shrinks only, with the 16-bit kernels; plane 0 stays
// written when plane 1's ratio is refused.
TEST(Resize, P010WholeNumberShrinks) {
  std::mt19937 rng = MakeRng(14);
  TestFrame src(KIMGP_CS_P010LE, 1920, 1080);
  src.FillRandom(rng);
  TestFrame got(KIMGP_CS_P010LE, 960, 540);
  TestFrame want(got);
  kimgp_16b_rsz_down_mult(src.img.plane[0], want.img.plane[0], 960, 540, 2, src.img.stride[0],
                          2 * src.img.stride[0], want.img.stride[0]);
  kimgp_16b16b_rsz_down_mult(src.img.plane[1], want.img.plane[1], 480, 270, 2, src.img.stride[1],
                             2 * src.img.stride[1], want.img.stride[1]);
  ASSERT_EQ(kimgp_rsz(&src.img, &got.img), KIMGP_OK);
  ASSERT_EQ(FirstDifference(got.Snapshot(), want.Snapshot()), "");

  for (const Size2& d : {Size2{1280, 720}, Size2{1920, 540}}) {
    TestFrame dst(KIMGP_CS_P010LE, d.w, d.h);
    const auto before = dst.Snapshot();
    EXPECT_EQ(kimgp_rsz(&src.img, &dst.img), KIMGP_ERR_UNSUPPORTED) << d.w;
    EXPECT_EQ(dst.Snapshot(), before);
  }

  TestFrame part(KIMGP_CS_P010LE, 960, 540);
  part.img.width[1] = 300;  // 480 / 300 leaves a remainder
  TestFrame part_want(part);
  std::memcpy(part_want.img.plane[0], want.img.plane[0], want.buffer(0).size());
  ASSERT_EQ(kimgp_rsz(&src.img, &part.img), KIMGP_ERR_UNSUPPORTED);
  ASSERT_EQ(FirstDifference(part.Snapshot(), part_want.Snapshot()), "");
}

// The fixed-size 16-to-9 paths give the general kernel's bytes, including the
// 1280x580 frame whose luma takes the fixed path and chroma does not.
TEST(Resize, FixedSizePathsMatchGeneralKernel) {
  std::mt19937 rng = MakeRng(15);
  struct Frame {
    int32_t cs, sw, sh, dw, dh;
  };
  for (const Frame& f : {Frame{1, 1280, 580, 720, 326}, Frame{1, 1280, 720, 720, 404},
                         Frame{6, 1280, 720, 720, 404}, Frame{6, 1280, 580, 720, 326},
                         Frame{1, 1280, 720, 720, 405}}) {
    SCOPED_TRACE(::testing::Message() << f.cs << " to " << f.dw << "x" << f.dh);
    TestFrame src(f.cs, f.sw, f.sh);
    src.FillRandom(rng);
    TestFrame got(f.cs, f.dw, f.dh);
    TestFrame want(got);
    ASSERT_EQ(kimgp_rsz(&src.img, &got.img), KIMGP_OK);
    for (int i = 0; i < src.planes(); ++i) {
      const auto fn = i == 1 && f.cs == 6 ? kimgp_8b8b_rsz_down_non_mult : kimgp_8b_rsz_down_non_mult;
      const int32_t sw = src.img.width[i], sh = src.img.height[i];
      const int32_t dw = want.img.width[i], dh = want.img.height[i];
      fn(src.img.plane[i], want.img.plane[i], dw, dh, sw / dw, src.img.stride[i],
         sh / dh * src.img.stride[i], sw % dw, sh % dh, want.img.stride[i]);
    }
    ASSERT_EQ(FirstDifference(got.Snapshot(), want.Snapshot()), "");
  }
}

// Mode 1 changes only growing directions.
TEST(Resize, ModeOneLeavesShrinksAlone) {
  std::mt19937 rng = MakeRng(16);
  for (int32_t cs : {1, 6, 200, 400, 500}) {
    TestFrame src(cs, 41, 23);
    src.FillRandom(rng);
    TestFrame a(cs, 17, 9), b(cs, 17, 9);
    b.img.rsz_mode = KIMGP_RSZ_MODE1;
    ASSERT_EQ(kimgp_rsz(&src.img, &a.img), KIMGP_OK);
    ASSERT_EQ(kimgp_rsz(&src.img, &b.img), KIMGP_OK);
    ASSERT_EQ(FirstDifference(a.Snapshot(), b.Snapshot()), "") << cs;
  }
}

}  // namespace
}  // namespace test
}  // namespace kelo
