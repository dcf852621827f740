// Plane copy of 1080p frames: kimgp_cpy beside libyuv's copies.
#include <libyuv/convert.h>
#include <libyuv/planar_functions.h>

#include <memory>
#include <vector>

#include "bench/bench.h"
#include "bench/bench_frame.h"
#include "kimgp_copy.h"
#include "tools/frame/formats.h"

namespace kelo {
namespace bench {
namespace {

struct CopyPair {
  CopyPair(int32_t cs, int32_t w, int32_t h) : src(cs, w, h), dst(cs, w, h) {}
  Frame src, dst;
};

const bool kRegistered = [] {
  const int32_t w = 1920, h = 1080;
  auto yuv = std::make_shared<CopyPair>(KIMGP_CS_YUV420, w, h);
  Register({"copy yuv420 1920x1080", "I420Copy",
            [yuv] { kimgp_cpy(&yuv->src.img, &yuv->dst.img); },
            [yuv] {
              const kimgp_img& s = yuv->src.img;
              kimgp_img& d = yuv->dst.img;
              libyuv::I420Copy(s.plane[0], s.stride[0], s.plane[1], s.stride[1], s.plane[2],
                               s.stride[2], d.plane[0], d.stride[0], d.plane[1], d.stride[1],
                               d.plane[2], d.stride[2], w, h);
            },
            yuv->dst.bytes});
  auto nv12 = std::make_shared<CopyPair>(KIMGP_CS_NV12, w, h);
  Register({"copy nv12 1920x1080", "CopyPlane x2",
            [nv12] { kimgp_cpy(&nv12->src.img, &nv12->dst.img); },
            [nv12] {
              const kimgp_img& s = nv12->src.img;
              kimgp_img& d = nv12->dst.img;
              libyuv::CopyPlane(s.plane[0], s.stride[0], d.plane[0], d.stride[0], w, h);
              libyuv::CopyPlane(s.plane[1], s.stride[1], d.plane[1], d.stride[1], w, h / 2);
            },
            nv12->dst.bytes});
  auto rgb = std::make_shared<CopyPair>(KIMGP_CS_RGB565, w, h);
  Register({"copy rgb565 1920x1080", "CopyPlane_16",
            [rgb] { kimgp_cpy(&rgb->src.img, &rgb->dst.img); },
            [rgb] {
              const kimgp_img& s = rgb->src.img;
              kimgp_img& d = rgb->dst.img;
              libyuv::CopyPlane_16(reinterpret_cast<const uint16_t*>(s.plane[0]), s.stride[0] / 2,
                                   reinterpret_cast<uint16_t*>(d.plane[0]), d.stride[0] / 2, w, h);
            },
            rgb->dst.bytes});
  // A padded destination forces the row-by-row path.
  struct PaddedPair {
    Frame src{KIMGP_CS_YUV420, 1920, 1080}, dst{KIMGP_CS_YUV420, 1920, 1080, 64, 64};
  };
  auto padded = std::make_shared<PaddedPair>();
  Register({"copy yuv420 1920x1080 padded", "I420Copy",
            [padded] { kimgp_cpy(&padded->src.img, &padded->dst.img); },
            [padded] {
              const kimgp_img& s = padded->src.img;
              kimgp_img& d = padded->dst.img;
              libyuv::I420Copy(s.plane[0], s.stride[0], s.plane[1], s.stride[1], s.plane[2],
                               s.stride[2], d.plane[0], d.stride[0], d.plane[1], d.stride[1],
                               d.plane[2], d.stride[2], w, h);
            },
            yuv->dst.bytes});
  return true;
}();

}  // namespace
}  // namespace bench
}  // namespace kelo
