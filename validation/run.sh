#!/bin/sh
# Runs every comparison of docs/validation.md against the built program and writes its tables and
# plots from the results.
#
#   validation/run.sh [--quick] [--program PATH] [--only SCRIPT]
#
#   --quick         shorter runs (about two minutes); the document is filled in a copy below the
#                   results, build/validation/quick/docs, and docs/validation.md stays as it is
#   --program PATH  the executable (libexec/hovar/hovar); without it the release preset is built
#   --only SCRIPT   one comparison, by the name of its script without .py; no document is written
#
# Installs what is missing from Debian packages (root or sudo). Exit status: 0 when every comparison
# agrees, 1 when one does not.
set -eu
cd "$(dirname "$0")/.."
quick=
program=
only=
usage() {
  sed -n '2,13p' validation/run.sh | sed 's/^# \{0,1\}//'
  exit "$1"
}
while [ $# -gt 0 ]; do
  case $1 in
    --quick) quick=--quick ;;
    --program) [ $# -ge 2 ] || usage 2; program=$(realpath "$2"); shift ;;
    --only) [ $# -ge 2 ] || usage 2; only=$2; shift ;;
    --help) usage 0 ;;
    *) usage 2 ;;
  esac
  shift
done

tools/install_packages.sh r-base-core r-cran-mass r-cran-geepack r-cran-gee r-cran-proc \
  r-cran-rjags jags python3-minimal python3-numpy python3-scipy python3-pandas python3-statsmodels \
  python3-matplotlib
if [ -z "$program" ]; then
  tools/install_packages.sh cmake g++ make
  cmake --preset release >/dev/null
  cmake --build build/release -j "$(nproc)" >/dev/null
  program=build/release/libexec/hovar/hovar
fi

scratch=build/validation/full
[ -z "$quick" ] || scratch=build/validation/quick
[ -z "$only" ] || scratch=build/validation/only
rm -rf "$scratch"
mkdir -p "$scratch"
if [ -n "$quick$only" ]; then
  mkdir -p "$scratch/docs"
  cp docs/validation.md "$scratch/docs/"
  documents=$scratch/docs
else
  documents=docs
fi
# One thread: the matrices are small, and figures should not depend on the number of cores.
export OPENBLAS_NUM_THREADS=1 OMP_NUM_THREADS=1 LC_ALL=C.UTF-8

status=0
for item in fits_logistic fits_gee elimination sweep_enumeration calibration recovery \
  jags_agreement c_statistics; do
  [ -z "$only" ] || [ "$only" = "$item" ] || continue
  echo "== $item"
  # shellcheck disable=SC2086  # an option or nothing
  /usr/bin/python3 -B "validation/$item.py" --program "$program" --scratch "$scratch" \
    --plots "$documents/validation" $quick || status=1
done
if [ -z "$only" ]; then
  /usr/bin/python3 -B validation/document.py "$scratch" "$documents/validation.md" || status=1
  echo "== $documents/validation.md written"
fi
[ "$status" -eq 0 ] && echo "Every comparison agrees." || echo "A comparison FAILED."
exit "$status"
