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

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();

#endif  // KELO_IMGP_CSC_CSC_VEC_INL_H_
