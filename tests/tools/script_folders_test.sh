#!/bin/sh
# Hands precious folders to the scripts that remove things in the folder that they are given: what is in
# them must stay. Compilers and tests are replaced by commands that do nothing.
# Usage: script_folders_test.sh SOURCE_FOLDER
set -eu
source=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
fail() {
  echo "FAULT: $*"
  failures=$((failures + 1))
}

# A copy of what the scripts need, so that a fault harms no real build.
mkdir "$work/source" "$work/commands"
cp -r "$source/tools" "$source/examples" "$work/source"
mkdir -p "$work/source/fuzz/corpus/csv"
cd "$work/source"
for command in cmake cpack ctest gcc gcovr; do
  printf '#!/bin/sh\nexit 0\n' > "$work/commands/$command"
done
printf '#!/bin/sh\necho "install ok installed"\n' > "$work/commands/dpkg-query"
chmod +x "$work/commands"/*
PATH=$work/commands:$PATH
export PATH

# Everything that the scripts remove in a folder of their own.
precious() {
  rm -rf "$work/precious"
  mkdir -p "$work/precious/studies" "$work/precious/results" "$work/precious/short/csv" \
    "$work/precious/_CPack_Packages" "$work/precious/fuzz"
  for file in studies/mine results/mine short/csv/mine _CPack_Packages/mine mine.diff mine.gcda \
    hovar.thesis SHA256SUMS; do
    echo precious > "$work/precious/$file"
  done
  # A fuzzer that finds nothing.
  printf '#!/bin/sh\necho "stat::number_of_executed_units: 1"\n' > "$work/precious/fuzz/csv"
  chmod +x "$work/precious/fuzz/csv"
}
list() { find "$1" -exec ls -ldi {} + | awk '{ print $1, $2, $NF }' | sort; }

refuses() {  # FOLDER SCRIPT ARGUMENT...
  given=$1
  shift
  list "$work/precious" > "$work/before"
  if "$@" > "$work/output" 2>&1; then
    fail "$* takes the folder"
  fi
  list "$work/precious" | diff "$work/before" - || fail "$* changes the folder"
  grep -F "$given" "$work/output" | grep -q "so it is left alone" ||
    fail "$* does not say why: $(cat "$work/output")"
}

for script in package.sh same_bytes.sh coverage.sh; do
  precious
  refuses "$work/precious" "tools/$script" "$work/precious"
  ln -sfn "$work/precious" "$work/link"
  refuses "$work/link" "tools/$script" "$work/link"
  # The mark of another script, and one that is a link.
  : > "$work/precious/.made-by-another.sh"
  refuses "$work/precious" "tools/$script" "$work/precious"
  ln -s ../before "$work/precious/.made-by-$script"
  refuses "$work/precious" "tools/$script" "$work/precious"
  refuses "$work/precious/mine.diff" "tools/$script" "$work/precious/mine.diff"
done

precious
list "$work/precious/short" > "$work/before"
tools/fuzz.sh -b "$work/precious" -t csv > "$work/output" 2>&1 || fail "fuzz.sh: $(cat "$work/output")"
list "$work/precious/short" | diff "$work/before" - || fail "fuzz.sh changes what it did not make"

# Folders that a script may take: a new one, an empty one, its own; odd names among them.
claim() { tools/claim_folder.sh package.sh "$1"; }
mkdir "$work/an empty one"
for folder in "$work/new/one" "$work/an empty one" "$work/new/one" -x -x; do
  claimed=$(claim "$folder") || fail "$folder is refused"
  [ -f "$claimed/.made-by-package.sh" ] || fail "$folder is not marked"
  : > "$claimed/something"
done
[ -d ./-x ] || fail "-x is elsewhere"
# A folder for one script is none for another.
if tools/claim_folder.sh same_bytes.sh "$work/new/one" > "$work/output" 2>&1; then
  fail "same_bytes.sh takes a folder of package.sh"
fi
# Of its own folder too, package.sh removes only what it makes.
: > "$work/new/one/notes"
: > "$work/new/one/hovar_0_amd64.deb"
tools/package.sh "$work/new/one" > "$work/output" 2>&1 || true
[ -f "$work/new/one/notes" ] || fail "package.sh removes notes"
[ ! -f "$work/new/one/hovar_0_amd64.deb" ] || fail "package.sh keeps an earlier package"

[ "$failures" -eq 0 ]
