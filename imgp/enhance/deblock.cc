// 8x8 deblocking: the exported passes and entries, and their vector paths.
#include "common/internal/simd.h"

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/enhance/deblock.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "common/internal/unaligned-inl.h"

#include "imgp/enhance/deblock_filter.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using D16 = hn::ScalableTag<int16_t>;
using V16 = hn::Vec<D16>;

// Strengths for which the ramp's 16-bit steps cannot wrap (|m| <= 255):
// there, "m - 2(m - S) when m >= S" is min(m, 2S - m).
constexpr int16_t kPlainStrength = 16000;

// The edge filter on 16-bit lanes, each lane one line of A, B, C, D across
// an edge: the same steps as scalar::FilterEdge, lane by lane. With kPlain
// the strength is within +-kPlainStrength; `twice` is 2S. Without kClamp,
// B' and C' are left for a saturating narrowing to clip.
template <bool kPlain, bool kClamp, class D, class V>
HWY_INLINE void FilterEdges(D d, V& a, V& b, V& c, V& dd, V strength, V twice) {
  const auto zero = hn::Zero(d);
  const auto s = hn::Add(hn::Sub(a, dd), hn::ShiftLeft<2>(hn::Sub(c, b)));
  auto m = hn::Abs(hn::ShiftRight<3>(s));
  if (kPlain) {
    m = hn::Min(m, hn::Sub(twice, m));
  } else {
    const auto over = hn::Sub(m, strength);
    m = hn::IfThenElse(hn::Lt(over, zero), m, hn::Sub(m, hn::Add(over, over)));
  }
  m = hn::Max(m, zero);
  const auto d1 = hn::IfThenElse(hn::Lt(s, zero), hn::Neg(m), m);
  const auto h = hn::ShiftRight<1>(m);
  const auto d2 = hn::Min(hn::Max(hn::ShiftRight<2>(hn::Sub(a, dd)), hn::Neg(h)), h);
  // Saturating steps keep B + d1 and C - d1 ordered like the exact sums.
  b = hn::SaturatedAdd(b, d1);
  c = hn::SaturatedSub(c, d1);
  if (kClamp) {
    const auto k255 = hn::Set(d, 255);
    b = hn::Min(hn::Max(b, zero), k255);
    c = hn::Min(hn::Max(c, zero), k255);
  }
  a = hn::Sub(a, d2);
  dd = hn::Add(dd, d2);
}

bool IsPlain(int16_t strength) {
  return strength >= -kPlainStrength && strength <= kPlainStrength;
}

// Horizontal edges k0 .. k1: one vector of columns of the four rows at a
// time; the narrowing to bytes clips B' and C'.
template <bool kPlain>
void HorEdges(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t k0, int32_t k1,
              int16_t strength) {
  const D16 d;
  const hn::Rebind<uint8_t, D16> d8;
  const int32_t N = static_cast<int32_t>(hn::Lanes(d));
  const auto vs = hn::Set(d, strength);
  const auto twice = hn::Add(vs, vs);
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
      FilterEdges<kPlain, false>(d, a, b, c, e, vs, twice);
      hn::StoreU(hn::DemoteTo(d8, a), d8, r0 + x);
      hn::StoreU(hn::DemoteTo(d8, b), d8, r1 + x);
      hn::StoreU(hn::DemoteTo(d8, c), d8, r2 + x);
      hn::StoreU(hn::DemoteTo(d8, e), d8, r3 + x);
    }
    scalar::DeblockHorSpan(plane, stride, x, width, k, k, strength);
  }
}

#if HWY_TARGET == HWY_NEON
// NEON: sixteen lines of A, B, C, D as bytes, with only s in 16-bit lanes.
// m = |s >> 3| <= 160 fits a byte (its low byte is (s >> 3)'s, the sign is
// s >> 8's); for a plain strength the ramp max(min(m, 2S - m), 0) is
// S' - |m - S'| saturated at 0 with S' = S clamped to 0 .. 255; d1 = +-ramp
// goes through saturating byte steps, and (A - D) >> 2 is a halving
// subtraction (exact in signed bytes) shifted once more. Lanes whose `keep`
// byte is 0 get a zero ramp, hence d1 = d2 = 0: they are stored unchanged.
HWY_INLINE void FilterEdges16(uint8x16_t& a, uint8x16_t& b, uint8x16_t& c, uint8x16_t& d,
                              uint8x16_t strength, uint8x16_t keep) {
  const uint8x8_t k4 = vdup_n_u8(4);
  const auto sum = [k4](uint8x8_t a, uint8x8_t b, uint8x8_t c, uint8x8_t d) {
    return vmlsl_u8(vmlal_u8(vsubl_u8(a, d), c, k4), b, k4);
  };
  const uint16x8_t s0 = sum(vget_low_u8(a), vget_low_u8(b), vget_low_u8(c), vget_low_u8(d));
  const uint16x8_t s1 = sum(vget_high_u8(a), vget_high_u8(b), vget_high_u8(c), vget_high_u8(d));
  // Both halves narrowed straight into one q register (GCC moves one half
  // of a vcombine).
  uint8x16_t low, high;
  asm("vshrn.i16 %e0, %q2, #3\n\tvshrn.i16 %f0, %q3, #3\n\t"
      "vshrn.i16 %e1, %q2, #8\n\tvshrn.i16 %f1, %q3, #8"
      : "=&w"(low), "=&w"(high)
      : "w"(s0), "w"(s1));
  const uint8x16_t neg = vcltq_s8(vreinterpretq_s8_u8(high), vdupq_n_s8(0));
  const uint8x16_t m = vsubq_u8(veorq_u8(low, neg), neg);
  const uint8x16_t r = vandq_u8(vqsubq_u8(strength, vabdq_u8(m, strength)), keep);
  const uint8x16_t rn = vandq_u8(r, neg), rp = vbicq_u8(r, neg);
  b = vqsubq_u8(vqaddq_u8(b, rp), rn);
  c = vqsubq_u8(vqaddq_u8(c, rn), rp);
  const int8x16_t h = vreinterpretq_s8_u8(vshrq_n_u8(r, 1));
  int8x16_t d2 = vshrq_n_s8(vreinterpretq_s8_u8(vhsubq_u8(a, d)), 1);
  d2 = vminq_s8(vmaxq_s8(d2, vnegq_s8(h)), h);
  a = vsubq_u8(a, vreinterpretq_u8_s8(d2));
  d = vaddq_u8(d, vreinterpretq_u8_s8(d2));
}

HWY_INLINE void Pin(uint8_t*& p) { asm("" : "+r"(p)); }

HWY_INLINE uint8x16_t StrengthBytes(int16_t strength) {
  return vdupq_n_u8(static_cast<uint8_t>(strength < 0 ? 0 : strength > 255 ? 255 : strength));
}

// Lanes from `first` on.
HWY_INLINE uint8x16_t KeepFrom(int32_t first) {
  static const uint8_t kIota[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  return vcgeq_u8(vld1q_u8(kIota), vdupq_n_u8(static_cast<uint8_t>(first)));
}

// Horizontal edges over at least 16 columns: 16 columns a step, the last
// step ending at the last column with the columns already done kept.
void HorEdges16(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t k0, int32_t k1,
                int16_t strength) {
  const uint8x16_t vs = StrengthBytes(strength);
  const uint8x16_t all = vdupq_n_u8(0xFF);
  for (int32_t k = k0; k <= k1; ++k) {
    uint8_t* r0 = plane + (8 * k - 2) * stride;
    uint8_t* r1 = r0 + stride;
    uint8_t* r2 = r1 + stride;
    uint8_t* r3 = r2 + stride;
    // Each pointer steps after its store (post-increment addressing).
    const auto step = [&](uint8x16_t keep) {
      uint8x16_t a = vld1q_u8(r0), b = vld1q_u8(r1), c = vld1q_u8(r2), d = vld1q_u8(r3);
      FilterEdges16(a, b, c, d, vs, keep);
      vst1q_u8(r0, a);
      vst1q_u8(r1, b);
      vst1q_u8(r2, c);
      vst1q_u8(r3, d);
      r0 += 16;
      r1 += 16;
      r2 += 16;
      r3 += 16;
      Pin(r0);
      Pin(r1);
      Pin(r2);
      Pin(r3);
    };
    int32_t x = 0;
    for (; x + 16 <= width; x += 16) step(all);
    if (x < width) {
      const int32_t back = x - (width - 16);
      r0 -= back;
      r1 -= back;
      r2 -= back;
      r3 -= back;
      step(KeepFrom(back));
    }
  }
}

// Vertical edges of rows with at least 16 edges: 16 edges (128 bytes from
// column 8k - 2) a step as two four-way word deinterleaves; an unzip of
// bytes splits the AB and CD words into A, B, C, D. The last step ends at
// edge n with the edges already done kept.
void VerRows16(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t y0, int32_t y1,
               int16_t strength) {
  const int32_t n = BlockEdges(width);
  const uint8x16_t vs = StrengthBytes(strength);
  const uint8x16_t all = vdupq_n_u8(0xFF);
  for (int32_t y = y0; y < y1; ++y) {
    uint8_t* row = plane + y * stride;
    const auto step = [&](int32_t k, uint8x16_t keep) {
      uint16_t* p = reinterpret_cast<uint16_t*>(row + 8 * k - 2);
      uint16x8x4_t w0 = vld4q_u16(p), w1 = vld4q_u16(p + 32);
      const uint8x16x2_t ab = vuzpq_u8(vreinterpretq_u8_u16(w0.val[0]),
                                       vreinterpretq_u8_u16(w1.val[0]));
      const uint8x16x2_t cd = vuzpq_u8(vreinterpretq_u8_u16(w0.val[1]),
                                       vreinterpretq_u8_u16(w1.val[1]));
      uint8x16_t a = ab.val[0], b = ab.val[1], c = cd.val[0], d = cd.val[1];
      FilterEdges16(a, b, c, d, vs, keep);
      const uint8x16x2_t ab2 = vzipq_u8(a, b), cd2 = vzipq_u8(c, d);
      w0.val[0] = vreinterpretq_u16_u8(ab2.val[0]);
      w1.val[0] = vreinterpretq_u16_u8(ab2.val[1]);
      w0.val[1] = vreinterpretq_u16_u8(cd2.val[0]);
      w1.val[1] = vreinterpretq_u16_u8(cd2.val[1]);
      vst4q_u16(p, w0);
      vst4q_u16(p + 32, w1);
    };
    int32_t k = 1;
    for (; k + 15 <= n; k += 16) step(k, all);
    if (k <= n) step(n - 15, KeepFrom(k - (n - 15)));
  }
}
#endif

void DeblockHorVec(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t k0, int32_t k1,
                   int16_t strength) {
#if HWY_TARGET == HWY_NEON
  if (IsPlain(strength) && width >= 16) return HorEdges16(plane, stride, width, k0, k1, strength);
#endif
  if (IsPlain(strength)) return HorEdges<true>(plane, stride, width, k0, k1, strength);
  HorEdges<false>(plane, stride, width, k0, k1, strength);
}

// Four-way deinterleave of 16-bit words and its inverse. The filter works
// lane by lane, so lanes may come in any order as long as the store undoes
// the load: on x86 vectors wider than a block, each 128-bit block is
// deinterleaved on its own, without the block transposes that keep lanes in
// memory order. Elsewhere (NEON has four-way loads) Highway's own.
using DU16 = hn::RebindToUnsigned<D16>;
using VU16 = hn::Vec<DU16>;

#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX2
HWY_INLINE void LoadWords4(DU16 d, const uint16_t* p, VU16& v0, VU16& v1, VU16& v2, VU16& v3) {
  const hn::Repartition<uint64_t, DU16> d64;
  const size_t N = hn::Lanes(d);
  const auto A = hn::LoadU(d, p), B = hn::LoadU(d, p + N);
  const auto C = hn::LoadU(d, p + 2 * N), D = hn::LoadU(d, p + 3 * N);
  const auto ab_lo = hn::InterleaveLower(d, A, B), cd_lo = hn::InterleaveLower(d, C, D);
  const auto ab_hi = hn::InterleaveUpper(d, A, B), cd_hi = hn::InterleaveUpper(d, C, D);
  const auto w10a = hn::BitCast(d64, hn::InterleaveLower(d, ab_lo, ab_hi));
  const auto w10c = hn::BitCast(d64, hn::InterleaveLower(d, cd_lo, cd_hi));
  const auto w32a = hn::BitCast(d64, hn::InterleaveUpper(d, ab_lo, ab_hi));
  const auto w32c = hn::BitCast(d64, hn::InterleaveUpper(d, cd_lo, cd_hi));
  v0 = hn::BitCast(d, hn::InterleaveLower(d64, w10a, w10c));
  v1 = hn::BitCast(d, hn::InterleaveUpper(d64, w10a, w10c));
  v2 = hn::BitCast(d, hn::InterleaveLower(d64, w32a, w32c));
  v3 = hn::BitCast(d, hn::InterleaveUpper(d64, w32a, w32c));
}

HWY_INLINE void StoreWords4(DU16 d, VU16 v0, VU16 v1, VU16 v2, VU16 v3, uint16_t* p) {
  const hn::RepartitionToWide<DU16> dw;
  const size_t N = hn::Lanes(d);
  const auto v10L = hn::ZipLower(dw, v0, v1), v32L = hn::ZipLower(dw, v2, v3);
  const auto v10U = hn::ZipUpper(dw, v0, v1), v32U = hn::ZipUpper(dw, v2, v3);
  hn::StoreU(hn::BitCast(d, hn::InterleaveLower(dw, v10L, v32L)), d, p);
  hn::StoreU(hn::BitCast(d, hn::InterleaveUpper(dw, v10L, v32L)), d, p + N);
  hn::StoreU(hn::BitCast(d, hn::InterleaveLower(dw, v10U, v32U)), d, p + 2 * N);
  hn::StoreU(hn::BitCast(d, hn::InterleaveUpper(dw, v10U, v32U)), d, p + 3 * N);
}
#else
HWY_INLINE void LoadWords4(DU16 d, const uint16_t* p, VU16& v0, VU16& v1, VU16& v2, VU16& v3) {
  LoadInterleaved4U(d, p, v0, v1, v2, v3);
}

HWY_INLINE void StoreWords4(DU16 d, VU16 v0, VU16 v1, VU16 v2, VU16 v3, uint16_t* p) {
  StoreInterleaved4U(v0, v1, v2, v3, d, p);
}
#endif

// Narrower vectors (the last edges of a row) keep lanes in memory order.
template <class D, class V>
HWY_INLINE void LoadWords4(D d, const uint16_t* p, V& v0, V& v1, V& v2, V& v3) {
  LoadInterleaved4U(d, p, v0, v1, v2, v3);
}

template <class D, class V>
HWY_INLINE void StoreWords4(D d, V v0, V v1, V v2, V v3, uint16_t* p) {
  StoreInterleaved4U(v0, v1, v2, v3, d, p);
}

// Vertical edges, row by row. Read from column 8k - 2 as 16-bit words, a
// row is a run of 8-byte groups of four words: AB, CD of edges k, k + 1, ...
// and two words of columns 8k + 2 .. 8k + 5, which no edge touches. A
// four-way deinterleave of words (an in-register transpose of 2-byte units)
// puts the AB and CD words of N edges in two vectors; their low
// and high bytes are A, B, C, D, one edge per 16-bit lane. The other two
// vectors are stored back as they were. Edges share no pixel, so the result
// is that of the edges one after another.
// Edges k .. of one row, as many whole vectors of D as fit before edge n;
// returns the first edge left.
template <bool kPlain, class D>
HWY_INLINE int32_t VerEdges(D d, uint8_t* row, int32_t k, int32_t n, int16_t strength) {
  const hn::RebindToUnsigned<D> du;
  const int32_t N = static_cast<int32_t>(hn::Lanes(d));
  const auto vs = hn::Set(d, strength);
  const auto twice = hn::Add(vs, vs);
  const auto low = hn::Set(du, 0xFF);
  for (; k + N - 1 <= n; k += N) {
    // Word loads through the byte pointer: rows need not be 2-byte aligned.
    uint16_t* p = reinterpret_cast<uint16_t*>(row + 8 * k - 2);
    hn::Vec<decltype(du)> ab, cd, w2, w3;
    LoadWords4(du, p, ab, cd, w2, w3);
    auto a = hn::BitCast(d, hn::And(ab, low));
    auto b = hn::BitCast(d, hn::ShiftRight<8>(ab));
    auto c = hn::BitCast(d, hn::And(cd, low));
    auto e = hn::BitCast(d, hn::ShiftRight<8>(cd));
    FilterEdges<kPlain, true>(d, a, b, c, e, vs, twice);
    ab = hn::Or(hn::BitCast(du, a), hn::ShiftLeft<8>(hn::BitCast(du, b)));
    cd = hn::Or(hn::BitCast(du, c), hn::ShiftLeft<8>(hn::BitCast(du, e)));
    StoreWords4(du, ab, cd, w2, w3, p);
  }
  return k;
}

// Whole vectors, then 8 and 4 edges at a time, then the scalar row.
template <bool kPlain>
void VerRows(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t y0, int32_t y1,
             int16_t strength) {
  const int32_t n = BlockEdges(width);
  for (int32_t y = y0; y < y1 && n > 0; ++y) {
    uint8_t* row = plane + y * stride;
    int32_t k = VerEdges<kPlain>(D16(), row, 1, n, strength);
    k = VerEdges<kPlain>(hn::CappedTag<int16_t, 8>(), row, k, n, strength);
    k = VerEdges<kPlain>(hn::CappedTag<int16_t, 4>(), row, k, n, strength);
    if (k <= n) scalar::DeblockVerRow(row, k, n, strength);
  }
}

void DeblockVerVec(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t y0, int32_t y1,
                   int16_t strength) {
#if HWY_TARGET == HWY_NEON
  if (IsPlain(strength) && BlockEdges(width) >= 16) {
    return VerRows16(plane, stride, width, y0, y1, strength);
  }
#endif
  if (IsPlain(strength)) return VerRows<true>(plane, stride, width, y0, y1, strength);
  VerRows<false>(plane, stride, width, y0, y1, strength);
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
