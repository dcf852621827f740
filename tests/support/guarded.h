// Test frames in buffers with guard bands. Every plane buffer is stride x
// buf_height bytes with a guard band on each side; tests compare whole
// buffers (guards, row padding and all) against what they expect, so a write
// anywhere it does not belong fails the test.
#ifndef KELO_TESTS_SUPPORT_GUARDED_H_
#define KELO_TESTS_SUPPORT_GUARDED_H_

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "kimgp_img.h"

namespace kelo {
namespace test {

constexpr size_t kGuardBytes = 64;
constexpr uint8_t kGuardByte = 0xA5;

// One plane's memory: [guard][body][guard].
class GuardedBuffer {
 public:
  explicit GuardedBuffer(size_t body_bytes = 0);
  uint8_t* data() { return mem_.data() + kGuardBytes; }
  const uint8_t* data() const { return mem_.data() + kGuardBytes; }
  size_t size() const { return body_; }
  bool GuardsIntact() const;
  // The whole allocation, guards included.
  const std::vector<uint8_t>& raw() const { return mem_; }
  std::vector<uint8_t>& raw() { return mem_; }

 private:
  std::vector<uint8_t> mem_;
  size_t body_;
};

// The named code whose geometry a code without a layout is given: 3 byte
// planes up to 99, then by range (2xx like RGB565, 4xx like RGB888, ...).
int32_t RangeRepresentative(int32_t cs);

// A frame of any colour-space code with its own descriptor.
class TestFrame {
 public:
  // Planes as the format table gives them for w x h; each stride is the row
  // length plus `pad` bytes. Bodies are filled with `fill`.
  TestFrame(int32_t cs, int32_t w, int32_t h, int32_t pad = 0,
            uint8_t fill = 0x5A);
  // A frame from an explicit descriptor (pointers are replaced); plane i gets
  // stride[i] * buf_height[i] bytes for i < planes.
  TestFrame(const kimgp_img& layout, int planes, uint8_t fill = 0x5A);

  TestFrame(const TestFrame& other);
  TestFrame& operator=(const TestFrame&) = delete;

  kimgp_img img;
  int planes() const { return static_cast<int>(buffers_.size()); }
  GuardedBuffer& buffer(int i) { return buffers_[i]; }
  const GuardedBuffer& buffer(int i) const { return buffers_[i]; }

  void FillRandom(std::mt19937& rng);
  bool GuardsIntact() const;
  // Everything including guards, for "nothing was written" checks.
  std::vector<uint8_t> Snapshot() const;

 private:
  void Bind();
  std::vector<GuardedBuffer> buffers_;
};

// Row-wise reference copy into a snapshot-like expectation: for each of rows
// rows, row_bytes bytes from src (advancing src_step) to dst (dst_step).
void ReferenceCopyRows(const uint8_t* src, ptrdiff_t src_step, uint8_t* dst,
                       ptrdiff_t dst_step, int64_t row_bytes, int32_t rows);

// First differing byte between two buffers as "offset N: got X want Y", or
// the empty string when equal.
std::string FirstDifference(const std::vector<uint8_t>& got,
                            const std::vector<uint8_t>& want);

}  // namespace test
}  // namespace kelo

#endif  // KELO_TESTS_SUPPORT_GUARDED_H_
