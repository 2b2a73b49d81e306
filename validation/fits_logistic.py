#!/usr/bin/python3
"""Logistic fits on public data: against R's glm, and with a prior against an independent solver.

The data come from installed R packages (real_data.R). Without a prior the estimates and standard
errors of all four blocks are compared with glm (fits_logistic.R). With prior precision 1 they are
compared with the minimum of the penalised likelihood as BFGS finds it, polished by Powell's hybrid
root finder on the gradient; no Newton step is used.

A printed number agrees when the other solver's value rounds to it: the distance is at most half a
unit of the sixth digit, plus a thousandth of a unit for the accuracy of the other solver.
"""
import csv
import os
import sys

from program import PX, YX, YX_P0, YZ
from real_data import fetch, models, prepare, with_intercept
from report import REFERENCE, begin, rscript, units_off

sys.path.insert(0, REFERENCE)
from ridge import ridge  # noqa: E402  (an independent solver of the test references)

LABELS = {"[P|X]": PX, "[Y|Z]": YZ, "[Y|X]": YX, "[Y|X;P=0]": YX_P0}
LIMIT = 0.501
PRIOR = 1.0


def compare(result, wanted):
    """Counts of numbers, of those not equal, and the largest distance in units."""
    distances = []
    for label, (beta, error) in wanted.items():
        for cells, b, e in zip(result.text[LABELS[label]], beta, error):
            distances += [units_off(cells[0], b), units_off(cells[1], e)]
    return len(distances), sum(d > LIMIT for d in distances), max(distances)


def main():
    program, report, options = begin("fits_logistic")
    sets = [s for s in fetch(options.folder) if s.kind == "logistic"]
    rscript("fits_logistic.R", options.folder)
    glm = {}
    with open(os.path.join(options.folder, "glm.csv"), newline="") as f:
        for row in csv.DictReader(f):
            glm.setdefault(row["set"], {}).setdefault(row["block"], ([], []))
            glm[row["set"]][row["block"]][0].append(float(row["estimate"]))
            glm[row["set"]][row["block"]][1].append(float(row["error"]))
    described, compared, sample = [], [], []
    for s in sets:
        run, data = prepare(options.scratch, options.folder, s.name)
        described.append([s.name, s.package, s.text, s.records, s.incomplete, s.covariates])
        plain = program.analysis(run, prior=0.0)
        solved = {label: ridge(y[used], with_intercept(x, used), PRIOR)
                  for label, (y, x, used) in models(data).items()}
        penalised = program.analysis(run, prior=PRIOR)
        for against, result, wanted in (("glm", plain, glm[s.name]),
                                        ("ridge solver, precision 1", penalised, solved)):
            n, off, worst = compare(result, wanted)
            report.check("%s against %s" % (s.name, against), off == 0,
                         "%d numbers, %d differ, largest distance %.3f" % (n, off, worst))
            compared.append([s.name, against, n, off, "%.3f" % worst])
        if s.name == "Pima":
            for k, name in enumerate(["intercept"] + data.names):
                cells = plain.text[YX_P0][k]
                sample.append([name, cells[0], "%.10g" % glm[s.name]["[Y|X;P=0]"][0][k], cells[1],
                               "%.10g" % glm[s.name]["[Y|X;P=0]"][1][k]])
    report.table("logistic_sets", ["data", "package", "outcome; covariates", "records",
                                   "with a missing cell", "covariates"], described)
    report.table("logistic_fits", ["data", "compared with", "numbers", "not equal",
                                   "largest distance, units"], compared)
    report.table("logistic_sample", ["Pima, [Y\\|X,P=0]", "estimate", "glm", "error", "glm"],
                 sample)
    report.finish(program)


if __name__ == "__main__":
    main()
