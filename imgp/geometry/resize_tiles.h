// Where the resize passes put their output rows, and how the rotating
// kernels turn them.
//
// A vertical pass writes output row pos through a RowSink: the plain kernels
// give every row its place in the destination; the rotating kernels give a
// small tile of rows (row pos in slot pos % rows) and rotate the tile into
// the destination whenever it is full, and at the end.
//
// A tile holds rows [y0, y0 + n) and columns [x0, x0 + wc) of the plain
// W x H result. Rotated as a wc x n plane with the rotation kernels, it lands
// at the image of its top-left corner:
//
//   90l  destination row W - x0 - wc, column y0
//   90r  destination row x0,          column H - y0 - n
//   180  destination row H - y0 - n,  column W - x0 - wc
#ifndef KELO_IMGP_GEOMETRY_RESIZE_TILES_H_
#define KELO_IMGP_GEOMETRY_RESIZE_TILES_H_

#include <cstddef>
#include <cstdint>

#include "imgp/geometry/rotate_kernels.h"

namespace kelo {
namespace rsz {

// Output rows of a vertical pass. Row(pos) is where output row pos goes;
// Done(pos) says it is complete. A finished row stays readable until its
// slot is handed out again (the height up-scaler copies its previous row).
struct RowSink {
  uint8_t* base;
  ptrdiff_t step;   // bytes between slots
  int32_t rows;     // slots, 0 when every row has its own
  void (*flush)(void* ctx, int32_t y0, int32_t n);  // null for plain rows
  void* ctx;
  int32_t first, pending;

  static RowSink Plain(uint8_t* dst, ptrdiff_t step) {
    return RowSink{dst, step, 0, nullptr, nullptr, 0, 0};
  }
  uint8_t* Row(int64_t pos) const { return base + (rows > 0 ? pos % rows : pos) * step; }
  void Done(int64_t pos) {
    if (flush == nullptr) return;
    if (pending == 0) first = static_cast<int32_t>(pos);
    if (++pending == rows) Finish();
  }
  // Hands over the rows finished since the last flush.
  void Finish() {
    if (flush != nullptr && pending > 0) flush(ctx, first, pending);
    pending = 0;
  }
};

// Bytes of one tile: 16 rows of up to 2048 bytes, or 8 rows of 2048 pairs
// (taller tiles of narrower chunks measured slower on 1080p sources).
constexpr int32_t kTileBytes = 32768;

// The tiles of a rotating kernel over a plain w x h result of `unit`-byte
// samples, written rotated by op (kRot90l, kRot90r, kRot180) to dst.
struct RotTiles {
  int op;
  int32_t unit, w, h;
  uint8_t* dst;
  ptrdiff_t ds;
  uint8_t* tile;
  int32_t x0 = 0, wc = 0;  // the current column chunk

  // Rows per tile: one band of the rotation's block transposes.
  int32_t Rows() const { return 16 / unit; }
  // Units per tile row.
  int32_t Chunk() const { return kTileBytes / Rows() / unit; }
  ptrdiff_t TileStep() const { return ptrdiff_t{wc} * unit; }

  // Where the image of plain columns [cx, cx + cw) of rows [y0, y0 + n)
  // starts in the destination.
  uint8_t* Corner(int32_t cx, int32_t cw, int32_t y0, int32_t n) const {
    ptrdiff_t row = 0, col = 0;
    switch (op) {
      case kRot90l: row = w - cx - cw, col = y0; break;
      case kRot90r: row = cx, col = h - y0 - n; break;
      default: row = h - y0 - n, col = w - cx - cw; break;
    }
    return dst + row * ds + col * unit;
  }
  // Rotates rows of cw units ts bytes apart at t, plain columns
  // [cx, cx + cw) of rows [y0, y0 + n), into place. A quarter turn takes its
  // rows in bands of 8 bytes' height, the last band ending at row n and
  // overlapping the one before (its rows are written twice, with the same
  // bytes) rather than leaving rows to the scalar kernel.
  void Turn(const uint8_t* t, ptrdiff_t ts, int32_t cx, int32_t cw, int32_t y0,
            int32_t n) const {
    const int32_t band = 8 / unit, odd = n % band;
    if (op == kRot180 || n < band || odd == 0) {
      Rotate(op, static_cast<size_t>(unit), t, cw, n, ts, ds, Corner(cx, cw, y0, n));
      return;
    }
    const int32_t whole = n - odd;
    Rotate(op, static_cast<size_t>(unit), t, cw, whole, ts, ds, Corner(cx, cw, y0, whole));
    Rotate(op, static_cast<size_t>(unit), t + (n - band) * ts, cw, band, ts, ds,
           Corner(cx, cw, y0 + n - band, band));
  }
  // Rotates tile rows 0 .. n - 1, plain rows y0 .. y0 + n - 1, into place.
  void Flush(int32_t y0, int32_t n) const { Turn(tile, TileStep(), x0, wc, y0, n); }
  static void FlushFn(void* self, int32_t y0, int32_t n) {
    static_cast<const RotTiles*>(self)->Flush(y0, n);
  }
  // A sink that fills the tile of the current chunk.
  RowSink Sink() {
    return RowSink{tile, TileStep(), Rows(), &FlushFn, this, 0, 0};
  }
};

// Runs f once per column chunk of plain columns [x_begin, x_end), with
// rt->x0 and rt->wc set to the chunk.
template <class F>
void ForEachChunk(RotTiles* rt, int32_t x_begin, int32_t x_end, F&& f) {
  const int32_t chunk = rt->Chunk();
  for (int32_t x0 = x_begin; x0 < x_end; x0 += chunk) {
    rt->x0 = x0;
    rt->wc = x_end - x0 < chunk ? x_end - x0 : chunk;
    f();
  }
}
// The same over rt's whole plain width.
template <class F>
void ForEachChunk(RotTiles* rt, F&& f) {
  ForEachChunk(rt, 0, rt->w, f);
}

}  // namespace rsz
}  // namespace kelo

// Every rotating kernel family: X(name, layout, op suffix, rotation code).
#define KELO_RSZ_ROT_KERNELS(X)          \
  X(8b, L8b, 90l, kelo::kRot90l)         \
  X(8b, L8b, 90r, kelo::kRot90r)         \
  X(8b, L8b, 180, kelo::kRot180)         \
  X(8b8b, L8b8b, 90l, kelo::kRot90l)     \
  X(8b8b, L8b8b, 90r, kelo::kRot90r)     \
  X(8b8b, L8b8b, 180, kelo::kRot180)

#endif  // KELO_IMGP_GEOMETRY_RESIZE_TILES_H_
