// Vector paths of the kimgp_csc_new row stages; tails go to the scalar rows.
#include "imgp/csc/csc_new_rows.h"

#include <algorithm>
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
// Byte rows as widening products: 32 wa a + 32 (4 - wa) b - 16384 into
// out0/out1 and, with kPair, the same of (b, a) into b0/b1 from the same
// loads. The loops bump their pointers (post-increment addressing). Returns
// the samples done.
template <bool kPair>
size_t ChromaBytesNeon(const uint8_t* ra, const uint8_t* rb, int wa, int pack, int16_t* out0,
                       int16_t* out1, int16_t* b0, int16_t* b1, size_t cw) {
  const uint8x8_t ma = vdup_n_u8(static_cast<uint8_t>(32 * wa));
  const uint8x8_t mb = vdup_n_u8(static_cast<uint8_t>(32 * (4 - wa)));
  const int16x8_t off = vdupq_n_s16(16384);
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

// Rows ra, rb blended wa : 4 - wa into out0/out1 and, with kPair, the same
// of (rb, ra) into b0/b1 from the same loads. 16-bit lanes wrap, and each
// sample's true value fits them.
template <bool kPair>
void ChromaRowsVec(const uint8_t* ra, const uint8_t* rb, int wa, int pack, int wide,
                   int16_t* out0, int16_t* out1, int16_t* b0, int16_t* b1, size_t cw) {
  const DW d;
  const DUW du;
  const DB d8;
  const hn::Rebind<uint8_t, DW> dh8;
  const size_t L = hn::Lanes(d);
  const int sh = wide ? 3 : 5;
  const VW ka = hn::Set(d, static_cast<int16_t>(wa << sh));
  const VW kb = hn::Set(d, static_cast<int16_t>((4 - wa) << sh));
  const VW off = hn::Set(d, int16_t{16384});
  const auto blend = [&](VW a, VW b) { return hn::Sub(hn::Add(hn::Mul(a, ka), hn::Mul(b, kb)), off); };
  // Sample k .. k + L - 1 of channel c from codes a (row ra) and b (rb).
  const auto put = [&](VW a, VW b, int c, size_t k) {
    hn::StoreU(blend(a, b), d, (c ? out1 : out0) + k);
    if (kPair) hn::StoreU(blend(b, a), d, (c ? b1 : b0) + k);
  };
  const auto words = [&](const uint8_t* p) { return hn::BitCast(du, hn::LoadU(d8, p)); };
  size_t k = 0;
#if HWY_TARGET == HWY_NEON
  if (wide == 0) k = ChromaBytesNeon<kPair>(ra, rb, wa, pack, out0, out1, b0, b1, cw);
#endif
  if (pack == 1 && wide == 0) {
    for (; k + L <= cw; k += L) {
      put(hn::PromoteTo(d, hn::LoadU(dh8, ra + k)), hn::PromoteTo(d, hn::LoadU(dh8, rb + k)), 0, k);
    }
  } else if (pack == 1) {
    for (; k + L <= cw; k += L) put(Codes(words(ra + 2 * k), wide), Codes(words(rb + 2 * k), wide), 0, k);
  } else if (wide == 0) {
    // Byte pairs as words: the even sample low, the odd one high.
    const auto lo = hn::Set(du, 0xFF);
    for (; k + L <= cw; k += L) {
      const auto a = words(ra + 2 * k), b = words(rb + 2 * k);
      put(hn::BitCast(d, hn::And(a, lo)), hn::BitCast(d, hn::And(b, lo)), 0, k);
      put(hn::BitCast(d, hn::ShiftRight<8>(a)), hn::BitCast(d, hn::ShiftRight<8>(b)), 1, k);
    }
  } else {
    // Word pairs from bytes (rows of an odd stride are not word-aligned):
    // even words to out0, odd ones to out1.
    for (; k + L <= cw; k += L) {
      const auto a0 = words(ra + 4 * k), a1 = words(ra + 4 * k + 2 * L);
      const auto c0 = words(rb + 4 * k), c1 = words(rb + 4 * k + 2 * L);
      put(Codes(hn::ConcatEven(du, a1, a0), wide), Codes(hn::ConcatEven(du, c1, c0), wide), 0, k);
      put(Codes(hn::ConcatOdd(du, a1, a0), wide), Codes(hn::ConcatOdd(du, c1, c0), wide), 1, k);
    }
  }
  csc::scalar::NewChromaRow(ra, rb, wa, pack, wide, out0, out1, k, cw);
  if (kPair) csc::scalar::NewChromaRow(rb, ra, wa, pack, wide, b0, b1, k, cw);
}

void NewChromaRowVec(const uint8_t* ra, const uint8_t* rb, int wa, int pack, int wide,
                     int16_t* out0, int16_t* out1, size_t cw) {
  ChromaRowsVec<false>(ra, rb, wa, pack, wide, out0, out1, nullptr, nullptr, cw);
}

void NewChromaPairVec(const uint8_t* ra, const uint8_t* rb, int pack, int wide, int16_t* a0,
                      int16_t* a1, int16_t* b0, int16_t* b1, size_t cw) {
  ChromaRowsVec<true>(ra, rb, 3, pack, wide, a0, a1, b0, b1, cw);
}

// ---- The fused YUV to RGB row. ----
//
// Each step takes 2 L pixels as two vectors of 16-bit lanes, A and B, that
// hold within every 128-bit block the block's half of the step (A: pixels
// 0-7 and 16-23 of a 256-bit step, B: 8-15 and 24-31): the arrangement that
// widening luma bytes and interleaving chroma with its means give within
// blocks, and in which packing A with B gives the step's bytes in order.

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

// Luma (yx) and chroma of a step, in the A and B arrangement. Chroma lanes
// hold t_k at even pixels and t_k + t_k+1 at odd ones when halved, else t:
// the chroma coefficients are doubled in the lanes of t (OnLanes).
struct Step {
  VW y[2], u[2], v[2];
};

HWY_INLINE void LoadStep(const uint8_t* y, int wide, const int16_t* u, const int16_t* v, bool half,
                         size_t x, Step* s) {
  const DW d;
  const DB d8;
  const DUW du;
  const size_t L = hn::Lanes(d);
  if (wide == 0) {
#if HWY_TARGET == HWY_NEON
    // Widened and shifted in one step (vshll).
    const uint8x16_t y8 = vld1q_u8(y + x);
    s->y[0] = VW(vreinterpretq_s16_u16(vshll_n_u8(vget_low_u8(y8), 7)));
    s->y[1] = VW(vreinterpretq_s16_u16(vshll_n_u8(vget_high_u8(y8), 7)));
#else
    const auto y8 = hn::LoadU(d8, y + x), zero = hn::Zero(d8);
    s->y[0] = hn::ShiftLeft<7>(hn::BitCast(d, hn::InterleaveLower(d8, y8, zero)));
    s->y[1] = hn::ShiftLeft<7>(hn::BitCast(d, hn::InterleaveUpper(d8, y8, zero)));
#endif
  } else {
    // The code << 5 by two shifts (no mask register).
    const auto x32 = [&](const uint8_t* p) {
      const auto w = hn::BitCast(du, hn::LoadU(d8, p));
      return hn::BitCast(d, wide == 1 ? hn::ShiftRight<1>(hn::ShiftLeft<6>(w))
                                      : hn::ShiftLeft<5>(hn::ShiftRight<6>(w)));
    };
    Arrange(x32(y + 2 * x), x32(y + 2 * x + 2 * L), &s->y[0], &s->y[1]);
  }
  const int16_t* c[2] = {u, v};
  VW* out[2] = {s->u, s->v};
  for (int i = 0; i < 2; ++i) {
    if (half) {
#if HWY_TARGET == HWY_NEON
      // The sum with the next sample and one zip giving both halves (in
      // place: GCC copies both registers around vzipq_s16).
      int16x8_t a = vld1q_s16(c[i] + x / 2);
      int16x8_t mid = vaddq_s16(a, vld1q_s16(c[i] + x / 2 + 1));
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
      const VW a = hn::LoadU(d, c[i] + x / 2);
      const VW mid = hn::Add(a, hn::LoadU(d, c[i] + x / 2 + 1));
      out[i][0] = hn::InterleaveLower(d, a, mid);
      out[i][1] = hn::InterleaveUpper(d, a, mid);
#endif
    } else {
      Arrange(hn::LoadU(d, c[i] + x), hn::LoadU(d, c[i] + x + L), &out[i][0], &out[i][1]);
    }
  }
}

// A chroma coefficient on the lanes of a step: doubled on the even lanes and,
// unless chroma is halved, on the odd ones too (those holding t; a lane
// holding a sum of two takes it as is), since H(2 t, c) = H(t, 2 c).
struct LaneCoef {
  int16_t even, odd;
};
HWY_INLINE LaneCoef OnLanes(int16_t v, bool half) {
  const int16_t twice = static_cast<int16_t>(2 * v);
  return {twice, half ? v : twice};
}

#if HWY_TARGET == HWY_NEON
// Luma's coefficient as a lane, the chroma ones as vectors (OnLanes), and
// the constant.
struct CoefRegs {
  int16x4_t y;
  int16x8_t rv, gu, gv, bu, add;
};
HWY_INLINE CoefRegs Regs(const csc::NewYuvRgb& q, bool half) {
  const auto c = [&](int16_t v) {
    const LaneCoef l = OnLanes(v, half);
    const int16_t t[8] = {l.even, l.odd, l.even, l.odd, l.even, l.odd, l.even, l.odd};
    return vld1q_s16(t);
  };
  return {vdup_n_s16(q.y), c(q.rv), c(q.gu), c(q.gv), c(q.bu), vdupq_n_s16(q.add)};
}
// Converts and stores the step's 16 pixels, eight at a time (A is pixels
// 0-7, B 8-15).
template <int kPx, int kR, int kG, int kB, int kA>
HWY_INLINE void StoreStep(const Step& s, const CoefRegs& c, uint8_t* q) {
  for (int i = 0; i < 2; ++i) {
    const int16x8_t u = s.u[i].raw, v = s.v[i].raw;
    const int16x8_t l = vaddq_s16(vqrdmulhq_lane_s16(s.y[i].raw, c.y, 0), c.add);
    uint8x8_t ch[4];
    ch[kR] = vqshrun_n_s16(vaddq_s16(l, vqrdmulhq_s16(v, c.rv)), csc::kNewRgbFrac);
    ch[kG] = vqshrun_n_s16(vaddq_s16(vaddq_s16(l, vqrdmulhq_s16(u, c.gu)), vqrdmulhq_s16(v, c.gv)),
                           csc::kNewRgbFrac);
    ch[kB] = vqshrun_n_s16(vaddq_s16(l, vqrdmulhq_s16(u, c.bu)), csc::kNewRgbFrac);
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
struct CoefRegs {
  VW y, rv, gu, gv, bu, add;
};
// The chroma coefficients as OnLanes gives them.
HWY_INLINE CoefRegs Regs(const csc::NewYuvRgb& q, bool half) {
  const DW d;
  const hn::Repartition<uint32_t, DW> d32;
  const auto c = [&](int16_t v) {
    const LaneCoef l = OnLanes(v, half);
    const uint32_t lanes = static_cast<uint16_t>(l.even) | (uint32_t{static_cast<uint16_t>(l.odd)} << 16);
    return hn::BitCast(d, hn::Set(d32, lanes));
  };
  return {hn::Set(d, q.y), c(q.rv), c(q.gu), c(q.gv), c(q.bu), hn::Set(d, q.add)};
}
// Converts and stores the step's 2 L pixels: the A and B halves pack back
// into the step's bytes in order.
template <int kPx, int kR, int kG, int kB, int kA>
HWY_INLINE void StoreStep(const Step& s, const CoefRegs& c, uint8_t* q) {
  const DB d8;
  VW t[3][2];
  for (int i = 0; i < 2; ++i) {
    const VW l = hn::Add(hn::MulFixedPoint15(s.y[i], c.y), c.add);
    t[0][i] = hn::Add(l, hn::MulFixedPoint15(s.v[i], c.rv));
    t[1][i] = hn::Add(hn::Add(l, hn::MulFixedPoint15(s.u[i], c.gu)), hn::MulFixedPoint15(s.v[i], c.gv));
    t[2][i] = hn::Add(l, hn::MulFixedPoint15(s.u[i], c.bu));
  }
  hn::Vec<DB> ch[4];
  const int at[3] = {kR, kG, kB};
  for (int j = 0; j < 3; ++j) {
    ch[at[j]] = hn::Vec<DB>{RawPackBytes(hn::ShiftRight<csc::kNewRgbFrac>(t[j][0]).raw,
                                         hn::ShiftRight<csc::kNewRgbFrac>(t[j][1]).raw)};
  }
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
// kWide (luma as NewSample's wide) and kHalf (chroma halved) are fixed for
// the loop, so the step's loads take no branches. wide and half stay
// arguments: without them GCC's 32-bit ARM loop costs 0.14 instruction a
// pixel more.
template <int kPx, int kR, int kG, int kB, int kA, int kWide, bool kHalf>
size_t FusedRow(const CoefRegs& regs, const uint8_t* y, int wide, const int16_t* u,
                const int16_t* v, bool half, uint8_t* dst, size_t n) {
  const CoefRegs c = regs;  // a local copy stays in registers across the stores
  wide = kWide;
  half = kHalf;
  const size_t S = hn::Lanes(DB());
  // The loop bumps its pointers (post-increment addressing on NEON).
  const size_t ystep = wide == 0 ? S : 2 * S, cstep = half ? S / 2 : S;
  const uint8_t* py = y;
  const int16_t *pu = u, *pv = v;
  uint8_t* pd = dst;
  size_t x = 0;
  for (; x + S <= n; x += S, py += ystep, pu += cstep, pv += cstep, pd += kPx * S) {
    Step s;
    LoadStep(py, wide, pu, pv, half, 0, &s);
    StoreStep<kPx, kR, kG, kB, kA>(s, c, pd);
  }
  return x;
}

// The channel order (bytes kR, kG, kB, kA of kPx-byte pixels) of a fused
// row, as a type.
template <int kPx_, int kR_, int kG_, int kB_, int kA_>
struct FusedOrder {
  static constexpr int kPx = kPx_, kR = kR_, kG = kG_, kB = kB_, kA = kA_;
};
// Calls f with the FusedOrder of o; false for an order without one.
template <class F>
bool WithFusedOrder(const csc::NewRgbOrder& o, const F& f) {
  switch (o.px * 10000 + o.r * 1000 + o.g * 100 + o.b * 10 + (o.a < 0 ? 9 : o.a)) {
#define KELO_ORDER(code, ...)      \
  case code:                       \
    f(FusedOrder<__VA_ARGS__>{});  \
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

// The vector part of a row of order O, the loop made for the kind of luma
// and chroma (the branches cost about half an instruction a pixel); c from
// Regs(map, half), made once per image.
template <class O>
size_t FusedRowOf(const CoefRegs& c, const uint8_t* y, int wide, const int16_t* u,
                  const int16_t* v, bool half, uint8_t* dst, size_t n) {
  const auto row = [&](auto kind, auto halved) {
    return FusedRow<O::kPx, O::kR, O::kG, O::kB, O::kA, decltype(kind)::value,
                    decltype(halved)::value>(c, y, wide, u, v, half, dst, n);
  };
  using W0 = std::integral_constant<int, 0>;
  using W1 = std::integral_constant<int, 1>;
  using W2 = std::integral_constant<int, 2>;
  using F = std::false_type;
  using T = std::true_type;
  if (wide == 0) return half ? row(W0{}, T{}) : row(W0{}, F{});
  if (wide == 1) return half ? row(W1{}, T{}) : row(W1{}, F{});
  return half ? row(W2{}, T{}) : row(W2{}, F{});
}

void NewYuvToRgbRowVec(const csc::NewYuvRgb& q, const uint8_t* y, int wide, const int16_t* u,
                       const int16_t* v, bool half, const csc::NewRgbOrder& o, uint8_t* dst,
                       size_t n) {
  size_t x = 0;
  const CoefRegs c = Regs(q, half);
  WithFusedOrder(o, [&](auto order) { x = FusedRowOf<decltype(order)>(c, y, wide, u, v, half, dst, n); });
  csc::scalar::NewYuvToRgbRow(q, y, wide, u, v, half, o, dst, x, n);
}
#else
void NewYuvToRgbRowVec(const csc::NewYuvRgb& q, const uint8_t* y, int wide, const int16_t* u,
                       const int16_t* v, bool half, const csc::NewRgbOrder& o, uint8_t* dst,
                       size_t n) {
  csc::scalar::NewYuvToRgbRow(q, y, wide, u, v, half, o, dst, 0, n);
}
#endif  // KELO_NEW_FUSED

#else   // HWY_SCALAR: the scalar rows.
void NewMatrixRowVec(const csc::NewMatrix& k, int r, const int32_t* c0, const int32_t* c1,
                     const int32_t* c2, int32_t* o, size_t n) {
  csc::scalar::NewMatrixRow(k, r, c0, c1, c2, o, 0, n);
}
void NewChromaRowVec(const uint8_t* ra, const uint8_t* rb, int wa, int pack, int wide,
                     int16_t* out0, int16_t* out1, size_t cw) {
  csc::scalar::NewChromaRow(ra, rb, wa, pack, wide, out0, out1, 0, cw);
}
void NewChromaPairVec(const uint8_t* ra, const uint8_t* rb, int pack, int wide, int16_t* a0,
                      int16_t* a1, int16_t* b0, int16_t* b1, size_t cw) {
  csc::scalar::NewChromaPair(ra, rb, pack, wide, a0, a1, b0, b1, cw);
}
void NewYuvToRgbRowVec(const csc::NewYuvRgb& q, const uint8_t* y, int wide, const int16_t* u,
                       const int16_t* v, bool half, const csc::NewRgbOrder& o, uint8_t* dst,
                       size_t n) {
  csc::scalar::NewYuvToRgbRow(q, y, wide, u, v, half, o, dst, 0, n);
}
#endif  // HWY_TARGET != HWY_SCALAR

// A whole image, one choice of rows for all of its rows.
void NewYuvToRgbImageVec(const csc::NewYuvToRgbJob& j, int16_t* buf) {
  const size_t n = static_cast<size_t>(j.w), cw = j.half_h ? (n + 1) / 2 : n;
  const auto chroma = [&](const uint8_t* ra, const uint8_t* rb, int wa, int16_t* o0, int16_t* o1) {
    NewChromaRowVec(ra, rb, wa, j.pack, j.wide, o0, o1, cw);
  };
  const auto pair = [&](const uint8_t* ra, const uint8_t* rb, int16_t* a0, int16_t* a1,
                        int16_t* b0, int16_t* b1) {
    NewChromaPairVec(ra, rb, j.pack, j.wide, a0, a1, b0, b1, cw);
  };
#if HWY_TARGET != HWY_SCALAR && KELO_NEW_FUSED
  const CoefRegs c = Regs(j.q, j.half_h);
  const bool done = WithFusedOrder(j.o, [&](auto order) {
    csc::NewYuvToRgbRows(j, buf, chroma, pair,
                         [&](const uint8_t* y, const int16_t* u, const int16_t* v, uint8_t* d) {
      const size_t x = FusedRowOf<decltype(order)>(c, y, j.wide, u, v, j.half_h, d, n);
      if (x < n) csc::scalar::NewYuvToRgbRow(j.q, y, j.wide, u, v, j.half_h, j.o, d, x, n);
    });
  });
  if (done) return;
#endif
  csc::NewYuvToRgbRows(j, buf, chroma, pair,
                       [&](const uint8_t* y, const int16_t* u, const int16_t* v, uint8_t* d) {
    csc::scalar::NewYuvToRgbRow(j.q, y, j.wide, u, v, j.half_h, j.o, d, 0, n);
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
                            int16_t* out0, int16_t* out1, size_t cw) {
  NewChromaRow(ra, rb, wa, pack, wide, out0, out1, 0, cw);
}
inline void NewChromaPairVec(const uint8_t* ra, const uint8_t* rb, int pack, int wide, int16_t* a0,
                             int16_t* a1, int16_t* b0, int16_t* b1, size_t cw) {
  NewChromaPair(ra, rb, pack, wide, a0, a1, b0, b1, cw);
}
inline void NewYuvToRgbRowVec(const NewYuvRgb& q, const uint8_t* y, int wide, const int16_t* u,
                              const int16_t* v, bool half, const NewRgbOrder& o, uint8_t* dst,
                              size_t n) {
  NewYuvToRgbRow(q, y, wide, u, v, half, o, dst, 0, n);
}
inline void NewYuvToRgbImageVec(const NewYuvToRgbJob& j, int16_t* buf) {
  const size_t n = static_cast<size_t>(j.w), cw = j.half_h ? (n + 1) / 2 : n;
  NewYuvToRgbRows(
      j, buf,
      [&](const uint8_t* ra, const uint8_t* rb, int wa, int16_t* o0, int16_t* o1) {
        NewChromaRow(ra, rb, wa, j.pack, j.wide, o0, o1, 0, cw);
      },
      [&](const uint8_t* ra, const uint8_t* rb, int16_t* a0, int16_t* a1, int16_t* b0,
          int16_t* b1) { NewChromaPair(ra, rb, j.pack, j.wide, a0, a1, b0, b1, cw); },
      [&](const uint8_t* y, const int16_t* u, const int16_t* v, uint8_t* d) {
        NewYuvToRgbRow(j.q, y, j.wide, u, v, j.half_h, j.o, d, 0, n);
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

bool NewYuvRgbFits(const NewYuvRgb& q) {
  const auto mag = [](int32_t v) { return v < 0 ? -v : v; };
  const int32_t chroma = std::max({mag(q.rv), mag(q.gu) + mag(q.gv), mag(q.bu)});
  const int32_t widest = std::max({mag(q.rv), mag(q.gu), mag(q.gv), mag(q.bu)});
  return mag(q.y) + mag(q.add) + chroma <= 32767 && 2 * widest <= 32767;
}
void NewChromaRow(const uint8_t* ra, const uint8_t* rb, int wa, int pack, int wide,
                  int16_t* out0, int16_t* out1, size_t cw) {
  KELO_VEC_CALL(NewChromaRowVec, scalar::NewChromaRowVec)(ra, rb, wa, pack, wide, out0, out1, cw);
  NewChromaRepeat(pack, out0, out1, cw);
}
void NewChromaPair(const uint8_t* ra, const uint8_t* rb, int pack, int wide, int16_t* a0,
                   int16_t* a1, int16_t* b0, int16_t* b1, size_t cw) {
  KELO_VEC_CALL(NewChromaPairVec, scalar::NewChromaPairVec)(ra, rb, pack, wide, a0, a1, b0, b1, cw);
}
void NewYuvToRgbRow(const NewYuvRgb& q, const uint8_t* y, int wide, const int16_t* u,
                    const int16_t* v, bool half, const NewRgbOrder& o, uint8_t* dst, size_t n) {
  KELO_VEC_CALL(NewYuvToRgbRowVec, scalar::NewYuvToRgbRowVec)(q, y, wide, u, v, half, o, dst, n);
}
void NewYuvToRgbImage(const NewYuvToRgbJob& j, int16_t* buf) {
  KELO_VEC_CALL(NewYuvToRgbImageVec, scalar::NewYuvToRgbImageVec)(j, buf);
}
}  // namespace csc
}  // namespace kelo
#endif  // !KELO_HAVE_HWY || HWY_ONCE
