#include "tools/kelo/pattern.h"

#include <cmath>
#include <utility>

#include "tools/kelo/format.h"

namespace kelo {
namespace cli {
namespace pattern {

// 75% bars, BT.601 limited range.
const Yuv kBarYuv[kBars] = {{180, 128, 128}, {162, 44, 142}, {131, 156, 44},
                            {112, 72, 58},   {84, 184, 198}, {65, 100, 212},
                            {35, 212, 114}};
const Rgb kBarRgb[kBars] = {{191, 191, 191}, {191, 191, 0}, {0, 191, 191},
                            {0, 191, 0},     {191, 0, 191}, {191, 0, 0},
                            {0, 0, 191}};
const Yuv kStripYuv[kBars] = {{35, 212, 114}, {16, 128, 128}, {84, 184, 198},
                              {16, 128, 128}, {131, 156, 44}, {16, 128, 128},
                              {180, 128, 128}};
const Rgb kStripRgb[kBars] = {{0, 0, 191}, {0, 0, 0},   {191, 0, 191},
                              {0, 0, 0},   {0, 191, 191}, {0, 0, 0},
                              {191, 191, 191}};

Regions RegionsFor(int32_t h) {
  // Rounded up so that even tiny pictures show bars.
  return {static_cast<int32_t>((int64_t{h} * 2 + 2) / 3),
          static_cast<int32_t>((int64_t{h} * 3 + 3) / 4)};
}

namespace {

constexpr double kPi = 3.14159265358979323846;

// Everything about the picture that the per-pixel functions need.
class Source {
 public:
  Source(int32_t w, int32_t h, int index)
      : w_(w), h_(h), regions_(RegionsFor(h)), index_(index) {
    cx_ = w * 0.5;
    cy_ = (regions_.strip_end + h) * 0.5;
    const double r = w > 1 ? w * 0.5 : 1.0;
    k_ = kPi / (2.0 * r);
  }

  // Luma and chroma of pixel (x, y) with `bits` bits per sample.
  void YuvAt(int32_t x, int32_t y, int bits, uint32_t* yv, uint32_t* u,
             uint32_t* v) const {
    const int up = bits - 8;
    if (y < regions_.strip_end) {
      const Yuv& c = y < regions_.bars_end ? kBarYuv[BarAt(x, w_)]
                                           : kStripYuv[BarAt(x, w_)];
      *yv = uint32_t{c.y} << up;
      *u = uint32_t{c.u} << up;
      *v = uint32_t{c.v} << up;
      return;
    }
    *yv = (16u << up) +
          static_cast<uint32_t>(std::lround(Zone(x, y) * (219 << up)));
    *u = *v = 128u << up;
  }

  Rgb RgbAt(int32_t x, int32_t y) const {
    if (y < regions_.strip_end) {
      return y < regions_.bars_end ? kBarRgb[BarAt(x, w_)]
                                   : kStripRgb[BarAt(x, w_)];
    }
    const auto g = static_cast<uint8_t>(std::lround(Zone(x, y) * 255));
    return {g, g, g};
  }

  int32_t w() const { return w_; }
  int32_t h() const { return h_; }

 private:
  // Zone plate level in [0, 1]: the phase grows with the squared radius so
  // that the local frequency reaches half a cycle per pixel at r = w / 2.
  double Zone(int32_t x, int32_t y) const {
    const double dx = x + 0.5 - cx_, dy = y + 0.5 - cy_;
    const double phase = k_ * (dx * dx + dy * dy) + index_ * (kPi / 4);
    return 0.5 + 0.5 * std::cos(phase);
  }

  int32_t w_, h_;
  Regions regions_;
  int index_;
  double cx_, cy_, k_;
};

void Put16(uint8_t* p, uint32_t v) {
  p[0] = static_cast<uint8_t>(v);
  p[1] = static_cast<uint8_t>(v >> 8);
}

// Planar and semi-planar YUV of 8 or 16 bits per sample. `shift` moves
// 16-bit values into place (6 for p010le); `swap` exchanges U and V.
void DrawYuv(const kimgp_img& img, const FormatInfo& f, const Source& s,
             bool swap) {
  const bool wide = f.family == Family::kYuv16;
  const int bits = wide ? 10 : 8;
  const int shift = f.cs == KIMGP_CS_P010LE ? 6 : 0;
  auto put = [&](uint8_t* p, uint32_t v) {
    if (wide) {
      Put16(p, v << shift);
    } else {
      *p = static_cast<uint8_t>(v);
    }
  };
  const int bytes = wide ? 2 : 1;
  uint32_t y, u, v;
  PlaneAddr luma(img, f, 0);
  for (int32_t r = 0; r < s.h(); ++r) {
    for (int32_t x = 0; x < s.w(); ++x) {
      s.YuvAt(x, r, bits, &y, &u, &v);
      put(luma.At(x * bytes, r), y);
    }
  }
  if (f.planes == 1) return;
  const PlaneAddr p1(img, f, 1);
  const PlaneAddr p2(img, f, f.planes == 3 ? 2 : 1);
  const int xs = f.x_shift[1], ys = f.y_shift[1];
  for (int32_t r = 0; r < img.height[1]; ++r) {
    for (int32_t c = 0; c < img.width[1]; ++c) {
      s.YuvAt(c << xs, r << ys, bits, &y, &u, &v);
      if (swap) std::swap(u, v);
      if (f.pair[1]) {
        put(p1.At(c * 2 * bytes, r), u);
        put(p1.At((c * 2 + 1) * bytes, r), v);
      } else {
        put(p1.At(c * bytes, r), u);
        put(p2.At(c * bytes, r), v);
      }
    }
  }
}

// UYVY / YUYV: two bytes per pixel, luma in every pixel, U at even and V at
// odd pixels from the even pixel of the pair.
void DrawPackedYuv(const kimgp_img& img, const FormatInfo& f,
                   const Source& s) {
  const int yo = f.cs == KIMGP_CS_UYVY ? 1 : 0;
  uint32_t y, u, v, y0, u0, v0;
  for (int32_t r = 0; r < s.h(); ++r) {
    uint8_t* row = img.plane[0] + int64_t{r} * img.stride[0];
    for (int32_t x = 0; x < s.w(); ++x) {
      s.YuvAt(x, r, 8, &y, &u, &v);
      s.YuvAt(x & ~1, r, 8, &y0, &u0, &v0);
      row[2 * x + yo] = static_cast<uint8_t>(y);
      row[2 * x + 1 - yo] = static_cast<uint8_t>((x & 1) ? v0 : u0);
    }
  }
}

void DrawRgb(const kimgp_img& img, const FormatInfo& f, const Source& s) {
  RgbOrder o;
  RgbOrderOf(f, &o);
  for (int32_t r = 0; r < s.h(); ++r) {
    uint8_t* row = img.plane[0] + int64_t{r} * img.stride[0];
    for (int32_t x = 0; x < s.w(); ++x) {
      const Rgb c = s.RgbAt(x, r);
      uint8_t* p = row + int64_t{x} * o.bytes;
      if (o.is565) {
        const uint32_t hi = o.r565_high ? c.r : c.b;
        const uint32_t lo = o.r565_high ? c.b : c.r;
        Put16(p, (hi >> 3) << 11 | (uint32_t{c.g} >> 2) << 5 | lo >> 3);
        continue;
      }
      p[o.r] = c.r;
      p[o.g] = c.g;
      p[o.b] = c.b;
      if (o.a >= 0) p[o.a] = 255;
    }
  }
}

}  // namespace

bool Draw(kimgp_img* img, int index) {
  const FormatInfo* f = LookupFormat(img->cs);
  if (f == nullptr) return false;
  const Source s(img->width[0], img->height[0], index);
  if (s.w() < 1 || s.h() < 1) return true;
  switch (f->family) {
    case Family::kRgb:
      DrawRgb(*img, *f, s);
      break;
    case Family::kPackedYuv:
      DrawPackedYuv(*img, *f, s);
      break;
    default:
      DrawYuv(*img, *f, s,
              f->cs == KIMGP_CS_YV12 || f->cs == KIMGP_CS_YV16 ||
                  f->cs == KIMGP_CS_NV21);
      break;
  }
  return true;
}

}  // namespace pattern
}  // namespace cli
}  // namespace kelo
