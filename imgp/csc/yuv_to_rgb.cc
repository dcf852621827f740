// YUV to RGB kernels: one vector row per source family over the layout
// traits, the scalar row for tails, and the exported names from one list.
#include <type_traits>

#include "common/internal/simd.h"
#include "imgp/csc/yuv_to_rgb.h"

#if KELO_HAVE_HWY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imgp/csc/yuv_to_rgb.cc"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "common/internal/x86_raw-inl.h"
#include "imgp/csc/csc_vec-inl.h"
#include "imgp/csc/yuv_to_rgb.h"

HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
using namespace csc;  // NOLINT: layout traits and matrices

#if HWY_TARGET != HWY_SCALAR

using DU32 = hn::Repartition<uint32_t, D8>;
using DI32 = hn::Repartition<int32_t, D8>;

// Lanes are widened and narrowed within 128-bit blocks, which costs no
// cross-block shuffles: the Lo/Hi forms take the lower and upper eight bytes
// of every block, NarrowBlocks packs them back in the same places (so the byte
// order is restored). The High forms put the byte in the upper half of the
// lane (value << 8). Chroma of pixel pairs is kept as one 16-bit value per
// pair, in order; DupLo/DupHi repeat each value twice within the blocks, which
// lines it up with the Lo/Hi luma on every vector width.
HWY_INLINE VU WidenLo(V8 v) {
  const D8 d8;
  return hn::BitCast(DU(), hn::InterleaveLower(d8, v, hn::Zero(d8)));
}
HWY_INLINE VU WidenHi(V8 v) {
  const D8 d8;
  return hn::BitCast(DU(), hn::InterleaveUpper(d8, v, hn::Zero(d8)));
}
HWY_INLINE VU HighLo(V8 v) {
  const D8 d8;
  return hn::BitCast(DU(), hn::InterleaveLower(d8, hn::Zero(d8), v));
}
HWY_INLINE VU HighHi(V8 v) {
  const D8 d8;
  return hn::BitCast(DU(), hn::InterleaveUpper(d8, hn::Zero(d8), v));
}
HWY_INLINE VI DupLo(VI v) { return hn::InterleaveLower(v, v); }
HWY_INLINE VI DupHi(VI v) { return hn::InterleaveUpper(DI(), v, v); }
HWY_INLINE V8 NarrowBlocks(VI lo, VI hi) {
#if KELO_X86_RAW
  return V8{RawPackBytes(lo.raw, hi.raw)};
#else  // one block per vector: whole-vector order is block order
  return NarrowToBytes(lo, hi);
#endif
}

// Four-byte pixels are interleaved within blocks as well (StoreQuads): output
// vector j, block b receives bytes 4j .. 4j + 3 of block b of each channel.
// With B > 1 blocks per vector that is memory order only if those bytes hold
// pixels 4 (j B + b) .. 4 (j B + b) + 3, so the sources of such rows are
// permuted as they are loaded: units of four pixels (32 bits of luma or of
// pair chroma in 16-bit lanes) move from unit j B + b to unit 4 b + j. Packed
// 4:2:2 sources hold four pixels in 64 bits and each of their two source
// vectors fills half of every block, so there unit t B + b moves to 2 b + t.
template <bool kUnits64>
class QuadOrder {
 public:
  QuadOrder() : blocks_(hn::Lanes(D8()) / 16), idx_(Make(blocks_)) {}
  template <class V>
  HWY_INLINE V operator()(V v) const {
    if (blocks_ <= 1) return v;
    const hn::DFromV<V> d;
    return hn::BitCast(d, hn::TableLookupLanes(hn::BitCast(DU32(), v), idx_));
  }

  // The Lanes bytes from p on, in this order when kOn.
  template <bool kOn>
  HWY_INLINE V8 Load(const uint8_t* p) const {
    const V8 v = hn::LoadU(D8(), p);
    return kOn ? (*this)(v) : v;
  }

 private:
  using Idx = decltype(hn::IndicesFromVec(DU32(), hn::Zero(DI32())));
  static Idx Make(size_t blocks) {
    const DI32 d;
    const auto k = hn::Iota(d, 0);
    const auto nb = hn::Set(d, static_cast<int32_t>(blocks));
    hn::Vec<DI32> idx;
    if (kUnits64) {  // 32-bit lane k: half k & 1 of unit q = k >> 1
      const auto q = hn::ShiftRight<1>(k);
      const auto unit = hn::Add(hn::Mul(hn::And(q, hn::Set(d, 1)), nb), hn::ShiftRight<1>(q));
      idx = hn::Add(hn::Add(unit, unit), hn::And(k, hn::Set(d, 1)));
    } else {
      idx = hn::Add(hn::Mul(hn::And(k, hn::Set(d, 3)), nb), hn::ShiftRight<2>(k));
    }
    return hn::IndicesFromVec(DU32(), idx);
  }
  size_t blocks_;
  Idx idx_;
};

// Lanes / 2 chroma bytes from p on as 16-bit lanes, zero extended or
// (kHigh) in the upper byte, in QuadOrder when kQuad. With two blocks (AVX2)
// the 16 bytes are broadcast and one byte shuffle per block picks and widens
// its bytes: a load and an in-block shuffle instead of a lane-crossing widen
// (and permute), which cost several times more on some x86 cores.
template <bool kQuad, bool kHigh>
HWY_INLINE VU LoadWideChroma(const QuadOrder<false>& order, const uint8_t* p) {
  const DU du;
#if HWY_TARGET == HWY_AVX2
  (void)order;
  constexpr uint8_t Z = 0x80;  // a zero byte
  // Natural order: block 0 widens bytes 0-7, block 1 bytes 8-15. Quad order:
  // block 0 the byte pairs 0, 2, 4, 6 of the 16, block 1 the others.
  alignas(32) static constexpr uint8_t kTable[2][2][32] = {
      {{0, Z, 1, Z, 2, Z, 3, Z, 4, Z, 5, Z, 6, Z, 7, Z,
        8, Z, 9, Z, 10, Z, 11, Z, 12, Z, 13, Z, 14, Z, 15, Z},
       {Z, 0, Z, 1, Z, 2, Z, 3, Z, 4, Z, 5, Z, 6, Z, 7,
        Z, 8, Z, 9, Z, 10, Z, 11, Z, 12, Z, 13, Z, 14, Z, 15}},
      {{0, Z, 1, Z, 4, Z, 5, Z, 8, Z, 9, Z, 12, Z, 13, Z,
        2, Z, 3, Z, 6, Z, 7, Z, 10, Z, 11, Z, 14, Z, 15, Z},
       {Z, 0, Z, 1, Z, 4, Z, 5, Z, 8, Z, 9, Z, 12, Z, 13,
        Z, 2, Z, 3, Z, 6, Z, 7, Z, 10, Z, 11, Z, 14, Z, 15}}};
  const V8 all = hn::LoadDup128(D8(), p);
  return hn::BitCast(du, hn::TableLookupBytesOr0(all, hn::Load(D8(), kTable[kQuad][kHigh])));
#else
  VU w = hn::PromoteTo(du, hn::LoadU(DH8(), p));
  if (kQuad) w = order(w);
  return kHigh ? hn::ShiftLeft<8>(w) : w;
#endif
}

// Pixels of four byte channels (the slots of a pixel in memory order), the
// channels in QuadOrder.
HWY_INLINE void StoreQuads(V8 s0, V8 s1, V8 s2, V8 s3, uint8_t* out) {
  const D8 d8;
#if HWY_TARGET == HWY_NEON  // one block: the structure store (vst4)
  hn::StoreInterleaved4(s0, s1, s2, s3, d8, out);
  return;
#endif
  const DU du;
  const size_t L = hn::Lanes(d8);
  const VU a_lo = hn::BitCast(du, hn::InterleaveLower(d8, s0, s1));
  const VU a_hi = hn::BitCast(du, hn::InterleaveUpper(d8, s0, s1));
  const VU b_lo = hn::BitCast(du, hn::InterleaveLower(d8, s2, s3));
  const VU b_hi = hn::BitCast(du, hn::InterleaveUpper(d8, s2, s3));
  hn::StoreU(hn::BitCast(d8, hn::InterleaveLower(du, a_lo, b_lo)), d8, out);
  hn::StoreU(hn::BitCast(d8, hn::InterleaveUpper(du, a_lo, b_lo)), d8, out + L);
  hn::StoreU(hn::BitCast(d8, hn::InterleaveLower(du, a_hi, b_hi)), d8, out + 2 * L);
  hn::StoreU(hn::BitCast(d8, hn::InterleaveUpper(du, a_hi, b_hi)), d8, out + 3 * L);
}

// A coefficient the compiler may not see, so that a product stays one
// multiply instead of a chain of shifts and adds. The asm has no side
// effects, so the broadcast is still hoisted out of the loops.
template <class D>
HWY_INLINE hn::Vec<D> Coef(D d, int k) {
  hn::TFromD<D> c = static_cast<hn::TFromD<D>>(k);
  asm("" : "+r"(c));
  return hn::Set(d, c);
}
HWY_INLINE VI Coef(int k) { return Coef(DI(), k); }

// q * x for the small whole multiples of 256 that the coefficient split
// leaves.
template <int Q>
HWY_INLINE VI Times(VI x) {
  const DI di;
  if constexpr (Q == 0) return hn::Zero(di);
  if constexpr (Q == 1) return x;
  if constexpr (Q == -1) return hn::Neg(x);
  if constexpr (Q == 2) return hn::Add(x, x);
  if constexpr (Q != 0 && Q != 1 && Q != -1 && Q != 2) return hn::Mul(x, hn::Set(di, Q));
}

// The arithmetic of a matrix in 16-bit lanes: Luma from the luma bytes (in
// the upper byte of the lanes), Chroma terms from U and V << 8 (per pixel or
// per pixel pair), and Channels: R, G, B of a pixel from both, ready to be
// saturated to bytes.
template <YuvMatrix M>
struct LimitedOf {
  using type = std::conditional_t<M == YuvMatrix::kBt601Limited, Bt601Limited, Bt709Limited>;
};
template <YuvMatrix M>
constexpr bool UsesSat16() {
  if constexpr (M == YuvMatrix::kBt601Limited || M == YuvMatrix::kBt709Limited) {
    return Sat16<typename LimitedOf<M>::type>::kFits;
  } else {
    return false;
  }
}

template <YuvMatrix M, bool kSat16 = UsesSat16<M>()>
struct Arith;

// Matrices that fit one saturating sum per channel (Sat16).
template <YuvMatrix M>
struct Arith<M, true> {
  using S = Sat16<typename LimitedOf<M>::type>;
  struct Luma {
    VI ys, yb;  // h Y - kK and its half
  };
  struct Chroma {
    VI r, g, b;
  };

  static HWY_INLINE Luma FromY(VU yh) {
    const DU du;
    const VI ys = hn::BitCast(DI(), hn::Sub(hn::MulHigh(yh, hn::Set(du, S::kH * 256)),
                                            hn::Set(du, S::kK)));
    return {ys, hn::ShiftRight<1>(ys)};
  }
  static HWY_INLINE Chroma FromUV(VU u, VU vh) {
    const DU du;
    const DI di;
    Chroma c;
    c.r = hn::Add(hn::BitCast(di, hn::MulHigh(vh, hn::Set(du, S::kRvMul))),
                  hn::Set(di, S::kR0));
    c.g = hn::Add(GreenProducts(u, vh), hn::Set(di, S::kG0));
    c.b = hn::Add(hn::BitCast(di, hn::Mul(u, Coef(du, S::kBuQ))), hn::Set(di, S::kB0));
    return c;
  }
  // -kGuQ U - kGvQ V. x86 multiplies the U, V byte pairs of a lane by signed
  // bytes and adds the two products in one instruction.
  static HWY_INLINE VI GreenProducts(VU u, VU vh) {
    static_assert(S::kGuQ <= 128 && S::kGvQ <= 128 && 255 * (S::kGuQ + S::kGvQ) <= 32768,
                  "byte-pair products");
#if KELO_X86_RAW
    const DU du;
    const VU uv = hn::Or(u, vh);
    const VU k = hn::Set(du, static_cast<uint16_t>((-S::kGuQ & 0xFF) | (-S::kGvQ & 0xFF) << 8));
    return VI{RawMulAddPairs(uv.raw, k.raw)};
#else
    const DU du;
    return hn::BitCast(DI(), hn::Sub(hn::Neg(hn::BitCast(DI(), hn::Mul(u, Coef(du, S::kGuQ)))),
                                     hn::BitCast(DI(), hn::MulHigh(vh, hn::Set(du, S::kGvQ * 256)))));
#endif
  }
  static HWY_INLINE void Channels(const Luma& y, const Chroma& c, VI* r, VI* g, VI* b) {
    *r = hn::ShiftRight<7>(hn::SaturatedAdd(y.ys, c.r));
    *g = hn::ShiftRight<6>(hn::SaturatedAdd(y.yb, c.g));
    *b = hn::ShiftRight<6>(hn::SaturatedAdd(y.yb, c.b));
  }
  static HWY_INLINE Chroma DupLo(const Chroma& c) {
    return {HWY_NAMESPACE::DupLo(c.r), HWY_NAMESPACE::DupLo(c.g), HWY_NAMESPACE::DupLo(c.b)};
  }
  static HWY_INLINE Chroma DupHi(const Chroma& c) {
    return {HWY_NAMESPACE::DupHi(c.r), HWY_NAMESPACE::DupHi(c.g), HWY_NAMESPACE::DupHi(c.b)};
  }
};

// Other matrices.
//
// Scaled matrices in 16-bit lanes: each coefficient k = 256 q + res, so
// (sum k x + 128) >> 8 == sum q x + ((sum res x + 128) >> 8) exactly, and the
// inner sums stay within int16 (checked in csc_arith.h). `q*` hold the whole
// parts, `t*` the chroma part of the inner sums with the rounding term.
// Full-range matrices shift every product on its own, so the chroma part is
// final and only `q*` are used.
template <YuvMatrix M>
struct Arith<M, false> {
  struct Luma {
    VI y;
  };
  struct Chroma {
    VI qr, qg, qb, tr, tg, tb;
  };

  static HWY_INLINE Luma FromY(VU yh) { return {hn::BitCast(DI(), hn::ShiftRight<8>(yh))}; }
  static HWY_INLINE Chroma FromUV(VU uu, VU vh) {
    const DI di;
    const VI d = hn::Sub(hn::BitCast(di, uu), hn::Set(di, 128));
    const VI e = hn::Sub(hn::BitCast(di, hn::ShiftRight<8>(vh)), hn::Set(di, 128));
    Chroma t;
    if constexpr (M == YuvMatrix::kBt601Limited || M == YuvMatrix::kBt709Limited) {
      using Mx = typename LimitedOf<M>::type;
      const VI half = hn::Set(di, 128);
      t.qr = Times<SplitQ(Mx::kRv)>(e);
      t.qg = hn::Add(Times<SplitQ(Mx::kGu)>(d), Times<SplitQ(Mx::kGv)>(e));
      t.qb = Times<SplitQ(Mx::kBu)>(d);
      t.tr = hn::Add(hn::Mul(e, Coef(SplitRes(Mx::kRv))), half);
      t.tg = hn::Add(hn::Add(hn::Mul(d, Coef(SplitRes(Mx::kGu))),
                             hn::Mul(e, Coef(SplitRes(Mx::kGv)))),
                     half);
      t.tb = hn::Add(hn::Mul(d, Coef(SplitRes(Mx::kBu))), half);
    } else {
      using Mx = std::conditional_t<M == YuvMatrix::kBt601Full, Bt601Full, Bt709Full>;
      t.qr = hn::ShiftRight<7>(hn::Mul(e, Coef(Mx::kRv)));
      t.qg = hn::Add(hn::ShiftRight<7>(hn::Mul(d, Coef(Mx::kGu))),
                     hn::ShiftRight<7>(hn::Mul(e, Coef(Mx::kGv))));
      t.qb = hn::ShiftRight<7>(hn::Mul(d, Coef(Mx::kBu)));
    }
    return t;
  }
  static HWY_INLINE void Channels(const Luma& y, const Chroma& t, VI* r, VI* g, VI* b) {
    const DI di;
    if constexpr (M == YuvMatrix::kBt601Limited || M == YuvMatrix::kBt709Limited) {
      using Mx = typename LimitedOf<M>::type;
      const VI c = hn::Sub(y.y, hn::Set(di, Mx::kYOffset));
      const VI base = hn::Mul(c, Coef(SplitRes(Mx::kCy)));
      const VI qc = Times<SplitQ(Mx::kCy)>(c);
      *r = hn::Add(hn::Add(qc, t.qr), hn::ShiftRight<8>(hn::Add(base, t.tr)));
      *g = hn::Add(hn::Add(qc, t.qg), hn::ShiftRight<8>(hn::Add(base, t.tg)));
      *b = hn::Add(hn::Add(qc, t.qb), hn::ShiftRight<8>(hn::Add(base, t.tb)));
    } else {
      *r = hn::Add(y.y, t.qr);
      *g = hn::Add(y.y, t.qg);
      *b = hn::Add(y.y, t.qb);
    }
  }
  static HWY_INLINE Chroma DupLo(const Chroma& c) {
    using HWY_NAMESPACE::DupLo;
    return {DupLo(c.qr), DupLo(c.qg), DupLo(c.qb), DupLo(c.tr), DupLo(c.tg), DupLo(c.tb)};
  }
  static HWY_INLINE Chroma DupHi(const Chroma& c) {
    using HWY_NAMESPACE::DupHi;
    return {DupHi(c.qr), DupHi(c.qg), DupHi(c.qb), DupHi(c.tr), DupHi(c.tg), DupHi(c.tb)};
  }
};

// Lanes luma bytes through the chroma terms of their block halves, saturated
// to byte channels in the luma's order.
template <YuvMatrix M>
HWY_INLINE void ToRgb(const typename Arith<M>::Chroma& lo, const typename Arith<M>::Chroma& hi,
                      V8 y, V8* r, V8* g, V8* b) {
  using A = Arith<M>;
  VI rl, gl, bl, rh, gh, bh;
  A::Channels(A::FromY(HighLo(y)), lo, &rl, &gl, &bl);
  A::Channels(A::FromY(HighHi(y)), hi, &rh, &gh, &bh);
  *r = NarrowBlocks(rl, rh);
  *g = NarrowBlocks(gl, gh);
  *b = NarrowBlocks(bl, bh);
}

// The channel a byte slot of a pixel holds.
template <int kSlot, class Dst>
HWY_INLINE V8 Slot(V8 r, V8 g, V8 b, V8 a) {
  if constexpr (kSlot == Dst::kRi) return r;
  if constexpr (kSlot == Dst::kGi) return g;
  if constexpr (kSlot == Dst::kBi) return b;
  if constexpr (kSlot != Dst::kRi && kSlot != Dst::kGi && kSlot != Dst::kBi) return a;
}

// Whether the rows of Dst take their sources in QuadOrder.
template <class Dst>
constexpr bool kQuads = Dst::kBytes == 4;

template <class Dst>
HWY_INLINE void StoreRgb(V8 r, V8 g, V8 b, uint8_t* out) {
  const D8 d8;
  if constexpr (Dst::kBytes == 4) {
    const V8 a = hn::Set(d8, 255);
    StoreQuads(Slot<0, Dst>(r, g, b, a), Slot<1, Dst>(r, g, b, a), Slot<2, Dst>(r, g, b, a),
               Slot<3, Dst>(r, g, b, a), out);
  } else if constexpr (Dst::kBytes == 3) {
    hn::StoreInterleaved3(Slot<0, Dst>(r, g, b, r), Slot<1, Dst>(r, g, b, r),
                          Slot<2, Dst>(r, g, b, r), d8, out);
  } else {
    Store565(Dst::kRedHighV ? r : b, g, Dst::kRedHighV ? b : r, out);
  }
}

// U and V << 8 of the Lanes / 2 pixel pairs from pixel x on, in pair order
// (permuted by `order` when kQuad).
template <class Src, bool kQuad>
HWY_INLINE void LoadPairChroma(const YuvRow& row, size_t x, const QuadOrder<false>& order, VU* u,
                               VU* vh) {
  const DU du;
  if constexpr (Src::kFamily == YuvFamily::kPlanar) {
    *u = LoadWideChroma<kQuad, false>(order, row.u + x / 2);
    *vh = LoadWideChroma<kQuad, true>(order, row.v + x / 2);
  } else {
    const uint8_t* p = (Src::kUFirstV ? row.u : row.v) + x;
    const V8 c = order.Load<kQuad>(p);
    const VU w = hn::BitCast(du, c);
    if constexpr (Src::kUFirstV) {
      *u = hn::And(w, hn::Set(du, 0x00FF));
      *vh = hn::And(w, hn::Set(du, 0xFF00));
    } else {
      *u = hn::ShiftRight<8>(w);
      *vh = hn::ShiftLeft<8>(w);
    }
  }
}

// Chroma terms for the two block halves of Lanes pixels from x on (sources
// with one chroma sample per pixel pair).
template <class Src, YuvMatrix M, bool kQuad>
HWY_INLINE void LoadTerms(const YuvRow& row, size_t x, const QuadOrder<false>& order,
                          typename Arith<M>::Chroma* lo, typename Arith<M>::Chroma* hi) {
  using A = Arith<M>;
  VU u, vh;
  LoadPairChroma<Src, kQuad>(row, x, order, &u, &vh);
  const typename A::Chroma c = A::FromUV(u, vh);
  *lo = A::DupLo(c);
  *hi = A::DupHi(c);
}

// x86 multiplies unsigned byte pairs by signed byte pairs and adds them
// (KELO_X86_RAW); elsewhere the pairs are summed with whole-vector shuffles.
#if !KELO_X86_RAW
// Sums of adjacent 16-bit lanes: those of a, then those of b (one block per
// vector on the targets without byte-pair products).
HWY_INLINE VI PairSums(VI a, VI b) {
  const DI di;
  return hn::Add(hn::ConcatEven(di, b, a), hn::ConcatOdd(di, b, a));
}
#endif

// Packed 4:2:2: the channels of two source vectors of Lanes / 2 pixels each,
// in their order. In 16-bit lanes a pixel holds its luma and one chroma
// sample, U for the first of a pair and V for the second; the chroma terms are
// made per pair and then copied to both pixels of the pair.
template <class Src, YuvMatrix M>
struct PackedTerms {
  using A = Arith<M>;
  using S = typename A::S;
#if KELO_X86_RAW
  // The G constant rides on the G and B luma (see Half), so B's term carries
  // the difference.
  static constexpr int kGLuma = S::kG0 - S::kK / 2;
  static_assert(kGLuma >= 1 && 2 * kGLuma - 1 <= 65535 && 255 * S::kH / 2 + kGLuma <= 32767 &&
                    S::In16(S::kB0 - S::kG0, S::kB0 - S::kG0 + 255 * S::kBuQ),
                "G constant on the luma");
  // B's term kBuQ U + (kB0 - kG0) as one product modulo 2^16: U with the
  // byte kBHigh above it, where kBuQ 256 kBHigh = kB0 - kG0 modulo 2^16 (the
  // term fits int16, so its low 16 bits are its value).
  static constexpr int BHigh() {
    for (int h = 0; h < 256; ++h) {
      if (((S::kBuQ * 256 * h - (S::kB0 - S::kG0)) & 0xFFFF) == 0) return h;
    }
    return -1;
  }
  static constexpr int kBHigh = BHigh();
  PackedTerms()
      : g_mul(hn::Set(DU(), static_cast<uint16_t>((-S::kGuQ & 0xFF) | (-S::kGvQ & 0xFF) << 8))),
        uv_pix(hn::LoadDup128(D8(), Src::kUyvyV ? kUvUyvy : kUvYuyv)),
        b_high(hn::Set(DU(), static_cast<uint16_t>((kBHigh < 0 ? 0 : kBHigh) << 8))),
        low_bytes(hn::MaskFromVec(hn::BitCast(D8(), hn::Set(DU(), 0x00FF)))) {}
#else
  PackedTerms()
      : rb_mul(hn::OddEven(hn::Set(DU(), S::kRvMul), hn::Set(DU(), S::kBuQ * 256))),
        rb_add(hn::OddEven(hn::Set(DI(), S::kR0), hn::Set(DI(), S::kB0))),
        g_mul(hn::OddEven(hn::Set(DU(), S::kGvQ * 256), hn::Set(DU(), S::kGuQ * 256))),
        dup_even(hn::LoadDup128(D8(), kDupEven)),
        dup_odd(hn::LoadDup128(D8(), kDupOdd)) {}
#endif

  // Luma (value << 8) and chroma (value << 8) lanes of a source vector.
  static HWY_INLINE void Split(V8 raw, VU* yh, VU* ch) {
    const DU du;
    const VU w = hn::BitCast(du, raw);
    *yh = Src::kUyvyV ? hn::And(w, hn::Set(du, 0xFF00)) : hn::ShiftLeft<8>(w);
    *ch = Src::kUyvyV ? hn::ShiftLeft<8>(w) : hn::And(w, hn::Set(du, 0xFF00));
  }

#if KELO_X86_RAW
  // x86: each pixel's G term straight from its pair's U, V bytes (one byte
  // shuffle and one byte-pair product) with no constant. G and B take the luma
  // floor(h Y / 2) + kGLuma = (Ys >> 1) + kG0, made by a rounding average of
  // h Y with 2 kGLuma - 1, so the sums are those of the other targets.
  HWY_INLINE void Channels(V8 a, V8 b, VI ch_a[3], VI ch_b[3]) const {
    Half(a, ch_a);
    Half(b, ch_b);
  }
  HWY_INLINE void Half(V8 raw, VI ch[3]) const {
    const DU du;
    const DI di;
    // h Y from the luma byte masked in place (no shift: shifts share their
    // units with the shuffles, the busiest of this row), times h or h 256.
    const VU w = hn::BitCast(du, raw);
    const VU hy = Src::kUyvyV
                      ? hn::MulHigh(hn::And(w, hn::Set(du, 0xFF00)), hn::Set(du, S::kH * 256))
                      : hn::Mul(hn::And(w, hn::Set(du, 0x00FF)), hn::Set(du, S::kH));
    typename A::Luma y;
    y.ys = hn::BitCast(di, hn::Sub(hy, hn::Set(du, S::kK)));
    y.yb = hn::BitCast(di, hn::AverageRound(hy, hn::Set(du, 2 * kGLuma - 1)));
    // Each pixel's U, V bytes (one byte shuffle): the G term from the byte
    // pair, the R and B terms from V << 8 and U masked in place.
    typename A::Chroma t;
    const VU uv = hn::BitCast(du, hn::TableLookupBytes(raw, uv_pix));
    t.g = VI{RawMulAddPairs(uv.raw, g_mul.raw)};
    t.r = hn::Add(hn::BitCast(di, hn::MulHigh(hn::And(uv, hn::Set(du, 0xFF00)),
                                              hn::Set(du, S::kRvMul))),
                  hn::Set(di, S::kR0));
    if constexpr (kBHigh >= 0) {
      const D8 d8;
      const VU ub = hn::BitCast(du, hn::IfThenElse(low_bytes, hn::BitCast(d8, uv),
                                                   hn::BitCast(d8, b_high)));
      t.b = hn::BitCast(di, hn::Mul(ub, Coef(du, S::kBuQ)));
    } else {
      t.b = hn::Add(hn::BitCast(di, hn::Mul(hn::And(uv, hn::Set(du, 0x00FF)), Coef(du, S::kBuQ))),
                    hn::Set(di, S::kB0 - S::kG0));
    }
    A::Channels(y, t, &ch[0], &ch[1], &ch[2]);
  }
#else
  // The R and B terms of each pixel.
  HWY_INLINE void RedBlue(VU ch, typename A::Chroma* c) const {
    const DI di;
    // Even lanes: the B term of the pair, odd lanes: its R term.
    const V8 rb = hn::BitCast(D8(), hn::Add(hn::BitCast(di, hn::MulHigh(ch, rb_mul)), rb_add));
    c->r = hn::BitCast(di, hn::TableLookupBytes(rb, dup_odd));
    c->b = hn::BitCast(di, hn::TableLookupBytes(rb, dup_even));
  }
  HWY_INLINE void Channels(V8 a, V8 b, VI ch_a[3], VI ch_b[3]) const {
    const DI di;
    VU yh_a, c_a, yh_b, c_b;
    Split(a, &yh_a, &c_a);
    Split(b, &yh_b, &c_b);
    typename A::Chroma ta, tb;
    // Even lanes: kGuQ U, odd lanes: kGvQ V; the G term is kG0 less their sum.
    const VI gx_a = hn::BitCast(di, hn::MulHigh(c_a, g_mul));
    const VI gx_b = hn::BitCast(di, hn::MulHigh(c_b, g_mul));
    const VI g = hn::Sub(hn::Set(di, S::kG0), PairSums(gx_a, gx_b));
    ta.g = DupLo(g);
    tb.g = DupHi(g);
    RedBlue(c_a, &ta);
    A::Channels(A::FromY(yh_a), ta, &ch_a[0], &ch_a[1], &ch_a[2]);
    RedBlue(c_b, &tb);
    A::Channels(A::FromY(yh_b), tb, &ch_b[0], &ch_b[1], &ch_b[2]);
  }
#endif

  static constexpr uint8_t kDupEven[16] = {0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13};
  static constexpr uint8_t kDupOdd[16] = {2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15};
  // The U, V bytes of each pixel's pair.
  static constexpr uint8_t kUvYuyv[16] = {1, 3, 1, 3, 5, 7, 5, 7, 9, 11, 9, 11, 13, 15, 13, 15};
  static constexpr uint8_t kUvUyvy[16] = {0, 2, 0, 2, 4, 6, 4, 6, 8, 10, 8, 10, 12, 14, 12, 14};
#if KELO_X86_RAW
  VU g_mul;
  V8 uv_pix;
  VU b_high;
  hn::Mask<D8> low_bytes;
#else
  VU rb_mul;
  VI rb_add;
  VU g_mul;
  V8 dup_even, dup_odd;
#endif
};

template <class Src, class Dst, YuvMatrix M>
void PackedRowVec(const YuvRow& row, uint8_t* dst, int n) {
  const D8 d8;
  const size_t L = hn::Lanes(d8);
  const QuadOrder<true> order;
  const PackedTerms<Src, M> terms;
  const uint8_t* base = Src::kUyvyV ? row.u : row.y;
  const auto step = [&](size_t x) HWY_ATTR {
    const uint8_t* p = base + 2 * x;
    const V8 a = order.Load<kQuads<Dst>>(p);
    const V8 b = order.Load<kQuads<Dst>>(p + L);
    VI ca[3], cb[3];
    terms.Channels(a, b, ca, cb);
    if constexpr (kQuads<Dst>) {
      StoreRgb<Dst>(NarrowBlocks(ca[0], cb[0]), NarrowBlocks(ca[1], cb[1]),
                    NarrowBlocks(ca[2], cb[2]), dst + x * Dst::kBytes);
    } else {
      StoreRgb<Dst>(NarrowToBytes(ca[0], cb[0]), NarrowToBytes(ca[1], cb[1]),
                    NarrowToBytes(ca[2], cb[2]), dst + x * Dst::kBytes);
    }
  };
  // Two blocks per pass halve the loop overhead.
  const size_t un = static_cast<size_t>(n);
  size_t x = 0;
  for (; x + 2 * L <= un; x += 2 * L) {
    step(x);
    step(x + L);
  }
  if (x + L <= un) {
    step(x);
    x += L;
  }
  scalar::YuvToRgbRow<Src, Dst, M>(row, dst, static_cast<int>(x), n);
}

template <class Src, class Dst, YuvMatrix M>
void RowVec(const YuvRow& row_in, uint8_t* dst, int n) {
  const YuvRow row = row_in;  // a local copy: the stores cannot alias it
  const D8 d8;
  const size_t L = hn::Lanes(d8);
  const QuadOrder<false> order;
  constexpr bool kQuad = kQuads<Dst>;
  size_t x = 0;
  for (; x + L <= static_cast<size_t>(n); x += L) {
    const V8 y = order.Load<kQuad>(row.y + x);
    V8 r, g, b;
    if constexpr (Src::kPairs) {
      typename Arith<M>::Chroma lo, hi;
      LoadTerms<Src, M, kQuad>(row, x, order, &lo, &hi);
      ToRgb<M>(lo, hi, y, &r, &g, &b);
    } else {
      // Chroma per pixel: each block half through its own terms.
      using A = Arith<M>;
      const V8 u = order.Load<kQuad>(row.u + x);
      const V8 v = order.Load<kQuad>(row.v + x);
      VI rl, gl, bl, rh, gh, bh;
      A::Channels(A::FromY(HighLo(y)), A::FromUV(WidenLo(u), HighLo(v)), &rl, &gl, &bl);
      A::Channels(A::FromY(HighHi(y)), A::FromUV(WidenHi(u), HighHi(v)), &rh, &gh, &bh);
      r = NarrowBlocks(rl, rh);
      g = NarrowBlocks(gl, gh);
      b = NarrowBlocks(bl, bh);
    }
    StoreRgb<Dst>(r, g, b, dst + x * Dst::kBytes);
  }
  scalar::YuvToRgbRow<Src, Dst, M>(row, dst, static_cast<int>(x), n);
}

// Two rows sharing one chroma row (4:2:0 layouts): the chroma is loaded and
// turned into terms once per block.
template <class Src, class Dst, YuvMatrix M>
void Row2Vec(const YuvRow& row0_in, const YuvRow& row1_in, uint8_t* dst0, uint8_t* dst1,
             int n) {
  const YuvRow row0 = row0_in, row1 = row1_in;
  const D8 d8;
  const size_t L = hn::Lanes(d8);
  const QuadOrder<false> order;
  constexpr bool kQuad = kQuads<Dst>;
  size_t x = 0;
  for (; x + L <= static_cast<size_t>(n); x += L) {
    typename Arith<M>::Chroma lo, hi;
    LoadTerms<Src, M, kQuad>(row0, x, order, &lo, &hi);
    V8 y = order.Load<kQuad>(row0.y + x);
    V8 r, g, b;
    ToRgb<M>(lo, hi, y, &r, &g, &b);
    StoreRgb<Dst>(r, g, b, dst0 + x * Dst::kBytes);
    y = order.Load<kQuad>(row1.y + x);
    ToRgb<M>(lo, hi, y, &r, &g, &b);
    StoreRgb<Dst>(r, g, b, dst1 + x * Dst::kBytes);
  }
  scalar::YuvToRgbRow<Src, Dst, M>(row0, dst0, static_cast<int>(x), n);
  scalar::YuvToRgbRow<Src, Dst, M>(row1, dst1, static_cast<int>(x), n);
}

#if HWY_TARGET == HWY_NEON
// NEON rows of the matrices with 16-bit sums (Sat16). The same sums from byte
// operands: widening multiplies and multiply-accumulates of the 8-bit samples
// (vmull/vmlal/vmlsl .u8) give every term modulo 2^16, which is its value as
// Sat16 keeps each within int16; floor(kRv V / 2) is (kRv >> 1) V + (V >> 1)
// for an odd kRv. The saturating shift-narrow (vqshrun) shifts and clamps in
// one instruction, straight into the registers of the structure store.
template <YuvMatrix M>
struct NeonSat16 {
  using S = Sat16<typename LimitedOf<M>::type>;
  static constexpr int kRv = LimitedOf<M>::type::kRv;
  static_assert(S::kH <= 255 && (kRv >> 1) <= 255 && S::kGuQ <= 255 && S::kGvQ <= 255 &&
                    S::kBuQ <= 255 && S::kRvMul == kRv * 128,
                "byte multipliers");
  struct Terms {
    int16x8_t r, g, b;
  };
  NeonSat16()
      : r0(vdupq_n_u16(static_cast<uint16_t>(S::kR0))),
        g0(vdupq_n_u16(static_cast<uint16_t>(S::kG0))),
        b0(vdupq_n_u16(static_cast<uint16_t>(S::kB0))),
        k(vdupq_n_s16(S::kK)),
        h(vdup_n_u8(S::kH)),
        rv(vdup_n_u8(kRv >> 1)),
        gu(vdup_n_u8(S::kGuQ)),
        gv(vdup_n_u8(S::kGvQ)),
        bu(vdup_n_u8(S::kBuQ)),
        alpha(vdup_n_u8(255)),
        gl(vdupq_n_u16(static_cast<uint16_t>(kGl))),
        bb(vdupq_n_u16(static_cast<uint16_t>(kBb))) {}

  // The terms of eight chroma samples.
  HWY_INLINE Terms FromUV(uint8x8_t u, uint8x8_t v) const {
    Terms t;
    const uint16x8_t r = (kRv & 1) ? vaddw_u8(r0, vshr_n_u8(v, 1)) : r0;
    t.r = vreinterpretq_s16_u16(vmlal_u8(r, v, rv));
    t.g = vreinterpretq_s16_u16(vmlsl_u8(vmlsl_u8(g0, u, gu), v, gv));
    t.b = vreinterpretq_s16_u16(vmlal_u8(b0, u, bu));
    return t;
  }
  // The terms of eight pixel pairs, each repeated for its two pixels: those
  // of pixels 0-7 and of 8-15.
  static HWY_INLINE void Repeat(const Terms& t, Terms* lo, Terms* hi) {
    const int16x8x2_t r = vzipq_s16(t.r, t.r), g = vzipq_s16(t.g, t.g), b = vzipq_s16(t.b, t.b);
    *lo = {r.val[0], g.val[0], b.val[0]};
    *hi = {r.val[1], g.val[1], b.val[1]};
  }
  // Eight pixels of luma through their terms: R, G, B bytes.
  HWY_INLINE uint8x8x3_t Channels(uint8x8_t y, const Terms& t) const {
    const int16x8_t ys = vsubq_s16(vreinterpretq_s16_u16(vmull_u8(y, h)), k);
    const int16x8_t yb = vshrq_n_s16(ys, 1);
    uint8x8x3_t c;
    c.val[0] = vqshrun_n_s16(vqaddq_s16(ys, t.r), 7);
    c.val[1] = vqshrun_n_s16(vqaddq_s16(yb, t.g), 6);
    c.val[2] = vqshrun_n_s16(vqaddq_s16(yb, t.b), 6);
    return c;
  }
  // Eight pixels with a chroma sample each. The luma product L = h Y feeds
  // all three sums, and the G and B sums accumulate their chroma products on
  // it instead of on copies of constant terms:
  //   G: (Ys >> 1) + Tg = floor((L + kGl) / 2) - kGuQ U - kGvQ V, kGl = 2 kG0 - kK,
  //      within int16, so the wrapping multiply-subtracts are exact;
  //   B: (Ys >> 1) + Tb + kBb = (L >> 1) + kBuQ U, kBb = kK / 2 - kB0, within
  //      uint16; subtracting kBb with unsigned saturation clamps below and the
  //      saturating narrow above.
  HWY_INLINE uint8x8x3_t Channels444(uint8x8_t y, uint8x8_t u, uint8x8_t v) const {
    const uint16x8_t l = vmull_u8(y, h);
    const int16x8_t ys = vsubq_s16(vreinterpretq_s16_u16(l), k);
    const uint16x8_t r = (kRv & 1) ? vaddw_u8(r0, vshr_n_u8(v, 1)) : r0;
    const int16x8_t g = vreinterpretq_s16_u16(vmlsl_u8(vmlsl_u8(vhaddq_u16(l, gl), u, gu), v, gv));
    const uint16x8_t b = vmlal_u8(vshrq_n_u16(l, 1), u, bu);
    uint8x8x3_t c;
    c.val[0] = vqshrun_n_s16(vqaddq_s16(ys, vreinterpretq_s16_u16(vmlal_u8(r, v, rv))), 7);
    c.val[1] = vqshrun_n_s16(g, 6);
    c.val[2] = vqshrn_n_u16(vqsubq_u16(b, bb), 6);
    return c;
  }
  static constexpr int kGl = 2 * S::kG0 - S::kK, kBb = S::kK / 2 - S::kB0;
  static constexpr int kLMax = 255 * S::kH, kYbMin = -S::kK / 2;
  static_assert(S::kK % 2 == 0 && kGl >= 0 && kLMax + kGl <= 65535 && kBb >= 0 &&
                    kLMax / 2 + 255 * S::kBuQ <= 65535 &&
                    S::In16(kYbMin + S::kG0 - 255 * (S::kGuQ + S::kGvQ),
                            (kLMax - S::kK) / 2 + S::kG0),
                "444 sums");
  // Eight pixels of R, G, B bytes, stored.
  template <class Dst>
  HWY_INLINE void Put8(uint8x8_t r, uint8x8_t g, uint8x8_t b, uint8_t* out) const {
    if constexpr (Dst::kBytes == 4) {
      uint8x8x4_t px;
      px.val[Dst::kRi] = r;
      px.val[Dst::kGi] = g;
      px.val[Dst::kBi] = b;
      px.val[Dst::kAi] = alpha;
      vst4_u8(out, px);
    } else if constexpr (Dst::kBytes == 3) {
      uint8x8x3_t px;
      px.val[Dst::kRi] = r;
      px.val[Dst::kGi] = g;
      px.val[Dst::kBi] = b;
      vst3_u8(out, px);
    } else {
      const uint8x8_t hi = Dst::kRedHighV ? r : b, lo = Dst::kRedHighV ? b : r;
      vst1q_u8(out, vreinterpretq_u8_u16(vsriq_n_u16(
                        vsriq_n_u16(vshll_n_u8(hi, 8), vshll_n_u8(g, 8), 5), vshll_n_u8(lo, 8), 11)));
    }
  }
  template <class Dst>
  HWY_INLINE void Store8(uint8x8_t y, const Terms& t, uint8_t* out) const {
    const uint8x8x3_t c = Channels(y, t);
    Put8<Dst>(c.val[0], c.val[1], c.val[2], out);
  }
  // Sixteen pixels, the even ones in ye and the odd ones in yo, with the terms
  // of their eight pairs: the channels are zipped into pixel order.
  template <class Dst>
  HWY_INLINE void Pairs(uint8x8_t ye, uint8x8_t yo, const Terms& t, uint8_t* out) const {
    const uint8x8x3_t e = Channels(ye, t), o = Channels(yo, t);
    const uint8x8x2_t r = vzip_u8(e.val[0], o.val[0]);
    const uint8x8x2_t g = vzip_u8(e.val[1], o.val[1]);
    const uint8x8x2_t b = vzip_u8(e.val[2], o.val[2]);
    if constexpr (Dst::kBytes == 4) {  // one 16-pixel structure store
      uint8x16x4_t px;
      px.val[Dst::kRi] = vcombine_u8(r.val[0], r.val[1]);
      px.val[Dst::kGi] = vcombine_u8(g.val[0], g.val[1]);
      px.val[Dst::kBi] = vcombine_u8(b.val[0], b.val[1]);
      px.val[Dst::kAi] = vcombine_u8(alpha, alpha);
      vst4q_u8(out, px);
    } else {
      Put8<Dst>(r.val[0], g.val[0], b.val[0], out);
      Put8<Dst>(r.val[1], g.val[1], b.val[1], out + 8 * Dst::kBytes);
    }
  }
  // Sixteen pixels of luma with the terms of their eight pairs.
  template <class Dst>
  HWY_INLINE void Store16(uint8x16_t y, const Terms& lo, const Terms& hi, uint8_t* out) const {
    Store8<Dst>(vget_low_u8(y), lo, out);
    Store8<Dst>(vget_high_u8(y), hi, out + 8 * Dst::kBytes);
  }

  uint16x8_t r0, g0, b0;
  int16x8_t k;
  uint8x8_t h, rv, gu, gv, bu, alpha;
  uint16x8_t gl, bb;
};

// The U and V bytes of the eight pixel pairs from chroma pointer c on (the U
// or V plane, or the first byte of the interleaved pairs).
template <class Src>
HWY_INLINE void NeonPairChroma(const uint8_t* c, const uint8_t* c2, uint8x8_t* u,
                               uint8x8_t* v) {
  if constexpr (Src::kFamily == YuvFamily::kPlanar) {
    *u = vld1_u8(c);
    *v = vld1_u8(c2);
  } else {
    const uint8x8x2_t uv = vld2_u8(c);
    *u = uv.val[Src::kUFirstV ? 0 : 1];
    *v = uv.val[Src::kUFirstV ? 1 : 0];
  }
}
template <class Src>
HWY_INLINE const uint8_t* NeonChromaBase(const YuvRow& row) {
  if constexpr (Src::kFamily == YuvFamily::kSemi) return Src::kUFirstV ? row.u : row.v;
  return row.u;
}

template <class Src, class Dst, YuvMatrix M>
void NeonRow(const YuvRow& row_in, uint8_t* dst, int n) {
  const YuvRow row = row_in;  // a local copy: the stores cannot alias it
  const NeonSat16<M> k;
  using T = typename NeonSat16<M>::Terms;
  const size_t n16 = static_cast<size_t>(n) & ~size_t{15};
  uint8_t* out = dst;
  uint8_t* const end = dst + n16 * Dst::kBytes;
  if constexpr (Src::kFamily == YuvFamily::kPacked) {
    // vld4 splits the even pixels' luma, U, the odd pixels' luma and V.
    const uint8_t* p = Src::kUyvyV ? row.u : row.y;
    constexpr int yi = Src::kUyvyV ? 1 : 0, ci = Src::kUyvyV ? 0 : 1;
    for (; out != end; out += 16 * Dst::kBytes, p += 32) {
      const uint8x8x4_t q = vld4_u8(p);
      k.template Pairs<Dst>(q.val[yi], q.val[yi + 2], k.FromUV(q.val[ci], q.val[ci + 2]), out);
    }
  } else if constexpr (Src::kPairs) {
    const uint8_t* py = row.y;
    const uint8_t* pc = NeonChromaBase<Src>(row);
    const uint8_t* pv = row.v;
    for (; out != end; out += 16 * Dst::kBytes, py += 16, pc += 8 * Src::kCStep, pv += 8) {
      uint8x8_t u, v;
      NeonPairChroma<Src>(pc, pv, &u, &v);
      T lo, hi;
      k.Repeat(k.FromUV(u, v), &lo, &hi);
      k.template Store16<Dst>(vld1q_u8(py), lo, hi, out);
    }
  } else {
    // Eight pixels a step: GCC spills the registers of sixteen.
    const uint8_t *py = row.y, *pu = row.u, *pv = row.v;
    for (; out != end; out += 8 * Dst::kBytes, py += 8, pu += 8, pv += 8) {
      const uint8x8x3_t c = k.Channels444(vld1_u8(py), vld1_u8(pu), vld1_u8(pv));
      k.template Put8<Dst>(c.val[0], c.val[1], c.val[2], out);
    }
  }
  scalar::YuvToRgbRow<Src, Dst, M>(row, dst, static_cast<int>(n16), n);
}

template <class Src, class Dst, YuvMatrix M>
void NeonRow2(const YuvRow& row0_in, const YuvRow& row1_in, uint8_t* dst0, uint8_t* dst1,
              int n) {
  const YuvRow row0 = row0_in, row1 = row1_in;
  const NeonSat16<M> k;
  using T = typename NeonSat16<M>::Terms;
  const size_t n16 = static_cast<size_t>(n) & ~size_t{15};
  const uint8_t *py0 = row0.y, *py1 = row1.y;
  const uint8_t* pc = NeonChromaBase<Src>(row0);
  const uint8_t* pv = row0.v;
  uint8_t* out0 = dst0;
  uint8_t* out1 = dst1;
  uint8_t* const end = dst0 + n16 * Dst::kBytes;
  for (; out0 != end; out0 += 16 * Dst::kBytes, out1 += 16 * Dst::kBytes, py0 += 16, py1 += 16,
                      pc += 8 * Src::kCStep, pv += 8) {
    uint8x8_t u, v;
    NeonPairChroma<Src>(pc, pv, &u, &v);
    T lo, hi;
    k.Repeat(k.FromUV(u, v), &lo, &hi);
    k.template Store16<Dst>(vld1q_u8(py0), lo, hi, out0);
    k.template Store16<Dst>(vld1q_u8(py1), lo, hi, out1);
  }
  scalar::YuvToRgbRow<Src, Dst, M>(row0, dst0, static_cast<int>(n16), n);
  scalar::YuvToRgbRow<Src, Dst, M>(row1, dst1, static_cast<int>(n16), n);
}
#endif  // HWY_TARGET == HWY_NEON

template <class Src, class Dst, YuvMatrix M>
constexpr YuvToRgbRows VecRows() {
#if HWY_TARGET == HWY_NEON
  if constexpr (UsesSat16<M>() && Src::kVertHalf) {
    return {&NeonRow<Src, Dst, M>, &NeonRow2<Src, Dst, M>};
  } else if constexpr (UsesSat16<M>()) {
    return {&NeonRow<Src, Dst, M>, nullptr};
  }
#endif
  if constexpr (Src::kFamily == YuvFamily::kPacked) {
    static_assert(UsesSat16<M>(), "packed rows use the 16-bit sums");
    return {&PackedRowVec<Src, Dst, M>, nullptr};
  } else if constexpr (Src::kVertHalf) {
    return {&RowVec<Src, Dst, M>, &Row2Vec<Src, Dst, M>};
  } else {
    return {&RowVec<Src, Dst, M>, nullptr};
  }
}
#else   // HWY_TARGET == HWY_SCALAR: one lane is no vector; use the scalar row.
template <class Src, class Dst, YuvMatrix M>
void RowVec(const YuvRow& row, uint8_t* dst, int n) {
  scalar::YuvToRgbRow<Src, Dst, M>(row, dst, 0, n);
}
template <class Src, class Dst, YuvMatrix M>
constexpr YuvToRgbRows VecRows() {
  return {&RowVec<Src, Dst, M>, nullptr};
}
#endif  // HWY_TARGET != HWY_SCALAR

YuvToRgbRows RowTable(int id) {
#define KELO_ROW_PTR(S, D, M) VecRows<S, D, YuvMatrix::M>(),
  static constexpr YuvToRgbRows kTable[] = {KELO_YUV_TO_RGB_ROWS(KELO_ROW_PTR)};
#undef KELO_ROW_PTR
  return kTable[id];
}

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_HAVE_HWY

#if !KELO_HAVE_HWY || HWY_ONCE
#include "common/internal/api.h"
#include "kimgp_csc.h"

namespace kelo {
namespace csc {
namespace scalar {

template <class Src, class Dst, YuvMatrix M>
void Row(const YuvRow& row, uint8_t* dst, int n) {
  YuvToRgbRow<Src, Dst, M>(row, dst, 0, n);
}

YuvToRgbRows RowTable(int id) {
#define KELO_ROW_PTR(S, D, M) YuvToRgbRows{&Row<S, D, YuvMatrix::M>, nullptr},
  static constexpr YuvToRgbRows kTable[] = {KELO_YUV_TO_RGB_ROWS(KELO_ROW_PTR)};
#undef KELO_ROW_PTR
  return kTable[id];
}

}  // namespace scalar

KELO_VEC_EXPORT(RowTable);

YuvToRgbRows YuvToRgbRowFor(YuvToRgbRowId id) {
  return KELO_VEC_CALL(RowTable, scalar::RowTable)(id);
}
YuvToRgbRows ScalarYuvToRgbRowFor(YuvToRgbRowId id) { return scalar::RowTable(id); }

}  // namespace csc
}  // namespace kelo

// kimgp_csc_<name>: the image walk of layout S with the row of (S, D, M).
#define KELO_YUV_TO_RGB_KERNEL(name, S, D, M)                                   \
  KELO_EXPORT void kimgp_csc_##name(KELO_CSC_PARAMS) {                          \
    using namespace kelo::csc;                                                  \
    YuvToRgbImage<S>(sp, sw, sh, ss, ds, dp, YuvToRgbRowFor(kRow_##S##_##D##_##M)); \
  }

// YV12 members exchange the chroma planes of the caller's descriptor, run the
// YUV420 member, and leave the planes exchanged.
#define KELO_YV12_TO_RGB_KERNEL(dst)                                            \
  KELO_EXPORT void kimgp_csc_yv12_to_##dst(KELO_CSC_PARAMS) {                   \
    kelo::csc::ExchangeChroma(sp, ss);                                          \
    kimgp_csc_yuv420_to_##dst(sp, sw, sh, ss, ds, dp);                          \
  }

#define KELO_EACH_RGB(X, src, S)                                                \
  X(src##_to_rgb565, S, Rgb565, kBt601Limited)                                  \
  X(src##_to_bgr565, S, Bgr565, kBt601Limited)                                  \
  X(src##_to_rgb888, S, Rgb888, kBt601Limited)                                  \
  X(src##_to_bgr888, S, Bgr888, kBt601Limited)                                  \
  X(src##_to_rgba8888, S, Rgba8888, kBt601Limited)                              \
  X(src##_to_bgra8888, S, Bgra8888, kBt601Limited)                              \
  X(src##_to_argb8888, S, Argb8888, kBt601Limited)                              \
  X(src##_to_abgr8888, S, Abgr8888, kBt601Limited)

KELO_EACH_RGB(KELO_YUV_TO_RGB_KERNEL, yuv420, I420)
KELO_EACH_RGB(KELO_YUV_TO_RGB_KERNEL, yuv422n, I422)
KELO_EACH_RGB(KELO_YUV_TO_RGB_KERNEL, yuv444, I444)
KELO_EACH_RGB(KELO_YUV_TO_RGB_KERNEL, nv12, Nv12)
KELO_EACH_RGB(KELO_YUV_TO_RGB_KERNEL, nv21, Nv21)
KELO_EACH_RGB(KELO_YUV_TO_RGB_KERNEL, uyvy, Uyvy)
KELO_EACH_RGB(KELO_YUV_TO_RGB_KERNEL, yuyv, Yuyv)
KELO_YV12_TO_RGB_KERNEL(rgb565)
KELO_YV12_TO_RGB_KERNEL(bgr565)
KELO_YV12_TO_RGB_KERNEL(rgb888)
KELO_YV12_TO_RGB_KERNEL(bgr888)
KELO_YV12_TO_RGB_KERNEL(rgba8888)
KELO_YV12_TO_RGB_KERNEL(bgra8888)
KELO_YV12_TO_RGB_KERNEL(argb8888)
KELO_YV12_TO_RGB_KERNEL(abgr8888)

// YUV422W is read as planar 4:2:2.
KELO_YUV_TO_RGB_KERNEL(yuv422w_to_rgb565, I422, Rgb565, kBt601Limited)
KELO_YUV_TO_RGB_KERNEL(yuv422w_to_bgr565, I422, Bgr565, kBt601Limited)

// The standard-specific members.
KELO_YUV_TO_RGB_KERNEL(bt601_fr_yuv420_to_rgba8888, I420, Rgba8888, kBt601Full)
KELO_YUV_TO_RGB_KERNEL(bt601_fr_nv12_to_rgba8888, Nv12, Rgba8888, kBt601Full)
KELO_YUV_TO_RGB_KERNEL(bt601_fr_nv21_to_rgba8888, Nv21, Rgba8888, kBt601Full)
KELO_YUV_TO_RGB_KERNEL(bt709_yuv420_to_rgba8888, I420, Rgba8888, kBt709Limited)
KELO_YUV_TO_RGB_KERNEL(bt709_fr_yuv420_to_rgba8888, I420, Rgba8888, kBt709Full)

#endif  // !KELO_HAVE_HWY || HWY_ONCE
