// Scalar definitions of the plane-copy primitives, shared by the exported
// primitives, the vector paths (for tails) and the tests (as the reference).
#ifndef KELO_IMGP_CORE_COPY_ROWS_H_
#define KELO_IMGP_CORE_COPY_ROWS_H_

#include <cstddef>
#include <cstdint>

namespace kelo {
namespace scalar {

// Copies n bytes forward, one at a time.
inline void CopyBytes(const uint8_t* src, uint8_t* dst, size_t n) {
  for (size_t i = 0; i < n; ++i) dst[i] = src[i];
}

}  // namespace scalar

// Copies n bytes with the best vector path of the running CPU.
void CopyBytes(const uint8_t* src, uint8_t* dst, size_t n);

// Copies `rows` rows of `row_bytes` bytes; the pointers advance by the given
// steps. Does nothing when rows < 1 or row_bytes < 1.
void CopyRows(const uint8_t* src, ptrdiff_t src_step, uint8_t* dst,
              ptrdiff_t dst_step, int64_t row_bytes, int32_t rows);

}  // namespace kelo

#endif  // KELO_IMGP_CORE_COPY_ROWS_H_
