// kelo probe: the access units of a compressed video file and which of them
// kcmn_is_vkeyfrm calls key frames.
#include <cstring>
#include <vector>

#include "kcmn_media.h"
#include "tools/kelo/command.h"
#include "tools/kelo/error.h"
#include "tools/kelo/file.h"
#include "tools/media/access_units.h"

namespace kelo {
namespace cli {
namespace {

constexpr int64_t kMaxProbeBytes = int64_t{1} << 30;

media::Format CodecFormat(const std::string& codec) {
  static const struct {
    const char* name;
    media::Format format;
  } kNames[] = {{"h264", media::Format::kH264},  {"avc", media::Format::kH264},
                {"hevc", media::Format::kHevc},  {"h265", media::Format::kHevc},
                {"mpeg4", media::Format::kMpeg4}, {"h263", media::Format::kH263},
                {"vp8", media::Format::kIvf},    {"vp9", media::Format::kIvf},
                {"ivf", media::Format::kIvf},    {"flv", media::Format::kFlv},
                {"sorenson", media::Format::kFlv}};
  for (const auto& n : kNames) {
    if (codec == n.name) return n.format;
  }
  throw UsageError("probe: unknown --codec '" + codec +
                   "' (h264, hevc, mpeg4, h263, vp8, vp9, flv)");
}

// The whole file, followed by zero bytes: the key-frame rules may look a
// few bytes past a unit, and the last unit has nothing after it.
std::vector<uint8_t> ReadAll(const std::string& path) {
  File f = File::OpenRead(path);
  std::vector<uint8_t> data;
  uint8_t chunk[1 << 16];
  for (size_t n; (n = f.Read(chunk, sizeof chunk)) > 0;) {
    data.insert(data.end(), chunk, chunk + n);
    if (static_cast<int64_t>(data.size()) > kMaxProbeBytes) {
      throw RunError(path + ": larger than 1 GiB");
    }
  }
  return data;
}

int RunProbe(const Args& args) {
  args.ExpectPositional(1, 1);
  const std::string path = args.positional()[0];
  std::vector<uint8_t> data = ReadAll(path);
  const size_t size = data.size();
  data.resize(size + KCMN_VKEYFRM_MIN_READ + KCMN_VKEYFRM_PAD, 0);
  const media::Format format = args.Has("codec")
                                   ? CodecFormat(args.Get("codec"))
                                   : media::DetectFormat(path, data.data(), size);
  if (format == media::Format::kUnknown) {
    throw RunError(path + ": not a stream probe knows (give --codec)");
  }
  const media::Walk walk = media::SplitAccessUnits(format, data.data(), size);
  std::printf("%s: %s\n", path.c_str(), media::FormatName(format));
  std::printf("%-6s %-10s %-8s %s\n", "unit", "offset", "size", "key");
  std::vector<size_t> keys;
  for (size_t i = 0; i < walk.units.size(); ++i) {
    const media::AccessUnit& u = walk.units[i];
    const int key = kcmn_is_vkeyfrm(static_cast<uint32_t>(u.media_type), data.data() + u.offset,
                                    static_cast<int32_t>(u.size));
    if (key) keys.push_back(i);
    std::printf("%-6zu %-10zu %-8zu %s\n", i, u.offset, u.size, key ? "key" : "-");
  }
  std::printf("frames %zu, key frames %zu", walk.units.size(), keys.size());
  if (!keys.empty()) {
    // A GOP runs from a key frame to the next one (the last to the end).
    std::printf(", GOP lengths");
    for (size_t k = 0; k < keys.size(); ++k) {
      const size_t end = k + 1 < keys.size() ? keys[k + 1] : walk.units.size();
      std::printf(" %zu", end - keys[k]);
    }
    if (keys[0] > 0) std::printf(" (%zu units before the first key frame)", keys[0]);
  }
  std::printf("\n");
  if (!walk.error.empty()) throw RunError(path + ": " + walk.error);
  return 0;
}

}  // namespace

Command ProbeCommand() {
  return {"probe",
          "access units of a video stream and which are key frames",
          "probe FILE [--codec NAME]",
          "Splits an H.264 or HEVC Annex B stream, an MPEG-4 Part 2 or H.263\n"
          "elementary stream, an IVF file (VP8, VP9) or an FLV file (Sorenson\n"
          "H.263) into access units and prints each unit's offset, size and\n"
          "whether kcmn_is_vkeyfrm calls it a key frame, then the number of\n"
          "frames and key frames and the GOP lengths. The stream type comes\n"
          "from the file's signature or extension, or from --codec.\n",
          {{"codec", "NAME", "h264, hevc, mpeg4, h263, vp8, vp9 or flv"}},
          RunProbe,
          nullptr};
}

}  // namespace cli
}  // namespace kelo
