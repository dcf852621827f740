// YUV layout conversions: the exported row helpers and layout kernels.
// Samples are moved, never changed (except the YUYV chroma average and the
// 16-bit narrowing).
#include <cstring>

#include "common/internal/api.h"
#include "imgp/core/copy_rows.h"
#include "imgp/csc/layout_rows.h"
#include "imgp/csc/pixel_layouts.h"
#include "kimgp_copy.h"
#include "kimgp_csc.h"

namespace kelo {
namespace csc {
namespace {

inline const uint8_t* Row(const uint8_t* p, int32_t stride, int32_t r) {
  return p + static_cast<intptr_t>(stride) * r;
}
inline uint8_t* Row(uint8_t* p, int32_t stride, int32_t r) {
  return p + static_cast<intptr_t>(stride) * r;
}

// Applies a row operation to `rows` rows with the given strides.
template <class Op>
void Rows(int32_t rows, Op op) {
  for (int32_t r = 0; r < rows; ++r) op(r);
}

}  // namespace
}  // namespace csc
}  // namespace kelo

using kelo::csc::Row;
using kelo::csc::Rows;

// Source rows 0, 2, 4, ... to consecutive rows. The row count runs down from
// the height by two; an odd height keeps its last row too, so a plane of h
// rows gives (h + 1) / 2.
KELO_EXPORT void kimgp_csc_1x2_to_1x1(const uint8_t* src, int32_t width, int32_t height,
                                      int32_t src_stride, int32_t dst_stride, uint8_t* dst) {
  if (width < 1) return;
  Rows(kelo::csc::HalfUp(height), [&](int32_t r) {
    kelo::CopyBytes(Row(src, src_stride, 2 * r), Row(dst, dst_stride, r), size_t(width));
  });
}

// The top-left byte of every 2x2 block.
KELO_EXPORT void kimgp_csc_2x2_to_1x1(const uint8_t* src, int32_t width, int32_t height,
                                      int32_t src_stride, int32_t dst_stride, uint8_t* dst) {
  if (width < 1) return;
  const size_t n = size_t(width + 1) / 2;
  Rows(kelo::csc::HalfUp(height), [&](int32_t r) {
    const uint8_t* s = Row(src, src_stride, 2 * r);
    uint8_t* d = Row(dst, dst_stride, r);
    // The vector path reads pairs; an odd width's last byte has no partner.
    const size_t pairs = size_t(width) / 2;
    kelo::csc::Even(s, d, pairs);
    if (n > pairs) d[pairs] = s[2 * pairs];
  });
}

KELO_EXPORT void kimgp_csc_1x1_to_1x2(const uint8_t* src, int32_t width, int32_t height,
                                      int32_t src_stride, int32_t dst_stride, uint8_t* dst) {
  if (width < 1) return;
  Rows(height, [&](int32_t r) {
    kelo::CopyBytes(Row(src, src_stride, r), Row(dst, dst_stride, 2 * r), size_t(width));
    kelo::CopyBytes(Row(src, src_stride, r), Row(dst, dst_stride, 2 * r + 1), size_t(width));
  });
}

KELO_EXPORT void kimgp_csc_8b8b_pck(const uint8_t* src0, const uint8_t* src1, int32_t width,
                                    int32_t height, int32_t src0_stride, int32_t src1_stride,
                                    int32_t dst_stride, uint8_t* dst) {
  if (width < 1) return;
  if (height > 0 && src0_stride == width && src1_stride == width && dst_stride == 2 * width) {
    // Rows without padding: one run.
    kelo::csc::Interleave(src0, src1, dst, size_t(width) * size_t(height));
    return;
  }
  Rows(height, [&](int32_t r) {
    kelo::csc::Interleave(Row(src0, src0_stride, r), Row(src1, src1_stride, r),
                          Row(dst, dst_stride, r), size_t(width));
  });
}

// Even bytes to dst0, odd bytes to dst1; a final odd byte goes to dst0.
KELO_EXPORT void kimgp_csc_8b8b_unpck(const uint8_t* src, int32_t bytes, int32_t height,
                                      int32_t src_stride, int32_t dst0_stride,
                                      int32_t dst1_stride, uint8_t* dst0, uint8_t* dst1) {
  if (bytes < 1) return;
  const size_t pairs = size_t(bytes) / 2;
  if (height > 0 && bytes % 2 == 0 && src_stride == bytes && dst0_stride == bytes / 2 &&
      dst1_stride == bytes / 2) {
    // Rows without padding: one run.
    kelo::csc::Deinterleave(src, dst0, dst1, pairs * size_t(height));
    return;
  }
  Rows(height, [&](int32_t r) {
    const uint8_t* s = Row(src, src_stride, r);
    uint8_t* a = Row(dst0, dst0_stride, r);
    kelo::csc::Deinterleave(s, a, Row(dst1, dst1_stride, r), pairs);
    if (bytes & 1) a[pairs] = s[2 * pairs];
  });
}

// One contiguous run of (stride & 0xFFFF) * (rows & 0xFFFF) bytes, padding
// included.
KELO_EXPORT void kimgp_csc_swap_8byte8(uint8_t* plane, int32_t stride, int32_t rows) {
  const uint32_t count = (uint32_t(stride) & 0xFFFF) * (uint32_t(rows) & 0xFFFF);
  kelo::csc::SwapPairs(plane, count / 2);
}

#define KELO_CSC_PARAMS                                                         \
  uint8_t **sp, const int32_t *sw, const int32_t *sh, int32_t *ss,             \
      const int32_t *ds, uint8_t **dp

namespace {
void CopyLuma(uint8_t** sp, const int32_t* sw, const int32_t* sh, const int32_t* ss,
              const int32_t* ds, uint8_t** dp) {
  kimgp_cpy_8b(sp[0], sw[0], sh[0], ss[0], ds[0], dp[0]);
}
}  // namespace

KELO_EXPORT void kimgp_csc_yuv420Planar16_to_yuv420Planar(KELO_CSC_PARAMS) {
  for (int i = 0; i < 3; ++i) {
    if (sw[i] < 1) continue;
    Rows(sh[i], [&](int32_t r) {
      kelo::csc::Narrow16(Row(sp[i], ss[i], r), Row(dp[i], ds[i], r), size_t(sw[i]));
    });
  }
}

// Chroma rows doubled, as far as the luma height goes (an odd height's last
// chroma row is written once).
KELO_EXPORT void kimgp_csc_yuv420_to_yuv422n(KELO_CSC_PARAMS) {
  CopyLuma(sp, sw, sh, ss, ds, dp);
  for (int i = 1; i <= 2; ++i) {
    if (sw[i] < 1) continue;
    Rows(sh[0], [&](int32_t r) {
      kelo::CopyBytes(Row(sp[i], ss[i], r / 2), Row(dp[i], ds[i], r), size_t(sw[i]));
    });
  }
}

KELO_EXPORT void kimgp_csc_yuv444_to_yuv420(KELO_CSC_PARAMS) {
  CopyLuma(sp, sw, sh, ss, ds, dp);
  kimgp_csc_2x2_to_1x1(sp[1], sw[1], sh[1], ss[1], ds[1], dp[1]);
  kimgp_csc_2x2_to_1x1(sp[2], sw[2], sh[2], ss[2], ds[2], dp[2]);
}

KELO_EXPORT void kimgp_csc_yuv420_to_nv12(KELO_CSC_PARAMS) {
  CopyLuma(sp, sw, sh, ss, ds, dp);
  kimgp_csc_8b8b_pck(sp[1], sp[2], sw[1], sh[1], ss[1], ss[2], ds[1], dp[1]);
}

KELO_EXPORT void kimgp_csc_yuv420_to_nv21(KELO_CSC_PARAMS) {
  CopyLuma(sp, sw, sh, ss, ds, dp);
  kimgp_csc_8b8b_pck(sp[2], sp[1], sw[1], sh[1], ss[2], ss[1], ds[1], dp[1]);
}

// Chroma planes exchanged; each copy steps by the strides of the plane index
// it reads from on the other side, so the two source chroma strides are
// expected to be equal.
KELO_EXPORT void kimgp_csc_yuv420_to_yv12(KELO_CSC_PARAMS) {
  CopyLuma(sp, sw, sh, ss, ds, dp);
  kimgp_cpy_8b(sp[1], sw[1], sh[1], ss[2], ds[2], dp[2]);
  kimgp_cpy_8b(sp[2], sw[2], sh[2], ss[1], ds[1], dp[1]);
}

// Vertical halving of each chroma plane, kept (a = 1) or crossed (a = 2).
static void HalveChroma(KELO_CSC_PARAMS, int a) {
  CopyLuma(sp, sw, sh, ss, ds, dp);
  const int b = 3 - a;
  kimgp_csc_1x2_to_1x1(sp[1], sw[1], sh[1], ss[1], ds[a], dp[a]);
  kimgp_csc_1x2_to_1x1(sp[2], sw[2], sh[2], ss[2], ds[b], dp[b]);
}
KELO_EXPORT void kimgp_csc_yuv422n_to_yuv420(KELO_CSC_PARAMS) { HalveChroma(sp, sw, sh, ss, ds, dp, 1); }
KELO_EXPORT void kimgp_csc_yuv422n_to_yv12(KELO_CSC_PARAMS) { HalveChroma(sp, sw, sh, ss, ds, dp, 2); }
KELO_EXPORT void kimgp_csc_yv16_to_yuv420(KELO_CSC_PARAMS) { HalveChroma(sp, sw, sh, ss, ds, dp, 2); }
KELO_EXPORT void kimgp_csc_yv16_to_yv12(KELO_CSC_PARAMS) { HalveChroma(sp, sw, sh, ss, ds, dp, 1); }

// The chroma plane split: the first byte of each pair to plane `a`.
static void SplitChroma(KELO_CSC_PARAMS, int a) {
  CopyLuma(sp, sw, sh, ss, ds, dp);
  const int b = 3 - a;
  kimgp_csc_8b8b_unpck(sp[1], 2 * sw[1], sh[1], ss[1], ds[a], ds[b], dp[a], dp[b]);
}
KELO_EXPORT void kimgp_csc_nv12_to_yuv420(KELO_CSC_PARAMS) { SplitChroma(sp, sw, sh, ss, ds, dp, 1); }
KELO_EXPORT void kimgp_csc_nv12_to_yv12(KELO_CSC_PARAMS) { SplitChroma(sp, sw, sh, ss, ds, dp, 2); }
KELO_EXPORT void kimgp_csc_nv21_to_yuv420(KELO_CSC_PARAMS) { SplitChroma(sp, sw, sh, ss, ds, dp, 2); }
KELO_EXPORT void kimgp_csc_nv21_to_yv12(KELO_CSC_PARAMS) { SplitChroma(sp, sw, sh, ss, ds, dp, 1); }

// Pairs copied as 16-bit samples, then swapped in place over dst.stride[1]
// times height / 2 bytes (with an odd height the last chroma row stays).
KELO_EXPORT void kimgp_csc_nv21_to_nv12(KELO_CSC_PARAMS) {
  CopyLuma(sp, sw, sh, ss, ds, dp);
  kimgp_cpy_16b(sp[1], sw[1], sh[1], ss[1], ds[1], dp[1]);
  kimgp_csc_swap_8byte8(dp[1], ds[1], sh[0] / 2);
}

// Luma in order; chroma of each row pair: the even row's U and V, then on the
// odd row (stored + this) >> 1. An odd last row keeps the even row's values.
KELO_EXPORT void kimgp_csc_yuyv_to_yuv420(KELO_CSC_PARAMS) {
  const int32_t w = sw[0], h = sh[0];
  if (w < 1) return;
  const size_t pairs = size_t(w) / 2;
  Rows(h, [&](int32_t r) {
    const uint8_t* s = Row(sp[0], ss[0], r);
    kelo::csc::Even(s, Row(dp[0], ds[0], r), size_t(w));
    uint8_t* u = Row(dp[1], ds[1], r / 2);
    uint8_t* v = Row(dp[2], ds[2], r / 2);
    for (size_t k = 0; k < pairs; ++k) {
      const uint8_t su = s[4 * k + 1], sv = s[4 * k + 3];
      if (r & 1) {
        u[k] = static_cast<uint8_t>((u[k] + su) >> 1);
        v[k] = static_cast<uint8_t>((v[k] + sv) >> 1);
      } else {
        u[k] = su;
        v[k] = sv;
      }
    }
  });
}

// Grey replication without range expansion.
KELO_EXPORT void kimgp_csc_yuv400_to_rgb565(KELO_CSC_PARAMS) {
  if (sw[0] < 1) return;
  Rows(sh[0], [&](int32_t r) {
    kelo::csc::GreyTo565(Row(sp[0], ss[0], r), Row(dp[0], ds[0], r), size_t(sw[0]));
  });
}
KELO_EXPORT void kimgp_csc_yuv400_to_rgb888(KELO_CSC_PARAMS) {
  if (sw[0] < 1) return;
  Rows(sh[0], [&](int32_t r) {
    kelo::csc::GreyTo888(Row(sp[0], ss[0], r), Row(dp[0], ds[0], r), size_t(sw[0]));
  });
}

KELO_EXPORT void kimgp_csc_rgb888_to_rgb565(KELO_CSC_PARAMS) {
  if (sw[0] < 1) return;
  Rows(sh[0], [&](int32_t r) {
    kelo::csc::Rgb888To565(Row(sp[0], ss[0], r), Row(dp[0], ds[0], r), size_t(sw[0]));
  });
}
