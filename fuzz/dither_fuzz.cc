// kimgp_csc_dither over every pair of codes, size, layout and std word the
// input picks, and the row step kimgp_dit_8b over the first row of a 3- or
// 4-byte frame. Widths are even for the YUV sources (their kernels ask for
// it).
#include "fuzz/harness.h"
#include "kimgp_csc.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  if (in.ConsumeBool()) {
    const int32_t bytes = in.ConsumeIntegralInRange<int32_t>(2, 5);
    const int32_t w = kelo::fuzz::PickSize(in, 300);
    const int32_t x = in.ConsumeIntegral<int32_t>(), y = in.ConsumeIntegral<int32_t>();
    const int32_t order = in.ConsumeIntegralInRange<int32_t>(-1, 2);
    auto src = kelo::fuzz::MakeFrame(in, bytes == 4 ? KIMGP_CS_RGBA8888 : KIMGP_CS_RGB888, w, 1);
    auto dst = kelo::fuzz::MakeFrame(in, KIMGP_CS_RGB565, w, 1);
    kelo::fuzz::RunEveryTarget(*src, *dst, [&](kimgp_img* s, kimgp_img* d) {
      kimgp_dit_8b(s->plane[0], bytes, w, x, y, order, d->plane[0]);
      return 0;
    });
    return 0;
  }
  const int32_t scs = kelo::fuzz::PickCode(in);
  const int32_t dcs = kelo::fuzz::PickCode(in);
  int32_t w = kelo::fuzz::PickSize(in, 300);
  const int32_t h = kelo::fuzz::PickSize(in, 64);
  if (scs <= 199 && w % 2 != 0) ++w;
  const auto [src, dst] = kelo::fuzz::MakeConversion(in, scs, dcs, w, h);
  kelo::fuzz::RunEveryTarget(*src, *dst, kimgp_csc_dither);
  return 0;
}
