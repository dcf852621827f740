#!/usr/bin/env bash
# Regenerates tests/fixtures/hdr/: small 10-bit HDR frames (BT.2020
# primaries, limited range, 4:2:0) with PQ and HLG transfer, made from
# ffmpeg's test sources brought to those characteristics with zscale, as
# 420p10 Y4M files.
#
#   pq_bars.y4m    testsrc2, SDR white placed at 4000 nits, PQ, 2 frames
#   pq_ramp.y4m    horizontal grey ramp black to white at 1000 nits, PQ
#   pq_bright.y4m  the ramp with white at 2000 nits, PQ
#   pq_dim.y4m     the ramp with white at 100 nits, PQ
#   hlg_bars.y4m   testsrc2, HLG, 2 frames
#   hlg_ramp.y4m   the grey ramp, HLG
#   hlg_bars.p010  hlg_bars.y4m's first frame as raw P010LE (160x90)
#
# Needs ffmpeg with zscale (`apt-get install ffmpeg`). Only developers run
# it; the tests read the committed files.
set -euo pipefail

here=$(cd "$(dirname "$0")/.." && pwd)
out="$here/tests/fixtures/hdr"
mkdir -p "$out"
command -v ffmpeg >/dev/null || {
  echo "make_hdr_fixtures: needs ffmpeg (apt-get install ffmpeg)" >&2
  exit 1
}

size=160x90
bars="testsrc2=size=$size:rate=25,format=yuv444p"
ramp="nullsrc=size=$size:rate=25,format=yuv444p,geq=lum='16+219*X/(W-1)':cb=128:cr=128"

# SDR BT.709 in, linear light with SDR white at NPL nits, then BT.2020 and
# the HDR transfer, 10-bit limited-range 4:2:0.
make() {  # name source frames transfer npl
  local name=$1 src=$2 frames=$3 transfer=$4 npl=$5
  ffmpeg -v error -y -f lavfi -i "$src" -frames:v "$frames" -vf \
    "zscale=tin=bt709:min=bt709:pin=bt709:rin=tv:t=linear:p=bt709:npl=$npl,format=gbrpf32le,zscale=p=bt2020:t=$transfer:m=bt2020nc:r=tv:npl=$npl:dither=none,format=yuv420p10le" \
    -strict -1 -f yuv4mpegpipe "$out/$name.y4m"
}

make pq_bars "$bars" 2 smpte2084 4000
make pq_ramp "$ramp" 1 smpte2084 1000
make pq_bright "$ramp" 1 smpte2084 2000
make pq_dim "$ramp" 1 smpte2084 100
make hlg_bars "$bars" 2 arib-std-b67 1000
make hlg_ramp "$ramp" 1 arib-std-b67 1000
ffmpeg -v error -y -i "$out/hlg_bars.y4m" -frames:v 1 -pix_fmt p010le -f rawvideo "$out/hlg_bars.p010"
ls -l "$out"
