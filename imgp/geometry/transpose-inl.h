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
//                                  TransposeInBlocks<N, R, F> skips the
//                                  rounds before F (2 after a first round
//                                  the caller did its own way).
//   LoadBlocks(d, lo, hi)          16 bytes at lo, and at hi in block 1.
//   ForRows<R>(p, step, f)         f(i, p + i * step) for i in [0, R).
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
template <size_t N, size_t R, size_t F = 1, class D>
HWY_INLINE void TransposeInBlocks(D d, hwy::HWY_NAMESPACE::Vec<D>* r) {
  namespace hn = hwy::HWY_NAMESPACE;
  const hn::Repartition<typename TransposeLane<N>::T, D> du;
  // Every loop unrolled outright: GCC leaves these loops of 128-bit bodies
  // rolled on 32-bit ARM and then keeps r and t in memory, a load and a store
  // for every zip.
  HWY_UNROLL(4)
  for (size_t round = F; round < R; round *= 2) {
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

// 16 bytes at lo in block 0 and, with two blocks, 16 at hi in block 1.
template <class D>
HWY_INLINE hwy::HWY_NAMESPACE::Vec<D> LoadBlocks(D d, const uint8_t* lo, const uint8_t* hi) {
  namespace hn = hwy::HWY_NAMESPACE;
  if constexpr (hn::MaxLanes(D()) == 16) {
    (void)hi;
    return hn::LoadU(d, lo);
  } else {
    const hn::Full128<uint8_t> d16;
    return hn::Combine(d, hn::LoadU(d16, hi), hn::LoadU(d16, lo));
  }
}

// Calls f(i, p + i * step) for i in [0, R). On x86 the pointer is stepped
// four rows at a time behind an empty asm, so that every access is one
// base + index * scale address: otherwise GCC hoists a pointer per row out of
// the loops, more than x86 has registers, and reloads them from the stack.
// Elsewhere the plain form (32-bit ARM counted fewer instructions with it).
template <int32_t R, class T, class F>
HWY_INLINE void ForRows(T* p, ptrdiff_t step, F&& f) {
#if HWY_ARCH_X86
  static_assert(R % 4 == 0, "rows in fours");
  const ptrdiff_t step3 = 3 * step;
  HWY_UNROLL(4)
  for (int32_t i = 0; i < R; i += 4) {
    f(i, p);
    f(i + 1, p + step);
    f(i + 2, p + 2 * step);
    f(i + 3, p + step3);
    p += 4 * step;
    asm("" : "+r"(p));
  }
#else
  HWY_UNROLL(16)
  for (int32_t i = 0; i < R; ++i) f(i, p + i * step);
#endif
}

#endif  // HWY_TARGET != HWY_SCALAR

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();

#endif  // include guard
