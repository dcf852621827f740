#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "imgp/geometry/rotate_kernels.h"
#include "kimgp_copy.h"
#include "kimgp_rot.h"
#include "tests/support/guarded.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

bool QuarterTurn(int op) { return op == KIMGP_ROT_90L || op == KIMGP_ROT_90R; }

// The mapping table: sample (x, y) of a w x h plane goes to column c of row r.
void Where(int op, int32_t x, int32_t y, int32_t w, int32_t h, int32_t* c,
           int32_t* r) {
  switch (op) {
    case KIMGP_ROT_90L: *c = y; *r = w - 1 - x; return;
    case KIMGP_ROT_90R: *c = h - 1 - y; *r = x; return;
    case KIMGP_ROT_180: *c = w - 1 - x; *r = h - 1 - y; return;
    case KIMGP_ROT_HORI: *c = w - 1 - x; *r = y; return;
    case KIMGP_ROT_VERT: *c = x; *r = h - 1 - y; return;
    default: *c = x; *r = y; return;
  }
}

// What op must leave in dst. Code 0 is the plane copy, whose 16-bit primitive
// rounds both strides down to even.
void Reference(int op, int unit, const uint8_t* src, int32_t w, int32_t h,
               int32_t ss, int32_t ds, uint8_t* dst) {
  if (op == KIMGP_ROT_COPY && unit == 2) {
    ss &= ~1;
    ds &= ~1;
  }
  for (int32_t y = 0; y < h; ++y) {
    for (int32_t x = 0; x < w; ++x) {
      int32_t c, r;
      Where(op, x, y, w, h, &c, &r);
      memcpy(dst + r * ds + c * unit, src + y * ss + x * unit, unit);
    }
  }
}

struct Kernel {
  const char* name;
  kimgp_plane_fn fn;
  int op;
  int unit;
};
void PrintTo(const Kernel& k, std::ostream* os) { *os << k.name; }

#define KERNEL_ROW(bits, unit)                                              \
  {#bits "_90l", kimgp_rot_##bits##_90l, KIMGP_ROT_90L, unit},              \
      {#bits "_90r", kimgp_rot_##bits##_90r, KIMGP_ROT_90R, unit},          \
      {#bits "_180", kimgp_rot_##bits##_180, KIMGP_ROT_180, unit},          \
      {#bits "_hori", kimgp_rot_##bits##_hori, KIMGP_ROT_HORI, unit},       \
      {#bits "_vert", kimgp_rot_##bits##_vert, KIMGP_ROT_VERT, unit}
const Kernel kKernels[] = {KERNEL_ROW(8b, 1), KERNEL_ROW(16b, 2),
                           KERNEL_ROW(24b, 3), KERNEL_ROW(32b, 4)};
#undef KERNEL_ROW

// A plane in a guarded buffer: w units of `unit` bytes by h rows, the stride
// padded at random, the content random.
struct Plane {
  Plane(int32_t w_, int32_t h_, int unit, std::mt19937& rng)
      : w(w_), h(h_), stride(w_ * unit + RandomPad(rng)),
        buf(static_cast<size_t>(stride) * h_) {
    for (size_t i = 0; i < buf.size(); ++i) buf.data()[i] = static_cast<uint8_t>(rng());
  }
  int32_t w, h, stride;
  GuardedBuffer buf;
};

std::vector<Size2> KernelSizes(std::mt19937& rng) {
  std::vector<Size2> sizes = TestSizes(rng, 25, 200, 40);
  const Size2 more[] = {{17, 9}, {9, 17}, {8, 8},   {16, 16}, {16, 8},  {32, 16},
                        {48, 24}, {24, 40}, {33, 25}, {64, 12}, {4, 4}, {2, 6},
                        // Bands of 8 and 16 rows with 7 or 15 left over, and
                        // widths that end on an 8-byte block after 16- and
                        // 32-byte ones.
                        {8, 23}, {40, 15}, {56, 31}, {72, 9}};
  sizes.insert(sizes.end(), std::begin(more), std::end(more));
  return sizes;
}

class KernelTest : public ::testing::TestWithParam<Kernel> {};

// Every size class with random strides, on every vector target: the kernel
// and the scalar definition write exactly the mapped units and nothing else.
TEST_P(KernelTest, FollowsMappingOnEveryTarget) {
  const Kernel& k = GetParam();
  std::mt19937 rng = MakeRng(static_cast<uint32_t>(k.op * 8 + k.unit));
  ForEachTarget([&](const std::string& target) {
    for (const Size2& s : KernelSizes(rng)) {
      const bool q = QuarterTurn(k.op);
      Plane src(s.w, s.h, k.unit, rng);
      Plane dst(q ? s.h : s.w, q ? s.w : s.h, k.unit, rng);
      SCOPED_TRACE(target + " " + std::to_string(s.w) + "x" + std::to_string(s.h) +
                   " ss=" + std::to_string(src.stride) + " ds=" + std::to_string(dst.stride));
      const std::vector<uint8_t> src_before = src.buf.raw();
      std::vector<uint8_t> want = dst.buf.raw();
      Reference(k.op, k.unit, src.buf.data(), s.w, s.h, src.stride, dst.stride,
                want.data() + kGuardBytes);
      std::vector<uint8_t> scalar_out = dst.buf.raw();
      scalar::Rotate(k.op, k.unit, src.buf.data(), s.w, s.h, src.stride, dst.stride,
                     scalar_out.data() + kGuardBytes);
      ASSERT_EQ(FirstDifference(scalar_out, want), "") << "scalar";
      k.fn(src.buf.data(), s.w, s.h, src.stride, dst.stride, dst.buf.data());
      ASSERT_EQ(FirstDifference(dst.buf.raw(), want), "");
      ASSERT_EQ(src.buf.raw(), src_before);
    }
  });
}

TEST_P(KernelTest, EmptyPlanesWriteNothing) {
  const Kernel& k = GetParam();
  GuardedBuffer src(256), dst(256);
  const std::vector<uint8_t> before = dst.raw();
  for (int32_t h : {0, -1}) k.fn(src.data(), 4, h, 16, 16, dst.data());
  for (int32_t w : {0, -3}) k.fn(src.data(), w, 4, 16, 16, dst.data());
  EXPECT_EQ(dst.raw(), before);
}

INSTANTIATE_TEST_SUITE_P(All, KernelTest, ::testing::ValuesIn(kKernels),
                         [](const auto& info) { return info.param.name; });

TEST(RotateTables, RowsAreCopyThenKernelsInCodeOrder) {
  const kimgp_plane_fn* tables[] = {kimgp_tbl_fn_rot_8b, kimgp_tbl_fn_rot_16b,
                                    kimgp_tbl_fn_rot_24b, kimgp_tbl_fn_rot_32b};
  const kimgp_plane_fn copies[] = {kimgp_cpy_8b, kimgp_cpy_16b, kimgp_cpy_24b,
                                   kimgp_cpy_32b};
  for (int t = 0; t < 4; ++t) {
    EXPECT_EQ(tables[t][0], copies[t]);
    for (int op = 1; op <= 5; ++op) {
      const Kernel& k = kKernels[t * 5 + op - 1];
      ASSERT_EQ(k.op, op);
      EXPECT_EQ(tables[t][op], k.fn) << k.name;
    }
  }
}

// Runs kernel `op` of `unit`-byte samples from a into a new plane.
Plane Apply(int op, int unit, const Plane& a, std::mt19937& rng) {
  const bool q = QuarterTurn(op);
  Plane out(q ? a.h : a.w, q ? a.w : a.h, unit, rng);
  kKernels[(unit - 1) * 5 + op - 1].fn(a.buf.data(), a.w, a.h, a.stride, out.stride,
                                       out.buf.data());
  return out;
}

bool SamePixels(const Plane& a, const Plane& b, int unit) {
  if (a.w != b.w || a.h != b.h) return false;
  for (int32_t y = 0; y < a.h; ++y) {
    if (memcmp(a.buf.data() + y * a.stride, b.buf.data() + y * b.stride,
               static_cast<size_t>(a.w) * unit) != 0) {
      return false;
    }
  }
  return true;
}

// 90l then 90r is the identity; 180 is hori then vert, and 90l twice.
TEST(RotateProperties, TurnsAndFlipsCompose) {
  std::mt19937 rng = MakeRng(77);
  for (int unit = 1; unit <= 4; ++unit) {
    for (const Size2& s : TestSizes(rng, 10, 120, 40)) {
      SCOPED_TRACE(std::to_string(unit) + " bytes " + std::to_string(s.w) + "x" +
                   std::to_string(s.h));
      const Plane a(s.w, s.h, unit, rng);
      EXPECT_TRUE(SamePixels(Apply(KIMGP_ROT_90R, unit, Apply(KIMGP_ROT_90L, unit, a, rng), rng),
                             a, unit));
      const Plane half = Apply(KIMGP_ROT_180, unit, a, rng);
      EXPECT_TRUE(SamePixels(
          Apply(KIMGP_ROT_VERT, unit, Apply(KIMGP_ROT_HORI, unit, a, rng), rng), half, unit));
      EXPECT_TRUE(SamePixels(
          Apply(KIMGP_ROT_90L, unit, Apply(KIMGP_ROT_90L, unit, a, rng), rng), half, unit));
    }
  }
}

// ------------------------------------------------------------------- routing

int32_t ExpectedStatus(int32_t cs, int rot) {
  if (rot > 5) return -3;
  if (cs >= 0 && cs <= 99) return cs == KIMGP_CS_T64X32 ? -3 : 0;
  if (cs >= 200 && cs <= 299) return 0;
  if (cs >= 400 && cs <= 599) return 0;
  return -3;
}

// Bytes per unit of each plane a code moves; 0 for planes left alone.
std::vector<int> PlaneUnits(int32_t cs) {
  if (cs >= 200 && cs <= 299) return {2, 0, 0};
  if (cs >= 400 && cs <= 499) return {3, 0, 0};
  if (cs >= 500 && cs <= 599) return {4, 0, 0};
  if (cs == KIMGP_CS_YUV400) return {1, 0, 0};
  if (cs == KIMGP_CS_NV12 || cs == KIMGP_CS_NV21) return {1, 2, 0};
  return {1, 1, 1};
}

class RouteTest : public ::testing::TestWithParam<int32_t> {};

// Every code class and rotation code: the status, the planes moved and with
// which unit size, and not a byte written anywhere else (nothing on -3). The
// destination's code, widths and heights are nonsense: they are not read.
TEST_P(RouteTest, StatusAndPlanesByCode) {
  const int32_t cs = GetParam();
  std::mt19937 rng = MakeRng(static_cast<uint32_t>(cs + 1000));
  const Size2 sizes[] = {{34, 18}, {23, 13}};
  for (const Size2& s : sizes) {
    for (int rot = 0; rot <= 7; ++rot) {
      SCOPED_TRACE("rot " + std::to_string(rot) + " " + std::to_string(s.w) + "x" +
                   std::to_string(s.h));
      TestFrame src(cs, s.w, s.h, RandomPad(rng));
      src.FillRandom(rng);
      const std::vector<int> units = PlaneUnits(cs);
      kimgp_img layout{};
      for (int i = 0; i < src.planes(); ++i) {
        const int u = i < 3 && units[i] ? units[i] : 1;
        const bool q = QuarterTurn(rot);
        const int32_t w = q ? src.img.height[i] : src.img.width[i];
        const int32_t h = q ? src.img.width[i] : src.img.height[i];
        layout.stride[i] = w * u + RandomPad(rng);
        layout.buf_height[i] = h;
      }
      layout.cs = -5;
      TestFrame dst(layout, src.planes());
      dst.FillRandom(rng);
      TestFrame want(dst);
      const int32_t status = ExpectedStatus(cs, rot);
      if (status == 0) {
        for (int i = 0; i < src.planes() && i < 3; ++i) {
          if (units[i] == 0) continue;
          Reference(rot, units[i], src.buffer(i).data(), src.img.width[i],
                    src.img.height[i], src.img.stride[i], dst.img.stride[i],
                    want.buffer(i).data());
        }
      }
      const std::vector<uint8_t> src_before = src.Snapshot();
      ASSERT_EQ(kimgp_rot(&src.img, static_cast<uint32_t>(rot), &dst.img), status);
      ASSERT_EQ(FirstDifference(dst.Snapshot(), want.Snapshot()), "");
      ASSERT_EQ(src.Snapshot(), src_before);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Codes, RouteTest,
    ::testing::Values(-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 50, 99,
                      100, 101, 150, 199, 200, 201, 250, 299, 300, 350, 399, 400, 401,
                      450, 499, 500, 501, 502, 503, 550, 599, 600, 601, 700),
    [](const auto& info) {
      return (info.param < 0 ? "minus" : "cs") + std::to_string(std::abs(info.param));
    });

}  // namespace
}  // namespace test
}  // namespace kelo
