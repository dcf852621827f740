// RGB to YUV kernels: vector luma and chroma rows per source order, the
// scalar rows for tails, and the exported names from one list.
#include "common/internal/simd.h"
#include "imgp/csc/rgb_to_yuv.h"

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/csc/rgb_to_yuv.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "imgp/csc/csc_vec-inl.h"
#include "imgp/csc/rgb_to_yuv.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
using namespace csc;  // NOLINT: layout traits and matrices

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
void LumaVec(const uint8_t* src, uint8_t* y, int n) {
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
void ChromaVec(const uint8_t* src, uint8_t* u, uint8_t* v, int n) {
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
void LumaChromaVec(const uint8_t* src, uint8_t* y, uint8_t* u, uint8_t* v, int n) {
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

#define KELO_CSC_PARAMS                                                         \
  uint8_t **sp, const int32_t *sw, const int32_t *sh, int32_t *ss,             \
      const int32_t *ds, uint8_t **dp

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
