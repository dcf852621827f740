// The decoding tables as fixed-point arithmetic, for the vector path: each
// table entry is clamp(((clamp(i, in_lo, in_hi) - center) * mul + round) >>
// shift, out_lo, out_hi) with round = 1 << (shift - 1). The tests check that
// every entry of LUT_Y10, LUT_R_CR10, LUT_B_CB10, LUT_G_CB10 and LUT_G_CR10
// comes out so.
#ifndef KELO_IMGP_HDR_HDR_TABLES_H_
#define KELO_IMGP_HDR_HDR_TABLES_H_

#include <cstdint>

namespace kelo {
namespace hdr {

struct DecodeRule {
  int32_t in_lo, in_hi, center, mul, shift, out_lo, out_hi;
};

constexpr int32_t kNoClamp = 1 << 20;
constexpr DecodeRule kY10Rule{0, 1023, 64, 306433, 18, 0, 1024};
constexpr DecodeRule kRCr10Rule{64, 960, 512, 110445, 16, -kNoClamp, kNoClamp};
constexpr DecodeRule kBCb10Rule{64, 960, 512, 281827, 17, -kNoClamp, kNoClamp};
constexpr DecodeRule kGCb10Rule{64, 960, 512, -24649, 17, -kNoClamp, kNoClamp};
constexpr DecodeRule kGCr10Rule{64, 960, 512, -42793, 16, -kNoClamp, kNoClamp};

}  // namespace hdr
}  // namespace kelo

#endif  // KELO_IMGP_HDR_HDR_TABLES_H_
