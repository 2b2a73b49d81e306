#!/bin/sh
# Installs those of the named Debian packages that are missing, with sudo where that is needed.
# Usage: install_packages.sh PACKAGE...
set -eu
missing=
for package in "$@"; do
  if ! dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed'; then
    missing="$missing $package"
  fi
done
[ -n "$missing" ] || exit 0
as_root=
[ "$(id -u)" -eq 0 ] || as_root=sudo
export DEBIAN_FRONTEND=noninteractive
$as_root apt-get update -qq
# shellcheck disable=SC2086  # a list of words
$as_root apt-get install -y -qq --no-install-recommends $missing
