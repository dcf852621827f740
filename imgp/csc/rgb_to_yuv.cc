// RGB to YUV kernels: vector luma and chroma rows per source order, the
// scalar rows for tails, and the exported names from one list.
#include "common/internal/simd.h"
#include "imgp/csc/rgb_to_yuv.h"

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/csc/rgb_to_yuv.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "common/internal/x86_raw-inl.h"
#include "imgp/csc/csc_vec-inl.h"
#include "imgp/csc/rgb_to_yuv.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
using namespace csc;  // NOLINT: layout traits and matrices

// x86 targets have the byte-pair multiply-add that the 4-byte pixel rows use
// (KELO_X86_RAW).
#undef KELO_RGB_CHANNELS

#if HWY_TARGET != HWY_SCALAR

template <int kSlot, class Src>
HWY_INLINE void Assign(V8 c, V8* r, V8* g, V8* b) {
  if constexpr (kSlot == Src::kRi) *r = c;
  if constexpr (kSlot == Src::kGi) *g = c;
  if constexpr (kSlot == Src::kBi) *b = c;
}

// 5-6-5 fields of Lanes/2 pixels as 16-bit channels with zero low bits.
template <class Src>
HWY_INLINE void Unpack565(VU w, VU* r, VU* g, VU* b) {
  const DU du;
  const VU hi = hn::ShiftRight<8>(hn::And(w, hn::Set(du, 0xF800)));
  const VU lo = hn::ShiftLeft<3>(hn::And(w, hn::Set(du, 0x1F)));
  *g = hn::ShiftRight<3>(hn::And(w, hn::Set(du, 0x7E0)));
  *r = Src::kRedHighV ? hi : lo;
  *b = Src::kRedHighV ? lo : hi;
}

// Channels of pixels [0, Lanes) at p as two halves of 16-bit lanes.
template <class Src>
HWY_INLINE void LoadRgb16(const uint8_t* p, VU* r, VU* g, VU* b) {
  const D8 d8;
  const DH8 dh;
  const DU du;
  if constexpr (Src::kBytes == 2) {
    const size_t L = hn::Lanes(d8);
    Unpack565<Src>(hn::BitCast(du, hn::LoadU(d8, p)), &r[0], &g[0], &b[0]);
    Unpack565<Src>(hn::BitCast(du, hn::LoadU(d8, p + L)), &r[1], &g[1], &b[1]);
  } else {
    V8 c0, c1, c2, c3, R, G, B;
    if constexpr (Src::kBytes == 4) {
      hn::LoadInterleaved4(d8, p, c0, c1, c2, c3);
      Assign<3, Src>(c3, &R, &G, &B);
    } else {
      hn::LoadInterleaved3(d8, p, c0, c1, c2);
    }
    Assign<0, Src>(c0, &R, &G, &B);
    Assign<1, Src>(c1, &R, &G, &B);
    Assign<2, Src>(c2, &R, &G, &B);
    r[0] = hn::PromoteTo(du, hn::LowerHalf(dh, R));
    r[1] = hn::PromoteTo(du, hn::UpperHalf(dh, R));
    g[0] = hn::PromoteTo(du, hn::LowerHalf(dh, G));
    g[1] = hn::PromoteTo(du, hn::UpperHalf(dh, G));
    b[0] = hn::PromoteTo(du, hn::LowerHalf(dh, B));
    b[1] = hn::PromoteTo(du, hn::UpperHalf(dh, B));
  }
}

// Luma in 16-bit unsigned lanes: the weighted sum stays below 65536.
template <class M>
HWY_INLINE VU Luma(VU r, VU g, VU b) {
  const DU du;
  const VU s = hn::Add(hn::Add(hn::Mul(r, hn::Set(du, M::kYr)), hn::Mul(g, hn::Set(du, M::kYg))),
                       hn::Mul(b, hn::Set(du, M::kYb)));
  return hn::Add(hn::ShiftRight<8>(s), hn::Set(du, M::kYOffset));
}

// Chroma in 16-bit signed lanes: |sum| + 128 stays below 32768.
template <int kR, int kG, int kB>
HWY_INLINE VI Chroma(VI r, VI g, VI b) {
  const DI di;
  const VI s = hn::Add(hn::Add(hn::Mul(r, hn::Set(di, kR)), hn::Mul(g, hn::Set(di, kG))),
                       hn::Add(hn::Mul(b, hn::Set(di, kB)), hn::Set(di, 128)));
  return hn::Add(hn::ShiftRight<8>(s), hn::Set(di, 128));
}

template <class Src, class M>
void LumaLanes(const uint8_t* src, uint8_t* y, int n) {
  const D8 d8;
  const size_t L = hn::Lanes(d8);
  size_t x = 0;
  for (; x + L <= static_cast<size_t>(n); x += L) {
    VU r[2], g[2], b[2];
    LoadRgb16<Src>(src + x * Src::kBytes, r, g, b);
    hn::StoreU(NarrowToBytes(Luma<M>(r[0], g[0], b[0]), Luma<M>(r[1], g[1], b[1])), d8, y + x);
  }
  scalar::RgbToLumaRow<Src, M>(src, y, static_cast<int>(x), n);
}

// Chroma of Lanes samples: from every second pixel (kSub 2) or every pixel.
template <class Src, class M, int kSub, int kCStep>
void ChromaLanes(const uint8_t* src, uint8_t* u, uint8_t* v, int n) {
  const D8 d8;
  const DU du;
  const DI di;
  const size_t L = hn::Lanes(d8);
  size_t k = 0;
  for (; k + L <= static_cast<size_t>(n); k += L) {
    const uint8_t* p = src + kSub * k * Src::kBytes;
    VU r[2], g[2], b[2];
    if constexpr (kSub == 1) {
      LoadRgb16<Src>(p, r, g, b);
    } else {
      // Pixels [0, 2L): keep the even ones.
      VU ra[2], ga[2], ba[2], rb[2], gb[2], bb[2];
      LoadRgb16<Src>(p, ra, ga, ba);
      LoadRgb16<Src>(p + L * Src::kBytes, rb, gb, bb);
      r[0] = hn::ConcatEven(du, ra[1], ra[0]);
      g[0] = hn::ConcatEven(du, ga[1], ga[0]);
      b[0] = hn::ConcatEven(du, ba[1], ba[0]);
      r[1] = hn::ConcatEven(du, rb[1], rb[0]);
      g[1] = hn::ConcatEven(du, gb[1], gb[0]);
      b[1] = hn::ConcatEven(du, bb[1], bb[0]);
    }
    VI cu[2], cv[2];
    for (int h = 0; h < 2; ++h) {
      const VI R = hn::BitCast(di, r[h]), G = hn::BitCast(di, g[h]), B = hn::BitCast(di, b[h]);
      cu[h] = Chroma<M::kUr, M::kUg, M::kUb>(R, G, B);
      cv[h] = Chroma<M::kVr, M::kVg, M::kVb>(R, G, B);
    }
    const V8 U = NarrowToBytes(cu[0], cu[1]), V = NarrowToBytes(cv[0], cv[1]);
    if constexpr (kCStep == 1) {
      hn::StoreU(U, d8, u + k);
      hn::StoreU(V, d8, v + k);
    } else if (u < v) {
      hn::StoreInterleaved2(U, V, d8, u + 2 * k);
    } else {
      hn::StoreInterleaved2(V, U, d8, v + 2 * k);
    }
  }
  scalar::RgbToChromaRow<Src, M, kSub>(src, u, v, kCStep, static_cast<int>(k), n);
}
// Luma of pixels [0, n) and chroma of samples [0, n / 2): blocks of 2 Lanes
// pixels give 2 Lanes luma and Lanes chroma from the same loads.
template <class Src, class M, int kSub, int kCStep>
void LumaChromaLanes(const uint8_t* src, uint8_t* y, uint8_t* u, uint8_t* v, int n) {
  const D8 d8;
  const DU du;
  const DI di;
  const size_t L = hn::Lanes(d8);
  size_t x = 0;
  for (; x + 2 * L <= static_cast<size_t>(n); x += 2 * L) {
    VU ra[2], ga[2], ba[2], rb[2], gb[2], bb[2];
    LoadRgb16<Src>(src + x * Src::kBytes, ra, ga, ba);
    LoadRgb16<Src>(src + (x + L) * Src::kBytes, rb, gb, bb);
    hn::StoreU(NarrowToBytes(Luma<M>(ra[0], ga[0], ba[0]), Luma<M>(ra[1], ga[1], ba[1])), d8, y + x);
    hn::StoreU(NarrowToBytes(Luma<M>(rb[0], gb[0], bb[0]), Luma<M>(rb[1], gb[1], bb[1])), d8, y + x + L);
    const VU* r4[2] = {ra, rb};
    const VU* g4[2] = {ga, gb};
    const VU* b4[2] = {ba, bb};
    VI cu[2], cv[2];
    for (int h = 0; h < 2; ++h) {
      const VI R = hn::BitCast(di, hn::ConcatEven(du, r4[h][1], r4[h][0]));
      const VI G = hn::BitCast(di, hn::ConcatEven(du, g4[h][1], g4[h][0]));
      const VI B = hn::BitCast(di, hn::ConcatEven(du, b4[h][1], b4[h][0]));
      cu[h] = Chroma<M::kUr, M::kUg, M::kUb>(R, G, B);
      cv[h] = Chroma<M::kVr, M::kVg, M::kVb>(R, G, B);
    }
    const V8 U = NarrowToBytes(cu[0], cu[1]), V = NarrowToBytes(cv[0], cv[1]);
    const size_t k = x / 2;
    if constexpr (kCStep == 1) {
      hn::StoreU(U, d8, u + k);
      hn::StoreU(V, d8, v + k);
    } else if (u < v) {
      hn::StoreInterleaved2(U, V, d8, u + 2 * k);
    } else {
      hn::StoreInterleaved2(V, U, d8, v + 2 * k);
    }
  }
  scalar::RgbToLumaRow<Src, M>(src, y, static_cast<int>(x), n);
  scalar::RgbToChromaRow<Src, M, kSub>(src, u, v, kCStep, static_cast<int>(x / 2), n / 2);
}

#if KELO_X86_RAW
// 4-byte pixels on x86: every output is a weighted sum of byte pairs
// (multiply-add of unsigned by signed bytes to 16 bits), then of the two pair
// sums of a pixel (horizontal add), without unpacking the channels.
// The AVX-512 targets run the 256-bit form.
using DP16 = hn::Repartition<uint16_t, DP>;
using VP16 = hn::Vec<DP16>;

// Byte pairs a0 b0 + a1 b1 with a unsigned and b signed, per 16-bit lane.
HWY_INLINE VP16 MulAddPairs(VP a, VP b) { return VP16{RawMulAddPairs(a.raw, b.raw)}; }
// Sums of neighbouring 16-bit lanes (wrapping): a's pairs, then b's, per
// 128-bit block.
HWY_INLINE VP16 AddPairs(VP16 a, VP16 b) { return VP16{RawAddPairs(a.raw, b.raw)}; }
// Values of at most 255 to bytes: a's lanes, then b's, per 128-bit block.
HWY_INLINE VP PackBytes(VP16 a, VP16 b) { return VP{RawPackBytes(a.raw, b.raw)}; }
// Pixels 0 and 2 of a, then of b, per 128-bit block.
HWY_INLINE hn::Vec128<uint8_t> EvenPixels(hn::Vec128<uint8_t> a, hn::Vec128<uint8_t> b) {
  return hn::Vec128<uint8_t>{_mm_castps_si128(
      _mm_shuffle_ps(_mm_castsi128_ps(a.raw), _mm_castsi128_ps(b.raw), 0x88))};
}

#if HWY_TARGET != HWY_SSSE3 && HWY_TARGET != HWY_SSE4
HWY_INLINE hn::Vec256<uint8_t> EvenPixels(hn::Vec256<uint8_t> a, hn::Vec256<uint8_t> b) {
  return hn::Vec256<uint8_t>{_mm256_castps_si256(
      _mm256_shuffle_ps(_mm256_castsi256_ps(a.raw), _mm256_castsi256_ps(b.raw), 0x88))};
}
#endif

// The 32-bit word of per-byte weights: byte i weighs the channel stored at
// byte i (alpha weighs 0).
template <class Src>
constexpr uint32_t PairWeights(int r, int g, int b) {
  return (uint32_t(r & 0xFF) << (8 * Src::kRi)) | (uint32_t(g & 0xFF) << (8 * Src::kGi)) |
         (uint32_t(b & 0xFF) << (8 * Src::kBi));
}

// Luma weights are unsigned (up to 255) and the pixels enter as signed
// x - 128: the sum is S - 128 W with S the luma sum and W the weight total,
// each pair within 16 bits while W <= 256, and S = sum + 128 W in 16-bit
// unsigned lanes while 255 W < 65536.
template <class M>
constexpr int LumaWeightTotal() { return M::kYr + M::kYg + M::kYb; }
// Chroma weights are signed bytes and the pixels unsigned: a pair of same-sign
// weights gives at most (|w0| + |w1|) * 255, and the sum at most 255 times
// the larger of the positive and negative weight totals.
template <int kR, int kG, int kB>
constexpr bool ChromaFitsPairs() {
  auto pos = [](int w) { return w > 0 ? w : 0; };
  auto neg = [](int w) { return w < 0 ? -w : 0; };
  const int p = pos(kR) + pos(kG) + pos(kB), q = neg(kR) + neg(kG) + neg(kB);
  return kR >= -128 && kR <= 127 && kG >= -128 && kG <= 127 && kB >= -128 && kB <= 127 &&
         (p > q ? p : q) * 255 + 128 <= 32767;
}

// Luma bytes of the L pixels in p[0..3] (L / 4 each).
template <class Src, class M>
HWY_INLINE VP LumaOfPairs(const VP* p) {
  static_assert(LumaWeightTotal<M>() <= 256 && M::kYr >= 0 && M::kYg >= 0 && M::kYb >= 0,
                "luma pair sums in 16 bits");
  const DP d8;
  const DP16 du;
  const hn::Repartition<uint32_t, DP> d32;
  const VP w = hn::BitCast(d8, hn::Set(d32, PairWeights<Src>(M::kYr, M::kYg, M::kYb)));
  // The offset rides along as 256 kYOffset.
  static_assert(255 * LumaWeightTotal<M>() + 256 * M::kYOffset <= 65535, "luma offset in 16 bits");
  const VP bias = hn::Set(d8, 0x80);
  const VP16 k =
      hn::Set(du, static_cast<uint16_t>(128 * LumaWeightTotal<M>() + 256 * M::kYOffset));
  auto sums = [&](VP a, VP b) {
    const VP16 s = AddPairs(MulAddPairs(w, hn::Xor(a, bias)), MulAddPairs(w, hn::Xor(b, bias)));
    return hn::ShiftRight<8>(hn::Add(s, k));
  };
  return InOrder(PackBytes(sums(p[0], p[1]), sums(p[2], p[3])));
}

// Chroma of the even pixels e01, e23 with weights kR, kG, kB: values
// ((sum + 128) >> 8) + 128 in 16-bit lanes, as (sum + 128 + 32768) >> 8.
template <class Src, int kR, int kG, int kB>
HWY_INLINE VP16 ChromaOfPairs(VP e01, VP e23) {
  static_assert(ChromaFitsPairs<kR, kG, kB>(), "chroma pair sums in 16 bits");
  const DP d8;
  const DP16 du;
  const hn::Repartition<uint32_t, DP> d32;
  const VP w = hn::BitCast(d8, hn::Set(d32, PairWeights<Src>(kR, kG, kB)));
  const VP16 s = AddPairs(MulAddPairs(e01, w), MulAddPairs(e23, w));
  return hn::ShiftRight<8>(hn::Add(s, hn::Set(du, 0x8080)));
}

// Four vectors of 4-byte pixels from s on.
HWY_INLINE void LoadPixels(const uint8_t* s, VP* p) {
  const DP d8;
  const size_t L = hn::Lanes(d8);
  for (size_t i = 0; i < 4; ++i) p[i] = hn::LoadU(d8, s + i * L);
}

template <class Src, class M>
void LumaPairs(const uint8_t* src, uint8_t* y, int n) {
  const DP d8;
  const size_t L = hn::Lanes(d8);
  size_t x = 0;
  for (; x + L <= static_cast<size_t>(n); x += L) {
    VP p[4];
    LoadPixels(src + 4 * x, p);
    hn::StoreU(LumaOfPairs<Src, M>(p), d8, y + x);
  }
  scalar::RgbToLumaRow<Src, M>(src, y, static_cast<int>(x), n);
}

// Luma of pixels [0, n) and chroma of samples [0, n / 2): L pixels give L
// luma and L / 2 chroma samples.
template <class Src, class M, int kCStep>
void LumaChromaPairs(const uint8_t* src, uint8_t* y, uint8_t* u, uint8_t* v, int n) {
  const DP d8;
  const size_t L = hn::Lanes(d8);
  size_t x = 0;
  for (; x + L <= static_cast<size_t>(n); x += L) {
    VP p[4];
    LoadPixels(src + 4 * x, p);
    hn::StoreU(LumaOfPairs<Src, M>(p), d8, y + x);
    const VP e01 = EvenPixels(p[0], p[1]), e23 = EvenPixels(p[2], p[3]);
    const VP16 cu = ChromaOfPairs<Src, M::kUr, M::kUg, M::kUb>(e01, e23);
    const VP16 cv = ChromaOfPairs<Src, M::kVr, M::kVg, M::kVb>(e01, e23);
    const size_t k = x / 2;
    if constexpr (kCStep == 1) {
      StorePlanar(PackBytes(cu, cv), u + k, v + k);
    } else {
      // Each 16-bit lane is one pair, the first plane's byte low.
      const bool u_first = u < v;
      const VP16 pair = hn::Or(u_first ? cu : cv, hn::ShiftLeft<8>(u_first ? cv : cu));
      hn::StoreU(InOrder(hn::BitCast(d8, pair)), d8, (u_first ? u : v) + 2 * k);
    }
  }
  scalar::RgbToLumaRow<Src, M>(src, y, static_cast<int>(x), n);
  scalar::RgbToChromaRow<Src, M, 2>(src, u, v, kCStep, static_cast<int>(x / 2), n / 2);
}
#endif  // KELO_X86_RAW


#if HWY_TARGET == HWY_NEON
// 3- and 4-byte pixels on NEON: the structure loads split 16 pixels into
// channel vectors, and each output is a widening multiply-accumulate of bytes
// into 16-bit lanes that start at the bias, narrowed by taking the high byte.
// Chroma sums with negative weights wrap in the unsigned lanes; the true
// biased value lies in 0..65535, so the high byte is exact.
template <int kW>
HWY_INLINE uint16x8_t MulAcc(uint16x8_t s, uint8x8_t x) {
  static_assert(kW >= -255 && kW <= 255, "byte weight");
  if constexpr (kW > 0) return vmlal_u8(s, x, vdup_n_u8(static_cast<uint8_t>(kW)));
  if constexpr (kW < 0) return vmlsl_u8(s, x, vdup_n_u8(static_cast<uint8_t>(-kW)));
  return s;
}
// (bias + kR r + kG g + kB b) >> 8 for 8 pixels: the sum starts with the
// product of a positive weight (vmull) and the bias joins in the narrowing
// add (vaddhn), both modulo 2^16 like the sum.
template <int kR, int kG, int kB, int kBias>
HWY_INLINE uint8x8_t Weighted(uint8x8_t r, uint8x8_t g, uint8x8_t b) {
  static_assert(kR > 0 || kG > 0 || kB > 0, "a positive weight");
  uint16x8_t s;
  if constexpr (kR > 0) {
    s = MulAcc<kB>(MulAcc<kG>(vmull_u8(r, vdup_n_u8(kR)), g), b);
  } else if constexpr (kG > 0) {
    s = MulAcc<kB>(MulAcc<kR>(vmull_u8(g, vdup_n_u8(kG)), r), b);
  } else {
    s = MulAcc<kG>(MulAcc<kR>(vmull_u8(b, vdup_n_u8(kB)), r), g);
  }
  return vaddhn_u16(s, vdupq_n_u16(static_cast<uint16_t>(kBias)));
}
template <class M>
HWY_INLINE uint8x8_t LumaOf(uint8x8_t r, uint8x8_t g, uint8x8_t b) {
  static_assert(255 * (M::kYr + M::kYg + M::kYb) + 256 * M::kYOffset <= 65535, "luma in 16 bits");
  return Weighted<M::kYr, M::kYg, M::kYb, 256 * M::kYOffset>(r, g, b);
}
// ((sum + 128) >> 8) + 128 as (sum + 128 + 32768) >> 8.
template <class M>
HWY_INLINE void ChromaOf(uint8x8_t r, uint8x8_t g, uint8x8_t b, uint8x8_t* u, uint8x8_t* v) {
  *u = Weighted<M::kUr, M::kUg, M::kUb, 0x8080>(r, g, b);
  *v = Weighted<M::kVr, M::kVg, M::kVb, 0x8080>(r, g, b);
}
// Pixels 0, 2, ..., 14 of a channel vector.
HWY_INLINE uint8x8_t EvenOf(uint8x16_t c) { return vmovn_u16(vreinterpretq_u16_u8(c)); }

template <class Src, class M>
HWY_INLINE void Luma16(uint8x16_t r, uint8x16_t g, uint8x16_t b, uint8_t* y) {
  vst1q_u8(y, vcombine_u8(LumaOf<M>(vget_low_u8(r), vget_low_u8(g), vget_low_u8(b)),
                          LumaOf<M>(vget_high_u8(r), vget_high_u8(g), vget_high_u8(b))));
}
// Chroma samples [k, k + 8) to planes or interleaved pairs.
template <int kCStep>
HWY_INLINE void StoreChroma8(uint8x8_t cu, uint8x8_t cv, uint8_t* u, uint8_t* v, size_t k) {
  if constexpr (kCStep == 1) {
    vst1_u8(u + k, cu);
    vst1_u8(v + k, cv);
  } else if (u < v) {
    vst2_u8(u + 2 * k, (uint8x8x2_t{{cu, cv}}));
  } else {
    vst2_u8(v + 2 * k, (uint8x8x2_t{{cv, cu}}));
  }
}

// The loops bump their pointers (post-increment addressing) and stop at the
// last whole block of 16 pixels.
template <class Src, class M>
void LumaChannels(const uint8_t* src, uint8_t* y, int n) {
  const size_t n16 = static_cast<size_t>(n) & ~size_t{15};
  const uint8_t* p = src;
  for (uint8_t *py = y, *const end = y + n16; py != end; py += 16, p += 16 * Src::kBytes) {
    uint8x16_t r, g, b;
    RgbChannels<Src>(p, &r, &g, &b);
    Luma16<Src, M>(r, g, b, py);
  }
  scalar::RgbToLumaRow<Src, M>(src, y, static_cast<int>(n16), n);
}
// Chroma of samples [0, n): 16 pixels give 16 / kSub samples.
template <class Src, class M, int kSub, int kCStep>
void ChromaChannels(const uint8_t* src, uint8_t* u, uint8_t* v, int n) {
  constexpr size_t kStep = 16 / kSub;
  size_t k = 0;
  for (; k + kStep <= static_cast<size_t>(n); k += kStep) {
    uint8x16_t r, g, b;
    RgbChannels<Src>(src + kSub * k * Src::kBytes, &r, &g, &b);
    uint8x8_t cu, cv;
    if constexpr (kSub == 2) {
      ChromaOf<M>(EvenOf(r), EvenOf(g), EvenOf(b), &cu, &cv);
      StoreChroma8<kCStep>(cu, cv, u, v, k);
    } else {
      ChromaOf<M>(vget_low_u8(r), vget_low_u8(g), vget_low_u8(b), &cu, &cv);
      StoreChroma8<kCStep>(cu, cv, u, v, k);
      ChromaOf<M>(vget_high_u8(r), vget_high_u8(g), vget_high_u8(b), &cu, &cv);
      StoreChroma8<kCStep>(cu, cv, u, v, k + 8);
    }
  }
  scalar::RgbToChromaRow<Src, M, kSub>(src, u, v, kCStep, static_cast<int>(k), n);
}
// kVFirst: interleaved chroma with V before U (the order is fixed per call,
// so the loop holds no test of it).
template <class Src, class M, int kCStep, bool kVFirst>
void LumaChromaChannelsIn(const uint8_t* src, uint8_t* y, uint8_t* u, uint8_t* v, int n) {
  const size_t n16 = static_cast<size_t>(n) & ~size_t{15};
  const uint8_t* p = src;
  uint8_t *pu = u, *pv = v;
  for (uint8_t *py = y, *const end = y + n16; py != end;
       py += 16, p += 16 * Src::kBytes, pu += 8 * kCStep, pv += 8 * kCStep) {
    uint8x16_t r, g, b;
    RgbChannels<Src>(p, &r, &g, &b);
    Luma16<Src, M>(r, g, b, py);
    uint8x8_t cu, cv;
    ChromaOf<M>(EvenOf(r), EvenOf(g), EvenOf(b), &cu, &cv);
    if constexpr (kCStep == 1) {
      vst1_u8(pu, cu);
      vst1_u8(pv, cv);
    } else if constexpr (kVFirst) {
      vst2_u8(pv, (uint8x8x2_t{{cv, cu}}));
    } else {
      vst2_u8(pu, (uint8x8x2_t{{cu, cv}}));
    }
  }
  scalar::RgbToLumaRow<Src, M>(src, y, static_cast<int>(n16), n);
  scalar::RgbToChromaRow<Src, M, 2>(src, u, v, kCStep, static_cast<int>(n16 / 2), n / 2);
}
template <class Src, class M, int kCStep>
void LumaChromaChannels(const uint8_t* src, uint8_t* y, uint8_t* u, uint8_t* v, int n) {
  if (kCStep == 2 && v < u) {
    LumaChromaChannelsIn<Src, M, kCStep, true>(src, y, u, v, n);
  } else {
    LumaChromaChannelsIn<Src, M, kCStep, false>(src, y, u, v, n);
  }
}
#define KELO_RGB_CHANNELS 1
#else
#define KELO_RGB_CHANNELS 0
#endif  // HWY_TARGET == HWY_NEON

template <class Src, class M>
void LumaVec(const uint8_t* src, uint8_t* y, int n) {
#if KELO_X86_RAW
  if constexpr (Src::kBytes == 4) {
    LumaPairs<Src, M>(src, y, n);
    return;
  }
#endif
#if KELO_RGB_CHANNELS
  if constexpr (Src::kBytes >= 3) {
    LumaChannels<Src, M>(src, y, n);
    return;
  }
#endif
  LumaLanes<Src, M>(src, y, n);
}
template <class Src, class M, int kSub, int kCStep>
void LumaChromaVec(const uint8_t* src, uint8_t* y, uint8_t* u, uint8_t* v, int n) {
#if KELO_X86_RAW
  if constexpr (Src::kBytes == 4 && kSub == 2) {
    LumaChromaPairs<Src, M, kCStep>(src, y, u, v, n);
    return;
  }
#endif
#if KELO_RGB_CHANNELS
  if constexpr (Src::kBytes >= 3 && kSub == 2) {
    LumaChromaChannels<Src, M, kCStep>(src, y, u, v, n);
    return;
  }
#endif
  LumaChromaLanes<Src, M, kSub, kCStep>(src, y, u, v, n);
}
template <class Src, class M, int kSub, int kCStep>
void ChromaVec(const uint8_t* src, uint8_t* u, uint8_t* v, int n) {
#if KELO_RGB_CHANNELS
  if constexpr (Src::kBytes >= 3) {
    ChromaChannels<Src, M, kSub, kCStep>(src, u, v, n);
    return;
  }
#endif
  ChromaLanes<Src, M, kSub, kCStep>(src, u, v, n);
}
#else   // HWY_SCALAR: one lane is no vector; use the scalar rows.
template <class Src, class M, int kSub, int kCStep>
void LumaChromaVec(const uint8_t* src, uint8_t* y, uint8_t* u, uint8_t* v, int n) {
  scalar::RgbToLumaRow<Src, M>(src, y, 0, n);
  scalar::RgbToChromaRow<Src, M, kSub>(src, u, v, kCStep, 0, n / 2);
}
template <class Src, class M>
void LumaVec(const uint8_t* src, uint8_t* y, int n) {
  scalar::RgbToLumaRow<Src, M>(src, y, 0, n);
}
template <class Src, class M, int kSub, int kCStep>
void ChromaVec(const uint8_t* src, uint8_t* u, uint8_t* v, int n) {
  scalar::RgbToChromaRow<Src, M, kSub>(src, u, v, kCStep, 0, n);
}
#endif  // HWY_TARGET != HWY_SCALAR

LumaRowFn LumaTable(int id) {
#define KELO_PTR(S, M) &LumaVec<S, M>,
  static constexpr LumaRowFn kTable[] = {KELO_RGB_TO_LUMA_ROWS(KELO_PTR)};
#undef KELO_PTR
  return kTable[id];
}
ChromaRowFn ChromaTable(int id) {
#define KELO_PTR(S, M, SUB, CSTEP) &ChromaVec<S, M, SUB, CSTEP>,
  static constexpr ChromaRowFn kTable[] = {KELO_RGB_TO_CHROMA_ROWS(KELO_PTR)};
#undef KELO_PTR
  return kTable[id];
}
LumaChromaRowFn LumaChromaTable(int id) {
#define KELO_PTR(S, M, SUB, CSTEP) (SUB == 2 ? &LumaChromaVec<S, M, SUB, CSTEP> : nullptr),
  static constexpr LumaChromaRowFn kTable[] = {KELO_RGB_TO_CHROMA_ROWS(KELO_PTR)};
#undef KELO_PTR
  return kTable[id];
}

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_HAVE_HWY

#if !KELO_HAVE_HWY || HWY_ONCE
#include "common/internal/api.h"
#include "kimgp_csc.h"

namespace kelo {
namespace csc {
namespace scalar {

template <class Src, class M>
void Luma(const uint8_t* src, uint8_t* y, int n) {
  RgbToLumaRow<Src, M>(src, y, 0, n);
}
template <class Src, class M, int kSub, int kCStep>
void Chroma(const uint8_t* src, uint8_t* u, uint8_t* v, int n) {
  RgbToChromaRow<Src, M, kSub>(src, u, v, kCStep, 0, n);
}
LumaRowFn LumaTable(int id) {
#define KELO_PTR(S, M) &Luma<S, M>,
  static constexpr LumaRowFn kTable[] = {KELO_RGB_TO_LUMA_ROWS(KELO_PTR)};
#undef KELO_PTR
  return kTable[id];
}
ChromaRowFn ChromaTable(int id) {
#define KELO_PTR(S, M, SUB, CSTEP) &Chroma<S, M, SUB, CSTEP>,
  static constexpr ChromaRowFn kTable[] = {KELO_RGB_TO_CHROMA_ROWS(KELO_PTR)};
#undef KELO_PTR
  return kTable[id];
}

}  // namespace scalar

KELO_VEC_EXPORT(LumaTable);
KELO_VEC_EXPORT(ChromaTable);
#if KELO_HAVE_HWY
KELO_VEC_EXPORT(LumaChromaTable);
#endif

LumaRowFn LumaRowFor(LumaRowId id) { return KELO_VEC_CALL(LumaTable, scalar::LumaTable)(id); }
LumaRowFn ScalarLumaRowFor(LumaRowId id) { return scalar::LumaTable(id); }
ChromaRowFn ChromaRowFor(ChromaRowId id) {
  return KELO_VEC_CALL(ChromaTable, scalar::ChromaTable)(id);
}
ChromaRowFn ScalarChromaRowFor(ChromaRowId id) { return scalar::ChromaTable(id); }
// The scalar-only build keeps the two-pass order.
LumaChromaRowFn LumaChromaRowFor(ChromaRowId id) {
#if KELO_HAVE_HWY
  return KELO_VEC_CALL(LumaChromaTable, nullptr)(id);
#else
  (void)id;
  return nullptr;
#endif
}

}  // namespace csc
}  // namespace kelo

// kimgp_csc_<name>: luma rows of (S, M), chroma rows of (S, M, SUB, CSTEP)
// placed as OUT says.
#define KELO_RGB_TO_YUV_KERNEL(name, S, M, OUT, SUB, CSTEP)                         \
  KELO_EXPORT void kimgp_csc_##name(KELO_CSC_PARAMS) {                              \
    using namespace kelo::csc;                                                      \
    (void)ss;                                                                       \
    RgbToYuvImage<ChromaOut::OUT>(                                                  \
        sp, sw, sh, ss, ds, dp,                                                     \
        BestRows(kLuma_##S##_##M, kChroma_##S##_##M##_##SUB##_##CSTEP));           \
  }

#define KELO_EACH_YUV(X, src, S)                                                \
  X(src##_to_yuv420, S, RgbBt601Limited, kYuv420, 2, 1)                         \
  X(src##_to_yv12, S, RgbBt601Limited, kYv12, 2, 1)                             \
  X(src##_to_nv12, S, RgbBt601Limited, kNv12, 2, 2)                             \
  X(src##_to_nv21, S, RgbBt601Limited, kNv21, 2, 2)

KELO_EACH_YUV(KELO_RGB_TO_YUV_KERNEL, rgb565, Rgb565)
KELO_EACH_YUV(KELO_RGB_TO_YUV_KERNEL, bgr565, Bgr565)
KELO_EACH_YUV(KELO_RGB_TO_YUV_KERNEL, rgb888, Rgb888)
KELO_EACH_YUV(KELO_RGB_TO_YUV_KERNEL, bgr888, Bgr888)
KELO_EACH_YUV(KELO_RGB_TO_YUV_KERNEL, rgba8888, Rgba8888)
KELO_EACH_YUV(KELO_RGB_TO_YUV_KERNEL, bgra8888, Bgra8888)
KELO_EACH_YUV(KELO_RGB_TO_YUV_KERNEL, argb8888, Argb8888)
KELO_EACH_YUV(KELO_RGB_TO_YUV_KERNEL, abgr8888, Abgr8888)
KELO_RGB_TO_YUV_KERNEL(rgba8888_to_yuv444, Rgba8888, RgbBt601Limited, kYuv444, 1, 1)
KELO_RGB_TO_YUV_KERNEL(argb8888_to_yuv444, Argb8888, RgbBt601Limited, kYuv444, 1, 1)

KELO_RGB_TO_YUV_KERNEL(bt601_fr_rgba8888_to_yuv420, Rgba8888, RgbBt601Full, kYuv420, 2, 1)
KELO_RGB_TO_YUV_KERNEL(bt601_fr_rgba8888_to_yv12, Rgba8888, RgbBt601Full, kYv12, 2, 1)
KELO_RGB_TO_YUV_KERNEL(bt601_fr_rgba8888_to_nv12, Rgba8888, RgbBt601Full, kNv12, 2, 2)
KELO_RGB_TO_YUV_KERNEL(bt601_fr_rgba8888_to_nv21, Rgba8888, RgbBt601Full, kNv21, 2, 2)
KELO_RGB_TO_YUV_KERNEL(bt709_rgba8888_to_nv12, Rgba8888, RgbBt709Limited, kNv12, 2, 2)
KELO_RGB_TO_YUV_KERNEL(bt709_rgba8888_to_nv21, Rgba8888, RgbBt709Limited, kNv21, 2, 2)

#endif  // !KELO_HAVE_HWY || HWY_ONCE
