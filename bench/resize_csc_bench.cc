// Resize-with-conversion rows beside libyuv's scale-then-convert: kimgp_rsz_csc
// on each pair it fuses or routes specially.
#include <libyuv/convert_argb.h>
#include <libyuv/convert_from_argb.h>
#include <libyuv/planar_functions.h>
#include <libyuv/scale.h>
#include <libyuv/scale_argb.h>

#include <memory>

#include "bench/bench.h"
#include "bench/bench_frame.h"
#include "kimgp_rsz_csc.h"

namespace kelo {
namespace bench {
namespace {

// Source, destination, and the scaled frame libyuv converts from.
struct Job {
  Job(int32_t scs, int32_t dcs, int32_t mid_cs, int32_t sw, int32_t sh, int32_t dw, int32_t dh)
      : src(scs, sw, sh), dst(dcs, dw, dh), mid(mid_cs, dw, dh) {}
  Frame src, dst, mid;
  void Run() { kimgp_rsz_csc(&src.img, &dst.img); }
};

constexpr int32_t kSw = 1920, kSh = 1080, kDw = 1280, kDh = 720;

template <class Peer>
void Add(const char* name, const char* peer_name, int32_t scs, int32_t dcs, int32_t mid_cs,
         Peer peer) {
  auto j = std::make_shared<Job>(scs, dcs, mid_cs, kSw, kSh, kDw, kDh);
  Register({name, peer_name, [j] { j->Run(); }, [j, peer] { peer(*j); }, j->dst.bytes});
}

void I420Scale(Job& j) {
  Frame& s = j.src;
  Frame& m = j.mid;
  libyuv::I420Scale(s.p(0), s.s(0), s.p(1), s.s(1), s.p(2), s.s(2), kSw, kSh, m.p(0), m.s(0),
                    m.p(1), m.s(1), m.p(2), m.s(2), kDw, kDh, libyuv::kFilterBox);
}

const bool kRegistered = [] {
  Add("rsz_csc yuv420>rgb565 1080p>720p", "I420Scale box + I420ToRGB565", KIMGP_CS_YUV420,
      KIMGP_CS_RGB565, KIMGP_CS_YUV420, [](Job& j) {
        I420Scale(j);
        Frame& m = j.mid;
        libyuv::I420ToRGB565(m.p(0), m.s(0), m.p(1), m.s(1), m.p(2), m.s(2), j.dst.p(0),
                             j.dst.s(0), kDw, kDh);
      });
  Add("rsz_csc yuv420>rgb888 1080p>720p", "I420Scale box + I420ToRAW", KIMGP_CS_YUV420,
      KIMGP_CS_RGB888, KIMGP_CS_YUV420, [](Job& j) {
        I420Scale(j);
        Frame& m = j.mid;
        libyuv::I420ToRAW(m.p(0), m.s(0), m.p(1), m.s(1), m.p(2), m.s(2), j.dst.p(0), j.dst.s(0),
                          kDw, kDh);
      });
  Add("rsz_csc rgba8888>nv12 1080p>720p", "ARGBScale box + ABGRToNV12", KIMGP_CS_RGBA8888,
      KIMGP_CS_NV12, KIMGP_CS_RGBA8888, [](Job& j) {
        libyuv::ARGBScale(j.src.p(0), j.src.s(0), kSw, kSh, j.mid.p(0), j.mid.s(0), kDw, kDh,
                          libyuv::kFilterBox);
        libyuv::ABGRToNV12(j.mid.p(0), j.mid.s(0), j.dst.p(0), j.dst.s(0), j.dst.p(1),
                           j.dst.s(1), kDw, kDh);
      });
  Add("rsz_csc nv12>nv21 1080p>720p", "NV12Scale box + CopyPlane + SwapUVPlane", KIMGP_CS_NV12,
      KIMGP_CS_NV21, KIMGP_CS_NV12, [](Job& j) {
        Frame& m = j.mid;
        libyuv::NV12Scale(j.src.p(0), j.src.s(0), j.src.p(1), j.src.s(1), kSw, kSh, m.p(0),
                          m.s(0), m.p(1), m.s(1), kDw, kDh, libyuv::kFilterBox);
        libyuv::CopyPlane(m.p(0), m.s(0), j.dst.p(0), j.dst.s(0), kDw, kDh);
        libyuv::SwapUVPlane(m.p(1), m.s(1), j.dst.p(1), j.dst.s(1), kDw / 2, kDh / 2);
      });
  return true;
}();

}  // namespace
}  // namespace bench
}  // namespace kelo
