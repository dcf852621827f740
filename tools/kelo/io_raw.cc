// Raw frames: the planes of each frame tightly packed in plane order (tiled
// codes as whole tiles), any number of frames back to back.
#include <utility>

#include "tools/kelo/error.h"
#include "tools/kelo/io_internal.h"

namespace kelo {
namespace cli {

int64_t ReadPayload(File* file, Image* out) {
  int64_t total = 0;
  bool short_read = false;
  out->ForEachFileRun([&](uint8_t* p, size_t n) {
    if (short_read) return;
    const size_t got = file->Read(p, n);
    total += static_cast<int64_t>(got);
    short_read = got < n;
  });
  return total;
}

void WritePayload(File* file, const Image& frame) {
  frame.ForEachFileRun([&](uint8_t* p, size_t n) { file->Write(p, n); });
}

void Reshape(const FormatInfo& f, int32_t w, int32_t h, Image* out) {
  if (out->empty() || &out->format() != &f || out->width() != w ||
      out->height() != h) {
    *out = Image(f, w, h);
  }
}

namespace {

std::string Shape(const StreamInfo& s) {
  return std::to_string(s.width) + "x" + std::to_string(s.height) + " " +
         s.format->name;
}

class RawReader : public FrameReader {
 public:
  RawReader(File file, const FormatInfo& f, int32_t w, int32_t h)
      : file_(std::move(file)) {
    const std::string why = CheckFrameSize(f, w, h);
    if (!why.empty()) throw RunError(why);
    info_.source = file_.path();
    info_.format = &f;
    info_.width = w;
    info_.height = h;
    frame_bytes_ = FileFrameBytes(f, w, h);
    const int64_t size = file_.Size();
    if (size >= 0) {
      const int64_t rest = size % frame_bytes_;
      if (rest != 0) throw RunError(Partial(rest));
      info_.frames = size / frame_bytes_;
    }
    info_.detail = "raw, " + std::to_string(frame_bytes_) + " bytes a frame";
  }

  bool Read(Image* out) override {
    Reshape(*info_.format, info_.width, info_.height, out);
    const int64_t got = ReadPayload(&file_, out);
    if (got == 0) return false;
    if (got < frame_bytes_) throw RunError(Partial(got));
    ++index_;
    return true;
  }

  bool Skip() override {
    if (info_.frames < 0) return FrameReader::Skip();
    if (index_ >= info_.frames) return false;
    file_.SeekForward(frame_bytes_);
    ++index_;
    return true;
  }

 private:
  std::string Partial(int64_t bytes) const {
    return file_.path() + ": trailing partial frame of " +
           std::to_string(bytes) + " bytes (a " + Shape(info_) +
           " frame is " + std::to_string(frame_bytes_) + " bytes)";
  }

  File file_;
  int64_t frame_bytes_;
};

class RawWriter : public FrameWriter {
 public:
  explicit RawWriter(File file) : file_(std::move(file)) {}
  void Write(const Image& frame) override { WritePayload(&file_, frame); }
  void Finish() override {
    file_.Close();
    written_.push_back(file_.path());
  }

 private:
  File file_;
};

}  // namespace

bool FrameReader::Skip() {
  Image scratch;
  return Read(&scratch);
}

std::unique_ptr<FrameReader> OpenRawReader(const std::string& path,
                                           const FormatInfo& f, int32_t w,
                                           int32_t h) {
  return std::make_unique<RawReader>(File::OpenRead(path), f, w, h);
}

std::unique_ptr<FrameWriter> CreateRawWriter(const std::string& path) {
  return std::make_unique<RawWriter>(File::OpenWrite(path));
}

}  // namespace cli
}  // namespace kelo
