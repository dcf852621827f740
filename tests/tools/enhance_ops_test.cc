#include <gtest/gtest.h>

#include <cstdlib>

#include "tools/kelo/enhance_ops.h"
#include "tools/kelo/error.h"
#include "tools/kelo/input.h"

namespace kelo {
namespace test {
namespace {

using cli::Image;

// Steps between neighbours across the 8x8 block edges of plane i (columns
// and rows 8k - 1 and 8k) that are block artifacts in `ref`: below 24, where
// a coarse coder's blocks differ, not at the pattern's real edges. Returns
// the mean of those steps in `im`; `inside` gets the mean step within blocks.
double ArtifactSteps(const Image& ref, const Image& im, int i, double* inside) {
  const kimgp_img& m = im.img();
  double edge = 0, in = 0;
  int64_t n_edge = 0, n_in = 0;
  for (int dir = 0; dir < 2; ++dir) {
    const int64_t step = dir == 0 ? 1 : m.stride[i];
    for (int32_t y = dir; y < m.height[i]; ++y) {
      for (int32_t x = 1 - dir; x < m.width[i]; ++x) {
        const int64_t at = int64_t{y} * m.stride[i] + x;
        const int d = std::abs(im.plane(i)[at] - im.plane(i)[at - step]);
        const int r = std::abs(ref.plane(i)[at] - ref.plane(i)[at - step]);
        if ((dir == 0 ? x : y) % 8 != 0) {
          in += d, ++n_in;
        } else if (r > 0 && r < 24) {
          edge += d, ++n_edge;
        }
      }
    }
  }
  *inside = in / n_in;
  return edge / n_edge;
}

// The demo's blocky frame has all its steps on block edges; deblocking
// must make the artifact steps clearly smaller, spreading them into the
// blocks.
TEST(Deblocking, DemoFrameIsSmootherAtBlockEdges) {
  const Image pattern = cli::PatternImage(*cli::LookupFormat(KIMGP_CS_YUV420), 320, 184);
  const Image blocky = cli::BlockMeans(pattern);
  Image smooth(blocky);
  cli::DeblockImage(&smooth, 8, false);
  for (int i = 0; i < 3; ++i) {
    SCOPED_TRACE(i);
    double inside_before, inside_after;
    const double before = ArtifactSteps(blocky, blocky, i, &inside_before);
    const double after = ArtifactSteps(blocky, smooth, i, &inside_after);
    EXPECT_EQ(inside_before, 0.0);
    EXPECT_GT(before, 1.0);
    EXPECT_LT(after, 0.6 * before);
    EXPECT_GT(inside_after, 0.0);
  }
}

TEST(Deblocking, RefusesOtherThanYuv) {
  Image rgb(*cli::LookupFormat(KIMGP_CS_RGB888), 16, 16);
  EXPECT_THROW(cli::DeblockImage(&rgb, 8, false), cli::RunError);
}

}  // namespace
}  // namespace test
}  // namespace kelo
