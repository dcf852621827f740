// kimgp_rsz_rot over every code, pair of sizes, layout, mode and rotation
// code the input picks. The destination is described with its own (rotated)
// geometry, as the header asks.
#include "fuzz/harness.h"
#include "kimgp_rsz_rot.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  const int32_t cs = kelo::fuzz::PickCode(in);
  const int32_t dcs = in.ConsumeIntegral<uint8_t>() < 240 ? cs : kelo::fuzz::PickCode(in);
  const uint8_t r = in.ConsumeIntegral<uint8_t>();
  const int32_t rot = r < 200 ? r % 6 : r < 240 ? 11 : r < 250 ? r : -1 - (r & 3);
  const int32_t sw = kelo::fuzz::PickSize(in, 260), sh = kelo::fuzz::PickSize(in, 120);
  const int32_t dw = kelo::fuzz::PickSize(in, 260), dh = kelo::fuzz::PickSize(in, 120);
  auto src = kelo::fuzz::MakeFrame(in, cs, sw, sh, kelo::fuzz::ThreePlaneOps(cs));
  auto dst = kelo::fuzz::MakeFrame(in, dcs, dw, dh, kelo::fuzz::ThreePlaneOps(cs));
  dst->img.rsz_mode = in.ConsumeBool() ? KIMGP_RSZ_MODE1 : 0;
  bool hostile = kelo::fuzz::MaybeHostileSizes(in, &src->img);
  hostile |= kelo::fuzz::MaybeHostileSizes(in, &dst->img);
  // Equal plane-0 sizes copy (or turn) every plane with the source's own
  // sizes, which the caller keeps consistent: no hostile sizes there.
  if (hostile && src->img.width[0] == dst->img.width[0] &&
      src->img.height[0] == dst->img.height[0]) {
    return 0;
  }
  kelo::fuzz::RunEveryTarget(*src, *dst, [&](kimgp_img* s, kimgp_img* d) {
    return kimgp_rsz_rot(s, rot, d);
  });
  return 0;
}
