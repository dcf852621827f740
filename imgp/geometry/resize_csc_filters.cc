// The bilinear luma resize and the chroma-swapping resize, with their vector
// paths.
//
// Bilinear: each output row blends its two source rows into 32-bit lanes,
// (8 - v) top + v bottom, over the source span that a chunk of outputs reads;
// the outputs then gather their two columns of the blend and weigh them by
// their horizontal phase. (w0 a + w1 b + w2 c + w3 d equals (8 - h)((8 - v) a
// + v c) + h((8 - v) b + v d) exactly.)
//
// Chroma-swapping: an output is (2 Hn + Hf + 4) / 9 with H = 2 near + far of
// its near row (Hn) and far row (Hf), exactly the 4-2-2-1 sum; the division
// is a 16-bit multiply-high. A width ratio of 1.5 loads three samples per two
// outputs with deinterleaving loads; other ratios gather H per output.
#include "common/internal/simd.h"
#include "imgp/geometry/resize_csc_filters.h"

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/geometry/resize_csc_filters.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "common/internal/unaligned-inl.h"

#include "imgp/geometry/resize_csc_filters.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
using rszcsc::ApexTap;
using rszcsc::BilinearAxis;

#if HWY_TARGET != HWY_SCALAR

void BilinearPlaneVec(const uint8_t* src, int32_t sw, int32_t sh, int32_t ss, uint8_t* dst,
                      int32_t dw, int32_t dh, int32_t ds) {
  const BilinearAxis x = BilinearAxis::Make(sw, dw), y = BilinearAxis::Make(sh, dh);
  const hn::ScalableTag<int32_t> d;
  const hn::Rebind<uint8_t, decltype(d)> d8;
  const int32_t N = static_cast<int32_t>(hn::Lanes(d));
  constexpr int32_t kChunk = 256, kSpan = 4096;
  alignas(64) int32_t ia[kChunk], ib[kChunk], ph[kChunk];
  alignas(64) int32_t blend[kSpan];
  const auto eight = hn::Set(d, 8);
  for (int32_t i0 = 0; i0 < dw; i0 += kChunk) {
    const int32_t i1 = dw - i0 < kChunk ? dw : i0 + kChunk;
    int32_t first = 0, last = 0;
    for (int32_t i = i0; i < i1; ++i) {
      int h;
      x.At(i, &ia[i - i0], &ib[i - i0], &h);
      ph[i - i0] = h;
      if (i == i0) first = ia[0];
      last = ib[i - i0] > last ? ib[i - i0] : last;
    }
    const int32_t span = last - first + 1;
    for (int32_t i = 0; i < i1 - i0; ++i) ia[i] -= first, ib[i] -= first;
    for (int32_t j = 0; j < dh; ++j) {
      int32_t r, r1;
      int v;
      y.At(j, &r, &r1, &v);
      const uint8_t* s0 = src + ptrdiff_t{r} * ss;
      const uint8_t* s1 = src + ptrdiff_t{r1} * ss;
      uint8_t* out = dst + ptrdiff_t{j} * ds;
      if (span > kSpan) {
        rszcsc::scalar::BilinearRow(x, s0, s1, v, out, i0, i1);
        continue;
      }
      const auto wt = hn::Set(d, 8 - v), wb = hn::Set(d, v);
      int32_t k = 0;
      for (; k + N <= span; k += N) {
        const auto a = hn::PromoteTo(d, hn::LoadU(d8, s0 + first + k));
        const auto b = hn::PromoteTo(d, hn::LoadU(d8, s1 + first + k));
        hn::Store(hn::Add(hn::Mul(a, wt), hn::Mul(b, wb)), d, blend + k);
      }
      for (; k < span; ++k) blend[k] = (8 - v) * s0[first + k] + v * s1[first + k];
      int32_t i = i0;
      for (; i + N <= i1; i += N) {
        const auto h = hn::Load(d, ph + (i - i0));
        const auto a = hn::GatherIndex(d, blend, hn::Load(d, ia + (i - i0)));
        const auto b = hn::GatherIndex(d, blend, hn::Load(d, ib + (i - i0)));
        const auto o = hn::ShiftRight<6>(hn::Add(hn::Mul(a, hn::Sub(eight, h)), hn::Mul(b, h)));
        hn::StoreU(hn::DemoteTo(d8, o), d8, out + i);
      }
      rszcsc::scalar::BilinearRow(x, s0, s1, v, out, i, i1);
    }
  }
}

using D8 = hn::ScalableTag<uint8_t>;
using DH8 = hn::Half<D8>;
using D16 = hn::Repartition<uint16_t, D8>;
using DI16 = hn::Repartition<int16_t, D8>;

// (2 (2 n + f) + (2 n2 + f2) + 4) / 9 in 16-bit lanes: near and far of the
// near row, then of the far row.
template <class V>
HWY_INLINE V Apex16(V n, V f, V n2, V f2) {
  const hn::DFromV<V> d;
  const V hn1 = hn::Add(hn::Add(n, n), f);
  const V hf = hn::Add(hn::Add(n2, n2), f2);
  const V sum = hn::Add(hn::Add(hn::Add(hn1, hn1), hf), hn::Set(d, 4));
  return hn::MulHigh(sum, hn::Set(d, 7282));  // sum / 9 for sum < 32768
}

// Bytes: the lower and upper halves widened, combined, narrowed.
HWY_INLINE hn::Vec<D8> Apex8(hn::Vec<D8> n, hn::Vec<D8> f, hn::Vec<D8> n2, hn::Vec<D8> f2) {
  const D8 d8;
  const DH8 dh;
  const D16 d16;
  const DI16 di;
  const auto lo = Apex16(hn::PromoteTo(d16, hn::LowerHalf(dh, n)),
                         hn::PromoteTo(d16, hn::LowerHalf(dh, f)),
                         hn::PromoteTo(d16, hn::LowerHalf(dh, n2)),
                         hn::PromoteTo(d16, hn::LowerHalf(dh, f2)));
  const auto hi = Apex16(hn::PromoteTo(d16, hn::UpperHalf(dh, n)),
                         hn::PromoteTo(d16, hn::UpperHalf(dh, f)),
                         hn::PromoteTo(d16, hn::UpperHalf(dh, n2)),
                         hn::PromoteTo(d16, hn::UpperHalf(dh, f2)));
  return hn::Combine(d8, hn::DemoteTo(dh, hn::BitCast(di, hi)),
                     hn::DemoteTo(dh, hn::BitCast(di, lo)));
}

// Chroma pairs in 16-bit lanes: each byte on its own, then exchanged.
HWY_INLINE hn::Vec<D16> ApexPairs(hn::Vec<D16> n, hn::Vec<D16> f, hn::Vec<D16> n2,
                                  hn::Vec<D16> f2) {
  const D16 d16;
  const auto m = hn::Set(d16, 0xFF);
  const auto lo = Apex16(hn::And(n, m), hn::And(f, m), hn::And(n2, m), hn::And(f2, m));
  const auto hi = Apex16(hn::ShiftRight<8>(n), hn::ShiftRight<8>(f), hn::ShiftRight<8>(n2),
                         hn::ShiftRight<8>(f2));
  return hn::Or(hn::ShiftLeft<8>(lo), hi);
}

// Outputs [0, count) of a row; the taps are cols[k] or, when fixed, the 1.5
// pattern (ApexFixedAt).
void ApexRowVec(const uint8_t* pn, const uint8_t* pf, uint8_t* out, const ApexTap* cols,
                int32_t count, int bytes, bool fixed) {
  int32_t k = 0;
  if (fixed && bytes == 1) {
    const D8 d8;
    const int32_t L = static_cast<int32_t>(hn::Lanes(d8));
    for (; k + 2 * L <= count; k += 2 * L) {
      hn::Vec<D8> a, b, c, a2, b2, c2;
      hn::LoadInterleaved3(d8, pn + k / 2 * 3, a, b, c);
      hn::LoadInterleaved3(d8, pf + k / 2 * 3, a2, b2, c2);
      hn::StoreInterleaved2(Apex8(a, b, a2, b2), Apex8(c, b, c2, b2), d8, out + k);
    }
  } else if (fixed) {
    const D16 d16;
    const int32_t L = static_cast<int32_t>(hn::Lanes(d16));
    const auto* n16 = reinterpret_cast<const uint16_t*>(pn);
    const auto* f16 = reinterpret_cast<const uint16_t*>(pf);
    for (; k + 2 * L <= count; k += 2 * L) {
      hn::Vec<D16> a, b, c, a2, b2, c2;
      LoadInterleaved3U(d16, n16 + k / 2 * 3, a, b, c);
      LoadInterleaved3U(d16, f16 + k / 2 * 3, a2, b2, c2);
      StoreInterleaved2U(ApexPairs(a, b, a2, b2), ApexPairs(c, b, c2, b2), d16,
                         reinterpret_cast<uint16_t*>(out + 2 * k));
    }
  } else {
    // H of both rows per output byte, in output order, then whole vectors.
    constexpr int32_t kMax = 512;
    alignas(64) uint16_t hn_[kMax], hf_[kMax];
    const D16 d16;
    const DI16 di;
    const hn::Rebind<uint8_t, D16> d8;
    const int32_t L = static_cast<int32_t>(hn::Lanes(d16));
    const int32_t nb = count * bytes;
    if (nb <= kMax) {
      for (int32_t i = 0; i < count; ++i) {
        for (int b = 0; b < bytes; ++b) {
          const ptrdiff_t n = ptrdiff_t{cols[i].near} * bytes + b;
          const ptrdiff_t f = ptrdiff_t{cols[i].far} * bytes + b;
          const int32_t o = i * bytes + (bytes - 1 - b);
          hn_[o] = static_cast<uint16_t>(2 * pn[n] + pn[f]);
          hf_[o] = static_cast<uint16_t>(2 * pf[n] + pf[f]);
        }
      }
      const auto four = hn::Set(d16, 4), m9 = hn::Set(d16, 7282);
      int32_t q = 0;
      for (; q + L <= nb; q += L) {
        const auto h1 = hn::Load(d16, hn_ + q), h2 = hn::Load(d16, hf_ + q);
        const auto sum = hn::Add(hn::Add(hn::Add(h1, h1), h2), four);
        hn::StoreU(hn::DemoteTo(d8, hn::BitCast(di, hn::MulHigh(sum, m9))), d8, out + q);
      }
      k = q / bytes;  // L is even, so q is whole units
    }
    rszcsc::scalar::ApexRow(pn, pf, out + ptrdiff_t{k} * bytes, count - k, bytes,
                            [&](int32_t i) { return cols[k + i]; });
    return;
  }
  rszcsc::scalar::ApexRow(pn, pf, out + ptrdiff_t{k} * bytes, count - k, bytes,
                          [&](int32_t i) { return rszcsc::ApexFixedAt(k + i); });
}

#else  // HWY_SCALAR: the scalar rows.

void BilinearPlaneVec(const uint8_t* src, int32_t sw, int32_t sh, int32_t ss, uint8_t* dst,
                      int32_t dw, int32_t dh, int32_t ds) {
  rszcsc::scalar::BilinearPlane(src, sw, sh, ss, dst, dw, dh, ds);
}
void ApexRowVec(const uint8_t* pn, const uint8_t* pf, uint8_t* out, const ApexTap* cols,
                int32_t count, int bytes, bool fixed) {
  rszcsc::scalar::ApexRowAny(pn, pf, out, cols, count, bytes, fixed);
}

#endif  // HWY_TARGET != HWY_SCALAR

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_HAVE_HWY

#if !KELO_HAVE_HWY || HWY_ONCE
#include "common/internal/api.h"
#include "kimgp_rsz_csc.h"

namespace kelo {

KELO_VEC_EXPORT(BilinearPlaneVec);
KELO_VEC_EXPORT(ApexRowVec);

namespace rszcsc {

void BilinearPlane(const uint8_t* src, int32_t sw, int32_t sh, int32_t ss, uint8_t* dst,
                   int32_t dw, int32_t dh, int32_t ds) {
  KELO_VEC_CALL(BilinearPlaneVec, scalar::BilinearPlane)(src, sw, sh, ss, dst, dw, dh, ds);
}

void ApexPlane(const uint8_t* src, int32_t n, int32_t m, int32_t ss, uint8_t* dst, int32_t n2,
               int32_t m2, int32_t ds, int bytes, bool fixed) {
  const auto row = &KELO_VEC_CALL(ApexRowVec, scalar::ApexRowAny);
  const float rx = static_cast<float>(n) / static_cast<float>(n2);
  const float ry = static_cast<float>(m) / static_cast<float>(m2);
  if (fixed && 2 * int64_t{n} == 3 * int64_t{n2} && n2 < (1 << 22)) {
    for (int32_t j = 0; j < m2; ++j) {
      const ApexTap t = ApexAt(ry, j, m);
      row(src + ptrdiff_t{t.near} * ss, src + ptrdiff_t{t.far} * ss, dst + ptrdiff_t{j} * ds,
          nullptr, n2, bytes, true);
    }
    return;
  }
  constexpr int32_t kChunk = 256;
  ApexTap cols[kChunk];
  for (int32_t i0 = 0; i0 < n2; i0 += kChunk) {
    const int32_t count = n2 - i0 < kChunk ? n2 - i0 : kChunk;
    for (int32_t k = 0; k < count; ++k) cols[k] = ApexAt(rx, i0 + k, n);
    for (int32_t j = 0; j < m2; ++j) {
      const ApexTap t = ApexAt(ry, j, m);
      row(src + ptrdiff_t{t.near} * ss, src + ptrdiff_t{t.far} * ss,
          dst + ptrdiff_t{j} * ds + ptrdiff_t{i0} * bytes, cols, count, bytes, false);
    }
  }
}

namespace {

int32_t Apex(const kimgp_img* src, kimgp_img* dst, bool fixed) {
  for (int i = 0; i < 2; ++i) {
    if (src->width[i] < 1 || src->height[i] < 1 || dst->width[i] < 1 || dst->height[i] < 1) {
      return KIMGP_ERR_ARGS;
    }
  }
  for (int i = 0; i < 2; ++i) {
    ApexPlane(src->plane[i], src->width[i], src->height[i], src->stride[i], dst->plane[i],
              dst->width[i], dst->height[i], dst->stride[i], i + 1, fixed);
  }
  return KIMGP_OK;
}

}  // namespace
}  // namespace rszcsc
}  // namespace kelo

KELO_EXPORT int32_t kimgp_rsz_8b_org(const void* src, int32_t src_width, int32_t src_height,
                                     int32_t dst_width, int32_t dst_height, void* dst, void*,
                                     int32_t src_stride, int32_t dst_stride, int32_t) {
  if (src_width < 1 || src_height < 1 || dst_width < 1 || dst_height < 1) return KIMGP_ERR_ARGS;
  kelo::rszcsc::BilinearPlane(static_cast<const uint8_t*>(src), src_width, src_height,
                              src_stride, static_cast<uint8_t*>(dst), dst_width, dst_height,
                              dst_stride);
  return KIMGP_OK;
}

KELO_EXPORT int32_t kimgp_rsz_apex(const kimgp_img* src, kimgp_img* dst) {
  return kelo::rszcsc::Apex(src, dst, true);
}

KELO_EXPORT int32_t kimgp_rsz_apex_c(const kimgp_img* src, kimgp_img* dst) {
  return kelo::rszcsc::Apex(src, dst, false);
}

#endif  // !KELO_HAVE_HWY || HWY_ONCE
