#!/bin/sh
# Measures which lines and branches of src/ the tests run, and prints what they do not.
#
#     tools/coverage.sh [FOLDER]
#
# builds below FOLDER (build/coverage) with g++ and leaves a page to look at in FOLDER/html.
set -eu
cd "$(dirname "$0")/.."
folder=${1:-build/coverage}
tools/install_packages.sh cmake g++ make libgtest-dev gcovr libxml2-utils python3 strace
cmake -S . -B "$folder" -DCMAKE_CXX_COMPILER=g++ -DCMAKE_BUILD_TYPE=Debug -DHOVAR_BUILD_TESTS=ON \
  -DCMAKE_CXX_FLAGS="--coverage -fprofile-update=atomic"
cmake --build "$folder" -j "$(nproc)"
find "$folder" -name '*.gcda' -delete
ctest --test-dir "$folder" -j "$(nproc)" --output-on-failure | tail -n 3
mkdir -p "$folder/html"
gcovr --root . --filter src/ --exclude-throw-branches --exclude-unreachable-branches \
  --html-details "$folder/html/index.html" --txt "$folder/lines.txt" "$folder"
cat "$folder/lines.txt"
gcovr --root . --filter src/ --exclude-throw-branches --exclude-unreachable-branches --branches \
  "$folder" | tail -n 4
