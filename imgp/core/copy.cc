// Plane copy: kimgp_cpy and the row-copy primitives.
#include "common/internal/simd.h"

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/core/copy.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "common/internal/neon_raw-inl.h"
#include "imgp/core/copy_rows.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Four vectors per step (on 32-bit ARM 64-byte blocks, then 32 bytes), then
// one vector per step, then the scalar tail.
HWY_INLINE void CopyRun(const uint8_t* src, uint8_t* dst, size_t n) {
  const hn::ScalableTag<uint8_t> d;
  const size_t N = hn::Lanes(d);
  size_t i = 0;
#if KELO_NEON_RAW
  if (n >= 32) RawCopy32s(src, dst, n), i = n & ~size_t{31};
  if (i == n) return;
#endif
  if (n >= 4 * N) {
    for (; i <= n - 4 * N; i += 4 * N) {
      const auto v0 = hn::LoadU(d, src + i);
      const auto v1 = hn::LoadU(d, src + i + N);
      const auto v2 = hn::LoadU(d, src + i + 2 * N);
      const auto v3 = hn::LoadU(d, src + i + 3 * N);
      hn::StoreU(v0, d, dst + i);
      hn::StoreU(v1, d, dst + i + N);
      hn::StoreU(v2, d, dst + i + 2 * N);
      hn::StoreU(v3, d, dst + i + 3 * N);
    }
  }
  if (n >= N) {
    for (; i <= n - N; i += N) hn::StoreU(hn::LoadU(d, src + i), d, dst + i);
  }
  scalar::CopyBytes(src + i, dst + i, n - i);
}

void CopyBytesVec(const uint8_t* src, uint8_t* dst, size_t n) { CopyRun(src, dst, n); }

// The rows in one function, so that short rows pay no call each.
void CopyRowsVec(const uint8_t* src, ptrdiff_t src_step, uint8_t* dst, ptrdiff_t dst_step,
                 size_t row_bytes, int32_t rows) {
#if KELO_NEON_RAW
  if (row_bytes % 32 == 0) {
    for (int32_t r = 0; r < rows; ++r, src += src_step, dst += dst_step) {
      RawCopy32s(src, dst, row_bytes);
    }
    return;
  }
#endif
  for (int32_t r = 0; r < rows; ++r, src += src_step, dst += dst_step) {
    CopyRun(src, dst, row_bytes);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_HAVE_HWY

#if !KELO_HAVE_HWY || HWY_ONCE
#include <cstring>
#if defined(__x86_64__)
#include <cpuid.h>
#endif

#include "common/internal/api.h"
#include "imgp/core/copy_rows.h"
#include "kimgp_copy.h"

namespace kelo {

KELO_VEC_EXPORT(CopyBytesVec);
KELO_VEC_EXPORT(CopyRowsVec);

namespace {
// Rows through CopyBytes, as the paths without a row loop of their own.
[[maybe_unused]] void CopyRowsEach(const uint8_t* src, ptrdiff_t src_step, uint8_t* dst,
                                   ptrdiff_t dst_step, size_t row_bytes, int32_t rows) {
  for (int32_t r = 0; r < rows; ++r, src += src_step, dst += dst_step) {
    CopyBytes(src, dst, row_bytes);
  }
}
}  // namespace

namespace {
#if defined(__x86_64__)
// Whether the CPU reports fast string moves (ERMS): then one `rep movsb`
// copies a whole plane faster than the C library's memcpy, whose large-run
// path is tuned for data that leaves the cache.
bool FastStringMoves() {
  static const bool fast = [] {
    unsigned a = 0, b = 0, c = 0, d = 0;
    return __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (b & (1u << 9)) != 0;
  }();
  return fast;
}
void StringMove(const uint8_t* src, uint8_t* dst, size_t n) {
  asm volatile("rep movsb" : "+D"(dst), "+S"(src), "+c"(n) : : "memory");
}
#endif
}  // namespace

// On x86 the C library's memcpy is the fastest copy of a row (its loops are
// tuned per core), and it is the scalar build's copy too; whole planes of
// 64 KiB and more go through `rep movsb` where the CPU makes it fast. 32-bit
// ARM keeps its own loop, which runs fewer instructions. Runs that overlap
// keep the forward vector copy.
void CopyBytes(const uint8_t* src, uint8_t* dst, size_t n) {
#if !KELO_HAVE_HWY || !HWY_ARCH_ARM_V7
  const auto s = reinterpret_cast<uintptr_t>(src), d = reinterpret_cast<uintptr_t>(dst);
  if (s + n <= d || d + n <= s) {
#if defined(__x86_64__)
    if (n >= (size_t{1} << 16) && FastStringMoves()) return StringMove(src, dst, n);
#endif
    memcpy(dst, src, n);
    return;
  }
#endif
  KELO_VEC_CALL(CopyBytesVec, scalar::CopyBytes)(src, dst, n);
}

// 32-bit ARM copies rows with its own loop; elsewhere each row is a memcpy.
void CopyRows(const uint8_t* src, ptrdiff_t src_step, uint8_t* dst,
              ptrdiff_t dst_step, int64_t row_bytes, int32_t rows) {
  if (row_bytes < 1) return;
#if KELO_HAVE_HWY && HWY_ARCH_ARM_V7
  KELO_VEC_CALL(CopyRowsVec, CopyRowsEach)(src, src_step, dst, dst_step, size_t(row_bytes), rows);
#else
  CopyRowsEach(src, src_step, dst, dst_step, static_cast<size_t>(row_bytes), rows);
#endif
}

namespace {

// Copies w * h bytes as one run when both are positive.
void CopyBlock(const uint8_t* src, uint8_t* dst, int64_t w, int64_t h) {
  if (w > 0 && h > 0) CopyBytes(src, dst, static_cast<size_t>(w * h));
}

// Width of n-byte pixels: one block when both strides equal the row length,
// otherwise row by row with the full strides.
void CopyPixels(const void* src, int32_t width, int32_t height, int32_t ss,
                int32_t ds, void* dst, int32_t n) {
  const auto* s = static_cast<const uint8_t*>(src);
  auto* d = static_cast<uint8_t*>(dst);
  const int64_t row = int64_t{width} * n;
  if (row == ss && row == ds) {
    CopyBlock(s, d, row, height);
  } else {
    CopyRows(s, ss, d, ds, row, height);
  }
}

}  // namespace
}  // namespace kelo

KELO_EXPORT void kimgp_cpy_8b(const void* src, int32_t width, int32_t height,
                              int32_t src_stride, int32_t dst_stride,
                              void* dst) {
  kelo::CopyPixels(src, width, height, src_stride, dst_stride, dst, 1);
}

// 16-bit samples: one block when both halved strides equal the width (so an
// odd stride of 2w + 1 counts as packed), otherwise row by row with each
// stride rounded down to even to keep rows on 16-bit samples.
KELO_EXPORT void kimgp_cpy_16b(const void* src, int32_t width, int32_t height,
                               int32_t src_stride, int32_t dst_stride,
                               void* dst) {
  const auto* s = static_cast<const uint8_t*>(src);
  auto* d = static_cast<uint8_t*>(dst);
  if (src_stride / 2 == width && dst_stride / 2 == width) {
    kelo::CopyBlock(s, d, int64_t{width} * 2, height);
  } else {
    kelo::CopyRows(s, src_stride & ~1, d, dst_stride & ~1, int64_t{width} * 2,
                   height);
  }
}

KELO_EXPORT void kimgp_cpy_24b(const void* src, int32_t width, int32_t height,
                               int32_t src_stride, int32_t dst_stride,
                               void* dst) {
  kelo::CopyPixels(src, width, height, src_stride, dst_stride, dst, 3);
}

KELO_EXPORT void kimgp_cpy_32b(const void* src, int32_t width, int32_t height,
                               int32_t src_stride, int32_t dst_stride,
                               void* dst) {
  kelo::CopyPixels(src, width, height, src_stride, dst_stride, dst, 4);
}

KELO_EXPORT int32_t kimgp_cpy(const kimgp_img* src, kimgp_img* dst) {
  if (src->cs != dst->cs) return KIMGP_ERR_ARGS;
  const int32_t cs = src->cs;
  auto plane = [&](int i, void (*copy)(const void*, int32_t, int32_t, int32_t,
                                       int32_t, void*)) {
    copy(src->plane[i], src->width[i], src->height[i], src->stride[i],
         dst->stride[i], dst->plane[i]);
  };
  if (cs > 99) {
    // Among packed codes only the 16-bit RGB range is copied.
    if (cs < 200 || cs > 299) return KIMGP_ERR_UNSUPPORTED;
    plane(0, kimgp_cpy_16b);
    return KIMGP_OK;
  }
  switch (cs) {
    case KIMGP_CS_T64X32:
      return KIMGP_ERR_UNSUPPORTED;
    case KIMGP_CS_NV12:
      plane(0, kimgp_cpy_8b);
      plane(1, kimgp_cpy_16b);
      return KIMGP_OK;
    case KIMGP_CS_YUV400:
      plane(0, kimgp_cpy_8b);
      return KIMGP_OK;
    default:
      // Three byte planes for every other code, NV21 and unnamed codes too.
      plane(0, kimgp_cpy_8b);
      plane(1, kimgp_cpy_8b);
      plane(2, kimgp_cpy_8b);
      return KIMGP_OK;
  }
}

#endif  // !KELO_HAVE_HWY || HWY_ONCE
