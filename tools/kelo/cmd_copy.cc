// kelo copy: every frame through kimgp_cpy into a frame with row padding.
#include "tools/kelo/command.h"
#include "tools/kelo/demo.h"
#include "tools/kelo/error.h"
#include "tools/kelo/input.h"
#include "tools/kelo/io.h"
#include "tools/kelo/ops.h"

namespace kelo {
namespace cli {
namespace {

constexpr int64_t kMaxPad = 4096;

// kimgp_cpy of src into dst; throws with the library's status when it
// refuses.
void CopyInto(const Image& src, Image* dst) {
  const int32_t status = CopyWithLibrary(src, dst);
  if (status != KIMGP_OK) {
    throw RunError(StatusMessage("kimgp_cpy", status, src.format()));
  }
}

int RunCopy(const Args& args) {
  args.ExpectPositional(1, 2);
  const auto& pos = args.positional();
  const std::string in = pos.size() == 2 ? pos[0] : "";
  const std::string out = pos.back();
  const auto pad = static_cast<int32_t>(args.GetInt("pad", 0, 0, kMaxPad));
  const FileType out_type = OutputType(args, out);
  RefuseSameFile(args, in, out);

  std::unique_ptr<FrameReader> reader = OpenInput(args, in, "yuv420");
  const StreamInfo& info = reader->info();
  const FormatInfo& f = *info.format;
  RequireLibraryFormat(f, "kimgp_cpy");
  if (pad > 0 && IsTiled(f)) {
    throw UsageError(std::string("copy: --pad does not apply to ") + f.name +
                     ", whose stride is set by its tiles");
  }

  if (pad % 2 != 0 && CopiesSixteenBitRows(f)) {
    throw UsageError("copy: --pad must be even for " + std::string(f.name) +
                     ": kimgp_cpy steps its 16-bit rows by even strides");
  }

  Image dst(f, info.width, info.height, pad);
  TransformFrames("copy", reader.get(), &dst, out, out_type, info, CopyInto);
  return 0;
}

void CopyDemo(DemoContext* ctx) {
  const int32_t w = ctx->width(), h = ctx->height();
  const int32_t pad = 24;
  struct Case {
    int32_t cs;
    int32_t pad;
    const char* file;
    const char* what;
  } const kCases[] = {
      {KIMGP_CS_RGB565, pad, "copy-rgb565-pad24.png",
       "pattern in rgb565 copied by kimgp_cpy into rows padded by 24 bytes"},
      {KIMGP_CS_YUV420, 0, "copy-yuv420-luma.png",
       "pattern in yuv420 copied by kimgp_cpy, luma plane as gray"},
      {KIMGP_CS_NV21, pad, "copy-nv21-pad24-luma.png",
       "pattern in nv21 copied by kimgp_cpy into padded rows, luma as gray"},
  };
  for (const Case& c : kCases) {
    const FormatInfo& f = *LookupFormat(c.cs);
    const Image src = PatternImage(f, w, h);
    Image dst(f, w, h, c.pad);
    CopyInto(src, &dst);
    ctx->Emit(c.file, dst, c.what);
  }
}

}  // namespace

Command CopyCommand() {
  return {"copy",
          "copy frames with kimgp_cpy, optionally into padded rows",
          "copy [IN] OUT [--format F --size WxH] [--pad N]",
          "Copies every frame of IN (or of the pattern, default format\n"
          "yuv420) with kimgp_cpy into a frame whose rows have N bytes of\n"
          "padding (default 0), and writes the frames to OUT. Its type comes\n"
          "from the extension (.y4m, .png, anything else raw) or --out-type.\n"
          "Raw output holds the planes tightly packed; Y4M output takes the\n"
          "Y4M formats only (yuv420, yuv422n, yuv444, yuv400 and their\n"
          "10-bit forms) and repeats a Y4M input's header. PNG output writes\n"
          "RGB formats in colour, yuv400 as gray and other YUV formats as\n"
          "their luma plane in gray; one frame goes to OUT, several to\n"
          "OUT-0001.png, OUT-0002.png, ...\n"
          "The library refuses some formats (rgba8888, yuv420p16, ...): kelo\n"
          "reports its status. It steps 16-bit rows (rgb565, bgr565, nv12\n"
          "chroma) by even strides, so those take an even --pad only.\n",
          FrameCommandOptions(
              {{"pad", "N", "row padding of the copy in bytes (0 to 4096, default 0)"}}),
          RunCopy,
          CopyDemo};
}

}  // namespace cli
}  // namespace kelo
