// Frame files: raw planes, Y4M and PNG, and the built-in pattern as an input.
//
// Readers deliver frames one at a time into an Image; writers take them in
// order. Every problem with a file (cannot open, bad header, truncated
// frame, bad PNG data) is thrown as a RunError naming the file.
#ifndef KELO_TOOLS_KELO_IO_H_
#define KELO_TOOLS_KELO_IO_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tools/kelo/format.h"
#include "tools/kelo/image.h"

namespace kelo {
namespace cli {

enum class FileType { kRaw, kY4m, kPng };

const char* FileTypeName(FileType t);
// .y4m and .png (any case) by extension, raw otherwise.
FileType FileTypeOf(const std::string& path);
// "raw", "y4m", "png"; false for anything else.
bool ParseFileType(const std::string& name, FileType* t);

// What a reader delivers.
struct StreamInfo {
  std::string source;  // path, or "pattern"
  const FormatInfo* format = nullptr;
  int32_t width = 0, height = 0;
  int64_t frames = -1;  // count known before reading, else -1
  bool frames_exact = true;  // false when `frames` is an estimate
  // The tags of a Y4M header in file order ("W640", "F25:1", "C420jpeg",
  // ...), so that a Y4M output can repeat them.
  std::vector<std::string> y4m_tags;
  std::string detail;  // one line about the source's own encoding
};

class FrameReader {
 public:
  virtual ~FrameReader() = default;
  const StreamInfo& info() const { return info_; }
  // Reads the next frame into *out, reallocating it when its shape differs.
  // Returns false at the end of the input.
  virtual bool Read(Image* out) = 0;
  // Steps over the next frame, still reporting a truncated one. Returns
  // false at the end of the input.
  virtual bool Skip();

 protected:
  StreamInfo info_;
  int64_t index_ = 0;  // frames delivered so far
};

class FrameWriter {
 public:
  virtual ~FrameWriter() = default;
  virtual void Write(const Image& frame) = 0;
  // Completes the output; throws when it could not be written.
  virtual void Finish() = 0;
  // Files written, after Finish().
  const std::vector<std::string>& written() const { return written_; }

 protected:
  std::vector<std::string> written_;
};

std::unique_ptr<FrameReader> OpenRawReader(const std::string& path,
                                           const FormatInfo& f, int32_t w,
                                           int32_t h);
std::unique_ptr<FrameReader> OpenY4mReader(const std::string& path);
std::unique_ptr<FrameReader> OpenPngReader(const std::string& path);
// `frames` frames of the pattern, frame i drawn with index i.
std::unique_ptr<FrameReader> OpenPatternReader(const FormatInfo& f, int32_t w,
                                               int32_t h, int64_t frames);

// A writer of the given type for frames shaped like `like`. Refuses (with a
// RunError) formats the file type cannot hold. A Y4M writer repeats the tags
// of a Y4M source and otherwise writes "F25:1 Ip A1:1". A PNG writer writes
// one image to `path`, or, given several frames, path-0001.png,
// path-0002.png, ... (the number before the extension).
std::unique_ptr<FrameWriter> CreateWriter(const std::string& path,
                                          FileType type,
                                          const StreamInfo& like);

// Y4M colour tag (without the C) for a format; nullptr when Y4M cannot hold
// it. FormatForY4mTag is the reverse, for every tag kelo reads.
const char* Y4mTagFor(const FormatInfo& f);
const FormatInfo* FormatForY4mTag(const std::string& tag);

// PNG of one frame. Reading gives rgb888, or rgba8888 when the file has
// alpha; `detail` (may be null) receives the file's own colour type.
Image ReadPng(const std::string& path, std::string* detail = nullptr);
// RGB formats as RGB or RGBA (5-6-5 expanded to 8 bits), yuv400 as gray,
// other YUV formats as their luma plane in gray (16-bit layouts reduced to
// their top 8 significant bits).
void WritePng(const std::string& path, const Image& frame);
// How WritePng renders a format, for help and demo lines.
std::string PngRendering(const FormatInfo& f);

// Naming of the numbered PNG files: "out.png", 3 -> "out-0003.png".
std::string NumberedPath(const std::string& path, int64_t number);

}  // namespace cli
}  // namespace kelo

#endif  // KELO_TOOLS_KELO_IO_H_
