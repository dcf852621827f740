// kimgp_csc_new on 1080p frames beside the libyuv calls that do the same
// work: bilinear chroma (I420ToARGBMatrixFilter, P010ToARGBMatrixFilter),
// 2x2-averaged chroma (ARGBToI420) and 10-bit planar input
// (I010ToARGBMatrix). libyuv's ARGB is our BGRA8888 (bytes B, G, R, A).
#include <libyuv/convert_argb.h>
#include <libyuv/convert_from_argb.h>
#include <libyuv/scale.h>

#include <memory>

#include "bench/bench.h"
#include "bench/bench_frame.h"
#include "kimgp_csc.h"

namespace kelo {
namespace bench {
namespace {

constexpr int32_t kW = 1920, kH = 1080;

const uint16_t* W(Frame& f, int i) { return reinterpret_cast<const uint16_t*>(f.p(i)); }

template <class Peer>
void Row(const char* name, const char* peer_name, int32_t scs, int32_t dcs, int32_t std,
         Peer peer) {
  ConversionRow(name, peer_name, kimgp_csc_new, scs, dcs, std, peer);
}

const bool kRegistered = [] {
  Row("csc_new yuv420>bgra8888", "I420ToARGBMatrixFilter", KIMGP_CS_YUV420, KIMGP_CS_BGRA8888, 0,
      [](Frame& s, Frame& d) {
        libyuv::I420ToARGBMatrixFilter(s.p(0), s.s(0), s.p(1), s.s(1), s.p(2), s.s(2), d.p(0),
                                       d.s(0), &libyuv::kYuvI601Constants, kW, kH,
                                       libyuv::kFilterBilinear);
      });
  Row("csc_new bgra8888>yuv420", "ARGBToI420", KIMGP_CS_BGRA8888, KIMGP_CS_YUV420, 0,
      [](Frame& s, Frame& d) {
        libyuv::ARGBToI420(s.p(0), s.s(0), d.p(0), d.s(0), d.p(1), d.s(1), d.p(2), d.s(2), kW, kH);
      });
  Row("csc_new rgba8888>nv12", "ABGRToNV12", KIMGP_CS_RGBA8888, KIMGP_CS_NV12, 0,
      [](Frame& s, Frame& d) {
        libyuv::ABGRToNV12(s.p(0), s.s(0), d.p(0), d.s(0), d.p(1), d.s(1), kW, kH);
      });
  Row("csc_new yuv420p16>bgra8888", "I010ToARGBMatrix", KIMGP_CS_YUV420PLANAR16,
      KIMGP_CS_BGRA8888, KIMGP_STD_BT2020, [](Frame& s, Frame& d) {
        libyuv::I010ToARGBMatrix(W(s, 0), s.s(0) / 2, W(s, 1), s.s(1) / 2, W(s, 2), s.s(2) / 2,
                                 d.p(0), d.s(0), &libyuv::kYuv2020Constants, kW, kH);
      });
  // The same bilinear chroma as ours (the row above replicates chroma).
  Row("csc_new yuv420p16>bgra8888 filter", "I010ToARGBMatrixFilter", KIMGP_CS_YUV420PLANAR16,
      KIMGP_CS_BGRA8888, KIMGP_STD_BT2020, [](Frame& s, Frame& d) {
        libyuv::I010ToARGBMatrixFilter(W(s, 0), s.s(0) / 2, W(s, 1), s.s(1) / 2, W(s, 2),
                                       s.s(2) / 2, d.p(0), d.s(0), &libyuv::kYuv2020Constants, kW,
                                       kH, libyuv::kFilterBilinear);
      });
  Row("csc_new p010le>bgra8888", "P010ToARGBMatrixFilter", KIMGP_CS_P010LE, KIMGP_CS_BGRA8888,
      KIMGP_STD_BT2020, [](Frame& s, Frame& d) {
        libyuv::P010ToARGBMatrixFilter(W(s, 0), s.s(0) / 2, W(s, 1), s.s(1) / 2, d.p(0), d.s(0),
                                       &libyuv::kYuv2020Constants, kW, kH, libyuv::kFilterBilinear);
      });
  return true;
}();

}  // namespace
}  // namespace bench
}  // namespace kelo
