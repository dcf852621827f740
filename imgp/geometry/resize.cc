// kimgp_rsz and the per-layout resizers.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "common/internal/fault.h"
#include "common/internal/api.h"
#include "imgp/geometry/resize_up_kernels.h"
#include "kimgp_copy.h"
#include "kimgp_rsz.h"
#include "kimgp_rsz_rot.h"

namespace kelo {
namespace {

using DownMultFn = void (*)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t,
                            int32_t);
using DownNonMultFn = void (*)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t,
                               int32_t, int32_t, int32_t);
using DownWFn = void (*)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t);
using DownHFn = void (*)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t);
using UpFn = void (*)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t);
using UpHFn = void (*)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t);

// The kernels of one layout, whose units are `bytes` bytes. The vertical pass
// of the 3- and 4-byte layouts is the 8-bit one over rows of v_mul x dw
// bytes; the 5-6-5 kernels take strides in pixels. `in_place`: growing both
// ways writes the width pass straight to the destination (UpBothDispatch)
// instead of through the intermediate.
struct Resizer {
  DownMultFn down_mult;
  DownNonMultFn down_non_mult;
  DownWFn down_w;
  UpFn up, up_mode1;
  DownHFn down_h;
  UpHFn up_h, up_h_mode1;
  int32_t v_mul;
  int32_t stride_div;
  int32_t bytes;
  bool in_place;
};

#define KELO_RESIZER(h, v, v_mul, div, bytes)                                         \
  Resizer {                                                                          \
    kimgp_##h##_rsz_down_mult, kimgp_##h##_rsz_down_non_mult, kimgp_##h##_rsz_down_w, \
        kimgp_##h##_rsz_up, kimgp_##h##_rsz_up_mode1, kimgp_##v##_rsz_down_h,         \
        kimgp_##v##_rsz_up_h, kimgp_##v##_rsz_up_h_mode1, v_mul, div,                 \
        bytes, true                                                                   \
  }
constexpr Resizer k8b = KELO_RESIZER(8b, 8b, 1, 1, 1);
constexpr Resizer k8b8b = KELO_RESIZER(8b8b, 8b8b, 1, 1, 2);
constexpr Resizer k5b6b5b = KELO_RESIZER(5b6b5b, 5b6b5b, 1, 2, 2);
constexpr Resizer k8b8b8b = KELO_RESIZER(8b8b8b, 8b, 3, 1, 3);
constexpr Resizer k8b8b8b8b = KELO_RESIZER(8b8b8b8b, 8b, 4, 1, 4);
#undef KELO_RESIZER

// The rotating kernels of a layout and a turn. They take the plain kernels'
// arguments (sizes of the unrotated result), so the plain selection runs
// them; none of them is in kFixedSizes.
#define KELO_ROT_RESIZER(name, op)                                                         \
  Resizer {                                                                               \
    kimgp_##name##_rsz_rot_##op##_down_mult, kimgp_##name##_rsz_rot_##op##_down_non_mult, \
        kimgp_##name##_rsz_rot_##op##_down_w, kimgp_##name##_rsz_rot_##op##_up,           \
        kimgp_##name##_rsz_rot_##op##_up_mode1, kimgp_##name##_rsz_rot_##op##_down_h,     \
        kimgp_##name##_rsz_rot_##op##_up_h, kimgp_##name##_rsz_rot_##op##_up_h_mode1, 1, 1, \
        1, false                                                                            \
  }
constexpr Resizer k8b_rot_90l = KELO_ROT_RESIZER(8b, 90l);
constexpr Resizer k8b_rot_90r = KELO_ROT_RESIZER(8b, 90r);
constexpr Resizer k8b_rot_180 = KELO_ROT_RESIZER(8b, 180);
constexpr Resizer k8b8b_rot_90l = KELO_ROT_RESIZER(8b8b, 90l);
constexpr Resizer k8b8b_rot_90r = KELO_ROT_RESIZER(8b8b, 90r);
constexpr Resizer k8b8b_rot_180 = KELO_ROT_RESIZER(8b8b, 180);
#undef KELO_ROT_RESIZER

// The fixed-size 16-to-9 paths. The chroma entries ask for a source height
// of 360 in both rows, so the 640x290 chroma of a 1280x580 frame takes the
// general kernel while its luma takes the fixed one.
struct FixedSize {
  const Resizer* layout;
  int32_t sw, sh, dw, dh;
  DownNonMultFn fn;
};
constexpr FixedSize kFixedSizes[] = {
    {&k8b, 1280, 720, 720, 404, kimgp_8b_rsz_down_non_mult_720p_720x404},
    {&k8b, 1280, 580, 720, 326, kimgp_8b_rsz_down_non_mult_720p_720x404},
    {&k8b8b, 640, 360, 360, 202, kimgp_8b8b_rsz_down_non_mult_720p_720x404},
    {&k8b8b, 640, 360, 360, 163, kimgp_8b8b_rsz_down_non_mult_720p_720x404},
};

// n / d and n % d for n >= 0, d >= 1. Small quotients, those of the usual
// scale factors, are found by subtraction: 32-bit ARM has no divide
// instruction and calls a library routine for `/`.
struct QuotRem {
  int32_t q, r;
};
inline QuotRem Divide(int32_t n, int32_t d) {
  int32_t q = 0;
  for (int i = 0; i < 4 && n >= d; ++i) n -= d, ++q;
  if (n >= d) q += n / d, n %= d;
  return {q, n};
}

// Bytes of the intermediate Resize reads and writes: none when the sizes are
// refused, when both directions shrink, or when both grow through a layout
// that uses the destination as the intermediate; else every source row.
int64_t TmpBytes(const Resizer& k, int32_t sw, int32_t sh, int32_t dw, int32_t dh) {
  if (sw < 1 || dw < 1 || sh < 1 || dh < 1) return 0;
  if (dw < sw && dh < sh) return 0;
  if (dw >= sw && dh >= sh && k.in_place) return 0;
  return int64_t{dw} * k.bytes * sh;
}

// Intermediates up to this size live on kimgp_rsz's stack.
constexpr int64_t kStackTmpBytes = 32768;

int32_t Resize(const Resizer& k, const void* src, int32_t sw, int32_t sh, int32_t dw, int32_t dh,
               void* dst, void* tmp, int32_t ss, int32_t ds, int32_t mode) {
  if (sw < 1 || dw < 1) return KIMGP_ERR_ARGS;
  if (sh < 1 || dh < 1) return KIMGP_ERR_ARGS;
  if (k.stride_div == 2) ss /= 2, ds /= 2;
  const bool mode1 = mode == KIMGP_RSZ_MODE1;
  if (dw >= sw || dh >= sh) {
    // Two passes through the intermediate; an equal size grows by 1.
    const int32_t vw = dw * k.v_mul;
    auto width = [&](const void* s, void* t, int32_t rows) {
      if (dw < sw) {
        const QuotRem f = Divide(sw, dw);
        k.down_w(s, t, ss, dw, rows, f.q, f.r);
      } else {
        const QuotRem f = Divide(dw, sw);
        (mode1 ? k.up_mode1 : k.up)(s, t, dw, sw, rows, f.q, f.r, ss);
      }
    };
    if (dh < sh) {
      width(src, tmp, sh);
      const QuotRem f = Divide(sh, dh);
      k.down_h(tmp, dst, vw, ds, dh, f.q, f.r);
      return KIMGP_OK;
    }
    if (dw >= sw && k.in_place) {
      const auto* s = static_cast<const uint8_t*>(src);
      auto* d = static_cast<uint8_t*>(dst);
      const ptrdiff_t src_step = ptrdiff_t{ss} * k.stride_div;
      const ptrdiff_t dst_step = ptrdiff_t{ds} * k.stride_div;
      const bool rgb565 = k.stride_div == 2;
      // The vector path's plan needs memory; the scalar one does not.
      if (!UpBothDispatch(s, d, sw, sh, dw, dh, src_step, dst_step, k.bytes, rgb565, mode1)) {
        scalar::UpBothAny(s, d, sw, sh, dw, dh, src_step, dst_step, k.bytes, rgb565, mode1);
      }
      return KIMGP_OK;
    }
    width(src, tmp, sh);
    const QuotRem g = Divide(dh, sh);
    (mode1 ? k.up_h_mode1 : k.up_h)(tmp, dst, vw, sh, dh, g.q, g.r, ds);
    return KIMGP_OK;
  }
  const QuotRem w = Divide(sw, dw), h = Divide(sh, dh);
  if (w.r == 0 && h.r == 0) {
    k.down_mult(src, dst, dw, dh, w.q, ss, h.q * ss, ds);
    return KIMGP_OK;
  }
  DownNonMultFn fn = k.down_non_mult;
  for (const FixedSize& f : kFixedSizes) {
    if (f.layout == &k && f.sw == sw && f.sh == sh && f.dw == dw && f.dh == dh) fn = f.fn;
  }
  fn(src, dst, dw, dh, w.q, ss, h.q * ss, w.r, h.r, ds);
  return KIMGP_OK;
}

// Whole-number shrinks only, straight from source to destination.
int32_t ResizeWhole(DownMultFn fn, const void* src, int32_t sw, int32_t sh, int32_t dw,
                    int32_t dh, void* dst, int32_t ss, int32_t ds) {
  if (sw < 1 || dw < 1 || sh < 1 || dh < 1) return KIMGP_ERR_ARGS;
  const auto usw = static_cast<uint32_t>(sw), ush = static_cast<uint32_t>(sh);
  const auto udw = static_cast<uint32_t>(dw), udh = static_cast<uint32_t>(dh);
  if (udw / usw >= 1 || udh / ush >= 1) return KIMGP_ERR_UNSUPPORTED;
  if (usw % udw != 0 || ush % udh != 0) return KIMGP_ERR_UNSUPPORTED;
  const auto fw = static_cast<int32_t>(usw / udw), fh = static_cast<int32_t>(ush / udh);
  fn(src, dst, dw, dh, fw, ss, fh * ss, ds);
  return KIMGP_OK;
}

using CopyFn = void (*)(const void*, int32_t, int32_t, int32_t, int32_t, void*);

// How kimgp_rsz treats a colour-space code: codes in [first, last] resize
// `planes` planes with `layout`, or copy them with `copy` at equal sizes.
struct Route {
  enum Kind : uint8_t { kPlanes, kNv, kP010, kRefused };
  int32_t first, last;
  Kind kind;
  int planes;
  const Resizer* layout;
  CopyFn copy;
};
// First match wins.
constexpr Route kRoutes[] = {
    {KIMGP_CS_YUV400, KIMGP_CS_YUV400, Route::kPlanes, 1, &k8b, kimgp_cpy_8b},
    {KIMGP_CS_NV12, KIMGP_CS_NV21, Route::kNv, 2, &k8b, kimgp_cpy_8b},
    {KIMGP_CS_T64X32, KIMGP_CS_T64X32, Route::kRefused, 0, nullptr, nullptr},
    {1, 99, Route::kPlanes, 3, &k8b, kimgp_cpy_8b},
    {KIMGP_CS_RGB565, KIMGP_CS_BGR565, Route::kPlanes, 1, &k5b6b5b, kimgp_cpy_16b},
    {KIMGP_CS_RGB888, KIMGP_CS_BGR888, Route::kPlanes, 1, &k8b8b8b, kimgp_cpy_24b},
    {KIMGP_CS_RGBA8888, KIMGP_CS_ABGR8888, Route::kPlanes, 1, &k8b8b8b8b, kimgp_cpy_32b},
    {KIMGP_CS_P010LE, KIMGP_CS_P010LE, Route::kP010, 2, nullptr, nullptr},
};

const Route* FindRoute(int32_t cs) {
  for (const Route& r : kRoutes) {
    if (cs >= r.first && cs <= r.last) return &r;
  }
  return nullptr;
}

int32_t ResizeP010(const kimgp_img* s, kimgp_img* d, bool same) {
  if (same) {
    kimgp_cpy_16b(s->plane[0], s->width[0], s->height[0], s->stride[0], d->stride[0],
                  d->plane[0]);
    kimgp_cpy_16b(s->plane[1], 2 * s->width[1], s->height[1], s->stride[1], d->stride[1],
                  d->plane[1]);
    return KIMGP_OK;
  }
  // Plane 0 stays written when plane 1 fails.
  const int32_t st = kimgp_rsz_16b(s->plane[0], s->width[0], s->height[0], d->width[0],
                                   d->height[0], d->plane[0], s->stride[0], d->stride[0]);
  if (st != KIMGP_OK) return st;
  return kimgp_rsz_16b16b(s->plane[1], s->width[1], s->height[1], d->width[1], d->height[1],
                          d->plane[1], s->stride[1], d->stride[1]);
}

}  // namespace
}  // namespace kelo

KELO_EXPORT int32_t kimgp_rsz(const kimgp_img* src, kimgp_img* dst) {
  using namespace kelo;
  if (src->cs != dst->cs) return KIMGP_ERR_ARGS;
  const bool same = src->width[0] == dst->width[0] && src->height[0] == dst->height[0];
  const Route* r = FindRoute(src->cs);
  if (r == nullptr || r->kind == Route::kRefused) return KIMGP_ERR_UNSUPPORTED;
  if (r->kind == Route::kP010) return ResizeP010(src, dst, same);
  const bool nv = r->kind == Route::kNv;
  if (same) {
    // Only plane 0 decides; every plane is copied with its own sizes.
    if (nv) {
      kimgp_cpy_8b(src->plane[0], src->width[0], src->height[0], src->stride[0], dst->stride[0],
                   dst->plane[0]);
      kimgp_cpy_8b(src->plane[1], 2 * src->width[1], src->height[1], src->stride[1],
                   dst->stride[1], dst->plane[1]);
      return KIMGP_OK;
    }
    for (int i = 0; i < r->planes; ++i) {
      r->copy(src->plane[i], src->width[i], src->height[i], src->stride[i], dst->stride[i],
              dst->plane[i]);
    }
    return KIMGP_OK;
  }
  // One intermediate for every plane, as large as the largest plane needs:
  // on the stack when it is small, none when every plane shrinks.
  const Resizer* layouts[3] = {r->layout, nv ? &k8b8b : r->layout, r->layout};
  int64_t size = 0;
  for (int i = 0; i < r->planes; ++i) {
    size = std::max(size, TmpBytes(*layouts[i], src->width[i], src->height[i], dst->width[i],
                                   dst->height[i]));
  }
  if (static_cast<uint64_t>(size) > SIZE_MAX) return KIMGP_ERR_ARGS;
  alignas(16) uint8_t stack[kStackTmpBytes];
  void* tmp = stack;
  if (size > kStackTmpBytes) {
    tmp = HeapAlloc(static_cast<size_t>(size));
    if (tmp == nullptr) return KIMGP_ERR_ARGS;
  }
  int32_t st = KIMGP_OK;
  for (int i = 0; i < r->planes && st == KIMGP_OK; ++i) {
    st = Resize(*layouts[i], src->plane[i], src->width[i], src->height[i], dst->width[i],
                dst->height[i], dst->plane[i], tmp, src->stride[i], dst->stride[i],
                dst->rsz_mode);
  }
  if (tmp != stack) std::free(tmp);
  return st;
}

#define KELO_RESIZER_EXPORT(name)                                                          \
  KELO_EXPORT int32_t kimgp_rsz_##name(const void* src, int32_t src_width,                 \
                                       int32_t src_height, int32_t dst_width,              \
                                       int32_t dst_height, void* dst, void* tmp,           \
                                       int32_t src_stride, int32_t dst_stride,             \
                                       int32_t mode) {                                     \
    return kelo::Resize(kelo::k##name, src, src_width, src_height, dst_width, dst_height, \
                        dst, tmp, src_stride, dst_stride, mode);                           \
  }
KELO_RESIZER_EXPORT(8b)
KELO_RESIZER_EXPORT(8b8b)
KELO_RESIZER_EXPORT(5b6b5b)
KELO_RESIZER_EXPORT(8b8b8b)
KELO_RESIZER_EXPORT(8b8b8b8b)
#undef KELO_RESIZER_EXPORT

// Rotating resizers: the plain selection over the unrotated result, which is
// dst_height x dst_width for the quarter turns.
#define KELO_ROT_RESIZER_EXPORT(name, op, quarter)                                         \
  KELO_EXPORT int32_t kimgp_rsz_##name##_rot_##op(                                         \
      const void* src, int32_t src_width, int32_t src_height, int32_t dst_width,           \
      int32_t dst_height, void* dst, void* tmp, int32_t src_stride, int32_t dst_stride,    \
      int32_t mode) {                                                                      \
    return kelo::Resize(kelo::k##name##_rot_##op, src, src_width, src_height,              \
                        quarter ? dst_height : dst_width, quarter ? dst_width : dst_height, \
                        dst, tmp, src_stride, dst_stride, mode);                           \
  }
KELO_ROT_RESIZER_EXPORT(8b, 90l, true)
KELO_ROT_RESIZER_EXPORT(8b, 90r, true)
KELO_ROT_RESIZER_EXPORT(8b, 180, false)
KELO_ROT_RESIZER_EXPORT(8b8b, 90l, true)
KELO_ROT_RESIZER_EXPORT(8b8b, 90r, true)
KELO_ROT_RESIZER_EXPORT(8b8b, 180, false)
#undef KELO_ROT_RESIZER_EXPORT

KELO_EXPORT int32_t kimgp_rsz_16b(const void* src, int32_t src_width, int32_t src_height,
                                  int32_t dst_width, int32_t dst_height, void* dst,
                                  int32_t src_stride, int32_t dst_stride) {
  return kelo::ResizeWhole(kimgp_16b_rsz_down_mult, src, src_width, src_height, dst_width,
                           dst_height, dst, src_stride, dst_stride);
}

KELO_EXPORT int32_t kimgp_rsz_16b16b(const void* src, int32_t src_width, int32_t src_height,
                                     int32_t dst_width, int32_t dst_height, void* dst,
                                     int32_t src_stride, int32_t dst_stride) {
  return kelo::ResizeWhole(kimgp_16b16b_rsz_down_mult, src, src_width, src_height, dst_width,
                           dst_height, dst, src_stride, dst_stride);
}
