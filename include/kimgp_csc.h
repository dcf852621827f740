/*
 * kimgp_csc.h - colour-space conversion.
 *
 * kimgp_csc converts an image into another colour space of the same size. It
 * validates the pair, runs one kernel chosen by the exact pair of codes (or
 * does the simplest layout conversions itself) and returns a status: 0 done,
 * -1 same colour space on both sides, -3 unsupported pair or an image smaller
 * than 8x8. Nothing is written on -1 or -3.
 *
 * Arithmetic: limited-range BT.601 in integer fixed point unless both
 * descriptors set `std` (1: BT.601 full range, 10: BT.709, 11: BT.709 full
 * range), in which case the pair is handed to kimgp_csc_bt601_fr,
 * kimgp_csc_bt709 or kimgp_csc_bt709_fr.
 *
 * Kernels share one calling convention: the source descriptor's plane, width,
 * height and stride arrays, then the destination's stride and plane arrays.
 * They take the size from src_width[0] x src_height[0] and return nothing.
 *
 * YUV to RGB kernels: a width that is a multiple of 4 converts rows of exactly
 * that width; any other width converts pixel pairs, so an odd width writes one
 * pixel (and reads one luma sample) beyond the row, and with an odd height
 * that path moves to chroma row 1 after luma row 0. Widths must be even.
 * The yv12_to_* kernels exchange plane[1]/plane[2] and stride[1]/stride[2]
 * of the caller's source descriptor and leave them exchanged; this applies
 * through kimgp_csc too.
 *
 * RGB to YUV kernels: luma for every pixel, chroma from the top-left pixel of
 * each 2x2 block (width / 2 by height / 2 samples); luma truncates, chroma
 * rounds.
 */
#ifndef KIMGP_CSC_H
#define KIMGP_CSC_H

#include "kimgp_img.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The six-argument kernel convention. */
typedef void (*kimgp_csc_kernel)(uint8_t **src_plane, const int32_t *src_width,
                                 const int32_t *src_height, int32_t *src_stride,
                                 const int32_t *dst_stride, uint8_t **dst_plane);

int32_t kimgp_csc(const kimgp_img *src, kimgp_img *dst);

/* Standard-specific entries, reached from kimgp_csc through `std`. */
int32_t kimgp_csc_bt601_fr(const kimgp_img *src, kimgp_img *dst);
int32_t kimgp_csc_bt709(const kimgp_img *src, kimgp_img *dst);
int32_t kimgp_csc_bt709_fr(const kimgp_img *src, kimgp_img *dst);

/* YUV to RGB, limited-range BT.601. */
void kimgp_csc_yuv420_to_rgb565(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv420_to_bgr565(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv420_to_rgb888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv420_to_bgr888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv420_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv420_to_bgra8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv420_to_argb8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv420_to_abgr8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yv12_to_rgb565(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yv12_to_bgr565(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yv12_to_rgb888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yv12_to_bgr888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yv12_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yv12_to_bgra8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yv12_to_argb8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yv12_to_abgr8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv12_to_rgb565(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv12_to_bgr565(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv12_to_rgb888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv12_to_bgr888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv12_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv12_to_bgra8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv12_to_argb8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv12_to_abgr8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv21_to_rgb565(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv21_to_bgr565(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv21_to_rgb888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv21_to_bgr888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv21_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv21_to_bgra8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv21_to_argb8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv21_to_abgr8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv422n_to_rgb565(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv422n_to_bgr565(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv422n_to_rgb888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv422n_to_bgr888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv422n_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv422n_to_bgra8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv422n_to_argb8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv422n_to_abgr8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv444_to_rgb565(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv444_to_bgr565(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv444_to_rgb888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv444_to_bgr888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv444_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv444_to_bgra8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv444_to_argb8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv444_to_abgr8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_uyvy_to_rgb565(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_uyvy_to_bgr565(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_uyvy_to_rgb888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_uyvy_to_bgr888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_uyvy_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_uyvy_to_bgra8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_uyvy_to_argb8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_uyvy_to_abgr8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuyv_to_rgb565(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuyv_to_bgr565(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuyv_to_rgb888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuyv_to_bgr888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuyv_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuyv_to_bgra8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuyv_to_argb8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuyv_to_abgr8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
/* YUV422W: a planar 4:2:2 reading, 5-6-5 outputs only. */
void kimgp_csc_yuv422w_to_rgb565(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv422w_to_bgr565(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
/* Grey replication without range expansion. */
void kimgp_csc_yuv400_to_rgb565(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv400_to_rgb888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);

/* RGB to YUV, limited-range BT.601. */
void kimgp_csc_rgb565_to_yuv420(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_rgb565_to_yv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_rgb565_to_nv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_rgb565_to_nv21(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bgr565_to_yuv420(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bgr565_to_yv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bgr565_to_nv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bgr565_to_nv21(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_rgb888_to_yuv420(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_rgb888_to_yv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_rgb888_to_nv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_rgb888_to_nv21(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bgr888_to_yuv420(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bgr888_to_yv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bgr888_to_nv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bgr888_to_nv21(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_rgba8888_to_yuv420(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_rgba8888_to_yv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_rgba8888_to_nv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_rgba8888_to_nv21(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bgra8888_to_yuv420(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bgra8888_to_yv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bgra8888_to_nv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bgra8888_to_nv21(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_argb8888_to_yuv420(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_argb8888_to_yv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_argb8888_to_nv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_argb8888_to_nv21(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_abgr8888_to_yuv420(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_abgr8888_to_yv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_abgr8888_to_nv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_abgr8888_to_nv21(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_rgba8888_to_yuv444(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_argb8888_to_yuv444(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
/* RGB888 to RGB565 by truncation. */
void kimgp_csc_rgb888_to_rgb565(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);

/* YUV layout conversions: samples are moved, never changed. */
void kimgp_csc_yuv420_to_yuv422n(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv444_to_yuv420(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv420_to_nv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv420_to_nv21(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv420_to_yv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv422n_to_yuv420(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv422n_to_yv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yv16_to_yuv420(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yv16_to_yv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv12_to_yuv420(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv12_to_yv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv21_to_yuv420(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv21_to_yv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv21_to_nv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuyv_to_yuv420(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv420Planar16_to_yuv420Planar(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);

/* Row helpers (widths in bytes of the plane read, heights in its rows). */
/* Copies source rows 0, 2, 4, ... to consecutive rows; height must be even. */
void kimgp_csc_1x2_to_1x1(const uint8_t *src, int32_t width, int32_t height,
                          int32_t src_stride, int32_t dst_stride, uint8_t *dst);
/* Keeps the top-left byte of every 2x2 block. */
void kimgp_csc_2x2_to_1x1(const uint8_t *src, int32_t width, int32_t height,
                          int32_t src_stride, int32_t dst_stride, uint8_t *dst);
/* Writes every source row twice. */
void kimgp_csc_1x1_to_1x2(const uint8_t *src, int32_t width, int32_t height,
                          int32_t src_stride, int32_t dst_stride, uint8_t *dst);
/* Interleaves: destination byte 2i from src0, 2i + 1 from src1. */
void kimgp_csc_8b8b_pck(const uint8_t *src0, const uint8_t *src1, int32_t width,
                        int32_t height, int32_t src0_stride, int32_t src1_stride,
                        int32_t dst_stride, uint8_t *dst);
/* Splits even bytes to dst0 and odd bytes to dst1; a final odd byte goes to
 * dst0. */
void kimgp_csc_8b8b_unpck(const uint8_t *src, int32_t bytes, int32_t height,
                          int32_t src_stride, int32_t dst0_stride,
                          int32_t dst1_stride, uint8_t *dst0, uint8_t *dst1);
/* Exchanges the bytes of every pair over (stride & 0xFFFF) * (rows & 0xFFFF)
 * contiguous bytes, in place. */
void kimgp_csc_swap_8byte8(uint8_t *plane, int32_t stride, int32_t rows);

/* 10-bit P010LE (the 10 significant bits in the high bits of each
 * little-endian word) to RGBA8888 with the BT.2020 limited-range matrix. */
void kimgp_csc_p010le_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);

/* Tiled layouts (tile orders in kimgp_img.h). */
void kimgp_csc_t64x32_to_yuv420(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_t64x32_to_yv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_t64x32_to_nv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_t64x32_to_nv21(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_t64x32_to_rgb565(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_t64x32_to_bgr565(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_t64x32_to_rgb888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_t64x32_to_bgr888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_t64x32_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_t64x32_to_bgra8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_t64x32_to_argb8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_t64x32_to_abgr8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv420_to_t64x32(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_t16x16_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_t8x8_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_t256x16_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
/* Tile copies: `width` x `height` samples of one plane, tiled row stride
 * `src_stride` (bytes of one row of tiles / tile height), linear dst. */
void kimgp_csc_copy_16x16tiles_to_linear(const uint8_t *src, int32_t width,
                                         int32_t height, int32_t src_stride,
                                         int32_t dst_stride, uint8_t *dst);
void kimgp_csc_copy_16x8tiles_to_linear(const uint8_t *src, int32_t width,
                                        int32_t height, int32_t src_stride,
                                        int32_t dst_stride, uint8_t *dst);
void kimgp_csc_unpack_16x8tiles_to_linear(const uint8_t *src, int32_t width,
                                          int32_t height, int32_t src_stride,
                                          int32_t dst0_stride,
                                          int32_t dst1_stride, uint8_t *dst0,
                                          uint8_t *dst1);

/* Full-range BT.601, BT.709 and BT.709 full-range kernels. */
void kimgp_csc_bt601_fr_yuv420_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bt601_fr_nv12_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bt601_fr_nv21_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bt601_fr_rgba8888_to_yuv420(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bt601_fr_rgba8888_to_yv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bt601_fr_rgba8888_to_nv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bt601_fr_rgba8888_to_nv21(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bt709_yuv420_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bt709_rgba8888_to_nv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bt709_rgba8888_to_nv21(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bt709_fr_yuv420_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* KIMGP_CSC_H */
