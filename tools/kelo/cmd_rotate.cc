// kelo rotate: every frame through kimgp_rot (quarter turns, 180, mirrors).
#include <utility>

#include "kimgp_rot.h"
#include "tools/kelo/command.h"
#include "tools/kelo/demo.h"
#include "tools/kelo/error.h"
#include "tools/kelo/input.h"
#include "tools/kelo/io.h"
#include "tools/kelo/ops.h"

namespace kelo {
namespace cli {
namespace {

uint32_t ParseRotation(const Args& args) {
  if (!args.Has("rotate")) throw UsageError("rotate: --rotate 90l|90r|180|hori|vert is required");
  return RotationCode(args.Get("rotate"), "rotate");
}

void CheckRotatable(const FormatInfo& f, uint32_t code) {
  RequireLibraryFormat(f, "kimgp_rot");
  if (IsTiled(f)) {
    throw RunError(std::string("kimgp_rot: format ") + f.name + " not supported (tiled)");
  }
  RequireQuarterTurnable(f, code, "rotate");
}

void RotateInto(const Image& src, Image* dst, uint32_t code) {
  const int32_t status = kimgp_rot(&src.img(), code, dst->mutable_img());
  if (status != KIMGP_OK) throw RunError(StatusMessage("kimgp_rot", status, src.format()));
}

int RunRotate(const Args& args) {
  args.ExpectPositional(1, 2);
  const auto& pos = args.positional();
  const std::string in = pos.size() == 2 ? pos[0] : "";
  const std::string out = pos.back();
  const uint32_t code = ParseRotation(args);
  const FileType out_type = OutputType(args, out);
  RefuseSameFile(args, in, out);

  std::unique_ptr<FrameReader> reader = OpenInput(args, in, "yuv420");
  const StreamInfo& info = reader->info();
  CheckRotatable(*info.format, code);
  StreamInfo out_info = info;
  if (IsQuarterTurn(code)) std::swap(out_info.width, out_info.height);
  Image dst(*info.format, out_info.width, out_info.height);
  TransformFrames("rotate", reader.get(), &dst, out, out_type, out_info,
                  [code](const Image& src, Image* d) { RotateInto(src, d, code); });
  return 0;
}

void RotateDemo(DemoContext* ctx) {
  const struct Case {
    int32_t cs;
    uint32_t code;
    const char* file;
    const char* what;
  } kCases[] = {
      {KIMGP_CS_RGBA8888, KIMGP_ROT_90L, "rotate-rgba8888-90l.png",
       "pattern in rgba8888 turned left by kimgp_rot"},
      {KIMGP_CS_RGB888, KIMGP_ROT_180, "rotate-rgb888-180.png",
       "pattern in rgb888 turned by 180 degrees by kimgp_rot"},
      {KIMGP_CS_RGB565, KIMGP_ROT_HORI, "rotate-rgb565-hori.png",
       "pattern in rgb565 mirrored left to right by kimgp_rot"},
      {KIMGP_CS_NV12, KIMGP_ROT_90R, "rotate-nv12-90r-luma.png",
       "pattern in nv12 turned right by kimgp_rot, luma as gray"},
  };
  for (const Case& c : kCases) {
    const FormatInfo& f = *LookupFormat(c.cs);
    const bool quarter = IsQuarterTurn(c.code);
    Image dst(f, quarter ? ctx->height() : ctx->width(), quarter ? ctx->width() : ctx->height());
    RotateInto(PatternImage(f, ctx->width(), ctx->height()), &dst, c.code);
    ctx->Emit(c.file, dst, c.what);
  }
}

}  // namespace

Command RotateCommand() {
  return {"rotate",
          "turn or mirror frames with kimgp_rot",
          "rotate [IN] OUT --rotate 90l|90r|180|hori|vert [--format F --size WxH]",
          "Turns every frame of IN (or of the pattern, default format yuv420)\n"
          "with kimgp_rot and writes the frames to OUT (type by extension or\n"
          "--out-type, as for copy): 90l a quarter turn counter-clockwise, 90r\n"
          "clockwise, 180 a half turn, hori a mirror left to right, vert a\n"
          "flip top to bottom. Quarter turns exchange width and height and\n"
          "are refused for formats subsampled in width only (yuv422n, ...).\n"
          "The library turns 8-bit YUV and RGB formats; it refuses packed\n"
          "YUV (yuyv, uyvy) and 16-bit YUV, and kelo reports its status.\n",
          FrameCommandOptions({{"rotate", "OP", "90l, 90r, 180, hori or vert"}}),
          RunRotate,
          RotateDemo};
}

}  // namespace cli
}  // namespace kelo
