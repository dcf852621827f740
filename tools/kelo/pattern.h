// The built-in test pattern, drawn natively in every layout:
//
//   rows [0, bars_end)          seven 75% colour bars: white, yellow, cyan,
//                               green, magenta, red, blue
//   rows [bars_end, strip_end)  the lower strip under them: blue, black,
//                               magenta, black, cyan, black, white (75%)
//   rows [strip_end, h)         a circular zone plate on luma (chroma 128,
//                               gray in RGB) whose frequency rises with the
//                               radius to the Nyquist limit at w/2 from its
//                               centre; its phase moves with the frame index
//
// Bar b covers columns [b * w / 7, (b + 1) * w / 7). YUV values are BT.601
// limited range; 16-bit YUV layouts hold 10-bit values (the 8-bit values
// times 4 on the bars), p010le with them in the top 10 bits (value << 6).
// RGB bars use 191 for 75%; alpha is 255. A subsampled chroma sample takes
// the value of the pixel at its top-left luma position.
#ifndef KELO_TOOLS_KELO_PATTERN_H_
#define KELO_TOOLS_KELO_PATTERN_H_

#include <cstdint>

#include "kimgp_img.h"

namespace kelo {
namespace cli {
namespace pattern {

struct Yuv {
  uint8_t y, u, v;
};
struct Rgb {
  uint8_t r, g, b;
};

constexpr int kBars = 7;
extern const Yuv kBarYuv[kBars];
extern const Rgb kBarRgb[kBars];
extern const Yuv kStripYuv[kBars];
extern const Rgb kStripRgb[kBars];

struct Regions {
  int32_t bars_end;   // first row below the bars
  int32_t strip_end;  // first row of the zone plate
};
Regions RegionsFor(int32_t h);

inline int BarAt(int32_t x, int32_t w) {
  return static_cast<int>(int64_t{x} * kBars / w);
}

// Draws frame `index` of the pattern into img, whose code, plane sizes
// (width[0] x height[0] is the picture), strides and pointers must describe
// a frame laid out as Layout() does. Returns false for a code kelo does not
// know.
bool Draw(kimgp_img* img, int index = 0);

}  // namespace pattern
}  // namespace cli
}  // namespace kelo

#endif  // KELO_TOOLS_KELO_PATTERN_H_
