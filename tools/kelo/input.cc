#include "tools/kelo/input.h"

#include <filesystem>
#include <system_error>

#include "tools/kelo/error.h"
#include "tools/kelo/pattern.h"
#include "tools/kelo/progress.h"

namespace kelo {
namespace cli {

const char kInputHelp[] =
    "Input: a raw file (needs --format and --size), a .y4m or a .png file\n"
    "(type by extension, or --in-type), or the built-in pattern when no\n"
    "input is given or it is named 'pattern' (--size, default 640x360;\n"
    "--format; --frames, default 1).\n";

std::vector<OptionSpec> InputOptions() {
  return {{"format", "NAME", "format of raw input or of the pattern"},
          {"size", "WxH", "size of raw input or of the pattern"},
          {"frames", "N", "frames of the pattern (default 1)"},
          {"in-type", "TYPE", "input file type: raw, y4m or png"}};
}

std::vector<OptionSpec> OutputOptions() {
  return {{"out-type", "TYPE", "output file type: raw, y4m or png"}};
}

bool IsPatternInput(const std::string& path) {
  return path.empty() || path == "pattern";
}

std::unique_ptr<FrameReader> OpenInput(const Args& args,
                                       const std::string& path,
                                       const char* default_format) {
  const std::string& cmd = args.command();
  const FormatInfo* f = args.GetFormat("format");
  int32_t w = 0, h = 0;
  args.GetSize("size", &w, &h);
  auto check = [&](const FormatInfo& fmt) {
    const std::string why = CheckFrameSize(fmt, w, h);
    if (!why.empty()) throw UsageError(cmd + ": " + why);
  };
  if (IsPatternInput(path)) {
    if (args.Has("in-type")) {
      throw UsageError(cmd + ": --in-type needs an input file");
    }
    if (f == nullptr) f = LookupFormat(default_format);
    if (w == 0) {
      w = kPatternWidth;
      h = kPatternHeight;
    }
    check(*f);
    const int64_t frames = args.GetInt("frames", 1, 1, 1000000);
    return OpenPatternReader(*f, w, h, frames);
  }
  if (args.Has("frames")) {
    throw UsageError(cmd + ": --frames applies to the pattern only");
  }
  FileType type = FileTypeOf(path);
  if (args.Has("in-type") && !ParseFileType(args.Get("in-type"), &type)) {
    throw UsageError(cmd + ": --in-type must be raw, y4m or png");
  }
  if (type == FileType::kRaw) {
    if (f == nullptr || w == 0) {
      throw UsageError(cmd + ": raw input " + path +
                       " needs --format and --size");
    }
    check(*f);
    return OpenRawReader(path, *f, w, h);
  }
  if (f != nullptr || w != 0) {
    throw UsageError(cmd + ": --format and --size describe raw input and "
                     "the pattern; " + path + " is a " + FileTypeName(type) +
                     " file");
  }
  if (type == FileType::kY4m) return OpenY4mReader(path);
  return OpenPngReader(path);
}

FileType OutputType(const Args& args, const std::string& path) {
  FileType type = FileTypeOf(path);
  if (args.Has("out-type") && !ParseFileType(args.Get("out-type"), &type)) {
    throw UsageError(args.command() + ": --out-type must be raw, y4m or png");
  }
  return type;
}

void RefuseSameFile(const Args& args, const std::string& in,
                    const std::string& out) {
  std::error_code ec;
  if (!IsPatternInput(in) && std::filesystem::equivalent(in, out, ec)) {
    throw UsageError(args.command() + ": input and output are the same file");
  }
}

Image PatternImage(const FormatInfo& f, int32_t w, int32_t h, int index) {
  Image im(f, w, h);
  pattern::Draw(im.mutable_img(), index);
  return im;
}

void TransformFrames(const char* name, FrameReader* reader, Image* dst,
                     const std::string& out, FileType type, const StreamInfo& like,
                     const std::function<void(const Image&, Image*)>& op) {
  const StreamInfo& info = reader->info();
  Image src;
  if (!reader->Read(&src)) throw RunError(info.source + ": no frames");
  op(src, dst);
  std::unique_ptr<FrameWriter> writer = CreateWriter(out, type, like);
  Progress progress = Progress::ForStderr(name, info.frames, info.frames_exact);
  int64_t n = 0;
  do {
    if (n > 0) op(src, dst);
    writer->Write(*dst);
    progress.Update(++n);
  } while (reader->Read(&src));
  writer->Finish();
  progress.Done();
}

std::vector<OptionSpec> FrameCommandOptions(const std::vector<OptionSpec>& own) {
  std::vector<OptionSpec> o = InputOptions();
  const std::vector<OptionSpec> out = OutputOptions();
  o.insert(o.end(), out.begin(), out.end());
  o.insert(o.end(), own.begin(), own.end());
  return o;
}

InOut FramePositionals(const Args& args) {
  args.ExpectPositional(1, 2);
  const auto& pos = args.positional();
  InOut io{pos.size() == 2 ? pos[0] : "", pos.back(), OutputType(args, pos.back())};
  RefuseSameFile(args, io.in, io.out);
  return io;
}

}  // namespace cli
}  // namespace kelo
