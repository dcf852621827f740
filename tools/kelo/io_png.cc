// PNG through libpng. libpng reports errors by longjmp, so each call into it
// happens in a small function that owns nothing: the setjmp there returns
// false with the message in the shared state, and all memory belongs to the
// caller, which cleans up normally.
#include <png.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

#include "tools/kelo/error.h"
#include "tools/kelo/io_internal.h"

namespace kelo {
namespace cli {
namespace {

struct PngState {
  std::FILE* fp = nullptr;
  png_structp png = nullptr;
  png_infop info = nullptr;
  char message[256] = "";
  // Image header, as read or to be written.
  png_uint_32 width = 0, height = 0;
  int bit_depth = 0, color_type = 0, interlace = 0;
  int channels = 0;  // after the reading transforms
  png_bytep* rows = nullptr;
};

void OnError(png_structp png, png_const_charp msg) {
  auto* s = static_cast<PngState*>(png_get_error_ptr(png));
  std::snprintf(s->message, sizeof(s->message), "%s", msg);
  png_longjmp(png, 1);
}

void OnWarning(png_structp, png_const_charp) {}

void ReadData(png_structp png, png_bytep data, size_t n) {
  auto* s = static_cast<PngState*>(png_get_io_ptr(png));
  if (std::fread(data, 1, n, s->fp) != n) {
    png_error(png, std::ferror(s->fp) ? "read error" : "file is truncated");
  }
}

// Reads the header and sets up 8-bit RGB or RGBA output.
bool ReadHeader(PngState* s) {
  if (setjmp(png_jmpbuf(s->png))) return false;
  png_set_read_fn(s->png, s, ReadData);
  png_set_sig_bytes(s->png, 8);
  png_set_user_limits(s->png, kMaxDimension, kMaxDimension);
  png_read_info(s->png, s->info);
  png_get_IHDR(s->png, s->info, &s->width, &s->height, &s->bit_depth,
               &s->color_type, &s->interlace, nullptr, nullptr);
  png_set_expand(s->png);  // palette, low-bit gray, tRNS to alpha
  if (s->bit_depth == 16) png_set_scale_16(s->png);
  if (!(s->color_type & PNG_COLOR_MASK_COLOR)) png_set_gray_to_rgb(s->png);
  png_set_interlace_handling(s->png);
  png_read_update_info(s->png, s->info);
  s->channels = png_get_channels(s->png, s->info);
  return true;
}

bool ReadRows(PngState* s) {
  if (setjmp(png_jmpbuf(s->png))) return false;
  png_read_image(s->png, s->rows);
  png_read_end(s->png, nullptr);
  return true;
}

bool WriteAll(PngState* s) {
  if (setjmp(png_jmpbuf(s->png))) return false;
  png_init_io(s->png, s->fp);
  png_set_IHDR(s->png, s->info, s->width, s->height, 8, s->color_type,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  png_write_info(s->png, s->info);
  png_write_image(s->png, s->rows);
  png_write_end(s->png, nullptr);
  return true;
}

std::string Describe(const PngState& s) {
  std::string type;
  switch (s.color_type) {
    case PNG_COLOR_TYPE_GRAY: type = "gray"; break;
    case PNG_COLOR_TYPE_GRAY_ALPHA: type = "gray+alpha"; break;
    case PNG_COLOR_TYPE_PALETTE: type = "palette"; break;
    case PNG_COLOR_TYPE_RGB: type = "RGB"; break;
    case PNG_COLOR_TYPE_RGB_ALPHA: type = "RGBA"; break;
    default: type = "colour type " + std::to_string(s.color_type); break;
  }
  std::string d = "PNG " + std::to_string(s.bit_depth) + "-bit " + type;
  if (s.interlace != PNG_INTERLACE_NONE) d += ", interlaced";
  return d;
}

// Pixels of a frame as 8-bit gray, RGB or RGBA rows.
void ToPngPixels(const Image& im, int* channels, std::vector<uint8_t>* out) {
  const FormatInfo& f = im.format();
  const int32_t w = im.width(), h = im.height();
  RgbOrder o;
  if (RgbOrderOf(f, &o)) {
    const int ch = o.a >= 0 ? 4 : 3;
    *channels = ch;
    out->resize(static_cast<size_t>(w) * h * ch);
    uint8_t* d = out->data();
    for (int32_t y = 0; y < h; ++y) {
      const uint8_t* row = im.plane(0) + int64_t{y} * im.stride(0);
      for (int32_t x = 0; x < w; ++x, d += ch) {
        const uint8_t* p = row + int64_t{x} * o.bytes;
        if (o.is565) {
          const uint32_t v = p[0] | uint32_t{p[1]} << 8;
          const uint32_t hi = v >> 11, g = (v >> 5) & 63, lo = v & 31;
          const uint32_t r = o.r565_high ? hi : lo, b = o.r565_high ? lo : hi;
          d[0] = static_cast<uint8_t>(r << 3 | r >> 2);
          d[1] = static_cast<uint8_t>(g << 2 | g >> 4);
          d[2] = static_cast<uint8_t>(b << 3 | b >> 2);
          continue;
        }
        d[0] = p[o.r];
        d[1] = p[o.g];
        d[2] = p[o.b];
        if (ch == 4) d[3] = p[o.a];
      }
    }
    return;
  }
  // Luma as gray.
  *channels = 1;
  out->resize(static_cast<size_t>(w) * h);
  uint8_t* d = out->data();
  if (f.family == Family::kPackedYuv) {
    const int yo = f.cs == KIMGP_CS_UYVY ? 1 : 0;
    for (int32_t y = 0; y < h; ++y) {
      const uint8_t* row = im.plane(0) + int64_t{y} * im.stride(0);
      for (int32_t x = 0; x < w; ++x) *d++ = row[2 * x + yo];
    }
    return;
  }
  const PlaneAddr luma(im.img(), f, 0);
  if (f.family == Family::kYuv16) {
    // p010le keeps 10 bits at the top of the word, the others at the bottom.
    const int shift = f.cs == KIMGP_CS_P010LE ? 8 : 2;
    for (int32_t y = 0; y < h; ++y) {
      for (int32_t x = 0; x < w; ++x) {
        const uint8_t* p = luma.At(2 * x, y);
        const uint32_t v = (p[0] | uint32_t{p[1]} << 8) >> shift;
        *d++ = static_cast<uint8_t>(std::min<uint32_t>(v, 255));
      }
    }
    return;
  }
  for (int32_t y = 0; y < h; ++y) {
    for (int32_t x = 0; x < w; ++x) *d++ = *luma.At(x, y);
  }
}

}  // namespace

void WritePng(const std::string& path, const Image& im) {
  int channels = 0;
  std::vector<uint8_t> pixels;
  ToPngPixels(im, &channels, &pixels);
  std::vector<png_bytep> rows(static_cast<size_t>(im.height()));
  const size_t row_bytes = static_cast<size_t>(im.width()) * channels;
  for (size_t y = 0; y < rows.size(); ++y) {
    rows[y] = pixels.data() + y * row_bytes;
  }

  File file = File::OpenWrite(path);
  PngState s;
  s.fp = file.get();
  s.width = static_cast<png_uint_32>(im.width());
  s.height = static_cast<png_uint_32>(im.height());
  s.color_type = channels == 4   ? PNG_COLOR_TYPE_RGB_ALPHA
                 : channels == 3 ? PNG_COLOR_TYPE_RGB
                                 : PNG_COLOR_TYPE_GRAY;
  s.rows = rows.data();
  s.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &s, OnError,
                                  OnWarning);
  if (s.png != nullptr) s.info = png_create_info_struct(s.png);
  if (s.info == nullptr) {
    png_destroy_write_struct(&s.png, nullptr);
    throw RunError("cannot write " + path + ": libpng out of memory");
  }
  const bool ok = WriteAll(&s);
  png_destroy_write_struct(&s.png, &s.info);
  if (!ok) throw RunError("cannot write " + path + ": " + s.message);
  file.Close();
}

namespace {

// Reads the whole image when opened, so that the format and size are known
// up front like for the other readers.
class LoadedPngReader : public FrameReader {
 public:
  explicit LoadedPngReader(const std::string& path) {
    image_ = ReadPng(path, &info_.detail);
    info_.source = path;
    info_.format = &image_.format();
    info_.width = image_.width();
    info_.height = image_.height();
    info_.frames = 1;
  }
  bool Read(Image* out) override {
    if (index_ > 0) return false;
    *out = std::move(image_);
    ++index_;
    return true;
  }

 private:
  Image image_;
};

// One frame goes to `path`; with more, every frame goes to a numbered file.
// The first frame is held back until the second arrives or the end.
class PngWriter : public FrameWriter {
 public:
  explicit PngWriter(std::string path) : path_(std::move(path)) {}
  void Write(const Image& frame) override {
    ++count_;
    if (count_ == 1) {
      held_ = frame;
      return;
    }
    if (count_ == 2) {
      Emit(NumberedPath(path_, 1), held_);
      held_ = Image();
    }
    Emit(NumberedPath(path_, count_), frame);
  }
  void Finish() override {
    if (count_ == 1) Emit(path_, held_);
  }

 private:
  void Emit(const std::string& path, const Image& frame) {
    WritePng(path, frame);
    written_.push_back(path);
  }

  std::string path_;
  int64_t count_ = 0;
  Image held_;
};

}  // namespace

Image ReadPng(const std::string& path, std::string* detail) {
  File file = File::OpenRead(path);
  png_byte sig[8];
  if (file.Read(sig, 8) != 8 || png_sig_cmp(sig, 0, 8) != 0) {
    throw RunError(path + ": not a PNG file");
  }
  PngState s;
  s.fp = file.get();
  s.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &s, OnError,
                                 OnWarning);
  if (s.png != nullptr) s.info = png_create_info_struct(s.png);
  // Frees libpng's structures on every way out.
  struct Guard {
    PngState* s;
    ~Guard() { png_destroy_read_struct(&s->png, &s->info, nullptr); }
  } guard{&s};
  if (s.info == nullptr) throw RunError(path + ": libpng out of memory");
  if (!ReadHeader(&s)) throw RunError(path + ": bad PNG: " + s.message);
  if (s.channels != 3 && s.channels != 4) {
    throw RunError(path + ": unsupported PNG layout (" + Describe(s) + ")");
  }
  const FormatInfo& f = *LookupFormat(s.channels == 4 ? KIMGP_CS_RGBA8888
                                                      : KIMGP_CS_RGB888);
  const auto w = static_cast<int32_t>(s.width);
  const auto h = static_cast<int32_t>(s.height);
  const std::string why = CheckFrameSize(f, w, h);
  if (!why.empty()) throw RunError(path + ": " + why);
  if (png_get_rowbytes(s.png, s.info) != static_cast<size_t>(w) * s.channels) {
    throw RunError(path + ": unsupported PNG layout (" + Describe(s) + ")");
  }
  Image im(f, w, h);
  std::vector<png_bytep> rows(static_cast<size_t>(h));
  for (int32_t y = 0; y < h; ++y) {
    rows[y] = im.plane(0) + int64_t{y} * im.stride(0);
  }
  s.rows = rows.data();
  if (!ReadRows(&s)) throw RunError(path + ": bad PNG: " + s.message);
  if (detail != nullptr) *detail = Describe(s);
  return im;
}

std::string PngRendering(const FormatInfo& f) {
  RgbOrder o;
  if (RgbOrderOf(f, &o)) {
    if (o.is565) return "RGB (5-6-5 expanded to 8 bits)";
    return o.a >= 0 ? "RGBA" : "RGB";
  }
  if (f.cs == KIMGP_CS_YUV400) return "gray";
  return "luma plane as gray";
}

std::string NumberedPath(const std::string& path, int64_t number) {
  char num[32];
  std::snprintf(num, sizeof(num), "-%04lld", static_cast<long long>(number));
  const size_t slash = path.find_last_of('/');
  const size_t dot = path.find_last_of('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) {
    return path + num;
  }
  return path.substr(0, dot) + num + path.substr(dot);
}

std::unique_ptr<FrameReader> OpenPngReader(const std::string& path) {
  return std::make_unique<LoadedPngReader>(path);
}

std::unique_ptr<FrameWriter> CreatePngWriter(const std::string& path) {
  return std::make_unique<PngWriter>(path);
}

}  // namespace cli
}  // namespace kelo
