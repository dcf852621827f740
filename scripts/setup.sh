#!/usr/bin/env bash
# Installs the Debian packages the build needs, only those that are missing.
#   scripts/setup.sh          compiler, CMake, Highway, libpng, GoogleTest,
#                             Google Benchmark, libyuv, OpenCV imgproc (a
#                             benchmark peer)
#   scripts/setup.sh --cross  also the 32-bit ARM cross compiler, qemu-user
#                             and the 32-bit x86 multilib compiler
#   scripts/setup.sh --fuzz   also clang and its sanitizer/libFuzzer runtimes
set -euo pipefail

packages=(cmake g++ make pkg-config libhwy-dev libpng-dev googletest
          libgtest-dev libbenchmark-dev libyuv-dev libopencv-imgproc-dev)
for arg in "$@"; do
  case "$arg" in
    # g++-12-multilib, not g++-multilib: the latter conflicts with the cross
    # compiler, the versioned package does not.
    --cross) packages+=(g++-12-arm-linux-gnueabihf qemu-user g++-12-multilib) ;;
    # clang 14 and its runtime libraries (libFuzzer, sanitizers).
    --fuzz) packages+=(clang libclang-rt-14-dev) ;;
  esac
done

missing=()
for p in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null || true)
  [[ "$status" == "install ok installed" ]] || missing+=("$p")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

echo "setup: installing ${missing[*]}"
sudo=""
if [[ $(id -u) -ne 0 ]]; then sudo="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
# A mirror caught mid-sync fails part of an update now and then: go on with
# the indexes that did arrive, and try again if the install fails.
for attempt in 1 2 3; do
  $sudo apt-get update -q >/dev/null 2>&1 || true
  if $sudo apt-get install -y -q --no-install-recommends "${missing[@]}" >/dev/null; then
    exit 0
  fi
  echo "setup: apt-get failed (attempt $attempt), retrying" >&2
  sleep $((attempt * 10))
done
echo "setup: could not install ${missing[*]}" >&2
exit 1
