// Vector paths of the layout row operations; tails go to the scalar rows.
#include "common/internal/simd.h"
#include "imgp/csc/layout_rows.h"

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/csc/layout_rows.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "common/internal/neon_raw-inl.h"
#include "imgp/csc/csc_vec-inl.h"
#include "imgp/csc/layout_rows.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

// Runs body(i) for i = i0, i0 + step, ... while i + step <= n and returns
// where the vector part stopped.
template <class Body>
HWY_INLINE size_t Blocks(size_t i0, size_t n, size_t step, Body body) {
  size_t i = i0;
  for (; i + step <= n; i += step) body(i);
  return i;
}
template <class Body>
HWY_INLINE size_t Blocks(size_t n, size_t step, Body body) {
  return Blocks(0, n, step, body);
}
// From i0, one(k) for two blocks of L per step while they last, then one
// block; returns where the vector part stopped.
template <class One>
HWY_INLINE size_t TwoThenOne(size_t i0, size_t n, size_t L, One one) {
  size_t i = Blocks(i0, n, 2 * L, [&](size_t k) {
    one(k);
    one(k + L);
  });
  if (i + L <= n) one(i), i += L;
  return i;
}

// Stores chroma c at p, or with kAverage (stored + c) >> 1: the rounded
// average less the bit the rounding added.
template <bool kAverage, class D>
HWY_INLINE void StoreChroma(D d, hn::Vec<D> c, uint8_t* p) {
  if (kAverage) {
    const auto old = hn::LoadU(d, p);
    c = hn::Sub(hn::AverageRound(old, c), hn::And(hn::Xor(old, c), hn::Set(d, 1)));
  }
  hn::StoreU(c, d, p);
}

#if HWY_ARCH_X86
// x86 splits and merges 16 bytes at a time: byte shuffles and 64-bit or byte
// interleaves within a block, with no lane-crossing permutes, which cost more
// on x86 cores than the extra 16-byte loads and stores.
using D16 = hn::Full128<uint8_t>;
using D64 = hn::Full128<uint64_t>;

void InterleaveVec(const uint8_t* a, const uint8_t* b, uint8_t* d, size_t n) {
  const D16 d8;
  const size_t i = Blocks(n, 16, [&](size_t k) {
    const auto x = hn::LoadU(d8, a + k);
    const auto y = hn::LoadU(d8, b + k);
    hn::StoreU(hn::InterleaveLower(d8, x, y), d8, d + 2 * k);
    hn::StoreU(hn::InterleaveUpper(d8, x, y), d8, d + 2 * k + 16);
  });
  csc::scalar::Interleave(a, b, d, i, n);
}

void DeinterleaveVec(const uint8_t* s, uint8_t* a, uint8_t* b, size_t n) {
  const D16 d8;
  const D64 d64;
  // Each 16 bytes to their 8 even bytes, then their 8 odd bytes.
  alignas(16) static constexpr uint8_t kSplit[16] = {0, 2, 4, 6, 8, 10, 12, 14,
                                                     1, 3, 5, 7, 9, 11, 13, 15};
  const auto split = hn::Load(d8, kSplit);
  const size_t i = Blocks(n, 16, [&](size_t k) {
    const auto x = hn::BitCast(d64, hn::TableLookupBytes(hn::LoadU(d8, s + 2 * k), split));
    const auto y = hn::BitCast(d64, hn::TableLookupBytes(hn::LoadU(d8, s + 2 * k + 16), split));
    hn::StoreU(hn::BitCast(d8, hn::InterleaveLower(d64, x, y)), d8, a + k);
    hn::StoreU(hn::BitCast(d8, hn::InterleaveUpper(d64, x, y)), d8, b + k);
  });
  csc::scalar::Deinterleave(s, a, b, i, n);
}

// YUYV rows, 16 pixel pairs per step: even bytes of 64 source bytes are the
// luma, odd bytes the chroma pairs, whose even bytes are U and odd bytes V.
#if HWY_TARGET <= HWY_AVX2
// 256 bits: the luma by one masked pack and a 64-bit permute; U and V by one
// byte shuffle of each source vector (four U then four V bytes, in the lower
// 64 bits of each block for the first vector, the upper for the second), a
// 64-bit blend and one 32-bit permute that leaves U in the lower half and V
// in the upper.
template <bool kAverage>
size_t YuyvRow(const uint8_t* s, uint8_t* y, uint8_t* u, uint8_t* v, size_t n) {
  const hn::CappedTag<uint8_t, 32> d8;
  const hn::Repartition<uint64_t, decltype(d8)> d64;
  const hn::Repartition<uint32_t, decltype(d8)> d32;
  const hn::Half<decltype(d8)> dh;
  constexpr uint8_t Z = 0x80;
  alignas(32) static constexpr uint8_t kFirst[32] = {
      1, 5, 9, 13, 3, 7, 11, 15, Z, Z, Z, Z, Z, Z, Z, Z,
      1, 5, 9, 13, 3, 7, 11, 15, Z, Z, Z, Z, Z, Z, Z, Z};
  alignas(32) static constexpr uint8_t kSecond[32] = {
      Z, Z, Z, Z, Z, Z, Z, Z, 1, 5, 9, 13, 3, 7, 11, 15,
      Z, Z, Z, Z, Z, Z, Z, Z, 1, 5, 9, 13, 3, 7, 11, 15};
  // Units of four U or V bytes: U of pairs 0-3, V 0-3, U 8-11, V 8-11 in
  // block 0, the same for pairs 4-7 and 12-15 in block 1.
  alignas(32) static constexpr uint32_t kUnits[8] = {0, 4, 2, 6, 1, 5, 3, 7};
  const auto first = hn::Load(d8, kFirst), second = hn::Load(d8, kSecond);
  const auto units = hn::SetTableIndices(d32, kUnits);
  size_t k = 0;
  for (; k + 16 <= n; k += 16) {
    const uint8_t* p = s + 4 * k;
    const auto a0 = hn::LoadU(d8, p), a1 = hn::LoadU(d8, p + 32);
    hn::StoreU(hn::ConcatEven(d8, a1, a0), d8, y + 2 * k);
    const auto c = hn::OddEven(hn::BitCast(d64, hn::TableLookupBytesOr0(a1, second)),
                               hn::BitCast(d64, hn::TableLookupBytesOr0(a0, first)));
    const auto uv = hn::BitCast(d8, hn::TableLookupLanes(hn::BitCast(d32, c), units));
    StoreChroma<kAverage>(dh, hn::LowerHalf(dh, uv), u + k);
    StoreChroma<kAverage>(dh, hn::UpperHalf(dh, uv), v + k);
  }
  return k;
}
#else
template <bool kAverage>
size_t YuyvRow(const uint8_t* s, uint8_t* y, uint8_t* u, uint8_t* v, size_t n) {
  const D16 d8;
  size_t k = 0;
  for (; k + 16 <= n; k += 16) {
    const uint8_t* p = s + 4 * k;
    const auto a0 = hn::LoadU(d8, p), a1 = hn::LoadU(d8, p + 16);
    const auto a2 = hn::LoadU(d8, p + 32), a3 = hn::LoadU(d8, p + 48);
    hn::StoreU(hn::ConcatEven(d8, a1, a0), d8, y + 2 * k);
    hn::StoreU(hn::ConcatEven(d8, a3, a2), d8, y + 2 * k + 16);
    const auto c01 = hn::ConcatOdd(d8, a1, a0), c23 = hn::ConcatOdd(d8, a3, a2);
    StoreChroma<kAverage>(d8, hn::ConcatEven(d8, c23, c01), u + k);
    StoreChroma<kAverage>(d8, hn::ConcatOdd(d8, c23, c01), v + k);
  }
  return k;
}
#endif  // HWY_TARGET <= HWY_AVX2
#else
// The loops below step pointers rather than an index, which lets 32-bit ARM
// use post-incremented addressing, and handle two vectors of each input per
// step while they last, then one.
void InterleaveVec(const uint8_t* a, const uint8_t* b, uint8_t* d, size_t n) {
  const D8 d8;
  const size_t L = hn::Lanes(d8);
#if KELO_NEON_RAW
  if (n >= 32) {
    RawMerge32(a, b, d, n / 32);
    a += n & ~size_t{31}, b += n & ~size_t{31}, d += 2 * (n & ~size_t{31}), n &= 31;
  }
#endif
  auto one = [&] {
    hn::StoreInterleaved2(hn::LoadU(d8, a), hn::LoadU(d8, b), d8, d);
    a += L, b += L, d += 2 * L;
  };
  for (; n >= 2 * L; n -= 2 * L) one(), one();
  if (n >= L) one(), n -= L;
  csc::scalar::Interleave(a, b, d, 0, n);
}

void DeinterleaveVec(const uint8_t* s, uint8_t* a, uint8_t* b, size_t n) {
  const D8 d8;
  const size_t L = hn::Lanes(d8);
#if KELO_NEON_RAW
  if (n >= 32) {
    RawSplit32(s, a, b, n / 32);
    s += 2 * (n & ~size_t{31}), a += n & ~size_t{31}, b += n & ~size_t{31}, n &= 31;
  }
#endif
  auto one = [&] {
    V8 x, y;
    hn::LoadInterleaved2(d8, s, x, y);
    hn::StoreU(x, d8, a);
    hn::StoreU(y, d8, b);
    s += 2 * L, a += L, b += L;
  };
  for (; n >= 2 * L; n -= 2 * L) one(), one();
  if (n >= L) one(), n -= L;
  csc::scalar::Deinterleave(s, a, b, 0, n);
}

// YUYV rows: one four-way de-interleave gives luma evens, U, luma odds, V.
template <bool kAverage>
size_t YuyvRow(const uint8_t* s, uint8_t* y, uint8_t* u, uint8_t* v, size_t n) {
  const D8 d8;
  const size_t L = hn::Lanes(d8);
  size_t k = 0;
#if KELO_NEON_RAW
  if (n >= 16) {
    RawYuyv16<kAverage>(s, y, u, v, n / 16);
    k = n & ~size_t{15};
    s += 4 * k, y += 2 * k, u += k, v += k;
  }
#endif
  for (; k + L <= n; k += L) {
    V8 y0, cu, y1, cv;
    hn::LoadInterleaved4(d8, s, y0, cu, y1, cv);
    hn::StoreInterleaved2(y0, y1, d8, y);
    StoreChroma<kAverage>(d8, cu, u);
    StoreChroma<kAverage>(d8, cv, v);
    s += 4 * L, y += 2 * L, u += L, v += L;
  }
  return k;
}
#endif  // HWY_ARCH_X86

void YuyvToPlanarVec(const uint8_t* s, uint8_t* y, uint8_t* u, uint8_t* v, size_t n,
                     bool average) {
  const size_t k = average ? YuyvRow<true>(s, y, u, v, n) : YuyvRow<false>(s, y, u, v, n);
  if (k < n) csc::scalar::YuyvToPlanar(s, y, u, v, k, n, average);
}

void EvenVec(const uint8_t* s, uint8_t* d, size_t n) {
  const D8 d8;
  const size_t i = Blocks(n, hn::Lanes(d8), [&](size_t k) {
    V8 x, y;
    hn::LoadInterleaved2(d8, s + 2 * k, x, y);
    hn::StoreU(x, d8, d + k);
  });
  csc::scalar::Even(s, d, i, n);
}

// Each vector is loaded before it is stored, so s == d works.
void SwapPairsVec(const uint8_t* s, uint8_t* d, size_t n) {
#if HWY_ARCH_X86
  // One byte shuffle (pshufb) rather than two shifts and an or, 16 bytes at
  // a time: wider vectors run this row more slowly on x86 cores.
  const D16 d8;
  const size_t L = hn::Lanes(d8) / 2;
  alignas(16) static constexpr uint8_t kSwap[16] = {1, 0, 3, 2, 5, 4, 7, 6,
                                                    9, 8, 11, 10, 13, 12, 15, 14};
  const auto order = hn::Load(d8, kSwap);
  auto swap = [&](size_t k) { return hn::TableLookupBytes(hn::LoadU(d8, s + 2 * k), order); };
#else
  const D8 d8;
  const DU du;
  const size_t L = hn::Lanes(du);
  auto swap = [&](size_t k) {
    const VU v = hn::BitCast(du, hn::LoadU(d8, s + 2 * k));
    return hn::BitCast(d8, hn::Or(hn::ShiftLeft<8>(v), hn::ShiftRight<8>(v)));
  };
#endif
  size_t i = 0;
#if KELO_NEON_RAW
  if (n >= 32) RawSwap32(s, d, n / 32), i = n & ~size_t{31};
  if (i == n) return;
#endif
  i = TwoThenOne(i, n, L, [&](size_t k) { hn::StoreU(swap(k), d8, d + 2 * k); });
  csc::scalar::SwapPairs(s, d, i, n);
}

// The low bytes of the shifted samples are the even bytes of their vectors.
// x86 keeps to 128 bits: in this memory-bound row 16-byte vectors measured
// faster than 32-byte ones on AVX2 (and 64-byte ones were slower still).
void Narrow16Vec(const uint8_t* s, uint8_t* d, size_t n) {
#if HWY_ARCH_X86
  const hn::CappedTag<uint8_t, 16> d8;
#else
  const D8 d8;
#endif
  const hn::Repartition<uint16_t, decltype(d8)> du;
  using VU = hn::Vec<decltype(du)>;
  const size_t L = hn::Lanes(d8);
  auto narrow = [&](size_t k) {
    const VU lo = hn::ShiftRight<2>(hn::BitCast(du, hn::LoadU(d8, s + 2 * k)));
    const VU hi = hn::ShiftRight<2>(hn::BitCast(du, hn::LoadU(d8, s + 2 * k + L)));
    return hn::ConcatEven(d8, hn::BitCast(d8, hi), hn::BitCast(d8, lo));
  };
  size_t i = 0;
#if KELO_NEON_RAW
  if (n >= 32) RawNarrow32(s, d, n / 32), i = n & ~size_t{31};
  if (i == n) return;
#endif
#if HWY_ARCH_X86
  // Stores on aligned addresses between a first and a last unaligned vector,
  // which write some bytes twice (unless the rows overlap: then in order).
  const auto sa = reinterpret_cast<uintptr_t>(s), da = reinterpret_cast<uintptr_t>(d);
  const bool apart = n >= 2 * L && (da + n <= sa || sa + 2 * n <= da);
  if (apart) {
    hn::StoreU(narrow(0), d8, d);
    i = (0 - da) & (L - 1);
  }
#endif
  i = TwoThenOne(i, n, L, [&](size_t k) { hn::StoreU(narrow(k), d8, d + k); });
#if HWY_ARCH_X86
  if (apart && i < n) hn::StoreU(narrow(n - L), d8, d + n - L), i = n;
#endif
  csc::scalar::Narrow16(s, d, i, n);
}

void GreyTo565Vec(const uint8_t* s, uint8_t* d, size_t n) {
  const D8 d8;
  const size_t i = Blocks(n, hn::Lanes(d8), [&](size_t k) {
    const V8 g = hn::LoadU(d8, s + k);
    Store565(g, g, g, d + 2 * k);
  });
  csc::scalar::GreyTo565(s, d, i, n);
}

void GreyTo888Vec(const uint8_t* s, uint8_t* d, size_t n) {
  const D8 d8;
  const size_t i = Blocks(n, hn::Lanes(d8), [&](size_t k) {
    const V8 g = hn::LoadU(d8, s + k);
    hn::StoreInterleaved3(g, g, g, d8, d + 3 * k);
  });
  csc::scalar::GreyTo888(s, d, i, n);
}

void Rgb565ToRgbaVec(const uint8_t* s, uint8_t* d, size_t n) {
  const D8 d8;
  const DU du;
  const size_t L = hn::Lanes(d8);
  const size_t i = Blocks(n, L, [&](size_t k) {
    VU r[2], g[2], b[2];
    for (int h = 0; h < 2; ++h) {
      const VU p = hn::BitCast(du, hn::LoadU(d8, s + 2 * k + h * L));
      r[h] = hn::And(hn::ShiftRight<8>(p), hn::Set(du, 0xF8));
      g[h] = hn::ShiftRight<3>(hn::And(p, hn::Set(du, 0x7E0)));
      b[h] = hn::And(hn::ShiftLeft<3>(p), hn::Set(du, 0xF8));
    }
    hn::StoreInterleaved4(NarrowToBytes(r[0], r[1]), NarrowToBytes(g[0], g[1]), NarrowToBytes(b[0], b[1]),
                          hn::Set(d8, 255), d8, d + 4 * k);
  });
  csc::scalar::Rgb565ToRgba(s, d, i, n);
}

void RgbaTo565Vec(const uint8_t* s, uint8_t* d, size_t n) {
  const D8 d8;
  const size_t i = Blocks(n, hn::Lanes(d8), [&](size_t k) {
    V8 r, g, b, a;
    hn::LoadInterleaved4(d8, s + 4 * k, r, g, b, a);
    Store565(r, g, b, d + 2 * k);
  });
  csc::scalar::RgbTo565<4>(s, d, i, n);
}

void Rgb888To565Vec(const uint8_t* s, uint8_t* d, size_t n) {
  const D8 d8;
  const size_t i = Blocks(n, hn::Lanes(d8), [&](size_t k) {
    V8 r, g, b;
    hn::LoadInterleaved3(d8, s + 3 * k, r, g, b);
    Store565(r, g, b, d + 2 * k);
  });
  csc::scalar::RgbTo565<3>(s, d, i, n);
}
#else   // HWY_SCALAR: the scalar rows.
void InterleaveVec(const uint8_t* a, const uint8_t* b, uint8_t* d, size_t n) {
  csc::scalar::Interleave(a, b, d, 0, n);
}
void DeinterleaveVec(const uint8_t* s, uint8_t* a, uint8_t* b, size_t n) {
  csc::scalar::Deinterleave(s, a, b, 0, n);
}
void EvenVec(const uint8_t* s, uint8_t* d, size_t n) { csc::scalar::Even(s, d, 0, n); }
void SwapPairsVec(const uint8_t* s, uint8_t* d, size_t n) { csc::scalar::SwapPairs(s, d, 0, n); }
void YuyvToPlanarVec(const uint8_t* s, uint8_t* y, uint8_t* u, uint8_t* v, size_t n,
                     bool average) {
  csc::scalar::YuyvToPlanar(s, y, u, v, 0, n, average);
}
void Narrow16Vec(const uint8_t* s, uint8_t* d, size_t n) { csc::scalar::Narrow16(s, d, 0, n); }
void GreyTo565Vec(const uint8_t* s, uint8_t* d, size_t n) { csc::scalar::GreyTo565(s, d, 0, n); }
void GreyTo888Vec(const uint8_t* s, uint8_t* d, size_t n) { csc::scalar::GreyTo888(s, d, 0, n); }
void Rgb565ToRgbaVec(const uint8_t* s, uint8_t* d, size_t n) {
  csc::scalar::Rgb565ToRgba(s, d, 0, n);
}
void RgbaTo565Vec(const uint8_t* s, uint8_t* d, size_t n) { csc::scalar::RgbTo565<4>(s, d, 0, n); }
void Rgb888To565Vec(const uint8_t* s, uint8_t* d, size_t n) {
  csc::scalar::RgbTo565<3>(s, d, 0, n);
}
#endif  // HWY_TARGET != HWY_SCALAR

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_HAVE_HWY

#if !KELO_HAVE_HWY || HWY_ONCE
namespace kelo {
namespace csc {
namespace scalar {
// The scalar rows over [0, n), as the scalar-only build's paths.
inline void InterleaveVec(const uint8_t* a, const uint8_t* b, uint8_t* d, size_t n) {
  Interleave(a, b, d, 0, n);
}
inline void DeinterleaveVec(const uint8_t* s, uint8_t* a, uint8_t* b, size_t n) {
  Deinterleave(s, a, b, 0, n);
}
inline void EvenVec(const uint8_t* s, uint8_t* d, size_t n) { Even(s, d, 0, n); }
inline void SwapPairsVec(const uint8_t* s, uint8_t* d, size_t n) { SwapPairs(s, d, 0, n); }
inline void YuyvToPlanarVec(const uint8_t* s, uint8_t* y, uint8_t* u, uint8_t* v, size_t n,
                            bool average) {
  YuyvToPlanar(s, y, u, v, 0, n, average);
}
inline void Narrow16Vec(const uint8_t* s, uint8_t* d, size_t n) { Narrow16(s, d, 0, n); }
inline void GreyTo565Vec(const uint8_t* s, uint8_t* d, size_t n) { GreyTo565(s, d, 0, n); }
inline void GreyTo888Vec(const uint8_t* s, uint8_t* d, size_t n) { GreyTo888(s, d, 0, n); }
inline void Rgb565ToRgbaVec(const uint8_t* s, uint8_t* d, size_t n) { Rgb565ToRgba(s, d, 0, n); }
inline void RgbaTo565Vec(const uint8_t* s, uint8_t* d, size_t n) { RgbTo565<4>(s, d, 0, n); }
inline void Rgb888To565Vec(const uint8_t* s, uint8_t* d, size_t n) { RgbTo565<3>(s, d, 0, n); }
}  // namespace scalar
}  // namespace csc

KELO_VEC_EXPORT(InterleaveVec);
KELO_VEC_EXPORT(DeinterleaveVec);
KELO_VEC_EXPORT(EvenVec);
KELO_VEC_EXPORT(SwapPairsVec);
KELO_VEC_EXPORT(YuyvToPlanarVec);
KELO_VEC_EXPORT(Narrow16Vec);
KELO_VEC_EXPORT(GreyTo565Vec);
KELO_VEC_EXPORT(GreyTo888Vec);
KELO_VEC_EXPORT(Rgb565ToRgbaVec);
KELO_VEC_EXPORT(RgbaTo565Vec);
KELO_VEC_EXPORT(Rgb888To565Vec);

namespace csc {
void Interleave(const uint8_t* a, const uint8_t* b, uint8_t* d, size_t n) {
  KELO_VEC_CALL(InterleaveVec, scalar::InterleaveVec)(a, b, d, n);
}
void Deinterleave(const uint8_t* s, uint8_t* a, uint8_t* b, size_t n) {
  KELO_VEC_CALL(DeinterleaveVec, scalar::DeinterleaveVec)(s, a, b, n);
}
void Even(const uint8_t* s, uint8_t* d, size_t n) { KELO_VEC_CALL(EvenVec, scalar::EvenVec)(s, d, n); }
void SwapPairs(const uint8_t* s, uint8_t* d, size_t n) {
  KELO_VEC_CALL(SwapPairsVec, scalar::SwapPairsVec)(s, d, n);
}
void YuyvToPlanar(const uint8_t* s, uint8_t* y, uint8_t* u, uint8_t* v, size_t n, bool average) {
  KELO_VEC_CALL(YuyvToPlanarVec, scalar::YuyvToPlanarVec)(s, y, u, v, n, average);
}
void Narrow16(const uint8_t* s, uint8_t* d, size_t n) {
  KELO_VEC_CALL(Narrow16Vec, scalar::Narrow16Vec)(s, d, n);
}
void GreyTo565(const uint8_t* s, uint8_t* d, size_t n) {
  KELO_VEC_CALL(GreyTo565Vec, scalar::GreyTo565Vec)(s, d, n);
}
void GreyTo888(const uint8_t* s, uint8_t* d, size_t n) {
  KELO_VEC_CALL(GreyTo888Vec, scalar::GreyTo888Vec)(s, d, n);
}
void Rgb565ToRgba(const uint8_t* s, uint8_t* d, size_t n) {
  KELO_VEC_CALL(Rgb565ToRgbaVec, scalar::Rgb565ToRgbaVec)(s, d, n);
}
void RgbaTo565(const uint8_t* s, uint8_t* d, size_t n) {
  KELO_VEC_CALL(RgbaTo565Vec, scalar::RgbaTo565Vec)(s, d, n);
}
void Rgb888To565(const uint8_t* s, uint8_t* d, size_t n) {
  KELO_VEC_CALL(Rgb888To565Vec, scalar::Rgb888To565Vec)(s, d, n);
}
}  // namespace csc
}  // namespace kelo
#endif  // !KELO_HAVE_HWY || HWY_ONCE
