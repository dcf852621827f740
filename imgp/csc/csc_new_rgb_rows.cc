// Vector paths of the fused RGB to YUV rows of kimgp_csc_new; tails and the
// matrices they cannot hold go to the scalar rows.
//
// With no input offsets every accumulator is 8 S + add, S the sum of the
// coefficients times the 8-bit channels. Luma in byte weights (m = 64 w) is
// then (w . p + (add >> 9)) >> 8. The four quarters of a chroma block sum to
// 2 S4 + 4 (add >> 2), S4 the sum over the block, whose code is
// (S4 + 2 (add >> 2)) >> 16: exactly the scalar rows' values. S4 is linear in
// the block's channel sums (at most 1020), which the rows form first.
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

[[maybe_unused]] constexpr int kChromaShift = csc::kNewShift - 1;

#if KELO_X86_RAW
// x86: L / 4 pixels to a vector, 4 to each 128-bit block from its first
// byte on: luma from byte-pair multiply-adds of the pixels and the weights,
// chroma from the channel sums of each 2x2 block (byte-pair multiply-adds
// with ones) in word-pair multiply-adds with the coefficients.
using DW = hn::Repartition<int16_t, DP>;
using VW = hn::Vec<DW>;
using DL = hn::Repartition<int32_t, DP>;
using VL = hn::Vec<DL>;

// a's unsigned bytes times b's signed ones, neighbouring products summed.
HWY_INLINE VW MulAddBytes(VP a, VP b) { return VW{RawMulAddPairs(a.raw, b.raw)}; }
HWY_INLINE VL MulAddWords(VW a, VW b) { return VL{RawMulAddWords(a.raw, b.raw)}; }
// Codes of 4 vectors of int32 lanes as saturated bytes, per 128-bit block
// (InOrder puts them in row order).
HWY_INLINE VP PackCodes(const VL* c) {
  return VP{RawPackBytes(RawPackWords(c[0].raw, c[1].raw), RawPackWords(c[2].raw, c[3].raw))};
}
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

// The coefficients of row r as words at the pixel's byte places, twice.
template <class Src>
VW PixelWords(const NewMatrix& k, int r) {
  alignas(16) int16_t w[8] = {};
  const int at[3] = {Src::kRi, Src::kGi, Src::kBi};
  for (int i = 0; i < 8; i += 4) {
    for (int j = 0; j < 3; ++j) w[i + at[j]] = static_cast<int16_t>(k.m[r][j]);
  }
  return hn::LoadDup128(DW(), w);
}

// 2x2 blocks: L pixels of each row give L / 2 samples.
template <class Src>
void ChromaRowX86(const NewMatrix& k, const uint8_t* s0, const uint8_t* s1, uint8_t* u,
                  uint8_t* v, size_t step, size_t w) {
  const DP d8;
  const DL dl;
  const size_t L = hn::Lanes(d8);
  constexpr int B = Src::kBytes;
  // Group i of 4 bytes: pixel pair i / 2, channel byte j of both side by side.
  const VP pairs = Table([](int i, int j) {
    const int c = 2 * (i & 1) + j / 2, p = 2 * (i / 2) + (j & 1);
    return c < B ? B * p + c : 0x80;
  });
  // The packed codes hold U0 U1 V0 V1 U2 U3 V2 V3 ... per block (samples
  // 0 1 4 5 ... and 2 3 6 7 ... of two blocks): to 8 U then 8 V for
  // StorePlanar, or in row order to pairs.
  alignas(16) static constexpr uint8_t kPlanar[16] = {0, 1, 4, 5, 8, 9, 12, 13,
                                                      2, 3, 6, 7, 10, 11, 14, 15};
  alignas(16) static constexpr uint8_t kUv[16] = {0, 2, 1, 3, 4, 6, 5, 7,
                                                  8, 10, 9, 11, 12, 14, 13, 15};
  alignas(16) static constexpr uint8_t kVu[16] = {2, 0, 3, 1, 6, 4, 7, 5,
                                                  10, 8, 11, 9, 14, 12, 15, 13};
  const VP ones = hn::Set(d8, 1);
  const VP order = hn::LoadDup128(d8, step == 1 ? kPlanar : u < v ? kUv : kVu);
  const VW wu = PixelWords<Src>(k, 1), wv = PixelWords<Src>(k, 2);
  alignas(16) const int32_t adds[4] = {2 * (k.add[1] >> 2), 2 * (k.add[1] >> 2),
                                       2 * (k.add[2] >> 2), 2 * (k.add[2] >> 2)};
  const VL add = hn::LoadDup128(dl, adds);
  size_t x = 0;
  for (; x + Stop<Src>(L) <= w; x += L) {
    VL c[4];
    for (size_t i = 0; i < 4; ++i) {
      const size_t at = B * (x + i * L / 4);
      const VP a = LoadPixels<Src>(s0 + at), b = LoadPixels<Src>(s1 + at);
      const VW sums = hn::Add(MulAddBytes(hn::TableLookupBytes(a, pairs), ones),
                              MulAddBytes(hn::TableLookupBytes(b, pairs), ones));
      const VL uv = VL{RawAddPairs32(MulAddWords(sums, wu).raw, MulAddWords(sums, wv).raw)};
      c[i] = hn::ShiftRight<kChromaShift>(hn::Add(uv, add));
    }
    const size_t i = x / 2;
    if (step == 1) {
      StorePlanar(hn::TableLookupBytes(PackCodes(c), order), u + i, v + i);
    } else {
      hn::StoreU(InOrder(hn::TableLookupBytes(PackCodes(c), order)), d8, (u < v ? u : v) + 2 * i);
    }
  }
  csc::scalar::NewRgbChromaRow(k, {B, Src::kRi, Src::kGi, Src::kBi, Src::kAi}, s0, s1, 2, u, v, step,
                               x / 2, w);
}
#endif  // KELO_X86_RAW

#if HWY_TARGET == HWY_NEON
// 3- and 4-byte pixels on NEON: the structure loads split 16 pixels into
// channels; 16-bit channels (or block sums) times 16-bit coefficients
// accumulate into 32-bit lanes that start at the offset (vmlal), narrowed by
// a saturating shift (vqshrun) and a saturating narrowing (vqmovn).
// The coefficients of row r sit in lanes 0-2 of one register (vmlal by lane:
// by value, GCC reloads them into the loop).
template <int kShift>
HWY_INLINE uint8x8_t Codes(const int16x8_t c[3], int16x4_t m, int32x4_t add) {
  const auto half = [&](int16x4_t c0, int16x4_t c1, int16x4_t c2) {
    const int32x4_t acc = vmlal_lane_s16(vmlal_lane_s16(vmlal_lane_s16(add, c0, m, 0), c1, m, 1),
                                         c2, m, 2);
    return vqshrun_n_s32(acc, kShift);
  };
  return vqmovn_u16(
      vcombine_u16(half(vget_low_s16(c[0]), vget_low_s16(c[1]), vget_low_s16(c[2])),
                   half(vget_high_s16(c[0]), vget_high_s16(c[1]), vget_high_s16(c[2]))));
}
HWY_INLINE int16x4_t Coefficients(const NewMatrix& k, int r) {
  const int16_t m[4] = {static_cast<int16_t>(k.m[r][0]), static_cast<int16_t>(k.m[r][1]),
                        static_cast<int16_t>(k.m[r][2]), 0};
  return vld1_s16(m);
}
HWY_INLINE int16x8_t Wide(uint8x8_t c) { return vreinterpretq_s16_u16(vmovl_u8(c)); }

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

// Chroma codes when both offsets are 128 and a rounding half (the usual
// case): a rounding narrowing shift and a saturating narrowing to signed
// bytes, then 128 added by flipping the top bit; no offset to start each sum
// from.
constexpr int32_t kCentred = (128 << kChromaShift) + (1 << (kChromaShift - 1));
bool ChromaCentred(const NewMatrix& k) {
  return 2 * (k.add[1] >> 2) == kCentred && 2 * (k.add[2] >> 2) == kCentred;
}
HWY_INLINE uint8x8_t CentredCodes(const int16x8_t c[3], int16x4_t m) {
  const auto half = [&](int16x4_t c0, int16x4_t c1, int16x4_t c2) {
    return vqrshrn_n_s32(
        vmlal_lane_s16(vmlal_lane_s16(vmull_lane_s16(c0, m, 0), c1, m, 1), c2, m, 2), kChromaShift);
  };
  const int8x8_t t = vqmovn_s16(
      vcombine_s16(half(vget_low_s16(c[0]), vget_low_s16(c[1]), vget_low_s16(c[2])),
                   half(vget_high_s16(c[0]), vget_high_s16(c[1]), vget_high_s16(c[2]))));
  return veor_u8(vreinterpret_u8_s8(t), vdup_n_u8(0x80));
}

// Samples [0, n16 / 2) to planes (kOut 0) or pairs, U first (1) or V (2).
template <class Src, int kOut, bool kCentredCodes>
void ChromaBlocksNeon(const NewMatrix& k, const uint8_t* s0, const uint8_t* s1, uint8_t* u,
                      uint8_t* v, size_t n16) {
  const int16x4_t mu = Coefficients(k, 1), mv = Coefficients(k, 2);
  const int32x4_t addu = vdupq_n_s32(2 * (k.add[1] >> 2)), addv = vdupq_n_s32(2 * (k.add[2] >> 2));
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
    uint8x8_t cu, cv;
    if constexpr (kCentredCodes) {
      cu = CentredCodes(sums, mu);
      cv = CentredCodes(sums, mv);
    } else {
      cu = Codes<kChromaShift>(sums, mu, addu);
      cv = Codes<kChromaShift>(sums, mv, addv);
    }
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
template <class Src, bool kCentredCodes>
void ChromaRowNeon(const NewMatrix& k, const uint8_t* s0, const uint8_t* s1, uint8_t* u,
                   uint8_t* v, size_t step, size_t w) {
  const size_t n16 = w & ~size_t{15};
  if (step == 1) {
    ChromaBlocksNeon<Src, 0, kCentredCodes>(k, s0, s1, u, v, n16);
  } else if (u < v) {
    ChromaBlocksNeon<Src, 1, kCentredCodes>(k, s0, s1, u, v, n16);
  } else {
    ChromaBlocksNeon<Src, 2, kCentredCodes>(k, s0, s1, u, v, n16);
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
template <class Src, bool kCentredCodes>
void ChromaEntry(const NewMatrix& k, const NewRgbOrder&, const uint8_t* s0, const uint8_t* s1,
                 int, uint8_t* u, uint8_t* v, size_t step, size_t w) {
#if KELO_X86_RAW
  ChromaRowX86<Src>(k, s0, s1, u, v, step, w);
#else
  ChromaRowNeon<Src, kCentredCodes>(k, s0, s1, u, v, step, w);
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
#if HWY_TARGET == HWY_NEON
    const bool centred = ChromaCentred(k);
#else
    const bool centred = false;
#endif
    if (sub == 2) rows->chroma = centred ? ChromaEntry<Src, true> : ChromaEntry<Src, false>;
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
// Three products of 16-bit coefficients and 2040 and an offset of at most
// 2^30 stay below 2^31 (cheaper than NewMatrixFits).
bool NewRgbRowsVec(const NewMatrix& k) {
  bool ok = k.hi == 255;
  for (int r = 0; r < 3; ++r) {
    ok = ok && k.in_off8[r] == 0 && k.add[r] >= -(1 << 30) && k.add[r] <= (1 << 30);
    for (int j = 0; j < 3; ++j) ok = ok && k.m[r][j] >= INT16_MIN && k.m[r][j] <= INT16_MAX;
  }
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
