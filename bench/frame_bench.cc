// Crop, padding, stereo packing, deblocking and detail enhancement of 1080p
// frames beside their closest peers: libyuv copies and fills, the scalar
// build of the deblocking passes, OpenCV's 5x5 filter2D when it is present.
#include <libyuv/convert.h>
#include <libyuv/planar_functions.h>

#include <memory>

#include "bench/bench.h"
#include "bench/bench_frame.h"
#include "imgp/enhance/deblock_filter.h"
#include "kimgp_enhance.h"
#include "kimgp_frame.h"

#if KELO_BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace kelo {
namespace bench {
namespace {

void RegisterCrop() {
  auto yuv = std::make_shared<FramePair>(KIMGP_CS_YUV420, 1920, 1080, 1280, 720);
  yuv->src.img.x = 320;
  yuv->src.img.y = 180;
  Register({"crop yuv420 1920x1080 to 1280x720", "I420Copy from the offset",
            [yuv] { kimgp_crop(&yuv->src.img, &yuv->dst.img); },
            [yuv] {
              Frame& s = yuv->src;
              Frame& d = yuv->dst;
              libyuv::I420Copy(s.p(0) + 180 * s.s(0) + 320, s.s(0), s.p(1) + 90 * s.s(1) + 160,
                               s.s(1), s.p(2) + 90 * s.s(2) + 160, s.s(2), d.p(0), d.s(0), d.p(1),
                               d.s(1), d.p(2), d.s(2), 1280, 720);
            },
            yuv->dst.bytes});
  auto rgba = std::make_shared<FramePair>(KIMGP_CS_RGBA8888, 1920, 1080, 1280, 720);
  rgba->src.img.x = 320;
  rgba->src.img.y = 180;
  Register({"crop rgba8888 1920x1080 to 1280x720", "CopyPlane from the offset",
            [rgba] { kimgp_crop(&rgba->src.img, &rgba->dst.img); },
            [rgba] {
              Frame& s = rgba->src;
              Frame& d = rgba->dst;
              libyuv::CopyPlane(s.p(0) + 180 * s.s(0) + 4 * 320, s.s(0), d.p(0), d.s(0), 4 * 1280,
                                720);
            },
            rgba->dst.bytes});
}

void RegisterPadding() {
  auto pad = std::make_shared<FramePair>(KIMGP_CS_YUV420, 1280, 720, 1920, 1080);
  pad->src.img.x = 320;
  pad->src.img.y = 180;
  Register({"padding yuv420 1280x720 in 1920x1080", "I420Rect, then I420Copy",
            [pad] { kimgp_padding(&pad->src.img, &pad->dst.img); },
            [pad] {
              Frame& s = pad->src;
              Frame& d = pad->dst;
              libyuv::I420Rect(d.p(0), d.s(0), d.p(1), d.s(1), d.p(2), d.s(2), 0, 0, 1920, 1080,
                               16, 128, 128);
              libyuv::I420Copy(s.p(0), s.s(0), s.p(1), s.s(1), s.p(2), s.s(2),
                               d.p(0) + 180 * d.s(0) + 320, d.s(0), d.p(1) + 90 * d.s(1) + 160,
                               d.s(1), d.p(2) + 90 * d.s(2) + 160, d.s(2), 1280, 720);
            },
            pad->dst.bytes});
}

void RegisterPacking() {
  auto pair = std::make_shared<FramePair>(KIMGP_CS_RGB888, 3840, 1080, 1920, 1080);
  Register({"fpa rgb888 3840x1080 pair", "(memcpy only)",
            [pair] { kimgp_fpa(&pair->src.img, &pair->dst.img, 1); }, nullptr,
            pair->dst.bytes});
}

// A frame of 8x8 blocks with small steps between them, so that most edges
// are filtered.
std::shared_ptr<Frame> BlockyFrame() {
  auto f = std::make_shared<Frame>(KIMGP_CS_YUV420, 1920, 1080);
  for (int i = 0; i < 3; ++i) {
    for (int32_t y = 0; y < f->img.height[i]; ++y) {
      for (int32_t x = 0; x < f->img.width[i]; ++x) {
        f->p(i)[y * f->s(i) + x] = static_cast<uint8_t>(100 + ((x >> 3) * 5 + (y >> 3) * 3) % 13);
      }
    }
  }
  return f;
}

void RegisterDeblocking() {
  auto ours = BlockyFrame(), scalar_build = BlockyFrame();
  Register({"dbf8x8_yuv yuv420 1920x1080 s8", "scalar build of the same passes",
            [ours] { kimgp_dbf8x8_yuv(&ours->img, 8); },
            [scalar_build] {
              const kimgp_img& m = scalar_build->img;
              for (int i = 0; i < 3; ++i) {
                scalar::DeblockHor(m.plane[i], m.stride[i], m.width[i], m.height[i], 8);
                scalar::DeblockVer(m.plane[i], m.stride[i], m.width[i], m.height[i], 8);
              }
            },
            ours->bytes, false});
}

void RegisterDetail() {
  auto pair = std::make_shared<FramePair>(KIMGP_CS_YUV420, 1920, 1080, 1920, 1080);
  std::function<void()> peer;
  const char* peer_name = "(OpenCV not found)";
#if KELO_BENCH_OPENCV
  // p + (16p - S) / 16 = (32p - S) / 16 as one 5x5 kernel.
  auto kernel = std::make_shared<cv::Mat>(cv::Mat::zeros(5, 5, CV_32F));
  const float weights[5][5] = {{0, 0, -1, 0, 0},
                               {0, -1, -2, -1, 0},
                               {-1, -2, 32, -2, -1},
                               {0, -1, -2, -1, 0},
                               {0, 0, -1, 0, 0}};
  for (int r = 0; r < 5; ++r) {
    for (int c = 0; c < 5; ++c) kernel->at<float>(r, c) = weights[r][c] / 16.0f;
  }
  peer = [pair, kernel] {
    const cv::Mat s(1080, 1920, CV_8UC1, pair->src.p(0), pair->src.s(0));
    cv::Mat d(1080, 1920, CV_8UC1, pair->dst.p(0), pair->dst.s(0));
    cv::filter2D(s, d, -1, *kernel);
  };
  peer_name = "cv::filter2D, the same 5x5 kernel";
#endif
  Register({"vqe_de luma 1920x1080", peer_name,
            [pair] { kimgp_vqe_de(&pair->src.img, &pair->dst.img, 4); }, peer,
            size_t{1920} * 1080, false});
}

const bool kRegistered = [] {
  RegisterCrop();
  RegisterPadding();
  RegisterPacking();
  RegisterDeblocking();
  RegisterDetail();
  return true;
}();

}  // namespace
}  // namespace bench
}  // namespace kelo
