// Scalar definition of the 8x8 deblocking filter: the edge filter on four
// pixels across a block edge, and the horizontal- and vertical-edge passes.
// Shared by the exported functions, the vector paths (for what a vector
// cannot cover) and the tests and benchmarks (as the reference).
#ifndef KELO_IMGP_ENHANCE_DEBLOCK_FILTER_H_
#define KELO_IMGP_ENHANCE_DEBLOCK_FILTER_H_

#include <cstddef>
#include <cstdint>

namespace kelo {

// A 32-bit value reduced to its low 16 bits, signed.
inline int16_t Low16(int32_t v) {
  return static_cast<int16_t>(static_cast<uint16_t>(static_cast<uint32_t>(v)));
}

// Number of block edges across `size` rows or columns: one between every
// two whole 8-pixel blocks, none below 16.
inline int32_t BlockEdges(int32_t size) { return (size >> 3) - 1; }

namespace scalar {

inline uint8_t ClipByte(int32_t v) {
  return static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v);
}

// The filter on A = p[-2 step], B = p[-step], C = p[0], D = p[step], the edge
// lying between B and C, with strength S.
inline void FilterEdge(uint8_t* p, ptrdiff_t step, int16_t strength) {
  const int32_t a = p[-2 * step], b = p[-step], c = p[0], d = p[step];
  const int32_t s = a - 4 * b + 4 * c - d;
  int16_t m = Low16(s < 0 ? -(s >> 3) : s >> 3);
  // The ramp, in 16-bit arithmetic: full correction up to S, none from 2S.
  const int16_t over = Low16(m - strength);
  if (over >= 0) m = Low16(m - 2 * over);
  if (m < 0) m = 0;
  const int32_t d1 = s < 0 ? -m : m;
  const int32_t h = m >> 1;
  int32_t d2 = (a - d) >> 2;
  d2 = d2 < -h ? -h : d2 > h ? h : d2;
  p[-2 * step] = static_cast<uint8_t>(a - d2);
  p[-step] = ClipByte(b + d1);
  p[0] = ClipByte(c - d1);
  p[step] = static_cast<uint8_t>(d + d2);
}

// Horizontal edges k of [k0, k1] (rows 8k - 2 .. 8k + 1), columns [x0, x1).
inline void DeblockHorSpan(uint8_t* plane, ptrdiff_t stride, int32_t x0, int32_t x1,
                           int32_t k0, int32_t k1, int16_t strength) {
  for (int32_t k = k0; k <= k1; ++k) {
    uint8_t* row = plane + 8 * k * stride;
    for (int32_t x = x0; x < x1; ++x) FilterEdge(row + x, stride, strength);
  }
}

// Vertical edges k of [k0, k1] (columns 8k - 2 .. 8k + 1) of one row.
inline void DeblockVerRow(uint8_t* row, int32_t k0, int32_t k1, int16_t strength) {
  for (int32_t k = k0; k <= k1; ++k) FilterEdge(row + 8 * k, 1, strength);
}

// Horizontal edges k0 .. k1 across the whole width, top to bottom. Edges lie
// 8 rows apart and each touches 4 rows, so no edge reads a pixel that
// another writes.
inline void DeblockHorEdges(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t k0,
                            int32_t k1, int16_t strength) {
  DeblockHorSpan(plane, stride, 0, width, k0, k1, strength);
}

// Vertical edges of rows y0 .. y1 - 1, left to right in each row; as for
// the horizontal edges, no two share a pixel, so going row by row gives the
// bytes of going edge by edge.
inline void DeblockVerRows(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t y0,
                           int32_t y1, int16_t strength) {
  const int32_t n = BlockEdges(width);
  for (int32_t y = y0; y < y1 && n > 0; ++y) DeblockVerRow(plane + y * stride, 1, n, strength);
}

inline void DeblockHor(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t height,
                       int16_t strength) {
  DeblockHorEdges(plane, stride, width, 1, BlockEdges(height), strength);
}

inline void DeblockVer(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t height,
                       int16_t strength) {
  DeblockVerRows(plane, stride, width, 0, height, strength);
}

}  // namespace scalar

// The passes with the best vector path of the running CPU.
void DeblockHorEdges(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t k0, int32_t k1,
                     int16_t strength);
void DeblockVerRows(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t y0, int32_t y1,
                    int16_t strength);

// The horizontal-edge pass, then the vertical-edge pass, in strips: once
// edge k is done, rows above 8k - 2 are final for the first pass (edge k + 1
// starts at row 8k + 6) and take their vertical edges while still in cache.
// The bytes are those of the two passes one after the other.
void DeblockPlane(uint8_t* plane, ptrdiff_t stride, int32_t width, int32_t height,
                  int16_t strength);

}  // namespace kelo

#endif  // KELO_IMGP_ENHANCE_DEBLOCK_FILTER_H_
