// Tone-mapping entries: peak selection and its log lines, mode routing, the
// four threads against one scalar pass, failed thread creation and failed
// allocations.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "common/internal/fault.h"
#include "tests/imgp/hdr/hdr_test_util.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

struct PeakCase {
  int32_t kind;    // source word 29
  int32_t nits;    // source word 30
  int32_t width;
  int32_t bright;  // luma value placed at (bx, by), 0 = none
  int32_t bx, by;
  int32_t peak;    // expected choice
  int32_t max_y;   // expected "maxY" line, -1 = none
};

class HdrPeak : public testing::TestWithParam<PeakCase> {};

TEST_P(HdrPeak, ChoosesAndLogs) {
  const PeakCase& c = GetParam();
  TestFrame src(KIMGP_CS_YUV420PLANAR16, c.width, 6, 0, 0);
  TestFrame dst(KIMGP_CS_NV12, c.width, 6);
  src.img.rsz_mode = c.kind;
  src.img.peak_nits = c.nits;
  if (c.bright != 0) Put10(src.img, 0, c.bx, c.by, static_cast<uint16_t>(c.bright));
  LogCapture log;
  ASSERT_EQ(kimgp_hdr_to_sdr(&src.img, &dst.img, 1), 0);
  EXPECT_EQ(src.img.peak_nits, c.peak);
  std::vector<std::string> want = {"KIMGP_HDR|source : " + std::to_string(c.kind) +
                                   ", source_nit : " + std::to_string(c.nits) + "\n"};
  if (c.max_y >= 0) want.push_back("KIMGP_HDR|maxY = " + std::to_string(c.max_y) + ", \n");
  want.push_back("KIMGP_HDR|final nit : " + std::to_string(c.peak) + "\n");
  EXPECT_EQ(log.lines, want);
}

INSTANTIATE_TEST_SUITE_P(
    Boundaries, HdrPeak,
    testing::Values(PeakCase{0, 1500, 8, 0, 0, 0, 1000, -1}, PeakCase{0, 1501, 8, 0, 0, 0, 4000, -1},
                    PeakCase{2, 0, 8, 900, 0, 0, 1000, -1},
                    PeakCase{1, 4000, 8, 750, 2, 2, 1000, 750},
                    PeakCase{1, 0, 8, 751, 2, 2, 2000, 751},
                    PeakCase{1, 0, 8, 810, 4, 0, 2000, 810},
                    PeakCase{1, 0, 8, 811, 4, 4, 4001, 811},
                    // Odd rows and columns are never visited.
                    PeakCase{1, 0, 8, 1000, 3, 2, 1000, 0},
                    // Above a width of 2000 only every fourth row and column.
                    PeakCase{1, 0, 2000, 900, 2, 2, 4001, 900},
                    PeakCase{1, 0, 2001, 900, 2, 2, 1000, 0},
                    PeakCase{1, 0, 2001, 900, 4, 4, 4001, 900}));

TEST(HdrMeasure, EmptyFrameAndRowsWithoutStride) {
  std::vector<uint16_t> none;
  LogCapture log;
  EXPECT_EQ(Analyze_SrcLuma(16, 0, none.data()), 1000);
  EXPECT_EQ(Analyze_SrcLuma(0, 4, none.data()), 1000);
  EXPECT_EQ(log.lines, (std::vector<std::string>{"KIMGP_HDR|maxY = 0, \n", "KIMGP_HDR|maxY = 0, \n"}));
  // The luma is read as rows of `width` samples without a stride.
  std::vector<uint16_t> luma(4 * 4, 0);
  luma[2 * 4 + 2] = 800;
  EXPECT_EQ(Analyze_SrcLuma(4, 4, luma.data()), 2000);
}

TEST(HdrEntry, ModesRouteAndOthersDoNothing) {
  auto rng = MakeRng(3);
  TestFrame src(KIMGP_CS_P010LE, 24, 10);
  src.FillRandom(rng);
  src.img.peak_nits = 4000;
  for (int32_t mode : {0, 3, 5, -1}) {
    TestFrame dst(KIMGP_CS_RGBA8888, 24, 10);
    const auto before = dst.Snapshot();
    LogCapture log;
    EXPECT_EQ(kimgp_hdr_to_sdr(&src.img, &dst.img, mode), -1);
    EXPECT_EQ(dst.Snapshot(), before);
    EXPECT_TRUE(log.lines.empty());
    EXPECT_EQ(src.img.peak_nits, 4000);
  }
  struct Route {
    int32_t mode, variant;
    bool hlg;
  };
  for (Route r : {Route{1, 0, false}, Route{2, 1, false}, Route{4, 0, true}}) {
    TestFrame a(KIMGP_CS_RGBA8888, 24, 10), b(KIMGP_CS_RGBA8888, 24, 10);
    TestFrame s2(src);
    LogCapture log;
    EXPECT_EQ(kimgp_hdr_to_sdr(&s2.img, &a.img, r.mode), 0);
    auto w = MakeWork(&s2.img, &b.img, 4000, r.variant, r.hlg);
    hdr::ConvertBand(w.get(), 0, 10, false);
    EXPECT_EQ(FirstDifference(a.Snapshot(), b.Snapshot()), "") << r.mode;
  }
}

// The threaded entries give one scalar pass's bytes for every height (fewer
// than 16 rows, not multiples of 4), every destination and any set of workers
// that could not be started.
TEST(HdrEntry, ThreadsMatchOnePass) {
  auto rng = MakeRng(17);
  LogCapture quiet;
  for (int32_t h : {1, 2, 3, 5, 8, 13, 16, 17, 30, 37}) {
    for (int32_t dcs : {500, 6, 1}) {
      const int32_t w = 2 + static_cast<int32_t>(rng() % 70) * 2;
      TestFrame src(KIMGP_CS_P010LE, w, h, RandomPad(rng));
      src.FillRandom(rng);
      src.img.peak_nits = 1000;
      TestFrame want(dcs, w, h);
      auto work = MakeWork(&src.img, &want.img, 1000, 1, false);
      hdr::ConvertBand(work.get(), 0, h, false);
      for (uint32_t mask = 0; mask < 8; ++mask) {
        SCOPED_TRACE(std::to_string(w) + "x" + std::to_string(h) + " to " + std::to_string(dcs) +
                     " failed workers " + std::to_string(mask));
        TestFrame dst(dcs, w, h);
        hdr::SetThreadFailureForTest(mask);
        EXPECT_EQ(kimgp_hdr10_to_sdr8(&src.img, &dst.img, 1), 0);
        hdr::SetThreadFailureForTest(0);
        ASSERT_EQ(FirstDifference(dst.Snapshot(), want.Snapshot()), "");
      }
    }
  }
}

// Callers on several threads at once, each on its own frames of many sizes,
// peaks and modes: every frame equals the one a lone caller gets (the tsan
// build watches the shared table cache, the log and the workers).
TEST(HdrEntry, ManyCallersAtOnce) {
  LogCapture quiet;
  struct Job {
    std::unique_ptr<TestFrame> src, want, got;
    int32_t mode;
  };
  auto rng = MakeRng(23);
  std::vector<Job> jobs;
  for (int i = 0; i < 48; ++i) {
    const int32_t w = 2 + 2 * static_cast<int32_t>(rng() % 40), h = 1 + rng() % 40;
    const int32_t scs = i % 2 ? KIMGP_CS_P010LE : KIMGP_CS_YUV420PLANAR16;
    const int32_t dcs = i % 3 == 0 ? KIMGP_CS_RGBA8888 : i % 3 == 1 ? KIMGP_CS_NV12 : KIMGP_CS_YUV420;
    Job j{std::make_unique<TestFrame>(scs, w, h, RandomPad(rng)),
          std::make_unique<TestFrame>(dcs, w, h), std::make_unique<TestFrame>(dcs, w, h),
          i % 4 == 3 ? 4 : 1 + i % 2};
    j.src->FillRandom(rng);
    j.src->img.rsz_mode = i % 5 == 0 ? 1 : 0;
    j.src->img.peak_nits = 500 + 250 * (i % 9);
    TestFrame s(*j.src);
    ASSERT_EQ(kimgp_hdr_to_sdr(&s.img, &j.want->img, j.mode), 0);
    jobs.push_back(std::move(j));
  }
  std::vector<std::thread> callers;
  for (int t = 0; t < 4; ++t) {
    callers.emplace_back([&jobs, t] {
      for (size_t i = t; i < jobs.size(); i += 4) {
        TestFrame s(*jobs[i].src);
        kimgp_hdr_to_sdr(&s.img, &jobs[i].got->img, jobs[i].mode);
      }
    });
  }
  for (auto& c : callers) c.join();
  for (const Job& j : jobs) {
    EXPECT_EQ(FirstDifference(j.got->Snapshot(), j.want->Snapshot()), "");
  }
}

// The counter hands out four-row slices up to the height; one worker on its
// own converts the whole frame from its first slice and the counter.
TEST(HdrEntry, SliceCounterAndWorkerBody) {
  kimgp_hdr_slices slices;
  ASSERT_EQ(pthread_mutex_init(&slices.mutex, nullptr), 0);
  slices.next = 16;
  slices.limit = 25;
  EXPECT_EQ(getStart(&slices), 16);
  EXPECT_EQ(getStart(&slices), 20);
  EXPECT_EQ(getStart(&slices), 24);
  EXPECT_EQ(getStart(&slices), -1);
  EXPECT_EQ(getStart(&slices), -1);

  auto rng = MakeRng(23);
  TestFrame src(KIMGP_CS_P010LE, 40, 11);
  src.FillRandom(rng);
  TestFrame got(KIMGP_CS_NV12, 40, 11), want(KIMGP_CS_NV12, 40, 11);
  auto w = MakeWork(&src.img, &got.img, 2000, 0, false);
  auto ref = MakeWork(&src.img, &want.img, 2000, 0, false);
  hdr::ConvertBand(ref.get(), 0, 11, false);
  slices.next = 4;
  slices.limit = 11;
  kimgp_hdr_thread_arg arg{w.get(), &slices, 0};
  pthread_t t;
  ASSERT_EQ(pthread_create(&t, nullptr, thread_kimgp_hdr10_to_sdr8, &arg), 0);
  ASSERT_EQ(pthread_join(t, nullptr), 0);
  EXPECT_EQ(FirstDifference(got.Snapshot(), want.Snapshot()), "");
  EXPECT_EQ(slices.next, 12);
  pthread_mutex_destroy(&slices.mutex);
}

// Every allocation of a call, failed in turn: -1, nothing written, nothing
// logged, nothing held (the sanitizer build's leak check).
TEST(HdrEntry, AllocationFailures) {
  auto rng = MakeRng(19);
  TestFrame src(KIMGP_CS_P010LE, 32, 9);
  src.FillRandom(rng);
  src.img.rsz_mode = 1;
  src.img.peak_nits = 77;
  FailNthForTest(0);
  {
    TestFrame dst(KIMGP_CS_NV21, 32, 9);
    TestFrame s2(src);
    LogCapture log;
    ASSERT_EQ(kimgp_hdr_to_sdr(&s2.img, &dst.img, 2), 0);
  }
  // Five allocations, then the three worker starts (which the call survives).
  EXPECT_EQ(FaultEventsForTest(), 8);
  const int32_t allocations = 5;
  for (int32_t mode : {1, 2, 4}) {
    for (int32_t n = 1; n <= allocations; ++n) {
      SCOPED_TRACE("mode " + std::to_string(mode) + " allocation " + std::to_string(n));
      TestFrame dst(KIMGP_CS_NV21, 32, 9);
      const auto before = dst.Snapshot();
      TestFrame s2(src);
      LogCapture log;
      FailNthForTest(n);
      EXPECT_EQ(kimgp_hdr_to_sdr(&s2.img, &dst.img, mode), -1);
      FailNthForTest(0);
      EXPECT_EQ(dst.Snapshot(), before);
      EXPECT_EQ(s2.img.peak_nits, 77);
      EXPECT_TRUE(log.lines.empty());
    }
  }
}

}  // namespace
}  // namespace test
}  // namespace kelo
