"""Runs plink2 --glm on [Y|Z] without a penalty: the first covariate as the variant, the others as
covariates. Usage: peer_plink.py TASK FOLDER VARIANT

plink2 reports no times, so the seconds are those of its process less those of a second process that
reads the same files and does next to nothing. Coefficients come from odds ratios of six digits.
"""

import json
import math
import os
import resource
import subprocess
import sys


def processor_seconds_of_children():
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def seconds_of(folder, *task):
    before = processor_seconds_of_children()
    subprocess.run(["plink2", "--threads", "1", "--memory", "4000", "--pfile",
                    os.path.join(folder, "plink"), "--pheno",
                    os.path.join(folder, "phenotype.txt"), "--covar",
                    os.path.join(folder, "covariates.txt"), "--out", os.path.join(folder, "plink"),
                    *task], check=True, stdout=subprocess.DEVNULL)
    return processor_seconds_of_children() - before


def main():
    task, folder, _ = sys.argv[1:4]
    reading = seconds_of(folder, "--freq")
    seconds = max(0.0, seconds_of(folder, "--glm", "no-firth", "intercept") - reading)
    with open(os.path.join(folder, "plink.Y.glm.logistic"), encoding="ascii") as results:
        names = results.readline().split()
        rows = [line.split() for line in results]
    ratio, count = names.index("OR"), names.index("OBS_CT")
    version = subprocess.run(["plink2", "--version"], stdout=subprocess.PIPE, text=True, check=True)
    print(json.dumps({
        "task": task, "peer": "plink2 --glm", "version": version.stdout.split()[1],
        "n": int(rows[0][count]), "p": len(rows), "compute_s": round(seconds, 6),
        "coef": ["%.8g" % math.log(float(row[ratio])) for row in rows]}))


main()
