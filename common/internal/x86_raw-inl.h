// x86 instructions that Highway 1.0.3 does not expose, on the raw registers of
// every vector width, for the per-target sections of a foreach_target
// translation unit (include it after hwy/highway.h). KELO_X86_RAW is 1 on the
// targets that have them (SSSE3 and up), else 0.
//
//   RawMulAddPairs(a, b)  a's unsigned bytes times b's signed bytes, each
//                         neighbouring pair of products summed into a
//                         saturated signed 16-bit lane (pmaddubsw)
//   RawPackBytes(lo, hi)  signed 16-bit lanes saturated to unsigned bytes,
//                         lo's then hi's within each 128-bit block (packuswb)
//   RawPackSignedBytes(lo, hi)  signed 16-bit lanes saturated to signed
//                         bytes, as RawPackBytes (packsswb; up to 256 bits)
//   RawAddPairs(a, b)     sums of neighbouring 16-bit lanes, a's then b's
//                         within each 128-bit block (phaddw; up to 256 bits)
//   RawMulAddWords(a, b)  signed 16-bit products, each neighbouring pair
//                         summed into a 32-bit lane (pmaddwd; up to 256 bits)
#if defined(KELO_COMMON_INTERNAL_X86_RAW_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KELO_COMMON_INTERNAL_X86_RAW_INL_H_
#undef KELO_COMMON_INTERNAL_X86_RAW_INL_H_
#else
#define KELO_COMMON_INTERNAL_X86_RAW_INL_H_
#endif

#include <hwy/highway.h>

#undef KELO_X86_RAW
#if HWY_ARCH_X86 && HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128
#define KELO_X86_RAW 1
#else
#define KELO_X86_RAW 0
#endif

#if KELO_X86_RAW
HWY_BEFORE_NAMESPACE();
namespace kelo {
namespace HWY_NAMESPACE {

HWY_INLINE __m128i RawMulAddPairs(__m128i a, __m128i b) { return _mm_maddubs_epi16(a, b); }
HWY_INLINE __m128i RawPackBytes(__m128i lo, __m128i hi) { return _mm_packus_epi16(lo, hi); }
HWY_INLINE __m128i RawPackSignedBytes(__m128i lo, __m128i hi) { return _mm_packs_epi16(lo, hi); }
HWY_INLINE __m128i RawAddPairs(__m128i a, __m128i b) { return _mm_hadd_epi16(a, b); }
HWY_INLINE __m128i RawMulAddWords(__m128i a, __m128i b) { return _mm_madd_epi16(a, b); }
#if HWY_TARGET <= HWY_AVX2
HWY_INLINE __m256i RawMulAddPairs(__m256i a, __m256i b) { return _mm256_maddubs_epi16(a, b); }
HWY_INLINE __m256i RawPackBytes(__m256i lo, __m256i hi) { return _mm256_packus_epi16(lo, hi); }
HWY_INLINE __m256i RawPackSignedBytes(__m256i lo, __m256i hi) { return _mm256_packs_epi16(lo, hi); }
HWY_INLINE __m256i RawAddPairs(__m256i a, __m256i b) { return _mm256_hadd_epi16(a, b); }
HWY_INLINE __m256i RawMulAddWords(__m256i a, __m256i b) { return _mm256_madd_epi16(a, b); }
#endif
#if HWY_TARGET <= HWY_AVX3
HWY_INLINE __m512i RawMulAddPairs(__m512i a, __m512i b) { return _mm512_maddubs_epi16(a, b); }
HWY_INLINE __m512i RawPackBytes(__m512i lo, __m512i hi) { return _mm512_packus_epi16(lo, hi); }
#endif

}  // namespace HWY_NAMESPACE
}  // namespace kelo
HWY_AFTER_NAMESPACE();
#endif  // KELO_X86_RAW

#endif  // include guard
