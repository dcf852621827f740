// kimgp_csc_new against a double-precision model of the same formulas, built
// here from Kr, Kb and the code ranges: every pair of layouts over awkward
// sizes and std words, greys, depth changes, chroma siting and statuses.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "imgp/csc/csc_new_rows.h"
#include "kimgp_csc.h"
#include "tests/support/guarded.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

const int32_t kCodes[] = {0,   1,   2,   3,   4,   5,   6,   7,   100, 101,
                          200, 201, 400, 401, 500, 501, 502, 503, 600, 601};
const int32_t kStds[] = {0, 1, 10, 11, 20, 21};

bool IsRgb(int32_t cs) { return cs >= 200 && cs < 600; }
bool IsPacked(int32_t cs) { return cs == 100 || cs == 101; }
int DepthOf(int32_t cs) { return cs >= 600 ? 10 : 8; }
int Xs(int32_t cs) { return cs == 3 || cs == 0 || IsRgb(cs) ? 0 : 1; }
int Ys(int32_t cs) { return cs == 1 || cs == 4 || cs == 6 || cs == 7 || cs >= 600 ? 1 : 0; }

// ---- Sample access, written from the layout descriptions. ----

int Word(const uint8_t* p) { return p[0] | (p[1] << 8); }

int GetY(const kimgp_img& f, int x, int y) {
  const uint8_t* r = f.plane[0] + y * f.stride[0];
  if (f.cs == 100) return r[2 * x + 1];
  if (f.cs == 101) return r[2 * x];
  if (f.cs == 600) return Word(r + 2 * x) & 1023;
  if (f.cs == 601) return Word(r + 2 * x) >> 6;
  return r[x];
}
void SetY(kimgp_img& f, int x, int y, int v) {
  uint8_t* r = f.plane[0] + y * f.stride[0];
  if (f.cs == 100 || f.cs == 101) {
    r[2 * x + (f.cs == 100)] = static_cast<uint8_t>(v);
  } else if (f.cs >= 600) {
    const int w = f.cs == 600 ? v : v << 6;
    r[2 * x] = static_cast<uint8_t>(w);
    r[2 * x + 1] = static_cast<uint8_t>(w >> 8);
  } else {
    r[x] = static_cast<uint8_t>(v);
  }
}
// Address of chroma sample k of row j, channel c (0 U, 1 V), and its width.
uint8_t* ChromaAt(const kimgp_img& f, int k, int j, int c, int* bytes) {
  *bytes = 1;
  switch (f.cs) {
    case 1: case 2: case 3: return f.plane[1 + c] + j * f.stride[1 + c] + k;
    case 4: case 5: return f.plane[2 - c] + j * f.stride[2 - c] + k;
    case 6: return f.plane[1] + j * f.stride[1] + 2 * k + c;
    case 7: return f.plane[1] + j * f.stride[1] + 2 * k + 1 - c;
    case 100: return f.plane[0] + j * f.stride[0] + 4 * k + 2 * c;
    case 101: return f.plane[0] + j * f.stride[0] + 4 * k + 1 + 2 * c;
    case 600: *bytes = 2; return f.plane[1 + c] + j * f.stride[1 + c] + 2 * k;
    default: *bytes = 2; return f.plane[1] + j * f.stride[1] + 4 * k + 2 * c;
  }
}
int GetC(const kimgp_img& f, int k, int j, int c) {
  int bytes;
  const uint8_t* p = ChromaAt(f, k, j, c, &bytes);
  if (bytes == 1) return *p;
  return f.cs == 600 ? Word(p) & 1023 : Word(p) >> 6;
}
void SetC(kimgp_img& f, int k, int j, int c, int v) {
  int bytes;
  uint8_t* p = ChromaAt(f, k, j, c, &bytes);
  if (bytes == 1) {
    *p = static_cast<uint8_t>(v);
    return;
  }
  const int w = f.cs == 600 ? v : v << 6;
  p[0] = static_cast<uint8_t>(w);
  p[1] = static_cast<uint8_t>(w >> 8);
}
// RGB as 8-bit values (5-6-5 fields widened by rounding) or raw fields.
void GetRgb(const kimgp_img& f, int x, int y, int rgb[3], bool raw = false) {
  const uint8_t* p = f.plane[0] + y * f.stride[0];
  if (f.cs == 200 || f.cs == 201) {
    const int w = Word(p + 2 * x);
    const int hi = w >> 11, g = (w >> 5) & 63, lo = w & 31;
    rgb[0] = f.cs == 200 ? hi : lo;
    rgb[1] = g;
    rgb[2] = f.cs == 200 ? lo : hi;
    if (!raw) {
      for (int i = 0; i < 3; ++i) rgb[i] = (rgb[i] * 255 + (i == 1 ? 31 : 15)) / (i == 1 ? 63 : 31);
    }
    return;
  }
  static const struct {
    int cs, bytes, r, g, b;
  } kOrders[] = {{400, 3, 0, 1, 2}, {401, 3, 2, 1, 0}, {500, 4, 0, 1, 2},
                 {501, 4, 2, 1, 0}, {502, 4, 1, 2, 3}, {503, 4, 3, 2, 1}};
  for (const auto& o : kOrders) {
    if (o.cs != f.cs) continue;
    const uint8_t* q = p + o.bytes * x;
    rgb[0] = q[o.r];
    rgb[1] = q[o.g];
    rgb[2] = q[o.b];
  }
}

// ---- The double model. ----

struct Side {
  double kr, kb, yoff, yspan, coff, cspan;
};
Side SideOf(int32_t cs, int32_t std) {
  const double kr = std / 10 == 0 ? 0.299 : std / 10 == 1 ? 0.2126 : 0.2627;
  const double kb = std / 10 == 0 ? 0.114 : std / 10 == 1 ? 0.0722 : 0.0593;
  const double k = DepthOf(cs) == 10 ? 4 : 1, top = DepthOf(cs) == 10 ? 1023 : 255;
  if (std % 10 == 1) return {kr, kb, 0, top, 128 * k, top};
  return {kr, kb, 16 * k, 219 * k, 128 * k, 224 * k};
}

double Lerp(const std::vector<double>& c, double pos) {
  const int n = static_cast<int>(c.size());
  const int i0 = static_cast<int>(std::floor(pos));
  const double f = pos - i0;
  auto at = [&](int i) { return c[std::min(std::max(i, 0), n - 1)]; };
  return (1 - f) * at(i0) + f * at(i0 + 1);
}

// Source chroma channel c of a YUV frame on a grid: per axis, the source's
// own positions when both sides share the subsampling, bilinear positions
// (x / 2; (y - 1/2) / 2) when enlarging, pair means when reducing.
double ChromaRef(const kimgp_img& s, int w, int h, int c, int tx, int ty, int txs, int tys) {
  if (s.cs == 0) return DepthOf(s.cs) == 10 ? 512 : 128;
  const int sxs = Xs(s.cs), sys = Ys(s.cs);
  const int cw = sxs ? (w + 1) / 2 : w, ch = sys ? (h + 1) / 2 : h;
  auto column = [&](int k) {  // vertical step at source column k
    std::vector<double> col(ch);
    for (int j = 0; j < ch; ++j) col[j] = GetC(s, k, j, c);
    if (tys == sys) return col[ty];
    if (tys == 0) return Lerp(col, (ty - 0.5) / 2);
    return (col[2 * ty] + col[std::min(2 * ty + 1, ch - 1)]) / 2;
  };
  std::vector<double> row(cw);
  for (int k = 0; k < cw; ++k) row[k] = column(k);
  if (txs == sxs) return row[tx];
  if (txs == 0) return Lerp(row, tx / 2.0);
  return (row[2 * tx] + row[std::min(2 * tx + 1, cw - 1)]) / 2;
}

// Normalised Y'CbCr to R'G'B' and back.
void ToRgb(const Side& s, double y, double cb, double cr, double rgb[3]) {
  rgb[0] = y + 2 * (1 - s.kr) * cr;
  rgb[2] = y + 2 * (1 - s.kb) * cb;
  rgb[1] = (y - s.kr * rgb[0] - s.kb * rgb[2]) / (1 - s.kr - s.kb);
}
void ToYuv(const Side& s, const double rgb[3], double yuv[3]) {
  yuv[0] = s.kr * rgb[0] + (1 - s.kr - s.kb) * rgb[1] + s.kb * rgb[2];
  yuv[1] = (rgb[2] - yuv[0]) / (2 * (1 - s.kb));
  yuv[2] = (rgb[0] - yuv[0]) / (2 * (1 - s.kr));
}

struct Pair {
  int32_t s, d, sstd, dstd;
};

// Every output sample against the model: |got - clamp(model)| <= 1.
void CheckAgainstModel(const Pair& p, const kimgp_img& src, const kimgp_img& dst, int w, int h) {
  const Side ss = SideOf(p.s, p.sstd), ds = SideOf(p.d, p.dstd);
  const double dtop = DepthOf(p.d) == 10 ? 1023 : 255;
  auto near = [&](double want, int got, double top, const char* what, int x, int y) {
    want = std::min(std::max(want, 0.0), top);
    ASSERT_LE(std::fabs(got - want), 1.0)
        << p.s << "(" << p.sstd << ") -> " << p.d << "(" << p.dstd << ") " << w << "x" << h
        << " " << what << " at " << x << "," << y << " want " << want;
  };
  // Normalised source at pixel (x, y).
  auto source = [&](int x, int y, double rgb[3]) {
    if (IsRgb(p.s)) {
      int v[3];
      GetRgb(src, x, y, v);
      for (int i = 0; i < 3; ++i) rgb[i] = v[i] / 255.0;
      return;
    }
    const double yy = (GetY(src, x, y) - ss.yoff) / ss.yspan;
    const double cb = (ChromaRef(src, w, h, 0, x, y, 0, 0) - ss.coff) / ss.cspan;
    const double cr = (ChromaRef(src, w, h, 1, x, y, 0, 0) - ss.coff) / ss.cspan;
    ToRgb(ss, yy, cb, cr, rgb);
  };
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      double rgb[3], yuv[3];
      source(x, y, rgb);
      if (IsRgb(p.d)) {
        int got[3];
        GetRgb(dst, x, y, got, true);
        for (int i = 0; i < 3; ++i) {
          double v = std::min(std::max(rgb[i] * 255, 0.0), 255.0);
          double top = 255;
          if (p.d == 200 || p.d == 201) top = i == 1 ? 63 : 31;
          near(v * top / 255, got[i], top, "rgb", x, y);
        }
      } else {
        ToYuv(ds, rgb, yuv);
        near(ds.yoff + ds.yspan * yuv[0], GetY(dst, x, y), dtop, "luma", x, y);
      }
    }
  }
  if (IsRgb(p.d) || p.d == 0) return;
  const int dxs = Xs(p.d), dys = Ys(p.d);
  const int cw = dxs ? (w + 1) / 2 : w, chh = dys ? (h + 1) / 2 : h;
  for (int j = 0; j < chh; ++j) {
    for (int k = 0; k < cw; ++k) {
      double want[2];
      if (IsRgb(p.s)) {  // per-pixel chroma, block mean
        want[0] = want[1] = 0;
        const int xs[2] = {dxs ? 2 * k : k, dxs ? std::min(2 * k + 1, w - 1) : k};
        const int ys[2] = {dys ? 2 * j : j, dys ? std::min(2 * j + 1, h - 1) : j};
        for (int a : xs) {
          for (int b : ys) {
            double rgb[3], yuv[3];
            source(a, b, rgb);
            ToYuv(ds, rgb, yuv);
            want[0] += yuv[1] / 4;
            want[1] += yuv[2] / 4;
          }
        }
      } else {  // source chroma on the destination grid, through R'G'B'
        const double cb = (ChromaRef(src, w, h, 0, k, j, dxs, dys) - ss.coff) / ss.cspan;
        const double cr = (ChromaRef(src, w, h, 1, k, j, dxs, dys) - ss.coff) / ss.cspan;
        double rgb[3], yuv[3];
        ToRgb(ss, 0, cb, cr, rgb);
        ToYuv(ds, rgb, yuv);
        want[0] = yuv[1];
        want[1] = yuv[2];
      }
      for (int c = 0; c < 2; ++c) {
        near(ds.coff + ds.cspan * want[c], GetC(dst, k, j, c), dtop, "chroma", k, j);
      }
    }
  }
}

// ---- Every pair against the model. ----

class CscNewPairs : public ::testing::TestWithParam<int32_t> {};

TEST_P(CscNewPairs, WithinOneOfTheModel) {
  const int32_t s = GetParam();
  auto rng = MakeRng(static_cast<uint32_t>(s));
  const Size2 sizes[] = {{2, 2}, {5, 3}, {18, 7}, {33, 10}};
  int n = 0;
  for (int32_t d : kCodes) {
    if (d == s) continue;
    for (const Size2& sz : sizes) {
      for (int k = 0; k < 3; ++k, ++n) {
        const Pair p{s, d, kStds[(n * 7 + k) % 6], kStds[(n * 5 + 2 * k) % 6]};
        TestFrame src(s, sz.w, sz.h, RandomPad(rng)), dst(d, sz.w, sz.h, RandomPad(rng));
        src.FillRandom(rng);
        src.img.std = p.sstd;
        dst.img.std = p.dstd;
        const auto before = dst.Snapshot();
        const bool odd_packed = (sz.w & 1) && (IsPacked(s) || IsPacked(d));
        ASSERT_EQ(kimgp_csc_new(&src.img, &dst.img), odd_packed ? -3 : 0) << s << " -> " << d;
        ASSERT_TRUE(dst.GuardsIntact()) << s << " -> " << d;
        if (odd_packed) {
          ASSERT_EQ(dst.Snapshot(), before);
          continue;
        }
        CheckAgainstModel(p, src.img, dst.img, sz.w, sz.h);
        if (HasFatalFailure()) return;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Sources, CscNewPairs, ::testing::ValuesIn(kCodes),
                         [](const ::testing::TestParamInfo<int32_t>& i) {
                           return "cs" + std::to_string(i.param);
                         });

// ---- Greys, depth, round trip. ----

// Every grey level of a YUV side gives R = G = B, and centred chroma on
// any other standard; every RGB grey gives centred chroma (and, at full
// range in 8 bits, its own level as luma).
TEST(CscNew, GreysStayExact) {
  for (int32_t ycs : {3, 600}) {
    const int top = DepthOf(ycs) == 10 ? 1023 : 255, centre = (top + 1) / 2;
    for (int32_t std : kStds) {
      TestFrame yuv(ycs, top + 1, 2), rgb(500, top + 1, 2), back(ycs, top + 1, 2);
      for (int y = 0; y < 2; ++y) {
        for (int x = 0; x <= top; ++x) {
          SetY(yuv.img, x, y, x);
          const int k = ycs == 3 ? x : x / 2, j = ycs == 3 ? y : y / 2;
          SetC(yuv.img, k, j, 0, centre);
          SetC(yuv.img, k, j, 1, centre);
        }
      }
      yuv.img.std = std;
      ASSERT_EQ(kimgp_csc_new(&yuv.img, &rgb.img), 0);
      for (int x = 0; x <= top; ++x) {
        int v[3];
        GetRgb(rgb.img, x, 1, v);
        ASSERT_TRUE(v[0] == v[1] && v[1] == v[2]) << ycs << " std " << std << " Y " << x;
      }
      for (int32_t other : kStds) {
        TestFrame yuv2(ycs == 3 ? 1 : 601, top + 1, 2);
        yuv2.img.std = other;
        ASSERT_EQ(kimgp_csc_new(&yuv.img, &yuv2.img), 0);
        const int c2 = DepthOf(yuv2.img.cs) == 10 ? 512 : 128;
        for (int k = 0; k <= top / 2; ++k) {
          ASSERT_EQ(GetC(yuv2.img, k, 0, 0), c2) << std << " -> " << other;
          ASSERT_EQ(GetC(yuv2.img, k, 0, 1), c2) << std << " -> " << other;
        }
      }
      back.img.std = std;
      ASSERT_EQ(kimgp_csc_new(&rgb.img, &back.img), 0);
      for (int x = 0; x <= top; x += ycs == 3 ? 1 : 2) {
        const int k = ycs == 3 ? x : x / 2;
        ASSERT_EQ(GetC(back.img, k, 0, 0), centre) << ycs << " std " << std << " x " << x;
        ASSERT_EQ(GetC(back.img, k, 0, 1), centre) << ycs << " std " << std << " x " << x;
        // Full-range 8-bit luma of an RGB grey is the grey itself.
        int v[3];
        GetRgb(rgb.img, x, 0, v);
        if (std % 10 == 1 && top == 255) {
          ASSERT_EQ(GetY(back.img, x, 0), v[0]) << std << " " << x;
        }
      }
    }
  }
}

// RGB to 8-bit luma by the header's byte weights, from every source order
// (the weights follow each order's channels).
TEST(CscNew, RgbToEightBitLumaByTheHeadersWeights) {
  struct Weights {
    int32_t std, r, g, b, a;
  } const kWeights[] = {{0, 66, 129, 25, 110}, {1, 77, 150, 29, 128}, {10, 47, 157, 16, 110},
                        {11, 54, 183, 18, 255}, {20, 58, 149, 13, 110}, {21, 67, 174, 15, 128}};
  auto rng = MakeRng(41);
  for (int32_t cs : {400, 401, 500, 501, 502, 503}) {
    TestFrame rgb(cs, 33, 2);
    rgb.FillRandom(rng);
    for (const Weights& w : kWeights) {
      TestFrame yuv(1, 33, 2);
      yuv.img.std = w.std;
      ASSERT_EQ(kimgp_csc_new(&rgb.img, &yuv.img), 0);
      const int yoff = w.std % 10 ? 0 : 16;
      for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 33; ++x) {
          int v[3] = {};
          GetRgb(rgb.img, x, y, v);
          const int want = (w.r * v[0] + w.g * v[1] + w.b * v[2] + 256 * yoff + w.a) >> 8;
          ASSERT_EQ(GetY(yuv.img, x, y), want) << cs << " std " << w.std << " at " << x;
        }
      }
    }
  }
}

// 8-bit BT.601 limited YUV 4:4:4 to RGB by the header's fixed-point map.
TEST(CscNew, YuvToRgbByTheHeadersFixedPointMap) {
  const auto h = [](int a, int c) { return (a * c + (1 << 14)) >> 15; };
  auto rng = MakeRng(42);
  TestFrame yuv(3, 37, 3), rgb(501, 37, 3);
  yuv.FillRandom(rng);
  ASSERT_EQ(kimgp_csc_new(&yuv.img, &rgb.img), 0);
  for (int y = 0; y < 3; ++y) {
    for (int x = 0; x < 37; ++x) {
      const int u = (GetC(yuv.img, x, y, 0) - 128) * 256, v = (GetC(yuv.img, x, y, 1) - 128) * 256;
      const int l = h(GetY(yuv.img, x, y) << 7, 9539) - 580;
      const int want[3] = {l + h(v, 6537), l + h(u, -1605) + h(v, -3330), l + h(u, 8263)};
      int got[3];
      GetRgb(rgb.img, x, y, got);
      for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(got[i], std::min(255, std::max(0, want[i] >> 5))) << x << "," << y << " " << i;
      }
    }
  }
}

// 8 to 10 bits of one standard is exact (x 4 limited, rounded 1023 / 255
// about the origin or the chroma centre full), and 10 to 8 bits rounds back.
TEST(CscNew, DepthChangesAreExact) {
  for (int32_t std : {0, 1, 11, 20}) {
    const bool full = std % 10 == 1;
    TestFrame s8(3, 256, 2), s10(600, 256, 2), b8(3, 256, 2);
    for (int y = 0; y < 2; ++y) {
      for (int x = 0; x < 256; ++x) {
        SetY(s8.img, x, y, x);
        SetC(s8.img, x, y, 0, x);
        SetC(s8.img, x, y, 1, 255 - x);
      }
    }
    s8.img.std = s10.img.std = b8.img.std = std;
    ASSERT_EQ(kimgp_csc_new(&s8.img, &s10.img), 0);
    // 10-bit planar 4:2:0 keeps each 2x2 block's chroma mean.
    ASSERT_EQ(kimgp_csc_new(&s10.img, &b8.img), 0);
    auto luma = [&](int v) { return full ? static_cast<int>(std::floor(v * 1023 / 255.0 + 0.5)) : 4 * v; };
    auto chroma = [&](double v) {
      return full ? 512 + static_cast<int>(std::floor((v - 128) * 1023 / 255.0 + 0.5))
                  : static_cast<int>(std::floor(4 * v + 0.5));
    };
    for (int x = 0; x < 256; ++x) {
      ASSERT_EQ(GetY(s10.img, x, 1), luma(x)) << std << " " << x;
      ASSERT_EQ(GetY(b8.img, x, 1), x) << std << " " << x;
    }
    for (int k = 0; k < 128; ++k) {
      ASSERT_EQ(GetC(s10.img, k, 0, 0), std::min(1023, chroma(2 * k + 0.5))) << std << " " << k;
    }
  }
}

// Full range YUV from RGB, through RGB and back, moves no sample by more
// than 1.
TEST(CscNew, FullRangeRoundTrip) {
  auto rng = MakeRng(7);
  for (int32_t std : {1, 11, 21}) {
    TestFrame rgb(500, 64, 8), yuv(3, 64, 8), mid(400, 64, 8), back(3, 64, 8);
    rgb.FillRandom(rng);
    yuv.img.std = back.img.std = std;
    ASSERT_EQ(kimgp_csc_new(&rgb.img, &yuv.img), 0);
    ASSERT_EQ(kimgp_csc_new(&yuv.img, &mid.img), 0);
    ASSERT_EQ(kimgp_csc_new(&mid.img, &back.img), 0);
    for (int y = 0; y < 8; ++y) {
      for (int x = 0; x < 64; ++x) {
        ASSERT_LE(std::abs(GetY(back.img, x, y) - GetY(yuv.img, x, y)), 1) << std;
        for (int c = 0; c < 2; ++c) {
          ASSERT_LE(std::abs(GetC(back.img, x, y, c) - GetC(yuv.img, x, y, c)), 1) << std;
        }
      }
    }
  }
}

// The extremes of every YUV side (luma and both chroma at 0 and at the
// top) to RGB: the 16-bit sums of the fixed-point map never wrap.
TEST(CscNew, ExtremesToRgbStayWithinOne) {
  for (int32_t scs : {3, 600}) {
    const int top = DepthOf(scs) == 10 ? 1023 : 255;
    for (int32_t std : kStds) {
      for (int uv = 0; uv < 4; ++uv) {
        TestFrame src(scs, 8, 4), dst(500, 8, 4);
        for (int y = 0; y < 4; ++y) {
          for (int x = 0; x < 8; ++x) {
            SetY(src.img, x, y, (x + y) & 1 ? top : 0);
            if (scs == 3 || (!(x & 1) && !(y & 1))) {
              const int k = scs == 3 ? x : x / 2, j = scs == 3 ? y : y / 2;
              SetC(src.img, k, j, 0, uv & 1 ? top : 0);
              SetC(src.img, k, j, 1, uv & 2 ? top : 0);
            }
          }
        }
        src.img.std = std;
        ASSERT_EQ(kimgp_csc_new(&src.img, &dst.img), 0);
        CheckAgainstModel({scs, 500, std, 0}, src.img, dst.img, 8, 4);
        if (HasFatalFailure()) return;
      }
    }
  }
}

// One raised chroma sample of a 4:2:0 source lands on the luma grid with
// weights 1 at column 2k and 1/2 beside it, 3/4 on rows 2j, 2j + 1 and 1/4
// on rows 2j - 1, 2j + 2.
TEST(CscNew, ChromaImpulseLandsWhereTheSitingSays) {
  for (int32_t scs : {1, 6, 601}) {
    const int k0 = 3, j0 = 2, w = 16, h = 12;
    TestFrame src(scs, w, h), dst(3, w, h);
    const int centre = DepthOf(scs) == 10 ? 512 : 128;
    for (int j = 0; j < h / 2; ++j) {
      for (int k = 0; k < w / 2; ++k) {
        for (int c = 0; c < 2; ++c) SetC(src.img, k, j, c, k == k0 && j == j0 && c == 0 ? centre * 3 / 2 : centre);
      }
    }
    ASSERT_EQ(kimgp_csc_new(&src.img, &dst.img), 0);
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) {
        const double wh = x == 2 * k0 ? 1 : std::abs(x - 2 * k0) == 1 ? 0.5 : 0;
        const double wv = (y == 2 * j0 || y == 2 * j0 + 1) ? 0.75 : (y == 2 * j0 - 1 || y == 2 * j0 + 2) ? 0.25 : 0;
        ASSERT_EQ(GetC(dst.img, x, y, 0), 128 + static_cast<int>(64 * wh * wv)) << scs << " " << x << "," << y;
        ASSERT_EQ(GetC(dst.img, x, y, 1), 128);
      }
    }
  }
}

// ---- Vector rows against the scalar definition. ----

TEST(CscNew, MatrixRowMatchesScalarOnEveryTarget) {
  auto rng = MakeRng(11);
  std::uniform_int_distribution<int32_t> coef(-90000, 90000), in(0, 8 * 1023);
  ForEachTarget([&](const std::string& target) {
    SCOPED_TRACE(target);
    for (const Size2& sz : TestSizes(rng, 6)) {
      csc::NewMatrix k{};
      for (int r = 0; r < 3; ++r) {
        for (int j = 0; j < 3; ++j) k.m[r][j] = coef(rng) / 4;
        k.in_off8[r] = in(rng) / 2;
        k.add[r] = (in(rng) << 14) + (1 << 16);
      }
      k.hi = sz.h & 1 ? 1023 : 255;
      ASSERT_TRUE(csc::NewMatrixFits(k, 8 * 1023));
      std::vector<int32_t> c[3], got(sz.w + 1, -7), want(sz.w + 1, -7);
      for (auto& row : c) {
        for (int32_t x = 0; x < sz.w; ++x) row.push_back(in(rng));
      }
      for (int r = 0; r < 3; ++r) {
        csc::NewMatrixRow(k, r, c[0].data(), c[1].data(), c[2].data(), got.data(), sz.w);
        csc::scalar::NewMatrixRow(k, r, c[0].data(), c[1].data(), c[2].data(), want.data(), 0,
                                  sz.w);
        ASSERT_EQ(got, want) << sz.w << " row " << r;
      }
    }
  });
}

// The fused YUV to RGB stages: chroma rows over every packing, depth and
// weight, and the row over every order with random maps that pass
// NewYuvRgbFits (half of them at its edge) and half chroma samples over
// their whole range, against the scalar rows.
TEST(CscNew, FusedRowsMatchScalarOnEveryTarget) {
  auto rng = MakeRng(12);
  std::uniform_int_distribution<int32_t> byte(0, 255), c16(-32768, 32767);
  const csc::NewRgbOrder kOrders[] = {{3, 0, 1, 2, -1}, {3, 2, 1, 0, -1}, {4, 0, 1, 2, 3},
                                      {4, 2, 1, 0, 3},  {4, 1, 2, 3, 0},  {4, 3, 2, 1, 0}};
  ForEachTarget([&](const std::string& target) {
    SCOPED_TRACE(target);
    for (const Size2& sz : TestSizes(rng, 4)) {
      const size_t n = static_cast<size_t>(sz.w);
      // Rows one byte into their buffers: 16-bit rows of an odd stride are
      // not word-aligned.
      std::vector<uint8_t> rab(4 * n + 1), rbb(4 * n + 1), yb(2 * n + 1);
      for (auto* row : {&rab, &rbb, &yb}) {
        for (auto& b : *row) b = static_cast<uint8_t>(byte(rng));
      }
      const uint8_t *ra = rab.data() + 1, *rb = rbb.data() + 1, *y = yb.data() + 1;
      for (int wide = 0; wide < 3; ++wide) {
        for (int pack = 1; pack <= 2; ++pack) {
          const int wa = 2 + (sz.h & 1);
          std::vector<int16_t> got[2], want[2];
          for (int c = 0; c < 2; ++c) {
            got[c].assign(n + 1, -1);
            want[c].assign(n + 1, -1);
          }
          csc::NewChromaRow(ra, rb, wa, pack, wide, got[0].data(), got[1].data(), n);
          csc::scalar::NewChromaRow(ra, rb, wa, pack, wide, want[0].data(), want[1].data(), 0, n);
          for (int c = 0; c < pack; ++c) want[c][n] = want[c][n - 1];
          ASSERT_EQ(got[0], want[0]) << sz.w << " wide " << wide << " pack " << pack;
          ASSERT_EQ(got[1], want[1]) << sz.w << " wide " << wide << " pack " << pack;
          // Both rows of a 4:2:0 source row pair from one pass.
          std::vector<int16_t> pg[4], pw[4];
          for (int c = 0; c < 4; ++c) {
            pg[c].assign(n + 1, -1);
            pw[c].assign(n + 1, -1);
          }
          csc::NewChromaPair(ra, rb, pack, wide, pg[0].data(), pg[1].data(), pg[2].data(),
                             pg[3].data(), n);
          csc::scalar::NewChromaPair(ra, rb, pack, wide, pw[0].data(), pw[1].data(), pw[2].data(),
                                     pw[3].data(), n);
          for (int c = 0; c < 4; ++c) {
            ASSERT_EQ(pg[c], pw[c]) << sz.w << " wide " << wide << " pack " << pack << " out " << c;
          }
        }
      }
      // A map whose largest sums reach the edge of int16 when `edge`.
      const bool edge = sz.w & 1;
      const auto part = [&](int32_t room) {
        const int32_t m = edge ? room : std::uniform_int_distribution<int32_t>(0, room)(rng);
        return static_cast<int16_t>(byte(rng) & 1 ? m : -m);
      };
      csc::NewYuvRgb q{};
      q.y = part(14000);
      q.add = part(4000);
      const int32_t room = std::min(16383, 32767 - std::abs(q.y) - std::abs(q.add));
      q.rv = part(room);
      q.bu = part(room);
      q.gu = part(room / 3);
      q.gv = part(room - std::abs(q.gu));
      ASSERT_TRUE(csc::NewYuvRgbFits(q));
      std::vector<int16_t> u(n + 1), v(n + 1);
      for (size_t i = 0; i <= n; ++i) {
        // Half chroma samples, multiples of 8.
        u[i] = static_cast<int16_t>(i % 7 == 3 ? -16384 : (c16(rng) / 2) & ~7);
        v[i] = static_cast<int16_t>(i % 5 == 2 ? -16384 : (c16(rng) / 2) & ~7);
      }
      for (const auto& o : kOrders) {
        for (int wide = 0; wide < 3; ++wide) {
          const bool half = (wide + o.r) & 1;
          std::vector<uint8_t> got(4 * n + 8, 7), want(4 * n + 8, 7);
          csc::NewYuvToRgbRow(q, y, wide, u.data(), v.data(), half, o, got.data(), n);
          csc::scalar::NewYuvToRgbRow(q, y, wide, u.data(), v.data(), half, o, want.data(), 0, n);
          ASSERT_EQ(got, want) << sz.w << " px " << o.px << " r " << o.r << " wide " << wide;
        }
      }
    }
  });
}

// ---- Statuses. ----

TEST(CscNew, StatusesAndNothingWritten) {
  using Entry = int32_t (*)(const kimgp_img*, kimgp_img*);
  const struct {
    int32_t s, d, w, h, sstd, dstd, dw, dh, want;
    Entry fn;
  } cases[] = {
      {1, 1, 8, 8, 0, 1, 8, 8, -1, kimgp_csc_new},        // same code
      {1, 500, 8, 8, 0, 0, 8, 9, -1, kimgp_csc_new},      // sizes differ
      {1, 500, 1, 8, 0, 0, 1, 8, -3, kimgp_csc_new},      // below 2
      {1, 500, 8, 1, 0, 0, 8, 1, -3, kimgp_csc_new},
      {8, 500, 8, 8, 0, 0, 8, 8, -3, kimgp_csc_new},      // YUV422W
      {1, 11, 64, 32, 0, 0, 64, 32, -3, kimgp_csc_new},   // tiled
      {9, 500, 8, 8, 0, 0, 8, 8, -3, kimgp_csc_new},      // no layout
      {500, 602, 8, 8, 0, 0, 8, 8, -3, kimgp_csc_new},
      {101, 500, 7, 4, 0, 0, 7, 4, -3, kimgp_csc_new},    // odd packed width
      {500, 100, 7, 4, 0, 0, 7, 4, -3, kimgp_csc_new},
      {1, 500, 8, 8, 2, 0, 8, 8, -3, kimgp_csc_new},      // unknown std, YUV side
      {500, 1, 8, 8, 0, 12, 8, 8, -3, kimgp_csc_new},
      {1, 500, 8, 8, 0, 77, 8, 8, 0, kimgp_csc_new},      // RGB side's std unread
      {1, 500, 8, 8, 0, 0, 8, 8, -3, kimgp_csc_rgb_to_yuv_new},
      {500, 1, 8, 8, 0, 0, 8, 8, -3, kimgp_csc_yuv_to_rgb_new},
      {1, 6, 8, 8, 0, 0, 8, 8, -3, kimgp_csc_rgb_to_rgb_new},
      {500, 200, 8, 8, 0, 0, 8, 8, -3, kimgp_csc_yuv_to_yuv_new},
      {1, 500, 8, 8, 0, 0, 8, 8, 0, kimgp_csc_yuv_to_rgb_new},
      {500, 1, 8, 8, 0, 0, 8, 8, 0, kimgp_csc_rgb_to_yuv_new},
      {1, 601, 8, 8, 0, 0, 8, 8, 0, kimgp_csc_yuv_to_yuv_new},
      {500, 200, 8, 8, 0, 0, 8, 8, 0, kimgp_csc_rgb_to_rgb_new},
  };
  auto rng = MakeRng(3);
  for (const auto& c : cases) {
    TestFrame src(c.s, c.w, c.h, 3), dst(c.d, c.dw, c.dh, 5);
    src.FillRandom(rng);
    src.img.std = c.sstd;
    dst.img.std = c.dstd;
    const auto before = dst.Snapshot();
    ASSERT_EQ(c.fn(&src.img, &dst.img), c.want) << c.s << " -> " << c.d;
    ASSERT_TRUE(dst.GuardsIntact());
    if (c.want != 0) {
      ASSERT_EQ(dst.Snapshot(), before) << c.s << " -> " << c.d;
    }
  }
}

}  // namespace
}  // namespace test
}  // namespace kelo
