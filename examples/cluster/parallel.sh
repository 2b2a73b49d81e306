#!/bin/sh
# Runs the chains of an Analysis with GNU parallel, on this machine or on several, and collects them.
#
#     ./parallel.sh [DEFINITION [CHAINS]]      (analysis.xml, 4)
#
# As many chains run at once as there are processors. For several machines that share this folder list
# them in a file, a name per line, and set MACHINES to its name; hovar must be in the path there too.
# When a chain fails, the others are stopped. chains.log tells what was run where and for how long.
set -eu
definition=${1:-analysis.xml}
chains=${2:-4}

set -- --halt now,fail=1 --joblog chains.log --quote
if [ -n "${MACHINES:-}" ]; then
  set -- "$@" --sshloginfile "$MACHINES" --workdir "$PWD"
fi
seq "$chains" | parallel "$@" hovar --chains "$chains" --only '{}' "$definition"
hovar --chains "$chains" --collect "$definition"
