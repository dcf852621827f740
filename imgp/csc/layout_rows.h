// Row operations of the layout conversions, with their scalar definitions.
// The exported helpers, the layout kernels and the dispatcher's own
// conversions are built from these.
#ifndef KELO_IMGP_CSC_LAYOUT_ROWS_H_
#define KELO_IMGP_CSC_LAYOUT_ROWS_H_

#include <cstddef>
#include <cstdint>

namespace kelo {
namespace csc {
namespace scalar {

// d[2i] = a[i], d[2i + 1] = b[i] for i in [i0, n).
inline void Interleave(const uint8_t* a, const uint8_t* b, uint8_t* d, size_t i0, size_t n) {
  for (size_t i = i0; i < n; ++i) {
    d[2 * i] = a[i];
    d[2 * i + 1] = b[i];
  }
}
// a[i] = s[2i], b[i] = s[2i + 1] for pairs [i0, n).
inline void Deinterleave(const uint8_t* s, uint8_t* a, uint8_t* b, size_t i0, size_t n) {
  for (size_t i = i0; i < n; ++i) {
    a[i] = s[2 * i];
    b[i] = s[2 * i + 1];
  }
}
// d[i] = s[2i] for i in [i0, n).
inline void Even(const uint8_t* s, uint8_t* d, size_t i0, size_t n) {
  for (size_t i = i0; i < n; ++i) d[i] = s[2 * i];
}
// d[2i] = s[2i + 1], d[2i + 1] = s[2i] for pairs [i0, n); s == d swaps in
// place.
inline void SwapPairs(const uint8_t* s, uint8_t* d, size_t i0, size_t n) {
  for (size_t i = i0; i < n; ++i) {
    const uint8_t t = s[2 * i];
    d[2 * i] = s[2 * i + 1];
    d[2 * i + 1] = t;
  }
}
inline void SwapPairs(uint8_t* p, size_t i0, size_t n) { SwapPairs(p, p, i0, n); }
// YUYV pixel pairs [k0, n) of one row: y[2k] = s[4k], y[2k + 1] = s[4k + 2],
// u[k] = s[4k + 1], v[k] = s[4k + 3]; with `average`, u[k] and v[k] become
// (stored + that byte) >> 1 instead.
inline void YuyvToPlanar(const uint8_t* s, uint8_t* y, uint8_t* u, uint8_t* v, size_t k0,
                         size_t n, bool average) {
  for (size_t k = k0; k < n; ++k) {
    y[2 * k] = s[4 * k];
    y[2 * k + 1] = s[4 * k + 2];
    u[k] = static_cast<uint8_t>(average ? (u[k] + s[4 * k + 1]) >> 1 : s[4 * k + 1]);
    v[k] = static_cast<uint8_t>(average ? (v[k] + s[4 * k + 3]) >> 1 : s[4 * k + 3]);
  }
}
// d[i] = low byte of (little-endian 16-bit sample i >> 2).
inline void Narrow16(const uint8_t* s, uint8_t* d, size_t i0, size_t n) {
  for (size_t i = i0; i < n; ++i) {
    d[i] = static_cast<uint8_t>((s[2 * i] | s[2 * i + 1] << 8) >> 2);
  }
}
// Grey g to RGB565: g >> 3, g >> 2, g >> 3 in the three fields.
inline void GreyTo565(const uint8_t* s, uint8_t* d, size_t i0, size_t n) {
  for (size_t i = i0; i < n; ++i) {
    const int g = s[i];
    const int w = ((g >> 3) << 11) | ((g >> 2) << 5) | (g >> 3);
    d[2 * i] = static_cast<uint8_t>(w);
    d[2 * i + 1] = static_cast<uint8_t>(w >> 8);
  }
}
// Grey g to the three bytes g, g, g.
inline void GreyTo888(const uint8_t* s, uint8_t* d, size_t i0, size_t n) {
  for (size_t i = i0; i < n; ++i) d[3 * i] = d[3 * i + 1] = d[3 * i + 2] = s[i];
}
// RGB565 to RGBA8888: fields to the top of each byte, low bits zero, A 255.
inline void Rgb565ToRgba(const uint8_t* s, uint8_t* d, size_t i0, size_t n) {
  for (size_t i = i0; i < n; ++i) {
    const int p = s[2 * i] | s[2 * i + 1] << 8;
    d[4 * i] = static_cast<uint8_t>((p >> 8) & 0xF8);
    d[4 * i + 1] = static_cast<uint8_t>((p & 0x7E0) >> 3);
    d[4 * i + 2] = static_cast<uint8_t>((p & 0x1F) << 3);
    d[4 * i + 3] = 255;
  }
}
// n-byte RGB pixels (R, G, B first) to RGB565 by truncation.
template <int kBytes>
inline void RgbTo565(const uint8_t* s, uint8_t* d, size_t i0, size_t n) {
  for (size_t i = i0; i < n; ++i) {
    const uint8_t* p = s + kBytes * i;
    const int w = ((p[0] >> 3) << 11) | ((p[1] >> 2) << 5) | (p[2] >> 3);
    d[2 * i] = static_cast<uint8_t>(w);
    d[2 * i + 1] = static_cast<uint8_t>(w >> 8);
  }
}

}  // namespace scalar

// The same operations [0, n) with the best path of the running CPU.
void Interleave(const uint8_t* a, const uint8_t* b, uint8_t* d, size_t n);
void Deinterleave(const uint8_t* s, uint8_t* a, uint8_t* b, size_t n);
void Even(const uint8_t* s, uint8_t* d, size_t n);
void SwapPairs(const uint8_t* s, uint8_t* d, size_t n);
inline void SwapPairs(uint8_t* p, size_t n) { SwapPairs(p, p, n); }
void YuyvToPlanar(const uint8_t* s, uint8_t* y, uint8_t* u, uint8_t* v, size_t n, bool average);
void Narrow16(const uint8_t* s, uint8_t* d, size_t n);
void GreyTo565(const uint8_t* s, uint8_t* d, size_t n);
void GreyTo888(const uint8_t* s, uint8_t* d, size_t n);
void Rgb565ToRgba(const uint8_t* s, uint8_t* d, size_t n);
void RgbaTo565(const uint8_t* s, uint8_t* d, size_t n);
void Rgb888To565(const uint8_t* s, uint8_t* d, size_t n);

// Rows whose pointers advance by the stride and are then rounded down to a
// multiple of their own pixel size (2 for RGB565, 4 for RGBA8888): the walk
// of the dispatcher's RGB565 and RGBA8888 conversions. op(s, d, w) per row.
template <class RowOp>
void RoundedRows(const uint8_t* s, int32_t ss, uintptr_t s_mask, uint8_t* d, int32_t ds,
                 uintptr_t d_mask, int32_t w, int32_t h, RowOp op) {
  if (w < 1) return;
  uintptr_t sa = reinterpret_cast<uintptr_t>(s), da = reinterpret_cast<uintptr_t>(d);
  for (int32_t r = 0; r < h; ++r) {
    op(reinterpret_cast<const uint8_t*>(sa), reinterpret_cast<uint8_t*>(da), size_t(w));
    sa = (sa + static_cast<uintptr_t>(static_cast<intptr_t>(ss))) & ~s_mask;
    da = (da + static_cast<uintptr_t>(static_cast<intptr_t>(ds))) & ~d_mask;
  }
}

}  // namespace csc
}  // namespace kelo

#endif  // KELO_IMGP_CSC_LAYOUT_ROWS_H_
