// Runs the key-frame rules of every media type and the access-unit walker of
// every format on the input.
//
// The rules see the input in a heap block of exactly the size the header
// asks callers for (size + KCMN_VKEYFRM_PAD, at least KCMN_VKEYFRM_MIN_READ),
// so AddressSanitizer reports any read past it; the MPEG-4, H.264 and HEVC
// scans, which promise to stay within size, get a block without padding.
// Every answer must be 0 or 1 and equal that of a plain byte loop written
// from the rules. The walker gets an exact copy and its units must lie inside
// the input, in order.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "kcmn_media.h"
#include "tools/media/access_units.h"

namespace {

int32_t Reference(uint32_t type, const uint8_t* b, int32_t size) {
  switch (type) {
    case KCMN_MT_VID_MPEG4:
      for (int32_t i = 0; i <= size - 5; ++i) {
        if (b[i] != 0 || b[i + 1] != 0) continue;
        if ((b[i + 2] & 0xFC) == 0x80) {
          if ((b[i + 3] & 3) != 2) return 0;
          if ((b[i + 4] & 0x1C) == 0x1C) continue;
          return (b[i + 4] & 2) == 0;
        }
        if (b[i + 2] == 1 && b[i + 3] == 0xB6) return b[i + 4] < 0x40;
      }
      return 0;
    case KCMN_MT_VID_H263:
    case KCMN_MT_VID_FLV1:
      for (int32_t i = 0; i <= size - 7; ++i) {
        if (b[i] != 0 || b[i + 1] != 0) continue;
        const int t = b[i + 2] >> 2;
        if (t == 33) {
          const int at = (b[i + 3] != 0 || (b[i + 4] & 0x80) != 0) ? 8 : 6;
          return (b[i + at] & 0x60) == 0;
        }
        if (t == 32) {
          if ((b[i + 3] & 3) != 2) return 0;
          if ((b[i + 4] & 0x1C) != 0x1C) return (b[i + 4] & 2) == 0;
          const int u = ((b[i + 4] & 3) << 1) | (b[i + 5] >> 7);
          return u == 1 ? (b[i + 7] & 0x1C) == 0 : (b[i + 5] & 0x70) == 0;
        }
      }
      return 0;
    case KCMN_MT_VID_H264:
    case KCMN_MT_VID_HEVC:
      for (int32_t i = 0; i <= size - 4; ++i) {
        if (b[i] != 0 || b[i + 1] != 0 || b[i + 2] != 1) continue;
        if (type == KCMN_MT_VID_H264) {
          const int t = b[i + 3] & 0x1F;
          if (t == 1 || t == 5) return t == 5;
        } else {
          const int t = (b[i + 3] >> 1) & 0x3F;
          if (t >= 16 && t <= 21) return 1;
          if (t < 10) return 0;
        }
      }
      return 0;
    case KCMN_MT_VID_WMV1:
    case KCMN_MT_VID_DIV3:
      return b[0] < 0x40;
    case KCMN_MT_VID_WMV2:
      return (b[0] & 0x80) == 0;
    case KCMN_MT_VID_VP8:
      return b[3] == 0x9D && b[4] == 0x01 && b[5] == 0x2A;
    case KCMN_MT_VID_VP9:
      return (b[0] & 8) == 0 ? (b[0] & 4) == 0 : (b[1] & 0x80) == 0;
    default:
      return 0;
  }
}

void Check(bool ok) {
  if (!ok) abort();
}

// Judges `size` bytes at `data` on a copy with exactly the documented extent.
void Judge(uint32_t type, const uint8_t* data, size_t size) {
  const size_t readable =
      std::max<size_t>(size + KCMN_VKEYFRM_PAD, KCMN_VKEYFRM_MIN_READ);
  std::unique_ptr<uint8_t[]> buf(new uint8_t[readable]());
  if (size > 0) memcpy(buf.get(), data, size);
  const int32_t n = static_cast<int32_t>(size);
  const int32_t got = kcmn_is_vkeyfrm(type, buf.get(), n);
  Check(got == Reference(type, buf.get(), n));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > (1u << 20)) return 0;
  for (uint32_t type = 100; type <= 124; ++type) Judge(type, data, size);
  for (uint32_t type : {0u, 299u, 0xFFFFFFFFu}) Judge(type, data, size);
  for (uint32_t type : {KCMN_MT_VID_MPEG4, KCMN_MT_VID_H264, KCMN_MT_VID_HEVC}) {
    if (size == 0) break;
    std::unique_ptr<uint8_t[]> exact(new uint8_t[size]);
    memcpy(exact.get(), data, size);
    Check(kcmn_is_vkeyfrm(type, exact.get(), static_cast<int32_t>(size)) ==
          Reference(type, exact.get(), static_cast<int32_t>(size)));
  }

  using kelo::media::Format;
  std::unique_ptr<uint8_t[]> copy(new uint8_t[std::max<size_t>(size, 1)]);
  if (size > 0) memcpy(copy.get(), data, size);
  for (Format f : {Format::kH264, Format::kHevc, Format::kMpeg4, Format::kH263,
                   Format::kIvf, Format::kFlv}) {
    const kelo::media::Walk walk = kelo::media::SplitAccessUnits(f, copy.get(), size);
    size_t next = 0;
    for (const kelo::media::AccessUnit& u : walk.units) {
      Check(u.offset >= next && u.offset <= size && u.size <= size - u.offset);
      next = u.offset + u.size;
      Judge(static_cast<uint32_t>(u.media_type), copy.get() + u.offset, u.size);
    }
  }
  kelo::media::DetectFormat("input", copy.get(), size);
  return 0;
}
