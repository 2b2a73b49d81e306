#!/bin/sh
# Builds the packages on a Debian 12 machine, installing what is missing: the .deb, the .tar.gz with a
# static program and, where the cross compiler is installed, the ZIP for Windows.
#
#     tools/package.sh [FOLDER]
#
# leaves them, with their SHA-256 sums, in FOLDER (build/packages), in place of those of an earlier
# call. A folder that holds anything else is refused. tools/try_packages.sh tries them.
set -eu
cd "$(dirname "$0")/.."
folder=$(tools/claim_folder.sh package.sh "${1:-build/packages}")
tools/install_packages.sh cmake g++ make dpkg-dev file
# Files of the packages carry the time of the last change instead of that of the build, so that the
# same sources give the same packages.
if [ -z "${SOURCE_DATE_EPOCH:-}" ]; then
  SOURCE_DATE_EPOCH=$(git log -1 --format=%ct 2> /dev/null || date +%s)
fi
export SOURCE_DATE_EPOCH

rm -rf "${folder:?}"/hovar?* "$folder/SHA256SUMS" "$folder/_CPack_Packages"

pack() {  # PRESET
  echo "== $1"
  cmake --preset "$1" > /dev/null
  cmake --build "build/$1" -j "${JOBS:-$(nproc)}" --target hovar_program hovar_command
  (cd "build/$1" && cpack -B "$folder" > cpack.log 2>&1) || { cat "build/$1/cpack.log"; exit 1; }
}

pack package-deb
pack package-static
if command -v x86_64-w64-mingw32-g++-posix > /dev/null; then
  pack package-windows
else
  echo "No ZIP: that needs the package g++-mingw-w64-x86-64-posix"
fi
rm -rf "$folder/_CPack_Packages"
(cd "$folder" && sha256sum hovar* > SHA256SUMS && cat SHA256SUMS)
