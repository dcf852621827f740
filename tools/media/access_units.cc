#include "tools/media/access_units.h"

#include <cctype>
#include <cstring>

#include "kcmn_media.h"

namespace kelo {
namespace media {
namespace {

uint32_t ReadLe16(const uint8_t* p) { return p[0] | uint32_t{p[1]} << 8; }
uint32_t ReadLe32(const uint8_t* p) {
  return p[0] | uint32_t{p[1]} << 8 | uint32_t{p[2]} << 16 | uint32_t{p[3]} << 24;
}
uint32_t ReadBe24(const uint8_t* p) {
  return uint32_t{p[0]} << 16 | uint32_t{p[1]} << 8 | p[2];
}
uint32_t ReadBe32(const uint8_t* p) { return ReadBe24(p) << 8 | p[3]; }

std::string At(const char* what, size_t offset) {
  return std::string(what) + " at offset " + std::to_string(offset);
}

// The first p >= from with d[p] == d[p + 1] == 0 and third(d[p + 2]) true,
// or size when there is none.
template <class Third>
size_t FindCode(const uint8_t* d, size_t size, size_t from, Third third) {
  while (from < size && size - from >= 3) {
    const void* z = memchr(d + from, 0, size - from - 2);
    if (z == nullptr) break;
    const size_t p = static_cast<size_t>(static_cast<const uint8_t*>(z) - d);
    if (d[p + 1] == 0 && third(d[p + 2])) return p;
    from = p + 1;
  }
  return size;
}

bool IsOne(uint8_t b) { return b == 1; }
bool IsPictureStart(uint8_t b) { return (b & 0xFC) == 0x80; }  // H.263 PSC

// What a unit of a start-code stream (a NAL unit, an MPEG-4 header) does to
// access-unit boundaries.
enum class Role {
  kDelimiter,  // always opens a unit
  kPrefix,     // after a picture: the first of these opens the next unit
  kFirstSlice, // the first slice of a picture
  kSlice,      // a later slice of the same picture
  kOther,      // stays in the unit it is in
};

// Groups the start-code units of an Annex B or MPEG-4 stream into access
// units. `role(payload, n)` classifies one from its bytes after the start
// code (n may be 0). When `zero_byte` is set, a zero just before 00 00 01
// (a four-byte start code) belongs to the unit that the start code opens.
template <class RoleFn>
Walk GroupStartCodes(const uint8_t* d, size_t size, int32_t media_type,
                     bool zero_byte, RoleFn role) {
  Walk walk;
  size_t sc = FindCode(d, size, 0, IsOne);
  if (sc == size) {
    walk.error = "no start code found";
    return walk;
  }
  auto begin_of = [&](size_t code) {
    return (zero_byte && code > 0 && d[code - 1] == 0) ? code - 1 : code;
  };
  // Leading zero bytes are part of the stream; anything else is not.
  size_t first = begin_of(sc);
  bool leading_zeros = true;
  for (size_t i = 0; i < first; ++i) leading_zeros = leading_zeros && d[i] == 0;
  if (leading_zeros) {
    first = 0;
  } else {
    walk.error = std::to_string(first) + " bytes before the first start code";
  }

  std::vector<size_t> begins{first};
  bool has_picture = false;
  bool pending = false;  // a prefix after the picture opened the next unit
  size_t pending_begin = 0;
  while (sc < size) {
    const size_t payload = sc + 3;
    const size_t next = FindCode(d, size, payload, IsOne);
    const size_t end = next < size ? begin_of(next) : size;
    const size_t begin = begin_of(sc);
    // end >= payload: begin_of(next) is at least next - 1 >= payload - 1, and
    // next - 1 == payload - 1 only if d[payload - 1] (a 1) were zero.
    switch (role(d + payload, end - payload)) {
      case Role::kDelimiter:
        if (begin > begins.back()) begins.push_back(begin);
        has_picture = false;
        pending = false;
        break;
      case Role::kPrefix:
        if (has_picture && !pending) {
          pending = true;
          pending_begin = begin;
        }
        break;
      case Role::kFirstSlice:
        if (has_picture) begins.push_back(pending ? pending_begin : begin);
        has_picture = true;
        pending = false;
        break;
      case Role::kSlice:
        has_picture = true;
        pending = false;
        break;
      case Role::kOther:
        break;
    }
    sc = next;
  }
  for (size_t i = 0; i < begins.size(); ++i) {
    const size_t end = i + 1 < begins.size() ? begins[i + 1] : size;
    walk.units.push_back({begins[i], end - begins[i], media_type});
  }
  return walk;
}

// H.264 NAL units: slices (1-5) carry first_mb_in_slice as their first
// Exp-Golomb code, which is 0 exactly when its first bit is 1.
Role H264Role(const uint8_t* p, size_t n) {
  if (n == 0) return Role::kOther;
  const int type = p[0] & 0x1F;
  if (type >= 1 && type <= 5) {
    return (n >= 2 && (p[1] & 0x80) != 0) ? Role::kFirstSlice : Role::kSlice;
  }
  if (type == 9) return Role::kDelimiter;
  if (type == 6 || type == 7 || type == 8 || (type >= 14 && type <= 18)) {
    return Role::kPrefix;
  }
  return Role::kOther;
}

// HEVC NAL units (two header bytes): VCL types 0-31 start with
// first_slice_segment_in_pic_flag.
Role HevcRole(const uint8_t* p, size_t n) {
  if (n == 0) return Role::kOther;
  const int type = (p[0] >> 1) & 0x3F;
  if (type < 32) {
    return (n >= 3 && (p[2] & 0x80) != 0) ? Role::kFirstSlice : Role::kSlice;
  }
  if (type == 35) return Role::kDelimiter;
  if ((type >= 32 && type <= 34) || type == 39 || (type >= 41 && type <= 44) ||
      (type >= 48 && type <= 55)) {
    return Role::kPrefix;
  }
  return Role::kOther;  // suffix SEI, end of sequence or stream, filler
}

// MPEG-4 Part 2 start codes: every VOP is a picture; the sequence end code
// closes the unit it ends; every other header leads into the next VOP.
Role Mpeg4Role(const uint8_t* p, size_t n) {
  if (n == 0) return Role::kOther;
  if (p[0] == 0xB6) return Role::kFirstSlice;
  if (p[0] == 0xB1) return Role::kOther;
  return Role::kPrefix;
}

Walk SplitH263(const uint8_t* d, size_t size) {
  Walk walk;
  size_t p = FindCode(d, size, 0, IsPictureStart);
  if (p == size) {
    walk.error = "no picture start code found";
    return walk;
  }
  if (p > 0) walk.error = std::to_string(p) + " bytes before the first picture start code";
  while (p < size) {
    const size_t next = FindCode(d, size, p + 3, IsPictureStart);
    walk.units.push_back({p, next - p, KCMN_MT_VID_H263});
    p = next;
  }
  return walk;
}

Walk SplitIvf(const uint8_t* d, size_t size) {
  Walk walk;
  if (size < 32 || memcmp(d, "DKIF", 4) != 0) {
    walk.error = "not an IVF file (no 32-byte DKIF header)";
    return walk;
  }
  const size_t header = ReadLe16(d + 6);
  if (header < 32 || header > size) {
    walk.error = "IVF header length " + std::to_string(header) + " out of range";
    return walk;
  }
  const int32_t type = kcmn_fcc2mt_vid(static_cast<int32_t>(ReadLe32(d + 8)));
  size_t pos = header;
  while (pos < size) {
    if (size - pos < 12) {
      walk.error = At("truncated IVF frame header", pos);
      break;
    }
    const size_t frame = ReadLe32(d + pos);
    if (frame > size - pos - 12) {
      walk.error = At("IVF frame runs past the end of the file", pos);
      break;
    }
    walk.units.push_back({pos + 12, frame, type});
    pos += 12 + frame;
  }
  return walk;
}

Walk SplitFlv(const uint8_t* d, size_t size) {
  Walk walk;
  if (size < 9 || memcmp(d, "FLV", 3) != 0) {
    walk.error = "not an FLV file (no FLV header)";
    return walk;
  }
  const uint32_t header = ReadBe32(d + 5);
  if (header < 9 || header > size) {
    walk.error = "FLV header length " + std::to_string(header) + " out of range";
    return walk;
  }
  // Each tag follows the 4-byte size of the tag before it.
  size_t pos = header;
  while (true) {
    if (size - pos < 4) {
      if (pos != size) walk.error = At("truncated FLV previous-tag size", pos);
      break;
    }
    pos += 4;
    if (pos == size) break;
    if (size - pos < 11) {
      walk.error = At("truncated FLV tag header", pos);
      break;
    }
    const int type = d[pos] & 0x1F;
    const bool encrypted = (d[pos] & 0x20) != 0;
    const size_t length = ReadBe24(d + pos + 1);
    if (length > size - pos - 11) {
      walk.error = At("FLV tag runs past the end of the file", pos);
      break;
    }
    // Video tags: frame type (high nibble; 5 is a command, not a picture)
    // and codec (low nibble; 2 is Sorenson H.263) in the first byte.
    if (type == 9 && length >= 1 && (d[pos + 11] >> 4) != 5) {
      const int codec = d[pos + 11] & 0x0F;
      const int32_t media_type = (codec == 2 && !encrypted)
                                     ? int32_t{KCMN_MT_VID_FLV1}
                                     : int32_t{KCMN_MT_VID_UNKNOWN};
      walk.units.push_back({pos + 12, length - 1, media_type});
    }
    pos += 11 + length;
  }
  return walk;
}

bool EndsWith(const std::string& s, const char* suffix) {
  const size_t n = strlen(suffix);
  if (s.size() < n) return false;
  for (size_t i = 0; i < n; ++i) {
    if (tolower(static_cast<unsigned char>(s[s.size() - n + i])) != suffix[i]) {
      return false;
    }
  }
  return true;
}

}  // namespace

const char* FormatName(Format format) {
  switch (format) {
    case Format::kH264: return "h264";
    case Format::kHevc: return "hevc";
    case Format::kMpeg4: return "mpeg4";
    case Format::kH263: return "h263";
    case Format::kIvf: return "ivf";
    case Format::kFlv: return "flv";
    case Format::kUnknown: break;
  }
  return "unknown";
}

Format DetectFormat(const std::string& file_name, const uint8_t* d, size_t size) {
  if (size >= 4 && memcmp(d, "DKIF", 4) == 0) return Format::kIvf;
  if (size >= 4 && memcmp(d, "FLV\x01", 4) == 0) return Format::kFlv;
  for (const char* ext : {".264", ".h264", ".avc"}) {
    if (EndsWith(file_name, ext)) return Format::kH264;
  }
  for (const char* ext : {".265", ".h265", ".hevc"}) {
    if (EndsWith(file_name, ext)) return Format::kHevc;
  }
  for (const char* ext : {".m4v", ".cmp"}) {
    if (EndsWith(file_name, ext)) return Format::kMpeg4;
  }
  for (const char* ext : {".263", ".h263"}) {
    if (EndsWith(file_name, ext)) return Format::kH263;
  }
  // By the first start code after any leading zeros.
  size_t i = 0;
  while (i < size && d[i] == 0) ++i;
  if (i >= 2 && i < size && (d[i] & 0xFC) == 0x80) return Format::kH263;
  if (i < 2 || i >= size || d[i] != 1 || size - i < 3) return Format::kUnknown;
  const uint8_t b0 = d[i + 1];
  const uint8_t b1 = d[i + 2];
  const int hevc_type = (b0 >> 1) & 0x3F;
  if ((b0 & 0x81) == 0 && b1 == 0x01 &&
      (hevc_type == 32 || hevc_type == 33 || hevc_type == 35 || hevc_type == 39)) {
    return Format::kHevc;
  }
  if (b0 == 0xB0 || b0 == 0xB5 || b0 == 0xB6) return Format::kMpeg4;
  // A video object (00-1F) followed by its layer (20-2F).
  if (b0 <= 0x1F && size - i >= 8 && d[i + 2] == 0 && d[i + 3] == 0 &&
      d[i + 4] == 1 && (d[i + 5] & 0xF0) == 0x20) {
    return Format::kMpeg4;
  }
  const int h264_type = b0 & 0x1F;
  if ((b0 & 0x80) == 0 && (h264_type == 1 || (h264_type >= 5 && h264_type <= 9))) {
    return Format::kH264;
  }
  return Format::kUnknown;
}

Walk SplitAccessUnits(Format format, const uint8_t* data, size_t size) {
  switch (format) {
    case Format::kH264:
      return GroupStartCodes(data, size, KCMN_MT_VID_H264, true, H264Role);
    case Format::kHevc:
      return GroupStartCodes(data, size, KCMN_MT_VID_HEVC, true, HevcRole);
    case Format::kMpeg4:
      return GroupStartCodes(data, size, KCMN_MT_VID_MPEG4, false, Mpeg4Role);
    case Format::kH263:
      return SplitH263(data, size);
    case Format::kIvf:
      return SplitIvf(data, size);
    case Format::kFlv:
      return SplitFlv(data, size);
    case Format::kUnknown:
      break;
  }
  Walk walk;
  walk.error = "unknown format";
  return walk;
}

}  // namespace media
}  // namespace kelo
