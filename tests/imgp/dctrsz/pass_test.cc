#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "imgp/dctrsz/dctrsz_internal.h"
#include "kimgp_dctrsz.h"
#include "tests/support/guarded.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

struct Plane {
  std::vector<uint8_t> px;
  int32_t w = 0, h = 0;
  uint8_t at(int64_t x, int64_t y) const {
    x = std::clamp<int64_t>(x, 0, w - 1);
    y = std::clamp<int64_t>(y, 0, h - 1);
    return px[y * w + x];
  }
};

// One component of a descriptor's plane (`comp` of `step`-byte samples).
Plane Component(const kimgp_img& m, int i, int step, int comp) {
  Plane p;
  p.w = m.width[i];
  p.h = m.height[i];
  p.px.resize(static_cast<size_t>(p.w) * p.h);
  for (int y = 0; y < p.h; ++y) {
    for (int x = 0; x < p.w; ++x) p.px[y * p.w + x] = m.plane[i][y * m.stride[i] + x * step + comp];
  }
  return p;
}

// f x f averages (truncating), out_w x out_h, edges clamped.
Plane Shrink(const Plane& s, int f, int32_t out_w, int32_t out_h) {
  Plane p;
  p.w = out_w;
  p.h = out_h;
  p.px.resize(static_cast<size_t>(out_w) * out_h);
  for (int y = 0; y < out_h; ++y) {
    for (int x = 0; x < out_w; ++x) {
      int sum = 0;
      for (int i = 0; i < f; ++i) {
        for (int j = 0; j < f; ++j) sum += s.at(int64_t{x} * f + j, int64_t{y} * f + i);
      }
      p.px[y * out_w + x] = static_cast<uint8_t>(sum / (f * f));
    }
  }
  return p;
}

// Every block of a plane with the exported transforms: the whole window,
// every sub-block, the 4x4 inverse into a padded canvas, then the visible
// part.
Plane ReferenceBlocks(const kimgp_rsz_new_ctx& x, int16_t*** vmat, int16_t*** hmat, int p,
                      size_t first, const Plane& src, int32_t dw, int32_t dh) {
  const int32_t rows = x.n_rows_b[p] + x.n_rows_b1[p];
  const int32_t cols = x.n_cols_a[p] + x.n_cols_a1[p];
  const int32_t ww = 4 * x.ceil_x[0], wh = 4 * x.ceil_y[0];
  const int32_t cw = std::max(4 * cols, dw), ch = std::max(4 * rows, dh);
  std::vector<uint8_t> canvas(static_cast<size_t>(cw) * ch, 0);
  static const int kMask[5] = {0, 0, 1, 2, 3};
  for (int32_t r = 0; r < rows; ++r) {
    for (int32_t c = 0; c < cols; ++c) {
      const size_t i = first + static_cast<size_t>(r) * cols + c;
      const int k = x.blk_class[i];
      const int m = k < x.n_class[0] ? k : (k & kMask[x.n_class[0]]);
      std::vector<uint8_t> win(static_cast<size_t>(ww) * wh);
      for (int y = 0; y < wh; ++y) {
        for (int z = 0; z < ww; ++z) win[y * ww + z] = src.at(x.blk_xoff[i] + z, x.blk_yoff[i] + y);
      }
      int32_t acc[16] = {};
      for (int bi = 0; bi < x.ceil_y[0]; ++bi) {
        for (int bj = 0; bj < x.ceil_x[0]; ++bj) {
          kimgp_fdct_blocknxn_full_compute(&win[4 * bi * ww + 4 * bj], acc, vmat[m][bi],
                                           hmat[m][bj], ww);
        }
      }
      kimgp_idct_block4x4(canvas.data(), 4 * r, 4 * c, cw, acc, x.qscale[p][k]);
    }
  }
  Plane out;
  out.w = dw;
  out.h = dh;
  out.px.resize(static_cast<size_t>(dw) * dh);
  for (int y = 0; y < dh; ++y) std::memcpy(&out.px[y * dw], &canvas[y * cw], dw);
  return out;
}

void PutComponent(const Plane& p, kimgp_img& m, int i, int step, int comp) {
  for (int y = 0; y < p.h; ++y) {
    for (int x = 0; x < p.w; ++x) m.plane[i][y * m.stride[i] + x * step + comp] = p.px[y * p.w + x];
  }
}

struct PassCase {
  int32_t cs, sw, sh, dw, dh, mode;
};

void PrintTo(const PassCase& c, std::ostream* os) {
  *os << "cs" << c.cs << "_" << c.sw << "x" << c.sh << "_to_" << c.dw << "x" << c.dh << "_mode"
      << c.mode;
}

kimgp_img Descriptor(int32_t cs, int32_t w, int32_t h) {
  kimgp_img m;
  std::memset(&m, 0, sizeof(m));
  m.cs = cs;
  m.width[0] = w;
  m.height[0] = h;
  if (cs == KIMGP_CS_YUV420) {
    m.width[1] = m.width[2] = (w + 1) / 2;
    m.height[1] = m.height[2] = (h + 1) / 2;
  }
  return m;
}

class DctPassTest : public ::testing::TestWithParam<PassCase> {};

// The pass against the per-block reference, on every target, for every
// schedule of the two workers, with the guard bands and row padding checked.
TEST_P(DctPassTest, MatchesPerBlockReference) {
  const PassCase& pc = GetParam();
  kimgp_img io[2] = {Descriptor(pc.cs, pc.sw, pc.sh), Descriptor(pc.cs, pc.dw, pc.dh)};
  kimgp_rsz_new_set_img(io);
  const bool nv = pc.cs != KIMGP_CS_YUV420;
  const int planes = nv ? 2 : 3;
  TestFrame src(io[0], planes), dst(io[1], planes, 0x3C);
  std::mt19937 rng = MakeRng(static_cast<uint32_t>(pc.sw * 7 + pc.dw + pc.mode));
  src.FillRandom(rng);
  // Smooth content too, so that the DCT values are not only noise.
  for (int y = 0; y < pc.sh; ++y) {
    for (int x = 0; x < pc.sw / 2; ++x) src.img.plane[0][y * src.img.stride[0] + x] = static_cast<uint8_t>(x * 3 + y);
  }
  kimgp_img run[2] = {src.img, dst.img};
  kimgp_rsz_new_ctx ctx;
  int16_t ***vmat, ***hmat;
  ASSERT_EQ(kimgp_rsz_new_init(run, &ctx, &vmat, &hmat, pc.mode), 0);

  // What the destination must hold.
  TestFrame want(dst);
  const int f = ctx.direct ? pc.sw / pc.dw : (pc.mode ? pc.mode : 1);
  const int comps = nv ? 2 : 1;
  for (int i = 0; i < planes; ++i) {
    for (int comp = 0; comp < (i ? comps : 1); ++comp) {
      const int step = i && nv ? 2 : 1;
      const Plane from = Component(src.img, i, step, comp);
      const int32_t dw = want.img.width[i], dh = want.img.height[i];
      Plane out;
      if (ctx.direct) {
        out = Shrink(from, f, dw, dh);
      } else {
        // The plane the blocks read: the source, or its pre-shrunk sizes.
        int32_t rw = from.w, rh = from.h;
        if (pc.mode == 2) {
          rw = i ? (pc.sw / 2) >> 1 : (pc.sw / 2) & ~1;
          rh = i ? pc.sh >> 2 : pc.sh >> 1;
        } else if (pc.mode == 4) {
          const int32_t q = pc.sw / 4;
          rw = i ? (q + (q & 1)) >> 1 : q + (q & 1);
          rh = i ? pc.sh >> 3 : pc.sh >> 2;
        }
        const Plane read = f > 1 ? Shrink(from, f, rw, rh) : from;
        const int p = i ? 1 : 0;
        const size_t first =
            p ? static_cast<size_t>(ctx.n_rows_b[0] + ctx.n_rows_b1[0]) * (ctx.n_cols_a[0] + ctx.n_cols_a1[0])
              : 0;
        out = ReferenceBlocks(ctx, vmat, hmat, p, first, read, dw, dh);
      }
      PutComponent(out, want.img, nv ? i : i, step, comp);
    }
  }

  ForEachTarget([&](const std::string& target) {
    for (unsigned fail = 0; fail < 4; ++fail) {
      SCOPED_TRACE(target + " failed workers " + std::to_string(fail));
      TestFrame got(dst);
      kimgp_img io2[2] = {src.img, got.img};
      dctrsz::FailThreadsForTest(fail);
      ASSERT_EQ(kimgp_rsz_new(io2, &ctx, vmat, hmat), 0);
      dctrsz::FailThreadsForTest(0);
      ASSERT_EQ(FirstDifference(got.Snapshot(), want.Snapshot()), "");
    }
  });
  kimgp_rsz_new_deinit(run, &ctx, vmat, hmat);
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, DctPassTest,
    ::testing::Values(PassCase{KIMGP_CS_YUV420, 96, 64, 64, 42, 0},
                      PassCase{KIMGP_CS_YUV420, 101, 77, 37, 29, 0},
                      PassCase{KIMGP_CS_YUV420, 160, 120, 100, 70, 0},
                      PassCase{KIMGP_CS_NV12, 120, 80, 48, 34, 0},
                      PassCase{KIMGP_CS_NV21, 98, 66, 60, 38, 0},
                      PassCase{KIMGP_CS_YUV420, 200, 120, 64, 40, 2},
                      PassCase{KIMGP_CS_NV12, 200, 136, 70, 46, 2},
                      PassCase{KIMGP_CS_YUV420, 400, 240, 64, 40, 4},
                      PassCase{KIMGP_CS_NV21, 328, 200, 50, 30, 4},
                      PassCase{KIMGP_CS_YUV420, 128, 96, 64, 48, 2},
                      PassCase{KIMGP_CS_NV12, 256, 96, 64, 24, 4},
                      PassCase{KIMGP_CS_NV12, 256, 96, 128, 48, 4}));

TEST(DctPass, RefusesWhatTheContextWasNotMadeFor) {
  kimgp_img io[2] = {Descriptor(KIMGP_CS_NV12, 96, 64), Descriptor(KIMGP_CS_NV12, 64, 42)};
  kimgp_rsz_new_set_img(io);
  TestFrame src(io[0], 2), dst(io[1], 2, 0x3C);
  kimgp_img run[2] = {src.img, dst.img};
  kimgp_rsz_new_ctx ctx;
  int16_t ***vmat, ***hmat;
  ASSERT_EQ(kimgp_rsz_new_init(run, &ctx, &vmat, &hmat, 0), 0);
  const std::vector<uint8_t> before = dst.Snapshot();
  struct Bad {
    int field;
    int32_t value;
    int32_t status;
  };
  for (const Bad& b : {Bad{0, 60, -1}, Bad{1, 40, -1}, Bad{2, KIMGP_CS_NV21, -1},
                       Bad{3, KIMGP_CS_YUV444, -3}, Bad{4, 16, -1}, Bad{5, 1, -1}}) {
    kimgp_img bad[2] = {run[0], run[1]};
    switch (b.field) {
      case 0: bad[1].width[0] = b.value; break;
      case 1: bad[1].height[0] = b.value; break;
      case 2: bad[1].cs = b.value; break;
      case 3: bad[0].cs = bad[1].cs = b.value; break;
      case 4: bad[0].stride[1] = b.value; break;
      case 5: bad[1].buf_height[1] = b.value; break;
    }
    EXPECT_EQ(kimgp_rsz_new(bad, &ctx, vmat, hmat), b.status) << b.field;
    EXPECT_EQ(FirstDifference(dst.Snapshot(), before), "") << b.field;
  }
  kimgp_rsz_new_deinit(run, &ctx, vmat, hmat);
}

}  // namespace
}  // namespace test
}  // namespace kelo
