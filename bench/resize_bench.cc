// Resize rows beside libyuv: YUV420 and RGBA8888 frames through kimgp_rsz.
#include <libyuv/scale.h>
#include <libyuv/scale_argb.h>

#include <memory>

#include "bench/bench.h"
#include "bench/bench_frame.h"
#include "kimgp_rsz.h"

namespace kelo {
namespace bench {
namespace {

struct Pair : FramePair {
  using FramePair::FramePair;
  void Run() { kimgp_rsz(&src.img, &dst.img); }
};

void I420Row(const char* name, int32_t sw, int32_t sh, int32_t dw, int32_t dh,
             libyuv::FilterMode mode, const char* peer) {
  auto p = std::make_shared<Pair>(KIMGP_CS_YUV420, sw, sh, dw, dh);
  Register({name, peer, [p] { p->Run(); },
            [p, sw, sh, dw, dh, mode] {
              Frame& s = p->src;
              Frame& d = p->dst;
              libyuv::I420Scale(s.p(0), s.s(0), s.p(1), s.s(1), s.p(2), s.s(2), sw, sh, d.p(0),
                                d.s(0), d.p(1), d.s(1), d.p(2), d.s(2), dw, dh, mode);
            },
            p->dst.bytes});
}

const bool kRegistered = [] {
  I420Row("resize yuv420 1080p>540p", 1920, 1080, 960, 540, libyuv::kFilterBox,
          "I420Scale box");
  I420Row("resize yuv420 1080p>540p (point)", 1920, 1080, 960, 540, libyuv::kFilterNone,
          "I420Scale none");
  I420Row("resize yuv420 1080p>720p", 1920, 1080, 1280, 720, libyuv::kFilterBox,
          "I420Scale box");
  I420Row("resize yuv420 1080p>720p (bilinear)", 1920, 1080, 1280, 720,
          libyuv::kFilterBilinear, "I420Scale bilinear");
  I420Row("resize yuv420 720p>1080p", 1280, 720, 1920, 1080, libyuv::kFilterBilinear,
          "I420Scale bilinear");
  auto l = std::make_shared<Pair>(KIMGP_CS_YUV400, 1920, 1080, 3840, 2160);
  Register({"resize luma 1080p>2160p", "ScalePlane bilinear", [l] { l->Run(); },
            [l] {
              libyuv::ScalePlane(l->src.p(0), l->src.s(0), 1920, 1080, l->dst.p(0), l->dst.s(0),
                                 3840, 2160, libyuv::kFilterBilinear);
            },
            l->dst.bytes});
  auto p = std::make_shared<Pair>(KIMGP_CS_RGBA8888, 1920, 1080, 1280, 720);
  Register({"resize rgba8888 1080p>720p", "ARGBScale box", [p] { p->Run(); },
            [p] {
              libyuv::ARGBScale(p->src.p(0), p->src.s(0), 1920, 1080, p->dst.p(0), p->dst.s(0),
                                1280, 720, libyuv::kFilterBox);
            },
            p->dst.bytes});
  return true;
}();

}  // namespace
}  // namespace bench
}  // namespace kelo
