// kelo convert: every frame through kimgp_csc into another colour space,
// through kimgp_csc_new with --new, through kimgp_csc_dither into a dithered
// 5-6-5 layout with --dither, or through kimgp_csc_rot when it is also
// turned.
#include "kimgp_csc.h"
#include "tools/kelo/command.h"
#include "tools/kelo/demo.h"
#include "tools/kelo/error.h"
#include "tools/kelo/input.h"
#include "tools/kelo/io.h"
#include "tools/kelo/ops.h"

namespace kelo {
namespace cli {
namespace {

// --std: the colour standard both descriptors carry (0: BT.601 limited);
// with --new also 601, 2020 and 2020f.
int32_t ParseStd(const Args& args) {
  if (!args.Has("std")) return KIMGP_STD_DEFAULT;
  const std::string s = args.Get("std");
  if (s == "601f") return KIMGP_STD_BT601_FR;
  if (s == "709") return KIMGP_STD_BT709;
  if (s == "709f") return KIMGP_STD_BT709_FR;
  if (args.Has("new")) {
    if (s == "601") return KIMGP_STD_DEFAULT;
    if (s == "2020") return KIMGP_STD_BT2020;
    if (s == "2020f") return KIMGP_STD_BT2020_FR;
    throw UsageError("convert: --std must be 601, 601f, 709, 709f, 2020 or 2020f");
  }
  throw UsageError("convert: --std must be 601f, 709 or 709f (2020 and 2020f with --new)");
}

// An entry of the kimgp_csc shape and its name, for the messages.
struct Entry {
  int32_t (*fn)(const kimgp_img*, kimgp_img*);
  const char* name;
};

// The entry `entry` of src into dst on copies of the descriptors: the YV12
// kernels exchange the source's chroma planes in the descriptor they are
// given.
void ConvertInto(const Image& src, Image* dst, int32_t std_word,
                 Entry entry = {kimgp_csc, "kimgp_csc"}) {
  kimgp_img s = src.img();
  kimgp_img d = dst->img();
  s.std = d.std = std_word;
  const int32_t status = entry.fn(&s, &d);
  if (status != KIMGP_OK) {
    throw RunError(std::string(entry.name) + ": " + src.format().name + " to " + dst->format().name +
                   (status == KIMGP_ERR_UNSUPPORTED ? " is not supported" : " does not fit") +
                   " (status " + std::to_string(status) + ")");
  }
}

// The pairs kimgp_csc_rot converts and turns.
bool TurnsInOnePass(int32_t from, int32_t to) {
  static constexpr struct {
    int32_t from, to;
  } kPairs[] = {{KIMGP_CS_YUYV, KIMGP_CS_BGRA8888}, {KIMGP_CS_YUV422N, KIMGP_CS_YUV420},
                {KIMGP_CS_YUV422N, KIMGP_CS_YV12},   {KIMGP_CS_YV16, KIMGP_CS_YUV420},
                {KIMGP_CS_YV16, KIMGP_CS_YV12}};
  for (const auto& p : kPairs) {
    if (p.from == from && p.to == to) return true;
  }
  return false;
}

// kimgp_csc_rot of src into dst with rotation code `code`.
void ConvertTurnedInto(const Image& src, Image* dst, uint32_t code, const std::string& op) {
  kimgp_img s = src.img();
  const int32_t status = kimgp_csc_rot(&s, code, dst->mutable_img());
  if (status != KIMGP_OK) {
    throw RunError(std::string("kimgp_csc_rot: ") + src.format().name + " to " +
                   dst->format().name + " with --rotate " + op + " is not supported (status " +
                   std::to_string(status) + ")");
  }
}

int RunConvert(const Args& given) {
  const Args args = given.WithAlias("from", "format");
  args.ExpectPositional(1, 2);
  const auto& pos = args.positional();
  const std::string in = pos.size() == 2 ? pos[0] : "";
  const std::string out = pos.back();
  const FormatInfo* to = args.GetFormat("to");
  if (to == nullptr) throw UsageError("convert: --to FORMAT is required");
  const int32_t std_word = ParseStd(args);
  const FileType out_type = OutputType(args, out);
  RefuseSameFile(args, in, out);

  std::unique_ptr<FrameReader> reader = OpenInput(args, in, "yuv420");
  const StreamInfo& info = reader->info();
  RequireLibraryFormat(*info.format, "kimgp_csc");
  RequireLibraryFormat(*to, "kimgp_csc");

  StreamInfo out_info = info;
  out_info.format = to;
  out_info.y4m_tags.clear();  // the source's colour tag no longer applies
  const bool dither = args.Has("dither");
  if (dither && to->cs != KIMGP_CS_RGB565 && to->cs != KIMGP_CS_BGR565) {
    throw UsageError(std::string("convert: --dither is for rgb565 and bgr565, not ") + to->name);
  }
  if (dither && args.Has("rotate")) throw UsageError("convert: --dither does not apply with --rotate");
  if (args.Has("rotate")) {
    // Conversion and rotation in one pass, for the pairs kimgp_csc_rot has.
    const std::string op = args.Get("rotate");
    const uint32_t code = RotationCode(op, "convert");
    if (args.Has("std")) throw UsageError("convert: --std does not apply with --rotate");
    if (args.Has("new")) throw UsageError("convert: --new does not apply with --rotate");
    if (!TurnsInOnePass(info.format->cs, to->cs)) {
      throw UsageError(std::string("convert: --rotate is for yuyv to bgra8888 and yuv422n or "
                                   "yv16 to yuv420 or yv12, not ") +
                       info.format->name + " to " + to->name);
    }
    if (IsQuarterTurn(code)) std::swap(out_info.width, out_info.height);
    Image dst(*to, out_info.width, out_info.height);
    TransformFrames("convert", reader.get(), &dst, out, out_type, out_info,
                    [code, op](const Image& src, Image* d) { ConvertTurnedInto(src, d, code, op); });
    return 0;
  }
  Image dst(*to, info.width, info.height);
  if (dither && args.Has("new")) throw UsageError("convert: --dither and --new do not go together");
  const Entry entry = dither              ? Entry{kimgp_csc_dither, "kimgp_csc_dither"}
                      : args.Has("new") ? Entry{kimgp_csc_new, "kimgp_csc_new"}
                                        : Entry{kimgp_csc, "kimgp_csc"};
  TransformFrames("convert", reader.get(), &dst, out, out_type, out_info,
                  [std_word, entry](const Image& src, Image* d) {
                    ConvertInto(src, d, std_word, entry);
                  });
  return 0;
}

void ConvertDemo(DemoContext* ctx) {
  const int32_t w = ctx->width(), h = ctx->height();
  const struct Case {
    int32_t from, to;
    const char* file;
    const char* what;
  } kCases[] = {
      {KIMGP_CS_YUV420, KIMGP_CS_RGBA8888, "convert-yuv420-to-rgba8888.png",
       "pattern in yuv420 converted by kimgp_csc to rgba8888"},
      {KIMGP_CS_NV21, KIMGP_CS_RGB565, "convert-nv21-to-rgb565.png",
       "pattern in nv21 converted by kimgp_csc to rgb565"},
      {KIMGP_CS_UYVY, KIMGP_CS_BGR888, "convert-uyvy-to-bgr888.png",
       "pattern in uyvy converted by kimgp_csc to bgr888"},
      {KIMGP_CS_T64X32, KIMGP_CS_RGBA8888, "convert-t64x32-to-rgba8888.png",
       "pattern in 64x32-tiled nv12 converted by kimgp_csc to rgba8888"},
  };
  for (const Case& c : kCases) {
    Image dst(*LookupFormat(c.to), w, h);
    ConvertInto(PatternImage(*LookupFormat(c.from), w, h), &dst, KIMGP_STD_DEFAULT);
    ctx->Emit(c.file, dst, c.what);
  }
  // RGB to YUV and back: the round trip through the library's arithmetic.
  const Image rgba = PatternImage(*LookupFormat(KIMGP_CS_RGBA8888), w, h);
  Image nv12(*LookupFormat(KIMGP_CS_NV12), w, h), back(*LookupFormat(KIMGP_CS_RGBA8888), w, h);
  ConvertInto(rgba, &nv12, KIMGP_STD_DEFAULT);
  ConvertInto(nv12, &back, KIMGP_STD_DEFAULT);
  ctx->Emit("convert-rgba8888-nv12-rgba8888.png", back,
            "pattern in rgba8888 converted to nv12 and back by kimgp_csc");
}

}  // namespace

Command ConvertCommand() {
  return {"convert",
          "convert frames to another colour space with kimgp_csc",
          "convert [IN] OUT --to FORMAT [--from FORMAT --size WxH] [--new|--dither] [--std STD|--rotate OP]",
          "Converts every frame of IN (or of the pattern, default format\n"
          "yuv420) with kimgp_csc into FORMAT and writes the frames to OUT\n"
          "(type by extension or --out-type, as for copy). Raw input needs\n"
          "--from (or --format) and --size. --std sets the colour standard\n"
          "of both sides: 601f (BT.601 full range), 709 (BT.709), 709f\n"
          "(BT.709 full range); without it the arithmetic is limited-range\n"
          "BT.601. Pairs the library does not convert are reported with its\n"
          "status (for example yv12 to yuv420, or rgba8888 to bgra8888).\n"
          "--new converts with kimgp_csc_new instead: every pair of linear\n"
          "layouts (16-bit ones included), averaged and interpolated chroma,\n"
          "and --std also 601, 2020 (BT.2020) and 2020f (full range).\n"
          "--rotate converts and turns in one pass with kimgp_csc_rot, for\n"
          "yuyv to bgra8888 (90l, 90r, 180) and yuv422n or yv16 to yuv420\n"
          "or yv12 (90l, 90r); 90l and 90r exchange width and height.\n"
          "--dither converts into rgb565 or bgr565 with kimgp_csc_dither:\n"
          "a 4x4 ordered dither before the truncation to 5-6-5, so smooth\n"
          "gradients keep their level instead of banding.\n",
          FrameCommandOptions({{"to", "FORMAT", "colour space to convert to"},
                               {"from", "FORMAT", "format of raw input (same as --format)"},
                               {"std", "STD", "601f, 709 or 709f on both sides (with --new also 601, 2020, 2020f)"},
                               {"new", nullptr, "convert with kimgp_csc_new"},
                               {"rotate", "OP", "90l, 90r, 180, hori or vert (kimgp_csc_rot)"},
                               {"dither", nullptr, "ordered dither into rgb565/bgr565 (kimgp_csc_dither)"}}),
          RunConvert,
          ConvertDemo};
}

}  // namespace cli
}  // namespace kelo
