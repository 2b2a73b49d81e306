#!/bin/sh
# Checks the types of the report page, builds it anew, and runs its tests: in Node, and in Chromium
# over the examples of the project and over made-up runs. Screenshots go to build/report/screenshots.
#
#     tools/report/test.sh [PROGRAM]
#
# PROGRAM is the built command hovar; without it that of build/release-tests or build/release is taken,
# and built if there is none.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
project=$(cd "$here/../.." && pwd)
"$project/tools/install_packages.sh" chromium
if ! command -v npm > /dev/null; then "$project/tools/install_packages.sh" nodejs npm; fi

program=${1:-}
for build in release-tests release; do
  candidate=$project/build/$build/bin/hovar
  if [ -z "$program" ] && [ -x "$candidate" ]; then program=$candidate; fi
done
if [ -z "$program" ]; then
  "$project/tools/install_packages.sh" cmake g++ make
  (cd "$project" && cmake --preset release && cmake --build build/release -j "$(nproc)")
  program=$project/build/release/bin/hovar
fi
program=$(cd "$(dirname "$program")" && pwd)/$(basename "$program")

export EXAMPLES="$project/build/report/examples"
rm -rf "$EXAMPLES"
mkdir -p "$EXAMPLES"
for example in quickstart gee; do
  cp -r "$project/examples/$example" "$EXAMPLES"
  rm -rf "$EXAMPLES/$example"/results*
  (cd "$EXAMPLES/$example" && "$program" batch.xml > output.txt)
done
# All of one run with estimating equations, draws and predictions too, which nobody should rely on.
cp -r "$project/examples/gee" "$EXAMPLES/unfit"
rm -rf "$EXAMPLES/unfit"/results*
sed -i 's/\(EstimatingEquations>\)false</\1true</' "$EXAMPLES/unfit/analysis.xml"
sed -i '/clustered/d' "$EXAMPLES/unfit/batch.xml"
(cd "$EXAMPLES/unfit" && "$program" batch.xml > output.txt)

cd "$here"
npm ci --no-audit --no-fund --silent
npm run --silent check
npm test --silent
