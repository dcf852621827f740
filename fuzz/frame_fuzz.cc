// kimgp_crop, kimgp_padding and kimgp_fpa over the codes, sizes and offsets
// the input picks. Crop rectangles lie inside the source on every plane they
// read (chroma offsets round up), as the header asks of callers.
#include "fuzz/harness.h"
#include "kimgp_frame.h"

namespace {

constexpr int32_t kCodes[] = {KIMGP_CS_YUV420,   KIMGP_CS_NV12,     KIMGP_CS_NV21,
                              KIMGP_CS_RGB888,   KIMGP_CS_BGR888,   KIMGP_CS_RGBA8888,
                              KIMGP_CS_BGRA8888, KIMGP_CS_ARGB8888, KIMGP_CS_ABGR8888};

// Whether the crop of dst's size at (x, y) reads inside every source plane.
bool CropInside(const kimgp_img& s, const kimgp_img& d, int32_t x, int32_t y) {
  if (x + d.width[0] > s.width[0] || y + d.height[0] > s.height[0]) return false;
  if (s.cs == KIMGP_CS_NV12 || s.cs == KIMGP_CS_NV21) {
    const int64_t bytes = int64_t{x} + d.width[0];
    return bytes <= int64_t{s.width[1]} * 2 && ((y + 1) >> 1) + d.height[1] <= s.height[1];
  }
  if (s.cs == KIMGP_CS_YUV420) {
    for (int i = 1; i < 3; ++i) {
      if (((x + 1) >> 1) + d.width[i] > s.width[i] ||
          ((y + 1) >> 1) + d.height[i] > s.height[i]) {
        return false;
      }
    }
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  const int op = in.ConsumeIntegralInRange<int>(0, 2);
  const int32_t cs = in.ConsumeIntegral<uint8_t>() < 220
                         ? kelo::fuzz::PickFrom(in, kCodes, sizeof(kCodes) / sizeof(kCodes[0]))
                         : kelo::fuzz::PickCode(in);
  const int32_t dcs = in.ConsumeIntegral<uint8_t>() < 240 ? cs : kelo::fuzz::PickCode(in);
  const int32_t sw = kelo::fuzz::PickSize(in, 200), sh = kelo::fuzz::PickSize(in, 80);
  int32_t dw = kelo::fuzz::PickSize(in, 200), dh = kelo::fuzz::PickSize(in, 80);
  if (op == 2 && in.ConsumeBool()) {  // the geometry kimgp_fpa accepts
    dw = sw / 2;
    dh = sh;
  }
  // The source's code alone decides the layout written (the destination's
  // code is not read): the destination has the source's geometry.
  auto src = kelo::fuzz::MakeFrame(in, cs, sw, sh);
  auto dst = kelo::fuzz::MakeFrame(in, cs, dw, dh);
  dst->img.cs = dcs;
  src->img.x = in.ConsumeIntegralInRange<int32_t>(op == 1 ? -3 : 0, 200);
  src->img.y = in.ConsumeIntegralInRange<int32_t>(op == 1 ? -3 : 0, 80);
  if (op == 0) {
    if (!CropInside(src->img, dst->img, src->img.x, src->img.y)) return 0;
    kelo::fuzz::RunEveryTarget(*src, *dst, [](kimgp_img* s, kimgp_img* d) {
      return kimgp_crop(s, d);
    });
  } else if (op == 1) {
    kelo::fuzz::MaybeHostileSizes(in, &src->img);
    kelo::fuzz::RunEveryTarget(*src, *dst, [](kimgp_img* s, kimgp_img* d) {
      return kimgp_padding(s, d);
    });
  } else {
    if (in.ConsumeBool()) {  // the strides kimgp_fpa accepts
      src->img.stride[0] = 3 * src->img.width[0];
      dst->img.stride[0] = src->img.stride[0] / 2;
      if (src->img.stride[0] % 2 != 0) return 0;
      // Keep the buffers as large as the new strides say.
      if (int64_t{src->img.stride[0]} * src->img.buf_height[0] >
              static_cast<int64_t>(src->buffer(0).size()) ||
          int64_t{dst->img.stride[0]} * dst->img.buf_height[0] >
              static_cast<int64_t>(dst->buffer(0).size())) {
        return 0;
      }
    }
    const int32_t order = in.ConsumeIntegralInRange<int32_t>(0, 3);
    kelo::fuzz::RunEveryTarget(*src, *dst, [order](kimgp_img* s, kimgp_img* d) {
      return kimgp_fpa(s, d, order);
    });
  }
  return 0;
}
