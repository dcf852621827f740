// Resize kernels that shrink a plane.
// Placeholder bodies, replaced by the kernels.
#include "common/internal/api.h"
#include "kimgp_rsz.h"

KELO_EXPORT void kimgp_8b_rsz_down_mult(const void *src, void *dst, int32_t dw, int32_t dh, int32_t fw, int32_t src_stride, int32_t row_step, int32_t dst_stride) {}
KELO_EXPORT void kimgp_8b_rsz_down_non_mult(const void *src, void *dst, int32_t dw, int32_t dh, int32_t fw, int32_t src_stride, int32_t row_step, int32_t rw, int32_t rh, int32_t dst_stride) {}
KELO_EXPORT void kimgp_8b_rsz_down_w(const void *src, void *tmp, int32_t src_stride, int32_t dw, int32_t sh, int32_t fw, int32_t rw) {}
KELO_EXPORT void kimgp_8b_rsz_down_h(const void *tmp, void *dst, int32_t dw, int32_t dst_stride, int32_t dh, int32_t fh, int32_t rh) {}
KELO_EXPORT void kimgp_8b8b_rsz_down_mult(const void *src, void *dst, int32_t dw, int32_t dh, int32_t fw, int32_t src_stride, int32_t row_step, int32_t dst_stride) {}
KELO_EXPORT void kimgp_8b8b_rsz_down_non_mult(const void *src, void *dst, int32_t dw, int32_t dh, int32_t fw, int32_t src_stride, int32_t row_step, int32_t rw, int32_t rh, int32_t dst_stride) {}
KELO_EXPORT void kimgp_8b8b_rsz_down_w(const void *src, void *tmp, int32_t src_stride, int32_t dw, int32_t sh, int32_t fw, int32_t rw) {}
KELO_EXPORT void kimgp_8b8b_rsz_down_h(const void *tmp, void *dst, int32_t dw, int32_t dst_stride, int32_t dh, int32_t fh, int32_t rh) {}
KELO_EXPORT void kimgp_5b6b5b_rsz_down_mult(const void *src, void *dst, int32_t dw, int32_t dh, int32_t fw, int32_t src_stride, int32_t row_step, int32_t dst_stride) {}
KELO_EXPORT void kimgp_5b6b5b_rsz_down_non_mult(const void *src, void *dst, int32_t dw, int32_t dh, int32_t fw, int32_t src_stride, int32_t row_step, int32_t rw, int32_t rh, int32_t dst_stride) {}
KELO_EXPORT void kimgp_5b6b5b_rsz_down_w(const void *src, void *tmp, int32_t src_stride, int32_t dw, int32_t sh, int32_t fw, int32_t rw) {}
KELO_EXPORT void kimgp_5b6b5b_rsz_down_h(const void *tmp, void *dst, int32_t dw, int32_t dst_stride, int32_t dh, int32_t fh, int32_t rh) {}
KELO_EXPORT void kimgp_8b8b8b_rsz_down_mult(const void *src, void *dst, int32_t dw, int32_t dh, int32_t fw, int32_t src_stride, int32_t row_step, int32_t dst_stride) {}
KELO_EXPORT void kimgp_8b8b8b_rsz_down_non_mult(const void *src, void *dst, int32_t dw, int32_t dh, int32_t fw, int32_t src_stride, int32_t row_step, int32_t rw, int32_t rh, int32_t dst_stride) {}
KELO_EXPORT void kimgp_8b8b8b_rsz_down_w(const void *src, void *tmp, int32_t src_stride, int32_t dw, int32_t sh, int32_t fw, int32_t rw) {}
KELO_EXPORT void kimgp_8b8b8b8b_rsz_down_mult(const void *src, void *dst, int32_t dw, int32_t dh, int32_t fw, int32_t src_stride, int32_t row_step, int32_t dst_stride) {}
KELO_EXPORT void kimgp_8b8b8b8b_rsz_down_non_mult(const void *src, void *dst, int32_t dw, int32_t dh, int32_t fw, int32_t src_stride, int32_t row_step, int32_t rw, int32_t rh, int32_t dst_stride) {}
KELO_EXPORT void kimgp_8b8b8b8b_rsz_down_w(const void *src, void *tmp, int32_t src_stride, int32_t dw, int32_t sh, int32_t fw, int32_t rw) {}
KELO_EXPORT void kimgp_16b_rsz_down_mult(const void *src, void *dst, int32_t dw, int32_t dh, int32_t fw, int32_t src_stride, int32_t row_step, int32_t dst_stride) {}
KELO_EXPORT void kimgp_16b16b_rsz_down_mult(const void *src, void *dst, int32_t dw, int32_t dh, int32_t fw, int32_t src_stride, int32_t row_step, int32_t dst_stride) {}
KELO_EXPORT void kimgp_8b_rsz_down_non_mult_720p_720x404(const void *src, void *dst, int32_t dw, int32_t dh, int32_t fw, int32_t src_stride, int32_t row_step, int32_t rw, int32_t rh, int32_t dst_stride) {}
KELO_EXPORT void kimgp_8b8b_rsz_down_non_mult_720p_720x404(const void *src, void *dst, int32_t dw, int32_t dh, int32_t fw, int32_t src_stride, int32_t row_step, int32_t rw, int32_t rh, int32_t dst_stride) {}
