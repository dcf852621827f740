// Tightly packed frames of any code for the benchmark rows.
#ifndef KELO_BENCH_BENCH_FRAME_H_
#define KELO_BENCH_BENCH_FRAME_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "bench/bench.h"

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

// A 1080p conversion row: `entry` (an entry of the kimgp_csc shape) from a
// frame of code scs into one of code dcs, both carrying the std word `std`,
// beside peer(src, dst) (no peer row when peer_name is empty).
template <class Peer>
void ConversionRow(const char* name, const char* peer_name,
                   int32_t (*entry)(const kimgp_img*, kimgp_img*), int32_t scs, int32_t dcs,
                   int32_t std, Peer peer) {
  struct Pair {
    Pair(int32_t a, int32_t b) : src(a, 1920, 1080), dst(b, 1920, 1080) {}
    Frame src, dst;
  };
  auto p = std::make_shared<Pair>(scs, dcs);
  p->src.img.std = p->dst.img.std = std;
  const bool has_peer = peer_name[0] != '\0';
  Register({name, peer_name, [p, entry] { entry(&p->src.img, &p->dst.img); },
            has_peer ? std::function<void()>([p, peer] { peer(p->src, p->dst); }) : nullptr,
            p->dst.bytes, has_peer});
}

// Gives a P010LE frame a lit picture: luma sweeping 64 .. 940, chroma around
// the middle, a peak of 1000 nits.
inline void LightP010(Frame* f) {
  const int32_t w = f->img.width[0], h = f->img.height[0];
  for (int32_t y = 0; y < h; ++y) {
    for (int32_t x = 0; x < w; ++x) {
      const uint16_t v = static_cast<uint16_t>((64 + (x * 7 + y * 3) % 877) << 6);
      std::memcpy(f->p(0) + static_cast<ptrdiff_t>(y) * f->s(0) + 2 * x, &v, 2);
    }
  }
  for (int32_t y = 0; y < (h + 1) / 2; ++y) {
    for (int32_t i = 0; i < f->s(1) / 2; ++i) {
      const uint16_t v = static_cast<uint16_t>((400 + (i * 5 + y) % 224) << 6);
      std::memcpy(f->p(1) + static_cast<ptrdiff_t>(y) * f->s(1) + 2 * i, &v, 2);
    }
  }
  f->img.peak_nits = 1000;
}

}  // namespace bench
}  // namespace kelo

#endif  // KELO_BENCH_BENCH_FRAME_H_
