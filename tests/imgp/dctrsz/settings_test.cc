#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "imgp/dctrsz/dctrsz_internal.h"
#include "kcmn_mem.h"
#include "kimgp_dctrsz.h"
#include "tests/imgp/dctrsz/descriptors.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

struct Context {
  kimgp_img io[2];
  kimgp_rsz_new_ctx ctx;
  int16_t*** vmat = nullptr;
  int16_t*** hmat = nullptr;
  int32_t status = -9;

  Context(kimgp_img src, kimgp_img dst, int32_t mode) {
    io[0] = src;
    io[1] = dst;
    kimgp_rsz_new_set_img(io);
    status = kimgp_rsz_new_init(io, &ctx, &vmat, &hmat, mode);
  }
  ~Context() {
    if (status == 0) kimgp_rsz_new_deinit(io, &ctx, vmat, hmat);
  }
};

TEST(DctResizeSettings, FullHdTo720p) {
  Context c(Yuv420(1920, 1080), Yuv420(1280, 720), 0);
  ASSERT_EQ(c.status, 0);
  const kimgp_rsz_new_ctx& x = c.ctx;
  EXPECT_EQ(x.ratio_x[0], 1.5f);
  EXPECT_EQ(x.ratio_y[0], 1.5f);
  EXPECT_EQ(x.blk_w[0][0], 6);
  EXPECT_EQ(x.blk_h[0][0], 6);
  EXPECT_EQ(x.ceil_x[0], 2);
  EXPECT_EQ(x.ceil_y[0], 2);
  EXPECT_EQ(x.pad_x[0][0], 2);
  EXPECT_EQ(x.pad_y[0][0], 2);
  EXPECT_EQ(x.n_class[0], 1);
  EXPECT_EQ(x.n_cols_a[0], 320);
  EXPECT_EQ(x.n_rows_b[0], 180);
  EXPECT_EQ(x.n_cols_a1[0] + x.n_rows_b1[0], 0);
  EXPECT_EQ(x.n_cols_a[1], 160);
  EXPECT_EQ(x.n_rows_b[1], 90);
  // Luma blocks first, row order, 6 samples apart.
  EXPECT_EQ(x.blk_xoff[319], 6 * 319);
  EXPECT_EQ(x.blk_yoff[320 * 179], 6 * 179);
  EXPECT_EQ(x.blk_xoff[320 * 180 + 159], 6 * 159);
  // 1.004 / 6 in 17 fraction bits.
  const float s = static_cast<float>(1.004 / std::sqrt(36.0));
  EXPECT_EQ(x.qscale[0][0][0], static_cast<int32_t>(s * 0.25f * 2048.0f * 64.0f));
  EXPECT_EQ(x.qscale[0][0][5], static_cast<int32_t>(s * 0.4f * 2048.0f * 64.0f));
  EXPECT_EQ(x.qscale[0][0][1], x.qscale[0][0][4]);
}

TEST(DctResizeSettings, HeightOf718IsExtended) {
  Context c(Yuv420(1920, 1080), Yuv420(1280, 718), 0);
  ASSERT_EQ(c.status, 0);
  const float r = 1080.0f / 718.0f;
  const int32_t grow = static_cast<int32_t>(r * 2.0f) +
                       (static_cast<int32_t>(200.0f * r) % 100 != 0 ? 1 : 0);
  EXPECT_EQ(c.ctx.dst_h[0], 720);
  EXPECT_EQ(c.ctx.src_h[0], 1080 + grow);
  EXPECT_EQ(c.ctx.ratio_y[0], static_cast<float>(1080 + grow) / 720.0f);
}

TEST(DctResizeSettings, Width640To400SpreadsTheWideColumns) {
  Context c(Yuv420(640, 480), Yuv420(400, 240), 0);
  ASSERT_EQ(c.status, 0);
  const kimgp_rsz_new_ctx& x = c.ctx;
  EXPECT_EQ(x.n_class[0], 2);
  EXPECT_EQ(x.blk_w[0][0], 6);
  EXPECT_EQ(x.n_cols_a[0], 60);
  EXPECT_EQ(x.n_cols_a1[0], 40);
  int32_t off = 0;
  for (int col = 0; col < 100; ++col) {
    const bool wide = col < 80 && col % 2 == 1;
    SCOPED_TRACE(col);
    EXPECT_EQ(x.blk_class[col], wide ? 1 : 0);
    EXPECT_EQ(x.blk_xoff[col], off);
    off += wide ? 7 : 6;
  }
  EXPECT_EQ(off, 640);
}

TEST(DctResizeSettings, DirectContextHoldsOnlyTheChromaBuffer) {
  for (int mode : {2, 4}) {
    for (int f : {2, 4}) {
      dctrsz::FailAllocationForTest(0);
      kimgp_img io[2] = {Yuv420(640, 480), Yuv420(640 / f, 480 / f)};
      kimgp_rsz_new_set_img(io);
      kimgp_rsz_new_ctx ctx;
      int16_t ***v, ***h;
      ASSERT_EQ(kimgp_rsz_new_init(io, &ctx, &v, &h, mode), 0);
      EXPECT_EQ(ctx.direct, 1);
      EXPECT_EQ(ctx.mode, mode);
      EXPECT_EQ(dctrsz::AllocationsForTest(), 1);
      EXPECT_NE(ctx.pre_uv, nullptr);
      EXPECT_EQ(ctx.blk_class, nullptr);
      EXPECT_EQ(ctx.n_class[0], 0);
      kimgp_rsz_new_deinit(io, &ctx, v, h);
      EXPECT_EQ(dctrsz::FreesForTest(), 1);
    }
  }
  // NV12: nothing at all.
  dctrsz::FailAllocationForTest(0);
  Context c(Nv12(640, 480), Nv12(320, 240), 2);
  EXPECT_EQ(c.ctx.direct, 1);
  EXPECT_EQ(dctrsz::AllocationsForTest(), 0);
}

TEST(DctResizeSettings, ModeZeroComputesNoFlags) {
  kimgp_img src = Nv12(640, 480), dst = Nv12(320, 240);
  kimgp_img io[2] = {src, dst};
  io[1].std = 1;
  kimgp_rsz_new_set_img(io);
  io[0].stride[0] = 650;  // neither tight nor a multiple of 32
  io[0].buf_height[0] = 500;
  kimgp_rsz_new_ctx ctx;
  int16_t ***v, ***h;
  ASSERT_EQ(kimgp_rsz_new_init(io, &ctx, &v, &h, 0), 0);
  EXPECT_EQ(ctx.unaligned + ctx.direct + ctx.stride_fix + ctx.aligned_stride, 0);
  kimgp_rsz_new_deinit(io, &ctx, v, h);
  ASSERT_EQ(kimgp_rsz_new_init(io, &ctx, &v, &h, 2), 0);
  EXPECT_EQ(ctx.direct, 1);
  EXPECT_EQ(ctx.stride_fix, 1);
  EXPECT_EQ(ctx.aligned_stride, 640);
  kimgp_rsz_new_deinit(io, &ctx, v, h);
  io[1].std = 0;
  ASSERT_EQ(kimgp_rsz_new_init(io, &ctx, &v, &h, 4), 0);
  EXPECT_EQ(ctx.unaligned, 1);
  EXPECT_EQ(ctx.stride_fix, 0);
  kimgp_rsz_new_deinit(io, &ctx, v, h);
}

TEST(DctResizeSettings, SetImgDerivedFields) {
  kimgp_img io[2] = {Nv12(101, 51), Nv12(50, 25)};
  io[1].std = 1;
  kimgp_rsz_new_set_img(io);
  EXPECT_EQ(io[0].stride[0], 101);
  EXPECT_EQ(io[0].stride[1], 102);
  EXPECT_EQ(io[0].width[1], 50);
  EXPECT_EQ(io[0].height[1], 25);
  EXPECT_EQ(io[0].buf_height[1], 25);
  EXPECT_EQ(io[1].stride[0], 64);
  EXPECT_EQ(io[1].stride[1], 64);
  EXPECT_EQ(io[1].buf_height[0], 32);
  EXPECT_EQ(io[1].buf_height[1], 16);
  io[1].std = 0;
  kimgp_rsz_new_set_img(io);
  EXPECT_EQ(io[0].stride[0], 128);
  EXPECT_EQ(io[0].buf_height[0], 64);
  EXPECT_EQ(io[0].buf_height[1], 32);
  kimgp_img y[2] = {Yuv420(33, 17), Yuv420(20, 9)};
  kimgp_rsz_new_set_img(y);
  EXPECT_EQ(y[0].stride[0], 48);
  EXPECT_EQ(y[0].stride[2], 32);
  EXPECT_EQ(y[0].buf_height[1], 16);
  EXPECT_EQ(y[1].buf_height[0], 16);
}

// Over many size pairs: the extension, the block counts, the layout and the
// shift matrices agree with what the definition says of them.
TEST(DctResizeSettings, ConsistentOverManySizePairs) {
  std::mt19937 rng = MakeRng(14);
  for (int n = 0; n < 300; ++n) {
    const int32_t sw = 16 + static_cast<int32_t>(rng() % 900);
    const int32_t sh = 16 + static_cast<int32_t>(rng() % 600);
    const int32_t dw = sw / 6 + 1 + static_cast<int32_t>(rng() % (sw - sw / 6 - 1));
    const int32_t dh = sh / 6 + 1 + static_cast<int32_t>(rng() % (sh - sh / 6 - 1));
    SCOPED_TRACE(std::to_string(sw) + "x" + std::to_string(sh) + " -> " +
                 std::to_string(dw) + "x" + std::to_string(dh));
    Context c(Yuv420(sw, sh), Yuv420(dw, dh), 0);
    ASSERT_EQ(c.status, 0);
    const kimgp_rsz_new_ctx& x = c.ctx;
    size_t first = 0;
    for (int p = 0; p < 2; ++p) {
      const int32_t S[2] = {p ? (sw + 1) / 2 : sw, p ? (sh + 1) / 2 : sh};
      const int32_t D[2] = {p ? (dw + 1) / 2 : dw, p ? (dh + 1) / 2 : dh};
      const int32_t* ext_s[2] = {&x.src_w[p], &x.src_h[p]};
      const int32_t* ext_d[2] = {&x.dst_w[p], &x.dst_h[p]};
      for (int axis = 0; axis < 2; ++axis) {
        const int32_t e = (4 - D[axis] % 4) % 4;
        const float r = static_cast<float>(S[axis]) / static_cast<float>(D[axis]);
        const int32_t grow =
            e == 0 ? 0
                   : static_cast<int32_t>(r * e) +
                         (static_cast<int32_t>(static_cast<float>(e * 100) * r) % 100 ? 1 : 0);
        EXPECT_EQ(*ext_d[axis], D[axis] + e);
        EXPECT_EQ(*ext_s[axis], S[axis] + grow);
      }
      const int32_t a = x.blk_w[p][0], b = x.blk_h[p][0];
      EXPECT_EQ(a, static_cast<int32_t>(4.0f * x.ratio_x[p]));
      const bool xf = static_cast<int32_t>(x.ratio_x[p] * 4.0f * 100.0f) % 100 != 0;
      const bool yf = static_cast<int32_t>(x.ratio_y[p] * 4.0f * 100.0f) % 100 != 0;
      EXPECT_EQ(x.n_class[p], 1 + xf + 2 * yf);
      if (xf) {
        EXPECT_EQ(x.n_cols_a[p] * a + x.n_cols_a1[p] * (a + 1), x.src_w[p]);
        EXPECT_EQ(4 * (x.n_cols_a[p] + x.n_cols_a1[p]), x.dst_w[p]);
      } else {
        EXPECT_EQ(x.n_cols_a[p], x.src_w[p] / a);
      }
      if (yf) {
        EXPECT_EQ(x.n_rows_b[p] * b + x.n_rows_b1[p] * (b + 1), x.src_h[p]);
        EXPECT_EQ(4 * (x.n_rows_b[p] + x.n_rows_b1[p]), x.dst_h[p]);
      }
      // Offsets advance by the widths and heights of the classes.
      const int32_t rows = x.n_rows_b[p] + x.n_rows_b1[p];
      const int32_t cols = x.n_cols_a[p] + x.n_cols_a1[p];
      int32_t wide = 0;
      for (int32_t col = 0; col + 1 < cols; ++col) {
        const int k = x.blk_class[first + col];
        EXPECT_EQ(x.blk_xoff[first + col + 1] - x.blk_xoff[first + col],
                  (k & 1) ? a + 1 : a);
      }
      for (int32_t col = 0; col < cols; ++col) wide += x.blk_class[first + col] & 1;
      if (p == 0 && xf && x.n_cols_a1[0] < x.n_cols_a[0]) {
        EXPECT_EQ(wide, x.n_cols_a1[0]);
      }
      first += static_cast<size_t>(rows) * cols;
    }
  }
}

// Every allocation of init may fail: -1, everything freed (LeakSanitizer in
// the sanitizers build), the handles null; one more and it succeeds.
TEST(DctResizeSettings, EveryAllocationFailureIsCleanedUp) {
  struct Case {
    kimgp_img src, dst;
    int mode;
  };
  const Case cases[] = {{Yuv420(1920, 1080), Yuv420(1280, 718), 0},
                        {Nv12(640, 480), Nv12(400, 300), 2},
                        {Nv12(640, 480), Nv12(150, 100), 4},
                        {Yuv420(640, 480), Yuv420(320, 240), 2},
                        {Yuv420(640, 480), Yuv420(300, 200), 3}};
  for (const Case& cs : cases) {
    kimgp_img io[2] = {cs.src, cs.dst};
    kimgp_rsz_new_set_img(io);
    kimgp_rsz_new_ctx ctx;
    int16_t ***v, ***h;
    dctrsz::FailAllocationForTest(0);
    ASSERT_EQ(kimgp_rsz_new_init(io, &ctx, &v, &h, cs.mode), 0);
    const int total = dctrsz::AllocationsForTest();
    kimgp_rsz_new_deinit(io, &ctx, v, h);
    EXPECT_EQ(dctrsz::FreesForTest(), total);
    for (int n = 1; n <= total; ++n) {
      SCOPED_TRACE(n);
      dctrsz::FailAllocationForTest(n);
      EXPECT_EQ(kimgp_rsz_new_init(io, &ctx, &v, &h, cs.mode), -1);
      EXPECT_EQ(v, nullptr);
      EXPECT_EQ(h, nullptr);
      EXPECT_EQ(dctrsz::FreesForTest(), n - 1);
    }
    dctrsz::FailAllocationForTest(0);
  }
}

TEST(DctResizeSettings, Mem3DFailureFreesEveryRow) {
  for (int n = 1; n <= 7; ++n) {
    dctrsz::FailAllocationForTest(n);
    int16_t*** m = reinterpret_cast<int16_t***>(1);
    EXPECT_EQ(get_mem3Dint16(&m, 3, 5), -1);
    EXPECT_EQ(m, nullptr);
    EXPECT_EQ(dctrsz::FreesForTest(), n - 1);
  }
  dctrsz::FailAllocationForTest(0);
  int16_t*** m;
  ASSERT_EQ(get_mem3Dint16(&m, 3, 5), 0);
  EXPECT_EQ(m[2][4] - m[2][0], 4 * 16);
  for (int i = 0; i < 3; ++i) {
    kcmn_mfree_align32(m[i][0]);
    kcmn_mfree_align32(m[i]);
  }
  kcmn_mfree_align32(m);
}

}  // namespace
}  // namespace test
}  // namespace kelo
