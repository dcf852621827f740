// kimgp_rot over every code, rotation code (in range and not), size and
// layout the input picks. The destination is sized as the header asks: the
// source's planes, widths and heights exchanged for the quarter turns.
#include "fuzz/harness.h"
#include "kimgp_rot.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  const int32_t cs = kelo::fuzz::PickCode(in);
  const int32_t dcs = in.ConsumeIntegral<uint8_t>() < 240 ? cs : kelo::fuzz::PickCode(in);
  const uint8_t r = in.ConsumeIntegral<uint8_t>();
  const uint32_t rot = r < 240 ? r % 6 : r < 250 ? r : 0xFFFFFFFFu - (r & 3);
  const int32_t w = kelo::fuzz::PickSize(in, 300), h = kelo::fuzz::PickSize(in, 200);
  const bool turn = rot == KIMGP_ROT_90L || rot == KIMGP_ROT_90R;
  const int planes = kelo::fuzz::ThreePlaneOps(cs);
  auto src = kelo::fuzz::MakeFrame(in, cs, w, h, planes);
  // The source's code alone decides the planes written; the destination's
  // code is not read.
  auto dst = turn ? kelo::fuzz::MakeTurned(in, cs, *src)
                  : kelo::fuzz::MakeFrame(in, cs, w, h, planes);
  dst->img.cs = dcs;
  kelo::fuzz::MaybeHostileSizes(in, &src->img);
  kelo::fuzz::RunEveryTarget(*src, *dst, [&](kimgp_img* s, kimgp_img* d) {
    return kimgp_rot(s, rot, d);
  });
  return 0;
}
