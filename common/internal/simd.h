// How a kernel reaches its vector path.
//
// Every kernel has a scalar definition (plain C++ in namespace kelo::scalar)
// which is the contract. Its vector path is a Highway function compiled once
// per target with foreach_target.h; the vector path does the bulk of a row and
// hands the tail to the scalar definition.
//
//   KELO_HWY_DYNAMIC = 1  x86-64: all targets compiled, chosen at run time.
//   KELO_HWY_DYNAMIC = 0  ARM, x86-32: only the compile-time target.
//   KELO_HAVE_HWY    = 0  scalar-only build: no vector code at all.
//
// In a translation unit, after the per-target section:
//   KELO_VEC_EXPORT(Fn);                     // at namespace scope, once
//   KELO_VEC_CALL(Fn, scalar::Fn)(args...);  // call the best path
#ifndef KELO_COMMON_INTERNAL_SIMD_H_
#define KELO_COMMON_INTERNAL_SIMD_H_

#ifndef KELO_HAVE_HWY
#define KELO_HAVE_HWY 0
#endif
#ifndef KELO_HWY_DYNAMIC
#define KELO_HWY_DYNAMIC 0
#endif

// The translation unit includes hwy/foreach_target.h and hwy/highway.h itself.
#if KELO_HAVE_HWY
#if KELO_HWY_DYNAMIC
#define KELO_VEC_EXPORT(fn) HWY_EXPORT(fn)
#define KELO_VEC_CALL(fn, scalar_fn) HWY_DYNAMIC_DISPATCH(fn)
#else
#define KELO_VEC_EXPORT(fn) static_assert(true, "")
#define KELO_VEC_CALL(fn, scalar_fn) HWY_STATIC_DISPATCH(fn)
#endif
#else
#define KELO_VEC_EXPORT(fn) static_assert(true, "")
#define KELO_VEC_CALL(fn, scalar_fn) scalar_fn
#endif

#endif  // KELO_COMMON_INTERNAL_SIMD_H_
