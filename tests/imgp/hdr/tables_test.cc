// The exported constants and decoding tables against their rules, the work
// record's layout, and the per-frame curve and tables.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

#include "imgp/hdr/hdr_tables.h"
#include "tests/imgp/hdr/hdr_test_util.h"

namespace kelo {
namespace test {
namespace {

// round(num / den) to nearest, halves away from zero; den > 0. The rules
// never produce an exact half (checked).
int64_t RoundDiv(int64_t num, int64_t den) {
  const int64_t a = std::llabs(num);
  EXPECT_NE((2 * a) % (2 * den), den) << "tie at " << num << "/" << den;
  const int64_t q = (2 * a + den) / (2 * den);
  return num < 0 ? -q : q;
}

TEST(HdrTables, DecodingTablesFollowTheirRules) {
  struct Rule {
    const int16_t* table;
    int64_t coef;  // in 1/100000
    int sign;
  };
  const Rule chroma[] = {{LUT_R_CR10, 147460, 1},
                         {LUT_B_CB10, 188140, 1},
                         {LUT_G_CB10, 16455, -1},
                         {LUT_G_CR10, 57135, -1}};
  for (int i = 0; i < 1024; ++i) {
    const int64_t y = i < 64 ? 0 : i > 940 ? 1024 : RoundDiv((i - 64) * 1024, 876);
    ASSERT_EQ(LUT_Y10[i], y) << i;
    const int64_t c = i < 64 ? 64 : (i > 960 ? 960 : i);
    for (const Rule& r : chroma) {
      ASSERT_EQ(r.table[i], RoundDiv(r.sign * (c - 512) * r.coef * 1024, 896 * 100000LL)) << i;
    }
  }
  EXPECT_EQ(LUT_Y10[100], 42);
  EXPECT_EQ(LUT_Y10[500], 510);
  EXPECT_EQ(LUT_Y10[940], 1024);
  EXPECT_EQ(LUT_R_CR10[0], -755);
  EXPECT_EQ(LUT_B_CB10[1023], 963);
  EXPECT_EQ(LUT_G_CB10[0], 84);
  EXPECT_EQ(LUT_G_CR10[1023], -293);
}

// The fixed-point rules the vector path decodes with give every entry.
TEST(HdrTables, DecodingArithmeticGivesTheTables) {
  const struct {
    const int16_t* table;
    hdr::DecodeRule rule;
  } cases[] = {{LUT_Y10, hdr::kY10Rule},
               {LUT_R_CR10, hdr::kRCr10Rule},
               {LUT_B_CB10, hdr::kBCb10Rule},
               {LUT_G_CB10, hdr::kGCb10Rule},
               {LUT_G_CR10, hdr::kGCr10Rule}};
  for (const auto& c : cases) {
    const hdr::DecodeRule& r = c.rule;
    for (int32_t i = 0; i < 1024; ++i) {
      const int32_t x = std::min(std::max(i, r.in_lo), r.in_hi) - r.center;
      const int32_t v = (x * r.mul + (1 << (r.shift - 1))) >> r.shift;
      ASSERT_EQ(std::min(std::max(v, r.out_lo), r.out_hi), c.table[i]) << i;
    }
  }
}

TEST(HdrTables, TransferConstants) {
  EXPECT_EQ(m1, 2610.0 / 16384);
  EXPECT_EQ(m2, 2523.0 / 32);
  EXPECT_EQ(c1, 3424.0 / 4096);
  EXPECT_EQ(c2, 2413.0 / 128);
  EXPECT_EQ(c3, 2392.0 / 128);
}

TEST(HdrTables, WorkRecordLayout) {
  EXPECT_EQ(offsetof(kimgp_hdr_work, peak_scale), 8u);
  EXPECT_EQ(offsetof(kimgp_hdr_work, gain_lut), 2120u);
  EXPECT_EQ(offsetof(kimgp_hdr_work, hlg_lut), 2634u);
  EXPECT_EQ(offsetof(kimgp_hdr_work, out_lut), 4682u);
  EXPECT_EQ(offsetof(kimgp_hdr_work, src), sizeof(void*) == 4 ? 8780u : 8784u);
  EXPECT_EQ(sizeof(kimgp_hdr_work), sizeof(void*) == 4 ? 8792u : 8808u);
}

// Curve parameters by peak, the tone curve's shape and the gain table.
TEST(HdrTables, CurveByPeak) {
  struct Case {
    int32_t peak;
    double s, k;
    int32_t n;
  };
  const Case cases[] = {{1000, 2.0, 0.1, 2}, {2000, 3.7, 0.07, 4}, {4000, 7.5, 0.0375, 9},
                        {4001, 10.0, 0.04, 13}};
  kimgp_img img{};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.peak);
    auto w = MakeWork(&img, &img, c.peak, 0, false);
    EXPECT_EQ(w->s, c.s);
    EXPECT_EQ(w->k, c.k);
    EXPECT_EQ(w->sk, c.s * c.k);
    EXPECT_EQ(w->n, c.n);
    EXPECT_DOUBLE_EQ(w->a, (c.s * c.k - c.k) / (1 - std::pow(1 - c.k, c.n) - c.k));
    EXPECT_EQ(w->peak_scale, 10000.0 / c.peak);
    // Both pieces meet at the knee; the curve reaches 1 at 1.
    const double below = TMO_VD_Norm(c.k, w->s, w->k, w->n, w->a);
    const double above = w->a * (1 - std::pow(1 - c.k, w->n)) + (1 - w->a) * c.k;
    EXPECT_NEAR(below, above, 1e-12);
    EXPECT_NEAR(TMO_VD_Norm(1.0, w->s, w->k, w->n, w->a), 1.0, 1e-12);
    // Gain: 0 at 0, s below the knee, 1 at full scale, entry 256 repeats 255.
    EXPECT_EQ(w->gain_lut[0], 0);
    EXPECT_EQ(w->gain_lut[1], std::trunc(0.5 + c.s * 256));
    EXPECT_EQ(w->gain_lut[255], 256);
    EXPECT_EQ(w->gain_lut[256], w->gain_lut[255]);
    for (int j = 2; j < 256; ++j) EXPECT_LE(w->gain_lut[j], w->gain_lut[j - 1]) << j;
  }
  // 4000 and 4001 are different curves.
  auto a = MakeWork(&img, &img, 4000, 0, false), b = MakeWork(&img, &img, 4001, 0, false);
  EXPECT_NE(std::memcmp(a->gain_lut, b->gain_lut, sizeof a->gain_lut), 0);
}

TEST(HdrTables, TransferTables) {
  kimgp_img img{};
  // PQ: 1000 nits is 0.1 of full scale; the table saturates from the first
  // code at or above it.
  auto w = MakeWork(&img, &img, 1000, 0, false);
  auto nits = [](int i) {
    const double p = std::pow(i / 1023.0, 1 / m2);
    return 10000 * std::pow(std::fmax(p - c1, 0) / (c2 - c3 * p), 1 / m1);
  };
  int first_full = 0;
  while (nits(first_full) < 1000) ++first_full;
  EXPECT_EQ(first_full, 770);
  EXPECT_EQ(w->pq_lut[0], 0);
  EXPECT_LT(w->pq_lut[first_full - 1], 32767);
  for (int i = first_full; i < 1024; ++i) ASSERT_EQ(w->pq_lut[i], 32767) << i;
  for (int i = 1; i < 1024; ++i) ASSERT_GE(w->pq_lut[i], w->pq_lut[i - 1]) << i;
  auto w4 = MakeWork(&img, &img, 4000, 0, false);
  EXPECT_EQ(w4->pq_lut[1023], 32767);
  EXPECT_LT(w4->pq_lut[first_full], 32767);
  // HLG: a plain 2.4 power, in its own table.
  auto h = MakeWork(&img, &img, 1000, 0, true);
  EXPECT_EQ(h->hlg_lut[0], 0);
  EXPECT_EQ(h->hlg_lut[512], static_cast<int>(0.5 + std::pow(512 / 1023.0, 2.4) * 32767));
  EXPECT_EQ(h->hlg_lut[1023], 32767);
  EXPECT_EQ(h->hlg, 1);
}

TEST(HdrTables, OutputTable) {
  kimgp_img img{};
  auto w = MakeWork(&img, &img, 1000, 0, false);
  EXPECT_EQ(w->out_lut[0], 16);
  EXPECT_EQ(w->out_lut[4095], 235);
  for (int j = 1; j < 4096; ++j) ASSERT_GE(w->out_lut[j], w->out_lut[j - 1]) << j;
  // Gamma 1/2.2: a quarter of the light lands at about 53% of the code range.
  EXPECT_EQ(w->out_lut[1024], 16 + static_cast<int>(((static_cast<int>(
                                  0.5 + std::pow(1024.0f / 4095.0f, 0.45454543828964233) * 4095)) >>
                                                     4) * 0.85882354f));
}


// Tables are kept from frame to frame by peak: whatever frames came before,
// on whatever threads, a frame's record gets the same tables. Seven peaks
// (more than are kept) visited in turn from two threads.
TEST(HdrTables, SameTablesWhateverCameBefore) {
  const int32_t peaks[] = {1000, 2000, 4000, 4001, 3000, 1500, 700};
  kimgp_img img{};
  std::vector<std::unique_ptr<kimgp_hdr_work>> first;
  for (int32_t p : peaks) first.push_back(MakeWork(&img, &img, p, 0, p == 700));
  auto visit = [&](int offset, int* mismatches) {
    for (int round = 0; round < 6; ++round) {
      for (size_t i = 0; i < first.size(); ++i) {
        const size_t j = (i * 3 + offset + round) % first.size();
        auto w = MakeWork(&img, &img, peaks[j], 0, peaks[j] == 700);
        *mismatches += std::memcmp(w.get(), first[j].get(), sizeof(kimgp_hdr_work)) != 0;
      }
    }
  };
  int m0 = 0, m1 = 0;
  std::thread t(visit, 1, &m1);
  visit(0, &m0);
  t.join();
  EXPECT_EQ(m0 + m1, 0);
}

}  // namespace
}  // namespace test
}  // namespace kelo
