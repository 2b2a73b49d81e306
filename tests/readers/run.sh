#!/bin/sh
# Tests share/hovar/hovar.R and hovar.py on what the program writes for the examples.
#
#     tests/readers/run.sh PROGRAM      (build/release/bin/hovar)
#
# Installs R with posterior, and pandas, where they are missing.
set -eu
program=$(realpath "${1:?give the program}")
cd "$(dirname "$0")/../.."
tools/install_packages.sh r-base-core r-cran-posterior python3-pandas

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cp -r examples/quickstart examples/gee "$folder"
run() {  # FOLDER DEFINITION
  (cd "$folder/$1" && "$program" "$2" > "$2.txt")
}
run quickstart batch.xml
run gee batch.xml

# Three further chains of the quick start, of which one has a number of two digits, and a run without
# steps.
mkdir "$folder/quickstart/several"
for chain in 1 2 10; do
  sed -e "s|<Folder>results<|<Folder>several/chain-$chain<|" -e "s|<Element>3624|<Element>${chain}3624|" \
    "$folder/quickstart/analysis.xml" > "$folder/quickstart/chain-$chain.xml"
  mkdir "$folder/quickstart/several/chain-$chain"
  run quickstart "chain-$chain.xml"
done
sed -e 's|<Folder>results<|<Folder>no_steps<|' -e 's|<Steps>[0-9]*<|<Steps>0<|' \
  "$folder/quickstart/analysis.xml" > "$folder/quickstart/no_steps.xml"
mkdir "$folder/quickstart/no_steps"
run quickstart no_steps.xml

LC_ALL=C.UTF-8 Rscript tests/readers/readers_test.R "$folder"
/usr/bin/python3 tests/readers/readers_test.py "$folder"
