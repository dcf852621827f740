// Instruction-count harness for 32-bit ARM: runs one named operation N times
// on small frames (320x240, 480x360 sources for the 3:2 scalings), ours or
// its libyuv peer. scripts/arm_insn_bench.sh runs it under qemu-arm, counts
// the guest instructions of runs with N and 2N calls and takes the
// difference, so frame set-up and process start-up cancel.
//
//   kelo_arm_insn_bench --list            name, pixels, peer of every row
//   kelo_arm_insn_bench <row> ours <N>
//   kelo_arm_insn_bench <row> libyuv <N>  (rows with a libyuv peer)
//
// Rows without a libyuv peer are compared with "ours" of the same harness
// built without vector paths (KELO_SIMD=OFF).
#include <libyuv/convert.h>
#include <libyuv/convert_argb.h>
#include <libyuv/convert_from.h>
#include <libyuv/convert_from_argb.h>
#include <libyuv/cpu_id.h>
#include <libyuv/planar_functions.h>
#include <libyuv/rotate.h>
#include <libyuv/rotate_argb.h>
#include <libyuv/scale.h>
#include <libyuv/scale_argb.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bench/bench_frame.h"
#include "imgp/hdr/hdr_internal.h"
#include "kimgp_copy.h"
#include "kimgp_csc.h"
#include "kimgp_dctrsz.h"
#include "kimgp_enhance.h"
#include "kimgp_frame.h"
#include "kimgp_hdr.h"
#include "kimgp_img.h"
#include "kimgp_rot.h"
#include "kimgp_rsz.h"
#include "kimgp_rsz_csc.h"
#include "kimgp_rsz_rot.h"

namespace kelo {
namespace bench {
namespace {

constexpr int32_t kW = 320, kH = 240;     // the frames of most rows
constexpr int32_t kBw = 480, kBh = 360;   // 3:2 scalings start here

// A source, a destination and a temporary (libyuv's two-step peers).
struct Job {
  Job(int32_t scs, int32_t sw, int32_t sh, int32_t dcs, int32_t dw, int32_t dh,
      int32_t tcs = KIMGP_CS_YUV420, int32_t tw = 2, int32_t th = 2)
      : src(scs, sw, sh), dst(dcs, dw, dh), tmp(tcs, tw, th) {}
  Frame src, dst, tmp;
};

using Fn = std::function<void(Job&)>;

struct Row {
  std::string name, peer;  // peer empty: compare with the scalar build
  std::function<std::shared_ptr<Job>()> make;
  Fn ours, libyuv;
  int64_t pixels;  // of the larger frame
  Fn prep;         // once, before the calls
};

std::vector<Row>& Rows() {
  static std::vector<Row> rows;
  return rows;
}

void Add(std::string name, std::string peer, int32_t scs, int32_t sw, int32_t sh, int32_t dcs,
         int32_t dw, int32_t dh, Fn ours, Fn libyuv, int32_t tcs = KIMGP_CS_YUV420,
         int32_t tw = 2, int32_t th = 2) {
  const int64_t pixels = std::max(int64_t{sw} * sh, int64_t{dw} * dh);
  Rows().push_back({std::move(name), std::move(peer),
                    [=] { return std::make_shared<Job>(scs, sw, sh, dcs, dw, dh, tcs, tw, th); },
                    std::move(ours), std::move(libyuv), pixels, nullptr});
}

// libyuv's conversions as calls on two frames of one size, by the plane
// counts of their source and destination.
using Peer = std::function<void(const Frame&, Frame&)>;
using C = const uint8_t*;
using P = uint8_t*;
Peer Conv(int (*f)(C, int, C, int, C, int, P, int, int, int)) {
  return [f](const Frame& s, Frame& d) {
    const kimgp_img& i = s.img;
    f(i.plane[0], i.stride[0], i.plane[1], i.stride[1], i.plane[2], i.stride[2], d.p(0), d.s(0),
      i.width[0], i.height[0]);
  };
}
Peer Conv(int (*f)(C, int, C, int, P, int, int, int)) {
  return [f](const Frame& s, Frame& d) {
    const kimgp_img& i = s.img;
    f(i.plane[0], i.stride[0], i.plane[1], i.stride[1], d.p(0), d.s(0), i.width[0], i.height[0]);
  };
}
Peer Conv(int (*f)(C, int, P, int, int, int)) {
  return [f](const Frame& s, Frame& d) {
    f(s.img.plane[0], s.s(0), d.p(0), d.s(0), s.img.width[0], s.img.height[0]);
  };
}
Peer Conv(int (*f)(C, int, P, int, P, int, P, int, int, int)) {
  return [f](const Frame& s, Frame& d) {
    f(s.img.plane[0], s.s(0), d.p(0), d.s(0), d.p(1), d.s(1), d.p(2), d.s(2), s.img.width[0],
      s.img.height[0]);
  };
}
Peer Conv(int (*f)(C, int, P, int, P, int, int, int)) {
  return [f](const Frame& s, Frame& d) {
    f(s.img.plane[0], s.s(0), d.p(0), d.s(0), d.p(1), d.s(1), s.img.width[0], s.img.height[0]);
  };
}
Peer Conv(int (*f)(C, int, C, int, P, int, P, int, int, int)) {
  return [f](const Frame& s, Frame& d) {
    const kimgp_img& i = s.img;
    f(i.plane[0], i.stride[0], i.plane[1], i.stride[1], d.p(0), d.s(0), d.p(1), d.s(1),
      i.width[0], i.height[0]);
  };
}
Peer Conv(int (*f)(C, int, C, int, C, int, P, int, P, int, int, int)) {
  return [f](const Frame& s, Frame& d) {
    const kimgp_img& i = s.img;
    f(i.plane[0], i.stride[0], i.plane[1], i.stride[1], i.plane[2], i.stride[2], d.p(0), d.s(0),
      d.p(1), d.s(1), i.width[0], i.height[0]);
  };
}
Peer Conv(int (*f)(C, int, C, int, P, int, P, int, P, int, int, int)) {
  return [f](const Frame& s, Frame& d) {
    const kimgp_img& i = s.img;
    f(i.plane[0], i.stride[0], i.plane[1], i.stride[1], d.p(0), d.s(0), d.p(1), d.s(1), d.p(2),
      d.s(2), i.width[0], i.height[0]);
  };
}

void Csc(const char* name, const char* peer_name, int32_t scs, int32_t dcs, Peer peer) {
  Add(name, peer_name, scs, kW, kH, dcs, kW, kH,
      [](Job& j) { kimgp_csc(&j.src.img, &j.dst.img); },
      [peer](Job& j) { peer(j.src, j.dst); });
}

void AddCsc() {
  Csc("csc yuv420>rgba8888", "I420ToABGR", 1, 500, Conv(libyuv::I420ToABGR));
  Csc("csc yuv420>bgra8888", "I420ToARGB", 1, 501, Conv(libyuv::I420ToARGB));
  Csc("csc nv12>rgba8888", "NV12ToABGR", 6, 500, Conv(libyuv::NV12ToABGR));
  Csc("csc nv21>rgba8888", "NV21ToABGR", 7, 500, Conv(libyuv::NV21ToABGR));
  Csc("csc yuv420>rgb565", "I420ToRGB565", 1, 200, Conv(libyuv::I420ToRGB565));
  Add("csc yuv420>rgb565 dither", "I420ToRGB565Dither", 1, kW, kH, 200, kW, kH,
      [](Job& j) { kimgp_csc_dither(&j.src.img, &j.dst.img); },
      [](Job& j) {
        const kimgp_img& i = j.src.img;
        libyuv::I420ToRGB565Dither(i.plane[0], i.stride[0], i.plane[1], i.stride[1], i.plane[2],
                                   i.stride[2], j.dst.p(0), j.dst.s(0), nullptr, kW, kH);
      });
  Csc("csc yuv420>rgb888", "I420ToRAW", 1, 400, Conv(libyuv::I420ToRAW));
  Csc("csc yuv420>bgr888", "I420ToRGB24", 1, 401, Conv(libyuv::I420ToRGB24));
  Csc("csc yuyv>bgra8888", "YUY2ToARGB", 101, 501, Conv(libyuv::YUY2ToARGB));
  Csc("csc uyvy>bgra8888", "UYVYToARGB", 100, 501, Conv(libyuv::UYVYToARGB));
  Csc("csc yuv444>rgba8888", "I444ToABGR", 3, 500, Conv(libyuv::I444ToABGR));
  Csc("csc rgba8888>yuv420", "ABGRToI420", 500, 1, Conv(libyuv::ABGRToI420));
  Csc("csc bgra8888>yuv420", "ARGBToI420", 501, 1, Conv(libyuv::ARGBToI420));
  Csc("csc rgba8888>nv12", "ABGRToNV12", 500, 6, Conv(libyuv::ABGRToNV12));
  Csc("csc rgb565>yuv420", "RGB565ToI420", 200, 1, Conv(libyuv::RGB565ToI420));
  Csc("csc yuv420>nv12", "I420ToNV12", 1, 6, Conv(libyuv::I420ToNV12));
  Csc("csc nv12>yuv420", "NV12ToI420", 6, 1, Conv(libyuv::NV12ToI420));
  Csc("csc yuyv>yuv420", "YUY2ToI420", 101, 1, Conv(libyuv::YUY2ToI420));
  Csc("csc nv12>nv21", "NV21ToNV12", 6, 7, Conv(libyuv::NV21ToNV12));
  using W = const uint16_t*;
  Csc("csc yuv420p16>yuv420", "I010ToI420", 600, 1, [](const Frame& s, Frame& d) {
    const kimgp_img& i = s.img;
    libyuv::I010ToI420(W(i.plane[0]), i.stride[0] / 2, W(i.plane[1]), i.stride[1] / 2,
                       W(i.plane[2]), i.stride[2] / 2, d.p(0), d.s(0), d.p(1), d.s(1), d.p(2),
                       d.s(2), kW, kH);
  });
  // Our P010 conversion uses the BT.2020 limited-range matrix; libyuv's
  // swapped-chroma constants give its bytes in our RGBA order.
  Csc("csc p010>rgba8888", "P010ToARGBMatrix", 601, 500, [](const Frame& s, Frame& d) {
    const kimgp_img& i = s.img;
    libyuv::P010ToARGBMatrix(W(i.plane[0]), i.stride[0] / 2, W(i.plane[1]), i.stride[1] / 2,
                             d.p(0), d.s(0), &libyuv::kYvu2020Constants, kW, kH);
  });
}

// kimgp_csc_new beside libyuv's matrix and filter calls (libyuv's ARGB is
// our BGRA8888).
void CscNew(const char* name, const char* peer_name, int32_t scs, int32_t dcs, int32_t std,
            Peer peer) {
  Add(name, peer_name, scs, kW, kH, dcs, kW, kH,
      [std](Job& j) {
        j.src.img.std = j.dst.img.std = std;
        kimgp_csc_new(&j.src.img, &j.dst.img);
      },
      [peer](Job& j) { peer(j.src, j.dst); });
}

void AddCscNew() {
  using W = const uint16_t*;
  CscNew("csc_new yuv420>bgra8888", "I420ToARGBMatrixFilter", 1, 501, 0,
         [](const Frame& s, Frame& d) {
           const kimgp_img& i = s.img;
           libyuv::I420ToARGBMatrixFilter(i.plane[0], i.stride[0], i.plane[1], i.stride[1],
                                          i.plane[2], i.stride[2], d.p(0), d.s(0),
                                          &libyuv::kYuvI601Constants, kW, kH,
                                          libyuv::kFilterBilinear);
         });
  CscNew("csc_new bgra8888>yuv420", "ARGBToI420", 501, 1, 0, Conv(libyuv::ARGBToI420));
  CscNew("csc_new rgba8888>nv12", "ABGRToNV12", 500, 6, 0, Conv(libyuv::ABGRToNV12));
  CscNew("csc_new yuv420p16>bgra8888", "I010ToARGBMatrix", 600, 501, 20,
         [](const Frame& s, Frame& d) {
           const kimgp_img& i = s.img;
           libyuv::I010ToARGBMatrix(W(i.plane[0]), i.stride[0] / 2, W(i.plane[1]),
                                    i.stride[1] / 2, W(i.plane[2]), i.stride[2] / 2, d.p(0),
                                    d.s(0), &libyuv::kYuv2020Constants, kW, kH);
         });
  CscNew("csc_new p010le>bgra8888", "P010ToARGBMatrixFilter", 601, 501, 20,
         [](const Frame& s, Frame& d) {
           const kimgp_img& i = s.img;
           libyuv::P010ToARGBMatrixFilter(W(i.plane[0]), i.stride[0] / 2, W(i.plane[1]),
                                          i.stride[1] / 2, d.p(0), d.s(0),
                                          &libyuv::kYuv2020Constants, kW, kH,
                                          libyuv::kFilterBilinear);
         });
}

void I420Copy(const Frame& s, int sx, int sy, Frame& d, int dx, int dy, int w, int h) {
  const auto at = [](const Frame& f, int i, int x, int y) {
    return f.img.plane[i] + static_cast<ptrdiff_t>(y) * f.s(i) + x;
  };
  libyuv::I420Copy(at(s, 0, sx, sy), s.s(0), at(s, 1, sx / 2, sy / 2), s.s(1),
                   at(s, 2, sx / 2, sy / 2), s.s(2), at(d, 0, dx, dy), d.s(0),
                   at(d, 1, dx / 2, dy / 2), d.s(1), at(d, 2, dx / 2, dy / 2), d.s(2), w, h);
}

void AddCopy() {
  const auto cpy = [](Job& j) { kimgp_cpy(&j.src.img, &j.dst.img); };
  Add("copy yuv420", "I420Copy", 1, kW, kH, 1, kW, kH, cpy,
      [](Job& j) { I420Copy(j.src, 0, 0, j.dst, 0, 0, kW, kH); });
  Add("copy nv12", "CopyPlane x2", 6, kW, kH, 6, kW, kH, cpy, [](Job& j) {
    libyuv::CopyPlane(j.src.p(0), j.src.s(0), j.dst.p(0), j.dst.s(0), kW, kH);
    libyuv::CopyPlane(j.src.p(1), j.src.s(1), j.dst.p(1), j.dst.s(1), kW, kH / 2);
  });
}

void Rot(const char* name, const char* peer, int32_t cs, uint32_t rot, Fn libyuv) {
  const bool turn = rot == KIMGP_ROT_90L || rot == KIMGP_ROT_90R;
  Add(name, peer, cs, kW, kH, cs, turn ? kH : kW, turn ? kW : kH,
      [rot](Job& j) { kimgp_rot(&j.src.img, rot, &j.dst.img); }, std::move(libyuv));
}

void I420Rotate(const Frame& s, Frame& d, int w, int h, libyuv::RotationMode mode) {
  libyuv::I420Rotate(s.img.plane[0], s.s(0), s.img.plane[1], s.s(1), s.img.plane[2], s.s(2),
                     d.p(0), d.s(0), d.p(1), d.s(1), d.p(2), d.s(2), w, h, mode);
}

void AddRot() {
  Rot("rotate yuv420 90l", "I420Rotate 270", KIMGP_CS_YUV420, KIMGP_ROT_90L,
      [](Job& j) { I420Rotate(j.src, j.dst, kW, kH, libyuv::kRotate270); });
  Rot("rotate yuv420 90r", "I420Rotate 90", KIMGP_CS_YUV420, KIMGP_ROT_90R,
      [](Job& j) { I420Rotate(j.src, j.dst, kW, kH, libyuv::kRotate90); });
  Rot("rotate yuv420 180", "I420Rotate 180", KIMGP_CS_YUV420, KIMGP_ROT_180,
      [](Job& j) { I420Rotate(j.src, j.dst, kW, kH, libyuv::kRotate180); });
  Rot("rotate yuv420 hori", "I420Mirror", KIMGP_CS_YUV420, KIMGP_ROT_HORI, [](Job& j) {
    Frame &s = j.src, &d = j.dst;
    libyuv::I420Mirror(s.p(0), s.s(0), s.p(1), s.s(1), s.p(2), s.s(2), d.p(0), d.s(0), d.p(1),
                       d.s(1), d.p(2), d.s(2), kW, kH);
  });
  Rot("rotate rgba8888 90l", "ARGBRotate 270", KIMGP_CS_RGBA8888, KIMGP_ROT_90L, [](Job& j) {
    libyuv::ARGBRotate(j.src.p(0), j.src.s(0), j.dst.p(0), j.dst.s(0), kW, kH,
                       libyuv::kRotate270);
  });
}

void I420Scale(const Frame& s, Frame& d, libyuv::FilterMode mode) {
  libyuv::I420Scale(s.img.plane[0], s.s(0), s.img.plane[1], s.s(1), s.img.plane[2], s.s(2),
                    s.img.width[0], s.img.height[0], d.p(0), d.s(0), d.p(1), d.s(1), d.p(2),
                    d.s(2), d.img.width[0], d.img.height[0], mode);
}

void Rsz(const char* name, const char* peer, int32_t sw, int32_t sh, int32_t dw, int32_t dh,
         libyuv::FilterMode mode) {
  Add(name, peer, KIMGP_CS_YUV420, sw, sh, KIMGP_CS_YUV420, dw, dh,
      [](Job& j) { kimgp_rsz(&j.src.img, &j.dst.img); },
      [mode](Job& j) { I420Scale(j.src, j.dst, mode); });
}

void AddRsz() {
  Rsz("resize yuv420 2:1", "I420Scale box", kW, kH, kW / 2, kH / 2, libyuv::kFilterBox);
  Rsz("resize yuv420 2:1 (point)", "I420Scale none", kW, kH, kW / 2, kH / 2,
      libyuv::kFilterNone);
  Rsz("resize yuv420 3:2", "I420Scale box", kBw, kBh, kW, kH, libyuv::kFilterBox);
  Rsz("resize yuv420 3:2 (bilinear)", "I420Scale bilinear", kBw, kBh, kW, kH,
      libyuv::kFilterBilinear);
  Rsz("resize yuv420 2:3", "I420Scale bilinear", kW, kH, kBw, kBh, libyuv::kFilterBilinear);
  Add("resize luma 1:2", "ScalePlane bilinear", KIMGP_CS_YUV400, kW, kH, KIMGP_CS_YUV400,
      2 * kW, 2 * kH, [](Job& j) { kimgp_rsz(&j.src.img, &j.dst.img); }, [](Job& j) {
        libyuv::ScalePlane(j.src.p(0), j.src.s(0), kW, kH, j.dst.p(0), j.dst.s(0), 2 * kW,
                           2 * kH, libyuv::kFilterBilinear);
      });
  Add("resize rgba8888 3:2", "ARGBScale box", KIMGP_CS_RGBA8888, kBw, kBh, KIMGP_CS_RGBA8888, kW,
      kH, [](Job& j) { kimgp_rsz(&j.src.img, &j.dst.img); }, [](Job& j) {
        libyuv::ARGBScale(j.src.p(0), j.src.s(0), kBw, kBh, j.dst.p(0), j.dst.s(0), kW, kH,
                          libyuv::kFilterBox);
      });
}

// Resize with rotation, conversion with rotation, resize with conversion:
// libyuv's two steps through a temporary.
void AddFused() {
  const auto rsz_rot = [](const char* name, const char* peer, int32_t dw, int32_t dh,
                          uint32_t rot, libyuv::RotationMode mode) {
    Add(name, peer, KIMGP_CS_YUV420, kBw, kBh, KIMGP_CS_YUV420, dh, dw,
        [rot](Job& j) { kimgp_rsz_rot(&j.src.img, static_cast<int32_t>(rot), &j.dst.img); },
        [mode, dw, dh](Job& j) {
          I420Scale(j.src, j.tmp, libyuv::kFilterBox);
          I420Rotate(j.tmp, j.dst, dw, dh, mode);
        },
        KIMGP_CS_YUV420, dw, dh);
  };
  rsz_rot("rsz_rot yuv420 3:2 90r", "I420Scale box + I420Rotate 90", kW, kH, KIMGP_ROT_90R,
          libyuv::kRotate90);
  rsz_rot("rsz_rot yuv420 3:1 90l", "I420Scale box + I420Rotate 270", kBw / 3, kBh / 3,
          KIMGP_ROT_90L, libyuv::kRotate270);

  Add("csc_rot yuyv>bgra8888 90r", "YUY2ToARGB + ARGBRotate 90", KIMGP_CS_YUYV, kW, kH,
      KIMGP_CS_BGRA8888, kH, kW,
      [](Job& j) { kimgp_csc_rot(&j.src.img, KIMGP_ROT_90R, &j.dst.img); },
      [](Job& j) {
        libyuv::YUY2ToARGB(j.src.p(0), j.src.s(0), j.tmp.p(0), j.tmp.s(0), kW, kH);
        libyuv::ARGBRotate(j.tmp.p(0), j.tmp.s(0), j.dst.p(0), j.dst.s(0), kW, kH,
                           libyuv::kRotate90);
      },
      KIMGP_CS_BGRA8888, kW, kH);

  const auto rsz_csc = [](const char* name, const char* peer, int32_t scs, int32_t dcs,
                          int32_t mid_cs, Fn libyuv) {
    Add(name, peer, scs, kBw, kBh, dcs, kW, kH,
        [](Job& j) { kimgp_rsz_csc(&j.src.img, &j.dst.img); }, std::move(libyuv), mid_cs, kW,
        kH);
  };
  rsz_csc("rsz_csc yuv420>rgb565 3:2", "I420Scale box + I420ToRGB565", KIMGP_CS_YUV420,
          KIMGP_CS_RGB565, KIMGP_CS_YUV420, [f = Conv(libyuv::I420ToRGB565)](Job& j) {
            I420Scale(j.src, j.tmp, libyuv::kFilterBox);
            f(j.tmp, j.dst);
          });
  rsz_csc("rsz_csc yuv420>rgb888 3:2", "I420Scale box + I420ToRAW", KIMGP_CS_YUV420,
          KIMGP_CS_RGB888, KIMGP_CS_YUV420, [f = Conv(libyuv::I420ToRAW)](Job& j) {
            I420Scale(j.src, j.tmp, libyuv::kFilterBox);
            f(j.tmp, j.dst);
          });
  rsz_csc("rsz_csc rgba8888>nv12 3:2", "ARGBScale box + ABGRToNV12", KIMGP_CS_RGBA8888,
          KIMGP_CS_NV12, KIMGP_CS_RGBA8888, [f = Conv(libyuv::ABGRToNV12)](Job& j) {
            libyuv::ARGBScale(j.src.p(0), j.src.s(0), kBw, kBh, j.tmp.p(0), j.tmp.s(0), kW, kH,
                              libyuv::kFilterBox);
            f(j.tmp, j.dst);
          });
  rsz_csc("rsz_csc nv12>nv21 3:2", "NV12Scale box + CopyPlane + SwapUVPlane", KIMGP_CS_NV12,
          KIMGP_CS_NV21, KIMGP_CS_NV12, [](Job& j) {
            Frame& m = j.tmp;
            libyuv::NV12Scale(j.src.p(0), j.src.s(0), j.src.p(1), j.src.s(1), kBw, kBh, m.p(0),
                              m.s(0), m.p(1), m.s(1), kW, kH, libyuv::kFilterBox);
            libyuv::CopyPlane(m.p(0), m.s(0), j.dst.p(0), j.dst.s(0), kW, kH);
            libyuv::SwapUVPlane(m.p(1), m.s(1), j.dst.p(1), j.dst.s(1), kW / 2, kH / 2);
          });
}

// Crop of 320x240 out of 480x360 at (80, 60), padding of 320x240 into it.
void AddFrame() {
  Add("crop yuv420", "I420Copy from the offset", KIMGP_CS_YUV420, kBw, kBh, KIMGP_CS_YUV420, kW,
      kH, [](Job& j) {
        j.src.img.x = 80;
        j.src.img.y = 60;
        kimgp_crop(&j.src.img, &j.dst.img);
      },
      [](Job& j) { I420Copy(j.src, 80, 60, j.dst, 0, 0, kW, kH); });
  Add("crop rgba8888", "CopyPlane from the offset", KIMGP_CS_RGBA8888, kBw, kBh,
      KIMGP_CS_RGBA8888, kW, kH, [](Job& j) {
        j.src.img.x = 80;
        j.src.img.y = 60;
        kimgp_crop(&j.src.img, &j.dst.img);
      },
      [](Job& j) {
        libyuv::CopyPlane(j.src.p(0) + 60 * j.src.s(0) + 4 * 80, j.src.s(0), j.dst.p(0),
                          j.dst.s(0), 4 * kW, kH);
      });
  Add("padding yuv420", "I420Rect, then I420Copy", KIMGP_CS_YUV420, kW, kH, KIMGP_CS_YUV420, kBw,
      kBh, [](Job& j) {
        j.src.img.x = 80;
        j.src.img.y = 60;
        kimgp_padding(&j.src.img, &j.dst.img);
      },
      [](Job& j) {
        Frame& d = j.dst;
        libyuv::I420Rect(d.p(0), d.s(0), d.p(1), d.s(1), d.p(2), d.s(2), 0, 0, kBw, kBh, 16, 128,
                         128);
        I420Copy(j.src, 0, 0, d, 80, 60, kW, kH);
      });
}

// Tone mapping on one thread (tables, then every row) beside libyuv's plain
// BT.2020 P010 to ARGB conversion (no tone mapping), on a lit P010 picture.
void AddHdr() {
  Add("hdr p010>rgba8888 1 thread", "P010ToARGBMatrix (BT.2020, no tone map)",
      KIMGP_CS_P010LE, kW, kH, KIMGP_CS_RGBA8888, kW, kH,
      [](Job& j) {
        kimgp_hdr_work w{};
        hdr::InitWork(&w, &j.src.img, &j.dst.img, 0, false);
        hdr::BuildTables(&w, 1000);
        _kimgp_hdr10_to_sdr8(&w, 0, kH);
      },
      [](Job& j) {
        libyuv::P010ToARGBMatrix(reinterpret_cast<const uint16_t*>(j.src.p(0)), j.src.s(0) / 2,
                                 reinterpret_cast<const uint16_t*>(j.src.p(1)), j.src.s(1) / 2,
                                 j.dst.p(0), j.dst.s(0), &libyuv::kYuv2020Constants, kW, kH);
      });
  Rows().back().prep = [](Job& j) { LightP010(&j.src); };
}

// The DCT-domain resizer with its two workers beside libyuv's box filter. The
// context is made on the first call, so its set-up cancels out of the
// difference of the N and 2N runs, as the x86 benchmark makes it once.
void AddDct() {
  struct Ctx {
    kimgp_img io[2];
    kimgp_rsz_new_ctx ctx;
    int16_t*** vmat = nullptr;
    int16_t*** hmat = nullptr;
    bool made = false;
  };
  const auto row = [](const char* name, int32_t sw, int32_t sh, int32_t dw, int32_t dh,
                      int32_t mode) {
    auto c = std::make_shared<Ctx>();
    Add(name, "I420Scale box", KIMGP_CS_YUV420, sw, sh, KIMGP_CS_YUV420, dw, dh,
        [c, mode](Job& j) {
          if (!c->made) {
            c->io[0] = j.src.img;
            c->io[1] = j.dst.img;
            if (kimgp_rsz_new_init(c->io, &c->ctx, &c->vmat, &c->hmat, mode) != 0) std::abort();
            c->made = true;
          }
          kimgp_rsz_new(c->io, &c->ctx, c->vmat, c->hmat);
        },
        [](Job& j) { I420Scale(j.src, j.dst, libyuv::kFilterBox); });
  };
  row("dct resize yuv420 3:2", kBw, kBh, kW, kH, 0);
  row("dct resize yuv420 2:1 (direct, pre 2)", kW, kH, kW / 2, kH / 2, 2);
}

// Rows libyuv has no counterpart for: compared with the scalar build.
void AddUnpaired() {
  Add("dbf8x8_yuv yuv420 s8", "", KIMGP_CS_YUV420, kW, kH, KIMGP_CS_YUV420, 2, 2,
      [](Job& j) { kimgp_dbf8x8_yuv(&j.src.img, 8); }, nullptr);
  Add("vqe_de luma", "", KIMGP_CS_YUV420, kW, kH, KIMGP_CS_YUV420, kW, kH,
      [](Job& j) { kimgp_vqe_de(&j.src.img, &j.dst.img, 4); }, nullptr);
}

}  // namespace
}  // namespace bench
}  // namespace kelo

int main(int argc, char** argv) {
  using kelo::bench::Rows;
  kelo::bench::AddCsc();
  kelo::bench::AddCscNew();
  kelo::bench::AddCopy();
  kelo::bench::AddRot();
  kelo::bench::AddRsz();
  kelo::bench::AddFused();
  kelo::bench::AddFrame();
  kelo::bench::AddHdr();
  kelo::bench::AddDct();
  kelo::bench::AddUnpaired();
  if (argc == 2 && std::strcmp(argv[1], "--list") == 0) {
    for (const auto& r : Rows()) {
      std::printf("%s\t%lld\t%s\n", r.name.c_str(), static_cast<long long>(r.pixels),
                  r.peer.c_str());
    }
    return 0;
  }
  if (argc != 4) {
    std::fprintf(stderr, "usage: %s --list | <row> ours|libyuv <N>\n", argv[0]);
    return 2;
  }
  // qemu-user shows the guest the host's /proc/cpuinfo, where libyuv finds no
  // NEON: switch its NEON rows on by hand.
  libyuv::SetCpuFlags(libyuv::kCpuInitialized | libyuv::kCpuHasARM | libyuv::kCpuHasNEON);
  for (const auto& r : Rows()) {
    if (r.name != argv[1]) continue;
    const bool ours = std::strcmp(argv[2], "ours") == 0;
    const auto& fn = ours ? r.ours : r.libyuv;
    if (!fn) {
      std::fprintf(stderr, "%s: no libyuv peer\n", argv[1]);
      return 2;
    }
    auto job = r.make();
    if (r.prep) r.prep(*job);
    for (long n = std::atol(argv[3]); n > 0; --n) fn(*job);
    return 0;
  }
  std::fprintf(stderr, "%s: no such row (--list)\n", argv[1]);
  return 2;
}
