// Resize kernels that shrink a plane, and their vector paths.
//
// The column pattern of a call is the same for every row, so the vector path
// turns it once into a plan of 16-byte output chunks: each chunk loads a
// 32-byte window of the source row and picks the first and second tap of
// every output byte with two byte shuffles per window half. Rows then run
// through the plan: Avg2 of the taps for a one-row row, Avg4 of the taps of
// both rows for a two-row row, computed in 16-bit lanes with per-layout masks
// so that every component averages on its own and truncates. Byte layouts
// whose column pattern repeats within 8 output bytes skip the plan and use one
// pair shuffle and pair sums for every group of the row (see Period).
#include "common/internal/fault.h"
#include "common/internal/simd.h"
#include "imgp/geometry/resize_down_kernels.h"

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/geometry/resize_down.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "common/internal/neon_raw-inl.h"
#include "common/internal/x86_raw-inl.h"
#include "imgp/geometry/resize_down_kernels.h"
#include "imgp/geometry/rotate_kernels.h"
#include "imgp/geometry/transpose-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
using rsz::ColState;
using rsz::ColTap;
using rsz::Cols;
using rsz::RowState;
using rsz::RowTap;
using rsz::ShrinkJob;

#if HWY_TARGET != HWY_SCALAR

// (a + b) >> 1 per component: a & b plus half of a ^ b, with the bits that a
// shift would move across components masked off.
template <class V>
HWY_INLINE V Avg2(V a, V b, V half) {
  return hn::Add(hn::And(a, b), hn::And(hn::ShiftRight<1>(hn::Xor(a, b)), half));
}

// (a + b + c + d) >> 2 per component: with p = (a + b) >> 1, q = (c + d) >> 1
// and e = 1 where both a + b and c + d are odd, it is (p + q + e) >> 1.
template <class V>
HWY_INLINE V Avg4(V a, V b, V c, V d, V half, V low) {
  const V x = hn::Xor(a, b), y = hn::Xor(c, d);
  const V p = hn::Add(hn::And(a, b), hn::And(hn::ShiftRight<1>(x), half));
  const V q = hn::Add(hn::And(c, d), hn::And(hn::ShiftRight<1>(y), half));
  const V e = hn::And(hn::And(x, y), low);
  const V z = hn::Xor(p, q);
  return hn::Add(hn::Add(hn::And(p, q), hn::And(hn::ShiftRight<1>(z), half)), hn::And(z, e));
}

using D16x8 = hn::Full128<uint8_t>;
using D16x16 = hn::Full128<uint16_t>;

// 16 output bytes from a 32-byte source window at `src`: idx[0]/idx[1] pick
// the first tap from the low/high half of the window, idx[2]/idx[3] the second
// (0x80 marks the other half, which contributes zero).
struct Chunk {
  int32_t out, src;
  uint8_t idx[4][16];
};
constexpr int kPlanChunks = 128;

// Up to kPlanChunks chunks of outputs from *st on, before output unit x_end;
// advances *st past them. Chunk offsets count from output unit `origin`.
// A chunk ends where 16 output bytes or a 32-byte window are full; the window
// ends at the last byte the chunk reads, so it never passes the row.
int BuildPlan(const Cols& cols, int32_t B, int64_t row_bytes, int32_t x_end, int32_t origin,
              ColState* st, Chunk* plan) {
  const int64_t out_bytes = int64_t{x_end} * B;
  if (row_bytes < 32) return 0;
  int n = 0;
  while (n < kPlanChunks && int64_t{st->x} * B + 16 <= out_bytes) {
    ColTap taps[16];
    int k = 0;
    int64_t first = 0, end = 0;
    ColState s = *st;
    while ((k + 1) * B <= 16 && s.x < x_end) {
      ColState s2 = s;
      const ColTap t = cols.Next(&s2);
      const int64_t a = int64_t{t.c} * B;
      const int64_t e = a + (t.two ? 2 * B : B);
      if (k > 0 && e - first > 32) break;
      if (k == 0) first = a;
      end = e;
      taps[k++] = t;
      s = s2;
    }
    const int64_t lo = end > 32 ? end - 32 : 0;
    Chunk& ch = plan[n++];
    ch.out = (st->x - origin) * B;
    ch.src = static_cast<int32_t>(lo);
    for (int i = 0; i < 16; ++i) {
      uint8_t ia = 0x80, ib = 0x80;
      if (i < k * B) {
        const ColTap& t = taps[i / B];
        ia = static_cast<uint8_t>(int64_t{t.c} * B + i % B - lo);
        ib = static_cast<uint8_t>(ia + (t.two ? B : 0));
      }
      ch.idx[0][i] = ia < 16 ? ia : 0x80;
      ch.idx[1][i] = ia >= 16 && ia < 32 ? ia - 16 : 0x80;
      ch.idx[2][i] = ib < 16 ? ib : 0x80;
      ch.idx[3][i] = ib >= 16 && ib < 32 ? ib - 16 : 0x80;
    }
    *st = s;
  }
  return n;
}

// The two taps of a chunk from the window at w.
HWY_INLINE void Taps(const uint8_t* w, const Chunk& ch, hn::Vec<D16x16>* a,
                     hn::Vec<D16x16>* b) {
  const D16x8 d8;
  const D16x16 du;
  const auto lo = hn::LoadU(d8, w);
  const auto hi = hn::LoadU(d8, w + 16);
  *a = hn::BitCast(du, hn::Or(hn::TableLookupBytesOr0(lo, hn::LoadU(d8, ch.idx[0])),
                              hn::TableLookupBytesOr0(hi, hn::LoadU(d8, ch.idx[1]))));
  *b = hn::BitCast(du, hn::Or(hn::TableLookupBytesOr0(lo, hn::LoadU(d8, ch.idx[2])),
                              hn::TableLookupBytesOr0(hi, hn::LoadU(d8, ch.idx[3]))));
}

void RunPlan(const ShrinkJob& job, const Chunk* plan, int n) {
  const D16x8 d8;
  const D16x16 du;
  const auto half = hn::Set(du, job.half);
  const auto low = hn::Set(du, job.low);
  RowState rs = job.row0;
  for (int32_t y = 0; y < job.nrows; ++y) {
    const RowTap t = job.rows.Next(&rs);
    const uint8_t* s0 = job.src + t.off;
    uint8_t* d = job.dst + y * job.dst_step;
    if (t.two) {
      const uint8_t* s1 = s0 + job.rows.next;
      for (int i = 0; i < n; ++i) {
        hn::Vec<D16x16> a, b, c, e;
        Taps(s0 + plan[i].src, plan[i], &a, &b);
        Taps(s1 + plan[i].src, plan[i], &c, &e);
        hn::StoreU(hn::BitCast(d8, Avg4(a, b, c, e, half, low)), d8, d + plan[i].out);
      }
    } else {
      for (int i = 0; i < n; ++i) {
        hn::Vec<D16x16> a, b;
        Taps(s0 + plan[i].src, plan[i], &a, &b);
        hn::StoreU(hn::BitCast(d8, Avg2(a, b, half)), d8, d + plan[i].out);
      }
    }
  }
}

// Byte layouts whose column pattern repeats within every 8 output bytes
// (fw = 2, or 3 units to 2, ...) take one pair shuffle for all of a row:
// group k of 8 output bytes reads a 16-byte window at k * step, the shuffle
// puts the two taps of output byte i in bytes 2i and 2i + 1 (a one-tap
// output reads its unit twice), and sums of adjacent bytes give every output
// its two-tap sum in a 16-bit lane. Two-row rows add both rows' sums before
// the shift, so (a + b + c + d) >> 2 stays exact.
// The last groups of a row, whose window would pass the row's end, read the
// 16 bytes that end there instead, with the shuffle moved to match.
struct Period {
  static constexpr int kMaxLate = 2;
  int32_t step;    // source bytes from one group to the next
  int32_t groups;  // whole groups per row whose window lies in the row
  int32_t late;    // groups after those, each with its own window
  bool shuffle;    // false when the taps already lie in place (bytes, fw = 2)
  uint8_t idx[16];
  int32_t late_src[kMaxLate];  // window of late group j
  uint8_t late_idx[kMaxLate][16];
};

bool FindPeriod(const ShrinkJob& job, Period* p) {
  const Cols& cols = job.cols;
  const int32_t B = job.unit_bytes;
  if (job.low != 0x0101 || cols.kind == Cols::kFixed16x9 || 8 % B != 0) return false;
  const int32_t G = 8 / B;  // units per group
  ColState s;
  p->shuffle = false;
  for (int32_t i = 0; i < G; ++i) {
    const ColTap t = cols.Next(&s);
    for (int32_t k = 0; k < B; ++k) {
      const int64_t a = int64_t{t.c} * B + k, b = a + (t.two ? B : 0);
      if (b >= 16) return false;
      const int32_t o = 2 * (i * B + k);
      p->idx[o] = static_cast<uint8_t>(a);
      p->idx[o + 1] = static_cast<uint8_t>(b);
      p->shuffle |= a != o || b != o + 1;
    }
  }
  if (s.ex != 0) return false;  // the next group would not start the same way
  p->step = s.c * B;
  const int64_t row_bytes = cols.NeededUnits() * B;
  const int64_t fit = row_bytes < 16 ? 0 : (row_bytes - 16) / p->step + 1;
  const int32_t whole = cols.dw / G;
  p->groups = static_cast<int32_t>(fit < whole ? fit : whole);
  if (p->groups == 0) return false;
  // Group k's taps end at most 16 bytes past k * step, inside the row, so a
  // window ending at the row's end holds them once k * step >= row_bytes - 16.
  p->late = 0;
  for (int32_t k = p->groups; k < whole && p->late < Period::kMaxLate; ++k) {
    const int64_t lo = row_bytes - 16, shift = int64_t{k} * p->step - lo;
    if (shift < 0) break;
    p->late_src[p->late] = static_cast<int32_t>(lo);
    for (int i = 0; i < 16; ++i) {
      p->late_idx[p->late][i] = static_cast<uint8_t>(p->idx[i] + shift);
    }
    ++p->late;
  }
  return true;
}

using D16x8Half = hn::Half<D16x8>;

// Sums of adjacent byte pairs as 16-bit lanes, and the sums of two rows.
#if KELO_X86_RAW
HWY_INLINE hn::Vec<D16x16> PairSums(hn::Vec<D16x8> v) {
  return hn::Vec<D16x16>{RawMulAddPairs(v.raw, _mm_set1_epi8(1))};
}
HWY_INLINE hn::Vec<D16x16> PairSums2(hn::Vec<D16x8> a, hn::Vec<D16x8> b) {
  return hn::Add(PairSums(a), PairSums(b));
}
// Lanes <= 255 of lo then hi, as bytes.
HWY_INLINE hn::Vec<D16x8> Narrow(hn::Vec<D16x16> lo, hn::Vec<D16x16> hi) {
  return hn::Vec<D16x8>{RawPackBytes(lo.raw, hi.raw)};
}
#elif HWY_TARGET == HWY_NEON
HWY_INLINE hn::Vec<D16x16> PairSums(hn::Vec<D16x8> v) {
  return hn::Vec<D16x16>{vpaddlq_u8(v.raw)};
}
HWY_INLINE hn::Vec<D16x16> PairSums2(hn::Vec<D16x8> a, hn::Vec<D16x8> b) {
  return hn::Vec<D16x16>{vpadalq_u8(vpaddlq_u8(a.raw), b.raw)};
}
HWY_INLINE hn::Vec<D16x8> Narrow(hn::Vec<D16x16> lo, hn::Vec<D16x16> hi) {
  return hn::Vec<D16x8>{vcombine_u8(vmovn_u16(lo.raw), vmovn_u16(hi.raw))};
}
#else
HWY_INLINE hn::Vec<D16x16> PairSums(hn::Vec<D16x8> v) {
  const D16x16 du;
  const auto w = hn::BitCast(du, v);
  return hn::Add(hn::And(w, hn::Set(du, 0xFF)), hn::ShiftRight<8>(w));
}
HWY_INLINE hn::Vec<D16x16> PairSums2(hn::Vec<D16x8> a, hn::Vec<D16x8> b) {
  return hn::Add(PairSums(a), PairSums(b));
}
HWY_INLINE hn::Vec<D16x8> Narrow(hn::Vec<D16x16> lo, hn::Vec<D16x16> hi) {
  const D16x8 d8;
  return hn::ConcatEven(d8, hn::BitCast(d8, hi), hn::BitCast(d8, lo));
}
#endif

// One row's groups. Each step writes 8 output bytes per group; a row whose
// group count is not a multiple of the step repeats its last step at the end,
// overlapping outputs already written with the same values.
template <bool kTwo, bool kShuffle>
class PeriodRow {
 public:
  PeriodRow(const Period& p, const uint8_t* s0, const uint8_t* s1)
      : step_(kShuffle ? p.step : 16), s0_(s0), s1_(s1) {}

  // Groups k and k + 1.
  HWY_INLINE hn::Vec<D16x8> Pair(ptrdiff_t k, hn::Vec<D16x8> idx) const {
    const ptrdiff_t off = k * step_;
    return Narrow(Sums(off, idx), Sums(off + step_, idx));
  }
  HWY_INLINE hn::Vec<D16x16> Sums(ptrdiff_t off, hn::Vec<D16x8> idx) const {
    const D16x8 d8;
    const auto taps = [&](const uint8_t* q) {
      const auto v = hn::LoadU(d8, q + off);
      return kShuffle ? hn::TableLookupBytes(v, idx) : v;
    };
    return kTwo ? hn::ShiftRight<2>(PairSums2(taps(s0_), taps(s1_)))
                : hn::ShiftRight<1>(PairSums(taps(s0_)));
  }

#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
  // Groups k .. k + 3 from a = s0 + k * step and b = s1 + k * step in 256-bit
  // vectors. With a shuffle one vector holds groups k and k + 2, the other
  // k + 1 and k + 3, so the block-wise pack stores them in order; without one
  // the groups are contiguous (step 16), the vectors are plain loads and a
  // cross-block permute restores the order.
  HWY_INLINE __m256i Quad(const uint8_t* a, const uint8_t* b, __m256i idx) const {
    if (kShuffle) {
      return RawPackBytes(Sums4(a, b, idx), Sums4(a + step_, b + step_, idx));
    }
    const __m256i v = RawPackBytes(Sums4(a, b, idx), Sums4(a + 32, b + 32, idx));
    return _mm256_permute4x64_epi64(v, 0xD8);
  }
  HWY_INLINE __m256i Sums4(const uint8_t* a, const uint8_t* b, __m256i idx) const {
    const auto taps = [&](const uint8_t* r) {
      if (!kShuffle) return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(r));
      const __m128i lo = _mm_loadu_si128(reinterpret_cast<const __m128i*>(r));
      const __m128i hi = _mm_loadu_si128(reinterpret_cast<const __m128i*>(r + 2 * step_));
      return _mm256_shuffle_epi8(_mm256_inserti128_si256(_mm256_castsi128_si256(lo), hi, 1),
                                 idx);
    };
    const __m256i ones = _mm256_set1_epi8(1);
    if (kTwo) {
      const __m256i sum = _mm256_add_epi16(RawMulAddPairs(taps(a), ones),
                                           RawMulAddPairs(taps(b), ones));
      return _mm256_srli_epi16(sum, 2);
    }
    return _mm256_srli_epi16(RawMulAddPairs(taps(a), ones), 1);
  }
  ptrdiff_t step() const { return step_; }
  const uint8_t* s0() const { return s0_; }
  const uint8_t* s1() const { return s1_; }
#endif

 private:
  ptrdiff_t step_;
  const uint8_t* s0_;
  const uint8_t* s1_;
};

// n groups from s0 and s1 on.
template <bool kTwo, bool kShuffle>
HWY_INLINE void PeriodRowRun(const Period& p, const uint8_t* s0, const uint8_t* s1, uint8_t* d,
                             ptrdiff_t n, hn::Vec<D16x8> idx) {
  const PeriodRow<kTwo, kShuffle> row(p, s0, s1);
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
  if (n >= 4) {
    const __m256i idx2 = _mm256_broadcastsi128_si256(idx.raw);
    const ptrdiff_t adv = 4 * row.step();
    const uint8_t* a = row.s0();
    const uint8_t* b = row.s1();
    uint8_t* o = d;
    // Two steps per turn: the loop's own instructions weigh on so short a body.
    ptrdiff_t i = n / 4;
    for (; i >= 2; i -= 2, a += 2 * adv, b += 2 * adv, o += 64) {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(o), row.Quad(a, b, idx2));
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(o + 32), row.Quad(a + adv, b + adv, idx2));
    }
    if (i != 0) _mm256_storeu_si256(reinterpret_cast<__m256i*>(o), row.Quad(a, b, idx2));
    if (n % 4 != 0) {
      const ptrdiff_t back = (n - 4) * row.step();
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 8 * (n - 4)),
                          row.Quad(row.s0() + back, row.s1() + back, idx2));
    }
    return;
  }
#endif
  const D16x8 d8;
  if (n >= 2) {
    ptrdiff_t k = 0;
    for (; k + 2 <= n; k += 2) hn::StoreU(row.Pair(k, idx), d8, d + 8 * k);
    if (k < n) hn::StoreU(row.Pair(n - 2, idx), d8, d + 8 * (n - 2));
    return;
  }
  const auto lo = row.Sums(0, idx);
  const D16x8Half dh;
  hn::StoreU(hn::LowerHalf(dh, Narrow(lo, lo)), dh, d);
}

// The late groups of a row among groups g0 .. g1 - 1; d is group g0's.
template <bool kTwo>
HWY_INLINE void LateGroups(const Period& p, const uint8_t* s0, const uint8_t* s1, uint8_t* d,
                           int32_t g0, int32_t g1) {
  const D16x8 d8;
  const D16x8Half dh;
  for (int j = 0; j < p.late; ++j) {
    const int32_t k = p.groups + j;
    if (k < g0 || k >= g1) continue;
    const PeriodRow<kTwo, true> row(p, s0 + p.late_src[j], s1 + p.late_src[j]);
    const auto v = row.Sums(0, hn::LoadU(d8, p.late_idx[j]));
    hn::StoreU(hn::LowerHalf(dh, Narrow(v, v)), dh, d + 8 * (k - g0));
  }
}

// Groups g0 .. g1 - 1 of the job's rows.
template <bool kShuffle>
void RunPeriod(const ShrinkJob& job, const Period& p, int32_t g0, int32_t g1) {
  const D16x8 d8;
  const auto idx = hn::LoadU(d8, p.idx);
  const ptrdiff_t off = ptrdiff_t{g0} * (kShuffle ? p.step : 16);
  const ptrdiff_t n = (g1 < p.groups ? g1 : p.groups) - g0;
  RowState rs = job.row0;
  uint8_t* d = job.dst;
  for (int32_t y = 0; y < job.nrows; ++y, d += job.dst_step) {
    const RowTap t = job.rows.Next(&rs);
    const uint8_t* s0 = job.src + t.off;
    const uint8_t* s1 = t.two ? s0 + job.rows.next : s0;
    if (t.two) {
      if (n > 0) PeriodRowRun<true, kShuffle>(p, s0 + off, s1 + off, d, n, idx);
      LateGroups<true>(p, s0, s1, d, g0, g1);
    } else {
      if (n > 0) PeriodRowRun<false, kShuffle>(p, s0 + off, s1 + off, d, n, idx);
      LateGroups<false>(p, s0, s1, d, g0, g1);
    }
  }
}

#if KELO_X86_RAW
// Paired tiles for the quarter turns (turn_tile.h) from the period path: the
// two rows of a paired row shrink side by side, a group per 128-bit block,
// into 16-bit sums, and the sums of the odd-byte row shifted up and merged
// into those of the other give the paired bytes (the first round of the
// turn's transpose, without packing either row).
using DP = hn::CappedTag<uint8_t, 32>;
using DPw = hn::Repartition<uint16_t, DP>;
constexpr int32_t kPairGroups = static_cast<int32_t>(hn::MaxLanes(DP()) / 16);

// The sums of kPairGroups groups of one row: their taps in the 16 bytes at
// lo (block 0) and at hi (block 1), and for two rows in those next bytes
// on; without a shuffle the groups lie in place from lo on.
template <bool kTwo, bool kShuffle>
HWY_INLINE hn::Vec<DPw> GroupSums(const uint8_t* lo, const uint8_t* hi, ptrdiff_t next,
                                  hn::Vec<DP> idx) {
  const DP d;
  const auto ones = hn::Set(d, 1);
  const auto sums = [&](ptrdiff_t o) {
    const auto v = kShuffle ? hn::TableLookupBytes(LoadBlocks(d, lo + o, hi + o), idx)
                            : hn::LoadU(d, lo + o);
    return hn::Vec<DPw>{RawMulAddPairs(v.raw, ones.raw)};
  };
  return kTwo ? hn::ShiftRight<2>(hn::Add(sums(0), sums(next))) : hn::ShiftRight<1>(sums(0));
}

// The groups of a paired row past the whole windows: each block's window
// (a byte offset in the row) and shuffle.
struct PairedTail {
  ptrdiff_t lo, hi;
  hn::Vec<DP> idx;
};
constexpr int kMaxTails = Period::kMaxLate + 1;

// n groups (a multiple of kPairGroups) of rows a and b from byte offset off
// on, step bytes apart, then the tails, into the paired row at o.
template <bool kTwoA, bool kTwoB, bool kShuffle>
void PairedRow(const uint8_t* a, const uint8_t* b, ptrdiff_t next, ptrdiff_t off,
               ptrdiff_t step, int32_t n, hn::Vec<DP> idx, const PairedTail* tails, int nt,
               uint8_t* o) {
  const DP d;
  const auto put = [&](hn::Vec<DPw> lo, hn::Vec<DPw> hi) {
    hn::StoreU(hn::BitCast(d, hn::Or(lo, hn::ShiftLeft<8>(hi))), d, o);
    o += 16 * kPairGroups;
  };
  a += off, b += off;
  const ptrdiff_t adv = kPairGroups * step;
  for (int32_t k = 0; k < n; k += kPairGroups, a += adv, b += adv) {
    put(GroupSums<kTwoA, kShuffle>(a, a + step, next, idx),
        GroupSums<kTwoB, kShuffle>(b, b + step, next, idx));
  }
  a -= off + ptrdiff_t{n / kPairGroups} * adv;
  b -= off + ptrdiff_t{n / kPairGroups} * adv;
  for (int i = 0; i < nt; ++i) {
    const PairedTail& t = tails[i];
    put(GroupSums<kTwoA, kShuffle>(a + t.lo, a + t.hi, next, t.idx),
        GroupSums<kTwoB, kShuffle>(b + t.lo, b + t.hi, next, t.idx));
  }
}

template <bool kShuffle, class... Args>
void PairedRowOf(bool two_a, bool two_b, Args... args) {
  if (two_a) {
    if (two_b) return PairedRow<true, true, kShuffle>(args...);
    return PairedRow<true, false, kShuffle>(args...);
  }
  if (two_b) return PairedRow<false, true, kShuffle>(args...);
  PairedRow<false, false, kShuffle>(args...);
}

// The job's rows (a multiple of 16, at most 64) as a paired tile at tile,
// ts bytes between paired rows, in the row order of its image turned by op
// (90l: top row first; 90r: bottom row first), for the groups of its columns
// that the period path takes (late ones too), two at a time; returns the
// columns done, from job.col0.x on.
int32_t ShrinkPairedVec(const ShrinkJob& job, int op, uint8_t* tile, ptrdiff_t ts) {
  Period p;
  if (job.unit_bytes != 1 || (op != kRot90l && op != kRot90r) || job.nrows % 16 != 0 ||
      job.nrows > 64 || job.col0.x % 8 != 0 || !FindPeriod(job, &p)) {
    return 0;
  }
  // Late groups need their own shuffles.
  const int32_t all = p.shuffle ? p.groups + p.late : p.groups;
  const int32_t g0 = job.col0.x / 8;
  const int32_t end = job.col_end / 8 < all ? job.col_end / 8 : all;
  const int32_t n = (end - g0) / 2 * 2;
  if (n <= 0) return 0;
  const int32_t inside = p.groups - g0 < n ? (p.groups - g0) / kPairGroups * kPairGroups : n;
  const DP d;
  const auto idx = hn::LoadDup128(d, p.idx);
  const ptrdiff_t step = p.shuffle ? p.step : 16;
  PairedTail tails[kMaxTails];
  int nt = 0;
  for (int32_t g = g0 + inside; g < g0 + n; g += kPairGroups) {
    ptrdiff_t src[2];
    const uint8_t* sh[2];
    for (int32_t j = 0; j < kPairGroups; ++j) {
      const int32_t late = g + j - p.groups;
      src[j] = late < 0 ? (g + j) * step : p.late_src[late];
      sh[j] = late < 0 ? p.idx : p.late_idx[late];
    }
    tails[nt++] = PairedTail{src[0], src[kPairGroups - 1],
                             LoadBlocks(d, sh[0], sh[kPairGroups - 1])};
  }
  const uint8_t* rows[64];
  bool two[64];
  RowState rs = job.row0;
  for (int32_t y = 0; y < job.nrows; ++y) {
    const RowTap t = job.rows.Next(&rs);
    rows[y] = job.src + t.off;
    two[y] = t.two;
  }
  const ptrdiff_t off = g0 * step, next = job.rows.next;
  const bool left = op == kRot90l;
  // Paired rows in the order of their source rows (the plain kernel's).
  for (int32_t k = 0; k < job.nrows / 2; ++k) {
    const int32_t q = left ? k : job.nrows / 2 - 1 - k;
    const int32_t c = q / 8 * 16 + q % 8;  // the image row of the even bytes
    const int32_t ya = left ? c : job.nrows - 1 - c;
    const int32_t yb = left ? c + 8 : job.nrows - 9 - c;
    if (p.shuffle) {
      PairedRowOf<true>(two[ya], two[yb], rows[ya], rows[yb], next, off, step, inside, idx,
                        tails, nt, tile + q * ts);
    } else {
      PairedRowOf<false>(two[ya], two[yb], rows[ya], rows[yb], next, off, step, inside, idx,
                         tails, nt, tile + q * ts);
    }
  }
  return 8 * n;
}
#else
int32_t ShrinkPairedVec(const ShrinkJob&, int, uint8_t*, ptrdiff_t) { return 0; }
#endif

#if KELO_X86_RAW
// The x86 row of Box2x2: n >= Lanes(u8) outputs, a full vector of them per
// step from two vectors of each row (pair sums by pmaddubsw with ones, the
// rows added, shifted, packed), then one step ending at n.
HWY_INLINE void RawBox2x2(const uint8_t* a, const uint8_t* b, uint8_t* d, size_t n) {
  const hn::ScalableTag<uint8_t> d8;
  const hn::Repartition<uint16_t, decltype(d8)> d16;
  const size_t N = hn::Lanes(d8);
  const auto ones = hn::Set(d8, 1);
  const auto sums = [&](size_t i) {
    const auto pa = hn::Vec<decltype(d16)>{RawMulAddPairs(hn::LoadU(d8, a + i).raw, ones.raw)};
    const auto pb = hn::Vec<decltype(d16)>{RawMulAddPairs(hn::LoadU(d8, b + i).raw, ones.raw)};
    return hn::ShiftRight<2>(hn::Add(pa, pb));
  };
  const auto step = [&](size_t x) {
    // packuswb interleaves the halves by 128-bit block: put the blocks of
    // the low half first again.
    auto v = RawPackBytes(sums(2 * x).raw, sums(2 * x + N).raw);
#if HWY_TARGET <= HWY_AVX3
    v = _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), v);
#elif HWY_TARGET <= HWY_AVX2
    v = _mm256_permute4x64_epi64(v, 0xD8);
#endif
    hn::StoreU(hn::Vec<decltype(d8)>{v}, d8, d + x);
  };
  size_t x = 0;
  for (; x + N <= n; x += N) step(x);
  if (x < n) step(n - N);
}
constexpr size_t kBox2x2Min = HWY_LANES(uint8_t);
#elif KELO_NEON_RAW
constexpr size_t kBox2x2Min = 16;
#endif

#if KELO_X86_RAW || KELO_NEON_RAW
// Exact 2:1 of a byte plane (fw = 2, pairs of rows): every output is the
// truncated mean of a 2x2 block, pair sums of both rows narrowed by two, a
// row of at least one vector of outputs ending with one vector that overlaps
// the last ones. Nothing to divide, so the set-up is a few compares.
bool Box2x2(const ShrinkJob& job, ColState* st) {
  const int32_t n = job.col_end - job.col0.x;
  if (job.unit_bytes != 1 || job.cols.kind != Cols::kMult || job.cols.fw != 2 ||
      job.rows.kind != rsz::Rows::kPairs || n < static_cast<int32_t>(kBox2x2Min)) {
    return false;
  }
  const uint8_t* s = job.src + job.row0.off + 2 * ptrdiff_t{job.col0.x};
  uint8_t* d = job.dst;
  const ptrdiff_t next = job.rows.next, step = job.rows.step, dst_step = job.dst_step;
  for (int32_t y = job.nrows; y > 0; --y, s += step, d += dst_step) {
    RawBox2x2(s, s + next, d, static_cast<size_t>(n));
  }
  st->x = job.col_end;
  st->c = 2 * job.col_end;
  st->ex = 0;
  return true;
}
#endif

void ShrinkVec(const ShrinkJob& job, ColState* st) {
#if KELO_X86_RAW || KELO_NEON_RAW
  if (Box2x2(job, st)) return;
#endif
  const Cols& cols = job.cols;
  const int32_t B = job.unit_bytes;
  Period period;
  // The period path runs the whole groups of the range; a range that starts
  // inside a group goes to the plan.
  if (FindPeriod(job, &period) && job.col0.x % (8 / B) == 0) {
    const int32_t G = 8 / B, g0 = job.col0.x / G;
    const int32_t all = period.groups + period.late;
    const int32_t g1 = job.col_end / G < all ? job.col_end / G : all;
    if (g1 > g0) {
      if (period.shuffle) {
        RunPeriod<true>(job, period, g0, g1);
      } else {
        RunPeriod<false>(job, period, g0, g1);
      }
      st->x = g1 * G;
      st->c = static_cast<int32_t>(int64_t{g1} * period.step / B);
      st->ex = 0;
      return;
    }
  }
  if (cols.kind != Cols::kFixed16x9 && (int64_t{cols.fw} + 1) * B > 16) return;
  const int64_t row_bytes = cols.NeededUnits() * B;
  Chunk plan[kPlanChunks];
  for (;;) {
    const int n = BuildPlan(cols, B, row_bytes, job.col_end, job.col0.x, st, plan);
    if (n == 0) return;
    RunPlan(job, plan, n);
    if (n < kPlanChunks) return;
  }
}

// Bytes 0 .. n of (a + b) >> 1 per component in whole vectors; returns the
// bytes done.
int64_t AvgRowsVec(const uint8_t* a, const uint8_t* b, uint8_t* d, int64_t n, uint16_t half) {
  const hn::ScalableTag<uint8_t> d8;
  const hn::Repartition<uint16_t, decltype(d8)> du;
  const int64_t N = static_cast<int64_t>(hn::Lanes(d8));
  const auto h = hn::Set(du, half);
  int64_t i = 0;
  for (; i + N <= n; i += N) {
    const auto va = hn::BitCast(du, hn::LoadU(d8, a + i));
    const auto vb = hn::BitCast(du, hn::LoadU(d8, b + i));
    hn::StoreU(hn::BitCast(d8, Avg2(va, vb, h)), d8, d + i);
  }
  return i;
}

#else   // HWY_SCALAR: the scalar rows do everything.
void ShrinkVec(const ShrinkJob&, ColState*) {}
int64_t AvgRowsVec(const uint8_t*, const uint8_t*, uint8_t*, int64_t, uint16_t) { return 0; }
int32_t ShrinkPairedVec(const ShrinkJob&, int, uint8_t*, ptrdiff_t) { return 0; }
#endif  // HWY_TARGET != HWY_SCALAR

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_HAVE_HWY

#if !KELO_HAVE_HWY || HWY_ONCE
#include <cstdlib>

#include "common/internal/api.h"
#include "imgp/core/copy_rows.h"
#include "imgp/geometry/resize_tiles.h"
#include "imgp/geometry/turn_tile.h"
#include "kimgp_rsz.h"
#include "kimgp_rsz_rot.h"

namespace kelo {
namespace rsz {
namespace scalar {
inline void ShrinkVec(const ShrinkJob&, ColState*) {}
inline int64_t AvgRowsVec(const uint8_t*, const uint8_t*, uint8_t*, int64_t, uint16_t) {
  return 0;
}
inline int32_t ShrinkPairedVec(const ShrinkJob&, int, uint8_t*, ptrdiff_t) { return 0; }
}  // namespace scalar
}  // namespace rsz

using rsz::ColState;
using rsz::ShrinkJob;
KELO_VEC_EXPORT(ShrinkVec);
KELO_VEC_EXPORT(AvgRowsVec);
KELO_VEC_EXPORT(ShrinkPairedVec);

namespace rsz {
namespace {

void ShrinkBest(const ShrinkJob& job, ColState* st) {
  KELO_VEC_CALL(ShrinkVec, scalar::ShrinkVec)(job, st);
}

template <class L>
void DownMult(const void* src, void* dst, int32_t dw, int32_t dh, int32_t fw, int32_t ss,
              int32_t row_step, int32_t ds) {
  constexpr ptrdiff_t U = L::kStrideUnit;
  Shrink<L>(MakeJob<L>(src, dst, ds * U, Cols{Cols::kMult, fw, 0, dw},
                       Rows{Rows::kPairs, row_step * U, ss * U, 0, dh}),
            &ShrinkBest);
}

template <class L, Cols::Kind kCols>
void DownNonMult(const void* src, void* dst, int32_t dw, int32_t dh, int32_t fw, int32_t ss,
                 int32_t row_step, int32_t rw, int32_t rh, int32_t ds) {
  constexpr ptrdiff_t U = L::kStrideUnit;
  Shrink<L>(MakeJob<L>(src, dst, ds * U, Cols{kCols, fw, rw, dw},
                       Rows{Rows::kAccum, row_step * U, ss * U, rh, dh}),
            &ShrinkBest);
}

template <class L>
void DownW(const void* src, void* tmp, int32_t ss, int32_t dw, int32_t sh, int32_t fw,
           int32_t rw) {
  constexpr ptrdiff_t U = L::kStrideUnit;
  const Cols cols{rw == 0 ? Cols::kMult : Cols::kAccum, fw, rw, dw};
  Shrink<L>(MakeJob<L>(src, tmp, ptrdiff_t{dw} * L::kBytes, cols,
                       Rows{Rows::kSingle, ss * U, 0, 0, sh}),
            &ShrinkBest);
}

// Output rows of dw units from intermediate rows tstep bytes apart, through
// the sink: with rh = 0 and fh >= 2 the average of rows fh*y and fh*y + 1,
// else the row accumulator.
template <class L>
void DownRows(const uint8_t* t, ptrdiff_t tstep, int32_t dw, RowSink* sink, int32_t dh,
              int32_t fh, int32_t rh) {
  const ptrdiff_t row = ptrdiff_t{dw} * L::kBytes;
  const Rows rows = rh == 0 && fh >= 2 ? Rows{Rows::kPairs, fh * tstep, tstep, 0, dh}
                                       : Rows{Rows::kAccum, fh * tstep, tstep, rh, dh};
  RowState rs;
  for (int32_t y = 0; y < dh; ++y) {
    const RowTap tap = rows.Next(&rs);
    const uint8_t* s0 = t + tap.off;
    uint8_t* d = sink->Row(y);
    if (!tap.two) {
      if (row > 0) CopyBytes(s0, d, static_cast<size_t>(row));
    } else {
      const int64_t done = KELO_VEC_CALL(AvgRowsVec, scalar::AvgRowsVec)(s0, s0 + tstep, d, row,
                                                                       AvgBits<L>::kHalf);
      scalar::AvgRow<L>(s0, s0 + tstep, d, done / L::kBytes, dw);
    }
    sink->Done(y);
  }
}

// Rows of dw units from the packed intermediate to the destination.
template <class L>
void DownH(const void* tmp, void* dst, int32_t dw, int32_t ds, int32_t dh, int32_t fh,
           int32_t rh) {
  RowSink sink = RowSink::Plain(static_cast<uint8_t*>(dst), ds * ptrdiff_t{L::kStrideUnit});
  DownRows<L>(static_cast<const uint8_t*>(tmp), ptrdiff_t{dw} * L::kBytes, dw, &sink, dh, fh,
              rh);
}

// Plain output columns [x0, x1) of rows [y0, y1) of `whole` (the plain
// kernel's job with dst the rotated destination): the plain job on a tile of
// rows of one column chunk at a time, each tile rotated into place.
template <class L>
void RotShrinkTiles(int op, const ShrinkJob& whole, ptrdiff_t ds, int32_t x0, int32_t x1,
                    int32_t y0, int32_t y1) {
  if (x0 >= x1 || y0 >= y1) return;
  alignas(64) uint8_t tile[kTileBytes];
  RotTiles rt{op, L::kBytes, whole.cols.dw, whole.rows.dh, whole.dst, ds, tile};
  ShrinkJob job = whole;
  job.dst = tile;
  while (job.col0.x < x0) job.cols.Next(&job.col0);
  RowState first = whole.row0;
  for (int32_t y = 0; y < y0; ++y) whole.rows.Next(&first);
  ForEachChunk(&rt, x0, x1, [&] {
    job.dst_step = rt.TileStep();
    job.col_end = rt.x0 + rt.wc;
    job.row0 = first;
    for (int32_t y = y0; y < y1; y += rt.Rows()) {
      job.nrows = y1 - y < rt.Rows() ? y1 - y : rt.Rows();
      Shrink<L>(job, &ShrinkBest);
      for (int32_t i = 0; i < job.nrows; ++i) job.rows.Next(&job.row0);
      rt.Flush(y, job.nrows);
    }
    // The next chunk starts where this one ends (the last has none).
    while (job.col_end < x1 && job.col0.x < job.col_end) job.cols.Next(&job.col0);
  });
}

// Byte planes turned by a quarter go through bands of 64 rows, so that each
// destination row takes a cache line per band (then one of 32 and one of 16
// for the rows left), and of whole rows up to kBandCols units, so that the
// source rows are read through as in the plain kernel.
constexpr int32_t kBandRows = 64, kBandCols = 2048;
inline int32_t BandRows(int32_t left) {
  return left >= 64 ? 64 : left >= 32 ? 32 : left >= 16 ? 16 : 0;
}

// The rotating one-pass shrink: the plain job on a tile of rows of one
// column chunk at a time, each tile rotated into place; byte planes turned
// by a quarter take bands while they last (in a band buffer, when one can be
// had), as paired tiles for the columns the vector path pairs and as plain
// rows for the rest.
template <class L>
void RotShrink(int op, const ShrinkJob& whole, ptrdiff_t ds) {
  const int32_t w = whole.cols.dw, h = whole.rows.dh;
  const int32_t chunk = w < kBandCols ? w : kBandCols;
  int32_t yf = 0;
  uint8_t* band = nullptr;
  if (L::kBytes == 1 && (op == kRot90l || op == kRot90r) && w >= 1 && h >= 16) {
    band = static_cast<uint8_t*>(HeapAlloc(static_cast<size_t>(kBandRows) * chunk));
  }
  if (band != nullptr) {
    yf = h / 16 * 16;
    const RotTiles rt{op, 1, w, h, whole.dst, ds, band};
    ShrinkJob job = whole;
    job.dst = band;
    for (int32_t x0 = 0; x0 < w; x0 += chunk) {
      const int32_t wc = w - x0 < chunk ? w - x0 : chunk;
      job.col_end = x0 + wc;
      job.row0 = RowState{};
      // The columns that bands take as paired tiles (the same for every
      // band that has them), and the column state after them.
      int32_t paired = 0;
      ColState rest = job.col0;
      for (int32_t y0 = 0; y0 < yf; y0 += job.nrows) {
        job.nrows = BandRows(h - y0);
        const int32_t done =
            KELO_VEC_CALL(ShrinkPairedVec, scalar::ShrinkPairedVec)(job, op, band, 2 * wc);
        if (done > 0) {
          TurnPairedTileColumns(op, band, 2 * wc, job.nrows, done,
                                rt.Corner(x0, done, y0, job.nrows), ds);
          if (done != paired) {
            paired = done;
            rest = job.col0;
            while (rest.x < x0 + paired) job.cols.Next(&rest);
          }
        }
        ShrinkJob part = job;
        if (done > 0) part.col0 = rest;
        const int32_t px = part.col0.x, pw = x0 + wc - px;
        part.dst_step = pw;
        if (pw > 0) {
          Shrink<L>(part, &ShrinkBest);
          const int32_t turned = TurnTileColumns(op, 1, band, pw, job.nrows, pw,
                                                 rt.Corner(px, pw, y0, job.nrows), ds);
          if (turned < pw) rt.Turn(band + turned, pw, px + turned, pw - turned, y0, job.nrows);
        }
        for (int32_t i = 0; i < job.nrows; ++i) job.rows.Next(&job.row0);
      }
      while (job.col_end < w && job.col0.x < job.col_end) job.cols.Next(&job.col0);
    }
    std::free(band);
  }
  RotShrinkTiles<L>(op, whole, ds, 0, w, yf, h);
}

template <class L>
void RotDownMult(int op, const void* src, void* dst, int32_t dw, int32_t dh, int32_t fw,
                 int32_t ss, int32_t row_step, int32_t ds) {
  static_assert(L::kStrideUnit == 1, "byte strides");
  RotShrink<L>(op,
               MakeJob<L>(src, dst, ds, Cols{Cols::kMult, fw, 0, dw},
                          Rows{Rows::kPairs, row_step, ss, 0, dh}),
               ds);
}

template <class L>
void RotDownNonMult(int op, const void* src, void* dst, int32_t dw, int32_t dh, int32_t fw,
                    int32_t ss, int32_t row_step, int32_t rw, int32_t rh, int32_t ds) {
  static_assert(L::kStrideUnit == 1, "byte strides");
  RotShrink<L>(op,
               MakeJob<L>(src, dst, ds, Cols{Cols::kAccum, fw, rw, dw},
                          Rows{Rows::kAccum, row_step, ss, rh, dh}),
               ds);
}

// The rotating height-only shrink: column chunks of the intermediate (its
// rows stay dw units apart) through a tile sink.
template <class L>
void RotDownH(int op, const void* tmp, void* dst, int32_t dw, int32_t ds, int32_t dh,
              int32_t fh, int32_t rh) {
  static_assert(L::kStrideUnit == 1, "byte strides");
  alignas(64) uint8_t tile[kTileBytes];
  RotTiles rt{op, L::kBytes, dw, dh, static_cast<uint8_t*>(dst), ds, tile};
  const auto* t = static_cast<const uint8_t*>(tmp);
  ForEachChunk(&rt, [&] {
    RowSink sink = rt.Sink();
    DownRows<L>(t + ptrdiff_t{rt.x0} * L::kBytes, ptrdiff_t{dw} * L::kBytes, rt.wc, &sink, dh,
                fh, rh);
    sink.Finish();
  });
}

}  // namespace
}  // namespace rsz
}  // namespace kelo

#define KELO_SHRINK_ARGS                                                               \
  const void *src, void *dst, int32_t dw, int32_t dh, int32_t fw, int32_t src_stride, \
      int32_t row_step
#define KELO_RSZ_DOWN_MULT(name, L)                                                   \
  KELO_EXPORT void kimgp_##name##_rsz_down_mult(KELO_SHRINK_ARGS, int32_t dst_stride) { \
    kelo::rsz::DownMult<kelo::rsz::L>(src, dst, dw, dh, fw, src_stride, row_step,       \
                                      dst_stride);                                      \
  }
#define KELO_RSZ_DOWN_NON_MULT(name, L, suffix, kind)                                  \
  KELO_EXPORT void kimgp_##name##_rsz_down_non_mult##suffix(                           \
      KELO_SHRINK_ARGS, int32_t rw, int32_t rh, int32_t dst_stride) {                  \
    kelo::rsz::DownNonMult<kelo::rsz::L, kelo::rsz::Cols::kind>(                        \
        src, dst, dw, dh, fw, src_stride, row_step, rw, rh, dst_stride);                \
  }
#define KELO_RSZ_DOWN_W(name, L)                                                       \
  KELO_EXPORT void kimgp_##name##_rsz_down_w(const void *src, void *tmp,               \
                                             int32_t src_stride, int32_t dw,           \
                                             int32_t sh, int32_t fw, int32_t rw) {     \
    kelo::rsz::DownW<kelo::rsz::L>(src, tmp, src_stride, dw, sh, fw, rw);              \
  }
#define KELO_RSZ_DOWN_H(name, L)                                                       \
  KELO_EXPORT void kimgp_##name##_rsz_down_h(const void *tmp, void *dst, int32_t dw,   \
                                             int32_t dst_stride, int32_t dh,           \
                                             int32_t fh, int32_t rh) {                 \
    kelo::rsz::DownH<kelo::rsz::L>(tmp, dst, dw, dst_stride, dh, fh, rh);              \
  }

// Every shrinking kind of every layout: (name, layout) per kind.
#define KELO_EACH_BYTE_LAYOUT(X) \
  X(8b, L8b)                       \
  X(8b8b, L8b8b)                   \
  X(5b6b5b, L5b6b5b)               \
  X(8b8b8b, L8b8b8b)               \
  X(8b8b8b8b, L8b8b8b8b)
#define KELO_RSZ_DOWN_GENERAL(name, L) KELO_RSZ_DOWN_NON_MULT(name, L, , kAccum)

KELO_EACH_BYTE_LAYOUT(KELO_RSZ_DOWN_MULT)
KELO_RSZ_DOWN_MULT(16b, L16b)
KELO_RSZ_DOWN_MULT(16b16b, L16b16b)
KELO_EACH_BYTE_LAYOUT(KELO_RSZ_DOWN_GENERAL)
KELO_EACH_BYTE_LAYOUT(KELO_RSZ_DOWN_W)
KELO_RSZ_DOWN_H(8b, L8b)
KELO_RSZ_DOWN_H(8b8b, L8b8b)
KELO_RSZ_DOWN_H(5b6b5b, L5b6b5b)

// The 16-to-9 width kernels: the fixed column pattern, rows by the
// accumulator with the given height.
KELO_RSZ_DOWN_NON_MULT(8b, L8b, _720p_720x404, kFixed16x9)
KELO_RSZ_DOWN_NON_MULT(8b8b, L8b8b, _720p_720x404, kFixed16x9)


// The rotating shrinking kernels: kimgp_<name>_rsz_rot_<op>_<kind>.
#define KELO_RSZ_ROT_DOWN(name, L, op, kop)                                                 \
  KELO_EXPORT void kimgp_##name##_rsz_rot_##op##_down_mult(KELO_SHRINK_ARGS,                \
                                                          int32_t dst_stride) {             \
    kelo::rsz::RotDownMult<kelo::rsz::L>(kop, src, dst, dw, dh, fw, src_stride, row_step,   \
                                         dst_stride);                                       \
  }                                                                                         \
  KELO_EXPORT void kimgp_##name##_rsz_rot_##op##_down_non_mult(                             \
      KELO_SHRINK_ARGS, int32_t rw, int32_t rh, int32_t dst_stride) {                       \
    kelo::rsz::RotDownNonMult<kelo::rsz::L>(kop, src, dst, dw, dh, fw, src_stride, row_step, \
                                            rw, rh, dst_stride);                            \
  }                                                                                         \
  KELO_EXPORT void kimgp_##name##_rsz_rot_##op##_down_h(const void *tmp, void *dst,         \
                                                        int32_t dw, int32_t dst_stride,     \
                                                        int32_t dh, int32_t fh, int32_t rh) { \
    kelo::rsz::RotDownH<kelo::rsz::L>(kop, tmp, dst, dw, dst_stride, dh, fh, rh);           \
  }
KELO_RSZ_ROT_KERNELS(KELO_RSZ_ROT_DOWN)
#undef KELO_RSZ_ROT_DOWN
#endif  // !KELO_HAVE_HWY || HWY_ONCE
