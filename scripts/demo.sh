#!/usr/bin/env bash
# Installs what is missing, builds, and runs `kelo demo` into ./kelo-demo.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake --preset release >/dev/null
cmake --build --preset release -j"$(nproc)" --target kelo
build/release/tools/kelo/kelo demo --out kelo-demo "$@"
