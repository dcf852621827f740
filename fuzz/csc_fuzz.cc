// kimgp_csc and the standard-specific entries over every pair of codes, size,
// layout and std word the input picks, into a destination of the same size.
// Widths are even for the pairs whose kernels ask for it (YUV to RGB).
#include "fuzz/harness.h"
#include "kimgp_csc.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  const int32_t scs = kelo::fuzz::PickCode(in);
  const int32_t dcs = kelo::fuzz::PickCode(in);
  int32_t w = kelo::fuzz::PickSize(in, 300);
  const int32_t h = kelo::fuzz::PickSize(in, 64);
  const bool to_rgb = (scs <= 199 || scs >= 600) && dcs >= 200 && dcs <= 599;
  if (to_rgb && w % 2 != 0) ++w;
  const int entry = in.ConsumeIntegralInRange<int>(0, 3);
  const auto [src, dst] = kelo::fuzz::MakeConversion(in, scs, dcs, w, h);
  kelo::fuzz::RunEveryTarget(*src, *dst, [&](kimgp_img* s, kimgp_img* d) {
    switch (entry) {
      case 1: return kimgp_csc_bt601_fr(s, d);
      case 2: return kimgp_csc_bt709(s, d);
      case 3: return kimgp_csc_bt709_fr(s, d);
      default: return kimgp_csc(s, d);
    }
  });
  return 0;
}
