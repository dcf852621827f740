// Shrinking resize kernels against a per-sample reference of their rules, on
// every vector target, in guarded destinations.
#include <gtest/gtest.h>

#include <cstring>
#include <ostream>
#include <vector>

#include "imgp/geometry/resize_layouts.h"
#include "kimgp_rsz.h"
#include "tests/support/guarded.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

using MultFn = void (*)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t);
using NonMultFn = void (*)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t,
                           int32_t, int32_t, int32_t);
using WFn = void (*)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t);
using HFn = void (*)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t);

struct Layout {
  const char* name;
  int bytes, comps, stride_unit;
  void (*unpack)(const uint8_t*, uint32_t*);
  void (*pack)(uint8_t*, const uint32_t*);
  MultFn mult;
  NonMultFn non_mult;
  WFn w;
  HFn h;  // null where the 8-bit kernel serves
};
#define KELO_LAYOUT(name, L, nm, w, h)                                                    \
  Layout {                                                                                \
    #name, rsz::L::kBytes, rsz::L::kComps, rsz::L::kStrideUnit, &rsz::L::Unpack,           \
        &rsz::L::Pack, kimgp_##name##_rsz_down_mult, nm, w, h                              \
  }
#define KELO_FULL(name, L, h) \
  KELO_LAYOUT(name, L, kimgp_##name##_rsz_down_non_mult, kimgp_##name##_rsz_down_w, h)
const Layout kLayouts[] = {
    KELO_FULL(8b, L8b, kimgp_8b_rsz_down_h),
    KELO_FULL(8b8b, L8b8b, kimgp_8b8b_rsz_down_h),
    KELO_FULL(5b6b5b, L5b6b5b, kimgp_5b6b5b_rsz_down_h),
    KELO_FULL(8b8b8b, L8b8b8b, nullptr),
    KELO_FULL(8b8b8b8b, L8b8b8b8b, nullptr),
    KELO_LAYOUT(16b, L16b, nullptr, nullptr, nullptr),
    KELO_LAYOUT(16b16b, L16b16b, nullptr, nullptr, nullptr),
};
#undef KELO_FULL
#undef KELO_LAYOUT
// The layouts with every shrinking kind come first; 16b and 16b16b have only
// the whole-ratio kernel.
constexpr size_t kFullLayouts = 5;
void PrintTo(const Layout& l, std::ostream* os) { *os << l.name; }

// A plane of units with a byte stride (a multiple of the stride unit).
struct Plane {
  const Layout* l;
  int32_t w, h, stride;
  std::vector<uint8_t> mem;
  Plane(const Layout& lay, int32_t w_, int32_t h_, int32_t pad, std::mt19937& rng)
      : l(&lay), w(w_), h(h_) {
    stride = w * lay.bytes + pad * lay.stride_unit;
    mem.resize(static_cast<size_t>(stride) * h);
    for (auto& b : mem) b = static_cast<uint8_t>(rng());
  }
  uint32_t S(int64_t c, int64_t r, int k) const {
    uint32_t v[4];
    l->unpack(mem.data() + r * stride + c * l->bytes, v);
    return v[k];
  }
};

// The destination: a guarded buffer and the bytes it must hold afterwards.
struct Out {
  const Layout* l;
  int32_t w, h, stride;
  GuardedBuffer got;
  std::vector<uint8_t> want;
  Out(const Layout& lay, int32_t w_, int32_t h_, int32_t pad, std::mt19937& rng)
      : l(&lay), w(w_), h(h_), stride(w_ * lay.bytes + pad * lay.stride_unit),
        got(static_cast<size_t>(stride) * h_) {
    for (size_t i = 0; i < got.size(); ++i) got.data()[i] = static_cast<uint8_t>(rng());
    want = got.raw();
  }
  template <class F>  // f(k) = component k of output (x, y)
  void Set(int32_t x, int32_t y, F f) {
    uint32_t v[4];
    for (int k = 0; k < l->comps; ++k) v[k] = f(k);
    l->pack(want.data() + kGuardBytes + static_cast<size_t>(y) * stride + x * l->bytes, v);
  }
  std::string Diff() const { return FirstDifference(got.raw(), want); }
};

// Rule 1: the top-left 2x2 of each fw x fh block.
void RefMult(const Plane& s, Out* o, int32_t fw, int32_t fh) {
  for (int32_t y = 0; y < o->h; ++y) {
    for (int32_t x = 0; x < o->w; ++x) {
      const int64_t c = int64_t{fw} * x, r = int64_t{fh} * y;
      o->Set(x, y, [&](int k) {
        return (s.S(c, r, k) + s.S(c + 1, r, k) + s.S(c, r + 1, k) + s.S(c + 1, r + 1, k)) >> 2;
      });
    }
  }
}

// Rule 2 with both accumulators; `fixed` replaces the column walk by the
// 16-to-9 pattern.
void RefNonMult(const Plane& s, Out* o, int32_t sw, int32_t sh, bool fixed = false) {
  const int32_t dw = o->w, dh = o->h;
  const int32_t fw = sw / dw, rw = sw % dw, fh = sh / dh, rh = sh % dh;
  static const int kStart[10] = {0, 1, 3, 5, 7, 8, 10, 12, 14, 16};
  int32_t ey = 0;
  int64_t r = 0;
  for (int32_t y = 0; y < dh; ++y) {
    ey += rh;
    const bool rows2 = ey >= dh;
    if (rows2) ey -= dh;
    int32_t ex = 0;
    int64_t c = 0;
    for (int32_t x = 0; x < dw; ++x) {
      bool cols2;
      if (fixed) {
        c = x / 9 * 16 + kStart[x % 9];
        cols2 = kStart[x % 9 + 1] - kStart[x % 9] == 2;
      } else {
        ex += rw;
        cols2 = ex >= dw;
        if (cols2) ex -= dw;
      }
      o->Set(x, y, [&](int k) {
        if (!cols2 && !rows2) return s.S(c, r, k);
        if (!cols2) return (s.S(c, r, k) + s.S(c, r + 1, k)) >> 1;
        if (!rows2) return (s.S(c, r, k) + s.S(c + 1, r, k)) >> 1;
        return (s.S(c, r, k) + s.S(c + 1, r, k) + s.S(c, r + 1, k) + s.S(c + 1, r + 1, k)) >> 2;
      });
      if (!fixed) c += cols2 ? fw + 1 : fw;
    }
    r += rows2 ? fh + 1 : fh;
  }
}

// Rule 3: every row; rw = 0 averages units fw*x and fw*x + 1.
void RefDownW(const Plane& s, Out* o, int32_t sw) {
  const int32_t dw = o->w, fw = sw / dw, rw = sw % dw;
  for (int32_t y = 0; y < o->h; ++y) {
    int32_t ex = 0;
    int64_t c = 0;
    for (int32_t x = 0; x < dw; ++x) {
      bool two = true;
      if (rw != 0) {
        ex += rw;
        two = ex >= dw;
        if (two) ex -= dw;
      } else {
        c = int64_t{fw} * x;
      }
      o->Set(x, y, [&](int k) { return two ? (s.S(c, y, k) + s.S(c + 1, y, k)) >> 1 : s.S(c, y, k); });
      if (rw != 0) c += two ? fw + 1 : fw;
    }
  }
}

// Rule 4: rows fh*y and fh*y + 1 when rh = 0 and fh >= 2, else the row
// accumulator.
void RefDownH(const Plane& s, Out* o, int32_t sh) {
  const int32_t dh = o->h, fh = sh / dh, rh = sh % dh;
  int32_t ey = 0;
  int64_t r = 0;
  for (int32_t y = 0; y < dh; ++y) {
    bool two = true;
    if (rh == 0 && fh >= 2) {
      r = int64_t{fh} * y;
    } else {
      ey += rh;
      two = ey >= dh;
      if (two) ey -= dh;
    }
    for (int32_t x = 0; x < o->w; ++x) {
      o->Set(x, y, [&](int k) { return two ? (s.S(x, r, k) + s.S(x, r + 1, k)) >> 1 : s.S(x, r, k); });
    }
    if (!(rh == 0 && fh >= 2)) r += two ? fh + 1 : fh;
  }
}

// Byte strides of a plane in the kernels' stride unit.
int32_t K(const Plane& p) { return p.stride / p.l->stride_unit; }
int32_t K(const Out& o) { return o.stride / o.l->stride_unit; }

class ShrinkKernels : public ::testing::TestWithParam<Layout> {};
class FullShrinkKernels : public ::testing::TestWithParam<Layout> {};

// Size pairs: the named examples, then random shrinks of every shape.
struct Pair {
  int32_t sw, sh, dw, dh;
};
std::vector<Pair> ShrinkPairs(std::mt19937& rng, int32_t max_w) {
  std::vector<Pair> v = {{10, 3, 4, 3}, {1280, 4, 720, 3}, {1920, 3, 1280, 2}, {33, 5, 33, 5},
                         {7, 7, 1, 1},  {300, 9, 299, 4}, {64, 4, 31, 3},     {2, 2, 1, 1}};
  for (int i = 0; i < 24; ++i) {
    const int32_t sw = 1 + static_cast<int32_t>(rng() % max_w), sh = 1 + rng() % 20;
    v.push_back({sw, sh, 1 + static_cast<int32_t>(rng() % sw), 1 + static_cast<int32_t>(rng() % sh)});
  }
  return v;
}

TEST_P(ShrinkKernels, WholeRatioMatchesRule) {
  const Layout& l = GetParam();
  std::mt19937 rng = MakeRng(1);
  ForEachTarget([&](const std::string& target) {
    for (const Size2& d : TestSizes(rng, 12, 200, 8)) {
      for (int32_t fw : {2, 3, 4, 2 + static_cast<int32_t>(rng() % 20)}) {
        const int32_t fh = 2 + static_cast<int32_t>(rng() % 3);
        const Plane s(l, d.w * fw, d.h * fh, RandomPad(rng), rng);
        Out o(l, d.w, d.h, RandomPad(rng), rng);
        l.mult(s.mem.data(), o.got.data(), d.w, d.h, fw, K(s), fh * K(s), K(o));
        RefMult(s, &o, fw, fh);
        ASSERT_EQ(o.Diff(), "") << target << " " << d.w << "x" << d.h << " fw " << fw;
      }
    }
  });
}

// Exact halving, whose rows may end on a vector that overlaps the ones
// before it: every output width up to 70 (each remainder of 16 and 32 outputs),
// odd heights, padded strides, two and three rows a step.
TEST_P(ShrinkKernels, HalvingEveryWidthMatchesRule) {
  const Layout& l = GetParam();
  std::mt19937 rng = MakeRng(2);
  ForEachTarget([&](const std::string& target) {
    for (int32_t dw = 1; dw <= 70; ++dw) {
      const int32_t dh = 1 + dw % 3, fh = 2 + dw % 2;
      const Plane s(l, 2 * dw, fh * dh, RandomPad(rng), rng);
      Out o(l, dw, dh, RandomPad(rng), rng);
      l.mult(s.mem.data(), o.got.data(), dw, dh, 2, K(s), fh * K(s), K(o));
      RefMult(s, &o, 2, fh);
      ASSERT_EQ(o.Diff(), "") << target << " " << dw << "x" << dh << " fh " << fh;
    }
  });
}

TEST_P(FullShrinkKernels, GeneralAndWidthOnlyMatchRules) {
  const Layout& l = GetParam();
  std::mt19937 rng = MakeRng(2);
  ForEachTarget([&](const std::string& target) {
    for (const Pair& p : ShrinkPairs(rng, 400)) {
      SCOPED_TRACE(::testing::Message() << target << " " << p.sw << "x" << p.sh << " to " << p.dw
                                        << "x" << p.dh);
      const Plane s(l, p.sw, p.sh, RandomPad(rng), rng);
      Out o(l, p.dw, p.dh, RandomPad(rng), rng);
      l.non_mult(s.mem.data(), o.got.data(), p.dw, p.dh, p.sw / p.dw, K(s), p.sh / p.dh * K(s),
                 p.sw % p.dw, p.sh % p.dh, K(o));
      RefNonMult(s, &o, p.sw, p.sh);
      ASSERT_EQ(o.Diff(), "");
      if (p.dw == p.sw) continue;
      // Width only, into a packed intermediate of sh rows.
      Out t(l, p.dw, p.sh, 0, rng);
      l.w(s.mem.data(), t.got.data(), K(s), p.dw, p.sh, p.sw / p.dw, p.sw % p.dw);
      RefDownW(s, &t, p.sw);
      ASSERT_EQ(t.Diff(), "");
    }
  });
}

TEST_P(FullShrinkKernels, HeightOnlyMatchesRule) {
  const Layout& l = GetParam();
  // The 3- and 4-byte layouts run the 8-bit kernel over their bytes.
  const HFn h = l.h != nullptr ? l.h : kimgp_8b_rsz_down_h;
  const Layout& hl = l.h != nullptr ? l : kLayouts[0];
  const int32_t mul = l.h != nullptr ? 1 : l.bytes;
  std::mt19937 rng = MakeRng(3);
  ForEachTarget([&](const std::string& target) {
    for (const Pair& p : ShrinkPairs(rng, 200)) {
      if (p.dh == p.sh) continue;
      SCOPED_TRACE(::testing::Message() << target << " " << p.dw << ": " << p.sh << " to " << p.dh);
      const Plane s(hl, p.dw * mul, p.sh, 0, rng);
      Out o(hl, p.dw * mul, p.dh, RandomPad(rng), rng);
      h(s.mem.data(), o.got.data(), p.dw * mul, K(o), p.dh, p.sh / p.dh, p.sh % p.dh);
      RefDownH(s, &o, p.sh);
      ASSERT_EQ(o.Diff(), "");
    }
  });
}

// Column patterns that repeat every P outputs (rw = j * dw / P), for widths
// around multiples of the 8-, 16- and 32-byte steps of the vector paths.
TEST_P(FullShrinkKernels, RepeatingPatternsMatchRules) {
  const Layout& l = GetParam();
  std::mt19937 rng = MakeRng(6);
  ForEachTarget([&](const std::string& target) {
    for (int32_t period : {1, 2, 4, 8}) {
      for (int32_t q : {1, 2, 3, 4, 5, 7, 8, 9, 12, 16, 17, 31, 32, 33, 65}) {
        const int32_t dw = period * q;
        const int32_t j = rng() % 2 == 0 ? 1 : period - 1;
        const int32_t rw = period == 1 ? 0 : dw / period * j;
        for (int32_t fw : {1, 2, 3}) {
          if (rw == 0 && fw == 1) continue;
          const int32_t sw = fw * dw + rw, sh = 1 + static_cast<int32_t>(rng() % 6);
          const int32_t dh = 1 + static_cast<int32_t>(rng() % sh);
          SCOPED_TRACE(::testing::Message() << target << " " << sw << "x" << sh << " to " << dw
                                            << "x" << dh);
          const Plane s(l, sw, sh, RandomPad(rng), rng);
          Out o(l, dw, dh, RandomPad(rng), rng);
          l.non_mult(s.mem.data(), o.got.data(), dw, dh, fw, K(s), sh / dh * K(s), rw, sh % dh,
                     K(o));
          RefNonMult(s, &o, sw, sh);
          ASSERT_EQ(o.Diff(), "");
          Out t(l, dw, sh, 0, rng);
          l.w(s.mem.data(), t.got.data(), K(s), dw, sh, fw, rw);
          RefDownW(s, &t, sw);
          ASSERT_EQ(t.Diff(), "");
          if (rw != 0) continue;
          const Plane m(l, sw, 2 * dh, RandomPad(rng), rng);
          Out mo(l, dw, dh, RandomPad(rng), rng);
          l.mult(m.mem.data(), mo.got.data(), dw, dh, fw, K(m), 2 * K(m), K(mo));
          RefMult(m, &mo, fw, 2);
          ASSERT_EQ(mo.Diff(), "");
        }
      }
    }
  });
}

std::string LayoutName(const ::testing::TestParamInfo<Layout>& i) {
  return std::string("L") + i.param.name;
}
INSTANTIATE_TEST_SUITE_P(Layouts, ShrinkKernels, ::testing::ValuesIn(kLayouts), LayoutName);
INSTANTIATE_TEST_SUITE_P(Layouts, FullShrinkKernels,
                         ::testing::ValuesIn(kLayouts, kLayouts + kFullLayouts), LayoutName);

// The fixed 16-to-9 kernels: the fixed pattern, and the same bytes as the
// general kernel, for fh = 1 and fh = 2.
TEST(ShrinkFixedSize, SixteenToNineMatchesGeneralKernel) {
  std::mt19937 rng = MakeRng(4);
  struct Case {
    const Layout* l;
    NonMultFn fixed;
    int32_t dw, sh, dh;
  };
  const Case cases[] = {{&kLayouts[0], kimgp_8b_rsz_down_non_mult_720p_720x404, 720, 720, 404},
                        {&kLayouts[0], kimgp_8b_rsz_down_non_mult_720p_720x404, 720, 580, 326},
                        {&kLayouts[0], kimgp_8b_rsz_down_non_mult_720p_720x404, 27, 9, 7},
                        {&kLayouts[1], kimgp_8b8b_rsz_down_non_mult_720p_720x404, 360, 360, 202},
                        {&kLayouts[1], kimgp_8b8b_rsz_down_non_mult_720p_720x404, 360, 360, 163},
                        {&kLayouts[1], kimgp_8b8b_rsz_down_non_mult_720p_720x404, 9, 5, 3}};
  ForEachTarget([&](const std::string& target) {
    for (const Case& c : cases) {
      const Layout& l = *c.l;
      const int32_t sw = c.dw / 9 * 16;
      SCOPED_TRACE(::testing::Message() << target << " " << l.name << " " << sw << "x" << c.sh);
      const Plane s(l, sw, c.sh, RandomPad(rng), rng);
      Out o(l, c.dw, c.dh, RandomPad(rng), rng);
      std::vector<uint8_t> general = o.got.raw();
      const int32_t fw = sw / c.dw, rw = sw % c.dw, fh = c.sh / c.dh, rh = c.sh % c.dh;
      c.fixed(s.mem.data(), o.got.data(), c.dw, c.dh, fw, K(s), fh * K(s), rw, rh, K(o));
      RefNonMult(s, &o, sw, c.sh, /*fixed=*/true);
      ASSERT_EQ(o.Diff(), "");
      l.non_mult(s.mem.data(), general.data() + kGuardBytes, c.dw, c.dh, fw, K(s), fh * K(s), rw,
                 rh, K(o));
      ASSERT_EQ(FirstDifference(general, o.got.raw()), "");
    }
  });
}

// The worked examples.
TEST(ShrinkExamples, WorkedExamples) {
  std::mt19937 rng = MakeRng(5);
  ForEachTarget([&](const std::string& target) {
    SCOPED_TRACE(target);
    // 4x4 to 2x2 reads samples 0, 1, 4, 5 of the first block.
    const uint8_t s4[16] = {10, 20, 200, 200, 30, 41, 200, 200, 0, 0, 0, 0, 0, 0, 0, 0};
    uint8_t d4[4] = {};
    kimgp_8b_rsz_down_mult(s4, d4, 2, 2, 2, 4, 8, 2);
    EXPECT_EQ(d4[0], (10 + 20 + 30 + 41) >> 2);
    // 10 to 4 in width: s0, (s2+s3)>>1, s5, (s7+s8)>>1.
    const uint8_t s10[10] = {1, 2, 3, 6, 5, 7, 8, 9, 12, 200};
    uint8_t d10[4] = {};
    kimgp_8b_rsz_down_w(s10, d10, 10, 4, 1, 2, 2);
    EXPECT_EQ(d10[0], 1);
    EXPECT_EQ(d10[1], (3 + 6) >> 1);
    EXPECT_EQ(d10[2], 7);
    EXPECT_EQ(d10[3], (9 + 12) >> 1);
    uint8_t g10[4] = {};
    kimgp_8b_rsz_down_non_mult(s10, g10, 4, 1, 2, 10, 10, 2, 0, 4);
    EXPECT_EQ(0, std::memcmp(d10, g10, 4));
    // 5-6-5 fields average on their own.
    const uint8_t p565[4] = {0x00, 0xF8, 0xFF, 0x07};
    uint8_t d565[2] = {};
    kimgp_5b6b5b_rsz_down_w(p565, d565, 2, 1, 1, 2, 0);
    EXPECT_EQ(d565[0] | d565[1] << 8, 0x7BEF);
    // 1280 to 720: the 16-to-9 pattern from the general kernel.
    std::vector<uint8_t> row(1280);
    for (auto& b : row) b = static_cast<uint8_t>(rng());
    std::vector<uint8_t> out(720);
    kimgp_8b_rsz_down_non_mult(row.data(), out.data(), 720, 1, 1, 1280, 1280, 560, 0, 720);
    static const int kPick[9][2] = {{0, 0},  {1, 2},   {3, 4},   {5, 6},  {7, 7},
                                    {8, 9},  {10, 11}, {12, 13}, {14, 15}};
    for (int x = 0; x < 720; ++x) {
      const int b = x / 9 * 16;
      ASSERT_EQ(out[x], (row[b + kPick[x % 9][0]] + row[b + kPick[x % 9][1]]) >> 1) << x;
    }
  });
}

}  // namespace
}  // namespace test
}  // namespace kelo
