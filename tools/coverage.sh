#!/bin/sh
# Measures which lines and branches of src/ the tests run, and prints what they do not.
#
#     tools/coverage.sh [FOLDER]
#
# builds below FOLDER (build/coverage) with g++ and leaves a page to look at in FOLDER/html. A folder that
# holds anything but what an earlier call has made is refused.
set -eu
cd "$(dirname "$0")/.."
folder=$(tools/claim_folder.sh coverage.sh "${1:-build/coverage}")
tools/install_packages.sh cmake g++ make libgtest-dev gcovr libxml2-utils python3 strace
gcc -c tools/coverage_counts.c -o "$folder/coverage_counts.o"
cmake -S . -B "$folder" -DCMAKE_CXX_COMPILER=g++ -DCMAKE_BUILD_TYPE=Debug -DHOVAR_BUILD_TESTS=ON \
  -DCMAKE_CXX_FLAGS="--coverage -fprofile-update=atomic" \
  -DCMAKE_EXE_LINKER_FLAGS="$folder/coverage_counts.o -Wl,--wrap=execv,--wrap=fork,--wrap=raise,--wrap=_exit,--wrap=_Exit"
cmake --build "$folder" -j "$(nproc)"
mkdir -p "$folder/html"
find "$folder" -name '*.gcda' -delete
# Counting needs memory itself, so tests without any are left out.
ctest --test-dir "$folder" -j "$(nproc)" --output-on-failure -E FailingMallocTest | tail -n 3
# Left out by name: what asks for absent processors, and conditions that are asserted.
gcovr --root . --filter src/ \
  --exclude-throw-branches --exclude-unreachable-branches --exclude-branches-by-pattern '.*assert\(.*' \
  --html-details "$folder/html/index.html" --json "$folder/counts.json" --print-summary \
  -j "$(nproc)" "$folder" > "$folder/summary.txt"
gcovr --root . --add-tracefile "$folder/counts.json" --txt
cat "$folder/summary.txt"
