// Reading 64 x 32 tiled planes row by row (the tile order is documented in
// kimgp_img.h), for the kernels of other families that read tiled sources.
#ifndef KELO_IMGP_CSC_TILED_H_
#define KELO_IMGP_CSC_TILED_H_

#include <cstdint>

namespace kelo {
namespace csc {

// Bytes [x0, x0 + n) of row y of a 64 x 32 tiled plane (row of tiles / 32 =
// `stride` bytes) into out.
void DetileRow64x32(const uint8_t* plane, int32_t stride, int32_t y, int32_t n, uint8_t* out,
                    int32_t x0 = 0);

}  // namespace csc
}  // namespace kelo

#endif  // KELO_IMGP_CSC_TILED_H_
