// Vector paths of the kimgp_csc_new row stages; tails go to the scalar rows.
#include "imgp/csc/csc_new_rows.h"

#include <type_traits>

#include "common/internal/simd.h"

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/csc/csc_new_rows.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "common/internal/x86_raw-inl.h"
#include "imgp/csc/csc_new_rows.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR
// int32 lanes: the map's sums fit them (NewMatrixFits), so they equal the
// scalar definition's wider sums.
void NewMatrixRowVec(const csc::NewMatrix& k, int r, const int32_t* c0, const int32_t* c1,
                     const int32_t* c2, int32_t* o, size_t n) {
  const hn::ScalableTag<int32_t> d;
  const size_t lanes = hn::Lanes(d);
  const auto m0 = hn::Set(d, k.m[r][0]), m1 = hn::Set(d, k.m[r][1]), m2 = hn::Set(d, k.m[r][2]);
  const auto f0 = hn::Set(d, k.in_off8[0]), f1 = hn::Set(d, k.in_off8[1]),
             f2 = hn::Set(d, k.in_off8[2]);
  const auto add = hn::Set(d, k.add[r]), zero = hn::Zero(d), hi = hn::Set(d, k.hi);
  size_t x = 0;
  for (; x + lanes <= n; x += lanes) {
    auto acc = hn::Add(hn::Mul(m0, hn::Sub(hn::LoadU(d, c0 + x), f0)), add);
    acc = hn::Add(acc, hn::Mul(m1, hn::Sub(hn::LoadU(d, c1 + x), f1)));
    acc = hn::Add(acc, hn::Mul(m2, hn::Sub(hn::LoadU(d, c2 + x), f2)));
    acc = hn::ShiftRight<csc::kNewShift>(acc);
    hn::StoreU(hn::Min(hn::Max(acc, zero), hi), d, o + x);
  }
  csc::scalar::NewMatrixRow(k, r, c0, c1, c2, o, x, n);
}

// ---- Chroma rows. ----

// 16-bit lanes of whole 256-bit registers where there are any (AVX-512
// included: the rows are short), else of 128-bit ones.
#if HWY_TARGET <= HWY_AVX2
using DW = hn::Full256<int16_t>;
#else
using DW = hn::Full128<int16_t>;
#endif
using VW = hn::Vec<DW>;
using DB = hn::Repartition<uint8_t, DW>;
using DUW = hn::RebindToUnsigned<DW>;

// Codes in 16-bit lanes from a run of 16-bit words (wide 1: 10 bits low, 2:
// 10 bits high).
HWY_INLINE VW Codes(hn::Vec<DUW> words, int wide) {
  const DW d;
  const DUW du;
  return hn::BitCast(d, wide == 1 ? hn::And(words, hn::Set(du, 1023)) : hn::ShiftRight<6>(words));
}

#if HWY_TARGET == HWY_NEON
// Byte rows as widening products: 2 wa a + 2 (4 - wa) b - off8 into
// out0/out1 and, with kPair, the same of (b, a) into b0/b1 from the same
// loads. The loops bump their pointers (post-increment addressing). Returns
// the samples done.
template <bool kPair>
size_t ChromaBytesNeon(const uint8_t* ra, const uint8_t* rb, int wa, int pack, int32_t off8,
                       int16_t* out0, int16_t* out1, int16_t* b0, int16_t* b1, size_t cw) {
  const uint8x8_t ma = vdup_n_u8(static_cast<uint8_t>(2 * wa));
  const uint8x8_t mb = vdup_n_u8(static_cast<uint8_t>(8 - 2 * wa));
  const int16x8_t off = vdupq_n_s16(static_cast<int16_t>(off8));
  const auto row = [&](uint8x8_t a, uint8x8_t b) {
    return vsubq_s16(vreinterpretq_s16_u16(vmlal_u8(vmull_u8(a, ma), b, mb)), off);
  };
  const uint8_t *pa = ra, *pb = rb;
  size_t k;
  if (pack == 1) {
    k = cw & ~size_t{15};
    int16_t* q0 = b0;
    for (int16_t *p0 = out0, *const end = out0 + k; p0 != end;
         p0 += 16, q0 += kPair ? 16 : 0, pa += 16, pb += 16) {
      const uint8x16_t a = vld1q_u8(pa), b = vld1q_u8(pb);
      vst1q_s16(p0, row(vget_low_u8(a), vget_low_u8(b)));
      vst1q_s16(p0 + 8, row(vget_high_u8(a), vget_high_u8(b)));
      if constexpr (kPair) {
        vst1q_s16(q0, row(vget_low_u8(b), vget_low_u8(a)));
        vst1q_s16(q0 + 8, row(vget_high_u8(b), vget_high_u8(a)));
      }
    }
    if (k + 8 <= cw) {
      const uint8x8_t a = vld1_u8(ra + k), b = vld1_u8(rb + k);
      vst1q_s16(out0 + k, row(a, b));
      if constexpr (kPair) vst1q_s16(b0 + k, row(b, a));
      k += 8;
    }
  } else {
    k = cw & ~size_t{7};
    int16_t *p1 = out1, *q0 = b0, *q1 = b1;
    for (int16_t *p0 = out0, *const end = out0 + k; p0 != end;
         p0 += 8, p1 += 8, q0 += kPair ? 8 : 0, q1 += kPair ? 8 : 0, pa += 16, pb += 16) {
      const uint8x8x2_t a = vld2_u8(pa), b = vld2_u8(pb);
      vst1q_s16(p0, row(a.val[0], b.val[0]));
      vst1q_s16(p1, row(a.val[1], b.val[1]));
      if constexpr (kPair) {
        vst1q_s16(q0, row(b.val[0], a.val[0]));
        vst1q_s16(q1, row(b.val[1], a.val[1]));
      }
    }
  }
  return k;
}
#endif

void NewChromaRowVec(const uint8_t* ra, const uint8_t* rb, int wa, int pack, int wide,
                     int32_t off8, int16_t* out0, int16_t* out1, size_t cw) {
  const DW d;
  const DUW du;
  const DB d8;
  const hn::Rebind<uint8_t, DW> dh8;
  const size_t L = hn::Lanes(d);
  const VW ka = hn::Set(d, static_cast<int16_t>(wa)), kb = hn::Set(d, static_cast<int16_t>(4 - wa));
  const VW off = hn::Set(d, static_cast<int16_t>(off8));
  const auto blend = [&](VW a, VW b) {
    return hn::Sub(hn::ShiftLeft<1>(hn::Add(hn::Mul(a, ka), hn::Mul(b, kb))), off);
  };
  const auto words = [&](const uint8_t* p) { return hn::BitCast(du, hn::LoadU(d8, p)); };
  size_t k = 0;
#if HWY_TARGET == HWY_NEON
  if (wide == 0) k = ChromaBytesNeon<false>(ra, rb, wa, pack, off8, out0, out1, nullptr, nullptr, cw);
#endif
  if (pack == 1 && wide == 0) {
    for (; k + L <= cw; k += L) {
      hn::StoreU(blend(hn::PromoteTo(d, hn::LoadU(dh8, ra + k)), hn::PromoteTo(d, hn::LoadU(dh8, rb + k))),
                 d, out0 + k);
    }
  } else if (pack == 1) {
    for (; k + L <= cw; k += L) {
      hn::StoreU(blend(Codes(words(ra + 2 * k), wide), Codes(words(rb + 2 * k), wide)), d, out0 + k);
    }
  } else if (wide == 0) {
    // Byte pairs as words: the even sample low, the odd one high.
    const auto lo = hn::Set(du, 0xFF);
    for (; k + L <= cw; k += L) {
      const auto a = words(ra + 2 * k), b = words(rb + 2 * k);
      hn::StoreU(blend(hn::BitCast(d, hn::And(a, lo)), hn::BitCast(d, hn::And(b, lo))), d, out0 + k);
      hn::StoreU(blend(hn::BitCast(d, hn::ShiftRight<8>(a)), hn::BitCast(d, hn::ShiftRight<8>(b))), d,
                 out1 + k);
    }
  } else {
    // Word pairs from bytes (rows of an odd stride are not word-aligned):
    // even words to out0, odd ones to out1.
    for (; k + L <= cw; k += L) {
      const auto a0 = words(ra + 4 * k), a1 = words(ra + 4 * k + 2 * L);
      const auto b0 = words(rb + 4 * k), b1 = words(rb + 4 * k + 2 * L);
      hn::StoreU(blend(Codes(hn::ConcatEven(du, a1, a0), wide), Codes(hn::ConcatEven(du, b1, b0), wide)),
                 d, out0 + k);
      hn::StoreU(blend(Codes(hn::ConcatOdd(du, a1, a0), wide), Codes(hn::ConcatOdd(du, b1, b0), wide)),
                 d, out1 + k);
    }
  }
  csc::scalar::NewChromaRow(ra, rb, wa, pack, wide, off8, out0, out1, k, cw);
}

void NewChromaPairVec(const uint8_t* ra, const uint8_t* rb, int pack, int wide, int32_t off8,
                      int16_t* a0, int16_t* a1, int16_t* b0, int16_t* b1, size_t cw) {
#if HWY_TARGET == HWY_NEON
  if (wide == 0) {
    const size_t k = ChromaBytesNeon<true>(ra, rb, 3, pack, off8, a0, a1, b0, b1, cw);
    csc::scalar::NewChromaRow(ra, rb, 3, pack, wide, off8, a0, a1, k, cw);
    csc::scalar::NewChromaRow(rb, ra, 3, pack, wide, off8, b0, b1, k, cw);
    return;
  }
#endif
  NewChromaRowVec(ra, rb, 3, pack, wide, off8, a0, a1, cw);
  NewChromaRowVec(rb, ra, 3, pack, wide, off8, b0, b1, cw);
}

// ---- The fused YUV to RGB row. ----
//
// Each step takes 2 L pixels as two vectors of 16-bit lanes, A and B, that
// hold within every 128-bit block the block's half of the step (A: pixels
// 0-7 and 16-23 of a 256-bit step, B: 8-15 and 24-31): the arrangement in
// which interleaving luma with chroma, summing products in pairs and packing
// back keep the pixels in order, and packing A with B gives the step's bytes
// in order.

#if HWY_TARGET <= HWY_AVX2
// Whole vectors v0 (pixels 0 .. L-1) and v1 (L .. 2L-1) into the A and B
// arrangement.
HWY_INLINE void Arrange(VW v0, VW v1, VW* a, VW* b) {
  const DW d;
  *a = hn::ConcatLowerLower(d, v1, v0);
  *b = hn::ConcatUpperUpper(d, v1, v0);
}
#else
HWY_INLINE void Arrange(VW v0, VW v1, VW* a, VW* b) {
  *a = v0;
  *b = v1;
}
#endif

// Luma of a step in eighths less the offset, and its chroma, in the A and B
// arrangement.
struct Step {
  VW y[2], u[2], v[2];
};

HWY_INLINE void LoadStep(const uint8_t* y, int wide, const int16_t* u, const int16_t* v, bool half,
                         size_t x, int16_t yoff8, Step* s) {
  const DW d;
  const DB d8;
  const DUW du;
  const size_t L = hn::Lanes(d);
  const VW off = hn::Set(d, yoff8);
  if (wide == 0) {
#if HWY_TARGET == HWY_NEON
    // Widened and times 8 in one step (vshll).
    const uint8x16_t y8 = vld1q_u8(y + x);
    s->y[0] = VW(vsubq_s16(vreinterpretq_s16_u16(vshll_n_u8(vget_low_u8(y8), 3)), off.raw));
    s->y[1] = VW(vsubq_s16(vreinterpretq_s16_u16(vshll_n_u8(vget_high_u8(y8), 3)), off.raw));
#else
    const auto y8 = hn::LoadU(d8, y + x), zero = hn::Zero(d8);
    s->y[0] = hn::Sub(hn::ShiftLeft<3>(hn::BitCast(d, hn::InterleaveLower(d8, y8, zero))), off);
    s->y[1] = hn::Sub(hn::ShiftLeft<3>(hn::BitCast(d, hn::InterleaveUpper(d8, y8, zero))), off);
#endif
  } else {
    Arrange(Codes(hn::BitCast(du, hn::LoadU(d8, y + 2 * x)), wide),
            Codes(hn::BitCast(du, hn::LoadU(d8, y + 2 * x + 2 * L)), wide), &s->y[0], &s->y[1]);
    for (VW& yv : s->y) yv = hn::Sub(hn::ShiftLeft<3>(yv), off);
  }
  const int16_t* c[2] = {u, v};
  VW* out[2] = {s->u, s->v};
  for (int i = 0; i < 2; ++i) {
    if (half) {
#if HWY_TARGET == HWY_NEON
      // The halving add and one zip giving both halves (in place: GCC
      // copies both registers around vzipq_s16).
      int16x8_t a = vld1q_s16(c[i] + x / 2);
      int16x8_t mid = vhaddq_s16(a, vld1q_s16(c[i] + x / 2 + 1));
#if defined(__arm__) && !defined(__aarch64__)
      asm("vzip.16 %q0, %q1" : "+w"(a), "+w"(mid));
#else
      const int16x8x2_t z = vzipq_s16(a, mid);
      a = z.val[0];
      mid = z.val[1];
#endif
      out[i][0] = VW(a);
      out[i][1] = VW(mid);
#else
      const VW a = hn::LoadU(d, c[i] + x / 2), an = hn::LoadU(d, c[i] + x / 2 + 1);
      const VW mid = hn::ShiftRight<1>(hn::Add(a, an));
      out[i][0] = hn::InterleaveLower(d, a, mid);
      out[i][1] = hn::InterleaveUpper(d, a, mid);
#endif
    } else {
      Arrange(hn::LoadU(d, c[i] + x), hn::LoadU(d, c[i] + x + L), &out[i][0], &out[i][1]);
    }
  }
}

// The map's 16-bit coefficients. Red takes Y and V, blue Y and U, green all
// three; blue's U coefficient, past 16 bits for 8-bit limited-range sources,
// is split in two halves (hi + lo), else it is hi and lo is 0.
struct Coefs {
  int16_t y, rv, gu, gv, bu_hi, bu_lo;
  int32_t add;
};
Coefs CoefsOf(const csc::NewMatrix& k) {
  const auto c = [](int32_t v) { return static_cast<int16_t>(v); };
  const auto hi = [](int32_t v) { return static_cast<int16_t>(v == int16_t(v) ? v : v / 2); };
  const auto lo = [](int32_t v) { return static_cast<int16_t>(v == int16_t(v) ? 0 : v - v / 2); };
  return {c(k.m[0][0]), c(k.m[0][2]), c(k.m[1][1]), c(k.m[1][2]),
          hi(k.m[2][1]), lo(k.m[2][1]), k.add[0]};
}

#if HWY_TARGET == HWY_NEON
// The coefficients as lanes of two d registers: a product by a lane takes no
// register moves.
struct CoefRegs {
  int16x4_t m0, m1;  // y, rv, gu, gv; bu_hi, bu_lo
};
HWY_INLINE CoefRegs Regs(const Coefs& k) {
  const int16_t c0[4] = {k.y, k.rv, k.gu, k.gv}, c1[4] = {k.bu_hi, k.bu_lo, 0, 0};
  return {vld1_s16(c0), vld1_s16(c1)};
}
// Channel kC (0 red, 1 green, 2 blue) of four pixels: its sum started from
// the chroma products, so that luma accumulates in place.
template <int kC, bool kBSplit>
HWY_INLINE int32x4_t Sum4(int16x4_t y, int16x4_t u, int16x4_t v, const CoefRegs& c) {
  int32x4_t acc;
  if (kC == 0) {
    acc = vmull_lane_s16(v, c.m0, 1);
  } else if (kC == 1) {
    acc = vmlal_lane_s16(vmull_lane_s16(u, c.m0, 2), v, c.m0, 3);
  } else {
    acc = vmull_lane_s16(u, c.m1, 0);
    if (kBSplit) acc = vmlal_lane_s16(acc, u, c.m1, 1);
  }
  return vmlal_lane_s16(acc, y, c.m0, 0);
}
// Channel kC of eight pixels as bytes: floor(acc / 2^16) is the high half of
// each lane (one unzip), and rounding that by one more halving equals
// floor((acc + 2^16) / 2^17), saturated to bytes.
template <int kC, bool kBSplit>
HWY_INLINE uint8x8_t Codes8(int16x8_t y, int16x8_t u, int16x8_t v, const CoefRegs& c) {
  const int32x4_t lo = Sum4<kC, kBSplit>(vget_low_s16(y), vget_low_s16(u), vget_low_s16(v), c);
  const int32x4_t hi = Sum4<kC, kBSplit>(vget_high_s16(y), vget_high_s16(u), vget_high_s16(v), c);
#if defined(__arm__) && !defined(__aarch64__)
  // The unzip in place: GCC copies both registers around vuzpq_s16.
  int16x8_t l = vreinterpretq_s16_s32(lo), h = vreinterpretq_s16_s32(hi);
  asm("vuzp.16 %q0, %q1" : "+w"(l), "+w"(h));
  return vqrshrun_n_s16(h, 1);
#else
  return vqrshrun_n_s16(vuzpq_s16(vreinterpretq_s16_s32(lo), vreinterpretq_s16_s32(hi)).val[1], 1);
#endif
}
static_assert(csc::kNewShift == 17, "Codes8 takes 16 bits by the unzip and one by the rounding");
// Converts and stores the step's 16 pixels, eight at a time (A is pixels
// 0-7, B 8-15), one channel at a time.
template <int kPx, int kR, int kG, int kB, int kA, bool kBSplit>
HWY_INLINE void StoreStep(const Step& s, const CoefRegs& c, uint8_t* q) {
  for (int i = 0; i < 2; ++i) {
    const int16x8_t y = s.y[i].raw, u = s.u[i].raw, v = s.v[i].raw;
    uint8x8_t ch[4];
    ch[kR] = Codes8<0, kBSplit>(y, u, v, c);
    ch[kG] = Codes8<1, kBSplit>(y, u, v, c);
    ch[kB] = Codes8<2, kBSplit>(y, u, v, c);
    if (kPx == 4) {
      ch[kA] = vdup_n_u8(255);
      vst4_u8(q + 32 * i, (uint8x8x4_t{{ch[0], ch[1], ch[2], ch[3]}}));
    } else {
      vst3_u8(q + 24 * i, (uint8x8x3_t{{ch[0], ch[1], ch[2]}}));
    }
  }
}
#define KELO_NEW_FUSED 1
#elif KELO_X86_RAW
// Sums of products in pairs (pmaddwd): the luma part and the constant once
// from luma interleaved with a constant lane K (add = K c), the chroma parts
// from U interleaved with V; a coefficient too wide for 16 bits takes a
// second sum.
constexpr int16_t kConstLane = 4;
HWY_INLINE VW Pair(int16_t a, int16_t b) {
  const hn::Repartition<int32_t, DW> dl;
  return hn::BitCast(DW(), hn::Set(dl, static_cast<int32_t>(static_cast<uint16_t>(a) |
                                                        (static_cast<uint32_t>(static_cast<uint16_t>(b)) << 16))));
}
// Blue's U coefficient, when split, takes U twice (interleaved with itself)
// and both halves in one sum.
struct CoefRegs {
  VW luma, r, g, b;
};
HWY_INLINE CoefRegs Regs(const Coefs& k) {
  return {Pair(k.y, static_cast<int16_t>(k.add / kConstLane)), Pair(0, k.rv), Pair(k.gu, k.gv),
          Pair(k.bu_hi, k.bu_lo)};
}
template <bool kBSplit>
HWY_INLINE void StepRgb(const Step& s, const CoefRegs& k, hn::Vec<DB>* r, hn::Vec<DB>* g,
                        hn::Vec<DB>* b) {
  const DW d;
  const hn::Repartition<int32_t, DW> dl;
  using VL = hn::Vec<decltype(dl)>;
  const VW kc = hn::Set(d, kConstLane);
  const auto madd = [](VW a, VW m) { return VL{RawMulAddWords(a.raw, m.raw)}; };
  VW rw[2], gw[2], bw[2];
  for (int i = 0; i < 2; ++i) {
    VL rl[2], gl[2], bl[2];
    for (int h = 0; h < 2; ++h) {
      const VW yk = h ? hn::InterleaveUpper(d, s.y[i], kc) : hn::InterleaveLower(d, s.y[i], kc);
      const VW uv = h ? hn::InterleaveUpper(d, s.u[i], s.v[i]) : hn::InterleaveLower(d, s.u[i], s.v[i]);
      const VL ly = madd(yk, k.luma);
      VL bs;
      if (kBSplit) {
        const VW uu = h ? hn::InterleaveUpper(d, s.u[i], s.u[i]) : hn::InterleaveLower(d, s.u[i], s.u[i]);
        bs = hn::Add(ly, madd(uu, k.b));
      } else {
        bs = hn::Add(ly, madd(uv, k.b));
      }
      rl[h] = hn::ShiftRight<csc::kNewShift>(hn::Add(ly, madd(uv, k.r)));
      gl[h] = hn::ShiftRight<csc::kNewShift>(hn::Add(ly, madd(uv, k.g)));
      bl[h] = hn::ShiftRight<csc::kNewShift>(bs);
    }
    rw[i] = VW{RawPackWords(rl[0].raw, rl[1].raw)};
    gw[i] = VW{RawPackWords(gl[0].raw, gl[1].raw)};
    bw[i] = VW{RawPackWords(bl[0].raw, bl[1].raw)};
  }
  *r = hn::Vec<DB>{RawPackBytes(rw[0].raw, rw[1].raw)};
  *g = hn::Vec<DB>{RawPackBytes(gw[0].raw, gw[1].raw)};
  *b = hn::Vec<DB>{RawPackBytes(bw[0].raw, bw[1].raw)};
}
// Converts and stores the step's 2 L pixels.
template <int kPx, int kR, int kG, int kB, int kA, bool kBSplit>
HWY_INLINE void StoreStep(const Step& s, const CoefRegs& c, uint8_t* q) {
  const DB d8;
  hn::Vec<DB> ch[4];
  StepRgb<kBSplit>(s, c, &ch[kR], &ch[kG], &ch[kB]);
  if (kPx == 4) {
    ch[kA] = hn::Set(d8, 255);
    hn::StoreInterleaved4(ch[0], ch[1], ch[2], ch[3], d8, q);
  } else {
    hn::StoreInterleaved3(ch[0], ch[1], ch[2], d8, q);
  }
}
#define KELO_NEW_FUSED 1
#else
#define KELO_NEW_FUSED 0
#endif

#if KELO_NEW_FUSED
// The vector part of a row for one channel order: bytes kR, kG, kB (and kA)
// of each kPx-byte pixel. Returns the pixels done.
// kByteLuma and kHalf, when 0 or 1, fix wide == 0 and half for the loop (the
// step's loads then take no branches); -1 leaves them to the arguments.
template <int kPx, int kR, int kG, int kB, int kA, bool kBSplit, int kByteLuma = -1,
          int kHalf = -1>
size_t FusedRow(const Coefs& k, int16_t yoff8, const uint8_t* y, int wide, const int16_t* u,
                const int16_t* v, bool half, uint8_t* dst, size_t n) {
  if constexpr (kByteLuma == 1) wide = 0;
  if constexpr (kHalf >= 0) half = kHalf == 1;
  const size_t S = hn::Lanes(DB());
  const CoefRegs c = Regs(k);
  // The loop bumps its pointers (post-increment addressing on NEON).
  const size_t ystep = wide == 0 ? S : 2 * S, cstep = half ? S / 2 : S;
  const uint8_t* py = y;
  const int16_t *pu = u, *pv = v;
  uint8_t* pd = dst;
  size_t x = 0;
  for (; x + S <= n; x += S, py += ystep, pu += cstep, pv += cstep, pd += kPx * S) {
    Step s;
    LoadStep(py, wide, pu, pv, half, 0, yoff8, &s);
    StoreStep<kPx, kR, kG, kB, kA, kBSplit>(s, c, pd);
  }
  return x;
}

// The channel order (bytes kR, kG, kB, kA of kPx-byte pixels) and blue's
// split of a fused row, as a type.
template <int kPx_, int kR_, int kG_, int kB_, int kA_, bool kBSplit_>
struct FusedOrder {
  static constexpr int kPx = kPx_, kR = kR_, kG = kG_, kB = kB_, kA = kA_;
  static constexpr bool kBSplit = kBSplit_;
};
// Calls f with the FusedOrder of o; false for an order without one.
template <class F>
bool WithFusedOrder(const csc::NewRgbOrder& o, bool split, const F& f) {
  switch (o.px * 10000 + o.r * 1000 + o.g * 100 + o.b * 10 + (o.a < 0 ? 9 : o.a)) {
#define KELO_ORDER(code, ...)                 \
  case code:                                  \
    if (split) {                              \
      f(FusedOrder<__VA_ARGS__, true>{});     \
    } else {                                  \
      f(FusedOrder<__VA_ARGS__, false>{});    \
    }                                         \
    return true;
    KELO_ORDER(30129, 3, 0, 1, 2, 3)
    KELO_ORDER(32109, 3, 2, 1, 0, 3)
    KELO_ORDER(40123, 4, 0, 1, 2, 3)
    KELO_ORDER(42103, 4, 2, 1, 0, 3)
    KELO_ORDER(41230, 4, 1, 2, 3, 0)
    KELO_ORDER(43210, 4, 3, 2, 1, 0)
#undef KELO_ORDER
    default: return false;
  }
}

// The vector part of a row of order O. On the shipping target the loop is
// made for the kind of luma and chroma (the branches cost about half an
// instruction a pixel).
template <class O>
size_t FusedRowOf(const Coefs& c, int16_t yoff8, const uint8_t* y, int wide, const int16_t* u,
                  const int16_t* v, bool half, uint8_t* dst, size_t n) {
#if HWY_TARGET == HWY_NEON
  const auto row = [&](auto byte_luma, auto halved) {
    return FusedRow<O::kPx, O::kR, O::kG, O::kB, O::kA, O::kBSplit, decltype(byte_luma)::value,
                    decltype(halved)::value>(c, yoff8, y, wide, u, v, half, dst, n);
  };
  using F = std::integral_constant<int, 0>;
  using T = std::integral_constant<int, 1>;
  if (wide == 0) return half ? row(T{}, T{}) : row(T{}, F{});
  return half ? row(F{}, T{}) : row(F{}, F{});
#else
  return FusedRow<O::kPx, O::kR, O::kG, O::kB, O::kA, O::kBSplit>(c, yoff8, y, wide, u, v, half,
                                                                  dst, n);
#endif
}

void NewYuvToRgbRowVec(const csc::NewMatrix& k, const uint8_t* y, int wide, const int16_t* u,
                       const int16_t* v, bool half, const csc::NewRgbOrder& o, uint8_t* dst,
                       size_t n) {
  const Coefs c = CoefsOf(k);
  size_t x = 0;
  WithFusedOrder(o, c.bu_lo != 0, [&](auto order) {
    x = FusedRowOf<decltype(order)>(c, static_cast<int16_t>(k.in_off8[0]), y, wide, u, v, half,
                                    dst, n);
  });
  csc::scalar::NewYuvToRgbRow(k, y, wide, u, v, half, o, dst, x, n);
}
#else
void NewYuvToRgbRowVec(const csc::NewMatrix& k, const uint8_t* y, int wide, const int16_t* u,
                       const int16_t* v, bool half, const csc::NewRgbOrder& o, uint8_t* dst,
                       size_t n) {
  csc::scalar::NewYuvToRgbRow(k, y, wide, u, v, half, o, dst, 0, n);
}
#endif  // KELO_NEW_FUSED

#else   // HWY_SCALAR: the scalar rows.
void NewMatrixRowVec(const csc::NewMatrix& k, int r, const int32_t* c0, const int32_t* c1,
                     const int32_t* c2, int32_t* o, size_t n) {
  csc::scalar::NewMatrixRow(k, r, c0, c1, c2, o, 0, n);
}
void NewChromaRowVec(const uint8_t* ra, const uint8_t* rb, int wa, int pack, int wide,
                     int32_t off8, int16_t* out0, int16_t* out1, size_t cw) {
  csc::scalar::NewChromaRow(ra, rb, wa, pack, wide, off8, out0, out1, 0, cw);
}
void NewChromaPairVec(const uint8_t* ra, const uint8_t* rb, int pack, int wide, int32_t off8,
                      int16_t* a0, int16_t* a1, int16_t* b0, int16_t* b1, size_t cw) {
  csc::scalar::NewChromaPair(ra, rb, pack, wide, off8, a0, a1, b0, b1, cw);
}
void NewYuvToRgbRowVec(const csc::NewMatrix& k, const uint8_t* y, int wide, const int16_t* u,
                       const int16_t* v, bool half, const csc::NewRgbOrder& o, uint8_t* dst,
                       size_t n) {
  csc::scalar::NewYuvToRgbRow(k, y, wide, u, v, half, o, dst, 0, n);
}
#endif  // HWY_TARGET != HWY_SCALAR

// A whole image, one choice of rows for all of its rows.
void NewYuvToRgbImageVec(const csc::NewYuvToRgbJob& j, int16_t* buf) {
  const size_t n = static_cast<size_t>(j.w), cw = j.half_h ? (n + 1) / 2 : n;
  const auto chroma = [&](const uint8_t* ra, const uint8_t* rb, int wa, int16_t* o0, int16_t* o1) {
    NewChromaRowVec(ra, rb, wa, j.pack, j.wide, j.off8, o0, o1, cw);
  };
  const auto pair = [&](const uint8_t* ra, const uint8_t* rb, int16_t* a0, int16_t* a1,
                        int16_t* b0, int16_t* b1) {
    NewChromaPairVec(ra, rb, j.pack, j.wide, j.off8, a0, a1, b0, b1, cw);
  };
#if HWY_TARGET != HWY_SCALAR && KELO_NEW_FUSED
  const Coefs c = CoefsOf(j.k);
  const int16_t yoff8 = static_cast<int16_t>(j.k.in_off8[0]);
  const bool done = WithFusedOrder(j.o, c.bu_lo != 0, [&](auto order) {
    csc::NewYuvToRgbRows(j, buf, chroma, pair,
                         [&](const uint8_t* y, const int16_t* u, const int16_t* v, uint8_t* d) {
      const size_t x = FusedRowOf<decltype(order)>(c, yoff8, y, j.wide, u, v, j.half_h, d, n);
      if (x < n) csc::scalar::NewYuvToRgbRow(j.k, y, j.wide, u, v, j.half_h, j.o, d, x, n);
    });
  });
  if (done) return;
#endif
  csc::NewYuvToRgbRows(j, buf, chroma, pair,
                       [&](const uint8_t* y, const int16_t* u, const int16_t* v, uint8_t* d) {
    csc::scalar::NewYuvToRgbRow(j.k, y, j.wide, u, v, j.half_h, j.o, d, 0, n);
  });
}
#undef KELO_NEW_FUSED

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_HAVE_HWY

#if !KELO_HAVE_HWY || HWY_ONCE
namespace kelo {
namespace csc {
namespace scalar {
inline void NewMatrixRowVec(const NewMatrix& k, int r, const int32_t* c0, const int32_t* c1,
                            const int32_t* c2, int32_t* o, size_t n) {
  NewMatrixRow(k, r, c0, c1, c2, o, 0, n);
}
inline void NewChromaRowVec(const uint8_t* ra, const uint8_t* rb, int wa, int pack, int wide,
                            int32_t off8, int16_t* out0, int16_t* out1, size_t cw) {
  NewChromaRow(ra, rb, wa, pack, wide, off8, out0, out1, 0, cw);
}
inline void NewChromaPairVec(const uint8_t* ra, const uint8_t* rb, int pack, int wide, int32_t off8,
                             int16_t* a0, int16_t* a1, int16_t* b0, int16_t* b1, size_t cw) {
  NewChromaPair(ra, rb, pack, wide, off8, a0, a1, b0, b1, cw);
}
inline void NewYuvToRgbRowVec(const NewMatrix& k, const uint8_t* y, int wide, const int16_t* u,
                              const int16_t* v, bool half, const NewRgbOrder& o, uint8_t* dst,
                              size_t n) {
  NewYuvToRgbRow(k, y, wide, u, v, half, o, dst, 0, n);
}
inline void NewYuvToRgbImageVec(const NewYuvToRgbJob& j, int16_t* buf) {
  const size_t n = static_cast<size_t>(j.w), cw = j.half_h ? (n + 1) / 2 : n;
  NewYuvToRgbRows(
      j, buf,
      [&](const uint8_t* ra, const uint8_t* rb, int wa, int16_t* o0, int16_t* o1) {
        NewChromaRow(ra, rb, wa, j.pack, j.wide, j.off8, o0, o1, 0, cw);
      },
      [&](const uint8_t* ra, const uint8_t* rb, int16_t* a0, int16_t* a1, int16_t* b0,
          int16_t* b1) { NewChromaPair(ra, rb, j.pack, j.wide, j.off8, a0, a1, b0, b1, cw); },
      [&](const uint8_t* y, const int16_t* u, const int16_t* v, uint8_t* d) {
        NewYuvToRgbRow(j.k, y, j.wide, u, v, j.half_h, j.o, d, 0, n);
      });
}
}  // namespace scalar
}  // namespace csc

KELO_VEC_EXPORT(NewMatrixRowVec);
KELO_VEC_EXPORT(NewChromaRowVec);
KELO_VEC_EXPORT(NewChromaPairVec);
KELO_VEC_EXPORT(NewYuvToRgbRowVec);
KELO_VEC_EXPORT(NewYuvToRgbImageVec);

namespace csc {
bool NewMatrixFits(const NewMatrix& k, int32_t max_in8) {
  for (int r = 0; r < 3; ++r) {
    int64_t bound = k.add[r] < 0 ? -int64_t{k.add[r]} : k.add[r];
    for (int j = 0; j < 3; ++j) {
      const int64_t lo = k.in_off8[j], span = lo > max_in8 - lo ? lo : max_in8 - lo;
      bound += (k.m[r][j] < 0 ? -int64_t{k.m[r][j]} : k.m[r][j]) * span;
    }
    if (bound > INT32_MAX) return false;
  }
  return true;
}
void NewMatrixRow(const NewMatrix& k, int r, const int32_t* c0, const int32_t* c1,
                  const int32_t* c2, int32_t* o, size_t n) {
  KELO_VEC_CALL(NewMatrixRowVec, scalar::NewMatrixRowVec)(k, r, c0, c1, c2, o, n);
}

bool NewYuvToRgbFits(const NewMatrix& k) {
  const auto in16 = [](int32_t v) { return v >= -32768 && v <= 32767; };
  const auto halves16 = [&](int32_t v) { return in16(v / 2) && in16(v - v / 2); };
  // Red's V coefficient stays within 16 bits for every standard; blue's U
  // coefficient may take two halves.
  return k.m[0][1] == 0 && k.m[2][2] == 0 && k.m[1][0] == k.m[0][0] && k.m[2][0] == k.m[0][0] &&
         in16(k.m[0][0]) && in16(k.m[1][1]) && in16(k.m[1][2]) && in16(k.m[0][2]) &&
         halves16(k.m[2][1]) && k.add[0] == 1 << (kNewShift - 1) && k.add[1] == k.add[0] &&
         k.add[2] == k.add[0] && k.hi == 255 && in16(k.in_off8[0]);
}
void NewChromaRow(const uint8_t* ra, const uint8_t* rb, int wa, int pack, int wide, int32_t off8,
                  int16_t* out0, int16_t* out1, size_t cw) {
  KELO_VEC_CALL(NewChromaRowVec, scalar::NewChromaRowVec)(ra, rb, wa, pack, wide, off8, out0, out1,
                                                          cw);
  NewChromaRepeat(pack, out0, out1, cw);
}
void NewChromaPair(const uint8_t* ra, const uint8_t* rb, int pack, int wide, int32_t off8,
                   int16_t* a0, int16_t* a1, int16_t* b0, int16_t* b1, size_t cw) {
  KELO_VEC_CALL(NewChromaPairVec, scalar::NewChromaPairVec)(ra, rb, pack, wide, off8, a0, a1, b0,
                                                            b1, cw);
}
void NewYuvToRgbRow(const NewMatrix& k, const uint8_t* y, int wide, const int16_t* u,
                    const int16_t* v, bool half, const NewRgbOrder& o, uint8_t* dst, size_t n) {
  KELO_VEC_CALL(NewYuvToRgbRowVec, scalar::NewYuvToRgbRowVec)(k, y, wide, u, v, half, o, dst, n);
}
void NewYuvToRgbImage(const NewYuvToRgbJob& j, int16_t* buf) {
  KELO_VEC_CALL(NewYuvToRgbImageVec, scalar::NewYuvToRgbImageVec)(j, buf);
}
}  // namespace csc
}  // namespace kelo
#endif  // !KELO_HAVE_HWY || HWY_ONCE
