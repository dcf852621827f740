// 32-bit ARM NEON loops for rows that only move memory, for the per-target
// sections of a foreach_target translation unit (include it after
// hwy/highway.h). KELO_NEON_RAW is 1 on 32-bit ARM NEON, else 0.
//
// Highway's 128-bit loads and stores become one vld1/vst1 of 16 bytes each,
// and GCC computes most of their addresses with separate adds. These loops
// move 32 bytes per instruction where the instruction set allows (vld1/vst1
// of four D registers) and step every address by post-increment, so a loop
// of 64 bytes costs six to ten instructions. Each loop runs `blocks` >= 1
// times and returns nothing; the caller continues after blocks * size bytes.
//
//   RawCopy32s(s, d, n)            n & ~31 bytes copied (n >= 32): 64 per
//                                  block, then 32 when n & 32
//   RawSplit32(s, a, b, blocks)    32 byte pairs per block: a[i] = s[2i],
//                                  b[i] = s[2i + 1]
//   RawMerge32(a, b, d, blocks)    32 byte pairs per block: d[2i] = a[i],
//                                  d[2i + 1] = b[i]
//   RawSwap32(s, d, blocks)        32 byte pairs per block: d[2i] = s[2i + 1],
//                                  d[2i + 1] = s[2i] (s == d works)
//   RawNarrow32(s, d, blocks)      32 little-endian 16-bit samples per block:
//                                  d[i] = low byte of (sample i >> 2)
//   RawYuyv16<kAverage>(s, y, u, v, blocks)
//                                  16 YUYV pixel pairs per block: luma to y,
//                                  U and V to u and v, or with kAverage
//                                  (stored + new) >> 1 there
#if defined(KELO_COMMON_INTERNAL_NEON_RAW_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KELO_COMMON_INTERNAL_NEON_RAW_INL_H_
#undef KELO_COMMON_INTERNAL_NEON_RAW_INL_H_
#else
#define KELO_COMMON_INTERNAL_NEON_RAW_INL_H_
#endif

#include <hwy/highway.h>

#undef KELO_NEON_RAW
#if HWY_ARCH_ARM_V7 && HWY_TARGET == HWY_NEON
#define KELO_NEON_RAW 1
#else
#define KELO_NEON_RAW 0
#endif

#if KELO_NEON_RAW
HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {

#define KELO_NEON_CLOBBERS \
  "cc", "memory", "d0", "d1", "d2", "d3", "d4", "d5", "d6", "d7", "d16", "d17", "d18", \
      "d19", "d20", "d21", "d22", "d23"

HWY_INLINE void RawCopy32s(const uint8_t* s, uint8_t* d, size_t n) {
  asm volatile(
      "lsrs r12, %2, #6\n"
      "beq 2f\n"
      "1:\n"
      "vld1.8 {d16-d19}, [%0]!\n"
      "vld1.8 {d20-d23}, [%0]!\n"
      "subs r12, r12, #1\n"
      "vst1.8 {d16-d19}, [%1]!\n"
      "vst1.8 {d20-d23}, [%1]!\n"
      "bne 1b\n"
      "2:\n"
      "tst %2, #32\n"
      "beq 3f\n"
      "vld1.8 {d16-d19}, [%0]\n"
      "vst1.8 {d16-d19}, [%1]\n"
      "3:\n"
      : "+r"(s), "+r"(d)
      : "r"(n)
      : "r12", KELO_NEON_CLOBBERS);
}

// vld2 leaves the even bytes of each 32 in q8/q10 and the odd ones in
// q9/q11; one exchange makes each plane's 32 bytes consecutive registers.
HWY_INLINE void RawSplit32(const uint8_t* s, uint8_t* a, uint8_t* b, size_t blocks) {
  asm volatile(
      "1:\n"
      "vld2.8 {d16-d19}, [%0]!\n"
      "vld2.8 {d20-d23}, [%0]!\n"
      "subs %3, %3, #1\n"
      "vswp q9, q10\n"
      "vst1.8 {d16-d19}, [%1]!\n"
      "vst1.8 {d20-d23}, [%2]!\n"
      "bne 1b\n"
      : "+r"(s), "+r"(a), "+r"(b), "+r"(blocks)
      :
      : KELO_NEON_CLOBBERS);
}

HWY_INLINE void RawMerge32(const uint8_t* a, const uint8_t* b, uint8_t* d, size_t blocks) {
  asm volatile(
      "1:\n"
      "vld1.8 {d16-d19}, [%0]!\n"
      "vld1.8 {d20-d23}, [%1]!\n"
      "subs %3, %3, #1\n"
      "vswp q9, q10\n"
      "vst2.8 {d16-d19}, [%2]!\n"
      "vst2.8 {d20-d23}, [%2]!\n"
      "bne 1b\n"
      : "+r"(a), "+r"(b), "+r"(d), "+r"(blocks)
      :
      : KELO_NEON_CLOBBERS);
}

HWY_INLINE void RawSwap32(const uint8_t* s, uint8_t* d, size_t blocks) {
  asm volatile(
      "1:\n"
      "vld1.8 {d16-d19}, [%0]!\n"
      "vld1.8 {d20-d23}, [%0]!\n"
      "subs %2, %2, #1\n"
      "vrev16.8 q8, q8\n"
      "vrev16.8 q9, q9\n"
      "vrev16.8 q10, q10\n"
      "vrev16.8 q11, q11\n"
      "vst1.8 {d16-d19}, [%1]!\n"
      "vst1.8 {d20-d23}, [%1]!\n"
      "bne 1b\n"
      : "+r"(s), "+r"(d), "+r"(blocks)
      :
      : KELO_NEON_CLOBBERS);
}

HWY_INLINE void RawNarrow32(const uint8_t* s, uint8_t* d, size_t blocks) {
  asm volatile(
      "1:\n"
      "vld1.8 {d16-d19}, [%0]!\n"
      "vld1.8 {d20-d23}, [%0]!\n"
      "subs %2, %2, #1\n"
      "vshrn.u16 d0, q8, #2\n"
      "vshrn.u16 d1, q9, #2\n"
      "vshrn.u16 d2, q10, #2\n"
      "vshrn.u16 d3, q11, #2\n"
      "vst1.8 {d0-d3}, [%1]!\n"
      "bne 1b\n"
      : "+r"(s), "+r"(d), "+r"(blocks)
      :
      : KELO_NEON_CLOBBERS);
}

// Two vld4 leave Y0 in q0, U in q1, Y1 in q2 and V in q3; exchanging q1 and
// q2 puts the luma pairs in q0/q1 for one vst2. vhadd is (a + b) >> 1.
#define KELO_NEON_YUYV(average)                                             \
  asm volatile("1:\n"                                                       \
               "vld4.8 {d0, d2, d4, d6}, [%0]!\n"                           \
               "vld4.8 {d1, d3, d5, d7}, [%0]!\n"                           \
               "subs %4, %4, #1\n"                                          \
               "vswp q1, q2\n" average                                      \
               "vst2.8 {d0-d3}, [%1]!\n"                                    \
               "vst1.8 {d4-d5}, [%2]!\n"                                    \
               "vst1.8 {d6-d7}, [%3]!\n"                                    \
               "bne 1b\n"                                                   \
               : "+r"(s), "+r"(y), "+r"(u), "+r"(v), "+r"(blocks)           \
               :                                                            \
               : KELO_NEON_CLOBBERS)

template <bool kAverage>
HWY_INLINE void RawYuyv16(const uint8_t* s, uint8_t* y, uint8_t* u, uint8_t* v,
                          size_t blocks) {
  if (kAverage) {
    KELO_NEON_YUYV("vld1.8 {d16-d17}, [%2]\n"
                   "vld1.8 {d18-d19}, [%3]\n"
                   "vhadd.u8 q2, q2, q8\n"
                   "vhadd.u8 q3, q3, q9\n");
  } else {
    KELO_NEON_YUYV("");
  }
}

#undef KELO_NEON_YUYV
#undef KELO_NEON_CLOBBERS

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_NEON_RAW


// Resize rows (appended section).
//
//   RawBox2x2(a, b, d, n)          n >= 16 outputs: d[i] = (a[2i] + a[2i + 1] +
//                                  b[2i] + b[2i + 1]) >> 2; 32 per block, then
//                                  16, then 16 ending at n (d must not overlap
//                                  a or b)
//   RawDouble(s, d, n)             n >= 17 source bytes: d[2i] = s[i],
//                                  d[2i + 1] = (s[i] + s[i + 1]) >> 1 for
//                                  i < n - 1; 32 per block, then 16, then 16
//                                  ending at n - 1
//   RawMeanRows(a, b, d, n)        n >= 32 bytes: d[i] = (a[i] + b[i]) >> 1;
//                                  64 per block, then 32, then 32 ending at n
#if KELO_NEON_RAW
HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {

#define KELO_NEON_RSZ_CLOBBERS                                                      \
  "cc", "memory", "r12", "d0", "d1", "d2", "d3", "d4", "d5", "d6", "d7", "d16", "d17", \
      "d18", "d19", "d20", "d21", "d22", "d23"

// 32 bytes of %0 to q8/q9 and of %1 to q0/q1; `inc` is "!" to step them.
#define KELO_NEON_LOAD2X32(inc) \
  "vld1.8 {d16-d19}, [%0]" inc "\n" \
  "vld1.8 {d0-d3}, [%1]" inc "\n"

// 16 outputs of RawBox2x2 from 32 bytes of each row.
#define KELO_NEON_BOX16(inc)   \
  KELO_NEON_LOAD2X32(inc)      \
  "vpaddl.u8 q8, q8\n"         \
  "vpaddl.u8 q9, q9\n"         \
  "vpadal.u8 q8, q0\n"         \
  "vpadal.u8 q9, q1\n"         \
  "vshrn.u16 d0, q8, #2\n"     \
  "vshrn.u16 d1, q9, #2\n"     \
  "vst1.8 {d0-d1}, [%2]" inc "\n"

// Pair sums of both rows, added, shifted right by two while narrowing.
HWY_INLINE void RawBox2x2(const uint8_t* a, const uint8_t* b, uint8_t* d, size_t n) {
  asm volatile(
      "lsrs r12, %3, #5\n"
      "beq 2f\n"
      "1:\n"
      "vld1.8 {d16-d19}, [%0]!\n"
      "vld1.8 {d20-d23}, [%0]!\n"
      "vld1.8 {d0-d3}, [%1]!\n"
      "vld1.8 {d4-d7}, [%1]!\n"
      "vpaddl.u8 q8, q8\n"
      "vpaddl.u8 q9, q9\n"
      "vpaddl.u8 q10, q10\n"
      "vpaddl.u8 q11, q11\n"
      "subs r12, r12, #1\n"
      "vpadal.u8 q8, q0\n"
      "vpadal.u8 q9, q1\n"
      "vpadal.u8 q10, q2\n"
      "vpadal.u8 q11, q3\n"
      "vshrn.u16 d0, q8, #2\n"
      "vshrn.u16 d1, q9, #2\n"
      "vshrn.u16 d2, q10, #2\n"
      "vshrn.u16 d3, q11, #2\n"
      "vst1.8 {d0-d3}, [%2]!\n"
      "bne 1b\n"
      "2:\n"
      "tst %3, #16\n"
      "beq 3f\n" KELO_NEON_BOX16("!")
      "3:\n"
      "ands r12, %3, #15\n"
      "beq 4f\n"
      "rsb r12, r12, #16\n"
      "sub %2, %2, r12\n"
      "sub %0, %0, r12, lsl #1\n"
      "sub %1, %1, r12, lsl #1\n" KELO_NEON_BOX16("")
      "4:\n"
      : "+r"(a), "+r"(b), "+r"(d)
      : "r"(n)
      : KELO_NEON_RSZ_CLOBBERS);
}

// 16 units of RawDouble: samples and their means with the next ones.
#define KELO_NEON_DOUBLE16(inc)           \
  "vld1.8 {d16-d17}, [%0]" inc "\n"       \
  "vld1.8 {d18-d19}, [%1]" inc "\n"       \
  "vhadd.u8 q9, q8, q9\n"                 \
  "vst2.8 {d16-d19}, [%2]" inc "\n"

// Each sample and the mean with its right neighbour (read through a second
// pointer one byte on), stored interleaved by vst2.
HWY_INLINE void RawDouble(const uint8_t* s, uint8_t* d, size_t n) {
  const uint8_t* t = s + 1;
  asm volatile(
      "sub r12, %3, #1\n"
      "lsrs r12, r12, #5\n"
      "beq 2f\n"
      "1:\n"
      "vld1.8 {d16-d19}, [%0]!\n"
      "vld1.8 {d20-d23}, [%1]!\n"
      "subs r12, r12, #1\n"
      "vhadd.u8 q10, q8, q10\n"
      "vhadd.u8 q11, q9, q11\n"
      "vswp q9, q10\n"
      "vst2.8 {d16-d19}, [%2]!\n"
      "vst2.8 {d20-d23}, [%2]!\n"
      "bne 1b\n"
      "2:\n"
      "sub r12, %3, #1\n"
      "tst r12, #16\n"
      "beq 3f\n" KELO_NEON_DOUBLE16("!")
      "3:\n"
      "ands r12, r12, #15\n"
      "beq 4f\n"
      "rsb r12, r12, #16\n"
      "sub %0, %0, r12\n"
      "sub %1, %1, r12\n"
      "sub %2, %2, r12, lsl #1\n" KELO_NEON_DOUBLE16("")
      "4:\n"
      : "+r"(s), "+r"(t), "+r"(d)
      : "r"(n)
      : KELO_NEON_RSZ_CLOBBERS);
}

// 32 bytes of RawMeanRows.
#define KELO_NEON_MEAN32(inc) \
  KELO_NEON_LOAD2X32(inc)     \
  "vhadd.u8 q8, q8, q0\n"     \
  "vhadd.u8 q9, q9, q1\n"     \
  "vst1.8 {d16-d19}, [%2]" inc "\n"

HWY_INLINE void RawMeanRows(const uint8_t* a, const uint8_t* b, uint8_t* d, size_t n) {
  asm volatile(
      "lsrs r12, %3, #6\n"
      "beq 2f\n"
      "1:\n"
      "subs r12, r12, #1\n" KELO_NEON_MEAN32("!") KELO_NEON_MEAN32("!")
      "bne 1b\n"
      "2:\n"
      "tst %3, #32\n"
      "beq 3f\n" KELO_NEON_MEAN32("!")
      "3:\n"
      "ands r12, %3, #31\n"
      "beq 4f\n"
      "rsb r12, r12, #32\n"
      "sub %0, %0, r12\n"
      "sub %1, %1, r12\n"
      "sub %2, %2, r12\n" KELO_NEON_MEAN32("")
      "4:\n"
      : "+r"(a), "+r"(b), "+r"(d)
      : "r"(n)
      : KELO_NEON_RSZ_CLOBBERS);
}

#undef KELO_NEON_MEAN32
#undef KELO_NEON_DOUBLE16
#undef KELO_NEON_BOX16
#undef KELO_NEON_LOAD2X32
#undef KELO_NEON_RSZ_CLOBBERS

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_NEON_RAW

#endif  // include guard
