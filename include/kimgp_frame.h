/*
 * kimgp_frame.h - crop, padding and stereo frame packing: copy-only
 * operations that change a frame's extent or arrangement.
 *
 * The region offset is always the source descriptor's `x` and `y`: where
 * kimgp_crop starts reading the source, where kimgp_padding places the
 * source inside the destination. Rows are moved with the library's block
 * copy and fill at memory speed.
 */
#ifndef KIMGP_FRAME_H
#define KIMGP_FRAME_H

#include "kimgp_img.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Copies the rectangle of the destination's size starting at the source's
 * (x, y) into dst. The source code alone decides; dst's widths and heights
 * give the rectangle:
 *   500-503  plane 0 from row y, byte 4x; 4 * dst width[0] bytes per row.
 *   400, 401 plane 0 from row y, byte 3x; 3 * dst width[0] bytes per row.
 *   6, 7     plane 0 from row y, byte x; plane 1 from chroma row
 *            (y + 1) >> 1, byte x; dst width[0] bytes per row on both planes,
 *            dst height[0] and dst height[1] rows.
 *   1        plane 0 from row y, byte x; planes 1 and 2 from chroma row
 *            (y + 1) >> 1, byte (x + 1) >> 1; dst width[i] bytes and
 *            dst height[i] rows of each plane.
 * Chroma offsets round up. Nothing checks the destination's code or the
 * rectangle against the source's bounds. Returns 0, or
 * KIMGP_ERR_UNSUPPORTED (-3) for any other source code (nothing written).
 */
int32_t kimgp_crop(const kimgp_img *src, kimgp_img *dst);

/*
 * Places src at the source's (x, y) inside dst and fills the rest with
 * black. Returns KIMGP_ERR_ARGS (-1) when x or y is negative, dst width[0] <
 * x + src width[0] or dst height[0] < y + src height[0], or, for codes 1, 6
 * and 7, when the source's chroma at the rounded-up chroma offsets below
 * would pass the destination's chroma planes ((y + 1) >> 1 + src height[i] >
 * dst height[i]; for code 1 also (x + 1) >> 1 + src width[i] > dst width[i]);
 * then, by the source code:
 *   400, 401, 500, 501  plane 0's whole buffer (buf_height[0] x stride[0]
 *            bytes) set to 0, alpha included; src rows copied to row y + i,
 *            byte 3x or 4x.
 *   6, 7     plane 0's buffer filled with 16, plane 1's with 128; luma rows
 *            to row y, byte x; src height[1] chroma rows of src width[0]
 *            bytes to chroma row (y + 1) >> 1, byte x.
 *   1        plane 0 filled with 16, planes 1 and 2 with 128 (each its own
 *            buf_height x stride); chroma to row (y + 1) >> 1, byte
 *            (x + 1) >> 1, src width[i] bytes by src height[i] rows.
 * Any other code, 502 and 503 included (kimgp_crop takes them), returns
 * KIMGP_ERR_UNSUPPORTED (-3). The size check comes first; nothing is
 * written on -1 or -3. Returns 0 when done.
 */
int32_t kimgp_padding(const kimgp_img *src, kimgp_img *dst);

/*
 * Red/cyan anaglyph of a side-by-side RGB888 stereo pair. Checks, each
 * failing with KIMGP_ERR_ARGS (-1) and in this order: src cs is
 * KIMGP_CS_RGB888 and dst cs equals it; src width[0] = 2 x dst width[0];
 * src height[0] = dst height[0]; src stride[0] = 3 x src width[0];
 * src stride[0] = 2 x dst stride[0]. The left view is the first half of each
 * source row, the right view starts dst stride[0] bytes into the row.
 * Packing order 1 takes red from the left view and green and blue from the
 * right; order 2 red from the right, green and blue from the left; any other
 * order returns -1. Nothing is written on -1. Returns 0 when done.
 */
int32_t kimgp_fpa(const kimgp_img *src, kimgp_img *dst, int32_t order);

/*
 * The row kernel of kimgp_fpa: for each of `height` rows and each of `width`
 * RGB888 pixels, dst pixel = (R of red_view's pixel, G and B of
 * gb_view's pixel). Both views advance by src_stride bytes per row, dst by
 * dst_stride. Rows of any length are packed exactly, pixel for pixel; no
 * byte past a row's 3 x width bytes is read or written. Nothing for
 * width < 1 or height < 1.
 */
void kimgp_fpa_frm_pack(const uint8_t *red_view, const uint8_t *gb_view,
                        uint8_t *dst, int32_t width, int32_t height,
                        int32_t src_stride, int32_t dst_stride);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* KIMGP_FRAME_H */
