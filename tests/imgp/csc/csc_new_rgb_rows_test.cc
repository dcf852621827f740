// The fused RGB to YUV rows of kimgp_csc_new: vector rows against the scalar
// rows on every target for random matrices, and whole conversions on every
// target against the baseline target's bytes.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "imgp/csc/csc_new_rgb_rows.h"
#include "kimgp_csc.h"
#include "tests/support/guarded.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

const csc::NewRgbOrder kOrders[] = {{4, 0, 1, 2, 3}, {4, 2, 1, 0, 3}, {4, 1, 2, 3, 0},
                                    {4, 3, 2, 1, 0}, {3, 0, 1, 2, -1}, {3, 2, 1, 0, -1}};

// A map the vector chroma rows take (16-bit weights); its luma row goes to
// the scalar rows unless ByteLuma makes it byte weights.
csc::NewMatrix RandomMatrix(std::mt19937& rng) {
  std::uniform_int_distribution<int32_t> coef(-32767, 32767), add(-(1 << 30), 1 << 30);
  csc::NewMatrix k{};
  for (int r = 0; r < 3; ++r) {
    for (int j = 0; j < 3; ++j) k.m[r][j] = coef(rng);
    k.add[r] = add(rng);
  }
  for (auto& c : k.cd) c[0] = coef(rng) - (rng() & 1), c[1] = coef(rng);
  k.hi = 255;
  return k;
}

// Byte weights summing to at most 256 in the luma row; half the time they
// sum to 256 and the luma offset is the largest the byte sums allow.
void ByteLuma(std::mt19937& rng, csc::NewMatrix& k) {
  const bool edge = rng() & 1;
  int32_t w[3] = {static_cast<int32_t>(rng() % 256), 0, 0};
  w[1] = static_cast<int32_t>(rng() % (257 - w[0]));
  w[2] = edge ? 256 - w[0] - w[1] : static_cast<int32_t>(rng() % (257 - w[0] - w[1]));
  if (edge && w[2] > 255) w[2] = 255;
  for (int j = 0; j < 3; ++j) k.m[0][j] = w[j] << 6;
  const int32_t room = 0xFFFF - 255 * (w[0] + w[1] + w[2]);
  const int32_t a = edge ? room : static_cast<int32_t>(rng() % (room + 1));
  k.add[0] = (a << 9) + static_cast<int32_t>(rng() & 511);
}

std::vector<uint8_t> RandomBytes(std::mt19937& rng, size_t n) {
  std::vector<uint8_t> v(n);
  for (auto& b : v) b = static_cast<uint8_t>(rng());
  return v;
}

TEST(CscNewRgbRows, MatchScalarOnEveryTarget) {
  auto rng = MakeRng(23);
  ForEachTarget([&](const std::string& target) {
    SCOPED_TRACE(target);
    for (const Size2& sz : TestSizes(rng, 8)) {
      const size_t w = static_cast<size_t>(sz.w) + (sz.h & 1);
      csc::NewMatrix k = RandomMatrix(rng);
      if (sz.w & 1 || sz.h % 3 != 2) ByteLuma(rng, k);
      ASSERT_TRUE(csc::NewRgbRowsVec(k));
      for (const csc::NewRgbOrder& o : kOrders) {
        SCOPED_TRACE(testing::Message() << "w " << w << " px " << o.px << " r " << o.r);
        const std::vector<uint8_t> s0 = RandomBytes(rng, w * o.px), s1 = RandomBytes(rng, w * o.px);
        std::vector<uint8_t> got(w + 1, 7), want(w + 1, 7);
        csc::NewRgbLumaRow(k, o, s0.data(), got.data(), w);
        csc::scalar::NewRgbLumaRow(k, o, s0.data(), want.data(), 0, w);
        ASSERT_EQ(got, want);
        for (int sub = 1; sub <= 2; ++sub) {
          // Planes (step 1), then U before V and V before U in pairs.
          for (int layout = 0; layout < 3; ++layout) {
            const size_t cw = (w + sub - 1) / sub, step = layout ? 2 : 1;
            std::vector<uint8_t> g(2 * cw + 3, 9), e(2 * cw + 3, 9);
            const size_t iu = layout == 0 ? 0 : layout == 1 ? 0 : 1;
            const size_t iv = layout == 0 ? cw + 1 : layout == 1 ? 1 : 0;
            csc::NewRgbChromaRow(k, o, s0.data(), s1.data(), sub, g.data() + iu, g.data() + iv,
                                 step, w);
            csc::scalar::NewRgbChromaRow(k, o, s0.data(), s1.data(), sub, e.data() + iu,
                                         e.data() + iv, step, 0, w);
            ASSERT_EQ(g, e) << "sub " << sub << " layout " << layout;
            if (sub == 1) continue;
            // As a 4:2:0 row pair, the second of two (rows s1, s0, then
            // s0, s1): both luma rows and the same chroma.
            const size_t ss = w * o.px, ys = w + 1, cs = 2 * cw + 3;
            std::vector<uint8_t> src;
            for (const auto* r : {&s1, &s0, &s0, &s1}) src.insert(src.end(), r->begin(), r->end());
            std::vector<uint8_t> g2(2 * cs, 9), y(4 * ys, 7), e1(ys, 7);
            const csc::NewRgbPairs job{src.data(), static_cast<ptrdiff_t>(ss), y.data(),
                                       static_cast<ptrdiff_t>(ys), g2.data() + iu, g2.data() + iv,
                                       static_cast<ptrdiff_t>(cs), step, w, 2};
            csc::NewRgbPairRows(csc::NewRgbRowsFor(k, o, 2), k, o, job);
            csc::scalar::NewRgbLumaRow(k, o, s1.data(), e1.data(), 0, w);
            ASSERT_EQ(std::vector<uint8_t>(g2.begin() + cs, g2.end()), e) << "pair " << layout;
            ASSERT_EQ(std::vector<uint8_t>(y.begin() + 2 * ys, y.begin() + 3 * ys), want);
            ASSERT_EQ(std::vector<uint8_t>(y.begin() + 3 * ys, y.end()), e1);
          }
        }
      }
    }
  });
}

// Every 8-bit YUV destination the fused rows write, from every 3- and
// 4-byte order, in each standard: the same bytes on every target.
TEST(CscNewRgbRows, ImagesAlikeOnEveryTarget) {
  const int32_t kSources[] = {400, 401, 500, 501, 502, 503};
  const int32_t kDests[] = {0, 1, 2, 3, 4, 5, 6, 7};
  const int32_t kStds[] = {0, 1, 10, 11, 20, 21};
  auto rng = MakeRng(29);
  std::vector<std::pair<std::string, std::vector<std::vector<uint8_t>>>> runs;
  const std::vector<Size2> sizes = TestSizes(rng, 2, 200, 9);
  ForEachTarget([&](const std::string& target) {
    auto prng = MakeRng(31);  // the same pixels on every target
    runs.push_back({target, {}});
    for (const Size2& sz : sizes) {
      if (sz.w < 2 || sz.h < 2) continue;
      for (int32_t scs : kSources) {
        TestFrame src(scs, sz.w, sz.h, RandomPad(prng));
        src.FillRandom(prng);
        for (int32_t dcs : kDests) {
          TestFrame dst(dcs, sz.w, sz.h, RandomPad(prng));
          src.img.std = dst.img.std = kStds[prng() % 6];
          ASSERT_EQ(kimgp_csc_new(&src.img, &dst.img), KIMGP_OK) << scs << ">" << dcs;
          runs.back().second.push_back(dst.Snapshot());
        }
      }
    }
  });
  // The last target is the baseline (scalar rows where the build has one).
  for (const auto& run : runs) {
    SCOPED_TRACE(run.first + " against " + runs.back().first);
    ASSERT_EQ(run.second.size(), runs.back().second.size());
    for (size_t i = 0; i < run.second.size(); ++i) {
      ASSERT_EQ(FirstDifference(run.second[i], runs.back().second[i]), "") << "image " << i;
    }
  }
}

}  // namespace
}  // namespace test
}  // namespace kelo
