// kimgp_rsz and the per-layout resizers over every code, pair of sizes,
// layout and mode the input picks.
#include <vector>

#include "fuzz/harness.h"
#include "kimgp_rsz.h"

namespace {

using Resizer = int32_t (*)(const void*, int32_t, int32_t, int32_t, int32_t, void*,
                            void*, int32_t, int32_t, int32_t);
// Per-layout resizers with the code whose plane 0 they handle.
struct Layout {
  Resizer fn;
  int32_t cs;
  int32_t unit;  // bytes per width unit
};
constexpr Layout kLayouts[] = {
    {kimgp_rsz_8b, KIMGP_CS_YUV400, 1},      {kimgp_rsz_8b8b, KIMGP_CS_NV12, 2},
    {kimgp_rsz_5b6b5b, KIMGP_CS_RGB565, 2},  {kimgp_rsz_8b8b8b, KIMGP_CS_RGB888, 3},
    {kimgp_rsz_8b8b8b8b, KIMGP_CS_RGBA8888, 4}};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  const bool entry = in.ConsumeBool();
  const int32_t mode = in.ConsumeBool() ? KIMGP_RSZ_MODE1 : in.ConsumeIntegral<uint8_t>() % 3;
  const int32_t sw = kelo::fuzz::PickSize(in, 260), sh = kelo::fuzz::PickSize(in, 120);
  const int32_t dw = kelo::fuzz::PickSize(in, 260), dh = kelo::fuzz::PickSize(in, 120);
  if (entry) {
    const int32_t cs = kelo::fuzz::PickCode(in);
    const int32_t dcs = in.ConsumeIntegral<uint8_t>() < 240 ? cs : kelo::fuzz::PickCode(in);
    auto src = kelo::fuzz::MakeFrame(in, cs, sw, sh, kelo::fuzz::ThreePlaneOps(cs));
    auto dst = kelo::fuzz::MakeFrame(in, dcs, dw, dh, kelo::fuzz::ThreePlaneOps(cs));
    dst->img.rsz_mode = mode;
    bool hostile = kelo::fuzz::MaybeHostileSizes(in, &src->img);
    hostile |= kelo::fuzz::MaybeHostileSizes(in, &dst->img);
    // Equal plane-0 sizes copy (or turn) every plane with the source's own
    // sizes, which the caller keeps consistent: no hostile sizes there.
    if (hostile && src->img.width[0] == dst->img.width[0] &&
        src->img.height[0] == dst->img.height[0]) {
      return 0;
    }
    kelo::fuzz::Expect expect;
    expect.keeps_earlier_planes = kelo::fuzz::LaterPlaneMayFail(*src, *dst);
    kelo::fuzz::RunEveryTarget(*src, *dst, [&](kimgp_img* s, kimgp_img* d) {
      return kimgp_rsz(s, d);
    }, expect);
    return 0;
  }
  const Layout& l = kLayouts[in.ConsumeIntegralInRange<size_t>(0, 4)];
  auto src = kelo::fuzz::MakeFrame(in, l.cs, sw, sh);
  auto dst = kelo::fuzz::MakeFrame(in, l.cs, dw, dh);
  // The intermediate: source height x destination width units.
  const int64_t tmp_bytes = int64_t{sh > 0 ? sh : 0} * (dw > 0 ? dw : 0) * l.unit;
  kelo::fuzz::RunEveryTarget(*src, *dst, [&](kimgp_img* s, kimgp_img* d) {
    std::vector<uint8_t> tmp(static_cast<size_t>(tmp_bytes) + 1);
    const int32_t w0 = l.cs == KIMGP_CS_NV12 ? (sw + 1) / 2 : sw;
    const int32_t w1 = l.cs == KIMGP_CS_NV12 ? (dw + 1) / 2 : dw;
    const int32_t h0 = l.cs == KIMGP_CS_NV12 ? (sh + 1) / 2 : sh;
    const int32_t h1 = l.cs == KIMGP_CS_NV12 ? (dh + 1) / 2 : dh;
    const int p = l.cs == KIMGP_CS_NV12 ? 1 : 0;
    return l.fn(s->plane[p], w0, h0, w1, h1, d->plane[p], tmp.data(), s->stride[p],
                d->stride[p], mode);
  });
  return 0;
}
