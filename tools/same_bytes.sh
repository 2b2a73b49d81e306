#!/bin/sh
# Shows that every build of the program writes the same bytes on every processor: builds it with g++
# and clang, without and with optimisation, for any x86-64 and for one with AVX2 and FMA, with narrow
# vectors only, with the flags of a release, statically, and under sanitizers; runs the batches of the examples and of twenty seeded
# data sets with each, some also with a C library that is told to do without newer instructions; and
# compares all files and the standard output with those of the first build. Only the seconds of a chain
# may differ.
#
#     tools/same_bytes.sh [--with PROGRAM] [--windows PROGRAM] [FOLDER]
#
#     --with PROGRAM      also run this program, such as that of an earlier commit
#                         (libexec/hovar/hovar)
#     --windows PROGRAM   also run this Windows program (build/windows/libexec/hovar/hovar.exe), under
#                         Wine
#     FOLDER              where to build and run (build/same_bytes); one that holds anything but what
#                         an earlier call has made is refused
#
# Ends with status 1 at a difference.
set -eu
cd "$(dirname "$0")/.."
source_folder=$(pwd)
windows=
other=
while :; do
  case ${1:-} in
    --windows) windows=$(cd "$(dirname "$2")" && pwd)/$(basename "$2") ;;
    --with) other=$(cd "$(dirname "$2")" && pwd)/$(basename "$2") ;;
    *) break ;;
  esac
  shift 2
done
folder=$(tools/claim_folder.sh same_bytes.sh "${1:-build/same_bytes}")
tools/install_packages.sh cmake g++ make clang libclang-rt-14-dev
jobs=${JOBS:-$(nproc)}
wine=/usr/lib/wine/wine64

build() {  # NAME COMPILER FLAGS [OPTION...]
  name=$1 compiler=$2 flags=$3
  shift 3
  # The flags stand alone, so that -O0 and -O3 are all that the compiler is told.
  cmake -S "$source_folder" -B "$folder/$name" -DCMAKE_CXX_COMPILER="$compiler" \
    -DCMAKE_BUILD_TYPE=Plain -DCMAKE_CXX_FLAGS="$flags" "$@" > "$folder/$name.log"
  cmake --build "$folder/$name" -j "$jobs" --target hovar_program >> "$folder/$name.log"
  echo "$name: built"
  builds="$builds $name"
}

builds=
for compiler in g++ clang++; do
  build "$compiler-O3" "$compiler" "-O3 -DNDEBUG" -DHOVAR_BUILD_TOOLS=ON
  build "$compiler-O0" "$compiler" "-O0"
  build "$compiler-v3" "$compiler" "-O3 -DNDEBUG -march=x86-64-v3"
  build "$compiler-avx2" "$compiler" "-O3 -DNDEBUG" -DHOVAR_VECTOR_WIDTH=Avx2
  build "$compiler-portable" "$compiler" "-O3 -DNDEBUG" -DHOVAR_VECTOR_WIDTH=Portable
  # All flags of a release, those against faults of memory among them.
  build "$compiler-release" "$compiler" "" -DCMAKE_BUILD_TYPE=Release
done
build g++-static g++ "-O3 -DNDEBUG" -DHOVAR_STATIC=ON
build clang++-sanitized clang++ "-O1 -g" -DHOVAR_SANITIZE=ON
first=g++-O3
cmake --build "$folder/$first" -j "$jobs" --target hovar_simulate >> "$folder/$first.log"

# The studies: the examples, and seeded data with definitions of the quick start's kind. There are
# twice as many hospitals as columns: with fewer, rounding may decide whether a covariance is singular.
rm -rf "$folder/studies"
mkdir -p "$folder/studies"
for example in quickstart gee; do
  cp -r "examples/$example" "$folder/studies"
  rm -rf "$folder/studies/$example"/results*
done
seed=1
while [ "$seed" -le 20 ]; do
  study=$folder/studies/seed$seed
  mkdir "$study"
  gee=false
  [ $((seed % 2)) -eq 0 ] && gee=true
  missing=0.0$((seed % 5))  # a fifth of the data sets is complete
  indicators=$((1 + seed % 3))
  dependent=
  [ $((seed % 4)) -ne 3 ] || dependent=--dependent-column
  # shellcheck disable=SC2086
  "$folder/$first/tools/simulate/hovar_simulate" --records $((600 + 300 * seed)) \
    --hospitals $((10 + 2 * (3 + seed))) --variables $((2 + seed)) --indicators "$indicators" \
    --missing-x "$missing" --missing-p "$missing" $dependent --seed "$seed" --output "$study/data.csv"
  for name in batch analysis prediction validation; do
    sed -e "s/<NumberOfPoaIndicators>[0-9]*</<NumberOfPoaIndicators>$indicators</" \
      -e "s/\(EstimatingEquations>\)[a-z]*</\1$gee</" "examples/quickstart/$name.xml" > "$study/$name.xml"
  done
  seed=$((seed + 1))
done

# Runs all studies with a command, `start`, that takes the definition.
run_all() {  # NAME
  for study in "$folder"/studies/*; do
    result=$folder/results/$1/$(basename "$study")
    mkdir -p "$(dirname "$result")"
    cp -r "$study" "$result"
    # A run that ends in an error must do so with every build.
    run_status=0
    (cd "$result" && start batch.xml < /dev/null > output.txt 2> errors.txt) || run_status=$?
    echo "$run_status" > "$result/status.txt"
    sed -i "s/^\\(MCMC: .* in\\) .* seconds/\\1 T seconds/" "$result/output.txt"
  done
}

compare() {  # NAME
  if diff -r "$folder/results/$first" "$folder/results/$1" > "$folder/$1.diff"; then
    echo "$1: same bytes in $(find "$folder/results/$1" -type f | wc -l) files," \
      "$(cat "$folder/results/$1"/*/status.txt | grep -c '^0$') runs without an error"
  else
    echo "$1: different, see $folder/$1.diff"
  fi
}

# Runs and compares beside others, as many at once as there are processors.
checked=
running=0
check() {  # NAME
  { run_all "$1"; compare "$1"; } &
  checked="$checked $1"
  running=$((running + 1))
  if [ "$running" -ge "$jobs" ]; then
    wait
    running=0
  fi
}

# The program wants a backslash in the name by which it is started.
start() {
  bash -c 'exec -a "x\\hovar" "$0" "$@"' "$program" "$@"
}

rm -rf "$folder/results" "$folder"/*.diff
program=$folder/$first/libexec/hovar/hovar
run_all "$first"
for name in $builds; do
  [ "$name" != "$first" ] || continue
  program=$folder/$name/libexec/hovar/hovar
  check "$name"
done

if [ -n "$other" ]; then
  program=$other
  check other
fi

# The C library chooses its functions, the exponential among them, by the processor. It is told that
# the processor lacks something; whether that had an effect is asked of the loader.
features() { /lib64/ld-linux-x86-64.so.2 --list-diagnostics | grep '^x86.cpu_features.*active'; }
for without in -AVX512F,-AVX512VL,-AVX512BW,-AVX512DQ,-AVX512CD \
  -FMA,-FMA4 -AVX2,-FMA,-FMA4,-AVX512F,-AVX512VL,-AVX512BW,-AVX512DQ,-AVX512CD \
  -AVX,-AVX2,-FMA,-FMA4,-SSE4_1,-SSE4_2,-BMI1,-BMI2,-ERMS,-AVX512F,-AVX512VL,-AVX512BW,-AVX512DQ; do
  tunables=glibc.cpu.hwcaps=$without
  if [ "$(GLIBC_TUNABLES=$tunables features)" = "$(features)" ]; then
    echo "GLIBC_TUNABLES=$tunables: skipped, no effect on this processor"
    continue
  fi
  for name in g++-O3 clang++-O3; do
    program=$folder/$name/libexec/hovar/hovar
    start() { GLIBC_TUNABLES=$tunables bash -c 'exec -a "x\\hovar" "$0" "$@"' "$program" "$@"; }
    check "$name$without"
  done
done

if [ -n "$windows" ]; then
  [ -x "$wine" ] || { echo "Running a Windows program needs the package wine64" >&2; exit 2; }
  export WINEPREFIX="$folder/wine" WINEDEBUG=-all
  start() { "$wine" "$windows" "$@"; }
  start none.xml < /dev/null > /dev/null 2>&1 || true  # makes the prefix, and says so
  check windows
fi
wait
for name in $checked; do  # a comparison that was not made has left no file
  { [ -f "$folder/$name.diff" ] && [ ! -s "$folder/$name.diff" ]; } || exit 1
done
