/*
 * kimgp_rot.h - rotation by quarter turns and flips.
 *
 * kimgp_rot turns or mirrors every plane of a frame. The source's colour-space
 * code picks a kernel table by sample width (8, 16, 24 or 32 bits; an NV12 or
 * NV21 chroma plane moves as 16-bit pairs) and the rotation code
 * (KIMGP_ROT_*, 0..5) picks the row of that table. Sample (x, y) of a W x H
 * plane goes to:
 *
 *   KIMGP_ROT_COPY  (x, y)
 *   KIMGP_ROT_90L   column y of row W-1-x  (result H wide, W high)
 *   KIMGP_ROT_90R   column H-1-y of row x  (result H wide, W high)
 *   KIMGP_ROT_180   (W-1-x, H-1-y)
 *   KIMGP_ROT_HORI  (W-1-x, y)
 *   KIMGP_ROT_VERT  (x, H-1-y)
 *
 * Only the source descriptor's sizes are read; the caller sizes the
 * destination (widths and heights exchanged for the quarter turns) and gives
 * its strides and planes. Source and destination must not overlap.
 */
#ifndef KIMGP_ROT_H
#define KIMGP_ROT_H

#include "kimgp_img.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * A plane kernel: source, width in sample units, height in rows, source
 * stride in bytes, destination stride in bytes, destination. Only the first
 * `width` units of each row are read and written; a width or height below 1
 * writes nothing. The copy primitives of kimgp_copy.h have the same shape.
 */
typedef void (*kimgp_plane_fn)(const void *src, int32_t width, int32_t height,
                               int32_t src_stride, int32_t dst_stride, void *dst);

/*
 * Rotates or flips src into dst. Returns KIMGP_OK, or KIMGP_ERR_UNSUPPORTED
 * (-3) with nothing written for packed YUV (100..199), 300..399, 600 and up,
 * negative codes, KIMGP_CS_T64X32, and 8-bit YUV or 16-bit RGB whose table
 * row is empty. Pass a rotation code 0..5; larger codes also return -3.
 * The destination's cs, widths and heights are not read or checked.
 *
 * Planes: YUV400 plane 0; NV12/NV21 plane 0 as bytes and plane 1 as 16-bit
 * pairs; every other code up to 99 planes 0, 1 and 2 as bytes; 2xx, 4xx and
 * 5xx plane 0 as 2-, 3- and 4-byte units.
 */
int32_t kimgp_rot(const kimgp_img *src, uint32_t rot, kimgp_img *dst);

/* Kernel tables, one row per rotation code; row 0 is the plane copy. */
extern const kimgp_plane_fn kimgp_tbl_fn_rot_8b[6];
extern const kimgp_plane_fn kimgp_tbl_fn_rot_16b[6];
extern const kimgp_plane_fn kimgp_tbl_fn_rot_24b[6];
extern const kimgp_plane_fn kimgp_tbl_fn_rot_32b[6];

/* Plane kernels, kimgp_rot_<sample width>_<operation>, as kimgp_plane_fn. */
void kimgp_rot_8b_90l(const void *src, int32_t width, int32_t height,
                      int32_t src_stride, int32_t dst_stride, void *dst);
void kimgp_rot_8b_90r(const void *src, int32_t width, int32_t height,
                      int32_t src_stride, int32_t dst_stride, void *dst);
void kimgp_rot_8b_180(const void *src, int32_t width, int32_t height,
                      int32_t src_stride, int32_t dst_stride, void *dst);
void kimgp_rot_8b_hori(const void *src, int32_t width, int32_t height,
                       int32_t src_stride, int32_t dst_stride, void *dst);
void kimgp_rot_8b_vert(const void *src, int32_t width, int32_t height,
                       int32_t src_stride, int32_t dst_stride, void *dst);
void kimgp_rot_16b_90l(const void *src, int32_t width, int32_t height,
                       int32_t src_stride, int32_t dst_stride, void *dst);
void kimgp_rot_16b_90r(const void *src, int32_t width, int32_t height,
                       int32_t src_stride, int32_t dst_stride, void *dst);
void kimgp_rot_16b_180(const void *src, int32_t width, int32_t height,
                       int32_t src_stride, int32_t dst_stride, void *dst);
void kimgp_rot_16b_hori(const void *src, int32_t width, int32_t height,
                        int32_t src_stride, int32_t dst_stride, void *dst);
void kimgp_rot_16b_vert(const void *src, int32_t width, int32_t height,
                        int32_t src_stride, int32_t dst_stride, void *dst);
void kimgp_rot_24b_90l(const void *src, int32_t width, int32_t height,
                       int32_t src_stride, int32_t dst_stride, void *dst);
void kimgp_rot_24b_90r(const void *src, int32_t width, int32_t height,
                       int32_t src_stride, int32_t dst_stride, void *dst);
void kimgp_rot_24b_180(const void *src, int32_t width, int32_t height,
                       int32_t src_stride, int32_t dst_stride, void *dst);
void kimgp_rot_24b_hori(const void *src, int32_t width, int32_t height,
                        int32_t src_stride, int32_t dst_stride, void *dst);
void kimgp_rot_24b_vert(const void *src, int32_t width, int32_t height,
                        int32_t src_stride, int32_t dst_stride, void *dst);
void kimgp_rot_32b_90l(const void *src, int32_t width, int32_t height,
                       int32_t src_stride, int32_t dst_stride, void *dst);
void kimgp_rot_32b_90r(const void *src, int32_t width, int32_t height,
                       int32_t src_stride, int32_t dst_stride, void *dst);
void kimgp_rot_32b_180(const void *src, int32_t width, int32_t height,
                       int32_t src_stride, int32_t dst_stride, void *dst);
void kimgp_rot_32b_hori(const void *src, int32_t width, int32_t height,
                        int32_t src_stride, int32_t dst_stride, void *dst);
void kimgp_rot_32b_vert(const void *src, int32_t width, int32_t height,
                        int32_t src_stride, int32_t dst_stride, void *dst);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* KIMGP_ROT_H */
