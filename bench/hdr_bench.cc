// Tone mapping of P010LE frames: 4K with the four threads of
// kimgp_hdr_to_sdr, and 1080p (the entry with its four threads, and the
// slice conversion alone on one thread) beside libyuv's plain BT.2020 P010
// to ARGB conversion (no tone mapping, one thread).
#include <libyuv/convert_argb.h>

#include <functional>
#include <memory>

#include "bench/bench.h"
#include "bench/bench_frame.h"
#include "imgp/hdr/hdr_internal.h"
#include "kimgp_hdr.h"

namespace kelo {
namespace bench {
namespace {

// A P010LE frame with a lit picture: luma sweeping 64 .. 940, chroma around
// the middle.
struct HdrPair {
  HdrPair(int32_t w, int32_t h, int32_t dcs) : src(KIMGP_CS_P010LE, w, h), dst(dcs, w, h) {
    LightP010(&src);
  }
  Frame src, dst;
};

void P010ToArgb(HdrPair* p) {
  libyuv::P010ToARGBMatrix(reinterpret_cast<const uint16_t*>(p->src.p(0)), p->src.s(0) / 2,
                           reinterpret_cast<const uint16_t*>(p->src.p(1)), p->src.s(1) / 2,
                           p->dst.p(0), p->dst.s(0), &libyuv::kYuv2020Constants, p->src.img.width[0],
                           p->src.img.height[0]);
}

void EntryRow(const char* name, int32_t w, int32_t h, int32_t dcs, bool peer = false) {
  auto p = std::make_shared<HdrPair>(w, h, dcs);
  Register({name, peer ? "P010ToARGBMatrix (BT.2020, no tone map, one thread)" : "",
            [p] { kimgp_hdr_to_sdr(&p->src.img, &p->dst.img, 1); },
            peer ? std::function<void()>([p] { P010ToArgb(p.get()); }) : std::function<void()>(),
            p->dst.bytes});
}

const bool kRegistered = [] {
  EntryRow("hdr p010>rgba8888 3840x2160 4 threads", 3840, 2160, KIMGP_CS_RGBA8888);
  EntryRow("hdr p010>nv12 3840x2160 4 threads", 3840, 2160, KIMGP_CS_NV12);
  EntryRow("hdr p010>rgba8888 1920x1080 4 threads", 1920, 1080, KIMGP_CS_RGBA8888, true);
  // One thread: the entry's work (tables, then every row) without its
  // threads.
  auto p = std::make_shared<HdrPair>(1920, 1080, KIMGP_CS_RGBA8888);
  Register({"hdr p010>rgba8888 1920x1080 1 thread", "P010ToARGBMatrix (BT.2020, no tone map)",
            [p] {
              kimgp_hdr_work w{};
              hdr::InitWork(&w, &p->src.img, &p->dst.img, 0, false);
              hdr::BuildTables(&w, 1000);
              _kimgp_hdr10_to_sdr8(&w, 0, 1080);
            },
            [p] { P010ToArgb(p.get()); },
            p->dst.bytes});
  return true;
}();

}  // namespace
}  // namespace bench
}  // namespace kelo
