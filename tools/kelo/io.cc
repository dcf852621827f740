#include "tools/kelo/io.h"

#include <algorithm>
#include <cctype>

#include "tools/kelo/error.h"
#include "tools/kelo/io_internal.h"
#include "tools/kelo/pattern.h"

namespace kelo {
namespace cli {
namespace {

std::string Lower(std::string s) {
  std::transform(s.begin(), s.end(), s.begin(),
                 [](unsigned char c) { return std::tolower(c); });
  return s;
}

bool EndsWith(const std::string& s, const std::string& tail) {
  return s.size() >= tail.size() &&
         s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
}

class PatternReader : public FrameReader {
 public:
  PatternReader(const FormatInfo& f, int32_t w, int32_t h, int64_t frames) {
    info_.source = "pattern";
    info_.format = &f;
    info_.width = w;
    info_.height = h;
    info_.frames = frames;
    info_.detail = "built-in pattern";
  }
  bool Read(Image* out) override {
    if (index_ >= info_.frames) return false;
    Reshape(*info_.format, info_.width, info_.height, out);
    pattern::Draw(out->mutable_img(), static_cast<int>(index_ % 8));
    ++index_;
    return true;
  }
  bool Skip() override {
    if (index_ >= info_.frames) return false;
    ++index_;
    return true;
  }
};

}  // namespace

const char* FileTypeName(FileType t) {
  switch (t) {
    case FileType::kY4m: return "y4m";
    case FileType::kPng: return "png";
    default: return "raw";
  }
}

FileType FileTypeOf(const std::string& path) {
  const std::string p = Lower(path);
  if (EndsWith(p, ".y4m")) return FileType::kY4m;
  if (EndsWith(p, ".png")) return FileType::kPng;
  return FileType::kRaw;
}

bool ParseFileType(const std::string& name, FileType* t) {
  const std::string n = Lower(name);
  for (FileType c : {FileType::kRaw, FileType::kY4m, FileType::kPng}) {
    if (n == FileTypeName(c)) {
      *t = c;
      return true;
    }
  }
  return false;
}

std::unique_ptr<FrameReader> OpenPatternReader(const FormatInfo& f, int32_t w,
                                               int32_t h, int64_t frames) {
  return std::make_unique<PatternReader>(f, w, h, frames);
}

std::unique_ptr<FrameWriter> CreateWriter(const std::string& path,
                                          FileType type,
                                          const StreamInfo& like) {
  switch (type) {
    case FileType::kY4m: return CreateY4mWriter(path, like);
    case FileType::kPng: return CreatePngWriter(path);
    default: return CreateRawWriter(path);
  }
}

}  // namespace cli
}  // namespace kelo
