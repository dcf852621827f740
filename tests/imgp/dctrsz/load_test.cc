// The DCT-domain pass from several caller threads at once, each with its own
// contexts and frames of many sizes and modes: every frame equals the one a
// lone caller gets (the tsan build watches the workers and semaphores).
#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "kimgp_dctrsz.h"
#include "tests/support/guarded.h"
#include "tests/support/targets.h"

namespace kelo {
namespace test {
namespace {

// init, the pass and deinit on one frame.
int32_t Resize(const TestFrame& src, TestFrame* dst, int32_t mode) {
  kimgp_img io[2] = {src.img, dst->img};
  kimgp_rsz_new_ctx ctx;
  int16_t*** vmat = nullptr;
  int16_t*** hmat = nullptr;
  if (kimgp_rsz_new_init(io, &ctx, &vmat, &hmat, mode) != 0) return -100;
  const int32_t status = kimgp_rsz_new(io, &ctx, vmat, hmat);
  kimgp_rsz_new_deinit(io, &ctx, vmat, hmat);
  return status;
}

TEST(DctPassLoad, ManyCallersAtOnce) {
  struct Job {
    std::unique_ptr<TestFrame> src, want, got;
    int32_t mode;
  };
  auto rng = MakeRng(41);
  std::vector<Job> jobs;
  const int32_t kCodes[] = {KIMGP_CS_YUV420, KIMGP_CS_NV12, KIMGP_CS_NV21};
  const int32_t kModes[] = {0, 2, 4};
  for (int i = 0; i < 36; ++i) {
    const int32_t cs = kCodes[i % 3];
    const int32_t sw = 16 + static_cast<int32_t>(rng() % 160), sh = 16 + rng() % 96;
    const int32_t dw = sw / 4 + 1 + static_cast<int32_t>(rng() % (sw / 2)),
                  dh = sh / 4 + 1 + static_cast<int32_t>(rng() % (sh / 2));
    kimgp_img io[2] = {TestFrame(cs, sw, sh).img, TestFrame(cs, dw, dh).img};
    kimgp_rsz_new_set_img(io);
    const int planes = cs == KIMGP_CS_YUV420 ? 3 : 2;
    Job j{std::make_unique<TestFrame>(io[0], planes), std::make_unique<TestFrame>(io[1], planes),
          std::make_unique<TestFrame>(io[1], planes), kModes[(i / 3) % 3]};
    j.src->FillRandom(rng);
    ASSERT_EQ(Resize(*j.src, j.want.get(), j.mode), 0) << sw << "x" << sh << " to " << dw << "x" << dh;
    jobs.push_back(std::move(j));
  }
  std::vector<std::thread> callers;
  for (int t = 0; t < 3; ++t) {
    callers.emplace_back([&jobs, t] {
      for (size_t i = t; i < jobs.size(); i += 3) Resize(*jobs[i].src, jobs[i].got.get(), jobs[i].mode);
    });
  }
  for (auto& c : callers) c.join();
  for (const Job& j : jobs) {
    EXPECT_EQ(FirstDifference(j.got->Snapshot(), j.want->Snapshot()), "");
  }
}

}  // namespace
}  // namespace test
}  // namespace kelo
