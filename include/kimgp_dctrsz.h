/*
 * kimgp_dctrsz.h - the DCT-domain downscaler.
 *
 * Shrinks YUV420, NV12 and NV21 frames (and RGBA8888 through the same block
 * machinery) in the frequency domain: every 4x4 output block is made from an
 * input block of a x b samples (a, b = 4 x ratio truncated, or one more) by
 * taking the lowest 4x4 coefficients of the block's DCT and inverting them
 * with a 4-point transform. The geometry is settled once per pair of sizes in
 * a context (kimgp_rsz_new_init); any number of frames of those sizes are then
 * resized with it; kimgp_rsz_new_deinit releases it.
 *
 * The descriptors are passed as one array of two: element 0 the source,
 * element 1 the destination. The destination's `std` word is a layout flag
 * for this resizer (see kimgp_rsz_new_set_img), not a colour standard.
 *
 * Typical use:
 *   kimgp_img io[2] = {src, dst};          // width[0], height[0], cs, plane[]
 *   kimgp_rsz_new_set_img(io);             // derived fields, if wanted
 *   kimgp_rsz_new_ctx ctx;
 *   int16_t ***vmat, ***hmat;
 *   if (kimgp_rsz_new_init(io, &ctx, &vmat, &hmat, 0) == 0) {
 *     for (each frame) kimgp_rsz_new(io, &ctx, vmat, hmat);
 *     kimgp_rsz_new_deinit(io, &ctx, vmat, hmat);
 *   }
 */
#ifndef KIMGP_DCTRSZ_H
#define KIMGP_DCTRSZ_H

#include "kimgp_img.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Resizer context. Index p is the plane (0 luma, 1 chroma), k the block class
 * (bit 0: width a+1 instead of a; bit 1: height b+1 instead of b). All
 * fields are 32-bit words except the pointers, which are native; on 32-bit
 * targets the record is 222 words (888 bytes) and every field sits at the
 * offset its position gives. The `pass_*` pairs belong to kimgp_rsz_new:
 * init records there the source and destination geometry the buffers were
 * sized for, and the pass refuses descriptors that differ from it.
 */
typedef struct kimgp_rsz_new_ctx {
  int32_t src_w[2];      /* source width the DCT stage reads, after extension
                            (chroma of NV12/NV21 in U/V pairs) */
  int32_t src_h[2];      /* source height after extension */
  int32_t dst_w[2];      /* destination width rounded up to 4 */
  int32_t dst_h[2];      /* destination height rounded up to 4 */
  int32_t src_stride[2]; /* source row pitch in samples of the read plane */
  int32_t src_rows[2];   /* rows of that plane */
  int32_t dst_stride[2]; /* destination pitch (NV12/NV21 chroma: stride[1]/2) */
  int32_t dst_rows[2];   /* destination buf_height of planes 0 and 1 */
  float ratio_x[2];      /* src_w / dst_w after extension */
  float ratio_y[2];      /* src_h / dst_h after extension */
  int32_t ceil_x[2];     /* 4-sample sub-blocks per input block, across */
  int32_t ceil_y[2];     /* the same, down */
  int32_t blk_w[2][4];   /* input block width of class k: a, a+1, a, a+1 */
  int32_t blk_h[2][4];   /* input block height of class k: b, b, b+1, b+1 */
  int32_t pad_x[2][4];   /* 4 * ceil_x - blk_w */
  int32_t pad_y[2][4];   /* 4 * ceil_y - blk_h */
  int32_t n_class[2];    /* block classes in use: 1..4 */
  int32_t n_rows_b[2];   /* block rows of height b */
  int32_t n_rows_b1[2];  /* block rows of height b+1 */
  int32_t n_cols_a[2];   /* block columns of width a */
  int32_t n_cols_a1[2];  /* block columns of width a+1 */
  uint32_t reserved[6];  /* not used */
  int32_t qscale[2][4][16]; /* dequantising scale per class, 17 fraction bits */
  uint8_t *uv_src;       /* de-interleaved (or pre-shrunk V) source chroma */
  uint8_t *uv_dst;       /* planar destination chroma before interleaving */
  int32_t *tmp64_a;      /* 16 coefficient accumulators of worker 0 */
  int32_t pass_src0[2];  /* source stride[0], buf_height[0] at init */
  int32_t *tmp64_b;      /* 16 coefficient accumulators of worker 1 */
  uint8_t *blk_class;    /* class of every output block: luma, then chroma */
  int32_t *blk_xoff;     /* source column of every output block */
  int32_t *blk_yoff;     /* source row of every output block */
  uint8_t *blk_buf_a;    /* one input block, whole sub-blocks (worker 0) */
  int32_t pass_src1[2];  /* source stride[1], buf_height[1] at init */
  uint8_t *blk_buf_b;    /* the same for worker 1 */
  uint8_t *pre_y;        /* luma after the 2x2 / 4x4 pre-shrink */
  uint8_t *pre_uv;       /* chroma after the pre-shrink */
  int32_t pass_dst1[2];  /* destination stride[1], buf_height[1] at init */
  int32_t mode;          /* pre-shrink: 0 none, 2 halve first, 4 quarter */
  int32_t unaligned;     /* source luma not stored tightly (std 0 only) */
  int32_t direct;        /* exact 2x or 4x: no DCT stage */
  int32_t aligned_stride; /* source luma stride rounded down to 32 */
  int32_t stride_fix;    /* aligned_stride differs from the stride */
} kimgp_rsz_new_ctx;

/*
 * Fills the derived fields of both descriptors from width[0], height[0] and
 * cs. cs 6/7 with destination std 1: the source gets tight strides, the
 * destination strides rounded up to 16 and heights to 16; std 0: both get
 * strides rounded up to 128 and buffer heights to 32 (luma) and 16 (chroma);
 * other std: nothing. cs 1: strides and buffer heights of planes 0-2 rounded
 * up to 16 from their widths and heights. Other codes: nothing. Returns 0.
 */
int32_t kimgp_rsz_new_set_img(kimgp_img *img);

/*
 * Clears *ctx and fills it for the two descriptors and the pre-shrink mode
 * (0 none, 2 halve, 4 quarter first), allocates the tables, the two matrix
 * arrays (*vmat, *hmat) and the work buffers. An exact 2x or 4x ratio with a
 * non-zero mode makes a direct context (no tables). Returns 0, or -1 when
 * memory runs out, with everything it had allocated freed.
 */
int32_t kimgp_rsz_new_init(const kimgp_img *img, kimgp_rsz_new_ctx *ctx,
                           int16_t ****vmat, int16_t ****hmat, int32_t mode);

/* Frees what kimgp_rsz_new_init allocated. Returns 0. */
int32_t kimgp_rsz_new_deinit(kimgp_img *img, kimgp_rsz_new_ctx *ctx,
                             int16_t ***vmat, int16_t ***hmat);

/* The steps of init, exported for callers that build contexts themselves. */
void algorithm_settings(const kimgp_img *img, kimgp_rsz_new_ctx *ctx);
void split_settings(kimgp_rsz_new_ctx *ctx);
/* Returns 0, or -1 when its selection scratch cannot be allocated. */
int32_t make_shiftmatrix(int16_t ***vmat, int16_t ***hmat, kimgp_rsz_new_ctx *ctx);
/* n x m 4x4 int16 matrices: (*out)[i][j] is 16 int16 (32 bytes). Returns 0,
 * or -1 with nothing left allocated and *out set to NULL. */
int32_t get_mem3Dint16(int16_t ****out, int32_t n, int32_t m);

/*
 * Block transforms.
 *
 * FDCT_BlockXYFn: sel is a rows x cols 0/1 byte matrix; writes the 4x4 shift
 * matrix of the lowest frequencies (vertical: rows = block height, cols = 4,
 * dir 0; horizontal: rows = 4, cols = block width, dir 1).
 * MatNxN_float_compute: 4-point inverse DCT along rows (dir 0) or columns
 * (dir != 0) of a 4x4 float matrix, truncated toward zero to 16 bits.
 */
void FDCT_BlockXYFn(const uint8_t *sel, int16_t *out, int32_t rows, int32_t cols,
                    int32_t dir);
void MatNxN_float_compute(const float *in, int16_t *out, int32_t dir);

/* acc[u][v] += sum_c ((sum_n V[u][n] * P[n][c]) >> 4) * H[c][v] over the 4x4
 * bytes P at pix (rows `stride` bytes apart), wrapping 32-bit arithmetic. */
void kimgp_fdct_blocknxn_full_compute(const uint8_t *pix, int32_t *acc,
                                      const int16_t *vmat, const int16_t *hmat,
                                      int32_t stride);

/* Dequantises acc with qscale (((acc >> 16) * q) >> 8, kept as 16 bits),
 * inverts it (rows, >> 7; columns, >> 14, kept as 16 bits) and stores the
 * 4x4 bytes, saturated to 0..255, at base + (y + k) * stride + x. */
void kimgp_idct_block4x4(uint8_t *base, int32_t y, int32_t x, int32_t stride,
                         const int32_t *acc, const int32_t *qscale);

/* The inverse of kimgp_idct_block4x4 on 16-bit coefficients, without
 * dequantisation. */
void kimgp_idct_block4x4_float(uint8_t *base, int32_t y, int32_t x,
                               const int16_t *coef, int32_t stride);

/* The same inverse for blocks at the border: output pixel (r, c) of the block
 * goes to base + (y + r) * stride + x + c only when x + c < stride and
 * y + r < row_limit; nothing else is written. The stride thus bounds the
 * columns: pass a plane whose pitch is its width (the resize pass writes its
 * border blocks through a tight scratch of the visible columns and rows). */
void kimgp_idct_blocknxn_float(uint8_t *base, int32_t y, int32_t x,
                               const int16_t *coef, int32_t stride,
                               int32_t row_limit);

/*
 * The resize pass: one frame through a context made by kimgp_rsz_new_init
 * with the same descriptors (img[0] source, img[1] destination, both of code
 * KIMGP_CS_YUV420, KIMGP_CS_NV12 or KIMGP_CS_NV21, the same code).
 *
 * Returns KIMGP_OK; KIMGP_ERR_ARGS (-1) when the codes differ, the sizes,
 * strides or buffer heights differ from those the context was made for, a
 * stride is shorter than its row or a buffer height than its plane, or the
 * context's mode is not 0, 2 or 4; KIMGP_ERR_UNSUPPORTED (-3) for any other
 * code, and when the settings leave part of a destination plane without
 * blocks (a ratio below 1/4, where the block size is 0). Nothing is written
 * on -1 or -3.
 *
 * - Pre-shrink (modes 2 and 4): luma and chroma are first averaged over 2x2
 *   or 4x4 samples (sum >> 2 or >> 4) into pre_y and pre_uv (YUV420: U into
 *   pre_uv and V into uv_src); the shrunk planes have the sizes the context's
 *   settings give. Samples beyond a plane read as the nearest edge sample.
 * - Direct context (exact 2x or 4x): the destination is that average of the
 *   source, written straight into the destination planes.
 * - NV12/NV21 chroma is split into U and V planes (uv_src, or pre_uv in
 *   modes 2 and 4), each resized with the chroma settings into uv_dst, and
 *   interleaved again into the destination.
 * - Every output 4x4 block at (4 col, 4 row) of a plane is made from the
 *   window of 4 ceil_x[0] x 4 ceil_y[0] samples at (blk_xoff, blk_yoff),
 *   source coordinates beyond the plane clamped to its last column and row;
 *   its coefficients are the sum over the sub-blocks of
 *   kimgp_fdct_blocknxn_full_compute with vmat[m][i] and hmat[m][j], where m
 *   is the block's class, or for a chroma class the luma settings have no
 *   matrices for, the class with the same bits the luma classes vary in;
 *   sub-blocks that overhang the block by 4 or more are skipped (their
 *   matrices are zero). Blocks wholly inside the destination plane are
 *   written by kimgp_idct_block4x4 with qscale[p][class]; blocks crossing its
 *   right or bottom edge are dequantised in scalar code and written by
 *   kimgp_idct_blocknxn_float through a scratch of their visible part, which
 *   is then copied; nothing outside width x height of a plane is written.
 * - Two worker threads take alternate block rows of every plane, each with
 *   its own scratch (tmp64_a/blk_buf_a, tmp64_b/blk_buf_b); the calling
 *   thread prepares the pre-shrunk or split planes and releases the workers
 *   plane by plane through unnamed semaphores, then joins them. Blocks do not
 *   depend on each other, so the bytes are the same for any schedule; a
 *   worker that cannot be started has its rows done by the calling thread.
 */
int32_t kimgp_rsz_new(kimgp_img *img, kimgp_rsz_new_ctx *ctx, int16_t ***vmat,
                      int16_t ***hmat);

/*
 * The transcoder's resize: a decoder's frame (img[0], KIMGP_CS_NV12, NV21 or
 * YUV420) to an encoder's frame of another size (img[1], any of those three
 * codes, not necessarily the source's) in one call, with a context made by
 * kimgp_rsz_new_init for these two descriptors. Everything else is as
 * kimgp_rsz_new: the chroma components keep their meaning (U stays U
 * whatever the interleaving order), so NV12 to YUV420 at the same settings
 * gives the planes kimgp_rsz_new gives NV12 to NV12, split. Returns 0, -1 or
 * -3 as kimgp_rsz_new, except that the codes may differ.
 */
int32_t kimgp_txc_new(kimgp_img *img, kimgp_rsz_new_ctx *ctx, int16_t ***vmat,
                      int16_t ***hmat);

/*
 * The block pass over the four channels of a 4-byte-per-pixel frame
 * (KIMGP_CS_RGBA8888 .. KIMGP_CS_ABGR8888, both descriptors the same code,
 * plane 0 only; width[1] and height[1] zero), each channel resized with the
 * luma settings exactly as a luma plane of those bytes would be (blocks
 * written through a 4x4 scratch). The context comes from kimgp_rsz_new_init
 * with these descriptors and mode 0. Returns 0; -1 for differing codes, a
 * context of another mode or other sizes, strides or buffer heights; -3 for
 * other codes.
 */
int32_t kimgp_rsz_new_rgba8888(kimgp_img *img, kimgp_rsz_new_ctx *ctx,
                               int16_t ***vmat, int16_t ***hmat);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* KIMGP_DCTRSZ_H */
