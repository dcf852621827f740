// Resize kernels that grow a plane: width (_up, _up_mode1) and height (_up_h,
// _up_h_mode1) for every byte layout and 5-6-5 pixels.
//
// Width: the column pattern is the same for every row, so it is turned once
// per call into 16-byte blocks (a source offset, two byte shuffles that pick
// each output's sample and neighbour, and per-lane weights) and every row
// runs through the blocks. The pattern is built in strips so that it needs no
// heap. Height: every output row is a copy of an intermediate row or one mix
// of two rows with per-row weights, run by one vector row routine.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "common/internal/fault.h"
#include "common/internal/simd.h"
#include "imgp/geometry/resize_up_kernels.h"

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/geometry/resize_up.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "common/internal/neon_raw-inl.h"
#include "imgp/geometry/resize_up_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
using rsz::Mix;
using rsz::UpTap;

// Whether a tap is the truncating mean of s and n.
inline bool IsMean(const UpTap& t) {
  return (t.mix == Mix::kRatio && t.a == 1 && t.b == 1) ||
         (t.mix == Mix::kRamp && t.a == 32 && t.b == 32);
}

// Lane weights for out = MulHigh(A s + B n, M), exact for every s, n: copies
// as 16 s / 16, ratios with divisors up to 16 through their multiplier, ramps
// with both weights in 0..64 as (A s + B n) >> 6. False when there is none.
inline bool LaneWeights(const UpTap& t, uint16_t* a, uint16_t* b, uint16_t* m) {
  switch (t.mix) {
    case Mix::kCopy:
      *a = 16, *b = 0, *m = 4096;
      return true;
    case Mix::kRatio: {
      const uint64_t d = uint64_t{t.a} + t.b;
      if (d < 2 || d > rsz::kMaxRatioDivisor) return false;
      *a = static_cast<uint16_t>(t.a), *b = static_cast<uint16_t>(t.b);
      *m = rsz::RatioMagic(static_cast<uint32_t>(d));
      return true;
    }
    case Mix::kRamp:
      if (t.a > 64 || t.b > 64) return false;
      *a = static_cast<uint16_t>(t.a), *b = static_cast<uint16_t>(t.b), *m = 1024;
      return true;
  }
  return false;
}

// The widest in-between taps of a call, which decide whether lane weights
// exist for all of its taps (ratio divisors and ramp steps grow with j).
inline bool CallHasLaneWeights(int32_t q, int32_t r, bool mode1) {
  uint16_t a, b, m;
  if (!mode1) {
    const uint32_t k = static_cast<uint32_t>(q);
    return (q < 2 || LaneWeights(UpTap{0, 0, k - 1, 1, Mix::kRatio}, &a, &b, &m)) &&
           (r == 0 || (LaneWeights(UpTap{0, 0, k, 1, Mix::kRatio}, &a, &b, &m) &&
                       LaneWeights(UpTap{0, 0, 1, k, Mix::kRatio}, &a, &b, &m)));
  }
  const uint32_t w0 = rsz::RampStep(q, q), w1 = rsz::RampStep(q, int64_t{q} + 1);
  const uint32_t j0 = static_cast<uint32_t>(q - 1) * w0, j1 = static_cast<uint32_t>(q) * w1;
  return LaneWeights(UpTap{0, 0, 64 - j0, j0, Mix::kRamp}, &a, &b, &m) &&
         (r == 0 || LaneWeights(UpTap{0, 0, 64 - j1, j1, Mix::kRamp}, &a, &b, &m));
}

// Calls whose taps are all copies or means of neighbours.
inline bool CallIsMeans(int32_t q, int32_t r) { return q == 1 || (q == 2 && r == 0); }

#if HWY_TARGET != HWY_SCALAR

using D8 = hn::ScalableTag<uint8_t>;
using DH8 = hn::Half<D8>;
using D16 = hn::Repartition<uint16_t, D8>;
using DI16 = hn::Repartition<int16_t, D8>;

// Truncating mean of bytes: (s + n) >> 1.
template <class V>
HWY_INLINE V MeanDown(V s, V n) {
  const hn::DFromV<V> d;
  return hn::Sub(hn::AverageRound(s, n), hn::And(hn::Xor(s, n), hn::Set(d, 1)));
}

// ---------------------------------------------------------------------------
// Height: one in-between row of bytes.

template <bool kRamp>
void MixBytesRows(const uint8_t* s, const uint8_t* n, uint8_t* out, size_t len, size_t* done,
                  uint16_t a, uint16_t b, uint16_t m) {
  const D8 d8;
  const DH8 dh;
  const D16 d16;
  const DI16 di;
  const size_t L = hn::Lanes(d8);
  const auto va = hn::Set(d16, a), vb = hn::Set(d16, b), vm = hn::Set(d16, m);
  const auto low = hn::Set(d16, 0xFF);
  auto mix = [&](hn::Vec<D16> x, hn::Vec<D16> y) {
    const auto sum = hn::Add(hn::Mul(x, va), hn::Mul(y, vb));
    // A ramp wraps like the 32-bit rule; only the low byte of >> 6 counts.
    return kRamp ? hn::And(hn::ShiftRight<6>(sum), low) : hn::MulHigh(sum, vm);
  };
  size_t i = 0;
  for (; i + L <= len; i += L) {
    const auto vs = hn::LoadU(d8, s + i), vn = hn::LoadU(d8, n + i);
    const auto lo = mix(hn::PromoteTo(d16, hn::LowerHalf(dh, vs)),
                        hn::PromoteTo(d16, hn::LowerHalf(dh, vn)));
    const auto hi = mix(hn::PromoteTo(d16, hn::UpperHalf(dh, vs)),
                        hn::PromoteTo(d16, hn::UpperHalf(dh, vn)));
    hn::StoreU(hn::Combine(d8, hn::DemoteTo(dh, hn::BitCast(di, hi)),
                           hn::DemoteTo(dh, hn::BitCast(di, lo))),
               d8, out + i);
  }
  *done = i;
}

void MixBytesRowVec(const uint8_t* s, const uint8_t* n, uint8_t* out, size_t len,
                    const UpTap& t) {
  const D8 d8;
  const size_t L = hn::Lanes(d8);
  size_t i = 0;
  uint16_t a, b, m;
  if (IsMean(t)) {
#if KELO_NEON_RAW
    // The last 32 bytes overlap the ones before; out is not s or n.
    if (len >= 32) {
      RawMeanRows(s, n, out, len);
      return;
    }
#endif
    for (; i + L <= len; i += L) {
      hn::StoreU(MeanDown(hn::LoadU(d8, s + i), hn::LoadU(d8, n + i)), d8, out + i);
    }
  } else if (t.mix == Mix::kRamp) {
    MixBytesRows<true>(s, n, out, len, &i, static_cast<uint16_t>(t.a),
                       static_cast<uint16_t>(t.b), 0);
  } else if (LaneWeights(t, &a, &b, &m)) {
    MixBytesRows<false>(s, n, out, len, &i, a, b, m);
  }
  rsz::MixRow<rsz::L8b>(s + i, n + i, out + i, len - i, t);
}

// 5-6-5 pixels s and n mixed field by field: (a s + b n) >> 6 when shift
// (ramps, whose wrapped 32-bit weights keep the low bits that count), else
// MulHigh(a s + b n, m); weights per lane.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V Mix565(D d, V s, V n, V a, V b, V m, bool shift) {
  auto field = [&](V x, V y, V mask) {
    const auto sum = hn::Add(hn::Mul(hn::And(x, mask), a), hn::Mul(hn::And(y, mask), b));
    return hn::And(shift ? hn::ShiftRight<6>(sum) : hn::MulHigh(sum, m), mask);
  };
  const V m5 = hn::Set(d, 0x1F), m6 = hn::Set(d, 0x3F);
  const V lo = field(s, n, m5);
  const V mid = field(hn::ShiftRight<5>(s), hn::ShiftRight<5>(n), m6);
  const V hi = field(hn::ShiftRight<11>(s), hn::ShiftRight<11>(n), m5);
  return hn::Or(hn::Or(lo, hn::ShiftLeft<5>(mid)), hn::ShiftLeft<11>(hi));
}

// One in-between row of 5-6-5 pixels, field by field in 16-bit lanes.
void Mix565RowVec(const uint8_t* s, const uint8_t* n, uint8_t* out, size_t units,
                  const UpTap& t) {
  const D16 d16;
  const hn::Repartition<uint8_t, D16> d8;
  const size_t L = hn::Lanes(d16);
  size_t i = 0;
  uint16_t a, b, m;
  const bool ramp = t.mix == Mix::kRamp;
  if (ramp) {
    a = static_cast<uint16_t>(t.a), b = static_cast<uint16_t>(t.b), m = 0;
  }
  if (ramp || LaneWeights(t, &a, &b, &m)) {
    const auto va = hn::Set(d16, a), vb = hn::Set(d16, b), vm = hn::Set(d16, m);
    for (; i + L <= units; i += L) {
      const auto vs = hn::BitCast(d16, hn::LoadU(d8, s + 2 * i));
      const auto vn = hn::BitCast(d16, hn::LoadU(d8, n + 2 * i));
      hn::StoreU(hn::BitCast(d8, Mix565(d16, vs, vn, va, vb, vm, ramp)), d8, out + 2 * i);
    }
  }
  rsz::MixRow<rsz::L5b6b5b>(s + 2 * i, n + 2 * i, out + 2 * i, units - i, t);
}

// ---------------------------------------------------------------------------
// Width: blocks of 16 output bytes.

using B8 = hn::Full128<uint8_t>;
using B8H = hn::Full64<uint8_t>;
using B16 = hn::Full128<uint16_t>;
using BI16 = hn::Full128<int16_t>;

struct alignas(16) Block {
  uint8_t s_idx[16];
  uint8_t n_idx[16];
  uint8_t mean[16];  // 0xFF where the output is the mean of s and n
  uint16_t a[16], b[16], m[16];
  int32_t src_off, out_off;
};

constexpr int kMaxBlocks = 24;

// Blocks for the outputs from unit `begin` on, as many as kMaxBlocks hold.
// A block reads the 16 source bytes from src_off (moved back near the end of
// the row so that it stays within it) and writes 16 output bytes from
// out_off; its outputs end where the next block's begin.
struct Strip {
  Block blocks[kMaxBlocks];
  int count = 0;
  int64_t end = 0;       // first output unit not in a block
  int32_t resume = 0;    // a source sample whose group contains output `end`
  bool stopped = false;  // a whole block no longer fits before the row's end
};

// Sets lane `lane` of blk to byte c of the output of tap t; false when the
// bytes it reads are not among the 16 loaded from blk->src_off.
inline bool SetLane(Block* blk, int lane, const UpTap& t, int bpp, int c) {
  const int64_t s = int64_t{t.s} * bpp + c - blk->src_off;
  const int64_t n = t.mix == Mix::kCopy ? s : int64_t{t.n} * bpp + c - blk->src_off;
  if (s < 0 || n > 15) return false;
  uint16_t a = 0, b = 0, m = 0;
  LaneWeights(t, &a, &b, &m);
  blk->s_idx[lane] = static_cast<uint8_t>(s);
  blk->n_idx[lane] = static_cast<uint8_t>(n);
  blk->mean[lane] = IsMean(t) ? 0xFF : 0;
  blk->a[lane] = a, blk->b[lane] = b, blk->m[lane] = m;
  return true;
}

template <bool kMode1>
void BuildStrip(int32_t sw, int32_t dw, int32_t q, int32_t r, int bpp, int64_t begin,
                int32_t x_begin, Strip* st) {
  st->count = 0;
  st->end = begin;
  st->resume = x_begin;
  st->stopped = false;
  const int64_t src_bytes = int64_t{sw} * bpp, dst_bytes = int64_t{dw} * bpp;
  const int per_block = 16 / bpp;
  const int64_t limit = std::min<int64_t>(dw, begin + int64_t{kMaxBlocks} * per_block);
  bool closed = false;  // no more taps are taken
  Block* blk = nullptr;
  int units = 0;
  rsz::WalkUp<kMode1>(sw, static_cast<int32_t>(limit), q, r, x_begin,
                      [&](int64_t pos, const UpTap& t) {
    if (pos < begin || closed) return;
    const int64_t need = int64_t{t.mix == Mix::kCopy ? t.s : t.n} * bpp + bpp;
    const bool fits = blk != nullptr && (units + 1) * bpp <= 16 && need - blk->src_off <= 16;
    if (!fits) {
      const int64_t out_off = pos * bpp;
      if (out_off + 16 > dst_bytes) st->stopped = true;
      if (st->stopped || st->count == kMaxBlocks) {
        closed = true;
        st->resume = t.s;
        return;
      }
      blk = &st->blocks[st->count++];
      *blk = Block{};
      units = 0;
      blk->src_off = static_cast<int32_t>(std::min(int64_t{t.s} * bpp, src_bytes - 16));
      blk->out_off = static_cast<int32_t>(out_off);
    }
    for (int c = 0; c < bpp; ++c) SetLane(blk, units * bpp + c, t, bpp, c);
    ++units;
    st->end = pos + 1;
    st->resume = t.s;
  });
}

// The block of the row's last 16 output bytes, whatever units they start in;
// false when their sources do not fit in 16 bytes.
template <bool kMode1>
bool BuildEndBlock(int32_t sw, int32_t dw, int32_t q, int32_t r, int bpp, Block* blk) {
  const int64_t src_bytes = int64_t{sw} * bpp, dst_bytes = int64_t{dw} * bpp;
  const int64_t first = (dst_bytes - 16) / bpp;
  // The source sample whose group holds output `first`.
  int64_t x = first * sw / dw;
  while (x > 0 && rsz::GroupStart(x, sw, q, r) > first) --x;
  while (x + 1 < sw && rsz::GroupStart(x + 1, sw, q, r) <= first) ++x;
  *blk = Block{};
  blk->out_off = static_cast<int32_t>(dst_bytes - 16);
  bool ok = true;
  bool placed = false;
  rsz::WalkUp<kMode1>(sw, dw, q, r, static_cast<int32_t>(x), [&](int64_t pos, const UpTap& t) {
    if (pos < first || !ok) return;
    if (!placed) {
      blk->src_off = static_cast<int32_t>(std::min(int64_t{t.s} * bpp, src_bytes - 16));
      placed = true;
    }
    for (int c = 0; c < bpp; ++c) {
      const int64_t lane = pos * bpp + c - blk->out_off;
      if (lane >= 0 && lane < 16) ok = ok && SetLane(blk, static_cast<int>(lane), t, bpp, c);
    }
  });
  return ok && placed;
}

// The sample and neighbour bytes of block k: its source window shuffled.
HWY_INLINE void LoadTaps(const Block& k, const uint8_t* src, hn::Vec<B8>* s, hn::Vec<B8>* n) {
  const B8 d8;
  const auto v = hn::LoadU(d8, src + k.src_off);
  *s = hn::TableLookupBytes(v, hn::Load(d8, k.s_idx));
  *n = hn::TableLookupBytes(v, hn::Load(d8, k.n_idx));
}

HWY_INLINE void RunMeans(const Block* blocks, int count, const uint8_t* src, uint8_t* dst) {
  const B8 d8;
  for (int i = 0; i < count; ++i) {
    const Block& k = blocks[i];
    hn::Vec<B8> s, n;
    LoadTaps(k, src, &s, &n);
    const auto mean = hn::MaskFromVec(hn::Load(d8, k.mean));
    hn::StoreU(hn::IfThenElse(mean, MeanDown(s, n), s), d8, dst + k.out_off);
  }
}

HWY_INLINE void RunWeights(const Block* blocks, int count, const uint8_t* src, uint8_t* dst) {
  const B8 d8;
  const B8H dh;
  const B16 d16;
  const BI16 di;
  for (int i = 0; i < count; ++i) {
    const Block& k = blocks[i];
    hn::Vec<B8> s, n;
    LoadTaps(k, src, &s, &n);
    const auto lo = hn::MulHigh(
        hn::Add(hn::Mul(hn::PromoteTo(d16, hn::LowerHalf(dh, s)), hn::Load(d16, k.a)),
                hn::Mul(hn::PromoteTo(d16, hn::LowerHalf(dh, n)), hn::Load(d16, k.b))),
        hn::Load(d16, k.m));
    const auto hi = hn::MulHigh(
        hn::Add(hn::Mul(hn::PromoteTo(d16, hn::UpperHalf(dh, s)), hn::Load(d16, k.a + 8)),
                hn::Mul(hn::PromoteTo(d16, hn::UpperHalf(dh, n)), hn::Load(d16, k.b + 8))),
        hn::Load(d16, k.m + 8));
    hn::StoreU(hn::Combine(d8, hn::DemoteTo(dh, hn::BitCast(di, hi)),
                           hn::DemoteTo(dh, hn::BitCast(di, lo))),
               d8, dst + k.out_off);
  }
}

// 5-6-5 blocks: the byte shuffles gather whole pixels and lanes 0..7 of the
// weights hold one set per pixel (PerPixelWeights).
HWY_INLINE void Run565(const Block* blocks, int count, const uint8_t* src, uint8_t* dst) {
  const B8 d8;
  const B16 d16;
  for (int i = 0; i < count; ++i) {
    const Block& k = blocks[i];
    hn::Vec<B8> s8, n8;
    LoadTaps(k, src, &s8, &n8);
    const auto out = Mix565(d16, hn::BitCast(d16, s8), hn::BitCast(d16, n8), hn::Load(d16, k.a), hn::Load(d16, k.b),
                            hn::Load(d16, k.m), false);
    hn::StoreU(hn::BitCast(d8, out), d8, dst + k.out_off);
  }
}

// Moves the weights of each 2-byte pixel (equal on both its bytes) to lane
// pixel of the 16-bit weights.
inline void PerPixelWeights(Block* blocks, int count) {
  for (int i = 0; i < count; ++i) {
    Block& k = blocks[i];
    for (int u = 0; u < 8; ++u) k.a[u] = k.a[2 * u], k.b[u] = k.b[2 * u], k.m[u] = k.m[2 * u];
  }
}

// Doubling widths (q = 2, r = 0, either mode: every in-between output is the
// truncating mean of its neighbours) of 1-, 2- and 4-byte units: unit 2i is
// unit i and unit 2i + 1 the mean of units i and i + 1, so 16 source bytes
// and the 16 one unit on give 32 output bytes by two interleaves.
template <class L>
constexpr bool kDoubles = !std::is_same_v<L, rsz::L5b6b5b> && L::kBytes != 3;

// The whole vectors of one doubled row; returns the source unit the scalar
// row resumes at.
template <class L>
int32_t DoubleRow(const uint8_t* src, uint8_t* out, int32_t sw) {
  constexpr int bpp = L::kBytes;
  const B8 d8;
  const hn::Repartition<hwy::UnsignedFromSize<bpp>, B8> du;
  const int64_t bytes = int64_t{sw} * bpp;
  if (bytes < 16 + bpp) return 0;
#if KELO_NEON_RAW
  if (bpp == 1) {
    // The last unit's neighbour is itself, so its group is that unit twice
    // (the scalar row would spend a division on it).
    RawDouble(src, out, static_cast<size_t>(bytes));
    out[2 * bytes - 2] = out[2 * bytes - 1] = src[bytes - 1];
    return sw;
  }
#endif
  auto run = [&](int64_t i) {
    const auto s = hn::LoadU(d8, src + i);
    const auto m = hn::BitCast(du, MeanDown(s, hn::LoadU(d8, src + i + bpp)));
    const auto su = hn::BitCast(du, s);
    hn::StoreU(hn::BitCast(d8, hn::InterleaveLower(du, su, m)), d8, out + 2 * i);
    hn::StoreU(hn::BitCast(d8, hn::InterleaveUpper(du, su, m)), d8, out + 2 * i + 16);
  };
  int64_t i = 0;
  for (; i + 16 + bpp <= bytes; i += 16) run(i);
  // The units up to the last one again, ending where the row does; the last
  // unit's group (itself twice) is left to the scalar row.
  if (i < bytes - bpp) run(bytes - 16 - bpp);
  return sw - 1;
}

#if KELO_NEON_RAW
// Doubling both ways (either mode: every in-between row is the truncating
// mean of its neighbours) of a byte plane, sw >= 17: output row 2y is source
// row y doubled, row 2y + 1 the mean of rows 2y and 2y + 2, and the last row,
// whose neighbour is itself, a copy of the one above.
void DoubleBoth(const uint8_t* src, uint8_t* dst, int32_t sw, int32_t sh, ptrdiff_t src_step,
                ptrdiff_t dst_step) {
  const size_t row = 2 * static_cast<size_t>(sw);
  DoubleRow<rsz::L8b>(src, dst, sw);
  for (int32_t y = 1; y < sh; ++y) {
    src += src_step;
    uint8_t* next = dst + 2 * dst_step;
    DoubleRow<rsz::L8b>(src, next, sw);
    RawMeanRows(dst, next, dst + dst_step, row);
    dst = next;
  }
  CopyBytes(dst, dst + dst_step, row);
}
#endif

// Whether the block path takes a call; else the scalar rows do.
template <class L, bool kMode1>
bool UseBlocks(int32_t dw, int32_t sw, int32_t q, int32_t r) {
  constexpr int bpp = L::kBytes;
  const bool exact = dw >= 1 && sw >= 1 && q >= 1 && r >= 0 && r < sw &&
                     int64_t{dw} == int64_t{q} * sw + r;
  return exact && int64_t{sw} * bpp >= 16 && int64_t{dw} * bpp >= 16 &&
         CallHasLaneWeights(q, r, kMode1);
}

// Runs rows [y0, y1) of a width up-scale through blocks.
template <class L>
void RunBlocks(Block* blocks, int count, bool means, const uint8_t* src, uint8_t* tmp,
               int32_t dw, int32_t y0, int32_t y1, ptrdiff_t src_step) {
  const ptrdiff_t dst_step = ptrdiff_t{dw} * L::kBytes;
  for (int32_t y = y0; y < y1; ++y) {
    if (std::is_same_v<L, rsz::L5b6b5b>) {
      Run565(blocks, count, src + y * src_step, tmp + y * dst_step);
    } else if (means) {
      RunMeans(blocks, count, src + y * src_step, tmp + y * dst_step);
    } else {
      RunWeights(blocks, count, src + y * src_step, tmp + y * dst_step);
    }
  }
}

// The blocks of a row, built strip by strip: run(blocks, count) takes each
// strip, then the end block. Returns the source sample the scalar tail of a
// row resumes at, or -1 when the blocks cover the row.
template <class L, bool kMode1, class Run>
int32_t ForEachStrip(int32_t sw, int32_t dw, int32_t q, int32_t r, Run&& run) {
  constexpr int bpp = L::kBytes;
  Strip st;
  int64_t begin = 0;
  int32_t x = 0;
  while (begin < dw) {
    BuildStrip<kMode1>(sw, dw, q, r, bpp, begin, x, &st);
    if (std::is_same_v<L, rsz::L5b6b5b>) PerPixelWeights(st.blocks, st.count);
    run(st.blocks, st.count);
    begin = st.end;
    x = st.resume;
    if (st.stopped) break;
  }
  if (begin >= dw) return -1;
  if (!BuildEndBlock<kMode1>(sw, dw, q, r, bpp, &st.blocks[0])) return x;
  if (std::is_same_v<L, rsz::L5b6b5b>) PerPixelWeights(st.blocks, 1);
  run(st.blocks, 1);
  return -1;
}

template <class L, bool kMode1>
void ScalarTail(const uint8_t* src, uint8_t* tmp, int32_t dw, int32_t sw, int32_t q, int32_t r,
                int32_t x, int32_t y0, int32_t y1, ptrdiff_t src_step) {
  if (x < 0) return;
  for (int32_t y = y0; y < y1; ++y) {
    scalar::UpRow<L, kMode1>(src + y * src_step, tmp + ptrdiff_t{y} * dw * L::kBytes, sw, dw, q,
                             r, x);
  }
}

template <class L, bool kMode1>
void UpWidthBlocks(const uint8_t* src, uint8_t* tmp, int32_t dw, int32_t sw, int32_t sh,
                  int32_t q, int32_t r, ptrdiff_t src_step) {
  if constexpr (kDoubles<L>) {
    if (q == 2 && r == 0 && dw == 2 * sw) {
      for (int32_t y = 0; y < sh; ++y) {
        const uint8_t* s = src + y * src_step;
        uint8_t* out = tmp + ptrdiff_t{y} * dw * L::kBytes;
        scalar::UpRow<L, kMode1>(s, out, sw, dw, q, r, DoubleRow<L>(s, out, sw));
      }
      return;
    }
  }
  if (!UseBlocks<L, kMode1>(dw, sw, q, r)) {
    scalar::UpWidth<L, kMode1>(src, tmp, dw, sw, sh, q, r, src_step);
    return;
  }
  const bool means = CallIsMeans(q, r);
  const int32_t x = ForEachStrip<L, kMode1>(sw, dw, q, r, [&](Block* blocks, int count) {
    RunBlocks<L>(blocks, count, means, src, tmp, dw, 0, sh, src_step);
  });
  ScalarTail<L, kMode1>(src, tmp, dw, sw, q, r, x, 0, sh, src_step);
}

// Every block of a row, kept for a call that runs its rows in strips.
class BlockPlan {
 public:
  ~BlockPlan() { std::free(blocks_); }
  // False when the memory cannot be had.
  bool Add(const Block* b, int n) {
    if (count_ + n > cap_) {
      const int cap = std::max(2 * cap_, count_ + n);
      void* p = HeapAllocAligned(alignof(Block), sizeof(Block) * static_cast<size_t>(cap));
      if (p == nullptr) return false;
      if (count_ > 0) std::memcpy(p, blocks_, sizeof(Block) * static_cast<size_t>(count_));
      std::free(blocks_);
      blocks_ = static_cast<Block*>(p);
      cap_ = cap;
    }
    std::memcpy(blocks_ + count_, b, sizeof(Block) * static_cast<size_t>(n));
    count_ += n;
    return true;
  }
  Block* blocks() { return blocks_; }
  int count() const { return count_; }

 private:
  Block* blocks_ = nullptr;
  int count_ = 0, cap_ = 0;
};

// scalar::UpBoth through the blocks; false, with nothing written, when the
// plan's memory cannot be had.
template <class L, class V, bool kMode1, class MixRowFn>
bool UpBoth(const uint8_t* src, uint8_t* dst, int32_t sw, int32_t sh, int32_t dw, int32_t dh,
            ptrdiff_t src_step, ptrdiff_t dst_step, MixRowFn mix_row) {
  const int32_t q = dw / sw, r = dw % sw;
  const int64_t row_bytes = int64_t{dw} * L::kBytes;
  const auto units = static_cast<size_t>(row_bytes / V::kBytes);
  const int32_t rows = scalar::InPlaceRows(row_bytes);
#if KELO_NEON_RAW
  if constexpr (L::kBytes == 1) {
    if (q == 2 && r == 0 && dh == 2 * sh && sw >= 17) {
      DoubleBoth(src, dst, sw, sh, src_step, dst_step);
      return true;
    }
  }
#endif
  if constexpr (kDoubles<L>) {
    if (q == 2 && r == 0) {
      scalar::UpInPlace<V, kMode1>(dst, dst_step, units, sh, dh, rows,
                                   [&](int32_t y, uint8_t* out) {
        const uint8_t* s = src + y * src_step;
        scalar::UpRow<L, kMode1>(s, out, sw, dw, q, r, DoubleRow<L>(s, out, sw));
      }, mix_row);
      return true;
    }
  }
  if (!UseBlocks<L, kMode1>(dw, sw, q, r)) {
    scalar::UpInPlace<V, kMode1>(dst, dst_step, units, sh, dh, rows, [&](int32_t y, uint8_t* out) {
      scalar::UpRow<L, kMode1>(src + y * src_step, out, sw, dw, q, r, 0);
    }, mix_row);
    return true;
  }
  BlockPlan plan;
  bool ok = true;
  const int32_t x = ForEachStrip<L, kMode1>(sw, dw, q, r, [&](Block* blocks, int count) {
    ok = ok && plan.Add(blocks, count);
  });
  if (!ok) return false;
  const bool means = CallIsMeans(q, r);
  scalar::UpInPlace<V, kMode1>(dst, dst_step, units, sh, dh, rows, [&](int32_t y, uint8_t* out) {
    const uint8_t* s = src + y * src_step;
    RunBlocks<L>(plan.blocks(), plan.count(), means, s, out, dw, 0, 1, 0);
    ScalarTail<L, kMode1>(s, out, dw, sw, q, r, x, 0, 1, 0);
  }, mix_row);
  return true;
}

#endif  // HWY_TARGET != HWY_SCALAR

// Entry points per target; `rgb565` picks 5-6-5 pixels, else `bpp` the byte
// layout.
void UpWidthVec(const uint8_t* src, uint8_t* tmp, int32_t dw, int32_t sw, int32_t sh,
                int32_t q, int32_t r, ptrdiff_t src_step, int bpp, bool rgb565, bool mode1) {
#if HWY_TARGET == HWY_SCALAR
  scalar::UpWidthAny(src, tmp, dw, sw, sh, q, r, src_step, bpp, rgb565, mode1);
#else
#define KELO_UP_BYTES(L)                                                        \
  return mode1 ? UpWidthBlocks<L, true>(src, tmp, dw, sw, sh, q, r, src_step)   \
               : UpWidthBlocks<L, false>(src, tmp, dw, sw, sh, q, r, src_step)
  if (rgb565) KELO_UP_BYTES(rsz::L5b6b5b);
  switch (bpp) {
    case 1: KELO_UP_BYTES(rsz::L8b);
    case 2: KELO_UP_BYTES(rsz::L8b8b);
    case 3: KELO_UP_BYTES(rsz::L8b8b8b);
    default: KELO_UP_BYTES(rsz::L8b8b8b8b);
  }
#undef KELO_UP_BYTES
#endif
}

// Height over rows of row_units units; `rgb565` picks 5-6-5 pixels, else bytes.
void UpHeightVec(const uint8_t* tmp, ptrdiff_t tmp_step, size_t row_units, int32_t sh,
                 int32_t dh, int32_t q, int32_t r, rsz::RowSink* sink, bool rgb565,
                 bool mode1) {
#if HWY_TARGET == HWY_SCALAR
  scalar::UpHeightAny(tmp, tmp_step, row_units, sh, dh, q, r, sink, rgb565, mode1);
#else
#define KELO_UP_H_VEC(L, mix)                                                               \
  return mode1 ? scalar::UpHeight<L, true>(tmp, tmp_step, row_units, sh, dh, q, r, sink, mix) \
               : scalar::UpHeight<L, false>(tmp, tmp_step, row_units, sh, dh, q, r, sink, mix)
  if (rgb565) KELO_UP_H_VEC(rsz::L5b6b5b, &Mix565RowVec);
  KELO_UP_H_VEC(rsz::L8b, &MixBytesRowVec);
#undef KELO_UP_H_VEC
#endif
}

bool UpBothVec(const uint8_t* src, uint8_t* dst, int32_t sw, int32_t sh, int32_t dw, int32_t dh,
               ptrdiff_t src_step, ptrdiff_t dst_step, int bpp, bool rgb565, bool mode1) {
#if HWY_TARGET == HWY_SCALAR
  return scalar::UpBothAny(src, dst, sw, sh, dw, dh, src_step, dst_step, bpp, rgb565, mode1);
#else
#define KELO_UP_BOTH(L, V, mix)                                                              \
  return mode1 ? UpBoth<L, V, true>(src, dst, sw, sh, dw, dh, src_step, dst_step, mix)       \
               : UpBoth<L, V, false>(src, dst, sw, sh, dw, dh, src_step, dst_step, mix)
  if (rgb565) KELO_UP_BOTH(rsz::L5b6b5b, rsz::L5b6b5b, &Mix565RowVec);
  switch (bpp) {
    case 1: KELO_UP_BOTH(rsz::L8b, rsz::L8b, &MixBytesRowVec);
    case 2: KELO_UP_BOTH(rsz::L8b8b, rsz::L8b, &MixBytesRowVec);
    case 3: KELO_UP_BOTH(rsz::L8b8b8b, rsz::L8b, &MixBytesRowVec);
    default: KELO_UP_BOTH(rsz::L8b8b8b8b, rsz::L8b, &MixBytesRowVec);
  }
#undef KELO_UP_BOTH
#endif
}

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_HAVE_HWY

#if !KELO_HAVE_HWY || HWY_ONCE
#include "common/internal/api.h"
#include "kimgp_rsz_rot.h"

namespace kelo {

KELO_VEC_EXPORT(UpWidthVec);
KELO_VEC_EXPORT(UpHeightVec);
KELO_VEC_EXPORT(UpBothVec);

bool UpBothDispatch(const uint8_t* src, uint8_t* dst, int32_t sw, int32_t sh, int32_t dw,
                    int32_t dh, ptrdiff_t src_step, ptrdiff_t dst_step, int bpp, bool rgb565,
                    bool mode1) {
  return KELO_VEC_CALL(UpBothVec, scalar::UpBothAny)(src, dst, sw, sh, dw, dh, src_step,
                                                     dst_step, bpp, rgb565, mode1);
}

void UpWidthDispatch(const uint8_t* src, uint8_t* tmp, int32_t dw, int32_t sw, int32_t sh,
                     int32_t q, int32_t r, ptrdiff_t src_step, int bpp, bool rgb565,
                     bool mode1) {
  KELO_VEC_CALL(UpWidthVec, scalar::UpWidthAny)(src, tmp, dw, sw, sh, q, r, src_step, bpp,
                                                rgb565, mode1);
}

void UpHeightDispatch(const uint8_t* tmp, ptrdiff_t tmp_step, size_t row_units, int32_t sh,
                      int32_t dh, int32_t q, int32_t r, rsz::RowSink* sink, bool rgb565,
                      bool mode1) {
  KELO_VEC_CALL(UpHeightVec, scalar::UpHeightAny)(tmp, tmp_step, row_units, sh, dh, q, r, sink,
                                                  rgb565, mode1);
}

// Strides are in pixels for the 5-6-5 layout.
template <class L>
void UpWidthLayout(const void* src, void* tmp, int32_t dw, int32_t sw, int32_t sh, int32_t q,
                   int32_t r, int32_t src_stride, bool mode1) {
  UpWidthDispatch(static_cast<const uint8_t*>(src), static_cast<uint8_t*>(tmp), dw, sw, sh, q,
                  r, ptrdiff_t{src_stride} * L::kStrideUnit, L::kBytes,
                  std::is_same_v<L, rsz::Rgb565Units>, mode1);
}

// Rows of dw units of L from the packed intermediate; byte layouts are mixed
// byte by byte.
template <class L>
void UpHeightLayout(const void* tmp, void* dst, int32_t dw, int32_t sh, int32_t dh, int32_t q,
                    int32_t r, int32_t dst_stride, bool mode1) {
  if (dw < 1) return;
  constexpr bool rgb565 = std::is_same_v<L, rsz::Rgb565Units>;
  const size_t units = static_cast<size_t>(dw) * (rgb565 ? 1 : L::kBytes);
  rsz::RowSink sink = rsz::RowSink::Plain(static_cast<uint8_t*>(dst),
                                          ptrdiff_t{dst_stride} * L::kStrideUnit);
  UpHeightDispatch(static_cast<const uint8_t*>(tmp), ptrdiff_t{dw} * L::kBytes, units, sh, dh,
                   q, r, &sink, rgb565, mode1);
}

// The rotating height up-scalers: column chunks of the intermediate (its rows
// stay dw units apart) through a tile sink.
template <class L>
void RotUpHeight(int op, const void* tmp, void* dst, int32_t dw, int32_t sh, int32_t dh,
                 int32_t q, int32_t r, int32_t dst_stride, bool mode1) {
  static_assert(L::kStrideUnit == 1 && !std::is_same_v<L, rsz::Rgb565Units>, "byte layouts");
  alignas(64) uint8_t tile[rsz::kTileBytes];
  rsz::RotTiles rt{op, L::kBytes, dw, dh, static_cast<uint8_t*>(dst), dst_stride, tile};
  const auto* t = static_cast<const uint8_t*>(tmp);
  rsz::ForEachChunk(&rt, [&] {
    rsz::RowSink sink = rt.Sink();
    UpHeightDispatch(t + ptrdiff_t{rt.x0} * L::kBytes, ptrdiff_t{dw} * L::kBytes,
                     static_cast<size_t>(rt.wc) * L::kBytes, sh, dh, q, r, &sink, false, mode1);
    sink.Finish();
  });
}

}  // namespace kelo

#define KELO_UP_ARGS                                                            \
  const void *src, void *tmp, int32_t dw, int32_t sw, int32_t sh, int32_t qw,  \
      int32_t rw, int32_t src_stride
#define KELO_UP_H_ARGS                                                          \
  const void *tmp, void *dst, int32_t dw, int32_t sh, int32_t dh, int32_t qh,  \
      int32_t rh, int32_t dst_stride

// Width kernels: kimgp_<name>_rsz_up and _up_mode1 of layout L. The 5-6-5
// kernels take strides in pixels.
#define KELO_UP_WIDTH(name, L)                                                  \
  KELO_EXPORT void kimgp_##name##_rsz_up(KELO_UP_ARGS) {                        \
    kelo::UpWidthLayout<kelo::rsz::L>(src, tmp, dw, sw, sh, qw, rw, src_stride, false); \
  }                                                                             \
  KELO_EXPORT void kimgp_##name##_rsz_up_mode1(KELO_UP_ARGS) {                  \
    kelo::UpWidthLayout<kelo::rsz::L>(src, tmp, dw, sw, sh, qw, rw, src_stride, true); \
  }

// Height kernels: kimgp_<name>_rsz_up_h and _up_h_mode1; dw counts units of
// layout L (the 3- and 4-byte layouts call the 8b kernels with 3 dw, 4 dw).
#define KELO_UP_HEIGHT(name, L)                                                 \
  KELO_EXPORT void kimgp_##name##_rsz_up_h(KELO_UP_H_ARGS) {                    \
    kelo::UpHeightLayout<kelo::rsz::L>(tmp, dst, dw, sh, dh, qh, rh, dst_stride, false); \
  }                                                                             \
  KELO_EXPORT void kimgp_##name##_rsz_up_h_mode1(KELO_UP_H_ARGS) {              \
    kelo::UpHeightLayout<kelo::rsz::L>(tmp, dst, dw, sh, dh, qh, rh, dst_stride, true); \
  }

KELO_RSZ_UP_WIDTH_KERNELS(KELO_UP_WIDTH)
KELO_RSZ_UP_HEIGHT_KERNELS(KELO_UP_HEIGHT)

// The rotating height kernels: kimgp_<name>_rsz_rot_<op>_up_h and _up_h_mode1.
#define KELO_UP_HEIGHT_ROT(name, L, op, kop)                                            \
  KELO_EXPORT void kimgp_##name##_rsz_rot_##op##_up_h(KELO_UP_H_ARGS) {                  \
    kelo::RotUpHeight<kelo::rsz::L>(kop, tmp, dst, dw, sh, dh, qh, rh, dst_stride, false); \
  }                                                                                      \
  KELO_EXPORT void kimgp_##name##_rsz_rot_##op##_up_h_mode1(KELO_UP_H_ARGS) {            \
    kelo::RotUpHeight<kelo::rsz::L>(kop, tmp, dst, dw, sh, dh, qh, rh, dst_stride, true);  \
  }
KELO_RSZ_ROT_KERNELS(KELO_UP_HEIGHT_ROT)
#undef KELO_UP_HEIGHT_ROT

#endif  // !KELO_HAVE_HWY || HWY_ONCE
