// kelo fourcc: the media type kcmn_fcc2mt gives a four-character code or a
// numeric format tag.
#include <cstdlib>
#include <vector>

#include "kcmn_media.h"
#include "tools/kelo/command.h"
#include "tools/kelo/error.h"

namespace kelo {
namespace cli {
namespace {

// Four characters as the little-endian word the library takes, or a number
// (decimal, or hexadecimal after 0x).
int32_t ParseCode(const std::string& text) {
  const bool numeric = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
  const bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') &&
                   text.find_first_not_of("0123456789abcdefABCDEF", 2) == std::string::npos;
  if ((numeric && text.size() <= 10) || (hex && text.size() <= 10)) {
    const unsigned long v = std::strtoul(text.c_str(), nullptr, hex ? 16 : 10);
    if (v <= 0xFFFFFFFFul) return static_cast<int32_t>(static_cast<uint32_t>(v));
  }
  if (text.size() == 4) {
    uint32_t v = 0;
    for (int i = 3; i >= 0; --i) v = (v << 8) | static_cast<uint8_t>(text[static_cast<size_t>(i)]);
    return static_cast<int32_t>(v);
  }
  throw UsageError("fourcc: '" + text + "' is neither four characters nor a number");
}

const char* Family(int32_t type) {
  if ((type >= 102 && type <= 122) || type == 299) return "video";
  if ((type >= 300 && type <= 338) || type == 499) return "audio";
  if (type == 1100 || type == 1299) return "protected";
  if ((type >= 3000 && type <= 3008) || type == 3199) return "subtitle";
  return "?";
}

int RunFourcc(const Args& args) {
  args.ExpectPositional(1, 1000);
  std::vector<int32_t> codes;
  for (const std::string& text : args.positional()) codes.push_back(ParseCode(text));
  for (size_t i = 0; i < codes.size(); ++i) {
    const int32_t type = kcmn_fcc2mt(codes[i]);
    // The dispatcher answers 3199 when no family knows the code.
    std::printf("%-10s %5d  %s\n", args.positional()[i].c_str(), type,
                type == 3199 ? "no match" : Family(type));
  }
  return 0;
}

}  // namespace

Command FourccCommand() {
  return {"fourcc",
          "media type of four-character codes and format tags",
          "fourcc CODE...",
          "Prints, for each CODE, the media-type number kcmn_fcc2mt gives it\n"
          "and its family (video, audio, protected, subtitle). A CODE is four\n"
          "characters (case matters: avc1, mp4a, tx3g) or a number, decimal\n"
          "or 0x hexadecimal (WAVE format tags such as 85).\n",
          {},
          RunFourcc,
          nullptr};
}

}  // namespace cli
}  // namespace kelo
