// Row stages of kimgp_csc_new that have vector paths: the scalar definitions
// (the contract, over [i0, n)) and the dispatching entries (over [0, n)).
#ifndef KELO_IMGP_CSC_CSC_NEW_ROWS_H_
#define KELO_IMGP_CSC_CSC_NEW_ROWS_H_

#include <cstddef>
#include <cstdint>

namespace kelo {
namespace csc {

// The composed map of a pair of sides in fixed point. Inputs are samples in
// eighths of a source code; output row r of the map is
//   acc = sum_j m[r][j] (c_j - in_off8[j]) + add[r],  out = clamp(acc >> 17)
// to 0 .. hi, where m has 14 fractional bits and add[r] holds the output
// offset << 17 and the rounding half.
// Maps from RGB to 8-bit YUV take chroma from differences instead
// (NewRgbChromaCode): cd[c] holds the weights of R - G and B - G for U (c 0)
// and V (1), with 16 fractional bits, clamped to +-32767.
struct NewMatrix {
  int32_t m[3][3];
  int32_t in_off8[3];
  int32_t add[3];
  int32_t hi;
  int32_t cd[2][2];
};
constexpr int kNewFrac = 14, kNewShift = kNewFrac + 3;

// Whether every acc of inputs in 0 .. max_in8 fits int32 (the vector rows
// need it; otherwise only the scalar rows run).
bool NewMatrixFits(const NewMatrix& k, int32_t max_in8);

namespace scalar {
inline int64_t NewAcc(const NewMatrix& k, int r, int32_t c0, int32_t c1, int32_t c2) {
  return int64_t{k.m[r][0]} * (c0 - k.in_off8[0]) + int64_t{k.m[r][1]} * (c1 - k.in_off8[1]) +
         int64_t{k.m[r][2]} * (c2 - k.in_off8[2]) + k.add[r];
}
inline int32_t NewClamp(int64_t v, int32_t hi) {
  return v < 0 ? 0 : (v > hi ? hi : static_cast<int32_t>(v));
}
// o[x] = output row r of the map at x, for x in [i0, n).
inline void NewMatrixRow(const NewMatrix& k, int r, const int32_t* c0, const int32_t* c1,
                         const int32_t* c2, int32_t* o, size_t i0, size_t n) {
  for (size_t x = i0; x < n; ++x) {
    o[x] = NewClamp(NewAcc(k, r, c0[x], c1[x], c2[x]) >> kNewShift, k.hi);
  }
}
}  // namespace scalar

// scalar::NewMatrixRow over [0, n) on the best target; `k` must fit int32.
void NewMatrixRow(const NewMatrix& k, int r, const int32_t* c0, const int32_t* c1,
                  const int32_t* c2, int32_t* o, size_t n);

// ---- YUV to 8-bit RGB in 16-bit fixed point. ----
//
// Luma enters as yx = Y << (15 - depth), chroma as samples about the centre
// in 256ths of an 8-bit code (s = 256 (C - centre) / 2^(depth - 8)). With
// H(a, c) = (a c + 2^14) >> 15,
//   l = H(yx, y) + add,  R = (l + H(v, rv)) >> 5,
//   G = (l + H(u, gu) + H(v, gv)) >> 5,  B = (l + H(u, bu)) >> 5,
// each clamped to 0 .. 255: five fractional bits, every sum within int16.
struct NewYuvRgb {
  int16_t y, rv, gu, gv, bu, add;
};
constexpr int kNewRgbFrac = 5;

// Whether no sum of map `q` leaves int16 (|yx| < 2^15, |s| <= 2^15) and
// twice each chroma coefficient fits int16.
bool NewYuvRgbFits(const NewYuvRgb& q);

// A destination row's chroma comes from a source chroma row pair blended
// vertically (NewChromaRow, once per channel), then enlarged horizontally and
// combined with luma in the fused row (NewYuvToRgbRow). Chroma rows hold half
// samples, t = s / 2 (s is a multiple of 16): a pixel between samples k and
// k + 1 takes t_k + t_k+1, one on sample k takes 2 t_k, so that enlarging
// is one add and H(2 t, c) = H(t, 2 c) lets the vector rows multiply before
// doubling.

// Bytes per pixel (3 or 4) and the byte of each channel (a: -1 for none).
struct NewRgbOrder {
  int px, r, g, b, a;
};

namespace scalar {
// (a c + 2^14) >> 15: the rounded high half of a 16-bit product, as vqrdmulh
// and pmulhrsw give it.
inline int32_t NewMulHigh(int32_t a, int32_t c) { return (a * c + (1 << 14)) >> 15; }
// The code of sample i of a row: bytes (wide 0) or 16-bit words holding 10
// bits low (1) or high (2).
inline int32_t NewSample(const uint8_t* row, size_t i, int wide) {
  if (wide == 0) return row[i];
  const int32_t word = row[2 * i] | (row[2 * i + 1] << 8);
  return wide == 1 ? (word & 1023) : (word >> 6);
}
// Luma sample i of a row as the fixed-point map takes it (yx).
inline int32_t NewLumaX(const uint8_t* row, size_t i, int wide) {
  return wide == 0 ? row[i] << 7 : NewSample(row, i, wide) << 5;
}
// rgb = the map at one pixel.
inline void NewRgbOfYuv(const NewYuvRgb& q, int32_t yx, int32_t u, int32_t v, int32_t rgb[3]) {
  const int32_t l = NewMulHigh(yx, q.y) + q.add;
  const int32_t t[3] = {l + NewMulHigh(v, q.rv), l + NewMulHigh(u, q.gu) + NewMulHigh(v, q.gv),
                        l + NewMulHigh(u, q.bu)};
  for (int i = 0; i < 3; ++i) rgb[i] = NewClamp(t[i] >> kNewRgbFrac, 255);
}
// Half a chroma sample in 256ths about the centre (t) from codes blended
// wa : 4 - wa.
inline int16_t NewChromaT(int32_t a, int32_t b, int wa, int wide) {
  return static_cast<int16_t>(((wa * a + (4 - wa) * b) << (wide ? 3 : 5)) - 16384);
}
// Half chroma samples k of a destination row: rows ra and rb blended wa :
// 4 - wa (wa 2 or 3). pack 1: a plane of one channel; pack 2: interleaved pairs,
// even samples to out0 and odd ones to out1.
inline void NewChromaRow(const uint8_t* ra, const uint8_t* rb, int wa, int pack, int wide,
                         int16_t* out0, int16_t* out1, size_t i0, size_t cw) {
  int16_t* out[2] = {out0, out1};
  for (size_t k = i0; k < cw; ++k) {
    for (int c = 0; c < pack; ++c) {
      const size_t i = pack * k + c;
      out[c][k] = NewChromaT(NewSample(ra, i, wide), NewSample(rb, i, wide), wa, wide);
    }
  }
}
// Chroma s of pixel x from a row of half samples t: 2 t[x], or with half
// (one sample per two pixels) 2 t[x / 2] at even x and t[x / 2] +
// t[x / 2 + 1] (the mean, exact) at odd x. The enlarged row reads one
// sample past its last.
inline int32_t NewChromaAt(const int16_t* t, size_t x, bool half) {
  if (!half) return 2 * t[x];
  const size_t k = x >> 1;
  return (x & 1) ? t[k] + t[k + 1] : 2 * t[k];
}
// Pixels [x0, n) of an RGB row from luma row y and the chroma rows u, v of
// NewChromaRow, by map `q` (alpha 255).
inline void NewYuvToRgbRow(const NewYuvRgb& q, const uint8_t* y, int wide, const int16_t* u,
                           const int16_t* v, bool half, const NewRgbOrder& o, uint8_t* dst,
                           size_t x0, size_t n) {
  for (size_t x = x0; x < n; ++x) {
    int32_t rgb[3];
    NewRgbOfYuv(q, NewLumaX(y, x, wide), NewChromaAt(u, x, half), NewChromaAt(v, x, half), rgb);
    uint8_t* p = dst + o.px * x;
    p[o.r] = static_cast<uint8_t>(rgb[0]);
    p[o.g] = static_cast<uint8_t>(rgb[1]);
    p[o.b] = static_cast<uint8_t>(rgb[2]);
    if (o.a >= 0) p[o.a] = 255;
  }
}
// The two rows of a source row pair that 4:2:0 chroma gives to two
// destination rows: NewChromaRow(ra, rb, 3, ...) into a0/a1 and
// NewChromaRow(rb, ra, 3, ...) into b0/b1, over [0, cw).
inline void NewChromaPair(const uint8_t* ra, const uint8_t* rb, int pack, int wide, int16_t* a0,
                          int16_t* a1, int16_t* b0, int16_t* b1, size_t cw) {
  NewChromaRow(ra, rb, 3, pack, wide, a0, a1, 0, cw);
  NewChromaRow(rb, ra, 3, pack, wide, b0, b1, 0, cw);
}
}  // namespace scalar

// Sample cw of each chroma output row repeats sample cw - 1.
inline void NewChromaRepeat(int pack, int16_t* out0, int16_t* out1, size_t cw) {
  out0[cw] = out0[cw - 1];
  if (pack == 2) out1[cw] = out1[cw - 1];
}

// scalar::NewChromaRow over [0, cw) on the best target, then sample cw of
// each output repeating sample cw - 1 (out rows hold cw + 1 samples).
void NewChromaRow(const uint8_t* ra, const uint8_t* rb, int wa, int pack, int wide,
                  int16_t* out0, int16_t* out1, size_t cw);
// scalar::NewChromaPair on the best target (no repeated samples).
void NewChromaPair(const uint8_t* ra, const uint8_t* rb, int pack, int wide, int16_t* a0,
                   int16_t* a1, int16_t* b0, int16_t* b1, size_t cw);
// scalar::NewYuvToRgbRow over [0, n) on the best target; `q` must pass
// NewYuvRgbFits.
void NewYuvToRgbRow(const NewYuvRgb& q, const uint8_t* y, int wide, const int16_t* u,
                    const int16_t* v, bool half, const NewRgbOrder& o, uint8_t* dst, size_t n);

// ---- Whole images. ----

// A planar or semi-planar YUV image to 24/32-bit RGB by the fused rows.
struct NewYuvToRgbJob {
  NewYuvRgb q;                  // passes NewYuvRgbFits
  NewRgbOrder o;                // of the destination
  const uint8_t* y;             // luma plane
  const uint8_t* c[2];          // chroma: the U and V planes, or (pack 2) one pair plane
  ptrdiff_t y_stride, c_stride[2], dst_stride;
  uint8_t* dst;
  int32_t w, h;
  int wide, pack;               // samples as NewSample; 1 planes, 2 pairs
  bool v_first;                 // pairs: V in the even samples
  bool half_h, half_v;          // chroma on every other column, row
};

// The source chroma rows ra and rb of luma row y and the weight of ra (of 4):
// with half_v, luma row 2j takes 3/4 of chroma row j and 1/4 of j - 1, row
// 2j + 1 3/4 of j and 1/4 of j + 1 (rows past an edge take the last one);
// otherwise row y itself. ch: the chroma rows.
inline void NewChromaSource(int32_t y, bool half_v, int32_t ch, int32_t* ra, int32_t* rb,
                            int32_t* wa) {
  if (!half_v) {
    *ra = *rb = y;
    *wa = 2;
    return;
  }
  *ra = y >> 1;
  *rb = (y & 1) ? (*ra + 1 < ch ? *ra + 1 : ch - 1) : (*ra > 0 ? *ra - 1 : 0);
  *wa = 3;
}

// The rows of a job: per destination row its chroma (with 4:2:0 an odd row
// and the next take theirs from one pass over their source row pair), then
// the fused row. chroma(ra, rb, wa, out0, out1) and pair(ra, rb, a0, a1, b0,
// b1) make chroma rows over [0, cw), rgb(y, u, v, dst) a destination row.
// buf: 4 (cw + 1) samples.
template <class Chroma, class Pair, class Rgb>
void NewYuvToRgbRows(const NewYuvToRgbJob& j, int16_t* buf, const Chroma& chroma, const Pair& pair,
                     const Rgb& rgb) {
  const int32_t cw = j.half_h ? (j.w + 1) / 2 : j.w, ch = j.half_v ? (j.h + 1) / 2 : j.h;
  const size_t n = static_cast<size_t>(cw);
  // U and V of this row, then of the next.
  int16_t* c[2][2] = {{buf, buf + (n + 1)}, {buf + 2 * (n + 1), buf + 3 * (n + 1)}};
  const int first = j.pack == 2 && j.v_first ? 1 : 0;
  const uint8_t* yrow = j.y;
  uint8_t* drow = j.dst;
  int cur = 0;
  for (int32_t y = 0; y < j.h; ++y, yrow += j.y_stride, drow += j.dst_stride) {
    if (j.half_v && y > 0 && !(y & 1)) {
      cur ^= 1;  // made with row y - 1
    } else {
      int32_t ra, rb, wa;
      NewChromaSource(y, j.half_v, ch, &ra, &rb, &wa);
      const bool both = j.half_v && (y & 1) && y + 1 < j.h;
      for (int i = 0; i < 3 - j.pack; ++i) {
        const int k = j.pack == 2 ? first : i;
        int16_t* a0 = c[cur][k];
        int16_t* a1 = j.pack == 2 ? c[cur][1 - k] : nullptr;
        const uint8_t* pa = j.c[i] + ra * j.c_stride[i];
        const uint8_t* pb = j.c[i] + rb * j.c_stride[i];
        if (both) {
          int16_t* b0 = c[cur ^ 1][k];
          int16_t* b1 = j.pack == 2 ? c[cur ^ 1][1 - k] : nullptr;
          pair(pa, pb, a0, a1, b0, b1);
          NewChromaRepeat(j.pack, b0, b1, n);
        } else {
          chroma(pa, pb, wa, a0, a1);
        }
        NewChromaRepeat(j.pack, a0, a1, n);
      }
    }
    rgb(yrow, c[cur][0], c[cur][1], drow);
  }
}

// Runs the job on the best target; buf as for NewYuvToRgbRows.
void NewYuvToRgbImage(const NewYuvToRgbJob& j, int16_t* buf);

}  // namespace csc
}  // namespace kelo

#endif  // KELO_IMGP_CSC_CSC_NEW_ROWS_H_
