// Interleaved loads and stores of 16- and 32-bit lanes at any byte address,
// for the per-target sections of a foreach_target translation unit (include
// it after hwy/highway.h). The real vector targets access memory unaligned
// anyway; the emulated ones read and write lanes through typed pointers, where
// an odd address would be a misaligned access, so they go through an aligned
// copy of the bytes.
//
//   LoadInterleaved3U(d, p, v0, v1, v2)       as hn::LoadInterleaved3
//   LoadInterleaved4U(d, p, v0, v1, v2, v3)   as hn::LoadInterleaved4
//   StoreInterleaved2U(v0, v1, d, p)          as hn::StoreInterleaved2
//   StoreInterleaved4U(v0, v1, v2, v3, d, p)  as hn::StoreInterleaved4
#if defined(KELO_COMMON_INTERNAL_UNALIGNED_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KELO_COMMON_INTERNAL_UNALIGNED_INL_H_
#undef KELO_COMMON_INTERNAL_UNALIGNED_INL_H_
#else
#define KELO_COMMON_INTERNAL_UNALIGNED_INL_H_
#endif

#include <cstring>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_EMU128 || HWY_TARGET == HWY_SCALAR
#define KELO_UNALIGNED_VIA_COPY 1
#else
#define KELO_UNALIGNED_VIA_COPY 0
#endif

template <class D, class V>
HWY_INLINE void LoadInterleaved3U(D d, const hwy::HWY_NAMESPACE::TFromD<D>* p, V& v0, V& v1,
                                  V& v2) {
#if KELO_UNALIGNED_VIA_COPY
  alignas(16) hwy::HWY_NAMESPACE::TFromD<D> buf[3 * hwy::HWY_NAMESPACE::MaxLanes(d)];
  memcpy(buf, static_cast<const void*>(p), sizeof(buf));
  hwy::HWY_NAMESPACE::LoadInterleaved3(d, buf, v0, v1, v2);
#else
  hwy::HWY_NAMESPACE::LoadInterleaved3(d, p, v0, v1, v2);
#endif
}

template <class D, class V>
HWY_INLINE void LoadInterleaved4U(D d, const hwy::HWY_NAMESPACE::TFromD<D>* p, V& v0, V& v1,
                                  V& v2, V& v3) {
#if KELO_UNALIGNED_VIA_COPY
  alignas(16) hwy::HWY_NAMESPACE::TFromD<D> buf[4 * hwy::HWY_NAMESPACE::MaxLanes(d)];
  memcpy(buf, static_cast<const void*>(p), sizeof(buf));
  hwy::HWY_NAMESPACE::LoadInterleaved4(d, buf, v0, v1, v2, v3);
#else
  hwy::HWY_NAMESPACE::LoadInterleaved4(d, p, v0, v1, v2, v3);
#endif
}

template <class D, class V>
HWY_INLINE void StoreInterleaved2U(V v0, V v1, D d, hwy::HWY_NAMESPACE::TFromD<D>* p) {
#if KELO_UNALIGNED_VIA_COPY
  alignas(16) hwy::HWY_NAMESPACE::TFromD<D> buf[2 * hwy::HWY_NAMESPACE::MaxLanes(d)];
  hwy::HWY_NAMESPACE::StoreInterleaved2(v0, v1, d, buf);
  memcpy(static_cast<void*>(p), buf, sizeof(buf));
#else
  hwy::HWY_NAMESPACE::StoreInterleaved2(v0, v1, d, p);
#endif
}

template <class D, class V>
HWY_INLINE void StoreInterleaved4U(V v0, V v1, V v2, V v3, D d,
                                   hwy::HWY_NAMESPACE::TFromD<D>* p) {
#if KELO_UNALIGNED_VIA_COPY
  alignas(16) hwy::HWY_NAMESPACE::TFromD<D> buf[4 * hwy::HWY_NAMESPACE::MaxLanes(d)];
  hwy::HWY_NAMESPACE::StoreInterleaved4(v0, v1, v2, v3, d, buf);
  memcpy(static_cast<void*>(p), buf, sizeof(buf));
#else
  hwy::HWY_NAMESPACE::StoreInterleaved4(v0, v1, v2, v3, d, p);
#endif
}

#undef KELO_UNALIGNED_VIA_COPY

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();

#endif  // include guard
