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
#include "common/internal/fault.h"
#include "common/internal/simd.h"
#include "imgp/csc/pixel_layouts.h"

#ifndef KELO_IMGP_CSC_TILED_P010_SCALAR
#define KELO_IMGP_CSC_TILED_P010_SCALAR
namespace kelo {
namespace csc {
namespace p010 {

// P010LE: 16-bit little-endian words with the 10 significant bits at the
// top. BT.2020 limited range (Y 64..940, C 64..960) straight to 8 bits with
// 12 fractional bits: R = (1192 (Y - 64) + 1719 (V - 512) + 2048) >> 12, etc.
constexpr int kCy = 1192, kRv = 1719, kGu = -192, kGv = -666, kBu = 2193;

inline int Word(const uint8_t* p) { return (p[0] | p[1] << 8) >> 6; }
inline int Clamp(int x) { return x < 0 ? 0 : (x > 255 ? 255 : x); }

// Pixels [x0, n) of a row: luma words at row.y, U and V words of pixel pair
// i at row.u + 4 i and row.v + 4 i.
inline void Row(const YuvRow& row, uint8_t* dst, int x0, int n) {
  for (int x = x0; x < n; ++x) {
    const int y = Word(row.y + 2 * x) - 64;
    const int u = Word(row.u + 4 * (x >> 1)) - 512;
    const int v = Word(row.v + 4 * (x >> 1)) - 512;
    const int l = kCy * y + 2048;
    uint8_t* p = dst + 4 * x;
    p[0] = static_cast<uint8_t>(Clamp((l + kRv * v) >> 12));
    p[1] = static_cast<uint8_t>(Clamp((l + kGu * u + kGv * v) >> 12));
    p[2] = static_cast<uint8_t>(Clamp((l + kBu * u) >> 12));
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
// P010LE to RGBA8888 on x86: the same sums, 16 times over, from products of
// 16-bit pairs added into 32-bit lanes (pmaddwd), so that a channel is the
// upper word of its lane. A 32-bit lane of luma words holds pixels 2i, 2i + 1
// and one of chroma words their U, V, so the pair chroma lines up with the
// even and the odd pixels without being repeated:
//   even (y, kIn) . (16 kCy, kLumaK), odd (kIn, y) . (kLumaK, 16 kCy)
//     = 16 (kCy (Y - 64) + 2048)
//   (U - 512, V - 512) . (0, 16 kRv), (16 kGu, 16 kGv), 2 (8 kBu, 0)
// (16 kBu does not fit a word; its product is doubled). Vectors of at most
// two blocks: the pixels leave each block as two halves, put in order at the
// store.
void P010RowVec(const csc::YuvRow& row_in, uint8_t* dst, int n) {
  using namespace csc::p010;  // NOLINT: the matrix
  const csc::YuvRow row = row_in;
  const hn::CappedTag<uint8_t, 32> d8;
  const hn::Repartition<uint16_t, decltype(d8)> du;
  const hn::Repartition<int16_t, decltype(d8)> di;
  const hn::Repartition<int32_t, decltype(d8)> d32;
  const hn::Repartition<uint32_t, decltype(d8)> du32;
  using V32 = hn::Vec<decltype(d32)>;
  using VW = hn::Vec<decltype(di)>;
  constexpr int kIn = 4096, kLumaK = -16 * (kCy * 64 - 2048) / kIn;
  static_assert(kIn * kLumaK == -16 * (kCy * 64 - 2048) && 16 * kCy <= 32767 &&
                    16 * kRv <= 32767 && 16 * -kGv <= 32768 && 8 * kBu <= 32767,
                "word products");
  const auto words = [&](int lo, int hi) HWY_ATTR {
    const uint32_t w = uint32_t(uint16_t(lo)) | uint32_t(uint16_t(hi)) << 16;
    return hn::BitCast(di, hn::Set(du32, w));
  };
  const VW in = hn::Set(di, kIn), lum_e = words(16 * kCy, kLumaK),
           lum_o = words(kLumaK, 16 * kCy), kr = words(0, 16 * kRv),
           kg = words(16 * kGu, 16 * kGv), kb = words(8 * kBu, 0), alpha = hn::Set(di, 255);
  const auto mad = [](VW a, VW b) HWY_ATTR { return V32{RawMulAddWords(a.raw, b.raw)}; };
  // Words of the channel for pixels 2i (upper word of lane i of e) and
  // 2i + 1 (of o), in pixel order.
  const auto channel = [&](V32 e, V32 o) HWY_ATTR {
    return hn::OddEven(hn::BitCast(di, o), hn::BitCast(di, hn::ShiftRight<16>(e)));
  };
  const size_t L = hn::Lanes(du);
  size_t x = 0;
  for (; x + L <= static_cast<size_t>(n); x += L) {
    const auto yw = hn::BitCast(du, hn::LoadU(d8, row.y + 2 * x));
    const auto cw = hn::BitCast(du, hn::LoadU(d8, row.u + 2 * x));
    const VW y = hn::BitCast(di, hn::ShiftRight<6>(yw));
    const VW c = hn::ShiftRight<6>(hn::BitCast(di, hn::Xor(cw, hn::Set(du, 0x8000))));
    const V32 le = mad(hn::OddEven(in, y), lum_e), lo = mad(hn::OddEven(y, in), lum_o);
    const V32 cr = mad(c, kr), cg = mad(c, kg), cb2 = mad(c, kb), cb = hn::Add(cb2, cb2);
    const VW r = channel(hn::Add(le, cr), hn::Add(lo, cr));
    const VW g = channel(hn::Add(le, cg), hn::Add(lo, cg));
    const VW b = channel(hn::Add(le, cb), hn::Add(lo, cb));
    // Bytes R0-7 G0-7 and B0-7 A per block, then pixels 0-3 and 4-7.
    const auto rg = decltype(hn::Zero(d8)){RawPackBytes(r.raw, g.raw)};
    const auto ba = decltype(hn::Zero(d8)){RawPackBytes(b.raw, alpha.raw)};
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
  }
  csc::p010::Row(row, dst, static_cast<int>(x), n);
}
#elif HWY_TARGET == HWY_NEON
// P010LE to RGBA8888 on NEON: structure loads split the even and odd luma
// words and the U, V words of eight pairs; 16 x 16 -> 32-bit products
// (vmull/vmlal) make the sums, each pair's chroma used by both of its pixels;
// a shifting narrow and a saturating one give the bytes, zipped back into
// pixel order for the structure store.
void P010RowVec(const csc::YuvRow& row_in, uint8_t* dst, int n) {
  using namespace csc::p010;  // NOLINT: the matrix
  const csc::YuvRow row = row_in;
  const int32x4_t lum0 = vdupq_n_s32(2048 - 64 * kCy);
  const int16x8_t c_off = vdupq_n_s16(512);
  // Terms of four pairs (one half) and the byte channel of four pixels.
  struct Half {
    int32x4_t r, g, b;
  };
  const auto terms = [](int16x4_t u, int16x4_t v) {
    Half h;
    h.r = vmull_n_s16(v, kRv);
    h.g = vmlal_n_s16(vmull_n_s16(u, kGu), v, kGv);
    h.b = vmull_n_s16(u, kBu);
    return h;
  };
  const auto bytes = [](int32x4_t l_lo, int32x4_t l_hi, int32x4_t c_lo, int32x4_t c_hi) {
    return vqmovun_s16(vcombine_s16(vshrn_n_s32(vaddq_s32(l_lo, c_lo), 12),
                                    vshrn_n_s32(vaddq_s32(l_hi, c_hi), 12)));
  };
  size_t x = 0;
  for (; x + 16 <= static_cast<size_t>(n); x += 16) {
    const uint16x8x2_t yw = vld2q_u16(reinterpret_cast<const uint16_t*>(row.y + 2 * x));
    const uint16x8x2_t cw = vld2q_u16(reinterpret_cast<const uint16_t*>(row.u + 2 * x));
    const int16x8_t u = vsubq_s16(vreinterpretq_s16_u16(vshrq_n_u16(cw.val[0], 6)), c_off);
    const int16x8_t v = vsubq_s16(vreinterpretq_s16_u16(vshrq_n_u16(cw.val[1], 6)), c_off);
    const Half lo = terms(vget_low_s16(u), vget_low_s16(v));
    const Half hi = terms(vget_high_s16(u), vget_high_s16(v));
    uint8x8_t ch[2][3];
    for (int k = 0; k < 2; ++k) {
      const int16x8_t y = vreinterpretq_s16_u16(vshrq_n_u16(yw.val[k], 6));
      const int32x4_t l_lo = vmlal_n_s16(lum0, vget_low_s16(y), kCy);
      const int32x4_t l_hi = vmlal_n_s16(lum0, vget_high_s16(y), kCy);
      ch[k][0] = bytes(l_lo, l_hi, lo.r, hi.r);
      ch[k][1] = bytes(l_lo, l_hi, lo.g, hi.g);
      ch[k][2] = bytes(l_lo, l_hi, lo.b, hi.b);
    }
    uint8x16x4_t px;
    for (int c = 0; c < 3; ++c) {
      const uint8x8x2_t z = vzip_u8(ch[0][c], ch[1][c]);
      px.val[c] = vcombine_u8(z.val[0], z.val[1]);
    }
    px.val[3] = vdupq_n_u8(255);
    vst4q_u8(dst + 4 * x, px);
  }
  csc::p010::Row(row, dst, static_cast<int>(x), n);
}
#elif HWY_TARGET != HWY_SCALAR
// P010LE to RGBA8888 in 32-bit lanes, one pixel per lane: the sums need up to
// 22 bits. The pair chroma is loaded as U, V words in order, so a pixel's U is
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
  const auto y_off = hn::Set(d, 64), c_off = hn::Set(d, 512), round = hn::Set(d, 2048);
  const auto zero = hn::Zero(d), max = hn::Set(d, 255), alpha = hn::Set(d, 255 << 24);
  const auto cy = hn::Set(d, kCy), rv = hn::Set(d, kRv), gu = hn::Set(d, kGu),
             gv = hn::Set(d, kGv), bu = hn::Set(d, kBu);
  size_t x = 0;
  for (; x + L <= static_cast<size_t>(n); x += L) {
    // Luma words of pixels x .. x + L, the U, V words of their L / 2 pairs.
    const auto yw = hn::BitCast(dw, hn::LoadU(dwb, row.y + 2 * x));
    const auto cw = hn::BitCast(dw, hn::LoadU(dwb, row.u + 2 * x));
    const auto y = hn::ShiftRight<6>(hn::BitCast(d, hn::PromoteTo(du, yw)));
    const auto c = hn::ShiftRight<6>(hn::BitCast(d, hn::PromoteTo(du, cw)));
    const auto u = hn::Sub(hn::DupEven(c), c_off);
    const auto v = hn::Sub(hn::DupOdd(c), c_off);
    const auto l = hn::Add(hn::Mul(hn::Sub(y, y_off), cy), round);
    auto r = hn::ShiftRight<12>(hn::Add(l, hn::Mul(v, rv)));
    auto g = hn::ShiftRight<12>(hn::Add(hn::Add(l, hn::Mul(u, gu)), hn::Mul(v, gv)));
    auto b = hn::ShiftRight<12>(hn::Add(l, hn::Mul(u, bu)));
    r = hn::Min(hn::Max(r, zero), max);
    g = hn::Min(hn::Max(g, zero), max);
    b = hn::Min(hn::Max(b, zero), max);
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

// Row y, bytes [0, n), of a tiled plane into out.
void DetileRow(const uint8_t* src, int32_t stride, const Tiling& t, int y, int n, uint8_t* out) {
  for (int x = 0; x < n;) {
    const int run = std::min(t.tw - x % t.tw, n - x);
    CopyBytes(src + TileOffset(t, stride, x, y), out + x, size_t(run));
    x += run;
  }
}

// Bytes [0, n) of `in` into row y of a tiled plane.
void TileRow(const uint8_t* in, int n, uint8_t* dst, int32_t stride, const Tiling& t, int y) {
  for (int x = 0; x < n;) {
    const int run = std::min(t.tw - x % t.tw, n - x);
    CopyBytes(in + x, dst + TileOffset(t, stride, x, y), size_t(run));
    x += run;
  }
}

// A heap row buffer that frees itself; null when the allocation fails, in
// which case the kernel writes nothing.
struct Buffer {
  explicit Buffer(size_t n) : p(static_cast<uint8_t*>(HeapAlloc(n))) {}
  ~Buffer() { free(p); }
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;
  uint8_t* p;
};

// Tiled NV12 samples to RGB through the NV12 rows. The buffers keep one
// spare pixel pair for the pixel-pair path of odd widths.
void TiledToRgb(uint8_t* const* sp, const int32_t* sw, const int32_t* sh, const int32_t* ss,
                const int32_t* ds, uint8_t* const* dp, const Tiling& luma, const Tiling& chroma,
                YuvToRgbRowId id) {
  const int w = sw[0];
  if (w <= 0 || sh[0] <= 0) return;
  const int n = (w + 1) & ~1;
  Buffer y(size_t(n) + 2), c(size_t(n) + 2);
  if (y.p == nullptr || c.p == nullptr) return;
  int last_crow = -1;
  YuvToRgbWalk<true>(
      w, sh[0],
      [&](int r, int crow) {
        DetileRow(sp[0], ss[0], luma, r, n, y.p);
        if (crow != last_crow) DetileRow(sp[1], ss[1], chroma, crow, n, c.p);
        last_crow = crow;
        return YuvRow{y.p, c.p, c.p + 1};
      },
      // The row buffers serve one row at a time: no two-row form.
      dp[0], ds[0], YuvToRgbRows{YuvToRgbRowFor(id).one, nullptr});
}

// Luma and chroma of a T64X32 frame into linear planes; chroma rows go
// through `chroma_row` (row pointer, pair count, chroma row). The chroma
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
  Buffer c(2 * size_t(pairs));
  if (c.p == nullptr) return;
  for (int r = 0; r < rows; ++r) {
    DetileRow(sp[1], ss[1], kT64x32, r, 2 * pairs, c.p);
    chroma_row(c.p, size_t(pairs), r);
  }
}

[[maybe_unused]] void P010ScalarRow(const YuvRow& row, uint8_t* dst, int n) { p010::Row(row, dst, 0, n); }

}  // namespace

void DetileRow64x32(const uint8_t* plane, int32_t stride, int32_t y, int32_t n, uint8_t* out) {
  DetileRow(plane, stride, kT64x32, y, n, out);
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

#define KELO_CSC_PARAMS                                                         \
  uint8_t **sp, const int32_t *sw, const int32_t *sh, int32_t *ss,             \
      const int32_t *ds, uint8_t **dp

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
  Buffer c{static_cast<size_t>(width)};
  if (c.p == nullptr) return;
  for (int r = 0; r < height; ++r) {
    DetileRow(src, src_stride, kT16x8, r, width, c.p);
    kimgp_csc_8b8b_unpck(c.p, width, 1, width, dst0_stride, dst1_stride,
                         dst0 + intptr_t(r) * dst0_stride, dst1 + intptr_t(r) * dst1_stride);
  }
}

KELO_EXPORT void kimgp_csc_t64x32_to_nv12(KELO_CSC_PARAMS) {
  DetileFrame(sp, sw, sh, ss, ds, dp, [&](const uint8_t* c, size_t pairs, int r) {
    memcpy(dp[1] + intptr_t(r) * ds[1], c, 2 * pairs);
  });
}
KELO_EXPORT void kimgp_csc_t64x32_to_nv21(KELO_CSC_PARAMS) {
  DetileFrame(sp, sw, sh, ss, ds, dp, [&](const uint8_t* c, size_t pairs, int r) {
    uint8_t* d = dp[1] + intptr_t(r) * ds[1];
    memcpy(d, c, 2 * pairs);
    SwapPairs(d, pairs);
  });
}
KELO_EXPORT void kimgp_csc_t64x32_to_yuv420(KELO_CSC_PARAMS) {
  DetileFrame(sp, sw, sh, ss, ds, dp, [&](const uint8_t* c, size_t pairs, int r) {
    Deinterleave(c, dp[1] + intptr_t(r) * ds[1], dp[2] + intptr_t(r) * ds[2], pairs);
  });
}
KELO_EXPORT void kimgp_csc_t64x32_to_yv12(KELO_CSC_PARAMS) {
  DetileFrame(sp, sw, sh, ss, ds, dp, [&](const uint8_t* c, size_t pairs, int r) {
    Deinterleave(c, dp[2] + intptr_t(r) * ds[2], dp[1] + intptr_t(r) * ds[1], pairs);
  });
}

// YUV420 into T64X32: luma tiled, chroma interleaved U, V and tiled (its
// extent from the image size, as above).
KELO_EXPORT void kimgp_csc_yuv420_to_t64x32(KELO_CSC_PARAMS) {
  if (sw[0] <= 0) return;
  for (int r = 0; r < sh[0]; ++r) TileRow(sp[0] + intptr_t(r) * ss[0], sw[0], dp[0], ds[0], kT64x32, r);
  const int32_t pairs = HalfUp(sw[0]), rows = HalfUp(sh[0]);
  Buffer c(2 * size_t(pairs));
  if (c.p == nullptr) return;
  for (int r = 0; r < rows; ++r) {
    Interleave(sp[1] + intptr_t(r) * ss[1], sp[2] + intptr_t(r) * ss[2], c.p, size_t(pairs));
    TileRow(c.p, 2 * pairs, dp[1], ds[1], kT64x32, r);
  }
}

#define KELO_T64X32_TO_RGB(dst, D)                                              \
  KELO_EXPORT void kimgp_csc_t64x32_to_##dst(KELO_CSC_PARAMS) {                 \
    TiledToRgb(sp, sw, sh, ss, ds, dp, kT64x32, kT64x32, kRow_Nv12_##D##_kBt601Limited); \
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
  TiledToRgb(sp, sw, sh, ss, ds, dp, kT16x16, kT16x8, kRow_Nv12_Rgba8888_kBt601Limited);
}
KELO_EXPORT void kimgp_csc_t8x8_to_rgba8888(KELO_CSC_PARAMS) {
  TiledToRgb(sp, sw, sh, ss, ds, dp, kT8x8, kT8x4, kRow_Nv12_Rgba8888_kBt601Limited);
}
KELO_EXPORT void kimgp_csc_t256x16_to_rgba8888(KELO_CSC_PARAMS) {
  TiledToRgb(sp, sw, sh, ss, ds, dp, kT256x16, kT256x8, kRow_Nv12_Rgba8888_kBt601Limited);
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
