// Internals of the DCT-domain downscaler shared by its settings, transforms
// and pass, and the hooks its tests use.
#ifndef KELO_IMGP_DCTRSZ_DCTRSZ_INTERNAL_H_
#define KELO_IMGP_DCTRSZ_DCTRSZ_INTERNAL_H_

#include <cstddef>
#include <cstdint>

#include "kimgp_dctrsz.h"

namespace kelo {
namespace dctrsz {

// kcmn_malloc_align32 / kcmn_mfree_align32, the frees counted for the tests.
void* Alloc(uint32_t bytes);
void Free(void* p);

// Test hooks over the library's fault hook (common/internal/fault.h).
// FailAllocationForTest(n): FailNthForTest(n), and the count of frees starts
// again. AllocationsForTest(): allocations (and thread starts) since then.
// FailThreadsForTest(mask): worker i (bit i) of the resize pass is reported
// as not started.
void FailAllocationForTest(int n);
int AllocationsForTest();
int FreesForTest();  // non-null blocks freed since then
void FailThreadsForTest(unsigned mask);
unsigned FailedThreadsForTest();

// Luma and chroma sizes of the plane the DCT stage reads, before extension:
// the source's own (mode 0), or after the 2x2 (mode 2) or 4x4 (mode 4)
// pre-shrink, whose widths round in opposite directions.
void SourceSizes(const kimgp_img& s, int32_t mode, int32_t sw[2], int32_t sh[2]);

// Dequantisation of one coefficient: ((acc >> 16) * q) >> 8, low 16 bits.
inline int16_t Dequantise(int32_t acc, int32_t q) {
  const uint32_t prod = static_cast<uint32_t>(acc >> 16) * static_cast<uint32_t>(q);
  return static_cast<int16_t>(static_cast<uint16_t>(static_cast<int32_t>(prod) >> 8));
}

// The matrix class a block of class k uses: k itself when the luma settings
// made matrices for it, else k restricted to the bits the luma classes vary
// in (width for two classes, height for three).
inline int MatrixClass(int k, int n_class0) {
  static const int kMask[5] = {0, 0, 1, 2, 3};
  if (k < n_class0) return k;
  return k & kMask[n_class0 < 0 ? 0 : (n_class0 > 4 ? 4 : n_class0)];
}

}  // namespace dctrsz

// Sub-blocks down or across a window that the runs handle with their
// relaxed edge rule (see BlockRun::rows).
constexpr int kRunMaxSub = 8;

// A run of output blocks side by side in one block row that share their
// class: the same matrices, scale and sub-block counts, windows starting in
// the same source row. Every output block lies inside its plane; every
// window sample of non-zero weight lies inside the readable rows x cols from
// src (the rest of a window, the overhang its matrices weight by zero, may
// lie beyond when ni and nj are at most kRunMaxSub: it is never read).
struct BlockRun {
  const uint8_t* src;    // the windows' top source row
  ptrdiff_t src_stride;
  int32_t rows, cols;    // readable rows and columns from src
  const int32_t* xoff;   // window column of each block, ascending
  int n;                 // blocks; block i writes dst + 4 * i
  int ni, nj;            // sub-blocks down and across
  int16_t* const* v;
  int16_t* const* h;
  const int32_t* q;
  uint8_t* dst;          // top-left output pixel of the first block
  ptrdiff_t dst_stride;
};

namespace dctrsz {

// Pixel lines of a sub-block that a 4x4 matrix weighs: 1 + the last pixel
// index with a non-zero entry (0 for a zero matrix). The pixel index is the
// column of a V matrix and the row of an H matrix (pixel_rows = true).
int UsedLines(const int16_t* m, bool pixel_rows);

// The window of block i of a run at the returned pointer, rows *pitch
// apart: straight from the source, or, when it reaches past the readable
// rows or columns, copied into buf (4 * kRunMaxSub squared bytes) with the
// samples beyond (all of zero weight) repeated from the edge.
const uint8_t* RunWindow(const BlockRun& run, int i, uint8_t* buf, ptrdiff_t* pitch);

}  // namespace dctrsz

namespace scalar {

// The per-block definitions (stride in bytes).
void FdctSubBlock(const uint8_t* pix, int32_t* acc, const int16_t* v,
                  const int16_t* h, ptrdiff_t stride);
void IdctDequant(uint8_t* dst, ptrdiff_t stride, const int32_t* acc,
                 const int32_t* q);
// Inverse of 16-bit coefficients into out[16] (row order), before the
// saturating store.
void IdctCoefs(const int16_t* coef, int16_t* out);
void Idct16(uint8_t* dst, ptrdiff_t stride, const int16_t* coef);
// The coefficients of one block: acc (16 int32) = the sum over sub-blocks
// (bi < ni, bj < nj) of the forward accumulation with v[bi] and h[bj].
void AccumulateBlock(const uint8_t* pix, ptrdiff_t stride, int16_t* const* v,
                     int16_t* const* h, int ni, int nj, int32_t* acc);
// AccumulateBlock, then IdctDequant into dst.
void BlockToBytes(const uint8_t* pix, ptrdiff_t stride, int16_t* const* v,
                  int16_t* const* h, int ni, int nj, const int32_t* q, uint8_t* dst,
                  ptrdiff_t dst_stride);
// BlockToBytes for every block of a run.
void RunToBytes(const BlockRun& run);
// The blocks j < n of a block row from j = 0 that form a run (at least 1):
// j >= 1 joins when cls[j] == k, yoff[j] == yo and
// xoff[j - 1] <= xoff[j] <= x_end.
size_t RunExtent(const uint8_t* cls, const int32_t* xoff, const int32_t* yoff, size_t n,
                 uint8_t k, int32_t yo, int32_t x_end);

}  // namespace scalar

// Dispatched per-block kernels (the best vector path, or the scalar one).
void FdctSubBlock(const uint8_t* pix, int32_t* acc, const int16_t* v,
                  const int16_t* h, ptrdiff_t stride);
void IdctDequant(uint8_t* dst, ptrdiff_t stride, const int32_t* acc,
                 const int32_t* q);
void Idct16(uint8_t* dst, ptrdiff_t stride, const int16_t* coef);
// The coefficients of one block: acc (16 int32) = the sum over sub-blocks
// (bi < ni, bj < nj) of the forward accumulation with v[bi] and h[bj].
void AccumulateBlock(const uint8_t* pix, ptrdiff_t stride, int16_t* const* v,
                     int16_t* const* h, int ni, int nj, int32_t* acc);
// AccumulateBlock, then IdctDequant into dst.
void BlockToBytes(const uint8_t* pix, ptrdiff_t stride, int16_t* const* v,
                  int16_t* const* h, int ni, int nj, const int32_t* q, uint8_t* dst,
                  ptrdiff_t dst_stride);
// The blocks of a run, several at a time.
void RunToBytes(const BlockRun& run);
size_t RunExtent(const uint8_t* cls, const int32_t* xoff, const int32_t* yoff, size_t n,
                 uint8_t k, int32_t yo, int32_t x_end);

}  // namespace kelo

#endif  // KELO_IMGP_DCTRSZ_DCTRSZ_INTERNAL_H_
