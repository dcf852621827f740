// Scalar definitions of the growing resize kernels, shared by the exported
// kernels, the vector paths (for their column patterns and tails) and the
// tests.
//
// One source sample (a column, or a whole row in height) becomes a group of
// outputs: the sample itself, then q - 1 in-between values, then one more on
// overflow of the error accumulator. WalkUp is the only statement of that
// rule: it reports every output as a tap (which source samples it reads and
// how they are mixed), and the row and plane kernels here and the vector
// paths only evaluate taps.
#ifndef KELO_IMGP_GEOMETRY_RESIZE_UP_KERNELS_H_
#define KELO_IMGP_GEOMETRY_RESIZE_UP_KERNELS_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "imgp/core/copy_rows.h"
#include "imgp/geometry/resize_layouts.h"
#include "imgp/geometry/resize_tiles.h"
#include "kimgp_rsz.h"

namespace kelo {
namespace rsz {

enum class Mix : uint8_t {
  kCopy,   // s
  kRatio,  // (a s + b n) div (a + b)
  kRamp,   // (a s + b n) >> 6, unsigned 32-bit wrapping (a may wrap)
};

// One output: source samples s and n (n == s at the last one) and weights.
struct UpTap {
  int32_t s, n;
  uint32_t a, b;
  Mix mix;
};

inline bool SameTap(const UpTap& x, const UpTap& y) {
  return x.s == y.s && x.n == y.n && x.a == y.a && x.b == y.b && x.mix == y.mix;
}

// The ramp step for a group that spans k outputs; a factor of 1 keeps 32.
inline uint32_t RampStep(int32_t q, int64_t k) {
  return q == 1 ? 32u : scale[k < 33 ? k : 33];
}

// First output of source sample x when dn = q sn + r with 0 <= r < sn.
inline int64_t GroupStart(int64_t x, int32_t sn, int32_t q, int32_t r) {
  return r == 0 ? x * q : x * q + x * r / sn;
}

// Walks the groups of source samples x_begin .. x_end - 1 (x_end < 0: to
// sn - 1) and calls emit(pos, tap) for each output pos < dn. x_begin > 0
// resumes at a group boundary and needs consistent sizes (dn = q sn + r,
// 0 <= r < sn).
template <bool kMode1, class Emit>
void WalkUp(int32_t sn, int32_t dn, int32_t q, int32_t r, int32_t x_begin, Emit&& emit,
            int32_t x_end = -1) {
  if (x_end < 0 || x_end > sn) x_end = sn;
  if (sn < 1 || dn < 1 || q < 1) return;
  int64_t ex = 0;
  int64_t pos = 0;
  if (x_begin > 0) {
    ex = r == 0 ? 0 : int64_t{x_begin} * r % sn;
    pos = GroupStart(x_begin, sn, q, r);
  }
  for (int32_t x = x_begin; x < x_end; ++x) {
    const int32_t nx = x + 1 < sn ? x + 1 : x;
    if (pos >= dn) return;
    emit(pos++, UpTap{x, nx, 1, 0, Mix::kCopy});
    ex += r;
    const bool over = ex >= sn;
    if (!kMode1) {
      const uint32_t k = static_cast<uint32_t>(over ? q : q - 1);
      for (int32_t j = 1; j < q; ++j) {
        if (pos >= dn) return;
        emit(pos++, UpTap{x, nx, k, 1, Mix::kRatio});
      }
      if (over) {
        if (pos >= dn) return;
        emit(pos++, UpTap{x, nx, 1, static_cast<uint32_t>(q), Mix::kRatio});
      }
    } else {
      const uint32_t w = RampStep(q, over ? int64_t{q} + 1 : q);
      const int32_t last = over ? q : q - 1;
      for (int32_t j = 1; j <= last; ++j) {
        if (pos >= dn) return;
        const uint32_t jw = static_cast<uint32_t>(j) * w;
        emit(pos++, UpTap{x, nx, 64u - jw, jw, Mix::kRamp});
      }
    }
    if (over) ex -= sn;
  }
}

// One component of a tap's output (before masking to the component's bits).
inline uint32_t MixValue(const UpTap& t, uint32_t s, uint32_t n) {
  switch (t.mix) {
    case Mix::kCopy:
      return s;
    case Mix::kRatio:
      return static_cast<uint32_t>((uint64_t{t.a} * s + uint64_t{t.b} * n) /
                                   (uint64_t{t.a} + t.b));
    case Mix::kRamp:
      break;
  }
  return (t.a * s + t.b * n) >> 6;
}

// The bits of component i of a unit of layout L.
template <class L>
constexpr uint32_t ComponentMask(int i) {
  if constexpr (std::is_same_v<L, Rgb565Units>) {
    return i == 1 ? 0x3Fu : 0x1Fu;
  } else {
    return (1u << (8 * L::kBytes / L::kComps)) - 1;
  }
}

template <class L>
inline void MixUnit(const uint8_t* s, const uint8_t* n, uint8_t* out, const UpTap& t) {
  uint32_t cs[L::kComps], cn[L::kComps], v[L::kComps];
  L::Unpack(s, cs);
  L::Unpack(n, cn);
  for (int i = 0; i < L::kComps; ++i) v[i] = MixValue(t, cs[i], cn[i]) & ComponentMask<L>(i);
  L::Pack(out, v);
}

// A whole row of `units` units mixed by one tap (the vertical kernels).
template <class L>
void MixRow(const uint8_t* s, const uint8_t* n, uint8_t* out, size_t units, const UpTap& t) {
  for (size_t u = 0; u < units; ++u) {
    MixUnit<L>(s + u * L::kBytes, n + u * L::kBytes, out + u * L::kBytes, t);
  }
}

}  // namespace rsz

namespace scalar {

// One row of the width up-scalers from the group of source sample x_begin.
template <class L, bool kMode1>
void UpRow(const uint8_t* src, uint8_t* dst, int32_t sw, int32_t dw, int32_t q, int32_t r,
           int32_t x_begin) {
  using rsz::UpTap;
  rsz::WalkUp<kMode1>(sw, dw, q, r, x_begin, [&](int64_t pos, const UpTap& t) {
    uint8_t* o = dst + pos * L::kBytes;
    const uint8_t* s = src + ptrdiff_t{t.s} * L::kBytes;
    if (t.mix == rsz::Mix::kCopy) {
      std::memcpy(o, s, L::kBytes);
    } else {
      rsz::MixUnit<L>(s, src + ptrdiff_t{t.n} * L::kBytes, o, t);
    }
  });
}

// Width up-scaler: sh rows of sw units to packed rows of dw units.
template <class L, bool kMode1>
void UpWidth(const uint8_t* src, uint8_t* tmp, int32_t dw, int32_t sw, int32_t sh, int32_t q,
             int32_t r, ptrdiff_t src_step) {
  if (dw < 1) return;
  for (int32_t y = 0; y < sh; ++y) {
    UpRow<L, kMode1>(src + y * src_step, tmp + ptrdiff_t{y} * dw * L::kBytes, sw, dw, q, r, 0);
  }
}

// Height up-scaler over rows of row_units units, written through the sink:
// the groups of source rows [begin, end) (end < 0: all), where source row y
// is at row(y). mix_row(s, n, out, units, tap) computes an in-between row; a
// row equal to the one before it is copied, and a copy onto itself skipped.
template <class L, bool kMode1, class RowFn, class MixRowFn>
void UpHeightRows(RowFn&& row, size_t row_units, int32_t sh, int32_t dh, int32_t q, int32_t r,
                  rsz::RowSink* sink, MixRowFn&& mix_row, int32_t begin = 0, int32_t end = -1) {
  using rsz::UpTap;
  if (row_units < 1) return;
  const size_t row_bytes = row_units * L::kBytes;
  const uint8_t* prev_out = nullptr;
  UpTap prev{};
  rsz::WalkUp<kMode1>(sh, dh, q, r, begin, [&](int64_t pos, const UpTap& t) {
    uint8_t* out = sink->Row(pos);
    const uint8_t* s = row(t.s);
    if (t.mix == rsz::Mix::kCopy) {
      if (s != out) CopyBytes(s, out, row_bytes);
    } else if (prev_out != nullptr && rsz::SameTap(t, prev)) {
      CopyBytes(prev_out, out, row_bytes);
    } else {
      mix_row(s, row(t.n), out, row_units, t);
    }
    prev = t;
    prev_out = out;
    sink->Done(pos);
  }, end);
}

// Height up-scaler over rows of row_units units, tmp_step bytes apart in the
// intermediate.
template <class L, bool kMode1, class MixRowFn>
void UpHeight(const uint8_t* tmp, ptrdiff_t tmp_step, size_t row_units, int32_t sh,
              int32_t dh, int32_t q, int32_t r, rsz::RowSink* sink, MixRowFn&& mix_row) {
  UpHeightRows<L, kMode1>([&](int32_t y) { return tmp + y * tmp_step; }, row_units, sh, dh, q,
                          r, sink, mix_row);
}

template <class L, bool kMode1>
void UpHeight(const uint8_t* tmp, ptrdiff_t tmp_step, size_t row_units, int32_t sh,
              int32_t dh, int32_t q, int32_t r, rsz::RowSink* sink) {
  UpHeight<L, kMode1>(tmp, tmp_step, row_units, sh, dh, q, r, sink, &rsz::MixRow<L>);
}

// Source rows per strip of UpInPlace.
constexpr int32_t kMaxStripRows = 64;

// Both passes of a growing width and height with the destination as the
// intermediate: width_row(y, out) writes source row y through the width pass
// straight to output row GroupStart(y), the copy of it that starts its group,
// and the rows of the group after it mix it with the next such row there.
// Strips of `rows` source rows (2 .. kMaxStripRows) keep the rows being mixed
// in cache. dst rows are dst_step bytes apart and hold row_units units of V.
template <class V, bool kMode1, class WidthRow, class MixRowFn>
void UpInPlace(uint8_t* dst, ptrdiff_t dst_step, size_t row_units, int32_t sh, int32_t dh,
               int32_t rows, WidthRow&& width_row, MixRowFn&& mix_row) {
  const int32_t q = dh / sh, r = dh % sh;
  rsz::RowSink sink = rsz::RowSink::Plain(dst, dst_step);
  // start[y - base]: the group start of source row y, for the rows in reach.
  int64_t start[kMaxStripRows + 1];
  int32_t base = 0;
  int64_t next = 0, ex = 0;  // the group start of source row y0, WalkUp's error
  auto row = [&](int32_t y) { return dst + start[y - base] * dst_step; };
  int32_t done = 0;
  for (int32_t y0 = 0; y0 < sh;) {
    const int32_t y1 = sh - y0 <= rows ? sh : y0 + rows;
    if (y0 > 0) start[0] = start[y0 - 1 - base], base = y0 - 1;
    for (int32_t y = y0; y < y1; ++y) {
      start[y - base] = next;
      width_row(y, dst + next * dst_step);
      ex += r;
      next += q;
      if (ex >= sh) ex -= sh, ++next;
    }
    const int32_t end = y1 == sh ? sh : y1 - 1;
    UpHeightRows<V, kMode1>(row, row_units, sh, dh, q, r, &sink, mix_row, done, end);
    done = end;
    y0 = y1;
  }
}

// Rows per strip of UpInPlace for output rows of row_bytes bytes.
inline int32_t InPlaceRows(int64_t row_bytes) {
  constexpr int64_t kStripBytes = 65536;
  if (row_bytes * kMaxStripRows <= kStripBytes) return kMaxStripRows;
  if (row_bytes * 2 >= kStripBytes) return 2;
  return static_cast<int32_t>(kStripBytes / row_bytes);
}

// UpInPlace for sh rows of sw units of layout L, src_step bytes apart, to dh
// rows of dw units (dw >= sw, dh >= sh), dst_step bytes apart; the height pass
// runs over rows of layout V (L, or bytes for the 2- to 4-byte layouts).
// Scalar version of the dispatched UpInPlaceDispatch; true (it needs no
// memory of its own).
template <class L, class V, bool kMode1>
bool UpBoth(const uint8_t* src, uint8_t* dst, int32_t sw, int32_t sh, int32_t dw, int32_t dh,
            ptrdiff_t src_step, ptrdiff_t dst_step) {
  const int32_t q = dw / sw, r = dw % sw;
  const int64_t row_bytes = int64_t{dw} * L::kBytes;
  UpInPlace<V, kMode1>(dst, dst_step, static_cast<size_t>(row_bytes / V::kBytes), sh, dh,
                       InPlaceRows(row_bytes), [&](int32_t y, uint8_t* out) {
    UpRow<L, kMode1>(src + y * src_step, out, sw, dw, q, r, 0);
  }, &rsz::MixRow<V>);
  return true;
}

// Layouts chosen at run time (the dispatched vector entry points): 5-6-5
// pixels when rgb565, else bytes by bytes per unit (1 to 4).
inline void UpWidthAny(const uint8_t* src, uint8_t* tmp, int32_t dw, int32_t sw, int32_t sh,
                       int32_t q, int32_t r, ptrdiff_t src_step, int bpp, bool rgb565,
                       bool mode1) {
#define KELO_UP_ANY(L)                                                          \
  return mode1 ? UpWidth<L, true>(src, tmp, dw, sw, sh, q, r, src_step)         \
               : UpWidth<L, false>(src, tmp, dw, sw, sh, q, r, src_step)
  if (rgb565) KELO_UP_ANY(rsz::L5b6b5b);
  switch (bpp) {
    case 1: KELO_UP_ANY(rsz::L8b);
    case 2: KELO_UP_ANY(rsz::L8b8b);
    case 3: KELO_UP_ANY(rsz::L8b8b8b);
    default: KELO_UP_ANY(rsz::L8b8b8b8b);
  }
#undef KELO_UP_ANY
}

// Rows of bytes, or of 5-6-5 pixels when rgb565.
inline void UpHeightAny(const uint8_t* tmp, ptrdiff_t tmp_step, size_t row_units, int32_t sh,
                        int32_t dh, int32_t q, int32_t r, rsz::RowSink* sink, bool rgb565,
                        bool mode1) {
#define KELO_UP_H_ANY(L)                                                           \
  return mode1 ? UpHeight<L, true>(tmp, tmp_step, row_units, sh, dh, q, r, sink)   \
               : UpHeight<L, false>(tmp, tmp_step, row_units, sh, dh, q, r, sink)
  if (rgb565) KELO_UP_H_ANY(rsz::L5b6b5b);
  KELO_UP_H_ANY(rsz::L8b);
#undef KELO_UP_H_ANY
}

inline bool UpBothAny(const uint8_t* src, uint8_t* dst, int32_t sw, int32_t sh, int32_t dw,
                      int32_t dh, ptrdiff_t src_step, ptrdiff_t dst_step, int bpp, bool rgb565,
                      bool mode1) {
#define KELO_UP_BOTH_ANY(L, V)                                                         \
  return mode1 ? UpBoth<L, V, true>(src, dst, sw, sh, dw, dh, src_step, dst_step)      \
               : UpBoth<L, V, false>(src, dst, sw, sh, dw, dh, src_step, dst_step)
  if (rgb565) KELO_UP_BOTH_ANY(rsz::L5b6b5b, rsz::L5b6b5b);
  switch (bpp) {
    case 1: KELO_UP_BOTH_ANY(rsz::L8b, rsz::L8b);
    case 2: KELO_UP_BOTH_ANY(rsz::L8b8b, rsz::L8b);
    case 3: KELO_UP_BOTH_ANY(rsz::L8b8b8b, rsz::L8b);
    default: KELO_UP_BOTH_ANY(rsz::L8b8b8b8b, rsz::L8b);
  }
#undef KELO_UP_BOTH_ANY
}

}  // namespace scalar

namespace rsz {

// Multiplier with floor(x * m / 65536) == x div d for 0 <= x <= 255 d and
// 2 <= d <= kMaxRatioDivisor (checked exhaustively by the tests).
constexpr uint32_t kMaxRatioDivisor = 16;
constexpr uint16_t RatioMagic(uint32_t d) {
  return static_cast<uint16_t>((65536u + d - 1) / d);
}

}  // namespace rsz
// The exported growing kernels: X(name, layout).
#define KELO_RSZ_UP_WIDTH_KERNELS(X)                                            \
  X(8b, L8b)                                                                    \
  X(8b8b, L8b8b)                                                                \
  X(5b6b5b, L5b6b5b)                                                            \
  X(8b8b8b, L8b8b8b)                                                            \
  X(8b8b8b8b, L8b8b8b8b)
#define KELO_RSZ_UP_HEIGHT_KERNELS(X)                                           \
  X(8b, L8b)                                                                    \
  X(8b8b, L8b8b)                                                                \
  X(5b6b5b, L5b6b5b)

// The best path of the running CPU for 5-6-5 pixels or byte layouts of bpp
// bytes per unit (width) and for rows of bytes or 5-6-5 pixels (height).
void UpWidthDispatch(const uint8_t* src, uint8_t* tmp, int32_t dw, int32_t sw, int32_t sh,
                     int32_t q, int32_t r, ptrdiff_t src_step, int bpp, bool rgb565,
                     bool mode1);
void UpHeightDispatch(const uint8_t* tmp, ptrdiff_t tmp_step, size_t row_units, int32_t sh,
                      int32_t dh, int32_t q, int32_t r, rsz::RowSink* sink, bool rgb565,
                      bool mode1);

// UpBoth on the best path of the running CPU, for 5-6-5 pixels or byte
// layouts of bpp bytes per unit; false, with nothing written, when the path's
// memory cannot be had.
bool UpBothDispatch(const uint8_t* src, uint8_t* dst, int32_t sw, int32_t sh, int32_t dw,
                    int32_t dh, ptrdiff_t src_step, ptrdiff_t dst_step, int bpp, bool rgb565,
                    bool mode1);

}  // namespace kelo

#endif  // KELO_IMGP_GEOMETRY_RESIZE_UP_KERNELS_H_
