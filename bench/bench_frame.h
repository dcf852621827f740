// Tightly packed frames of any code for the benchmark rows.
#ifndef KELO_BENCH_BENCH_FRAME_H_
#define KELO_BENCH_BENCH_FRAME_H_

#include <cstdint>
#include <vector>

#include "kimgp_img.h"
#include "tools/frame/formats.h"

namespace kelo {
namespace bench {

struct Frame {
  // align/pad as frame::Describe: row lengths rounded up to align, plus pad.
  Frame(int32_t cs, int32_t w, int32_t h, int32_t align = 1, int32_t pad = 0) {
    frame::Describe(cs, w, h, align, pad, &img);
    const frame::FormatInfo* f = frame::FindFormat(cs);
    for (int i = 0; i < f->planes; ++i) {
      mem[i].resize(static_cast<size_t>(frame::PlaneBytes(img, i)));
      for (size_t k = 0; k < mem[i].size(); ++k) mem[i][k] = static_cast<uint8_t>(k * 7 + i * 31);
      img.plane[i] = mem[i].data();
      bytes += mem[i].size();
    }
  }
  uint8_t* p(int i) { return img.plane[i]; }
  int32_t s(int i) const { return img.stride[i]; }
  kimgp_img img;
  std::vector<uint8_t> mem[3];
  size_t bytes = 0;
};

// A source and a destination frame of one code and two sizes.
struct FramePair {
  FramePair(int32_t cs, int32_t sw, int32_t sh, int32_t dw, int32_t dh)
      : src(cs, sw, sh), dst(cs, dw, dh) {}
  Frame src, dst;
};

}  // namespace bench
}  // namespace kelo

#endif  // KELO_BENCH_BENCH_FRAME_H_
