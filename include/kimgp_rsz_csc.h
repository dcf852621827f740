/*
 * kimgp_rsz_csc.h - resizing with a change of colour space in one call.
 *
 * kimgp_rsz_csc scales src to dst's plane-0 size and converts it to dst's
 * colour space. By the pair of codes it runs a fused resize-and-convert kernel
 * (YUV420 or T64X32 to RGB565, YUV420 to RGB888), a bilinear luma resizer
 * (YUV400 <-> YUV420), a chroma-swapping resizer (NV12 <-> NV21), a plain
 * conversion (RGBA8888 to NV12/NV21 of the same size), or two steps through a
 * temporary frame: kimgp_rsz into it, then kimgp_csc into dst.
 *
 * Allocation failures are checked everywhere: a call that cannot get its
 * memory returns KIMGP_ERR_ARGS (-1) and writes nothing. Nothing is written on
 * any -1 or -3 return.
 */
#ifndef KIMGP_RSZ_CSC_H
#define KIMGP_RSZ_CSC_H

#include "kimgp_img.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Checks, in order: equal codes give -1; a plane-0 width or height below 8 on
 * either side gives -3; a pair missing from the table below gives -3.
 *
 *   source         destination     action
 *   0 YUV400       400 RGB888      two steps; temporary YUV400 with stride
 *                                  dst.stride[0] / 3
 *   0 YUV400       1 YUV420        dst plane 0 filled with 16 and planes 1, 2
 *                                  with 128 (each over its own width x
 *                                  height), then kimgp_rsz_8b_org of plane 0
 *   1 YUV420       0 YUV400        kimgp_rsz_8b_org of plane 0 only
 *   1 YUV420       400 RGB888      kimgp_rsz_csc_yuv420_to_rgb888
 *   1 YUV420       200 RGB565      kimgp_rsz_csc_yuv420_to_rgb565, its status
 *   11 T64X32      200 RGB565      kimgp_rsz_csc_t64x32_to_rgb565, its status
 *   6 NV12         7 NV21          kimgp_rsz_apex when (float)src.width[0] /
 *   7 NV21         6 NV12          (float)dst.width[0] == 1.5f exactly (widths
 *                                  only), else kimgp_rsz_apex_c; returns 0
 *   400 RGB888     1 YUV420        two steps; temporary RGB888 with stride
 *                                  3 x dst.stride[0]
 *   500 RGBA8888   6 NV12, 7 NV21  equal plane-0 sizes: kimgp_csc(src, dst)
 *                                  and its status; else two steps through a
 *                                  temporary RGBA8888 with stride
 *                                  4 x dst.stride[0], buf_height dh
 *
 * Two steps: a temporary frame of dst's plane-0 size with rsz_mode 0 and the
 * code and stride above, on one heap block of stride x height bytes (-1 when
 * that product is below 1); kimgp_rsz into it, kimgp_csc from it into dst;
 * freed; 0. kimgp_rsz can only fail there by failing to allocate: that
 * returns -1 before dst is written. RGBA8888 shrunk in both directions runs
 * the same two steps a strip of rows at a time through a temporary of one
 * strip (the same bytes, less memory).
 *
 * The fused kernels run on one heap block of
 *   max(F, N) bytes, F = dw sh + (ds / 2) dh + 2 ((dw / 2) (sh / 2) + (ds / 4) (dh / 2)),
 *                    N = KIMGP_RSZ_CSC_SCRATCH(sw, sh, dw, dh) (below)
 * with sw, sh, dw, dh the plane-0 sizes and ds = dst.stride[0], all divisions
 * truncating.
 */
int32_t kimgp_rsz_csc(const kimgp_img *src, kimgp_img *dst);

/*
 * Bilinear resize of one 8-bit plane: source, sw, sh, dw, dh, destination,
 * intermediate (not used; may be null), source stride, destination stride,
 * mode (not used). Returns 0, or -1 when a size is below 1.
 *
 *   tap spacing   sx = T[min(sw / dw, 31)], sy = T[min(sh / dh, 31)] with
 *                 T[r] = 0 for r < 3, 1 for 3-4, 2 for 5-8, 3 for 9-16,
 *                 4 for 17-31 (the smallest s with 2^(s+1) >= r)
 *   steps         stepx = (((sw - 1) >> sx) << 18) / dw, stepy likewise
 *                 (in 64-bit arithmetic, so no size wraps)
 *   row j         py = j stepy, r = (py >> 18) << sy, v = (py >> 15) & 7
 *   column i      px = i stepx, c = (px >> 18) << sx, h = (px >> 15) & 7
 *   output        (w0 s(c, r) + w1 s(c1, r) + w2 s(c, r1) + w3 s(c1, r1)) >> 6
 *                 with w0..w3 the four bytes of kimgp_tbl_rsz_weight at
 *                 (h x 8 + v) x 4, c1 = c + 2^sx and r1 = r + 2^sy.
 *
 * c1 and r1 lie inside the plane whenever (sw - 1) >> sx and (sh - 1) >> sy
 * are at least 1, which holds for every size kimgp_rsz_csc passes (8 and up).
 * Otherwise (a source 1 sample wide or high, or up to 2^sx) c1 is clamped to
 * sw - 1 and r1 to sh - 1; their weights are 0 there, so the value is the
 * unclamped definition's, and no sample outside the plane is read.
 */
int32_t kimgp_rsz_8b_org(const void *src, int32_t src_width, int32_t src_height,
                         int32_t dst_width, int32_t dst_height, void *dst, void *tmp,
                         int32_t src_stride, int32_t dst_stride, int32_t mode);

/*
 * Chroma-swapping resize of a two-plane frame, NV12 to NV21 or NV21 to NV12:
 * src and dst are the two descriptors (codes are not checked; every size of
 * plane 0, in bytes, and plane 1, in pairs, is read from them). Each plane is
 * scaled by its own sizes; the two bytes of every chroma pair are exchanged.
 * Returns 0, or -1 when a plane size is below 1 (nothing written).
 *
 * Per plane with source n x m and destination n' x m' samples (pairs for
 * plane 1): the single-precision ratios rx = (float)n / (float)n' and
 * ry = (float)m / (float)m'; for output column i, p = rx (float)i,
 * x0 = (int)p and x1 = (int)(p + 1.0f), clamped to n - 1 (likewise y0, y1
 * for row j with ry). The near column is x0 for even i and x1 for odd i,
 * the far column the other one; the same for rows with the parity of j.
 * Each output byte is
 *   (4 s(near, near) + 2 s(far, near) + 2 s(near, far) + s(far, far) + 4) / 9
 * (column, row), computed byte by byte within a pair.
 *
 * kimgp_rsz_apex gives the same bytes as kimgp_rsz_apex_c for every input; it
 * is the form kimgp_rsz_csc takes when the width ratio is 1.5, with a
 * three-to-two fixed column pattern on every plane whose own width ratio is
 * exactly 1.5.
 */
int32_t kimgp_rsz_apex(const kimgp_img *src, kimgp_img *dst);
int32_t kimgp_rsz_apex_c(const kimgp_img *src, kimgp_img *dst);

/*
 * Fused resize and conversion: src, dst, scratch, mode. A fused kernel gives
 * exactly the bytes of kimgp_rsz of the source into a YUV420 frame of dw x dh
 * (chroma planes (dw + 1) / 2 by (dh + 1) / 2) with rsz_mode = mode, followed
 * by kimgp_csc of that frame into dst (RGB565 or RGB888). The source's chroma
 * planes are taken as (sw + 1) / 2 by (sh + 1) / 2 (its width[1], height[1]
 * are not read). A T64X32 source is read as the tiled layout of kimgp_img.h,
 * i.e. as kimgp_csc would turn it into YUV420 first.
 *
 * Odd destination widths: kimgp_csc's pixel-pair path would write one pixel
 * beyond each row; a fused kernel writes only the dw pixels of the row, which
 * are those of the two steps (the pair path's chroma-row rule for odd heights
 * included). Nothing beyond dw pixels of dh rows is written.
 *
 * scratch holds at least KIMGP_RSZ_CSC_SCRATCH(sw, sh, dw, dh) bytes (any
 * alignment). Returns 0, or -1 when a plane-0 size is below 1.
 *
 * The helpers take the same arguments and give the same bytes for every
 * input; the fused kernels pick one by the plane-0 ratio:
 *   _down_mult_*       both directions shrink by whole numbers
 *   _down_non_mult*    both directions shrink, one not by a whole number
 *   _up_h2x_*_gen      the height doubles exactly (dh == 2 sh)
 *   _up_h_*_gen        any other size with a direction that grows or keeps
 */
#define KIMGP_RSZ_CSC_SCRATCH(sw, sh, dw, dh)                                 \
  ((long long)((dw) + 1) * ((sh) + 1) + (long long)(dw) * (dh) +                          \
   2LL * (((dw) + 1) / 2) * (((dh) + 1) / 2) + 2LL * ((sw) + 2))

int32_t kimgp_rsz_csc_yuv420_to_rgb565(const kimgp_img *src, kimgp_img *dst,
                                       void *scratch, int32_t mode);
int32_t kimgp_rsz_csc_yuv420_to_rgb888(const kimgp_img *src, kimgp_img *dst,
                                       void *scratch, int32_t mode);
int32_t kimgp_rsz_csc_t64x32_to_rgb565(const kimgp_img *src, kimgp_img *dst,
                                       void *scratch, int32_t mode);

int32_t kimgp_8b_rsz_csc_down_mult_yuvtorgb565(const kimgp_img *src, kimgp_img *dst,
                                               void *scratch, int32_t mode);
int32_t kimgp_8b_rsz_csc_down_non_multyuvtorgb565(const kimgp_img *src, kimgp_img *dst,
                                                  void *scratch, int32_t mode);
int32_t kimgp_8b_rsz_csc_down_mult_t64x32torgb565(const kimgp_img *src, kimgp_img *dst,
                                                  void *scratch, int32_t mode);
int32_t kimgp_8b_rsz_csc_down_non_multt64x32torgb565(const kimgp_img *src, kimgp_img *dst,
                                                     void *scratch, int32_t mode);
int32_t kimgp_rsz_csc_up_h_yuv420_to_rgb565_gen(const kimgp_img *src, kimgp_img *dst,
                                                void *scratch, int32_t mode);
int32_t kimgp_rsz_csc_up_h2x_yuv420_to_rgb565_gen(const kimgp_img *src, kimgp_img *dst,
                                                  void *scratch, int32_t mode);

/*
 * Horizontal passes of the resize reading a 64 x 32 tiled plane (the layout
 * of kimgp_img.h) directly: the arguments of kimgp_8b_rsz_up / _up_mode1 /
 * _down_w (src is the tiled plane, src_stride its stride), then `row`, a
 * buffer of at least sw bytes that receives one source row at a time. The
 * packed intermediate rows are those of the 8b kernels on the linear plane.
 * The _c variants read the interleaved chroma plane: widths in pairs, `row`
 * of at least 2 sw bytes, output as the 8b8b kernels give it.
 */
void kimgp_nv12t_rsz_up(const void *src, void *tmp, int32_t dw, int32_t sw, int32_t sh,
                        int32_t qw, int32_t rw, int32_t src_stride, void *row);
void kimgp_nv12t_rsz_up_mode1(const void *src, void *tmp, int32_t dw, int32_t sw,
                              int32_t sh, int32_t qw, int32_t rw, int32_t src_stride,
                              void *row);
void kimgp_nv12t_rsz_down_w(const void *src, void *tmp, int32_t src_stride, int32_t dw,
                            int32_t sh, int32_t fw, int32_t rw, void *row);
void kimgp_nv12t_rsz_up_c(const void *src, void *tmp, int32_t dw, int32_t sw, int32_t sh,
                          int32_t qw, int32_t rw, int32_t src_stride, void *row);
void kimgp_nv12t_rsz_up_mode1_c(const void *src, void *tmp, int32_t dw, int32_t sw,
                                int32_t sh, int32_t qw, int32_t rw, int32_t src_stride,
                                void *row);
void kimgp_nv12t_rsz_down_w_c(const void *src, void *tmp, int32_t src_stride, int32_t dw,
                              int32_t sh, int32_t fw, int32_t rw, void *row);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* KIMGP_RSZ_CSC_H */
