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

// Horizontal edges k0 .. k1: one vector of columns of the four rows at a
// time.
void DeblockHorVec(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t k0, int32_t k1,
                   int16_t strength) {
  const D16 d;
  const hn::Rebind<uint8_t, D16> d8;
  const int32_t N = static_cast<int32_t>(hn::Lanes(d));
  const auto vs = hn::Set(d, strength);
  for (int32_t k = k0; k <= k1; ++k) {
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

// Vertical edges, row by row. Read from column 8k - 2 as 16-bit words, a
// row is a run of 8-byte groups of four words: AB, CD of edges k, k + 1, ...
// and two words of columns 8k + 2 .. 8k + 5, which no edge touches. A
// four-way deinterleave of words (an in-register transpose of 2-byte units)
// puts the AB and CD words of consecutive edges in two vectors; their low
// and high bytes are A, B, C, D, one edge per 16-bit lane. The other two
// vectors are stored back as they were. Edges share no pixel, so the result
// is that of the edges one after another.
void DeblockVerVec(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t y0, int32_t y1,
                   int16_t strength) {
  const D16 d;
  const hn::RebindToUnsigned<D16> du;
  const int32_t N = static_cast<int32_t>(hn::Lanes(d));
  const int32_t n = BlockEdges(width);
  const auto vs = hn::Set(d, strength);
  const auto low = hn::Set(du, 0xFF);
  for (int32_t y = y0; y < y1 && n > 0; ++y) {
    uint8_t* row = plane + y * stride;
    int32_t k = 1;
    for (; k + N - 1 <= n; k += N) {
      // Word loads through the byte pointer: rows need not be 2-byte aligned.
      uint16_t* p = reinterpret_cast<uint16_t*>(row + 8 * k - 2);
      hn::Vec<decltype(du)> ab, cd, w2, w3;
      hn::LoadInterleaved4(du, p, ab, cd, w2, w3);
      auto a = hn::BitCast(d, hn::And(ab, low));
      auto b = hn::BitCast(d, hn::ShiftRight<8>(ab));
      auto c = hn::BitCast(d, hn::And(cd, low));
      auto e = hn::BitCast(d, hn::ShiftRight<8>(cd));
      FilterEdges(d, a, b, c, e, vs);
      ab = hn::Or(hn::BitCast(du, a), hn::ShiftLeft<8>(hn::BitCast(du, b)));
      cd = hn::Or(hn::BitCast(du, c), hn::ShiftLeft<8>(hn::BitCast(du, e)));
      hn::StoreInterleaved4(ab, cd, w2, w3, du, p);
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

void DeblockHorEdges(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t k0, int32_t k1,
                     int16_t strength) {
  KELO_VEC_CALL(DeblockHorVec, scalar::DeblockHorEdges)(plane, stride, width, k0, k1, strength);
}

void DeblockVerRows(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t y0, int32_t y1,
                    int16_t strength) {
  KELO_VEC_CALL(DeblockVerVec, scalar::DeblockVerRows)(plane, stride, width, y0, y1, strength);
}

void DeblockPlane(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t height,
                  int16_t strength) {
  int32_t done = 0;  // rows whose vertical edges are filtered
  for (int32_t k = 1; k <= BlockEdges(height); ++k) {
    DeblockHorEdges(plane, stride, width, k, k, strength);
    DeblockVerRows(plane, stride, width, done, 8 * k - 2, strength);
    done = 8 * k - 2;
  }
  DeblockVerRows(plane, stride, width, done, height, strength);
}

}  // namespace kelo

KELO_EXPORT void kimgp_dbf8x8_h263_hor(uint8_t* plane, int32_t strength, int32_t stride,
                                       int32_t width, int32_t height) {
  kelo::DeblockHorEdges(plane, stride, width, 1, kelo::BlockEdges(height), kelo::Low16(strength));
}

KELO_EXPORT void kimgp_dbf8x8_h263_ver(uint8_t* plane, int32_t strength, int32_t stride,
                                       int32_t width, int32_t height) {
  kelo::DeblockVerRows(plane, stride, width, 0, height, kelo::Low16(strength));
}

// Horizontal edges, then vertical edges (in strips; see DeblockPlane).
KELO_EXPORT void kimgp_dbf8x8(uint8_t* plane, int32_t strength, int32_t stride, int32_t width,
                              int32_t height) {
  const int32_t s = strength < 12 ? strength : 12;
  kelo::DeblockPlane(plane, stride, width, height, kelo::Low16(s));
}

KELO_EXPORT int32_t kimgp_dbf8x8_yuv(kimgp_img* img, uint32_t strength) {
  if (strength > 15) return KIMGP_ERR_ARGS;
  const auto s = static_cast<int32_t>(strength);
  for (int i = 0; i < 3; ++i) {
    if (img->plane[i] == nullptr) continue;
    kelo::DeblockPlane(img->plane[i], img->stride[i], img->width[i], img->height[i],
                       kelo::Low16(s));
  }
  return KIMGP_OK;
}

#endif  // !KELO_HAVE_HWY || HWY_ONCE
