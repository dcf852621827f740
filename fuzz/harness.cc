#include "fuzz/harness.h"

#include <sys/mman.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

#include "tests/support/targets.h"
#include "tools/frame/formats.h"

namespace kelo {
namespace fuzz {
namespace {

constexpr int32_t kNamed[] = {
    KIMGP_CS_YUV400,  KIMGP_CS_YUV420,  KIMGP_CS_YUV422N,   KIMGP_CS_YUV444,
    KIMGP_CS_YV12,    KIMGP_CS_YV16,    KIMGP_CS_NV12,      KIMGP_CS_NV21,
    KIMGP_CS_YUV422W, KIMGP_CS_T64X32,  KIMGP_CS_T16X16,    KIMGP_CS_T8X8,
    KIMGP_CS_T256X16, KIMGP_CS_UYVY,    KIMGP_CS_YUYV,      KIMGP_CS_RGB565,
    KIMGP_CS_BGR565,  KIMGP_CS_RGB888,  KIMGP_CS_BGR888,    KIMGP_CS_RGBA8888,
    KIMGP_CS_BGRA8888, KIMGP_CS_ARGB8888, KIMGP_CS_ABGR8888,
    KIMGP_CS_YUV420PLANAR16, KIMGP_CS_P010LE};
constexpr int32_t kUnnamed[] = {9, 10, 15, 99, 102, 199, 202, 299, 300, 402,
                                504, 599, 602, 700};
constexpr int32_t kOutside[] = {-1, -100, INT32_MIN, 100000, INT32_MAX};

// Copies a frame and points its unused planes at the poison page again.
TestFrame Clone(const TestFrame& f) {
  TestFrame c(f);
  for (int i = c.planes(); i < 4; ++i) c.img.plane[i] = Poison();
  return c;
}

void Print(const char* name, const kimgp_img& img) {
  fprintf(stderr, "%s: cs %d x %d y %d std %d rsz_mode %d\n", name, img.cs, img.x, img.y,
          img.std, img.rsz_mode);
  for (int i = 0; i < 3; ++i) {
    fprintf(stderr, "  plane %d: %d x %d stride %d buf_height %d\n", i, img.width[i],
            img.height[i], img.stride[i], img.buf_height[i]);
  }
}

bool IsError(int32_t status) {
  return status == KIMGP_ERR_ARGS || status == KIMGP_ERR_UNSUPPORTED;
}

const frame::FormatInfo& Layout(int32_t cs) {
  const frame::FormatInfo* f = frame::FindFormat(cs);
  return f != nullptr ? *f : *frame::FindFormat(test::RangeRepresentative(cs));
}

}  // namespace

void Check(bool ok, const char* what) {
  if (ok) return;
  fprintf(stderr, "fuzz check failed: %s\n", what);
  abort();
}

int32_t PickFrom(FuzzedDataProvider& in, const int32_t* codes, size_t n) {
  return codes[in.ConsumeIntegralInRange<size_t>(0, n - 1)];
}

int32_t PickCode(FuzzedDataProvider& in) {
  const uint8_t r = in.ConsumeIntegral<uint8_t>();
  if (r < 230) return PickFrom(in, kNamed, sizeof(kNamed) / sizeof(kNamed[0]));
  if (r < 250) return PickFrom(in, kUnnamed, sizeof(kUnnamed) / sizeof(kUnnamed[0]));
  return PickFrom(in, kOutside, sizeof(kOutside) / sizeof(kOutside[0]));
}

int32_t PickSize(FuzzedDataProvider& in, int32_t max) {
  const uint8_t r = in.ConsumeIntegral<uint8_t>();
  if (r < 32) return r % 4;              // 0 .. 3
  if (r < 96) return 1 + 2 * (r % 24);   // small odd sizes
  return in.ConsumeIntegralInRange<int32_t>(1, max);
}

int32_t PickStd(FuzzedDataProvider& in) {
  static constexpr int32_t kStd[] = {0, 0, 1, 10, 11, 2, -1, 12, 20, 21};
  return PickFrom(in, kStd, sizeof(kStd) / sizeof(kStd[0]));
}

int PlanesOf(int32_t cs) { return Layout(cs).planes; }

bool LaterPlaneMayFail(const TestFrame& src, const TestFrame& dst) {
  if (src.img.cs == KIMGP_CS_P010LE) return true;
  for (int i = 1; i < src.planes(); ++i) {
    if (src.img.width[i] < 1 || src.img.height[i] < 1 || dst.img.width[i] < 1 ||
        dst.img.height[i] < 1) {
      return true;
    }
  }
  return false;
}

int ThreePlaneOps(int32_t cs) {
  return cs >= 1 && cs <= 99 && cs != KIMGP_CS_NV12 && cs != KIMGP_CS_NV21 ? 3 : 0;
}

uint8_t* Poison() {
  // 1 MB without access rights: a read or write anywhere near an unused
  // plane's pointer faults.
  static uint8_t* page = [] {
    void* p = mmap(nullptr, 1 << 20, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    Check(p != MAP_FAILED, "mmap of the poison page");
    return static_cast<uint8_t*>(p) + (1 << 19);
  }();
  return page;
}

namespace {

// Pads the strides and buffer heights of `layout` as the input says, then
// allocates and fills the planes.
std::unique_ptr<TestFrame> Build(FuzzedDataProvider& in, kimgp_img layout,
                                 int planes, bool tiled) {
  const uint8_t pr = in.ConsumeIntegral<uint8_t>();
  const int32_t pad = pr < 128 ? 0 : pr < 192 ? (pr % 70) + 1 : 2 * (pr % 32);
  const int32_t extra = in.ConsumeBool() ? in.ConsumeIntegralInRange<int32_t>(0, 5) : 0;
  for (int i = 0; i < planes; ++i) {
    if (!tiled) layout.stride[i] += pad;
    layout.buf_height[i] += extra;
  }
  auto frame = std::make_unique<TestFrame>(layout, planes);
  // Contents: a seeded pattern, so that the input stays short.
  uint32_t seed = in.ConsumeIntegral<uint32_t>();
  for (int i = 0; i < frame->planes(); ++i) {
    test::GuardedBuffer& b = frame->buffer(i);
    for (size_t k = 0; k < b.size(); ++k) {
      seed = seed * 1664525u + 1013904223u;
      b.data()[k] = static_cast<uint8_t>(seed >> 24);
    }
  }
  for (int i = planes; i < 4; ++i) frame->img.plane[i] = Poison();
  return frame;
}

}  // namespace

std::unique_ptr<TestFrame> MakeFrame(FuzzedDataProvider& in, int32_t cs,
                                     int32_t w, int32_t h, int planes) {
  const frame::FormatInfo& f = Layout(cs);
  kimgp_img layout{};
  frame::Describe(f.cs, w > 0 ? w : 0, h > 0 ? h : 0, 1, 0, &layout);
  layout.cs = cs;
  return Build(in, layout, planes > f.planes ? planes : f.planes, f.tile_w > 0);
}

std::unique_ptr<TestFrame> MakeFrameFrom(FuzzedDataProvider& in,
                                         const kimgp_img& layout, int planes) {
  return Build(in, layout, planes, Layout(layout.cs).tile_w > 0);
}

std::unique_ptr<TestFrame> MakeTurned(FuzzedDataProvider& in, int32_t cs,
                                      const TestFrame& src) {
  const frame::FormatInfo& f = Layout(src.img.cs);
  kimgp_img layout{};
  layout.cs = cs;
  for (int i = 0; i < src.planes(); ++i) {
    const int32_t unit = i < f.planes ? f.unit_bytes[i] : 1;
    layout.width[i] = src.img.height[i] > 0 ? src.img.height[i] : 0;
    layout.height[i] = src.img.width[i] > 0 ? src.img.width[i] : 0;
    layout.stride[i] = layout.width[i] * unit;
    layout.buf_height[i] = layout.height[i];
  }
  return Build(in, layout, src.planes(), false);
}

bool MaybeHostileSizes(FuzzedDataProvider& in, kimgp_img* img) {
  if (in.ConsumeIntegral<uint8_t>() >= 16) return false;
  static constexpr int32_t kValues[] = {0, -1, -2, -64, INT32_MIN};
  int32_t* field = in.ConsumeBool() ? img->width : img->height;
  field[in.ConsumeIntegralInRange<int>(0, 2)] =
      kValues[in.ConsumeIntegralInRange<size_t>(0, 4)];
  return true;
}

Conversion MakeConversion(FuzzedDataProvider& in, int32_t scs, int32_t dcs, int32_t w,
                          int32_t h, int32_t (*pick_std)(FuzzedDataProvider&)) {
  Conversion c{MakeFrame(in, scs, w, h), MakeFrame(in, dcs, w, h)};
  c.src->img.std = pick_std(in);
  c.dst->img.std = in.ConsumeBool() ? c.src->img.std : pick_std(in);
  MaybeHostileSizes(in, &c.src->img);
  MaybeHostileSizes(in, &c.dst->img);
  return c;
}

int32_t RunEveryTarget(const TestFrame& src, const TestFrame& dst,
                       const Call& call, Expect expect) {
  const std::vector<uint8_t> src_before = src.Snapshot();
  const std::vector<uint8_t> dst_before = dst.Snapshot();
  // KELO_FUZZ_TRACE=1 prints the descriptors before the calls, for
  // reproducers that end in a sanitizer report.
  static const bool trace = getenv("KELO_FUZZ_TRACE") != nullptr;
  if (trace) {
    Print("source", src.img);
    Print("destination", dst.img);
  }
  bool first = true;
  int32_t status = 0;
  std::vector<uint8_t> src_first, dst_first;
  test::ForEachTarget([&](const std::string& target) {
    TestFrame s = Clone(src);
    TestFrame d = Clone(dst);
    const int32_t got = call(&s.img, &d.img);
    const auto Check = [&](bool ok, const char* what) {
      if (ok) return;
      fprintf(stderr, "target %s, status %d\n", target.c_str(), got);
      Print("source", src.img);
      Print("destination", dst.img);
      fuzz::Check(false, what);
    };
    Check(s.GuardsIntact(), "a guard band of the source was written");
    Check(d.GuardsIntact(), "a guard band of the destination was written");
    const std::vector<uint8_t> s_after = s.Snapshot();
    const std::vector<uint8_t> d_after = d.Snapshot();
    if (!expect.in_place) Check(s_after == src_before, "the source was written");
    if (expect.untouched_on_error && IsError(got)) {
      if (!expect.keeps_earlier_planes) {
        Check(d_after == dst_before, "the destination was written on -1/-3");
      }
      Check(s_after == src_before, "the source was written on -1/-3");
    }
    if (first) {
      status = got;
      src_first = s_after;
      dst_first = d_after;
      first = false;
      return;
    }
    Check(got == status, "targets returned different statuses");
    Check(d_after == dst_first, "targets wrote different bytes");
    Check(s_after == src_first, "targets left different sources");
  });
  return status;
}

}  // namespace fuzz
}  // namespace kelo
