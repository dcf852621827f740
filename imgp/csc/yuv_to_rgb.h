// YUV to RGB: the scalar definition (image driver and row) shared by every
// exported kernel, and the entry that runs a kernel with the vector rows.
#ifndef KELO_IMGP_CSC_YUV_TO_RGB_H_
#define KELO_IMGP_CSC_YUV_TO_RGB_H_

#include <cstdint>

#include "imgp/csc/csc_arith.h"
#include "imgp/csc/pixel_layouts.h"

namespace kelo {
namespace csc {

// Matrices of the YUV to RGB family.
enum class YuvMatrix { kBt601Limited, kBt709Limited, kBt601Full, kBt709Full };

template <YuvMatrix M>
inline void YuvToRgbPixel(int y, int u, int v, int* r, int* g, int* b) {
  if (M == YuvMatrix::kBt601Limited) ScaledYuvToRgb<Bt601Limited>(y, u, v, r, g, b);
  if (M == YuvMatrix::kBt709Limited) ScaledYuvToRgb<Bt709Limited>(y, u, v, r, g, b);
  if (M == YuvMatrix::kBt601Full) FullYuvToRgb<Bt601Full>(y, u, v, r, g, b);
  if (M == YuvMatrix::kBt709Full) FullYuvToRgb<Bt709Full>(y, u, v, r, g, b);
}

// A limited-range matrix as one saturating 16-bit sum per channel, for the
// vector rows. With h = kCy / 2, a luma bias kK and P the chroma and constant
// part of a channel's sum (sum = kCy Y + P, result = clamp(sum >> 8)):
//   R:    floor(sum / 2) = Ys + Tr,         Ys = h Y - kK, Tr = floor(P / 2) + kK
//   G, B: floor(sum / 4) = (Ys >> 1) + T,   T = P / 4 + kK / 2
// (exact because 2 divides kCy, 4 divides the G and B chroma coefficients and
// the constant, and kK is even). Then R = clamp((Ys + Tr) >> 7) and G, B =
// clamp(((Ys >> 1) + T) >> 6). Every term fits int16, and where the true sum
// does not, a saturated sum still clamps the same way. In terms of the
// unsigned samples U and V:
//   Tr = floor(kRv V / 2) + kR0,  Tg = kG0 - kGuQ U - kGvQ V,  Tb = kBuQ U + kB0.
template <class Mx>
struct Sat16 {
  static constexpr int kH = Mx::kCy / 2;
  static constexpr int kK = 8192;
  static constexpr int kC0 = 128 - Mx::kCy * Mx::kYOffset;
  static constexpr int kR0 = (kC0 - 128 * Mx::kRv) / 2 + kK;
  // floor(kRv V / 2) is the high half of (V << 8) kRvMul.
  static constexpr int kRvMul = Mx::kRv * 128;
  static constexpr int kGuQ = -Mx::kGu / 4, kGvQ = -Mx::kGv / 4, kBuQ = Mx::kBu / 4;
  static constexpr int kG0 = (kC0 - 128 * (Mx::kGu + Mx::kGv)) / 4 + kK / 2;
  static constexpr int kB0 = (kC0 - 128 * Mx::kBu) / 4 + kK / 2;

  static constexpr bool In16(int lo, int hi) { return lo >= -32768 && hi <= 32767; }
  static constexpr bool kFits =
      Mx::kCy % 2 == 0 && kH * 256 <= 65535 && Mx::kRv > 0 && Mx::kRv * 128 <= 65535 &&
      (kC0 - 128 * Mx::kRv) % 2 == 0 && Mx::kGu <= 0 && Mx::kGv <= 0 && Mx::kBu >= 0 &&
      Mx::kGu % 4 == 0 && Mx::kGv % 4 == 0 && Mx::kBu % 4 == 0 &&
      (kC0 - 128 * (Mx::kGu + Mx::kGv)) % 4 == 0 && (kC0 - 128 * Mx::kBu) % 4 == 0 &&
      kGuQ * 256 <= 65535 && kGvQ * 256 <= 65535 && kBuQ * 256 <= 65535 &&
      In16(-kK, 255 * kH - kK) && In16(kR0, kR0 + Mx::kRv * 255 / 2) &&
      In16(kG0 - 255 * (kGuQ + kGvQ), kG0) && In16(kB0, kB0 + 255 * kBuQ);
};
static_assert(Sat16<Bt601Limited>::kFits, "BT.601 limited fits 16-bit sums");

namespace scalar {

// Pixels [x0, n) of one row.
template <class Src, class Dst, YuvMatrix M>
void YuvToRgbRow(const YuvRow& row, uint8_t* dst, int x0, int n) {
  for (int x = x0; x < n; ++x) {
    int y, u, v, r, g, b;
    Src::Pixel(row, x, &y, &u, &v);
    YuvToRgbPixel<M>(y, u, v, &r, &g, &b);
    Dst::Store(dst + x * Dst::kBytes, r, g, b);
  }
}

}  // namespace scalar

// One row converter: pixels [0, n).
using YuvToRgbRowFn = void (*)(const YuvRow& row, uint8_t* dst, int n);
// Two rows that share their chroma row: pixels [0, n) of each.
using YuvToRgbRow2Fn = void (*)(const YuvRow& row0, const YuvRow& row1, uint8_t* dst0,
                                uint8_t* dst1, int n);

// A row converter and, for layouts with one chroma row per two rows, its
// two-row form (null otherwise).
struct YuvToRgbRows {
  YuvToRgbRowFn one;
  YuvToRgbRow2Fn two;
};

// The image walk shared by every member. A width that is a multiple of 4
// converts rows of exactly that width with chroma row r / 2. Any other width
// takes the pixel-pair path: pairs until the count is used up (an odd width
// writes one pixel beyond the row), and with an odd height the chroma row
// moves down after row 0 (chroma row (r + 1) / 2). row_at(r, crow) gives the
// source row pointers.
//
// YuvToRgbWalkRows gives the walk's rows from r0 on, one at a time, as
// each(r, crow, n): the row, its chroma row and the pixel count converted.
template <bool kVertHalf, class Each>
void YuvToRgbWalkRows(int w, int h, int r0, Each each) {
  const bool pairs = (w % 4) != 0;
  const int n = pairs ? (w + 1) & ~1 : w;
  const bool shifted = pairs && (h & 1);
  for (int r = r0; r < h; ++r) each(r, kVertHalf ? (shifted ? (r + 1) >> 1 : r >> 1) : r, n);
}

template <bool kVertHalf, class RowAt>
void YuvToRgbWalk(int w, int h, RowAt row_at, uint8_t* dst, int32_t dst_stride,
                  YuvToRgbRows rows) {
  if (w <= 0 || h <= 0) return;
  int r = 0;
  if (kVertHalf && w % 4 == 0 && rows.two != nullptr) {
    for (; r + 1 < h; r += 2) {
      rows.two(row_at(r, r >> 1), row_at(r + 1, r >> 1), dst + static_cast<intptr_t>(r) * dst_stride,
               dst + static_cast<intptr_t>(r + 1) * dst_stride, w);
    }
  }
  YuvToRgbWalkRows<kVertHalf>(w, h, r, [&](int y, int crow, int n) {
    rows.one(row_at(y, crow), dst + static_cast<intptr_t>(y) * dst_stride, n);
  });
}

// What the YV12 members do before they run the YUV420 member: exchange
// plane[1] with plane[2] and stride[1] with stride[2] of the caller's source
// descriptor (and leave them exchanged).
inline void ExchangeChroma(uint8_t** sp, int32_t* ss) {
  uint8_t* p = sp[1];
  sp[1] = sp[2];
  sp[2] = p;
  const int32_t s = ss[1];
  ss[1] = ss[2];
  ss[2] = s;
}

template <class Src>
void YuvToRgbImage(uint8_t* const* sp, const int32_t* sw, const int32_t* sh,
                   const int32_t* ss, const int32_t* ds, uint8_t* const* dp,
                   YuvToRgbRows rows) {
  YuvToRgbWalk<Src::kVertHalf>(
      sw[0], sh[0], [&](int r, int crow) { return Src::Row(sp, ss, r, crow); }, dp[0], ds[0],
      rows);
}

}  // namespace csc
}  // namespace kelo

// Every (source, destination, matrix) row the kernels use, once. The vector
// row table of each target and the scalar table are generated from it.
#define KELO_YUV_TO_RGB_ROWS(X)                                              \
  X(I420, Rgb565, kBt601Limited) X(I420, Bgr565, kBt601Limited)              \
  X(I420, Rgb888, kBt601Limited) X(I420, Bgr888, kBt601Limited)              \
  X(I420, Rgba8888, kBt601Limited) X(I420, Bgra8888, kBt601Limited)          \
  X(I420, Argb8888, kBt601Limited) X(I420, Abgr8888, kBt601Limited)          \
  X(I422, Rgb565, kBt601Limited) X(I422, Bgr565, kBt601Limited)              \
  X(I422, Rgb888, kBt601Limited) X(I422, Bgr888, kBt601Limited)              \
  X(I422, Rgba8888, kBt601Limited) X(I422, Bgra8888, kBt601Limited)          \
  X(I422, Argb8888, kBt601Limited) X(I422, Abgr8888, kBt601Limited)          \
  X(I444, Rgb565, kBt601Limited) X(I444, Bgr565, kBt601Limited)              \
  X(I444, Rgb888, kBt601Limited) X(I444, Bgr888, kBt601Limited)              \
  X(I444, Rgba8888, kBt601Limited) X(I444, Bgra8888, kBt601Limited)          \
  X(I444, Argb8888, kBt601Limited) X(I444, Abgr8888, kBt601Limited)          \
  X(Nv12, Rgb565, kBt601Limited) X(Nv12, Bgr565, kBt601Limited)              \
  X(Nv12, Rgb888, kBt601Limited) X(Nv12, Bgr888, kBt601Limited)              \
  X(Nv12, Rgba8888, kBt601Limited) X(Nv12, Bgra8888, kBt601Limited)          \
  X(Nv12, Argb8888, kBt601Limited) X(Nv12, Abgr8888, kBt601Limited)          \
  X(Nv21, Rgb565, kBt601Limited) X(Nv21, Bgr565, kBt601Limited)              \
  X(Nv21, Rgb888, kBt601Limited) X(Nv21, Bgr888, kBt601Limited)              \
  X(Nv21, Rgba8888, kBt601Limited) X(Nv21, Bgra8888, kBt601Limited)          \
  X(Nv21, Argb8888, kBt601Limited) X(Nv21, Abgr8888, kBt601Limited)          \
  X(Uyvy, Rgb565, kBt601Limited) X(Uyvy, Bgr565, kBt601Limited)              \
  X(Uyvy, Rgb888, kBt601Limited) X(Uyvy, Bgr888, kBt601Limited)              \
  X(Uyvy, Rgba8888, kBt601Limited) X(Uyvy, Bgra8888, kBt601Limited)          \
  X(Uyvy, Argb8888, kBt601Limited) X(Uyvy, Abgr8888, kBt601Limited)          \
  X(Yuyv, Rgb565, kBt601Limited) X(Yuyv, Bgr565, kBt601Limited)              \
  X(Yuyv, Rgb888, kBt601Limited) X(Yuyv, Bgr888, kBt601Limited)              \
  X(Yuyv, Rgba8888, kBt601Limited) X(Yuyv, Bgra8888, kBt601Limited)          \
  X(Yuyv, Argb8888, kBt601Limited) X(Yuyv, Abgr8888, kBt601Limited)          \
  X(I420, Rgba8888, kBt709Limited) X(I420, Rgba8888, kBt601Full)             \
  X(Nv12, Rgba8888, kBt601Full) X(Nv21, Rgba8888, kBt601Full)                \
  X(I420, Rgba8888, kBt709Full)

namespace kelo {
namespace csc {

#define KELO_ROW_ID(S, D, M) kRow_##S##_##D##_##M,
enum YuvToRgbRowId { KELO_YUV_TO_RGB_ROWS(KELO_ROW_ID) kYuvToRgbRowCount };
#undef KELO_ROW_ID

// The row converters of the running CPU's best path for a row id.
YuvToRgbRows YuvToRgbRowFor(YuvToRgbRowId id);
// The scalar row converter for a row id (the reference in tests).
YuvToRgbRows ScalarYuvToRgbRowFor(YuvToRgbRowId id);

}  // namespace csc
}  // namespace kelo

#endif  // KELO_IMGP_CSC_YUV_TO_RGB_H_
