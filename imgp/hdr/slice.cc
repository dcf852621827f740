// Slice conversion of the tone mapper: _kimgp_hdr10_to_sdr8 and its vector
// row path.
#include "common/internal/simd.h"

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/hdr/slice.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "imgp/hdr/hdr_tables.h"
#include "imgp/hdr/slice_pixels.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR
using D32 = hn::ScalableTag<int32_t>;
using V32 = hn::Vec<D32>;

// 16-bit table entries by index: a 32-bit read at the entry, the next entry's
// bytes masked off. Every table the path reads this way is followed by more
// of the work record, so the read stays inside it.
#if HWY_ARCH_ARM_V7 && HWY_TARGET == HWY_NEON
// 32-bit ARM has no gather: the indices leave the vector two at a time
// (one vmov of a d register to a core register pair), each entry is one
// load with a register offset, and the entries return two at a time.
template <typename Table>
HWY_INLINE V32 LookupLanes(const Table& table, V32 idx) {
  uint32_t i0, i1, i2, i3;
  asm("vmov %0, %1, %e4\n\tvmov %2, %3, %f4"
      : "=r"(i0), "=r"(i1), "=r"(i2), "=r"(i3)
      : "w"(idx.raw));
  const uint32_t r0 = table[i0], r1 = table[i1], r2 = table[i2], r3 = table[i3];
  int32x4_t out;
  asm("vmov %e0, %1, %2\n\tvmov %f0, %3, %4" : "=w"(out) : "r"(r0), "r"(r1), "r"(r2), "r"(r3));
  return V32(out);
}

HWY_INLINE V32 Lookup16(D32, const uint16_t* table, V32 idx) { return LookupLanes(table, idx); }
HWY_INLINE V32 Lookup8(D32, const uint8_t* table, V32 idx) { return LookupLanes(table, idx); }

// Two neighbouring 16-bit entries, entry i in the low half.
HWY_INLINE V32 LookupPair(D32, const uint16_t* table, V32 idx) {
  struct Pair {
    const uint16_t* t;
    uint32_t operator[](uint32_t i) const {
      uint32_t v;
      std::memcpy(&v, t + i, 4);
      return v;
    }
  };
  return LookupLanes(Pair{table}, idx);
}
#else
HWY_INLINE V32 Lookup16(D32 d, const uint16_t* table, V32 idx) {
  const int32_t* base = reinterpret_cast<const int32_t*>(table);
  return hn::And(hn::GatherOffset(d, base, hn::ShiftLeft<1>(idx)), hn::Set(d, 0xFFFF));
}

HWY_INLINE V32 Lookup8(D32 d, const uint8_t* table, V32 idx) {
  const int32_t* base = reinterpret_cast<const int32_t*>(table);
  return hn::And(hn::GatherOffset(d, base, idx), hn::Set(d, 0xFF));
}

HWY_INLINE V32 LookupPair(D32 d, const uint16_t* table, V32 idx) {
  return hn::GatherOffset(d, reinterpret_cast<const int32_t*>(table), hn::ShiftLeft<1>(idx));
}
#endif

// One vector of pixels from codes to 8-bit R, G, B (the steps of
// scalar::PixelToRgb8).
struct Rgb {
  V32 r, g, b;
};

// A decoding table's entry for every lane's code, by its arithmetic rule
// (codes are 0..1023 already; clamps that cannot bind are left out).
template <const hdr::DecodeRule& r>
HWY_INLINE V32 Decode(D32 d, V32 code) {
  V32 c = code;
  if (r.in_lo > 0) c = hn::Max(c, hn::Set(d, r.in_lo));
  if (r.in_hi < 1023) c = hn::Min(c, hn::Set(d, r.in_hi));
  // (c - center) * mul + round, with the constant terms folded.
  constexpr int32_t kBias = (1 << (r.shift - 1)) - r.center * r.mul;
  V32 v = hn::ShiftRight<r.shift>(hn::Add(hn::Mul(c, hn::Set(d, r.mul)), hn::Set(d, kBias)));
  if (r.out_lo > -hdr::kNoClamp) v = hn::Max(v, hn::Set(d, r.out_lo));
  if (r.out_hi < hdr::kNoClamp) v = hn::Min(v, hn::Set(d, r.out_hi));
  return v;
}

// The primaries matrix of the row's variant, made once per row. Row<i> is
// output channel i's sum of products.
struct Matrix {
#if HWY_ARCH_ARM_V7 && HWY_TARGET == HWY_NEON
  // Coefficients in d-register lanes, multiplied by lane: nine coefficient
  // vectors would not leave the pipeline enough of the sixteen q registers.
  Matrix(D32, int32_t variant) {
    const hdr::VariantCoeffs& k = hdr::Coeffs(variant);
    const int32_t a[6] = {k.m[0][0], k.m[0][1], k.m[1][0], k.m[1][1], k.m[2][0], k.m[2][1]};
    const int32_t b[4] = {k.m[0][2], k.m[1][2], k.m[2][2], 0};
    for (int i = 0; i < 3; ++i) rg[i] = vld1_s32(a + 2 * i);
    b01 = vld1_s32(b);
    b2 = vld1_s32(b + 2);
  }
  template <int i>
  HWY_INLINE V32 Row(V32 r, V32 g, V32 b) const {
    int32x4_t s = vmlaq_lane_s32(vmulq_lane_s32(r.raw, rg[i], 0), g.raw, rg[i], 1);
    return V32(i == 2 ? vmlaq_lane_s32(s, b.raw, b2, 0)
                      : vmlaq_lane_s32(s, b.raw, b01, i == 0 ? 0 : 1));
  }
  int32x2_t rg[3], b01, b2;
#else
  Matrix(D32 d, int32_t variant) {
    const hdr::VariantCoeffs& k = hdr::Coeffs(variant);
    for (int i = 0; i < 3; ++i) {
      for (int c = 0; c < 3; ++c) m[i][c] = hn::Set(d, k.m[i][c]);
    }
  }
  template <int i>
  HWY_INLINE V32 Row(V32 r, V32 g, V32 b) const {
    return hn::Add(hn::Add(hn::Mul(r, m[i][0]), hn::Mul(g, m[i][1])), hn::Mul(b, m[i][2]));
  }
  V32 m[3][3];
#endif
};

HWY_INLINE Rgb ToRgb8(D32 d, const hdr::RowJob& j, const Matrix& k, V32 y, V32 rc, V32 gc,
                      V32 bc) {
  const V32 zero = hn::Zero(d);
  const V32 max10 = hn::Set(d, 1023);
  const V32 yl = Decode<hdr::kY10Rule>(d, y);
  V32 c[3] = {hn::Min(hn::Max(hn::Add(yl, rc), zero), max10),
              hn::Min(hn::Max(hn::Add(yl, gc), zero), max10),
              hn::Min(hn::Max(hn::Add(yl, bc), zero), max10)};
  for (auto& v : c) v = Lookup16(d, j.lin, v);
  const V32 max15 = hn::Set(d, 32767);
  V32 p[3] = {k.Row<0>(c[0], c[1], c[2]), k.Row<1>(c[0], c[1], c[2]),
              k.Row<2>(c[0], c[1], c[2])};
  for (auto& v : p) v = hn::Min(hn::Max(hn::ShiftRight<8>(v), zero), max15);
  const V32 max12 = hn::Set(d, 4095);
  if (j.hlg) {
    for (auto& v : p) v = hn::Min(hn::ShiftRight<3>(v), max12);
  } else {
    const V32 m = hn::Max(hn::Max(p[0], p[1]), p[2]);
    const V32 f = hn::And(hn::ShiftRight<3>(m), hn::Set(d, 15));
    // gain[i] in the low half, gain[i + 1] in the high half.
    const V32 pair = LookupPair(d, j.gain, hn::ShiftRight<7>(m));
    const V32 g0 = hn::And(pair, hn::Set(d, 0xFFFF));
    const V32 g1 = hn::And(hn::ShiftRight<16>(pair), hn::Set(d, 0xFFFF));
    const V32 gain = hn::ShiftRight<4>(
        hn::Add(hn::Mul(hn::Sub(hn::Set(d, 16), f), g0), hn::Mul(f, g1)));
    for (auto& v : p) v = hn::Min(hn::ShiftRight<11>(hn::Mul(v, gain)), max12);
  }
  return Rgb{Lookup8(d, j.out, p[0]), Lookup8(d, j.out, p[1]), Lookup8(d, j.out, p[2])};
}

#if HWY_ARCH_ARM_V7 && HWY_TARGET == HWY_NEON
// The steps of ToRgb8 for two vectors of pixels at once on 32-bit ARM, in
// 16-bit lanes wherever the values fit (clamps, the largest channel, the
// gain) and in 32-bit lanes for the lookups and products.
HWY_INLINE uint16x8_t Narrow(V32 lo, V32 hi) {
  return vuzpq_u16(vreinterpretq_u16_s32(lo.raw), vreinterpretq_u16_s32(hi.raw)).val[0];
}
HWY_INLINE V32 WidenLo(uint16x8_t v) { return V32(vreinterpretq_s32_u32(vmovl_u16(vget_low_u16(v)))); }
HWY_INLINE V32 WidenHi(uint16x8_t v) { return V32(vreinterpretq_s32_u32(vmovl_u16(vget_high_u16(v)))); }

// Chroma term of each pair spread over both pixels, 8 lanes: the low half
// of every 32-bit lane copied into its high half.
HWY_INLINE int16x8_t SpreadTerm(V32 t) {
  return vreinterpretq_s16_s32(vsliq_n_s32(t.raw, t.raw, 16));
}

// Output channel i of the primaries matrix for two vectors of pixels: the
// saturating narrow of sum >> 8 to 0..65535, then at most 32767.
template <int i>
HWY_INLINE uint16x8_t Primary(const Matrix& k, const V32 (&lin)[2][3]) {
  return vminq_u16(vcombine_u16(vqshrun_n_s32(k.Row<i>(lin[0][0], lin[0][1], lin[0][2]).raw, 8),
                                vqshrun_n_s32(k.Row<i>(lin[1][0], lin[1][1], lin[1][2]).raw, 8)),
                   vdupq_n_u16(32767));
}

HWY_INLINE void ToRgb8Pair(D32 d, const hdr::RowJob& j, const Matrix& k, V32 y0, V32 y1, V32 rc,
                           V32 gc, V32 bc, Rgb* c0, Rgb* c1) {
  const int16x8_t yl = vreinterpretq_s16_u16(
      Narrow(Decode<hdr::kY10Rule>(d, y0), Decode<hdr::kY10Rule>(d, y1)));
  const int16x8_t zero = vdupq_n_s16(0), max10 = vdupq_n_s16(1023);
  const int16x8_t terms[3] = {SpreadTerm(rc), SpreadTerm(gc), SpreadTerm(bc)};
  V32 lin[2][3];
  for (int c = 0; c < 3; ++c) {
    const uint16x8_t idx = vreinterpretq_u16_s16(
        vminq_s16(vmaxq_s16(vaddq_s16(yl, terms[c]), zero), max10));
    lin[0][c] = Lookup16(d, j.lin, WidenLo(idx));
    lin[1][c] = Lookup16(d, j.lin, WidenHi(idx));
  }
  const uint16x8_t p[3] = {Primary<0>(k, lin), Primary<1>(k, lin), Primary<2>(k, lin)};
  const uint16x8_t max12 = vdupq_n_u16(4095);
  uint16x8_t t[3];
  if (j.hlg) {
    for (int c = 0; c < 3; ++c) t[c] = vminq_u16(vshrq_n_u16(p[c], 3), max12);
  } else {
    const uint16x8_t m = vmaxq_u16(vmaxq_u16(p[0], p[1]), p[2]);
    const int16x8_t f = vreinterpretq_s16_u16(vandq_u16(vshrq_n_u16(m, 3), vdupq_n_u16(15)));  // 0..15
    const uint16x8_t gi = vshrq_n_u16(m, 7);
    // gain[i] in the low half of each pair, gain[i + 1] in the high half.
    const uint16x8x2_t g = vuzpq_u16(vreinterpretq_u16_s32(LookupPair(d, j.gain, WidenLo(gi)).raw),
                                     vreinterpretq_u16_s32(LookupPair(d, j.gain, WidenHi(gi)).raw));
    const uint16x8_t g0 = g.val[0], g1 = g.val[1];
    // ((16 - f) * g0 + f * g1) >> 4, exact for any 16-bit entries.
    const uint16x8_t uf = vreinterpretq_u16_s16(f), rf = vsubq_u16(vdupq_n_u16(16), uf);
    const uint32x4_t s_lo = vmlal_u16(vmull_u16(vget_low_u16(g0), vget_low_u16(rf)),
                                      vget_low_u16(g1), vget_low_u16(uf));
    const uint32x4_t s_hi = vmlal_u16(vmull_u16(vget_high_u16(g0), vget_high_u16(rf)),
                                      vget_high_u16(g1), vget_high_u16(uf));
    const uint16x8_t gain = vcombine_u16(vshrn_n_u32(s_lo, 4), vshrn_n_u32(s_hi, 4));
    // (c * gain) >> 11, at most 4095; the products stay below 2^31.
    for (int c = 0; c < 3; ++c) {
      const uint32x4_t a = vmull_u16(vget_low_u16(p[c]), vget_low_u16(gain));
      const uint32x4_t b = vmull_u16(vget_high_u16(p[c]), vget_high_u16(gain));
      t[c] = vminq_u16(vcombine_u16(vqshrn_n_u32(a, 11), vqshrn_n_u32(b, 11)), max12);
    }
  }
  *c0 = Rgb{Lookup8(d, j.out, WidenLo(t[0])), Lookup8(d, j.out, WidenLo(t[1])),
            Lookup8(d, j.out, WidenLo(t[2]))};
  *c1 = Rgb{Lookup8(d, j.out, WidenHi(t[0])), Lookup8(d, j.out, WidenHi(t[1])),
            Lookup8(d, j.out, WidenHi(t[2]))};
}
#endif

HWY_INLINE V32 Weighted(D32 d, const int32_t w[3], const Rgb& c) {
  return hn::Add(hn::Add(hn::Mul(c.r, hn::Set(d, w[0])), hn::Mul(c.g, hn::Set(d, w[1]))),
                 hn::Mul(c.b, hn::Set(d, w[2])));
}

HWY_INLINE V32 Chroma(D32 d, const int32_t w[3], const Rgb& c) {
  const V32 v = hn::Add(hn::ShiftRight<12>(Weighted(d, w, c)), hn::Set(d, 128));
  return hn::Min(hn::Max(v, hn::Zero(d)), hn::Set(d, 255));
}

// Writes one vector of pixels starting at column x.
HWY_INLINE void StorePixels(D32 d, const hdr::RowJob& j, const Rgb& c, int32_t x) {
  const hn::Rebind<uint8_t, D32> d8;
  switch (j.dst) {
    case hdr::DstKind::kRgba:
    case hdr::DstKind::kArgb: {
#if HWY_ARCH_ARM_V7 && HWY_TARGET == HWY_NEON
      // Shift-and-insert: each channel is one instruction.
      const uint32x4_t r = vreinterpretq_u32_s32(c.r.raw), g = vreinterpretq_u32_s32(c.g.raw),
                       b = vreinterpretq_u32_s32(c.b.raw);
      const uint32x4_t px =
          j.dst == hdr::DstKind::kRgba
              ? vorrq_u32(vsliq_n_u32(vsliq_n_u32(r, g, 8), b, 16), vdupq_n_u32(0xFF000000u))
              : vsliq_n_u32(vsliq_n_u32(vsliq_n_u32(vdupq_n_u32(0xFFu), r, 8), g, 16), b, 24);
      vst1q_u32(reinterpret_cast<uint32_t*>(j.d0 + 4 * static_cast<ptrdiff_t>(x)), px);
#else
      const hn::RebindToUnsigned<D32> du;
      const auto r = hn::BitCast(du, c.r), g = hn::BitCast(du, c.g), b = hn::BitCast(du, c.b);
      const auto px =
          j.dst == hdr::DstKind::kRgba
              ? hn::Or(hn::Or(r, hn::ShiftLeft<8>(g)),
                       hn::Or(hn::ShiftLeft<16>(b), hn::Set(du, 0xFF000000u)))
              : hn::Or(hn::Or(hn::Set(du, 0xFFu), hn::ShiftLeft<8>(r)),
                       hn::Or(hn::ShiftLeft<16>(g), hn::ShiftLeft<24>(b)));
      hn::StoreU(px, du, reinterpret_cast<uint32_t*>(j.d0 + 4 * static_cast<ptrdiff_t>(x)));
#endif
      return;
    }
    case hdr::DstKind::kRgb888: {
      HWY_ALIGN int32_t r[HWY_MAX_BYTES / 4], g[HWY_MAX_BYTES / 4], b[HWY_MAX_BYTES / 4];
      hn::Store(c.r, d, r);
      hn::Store(c.g, d, g);
      hn::Store(c.b, d, b);
      uint8_t* o = j.d0 + 3 * static_cast<ptrdiff_t>(x);
      for (size_t i = 0; i < hn::Lanes(d); ++i) {
        o[3 * i] = static_cast<uint8_t>(r[i]);
        o[3 * i + 1] = static_cast<uint8_t>(g[i]);
        o[3 * i + 2] = static_cast<uint8_t>(b[i]);
      }
      return;
    }
    default: {
      const hdr::VariantCoeffs& k = hdr::Coeffs(j.variant);
      const V32 y = hn::Min(hn::ShiftRight<12>(Weighted(d, k.wy, c)), hn::Set(d, 255));
      hn::StoreU(hn::DemoteTo(d8, y), d8, j.d0 + x);
      return;
    }
  }
}

// Chroma of the even pixels of two vectors of pixels starting at column x.
HWY_INLINE void StoreChroma(D32 d, const hdr::RowJob& j, const Rgb& c0, const Rgb& c1,
                            int32_t x) {
  const hdr::VariantCoeffs& k = hdr::Coeffs(j.variant);
  const Rgb even{hn::ConcatEven(d, c1.r, c0.r), hn::ConcatEven(d, c1.g, c0.g),
                 hn::ConcatEven(d, c1.b, c0.b)};
  const V32 u = Chroma(d, k.wu, even), v = Chroma(d, k.wv, even);
  if (j.dst == hdr::DstKind::kYuv420) {
    const hn::Rebind<uint8_t, D32> d8;
    hn::StoreU(hn::DemoteTo(d8, u), d8, j.du + x / 2);
    hn::StoreU(hn::DemoteTo(d8, v), d8, j.dv + x / 2);
  } else {
    const hn::Rebind<uint16_t, D32> d16;
    const V32 pair = j.dst == hdr::DstKind::kNv12 ? hn::Or(u, hn::ShiftLeft<8>(v))
                                                   : hn::Or(v, hn::ShiftLeft<8>(u));
    hn::StoreU(hn::DemoteTo(d16, pair), d16, reinterpret_cast<uint16_t*>(j.du + x));
  }
}

// Chroma terms of pixel pairs spread over both pixels of each pair: lane i
// of Lower is lane i / 2, lane i of Upper is lane n / 2 + i / 2.
struct Spread {
  explicit Spread(D32 d) {
    const int32_t n = static_cast<int32_t>(hn::Lanes(d));
    HWY_ALIGN int32_t lo_idx[HWY_MAX_BYTES / 4], hi_idx[HWY_MAX_BYTES / 4];
    for (int32_t i = 0; i < n; ++i) {
      lo_idx[i] = i / 2;
      hi_idx[i] = n / 2 + i / 2;
    }
    lo = hn::SetTableIndices(d, lo_idx);
    hi = hn::SetTableIndices(d, hi_idx);
  }
  V32 Lower(V32 v) const { return hn::TableLookupLanes(v, lo); }
  V32 Upper(V32 v) const { return hn::TableLookupLanes(v, hi); }
  decltype(hn::SetTableIndices(D32(), static_cast<const int32_t*>(nullptr))) lo, hi;
};

// Converts the row in groups of two vectors of pixels (one vector of chroma
// pairs); returns the number of pixels done, an even number. The rest of the
// row is the scalar code's.
int32_t ConvertRowVec(const hdr::RowJob& j) {
  if (j.src == hdr::SrcKind::kOther || j.dst == hdr::DstKind::kUnsupported) return 0;
  const D32 d;
  const int32_t n = static_cast<int32_t>(hn::Lanes(d));
  const hn::Rebind<uint16_t, D32> d16;
  const Matrix k(d, j.variant);
#if !(HWY_ARCH_ARM_V7 && HWY_TARGET == HWY_NEON)
  const Spread spread(d);
#endif
  const bool p010 = j.src == hdr::SrcKind::kP010;
  const V32 max10 = hn::Set(d, 1023);
  int32_t x = 0;
  for (; x + 2 * n <= j.width; x += 2 * n) {
    const uint16_t* ys = reinterpret_cast<const uint16_t*>(j.y) + x;
    V32 y0 = hn::PromoteTo(d, hn::LoadU(d16, ys));
    V32 y1 = hn::PromoteTo(d, hn::LoadU(d16, ys + n));
    V32 u, v;
    if (p010) {
      y0 = hn::ShiftRight<6>(y0);
      y1 = hn::ShiftRight<6>(y1);
      const V32 uv = hn::LoadU(d, reinterpret_cast<const int32_t*>(j.c0 + 2 * static_cast<ptrdiff_t>(x)));
      u = hn::And(hn::ShiftRight<6>(uv), max10);
      v = hn::And(hn::ShiftRight<22>(uv), max10);
    } else {
      y0 = hn::Min(y0, max10);
      y1 = hn::Min(y1, max10);
      u = hn::Min(hn::PromoteTo(d, hn::LoadU(d16, reinterpret_cast<const uint16_t*>(j.c0) + x / 2)), max10);
      v = hn::Min(hn::PromoteTo(d, hn::LoadU(d16, reinterpret_cast<const uint16_t*>(j.c1) + x / 2)), max10);
    }
    // Chroma terms once per pair, then spread over the pair's two pixels.
    const V32 rc = Decode<hdr::kRCr10Rule>(d, v);
    const V32 gc = hn::Add(Decode<hdr::kGCb10Rule>(d, u), Decode<hdr::kGCr10Rule>(d, v));
    const V32 bc = Decode<hdr::kBCb10Rule>(d, u);
#if HWY_ARCH_ARM_V7 && HWY_TARGET == HWY_NEON
    Rgb c0, c1;
    ToRgb8Pair(d, j, k, y0, y1, rc, gc, bc, &c0, &c1);
#else
    const Rgb c0 = ToRgb8(d, j, k, y0, spread.Lower(rc), spread.Lower(gc), spread.Lower(bc));
    const Rgb c1 = ToRgb8(d, j, k, y1, spread.Upper(rc), spread.Upper(gc), spread.Upper(bc));
#endif
    StorePixels(d, j, c0, x);
    StorePixels(d, j, c1, x + n);
    if (j.du != nullptr) StoreChroma(d, j, c0, c1, x);
  }
  return x;
}
#else
// One lane: the scalar code does the row.
int32_t ConvertRowVec(const hdr::RowJob&) { return 0; }
#endif

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_HAVE_HWY

#if !KELO_HAVE_HWY || HWY_ONCE
#include <cstddef>
#include <cstdio>

#include "common/internal/api.h"
#include "imgp/hdr/hdr_internal.h"
#include "imgp/hdr/slice_pixels.h"

namespace kelo {
namespace hdr {
namespace scalar {
int32_t ConvertRowNone(const RowJob&) { return 0; }
}  // namespace scalar

KELO_VEC_EXPORT(ConvertRowVec);

namespace {

DstKind DstKindOf(int32_t cs) {
  switch (cs) {
    case KIMGP_CS_RGB888:
      return DstKind::kRgb888;
    case KIMGP_CS_RGBA8888:
      return DstKind::kRgba;
    case KIMGP_CS_ARGB8888:
      return DstKind::kArgb;
    case KIMGP_CS_YUV420:
    case KIMGP_CS_YV12:
      return DstKind::kYuv420;
    case KIMGP_CS_NV12:
      return DstKind::kNv12;
    case KIMGP_CS_NV21:
      return DstKind::kNv21;
    default:
      return cs >= 200 && cs <= 599 ? DstKind::kUnsupported : DstKind::kLumaOnly;
  }
}

}  // namespace

void ConvertBand(kimgp_hdr_work* w, int32_t first, int32_t end, bool vector) {
  if (w == nullptr || w->src == nullptr || w->dst == nullptr || first < 0 || first >= end) return;
  const kimgp_img& s = *w->src;
  const kimgp_img& d = *w->dst;
  const int32_t width = s.width[0];
  const int32_t stop = end < s.height[0] ? end : s.height[0];
  if (width <= 0 || first >= stop) return;
  RowJob j{};
  j.src = s.cs == KIMGP_CS_P010LE          ? SrcKind::kP010
          : s.cs == KIMGP_CS_YUV420PLANAR16 ? SrcKind::kPlanar16
                                            : SrcKind::kOther;
  j.width = width;
  j.dst = DstKindOf(d.cs);
  j.lin = w->hlg == 1 ? w->hlg_lut : w->pq_lut;
  j.gain = w->gain_lut;
  j.out = w->out_lut;
  j.hlg = w->hlg == 1;
  j.variant = w->variant;

  // Destination planes are tightly packed from the band's first row.
  // Chroma rows hold (width + 1) / 2 samples: an odd width counts as the
  // next even one, so that four-row slices line up (for even widths this is
  // (first * width) / 4, also on odd first rows).
  const int64_t at = static_cast<int64_t>(first) * width;
  const int64_t chroma_row = (width + 1) / 2;  // chroma samples per even row
  const int64_t chroma_at = static_cast<int64_t>(first) * 2 * chroma_row;
  uint8_t* d0 = d.plane[0];
  uint8_t* du = nullptr;
  uint8_t* dv = nullptr;
  int64_t luma_step = width, chroma_step = 0;
  switch (j.dst) {
    case DstKind::kRgb888:
      d0 += at * 3;
      luma_step = 3 * static_cast<int64_t>(width);
      break;
    case DstKind::kRgba:
    case DstKind::kArgb:
      d0 += at * 4;
      luma_step = 4 * static_cast<int64_t>(width);
      break;
    case DstKind::kYuv420:
      d0 += at;
      du = d.plane[d.cs == KIMGP_CS_YV12 ? 2 : 1] + chroma_at / 4;
      dv = d.plane[d.cs == KIMGP_CS_YV12 ? 1 : 2] + chroma_at / 4;
      chroma_step = chroma_row;
      break;
    case DstKind::kNv12:
    case DstKind::kNv21:
      d0 += at;
      du = d.plane[1] + chroma_at / 2;
      chroma_step = 2 * chroma_row;
      break;
    case DstKind::kLumaOnly:
      d0 += at;
      break;
    case DstKind::kUnsupported:
      break;
  }
  const int32_t step = w->step > 0 ? w->step : 8;
  for (int32_t r = first; r < stop; ++r) {
    if (j.dst == DstKind::kUnsupported) {
      for (int32_t c = 0; c < width; c += step) {
        std::fprintf(stderr, "%s(%d): Unsupported Color Space [%d]\n", "_kimgp_hdr10_to_sdr8",
                     438, d.cs);
      }
      continue;
    }
    if (j.src != SrcKind::kOther) {
      const ptrdiff_t cr = r / 2;
      j.y = s.plane[0] + static_cast<ptrdiff_t>(r) * s.stride[0];
      j.c0 = s.plane[1] + cr * s.stride[1];
      j.c1 = j.src == SrcKind::kPlanar16 ? s.plane[2] + cr * s.stride[2] : nullptr;
    }
    const bool chroma = (r & 1) == 0 && du != nullptr;
    j.d0 = d0;
    j.du = chroma ? du : nullptr;
    j.dv = chroma ? dv : nullptr;
    const int32_t done = vector ? KELO_VEC_CALL(ConvertRowVec, scalar::ConvertRowNone)(j) : 0;
    scalar::ConvertPixels(j, done);
    d0 += luma_step;
    if (chroma) {
      du += chroma_step;
      if (dv != nullptr) dv += chroma_step;
    }
  }
}

}  // namespace hdr
}  // namespace kelo

KELO_EXPORT int32_t _kimgp_hdr10_to_sdr8(kimgp_hdr_work* work, int32_t first, int32_t end) {
  kelo::hdr::ConvertBand(work, first, end, true);
  return 0;
}

#endif  // !KELO_HAVE_HWY || HWY_ONCE
