// Descriptors that are hostile yet within what callers are asked to keep:
// planes a code does not use (and plane 3) pointing at memory that faults on
// any access, and zero, negative and extreme sizes. Every entry returns its
// defined status, writes nothing outside its planes, and nothing at all on
// -1 or -3; with poisoned unused planes it gives the bytes it gives without.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <climits>
#include <functional>
#include <ostream>
#include <string>

#include "kimgp_copy.h"
#include "kimgp_csc.h"
#include "kimgp_enhance.h"
#include "kimgp_frame.h"
#include "kimgp_hdr.h"
#include "kimgp_rot.h"
#include "kimgp_rsz.h"
#include "kimgp_rsz_csc.h"
#include "kimgp_rsz_rot.h"
#include "tests/support/guarded.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

// The middle of 1 MB without access rights.
uint8_t* Poison() {
  static uint8_t* page = [] {
    void* p = mmap(nullptr, 1 << 20, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return p == MAP_FAILED ? nullptr : static_cast<uint8_t*>(p) + (1 << 19);
  }();
  return page;
}

using Call = std::function<int32_t(kimgp_img*, kimgp_img*)>;

struct Entry {
  const char* name;
  int32_t scs, sw, sh, dcs, dw, dh;
  Call call;
  // A plane that fails after earlier ones were resized keeps them (the
  // resizers return the first failing plane's status).
  bool keeps_earlier_planes = false;
};

void PrintTo(const Entry& e, std::ostream* os) { *os << e.name; }

void Poisoned(TestFrame* f) {
  for (int i = f->planes(); i < 4; ++i) f->img.plane[i] = Poison();
}

bool IsError(int32_t st) { return st == KIMGP_ERR_ARGS || st == KIMGP_ERR_UNSUPPORTED; }

class Hostile : public ::testing::TestWithParam<Entry> {};

TEST_P(Hostile, PoisonedUnusedPlanesChangeNothing) {
  const Entry& e = GetParam();
  ASSERT_NE(Poison(), nullptr);
  auto rng = MakeRng(5);
  TestFrame src(e.scs, e.sw, e.sh, 3);
  src.FillRandom(rng);
  const TestFrame dst0(e.dcs, e.dw, e.dh, 5);
  TestFrame plain_src(src), plain_dst(dst0);
  const int32_t want = e.call(&plain_src.img, &plain_dst.img);
  TestFrame s(src), d(dst0);
  Poisoned(&s);
  Poisoned(&d);
  EXPECT_EQ(e.call(&s.img, &d.img), want);
  EXPECT_EQ(FirstDifference(d.Snapshot(), plain_dst.Snapshot()), "");
}

TEST_P(Hostile, ZeroNegativeAndExtremeSizes) {
  const Entry& e = GetParam();
  auto rng = MakeRng(6);
  const int32_t kValues[] = {0, -1, -7, INT32_MIN, INT32_MAX};
  for (int side = 0; side < 2; ++side) {
    for (int field = 0; field < 2; ++field) {
      for (int plane = 0; plane < 3; ++plane) {
        for (int32_t v : kValues) {
          // A larger size than the buffers hold is the caller's fault, not a
          // hostile value: only plane 0's own size on the side read is kept
          // within the buffers by the values below 1.
          if (v == INT32_MAX) continue;
          SCOPED_TRACE(std::string(side ? "dst " : "src ") + (field ? "height[" : "width[") +
                       std::to_string(plane) + "] = " + std::to_string(v));
          TestFrame s(e.scs, e.sw, e.sh, 3), d(e.dcs, e.dw, e.dh, 5);
          s.FillRandom(rng);
          Poisoned(&s);
          Poisoned(&d);
          kimgp_img& img = side ? d.img : s.img;
          (field ? img.height : img.width)[plane] = v;
          const std::vector<uint8_t> before = d.Snapshot();
          const int32_t st = e.call(&s.img, &d.img);
          EXPECT_TRUE(st == KIMGP_OK || IsError(st)) << st;
          EXPECT_TRUE(d.GuardsIntact());
          if (IsError(st) && !(e.keeps_earlier_planes && plane > 0)) {
            EXPECT_EQ(FirstDifference(d.Snapshot(), before), "");
          }
        }
      }
    }
  }
}

Call Rot(uint32_t r) {
  return [r](kimgp_img* s, kimgp_img* d) { return kimgp_rot(s, r, d); };
}
Call RszRot(int32_t r) {
  return [r](kimgp_img* s, kimgp_img* d) { return kimgp_rsz_rot(s, r, d); };
}
int32_t Cpy(kimgp_img* s, kimgp_img* d) { return kimgp_cpy(s, d); }
int32_t Csc(kimgp_img* s, kimgp_img* d) { return kimgp_csc(s, d); }
int32_t Rsz(kimgp_img* s, kimgp_img* d) { return kimgp_rsz(s, d); }
int32_t RszCsc(kimgp_img* s, kimgp_img* d) { return kimgp_rsz_csc(s, d); }
int32_t Crop(kimgp_img* s, kimgp_img* d) { return kimgp_crop(s, d); }
int32_t Pad(kimgp_img* s, kimgp_img* d) { return kimgp_padding(s, d); }
int32_t Hdr(kimgp_img* s, kimgp_img* d) { return kimgp_hdr_to_sdr(s, d, 1); }
int32_t VqeCs(kimgp_img* s, kimgp_img* d) { return kimgp_vqe_cs(s, d); }
int32_t VqeDe(kimgp_img* s, kimgp_img* d) { return kimgp_vqe_de(s, d, 4); }

constexpr int32_t kY = KIMGP_CS_YUV420, kNv = KIMGP_CS_NV12;

const Entry kEntries[] = {
    {"cpy_yuv400", KIMGP_CS_YUV400, 40, 12, KIMGP_CS_YUV400, 40, 12, Cpy},
    {"cpy_nv12", kNv, 40, 12, kNv, 40, 12, Cpy},
    {"cpy_rgb565", KIMGP_CS_RGB565, 40, 12, KIMGP_CS_RGB565, 40, 12, Cpy},
    {"rot_nv12_90l", kNv, 40, 12, kNv, 12, 40, Rot(KIMGP_ROT_90L)},
    {"rot_rgba_180", KIMGP_CS_RGBA8888, 40, 12, KIMGP_CS_RGBA8888, 40, 12, Rot(KIMGP_ROT_180)},
    {"csc_nv12_rgba", kNv, 40, 12, KIMGP_CS_RGBA8888, 40, 12, Csc},
    {"csc_rgb888_nv21", KIMGP_CS_RGB888, 40, 12, KIMGP_CS_NV21, 40, 12, Csc},
    {"csc_yuyv_bgra", KIMGP_CS_YUYV, 40, 12, KIMGP_CS_BGRA8888, 40, 12, Csc},
    {"csc_p010_rgba", KIMGP_CS_P010LE, 40, 12, KIMGP_CS_RGBA8888, 40, 12, Csc},
    {"csc_yuv400_rgb565", KIMGP_CS_YUV400, 40, 12, KIMGP_CS_RGB565, 40, 12, Csc},
    {"csc_nv12_yv12", kNv, 40, 12, KIMGP_CS_YV12, 40, 12, Csc},
    {"rsz_nv12", kNv, 40, 12, kNv, 30, 20, Rsz, true},
    {"rsz_yuv400", KIMGP_CS_YUV400, 40, 12, KIMGP_CS_YUV400, 70, 9, Rsz},
    {"rsz_rgb888", KIMGP_CS_RGB888, 40, 12, KIMGP_CS_RGB888, 30, 20, Rsz},
    {"rsz_rot_nv12", kNv, 40, 12, kNv, 10, 30, RszRot(KIMGP_ROT_90R), true},
    {"rsz_rot_rgba", KIMGP_CS_RGBA8888, 40, 12, KIMGP_CS_RGBA8888, 12, 40, RszRot(KIMGP_ROT_90L)},
    {"rsz_csc_yuv400_yuv420", KIMGP_CS_YUV400, 40, 12, kY, 30, 20, RszCsc},
    {"rsz_csc_nv12_nv21", kNv, 45, 12, KIMGP_CS_NV21, 30, 12, RszCsc},
    {"rsz_csc_rgba_nv12", KIMGP_CS_RGBA8888, 40, 12, kNv, 30, 10, RszCsc},
    {"crop_nv12", kNv, 40, 12, kNv, 30, 10, Crop},
    {"padding_nv12", kNv, 30, 10, kNv, 40, 12, Pad},
    {"padding_rgb888", KIMGP_CS_RGB888, 30, 10, KIMGP_CS_RGB888, 40, 12, Pad},
    {"hdr_p010_nv12", KIMGP_CS_P010LE, 40, 12, kNv, 40, 12, Hdr},
    {"vqe_cs", kY, 40, 12, kY, 40, 12, VqeCs},
    {"vqe_de", kY, 40, 12, kY, 40, 12, VqeDe},
};

INSTANTIATE_TEST_SUITE_P(Entries, Hostile, ::testing::ValuesIn(kEntries),
                         [](const ::testing::TestParamInfo<Entry>& info) {
                           return std::string(info.param.name);
                         });

}  // namespace
}  // namespace test
}  // namespace kelo
