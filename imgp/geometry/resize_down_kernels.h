// Scalar definitions of the shrinking resize kernels.
//
// Every shrinking kernel is the same walk: each output row reads one source
// row or averages two, and each output unit of a row reads one source unit or
// averages two neighbours. Which rows and which columns is a pattern:
//
//   columns  kMult      unit fw*x and the one after it (two taps always)
//            kAccum     the error accumulator: ex += rw per output; on
//                       ex >= dw two taps and one extra unit of step
//            kFixed16x9 the 16-to-9 pattern of the fixed-size kernels
//   rows     kPairs     row y*step and the row below (two rows always)
//            kAccum     the same accumulator over rows: ey += rh per row
//            kSingle    row y*step alone
//
// One tap is the average of a unit with itself, so every output is
// Avg2(a, b) (one row) or Avg4(a, b, c, d) (two rows) with b = a on one tap:
// (a + a) >> 1 = a and (2a + 2c) >> 2 = (a + c) >> 1. The vector paths gather
// by the same patterns and leave the end of every row to ShrinkRow.
#ifndef KELO_IMGP_GEOMETRY_RESIZE_DOWN_KERNELS_H_
#define KELO_IMGP_GEOMETRY_RESIZE_DOWN_KERNELS_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "imgp/geometry/resize_layouts.h"

namespace kelo {
namespace rsz {

// Which source units output x reads: unit c, and unit c + 1 when two.
struct ColTap {
  int32_t c;
  bool two;
};

struct ColState {
  int32_t x = 0;   // next output unit
  int32_t c = 0;   // its first source unit
  int32_t ex = 0;  // error accumulator
};

struct Cols {
  enum Kind : uint8_t { kMult, kAccum, kFixed16x9 };
  Kind kind;
  int32_t fw, rw, dw;

  ColTap Next(ColState* s) const {
    ColTap t{s->c, true};
    switch (kind) {
      case kMult:
        s->c += fw;
        break;
      case kAccum:
        s->ex += rw;
        t.two = s->ex >= dw;
        if (t.two) s->ex -= dw;
        s->c += t.two ? fw + 1 : fw;
        break;
      case kFixed16x9: {
        // Of each 16 source units the nine outputs read 0, 1-2, 3-4, 5-6,
        // 7, 8-9, 10-11, 12-13, 14-15.
        static constexpr uint8_t kStart[10] = {0, 1, 3, 5, 7, 8, 10, 12, 14, 16};
        const int32_t j = s->x % 9;
        t.c = s->x / 9 * 16 + kStart[j];
        t.two = kStart[j + 1] - kStart[j] == 2;
        break;
      }
    }
    ++s->x;
    return t;
  }

  // Units of a source row that the pattern reads (one past the last).
  int64_t NeededUnits() const {
    if (dw < 1) return 0;
    switch (kind) {
      case kMult:
        return int64_t{fw} * (dw - 1) + 2;
      case kAccum:
        return int64_t{fw} * dw + rw;
      case kFixed16x9: {
        ColState s;
        s.x = dw - 1;
        const ColTap t = Next(&s);
        return int64_t{t.c} + (t.two ? 2 : 1);
      }
    }
    return 0;
  }
};

// Which source rows output row y reads: the row at byte offset off, and the
// one below it when two.
struct RowTap {
  ptrdiff_t off;
  bool two;
};

struct RowState {
  ptrdiff_t off = 0;
  int32_t ey = 0;
};

struct Rows {
  enum Kind : uint8_t { kPairs, kAccum, kSingle };
  Kind kind;
  ptrdiff_t step;  // bytes from one output row's first source row to the next
                   // (fh rows for kAccum, before the extra row of a two-row row)
  ptrdiff_t next;  // bytes from a source row to the row below
  int32_t rh, dh;

  RowTap Next(RowState* s) const {
    RowTap t{s->off, kind == kPairs};
    if (kind == kAccum) {
      s->ey += rh;
      t.two = s->ey >= dh;
      if (t.two) s->ey -= dh;
    }
    s->off += step + (kind == kAccum && t.two ? next : 0);
    return t;
  }
};

// Bits for averaging units as 16-bit lanes, component by component: the
// mask keeps what a right shift by one may move within a component, the low
// mask marks each component's lowest bit.
template <class L>
struct AvgBits;
template <int N>
struct AvgBits<ByteUnits<N>> {
  static constexpr uint16_t kHalf = 0x7F7F, kLow = 0x0101;
};
template <>
struct AvgBits<Rgb565Units> {
  static constexpr uint16_t kHalf = 0x7BEF, kLow = 0x0821;
};
template <int N>
struct AvgBits<WordUnits<N>> {
  static constexpr uint16_t kHalf = 0x7FFF, kLow = 0x0001;
};

// A shrinking pass, as the vector paths receive it. It covers output rows
// from the row whose state is row0 on (nrows of them) and output units
// col0.x .. col_end - 1 of each; dst is where the range's first unit of its
// first row goes. A whole plane starts at the default states with nrows =
// rows.dh and col_end = cols.dw.
struct ShrinkJob {
  const uint8_t* src;
  uint8_t* dst;
  ptrdiff_t dst_step;  // bytes between output rows
  int32_t unit_bytes;
  uint16_t half, low;  // AvgBits of the layout
  Cols cols;
  Rows rows;
  RowState row0;
  int32_t nrows;
  ColState col0;
  int32_t col_end;
};

namespace scalar {

template <class L>
inline void Avg2(uint8_t* o, const uint8_t* a, const uint8_t* b) {
  Map<L>(o, [](uint32_t x, uint32_t y) { return (x + y) >> 1; }, a, b);
}

template <class L>
inline void Avg4(uint8_t* o, const uint8_t* a, const uint8_t* b, const uint8_t* c,
                 const uint8_t* d) {
  Map<L>(o, [](uint32_t w, uint32_t x, uint32_t y, uint32_t z) { return (w + x + y + z) >> 2; },
         a, b, c, d);
}

// Outputs st.x .. end - 1 of one row from source row s0 and, for a two-row
// row, s1 (else null); output x goes to unit x - origin of d.
template <class L>
void ShrinkRow(const uint8_t* s0, const uint8_t* s1, uint8_t* d, const Cols& cols,
               ColState st, int32_t end, int32_t origin) {
  constexpr int B = L::kBytes;
  while (st.x < end) {
    uint8_t* o = d + ptrdiff_t{st.x - origin} * B;
    const ColTap t = cols.Next(&st);
    const ptrdiff_t a = ptrdiff_t{t.c} * B, b = a + (t.two ? B : 0);
    if (s1 != nullptr) {
      Avg4<L>(o, s0 + a, s0 + b, s1 + a, s1 + b);
    } else {
      Avg2<L>(o, s0 + a, s0 + b);
    }
  }
}

// Units from `from` to n of (a + b) >> 1, component by component.
template <class L>
void AvgRow(const uint8_t* a, const uint8_t* b, uint8_t* d, int64_t from, int64_t n) {
  constexpr int B = L::kBytes;
  for (int64_t i = from; i < n; ++i) Avg2<L>(d + i * B, a + i * B, b + i * B);
}

}  // namespace scalar

// Runs a job: the vector path takes a leading run of units of every row and
// reports where it stopped (via *st); the scalar rows finish each row.
template <class L>
inline void Shrink(const ShrinkJob& job, void (*vec)(const ShrinkJob&, ColState*)) {
  ColState st = job.col0;
  if (vec != nullptr) vec(job, &st);
  if (st.x >= job.col_end) return;
  RowState rs = job.row0;
  for (int32_t y = 0; y < job.nrows; ++y) {
    const RowTap t = job.rows.Next(&rs);
    const uint8_t* s0 = job.src + t.off;
    scalar::ShrinkRow<L>(s0, t.two ? s0 + job.rows.next : nullptr, job.dst + y * job.dst_step,
                         job.cols, st, job.col_end, job.col0.x);
  }
}

template <class L>
inline ShrinkJob MakeJob(const void* src, void* dst, ptrdiff_t dst_step, Cols cols, Rows rows) {
  return ShrinkJob{static_cast<const uint8_t*>(src),
                   static_cast<uint8_t*>(dst),
                   dst_step,
                   L::kBytes,
                   AvgBits<L>::kHalf,
                   AvgBits<L>::kLow,
                   cols,
                   rows,
                   RowState{},
                   rows.dh,
                   ColState{},
                   cols.dw};
}

}  // namespace rsz
}  // namespace kelo

#endif  // KELO_IMGP_GEOMETRY_RESIZE_DOWN_KERNELS_H_
