// DCT-domain downscaler: descriptor set-up, the context's settings, the block
// layout, the shift matrices, and the context's allocation and release.
#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>

#include "common/internal/api.h"
#include "common/internal/fault.h"
#include "imgp/dctrsz/dctrsz_internal.h"
#include "kcmn_mem.h"
#include "kimgp_dctrsz.h"

#if UINTPTR_MAX == 0xFFFFFFFFu
#define KELO_CTX_AT(field, word) \
  static_assert(offsetof(kimgp_rsz_new_ctx, field) == 4 * (word), #field)
KELO_CTX_AT(src_w, 0);
KELO_CTX_AT(src_h, 2);
KELO_CTX_AT(dst_w, 4);
KELO_CTX_AT(dst_h, 6);
KELO_CTX_AT(src_stride, 8);
KELO_CTX_AT(src_rows, 10);
KELO_CTX_AT(dst_stride, 12);
KELO_CTX_AT(dst_rows, 14);
KELO_CTX_AT(ratio_x, 16);
KELO_CTX_AT(ratio_y, 18);
KELO_CTX_AT(ceil_x, 20);
KELO_CTX_AT(ceil_y, 22);
KELO_CTX_AT(blk_w, 24);
KELO_CTX_AT(blk_h, 32);
KELO_CTX_AT(pad_x, 40);
KELO_CTX_AT(pad_y, 48);
KELO_CTX_AT(n_class, 56);
KELO_CTX_AT(n_rows_b, 58);
KELO_CTX_AT(n_rows_b1, 60);
KELO_CTX_AT(n_cols_a, 62);
KELO_CTX_AT(n_cols_a1, 64);
KELO_CTX_AT(reserved, 66);
KELO_CTX_AT(qscale, 72);
KELO_CTX_AT(uv_src, 200);
KELO_CTX_AT(uv_dst, 201);
KELO_CTX_AT(tmp64_a, 202);
KELO_CTX_AT(pass_src0, 203);
KELO_CTX_AT(tmp64_b, 205);
KELO_CTX_AT(blk_class, 206);
KELO_CTX_AT(blk_xoff, 207);
KELO_CTX_AT(blk_yoff, 208);
KELO_CTX_AT(blk_buf_a, 209);
KELO_CTX_AT(pass_src1, 210);
KELO_CTX_AT(blk_buf_b, 212);
KELO_CTX_AT(pre_y, 213);
KELO_CTX_AT(pre_uv, 214);
KELO_CTX_AT(pass_dst1, 215);
KELO_CTX_AT(mode, 217);
KELO_CTX_AT(unaligned, 218);
KELO_CTX_AT(direct, 219);
KELO_CTX_AT(aligned_stride, 220);
KELO_CTX_AT(stride_fix, 221);
static_assert(sizeof(kimgp_rsz_new_ctx) == 4 * 222, "context size");
#undef KELO_CTX_AT
#endif

namespace kelo {
namespace dctrsz {
namespace {

std::atomic<unsigned> g_fail_threads{0};
std::atomic<int> g_frees{0};

}  // namespace

void* Alloc(uint32_t bytes) { return kcmn_malloc_align32(bytes); }
void Free(void* p) {
  if (p != nullptr) ++g_frees;
  kcmn_mfree_align32(p);
}

void FailAllocationForTest(int n) {
  g_frees = 0;
  FailNthForTest(n);
}
int AllocationsForTest() { return FaultEventsForTest(); }
int FreesForTest() { return g_frees.load(); }
void FailThreadsForTest(unsigned mask) { g_fail_threads = mask; }
unsigned FailedThreadsForTest() { return g_fail_threads.load(); }

void SourceSizes(const kimgp_img& s, int32_t mode, int32_t sw[2], int32_t sh[2]) {
  if (mode == 2) {
    sw[0] = (s.width[0] / 2) & ~1;
    sw[1] = (s.width[0] / 2) >> 1;
    sh[0] = s.height[0] >> 1;
    sh[1] = s.height[0] >> 2;
  } else if (mode == 4) {
    const int32_t q = s.width[0] / 4;
    sw[0] = q + (q & 1);
    sw[1] = sw[0] >> 1;
    sh[0] = s.height[0] >> 2;
    sh[1] = s.height[0] >> 3;
  } else {
    sw[0] = s.width[0];
    sw[1] = s.width[1];
    sh[0] = s.height[0];
    sh[1] = s.height[1];
  }
}

namespace {

// Truncation toward zero, saturated to int32 (NaN gives 0): the settings'
// conversions of float products, defined for every input.
int32_t Trunc(double v) {
  if (!(v == v)) return 0;
  if (v >= 2147483647.0) return std::numeric_limits<int32_t>::max();
  if (v <= -2147483648.0) return std::numeric_limits<int32_t>::min();
  return static_cast<int32_t>(v);
}

// Float quotient; 0 for a zero divisor (sizes are not validated).
float Ratio(int32_t num, int32_t den) {
  return den == 0 ? 0.0f : static_cast<float>(num) / static_cast<float>(den);
}

int32_t RoundUp(int32_t v, int32_t m) {
  const int64_t r = (int64_t{v} + m - 1) & ~int64_t{m - 1};
  return static_cast<int32_t>(r);
}

// Byte count of an allocation the definition sizes by int32 products; sizes
// that do not fit are refused like an allocation failure.
void* AllocProduct(int64_t bytes) {
  if (bytes < 0 || bytes > 0xFFFFFFFFll) return nullptr;
  return Alloc(static_cast<uint32_t>(bytes));
}

// Source size extended for a destination size that is not a multiple of 4.
void Extend(int32_t s, int32_t d, float r, int32_t* s_out, int32_t* d_out) {
  if (d % 4 == 0) {
    *s_out = s;
    *d_out = d;
    return;
  }
  const int32_t e = 4 - d % 4;
  const float grow = r * static_cast<float>(e);
  const float hundredths = static_cast<float>(e * 100) * r;
  *d_out = RoundUp(d, 4);
  *s_out = s + Trunc(grow) + (Trunc(hundredths) % 100 != 0 ? 1 : 0);
}

// The (n_big, n_small) pair with n_big * (size + 1) + n_small * size == s
// and 4 * (n_big + n_small) == d, searched from the rounded quotients down;
// both stay 0 when none fits.
void SplitCounts(int32_t s, int32_t d, int32_t size, int32_t* n_small,
                 int32_t* n_big) {
  *n_small = 0;
  *n_big = 0;
  const int32_t start_big =
      size + 1 == 0 ? 0 : Trunc(Ratio(s, size + 1) + 0.5f);
  const int32_t start_small = size == 0 ? 0 : Trunc(Ratio(s, size) + 0.5f);
  for (int32_t nb1 = start_big; nb1 >= 0; --nb1) {
    // For a given n_big at most one n_small fits the first equation; the
    // search visits it when it lies in [0, start_small].
    const int64_t rest = int64_t{s} - int64_t{nb1} * (size + 1);
    int64_t nb;
    if (size == 0) {
      if (rest != 0) continue;
      nb = 0;
    } else {
      if (rest < 0 || rest % size != 0) continue;
      nb = rest / size;
    }
    if (nb > start_small) continue;
    if (4 * (nb + nb1) == d) {
      *n_big = nb1;
      *n_small = static_cast<int32_t>(nb);
    }
  }
}

void Free3D(int16_t*** m, int32_t n) {
  if (m == nullptr) return;
  for (int32_t i = 0; i < n; ++i) {
    if (m[i] != nullptr) {
      Free(m[i][0]);
      Free(m[i]);
    }
  }
  Free(m);
}

}  // namespace
}  // namespace dctrsz
}  // namespace kelo

using kelo::dctrsz::Alloc;
using kelo::dctrsz::AllocProduct;
using kelo::dctrsz::Free;
using kelo::dctrsz::Ratio;
using kelo::dctrsz::RoundUp;
using kelo::dctrsz::Trunc;

KELO_EXPORT int32_t kimgp_rsz_new_set_img(kimgp_img* img) {
  const int32_t dst_std = img[1].std;
  for (int side = 0; side < 2; ++side) {
    kimgp_img& m = img[side];
    const int32_t w0 = m.width[0], h0 = m.height[0];
    if (m.cs == KIMGP_CS_NV12 || m.cs == KIMGP_CS_NV21) {
      if (dst_std == 1) {
        m.width[1] = w0 >> 1;
        m.height[1] = h0 >> 1;
        if (side == 0) {
          m.stride[0] = w0;
          m.stride[1] = static_cast<int32_t>((int64_t{w0} + 1) & ~int64_t{1});
          m.buf_height[0] = h0;
          m.buf_height[1] = h0 >> 1;
        } else {
          m.stride[0] = m.stride[1] = RoundUp(w0, 16);
          m.buf_height[0] = RoundUp(h0, 16);
          m.buf_height[1] = RoundUp(h0 >> 1, 16);
        }
      } else if (dst_std == 0) {
        m.width[1] = w0 >> 1;
        m.height[1] = h0 >> 1;
        m.stride[0] = m.stride[1] = RoundUp(w0, 128);
        m.buf_height[0] = RoundUp(h0, 32);
        m.buf_height[1] = RoundUp(h0 >> 1, 16);
      }
    } else if (m.cs == KIMGP_CS_YUV420) {
      for (int i = 0; i < 3; ++i) {
        m.stride[i] = RoundUp(m.width[i], 16);
        m.buf_height[i] = RoundUp(m.height[i], 16);
      }
    }
  }
  return 0;
}

KELO_EXPORT void algorithm_settings(const kimgp_img* img, kimgp_rsz_new_ctx* ctx) {
  const kimgp_img& s = img[0];
  const kimgp_img& d = img[1];
  int32_t sw[2], sh[2];
  kelo::dctrsz::SourceSizes(s, ctx->mode, sw, sh);
  // Destination pitches and rows, for the codes the pass writes.
  const bool nv = d.cs == KIMGP_CS_NV12 || d.cs == KIMGP_CS_NV21;
  if (nv || d.cs == KIMGP_CS_YUV420) {
    ctx->dst_stride[0] = d.stride[0];
    ctx->dst_stride[1] = nv ? d.stride[1] >> 1 : d.stride[1];
    ctx->dst_rows[0] = d.buf_height[0];
    ctx->dst_rows[1] = d.buf_height[1];
  }
  if (ctx->mode == 4) {
    ctx->src_stride[0] = s.stride[0] >> 2;
    ctx->src_stride[1] = s.stride[1] >> 3;
    ctx->src_rows[0] = s.height[0] >> 2;
    ctx->src_rows[1] = s.height[1] >> 2;
  } else if (ctx->mode == 2) {
    ctx->src_stride[0] = s.stride[0] >> 1;
    ctx->src_stride[1] = s.stride[1] >> 2;
    ctx->src_rows[0] = s.height[0] >> 1;
    ctx->src_rows[1] = s.height[1] >> 1;
  } else {
    ctx->src_stride[0] = s.stride[0];
    ctx->src_stride[1] = s.stride[1] >> 1;
    ctx->src_rows[0] = sh[0];
    ctx->src_rows[1] = sh[1];
  }

  for (int p = 0; p < 2; ++p) {
    const float ry = Ratio(sh[p], d.height[p]);
    const float rx = Ratio(sw[p], d.width[p]);
    int32_t sh2, dh2, sw2, dw2;
    kelo::dctrsz::Extend(sh[p], d.height[p], ry, &sh2, &dh2);
    kelo::dctrsz::Extend(sw[p], d.width[p], rx, &sw2, &dw2);
    ctx->src_w[p] = sw2;
    ctx->src_h[p] = sh2;
    ctx->dst_w[p] = dw2;
    ctx->dst_h[p] = dh2;
    const float ratio_x = Ratio(sw2, dw2);
    const float ratio_y = Ratio(sh2, dh2);
    ctx->ratio_x[p] = ratio_x;
    ctx->ratio_y[p] = ratio_y;

    const int32_t a = Trunc(4.0f * ratio_x);
    const int32_t b = Trunc(4.0f * ratio_y);
    ctx->ceil_x[p] = Trunc(ratio_x + 0.999);
    ctx->ceil_y[p] = Trunc(ratio_y + 0.999);
    for (int k = 0; k < 4; ++k) {
      ctx->blk_w[p][k] = a + (k & 1);
      ctx->blk_h[p][k] = b + (k >> 1);
      ctx->pad_x[p][k] = 4 * ctx->ceil_x[p] - ctx->blk_w[p][k];
      ctx->pad_y[p][k] = 4 * ctx->ceil_y[p] - ctx->blk_h[p][k];
    }

    for (int k = 0; k < 4; ++k) {
      const double area = static_cast<double>(ctx->blk_w[p][k]) * ctx->blk_h[p][k];
      const float sc = static_cast<float>(1.004 / std::sqrt(area));
      const int32_t q0 = Trunc(sc * 0.25f * 2048.0f * 64.0f);
      const int32_t q1 = Trunc(sc * 0.3162f * 2048.0f * 64.0f);
      const int32_t q2 = Trunc(sc * 0.4f * 2048.0f * 64.0f);
      const int32_t rows[2][4] = {{q0, q1, q0, q1}, {q1, q2, q1, q2}};
      for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) ctx->qscale[p][k][4 * r + c] = rows[r & 1][c];
      }
    }

    const int x_frac = Trunc(ratio_x * 4.0f * 100.0f) % 100 != 0;
    const int y_frac = Trunc(ratio_y * 4.0f * 100.0f) % 100 != 0;
    ctx->n_class[p] = 1 + x_frac + 2 * y_frac;
    if (y_frac) {
      kelo::dctrsz::SplitCounts(sh2, dh2, b, &ctx->n_rows_b[p], &ctx->n_rows_b1[p]);
    } else {
      ctx->n_rows_b1[p] = 0;
      ctx->n_rows_b[p] = b == 0 ? 0 : sh2 / b;
    }
    if (x_frac) {
      kelo::dctrsz::SplitCounts(sw2, dw2, a, &ctx->n_cols_a[p], &ctx->n_cols_a1[p]);
    } else {
      ctx->n_cols_a1[p] = 0;
      ctx->n_cols_a[p] = a == 0 ? 0 : sw2 / a;
    }
  }
}

namespace {

// Minority rows or columns: one after every `period` majority ones, starting
// with the majority, `count` of them.
struct Spread {
  int64_t count, period;
  bool Minority(int64_t i) const {
    return i < count * (period + 1) && i % (period + 1) == period;
  }
};

Spread MakeSpread(int32_t majority, int32_t minority) {
  if (minority <= 0) return Spread{0, 0};
  const double p = std::trunc(static_cast<double>(majority) / minority);
  return Spread{minority, static_cast<int64_t>(p)};
}

}  // namespace

KELO_EXPORT void split_settings(kimgp_rsz_new_ctx* ctx) {
  const bool uniform = ctx->n_cols_a1[0] + ctx->n_rows_b1[0] == 0;
  // Labels base, hmin, vmin, both; set once, before the luma plane.
  int base = 3, hmin = 2, vmin = 1, both = 0;
  int64_t first = 0;
  for (int p = 0; p < 2; ++p) {
    const int64_t rows = int64_t{ctx->n_rows_b[p]} + ctx->n_rows_b1[p];
    const int64_t cols = int64_t{ctx->n_cols_a[p]} + ctx->n_cols_a1[p];
    uint8_t* cls = ctx->blk_class + first;
    int32_t* xo = ctx->blk_xoff + first;
    int32_t* yo = ctx->blk_yoff + first;
    Spread vs{0, 0}, hs{0, 0};
    if (!uniform) {
      const bool b1_minority = ctx->n_rows_b1[p] < ctx->n_rows_b[p];
      const bool a_minority = ctx->n_cols_a1[p] >= ctx->n_cols_a[p];
      vs = b1_minority ? MakeSpread(ctx->n_rows_b[p], ctx->n_rows_b1[p])
                       : MakeSpread(ctx->n_rows_b1[p], ctx->n_rows_b[p]);
      hs = a_minority ? MakeSpread(ctx->n_cols_a1[p], ctx->n_cols_a[p])
                      : MakeSpread(ctx->n_cols_a[p], ctx->n_cols_a1[p]);
      if (b1_minority && !a_minority) {
        base = 0, hmin = 1, vmin = 2, both = 3;
      } else if (b1_minority) {
        base = 1, hmin = 0, vmin = 3, both = 2;
      } else if (!a_minority) {
        base = 2, hmin = 3, vmin = 0, both = 1;
      }
      // (b rows and a columns both the minority: the labels stay as they are.)
    }
    for (int64_t r = 0; r < rows; ++r) {
      for (int64_t c = 0; c < cols; ++c) {
        const int64_t i = r * cols + c;
        int k = 0;
        if (!uniform) {
          const bool vm = vs.Minority(r), hm = hs.Minority(c);
          k = vm ? (hm ? both : vmin) : (hm ? hmin : base);
        }
        cls[i] = static_cast<uint8_t>(k);
        if (c == 0) {
          xo[i] = 0;
        } else {
          const int left = cls[i - 1];
          xo[i] = xo[i - 1] + ((left & 1) ? ctx->blk_w[p][3] : ctx->blk_w[p][0]);
        }
        if (r == 0) {
          yo[i] = 0;
        } else {
          const int up = cls[i - cols];
          yo[i] = yo[i - cols] + (up >= 2 ? ctx->blk_h[p][3] : ctx->blk_h[p][0]);
        }
      }
    }
    first += rows * cols;
  }
}

KELO_EXPORT void FDCT_BlockXYFn(const uint8_t* sel, int16_t* out, int32_t rows,
                                int32_t cols, int32_t dir) {
  float f[16] = {};
  if (rows > 0 && cols > 0) {
    const float ir = 1.0f / static_cast<float>(rows);
    const float ic = 1.0f / static_cast<float>(cols);
    const float norm = std::sqrt(ir * ic);
    // The 16 sums are kept side by side and walked once over the matrix, each
    // adding its terms in the same row-major order as a sum of its own. Only
    // the set entries add anything: a cleared one's zero product leaves a
    // float sum as it is (these sums are never -0). Cosines are taken only
    // for set entries, from the same double expressions.
    float sum[16] = {};
    for (int32_t i = 0; i < rows; ++i) {
      const uint8_t* row = sel + static_cast<size_t>(i) * cols;
      bool row_cos = false;
      double cu[4];
      for (int32_t j = 0; j < cols; ++j) {
        if (row[j] == 0) continue;
        if (!row_cos) {
          for (int u = 0; u < 4; ++u) cu[u] = std::cos((2 * i + 1) * 1.570796 * u * ir);
          row_cos = true;
        }
        double cv[4];
        for (int v = 0; v < 4; ++v) cv[v] = std::cos((2 * j + 1) * 1.570796 * v * ic);
        for (int u = 0; u < 4; ++u) {
          for (int v = 0; v < 4; ++v) sum[4 * u + v] += static_cast<float>(row[j] * cu[u] * cv[v]);
        }
      }
    }
    for (int u = 0; u < 4; ++u) {
      for (int v = 0; v < 4; ++v) {
        const float cu0 = u == 0 ? 0.70710677f : 1.0f;
        const float cv0 = v == 0 ? 0.70710677f : 1.0f;
        f[4 * u + v] = norm * cu0 * cv0 * 2048.0f * sum[4 * u + v];
      }
    }
  }
  MatNxN_float_compute(f, out, dir);
}

KELO_EXPORT void MatNxN_float_compute(const float* in, int16_t* out, int32_t dir) {
  for (int line = 0; line < 4; ++line) {
    float x[4];
    for (int k = 0; k < 4; ++k) x[k] = dir == 0 ? in[4 * line + k] : in[4 * k + line];
    const float y[4] = {
        0.5f * x[0] + 0.6533f * x[1] + 0.5f * x[2] + 0.2706f * x[3],
        0.5f * x[0] + 0.2706f * x[1] - 0.5f * x[2] - 0.6533f * x[3],
        0.5f * x[0] - 0.2706f * x[1] - 0.5f * x[2] + 0.6533f * x[3],
        0.5f * x[0] - 0.6533f * x[1] + 0.5f * x[2] - 0.2706f * x[3]};
    for (int n = 0; n < 4; ++n) {
      const int16_t v = static_cast<int16_t>(static_cast<uint16_t>(Trunc(y[n])));
      if (dir == 0) {
        out[4 * line + n] = v;
      } else {
        out[4 * n + line] = v;
      }
    }
  }
}

KELO_EXPORT int32_t get_mem3Dint16(int16_t**** out, int32_t n, int32_t m) {
  const int32_t rows = n > 0 ? n : 0;
  const int32_t per = m > 0 ? m : 1;  // entry 0 always holds the block
  *out = nullptr;
  auto** top = static_cast<int16_t***>(
      AllocProduct(int64_t{rows} * static_cast<int64_t>(sizeof(int16_t**))));
  if (top == nullptr) return -1;
  for (int32_t i = 0; i < rows; ++i) top[i] = nullptr;
  for (int32_t i = 0; i < rows; ++i) {
    auto** row = static_cast<int16_t**>(
        AllocProduct(int64_t{per} * static_cast<int64_t>(sizeof(int16_t*))));
    auto* block = row == nullptr ? nullptr : static_cast<int16_t*>(AllocProduct(int64_t{per} * 32));
    if (block == nullptr) {
      Free(row);
      for (int32_t k = i - 1; k >= 0; --k) {
        Free(top[k][0]);
        Free(top[k]);
      }
      Free(top);
      return -1;
    }
    for (int32_t j = 0; j < per; ++j) row[j] = block + 16 * j;
    top[i] = row;
  }
  *out = top;
  return 0;
}

KELO_EXPORT int32_t make_shiftmatrix(int16_t*** vmat, int16_t*** hmat,
                                     kimgp_rsz_new_ctx* ctx) {
  const int32_t cy = ctx->ceil_y[0], cx = ctx->ceil_x[0];
  int32_t longest = 4;
  for (int k = 0; k < 4; ++k) {
    if (ctx->blk_h[0][k] > longest) longest = ctx->blk_h[0][k];
    if (ctx->blk_w[0][k] > longest) longest = ctx->blk_w[0][k];
  }
  auto* sel = static_cast<uint8_t*>(AllocProduct(int64_t{longest} * 4));
  if (sel == nullptr) return -1;
  for (int k = 0; k < ctx->n_class[0] && k < 4; ++k) {
    const int32_t v = ctx->blk_h[0][k], h = ctx->blk_w[0][k];
    for (int32_t i = 0; i < cy; ++i) {
      memset(sel, 0, static_cast<size_t>(longest) * 4);
      const int32_t last = i == cy - 1 ? 3 - ctx->pad_y[0][k] : 3;
      for (int32_t r = 0; r <= last && r < 4; ++r) {
        if (4 * i + r < v) sel[(4 * i + r) * 4 + r] = 1;
      }
      FDCT_BlockXYFn(sel, vmat[k][i], v, 4, 0);
    }
    for (int32_t j = 0; j < cx; ++j) {
      memset(sel, 0, static_cast<size_t>(longest) * 4);
      const int32_t last = j == cx - 1 ? 3 - ctx->pad_x[0][k] : 3;
      for (int32_t r = 0; r <= last && r < 4; ++r) {
        if (4 * j + r < h) sel[r * h + 4 * j + r] = 1;
      }
      FDCT_BlockXYFn(sel, hmat[k][j], 4, h, 1);
    }
  }
  Free(sel);
  return 0;
}

namespace {

void FreeContext(kimgp_rsz_new_ctx* ctx, int16_t*** vmat, int16_t*** hmat) {
  Free(ctx->uv_dst);
  Free(ctx->uv_src);
  Free(ctx->tmp64_a);
  Free(ctx->blk_yoff);
  Free(ctx->blk_xoff);
  Free(ctx->blk_class);
  kelo::dctrsz::Free3D(hmat, ctx->n_class[0]);
  kelo::dctrsz::Free3D(vmat, ctx->n_class[0]);
  Free(ctx->blk_buf_a);
  Free(ctx->blk_buf_b);
  Free(ctx->tmp64_b);
  Free(ctx->pre_y);
  Free(ctx->pre_uv);
}

int64_t PlaneBytes(const kimgp_img& m, int i) {
  return int64_t{m.stride[i]} * m.buf_height[i];
}

}  // namespace

KELO_EXPORT int32_t kimgp_rsz_new_init(const kimgp_img* img, kimgp_rsz_new_ctx* ctx,
                                       int16_t**** vmat, int16_t**** hmat,
                                       int32_t mode) {
  const kimgp_img& s = img[0];
  const kimgp_img& d = img[1];
  memset(ctx, 0, sizeof(*ctx));
  *vmat = nullptr;
  *hmat = nullptr;
  ctx->pass_src0[0] = s.stride[0];
  ctx->pass_src0[1] = s.buf_height[0];
  ctx->pass_src1[0] = s.stride[1];
  ctx->pass_src1[1] = s.buf_height[1];
  ctx->pass_dst1[0] = d.stride[1];
  ctx->pass_dst1[1] = d.buf_height[1];
  if (mode != 0) {
    const float rx = Ratio(s.width[0], d.width[0]);
    const float ry = Ratio(s.height[0], d.height[0]);
    if ((rx == 2.0f && ry == 2.0f) || (rx == 4.0f && ry == 4.0f)) ctx->direct = 1;
    ctx->stride_fix = 0;
    if (d.std != 0) {
      if (s.stride[0] % 32 == 0) {
        ctx->aligned_stride = s.stride[0];
      } else {
        ctx->aligned_stride = static_cast<int32_t>((int64_t{s.stride[0]} - 1) & ~int64_t{31});
        ctx->stride_fix = 1;
      }
    } else {
      ctx->unaligned = s.width[0] != s.stride[0] || s.height[0] != s.buf_height[0];
    }
    ctx->mode = mode;
    if (ctx->direct) {
      if (d.cs == KIMGP_CS_YUV420 && (mode == 2 || mode == 4)) {
        ctx->pre_uv = static_cast<uint8_t*>(AllocProduct(PlaneBytes(s, 1) >> (mode == 2 ? 1 : 2)));
        if (ctx->pre_uv == nullptr) return -1;
      }
      return 0;
    }
  }
  algorithm_settings(img, ctx);

  const int64_t blk = int64_t{ctx->ceil_x[0]} * ctx->ceil_y[0] * 16;
  const int64_t blocks =
      (int64_t{ctx->n_cols_a1[1]} + ctx->n_cols_a[1]) * (int64_t{ctx->n_rows_b1[1]} + ctx->n_rows_b[1]) +
      (int64_t{ctx->n_cols_a1[0]} + ctx->n_cols_a[0]) * (int64_t{ctx->n_rows_b1[0]} + ctx->n_rows_b[0]);
  bool ok = (ctx->blk_buf_a = static_cast<uint8_t*>(AllocProduct(blk))) != nullptr &&
            get_mem3Dint16(vmat, ctx->n_class[0], ctx->ceil_y[0]) == 0 &&
            get_mem3Dint16(hmat, ctx->n_class[0], ctx->ceil_x[0]) == 0 &&
            (ctx->blk_class = static_cast<uint8_t*>(AllocProduct(blocks))) != nullptr &&
            (ctx->blk_xoff = static_cast<int32_t*>(AllocProduct(blocks * 4))) != nullptr &&
            (ctx->blk_yoff = static_cast<int32_t*>(AllocProduct(blocks * 4))) != nullptr &&
            (ctx->tmp64_a = static_cast<int32_t*>(Alloc(64))) != nullptr &&
            (ctx->blk_buf_b = static_cast<uint8_t*>(AllocProduct(blk))) != nullptr &&
            (ctx->tmp64_b = static_cast<int32_t*>(Alloc(64))) != nullptr;
  if (ok) {
    split_settings(ctx);
    ok = make_shiftmatrix(*vmat, *hmat, ctx) == 0;
  }
  if (ok) {
    if (mode == 2 || mode == 4) {
      const int shift = mode == 2 ? 2 : 4;
      ok = (ctx->pre_y = static_cast<uint8_t*>(AllocProduct(PlaneBytes(s, 0) >> shift))) != nullptr &&
           (ctx->pre_uv = static_cast<uint8_t*>(AllocProduct(PlaneBytes(s, 1) >> shift))) != nullptr &&
           (ctx->uv_src = static_cast<uint8_t*>(AllocProduct(PlaneBytes(s, 1) >> 2))) != nullptr;
    } else if (mode == 0) {
      ok = (ctx->uv_src = static_cast<uint8_t*>(AllocProduct(PlaneBytes(s, 1)))) != nullptr;
    } else {
      return 0;
    }
  }
  if (ok) ok = (ctx->uv_dst = static_cast<uint8_t*>(AllocProduct(PlaneBytes(d, 1)))) != nullptr;
  if (ok) return 0;
  FreeContext(ctx, *vmat, *hmat);
  *vmat = nullptr;
  *hmat = nullptr;
  return -1;
}

KELO_EXPORT int32_t kimgp_rsz_new_deinit(kimgp_img* img, kimgp_rsz_new_ctx* ctx,
                                         int16_t*** vmat, int16_t*** hmat) {
  if (ctx->direct == 0) {
    if (ctx->mode != 0) {
      Free(ctx->pre_y);
      Free(ctx->pre_uv);
    }
    Free(ctx->uv_src);
    Free(ctx->uv_dst);
    Free(ctx->blk_buf_a);
    kelo::dctrsz::Free3D(vmat, ctx->n_class[0]);
    kelo::dctrsz::Free3D(hmat, ctx->n_class[0]);
    Free(ctx->tmp64_a);
    Free(ctx->blk_class);
    Free(ctx->blk_xoff);
    Free(ctx->blk_yoff);
    Free(ctx->blk_buf_b);
    Free(ctx->tmp64_b);
  } else if (img[1].cs == KIMGP_CS_YUV420) {
    Free(ctx->pre_uv);
  }
  return 0;
}
