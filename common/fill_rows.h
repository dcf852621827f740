// Scalar definition of the pattern fill used by the kcmn_mset family.
#ifndef KELO_COMMON_FILL_ROWS_H_
#define KELO_COMMON_FILL_ROWS_H_

#include <cstddef>
#include <cstdint>

namespace kelo {
namespace scalar {

// Writes n bytes of the 32-bit word repeated in little-endian byte order,
// starting with the word's lowest byte at dst.
inline void FillWord(uint8_t* dst, uint32_t word, size_t n) {
  for (size_t i = 0; i < n; ++i) {
    dst[i] = static_cast<uint8_t>(word >> (8 * (i & 3)));
  }
}

}  // namespace scalar

// FillWord with the best vector path of the running CPU.
void FillWord(uint8_t* dst, uint32_t word, size_t n);

}  // namespace kelo

#endif  // KELO_COMMON_FILL_ROWS_H_
