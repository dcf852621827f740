// kelo demo: the pattern and what each command's library calls make of it,
// as PNG files in one folder.
#include <filesystem>
#include <system_error>

#include "tools/kelo/command.h"
#include "tools/kelo/demo.h"
#include "tools/kelo/error.h"
#include "tools/kelo/input.h"
#include "tools/kelo/io.h"

namespace kelo {
namespace cli {

void DemoContext::Emit(const std::string& name, const Image& frame,
                       const std::string& what) {
  const std::string path = (std::filesystem::path(dir_) / name).string();
  WritePng(path, frame);
  written_.push_back(path);
  std::fprintf(out_, "%-36s %s\n", path.c_str(), what.c_str());
}

namespace {

// The pattern itself, as the other results' reference.
void PatternDemo(DemoContext* ctx) {
  const int32_t w = ctx->width(), h = ctx->height();
  ctx->Emit("pattern-rgba8888.png",
            PatternImage(*LookupFormat(KIMGP_CS_RGBA8888), w, h),
            "the test pattern drawn in rgba8888");
  ctx->Emit("pattern-yuv420-luma.png",
            PatternImage(*LookupFormat(KIMGP_CS_YUV420), w, h),
            "the test pattern drawn in yuv420, luma plane as gray");
}

int RunDemo(const Args& args) {
  args.ExpectPositional(0, 0);
  const std::string dir = args.Get("out", "kelo-demo");
  int32_t w = kPatternWidth, h = kPatternHeight;
  args.GetSize("size", &w, &h);
  const std::string why =
      CheckFrameSize(*LookupFormat(KIMGP_CS_RGBA8888), w, h);
  if (!why.empty()) throw UsageError("demo: " + why);
  std::error_code ec;
  std::filesystem::create_directories(dir, ec);
  if (ec || !std::filesystem::is_directory(dir)) {
    throw RunError("cannot create folder " + dir +
                   (ec ? ": " + ec.message() : ""));
  }
  DemoContext ctx(dir, w, h, stdout);
  PatternDemo(&ctx);
  for (const Command& c : Commands()) {
    if (c.demo != nullptr) c.demo(&ctx);
  }
  return 0;
}

}  // namespace

Command DemoCommand() {
  return {"demo",
          "write PNGs of the pattern and of what the library does to it",
          "demo [--out DIR] [--size WxH]",
          "Draws the test pattern, runs it through the library calls of each\n"
          "command and writes the results as PNG files into DIR (default\n"
          "kelo-demo, created if missing), printing one line per file: its\n"
          "path and what it shows. YUV results are shown as their luma\n"
          "plane.\n",
          {{"out", "DIR", "folder for the PNG files (default kelo-demo)"},
           {"size", "WxH", "picture size (default 640x360)"}},
          RunDemo,
          nullptr};
}

}  // namespace cli
}  // namespace kelo
