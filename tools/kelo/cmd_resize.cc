// kelo resize: every frame through kimgp_rsz to another size.
#include "kimgp_rsz.h"
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
  const auto& pos = args.positional();
  const std::string in = pos.size() == 2 ? pos[0] : "";
  const std::string out = pos.back();
  const FileType out_type = OutputType(args, out);
  RefuseSameFile(args, in, out);

  std::unique_ptr<FrameReader> reader = OpenInput(args, in, "yuv420");
  const StreamInfo& info = reader->info();
  const FormatInfo& f = *info.format;
  RequireLibraryFormat(f, "kimgp_rsz");
  if (IsTiled(f)) {
    throw RunError(std::string("kimgp_rsz: format ") + f.name + " not supported (tiled)");
  }
  const std::string why = CheckFrameSize(f, w, h);
  if (!why.empty()) throw UsageError("resize: " + why);
  StreamInfo out_info = info;
  out_info.width = w;
  out_info.height = h;
  Image dst(f, w, h);
  if (DctResize(&args, reader.get(), &dst, out, out_type, out_info, nullptr)) return 0;
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
}

std::vector<OptionSpec> ResizeOptions() {
  std::vector<OptionSpec> o = FrameCommandOptions(
      {{"in-size", "WxH", "size of raw input or of the pattern"},
       {"mode", "MODE", "mod1: grow along a linear ramp"},
       {"dct", nullptr, "shrink in the DCT domain (kimgp_rsz_new)"},
       {"pre", "2|4", "with --dct: halve or quarter by averaging first"}});
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
          "resize [IN] OUT --size WxH [--mode mod1] [--format F --in-size WxH]",
          "Scales every frame of IN (or of the pattern, default format yuv420)\n"
          "with kimgp_rsz to WxH and writes the frames to OUT (type by\n"
          "extension or --out-type, as for copy). Raw input needs --format and\n"
          "--in-size (the pattern takes --in-size too). Shrinking averages two\n"
          "or four samples; growing repeats an in-between value, or with\n"
          "--mode mod1 follows a linear ramp. p010le is only shrunk by whole\n"
          "numbers; packed YUV is refused; kelo reports the library's status.\n",
          ResizeOptions(),
          RunResize,
          ResizeDemo};
}

}  // namespace cli
}  // namespace kelo
