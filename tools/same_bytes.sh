#!/bin/sh
# Shows that every build of the program writes the same bytes: builds it with g++ and clang, without
# and with optimisation, for any x86-64 and for one with AVX2 and FMA, and under sanitizers; runs the
# batches of the examples and ten seeded data sets with each; and compares all files and the standard
# output with those of the first build. Only the seconds of a chain may differ.
#
#     tools/same_bytes.sh [FOLDER]
#
# builds and runs below FOLDER (build/same_bytes) and ends with status 1 at a difference.
set -eu
cd "$(dirname "$0")/.."
source_folder=$(pwd)
folder=${1:-build/same_bytes}
tools/install_packages.sh cmake g++ make clang libclang-rt-14-dev
mkdir -p "$folder"
folder=$(cd "$folder" && pwd)
jobs=$(nproc)

build() {  # NAME COMPILER TYPE [FLAGS]
  cmake -S "$source_folder" -B "$folder/$1" -DCMAKE_CXX_COMPILER="$2" -DCMAKE_BUILD_TYPE="$3" \
    -DCMAKE_CXX_FLAGS="${4:-}" -DHOVAR_BUILD_TOOLS=ON > "$folder/$1.log"
  cmake --build "$folder/$1" -j "$jobs" --target hovar_program hovar_simulate >> "$folder/$1.log"
}

builds="gxx-release gxx-debug gxx-v3 clang-release clang-debug clang-v3 clang-sanitized"
build gxx-release g++ Release
build gxx-debug g++ Debug
build gxx-v3 g++ Release "-O3 -march=x86-64-v3"
build clang-release clang++ Release
build clang-debug clang++ Debug
build clang-v3 clang++ Release "-O3 -march=x86-64-v3"
build clang-sanitized clang++ RelWithDebInfo "-fsanitize=address,undefined"

# The studies: the examples, and seeded data with definitions of the quick start's kind.
rm -rf "$folder/studies"
mkdir -p "$folder/studies"
cp -r examples/quickstart examples/gee "$folder/studies"
seed=1
while [ "$seed" -le 10 ]; do
  study=$folder/studies/seed$seed
  mkdir "$study"
  gee=false
  [ $((seed % 2)) -eq 0 ] && gee=true
  "$folder/gxx-release/tools/simulate/hovar_simulate" --records $((600 + 300 * seed)) \
    --hospitals $((20 + seed)) --variables $((2 + seed)) --indicators 2 --missing-x 0.03 \
    --missing-p 0.05 --seed "$seed" --output "$study/data.csv"
  for name in batch analysis prediction validation; do
    sed -e "s/<NumberOfPoaIndicators>[0-9]*</<NumberOfPoaIndicators>2</" \
      -e "s/\(EstimatingEquations>\)[a-z]*</\1$gee</" "examples/quickstart/$name.xml" > "$study/$name.xml"
  done
  seed=$((seed + 1))
done

run_all() {  # NAME
  for study in "$folder"/studies/*; do
    result=$folder/results/$1/$(basename "$study")
    mkdir -p "$(dirname "$result")"
    cp -r "$study" "$result"
    # The program wants a backslash in the name by which it is started. A run that ends in an error
    # must do so with every build.
    run_status=0
    (cd "$result" && bash -c 'exec -a "x\\hovar" "$0" batch.xml' \
      "$folder/$1/libexec/hovar/hovar" < /dev/null > output.txt 2> errors.txt) || run_status=$?
    echo "$run_status" > "$result/status.txt"
    sed -i "s/^\\(MCMC: .* in\\) .* seconds/\\1 T seconds/" "$result/output.txt" $(find "$result" -name '*.log')
  done
}

rm -rf "$folder/results"
status=0
for name in $builds; do
  run_all "$name"
  if diff -r "$folder/results/gxx-release" "$folder/results/$name" > "$folder/$name.diff"; then
    echo "$name: same bytes in $(find "$folder/results/$name" -type f | wc -l) files," \
      "$(cat "$folder/results/$name"/*/status.txt | grep -c '^0$') runs without an error"
  else
    echo "$name: different, see $folder/$name.diff"
    status=1
  fi
done
exit $status
