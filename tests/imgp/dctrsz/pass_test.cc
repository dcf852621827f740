#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "imgp/dctrsz/dctrsz_internal.h"
#include "kimgp_dctrsz.h"
#include "tests/imgp/dctrsz/descriptors.h"
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
                      PassCase{KIMGP_CS_NV12, 256, 96, 128, 48, 4},
                      // Block rows wider than the columns one pass over a
                      // row's windows holds: uniform, two widths, and three
                      // sub-blocks with all four classes.
                      PassCase{KIMGP_CS_YUV420, 1200, 48, 800, 32, 0},
                      PassCase{KIMGP_CS_NV12, 1290, 40, 640, 20, 0},
                      PassCase{KIMGP_CS_YUV420, 1100, 66, 350, 21, 0},
                      // Ratio 1.5: the last block row and column read
                      // windows whose zero-weight overhang lies past the
                      // plane.
                      PassCase{KIMGP_CS_YUV420, 192, 108, 128, 72, 0},
                      PassCase{KIMGP_CS_NV12, 384, 108, 256, 72, 0}));

int32_t RunOnce(int32_t (*fn)(kimgp_img*, kimgp_rsz_new_ctx*, int16_t***, int16_t***),
                const kimgp_img& src, kimgp_img& dst, int mode);

// Where a run ends, on every target: block tables that break it at every
// position by each of its conditions.
TEST(DctPass, RunExtentStopsAtTheFirstBlockThatDoesNotJoin) {
  std::mt19937 rng = MakeRng(14);
  for (size_t n = 1; n <= 40; ++n) {
    for (size_t stop = 1; stop <= n; ++stop) {
      for (int why = 0; why < 5; ++why) {
        std::vector<uint8_t> cls(n, 2);
        std::vector<int32_t> xoff(n), yoff(n, 12);
        for (size_t j = 0; j < n; ++j) xoff[j] = static_cast<int32_t>(6 * j + rng() % 3);
        if (stop < n) {
          if (why == 0) cls[stop] = 3;
          if (why == 1) yoff[stop] = 13;
          if (why == 2) xoff[stop] = xoff[stop - 1] - 1;
        }
        const int32_t x_end = why == 3 && stop < n ? xoff[stop] - 1 : 1 << 20;
        const size_t want = (why == 3 || (stop < n && why < 3)) ? stop : n;
        ASSERT_EQ(scalar::RunExtent(cls.data(), xoff.data(), yoff.data(), n, 2, 12, x_end), want);
        ForEachTarget([&](const std::string& target) {
          ASSERT_EQ(RunExtent(cls.data(), xoff.data(), yoff.data(), n, 2, 12, x_end), want)
              << target << " n " << n << " stop " << stop << " why " << why;
        });
      }
    }
  }
}

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
  // Growing by more than 4 leaves no blocks: refused, nothing written.
  kimgp_img grow[2] = {Descriptor(KIMGP_CS_NV12, 16, 16), Descriptor(KIMGP_CS_NV12, 96, 64)};
  kimgp_rsz_new_set_img(grow);
  TestFrame small(grow[0], 2), big(grow[1], 2, 0x3C);
  const std::vector<uint8_t> untouched = big.Snapshot();
  EXPECT_EQ(RunOnce(kimgp_rsz_new, small.img, big.img, 0), -3);
  EXPECT_EQ(FirstDifference(big.Snapshot(), untouched), "");
}


// Runs one frame through a fresh context; returns the status of the pass.
int32_t RunOnce(int32_t (*fn)(kimgp_img*, kimgp_rsz_new_ctx*, int16_t***, int16_t***),
                const kimgp_img& src, kimgp_img& dst, int mode) {
  kimgp_img io[2] = {src, dst};
  kimgp_rsz_new_ctx ctx;
  int16_t ***vmat, ***hmat;
  if (kimgp_rsz_new_init(io, &ctx, &vmat, &hmat, mode) != 0) return -100;
  const int32_t status = fn(io, &ctx, vmat, hmat);
  kimgp_rsz_new_deinit(io, &ctx, vmat, hmat);
  return status;
}

// The transcoder's resize gives the planes of the same-code resize, with the
// chroma components carried across layouts.
TEST(DctPass, TranscodeMatchesSameCodeResize) {
  struct Pair {
    int32_t from, to, mode;
  };
  for (const Pair& pr : {Pair{KIMGP_CS_NV12, KIMGP_CS_YUV420, 0}, Pair{KIMGP_CS_YUV420, KIMGP_CS_NV21, 0},
                         Pair{KIMGP_CS_NV21, KIMGP_CS_NV12, 2}, Pair{KIMGP_CS_NV12, KIMGP_CS_YUV420, 2}}) {
    SCOPED_TRACE(std::to_string(pr.from) + " to " + std::to_string(pr.to) + " mode " + std::to_string(pr.mode));
    kimgp_img a[2] = {Descriptor(pr.from, 200, 120), Descriptor(pr.from, 72, 46)};
    kimgp_img b[2] = {a[0], Descriptor(pr.to, 72, 46)};
    kimgp_rsz_new_set_img(a);
    kimgp_rsz_new_set_img(b);
    if (pr.to == KIMGP_CS_YUV420 && pr.from != KIMGP_CS_YUV420) {
      for (int i = 1; i < 3; ++i) b[1].width[i] = 36, b[1].height[i] = 23, b[1].stride[i] = 48;
    }
    if (pr.from == KIMGP_CS_YUV420 && pr.to != KIMGP_CS_YUV420) {
      b[1].width[1] = 36, b[1].height[1] = 23;
    }
    const int planes_from = pr.from == KIMGP_CS_YUV420 ? 3 : 2;
    const int planes_to = pr.to == KIMGP_CS_YUV420 ? 3 : 2;
    TestFrame src(a[0], planes_from), same(a[1], planes_from), other(b[1], planes_to);
    std::mt19937 rng = MakeRng(7);
    src.FillRandom(rng);
    ASSERT_EQ(RunOnce(kimgp_rsz_new, src.img, same.img, pr.mode), 0);
    ASSERT_EQ(RunOnce(kimgp_txc_new, src.img, other.img, pr.mode), 0);
    ASSERT_TRUE(other.GuardsIntact());
    for (int y = 0; y < 46; ++y) {
      ASSERT_EQ(0, std::memcmp(same.img.plane[0] + y * same.img.stride[0],
                               other.img.plane[0] + y * other.img.stride[0], 72));
    }
    const bool same_nv = pr.from != KIMGP_CS_YUV420, other_nv = pr.to != KIMGP_CS_YUV420;
    for (int comp = 0; comp < 2; ++comp) {
      const int comp_same = pr.from == KIMGP_CS_NV21 ? 1 - comp : comp;
      const int comp_other = pr.to == KIMGP_CS_NV21 ? 1 - comp : comp;
      const Plane p = Component(same.img, same_nv ? 1 : 1 + comp, same_nv ? 2 : 1, same_nv ? comp_same : 0);
      const Plane q = Component(other.img, other_nv ? 1 : 1 + comp, other_nv ? 2 : 1, other_nv ? comp_other : 0);
      ASSERT_EQ(p.px, q.px) << comp;
    }
  }
}

// Each channel of a 4-byte frame is resized as a luma plane of its bytes.
TEST(DctPass, FourChannelsAsLumaPlanes) {
  kimgp_img rgba[2] = {Descriptor(KIMGP_CS_RGBA8888, 150, 90), Descriptor(KIMGP_CS_RGBA8888, 62, 37)};
  rgba[0].stride[0] = 150 * 4 + 12;
  rgba[1].stride[0] = 62 * 4 + 8;
  rgba[0].buf_height[0] = 90;
  rgba[1].buf_height[0] = 37;
  TestFrame src(rgba[0], 1), dst(rgba[1], 1);
  std::mt19937 rng = MakeRng(9);
  src.FillRandom(rng);
  ASSERT_EQ(RunOnce(kimgp_rsz_new_rgba8888, src.img, dst.img, 0), 0);
  ASSERT_TRUE(dst.GuardsIntact());
  for (int c = 0; c < 4; ++c) {
    kimgp_img y[2] = {Descriptor(KIMGP_CS_YUV420, 150, 90), Descriptor(KIMGP_CS_YUV420, 62, 37)};
    kimgp_rsz_new_set_img(y);
    TestFrame ys(y[0], 3), yd(y[1], 3);
    PutComponent(Component(src.img, 0, 4, c), ys.img, 0, 1, 0);
    ASSERT_EQ(RunOnce(kimgp_rsz_new, ys.img, yd.img, 0), 0);
    ASSERT_EQ(Component(yd.img, 0, 1, 0).px, Component(dst.img, 0, 4, c).px) << c;
  }
  kimgp_img io[2] = {src.img, dst.img};
  EXPECT_EQ(RunOnce(kimgp_rsz_new_rgba8888, src.img, dst.img, 2), -1);
  io[1].cs = KIMGP_CS_RGB888;
  EXPECT_EQ(RunOnce(kimgp_rsz_new_rgba8888, io[0], io[1], 0), -3);
}

// The pass from several caller threads at once, each with its own contexts
// and frames of many sizes and modes: every frame equals the one a lone
// caller gets (the tsan build watches the workers and semaphores).
TEST(DctPassLoad, ManyCallersAtOnce) {
  struct Job {
    std::unique_ptr<TestFrame> src, want, got;
    int32_t mode;
  };
  auto rng = MakeRng(41);
  std::vector<Job> jobs;
  const int32_t kCodes[] = {KIMGP_CS_YUV420, KIMGP_CS_NV12, KIMGP_CS_NV21};
  const int32_t kModes[] = {0, 2, 4};
  for (int i = 0; i < 36; ++i) {
    const int32_t cs = kCodes[i % 3];
    const int32_t sw = 16 + static_cast<int32_t>(rng() % 160), sh = 16 + rng() % 96;
    const int32_t dw = sw / 4 + 1 + static_cast<int32_t>(rng() % (sw / 2)),
                  dh = sh / 4 + 1 + static_cast<int32_t>(rng() % (sh / 2));
    kimgp_img io[2] = {TestFrame(cs, sw, sh).img, TestFrame(cs, dw, dh).img};
    kimgp_rsz_new_set_img(io);
    const int planes = cs == KIMGP_CS_YUV420 ? 3 : 2;
    Job j{std::make_unique<TestFrame>(io[0], planes), std::make_unique<TestFrame>(io[1], planes),
          std::make_unique<TestFrame>(io[1], planes), kModes[(i / 3) % 3]};
    j.src->FillRandom(rng);
    ASSERT_EQ(RunOnce(kimgp_rsz_new, j.src->img, j.want->img, j.mode), 0) << sw << "x" << sh << " to " << dw << "x" << dh;
    jobs.push_back(std::move(j));
  }
  std::vector<std::thread> callers;
  for (int t = 0; t < 3; ++t) {
    callers.emplace_back([&jobs, t] {
      for (size_t i = t; i < jobs.size(); i += 3) {
        RunOnce(kimgp_rsz_new, jobs[i].src->img, jobs[i].got->img, jobs[i].mode);
      }
    });
  }
  for (auto& c : callers) c.join();
  for (const Job& j : jobs) {
    EXPECT_EQ(FirstDifference(j.got->Snapshot(), j.want->Snapshot()), "");
  }
}

}  // namespace
}  // namespace test
}  // namespace kelo
