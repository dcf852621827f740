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

/* YUV to RGBA8888 with other matrices: BT.601 full range (7 fractional bits,
 * no luma offset), BT.709 limited range, BT.709 full range. */
void kimgp_csc_bt601_fr_yuv420_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bt601_fr_nv12_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bt601_fr_nv21_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bt709_yuv420_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bt709_fr_yuv420_to_rgba8888(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);

/* RGB to YUV, limited-range BT.601: luma truncated, chroma rounded, chroma
 * from the top-left pixel of each 2x2 block (every pixel for YUV444). */
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

/* RGBA8888 to YUV with BT.601 full range and BT.709 limited range (whose
 * luma blue weight is 25, so white gives Y = 244). */
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
void kimgp_csc_bt709_rgba8888_to_nv12(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_bt709_rgba8888_to_nv21(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* KIMGP_CSC_H */
