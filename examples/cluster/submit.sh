#!/bin/sh
# Submits the chains of an Analysis to Slurm as an array of tasks, and a job that collects them when
# all have succeeded.
#
#     ./submit.sh [DEFINITION [CHAINS]]      (analysis.xml, 4)
#
# To run chain 3 of 4 again:  sbatch --array=3 chain.slurm analysis.xml 4
set -eu
definition=${1:-analysis.xml}
chains=${2:-4}
job=$(sbatch --parsable --array="1-$chains" chain.slurm "$definition" "$chains")
# With several clusters the number of the job is followed by the name of the cluster.
sbatch --dependency="afterok:${job%%;*}" collect.slurm "$definition" "$chains"
