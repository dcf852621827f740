// Dithered RGB565 of 1080p frames beside libyuv's dithered conversion with
// its default 4x4 matrix.
#include <libyuv/convert_argb.h>

#include <memory>

#include "bench/bench.h"
#include "bench/bench_frame.h"
#include "kimgp_csc.h"

namespace kelo {
namespace bench {
namespace {

constexpr int32_t kW = 1920, kH = 1080;

struct Pair {
  Pair(int32_t scs, int32_t dcs) : src(scs, kW, kH), dst(dcs, kW, kH) {}
  Frame src, dst;
};

const bool kRegistered = [] {
  auto p = std::make_shared<Pair>(KIMGP_CS_YUV420, KIMGP_CS_RGB565);
  Register({"csc yuv420>rgb565 dither", "I420ToRGB565Dither",
            [p] { kimgp_csc_dither(&p->src.img, &p->dst.img); },
            [p] {
              Frame& s = p->src;
              libyuv::I420ToRGB565Dither(s.p(0), s.s(0), s.p(1), s.s(1), s.p(2), s.s(2),
                                         p->dst.p(0), p->dst.s(0), nullptr, kW, kH);
            },
            p->dst.bytes});
  auto q = std::make_shared<Pair>(KIMGP_CS_NV12, KIMGP_CS_RGB565);
  Register({"csc nv12>rgb565 dither", "", [q] { kimgp_csc_dither(&q->src.img, &q->dst.img); },
            nullptr, q->dst.bytes, false});
  return true;
}();

}  // namespace
}  // namespace bench
}  // namespace kelo
