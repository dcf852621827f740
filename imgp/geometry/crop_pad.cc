// Crop, padding and stereo frame packing: whole rows through the library's
// block copy and fill; the anaglyph row kernel blends two views' bytes.
#include "common/internal/simd.h"

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/geometry/crop_pad.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "imgp/geometry/frame_pack.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Three vectors (a multiple of three bytes) per step: bytes whose offset in
// the row is a multiple of 3 (red) from the red view, the others from the
// green-blue view. With `stream`, the first pixels go one by one until the
// destination is vector-aligned and the bulk is stored past the caches. The
// remaining pixels go to the scalar row. 128-bit vectors on every target:
// with 256- and 512-bit streaming stores the row measured 1.4-2.2x slower.
void PackAnaglyphRowVec(const uint8_t* red, const uint8_t* gb, uint8_t* dst, size_t pixels,
                        bool stream) {
  const hn::CappedTag<uint8_t, 16> d;
  const size_t N = hn::Lanes(d);
  const size_t bytes = 3 * pixels;
  size_t head = 0;
  // 3 and a power-of-two N are coprime: some head below N aligns the store.
  while (stream && head < pixels && reinterpret_cast<uintptr_t>(dst + 3 * head) % N != 0) ++head;
  scalar::PackAnaglyphRow(red, gb, dst, head);
  size_t i = 3 * head;
  if (bytes - i >= 3 * N) {
    HWY_ALIGN uint8_t phase[3 * HWY_MAX_BYTES];
    for (size_t j = 0; j < 3 * N; ++j) phase[j] = static_cast<uint8_t>(j % 3);
    const auto zero = hn::Zero(d);
    const auto m0 = hn::Eq(hn::Load(d, phase), zero);
    const auto m1 = hn::Eq(hn::LoadU(d, phase + N), zero);
    const auto m2 = hn::Eq(hn::LoadU(d, phase + 2 * N), zero);
    for (; i + 3 * N <= bytes; i += 3 * N) {
      const auto o0 = hn::IfThenElse(m0, hn::LoadU(d, red + i), hn::LoadU(d, gb + i));
      const auto o1 = hn::IfThenElse(m1, hn::LoadU(d, red + i + N), hn::LoadU(d, gb + i + N));
      const auto o2 =
          hn::IfThenElse(m2, hn::LoadU(d, red + i + 2 * N), hn::LoadU(d, gb + i + 2 * N));
      if (stream) {
        hn::Stream(o0, d, dst + i);
        hn::Stream(o1, d, dst + i + N);
        hn::Stream(o2, d, dst + i + 2 * N);
      } else {
        hn::StoreU(o0, d, dst + i);
        hn::StoreU(o1, d, dst + i + N);
        hn::StoreU(o2, d, dst + i + 2 * N);
      }
    }
  }
  scalar::PackAnaglyphRow(red + i, gb + i, dst + i, pixels - i / 3);
}

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_HAVE_HWY

#if !KELO_HAVE_HWY || HWY_ONCE
#include <atomic>

#include "common/fill_rows.h"
#include "common/internal/api.h"
#include "imgp/core/copy_rows.h"
#include "imgp/geometry/frame_pack.h"
#include "kimgp_frame.h"

namespace kelo {

KELO_VEC_EXPORT(PackAnaglyphRowVec);

namespace {

// The scalar row; it has no streaming stores.
[[maybe_unused]] void PackAnaglyphRowScalar(const uint8_t* red, const uint8_t* gb,
                                             uint8_t* dst, size_t pixels, bool /*stream*/) {
  scalar::PackAnaglyphRow(red, gb, dst, pixels);
}

}  // namespace

void PackAnaglyphRow(const uint8_t* red, const uint8_t* gb, uint8_t* dst, size_t pixels,
                     bool stream) {
  KELO_VEC_CALL(PackAnaglyphRowVec, PackAnaglyphRowScalar)(red, gb, dst, pixels, stream);
}

namespace {

// Byte x_bytes of row `row` of a plane.
uint8_t* At(uint8_t* plane, int32_t stride, int64_t row, int64_t x_bytes) {
  return plane + row * stride + x_bytes;
}

// `rows` rows of `row_bytes` bytes from byte sx of row sy of source plane i
// to byte dx of row dy of destination plane i.
void CopyRegion(const kimgp_img* src, int i, int64_t sx, int64_t sy, kimgp_img* dst,
                int64_t dx, int64_t dy, int64_t row_bytes, int32_t rows) {
  CopyRows(At(src->plane[i], src->stride[i], sy, sx), src->stride[i],
           At(dst->plane[i], dst->stride[i], dy, dx), dst->stride[i], row_bytes, rows);
}

// Plane i of dst, buf_height x stride bytes, set to `value` except where the
// copy that follows writes: the rows [y, y + rows) from byte x for w bytes.
// The bytes end as a fill of the whole buffer followed by the copy would
// leave them, with less memory traffic: the bytes between one row's copied
// run and the next row's are one run of the fill. A rectangle outside the
// buffer (which only a caller's negative offsets make) fills everything.
void FillAround(kimgp_img* dst, int i, uint8_t value, int64_t x, int64_t y, int64_t w,
                int64_t rows) {
  const int64_t stride = dst->stride[i], total = stride * dst->buf_height[i];
  if (total <= 0) return;
  uint8_t* p = dst->plane[i];
  const uint32_t word = value * 0x01010101u;
  auto fill = [&](int64_t from, int64_t to) {
    if (to > from) FillWord(p + from, word, static_cast<size_t>(to - from));
  };
  if (x < 0 || y < 0 || w < 1 || rows < 1 || x + w > stride || (y + rows) * stride > total) {
    return fill(0, total);
  }
  int64_t from = 0;
  for (int64_t r = y; r < y + rows; ++r) {
    fill(from, r * stride + x);
    from = r * stride + x + w;
  }
  fill(from, total);
}

// Bytes per pixel of packed RGB codes that crop (all of 5xx) and padding
// (500 and 501 only) take; 0 for the rest.
int RgbPixelBytes(int32_t cs, bool padding) {
  switch (cs) {
    case KIMGP_CS_RGB888:
    case KIMGP_CS_BGR888:
      return 3;
    case KIMGP_CS_RGBA8888:
    case KIMGP_CS_BGRA8888:
      return 4;
    case KIMGP_CS_ARGB8888:
    case KIMGP_CS_ABGR8888:
      return padding ? 0 : 4;
    default:
      return 0;
  }
}

int64_t ChromaOffset(int32_t v) { return (int64_t{v} + 1) >> 1; }

// Whether the chroma of a YUV source placed at its (x, y) stays inside the
// destination's chroma planes. The chroma offsets round up, so a frame that
// fits in luma can still reach one row or sample past the chroma plane (a
// 3-row source at row 1 of a 4-row destination).
bool ChromaFits(const kimgp_img* src, const kimgp_img* dst) {
  const int64_t cy = ChromaOffset(src->y);
  switch (src->cs) {
    case KIMGP_CS_NV12:
    case KIMGP_CS_NV21:
      return cy + src->height[1] <= dst->height[1];
    case KIMGP_CS_YUV420:
      for (int i = 1; i < 3; ++i) {
        if (ChromaOffset(src->x) + int64_t{src->width[i]} > dst->width[i] ||
            cy + src->height[i] > dst->height[i]) {
          return false;
        }
      }
      return true;
    default:
      return true;
  }
}

}  // namespace
}  // namespace kelo

using kelo::ChromaFits;
using kelo::ChromaOffset;
using kelo::CopyRegion;

KELO_EXPORT int32_t kimgp_crop(const kimgp_img* src, kimgp_img* dst) {
  const int32_t cs = src->cs;
  const int64_t x = src->x, y = src->y;
  if (const int n = kelo::RgbPixelBytes(cs, false)) {
    CopyRegion(src, 0, n * x, y, dst, 0, 0, int64_t{n} * dst->width[0], dst->height[0]);
    return KIMGP_OK;
  }
  switch (cs) {
    case KIMGP_CS_NV12:
    case KIMGP_CS_NV21:
      CopyRegion(src, 0, x, y, dst, 0, 0, dst->width[0], dst->height[0]);
      CopyRegion(src, 1, x, ChromaOffset(src->y), dst, 0, 0, dst->width[0], dst->height[1]);
      return KIMGP_OK;
    case KIMGP_CS_YUV420:
      CopyRegion(src, 0, x, y, dst, 0, 0, dst->width[0], dst->height[0]);
      for (int i = 1; i < 3; ++i) {
        CopyRegion(src, i, ChromaOffset(src->x), ChromaOffset(src->y), dst, 0, 0,
                   dst->width[i], dst->height[i]);
      }
      return KIMGP_OK;
    default:
      return KIMGP_ERR_UNSUPPORTED;
  }
}

KELO_EXPORT int32_t kimgp_padding(const kimgp_img* src, kimgp_img* dst) {
  const int64_t x = src->x, y = src->y;
  if (x < 0 || y < 0 || dst->width[0] < x + src->width[0] ||
      dst->height[0] < y + src->height[0] || !ChromaFits(src, dst)) {
    return KIMGP_ERR_ARGS;
  }
  const int32_t cs = src->cs;
  if (const int n = kelo::RgbPixelBytes(cs, true)) {
    kelo::FillAround(dst, 0, 0, n * x, y, int64_t{n} * src->width[0], src->height[0]);
    CopyRegion(src, 0, 0, 0, dst, n * x, y, int64_t{n} * src->width[0], src->height[0]);
    return KIMGP_OK;
  }
  switch (cs) {
    case KIMGP_CS_NV12:
    case KIMGP_CS_NV21:
      kelo::FillAround(dst, 0, 16, x, y, src->width[0], src->height[0]);
      kelo::FillAround(dst, 1, 128, x, ChromaOffset(src->y), src->width[0], src->height[1]);
      CopyRegion(src, 0, 0, 0, dst, x, y, src->width[0], src->height[0]);
      CopyRegion(src, 1, 0, 0, dst, x, ChromaOffset(src->y), src->width[0], src->height[1]);
      return KIMGP_OK;
    case KIMGP_CS_YUV420:
      kelo::FillAround(dst, 0, 16, x, y, src->width[0], src->height[0]);
      CopyRegion(src, 0, 0, 0, dst, x, y, src->width[0], src->height[0]);
      for (int i = 1; i < 3; ++i) {
        kelo::FillAround(dst, i, 128, ChromaOffset(src->x), ChromaOffset(src->y), src->width[i],
                         src->height[i]);
        CopyRegion(src, i, 0, 0, dst, ChromaOffset(src->x), ChromaOffset(src->y),
                   src->width[i], src->height[i]);
      }
      return KIMGP_OK;
    default:
      return KIMGP_ERR_UNSUPPORTED;
  }
}

// Outputs larger than kelo::kStreamBytes are written past the caches: a
// frame that size is not read back from them anyway.
KELO_EXPORT void kimgp_fpa_frm_pack(const uint8_t* red_view, const uint8_t* gb_view,
                                    uint8_t* dst, int32_t width, int32_t height,
                                    int32_t src_stride, int32_t dst_stride) {
  if (width < 1 || height < 1) return;
  const bool stream = int64_t{3} * width * height >= kelo::kStreamBytes;
  for (int32_t r = 0; r < height; ++r) {
    kelo::PackAnaglyphRow(red_view + int64_t{r} * src_stride,
                          gb_view + int64_t{r} * src_stride,
                          dst + int64_t{r} * dst_stride, static_cast<size_t>(width), stream);
  }
  // Streaming stores are weakly ordered: complete them before returning.
  if (stream) std::atomic_thread_fence(std::memory_order_seq_cst);
}

KELO_EXPORT int32_t kimgp_fpa(const kimgp_img* src, kimgp_img* dst, int32_t order) {
  if (src->cs != KIMGP_CS_RGB888 || dst->cs != src->cs) return KIMGP_ERR_ARGS;
  if (int64_t{src->width[0]} != 2 * int64_t{dst->width[0]}) return KIMGP_ERR_ARGS;
  if (src->height[0] != dst->height[0]) return KIMGP_ERR_ARGS;
  if (int64_t{src->stride[0]} != 3 * int64_t{src->width[0]}) return KIMGP_ERR_ARGS;
  if (int64_t{src->stride[0]} != 2 * int64_t{dst->stride[0]}) return KIMGP_ERR_ARGS;
  const uint8_t* left = src->plane[0];
  const uint8_t* right = left + dst->stride[0];
  if (order != 1 && order != 2) return KIMGP_ERR_ARGS;
  const uint8_t* red = order == 1 ? left : right;
  const uint8_t* gb = order == 1 ? right : left;
  kimgp_fpa_frm_pack(red, gb, dst->plane[0], dst->width[0], src->height[0], src->stride[0],
                     dst->stride[0]);
  return KIMGP_OK;
}

#endif  // !KELO_HAVE_HWY || HWY_ONCE
