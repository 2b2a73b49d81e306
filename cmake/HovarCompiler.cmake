# Compiler settings shared by every target, gathered in the interface target `hovar_compiler`.
add_library(hovar_compiler INTERFACE)
target_compile_features(hovar_compiler INTERFACE cxx_std_20)
target_compile_options(
  hovar_compiler
  INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Werror
            # A fused multiply-add rounds once where two operations round twice: results would
            # depend on the processor.
            -ffp-contract=off
            # Square roots in vector registers; nobody reads errno.
            -fno-math-errno)
if(HOVAR_SANITIZE)
  target_compile_options(
    hovar_compiler INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all
                             -fno-omit-frame-pointer)
  target_link_options(hovar_compiler INTERFACE -fsanitize=address,undefined)
else()
  include(HovarHardening)
  target_link_libraries(hovar_compiler INTERFACE hovar_hardening)
endif()
if(HOVAR_STATIC)
  # A hardened one is linked as -static-pie.
  target_link_options(hovar_compiler INTERFACE
                      $<$<NOT:$<CONFIG:Release,RelWithDebInfo,MinSizeRel>>:-static>)
endif()
if(HOVAR_BUILD_FUZZERS)
  # Lets a fuzzer see which branches an input takes.
  target_compile_options(hovar_compiler INTERFACE -fsanitize=fuzzer-no-link)
  target_link_options(hovar_compiler INTERFACE -fsanitize=fuzzer-no-link)
endif()
# For targets that use std::string. g++ 12 sees an overlapping copy inside it where a literal stands
# before a `+` (GCC bug 105651); the warning is right nowhere there and stays on everywhere else.
add_library(hovar_standard_strings INTERFACE)
target_compile_options(
  hovar_standard_strings
  INTERFACE $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
