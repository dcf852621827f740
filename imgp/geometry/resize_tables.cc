// Exported tables of the resizers.
#include "common/internal/api.h"
#include "kimgp_rsz.h"

// Ramp steps of the mode-1 up-scalers, in 1/64 units, by the number of outputs
// one source sample spans. The values are the table's own, not 64/k.
KELO_EXPORT const uint32_t scale[34] = {
    0, 0, 32, 21, 16, 13, 11, 9, 8, 7, 6, 6, 5, 5, 4, 4, 4,
    3, 3, 3, 3, 3, 3, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 1};

namespace {

struct WeightTable {
  uint8_t w[256];
};

constexpr WeightTable MakeWeights() {
  WeightTable t{};
  for (int h = 0; h < 8; ++h) {
    for (int v = 0; v < 8; ++v) {
      uint8_t* e = t.w + (h * 8 + v) * 4;
      e[0] = static_cast<uint8_t>((8 - h) * (8 - v));
      e[1] = static_cast<uint8_t>(h * (8 - v));
      e[2] = static_cast<uint8_t>((8 - h) * v);
      e[3] = static_cast<uint8_t>(h * v);
    }
  }
  return t;
}

constexpr WeightTable kWeights = MakeWeights();

}  // namespace

// Bilinear weights of 8 x 8 phases, four neighbours each.
KELO_EXPORT const uint8_t kimgp_tbl_rsz_weight[256] = {
#define KELO_W4(i) kWeights.w[i], kWeights.w[i + 1], kWeights.w[i + 2], kWeights.w[i + 3]
#define KELO_W16(i) KELO_W4(i), KELO_W4(i + 4), KELO_W4(i + 8), KELO_W4(i + 12)
#define KELO_W64(i) KELO_W16(i), KELO_W16(i + 16), KELO_W16(i + 32), KELO_W16(i + 48)
    KELO_W64(0), KELO_W64(64), KELO_W64(128), KELO_W64(192)
#undef KELO_W64
#undef KELO_W16
#undef KELO_W4
};
