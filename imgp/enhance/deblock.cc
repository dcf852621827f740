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

// Vertical edges, row by row. Read from column 8k - 2, a row is a run of
// 8-byte groups whose first four bytes are the A, B, C, D of edge k, k + 1,
// ...; a four-way deinterleave (the in-register transpose of 4-byte units)
// puts each of them in a lane of its own vector. Even lanes hold edges and
// odd lanes bytes 4..7 of the groups, which keep their values.
void DeblockVerVec(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t height,
                   int16_t strength) {
  const D16 d;
  const hn::Rebind<uint8_t, D16> d8;
  const int32_t N = static_cast<int32_t>(hn::Lanes(d));
  const int32_t n = BlockEdges(width);
  if (N < 2) return scalar::DeblockVer(plane, stride, width, height, strength);
  const int32_t per_step = N / 2;  // edges per vector
  const auto vs = hn::Set(d, strength);
  const auto edge_lane = hn::Eq(hn::And(hn::Iota(d, 0), hn::Set(d, 1)), hn::Zero(d));
  for (int32_t y = 0; y < height && n > 0; ++y) {
    uint8_t* row = plane + y * stride;
    int32_t k = 1;
    for (; k + per_step - 1 <= n; k += per_step) {
      uint8_t* p = row + 8 * k - 2;
      hn::Vec<decltype(d8)> a8, b8, c8, e8;
      hn::LoadInterleaved4(d8, p, a8, b8, c8, e8);
      const auto a0 = hn::PromoteTo(d, a8), b0 = hn::PromoteTo(d, b8);
      const auto c0 = hn::PromoteTo(d, c8), e0 = hn::PromoteTo(d, e8);
      auto a = a0, b = b0, c = c0, e = e0;
      FilterEdges(d, a, b, c, e, vs);
      a = hn::IfThenElse(edge_lane, a, a0);
      b = hn::IfThenElse(edge_lane, b, b0);
      c = hn::IfThenElse(edge_lane, c, c0);
      e = hn::IfThenElse(edge_lane, e, e0);
      hn::StoreInterleaved4(hn::DemoteTo(d8, a), hn::DemoteTo(d8, b), hn::DemoteTo(d8, c),
                            hn::DemoteTo(d8, e), d8, p);
    }
    if (k <= n) scalar::DeblockVerRow(row, k, n, strength);
  }
}

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
