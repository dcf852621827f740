/* Includes every public header as C99 and calls one function of each. */
#include <kcmn_bitstream.h>
#include <kcmn_media.h>
#include <kcmn_mem.h>
#include <kimgp_copy.h>
#include <kimgp_csc.h>
#include <kimgp_dctrsz.h>
#include <kimgp_hdr.h>
#include <kimgp_enhance.h>
#include <kimgp_frame.h>
#include <kimgp_img.h>
#include <kimgp_rot.h>
#include <kimgp_rsz.h>
#include <kimgp_rsz_csc.h>
#include <kimgp_rsz_rot.h>

#include <stddef.h>
#include <stdio.h>
#include <string.h>

int main(void) {
  unsigned char src[16] = {1, 2, 3, 4}, dst[16] = {0};
  kimgp_img a = {{4}, {1}, {4}, {1}, {NULL}, {0}, KIMGP_CS_YUV400, 0, 0, 0, 0, 0, 0, {0}};
  kimgp_img b = a;
  void *p;
  a.plane[0] = src;
  b.plane[0] = dst;
  if (kimgp_cpy(&a, &b) != KIMGP_OK || dst[3] != 4) return 1;
  if (kimgp_hdr_to_sdr(&a, &b, 3) != KIMGP_ERR_ARGS || LUT_Y10[940] != 1024) return 12;
  p = kcmn_malloc_align32(100);
  if (p == NULL || ((size_t)p & 31u) != 0) return 2;
  kcmn_mfree_align32(p);
  if (kcmn_ceil_log2(5) != 3) return 3;
  {
    const uint8_t bytes[2] = {0xA5, 0x0F};
    kcmn_bsr bsr;
    kcmn_bsr_init(&bsr, bytes, 2, NULL);
    if (kcmn_bsr_read(&bsr, 4) != 0xAu || kcmn_bsr_read(&bsr, 12) != 0x50Fu) return 5;
  }
  {
    /* One grey 8x8 YUV420 frame to RGBA8888. */
    uint8_t y[64], u[16], v[16], rgba[256];
    uint8_t *sp[4] = {y, u, v, NULL}, *dp[4] = {rgba, NULL, NULL, NULL};
    int32_t sw[4] = {8, 4, 4, 0}, sh[4] = {8, 4, 4, 0}, ss[4] = {8, 4, 4, 0};
    int32_t ds[4] = {32, 0, 0, 0};
    int i;
    for (i = 0; i < 64; ++i) y[i] = 235;
    for (i = 0; i < 16; ++i) u[i] = v[i] = 128;
    kimgp_csc_yuv420_to_rgba8888(sp, sw, sh, ss, ds, dp);
    if (rgba[0] != 255 || rgba[255] != 255) return 4;
  }
  {
    /* A 4x2 plane turned left, then halved. */
    uint8_t p[8] = {1, 2, 3, 4, 5, 6, 7, 8}, r[8] = {0}, h[2] = {0};
    kimgp_img s = {{4}, {2}, {4}, {2}, {NULL}, {0}, KIMGP_CS_YUV400, 0, 0, 0, 0, 0, 0, {0}};
    kimgp_img d = s, q = s;
    s.plane[0] = p;
    d.stride[0] = 2;
    d.plane[0] = r;
    if (kimgp_rot(&s, KIMGP_ROT_90L, &d) != KIMGP_OK || r[0] != 4 || r[7] != 5) return 7;
    q.width[0] = 2;
    q.height[0] = 1;
    q.stride[0] = 2;
    q.plane[0] = h;
    if (kimgp_rsz(&s, &q) != KIMGP_OK || h[0] != (1 + 2 + 5 + 6) / 4) return 8;
    if (scale[4] != 16 || kimgp_tbl_rsz_weight[(1 * 8 + 1) * 4] != 49) return 9;
    {
      /* Halved and turned left: 3 and 5 in a 1x2 column, bottom up. */
      uint8_t g[2] = {0};
      kimgp_img e = q;
      e.width[0] = 1;
      e.height[0] = 2;
      e.stride[0] = 1;
      e.plane[0] = g;
      if (kimgp_rsz_rot(&s, KIMGP_ROT_90L, &e) != KIMGP_OK || g[0] != 5 || g[1] != 3) return 19;
    }
    /* Frames below 8x8 are refused by the resize-and-convert entry. */
    d.cs = KIMGP_CS_RGB888;
    if (kimgp_rsz_csc(&s, &d) != KIMGP_ERR_UNSUPPORTED) return 13;
  }
  {
    /* Conversion with rotation: the tables, and a refused code. */
    kimgp_img s = a, d = a;
    s.cs = KIMGP_CS_YUYV;
    d.cs = KIMGP_CS_BGRA8888;
    if (kimgp_csc_rot_yuyv2bgra8888[KIMGP_ROT_90R] != kimgp_csc_yuyv_to_bgra8888_90r ||
        kimgp_tbl_fn_csc_1x2_to_1x1_rot[KIMGP_ROT_180] != NULL ||
        kimgp_csc_rot(&s, KIMGP_ROT_HORI, &d) != KIMGP_ERR_UNSUPPORTED) {
      return 14;
    }
  }
  {
    /* A flat 16x16 YUV420 frame to 8x8 in the DCT domain. */
    static uint8_t y[256], u[256], v[256], oy[256], ou[256], ov[256];
    kimgp_img io[2];
    kimgp_rsz_new_ctx ctx;
    int16_t ***vm, ***hm;
    int i;
    memset(io, 0, sizeof(io));
    for (i = 0; i < 2; ++i) {
      io[i].cs = KIMGP_CS_YUV420;
      io[i].width[0] = io[i].height[0] = 16 >> i;
      io[i].width[1] = io[i].width[2] = io[i].height[1] = io[i].height[2] = 8 >> i;
    }
    kimgp_rsz_new_set_img(io);
    memset(y, 100, sizeof(y));
    memset(u, 128, sizeof(u));
    memset(v, 128, sizeof(v));
    io[0].plane[0] = y, io[0].plane[1] = u, io[0].plane[2] = v;
    io[1].plane[0] = oy, io[1].plane[1] = ou, io[1].plane[2] = ov;
    if (kimgp_rsz_new_init(io, &ctx, &vm, &hm, 0) != 0) return 15;
    i = kimgp_rsz_new(io, &ctx, vm, hm);
    kimgp_rsz_new_deinit(io, &ctx, vm, hm);
    if (i != KIMGP_OK || oy[0] < 98 || oy[0] > 102) return 16;
  }
  if (kcmn_fcc2mt(0x31637661) != KCMN_MT_VID_H264) return 6;
  /* A YUV400 pair is no RGB888 stereo pair; nothing to pad it into. */
  if (kimgp_fpa(&a, &b, 1) != KIMGP_ERR_ARGS || kimgp_padding(&a, &b) != KIMGP_ERR_UNSUPPORTED)
    return 17;
  if (kimgp_vqe_cs_init(1024) != 0 || lut[254] != 127 || kimgp_vqe_dejagging() != 0) return 18;
  puts("C API ok");
  return 0;
}
