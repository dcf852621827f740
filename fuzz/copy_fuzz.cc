// kimgp_cpy over every code, size and layout the input picks; the copy must
// equal the source's planes row by row.
#include "fuzz/harness.h"
#include "kimgp_copy.h"

using kelo::fuzz::Check;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  const int32_t cs = kelo::fuzz::PickCode(in);
  const int32_t dcs = in.ConsumeIntegral<uint8_t>() < 240 ? cs : kelo::fuzz::PickCode(in);
  const int32_t w = kelo::fuzz::PickSize(in, 300), h = kelo::fuzz::PickSize(in, 64);
  // Codes up to 99 other than YUV400 and NV12 copy three planes (NV21's
  // third is described empty).
  const int planes = cs >= 0 && cs <= 99 && cs != KIMGP_CS_YUV400 && cs != KIMGP_CS_NV12 ? 3 : 0;
  auto src = kelo::fuzz::MakeFrame(in, cs, w, h, planes);
  auto dst = kelo::fuzz::MakeFrame(in, dcs, w, h, planes);
  kelo::fuzz::MaybeHostileSizes(in, &src->img);
  const kimgp_img described = src->img;
  kelo::fuzz::RunEveryTarget(*src, *dst, [&](kimgp_img* s, kimgp_img* d) {
    const int32_t status = kimgp_cpy(s, d);
    if (status != KIMGP_OK) return status;
    // Every byte the source's sizes cover matches, plane by plane.
    if (cs > 299) return status;
    for (int i = 0; i < src->planes(); ++i) {
      const int32_t rows = described.height[i];
      int32_t bytes = described.width[i];
      // 16-bit planes step by their strides rounded down to even.
      const bool wide = (cs >= 200 && cs <= 299) || (cs == KIMGP_CS_NV12 && i == 1);
      const int32_t ss = wide ? s->stride[i] & ~1 : s->stride[i];
      const int32_t ds = wide ? d->stride[i] & ~1 : d->stride[i];
      if (wide && bytes > 0) bytes *= 2;
      for (int32_t y = 0; y < rows && bytes > 0; ++y) {
        Check(memcmp(s->plane[i] + int64_t{y} * ss, d->plane[i] + int64_t{y} * ds, bytes) == 0,
              "copied bytes differ from the source");
      }
    }
    return status;
  });
  return 0;
}
