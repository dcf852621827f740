#!/usr/bin/env bash
# Regenerates tests/fixtures/video/: short elementary streams from real
# encoders (ffmpeg's test pattern, a few dozen frames, short GOPs, tiny
# sizes) and, per stream, a manifest of the packets as ffprobe lists them.
#
# Needs ffmpeg and ffprobe (`apt-get install ffmpeg`). Only developers run it;
# the tests read the committed files. Single-threaded, bit-exact encoding so
# that a rerun reproduces the same bytes with the same ffmpeg build.
#
# Manifest format (NAME.packets): '#' comment lines, then one line per packet
#   OFFSET SIZE KEY
# KEY is 1 when the encoder flagged the packet as a key frame. SIZE is the
# encoder's packet size. OFFSET is where the packet starts in the file for the
# elementary streams (.264 .265 .m4v .263) and for the .bin files (codecs
# without start codes or a container of their own, packets back to back);
# for FLV it is the offset of the packet's tag (the payload follows the
# 11-byte tag header and the 1-byte frame-type/codec byte), for IVF that of
# its 12-byte frame header.
set -euo pipefail

here=$(cd "$(dirname "$0")/.." && pwd)
out="$here/tests/fixtures/video"
mkdir -p "$out"
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

command -v ffmpeg >/dev/null && command -v ffprobe >/dev/null || {
  echo "make_video_fixtures: needs ffmpeg and ffprobe (apt-get install ffmpeg)" >&2
  exit 1
}

ff=(ffmpeg -hide_banner -loglevel error -nostdin -y -threads 1)
det=(-fflags +bitexact -flags:v +bitexact-global_header -threads 1 -an -map_metadata -1)

# src SIZE FRAMES: the test pattern as lavfi input arguments.
src() { echo "-f lavfi -i testsrc=size=$1:rate=25 -frames:v $2"; }

# packets FILE FIELDS: ffprobe's video packets of FILE, one a line, with the
# requested fields (a subset of pos,size,flags) space-separated in ffprobe's
# own order: size, pos, flags.
packets() {
  ffprobe -hide_banner -loglevel error -select_streams v:0 \
    -show_entries "packet=$2" -of csv=p=0 "$1" | tr ',' ' ' |
    sed -E 's/ K_?$/ 1/; s/ _+$/ 0/'
}

# encode NAME FORMAT SIZE FRAMES ENCODER-ARGS...: encodes into NUT, which
# keeps the encoder's packets and key flags, then copies the packets
# unchanged into FORMAT as NAME. In the elementary-stream formats the packets
# lie back to back, so the offsets are the running sum of the encoder's
# sizes (ffprobe's own re-split of such a stream may place a 4-byte start
# code's first zero in the previous packet). In FLV and IVF the offsets are
# ffprobe's packet positions there, and the sizes must agree with NUT's.
encode() {
  local name=$1 format=$2 size=$3 frames=$4
  shift 4
  "${ff[@]}" $(src "$size" "$frames") "$@" "${det[@]}" -f nut "$tmp/enc.nut"
  "${ff[@]}" -i "$tmp/enc.nut" -c:v copy "${det[@]}" -f "$format" "$out/$name"
  packets "$tmp/enc.nut" size,flags >"$tmp/enc.txt"
  {
    echo "# $name: offset size key, one packet a line"
    case $format in
      flv|ivf)
        packets "$out/$name" pos,size >"$tmp/out.txt"
        [[ $(wc -l <"$tmp/out.txt") == $(wc -l <"$tmp/enc.txt") ]] || {
          echo "$name: packet counts differ" >&2; exit 1; }
        paste -d' ' "$tmp/out.txt" "$tmp/enc.txt" | awk -v name="$name" '
          $1 != $3 { print name ": packet " NR " size " $1 " vs " $3 > "/dev/stderr"; exit 1 }
          { print $2, $1, $4 }' ;;
      *)
        awk 'BEGIN { off = 0 } { print off, $1, $2; off += $1 }' "$tmp/enc.txt"
        [[ $(awk '{ s += $1 } END { print s }' "$tmp/enc.txt") == \
           $(stat -c %s "$out/$name") ]] || {
          echo "$name: packets do not fill the file" >&2; exit 1; } ;;
    esac
  } >"$out/${name%.*}.packets"
}

# H.264 High profile, 4:2:0, height not a multiple of 16 (frame cropping).
encode h264_high_160x90.264 h264 160x90 24 -c:v libx264 -profile:v high \
  -pix_fmt yuv420p -preset veryfast -g 8 -bf 2 \
  -x264-params threads=1:sliced-threads=0:scenecut=0

# H.264 High 4:4:4 with open GOPs: after the first IDR, key frames are I
# slices announced by recovery-point SEI (nal type 1, not 5); width and
# height not multiples of 16.
encode h264_444_opengop_120x72.264 h264 120x72 24 -c:v libx264 \
  -profile:v high444 -pix_fmt yuv444p -preset veryfast -g 8 -bf 2 \
  -x264-params threads=1:sliced-threads=0:scenecut=0:open-gop=1

# HEVC with x265's default open GOPs (CRA pictures after the first IDR).
# The NUT muxer complains about the B-frames' timestamps; the packets are
# unaffected (the size check above holds).
encode hevc_128x96.265 hevc 128x96 24 -c:v libx265 -pix_fmt yuv420p \
  -preset veryfast \
  -x265-params log-level=none:pools=none:frame-threads=1:wpp=0:keyint=8:min-keyint=8:scenecut=0:bframes=2

# MPEG-4 Part 2 with B-VOPs.
encode mpeg4_128x96.m4v m4v 128x96 24 -c:v mpeg4 -g 8 -bf 1 -qscale:v 8

# H.263 baseline at QCIF, and H.263+ (extended picture type) at a custom size.
encode h263_176x144.263 h263 176x144 20 -c:v h263 -g 8 -qscale:v 10
encode h263p_160x96.263 h263 160x96 20 -c:v h263p -g 8 -qscale:v 10

# Sorenson H.263 in FLV: one stream whose width needs the 16-bit size field,
# one at a standard size (picture-size code 4, SQCIF).
encode flv1_272x32.flv flv 272x32 20 -c:v flv -g 8 -qscale:v 10
encode flv1_128x96.flv flv 128x96 12 -c:v flv -g 8 -qscale:v 12

# VP8 and VP9 in IVF, with alt-ref frames (VP9: superframes).
encode vp8_128x96.ivf ivf 128x96 24 -c:v libvpx -g 8 -deadline good \
  -cpu-used 4 -b:v 200k -auto-alt-ref 1 -lag-in-frames 8
encode vp9_128x96.ivf ivf 128x96 24 -c:v libvpx-vp9 -g 8 -deadline good \
  -cpu-used 4 -row-mt 0 -tile-columns 0 -b:v 200k -auto-alt-ref 1 \
  -lag-in-frames 8

# Codecs without start codes: the packets back to back (ffmpeg's raw muxer
# writes them unchanged).
raw_packets() {
  encode "$1.bin" rawvideo 128x96 16 -c:v "$2" -g 8 -qscale:v 8
}
raw_packets wmv1_128x96 wmv1
raw_packets wmv2_128x96 wmv2
raw_packets msmpeg4v3_128x96 msmpeg4

du -cb "$out"/* | tail -1
