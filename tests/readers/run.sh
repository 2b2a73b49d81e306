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
trap 'chmod -R u+rwX "$folder"; rm -rf "$folder"' EXIT
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

# Two chains where an earlier command ran three, beside the examples.
cp -r "$examples/quickstart" "$folder/chained"
sed -i -e 's|<Folder>results<|<Folder>chains<|' -e 's|<Steps>[0-9]*<|<Steps>50<|' \
  "$folder/chained/analysis.xml"
for count in 3 2; do
  (cd "$folder/chained" && "$program" --chains "$count" analysis.xml > chains.txt 2>&1)
done

LC_ALL=C.UTF-8 Rscript tests/readers/readers_test.R "$examples"
/usr/bin/python3 tests/readers/readers_test.py "$examples"
LC_ALL=C.UTF-8 /usr/bin/python3 tests/readers/sessions_test.py "$examples/quickstart"

# Folders of every kind. The superuser may read everything, so somebody else reads them, and has to
# reach copies of the readers and tests.
mkdir "$folder/tests" "$folder/folders" "$folder/folders/kinds" "$folder/folders/kinds/folder"
cp -r tests/readers "$folder/tests"
mkfifo "$folder/folders/kinds/pipe"
: > "$folder/folders/kinds/empty"
/usr/bin/python3 tests/readers/make_folders.py "$folder/folders"
as_user=
if [ "$(id -u)" -eq 0 ]; then
  tools/install_packages.sh util-linux
  chmod 755 "$folder"
  chown -R 65534 "$folder/folders"
  as_user="setpriv --reuid 65534 --regid 65534 --clear-groups"
fi
cd "$folder"
for locale in C.UTF-8 C; do
  LC_ALL=$locale $as_user Rscript tests/readers/folders_test.R "$folder/folders" "$folder/chained/chains"
  LC_ALL=$locale $as_user /usr/bin/python3 tests/readers/folders_test.py "$folder/folders" \
    "$folder/chained/chains"
done
