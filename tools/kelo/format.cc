#include "tools/kelo/format.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace kelo {
namespace cli {
namespace {

// The kelo-only layouts: 16-bit words holding 10-bit values, like the
// library's yuv420p16.
const FormatInfo kKeloOnly[] = {
    {kCsYuv400P16, "yuv400p16", "10-bit luma only in 16-bit words (kelo only)",
     Family::kYuv16, 1, {0}, {0}, {2}, {0}},
    {kCsYuv422P16, "yuv422p16",
     "10-bit Y, U, V planes in 16-bit words, 4:2:2 (kelo only)",
     Family::kYuv16, 3, {0, 1, 1}, {0, 0, 0}, {2, 2, 2}, {0}},
    {kCsYuv444P16, "yuv444p16",
     "10-bit Y, U, V planes in 16-bit words, 4:4:4 (kelo only)",
     Family::kYuv16, 3, {0, 0, 0}, {0, 0, 0}, {2, 2, 2}, {0}},
};

int64_t RoundUp(int64_t v, int64_t m) { return (v + m - 1) / m * m; }

}  // namespace

const std::vector<const FormatInfo*>& KnownFormats() {
  static const std::vector<const FormatInfo*> all = [] {
    std::vector<const FormatInfo*> v;
    for (const FormatInfo& f : frame::AllFormats()) v.push_back(&f);
    for (const FormatInfo& f : kKeloOnly) v.push_back(&f);
    return v;
  }();
  return all;
}

const FormatInfo* LookupFormat(const std::string& name) {
  if (const FormatInfo* f = frame::FindFormat(name)) return f;
  std::string n(name);
  std::transform(n.begin(), n.end(), n.begin(),
                 [](unsigned char c) { return std::tolower(c); });
  static const struct {
    const char* alias;
    const char* name;
  } kAliases[] = {{"yuv420p10", "yuv420p16"},
                  {"yuv422p10", "yuv422p16"},
                  {"yuv444p10", "yuv444p16"},
                  {"gray10", "yuv400p16"},
                  {"yuv400p10", "yuv400p16"}};
  for (const auto& a : kAliases) {
    if (n == a.alias) n = a.name;
  }
  if (n == "yuv420p16") return frame::FindFormat(KIMGP_CS_YUV420PLANAR16);
  for (const FormatInfo& f : kKeloOnly) {
    if (n == f.name) return &f;
  }
  return nullptr;
}

const FormatInfo* LookupFormat(int32_t cs) {
  if (const FormatInfo* f = frame::FindFormat(cs)) return f;
  for (const FormatInfo& f : kKeloOnly) {
    if (f.cs == cs) return &f;
  }
  return nullptr;
}

bool IsKeloOnly(const FormatInfo& f) { return f.cs < 0; }

bool TileOf(const FormatInfo& f, int plane, Tile* tile) {
  if (f.tile_w == 0 || plane > 1) return false;
  tile->w = f.tile_w;
  tile->h = f.tile_h[plane];
  return true;
}

bool IsTiled(const FormatInfo& f) { return f.family == Family::kTiled; }

const char* WidthUnit(const FormatInfo& f, int plane) {
  if (f.pair[plane]) return "pairs";
  if (f.family == Family::kRgb || f.family == Family::kPackedYuv) {
    return "pixels";
  }
  return "samples";
}

std::string CheckFrameSize(const FormatInfo& f, int32_t w, int32_t h) {
  if (w < 1 || h < 1 || w > kMaxDimension || h > kMaxDimension) {
    return "size " + std::to_string(w) + "x" + std::to_string(h) +
           " is out of range (each side 1 to " +
           std::to_string(kMaxDimension) + ")";
  }
  const int64_t bytes = FileFrameBytes(f, w, h);
  if (bytes > kMaxFrameBytes) {
    return "a " + std::to_string(w) + "x" + std::to_string(h) + " " + f.name +
           " frame takes " + std::to_string(bytes) + " bytes, more than the " +
           std::to_string(kMaxFrameBytes >> 20) + " MiB limit";
  }
  return "";
}

void Layout(const FormatInfo& f, int32_t w, int32_t h, int32_t pad,
            kimgp_img* out) {
  if (!IsKeloOnly(f)) {
    frame::Describe(f.cs, w, h, 1, pad, out);  // whole tiles for tiled codes
    return;
  }
  std::memset(out, 0, sizeof(*out));
  out->cs = f.cs;
  for (int i = 0; i < f.planes; ++i) {
    const frame::PlaneGeometry g = frame::PlaneOf(f, i, w, h);
    out->width[i] = g.width;
    out->height[i] = g.height;
    out->stride[i] = g.row_bytes + pad;
    out->buf_height[i] = g.height;
  }
}

int64_t FilePlaneBytes(const FormatInfo& f, int plane, int32_t w, int32_t h) {
  const frame::PlaneGeometry g = frame::PlaneOf(f, plane, w, h);
  Tile t;
  if (TileOf(f, plane, &t)) {
    return RoundUp(g.row_bytes, t.w) * RoundUp(g.height, t.h);
  }
  return int64_t{g.row_bytes} * g.height;
}

int64_t FileFrameBytes(const FormatInfo& f, int32_t w, int32_t h) {
  int64_t total = 0;
  for (int i = 0; i < f.planes; ++i) total += FilePlaneBytes(f, i, w, h);
  return total;
}

bool RgbOrderOf(const FormatInfo& f, RgbOrder* o) {
  *o = RgbOrder();
  switch (f.cs) {
    case KIMGP_CS_RGB565:
    case KIMGP_CS_BGR565:
      o->bytes = 2;
      o->is565 = true;
      o->r565_high = f.cs == KIMGP_CS_RGB565;
      return true;
    case KIMGP_CS_RGB888: *o = {3, 0, 1, 2, -1, false, false}; return true;
    case KIMGP_CS_BGR888: *o = {3, 2, 1, 0, -1, false, false}; return true;
    case KIMGP_CS_RGBA8888: *o = {4, 0, 1, 2, 3, false, false}; return true;
    case KIMGP_CS_BGRA8888: *o = {4, 2, 1, 0, 3, false, false}; return true;
    case KIMGP_CS_ARGB8888: *o = {4, 1, 2, 3, 0, false, false}; return true;
    case KIMGP_CS_ABGR8888: *o = {4, 3, 2, 1, 0, false, false}; return true;
    default: return false;
  }
}

PlaneAddr::PlaneAddr(const kimgp_img& img, const FormatInfo& f, int plane)
    : base_(img.plane[plane]), stride_(img.stride[plane]) {
  if (TileOf(f, plane, &tile_)) tiles_per_row_ = stride_ / tile_.w;
}

}  // namespace cli
}  // namespace kelo
