// The progress line: drawn in place, erased at the end, silent when off.
#include <gtest/gtest.h>

#include <cstdio>

#include "tools/kelo/progress.h"

namespace kelo {
namespace test {
namespace {

std::string Capture(bool enabled, int64_t total, int64_t frames) {
  std::FILE* f = std::tmpfile();
  {
    cli::Progress p(f, enabled, "copy", total);
    for (int64_t i = 1; i <= frames; ++i) p.Update(i);
  }
  std::rewind(f);
  std::string out;
  for (int c; (c = std::fgetc(f)) != EOF;) out.push_back(static_cast<char>(c));
  std::fclose(f);
  return out;
}

TEST(Progress, DrawsTheLastFrameAndErasesTheLine) {
  const std::string out = Capture(true, 20, 20);
  const std::string tail = "\rcopy: frame 20 of 20\r" + std::string(20, ' ') +
                           "\r";
  EXPECT_EQ(out.rfind("\rcopy: frame 1 of 20", 0), 0u) << out;
  ASSERT_GE(out.size(), tail.size());
  EXPECT_EQ(out.substr(out.size() - tail.size()), tail);
  EXPECT_EQ(out.find('\n'), std::string::npos);
}

TEST(Progress, UnknownTotalShowsTheCountOnly) {
  EXPECT_NE(Capture(true, -1, 3).find("\rcopy: frame 1"), std::string::npos);
  EXPECT_EQ(Capture(true, -1, 3).find(" of "), std::string::npos);
}

TEST(Progress, DisabledWritesNothing) { EXPECT_EQ(Capture(false, 20, 20), ""); }

}  // namespace
}  // namespace test
}  // namespace kelo
