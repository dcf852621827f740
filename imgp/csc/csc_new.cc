// kimgp_csc_new: every pair of linear layouts through one row pipeline.
//
// For each destination row: the source samples the row needs are unpacked
// into int32 rows in eighths of a source code (the chroma resampled onto the
// grid the destination needs), converted by one composed matrix (or, between
// YUV layouts of one standard, by an exact per-channel rescale), rounded,
// clamped and packed. Stages work on whole rows so that a vector row can
// replace one and be proven against it.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "common/internal/api.h"
#include "common/internal/fault.h"
#include "imgp/csc/csc_new_rgb_rows.h"
#include "imgp/csc/csc_new_rows.h"
#include "imgp/csc/pixel_layouts.h"
#include "kimgp_csc.h"

namespace kelo {
namespace csc {
namespace {

enum class Kind { kLuma, kPlanar, kSemi, kPacked, kRgb };

// How a code keeps its samples. Chroma planes are (1 << xs) pixels wide and
// (1 << ys) rows tall per sample.
struct Layout {
  int32_t cs;
  Kind kind;
  int xs, ys;
  // kPlanar: plane of U and V; kSemi: sample of U and V within a pair;
  // kPacked: byte of U and V within a four-byte pixel pair.
  int ci[2];
  int yoff;  // kPacked: byte of the first luma sample of a pair
  int wide;  // 0: bytes; 1: 16-bit words, 10 bits low; 2: 10 bits high
  // kRgb: bytes per pixel (2: 5-6-5 words) and channel bytes (-1: none).
  int px, r, g, b, a;
  bool red_high;  // 5-6-5: red in bits 15-11
};

template <class T>
constexpr Layout Rgb32(int32_t cs) {
  return {cs, Kind::kRgb, 0, 0, {0, 0}, 0, 0, T::kBytes, T::kRi, T::kGi, T::kBi, T::kAi, false};
}

constexpr Layout kLayouts[] = {
    {KIMGP_CS_YUV400, Kind::kLuma, 0, 0, {0, 0}, 0, 0, 0, 0, 0, 0, 0, false},
    {KIMGP_CS_YUV420, Kind::kPlanar, 1, 1, {1, 2}, 0, 0, 0, 0, 0, 0, 0, false},
    {KIMGP_CS_YUV422N, Kind::kPlanar, 1, 0, {1, 2}, 0, 0, 0, 0, 0, 0, 0, false},
    {KIMGP_CS_YUV444, Kind::kPlanar, 0, 0, {1, 2}, 0, 0, 0, 0, 0, 0, 0, false},
    {KIMGP_CS_YV12, Kind::kPlanar, 1, 1, {2, 1}, 0, 0, 0, 0, 0, 0, 0, false},
    {KIMGP_CS_YV16, Kind::kPlanar, 1, 0, {2, 1}, 0, 0, 0, 0, 0, 0, 0, false},
    {KIMGP_CS_NV12, Kind::kSemi, 1, 1, {0, 1}, 0, 0, 0, 0, 0, 0, 0, false},
    {KIMGP_CS_NV21, Kind::kSemi, 1, 1, {1, 0}, 0, 0, 0, 0, 0, 0, 0, false},
    {KIMGP_CS_UYVY, Kind::kPacked, 1, 0, {0, 2}, 1, 0, 0, 0, 0, 0, 0, false},
    {KIMGP_CS_YUYV, Kind::kPacked, 1, 0, {1, 3}, 0, 0, 0, 0, 0, 0, 0, false},
    {KIMGP_CS_RGB565, Kind::kRgb, 0, 0, {0, 0}, 0, 0, 2, 0, 0, 0, -1, true},
    {KIMGP_CS_BGR565, Kind::kRgb, 0, 0, {0, 0}, 0, 0, 2, 0, 0, 0, -1, false},
    Rgb32<Rgb888>(KIMGP_CS_RGB888),
    Rgb32<Bgr888>(KIMGP_CS_BGR888),
    Rgb32<Rgba8888>(KIMGP_CS_RGBA8888),
    Rgb32<Bgra8888>(KIMGP_CS_BGRA8888),
    Rgb32<Argb8888>(KIMGP_CS_ARGB8888),
    Rgb32<Abgr8888>(KIMGP_CS_ABGR8888),
    {KIMGP_CS_YUV420PLANAR16, Kind::kPlanar, 1, 1, {1, 2}, 0, 1, 0, 0, 0, 0, 0, false},
    {KIMGP_CS_P010LE, Kind::kSemi, 1, 1, {0, 1}, 0, 2, 0, 0, 0, 0, 0, false},
};

const Layout* FindLayout(int32_t cs) {
  for (const Layout& l : kLayouts) {
    if (l.cs == cs) return &l;
  }
  return nullptr;
}

bool IsRgb(const Layout& l) { return l.kind == Kind::kRgb; }
int Depth(const Layout& l) { return l.wide ? 10 : 8; }
int32_t Min(int32_t a, int32_t b) { return a < b ? a : b; }

// Code ranges of a YUV side: luma offset and span, chroma centre and span.
struct Range {
  int32_t yoff, yspan, coff, cspan;
};
Range RangeOf(bool full, int depth) {
  if (depth == 10) return full ? Range{0, 1023, 512, 1023} : Range{64, 876, 512, 896};
  return full ? Range{0, 255, 128, 255} : Range{16, 219, 128, 224};
}

struct Standard {
  double kr, kb;
  bool full;
};
bool StandardOf(int32_t std, Standard* s) {
  switch (std) {
    case KIMGP_STD_DEFAULT: *s = {0.299, 0.114, false}; return true;
    case KIMGP_STD_BT601_FR: *s = {0.299, 0.114, true}; return true;
    case KIMGP_STD_BT709: *s = {0.2126, 0.0722, false}; return true;
    case KIMGP_STD_BT709_FR: *s = {0.2126, 0.0722, true}; return true;
    case KIMGP_STD_BT2020: *s = {0.2627, 0.0593, false}; return true;
    case KIMGP_STD_BT2020_FR: *s = {0.2627, 0.0593, true}; return true;
    default: return false;
  }
}

struct Plan {
  const Layout* s;
  const Layout* d;
  int32_t w, h;
  bool rescale;            // YUV to YUV of one standard: per-channel scaling
  NewMatrix k;             // matrix mode
  NewYuvRgb q;             // YUV to RGB
  bool vec;                // k fits the vector rows
  bool fused;              // YUV to RGB by RunFused
  bool rgb_fused;          // RGB to YUV by RunRgbToYuv, with these rows:
  NewRgbRows rgb;
  Range sr, dr;            // YUV sides' ranges (rescale: the spans' ratios)
  int32_t dmax;            // largest code of the destination
};

using Mat = double[3][3];

void Mul(const Mat a, const Mat b, Mat out) {
  Mat t;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) t[i][j] = a[i][0] * b[0][j] + a[i][1] * b[1][j] + a[i][2] * b[2][j];
  }
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) out[i][j] = t[i][j];
  }
}

void SetUpMatrix(Plan* p, const Standard& ss, const Standard& ds) {
  // Source codes (less their offsets) to normalised values.
  Mat m = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  if (IsRgb(*p->s)) {
    for (int i = 0; i < 3; ++i) m[i][i] = 1.0 / 255;
  } else {
    m[0][0] = 1.0 / p->sr.yspan;
    m[1][1] = m[2][2] = 1.0 / p->sr.cspan;
    // Y'CbCr to R'G'B'.
    const double kr = ss.kr, kb = ss.kb, kg = 1 - kr - kb;
    const Mat to_rgb = {{1, 0, 2 * (1 - kr)},
                        {1, -2 * (1 - kb) * kb / kg, -2 * (1 - kr) * kr / kg},
                        {1, 2 * (1 - kb), 0}};
    Mul(to_rgb, m, m);
  }
  Mat out = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}};
  if (!IsRgb(*p->d)) {
    const double kr = ds.kr, kb = ds.kb, kg = 1 - kr - kb;
    const Mat to_yuv = {{kr, kg, kb},
                        {-kr / (2 * (1 - kb)), -kg / (2 * (1 - kb)), 0.5},
                        {0.5, -kg / (2 * (1 - kr)), -kb / (2 * (1 - kr))}};
    const Mat span = {{double(p->dr.yspan), 0, 0}, {0, double(p->dr.cspan), 0},
                      {0, 0, double(p->dr.cspan)}};
    Mul(span, to_yuv, out);
  }
  Mul(out, m, m);
  int32_t (&k)[3][3] = p->k.m;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) k[i][j] = static_cast<int32_t>(std::lround(m[i][j] * (1 << kNewFrac)));
  }
  // Greys stay grey: every RGB row takes luma alike, chroma rows sum to zero
  // over R, G, B (the green weight absorbs the rounding), and chroma never
  // depends on luma between two YUV sides.
  if (IsRgb(*p->d) && !IsRgb(*p->s)) k[1][0] = k[2][0] = k[0][0];
  if (!IsRgb(*p->d) && IsRgb(*p->s)) {
    for (int i = 1; i < 3; ++i) k[i][1] = -k[i][0] - k[i][2];
  }
  if (!IsRgb(*p->d) && !IsRgb(*p->s)) k[1][0] = k[2][0] = 0;
  const bool syuv = !IsRgb(*p->s), dyuv = !IsRgb(*p->d);
  p->k.in_off8[0] = syuv ? 8 * p->sr.yoff : 0;
  p->k.in_off8[1] = p->k.in_off8[2] = syuv ? 8 * p->sr.coff : 0;
  for (int i = 0; i < 3; ++i) {
    const int32_t off = !dyuv ? 0 : i == 0 ? p->dr.yoff : p->dr.coff;
    p->k.add[i] = (off << kNewShift) + (1 << (kNewShift - 1));
  }
  if (!syuv && Depth(*p->d) == 8) {
    // RGB to 8-bit luma in byte weights: y = (w . rgb + 256 yoff + a) >> 8,
    // the weights rounded to 1/256 and `a` the rounding half less the
    // weights' excess over the exact sum at mid grey (every RGB stays within
    // 1 of the exact value; byte products on every target).
    const double exact = 256.0 * p->dr.yspan / 255;
    int32_t sum = 0;
    for (int j = 0; j < 3; ++j) {
      const int32_t w = static_cast<int32_t>(std::lround(m[0][j] * 256));
      k[0][j] = w << (kNewFrac - 8);
      sum += w;
    }
    const int32_t a = Min(255, static_cast<int32_t>(std::lround(128 + 128 * (exact - sum))));
    p->k.add[0] = (p->dr.yoff << kNewShift) + (a << (kNewShift - 8));
    // Chroma from R - G and B - G (its weights on R, G, B sum to zero).
    for (int c = 0; c < 2; ++c) {
      for (int j = 0; j < 2; ++j) {
        const long w = std::lround(m[1 + c][2 * j] * 65536);
        p->k.cd[c][j] = static_cast<int32_t>(w > 32767 ? 32767 : w < -32767 ? -32767 : w);
      }
    }
  }
  p->k.hi = p->dmax;
  p->vec = NewMatrixFits(p->k, 8 * ((1 << Depth(*p->s)) - 1));
  if (syuv && !dyuv) {
    // Luma enters as Y << (15 - depth), chroma in 256ths of an 8-bit code;
    // outputs carry kNewRgbFrac fractional bits.
    const int depth = Depth(*p->s);
    const auto q15 = [](double v) { return static_cast<int16_t>(std::lround(v)); };
    const double unit = 1 << kNewRgbFrac;
    p->q.y = q15(m[0][0] * unit * (1 << depth));
    p->q.rv = q15(m[0][2] * unit * (1 << (depth - 1)));
    p->q.gu = q15(m[1][1] * unit * (1 << (depth - 1)));
    p->q.gv = q15(m[1][2] * unit * (1 << (depth - 1)));
    p->q.bu = q15(m[2][1] * unit * (1 << (depth - 1)));
    p->q.add = q15(unit / 2 - p->sr.yoff * m[0][0] * unit);
  }
}

// ---- Unpack: one row of a source into eighths of a code. ----

void PutSample(uint8_t* row, int32_t i, int wide, int32_t v) {
  if (wide == 0) {
    row[i] = static_cast<uint8_t>(v);
    return;
  }
  const int32_t word = wide == 1 ? v : v << 6;
  row[2 * i] = static_cast<uint8_t>(word);
  row[2 * i + 1] = static_cast<uint8_t>(word >> 8);
}

const uint8_t* RowOf(const kimgp_img& img, int plane, int32_t y) {
  return img.plane[plane] + static_cast<ptrdiff_t>(y) * img.stride[plane];
}
uint8_t* RowOf(kimgp_img& img, int plane, int32_t y) {
  return img.plane[plane] + static_cast<ptrdiff_t>(y) * img.stride[plane];
}

// Samples i0, i0 + step, ... (n of them) of a row, times 8.
void Load8(const uint8_t* row, int32_t i0, int32_t step, int wide, int32_t n, int32_t* out) {
  if (wide == 0) {
    for (int32_t x = 0; x < n; ++x) out[x] = 8 * row[i0 + x * step];
  } else {
    for (int32_t x = 0; x < n; ++x) out[x] = 8 * scalar::NewSample(row, static_cast<size_t>(i0 + x * step), wide);
  }
}

void LoadLuma(const kimgp_img& s, const Layout& l, int32_t y, int32_t w, int32_t* out) {
  const uint8_t* row = RowOf(s, 0, y);
  if (l.kind == Kind::kPacked) {
    Load8(row, l.yoff, 2, 0, w, out);
  } else {
    Load8(row, 0, 1, l.wide, w, out);
  }
}

// Chroma codes of chroma row cy, cw samples each, times 8.
void LoadChroma(const kimgp_img& s, const Layout& l, const Range& r, int32_t cy, int32_t cw,
                int32_t* u, int32_t* v) {
  int32_t* out[2] = {u, v};
  for (int c = 0; c < 2; ++c) {
    switch (l.kind) {
      case Kind::kPlanar: Load8(RowOf(s, l.ci[c], cy), 0, 1, l.wide, cw, out[c]); break;
      case Kind::kSemi: Load8(RowOf(s, 1, cy), l.ci[c], 2, l.wide, cw, out[c]); break;
      case Kind::kPacked: Load8(RowOf(s, 0, cy), l.ci[c], 4, 0, cw, out[c]); break;
      default:
        for (int32_t k = 0; k < cw; ++k) out[c][k] = 8 * r.coff;
        break;
    }
  }
}

// 5-6-5 fields widen by rounding v * 255 / 31 (v * 255 / 63).
int32_t Widen(int32_t v, int32_t top) { return (v * 255 + top / 2) / top; }
int32_t Narrow(int32_t v, int32_t top) { return (v * top + 127) / 255; }

void LoadRgb(const kimgp_img& s, const Layout& l, int32_t y, int32_t w, int32_t* r, int32_t* g,
             int32_t* b) {
  const uint8_t* row = RowOf(s, 0, y);
  for (int32_t x = 0; x < w; ++x) {
    const uint8_t* p = row + x * l.px;
    if (l.px == 2) {
      const int32_t word = p[0] | (p[1] << 8);
      const int32_t hi = Widen(word >> 11, 31), lo = Widen(word & 31, 31);
      r[x] = 8 * (l.red_high ? hi : lo);
      g[x] = 8 * Widen((word >> 5) & 63, 63);
      b[x] = 8 * (l.red_high ? lo : hi);
    } else {
      r[x] = 8 * p[l.r];
      g[x] = 8 * p[l.g];
      b[x] = 8 * p[l.b];
    }
  }
}

// Source chroma on the grid of target row ty (a luma row, or with half_v a
// chroma row of a 4:2:0 destination), n = w or HalfUp(w) samples with half_h,
// in eighths of a code. Enlarging: luma column 2k takes chroma k, 2k + 1 the
// mean of k and k + 1; luma row 2j takes 3/4 of chroma row j and 1/4 of j - 1,
// row 2j + 1 3/4 of j and 1/4 of j + 1. Reducing: means of pairs. Indices
// past an edge take the last sample.
// The source chroma rows ra and rb of target row ty and the weight of ra (of
// 4), for ChromaOnGrid.
void ChromaRows(const Plan& p, int32_t ty, bool half_v, int32_t* ra, int32_t* rb, int32_t* wa) {
  const Layout& l = *p.s;
  const int32_t ch = l.ys ? HalfUp(p.h) : p.h;
  *wa = 2;
  if (!half_v) {
    NewChromaSource(ty, l.ys != 0, ch, ra, rb, wa);
  } else if (l.ys != 0) {
    *ra = *rb = ty;
  } else {
    *ra = 2 * ty;
    *rb = Min(*ra + 1, ch - 1);
  }
}

void ChromaOnGrid(const Plan& p, const kimgp_img& s, int32_t ty, bool half_v, bool half_h,
                  int32_t* tmp, int32_t* u, int32_t* v) {
  const Layout& l = *p.s;
  const int32_t cw = l.xs ? HalfUp(p.w) : p.w;
  int32_t ra, rb, wa;
  ChromaRows(p, ty, half_v, &ra, &rb, &wa);
  // Rows in eighths of a code: the weighted sums of quarters and halves of
  // them stay whole, so nothing rounds here.
  int32_t *ua = tmp, *va = tmp + cw, *ub = tmp + 2 * cw, *vb = tmp + 3 * cw;
  LoadChroma(s, l, p.sr, ra, cw, ua, va);
  if (ra != rb) {
    LoadChroma(s, l, p.sr, rb, cw, ub, vb);
    for (int32_t k = 0; k < cw; ++k) {
      ua[k] = (wa * ua[k] + (4 - wa) * ub[k]) >> 2;
      va[k] = (wa * va[k] + (4 - wa) * vb[k]) >> 2;
    }
  }
  const int32_t n = half_h ? HalfUp(p.w) : p.w;
  if (IsRgb(*p.d)) {
    // In 256ths of an 8-bit code about the centre (multiples of 16, so the
    // mean of two is exact).
    const int sh = l.wide ? 3 : 5;
    for (int32_t k = 0; k < cw; ++k) {
      ua[k] = (ua[k] << sh) - 32768;
      va[k] = (va[k] << sh) - 32768;
    }
  }
  for (int32_t x = 0; x < n; ++x) {
    int32_t a, b;
    if (half_h == (l.xs != 0)) {
      a = b = x;
    } else if (!half_h) {  // enlarge
      a = x >> 1;
      b = (x & 1) ? Min(a + 1, cw - 1) : a;
    } else {  // reduce
      a = 2 * x;
      b = Min(a + 1, cw - 1);
    }
    u[x] = (ua[a] + ua[b]) >> 1;
    v[x] = (va[a] + va[b]) >> 1;
  }
}

// ---- Convert. ----

using scalar::NewAcc;
using scalar::NewClamp;
using scalar::NewRgbChromaCode;

// Output row r of the map over a whole row.
void MatrixRow(const Plan& p, int r, const int32_t* c0, const int32_t* c1, const int32_t* c2,
               int32_t* o, int32_t n) {
  if (p.vec) {
    NewMatrixRow(p.k, r, c0, c1, c2, o, static_cast<size_t>(n));
  } else {
    scalar::NewMatrixRow(p.k, r, c0, c1, c2, o, 0, static_cast<size_t>(n));
  }
}

// Exact scaling between two ranges of one standard: off_d + (x - off_s) *
// num / den rounded half up, x in eighths.
int32_t Rescale(int32_t x, int32_t off_s, int32_t off_d, int32_t num, int32_t den, int32_t hi) {
  const int64_t t = int64_t{x - 8 * off_s} * num + 4 * int64_t{den};
  const int64_t q = 8 * int64_t{den};
  const int64_t f = t >= 0 ? t / q : -((-t + q - 1) / q);
  return NewClamp(off_d + f, hi);
}

// ---- Pack. ----

void StoreLuma(kimgp_img& d, const Layout& l, int32_t y, int32_t w, const int32_t* in) {
  uint8_t* row = RowOf(d, 0, y);
  for (int32_t x = 0; x < w; ++x) {
    if (l.kind == Kind::kPacked) {
      row[2 * x + l.yoff] = static_cast<uint8_t>(in[x]);
    } else {
      PutSample(row, x, l.wide, in[x]);
    }
  }
}

void StoreChroma(kimgp_img& d, const Layout& l, int32_t cy, int32_t cw, const int32_t* u,
                 const int32_t* v) {
  const int32_t* in[2] = {u, v};
  for (int c = 0; c < 2; ++c) {
    for (int32_t k = 0; k < cw; ++k) {
      switch (l.kind) {
        case Kind::kPlanar: PutSample(RowOf(d, l.ci[c], cy), k, l.wide, in[c][k]); break;
        case Kind::kSemi: PutSample(RowOf(d, 1, cy), 2 * k + l.ci[c], l.wide, in[c][k]); break;
        case Kind::kPacked: RowOf(d, 0, cy)[4 * k + l.ci[c]] = static_cast<uint8_t>(in[c][k]); break;
        default: break;
      }
    }
  }
}

void StoreRgb(kimgp_img& d, const Layout& l, int32_t y, int32_t w, const int32_t* r,
              const int32_t* g, const int32_t* b) {
  uint8_t* row = RowOf(d, 0, y);
  for (int32_t x = 0; x < w; ++x) {
    uint8_t* q = row + x * l.px;
    if (l.px == 2) {
      const int32_t hi = Narrow(l.red_high ? r[x] : b[x], 31);
      const int32_t lo = Narrow(l.red_high ? b[x] : r[x], 31);
      const int32_t word = (hi << 11) | (Narrow(g[x], 63) << 5) | lo;
      q[0] = static_cast<uint8_t>(word);
      q[1] = static_cast<uint8_t>(word >> 8);
    } else {
      q[l.r] = static_cast<uint8_t>(r[x]);
      q[l.g] = static_cast<uint8_t>(g[x]);
      q[l.b] = static_cast<uint8_t>(b[x]);
      if (l.a >= 0) q[l.a] = 255;
    }
  }
}

// 3- and 4-byte RGB pixels to 8-bit planar or semi-planar YUV: each row's
// luma, and the chroma row starting there, straight from the pixels.
bool RgbToYuvFused(const Layout& sl, const Layout& dl) {
  return IsRgb(sl) && sl.px >= 3 && !IsRgb(dl) && !dl.wide && dl.kind != Kind::kPacked;
}
void RunRgbToYuv(const Plan& p, const kimgp_img& s, kimgp_img& d) {
  const Layout& sl = *p.s;
  const Layout& dl = *p.d;
  const NewRgbOrder o{sl.px, sl.r, sl.g, sl.b, sl.a};
  const size_t w = static_cast<size_t>(p.w);
  const bool chroma = dl.kind != Kind::kLuma, semi = dl.kind == Kind::kSemi;
  const int up = semi ? 1 : dl.ci[0], vp = semi ? 1 : dl.ci[1];
  const int32_t uo = semi ? dl.ci[0] : 0, vo = semi ? dl.ci[1] : 0;
  int32_t y = 0;
  if (chroma && dl.ys) {  // 4:2:0: the row pairs, then an odd last row
    const NewRgbPairs job{s.plane[0], s.stride[0], d.plane[0], d.stride[0],
                          RowOf(d, up, 0) + uo, RowOf(d, vp, 0) + vo, d.stride[up],
                          semi ? 2u : 1u, w, static_cast<size_t>(p.h / 2)};
    NewRgbPairRows(p.rgb, p.k, o, job);
    y = p.h & ~1;
  }
  for (; y < p.h; ++y) {
    const uint8_t* row = RowOf(s, 0, y);
    const int32_t cy = dl.ys ? y >> 1 : y;
    p.rgb.luma(p.k, o, row, RowOf(d, 0, y), w);
    if (!chroma) continue;
    p.rgb.chroma(p.k, o, row, row, 1 << dl.xs, RowOf(d, up, cy) + uo, RowOf(d, vp, cy) + vo,
                 semi ? 2 : 1, w);
  }
}

// ---- The pipeline. ----

// Int32 rows of the call: 16 rows of w.
constexpr int kRows = 16;

// Planar and semi-planar YUV to 24- and 32-bit RGB: per row, each chroma
// channel blended vertically on the source's chroma grid, then one fused row.
void RunFused(const Plan& p, const kimgp_img& s, kimgp_img& d, int32_t* buf) {
  const Layout& l = *p.s;
  const bool semi = l.kind != Kind::kPlanar;
  NewYuvToRgbJob j{};
  j.q = p.q;
  j.o = {p.d->px, p.d->r, p.d->g, p.d->b, p.d->a};
  j.y = s.plane[0];
  j.y_stride = s.stride[0];
  for (int i = 0; i < 2; ++i) {
    const int plane = semi ? 1 : l.ci[i];
    j.c[i] = s.plane[plane];
    j.c_stride[i] = s.stride[plane];
  }
  j.dst = d.plane[0];
  j.dst_stride = d.stride[0];
  j.w = p.w;
  j.h = p.h;
  j.wide = l.wide;
  j.pack = semi ? 2 : 1;
  j.v_first = semi && l.ci[0] != 0;
  j.half_h = l.xs != 0;
  j.half_v = l.ys != 0;
  NewYuvToRgbImage(j, reinterpret_cast<int16_t*>(buf));
}

void Run(const Plan& p, const kimgp_img& s, kimgp_img& d, int32_t* buf) {
  if (p.fused) {
    RunFused(p, s, d, buf);
    return;
  }
  if (p.rgb_fused) {
    RunRgbToYuv(p, s, d);
    return;
  }
  const int32_t w = p.w;
  int32_t* tmp = buf;            // 4 rows: raw chroma
  int32_t* c[3] = {buf + 4 * w, buf + 5 * w, buf + 6 * w};   // source channels
  int32_t* o[3] = {buf + 7 * w, buf + 8 * w, buf + 9 * w};   // output codes
  int32_t* acc[4] = {buf + 10 * w, buf + 11 * w, buf + 12 * w, buf + 13 * w};
  const bool srgb = IsRgb(*p.s), drgb = IsRgb(*p.d);
  const int32_t dhi = p.dmax;
  for (int32_t y = 0; y < p.h; ++y) {
    // Full-resolution source channels of row y.
    if (srgb) {
      LoadRgb(s, *p.s, y, w, c[0], c[1], c[2]);
    } else {
      LoadLuma(s, *p.s, y, w, c[0]);
      if (!p.rescale) ChromaOnGrid(p, s, y, false, false, tmp, c[1], c[2]);
    }
    if (drgb && !srgb) {
      const int sh = p.s->wide ? 2 : 4;  // eighths to Y << (15 - depth)
      for (int32_t x = 0; x < w; ++x) {
        int32_t rgb[3];
        scalar::NewRgbOfYuv(p.q, c[0][x] << sh, c[1][x], c[2][x], rgb);
        for (int i = 0; i < 3; ++i) o[i][x] = rgb[i];
      }
      StoreRgb(d, *p.d, y, w, o[0], o[1], o[2]);
      continue;
    }
    // Per-pixel outputs: RGB, or luma.
    const int outs = drgb ? 3 : 1;
    for (int i = 0; i < outs; ++i) {
      if (!p.rescale && !(srgb && drgb)) {
        MatrixRow(p, i, c[0], c[1], c[2], o[i], w);
        continue;
      }
      for (int32_t x = 0; x < w; ++x) {
        o[i][x] = p.rescale ? Rescale(c[0][x], p.sr.yoff, p.dr.yoff, p.dr.yspan, p.sr.yspan, dhi)
                            : NewClamp((c[i][x] + 4) >> 3, 255);
      }
    }
    if (drgb) {
      StoreRgb(d, *p.d, y, w, o[0], o[1], o[2]);
      continue;
    }
    StoreLuma(d, *p.d, y, w, o[0]);
    // Chroma of the destination chroma row that starts at row y.
    const Layout& dl = *p.d;
    if (dl.kind == Kind::kLuma || (dl.ys && (y & 1))) continue;
    const int32_t cy = dl.ys ? y >> 1 : y;
    const int32_t cw = dl.xs ? HalfUp(w) : w;
    if (srgb && !dl.wide) {
      // 8 bits: from the block's channel sums (in eighths here).
      const int32_t y1 = dl.ys ? Min(y + 1, p.h - 1) : y;
      for (int j = 0; j < 3; ++j) std::copy(c[j], c[j] + w, acc[j]);
      LoadRgb(s, *p.s, y1, w, c[0], c[1], c[2]);
      for (int32_t k = 0; k < cw; ++k) {
        const int32_t a = dl.xs ? 2 * k : k, b = dl.xs ? Min(a + 1, w - 1) : a;
        int32_t sum[3];
        for (int j = 0; j < 3; ++j) sum[j] = (acc[j][a] + acc[j][b] + c[j][a] + c[j][b]) >> 3;
        for (int ch = 0; ch < 2; ++ch) o[1 + ch][k] = NewRgbChromaCode(p.k, ch, sum[0], sum[1], sum[2]);
      }
    } else if (srgb) {
      // Per-pixel chroma of the block's rows, then the rounded block mean.
      const int32_t y1 = dl.ys ? Min(y + 1, p.h - 1) : y;
      for (int row = 0; row < 2; ++row) {
        if (row == 1) LoadRgb(s, *p.s, y1, w, c[0], c[1], c[2]);
        for (int32_t x = 0; x < w; ++x) {
          // Quarters, so that four sum within int32; the rounding half
          // of add[] stays whole.
          acc[2 * row][x] = static_cast<int32_t>(NewAcc(p.k, 1, c[0][x], c[1][x], c[2][x]) >> 2);
          acc[2 * row + 1][x] = static_cast<int32_t>(NewAcc(p.k, 2, c[0][x], c[1][x], c[2][x]) >> 2);
        }
      }
      for (int32_t k = 0; k < cw; ++k) {
        const int32_t a = dl.xs ? 2 * k : k, b = dl.xs ? Min(a + 1, w - 1) : a;
        for (int ch = 0; ch < 2; ++ch) {
          const int64_t sum = int64_t{acc[ch][a]} + acc[ch][b] + acc[2 + ch][a] + acc[2 + ch][b];
          o[1 + ch][k] = NewClamp(sum >> kNewShift, dhi);
        }
      }
    } else {
      ChromaOnGrid(p, s, cy, dl.ys != 0, dl.xs != 0, tmp, c[1], c[2]);
      for (int ch = 1; ch < 3; ++ch) {
        // Chroma rows take nothing from luma: c[1] stands in for it.
        if (!p.rescale) {
          MatrixRow(p, ch, c[1], c[1], c[2], o[ch], cw);
          continue;
        }
        for (int32_t k = 0; k < cw; ++k) {
          o[ch][k] = Rescale(c[ch][k], p.sr.coff, p.dr.coff, p.dr.cspan, p.sr.cspan, dhi);
        }
      }
    }
    StoreChroma(d, dl, cy, cw, o[1], o[2]);
  }
}

enum class Family { kAny, kYuvToRgb, kRgbToYuv, kYuvToYuv, kRgbToRgb };

int32_t Convert(const kimgp_img* src, kimgp_img* dst, Family family) {
  if (src->cs == dst->cs) return KIMGP_ERR_ARGS;
  const Layout* sl = FindLayout(src->cs);
  const Layout* dl = FindLayout(dst->cs);
  if (sl == nullptr || dl == nullptr) return KIMGP_ERR_UNSUPPORTED;
  const bool srgb = IsRgb(*sl), drgb = IsRgb(*dl);
  const Family f = srgb ? (drgb ? Family::kRgbToRgb : Family::kRgbToYuv)
                        : (drgb ? Family::kYuvToRgb : Family::kYuvToYuv);
  if (family != Family::kAny && family != f) return KIMGP_ERR_UNSUPPORTED;
  const int32_t w = src->width[0], h = src->height[0];
  if (w < 2 || h < 2) return KIMGP_ERR_UNSUPPORTED;
  if (dst->width[0] != w || dst->height[0] != h) return KIMGP_ERR_ARGS;
  if ((w & 1) && (sl->kind == Kind::kPacked || dl->kind == Kind::kPacked)) {
    return KIMGP_ERR_UNSUPPORTED;
  }
  Standard ss{}, ds{};
  if (!srgb && !StandardOf(src->std, &ss)) return KIMGP_ERR_UNSUPPORTED;
  if (!drgb && !StandardOf(dst->std, &ds)) return KIMGP_ERR_UNSUPPORTED;
  Plan p{};
  p.s = sl;
  p.d = dl;
  p.w = w;
  p.h = h;
  p.sr = RangeOf(ss.full, Depth(*sl));
  p.dr = RangeOf(ds.full, Depth(*dl));
  p.dmax = drgb ? 255 : (1 << Depth(*dl)) - 1;
  p.rescale = !srgb && !drgb && src->std == dst->std;
  if (!p.rescale && !(srgb && drgb)) SetUpMatrix(&p, ss, ds);
  p.fused = !srgb && drgb && (sl->kind == Kind::kPlanar || sl->kind == Kind::kSemi) &&
            dl->px >= 3;
  p.rgb_fused = RgbToYuvFused(*sl, *dl);
  if (p.rgb_fused) p.rgb = NewRgbRowsFor(p.k, {sl->px, sl->r, sl->g, sl->b, sl->a}, 1 << dl->xs);
  // A width whose rows the address space cannot hold is memory not had.
  if (static_cast<uint64_t>(w) > SIZE_MAX / (sizeof(int32_t) * kRows)) return KIMGP_ERR_ARGS;
  int32_t* buf = static_cast<int32_t*>(HeapAlloc(sizeof(int32_t) * kRows * static_cast<size_t>(w)));
  if (buf == nullptr) return KIMGP_ERR_ARGS;
  Run(p, *src, *dst, buf);
  std::free(buf);
  return KIMGP_OK;
}

}  // namespace
}  // namespace csc
}  // namespace kelo

using kelo::csc::Family;

KELO_EXPORT int32_t kimgp_csc_new(const kimgp_img* src, kimgp_img* dst) {
  return kelo::csc::Convert(src, dst, Family::kAny);
}
KELO_EXPORT int32_t kimgp_csc_yuv_to_rgb_new(const kimgp_img* src, kimgp_img* dst) {
  return kelo::csc::Convert(src, dst, Family::kYuvToRgb);
}
KELO_EXPORT int32_t kimgp_csc_rgb_to_yuv_new(const kimgp_img* src, kimgp_img* dst) {
  return kelo::csc::Convert(src, dst, Family::kRgbToYuv);
}
KELO_EXPORT int32_t kimgp_csc_yuv_to_yuv_new(const kimgp_img* src, kimgp_img* dst) {
  return kelo::csc::Convert(src, dst, Family::kYuvToYuv);
}
KELO_EXPORT int32_t kimgp_csc_rgb_to_rgb_new(const kimgp_img* src, kimgp_img* dst) {
  return kelo::csc::Convert(src, dst, Family::kRgbToRgb);
}
