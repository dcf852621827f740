# Highway set-up. kelo_hwy carries the compile definitions every library
# source needs; kelo_hwy_link the run-time library when dispatch is dynamic.
#
# x86-64 native builds compile every x86 target and choose at run time through
# libhwy. Cross builds (32-bit ARM) and 32-bit x86 compile only the target the
# compiler flags select, from the headers alone.
add_library(kelo_hwy INTERFACE)
add_library(kelo_hwy_link INTERFACE)

if(NOT KELO_SIMD)
  target_compile_definitions(kelo_hwy INTERFACE KELO_HAVE_HWY=0)
  message(STATUS "kelocmn: scalar only")
  return()
endif()

find_path(KELO_HWY_INCLUDE hwy/highway.h PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH)
if(NOT KELO_HWY_INCLUDE)
  message(FATAL_ERROR "Highway headers not found (Debian package libhwy-dev)")
endif()

if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64" AND CMAKE_SIZEOF_VOID_P EQUAL 8
   AND NOT CMAKE_CROSSCOMPILING)
  set(KELO_HWY_DYNAMIC ON)
  find_library(KELO_HWY_LIB hwy REQUIRED)
  target_link_libraries(kelo_hwy_link INTERFACE ${KELO_HWY_LIB})
else()
  set(KELO_HWY_DYNAMIC OFF)
endif()

if(CMAKE_CROSSCOMPILING)
  # Only the hwy folder, not the host's /usr/include with its C library.
  set(_hwy_dir ${CMAKE_BINARY_DIR}/hwy-include)
  file(MAKE_DIRECTORY ${_hwy_dir})
  file(CREATE_LINK ${KELO_HWY_INCLUDE}/hwy ${_hwy_dir}/hwy SYMBOLIC)
  target_include_directories(kelo_hwy SYSTEM INTERFACE $<BUILD_INTERFACE:${_hwy_dir}>)
elseif(NOT KELO_HWY_INCLUDE STREQUAL "/usr/include")
  target_include_directories(kelo_hwy SYSTEM INTERFACE $<BUILD_INTERFACE:${KELO_HWY_INCLUDE}>)
endif()

if(KELO_HWY_DYNAMIC)
  # SSE4, AVX2 and AVX-512 with the scalar fallback: SSSE3-only CPUs and the
  # AVX-512 extensions of Ice Lake would only add compile time. The fuzz
  # build also leaves out SSE4 (the tests prove it against the scalar code).
  set(KELO_HWY_DISABLED "HWY_SSSE3|HWY_AVX3_DL" CACHE STRING
      "Highway targets not compiled, as an expression of HWY_* bits")
  target_compile_definitions(kelo_hwy INTERFACE KELO_HAVE_HWY=1 KELO_HWY_DYNAMIC=1
                             "HWY_DISABLED_TARGETS=(${KELO_HWY_DISABLED})")
  message(STATUS "kelocmn: Highway, dynamic dispatch")
else()
  target_compile_definitions(kelo_hwy INTERFACE KELO_HAVE_HWY=1 KELO_HWY_DYNAMIC=0
                             HWY_COMPILE_ONLY_STATIC=1)
  message(STATUS "kelocmn: Highway, static target only")
endif()
