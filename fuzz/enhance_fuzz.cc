// The deblocking filter and the enhancement entries over the codes, sizes,
// strengths and gains the input picks.
#include "fuzz/harness.h"
#include "kimgp_enhance.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  const int op = in.ConsumeIntegralInRange<int>(0, 2);
  const int32_t cs = in.ConsumeIntegral<uint8_t>() < 220 ? KIMGP_CS_YUV420
                                                         : kelo::fuzz::PickCode(in);
  const int32_t dcs = in.ConsumeIntegral<uint8_t>() < 240 ? cs : kelo::fuzz::PickCode(in);
  const int32_t w = kelo::fuzz::PickSize(in, 260), h = kelo::fuzz::PickSize(in, 100);
  const int32_t strength = in.ConsumeIntegralInRange<int32_t>(-2, 40);
  // The deblocking filter works in place on planes 0-2 of any code.
  auto src = kelo::fuzz::MakeFrame(in, cs, w, h, op == 0 ? 3 : 0);
  auto dst = kelo::fuzz::MakeFrame(in, dcs, w, h);
  if (op == 0) {
    kelo::fuzz::Expect expect;
    expect.in_place = true;
    kelo::fuzz::RunEveryTarget(*src, *dst, [&](kimgp_img* s, kimgp_img*) {
      return kimgp_dbf8x8_yuv(s, static_cast<uint32_t>(strength));
    }, expect);
  } else if (op == 1) {
    kimgp_vqe_cs_init(in.ConsumeIntegral<int32_t>());
    kelo::fuzz::RunEveryTarget(*src, *dst, [](kimgp_img* s, kimgp_img* d) {
      return kimgp_vqe_cs(s, d);
    });
  } else {
    kelo::fuzz::RunEveryTarget(*src, *dst, [strength](kimgp_img* s, kimgp_img* d) {
      return kimgp_vqe_de(s, d, strength);
    });
  }
  return 0;
}
