#!/usr/bin/env bash
# Instructions per pixel on 32-bit ARM NEON beside libyuv NEON, counted under
# qemu-arm on an x86 machine.
#
#   scripts/arm_insn_bench.sh [-n N] [row-regex]
#
# Builds, in build/arm-insn/ (outside git):
#   - libyuv from Debian's source package (apt-get source libyuv; the armhf
#     binary package has no NEON code), cross-built with the armhf flags;
#   - the harness bench/arm/insn_bench.cc against it, twice: with our vector
#     paths and without them (KELO_SIMD=OFF, the peer of rows libyuv has no
#     counterpart for).
# Each row then runs under `qemu-arm -d in_asm,exec,nochain` with N and 2N
# calls (default N=2); the difference divided by N is one call, without
# start-up and frame set-up. Figures are per pixel of the row's larger frame
# (the source of a downscale or crop, the destination of an upscale or
# padding). Missing packages (cross compiler, qemu-user, dpkg-dev) are
# installed with apt-get, and deb-src entries are added when there are none.
set -euo pipefail

n=2
if [[ ${1:-} == -n ]]; then n=$2; shift 2; fi
filter=${1:-.}
root=$(cd "$(dirname "$0")/.." && pwd)
out=$root/build/arm-insn
mkdir -p "$out/logs"
sudo=""
if [[ $(id -u) -ne 0 ]]; then sudo="sudo"; fi
export DEBIAN_FRONTEND=noninteractive

# apt-get, waiting for the dpkg lock when another run holds it.
apt() {
  for attempt in 1 2 3 4 5; do
    if $sudo apt-get -o DPkg::Lock::Timeout=600 "$@"; then return 0; fi
    echo "arm_insn_bench: apt-get $1 failed (attempt $attempt), retrying" >&2
    sleep 20
  done
  return 1
}

missing=()
for p in cmake python3 dpkg-dev g++-12-arm-linux-gnueabihf qemu-user; do
  status=$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null || true)
  [[ "$status" == "install ok installed" ]] || missing+=("$p")
done
updated=0
if [[ ${#missing[@]} -gt 0 ]]; then
  echo "arm_insn_bench: installing ${missing[*]}"
  apt update -q >/dev/null || true
  updated=1
  apt install -y -q --no-install-recommends "${missing[@]}" >/dev/null
fi

# libyuv's source, with deb-src entries beside the deb ones if needed.
yuv_src=$(ls -d "$out"/libyuv-0*/ 2>/dev/null | head -1 || true)
if [[ -z "$yuv_src" ]]; then
  if ! grep -rqs '^Types:.*deb-src\|^deb-src' /etc/apt/sources.list /etc/apt/sources.list.d/; then
    src_list=/etc/apt/sources.list.d/debian-src.sources
    echo "arm_insn_bench: adding deb-src entries ($src_list)"
    if [[ -f /etc/apt/sources.list.d/debian.sources ]]; then
      sed 's/^Types: deb$/Types: deb-src/' /etc/apt/sources.list.d/debian.sources |
        $sudo tee "$src_list" >/dev/null
    else
      src_list=/etc/apt/sources.list.d/debian-src.list
      sed -n 's/^deb /deb-src /p' /etc/apt/sources.list | $sudo tee "$src_list" >/dev/null
    fi
    updated=0
  fi
  [[ $updated == 1 ]] || apt update -q >/dev/null || true
  (cd "$out" && apt-get source -q libyuv >/dev/null)
  yuv_src=$(ls -d "$out"/libyuv-0*/ | head -1)
fi

toolchain=$root/cmake/toolchain-armhf.cmake
jobs=${KELO_JOBS:-2}
if [[ ! -f $out/libyuv-build/libyuv.a ]]; then
  echo "arm_insn_bench: building libyuv for armhf"
  cmake -S "$yuv_src" -B "$out/libyuv-build" -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_DISABLE_FIND_PACKAGE_JPEG=ON >/dev/null
  cmake --build "$out/libyuv-build" -j"$jobs" --target yuv >/dev/null
fi
for simd in ON OFF; do
  cmake -S "$root" -B "$out/kelo-simd-$simd" -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
    -DCMAKE_BUILD_TYPE=Release -DKELO_SIMD=$simd -DKELO_BUILD_TESTS=OFF \
    -DKELO_BUILD_TOOLS=OFF -DKELO_BUILD_BENCH=ON -DKELO_ARM_INSN_LIBYUV="$yuv_src" \
    -DKELO_ARM_INSN_LIBYUV_LIB="$out/libyuv-build/libyuv.a" >/dev/null
  cmake --build "$out/kelo-simd-$simd" -j"$jobs" --target kelo_arm_insn_bench >/dev/null
done
neon=$out/kelo-simd-ON/bench/arm/kelo_arm_insn_bench
scalar=$out/kelo-simd-OFF/bench/arm/kelo_arm_insn_bench
qemu=(qemu-arm -L /usr/arm-linux-gnueabihf)

# Guest instructions of `binary row who calls`.
count() {
  local log=$out/logs/run.log
  "${qemu[@]}" -d in_asm,exec,nochain -D "$log" "$1" "$2" "$3" "$4" </dev/null
  python3 "$root/scripts/arm_insn_count.py" "$log"
  rm -f "$log"
}

# Instructions per pixel of one call.
per_pixel() {
  local a b
  a=$(count "$1" "$2" "$3" "$n")
  b=$(count "$1" "$2" "$3" $((2 * n)))
  python3 -c "print(f'{($b - $a) / $n / $4:.2f}')"
}

printf '%-30s %8s %8s %7s  %s\n' "row (insn/pixel)" "NEON" "peer" "ratio" "peer"
"${qemu[@]}" "$neon" --list | while IFS=$'\t' read -r row pixels peer; do
  [[ $row =~ $filter ]] || continue
  ours=$(per_pixel "$neon" "$row" ours "$pixels")
  if [[ -n "$peer" ]]; then
    theirs=$(per_pixel "$neon" "$row" libyuv "$pixels")
    peer="libyuv NEON: $peer"
  else
    theirs=$(per_pixel "$scalar" "$row" ours "$pixels")
    peer="our scalar build"
  fi
  ratio=$(python3 -c "print(f'{$ours / $theirs:.2f}' if $theirs else '-')")
  printf '%-30s %8s %8s %7s  %s\n' "$row" "$ours" "$theirs" "$ratio" "$peer"
done
