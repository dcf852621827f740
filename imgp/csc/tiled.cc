// Tiled layouts and 10-bit P010LE.
//
// A tiled plane is cut into tiles of TW bytes by TH rows; the bytes of a tile
// are stored row after row (TW x TH contiguous bytes), tiles run left to
// right, then top to bottom. `stride` is the length of one row of tiles
// divided by TH, i.e. tiles-per-row x TW, so byte (x, y) of the plane is at
//   (y / TH) * stride * TH + (x / TW) * TW * TH + (y % TH) * TW + x % TW.
// Chroma planes hold interleaved U, V pairs at half height: T64X32 tiles them
// 64 x 32 like luma, the others with tiles of half the luma tile height
// (16 x 8, 8 x 4, 256 x 8). Rows are converted by gathering them into a linear buffer and
// running the NV12 rows.
#include "common/internal/simd.h"
#include "imgp/csc/pixel_layouts.h"

#ifndef KELO_IMGP_CSC_TILED_P010_SCALAR
#define KELO_IMGP_CSC_TILED_P010_SCALAR
namespace kelo {
namespace csc {
namespace p010 {

// P010LE: 16-bit little-endian words with the 10 significant bits at the
// top. BT.2020 limited range straight to 8 bits in 16-bit fixed point (the
// formulation kimgp_csc.h states): with W the 64 Y, 64 U, 64 V words less
// their low six bits, in 64ths of an output step
//   L = (W_y kY) >> 16, D = W_u - 32768, E = W_v - 32768
//   R: L + ((E kRv + 2^14) >> 15) + kOff
//   G: L + ((D kGu + E kGv + 2^15) >> 16) + kOff
//   B: L + ((D kBu + 2^14) >> 15) + kOff
// and each channel is clamp((sum + 32) >> 6). The vector paths saturate the
// sum to 16 bits, which changes no byte: only sums above 32767 saturate.
constexpr int kY = 19077, kRv = 13752, kGu = -3069, kGv = -10657, kBu = 17546, kOff = -1192;

inline int Word(const uint8_t* p) { return (p[0] | p[1] << 8) & 0xFFC0; }
inline uint8_t Channel(int sum) {
  const int x = (sum + 32) >> 6;
  return static_cast<uint8_t>(x < 0 ? 0 : (x > 255 ? 255 : x));
}

// Pixels [x0, n) of a row: luma words at row.y, U and V words of pixel pair
// i at row.u + 4 i and row.v + 4 i.
inline void Row(const YuvRow& row, uint8_t* dst, int x0, int n) {
  for (int x = x0; x < n; ++x) {
    const int l = (Word(row.y + 2 * x) * kY) >> 16;
    const int d = Word(row.u + 4 * (x >> 1)) - 32768;
    const int e = Word(row.v + 4 * (x >> 1)) - 32768;
    uint8_t* p = dst + 4 * x;
    p[0] = Channel(l + ((e * kRv + (1 << 14)) >> 15) + kOff);
    p[1] = Channel(l + ((d * kGu + e * kGv + (1 << 15)) >> 16) + kOff);
    p[2] = Channel(l + ((d * kBu + (1 << 14)) >> 15) + kOff);
    p[3] = 255;
  }
}

}  // namespace p010
}  // namespace csc
}  // namespace kelo
#endif  // KELO_IMGP_CSC_TILED_P010_SCALAR

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/csc/tiled.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "common/internal/x86_raw-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if KELO_X86_RAW
// P010LE to RGBA8888 on x86, 16 pixels per 256 bits: the chroma terms of the
// pairs in 16-bit lanes (B and R of a pair side by side, G as the upper word
// of the pair's 32-bit lane: pmulhrsw and pmaddwd), repeated to both pixels
// of a pair by one byte shuffle each; saturating sums with the luma (the
// +32 of the rounding is in the constants), a shift by 6 and saturating
// packs. Vectors of at most two blocks: the pixels leave each block as two
// halves, put in order at the store.
void P010RowVec(const csc::YuvRow& row_in, uint8_t* dst, int n) {
  using namespace csc::p010;  // NOLINT: the matrix
  const csc::YuvRow row = row_in;
  const hn::CappedTag<uint8_t, 32> d8;
  const hn::Repartition<uint16_t, decltype(d8)> du;
  const hn::Repartition<int16_t, decltype(d8)> di;
  const hn::Repartition<int32_t, decltype(d8)> d32;
  const hn::Repartition<uint32_t, decltype(d8)> du32;
  using VW = hn::Vec<decltype(di)>;
  using V8 = hn::Vec<decltype(d8)>;
  const auto words = [&](int lo, int hi) HWY_ATTR {
    const uint32_t w = uint32_t(uint16_t(lo)) | uint32_t(uint16_t(hi)) << 16;
    return hn::BitCast(di, hn::Set(du32, w));
  };
  const auto mask = hn::Set(du, 0xFFC0), flip = hn::Set(du, 0x8000), ky = hn::Set(du, kY);
  const VW k_br = words(kBu, kRv), k_g = words(kGu, kGv), off = hn::Set(di, kOff + 32),
           alpha = hn::Set(di, 255);
  const auto g_off = hn::Set(d32, (kOff + 32) * 65536 + 32768);
  // Word 0 (even) or word 1 (odd) of each 32-bit lane, in both words.
  alignas(16) static constexpr uint8_t kDupEven[16] = {0, 1, 0, 1, 4, 5, 4, 5,
                                                       8, 9, 8, 9, 12, 13, 12, 13};
  alignas(16) static constexpr uint8_t kDupOdd[16] = {2, 3, 2, 3, 6, 7, 6, 7,
                                                      10, 11, 10, 11, 14, 15, 14, 15};
  const V8 dup_even = hn::LoadDup128(d8, kDupEven), dup_odd = hn::LoadDup128(d8, kDupOdd);
  const auto dup = [&](VW v, V8 order) HWY_ATTR {
    return hn::BitCast(di, hn::TableLookupBytes(hn::BitCast(d8, v), order));
  };
  const auto channel = [&](VW l, VW t) HWY_ATTR {
    return hn::ShiftRight<6>(hn::SaturatedAdd(l, t));
  };
  const size_t L = hn::Lanes(du);
  const auto step = [&](size_t x) HWY_ATTR {
    const auto yw = hn::BitCast(du, hn::LoadU(d8, row.y + 2 * x));
    const auto cw = hn::BitCast(du, hn::LoadU(d8, row.u + 2 * x));
    const VW l = hn::BitCast(di, hn::MulHigh(hn::And(yw, mask), ky));
    const VW c = hn::BitCast(di, hn::And(hn::Xor(cw, flip), mask));
    const VW br = hn::Add(hn::MulFixedPoint15(c, k_br), off);
    const VW g2 = hn::BitCast(di, hn::Add(hn::BitCast(d32, VW{RawMulAddWords(c.raw, k_g.raw)}), g_off));
    const VW r = channel(l, dup(br, dup_odd));
    const VW g = channel(l, dup(g2, dup_odd));
    const VW b = channel(l, dup(br, dup_even));
    // Bytes R0-7 G0-7 and B0-7 A per block, then pixels 0-3 and 4-7.
    const V8 rg{RawPackBytes(r.raw, g.raw)};
    const V8 ba{RawPackBytes(b.raw, alpha.raw)};
    const auto rb = hn::InterleaveLower(d8, rg, ba), ga = hn::InterleaveUpper(d8, rg, ba);
    const auto p0 = hn::InterleaveLower(d8, rb, ga), p1 = hn::InterleaveUpper(d8, rb, ga);
    uint8_t* out = dst + 4 * x;
    if constexpr (HWY_TARGET <= HWY_AVX2) {
      hn::StoreU(hn::ConcatLowerLower(d8, p1, p0), d8, out);
      hn::StoreU(hn::ConcatUpperUpper(d8, p1, p0), d8, out + 32);
    } else {
      hn::StoreU(p0, d8, out);
      hn::StoreU(p1, d8, out + 16);
    }
  };
  const size_t un = static_cast<size_t>(n);
  size_t x = 0;
  for (; x + 2 * L <= un; x += 2 * L) {
    step(x);
    step(x + L);
  }
  if (x + L <= un) step(x), x += L;
  csc::p010::Row(row, dst, static_cast<int>(x), n);
}
#elif HWY_TARGET == HWY_NEON
// P010LE to RGBA8888 on NEON: structure loads split the even and odd luma
// words and the U, V words of eight pairs, so each pair's chroma terms serve
// its two pixels as they are; the luma as (W_y >> 1) with its low five bits
// cleared times kY, doubled high half (vqdmulh); the R, B terms by rounding
// doubled high halves (vqrdmulh), the G term by a widening multiply-add and a
// rounding add-narrow of the high halves (vraddhn, which adds the offset
// too); a rounding, saturating shift-narrow (vqrshrun) gives the bytes,
// zipped back into pixel order for the structure store.
void P010RowVec(const csc::YuvRow& row_in, uint8_t* dst, int n) {
  using namespace csc::p010;  // NOLINT: the matrix
  const csc::YuvRow row = row_in;
  // Coefficients as vectors: the by-scalar forms make the compiler move the
  // scalar into a lane on every pass.
  const uint16x8_t flip = vdupq_n_u16(0x8000), luma_bits = vdupq_n_u16(0x7FE0);
  const int16x8_t off = vdupq_n_s16(kOff), ky = vdupq_n_s16(kY), kr = vdupq_n_s16(kRv),
                  kb = vdupq_n_s16(kBu);
  const int16x4_t kgu = vdup_n_s16(kGu), kgv = vdup_n_s16(kGv);
  const int32x4_t g_off = vdupq_n_s32(kOff * 65536);
  const uint8x8_t alpha = vdup_n_u8(255);
  // The words less their low six bits, less 32768, as signed.
  const auto centred = [&](uint16x8_t w) {
    return vreinterpretq_s16_u16(vbicq_u16(veorq_u16(w, flip), vdupq_n_u16(63)));
  };
  // W_y kY >> 16 as (W_y / 2) (2 kY) >> 16.
  const auto luma = [&](uint16x8_t w) {
    return vqdmulhq_s16(vreinterpretq_s16_u16(vandq_u16(vshrq_n_u16(w, 1), luma_bits)), ky);
  };
  const auto bytes = [](int16x8_t l, int16x8_t t) { return vqrshrun_n_s16(vqaddq_s16(l, t), 6); };
  size_t x = 0;
  for (; x + 16 <= static_cast<size_t>(n); x += 16) {
    const uint16x8x2_t yw = vld2q_u16(reinterpret_cast<const uint16_t*>(row.y + 2 * x));
    const uint16x8x2_t cw = vld2q_u16(reinterpret_cast<const uint16_t*>(row.u + 2 * x));
    const int16x8_t d = centred(cw.val[0]), e = centred(cw.val[1]);
    const int16x8_t tr = vaddq_s16(vqrdmulhq_s16(e, kr), off);
    const int16x8_t tb = vaddq_s16(vqrdmulhq_s16(d, kb), off);
    const int32x4_t g_lo = vmlal_s16(vmull_s16(vget_low_s16(d), kgu), vget_low_s16(e), kgv);
    const int32x4_t g_hi = vmlal_s16(vmull_s16(vget_high_s16(d), kgu), vget_high_s16(e), kgv);
    const int16x8_t tg = vcombine_s16(vraddhn_s32(g_lo, g_off), vraddhn_s32(g_hi, g_off));
    const int16x8_t le = luma(yw.val[0]), lo = luma(yw.val[1]);
    // Even and odd pixels zipped back into order, eight pixels per store.
    const uint8x8x2_t r = vzip_u8(bytes(le, tr), bytes(lo, tr));
    const uint8x8x2_t g = vzip_u8(bytes(le, tg), bytes(lo, tg));
    const uint8x8x2_t b = vzip_u8(bytes(le, tb), bytes(lo, tb));
    for (int h = 0; h < 2; ++h) {
      uint8x8x4_t px;
      px.val[0] = r.val[h];
      px.val[1] = g.val[h];
      px.val[2] = b.val[h];
      px.val[3] = alpha;
      vst4_u8(dst + 4 * x + 32 * h, px);
    }
  }
  csc::p010::Row(row, dst, static_cast<int>(x), n);
}
#elif HWY_TARGET != HWY_SCALAR
// P010LE to RGBA8888 in 32-bit lanes, one pixel per lane, the same integer
// sums. The pair chroma is loaded as U, V words in order, so a pixel's U is
// the even lane of its pair and V the odd one.
void P010RowVec(const csc::YuvRow& row_in, uint8_t* dst, int n) {
  using namespace csc::p010;  // NOLINT: the matrix
  const csc::YuvRow row = row_in;
  const hn::ScalableTag<int32_t> d;
  const hn::Rebind<uint16_t, decltype(d)> dw;
  const hn::RebindToUnsigned<decltype(d)> du;
  const hn::Repartition<uint8_t, decltype(dw)> dwb;
  const hn::Repartition<uint8_t, decltype(d)> db;
  const size_t L = hn::Lanes(d);
  const auto mask = hn::Set(d, 0xFFC0), flip = hn::Set(d, 32768), off = hn::Set(d, kOff + 32);
  const auto half15 = hn::Set(d, 1 << 14), half16 = hn::Set(d, 1 << 15);
  const auto zero = hn::Zero(d), max = hn::Set(d, 255), alpha = hn::Set(d, 255 << 24);
  const auto ky = hn::Set(d, kY), rv = hn::Set(d, kRv), gu = hn::Set(d, kGu),
             gv = hn::Set(d, kGv), bu = hn::Set(d, kBu);
  size_t x = 0;
  for (; x + L <= static_cast<size_t>(n); x += L) {
    // Luma words of pixels x .. x + L, the U, V words of their L / 2 pairs.
    const auto yw = hn::BitCast(dw, hn::LoadU(dwb, row.y + 2 * x));
    const auto cw = hn::BitCast(dw, hn::LoadU(dwb, row.u + 2 * x));
    const auto y = hn::And(hn::BitCast(d, hn::PromoteTo(du, yw)), mask);
    const auto c = hn::Sub(hn::And(hn::BitCast(d, hn::PromoteTo(du, cw)), mask), flip);
    const auto u = hn::DupEven(c), v = hn::DupOdd(c);
    const auto l = hn::Add(hn::ShiftRight<16>(hn::Mul(y, ky)), off);
    auto r = hn::Add(l, hn::ShiftRight<15>(hn::Add(hn::Mul(v, rv), half15)));
    auto g = hn::Add(l, hn::ShiftRight<16>(hn::Add(hn::Add(hn::Mul(u, gu), hn::Mul(v, gv)), half16)));
    auto b = hn::Add(l, hn::ShiftRight<15>(hn::Add(hn::Mul(u, bu), half15)));
    r = hn::Min(hn::Max(hn::ShiftRight<6>(r), zero), max);
    g = hn::Min(hn::Max(hn::ShiftRight<6>(g), zero), max);
    b = hn::Min(hn::Max(hn::ShiftRight<6>(b), zero), max);
    const auto px = hn::Or(hn::Or(r, hn::ShiftLeft<8>(g)), hn::Or(hn::ShiftLeft<16>(b), alpha));
    hn::StoreU(hn::BitCast(db, px), db, dst + 4 * x);
  }
  csc::p010::Row(row, dst, static_cast<int>(x), n);
}
#else   // HWY_TARGET == HWY_SCALAR
void P010RowVec(const csc::YuvRow& row, uint8_t* dst, int n) { csc::p010::Row(row, dst, 0, n); }
#endif  // HWY_TARGET != HWY_SCALAR

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_HAVE_HWY

#if !KELO_HAVE_HWY || HWY_ONCE
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "common/internal/api.h"
#include "imgp/core/copy_rows.h"
#include "imgp/csc/layout_rows.h"
#include "imgp/csc/tiled.h"
#include "imgp/csc/yuv_to_rgb.h"
#include "kimgp_csc.h"

namespace kelo {
namespace csc {
namespace {

struct Tiling {
  int tw, th;
};
constexpr Tiling kT64x32{64, 32}, kT16x16{16, 16}, kT16x8{16, 8},
    kT8x8{8, 8}, kT8x4{8, 4}, kT256x16{256, 16}, kT256x8{256, 8};

inline size_t TileOffset(const Tiling& t, int32_t stride, int x, int y) {
  return size_t(y / t.th) * size_t(stride) * size_t(t.th) + size_t(x / t.tw) * t.tw * t.th +
         size_t(y % t.th) * t.tw + size_t(x % t.tw);
}

// Row y, bytes [x0, x0 + n), of a tiled plane into out.
void DetileRow(const uint8_t* src, int32_t stride, const Tiling& t, int y, int n, uint8_t* out,
               int x0 = 0) {
  for (int x = x0; x < x0 + n;) {
    const int run = std::min(t.tw - x % t.tw, x0 + n - x);
    CopyBytes(src + TileOffset(t, stride, x, y), out + (x - x0), size_t(run));
    x += run;
  }
}

// Bytes [0, n) of `in` into bytes [x0, x0 + n) of row y of a tiled plane.
void TileRow(const uint8_t* in, int n, uint8_t* dst, int32_t stride, const Tiling& t, int y,
             int x0 = 0) {
  for (int x = x0; x < x0 + n;) {
    const int run = std::min(t.tw - x % t.tw, x0 + n - x);
    CopyBytes(in + (x - x0), dst + TileOffset(t, stride, x, y), size_t(run));
    x += run;
  }
}

// Rows that need a linear copy go through a stack buffer a piece of kPiece
// bytes at a time (even, a multiple of every tile width up to 256 and of the
// 4-pixel steps), so that no kernel needs memory it could fail to get.
constexpr int kPiece = 2048;

// Calls piece(x0, n) for the pieces [x0, x0 + n) of a row of `bytes`.
template <class Piece>
void ForEachPiece(int bytes, Piece piece) {
  for (int x0 = 0; x0 < bytes; x0 += kPiece) piece(x0, std::min(kPiece, bytes - x0));
}

// Tiled NV12 samples to RGB through the NV12 rows. The buffers keep one
// spare pixel pair for the pixel-pair path of odd widths.
template <class D>
void TiledToRgb(uint8_t* const* sp, const int32_t* sw, const int32_t* sh, const int32_t* ss,
                const int32_t* ds, uint8_t* const* dp, const Tiling& luma, const Tiling& chroma,
                YuvToRgbRowId id) {
  const int w = sw[0];
  if (w <= 0 || sh[0] <= 0) return;
  const YuvToRgbRowFn convert = YuvToRgbRowFor(id).one;
  // Pieces start at even pixels, where a pixel pair and its chroma begin:
  // converted piece by piece, a row has the bytes it has converted whole.
  alignas(16) uint8_t y[kPiece + 2], c[kPiece + 2];
  YuvToRgbWalkRows<true>(w, sh[0], 0, [&](int r, int crow, int n) {
    uint8_t* out = dp[0] + intptr_t(r) * ds[0];
    ForEachPiece(n, [&](int x0, int k) {
      DetileRow(sp[0], ss[0], luma, r, k, y, x0);
      DetileRow(sp[1], ss[1], chroma, crow, k, c, x0);
      convert(YuvRow{y, c, c + 1}, out + intptr_t(x0) * D::kBytes, k);
    });
  });
}

// Luma and chroma of a T64X32 frame into linear planes; chroma rows go
// through `chroma_row` (pairs, pair count, chroma row, index of the first
// pair), a piece at a time. The chroma
// extent comes from the image size, as in every conversion kernel: the
// plane-1 fields of the source are not read.
template <class ChromaRow>
void DetileFrame(uint8_t* const* sp, const int32_t* sw, const int32_t* sh, const int32_t* ss,
                 const int32_t* ds, uint8_t* const* dp, ChromaRow chroma_row) {
  if (sw[0] <= 0) return;
  for (int r = 0; r < sh[0]; ++r) {
    DetileRow(sp[0], ss[0], kT64x32, r, sw[0], dp[0] + intptr_t(r) * ds[0]);
  }
  const int32_t pairs = HalfUp(sw[0]), rows = HalfUp(sh[0]);
  alignas(16) uint8_t c[kPiece];
  for (int r = 0; r < rows; ++r) {
    ForEachPiece(2 * pairs, [&](int x0, int k) {
      DetileRow(sp[1], ss[1], kT64x32, r, k, c, x0);
      chroma_row(c, size_t(k / 2), r, x0 / 2);
    });
  }
}

[[maybe_unused]] void P010ScalarRow(const YuvRow& row, uint8_t* dst, int n) { p010::Row(row, dst, 0, n); }

}  // namespace

void DetileRow64x32(const uint8_t* plane, int32_t stride, int32_t y, int32_t n, uint8_t* out,
                    int32_t x0) {
  DetileRow(plane, stride, kT64x32, y, n, out, x0);
}

}  // namespace csc

KELO_VEC_EXPORT(P010RowVec);

namespace csc {
namespace {

YuvToRgbRowFn P010RowFor() { return &KELO_VEC_CALL(P010RowVec, P010ScalarRow); }

}  // namespace
}  // namespace csc
}  // namespace kelo

using namespace kelo::csc;  // NOLINT

KELO_EXPORT void kimgp_csc_copy_16x16tiles_to_linear(const uint8_t* src, int32_t width,
                                                     int32_t height, int32_t src_stride,
                                                     int32_t dst_stride, uint8_t* dst) {
  if (width < 1) return;
  for (int r = 0; r < height; ++r) DetileRow(src, src_stride, kT16x16, r, width, dst + intptr_t(r) * dst_stride);
}

KELO_EXPORT void kimgp_csc_copy_16x8tiles_to_linear(const uint8_t* src, int32_t width,
                                                    int32_t height, int32_t src_stride,
                                                    int32_t dst_stride, uint8_t* dst) {
  if (width < 1) return;
  for (int r = 0; r < height; ++r) DetileRow(src, src_stride, kT16x8, r, width, dst + intptr_t(r) * dst_stride);
}

KELO_EXPORT void kimgp_csc_unpack_16x8tiles_to_linear(const uint8_t* src, int32_t width,
                                                      int32_t height, int32_t src_stride,
                                                      int32_t dst0_stride, int32_t dst1_stride,
                                                      uint8_t* dst0, uint8_t* dst1) {
  if (width < 1) return;
  alignas(16) uint8_t c[kPiece];
  for (int r = 0; r < height; ++r) {
    ForEachPiece(width, [&](int x0, int k) {
      DetileRow(src, src_stride, kT16x8, r, k, c, x0);
      kimgp_csc_8b8b_unpck(c, k, 1, k, dst0_stride, dst1_stride,
                           dst0 + intptr_t(r) * dst0_stride + x0 / 2,
                           dst1 + intptr_t(r) * dst1_stride + x0 / 2);
    });
  }
}

KELO_EXPORT void kimgp_csc_t64x32_to_nv12(KELO_CSC_PARAMS) {
  DetileFrame(sp, sw, sh, ss, ds, dp, [&](const uint8_t* c, size_t pairs, int r, int p0) {
    memcpy(dp[1] + intptr_t(r) * ds[1] + 2 * p0, c, 2 * pairs);
  });
}
KELO_EXPORT void kimgp_csc_t64x32_to_nv21(KELO_CSC_PARAMS) {
  DetileFrame(sp, sw, sh, ss, ds, dp, [&](const uint8_t* c, size_t pairs, int r, int p0) {
    uint8_t* d = dp[1] + intptr_t(r) * ds[1] + 2 * p0;
    memcpy(d, c, 2 * pairs);
    SwapPairs(d, pairs);
  });
}
KELO_EXPORT void kimgp_csc_t64x32_to_yuv420(KELO_CSC_PARAMS) {
  DetileFrame(sp, sw, sh, ss, ds, dp, [&](const uint8_t* c, size_t pairs, int r, int p0) {
    Deinterleave(c, dp[1] + intptr_t(r) * ds[1] + p0, dp[2] + intptr_t(r) * ds[2] + p0, pairs);
  });
}
KELO_EXPORT void kimgp_csc_t64x32_to_yv12(KELO_CSC_PARAMS) {
  DetileFrame(sp, sw, sh, ss, ds, dp, [&](const uint8_t* c, size_t pairs, int r, int p0) {
    Deinterleave(c, dp[2] + intptr_t(r) * ds[2] + p0, dp[1] + intptr_t(r) * ds[1] + p0, pairs);
  });
}

// YUV420 into T64X32: luma tiled, chroma interleaved U, V and tiled (its
// extent from the image size, as above).
KELO_EXPORT void kimgp_csc_yuv420_to_t64x32(KELO_CSC_PARAMS) {
  if (sw[0] <= 0) return;
  for (int r = 0; r < sh[0]; ++r) TileRow(sp[0] + intptr_t(r) * ss[0], sw[0], dp[0], ds[0], kT64x32, r);
  const int32_t pairs = HalfUp(sw[0]), rows = HalfUp(sh[0]);
  alignas(16) uint8_t c[kPiece];
  for (int r = 0; r < rows; ++r) {
    ForEachPiece(2 * pairs, [&](int x0, int k) {
      Interleave(sp[1] + intptr_t(r) * ss[1] + x0 / 2, sp[2] + intptr_t(r) * ss[2] + x0 / 2, c,
                 size_t(k / 2));
      TileRow(c, k, dp[1], ds[1], kT64x32, r, x0);
    });
  }
}

#define KELO_T64X32_TO_RGB(dst, D)                                              \
  KELO_EXPORT void kimgp_csc_t64x32_to_##dst(KELO_CSC_PARAMS) {                 \
    TiledToRgb<D>(sp, sw, sh, ss, ds, dp, kT64x32, kT64x32, kRow_Nv12_##D##_kBt601Limited); \
  }
KELO_T64X32_TO_RGB(rgb565, Rgb565)
KELO_T64X32_TO_RGB(bgr565, Bgr565)
KELO_T64X32_TO_RGB(rgb888, Rgb888)
KELO_T64X32_TO_RGB(bgr888, Bgr888)
KELO_T64X32_TO_RGB(rgba8888, Rgba8888)
KELO_T64X32_TO_RGB(bgra8888, Bgra8888)
KELO_T64X32_TO_RGB(argb8888, Argb8888)
KELO_T64X32_TO_RGB(abgr8888, Abgr8888)

KELO_EXPORT void kimgp_csc_t16x16_to_rgba8888(KELO_CSC_PARAMS) {
  TiledToRgb<Rgba8888>(sp, sw, sh, ss, ds, dp, kT16x16, kT16x8, kRow_Nv12_Rgba8888_kBt601Limited);
}
KELO_EXPORT void kimgp_csc_t8x8_to_rgba8888(KELO_CSC_PARAMS) {
  TiledToRgb<Rgba8888>(sp, sw, sh, ss, ds, dp, kT8x8, kT8x4, kRow_Nv12_Rgba8888_kBt601Limited);
}
KELO_EXPORT void kimgp_csc_t256x16_to_rgba8888(KELO_CSC_PARAMS) {
  TiledToRgb<Rgba8888>(sp, sw, sh, ss, ds, dp, kT256x16, kT256x8, kRow_Nv12_Rgba8888_kBt601Limited);
}

KELO_EXPORT void kimgp_csc_p010le_to_rgba8888(KELO_CSC_PARAMS) {
  YuvToRgbWalk<true>(
      sw[0], sh[0],
      [&](int r, int crow) {
        const uint8_t* c = sp[1] + intptr_t(crow) * ss[1];
        return YuvRow{sp[0] + intptr_t(r) * ss[0], c, c + 2};
      },
      dp[0], ds[0], YuvToRgbRows{P010RowFor(), nullptr});
}

#endif  // !KELO_HAVE_HWY || HWY_ONCE
