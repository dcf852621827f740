#include "tests/support/targets.h"

#include "common/internal/simd.h"
#if KELO_HAVE_HWY
#include <hwy/highway.h>
#include <hwy/targets.h>
#endif

namespace kelo {
namespace test {

void ForEachTarget(const std::function<void(const std::string&)>& body) {
#if KELO_HAVE_HWY && KELO_HWY_DYNAMIC
  for (int64_t target : hwy::SupportedAndGeneratedTargets()) {
    hwy::SetSupportedTargetsForTest(target);
    body(hwy::TargetName(target));
  }
  hwy::SetSupportedTargetsForTest(0);
#elif KELO_HAVE_HWY
  body(hwy::TargetName(HWY_STATIC_TARGET));
#else
  body("scalar");
#endif
}

std::vector<Size2> TestSizes(std::mt19937& rng, int random_count, int32_t max_w,
                             int32_t max_h) {
  std::vector<Size2> sizes = {{1, 1},   {2, 1},   {3, 2},   {7, 3},  {15, 1},
                              {16, 2},  {17, 3},  {31, 2},  {32, 1}, {33, 4},
                              {63, 2},  {64, 3},  {65, 1},  {127, 2}, {128, 1},
                              {129, 3}, {255, 1}, {257, 2}};
  std::uniform_int_distribution<int32_t> dw(1, max_w), dh(1, max_h);
  for (int i = 0; i < random_count; ++i) sizes.push_back({dw(rng), dh(rng)});
  return sizes;
}

int32_t RandomPad(std::mt19937& rng) {
  const uint32_t r = rng() % 4;
  if (r == 0) return 0;
  return static_cast<int32_t>(1 + rng() % 70);
}

std::mt19937 MakeRng(uint32_t salt) { return std::mt19937(0x6B656C6Fu ^ salt); }

}  // namespace test
}  // namespace kelo
