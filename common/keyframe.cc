// Key-frame recognition from a compressed video access unit's header bytes.
//
// The start-code formats are scanned from offset 0 for the first header
// that decides. Every start code begins with two zero bytes, so the scans
// let memchr find zero bytes and look closer only there: on slice data, where
// zero bytes are rare, that runs at memory speed, and it visits the same
// candidate positions in the same order as a byte loop.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "common/internal/api.h"
#include "kcmn_media.h"

namespace kelo {
namespace {

// A position's verdict: key, not key, or no decision here.
constexpr int kNotKey = 0;
constexpr int kKey = 1;
constexpr int kGoOn = -1;

// Calls At(b + p) for the positions p < n with b[p] == 0 and b[p + 1] == 0
// (every start code has both), in increasing order, until one returns a
// verdict; kNotKey when none does. memchr finds the zero bytes a vector at a
// time; a byte after a zero that is not zero rules out two positions at
// once; runs of zeros are walked byte by byte. The caller guarantees that
// b[p + 1] exists for p < n.
template <int (*At)(const uint8_t*)>
int32_t ScanZeros(const uint8_t* b, size_t n) {
  size_t p = 0;
  while (p < n) {
    if (b[p] != 0) {
      const void* z = memchr(b + p + 1, 0, n - p - 1);
      if (z == nullptr) break;
      p = static_cast<size_t>(static_cast<const uint8_t*>(z) - b);
    }
    if (b[p + 1] != 0) {
      p += 2;
      continue;
    }
    const int r = At(b + p);
    if (r != kGoOn) return r;
    ++p;
  }
  return kNotKey;
}

// Scans positions 0 to size - span (span: the bytes a header needs to be
// recognised); fewer than span bytes give kNotKey.
template <int (*At)(const uint8_t*)>
int32_t Scan(const uint8_t* data, int32_t size, int32_t span) {
  if (size < span) return kNotKey;
  return ScanZeros<At>(data, static_cast<size_t>(size - span) + 1);
}

// The *At functions judge a scan position b with b[0] == b[1] == 0.

// MPEG-4 Part 2: the first video-object-plane start code decides by its
// coding type; a short-header (H.263) picture start code decides by its
// picture type unless its source-format field is the extended one.
int Mpeg4At(const uint8_t* b) {
  if ((b[2] & 0xFC) == 0x80) {
    if ((b[3] & 3) != 2) return kNotKey;
    if ((b[4] & 0x1C) == 0x1C) return kGoOn;
    return (b[4] & 2) == 0 ? kKey : kNotKey;
  }
  if (b[2] == 0x01 && b[3] == 0xB6) return b[4] < 0x40 ? kKey : kNotKey;
  return kGoOn;
}

// H.263 and Sorenson H.263: the first picture start code decides. The scan
// ends 7 bytes before the end of the data, yet a header there reads b[7] and
// b[8]: up to two bytes past it.
int H263At(const uint8_t* b) {
  const int t = b[2] >> 2;
  if (t == 33) {
    // Sorenson, version 1: the picture type follows the size field, whose
    // length the tests below tell apart (custom 16-bit sizes: b[8]; custom
    // 8-bit sizes: b[6]).
    const uint8_t type = (b[3] != 0 || (b[4] & 0x80) != 0) ? b[8] : b[6];
    return (type & 0x60) == 0 ? kKey : kNotKey;
  }
  if (t == 32) {
    if ((b[3] & 3) != 2) return kNotKey;
    if ((b[4] & 0x1C) != 0x1C) return (b[4] & 2) == 0 ? kKey : kNotKey;
    // Extended picture type; the update flag says whether the optional part
    // (18 bits) precedes the picture coding type.
    const int ufep = ((b[4] & 3) << 1) | (b[5] >> 7);
    if (ufep == 1) return (b[7] & 0x1C) == 0 ? kKey : kNotKey;
    return (b[5] & 0x70) == 0 ? kKey : kNotKey;
  }
  return kGoOn;
}

// H.264: the first IDR or non-IDR slice NAL unit decides; other NAL units
// are passed over. Three-byte start codes only.
int H264At(const uint8_t* b) {
  if (b[2] != 1) return kGoOn;
  const int type = b[3] & 0x1F;
  if (type == 1) return kNotKey;
  if (type == 5) return kKey;
  return kGoOn;
}

// HEVC: the first NAL unit of a random-access type (16-21) says key, the
// first of a type below 10 says not; the rest are passed over.
int HevcAt(const uint8_t* b) {
  if (b[2] != 1) return kGoOn;
  const int type = (b[3] >> 1) & 0x3F;
  if (type >= 16 && type <= 21) return kKey;
  if (type < 10) return kNotKey;
  return kGoOn;
}

int32_t IsKeyFrame(uint32_t media_type, const uint8_t* b, int32_t size) {
  switch (media_type) {
    case KCMN_MT_VID_MPEG4:
      return Scan<Mpeg4At>(b, size, 5);
    case KCMN_MT_VID_H263:
    case KCMN_MT_VID_FLV1:
      return Scan<H263At>(b, size, 7);
    case KCMN_MT_VID_H264:
      return Scan<H264At>(b, size, 4);
    case KCMN_MT_VID_HEVC:
      return Scan<HevcAt>(b, size, 4);
    case KCMN_MT_VID_WMV1:
    case KCMN_MT_VID_DIV3:
      return b[0] < 0x40 ? kKey : kNotKey;
    case KCMN_MT_VID_WMV2:
      return (b[0] & 0x80) == 0 ? kKey : kNotKey;
    case KCMN_MT_VID_VP8:
      // The start code that only key frames carry.
      return (b[3] == 0x9D && b[4] == 0x01 && b[5] == 0x2A) ? kKey : kNotKey;
    case KCMN_MT_VID_VP9:
      // Bit 3 set: the frame repeats a stored one; then bit 7 of b[1].
      if ((b[0] & 0x08) == 0) return (b[0] & 0x04) == 0 ? kKey : kNotKey;
      return (b[1] & 0x80) == 0 ? kKey : kNotKey;
    default:
      return kNotKey;
  }
}

}  // namespace
}  // namespace kelo

KELO_EXPORT int32_t kcmn_is_vkeyfrm(uint32_t media_type, const uint8_t* data,
                                    int32_t size) {
  return kelo::IsKeyFrame(media_type, data, size);
}
