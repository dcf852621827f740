// kimgp_rsz_csc: routing by the pair of codes, the two-step paths through a
// temporary frame, and the fused resize-and-convert kernels.
//
// A fused kernel is its two steps: the planes are resized with the resizers'
// own kernels into a YUV420 (or, for a tiled source, NV12) frame of the
// destination's size in the scratch, and that frame is converted row by row
// with the YUV to RGB rows. A tiled source is read a row at a time through
// the tiled-layout kernel, so no linear copy of it is made.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "common/internal/fault.h"
#include "common/internal/api.h"
#include "imgp/csc/tiled.h"
#include "imgp/csc/yuv_to_rgb.h"
#include "imgp/geometry/resize_down_kernels.h"
#include "kimgp_csc.h"
#include "kimgp_rsz.h"
#include "kimgp_rsz_csc.h"

namespace kelo {
namespace rszcsc {
namespace {

// ---------------------------------------------------------------------------
// Tiled planes.

// The kernels of one tiled plane: bytes (8b) or chroma pairs (8b8b).
struct PlaneKernels {
  int bytes;
  void (*up)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t);
  void (*up_mode1)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t);
  void (*down_w)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t);
  void (*down_h)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t);
  void (*up_h)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t);
  void (*up_h_mode1)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t);
  void (*down_mult)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t);
  void (*down_non_mult)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                        int32_t, int32_t);
};
constexpr PlaneKernels kLuma{1,
                             kimgp_8b_rsz_up,
                             kimgp_8b_rsz_up_mode1,
                             kimgp_8b_rsz_down_w,
                             kimgp_8b_rsz_down_h,
                             kimgp_8b_rsz_up_h,
                             kimgp_8b_rsz_up_h_mode1,
                             kimgp_8b_rsz_down_mult,
                             kimgp_8b_rsz_down_non_mult};
constexpr PlaneKernels kPairs{2,
                              kimgp_8b8b_rsz_up,
                              kimgp_8b8b_rsz_up_mode1,
                              kimgp_8b8b_rsz_down_w,
                              kimgp_8b8b_rsz_down_h,
                              kimgp_8b8b_rsz_up_h,
                              kimgp_8b8b_rsz_up_h_mode1,
                              kimgp_8b8b_rsz_down_mult,
                              kimgp_8b8b_rsz_down_non_mult};

// A horizontal pass over sh rows of a tiled plane: each row is detiled into
// `row` and run through the linear kernel as a one-row plane.
template <class Pass>
void TiledRows(const PlaneKernels& k, const void* src, int32_t ss, int32_t sw, int32_t sh,
               int32_t dw, void* tmp, void* row, Pass pass) {
  if (sw < 1 || dw < 1) return;
  auto* r = static_cast<uint8_t*>(row);
  auto* t = static_cast<uint8_t*>(tmp);
  for (int32_t y = 0; y < sh; ++y) {
    csc::DetileRow64x32(static_cast<const uint8_t*>(src), ss, y, sw * k.bytes, r);
    pass(r, t + ptrdiff_t{y} * dw * k.bytes, sw * k.bytes);
  }
}

void TiledUp(const PlaneKernels& k, bool mode1, const void* src, void* tmp, int32_t dw,
             int32_t sw, int32_t sh, int32_t qw, int32_t rw, int32_t ss, void* row) {
  const auto up = mode1 ? k.up_mode1 : k.up;
  TiledRows(k, src, ss, sw, sh, dw, tmp, row, [&](const uint8_t* r, uint8_t* t, int32_t n) {
    up(r, t, dw, sw, 1, qw, rw, n);
  });
}

void TiledDownW(const PlaneKernels& k, const void* src, void* tmp, int32_t ss, int32_t dw,
                int32_t sh, int32_t fw, int32_t rw, void* row) {
  // The source width the kernel walks: fw dw + rw units.
  const int32_t sw = fw * dw + rw;
  TiledRows(k, src, ss, sw, sh, dw, tmp, row, [&](const uint8_t* r, uint8_t* t, int32_t n) {
    k.down_w(r, t, n, dw, 1, fw, rw);
  });
}

// kimgp_rsz_8b / _8b8b of a tiled plane into a linear one: the same kernel
// choice, with the horizontal pass reading the tiles, and for a shrink in both
// directions one output row at a time from the one or two detiled source rows
// it reads (a one-row call of the shrinking kernel). `row` holds two source
// rows; tmp holds sh x dw units.
void ResizeTiled(const PlaneKernels& k, const uint8_t* src, int32_t ss, int32_t sw, int32_t sh,
                 int32_t dw, int32_t dh, uint8_t* dst, int32_t ds, uint8_t* tmp, uint8_t* row,
                 int32_t mode) {
  const bool mode1 = mode == KIMGP_RSZ_MODE1;
  const uint32_t qw = static_cast<uint32_t>(dw) / static_cast<uint32_t>(sw);
  const uint32_t qh = static_cast<uint32_t>(dh) / static_cast<uint32_t>(sh);
  if (qw >= 1 || qh >= 1) {
    if (qw < 1) {
      TiledDownW(k, src, tmp, ss, dw, sh, sw / dw, sw % dw, row);
    } else {
      TiledUp(k, mode1, src, tmp, dw, sw, sh, static_cast<int32_t>(qw), dw % sw, ss, row);
    }
    if (qh < 1) {
      k.down_h(tmp, dst, dw, ds, dh, sh / dh, sh % dh);
    } else {
      (mode1 ? k.up_h_mode1 : k.up_h)(tmp, dst, dw, sh, dh, static_cast<int32_t>(qh), dh % sh,
                                      ds);
    }
    return;
  }
  const int32_t fw = sw / dw, rw = sw % dw, fh = sh / dh, rh = sh % dh;
  const bool mult = rw == 0 && rh == 0;
  const int32_t n = sw * k.bytes;
  // Source rows by index: step fh rows, one more after a two-row row.
  const rsz::Rows rows{mult ? rsz::Rows::kPairs : rsz::Rows::kAccum, fh, 1, rh, dh};
  rsz::RowState rs;
  for (int32_t y = 0; y < dh; ++y) {
    const rsz::RowTap t = rows.Next(&rs);
    const auto r = static_cast<int32_t>(t.off);
    csc::DetileRow64x32(src, ss, r, n, row);
    if (t.two) csc::DetileRow64x32(src, ss, r + 1, n, row + n);
    uint8_t* out = dst + ptrdiff_t{y} * ds;
    if (mult) {
      k.down_mult(row, out, dw, 1, fw, n, 0, ds);
    } else {
      k.down_non_mult(row, out, dw, 1, fw, n, 0, rw, t.two ? 1 : 0, ds);
    }
  }
}

// ---------------------------------------------------------------------------
// Fused kernels.

// The frame of destination size in the scratch: packed planes.
struct Frame {
  int32_t sw, sh, dw, dh, scw, sch, cw, ch;
  uint8_t* tmp;  // (sh + 1) x (dw + 1): any plane's horizontal pass
  uint8_t* y;    // dh x dw
  uint8_t* u;    // ch x cw (ch x 2 cw interleaved for a tiled source)
  uint8_t* v;    // ch x cw
  uint8_t* row;  // two source rows of a tiled source
};

bool MakeFrame(const kimgp_img* src, const kimgp_img* dst, void* scratch, Frame* f) {
  f->sw = src->width[0], f->sh = src->height[0], f->dw = dst->width[0], f->dh = dst->height[0];
  if (f->sw < 1 || f->sh < 1 || f->dw < 1 || f->dh < 1) return false;
  f->scw = (f->sw + 1) / 2, f->sch = (f->sh + 1) / 2;
  f->cw = (f->dw + 1) / 2, f->ch = (f->dh + 1) / 2;
  f->tmp = static_cast<uint8_t*>(scratch);
  f->y = f->tmp + ptrdiff_t{f->dw + 1} * (f->sh + 1);
  f->u = f->y + ptrdiff_t{f->dw} * f->dh;
  f->v = f->u + ptrdiff_t{f->cw} * f->ch;
  f->row = f->v + ptrdiff_t{f->cw} * f->ch;
  return true;
}

// For walks whose rows are converted as they are handed out.
void NoRow(const csc::YuvRow&, uint8_t*, int) {}

// The frame's dw x dh pixels into dst with the rows of `id` through the
// conversion walk, which decides each row's chroma row. An even width is the
// walk as kimgp_csc runs it; an odd width converts the pixels up to its last
// pair and its last pixel on its own, so nothing is written beyond the row.
// luma(r) gives luma row r; rows are asked for in order, a row and the one
// below it (from an even row) together.
template <class Luma>
void ConvertFrame(const Frame& f, bool interleaved, csc::YuvToRgbRowId id, int bpp,
                  uint8_t* dst, int32_t ds, Luma&& luma) {
  const csc::YuvToRgbRows rows = csc::YuvToRgbRowFor(id);
  const ptrdiff_t cstride = interleaved ? 2 * ptrdiff_t{f.cw} : f.cw;
  auto row_of = [&](int r, int crow) {
    const uint8_t* y = luma(r);
    const uint8_t* c = f.u + crow * cstride;
    return interleaved ? csc::YuvRow{y, c, c + 1} : csc::YuvRow{y, c, f.v + crow * cstride};
  };
  if ((f.dw & 1) == 0) {
    csc::YuvToRgbWalk<true>(f.dw, f.dh, row_of, dst, ds, rows);
    return;
  }
  const int even = f.dw - 1;
  const ptrdiff_t last = ptrdiff_t{f.cw - 1} * (interleaved ? 2 : 1);
  csc::YuvToRgbWalk<true>(
      f.dw, f.dh,
      [&](int r, int crow) {
        const csc::YuvRow row = row_of(r, crow);
        uint8_t* out = dst + ptrdiff_t{r} * ds;
        rows.one(row, out, even);
        const uint8_t ty[2] = {row.y[even], row.y[even]};
        uint8_t px[8];
        rows.one(csc::YuvRow{ty, row.u + last, row.v + last}, px, 2);
        std::memcpy(out + ptrdiff_t{even} * bpp, px, static_cast<size_t>(bpp));
        return row;
      },
      dst, ds, csc::YuvToRgbRows{&NoRow, nullptr});
}

int32_t Gcd(int32_t a, int32_t b) {
  while (b != 0) {
    const int32_t t = a % b;
    a = b;
    b = t;
  }
  return a;
}

// A plane shrunk in both directions, made a strip of rows at a time by the
// shrinking kernel itself (8-bit samples or 4-byte pixels). A strip holds
// whole periods of the row accumulator (dh / gcd(rh, dh) rows), so at its
// first row the accumulator is 0 again and a call for its n rows with the
// remainder rh n / dh takes the same rows; an even number of rows, so that
// two rows that share chroma share a strip.
class ShrinkStrips {
 public:
  using MultFn = void (*)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t,
                          int32_t);
  using NonMultFn = void (*)(const void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t,
                             int32_t, int32_t, int32_t);
  // src: sw x sh with stride ss; strips of dw units, rows `bs` bytes apart
  // in buf (which holds Rows(dh) rows).
  ShrinkStrips(MultFn mult, NonMultFn non_mult, const uint8_t* src, int32_t ss, int32_t sw,
               int32_t sh, int32_t dw, int32_t dh, uint8_t* buf, int32_t bs)
      : mult_fn_(mult), non_mult_fn_(non_mult), src_(src), ss_(ss), dw_(dw), dh_(dh),
        buf_(buf), bs_(bs) {
    fw_ = sw / dw, rw_ = sw % dw, fh_ = sh / dh, rh_ = sh % dh;
    rows_ = Rows(sh, dh);
  }
  // Whether both directions shrink with a period short enough for strips.
  static bool Serves(int32_t sw, int32_t sh, int32_t dw, int32_t dh) {
    return dw >= 1 && dh >= 1 && dw < sw && dh < sh && dh / Gcd(sh % dh, dh) <= kMaxPeriod;
  }
  // Rows per strip.
  static int32_t Rows(int32_t sh, int32_t dh) {
    const int32_t period = dh / Gcd(sh % dh, dh);
    const int32_t rows = period * ((kMinRows + period - 1) / period);
    return rows % 2 != 0 ? 2 * rows : rows;
  }
  // Row r; rows are asked for in order.
  const uint8_t* Row(int32_t r) {
    if (r >= end_) Fill(end_);
    return buf_ + ptrdiff_t{r - begin_} * bs_;
  }
  // Rows [y0, y0 + returned count) into buf.
  int32_t Fill(int32_t y0) {
    const int32_t n = dh_ - y0 < rows_ ? dh_ - y0 : rows_;
    const int64_t first = int64_t{y0} * fh_ + int64_t{y0} * rh_ / dh_;
    const uint8_t* s = src_ + first * ss_;
    if (rw_ == 0 && rh_ == 0) {
      mult_fn_(s, buf_, dw_, n, fw_, ss_, fh_ * ss_, bs_);
    } else {
      const auto rh = static_cast<int32_t>(int64_t{rh_} * n / dh_);
      non_mult_fn_(s, buf_, dw_, n, fw_, ss_, fh_ * ss_, rw_, rh, bs_);
    }
    begin_ = y0;
    end_ = y0 + n;
    return n;
  }

 private:
  static constexpr int32_t kMinRows = 16, kMaxPeriod = 64;
  MultFn mult_fn_;
  NonMultFn non_mult_fn_;
  const uint8_t* src_;
  int32_t ss_, dw_, dh_;
  uint8_t* buf_;
  int32_t bs_;
  int32_t fw_, rw_, fh_, rh_, rows_;
  int32_t begin_ = 0, end_ = 0;
};

// YUV420 source: the resizer on each chroma plane, then the conversion with
// luma resized as it goes (in strips when both directions shrink, else the
// whole plane first).
int32_t FusedYuv420(const kimgp_img* src, kimgp_img* dst, void* scratch, int32_t mode,
                    csc::YuvToRgbRowId id, int bpp) {
  Frame f;
  if (!MakeFrame(src, dst, scratch, &f)) return KIMGP_ERR_ARGS;
  kimgp_rsz_8b(src->plane[1], f.scw, f.sch, f.cw, f.ch, f.u, f.tmp, src->stride[1], f.cw, mode);
  kimgp_rsz_8b(src->plane[2], f.scw, f.sch, f.cw, f.ch, f.v, f.tmp, src->stride[2], f.cw, mode);
  if (ShrinkStrips::Serves(f.sw, f.sh, f.dw, f.dh)) {
    ShrinkStrips strips(kimgp_8b_rsz_down_mult, kimgp_8b_rsz_down_non_mult, src->plane[0],
                        src->stride[0], f.sw, f.sh, f.dw, f.dh, f.y, f.dw);
    ConvertFrame(f, false, id, bpp, dst->plane[0], dst->stride[0],
                 [&](int r) { return strips.Row(r); });
    return KIMGP_OK;
  }
  kimgp_rsz_8b(src->plane[0], f.sw, f.sh, f.dw, f.dh, f.y, f.tmp, src->stride[0], f.dw, mode);
  ConvertFrame(f, false, id, bpp, dst->plane[0], dst->stride[0],
               [&](int r) { return f.y + ptrdiff_t{r} * f.dw; });
  return KIMGP_OK;
}

// T64X32 source: luma and the interleaved chroma resized from the tiles, then
// the two-plane conversion (the same pixels as through planar chroma).
int32_t FusedT64x32(const kimgp_img* src, kimgp_img* dst, void* scratch, int32_t mode) {
  Frame f;
  if (!MakeFrame(src, dst, scratch, &f)) return KIMGP_ERR_ARGS;
  ResizeTiled(kLuma, src->plane[0], src->stride[0], f.sw, f.sh, f.dw, f.dh, f.y, f.dw, f.tmp,
              f.row, mode);
  ResizeTiled(kPairs, src->plane[1], src->stride[1], f.scw, f.sch, f.cw, f.ch, f.u, 2 * f.cw,
              f.tmp, f.row, mode);
  ConvertFrame(f, true, csc::kRow_Nv12_Rgb565_kBt601Limited, 2, dst->plane[0], dst->stride[0],
               [&](int r) { return f.y + ptrdiff_t{r} * f.dw; });
  return KIMGP_OK;
}

// ---------------------------------------------------------------------------
// Routing.

enum class Action : uint8_t {
  kTwoStep,       // kimgp_rsz into a temporary frame, kimgp_csc into dst
  kGreyToYuv420,  // fill, then the bilinear luma resize
  kYuv420ToGrey,  // the bilinear luma resize of plane 0
  kFused565,
  kFused888,
  kFusedTiled565,
  kSwapChroma,    // kimgp_rsz_apex / kimgp_rsz_apex_c
  kRgbaToNv,      // kimgp_csc at equal sizes, else two steps
};

struct Route {
  int32_t src, dst;
  Action action;
  int32_t tmp_cs;               // the temporary frame of the two-step paths:
  int32_t stride_mul, stride_div;  // its stride, dst.stride[0] x mul / div
};

// Every supported pair; any other pair is refused with -3.
constexpr Route kRoutes[] = {
    {KIMGP_CS_YUV400, KIMGP_CS_RGB888, Action::kTwoStep, KIMGP_CS_YUV400, 1, 3},
    {KIMGP_CS_YUV400, KIMGP_CS_YUV420, Action::kGreyToYuv420, 0, 0, 0},
    {KIMGP_CS_YUV420, KIMGP_CS_YUV400, Action::kYuv420ToGrey, 0, 0, 0},
    {KIMGP_CS_YUV420, KIMGP_CS_RGB888, Action::kFused888, 0, 0, 0},
    {KIMGP_CS_YUV420, KIMGP_CS_RGB565, Action::kFused565, 0, 0, 0},
    {KIMGP_CS_T64X32, KIMGP_CS_RGB565, Action::kFusedTiled565, 0, 0, 0},
    {KIMGP_CS_NV12, KIMGP_CS_NV21, Action::kSwapChroma, 0, 0, 0},
    {KIMGP_CS_NV21, KIMGP_CS_NV12, Action::kSwapChroma, 0, 0, 0},
    {KIMGP_CS_RGB888, KIMGP_CS_YUV420, Action::kTwoStep, KIMGP_CS_RGB888, 3, 1},
    {KIMGP_CS_RGBA8888, KIMGP_CS_NV12, Action::kRgbaToNv, KIMGP_CS_RGBA8888, 4, 1},
    {KIMGP_CS_RGBA8888, KIMGP_CS_NV21, Action::kRgbaToNv, KIMGP_CS_RGBA8888, 4, 1},
};

const Route* FindRoute(int32_t src, int32_t dst) {
  for (const Route& r : kRoutes) {
    if (r.src == src && r.dst == dst) return &r;
  }
  return nullptr;
}

// A heap block of n bytes, or null when n is below 1 or does not fit.
void* Allocate(int64_t n) {
  if (n < 1 || static_cast<uint64_t>(n) > SIZE_MAX) return nullptr;
  return HeapAlloc(static_cast<size_t>(n));
}

int32_t TwoStep(const kimgp_img* src, kimgp_img* dst, const Route& r) {
  kimgp_img t;
  std::memset(&t, 0, sizeof t);
  t.cs = r.tmp_cs;
  t.width[0] = dst->width[0];
  t.height[0] = dst->height[0];
  const int64_t stride = int64_t{dst->stride[0]} * r.stride_mul / r.stride_div;
  if (stride > INT32_MAX) return KIMGP_ERR_ARGS;
  t.stride[0] = static_cast<int32_t>(stride);
  if (r.tmp_cs == KIMGP_CS_RGBA8888) t.buf_height[0] = dst->height[0];
  t.plane[0] = static_cast<uint8_t*>(Allocate(stride * t.height[0]));
  if (t.plane[0] == nullptr) return KIMGP_ERR_ARGS;
  // Codes and sizes are valid here: only a failed allocation stops kimgp_rsz.
  const int32_t st = kimgp_rsz(src, &t);
  if (st == KIMGP_OK) kimgp_csc(&t, dst);
  std::free(t.plane[0]);
  return st == KIMGP_OK ? KIMGP_OK : KIMGP_ERR_ARGS;
}

// RGBA8888 shrunk in both directions into NV12 or NV21: the two steps a strip
// of rows at a time through a temporary of one strip, the conversion kernel
// run on each strip (its rows start at even rows, so its chroma rows are
// those of the whole frame). Returns false when the sizes do not suit strips.
bool RgbaToNvStrips(const kimgp_img* src, kimgp_img* dst, int32_t* status) {
  const int32_t sw = src->width[0], sh = src->height[0], dw = dst->width[0], dh = dst->height[0];
  if (!ShrinkStrips::Serves(sw, sh, dw, dh)) return false;
  const int64_t bs = 4 * int64_t{dw};
  const int32_t rows = ShrinkStrips::Rows(sh, dh);
  uint8_t* tmp = static_cast<uint8_t*>(Allocate(bs * rows));
  *status = KIMGP_ERR_ARGS;
  if (tmp == nullptr) return true;
  ShrinkStrips strips(kimgp_8b8b8b8b_rsz_down_mult, kimgp_8b8b8b8b_rsz_down_non_mult,
                      src->plane[0], src->stride[0], sw, sh, dw, dh, tmp,
                      static_cast<int32_t>(bs));
  const kimgp_csc_kernel kernel =
      dst->cs == KIMGP_CS_NV12 ? kimgp_csc_rgba8888_to_nv12 : kimgp_csc_rgba8888_to_nv21;
  for (int32_t y0 = 0; y0 < dh;) {
    const int32_t n = strips.Fill(y0);
    uint8_t* sp[4] = {tmp, nullptr, nullptr, nullptr};
    const int32_t w[4] = {dw, 0, 0, 0}, h[4] = {n, 0, 0, 0};
    int32_t ss[4] = {static_cast<int32_t>(bs), 0, 0, 0};
    uint8_t* dp[4] = {dst->plane[0] + ptrdiff_t{y0} * dst->stride[0],
                      dst->plane[1] + ptrdiff_t{y0 / 2} * dst->stride[1], nullptr, nullptr};
    kernel(sp, w, h, ss, dst->stride, dp);
    y0 += n;
  }
  std::free(tmp);
  *status = KIMGP_OK;
  return true;
}

// The scratch of the fused kernels.
int64_t ScratchBytes(const kimgp_img* src, const kimgp_img* dst) {
  const int64_t sw = src->width[0], sh = src->height[0];
  const int64_t dw = dst->width[0], dh = dst->height[0], ds = dst->stride[0];
  const int64_t f = dw * sh + (ds / 2) * dh + 2 * ((dw / 2) * (sh / 2) + (ds / 4) * (dh / 2));
  const int64_t n = KIMGP_RSZ_CSC_SCRATCH(sw, sh, dw, dh);
  return f > n ? f : n;
}

int32_t WithScratch(const kimgp_img* src, kimgp_img* dst,
                    int32_t (*fn)(const kimgp_img*, kimgp_img*, void*, int32_t)) {
  void* scratch = Allocate(ScratchBytes(src, dst));
  if (scratch == nullptr) return KIMGP_ERR_ARGS;
  const int32_t st = fn(src, dst, scratch, dst->rsz_mode);
  std::free(scratch);
  return st;
}

void FillPlane(uint8_t* p, int32_t w, int32_t h, int32_t stride, uint8_t value) {
  if (w < 1) return;
  for (int32_t r = 0; r < h; ++r) std::memset(p + ptrdiff_t{r} * stride, value, size_t(w));
}

}  // namespace
}  // namespace rszcsc
}  // namespace kelo

KELO_EXPORT int32_t kimgp_rsz_csc(const kimgp_img* src, kimgp_img* dst) {
  using namespace kelo::rszcsc;  // NOLINT
  if (src->cs == dst->cs) return KIMGP_ERR_ARGS;
  if (src->width[0] < 8 || src->height[0] < 8 || dst->width[0] < 8 || dst->height[0] < 8) {
    return KIMGP_ERR_UNSUPPORTED;
  }
  const Route* r = FindRoute(src->cs, dst->cs);
  if (r == nullptr) return KIMGP_ERR_UNSUPPORTED;
  switch (r->action) {
    case Action::kTwoStep:
      return TwoStep(src, dst, *r);
    case Action::kRgbaToNv:
      if (src->width[0] == dst->width[0] && src->height[0] == dst->height[0]) {
        return kimgp_csc(src, dst);
      }
      {
        int32_t st;
        if (RgbaToNvStrips(src, dst, &st)) return st;
      }
      return TwoStep(src, dst, *r);
    case Action::kGreyToYuv420:
      FillPlane(dst->plane[0], dst->width[0], dst->height[0], dst->stride[0], 16);
      FillPlane(dst->plane[1], dst->width[1], dst->height[1], dst->stride[1], 128);
      FillPlane(dst->plane[2], dst->width[2], dst->height[2], dst->stride[2], 128);
      [[fallthrough]];
    case Action::kYuv420ToGrey:
      return kimgp_rsz_8b_org(src->plane[0], src->width[0], src->height[0], dst->width[0],
                              dst->height[0], dst->plane[0], nullptr, src->stride[0],
                              dst->stride[0], 0);
    case Action::kFused565:
      return WithScratch(src, dst, kimgp_rsz_csc_yuv420_to_rgb565);
    case Action::kFused888:
      return WithScratch(src, dst, kimgp_rsz_csc_yuv420_to_rgb888);
    case Action::kFusedTiled565:
      return WithScratch(src, dst, kimgp_rsz_csc_t64x32_to_rgb565);
    case Action::kSwapChroma:
      if (static_cast<float>(src->width[0]) / static_cast<float>(dst->width[0]) == 1.5f) {
        return kimgp_rsz_apex(src, dst);
      }
      return kimgp_rsz_apex_c(src, dst);
  }
  return KIMGP_ERR_UNSUPPORTED;
}

#define KELO_FUSED_ARGS const kimgp_img *src, kimgp_img *dst, void *scratch, int32_t mode

// The YUV420 to RGB565 helpers: every one gives the fused bytes for any sizes.
#define KELO_YUV420_TO_RGB565(name)                                                   \
  KELO_EXPORT int32_t name(KELO_FUSED_ARGS) {                                         \
    return kelo::rszcsc::FusedYuv420(src, dst, scratch, mode,                         \
                                     kelo::csc::kRow_I420_Rgb565_kBt601Limited, 2);   \
  }
KELO_YUV420_TO_RGB565(kimgp_8b_rsz_csc_down_mult_yuvtorgb565)
KELO_YUV420_TO_RGB565(kimgp_8b_rsz_csc_down_non_multyuvtorgb565)
KELO_YUV420_TO_RGB565(kimgp_rsz_csc_up_h_yuv420_to_rgb565_gen)
KELO_YUV420_TO_RGB565(kimgp_rsz_csc_up_h2x_yuv420_to_rgb565_gen)
#undef KELO_YUV420_TO_RGB565

KELO_EXPORT int32_t kimgp_8b_rsz_csc_down_mult_t64x32torgb565(KELO_FUSED_ARGS) {
  return kelo::rszcsc::FusedT64x32(src, dst, scratch, mode);
}
KELO_EXPORT int32_t kimgp_8b_rsz_csc_down_non_multt64x32torgb565(KELO_FUSED_ARGS) {
  return kelo::rszcsc::FusedT64x32(src, dst, scratch, mode);
}

namespace kelo {
namespace rszcsc {
namespace {

// Both directions shrink: whole ratios (kMult), else kNonMult; kGrow otherwise
// (kGrow2x when the height doubles exactly).
enum class Ratio { kMult, kNonMult, kGrow, kGrow2x };
Ratio RatioOf(const kimgp_img* src, const kimgp_img* dst) {
  const int32_t sw = src->width[0], sh = src->height[0], dw = dst->width[0], dh = dst->height[0];
  if (sw < 1 || sh < 1 || dw < 1 || dh < 1) return Ratio::kGrow;
  if (dw < sw && dh < sh) return sw % dw == 0 && sh % dh == 0 ? Ratio::kMult : Ratio::kNonMult;
  return int64_t{dh} == 2 * int64_t{sh} ? Ratio::kGrow2x : Ratio::kGrow;
}

}  // namespace
}  // namespace rszcsc
}  // namespace kelo

KELO_EXPORT int32_t kimgp_rsz_csc_yuv420_to_rgb565(KELO_FUSED_ARGS) {
  using kelo::rszcsc::Ratio;
  switch (kelo::rszcsc::RatioOf(src, dst)) {
    case Ratio::kMult:
      return kimgp_8b_rsz_csc_down_mult_yuvtorgb565(src, dst, scratch, mode);
    case Ratio::kNonMult:
      return kimgp_8b_rsz_csc_down_non_multyuvtorgb565(src, dst, scratch, mode);
    case Ratio::kGrow2x:
      return kimgp_rsz_csc_up_h2x_yuv420_to_rgb565_gen(src, dst, scratch, mode);
    case Ratio::kGrow:
      break;
  }
  return kimgp_rsz_csc_up_h_yuv420_to_rgb565_gen(src, dst, scratch, mode);
}

KELO_EXPORT int32_t kimgp_rsz_csc_yuv420_to_rgb888(KELO_FUSED_ARGS) {
  return kelo::rszcsc::FusedYuv420(src, dst, scratch, mode,
                                   kelo::csc::kRow_I420_Rgb888_kBt601Limited, 3);
}

KELO_EXPORT int32_t kimgp_rsz_csc_t64x32_to_rgb565(KELO_FUSED_ARGS) {
  using kelo::rszcsc::Ratio;
  switch (kelo::rszcsc::RatioOf(src, dst)) {
    case Ratio::kMult:
      return kimgp_8b_rsz_csc_down_mult_t64x32torgb565(src, dst, scratch, mode);
    case Ratio::kNonMult:
      return kimgp_8b_rsz_csc_down_non_multt64x32torgb565(src, dst, scratch, mode);
    default:
      break;
  }
  return kelo::rszcsc::FusedT64x32(src, dst, scratch, mode);
}
#undef KELO_FUSED_ARGS

// Horizontal passes reading a tiled plane.
#define KELO_NV12T_UP(name, k, mode1)                                                \
  KELO_EXPORT void name(const void* src, void* tmp, int32_t dw, int32_t sw, int32_t sh, \
                        int32_t qw, int32_t rw, int32_t src_stride, void* row) {     \
    kelo::rszcsc::TiledUp(kelo::rszcsc::k, mode1, src, tmp, dw, sw, sh, qw, rw,     \
                          src_stride, row);                                          \
  }
KELO_NV12T_UP(kimgp_nv12t_rsz_up, kLuma, false)
KELO_NV12T_UP(kimgp_nv12t_rsz_up_mode1, kLuma, true)
KELO_NV12T_UP(kimgp_nv12t_rsz_up_c, kPairs, false)
KELO_NV12T_UP(kimgp_nv12t_rsz_up_mode1_c, kPairs, true)
#undef KELO_NV12T_UP

KELO_EXPORT void kimgp_nv12t_rsz_down_w(const void* src, void* tmp, int32_t src_stride,
                                        int32_t dw, int32_t sh, int32_t fw, int32_t rw,
                                        void* row) {
  kelo::rszcsc::TiledDownW(kelo::rszcsc::kLuma, src, tmp, src_stride, dw, sh, fw, rw, row);
}
KELO_EXPORT void kimgp_nv12t_rsz_down_w_c(const void* src, void* tmp, int32_t src_stride,
                                          int32_t dw, int32_t sh, int32_t fw, int32_t rw,
                                          void* row) {
  kelo::rszcsc::TiledDownW(kelo::rszcsc::kPairs, src, tmp, src_stride, dw, sh, fw, rw, row);
}
