/*
 * kimgp_hdr.h - HDR to SDR tone mapping.
 *
 * Converts one frame of 10-bit HDR video (PQ or HLG transfer, BT.2020
 * primaries, limited range) into 8-bit SDR video (BT.709, limited range).
 * Per frame the tone mapper chooses a peak luminance (from the source's
 * metadata word or by measuring its luma), builds the tables of a knee and
 * roll-off tone curve in a work record, and converts the frame in four-row
 * slices on four threads: three workers and the calling thread.
 *
 * Source: KIMGP_CS_P010LE (16-bit words holding the 10 bits in their top
 * bits) or KIMGP_CS_YUV420PLANAR16 (16-bit words holding the 10 bits in their
 * low bits; values above 1023 are taken as 1023), both 4:2:0. The source's
 * word 29 (`rsz_mode`) is the source kind: 1 means "measure the frame's
 * peak"; word 30 (`peak_nits`) is the mastering peak in nits, and the tone
 * mapper overwrites it with the peak it chose (1000, 2000, 4000 or 4001).
 *
 * Destination: written as a tightly packed frame whose row length is the
 * source's width[0] (destination strides are not read):
 *   KIMGP_CS_RGB888 (3 bytes), KIMGP_CS_RGBA8888 and KIMGP_CS_ARGB8888 (alpha
 *   255); KIMGP_CS_YUV420, KIMGP_CS_YV12 (chroma planes of width/2 bytes per
 *   chroma row), KIMGP_CS_NV12, KIMGP_CS_NV21 (interleaved pairs); any other
 *   code below 200 or above 599 gets its luma plane only. Chroma is taken from
 *   the even pixels of even rows, without averaging. Any other RGB code
 *   (200-599) writes nothing and prints
 *   "_kimgp_hdr10_to_sdr8(438): Unsupported Color Space [code]" on standard
 *   error once per block of columns.
 *
 * Logging: the entries log "source : %d, source_nit : %d", "maxY = %d, " (when
 * measuring) and "final nit : %d" at information priority with the tag
 * "KIMGP_HDR": Android's log on Android, the system log (syslog, LOG_INFO)
 * elsewhere. Nothing goes to standard output.
 *
 * Threads: the frame is cut into four-row slices. The calling thread converts
 * rows 0-3, three workers start on rows 4, 8 and 12, then every thread takes
 * the next free slice (from row 16 on) from a counter under one mutex. The
 * output does not depend on the schedule. A worker that cannot be created
 * loses nothing: the calling thread converts the slice it would have started
 * on. The workers are joined before the entry returns.
 *
 * Failure: a successful call behaves as defined; if the library cannot
 * allocate its work record, slice counter or thread arguments, the entries
 * return KIMGP_ERR_ARGS (-1) before logging, having written nothing (word 30
 * of the source included) and holding nothing.
 */
#ifndef KIMGP_HDR_H
#define KIMGP_HDR_H

#include <pthread.h>
#include <stdint.h>

#include "kimgp_img.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Modes of kimgp_hdr_to_sdr. */
enum {
  KIMGP_HDR_MODE_HDR10 = 1,  /* PQ, primaries matrix and luma weights 0 */
  KIMGP_HDR_MODE_HDR10B = 2, /* PQ, primaries matrix and luma weights 1 */
  KIMGP_HDR_MODE_HLG = 4     /* HLG, no tone-curve gain */
};

/*
 * Per-frame work record. On 32-bit targets it is exactly 8792 bytes with the
 * byte offsets given below (the slice conversion addresses it by them); on
 * 64-bit targets the order is the same and the two pointers take their
 * natural 8-byte alignment (src at 8784, dst at 8792, 8808 bytes in all).
 */
typedef struct kimgp_hdr_work {
  int32_t width;          /*    0: source width[0] */
  int32_t height;         /*    4: source height[0] */
  double peak_scale;      /*    8: 10000 / chosen peak in nits */
  int32_t step;           /*   16: column step: 32, 16 or 8 */
  int32_t variant;        /*   20: variant flag (0 or 1) */
  int32_t hlg;            /*   24: 1 in the HLG variant, else 0 */
  int32_t reserved0;      /*   28: zero */
  double s;               /*   32: curve slope */
  double k;               /*   40: knee */
  double sk;              /*   48: s * k, the output level of the knee */
  int32_t n;              /*   56: roll-off exponent */
  int32_t reserved1;      /*   60: zero */
  double a;               /*   64: roll-off weight A */
  uint16_t pq_lut[1024];  /*   72: PQ code to linear light, 32767 = peak */
  uint16_t gain_lut[257]; /* 2120: gain by 8-bit linear level, 256 = 1.0 */
  uint16_t hlg_lut[1024]; /* 2634: HLG code to linear light (HLG variant) */
  uint8_t out_lut[4096];  /* 4682: 12-bit linear to 8-bit code 16..235 */
  uint8_t reserved2[2];   /* 8778: zero */
  const kimgp_img *src;   /* 8780 (32-bit) / 8784 (64-bit) */
  kimgp_img *dst;         /* 8784 (32-bit) / 8792 (64-bit) */
  uint32_t reserved3;     /* 8788 (32-bit) / 8800 (64-bit): zero */
} kimgp_hdr_work;

/* Slice counter shared by the threads of one frame. */
typedef struct kimgp_hdr_slices {
  pthread_mutex_t mutex;
  int32_t next;  /* first row of the next free slice */
  int32_t limit; /* frame height */
} kimgp_hdr_slices;

/* Argument of one worker thread. */
typedef struct kimgp_hdr_thread_arg {
  kimgp_hdr_work *work;
  kimgp_hdr_slices *slices;
  int32_t first_row;
} kimgp_hdr_thread_arg;

/* ST 2084 constants. */
extern const double m1; /* 0.1593017578125 */
extern const double m2; /* 78.84375 */
extern const double c1; /* 0.8359375 */
extern const double c2; /* 18.8515625 */
extern const double c3; /* 18.6875 */

/*
 * Decoding tables of limited-range BT.2020 YUV, indexed by a 10-bit code,
 * giving 10-bit-scale terms (1024 = full scale), rounded to nearest:
 *   LUT_Y10     (i - 64) * 1024 / 876, 0 below 64, 1024 above 940
 *   LUT_R_CR10  (c - 512) * 1.4746 * 1024 / 896   with c = i held to 64..960
 *   LUT_B_CB10  (c - 512) * 1.8814 * 1024 / 896
 *   LUT_G_CB10 -(c - 512) * 0.16455 * 1024 / 896
 *   LUT_G_CR10 -(c - 512) * 0.57135 * 1024 / 896
 */
extern const int16_t LUT_Y10[1024];
extern const int16_t LUT_R_CR10[1024];
extern const int16_t LUT_B_CB10[1024];
extern const int16_t LUT_G_CB10[1024];
extern const int16_t LUT_G_CR10[1024];

/*
 * Mode 1: kimgp_hdr10_to_sdr8 with variant 0; mode 2: with variant 1; mode 4:
 * kimgp_hlg_to_sdr8. Any other mode returns KIMGP_ERR_ARGS (-1) and does
 * nothing. Returns 0, or -1 when the library cannot allocate (see above).
 */
int32_t kimgp_hdr_to_sdr(kimgp_img *src, kimgp_img *dst, int32_t mode);

/*
 * PQ frame to SDR. Peak: when src->rsz_mode is 1 the frame is measured
 * (Analyze_SrcLuma); otherwise 1000 when src->peak_nits <= 1500, else 4000.
 * The chosen peak is stored in src->peak_nits (narrowed to 16 bits).
 * `variant` (0 or 1; any other value is stored in the record and converts as
 * 0) selects the primaries matrix and the luma and chroma weights. Returns 0
 * (-1 only when the library cannot allocate).
 */
int32_t kimgp_hdr10_to_sdr8(kimgp_img *src, kimgp_img *dst, int32_t variant);

/* HLG frame to SDR: variant 0, the HLG transfer table, no tone-curve gain. */
int32_t kimgp_hlg_to_sdr8(kimgp_img *src, kimgp_img *dst);

/*
 * Peak class of a luma plane, measured on every second row and column (every
 * fourth when the width is above 2000). The plane is read as rows of `width`
 * 16-bit samples one after another (no stride); maxY is the largest sample
 * value visited (0 when the height is not positive) and is logged as
 * "maxY = %d, ". Returns 4001 when maxY >= 811, else 2000 when maxY > 750,
 * else 1000.
 */
int32_t Analyze_SrcLuma(int32_t width, int32_t height, const uint16_t *luma);

/*
 * The tone curve on normalised light: s * x up to the knee k, then
 * a * (1 - (1 - x)^n) + (1 - a) * x. For the peaks 1000 and 2000 the weight a
 * is above 1, so the curve rises slightly above 1 before it comes back to 1
 * at x = 1: along a ramp the output saturates (235) a little before the
 * chosen peak and may dip back by one code (234) just before it.
 */
double TMO_VD_Norm(double x, double s, double k, int32_t n, double a);

/*
 * Converts rows first .. end-1 of the frame of a filled work record. Rows at
 * or beyond the frame height (and bands that start below row 0) are neither
 * read nor written. The destination is tightly packed; its plane pointers
 * are first moved to the band's first row: luma by first * width, YUV420 and
 * YV12 chroma by (first * w2) / 4, NV12/NV21 chroma by (first * w2) / 2, where
 * w2 is the width rounded up to even (so that four-row slices of an odd
 * width line up; a band that starts on an odd row starts its chroma there
 * too, e.g. row 3 of a 10-wide frame at chroma byte 7),
 * RGB888 by first * width * 3, RGBA8888/ARGB8888 by first * width * 4; from
 * there each plane is written pixel after pixel. Columns are taken in blocks
 * of the record's step; a last block that reaches past the width stops at the
 * width. Returns 0.
 */
int32_t _kimgp_hdr10_to_sdr8(kimgp_hdr_work *work, int32_t first, int32_t end);

/* Worker body: converts its first slice, then slices from getStart until none
 * is left, then exits the thread. Start it with pthread_create only. */
void *thread_kimgp_hdr10_to_sdr8(void *arg);

/* Next slice row (the counter advanced by 4 under the mutex), or -1 when the
 * counter has reached the limit. */
int32_t getStart(kimgp_hdr_slices *slices);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* KIMGP_HDR_H */
