// How subcommands get their frames and name their outputs: an input file
// (raw needs --format and --size), or the built-in pattern when there is no
// input or the input is named "pattern".
#ifndef KELO_TOOLS_KELO_INPUT_H_
#define KELO_TOOLS_KELO_INPUT_H_

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tools/kelo/args.h"
#include "tools/kelo/io.h"

namespace kelo {
namespace cli {

constexpr int32_t kPatternWidth = 640;
constexpr int32_t kPatternHeight = 360;

// --format, --size, --frames, --in-type.
std::vector<OptionSpec> InputOptions();
// --out-type.
std::vector<OptionSpec> OutputOptions();
// The input and output options followed by a command's own.
std::vector<OptionSpec> FrameCommandOptions(const std::vector<OptionSpec>& own);
// Help text describing the input rules, shared by the commands.
extern const char kInputHelp[];

bool IsPatternInput(const std::string& path);
// Opens `path` (empty or "pattern" for the pattern, drawn in --format or
// `default_format`). Throws UsageError for inconsistent options.
std::unique_ptr<FrameReader> OpenInput(const Args& args,
                                       const std::string& path,
                                       const char* default_format);
// File type of an output: --out-type, else by extension.
FileType OutputType(const Args& args, const std::string& path);
// Throws a UsageError when `out` names the same file as `in`.
void RefuseSameFile(const Args& args, const std::string& in,
                    const std::string& out);

// The positionals of a frame command, [IN] OUT (no IN: the pattern), and
// OUT's file type; throws a UsageError when OUT names IN.
struct InOut {
  std::string in, out;
  FileType out_type;
};
InOut FramePositionals(const Args& args);

// Runs op(src, dst) on every frame of `reader` and writes each result to
// `out` as `like` describes it. The first frame goes through op before the
// output is created, so that a refusal (op throws) leaves no file behind.
// Shows progress as `name` on a terminal.
void TransformFrames(const char* name, FrameReader* reader, Image* dst,
                     const std::string& out, FileType type, const StreamInfo& like,
                     const std::function<void(const Image&, Image*)>& op);

// A drawn pattern frame.
Image PatternImage(const FormatInfo& f, int32_t w, int32_t h, int index = 0);

}  // namespace cli
}  // namespace kelo

#endif  // KELO_TOOLS_KELO_INPUT_H_
