#include "tools/kelo/progress.h"

#include <unistd.h>

#include <utility>

namespace kelo {
namespace cli {

Progress::Progress(std::FILE* out, bool enabled, std::string label,
                   int64_t total)
    : out_(out), enabled_(enabled), label_(std::move(label)), total_(total) {}

Progress Progress::ForStderr(std::string label, int64_t total, bool exact) {
  const bool many = total < 0 || total >= kMinFrames;
  return Progress(stderr, many && isatty(STDERR_FILENO) == 1,
                  std::move(label), exact ? total : -1);
}

Progress::Progress(Progress&& other) noexcept
    : out_(other.out_),
      enabled_(other.enabled_),
      label_(std::move(other.label_)),
      total_(other.total_),
      drawn_(other.drawn_),
      last_(other.last_) {
  other.enabled_ = false;
  other.drawn_ = 0;
}

void Progress::Update(int64_t done) {
  if (!enabled_) return;
  const auto now = std::chrono::steady_clock::now();
  const bool last = total_ >= 0 && done >= total_;
  if (drawn_ > 0 && !last && now - last_ < std::chrono::milliseconds(100)) {
    return;
  }
  last_ = now;
  std::string line = label_ + ": frame " + std::to_string(done);
  if (total_ >= 0) line += " of " + std::to_string(total_);
  // Blank out whatever is left of a longer previous line.
  const size_t len = line.size();
  if (len < drawn_) line.append(drawn_ - len, ' ');
  std::fprintf(out_, "\r%s", line.c_str());
  std::fflush(out_);
  drawn_ = len > drawn_ ? len : drawn_;
}

void Progress::Done() {
  if (enabled_ && drawn_ > 0) {
    std::fprintf(out_, "\r%*s\r", static_cast<int>(drawn_), "");
    std::fflush(out_);
  }
  enabled_ = false;
  drawn_ = 0;
}

}  // namespace cli
}  // namespace kelo
