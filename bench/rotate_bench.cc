// Rotation of 1080p frames beside libyuv. Our 90l (counter-clockwise) is
// libyuv's kRotate270, our 90r its kRotate90; our mirror (code 4) is
// I420Mirror.
#include <libyuv/planar_functions.h>
#include <libyuv/rotate.h>
#include <libyuv/rotate_argb.h>

#include <memory>

#include "bench/bench.h"
#include "bench/bench_frame.h"
#include "kimgp_rot.h"

namespace kelo {
namespace bench {
namespace {

constexpr int32_t kW = 1920, kH = 1080;

struct Pair {
  Pair(int32_t cs, uint32_t rot_)
      : src(cs, kW, kH),
        dst(cs, rot_ == KIMGP_ROT_90L || rot_ == KIMGP_ROT_90R ? kH : kW,
            rot_ == KIMGP_ROT_90L || rot_ == KIMGP_ROT_90R ? kW : kH),
        rot(rot_) {}
  Frame src, dst;
  uint32_t rot;
  void Run() { kimgp_rot(&src.img, rot, &dst.img); }
};

template <class Peer>
void Row(const char* name, const char* peer_name, int32_t cs, uint32_t rot, Peer peer) {
  auto p = std::make_shared<Pair>(cs, rot);
  Register({name, peer_name, [p] { p->Run(); }, [p, peer] { peer(p->src, p->dst); },
            p->dst.bytes});
}

void I420Rotate(Frame& s, Frame& d, libyuv::RotationMode mode) {
  libyuv::I420Rotate(s.p(0), s.s(0), s.p(1), s.s(1), s.p(2), s.s(2), d.p(0), d.s(0), d.p(1),
                     d.s(1), d.p(2), d.s(2), kW, kH, mode);
}

const bool kRegistered = [] {
  Row("rotate yuv420 90l", "I420Rotate 270", KIMGP_CS_YUV420, KIMGP_ROT_90L,
      [](Frame& s, Frame& d) { I420Rotate(s, d, libyuv::kRotate270); });
  Row("rotate yuv420 90r", "I420Rotate 90", KIMGP_CS_YUV420, KIMGP_ROT_90R,
      [](Frame& s, Frame& d) { I420Rotate(s, d, libyuv::kRotate90); });
  Row("rotate yuv420 180", "I420Rotate 180", KIMGP_CS_YUV420, KIMGP_ROT_180,
      [](Frame& s, Frame& d) { I420Rotate(s, d, libyuv::kRotate180); });
  Row("rotate yuv420 hori", "I420Mirror", KIMGP_CS_YUV420, KIMGP_ROT_HORI,
      [](Frame& s, Frame& d) {
        libyuv::I420Mirror(s.p(0), s.s(0), s.p(1), s.s(1), s.p(2), s.s(2), d.p(0), d.s(0),
                           d.p(1), d.s(1), d.p(2), d.s(2), kW, kH);
      });
  Row("rotate rgba8888 90l", "ARGBRotate 270", KIMGP_CS_RGBA8888, KIMGP_ROT_90L,
      [](Frame& s, Frame& d) {
        libyuv::ARGBRotate(s.p(0), s.s(0), d.p(0), d.s(0), kW, kH, libyuv::kRotate270);
      });
  return true;
}();

}  // namespace
}  // namespace bench
}  // namespace kelo
