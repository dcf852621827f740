// Resize with rotation: every rotating resizer and kernel against the plain
// resize into a scratch plane turned by the scalar rotation, on every target;
// kimgp_rsz_rot's statuses and routing against kimgp_rsz and kimgp_rot.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <ostream>
#include <utility>
#include <random>
#include <string>
#include <vector>

#include "imgp/geometry/rotate_kernels.h"
#include "kimgp_rot.h"
#include "kimgp_rsz.h"
#include "kimgp_rsz_rot.h"
#include "tests/imgp/geometry/resize_fns.h"
#include "tests/support/guarded.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

// The kernels of one resize, plain or rotating, in the order of kimgp_rsz.h.
struct Kernels {
  MultFn mult;
  NonMultFn non_mult;
  WFn down_w, down_h;
  UpFn up, up1, up_h, up_h1;
};
#define KELO_KERNELS(p)                                                                \
  Kernels {                                                                            \
    p##down_mult, p##down_non_mult, p##down_w, p##down_h, p##up, p##up_mode1, p##up_h, \
        p##up_h_mode1                                                                  \
  }

// A rotating resizer, its kernels and their plain twins.
struct Kit {
  const char* name;
  int op;
  int unit;
  ResizerFn resize, plain_resize;
  Kernels rot, plain;
};
#define KELO_KIT(l, op, kop, unit)                                                            \
  Kit {                                                                                       \
    #l "_" #op, kop, unit, kimgp_rsz_##l##_rot_##op, kimgp_rsz_##l,                           \
        KELO_KERNELS(kimgp_##l##_rsz_rot_##op##_), KELO_KERNELS(kimgp_##l##_rsz_)             \
  }
const Kit kKits[] = {KELO_KIT(8b, 90l, kRot90l, 1),   KELO_KIT(8b, 90r, kRot90r, 1),
                     KELO_KIT(8b, 180, kRot180, 1),   KELO_KIT(8b8b, 90l, kRot90l, 2),
                     KELO_KIT(8b8b, 90r, kRot90r, 2), KELO_KIT(8b8b, 180, kRot180, 2)};
#undef KELO_KIT
#undef KELO_KERNELS
void PrintTo(const Kit& k, std::ostream* os) { *os << k.name; }

bool Quarter(int op) { return op == kRot90l || op == kRot90r; }

// A source plane, a guarded destination and the expected destination.
struct Planes {
  Planes(const Kit& k, int32_t sw, int32_t sh, int32_t w, int32_t h, std::mt19937& rng)
      : ss(sw * k.unit + RandomPad(rng)),
        dw(Quarter(k.op) ? h : w),
        dh(Quarter(k.op) ? w : h),
        ds(dw * k.unit + RandomPad(rng)),
        src(static_cast<size_t>(ss) * sh),
        got(static_cast<size_t>(ds) * dh),
        want(got.size()),
        scratch(static_cast<size_t>(w) * h * k.unit) {
    for (auto& b : src) b = static_cast<uint8_t>(rng());
    for (auto& b : got.raw()) b = static_cast<uint8_t>(rng());
    want.raw() = got.raw();
  }
  // The plain W x H result in the scratch plane, turned into want.
  void Turn(const Kit& k, int32_t w, int32_t h) {
    scalar::Rotate(k.op, static_cast<size_t>(k.unit), scratch.data(), w, h,
                   ptrdiff_t{w} * k.unit, ds, want.data());
  }
  int32_t ss, dw, dh, ds;
  std::vector<uint8_t> src;
  GuardedBuffer got, want;
  std::vector<uint8_t> scratch;
};

// Plain results W x H of sw x sh sources: shrinking (whole and not), growing,
// mixed and kept directions, odd sizes, widths past one tile row (2048
// units) so that the kernels work in column chunks, and 2:1 and 3:2 shrinks
// through bands of 64 rows with rows and columns left over (12 rows after a
// band: the last 8-row turn overlaps the one before), and 3:2 shrinks whose
// last group of columns reads a window that ends the source row.
struct Pair {
  int32_t sw, sh, w, h;
};
const Pair kPairs[] = {
    {16, 12, 8, 6},    {48, 36, 12, 9},   {37, 21, 20, 13},   {33, 47, 17, 16},
    {38, 22, 19, 22},  {38, 22, 38, 11},  {17, 9, 33, 9},     {9, 30, 20, 61},
    {8, 6, 19, 13},    {5, 3, 40, 35},    {61, 17, 20, 70},   {20, 70, 61, 17},
    {1, 1, 3, 2},      {3, 1, 1, 1},      {4300, 35, 2100, 33}, {1100, 19, 2300, 40},
    {1100, 41, 2300, 19}, {120, 260, 60, 19}, {4400, 30, 2200, 15}, {3300, 20, 2200, 10},
    {200, 140, 100, 70}, {330, 99, 220, 66}, {333, 200, 222, 133}, {4200, 130, 2100, 65},
    {200, 152, 100, 76}, {96, 48, 64, 32},  {240, 99, 160, 66}};

class RotResizers : public ::testing::TestWithParam<Kit> {};

// The resizer against the plain resizer's W x H result turned by the scalar
// rotation; also random pairs.
TEST_P(RotResizers, MatchPlainResizeThenRotate) {
  const Kit& k = GetParam();
  std::mt19937 rng = MakeRng(41);
  std::vector<Pair> pairs(std::begin(kPairs), std::end(kPairs));
  for (int i = 0; i < 12; ++i) {
    pairs.push_back({static_cast<int32_t>(1 + rng() % 90), static_cast<int32_t>(1 + rng() % 40),
                     static_cast<int32_t>(1 + rng() % 90), static_cast<int32_t>(1 + rng() % 40)});
  }
  ForEachTarget([&](const std::string& target) {
    for (const Pair& p : pairs) {
      for (int32_t mode : {0, KIMGP_RSZ_MODE1}) {
        SCOPED_TRACE(::testing::Message() << target << " " << p.sw << "x" << p.sh << " to "
                                          << p.w << "x" << p.h << " mode " << mode);
        Planes f(k, p.sw, p.sh, p.w, p.h, rng);
        std::vector<uint8_t> tmp(static_cast<size_t>(p.sh) * p.w * k.unit);
        ASSERT_EQ(k.plain_resize(f.src.data(), p.sw, p.sh, p.w, p.h, f.scratch.data(), tmp.data(),
                                 f.ss, p.w * k.unit, mode),
                  KIMGP_OK);
        f.Turn(k, p.w, p.h);
        ASSERT_EQ(k.resize(f.src.data(), p.sw, p.sh, f.dw, f.dh, f.got.data(), tmp.data(), f.ss,
                           f.ds, mode),
                  KIMGP_OK);
        ASSERT_EQ(FirstDifference(f.got.raw(), f.want.raw()), "");
      }
    }
  });
}

// Each rotating kernel called directly with its plain twin's arguments,
// including ratios the resizers never pick for it.
TEST_P(RotResizers, KernelsMatchPlainKernelThenRotate) {
  const Kit& k = GetParam();
  std::mt19937 rng = MakeRng(42);
  ForEachTarget([&](const std::string& target) {
    for (const Pair& p : kPairs) {
      SCOPED_TRACE(::testing::Message() << target << " " << p.sw << "x" << p.sh << " to "
                                        << p.w << "x" << p.h);
      const int32_t fw = p.sw / p.w, rw = p.sw % p.w, fh = p.sh / p.h, rh = p.sh % p.h;
      const int32_t qw = p.w / p.sw, qh = p.h / p.sh;
      const int32_t row = p.w * k.unit;
      // Every kind whose sizes fit: (rotating, plain) calls of one kernel.
      std::vector<std::pair<std::string, std::function<void(const Kernels&, Planes&,
                                                            const uint8_t*, uint8_t*, int32_t)>>>
          calls;
      if (fw >= 1 && fh >= 1) {
        calls.push_back({"non_mult", [&](const Kernels& n, Planes& f, const uint8_t*, uint8_t* d,
                                         int32_t ds) {
                           n.non_mult(f.src.data(), d, p.w, p.h, fw, f.ss, fh * f.ss, rw, rh, ds);
                         }});
      }
      if (fw >= 2 && fh >= 2) {
        calls.push_back({"mult", [&](const Kernels& n, Planes& f, const uint8_t*, uint8_t* d,
                                     int32_t ds) {
                           n.mult(f.src.data(), d, p.w, p.h, fw, f.ss, fh * f.ss, ds);
                         }});
      }
      // Vertical kinds read an intermediate of sh rows of W units.
      if (fh >= 1) {
        calls.push_back({"down_h", [&](const Kernels& n, Planes&, const uint8_t* t, uint8_t* d,
                                       int32_t ds) { n.down_h(t, d, p.w, ds, p.h, fh, rh); }});
      }
      if (qh >= 1) {
        calls.push_back({"up_h", [&](const Kernels& n, Planes&, const uint8_t* t, uint8_t* d,
                                     int32_t ds) { n.up_h(t, d, p.w, p.sh, p.h, qh, p.h % p.sh, ds); }});
        calls.push_back({"up_h_mode1", [&](const Kernels& n, Planes&, const uint8_t* t,
                                           uint8_t* d, int32_t ds) {
                           n.up_h1(t, d, p.w, p.sh, p.h, qh, p.h % p.sh, ds);
                         }});
      }
      for (const auto& c : calls) {
        SCOPED_TRACE(c.first);
        Planes f(k, p.sw, p.sh, p.w, p.h, rng);
        std::vector<uint8_t> t(static_cast<size_t>(p.sh) * row);
        for (auto& b : t) b = static_cast<uint8_t>(rng());
        c.second(k.plain, f, t.data(), f.scratch.data(), row);
        f.Turn(k, p.w, p.h);
        c.second(k.rot, f, t.data(), f.got.data(), f.ds);
        ASSERT_EQ(FirstDifference(f.got.raw(), f.want.raw()), "");
      }
      // The horizontal kinds write the plain kernels' unrotated rows.
      Planes f(k, p.sw, p.sh, p.w, p.h, rng);
      std::vector<uint8_t> a(static_cast<size_t>(p.sh) * row + 64, 0x11), b(a);
      if (p.w < p.sw) {
        k.plain.down_w(f.src.data(), a.data(), f.ss, p.w, p.sh, fw, rw);
        k.rot.down_w(f.src.data(), b.data(), f.ss, p.w, p.sh, fw, rw);
      } else {
        k.plain.up1(f.src.data(), a.data(), p.w, p.sw, p.sh, qw, p.w % p.sw, f.ss);
        k.rot.up1(f.src.data(), b.data(), p.w, p.sw, p.sh, qw, p.w % p.sw, f.ss);
        k.plain.up(f.src.data(), a.data() + 32, p.w, p.sw, 1, qw, p.w % p.sw, f.ss);
        k.rot.up(f.src.data(), b.data() + 32, p.w, p.sw, 1, qw, p.w % p.sw, f.ss);
      }
      ASSERT_EQ(a, b);
    }
  });
}

TEST_P(RotResizers, SizeBelowOneIsRefused) {
  const Kit& k = GetParam();
  uint8_t src[64] = {}, tmp[64];
  GuardedBuffer dst(16);
  const std::vector<uint8_t> before = dst.raw();
  for (const Pair& c : {Pair{0, 2, 2, 2}, Pair{2, 0, 2, 2}, Pair{2, 2, 0, 2}, Pair{2, 2, 2, -1}}) {
    EXPECT_EQ(k.resize(src, c.sw, c.sh, c.w, c.h, dst.data(), tmp, 8, 8, 0), KIMGP_ERR_ARGS);
  }
  EXPECT_EQ(dst.raw(), before);
}

INSTANTIATE_TEST_SUITE_P(Layouts, RotResizers, ::testing::ValuesIn(kKits),
                         [](const ::testing::TestParamInfo<Kit>& i) {
                           return std::string("L") + i.param.name;
                         });

TEST(RotResizers, QuarterEntryWritesNothing) {
  GuardedBuffer dst(64);
  const std::vector<uint8_t> before = dst.raw();
  uint8_t src[64] = {1, 2, 3};
  kimgp_rsz_8b_rot_90r_quarter(src, 8, 8, 4, 4, dst.data(), nullptr, 8, 8, 0);
  EXPECT_EQ(dst.raw(), before);
}

// What kimgp_rsz_rot must give: the plain kimgp_rsz to the unrotated sizes,
// then kimgp_rot for the turns; the plain resize alone for other codes.
TestFrame Expected(const TestFrame& src, const TestFrame& dst, int32_t rot) {
  TestFrame want(dst);
  if (rot < KIMGP_ROT_90L || rot > KIMGP_ROT_180) {
    EXPECT_EQ(kimgp_rsz(&src.img, &want.img), KIMGP_OK);
    return want;
  }
  const bool quarter = rot != KIMGP_ROT_180;
  TestFrame plain(src.img.cs, quarter ? dst.img.height[0] : dst.img.width[0],
                  quarter ? dst.img.width[0] : dst.img.height[0]);
  plain.img.rsz_mode = dst.img.rsz_mode;
  EXPECT_EQ(kimgp_rsz(&src.img, &plain.img), KIMGP_OK);
  EXPECT_EQ(kimgp_rot(&plain.img, static_cast<uint32_t>(rot), &want.img), KIMGP_OK);
  return want;
}

TEST(ResizeRotate, FramesMatchResizeThenRotate) {
  std::mt19937 rng = MakeRng(43);
  for (int32_t cs : {0, 1, 6, 7}) {
    for (int32_t rot = 0; rot <= 5; ++rot) {
      for (const Pair& p : {Pair{40, 22, 17, 9}, Pair{40, 22, 64, 30}, Pair{33, 20, 20, 41},
                            Pair{32, 20, 16, 10}}) {
        SCOPED_TRACE(::testing::Message() << "cs " << cs << " rot " << rot << " " << p.sw << "x"
                                          << p.sh << " to " << p.w << "x" << p.h);
        const bool quarter = rot == KIMGP_ROT_90L || rot == KIMGP_ROT_90R;
        TestFrame src(cs, p.sw, p.sh, RandomPad(rng) & ~1);
        TestFrame got(cs, quarter ? p.h : p.w, quarter ? p.w : p.h, RandomPad(rng) & ~1);
        src.FillRandom(rng);
        got.FillRandom(rng);
        got.img.rsz_mode = static_cast<int32_t>(rng() % 2 ? KIMGP_RSZ_MODE1 : 0);
        const TestFrame want = Expected(src, got, rot);
        ASSERT_EQ(kimgp_rsz_rot(&src.img, rot, &got.img), KIMGP_OK);
        ASSERT_EQ(FirstDifference(got.Snapshot(), want.Snapshot()), "");
      }
    }
  }
}

TEST(ResizeRotate, StatusesAndNothingWrittenOnFailure) {
  struct Row {
    int32_t cs, rot, sw, sh, dw, dh, status;
  };
  const Row rows[] = {
      {KIMGP_CS_RGB888, 2, 16, 8, 4, 8, -3},  {KIMGP_CS_RGB888, 2, 16, 8, 16, 8, -3},
      {KIMGP_CS_RGBA8888, 1, 16, 8, 8, 8, -3}, {KIMGP_CS_T64X32, 1, 16, 8, 4, 8, -3},
      {KIMGP_CS_T64X32, 0, 16, 8, 8, 4, -3},  {100, 3, 16, 8, 8, 4, -3},
      {200, 0, 16, 8, 8, 4, -3},              {KIMGP_CS_P010LE, 0, 16, 8, 8, 4, -3},
      {KIMGP_CS_YUV420, 1, 16, 8, 0, 8, -1},  {KIMGP_CS_YUV400, 3, 16, 8, 8, 0, -1},
      {KIMGP_CS_NV12, 2, 16, 8, 0, 8, -1}};
  for (const Row& r : rows) {
    SCOPED_TRACE(::testing::Message() << "cs " << r.cs << " rot " << r.rot);
    TestFrame src(r.cs, r.sw, r.sh), dst(r.cs, r.dw > 0 ? r.dw : 4, r.dh > 0 ? r.dh : 4);
    dst.img.width[0] = r.dw;
    dst.img.height[0] = r.dh;
    const auto before = dst.Snapshot();
    EXPECT_EQ(kimgp_rsz_rot(&src.img, r.rot, &dst.img), r.status);
    EXPECT_EQ(dst.Snapshot(), before);
  }
  TestFrame a(KIMGP_CS_YUV420, 16, 8), b(KIMGP_CS_YV12, 8, 16);
  const auto before = b.Snapshot();
  EXPECT_EQ(kimgp_rsz_rot(&a.img, 1, &b.img), KIMGP_ERR_ARGS);
  EXPECT_EQ(b.Snapshot(), before);
}

// Nothing to scale: kimgp_rot, for RGB frames too (swapped sizes for the
// quarter turns, equal ones otherwise).
TEST(ResizeRotate, NothingToScaleRotates) {
  std::mt19937 rng = MakeRng(44);
  struct Row {
    int32_t cs, rot, sw, sh;
  };
  for (const Row& r : {Row{KIMGP_CS_YUV420, 1, 1920, 1080}, Row{KIMGP_CS_RGB888, 2, 30, 17},
                       Row{KIMGP_CS_RGBA8888, 4, 30, 17}, Row{KIMGP_CS_NV12, 3, 30, 18},
                       Row{KIMGP_CS_YUV420, 5, 30, 18}}) {
    SCOPED_TRACE(::testing::Message() << "cs " << r.cs << " rot " << r.rot);
    const bool quarter = r.rot == 1 || r.rot == 2;
    TestFrame src(r.cs, r.sw, r.sh, 4);
    src.FillRandom(rng);
    TestFrame got(r.cs, quarter ? r.sh : r.sw, quarter ? r.sw : r.sh, 6), want(got);
    ASSERT_EQ(kimgp_rot(&src.img, static_cast<uint32_t>(r.rot), &want.img), KIMGP_OK);
    ASSERT_EQ(kimgp_rsz_rot(&src.img, r.rot, &got.img), KIMGP_OK);
    ASSERT_EQ(FirstDifference(got.Snapshot(), want.Snapshot()), "");
  }
}

// A quarter turn of 4:2:2 with the luma sizes exchanged still scales the
// chroma: the turned source chroma does not fit the destination's (a fuzz
// finding: the frame went to kimgp_rot and wrote past the chroma planes).
TEST(ResizeRotate, QuarterTurnOf422ScalesChroma) {
  std::mt19937 rng = MakeRng(45);
  for (int32_t rot : {KIMGP_ROT_90L, KIMGP_ROT_90R}) {
    for (const auto& sz : {std::pair<int32_t, int32_t>{1, 9}, {30, 17}}) {
      TestFrame src(KIMGP_CS_YUV422N, sz.first, sz.second, 3);
      TestFrame got(KIMGP_CS_YUV422N, sz.second, sz.first);
      src.FillRandom(rng);
      ASSERT_EQ(kimgp_rsz_rot(&src.img, rot, &got.img), KIMGP_OK);
      EXPECT_TRUE(got.GuardsIntact()) << "rot " << rot << " " << sz.first << "x" << sz.second;
    }
  }
}

// 1920x1080 to 540x960 turned left: the mean of the top-left 2x2 of each
// block, output (x, y) of the 960x540 result at column y, row 959 - x.
TEST(ResizeRotate, HalfSizeTurnedLeft) {
  std::mt19937 rng = MakeRng(45);
  TestFrame src(KIMGP_CS_YUV420, 1920, 1080);
  src.FillRandom(rng);
  TestFrame got(KIMGP_CS_YUV420, 540, 960, 8);
  ASSERT_EQ(kimgp_rsz_rot(&src.img, KIMGP_ROT_90L, &got.img), KIMGP_OK);
  for (int i = 0; i < 3; ++i) {
    const uint8_t* s = src.img.plane[i];
    const int32_t ss = src.img.stride[i], w = got.img.height[i], h = got.img.width[i];
    for (int32_t y = 0; y < h; ++y) {
      for (int32_t x = 0; x < w; ++x) {
        const uint8_t* b = s + 2 * y * ss + 2 * x;
        const int want = (b[0] + b[1] + b[ss] + b[ss + 1]) >> 2;
        ASSERT_EQ(got.img.plane[i][(w - 1 - x) * got.img.stride[i] + y], want)
            << "plane " << i << " at " << x << "," << y;
      }
    }
  }
  EXPECT_TRUE(got.GuardsIntact());
}

// Mirrors combined with a size change resize without mirroring.
TEST(ResizeRotate, MirrorWithSizeChangeOnlyResizes) {
  std::mt19937 rng = MakeRng(46);
  for (int32_t rot : {KIMGP_ROT_HORI, KIMGP_ROT_VERT}) {
    TestFrame src(KIMGP_CS_NV12, 64, 36);
    src.FillRandom(rng);
    TestFrame got(KIMGP_CS_NV12, 40, 24), want(got);
    ASSERT_EQ(kimgp_rsz(&src.img, &want.img), KIMGP_OK);
    ASSERT_EQ(kimgp_rsz_rot(&src.img, rot, &got.img), KIMGP_OK);
    ASSERT_EQ(FirstDifference(got.Snapshot(), want.Snapshot()), "") << rot;
  }
}

}  // namespace
}  // namespace test
}  // namespace kelo
