// Turned tiles: 16 bytes of every tile row at a time, transposed in
// registers block by block (16 rows of bytes or 4 rows of 4-byte units per
// 128-bit block; a 256-bit vector takes the next rows in its second block),
// and the blocks of all the rows of a set stored side by side, so that a
// destination row takes 32 or 64 bytes in a row.
#include "common/internal/simd.h"
#include "imgp/geometry/turn_tile.h"

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/geometry/turn_tile.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "imgp/geometry/rotate_kernels.h"
#include "imgp/geometry/transpose-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

using D16 = hn::Full128<uint8_t>;
using DW = hn::CappedTag<uint8_t, 32>;

// R = 16 / N rows per block from `first` on, `next` bytes apart (block 1:
// the R after those), 16 bytes each, turned: unit column v to o + v * down.
template <size_t N, class D>
HWY_INLINE void TurnSet(D d, const uint8_t* first, ptrdiff_t next, uint8_t* o, ptrdiff_t down) {
  constexpr int32_t R = 16 / N;
  hn::Vec<D> r[R];
  const ptrdiff_t hi = R * next;
  ForRows<R>(first, next, [&](int32_t i, const uint8_t* p) { r[i] = LoadBlocks(d, p, p + hi); });
  TransposeInBlocks<N, R>(d, r);
  ForRows<R>(o, down, [&](int32_t v, uint8_t* q) { hn::StoreU(r[v], d, q); });
}

// The same for a paired tile of bytes (see turn_tile.h): 8 paired rows per
// block from `first` on, `next` bytes apart (block 1: the 8 after those),
// 32 bytes each; their two halves are the first round of the transpose.
template <class D>
HWY_INLINE void TurnPairedSet(D d, const uint8_t* first, ptrdiff_t next, uint8_t* o,
                              ptrdiff_t down) {
  hn::Vec<D> r[16];
  const ptrdiff_t hi = 8 * next;
  ForRows<8>(first, next, [&](int32_t i, const uint8_t* p) {
    r[2 * i] = LoadBlocks(d, p, p + hi);
    r[2 * i + 1] = LoadBlocks(d, p + 16, p + hi + 16);
  });
  TransposeInBlocks<1, 16, 2>(d, r);
  ForRows<16>(o, down, [&](int32_t v, uint8_t* q) { hn::StoreU(r[v], d, q); });
}

// Columns [0, 16 / N * groups) of the tile. Tile row y goes to destination
// unit y (90l) or rows - 1 - y (90r); column x to destination row x (90r) or
// n - 1 - x (90l) below dst, n being the columns turned.
template <size_t N, bool kLeft>
void TurnGroups(const uint8_t* tile, ptrdiff_t ts, int32_t rows, int32_t groups, uint8_t* dst,
                ptrdiff_t ds) {
  constexpr int32_t R = 16 / N;
  constexpr int32_t kSet = R * static_cast<int32_t>(hn::MaxLanes(DW()) / 16);
  const ptrdiff_t down = kLeft ? -ds : ds;
  const ptrdiff_t next = kLeft ? ts : -ts;
  const int32_t whole = rows / kSet * kSet;
  uint8_t* o = kLeft ? dst + ptrdiff_t{R * groups - 1} * ds : dst;
  // Set `set` reads tile rows set + j (90l) or rows - 1 - set - j (90r).
  const uint8_t* first = tile + (kLeft ? 0 : rows - 1) * ts;
  for (int32_t k = 0; k < groups; ++k, o += R * down, first += 16) {
    for (int32_t set = 0; set < whole; set += kSet) {
      TurnSet<N>(DW(), first + set * next, next, o + set * ptrdiff_t{N}, down);
    }
    if (whole < rows) TurnSet<N>(D16(), first + whole * next, next, o + whole * ptrdiff_t{N}, down);
  }
}

template <size_t N>
int32_t TurnUnits(int op, const uint8_t* tile, ptrdiff_t ts, int32_t rows, int32_t cols,
                  uint8_t* dst, ptrdiff_t ds) {
  constexpr int32_t R = 16 / N;
  const int32_t groups = cols / R;
  if (op == kRot90l) {
    // The columns past the groups are the top destination rows.
    TurnGroups<N, true>(tile, ts, rows, groups, dst + ptrdiff_t{cols - R * groups} * ds, ds);
  } else {
    TurnGroups<N, false>(tile, ts, rows, groups, dst, ds);
  }
  return R * groups;
}

// A paired tile of `rows` rows: columns [0, 16 * groups), by 16 as in
// TurnGroups.
template <bool kLeft>
void TurnPairedGroups(const uint8_t* tile, ptrdiff_t ts, int32_t rows, int32_t groups,
                      uint8_t* dst, ptrdiff_t ds) {
  constexpr int32_t kSet = 16 * static_cast<int32_t>(hn::MaxLanes(DW()) / 16);
  const ptrdiff_t down = kLeft ? -ds : ds;
  const int32_t whole = rows / kSet * kSet;
  uint8_t* o = kLeft ? dst + ptrdiff_t{16 * groups - 1} * ds : dst;
  const uint8_t* first = tile;
  for (int32_t k = 0; k < groups; ++k, o += 16 * down, first += 32) {
    for (int32_t set = 0; set < whole; set += kSet) {
      TurnPairedSet(DW(), first + set / 2 * ts, ts, o + set, down);
    }
    if (whole < rows) TurnPairedSet(D16(), first + whole / 2 * ts, ts, o + whole, down);
  }
}

int32_t TurnTileVec(int op, size_t unit, const uint8_t* tile, ptrdiff_t ts, int32_t rows,
                    int32_t cols, uint8_t* dst, ptrdiff_t ds) {
  if ((op != kRot90l && op != kRot90r) || rows % static_cast<int32_t>(16 / unit) != 0) return 0;
  switch (unit) {
    case 1: return TurnUnits<1>(op, tile, ts, rows, cols, dst, ds);
    case 4: return TurnUnits<4>(op, tile, ts, rows, cols, dst, ds);
    default: return 0;
  }
}

int32_t TurnPairedVec(int op, const uint8_t* tile, ptrdiff_t ts, int32_t rows, int32_t cols,
                      uint8_t* dst, ptrdiff_t ds) {
  if ((op != kRot90l && op != kRot90r) || rows % 16 != 0) return 0;
  const int32_t groups = cols / 16;
  if (op == kRot90l) {
    TurnPairedGroups<true>(tile, ts, rows, groups, dst + ptrdiff_t{cols - 16 * groups} * ds, ds);
  } else {
    TurnPairedGroups<false>(tile, ts, rows, groups, dst, ds);
  }
  return 16 * groups;
}

#else   // HWY_SCALAR
int32_t TurnTileVec(int, size_t, const uint8_t*, ptrdiff_t, int32_t, int32_t, uint8_t*,
                    ptrdiff_t) {
  return 0;
}
int32_t TurnPairedVec(int, const uint8_t*, ptrdiff_t, int32_t, int32_t, uint8_t*, ptrdiff_t) {
  return 0;
}
#endif  // HWY_TARGET != HWY_SCALAR

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_HAVE_HWY

#if !KELO_HAVE_HWY || HWY_ONCE
namespace kelo {
namespace scalar {
inline int32_t TurnTileVec(int, size_t, const uint8_t*, ptrdiff_t, int32_t, int32_t, uint8_t*,
                           ptrdiff_t) {
  return 0;
}
inline int32_t TurnPairedVec(int, const uint8_t*, ptrdiff_t, int32_t, int32_t, uint8_t*,
                             ptrdiff_t) {
  return 0;
}
}  // namespace scalar

KELO_VEC_EXPORT(TurnTileVec);
KELO_VEC_EXPORT(TurnPairedVec);

int32_t TurnTileColumns(int op, size_t unit, const uint8_t* tile, ptrdiff_t ts, int32_t rows,
                        int32_t cols, uint8_t* dst, ptrdiff_t ds) {
  return KELO_VEC_CALL(TurnTileVec, scalar::TurnTileVec)(op, unit, tile, ts, rows, cols, dst,
                                                         ds);
}

int32_t TurnPairedTileColumns(int op, const uint8_t* tile, ptrdiff_t ts, int32_t rows,
                              int32_t cols, uint8_t* dst, ptrdiff_t ds) {
  return KELO_VEC_CALL(TurnPairedVec, scalar::TurnPairedVec)(op, tile, ts, rows, cols, dst, ds);
}

}  // namespace kelo
#endif  // !KELO_HAVE_HWY || HWY_ONCE
