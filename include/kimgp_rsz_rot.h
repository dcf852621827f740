/*
 * kimgp_rsz_rot.h - resizing combined with a quarter or half turn.
 *
 * kimgp_rsz_rot scales an 8-bit YUV frame to the destination's sizes and
 * rotates it in the same call. The destination descriptor has the rotated
 * geometry: for KIMGP_ROT_90L and KIMGP_ROT_90R its width is the height of
 * the scaled, unrotated picture. The filters are those of kimgp_rsz.h
 * (truncating two- and four-sample averages, error accumulators, repeated or
 * ramped in-between values, the destination's rsz_mode); the rotation only
 * decides where each result sample is stored. A value that the plain resize
 * would put at (x, y) of its W x H result goes:
 *
 *   KIMGP_ROT_90L  to column y, row W-1-x
 *   KIMGP_ROT_90R  to column H-1-y, row x
 *   KIMGP_ROT_180  to (W-1-x, H-1-y)
 *
 * No rotated full-size copy of the frame is made: the rotating kernels
 * produce a few rows at a time and turn them into place.
 */
#ifndef KIMGP_RSZ_ROT_H
#define KIMGP_RSZ_ROT_H

#include "kimgp_img.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Resizes src to dst's sizes and rotates it by rot (a KIMGP_ROT_* code).
 * Returns:
 *   KIMGP_ERR_ARGS (-1), nothing written, when the colour-space codes differ
 *     or when the intermediate buffer cannot be allocated;
 *   otherwise, with nothing to scale (for 90L and 90R the source width equals
 *     the destination height and the source height the destination width; for
 *     every other code both sizes are equal; in every plane the code uses, so
 *     that a quarter turn of 4:2:2 chroma is scaled) the status of
 *     kimgp_rot(src, rot, dst): the only way packed RGB frames pass;
 *   KIMGP_ERR_UNSUPPORTED (-3), nothing written, for a colour space outside
 *     0..99 and for KIMGP_CS_T64X32 when scaling is needed;
 *   KIMGP_OK, or the first failing plane's status: KIMGP_ERR_ARGS from a
 *     resizer for a plane size below 1 (earlier planes stay written).
 *
 * With scaling, each plane (plane 0 only for KIMGP_CS_YUV400, planes 0 and 1
 * for NV12/NV21, else planes 0, 1 and 2) goes through the rotating resizer of
 * the code: kimgp_rsz_8b_rot_90l/_90r/_180 for byte planes and
 * kimgp_rsz_8b8b_rot_* for the interleaved chroma of NV12/NV21. Every other
 * code (copy, and also KIMGP_ROT_HORI and KIMGP_ROT_VERT) runs the plain
 * kimgp_rsz_8b / kimgp_rsz_8b8b: a mirror combined with a change of size is
 * NOT mirrored.
 *
 * One intermediate buffer from the heap serves every plane and is freed
 * before return: source height x destination height bytes for 90L and 90R,
 * source height x destination width for 180 and for NV12/NV21 with the other
 * codes, source height x destination stride for the other codes. It is made
 * larger when a plane's horizontal pass needs more (tiny NV12/NV21 frames).
 *
 * Out of memory: the intermediate's failure is the -1 above; a quarter-turned
 * shrink whose band buffer cannot be had turns its rows one tile at a time
 * instead (the same bytes).
 */
int32_t kimgp_rsz_rot(const kimgp_img *src, int32_t rot, kimgp_img *dst);

/*
 * Rotating resizers, with the ten arguments of kimgp_rsz_8b: source, source
 * width, source height, destination width, destination height (the rotated
 * destination's own sizes), destination, intermediate, source stride,
 * destination stride (bytes), mode. Widths of the 8b8b resizers are in pairs.
 * Return KIMGP_OK, or KIMGP_ERR_ARGS when a size is below 1.
 *
 * For 90l and 90r the plain result is W x H = destination height x
 * destination width, so the source width is compared with the destination
 * height (qa = dh / sw) and the source height with the destination width
 * (qb = dw / sh); for 180 W x H = dw x dh, qa = dw / sw, qb = dh / sh.
 * Both below 1: the rotating _down_mult when sw is a multiple of W and sh of
 * H, else _down_non_mult (there is no fixed-size path). Otherwise two passes:
 * _down_w (qa < 1), _up_mode1 (mode KIMGP_RSZ_MODE1) or _up writes sh plain
 * rows of W samples to the intermediate (sh x W samples), then _down_h
 * (qb < 1), _up_h_mode1 or _up_h writes them rotated.
 */
int32_t kimgp_rsz_8b_rot_90l(const void *src, int32_t src_width, int32_t src_height,
                             int32_t dst_width, int32_t dst_height, void *dst, void *tmp,
                             int32_t src_stride, int32_t dst_stride, int32_t mode);
int32_t kimgp_rsz_8b_rot_90r(const void *src, int32_t src_width, int32_t src_height,
                             int32_t dst_width, int32_t dst_height, void *dst, void *tmp,
                             int32_t src_stride, int32_t dst_stride, int32_t mode);
int32_t kimgp_rsz_8b_rot_180(const void *src, int32_t src_width, int32_t src_height,
                             int32_t dst_width, int32_t dst_height, void *dst, void *tmp,
                             int32_t src_stride, int32_t dst_stride, int32_t mode);
int32_t kimgp_rsz_8b8b_rot_90l(const void *src, int32_t src_width, int32_t src_height,
                               int32_t dst_width, int32_t dst_height, void *dst, void *tmp,
                               int32_t src_stride, int32_t dst_stride, int32_t mode);
int32_t kimgp_rsz_8b8b_rot_90r(const void *src, int32_t src_width, int32_t src_height,
                               int32_t dst_width, int32_t dst_height, void *dst, void *tmp,
                               int32_t src_stride, int32_t dst_stride, int32_t mode);
int32_t kimgp_rsz_8b8b_rot_180(const void *src, int32_t src_width, int32_t src_height,
                               int32_t dst_width, int32_t dst_height, void *dst, void *tmp,
                               int32_t src_stride, int32_t dst_stride, int32_t mode);

/*
 * An empty entry point kept for callers that link it: takes the ten
 * resizer arguments, returns at once and writes nothing.
 */
void kimgp_rsz_8b_rot_90r_quarter(const void *src, int32_t src_width, int32_t src_height,
                                  int32_t dst_width, int32_t dst_height, void *dst,
                                  void *tmp, int32_t src_stride, int32_t dst_stride,
                                  int32_t mode);

/*
 * Rotating kernels, kimgp_<layout>_rsz_rot_<90l|90r|180>_<kind>. Each takes
 * exactly the arguments of its plain twin in kimgp_rsz.h, where dw and dh
 * are the sizes of the plain (unrotated) result W x H, and the destination
 * stride is that of the rotated destination. It writes exactly the plain
 * kernel's output, rotated as above (W x H plain becomes H x W for the
 * quarter turns). The horizontal-pass kinds (_down_w, _up, _up_mode1) write
 * plain, unrotated rows to the intermediate and are the plain kernels under
 * another name; the vertical kinds read that intermediate (rows of dw
 * samples) and write rotated.
 */
void kimgp_8b_rsz_rot_90l_down_mult(const void *src, void *dst, int32_t dw, int32_t dh,
                                    int32_t fw, int32_t src_stride, int32_t row_step,
                                    int32_t dst_stride);
void kimgp_8b_rsz_rot_90l_down_non_mult(const void *src, void *dst, int32_t dw,
                                        int32_t dh, int32_t fw, int32_t src_stride,
                                        int32_t row_step, int32_t rw, int32_t rh,
                                        int32_t dst_stride);
void kimgp_8b_rsz_rot_90l_down_w(const void *src, void *tmp, int32_t src_stride,
                                 int32_t dw, int32_t sh, int32_t fw, int32_t rw);
void kimgp_8b_rsz_rot_90l_down_h(const void *tmp, void *dst, int32_t dw,
                                 int32_t dst_stride, int32_t dh, int32_t fh, int32_t rh);
void kimgp_8b_rsz_rot_90l_up(const void *src, void *tmp, int32_t dw, int32_t sw,
                             int32_t sh, int32_t qw, int32_t rw, int32_t src_stride);
void kimgp_8b_rsz_rot_90l_up_mode1(const void *src, void *tmp, int32_t dw, int32_t sw,
                                   int32_t sh, int32_t qw, int32_t rw, int32_t src_stride);
void kimgp_8b_rsz_rot_90l_up_h(const void *tmp, void *dst, int32_t dw, int32_t sh,
                               int32_t dh, int32_t qh, int32_t rh, int32_t dst_stride);
void kimgp_8b_rsz_rot_90l_up_h_mode1(const void *tmp, void *dst, int32_t dw, int32_t sh,
                                     int32_t dh, int32_t qh, int32_t rh, int32_t dst_stride);

void kimgp_8b_rsz_rot_90r_down_mult(const void *src, void *dst, int32_t dw, int32_t dh,
                                    int32_t fw, int32_t src_stride, int32_t row_step,
                                    int32_t dst_stride);
void kimgp_8b_rsz_rot_90r_down_non_mult(const void *src, void *dst, int32_t dw,
                                        int32_t dh, int32_t fw, int32_t src_stride,
                                        int32_t row_step, int32_t rw, int32_t rh,
                                        int32_t dst_stride);
void kimgp_8b_rsz_rot_90r_down_w(const void *src, void *tmp, int32_t src_stride,
                                 int32_t dw, int32_t sh, int32_t fw, int32_t rw);
void kimgp_8b_rsz_rot_90r_down_h(const void *tmp, void *dst, int32_t dw,
                                 int32_t dst_stride, int32_t dh, int32_t fh, int32_t rh);
void kimgp_8b_rsz_rot_90r_up(const void *src, void *tmp, int32_t dw, int32_t sw,
                             int32_t sh, int32_t qw, int32_t rw, int32_t src_stride);
void kimgp_8b_rsz_rot_90r_up_mode1(const void *src, void *tmp, int32_t dw, int32_t sw,
                                   int32_t sh, int32_t qw, int32_t rw, int32_t src_stride);
void kimgp_8b_rsz_rot_90r_up_h(const void *tmp, void *dst, int32_t dw, int32_t sh,
                               int32_t dh, int32_t qh, int32_t rh, int32_t dst_stride);
void kimgp_8b_rsz_rot_90r_up_h_mode1(const void *tmp, void *dst, int32_t dw, int32_t sh,
                                     int32_t dh, int32_t qh, int32_t rh, int32_t dst_stride);

void kimgp_8b_rsz_rot_180_down_mult(const void *src, void *dst, int32_t dw, int32_t dh,
                                    int32_t fw, int32_t src_stride, int32_t row_step,
                                    int32_t dst_stride);
void kimgp_8b_rsz_rot_180_down_non_mult(const void *src, void *dst, int32_t dw,
                                        int32_t dh, int32_t fw, int32_t src_stride,
                                        int32_t row_step, int32_t rw, int32_t rh,
                                        int32_t dst_stride);
void kimgp_8b_rsz_rot_180_down_w(const void *src, void *tmp, int32_t src_stride,
                                 int32_t dw, int32_t sh, int32_t fw, int32_t rw);
void kimgp_8b_rsz_rot_180_down_h(const void *tmp, void *dst, int32_t dw,
                                 int32_t dst_stride, int32_t dh, int32_t fh, int32_t rh);
void kimgp_8b_rsz_rot_180_up(const void *src, void *tmp, int32_t dw, int32_t sw,
                             int32_t sh, int32_t qw, int32_t rw, int32_t src_stride);
void kimgp_8b_rsz_rot_180_up_mode1(const void *src, void *tmp, int32_t dw, int32_t sw,
                                   int32_t sh, int32_t qw, int32_t rw, int32_t src_stride);
void kimgp_8b_rsz_rot_180_up_h(const void *tmp, void *dst, int32_t dw, int32_t sh,
                               int32_t dh, int32_t qh, int32_t rh, int32_t dst_stride);
void kimgp_8b_rsz_rot_180_up_h_mode1(const void *tmp, void *dst, int32_t dw, int32_t sh,
                                     int32_t dh, int32_t qh, int32_t rh, int32_t dst_stride);

void kimgp_8b8b_rsz_rot_90l_down_mult(const void *src, void *dst, int32_t dw, int32_t dh,
                                      int32_t fw, int32_t src_stride, int32_t row_step,
                                      int32_t dst_stride);
void kimgp_8b8b_rsz_rot_90l_down_non_mult(const void *src, void *dst, int32_t dw,
                                          int32_t dh, int32_t fw, int32_t src_stride,
                                          int32_t row_step, int32_t rw, int32_t rh,
                                          int32_t dst_stride);
void kimgp_8b8b_rsz_rot_90l_down_w(const void *src, void *tmp, int32_t src_stride,
                                   int32_t dw, int32_t sh, int32_t fw, int32_t rw);
void kimgp_8b8b_rsz_rot_90l_down_h(const void *tmp, void *dst, int32_t dw,
                                   int32_t dst_stride, int32_t dh, int32_t fh, int32_t rh);
void kimgp_8b8b_rsz_rot_90l_up(const void *src, void *tmp, int32_t dw, int32_t sw,
                               int32_t sh, int32_t qw, int32_t rw, int32_t src_stride);
void kimgp_8b8b_rsz_rot_90l_up_mode1(const void *src, void *tmp, int32_t dw, int32_t sw,
                                     int32_t sh, int32_t qw, int32_t rw, int32_t src_stride);
void kimgp_8b8b_rsz_rot_90l_up_h(const void *tmp, void *dst, int32_t dw, int32_t sh,
                                 int32_t dh, int32_t qh, int32_t rh, int32_t dst_stride);
void kimgp_8b8b_rsz_rot_90l_up_h_mode1(const void *tmp, void *dst, int32_t dw, int32_t sh,
                                       int32_t dh, int32_t qh, int32_t rh, int32_t dst_stride);

void kimgp_8b8b_rsz_rot_90r_down_mult(const void *src, void *dst, int32_t dw, int32_t dh,
                                      int32_t fw, int32_t src_stride, int32_t row_step,
                                      int32_t dst_stride);
void kimgp_8b8b_rsz_rot_90r_down_non_mult(const void *src, void *dst, int32_t dw,
                                          int32_t dh, int32_t fw, int32_t src_stride,
                                          int32_t row_step, int32_t rw, int32_t rh,
                                          int32_t dst_stride);
void kimgp_8b8b_rsz_rot_90r_down_w(const void *src, void *tmp, int32_t src_stride,
                                   int32_t dw, int32_t sh, int32_t fw, int32_t rw);
void kimgp_8b8b_rsz_rot_90r_down_h(const void *tmp, void *dst, int32_t dw,
                                   int32_t dst_stride, int32_t dh, int32_t fh, int32_t rh);
void kimgp_8b8b_rsz_rot_90r_up(const void *src, void *tmp, int32_t dw, int32_t sw,
                               int32_t sh, int32_t qw, int32_t rw, int32_t src_stride);
void kimgp_8b8b_rsz_rot_90r_up_mode1(const void *src, void *tmp, int32_t dw, int32_t sw,
                                     int32_t sh, int32_t qw, int32_t rw, int32_t src_stride);
void kimgp_8b8b_rsz_rot_90r_up_h(const void *tmp, void *dst, int32_t dw, int32_t sh,
                                 int32_t dh, int32_t qh, int32_t rh, int32_t dst_stride);
void kimgp_8b8b_rsz_rot_90r_up_h_mode1(const void *tmp, void *dst, int32_t dw, int32_t sh,
                                       int32_t dh, int32_t qh, int32_t rh, int32_t dst_stride);

void kimgp_8b8b_rsz_rot_180_down_mult(const void *src, void *dst, int32_t dw, int32_t dh,
                                      int32_t fw, int32_t src_stride, int32_t row_step,
                                      int32_t dst_stride);
void kimgp_8b8b_rsz_rot_180_down_non_mult(const void *src, void *dst, int32_t dw,
                                          int32_t dh, int32_t fw, int32_t src_stride,
                                          int32_t row_step, int32_t rw, int32_t rh,
                                          int32_t dst_stride);
void kimgp_8b8b_rsz_rot_180_down_w(const void *src, void *tmp, int32_t src_stride,
                                   int32_t dw, int32_t sh, int32_t fw, int32_t rw);
void kimgp_8b8b_rsz_rot_180_down_h(const void *tmp, void *dst, int32_t dw,
                                   int32_t dst_stride, int32_t dh, int32_t fh, int32_t rh);
void kimgp_8b8b_rsz_rot_180_up(const void *src, void *tmp, int32_t dw, int32_t sw,
                               int32_t sh, int32_t qw, int32_t rw, int32_t src_stride);
void kimgp_8b8b_rsz_rot_180_up_mode1(const void *src, void *tmp, int32_t dw, int32_t sw,
                                     int32_t sh, int32_t qw, int32_t rw, int32_t src_stride);
void kimgp_8b8b_rsz_rot_180_up_h(const void *tmp, void *dst, int32_t dw, int32_t sh,
                                 int32_t dh, int32_t qh, int32_t rh, int32_t dst_stride);
void kimgp_8b8b_rsz_rot_180_up_h_mode1(const void *tmp, void *dst, int32_t dw, int32_t sh,
                                       int32_t dh, int32_t qh, int32_t rh, int32_t dst_stride);
#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* KIMGP_RSZ_ROT_H */
