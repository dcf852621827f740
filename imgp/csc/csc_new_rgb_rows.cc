// Vector paths of the fused RGB to YUV rows of kimgp_csc_new; tails and the
// matrices they cannot hold go to the scalar rows.
//
// With no input offsets every luma accumulator is 8 S + add, S the sum of
// the coefficients times the 8-bit channels; in byte weights (m = 64 w) the
// code is (w . p + (add >> 9)) >> 8. Chroma is NewRgbChromaCode of the
// block's channel sums (at most 1020), whose differences and products stay
// within 16-bit lanes.
#include "imgp/csc/csc_new_rgb_rows.h"

#include <array>
#include <type_traits>

#include "common/internal/simd.h"
#include "imgp/csc/pixel_layouts.h"

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/csc/csc_new_rgb_rows.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "common/internal/x86_raw-inl.h"
#include "imgp/csc/csc_new_rgb_rows.h"
#include "imgp/csc/csc_vec-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
using csc::NewMatrix;
using csc::NewRgbOrder;

// The scalar rows' description of pixel order Src.
template <class Src>
constexpr NewRgbOrder ScalarOrder() {
  return {Src::kBytes, Src::kRi, Src::kGi, Src::kBi, Src::kAi};
}

#if KELO_X86_RAW
// x86: L / 4 pixels to a vector, 4 to each 128-bit block from its first
// byte on, in byte-pair multiply-adds (pmaddubsw).
using DW = hn::Repartition<int16_t, DP>;
using VW = hn::Vec<DW>;

// a's unsigned bytes times b's signed ones, neighbouring products summed.
HWY_INLINE VW MulAddBytes(VP a, VP b) { return VW{RawMulAddPairs(a.raw, b.raw)}; }
// The pixels from p on; a 3-byte row reads up to 8 bytes past them (the
// second block's 4 pixels start at byte 12).
template <class Src>
HWY_INLINE VP LoadPixels(const uint8_t* p) {
  const VP v = hn::LoadU(DP(), p);
  return Src::kBytes == 4 ? v : Groups<0, 1, 2, 3, 3, 4, 5, 6>(v);
}
// Whole vectors of pixels while x + Stop <= n (3-byte rows keep 3 pixels,
// 9 bytes, beyond the last vector for its over-read).
template <class Src>
constexpr size_t Stop(size_t lanes) { return Src::kBytes == 4 ? lanes : lanes + 3; }
// A block's byte table: f(i, j) is the byte for byte j of its 4-byte group
// i (0x80 reads as zero).
template <class F>
HWY_INLINE VP Table(F f) {
  alignas(16) uint8_t t[16];
  for (int i = 0; i < 16; ++i) t[i] = static_cast<uint8_t>(f(i / 4, i % 4));
  return hn::LoadDup128(DP(), t);
}
// The rows' constants for a map, and the codes of L pixels whose 4-pixel
// groups are loaded (Load) into 4 vectors.
template <class Src>
class RowsX86 {
 public:
  static constexpr int B = Src::kBytes;

  explicit RowsX86(const NewMatrix& k) {
    int32_t w[4] = {};
    w[Src::kRi] = k.m[0][0] >> 6, w[Src::kGi] = k.m[0][1] >> 6, w[Src::kBi] = k.m[0][2] >> 6;
    weights_ = Table([&](int, int j) { return w[j]; });
    const int32_t add = 128 * (w[0] + w[1] + w[2] + w[3]) + (k.add[0] >> 9);
    luma_add_ = hn::Set(DU(), static_cast<uint16_t>(add));
    wu_ = Words(k.cd[0][0], k.cd[0][1]);
    wv_ = Words(k.cd[1][0], k.cd[1][1]);
  }

  static void Load(const uint8_t* p, VP* px) {
    for (size_t i = 0; i < 4; ++i) px[i] = LoadPixels<Src>(p + B * i * hn::Lanes(DP()) / 4);
  }

  // Luma in byte weights (NewLumaBytes): the weights are the unsigned
  // operand of the byte-pair products and the pixels, less 128, the signed
  // one, so a pair stays within 16 bits for weights summing to 256; the
  // pairs of a pixel sum (phaddw) to w . p - 128 S, and adding 128 S + A
  // (mod 2^16) gives w . p + A < 2^16, whose high byte is the code. In row
  // order.
  VP Luma(const VP* px) const {
    const auto pair = [&](VP v) {
      // 3-byte pixels spread to 4-byte groups (the fourth byte zero).
      if (B == 3) {
        v = hn::TableLookupBytes(v, Table([](int i, int j) { return j < 3 ? 3 * i + j : 0x80; }));
      }
      return MulAddBytes(weights_, hn::Xor(v, hn::Set(DP(), 0x80)));
    };
    const auto half = [&](int i) {
      const VW sums{RawAddPairs(pair(px[i]).raw, pair(px[i + 1]).raw)};
      return hn::ShiftRight<8>(hn::Add(hn::BitCast(DU(), sums), luma_add_));
    };
    return InOrder(VP{RawPackBytes(half(0).raw, half(2).raw)});
  }

  // Per row, byte-pair multiply-adds with +1 and -1 give each pixel pair's
  // R - G and B - G of both pixels (d[i] of group i; the caller sums the
  // block's rows).
  void Diffs(const VP* px, VW* d) const {
    // 4-byte group i: pixel pair i / 2, red (i even) or blue (odd), each
    // pixel's channel then its green.
    const VP diffs = Table([](int i, int j) {
      const int p = 2 * (i / 2) + j / 2, c = j & 1 ? Src::kGi : i & 1 ? Src::kBi : Src::kRi;
      return B * p + c;
    });
    const VP signs = hn::BitCast(DP(), hn::Set(DW(), static_cast<int16_t>(0xFF01)));
    for (int i = 0; i < 4; ++i) d[i] = MulAddBytes(hn::TableLookupBytes(px[i], diffs), signs);
  }

  // Chroma of 2x2 blocks from their rows' Diffs: L / 2 samples, per block
  // U0-U3 V0-V3 U4-U7 V4-V7 (samples 0 1 4 5 8 9 12 13 and 2 3 6 7 ... of
  // two blocks). Neighbouring pairs added (phaddw) give the block's
  // differences, whose rounded high products with the weights (pmulhrsw) add
  // in pairs again to U and V in eighths, rounded by one more product (by
  // 2^12) and packed to signed bytes, 128 added by flipping the top bit.
  VP Chroma(const VW* d) const {
    const auto half = [&](int i) {
      const VW s{RawAddPairs(d[i].raw, d[i + 1].raw)};
      const VW t{RawAddPairs(hn::MulFixedPoint15(s, wu_).raw, hn::MulFixedPoint15(s, wv_).raw)};
      return hn::MulFixedPoint15(t, hn::Set(DW(), 1 << 12));
    };
    return hn::Xor(VP{RawPackSignedBytes(half(0).raw, half(2).raw)}, hn::Set(DP(), 0x80));
  }

 private:
  using DU = hn::Repartition<uint16_t, DP>;
  // The 16-bit words a, b repeated.
  static VW Words(int32_t a, int32_t b) {
    return hn::BitCast(DW(), hn::Set(hn::Repartition<uint32_t, DP>(),
                                     (uint32_t(b) << 16) | (uint32_t(a) & 0xFFFF)));
  }
  VP weights_;
  hn::Vec<DU> luma_add_;
  VW wu_, wv_;
};

template <class Src>
void LumaRowX86(const NewMatrix& k, const uint8_t* s, uint8_t* y, size_t n) {
  const RowsX86<Src> rows(k);
  const DP d8;
  const size_t L = hn::Lanes(d8);
  size_t x = 0;
  for (; x + Stop<Src>(L) <= n; x += L) {
    VP px[4];
    rows.Load(s + Src::kBytes * x, px);
    hn::StoreU(rows.Luma(px), d8, y + x);
  }
  csc::scalar::NewRgbLumaRow(k, ScalarOrder<Src>(), s, y, x, n);
}

// The chroma row of rows s0 and s1 and, with kLuma, their luma rows.
template <class Src, bool kLuma>
void ChromaRowX86(const NewMatrix& k, const uint8_t* s0, const uint8_t* s1, uint8_t* y0,
                  uint8_t* y1, uint8_t* u, uint8_t* v, size_t step, size_t w) {
  const RowsX86<Src> rows(k);
  const DP d8;
  const size_t L = hn::Lanes(d8);
  // The codes to 8 U then 8 V for StorePlanar, or in row order to pairs.
  alignas(16) static constexpr uint8_t kPlanar[16] = {0, 1, 2, 3, 8, 9, 10, 11,
                                                      4, 5, 6, 7, 12, 13, 14, 15};
  alignas(16) static constexpr uint8_t kUv[16] = {0, 4, 1, 5, 2, 6, 3, 7,
                                                  8, 12, 9, 13, 10, 14, 11, 15};
  alignas(16) static constexpr uint8_t kVu[16] = {4, 0, 5, 1, 6, 2, 7, 3,
                                                  12, 8, 13, 9, 14, 10, 15, 11};
  const VP order = hn::LoadDup128(d8, step == 1 ? kPlanar : u < v ? kUv : kVu);
  size_t x = 0;
  for (; x + Stop<Src>(L) <= w; x += L) {
    // Row by row, to keep fewer registers live.
    VW d[4], e[4];
    {
      VP px[4];
      rows.Load(s0 + Src::kBytes * x, px);
      if constexpr (kLuma) hn::StoreU(rows.Luma(px), d8, y0 + x);
      rows.Diffs(px, d);
    }
    {
      VP px[4];
      rows.Load(s1 + Src::kBytes * x, px);
      if constexpr (kLuma) hn::StoreU(rows.Luma(px), d8, y1 + x);
      rows.Diffs(px, e);
    }
    for (int j = 0; j < 4; ++j) d[j] = hn::Add(d[j], e[j]);
    const VP codes = hn::TableLookupBytes(rows.Chroma(d), order);
    const size_t i = x / 2;
    if (step == 1) {
      StorePlanar(codes, u + i, v + i);
    } else {
      hn::StoreU(InOrder(codes), d8, (u < v ? u : v) + 2 * i);
    }
  }
  if constexpr (kLuma) {
    csc::scalar::NewRgbLumaRow(k, ScalarOrder<Src>(), s0, y0, x, w);
    csc::scalar::NewRgbLumaRow(k, ScalarOrder<Src>(), s1, y1, x, w);
  }
  csc::scalar::NewRgbChromaRow(k, ScalarOrder<Src>(), s0, s1, 2, u, v, step, x / 2, w);
}
#endif  // KELO_X86_RAW

#if HWY_TARGET == HWY_NEON
// Luma in byte weights (NewLumaBytes): w . p in byte products (vmull and
// vmlal.u8, eight pixels an instruction) and A added in the narrowing add of
// the high halves (vaddhn).
class LumaNeon {
 public:
  explicit LumaNeon(const NewMatrix& k) : add_(vdupq_n_u16(static_cast<uint16_t>(k.add[0] >> 9))) {
    for (int j = 0; j < 3; ++j) w_[j] = vdup_n_u8(static_cast<uint8_t>(k.m[0][j] >> 6));
  }
  uint8x8_t operator()(uint8x8_t r, uint8x8_t g, uint8x8_t b) const {
    return vaddhn_u16(vmlal_u8(vmlal_u8(vmull_u8(r, w_[0]), g, w_[1]), b, w_[2]), add_);
  }

 private:
  uint8x8_t w_[3];
  uint16x8_t add_;
};

// The loops bump their pointers (post-increment addressing).
template <class Src>
void LumaRowNeon(const NewMatrix& k, const uint8_t* s, uint8_t* y, size_t n) {
  const LumaNeon luma(k);
  const size_t n8 = n & ~size_t{7};
  const uint8_t* p = s;
  for (uint8_t *py = y, *const end = y + n8; py != end; py += 8) {
    uint8x8_t r, g, b;
    RgbChannels8<Src>(p, &r, &g, &b);
    vst1_u8(py, luma(r, g, b));
  }
  csc::scalar::NewRgbLumaRow(k, ScalarOrder<Src>(), s, y, n8, n);
}

// The constants of the chroma rows, made once per image.
struct ChromaNeon {
  explicit ChromaNeon(const NewMatrix& k) : luma(k) {
    const int16_t w[4] = {static_cast<int16_t>(k.cd[0][0]), static_cast<int16_t>(k.cd[0][1]),
                          static_cast<int16_t>(k.cd[1][0]), static_cast<int16_t>(k.cd[1][1])};
    cw = vld1_s16(w);
  }
  LumaNeon luma;
  int16x4_t cw;
};
// Chroma: the block sums of the three channels (vpaddl and vpadal.u8), their
// differences, the rounded high halves of their products with the weights
// (vqrdmulh), and the sum narrowed by a rounding, saturating shift to signed
// bytes, 128 added by flipping the top bit; with kLuma the luma of both rows
// from the same loads. Samples [0, n16 / 2) to planes (kOut 0) or pairs, U
// first (1) or V (2).
template <class Src, int kOut, bool kLuma>
void ChromaBlocksNeon(const ChromaNeon& c, const uint8_t* s0, const uint8_t* s1, uint8_t* y0,
                      uint8_t* y1, uint8_t* u, uint8_t* v, size_t n16) {
  const int16x4_t cw = c.cw;
  const uint8x8_t top = vdup_n_u8(0x80);
  const LumaNeon luma = c.luma;
  constexpr size_t kStep = kOut ? 16 : 8;
  for (const uint8_t* const end = s0 + n16 * Src::kBytes; s0 != end;
       s0 += 16 * Src::kBytes, s1 += 16 * Src::kBytes, u += kStep, v += kStep) {
    // Row by row (luma, then the channels' pair sums), to keep fewer
    // registers live.
    const auto row = [&](const uint8_t* s, uint8_t*& y) {
      uint8x16_t c[3];
      RgbChannels<Src>(s, &c[0], &c[1], &c[2]);
      if constexpr (kLuma) {
        vst1q_u8(y, vcombine_u8(luma(vget_low_u8(c[0]), vget_low_u8(c[1]), vget_low_u8(c[2])),
                                luma(vget_high_u8(c[0]), vget_high_u8(c[1]), vget_high_u8(c[2]))));
        y += 16;
      }
      return std::array<uint8x16_t, 3>{c[0], c[1], c[2]};
    };
    const auto c0 = row(s0, y0);
    uint16x8_t pairs[3];
    for (int j = 0; j < 3; ++j) pairs[j] = vpaddlq_u8(c0[j]);
    const auto c1 = row(s1, y1);
    int16x8_t sums[3];
    for (int j = 0; j < 3; ++j) sums[j] = vreinterpretq_s16_u16(vpadalq_u8(pairs[j], c1[j]));
    const int16x8_t dr = vsubq_s16(sums[0], sums[1]), db = vsubq_s16(sums[2], sums[1]);
    const auto code = [&](int16x8_t t) {
      return veor_u8(vreinterpret_u8_s8(vqrshrn_n_s16(t, 3)), top);
    };
    const uint8x8_t cu =
        code(vaddq_s16(vqrdmulhq_lane_s16(dr, cw, 0), vqrdmulhq_lane_s16(db, cw, 1)));
    const uint8x8_t cv =
        code(vaddq_s16(vqrdmulhq_lane_s16(dr, cw, 2), vqrdmulhq_lane_s16(db, cw, 3)));
    if constexpr (kOut == 0) {
      vst1_u8(u, cu);
      vst1_u8(v, cv);
    } else if constexpr (kOut == 1) {
      vst2_u8(u, (uint8x8x2_t{{cu, cv}}));
    } else {
      vst2_u8(v, (uint8x8x2_t{{cv, cu}}));
    }
  }
}
// Rows s0 and s1 for kOut: chroma and, with kLuma, luma.
template <class Src, int kOut, bool kLuma>
void RowPairNeon(const NewMatrix& k, const ChromaNeon& c, const uint8_t* s0, const uint8_t* s1,
                 uint8_t* y0, uint8_t* y1, uint8_t* u, uint8_t* v, size_t w) {
  const size_t n16 = w & ~size_t{15};
  ChromaBlocksNeon<Src, kOut, kLuma>(c, s0, s1, y0, y1, u, v, n16);
  if (n16 == w) return;
  if constexpr (kLuma) {
    csc::scalar::NewRgbLumaRow(k, ScalarOrder<Src>(), s0, y0, n16, w);
    csc::scalar::NewRgbLumaRow(k, ScalarOrder<Src>(), s1, y1, n16, w);
  }
  csc::scalar::NewRgbChromaRow(k, ScalarOrder<Src>(), s0, s1, 2, u, v, kOut ? 2 : 1, n16 / 2, w);
}
// f(kOut) for a chroma destination, kOut as a type: planes (0), pairs with
// U first (1) or V (2).
template <class F>
HWY_INLINE void WithOut(size_t step, const uint8_t* u, const uint8_t* v, F f) {
  if (step == 1) {
    f(std::integral_constant<int, 0>());
  } else if (u < v) {
    f(std::integral_constant<int, 1>());
  } else {
    f(std::integral_constant<int, 2>());
  }
}
#endif  // HWY_TARGET == HWY_NEON

// Calls f with a value of the pixel order o names; false for none.
template <class Src, class F>
bool WithOrder(const NewRgbOrder& o, F&& f) {
  if (o.px != Src::kBytes || o.r != Src::kRi || o.g != Src::kGi || o.b != Src::kBi) return false;
  f(Src{});
  return true;
}
template <class F>
bool WithAnyOrder(const NewRgbOrder& o, F&& f) {
  return WithOrder<csc::Rgba8888>(o, f) || WithOrder<csc::Bgra8888>(o, f) ||
         WithOrder<csc::Argb8888>(o, f) || WithOrder<csc::Abgr8888>(o, f) ||
         WithOrder<csc::Rgb888>(o, f) || WithOrder<csc::Bgr888>(o, f);
}

#if KELO_X86_RAW || HWY_TARGET == HWY_NEON
// The rows behind the function pointers of NewRgbRows (order and
// subsampling fixed by the choice).
template <class Src>
void LumaEntry(const NewMatrix& k, const NewRgbOrder&, const uint8_t* s, uint8_t* y, size_t n) {
#if KELO_X86_RAW
  LumaRowX86<Src>(k, s, y, n);
#else
  LumaRowNeon<Src>(k, s, y, n);
#endif
}
template <class Src>
void ChromaEntry(const NewMatrix& k, const NewRgbOrder&, const uint8_t* s0, const uint8_t* s1,
                 int, uint8_t* u, uint8_t* v, size_t step, size_t w) {
#if KELO_X86_RAW
  ChromaRowX86<Src, false>(k, s0, s1, nullptr, nullptr, u, v, step, w);
#else
  WithOut(step, u, v, [&](auto out) {
    RowPairNeon<Src, out(), false>(k, ChromaNeon(k), s0, s1, nullptr, nullptr, u, v, w);
  });
#endif
}
// row(s0, s1, y0, y1, u, v) for each row pair of `job`.
template <class Row>
HWY_INLINE void EachPair(const csc::NewRgbPairs& job, Row row) {
  const uint8_t* s = job.s;
  uint8_t *y = job.y, *u = job.u, *v = job.v;
  for (size_t i = 0; i < job.n; ++i) {
    row(s, s + job.s_stride, y, y + job.y_stride, u, v);
    s += 2 * job.s_stride;
    y += 2 * job.y_stride;
    u += job.c_stride;
    v += job.c_stride;
  }
}
template <class Src>
void PairsEntry(const NewMatrix& k, const NewRgbOrder&, const csc::NewRgbPairs& job) {
#if KELO_X86_RAW
  EachPair(job, [&](const uint8_t* s0, const uint8_t* s1, uint8_t* y0, uint8_t* y1, uint8_t* u,
                    uint8_t* v) {
    ChromaRowX86<Src, true>(k, s0, s1, y0, y1, u, v, job.step, job.w);
  });
#else
  // The chroma layout and constants once per image.
  const ChromaNeon c(k);
  WithOut(job.step, job.u, job.v, [&](auto out) {
    EachPair(job, [&](const uint8_t* s0, const uint8_t* s1, uint8_t* y0, uint8_t* y1, uint8_t* u,
                      uint8_t* v) {
      RowPairNeon<Src, out(), true>(k, c, s0, s1, y0, y1, u, v, job.w);
    });
  });
#endif
}
#endif

void NewRgbRowsForVec(const NewMatrix& k, const NewRgbOrder& o, int sub, csc::NewRgbRows* rows) {
  *rows = {csc::scalar::NewRgbLumaRowAll, csc::scalar::NewRgbChromaRowAll, nullptr};
#if KELO_X86_RAW || HWY_TARGET == HWY_NEON
  if (!csc::NewRgbRowsVec(k)) return;
  WithAnyOrder(o, [&](auto src) {
    using Src = decltype(src);
    const bool bytes = csc::NewLumaBytes(k);
    if (bytes) rows->luma = LumaEntry<Src>;
    if (sub == 2) rows->chroma = ChromaEntry<Src>;
    if (bytes && sub == 2) rows->pairs = PairsEntry<Src>;
  });
#else
  (void)k, (void)o, (void)sub;
#endif
}

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_HAVE_HWY

#if !KELO_HAVE_HWY || HWY_ONCE
namespace kelo {
namespace csc {
namespace scalar {
inline void NewRgbRowsForVec(const NewMatrix&, const NewRgbOrder&, int, NewRgbRows* rows) {
  *rows = {NewRgbLumaRowAll, NewRgbChromaRowAll, nullptr};
}
}  // namespace scalar
}  // namespace csc

KELO_VEC_EXPORT(NewRgbRowsForVec);

namespace csc {
bool NewRgbRowsVec(const NewMatrix& k) {
  bool ok = true;
  for (const auto& c : k.cd) {
    for (int32_t w : c) ok = ok && w >= INT16_MIN && w <= INT16_MAX;
  }
  return ok;
}
bool NewLumaBytes(const NewMatrix& k) {
  int32_t sum = 0;
  bool ok = k.in_off8[0] == 0 && k.in_off8[1] == 0 && k.in_off8[2] == 0 && k.add[0] >= 0 &&
            k.hi == 255;
  for (int j = 0; j < 3; ++j) {
    ok = ok && k.m[0][j] >= 0 && k.m[0][j] <= (255 << 6) && (k.m[0][j] & 63) == 0;
    sum += k.m[0][j] >> 6;
  }
  return ok && sum <= 256 && 255 * sum + (k.add[0] >> 9) <= 0xFFFF;
}
NewRgbRows NewRgbRowsFor(const NewMatrix& k, const NewRgbOrder& o, int sub) {
  NewRgbRows rows;
  KELO_VEC_CALL(NewRgbRowsForVec, scalar::NewRgbRowsForVec)(k, o, sub, &rows);
  return rows;
}
void NewRgbLumaRow(const NewMatrix& k, const NewRgbOrder& o, const uint8_t* s, uint8_t* y, size_t n) {
  NewRgbRowsFor(k, o, 2).luma(k, o, s, y, n);
}
void NewRgbChromaRow(const NewMatrix& k, const NewRgbOrder& o, const uint8_t* s0, const uint8_t* s1,
                     int sub, uint8_t* u, uint8_t* v, size_t step, size_t w) {
  NewRgbRowsFor(k, o, sub).chroma(k, o, s0, s1, sub, u, v, step, w);
}
}  // namespace csc
}  // namespace kelo
#endif  // !KELO_HAVE_HWY || HWY_ONCE
