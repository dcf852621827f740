// A benchmark row: one operation of this library beside its closest libyuv
// equivalent and beside memcpy of the same output bytes. bench_main runs all
// rows in one process and prints the ratios.
#ifndef KELO_BENCH_BENCH_H_
#define KELO_BENCH_BENCH_H_

#include <cstddef>
#include <functional>
#include <string>

namespace kelo {
namespace bench {

struct Row {
  std::string name;          // "copy yuv420 1920x1080"
  std::string peer;          // the libyuv call, for the report
  std::function<void()> ours;
  std::function<void()> libyuv;  // may be empty
  size_t output_bytes;       // what memcpy moves for the baseline
  // False when the peer is not libyuv (a scalar build, OpenCV): the row is
  // left out of the geometric mean over libyuv.
  bool libyuv_peer = true;
};

// Called during static initialisation by each family's file.
bool Register(Row row);

}  // namespace bench
}  // namespace kelo

#endif  // KELO_BENCH_BENCH_H_
