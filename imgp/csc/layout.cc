// YUV layout conversions: the exported row helpers and layout kernels.
// Samples are moved, never changed (except the YUYV chroma average and the
// 16-bit narrowing).
#include <algorithm>
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

namespace kelo {
namespace csc {
namespace {

// Bytes of the run that kimgp_csc_swap_8byte8 swaps: (stride & 0xFFFF) *
// (rows & 0xFFFF), rounded down to whole pairs.
size_t SwapRunBytes(int32_t stride, int32_t rows) {
  return ((uint32_t(stride) & 0xFFFF) * (uint32_t(rows) & 0xFFFF)) & ~size_t{1};
}

// kimgp_cpy_16b of the chroma plane followed by kimgp_csc_swap_8byte8 over
// swap_rows rows, in one pass: copied pairs are written swapped, the rest of
// the swapped run (row padding, rows beyond the copy) is swapped in place.
// Returns false, having written nothing, where that pass would not give the
// two steps' bytes: destination rows out of order or overlapping each other,
// or source and destination overlapping.
bool CopySwapped(const uint8_t* src, int32_t w, int32_t h, int32_t ss, int32_t ds,
                 uint8_t* dst, int32_t swap_rows) {
  if (w < 1 || h < 1) return false;
  const size_t row = 2 * size_t(w);
  // The copy's row steps: one block when both halved strides equal the width.
  const bool block = ss / 2 == w && ds / 2 == w;
  const int64_t src_step = block ? int64_t(row) : ss & ~1;
  const int64_t dst_step = block ? int64_t(row) : ds & ~1;
  if (dst_step < int64_t(row) || src_step < 0) return false;
  const size_t run = SwapRunBytes(ds, swap_rows);
  const size_t dst_end = std::max(run, size_t(dst_step) * size_t(h - 1) + row);
  const size_t src_end = size_t(src_step) * size_t(h - 1) + row;
  const auto s0 = reinterpret_cast<uintptr_t>(src), d0 = reinterpret_cast<uintptr_t>(dst);
  if (s0 < d0 + dst_end && d0 < s0 + src_end) return false;
  // Rows without padding on either side are one row.
  size_t rows = size_t(h), bytes = row;
  if (src_step == int64_t(row) && dst_step == int64_t(row)) bytes *= rows, rows = 1;
  // Row starts are even, so pairs of the run never straddle a row's ends.
  size_t done = 0;
  auto swap_to = [&](size_t end) {
    end = std::min(end, run);
    if (end > done) SwapPairs(dst + done, dst + done, (end - done) / 2);
  };
  for (size_t r = 0; r < rows; ++r) {
    const size_t at = size_t(dst_step) * r;
    const uint8_t* s = src + size_t(src_step) * r;
    swap_to(at);
    const size_t swapped = run > at ? std::min(run - at, bytes) : 0;
    SwapPairs(s, dst + at, swapped / 2);
    if (bytes > swapped) CopyBytes(s + swapped, dst + at + swapped, bytes - swapped);
    done = at + bytes;
  }
  swap_to(run);
  return true;
}

}  // namespace
}  // namespace csc
}  // namespace kelo

// One contiguous run of (stride & 0xFFFF) * (rows & 0xFFFF) bytes, padding
// included.
KELO_EXPORT void kimgp_csc_swap_8byte8(uint8_t* plane, int32_t stride, int32_t rows) {
  kelo::csc::SwapPairs(plane, kelo::csc::SwapRunBytes(stride, rows) / 2);
}

namespace {
void CopyLuma(uint8_t** sp, const int32_t* sw, const int32_t* sh, const int32_t* ss,
              const int32_t* ds, uint8_t** dp) {
  kimgp_cpy_8b(sp[0], sw[0], sh[0], ss[0], ds[0], dp[0]);
}
}  // namespace

KELO_EXPORT void kimgp_csc_yuv420Planar16_to_yuv420Planar(KELO_CSC_PARAMS) {
  for (int i = 0; i < 3; ++i) {
    if (sw[i] < 1) continue;
    if (sh[i] > 0 && ss[i] == int64_t{2} * sw[i] && ds[i] == sw[i]) {
      // Rows without padding: one run.
      kelo::csc::Narrow16(sp[i], dp[i], size_t(sw[i]) * size_t(sh[i]));
      continue;
    }
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
  // Bytes of a pair row; a width below 1 (or one whose pairs no row holds)
  // splits nothing.
  const int64_t bytes = int64_t{2} * sw[1];
  const int32_t row = bytes > 0 && bytes <= INT32_MAX ? static_cast<int32_t>(bytes) : 0;
  kimgp_csc_8b8b_unpck(sp[1], row, sh[1], ss[1], ds[a], ds[b], dp[a], dp[b]);
}
KELO_EXPORT void kimgp_csc_nv12_to_yuv420(KELO_CSC_PARAMS) { SplitChroma(sp, sw, sh, ss, ds, dp, 1); }
KELO_EXPORT void kimgp_csc_nv12_to_yv12(KELO_CSC_PARAMS) { SplitChroma(sp, sw, sh, ss, ds, dp, 2); }
KELO_EXPORT void kimgp_csc_nv21_to_yuv420(KELO_CSC_PARAMS) { SplitChroma(sp, sw, sh, ss, ds, dp, 2); }
KELO_EXPORT void kimgp_csc_nv21_to_yv12(KELO_CSC_PARAMS) { SplitChroma(sp, sw, sh, ss, ds, dp, 1); }

// Pairs copied as 16-bit samples, then swapped in place over dst.stride[1]
// times height / 2 bytes (with an odd height the last chroma row stays);
// where it can, one pass writes the same bytes.
KELO_EXPORT void kimgp_csc_nv21_to_nv12(KELO_CSC_PARAMS) {
  CopyLuma(sp, sw, sh, ss, ds, dp);
  if (kelo::csc::CopySwapped(sp[1], sw[1], sh[1], ss[1], ds[1], dp[1], sh[0] / 2)) return;
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
    uint8_t* y = Row(dp[0], ds[0], r);
    kelo::csc::YuyvToPlanar(s, y, Row(dp[1], ds[1], r / 2), Row(dp[2], ds[2], r / 2), pairs,
                            r & 1);
    if (w & 1) y[w - 1] = s[2 * (w - 1)];
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
