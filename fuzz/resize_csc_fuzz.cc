// kimgp_rsz_csc over every pair of codes and sizes the input picks.
#include "fuzz/harness.h"
#include "kimgp_rsz_csc.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  static constexpr int32_t kPairs[][2] = {
      {KIMGP_CS_YUV400, KIMGP_CS_RGB888}, {KIMGP_CS_YUV400, KIMGP_CS_YUV420},
      {KIMGP_CS_YUV420, KIMGP_CS_YUV400}, {KIMGP_CS_YUV420, KIMGP_CS_RGB888},
      {KIMGP_CS_YUV420, KIMGP_CS_RGB565}, {KIMGP_CS_T64X32, KIMGP_CS_RGB565},
      {KIMGP_CS_NV12, KIMGP_CS_NV21},     {KIMGP_CS_NV21, KIMGP_CS_NV12},
      {KIMGP_CS_RGB888, KIMGP_CS_YUV420}, {KIMGP_CS_RGBA8888, KIMGP_CS_NV12},
      {KIMGP_CS_RGBA8888, KIMGP_CS_NV21}};
  int32_t scs, dcs;
  if (in.ConsumeIntegral<uint8_t>() < 200) {
    const auto& p = kPairs[in.ConsumeIntegralInRange<size_t>(0, 10)];
    scs = p[0];
    dcs = p[1];
  } else {
    scs = kelo::fuzz::PickCode(in);
    dcs = kelo::fuzz::PickCode(in);
  }
  const int32_t sw = kelo::fuzz::PickSize(in, 260), sh = kelo::fuzz::PickSize(in, 100);
  int32_t dw = kelo::fuzz::PickSize(in, 260), dh = kelo::fuzz::PickSize(in, 100);
  if (in.ConsumeBool()) {  // the ratio of the chroma-swapping fast path
    dw = static_cast<int32_t>(sw / 1.5);
    dh = sh;
  }
  auto src = kelo::fuzz::MakeFrame(in, scs, sw, sh);
  auto dst = kelo::fuzz::MakeFrame(in, dcs, dw, dh);
  dst->img.rsz_mode = in.ConsumeBool() ? KIMGP_RSZ_MODE1 : 0;
  kelo::fuzz::MaybeHostileSizes(in, &src->img);
  kelo::fuzz::MaybeHostileSizes(in, &dst->img);
  kelo::fuzz::RunEveryTarget(*src, *dst, [&](kimgp_img* s, kimgp_img* d) {
    return kimgp_rsz_csc(s, d);
  });
  return 0;
}
