// In-register transposes for the per-target sections of a foreach_target
// translation unit (include it after hwy/highway.h): the kernels that turn
// rows they computed themselves, without storing them first.
//
//   TransposeInBlocks<N, R>(d, r)  r[i] holds row i of R rows of N-byte
//                                  units in every 128-bit block (or the whole
//                                  of a smaller vector); afterwards
//                                  r[v] holds, per block, the 16 / (R * N)
//                                  columns v * 16 / (R * N) + j, each as its
//                                  R units in row order.
#if defined(KELO_IMGP_GEOMETRY_TRANSPOSE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KELO_IMGP_GEOMETRY_TRANSPOSE_INL_H_
#undef KELO_IMGP_GEOMETRY_TRANSPOSE_INL_H_
#else
#define KELO_IMGP_GEOMETRY_TRANSPOSE_INL_H_
#endif

#include <stddef.h>
#include <stdint.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

template <size_t N>
struct TransposeLane;
template <>
struct TransposeLane<1> { using T = uint8_t; };
template <>
struct TransposeLane<2> { using T = uint16_t; };
template <>
struct TransposeLane<4> { using T = uint32_t; };

// Each round zips row i with row i + R/2; log2(R) rounds.
template <size_t N, size_t R, class D>
HWY_INLINE void TransposeInBlocks(D d, hwy::HWY_NAMESPACE::Vec<D>* r) {
  namespace hn = hwy::HWY_NAMESPACE;
  const hn::Repartition<typename TransposeLane<N>::T, D> du;
  // Every loop unrolled outright: GCC leaves these loops of 128-bit bodies
  // rolled on 32-bit ARM and then keeps r and t in memory, a load and a store
  // for every zip.
  HWY_UNROLL(4)
  for (size_t round = 1; round < R; round *= 2) {
    hn::Vec<D> t[R];
    HWY_UNROLL(16)
    for (size_t i = 0; i < R / 2; ++i) {
      const auto a = hn::BitCast(du, r[i]);
      const auto b = hn::BitCast(du, r[i + R / 2]);
      t[2 * i] = hn::BitCast(d, hn::InterleaveLower(a, b));
      t[2 * i + 1] = hn::BitCast(d, hn::InterleaveUpper(du, a, b));
    }
    HWY_UNROLL(16)
    for (size_t i = 0; i < R; ++i) r[i] = t[i];
  }
}

#endif  // HWY_TARGET != HWY_SCALAR

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();

#endif  // include guard
