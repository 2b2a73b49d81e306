#!/bin/sh
# Runs examples/cluster with GNU parallel and Snakemake, and its Slurm scripts with a stand-in for
# sbatch: each way must write the same chains as one command does, and a chain that fails must show.
#
#     tests/cluster/run.sh PROGRAM      (build/release/bin/hovar)
#
# Installs the Debian packages parallel and snakemake where they are missing.
set -eu
program=$(realpath "${1:?give the program}")
cd "$(dirname "$0")/../.."
tools/install_packages.sh parallel snakemake
tests=$(pwd)/tests/cluster

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
export XDG_CACHE_HOME="$folder/cache"
PATH=$(dirname "$program"):$PATH
export PATH
chains=3
definition="the analysis.xml"

new_study() {  # NAME, then in its copy of the example
  mkdir -p "$folder/$1/quickstart"
  cp -r examples/cluster "$folder/$1"
  rm -rf "$folder/$1/cluster/results"
  cp examples/quickstart/data.csv "$folder/$1/quickstart"
  # Chains that are short serve as well, and a name with a blank must do.
  sed -i 's|<Steps>[0-9]*<|<Steps>100<|' "$folder/$1/cluster/analysis.xml"
  mv "$folder/$1/cluster/analysis.xml" "$folder/$1/cluster/$definition"
}
try() {  # NAME COMMAND...: in the study's folder; standard output and errors go to a file
  study=$1
  shift
  (cd "$folder/$study/cluster" && "$@" > output.txt 2>&1)
}
in_study() {  # NAME COMMAND...: must succeed
  try "$@" || { cat "$folder/$1/cluster/output.txt"; exit 1; }
}
check() {  # NAME: has what the one command wrote
  for chain in $(seq "$chains"); do
    for file in "chain-$chain.xml" coefficients.csv mcmc/Chain.csv mcmc/Summary.csv; do
      cmp "$folder/one/cluster/results/chain-$chain/$file" "$folder/$1/cluster/results/chain-$chain/$file"
    done
  done
  test -s "$folder/$1/cluster/results/report.html"
  echo "ok $1"
}
check_failure() {  # NAME COMMAND...: must fail, and leave no report, when there are no data
  new_study "$1"
  rm "$folder/$1/quickstart/data.csv"
  if try "$@"; then
    echo "$1 did not fail without data"
    exit 1
  fi
  test ! -e "$folder/$1/cluster/results/report.html"
  echo "ok $1"
}

new_study one
in_study one hovar --chains "$chains" --jobs 1 "$definition"
check one

new_study parallel
in_study parallel ./parallel.sh "$definition" "$chains"
check parallel
test "$(wc -l < "$folder/parallel/cluster/chains.log")" -eq $((chains + 1))

# This machine has the name ":".
new_study parallel_machines
echo : > "$folder/parallel_machines/cluster/machines"
MACHINES=machines in_study parallel_machines ./parallel.sh "$definition" "$chains"
check parallel_machines
check_failure parallel_without_data ./parallel.sh "$definition" "$chains"

new_study snakemake
in_study snakemake snakemake --cores 2 --config definition="$definition" chains="$chains"
check snakemake
# A second call has nothing to do; without the report and one chain it runs this one alone.
in_study snakemake snakemake --cores 2 --config definition="$definition" chains="$chains"
grep -q 'Nothing to be done' "$folder/snakemake/cluster/output.txt"
rm -r "$folder/snakemake/cluster/results/report.html" "$folder/snakemake/cluster/results/chain-2"
in_study snakemake snakemake --cores 2 --config definition="$definition" chains="$chains"
test "$(grep -c '^rule chain:' "$folder/snakemake/cluster/output.txt")" -eq 1
check snakemake
check_failure snakemake_without_data snakemake --cores 2 --config definition="$definition" chains="$chains"

new_study slurm
PATH="$tests/slurm_stand_in:$PATH"
in_study slurm ./submit.sh "$definition" "$chains"
check slurm
check_failure slurm_without_data ./submit.sh "$definition" "$chains"
