#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <utility>
#include <vector>

#include "kcmn_bitstream.h"
#include "tests/support/guarded.h"

namespace kelo {
namespace test {
namespace {

constexpr uint32_t kFail = 0xFFFFFFFFu;

// Bit i of a byte stream; bits past `size` bytes are 0.
int StreamBit(const uint8_t* buf, size_t size, int64_t i, bool lsb_first) {
  if (i < 0 || static_cast<size_t>(i / 8) >= size) return 0;
  const int shift =
      lsb_first ? static_cast<int>(i % 8) : 7 - static_cast<int>(i % 8);
  return (buf[i / 8] >> shift) & 1;
}

// Bits [pos, pos + n) as a number: first bit most significant, or least
// significant for the other order.
uint32_t StreamBits(const uint8_t* buf, size_t size, int64_t pos, int n,
                    bool lsb_first) {
  uint64_t v = 0;
  for (int i = 0; i < n; ++i) {
    const uint64_t bit =
        static_cast<uint64_t>(StreamBit(buf, size, pos + i, lsb_first));
    v |= lsb_first ? bit << i : bit << (n - 1 - i);
  }
  return static_cast<uint32_t>(v);
}

// A reader over a guarded copy of `bytes`: a byte read past the end would
// bring in guard bits (0xA5) where zeros are expected.
struct Reader {
  explicit Reader(const std::vector<uint8_t>& bytes, bool lsb_first = false,
                  kcmn_bsr_refill_fn refill = nullptr)
      : mem(bytes.size()) {
    if (!bytes.empty()) memcpy(mem.data(), bytes.data(), bytes.size());
    if (refill == nullptr && lsb_first) refill = kcmn_bsr_le_flush;
    kcmn_bsr_init(&bsr, mem.data(), static_cast<uint32_t>(bytes.size()),
                  refill);
  }
  ptrdiff_t consumed() const { return bsr.cur - bsr.start; }
  GuardedBuffer mem;
  kcmn_bsr bsr;
};

std::vector<uint8_t> RandomBytes(std::mt19937& rng, size_t n) {
  std::vector<uint8_t> v(n);
  for (auto& b : v) b = static_cast<uint8_t>(rng());
  return v;
}

// ---------------------------------------------------------------- examples

TEST(BitReader, WorkedExampleMsbFirst) {
  Reader r({0xA5, 0x0F});
  EXPECT_EQ(kcmn_bsr_read(&r.bsr, 4), 0xAu);
  EXPECT_EQ(kcmn_bsr_read(&r.bsr, 8), 0x50u);
  EXPECT_EQ(kcmn_bsr_read(&r.bsr, 4), 0xFu);
  EXPECT_EQ(kcmn_bsr_read(&r.bsr, 1), kFail);
  EXPECT_EQ(r.bsr.cache, 0u);
  EXPECT_EQ(r.bsr.bits_left, 0);
}

TEST(BitReader, WorkedExampleLsbFirst) {
  Reader r({0xA5, 0x0F}, true);
  EXPECT_EQ(kcmn_bsr_le_read(&r.bsr, 4), 5u);
  EXPECT_EQ(kcmn_bsr_le_read(&r.bsr, 8), 0xFAu);
  EXPECT_EQ(kcmn_bsr_le_read(&r.bsr, 4), 0u);
  EXPECT_EQ(kcmn_bsr_le_read(&r.bsr, 1), kFail);
}

TEST(BitReader, InitLeavesBufferUnreadAndInstallsDefaultRefill) {
  const std::vector<uint8_t> bytes = {1, 2, 3};
  Reader r(bytes);
  EXPECT_EQ(r.bsr.refill, &kcmn_bsr_flush);
  EXPECT_EQ(r.bsr.cache, 0u);
  EXPECT_EQ(r.bsr.bits_left, 0);
  EXPECT_EQ(r.bsr.cur, r.mem.data());
  EXPECT_EQ(r.bsr.start, r.mem.data());
  EXPECT_EQ(r.bsr.last, r.mem.data() + 2);
  EXPECT_EQ(r.bsr.size, 3u);
  Reader le(bytes, true);
  EXPECT_EQ(le.bsr.refill, &kcmn_bsr_le_flush);
}

TEST(BitReader, ZeroAndFullWidthReads) {
  Reader r({0x12, 0x34, 0x56, 0x78, 0x9A});
  EXPECT_EQ(kcmn_bsr_read(&r.bsr, 0), 0u);  // empty cache: 0 >= 0, no refill
  EXPECT_EQ(r.consumed(), 0);
  EXPECT_EQ(kcmn_bsr_read(&r.bsr, 8), 0x12u);
  EXPECT_EQ(kcmn_bsr_read(&r.bsr, 0), 0u);
  EXPECT_EQ(r.bsr.bits_left, 24);
  EXPECT_EQ(r.bsr.cache, 0x34567800u);

  Reader full({0xDE, 0xAD, 0xBE, 0xEF});
  ASSERT_EQ(kcmn_bsr_flush(&full.bsr, 4), 0);
  EXPECT_EQ(kcmn_bsr_read(&full.bsr, 32), 0xDEADBEEFu);
  EXPECT_EQ(full.bsr.cache, 0u);
  EXPECT_EQ(full.bsr.bits_left, 0);
}

TEST(BitReader, ShortBufferRunsNegativeThenFails) {
  Reader r({0xAB, 0xCD, 0xEF});
  EXPECT_EQ(kcmn_bsr_read(&r.bsr, 32), 0xABCDEF00u);
  EXPECT_EQ(r.bsr.bits_left, -8);
  EXPECT_EQ(kcmn_bsr_read(&r.bsr, 1), kFail);
  EXPECT_EQ(r.bsr.bits_left, 0);
}

TEST(BitReader, PeekTakesLastBitsFromBuffer) {
  const std::vector<uint8_t> bytes = {0x81, 0x42, 0x24, 0x18, 0xFF, 0x00};
  Reader r(bytes);
  EXPECT_EQ(kcmn_bsr_read1(&r.bsr), 1u);
  ASSERT_EQ(r.bsr.bits_left, 31);
  const uint32_t want = StreamBits(bytes.data(), bytes.size(), 1, 32, false);
  EXPECT_EQ(kcmn_bsr_peek(&r.bsr, 32), want);
  EXPECT_EQ(r.bsr.bits_left, 31);  // no whole byte free: nothing loaded
  EXPECT_EQ(r.consumed(), 4);
  EXPECT_EQ(kcmn_bsr_read(&r.bsr, 32), want);
}

TEST(BitWriter, OneByteBufferTakesEightBits) {
  GuardedBuffer mem(1);
  kcmn_bsw bsw;
  static int calls;
  calls = 0;
  kcmn_bsw_init(&bsw, mem.data(), 1, [](kcmn_bsw*) { ++calls; });
  for (int i = 0; i < 8; ++i) EXPECT_EQ(kcmn_bsw_write1(&bsw, i & 1), 0);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(mem.data()[0], 0x55);
  EXPECT_EQ(kcmn_bsw_write1(&bsw, 1), -1);
  EXPECT_EQ(kcmn_bsw_write(&bsw, 1, 1), -1);
  EXPECT_EQ(kcmn_bsw_write(&bsw, 1, 0), -1);  // the end test comes first
  EXPECT_TRUE(mem.GuardsIntact());
}

TEST(BitWriter, EarlierByteContentShiftsUp) {
  GuardedBuffer mem(1);
  mem.data()[0] = 0xFF;
  kcmn_bsw bsw;
  kcmn_bsw_init(&bsw, mem.data(), 1, nullptr);
  EXPECT_EQ(kcmn_bsw_write(&bsw, 5, 3), 0);
  EXPECT_EQ(mem.data()[0], 0xFD);
  EXPECT_EQ(bsw.bits_free, 5);
}

// ------------------------------------------------- reads against a bit model

// Reading the stream with the default refills, modelled by bit position:
// refills load four bytes (fewer at the end) only when a read needs more bits
// than are cached; a read needing a refill when every byte is loaded fails and
// drops what was cached.
struct ReadModel {
  const std::vector<uint8_t>& bytes;
  bool lsb_first;
  int64_t pos = 0;     // stream bits consumed
  int64_t loaded = 0;  // bytes loaded
  int64_t bits_left() const { return 8 * loaded - pos; }

  uint32_t Read(int n) {
    if (bits_left() >= n) {
      const uint32_t v =
          StreamBits(bytes.data(), bytes.size(), pos, n, lsb_first);
      pos += n;
      return v;
    }
    const int64_t b = bits_left();
    const int64_t size = static_cast<int64_t>(bytes.size());
    if (loaded == size) {
      pos = 8 * loaded;
      return kFail;
    }
    loaded += std::min<int64_t>(4, size - loaded);
    const uint32_t v =
        StreamBits(bytes.data(), bytes.size(), pos, n, lsb_first);
    pos += n;
    // The least-significant-first reader empties itself when the refill's
    // share of the read is 32 bits, even if fewer were loaded.
    if (lsb_first && n - b == 32) pos = 8 * loaded;
    return v;
  }
};

class ReadsMatchBitModel : public testing::TestWithParam<bool> {};

// Every width 0..32 repeated to the end, then random widths, over random
// buffers of 0..13 bytes: values, counts and consumed bytes after every read.
TEST_P(ReadsMatchBitModel, RepeatedAndMixedWidths) {
  const bool lsb = GetParam();
  std::mt19937 rng(lsb ? 7 : 3);
  for (size_t size = 0; size <= 13; ++size) {
    for (int trial = 0; trial < 34 * 3; ++trial) {
      const auto bytes = RandomBytes(rng, size);
      Reader r(bytes, lsb);
      ReadModel m{bytes, lsb};
      const int fixed = trial % 34;  // 33: random widths
      for (int step = 0; step < 40; ++step) {
        const int n = fixed <= 32 ? fixed : static_cast<int>(rng() % 33);
        const uint32_t want = m.Read(n);
        const uint32_t got =
            lsb ? kcmn_bsr_le_read(&r.bsr, n) : kcmn_bsr_read(&r.bsr, n);
        ASSERT_EQ(got, want)
            << "size " << size << " step " << step << " n " << n;
        ASSERT_EQ(r.bsr.bits_left, m.bits_left())
            << "size " << size << " step " << step;
        ASSERT_EQ(r.consumed(), m.loaded);
        if (want == kFail && n > 0) break;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(BitOrder, ReadsMatchBitModel,
                         testing::Values(false, true),
                         [](const testing::TestParamInfo<bool>& p) {
                           return p.param ? "LsbFirst" : "MsbFirst";
                         });

// Single bits, skips and alignment interleaved with reads follow the stream.
TEST(BitReader, Read1SkipAndAlignFollowStream) {
  std::mt19937 rng(11);
  for (int trial = 0; trial < 200; ++trial) {
    const size_t size = 9 + rng() % 5;
    const auto bytes = RandomBytes(rng, size);
    Reader r(bytes);
    int64_t pos = 0;
    while (pos + 40 < static_cast<int64_t>(8 * size)) {
      switch (rng() % 4) {
        case 0:
          ASSERT_EQ(kcmn_bsr_read1(&r.bsr),
                    StreamBits(bytes.data(), size, pos++, 1, false));
          break;
        case 1: {
          uint8_t bit = 9;
          ASSERT_EQ(kcmn_bsr_read1_value(&r.bsr, &bit), 0);
          ASSERT_EQ(bit, StreamBits(bytes.data(), size, pos++, 1, false));
          break;
        }
        case 2: {
          const int n = static_cast<int>(rng() % 33);
          const uint32_t cache = kcmn_bsr_skip(&r.bsr, n);
          pos += n;
          const int left =
              r.bsr.bits_left;  // the cache word holds what is left
          if (left > 0) {
            ASSERT_EQ(cache >> (32 - left),
                      StreamBits(bytes.data(), size, pos, left, false));
          }
          break;
        }
        default:
          kcmn_bsr_skip_to_align8(&r.bsr);
          pos = (pos + 7) / 8 * 8;
      }
      ASSERT_EQ(8 * r.consumed() - r.bsr.bits_left, pos);
    }
    const int n = static_cast<int>(
        std::min<int64_t>(32, 8 * static_cast<int64_t>(size) - pos));
    ASSERT_EQ(kcmn_bsr_read(&r.bsr, n),
              StreamBits(bytes.data(), size, pos, n, false));
  }
}

TEST(BitReader, LsbFirstSkipAndAlign) {
  const std::vector<uint8_t> bytes = {0xF1, 0x2E, 0x93, 0x47, 0x5C};
  Reader r(bytes, true);
  EXPECT_EQ(kcmn_bsr_le_read(&r.bsr, 3), 1u);  // loads 0x47932EF1
  kcmn_bsr_le_skip_to_align8(&r.bsr);          // drops 5 bits
  EXPECT_EQ(r.bsr.bits_left, 24);
  kcmn_bsr_le_skip(&r.bsr, 4);
  EXPECT_EQ(kcmn_bsr_le_read(&r.bsr, 8), 0x32u);
  kcmn_bsr_le_skip(&r.bsr, 32);  // clears the cache, never refills
  EXPECT_EQ(r.bsr.cache, 0u);
  EXPECT_EQ(r.bsr.bits_left, 0);
  EXPECT_EQ(r.consumed(), 4);
  kcmn_bsr_le_skip(&r.bsr, 3);  // past what is cached: the count goes negative
  EXPECT_EQ(r.bsr.bits_left, -3);
  EXPECT_EQ(r.consumed(), 4);
}

// ------------------------------------------------------------ end of data

TEST(BitReader, Read1KeepsReturningZeroPastTheEnd) {
  Reader r({0xFF, 0xFF, 0xFF});
  EXPECT_EQ(kcmn_bsr_read(&r.bsr, 30), 0x3FFFFFC0u);
  ASSERT_EQ(r.bsr.bits_left, -6);
  for (int i = 1; i <= 10; ++i) {
    EXPECT_EQ(kcmn_bsr_read1(&r.bsr), 0u);
    uint8_t bit = 7;
    EXPECT_EQ(kcmn_bsr_read1_value(&r.bsr, &bit), 0);
    EXPECT_EQ(bit, 0);
    EXPECT_EQ(r.bsr.bits_left, -6 - 2 * i);
  }
  kcmn_bsr_skip_to_align8(&r.bsr);  // -26 & 7 = 6
  EXPECT_EQ(r.bsr.bits_left, -32);
  // Any read that needs a refill fails; afterwards the count is 0, so read1
  // refills and fails too.
  EXPECT_EQ(kcmn_bsr_read(&r.bsr, 0), kFail);
  EXPECT_EQ(r.bsr.bits_left, 0);
  EXPECT_EQ(kcmn_bsr_read1(&r.bsr), kFail);
  uint8_t bit = 7;
  EXPECT_EQ(kcmn_bsr_read1_value(&r.bsr, &bit), -1);
  EXPECT_EQ(bit, 7);
}

TEST(BitReader, FailuresOfEachOperation) {
  for (const uint8_t* buf : {static_cast<const uint8_t*>(nullptr),
                             reinterpret_cast<const uint8_t*>("x")}) {
    kcmn_bsr bsr;
    kcmn_bsr_init(&bsr, buf, 0, nullptr);
    EXPECT_EQ(kcmn_bsr_flush(&bsr, 4), -1);
    EXPECT_EQ(kcmn_bsr_le_flush(&bsr, 4), -1);
    EXPECT_EQ(kcmn_bsr_read(&bsr, 1), kFail);
    EXPECT_EQ(kcmn_bsr_le_read(&bsr, 1), kFail);
    EXPECT_EQ(kcmn_bsr_read1(&bsr), kFail);
    EXPECT_EQ(kcmn_bsr_skip(&bsr, 1), static_cast<uint32_t>(-1));
    EXPECT_EQ(kcmn_bsr_skip_peek(&bsr, 1, 8), 0u);
    EXPECT_EQ(kcmn_bsr_peek(&bsr, 8), 0u);
    EXPECT_EQ(kcmn_bsr_peek(&bsr, 32), 0u);
    EXPECT_EQ(bsr.cur, buf);
    EXPECT_EQ(bsr.bits_left, 0);
  }
}

// Counts outside the stated ranges follow the shift rule (the low byte of
// the amount, 32..255 giving 0) and leave defined states.
TEST(BitReader, OutOfRangeCounts) {
  const std::vector<uint8_t> bytes = {0x80, 0x11, 0x22, 0x33, 0x44, 0x55};
  {
    Reader r(bytes);  // 33 bits: the refill is consumed, nothing returned
    EXPECT_EQ(kcmn_bsr_read(&r.bsr, 33), 0u);
    EXPECT_EQ(r.bsr.bits_left, -1);
    EXPECT_EQ(r.bsr.cache, 0u);
  }
  {
    Reader r(bytes);  // -1 bits on an empty cache: no refill, count grows
    EXPECT_EQ(kcmn_bsr_read(&r.bsr, -1), 0u);
    EXPECT_EQ(r.bsr.bits_left, 1);
    EXPECT_EQ(r.consumed(), 0);
  }
  {
    Reader r(bytes);  // amounts count by their low byte
    ASSERT_EQ(kcmn_bsr_flush(&r.bsr, 4), 0);
    EXPECT_EQ(kcmn_bsr_peek(&r.bsr, 0), 0u);
    EXPECT_EQ(kcmn_bsr_skip(&r.bsr, -240), 0x22330000u);  // shift by 16
    EXPECT_EQ(r.bsr.bits_left, 272);
    // 32 - (-224) = 256 shifts right by 0; the cache shifts left by 32.
    EXPECT_EQ(kcmn_bsr_read(&r.bsr, -224), 0x22330000u);
    EXPECT_EQ(r.bsr.cache, 0u);
    EXPECT_EQ(r.bsr.bits_left, 496);
  }
  {
    Reader r(bytes);  // a refill of more than 4 bytes keeps the first four
    EXPECT_EQ(kcmn_bsr_flush(&r.bsr, 5), 0);
    EXPECT_EQ(r.bsr.cache, 0x80112233u);
    EXPECT_EQ(r.bsr.bits_left, 40);
    EXPECT_EQ(r.consumed(), 5);
    EXPECT_EQ(kcmn_bsr_le_flush(&r.bsr, 100), 0);  // only one byte left
    EXPECT_EQ(r.bsr.cache, 0x55u);
    EXPECT_EQ(r.bsr.bits_left, 8);
    EXPECT_EQ(kcmn_bsr_flush(&r.bsr, 0), -1);
  }
  {
    std::vector<uint8_t> many(40);
    for (size_t i = 0; i < many.size(); ++i)
      many[i] = static_cast<uint8_t>(i + 1);
    Reader r(many);
    EXPECT_EQ(kcmn_bsr_flush(&r.bsr, 1000), 0);
    EXPECT_EQ(r.bsr.cache, 0x01020304u);
    EXPECT_EQ(r.bsr.bits_left, 320);
    EXPECT_EQ(r.consumed(), 40);
  }
  {
    Reader r(bytes, true);
    EXPECT_EQ(kcmn_bsr_le_read(&r.bsr, 40), 0u);
    EXPECT_EQ(r.bsr.bits_left, -8);
    kcmn_bsr_le_skip_to_align8(&r.bsr);  // -8 & 7 = 0
    EXPECT_EQ(r.bsr.bits_left, -8);
    kcmn_bsr_le_skip(&r.bsr, 3);
    kcmn_bsr_le_skip_to_align8(&r.bsr);  // -11 & 7 = 5
    EXPECT_EQ(r.bsr.bits_left, -16);
  }
}

// ------------------------------------------------------------ peeks

// Peeks of every width at every position of a random stream give the next
// bits (zeros past the end) and leave the stream unchanged.
TEST(BitReader, PeekAndSkipPeekMatchStream) {
  std::mt19937 rng(5);
  for (size_t size = 0; size <= 13; ++size) {
    const auto bytes = RandomBytes(rng, size);
    for (int64_t pos = 0; pos <= static_cast<int64_t>(8 * size);
         pos += 1 + rng() % 3) {
      for (int n = 1; n <= 32; ++n) {
        Reader r(bytes);
        int64_t at = 0;
        while (at < pos) {  // reach pos through reads of random widths
          const int w =
              static_cast<int>(std::min<int64_t>(pos - at, 1 + rng() % 32));
          kcmn_bsr_read(&r.bsr, w);
          at += w;
        }
        const uint32_t want = StreamBits(bytes.data(), size, pos, n, false);
        ASSERT_EQ(kcmn_bsr_peek(&r.bsr, n), want)
            << size << " " << pos << " " << n;
        ASSERT_EQ(kcmn_bsr_peek(&r.bsr, n), want);
        ASSERT_EQ(8 * r.consumed() - r.bsr.bits_left, pos);
        const int s = static_cast<int>(rng() % 33);
        const bool skip_fits =
            r.bsr.bits_left >= s || r.consumed() < static_cast<ptrdiff_t>(size);
        const uint32_t after = kcmn_bsr_skip_peek(&r.bsr, s, n);
        if (skip_fits) {
          ASSERT_EQ(after, StreamBits(bytes.data(), size, pos + s, n, false))
              << size << " " << pos << " " << n << " skip " << s;
        } else {
          ASSERT_EQ(after, 0u);
        }
      }
    }
  }
}

// The peek tops up only whole free bytes: with 9 bits cached it asks for 2.
TEST(BitReader, PeekRefillsWholeFreeBytes) {
  static std::vector<int32_t> counts;
  counts.clear();
  const auto logging = [](kcmn_bsr* bsr, int32_t count) {
    counts.push_back(count);
    return kcmn_bsr_flush(bsr, count);
  };
  const std::vector<uint8_t> bytes = {0x12, 0x34, 0x56, 0x78,
                                      0x9A, 0xBC, 0xDE, 0xF0};
  Reader r(bytes, false, logging);
  EXPECT_EQ(kcmn_bsr_read(&r.bsr, 23), 0x12345678u >> 9);
  const uint32_t next = StreamBits(bytes.data(), bytes.size(), 23, 32, false);
  EXPECT_EQ(kcmn_bsr_peek(&r.bsr, 32), next);  // 9 + 16 cached, 7 direct
  EXPECT_EQ(r.bsr.bits_left, 25);
  EXPECT_EQ(r.consumed(), 6);
  EXPECT_EQ(kcmn_bsr_peek(&r.bsr, 25), next >> 7);  // no refill
  EXPECT_EQ(kcmn_bsr_read(&r.bsr, 1), next >> 31);
  EXPECT_EQ(kcmn_bsr_peek(&r.bsr, 32),  // 24 cached: one byte
            StreamBits(bytes.data(), bytes.size(), 24, 32, false));
  EXPECT_EQ(kcmn_bsr_read(&r.bsr, 1), (next >> 30) & 1);
  EXPECT_EQ(kcmn_bsr_peek(&r.bsr, 32),  // 31 cached: no whole byte free
            StreamBits(bytes.data(), bytes.size(), 25, 32, false));
  EXPECT_EQ(counts, (std::vector<int32_t>{4, 2, 1}));
}

// ----------------------------------------------------------- custom refill

// A refill from another source, once per read that runs out, with count 4;
// its non-zero status reaches each operation's failure result.
TEST(BitReader, CustomRefillIsCalledOncePerRead) {
  static int calls;
  static int32_t status;
  calls = 0;
  status = 0;
  const auto constant = [](kcmn_bsr* bsr, int32_t count) -> int32_t {
    ++calls;
    EXPECT_EQ(count, 4);
    if (status != 0) return status;
    bsr->cache = 0xC0DE0000u;  // two bytes per refill
    bsr->bits_left = 16;
    return 0;
  };
  kcmn_bsr bsr;
  kcmn_bsr_init(&bsr, nullptr, 0, constant);
  EXPECT_EQ(kcmn_bsr_read(&bsr, 12), 0xC0Du);
  EXPECT_EQ(kcmn_bsr_read(&bsr, 12), 0xEC0u);  // 4 old bits, 8 new
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(kcmn_bsr_read(&bsr, 32), 0xDEC0DE00u);  // one refill: short read
  EXPECT_EQ(calls, 3);
  EXPECT_EQ(bsr.bits_left, -8);
  EXPECT_EQ(kcmn_bsr_read1(&bsr), 0u);  // no refill below zero
  EXPECT_EQ(calls, 3);

  status = 7;
  kcmn_bsr_init(&bsr, nullptr, 0, constant);
  EXPECT_EQ(kcmn_bsr_read(&bsr, 1), kFail);
  EXPECT_EQ(kcmn_bsr_le_read(&bsr, 1), kFail);
  EXPECT_EQ(kcmn_bsr_read1(&bsr), kFail);
  uint8_t bit = 3;
  EXPECT_EQ(kcmn_bsr_read1_value(&bsr, &bit), -1);
  EXPECT_EQ(bit, 3);
  EXPECT_EQ(kcmn_bsr_skip(&bsr, 1), 7u);
  EXPECT_EQ(kcmn_bsr_skip_peek(&bsr, 1, 4), 0u);
  EXPECT_EQ(calls, 3 + 6);
}

// ------------------------------------------------------------ writer

struct Writer {
  explicit Writer(size_t size, uint8_t prefill = 0) : mem(size) {
    memset(mem.data(), prefill, size);
    kcmn_bsw_init(&bsw, mem.data(), static_cast<uint32_t>(size), OnByte);
    completed.clear();
  }
  static void OnByte(kcmn_bsw* bsw) {
    EXPECT_EQ(bsw->bits_free, 0);
    completed.push_back(bsw->cur - bsw->start);
  }
  GuardedBuffer mem;
  kcmn_bsw bsw;
  static std::vector<ptrdiff_t> completed;
};
std::vector<ptrdiff_t> Writer::completed;

// A random bit string written in random pieces over pre-filled bytes: whole
// bytes hold exactly their bits, the partial byte its bits below the shifted
// fill, later bytes and the guards stay as they were.
TEST(BitWriter, ContentOverPrefilledBytes) {
  std::mt19937 rng(9);
  for (int trial = 0; trial < 500; ++trial) {
    const size_t size = 1 + rng() % 12;
    const uint8_t fill = static_cast<uint8_t>(rng());
    Writer w(size, fill);
    std::vector<int> bits;
    while (bits.size() + 32 <= 8 * size) {
      const int n = static_cast<int>(rng() % 34);  // 0..33: 0 writes nothing
      const uint32_t value = static_cast<uint32_t>(rng());
      if (n == 33) {
        ASSERT_EQ(kcmn_bsw_write1(&w.bsw, value), 0);
        bits.push_back(value & 1);
        continue;
      }
      ASSERT_EQ(kcmn_bsw_write(&w.bsw, value, n), 0);
      for (int i = n - 1; i >= 0; --i) bits.push_back((value >> i) & 1);
    }
    const size_t whole = bits.size() / 8, part = bits.size() % 8;
    for (size_t i = 0; i < size; ++i) {
      unsigned want = fill;
      if (i < whole || (i == whole && part != 0)) {
        const size_t nbits = i < whole ? 8 : part;
        for (size_t j = 0; j < nbits; ++j) want = (want << 1) | bits[8 * i + j];
        want &= 0xFF;
      }
      ASSERT_EQ(w.mem.data()[i], want) << "trial " << trial << " byte " << i;
    }
    ASSERT_TRUE(w.mem.GuardsIntact());
    ASSERT_EQ(w.bsw.cur - w.bsw.start, static_cast<ptrdiff_t>(whole));
    ASSERT_EQ(w.bsw.bits_free, static_cast<int32_t>(8 - part));
    ASSERT_EQ(Writer::completed.size(), whole);
    for (size_t i = 0; i < whole; ++i)
      ASSERT_EQ(Writer::completed[i], static_cast<ptrdiff_t>(i));
  }
}

TEST(BitWriter, FullWidthWriteAndNothingForNonPositiveCounts) {
  Writer w(6, 0x3C);
  EXPECT_EQ(kcmn_bsw_write(&w.bsw, 0x12345678u, 0), 0);
  EXPECT_EQ(kcmn_bsw_write(&w.bsw, 0x12345678u, -5), 0);
  EXPECT_EQ(w.mem.data()[0], 0x3C);
  EXPECT_EQ(kcmn_bsw_write(&w.bsw, 0x12345678u, 32), 0);
  EXPECT_EQ(Writer::completed, (std::vector<ptrdiff_t>{0, 1, 2, 3}));
  EXPECT_EQ(w.bsw.cur, w.mem.data() + 4);
  EXPECT_EQ(w.bsw.bits_free, 8);
  const uint8_t want[] = {0x12, 0x34, 0x56, 0x78, 0x3C, 0x3C};
  EXPECT_EQ(memcmp(w.mem.data(), want, 6), 0);
  // Past 32 the value is shifted out entirely: 40 zero bits.
  Writer wide(6, 0x3C);
  EXPECT_EQ(kcmn_bsw_write(&wide.bsw, 0xFFFFFFFFu, 40), 0);
  EXPECT_EQ(wide.bsw.cur, wide.mem.data() + 5);
  const uint8_t zeros[] = {0, 0, 0, 0, 0, 0x3C};
  EXPECT_EQ(memcmp(wide.mem.data(), zeros, 6), 0);
}

// Starting on the last byte one call may run four bytes past it, and no more;
// the next call is refused.
TEST(BitWriter, OneCallMayRunFourBytesPastTheEnd) {
  Writer w(2);
  ASSERT_EQ(kcmn_bsw_write(&w.bsw, 0, 15), 0);  // 1 bit free in the last byte
  EXPECT_EQ(kcmn_bsw_write(&w.bsw, 0xFFFFFFFEu, 32), 0);
  const uint8_t* after = w.mem.data() + 2;
  for (int i = 0; i < 3; ++i) EXPECT_EQ(after[i], 0xFF) << i;
  EXPECT_EQ(after[3], static_cast<uint8_t>((kGuardByte << 7) | 0x7E));
  EXPECT_EQ(after[4], kGuardByte);
  EXPECT_EQ(w.mem.data()[1], 1);
  EXPECT_EQ(w.bsw.cur, w.mem.data() + 5);
  EXPECT_EQ(w.bsw.bits_free, 1);
  EXPECT_EQ(Writer::completed, (std::vector<ptrdiff_t>{0, 1, 2, 3, 4}));
  EXPECT_EQ(kcmn_bsw_write(&w.bsw, 1, 1), -1);
  EXPECT_EQ(kcmn_bsw_write1(&w.bsw, 1), -1);
}

TEST(BitWriter, EmptyBufferRefusesEveryWrite) {
  GuardedBuffer empty(0);
  for (uint8_t* buf : {static_cast<uint8_t*>(nullptr), empty.data()}) {
    kcmn_bsw bsw;
    kcmn_bsw_init(&bsw, buf, 0, nullptr);
    EXPECT_EQ(kcmn_bsw_write1(&bsw, 1), -1);
    EXPECT_EQ(kcmn_bsw_write(&bsw, 1, 8), -1);
  }
  EXPECT_TRUE(empty.GuardsIntact());
}

// Written pieces read back with the same widths, in the most-significant-
// first order; the last partial byte padded by the writer's caller.
TEST(BitWriter, RoundTripThroughReader) {
  std::mt19937 rng(13);
  for (int trial = 0; trial < 300; ++trial) {
    const size_t size = 4 + rng() % 40;
    Writer w(size + 4);
    std::vector<std::pair<uint32_t, int>> pieces;
    int64_t total = 0;
    while (total + 32 <= static_cast<int64_t>(8 * size)) {
      const int n = 1 + static_cast<int>(rng() % 32);
      const uint32_t value =
          n == 32 ? static_cast<uint32_t>(rng())
                  : static_cast<uint32_t>(rng()) & ((1u << n) - 1);
      ASSERT_EQ(kcmn_bsw_write(&w.bsw, value, n), 0);
      pieces.push_back({value, n});
      total += n;
    }
    if (w.bsw.bits_free != 8) kcmn_bsw_write(&w.bsw, 0, w.bsw.bits_free);
    kcmn_bsr bsr;
    kcmn_bsr_init(&bsr, w.mem.data(),
                  static_cast<uint32_t>(w.bsw.cur - w.bsw.start), nullptr);
    for (const auto& p : pieces) {
      if (p.second == 1) {
        ASSERT_EQ(kcmn_bsr_read1(&bsr), p.first);
      } else {
        ASSERT_EQ(kcmn_bsr_read(&bsr, p.second), p.first);
      }
    }
  }
}

}  // namespace
}  // namespace test
}  // namespace kelo
