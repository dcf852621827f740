// Video quality enhancement: the saturation table and its mapping, detail
// enhancement, and their vector paths.
#include "common/internal/simd.h"

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/enhance/enhance.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "imgp/enhance/enhance_rows.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// 256-entry lookup as sixteen 16-entry byte shuffles, each kept for the
// lanes whose high nibble selects its part of the table.
template <class D, class V>
HWY_INLINE V Lookup256(D d, const V (&parts)[16], V idx) {
  const auto lo = hn::And(idx, hn::Set(d, 0x0F));
  const auto hi = hn::ShiftRight<4>(idx);
  V r = hn::TableLookupBytes(parts[0], lo);
  for (int t = 1; t < 16; ++t) {
    r = hn::IfThenElse(hn::Eq(hi, hn::Set(d, static_cast<uint8_t>(t))),
                       hn::TableLookupBytes(parts[t], lo), r);
  }
  return r;
}

void MapChromaVec(const uint8_t* table, size_t n, const uint8_t* su, const uint8_t* sv,
                  uint8_t* du, uint8_t* dv) {
  const hn::ScalableTag<uint8_t> d;
  const size_t N = hn::Lanes(d);
  size_t i = 0;
  // The shuffles look up 16-byte blocks; narrower vectors use the scalar map.
  if (N >= 16 && n >= N) {
    using V = hn::Vec<decltype(d)>;
    V parts[16];
    for (int t = 0; t < 16; ++t) parts[t] = hn::LoadDup128(d, table + 16 * t);
    for (; i <= n - N; i += N) {
      hn::StoreU(Lookup256(d, parts, hn::LoadU(d, su + i)), d, du + i);
      hn::StoreU(Lookup256(d, parts, hn::LoadU(d, sv + i)), d, dv + i);
    }
  }
  scalar::MapChroma(table, n - i, su + i, sv + i, du + i, dv + i);
}

// One vector of pixels at a time on 16-bit lanes. A last part shorter than a
// vector is one more vector ending at the span's end, which computes some
// pixels again to the same values (the source is not the destination); a
// span shorter than a vector is the scalar row's.
void SharpenSpanVec(const uint8_t* s, ptrdiff_t w, uint8_t* d, ptrdiff_t x0, ptrdiff_t x1) {
  const hn::ScalableTag<int16_t> d16;
  const hn::Rebind<uint8_t, decltype(d16)> d8;
  const ptrdiff_t N = static_cast<ptrdiff_t>(hn::Lanes(d16));
  if (x1 - x0 < N) return scalar::SharpenSpan(s, w, d, x0, x1);
  auto at = [&](const uint8_t* p) { return hn::PromoteTo(d16, hn::LoadU(d8, p)); };
  auto group = [&](ptrdiff_t x) {
    const uint8_t* c = s + x;
    const auto near = hn::Add(hn::Add(at(c - 1), at(c + 1)), hn::Add(at(c - w), at(c + w)));
    const auto far =
        hn::Add(hn::Add(at(c - 2), at(c + 2)), hn::Add(at(c - 2 * w), at(c + 2 * w)));
    const auto diag = hn::Add(hn::Add(at(c - w - 1), at(c - w + 1)),
                              hn::Add(at(c + w - 1), at(c + w + 1)));
    const auto sum = hn::Add(hn::Add(near, near), hn::Add(far, diag));
    const auto p = at(c);
    const auto v = hn::Add(p, hn::ShiftRight<4>(hn::Sub(hn::ShiftLeft<4>(p), sum)));
    hn::StoreU(hn::DemoteTo(d8, v), d8, d + x);
  };
  ptrdiff_t x = x0;
  for (; x + N <= x1; x += N) group(x);
  if (x < x1) group(x1 - N);
}

#if HWY_TARGET == HWY_NEON
// NEON: columns of 16 pixels, walked down the rows. With m(r) the sum of the
// four nearest neighbours of row r's pixel, the kernel is
//   32 p - S = 34 p - (l2 + r2) - (m(y-1) + 2 m(y) + m(y+1)),
// and m(y-1) + 2 m(y) + m(y+1) = P(y) + P(y+1) with P(r) = m(r-1) + m(r).
// Each row's m and P are made once and kept in registers for the next row;
// the result is (32 p - S) >> 4 narrowed with unsigned saturation. A step
// loads five vectors of bytes and does ten 8-lane operations per half.
struct Wide16 {
  uint16x8_t lo, hi;
};

HWY_INLINE Wide16 AddL(uint8x16_t a, uint8x16_t b) {
  return {vaddl_u8(vget_low_u8(a), vget_low_u8(b)), vaddl_u8(vget_high_u8(a), vget_high_u8(b))};
}
HWY_INLINE Wide16 AddW(Wide16 s, uint8x16_t a) {
  return {vaddw_u8(s.lo, vget_low_u8(a)), vaddw_u8(s.hi, vget_high_u8(a))};
}
HWY_INLINE Wide16 Add(Wide16 a, Wide16 b) { return {vaddq_u16(a.lo, b.lo), vaddq_u16(a.hi, b.hi)}; }

HWY_INLINE void Pin(uintptr_t& p) { asm("" : "+r"(p)); }

// One row of the 16-pixel column: p is the row's pixels, below the next
// row's, m and P those of the row; on return they are the next row's. Every
// address steps by a row after use (post-increment addressing; kept as
// integers, since the last step leaves them past the plane).
struct Column16 {
  uintptr_t left, right, next_l, next_r, under;
  uint8_t* d;
};

HWY_INLINE void SharpenStep(Column16& c, ptrdiff_t w, uint8x8_t k34, uint8x16_t& p,
                            uint8x16_t& below, Wide16& m, Wide16& P) {
  const auto load = [w](uintptr_t& q) {
    const uint8x16_t v = vld1q_u8(reinterpret_cast<const uint8_t*>(q));
    q += static_cast<uintptr_t>(w);
    Pin(q);
    return v;
  };
  const uint8x16_t below2 = load(c.under);
  const uint8x16_t nl = load(c.next_l), nr = load(c.next_r);
  const Wide16 mn = AddW(AddW(AddL(nl, nr), p), below2);
  const Wide16 Pn = Add(m, mn);
  const uint8x16_t l2 = load(c.left), r2 = load(c.right);
  uint16x8_t lo = vmull_u8(vget_low_u8(p), k34), hi = vmull_u8(vget_high_u8(p), k34);
  lo = vsubq_u16(vsubq_u16(vsubw_u8(vsubw_u8(lo, vget_low_u8(l2)), vget_low_u8(r2)), P.lo), Pn.lo);
  hi = vsubq_u16(vsubq_u16(vsubw_u8(vsubw_u8(hi, vget_high_u8(l2)), vget_high_u8(r2)), P.hi), Pn.hi);
  // Both halves narrowed straight into one q register (GCC moves one half
  // of a vcombine).
  uint8x16_t out;
  asm("vqshrun.s16 %e0, %q1, #4\n\tvqshrun.s16 %f0, %q2, #4" : "=&w"(out) : "w"(lo), "w"(hi));
  vst1q_u8(c.d, out);
  c.d += w;
  p = below;
  below = below2;
  m = mn;
  P = Pn;
}

// Rows 0 .. rows - 1 of the 16-pixel column at `s` (the first row has two
// rows above it, the last two below), six rows a loop step so that the
// rotation of p, below and m, P needs no register moves.
void SharpenColumn16(const uint8_t* s, ptrdiff_t w, uint8_t* d, int32_t rows) {
  const uint8x8_t k34 = vdup_n_u8(34);
  uint8x16_t p = vld1q_u8(s), below = vld1q_u8(s + w);
  Wide16 m = AddW(AddW(AddL(vld1q_u8(s - 1), vld1q_u8(s + 1)), vld1q_u8(s - w)), below);
  Wide16 P = Add(AddW(AddW(AddL(vld1q_u8(s - w - 1), vld1q_u8(s - w + 1)),
                           vld1q_u8(s - 2 * w)), p), m);
  const auto at = [s](ptrdiff_t offset) { return reinterpret_cast<uintptr_t>(s + offset); };
  Column16 c{at(-2), at(2), at(w - 1), at(w + 1), at(2 * w), d};
  int32_t i = rows;
  for (; i >= 6; i -= 6) {
    HWY_UNROLL(6)
    for (int j = 0; j < 6; ++j) SharpenStep(c, w, k34, p, below, m, P);
  }
  for (; i > 0; --i) SharpenStep(c, w, k34, p, below, m, P);
}
#endif

// Pixels x0 .. x1 - 1 of rows y0 .. y1 - 1 (each row as SharpenSpan).
void SharpenRowsVec(const uint8_t* s, ptrdiff_t w, uint8_t* d, ptrdiff_t y0, ptrdiff_t y1,
                    ptrdiff_t x0, ptrdiff_t x1) {
#if HWY_TARGET == HWY_NEON
  if (x1 - x0 >= 16) {
    const auto rows = static_cast<int32_t>(y1 - y0);
    const auto column = [&](ptrdiff_t x) {
      SharpenColumn16(s + y0 * w + x, w, d + y0 * w + x, rows);
    };
    ptrdiff_t x = x0;
    for (; x + 16 <= x1; x += 16) column(x);
    if (x < x1) column(x1 - 16);
    return;
  }
#endif
  for (ptrdiff_t y = y0; y < y1; ++y) SharpenSpanVec(s + y * w, w, d + y * w, x0, x1);
}

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_HAVE_HWY

#if !KELO_HAVE_HWY || HWY_ONCE
#include <cstring>

#include "common/internal/api.h"
#include "imgp/core/copy_rows.h"
#include "imgp/enhance/deblock_filter.h"
#include "imgp/enhance/enhance_rows.h"
#include "kimgp_enhance.h"

namespace kelo {

KELO_VEC_EXPORT(MapChromaVec);
KELO_VEC_EXPORT(SharpenRowsVec);

void MapChroma(const uint8_t* table, size_t n, const uint8_t* su, const uint8_t* sv,
               uint8_t* du, uint8_t* dv) {
  KELO_VEC_CALL(MapChromaVec, scalar::MapChroma)(table, n, su, sv, du, dv);
}

void SharpenRows(const uint8_t* s, ptrdiff_t w, uint8_t* d, ptrdiff_t y0, ptrdiff_t y1,
                 ptrdiff_t x0, ptrdiff_t x1) {
  KELO_VEC_CALL(SharpenRowsVec, scalar::SharpenRows)(s, w, d, y0, y1, x0, x1);
}

}  // namespace kelo

// Declared with C linkage by the header; a definition needs no `extern`.
__attribute__((visibility("default"))) uint8_t lut[256];

// The source value of entry j: the 32-bit numbers 0 .. 127 read as pairs of
// 16-bit halves, low half first.
KELO_EXPORT void color_sat_lut(uint8_t* table, int16_t gain) {
  for (int32_t j = 0; j < 256; ++j) {
    const int32_t s = (j & 1) ? 0 : j / 2;
    const int16_t v = kelo::Low16(kelo::Low16(((s - 128) * gain) >> 10) + 128);
    table[j] = static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v);
  }
}

// The pairs and the odd last sample map the same bytes as one run; a single
// sample (where the pair loop would not stop) maps that sample.
KELO_EXPORT void color_sat(const uint8_t* table, int32_t n, const uint8_t* su,
                           const uint8_t* sv, uint8_t* du, uint8_t* dv) {
  if (n < 1) return;
  kelo::MapChroma(table, static_cast<size_t>(n), su, sv, du, dv);
}

// Rows are contiguous, so the copied rows at the top and the bottom are
// single runs of bytes.
KELO_EXPORT void detail_enh(const uint8_t* src, int32_t w, int32_t h, uint8_t* dst,
                            int32_t /*strength*/) {
  if (w < 1 || h < 1) return;
  const ptrdiff_t W = w;
  if (w < 5 || h < 5) return kelo::CopyBytes(src, dst, static_cast<size_t>(W * h));
  kelo::CopyBytes(src, dst, static_cast<size_t>(2 * W));
  const uint8_t* s = src + 2 * W;
  uint8_t* d = dst + 2 * W;
  for (int32_t y = 2; y < h - 2; ++y, s += W, d += W) {
    d[0] = s[0];
    d[1] = s[1];
    d[W - 2] = s[W - 2];
    d[W - 1] = s[W - 1];
  }
  kelo::SharpenRows(src, W, dst, 2, h - 2, 2, W - 2);
  kelo::CopyBytes(s, d, static_cast<size_t>(2 * W));
}

KELO_EXPORT int32_t kimgp_vqe_cs_init(int32_t gain) {
  color_sat_lut(lut, gain < 1 ? int16_t{1180} : kelo::Low16(gain));
  return KIMGP_OK;
}

KELO_EXPORT int32_t kimgp_vqe_cs(const kimgp_img* src, kimgp_img* dst) {
  uint8_t table[256];
  memset(table, 0, sizeof(table));
  if (src->cs != KIMGP_CS_YUV420 || dst->cs != KIMGP_CS_YUV420) return KIMGP_ERR_ARGS;
  const auto n = static_cast<int32_t>(int64_t{src->width[1]} * src->height[1]);
  color_sat(table, n, src->plane[1], src->plane[2], dst->plane[1], dst->plane[2]);
  return KIMGP_OK;
}

KELO_EXPORT int32_t kimgp_vqe_de(const kimgp_img* src, kimgp_img* dst, int32_t strength) {
  if (src->cs != KIMGP_CS_YUV420 || dst->cs != KIMGP_CS_YUV420) return KIMGP_ERR_ARGS;
  detail_enh(src->plane[0], src->width[0], src->height[0], dst->plane[0],
             strength < 1 ? 4 : strength);
  return KIMGP_OK;
}

KELO_EXPORT int32_t kimgp_vqe_dejagging(void) { return KIMGP_OK; }

#endif  // !KELO_HAVE_HWY || HWY_ONCE
