# What makes a fault of memory end the process instead of serving whoever provoked it: gathered in the
# interface target `hovar_hardening`, which `hovar_compiler` hands to every target. For optimised builds
# only; the others look for faults, and C's libraries check sizes in optimised code alone.
# tools/try_packages.sh shows that the packages have it.
include(CheckCXXCompilerFlag)

add_library(hovar_hardening INTERFACE)

# hovar_harden(WHAT CONDITION FLAG...): WHAT is compile or link, CONDITION a generator expression.
function(hovar_harden what condition)
  set(hardened "$<AND:${condition},$<CONFIG:Release,RelWithDebInfo,MinSizeRel>>")
  foreach(flag ${ARGN})
    cmake_language(CALL "target_${what}_options" hovar_hardening INTERFACE "$<${hardened}:${flag}>")
  endforeach()
endfunction()

set(stackFlags -fstack-protector-strong)
if(NOT WIN32)
  # On Windows every large frame is probed page by page anyway, and GCC fails at this flag (bug 90458).
  list(APPEND stackFlags -fstack-clash-protection)
endif()
foreach(flag ${stackFlags})
  # A compiler for another processor may lack it.
  string(MAKE_C_IDENTIFIER "HOVAR_HAS${flag}" isKnown)
  set(CMAKE_REQUIRED_FLAGS -Werror)
  set(CMAKE_REQUIRED_LINK_OPTIONS ${flag})
  check_cxx_compiler_flag(${flag} ${isKnown})
  unset(CMAKE_REQUIRED_FLAGS)
  unset(CMAKE_REQUIRED_LINK_OPTIONS)
  if(${isKnown})
    hovar_harden(compile 1 ${flag})
    hovar_harden(link 1 ${flag})
  endif()
endforeach()

# Glibc warns of this where a target of an optimised build is not optimised itself: such a target has the
# property HOVAR_NOT_OPTIMISED. Some systems' compilers define it by themselves, at another level.
set(isOptimised "$<NOT:$<BOOL:$<TARGET_PROPERTY:HOVAR_NOT_OPTIMISED>>>")
hovar_harden(compile ${isOptimised} -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
hovar_harden(compile 1 -D_GLIBCXX_ASSERTIONS)

# For Windows the linker does the like by itself.
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
  # Addresses that nobody can know in advance, and tables of the dynamic linker that nobody can change.
  hovar_harden(compile "$<NOT:$<STREQUAL:$<TARGET_PROPERTY:TYPE>,MODULE_LIBRARY>>" -fPIE)
  set(isProgram "$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>")
  if(HOVAR_STATIC)
    hovar_harden(link ${isProgram} -static-pie)
  else()
    hovar_harden(link ${isProgram} -pie)
  endif()
  hovar_harden(link 1 -Wl,-z,relro,-z,now)
endif()
