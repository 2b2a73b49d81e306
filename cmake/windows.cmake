# Toolchain for building the Windows program on Linux with Debian's MinGW-w64.
#
# The compilers with the suffix -posix have threads in the standard library, which GoogleTest needs;
# the plain names may stand for the variant without.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The stack of 64-bit Windows is aligned to 16 bytes, and GCC does not align it further for vector
# registers of 32 and 64 bytes (GCC bug 54412), yet it stores them there with instructions that fault
# on a place that is not aligned. The assembler writes the unaligned forms of these instructions
# instead; on an aligned place they cost the same. No other instruction with such an operand asks for
# alignment, so no kernel is left that could fault.
set(CMAKE_C_FLAGS_INIT "-Wa,-muse-unaligned-vector-move")

# This compiler's library is one whose std::string is compiled anew in every source, where g++ 12 sees
# an overlapping copy that is none (GCC bug 105651).
set(CMAKE_CXX_FLAGS_INIT "${CMAKE_C_FLAGS_INIT} -Wno-restrict")

# One file to copy: no run-time library of the compiler is left to be found.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")

# Tests run under Wine.
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../tools/wine.sh)
