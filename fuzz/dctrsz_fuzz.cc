// The DCT-domain resizer: set_img, init, the pass and deinit over the codes,
// sizes, std words and pre-shrink modes the input picks, and the pass with
// descriptors that no longer match the context.
#include "fuzz/harness.h"
#include "kimgp_dctrsz.h"
#include "tools/frame/formats.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  static constexpr int32_t kCodes[] = {KIMGP_CS_YUV420, KIMGP_CS_NV12, KIMGP_CS_NV21};
  const int32_t cs = in.ConsumeIntegral<uint8_t>() < 230
                         ? kelo::fuzz::PickFrom(in, kCodes, 3)
                         : kelo::fuzz::PickCode(in);
  const int32_t sw = kelo::fuzz::PickSize(in, 300), sh = kelo::fuzz::PickSize(in, 200);
  int32_t dw = kelo::fuzz::PickSize(in, 200), dh = kelo::fuzz::PickSize(in, 140);
  if (in.ConsumeBool()) {  // the exact ratios of the direct path
    const int32_t k = in.ConsumeBool() ? 2 : 4;
    dw = sw / k;
    dh = sh / k;
  }
  static constexpr int32_t kModes[] = {0, 2, 4, 0, 2, 4, 1, 3, -1};
  const int32_t mode = kelo::fuzz::PickFrom(in, kModes, 9);
  kimgp_img io[2] = {};
  const int32_t geometry = cs >= 0 && cs <= 99 ? cs : KIMGP_CS_YUV420;
  kelo::frame::Describe(geometry == 11 ? 1 : geometry, sw, sh, 1, 0, &io[0]);
  kelo::frame::Describe(geometry == 11 ? 1 : geometry, dw, dh, 1, 0, &io[1]);
  io[0].cs = io[1].cs = cs;
  io[0].std = kelo::fuzz::PickStd(in);
  io[1].std = kelo::fuzz::PickStd(in);
  if (in.ConsumeBool()) {
    kimgp_rsz_new_set_img(io);  // both descriptors
  }
  // Now and then the pass gets a wider destination stride than the context
  // was made with; the frame is allocated for the wider one.
  const bool wider = in.ConsumeIntegral<uint8_t>() < 8;
  const int planes = kelo::fuzz::PlanesOf(cs);
  auto src = kelo::fuzz::MakeFrameFrom(in, io[0], planes);
  if (wider) io[1].stride[0] += 1;
  auto dst = kelo::fuzz::MakeFrameFrom(in, io[1], planes);
  io[0] = src->img;
  io[1] = dst->img;
  if (wider) io[1].stride[0] -= 1;
  kimgp_rsz_new_ctx ctx;
  int16_t*** vmat = nullptr;
  int16_t*** hmat = nullptr;
  if (kimgp_rsz_new_init(io, &ctx, &vmat, &hmat, mode) != 0) return 0;
  // Now and then the pass gets descriptors the context was not made for.
  kelo::fuzz::MaybeHostileSizes(in, &src->img);
  kelo::fuzz::MaybeHostileSizes(in, &dst->img);
  kelo::fuzz::RunEveryTarget(*src, *dst, [&](kimgp_img* s, kimgp_img* d) {
    kimgp_img pair[2] = {*s, *d};
    return kimgp_rsz_new(pair, &ctx, vmat, hmat);
  });
  kimgp_rsz_new_deinit(io, &ctx, vmat, hmat);
  return 0;
}
