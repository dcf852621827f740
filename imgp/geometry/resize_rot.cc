// kimgp_rsz_rot and the horizontal-pass names of the rotating kernels.
//
// The rotating resizers are the plain selection over rotating kernels
// (resize.cc); the vertical and one-pass kernels run the plain row walkers
// into tiles and turn them (resize_down.cc, resize_up.cc, resize_tiles.h).
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "common/internal/fault.h"
#include "common/internal/api.h"
#include "imgp/geometry/resize_tiles.h"
#include "kimgp_rot.h"
#include "kimgp_rsz.h"
#include "kimgp_rsz_rot.h"

namespace kelo {
namespace {

using ResizerFn = int32_t (*)(const void*, int32_t, int32_t, int32_t, int32_t, void*, void*,
                              int32_t, int32_t, int32_t);

// The resizers of a rotation code for byte planes and for NV12/NV21 chroma
// pairs; every code but the turns resizes plainly (mirrors included).
struct RotRoute {
  ResizerFn bytes, pairs;
};
RotRoute RouteOf(int32_t rot) {
  switch (rot) {
    case KIMGP_ROT_90L: return {kimgp_rsz_8b_rot_90l, kimgp_rsz_8b8b_rot_90l};
    case KIMGP_ROT_90R: return {kimgp_rsz_8b_rot_90r, kimgp_rsz_8b8b_rot_90r};
    case KIMGP_ROT_180: return {kimgp_rsz_8b_rot_180, kimgp_rsz_8b8b_rot_180};
    default: return {kimgp_rsz_8b, kimgp_rsz_8b8b};
  }
}

int64_t Positive(int32_t v) { return v > 0 ? v : 0; }

// Intermediate bytes: plane 0's rule by code and layout, grown where another
// plane's horizontal pass (sh x W units) needs more.
int64_t TmpBytes(const kimgp_img* s, const kimgp_img* d, int32_t rot, int planes, bool nv) {
  const bool quarter = rot == KIMGP_ROT_90L || rot == KIMGP_ROT_90R;
  int64_t size = Positive(s->height[0]);
  if (quarter) {
    size *= Positive(d->height[0]);
  } else if (rot == KIMGP_ROT_180 || nv) {
    size *= Positive(d->width[0]);
  } else {
    size *= Positive(d->stride[0]);
  }
  for (int i = 0; i < planes; ++i) {
    const int64_t need = Positive(s->height[i]) *
                         Positive(quarter ? d->height[i] : d->width[i]) * (nv && i == 1 ? 2 : 1);
    if (need > size) size = need;
  }
  return size;
}

}  // namespace
}  // namespace kelo

KELO_EXPORT int32_t kimgp_rsz_rot(const kimgp_img* src, int32_t rot, kimgp_img* dst) {
  using namespace kelo;
  if (src->cs != dst->cs) return KIMGP_ERR_ARGS;
  const bool quarter = rot == KIMGP_ROT_90L || rot == KIMGP_ROT_90R;
  const int32_t cs = src->cs;
  const bool planar = cs >= 0 && cs <= 99;
  const bool nv = cs == KIMGP_CS_NV12 || cs == KIMGP_CS_NV21;
  const int planes = !planar || cs == KIMGP_CS_YUV400 ? 1 : nv ? 2 : 3;
  // Nothing to scale when every plane turns (or stays) into the destination's
  // plane as it is: a quarter turn of subsampled chroma (4:2:2) does not, and
  // goes through the resizers.
  bool same = true;
  for (int i = 0; i < planes; ++i) {
    same = same && (quarter ? src->width[i] == dst->height[i] && src->height[i] == dst->width[i]
                            : src->width[i] == dst->width[i] && src->height[i] == dst->height[i]);
  }
  if (same) return kimgp_rot(src, static_cast<uint32_t>(rot), dst);
  if (!planar || cs == KIMGP_CS_T64X32) return KIMGP_ERR_UNSUPPORTED;
  const int64_t size = TmpBytes(src, dst, rot, planes, nv);
  if (static_cast<uint64_t>(size) > SIZE_MAX) return KIMGP_ERR_ARGS;
  void* tmp = HeapAlloc(size > 0 ? static_cast<size_t>(size) : 1);
  if (tmp == nullptr) return KIMGP_ERR_ARGS;
  const RotRoute route = RouteOf(rot);
  int32_t st = KIMGP_OK;
  for (int i = 0; i < planes && st == KIMGP_OK; ++i) {
    const ResizerFn fn = nv && i == 1 ? route.pairs : route.bytes;
    st = fn(src->plane[i], src->width[i], src->height[i], dst->width[i], dst->height[i],
            dst->plane[i], tmp, src->stride[i], dst->stride[i], dst->rsz_mode);
  }
  std::free(tmp);
  return st;
}

KELO_EXPORT void kimgp_rsz_8b_rot_90r_quarter(const void*, int32_t, int32_t, int32_t, int32_t,
                                              void*, void*, int32_t, int32_t, int32_t) {}

// The horizontal passes write plain rows: the plain kernels under the
// rotating names.
#define KELO_RSZ_ROT_ALIASES(name, L, op, kop)                                                \
  KELO_EXPORT void kimgp_##name##_rsz_rot_##op##_down_w(const void* src, void* tmp,           \
                                                        int32_t src_stride, int32_t dw,       \
                                                        int32_t sh, int32_t fw, int32_t rw) { \
    kimgp_##name##_rsz_down_w(src, tmp, src_stride, dw, sh, fw, rw);                          \
  }                                                                                           \
  KELO_EXPORT void kimgp_##name##_rsz_rot_##op##_up(const void* src, void* tmp, int32_t dw,   \
                                                    int32_t sw, int32_t sh, int32_t qw,       \
                                                    int32_t rw, int32_t src_stride) {         \
    kimgp_##name##_rsz_up(src, tmp, dw, sw, sh, qw, rw, src_stride);                          \
  }                                                                                           \
  KELO_EXPORT void kimgp_##name##_rsz_rot_##op##_up_mode1(                                    \
      const void* src, void* tmp, int32_t dw, int32_t sw, int32_t sh, int32_t qw, int32_t rw, \
      int32_t src_stride) {                                                                   \
    kimgp_##name##_rsz_up_mode1(src, tmp, dw, sw, sh, qw, rw, src_stride);                    \
  }
KELO_RSZ_ROT_KERNELS(KELO_RSZ_ROT_ALIASES)
#undef KELO_RSZ_ROT_ALIASES
