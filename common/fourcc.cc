// Four-character codes and numeric audio tags to media-type numbers. The
// tables are plain data, searched in order; codes compare exactly, case
// included.
#include <cstddef>
#include <cstdint>

#include "common/internal/api.h"
#include "kcmn_media.h"

namespace kelo {
namespace {

// The code of four characters as a little-endian load of them gives it: the
// first character in the lowest byte.
constexpr int32_t Fcc(const char (&s)[5]) {
  return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint8_t>(s[0])) |
                              static_cast<uint32_t>(static_cast<uint8_t>(s[1])) << 8 |
                              static_cast<uint32_t>(static_cast<uint8_t>(s[2])) << 16 |
                              static_cast<uint32_t>(static_cast<uint8_t>(s[3])) << 24);
}
static_assert(Fcc("avc1") == 0x31637661, "first character in the lowest byte");

struct Entry {
  int32_t code;
  int32_t type;
};

template <size_t N>
constexpr int32_t Find(const Entry (&table)[N], int32_t code, int32_t unknown) {
  for (const Entry& e : table) {
    if (e.code == code) return e.type;
  }
  return unknown;
}

constexpr Entry kVideo[] = {
    {Fcc("mp4v"), KCMN_MT_VID_MPEG4}, {Fcc("MP4V"), KCMN_MT_VID_MPEG4},
    {Fcc("XVID"), KCMN_MT_VID_MPEG4}, {Fcc("xvid"), KCMN_MT_VID_MPEG4},
    {Fcc("DIVX"), KCMN_MT_VID_MPEG4}, {Fcc("divx"), KCMN_MT_VID_MPEG4},
    {Fcc("DX50"), KCMN_MT_VID_MPEG4}, {Fcc("dx50"), KCMN_MT_VID_MPEG4},
    {Fcc("FMP4"), KCMN_MT_VID_MPEG4}, {Fcc("M4S2"), KCMN_MT_VID_MPEG4},
    {Fcc("m4s2"), KCMN_MT_VID_MPEG4}, {Fcc("DIV4"), KCMN_MT_VID_MPEG4},
    {Fcc("div4"), KCMN_MT_VID_MPEG4},
    // "d263", "h263" and "s263": see kH263Mask.
    {Fcc("H263"), KCMN_MT_VID_H263},
    {Fcc("avc1"), KCMN_MT_VID_H264}, {Fcc("AVC1"), KCMN_MT_VID_H264},
    {Fcc("avcC"), KCMN_MT_VID_H264}, {Fcc("h264"), KCMN_MT_VID_H264},
    {Fcc("H264"), KCMN_MT_VID_H264}, {Fcc("x264"), KCMN_MT_VID_H264},
    {Fcc("X264"), KCMN_MT_VID_H264},
    {Fcc("wmv1"), KCMN_MT_VID_WMV1}, {Fcc("WMV1"), KCMN_MT_VID_WMV1},
    {Fcc("wmv2"), KCMN_MT_VID_WMV2}, {Fcc("WMV2"), KCMN_MT_VID_WMV2},
    {Fcc("wmv3"), KCMN_MT_VID_WMV3}, {Fcc("WMV3"), KCMN_MT_VID_WMV3},
    {Fcc("div3"), KCMN_MT_VID_DIV3}, {Fcc("DIV3"), KCMN_MT_VID_DIV3},
    {Fcc("FLV1"), KCMN_MT_VID_FLV1},
    {Fcc("RV10"), KCMN_MT_VID_RV10},
    {Fcc("RV20"), KCMN_MT_VID_RV20},
    {Fcc("RV30"), KCMN_MT_VID_RV30},
    {Fcc("RV40"), KCMN_MT_VID_RV40},
    {Fcc("MP43"), KCMN_MT_VID_MP43}, {Fcc("mp43"), KCMN_MT_VID_MP43},
    {Fcc("wvc1"), KCMN_MT_VID_VC1}, {Fcc("WVC1"), KCMN_MT_VID_VC1},
    {Fcc("vc-1"), KCMN_MT_VID_VC1},
    {Fcc("VP80"), KCMN_MT_VID_VP8},
    // "smhC" is the code exactly as containers are known to carry it.
    {Fcc("hvc1"), KCMN_MT_VID_HEVC}, {Fcc("hev1"), KCMN_MT_VID_HEVC},
    {Fcc("hvcC"), KCMN_MT_VID_HEVC}, {Fcc("smhC"), KCMN_MT_VID_HEVC},
    {Fcc("VP90"), KCMN_MT_VID_VP9},
    {Fcc("av01"), KCMN_MT_VID_AV1}, {Fcc("av1C"), KCMN_MT_VID_AV1},
};

// The lower-case H.263 codes are a membership mask over the 16 codes from
// "d263" up (first character 'd' to 's'): bits 0, 4 and 15 are "d263",
// "h263" and "s263".
constexpr int32_t kH263Base = Fcc("d263");
constexpr uint32_t kH263Mask = 0x8011;
static_assert(Fcc("h263") - kH263Base == 4 && Fcc("s263") - kH263Base == 15,
              "mask bits");

constexpr Entry kAudio[] = {
    {1, KCMN_MT_AUD_PCM},
    {6, KCMN_MT_AUD_ALAW},
    {7, KCMN_MT_AUD_MULAW},
    {80, KCMN_MT_AUD_MPEG},
    {85, KCMN_MT_AUD_MP3},
    {255, KCMN_MT_AUD_AAC}, {Fcc("mp4a"), KCMN_MT_AUD_AAC},
    {Fcc("aac "), KCMN_MT_AUD_AAC},
    {8192, KCMN_MT_AUD_AC3}, {Fcc("ac-3"), KCMN_MT_AUD_AC3},
    {8193, KCMN_MT_AUD_DTS},
    {Fcc("samr"), KCMN_MT_AUD_AMR_NB},
    {Fcc("sawb"), KCMN_MT_AUD_AMR_WB},
    {Fcc("sqcp"), KCMN_MT_AUD_QCELP}, {Fcc("dqcp"), KCMN_MT_AUD_QCELP},
    {352, KCMN_MT_AUD_WMA}, {353, KCMN_MT_AUD_WMA},
    {354, KCMN_MT_AUD_WMA_PRO},
    {355, KCMN_MT_AUD_WMA_LOSSLESS},
    {Fcc("evrc"), KCMN_MT_AUD_EVRC},
    {0xF1AC, KCMN_MT_AUD_FLAC}, {Fcc("fLaC"), KCMN_MT_AUD_FLAC},
    // An 18-bit value, not a 16-bit WAVE tag; matched as it is.
    {0x2674F, KCMN_MT_AUD_TAG_2674F},
    {17, KCMN_MT_AUD_IMA_ADPCM},
    {2, KCMN_MT_AUD_MS_ADPCM},
    {Fcc("sipr"), KCMN_MT_AUD_SIPRO},
    {Fcc("cook"), KCMN_MT_AUD_COOK},
    {Fcc("Opus"), KCMN_MT_AUD_OPUS},
    {Fcc("DSD "), KCMN_MT_AUD_DSD},
    {Fcc("ec-3"), KCMN_MT_AUD_EAC3},
    {Fcc("ac-4"), KCMN_MT_AUD_AC4},
};

constexpr Entry kProtected[] = {
    {Fcc("DIVX"), KCMN_MT_DRM_DIVX}, {Fcc("divx"), KCMN_MT_DRM_DIVX},
};

// The format's three-letter name after an "S".
constexpr Entry kSubtitle[] = {
    {Fcc("SSRT"), KCMN_MT_SUB_SRT},
    {Fcc("TX3G"), KCMN_MT_SUB_TX3G}, {Fcc("tx3g"), KCMN_MT_SUB_TX3G},
    {Fcc("SBTL"), KCMN_MT_SUB_TX3G}, {Fcc("sbtl"), KCMN_MT_SUB_TX3G},
    {Fcc("SASS"), KCMN_MT_SUB_ASS},
    {Fcc("SSSA"), KCMN_MT_SUB_SSA},
};

constexpr int32_t Video(int32_t code) {
  const uint32_t off = static_cast<uint32_t>(code) - static_cast<uint32_t>(kH263Base);
  if (off < 16 && ((kH263Mask >> off) & 1) != 0) return KCMN_MT_VID_H263;
  return Find(kVideo, code, KCMN_MT_VID_UNKNOWN);
}

constexpr int32_t Audio(int32_t code) {
  return Find(kAudio, code, KCMN_MT_AUD_UNKNOWN);
}

constexpr int32_t Protected(int32_t code) {
  return Find(kProtected, code, KCMN_MT_DRM_UNKNOWN);
}

constexpr int32_t Subtitle(int32_t code) {
  return Find(kSubtitle, code, KCMN_MT_SUB_UNKNOWN);
}

// Audio first, so a number that is an audio tag is audio whatever else it
// could be. The protected step comes after video, which already maps both of
// its codes; it stays in its place.
constexpr int32_t Any(int32_t code) {
  if (const int32_t r = Audio(code); r != KCMN_MT_AUD_UNKNOWN) return r;
  if (const int32_t r = Video(code); r != KCMN_MT_VID_UNKNOWN) return r;
  if (const int32_t r = Subtitle(code); r != KCMN_MT_SUB_UNKNOWN) return r;
  if (const int32_t r = Protected(code); r != KCMN_MT_DRM_UNKNOWN) return r;
  return KCMN_MT_SUB_UNKNOWN;
}

static_assert(Any(Fcc("avc1")) == KCMN_MT_VID_H264 && Any(85) == KCMN_MT_AUD_MP3 &&
                  Any(Fcc("DIVX")) == KCMN_MT_VID_MPEG4 && Any(0) == KCMN_MT_SUB_UNKNOWN,
              "dispatch order");

}  // namespace
}  // namespace kelo

KELO_EXPORT int32_t kcmn_fcc2mt_vid(int32_t code) { return kelo::Video(code); }
KELO_EXPORT int32_t kcmn_fcc2mt_aud(int32_t code) { return kelo::Audio(code); }
KELO_EXPORT int32_t kcmn_fcc2mt_drm(int32_t code) { return kelo::Protected(code); }
KELO_EXPORT int32_t kcmn_fcc2mt_sub(int32_t code) { return kelo::Subtitle(code); }
KELO_EXPORT int32_t kcmn_fcc2mt(int32_t code) { return kelo::Any(code); }
