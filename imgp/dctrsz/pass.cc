// DCT-domain downscaler: the per-frame pass. The calling thread prepares the
// planes the blocks read (pre-shrunk, or chroma split out of an interleaved
// plane) and releases two workers through unnamed semaphores; the workers
// take alternate block rows of every plane.
#include <pthread.h>
#include <semaphore.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "common/internal/fault.h"
#include "common/internal/api.h"
#include "imgp/csc/layout_rows.h"
#include "imgp/dctrsz/dctrsz_internal.h"
#include "kimgp_dctrsz.h"
#include "kimgp_rsz.h"

namespace kelo {
namespace dctrsz {
namespace {

// A plane as a block pass reads it: samples beyond w x h read as the nearest
// edge sample.
struct SrcPlane {
  const uint8_t* data;
  ptrdiff_t stride;
  int32_t w, h;
  int step = 1;  // bytes from one sample to the next
};

// A plane as a block pass writes it: nothing outside w x h.
struct DstPlane {
  uint8_t* data;
  ptrdiff_t stride;
  int32_t w, h;
  int step = 1;
};

struct PlaneJob {
  SrcPlane src;
  DstPlane dst;
  int p;          // settings plane: 0 luma, 1 chroma
  size_t first;   // the plane's first block entry
};

struct Scratch {
  int32_t* acc;
  uint8_t* buf;
};

inline int32_t Clamp(int64_t v, int32_t hi) {
  return static_cast<int32_t>(v < 0 ? 0 : (v > hi ? hi : v));
}

// Sub-blocks down and across of matrix class m: those overhanging the block
// by less than 4.
int32_t SubRows(const kimgp_rsz_new_ctx& ctx, int m) {
  return ctx.ceil_y[0] - (ctx.pad_y[0][m] >= 4 ? 1 : 0);
}
int32_t SubCols(const kimgp_rsz_new_ctx& ctx, int m) {
  return ctx.ceil_x[0] - (ctx.pad_x[0][m] >= 4 ? 1 : 0);
}

// The part of the windows of each matrix class that a run reads: up to the
// last row and column of non-zero weight (the whole window when the runs
// cannot leave the rest unread).
struct Reach {
  int32_t w[4], h[4];
};

Reach WindowReach(const kimgp_rsz_new_ctx& ctx, int16_t*** vmat, int16_t*** hmat) {
  Reach reach;
  for (int m = 0; m < 4; ++m) {
    reach.w[m] = 4 * ctx.ceil_x[0];
    reach.h[m] = 4 * ctx.ceil_y[0];
    const int32_t ni = SubRows(ctx, m), nj = SubCols(ctx, m);
    if (m >= ctx.n_class[0] || ni < 1 || nj < 1 || ctx.ceil_x[0] > kRunMaxSub ||
        ctx.ceil_y[0] > kRunMaxSub) {
      continue;
    }
    reach.w[m] = 4 * (nj - 1) + UsedLines(hmat[m][nj - 1], true);
    reach.h[m] = 4 * (ni - 1) + UsedLines(vmat[m][ni - 1], false);
  }
  return reach;
}

// Whether block i (row r, column c) can join a run: the part of its window
// the run reads lies inside a plane of single-byte samples, and it writes a
// whole 4x4 block of such a plane.
bool Inside(const kimgp_rsz_new_ctx& ctx, const Reach& reach, const PlaneJob& job, int64_t r,
            int64_t c, size_t i) {
  const int64_t xo = ctx.blk_xoff[i], yo = ctx.blk_yoff[i];
  const int m = MatrixClass(ctx.blk_class[i], ctx.n_class[0]);
  const SrcPlane& sp = job.src;
  const DstPlane& dp = job.dst;
  return sp.step == 1 && dp.step == 1 && xo >= 0 && yo >= 0 && xo + reach.w[m] <= sp.w &&
         yo + reach.h[m] <= sp.h && 4 * c + 4 <= dp.w && 4 * r + 4 <= dp.h;
}


// One output block at block row r, column c of a plane.
void Block(const kimgp_rsz_new_ctx& ctx, int16_t*** vmat, int16_t*** hmat,
           const PlaneJob& job, int64_t r, int64_t c, size_t i, Scratch s) {
  const int32_t cx = ctx.ceil_x[0], cy = ctx.ceil_y[0];
  const int32_t win_w = 4 * cx, win_h = 4 * cy;
  const int k = ctx.blk_class[i];
  const int m = MatrixClass(k, ctx.n_class[0]);
  const int64_t xo = ctx.blk_xoff[i], yo = ctx.blk_yoff[i];
  const SrcPlane& sp = job.src;
  const uint8_t* pix;
  ptrdiff_t pitch;
  if (sp.step == 1 && xo >= 0 && yo >= 0 && xo + win_w <= sp.w && yo + win_h <= sp.h) {
    pix = sp.data + yo * sp.stride + xo;
    pitch = sp.stride;
  } else {
    for (int32_t y = 0; y < win_h; ++y) {
      const uint8_t* row = sp.data + Clamp(yo + y, sp.h - 1) * sp.stride;
      for (int32_t x = 0; x < win_w; ++x) {
        s.buf[y * win_w + x] = row[static_cast<ptrdiff_t>(Clamp(xo + x, sp.w - 1)) * sp.step];
      }
    }
    pix = s.buf;
    pitch = win_w;
  }
  const int32_t ni = SubRows(ctx, m);
  const int32_t nj = SubCols(ctx, m);
  const DstPlane& dp = job.dst;
  const int64_t x0 = 4 * c, y0 = 4 * r;
  const int32_t* q = ctx.qscale[job.p][k];
  const bool inside = x0 + 4 <= dp.w && y0 + 4 <= dp.h;
  if (inside && dp.step == 1) {
    BlockToBytes(pix, pitch, vmat[m], hmat[m], ni, nj, q, dp.data + y0 * dp.stride + x0, dp.stride);
    return;
  }
  AccumulateBlock(pix, pitch, vmat[m], hmat[m], ni, nj, s.acc);
  // The visible cw x rh pixels through a tight scratch: border blocks by
  // the border inverse, inner blocks of interleaved planes by the 4x4 one.
  const int32_t cw = static_cast<int32_t>(std::min<int64_t>(4, dp.w - x0));
  const int32_t rh = static_cast<int32_t>(std::min<int64_t>(4, dp.h - y0));
  uint8_t tight[16];
  if (inside) {
    IdctDequant(tight, 4, s.acc, q);
  } else {
    int16_t coef[16];
    for (int n = 0; n < 16; ++n) coef[n] = Dequantise(s.acc[n], q[n]);
    kimgp_idct_blocknxn_float(tight, 0, 0, coef, cw, rh);
  }
  for (int32_t y = 0; y < rh; ++y) {
    uint8_t* out = dp.data + (y0 + y) * dp.stride + x0 * dp.step;
    for (int32_t x = 0; x < cw; ++x) out[x * dp.step] = tight[y * cw + x];
  }
}

// Block rows r with r % 2 == parity of one plane. Neighbouring blocks that
// lie inside their planes and share class and window row go through the
// transforms together.
void PlaneRows(const kimgp_rsz_new_ctx& ctx, int16_t*** vmat, int16_t*** hmat,
               const PlaneJob& job, int parity, Scratch s) {
  const int p = job.p;
  const int64_t rows = int64_t{ctx.n_rows_b[p]} + ctx.n_rows_b1[p];
  const int64_t cols = int64_t{ctx.n_cols_a[p]} + ctx.n_cols_a1[p];
  const int64_t end = std::min<int64_t>(cols, (int64_t{job.dst.w} + 3) / 4);
  const Reach reach = WindowReach(ctx, vmat, hmat);
  for (int64_t r = parity; r < rows && 4 * r < job.dst.h; r += 2) {
    const size_t row = job.first + static_cast<size_t>(r * cols);
    for (int64_t c = 0; c < end;) {
      const size_t i = row + static_cast<size_t>(c);
      if (!Inside(ctx, reach, job, r, c, i)) {
        Block(ctx, vmat, hmat, job, r, c, i, s);
        ++c;
        continue;
      }
      // Blocks to the right in the same window row, with windows not to the
      // left of their neighbour's, are inside when their right edges are.
      const uint8_t k = ctx.blk_class[i];
      const int32_t yo = ctx.blk_yoff[i];
      const int m = MatrixClass(k, ctx.n_class[0]);
      const int64_t x_end = int64_t{job.src.w} - reach.w[m];
      const int64_t c_end = std::min<int64_t>(end, job.dst.w / 4);
      const int64_t e =
          c + static_cast<int64_t>(RunExtent(ctx.blk_class + i, ctx.blk_xoff + i, ctx.blk_yoff + i,
                                             static_cast<size_t>(c_end - c), k, yo,
                                             static_cast<int32_t>(std::max<int64_t>(x_end, -1))));
      BlockRun run;
      run.src = job.src.data + ctx.blk_yoff[i] * job.src.stride;
      run.src_stride = job.src.stride;
      run.rows = job.src.h - yo;
      run.cols = job.src.w;
      run.xoff = ctx.blk_xoff + i;
      run.n = static_cast<int>(e - c);
      run.ni = SubRows(ctx, m);
      run.nj = SubCols(ctx, m);
      run.v = vmat[m];
      run.h = hmat[m];
      run.q = ctx.qscale[p][k];
      run.dst = job.dst.data + 4 * r * job.dst.stride + 4 * c;
      run.dst_stride = job.dst.stride;
      RunToBytes(run);
      c = e;
    }
  }
}

// Average of f x f samples (sum >> 2 for f = 2, >> 4 for f = 4, the sample
// for f = 1) of one component (`step` bytes apart) into an out_w x out_h
// plane of another step; source coordinates clamped to the w x h plane.
void Average(const SrcPlane& src, int sstep, int f, uint8_t* dst,
             ptrdiff_t dstride, int dstep, int32_t out_w, int32_t out_h) {
  const int shift = f == 4 ? 4 : (f == 2 ? 2 : 0);
  for (int32_t y = 0; y < out_h; ++y) {
    uint8_t* out = dst + y * dstride;
    const uint8_t* rows[4];
    for (int i = 0; i < f; ++i) {
      rows[i] = src.data + Clamp(int64_t{y} * f + i, src.h - 1) * src.stride;
    }
    int32_t x = 0;
    if (f == 1) {
      // A copy (or a split of one component) up to the plane's edge.
      const int32_t inner = std::min<int32_t>(out_w, src.w);
      for (; x < inner; ++x) out[static_cast<ptrdiff_t>(x) * dstep] = rows[0][static_cast<ptrdiff_t>(x) * sstep];
    } else if (f == 2 && sstep == 1 && dstep == 1) {
      // Inside the plane without clamping.
      const int32_t inner = std::min<int32_t>(out_w, src.w / 2);
      for (; x < inner; ++x) {
        out[x] = static_cast<uint8_t>((rows[0][2 * x] + rows[0][2 * x + 1] +
                                       rows[1][2 * x] + rows[1][2 * x + 1]) >> 2);
      }
    }
    for (; x < out_w; ++x) {
      uint32_t sum = 0;
      for (int i = 0; i < f; ++i) {
        for (int j = 0; j < f; ++j) {
          sum += rows[i][static_cast<ptrdiff_t>(Clamp(int64_t{x} * f + j, src.w - 1)) * sstep];
        }
      }
      out[static_cast<ptrdiff_t>(x) * dstep] = static_cast<uint8_t>(sum >> shift);
    }
  }
}

// Planar chroma written by the blocks, interleaved into the destination's
// chroma plane by block rows: each worker merges the rows it wrote.
struct Merge {
  const uint8_t* first = nullptr;  // the component stored first in a pair
  const uint8_t* second = nullptr;
  ptrdiff_t pitch = 0;
  uint8_t* out = nullptr;
  ptrdiff_t out_stride = 0;
  int32_t w = 0, h = 0;

  void Rows(int parity) const {
    for (int64_t y0 = 4 * int64_t{parity}; y0 < h; y0 += 8) {
      for (int64_t y = y0; y < std::min<int64_t>(y0 + 4, h); ++y) {
        csc::Interleave(first + y * pitch, second + y * pitch, out + y * out_stride,
                        static_cast<size_t>(w));
      }
    }
  }
};

struct Pass {
  const kimgp_rsz_new_ctx* ctx;
  int16_t*** vmat;
  int16_t*** hmat;
  PlaneJob jobs[4];  // released by ready[0]: jobs[0]; by ready[1]: the rest
  int n_jobs;
  Merge merge;       // after the jobs, when out is set
  sem_t ready[2];
};

struct WorkerArg {
  Pass* pass;
  int parity;
  Scratch scratch;
};

void* Worker(void* arg) {
  auto* w = static_cast<WorkerArg*>(arg);
  Pass& ps = *w->pass;
  sem_wait(&ps.ready[0]);
  PlaneRows(*ps.ctx, ps.vmat, ps.hmat, ps.jobs[0], w->parity, w->scratch);
  sem_wait(&ps.ready[1]);
  for (int j = 1; j < ps.n_jobs; ++j) {
    PlaneRows(*ps.ctx, ps.vmat, ps.hmat, ps.jobs[j], w->parity, w->scratch);
  }
  if (ps.merge.out != nullptr) ps.merge.Rows(w->parity);
  return nullptr;
}

// Runs the jobs of `ps` on two workers. prepare(0) readies jobs[0],
// prepare(1) the others; both run on the calling thread while the workers
// wait on the semaphores. A worker that cannot be started is run here.
template <typename Prepare>
void RunWorkers(Pass& ps, kimgp_rsz_new_ctx* ctx, const Prepare& prepare) {
  WorkerArg args[2] = {{&ps, 0, Scratch{ctx->tmp64_a, ctx->blk_buf_a}},
                       {&ps, 1, Scratch{ctx->tmp64_b, ctx->blk_buf_b}}};
  pthread_t threads[2];
  bool started[2] = {false, false};
  bool sems = sem_init(&ps.ready[0], 0, 0) == 0;
  if (sems && sem_init(&ps.ready[1], 0, 0) != 0) {
    sem_destroy(&ps.ready[0]);
    sems = false;
  }
  if (sems) {
    const unsigned fail = FailedThreadsForTest();
    for (int w = 0; w < 2; ++w) {
      started[w] = !(fail & (1u << w)) &&
                   StartThread(&threads[w], Worker, &args[w]) == 0;
    }
  }
  for (int stage = 0; stage < 2; ++stage) {
    prepare(stage);
    if (sems) {
      sem_post(&ps.ready[stage]);
      sem_post(&ps.ready[stage]);
    }
  }
  for (int w = 0; w < 2; ++w) {
    if (started[w]) continue;
    if (sems) {
      Worker(&args[w]);  // the semaphores are already posted
    } else {
      for (int j = 0; j < ps.n_jobs; ++j) {
        PlaneRows(*ctx, ps.vmat, ps.hmat, ps.jobs[j], w, args[w].scratch);
      }
      if (ps.merge.out != nullptr) ps.merge.Rows(w);
    }
  }
  for (int w = 0; w < 2; ++w) {
    if (started[w]) pthread_join(threads[w], nullptr);
  }
  if (sems) {
    sem_destroy(&ps.ready[0]);
    sem_destroy(&ps.ready[1]);
  }
}

bool Interleaved(int32_t cs) { return cs == KIMGP_CS_NV12 || cs == KIMGP_CS_NV21; }
bool Yuv(int32_t cs) { return cs == KIMGP_CS_YUV420 || Interleaved(cs); }

// Chroma component `comp` (0 U, 1 V) of a descriptor, in place.
DstPlane ChromaOf(const kimgp_img& m, int comp) {
  if (Interleaved(m.cs)) {
    const int offset = m.cs == KIMGP_CS_NV21 ? 1 - comp : comp;
    return DstPlane{m.plane[1] + offset, m.stride[1], m.width[1], m.height[1], 2};
  }
  return DstPlane{m.plane[1 + comp], m.stride[1 + comp], m.width[1 + comp], m.height[1 + comp], 1};
}
SrcPlane Readable(const DstPlane& p) { return SrcPlane{p.data, p.stride, p.w, p.h, p.step}; }

// The settings' source sizes of the plane the DCT stage reads.
struct Geometry {
  int32_t sw[2], sh[2];
  int shrink;  // 1, 2 or 4
};

Geometry SourceGeometry(const kimgp_img& s, int32_t mode) {
  Geometry g;
  g.shrink = mode == 2 ? 2 : (mode == 4 ? 4 : 1);
  SourceSizes(s, mode, g.sw, g.sh);
  return g;
}

bool PlaneFits(const kimgp_img& m, int i, int bytes_per_sample) {
  return m.width[i] >= 1 && m.height[i] >= 1 &&
         int64_t{m.stride[i]} >= int64_t{m.width[i]} * bytes_per_sample &&
         m.buf_height[i] >= m.height[i];
}

bool FramesFit(const kimgp_img& m) {
  if (m.cs >= 500 && m.cs <= 503) return PlaneFits(m, 0, 4);
  const bool nv = Interleaved(m.cs);
  for (int i = 0; i < (nv ? 2 : 3); ++i) {
    if (!PlaneFits(m, i, i && nv ? 2 : 1)) return false;
  }
  return true;
}

// Sizes, strides and buffer heights as at init; the settings they give are
// the context's.
bool MatchesContext(const kimgp_img& s, const kimgp_img& d, const kimgp_rsz_new_ctx& ctx) {
  if (ctx.pass_src0[0] != s.stride[0] || ctx.pass_src0[1] != s.buf_height[0] ||
      ctx.pass_src1[0] != s.stride[1] || ctx.pass_src1[1] != s.buf_height[1] ||
      ctx.pass_dst1[0] != d.stride[1] || ctx.pass_dst1[1] != d.buf_height[1]) {
    return false;
  }
  if (ctx.direct) {
    const int64_t f = int64_t{s.width[0]} / d.width[0];
    return (f == 2 || f == 4) && s.width[0] == f * d.width[0] && s.height[0] == f * d.height[0];
  }
  kimgp_rsz_new_ctx check;
  std::memset(&check, 0, sizeof(check));
  check.mode = ctx.mode;
  const kimgp_img pair[2] = {s, d};
  algorithm_settings(pair, &check);
  return std::memcmp(&check, &ctx, offsetof(kimgp_rsz_new_ctx, reserved)) == 0;
}

// Whether the block grid of plane p covers a w x h destination plane (it
// does not when a ratio leaves no whole block: growing by more than 4).
bool BlocksCover(const kimgp_rsz_new_ctx& ctx, int p, int32_t w, int32_t h) {
  const int64_t rows = int64_t{ctx.n_rows_b[p]} + ctx.n_rows_b1[p];
  const int64_t cols = int64_t{ctx.n_cols_a[p]} + ctx.n_cols_a1[p];
  return 4 * cols >= w && 4 * rows >= h;
}

int32_t ValidateYuv(const kimgp_img& s, const kimgp_img& d, const kimgp_rsz_new_ctx& ctx,
                    bool same_code) {
  if (!Yuv(s.cs) || !Yuv(d.cs)) return KIMGP_ERR_UNSUPPORTED;
  if (same_code && s.cs != d.cs) return KIMGP_ERR_ARGS;
  if (ctx.mode != 0 && ctx.mode != 2 && ctx.mode != 4) return KIMGP_ERR_ARGS;
  if (!FramesFit(s) || !FramesFit(d) || !MatchesContext(s, d, ctx)) return KIMGP_ERR_ARGS;
  if (!ctx.direct) {
    const Geometry g = SourceGeometry(s, ctx.mode);
    if (g.sw[0] < 1 || g.sh[0] < 1 || g.sw[1] < 1 || g.sh[1] < 1) return KIMGP_ERR_ARGS;
    if (!BlocksCover(ctx, 0, d.width[0], d.height[0]) || !BlocksCover(ctx, 1, d.width[1], d.height[1])) {
      return KIMGP_ERR_UNSUPPORTED;
    }
  }
  return KIMGP_OK;
}

// The direct path: the f x f average straight into the destination. A 2x2
// average that needs no edge samples is the resizer's whole-ratio kernel
// (the truncating mean of each 2x2).
bool Covers(const SrcPlane& s, int32_t w, int32_t h) {
  return int64_t{s.w} >= 2 * int64_t{w} && int64_t{s.h} >= 2 * int64_t{h};
}

void Direct(const kimgp_img& s, const kimgp_img& d) {
  const int f = s.width[0] / d.width[0];
  const SrcPlane luma{s.plane[0], s.stride[0], s.width[0], s.height[0]};
  if (f == 2 && Covers(luma, d.width[0], d.height[0])) {
    kimgp_8b_rsz_down_mult(s.plane[0], d.plane[0], d.width[0], d.height[0], 2, s.stride[0],
                           2 * s.stride[0], d.stride[0]);
  } else {
    Average(luma, 1, f, d.plane[0], d.stride[0], 1, d.width[0], d.height[0]);
  }
  if (f == 2 && Interleaved(s.cs) && s.cs == d.cs &&
      Covers(Readable(ChromaOf(s, 0)), d.width[1], d.height[1])) {
    kimgp_8b8b_rsz_down_mult(s.plane[1], d.plane[1], d.width[1], d.height[1], 2, s.stride[1],
                             2 * s.stride[1], d.stride[1]);
    return;
  }
  for (int comp = 0; comp < 2; ++comp) {
    const SrcPlane from = Readable(ChromaOf(s, comp));
    const DstPlane to = ChromaOf(d, comp);
    if (f == 2 && from.step == 1 && to.step == 1 && Covers(from, to.w, to.h)) {
      kimgp_8b_rsz_down_mult(from.data, to.data, to.w, to.h, 2, static_cast<int32_t>(from.stride),
                             static_cast<int32_t>(2 * from.stride), static_cast<int32_t>(to.stride));
    } else {
      Average(from, from.step, f, to.data, to.stride, to.step, to.w, to.h);
    }
  }
}

bool FitsIn(int64_t pitch, int64_t rows, int64_t planes, int64_t bytes) {
  return pitch >= 1 && pitch * rows * planes <= bytes;
}

// The block pass of a validated, non-direct YUV context.
int32_t BlockPass(kimgp_img* img, kimgp_rsz_new_ctx* ctx, int16_t*** vmat, int16_t*** hmat) {
  const kimgp_img& s = img[0];
  const kimgp_img& d = img[1];
  const Geometry g = SourceGeometry(s, ctx->mode);
  const bool src_nv = Interleaved(s.cs), dst_nv = Interleaved(d.cs);
  const int f = g.shrink;
  const int64_t src0_bytes = int64_t{s.stride[0]} * s.buf_height[0];
  const int64_t src1_bytes = int64_t{s.stride[1]} * s.buf_height[1];
  const int64_t dst1_bytes = int64_t{d.stride[1]} * d.buf_height[1];

  // The planes the blocks read: the caller's, or prepared ones (pre-shrunk,
  // or chroma split out of an interleaved plane), checked against their
  // buffers before anything is written.
  SrcPlane luma{s.plane[0], s.stride[0], s.width[0], s.height[0]};
  SrcPlane chroma[2] = {Readable(ChromaOf(s, 0)), Readable(ChromaOf(s, 1))};
  uint8_t* prepared[2] = {nullptr, nullptr};
  ptrdiff_t pitch = 0;  // made from int32 strides
  if (f > 1) {
    const ptrdiff_t pitch0 = ctx->src_stride[0];
    if (!FitsIn(pitch0, g.sh[0], 1, src0_bytes / (f * f))) return KIMGP_ERR_ARGS;
    luma = SrcPlane{ctx->pre_y, pitch0, static_cast<int32_t>(std::min<int64_t>(g.sw[0], pitch0)),
                    g.sh[0]};
    pitch = src_nv ? ctx->src_stride[1] : s.stride[1] / f;
    const int64_t pre_bytes = src1_bytes / (f * f);
    if (src_nv) {
      if (!FitsIn(pitch, g.sh[1], 2, pre_bytes)) return KIMGP_ERR_ARGS;
      prepared[0] = ctx->pre_uv;
      prepared[1] = ctx->pre_uv + pitch * g.sh[1];
    } else {
      if (!FitsIn(pitch, g.sh[1], 1, pre_bytes) || !FitsIn(pitch, g.sh[1], 1, src1_bytes >> 2)) {
        return KIMGP_ERR_ARGS;
      }
      prepared[0] = ctx->pre_uv;
      prepared[1] = ctx->uv_src;
    }
    for (int comp = 0; comp < 2; ++comp) {
      chroma[comp] = SrcPlane{prepared[comp], pitch,
                              static_cast<int32_t>(std::min<int64_t>(g.sw[1], pitch)), g.sh[1]};
    }
  } else if (src_nv) {
    pitch = ctx->src_stride[1];
    if (!FitsIn(pitch, s.height[1], 2, src1_bytes)) return KIMGP_ERR_ARGS;
    for (int comp = 0; comp < 2; ++comp) {
      prepared[comp] = ctx->uv_src + comp * pitch * s.height[1];
      chroma[comp] = SrcPlane{prepared[comp], pitch, s.width[1], s.height[1]};
    }
  }
  // NV12/NV21 destinations: planar chroma in uv_dst, interleaved at the end.
  DstPlane dchroma[2] = {ChromaOf(d, 0), ChromaOf(d, 1)};
  const ptrdiff_t uv_pitch = d.stride[1] >> 1;
  if (dst_nv) {
    if (!FitsIn(uv_pitch, d.height[1], 2, dst1_bytes)) return KIMGP_ERR_ARGS;
    for (int comp = 0; comp < 2; ++comp) {
      dchroma[comp] = DstPlane{ctx->uv_dst + comp * uv_pitch * d.height[1], uv_pitch,
                               d.width[1], d.height[1]};
    }
  }

  Pass ps;
  ps.ctx = ctx;
  ps.vmat = vmat;
  ps.hmat = hmat;
  const size_t luma_blocks = static_cast<size_t>(
      (int64_t{ctx->n_rows_b[0]} + ctx->n_rows_b1[0]) * (int64_t{ctx->n_cols_a[0]} + ctx->n_cols_a1[0]));
  ps.jobs[0] = PlaneJob{luma, DstPlane{d.plane[0], d.stride[0], d.width[0], d.height[0]}, 0, 0};
  ps.jobs[1] = PlaneJob{chroma[0], dchroma[0], 1, luma_blocks};
  ps.jobs[2] = PlaneJob{chroma[1], dchroma[1], 1, luma_blocks};
  ps.n_jobs = 3;
  if (dst_nv) {
    const int first = d.cs == KIMGP_CS_NV21 ? 1 : 0;
    ps.merge.first = dchroma[first].data;
    ps.merge.second = dchroma[1 - first].data;
    ps.merge.pitch = uv_pitch;
    ps.merge.out = d.plane[1];
    ps.merge.out_stride = d.stride[1];
    ps.merge.w = d.width[1];
    ps.merge.h = d.height[1];
  }
  RunWorkers(ps, ctx, [&](int stage) {
    if (stage == 0) {
      if (f > 1) {
        Average(SrcPlane{s.plane[0], s.stride[0], s.width[0], s.height[0]}, 1, f, ctx->pre_y,
                luma.stride, 1, luma.w, luma.h);
      }
      return;
    }
    if (prepared[0] == nullptr) return;
    if (f == 1) {
      // The chroma pairs split into their planes, row by row.
      const bool v_first = s.cs == KIMGP_CS_NV21;
      for (int32_t y = 0; y < chroma[0].h; ++y) {
        csc::Deinterleave(s.plane[1] + static_cast<ptrdiff_t>(y) * s.stride[1],
                          prepared[v_first ? 1 : 0] + y * pitch, prepared[v_first ? 0 : 1] + y * pitch,
                          static_cast<size_t>(chroma[0].w));
      }
      return;
    }
    for (int comp = 0; comp < 2; ++comp) {
      const SrcPlane from = Readable(ChromaOf(s, comp));
      Average(from, from.step, f, prepared[comp], pitch, 1, chroma[comp].w, chroma[comp].h);
    }
  });
  return KIMGP_OK;
}

int32_t YuvPass(kimgp_img* img, kimgp_rsz_new_ctx* ctx, int16_t*** vmat, int16_t*** hmat,
                bool same_code) {
  const int32_t status = ValidateYuv(img[0], img[1], *ctx, same_code);
  if (status != KIMGP_OK) return status;
  if (ctx->direct) {
    Direct(img[0], img[1]);
    return KIMGP_OK;
  }
  return BlockPass(img, ctx, vmat, hmat);
}

}  // namespace
}  // namespace dctrsz
}  // namespace kelo

KELO_EXPORT int32_t kimgp_rsz_new(kimgp_img* img, kimgp_rsz_new_ctx* ctx,
                                  int16_t*** vmat, int16_t*** hmat) {
  return kelo::dctrsz::YuvPass(img, ctx, vmat, hmat, true);
}

KELO_EXPORT int32_t kimgp_txc_new(kimgp_img* img, kimgp_rsz_new_ctx* ctx,
                                  int16_t*** vmat, int16_t*** hmat) {
  return kelo::dctrsz::YuvPass(img, ctx, vmat, hmat, false);
}

KELO_EXPORT int32_t kimgp_rsz_new_rgba8888(kimgp_img* img, kimgp_rsz_new_ctx* ctx,
                                           int16_t*** vmat, int16_t*** hmat) {
  using namespace kelo::dctrsz;
  const kimgp_img& s = img[0];
  const kimgp_img& d = img[1];
  const auto four = [](int32_t cs) { return cs >= KIMGP_CS_RGBA8888 && cs <= KIMGP_CS_ABGR8888; };
  if (!four(s.cs) || !four(d.cs)) return KIMGP_ERR_UNSUPPORTED;
  if (s.cs != d.cs || ctx->mode != 0 || ctx->direct || !FramesFit(s) || !FramesFit(d) ||
      !MatchesContext(s, d, *ctx)) {
    return KIMGP_ERR_ARGS;
  }
  if (!BlocksCover(*ctx, 0, d.width[0], d.height[0])) return KIMGP_ERR_UNSUPPORTED;
  Pass ps;
  ps.ctx = ctx;
  ps.vmat = vmat;
  ps.hmat = hmat;
  for (int c = 0; c < 4; ++c) {
    ps.jobs[c] = PlaneJob{SrcPlane{s.plane[0] + c, s.stride[0], s.width[0], s.height[0], 4},
                          DstPlane{d.plane[0] + c, d.stride[0], d.width[0], d.height[0], 4}, 0, 0};
  }
  ps.n_jobs = 4;
  RunWorkers(ps, ctx, [](int) {});
  return KIMGP_OK;
}
