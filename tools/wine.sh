#!/bin/sh
# Runs Windows programs on Linux, under Wine.
#
#     tools/wine.sh PROGRAM ARGUMENT...             one program
#     tools/wine.sh --session COMMAND ARGUMENT...   a command that runs many of them
#
# A session gives the command a new Windows of its own (WINEPREFIX) in a temporary folder and removes
# it afterwards; what the command starts through this script then runs in that Windows. Without a
# session each program gets one, which takes seconds.
set -eu
export WINEDEBUG=-all
# Windows without the parts that Wine would ask to download.
export WINEDLLOVERRIDES=mscoree,mshtml=
wine=/usr/lib/wine/wine64

if [ "${1:-}" != --session ]; then
  if [ -n "${HOVAR_WINE_SESSION:-}" ]; then
    exec "$wine" "$@"
  fi
  exec "$0" --session "$0" "$@"
fi
shift

folder=$(mktemp -d "${TMPDIR:-/tmp}/hovar-wine-XXXXXX")
sleeper=
finish() {
  exec 9>&-
  [ -z "$sleeper" ] || kill "$sleeper" 2> /dev/null || true
  # Ends the processes of this Windows, which are Wine's own services now.
  "${wine%/*}/wineserver64" -k 2> /dev/null || true
  "${wine%/*}/wineserver64" -w 2> /dev/null || true
  rm -rf "$folder"
}
trap finish EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# The first Windows process sets Windows up and starts Wine's services, which keep its standard
# streams open and end some seconds after the last process. Were it a test, whoever waits for the end
# of the test's output would wait for them, and the next test would start them again. So the first one
# is a process that nobody listens to, and a second one sleeps as long as the session lasts: a command
# shell that waits for its input.
mkdir "$folder/windows"
mkfifo "$folder/input"
export WINEPREFIX="$folder/windows" HOVAR_WINE_SESSION="$folder"
"$wine" cmd.exe /c exit < /dev/null > /dev/null 2>&1
"$wine" cmd.exe < "$folder/input" > /dev/null 2>&1 &
sleeper=$!
exec 9> "$folder/input"

# In the background, so that a signal to this script is answered at once.
status=0
"$@" <&0 9>&- &
command=$!
wait "$command" || status=$?
exit "$status"
