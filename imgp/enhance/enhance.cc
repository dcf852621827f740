// Video quality enhancement: the saturation table and its mapping, detail
// enhancement, and their vector paths.
#include "common/internal/simd.h"

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/enhance/enhance.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "imgp/enhance/enhance_rows.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// 256-entry lookup as sixteen 16-entry byte shuffles, each kept for the
// lanes whose high nibble selects its part of the table.
template <class D, class V>
HWY_INLINE V Lookup256(D d, const V (&parts)[16], V idx) {
  const auto lo = hn::And(idx, hn::Set(d, 0x0F));
  const auto hi = hn::ShiftRight<4>(idx);
  V r = hn::TableLookupBytes(parts[0], lo);
  for (int t = 1; t < 16; ++t) {
    r = hn::IfThenElse(hn::Eq(hi, hn::Set(d, static_cast<uint8_t>(t))),
                       hn::TableLookupBytes(parts[t], lo), r);
  }
  return r;
}

void MapChromaVec(const uint8_t* table, size_t n, const uint8_t* su, const uint8_t* sv,
                  uint8_t* du, uint8_t* dv) {
  const hn::ScalableTag<uint8_t> d;
  const size_t N = hn::Lanes(d);
  size_t i = 0;
  // The shuffles look up 16-byte blocks; narrower vectors use the scalar map.
  if (N >= 16 && n >= N) {
    using V = hn::Vec<decltype(d)>;
    V parts[16];
    for (int t = 0; t < 16; ++t) parts[t] = hn::LoadDup128(d, table + 16 * t);
    for (; i <= n - N; i += N) {
      hn::StoreU(Lookup256(d, parts, hn::LoadU(d, su + i)), d, du + i);
      hn::StoreU(Lookup256(d, parts, hn::LoadU(d, sv + i)), d, dv + i);
    }
  }
  scalar::MapChroma(table, n - i, su + i, sv + i, du + i, dv + i);
}

// One vector of pixels at a time on 16-bit lanes. A last part shorter than a
// vector is one more vector ending at the span's end, which computes some
// pixels again to the same values (the source is not the destination); a
// span shorter than a vector is the scalar row's.
void SharpenSpanVec(const uint8_t* s, ptrdiff_t w, uint8_t* d, ptrdiff_t x0, ptrdiff_t x1) {
  const hn::ScalableTag<int16_t> d16;
  const hn::Rebind<uint8_t, decltype(d16)> d8;
  const ptrdiff_t N = static_cast<ptrdiff_t>(hn::Lanes(d16));
  if (x1 - x0 < N) return scalar::SharpenSpan(s, w, d, x0, x1);
  auto at = [&](const uint8_t* p) { return hn::PromoteTo(d16, hn::LoadU(d8, p)); };
  auto group = [&](ptrdiff_t x) {
    const uint8_t* c = s + x;
    const auto near = hn::Add(hn::Add(at(c - 1), at(c + 1)), hn::Add(at(c - w), at(c + w)));
    const auto far =
        hn::Add(hn::Add(at(c - 2), at(c + 2)), hn::Add(at(c - 2 * w), at(c + 2 * w)));
    const auto diag = hn::Add(hn::Add(at(c - w - 1), at(c - w + 1)),
                              hn::Add(at(c + w - 1), at(c + w + 1)));
    const auto sum = hn::Add(hn::Add(near, near), hn::Add(far, diag));
    const auto p = at(c);
    const auto v = hn::Add(p, hn::ShiftRight<4>(hn::Sub(hn::ShiftLeft<4>(p), sum)));
    hn::StoreU(hn::DemoteTo(d8, v), d8, d + x);
  };
  ptrdiff_t x = x0;
  for (; x + N <= x1; x += N) group(x);
  if (x < x1) group(x1 - N);
}

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_HAVE_HWY

#if !KELO_HAVE_HWY || HWY_ONCE
#include <cstring>

#include "common/internal/api.h"
#include "imgp/core/copy_rows.h"
#include "imgp/enhance/deblock_filter.h"
#include "imgp/enhance/enhance_rows.h"
#include "kimgp_enhance.h"

namespace kelo {

KELO_VEC_EXPORT(MapChromaVec);
KELO_VEC_EXPORT(SharpenSpanVec);

void MapChroma(const uint8_t* table, size_t n, const uint8_t* su, const uint8_t* sv,
               uint8_t* du, uint8_t* dv) {
  KELO_VEC_CALL(MapChromaVec, scalar::MapChroma)(table, n, su, sv, du, dv);
}

void SharpenSpan(const uint8_t* s, ptrdiff_t w, uint8_t* d, ptrdiff_t x0, ptrdiff_t x1) {
  KELO_VEC_CALL(SharpenSpanVec, scalar::SharpenSpan)(s, w, d, x0, x1);
}

}  // namespace kelo

// Declared with C linkage by the header; a definition needs no `extern`.
__attribute__((visibility("default"))) uint8_t lut[256];

// The source value of entry j: the 32-bit numbers 0 .. 127 read as pairs of
// 16-bit halves, low half first.
KELO_EXPORT void color_sat_lut(uint8_t* table, int16_t gain) {
  for (int32_t j = 0; j < 256; ++j) {
    const int32_t s = (j & 1) ? 0 : j / 2;
    const int16_t v = kelo::Low16(kelo::Low16(((s - 128) * gain) >> 10) + 128);
    table[j] = static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v);
  }
}

// The pairs and the odd last sample map the same bytes as one run; a single
// sample (where the pair loop would not stop) maps that sample.
KELO_EXPORT void color_sat(const uint8_t* table, int32_t n, const uint8_t* su,
                           const uint8_t* sv, uint8_t* du, uint8_t* dv) {
  if (n < 1) return;
  kelo::MapChroma(table, static_cast<size_t>(n), su, sv, du, dv);
}

KELO_EXPORT void detail_enh(const uint8_t* src, int32_t w, int32_t h, uint8_t* dst,
                            int32_t /*strength*/) {
  if (w < 1 || h < 1) return;
  const ptrdiff_t W = w;
  for (int32_t y = 0; y < h; ++y) {
    const uint8_t* s = src + y * W;
    uint8_t* d = dst + y * W;
    if (y < 2 || y > h - 3 || w < 5) {
      kelo::CopyBytes(s, d, static_cast<size_t>(w));
      continue;
    }
    d[0] = s[0];
    d[1] = s[1];
    kelo::SharpenSpan(s, W, d, 2, W - 2);
    d[W - 2] = s[W - 2];
    d[W - 1] = s[W - 1];
  }
}

KELO_EXPORT int32_t kimgp_vqe_cs_init(int32_t gain) {
  color_sat_lut(lut, gain < 1 ? int16_t{1180} : kelo::Low16(gain));
  return KIMGP_OK;
}

KELO_EXPORT int32_t kimgp_vqe_cs(const kimgp_img* src, kimgp_img* dst) {
  uint8_t table[256];
  memset(table, 0, sizeof(table));
  if (src->cs != KIMGP_CS_YUV420 || dst->cs != KIMGP_CS_YUV420) return KIMGP_ERR_ARGS;
  const auto n = static_cast<int32_t>(int64_t{src->width[1]} * src->height[1]);
  color_sat(table, n, src->plane[1], src->plane[2], dst->plane[1], dst->plane[2]);
  return KIMGP_OK;
}

KELO_EXPORT int32_t kimgp_vqe_de(const kimgp_img* src, kimgp_img* dst, int32_t strength) {
  if (src->cs != KIMGP_CS_YUV420 || dst->cs != KIMGP_CS_YUV420) return KIMGP_ERR_ARGS;
  detail_enh(src->plane[0], src->width[0], src->height[0], dst->plane[0],
             strength < 1 ? 4 : strength);
  return KIMGP_OK;
}

KELO_EXPORT int32_t kimgp_vqe_dejagging(void) { return KIMGP_OK; }

#endif  // !KELO_HAVE_HWY || HWY_ONCE
