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

const bool kRegistered = [] {
  ConversionRow("csc yuv420>rgb565 dither", "I420ToRGB565Dither", kimgp_csc_dither,
                KIMGP_CS_YUV420, KIMGP_CS_RGB565, 0, [](Frame& s, Frame& d) {
                  libyuv::I420ToRGB565Dither(s.p(0), s.s(0), s.p(1), s.s(1), s.p(2), s.s(2),
                                             d.p(0), d.s(0), nullptr, kW, kH);
                });
  ConversionRow("csc nv12>rgb565 dither", "", kimgp_csc_dither, KIMGP_CS_NV12, KIMGP_CS_RGB565,
                0, [](Frame&, Frame&) {});
  return true;
}();

}  // namespace
}  // namespace bench
}  // namespace kelo
