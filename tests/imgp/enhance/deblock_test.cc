#include <gtest/gtest.h>

#include <vector>

#include "imgp/enhance/deblock_filter.h"
#include "kimgp_enhance.h"
#include "tests/support/guarded.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

// A w x h plane (stride w + pad) with rows 0..7 at `top` and the rest at
// `bottom`, or the same split by columns.
struct Plane {
  int32_t w, h, stride;
  GuardedBuffer buf;
  Plane(int32_t w_, int32_t h_, int32_t pad = 0)
      : w(w_), h(h_), stride(w_ + pad), buf(static_cast<size_t>(w_ + pad) * h_) {}
  uint8_t& at(int32_t x, int32_t y) { return buf.data()[y * stride + x]; }
};

Plane Step(bool rows, uint8_t first, uint8_t second) {
  Plane p(16, 16);
  for (int32_t y = 0; y < 16; ++y) {
    for (int32_t x = 0; x < 16; ++x) p.at(x, y) = ((rows ? y : x) < 8) ? first : second;
  }
  return p;
}

// Lines 6..9 across the edge after filtering a 100 | 108 step.
std::vector<int> AcrossEdge(bool rows, int32_t strength) {
  Plane p = Step(rows, 100, 108);
  if (rows) {
    kimgp_dbf8x8_h263_hor(p.buf.data(), strength, p.stride, p.w, p.h);
  } else {
    kimgp_dbf8x8_h263_ver(p.buf.data(), strength, p.stride, p.w, p.h);
  }
  std::vector<int> line;
  for (int32_t i = 6; i < 10; ++i) line.push_back(rows ? p.at(3, i) : p.at(i, 3));
  return line;
}

TEST(Deblock, StepEdgeAtStrengths) {
  for (bool rows : {true, false}) {
    EXPECT_EQ(AcrossEdge(rows, 4), (std::vector<int>{101, 103, 105, 107}));
    EXPECT_EQ(AcrossEdge(rows, 1), (std::vector<int>{100, 100, 108, 108}));
    EXPECT_EQ(AcrossEdge(rows, 2), (std::vector<int>{100, 101, 107, 108}));
    // Only the low 16 bits of the strength count.
    EXPECT_EQ(AcrossEdge(rows, 4 + 65536), (std::vector<int>{101, 103, 105, 107}));
  }
}

// Below 16 rows nothing; at 16 exactly the four rows around row 8.
TEST(Deblock, EdgesOnlyBetweenWholeBlocks) {
  std::mt19937 rng = MakeRng(21);
  for (int32_t h : {8, 15, 16, 23}) {
    Plane p(24, h);
    for (size_t i = 0; i < p.buf.size(); ++i) p.buf.data()[i] = static_cast<uint8_t>(rng());
    const std::vector<uint8_t> before = p.buf.raw();
    kimgp_dbf8x8_h263_hor(p.buf.data(), 12, p.stride, p.w, p.h);
    for (int32_t y = 0; y < h; ++y) {
      bool changed = false;
      for (int32_t x = 0; x < p.w; ++x) {
        changed |= p.at(x, y) != before[kGuardBytes + y * p.stride + x];
      }
      if (y < 6 || y > 9 || h < 16) {
        EXPECT_FALSE(changed) << "h=" << h << " row " << y;
      }
    }
    EXPECT_TRUE(p.buf.GuardsIntact());
  }
}

// A plane filtered by hand: horizontal edges first, then vertical ones.
std::vector<uint8_t> HorThenVer(const Plane& in, int16_t s, bool ver_first = false) {
  std::vector<uint8_t> out = in.buf.raw();
  uint8_t* p = out.data() + kGuardBytes;
  if (ver_first) scalar::DeblockVer(p, in.stride, in.w, in.h, s);
  scalar::DeblockHor(p, in.stride, in.w, in.h, s);
  if (!ver_first) scalar::DeblockVer(p, in.stride, in.w, in.h, s);
  return out;
}

// Corners where a horizontal and a vertical edge cross: filtering the
// vertical edges first gives other bytes, and kimgp_dbf8x8 must take the
// horizontal ones first.
TEST(Deblock, HorizontalEdgesBeforeVertical) {
  Plane p(16, 16);
  for (int32_t y = 0; y < 16; ++y) {
    for (int32_t x = 0; x < 16; ++x) p.at(x, y) = static_cast<uint8_t>(60 + 9 * (x >= 8) + 23 * (y >= 8) + (x * y) % 5);
  }
  const std::vector<uint8_t> want = HorThenVer(p, 12);
  ASSERT_NE(want, HorThenVer(p, 12, true));
  kimgp_dbf8x8(p.buf.data(), 12, p.stride, p.w, p.h);
  EXPECT_EQ(p.buf.raw(), want);
}

// kimgp_dbf8x8 limits the strength to 12; the frame entry takes up to 15 as
// given and refuses more; null planes are skipped.
TEST(Deblock, StrengthLimits) {
  std::mt19937 rng = MakeRng(22);
  Plane p(40, 24, 3);
  for (size_t i = 0; i < p.buf.size(); ++i) p.buf.data()[i] = static_cast<uint8_t>(rng() % 40 + (i % 7) * 20);
  Plane single = p;
  kimgp_dbf8x8(single.buf.data(), 20, p.stride, p.w, p.h);
  EXPECT_EQ(single.buf.raw(), HorThenVer(p, 12));

  TestFrame frame(KIMGP_CS_YUV420, 40, 24, 3);
  frame.FillRandom(rng);
  frame.img.plane[2] = nullptr;
  const std::vector<uint8_t> before = frame.Snapshot();
  EXPECT_EQ(kimgp_dbf8x8_yuv(&frame.img, 16), KIMGP_ERR_ARGS);
  EXPECT_EQ(kimgp_dbf8x8_yuv(&frame.img, 0xFFFFFFFFu), KIMGP_ERR_ARGS);
  EXPECT_EQ(frame.Snapshot(), before);
  TestFrame want(frame);
  for (int i = 0; i < 2; ++i) {
    uint8_t* q = want.buffer(i).data();
    const kimgp_img& m = want.img;
    scalar::DeblockHor(q, m.stride[i], m.width[i], m.height[i], 15);
    scalar::DeblockVer(q, m.stride[i], m.width[i], m.height[i], 15);
  }
  ASSERT_EQ(kimgp_dbf8x8_yuv(&frame.img, 15), KIMGP_OK);
  EXPECT_EQ(FirstDifference(frame.Snapshot(), want.Snapshot()), "");
}

// Both passes against the scalar definition on every target, over random
// sizes, strides, contents and strengths (negative and wrapping ones too).
TEST(Deblock, VectorPassesMatchScalarOnEveryTarget) {
  std::mt19937 rng = MakeRng(23);
  const int32_t kStrengths[] = {0, 1, 4, 8, 12, 15, 100, -5, -16384, 32767, -32768, 70000};
  ForEachTarget([&](const std::string& target) {
    for (const Size2& s : TestSizes(rng, 30, 300, 60)) {
      for (bool hor : {true, false}) {
        const int32_t w = hor ? s.w : s.h + 10, h = hor ? s.h + 10 : s.w;
        Plane p(w, h, RandomPad(rng));
        const int mode = rng() % 3;  // random, blocky, smooth ramps
        for (int32_t y = 0; y < h; ++y) {
          for (int32_t x = 0; x < w; ++x) {
            p.at(x, y) = mode == 0   ? static_cast<uint8_t>(rng())
                         : mode == 1 ? static_cast<uint8_t>(((x >> 3) * 37 + (y >> 3) * 91) + rng() % 9)
                                     : static_cast<uint8_t>(x + 2 * y);
          }
        }
        const int32_t strength = kStrengths[rng() % 12];
        std::vector<uint8_t> want = p.buf.raw();
        uint8_t* q = want.data() + kGuardBytes;
        if (hor) {
          scalar::DeblockHor(q, p.stride, w, h, Low16(strength));
          kimgp_dbf8x8_h263_hor(p.buf.data(), strength, p.stride, w, h);
        } else {
          scalar::DeblockVer(q, p.stride, w, h, Low16(strength));
          kimgp_dbf8x8_h263_ver(p.buf.data(), strength, p.stride, w, h);
        }
        ASSERT_EQ(FirstDifference(p.buf.raw(), want), "")
            << target << (hor ? " hor " : " ver ") << w << "x" << h << " s=" << strength;
      }
    }
  });
}

// Strengths around the byte range (the ramp of |s >> 3| <= 160 reaches its
// top below 160 and stays there), on planes with strong edges.
TEST(Deblock, StrengthsBeyondBytesMatchScalarOnEveryTarget) {
  std::mt19937 rng = MakeRng(25);
  ForEachTarget([&](const std::string& target) {
    for (int32_t strength : {80, 159, 160, 255, 256, 1000, 16000, 16001}) {
      for (bool hor : {true, false}) {
        Plane p(hor ? 150 : 170, hor ? 170 : 150, 3);
        for (size_t i = 0; i < p.buf.size(); ++i) {
          p.buf.data()[i] = static_cast<uint8_t>((i / 3) % 2 ? rng() : rng() % 2 * 255);
        }
        std::vector<uint8_t> want = p.buf.raw();
        uint8_t* q = want.data() + kGuardBytes;
        if (hor) {
          scalar::DeblockHor(q, p.stride, p.w, p.h, Low16(strength));
          kimgp_dbf8x8_h263_hor(p.buf.data(), strength, p.stride, p.w, p.h);
        } else {
          scalar::DeblockVer(q, p.stride, p.w, p.h, Low16(strength));
          kimgp_dbf8x8_h263_ver(p.buf.data(), strength, p.stride, p.w, p.h);
        }
        ASSERT_EQ(FirstDifference(p.buf.raw(), want), "")
            << target << (hor ? " hor" : " ver") << " s=" << strength;
      }
    }
  });
}

// The plane entry (both passes, in strips) on every target against the two
// scalar passes one after the other.
TEST(Deblock, PlaneEntryMatchesTwoPassesOnEveryTarget) {
  std::mt19937 rng = MakeRng(24);
  ForEachTarget([&](const std::string& target) {
    for (const Size2& s : TestSizes(rng, 20, 300, 80)) {
      Plane p(s.w + 7, s.h + 9, RandomPad(rng));
      for (size_t i = 0; i < p.buf.size(); ++i) {
        p.buf.data()[i] = static_cast<uint8_t>(((i % p.stride) >> 3) * 29 + rng() % 12);
      }
      const int32_t strength = static_cast<int32_t>(rng() % 16);
      const std::vector<uint8_t> want = HorThenVer(p, static_cast<int16_t>(strength < 12 ? strength : 12));
      kimgp_dbf8x8(p.buf.data(), strength, p.stride, p.w, p.h);
      ASSERT_EQ(FirstDifference(p.buf.raw(), want), "") << target << " " << p.w << "x" << p.h;
    }
  });
}

}  // namespace
}  // namespace test
}  // namespace kelo
