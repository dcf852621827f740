#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "imgp/dctrsz/dctrsz_internal.h"
#include "kimgp_dctrsz.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

int32_t Wrap32(int64_t v) { return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(v))); }
int32_t Low16(int64_t v) { return static_cast<int16_t>(static_cast<uint16_t>(static_cast<uint64_t>(v))); }

// The forward definition with 64-bit sums reduced modulo 2^32.
void FdctReference(const uint8_t* pix, int stride, const int16_t* v, const int16_t* h,
                   int32_t* acc) {
  int32_t t[4][4];
  for (int u = 0; u < 4; ++u) {
    for (int c = 0; c < 4; ++c) {
      int64_t s = 0;
      for (int n = 0; n < 4; ++n) s += int64_t{v[4 * u + n]} * pix[n * stride + c];
      t[u][c] = Wrap32(s) >> 4;
    }
  }
  for (int u = 0; u < 4; ++u) {
    for (int w = 0; w < 4; ++w) {
      int64_t s = acc[4 * u + w];
      for (int c = 0; c < 4; ++c) s += int64_t{t[u][c]} * h[4 * c + w];
      acc[4 * u + w] = Wrap32(s);
    }
  }
}

void Butterfly(const int64_t x[4], int shift, int64_t y[4]) {
  const int64_t e0 = (x[0] + x[2]) * 128, e1 = (x[0] - x[2]) * 128;
  const int64_t o0 = x[1] * 128 + x[3] * 53, o1 = x[1] * 53 - x[3] * 128;
  y[0] = Wrap32(e0 + o0) >> shift;
  y[1] = Wrap32(e1 + o1) >> shift;
  y[2] = Wrap32(e1 - o1) >> shift;
  y[3] = Wrap32(e0 - o0) >> shift;
}

// The inverse on 16-bit coefficients; out is before the saturating store.
void InverseReference(const int16_t* d, int32_t* out) {
  int64_t rows[4][4];
  for (int r = 0; r < 4; ++r) {
    const int64_t x[4] = {d[4 * r], d[4 * r + 1], d[4 * r + 2], d[4 * r + 3]};
    Butterfly(x, 7, rows[r]);
  }
  for (int c = 0; c < 4; ++c) {
    const int64_t x[4] = {rows[0][c], rows[1][c], rows[2][c], rows[3][c]};
    int64_t y[4];
    Butterfly(x, 14, y);
    for (int k = 0; k < 4; ++k) out[4 * k + c] = Low16(y[k]);
  }
}

uint8_t Sat(int32_t v) { return static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v)); }

int16_t RandomI16(std::mt19937& rng) {
  switch (rng() % 4) {
    case 0: return static_cast<int16_t>(rng());
    case 1: return static_cast<int16_t>(static_cast<int>(rng() % 4097) - 2048);
    case 2: return static_cast<int16_t>(rng() % 2 ? 32767 : -32768);
    default: return static_cast<int16_t>(static_cast<int>(rng() % 201) - 100);
  }
}

TEST(DctTransforms, ForwardAccumulationMatchesDefinitionOnEveryTarget) {
  std::mt19937 rng = MakeRng(41);
  ForEachTarget([&](const std::string& target) {
    SCOPED_TRACE(target);
    for (int n = 0; n < 2000; ++n) {
      int16_t v[16], h[16];
      for (int i = 0; i < 16; ++i) v[i] = RandomI16(rng), h[i] = RandomI16(rng);
      const int stride = 4 + static_cast<int>(rng() % 9);
      std::vector<uint8_t> pix(4 * stride);
      for (auto& b : pix) b = static_cast<uint8_t>(n % 7 == 0 ? 255 : rng());
      int32_t acc[16], want[16];
      for (int i = 0; i < 16; ++i) acc[i] = want[i] = static_cast<int32_t>(rng());
      kimgp_fdct_blocknxn_full_compute(pix.data(), acc, v, h, stride);
      FdctReference(pix.data(), stride, v, h, want);
      ASSERT_EQ(0, std::memcmp(acc, want, sizeof(acc))) << n;
    }
  });
}

TEST(DctTransforms, InverseMatchesDefinitionOnEveryTarget) {
  std::mt19937 rng = MakeRng(42);
  ForEachTarget([&](const std::string& target) {
    SCOPED_TRACE(target);
    for (int n = 0; n < 2000; ++n) {
      int32_t acc[16], q[16];
      int16_t coef[16], d[16];
      for (int i = 0; i < 16; ++i) {
        acc[i] = static_cast<int32_t>(n % 3 ? rng() : rng() % 200000000);
        q[i] = static_cast<int32_t>(n % 2 ? rng() % 40000 : rng());
        coef[i] = RandomI16(rng);
        // Dequantisation as defined: product in 32 bits, the low 16 bits of
        // its arithmetic shift.
        d[i] = static_cast<int16_t>(Low16(Wrap32(int64_t{acc[i] >> 16} * q[i]) >> 8));
      }
      const int stride = 5 + static_cast<int>(rng() % 7);
      std::vector<uint8_t> got(4 * stride + 3, 0x77), want = got;
      int32_t out[16];
      InverseReference(d, out);
      for (int k = 0; k < 4; ++k) {
        for (int c = 0; c < 4; ++c) want[(1 + k) * stride - stride + 3 + c] = Sat(out[4 * k + c]);
      }
      kimgp_idct_block4x4(got.data(), 0, 3, stride, acc, q);
      ASSERT_EQ(got, want) << n;
      // The 16-bit entry: the same inverse without dequantisation.
      std::vector<uint8_t> got16(4 * stride + 3, 0x77), want16 = got16;
      InverseReference(coef, out);
      for (int k = 0; k < 4; ++k) {
        for (int c = 0; c < 4; ++c) want16[k * stride + 3 + c] = Sat(out[4 * k + c]);
      }
      kimgp_idct_block4x4_float(got16.data(), 0, 3, coef, stride);
      ASSERT_EQ(got16, want16) << n;
    }
  });
}

// The border inverse writes only the pixels left of the stride and above the
// row limit.
TEST(DctTransforms, BorderInverseClipsToStrideAndRowLimit) {
  std::mt19937 rng = MakeRng(43);
  for (int n = 0; n < 200; ++n) {
    int16_t coef[16];
    for (auto& c : coef) c = RandomI16(rng);
    const int stride = 6, x = static_cast<int>(rng() % 6), y = static_cast<int>(rng() % 3);
    const int limit = static_cast<int>(rng() % 7);
    std::vector<uint8_t> got(64, 0x33), want = got;
    int32_t out[16];
    InverseReference(coef, out);
    for (int r = 0; r < 4; ++r) {
      for (int c = 0; c < 4; ++c) {
        if (x + c < stride && y + r < limit) want[(y + r) * stride + x + c] = Sat(out[4 * r + c]);
      }
    }
    kimgp_idct_blocknxn_float(got.data(), y, x, coef, stride, limit);
    ASSERT_EQ(got, want) << n;
  }
}

// The shift matrices follow the float recipe: cosines of 1.570796-based
// angles in double, product terms rounded to float, float sums and scales,
// then the float 4-point inverse truncated toward zero.
void ShiftMatrixReference(const std::vector<uint8_t>& sel, int rows, int cols, int dir,
                          int16_t* out) {
  const float ir = 1.0f / rows, ic = 1.0f / cols;
  std::vector<double> cr(4 * rows), cc(4 * cols);
  for (int u = 0; u < 4; ++u) {
    for (int i = 0; i < rows; ++i) cr[u * rows + i] = std::cos((2 * i + 1) * 1.570796 * u * ir);
    for (int j = 0; j < cols; ++j) cc[u * cols + j] = std::cos((2 * j + 1) * 1.570796 * u * ic);
  }
  float f[4][4];
  for (int u = 0; u < 4; ++u) {
    for (int v = 0; v < 4; ++v) {
      float sum = 0;
      for (int i = 0; i < rows; ++i) {
        for (int j = 0; j < cols; ++j) {
          const float term = static_cast<float>(sel[i * cols + j] * cr[u * rows + i] * cc[v * cols + j]);
          sum = sum + term;
        }
      }
      float g = std::sqrt(ir * ic);
      g = g * (u ? 1.0f : 0.70710677f);
      g = g * (v ? 1.0f : 0.70710677f);
      f[u][v] = g * 2048.0f * sum;
    }
  }
  const float k[4][4] = {{0.5f, 0.6533f, 0.5f, 0.2706f},
                         {0.5f, 0.2706f, -0.5f, -0.6533f},
                         {0.5f, -0.2706f, -0.5f, 0.6533f},
                         {0.5f, -0.6533f, 0.5f, -0.2706f}};
  for (int line = 0; line < 4; ++line) {
    for (int n = 0; n < 4; ++n) {
      float y = 0;
      for (int t = 0; t < 4; ++t) {
        const float x = dir == 0 ? f[line][t] : f[t][line];
        y = y + k[n][t] * x;
      }
      const int16_t val = static_cast<int16_t>(static_cast<int32_t>(y));
      if (dir == 0) {
        out[4 * line + n] = val;
      } else {
        out[4 * n + line] = val;
      }
    }
  }
}

TEST(DctTransforms, ShiftMatricesFollowTheFloatRecipe) {
  std::mt19937 rng = MakeRng(44);
  for (int n = 0; n < 300; ++n) {
    const int dir = n % 2;
    const int len = 4 + static_cast<int>(rng() % 29);
    const int rows = dir ? 4 : len, cols = dir ? len : 4;
    std::vector<uint8_t> sel(rows * cols);
    for (auto& b : sel) b = rng() % 3 == 0;
    int16_t got[16], want[16];
    FDCT_BlockXYFn(sel.data(), got, rows, cols, dir);
    ShiftMatrixReference(sel, rows, cols, dir, want);
    ASSERT_EQ(0, std::memcmp(got, want, sizeof(got))) << n << " " << rows << "x" << cols;
  }
}

// A flat 4x4 block through the identity placement and back keeps its value
// within the truncations.
TEST(DctTransforms, FlatBlockRoundTrip) {
  uint8_t sel_v[16] = {}, sel_h[16] = {};
  for (int r = 0; r < 4; ++r) sel_v[r * 4 + r] = sel_h[r * 4 + r] = 1;
  int16_t v[16], h[16];
  FDCT_BlockXYFn(sel_v, v, 4, 4, 0);
  FDCT_BlockXYFn(sel_h, h, 4, 4, 1);
  kimgp_img io[2];
  std::memset(io, 0, sizeof(io));
  io[0].cs = io[1].cs = KIMGP_CS_YUV420;
  io[0].width[0] = io[0].height[0] = io[1].width[0] = io[1].height[0] = 8;
  kimgp_rsz_new_ctx ctx;
  std::memset(&ctx, 0, sizeof(ctx));
  algorithm_settings(io, &ctx);
  ASSERT_EQ(ctx.blk_w[0][0], 4);
  for (int value : {0, 1, 17, 100, 128, 200, 255}) {
    uint8_t pix[16], out[16];
    std::memset(pix, value, sizeof(pix));
    int32_t acc[16] = {};
    kimgp_fdct_blocknxn_full_compute(pix, acc, v, h, 4);
    kimgp_idct_block4x4(out, 0, 0, 4, acc, ctx.qscale[0][0]);
    for (uint8_t o : out) EXPECT_NEAR(o, value, 2) << value;
  }
}

}  // namespace
}  // namespace test
}  // namespace kelo
