// Fixed-point colour arithmetic of the conversions: one struct per matrix,
// used by the scalar definitions and (through the same constants) by the
// vector paths.
#ifndef KELO_IMGP_CSC_CSC_ARITH_H_
#define KELO_IMGP_CSC_CSC_ARITH_H_

#include <cstdint>

namespace kelo {
namespace csc {

inline int Clamp255(int x) { return x < 0 ? 0 : (x > 255 ? 255 : x); }

// YUV to RGB with 8 fractional bits and one rounding term:
//   C = Y - kYOffset, D = U - 128, E = V - 128
//   R = (kCy C + kRv E + 128) >> 8
//   G = (kCy C + kGu D + kGv E + 128) >> 8
//   B = (kCy C + kBu D + 128) >> 8, each clamped to 0..255.
struct Bt601Limited {
  static constexpr int kYOffset = 16, kCy = 298, kRv = 409, kGu = -100,
                       kGv = -208, kBu = 516;
};
// BT.709 limited range in the same form.
struct Bt709Limited {
  static constexpr int kYOffset = 16, kCy = 298, kRv = 459, kGu = -55,
                       kGv = -136, kBu = 541;
};

template <class M>
inline void ScaledYuvToRgb(int y, int u, int v, int* r, int* g, int* b) {
  const int c = y - M::kYOffset, d = u - 128, e = v - 128;
  const int l = M::kCy * c + 128;
  *r = Clamp255((l + M::kRv * e) >> 8);
  *g = Clamp255((l + M::kGu * d + M::kGv * e) >> 8);
  *b = Clamp255((l + M::kBu * d) >> 8);
}

// Full-range YUV to RGB with 7 fractional bits, each product shifted on its
// own and no luma scaling:
//   R = Y + ((kRv E) >> 7), G = Y + ((kGu D) >> 7) + ((kGv E) >> 7),
//   B = Y + ((kBu D) >> 7), clamped.
struct Bt601Full {
  static constexpr int kRv = 179, kGu = -44, kGv = -91, kBu = 227;
};
struct Bt709Full {
  static constexpr int kRv = 202, kGu = -24, kGv = -60, kBu = 238;
};

template <class M>
inline void FullYuvToRgb(int y, int u, int v, int* r, int* g, int* b) {
  const int d = u - 128, e = v - 128;
  *r = Clamp255(y + ((M::kRv * e) >> 7));
  *g = Clamp255(y + ((M::kGu * d) >> 7) + ((M::kGv * e) >> 7));
  *b = Clamp255(y + ((M::kBu * d) >> 7));
}

// RGB to YUV: luma truncated, chroma with a rounding term.
//   Y = ((kYr R + kYg G + kYb B) >> 8) + kYOffset
//   U = ((kUr R + kUg G + kUb B + 128) >> 8) + 128
//   V = ((kVr R + kVg G + kVb B + 128) >> 8) + 128
struct RgbBt601Limited {
  static constexpr int kYr = 66, kYg = 129, kYb = 25, kYOffset = 16;
  static constexpr int kUr = -38, kUg = -74, kUb = 112;
  static constexpr int kVr = 112, kVg = -94, kVb = -18;
};
struct RgbBt601Full {
  static constexpr int kYr = 77, kYg = 150, kYb = 29, kYOffset = 0;
  static constexpr int kUr = -43, kUg = -84, kUb = 127;
  static constexpr int kVr = 127, kVg = -106, kVb = -21;
};
// The luma blue weight is 25 (as in BT.601), so white gives Y = 244.
struct RgbBt709Limited {
  static constexpr int kYr = 47, kYg = 157, kYb = 25, kYOffset = 16;
  static constexpr int kUr = -26, kUg = -86, kUb = 112;
  static constexpr int kVr = 112, kVg = -102, kVb = -10;
};

template <class M>
inline uint8_t RgbToY(int r, int g, int b) {
  return static_cast<uint8_t>(((M::kYr * r + M::kYg * g + M::kYb * b) >> 8) +
                              M::kYOffset);
}
template <class M>
inline uint8_t RgbToU(int r, int g, int b) {
  return static_cast<uint8_t>(
      ((M::kUr * r + M::kUg * g + M::kUb * b + 128) >> 8) + 128);
}
template <class M>
inline uint8_t RgbToV(int r, int g, int b) {
  return static_cast<uint8_t>(
      ((M::kVr * r + M::kVg * g + M::kVb * b + 128) >> 8) + 128);
}

// Splits a coefficient k into 256 q + res with |res| <= 128, so that
// (sum k_i x_i + 128) >> 8 == sum q_i x_i + ((sum res_i x_i + 128) >> 8)
// exactly, and the inner sum fits 16-bit lanes.
constexpr int SplitQ(int k) { return (k + 128) >= 0 ? (k + 128) / 256 : -((-(k + 128) + 255) / 256); }
constexpr int SplitRes(int k) { return k - 256 * SplitQ(k); }

// Largest |inner sum| of a scaled matrix over all 8-bit inputs, for the
// static checks of the 16-bit vector paths.
template <class M>
constexpr int ScaledInnerBound() {
  const int cmax = 255 - M::kYOffset > M::kYOffset ? 255 - M::kYOffset : M::kYOffset;
  auto a = [](int x) { return x < 0 ? -x : x; };
  const int rc = a(SplitRes(M::kCy)) * cmax + 128;
  const int r = rc + a(SplitRes(M::kRv)) * 128;
  const int g = rc + a(SplitRes(M::kGu)) * 128 + a(SplitRes(M::kGv)) * 128;
  const int b = rc + a(SplitRes(M::kBu)) * 128;
  return r > g ? (r > b ? r : b) : (g > b ? g : b);
}
static_assert(ScaledInnerBound<Bt601Limited>() <= 32767, "16-bit split");
static_assert(ScaledInnerBound<Bt709Limited>() <= 32767, "16-bit split");

}  // namespace csc
}  // namespace kelo

#endif  // KELO_IMGP_CSC_CSC_ARITH_H_
