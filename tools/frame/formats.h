// Plane geometry of every colour-space code: which planes a format uses, how
// wide and tall each is for a given picture size, and how many bytes a row
// takes. Shared by the kelo program and the tests.
#ifndef KELO_TOOLS_FRAME_FORMATS_H_
#define KELO_TOOLS_FRAME_FORMATS_H_

#include <cstdint>
#include <string>
#include <vector>

#include "kimgp_img.h"

namespace kelo {
namespace frame {

enum class Family { kYuv, kPackedYuv, kRgb, kYuv16, kTiled };

struct FormatInfo {
  int32_t cs;
  const char* name;      // lower-case name used on the command line
  const char* summary;   // one line for help and info
  Family family;
  int planes;            // planes the layout uses
  int x_shift[3];        // chroma subsampling: plane width = ceil(w >> s)
  int y_shift[3];
  int unit_bytes[3];     // bytes per unit of `width[i]` (sample, pair, pixel)
  int pair[3];           // 1 where width[i] counts interleaved pairs
  int tile_w = 0;        // tiled layouts: tile width in bytes, and the tile
  int tile_h[2] = {0, 0};  // height of planes 0 and 1 (0: linear)
};

// Every code of the table, in code order.
const std::vector<FormatInfo>& AllFormats();
// nullptr when unknown. Names are matched without regard to case; a few
// common aliases (i420, gray, argb, ...) are accepted.
const FormatInfo* FindFormat(int32_t cs);
const FormatInfo* FindFormat(const std::string& name);

struct PlaneGeometry {
  int32_t width;      // in the units of kimgp_img::width
  int32_t height;     // rows
  int32_t row_bytes;  // bytes that a row of the plane occupies
};

// Geometry of plane i (0 <= i < planes) for a w x h picture.
PlaneGeometry PlaneOf(const FormatInfo& f, int i, int32_t w, int32_t h);

// A descriptor for a w x h picture of code cs whose rows are row_bytes
// rounded up to `align` plus `pad` bytes, with buf_height = height; plane
// pointers are left null. Tiled layouts round strides up to whole tiles and
// buffer heights up to the tile height. Returns false for an unknown code.
bool Describe(int32_t cs, int32_t w, int32_t h, int32_t align, int32_t pad,
              kimgp_img* out);

// Bytes of the buffer of plane i of a described image: stride * buf_height.
int64_t PlaneBytes(const kimgp_img& img, int i);

}  // namespace frame
}  // namespace kelo

#endif  // KELO_TOOLS_FRAME_FORMATS_H_
