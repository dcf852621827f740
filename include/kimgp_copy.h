/*
 * kimgp_copy.h - plane copy.
 *
 * kimgp_cpy copies one image into another of the same colour space, plane by
 * plane, honouring each side's strides. The four row-copy primitives take the
 * same six arguments: source, width in samples, height in rows, source stride
 * in bytes, destination stride in bytes, destination.
 */
#ifndef KIMGP_COPY_H
#define KIMGP_COPY_H

#include "kimgp_img.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Copies src into dst. Returns KIMGP_ERR_ARGS (-1) when the codes differ and
 * KIMGP_ERR_UNSUPPORTED (-3) for packed codes other than 2xx and for
 * KIMGP_CS_T64X32. Only the source's widths and heights are read.
 *
 * - 2xx (16-bit RGB): plane 0 as 16-bit samples.
 * - YUV400: plane 0. NV12: plane 0, then plane 1 as 16-bit sample pairs.
 * - Every other code up to 99, NV21 included: planes 0, 1 and 2 as bytes, each
 *   `width[i]` bytes wide. An NV21 chroma plane must therefore be described
 *   with its width in bytes, and plane 2 must be set (a zero width or height
 *   makes its copy empty).
 *
 * 16-bit planes whose halved strides both equal the width are copied as one
 * block; otherwise row by row with each stride rounded down to even.
 */
int32_t kimgp_cpy(const kimgp_img *src, kimgp_img *dst);

/* `width` bytes per row. */
void kimgp_cpy_8b(const void *src, int32_t width, int32_t height,
                  int32_t src_stride, int32_t dst_stride, void *dst);
/* `width` 16-bit samples per row; odd strides are rounded down to even. */
void kimgp_cpy_16b(const void *src, int32_t width, int32_t height,
                   int32_t src_stride, int32_t dst_stride, void *dst);
/* `width` 3-byte pixels per row. */
void kimgp_cpy_24b(const void *src, int32_t width, int32_t height,
                   int32_t src_stride, int32_t dst_stride, void *dst);
/* `width` 4-byte pixels per row. */
void kimgp_cpy_32b(const void *src, int32_t width, int32_t height,
                   int32_t src_stride, int32_t dst_stride, void *dst);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* KIMGP_COPY_H */
