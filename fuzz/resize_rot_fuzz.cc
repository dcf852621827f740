// kimgp_rsz_rot over every code, pair of sizes, layout, mode and rotation
// code the input picks. The destination is described with its own (rotated)
// geometry, as the header asks.
#include "fuzz/harness.h"
#include "kimgp_rot.h"
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
  // Nothing to scale (plane-0 sizes equal, exchanged for the quarter turns)
  // hands the frame to kimgp_rot, which turns every plane with the source's
  // own sizes; the caller keeps those consistent: no hostile sizes there.
  const bool turn = rot == KIMGP_ROT_90L || rot == KIMGP_ROT_90R;
  const kimgp_img& s = src->img;
  const kimgp_img& d = dst->img;
  if (hostile && (turn ? s.width[0] == d.height[0] && s.height[0] == d.width[0]
                       : s.width[0] == d.width[0] && s.height[0] == d.height[0])) {
    return 0;
  }
  kelo::fuzz::Expect expect;
  expect.keeps_earlier_planes = kelo::fuzz::LaterPlaneMayFail(*src, *dst);
  kelo::fuzz::RunEveryTarget(*src, *dst, [&](kimgp_img* s, kimgp_img* d) {
    return kimgp_rsz_rot(s, rot, d);
  }, expect);
  return 0;
}
