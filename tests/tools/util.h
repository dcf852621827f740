// Helpers for the kelo tests: scratch files and frame bytes.
#ifndef KELO_TESTS_TOOLS_UTIL_H_
#define KELO_TESTS_TOOLS_UTIL_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <functional>
#include <iterator>
#include <ostream>
#include <string>
#include <vector>

#include "tools/kelo/error.h"
#include "tools/kelo/image.h"

namespace kelo {
namespace frame {

// Formats print by name in test parameters.
inline void PrintTo(const FormatInfo* f, std::ostream* os) { *os << f->name; }

}  // namespace frame

namespace test {

// A path in gtest's scratch folder, unique per test.
inline std::string TempPath(const std::string& name) {
  const auto* t = ::testing::UnitTest::GetInstance()->current_test_info();
  std::string id = std::string(t->test_suite_name()) + "_" + t->name();
  for (char& c : id) {
    if (c == '/') c = '_';
  }
  return ::testing::TempDir() + "kelo_" + id + "_" + name;
}

inline void WriteBytes(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string ReadBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

// The frame as a raw file holds it.
inline std::vector<uint8_t> FrameBytes(const cli::Image& im) {
  std::vector<uint8_t> out;
  im.ForEachFileRun(
      [&](const uint8_t* p, size_t n) { out.insert(out.end(), p, p + n); });
  return out;
}

// The RunError message `fn` throws, or "" when it throws none.
inline std::string RunErrorOf(const std::function<void()>& fn) {
  try {
    fn();
  } catch (const cli::RunError& e) {
    return e.what();
  }
  return "";
}

}  // namespace test
}  // namespace kelo

#endif  // KELO_TESTS_TOOLS_UTIL_H_
