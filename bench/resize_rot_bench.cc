// Resize with rotation beside libyuv's scale then rotate, and beside our own
// two steps (kimgp_rsz into a full-size temporary, then kimgp_rot). Our 90l
// is libyuv's kRotate270, our 90r its kRotate90.
#include <libyuv/rotate.h>
#include <libyuv/scale.h>

#include <memory>
#include <string>

#include "bench/bench.h"
#include "bench/bench_frame.h"
#include "kimgp_rot.h"
#include "kimgp_rsz.h"
#include "kimgp_rsz_rot.h"

namespace kelo {
namespace bench {
namespace {

// A 1920x1080 YUV420 source, the rotated destination and an unrotated
// temporary of the scaled size for the two-step peers.
struct Job {
  Job(int32_t w, int32_t h, int32_t rot_)
      : src(KIMGP_CS_YUV420, kSw, kSh), dst(KIMGP_CS_YUV420, h, w), tmp(KIMGP_CS_YUV420, w, h),
        rot(rot_) {}
  static constexpr int32_t kSw = 1920, kSh = 1080;
  Frame src, dst, tmp;
  int32_t rot;
  void Ours() { kimgp_rsz_rot(&src.img, rot, &dst.img); }
  void OurTwoSteps() {
    kimgp_rsz(&src.img, &tmp.img);
    kimgp_rot(&tmp.img, static_cast<uint32_t>(rot), &dst.img);
  }
  void Libyuv(libyuv::RotationMode mode) {
    const int32_t w = tmp.img.width[0], h = tmp.img.height[0];
    libyuv::I420Scale(src.p(0), src.s(0), src.p(1), src.s(1), src.p(2), src.s(2), kSw, kSh,
                      tmp.p(0), tmp.s(0), tmp.p(1), tmp.s(1), tmp.p(2), tmp.s(2), w, h,
                      libyuv::kFilterBox);
    libyuv::I420Rotate(tmp.p(0), tmp.s(0), tmp.p(1), tmp.s(1), tmp.p(2), tmp.s(2), dst.p(0),
                       dst.s(0), dst.p(1), dst.s(1), dst.p(2), dst.s(2), w, h, mode);
  }
};

// Two rows: beside libyuv, and beside our two steps in the libyuv column.
void Rows(const std::string& name, int32_t w, int32_t h, int32_t rot, libyuv::RotationMode mode,
          const std::string& peer) {
  auto j = std::make_shared<Job>(w, h, rot);
  Register({name, "I420Scale box + I420Rotate " + peer, [j] { j->Ours(); },
            [j, mode] { j->Libyuv(mode); }, j->dst.bytes});
  Register({name + " vs 2 steps", "kimgp_rsz + kimgp_rot (ours)", [j] { j->Ours(); },
            [j] { j->OurTwoSteps(); }, j->dst.bytes, false});
}

const bool kRegistered = [] {
  Rows("rsz_rot yuv420 >720x1280 90r", 1280, 720, KIMGP_ROT_90R, libyuv::kRotate90, "90");
  Rows("rsz_rot yuv420 >540x960 90l", 960, 540, KIMGP_ROT_90L, libyuv::kRotate270, "270");
  return true;
}();

}  // namespace
}  // namespace bench
}  // namespace kelo
