// kimgp_csc: validation, the colour-standard hand-over, and routing by the
// exact pair of codes through one table.
#include <cstdint>

#include "common/internal/api.h"
#include "imgp/csc/layout_rows.h"
#include "imgp/csc/pixel_layouts.h"
#include "kimgp_csc.h"
#include "kimgp_rot.h"

namespace kelo {
namespace csc {
namespace {

void Rgb565ToRgba8888(KELO_CSC_PARAMS) {
  RoundedRows(sp[0], ss[0], 1, dp[0], ds[0], 3, sw[0], sh[0], Rgb565ToRgba);
}
void Rgba8888ToRgb565(KELO_CSC_PARAMS) {
  RoundedRows(sp[0], ss[0], 3, dp[0], ds[0], 1, sw[0], sh[0], RgbaTo565);
}
// NV12 to NV21 is the same exchange as NV21 to NV12.
void Nv12ToNv21(KELO_CSC_PARAMS) { kimgp_csc_nv21_to_nv12(sp, sw, sh, ss, ds, dp); }
// T16X16 to NV12 and YUV420: tile copies of luma and chroma, the chroma
// pairs of the image width over half the luma height.
void T16x16ToNv12(KELO_CSC_PARAMS) {
  kimgp_csc_copy_16x16tiles_to_linear(sp[0], sw[0], sh[0], ss[0], ds[0], dp[0]);
  kimgp_csc_copy_16x8tiles_to_linear(sp[1], 2 * HalfUp(sw[0]), sh[0] / 2, ss[1], ds[1], dp[1]);
}
void T16x16ToYuv420(KELO_CSC_PARAMS) {
  kimgp_csc_copy_16x16tiles_to_linear(sp[0], sw[0], sh[0], ss[0], ds[0], dp[0]);
  kimgp_csc_unpack_16x8tiles_to_linear(sp[1], 2 * HalfUp(sw[0]), sh[0] / 2, ss[1], ds[1], ds[2],
                                       dp[1], dp[2]);
}

struct Route {
  int32_t src, dst;
  kimgp_csc_kernel fn;
};

#define KELO_TO_RGB(scs, name)                                            \
  {scs, 200, kimgp_csc_##name##_to_rgb565}, {scs, 201, kimgp_csc_##name##_to_bgr565}, \
  {scs, 400, kimgp_csc_##name##_to_rgb888}, {scs, 401, kimgp_csc_##name##_to_bgr888}, \
  {scs, 500, kimgp_csc_##name##_to_rgba8888}, {scs, 501, kimgp_csc_##name##_to_bgra8888}, \
  {scs, 502, kimgp_csc_##name##_to_argb8888}, {scs, 503, kimgp_csc_##name##_to_abgr8888}
#define KELO_TO_YUV(scs, name)                                            \
  {scs, 1, kimgp_csc_##name##_to_yuv420}, {scs, 4, kimgp_csc_##name##_to_yv12}, \
  {scs, 6, kimgp_csc_##name##_to_nv12}, {scs, 7, kimgp_csc_##name##_to_nv21}

// Every supported pair; any pair not here is refused with -3. The gaps are
// deliberate: no YV12 to YUV420 or NV12, no conversion among the 32-bit RGB
// orders or between RGB565 and BGR565, no YUV400 or YUV422W destination.
constexpr Route kRoutes[] = {
    // YUV to YUV.
    {1, 2, kimgp_csc_yuv420_to_yuv422n},
    {1, 4, kimgp_csc_yuv420_to_yv12},
    {1, 6, kimgp_csc_yuv420_to_nv12},
    {1, 7, kimgp_csc_yuv420_to_nv21},
    {1, 11, kimgp_csc_yuv420_to_t64x32},
    {2, 1, kimgp_csc_yuv422n_to_yuv420},
    {2, 4, kimgp_csc_yuv422n_to_yv12},
    {3, 1, kimgp_csc_yuv444_to_yuv420},
    {5, 1, kimgp_csc_yv16_to_yuv420},
    {5, 4, kimgp_csc_yv16_to_yv12},
    {6, 1, kimgp_csc_nv12_to_yuv420},
    {6, 4, kimgp_csc_nv12_to_yv12},
    {6, 7, Nv12ToNv21},
    {7, 1, kimgp_csc_nv21_to_yuv420},
    {7, 4, kimgp_csc_nv21_to_yv12},
    {7, 6, kimgp_csc_nv21_to_nv12},
    {11, 1, kimgp_csc_t64x32_to_yuv420},
    {11, 4, kimgp_csc_t64x32_to_yv12},
    {11, 6, kimgp_csc_t64x32_to_nv12},
    {11, 7, kimgp_csc_t64x32_to_nv21},
    {12, 1, T16x16ToYuv420},
    {12, 6, T16x16ToNv12},
    {101, 1, kimgp_csc_yuyv_to_yuv420},
    {600, 1, kimgp_csc_yuv420Planar16_to_yuv420Planar},
    // YUV to RGB.
    {0, 200, kimgp_csc_yuv400_to_rgb565},
    {0, 400, kimgp_csc_yuv400_to_rgb888},
    KELO_TO_RGB(1, yuv420),
    KELO_TO_RGB(2, yuv422n),
    KELO_TO_RGB(3, yuv444),
    KELO_TO_RGB(4, yv12),
    KELO_TO_RGB(6, nv12),
    KELO_TO_RGB(7, nv21),
    {8, 200, kimgp_csc_yuv422w_to_rgb565},
    {8, 201, kimgp_csc_yuv422w_to_bgr565},
    KELO_TO_RGB(11, t64x32),
    {12, 500, kimgp_csc_t16x16_to_rgba8888},
    {13, 500, kimgp_csc_t8x8_to_rgba8888},
    {14, 500, kimgp_csc_t256x16_to_rgba8888},  // only wider than 1280, see below
    KELO_TO_RGB(100, uyvy),
    KELO_TO_RGB(101, yuyv),
    {601, 500, kimgp_csc_p010le_to_rgba8888},
    // RGB to YUV and RGB to RGB.
    KELO_TO_YUV(200, rgb565),
    {200, 500, Rgb565ToRgba8888},
    KELO_TO_YUV(201, bgr565),
    KELO_TO_YUV(400, rgb888),
    {400, 200, kimgp_csc_rgb888_to_rgb565},
    KELO_TO_YUV(401, bgr888),
    KELO_TO_YUV(500, rgba8888),
    {500, 3, kimgp_csc_rgba8888_to_yuv444},
    {500, 200, Rgba8888ToRgb565},
    KELO_TO_YUV(501, bgra8888),
    KELO_TO_YUV(502, argb8888),
    {502, 3, kimgp_csc_argb8888_to_yuv444},
    KELO_TO_YUV(503, abgr8888),
};

kimgp_csc_kernel FindRoute(int32_t src, int32_t dst) {
  for (const Route& r : kRoutes) {
    if (r.src == src && r.dst == dst) return r.fn;
  }
  return nullptr;
}

bool IsYuv(int32_t cs) { return cs <= 199; }
bool IsRgb(int32_t cs) { return cs >= 200 && cs <= 599; }

}  // namespace

// Runs a six-argument kernel on two descriptors. The YV12 kernels exchange
// the source's chroma planes in place, so the source is written through.
void RunKernel(kimgp_csc_kernel fn, const kimgp_img* src, kimgp_img* dst) {
  kimgp_img* s = const_cast<kimgp_img*>(src);
  fn(s->plane, s->width, s->height, s->stride, dst->stride, dst->plane);
}

}  // namespace csc
}  // namespace kelo

KELO_EXPORT int32_t kimgp_csc(const kimgp_img* src, kimgp_img* dst) {
  if (src->cs == dst->cs) return KIMGP_ERR_ARGS;
  if (src->width[0] < 8 || src->height[0] < 8 || dst->width[0] < 8 || dst->height[0] < 8) {
    return KIMGP_ERR_UNSUPPORTED;
  }
  using kelo::csc::IsRgb;
  using kelo::csc::IsYuv;
  if (src->std != 0 && dst->std != 0 &&
      ((IsYuv(src->cs) && IsRgb(dst->cs)) || (IsRgb(src->cs) && IsYuv(dst->cs)))) {
    if (src->std != dst->std) return KIMGP_ERR_UNSUPPORTED;
    switch (src->std) {
      case KIMGP_STD_BT601_FR:
        return kimgp_csc_bt601_fr(src, dst);
      case KIMGP_STD_BT709_FR:
        return kimgp_csc_bt709_fr(src, dst);
      case KIMGP_STD_BT709:
        return kimgp_csc_bt709(src, dst);
      default:
        return KIMGP_ERR_UNSUPPORTED;
    }
  }
  if (src->cs == KIMGP_CS_T256X16 && src->width[0] <= 1280) return KIMGP_ERR_UNSUPPORTED;
  const kimgp_csc_kernel fn = kelo::csc::FindRoute(src->cs, dst->cs);
  if (fn == nullptr) return KIMGP_ERR_UNSUPPORTED;
  kelo::csc::RunKernel(fn, src, dst);
  return KIMGP_OK;
}

// BT.601 full range: a few pairs around RGBA8888.
KELO_EXPORT int32_t kimgp_csc_bt601_fr(const kimgp_img* src, kimgp_img* dst) {
  if (src->cs == dst->cs) return KIMGP_ERR_ARGS;
  if (src->width[0] < 8 || src->height[0] < 8 || dst->width[0] < 8 || dst->height[0] < 8) {
    return KIMGP_ERR_UNSUPPORTED;
  }
  static constexpr kelo::csc::Route kPairs[] = {
      {1, 500, kimgp_csc_bt601_fr_yuv420_to_rgba8888},
      {6, 500, kimgp_csc_bt601_fr_nv12_to_rgba8888},
      {7, 500, kimgp_csc_bt601_fr_nv21_to_rgba8888},
      {500, 1, kimgp_csc_bt601_fr_rgba8888_to_yuv420},
      {500, 4, kimgp_csc_bt601_fr_rgba8888_to_yv12},
      {500, 6, kimgp_csc_bt601_fr_rgba8888_to_nv12},
      {500, 7, kimgp_csc_bt601_fr_rgba8888_to_nv21},
  };
  for (const auto& r : kPairs) {
    if (r.src == src->cs && r.dst == dst->cs) {
      kelo::csc::RunKernel(r.fn, src, dst);
      return KIMGP_OK;
    }
  }
  return KIMGP_ERR_UNSUPPORTED;
}

// BT.709 limited range. A YUV420 or RGBA8888 source with a destination it
// does not convert to returns 0 without writing.
KELO_EXPORT int32_t kimgp_csc_bt709(const kimgp_img* src, kimgp_img* dst) {
  if (src->cs == dst->cs) return KIMGP_ERR_ARGS;
  if (src->width[0] != dst->width[0] || src->height[0] != dst->height[0]) return KIMGP_ERR_ARGS;
  if (src->width[0] < 8 || src->height[0] < 8) return KIMGP_ERR_UNSUPPORTED;
  if (src->cs == KIMGP_CS_YUV420) {
    if (dst->cs == KIMGP_CS_RGBA8888) {
      kelo::csc::RunKernel(kimgp_csc_bt709_yuv420_to_rgba8888, src, dst);
    }
    return KIMGP_OK;
  }
  if (src->cs == KIMGP_CS_RGBA8888) {
    if (dst->cs == KIMGP_CS_NV12) kelo::csc::RunKernel(kimgp_csc_bt709_rgba8888_to_nv12, src, dst);
    if (dst->cs == KIMGP_CS_NV21) kelo::csc::RunKernel(kimgp_csc_bt709_rgba8888_to_nv21, src, dst);
    return KIMGP_OK;
  }
  return KIMGP_ERR_UNSUPPORTED;
}

// BT.709 full range: YUV420 to RGBA8888 only, converted with the BT.601
// full-range kernel (the BT.709 full-range kernel is exported but not used
// here). Other YUV420 destinations return 0 without writing.
KELO_EXPORT int32_t kimgp_csc_bt709_fr(const kimgp_img* src, kimgp_img* dst) {
  if (src->cs == dst->cs) return KIMGP_ERR_ARGS;
  if (src->width[0] < 8 || src->height[0] < 8) return KIMGP_ERR_UNSUPPORTED;
  if (dst->width[0] < 8) return KIMGP_ERR_UNSUPPORTED;
  if (src->cs != KIMGP_CS_YUV420) return KIMGP_ERR_UNSUPPORTED;
  if (dst->height[0] < 8) return KIMGP_ERR_UNSUPPORTED;
  if (dst->cs == KIMGP_CS_RGBA8888) {
    kelo::csc::RunKernel(kimgp_csc_bt601_fr_yuv420_to_rgba8888, src, dst);
  }
  return KIMGP_OK;
}

// Conversion with rotation: one table of kernels per family, indexed by the
// rotation code.
KELO_EXPORT const kimgp_csc_kernel kimgp_csc_rot_yuyv2bgra8888[6] = {
    kimgp_csc_yuyv_to_bgra8888, kimgp_csc_yuyv_to_bgra8888_90l, kimgp_csc_yuyv_to_bgra8888_90r,
    kimgp_csc_yuyv_to_bgra8888_180, nullptr, nullptr};
KELO_EXPORT const kimgp_csc_plane_helper kimgp_tbl_fn_csc_1x2_to_1x1_rot[6] = {
    kimgp_csc_1x2_to_1x1, kimgp_csc_1x2_to_1x1_rot_90l, kimgp_csc_1x2_to_1x1_rot_90r,
    nullptr, nullptr, nullptr};

KELO_EXPORT int32_t kimgp_csc_rot(const kimgp_img* src, uint32_t rot, kimgp_img* dst) {
  if (src->cs == dst->cs) return KIMGP_ERR_ARGS;
  // Codes past the tables are refused rather than read beyond them.
  if (rot > KIMGP_ROT_VERT) return KIMGP_ERR_UNSUPPORTED;
  if (src->cs == KIMGP_CS_YUYV) {
    const kimgp_csc_kernel fn = kimgp_csc_rot_yuyv2bgra8888[rot];
    if (dst->cs != KIMGP_CS_BGRA8888 || fn == nullptr) return KIMGP_ERR_UNSUPPORTED;
    kelo::csc::RunKernel(fn, src, dst);
    return KIMGP_OK;
  }
  // Planar 4:2:2 to 4:2:0; `crossed`: source chroma plane i goes to
  // destination plane 3 - i.
  static constexpr struct {
    int32_t src, dst;
    bool crossed;
  } kPlanar[] = {{KIMGP_CS_YUV422N, KIMGP_CS_YUV420, false},
                 {KIMGP_CS_YUV422N, KIMGP_CS_YV12, true},
                 {KIMGP_CS_YV16, KIMGP_CS_YV12, false},
                 {KIMGP_CS_YV16, KIMGP_CS_YUV420, true}};
  for (const auto& r : kPlanar) {
    if (r.src != src->cs || r.dst != dst->cs) continue;
    // Both entries are checked before anything is written.
    const kimgp_plane_fn luma = kimgp_tbl_fn_rot_8b[rot];
    const kimgp_csc_plane_helper chroma = kimgp_tbl_fn_csc_1x2_to_1x1_rot[rot];
    if (luma == nullptr || chroma == nullptr) return KIMGP_ERR_UNSUPPORTED;
    luma(src->plane[0], src->width[0], src->height[0], src->stride[0], dst->stride[0],
         dst->plane[0]);
    for (int i = 1; i <= 2; ++i) {
      const int j = r.crossed ? 3 - i : i;
      chroma(src->plane[i], src->width[i], src->height[i], src->stride[i], dst->stride[j],
             dst->plane[j]);
    }
    return KIMGP_OK;
  }
  return KIMGP_ERR_UNSUPPORTED;
}
