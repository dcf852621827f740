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

/* The shape of the row helpers below: source, width in bytes, height in
 * rows, source stride, destination stride, destination. */
typedef void (*kimgp_csc_plane_helper)(const uint8_t *src, int32_t width,
                                       int32_t height, int32_t src_stride,
                                       int32_t dst_stride, uint8_t *dst);

int32_t kimgp_csc(const kimgp_img *src, kimgp_img *dst);

/*
 * Conversion with rotation: converts src into dst and turns it by the
 * rotation code `rot` (KIMGP_ROT_*, kimgp_rot.h) in one pass. Pairs and codes:
 *   YUYV to BGRA8888                   rot 0..3 (copy, 90l, 90r, 180)
 *   YUV422N or YV16 to YUV420 or YV12  rot 0..2 (copy, 90l, 90r)
 * Returns 0; -1 when src and dst carry the same code (whatever rot is);
 * -3 for any other pair, and for a rotation code whose table entry below is
 * empty or that is above 5. Nothing is written on -1 or -3. Sizes are not
 * checked; the caller sizes dst (width and height exchanged for 90l, 90r).
 *
 * YUYV: the entry of kimgp_csc_rot_yuyv2bgra8888 for rot, with the kernel
 * convention. Planar 4:2:2 to 4:2:0: luma through kimgp_tbl_fn_rot_8b[rot];
 * each chroma plane through kimgp_tbl_fn_csc_1x2_to_1x1_rot[rot] with the
 * source plane's width, height and stride, into the destination plane that
 * holds the same chroma (YUV422N to YV12 and YV16 to YUV420 cross planes 1
 * and 2) with that plane's stride.
 *
 * Out of memory: a quarter turn of YUYV converts rows in bands through a heap
 * buffer; when that cannot be had, it converts and turns them without it (the
 * same bytes). Nothing else allocates.
 */
int32_t kimgp_csc_rot(const kimgp_img *src, uint32_t rot, kimgp_img *dst);

/* Kernel tables of kimgp_csc_rot, one entry per rotation code; empty
 * entries are null. */
extern const kimgp_csc_kernel kimgp_csc_rot_yuyv2bgra8888[6];
extern const kimgp_csc_plane_helper kimgp_tbl_fn_csc_1x2_to_1x1_rot[6];

/*
 * YUYV to BGRA8888 turned: exactly the pixels kimgp_csc_yuyv_to_bgra8888
 * gives for src_width[0] x src_height[0], written turned as KIMGP_ROT_90L,
 * KIMGP_ROT_90R or KIMGP_ROT_180 moves them (for 90l and 90r dst_plane[0] is
 * src_height[0] pixels wide and src_width[0] rows high). With an odd width
 * the plain kernel writes one pixel beyond each row; that pixel has no place
 * in the turned image and is not written: nothing outside the turned
 * width x height plane is. They read what the plain kernel reads (with an
 * odd width the whole last pixel pair, two bytes beyond the row).
 */
void kimgp_csc_yuyv_to_bgra8888_90l(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuyv_to_bgra8888_90r(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuyv_to_bgra8888_180(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);

/*
 * The rows kimgp_csc_1x2_to_1x1 keeps (source rows 0, 2, 4, ...; (height + 1)
 * / 2 of them), turned by a quarter turn: each kept row becomes one
 * destination column, so dst is (height + 1) / 2 bytes wide and `width` rows
 * high. Arguments as kimgp_csc_1x2_to_1x1.
 */
void kimgp_csc_1x2_to_1x1_rot_90l(const uint8_t *src, int32_t width, int32_t height,
                                  int32_t src_stride, int32_t dst_stride, uint8_t *dst);
void kimgp_csc_1x2_to_1x1_rot_90r(const uint8_t *src, int32_t width, int32_t height,
                                  int32_t src_stride, int32_t dst_stride, uint8_t *dst);

/*
 * Dithered 16-bit RGB. kimgp_csc_dither converts like kimgp_csc into RGB565
 * or BGR565, and adds a 4x4 ordered dither before the 5-6-5 truncation, so
 * that smooth gradients keep their 8-bit level on average instead of
 * banding. Pairs (every pair kimgp_csc converts into a 5-6-5 layout):
 *   YUV420, YUV422N, YUV444, YV12, NV12, NV21, YUV422W, T64X32, UYVY, YUYV
 *                                        to RGB565 and BGR565
 *   YUV400, RGB888, RGBA8888             to RGB565
 * Statuses as kimgp_csc: 0 done; -1 the same code on both sides; -3 any other
 * pair, an image narrower or lower than 8 (either descriptor), and a YUV/RGB
 * pair whose descriptors both set `std` (there are no dithered full-range or
 * BT.709 conversions). Nothing is written on -1 or -3.
 *
 * The 8-bit R, G, B of every pixel are exactly those the undithered
 * conversion computes before its 5-6-5 pack (limited-range BT.601 for YUV,
 * grey g as (g, g, g) for YUV400, the bytes themselves for RGB888 and
 * RGBA8888). Then, with the ordered-dither matrix
 *        { 0,  8,  2, 10 },
 *   B =  {12,  4, 14,  6 },
 *        { 3, 11,  1,  9 },
 *        {15,  7, 13,  5 }
 * and b = B[row & 3][column & 3] for the pixel at (column, row) of the image:
 *   R5 = min(R + (b >> 1), 255) >> 3,  G6 = min(G + (b >> 2), 255) >> 2,
 *   B5 = min(B + (b >> 1), 255) >> 3,
 * packed as the undithered RGB565 / BGR565 words. Over a 4x4 tile the
 * offsets take each of 0..7 twice (5-bit channels) and each of 0..3 four
 * times (the 6-bit channel), so where a channel is the same value v over a tile (and
 * v + 7, or v + 3 for green, is at most 255) the tile's 16 truncated values,
 * scaled back (<< 3, << 2), average exactly v; plain truncation is off by up
 * to 7 (3 for green). Where both offsets are 0 (b is 0 or 1: pixels (0, 0)
 * and (2, 2) of each tile) the word is the undithered one.
 *
 * The kernels kimgp_csc_<pair>_dither have the kernel convention and read
 * and write exactly what their undithered twins read and write (the pixel
 * pair path of widths not a multiple of 4, with its odd-width extra pixel
 * and its chroma row shift, the YV12 plane exchange in the caller's
 * descriptor); only the words differ by the dither. RGBA8888 to RGB565 walks
 * its rows as kimgp_csc does (row pointers rounded down to their pixel size)
 * and has no kernel of its own. Rows are converted through a fixed stack
 * buffer, a piece at a time: nothing is allocated and nothing can fail.
 *
 * kimgp_dit_8b is the row step: `width` pixels of `src_bytes` bytes each
 * (3 or 4; R, G, B are the first three bytes, a fourth is ignored) whose
 * first pixel sits at column `x` of image row `y` are dithered as above
 * into `width` 16-bit words at dst: RGB565 for `order` 0, BGR565 for any
 * other order. A row done in pieces gives the bytes of the whole row when
 * each piece passes its own first column. Nothing is written when width is
 * below 1 or src_bytes is not 3 or 4. src and dst must not overlap.
 */
int32_t kimgp_csc_dither(const kimgp_img *src, kimgp_img *dst);
void kimgp_dit_8b(const uint8_t *src, int32_t src_bytes, int32_t width, int32_t x,
                  int32_t y, int32_t order, uint8_t *dst);
void kimgp_csc_yuv420_to_rgb565_dither(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv420_to_bgr565_dither(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yv12_to_rgb565_dither(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yv12_to_bgr565_dither(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv12_to_rgb565_dither(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv12_to_bgr565_dither(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv21_to_rgb565_dither(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_nv21_to_bgr565_dither(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv422n_to_rgb565_dither(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv422n_to_bgr565_dither(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv444_to_rgb565_dither(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv444_to_bgr565_dither(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_uyvy_to_rgb565_dither(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_uyvy_to_bgr565_dither(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuyv_to_rgb565_dither(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuyv_to_bgr565_dither(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv422w_to_rgb565_dither(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv422w_to_bgr565_dither(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_t64x32_to_rgb565_dither(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_t64x32_to_bgr565_dither(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_yuv400_to_rgb565_dither(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);
void kimgp_csc_rgb888_to_rgb565_dither(uint8_t **src_plane, const int32_t *src_width,
    const int32_t *src_height, int32_t *src_stride, const int32_t *dst_stride,
    uint8_t **dst_plane);

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
/* Copies source rows 0, 2, 4, ... to consecutive rows; an odd height keeps
 * its last row too, so `height` rows give (height + 1) / 2. */
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
 * little-endian word; the low six bits are ignored) to RGBA8888 with the
 * BT.2020 limited-range matrix (Kr 0.2627, Kb 0.0593), in 16-bit fixed
 * point with 6 fractional bits. With Y, U, V the 10-bit samples:
 *   L = (64 Y * 19077) >> 16,  D = 64 (U - 512),  E = 64 (V - 512)
 *   R = L + ((E * 13752 + 2^14) >> 15) - 1192
 *   G = L + ((D * -3069 + E * -10657 + 2^15) >> 16) - 1192
 *   B = L + ((D * 17546 + 2^14) >> 15) - 1192
 * and each byte is (channel + 32) >> 6 clamped to 0..255 (>> rounds down).
 * Every byte is within 0.52 of the exact formula clamped to 0..255,
 *   255/876 (Y - 64) + 255/896 (1.4746 (V - 512)),
 *   255/876 (Y - 64) - 255/896 (0.16455 (U - 512) + 0.57135 (V - 512)),
 *   255/876 (Y - 64) + 255/896 (1.8814 (U - 512)),
 * so it is that value rounded to nearest or, within 0.02 of a tie, the
 * integer on the tie's other side. A neutral grey (U = V = 512) gives
 * R = G = B. */
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

/*
 * Second-generation conversion: kimgp_csc_new(src, dst) converts between any
 * two of the linear layouts YUV400, YUV420, YUV422N, YUV444, YV12, YV16,
 * NV12, NV21, UYVY, YUYV, RGB565, BGR565, RGB888, BGR888, RGBA8888, BGRA8888,
 * ARGB8888, ABGR8888, YUV420PLANAR16 (10 bits in the low bits of each
 * little-endian 16-bit word; higher bits are ignored on reading and written
 * as zero) and P010LE (10 bits in the high bits; the low six are ignored and
 * written as zero), in both directions. The size is src->width[0] x
 * src->height[0]; plane geometry follows from it and the code (chroma planes
 * of 4:2:0 and 4:2:2 layouts hold (w + 1) / 2 samples per row, 4:2:0 ones
 * (h + 1) / 2 rows); strides come from each descriptor.
 *
 * Statuses: 0 done; -1 (KIMGP_ERR_ARGS) when both codes are the same
 * (whatever the std words), when dst->width[0] x dst->height[0] is not the
 * source size, or when the call's row memory cannot be had; -3
 * (KIMGP_ERR_UNSUPPORTED) for a code outside the list above (YUV422W and the
 * tiled layouts included), a width or height below 2, an odd width with a
 * packed 4:2:2 layout on either side, or a std word that is not one of the
 * six below on a YUV side (the std word of an RGB side is not read). Nothing
 * is written on -1 or -3. Checks run in that order, -1 for the same code
 * first.
 *
 * Colour standards, per side by `std`: 0 BT.601 limited range, 1 BT.601
 * full, 10 BT.709 limited, 11 BT.709 full, 20 BT.2020 limited, 21 BT.2020
 * full. Luma weights (Kr, Kb): BT.601 0.299, 0.114; BT.709 0.2126, 0.0722;
 * BT.2020 0.2627, 0.0593; Kg = 1 - Kr - Kb. With normalised values,
 *   Y' = Kr R' + Kg G' + Kb B',  Cb = (B' - Y') / (2 (1 - Kb)),
 *   Cr = (R' - Y') / (2 (1 - Kr)),
 * and codes Y = yoff + yspan Y', C = centre + cspan C with
 *   8-bit limited  16 + 219 Y',  128 + 224 C;   full  255 Y',  128 + 255 C;
 *   10-bit limited 64 + 876 Y',  512 + 896 C;   full 1023 Y',  512 + 1023 C.
 * RGB is full range, 8 bits (R' = R / 255); 5-6-5 fields widen to 8 bits as
 * round(v * 255 / 31) (v * 255 / 63 for green) and narrow as round(x * 31 /
 * 255) (x * 63 / 255) from the 8-bit result. Alpha is written 255 and never
 * read.
 *
 * Arithmetic: the source -> R'G'B' -> destination map is composed in double
 * for the pair of sides and rounded once to 14 fractional bits; samples enter
 * in eighths of a code, each output is rounded half up from 17 fractional
 * bits and clamped to 0 .. 2^depth - 1 (the full code range, not the
 * nominal one). Two exceptions, for speed. From YUV to RGB the map is in
 * 16-bit fixed point with H(a, c) = (a c + 2^14) >> 15 (the rounded high
 * half of a 16-bit product): luma enters as yx = Y << (15 - depth), chroma
 * as s = (C - centre) << (16 - depth) (256ths of an 8-bit code), and
 *   l = H(yx, cy) + add,  R = (l + H(sv, rv)) >> 5,
 *   G = (l + H(su, gu) + H(sv, gv)) >> 5,  B = (l + H(su, bu)) >> 5,
 * clamped to 0 .. 255, where cy = round(32 * 2^depth * Ky) and rv, gu, gv,
 * bu = round(32 * 2^(depth - 1) * K) for the map's weights K (RGB codes per
 * source code: Ky = 255 / yspan, rv = 255 * 2 (1 - Kr) / cspan, ...), and
 * add = round(16 - 32 * yoff * Ky). For 8-bit BT.601 limited range
 * (cy, rv, gu, gv, bu; add) = (9539, 6537, -1605, -3330, 8263; -580). An
 * enlarged chroma sample between two others is their mean (exact in
 * 256ths). Every RGB value is within 0.58 of the double formulas. From
 * RGB to 8-bit YUV, luma has byte weights, Y = (wr R + wg G + wb B + 256 yoff + a) >> 8 with
 * w = round(256 K yspan / 255) per channel and a = min(255, round(128 +
 * 128 (256 yspan / 255 - wr - wg - wb))): (wr, wg, wb; a) is BT.601
 * (66, 129, 25; 110), full (77, 150, 29; 128), BT.709 (47, 157, 16; 110),
 * full (54, 183, 18; 255), BT.2020 (58, 149, 13; 110), full (67, 174, 15;
 * 128); full-range greys keep their level. Chroma there comes from the
 * sums Sr, Sg, Sb of a block's channels over its four quarters (the 2x2
 * pixels of 4:2:0, a pair taken twice for 4:2:2, a pixel four times for
 * 4:4:4): with H(a, c) = (a c + 2^14) >> 15 (16-bit fixed-point products),
 *   t = H(Sr - Sg, cr) + H(Sb - Sg, cb),  C = 128 + ((t + 4) >> 3),
 * clamped to 0 .. 255, where cr and cb are the channel's weights on R' and
 * B' in codes (its weight on G' is minus their sum) times 2^16 / 255,
 * rounded and limited to +-32767. Every output is within 1 of the same
 * formulas evaluated in double. Greys stay exact: U = V = centre gives R = G = B (and centred
 * chroma of any other YUV standard), R = G = B gives U = V = centre. Between
 * two YUV sides of the same std word samples are only moved and rescaled,
 * exactly: x' = yoff' + round((x - yoff) yspan' / yspan) (chroma likewise
 * about the centres), so 8 to 10 bits is x * 4 for limited range and
 * round(x * 1023 / 255) for full, and 10 to 8 bits rounds.
 *
 * Chroma: enlarged bilinearly with the chroma co-sited with the even luma
 * columns (column 2k takes chroma k, column 2k + 1 the mean of k and k + 1)
 * and, for 4:2:0, centred between luma rows 2j and 2j + 1 (row 2j takes 3/4
 * of chroma row j and 1/4 of row j - 1, row 2j + 1 3/4 of j and 1/4 of
 * j + 1); past an edge the last chroma sample or row repeats. Reduced by
 * rounded means: 4:2:0 over 2x2 blocks, 4:2:2 over horizontal pairs; at an
 * odd right or bottom edge the block covers the pixels that exist (a mean
 * sits between the columns it covers, so reducing and then enlarging again
 * moves chroma half a luma column to the left). Between
 * two YUV sides chroma goes straight from the source grid to the
 * destination's (a direction subsampled on both sides is kept as is), since
 * chroma never depends on luma; luma of another standard uses the enlarged
 * chroma. From an RGB side chroma is converted per pixel and reduced after
 * (to 10 bits; to 8 bits from the block's channel sums as above).
 *
 * Memory: one heap block of 64 x width bytes per call (-1 above when it
 * cannot be had).
 *
 * The per-family kernels take the same descriptors and return the same
 * statuses, and -3 for a pair outside their family (YUV here includes the
 * 16-bit layouts); kimgp_csc_new routes every pair to one of them.
 */
enum {
  KIMGP_STD_BT2020 = 20,   /* BT.2020 limited range (kimgp_csc_new) */
  KIMGP_STD_BT2020_FR = 21 /* BT.2020 full range (kimgp_csc_new) */
};
int32_t kimgp_csc_new(const kimgp_img *src, kimgp_img *dst);
int32_t kimgp_csc_yuv_to_rgb_new(const kimgp_img *src, kimgp_img *dst);
int32_t kimgp_csc_rgb_to_yuv_new(const kimgp_img *src, kimgp_img *dst);
int32_t kimgp_csc_yuv_to_yuv_new(const kimgp_img *src, kimgp_img *dst);
int32_t kimgp_csc_rgb_to_rgb_new(const kimgp_img *src, kimgp_img *dst);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* KIMGP_CSC_H */
