#!/bin/sh
# Tries the packages that tools/package.sh made, each unpacked in a clean folder: what they hold,
# whether they start without anything else, and whether the quick start, run from them, writes the
# same bytes as the program of a plain build.
#
#     tools/try_packages.sh [-b BUILD] [-i] [FOLDER]
#
#     FOLDER     where the packages are (build/packages)
#     -b BUILD   the plain build to compare with (build/release, which is built when it is missing)
#     -i         also install the .deb with apt in a new Debian system, which debootstrap makes from
#                the network; as root
#
# Ends with status 1 at the first fault. What this machine cannot do is skipped and named.
set -eu
cd "$(dirname "$0")/.."
build=build/release
inNewSystem=
while getopts b:i option; do
  case $option in
    b) build=$OPTARG ;;
    i) inNewSystem=yes ;;
    *) exit 2 ;;
  esac
done
shift $((OPTIND - 1))
packages=$(cd "${1:-build/packages}" && pwd)
tools/install_packages.sh binutils bsdextrautils devscripts dpkg-dev groff-base lintian man-db mandoc
source=$(pwd)
version=$(sed -n 's/^project(Hovar VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  echo "FAULT: $*" >&2
  exit 1
}

passed() { echo "ok: $*"; }

# The only file of the packages with this ending.
package_file() {  # PATTERN
  # shellcheck disable=SC2086  # a pattern
  set -- "$packages"/$1
  { [ $# -eq 1 ] && [ -f "$1" ]; } || fail "not one file $1"
  echo "$1"
}

# Runs the batch of a copied quick start with a command and without any environment. Processor times
# are the one thing that two runs may differ in.
run_quickstart() {  # NAME EXAMPLES COMMAND...
  result=$work/results/$1
  mkdir -p "$work/results"
  cp -r "$2/quickstart" "$result"
  rm -rf "$result/results"
  shift 2
  status=0
  (cd "$result" && exec env -i WINEPREFIX="$work/wine" WINEDEBUG=-all HOME="$work" \
    "$@" batch.xml < /dev/null > output.txt 2> errors.txt) || status=$?
  [ "$status" -eq 0 ] || { cat "$result/errors.txt" >&2; fail "status $status of $* batch.xml"; }
  sed -i 's/^\(MCMC: .* in\) .* seconds/\1 T seconds/' "$result/output.txt"
}

compare_quickstart() {  # NAME
  diff -r "$work/results/plain" "$work/results/$1" || fail "$1: quick start differs"
  passed "$1: quick start, $(find "$work/results/$1" -type f | wc -l) files as from $build"
}

# The parts of the command that need files of the package: the check links the readers, the report
# is made from its page. Run on what the quick start left.
use_tools() {  # NAME COMMAND...
  name=$1
  shift
  (cd "$work/results/$name" && env -i WINEPREFIX="$work/wine" WINEDEBUG=-all HOME="$work" \
    "$@" --check --data batch.xml < /dev/null > check.txt 2>&1) || fail "$name: --check"
  grep -q '^0 errors' "$work/results/$name/check.txt" || fail "$name: --check finds errors"
  (cd "$work/results/$name" && env -i WINEPREFIX="$work/wine" WINEDEBUG=-all HOME="$work" \
    "$@" --report results < /dev/null > report.txt 2>&1) || fail "$name: --report"
  grep -q 'coefficients.csv' "$work/results/$name/results/report.html" || fail "$name: empty report"
  passed "$name: --check and --report"
}

check_version() {  # NAME COMMAND
  shown=$("$2" --version) || fail "$1: --version"
  [ "$shown" = "hovar $version" ] || fail "$1: --version says \"$shown\", CMakeLists.txt $version"
  passed "$1: $shown"
}

# Everything that users are promised, and nothing that a run of the repository left behind.
check_contents() {  # NAME DOCUMENTS SHARE
  for file in examples/quickstart/README.md examples/quickstart/data.csv examples/gee/batch.xml \
    docs/definitions.md docs/formats.md docs/limits.md docs/messages.md README.txt CITATION.cff; do
    [ -s "$2/$file" ] || fail "$1: no $file"
  done
  grep -q "^version: $version\$" "$2/CITATION.cff" || fail "$1: version in CITATION.cff"
  diff -r --exclude=results "$source/examples" "$2/examples" || fail "$1: examples differ"
  [ ! -e "$2/examples/quickstart/results" ] || fail "$1: holds results"
  for definition in "$2"/examples/*/*.xml; do
    schema=$(sed -n 's/.*noNamespaceSchemaLocation="\([^"]*\)".*/\1/p' "$definition")
    [ -z "$schema" ] || [ -s "$(dirname "$definition")/$schema" ] ||
      fail "$1: no schema where $definition looks for it"
  done
  diff -r --exclude=__pycache__ "$source/share/hovar" "$3" || fail "$1: share/hovar differs"
  passed "$1: documents and examples"
}

# Addresses that nobody can know in advance, tables of the linker that nobody can change, guarded
# stacks. A static program that is stripped no longer shows what guards its stack and which functions
# of the C library are fortified; both kinds are compiled by the same flags.
check_hardening() {  # NAME PROGRAM OPTION...
  name=$1 program=$2
  shift 2
  hardening-check --nocfprotection "$@" "$program" > "$work/hardening.txt" ||
    { cat "$work/hardening.txt" >&2; fail "$name: $(basename "$program") is not hardened"; }
  passed "$name: $(basename "$program") is hardened"
}

check_page() {  # FILE
  groff -man -ww -Tutf8 "$1" > "$work/page.txt" 2> "$work/page.log"
  # What is as it should be: a page has the version in the place of a date.
  mandoc -Tlint -W warning "$1" >> "$work/page.log" || true
  grep -v 'missing date' "$work/page.log" > "$work/page.faults" || true
  [ ! -s "$work/page.faults" ] || { cat "$work/page.faults" >&2; fail "page $1"; }
  grep -q "Hovar $version" "$work/page.txt" || fail "page $1 does not show version $version"
  passed "page $(basename "$1"): $(wc -l < "$work/page.txt") lines without a warning"
}

if [ ! -x "$build/bin/hovar" ]; then
  cmake --preset release -B "$build" > /dev/null
  cmake --build "$build" -j "$(nproc)" > /dev/null
fi
build=$(cd "$build" && pwd)
run_quickstart plain "$source/examples" "$build/bin/hovar"

echo "== .tar.gz"
mkdir "$work/clean folder"
tar -xzf "$(package_file 'hovar-*-linux-x86_64.tar.gz')" -C "$work/clean folder"
unpacked="$work/clean folder/hovar-$version-linux-x86_64"
for program in bin/hovar libexec/hovar/hovar; do
  # A static program whose addresses vary has a dynamic section, but no library and no interpreter.
  readelf -d "$unpacked/$program" > "$work/dynamic.txt"
  ! grep -q NEEDED "$work/dynamic.txt" || fail "$program needs a library"
  # hardening-check takes such a program for a library and says nothing of its addresses.
  grep -q 'FLAGS_1.*PIE' "$work/dynamic.txt" || fail "$program has fixed addresses"
  readelf -l --wide "$unpacked/$program" > "$work/segments.txt"
  ! grep -q INTERP "$work/segments.txt" || fail "$program needs an interpreter"
  check_hardening tar.gz "$unpacked/$program" --nostackprotector --nofortify
done
passed "tar.gz: programs that need no library and no interpreter"
check_version tar.gz "$unpacked/bin/hovar"
check_contents tar.gz "$unpacked" "$unpacked/share/hovar"
[ -s "$unpacked/LICENSE" ] || fail "tar.gz: no LICENSE"
for page in man1/hovar.1 man5/hovar-definition.5; do
  check_page "$unpacked/share/man/$page"
done
run_quickstart tar.gz "$unpacked/examples" "$unpacked/bin/hovar"
compare_quickstart tar.gz
use_tools tar.gz "$unpacked/bin/hovar"

# In a system that holds nothing but the program: no library, no configuration, no /proc. The program
# wants a backslash in its name, which the launcher gives it elsewhere.
if chroot / true 2> /dev/null; then
  empty=$work/results/empty
  cp -r "$unpacked/examples/quickstart" "$empty"
  cp "$unpacked/libexec/hovar/hovar" "$empty/empty\\hovar"
  chroot "$empty" '/empty\hovar' batch.xml < /dev/null > "$work/output.txt" 2> "$work/errors.txt" ||
    fail "status $? in an empty system"
  mv "$work/output.txt" "$work/errors.txt" "$empty"
  rm "$empty/empty\\hovar"
  sed -i 's/^\(MCMC: .* in\) .* seconds/\1 T seconds/' "$empty/output.txt"
  compare_quickstart empty
else
  echo "skipped: an empty system needs root"
fi

# The pages of the manual know every option and every element.
plain() { man -P cat -l "$1" | col -b; }
"$unpacked/bin/hovar" --help | grep -o -e '--[a-z]*' | sort -u > "$work/options.txt"
sed -n 's|^ *{k[A-Za-z]*, k[APVB]*, "\([A-Za-z]*/\)*\([A-Za-z]*\)".*|\2|p' \
  src/app/definition/element_table.h | sort -u > "$work/elements.txt"
[ "$(wc -l < "$work/elements.txt")" -ge 20 ] || fail "elements not found in the sources"
plain "$unpacked/share/man/man1/hovar.1" > "$work/hovar.1.txt"
plain "$unpacked/share/man/man5/hovar-definition.5" > "$work/hovar-definition.5.txt"
while read -r word; do
  grep -q -e "$word" "$work/hovar.1.txt" || fail "hovar.1 lacks $word"
done < "$work/options.txt"
while read -r word; do
  grep -q -w "$word" "$work/hovar-definition.5.txt" || fail "hovar-definition.5 lacks $word"
done < "$work/elements.txt"
passed "manual: $(wc -l < "$work/options.txt") options, $(wc -l < "$work/elements.txt") elements"

echo "== .deb"
deb=$(package_file 'hovar_*_amd64.deb')
[ "$(dpkg-deb -f "$deb" Version)" = "$version-1" ] || fail "deb: version in the control file"
lintian --allow-root --fail-on error,warning "$deb" || fail "deb: lintian"
passed "deb: lintian"
dpkg-deb -x "$deb" "$work/root"
documents=$work/root/usr/share/doc/hovar
check_version deb "$work/root/usr/bin/hovar"
check_contents deb "$documents" "$work/root/usr/share/hovar"
for file in copyright changelog.gz changelog.Debian.gz; do
  [ -s "$documents/$file" ] || fail "deb: no $file"
done
for page in man1/hovar.1 man5/hovar-definition.5; do
  gunzip -c "$work/root/usr/share/man/$page.gz" > "$work/$(basename "$page")"
  check_page "$work/$(basename "$page")"
done
for program in bin/hovar libexec/hovar/hovar; do
  check_hardening deb "$work/root/usr/$program"
done
run_quickstart deb "$documents/examples" "$work/root/usr/bin/hovar"
compare_quickstart deb
use_tools deb "$work/root/usr/bin/hovar"

if [ -n "$inNewSystem" ]; then
  echo "== .deb in a new Debian system"
  tools/install_packages.sh debootstrap
  system=$work/system
  debootstrap --variant=minbase bookworm "$system" > "$work/debootstrap.log" 2>&1 ||
    { tail "$work/debootstrap.log" >&2; fail "debootstrap"; }
  cp "$deb" "$system/root/hovar.deb"
  chroot "$system" apt-get install -y --no-install-recommends /root/hovar.deb > "$work/apt.log" 2>&1 ||
    { tail "$work/apt.log" >&2; fail "apt install"; }
  check_version "new system" "$system/usr/bin/hovar"
  # The launcher finds its own place by /proc.
  mkdir -p "$system/proc"
  mount -t proc proc "$system/proc"
  trap 'umount "$system/proc" && rm -rf "$work"' EXIT
  chroot "$system" cp -r /usr/share/doc/hovar/examples/quickstart /root/quickstart
  chroot "$system" sh -c 'cd /root/quickstart && hovar batch.xml < /dev/null > output.txt 2> errors.txt' ||
    fail "status $? in the new system"
  mv "$system/root/quickstart" "$work/results/system"
  sed -i 's/^\(MCMC: .* in\) .* seconds/\1 T seconds/' "$work/results/system/output.txt"
  compare_quickstart system
  chroot "$system" apt-get purge -y hovar > "$work/apt.log" 2>&1 || fail "apt purge"
  left=$(find "$system/usr" -name '*hovar*')
  [ -z "$left" ] || fail "left behind: $left"
  passed "new system: apt installs and removes it"
fi

echo "== .zip"
if ! ls "$packages"/hovar-*-windows-*.zip > /dev/null 2>&1; then
  echo "skipped: there is no ZIP in $packages"
else
  tools/install_packages.sh unzip
  mkdir "$work/clean zip"
  unzip -q "$(package_file 'hovar-*-windows-x86_64.zip')" -d "$work/clean zip"
  unpacked="$work/clean zip/hovar-$version-windows-x86_64"
  for file in hovar.exe libexec/hovar/hovar.exe LICENSE; do
    [ -s "$unpacked/$file" ] || fail "zip: no $file"
  done
  for file in hovar.exe libexec/hovar/hovar.exe; do
    objdump -p "$unpacked/$file" > "$work/header.txt"
    for property in HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT; do
      grep -q "^[[:space:]]*$property\$" "$work/header.txt" || fail "zip: $file lacks $property"
    done
  done
  passed "zip: addresses vary, and data are never run"
  check_contents zip "$unpacked" "$unpacked/share/hovar"
  wine=/usr/lib/wine/wine64
  if [ -x "$wine" ]; then
    # Not through a pipe: Wine's services would keep it open.
    WINEPREFIX="$work/wine" WINEDEBUG=-all "$wine" "$unpacked/hovar.exe" --version \
      > "$work/version.txt" 2> /dev/null
    shown=$(tr -d '\r' < "$work/version.txt")
    [ "$shown" = "hovar $version" ] || fail "zip: --version says \"$shown\""
    run_quickstart zip "$unpacked/examples" "$wine" "$unpacked/hovar.exe"
    compare_quickstart zip
    use_tools zip "$wine" "$unpacked/hovar.exe"
  else
    echo "skipped: running the program of the ZIP needs the package wine64"
  fi
fi
echo "All packages are good."
