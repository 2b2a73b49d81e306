#!/bin/sh
# Builds and runs every test on a Debian 12 machine, installing what is missing: formatting; all tests
# with clang under AddressSanitizer and UndefinedBehaviorSanitizer; clang-tidy and cppcheck; some
# seconds of fuzzing; the report page, the readers for R and Python and the packages; and all tests of
# the release build with g++. docs/testing.md has what takes longer.
set -eu
cd "$(dirname "$0")/.."
tools/install_packages.sh cmake g++ make libgtest-dev libbenchmark-dev clang libclang-rt-14-dev \
  clang-format clang-tidy cppcheck libxml2-utils locales python3 strace
if ! locale -a | grep -qi '^de_DE.utf-\?8$'; then
  # A locale with a decimal comma, so that tests can show that it changes nothing.
  as_root=
  [ "$(id -u)" -eq 0 ] || as_root=sudo
  $as_root localedef -i de_DE -f UTF-8 de_DE.UTF-8
fi
jobs=$(nproc)
start=$(date +%s)

step() { echo "== $1 (after $(($(date +%s) - start)) s)"; }

step "Formatting, lengths"
find src tests bench fuzz tools -name node_modules -prune -o \( -name '*.h' -o -name '*.cpp' \) -print |
  xargs clang-format --dry-run -Werror
tools/check_lengths.py

step "Tests under AddressSanitizer and UndefinedBehaviorSanitizer (clang)"
cmake --preset asan -DCMAKE_CXX_COMPILER=clang++ -DHOVAR_BUILD_BENCHMARKS=ON
cmake --build build/asan -j "$jobs"
ctest --preset asan -j "$jobs"

step "clang-tidy"
find src bench -name '*.cpp' ! -name '*_windows.cpp' |
  xargs -P "$jobs" -n 4 clang-tidy -p build/asan --quiet

step "cppcheck"
# Pointer arithmetic with a 64-bit offset is taken for an integer that is returned.
cppcheck --quiet --error-exitcode=1 --std=c++20 --enable=warning,performance,portability \
  --suppress=CastIntegerToAddressAtReturn --inline-suppr -j "$jobs" \
  $(for layer in build/asan/include/*; do echo "-I $layer"; done) src bench

step "Fuzzing"
tools/fuzz.sh
find fuzz -name '*.cpp' | xargs -P "$jobs" -n 2 clang-tidy -p build/fuzz --quiet

step "Release build (g++)"
cmake --preset release-tests -DCMAKE_CXX_COMPILER=g++
cmake --build build/release-tests -j "$jobs"

step "Report page"
tools/report/test.sh build/release-tests/bin/hovar

step "Readers for R and Python"
tests/readers/run.sh build/release-tests/bin/hovar

step "Packages"
tools/package.sh
tools/try_packages.sh -b build/release-tests

step "Tests of the release build"
ctest --preset release-tests -j "$jobs"
