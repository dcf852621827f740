// Descriptors of the DCT-domain downscaler's tests: width[0], height[0] and
// cs as kimgp_rsz_new_set_img expects them, YUV420 chroma sizes rounded up.
#ifndef KELO_TESTS_IMGP_DCTRSZ_DESCRIPTORS_H_
#define KELO_TESTS_IMGP_DCTRSZ_DESCRIPTORS_H_

#include <cstring>

#include "kimgp_img.h"

namespace kelo {
namespace test {

inline kimgp_img Descriptor(int32_t cs, int32_t w, int32_t h) {
  kimgp_img m;
  std::memset(&m, 0, sizeof(m));
  m.cs = cs;
  m.width[0] = w;
  m.height[0] = h;
  if (cs == KIMGP_CS_YUV420) {
    m.width[1] = m.width[2] = (w + 1) / 2;
    m.height[1] = m.height[2] = (h + 1) / 2;
  }
  return m;
}
inline kimgp_img Yuv420(int32_t w, int32_t h) { return Descriptor(KIMGP_CS_YUV420, w, h); }
inline kimgp_img Nv12(int32_t w, int32_t h) { return Descriptor(KIMGP_CS_NV12, w, h); }

}  // namespace test
}  // namespace kelo

#endif  // KELO_TESTS_IMGP_DCTRSZ_DESCRIPTORS_H_
