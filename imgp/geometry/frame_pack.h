// Scalar definition of the anaglyph row of kimgp_fpa_frm_pack, shared by the
// vector path (for tails) and the tests (as the reference).
#ifndef KELO_IMGP_GEOMETRY_FRAME_PACK_H_
#define KELO_IMGP_GEOMETRY_FRAME_PACK_H_

#include <cstddef>
#include <cstdint>

namespace kelo {
namespace scalar {

// Each of `pixels` RGB888 pixels: R from `red`, G and B from `gb`.
inline void PackAnaglyphRow(const uint8_t* red, const uint8_t* gb, uint8_t* dst,
                            size_t pixels) {
  for (size_t p = 0; p < pixels; ++p) {
    dst[3 * p] = red[3 * p];
    dst[3 * p + 1] = gb[3 * p + 1];
    dst[3 * p + 2] = gb[3 * p + 2];
  }
}

}  // namespace scalar

// Output bytes from which kimgp_fpa_frm_pack streams its stores past the
// caches (2 MiB).
constexpr int64_t kStreamBytes = int64_t{1} << 21;

// PackAnaglyphRow with the best vector path of the running CPU; with
// `stream`, the bulk of the row is stored past the caches (same bytes).
void PackAnaglyphRow(const uint8_t* red, const uint8_t* gb, uint8_t* dst, size_t pixels,
                     bool stream);

}  // namespace kelo

#endif  // KELO_IMGP_GEOMETRY_FRAME_PACK_H_
