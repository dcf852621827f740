// kelo resize --dct: the DCT-domain downscaler over every frame.
#include "tools/kelo/dct_resize.h"

#include <cstring>
#include <memory>

#include "kimgp_dctrsz.h"
#include "kimgp_rsz.h"
#include "tools/kelo/error.h"
#include "tools/kelo/ops.h"

namespace kelo {
namespace cli {
namespace {

bool Takes(int32_t cs) {
  return cs == KIMGP_CS_YUV420 || cs == KIMGP_CS_NV12 || cs == KIMGP_CS_NV21 ||
         (cs >= KIMGP_CS_RGBA8888 && cs <= KIMGP_CS_ABGR8888);
}

// One context for a stream: made on the first frame, released at the end.
class DctResizer {
 public:
  explicit DctResizer(int32_t mode) : mode_(mode) {}
  DctResizer(const DctResizer&) = delete;
  DctResizer& operator=(const DctResizer&) = delete;
  ~DctResizer() {
    if (ready_) kimgp_rsz_new_deinit(io_, &ctx_, vmat_, hmat_);
  }

  void Run(const Image& src, Image* dst) {
    io_[0] = src.img();
    io_[1] = dst->img();
    if (!ready_) {
      if (kimgp_rsz_new_init(io_, &ctx_, &vmat_, &hmat_, mode_) != 0) {
        throw RunError("kimgp_rsz_new_init: out of memory");
      }
      ready_ = true;
    }
    const bool four = src.img().cs >= KIMGP_CS_RGBA8888;
    const int32_t status = four ? kimgp_rsz_new_rgba8888(io_, &ctx_, vmat_, hmat_)
                                : kimgp_rsz_new(io_, &ctx_, vmat_, hmat_);
    if (status != KIMGP_OK) {
      throw RunError(StatusMessage(four ? "kimgp_rsz_new_rgba8888" : "kimgp_rsz_new", status,
                                   src.format()));
    }
  }

 private:
  int32_t mode_;
  bool ready_ = false;
  kimgp_img io_[2];
  kimgp_rsz_new_ctx ctx_;
  int16_t*** vmat_ = nullptr;
  int16_t*** hmat_ = nullptr;
};

void Demo(DemoContext* demo) {
  const int32_t w = demo->width(), h = demo->height();
  const FormatInfo& f = *LookupFormat(KIMGP_CS_YUV420);
  const Image pattern = PatternImage(f, w, h);
  const int32_t dw = w * 2 / 5, dh = h * 2 / 5;
  Image plain(f, dw, dh), dct(f, dw, dh);
  const int32_t status = kimgp_rsz(&pattern.img(), plain.mutable_img());
  if (status != KIMGP_OK) throw RunError(StatusMessage("kimgp_rsz", status, f));
  DctResizer(0).Run(pattern, &dct);
  demo->Emit("resize-yuv420-two-fifths.png", plain,
             "pattern in yuv420 scaled to two fifths by kimgp_rsz (averages)");
  demo->Emit("resize-yuv420-two-fifths-dct.png", dct,
             "the same by the DCT-domain downscaler kimgp_rsz_new");
}

}  // namespace

bool DctResize(const Args* args, FrameReader* reader, Image* dst, const std::string& out,
               FileType type, const StreamInfo& out_info, DemoContext* demo) {
  if (reader == nullptr) {
    if (demo != nullptr) Demo(demo);
    return false;
  }
  if (!args->Has("dct")) {
    if (args->Has("pre")) throw UsageError("resize: --pre needs --dct");
    return false;
  }
  const int64_t pre = args->GetInt("pre", 0, 0, 4);
  if (pre != 0 && pre != 2 && pre != 4) throw UsageError("resize: --pre must be 2 or 4");
  if (args->Has("mode")) throw UsageError("resize: --mode does not apply to --dct");
  const StreamInfo& info = reader->info();
  const FormatInfo& f = *info.format;
  if (!Takes(f.cs)) {
    throw RunError(std::string("kimgp_rsz_new: format ") + f.name +
                   " not supported (yuv420, nv12, nv21 and 4-byte RGB only)");
  }
  if (f.cs >= KIMGP_CS_RGBA8888 && pre != 0) {
    throw UsageError("resize: --pre applies to yuv420, nv12 and nv21 only");
  }
  if (out_info.width > info.width || out_info.height > info.height) {
    throw UsageError("resize: --dct only shrinks");
  }
  auto resizer = std::make_shared<DctResizer>(static_cast<int32_t>(pre));
  TransformFrames("resize", reader, dst, out, type, out_info,
                  [resizer](const Image& src, Image* d) { resizer->Run(src, d); });
  return true;
}

}  // namespace cli
}  // namespace kelo
