// kimgp_hdr_to_sdr and its two entries over the sources, destinations,
// sizes, modes, peaks and source kinds the input picks. Destinations are
// written tightly at the source's size.
#include "fuzz/harness.h"
#include "kimgp_hdr.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  static constexpr int32_t kDst[] = {KIMGP_CS_RGB888, KIMGP_CS_RGBA8888, KIMGP_CS_ARGB8888,
                                     KIMGP_CS_YUV420, KIMGP_CS_YV12,     KIMGP_CS_NV12,
                                     KIMGP_CS_NV21,   KIMGP_CS_YUV400,   KIMGP_CS_RGB565,
                                     KIMGP_CS_BGRA8888};
  const int32_t scs = in.ConsumeBool() ? KIMGP_CS_P010LE : KIMGP_CS_YUV420PLANAR16;
  const int32_t dcs = kelo::fuzz::PickFrom(in, kDst, sizeof(kDst) / sizeof(kDst[0]));
  // Even sizes: chroma rows and pairs are whole.
  const int32_t w = 2 * (kelo::fuzz::PickSize(in, 160) / 2);
  const int32_t h = 2 * (kelo::fuzz::PickSize(in, 60) / 2);
  const int entry = in.ConsumeIntegralInRange<int>(0, 2);
  const int32_t mode = in.ConsumeIntegral<uint8_t>() % 6;
  const int32_t variant = in.ConsumeIntegral<uint8_t>() % 3;
  auto src = kelo::fuzz::MakeFrame(in, scs, w, h);
  auto dst = kelo::fuzz::MakeFrame(in, dcs, w, h);
  src->img.rsz_mode = in.ConsumeBool() ? 1 : 0;
  src->img.peak_nits = in.ConsumeIntegral<int32_t>();
  kelo::fuzz::RunEveryTarget(*src, *dst, [&](kimgp_img* s, kimgp_img* d) {
    switch (entry) {
      case 1: return kimgp_hdr10_to_sdr8(s, d, variant);
      case 2: return kimgp_hlg_to_sdr8(s, d);
      default: return kimgp_hdr_to_sdr(s, d, mode);
    }
  });
  return 0;
}
