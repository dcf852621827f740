/*
 * kcmn_bitstream.h - bit-level reader and writer over caller-owned buffers.
 *
 * The reader comes in two bit orders sharing one record: most-significant bit
 * first (kcmn_bsr_*), and least-significant bit first (kcmn_bsr_le_*; set it
 * up with kcmn_bsr_init and kcmn_bsr_le_flush as the refill, then use only the
 * _le_ operations on it). The writer is most-significant bit first. Nothing is
 * allocated; the records are plain values the caller owns, and init may be
 * repeated at any time to restart on a buffer.
 *
 * Every shift by 32 or more positions yields 0, and a shift amount outside
 * 0..31 counts by its low byte (so 32 - n with n = 33 is 255, giving 0): a
 * read of 0 bits returns 0, a read of 32 bits clears the cache. Bit counts
 * are not checked against their stated ranges; values outside them follow
 * that rule.
 *
 * End of data: the reader reports it only through a failed refill. Reads then
 * return 0xFFFFFFFF (which a successful 32-bit read of all ones also returns),
 * and a read that runs past the end returns zero bits for the missing ones and
 * leaves bits_left negative; the next read needing a refill fails.
 */
#ifndef KCMN_BITSTREAM_H
#define KCMN_BITSTREAM_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct kcmn_bsr kcmn_bsr;

/* Loads up to `count` bytes into the cache; 0 on success, non-zero when
 * nothing could be loaded (then cache and bits_left are 0). */
typedef int32_t (*kcmn_bsr_refill_fn)(kcmn_bsr *bsr, int32_t count);

/* Reader. The most-significant-first cache holds its unread bits at the top
 * (next bit is bit 31), the least-significant-first cache at the bottom (next
 * bit is bit 0), zeros elsewhere. */
struct kcmn_bsr {
  uint32_t cache;            /* bit cache */
  int32_t bits_left;         /* valid bits in cache; negative past the end */
  const uint8_t *cur;        /* next byte not yet loaded */
  const uint8_t *last;       /* last byte of the buffer (start + size - 1) */
  const uint8_t *start;      /* buffer start */
  uint32_t size;             /* buffer size in bytes */
  kcmn_bsr_refill_fn refill; /* called by reads that run out of cache */
};

typedef struct kcmn_bsw kcmn_bsw;

/* Called each time the writer completes a byte, while cur still points at
 * that byte. */
typedef void (*kcmn_bsw_byte_fn)(kcmn_bsw *bsw);

/* Writer. */
struct kcmn_bsw {
  uint8_t *cur;             /* byte being filled */
  int32_t bits_free;        /* bits still free in that byte (8 after init) */
  uint8_t *last;            /* last byte of the buffer (start + size - 1) */
  uint8_t *start;           /* buffer start */
  uint32_t size;            /* buffer size in bytes */
  kcmn_bsw_byte_fn on_byte; /* byte-completion hook, may be NULL */
};

/* Sets the reader on `size` bytes at `buf` with an empty cache (the first
 * read refills). A NULL `refill` selects kcmn_bsr_flush. Reads nothing. */
void kcmn_bsr_init(kcmn_bsr *bsr, const uint8_t *buf, uint32_t size,
                   kcmn_bsr_refill_fn refill);

/* Default most-significant-first refill: replaces the cache with the next
 * min(count, bytes remaining) bytes, the first in bits 31..24, and sets
 * bits_left to 8 per byte loaded. Returns -1, with cache and bits_left 0,
 * when that is less than one byte. Reads pass 4; bytes past the fourth (a
 * count above 4) are consumed without reaching the cache. */
int32_t kcmn_bsr_flush(kcmn_bsr *bsr, int32_t count);

/* Reads n bits (0..32), first bit most significant, with at most one refill.
 * Returns 0xFFFFFFFF when that refill fails. */
uint32_t kcmn_bsr_read(kcmn_bsr *bsr, int32_t n);
/* Reads one bit. Refills only when bits_left is exactly 0, so past the end
 * (negative bits_left) it keeps returning 0 bits. 0xFFFFFFFF on a failed
 * refill. */
uint32_t kcmn_bsr_read1(kcmn_bsr *bsr);
/* As kcmn_bsr_read1, storing the bit through `bit` and returning 0; -1 on a
 * failed refill, with *bit unchanged. */
int32_t kcmn_bsr_read1_value(kcmn_bsr *bsr, uint8_t *bit);
/* Drops n bits (0..32) with at most one refill. Returns the refill's status
 * (cast) when it fails, otherwise the new cache word, which carries no
 * status. */
uint32_t kcmn_bsr_skip(kcmn_bsr *bsr, int32_t n);
/* Returns the next n bits (1..32) without consuming them. Tops up the cache
 * with its whole free bytes, then takes up to 7 more bits straight from the
 * buffer, so 32 bits can be peeked with 25..31 bits cached. Never fails: bits
 * past the end are 0. */
uint32_t kcmn_bsr_peek(kcmn_bsr *bsr, int32_t n);
/* Skips `skip` bits as kcmn_bsr_skip, then peeks n bits. Returns 0 when the
 * skip's refill fails. */
uint32_t kcmn_bsr_skip_peek(kcmn_bsr *bsr, int32_t skip, int32_t n);
/* Drops the rest of the current byte (bits_left & 7 bits). */
void kcmn_bsr_skip_to_align8(kcmn_bsr *bsr);

/* Least-significant-first refill: as kcmn_bsr_flush with the first byte in
 * bits 7..0, the second in 15..8, and so on. */
int32_t kcmn_bsr_le_flush(kcmn_bsr *bsr, int32_t count);
/* Reads n bits (0..32), first bit least significant, with at most one refill.
 * Returns 0xFFFFFFFF when that refill fails. */
uint32_t kcmn_bsr_le_read(kcmn_bsr *bsr, int32_t n);
/* Drops n bits (0..32) from the cache. Never refills: only bits already in
 * the cache may be skipped. */
void kcmn_bsr_le_skip(kcmn_bsr *bsr, int32_t n);
/* Drops the rest of the current byte (bits_left & 7 bits). */
void kcmn_bsr_le_skip_to_align8(kcmn_bsr *bsr);

/* Sets the writer on `size` bytes at `buf`. The buffer is not cleared. */
void kcmn_bsw_init(kcmn_bsw *bsw, uint8_t *buf, uint32_t size,
                   kcmn_bsw_byte_fn on_byte);
/* Appends bit 0 of `bit`. Returns -1 when cur is past the last byte. */
int32_t kcmn_bsw_write1(kcmn_bsw *bsw, uint32_t bit);
/* Appends the low n bits (1..32) of `value`, most significant first; n < 1
 * writes nothing. Returns -1 when cur is past the last byte on entry. The end
 * is tested only on entry: a call starting on the last byte may write up to
 * four bytes beyond it, so size buffers with that margin. n is not limited:
 * above 32 it writes n bits, the extra ones 0, and reaches further.
 *
 * Bytes are never cleared: each written bit shifts the byte's earlier content
 * up by one. A completed byte holds exactly its eight written bits; a partly
 * written one holds its bits in the low positions, under the shifted earlier
 * content. Nothing pads a final partial byte; write the padding bits. */
int32_t kcmn_bsw_write(kcmn_bsw *bsw, uint32_t value, int32_t n);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* KCMN_BITSTREAM_H */
