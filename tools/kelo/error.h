// Errors of the kelo program. Every failure ends as one line "kelo: ..." on
// stderr: usage errors exit with 2, run-time errors with 1.
#ifndef KELO_TOOLS_KELO_ERROR_H_
#define KELO_TOOLS_KELO_ERROR_H_

#include <stdexcept>
#include <string>

namespace kelo {
namespace cli {

// The command line is wrong: unknown option, missing or bad value.
class UsageError : public std::runtime_error {
 public:
  explicit UsageError(const std::string& what) : std::runtime_error(what) {}
};

// The command line is fine but the work failed: unreadable file, bad data,
// a library status.
class RunError : public std::runtime_error {
 public:
  explicit RunError(const std::string& what) : std::runtime_error(what) {}
};

}  // namespace cli
}  // namespace kelo

#endif  // KELO_TOOLS_KELO_ERROR_H_
