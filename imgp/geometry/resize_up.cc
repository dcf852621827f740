// Resize kernels that grow a plane.
// Placeholder bodies, replaced by the kernels.
#include "common/internal/api.h"
#include "kimgp_rsz.h"


KELO_EXPORT void kimgp_8b_rsz_up(const void *src, void *tmp, int32_t dw, int32_t sw, int32_t sh, int32_t qw, int32_t rw, int32_t src_stride) {}
KELO_EXPORT void kimgp_8b_rsz_up_mode1(const void *src, void *tmp, int32_t dw, int32_t sw, int32_t sh, int32_t qw, int32_t rw, int32_t src_stride) {}
KELO_EXPORT void kimgp_8b_rsz_up_h(const void *tmp, void *dst, int32_t dw, int32_t sh, int32_t dh, int32_t qh, int32_t rh, int32_t dst_stride) {}
KELO_EXPORT void kimgp_8b_rsz_up_h_mode1(const void *tmp, void *dst, int32_t dw, int32_t sh, int32_t dh, int32_t qh, int32_t rh, int32_t dst_stride) {}
KELO_EXPORT void kimgp_8b8b_rsz_up(const void *src, void *tmp, int32_t dw, int32_t sw, int32_t sh, int32_t qw, int32_t rw, int32_t src_stride) {}
KELO_EXPORT void kimgp_8b8b_rsz_up_mode1(const void *src, void *tmp, int32_t dw, int32_t sw, int32_t sh, int32_t qw, int32_t rw, int32_t src_stride) {}
KELO_EXPORT void kimgp_8b8b_rsz_up_h(const void *tmp, void *dst, int32_t dw, int32_t sh, int32_t dh, int32_t qh, int32_t rh, int32_t dst_stride) {}
KELO_EXPORT void kimgp_8b8b_rsz_up_h_mode1(const void *tmp, void *dst, int32_t dw, int32_t sh, int32_t dh, int32_t qh, int32_t rh, int32_t dst_stride) {}
KELO_EXPORT void kimgp_5b6b5b_rsz_up(const void *src, void *tmp, int32_t dw, int32_t sw, int32_t sh, int32_t qw, int32_t rw, int32_t src_stride) {}
KELO_EXPORT void kimgp_5b6b5b_rsz_up_mode1(const void *src, void *tmp, int32_t dw, int32_t sw, int32_t sh, int32_t qw, int32_t rw, int32_t src_stride) {}
KELO_EXPORT void kimgp_5b6b5b_rsz_up_h(const void *tmp, void *dst, int32_t dw, int32_t sh, int32_t dh, int32_t qh, int32_t rh, int32_t dst_stride) {}
KELO_EXPORT void kimgp_5b6b5b_rsz_up_h_mode1(const void *tmp, void *dst, int32_t dw, int32_t sh, int32_t dh, int32_t qh, int32_t rh, int32_t dst_stride) {}
KELO_EXPORT void kimgp_8b8b8b_rsz_up(const void *src, void *tmp, int32_t dw, int32_t sw, int32_t sh, int32_t qw, int32_t rw, int32_t src_stride) {}
KELO_EXPORT void kimgp_8b8b8b_rsz_up_mode1(const void *src, void *tmp, int32_t dw, int32_t sw, int32_t sh, int32_t qw, int32_t rw, int32_t src_stride) {}
KELO_EXPORT void kimgp_8b8b8b8b_rsz_up(const void *src, void *tmp, int32_t dw, int32_t sw, int32_t sh, int32_t qw, int32_t rw, int32_t src_stride) {}
KELO_EXPORT void kimgp_8b8b8b8b_rsz_up_mode1(const void *src, void *tmp, int32_t dw, int32_t sw, int32_t sh, int32_t qw, int32_t rw, int32_t src_stride) {}
