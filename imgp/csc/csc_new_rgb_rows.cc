// Vector paths of the fused RGB to YUV rows of kimgp_csc_new; tails and the
// matrices they cannot hold go to the scalar rows.
//
// With no input offsets every luma accumulator is 8 S + add, S the sum of
// the coefficients times the 8-bit channels; in byte weights (m = 64 w) the
// code is (w . p + (add >> 9)) >> 8. Chroma is NewRgbChromaCode of the
// block's channel sums (at most 1020), whose differences and products stay
// within 16-bit lanes.
#include "imgp/csc/csc_new_rgb_rows.h"

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
// Luma in byte weights (NewLumaBytes): the weights are the unsigned operand
// of the byte-pair products and the pixels, less 128, the signed one, so a
// pair stays within 16 bits for weights summing to 256; the pairs of a pixel
// sum (phaddw) to w . p - 128 S, and adding 128 S + A (mod 2^16) gives
// w . p + A < 2^16, whose high byte is the code.
template <class Src>
void LumaRowX86(const NewMatrix& k, const uint8_t* s, uint8_t* y, size_t n) {
  const DP d8;
  const hn::Repartition<uint16_t, DP> du;
  const size_t L = hn::Lanes(d8);
  constexpr int B = Src::kBytes;
  int32_t w[4] = {};
  w[Src::kRi] = k.m[0][0] >> 6, w[Src::kGi] = k.m[0][1] >> 6, w[Src::kBi] = k.m[0][2] >> 6;
  const VP weights = Table([&](int, int j) { return w[j]; });
  const VP flip = hn::Set(d8, 0x80);
  // 3-byte pixels spread to 4-byte groups (the fourth byte zero).
  const VP spread = Table([](int i, int j) { return j < 3 ? 3 * i + j : 0x80; });
  const auto add = hn::Set(du, static_cast<uint16_t>(128 * (w[0] + w[1] + w[2] + w[3]) + (k.add[0] >> 9)));
  const auto half = [&](const uint8_t* p) {
    const auto pair = [&](const uint8_t* q) {
      const VP px = LoadPixels<Src>(q);
      return MulAddBytes(weights, hn::Xor(B == 4 ? px : hn::TableLookupBytes(px, spread), flip));
    };
    const VW sums{RawAddPairs(pair(p).raw, pair(p + B * L / 4).raw)};
    return hn::ShiftRight<8>(hn::Add(hn::BitCast(du, sums), add));
  };
  size_t x = 0;
  for (; x + Stop<Src>(L) <= n; x += L) {
    const uint8_t* p = s + B * x;
    hn::StoreU(InOrder(VP{RawPackBytes(half(p).raw, half(p + B * L / 2).raw)}), d8, y + x);
  }
  csc::scalar::NewRgbLumaRow(k, {B, Src::kRi, Src::kGi, Src::kBi, Src::kAi}, s, y, x, n);
}

// 2x2 blocks: L pixels of each row give L / 2 samples. Per row, byte-pair
// multiply-adds with +1 and -1 give each pixel pair's R - G and B - G of
// both pixels; the rows' sum, added in neighbouring pairs (phaddw), gives
// the block's differences, whose rounded high products with the weights
// (pmulhrsw) add in pairs again to U and V in eighths, rounded by one more
// (times 2^12) and packed to signed bytes, 128 added by flipping the top bit.
template <class Src>
void ChromaRowX86(const NewMatrix& k, const uint8_t* s0, const uint8_t* s1, uint8_t* u,
                  uint8_t* v, size_t step, size_t w) {
  const DP d8;
  const size_t L = hn::Lanes(d8);
  constexpr int B = Src::kBytes;
  // 4-byte group i: pixel pair i / 2, red (i even) or blue (odd), each pixel's
  // channel then its green.
  const VP diffs = Table([](int i, int j) {
    const int p = 2 * (i / 2) + j / 2, c = j & 1 ? Src::kGi : i & 1 ? Src::kBi : Src::kRi;
    return B * p + c;
  });
  // Per block the codes are U0-U3 V0-V3 U4-U7 V4-V7 (samples 0 1 4 5 8 9
  // 12 13 and 2 3 6 7 ... of two blocks): to 8 U then 8 V for StorePlanar,
  // or in row order to pairs.
  alignas(16) static constexpr uint8_t kPlanar[16] = {0, 1, 2, 3, 8, 9, 10, 11,
                                                      4, 5, 6, 7, 12, 13, 14, 15};
  alignas(16) static constexpr uint8_t kUv[16] = {0, 4, 1, 5, 2, 6, 3, 7,
                                                  8, 12, 9, 13, 10, 14, 11, 15};
  alignas(16) static constexpr uint8_t kVu[16] = {4, 0, 5, 1, 6, 2, 7, 3,
                                                  12, 8, 13, 9, 14, 10, 15, 11};
  const VP signs = hn::BitCast(d8, hn::Set(DW(), static_cast<int16_t>(0xFF01)));
  const VP order = hn::LoadDup128(d8, step == 1 ? kPlanar : u < v ? kUv : kVu);
  const auto words = [](int32_t a, int32_t b) {
    return hn::BitCast(DW(), hn::Set(hn::Repartition<uint32_t, DP>(),
                                     (uint32_t(b) << 16) | (uint32_t(a) & 0xFFFF)));
  };
  const VW wu = words(k.cd[0][0], k.cd[0][1]), wv = words(k.cd[1][0], k.cd[1][1]);
  const VW eighths = hn::Set(DW(), 1 << 12);
  const auto half = [&](size_t at) {
    const auto part = [&](size_t q) {
      return hn::Add(MulAddBytes(hn::TableLookupBytes(LoadPixels<Src>(s0 + q), diffs), signs),
                     MulAddBytes(hn::TableLookupBytes(LoadPixels<Src>(s1 + q), diffs), signs));
    };
    const VW d{RawAddPairs(part(at).raw, part(at + B * L / 4).raw)};
    const VW t{RawAddPairs(hn::MulFixedPoint15(d, wu).raw, hn::MulFixedPoint15(d, wv).raw)};
    return hn::MulFixedPoint15(t, eighths);
  };
  const VP flip = hn::Set(d8, 0x80);
  size_t x = 0;
  for (; x + Stop<Src>(L) <= w; x += L) {
    const VP codes = hn::Xor(VP{RawPackSignedBytes(half(B * x).raw, half(B * (x + L / 2)).raw)}, flip);
    const size_t i = x / 2;
    if (step == 1) {
      StorePlanar(hn::TableLookupBytes(codes, order), u + i, v + i);
    } else {
      hn::StoreU(InOrder(hn::TableLookupBytes(codes, order)), d8, (u < v ? u : v) + 2 * i);
    }
  }
  csc::scalar::NewRgbChromaRow(k, {B, Src::kRi, Src::kGi, Src::kBi, Src::kAi}, s0, s1, 2, u, v, step,
                               x / 2, w);
}
#endif  // KELO_X86_RAW

#if HWY_TARGET == HWY_NEON
// Luma in byte weights (NewLumaBytes): w . p in byte products (vmull and
// vmlal.u8, eight pixels an instruction) and A added in the narrowing add of
// the high halves (vaddhn). The loops bump their pointers (post-increment
// addressing) and stop at the last whole block of 16 pixels.
template <class Src>
void LumaRowNeon(const NewMatrix& k, const uint8_t* s, uint8_t* y, size_t n) {
  uint8x8_t w[3];
  for (int j = 0; j < 3; ++j) w[j] = vdup_n_u8(static_cast<uint8_t>(k.m[0][j] >> 6));
  const uint16x8_t add = vdupq_n_u16(static_cast<uint16_t>(k.add[0] >> 9));
  const auto codes = [&](uint8x8_t r, uint8x8_t g, uint8x8_t b) {
    return vaddhn_u16(vmlal_u8(vmlal_u8(vmull_u8(r, w[0]), g, w[1]), b, w[2]), add);
  };
  const size_t n8 = n & ~size_t{7};
  const uint8_t* p = s;
  for (uint8_t *py = y, *const end = y + n8; py != end; py += 8) {
    uint8x8_t r, g, b;
    RgbChannels8<Src>(p, &r, &g, &b);
    vst1_u8(py, codes(r, g, b));
  }
  csc::scalar::NewRgbLumaRow(k, {Src::kBytes, Src::kRi, Src::kGi, Src::kBi, Src::kAi}, s, y, n8, n);
}

// Chroma: the block sums of the three channels (vpaddl and vpadal.u8), their
// differences, the rounded high halves of their products with the weights
// (vqrdmulh), and the sum narrowed by a rounding, saturating shift to signed
// bytes, 128 added by flipping the top bit. Samples [0, n16 / 2) to planes
// (kOut 0) or pairs, U first (1) or V (2).
template <class Src, int kOut>
void ChromaBlocksNeon(const NewMatrix& k, const uint8_t* s0, const uint8_t* s1, uint8_t* u,
                      uint8_t* v, size_t n16) {
  const int16_t w[4] = {static_cast<int16_t>(k.cd[0][0]), static_cast<int16_t>(k.cd[0][1]),
                        static_cast<int16_t>(k.cd[1][0]), static_cast<int16_t>(k.cd[1][1])};
  const int16x4_t cw = vld1_s16(w);
  const uint8x8_t top = vdup_n_u8(0x80);
  constexpr size_t kStep = kOut ? 16 : 8;
  for (const uint8_t* const end = s0 + n16 * Src::kBytes; s0 != end;
       s0 += 16 * Src::kBytes, s1 += 16 * Src::kBytes, u += kStep, v += kStep) {
    uint8x16_t c0[3], c1[3];
    RgbChannels<Src>(s0, &c0[0], &c0[1], &c0[2]);
    RgbChannels<Src>(s1, &c1[0], &c1[1], &c1[2]);
    int16x8_t sums[3];
    for (int j = 0; j < 3; ++j) {
      sums[j] = vreinterpretq_s16_u16(vpadalq_u8(vpaddlq_u8(c0[j]), c1[j]));
    }
    const int16x8_t dr = vsubq_s16(sums[0], sums[1]), db = vsubq_s16(sums[2], sums[1]);
    const auto code = [&](int16x8_t t) {
      return veor_u8(vreinterpret_u8_s8(vqrshrn_n_s16(t, 3)), top);
    };
    const uint8x8_t cu = code(vaddq_s16(vqrdmulhq_lane_s16(dr, cw, 0), vqrdmulhq_lane_s16(db, cw, 1)));
    const uint8x8_t cv = code(vaddq_s16(vqrdmulhq_lane_s16(dr, cw, 2), vqrdmulhq_lane_s16(db, cw, 3)));
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
template <class Src>
void ChromaRowNeon(const NewMatrix& k, const uint8_t* s0, const uint8_t* s1, uint8_t* u,
                   uint8_t* v, size_t step, size_t w) {
  const size_t n16 = w & ~size_t{15};
  if (step == 1) {
    ChromaBlocksNeon<Src, 0>(k, s0, s1, u, v, n16);
  } else if (u < v) {
    ChromaBlocksNeon<Src, 1>(k, s0, s1, u, v, n16);
  } else {
    ChromaBlocksNeon<Src, 2>(k, s0, s1, u, v, n16);
  }
  csc::scalar::NewRgbChromaRow(k, {Src::kBytes, Src::kRi, Src::kGi, Src::kBi, Src::kAi}, s0, s1, 2, u, v,
                               step, n16 / 2, w);
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
  ChromaRowX86<Src>(k, s0, s1, u, v, step, w);
#else
  ChromaRowNeon<Src>(k, s0, s1, u, v, step, w);
#endif
}
#endif

void NewRgbRowsForVec(const NewMatrix& k, const NewRgbOrder& o, int sub, csc::NewRgbRows* rows) {
  *rows = {csc::scalar::NewRgbLumaRowAll, csc::scalar::NewRgbChromaRowAll};
#if KELO_X86_RAW || HWY_TARGET == HWY_NEON
  if (!csc::NewRgbRowsVec(k)) return;
  WithAnyOrder(o, [&](auto src) {
    using Src = decltype(src);
    if (csc::NewLumaBytes(k)) rows->luma = LumaEntry<Src>;
    if (sub == 2) rows->chroma = ChromaEntry<Src>;
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
  *rows = {NewRgbLumaRowAll, NewRgbChromaRowAll};
}
}  // namespace scalar
}  // namespace csc

KELO_VEC_EXPORT(NewRgbRowsForVec);

namespace csc {
bool NewRgbRowsVec(const NewMatrix& k) {
  bool ok = true;
  for (const auto& c : k.cd) ok = ok && c[0] >= INT16_MIN && c[0] <= INT16_MAX && c[1] >= INT16_MIN && c[1] <= INT16_MAX;
  return ok;
}
bool NewLumaBytes(const NewMatrix& k) {
  int32_t sum = 0;
  bool ok = k.in_off8[0] == 0 && k.in_off8[1] == 0 && k.in_off8[2] == 0 && k.add[0] >= 0;
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
