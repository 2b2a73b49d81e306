#!/bin/sh
# Compares the program with what else one could use on a Debian 12 machine: installs the packages
# that are missing, builds the release preset, makes data files, measures, and writes the table and
# the plots of docs/performance.md. Options: see run_peers.py, or run this with --help.
#
# The Python used is Debian's own, for which the packages are installed.
set -eu
cd "$(dirname "$0")/../.."
case " $* " in
  *" --help "* | *" -h "* | *" --no-install "*) ;;
  *)
    tools/install_packages.sh cmake g++ make time util-linux python3 python3-numpy python3-scipy \
      python3-pandas python3-sklearn python3-statsmodels python3-matplotlib libopenblas0-pthread \
      r-base-core r-cran-data.table r-cran-geepack r-cran-gee r-cran-proc r-cran-mice jags \
      r-cran-rjags plink2
    ;;
esac
exec /usr/bin/python3 -B bench/peers/run_peers.py "$@"
