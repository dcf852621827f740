#include "tools/kelo/image.h"

#include <utility>

namespace kelo {
namespace cli {

Image::Image(const FormatInfo& f, int32_t w, int32_t h, int32_t pad)
    : fmt_(&f), w_(w), h_(h) {
  Layout(f, w, h, pad, &img_);
  for (int i = 0; i < f.planes; ++i) {
    buf_[i].assign(static_cast<size_t>(frame::PlaneBytes(img_, i)), 0);
  }
  Bind();
}

Image::Image(const Image& other)
    : fmt_(other.fmt_), w_(other.w_), h_(other.h_), img_(other.img_) {
  for (int i = 0; i < 3; ++i) buf_[i] = other.buf_[i];
  Bind();
}

Image& Image::operator=(const Image& other) {
  if (this != &other) {
    Image copy(other);
    *this = std::move(copy);
  }
  return *this;
}

Image::Image(Image&& other) noexcept
    : fmt_(other.fmt_), w_(other.w_), h_(other.h_), img_(other.img_) {
  for (int i = 0; i < 3; ++i) buf_[i] = std::move(other.buf_[i]);
  Bind();
  other.fmt_ = nullptr;
  other.w_ = other.h_ = 0;
  other.img_ = kimgp_img{};
}

Image& Image::operator=(Image&& other) noexcept {
  if (this != &other) {
    fmt_ = other.fmt_;
    w_ = other.w_;
    h_ = other.h_;
    img_ = other.img_;
    for (int i = 0; i < 3; ++i) buf_[i] = std::move(other.buf_[i]);
    Bind();
    other.fmt_ = nullptr;
    other.w_ = other.h_ = 0;
    other.img_ = kimgp_img{};
  }
  return *this;
}

void Image::Bind() {
  for (int i = 0; i < 4; ++i) img_.plane[i] = nullptr;
  for (int i = 0; i < planes(); ++i) img_.plane[i] = buf_[i].data();
}

int32_t Image::RowBytes(int i) const {
  return frame::PlaneOf(*fmt_, i, w_, h_).row_bytes;
}

int64_t Image::FileBytes() const { return FileFrameBytes(*fmt_, w_, h_); }

int64_t Image::FilePlaneBytes(int i) const {
  return cli::FilePlaneBytes(*fmt_, i, w_, h_);
}

}  // namespace cli
}  // namespace kelo
