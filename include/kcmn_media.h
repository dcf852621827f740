/*
 * kcmn_media.h - media-type numbers: mapping container codes to them, and
 * recognising video key frames from the compressed bytes.
 *
 * A four-character code is passed as the int32_t whose lowest byte is the
 * first character (a little-endian load of the four characters: "avc1" is
 * 0x31637661). WAVE-style numeric audio format tags are passed as plain
 * integers in the same argument. Codes are matched exactly, case included.
 *
 * Media-type numbers come in blocks, each with its own "unknown" value:
 *   video      102-122   unknown 299
 *   audio      300-338   unknown 499
 *   protected  1100      unknown 1299
 *   subtitle   3000-3008 unknown 3199
 * The functions return them as plain int32_t; the constants below name them.
 */
#ifndef KCMN_MEDIA_H
#define KCMN_MEDIA_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum {
  /* Video. 108, 109 and 112 are never produced. */
  KCMN_MT_VID_MPEG4 = 102, /* MPEG-4 Part 2 (mp4v, XVID, DIVX, DX50, ...) */
  KCMN_MT_VID_H263 = 103,  /* H.263 (H263, h263, d263, s263) */
  KCMN_MT_VID_H264 = 104,  /* H.264 / AVC */
  KCMN_MT_VID_WMV1 = 105,  /* Windows Media Video 7 */
  KCMN_MT_VID_WMV2 = 106,  /* Windows Media Video 8 */
  KCMN_MT_VID_WMV3 = 107,  /* Windows Media Video 9 */
  KCMN_MT_VID_DIV3 = 110,  /* MPEG-4 version 3 variant (div3) */
  KCMN_MT_VID_FLV1 = 111,  /* Sorenson H.263 */
  KCMN_MT_VID_RV10 = 113,  /* RealVideo 1 */
  KCMN_MT_VID_RV20 = 114,  /* RealVideo 2 */
  KCMN_MT_VID_RV30 = 115,  /* RealVideo 3 */
  KCMN_MT_VID_RV40 = 116,  /* RealVideo 4 */
  KCMN_MT_VID_MP43 = 117,  /* MPEG-4 version 3 variant (MP43) */
  KCMN_MT_VID_VC1 = 118,   /* VC-1 */
  KCMN_MT_VID_VP8 = 119,
  KCMN_MT_VID_HEVC = 120,
  KCMN_MT_VID_VP9 = 121,
  KCMN_MT_VID_AV1 = 122,
  KCMN_MT_VID_UNKNOWN = 299,

  /* Audio. 303, 315-320, 324-328, 333 and 336 are never produced. */
  KCMN_MT_AUD_PCM = 300,
  KCMN_MT_AUD_ALAW = 301,
  KCMN_MT_AUD_MULAW = 302,
  KCMN_MT_AUD_MPEG = 304,     /* MPEG audio layers 1 and 2 */
  KCMN_MT_AUD_MP3 = 305,      /* MPEG layer 3 */
  KCMN_MT_AUD_AAC = 306,
  KCMN_MT_AUD_AC3 = 307,
  KCMN_MT_AUD_DTS = 308,
  KCMN_MT_AUD_AMR_NB = 309,
  KCMN_MT_AUD_AMR_WB = 310,
  KCMN_MT_AUD_QCELP = 311,
  KCMN_MT_AUD_WMA = 312,
  KCMN_MT_AUD_WMA_PRO = 313,
  KCMN_MT_AUD_WMA_LOSSLESS = 314,
  KCMN_MT_AUD_EVRC = 321,
  KCMN_MT_AUD_FLAC = 322,
  KCMN_MT_AUD_TAG_2674F = 323, /* the 18-bit tag 0x2674F; no format name */
  KCMN_MT_AUD_IMA_ADPCM = 329,
  KCMN_MT_AUD_MS_ADPCM = 330,
  KCMN_MT_AUD_SIPRO = 331,    /* RealAudio Sipro */
  KCMN_MT_AUD_COOK = 332,     /* RealAudio Cook */
  KCMN_MT_AUD_OPUS = 334,
  KCMN_MT_AUD_DSD = 335,
  KCMN_MT_AUD_EAC3 = 337,
  KCMN_MT_AUD_AC4 = 338,
  KCMN_MT_AUD_UNKNOWN = 499,

  /* Protected content. */
  KCMN_MT_DRM_DIVX = 1100,
  KCMN_MT_DRM_UNKNOWN = 1299,

  /* Subtitles. */
  KCMN_MT_SUB_SRT = 3000,  /* SubRip text, code "SSRT" */
  KCMN_MT_SUB_TX3G = 3006, /* 3GPP timed text */
  KCMN_MT_SUB_ASS = 3007,  /* Advanced SubStation, code "SASS" */
  KCMN_MT_SUB_SSA = 3008,  /* SubStation Alpha, code "SSSA" */
  KCMN_MT_SUB_UNKNOWN = 3199
};

/* Video code to video media type, or 299. */
int32_t kcmn_fcc2mt_vid(int32_t code);
/* Audio code or numeric WAVE format tag to audio media type, or 499. */
int32_t kcmn_fcc2mt_aud(int32_t code);
/* "DIVX" and "divx" give 1100; anything else 1299. */
int32_t kcmn_fcc2mt_drm(int32_t code);
/* Subtitle code to subtitle media type, or 3199. */
int32_t kcmn_fcc2mt_sub(int32_t code);
/* Tries audio, then video, then subtitle, then protected. Anything that none
 * of them knows gives 3199, so it never returns 299, 499 or 1299. "DIVX"
 * gives 102 (video comes first); a number that is an audio tag is audio. */
int32_t kcmn_fcc2mt(int32_t code);

/* How far kcmn_is_vkeyfrm may read: see below. */
enum {
  KCMN_VKEYFRM_PAD = 2,     /* bytes past `size` */
  KCMN_VKEYFRM_MIN_READ = 6 /* bytes from `data`, whatever `size` is */
};

/* 1 when the compressed video access unit `data` of `size` bytes is judged a
 * key frame for `media_type` (a video media type above), 0 otherwise: not a
 * key frame, no decisive header, too short, or a type without a rule. Looks
 * only at header bytes; nothing is decoded, nothing is written.
 *
 *   102 MPEG-4 Part 2    first VOP (or short-header picture) start code
 *   103, 111 H.263, Sorenson H.263   first picture start code
 *   104 H.264            first slice NAL (type 5 key, type 1 not)
 *   120 HEVC             first slice NAL (types 16-21 key, below 10 not)
 *   105, 110             b[0] < 0x40;   106: bit 7 of b[0] clear
 *   119 VP8              b[3..5] = 9D 01 2A (the key-frame start code)
 *   121 VP9              frame type bit of b[0], or bit 7 of b[1] when bit 3
 *                        of b[0] is set
 *   anything else, 107 and 113-118 included: 0
 *
 * The reads are not all bounded by `size`; `data` must be readable for
 *   max(size + KCMN_VKEYFRM_PAD, KCMN_VKEYFRM_MIN_READ) bytes
 * (size taken as 0 when negative). In detail: the H.263 and Sorenson scans
 * stop their search 7 bytes before the end, but a picture header found there
 * reads up to 2 bytes past `size`; the VP8 rule reads bytes 0-5, the VP9 rule
 * bytes 0-1 and the 105/106/110 rules byte 0, all regardless of `size`; the
 * MPEG-4, H.264 and HEVC scans stay within `size`. Zero padding is fine. */
int32_t kcmn_is_vkeyfrm(uint32_t media_type, const uint8_t *data, int32_t size);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* KCMN_MEDIA_H */
