// kelo resize: every frame through kimgp_rsz to another size, through
// kimgp_rsz_rot when it is also turned (--rotate) and through kimgp_rsz_csc
// when it also changes colour space (--to).
#include <string>
#include <utility>

#include "kimgp_rot.h"
#include "kimgp_rsz.h"
#include "kimgp_rsz_csc.h"
#include "kimgp_rsz_rot.h"
#include "tools/kelo/command.h"
#include "tools/kelo/dct_resize.h"
#include "tools/kelo/demo.h"
#include "tools/kelo/error.h"
#include "tools/kelo/input.h"
#include "tools/kelo/io.h"
#include "tools/kelo/ops.h"

namespace kelo {
namespace cli {
namespace {

void ResizeInto(const Image& src, Image* dst, int32_t mode) {
  kimgp_img d = dst->img();
  d.rsz_mode = mode;
  const int32_t status = kimgp_rsz(&src.img(), &d);
  if (status != KIMGP_OK) throw RunError(StatusMessage("kimgp_rsz", status, src.format()));
}

void ResizeRotateInto(const Image& src, Image* dst, int32_t mode, uint32_t code) {
  kimgp_img d = dst->img();
  d.rsz_mode = mode;
  const int32_t status = kimgp_rsz_rot(&src.img(), static_cast<int32_t>(code), &d);
  if (status != KIMGP_OK) throw RunError(StatusMessage("kimgp_rsz_rot", status, src.format()));
}

void ResizeConvertInto(const Image& src, Image* dst, int32_t mode) {
  kimgp_img s = src.img();
  kimgp_img d = dst->img();
  d.rsz_mode = mode;
  const int32_t status = kimgp_rsz_csc(&s, &d);
  if (status != KIMGP_OK) {
    throw RunError(std::string("kimgp_rsz_csc: ") + src.format().name + " to " +
                   dst->format().name + " failed (status " + std::to_string(status) + ")");
  }
}

// Whether kimgp_rsz_csc takes the pair: asked of the library on small
// frames, so that the list always matches what it does.
bool ResizeConvertsPair(const FormatInfo& from, const FormatInfo& to) {
  if (IsKeloOnly(from) || IsKeloOnly(to) || from.cs == to.cs) return false;
  Image s(from, 16, 16), d(to, 16, 16);
  kimgp_img si = s.img(), di = d.img();
  return kimgp_rsz_csc(&si, &di) == KIMGP_OK;
}

// "yuv420>rgb565, ..." for every pair kimgp_rsz_csc takes.
std::string ResizeConvertPairs() {
  std::string list;
  for (const FormatInfo* from : KnownFormats()) {
    for (const FormatInfo* to : KnownFormats()) {
      if (!ResizeConvertsPair(*from, *to)) continue;
      list += (list.empty() ? "" : ", ") + std::string(from->name) + ">" + to->name;
    }
  }
  return list;
}

int32_t ParseMode(const Args& args) {
  if (!args.Has("mode")) return 0;
  if (args.Get("mode") == "mod1") return KIMGP_RSZ_MODE1;
  throw UsageError("resize: --mode must be mod1");
}

int RunResize(const Args& given) {
  given.ExpectPositional(1, 2);
  // --size is the size to scale to; --in-size is the size of raw input.
  if (!given.Has("size")) throw UsageError("resize: --size WxH is required");
  int32_t w = 0, h = 0;
  given.GetSize("size", &w, &h);
  const Args args = given.Renamed("in-size", "size");
  const int32_t mode = ParseMode(args);
  if (int{args.Has("rotate")} + int{args.Has("to")} + int{args.Has("dct")} > 1) {
    throw UsageError("resize: --rotate, --to and --dct cannot be combined");
  }
  const auto& pos = args.positional();
  const std::string in = pos.size() == 2 ? pos[0] : "";
  const std::string out = pos.back();
  const FileType out_type = OutputType(args, out);
  RefuseSameFile(args, in, out);

  std::unique_ptr<FrameReader> reader = OpenInput(args, in, "yuv420");
  const StreamInfo& info = reader->info();
  const FormatInfo& f = *info.format;
  StreamInfo out_info = info;
  out_info.width = w;
  out_info.height = h;
  if (args.Has("to")) {
    const FormatInfo* to = args.GetFormat("to");
    if (!ResizeConvertsPair(f, *to)) {
      throw UsageError(std::string("resize: kimgp_rsz_csc does not take ") + f.name + " to " +
                       to->name + "; it takes " + ResizeConvertPairs());
    }
    const std::string why = CheckFrameSize(*to, w, h);
    if (!why.empty()) throw UsageError("resize: " + why);
    out_info.format = to;
    out_info.y4m_tags.clear();  // the source's colour tag no longer applies
    Image dst(*to, w, h);
    TransformFrames("resize", reader.get(), &dst, out, out_type, out_info,
                    [mode](const Image& src, Image* d) { ResizeConvertInto(src, d, mode); });
    return 0;
  }
  RequireLibraryFormat(f, "kimgp_rsz");
  if (IsTiled(f)) {
    throw RunError(std::string("kimgp_rsz: format ") + f.name + " not supported (tiled)");
  }
  const std::string why = CheckFrameSize(f, w, h);
  if (!why.empty()) throw UsageError("resize: " + why);
  Image dst(f, w, h);
  if (DctResize(&args, reader.get(), &dst, out, out_type, out_info, nullptr)) return 0;
  if (args.Has("rotate")) {
    const uint32_t code = RotationCode(args.Get("rotate"), "resize");
    RequireQuarterTurnable(f, code, "resize");
    TransformFrames("resize", reader.get(), &dst, out, out_type, out_info,
                    [mode, code](const Image& src, Image* d) {
                      ResizeRotateInto(src, d, mode, code);
                    });
    return 0;
  }
  TransformFrames("resize", reader.get(), &dst, out, out_type, out_info,
                  [mode](const Image& src, Image* d) { ResizeInto(src, d, mode); });
  return 0;
}

void ResizeDemo(DemoContext* ctx) {
  const int32_t w = ctx->width(), h = ctx->height();
  const struct Case {
    int32_t cs;
    int32_t w, h, mode;
    const char* file;
    const char* what;
  } kCases[] = {
      {KIMGP_CS_RGBA8888, w / 2, h / 2, 0, "resize-rgba8888-half.png",
       "pattern in rgba8888 halved by kimgp_rsz"},
      {KIMGP_CS_RGB888, w * 2 / 3, h * 2 / 3, 0, "resize-rgb888-two-thirds.png",
       "pattern in rgb888 scaled to two thirds by kimgp_rsz"},
      {KIMGP_CS_RGB565, w * 3 / 2, h * 3 / 2, 0, "resize-rgb565-up.png",
       "pattern in rgb565 scaled up by 3/2 by kimgp_rsz"},
      {KIMGP_CS_RGBA8888, w * 2, h * 2, KIMGP_RSZ_MODE1, "resize-rgba8888-double-mod1.png",
       "pattern in rgba8888 doubled by kimgp_rsz with the ramp (mod1)"},
      {KIMGP_CS_NV12, w * 3 / 4, h * 3 / 4, 0, "resize-nv12-three-quarters-luma.png",
       "pattern in nv12 scaled to three quarters by kimgp_rsz, luma as gray"},
  };
  for (const Case& c : kCases) {
    const FormatInfo& f = *LookupFormat(c.cs);
    Image dst(f, c.w, c.h);
    ResizeInto(PatternImage(f, w, h), &dst, c.mode);
    ctx->Emit(c.file, dst, c.what);
  }
  DctResize(nullptr, nullptr, nullptr, "", FileType::kPng, StreamInfo(), ctx);
  // Scaled and turned in one call: a portrait frame at two thirds of the
  // size, as a phone's display would show a landscape decode.
  const FormatInfo& yuv420 = *LookupFormat(KIMGP_CS_YUV420);
  Image turned(yuv420, (h * 2 / 3) & ~1, (w * 2 / 3) & ~1);
  ResizeRotateInto(PatternImage(yuv420, w, h), &turned, 0, KIMGP_ROT_90R);
  ctx->Emit("resize-yuv420-two-thirds-90r-luma.png", turned,
            "pattern in yuv420 scaled to two thirds and turned right by kimgp_rsz_rot, luma "
            "as gray");
  // Scaled and converted in one call.
  Image rgb(*LookupFormat(KIMGP_CS_RGB565), (w * 3 / 4) & ~1, (h * 3 / 4) & ~1);
  ResizeConvertInto(PatternImage(yuv420, w, h), &rgb, 0);
  ctx->Emit("resize-yuv420-to-rgb565-three-quarters.png", rgb,
            "pattern in yuv420 scaled to three quarters and converted to rgb565 by "
            "kimgp_rsz_csc");
}

std::vector<OptionSpec> ResizeOptions() {
  std::vector<OptionSpec> o = FrameCommandOptions(
      {{"in-size", "WxH", "size of raw input or of the pattern"},
       {"mode", "MODE", "mod1: grow along a linear ramp"},
       {"dct", nullptr, "shrink in the DCT domain (kimgp_rsz_new)"},
       {"pre", "2|4", "with --dct: halve or quarter by averaging first"},
       {"rotate", "OP", "also turn: 90l, 90r, 180, hori or vert (kimgp_rsz_rot)"},
       {"to", "FORMAT", "also convert to FORMAT (kimgp_rsz_csc)"}});
  // --size names the output size here.
  for (OptionSpec& s : o) {
    if (std::string(s.name) == "size") s.help = "size to scale to (required)";
  }
  return o;
}

}  // namespace

Command ResizeCommand() {
  return {"resize",
          "scale frames with kimgp_rsz",
          "resize [IN] OUT --size WxH [--mode mod1] [--format F --in-size WxH]\n"
          "resize [IN] OUT --size WxH --rotate 90l|90r|180|hori|vert [--mode mod1]\n"
          "resize [IN] OUT --size WxH --to FORMAT [--mode mod1]\n"
          "resize [IN] OUT --size WxH --dct [--pre 2|4]",
          "Scales every frame of IN (or of the pattern, default format yuv420)\n"
          "with kimgp_rsz to WxH and writes the frames to OUT (type by\n"
          "extension or --out-type, as for copy). Raw input needs --format and\n"
          "--in-size (the pattern takes --in-size too). Shrinking averages two\n"
          "or four samples; growing repeats an in-between value, or with\n"
          "--mode mod1 follows a linear ramp. p010le is only shrunk by whole\n"
          "numbers; packed YUV is refused; kelo reports the library's status.\n"
          "--rotate also turns every frame in the same call (kimgp_rsz_rot;\n"
          "WxH is the size after turning). Only 8-bit YUV is scaled and turned;\n"
          "other formats are only turned, when WxH is the turned input size,\n"
          "and a mirror (hori, vert) with a change of size is not mirrored.\n"
          "--to FORMAT also converts every frame (kimgp_rsz_csc) for the pairs\n"
          "it takes; any other pair is refused with the list of those pairs.\n"
          "--dct shrinks yuv420, nv12, nv21 and rgba8888 in the DCT domain\n"
          "(kimgp_rsz_new), with --pre 2 or 4 averaging 2x2 or 4x4 first.\n",
          ResizeOptions(),
          RunResize,
          ResizeDemo};
}

}  // namespace cli
}  // namespace kelo
