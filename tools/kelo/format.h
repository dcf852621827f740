// Formats as the kelo program sees them: the library's table plus a few
// kelo-only 10-bit layouts that Y4M files carry but the library has no code
// for, byte addressing in tiled planes, frame layouts and size limits.
#ifndef KELO_TOOLS_KELO_FORMAT_H_
#define KELO_TOOLS_KELO_FORMAT_H_

#include <cstdint>
#include <string>
#include <vector>

#include "kimgp_img.h"
#include "tools/frame/formats.h"

namespace kelo {
namespace cli {

using frame::Family;
using frame::FormatInfo;

// Codes of the kelo-only formats. Negative so that they can never be taken
// for a library code; they pass through file I/O and nothing else.
enum : int32_t {
  kCsYuv400P16 = -600,  // 10-bit luma in 16-bit words (Y4M Cmono10)
  kCsYuv422P16 = -602,  // 10-bit 4:2:2 planes (Y4M C422p10)
  kCsYuv444P16 = -603,  // 10-bit 4:4:4 planes (Y4M C444p10)
};

// Largest accepted picture dimension and frame size.
constexpr int32_t kMaxDimension = 16384;
constexpr int64_t kMaxFrameBytes = int64_t{512} << 20;

// Library formats first (code order), then the kelo-only ones.
const std::vector<const FormatInfo*>& KnownFormats();
// nullptr when unknown. Accepts the library's names and aliases, the
// kelo-only names and the aliases yuv420p10, yuv422p10, yuv444p10, gray10.
const FormatInfo* LookupFormat(const std::string& name);
const FormatInfo* LookupFormat(int32_t cs);
bool IsKeloOnly(const FormatInfo& f);

// Tile of plane i of a tiled code, in bytes by rows, from the format table.
struct Tile {
  int32_t w = 0, h = 0;
};
bool TileOf(const FormatInfo& f, int plane, Tile* tile);
bool IsTiled(const FormatInfo& f);

// Unit of kimgp_img::width for plane i: "samples", "pairs" or "pixels".
const char* WidthUnit(const FormatInfo& f, int plane);

// Empty when a w x h frame of f is within the limits, else why not.
std::string CheckFrameSize(const FormatInfo& f, int32_t w, int32_t h);

// Descriptor of a w x h frame whose rows are the plane's row bytes plus
// `pad`; tiled codes get whole tiles (stride = tiles per row x tile width,
// buf_height = tile rows x tile height) and take no padding. Pointers null.
void Layout(const FormatInfo& f, int32_t w, int32_t h, int32_t pad,
            kimgp_img* out);

// Bytes plane i takes in a raw file: tight rows, or whole tiles.
int64_t FilePlaneBytes(const FormatInfo& f, int plane, int32_t w, int32_t h);
int64_t FileFrameBytes(const FormatInfo& f, int32_t w, int32_t h);

// Where the channels of an RGB format sit in a pixel: byte offsets for the
// 3- and 4-byte layouts (a = -1 without alpha); for the 16-bit 5-6-5 layouts
// `r565_high` tells whether red (else blue) takes the high five bits of the
// little-endian word.
struct RgbOrder {
  int bytes = 0;
  int r = 0, g = 0, b = 0, a = -1;
  bool is565 = false;
  bool r565_high = false;
};
bool RgbOrderOf(const FormatInfo& f, RgbOrder* order);

// Byte addressing inside a plane, linear or tiled: At(xb, y) is the byte
// xb of row y of the plane as a picture, wherever the layout stores it.
class PlaneAddr {
 public:
  PlaneAddr(const kimgp_img& img, const FormatInfo& f, int plane);
  uint8_t* At(int32_t xb, int32_t y) const {
    if (tile_.w == 0) return base_ + int64_t{y} * stride_ + xb;
    const int64_t tile = int64_t{y / tile_.h} * tiles_per_row_ + xb / tile_.w;
    return base_ + tile * tile_.w * tile_.h + (y % tile_.h) * tile_.w +
           xb % tile_.w;
  }

 private:
  uint8_t* base_;
  int32_t stride_;
  Tile tile_;
  int32_t tiles_per_row_ = 0;
};

}  // namespace cli
}  // namespace kelo

#endif  // KELO_TOOLS_KELO_FORMAT_H_
