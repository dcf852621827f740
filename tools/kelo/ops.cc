#include "tools/kelo/ops.h"

#include "kimgp_copy.h"
#include "kimgp_rot.h"
#include "tools/kelo/error.h"

namespace kelo {
namespace cli {

void RequireLibraryFormat(const FormatInfo& f, const char* op) {
  if (IsKeloOnly(f)) {
    throw RunError(std::string(op) + ": " + f.name +
                   " is a kelo-only format for file I/O; the library has no "
                   "code for it");
  }
}

std::string StatusMessage(const char* op, int32_t status,
                          const FormatInfo& f) {
  const std::string s = " (status " + std::to_string(status) + ")";
  switch (status) {
    case KIMGP_ERR_UNSUPPORTED:
      return std::string(op) + ": format " + f.name + " not supported" + s;
    case KIMGP_ERR_ARGS:
      return std::string(op) + ": arguments don't fit" + s;
    default:
      return std::string(op) + ": failed" + s;
  }
}

kimgp_img CopyView(const kimgp_img& img) {
  kimgp_img v = img;
  const FormatInfo* f = LookupFormat(img.cs);
  if (f == nullptr || f->cs > 99 || f->cs == KIMGP_CS_YUV400 ||
      f->cs == KIMGP_CS_NV12) {
    return v;
  }
  for (int i = 0; i < f->planes; ++i) {
    if (IsTiled(*f)) {
      v.width[i] = v.stride[i];
      v.height[i] = v.buf_height[i];
    } else {
      v.width[i] = frame::PlaneOf(*f, i, img.width[0], img.height[0]).row_bytes;
    }
  }
  if (f->planes < 3) {
    // An empty third plane at a valid address.
    v.width[2] = v.height[2] = 0;
    v.stride[2] = v.stride[1];
    v.plane[2] = v.plane[1];
  }
  return v;
}

uint32_t RotationCode(const std::string& value, const char* command) {
  static constexpr struct {
    const char* name;
    uint32_t code;
  } kRotations[] = {{"90l", KIMGP_ROT_90L},
                    {"90r", KIMGP_ROT_90R},
                    {"180", KIMGP_ROT_180},
                    {"hori", KIMGP_ROT_HORI},
                    {"vert", KIMGP_ROT_VERT}};
  for (const auto& r : kRotations) {
    if (value == r.name) return r.code;
  }
  throw UsageError(std::string(command) + ": --rotate must be 90l, 90r, 180, hori or vert, not '" +
                   value + "'");
}

bool IsQuarterTurn(uint32_t code) { return code == KIMGP_ROT_90L || code == KIMGP_ROT_90R; }

bool CopiesSixteenBitRows(const FormatInfo& f) {
  return (f.cs >= 200 && f.cs <= 299) || f.cs == KIMGP_CS_NV12;
}

int32_t CopyWithLibrary(const Image& src, Image* dst) {
  RequireLibraryFormat(src.format(), "kimgp_cpy");
  const kimgp_img s = CopyView(src.img());
  kimgp_img d = CopyView(dst->img());
  return kimgp_cpy(&s, &d);
}

void RequireQuarterTurnable(const FormatInfo& f, uint32_t code, const char* cmd) {
  if (!IsQuarterTurn(code)) return;
  for (int i = 0; i < f.planes; ++i) {
    if (f.x_shift[i] != f.y_shift[i]) {
      throw UsageError(std::string(cmd) + ": a quarter turn of " + f.name + " would not be " +
                       f.name + " (its chroma is subsampled in width only)");
    }
  }
}

}  // namespace cli
}  // namespace kelo
