// 8x8 deblocking: the exported passes and entries, and their vector paths.
#include "common/internal/simd.h"

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/enhance/deblock.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "imgp/enhance/deblock_filter.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using D16 = hn::ScalableTag<int16_t>;
using V16 = hn::Vec<D16>;

// The edge filter on 16-bit lanes, each lane one line of A, B, C, D across
// an edge: the same steps as scalar::FilterEdge, lane by lane.
HWY_INLINE void FilterEdges(D16 d, V16& a, V16& b, V16& c, V16& dd, V16 strength) {
  const auto zero = hn::Zero(d);
  const auto s = hn::Add(hn::Sub(a, dd), hn::ShiftLeft<2>(hn::Sub(c, b)));
  auto m = hn::Abs(hn::ShiftRight<3>(s));
  const auto over = hn::Sub(m, strength);
  m = hn::IfThenElse(hn::Lt(over, zero), m, hn::Sub(m, hn::Add(over, over)));
  m = hn::Max(m, zero);
  const auto d1 = hn::IfThenElse(hn::Lt(s, zero), hn::Neg(m), m);
  const auto h = hn::ShiftRight<1>(m);
  const auto d2 = hn::Min(hn::Max(hn::ShiftRight<2>(hn::Sub(a, dd)), hn::Neg(h)), h);
  const auto k255 = hn::Set(d, 255);
  // Saturating steps keep B + d1 and C - d1 ordered like the exact sums.
  b = hn::Min(hn::Max(hn::SaturatedAdd(b, d1), zero), k255);
  c = hn::Min(hn::Max(hn::SaturatedSub(c, d1), zero), k255);
  a = hn::Sub(a, d2);
  dd = hn::Add(dd, d2);
}

// Horizontal edges: one vector of columns of the four rows at a time.
void DeblockHorVec(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t height,
                   int16_t strength) {
  const D16 d;
  const hn::Rebind<uint8_t, D16> d8;
  const int32_t N = static_cast<int32_t>(hn::Lanes(d));
  const auto vs = hn::Set(d, strength);
  const int32_t n = BlockEdges(height);
  for (int32_t k = 1; k <= n; ++k) {
    uint8_t* r0 = plane + (8 * k - 2) * stride;
    uint8_t* r1 = r0 + stride;
    uint8_t* r2 = r1 + stride;
    uint8_t* r3 = r2 + stride;
    int32_t x = 0;
    for (; x + N <= width; x += N) {
      auto a = hn::PromoteTo(d, hn::LoadU(d8, r0 + x));
      auto b = hn::PromoteTo(d, hn::LoadU(d8, r1 + x));
      auto c = hn::PromoteTo(d, hn::LoadU(d8, r2 + x));
      auto e = hn::PromoteTo(d, hn::LoadU(d8, r3 + x));
      FilterEdges(d, a, b, c, e, vs);
      hn::StoreU(hn::DemoteTo(d8, a), d8, r0 + x);
      hn::StoreU(hn::DemoteTo(d8, b), d8, r1 + x);
      hn::StoreU(hn::DemoteTo(d8, c), d8, r2 + x);
      hn::StoreU(hn::DemoteTo(d8, e), d8, r3 + x);
    }
    scalar::DeblockHorSpan(plane, stride, x, width, k, k, strength);
  }
}

#if HWY_TARGET == HWY_SCALAR
void DeblockVerVec(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t height,
                   int16_t strength) {
  scalar::DeblockVer(plane, stride, width, height, strength);
}
#else
using D8 = hn::ScalableTag<uint8_t>;
using V8 = hn::Vec<D8>;

// The edge filter on byte lanes: both halves widened to 16 bits.
HWY_INLINE void FilterEdgeBytes(V8& a, V8& b, V8& c, V8& e, V16 strength) {
  const D8 d8;
  const hn::Half<D8> dh;
  const hn::Repartition<int16_t, D8> d16;
  auto lo = [&](V8 v) { return hn::PromoteTo(d16, hn::LowerHalf(dh, v)); };
  auto hi = [&](V8 v) { return hn::PromoteTo(d16, hn::UpperHalf(dh, v)); };
  auto a0 = lo(a), b0 = lo(b), c0 = lo(c), e0 = lo(e);
  auto a1 = hi(a), b1 = hi(b), c1 = hi(c), e1 = hi(e);
  FilterEdges(d16, a0, b0, c0, e0, strength);
  FilterEdges(d16, a1, b1, c1, e1, strength);
  auto join = [&](hn::Vec<decltype(d16)> l, hn::Vec<decltype(d16)> h) {
    return hn::Combine(d8, hn::DemoteTo(dh, h), hn::DemoteTo(dh, l));
  };
  a = join(a0, a1);
  b = join(b0, b1);
  c = join(c0, c1);
  e = join(e0, e1);
}

// Vertical edges, two rows at a time. Read from column 8k - 2, a row is a run
// of 8-byte groups whose first four bytes are the A, B, C, D of edges k,
// k + 1, ...; a four-way deinterleave (an in-register transpose of 4-byte
// units) gives vectors whose even lanes are edges and whose odd lanes are
// bytes 4..7 of the groups, which no edge touches. The second row's edges
// move into those odd lanes (a one-lane shift within each block), so every
// lane of the filter works; the results go back to their rows and the odd
// lanes keep their bytes. Edges share no pixel, so the result is that of
// the edges one after another.
void DeblockVerVec(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t height,
                   int16_t strength) {
  const D8 d8;
  const int32_t N = static_cast<int32_t>(hn::Lanes(d8));
  const int32_t n = BlockEdges(width);
  if (N < 4) return scalar::DeblockVer(plane, stride, width, height, strength);
  const int32_t per_step = N / 2;  // edges per vector and row
  const auto vs = hn::Set(hn::Repartition<int16_t, D8>(), strength);
  for (int32_t y = 0; y < height && n > 0; y += 2) {
    uint8_t* r0 = plane + y * stride;
    // An odd last row pairs with itself: both halves then hold its edges.
    uint8_t* r1 = y + 1 < height ? r0 + stride : r0;
    int32_t k = 1;
    for (; k + per_step - 1 <= n; k += per_step) {
      V8 a0, b0, c0, e0, a1, b1, c1, e1;
      hn::LoadInterleaved4(d8, r0 + 8 * k - 2, a0, b0, c0, e0);
      hn::LoadInterleaved4(d8, r1 + 8 * k - 2, a1, b1, c1, e1);
      auto a = hn::OddEven(hn::ShiftLeftLanes<1>(d8, a1), a0);
      auto b = hn::OddEven(hn::ShiftLeftLanes<1>(d8, b1), b0);
      auto c = hn::OddEven(hn::ShiftLeftLanes<1>(d8, c1), c0);
      auto e = hn::OddEven(hn::ShiftLeftLanes<1>(d8, e1), e0);
      FilterEdgeBytes(a, b, c, e, vs);
      hn::StoreInterleaved4(hn::OddEven(a0, a), hn::OddEven(b0, b), hn::OddEven(c0, c),
                            hn::OddEven(e0, e), d8, r0 + 8 * k - 2);
      hn::StoreInterleaved4(hn::OddEven(a1, hn::ShiftRightLanes<1>(d8, a)),
                            hn::OddEven(b1, hn::ShiftRightLanes<1>(d8, b)),
                            hn::OddEven(c1, hn::ShiftRightLanes<1>(d8, c)),
                            hn::OddEven(e1, hn::ShiftRightLanes<1>(d8, e)), d8,
                            r1 + 8 * k - 2);
    }
    if (k <= n) {
      scalar::DeblockVerRow(r0, k, n, strength);
      if (r1 != r0) scalar::DeblockVerRow(r1, k, n, strength);
    }
  }
}
#endif  // HWY_TARGET == HWY_SCALAR

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_HAVE_HWY

#if !KELO_HAVE_HWY || HWY_ONCE
#include "common/internal/api.h"
#include "imgp/enhance/deblock_filter.h"
#include "kimgp_enhance.h"

namespace kelo {

KELO_VEC_EXPORT(DeblockHorVec);
KELO_VEC_EXPORT(DeblockVerVec);

void DeblockHor(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t height,
                int16_t strength) {
  KELO_VEC_CALL(DeblockHorVec, scalar::DeblockHor)(plane, stride, width, height, strength);
}

void DeblockVer(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t height,
                int16_t strength) {
  KELO_VEC_CALL(DeblockVerVec, scalar::DeblockVer)(plane, stride, width, height, strength);
}

}  // namespace kelo

KELO_EXPORT void kimgp_dbf8x8_h263_hor(uint8_t* plane, int32_t strength, int32_t stride,
                                       int32_t width, int32_t height) {
  kelo::DeblockHor(plane, stride, width, height, kelo::Low16(strength));
}

KELO_EXPORT void kimgp_dbf8x8_h263_ver(uint8_t* plane, int32_t strength, int32_t stride,
                                       int32_t width, int32_t height) {
  kelo::DeblockVer(plane, stride, width, height, kelo::Low16(strength));
}

KELO_EXPORT void kimgp_dbf8x8(uint8_t* plane, int32_t strength, int32_t stride, int32_t width,
                              int32_t height) {
  const int32_t s = strength < 12 ? strength : 12;
  kimgp_dbf8x8_h263_hor(plane, s, stride, width, height);
  kimgp_dbf8x8_h263_ver(plane, s, stride, width, height);
}

KELO_EXPORT int32_t kimgp_dbf8x8_yuv(kimgp_img* img, uint32_t strength) {
  if (strength > 15) return KIMGP_ERR_ARGS;
  const auto s = static_cast<int32_t>(strength);
  for (int i = 0; i < 3; ++i) {
    if (img->plane[i] == nullptr) continue;
    kimgp_dbf8x8_h263_hor(img->plane[i], s, img->stride[i], img->width[i], img->height[i]);
    kimgp_dbf8x8_h263_ver(img->plane[i], s, img->stride[i], img->width[i], img->height[i]);
  }
  return KIMGP_OK;
}

#endif  // !KELO_HAVE_HWY || HWY_ONCE
