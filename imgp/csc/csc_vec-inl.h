// Vector types and helpers shared by the conversion kernels, compiled once per
// Highway target (include it after hwy/highway.h inside a foreach_target
// translation unit).
#if defined(KELO_IMGP_CSC_CSC_VEC_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KELO_IMGP_CSC_CSC_VEC_INL_H_
#undef KELO_IMGP_CSC_CSC_VEC_INL_H_
#else
#define KELO_IMGP_CSC_CSC_VEC_INL_H_
#endif

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR
// Bytes, their halves, and the same bits as 16-bit lanes.
using D8 = hn::ScalableTag<uint8_t>;
using V8 = hn::Vec<D8>;
using DH8 = hn::Half<D8>;
using DU = hn::Repartition<uint16_t, D8>;
using VU = hn::Vec<DU>;
using DI = hn::Repartition<int16_t, D8>;
using VI = hn::Vec<DI>;

// Two vectors of 16-bit values, saturated to bytes in whole-vector order.
HWY_INLINE V8 NarrowToBytes(VI lo, VI hi) {
  const D8 d8;
  const DH8 dh;
  return hn::Combine(d8, hn::DemoteTo(dh, hi), hn::DemoteTo(dh, lo));
}
// Unsigned values of at most 255 pass through the signed narrowing.
HWY_INLINE V8 NarrowToBytes(VU lo, VU hi) {
  const DI di;
  return NarrowToBytes(hn::BitCast(di, lo), hn::BitCast(di, hi));
}

// RGB565 words (red in bits 15-11) from 8-bit channels in 16-bit lanes.
HWY_INLINE VU Pack565(VU r, VU g, VU b) {
  const DU du;
  return hn::Or(hn::Or(hn::ShiftLeft<8>(hn::And(r, hn::Set(du, 0xF8))),
                       hn::ShiftLeft<3>(hn::And(g, hn::Set(du, 0xFC)))),
                hn::ShiftRight<3>(b));
}

// The 565 words of Lanes pixels given as byte channels; `hi` goes to bits
// 15-11, `lo` to bits 4-0.
HWY_INLINE void Store565(V8 hi, V8 g, V8 lo, uint8_t* out) {
#if HWY_TARGET == HWY_NEON
  // Each channel in the upper byte of a word (vshll), the lower fields shifted
  // in beneath the upper ones (vsri).
  const auto pack = [](uint8x8_t h, uint8x8_t m, uint8x8_t l) {
    return vreinterpretq_u8_u16(vsriq_n_u16(
        vsriq_n_u16(vshll_n_u8(h, 8), vshll_n_u8(m, 8), 5), vshll_n_u8(l, 8), 11));
  };
  vst1q_u8(out, pack(vget_low_u8(hi.raw), vget_low_u8(g.raw), vget_low_u8(lo.raw)));
  vst1q_u8(out + 16, pack(vget_high_u8(hi.raw), vget_high_u8(g.raw), vget_high_u8(lo.raw)));
  return;
#endif
  const D8 d8;
  const DH8 dh;
  const DU du;
  const size_t L = hn::Lanes(d8);
  hn::StoreU(hn::BitCast(d8, Pack565(hn::PromoteTo(du, hn::LowerHalf(dh, hi)),
                                     hn::PromoteTo(du, hn::LowerHalf(dh, g)),
                                     hn::PromoteTo(du, hn::LowerHalf(dh, lo)))),
             d8, out);
  hn::StoreU(hn::BitCast(d8, Pack565(hn::PromoteTo(du, hn::UpperHalf(dh, hi)),
                                     hn::PromoteTo(du, hn::UpperHalf(dh, g)),
                                     hn::PromoteTo(du, hn::UpperHalf(dh, lo)))),
             d8, out + L);
}
#endif  // HWY_TARGET != HWY_SCALAR

#if HWY_TARGET == HWY_NEON
// Channels of the 16 pixels at p (3- or 4-byte pixels of order Src).
template <class Src>
HWY_INLINE void RgbChannels(const uint8_t* p, uint8x16_t* r, uint8x16_t* g, uint8x16_t* b) {
  if constexpr (Src::kBytes == 4) {
    const uint8x16x4_t c = vld4q_u8(p);
    *r = c.val[Src::kRi], *g = c.val[Src::kGi], *b = c.val[Src::kBi];
  } else {
    const uint8x16x3_t c = vld3q_u8(p);
    *r = c.val[Src::kRi], *g = c.val[Src::kGi], *b = c.val[Src::kBi];
  }
}
// Channels of the 8 pixels at p, p moved past them (a structure load with
// post-increment).
template <class Src>
HWY_INLINE void RgbChannels8(const uint8_t*& p, uint8x8_t* r, uint8x8_t* g, uint8x8_t* b) {
  if constexpr (Src::kBytes == 4) {
    const uint8x8x4_t c = vld4_u8(p);
    *r = c.val[Src::kRi], *g = c.val[Src::kGi], *b = c.val[Src::kBi];
  } else {
    const uint8x8x3_t c = vld3_u8(p);
    *r = c.val[Src::kRi], *g = c.val[Src::kGi], *b = c.val[Src::kBi];
  }
  p += 8 * Src::kBytes;
}
#endif  // HWY_TARGET == HWY_NEON

#if HWY_ARCH_X86 && HWY_TARGET != HWY_EMU128 && HWY_TARGET != HWY_SCALAR
// Byte vectors of the x86 pixel kernels: 128 bits on SSE4, else 256 (the
// AVX-512 targets run the 256-bit form).
#if HWY_TARGET == HWY_SSSE3 || HWY_TARGET == HWY_SSE4
using DP = hn::Full128<uint8_t>;
#else
using DP = hn::Full256<uint8_t>;
#endif
using VP = hn::Vec<DP>;

// Across two blocks, the 32-bit groups g0..g7 of v as g[k0] .. g[k7]; one
// block is left as it is. InOrder puts the groups after packing per 128-bit
// block back in row order: two blocks hold [g0 g2 g4 g6 | g1 g3 g5 g7].
template <int k0, int k1, int k2, int k3, int k4, int k5, int k6, int k7>
HWY_INLINE hn::Vec128<uint8_t> Groups(hn::Vec128<uint8_t> v) {
  return v;
}
#if HWY_TARGET != HWY_SSSE3 && HWY_TARGET != HWY_SSE4
template <int k0, int k1, int k2, int k3, int k4, int k5, int k6, int k7>
HWY_INLINE hn::Vec256<uint8_t> Groups(hn::Vec256<uint8_t> v) {
  return hn::Vec256<uint8_t>{
      _mm256_permutevar8x32_epi32(v.raw, _mm256_setr_epi32(k0, k1, k2, k3, k4, k5, k6, k7))};
}
#endif
HWY_INLINE VP InOrder(VP v) { return Groups<0, 4, 1, 5, 2, 6, 3, 7>(v); }

// Chroma bytes of one packed vector to the two planes: per block 8 U then
// 8 V. One block holds samples 0..7; two hold 0 1 4 5 8 9 12 13 and 2 3 6 7
// 10 11 14 15, and interleaving their 16-bit pairs restores the order.
HWY_INLINE void StorePlanar(hn::Vec128<uint8_t> uv, uint8_t* u, uint8_t* v) {
  const hn::Full64<uint8_t> dh;
  hn::StoreU(hn::LowerHalf(dh, uv), dh, u);
  hn::StoreU(hn::UpperHalf(dh, uv), dh, v);
}
#if HWY_TARGET != HWY_SSSE3 && HWY_TARGET != HWY_SSE4
HWY_INLINE void StorePlanar(hn::Vec256<uint8_t> uv, uint8_t* u, uint8_t* v) {
  const hn::Full128<uint16_t> dw;
  const hn::Full128<uint8_t> db;
  const hn::Vec128<uint16_t> lo = hn::BitCast(dw, hn::LowerHalf(uv));
  const hn::Vec128<uint16_t> hi = hn::BitCast(dw, hn::UpperHalf(db, uv));
  hn::StoreU(hn::BitCast(db, hn::InterleaveLower(dw, lo, hi)), db, u);
  hn::StoreU(hn::BitCast(db, hn::InterleaveUpper(dw, lo, hi)), db, v);
}
#endif
#endif  // HWY_ARCH_X86 && HWY_TARGET != HWY_EMU128 && HWY_TARGET != HWY_SCALAR

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();

#endif  // KELO_IMGP_CSC_CSC_VEC_INL_H_
