// Dithered 5-6-5 output: every source converts a piece of a row into 8-bit
// R, G, B with the rows of its undithered conversion, and one row step adds
// the ordered-dither offsets and packs the pixels.
#include <algorithm>
#include <cstdint>

#include "common/internal/simd.h"
#include "imgp/csc/pixel_layouts.h"

#ifndef KELO_IMGP_CSC_DITHER_SCALAR
#define KELO_IMGP_CSC_DITHER_SCALAR
namespace kelo {
namespace csc {
namespace scalar {

// The 4x4 ordered-dither matrix, [row & 3][column & 3].
constexpr uint8_t kBayer[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};

// Pixels [i0, n) of a row of kBytes-byte pixels (R, G, B first) whose pixel
// 0 sits at column x of row y: 5-bit channels add B >> 1, the 6-bit channel
// B >> 2, each saturated at 255, then packed by truncation as Dst stores.
template <int kBytes, class Dst>
inline void DitherRow(const uint8_t* s, int32_t x, int32_t y, uint8_t* d, size_t i0, size_t n) {
  const uint8_t* b = kBayer[y & 3];
  for (size_t i = i0; i < n; ++i) {
    const uint8_t* p = s + kBytes * i;
    const int o = b[(static_cast<size_t>(x) + i) & 3];
    Dst::Store(d + 2 * i, std::min(p[0] + (o >> 1), 255), std::min(p[1] + (o >> 2), 255),
               std::min(p[2] + (o >> 1), 255));
  }
}

// The row step's paths take the pixel size and order at run time.
inline void DitherRowVec(const uint8_t* s, int bytes, bool red_high, int32_t x, int32_t y,
                         uint8_t* d, size_t n) {
  if (bytes == 4) {
    return red_high ? DitherRow<4, Rgb565>(s, x, y, d, 0, n) : DitherRow<4, Bgr565>(s, x, y, d, 0, n);
  }
  return red_high ? DitherRow<3, Rgb565>(s, x, y, d, 0, n) : DitherRow<3, Bgr565>(s, x, y, d, 0, n);
}

}  // namespace scalar
}  // namespace csc
}  // namespace kelo
#endif  // KELO_IMGP_CSC_DITHER_SCALAR

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/csc/dither.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "imgp/csc/csc_vec-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR
// The offsets of four columns from column x of row y, >> shift, as the bytes
// of every 32-bit lane (little-endian): a vector of them lines up with any
// run of pixels that starts at column x, as every vector holds a multiple of
// four lanes.
HWY_INLINE V8 Offsets(int32_t x, int32_t y, int shift) {
  const uint8_t* b = csc::scalar::kBayer[y & 3];
  uint32_t w = 0;
  for (int j = 0; j < 4; ++j) w |= uint32_t(b[(uint32_t(x) + j) & 3] >> shift) << (8 * j);
  const hn::Repartition<uint32_t, D8> d32;
  return hn::BitCast(D8(), hn::Set(d32, w));
}

#if HWY_TARGET != HWY_NEON
// Four-byte pixels without splitting the four channels apart (which costs
// many byte shuffles on x86): one saturating byte add of the offsets (o5, o6,
// o5, 0 per pixel), a byte shuffle within each block that puts the R, G words
// of its four pixels in the lower half and the B, A words in the upper half,
// and from two such vectors the R, G and the B, A words of eight pixels per
// block, packed in 16-bit lanes. Two blocks are loaded in the order that
// gives the words in pixel order; with more, the 64-bit lanes (four words
// each) are put back in pixel order. Returns the pixels done.
template <bool kRedHigh>
HWY_INLINE size_t DitherQuads(const uint8_t* s, int32_t x, int32_t y, uint8_t* d, size_t n) {
  const D8 d8;
  const DU du;
  const hn::Repartition<uint32_t, D8> d32;
  const hn::Repartition<uint64_t, D8> d64;
  const size_t L = hn::Lanes(d8), blocks = L / 16;
  alignas(16) uint8_t pattern[16];
  for (int j = 0; j < 4; ++j) {
    const int b = csc::scalar::kBayer[y & 3][(uint32_t(x) + j) & 3];
    pattern[4 * j] = pattern[4 * j + 2] = uint8_t(b >> 1);
    pattern[4 * j + 1] = uint8_t(b >> 2);
    pattern[4 * j + 3] = 0;
  }
  alignas(16) static constexpr uint8_t kSplit[16] = {0, 1, 4, 5, 8,  9,  12, 13,
                                                     2, 3, 6, 7, 10, 11, 14, 15};
  const V8 k = hn::LoadDup128(d8, pattern), split = hn::LoadDup128(d8, kSplit);
  // 64-bit lane m of the result holds lane 2m of the first vector's words
  // (m < blocks) or lane 2 (m - blocks) + 1 (the second vector's), in 32-bit
  // lane indices.
  const hn::Vec<decltype(d32)> lane = hn::Iota(d32, 0);
  const auto m = hn::ShiftRight<1>(lane);
  const auto nb = hn::Set(d32, uint32_t(blocks));
  const auto from = hn::IfThenElse(hn::Lt(m, nb), hn::Add(m, m),
                                   hn::Add(hn::Add(hn::Sub(m, nb), hn::Sub(m, nb)), hn::Set(d32, 1)));
  const auto idx = hn::IndicesFromVec(
      d32, hn::Add(hn::Add(from, from), hn::And(lane, hn::Set(d32, 1))));
  size_t i = 0;
  for (; i + L / 2 <= n; i += L / 2) {  // L / 2 pixels: two vectors of them
    const uint8_t* p = s + 4 * i;
    V8 va, vb;
    if (blocks == 2) {  // blocks in the order that needs no permutation
      va = hn::Combine(d8, hn::LoadU(DH8(), p + 32), hn::LoadU(DH8(), p));
      vb = hn::Combine(d8, hn::LoadU(DH8(), p + 48), hn::LoadU(DH8(), p + 16));
    } else {
      va = hn::LoadU(d8, p);
      vb = hn::LoadU(d8, p + L);
    }
    const auto a = hn::BitCast(d64, hn::TableLookupBytes(hn::SaturatedAdd(va, k), split));
    const auto b = hn::BitCast(d64, hn::TableLookupBytes(hn::SaturatedAdd(vb, k), split));
    const VU rg = hn::BitCast(du, hn::InterleaveLower(d64, a, b));
    const VU ba = hn::BitCast(du, hn::InterleaveUpper(d64, a, b));
    const VU hi = hn::And(hn::ShiftLeft<8>(kRedHigh ? rg : ba), hn::Set(du, 0xF800));
    const VU lo = hn::ShiftRight<3>(hn::And(kRedHigh ? ba : rg, hn::Set(du, 0xF8)));
    const VU g = hn::And(hn::ShiftRight<5>(rg), hn::Set(du, 0x7E0));
    VU w = hn::Or(hn::Or(hi, g), lo);
    if (blocks > 2) w = hn::BitCast(du, hn::TableLookupLanes(hn::BitCast(d32, w), idx));
    hn::StoreU(w, du, reinterpret_cast<uint16_t*>(d + 2 * i));
  }
  return i;
}
#endif

template <int kBytes, bool kRedHigh>
void DitherRowT(const uint8_t* s, int32_t x, int32_t y, uint8_t* d, size_t n) {
  const D8 d8;
  const size_t L = hn::Lanes(d8);
  size_t i = 0;
#if HWY_TARGET != HWY_NEON
  if constexpr (kBytes == 4) {
    i = DitherQuads<kRedHigh>(s, x, y, d, n);
  } else
#endif
  {
    const V8 k5 = Offsets(x, y, 1), k6 = Offsets(x, y, 2);
    const auto step = [&](const uint8_t* p, uint8_t* out) {
      V8 r, g, b, a;
      if constexpr (kBytes == 4) {
        hn::LoadInterleaved4(d8, p, r, g, b, a);
      } else {
        hn::LoadInterleaved3(d8, p, r, g, b);
      }
      r = hn::SaturatedAdd(r, k5);
      g = hn::SaturatedAdd(g, k6);
      b = hn::SaturatedAdd(b, k5);
      Store565(kRedHigh ? r : b, g, kRedHigh ? b : r, out);
    };
    // Two vectors a step, pointers to an end pointer: the loop overhead (and
    // the copies of the post-incremented pointers NEON's structure loads
    // make) is shared by 2 L pixels.
    i = n - n % (2 * L);
    const uint8_t* p = s;
    uint8_t* const end = d + 2 * i;
    for (uint8_t* out = d; out != end; out += 4 * L, p += 2 * kBytes * L) {
      step(p, out);
      step(p + kBytes * L, out + 2 * L);
    }
    if (i + L <= n) step(s + kBytes * i, d + 2 * i), i += L;
  }
  csc::scalar::DitherRow<kBytes, csc::Rgb16<kRedHigh>>(s, x, y, d, i, n);
}
#endif  // HWY_TARGET != HWY_SCALAR

void DitherRowVec(const uint8_t* s, int bytes, bool red_high, int32_t x, int32_t y, uint8_t* d,
                  size_t n) {
#if HWY_TARGET != HWY_SCALAR
  if (bytes == 4) {
    return red_high ? DitherRowT<4, true>(s, x, y, d, n) : DitherRowT<4, false>(s, x, y, d, n);
  }
  return red_high ? DitherRowT<3, true>(s, x, y, d, n) : DitherRowT<3, false>(s, x, y, d, n);
#else
  csc::scalar::DitherRowVec(s, bytes, red_high, x, y, d, n);
#endif
}

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_HAVE_HWY

#if !KELO_HAVE_HWY || HWY_ONCE
#include "common/internal/api.h"
#include "imgp/csc/layout_rows.h"
#include "imgp/csc/tiled.h"
#include "imgp/csc/yuv_to_rgb.h"
#include "kimgp_csc.h"

namespace kelo {
KELO_VEC_EXPORT(DitherRowVec);

namespace csc {
namespace {

void Dither(const uint8_t* s, int bytes, bool red_high, int32_t x, int32_t y, uint8_t* d,
            size_t n) {
  KELO_VEC_CALL(DitherRowVec, scalar::DitherRowVec)(s, bytes, red_high, x, y, d, n);
}

// Rows are converted to 8-bit RGB a piece of kPiece pixels at a time in a
// stack buffer (a multiple of 4, so pieces keep the dither's columns, and
// even, so they start where a pixel pair and its chroma begin): nothing is
// allocated.
constexpr int kPiece = 512;

template <class Piece>
void ForEachPiece(int n, Piece piece) {
  for (int x0 = 0; x0 < n; x0 += kPiece) piece(x0, std::min(kPiece, n - x0));
}

// The YUV to RGB walk of a source (YuvToRgbWalk: the same rows, chroma rows
// and pixel counts) through the RGBA8888 rows `rows`, each piece dithered
// into the 5-6-5 row. piece_row(r, crow, x0, k) gives the source row for
// pixels [x0, x0 + k).
template <bool kVertHalf, class PieceRow>
void DitherWalk(int w, int h, uint8_t* dst, int32_t ds, bool red_high, YuvToRgbRows rows,
                PieceRow piece_row) {
  if (w <= 0 || h <= 0) return;
  alignas(64) uint8_t buf[2][4 * kPiece];
  auto out = [&](int r, int x0) { return dst + intptr_t(r) * ds + 2 * intptr_t(x0); };
  int r = 0;
  if (kVertHalf && w % 4 == 0 && rows.two != nullptr) {
    for (; r + 1 < h; r += 2) {
      ForEachPiece(w, [&](int x0, int k) {
        rows.two(piece_row(r, r >> 1, x0, k), piece_row(r + 1, r >> 1, x0, k), buf[0], buf[1], k);
        Dither(buf[0], 4, red_high, x0, r, out(r, x0), size_t(k));
        Dither(buf[1], 4, red_high, x0, r + 1, out(r + 1, x0), size_t(k));
      });
    }
  }
  YuvToRgbWalkRows<kVertHalf>(w, h, r, [&](int y, int crow, int n) {
    ForEachPiece(n, [&](int x0, int k) {
      rows.one(piece_row(y, crow, x0, k), buf[0], k);
      Dither(buf[0], 4, red_high, x0, y, out(y, x0), size_t(k));
    });
  });
}

// A YUV layout's rows, read in place.
template <class Src>
void DitherYuv(uint8_t* const* sp, const int32_t* sw, const int32_t* sh, const int32_t* ss,
               const int32_t* ds, uint8_t* const* dp, YuvToRgbRowId rgba, bool red_high) {
  DitherWalk<Src::kVertHalf>(sw[0], sh[0], dp[0], ds[0], red_high, YuvToRgbRowFor(rgba),
                             [&](int r, int crow, int x0, int) {
                               const YuvRow row = Src::Row(sp, ss, r, crow);
                               const int c = (Src::kPairs ? x0 >> 1 : x0) * Src::kCStep;
                               return YuvRow{row.y + x0 * Src::kYStep, row.u + c, row.v + c};
                             });
}

// T64X32: luma and chroma pieces detiled into linear buffers, then the NV12
// rows (as the undithered T64X32 kernels).
void DitherT64x32(uint8_t* const* sp, const int32_t* sw, const int32_t* sh, const int32_t* ss,
                  const int32_t* ds, uint8_t* const* dp, bool red_high) {
  alignas(16) uint8_t y[kPiece + 2], c[kPiece + 2];
  const YuvToRgbRows nv12{YuvToRgbRowFor(kRow_Nv12_Rgba8888_kBt601Limited).one, nullptr};
  DitherWalk<true>(sw[0], sh[0], dp[0], ds[0], red_high, nv12, [&](int r, int crow, int x0, int k) {
    DetileRow64x32(sp[0], ss[0], r, k, y, x0);
    DetileRow64x32(sp[1], ss[1], crow, k, c, x0);
    return YuvRow{y, c, c + 1};
  });
}

// RGBA8888 to RGB565 walks its rows as the undithered conversion does
// (pointers rounded down to their pixel size).
void Rgba8888ToRgb565Dither(uint8_t** sp, const int32_t* sw, const int32_t* sh, int32_t* ss,
                            const int32_t* ds, uint8_t** dp) {
  int32_t r = 0;
  RoundedRows(sp[0], ss[0], 3, dp[0], ds[0], 1, sw[0], sh[0],
              [&](const uint8_t* s, uint8_t* d, size_t n) { Dither(s, 4, true, 0, r++, d, n); });
}

}  // namespace
}  // namespace csc
}  // namespace kelo

KELO_EXPORT void kimgp_dit_8b(const uint8_t* src, int32_t src_bytes, int32_t width, int32_t x,
                              int32_t y, int32_t order, uint8_t* dst) {
  if (width < 1 || (src_bytes != 3 && src_bytes != 4)) return;
  kelo::csc::Dither(src, src_bytes, order == 0, x, y, dst, size_t(width));
}

#define KELO_YUV_DITHER_KERNEL(name, S, dst, D)                                 \
  KELO_EXPORT void kimgp_csc_##name##_to_##dst##_dither(KELO_CSC_PARAMS) {      \
    using namespace kelo::csc;                                                  \
    DitherYuv<S>(sp, sw, sh, ss, ds, dp, kRow_##S##_Rgba8888_kBt601Limited,     \
                 D::kRedHighV);                                                 \
  }
#define KELO_YUV_DITHER_PAIR(name, S)                                           \
  KELO_YUV_DITHER_KERNEL(name, S, rgb565, Rgb565)                               \
  KELO_YUV_DITHER_KERNEL(name, S, bgr565, Bgr565)

KELO_YUV_DITHER_PAIR(yuv420, I420)
KELO_YUV_DITHER_PAIR(yuv422n, I422)
KELO_YUV_DITHER_PAIR(yuv444, I444)
KELO_YUV_DITHER_PAIR(nv12, Nv12)
KELO_YUV_DITHER_PAIR(nv21, Nv21)
KELO_YUV_DITHER_PAIR(uyvy, Uyvy)
KELO_YUV_DITHER_PAIR(yuyv, Yuyv)
// YUV422W is read as planar 4:2:2, as by its undithered kernels.
KELO_YUV_DITHER_PAIR(yuv422w, I422)

KELO_EXPORT void kimgp_csc_yv12_to_rgb565_dither(KELO_CSC_PARAMS) {
  kelo::csc::ExchangeChroma(sp, ss);
  kimgp_csc_yuv420_to_rgb565_dither(sp, sw, sh, ss, ds, dp);
}
KELO_EXPORT void kimgp_csc_yv12_to_bgr565_dither(KELO_CSC_PARAMS) {
  kelo::csc::ExchangeChroma(sp, ss);
  kimgp_csc_yuv420_to_bgr565_dither(sp, sw, sh, ss, ds, dp);
}
KELO_EXPORT void kimgp_csc_t64x32_to_rgb565_dither(KELO_CSC_PARAMS) {
  kelo::csc::DitherT64x32(sp, sw, sh, ss, ds, dp, true);
}
KELO_EXPORT void kimgp_csc_t64x32_to_bgr565_dither(KELO_CSC_PARAMS) {
  kelo::csc::DitherT64x32(sp, sw, sh, ss, ds, dp, false);
}

// Grey g is the pixel (g, g, g), expanded a piece at a time.
KELO_EXPORT void kimgp_csc_yuv400_to_rgb565_dither(KELO_CSC_PARAMS) {
  using namespace kelo::csc;
  alignas(64) uint8_t buf[3 * kPiece];
  for (int32_t r = 0; r < sh[0] && sw[0] > 0; ++r) {
    ForEachPiece(sw[0], [&](int x0, int k) {
      GreyTo888(sp[0] + intptr_t(r) * ss[0] + x0, buf, size_t(k));
      Dither(buf, 3, true, x0, r, dp[0] + intptr_t(r) * ds[0] + 2 * intptr_t(x0), size_t(k));
    });
  }
}
KELO_EXPORT void kimgp_csc_rgb888_to_rgb565_dither(KELO_CSC_PARAMS) {
  for (int32_t r = 0; r < sh[0] && sw[0] > 0; ++r) {
    kelo::csc::Dither(sp[0] + intptr_t(r) * ss[0], 3, true, 0, r, dp[0] + intptr_t(r) * ds[0],
                      size_t(sw[0]));
  }
}

namespace kelo {
namespace csc {
namespace {

struct DitherRoute {
  int32_t src, dst;
  kimgp_csc_kernel fn;
};

#define KELO_TO_565_DITHER(scs, name)                   \
  {scs, 200, kimgp_csc_##name##_to_rgb565_dither}, {    \
    scs, 201, kimgp_csc_##name##_to_bgr565_dither       \
  }

// Every pair kimgp_csc converts into RGB565 or BGR565.
constexpr DitherRoute kDitherRoutes[] = {
    {0, 200, kimgp_csc_yuv400_to_rgb565_dither},
    KELO_TO_565_DITHER(1, yuv420),
    KELO_TO_565_DITHER(2, yuv422n),
    KELO_TO_565_DITHER(3, yuv444),
    KELO_TO_565_DITHER(4, yv12),
    KELO_TO_565_DITHER(6, nv12),
    KELO_TO_565_DITHER(7, nv21),
    KELO_TO_565_DITHER(8, yuv422w),
    KELO_TO_565_DITHER(11, t64x32),
    KELO_TO_565_DITHER(100, uyvy),
    KELO_TO_565_DITHER(101, yuyv),
    {400, 200, kimgp_csc_rgb888_to_rgb565_dither},
    {500, 200, Rgba8888ToRgb565Dither},
};

kimgp_csc_kernel FindDitherRoute(int32_t src, int32_t dst) {
  for (const DitherRoute& r : kDitherRoutes) {
    if (r.src == src && r.dst == dst) return r.fn;
  }
  return nullptr;
}

bool YuvRgbPair(int32_t a, int32_t b) { return a <= 199 && b >= 200 && b <= 599; }

}  // namespace
}  // namespace csc
}  // namespace kelo

KELO_EXPORT int32_t kimgp_csc_dither(const kimgp_img* src, kimgp_img* dst) {
  if (src->cs == dst->cs) return KIMGP_ERR_ARGS;
  if (src->width[0] < 8 || src->height[0] < 8 || dst->width[0] < 8 || dst->height[0] < 8) {
    return KIMGP_ERR_UNSUPPORTED;
  }
  using kelo::csc::YuvRgbPair;
  if (src->std != 0 && dst->std != 0 &&
      (YuvRgbPair(src->cs, dst->cs) || YuvRgbPair(dst->cs, src->cs))) {
    return KIMGP_ERR_UNSUPPORTED;
  }
  const kimgp_csc_kernel fn = kelo::csc::FindDitherRoute(src->cs, dst->cs);
  if (fn == nullptr) return KIMGP_ERR_UNSUPPORTED;
  kimgp_img* s = const_cast<kimgp_img*>(src);  // the YV12 kernels exchange its planes
  fn(s->plane, s->width, s->height, s->stride, dst->stride, dst->plane);
  return KIMGP_OK;
}

#endif  // !KELO_HAVE_HWY || HWY_ONCE
