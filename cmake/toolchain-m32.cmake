# 32-bit x86 (an Atom-class CPU: SSE4.2, AES, CLMUL) on an x86-64 host.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)

# The kernel's asm headers serve both word sizes; Debian links them as
# /usr/include/asm only with the unversioned gcc-multilib package, which
# conflicts with the ARM cross compiler, so point at them from the build tree.
set(_m32_inc ${CMAKE_BINARY_DIR}/m32-include)
if(NOT EXISTS ${_m32_inc}/asm)
  file(MAKE_DIRECTORY ${_m32_inc})
  file(CREATE_LINK /usr/include/x86_64-linux-gnu/asm ${_m32_inc}/asm SYMBOLIC)
endif()

set(_m32_flags "-m32 -msse4.2 -mpclmul -maes -isystem ${_m32_inc}")
set(CMAKE_C_FLAGS_INIT "${_m32_flags}")
set(CMAKE_CXX_FLAGS_INIT "${_m32_flags}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-m32")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-m32")
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
