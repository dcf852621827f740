// YUV to RGB kernels: one vector row per source family over the layout
// traits, the scalar row for tails, and the exported names from one list.
#include <type_traits>

#include "common/internal/simd.h"
#include "imgp/csc/yuv_to_rgb.h"

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/csc/yuv_to_rgb.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "imgp/csc/csc_vec-inl.h"
#include "imgp/csc/yuv_to_rgb.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
using namespace csc;  // NOLINT: layout traits and matrices

#if HWY_TARGET != HWY_SCALAR

// Lanes are widened and narrowed within 128-bit blocks, which costs no
// cross-block shuffles: WidenLo/WidenHi take the lower and upper eight bytes
// of every block, NarrowBlocks packs them back in the same places (so the
// byte order is restored). Chroma of pixel pairs is kept as one 16-bit value
// per pair, in order; DupLo/DupHi repeat each value twice within the blocks,
// which lines it up with WidenLo/WidenHi of the luma on every vector width.
HWY_INLINE VI WidenLo(V8 v) {
  const D8 d8;
  const DI di;
  return hn::BitCast(di, hn::InterleaveLower(d8, v, hn::Zero(d8)));
}
HWY_INLINE VI WidenHi(V8 v) {
  const D8 d8;
  const DI di;
  return hn::BitCast(di, hn::InterleaveUpper(d8, v, hn::Zero(d8)));
}
HWY_INLINE VI DupLo(VI v) { return hn::InterleaveLower(v, v); }
HWY_INLINE VI DupHi(VI v) {
  const DI di;
  return hn::InterleaveUpper(di, v, v);
}
HWY_INLINE V8 NarrowBlocks(VI lo, VI hi) {
#if HWY_TARGET == HWY_AVX2
  return V8{_mm256_packus_epi16(lo.raw, hi.raw)};
#elif HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
  return V8{_mm512_packus_epi16(lo.raw, hi.raw)};
#elif HWY_TARGET == HWY_SSE4 || HWY_TARGET == HWY_SSSE3
  return V8{_mm_packus_epi16(lo.raw, hi.raw)};
#else  // one block per vector: whole-vector order is block order
  const D8 d8;
  const DH8 dh;
  return hn::Combine(d8, hn::DemoteTo(dh, hi), hn::DemoteTo(dh, lo));
#endif
}

// Pairs of bytes a0 b0 a1 b1 ... as 16-bit a and b values, in order.
HWY_INLINE void SplitPairs(V8 ab, VI* a, VI* b) {
  const DI di;
  const DU d16;
  const auto w = hn::BitCast(d16, ab);
  *a = hn::BitCast(di, hn::And(w, hn::Set(d16, 0x00FF)));
  *b = hn::BitCast(di, hn::ShiftRight<8>(w));
}

// Y of pixels [x, x + Lanes) and the U and V of their pixel pairs (Lanes / 2
// values each, in order). Sources with chroma per pixel use LoadYuv444.
template <class Src>
HWY_INLINE void LoadYuv(const YuvRow& row, size_t x, V8* y, VI* u, VI* v) {
  const D8 d8;
  const DH8 dh;
  const DI di;
  const size_t L = hn::Lanes(d8);
  if constexpr (Src::kFamily == YuvFamily::kPlanar) {
    *y = hn::LoadU(d8, row.y + x);
    *u = hn::PromoteTo(di, hn::LoadU(dh, row.u + x / 2));
    *v = hn::PromoteTo(di, hn::LoadU(dh, row.v + x / 2));
  } else if constexpr (Src::kFamily == YuvFamily::kSemi) {
    *y = hn::LoadU(d8, row.y + x);
    VI first, second;
    SplitPairs(hn::LoadU(d8, (Src::kUFirstV ? row.u : row.v) + x), &first, &second);
    *u = Src::kUFirstV ? first : second;
    *v = Src::kUFirstV ? second : first;
  } else {
    const uint8_t* base = Src::kUyvyV ? row.u : row.y;
    const V8 v0 = hn::LoadU(d8, base + 2 * x);
    const V8 v1 = hn::LoadU(d8, base + 2 * x + L);
    if constexpr (Src::kUyvyV) {
      *y = hn::ConcatOdd(d8, v1, v0);
      SplitPairs(hn::ConcatEven(d8, v1, v0), u, v);
    } else {
      *y = hn::ConcatEven(d8, v1, v0);
      SplitPairs(hn::ConcatOdd(d8, v1, v0), u, v);
    }
  }
}

// A coefficient the compiler may not see, so that a product stays one
// multiply instead of a chain of shifts and adds. The asm has no side
// effects, so the broadcast is still hoisted out of the loops.
HWY_INLINE VI Coef(int k) {
  const DI di;
  int16_t c = static_cast<int16_t>(k);
  asm("" : "+r"(c));
  return hn::Set(di, c);
}

// q * x for the small whole multiples of 256 that the coefficient split
// leaves.
template <int Q>
HWY_INLINE VI Times(VI x) {
  const DI di;
  if constexpr (Q == 0) return hn::Zero(di);
  if constexpr (Q == 1) return x;
  if constexpr (Q == -1) return hn::Neg(x);
  if constexpr (Q == 2) return hn::Add(x, x);
  if constexpr (Q != 0 && Q != 1 && Q != -1 && Q != 2) return hn::Mul(x, hn::Set(di, Q));
}

// What the chroma of a pixel contributes to R, G and B, computed once per
// chroma sample vector and applied to every row that shares it.
//
// Scaled matrices in 16-bit lanes: each coefficient k = 256 q + res, so
// (sum k x + 128) >> 8 == sum q x + ((sum res x + 128) >> 8) exactly, and the
// inner sums stay within int16 (checked in csc_arith.h). `q*` hold the whole
// parts, `t*` the chroma part of the inner sums with the rounding term.
// Full-range matrices shift every product on its own, so the chroma part is
// final and only `q*` are used.
struct Terms {
  VI qr, qg, qb, tr, tg, tb;
};

template <YuvMatrix M>
HWY_INLINE Terms MakeTerms(VI u, VI v) {
  const DI di;
  const VI d = hn::Sub(u, hn::Set(di, 128));
  const VI e = hn::Sub(v, hn::Set(di, 128));
  Terms t;
  if constexpr (M == YuvMatrix::kBt601Limited || M == YuvMatrix::kBt709Limited) {
    using Mx = std::conditional_t<M == YuvMatrix::kBt601Limited, Bt601Limited, Bt709Limited>;
    const VI half = hn::Set(di, 128);
    t.qr = Times<SplitQ(Mx::kRv)>(e);
    t.qg = hn::Add(Times<SplitQ(Mx::kGu)>(d), Times<SplitQ(Mx::kGv)>(e));
    t.qb = Times<SplitQ(Mx::kBu)>(d);
    t.tr = hn::Add(hn::Mul(e, Coef(SplitRes(Mx::kRv))), half);
    t.tg = hn::Add(hn::Add(hn::Mul(d, Coef(SplitRes(Mx::kGu))),
                           hn::Mul(e, Coef(SplitRes(Mx::kGv)))),
                   half);
    t.tb = hn::Add(hn::Mul(d, Coef(SplitRes(Mx::kBu))), half);
  } else {
    using Mx = std::conditional_t<M == YuvMatrix::kBt601Full, Bt601Full, Bt709Full>;
    t.qr = hn::ShiftRight<7>(hn::Mul(e, Coef(Mx::kRv)));
    t.qg = hn::Add(hn::ShiftRight<7>(hn::Mul(d, Coef(Mx::kGu))),
                   hn::ShiftRight<7>(hn::Mul(e, Coef(Mx::kGv))));
    t.qb = hn::ShiftRight<7>(hn::Mul(d, Coef(Mx::kBu)));
  }
  return t;
}

template <YuvMatrix M>
HWY_INLINE void Apply(const Terms& t, VI y, VI* r, VI* g, VI* b) {
  const DI di;
  if constexpr (M == YuvMatrix::kBt601Limited || M == YuvMatrix::kBt709Limited) {
    using Mx = std::conditional_t<M == YuvMatrix::kBt601Limited, Bt601Limited, Bt709Limited>;
    const VI c = hn::Sub(y, hn::Set(di, Mx::kYOffset));
    const VI base = hn::Mul(c, Coef(SplitRes(Mx::kCy)));
    const VI qc = Times<SplitQ(Mx::kCy)>(c);
    *r = hn::Add(hn::Add(qc, t.qr), hn::ShiftRight<8>(hn::Add(base, t.tr)));
    *g = hn::Add(hn::Add(qc, t.qg), hn::ShiftRight<8>(hn::Add(base, t.tg)));
    *b = hn::Add(hn::Add(qc, t.qb), hn::ShiftRight<8>(hn::Add(base, t.tb)));
  } else {
    *r = hn::Add(y, t.qr);
    *g = hn::Add(y, t.qg);
    *b = hn::Add(y, t.qb);
  }
}

// Terms for the two block halves of Lanes pixels: from pair chroma (Lanes /
// 2 values in order) or from per-pixel chroma bytes.
template <YuvMatrix M>
HWY_INLINE void PairTerms(VI u, VI v, Terms* lo, Terms* hi) {
  *lo = MakeTerms<M>(DupLo(u), DupLo(v));
  *hi = MakeTerms<M>(DupHi(u), DupHi(v));
}
template <YuvMatrix M>
HWY_INLINE void PixelTerms(V8 u, V8 v, Terms* lo, Terms* hi) {
  *lo = MakeTerms<M>(WidenLo(u), WidenLo(v));
  *hi = MakeTerms<M>(WidenHi(u), WidenHi(v));
}

// One block of luma through the terms, saturated to bytes.
template <YuvMatrix M>
HWY_INLINE void ToRgb(const Terms& lo, const Terms& hi, V8 y, V8* r, V8* g, V8* b) {
  VI rl, gl, bl, rh, gh, bh;
  Apply<M>(lo, WidenLo(y), &rl, &gl, &bl);
  Apply<M>(hi, WidenHi(y), &rh, &gh, &bh);
  *r = NarrowBlocks(rl, rh);
  *g = NarrowBlocks(gl, gh);
  *b = NarrowBlocks(bl, bh);
}

// The channel a byte slot of a pixel holds.
template <int kSlot, class Dst>
HWY_INLINE V8 Slot(V8 r, V8 g, V8 b, V8 a) {
  if constexpr (kSlot == Dst::kRi) return r;
  if constexpr (kSlot == Dst::kGi) return g;
  if constexpr (kSlot == Dst::kBi) return b;
  if constexpr (kSlot != Dst::kRi && kSlot != Dst::kGi && kSlot != Dst::kBi) return a;
}

template <class Dst>
HWY_INLINE void StoreRgb(V8 r, V8 g, V8 b, uint8_t* out) {
  const D8 d8;
  if constexpr (Dst::kBytes == 4) {
    const V8 a = hn::Set(d8, 255);
    hn::StoreInterleaved4(Slot<0, Dst>(r, g, b, a), Slot<1, Dst>(r, g, b, a),
                          Slot<2, Dst>(r, g, b, a), Slot<3, Dst>(r, g, b, a), d8, out);
  } else if constexpr (Dst::kBytes == 3) {
    hn::StoreInterleaved3(Slot<0, Dst>(r, g, b, r), Slot<1, Dst>(r, g, b, r),
                          Slot<2, Dst>(r, g, b, r), d8, out);
  } else {
    Store565(Dst::kRedHighV ? r : b, g, Dst::kRedHighV ? b : r, out);
  }
}

template <class Src, class Dst, YuvMatrix M>
void RowVec(const YuvRow& row, uint8_t* dst, int n) {
  const D8 d8;
  const size_t L = hn::Lanes(d8);
  size_t x = 0;
  for (; x + L <= static_cast<size_t>(n); x += L) {
    V8 y, r, g, b;
    Terms lo, hi;
    if constexpr (Src::kPairs) {
      VI u, v;
      LoadYuv<Src>(row, x, &y, &u, &v);
      PairTerms<M>(u, v, &lo, &hi);
    } else {
      y = hn::LoadU(d8, row.y + x);
      PixelTerms<M>(hn::LoadU(d8, row.u + x), hn::LoadU(d8, row.v + x), &lo, &hi);
    }
    ToRgb<M>(lo, hi, y, &r, &g, &b);
    StoreRgb<Dst>(r, g, b, dst + x * Dst::kBytes);
  }
  scalar::YuvToRgbRow<Src, Dst, M>(row, dst, static_cast<int>(x), n);
}

// Two rows sharing one chroma row (4:2:0 layouts): the chroma is loaded and
// turned into terms once per block.
template <class Src, class Dst, YuvMatrix M>
void Row2Vec(const YuvRow& row0, const YuvRow& row1, uint8_t* dst0, uint8_t* dst1, int n) {
  const D8 d8;
  const size_t L = hn::Lanes(d8);
  size_t x = 0;
  for (; x + L <= static_cast<size_t>(n); x += L) {
    V8 y0, r, g, b;
    VI u, v;
    LoadYuv<Src>(row0, x, &y0, &u, &v);
    const V8 y1 = hn::LoadU(d8, row1.y + x);
    Terms lo, hi;
    PairTerms<M>(u, v, &lo, &hi);
    ToRgb<M>(lo, hi, y0, &r, &g, &b);
    StoreRgb<Dst>(r, g, b, dst0 + x * Dst::kBytes);
    ToRgb<M>(lo, hi, y1, &r, &g, &b);
    StoreRgb<Dst>(r, g, b, dst1 + x * Dst::kBytes);
  }
  scalar::YuvToRgbRow<Src, Dst, M>(row0, dst0, static_cast<int>(x), n);
  scalar::YuvToRgbRow<Src, Dst, M>(row1, dst1, static_cast<int>(x), n);
}

template <class Src, class Dst, YuvMatrix M>
constexpr YuvToRgbRows VecRows() {
  if constexpr (Src::kVertHalf && Src::kFamily != YuvFamily::kPacked) {
    return {&RowVec<Src, Dst, M>, &Row2Vec<Src, Dst, M>};
  } else {
    return {&RowVec<Src, Dst, M>, nullptr};
  }
}
#else   // HWY_TARGET == HWY_SCALAR: one lane is no vector; use the scalar row.
template <class Src, class Dst, YuvMatrix M>
void RowVec(const YuvRow& row, uint8_t* dst, int n) {
  scalar::YuvToRgbRow<Src, Dst, M>(row, dst, 0, n);
}
template <class Src, class Dst, YuvMatrix M>
constexpr YuvToRgbRows VecRows() {
  return {&RowVec<Src, Dst, M>, nullptr};
}
#endif  // HWY_TARGET != HWY_SCALAR

YuvToRgbRows RowTable(int id) {
#define KELO_ROW_PTR(S, D, M) VecRows<S, D, YuvMatrix::M>(),
  static constexpr YuvToRgbRows kTable[] = {KELO_YUV_TO_RGB_ROWS(KELO_ROW_PTR)};
#undef KELO_ROW_PTR
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

template <class Src, class Dst, YuvMatrix M>
void Row(const YuvRow& row, uint8_t* dst, int n) {
  YuvToRgbRow<Src, Dst, M>(row, dst, 0, n);
}

YuvToRgbRows RowTable(int id) {
#define KELO_ROW_PTR(S, D, M) YuvToRgbRows{&Row<S, D, YuvMatrix::M>, nullptr},
  static constexpr YuvToRgbRows kTable[] = {KELO_YUV_TO_RGB_ROWS(KELO_ROW_PTR)};
#undef KELO_ROW_PTR
  return kTable[id];
}

}  // namespace scalar

KELO_VEC_EXPORT(RowTable);

YuvToRgbRows YuvToRgbRowFor(YuvToRgbRowId id) {
  return KELO_VEC_CALL(RowTable, scalar::RowTable)(id);
}
YuvToRgbRows ScalarYuvToRgbRowFor(YuvToRgbRowId id) { return scalar::RowTable(id); }

}  // namespace csc
}  // namespace kelo

#define KELO_CSC_PARAMS                                                         \
  uint8_t **sp, const int32_t *sw, const int32_t *sh, int32_t *ss,             \
      const int32_t *ds, uint8_t **dp

// kimgp_csc_<name>: the image walk of layout S with the row of (S, D, M).
#define KELO_YUV_TO_RGB_KERNEL(name, S, D, M)                                   \
  KELO_EXPORT void kimgp_csc_##name(KELO_CSC_PARAMS) {                          \
    using namespace kelo::csc;                                                  \
    YuvToRgbImage<S>(sp, sw, sh, ss, ds, dp, YuvToRgbRowFor(kRow_##S##_##D##_##M)); \
  }

// YV12 members exchange the chroma planes of the caller's descriptor, run the
// YUV420 member, and leave the planes exchanged.
#define KELO_YV12_TO_RGB_KERNEL(dst)                                            \
  KELO_EXPORT void kimgp_csc_yv12_to_##dst(KELO_CSC_PARAMS) {                   \
    uint8_t* p = sp[1];                                                         \
    sp[1] = sp[2];                                                              \
    sp[2] = p;                                                                  \
    const int32_t s = ss[1];                                                    \
    ss[1] = ss[2];                                                              \
    ss[2] = s;                                                                  \
    kimgp_csc_yuv420_to_##dst(sp, sw, sh, ss, ds, dp);                          \
  }

#define KELO_EACH_RGB(X, src, S)                                                \
  X(src##_to_rgb565, S, Rgb565, kBt601Limited)                                  \
  X(src##_to_bgr565, S, Bgr565, kBt601Limited)                                  \
  X(src##_to_rgb888, S, Rgb888, kBt601Limited)                                  \
  X(src##_to_bgr888, S, Bgr888, kBt601Limited)                                  \
  X(src##_to_rgba8888, S, Rgba8888, kBt601Limited)                              \
  X(src##_to_bgra8888, S, Bgra8888, kBt601Limited)                              \
  X(src##_to_argb8888, S, Argb8888, kBt601Limited)                              \
  X(src##_to_abgr8888, S, Abgr8888, kBt601Limited)

KELO_EACH_RGB(KELO_YUV_TO_RGB_KERNEL, yuv420, I420)
KELO_EACH_RGB(KELO_YUV_TO_RGB_KERNEL, yuv422n, I422)
KELO_EACH_RGB(KELO_YUV_TO_RGB_KERNEL, yuv444, I444)
KELO_EACH_RGB(KELO_YUV_TO_RGB_KERNEL, nv12, Nv12)
KELO_EACH_RGB(KELO_YUV_TO_RGB_KERNEL, nv21, Nv21)
KELO_EACH_RGB(KELO_YUV_TO_RGB_KERNEL, uyvy, Uyvy)
KELO_EACH_RGB(KELO_YUV_TO_RGB_KERNEL, yuyv, Yuyv)
KELO_YV12_TO_RGB_KERNEL(rgb565)
KELO_YV12_TO_RGB_KERNEL(bgr565)
KELO_YV12_TO_RGB_KERNEL(rgb888)
KELO_YV12_TO_RGB_KERNEL(bgr888)
KELO_YV12_TO_RGB_KERNEL(rgba8888)
KELO_YV12_TO_RGB_KERNEL(bgra8888)
KELO_YV12_TO_RGB_KERNEL(argb8888)
KELO_YV12_TO_RGB_KERNEL(abgr8888)

// YUV422W is read as planar 4:2:2.
KELO_YUV_TO_RGB_KERNEL(yuv422w_to_rgb565, I422, Rgb565, kBt601Limited)
KELO_YUV_TO_RGB_KERNEL(yuv422w_to_bgr565, I422, Bgr565, kBt601Limited)

// The standard-specific members.
KELO_YUV_TO_RGB_KERNEL(bt601_fr_yuv420_to_rgba8888, I420, Rgba8888, kBt601Full)
KELO_YUV_TO_RGB_KERNEL(bt601_fr_nv12_to_rgba8888, Nv12, Rgba8888, kBt601Full)
KELO_YUV_TO_RGB_KERNEL(bt601_fr_nv21_to_rgba8888, Nv21, Rgba8888, kBt601Full)
KELO_YUV_TO_RGB_KERNEL(bt709_yuv420_to_rgba8888, I420, Rgba8888, kBt709Limited)
KELO_YUV_TO_RGB_KERNEL(bt709_fr_yuv420_to_rgba8888, I420, Rgba8888, kBt709Full)

#endif  // !KELO_HAVE_HWY || HWY_ONCE
