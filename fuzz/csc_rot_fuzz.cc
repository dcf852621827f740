// kimgp_csc_rot over every pair of codes, rotation code and size the input
// picks; the destination has the turned size for 90l and 90r.
#include "fuzz/harness.h"
#include "kimgp_csc.h"
#include "kimgp_rot.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  const int32_t scs = in.ConsumeBool() ? KIMGP_CS_YUYV : kelo::fuzz::PickCode(in);
  const int32_t dcs = in.ConsumeBool() ? KIMGP_CS_BGRA8888 : kelo::fuzz::PickCode(in);
  const uint8_t r = in.ConsumeIntegral<uint8_t>();
  const uint32_t rot = r < 240 ? r % 6 : 0x80000000u + r;
  int32_t w = kelo::fuzz::PickSize(in, 300);
  const int32_t h = kelo::fuzz::PickSize(in, 100);
  if (w % 2 != 0) ++w;  // packed 4:2:2 and planar 4:2:2 rows are whole pairs
  const bool turn = rot == KIMGP_ROT_90L || rot == KIMGP_ROT_90R;
  auto src = kelo::fuzz::MakeFrame(in, scs, w, h);
  auto dst = kelo::fuzz::MakeFrame(in, dcs, turn ? h : w, turn ? w : h);
  kelo::fuzz::RunEveryTarget(*src, *dst, [&](kimgp_img* s, kimgp_img* d) {
    return kimgp_csc_rot(s, rot, d);
  });
  return 0;
}
