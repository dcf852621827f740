// Pointer types of the resizers and resize kernels, for tests that pick them
// from tables.
#ifndef KELO_TESTS_IMGP_GEOMETRY_RESIZE_FNS_H_
#define KELO_TESTS_IMGP_GEOMETRY_RESIZE_FNS_H_

#include <cstdint>

namespace kelo {
namespace test {

using ResizerFn = int32_t (*)(const void*, int32_t, int32_t, int32_t, int32_t, void*, void*,
                              int32_t, int32_t, int32_t);
using MultFn = void (*)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t);
using NonMultFn = void (*)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t,
                           int32_t, int32_t, int32_t);
using WFn = void (*)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t);
using UpFn = void (*)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t);

}  // namespace test
}  // namespace kelo

#endif  // KELO_TESTS_IMGP_GEOMETRY_RESIZE_FNS_H_
