// Layout traits of the conversions: where a YUV source keeps its samples and
// how an RGB pixel sits in memory. The scalar definitions and the vector paths
// are both written against these.
#ifndef KELO_IMGP_CSC_PIXEL_LAYOUTS_H_
#define KELO_IMGP_CSC_PIXEL_LAYOUTS_H_

#include <cstdint>

// The parameters of the six-argument kernels (kimgp_csc_kernel), as the
// conversion sources name them.
#define KELO_CSC_PARAMS                                                         \
  uint8_t **sp, const int32_t *sw, const int32_t *sh, int32_t *ss,             \
      const int32_t *ds, uint8_t **dp

namespace kelo {
namespace csc {

// Half of n samples or rows, rounded up: the chroma extent of n pixels or
// rows of a 4:2:0 frame, and the rows a vertical halving keeps ((n + 1) / 2
// without overflow; below 1 when n is).
inline int32_t HalfUp(int32_t n) { return n - n / 2; }

// Pointers to one row of a YUV source: luma and the two chroma streams.
// For interleaved and packed layouts u and v point at the first U and V byte
// of the row and step by Src::kCStep per chroma sample.
struct YuvRow {
  const uint8_t* y;
  const uint8_t* u;
  const uint8_t* v;
};

enum class YuvFamily { kPlanar, kSemi, kPacked };

// kYStep/kYOff: luma of pixel x at y[kYStep x + kYOff]... expressed through
// the row pointers; kCStep: bytes between chroma samples; kPairs: one chroma
// sample per horizontal pixel pair; kVertHalf: one chroma row per two rows.
template <YuvFamily F, int kYStepT, int kCStepT, bool kPairsT, bool kVertHalfT>
struct YuvLayout {
  static constexpr YuvFamily kFamily = F;
  static constexpr int kYStep = kYStepT;
  static constexpr int kCStep = kCStepT;
  static constexpr bool kPairs = kPairsT;
  static constexpr bool kVertHalf = kVertHalfT;

  static void Pixel(const YuvRow& r, int x, int* y, int* u, int* v) {
    const int c = (kPairs ? x >> 1 : x) * kCStep;
    *y = r.y[x * kYStep];
    *u = r.u[c];
    *v = r.v[c];
  }
};

// Planar: Y, U, V planes (YV12 is served by exchanging planes first).
struct I420 : YuvLayout<YuvFamily::kPlanar, 1, 1, true, true> {
  static YuvRow Row(uint8_t* const* p, const int32_t* s, int row, int crow) {
    return {p[0] + row * s[0], p[1] + crow * s[1], p[2] + crow * s[2]};
  }
};
struct I422 : YuvLayout<YuvFamily::kPlanar, 1, 1, true, false> {
  static YuvRow Row(uint8_t* const* p, const int32_t* s, int row, int) {
    return {p[0] + row * s[0], p[1] + row * s[1], p[2] + row * s[2]};
  }
};
struct I444 : YuvLayout<YuvFamily::kPlanar, 1, 1, false, false> {
  static YuvRow Row(uint8_t* const* p, const int32_t* s, int row, int) {
    return {p[0] + row * s[0], p[1] + row * s[1], p[2] + row * s[2]};
  }
};
// Two planes: luma, then interleaved chroma pairs (U first for NV12).
template <bool kUFirst>
struct Nv : YuvLayout<YuvFamily::kSemi, 1, 2, true, true> {
  static constexpr bool kUFirstV = kUFirst;
  static YuvRow Row(uint8_t* const* p, const int32_t* s, int row, int crow) {
    const uint8_t* c = p[1] + crow * s[1];
    return {p[0] + row * s[0], kUFirst ? c : c + 1, kUFirst ? c + 1 : c};
  }
};
using Nv12 = Nv<true>;
using Nv21 = Nv<false>;
// Packed 4:2:2, four bytes per pixel pair: U Y0 V Y1 or Y0 U Y1 V.
template <bool kUyvy>
struct Packed422 : YuvLayout<YuvFamily::kPacked, 2, 4, true, false> {
  static constexpr bool kUyvyV = kUyvy;
  static YuvRow Row(uint8_t* const* p, const int32_t* s, int row, int) {
    const uint8_t* r = p[0] + row * s[0];
    return kUyvy ? YuvRow{r + 1, r, r + 2} : YuvRow{r, r + 1, r + 3};
  }
};
using Uyvy = Packed422<true>;
using Yuyv = Packed422<false>;

// RGB pixel orders. Store writes one pixel from clamped 8-bit channels;
// Load reads one back as 8-bit channels (5-6-5 fields with zero low bits).
template <int kR, int kG, int kB, int kA>
struct Rgb8 {
  static constexpr int kBytes = kA < 0 ? 3 : 4;
  static constexpr int kRi = kR, kGi = kG, kBi = kB, kAi = kA;
  static void Store(uint8_t* p, int r, int g, int b) {
    p[kR] = static_cast<uint8_t>(r);
    p[kG] = static_cast<uint8_t>(g);
    p[kB] = static_cast<uint8_t>(b);
    if (kA >= 0) p[kA < 0 ? 0 : kA] = 255;
  }
  static void Load(const uint8_t* p, int* r, int* g, int* b) {
    *r = p[kR];
    *g = p[kG];
    *b = p[kB];
  }
};
using Rgb888 = Rgb8<0, 1, 2, -1>;
using Bgr888 = Rgb8<2, 1, 0, -1>;
using Rgba8888 = Rgb8<0, 1, 2, 3>;
using Bgra8888 = Rgb8<2, 1, 0, 3>;
using Argb8888 = Rgb8<1, 2, 3, 0>;
using Abgr8888 = Rgb8<3, 2, 1, 0>;

// 16-bit little-endian words; kRedHigh: red in bits 15-11 (RGB565).
template <bool kRedHigh>
struct Rgb16 {
  static constexpr int kBytes = 2;
  static constexpr bool kRedHighV = kRedHigh;
  static void Store(uint8_t* p, int r, int g, int b) {
    const int hi = kRedHigh ? r : b, lo = kRedHigh ? b : r;
    const int w = ((hi >> 3) << 11) | ((g >> 2) << 5) | (lo >> 3);
    p[0] = static_cast<uint8_t>(w);
    p[1] = static_cast<uint8_t>(w >> 8);
  }
  static void Load(const uint8_t* p, int* r, int* g, int* b) {
    const int w = p[0] | (p[1] << 8);
    const int hi = (w & 0xF800) >> 8, lo = (w & 0x1F) << 3;
    *g = (w & 0x7E0) >> 3;
    *r = kRedHigh ? hi : lo;
    *b = kRedHigh ? lo : hi;
  }
};
using Rgb565 = Rgb16<true>;
using Bgr565 = Rgb16<false>;

}  // namespace csc
}  // namespace kelo

#endif  // KELO_IMGP_CSC_PIXEL_LAYOUTS_H_
