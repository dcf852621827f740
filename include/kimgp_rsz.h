/*
 * kimgp_rsz.h - resizing.
 *
 * kimgp_rsz scales a frame to the destination descriptor's plane sizes in the
 * same colour space. It routes by colour-space code to a per-layout resizer,
 * which picks a kernel by the ratio of the sizes and the destination's
 * rsz_mode (KIMGP_RSZ_MODE1 selects linear-ramp up-scaling).
 *
 * Filters are cheap and truncating: shrinking averages two or four samples
 * (a Bresenham-style error accumulator spreads a non-integer ratio over a row
 * or a column), growing repeats an in-between value or, in mode 1, follows a
 * 1/64-step ramp from `scale`. Multi-component samples are averaged component
 * by component (each byte; the 5-, 6- and 5-bit fields of a 5-6-5 pixel).
 *
 * Layouts: 8b bytes, 8b8b interleaved byte pairs (widths in pairs), 5b6b5b
 * 16-bit 5-6-5 pixels, 8b8b8b and 8b8b8b8b 3- and 4-byte pixels, 16b 16-bit
 * samples, 16b16b interleaved 16-bit pairs.
 */
#ifndef KIMGP_RSZ_H
#define KIMGP_RSZ_H

#include "kimgp_img.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Resizes src to dst's sizes. Returns KIMGP_OK; KIMGP_ERR_ARGS (-1) when the
 * codes differ or a plane size is below 1; KIMGP_ERR_UNSUPPORTED (-3) for
 * KIMGP_CS_T64X32, packed YUV, codes without a layout, and a P010LE ratio that
 * is not a whole-number shrink in both directions.
 *
 * Equal plane-0 sizes copy every plane. Otherwise the frame is resized plane by
 * plane through one intermediate buffer (rows of destination width samples:
 * every source row, or a strip of them when the height grows; none when both
 * directions shrink), on the stack up to 32 KB, else from the heap and freed
 * before return. Planes resized before a failing plane stay written (P010LE
 * plane 0 when plane 1's ratio fails).
 *
 * Out of memory: a heap intermediate that cannot be had returns
 * KIMGP_ERR_ARGS (-1) before anything is written. A growth in both directions
 * whose column plan cannot be had runs without it (the same bytes).
 */
int32_t kimgp_rsz(const kimgp_img *src, kimgp_img *dst);

/*
 * Per-layout resizers: source, source width, source height, destination width,
 * destination height, destination, intermediate buffer (source height x
 * destination width samples; a growing height uses only strips of rows from
 * its start), source stride, destination stride (bytes), mode.
 * Return KIMGP_OK, or KIMGP_ERR_ARGS when a size is below 1.
 */
int32_t kimgp_rsz_8b(const void *src, int32_t src_width, int32_t src_height,
                     int32_t dst_width, int32_t dst_height, void *dst, void *tmp,
                     int32_t src_stride, int32_t dst_stride, int32_t mode);
int32_t kimgp_rsz_8b8b(const void *src, int32_t src_width, int32_t src_height,
                       int32_t dst_width, int32_t dst_height, void *dst, void *tmp,
                       int32_t src_stride, int32_t dst_stride, int32_t mode);
int32_t kimgp_rsz_5b6b5b(const void *src, int32_t src_width, int32_t src_height,
                         int32_t dst_width, int32_t dst_height, void *dst, void *tmp,
                         int32_t src_stride, int32_t dst_stride, int32_t mode);
int32_t kimgp_rsz_8b8b8b(const void *src, int32_t src_width, int32_t src_height,
                         int32_t dst_width, int32_t dst_height, void *dst, void *tmp,
                         int32_t src_stride, int32_t dst_stride, int32_t mode);
int32_t kimgp_rsz_8b8b8b8b(const void *src, int32_t src_width, int32_t src_height,
                           int32_t dst_width, int32_t dst_height, void *dst, void *tmp,
                           int32_t src_stride, int32_t dst_stride, int32_t mode);

/*
 * Whole-number shrinks of one 16-bit plane and of one plane of interleaved
 * 16-bit pairs: source, source width, source height, destination width,
 * destination height, destination, source stride, destination stride.
 * KIMGP_ERR_UNSUPPORTED unless both ratios are whole numbers above 1.
 */
int32_t kimgp_rsz_16b(const void *src, int32_t src_width, int32_t src_height,
                      int32_t dst_width, int32_t dst_height, void *dst,
                      int32_t src_stride, int32_t dst_stride);
int32_t kimgp_rsz_16b16b(const void *src, int32_t src_width, int32_t src_height,
                         int32_t dst_width, int32_t dst_height, void *dst,
                         int32_t src_stride, int32_t dst_stride);

/*
 * Kernels. fw, rw = sw / dw, sw % dw and fh, rh = sh / dh, sh % dh for the
 * shrinking kinds; q, r = dw / sw, dw % sw (or dh / sh, dh % sh) for the
 * growing kinds. row_step is fh x source stride. Intermediate rows are packed:
 * row y starts at y x dw samples. Strides are bytes, except for the 5b6b5b
 * kernels, whose strides are in pixels. The 3- and 4-byte layouts use the 8b
 * vertical kernels with a width of 3 x dw or 4 x dw bytes.
 *
 *   _down_mult      both ratios whole: mean of the top-left 2x2 of each block
 *   _down_non_mult  both shrink: one- or two-tap per direction by the
 *                   error accumulators
 *   _down_w         width only, source to intermediate, all sh rows
 *   _down_h         height only, intermediate to destination
 *   _up, _up_h      grow width / height: the sample, then a repeated
 *                   in-between value
 *   _mode1          grow with a 1/64-step ramp (steps from `scale`)
 */
void kimgp_8b_rsz_down_mult(const void *src, void *dst, int32_t dw, int32_t dh,
                            int32_t fw, int32_t src_stride, int32_t row_step,
                            int32_t dst_stride);
void kimgp_8b_rsz_down_non_mult(const void *src, void *dst, int32_t dw, int32_t dh,
                                int32_t fw, int32_t src_stride, int32_t row_step,
                                int32_t rw, int32_t rh, int32_t dst_stride);
void kimgp_8b_rsz_down_w(const void *src, void *tmp, int32_t src_stride, int32_t dw,
                         int32_t sh, int32_t fw, int32_t rw);
void kimgp_8b_rsz_down_h(const void *tmp, void *dst, int32_t dw, int32_t dst_stride,
                         int32_t dh, int32_t fh, int32_t rh);
void kimgp_8b_rsz_up(const void *src, void *tmp, int32_t dw, int32_t sw, int32_t sh,
                     int32_t qw, int32_t rw, int32_t src_stride);
void kimgp_8b_rsz_up_mode1(const void *src, void *tmp, int32_t dw, int32_t sw,
                           int32_t sh, int32_t qw, int32_t rw, int32_t src_stride);
void kimgp_8b_rsz_up_h(const void *tmp, void *dst, int32_t dw, int32_t sh, int32_t dh,
                       int32_t qh, int32_t rh, int32_t dst_stride);
void kimgp_8b_rsz_up_h_mode1(const void *tmp, void *dst, int32_t dw, int32_t sh,
                             int32_t dh, int32_t qh, int32_t rh, int32_t dst_stride);

void kimgp_8b8b_rsz_down_mult(const void *src, void *dst, int32_t dw, int32_t dh,
                              int32_t fw, int32_t src_stride, int32_t row_step,
                              int32_t dst_stride);
void kimgp_8b8b_rsz_down_non_mult(const void *src, void *dst, int32_t dw, int32_t dh,
                                  int32_t fw, int32_t src_stride, int32_t row_step,
                                  int32_t rw, int32_t rh, int32_t dst_stride);
void kimgp_8b8b_rsz_down_w(const void *src, void *tmp, int32_t src_stride, int32_t dw,
                           int32_t sh, int32_t fw, int32_t rw);
void kimgp_8b8b_rsz_down_h(const void *tmp, void *dst, int32_t dw, int32_t dst_stride,
                           int32_t dh, int32_t fh, int32_t rh);
void kimgp_8b8b_rsz_up(const void *src, void *tmp, int32_t dw, int32_t sw, int32_t sh,
                       int32_t qw, int32_t rw, int32_t src_stride);
void kimgp_8b8b_rsz_up_mode1(const void *src, void *tmp, int32_t dw, int32_t sw,
                             int32_t sh, int32_t qw, int32_t rw, int32_t src_stride);
void kimgp_8b8b_rsz_up_h(const void *tmp, void *dst, int32_t dw, int32_t sh, int32_t dh,
                         int32_t qh, int32_t rh, int32_t dst_stride);
void kimgp_8b8b_rsz_up_h_mode1(const void *tmp, void *dst, int32_t dw, int32_t sh,
                               int32_t dh, int32_t qh, int32_t rh, int32_t dst_stride);

void kimgp_5b6b5b_rsz_down_mult(const void *src, void *dst, int32_t dw, int32_t dh,
                                int32_t fw, int32_t src_stride, int32_t row_step,
                                int32_t dst_stride);
void kimgp_5b6b5b_rsz_down_non_mult(const void *src, void *dst, int32_t dw, int32_t dh,
                                    int32_t fw, int32_t src_stride, int32_t row_step,
                                    int32_t rw, int32_t rh, int32_t dst_stride);
void kimgp_5b6b5b_rsz_down_w(const void *src, void *tmp, int32_t src_stride, int32_t dw,
                             int32_t sh, int32_t fw, int32_t rw);
void kimgp_5b6b5b_rsz_down_h(const void *tmp, void *dst, int32_t dw, int32_t dst_stride,
                             int32_t dh, int32_t fh, int32_t rh);
void kimgp_5b6b5b_rsz_up(const void *src, void *tmp, int32_t dw, int32_t sw, int32_t sh,
                         int32_t qw, int32_t rw, int32_t src_stride);
void kimgp_5b6b5b_rsz_up_mode1(const void *src, void *tmp, int32_t dw, int32_t sw,
                               int32_t sh, int32_t qw, int32_t rw, int32_t src_stride);
void kimgp_5b6b5b_rsz_up_h(const void *tmp, void *dst, int32_t dw, int32_t sh,
                           int32_t dh, int32_t qh, int32_t rh, int32_t dst_stride);
void kimgp_5b6b5b_rsz_up_h_mode1(const void *tmp, void *dst, int32_t dw, int32_t sh,
                                 int32_t dh, int32_t qh, int32_t rh,
                                 int32_t dst_stride);

void kimgp_8b8b8b_rsz_down_mult(const void *src, void *dst, int32_t dw, int32_t dh,
                                int32_t fw, int32_t src_stride, int32_t row_step,
                                int32_t dst_stride);
void kimgp_8b8b8b_rsz_down_non_mult(const void *src, void *dst, int32_t dw, int32_t dh,
                                    int32_t fw, int32_t src_stride, int32_t row_step,
                                    int32_t rw, int32_t rh, int32_t dst_stride);
void kimgp_8b8b8b_rsz_down_w(const void *src, void *tmp, int32_t src_stride, int32_t dw,
                             int32_t sh, int32_t fw, int32_t rw);
void kimgp_8b8b8b_rsz_up(const void *src, void *tmp, int32_t dw, int32_t sw, int32_t sh,
                         int32_t qw, int32_t rw, int32_t src_stride);
void kimgp_8b8b8b_rsz_up_mode1(const void *src, void *tmp, int32_t dw, int32_t sw,
                               int32_t sh, int32_t qw, int32_t rw, int32_t src_stride);

void kimgp_8b8b8b8b_rsz_down_mult(const void *src, void *dst, int32_t dw, int32_t dh,
                                  int32_t fw, int32_t src_stride, int32_t row_step,
                                  int32_t dst_stride);
void kimgp_8b8b8b8b_rsz_down_non_mult(const void *src, void *dst, int32_t dw, int32_t dh,
                                      int32_t fw, int32_t src_stride, int32_t row_step,
                                      int32_t rw, int32_t rh, int32_t dst_stride);
void kimgp_8b8b8b8b_rsz_down_w(const void *src, void *tmp, int32_t src_stride,
                               int32_t dw, int32_t sh, int32_t fw, int32_t rw);
void kimgp_8b8b8b8b_rsz_up(const void *src, void *tmp, int32_t dw, int32_t sw,
                           int32_t sh, int32_t qw, int32_t rw, int32_t src_stride);
void kimgp_8b8b8b8b_rsz_up_mode1(const void *src, void *tmp, int32_t dw, int32_t sw,
                                 int32_t sh, int32_t qw, int32_t rw,
                                 int32_t src_stride);

void kimgp_16b_rsz_down_mult(const void *src, void *dst, int32_t dw, int32_t dh,
                             int32_t fw, int32_t src_stride, int32_t row_step,
                             int32_t dst_stride);

void kimgp_16b16b_rsz_down_mult(const void *src, void *dst, int32_t dw, int32_t dh,
                                int32_t fw, int32_t src_stride, int32_t row_step,
                                int32_t dst_stride);

/*
 * 1280 to 720 (or 640 to 360 pairs) in width with fh = 1: the output of
 * _down_non_mult for that ratio through its fixed column pattern. dw must be a
 * multiple of 9.
 */
void kimgp_8b_rsz_down_non_mult_720p_720x404(const void *src, void *dst, int32_t dw,
                                             int32_t dh, int32_t fw, int32_t src_stride,
                                             int32_t row_step, int32_t rw, int32_t rh,
                                             int32_t dst_stride);
void kimgp_8b8b_rsz_down_non_mult_720p_720x404(const void *src, void *dst, int32_t dw,
                                               int32_t dh, int32_t fw,
                                               int32_t src_stride, int32_t row_step,
                                               int32_t rw, int32_t rh,
                                               int32_t dst_stride);

/*
 * Ramp steps in 1/64 units indexed by the number of outputs one source sample
 * spans (index 33 serves every larger span).
 */
extern const uint32_t scale[34];

/*
 * Bilinear weights in 1/64 units: for horizontal phase h and vertical phase v
 * (0..7) the bytes at (h x 8 + v) x 4 are the weights of the top-left,
 * top-right, bottom-left and bottom-right neighbours, summing to 64.
 */
extern const uint8_t kimgp_tbl_rsz_weight[256];

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* KIMGP_RSZ_H */
