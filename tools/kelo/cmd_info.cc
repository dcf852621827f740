// kelo info: plane layout of a format, what a file holds, the format list.
#include "tools/kelo/command.h"
#include "tools/kelo/error.h"
#include "tools/kelo/input.h"
#include "tools/kelo/io.h"
#include "tools/kelo/progress.h"

namespace kelo {
namespace cli {
namespace {

std::string Code(const FormatInfo& f) {
  return IsKeloOnly(f) ? "kelo" : std::to_string(f.cs);
}

void PrintFormats() {
  std::printf("%-6s %-10s %-6s %-9s %s\n", "code", "name", "planes", "y4m",
              "summary");
  for (const FormatInfo* f : KnownFormats()) {
    const char* tag = Y4mTagFor(*f);
    const std::string y4m = tag ? std::string("C") + tag : "-";
    std::printf("%-6s %-10s %-6d %-9s %s\n", Code(*f).c_str(), f->name,
                f->planes, y4m.c_str(), f->summary);
  }
}

void PrintLayout(const FormatInfo& f, int32_t w, int32_t h, int32_t pad) {
  kimgp_img img;
  Layout(f, w, h, pad, &img);
  std::printf("%s (code %s): %s\n", f.name, Code(f).c_str(), f.summary);
  std::printf("size %dx%d, row padding %d\n", w, h, IsTiled(f) ? 0 : pad);
  std::printf("%-6s %-16s %-7s %-7s %s\n", "plane", "width", "height",
              "stride", "bytes");
  int64_t total = 0;
  for (int i = 0; i < f.planes; ++i) {
    const int64_t bytes = frame::PlaneBytes(img, i);
    total += bytes;
    const std::string width =
        std::to_string(img.width[i]) + " " + WidthUnit(f, i);
    std::printf("%-6d %-16s %-7d %-7d %lld", i, width.c_str(),
                img.height[i], img.stride[i], static_cast<long long>(bytes));
    Tile t;
    if (TileOf(f, i, &t)) {
      std::printf("  (%dx%d tiles, %d rows allocated)", t.w, t.h,
                  img.buf_height[i]);
    }
    std::printf("\n");
  }
  std::printf("total  %lld bytes\n", static_cast<long long>(total));
  if (IsKeloOnly(f)) {
    std::printf("(kelo only: files can hold it, library calls refuse it)\n");
  }
}

void PrintFile(const Args& args, const std::string& path) {
  std::unique_ptr<FrameReader> reader = OpenInput(args, path, "yuv420");
  const StreamInfo& info = reader->info();
  // Counting steps through every frame, so truncation is reported too.
  Progress progress =
      Progress::ForStderr("info", info.frames, info.frames_exact);
  int64_t frames = 0;
  while (reader->Skip()) progress.Update(++frames);
  progress.Done();
  std::printf("%s\n", info.source.c_str());
  std::printf("  type    %s\n", info.detail.c_str());
  std::printf("  format  %s (code %s)\n", info.format->name,
              Code(*info.format).c_str());
  std::printf("  size    %dx%d\n", info.width, info.height);
  std::printf("  frames  %lld\n", static_cast<long long>(frames));
}

int RunInfo(const Args& args) {
  args.ExpectPositional(0, 1);
  if (args.Has("formats")) {
    if (!args.positional().empty() || args.Has("format") ||
        args.Has("size")) {
      throw UsageError("info: --formats takes nothing else");
    }
    PrintFormats();
    return 0;
  }
  if (!args.positional().empty()) {
    PrintFile(args, args.positional()[0]);
    return 0;
  }
  const FormatInfo* f = args.GetFormat("format");
  int32_t w = 0, h = 0;
  args.GetSize("size", &w, &h);
  if (f == nullptr || w == 0) {
    throw UsageError("info: give FILE, --format and --size, or --formats");
  }
  const std::string why = CheckFrameSize(*f, w, h);
  if (!why.empty()) throw UsageError("info: " + why);
  PrintLayout(*f, w, h,
              static_cast<int32_t>(args.GetInt("pad", 0, 0, 4096)));
  return 0;
}

}  // namespace

Command InfoCommand() {
  return {"info",
          "plane layout of a format, contents of a file, list of formats",
          "info --format F --size WxH [--pad N]\n"
          "info FILE [--format F --size WxH]\n"
          "info --formats",
          "With --format and --size: each plane's width (in samples, pairs\n"
          "or pixels), height, stride and buffer bytes, and the total, for\n"
          "rows padded by --pad bytes. With FILE: its type, format, size and\n"
          "frame count (raw files need --format and --size). With --formats:\n"
          "every format with its code, planes, Y4M tag and summary.\n",
          {{"format", "NAME", "format to lay out, or of a raw FILE"},
           {"size", "WxH", "picture size"},
           {"pad", "N", "bytes of padding after each row (default 0)"},
           {"in-type", "TYPE", "FILE type: raw, y4m or png"},
           {"formats", nullptr, "list every format"}},
          RunInfo,
          nullptr};
}

}  // namespace cli
}  // namespace kelo
