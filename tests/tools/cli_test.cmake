# Runs the kelo binary: cmake -DKELO=path -DCASE=name -DWORK=dir -P this.
# Each CASE is a group of runs; the first failed expectation stops it.
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})

# kelo(<args as one string>) runs kelo in WORK, leaving rc, out, err set.
macro(kelo argstring)
  separate_arguments(_args UNIX_COMMAND "${argstring}")
  execute_process(COMMAND ${KELO} ${_args} WORKING_DIRECTORY ${WORK}
                  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  set(last "kelo ${argstring}")
endmacro()

function(fail why)
  message(FATAL_ERROR
    "${last}: ${why}\nexit ${rc}\nstdout: ${out}\nstderr: ${err}")
endfunction()

macro(expect_ok argstring)
  kelo("${argstring}")
  if(NOT rc EQUAL 0 OR NOT err STREQUAL "")
    fail("expected success and a silent stderr")
  endif()
endmacro()

# Exit status `code` and exactly one stderr line, "kelo: ...".
macro(expect_error code argstring)
  kelo("${argstring}")
  if(NOT rc EQUAL ${code})
    fail("expected exit ${code}")
  endif()
  if(NOT err MATCHES "^kelo: [^\n]+\n$")
    fail("expected one line 'kelo: ...' on stderr")
  endif()
endmacro()

macro(expect_same a b)
  execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${WORK}/${a}
                          ${WORK}/${b} RESULT_VARIABLE same)
  if(NOT same EQUAL 0)
    fail("${a} and ${b} differ")
  endif()
endmacro()

macro(expect_files)
  foreach(f ${ARGN})
    if(NOT EXISTS ${WORK}/${f})
      fail("${f} was not written")
    endif()
  endforeach()
endmacro()

if(CASE STREQUAL "demo")
  expect_ok("demo --out shots --size 96x54")
  file(GLOB pngs ${WORK}/shots/*.png)
  list(LENGTH pngs n)
  string(REGEX MATCHALL "[^\n]+\n" lines "${out}")
  list(LENGTH lines nlines)
  if(n LESS 3 OR NOT n EQUAL nlines)
    fail("${n} PNG files for ${nlines} lines")
  endif()
  foreach(line ${lines})
    string(REGEX MATCH "^[^ ]+" path "${line}")
    expect_files(${path})
    expect_ok("info ${path}")
    # Quarter turns and resizes have sizes of their own.
    if(NOT path MATCHES "/(rotate|resize)-" AND NOT out MATCHES "size    96x54")
      fail("${path} is not 96x54")
    endif()
    if(path MATCHES "-90[lr]" AND NOT out MATCHES "size    54x96")
      fail("${path} is not 54x96")
    endif()
  endforeach()

elseif(CASE STREQUAL "y4m_roundtrip")
  # Copies of Y4M files are byte for byte the input, whatever the padding.
  foreach(fmt yuv420 yuv422n yuv444 yuv400)
    expect_ok("copy --format ${fmt} --size 33x17 --frames 3 ${fmt}.y4m")
    expect_ok("copy ${fmt}.y4m ${fmt}-copy.y4m --pad 5")
    expect_same(${fmt}.y4m ${fmt}-copy.y4m)
  endforeach()
  expect_ok("info yuv422n.y4m")
  if(NOT out MATCHES "format  yuv422n" OR NOT out MATCHES "frames  3")
    fail("info does not show yuv422n with 3 frames")
  endif()
  file(WRITE ${WORK}/tags.y4m
    "YUV4MPEG2 W2 H2 F30000:1001 It A0:0 C420paldv XCOLORRANGE=LIMITED\n"
    "FRAME\nabcdefFRAME\nghijkl")
  expect_ok("copy tags.y4m tags-copy.y4m")
  expect_same(tags.y4m tags-copy.y4m)

elseif(CASE STREQUAL "raw_roundtrip")
  # Raw output is tight whatever the destination padding; nv21 needs its
  # chroma plane described in bytes to come through whole.
  foreach(fmt_pad nv21:7 nv12:6 yv12:3 yuv422w:1 rgb565:2 t16x16:0)
    string(REPLACE ":" ";" fmt_pad ${fmt_pad})
    list(GET fmt_pad 0 fmt)
    list(GET fmt_pad 1 pad)
    set(shape "--format ${fmt} --size 15x9")
    expect_ok("copy ${shape} --frames 2 a.${fmt}")
    expect_ok("copy a.${fmt} b.${fmt} ${shape} --pad ${pad}")
    expect_same(a.${fmt} b.${fmt})
  endforeach()
  expect_ok("info a.nv21 --format nv21 --size 15x9")
  if(NOT out MATCHES "frames  2")
    fail("info does not count 2 frames")
  endif()

elseif(CASE STREQUAL "png_output")
  expect_ok("copy --format rgb565 --size 20x10 one.png")
  expect_ok("info one.png")
  if(NOT out MATCHES "format  rgb888" OR NOT out MATCHES "size    20x10")
    fail("one.png is not a 20x10 RGB image")
  endif()
  expect_ok("copy --frames 2 --size 8x8 many.png")
  expect_files(many-0001.png many-0002.png)
  if(EXISTS ${WORK}/many.png)
    fail("many.png written for two frames")
  endif()

elseif(CASE STREQUAL "probe_fourcc")
  expect_ok("fourcc avc1 85 tx3g Avc1")
  if(NOT out MATCHES "avc1 +104  video\n85 +305  audio\ntx3g +3006  subtitle\nAvc1 +3199  no match\n")
    fail("unexpected fourcc output")
  endif()
  expect_error(2 "fourcc abcde")
  # The rule's key frames in a fixture whose encoder agrees with it.
  expect_ok("probe ${FIXTURES}/video/vp8_128x96.ivf")
  if(NOT out MATCHES "frames 24, key frames 3, GOP lengths 8 8 8\n$")
    fail("unexpected probe summary")
  endif()
  expect_ok("probe ${FIXTURES}/video/mpeg4_128x96.m4v --codec mpeg4")
  expect_error(2 "probe ${FIXTURES}/video/mpeg4_128x96.m4v --codec vc1")
  expect_error(1 "probe ${FIXTURES}/video/vp8_128x96.packets")

elseif(CASE STREQUAL "convert")
  # YUV420 -> NV12 -> YUV420 moves samples only: the raw files match.
  expect_ok("copy a.yuv --size 66x34")
  expect_ok("convert a.yuv b.nv12 --from yuv420 --size 66x34 --to nv12")
  expect_ok("convert b.nv12 c.yuv --from nv12 --size 66x34 --to yuv420")
  expect_same(a.yuv c.yuv)
  expect_ok("convert p.png --size 64x32 --to rgba8888")
  expect_ok("convert q.png --size 64x32 --format yuv420 --to rgba8888 --std 709")
  expect_error(1 "convert r.png --format yv12 --size 16x16 --to yuv420")
  if(NOT err MATCHES "yv12 to yuv420 is not supported")
    fail("expected the refused pair in the message")
  endif()
  if(EXISTS ${WORK}/r.png)
    fail("a refused conversion left a file behind")
  endif()
  expect_error(2 "convert s.png --to nosuch")
  expect_error(2 "convert s.png --to rgba8888 --std 2020")

elseif(CASE STREQUAL "geometry")
  # A quarter turn left then right, and a mirror twice, give the frame back.
  expect_ok("copy a.yuv --size 66x34")
  expect_ok("rotate a.yuv b.yuv --format yuv420 --size 66x34 --rotate 90l")
  expect_ok("rotate b.yuv c.yuv --format yuv420 --size 34x66 --rotate 90r")
  expect_same(a.yuv c.yuv)
  expect_ok("rotate a.yuv d.yuv --format yuv420 --size 66x34 --rotate hori")
  expect_ok("rotate d.yuv e.yuv --format yuv420 --size 66x34 --rotate hori")
  expect_same(a.yuv e.yuv)
  expect_ok("rotate r.y4m --size 66x34 --rotate 90r")
  expect_ok("info r.y4m")
  if(NOT out MATCHES "size    34x66")
    fail("a quarter turn did not exchange width and height")
  endif()
  expect_ok("resize s.y4m --in-size 66x34 --size 132x68 --mode mod1")
  expect_ok("info s.y4m")
  if(NOT out MATCHES "size    132x68")
    fail("resize did not give 132x68")
  endif()
  expect_ok("resize s.y4m t.yuv --size 66x34")
  expect_ok("resize a.yuv u.yuv --format yuv420 --in-size 66x34 --size 66x34")
  expect_same(a.yuv u.yuv)
  expect_error(2 "rotate x.png --rotate 45")
  expect_error(2 "rotate x.png")
  expect_error(2 "rotate x.png --format yuv422n --rotate 90l")
  expect_error(1 "rotate x.png --format yuyv --rotate 180")
  expect_error(2 "resize x.png")
  expect_error(2 "resize x.png --size 8x8 --mode mod2")
  expect_error(1 "resize x.png --format p010le --in-size 64x32 --size 48x16")
  if(EXISTS ${WORK}/x.png)
    fail("a refused operation left a file behind")
  endif()

elseif(CASE STREQUAL "usage_errors")
  foreach(args
      "frob" "--frob" "copy" "copy a b c" "copy --bogus o.yuv"
      "copy --size" "copy --size 0x5 o.yuv" "copy --size abc o.yuv"
      "copy --size 99999x99999 o.yuv" "copy --size 5x o.yuv"
      "copy --format rgba8888 --size 16384x16384 o.yuv"
      "copy --pad 5000 o.yuv" "copy --pad -1 o.yuv" "copy --format nope o.yuv"
      "copy in.yuv o.yuv" "copy --frames 0 o.yuv" "copy --pad=x o.yuv"
      "copy --format t16x16 --pad 4 o.yuv" "copy --format nv12 --pad 7 o.yuv"
      "info" "info --formats x"
      "help nope" "demo extra")
    expect_error(2 "${args}")
  endforeach()
  expect_error(2 "")

elseif(CASE STREQUAL "runtime_errors")
  file(WRITE ${WORK}/bad.png "not a png")
  file(WRITE ${WORK}/short.yuv "0123456789")
  file(WRITE ${WORK}/cut.y4m "YUV4MPEG2 W2 H2\nFRAME\nabc")
  file(WRITE ${WORK}/bad.y4m "YUV4MPEG2 W2 Hx\n")
  file(MAKE_DIRECTORY ${WORK}/dir)
  foreach(args
      "copy missing.y4m o.y4m" "copy dir o.y4m --in-type y4m"
      "copy bad.png o.png" "copy cut.y4m o.y4m" "copy bad.y4m o.y4m"
      "info cut.y4m" "copy short.yuv o.yuv --format yuv420 --size 4x4"
      "copy --format yuv444p16 o.yuv" "copy --format nv12 o.y4m"
      "copy no/such/dir/o.yuv" "demo --out bad.png/x")
    expect_error(1 "${args}")
  endforeach()
  expect_error(1 "copy short.yuv o.yuv --format yuv420 --size 4x4")
  if(NOT err MATCHES "partial frame of 10 bytes")
    fail("the partial frame is not described")
  endif()
  expect_error(1 "copy --format rgba8888 --size 8x8 o.yuv")
  set(want "kelo: kimgp_cpy: format rgba8888 not supported (status -3)\n")
  if(NOT err STREQUAL want)
    fail("unexpected message")
  endif()
  if(EXISTS ${WORK}/o.yuv)
    fail("an output was left behind by a refused copy")
  endif()

else()
  message(FATAL_ERROR "unknown CASE ${CASE}")
endif()
