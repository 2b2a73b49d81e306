#!/bin/sh
# Builds the program on a Debian 12 machine, installing what is missing, and runs the quick start
# example to its end: an Analysis, a Prediction and a Validation, chained by a Batch.
set -eu
cd "$(dirname "$0")/.."
tools/install_packages.sh cmake g++ make
cmake --preset release
cmake --build build/release -j "$(nproc)"
cd examples/quickstart
../../build/release/bin/hovar batch.xml
echo
echo "The run is complete. It wrote:"
find results -type f | sort | sed 's|^|  examples/quickstart/|'
echo "examples/quickstart/README.md explains every file and every column."
