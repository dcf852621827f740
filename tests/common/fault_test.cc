// Every heap allocation and thread start inside a call, made to fail one at a
// time: the call returns its documented status with nothing written, or
// finishes with exactly the bytes of an undisturbed call. The sanitizer
// build's leak checker finds anything a failing call keeps.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <ostream>
#include <string>

#include "common/internal/fault.h"
#include "common/internal/simd.h"
#include "kcmn_mem.h"
#include "kimgp_csc.h"
#include "kimgp_dctrsz.h"
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

struct Case {
  const char* name;
  int32_t scs, sw, sh, dcs, dw, dh;
  // The call on fresh frames; its status.
  std::function<int32_t(kimgp_img* src, kimgp_img* dst)> call;
  // The status of a call whose memory ran out.
  int32_t oom_status;
  // Only the vector paths take memory (a plan of vector blocks).
  bool vector_only = false;
};

void PrintTo(const Case& c, std::ostream* os) { *os << c.name; }

// Runs the call with the n-th event failing for each event an undisturbed
// call meets, judging each result. Returns the number of events.
int Sweep(const Case& c) {
  SCOPED_TRACE(c.name);
  auto rng = MakeRng(31);
  TestFrame src(c.scs, c.sw, c.sh, RandomPad(rng));
  src.FillRandom(rng);
  const TestFrame dst0(c.dcs, c.dw, c.dh, RandomPad(rng));
  TestFrame want(dst0);
  {
    TestFrame s(src);
    FailNthForTest(0);
    EXPECT_EQ(c.call(&s.img, &want.img), KIMGP_OK);
  }
  const int events = FaultEventsForTest();
  for (int n = 1; n <= events; ++n) {
    SCOPED_TRACE("event " + std::to_string(n) + " of " + std::to_string(events));
    TestFrame s(src), d(dst0);
    FailNthForTest(n);
    const int32_t st = c.call(&s.img, &d.img);
    FailNthForTest(0);
    if (st == KIMGP_OK) {
      EXPECT_EQ(FirstDifference(d.Snapshot(), want.Snapshot()), "");
    } else {
      EXPECT_EQ(st, c.oom_status);
      EXPECT_EQ(FirstDifference(d.Snapshot(), dst0.Snapshot()), "");
    }
  }
  return events;
}

int32_t Rsz(kimgp_img* s, kimgp_img* d) { return kimgp_rsz(s, d); }
int32_t RszCsc(kimgp_img* s, kimgp_img* d) { return kimgp_rsz_csc(s, d); }
std::function<int32_t(kimgp_img*, kimgp_img*)> RszRot(int32_t rot) {
  return [rot](kimgp_img* s, kimgp_img* d) { return kimgp_rsz_rot(s, rot, d); };
}
std::function<int32_t(kimgp_img*, kimgp_img*)> CscRot(uint32_t rot) {
  return [rot](kimgp_img* s, kimgp_img* d) { return kimgp_csc_rot(s, rot, d); };
}
int32_t CscNew(kimgp_img* s, kimgp_img* d) { return kimgp_csc_new(s, d); }
int32_t Hdr(kimgp_img* s, kimgp_img* d) { return kimgp_hdr_to_sdr(s, d, 1); }

// init, the pass and deinit of the DCT-domain resizer as one call.
int32_t Dct(kimgp_img* s, kimgp_img* d) {
  kimgp_img io[2] = {*s, *d};
  kimgp_rsz_new_ctx ctx;
  int16_t*** vmat = nullptr;
  int16_t*** hmat = nullptr;
  const int32_t st = kimgp_rsz_new_init(io, &ctx, &vmat, &hmat, 0);
  if (st != 0) return st;
  const int32_t pass = kimgp_rsz_new(io, &ctx, vmat, hmat);
  kimgp_rsz_new_deinit(io, &ctx, vmat, hmat);
  return pass;
}

constexpr int32_t kYuv420 = KIMGP_CS_YUV420;

class Fault : public ::testing::TestWithParam<Case> {};

TEST_P(Fault, EveryEventFailedInTurn) {
  int most = 0;
  ForEachTarget([&](const std::string& target) {
    SCOPED_TRACE(target);
    most = std::max(most, Sweep(GetParam()));
  });
  if (KELO_HAVE_HWY || !GetParam().vector_only) {
    EXPECT_GT(most, 0) << "the case takes no memory on any target";
  }
}

const Case kCases[] = {
    // An intermediate above the stack's 32 KB: a wide, short frame.
    {"rsz", kYuv420, 320, 240, kYuv420, 1000, 100, Rsz, KIMGP_ERR_ARGS},
    // Rows grown in strips: the strip plan.
    {"rsz up", kYuv420, 100, 40, kYuv420, 400, 90, Rsz, KIMGP_ERR_ARGS, true},
    // Turned shrink in bands, and a turned growth through an intermediate.
    {"rsz_rot shrink", kYuv420, 320, 240, kYuv420, 120, 160, RszRot(KIMGP_ROT_90L),
     KIMGP_ERR_ARGS},
    {"rsz_rot grow", kYuv420, 160, 120, kYuv420, 300, 400, RszRot(KIMGP_ROT_90R),
     KIMGP_ERR_ARGS},
    {"rsz_csc fused", kYuv420, 320, 240, KIMGP_CS_RGB565, 200, 150, RszCsc, KIMGP_ERR_ARGS},
    {"rsz_csc two steps", KIMGP_CS_RGB888, 160, 120, kYuv420, 200, 150, RszCsc,
     KIMGP_ERR_ARGS},
    {"rsz_csc strips", KIMGP_CS_RGBA8888, 320, 240, KIMGP_CS_NV12, 200, 150, RszCsc,
     KIMGP_ERR_ARGS},
    {"rsz_csc luma", KIMGP_CS_YUV400, 160, 120, KIMGP_CS_RGB888, 200, 150, RszCsc,
     KIMGP_ERR_ARGS},
    {"csc_rot", KIMGP_CS_YUYV, 200, 64, KIMGP_CS_BGRA8888, 64, 200, CscRot(KIMGP_ROT_90L),
     KIMGP_ERR_ARGS},
    {"csc_new", kYuv420, 64, 40, KIMGP_CS_RGBA8888, 64, 40, CscNew, KIMGP_ERR_ARGS},
    {"hdr", KIMGP_CS_P010LE, 64, 40, KIMGP_CS_RGBA8888, 64, 40, Hdr, KIMGP_ERR_ARGS},
    {"dct", kYuv420, 192, 96, kYuv420, 128, 64, Dct, KIMGP_ERR_ARGS},
};

INSTANTIATE_TEST_SUITE_P(Calls, Fault, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<Case>& info) {
                           std::string name = info.param.name;
                           for (char& ch : name) {
                             if (ch == ' ') ch = '_';
                           }
                           return name;
                         });

// The aligned allocator itself: null when its memory is refused.
TEST(FaultAllocator, AlignedBlockRefused) {
  FailNthForTest(1);
  EXPECT_EQ(kcmn_malloc_align32(64), nullptr);
  FailNthForTest(0);
  void* p = kcmn_malloc_align32(64);
  EXPECT_NE(p, nullptr);
  kcmn_mfree_align32(p);
}

}  // namespace
}  // namespace test
}  // namespace kelo
