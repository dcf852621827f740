#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "common/fill_rows.h"
#include "kcmn_mem.h"
#include "tests/support/guarded.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

TEST(AlignedAlloc, AlignedWithRawPointerBelow) {
  for (auto alloc : {kcmn_malloc_align32, kcmn_malloc_fast_align32}) {
    for (uint32_t size : {0u, 1u, 31u, 32u, 33u, 1000u, 65536u}) {
      auto* p = static_cast<uint8_t*>(alloc(size));
      ASSERT_NE(p, nullptr);
      EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 32, 0u);
      void* raw;
      memcpy(&raw, p - sizeof(void*), sizeof(void*));
      const ptrdiff_t gap = p - static_cast<uint8_t*>(raw);
      EXPECT_GE(gap, static_cast<ptrdiff_t>(sizeof(void*)));
      EXPECT_LE(gap, static_cast<ptrdiff_t>(sizeof(void*) + 31));
      memset(p, 0xCD, size);  // the sanitizer build checks the extent
      kcmn_mfree_align32(p);
    }
  }
  // Either free releases a block of either allocator; null does nothing.
  kcmn_mfree_fast_align32(kcmn_malloc_align32(10));
  kcmn_mfree_align32(kcmn_malloc_fast_align32(10));
  kcmn_mfree_align32(nullptr);
  kcmn_mfree_fast_align32(nullptr);
}

TEST(AlignedAlloc, ImpossibleSizeGivesNull) {
  if (sizeof(void*) == 4) {
    EXPECT_EQ(kcmn_malloc_align32(0xFFFFFFF0u), nullptr);
  }
}

TEST(BlockCopy, StepsAndEmptyRows) {
  std::vector<uint8_t> src(64);
  for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>(i);
  std::vector<uint8_t> dst(64, 0);
  kcmn_blk_mcpy(dst.data(), src.data(), 10, 7, 3, 4);
  for (int r = 0; r < 4; ++r) {
    for (int i = 0; i < 10; ++i) {
      EXPECT_EQ(dst[r * 10 + i], i < 3 ? src[r * 7 + i] : 0) << r << "," << i;
    }
  }
  std::vector<uint8_t> before = dst;
  kcmn_blk_mcpy(dst.data(), src.data(), 10, 7, 3, 0);
  kcmn_blk_mcpy(dst.data(), src.data(), 10, 7, 3, -2);
  EXPECT_EQ(dst, before);
  // Steps equal to the row length: one contiguous copy.
  kcmn_blk_mcpy(dst.data(), src.data(), 8, 8, 8, 8);
  EXPECT_EQ(dst, src);
}

// The bytes each fill routine writes, as its table defines them: pairs of
// (offset, length, byte-wise tail) over a buffer.
struct Span {
  size_t offset, length;
  bool low_byte_only;
};
using FillFn = void (*)(void*, uint32_t, int32_t);

std::vector<Span> Model(const std::string& name, int32_t size) {
  std::vector<Span> spans;
  if (name == "x128") {
    const size_t blocks = size <= 0 ? 1 : (static_cast<size_t>(size) + 127) / 128;
    spans.push_back({0, blocks * 128, false});
  } else if (name == "x64") {
    spans.push_back({0, static_cast<size_t>(size >> 7) * 128, false});
  } else if (name == "x64a" || name == "x32ax4") {
    const size_t g = name == "x64a" ? 64 : 32;
    const size_t bulk = static_cast<size_t>(size) / g * g;
    spans.push_back({0, bulk, false});
    spans.push_back({bulk, static_cast<size_t>(size) - bulk, true});
  } else if (name == "x32") {
    // Per block i: 8 bytes at 32i, 24 bytes at 32(i + 1) + 8.
    for (int32_t i = 0; i < (size >> 5); ++i) {
      spans.push_back({32u * i, 8, false});
      spans.push_back({32u * (i + 1) + 8, 24, false});
    }
  }
  return spans;
}

struct FillCase {
  const char* name;
  FillFn fn;
  int32_t min_size;
};

void PrintTo(const FillCase& c, std::ostream* os) { *os << c.name; }

class FillTest : public ::testing::TestWithParam<FillCase> {};

TEST_P(FillTest, WritesExactlyTheDefinedBytes) {
  const FillCase& c = GetParam();
  const uint32_t word = 0x11223344;
  const uint8_t pattern[4] = {0x44, 0x33, 0x22, 0x11};
  ForEachTarget([&](const std::string& target) {
    for (int32_t size = c.min_size; size < 700; size += 1 + size / 9) {
      SCOPED_TRACE(target + " size " + std::to_string(size));
      GuardedBuffer buf(1024);
      std::vector<uint8_t> want = buf.raw();
      for (const Span& s : Model(c.name, size)) {
        for (size_t i = s.offset; i < s.offset + s.length; ++i) {
          want[kGuardBytes + i] = s.low_byte_only ? 0x44 : pattern[i & 3];
        }
      }
      c.fn(buf.data(), word, size);
      ASSERT_EQ(FirstDifference(buf.raw(), want), "");
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Routines, FillTest,
                         ::testing::Values(FillCase{"x128", kcmn_mset_x128, -3},
                                           FillCase{"x64", kcmn_mset_x64, 128},
                                           FillCase{"x64a", kcmn_mset_x64a, 1},
                                           FillCase{"x32", kcmn_mset_x32, 32},
                                           FillCase{"x32ax4", kcmn_mset_x32ax4, 32}),
                         [](const auto& info) { return info.param.name; });

TEST(Fill, WorkedExamples) {
  GuardedBuffer buf(512);
  kcmn_mset_x128(buf.data(), 0x01010101, 100);
  EXPECT_EQ(buf.data()[127], 1);
  EXPECT_EQ(buf.data()[128], kGuardByte);
  kcmn_mset_x128(buf.data(), 0x02020202, 129);
  EXPECT_EQ(buf.data()[255], 2);
  EXPECT_EQ(buf.data()[256], kGuardByte);

  GuardedBuffer a(128);
  kcmn_mset_x64a(a.data(), 0x11223344, 100);
  for (int i = 0; i < 64; i += 4) {
    EXPECT_EQ(a.data()[i], 0x44);
    EXPECT_EQ(a.data()[i + 3], 0x11);
  }
  for (int i = 64; i < 100; ++i) EXPECT_EQ(a.data()[i], 0x44);
  EXPECT_EQ(a.data()[100], kGuardByte);
}

// Sizes that would never end write nothing (x64a, x64, x32) or only the
// first block (x32ax4).
TEST(Fill, UnsupportedSizesStop) {
  GuardedBuffer buf(64);
  const auto before = buf.raw();
  kcmn_mset_x64a(buf.data(), 7, 0);
  kcmn_mset_x64(buf.data(), 7, 127);
  kcmn_mset_x32(buf.data(), 7, 31);
  kcmn_mclr_x64(buf.data(), 63);
  EXPECT_EQ(buf.raw(), before);
  kcmn_mset_x32ax4(buf.data(), 0x09090909, 5);
  for (int i = 0; i < 32; ++i) EXPECT_EQ(buf.data()[i], 9);
  EXPECT_EQ(buf.data()[32], kGuardByte);
}

TEST(Fill, ClearCountsWords) {
  for (int32_t count : {64, 128, 320}) {
    GuardedBuffer buf(2048);
    memset(buf.data(), 0xFF, buf.size());
    kcmn_mclr_x64(buf.data(), count);
    for (size_t i = 0; i < buf.size(); ++i) {
      ASSERT_EQ(buf.data()[i], i < 4u * count ? 0 : 0xFF) << count << " " << i;
    }
    EXPECT_TRUE(buf.GuardsIntact());
  }
}

TEST(FillWord, VectorPathMatchesScalarOnEveryTarget) {
  ForEachTarget([&](const std::string& target) {
    for (size_t n = 0; n < 300; ++n) {
      GuardedBuffer got(n), want_buf(n);
      std::vector<uint8_t> want = want_buf.raw();
      scalar::FillWord(want.data() + kGuardBytes, 0xA1B2C3D4, n);
      FillWord(got.data(), 0xA1B2C3D4, n);
      ASSERT_EQ(FirstDifference(got.raw(), want), "") << target << " n=" << n;
    }
  });
}

TEST(Log2, Table) {
  const struct {
    uint32_t x;
    int32_t clz, floor, ceil;
  } rows[] = {{0, 32, -1, -1},        {1, 31, 0, 0},          {2, 30, 1, 1},
              {3, 30, 1, 2},          {4, 29, 2, 2},          {5, 29, 2, 3},
              {255, 24, 7, 8},        {256, 23, 8, 8},        {257, 23, 8, 9},
              {0x7FFFFFFF, 1, 30, 31}, {0x80000000u, 0, 31, 31},
              {0x80000001u, 0, 31, 32}, {0xFFFFFFFFu, 0, 31, 32}};
  for (const auto& r : rows) {
    EXPECT_EQ(kcmn_bsr_clz_in_code(r.x), r.clz) << r.x;
    EXPECT_EQ(kcmn_floor_log2(r.x), r.floor) << r.x;
    EXPECT_EQ(kcmn_ceil_log2(r.x), r.ceil) << r.x;
  }
  EXPECT_EQ(static_cast<uint32_t>(kcmn_ceil_log2(0)), 0xFFFFFFFFu);
}

}  // namespace
}  // namespace test
}  // namespace kelo
