#include "tools/frame/formats.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace kelo {
namespace frame {
namespace {

std::vector<FormatInfo> MakeTable() {
  using F = Family;
  // cs, name, summary, family, planes, x_shift, y_shift, unit_bytes, pair
  return {
      {0, "yuv400", "8-bit luma only", F::kYuv, 1, {0}, {0}, {1}, {0}},
      {1, "yuv420", "8-bit Y, U, V planes, 4:2:0", F::kYuv, 3, {0, 1, 1},
       {0, 1, 1}, {1, 1, 1}, {0}},
      {2, "yuv422n", "8-bit Y, U, V planes, 4:2:2", F::kYuv, 3, {0, 1, 1},
       {0, 0, 0}, {1, 1, 1}, {0}},
      {3, "yuv444", "8-bit Y, U, V planes, 4:4:4", F::kYuv, 3, {0, 0, 0},
       {0, 0, 0}, {1, 1, 1}, {0}},
      {4, "yv12", "8-bit Y, V, U planes, 4:2:0", F::kYuv, 3, {0, 1, 1},
       {0, 1, 1}, {1, 1, 1}, {0}},
      {5, "yv16", "8-bit Y, V, U planes, 4:2:2", F::kYuv, 3, {0, 1, 1},
       {0, 0, 0}, {1, 1, 1}, {0}},
      {6, "nv12", "8-bit Y plane, interleaved U,V plane, 4:2:0", F::kYuv, 2,
       {0, 1}, {0, 1}, {1, 2}, {0, 1}},
      {7, "nv21", "8-bit Y plane, interleaved V,U plane, 4:2:0", F::kYuv, 2,
       {0, 1}, {0, 1}, {1, 2}, {0, 1}},
      {8, "yuv422w", "8-bit Y, U, V planes, 4:2:2 (RGB565 converters only)",
       F::kYuv, 3, {0, 1, 1}, {0, 0, 0}, {1, 1, 1}, {0}},
      {11, "t64x32", "NV12 samples in 64x32 tiles", F::kTiled, 2, {0, 1},
       {0, 1}, {1, 2}, {0, 1}, 64, {32, 32}},
      {12, "t16x16", "NV12 samples in 16x16 tiles", F::kTiled, 2, {0, 1},
       {0, 1}, {1, 2}, {0, 1}, 16, {16, 8}},
      {13, "t8x8", "NV12 samples in 8x8 tiles", F::kTiled, 2, {0, 1}, {0, 1},
       {1, 2}, {0, 1}, 8, {8, 4}},
      {14, "t256x16", "NV12 samples in 256x16 tiles", F::kTiled, 2, {0, 1},
       {0, 1}, {1, 2}, {0, 1}, 256, {16, 8}},
      {100, "uyvy", "packed U0 Y0 V0 Y1", F::kPackedYuv, 1, {0}, {0}, {2},
       {0}},
      {101, "yuyv", "packed Y0 U0 Y1 V0", F::kPackedYuv, 1, {0}, {0}, {2},
       {0}},
      {200, "rgb565", "16-bit 5-6-5 pixels, red in the high bits", F::kRgb, 1,
       {0}, {0}, {2}, {0}},
      {201, "bgr565", "16-bit 5-6-5 pixels, blue in the high bits", F::kRgb,
       1, {0}, {0}, {2}, {0}},
      {400, "rgb888", "bytes R, G, B", F::kRgb, 1, {0}, {0}, {3}, {0}},
      {401, "bgr888", "bytes B, G, R", F::kRgb, 1, {0}, {0}, {3}, {0}},
      {500, "rgba8888", "bytes R, G, B, A", F::kRgb, 1, {0}, {0}, {4}, {0}},
      {501, "bgra8888", "bytes B, G, R, A", F::kRgb, 1, {0}, {0}, {4}, {0}},
      {502, "argb8888", "bytes A, R, G, B", F::kRgb, 1, {0}, {0}, {4}, {0}},
      {503, "abgr8888", "bytes A, B, G, R", F::kRgb, 1, {0}, {0}, {4}, {0}},
      {600, "yuv420p16", "16-bit Y, U, V planes, 4:2:0", F::kYuv16, 3,
       {0, 1, 1}, {0, 1, 1}, {2, 2, 2}, {0}},
      {601, "p010le", "16-bit Y plane, interleaved U,V plane, 4:2:0",
       F::kYuv16, 2, {0, 1}, {0, 1}, {2, 4}, {0, 1}},
  };
}

std::string Lower(const std::string& s) {
  std::string out(s);
  std::transform(out.begin(), out.end(), out.begin(),
                 [](unsigned char c) { return std::tolower(c); });
  return out;
}

}  // namespace

const std::vector<FormatInfo>& AllFormats() {
  static const std::vector<FormatInfo> table = MakeTable();
  return table;
}

const FormatInfo* FindFormat(int32_t cs) {
  for (const FormatInfo& f : AllFormats()) {
    if (f.cs == cs) return &f;
  }
  return nullptr;
}

const FormatInfo* FindFormat(const std::string& name) {
  static const struct {
    const char* alias;
    const char* name;
  } kAliases[] = {{"i420", "yuv420"}, {"gray", "yuv400"}, {"y8", "yuv400"},
                  {"i422", "yuv422n"}, {"i444", "yuv444"}, {"yuy2", "yuyv"},
                  {"p010", "p010le"},  {"rgb24", "rgb888"}, {"rgba", "rgba8888"},
                  {"bgra", "bgra8888"}, {"argb", "argb8888"},
                  {"abgr", "abgr8888"}};
  std::string n = Lower(name);
  for (const auto& a : kAliases) {
    if (n == a.alias) n = a.name;
  }
  for (const FormatInfo& f : AllFormats()) {
    if (n == f.name) return &f;
  }
  return nullptr;
}

PlaneGeometry PlaneOf(const FormatInfo& f, int i, int32_t w, int32_t h) {
  const int xs = f.x_shift[i], ys = f.y_shift[i];
  PlaneGeometry g;
  g.width = static_cast<int32_t>((int64_t{w} + (1 << xs) - 1) >> xs);
  g.height = static_cast<int32_t>((int64_t{h} + (1 << ys) - 1) >> ys);
  g.row_bytes = g.width * f.unit_bytes[i];
  return g;
}

bool Describe(int32_t cs, int32_t w, int32_t h, int32_t align, int32_t pad,
              kimgp_img* out) {
  const FormatInfo* f = FindFormat(cs);
  if (f == nullptr) return false;
  std::memset(out, 0, sizeof(*out));
  out->cs = cs;
  if (align < 1) align = 1;
  for (int i = 0; i < f->planes; ++i) {
    const PlaneGeometry g = PlaneOf(*f, i, w, h);
    out->width[i] = g.width;
    out->height[i] = g.height;
    out->stride[i] = (g.row_bytes + align - 1) / align * align + pad;
    out->buf_height[i] = g.height;
    if (f->tile_w > 0) {
      const int th = f->tile_h[i];
      out->stride[i] = (g.row_bytes + f->tile_w - 1) / f->tile_w * f->tile_w;
      out->buf_height[i] = (g.height + th - 1) / th * th;
    }
  }
  return true;
}

int64_t PlaneBytes(const kimgp_img& img, int i) {
  return int64_t{img.stride[i]} * img.buf_height[i];
}

}  // namespace frame
}  // namespace kelo
