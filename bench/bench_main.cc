// Runs every registered row as three benchmarks (ours, libyuv, memcpy) and
// prints a table of the time ratios at the end.
//
// KELO_TARGETS=NAME (or --kelo_targets=NAME) limits the Highway targets the
// library may use to NAME and the ones below it (AVX3, AVX2, SSE4, SSSE3,
// SSE2, EMU128, SCALAR on x86), so that an AVX-512 machine measures the
// 256-bit and 128-bit paths too. libyuv is held to the same vector width:
// below AVX3 its AVX-512 rows are masked off, below AVX2 its AVX2 rows. The
// report names the target the library ran on.
#include <benchmark/benchmark.h>
#include <hwy/targets.h>
#include <libyuv/cpu_id.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <string>
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

// The best target the library will dispatch to.
int64_t BestTarget() {
  int64_t best = 0;
  for (int64_t t : hwy::SupportedAndGeneratedTargets()) {
    if (best == 0 || t < best) best = t;  // lower bits are the better targets
  }
  return best;
}

// Restricts the library (and libyuv) to `name` and the targets below it.
// Returns false for a name this machine cannot run.
bool LimitTargets(const std::string& name) {
  for (int64_t t : hwy::SupportedAndGeneratedTargets()) {
    if (name != hwy::TargetName(t)) continue;
    int64_t allowed = 0;
    for (int64_t u : hwy::SupportedAndGeneratedTargets()) {
      if (u >= t) allowed |= u;  // the same target or a weaker one
    }
    hwy::SetSupportedTargetsForTest(allowed);
#if defined(__x86_64__) || defined(__i386__)
    int mask = ~0;
    if (t > HWY_AVX3) {
      mask &= ~(libyuv::kCpuHasAVX512BW | libyuv::kCpuHasAVX512VL | libyuv::kCpuHasAVX512VNNI |
                libyuv::kCpuHasAVX512VBMI | libyuv::kCpuHasAVX512VBMI2 |
                libyuv::kCpuHasAVX512VBITALG | libyuv::kCpuHasAVX512VPOPCNTDQ);
    }
    if (t > HWY_AVX2) mask &= ~(libyuv::kCpuHasAVX2 | libyuv::kCpuHasAVX | libyuv::kCpuHasFMA3);
    if (t > HWY_SSE4) mask &= ~(libyuv::kCpuHasSSE41 | libyuv::kCpuHasSSE42);
    if (t > HWY_SSSE3) mask &= ~libyuv::kCpuHasSSSE3;
    if (t >= HWY_EMU128) mask = 0;  // no SIMD rows at all (0 keeps libyuv's detection off)
    libyuv::MaskCpuFlags(mask == 0 ? libyuv::kCpuInitialized : mask);
#endif
    return true;
  }
  return false;
}

const char* TargetName() { return hwy::TargetName(BestTarget()); }

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
  std::printf("kelocmn vector target: %s\n", TargetName());
}

}  // namespace

bool Register(Row row) {
  Rows().push_back(std::move(row));
  return true;
}

}  // namespace bench
}  // namespace kelo

int main(int argc, char** argv) {
  std::string targets;
  if (const char* env = std::getenv("KELO_TARGETS")) targets = env;
  int kept = 1;
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], "--kelo_targets=", 15) == 0) {
      targets = argv[i] + 15;
    } else {
      argv[kept++] = argv[i];
    }
  }
  argc = kept;
  if (!targets.empty() && !kelo::bench::LimitTargets(targets)) {
    std::fprintf(stderr, "kelo_bench: target %s is not available here; have:", targets.c_str());
    for (int64_t t : hwy::SupportedAndGeneratedTargets()) std::fprintf(stderr, " %s", hwy::TargetName(t));
    std::fprintf(stderr, "\n");
    return 2;
  }
  std::printf("kelocmn vector target: %s\n", kelo::bench::TargetName());
  benchmark::Initialize(&argc, argv);
  kelo::bench::RegisterAll();
  kelo::bench::RecordingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  kelo::bench::PrintRatios(reporter.times);
  benchmark::Shutdown();
  return 0;
}
