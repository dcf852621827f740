// The enhancement filters on kelo Images, shared by the deblock and enhance
// commands, their demo and the tests.
#ifndef KELO_TOOLS_KELO_ENHANCE_OPS_H_
#define KELO_TOOLS_KELO_ENHANCE_OPS_H_

#include <cstdint>

#include "tools/kelo/image.h"

namespace kelo {
namespace cli {

// A blocky copy of an 8-bit YUV frame: every 8x8 block (or the part of one
// at the right and bottom) of every plane replaced by its rounded mean, as a
// coarse block coder would leave it.
Image BlockMeans(const Image& src);

// Deblocks `im` in place with the given strength (0..15): every plane with
// kimgp_dbf8x8_yuv, or the luma plane alone with kimgp_dbf8x8 (which limits
// the strength to 12). The interleaved chroma of nv12 and nv21 is left as it
// is. Throws a RunError for formats other than 8-bit YUV.
void DeblockImage(Image* im, uint32_t strength, bool luma_only);

// True for the formats DeblockImage takes.
bool IsDeblockable(const FormatInfo& f);

}  // namespace cli
}  // namespace kelo

#endif  // KELO_TOOLS_KELO_ENHANCE_OPS_H_
