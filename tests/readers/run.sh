#!/bin/sh
# Tests share/hovar/hovar.R and hovar.py on what the program writes for the examples, and the sessions
# of docs/readers.md.
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
examples=$folder/examples
mkdir "$examples"
cp -r examples/quickstart examples/gee "$examples"
cp -r share "$folder"
rm -rf "$examples"/*/results*
run() {  # EXAMPLE DEFINITION
  (cd "$examples/$1" && "$program" "$2" > "$2.txt")
}
run quickstart batch.xml
run gee batch.xml
# The chain with generalized estimating equations that the example leaves out.
sed -e 's|\(EstimatingEquations>\)false<|\1true<|' -e 's|<Folder>results<|<Folder>drawn<|' \
  "$examples/gee/analysis.xml" > "$examples/gee/drawn.xml"
run gee drawn.xml

# Three further chains of the quick start, of which one has a number of two digits, and a run without
# steps.
mkdir "$examples/quickstart/several"
for chain in 1 2 10; do
  sed -e "s|<Folder>results<|<Folder>several/chain-$chain<|" -e "s|<Element>3624|<Element>${chain}3624|" \
    "$examples/quickstart/analysis.xml" > "$examples/quickstart/chain-$chain.xml"
  mkdir "$examples/quickstart/several/chain-$chain"
  run quickstart "chain-$chain.xml"
done
sed -e 's|<Folder>results<|<Folder>no_steps<|' -e 's|<Steps>[0-9]*<|<Steps>0<|' \
  "$examples/quickstart/analysis.xml" > "$examples/quickstart/no_steps.xml"
mkdir "$examples/quickstart/no_steps"
run quickstart no_steps.xml

LC_ALL=C.UTF-8 Rscript tests/readers/readers_test.R "$examples"
/usr/bin/python3 tests/readers/readers_test.py "$examples"
LC_ALL=C.UTF-8 /usr/bin/python3 tests/readers/sessions_test.py "$examples/quickstart"
