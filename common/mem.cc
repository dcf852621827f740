// Aligned allocation, strided copy, fixed-granularity fills and log2.
#include "common/internal/fault.h"
#include "common/internal/simd.h"

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "common/mem.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include <cstring>

#include "common/fill_rows.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

void FillWordVec(uint8_t* dst, uint32_t word, size_t n) {
  // The word's bytes in memory order, so that the lanes store little-endian
  // bytes whatever the host order.
  uint8_t bytes[4];
  for (int i = 0; i < 4; ++i) bytes[i] = static_cast<uint8_t>(word >> (8 * i));
  uint32_t lane;
  memcpy(&lane, bytes, 4);
  const hn::ScalableTag<uint8_t> d8;
  const hn::Repartition<uint32_t, decltype(d8)> d32;
  const auto v = hn::BitCast(d8, hn::Set(d32, lane));
  const size_t N = hn::Lanes(d8);
  size_t i = 0;
  // A vector shorter than the word (the one-lane fallback) would shift the
  // pattern's phase; such targets use the scalar loop.
  if (N % 4 != 0) return scalar::FillWord(dst, word, n);
  if (n >= 2 * N) {
    for (; i <= n - 2 * N; i += 2 * N) {
      hn::StoreU(v, d8, dst + i);
      hn::StoreU(v, d8, dst + i + N);
    }
  }
  if (n >= N) {
    for (; i <= n - N; i += N) hn::StoreU(v, d8, dst + i);
  }
  // N is a multiple of 4, so the tail starts on the word's lowest byte.
  scalar::FillWord(dst + i, word, n - i);
}

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_HAVE_HWY

#if !KELO_HAVE_HWY || HWY_ONCE
#include <cstdlib>
#include <cstring>

#include "common/fill_rows.h"
#include "common/internal/api.h"
#include "kcmn_mem.h"

namespace kelo {

KELO_VEC_EXPORT(FillWordVec);

void FillWord(uint8_t* dst, uint32_t word, size_t n) {
  KELO_VEC_CALL(FillWordVec, scalar::FillWord)(dst, word, n);
}

namespace {

constexpr size_t kSlot = sizeof(void*);

// size + 32 + one pointer slot; the aligned address leaves at least the slot
// below it and at least size bytes after it. On 32-bit targets that is
// size + 36 and (raw + 35) rounded down to 32.
void* MallocAlign32(uint32_t size) {
  const uint64_t total = uint64_t{size} + 32 + kSlot;
  if (total > SIZE_MAX) return nullptr;
  auto* raw = static_cast<uint8_t*>(HeapAlloc(static_cast<size_t>(total)));
  if (raw == nullptr) return nullptr;
  const uintptr_t aligned =
      (reinterpret_cast<uintptr_t>(raw) + kSlot + 31) & ~uintptr_t{31};
  auto* out = raw + (aligned - reinterpret_cast<uintptr_t>(raw));
  memcpy(out - kSlot, &raw, kSlot);
  return out;
}

void MfreeAlign32(void* ptr) {
  if (ptr == nullptr) return;
  void* raw;
  memcpy(&raw, static_cast<uint8_t*>(ptr) - kSlot, kSlot);
  free(raw);
}

uint8_t* Bytes(void* p) { return static_cast<uint8_t*>(p); }

// The fill word's lowest byte, used by the byte-wise tails.
uint8_t LowByte(uint32_t word) { return static_cast<uint8_t>(word); }

}  // namespace
}  // namespace kelo

using kelo::Bytes;
using kelo::FillWord;

KELO_EXPORT void* kcmn_malloc_align32(uint32_t size) {
  return kelo::MallocAlign32(size);
}
KELO_EXPORT void kcmn_mfree_align32(void* ptr) { kelo::MfreeAlign32(ptr); }
KELO_EXPORT void* kcmn_malloc_fast_align32(uint32_t size) {
  return kelo::MallocAlign32(size);
}
KELO_EXPORT void kcmn_mfree_fast_align32(void* ptr) {
  kelo::MfreeAlign32(ptr);
}

KELO_EXPORT void kcmn_blk_mcpy(void* dst, const void* src, int32_t dst_step,
                               int32_t src_step, int32_t row_bytes,
                               int32_t rows) {
  auto* d = Bytes(dst);
  const auto* s = static_cast<const uint8_t*>(src);
  for (int32_t r = 0; r < rows; ++r) {
    if (row_bytes > 0) memcpy(d, s, static_cast<size_t>(row_bytes));
    d += dst_step;
    s += src_step;
  }
}

// Stores 128-byte blocks, testing the remaining size after each store.
KELO_EXPORT void kcmn_mset_x128(void* dst, uint32_t word, int32_t size) {
  const int64_t blocks = size <= 0 ? 1 : (int64_t{size} + 127) / 128;
  FillWord(Bytes(dst), word, static_cast<size_t>(blocks * 128));
}

// size >> 7 blocks of 128 bytes. A count of 0 would never end in the
// original loop; it writes nothing here.
KELO_EXPORT void kcmn_mset_x64(void* dst, uint32_t word, int32_t size) {
  const int32_t blocks = size >> 7;
  if (blocks <= 0) return;
  FillWord(Bytes(dst), word, static_cast<size_t>(blocks) * 128);
}

// 64-byte blocks, then the remainder with the lowest byte only.
KELO_EXPORT void kcmn_mset_x64a(void* dst, uint32_t word, int32_t size) {
  if (size <= 0) return;
  const size_t n = static_cast<size_t>(size);
  const size_t bulk = n & ~size_t{63};
  FillWord(Bytes(dst), word, bulk);
  memset(Bytes(dst) + bulk, kelo::LowByte(word), n - bulk);
}

// Per block: 8 bytes at its start, then 24 bytes at offsets 8..31 of the next
// block. Together: bytes 0-7 of block 0, every byte of blocks 1 .. n-1, and
// bytes 8-31 of block n.
KELO_EXPORT void kcmn_mset_x32(void* dst, uint32_t word, int32_t size) {
  const int32_t blocks = size >> 5;
  if (blocks <= 0) return;
  auto* d = Bytes(dst);
  FillWord(d, word, 8);
  FillWord(d + 32, word, static_cast<size_t>(blocks - 1) * 32);
  FillWord(d + static_cast<size_t>(blocks) * 32 + 8, word, 24);
}

// One 32-byte block first, more while 32 bytes remain, then the remainder
// with the lowest byte only.
KELO_EXPORT void kcmn_mset_x32ax4(void* dst, uint32_t word, int32_t size) {
  auto* d = Bytes(dst);
  if (size < 32) {
    FillWord(d, word, 32);
    return;
  }
  const size_t n = static_cast<size_t>(size);
  const size_t bulk = n & ~size_t{31};
  FillWord(d, word, bulk);
  memset(d + bulk, kelo::LowByte(word), n - bulk);
}

// Passes of 64 zero words (256 bytes) while 64 words remain.
KELO_EXPORT void kcmn_mclr_x64(void* dst, int32_t count) {
  if (count < 64) return;
  FillWord(Bytes(dst), 0, static_cast<size_t>(count / 64) * 256);
}

KELO_EXPORT int32_t kcmn_bsr_clz_in_code(uint32_t x) {
  return x == 0 ? 32 : __builtin_clz(x);
}

KELO_EXPORT int32_t kcmn_floor_log2(uint32_t x) {
  return 31 - kcmn_bsr_clz_in_code(x);
}

// For 0 the defined result comes from a shift by 255, which yields 0 == x, so
// the answer is f = -1; it is returned explicitly.
KELO_EXPORT int32_t kcmn_ceil_log2(uint32_t x) {
  if (x == 0) return -1;
  const int32_t f = kcmn_floor_log2(x);
  return x == (uint32_t{1} << f) ? f : 32 - kcmn_bsr_clz_in_code(x);
}

#endif  // !KELO_HAVE_HWY || HWY_ONCE
