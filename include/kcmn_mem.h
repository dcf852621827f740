/*
 * kcmn_mem.h - common memory and arithmetic services: 32-byte-aligned
 * allocation, strided block copy, fixed-granularity fills, base-2 logarithms.
 *
 * The fills write the 32-bit fill word repeated in little-endian byte order
 * (lowest byte at the lowest address); to fill with one byte, pass it repeated
 * four times. Their size handling is coarse on purpose and is part of their
 * contract; the size requirements are preconditions.
 */
#ifndef KCMN_MEM_H
#define KCMN_MEM_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Returns a 32-byte-aligned block of at least `size` bytes, or NULL. The raw
 * pointer is kept in the pointer-sized slot just below the returned address. */
void *kcmn_malloc_align32(uint32_t size);
/* Releases a block from either aligned allocator; NULL does nothing. */
void kcmn_mfree_align32(void *ptr);
/* Same as kcmn_malloc_align32 / kcmn_mfree_align32; the pairs mix freely. */
void *kcmn_malloc_fast_align32(uint32_t size);
void kcmn_mfree_fast_align32(void *ptr);

/* Copies `rows` rows of `row_bytes` bytes, advancing the destination by
 * `dst_step` and the source by `src_step` bytes. Nothing when rows < 1. */
void kcmn_blk_mcpy(void *dst, const void *src, int32_t dst_step,
                   int32_t src_step, int32_t row_bytes, int32_t rows);

/* Writes 128-byte blocks until `size` is covered: the size is rounded up to
 * a multiple of 128, and a size of 0 or less still writes one block. */
void kcmn_mset_x128(void *dst, uint32_t word, int32_t size);
/* Writes size >> 7 blocks of 128 bytes; the remainder is left unwritten.
 * Requires size >= 128 (smaller sizes write nothing). */
void kcmn_mset_x64(void *dst, uint32_t word, int32_t size);
/* Writes 64-byte blocks while 64 bytes remain, then the rest byte by byte
 * with the word's lowest byte. Requires size >= 1 (0 writes nothing). */
void kcmn_mset_x64a(void *dst, uint32_t word, int32_t size);
/* Per 32-byte block i of size >> 5 blocks: bytes 0-7 of block i and bytes
 * 8-31 of block i + 1. So bytes 8-31 of the first block are never written and
 * bytes 8-31 of the block after the last one are. Requires size >= 32 and a
 * 4-byte-aligned destination (smaller sizes write nothing). */
void kcmn_mset_x32(void *dst, uint32_t word, int32_t size);
/* Writes one 32-byte block, then more while 32 bytes remain, then the rest
 * (size modulo 32) byte by byte with the word's lowest byte. Requires size >=
 * 32 (a smaller size writes the first 32-byte block only). */
void kcmn_mset_x32ax4(void *dst, uint32_t word, int32_t size);
/* Clears 4 * count bytes in passes of 256 bytes (count is in 32-bit words).
 * Requires count to be a positive multiple of 64 and a 4-byte-aligned
 * destination; a remainder below 64 words is left unwritten. */
void kcmn_mclr_x64(void *dst, int32_t count);

/* Count of leading zero bits: 32 for 0. */
int32_t kcmn_bsr_clz_in_code(uint32_t x);
/* 31 - clz(x): -1 for 0. */
int32_t kcmn_floor_log2(uint32_t x);
/* Smallest f with x <= 2^f, for x > 0; -1 for 0. */
int32_t kcmn_ceil_log2(uint32_t x);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* KCMN_MEM_H */
