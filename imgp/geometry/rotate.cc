// Rotation by quarter turns and flips: kimgp_rot, its kernel tables and the
// plane kernels.
//
// Quarter turns transpose blocks of 16 rows x 16 bytes in registers (8 x 16
// bytes on 32-bit ARM; 8x8 16-bit units, 4x4 32-bit units; two blocks side
// by side on 256-bit targets); 180 and mirror reverse whole vectors with byte
// shuffles (on NEON, vld4 / vrev64 / vst4 of 32 bytes); flips copy rows. Both
// addresses of every loop move by bumps, never by recomputed index products.
// Block remainders go to the scalar kernels of rotate_kernels.h.
#include "common/internal/simd.h"
#include "imgp/geometry/rotate_kernels.h"

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/geometry/rotate.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "imgp/geometry/rotate_kernels.h"
#include "imgp/geometry/transpose-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

using D16 = hn::Full128<uint8_t>;        // one 128-bit block
using D8 = hn::Full64<uint8_t>;          // half a block
using DW = hn::CappedTag<uint8_t, 32>;   // one or two blocks
using V16 = hn::Vec<D16>;

template <class D>
constexpr size_t BlocksOf() {
  return hn::MaxLanes(D()) / 16;
}

// Hides from the compiler what an address holds, once per loop step. On
// 32-bit ARM, GCC's loop optimiser rewrites a chain of post-incremented
// vld1/vst1 addresses as base + offset, which vld/vst cannot encode: each
// then costs an add. Elsewhere this does nothing.
template <class A>
HWY_INLINE void Pin(A& a) {
#if HWY_TARGET == HWY_NEON
  asm("" : "+r"(a));
#else
  (void)a;
#endif
}

// ---------------------------------------------------------------- quarter turns

// Rows per band of a quarter turn of N-byte units. Sixteen rows of bytes and
// their zip temporaries do not fit the sixteen 128-bit registers of 32-bit
// ARM, so there bytes go in bands of 8 rows (8 x 16 blocks, written as 8-byte
// pieces); elsewhere a band is one 128-bit block tall.
template <size_t N>
constexpr size_t BandRows() {
#if HWY_TARGET == HWY_NEON
  return N == 1 ? 8 : 16 / N;
#else
  return 16 / N;
#endif
}

// Stores the P-byte pieces of a transposed block of D (at most 16 bytes), one
// destination row each, the first at address *q; *q moves by step per
// piece. The address is an integer: after a band's last piece it points
// outside the plane.
template <size_t P, class D>
HWY_INLINE void StorePieces(D d, hn::Vec<D> blk, uintptr_t step, uintptr_t* q) {
  constexpr size_t kBytes = hn::MaxLanes(D());
  if constexpr (P == kBytes) {
    hn::StoreU(blk, d, reinterpret_cast<uint8_t*>(*q));
    *q += step;
  } else {
    static_assert(2 * P == kBytes, "piece of half a block");
    const hn::Half<D> dh;
    hn::StoreU(hn::LowerHalf(dh, blk), dh, reinterpret_cast<uint8_t*>(*q));
    *q += step;
    hn::StoreU(hn::UpperHalf(dh, blk), dh, reinterpret_cast<uint8_t*>(*q));
    *q += step;
  }
}

// A band of R source rows, columns from x on in steps of one vector of D:
// each step transposes R rows and writes them as destination rows (90l from
// row W-1-x upward, 90r from row x downward, with the rows read bottom up so
// the destination columns run right to left). s is the band's first row to
// read, sstep the step to the next, dst_col the band's destination column.
// Source and destination move by pointer bumps only. Returns the first
// column that is left over.
template <size_t N, size_t R, bool kLeft, class D>
HWY_INLINE int32_t QuarterBand(D d, const uint8_t* s, ptrdiff_t sstep,
                               int32_t w, ptrdiff_t ds, uint8_t* dst_col,
                               int32_t x) {
  constexpr size_t kBytes = hn::MaxLanes(D());
  constexpr size_t kBlock = kBytes < 16 ? kBytes : 16;
  constexpr int32_t kStep = static_cast<int32_t>(kBytes / N);
  // A negative step must live in a register of its own to be the
  // post-increment of a vst1 (GCC would subtract ds instead).
  uintptr_t dstep = static_cast<uintptr_t>(kLeft ? -ds : ds);
  Pin(dstep);
  Pin(sstep);
  uintptr_t q = reinterpret_cast<uintptr_t>(dst_col) +
                static_cast<uintptr_t>((kLeft ? w - 1 - x : x) * ds);
  s += x * static_cast<ptrdiff_t>(N);
  for (; x <= w - kStep; x += kStep) {
    hn::Vec<D> r[R];
    const uint8_t* p = s;
    HWY_UNROLL(16)
    for (size_t i = 0; i < R; ++i) {
      r[i] = hn::LoadU(d, p);
      if (i + 1 < R) p += sstep;
    }
    s += kBytes;
    TransposeInBlocks<N, R>(d, r);
    if constexpr (kBytes <= 16) {
      HWY_UNROLL(16)
      for (size_t v = 0; v < R; ++v) StorePieces<R * N>(d, r[v], dstep, &q);
    } else {
      static_assert(kBytes == 32, "at most two blocks");
      const hn::Half<D> dh;
      HWY_UNROLL(16)
      for (size_t v = 0; v < R; ++v) {
        StorePieces<R * N>(dh, hn::LowerHalf(dh, r[v]), dstep, &q);
      }
      HWY_UNROLL(16)
      for (size_t v = 0; v < R; ++v) {
        StorePieces<R * N>(dh, hn::UpperHalf(dh, r[v]), dstep, &q);
      }
    }
    static_assert(kBlock % (R * N) == 0, "whole pieces per block");
    Pin(s);
    Pin(q);
  }
  return x;
}

// One band of R source rows from row y0 across the whole width: wide
// vectors, then single blocks, then 8-byte vectors when the pieces are that
// small, then the scalar kernel for the last columns.
template <size_t N, size_t R, bool kLeft>
HWY_INLINE void QuarterRows(const uint8_t* src, int32_t w, int32_t h,
                            ptrdiff_t ss, ptrdiff_t ds, uint8_t* dst,
                            int32_t y0) {
  const ptrdiff_t rows = R;
  const uint8_t* s = src + (kLeft ? y0 : y0 + rows - 1) * ss;
  const ptrdiff_t sstep = kLeft ? ss : -ss;
  uint8_t* dst_col =
      dst + (kLeft ? y0 : h - y0 - rows) * static_cast<ptrdiff_t>(N);
  int32_t x = QuarterBand<N, R, kLeft>(DW(), s, sstep, w, ds, dst_col, 0);
  if constexpr (BlocksOf<DW>() > 1) {
    x = QuarterBand<N, R, kLeft>(D16(), s, sstep, w, ds, dst_col, x);
  }
  if constexpr (R * N <= 8) {
    x = QuarterBand<N, R, kLeft>(D8(), s, sstep, w, ds, dst_col, x);
  }
  if (x < w) {
    constexpr int kOp = kLeft ? kRot90l : kRot90r;
    scalar::RotatePlane<kOp, N>(
        src + y0 * ss + x * static_cast<ptrdiff_t>(N), w - x, R, ss, ds,
        kLeft ? dst_col : dst_col + x * ds);
  }
}

// A quarter turn of 1-, 2- or 4-byte units: bands of BandRows rows, then one
// band of half that when its pieces are still 8 bytes or more, then the
// scalar kernel for the last rows.
template <size_t N, bool kLeft>
void QuarterTurn(const uint8_t* src, int32_t w, int32_t h, ptrdiff_t ss,
                 ptrdiff_t ds, uint8_t* dst) {
  constexpr int32_t kRows = static_cast<int32_t>(BandRows<N>());
  int32_t y = 0;
  for (; y <= h - kRows; y += kRows) {
    QuarterRows<N, kRows, kLeft>(src, w, h, ss, ds, dst, y);
  }
  if constexpr (kRows / 2 * N >= 8) {
    if (h - y >= kRows / 2) {
      QuarterRows<N, kRows / 2, kLeft>(src, w, h, ss, ds, dst, y);
      y += kRows / 2;
    }
  }
  if (y < h) {
    constexpr int kOp = kLeft ? kRot90l : kRot90r;
    scalar::RotatePlane<kOp, N>(src + y * ss, w, h - y, ss, ds,
                                kLeft ? dst + y * static_cast<ptrdiff_t>(N) : dst);
  }
}

// ------------------------------------------------------------ mirrored rows

// Byte indices that reverse the order of the N-byte units of a block.
template <size_t N>
struct ReverseIndex {
  alignas(16) uint8_t idx[16];
};
template <size_t N>
constexpr ReverseIndex<N> MakeReverseIndex() {
  ReverseIndex<N> t{};
  for (size_t b = 0; b < 16; ++b) {
    t.idx[b] = static_cast<uint8_t>((16 / N - 1 - b / N) * N + b % N);
  }
  return t;
}

// 16 units of 3 bytes in three blocks, reversed: byte l of output block k
// is byte idx[k][j][l] of input block j (0x80: not from that block); uses
// says which input blocks an output block draws on at all.
struct Reverse3Index {
  alignas(16) uint8_t idx[3][3][16];
  bool uses[3][3];
};
constexpr Reverse3Index MakeReverse3Index() {
  Reverse3Index t{};
  for (size_t k = 0; k < 3; ++k) {
    for (size_t l = 0; l < 16; ++l) {
      const size_t b = 16 * k + l;
      const size_t in = (15 - b / 3) * 3 + b % 3;
      for (size_t j = 0; j < 3; ++j) {
        const bool here = in / 16 == j;
        t.idx[k][j][l] = here ? static_cast<uint8_t>(in % 16) : uint8_t{0x80};
        t.uses[k][j] = t.uses[k][j] || here;
      }
    }
  }
  return t;
}

#if HWY_TARGET == HWY_NEON
// Reverses the N-byte units inside every 64-bit half of v (one vrev64).
template <size_t N, class D>
HWY_INLINE hn::Vec<D> ReverseIn64(D d, hn::Vec<D> v) {
  if constexpr (N == 1) {
    if constexpr (hn::MaxLanes(D()) == 16) {
      return hn::Vec<D>(vrev64q_u8(v.raw));
    } else {
      return hn::Vec<D>(vrev64_u8(v.raw));
    }
  } else {
    const hn::Repartition<typename TransposeLane<N>::T, D> du;
    const auto u = hn::BitCast(du, v);
    if constexpr (N == 2) {
      return hn::BitCast(d, hn::Reverse4(du, u));
    } else {
      return hn::BitCast(d, hn::Reverse2(du, u));
    }
  }
}
#else
// Reverses the N-byte units of a whole vector of D.
template <size_t N, class D>
HWY_INLINE hn::Vec<D> ReverseUnits(D d, hn::Vec<D> v) {
  static constexpr ReverseIndex<N> kIdx = MakeReverseIndex<N>();
  if constexpr (BlocksOf<D>() == 1) {
    return hn::TableLookupBytes(v, hn::Load(d, kIdx.idx));
  } else {
    return hn::SwapAdjacentBlocks(
        hn::TableLookupBytes(v, hn::LoadDup128(d, kIdx.idx)));
  }
}
#endif

// Writes the first w units of row s in reverse order to row d: the source
// pointer moves forward, the destination pointer back from the row's end.
template <size_t N>
HWY_INLINE void MirrorRow(const uint8_t* s, int32_t w, uint8_t* d) {
  int32_t x = 0;
  uint8_t* q = d + w * static_cast<ptrdiff_t>(N);
  if constexpr (N == 3) {
    static constexpr Reverse3Index kIdx = MakeReverse3Index();
    const D16 d16;
    V16 idx[3][3];
    for (size_t k = 0; k < 3; ++k) {
      for (size_t j = 0; j < 3; ++j) idx[k][j] = hn::Load(d16, kIdx.idx[k][j]);
    }
    for (; x <= w - 16; x += 16) {
      const V16 in[3] = {hn::LoadU(d16, s), hn::LoadU(d16, s + 16),
                         hn::LoadU(d16, s + 32)};
      s += 48;
      q -= 48;
      for (size_t k = 0; k < 3; ++k) {
        V16 out = hn::Zero(d16);
        for (size_t j = 0; j < 3; ++j) {
          if (kIdx.uses[k][j]) {
            out = hn::Or(out, hn::TableLookupBytesOr0(in[j], idx[k][j]));
          }
        }
        hn::StoreU(out, d16, q + 16 * k);
      }
    }
  } else {
#if HWY_TARGET == HWY_NEON
    // 32 bytes a step: vld4 deals them into four 8-byte vectors (unit k of
    // vector j is unit 4k + j of the step), each is reversed inside (vrev64)
    // and vst4 writes them back in the opposite vector order, which is the
    // step reversed. Six instructions per 32 bytes; a last 16 bytes are
    // turned inside their halves and the halves swapped. The pointers are
    // pinned after every step: GCC otherwise rewrites the post-incremented
    // vld/vst addresses as base + offset, which vld/vst cannot encode.
    // The destination address is an integer here: after the row's last
    // step it points before the row.
    using T = typename TransposeLane<N>::T;
    const hn::Full64<T> dq;
    uintptr_t back = uintptr_t{0} - 32;
    Pin(back);
    uintptr_t qa = reinterpret_cast<uintptr_t>(q) + back;
    const auto step = [&] {
      hn::Vec<decltype(dq)> v0, v1, v2, v3;
      hn::LoadInterleaved4(dq, reinterpret_cast<const T*>(s), v0, v1, v2, v3);
      hn::StoreInterleaved4(ReverseIn64<N>(dq, v3), ReverseIn64<N>(dq, v2),
                            ReverseIn64<N>(dq, v1), ReverseIn64<N>(dq, v0), dq,
                            reinterpret_cast<T*>(qa));
      s += 32;
      qa += back;
      Pin(s);
      Pin(qa);
    };
    // Steps are counted by the bytes left, so that a row needs no more
    // registers than its two pointers and its end.
    const uint8_t* const end = s + w * static_cast<ptrdiff_t>(N);
    while (end - s >= 128) {
      step();
      step();
      step();
      step();
    }
    if (end - s >= 64) {
      step();
      step();
    }
    if (end - s >= 32) step();
    if (end - s >= 16) {
      const D16 d16;
      const hn::Repartition<uint64_t, D16> d64;
      const V16 v = ReverseIn64<N>(d16, hn::LoadU(d16, s));
      hn::StoreU(hn::BitCast(d16, hn::Shuffle01(hn::BitCast(d64, v))), d16,
                 reinterpret_cast<uint8_t*>(qa + 16));
      s += 16;
    }
    x = w - static_cast<int32_t>((end - s) / static_cast<ptrdiff_t>(N));
#else
    const DW dw;
    constexpr size_t kBytes = hn::MaxLanes(DW());
    constexpr int32_t kStep = static_cast<int32_t>(kBytes / N);
    for (; x <= w - 2 * kStep; x += 2 * kStep) {
      const auto a = hn::LoadU(dw, s);
      const auto b = hn::LoadU(dw, s + kBytes);
      s += 2 * kBytes;
      q -= 2 * kBytes;
      hn::StoreU(ReverseUnits<N>(dw, b), dw, q);
      hn::StoreU(ReverseUnits<N>(dw, a), dw, q + kBytes);
    }
    constexpr int32_t kBlockStep = static_cast<int32_t>(16 / N);
    const D16 d16;
    for (; x <= w - kBlockStep; x += kBlockStep) {
      const V16 a = hn::LoadU(d16, s);
      s += 16;
      q -= 16;
      hn::StoreU(ReverseUnits<N>(d16, a), d16, q);
    }
#endif
  }
  // Units x..w-1 go to the first w - x destination units.
  if (x < w) scalar::RotatePlane<kRotHori, N>(s, w - x, 1, 0, 0, d);
}

// Mirror (kFlip false) or 180 (kFlip true, rows in reverse order).
template <size_t N, bool kFlip>
void MirrorRows(const uint8_t* src, int32_t w, int32_t h, ptrdiff_t ss,
                ptrdiff_t ds, uint8_t* dst) {
  uint8_t* d = kFlip ? dst + (h - 1) * ds : dst;
  const ptrdiff_t dstep = kFlip ? -ds : ds;
  for (int32_t y = 0;;) {
    MirrorRow<N>(src, w, d);
    if (++y == h) return;
    src += ss;
    d += dstep;
  }
}

template <bool kFlip>
void MirrorUnits(size_t unit, const uint8_t* src, int32_t w, int32_t h,
                 ptrdiff_t ss, ptrdiff_t ds, uint8_t* dst) {
  switch (unit) {
    case 1: return MirrorRows<1, kFlip>(src, w, h, ss, ds, dst);
    case 2: return MirrorRows<2, kFlip>(src, w, h, ss, ds, dst);
    case 3: return MirrorRows<3, kFlip>(src, w, h, ss, ds, dst);
    default: return MirrorRows<4, kFlip>(src, w, h, ss, ds, dst);
  }
}

template <bool kLeft>
void QuarterUnits(size_t unit, const uint8_t* src, int32_t w, int32_t h,
                  ptrdiff_t ss, ptrdiff_t ds, uint8_t* dst) {
  switch (unit) {
    case 1: return QuarterTurn<1, kLeft>(src, w, h, ss, ds, dst);
    case 2: return QuarterTurn<2, kLeft>(src, w, h, ss, ds, dst);
    case 4: return QuarterTurn<4, kLeft>(src, w, h, ss, ds, dst);
    default:
      return scalar::RotateUnits<3>(kLeft ? kRot90l : kRot90r, src, w, h, ss,
                                    ds, dst);
  }
}

#endif  // HWY_TARGET != HWY_SCALAR

// Quarter turns, 180 and mirror on this target; one lane targets and
// anything else take the scalar kernel.
void RotateVec(int op, size_t unit, const uint8_t* src, int32_t w, int32_t h,
               ptrdiff_t ss, ptrdiff_t ds, uint8_t* dst) {
#if HWY_TARGET != HWY_SCALAR
  switch (op) {
    case kRot90l: return QuarterUnits<true>(unit, src, w, h, ss, ds, dst);
    case kRot90r: return QuarterUnits<false>(unit, src, w, h, ss, ds, dst);
    case kRot180: return MirrorUnits<true>(unit, src, w, h, ss, ds, dst);
    case kRotHori: return MirrorUnits<false>(unit, src, w, h, ss, ds, dst);
    default: break;
  }
#endif
  scalar::Rotate(op, unit, src, w, h, ss, ds, dst);
}

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_HAVE_HWY

#if !KELO_HAVE_HWY || HWY_ONCE
#include "common/internal/api.h"
#include "imgp/core/copy_rows.h"
#include "kimgp_copy.h"
#include "kimgp_rot.h"

namespace kelo {

KELO_VEC_EXPORT(RotateVec);

namespace {

// 24-bit quarter turns: the scalar kernel on 16 x 16 tiles, so that the
// destination rows a tile writes stay in cache.
template <int Op>
void QuarterTurnTiles3(const uint8_t* src, int32_t w, int32_t h, ptrdiff_t ss,
                       ptrdiff_t ds, uint8_t* dst) {
  constexpr int32_t kTile = 16;
  for (int32_t y0 = 0; y0 < h; y0 += kTile) {
    const int32_t th = h - y0 < kTile ? h - y0 : kTile;
    for (int32_t x0 = 0; x0 < w; x0 += kTile) {
      const int32_t tw = w - x0 < kTile ? w - x0 : kTile;
      uint8_t* d = Op == kRot90l ? dst + (w - x0 - tw) * ds + y0 * ptrdiff_t{3}
                                 : dst + x0 * ds + (h - y0 - th) * ptrdiff_t{3};
      scalar::RotatePlane<Op, 3>(src + y0 * ss + x0 * ptrdiff_t{3}, tw, th, ss,
                                 ds, d);
    }
  }
}

}  // namespace

void Rotate(int op, size_t unit, const uint8_t* src, int32_t w, int32_t h,
            ptrdiff_t ss, ptrdiff_t ds, uint8_t* dst) {
  if (w < 1 || h < 1) return;
  if (op == kRotVert) {
    // Source row y is destination row h-1-y.
    CopyRows(src, ss, dst + (h - 1) * ds, -ds, int64_t{w} * unit, h);
    return;
  }
  if (unit == 3 && op == kRot90l) return QuarterTurnTiles3<kRot90l>(src, w, h, ss, ds, dst);
  if (unit == 3 && op == kRot90r) return QuarterTurnTiles3<kRot90r>(src, w, h, ss, ds, dst);
  KELO_VEC_CALL(RotateVec, scalar::Rotate)(op, unit, src, w, h, ss, ds, dst);
}

namespace {

// Source plane i through fn into destination plane i, with the source's
// width and height and each side's stride.
void RunPlane(kimgp_plane_fn fn, const kimgp_img* src, kimgp_img* dst, int i) {
  fn(src->plane[i], src->width[i], src->height[i], src->stride[i],
     dst->stride[i], dst->plane[i]);
}

// Packed RGB by pixel size. Only the 16-bit range looks whether its entry is
// empty; the 24- and 32-bit ranges call theirs as they find it.
struct PackedRoute {
  int32_t first, last;
  const kimgp_plane_fn* table;
  bool check_empty;
};
constexpr PackedRoute kPackedRoutes[] = {
    {200, 299, kimgp_tbl_fn_rot_16b, true},
    {400, 499, kimgp_tbl_fn_rot_24b, false},
    {500, 599, kimgp_tbl_fn_rot_32b, false},
};

}  // namespace
}  // namespace kelo

// Every plane kernel: kimgp_rot_<sample width>_<operation>.
#define KELO_ROT_OPS(X, bits, unit)    \
  X(bits, unit, 90l, kelo::kRot90l)    \
  X(bits, unit, 90r, kelo::kRot90r)    \
  X(bits, unit, 180, kelo::kRot180)    \
  X(bits, unit, hori, kelo::kRotHori)  \
  X(bits, unit, vert, kelo::kRotVert)
#define KELO_ROT_KERNELS(X) \
  KELO_ROT_OPS(X, 8b, 1)    \
  KELO_ROT_OPS(X, 16b, 2)   \
  KELO_ROT_OPS(X, 24b, 3)   \
  KELO_ROT_OPS(X, 32b, 4)

#define KELO_DEFINE_ROT_KERNEL(bits, unit, name, op)                          \
  KELO_EXPORT void kimgp_rot_##bits##_##name(                                 \
      const void* src, int32_t width, int32_t height, int32_t src_stride,     \
      int32_t dst_stride, void* dst) {                                        \
    kelo::Rotate(op, unit, static_cast<const uint8_t*>(src), width, height,   \
                 src_stride, dst_stride, static_cast<uint8_t*>(dst));         \
  }
KELO_ROT_KERNELS(KELO_DEFINE_ROT_KERNEL)
#undef KELO_DEFINE_ROT_KERNEL

// One row per rotation code; row 0 is the plane copy.
#define KELO_ROT_TABLE(bits)                                              \
  {                                                                       \
    kimgp_cpy_##bits, kimgp_rot_##bits##_90l, kimgp_rot_##bits##_90r,     \
        kimgp_rot_##bits##_180, kimgp_rot_##bits##_hori,                  \
        kimgp_rot_##bits##_vert                                           \
  }
KELO_EXPORT const kimgp_plane_fn kimgp_tbl_fn_rot_8b[6] = KELO_ROT_TABLE(8b);
KELO_EXPORT const kimgp_plane_fn kimgp_tbl_fn_rot_16b[6] = KELO_ROT_TABLE(16b);
KELO_EXPORT const kimgp_plane_fn kimgp_tbl_fn_rot_24b[6] = KELO_ROT_TABLE(24b);
KELO_EXPORT const kimgp_plane_fn kimgp_tbl_fn_rot_32b[6] = KELO_ROT_TABLE(32b);
#undef KELO_ROT_TABLE

KELO_EXPORT int32_t kimgp_rot(const kimgp_img* src, uint32_t rot,
                              kimgp_img* dst) {
  using kelo::RunPlane;
  // Codes past the tables are refused rather than read beyond them.
  if (rot > KIMGP_ROT_VERT) return KIMGP_ERR_UNSUPPORTED;
  const int32_t cs = src->cs;
  if (cs >= 0 && cs <= 99) {
    if (cs == KIMGP_CS_NV12 || cs == KIMGP_CS_NV21) {
      // Luma as bytes, chroma pairs as 16-bit units; both entries are
      // checked before anything is written.
      const kimgp_plane_fn luma = kimgp_tbl_fn_rot_8b[rot];
      const kimgp_plane_fn chroma = kimgp_tbl_fn_rot_16b[rot];
      if (luma == nullptr || chroma == nullptr) return KIMGP_ERR_UNSUPPORTED;
      RunPlane(luma, src, dst, 0);
      RunPlane(chroma, src, dst, 1);
      return KIMGP_OK;
    }
    if (cs == KIMGP_CS_T64X32) return KIMGP_ERR_UNSUPPORTED;
    const kimgp_plane_fn fn = kimgp_tbl_fn_rot_8b[rot];
    if (fn == nullptr) return KIMGP_ERR_UNSUPPORTED;
    const int planes = cs == KIMGP_CS_YUV400 ? 1 : 3;
    for (int i = 0; i < planes; ++i) RunPlane(fn, src, dst, i);
    return KIMGP_OK;
  }
  for (const kelo::PackedRoute& r : kelo::kPackedRoutes) {
    if (cs < r.first || cs > r.last) continue;
    const kimgp_plane_fn fn = r.table[rot];
    if (r.check_empty && fn == nullptr) return KIMGP_ERR_UNSUPPORTED;
    RunPlane(fn, src, dst, 0);
    return KIMGP_OK;
  }
  // Packed YUV (1xx), 3xx and 16-bit YUV (6xx and up).
  return KIMGP_ERR_UNSUPPORTED;
}

#endif  // !KELO_HAVE_HWY || HWY_ONCE
