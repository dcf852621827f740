// kcmn_is_vkeyfrm's rules as plain byte loops: the reference that the tests
// and the fuzzer compare the library's faster scans with.
#ifndef KELO_TESTS_SUPPORT_KEYFRAME_REFERENCE_H_
#define KELO_TESTS_SUPPORT_KEYFRAME_REFERENCE_H_

#include <cstdint>

#include "kcmn_media.h"

namespace kelo {
namespace test {

inline int32_t ReferenceKeyframe(uint32_t type, const uint8_t* b, int32_t size) {
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

}  // namespace test
}  // namespace kelo

#endif  // KELO_TESTS_SUPPORT_KEYFRAME_REFERENCE_H_
