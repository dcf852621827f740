// A one-line frame counter on stderr for long runs: shown only when stderr
// is a terminal and the input has many (or an unknown number of) frames,
// updated in place with carriage returns at most ten times a second and
// erased when done.
#ifndef KELO_TOOLS_KELO_PROGRESS_H_
#define KELO_TOOLS_KELO_PROGRESS_H_

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>

namespace kelo {
namespace cli {

class Progress {
 public:
  // Inputs with fewer frames than this show no counter.
  static constexpr int64_t kMinFrames = 16;

  // Writes to `out` when `enabled`; `total` < 0 means unknown and is not
  // shown.
  Progress(std::FILE* out, bool enabled, std::string label, int64_t total);
  // The usual one: stderr, enabled when it is a terminal and `total` is
  // unknown or at least kMinFrames. A total that is only an estimate
  // (`exact` false) decides whether to show the counter but is not shown.
  static Progress ForStderr(std::string label, int64_t total,
                            bool exact = true);
  ~Progress() { Done(); }
  Progress(Progress&& other) noexcept;
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Frames finished so far.
  void Update(int64_t done);
  // Erases the line if one was drawn; further updates do nothing.
  void Done();

 private:
  std::FILE* out_;
  bool enabled_;
  std::string label_;
  int64_t total_;
  size_t drawn_ = 0;  // characters of the line on screen
  std::chrono::steady_clock::time_point last_{};
};

}  // namespace cli
}  // namespace kelo

#endif  // KELO_TOOLS_KELO_PROGRESS_H_
