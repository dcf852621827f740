#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "imgp/core/copy_rows.h"
#include "kimgp_copy.h"
#include "tests/support/guarded.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

using CopyFn = void (*)(const void*, int32_t, int32_t, int32_t, int32_t, void*);

struct Primitive {
  const char* name;
  CopyFn fn;
  int bytes;  // per sample
};

void PrintTo(const Primitive& p, std::ostream* os) { *os << p.name; }

const Primitive kPrimitives[] = {{"8b", kimgp_cpy_8b, 1},
                                 {"16b", kimgp_cpy_16b, 2},
                                 {"24b", kimgp_cpy_24b, 3},
                                 {"32b", kimgp_cpy_32b, 4}};

// What a primitive must leave in dst: whole-plane copies when the strides
// match the row, otherwise rows; the 16-bit primitive counts halved strides
// as packed and rounds row strides down to even.
void ExpectPrimitive(const Primitive& p, const uint8_t* src, int32_t w,
                     int32_t h, int32_t ss, int32_t ds, uint8_t* dst) {
  const int64_t row = int64_t{w} * p.bytes;
  if (p.bytes == 2) {
    if (ss / 2 == w && ds / 2 == w) {
      ReferenceCopyRows(src, 0, dst, 0, row * h, h > 0 && w > 0 ? 1 : 0);
    } else {
      ReferenceCopyRows(src, ss & ~1, dst, ds & ~1, row, h);
    }
    return;
  }
  ReferenceCopyRows(src, ss, dst, ds, row, h);
}

class PrimitiveTest : public ::testing::TestWithParam<Primitive> {};

// Every size class and stride combination, on every vector target, with the
// destination's row padding and guard bands checked byte for byte.
TEST_P(PrimitiveTest, MatchesRowCopyOnEveryTarget) {
  const Primitive& p = GetParam();
  std::mt19937 rng = MakeRng(p.bytes);
  ForEachTarget([&](const std::string& target) {
    for (const Size2& s : TestSizes(rng, 40)) {
      const int32_t row = s.w * p.bytes;
      const int32_t ss = row + RandomPad(rng);
      const int32_t ds = row + RandomPad(rng);
      SCOPED_TRACE(target + " " + std::to_string(s.w) + "x" +
                   std::to_string(s.h) + " ss=" + std::to_string(ss) +
                   " ds=" + std::to_string(ds));
      GuardedBuffer src(static_cast<size_t>(ss) * s.h);
      GuardedBuffer dst(static_cast<size_t>(ds) * s.h);
      for (size_t i = 0; i < src.size(); ++i) src.data()[i] = static_cast<uint8_t>(rng());
      for (size_t i = 0; i < dst.size(); ++i) dst.data()[i] = static_cast<uint8_t>(rng());
      const std::vector<uint8_t> src_before = src.raw();
      std::vector<uint8_t> want = dst.raw();
      ExpectPrimitive(p, src.data(), s.w, s.h, ss, ds, want.data() + kGuardBytes);
      p.fn(src.data(), s.w, s.h, ss, ds, dst.data());
      ASSERT_EQ(FirstDifference(dst.raw(), want), "");
      ASSERT_EQ(src.raw(), src_before);
    }
  });
}

TEST_P(PrimitiveTest, EmptyPlanesWriteNothing) {
  const Primitive& p = GetParam();
  GuardedBuffer src(64), dst(64);
  const std::vector<uint8_t> before = dst.raw();
  for (int32_t h : {0, -1, -5}) p.fn(src.data(), 4, h, 16, 16, dst.data());
  for (int32_t w : {0, -3}) p.fn(src.data(), w, 2, 16, 16, dst.data());
  EXPECT_EQ(dst.raw(), before);
}

INSTANTIATE_TEST_SUITE_P(Widths, PrimitiveTest, ::testing::ValuesIn(kPrimitives),
                         [](const auto& info) { return info.param.name; });

// A source stride of 2w + 1 with a padded destination advances by 2w.
TEST(Copy16b, OddSourceStrideAdvancesByEvenStride) {
  const int32_t w = 3, h = 3, ss = 2 * w + 1, ds = 2 * w + 4;
  std::vector<uint8_t> src(ss * h);
  for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>(i);
  std::vector<uint8_t> dst(ds * h, 0xEE);
  kimgp_cpy_16b(src.data(), w, h, ss, ds, dst.data());
  const std::vector<uint8_t> want = {0,  1,  2,  3,  4,  5,  0xEE, 0xEE, 0xEE, 0xEE,
                                     6,  7,  8,  9,  10, 11, 0xEE, 0xEE, 0xEE, 0xEE,
                                     12, 13, 14, 15, 16, 17, 0xEE, 0xEE, 0xEE, 0xEE};
  EXPECT_EQ(dst, want);
}

TEST(CopyBytes, VectorPathMatchesScalarOnEveryTarget) {
  std::mt19937 rng = MakeRng(99);
  ForEachTarget([&](const std::string& target) {
    // Short runs of every length class, and runs of whole planes (the x86
    // string move from 64 KiB on).
    std::vector<size_t> sizes;
    for (size_t n = 0; n < 700; n += 1 + n / 16) sizes.push_back(n);
    for (size_t n : {size_t(65535), size_t(65536), size_t(200003)}) sizes.push_back(n);
    for (size_t n : sizes) {
      for (size_t misalign : {0, 1, 3}) {
        SCOPED_TRACE(target + " n=" + std::to_string(n));
        GuardedBuffer src(n + 8), got(n + 8);
        for (size_t i = 0; i < src.size(); ++i) src.data()[i] = static_cast<uint8_t>(rng());
        std::vector<uint8_t> want = got.raw();
        scalar::CopyBytes(src.data() + misalign, want.data() + kGuardBytes + misalign, n);
        CopyBytes(src.data() + misalign, got.data() + misalign, n);
        ASSERT_EQ(FirstDifference(got.raw(), want), "");
      }
    }
  });
}

// The copy of a whole image: which planes, with which primitive.
void ExpectImageCopy(const TestFrame& src, TestFrame& want) {
  const kimgp_img& s = src.img;
  const int32_t cs = s.cs;
  auto rows = [&](int i, int bytes) {
    if (i >= src.planes()) return;  // an unset plane copies nothing
    const Primitive& p = kPrimitives[bytes - 1];
    ExpectPrimitive(p, src.buffer(i).data(), s.width[i], s.height[i], s.stride[i],
                    want.img.stride[i], want.buffer(i).data());
  };
  if (cs >= 200 && cs <= 299) {
    rows(0, 2);
  } else if (cs == KIMGP_CS_NV12) {
    rows(0, 1);
    rows(1, 2);
  } else if (cs == KIMGP_CS_YUV400) {
    rows(0, 1);
  } else {
    for (int i = 0; i < 3; ++i) rows(i, 1);
  }
}

int32_t ExpectedStatus(int32_t cs) {
  if (cs > 99) return (cs >= 200 && cs <= 299) ? 0 : -3;
  return cs == KIMGP_CS_T64X32 ? -3 : 0;
}

class ImageCopyTest : public ::testing::TestWithParam<int32_t> {};

// Every code: the status by range, the planes copied, and on a refusal not a
// byte written.
TEST_P(ImageCopyTest, StatusAndPlanesByCode) {
  const int32_t cs = GetParam();
  std::mt19937 rng = MakeRng(static_cast<uint32_t>(cs));
  for (const Size2& s : TestSizes(rng, 4, 90, 9)) {
    TestFrame src(cs, s.w, s.h, RandomPad(rng));
    TestFrame dst(cs, s.w, s.h, RandomPad(rng));
    src.FillRandom(rng);
    dst.FillRandom(rng);
    TestFrame want(dst);
    if (ExpectedStatus(cs) == 0) ExpectImageCopy(src, want);
    EXPECT_EQ(kimgp_cpy(&src.img, &dst.img), ExpectedStatus(cs));
    ASSERT_EQ(FirstDifference(dst.Snapshot(), want.Snapshot()), "")
        << "code " << cs << " size " << s.w << "x" << s.h;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Codes, ImageCopyTest,
    ::testing::Values(-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15,
                      99, 100, 101, 102, 199, 200, 201, 202, 299, 300, 399, 400,
                      401, 402, 500, 501, 502, 503, 504, 599, 600, 601, 602),
    [](const auto& info) {
      return (info.param < 0 ? "minus" : "cs") + std::to_string(std::abs(info.param));
    });

TEST(ImageCopy, DifferentCodesAreRefusedUntouched) {
  const int32_t pairs[][2] = {{1, 4}, {6, 7}, {200, 201}, {0, 1}, {500, 501}};
  for (const auto& pr : pairs) {
    TestFrame src(pr[0], 16, 8), dst(pr[1], 16, 8);
    const auto before = dst.Snapshot();
    EXPECT_EQ(kimgp_cpy(&src.img, &dst.img), -1);
    EXPECT_EQ(dst.Snapshot(), before);
  }
}

// NV21 is copied as three byte planes: a chroma plane described in pairs has
// only its first half copied, and plane 2 is copied if it is set.
TEST(ImageCopy, Nv21ChromaIsCopiedAsBytes) {
  std::mt19937 rng = MakeRng(21);
  TestFrame src(KIMGP_CS_NV21, 8, 4), dst(KIMGP_CS_NV21, 8, 4, 0, 0);
  src.FillRandom(rng);
  ASSERT_EQ(src.img.width[1], 4);  // pairs
  ASSERT_EQ(kimgp_cpy(&src.img, &dst.img), 0);
  for (int r = 0; r < 2; ++r) {
    const uint8_t* s = src.buffer(1).data() + r * src.img.stride[1];
    const uint8_t* d = dst.buffer(1).data() + r * dst.img.stride[1];
    EXPECT_EQ(memcmp(s, d, 4), 0);
    for (int i = 4; i < 8; ++i) EXPECT_EQ(d[i], 0);
  }
  // Described with its byte width, the whole chroma plane is copied.
  src.img.width[1] = 8;
  ASSERT_EQ(kimgp_cpy(&src.img, &dst.img), 0);
  EXPECT_EQ(memcmp(src.buffer(1).data(), dst.buffer(1).data(), 16), 0);
  EXPECT_TRUE(dst.GuardsIntact());
}

// Only the source's heights count; the destination's are not read.
TEST(ImageCopy, SourceHeightDecides) {
  std::mt19937 rng = MakeRng(5);
  TestFrame src(KIMGP_CS_RGB565, 10, 3), dst(KIMGP_CS_RGB565, 10, 6, 0, 0x11);
  src.FillRandom(rng);
  dst.img.height[0] = 1;
  ASSERT_EQ(kimgp_cpy(&src.img, &dst.img), 0);
  const uint8_t* d = dst.buffer(0).data();
  EXPECT_EQ(memcmp(src.buffer(0).data(), d, 60), 0);
  for (int i = 60; i < 120; ++i) ASSERT_EQ(d[i], 0x11);
}

}  // namespace
}  // namespace test
}  // namespace kelo
