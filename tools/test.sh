#!/bin/sh
# Builds and runs every test on a Debian 12 machine, installing what is missing: first with clang
# under AddressSanitizer and UndefinedBehaviorSanitizer, then the release build with g++. Also checks
# the formatting, runs clang-tidy and cppcheck, and fuzzes for some seconds.
set -eu
cd "$(dirname "$0")/.."
tools/install_packages.sh cmake g++ make libgtest-dev libbenchmark-dev clang libclang-rt-14-dev clang-format clang-tidy cppcheck \
  locales
if ! locale -a | grep -qi '^de_DE.utf-\?8$'; then
  # A locale with a decimal comma, so that tests can show that it changes nothing.
  as_root=
  [ "$(id -u)" -eq 0 ] || as_root=sudo
  $as_root localedef -i de_DE -f UTF-8 de_DE.UTF-8
fi
jobs=$(nproc)

echo "== Formatting"
find src tests bench fuzz tools -name '*.h' -o -name '*.cpp' | xargs clang-format --dry-run -Werror

echo "== Tests under AddressSanitizer and UndefinedBehaviorSanitizer (clang)"
cmake --preset asan -DCMAKE_CXX_COMPILER=clang++ -DHOVAR_BUILD_BENCHMARKS=ON
cmake --build build/asan -j "$jobs"
ctest --preset asan -j "$jobs"

echo "== clang-tidy"
find src bench -name '*.cpp' | xargs -P "$jobs" -n 4 clang-tidy -p build/asan --quiet

echo "== cppcheck"
# Pointer arithmetic with a 64-bit offset is taken for an integer that is returned.
cppcheck --quiet --error-exitcode=1 --std=c++20 --enable=warning,performance,portability \
  --suppress=CastIntegerToAddressAtReturn --inline-suppr -j "$jobs" \
  $(for layer in build/asan/include/*; do echo "-I $layer"; done) src bench

echo "== Fuzzing"
tools/fuzz.sh
find fuzz -name '*.cpp' | xargs -P "$jobs" -n 2 clang-tidy -p build/fuzz --quiet

echo "== Tests of the release build (g++)"
cmake --preset release-tests -DCMAKE_CXX_COMPILER=g++
cmake --build build/release-tests -j "$jobs"
ctest --preset release-tests -j "$jobs"
