// kelo crop and kelo pad: every frame through kimgp_crop or kimgp_padding.
#include <string>

#include "kimgp_frame.h"
#include "tools/kelo/command.h"
#include "tools/kelo/demo.h"
#include "tools/kelo/error.h"
#include "tools/kelo/input.h"
#include "tools/kelo/io.h"
#include "tools/kelo/ops.h"

namespace kelo {
namespace cli {
namespace {

struct Rect {
  int32_t w = 0, h = 0, x = 0, y = 0;
};

std::string RectText(const Rect& r) {
  return std::to_string(r.w) + "x" + std::to_string(r.h) + "+" + std::to_string(r.x) + "+" +
         std::to_string(r.y);
}

bool ParseOffset(const std::string& s, int32_t* v) {
  if (s.empty() || s.size() > 5 || s.find_first_not_of("0123456789") != std::string::npos) {
    return false;
  }
  *v = std::stoi(s);
  return *v <= kMaxDimension;
}

// "WxH+X+Y".
Rect ParseRect(const Args& args) {
  if (!args.Has("rect")) throw UsageError("crop: --rect WxH+X+Y is required");
  const std::string s = args.Get("rect");
  const size_t p1 = s.find('+'), p2 = p1 == std::string::npos ? p1 : s.find('+', p1 + 1);
  Rect r;
  std::string why;
  if (p2 == std::string::npos || !ParseSize(s.substr(0, p1), &r.w, &r.h, &why) ||
      !ParseOffset(s.substr(p1 + 1, p2 - p1 - 1), &r.x) || !ParseOffset(s.substr(p2 + 1), &r.y)) {
    throw UsageError("crop: --rect must be WxH+X+Y, not '" + s + "'");
  }
  return r;
}

// "X,Y".
void ParseAt(const Args& args, int32_t* x, int32_t* y) {
  if (!args.Has("at")) return;
  const std::string s = args.Get("at");
  const size_t comma = s.find(',');
  if (comma == std::string::npos || !ParseOffset(s.substr(0, comma), x) ||
      !ParseOffset(s.substr(comma + 1), y)) {
    throw UsageError("pad: --at must be X,Y, not '" + s + "'");
  }
}

int64_t Half(int64_t v) { return (v + 1) >> 1; }

// Empty when an inner w x h frame at (x, y) lies inside an outer ow x oh
// frame of f, chroma included: the library starts 4:2:0 chroma at the
// rounded-up half of the offset, so an odd offset needs one chroma line or
// sample to spare.
std::string RegionProblem(const FormatInfo& f, int32_t ow, int32_t oh, const Rect& r) {
  const std::string where = RectText(r) + " does not fit in " + std::to_string(ow) + "x" +
                            std::to_string(oh);
  if (int64_t{r.x} + r.w > ow || int64_t{r.y} + r.h > oh) return where;
  const bool sub_y = f.cs == KIMGP_CS_YUV420 || f.cs == KIMGP_CS_NV12 || f.cs == KIMGP_CS_NV21;
  const bool sub_x = f.cs == KIMGP_CS_YUV420;
  if ((sub_y && Half(r.y) + Half(r.h) > Half(oh)) || (sub_x && Half(r.x) + Half(r.w) > Half(ow))) {
    return where + " for " + f.name +
           " chroma (an odd offset starts chroma at the rounded-up half; make it even)";
  }
  return "";
}

void CropInto(const Image& src, Image* dst, const Rect& r) {
  kimgp_img s = src.img();
  s.x = r.x;
  s.y = r.y;
  const int32_t status = kimgp_crop(&s, dst->mutable_img());
  if (status != KIMGP_OK) throw RunError(StatusMessage("kimgp_crop", status, src.format()));
}

void PadInto(const Image& src, Image* dst, int32_t x, int32_t y) {
  kimgp_img s = src.img();
  s.x = x;
  s.y = y;
  const int32_t status = kimgp_padding(&s, dst->mutable_img());
  if (status != KIMGP_OK) throw RunError(StatusMessage("kimgp_padding", status, src.format()));
}

int RunCrop(const Args& args) {
  const Rect r = ParseRect(args);
  const InOut io = FramePositionals(args);
  std::unique_ptr<FrameReader> reader = OpenInput(args, io.in, "yuv420");
  const StreamInfo& info = reader->info();
  const FormatInfo& f = *info.format;
  RequireLibraryFormat(f, "kimgp_crop");
  const std::string why = RegionProblem(f, info.width, info.height, r);
  if (!why.empty()) throw UsageError("crop: " + why);
  StreamInfo out_info = info;
  out_info.width = r.w;
  out_info.height = r.h;
  Image dst(f, r.w, r.h);
  TransformFrames("crop", reader.get(), &dst, io.out, io.out_type, out_info,
                  [r](const Image& src, Image* d) { CropInto(src, d, r); });
  return 0;
}

int RunPad(const Args& given) {
  if (!given.Has("size")) throw UsageError("pad: --size WxH is required");
  Rect r;
  int32_t w = 0, h = 0;
  given.GetSize("size", &w, &h);
  ParseAt(given, &r.x, &r.y);
  const Args args = given.Renamed("in-size", "size");
  const InOut io = FramePositionals(args);
  std::unique_ptr<FrameReader> reader = OpenInput(args, io.in, "yuv420");
  const StreamInfo& info = reader->info();
  const FormatInfo& f = *info.format;
  RequireLibraryFormat(f, "kimgp_padding");
  const std::string size_why = CheckFrameSize(f, w, h);
  if (!size_why.empty()) throw UsageError("pad: " + size_why);
  r.w = info.width;
  r.h = info.height;
  const std::string why = RegionProblem(f, w, h, r);
  if (!why.empty()) throw UsageError("pad: the input frame " + why);
  StreamInfo out_info = info;
  out_info.width = w;
  out_info.height = h;
  Image dst(f, w, h);
  TransformFrames("pad", reader.get(), &dst, io.out, io.out_type, out_info,
                  [r](const Image& src, Image* d) { PadInto(src, d, r.x, r.y); });
  return 0;
}

void CropDemo(DemoContext* ctx) {
  const int32_t w = ctx->width(), h = ctx->height();
  const FormatInfo& f = *LookupFormat(KIMGP_CS_RGBA8888);
  const Rect r{w / 2, h / 2, w / 4, h / 3};
  Image dst(f, r.w, r.h);
  CropInto(PatternImage(f, w, h), &dst, r);
  ctx->Emit("crop-rgba8888-center.png", dst,
            "pattern in rgba8888 cut to " + RectText(r) + " by kimgp_crop");
}

void PadDemo(DemoContext* ctx) {
  const int32_t w = ctx->width(), h = ctx->height();
  const FormatInfo& f = *LookupFormat(KIMGP_CS_BGRA8888);
  Image dst(f, w, h);
  PadInto(PatternImage(f, w / 2, h / 2), &dst, w / 4 & ~1, h / 4 & ~1);
  ctx->Emit("pad-bgra8888.png", dst,
            "pattern in bgra8888 at half size placed in a black frame by kimgp_padding");
}

}  // namespace

Command CropCommand() {
  return {"crop",
          "cut a rectangle out of frames with kimgp_crop",
          "crop [IN] OUT --rect WxH+X+Y [--format F --size WxH]",
          "Cuts the W x H rectangle whose top-left pixel is (X, Y) out of every\n"
          "frame of IN (or of the pattern, default format yuv420) with\n"
          "kimgp_crop and writes the frames to OUT (type by extension or\n"
          "--out-type, as for copy). The library crops yuv420, nv12, nv21,\n"
          "rgb888, bgr888 and the 32-bit RGB formats; it starts 4:2:0 chroma at\n"
          "the rounded-up half of X and Y. A rectangle that does not fit\n"
          "(chroma included) is refused before anything is written.\n",
          FrameCommandOptions({{"rect", "WxH+X+Y", "the rectangle to keep (required)"}}),
          RunCrop,
          CropDemo};
}

Command PadCommand() {
  return {"pad",
          "place frames inside a larger black frame with kimgp_padding",
          "pad [IN] OUT --size WxH [--at X,Y] [--format F --in-size WxH]",
          "Places every frame of IN (or of the pattern, default format yuv420)\n"
          "with its top-left pixel at (X, Y) (default 0,0) inside a W x H frame\n"
          "that kimgp_padding fills with black (luma 16 and chroma 128 for YUV,\n"
          "0 for every RGB byte, alpha included), and writes the frames to OUT.\n"
          "Raw input needs --format and --in-size. The library pads yuv420,\n"
          "nv12, nv21, rgb888, bgr888, rgba8888 and bgra8888 (not argb8888 or\n"
          "abgr8888). A frame that does not fit at X,Y is refused.\n",
          [] {
            std::vector<OptionSpec> o = FrameCommandOptions(
                {{"in-size", "WxH", "size of raw input or of the pattern"},
                 {"at", "X,Y", "where the input's top-left pixel goes (default 0,0)"}});
            for (OptionSpec& s : o) {
              if (std::string(s.name) == "size") s.help = "size of the padded frame (required)";
            }
            return o;
          }(),
          RunPad,
          PadDemo};
}

}  // namespace cli
}  // namespace kelo
