// Growing resize kernels against a per-sample reference written from the
// rules, for every layout, both modes and both directions, on every target.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "imgp/geometry/resize_up_kernels.h"
#include "kimgp_rsz.h"
#include "tests/support/guarded.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

// The rule along one line of samples (a row in width; a column of rows in
// height): sn samples of one component with `mask` bits to dn outputs.
std::vector<uint32_t> RefLine(const std::vector<uint32_t>& in, int32_t dn, int32_t q,
                              int32_t r, bool mode1, uint32_t mask) {
  const int32_t sn = static_cast<int32_t>(in.size());
  std::vector<uint32_t> out;
  int32_t ex = 0;
  for (int32_t x = 0; x < sn; ++x) {
    const uint32_t s = in[x], n = x + 1 < sn ? in[x + 1] : s;
    out.push_back(s);
    ex += r;
    const bool over = ex >= sn;
    if (!mode1) {
      const uint32_t k = over ? q : q - 1;
      for (int32_t j = 1; j < q; ++j) out.push_back((k * s + n) / (k + 1));
      if (over) out.push_back((s + q * n) / (q + 1));
    } else {
      const int32_t k = over ? q + 1 : q;
      const uint32_t w = q == 1 ? 32 : scale[std::min(k, 33)];
      for (int32_t j = 1; j <= (over ? q : q - 1); ++j) {
        out.push_back(((j * w * n + (64 - j * w) * s) >> 6) & mask);
      }
    }
    if (over) ex -= sn;
  }
  out.resize(std::min<size_t>(out.size(), static_cast<size_t>(dn)));
  return out;
}

using UpFn = void (*)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t);

struct Layout {
  const char* name;
  int bytes;
  std::vector<int> bits;  // component widths, low bits first
  UpFn up, up_mode1;      // width kernels
  UpFn up_h, up_h_mode1;  // height kernels (nullptr: the 8b ones on bytes)
};

uint32_t Comp(const Layout& l, const uint8_t* p, int c) {
  if (l.bits.size() == 3 && l.bytes == 2) {
    const uint32_t v = p[0] | p[1] << 8;
    return c == 0 ? v & 31 : c == 1 ? (v >> 5) & 63 : v >> 11;
  }
  return p[c];
}
void SetComp(const Layout& l, uint8_t* p, int c, uint32_t v) {
  if (l.bits.size() == 3 && l.bytes == 2) {
    const int shift = c == 0 ? 0 : c == 1 ? 5 : 11;
    uint32_t w = p[0] | p[1] << 8;
    w = (w & ~(((1u << l.bits[c]) - 1) << shift)) | v << shift;
    p[0] = static_cast<uint8_t>(w), p[1] = static_cast<uint8_t>(w >> 8);
    return;
  }
  p[c] = static_cast<uint8_t>(v);
}

const Layout kLayouts[] = {
    {"8b", 1, {8}, kimgp_8b_rsz_up, kimgp_8b_rsz_up_mode1, kimgp_8b_rsz_up_h,
     kimgp_8b_rsz_up_h_mode1},
    {"8b8b", 2, {8, 8}, kimgp_8b8b_rsz_up, kimgp_8b8b_rsz_up_mode1, kimgp_8b8b_rsz_up_h,
     kimgp_8b8b_rsz_up_h_mode1},
    {"5b6b5b", 2, {5, 6, 5}, kimgp_5b6b5b_rsz_up, kimgp_5b6b5b_rsz_up_mode1,
     kimgp_5b6b5b_rsz_up_h, kimgp_5b6b5b_rsz_up_h_mode1},
    {"8b8b8b", 3, {8, 8, 8}, kimgp_8b8b8b_rsz_up, kimgp_8b8b8b_rsz_up_mode1, nullptr, nullptr},
    {"8b8b8b8b", 4, {8, 8, 8, 8}, kimgp_8b8b8b8b_rsz_up, kimgp_8b8b8b8b_rsz_up_mode1, nullptr,
     nullptr},
};

struct SizePair {
  int32_t s, d;
};

// Ratios that matter (2x, 4x, 1.5x, equal size, one sample to many, divisor
// limits of the vector path) and random ones.
std::vector<SizePair> SizePairs(std::mt19937& rng, int random_count, int32_t max_s) {
  std::vector<SizePair> v = {{2, 4},   {2, 8},   {1, 1},   {1, 7},    {1, 300}, {5, 5},
                             {37, 37}, {40, 80}, {33, 132}, {720, 1080}, {64, 96},
                             {10, 150}, {10, 160}, {10, 170}, {9, 600}, {3, 200},
                             {17, 35},  {100, 333}, {60, 61}, {20, 21}, {16, 16}, {8, 9},
                             // doubling, around the 16-byte vectors of its path
                             {8, 16},   {9, 18},   {16, 32},  {17, 34},  {31, 62},  {33, 66},
                             {49, 98},  {50, 100}, {64, 128}, {65, 130}};
  std::uniform_int_distribution<int32_t> s(1, max_s), f(100, 1800);
  for (int i = 0; i < random_count; ++i) {
    const int32_t sn = s(rng);
    v.push_back({sn, std::max(sn, static_cast<int32_t>(int64_t{sn} * f(rng) / 100))});
  }
  return v;
}

void FillRandom(GuardedBuffer* b, std::mt19937& rng) {
  // Runs of extremes and of equal values next to noise.
  for (size_t i = 0; i < b->size(); ++i) {
    const uint32_t x = rng();
    b->data()[i] = (x & 0x700) == 0 ? 0 : (x & 0x700) == 0x100 ? 255 : static_cast<uint8_t>(x);
  }
}

struct Case {
  const Layout* layout;
  bool mode1;
};

void PrintTo(const Case& c, std::ostream* os) {
  *os << c.layout->name << (c.mode1 ? " mode1" : "");
}

class UpTest : public ::testing::TestWithParam<Case> {};

TEST_P(UpTest, WidthMatchesReferenceOnEveryTarget) {
  const Layout& l = *GetParam().layout;
  const bool mode1 = GetParam().mode1;
  std::mt19937 rng = MakeRng(l.bytes * 2 + mode1);
  const std::vector<SizePair> pairs = SizePairs(rng, 25, 120);
  ForEachTarget([&](const std::string& target) {
    for (const SizePair& p : pairs) {
      const int32_t sh = 1 + static_cast<int32_t>(rng() % 3);
      const int32_t q = p.d / p.s, r = p.d % p.s;
      const int32_t stride = (p.s * l.bytes + RandomPad(rng)) / l.bytes * l.bytes;
      SCOPED_TRACE(target + " " + std::to_string(p.s) + "->" + std::to_string(p.d) +
                   " stride=" + std::to_string(stride));
      GuardedBuffer src(static_cast<size_t>(stride) * sh);
      GuardedBuffer got(static_cast<size_t>(p.d) * l.bytes * sh);
      FillRandom(&src, rng);
      std::vector<uint8_t> want = got.raw();
      for (int32_t y = 0; y < sh; ++y) {
        uint8_t* row = want.data() + kGuardBytes + static_cast<size_t>(y) * p.d * l.bytes;
        for (size_t c = 0; c < l.bits.size(); ++c) {
          std::vector<uint32_t> line;
          for (int32_t x = 0; x < p.s; ++x) {
            line.push_back(Comp(l, src.data() + y * stride + x * l.bytes, static_cast<int>(c)));
          }
          const auto out = RefLine(line, p.d, q, r, mode1, (1u << l.bits[c]) - 1);
          ASSERT_EQ(out.size(), static_cast<size_t>(p.d));
          for (int32_t x = 0; x < p.d; ++x) SetComp(l, row + x * l.bytes, static_cast<int>(c), out[x]);
        }
      }
      const int32_t stride_arg = l.bits.size() == 3 && l.bytes == 2 ? stride / 2 : stride;
      (mode1 ? l.up_mode1 : l.up)(src.data(), got.data(), p.d, p.s, sh, q, r, stride_arg);
      ASSERT_EQ(FirstDifference(got.raw(), want), "");
    }
  });
}

TEST_P(UpTest, HeightMatchesReferenceOnEveryTarget) {
  const Layout& l = *GetParam().layout;
  const bool mode1 = GetParam().mode1;
  std::mt19937 rng = MakeRng(100 + l.bytes * 2 + mode1);
  const std::vector<SizePair> pairs = SizePairs(rng, 20, 80);
  // The 3- and 4-byte layouts run the 8b kernels on rows of 3 dw or 4 dw bytes.
  const bool bytes = l.up_h == nullptr;
  const UpFn fn = bytes ? (mode1 ? kimgp_8b_rsz_up_h_mode1 : kimgp_8b_rsz_up_h)
                        : (mode1 ? l.up_h_mode1 : l.up_h);
  ForEachTarget([&](const std::string& target) {
    for (const SizePair& p : pairs) {
      const int32_t dw = 1 + static_cast<int32_t>(rng() % 70);
      const int32_t row = dw * l.bytes;
      const int32_t q = p.d / p.s, r = p.d % p.s;
      const int32_t stride = (row + RandomPad(rng)) / l.bytes * l.bytes;
      SCOPED_TRACE(target + " " + std::to_string(p.s) + "->" + std::to_string(p.d) +
                   " dw=" + std::to_string(dw) + " stride=" + std::to_string(stride));
      GuardedBuffer tmp(static_cast<size_t>(row) * p.s);
      GuardedBuffer got(static_cast<size_t>(stride) * p.d);
      FillRandom(&tmp, rng);
      FillRandom(&got, rng);
      std::vector<uint8_t> want = got.raw();
      for (int32_t x = 0; x < dw; ++x) {
        for (size_t c = 0; c < l.bits.size(); ++c) {
          std::vector<uint32_t> line;
          for (int32_t y = 0; y < p.s; ++y) {
            line.push_back(Comp(l, tmp.data() + y * row + x * l.bytes, static_cast<int>(c)));
          }
          const auto out = RefLine(line, p.d, q, r, mode1, (1u << l.bits[c]) - 1);
          for (int32_t y = 0; y < p.d; ++y) {
            SetComp(l, want.data() + kGuardBytes + y * stride + x * l.bytes,
                    static_cast<int>(c), out[y]);
          }
        }
      }
      const bool rgb565 = l.bits.size() == 3 && l.bytes == 2;
      fn(tmp.data(), got.data(), bytes ? row : dw, p.s, p.d, q, r, rgb565 ? stride / 2 : stride);
      ASSERT_EQ(FirstDifference(got.raw(), want), "");
    }
  });
}

std::vector<Case> AllCases() {
  std::vector<Case> v;
  for (const Layout& l : kLayouts) {
    v.push_back({&l, false});
    v.push_back({&l, true});
  }
  return v;
}

INSTANTIATE_TEST_SUITE_P(Layouts, UpTest, ::testing::ValuesIn(AllCases()),
                         [](const ::testing::TestParamInfo<Case>& i) {
                           return std::string(i.param.layout->name) +
                                  (i.param.mode1 ? "_mode1" : "");
                         });

// Worked examples on one 8-bit row, also run as columns by the height kernel.
struct Example {
  const char* name;
  bool mode1;
  std::vector<uint8_t> in;
  std::vector<uint8_t> out;
};

const Example kExamples[] = {
    {"TwoToFour", false, {10, 21}, {10, 15, 21, 21}},
    {"TwoToEight", false, {10, 31}, {10, 15, 15, 15, 31, 31, 31, 31}},
    // Step scale[4] = 16: (16 n + 48 s) >> 6, (32 n + 32 s) >> 6, (48 n + 16 s) >> 6.
    {"Mode1TwoToEight", true, {10, 31}, {10, 15, 20, 25, 31, 31, 31, 31}},
    // 4 -> 6: s0, then s1 with the extra mean, s2, then s3 with its own.
    {"ThreeHalves", false, {0, 100, 51, 7}, {0, 100, 75, 51, 7, 7}},
    // 2 -> 5, q = 2, r = 1: s0 then (s0 + n) div 2; s1, (2 s1 + s1) div 3, ...
    {"TwoToFive", false, {9, 30}, {9, 19, 30, 30, 30}},
    // 3 -> 8, q = 2, r = 2: the overflow at s1 divides by 3 twice.
    {"ThreeToEight", false, {9, 30, 200}, {9, 19, 30, 86, 143, 200, 200, 200}},
};

void PrintTo(const Example& e, std::ostream* os) { *os << e.name; }

class UpExample : public ::testing::TestWithParam<Example> {};

TEST_P(UpExample, WidthAndHeight) {
  const Example& e = GetParam();
  const int32_t sn = static_cast<int32_t>(e.in.size()), dn = static_cast<int32_t>(e.out.size());
  ForEachTarget([&](const std::string& target) {
    SCOPED_TRACE(target);
    std::vector<uint8_t> got(dn);
    (e.mode1 ? kimgp_8b_rsz_up_mode1 : kimgp_8b_rsz_up)(e.in.data(), got.data(), dn, sn, 1,
                                                        dn / sn, dn % sn, sn);
    EXPECT_EQ(got, e.out);
    std::fill(got.begin(), got.end(), 0);
    (e.mode1 ? kimgp_8b_rsz_up_h_mode1 : kimgp_8b_rsz_up_h)(e.in.data(), got.data(), 1, sn, dn,
                                                            dn / sn, dn % sn, 1);
    EXPECT_EQ(got, e.out);
  });
}

INSTANTIATE_TEST_SUITE_P(Rules, UpExample, ::testing::ValuesIn(kExamples),
                         [](const ::testing::TestParamInfo<Example>& i) { return i.param.name; });

TEST(UpExamples, Rgb565AveragesFieldByField) {
  const uint16_t in[2] = {0xF800, 0x07FF};
  uint16_t got[4] = {};
  kimgp_5b6b5b_rsz_up(in, got, 4, 2, 1, 2, 0, 2);
  EXPECT_EQ(got[1], 0x7BEF);
  EXPECT_EQ(got[3], 0x07FF);
}

// 1280 -> 1920: s0, s1, (s1 + s2) >> 1, s2, s3, ... and s1279 twice at the end.
TEST(UpExamples, ThreeHalvesOfA720pRow) {
  std::mt19937 rng = MakeRng(7);
  std::vector<uint8_t> in(1280), got(1920);
  for (auto& v : in) v = static_cast<uint8_t>(rng());
  ForEachTarget([&](const std::string& target) {
    SCOPED_TRACE(target);
    kimgp_8b_rsz_up(in.data(), got.data(), 1920, 1280, 1, 1, 640, 1280);
    for (int g = 0; g < 640; ++g) {
      const int n = g == 639 ? in[1279] : in[2 * g + 2];
      ASSERT_EQ(got[3 * g], in[2 * g]);
      ASSERT_EQ(got[3 * g + 1], in[2 * g + 1]);
      ASSERT_EQ(got[3 * g + 2], (in[2 * g + 1] + n) >> 1) << g;
    }
  });
}

// The multipliers the vector paths divide with are exact over the range of
// k s + n for every divisor they accept.
TEST(UpDivision, RatioMagicIsExact) {
  for (uint32_t d = 2; d <= rsz::kMaxRatioDivisor; ++d) {
    const uint32_t m = rsz::RatioMagic(d);
    for (uint32_t x = 0; x <= 255 * d; ++x) ASSERT_EQ(x * m >> 16, x / d) << d << " " << x;
  }
}

}  // namespace
}  // namespace test
}  // namespace kelo
