#include "tests/support/guarded.h"

#include <cstring>
#include <sstream>

#include "tools/frame/formats.h"

namespace kelo {
namespace test {

GuardedBuffer::GuardedBuffer(size_t body_bytes)
    : mem_(body_bytes + 2 * kGuardBytes, kGuardByte), body_(body_bytes) {}

bool GuardedBuffer::GuardsIntact() const {
  for (size_t i = 0; i < kGuardBytes; ++i) {
    if (mem_[i] != kGuardByte || mem_[kGuardBytes + body_ + i] != kGuardByte) {
      return false;
    }
  }
  return true;
}

int32_t RangeRepresentative(int32_t cs) {
  if (cs <= 99) return KIMGP_CS_YUV420;
  if (cs <= 199) return KIMGP_CS_UYVY;
  if (cs <= 299) return KIMGP_CS_RGB565;
  if (cs <= 499) return KIMGP_CS_RGB888;
  if (cs <= 599) return KIMGP_CS_RGBA8888;
  return KIMGP_CS_YUV420PLANAR16;
}

TestFrame::TestFrame(int32_t cs, int32_t w, int32_t h, int32_t pad,
                     uint8_t fill) {
  // Codes without a layout take the geometry of their range's first code.
  const frame::FormatInfo* f = frame::FindFormat(cs);
  if (f == nullptr) f = frame::FindFormat(RangeRepresentative(cs));
  frame::Describe(f->cs, w, h, 1, pad, &img);
  img.cs = cs;
  const int n = f->planes;
  for (int i = 0; i < n; ++i) {
    buffers_.emplace_back(static_cast<size_t>(frame::PlaneBytes(img, i)));
    memset(buffers_.back().data(), fill, buffers_.back().size());
  }
  Bind();
}

TestFrame::TestFrame(const kimgp_img& layout, int planes, uint8_t fill)
    : img(layout) {
  for (int i = 0; i < planes; ++i) {
    const int64_t bytes = frame::PlaneBytes(img, i);
    buffers_.emplace_back(static_cast<size_t>(bytes > 0 ? bytes : 0));
    memset(buffers_.back().data(), fill, buffers_.back().size());
  }
  Bind();
}

TestFrame::TestFrame(const TestFrame& other)
    : img(other.img), buffers_(other.buffers_) {
  Bind();
}

void TestFrame::Bind() {
  for (int i = 0; i < 4; ++i) img.plane[i] = nullptr;
  for (size_t i = 0; i < buffers_.size(); ++i) {
    img.plane[i] = buffers_[i].data();
  }
}

void TestFrame::FillRandom(std::mt19937& rng) {
  for (GuardedBuffer& b : buffers_) {
    for (size_t i = 0; i < b.size(); ++i) b.data()[i] = static_cast<uint8_t>(rng());
  }
}

bool TestFrame::GuardsIntact() const {
  for (const GuardedBuffer& b : buffers_) {
    if (!b.GuardsIntact()) return false;
  }
  return true;
}

std::vector<uint8_t> TestFrame::Snapshot() const {
  std::vector<uint8_t> out;
  for (const GuardedBuffer& b : buffers_) {
    out.insert(out.end(), b.raw().begin(), b.raw().end());
  }
  return out;
}

void ReferenceCopyRows(const uint8_t* src, ptrdiff_t src_step, uint8_t* dst,
                       ptrdiff_t dst_step, int64_t row_bytes, int32_t rows) {
  for (int32_t r = 0; r < rows && row_bytes > 0; ++r) {
    memcpy(dst + r * dst_step, src + r * src_step, static_cast<size_t>(row_bytes));
  }
}

std::string FirstDifference(const std::vector<uint8_t>& got,
                            const std::vector<uint8_t>& want) {
  std::ostringstream os;
  if (got.size() != want.size()) {
    os << "sizes differ: " << got.size() << " vs " << want.size();
    return os.str();
  }
  for (size_t i = 0; i < got.size(); ++i) {
    if (got[i] != want[i]) {
      os << "offset " << i << ": got " << int{got[i]} << " want " << int{want[i]};
      return os.str();
    }
  }
  return "";
}

}  // namespace test
}  // namespace kelo
