// A frame owned by the kelo program: its format, picture size, plane buffers
// and the kimgp_img descriptor that points into them.
#ifndef KELO_TOOLS_KELO_IMAGE_H_
#define KELO_TOOLS_KELO_IMAGE_H_

#include <cstdint>
#include <vector>

#include "kimgp_img.h"
#include "tools/kelo/format.h"

namespace kelo {
namespace cli {

class Image {
 public:
  Image() = default;
  // A zeroed w x h frame laid out by Layout(); the size must already have
  // passed CheckFrameSize.
  Image(const FormatInfo& f, int32_t w, int32_t h, int32_t pad = 0);
  Image(const Image& other);
  Image& operator=(const Image& other);
  Image(Image&& other) noexcept;
  Image& operator=(Image&& other) noexcept;

  bool empty() const { return fmt_ == nullptr; }
  const FormatInfo& format() const { return *fmt_; }
  int32_t width() const { return w_; }
  int32_t height() const { return h_; }
  int planes() const { return fmt_ ? fmt_->planes : 0; }
  bool SameShape(const Image& o) const {
    return fmt_ == o.fmt_ && w_ == o.w_ && h_ == o.h_;
  }

  const kimgp_img& img() const { return img_; }
  kimgp_img* mutable_img() { return &img_; }
  uint8_t* plane(int i) { return img_.plane[i]; }
  const uint8_t* plane(int i) const { return img_.plane[i]; }
  int32_t stride(int i) const { return img_.stride[i]; }
  // Bytes of one picture row of plane i, without padding.
  int32_t RowBytes(int i) const;

  // The frame as a raw file holds it (tight rows, or whole tiles), and the
  // bytes of plane i there.
  int64_t FileBytes() const;
  int64_t FilePlaneBytes(int i) const;
  // Calls fn(pointer, bytes) for each run of the raw file layout in order:
  // each row of each plane, or each tiled plane as one run.
  template <typename Fn>
  void ForEachFileRun(Fn&& fn) const;

 private:
  void Bind();

  const FormatInfo* fmt_ = nullptr;
  int32_t w_ = 0, h_ = 0;
  kimgp_img img_{};
  std::vector<uint8_t> buf_[3];
};

template <typename Fn>
void Image::ForEachFileRun(Fn&& fn) const {
  for (int i = 0; i < planes(); ++i) {
    uint8_t* p = img_.plane[i];
    if (IsTiled(*fmt_)) {
      fn(p, static_cast<size_t>(FilePlaneBytes(i)));
      continue;
    }
    const size_t row = static_cast<size_t>(RowBytes(i));
    for (int32_t y = 0; y < img_.height[i]; ++y) {
      fn(p + int64_t{y} * img_.stride[i], row);
    }
  }
}

}  // namespace cli
}  // namespace kelo

#endif  // KELO_TOOLS_KELO_IMAGE_H_
