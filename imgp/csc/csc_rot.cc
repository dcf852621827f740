// The kernels of conversion with rotation. Each is a conversion's own rows
// followed by a rotation's own transposes, with no full-size intermediate:
//
// - YUYV to BGRA8888 turned: bands of source rows go through the YUYV to
//   BGRA8888 row into a band buffer, and each band is turned into its place
//   in the destination; the rows past the last band (and a half turn) go
//   through column chunks of a tile on the stack.
// - Row halving turned: the rows kept by the halving are every second source
//   row, i.e. a plane of (height + 1) / 2 rows at twice the stride, which the
//   byte rotation turns directly.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "common/internal/fault.h"
#include "common/internal/api.h"
#include "imgp/csc/pixel_layouts.h"
#include "imgp/csc/yuv_to_rgb.h"
#include "imgp/geometry/rotate_kernels.h"
#include "imgp/geometry/turn_tile.h"
#include "kimgp_csc.h"

namespace kelo {
namespace csc {
namespace {

// A tile of BGRA8888 pixels (16 KiB): kTileRows source rows of kTilePixels
// pixels (even, so chunks start on a pixel pair). A quarter turn writes each
// destination row 128 contiguous bytes per tile; chunks of 128 pixels keep
// the conversion row in its vector loop on every target (narrower chunks
// measured much slower on 1080p).
constexpr int32_t kTileRows = 32;
constexpr int32_t kTilePixels = 128;
constexpr int32_t kTileStride = kTilePixels * Bgra8888::kBytes;
static_assert(kTilePixels % 2 == 0, "chunks start on a pixel pair");

// Row `row` of a YUYV plane from pixel x0 (even) on.
YuvRow YuyvRowFrom(uint8_t* const* sp, const int32_t* ss, int32_t row, int32_t x0) {
  const YuvRow r = Yuyv::Row(sp, ss, row, row);
  const ptrdiff_t c = static_cast<ptrdiff_t>(x0 / 2) * Yuyv::kCStep;
  return {r.y + static_cast<ptrdiff_t>(x0) * Yuyv::kYStep, r.u + c, r.v + c};
}

// Where the image under Op of pixels [x0, x0 + tw) of rows [y0, y0 + th) of
// a w x h plane starts: the rectangle between the images of its corners.
template <int Op>
uint8_t* ImageOf(int32_t x0, int32_t y0, int32_t tw, int32_t th, int32_t w, int32_t h,
                 uint8_t* dst, int32_t ds) {
  int32_t c0, r0, c1, r1;
  kelo::scalar::RotTarget<Op>(x0, y0, w, h, &c0, &r0);
  kelo::scalar::RotTarget<Op>(x0 + tw - 1, y0 + th - 1, w, h, &c1, &r1);
  return dst + static_cast<ptrdiff_t>(std::min(r0, r1)) * ds +
         static_cast<ptrdiff_t>(std::min(c0, c1)) * Bgra8888::kBytes;
}

// Quarter turns take bands of kBandRows source rows converted whole (up to
// kBandPixels at a time, so that the source rows are read through) and
// turned with each destination row taking a cache line per band.
constexpr int32_t kBandRows = 16;
constexpr int32_t kBandPixels = 2048;
static_assert(kBandPixels % 2 == 0, "chunks start on a pixel pair");

// The image of kimgp_csc_yuyv_to_bgra8888, turned by Op: every pixel is the
// one its row converter gives (which is the same on every path and for any
// chunk of pairs), and each tile's pixels go where the rotation of the whole
// w x h image sends them. A chunk holding an odd width's last pixel converts
// that pixel's whole pair but turns only the pixels inside the image.
template <int Op>
void YuyvToBgraTurned(uint8_t* const* sp, const int32_t* sw, const int32_t* sh,
                      const int32_t* ss, const int32_t* ds, uint8_t* const* dp) {
  const int32_t w = sw[0], h = sh[0];
  if (w < 1 || h < 1) return;
  const YuvToRgbRowFn convert = YuvToRgbRowFor(kRow_Yuyv_Bgra8888_kBt601Limited).one;
  int32_t yb = 0;  // rows done by bands
  const int32_t chunk = std::min(kBandPixels, (w + 1) & ~1);
  uint8_t* band = nullptr;
  if (Op != kRot180 && h >= kBandRows) {
    band = static_cast<uint8_t*>(
        HeapAlloc(static_cast<size_t>(kBandRows) * chunk * Bgra8888::kBytes));
  }
  if (band != nullptr) {
    const ptrdiff_t bs = static_cast<ptrdiff_t>(chunk) * Bgra8888::kBytes;
    yb = h / kBandRows * kBandRows;
    for (int32_t y0 = 0; y0 < yb; y0 += kBandRows) {
      for (int32_t x0 = 0; x0 < w; x0 += chunk) {
        const int32_t tw = std::min(chunk, w - x0);
        for (int32_t r = 0; r < kBandRows; ++r) {
          convert(YuyvRowFrom(sp, ss, y0 + r, x0), band + r * bs, (tw + 1) & ~1);
        }
        const int32_t done = TurnTileColumns(Op, Bgra8888::kBytes, band, bs, kBandRows, tw,
                                             ImageOf<Op>(x0, y0, tw, kBandRows, w, h, dp[0],
                                                         ds[0]),
                                             ds[0]);
        if (done < tw) {
          Rotate(Op, Bgra8888::kBytes, band + done * Bgra8888::kBytes, tw - done, kBandRows, bs,
                 ds[0], ImageOf<Op>(x0 + done, y0, tw - done, kBandRows, w, h, dp[0], ds[0]));
        }
      }
    }
    std::free(band);
  }
  alignas(64) uint8_t tile[kTileRows * kTileStride];
  for (int32_t y0 = yb; y0 < h; y0 += kTileRows) {
    const int32_t th = std::min(kTileRows, h - y0);
    for (int32_t x0 = 0; x0 < w; x0 += kTilePixels) {
      const int32_t tw = std::min(kTilePixels, w - x0);
      for (int32_t r = 0; r < th; ++r) {
        convert(YuyvRowFrom(sp, ss, y0 + r, x0), tile + r * kTileStride, (tw + 1) & ~1);
      }
      Rotate(Op, Bgra8888::kBytes, tile, tw, th, kTileStride, ds[0],
             ImageOf<Op>(x0, y0, tw, th, w, h, dp[0], ds[0]));
    }
  }
}

// The rows kimgp_csc_1x2_to_1x1 keeps, (height + 1) / 2 of them, turned.
template <int Op>
void HalfRowsTurned(const uint8_t* src, int32_t width, int32_t height, int32_t src_stride,
                    int32_t dst_stride, uint8_t* dst) {
  Rotate(Op, 1, src, width, HalfUp(height), 2 * static_cast<ptrdiff_t>(src_stride),
         dst_stride, dst);
}

}  // namespace
}  // namespace csc
}  // namespace kelo

#define KELO_YUYV_TO_BGRA_TURNED(name, op)                                      \
  KELO_EXPORT void kimgp_csc_yuyv_to_bgra8888_##name(KELO_CSC_PARAMS) {         \
    kelo::csc::YuyvToBgraTurned<op>(sp, sw, sh, ss, ds, dp);                    \
  }
KELO_YUYV_TO_BGRA_TURNED(90l, kelo::kRot90l)
KELO_YUYV_TO_BGRA_TURNED(90r, kelo::kRot90r)
KELO_YUYV_TO_BGRA_TURNED(180, kelo::kRot180)
#undef KELO_YUYV_TO_BGRA_TURNED

#define KELO_HALF_ROWS_TURNED(name, op)                                         \
  KELO_EXPORT void kimgp_csc_1x2_to_1x1_rot_##name(                             \
      const uint8_t* src, int32_t width, int32_t height, int32_t src_stride,    \
      int32_t dst_stride, uint8_t* dst) {                                       \
    kelo::csc::HalfRowsTurned<op>(src, width, height, src_stride, dst_stride, dst); \
  }
KELO_HALF_ROWS_TURNED(90l, kelo::kRot90l)
KELO_HALF_ROWS_TURNED(90r, kelo::kRot90r)
#undef KELO_HALF_ROWS_TURNED
