// Shared helpers of the tone-mapping tests: frames, records, captured logs.
#ifndef KELO_TESTS_IMGP_HDR_HDR_TEST_UTIL_H_
#define KELO_TESTS_IMGP_HDR_HDR_TEST_UTIL_H_

#include <cstring>
#include <memory>
#include <random>
#include <mutex>
#include <string>
#include <vector>

#include "imgp/hdr/hdr_internal.h"
#include "kimgp_hdr.h"
#include "tests/support/guarded.h"

namespace kelo {
namespace test {

// Lines the tone mapper logs while alive.
class LogCapture {
 public:
  LogCapture() { hdr::SetLogSinkForTest(&LogCapture::Sink, this); }
  ~LogCapture() { hdr::SetLogSinkForTest(nullptr, nullptr); }
  std::vector<std::string> lines;

 private:
  // Callers on several threads log at once.
  static void Sink(void* ctx, const char* tag, const char* line) {
    auto* self = static_cast<LogCapture*>(ctx);
    std::lock_guard<std::mutex> lock(self->mutex_);
    self->lines.push_back(std::string(tag) + "|" + line);
  }
  std::mutex mutex_;
};

// Writes 10-bit code `v` as the source layout stores it.
inline void Put10(kimgp_img& img, int plane, int32_t x, int32_t y, uint16_t v) {
  const uint16_t word = img.cs == KIMGP_CS_P010LE ? static_cast<uint16_t>(v << 6) : v;
  std::memcpy(img.plane[plane] + static_cast<ptrdiff_t>(y) * img.stride[plane] + 2 * x, &word, 2);
}

// Fills a source with one Y, U, V code everywhere.
inline void FillYuv(TestFrame& f, uint16_t y, uint16_t u, uint16_t v) {
  kimgp_img& img = f.img;
  for (int32_t r = 0; r < img.height[0]; ++r) {
    for (int32_t c = 0; c < img.width[0]; ++c) Put10(img, 0, c, r, y);
  }
  for (int32_t r = 0; r < img.height[1]; ++r) {
    for (int32_t c = 0; c < img.width[1]; ++c) {
      if (img.cs == KIMGP_CS_P010LE) {
        Put10(img, 1, 2 * c, r, u);
        Put10(img, 1, 2 * c + 1, r, v);
      } else {
        Put10(img, 1, c, r, u);
        Put10(img, 2, c, r, v);
      }
    }
  }
}

// A filled work record as the entries build it, for a chosen peak.
inline std::unique_ptr<kimgp_hdr_work> MakeWork(kimgp_img* src, kimgp_img* dst, int32_t peak,
                                                int32_t variant, bool hlg) {
  auto w = std::make_unique<kimgp_hdr_work>();
  std::memset(w.get(), 0, sizeof(kimgp_hdr_work));
  hdr::InitWork(w.get(), src, dst, variant, hlg);
  hdr::BuildTables(w.get(), peak);
  return w;
}

}  // namespace test
}  // namespace kelo

#endif  // KELO_TESTS_IMGP_HDR_HDR_TEST_UTIL_H_
