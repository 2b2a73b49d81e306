#!/bin/sh
# Builds the fuzzers, lets each read the inputs in fuzz/corpus again, and then runs each from there:
# for a fixed number of inputs, which takes some seconds in all, or for hours. Ends with status 1 at
# the first finding, whose input is kept.
#
#     tools/fuzz.sh [-b FOLDER] [-t TARGET] [HOURS]
#
#     -b FOLDER   build there instead of in build/fuzz
#     -t TARGET   run this fuzzer alone, such as csv
#     HOURS       fuzz for so many hours in all, shared equally among the fuzzers; new inputs that
#                 reach new code are kept below FOLDER/corpus and used by the next run
set -eu
cd "$(dirname "$0")/.."
folder=build/fuzz
targets=$(cd fuzz/corpus && echo *)
while getopts b:t: option; do
  case $option in
    b) folder=$OPTARG ;;
    t) targets=$OPTARG ;;
    *) exit 2 ;;
  esac
done
shift $((OPTIND - 1))
hours=${1:-}

tools/install_packages.sh cmake make clang libclang-rt-14-dev
cmake --preset fuzz -B "$folder" > /dev/null
cmake --build "$folder" --target hovar_fuzzers -j "${JOBS:-$(nproc)}"

seconds=
if [ -n "$hours" ]; then
  # shellcheck disable=SC2086
  set -- $targets
  seconds=$(awk -v hours="$hours" -v count=$# 'BEGIN { printf "%d", hours * 3600 / count }')
  [ "$seconds" -gt 0 ] || { echo "HOURS must be a number above 0" >&2; exit 2; }
fi

replay() {
  "$fuzzer" -runs=0 -artifact_prefix="$findings/" "fuzz/corpus/$target"
}

# The engine keeps new inputs in the first of the folders.
search() {
  if [ -n "$seconds" ]; then
    kept=$folder/corpus/$target
    limit="-max_total_time=$seconds -max_len=4096"
  else
    kept=$scratch/$target
    limit="-runs=10000 -seed=1 -max_len=1024"
  fi
  mkdir -p "$kept"
  # shellcheck disable=SC2086
  "$fuzzer" $limit -dict="fuzz/$target.dict" -artifact_prefix="$findings/" -print_final_stats=1 \
    "$kept" "fuzz/corpus/$target"
}

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
for target in $targets; do
  fuzzer=$folder/fuzz/$target
  findings=$folder/findings/$target
  log=$findings/log.txt
  mkdir -p "$findings"
  if replay > "$log" 2>&1 && search >> "$log" 2>&1; then
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
    echo "$target: no finding in $runs executions"
  else
    tail -n 40 "$log"
    echo "$target: finding, see $findings"
    exit 1
  fi
done
