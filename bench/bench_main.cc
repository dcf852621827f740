// Runs every registered row as three benchmarks (ours, libyuv, memcpy) and
// prints a table of the time ratios at the end.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <vector>

#include "bench/bench.h"

namespace kelo {
namespace bench {
namespace {

std::vector<Row>& Rows() {
  static std::vector<Row> rows;
  return rows;
}

// Remembers the time per iteration of each benchmark by name: the median of
// its repetitions when it was repeated, else its single run. Repeated,
// interleaved runs (--benchmark_repetitions=N
// --benchmark_enable_random_interleaving=true) give the steadiest ratios on a
// shared machine, where one run of a memory-bound row can vary by 15%.
class RecordingReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& r : runs) {
      const std::string& name = r.run_name.function_name;
      if (r.run_type == Run::RT_Aggregate && r.aggregate_name == "median") {
        times[name] = r.GetAdjustedRealTime();
        medians[name] = true;
      } else if (r.run_type == Run::RT_Iteration && r.iterations > 0 && !medians[name]) {
        times[name] = r.GetAdjustedRealTime();
      }
    }
    ConsoleReporter::ReportRuns(runs);
  }
  std::map<std::string, double> times;  // in the benchmark's time unit
  std::map<std::string, bool> medians;  // times[name] is a median
};

struct Buffers {
  std::vector<uint8_t> a, b;
};

void RegisterAll() {
  for (const Row& row : Rows()) {
    benchmark::RegisterBenchmark((row.name + "/kelo").c_str(),
                                 [&row](benchmark::State& st) {
                                   for (auto _ : st) row.ours();
                                   st.SetBytesProcessed(int64_t(st.iterations()) * row.output_bytes);
                                 })->Unit(benchmark::kMicrosecond)->UseRealTime();
    if (row.libyuv) {
      benchmark::RegisterBenchmark((row.name + "/libyuv").c_str(),
                                   [&row](benchmark::State& st) {
                                     for (auto _ : st) row.libyuv();
                                     st.SetBytesProcessed(int64_t(st.iterations()) * row.output_bytes);
                                   })->Unit(benchmark::kMicrosecond)->UseRealTime();
    }
    auto bufs = std::make_shared<Buffers>();
    benchmark::RegisterBenchmark((row.name + "/memcpy").c_str(),
                                 [&row, bufs](benchmark::State& st) {
                                   bufs->a.assign(row.output_bytes, 1);
                                   bufs->b.assign(row.output_bytes, 2);
                                   for (auto _ : st) {
                                     memcpy(bufs->b.data(), bufs->a.data(), row.output_bytes);
                                     benchmark::ClobberMemory();
                                   }
                                   st.SetBytesProcessed(int64_t(st.iterations()) * row.output_bytes);
                                 })->Unit(benchmark::kMicrosecond)->UseRealTime();
  }
}

void PrintRatios(const std::map<std::string, double>& t) {
  std::printf("\n%-36s %10s %10s %10s %12s %12s  %s\n", "row", "kelo us", "libyuv us",
              "memcpy us", "libyuv/kelo", "kelo/memcpy", "peer");
  double log_sum = 0;
  int n = 0;
  for (const Row& row : Rows()) {
    auto get = [&](const char* who) {
      auto it = t.find(row.name + "/" + who);
      return it == t.end() ? NAN : it->second;
    };
    const double k = get("kelo"), y = get("libyuv"), m = get("memcpy");
    if (std::isnan(k)) continue;  // filtered out
    std::printf("%-36s %10.1f %10.1f %10.1f %12.2f %12.2f  %s\n", row.name.c_str(), k, y,
                m, y / k, k / m, row.peer.c_str());
    if (!std::isnan(y) && row.libyuv_peer) {
      log_sum += std::log(y / k);
      ++n;
    }
  }
  if (n > 0) std::printf("geometric mean of libyuv/kelo over %d rows: %.2f\n", n, std::exp(log_sum / n));
}

}  // namespace

bool Register(Row row) {
  Rows().push_back(std::move(row));
  return true;
}

}  // namespace bench
}  // namespace kelo

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  kelo::bench::RegisterAll();
  kelo::bench::RecordingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  kelo::bench::PrintRatios(reporter.times);
  benchmark::Shutdown();
  return 0;
}
