// Fused rows of kimgp_csc_new from 3- and 4-byte RGB pixels to 8-bit YUV:
// luma and chroma codes straight from the pixels, the same codes as the
// pipeline's unpack, matrix and block-mean stages. The scalar rows are the
// definition (over [i0, n)); the dispatching entries cover whole rows.
#ifndef KELO_IMGP_CSC_CSC_NEW_RGB_ROWS_H_
#define KELO_IMGP_CSC_CSC_NEW_RGB_ROWS_H_

#include <cstddef>
#include <cstdint>

#include "imgp/csc/csc_new_rows.h"

namespace kelo {
namespace csc {

namespace scalar {
// Output row r of the map at the pixel p (channels times 8).
inline int64_t NewRgbAcc(const NewMatrix& k, const NewRgbOrder& o, int r, const uint8_t* p) {
  return NewAcc(k, r, 8 * p[o.r], 8 * p[o.g], 8 * p[o.b]);
}
// y[x] = luma code of pixel x of row s, for x in [x0, n).
inline void NewRgbLumaRow(const NewMatrix& k, const NewRgbOrder& o, const uint8_t* s, uint8_t* y,
                          size_t x0, size_t n) {
  for (size_t x = x0; x < n; ++x) {
    y[x] = static_cast<uint8_t>(NewClamp(NewRgbAcc(k, o, 0, s + x * o.px) >> kNewShift, k.hi));
  }
}
// Chroma code c (0 U, 1 V) of a block whose channels sum to sr, sg, sb over
// its four quarters: t = NewMulHigh(sr - sg, cd[c][0]) + NewMulHigh(sb - sg,
// cd[c][1]) in eighths of a code about the centre 128, rounded half up.
inline uint8_t NewRgbChromaCode(const NewMatrix& k, int c, int32_t sr, int32_t sg, int32_t sb) {
  const int32_t t = NewMulHigh(sr - sg, k.cd[c][0]) + NewMulHigh(sb - sg, k.cd[c][1]);
  return static_cast<uint8_t>(NewClamp(128 + ((t + 4) >> 3), 255));
}
// Chroma samples [i0, cw) of a row w pixels wide, cw = w / sub rounded up:
// sample i covers columns a = sub * i and b = min(a + sub - 1, w - 1) of rows
// s0 and s1 (one row twice when chroma keeps every row), its quarters.
// U goes to u[i * step], V to v[i * step].
inline void NewRgbChromaRow(const NewMatrix& k, const NewRgbOrder& o, const uint8_t* s0,
                            const uint8_t* s1, int sub, uint8_t* u, uint8_t* v, size_t step,
                            size_t i0, size_t w) {
  const size_t cw = (w + sub - 1) / sub;
  for (size_t i = i0; i < cw; ++i) {
    const size_t last = sub * i + sub - 1 < w ? sub * i + sub - 1 : w - 1;
    const size_t a = sub * i * o.px, b = last * o.px;
    int32_t sum[3];
    const int at[3] = {o.r, o.g, o.b};
    for (int j = 0; j < 3; ++j) {
      sum[j] = s0[a + at[j]] + s0[b + at[j]] + s1[a + at[j]] + s1[b + at[j]];
    }
    u[i * step] = NewRgbChromaCode(k, 0, sum[0], sum[1], sum[2]);
    v[i * step] = NewRgbChromaCode(k, 1, sum[0], sum[1], sum[2]);
  }
}
// The two rows over whole rows, as the function pointers of NewRgbRows.
inline void NewRgbLumaRowAll(const NewMatrix& k, const NewRgbOrder& o, const uint8_t* s, uint8_t* y,
                             size_t n) {
  NewRgbLumaRow(k, o, s, y, 0, n);
}
inline void NewRgbChromaRowAll(const NewMatrix& k, const NewRgbOrder& o, const uint8_t* s0,
                               const uint8_t* s1, int sub, uint8_t* u, uint8_t* v, size_t step,
                               size_t w) {
  NewRgbChromaRow(k, o, s0, s1, sub, u, v, step, 0, w);
}
}  // namespace scalar

// Row pairs of a 4:2:0 destination: source rows s + 2i s_stride and the
// next, luma rows y + 2i y_stride and the next, chroma rows u and v +
// i c_stride (step as the rows take it), for i in [0, n).
struct NewRgbPairs {
  const uint8_t* s;
  ptrdiff_t s_stride;
  uint8_t* y;
  ptrdiff_t y_stride;
  uint8_t *u, *v;
  ptrdiff_t c_stride;
  size_t step, w, n;
};

// The rows of one image, chosen once for its map, pixel order and chroma
// subsampling: scalar::NewRgbLumaRow and NewRgbChromaRow over whole rows on
// the best target (the order and subsampling given to the choice are the
// ones the rows are then called with). `pairs`, where the target has it
// (else null), makes NewRgbPairs in one call, each pair's two luma rows and
// chroma row from the same loads.
struct NewRgbRows {
  void (*luma)(const NewMatrix& k, const NewRgbOrder& o, const uint8_t* s, uint8_t* y, size_t n);
  void (*chroma)(const NewMatrix& k, const NewRgbOrder& o, const uint8_t* s0, const uint8_t* s1,
                 int sub, uint8_t* u, uint8_t* v, size_t step, size_t w);
  void (*pairs)(const NewMatrix& k, const NewRgbOrder& o, const NewRgbPairs& job);
};
NewRgbRows NewRgbRowsFor(const NewMatrix& k, const NewRgbOrder& o, int sub);

// Whether the vector rows may run for k (otherwise the entries below run the
// scalar rows): chroma weights within 16 bits (luma needs NewLumaBytes too).
bool NewRgbRowsVec(const NewMatrix& k);

// Whether the luma row of k is in byte weights, which the vector luma rows
// need (the maps of RGB to 8-bit YUV are): m[0][j] = 64 w_j with w_j in
// 0 .. 255 and sum S <= 256, no input offsets, codes up to 255, and
// A = add[0] >> 9 with 0 <= A and 255 S + A < 2^16, so that the code is
// (w . p + A) >> 8.
bool NewLumaBytes(const NewMatrix& k);

// scalar::NewRgbLumaRow over [0, n) on the best target.
void NewRgbLumaRow(const NewMatrix& k, const NewRgbOrder& o, const uint8_t* s, uint8_t* y, size_t n);
// scalar::NewRgbChromaRow over [0, cw) on the best target.
void NewRgbChromaRow(const NewMatrix& k, const NewRgbOrder& o, const uint8_t* s0, const uint8_t* s1,
                     int sub, uint8_t* u, uint8_t* v, size_t step, size_t w);
// The row pairs of `job` by `rows` (of NewRgbRowsFor(k, o, 2)): rows.pairs
// where there is one.
inline void NewRgbPairRows(const NewRgbRows& rows, const NewMatrix& k, const NewRgbOrder& o,
                           const NewRgbPairs& job) {
  if (rows.pairs) {
    rows.pairs(k, o, job);
    return;
  }
  for (size_t i = 0; i < job.n; ++i) {
    const uint8_t* s = job.s + static_cast<ptrdiff_t>(2 * i) * job.s_stride;
    uint8_t* y = job.y + static_cast<ptrdiff_t>(2 * i) * job.y_stride;
    const ptrdiff_t c = static_cast<ptrdiff_t>(i) * job.c_stride;
    rows.luma(k, o, s, y, job.w);
    rows.luma(k, o, s + job.s_stride, y + job.y_stride, job.w);
    rows.chroma(k, o, s, s + job.s_stride, 2, job.u + c, job.v + c, job.step, job.w);
  }
}

}  // namespace csc
}  // namespace kelo

#endif  // KELO_IMGP_CSC_CSC_NEW_RGB_ROWS_H_
