// Vector paths of the layout row operations; tails go to the scalar rows.
#include "common/internal/simd.h"
#include "imgp/csc/layout_rows.h"

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/csc/layout_rows.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "imgp/csc/csc_vec-inl.h"
#include "imgp/csc/layout_rows.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

// Runs body(i) for i = 0, step, 2 step, ... while i + step <= n and returns
// where the vector part stopped.
template <class Body>
HWY_INLINE size_t Blocks(size_t n, size_t step, Body body) {
  size_t i = 0;
  for (; i + step <= n; i += step) body(i);
  return i;
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
#else
// Two vectors of each input per step while they last, then one.
void InterleaveVec(const uint8_t* a, const uint8_t* b, uint8_t* d, size_t n) {
  const D8 d8;
  const size_t L = hn::Lanes(d8);
  auto one = [&](size_t k) {
    hn::StoreInterleaved2(hn::LoadU(d8, a + k), hn::LoadU(d8, b + k), d8, d + 2 * k);
  };
  size_t i = Blocks(n, 2 * L, [&](size_t k) {
    one(k);
    one(k + L);
  });
  if (i + L <= n) one(i), i += L;
  csc::scalar::Interleave(a, b, d, i, n);
}

void DeinterleaveVec(const uint8_t* s, uint8_t* a, uint8_t* b, size_t n) {
  const D8 d8;
  const size_t L = hn::Lanes(d8);
  auto one = [&](size_t k) {
    V8 x, y;
    hn::LoadInterleaved2(d8, s + 2 * k, x, y);
    hn::StoreU(x, d8, a + k);
    hn::StoreU(y, d8, b + k);
  };
  size_t i = Blocks(n, 2 * L, [&](size_t k) {
    one(k);
    one(k + L);
  });
  if (i + L <= n) one(i), i += L;
  csc::scalar::Deinterleave(s, a, b, i, n);
}
#endif  // HWY_ARCH_X86

void EvenVec(const uint8_t* s, uint8_t* d, size_t n) {
  const D8 d8;
  const size_t i = Blocks(n, hn::Lanes(d8), [&](size_t k) {
    V8 x, y;
    hn::LoadInterleaved2(d8, s + 2 * k, x, y);
    hn::StoreU(x, d8, d + k);
  });
  csc::scalar::Even(s, d, i, n);
}

void SwapPairsVec(uint8_t* p, size_t n) {
  const D8 d8;
  const DU du;
  const size_t i = Blocks(n, hn::Lanes(du), [&](size_t k) {
    const VU v = hn::BitCast(du, hn::LoadU(d8, p + 2 * k));
    hn::StoreU(hn::BitCast(d8, hn::Or(hn::ShiftLeft<8>(v), hn::ShiftRight<8>(v))), d8, p + 2 * k);
  });
  csc::scalar::SwapPairs(p, i, n);
}

void Narrow16Vec(const uint8_t* s, uint8_t* d, size_t n) {
  const D8 d8;
  const DU du;
  const size_t L = hn::Lanes(d8);
  const size_t i = Blocks(n, L, [&](size_t k) {
    const VU mask = hn::Set(du, 0xFF);
    const VU lo = hn::And(hn::ShiftRight<2>(hn::BitCast(du, hn::LoadU(d8, s + 2 * k))), mask);
    const VU hi = hn::And(hn::ShiftRight<2>(hn::BitCast(du, hn::LoadU(d8, s + 2 * k + L))), mask);
    hn::StoreU(NarrowToBytes(lo, hi), d8, d + k);
  });
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
void SwapPairsVec(uint8_t* p, size_t n) { csc::scalar::SwapPairs(p, 0, n); }
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
inline void SwapPairsVec(uint8_t* p, size_t n) { SwapPairs(p, 0, n); }
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
void SwapPairs(uint8_t* p, size_t n) { KELO_VEC_CALL(SwapPairsVec, scalar::SwapPairsVec)(p, n); }
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
