// Quarter turns of tiles that a kernel has just filled (resize or conversion
// rows), with destination rows written a cache line or more at a time.
#ifndef KELO_IMGP_GEOMETRY_TURN_TILE_H_
#define KELO_IMGP_GEOMETRY_TURN_TILE_H_

#include <cstddef>
#include <cstdint>

namespace kelo {

// Turns by a quarter (op kRot90l or kRot90r) a leading run of the columns of
// a tile of `rows` rows of `cols` units of `unit` (1 or 4) bytes, ts bytes
// apart, with the best path of the running CPU; dst is where the image of
// the whole tile starts (its top-left unit), ds the destination stride.
// `rows` must be a multiple of 16 / unit. Returns the columns done; the rest
// (all of them without vectors, or for another unit) is the caller's.
int32_t TurnTileColumns(int op, size_t unit, const uint8_t* tile, ptrdiff_t ts, int32_t rows,
                        int32_t cols, uint8_t* dst, ptrdiff_t ds);

// A paired tile of bytes: `rows` rows (a multiple of 16) kept as rows / 2
// paired rows, ts bytes apart, each 2 * cols bytes long; paired row
// 8 * b + i holds, byte by byte, columns of rows 16 * b + i (even bytes) and
// 16 * b + i + 8 (odd bytes) of the tile as it lands turned: row j of it goes
// to destination unit j of every destination row (its top-left unit at
// dst). Turns a leading run of its columns by a quarter as TurnTileColumns;
// returns the columns done (a multiple of 16; none without vectors).
int32_t TurnPairedTileColumns(int op, const uint8_t* tile, ptrdiff_t ts, int32_t rows,
                              int32_t cols, uint8_t* dst, ptrdiff_t ds);

}  // namespace kelo

#endif  // KELO_IMGP_GEOMETRY_TURN_TILE_H_
