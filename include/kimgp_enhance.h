/*
 * kimgp_enhance.h - enhancement filters: 8x8 deblocking of block-coded
 * pictures, colour saturation through a chroma mapping table, detail
 * enhancement (sharpening) of the luma plane.
 */
#ifndef KIMGP_ENHANCE_H
#define KIMGP_ENHANCE_H

#include "kimgp_img.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Deblocking, in place, on an 8-bit plane of `width` x `height` samples with
 * `stride` bytes per row.
 *
 * The edge filter takes four pixels A, B, C, D in a line across a block
 * edge (the edge between B and C) and the strength S:
 *   s = A - 4B + 4C - D; m = |s >> 3| (arithmetic shift);
 *   if m - S >= 0 (16-bit), m = m - 2(m - S) (16-bit); m = max(m, 0);
 *   d1 = m with the sign of s; B' = B + d1 and C' = C - d1, clipped to 0..255
 *   (the exact sums are clipped);
 *   d2 = (A - D) >> 2 clamped to -(m >> 1) .. m >> 1; A' = A - d2, D' = D + d2.
 * Full correction up to S, falling to none at 2S.
 *
 * kimgp_dbf8x8_h263_hor filters the edges between rows 8k - 1 and 8k for
 * k = 1 .. (height >> 3) - 1, every column, top to bottom; kimgp_dbf8x8_h263_ver
 * the edges between columns 8k - 1 and 8k for k = 1 .. (width >> 3) - 1,
 * every row, left to right. Nothing is filtered below 16 rows (columns); the
 * outer border and the rows (columns) of a final partial block are never
 * touched. Both read `strength` as its low 16 bits, signed.
 */
void kimgp_dbf8x8_h263_hor(uint8_t *plane, int32_t strength, int32_t stride,
                           int32_t width, int32_t height);
void kimgp_dbf8x8_h263_ver(uint8_t *plane, int32_t strength, int32_t stride,
                           int32_t width, int32_t height);

/* One plane: S = min(strength, 12) (signed), horizontal edges, then
 * vertical edges. */
void kimgp_dbf8x8(uint8_t *plane, int32_t strength, int32_t stride,
                  int32_t width, int32_t height);

/*
 * Every plane of a frame, in place: returns KIMGP_ERR_ARGS (-1), changing
 * nothing, when strength > 15. Otherwise planes 0, 1, 2 in order, each with
 * its own width, height and stride, horizontal then vertical edges, with the
 * strength as given (not limited to 12); null planes are skipped. The
 * colour-space code is not read, so chroma planes are filtered on their own
 * 8x8 grid. Returns 0.
 */
int32_t kimgp_dbf8x8_yuv(kimgp_img *img, uint32_t strength);

/*
 * Colour saturation table: 256 bytes, written by kimgp_vqe_cs_init and
 * shared by every caller of the library (no lock).
 */
extern uint8_t lut[256];

/*
 * Builds a saturation table for `gain` (1024 is unity). Entry j maps the
 * source value s[j], where s is 0, 0, 1, 0, 2, 0, ..., 127, 0 (s[j] = j / 2
 * for even j, 0 for odd j):
 *   table[j] = saturate_0_255((int16)(((s[j] - 128) * gain) >> 10) + 128)
 * So every odd entry is 128 - ((128 * gain) >> 10), saturated; the table is
 * not an identity-based ramp.
 */
void color_sat_lut(uint8_t *table, int16_t gain);

/*
 * du[i] = table[su[i]] and dv[i] = table[sv[i]] for i in 0 .. n - 1 (n
 * contiguous bytes per plane). Samples go in pairs, an odd last one alone.
 * n = 1 maps one sample; n < 1 does nothing.
 */
void color_sat(const uint8_t *table, int32_t n, const uint8_t *su,
               const uint8_t *sv, uint8_t *du, uint8_t *dv);

/*
 * Sharpens a w x h plane from src into dst; both are contiguous rows of w
 * bytes (no stride) and must not overlap. Rows 0, 1, h - 2, h - 1 and the
 * first and last two pixels of every other row are copied; each other pixel
 * p becomes saturate_0_255(p + ((16p - S) >> 4)) with
 *   S = 2 (left1 + right1 + up1 + down1) + (left2 + right2 + up2 + down2)
 *       + (up-left + up-right + down-left + down-right),
 * in 16-bit arithmetic (the weights add up to 16: flat areas are unchanged).
 * `strength` is accepted and does not change the result. Rows below h are
 * never touched (a plane of one row copies one row); w < 5 copies the rows
 * unchanged.
 */
void detail_enh(const uint8_t *src, int32_t w, int32_t h, uint8_t *dst,
                int32_t strength);

/* Fills `lut` for `gain` (below 1: 1180; otherwise its low 16 bits, signed)
 * with color_sat_lut. Returns 0. */
int32_t kimgp_vqe_cs_init(int32_t gain);

/*
 * WARNING: this does not saturate colours. kimgp_vqe_cs maps both chroma
 * planes through a table of its own that is all zeros: it sets every one of
 * the src width[1] x src height[1] U and V samples of dst to 0. It does not
 * read `lut` (nothing in the library reads it). To change saturation, build
 * a table with color_sat_lut and apply it with color_sat.
 *
 * Both cs must be KIMGP_CS_YUV420, else KIMGP_ERR_ARGS (-1) and nothing is
 * written. Strides are not consulted: each chroma plane is n contiguous
 * bytes. The luma plane is neither read nor written. Returns 0.
 */
int32_t kimgp_vqe_cs(const kimgp_img *src, kimgp_img *dst);

/*
 * Detail enhancement of the luma plane: detail_enh(src plane 0, src width[0],
 * src height[0], dst plane 0, strength, or 4 when strength < 1). Rows are
 * width[0] bytes apart (strides are not consulted); the chroma planes of dst
 * are left as they were. Both cs must be KIMGP_CS_YUV420, else
 * KIMGP_ERR_ARGS (-1) and nothing is written. Returns 0.
 */
int32_t kimgp_vqe_de(const kimgp_img *src, kimgp_img *dst, int32_t strength);

/* Does nothing; returns 0. */
int32_t kimgp_vqe_dejagging(void);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* KIMGP_ENHANCE_H */
