// Colour conversion of 1080p frames beside libyuv. libyuv names orders by
// the 32-bit word: its ARGB is bytes B, G, R, A (our BGRA8888), its ABGR is
// bytes R, G, B, A (our RGBA8888), its RAW is R, G, B and RGB24 is B, G, R.
#include <libyuv/convert_argb.h>
#include <libyuv/convert.h>
#include <libyuv/convert_from.h>
#include <libyuv/convert_from_argb.h>

#include <memory>

#include "bench/bench.h"
#include "bench/bench_frame.h"
#include "kimgp_csc.h"

namespace kelo {
namespace bench {
namespace {

constexpr int32_t kW = 1920, kH = 1080;

// A row timing kimgp_csc from scs to dcs beside the libyuv call `peer`.
template <class Peer>
void Row(const char* name, const char* peer_name, int32_t scs, int32_t dcs, Peer peer) {
  ConversionRow(name, peer_name, kimgp_csc, scs, dcs, 0, peer);
}

const bool kRegistered = [] {
  Row("csc yuv420>rgba8888", "I420ToABGR", 1, 500,
      [](Frame& s, Frame& d) {
        libyuv::I420ToABGR(s.p(0), s.s(0), s.p(1), s.s(1), s.p(2), s.s(2), d.p(0), d.s(0), kW, kH);
      });
  Row("csc yuv420>bgra8888", "I420ToARGB", 1, 501,
      [](Frame& s, Frame& d) {
        libyuv::I420ToARGB(s.p(0), s.s(0), s.p(1), s.s(1), s.p(2), s.s(2), d.p(0), d.s(0), kW, kH);
      });
  Row("csc nv12>rgba8888", "NV12ToABGR", 6, 500,
      [](Frame& s, Frame& d) {
        libyuv::NV12ToABGR(s.p(0), s.s(0), s.p(1), s.s(1), d.p(0), d.s(0), kW, kH);
      });
  Row("csc nv21>rgba8888", "NV21ToABGR", 7, 500,
      [](Frame& s, Frame& d) {
        libyuv::NV21ToABGR(s.p(0), s.s(0), s.p(1), s.s(1), d.p(0), d.s(0), kW, kH);
      });
  Row("csc yuv420>rgb565", "I420ToRGB565", 1, 200,
      [](Frame& s, Frame& d) {
        libyuv::I420ToRGB565(s.p(0), s.s(0), s.p(1), s.s(1), s.p(2), s.s(2), d.p(0), d.s(0), kW,
                             kH);
      });
  Row("csc yuv420>rgb888", "I420ToRAW", 1, 400,
      [](Frame& s, Frame& d) {
        libyuv::I420ToRAW(s.p(0), s.s(0), s.p(1), s.s(1), s.p(2), s.s(2), d.p(0), d.s(0), kW, kH);
      });
  Row("csc yuv420>bgr888", "I420ToRGB24", 1, 401,
      [](Frame& s, Frame& d) {
        libyuv::I420ToRGB24(s.p(0), s.s(0), s.p(1), s.s(1), s.p(2), s.s(2), d.p(0), d.s(0), kW,
                            kH);
      });
  Row("csc yuyv>bgra8888", "YUY2ToARGB", 101, 501,
      [](Frame& s, Frame& d) { libyuv::YUY2ToARGB(s.p(0), s.s(0), d.p(0), d.s(0), kW, kH); });
  Row("csc uyvy>bgra8888", "UYVYToARGB", 100, 501,
      [](Frame& s, Frame& d) { libyuv::UYVYToARGB(s.p(0), s.s(0), d.p(0), d.s(0), kW, kH); });
  Row("csc yuv444>rgba8888", "I444ToABGR", 3, 500,
      [](Frame& s, Frame& d) {
        libyuv::I444ToABGR(s.p(0), s.s(0), s.p(1), s.s(1), s.p(2), s.s(2), d.p(0), d.s(0), kW, kH);
      });
  Row("csc rgba8888>yuv420", "ABGRToI420", 500, 1, [](Frame& s, Frame& d) {
    libyuv::ABGRToI420(s.p(0), s.s(0), d.p(0), d.s(0), d.p(1), d.s(1), d.p(2), d.s(2), kW, kH);
  });
  Row("csc bgra8888>yuv420", "ARGBToI420", 501, 1, [](Frame& s, Frame& d) {
    libyuv::ARGBToI420(s.p(0), s.s(0), d.p(0), d.s(0), d.p(1), d.s(1), d.p(2), d.s(2), kW, kH);
  });
  Row("csc rgba8888>nv12", "ABGRToNV12", 500, 6, [](Frame& s, Frame& d) {
    libyuv::ABGRToNV12(s.p(0), s.s(0), d.p(0), d.s(0), d.p(1), d.s(1), kW, kH);
  });
  Row("csc rgb565>yuv420", "RGB565ToI420", 200, 1, [](Frame& s, Frame& d) {
    libyuv::RGB565ToI420(s.p(0), s.s(0), d.p(0), d.s(0), d.p(1), d.s(1), d.p(2), d.s(2), kW, kH);
  });
  Row("csc yuv420>nv12", "I420ToNV12", 1, 6, [](Frame& s, Frame& d) {
    libyuv::I420ToNV12(s.p(0), s.s(0), s.p(1), s.s(1), s.p(2), s.s(2), d.p(0), d.s(0), d.p(1),
                       d.s(1), kW, kH);
  });
  Row("csc nv12>yuv420", "NV12ToI420", 6, 1, [](Frame& s, Frame& d) {
    libyuv::NV12ToI420(s.p(0), s.s(0), s.p(1), s.s(1), d.p(0), d.s(0), d.p(1), d.s(1), d.p(2),
                       d.s(2), kW, kH);
  });
  // Rows that only move or narrow bytes: memcpy of the output is their floor.
  Row("csc yuyv>yuv420", "YUY2ToI420", 101, 1, [](Frame& s, Frame& d) {
    libyuv::YUY2ToI420(s.p(0), s.s(0), d.p(0), d.s(0), d.p(1), d.s(1), d.p(2), d.s(2), kW, kH);
  });
  Row("csc nv12>nv21", "NV21ToNV12", 6, 7, [](Frame& s, Frame& d) {
    libyuv::NV21ToNV12(s.p(0), s.s(0), s.p(1), s.s(1), d.p(0), d.s(0), d.p(1), d.s(1), kW, kH);
  });
  Row("csc yuv420p16>yuv420", "I010ToI420", 600, 1, [](Frame& s, Frame& d) {
    auto w = [&](int i) { return reinterpret_cast<const uint16_t*>(s.p(i)); };
    libyuv::I010ToI420(w(0), s.s(0) / 2, w(1), s.s(1) / 2, w(2), s.s(2) / 2, d.p(0), d.s(0),
                       d.p(1), d.s(1), d.p(2), d.s(2), kW, kH);
  });
  // Our P010 conversion uses the BT.2020 limited-range matrix; libyuv's
  // swapped-chroma constants give its bytes in our RGBA order.
  Row("csc p010>rgba8888", "P010ToARGBMatrix", 601, 500, [](Frame& s, Frame& d) {
    auto w = [&](int i) { return reinterpret_cast<const uint16_t*>(s.p(i)); };
    libyuv::P010ToARGBMatrix(w(0), s.s(0) / 2, w(1), s.s(1) / 2, d.p(0), d.s(0),
                             &libyuv::kYvu2020Constants, kW, kH);
  });
  return true;
}();

}  // namespace
}  // namespace bench
}  // namespace kelo
