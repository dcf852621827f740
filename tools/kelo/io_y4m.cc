// Y4M: a header line "YUV4MPEG2 W.. H.. [F..] [I..] [A..] [C..] [X..]" and
// frames, each a "FRAME" line (parameters after FRAME are skipped) and the
// planes tightly packed. 10-bit tags hold little-endian 16-bit words.
#include <cctype>
#include <cstring>
#include <utility>

#include "tools/kelo/error.h"
#include "tools/kelo/io_internal.h"

namespace kelo {
namespace cli {
namespace {

// Header and FRAME lines longer than this are refused.
constexpr size_t kMaxLine = 4096;
constexpr char kMagic[] = "YUV4MPEG2";

struct TagFormat {
  const char* tag;
  int32_t cs;
};
// The first tag listed for a code is the one written for it.
const TagFormat kTags[] = {
    {"420jpeg", KIMGP_CS_YUV420},  {"420", KIMGP_CS_YUV420},
    {"420paldv", KIMGP_CS_YUV420}, {"420mpeg2", KIMGP_CS_YUV420},
    {"422", KIMGP_CS_YUV422N},     {"444", KIMGP_CS_YUV444},
    {"mono", KIMGP_CS_YUV400},     {"420p10", KIMGP_CS_YUV420PLANAR16},
    {"422p10", kCsYuv422P16},      {"444p10", kCsYuv444P16},
    {"mono10", kCsYuv400P16},
};

// Reads up to and without the next '\n'. Returns false at a clean end of
// file before any byte. Throws `mismatch` as soon as the line turns out not
// to start with `start`, and an error for a line that is too long or
// unterminated.
bool ReadLine(File* file, const std::string& what, const std::string& start,
              const std::string& mismatch, std::string* line) {
  line->clear();
  for (;;) {
    char c;
    if (file->Read(&c, 1) == 0) {
      if (line->empty()) return false;
      if (line->size() < start.size()) break;
      throw RunError(file->path() + ": " + what + " ends without a newline");
    }
    if (c == '\n') break;
    if (line->size() >= kMaxLine) {
      throw RunError(file->path() + ": " + what + " is longer than " +
                     std::to_string(kMaxLine) + " bytes");
    }
    line->push_back(c);
    if (line->size() == start.size() && *line != start) break;
  }
  // The start must be followed by a space or the end of the line.
  if (line->compare(0, start.size(), start) != 0 ||
      (line->size() > start.size() && (*line)[start.size()] != ' ')) {
    throw RunError(file->path() + ": " + mismatch);
  }
  return true;
}

// Digits only, 1 .. kMaxDimension.
bool ParseDimension(const std::string& s, int32_t* out) {
  if (s.empty() || s.size() > 6) return false;
  int32_t v = 0;
  for (char c : s) {
    if (!std::isdigit(static_cast<unsigned char>(c))) return false;
    v = v * 10 + (c - '0');
  }
  if (v < 1 || v > kMaxDimension) return false;
  *out = v;
  return true;
}

// "n:d" with decimal digits on both sides.
bool IsRatio(const std::string& s) {
  const size_t colon = s.find(':');
  if (colon == std::string::npos || colon == 0 || colon + 1 == s.size() ||
      s.size() > 24) {
    return false;
  }
  for (size_t i = 0; i < s.size(); ++i) {
    if (i != colon && !std::isdigit(static_cast<unsigned char>(s[i]))) {
      return false;
    }
  }
  return true;
}

std::vector<std::string> SplitSpaces(const std::string& s) {
  std::vector<std::string> out;
  size_t i = 0;
  while (i < s.size()) {
    const size_t j = s.find(' ', i);
    const size_t end = j == std::string::npos ? s.size() : j;
    if (end > i) out.push_back(s.substr(i, end - i));
    i = end + 1;
  }
  return out;
}

class Y4mReader : public FrameReader {
 public:
  explicit Y4mReader(File file) : file_(std::move(file)) {
    info_.source = file_.path();
    std::string line;
    const char* not_y4m = "not a Y4M file (no YUV4MPEG2 header)";
    if (!ReadLine(&file_, "the Y4M header", kMagic, not_y4m, &line)) {
      throw RunError(file_.path() + ": " + not_y4m);
    }
    header_bytes_ = static_cast<int64_t>(line.size()) + 1;
    ParseTags(SplitSpaces(line.substr(sizeof(kMagic) - 1)));
    frame_bytes_ = FileFrameBytes(*info_.format, info_.width, info_.height);
    const int64_t size = file_.Size();
    if (size >= 0) {
      // An estimate for progress; FRAME lines may carry parameters.
      info_.frames = (size - header_bytes_) / (frame_bytes_ + 6);
      info_.frames_exact = false;
    }
  }

  bool Read(Image* out) override {
    if (!NextFrameLine()) return false;
    Reshape(*info_.format, info_.width, info_.height, out);
    const int64_t got = ReadPayload(&file_, out);
    if (got < frame_bytes_) throw RunError(Truncated(got));
    ++index_;
    return true;
  }

  bool Skip() override {
    if (!NextFrameLine()) return false;
    const int64_t size = file_.Size();
    const int64_t pos = ftello(file_.get());
    if (size < 0 || pos < 0) {
      Image scratch;
      Reshape(*info_.format, info_.width, info_.height, &scratch);
      const int64_t got = ReadPayload(&file_, &scratch);
      if (got < frame_bytes_) throw RunError(Truncated(got));
    } else {
      if (size - pos < frame_bytes_) throw RunError(Truncated(size - pos));
      file_.SeekForward(frame_bytes_);
    }
    ++index_;
    return true;
  }

 private:
  void Bad(const std::string& why) const {
    throw RunError(file_.path() + ": bad Y4M header: " + why);
  }

  void ParseTags(const std::vector<std::string>& tags) {
    bool have_w = false, have_h = false;
    std::string colour = "420jpeg";
    for (const std::string& t : tags) {
      const std::string v = t.substr(1);
      switch (t[0]) {
        case 'W':
          if (!ParseDimension(v, &info_.width)) Bad("width '" + t + "'");
          have_w = true;
          break;
        case 'H':
          if (!ParseDimension(v, &info_.height)) Bad("height '" + t + "'");
          have_h = true;
          break;
        case 'F':
        case 'A':
          if (!IsRatio(v)) Bad("'" + t + "' is not a ratio n:d");
          break;
        case 'I':
          if (v.size() != 1 || std::strchr("ptbm?", v[0]) == nullptr) {
            Bad("interlacing '" + t + "'");
          }
          break;
        case 'C':
          colour = v;
          break;
        default:
          break;  // X and unknown tags are kept and passed on
      }
      info_.y4m_tags.push_back(t);
    }
    if (!have_w || !have_h) Bad("W and H are required");
    info_.format = FormatForY4mTag(colour);
    if (info_.format == nullptr) {
      throw RunError(file_.path() + ": unsupported Y4M colour space C" +
                     colour);
    }
    const std::string why =
        CheckFrameSize(*info_.format, info_.width, info_.height);
    if (!why.empty()) throw RunError(file_.path() + ": " + why);
    info_.detail = "Y4M C" + colour;
  }

  // Consumes the FRAME line of the next frame; false at the end of file.
  bool NextFrameLine() {
    std::string line;
    const std::string n = std::to_string(index_ + 1);
    return ReadLine(&file_, "frame " + n + " header", "FRAME",
                    "frame " + n + " does not start with FRAME", &line);
  }

  std::string Truncated(int64_t got) const {
    return file_.path() + ": frame " + std::to_string(index_ + 1) +
           " is truncated: " + std::to_string(got) + " of " +
           std::to_string(frame_bytes_) + " bytes";
  }

  File file_;
  int64_t header_bytes_ = 0;
  int64_t frame_bytes_ = 0;
};

// The header for frames shaped like `like`; throws when Y4M cannot hold
// their format.
std::string HeaderFor(const std::string& path, const StreamInfo& like) {
  const char* tag = Y4mTagFor(*like.format);
  if (tag == nullptr) {
    throw RunError(path + ": Y4M cannot hold " + like.format->name +
                   " frames (it takes yuv420, yuv422n, yuv444, yuv400 and "
                   "their 10-bit forms yuv420p16, yuv422p16, yuv444p16, "
                   "yuv400p16)");
  }
  std::string header = kMagic;
  auto add = [&](const std::string& t) { header += " " + t; };
  bool have_c = false;
  for (const std::string& t : like.y4m_tags) {
    if (t[0] == 'W') {
      add("W" + std::to_string(like.width));
    } else if (t[0] == 'H') {
      add("H" + std::to_string(like.height));
    } else if (t[0] == 'C') {
      have_c = true;
      const bool same = FormatForY4mTag(t.substr(1)) == like.format;
      add(same ? t : "C" + std::string(tag));
    } else {
      add(t);
    }
  }
  if (like.y4m_tags.empty()) {
    add("W" + std::to_string(like.width));
    add("H" + std::to_string(like.height));
    add("F25:1");
    add("Ip");
    add("A1:1");
  }
  // A source without a C tag was 4:2:0; other formats need the tag added.
  if (!have_c &&
      (like.y4m_tags.empty() || like.format->cs != KIMGP_CS_YUV420)) {
    add("C" + std::string(tag));
  }
  return header + "\n";
}

class Y4mWriter : public FrameWriter {
 public:
  Y4mWriter(File file, const std::string& header) : file_(std::move(file)) {
    file_.Write(header);
  }

  void Write(const Image& frame) override {
    file_.Write("FRAME\n");
    WritePayload(&file_, frame);
  }

  void Finish() override {
    file_.Close();
    written_.push_back(file_.path());
  }

 private:
  File file_;
};

}  // namespace

const char* Y4mTagFor(const FormatInfo& f) {
  for (const TagFormat& t : kTags) {
    if (t.cs == f.cs) return t.tag;
  }
  return nullptr;
}

const FormatInfo* FormatForY4mTag(const std::string& tag) {
  for (const TagFormat& t : kTags) {
    if (tag == t.tag) return LookupFormat(t.cs);
  }
  return nullptr;
}

std::unique_ptr<FrameReader> OpenY4mReader(const std::string& path) {
  return std::make_unique<Y4mReader>(File::OpenRead(path));
}

std::unique_ptr<FrameWriter> CreateY4mWriter(const std::string& path,
                                             const StreamInfo& like) {
  const std::string header = HeaderFor(path, like);  // before creating the file
  return std::make_unique<Y4mWriter>(File::OpenWrite(path), header);
}

}  // namespace cli
}  // namespace kelo
