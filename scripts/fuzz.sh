#!/usr/bin/env bash
# Builds the fuzzers (clang, libFuzzer, ASan and UBSan), replays the inputs of
# past findings (fuzz/regressions/<fuzzer>/), then runs each fuzzer for
# SECONDS (default 60) on its own corpus, which grows from run to run.
#   scripts/fuzz.sh [SECONDS] [BUILD_DIR]
# Without BUILD_DIR the `fuzz` preset's tree (build/fuzz) is used; with one, that
# directory is configured the same way. Corpora live in BUILD_DIR/fuzz/corpus,
# crash reproducers in BUILD_DIR/fuzz/artifacts. Exits non-zero when any
# fuzzer reports a crash, a sanitizer finding, a leak or a timeout.
#
# The long run: `scripts/fuzz.sh --runs=N [BUILD_DIR]` runs each fuzzer until
# it has made N executions in total, in chunks of at most 500k, and counts them
# in BUILD_DIR/fuzz/long/ledger.tsv (time, fuzzer, commit, executions,
# seconds, corpus units added), so a run that is stopped resumes where its
# last whole chunk ended. FUZZERS="copy_fuzz hdr_fuzz" limits it to some.
set -euo pipefail
cd "$(dirname "$0")/.."
runs=0
if [[ "${1:-}" == --runs=* ]]; then
  runs=${1#--runs=}
  shift
  set -- 1 "$@"
fi
seconds=${1:-60}
build=${2:-}
if ! [[ "$seconds" =~ ^[0-9]+$ ]] || [[ "$seconds" -eq 0 ]] || ! [[ "$runs" =~ ^[0-9]+$ ]]; then
  echo "usage: scripts/fuzz.sh [SECONDS] [BUILD_DIR] | --runs=N [BUILD_DIR]" >&2
  exit 2
fi

scripts/setup.sh --fuzz

# The long run builds at -O2: a slower build, a quarter more executions a
# second on the image fuzzers (whose emulated target is then inlined).
opt=-O1
if [[ "$runs" -gt 0 ]]; then opt=-O2; fi
if [[ -z "$build" ]]; then
  build=build/fuzz
  cmake --preset fuzz >/dev/null
else
  cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DKELO_FUZZ=ON \
        "-DKELO_HWY_DISABLED=HWY_SSSE3|HWY_SSE4|HWY_AVX3_DL" \
        "-DCMAKE_C_FLAGS_RELWITHDEBINFO=$opt -gline-tables-only -DNDEBUG" \
        "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=$opt -gline-tables-only -DNDEBUG" \
        -DKELO_BUILD_TESTS=OFF -DKELO_BUILD_TOOLS=OFF -DKELO_BUILD_BENCH=OFF \
        >/dev/null
fi
cmake --build "$build" --target fuzzers -j"$(nproc)"

# Any sanitizer report ends the run with a reproducer.
export ASAN_OPTIONS=${ASAN_OPTIONS:-abort_on_error=1:detect_leaks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-halt_on_error=1:print_stacktrace=1}

shopt -s nullglob
fuzzers=("$build"/fuzz/*_fuzz)
if [[ -n "${FUZZERS:-}" ]]; then
  fuzzers=()
  for name in $FUZZERS; do fuzzers+=("$build/fuzz/$name"); done
fi
ledger="$build/fuzz/long/ledger.tsv"
commit=$(git describe --always --dirty 2>/dev/null || echo unknown)
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
  if [[ "$runs" -gt 0 ]]; then
    mkdir -p "$(dirname "$ledger")"
    touch "$ledger"
    made=$(awk -F'\t' -v n="$name" '$2 == n { s += $4 } END { print s + 0 }' "$ledger")
    while [[ "$made" -lt "$runs" ]]; do
      chunk=$((runs - made < 500000 ? runs - made : 500000))
      start=$(date +%s)
      if ! "$exe" -runs="$chunk" -timeout=20 -print_final_stats=1 \
           -artifact_prefix="$artifacts/" "$corpus" >"$artifacts/last.log" 2>&1; then
        tail -n 40 "$artifacts/last.log" >&2
        failed+=("$name")
        break
      fi
      executed=$(awk '/^stat::number_of_executed_units/ { print $2 }' "$artifacts/last.log")
      added=$(awk '/^stat::new_units_added/ { print $2 }' "$artifacts/last.log")
      printf '%s\t%s\t%s\t%s\t%s\t%s\n' "$(date -u +%FT%TZ)" "$name" "$commit" \
             "$executed" "$(($(date +%s) - start))" "$added" >>"$ledger"
      made=$((made + executed))
      echo "=== $name: $made of $runs executions"
    done
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
if [[ "$runs" -gt 0 ]]; then
  echo "fuzz: ${#fuzzers[@]} fuzzer(s), $runs executions each, no findings"
else
  echo "fuzz: ${#fuzzers[@]} fuzzer(s), $seconds s each, no findings"
fi
