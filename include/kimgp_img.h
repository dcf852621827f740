/*
 * kimgp_img.h - the image model of libkelocmn: the image descriptor, the
 * colour-space codes and the status values shared by every kimgp_* operation.
 *
 * C99-compatible. Every operation takes `const kimgp_img *src` first and
 * `kimgp_img *dst` second and writes only into the planes of `dst`.
 */
#ifndef KIMGP_IMG_H
#define KIMGP_IMG_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Image descriptor.
 *
 * On 32-bit targets the record is exactly 44 32-bit words and every field sits
 * at the word index given below; operations address it by that layout. On
 * 64-bit targets the plane pointers are native 8-byte pointers and the record
 * is larger (192 bytes); the field order is the same.
 *
 * Operations that take a source and a destination as one array (the
 * DCT-domain resizer) find the destination one record after the source: on a
 * 32-bit target that is 44 words later, on a 64-bit target the caller passes
 * `kimgp_img pair[2]` with the source in pair[0] and the destination in
 * pair[1], i.e. sizeof(kimgp_img) bytes later, not 44 words.
 *
 * Plane usage: planar formats use planes 0, 1, 2 in the order their name gives
 * (Y, U, V; YV12 and YV16 are Y, V, U); two-plane formats use plane 0 for luma
 * and plane 1 for interleaved chroma; packed formats use plane 0 only. Plane 3
 * and the reserved words are never read: set them to zero. `buf_height[i]` may
 * be any value of at least `height[i]` when the plane is never padded.
 */
typedef struct kimgp_img {
  int32_t width[4];      /* words 0-3: samples per row (pixels; pairs for an
                            interleaved chroma plane) */
  int32_t height[4];     /* words 4-7: rows */
  int32_t stride[4];     /* words 8-11: bytes from one row to the next */
  int32_t buf_height[4]; /* words 12-15: rows allocated per plane */
  uint8_t *plane[4];     /* words 16-19: start of each plane */
  uint32_t reserved[4];  /* words 20-23: unused */
  int32_t cs;            /* word 24: colour-space code, KIMGP_CS_* */
  int32_t x;             /* word 25: horizontal region offset in pixels */
  int32_t y;             /* word 26: vertical region offset in rows */
  uint32_t reserved2;    /* word 27: unused */
  int32_t std;           /* word 28: colour standard, KIMGP_STD_* */
  int32_t rsz_mode;      /* word 29: resize mode (KIMGP_RSZ_MODE1) */
  int32_t peak_nits;     /* word 30: mastering peak luminance (tone mapping) */
  uint32_t reserved3[13]; /* words 31-43: unused */
} kimgp_img;

/*
 * Colour-space codes. The ranges are part of the contract: up to 99 is 8-bit
 * YUV with a separate luma plane, 100-199 packed YUV, 2xx/4xx/5xx packed RGB of
 * 2/3/4 bytes per pixel, 600 and up 16-bit-per-sample YUV.
 *
 * Tile orders of the tiled layouts. Each carries 4:2:0 samples as NV12 does:
 * a luma plane (plane 0) and an interleaved U, V plane (plane 1) at half
 * height. A plane is cut into tiles of TW bytes by TH rows; a tile's bytes are
 * stored row after row, tiles run left to right, then top to bottom, and
 * `stride` is tiles-per-row x TW. Byte (x, y) of a plane sits at
 *   (y / TH) * stride * TH + (x / TW) * TW * TH + (y % TH) * TW + x % TW,
 * so a plane's buffer holds stride x (height rounded up to TH) bytes.
 *   KIMGP_CS_T64X32  - 64 x 32 tiles on both planes.
 *   KIMGP_CS_T16X16  - 16 x 16 luma tiles, 16 x 8 chroma tiles.
 *   KIMGP_CS_T8X8    - 8 x 8 luma tiles, 8 x 4 chroma tiles.
 *   KIMGP_CS_T256X16 - 256 x 16 luma tiles, 256 x 8 chroma tiles.
 */
enum {
  KIMGP_CS_YUV400 = 0,
  KIMGP_CS_YUV420 = 1,
  KIMGP_CS_YUV422N = 2,
  KIMGP_CS_YUV444 = 3,
  KIMGP_CS_YV12 = 4,
  KIMGP_CS_YV16 = 5,
  KIMGP_CS_NV12 = 6,
  KIMGP_CS_NV21 = 7,
  KIMGP_CS_YUV422W = 8,
  KIMGP_CS_T64X32 = 11,
  KIMGP_CS_T16X16 = 12,
  KIMGP_CS_T8X8 = 13,
  KIMGP_CS_T256X16 = 14,
  KIMGP_CS_UYVY = 100,
  KIMGP_CS_YUYV = 101,
  KIMGP_CS_RGB565 = 200,
  KIMGP_CS_BGR565 = 201,
  KIMGP_CS_RGB888 = 400,
  KIMGP_CS_BGR888 = 401,
  KIMGP_CS_RGBA8888 = 500,
  KIMGP_CS_BGRA8888 = 501,
  KIMGP_CS_ARGB8888 = 502,
  KIMGP_CS_ABGR8888 = 503,
  KIMGP_CS_YUV420PLANAR16 = 600,
  KIMGP_CS_P010LE = 601
};

/* Colour standard and range (word 28, `std`). */
enum {
  KIMGP_STD_DEFAULT = 0,     /* BT.601 limited range */
  KIMGP_STD_BT601_FR = 1,    /* BT.601 full range */
  KIMGP_STD_BT709 = 10,      /* BT.709 limited range */
  KIMGP_STD_BT709_FR = 11    /* BT.709 full range */
};

/* Resize mode word "mod1": selects the ramp up-scalers. */
#define KIMGP_RSZ_MODE1 0x6D6F6431

/* Rotation codes: the row index of the rotation kernel tables. */
enum {
  KIMGP_ROT_COPY = 0,
  KIMGP_ROT_90L = 1, /* counter-clockwise */
  KIMGP_ROT_90R = 2, /* clockwise */
  KIMGP_ROT_180 = 3,
  KIMGP_ROT_HORI = 4, /* mirror left-right */
  KIMGP_ROT_VERT = 5  /* flip top-bottom */
};

/* Status of every kimgp_* operation that returns one. Nothing is written to
 * the destination when validation fails. */
enum {
  KIMGP_OK = 0,
  KIMGP_ERR_ARGS = -1,       /* arguments do not fit together */
  KIMGP_ERR_UNSUPPORTED = -3 /* colour space, pair or size not supported */
};

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* KIMGP_IMG_H */
