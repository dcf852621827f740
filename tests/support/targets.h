// Vector paths against the scalar definitions on every Highway target the CPU
// supports, over sizes that catch tail handling.
#ifndef KELO_TESTS_SUPPORT_TARGETS_H_
#define KELO_TESTS_SUPPORT_TARGETS_H_

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace kelo {
namespace test {

// Runs body once per target: every target the CPU supports when dispatch is
// dynamic, once otherwise. The argument names the target ("AVX2", "NEON",
// "scalar", ...). Dispatch is restored afterwards.
void ForEachTarget(const std::function<void(const std::string&)>& body);

struct Size2 {
  int32_t w, h;
};

// Fixed awkward sizes (1, odd, around vector multiples of 16/32/64) followed
// by `random_count` random ones up to max_w x max_h.
std::vector<Size2> TestSizes(std::mt19937& rng, int random_count,
                             int32_t max_w = 300, int32_t max_h = 24);

// A row padding in bytes: often 0, otherwise 1 .. 70 (odd values included).
int32_t RandomPad(std::mt19937& rng);

// Seeded generator; the seed is printed by gtest on failure via SCOPED_TRACE
// in the callers that use it.
std::mt19937 MakeRng(uint32_t salt = 0);

}  // namespace test
}  // namespace kelo

#endif  // KELO_TESTS_SUPPORT_TARGETS_H_
