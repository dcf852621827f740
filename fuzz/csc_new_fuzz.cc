// kimgp_csc_new and its per-family entries over pairs of codes (mostly the
// linear layouts it converts, sometimes any code), sizes, layouts and std
// words (the BT.2020 ones included), into a destination of the same size.
#include "fuzz/harness.h"
#include "kimgp_csc.h"

namespace {

const int32_t kLinear[] = {0,   1,   2,   3,   4,   5,   6,   7,   100, 101,
                           200, 201, 400, 401, 500, 501, 502, 503, 600, 601};

int32_t PickStdNew(FuzzedDataProvider& in) {
  return in.ConsumeBool() ? kelo::fuzz::PickStd(in) : in.PickValueInArray({20, 21});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  auto code = [&] {
    return in.ConsumeIntegralInRange<int>(0, 7) == 0
               ? kelo::fuzz::PickCode(in)
               : kelo::fuzz::PickFrom(in, kLinear, sizeof(kLinear) / sizeof(kLinear[0]));
  };
  const int32_t scs = code();
  const int32_t dcs = code();
  const int32_t w = kelo::fuzz::PickSize(in, 300);
  const int32_t h = kelo::fuzz::PickSize(in, 64);
  const int entry = in.ConsumeIntegralInRange<int>(0, 4);
  const auto [src, dst] = kelo::fuzz::MakeConversion(in, scs, dcs, w, h, PickStdNew);
  kelo::fuzz::RunEveryTarget(*src, *dst, [&](kimgp_img* s, kimgp_img* d) {
    switch (entry) {
      case 1: return kimgp_csc_yuv_to_rgb_new(s, d);
      case 2: return kimgp_csc_rgb_to_yuv_new(s, d);
      case 3: return kimgp_csc_yuv_to_yuv_new(s, d);
      case 4: return kimgp_csc_rgb_to_rgb_new(s, d);
      default: return kimgp_csc_new(s, d);
    }
  });
  return 0;
}
