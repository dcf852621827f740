#!/usr/bin/env bash
# Builds the fuzzers (clang, libFuzzer, ASan and UBSan), replays the inputs of
# past findings (fuzz/regressions/<fuzzer>/), then runs each fuzzer for
# SECONDS (default 60) on its own corpus, which grows from run to run.
#   scripts/fuzz.sh [SECONDS] [BUILD_DIR]
# Without BUILD_DIR the `fuzz` preset's tree (build/fuzz) is used; with one, that
# directory is configured the same way. Corpora live in BUILD_DIR/fuzz/corpus,
# crash reproducers in BUILD_DIR/fuzz/artifacts. Exits non-zero when any
# fuzzer reports a crash, a sanitizer finding, a leak or a timeout.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
build=${2:-}
if ! [[ "$seconds" =~ ^[0-9]+$ ]] || [[ "$seconds" -eq 0 ]]; then
  echo "usage: scripts/fuzz.sh [SECONDS] [BUILD_DIR]" >&2
  exit 2
fi

scripts/setup.sh --fuzz

if [[ -z "$build" ]]; then
  build=build/fuzz
  cmake --preset fuzz >/dev/null
else
  cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DKELO_FUZZ=ON \
        "-DKELO_HWY_DISABLED=HWY_SSSE3|HWY_SSE4|HWY_AVX3_DL" \
        "-DCMAKE_C_FLAGS_RELWITHDEBINFO=-O1 -gline-tables-only -DNDEBUG" \
        "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O1 -gline-tables-only -DNDEBUG" \
        -DKELO_BUILD_TESTS=OFF -DKELO_BUILD_TOOLS=OFF -DKELO_BUILD_BENCH=OFF \
        >/dev/null
fi
cmake --build "$build" --target fuzzers -j"$(nproc)"

# Any sanitizer report ends the run with a reproducer.
export ASAN_OPTIONS=${ASAN_OPTIONS:-abort_on_error=1:detect_leaks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-halt_on_error=1:print_stacktrace=1}

shopt -s nullglob
fuzzers=("$build"/fuzz/*_fuzz)
if [[ ${#fuzzers[@]} -eq 0 ]]; then
  echo "fuzz: no fuzzers built in $build/fuzz" >&2
  exit 1
fi
failed=()
for exe in "${fuzzers[@]}"; do
  name=$(basename "$exe")
  corpus="$build/fuzz/corpus/$name"
  artifacts="$build/fuzz/artifacts/$name"
  mkdir -p "$corpus" "$artifacts"
  # Inputs of past findings run first, each once.
  regressions=(fuzz/regressions/"$name"/*)
  if [[ ${#regressions[@]} -ne 0 ]] &&
     ! "$exe" -timeout=20 "${regressions[@]}" >"$artifacts/regressions.log" 2>&1; then
    tail -n 40 "$artifacts/regressions.log" >&2
    failed+=("$name (regressions)")
    continue
  fi
  echo "=== $name: $seconds s"
  if ! "$exe" -max_total_time="$seconds" -timeout=20 -print_final_stats=1 \
       -artifact_prefix="$artifacts/" "$corpus" >"$artifacts/last.log" 2>&1; then
    tail -n 40 "$artifacts/last.log" >&2
    failed+=("$name")
    continue
  fi
  grep -E '^(Done|stat::number_of_executed_units|stat::new_units_added)' \
       "$artifacts/last.log" || true
done
if [[ ${#failed[@]} -ne 0 ]]; then
  echo "fuzz: FAILED: ${failed[*]} (reproducers in $build/fuzz/artifacts)" >&2
  exit 1
fi
echo "fuzz: ${#fuzzers[@]} fuzzer(s), $seconds s each, no findings"
