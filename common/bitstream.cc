// Bit reader (both bit orders) and most-significant-first bit writer.
//
// Counts and shift amounts follow 32-bit register arithmetic: sums wrap, and a
// shift uses the low byte of its amount, 32..255 giving 0. The helpers below
// make that explicit, so no operation has undefined behaviour whatever the
// caller passes as a bit count. Buffer ends are compared as addresses, since
// `last` lies before the buffer start for an empty buffer.
#include <cstdint>

#include "common/internal/api.h"
#include "kcmn_bitstream.h"

namespace kelo {
namespace {

constexpr uint32_t kAllOnes = 0xFFFFFFFFu;

uint32_t ShiftAmount(int32_t amount) {
  return static_cast<uint32_t>(amount) & 0xFFu;
}

uint32_t Shl(uint32_t x, int32_t amount) {
  const uint32_t a = ShiftAmount(amount);
  return a >= 32 ? 0 : x << a;
}

uint32_t Shr(uint32_t x, int32_t amount) {
  const uint32_t a = ShiftAmount(amount);
  return a >= 32 ? 0 : x >> a;
}

int32_t Sub(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) -
                              static_cast<uint32_t>(b));
}

int32_t Add(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) +
                              static_cast<uint32_t>(b));
}

// Arithmetic shift right by 3 (floor division by 8) without relying on how
// the compiler shifts negative values.
int32_t AsrBy3(int32_t v) { return v < 0 ? ~(~v >> 3) : v >> 3; }

// The low x bits set; 0 for x = 0.
uint32_t Mask(int32_t x) { return Shr(kAllOnes, Sub(32, x)); }

uintptr_t Address(const uint8_t* p) { return reinterpret_cast<uintptr_t>(p); }

// last - cur + 1 as a signed byte count: positive while cur <= last, and 0 or
// less once cur is past last. The difference is taken modulo the address
// width, so an empty buffer at address 0 (last = all ones) has nothing left.
intptr_t BytesLeft(const uint8_t* cur, const uint8_t* last) {
  return static_cast<intptr_t>(Address(last) - Address(cur) + 1);
}

// start + size - 1 without forming an out-of-bounds pointer.
uintptr_t LastAddress(const uint8_t* start, uint32_t size) {
  return Address(start) + size - 1;
}

// Both refills: k = min(count, bytes left) bytes are consumed, the first four
// of them placed by `place(byte, index)`. A 32-bit cache has no room for a
// fifth byte, so a count above 4 skips the bytes beyond the fourth.
template <typename Place>
int32_t Refill(kcmn_bsr* bsr, int32_t count, Place place) {
  const intptr_t left = BytesLeft(bsr->cur, bsr->last);
  const intptr_t k = count < left ? count : left;
  if (k < 1) {
    bsr->cache = 0;
    bsr->bits_left = 0;
    return -1;
  }
  uint32_t cache = 0;
  for (intptr_t i = 0; i < k && i < 4; ++i) {
    cache |= place(bsr->cur[i], static_cast<int32_t>(i));
  }
  bsr->cache = cache;
  bsr->bits_left = static_cast<int32_t>(static_cast<uint32_t>(k) * 8u);
  bsr->cur += k;
  return 0;
}

uint32_t PlaceMsbFirst(uint8_t byte, int32_t i) {
  return Shl(byte, 24 - 8 * i);
}
uint32_t PlaceLsbFirst(uint8_t byte, int32_t i) { return Shl(byte, 8 * i); }

int32_t Fill4(kcmn_bsr* bsr) { return bsr->refill(bsr, 4); }

// The skip of kcmn_bsr_skip and kcmn_bsr_skip_peek, with at most one refill;
// false when that refill fails, with its status in *status.
bool SkipBits(kcmn_bsr* bsr, int32_t n, int32_t* status) {
  if (bsr->bits_left < n) {
    const int32_t b = bsr->bits_left;
    *status = Fill4(bsr);
    if (*status != 0) return false;
    n = Sub(n, b);
  }
  bsr->bits_left = Sub(bsr->bits_left, n);
  bsr->cache = Shl(bsr->cache, n);
  return true;
}

// Single bit; the refill happens only at exactly zero bits left.
bool ReadBit(kcmn_bsr* bsr, uint32_t* bit) {
  if (bsr->bits_left == 0 && Fill4(bsr) != 0) return false;
  bsr->bits_left = Sub(bsr->bits_left, 1);
  *bit = bsr->cache >> 31;
  bsr->cache <<= 1;
  return true;
}

// Writes the next k (1..8) bits, taken from the top of `bits`, into the
// current byte; completes the byte when it has no bits free.
void PutBits(kcmn_bsw* bsw, uint32_t bits, int32_t k) {
  *bsw->cur = static_cast<uint8_t>(Shl(*bsw->cur, k) | Shr(bits, Sub(32, k)));
  bsw->bits_free = Sub(bsw->bits_free, k);
  if (bsw->bits_free == 0) {
    if (bsw->on_byte != nullptr) bsw->on_byte(bsw);
    bsw->bits_free = 8;
    bsw->cur += 1;
  }
}

}  // namespace
}  // namespace kelo

using kelo::Add;
using kelo::Mask;
using kelo::Shl;
using kelo::Shr;
using kelo::Sub;

KELO_EXPORT void kcmn_bsr_init(kcmn_bsr* bsr, const uint8_t* buf, uint32_t size,
                               kcmn_bsr_refill_fn refill) {
  bsr->cache = 0;
  bsr->bits_left = 0;
  bsr->cur = buf;
  bsr->last = reinterpret_cast<const uint8_t*>(kelo::LastAddress(buf, size));
  bsr->start = buf;
  bsr->size = size;
  bsr->refill = refill != nullptr ? refill : kcmn_bsr_flush;
}

KELO_EXPORT int32_t kcmn_bsr_flush(kcmn_bsr* bsr, int32_t count) {
  return kelo::Refill(bsr, count, kelo::PlaceMsbFirst);
}

// The remaining b bits and the first n - b bits of the new cache; a short
// refill at the end of data leaves the missing low bits 0 and bits_left
// negative.
KELO_EXPORT uint32_t kcmn_bsr_read(kcmn_bsr* bsr, int32_t n) {
  if (bsr->bits_left >= n) {
    const uint32_t value = Shr(bsr->cache, Sub(32, n));
    bsr->cache = Shl(bsr->cache, n);
    bsr->bits_left = Sub(bsr->bits_left, n);
    return value;
  }
  const uint32_t old = bsr->cache;
  const int32_t b = bsr->bits_left;
  if (kelo::Fill4(bsr) != 0) return kelo::kAllOnes;
  const int32_t m = Sub(n, b);
  const uint32_t value = Shr(old, Sub(32, n)) | Shr(bsr->cache, Sub(32, m));
  bsr->cache = Shl(bsr->cache, m);
  bsr->bits_left = Sub(bsr->bits_left, m);
  return value;
}

KELO_EXPORT uint32_t kcmn_bsr_read1(kcmn_bsr* bsr) {
  uint32_t bit;
  return kelo::ReadBit(bsr, &bit) ? bit : kelo::kAllOnes;
}

KELO_EXPORT int32_t kcmn_bsr_read1_value(kcmn_bsr* bsr, uint8_t* bit) {
  uint32_t value;
  if (!kelo::ReadBit(bsr, &value)) return -1;
  *bit = static_cast<uint8_t>(value);
  return 0;
}

KELO_EXPORT uint32_t kcmn_bsr_skip(kcmn_bsr* bsr, int32_t n) {
  int32_t status = 0;
  if (!kelo::SkipBits(bsr, n, &status)) return static_cast<uint32_t>(status);
  return bsr->cache;
}

// Tops the cache up with its whole free bytes, ignoring the refill's status
// (a failed default refill zeroes cache and count, so the merge restores the
// old state), then supplies up to 7 further bits from the byte at cur without
// loading it.
KELO_EXPORT uint32_t kcmn_bsr_peek(kcmn_bsr* bsr, int32_t n) {
  const int32_t b = bsr->bits_left;
  if (b < n) {
    const int32_t k = kelo::AsrBy3(Sub(32, b));
    if (k != 0) {
      const uint32_t old = bsr->cache;
      bsr->refill(bsr, k);
      bsr->cache = old | Shr(bsr->cache, b);
      bsr->bits_left = Add(bsr->bits_left, b);
    }
  }
  const uint32_t value = Shr(bsr->cache, Sub(32, n));
  if (n <= bsr->bits_left) return value;
  if (kelo::BytesLeft(bsr->cur, bsr->last) < 1) return value;
  return value | Shr(*bsr->cur, Sub(8, Sub(n, bsr->bits_left)));
}

KELO_EXPORT uint32_t kcmn_bsr_skip_peek(kcmn_bsr* bsr, int32_t skip,
                                        int32_t n) {
  int32_t status = 0;
  if (!kelo::SkipBits(bsr, skip, &status)) return 0;
  if (bsr->bits_left >= n) return Shr(bsr->cache, Sub(32, n));
  return kcmn_bsr_peek(bsr, n);
}

KELO_EXPORT void kcmn_bsr_skip_to_align8(kcmn_bsr* bsr) {
  const int32_t r =
      static_cast<int32_t>(static_cast<uint32_t>(bsr->bits_left) & 7u);
  bsr->cache = Shl(bsr->cache, r);
  bsr->bits_left = Sub(bsr->bits_left, r);
}

KELO_EXPORT int32_t kcmn_bsr_le_flush(kcmn_bsr* bsr, int32_t count) {
  return kelo::Refill(bsr, count, kelo::PlaceLsbFirst);
}

// The older bits form the low end of the result. Consuming exactly 32 bits of
// a refill empties the reader, even when the refill loaded fewer.
KELO_EXPORT uint32_t kcmn_bsr_le_read(kcmn_bsr* bsr, int32_t n) {
  uint32_t low = 0;
  int32_t s = 0;
  int32_t m = n;
  if (bsr->bits_left < n) {
    const uint32_t old = bsr->cache;
    const int32_t b = bsr->bits_left;
    if (kelo::Fill4(bsr) != 0) return kelo::kAllOnes;
    low = old & Mask(b);
    m = Sub(n, b);
    s = b;
  }
  const uint32_t v = bsr->cache;
  if (m == 32) {
    bsr->bits_left = 0;
    bsr->cache = 0;
  } else {
    bsr->bits_left = Sub(bsr->bits_left, m);
    bsr->cache = Shr(bsr->cache, m);
  }
  return low | Shl(v & Mask(m), s);
}

KELO_EXPORT void kcmn_bsr_le_skip(kcmn_bsr* bsr, int32_t n) {
  if (n == 32) {
    bsr->cache = 0;
    bsr->bits_left = 0;
    return;
  }
  bsr->cache = Shr(bsr->cache, n);
  bsr->bits_left = Sub(bsr->bits_left, n);
}

KELO_EXPORT void kcmn_bsr_le_skip_to_align8(kcmn_bsr* bsr) {
  const int32_t r =
      static_cast<int32_t>(static_cast<uint32_t>(bsr->bits_left) & 7u);
  bsr->cache = Shr(bsr->cache, r);
  bsr->bits_left = Sub(bsr->bits_left, r);
}

KELO_EXPORT void kcmn_bsw_init(kcmn_bsw* bsw, uint8_t* buf, uint32_t size,
                               kcmn_bsw_byte_fn on_byte) {
  bsw->cur = buf;
  bsw->bits_free = 8;
  bsw->last = reinterpret_cast<uint8_t*>(kelo::LastAddress(buf, size));
  bsw->start = buf;
  bsw->size = size;
  bsw->on_byte = on_byte;
}

KELO_EXPORT int32_t kcmn_bsw_write1(kcmn_bsw* bsw, uint32_t bit) {
  if (kelo::BytesLeft(bsw->cur, bsw->last) < 1) return -1;
  kelo::PutBits(bsw, bit << 31, 1);
  return 0;
}

// The end is tested once, on entry; the loop may run up to four bytes past
// the last one, which callers allow for in their buffers.
KELO_EXPORT int32_t kcmn_bsw_write(kcmn_bsw* bsw, uint32_t value, int32_t n) {
  if (kelo::BytesLeft(bsw->cur, bsw->last) < 1) return -1;
  uint32_t v = Shl(value, Sub(32, n));
  while (n >= 1) {
    const int32_t k = n < bsw->bits_free ? n : bsw->bits_free;
    kelo::PutBits(bsw, v, k);
    n -= k;
    v = Shl(v, k);
  }
  return 0;
}
