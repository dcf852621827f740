// Conversion with rotation of a 1080p frame beside libyuv, which does it in
// two passes through a full-size intermediate: YUY2ToARGB (its ARGB is our
// BGRA8888) then ARGBRotate. Our 90r (code 2, clockwise) is its kRotate90.
#include <libyuv/convert_argb.h>
#include <libyuv/rotate_argb.h>

#include <memory>

#include "bench/bench.h"
#include "bench/bench_frame.h"
#include "kimgp_csc.h"

namespace kelo {
namespace bench {
namespace {

constexpr int32_t kW = 1920, kH = 1080;

struct Turned {
  Turned() : src(KIMGP_CS_YUYV, kW, kH), dst(KIMGP_CS_BGRA8888, kH, kW),
             tmp(KIMGP_CS_BGRA8888, kW, kH) {}
  Frame src, dst, tmp;  // tmp: libyuv's intermediate
};

const bool kRegistered = [] {
  auto p = std::make_shared<Turned>();
  Register({"csc_rot yuyv>bgra8888 90r", "YUY2ToARGB + ARGBRotate 90",
            [p] { kimgp_csc_rot(&p->src.img, KIMGP_ROT_90R, &p->dst.img); },
            [p] {
              libyuv::YUY2ToARGB(p->src.p(0), p->src.s(0), p->tmp.p(0), p->tmp.s(0), kW, kH);
              libyuv::ARGBRotate(p->tmp.p(0), p->tmp.s(0), p->dst.p(0), p->dst.s(0), kW, kH,
                                 libyuv::kRotate90);
            },
            p->dst.bytes});
  return true;
}();

}  // namespace
}  // namespace bench
}  // namespace kelo
