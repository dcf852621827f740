// The decoding tables widened to 32-bit entries, for table lookups by vector
// gathers. Same values as LUT_Y10, LUT_R_CR10, LUT_G_CB10, LUT_G_CR10 and
// LUT_B_CB10.
#ifndef KELO_IMGP_HDR_HDR_TABLES_H_
#define KELO_IMGP_HDR_HDR_TABLES_H_

#include <cstdint>

namespace kelo {
namespace hdr {

extern const int32_t kY10[1024];
extern const int32_t kRCr10[1024];
extern const int32_t kGCb10[1024];
extern const int32_t kGCr10[1024];
extern const int32_t kBCb10[1024];

}  // namespace hdr
}  // namespace kelo

#endif  // KELO_IMGP_HDR_HDR_TABLES_H_
