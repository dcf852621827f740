// DCT-domain downscaler: the per-block forward accumulation and the
// dequantising 4-point inverse. A 4x4 block is four 4-lane vectors of 32-bit
// lanes; products and sums wrap (unsigned lanes), shifts are arithmetic.
#include "common/internal/simd.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "imgp/dctrsz/dctrsz_internal.h"

// The scalar definitions, once (foreach_target includes this file per target).
#ifndef KELO_IMGP_DCTRSZ_TRANSFORMS_SCALAR_
#define KELO_IMGP_DCTRSZ_TRANSFORMS_SCALAR_
namespace kelo {
namespace scalar {
namespace {

inline int32_t Wrap(uint32_t v) { return static_cast<int32_t>(v); }
inline int16_t Low16(int32_t v) {
  return static_cast<int16_t>(static_cast<uint16_t>(static_cast<uint32_t>(v)));
}
inline uint8_t Saturate(int16_t v) {
  return static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v));
}

// The butterfly of both passes: e0 = (x0 + x2) * 128, e1 = (x0 - x2) * 128,
// o0 = x1 * 128 + x3 * 53, o1 = x1 * 53 - x3 * 128, then y0 = e0 + o0,
// y1 = e1 + o1, y2 = e1 - o1, y3 = e0 - o0, shifted right by `shift`.
inline void Butterfly(const int32_t x[4], int shift, int32_t y[4]) {
  const uint32_t x0 = static_cast<uint32_t>(x[0]), x1 = static_cast<uint32_t>(x[1]);
  const uint32_t x2 = static_cast<uint32_t>(x[2]), x3 = static_cast<uint32_t>(x[3]);
  const uint32_t e0 = (x0 + x2) * 128u, e1 = (x0 - x2) * 128u;
  const uint32_t o0 = x1 * 128u + x3 * 53u, o1 = x1 * 53u - x3 * 128u;
  y[0] = Wrap(e0 + o0) >> shift;
  y[1] = Wrap(e1 + o1) >> shift;
  y[2] = Wrap(e1 - o1) >> shift;
  y[3] = Wrap(e0 - o0) >> shift;
}

}  // namespace

void FdctSubBlock(const uint8_t* pix, int32_t* acc, const int16_t* v,
                  const int16_t* h, ptrdiff_t stride) {
  int32_t t[16];
  for (int u = 0; u < 4; ++u) {
    for (int c = 0; c < 4; ++c) {
      uint32_t sum = 0;
      for (int n = 0; n < 4; ++n) {
        sum += static_cast<uint32_t>(v[4 * u + n]) * pix[n * stride + c];
      }
      t[4 * u + c] = Wrap(sum) >> 4;
    }
  }
  for (int u = 0; u < 4; ++u) {
    for (int w = 0; w < 4; ++w) {
      uint32_t sum = static_cast<uint32_t>(acc[4 * u + w]);
      for (int c = 0; c < 4; ++c) {
        sum += static_cast<uint32_t>(t[4 * u + c]) * static_cast<uint32_t>(h[4 * c + w]);
      }
      acc[4 * u + w] = Wrap(sum);
    }
  }
}

void AccumulateBlock(const uint8_t* pix, ptrdiff_t stride, int16_t* const* v,
                     int16_t* const* h, int ni, int nj, int32_t* acc) {
  std::memset(acc, 0, 16 * sizeof(int32_t));
  for (int bi = 0; bi < ni; ++bi) {
    for (int bj = 0; bj < nj; ++bj) FdctSubBlock(pix + 4 * bi * stride + 4 * bj, acc, v[bi], h[bj], stride);
  }
}

void IdctCoefs(const int16_t* coef, int16_t* out) {
  int32_t rows[16];
  for (int r = 0; r < 4; ++r) {
    const int32_t x[4] = {coef[4 * r], coef[4 * r + 1], coef[4 * r + 2], coef[4 * r + 3]};
    Butterfly(x, 7, rows + 4 * r);
  }
  for (int c = 0; c < 4; ++c) {
    const int32_t x[4] = {rows[c], rows[4 + c], rows[8 + c], rows[12 + c]};
    int32_t y[4];
    Butterfly(x, 14, y);
    for (int k = 0; k < 4; ++k) out[4 * k + c] = Low16(y[k]);
  }
}

void Idct16(uint8_t* dst, ptrdiff_t stride, const int16_t* coef) {
  int16_t out[16];
  IdctCoefs(coef, out);
  for (int k = 0; k < 4; ++k) {
    for (int c = 0; c < 4; ++c) dst[k * stride + c] = Saturate(out[4 * k + c]);
  }
}

void IdctDequant(uint8_t* dst, ptrdiff_t stride, const int32_t* acc,
                 const int32_t* q) {
  int16_t d[16];
  for (int i = 0; i < 16; ++i) d[i] = dctrsz::Dequantise(acc[i], q[i]);
  Idct16(dst, stride, d);
}

void BlockToBytes(const uint8_t* pix, ptrdiff_t stride, int16_t* const* v,
                  int16_t* const* h, int ni, int nj, const int32_t* q, uint8_t* dst,
                  ptrdiff_t dst_stride) {
  int32_t acc[16];
  AccumulateBlock(pix, stride, v, h, ni, nj, acc);
  IdctDequant(dst, dst_stride, acc, q);
}

void RunToBytes(const BlockRun& run) {
  uint8_t buf[16 * kRunMaxSub * kRunMaxSub];
  for (int i = 0; i < run.n; ++i) {
    ptrdiff_t pitch;
    const uint8_t* pix = dctrsz::RunWindow(run, i, buf, &pitch);
    BlockToBytes(pix, pitch, run.v, run.h, run.ni, run.nj, run.q, run.dst + 4 * i, run.dst_stride);
  }
}

size_t RunExtent(const uint8_t* cls, const int32_t* xoff, const int32_t* yoff, size_t n,
                 uint8_t k, int32_t yo, int32_t x_end) {
  size_t j = 1;
  while (j < n && cls[j] == k && yoff[j] == yo && xoff[j] >= xoff[j - 1] && xoff[j] <= x_end) ++j;
  return j;
}

}  // namespace scalar

namespace dctrsz {

int UsedLines(const int16_t* m, bool pixel_rows) {
  int used = 0;
  for (int n = 0; n < 4; ++n) {
    for (int e = 0; e < 4; ++e) {
      if (m[pixel_rows ? 4 * n + e : 4 * e + n] != 0) used = n + 1;
    }
  }
  return used;
}

const uint8_t* RunWindow(const BlockRun& run, int i, uint8_t* buf, ptrdiff_t* pitch) {
  const int32_t ww = 4 * run.nj, wh = 4 * run.ni, x0 = run.xoff[i];
  if (int64_t{x0} + ww <= run.cols && wh <= run.rows) {
    *pitch = run.src_stride;
    return run.src + x0;
  }
  for (int32_t y = 0; y < wh; ++y) {
    const uint8_t* row = run.src + std::min(y, run.rows - 1) * run.src_stride;
    for (int32_t x = 0; x < ww; ++x) buf[y * ww + x] = row[std::min(x0 + x, run.cols - 1)];
  }
  *pitch = ww;
  return buf;
}

}  // namespace dctrsz
}  // namespace kelo
#endif  // KELO_IMGP_DCTRSZ_TRANSFORMS_SCALAR_

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/dctrsz/transforms.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "common/internal/x86_raw-inl.h"
#include "imgp/geometry/transpose-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// A vector of blocks at a time; the first that does not join ends the run.
size_t RunExtentVec(const uint8_t* cls, const int32_t* xoff, const int32_t* yoff, size_t n,
                    uint8_t k, int32_t yo, int32_t x_end) {
  const hn::ScalableTag<int32_t> d;
  const hn::Rebind<uint8_t, decltype(d)> d8;
  const size_t lanes = hn::Lanes(d);
  const auto kv = hn::Set(d, k), yv = hn::Set(d, yo), xe = hn::Set(d, x_end);
  size_t j = 1;
  for (; j + lanes <= n; j += lanes) {
    const auto x = hn::LoadU(d, xoff + j);
    const auto c = hn::BitCast(d, hn::PromoteTo(hn::RebindToUnsigned<decltype(d)>(), hn::LoadU(d8, cls + j)));
    const auto ok = hn::AndNot(hn::Or(hn::Lt(x, hn::LoadU(d, xoff + j - 1)), hn::Gt(x, xe)),
                               hn::And(hn::Eq(c, kv), hn::Eq(hn::LoadU(d, yoff + j), yv)));
    if (!hn::AllTrue(d, ok)) return j + static_cast<size_t>(hn::FindFirstTrue(d, hn::Not(ok)));
  }
  return j + scalar::RunExtent(cls + j - 1, xoff + j - 1, yoff + j - 1, n - j + 1, k, yo, x_end) - 1;
}

#if HWY_TARGET == HWY_SCALAR
// One lane cannot hold a block row: the scalar definitions serve.
void FdctSubBlockVec(const uint8_t* pix, int32_t* acc, const int16_t* v,
                     const int16_t* h, ptrdiff_t stride) {
  scalar::FdctSubBlock(pix, acc, v, h, stride);
}
void IdctDequantVec(uint8_t* dst, ptrdiff_t stride, const int32_t* acc,
                    const int32_t* q) {
  scalar::IdctDequant(dst, stride, acc, q);
}
void Idct16Vec(uint8_t* dst, ptrdiff_t stride, const int16_t* coef) {
  scalar::Idct16(dst, stride, coef);
}
void AccumulateBlockVec(const uint8_t* pix, ptrdiff_t stride, int16_t* const* v,
                        int16_t* const* h, int ni, int nj, int32_t* acc) {
  scalar::AccumulateBlock(pix, stride, v, h, ni, nj, acc);
}
void BlockToBytesVec(const uint8_t* pix, ptrdiff_t stride, int16_t* const* v,
                     int16_t* const* h, int ni, int nj, const int32_t* q, uint8_t* dst,
                     ptrdiff_t dst_stride) {
  scalar::BlockToBytes(pix, stride, v, h, ni, nj, q, dst, dst_stride);
}
void RunToBytesVec(const BlockRun& run) { scalar::RunToBytes(run); }
#else
using DU = hn::FixedTag<uint32_t, 4>;
using DI = hn::FixedTag<int32_t, 4>;
using VU = hn::Vec<DU>;
using VI = hn::Vec<DI>;

// Row `r` of a 4x4 int16 matrix, widened (sign-extended) to 32-bit lanes.
HWY_INLINE VU LoadRow16(const int16_t* m) {
  const hn::FixedTag<int16_t, 4> d16;
  return hn::BitCast(DU(), hn::PromoteTo(DI(), hn::LoadU(d16, m)));
}

template <int kShift, class V>
HWY_INLINE V Sar(V v) {
  const hn::DFromV<V> d;
  return hn::BitCast(d, hn::ShiftRight<kShift>(hn::BitCast(hn::RebindToSigned<decltype(d)>(), v)));
}

// ((a >> 16) * q) >> 8 kept as 16 bits, sign-extended: bits 8 to 23 of the
// product, moved to the top and shifted down.
template <class V>
HWY_INLINE V Dequantise(V a, V q) {
  return Sar<16>(hn::ShiftLeft<8>(hn::Mul(Sar<16>(a), q)));
}

// Rows to columns in registers.
HWY_INLINE void Transpose(VU& r0, VU& r1, VU& r2, VU& r3) {
  const hn::Repartition<uint64_t, DU> d64;
  const VU t0 = hn::InterleaveLower(DU(), r0, r1);
  const VU t1 = hn::InterleaveLower(DU(), r2, r3);
  const VU t2 = hn::InterleaveUpper(DU(), r0, r1);
  const VU t3 = hn::InterleaveUpper(DU(), r2, r3);
  r0 = hn::BitCast(DU(), hn::InterleaveLower(d64, hn::BitCast(d64, t0), hn::BitCast(d64, t1)));
  r1 = hn::BitCast(DU(), hn::InterleaveUpper(d64, hn::BitCast(d64, t0), hn::BitCast(d64, t1)));
  r2 = hn::BitCast(DU(), hn::InterleaveLower(d64, hn::BitCast(d64, t2), hn::BitCast(d64, t3)));
  r3 = hn::BitCast(DU(), hn::InterleaveUpper(d64, hn::BitCast(d64, t2), hn::BitCast(d64, t3)));
}

// The butterfly on four vectors x0..x3 (lane i of each is one line).
template <int kShift, class V>
HWY_INLINE void Butterfly(V x0, V x1, V x2, V x3, V& y0, V& y1, V& y2, V& y3) {
  const hn::DFromV<V> d;
  const V k128 = hn::Set(d, 128u), k53 = hn::Set(d, 53u);
  const V e0 = hn::Mul(hn::Add(x0, x2), k128);
  const V e1 = hn::Mul(hn::Sub(x0, x2), k128);
  const V o0 = hn::Add(hn::Mul(x1, k128), hn::Mul(x3, k53));
  const V o1 = hn::Sub(hn::Mul(x1, k53), hn::Mul(x3, k128));
  y0 = Sar<kShift>(hn::Add(e0, o0));
  y1 = Sar<kShift>(hn::Add(e1, o1));
  y2 = Sar<kShift>(hn::Sub(e1, o1));
  y3 = Sar<kShift>(hn::Sub(e0, o0));
}

// Rows d0..d3 of 16-bit coefficients (sign-extended in 32-bit lanes) to the
// stored 4x4 bytes.
HWY_INLINE void InverseStore(VU d0, VU d1, VU d2, VU d3, uint8_t* dst,
                             ptrdiff_t stride) {
  // Horizontal pass: lane r of column vector k is d[r][k].
  Transpose(d0, d1, d2, d3);
  VU y0, y1, y2, y3;
  Butterfly<7>(d0, d1, d2, d3, y0, y1, y2, y3);
  // y_k lane r = row result [r][k]; the vertical pass needs lane c = [k][c].
  Transpose(y0, y1, y2, y3);
  VU o0, o1, o2, o3;
  Butterfly<14>(y0, y1, y2, y3, o0, o1, o2, o3);
  const hn::FixedTag<uint8_t, 4> d8;
  const VU rows[4] = {o0, o1, o2, o3};
  for (int k = 0; k < 4; ++k) {
    // Keep the low 16 bits (sign-extended), then saturate to bytes.
    const VI narrow = hn::ShiftRight<16>(hn::BitCast(DI(), hn::ShiftLeft<16>(rows[k])));
    hn::StoreU(hn::DemoteTo(d8, narrow), d8, dst + k * stride);
  }
}

// Rows u of T = (V P) >> 4 for the 4x4 bytes P at pix.
HWY_INLINE void ProductVP(const uint8_t* pix, ptrdiff_t stride, const int16_t* v, VU t[4]) {
#if KELO_X86_RAW
  // Pairs of rows as 16-bit (P[n][c], P[n+1][c]) lanes, pairs of V entries
  // as 32-bit lanes: one pmaddwd per pair of rows. The sums are far from
  // 32 bits (bytes times 16-bit entries), so they equal the wrapping ones.
  int32_t rows[4];
  for (int n = 0; n < 4; ++n) memcpy(&rows[n], pix + n * stride, 4);
  const __m128i zero = _mm_setzero_si128();
  const __m128i w01 =
      _mm_unpacklo_epi8(_mm_unpacklo_epi8(_mm_cvtsi32_si128(rows[0]), _mm_cvtsi32_si128(rows[1])), zero);
  const __m128i w23 =
      _mm_unpacklo_epi8(_mm_unpacklo_epi8(_mm_cvtsi32_si128(rows[2]), _mm_cvtsi32_si128(rows[3])), zero);
  for (int u = 0; u < 4; ++u) {
    const __m128i vr = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(v + 4 * u));
    const __m128i sum = _mm_add_epi32(RawMulAddWords(w01, _mm_shuffle_epi32(vr, 0x00)),
                                      RawMulAddWords(w23, _mm_shuffle_epi32(vr, 0x55)));
    t[u] = VU{_mm_srai_epi32(sum, 4)};
  }
#else
  const hn::FixedTag<uint8_t, 4> d8;
  const DU du;
  const VU p0 = hn::PromoteTo(du, hn::LoadU(d8, pix));
  const VU p1 = hn::PromoteTo(du, hn::LoadU(d8, pix + stride));
  const VU p2 = hn::PromoteTo(du, hn::LoadU(d8, pix + 2 * stride));
  const VU p3 = hn::PromoteTo(du, hn::LoadU(d8, pix + 3 * stride));
  for (int u = 0; u < 4; ++u) {
    const VU vr = LoadRow16(v + 4 * u);
    VU sum = hn::Mul(hn::Broadcast<0>(vr), p0);
    sum = hn::Add(sum, hn::Mul(hn::Broadcast<1>(vr), p1));
    sum = hn::Add(sum, hn::Mul(hn::Broadcast<2>(vr), p2));
    sum = hn::Add(sum, hn::Mul(hn::Broadcast<3>(vr), p3));
    t[u] = Sar<4>(sum);
  }
#endif
}

// a[u] += sum over c of t[u][c] * H[c].
HWY_INLINE void ProductH(const VU t[4], const int16_t* h, VU a[4]) {
  const VU h0 = LoadRow16(h), h1 = LoadRow16(h + 4);
  const VU h2 = LoadRow16(h + 8), h3 = LoadRow16(h + 12);
  for (int u = 0; u < 4; ++u) {
    a[u] = hn::Add(a[u], hn::Mul(hn::Broadcast<0>(t[u]), h0));
    a[u] = hn::Add(a[u], hn::Mul(hn::Broadcast<1>(t[u]), h1));
    a[u] = hn::Add(a[u], hn::Mul(hn::Broadcast<2>(t[u]), h2));
    a[u] = hn::Add(a[u], hn::Mul(hn::Broadcast<3>(t[u]), h3));
  }
}

// acc rows a[0..3] += the contribution of the 4x4 bytes at pix.
HWY_INLINE void SubBlock(const uint8_t* pix, ptrdiff_t stride, const int16_t* v,
                         const int16_t* h, VU a[4]) {
  VU t[4];
  ProductVP(pix, stride, v, t);
  ProductH(t, h, a);
}

void FdctSubBlockVec(const uint8_t* pix, int32_t* acc, const int16_t* v,
                     const int16_t* h, ptrdiff_t stride) {
  const DU du;
  VU a[4];
  for (int u = 0; u < 4; ++u) a[u] = hn::LoadU(du, reinterpret_cast<const uint32_t*>(acc + 4 * u));
  SubBlock(pix, stride, v, h, a);
  for (int u = 0; u < 4; ++u) hn::StoreU(a[u], du, reinterpret_cast<uint32_t*>(acc + 4 * u));
}

// The block's coefficients. The H product distributes over the wrapping
// sums, so T of every sub-block column is summed over the sub-block rows
// first and multiplied by that column's H once.
HWY_INLINE void Accumulate(const uint8_t* pix, ptrdiff_t stride, int16_t* const* v,
                           int16_t* const* h, int ni, int nj, VU a[4]) {
  constexpr int kMaxCols = 8;
  for (int u = 0; u < 4; ++u) a[u] = hn::Zero(DU());
  if (nj > kMaxCols) {
    for (int bi = 0; bi < ni; ++bi) {
      for (int bj = 0; bj < nj; ++bj) {
        SubBlock(pix + 4 * bi * stride + 4 * bj, stride, v[bi], h[bj], a);
      }
    }
    return;
  }
  VU sum[kMaxCols][4];
  for (int bj = 0; bj < nj; ++bj) {
    for (int u = 0; u < 4; ++u) sum[bj][u] = hn::Zero(DU());
  }
  for (int bi = 0; bi < ni; ++bi) {
    for (int bj = 0; bj < nj; ++bj) {
      VU t[4];
      ProductVP(pix + 4 * bi * stride + 4 * bj, stride, v[bi], t);
      for (int u = 0; u < 4; ++u) sum[bj][u] = hn::Add(sum[bj][u], t[u]);
    }
  }
  for (int bj = 0; bj < nj; ++bj) ProductH(sum[bj], h[bj], a);
}

void AccumulateBlockVec(const uint8_t* pix, ptrdiff_t stride, int16_t* const* v,
                        int16_t* const* h, int ni, int nj, int32_t* acc) {
  VU a[4];
  Accumulate(pix, stride, v, h, ni, nj, a);
  for (int u = 0; u < 4; ++u) hn::StoreU(a[u], DU(), reinterpret_cast<uint32_t*>(acc + 4 * u));
}

// Dequantised rows, ((acc >> 16) * q) >> 8 kept as 16 bits, inverted and
// stored.
HWY_INLINE void DequantiseStore(const VU a[4], const int32_t* q, uint8_t* dst,
                                ptrdiff_t stride) {
  const DU du;
  VU d[4];
  for (int r = 0; r < 4; ++r) {
    const VU qs = hn::LoadU(du, reinterpret_cast<const uint32_t*>(q + 4 * r));
    d[r] = Dequantise(a[r], qs);
  }
  InverseStore(d[0], d[1], d[2], d[3], dst, stride);
}

void IdctDequantVec(uint8_t* dst, ptrdiff_t stride, const int32_t* acc,
                    const int32_t* q) {
  VU a[4];
  for (int r = 0; r < 4; ++r) a[r] = hn::LoadU(DU(), reinterpret_cast<const uint32_t*>(acc + 4 * r));
  DequantiseStore(a, q, dst, stride);
}

void BlockToBytesVec(const uint8_t* pix, ptrdiff_t stride, int16_t* const* v,
                     int16_t* const* h, int ni, int nj, const int32_t* q, uint8_t* dst,
                     ptrdiff_t dst_stride) {
  VU a[4];
  Accumulate(pix, stride, v, h, ni, nj, a);
  DequantiseStore(a, q, dst, dst_stride);
}

void Idct16Vec(uint8_t* dst, ptrdiff_t stride, const int16_t* coef) {
  InverseStore(LoadRow16(coef), LoadRow16(coef + 4), LoadRow16(coef + 8),
               LoadRow16(coef + 12), dst, stride);
}

// ------------------------------ Runs of blocks
// The blocks of a run share their matrices, so the vertical products are
// those of whole source columns: T[u][x] summed over the sub-block rows (each
// product shifted first) once per column for the whole run. Then every lane
// is one block: its columns of T are gathered with in-register transposes
// (per 128-bit block, four blocks each), and the horizontal products, the
// dequantisation and both inverse passes are the per-block arithmetic with
// the constants broadcast.
using DR = hn::CappedTag<uint32_t, 8>;
using VR = hn::Vec<DR>;
constexpr size_t kRunLanes = hn::MaxLanes(DR());
constexpr int32_t kSpan = 512;  // columns of T computed at a time

constexpr int kMaxSub = kRunMaxSub;  // sub-blocks across or down a run batches

// The run's matrices and scale, every entry broadcast to a whole vector
// (memory operands on x86, plain loads on ARM).
struct RunConstants {
  HWY_ALIGN uint32_t v[kMaxSub * 16 * kRunLanes];
  HWY_ALIGN uint32_t h[kMaxSub * 16 * kRunLanes];
  HWY_ALIGN uint32_t q[16 * kRunLanes];
  // Pairs (V[u][2p], V[u][2p + 1]) as 16-bit halves, entry bi * 8 + 2u + p.
  HWY_ALIGN uint32_t vp[kMaxSub * 8 * kRunLanes];
  bool h_zero[kMaxSub][4];  // row c of H[bj] is all zero
  const int16_t* v16[kMaxSub];  // the V and H matrices themselves
  const int16_t* h16[kMaxSub];
  // The folded H of a window of 5 to 8 used columns whose H columns are
  // even (frequencies 0 and 2) and odd (1 and 3) about the window's centre:
  // its rows i up to the centre, as rows and broadcast.
  HWY_ALIGN int32_t hf32[4][4];
  HWY_ALIGN uint32_t hf[16 * kRunLanes];
};

// The used window width when the run's H folds (see RunConstants::hf),
// else 0.
HWY_INLINE int FoldedWidth(const int16_t* const* h, int32_t used_w) {
  if (used_w < 5 || used_w > 8) return 0;
  for (int i = 0; i < used_w; ++i) {
    const int16_t* row = h[i / 4] + 4 * (i % 4);
    const int16_t* mirror = h[(used_w - 1 - i) / 4] + 4 * ((used_w - 1 - i) % 4);
    for (int w = 0; w < 4; ++w) {
      if (row[w] != (w % 2 ? -mirror[w] : mirror[w])) return 0;
    }
  }
  return used_w;
}

// Columns of T one Columns call makes.
#if HWY_TARGET == HWY_NEON
constexpr int32_t kColumnStep = 8;
#else
constexpr int32_t kColumnStep = static_cast<int32_t>(kRunLanes);
#endif

HWY_INLINE void Broadcast16(const int16_t* m, uint32_t* out) {
  for (int e = 0; e < 16; ++e) hn::Store(hn::Set(DR(), static_cast<uint32_t>(m[e])), DR(), out + e * kRunLanes);
}

HWY_INLINE VR Splat(const uint32_t* k, int e) { return hn::Load(DR(), k + e * kRunLanes); }

// sum = t for the first term of a sum, else sum + t.
template <bool kFirst>
HWY_INLINE void AddTerm(VR& sum, VR t) {
  sum = kFirst ? t : hn::Add(sum, t);
}

// The vertical products of one sub-block row (4 pixel rows at p, of which
// the first kRows have weight: rows past them are not read) added to the
// column sums s[u], each product shifted first. m: the sub-block's V.
#if KELO_X86_RAW
// Rows n and n + 1 as 16-bit (P[n][x], P[n + 1][x]) lanes: one pmaddwd per
// pair of rows. The sums (bytes times 16-bit entries) are far from 32 bits,
// so they equal the wrapping ones. A row of zero weight reads as its upper
// neighbour (stride 0).
HWY_INLINE VR RowPair(const uint8_t* p, ptrdiff_t stride) {
#if HWY_TARGET <= HWY_AVX2
  static_assert(kRunLanes == 8, "256-bit run vectors");
  const __m128i a = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
  const __m128i b = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + stride));
  return VR{_mm256_cvtepu8_epi16(_mm_unpacklo_epi8(a, b))};
#else
  static_assert(kRunLanes == 4, "128-bit run vectors");
  int32_t a, b;
  memcpy(&a, p, 4);
  memcpy(&b, p + stride, 4);
  const __m128i ab = _mm_unpacklo_epi8(_mm_cvtsi32_si128(a), _mm_cvtsi32_si128(b));
  return VR{_mm_unpacklo_epi8(ab, _mm_setzero_si128())};
#endif
}

template <int kRows, bool kFirst>
HWY_INLINE void SubRowColumns(const uint8_t* p, ptrdiff_t stride, const RunConstants& k, int bi,
                              VR s[4]) {
  const VR p01 = RowPair(p, kRows > 1 ? stride : 0);
  const uint32_t* m = k.vp + bi * 8 * kRunLanes;
  if (kRows <= 2) {
    HWY_UNROLL(4)
    for (int u = 0; u < 4; ++u) AddTerm<kFirst>(s[u], Sar<4>(VR{RawMulAddWords(p01.raw, Splat(m, 2 * u).raw)}));
    return;
  }
  const VR p23 = RowPair(p + 2 * stride, kRows > 3 ? stride : 0);
  HWY_UNROLL(4)
  for (int u = 0; u < 4; ++u) {
    const VR t = hn::Add(VR{RawMulAddWords(p01.raw, Splat(m, 2 * u).raw)},
                         VR{RawMulAddWords(p23.raw, Splat(m, 2 * u + 1).raw)});
    AddTerm<kFirst>(s[u], Sar<4>(t));
  }
}
#elif HWY_TARGET == HWY_NEON
// Eight columns as 16-bit lanes, each V row one d register: products by
// lane, widened while they accumulate (vmull/vmlal.s16), exact like the
// definition's sums.
template <int kRows, bool kFirst>
HWY_INLINE void SubRowColumns(const uint8_t* p, ptrdiff_t stride, const RunConstants& k, int bi,
                              int32x4_t s[4][2]) {
  int16x8_t rows[4];
  HWY_UNROLL(4)
  for (int n = 0; n < kRows; ++n) rows[n] = vreinterpretq_s16_u16(vmovl_u8(vld1_u8(p + n * stride)));
  const int16_t* m = k.v16[bi];
  HWY_UNROLL(4)
  for (int u = 0; u < 4; ++u) {
    const int16x4_t vu = vld1_s16(m + 4 * u);
    int32x4_t lo = vmull_lane_s16(vget_low_s16(rows[0]), vu, 0);
    int32x4_t hi = vmull_lane_s16(vget_high_s16(rows[0]), vu, 0);
    if (kRows > 1) {
      lo = vmlal_lane_s16(lo, vget_low_s16(rows[1]), vu, 1);
      hi = vmlal_lane_s16(hi, vget_high_s16(rows[1]), vu, 1);
    }
    if (kRows > 2) {
      lo = vmlal_lane_s16(lo, vget_low_s16(rows[2]), vu, 2);
      hi = vmlal_lane_s16(hi, vget_high_s16(rows[2]), vu, 2);
    }
    if (kRows > 3) {
      lo = vmlal_lane_s16(lo, vget_low_s16(rows[3]), vu, 3);
      hi = vmlal_lane_s16(hi, vget_high_s16(rows[3]), vu, 3);
    }
    if (kFirst) {
      s[u][0] = vshrq_n_s32(lo, 4);
      s[u][1] = vshrq_n_s32(hi, 4);
    } else {
      s[u][0] = vaddq_s32(s[u][0], vshrq_n_s32(lo, 4));
      s[u][1] = vaddq_s32(s[u][1], vshrq_n_s32(hi, 4));
    }
  }
}
#else
template <int kRows, bool kFirst>
HWY_INLINE void SubRowColumns(const uint8_t* p, ptrdiff_t stride, const RunConstants& k, int bi,
                              VR s[4]) {
  const DR d;
  const hn::Rebind<uint8_t, DR> d8;
  VR rows[4];
  HWY_UNROLL(4)
  for (int n = 0; n < kRows; ++n) rows[n] = hn::PromoteTo(d, hn::LoadU(d8, p + n * stride));
  const uint32_t* m = k.v + bi * 16 * kRunLanes;
  HWY_UNROLL(4)
  for (int u = 0; u < 4; ++u) {
    VR t = hn::Mul(rows[0], Splat(m, 4 * u));
    HWY_UNROLL(4)
    for (int n = 1; n < kRows; ++n) t = hn::Add(t, hn::Mul(rows[n], Splat(m, 4 * u + n)));
    AddTerm<kFirst>(s[u], Sar<4>(t));
  }
}
#endif

// T of the kColumnStep columns at src into out[u * kSpan]: every sub-block
// row whole but the last, whose first kLast rows have weight.
template <int kLast>
HWY_INLINE void Columns(const uint8_t* src, ptrdiff_t stride, const RunConstants& k, int ni,
                        uint32_t* out) {
#if HWY_TARGET == HWY_NEON
  int32x4_t s[4][2];
#else
  VR s[4];
#endif
  const uint8_t* last = src + 4 * (ni - 1) * stride;
  if (ni == 1 || kLast == 0) {
#if HWY_TARGET == HWY_NEON
    HWY_UNROLL(4)
    for (int u = 0; u < 4; ++u) s[u][0] = s[u][1] = vdupq_n_s32(0);
#else
    HWY_UNROLL(4)
    for (int u = 0; u < 4; ++u) s[u] = hn::Zero(DR());
#endif
    for (int bi = 0; bi + 1 < ni; ++bi) SubRowColumns<4, false>(src + 4 * bi * stride, stride, k, bi, s);
    if constexpr (kLast > 0) SubRowColumns<kLast, false>(last, stride, k, ni - 1, s);
  } else {
    // The first sub-block row sets the sums.
    SubRowColumns<4, true>(src, stride, k, 0, s);
    for (int bi = 1; bi + 1 < ni; ++bi) SubRowColumns<4, false>(src + 4 * bi * stride, stride, k, bi, s);
    if constexpr (kLast > 0) SubRowColumns<kLast, false>(last, stride, k, ni - 1, s);
  }
  HWY_UNROLL(4)
  for (int u = 0; u < 4; ++u) {
#if HWY_TARGET == HWY_NEON
    int32_t* o = reinterpret_cast<int32_t*>(out + u * kSpan);
    vst1q_s32(o, s[u][0]);
    vst1q_s32(o + 4, s[u][1]);
#else
    hn::StoreU(s[u], DR(), out + u * kSpan);
#endif
  }
}

// T of the w >= kColumnStep columns at src into tsum[u * kSpan].
template <int kLast>
HWY_NOINLINE void ColumnSpan(const uint8_t* src, ptrdiff_t stride, const RunConstants& k, int ni,
                             int32_t w, uint32_t* tsum) {
  int32_t x = 0;
  for (; x + kColumnStep <= w; x += kColumnStep) Columns<kLast>(src + x, stride, k, ni, tsum + x);
  if (x < w) Columns<kLast>(src + w - kColumnStep, stride, k, ni, tsum + w - kColumnStep);
}

// Four consecutive T entries of block t (and of block t + 4 in the upper
// 128-bit half).
HWY_INLINE VR LoadLanes(const uint32_t* row, const int32_t* rel, int t) {
  const DR d;
  if constexpr (kRunLanes == 8) {
    const hn::Half<DR> dh;
    return hn::Combine(d, hn::LoadU(dh, row + rel[t + 4]), hn::LoadU(dh, row + rel[t]));
  } else {
    return hn::LoadU(d, row + rel[t]);
  }
}

// Row k of every block of a batch (o[c], lane t: column c of block t), each
// value's low 16 bits saturated to a byte, the blocks' four bytes side by
// side.
HWY_INLINE void StoreBlockRows(const VR o[4], uint8_t* dst) {
#if KELO_X86_RAW
  // Low halves packed to words, then to bytes (c major within each 128-bit
  // block), then one shuffle to t major.
#if HWY_TARGET <= HWY_AVX2
  const __m256i low = _mm256_set1_epi32(0xFFFF);
  const __m256i p01 = _mm256_packus_epi32(_mm256_and_si256(o[0].raw, low), _mm256_and_si256(o[1].raw, low));
  const __m256i p23 = _mm256_packus_epi32(_mm256_and_si256(o[2].raw, low), _mm256_and_si256(o[3].raw, low));
  const __m256i order = _mm256_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15, 0, 4,
                                         8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst),
                      _mm256_shuffle_epi8(_mm256_packus_epi16(p01, p23), order));
#else
  const __m128i low = _mm_set1_epi32(0xFFFF);
  const __m128i p01 = _mm_packus_epi32(_mm_and_si128(o[0].raw, low), _mm_and_si128(o[1].raw, low));
  const __m128i p23 = _mm_packus_epi32(_mm_and_si128(o[2].raw, low), _mm_and_si128(o[3].raw, low));
  const __m128i order = _mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), _mm_shuffle_epi8(_mm_packus_epi16(p01, p23), order));
#endif
#else
  const hn::RebindToSigned<DR> di;
  const hn::Rebind<uint8_t, DR> d8;
  hn::Vec<decltype(d8)> b[4];
  HWY_UNROLL(4)
  for (int c = 0; c < 4; ++c) {
    b[c] = hn::DemoteTo(d8, hn::ShiftRight<16>(hn::BitCast(di, hn::ShiftLeft<16>(o[c]))));
  }
  hn::StoreInterleaved4(b[0], b[1], b[2], b[3], d8, dst);
#endif
}

// kRunLanes blocks whose windows start at column rel[i] of T; kW: the
// folded width, or 0.
template <int kW>
HWY_INLINE void Batch(const uint32_t* tsum, const int32_t* rel, int nj, const RunConstants& k,
                      uint8_t* dst, ptrdiff_t stride) {
  const DR d;
  VR y[4][4];
  HWY_UNROLL(4)
  for (int u = 0; u < 4; ++u) {
    VR a[4];
    const uint32_t* row = tsum + u * kSpan;
    if constexpr (kW == 0) {
      HWY_UNROLL(4)
      for (int w = 0; w < 4; ++w) a[w] = hn::Zero(d);
      for (int bj = 0; bj < nj; ++bj) {
        VR r[4];
        HWY_UNROLL(4)
        for (int t = 0; t < 4; ++t) r[t] = LoadLanes(row + 4 * bj, rel, t);
        TransposeInBlocks<4, 4>(d, r);
#if HWY_TARGET == HWY_NEON
        // Row c of H widened into two d registers: multiply-accumulates by
        // lane instead of a broadcast vector per entry.
        const int16_t* hm = k.h16[bj];
        HWY_UNROLL(4)
        for (int c = 0; c < 4; ++c) {
          if (k.h_zero[bj][c]) continue;  // the window's overhang, mostly
          const uint32x4_t hc = vreinterpretq_u32_s32(vmovl_s16(vld1_s16(hm + 4 * c)));
          a[0] = VR{vmlaq_lane_u32(a[0].raw, r[c].raw, vget_low_u32(hc), 0)};
          a[1] = VR{vmlaq_lane_u32(a[1].raw, r[c].raw, vget_low_u32(hc), 1)};
          a[2] = VR{vmlaq_lane_u32(a[2].raw, r[c].raw, vget_high_u32(hc), 0)};
          a[3] = VR{vmlaq_lane_u32(a[3].raw, r[c].raw, vget_high_u32(hc), 1)};
        }
#else
        const uint32_t* m = k.h + bj * 16 * kRunLanes;
        HWY_UNROLL(4)
        for (int c = 0; c < 4; ++c) {
          if (k.h_zero[bj][c]) continue;  // the window's overhang, mostly
          HWY_UNROLL(4)
          for (int w = 0; w < 4; ++w) a[w] = hn::Add(a[w], hn::Mul(r[c], Splat(m, 4 * c + w)));
        }
#endif
      }
    } else {
      // Columns i and kW - 1 - i share their H entries up to the sign:
      // their sums feed the even frequencies, their differences the odd
      // ones (the same wrapping sums, half the products).
      constexpr int kHalf = kW / 2, kTerms = (kW + 1) / 2;
      VR tv[8];
      HWY_UNROLL(2)
      for (int bj = 0; bj < (kW + 3) / 4; ++bj) {
        VR r[4];
        HWY_UNROLL(4)
        for (int t = 0; t < 4; ++t) r[t] = LoadLanes(row + 4 * bj, rel, t);
        TransposeInBlocks<4, 4>(d, r);
        HWY_UNROLL(4)
        for (int c = 0; c < 4; ++c) tv[4 * bj + c] = r[c];
      }
      VR sum[kTerms], dif[kHalf];
      HWY_UNROLL(4)
      for (int i = 0; i < kHalf; ++i) {
        sum[i] = hn::Add(tv[i], tv[kW - 1 - i]);
        dif[i] = hn::Sub(tv[i], tv[kW - 1 - i]);
      }
      if constexpr (kW % 2 == 1) sum[kHalf] = tv[kHalf];
#if HWY_TARGET == HWY_NEON
      uint32x4_t hr[kTerms];
      HWY_UNROLL(4)
      for (int i = 0; i < kTerms; ++i) hr[i] = vreinterpretq_u32_s32(vld1q_s32(k.hf32[i]));
      a[0] = VR{vmulq_lane_u32(sum[0].raw, vget_low_u32(hr[0]), 0)};
      a[1] = VR{vmulq_lane_u32(dif[0].raw, vget_low_u32(hr[0]), 1)};
      a[2] = VR{vmulq_lane_u32(sum[0].raw, vget_high_u32(hr[0]), 0)};
      a[3] = VR{vmulq_lane_u32(dif[0].raw, vget_high_u32(hr[0]), 1)};
      HWY_UNROLL(4)
      for (int i = 1; i < kTerms; ++i) {
        a[0] = VR{vmlaq_lane_u32(a[0].raw, sum[i].raw, vget_low_u32(hr[i]), 0)};
        a[2] = VR{vmlaq_lane_u32(a[2].raw, sum[i].raw, vget_high_u32(hr[i]), 0)};
        if (i < kHalf) {
          a[1] = VR{vmlaq_lane_u32(a[1].raw, dif[i].raw, vget_low_u32(hr[i]), 1)};
          a[3] = VR{vmlaq_lane_u32(a[3].raw, dif[i].raw, vget_high_u32(hr[i]), 1)};
        }
      }
#else
      HWY_UNROLL(4)
      for (int w = 0; w < 4; ++w) a[w] = hn::Mul(w % 2 ? dif[0] : sum[0], Splat(k.hf, w));
      HWY_UNROLL(4)
      for (int i = 1; i < kTerms; ++i) {
        a[0] = hn::Add(a[0], hn::Mul(sum[i], Splat(k.hf, 4 * i)));
        a[2] = hn::Add(a[2], hn::Mul(sum[i], Splat(k.hf, 4 * i + 2)));
        if (i < kHalf) {
          a[1] = hn::Add(a[1], hn::Mul(dif[i], Splat(k.hf, 4 * i + 1)));
          a[3] = hn::Add(a[3], hn::Mul(dif[i], Splat(k.hf, 4 * i + 3)));
        }
      }
#endif
    }
    VR dq[4];
    HWY_UNROLL(4)
    for (int w = 0; w < 4; ++w) {
      dq[w] = Dequantise(a[w], Splat(k.q, 4 * u + w));
    }
    Butterfly<7>(dq[0], dq[1], dq[2], dq[3], y[u][0], y[u][1], y[u][2], y[u][3]);
  }
  VR o[4][4];
  HWY_UNROLL(4)
  for (int c = 0; c < 4; ++c) Butterfly<14>(y[0][c], y[1][c], y[2][c], y[3][c], o[0][c], o[1][c], o[2][c], o[3][c]);
  HWY_UNROLL(4)
  for (int k = 0; k < 4; ++k) StoreBlockRows(o[k], dst + k * stride);
}

void RunToBytesVec(const BlockRun& run) {
  constexpr int L = static_cast<int>(kRunLanes);
  HWY_ALIGN uint32_t tsum[4 * kSpan];
  RunConstants k;
  const int32_t ww = 4 * run.nj;
  int i = 0;
  const bool batches = run.n >= L && run.ni >= 1 && run.nj >= 1 && run.ni <= kMaxSub &&
                       run.nj <= kMaxSub;
  // Pixel rows of the last sub-block row and columns of the last sub-block
  // column that have weight.
  const int last_rows = batches ? dctrsz::UsedLines(run.v[run.ni - 1], false) : 4;
  const int32_t used_w = batches ? 4 * (run.nj - 1) + dctrsz::UsedLines(run.h[run.nj - 1], true) : ww;
  if (batches) {
    for (int bi = 0; bi < run.ni; ++bi) {
      const int16_t* m = run.v[bi];
      k.v16[bi] = m;
      Broadcast16(m, k.v + bi * 16 * kRunLanes);
      for (int e = 0; e < 8; ++e) {
        const uint32_t pair = static_cast<uint16_t>(m[2 * e]) | (uint32_t{static_cast<uint16_t>(m[2 * e + 1])} << 16);
        hn::Store(hn::Set(DR(), pair), DR(), k.vp + (bi * 8 + e) * kRunLanes);
      }
    }
    for (int bj = 0; bj < run.nj; ++bj) {
      const int16_t* m = run.h[bj];
      k.h16[bj] = m;
      Broadcast16(m, k.h + bj * 16 * kRunLanes);
      for (int c = 0; c < 4; ++c) k.h_zero[bj][c] = (m[4 * c] | m[4 * c + 1] | m[4 * c + 2] | m[4 * c + 3]) == 0;
    }
    for (int e = 0; e < 16; ++e) {
      hn::Store(hn::Set(DR(), static_cast<uint32_t>(run.q[e])), DR(), k.q + e * kRunLanes);
    }
  }
  const int fold = batches ? FoldedWidth(run.h, used_w) : 0;
  for (int i = 0; i < (fold + 1) / 2; ++i) {
    for (int w = 0; w < 4; ++w) {
      k.hf32[i][w] = run.h[i / 4][4 * (i % 4) + w];
      hn::Store(hn::Set(DR(), static_cast<uint32_t>(k.hf32[i][w])), DR(), k.hf + (4 * i + w) * kRunLanes);
    }
  }
  while (batches && run.n - i >= L) {
    const int32_t x0 = run.xoff[i];
    int cnt = 0;
    while (run.n - i - cnt >= L && int64_t{run.xoff[i + cnt + L - 1]} + ww - x0 <= kSpan) cnt += L;
    // Columns of T up to the last window's last column of non-zero weight
    // are computed; the rest of the window, zero.
    const int32_t w = cnt ? run.xoff[i + cnt - 1] + used_w - x0 : 0;
    if (w < kColumnStep) break;
    const uint8_t* src = run.src + x0;
    switch (last_rows) {
      case 0: ColumnSpan<0>(src, run.src_stride, k, run.ni, w, tsum); break;
      case 1: ColumnSpan<1>(src, run.src_stride, k, run.ni, w, tsum); break;
      case 2: ColumnSpan<2>(src, run.src_stride, k, run.ni, w, tsum); break;
      case 3: ColumnSpan<3>(src, run.src_stride, k, run.ni, w, tsum); break;
      default: ColumnSpan<4>(src, run.src_stride, k, run.ni, w, tsum); break;
    }
    for (int u = 0; u < 4; ++u) {
      for (int32_t x = w; x < w + ww - used_w; ++x) tsum[u * kSpan + x] = 0;
    }
    for (int b = 0; b < cnt; b += L) {
      int32_t rel[L];
      for (int t = 0; t < L; ++t) rel[t] = run.xoff[i + b + t] - x0;
      uint8_t* dst = run.dst + 4 * (i + b);
      switch (fold) {
        case 5: Batch<5>(tsum, rel, run.nj, k, dst, run.dst_stride); break;
        case 6: Batch<6>(tsum, rel, run.nj, k, dst, run.dst_stride); break;
        case 7: Batch<7>(tsum, rel, run.nj, k, dst, run.dst_stride); break;
        case 8: Batch<8>(tsum, rel, run.nj, k, dst, run.dst_stride); break;
        default: Batch<0>(tsum, rel, run.nj, k, dst, run.dst_stride); break;
      }
    }
    i += cnt;
  }
  uint8_t buf[16 * kMaxSub * kMaxSub];
  for (; i < run.n; ++i) {
    ptrdiff_t pitch;
    const uint8_t* pix = dctrsz::RunWindow(run, i, buf, &pitch);
    BlockToBytesVec(pix, pitch, run.v, run.h, run.ni, run.nj, run.q, run.dst + 4 * i,
                    run.dst_stride);
  }
}
#endif  // HWY_TARGET == HWY_SCALAR

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_HAVE_HWY

#if !KELO_HAVE_HWY || HWY_ONCE
#include "common/internal/api.h"

namespace kelo {

KELO_VEC_EXPORT(FdctSubBlockVec);
KELO_VEC_EXPORT(IdctDequantVec);
KELO_VEC_EXPORT(Idct16Vec);
KELO_VEC_EXPORT(AccumulateBlockVec);
KELO_VEC_EXPORT(BlockToBytesVec);
KELO_VEC_EXPORT(RunToBytesVec);
KELO_VEC_EXPORT(RunExtentVec);

void RunToBytes(const BlockRun& run) { KELO_VEC_CALL(RunToBytesVec, scalar::RunToBytes)(run); }
size_t RunExtent(const uint8_t* cls, const int32_t* xoff, const int32_t* yoff, size_t n,
                 uint8_t k, int32_t yo, int32_t x_end) {
  return KELO_VEC_CALL(RunExtentVec, scalar::RunExtent)(cls, xoff, yoff, n, k, yo, x_end);
}

void AccumulateBlock(const uint8_t* pix, ptrdiff_t stride, int16_t* const* v,
                     int16_t* const* h, int ni, int nj, int32_t* acc) {
  KELO_VEC_CALL(AccumulateBlockVec, scalar::AccumulateBlock)(pix, stride, v, h, ni, nj, acc);
}
void BlockToBytes(const uint8_t* pix, ptrdiff_t stride, int16_t* const* v,
                  int16_t* const* h, int ni, int nj, const int32_t* q, uint8_t* dst,
                  ptrdiff_t dst_stride) {
  KELO_VEC_CALL(BlockToBytesVec, scalar::BlockToBytes)(pix, stride, v, h, ni, nj, q, dst,
                                                       dst_stride);
}

void FdctSubBlock(const uint8_t* pix, int32_t* acc, const int16_t* v,
                  const int16_t* h, ptrdiff_t stride) {
  KELO_VEC_CALL(FdctSubBlockVec, scalar::FdctSubBlock)(pix, acc, v, h, stride);
}
void IdctDequant(uint8_t* dst, ptrdiff_t stride, const int32_t* acc,
                 const int32_t* q) {
  KELO_VEC_CALL(IdctDequantVec, scalar::IdctDequant)(dst, stride, acc, q);
}
void Idct16(uint8_t* dst, ptrdiff_t stride, const int16_t* coef) {
  KELO_VEC_CALL(Idct16Vec, scalar::Idct16)(dst, stride, coef);
}

}  // namespace kelo

KELO_EXPORT void kimgp_fdct_blocknxn_full_compute(const uint8_t* pix, int32_t* acc,
                                                  const int16_t* vmat,
                                                  const int16_t* hmat,
                                                  int32_t stride) {
  kelo::FdctSubBlock(pix, acc, vmat, hmat, stride);
}

KELO_EXPORT void kimgp_idct_block4x4(uint8_t* base, int32_t y, int32_t x,
                                     int32_t stride, const int32_t* acc,
                                     const int32_t* qscale) {
  kelo::IdctDequant(base + static_cast<ptrdiff_t>(y) * stride + x, stride, acc, qscale);
}

KELO_EXPORT void kimgp_idct_block4x4_float(uint8_t* base, int32_t y, int32_t x,
                                           const int16_t* coef, int32_t stride) {
  kelo::Idct16(base + static_cast<ptrdiff_t>(y) * stride + x, stride, coef);
}

KELO_EXPORT void kimgp_idct_blocknxn_float(uint8_t* base, int32_t y, int32_t x,
                                           const int16_t* coef, int32_t stride,
                                           int32_t row_limit) {
  int16_t out[16];
  kelo::scalar::IdctCoefs(coef, out);
  for (int r = 0; r < 4; ++r) {
    if (int64_t{y} + r >= row_limit) break;
    uint8_t* row = base + (static_cast<ptrdiff_t>(y) + r) * stride + x;
    for (int c = 0; c < 4; ++c) {
      if (int64_t{x} + c >= stride) break;
      const int16_t v = out[4 * r + c];
      row[c] = static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v));
    }
  }
}
#endif
