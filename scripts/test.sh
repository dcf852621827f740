#!/usr/bin/env bash
# Installs what is missing, builds and runs the test suite of each preset given
# (default: release). Presets: release debug sanitizers tsan scalar armhf m32.
set -euo pipefail
cd "$(dirname "$0")/.."
presets=("$@")
[[ ${#presets[@]} -eq 0 ]] && presets=(release)
cross=""
for p in "${presets[@]}"; do
  [[ "$p" == armhf || "$p" == m32 ]] && cross="--cross"
done
scripts/setup.sh $cross
jobs=$(nproc)
for p in "${presets[@]}"; do
  echo "=== $p"
  cmake --preset "$p" >/dev/null
  cmake --build --preset "$p" -j"$jobs"
  ctest --preset "$p" -j"$jobs"
done
