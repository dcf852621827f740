// Scalar definitions of the two filters of the resize-and-convert entry: the
// bilinear luma resize (kimgp_rsz_8b_org) and the 4-2-2-1 chroma-swapping
// resize (kimgp_rsz_apex, kimgp_rsz_apex_c). The vector paths and the tests
// use the same tap builders.
#ifndef KELO_IMGP_GEOMETRY_RESIZE_CSC_FILTERS_H_
#define KELO_IMGP_GEOMETRY_RESIZE_CSC_FILTERS_H_

#include <cstddef>
#include <cstdint>

#include "kimgp_rsz.h"

namespace kelo {
namespace rszcsc {

// ---------------------------------------------------------------------------
// Bilinear.

// The smallest s with 2^(s + 1) >= r, 0 below 2, by integer ratio r.
constexpr uint8_t kTapSpacing[32] = {0, 0, 0, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3, 3, 3, 3,
                                     3, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4};

// One direction: n source samples to m outputs.
struct BilinearAxis {
  int32_t n, m;
  int32_t s;     // tap spacing
  int64_t step;  // 18-bit fixed point

  static BilinearAxis Make(int32_t n, int32_t m) {
    const int32_t r = n / m;
    const int32_t s = kTapSpacing[r < 31 ? r : 31];
    return {n, m, s, ((int64_t{n - 1} >> s) << 18) / m};
  }
  // Output k reads samples a and b (b clamped to the plane) with phase ph.
  void At(int32_t k, int32_t* a, int32_t* b, int* ph) const {
    const int64_t p = k * step;
    *a = static_cast<int32_t>((p >> 18) << s);
    const int64_t far = int64_t{*a} + (int64_t{1} << s);
    *b = static_cast<int32_t>(far < n ? far : n - 1);
    *ph = static_cast<int>((p >> 15) & 7);
  }
};

namespace scalar {

// Outputs [i0, i1) of a row from source rows s0 (top) and s1 (bottom) at
// vertical phase v.
inline void BilinearRow(const BilinearAxis& x, const uint8_t* s0, const uint8_t* s1, int v,
                        uint8_t* out, int32_t i0, int32_t i1) {
  for (int32_t i = i0; i < i1; ++i) {
    int32_t c, c1;
    int h;
    x.At(i, &c, &c1, &h);
    const uint8_t* w = kimgp_tbl_rsz_weight + (h * 8 + v) * 4;
    out[i] = static_cast<uint8_t>((w[0] * s0[c] + w[1] * s0[c1] + w[2] * s1[c] + w[3] * s1[c1]) >>
                                  6);
  }
}

// A whole plane.
inline void BilinearPlane(const uint8_t* src, int32_t sw, int32_t sh, int32_t ss, uint8_t* dst,
                          int32_t dw, int32_t dh, int32_t ds) {
  const BilinearAxis x = BilinearAxis::Make(sw, dw), y = BilinearAxis::Make(sh, dh);
  for (int32_t j = 0; j < dh; ++j) {
    int32_t r, r1;
    int v;
    y.At(j, &r, &r1, &v);
    BilinearRow(x, src + ptrdiff_t{r} * ss, src + ptrdiff_t{r1} * ss, v, dst + ptrdiff_t{j} * ds,
                0, dw);
  }
}

}  // namespace scalar

// ---------------------------------------------------------------------------
// Chroma-swapping resize.

// The near and far source sample of an output.
struct ApexTap {
  int32_t near, far;
};

// Output k of an axis with single-precision ratio `ratio` over n samples.
inline ApexTap ApexAt(float ratio, int32_t k, int32_t n) {
  // Kept in memory so that no fused multiply-add changes the product.
  volatile float p = ratio * static_cast<float>(k);
  const float q = p;
  int32_t x0 = static_cast<int32_t>(q), x1 = static_cast<int32_t>(q + 1.0f);
  if (x0 > n - 1) x0 = n - 1;
  if (x1 > n - 1) x1 = n - 1;
  return (k & 1) ? ApexTap{x1, x0} : ApexTap{x0, x1};
}

// The three-to-two pattern of a ratio of exactly 1.5 (2 n == 3 m): the taps
// of ApexAt for every output.
inline ApexTap ApexFixedAt(int32_t k) {
  const int32_t g = 3 * (k >> 1);
  return (k & 1) ? ApexTap{g + 2, g + 1} : ApexTap{g, g + 1};
}

inline uint8_t ApexValue(uint32_t a, uint32_t b, uint32_t c, uint32_t d) {
  return static_cast<uint8_t>((4 * a + 2 * b + 2 * c + d + 4) / 9);
}

namespace scalar {

// Outputs [0, count) of a row of `bytes`-byte units (1, or 2 for a chroma
// pair, whose bytes are exchanged) from the near row pn and the far row pf;
// tap(k) gives the columns of output k.
template <class Tap>
inline void ApexRow(const uint8_t* pn, const uint8_t* pf, uint8_t* out, int32_t count, int bytes,
                    Tap tap) {
  for (int32_t k = 0; k < count; ++k) {
    const ApexTap t = tap(k);
    for (int b = 0; b < bytes; ++b) {
      const ptrdiff_t n = ptrdiff_t{t.near} * bytes + b, f = ptrdiff_t{t.far} * bytes + b;
      out[ptrdiff_t{k} * bytes + (bytes - 1 - b)] = ApexValue(pn[n], pn[f], pf[n], pf[f]);
    }
  }
}

// A whole row of outputs: the taps from cols, or the 1.5 pattern when fixed.
inline void ApexRowAny(const uint8_t* pn, const uint8_t* pf, uint8_t* out, const ApexTap* cols,
                       int32_t count, int bytes, bool fixed) {
  if (fixed) {
    ApexRow(pn, pf, out, count, bytes, [](int32_t k) { return ApexFixedAt(k); });
  } else {
    ApexRow(pn, pf, out, count, bytes, [&](int32_t k) { return cols[k]; });
  }
}

}  // namespace scalar

// The best paths of the running CPU (resize_csc_filters.cc).
void BilinearPlane(const uint8_t* src, int32_t sw, int32_t sh, int32_t ss, uint8_t* dst,
                   int32_t dw, int32_t dh, int32_t ds);
// One plane of the chroma-swapping resize; `fixed` allows the 1.5 pattern.
void ApexPlane(const uint8_t* src, int32_t n, int32_t m, int32_t ss, uint8_t* dst, int32_t n2,
               int32_t m2, int32_t ds, int bytes, bool fixed);

}  // namespace rszcsc
}  // namespace kelo

#endif  // KELO_IMGP_GEOMETRY_RESIZE_CSC_FILTERS_H_
