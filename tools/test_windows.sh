#!/bin/sh
# Builds the Windows program and its tests on a Debian 12 machine, installing what is missing, and
# runs every test under Wine.
set -eu
cd "$(dirname "$0")/.."
tools/install_packages.sh cmake make g++-mingw-w64-x86-64-posix googletest wine64
jobs=$(nproc)
cmake --preset windows
cmake --build build/windows -j "$jobs"
# One session for all: the first Windows process takes seconds to set Windows up.
tools/wine.sh --session ctest --preset windows -j "$jobs" "$@"
