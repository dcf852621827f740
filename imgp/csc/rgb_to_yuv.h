// RGB to YUV: the scalar definition (luma row, chroma row, image walk) shared
// by every exported kernel, and the vector rows of the running CPU.
#ifndef KELO_IMGP_CSC_RGB_TO_YUV_H_
#define KELO_IMGP_CSC_RGB_TO_YUV_H_

#include <cstdint>

#include "imgp/csc/csc_arith.h"
#include "imgp/csc/pixel_layouts.h"

namespace kelo {
namespace csc {
namespace scalar {

// Luma of pixels [x0, n).
template <class Src, class M>
void RgbToLumaRow(const uint8_t* src, uint8_t* y, int x0, int n) {
  for (int x = x0; x < n; ++x) {
    int r, g, b;
    Src::Load(src + x * Src::kBytes, &r, &g, &b);
    y[x] = RgbToY<M>(r, g, b);
  }
}

// Chroma samples [k0, n): sample k from pixel kSub * k, stored at u[k * cstep]
// and v[k * cstep].
template <class Src, class M, int kSub>
void RgbToChromaRow(const uint8_t* src, uint8_t* u, uint8_t* v, int cstep, int k0, int n) {
  for (int k = k0; k < n; ++k) {
    int r, g, b;
    Src::Load(src + kSub * k * Src::kBytes, &r, &g, &b);
    u[k * cstep] = RgbToU<M>(r, g, b);
    v[k * cstep] = RgbToV<M>(r, g, b);
  }
}

}  // namespace scalar

using LumaRowFn = void (*)(const uint8_t* src, uint8_t* y, int n);
using ChromaRowFn = void (*)(const uint8_t* src, uint8_t* u, uint8_t* v, int n);
// Luma of pixels [0, n) and 4:2:0 chroma of samples [0, n / 2) from one row,
// so that a row that gives chroma is read once.
using LumaChromaRowFn = void (*)(const uint8_t* src, uint8_t* y, uint8_t* u, uint8_t* v, int n);

// The rows of one member: luma, chroma, and (4:2:0 only, may be null) both
// at once.
struct RgbToYuvRows {
  LumaRowFn luma;
  ChromaRowFn chroma;
  LumaChromaRowFn both;
};

// Where U and V go.
enum class ChromaOut { kYuv420, kYv12, kNv12, kNv21, kYuv444 };

// Luma for every pixel of every row, and chroma: for 4:2:0 from the top-left
// pixel of each 2x2 block (width / 2 samples of height / 2 rows), for 4:4:4
// from every pixel. The bytes do not depend on the order, so a row that gives
// chroma is converted in one go when the member has the combined row.
template <ChromaOut kOut>
void RgbToYuvImage(uint8_t* const* sp, const int32_t* sw, const int32_t* sh,
                   const int32_t* ss, const int32_t* ds, uint8_t* const* dp,
                   const RgbToYuvRows& rows) {
  const int w = sw[0], h = sh[0];
  if (w <= 0 || h <= 0) return;
  auto src = [&](int r) { return sp[0] + static_cast<intptr_t>(r) * ss[0]; };
  auto out = [&](int i, int r) { return dp[i] + static_cast<intptr_t>(r) * ds[i]; };
  if (kOut == ChromaOut::kYuv444) {
    for (int r = 0; r < h; ++r) {
      rows.luma(src(r), out(0, r), w);
      rows.chroma(src(r), out(1, r), out(2, r), w);
    }
    return;
  }
  for (int r = 0; r < h; ++r) {
    const int m = r / 2;
    if ((r & 1) || m >= h / 2) {
      rows.luma(src(r), out(0, r), w);
      continue;
    }
    uint8_t *u, *v;
    if (kOut == ChromaOut::kYuv420) {
      u = out(1, m), v = out(2, m);
    } else if (kOut == ChromaOut::kYv12) {
      u = out(2, m), v = out(1, m);
    } else if (kOut == ChromaOut::kNv12) {
      u = out(1, m), v = u + 1;
    } else {
      v = out(1, m), u = v + 1;
    }
    if (rows.both != nullptr) {
      rows.both(src(r), out(0, r), u, v, w);
    } else {
      rows.luma(src(r), out(0, r), w);
      rows.chroma(src(r), u, v, w / 2);
    }
  }
}

}  // namespace csc
}  // namespace kelo

// Every luma row (source, matrix) and chroma row (source, matrix, horizontal
// step, interleaved output) the kernels use, once.
#define KELO_RGB_TO_LUMA_ROWS(X)                                                   \
  X(Rgb565, RgbBt601Limited) X(Bgr565, RgbBt601Limited) X(Rgb888, RgbBt601Limited) \
  X(Bgr888, RgbBt601Limited) X(Rgba8888, RgbBt601Limited)                          \
  X(Bgra8888, RgbBt601Limited) X(Argb8888, RgbBt601Limited)                        \
  X(Abgr8888, RgbBt601Limited) X(Rgba8888, RgbBt601Full) X(Rgba8888, RgbBt709Limited)

#define KELO_RGB_TO_CHROMA_ROWS(X)                                                   \
  X(Rgb565, RgbBt601Limited, 2, 1) X(Bgr565, RgbBt601Limited, 2, 1)                  \
  X(Rgb888, RgbBt601Limited, 2, 1) X(Bgr888, RgbBt601Limited, 2, 1)                  \
  X(Rgba8888, RgbBt601Limited, 2, 1) X(Bgra8888, RgbBt601Limited, 2, 1)              \
  X(Argb8888, RgbBt601Limited, 2, 1) X(Abgr8888, RgbBt601Limited, 2, 1)              \
  X(Rgb565, RgbBt601Limited, 2, 2) X(Bgr565, RgbBt601Limited, 2, 2)                  \
  X(Rgb888, RgbBt601Limited, 2, 2) X(Bgr888, RgbBt601Limited, 2, 2)                  \
  X(Rgba8888, RgbBt601Limited, 2, 2) X(Bgra8888, RgbBt601Limited, 2, 2)              \
  X(Argb8888, RgbBt601Limited, 2, 2) X(Abgr8888, RgbBt601Limited, 2, 2)              \
  X(Rgba8888, RgbBt601Limited, 1, 1) X(Argb8888, RgbBt601Limited, 1, 1)              \
  X(Rgba8888, RgbBt601Full, 2, 1) X(Rgba8888, RgbBt601Full, 2, 2)                    \
  X(Rgba8888, RgbBt709Limited, 2, 2)

namespace kelo {
namespace csc {

#define KELO_LUMA_ID(S, M) kLuma_##S##_##M,
enum LumaRowId { KELO_RGB_TO_LUMA_ROWS(KELO_LUMA_ID) kLumaRowCount };
#undef KELO_LUMA_ID
#define KELO_CHROMA_ID(S, M, SUB, CSTEP) kChroma_##S##_##M##_##SUB##_##CSTEP,
enum ChromaRowId { KELO_RGB_TO_CHROMA_ROWS(KELO_CHROMA_ID) kChromaRowCount };
#undef KELO_CHROMA_ID

// Best and scalar rows of the running CPU for a row id.
LumaRowFn LumaRowFor(LumaRowId id);
LumaRowFn ScalarLumaRowFor(LumaRowId id);
ChromaRowFn ChromaRowFor(ChromaRowId id);
ChromaRowFn ScalarChromaRowFor(ChromaRowId id);
// The combined row of a 4:2:0 chroma row id (null for 4:4:4 ids).
LumaChromaRowFn LumaChromaRowFor(ChromaRowId id);

// The rows of a member from its ids, best path or scalar (the scalar rows
// have no combined form, so they exercise the two-pass order).
inline RgbToYuvRows BestRows(LumaRowId l, ChromaRowId c) {
  return {LumaRowFor(l), ChromaRowFor(c), LumaChromaRowFor(c)};
}
inline RgbToYuvRows ScalarRows(LumaRowId l, ChromaRowId c) {
  return {ScalarLumaRowFor(l), ScalarChromaRowFor(c), nullptr};
}

}  // namespace csc
}  // namespace kelo

#endif  // KELO_IMGP_CSC_RGB_TO_YUV_H_
