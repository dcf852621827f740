// Splitting a compressed video file's bytes into access units (one coded
// picture each), with the media-type number that kcmn_is_vkeyfrm takes for
// them. Works on the whole file in memory; never reads outside it.
//
//   H.264, HEVC (Annex B byte streams)  a unit starts at an access-unit
//       delimiter, or at the first slice of a new picture, taking with it the
//       parameter sets and SEI that come before that slice; a four-byte start
//       code's leading zero belongs to the unit it starts.
//   MPEG-4 Part 2 elementary stream     a unit is a VOP with the headers
//       (sequence, object, layer, group) before it.
//   H.263 elementary stream             a unit starts at each picture start
//       code.
//   IVF (VP8, VP9, ...)                 each frame's payload, after its
//       12-byte frame header; the media type from the file's codec code.
//   FLV                                 each video tag's payload after its
//       one-byte frame-type/codec header; Sorenson H.263 tags get the
//       Sorenson media type, other codecs the unknown video type.
#ifndef KELO_TOOLS_MEDIA_ACCESS_UNITS_H_
#define KELO_TOOLS_MEDIA_ACCESS_UNITS_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kelo {
namespace media {

enum class Format { kUnknown, kH264, kHevc, kMpeg4, kH263, kIvf, kFlv };

// "h264", "hevc", "mpeg4", "h263", "ivf", "flv" or "unknown".
const char* FormatName(Format format);

// IVF and FLV by their signatures; elementary streams by the file name's
// extension (.264/.h264/.avc, .265/.h265/.hevc, .m4v/.cmp, .263/.h263), else
// by their first start code. kUnknown when nothing fits.
Format DetectFormat(const std::string& file_name, const uint8_t* data,
                    size_t size);

struct AccessUnit {
  size_t offset;       // first byte in the input
  size_t size;
  int32_t media_type;  // a KCMN_MT_VID_* number
};

struct Walk {
  std::vector<AccessUnit> units;  // in file order
  // Empty when every byte was accounted for; otherwise what was wrong
  // (garbage, truncation, a bad header) and where. Units found before the
  // problem are still listed.
  std::string error;
};

Walk SplitAccessUnits(Format format, const uint8_t* data, size_t size);

}  // namespace media
}  // namespace kelo

#endif  // KELO_TOOLS_MEDIA_ACCESS_UNITS_H_
