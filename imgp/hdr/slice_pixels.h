// Per-pixel definition of the HDR slice conversion: gather, decode,
// linearise, primaries matrix, gain, encode, and the writes by destination
// kind. The vector path does the bulk of a row and hands the rest here.
#ifndef KELO_IMGP_HDR_SLICE_PIXELS_H_
#define KELO_IMGP_HDR_SLICE_PIXELS_H_

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kimgp_hdr.h"

namespace kelo {
namespace hdr {

// Source kinds: the two 10-bit layouts; anything else decodes from zeroed
// samples.
enum class SrcKind { kPlanar16, kP010, kOther };

// Destination kinds of one row.
enum class DstKind { kRgb888, kRgba, kArgb, kYuv420, kNv12, kNv21, kLumaOnly, kUnsupported };

// Primaries matrix (1/256), luma weights and chroma weights (1/4096) of a
// variant.
struct VariantCoeffs {
  int32_t m[3][3];
  int32_t wy[3];
  int32_t wu[3];
  int32_t wv[3];
};

inline const VariantCoeffs& Coeffs(int32_t variant) {
  static constexpr VariantCoeffs kCoeffs[2] = {
      {{{425, -150, -19}, {-32, 290, -2}, {-5, -26, 287}},
       {871, 2929, 296},
       {-480, -1615, 2095},
       {2095, -1903, -192}},
      {{{344, -72, -16}, {-17, 276, -3}, {1, -5, 261}},
       {859, 2955, 283},
       {-461, -1587, 2048},
       {2048, -1869, -179}}};
  return kCoeffs[variant == 1 ? 1 : 0];
}

// Everything a row of the conversion reads and writes. Row pointers are
// already at the row; chroma destinations are null on rows without chroma.
struct RowJob {
  SrcKind src;
  const uint8_t* y;   // luma row
  const uint8_t* c0;  // P010: interleaved U,V row; planar: U row
  const uint8_t* c1;  // planar: V row
  int32_t width;
  DstKind dst;
  uint8_t* d0;  // luma or packed RGB row
  uint8_t* du;  // U samples (YUV420/YV12) or the chroma pair row (NV12/NV21)
  uint8_t* dv;  // V samples (YUV420/YV12)
  const uint16_t* lin;  // transfer table
  const uint16_t* gain;
  const uint8_t* out;
  bool hlg;
  int32_t variant;
};

namespace scalar {

inline int32_t Load16(const uint8_t* p, int32_t i) {
  uint16_t v;
  std::memcpy(&v, p + 2 * static_cast<ptrdiff_t>(i), 2);
  return v;
}

inline int32_t Clamp(int32_t v, int32_t lo, int32_t hi) {
  return v < lo ? lo : (v > hi ? hi : v);
}

// Y, U, V codes of pixel x.
inline void Gather(const RowJob& j, int32_t x, int32_t* y, int32_t* u, int32_t* v) {
  switch (j.src) {
    case SrcKind::kPlanar16:
      *y = Clamp(Load16(j.y, x), 0, 1023);
      *u = Clamp(Load16(j.c0, x / 2), 0, 1023);
      *v = Clamp(Load16(j.c1, x / 2), 0, 1023);
      return;
    case SrcKind::kP010:
      *y = Load16(j.y, x) >> 6;
      *u = Load16(j.c0, 2 * (x / 2)) >> 6;
      *v = Load16(j.c0, 2 * (x / 2) + 1) >> 6;
      return;
    case SrcKind::kOther:
      break;
  }
  *y = *u = *v = 0;
}

// 10-bit codes to 8-bit limited-range R, G, B.
inline void PixelToRgb8(const RowJob& j, int32_t y, int32_t u, int32_t v, int32_t rgb[3]) {
  const int32_t yl = LUT_Y10[y];
  int32_t c[3] = {Clamp(yl + LUT_R_CR10[v], 0, 1023),
                  Clamp(yl + LUT_G_CB10[u] + LUT_G_CR10[v], 0, 1023),
                  Clamp(yl + LUT_B_CB10[u], 0, 1023)};
  for (int i = 0; i < 3; ++i) c[i] = j.lin[c[i]];
  const VariantCoeffs& k = Coeffs(j.variant);
  int32_t p[3];
  for (int i = 0; i < 3; ++i) {
    const int32_t sum = k.m[i][0] * c[0] + k.m[i][1] * c[1] + k.m[i][2] * c[2];
    p[i] = sum < 0 ? 0 : Clamp(sum >> 8, 0, 32767);
  }
  int32_t t[3];
  if (j.hlg) {
    for (int i = 0; i < 3; ++i) t[i] = p[i] >= 32767 ? 4095 : p[i] >> 3;
  } else {
    int32_t m = p[0] > p[1] ? p[0] : p[1];
    m = m > p[2] ? m : p[2];
    const int32_t gi = m >> 7, f = (m >> 3) & 15;
    const int32_t gain = ((16 - f) * j.gain[gi] + f * j.gain[gi + 1]) >> 4;
    for (int i = 0; i < 3; ++i) {
      const int32_t prod = p[i] * gain;
      t[i] = prod >= 0x7FFF00 ? 4095 : prod >> 11;
    }
  }
  for (int i = 0; i < 3; ++i) rgb[i] = j.out[t[i]];
}

inline uint8_t LumaOf(const VariantCoeffs& k, const int32_t rgb[3]) {
  const int32_t yo = k.wy[0] * rgb[0] + k.wy[1] * rgb[1] + k.wy[2] * rgb[2];
  return static_cast<uint8_t>(yo >= 0xFF000 ? 255 : yo >> 12);
}

inline uint8_t ChromaOf(const int32_t w[3], const int32_t rgb[3]) {
  return static_cast<uint8_t>(
      Clamp(128 + ((w[0] * rgb[0] + w[1] * rgb[1] + w[2] * rgb[2]) >> 12), 0, 255));
}

// Converts and writes pixels x0 .. width-1 of a row (x0 even).
inline void ConvertPixels(const RowJob& j, int32_t x0) {
  const VariantCoeffs& k = Coeffs(j.variant);
  for (int32_t x = x0; x < j.width; ++x) {
    int32_t y, u, v, rgb[3];
    Gather(j, x, &y, &u, &v);
    PixelToRgb8(j, y, u, v, rgb);
    uint8_t* d = j.d0;
    switch (j.dst) {
      case DstKind::kRgb888:
        d += 3 * static_cast<ptrdiff_t>(x);
        d[0] = static_cast<uint8_t>(rgb[0]);
        d[1] = static_cast<uint8_t>(rgb[1]);
        d[2] = static_cast<uint8_t>(rgb[2]);
        break;
      case DstKind::kRgba:
      case DstKind::kArgb: {
        d += 4 * static_cast<ptrdiff_t>(x);
        const int a = j.dst == DstKind::kArgb ? 1 : 0;
        d[a] = static_cast<uint8_t>(rgb[0]);
        d[a + 1] = static_cast<uint8_t>(rgb[1]);
        d[a + 2] = static_cast<uint8_t>(rgb[2]);
        d[a == 1 ? 0 : 3] = 255;
        break;
      }
      case DstKind::kUnsupported:
        break;
      default:
        d[x] = LumaOf(k, rgb);
        if (j.du != nullptr && (x & 1) == 0) {
          const uint8_t cu = ChromaOf(k.wu, rgb), cv = ChromaOf(k.wv, rgb);
          if (j.dst == DstKind::kYuv420) {
            j.du[x / 2] = cu;
            j.dv[x / 2] = cv;
          } else if (j.dst == DstKind::kNv12) {
            j.du[x] = cu;
            j.du[x + 1] = cv;
          } else if (j.dst == DstKind::kNv21) {
            j.du[x] = cv;
            j.du[x + 1] = cu;
          }
        }
        break;
    }
  }
}

}  // namespace scalar
}  // namespace hdr
}  // namespace kelo

#endif  // KELO_IMGP_HDR_SLICE_PIXELS_H_
