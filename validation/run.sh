#!/bin/sh
# Runs every comparison of docs/validation.md against the built program and writes its tables and
# plots, and the tables of docs/choosing-z.md, from the results.
#
#   validation/run.sh [--quick] [--program PATH] [--only SCRIPT [--write]]
#
#   --quick         shorter runs (about three minutes); the documents are filled in copies below the
#                   results, build/validation/quick/docs, and those in docs stay as they are
#   --program PATH  the executable (libexec/hovar/hovar); without it the release preset is built
#   --only SCRIPT   one comparison, by the name of its script without .py; no document is written.
#                   An unknown name ends with the list of all and exit status 2
#   --write         with --only: its tables and its rows of the lists of all are written
#
# Installs what is missing from Debian packages (root or sudo). Exit status: 0 when every comparison
# agrees, 1 when one does not.
set -eu
cd "$(dirname "$0")/.."
quick=
program=
only=
write=
items="fits_logistic fits_gee elimination sweep_enumeration calibration recovery choosing_z
jags_agreement c_statistics"
usage() {
  sed -n '2,15p' validation/run.sh | sed 's/^# \{0,1\}//'
  exit "$1"
}
while [ $# -gt 0 ]; do
  case $1 in
    --quick) quick=--quick ;;
    --program) [ $# -ge 2 ] || usage 2; program=$(realpath "$2"); shift ;;
    --only) [ "${2:+x}" ] || usage 2; only=$2; shift ;;
    --write) write=yes ;;
    --help) usage 0 ;;
    *) usage 2 ;;
  esac
  shift
done
[ -z "$write" ] || [ -n "$only" ] || usage 2
known=
for item in $items; do
  [ "$only" != "$item" ] || known=yes
done
if [ -n "$only" ] && [ -z "$known" ]; then
  echo "validation/run.sh: there is no comparison \"$only\". Choose one of:" >&2
  # shellcheck disable=SC2086  # one name a line
  printf '  %s\n' $items >&2
  exit 2
fi

tools/install_packages.sh r-base-core r-cran-mass r-cran-geepack r-cran-gee r-cran-proc \
  r-cran-rjags r-cran-mice jags python3-minimal python3-numpy python3-scipy python3-pandas \
  python3-statsmodels python3-matplotlib
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
if [ -n "$quick" ] || { [ -n "$only" ] && [ -z "$write" ]; }; then
  mkdir -p "$scratch/docs"
  cp docs/validation.md docs/choosing-z.md "$scratch/docs/"
  documents=$scratch/docs
else
  documents=docs
fi
# One thread: the matrices are small, and figures should not depend on the number of cores.
export OPENBLAS_NUM_THREADS=1 OMP_NUM_THREADS=1 LC_ALL=C.UTF-8

status=0
for item in $items; do
  [ -z "$only" ] || [ "$only" = "$item" ] || continue
  echo "== $item"
  # shellcheck disable=SC2086  # an option or nothing
  /usr/bin/python3 -B "validation/$item.py" --program "$program" --scratch "$scratch" \
    --plots "$documents/validation" $quick || status=1
done
if [ -z "$only" ] || [ -n "$write" ]; then
  /usr/bin/python3 -B validation/document.py ${only:+--only "$only"} "$scratch" \
    "$documents/validation.md" "$documents/choosing-z.md" || status=1
  echo "== $documents/validation.md and choosing-z.md written"
fi
[ "$status" -eq 0 ] && echo "Every comparison agrees." || echo "A comparison FAILED."
exit "$status"
