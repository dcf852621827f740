// Scalar definitions of the enhancement rows: table mapping of chroma and
// the sharpening kernel. Shared by the exported functions, the vector paths
// (for tails) and the tests (as the reference).
#ifndef KELO_IMGP_ENHANCE_ENHANCE_ROWS_H_
#define KELO_IMGP_ENHANCE_ENHANCE_ROWS_H_

#include <cstddef>
#include <cstdint>

namespace kelo {
namespace scalar {

// du[i] = table[su[i]], dv[i] = table[sv[i]] for i < n.
inline void MapChroma(const uint8_t* table, size_t n, const uint8_t* su, const uint8_t* sv,
                      uint8_t* du, uint8_t* dv) {
  for (size_t i = 0; i < n; ++i) {
    du[i] = table[su[i]];
    dv[i] = table[sv[i]];
  }
}

// Pixels x0 .. x1 - 1 of the sharpened row at `s` (w bytes per row; the two
// rows above and below exist, and x0 >= 2, x1 <= w - 2).
inline void SharpenSpan(const uint8_t* s, ptrdiff_t w, uint8_t* d, ptrdiff_t x0,
                        ptrdiff_t x1) {
  for (ptrdiff_t x = x0; x < x1; ++x) {
    const uint8_t* c = s + x;
    const int32_t near = c[-1] + c[1] + c[-w] + c[w];
    const int32_t far = c[-2] + c[2] + c[-2 * w] + c[2 * w];
    const int32_t diag = c[-w - 1] + c[-w + 1] + c[w - 1] + c[w + 1];
    const int32_t p = c[0];
    const int32_t v = p + ((16 * p - (2 * near + far + diag)) >> 4);
    d[x] = static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v);
  }
}

// Pixels x0 .. x1 - 1 of rows y0 .. y1 - 1, each row as SharpenSpan.
inline void SharpenRows(const uint8_t* s, ptrdiff_t w, uint8_t* d, ptrdiff_t y0, ptrdiff_t y1,
                        ptrdiff_t x0, ptrdiff_t x1) {
  for (ptrdiff_t y = y0; y < y1; ++y) SharpenSpan(s + y * w, w, d + y * w, x0, x1);
}

}  // namespace scalar

// With the best vector path of the running CPU.
void MapChroma(const uint8_t* table, size_t n, const uint8_t* su, const uint8_t* sv,
               uint8_t* du, uint8_t* dv);
void SharpenRows(const uint8_t* s, ptrdiff_t w, uint8_t* d, ptrdiff_t y0, ptrdiff_t y1,
                 ptrdiff_t x0, ptrdiff_t x1);

}  // namespace kelo

#endif  // KELO_IMGP_ENHANCE_ENHANCE_ROWS_H_
