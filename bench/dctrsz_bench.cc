// DCT-domain downscaler rows beside libyuv's box filter: one context per
// row (made once), kimgp_rsz_new with its two workers per frame.
#include <libyuv/scale.h>

#include <memory>

#include "bench/bench.h"
#include "bench/bench_frame.h"
#include "kimgp_dctrsz.h"

namespace kelo {
namespace bench {
namespace {

struct DctPair {
  DctPair(int32_t cs, int32_t sw, int32_t sh, int32_t dw, int32_t dh, int32_t mode)
      : src(cs, sw, sh), dst(cs, dw, dh) {
    io[0] = src.img;
    io[1] = dst.img;
    ok = kimgp_rsz_new_init(io, &ctx, &vmat, &hmat, mode) == 0;
  }
  ~DctPair() {
    if (ok) kimgp_rsz_new_deinit(io, &ctx, vmat, hmat);
  }
  void Run() { kimgp_rsz_new(io, &ctx, vmat, hmat); }
  Frame src, dst;
  kimgp_img io[2];
  kimgp_rsz_new_ctx ctx;
  int16_t*** vmat = nullptr;
  int16_t*** hmat = nullptr;
  bool ok = false;
};

void Row(const char* name, int32_t cs, int32_t sw, int32_t sh, int32_t dw, int32_t dh,
         int32_t mode) {
  auto p = std::make_shared<DctPair>(cs, sw, sh, dw, dh, mode);
  const bool nv = cs == KIMGP_CS_NV12;
  Register({name, nv ? "NV12Scale box" : "I420Scale box", [p] { p->Run(); },
            [p, sw, sh, dw, dh, nv] {
              Frame& s = p->src;
              Frame& d = p->dst;
              if (nv) {
                libyuv::NV12Scale(s.p(0), s.s(0), s.p(1), s.s(1), sw, sh, d.p(0), d.s(0), d.p(1),
                                  d.s(1), dw, dh, libyuv::kFilterBox);
              } else {
                libyuv::I420Scale(s.p(0), s.s(0), s.p(1), s.s(1), s.p(2), s.s(2), sw, sh, d.p(0),
                                  d.s(0), d.p(1), d.s(1), d.p(2), d.s(2), dw, dh,
                                  libyuv::kFilterBox);
              }
            },
            p->dst.bytes});
}

const bool kRegistered = [] {
  Row("dct resize yuv420 1080p>720p", KIMGP_CS_YUV420, 1920, 1080, 1280, 720, 0);
  Row("dct resize nv12 1080p>720p", KIMGP_CS_NV12, 1920, 1080, 1280, 720, 0);
  Row("dct resize yuv420 2160p>1080p", KIMGP_CS_YUV420, 3840, 2160, 1920, 1080, 0);
  Row("dct resize yuv420 1080p>540p (direct, pre 2)", KIMGP_CS_YUV420, 1920, 1080, 960, 540, 2);
  return true;
}();

}  // namespace
}  // namespace bench
}  // namespace kelo
