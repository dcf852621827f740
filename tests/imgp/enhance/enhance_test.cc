#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "imgp/enhance/enhance_rows.h"
#include "kimgp_enhance.h"
#include "tests/support/guarded.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

std::vector<uint8_t> Table(int16_t gain) {
  std::vector<uint8_t> t(256);
  color_sat_lut(t.data(), gain);
  return t;
}

TEST(SaturationTable, Entries) {
  // Unity: even entry 2k is k, every odd entry 0.
  const std::vector<uint8_t> unity = Table(1024);
  for (int j = 0; j < 256; ++j) EXPECT_EQ(unity[j], j % 2 ? 0 : j / 2) << j;
  const std::vector<uint8_t> t1180 = Table(1180);
  EXPECT_EQ(t1180[254], 126);
  EXPECT_EQ(t1180[1], 0);
  EXPECT_EQ(t1180[0], 0);  // ((0 - 128) * 1180 >> 10) + 128 = -20
  EXPECT_EQ(t1180[200], 95);  // ((100 - 128) * 1180 >> 10) + 128 = -33 + 128
  const std::vector<uint8_t> inverted = Table(-1024);
  EXPECT_EQ(inverted[0], 255);
  EXPECT_EQ(inverted[1], 255);
  EXPECT_EQ(inverted[254], 129);
  // The initialiser: gains below 1 are 1180, others their low 16 bits.
  for (int32_t g : {0, -5}) {
    ASSERT_EQ(kimgp_vqe_cs_init(g), 0);
    EXPECT_EQ(std::vector<uint8_t>(lut, lut + 256), t1180) << g;
  }
  kimgp_vqe_cs_init(70000);
  EXPECT_EQ(std::vector<uint8_t>(lut, lut + 256), Table(70000 - 65536));
  kimgp_vqe_cs_init(1024);
  EXPECT_EQ(std::vector<uint8_t>(lut, lut + 256), unity);
}

// kimgp_vqe_cs clears the n = width[1] x height[1] chroma bytes of each plane
// whatever `lut` holds, and nothing else; other codes are refused.
TEST(Saturation, EntryClearsChroma) {
  std::mt19937 rng = MakeRng(31);
  kimgp_vqe_cs_init(2000);
  TestFrame src(KIMGP_CS_YUV420, 14, 6, 3), dst(KIMGP_CS_YUV420, 14, 6, 3);
  src.FillRandom(rng);
  dst.FillRandom(rng);
  TestFrame want(dst);
  const int32_t n = src.img.width[1] * src.img.height[1];
  memset(want.buffer(1).data(), 0, n);
  memset(want.buffer(2).data(), 0, n);
  ASSERT_EQ(kimgp_vqe_cs(&src.img, &dst.img), KIMGP_OK);
  EXPECT_EQ(FirstDifference(dst.Snapshot(), want.Snapshot()), "");

  for (int32_t bad : {KIMGP_CS_NV12, KIMGP_CS_YUV444}) {
    TestFrame s(KIMGP_CS_YUV420, 8, 4), d(KIMGP_CS_YUV420, 8, 4);
    (bad == KIMGP_CS_NV12 ? s : d).img.cs = bad;
    const std::vector<uint8_t> before = d.Snapshot();
    EXPECT_EQ(kimgp_vqe_cs(&s.img, &d.img), KIMGP_ERR_ARGS);
    EXPECT_EQ(kimgp_vqe_de(&s.img, &d.img, 4), KIMGP_ERR_ARGS);
    EXPECT_EQ(d.Snapshot(), before);
  }
  EXPECT_EQ(kimgp_vqe_dejagging(), 0);
}

// The table mapping on every target: odd counts, one sample, counts around
// the vector widths; nothing past n.
TEST(Saturation, MappingMatchesScalarOnEveryTarget) {
  std::mt19937 rng = MakeRng(32);
  ForEachTarget([&](const std::string& target) {
    for (int32_t n : {1, 2, 3, 15, 16, 17, 31, 33, 63, 64, 65, 127, 200, 1001}) {
      std::vector<uint8_t> table(256), su(n), sv(n);
      for (auto& b : table) b = static_cast<uint8_t>(rng());
      for (int32_t i = 0; i < n; ++i) su[i] = static_cast<uint8_t>(rng()), sv[i] = static_cast<uint8_t>(rng());
      GuardedBuffer du(n), dv(n);
      std::vector<uint8_t> want_u = du.raw(), want_v = dv.raw();
      scalar::MapChroma(table.data(), n, su.data(), sv.data(), want_u.data() + kGuardBytes,
                        want_v.data() + kGuardBytes);
      color_sat(table.data(), n, su.data(), sv.data(), du.data(), dv.data());
      ASSERT_EQ(FirstDifference(du.raw(), want_u), "") << target << " n=" << n;
      ASSERT_EQ(FirstDifference(dv.raw(), want_v), "") << target << " n=" << n;
    }
  });
}

// The sharpened plane by the definition, from the scalar row.
std::vector<uint8_t> Sharpened(const std::vector<uint8_t>& src, int32_t w, int32_t h) {
  std::vector<uint8_t> out(src);
  for (int32_t y = 2; y < h - 2 && w >= 5; ++y) {
    scalar::SharpenSpan(src.data() + y * w, w, out.data() + y * w, 2, w - 2);
  }
  return out;
}

TEST(DetailEnhancement, BrightPixelAndFlatPlane) {
  std::vector<uint8_t> src(9 * 7, 0), dst(9 * 7, 0x77);
  src[3 * 9 + 4] = 100;
  detail_enh(src.data(), 9, 7, dst.data(), 4);
  std::vector<uint8_t> want(src);
  want[3 * 9 + 4] = 200;  // 100 + (1600 >> 4); the neighbours go to -13 -> 0
  EXPECT_EQ(dst, want);
  std::vector<uint8_t> flat(12 * 8, 93), out(12 * 8);
  detail_enh(flat.data(), 12, 8, out.data(), 4);
  EXPECT_EQ(out, flat);
  // Four rows: no filtered row.
  std::vector<uint8_t> four(10 * 4), out4(10 * 4);
  for (size_t i = 0; i < four.size(); ++i) four[i] = static_cast<uint8_t>(i * 37);
  detail_enh(four.data(), 10, 4, out4.data(), 4);
  EXPECT_EQ(out4, four);
}

// Random planes on every target, sources exactly w x h bytes (a read past
// the plane is a sanitizer error), destinations guarded.
TEST(DetailEnhancement, MatchesScalarOnEveryTarget) {
  std::mt19937 rng = MakeRng(33);
  ForEachTarget([&](const std::string& target) {
    for (const Size2& s : TestSizes(rng, 30, 300, 12)) {
      std::vector<uint8_t> src(static_cast<size_t>(s.w) * s.h);
      for (auto& b : src) b = static_cast<uint8_t>(rng() % 4 ? rng() : (rng() & 1) * 255);
      GuardedBuffer dst(src.size());
      std::vector<uint8_t> want = dst.raw();
      const std::vector<uint8_t> sharp = Sharpened(src, s.w, s.h);
      std::copy(sharp.begin(), sharp.end(), want.begin() + kGuardBytes);
      detail_enh(src.data(), s.w, s.h, dst.data(), static_cast<int32_t>(rng() % 100));
      ASSERT_EQ(FirstDifference(dst.raw(), want), "") << target << " " << s.w << "x" << s.h;
    }
  });
}

// The entry sharpens luma only, whatever the strength.
TEST(DetailEnhancement, EntryOnLumaAnyStrength) {
  std::mt19937 rng = MakeRng(34);
  TestFrame src(KIMGP_CS_YUV420, 21, 9), a(KIMGP_CS_YUV420, 21, 9);
  src.FillRandom(rng);
  a.FillRandom(rng);
  TestFrame b(a);
  TestFrame want(a);
  const std::vector<uint8_t> luma(src.buffer(0).data(), src.buffer(0).data() + 21 * 9);
  const std::vector<uint8_t> sharp = Sharpened(luma, 21, 9);
  std::copy(sharp.begin(), sharp.end(), want.buffer(0).data());
  ASSERT_EQ(kimgp_vqe_de(&src.img, &a.img, 1), KIMGP_OK);
  ASSERT_EQ(kimgp_vqe_de(&src.img, &b.img, 50), KIMGP_OK);
  EXPECT_EQ(FirstDifference(a.Snapshot(), want.Snapshot()), "");
  EXPECT_EQ(a.Snapshot(), b.Snapshot());
}

}  // namespace
}  // namespace test
}  // namespace kelo
