#!/usr/bin/python3
"""GEE fits on public clustered data against R's geepack and gee and Python's statsmodels.

The data come from installed R packages (real_data.R). All solvers meet the same equations once the
working correlation alpha is given, so it is held at the value that the program's formula gives
(fits_gee.R says how) and estimates, empirical and model-based errors must agree to the last printed
digit. alpha itself, which the program does not print, is computed from the residuals of the printed
coefficients; it must equal the held value within what six printed digits leave open.

With a prior no package solves the program's equations; there a root finder on the equations of
tests/reference/gee.py (cluster covariance matrices inverted as they stand) is the other side.
"""
import csv
import os
import sys

import numpy as np
import statsmodels.api as sm

from model import pearson_clusters
from program import PX, YX, YX_P0, YZ
from real_data import fetch, models, prepare, with_intercept
from report import REFERENCE, begin, half_unit, rscript, six, units_off

sys.path.insert(0, REFERENCE)
from gee import solve as dense_gee  # noqa: E402  (dense matrices of the test references)
from ridge import ridge  # noqa: E402

LABELS = {"[P|X]": PX, "[Y|Z]": YZ, "[Y|X]": YX, "[Y|X;P=0]": YX_P0}
LIMIT = 0.501
PRIOR = 0.5
DENSE_RECORDS = 3000


class HeldExchangeable(sm.cov_struct.Exchangeable):
    """statsmodels' exchangeable structure with its parameter never updated."""

    def __init__(self, alpha):
        super().__init__()
        self.dep_params = alpha

    def update(self, params):
        pass


def by_statsmodels(y, x, cluster, alpha):
    m = sm.GEE(y, x, groups=cluster, family=sm.families.Binomial(),
               cov_struct=HeldExchangeable(alpha))
    fitted = m.fit(maxiter=200, ctol=1e-9)
    return (fitted.params, np.sqrt(np.diag(fitted.cov_naive / fitted.scale)),
            np.sqrt(np.diag(fitted.cov_robust)))


def alpha_of(beta, y, x, cluster):
    """alpha by the program's formula at the coefficients beta."""
    return pearson_clusters(beta, y, x, cluster).alpha


def alpha_from_print(cells, y, x, cluster):
    """alpha at the printed coefficients, and how far their rounding can move it."""
    beta = np.array([float(c[0]) for c in cells])
    alpha = alpha_of(beta, y, x, cluster)
    bound = 0.0
    for j, c in enumerate(cells):
        step = np.zeros(len(beta))
        step[j] = 1e-5
        slope = (alpha_of(beta + step, y, x, cluster) - alpha_of(beta - step, y, x, cluster)) / 2e-5
        bound += abs(slope) * half_unit(c[0])
    return alpha, bound * 1.01 + 1e-11


def by_dense_matrices(y, x, cluster, penalty):
    """Estimate, model and empirical errors with a prior, by dense inverse correlation matrices."""
    start = ridge(y, x, penalty)[0]
    return dense_gee(y, x, cluster, penalty, start, xtol=1e-14, largest=1e-9)[:3]


def distance(cells, beta, model, robust):
    return [units_off(text, value) for row, values in zip(cells, zip(beta, model, robust))
            for text, value in zip(row, values)]


def read_gee(path):
    """set -> block -> fit -> dict with beta, model, robust, alpha, recomputed alpha, phi."""
    fits = {}
    with open(path, newline="") as f:
        for row in csv.DictReader(f):
            fit = fits.setdefault(row["set"], {}).setdefault(row["block"], {}).setdefault(
                row["fit"], {"beta": [], "model": [], "robust": []})
            if row["row"] == "alpha":
                fit["alpha"], fit["recomputed"] = float(row["estimate"]), float(row["model"])
            elif row["row"] == "phi":
                fit["phi"] = float(row["estimate"])
            else:
                fit["beta"].append(float(row["estimate"]))
                fit["model"].append(float(row["model"]))
                fit["robust"].append(float(row["robust"]))
    return fits


def main():
    program, report, options = begin("fits_gee")
    sets = [s for s in fetch(options.folder) if s.kind == "gee"]
    rscript("fits_gee.R", options.folder)
    fits = read_gee(os.path.join(options.folder, "gee.csv"))
    described, compared, alphas, sample = [], [], [], []
    for s in sets:
        run, data = prepare(options.scratch, options.folder, s.name)
        described.append([s.name, s.package, s.text, s.records, s.clusters, s.largest,
                          s.covariates])
        plain = program.analysis(run, gee=True, prior=0.0)
        distances = {"geepack": [], "gee": [], "statsmodels": []}
        alpha_gap, alpha_room = [], []
        for label, (y, x, used) in models(data).items():
            block, cells = fits[s.name][label], plain.text[LABELS[label]]
            y, x, cluster = y[used], with_intercept(x, used), data.cluster[used]
            held = block["geepack held"]["alpha"]
            for package in ("geepack", "gee"):
                fit = block[package + " held"]
                distances[package] += distance(cells, fit["beta"], fit["model"], fit["robust"])
            distances["statsmodels"] += distance(cells, *by_statsmodels(y, x, cluster, held))
            alpha, bound = alpha_from_print(cells, y, x, cluster)
            alpha_gap.append(abs(alpha - held))
            alpha_room.append(bound)
            if label == "[Y|X]":
                own = block["geepack own"], block["gee own"]
                alphas.append([s.name, six(alpha), six(own[1]["alpha"]), six(own[0]["alpha"]),
                               "%.3g" % max(abs(o["alpha"] - o["recomputed"]) for o in own)])
                change = max(max(abs(b - float(c[0])) / float(c[2])
                                 for b, c in zip(o["beta"], cells)) for o in own)
                alphas[-1].append("%.2g" % change)
            for o in (block["geepack own"], block["gee own"]):
                if abs(o["alpha"] - o["recomputed"]) > 1e-9:
                    report.check("%s %s: formula of a package's own alpha" % (s.name, label), False,
                                 "%r against %r" % (o["alpha"], o["recomputed"]))
            if s.name == "respiratory" and label == "[Y|X]":
                for k, name in enumerate(["intercept"] + data.names):
                    fit = block["geepack held"]
                    sample.append([name] + [v for c, key in zip(cells[k], ("beta", "model",
                                                                           "robust"))
                                            for v in (c, "%.9g" % fit[key][k])])
        for package, d in distances.items():
            off = sum(v > LIMIT for v in d)
            report.check("%s against %s with alpha held" % (s.name, package), off == 0,
                         "%d numbers, %d differ, largest distance %.3f" % (len(d), off, max(d)))
            compared.append([s.name, package + ", alpha held", len(d), off, "%.3f" % max(d)])
        report.check("%s: alpha from the printed coefficients" % s.name,
                     all(g <= r for g, r in zip(alpha_gap, alpha_room)),
                     "largest difference %.2g" % max(alpha_gap))
        compared.append([s.name, "alpha from residuals: largest difference %.1e, allowed %.1e" % (
            max(alpha_gap), alpha_room[int(np.argmax(alpha_gap))]), len(alpha_gap),
            sum(g > r for g, r in zip(alpha_gap, alpha_room)), ""])
        if len(data.y) <= DENSE_RECORDS:
            penalised = program.analysis(run, gee=True, prior=PRIOR)
            d = []
            for label, (y, x, used) in models(data).items():
                y, x, cluster = y[used], with_intercept(x, used), data.cluster[used]
                d += distance(penalised.text[LABELS[label]],
                              *by_dense_matrices(y, x, cluster, PRIOR))
            off = sum(v > LIMIT for v in d)
            report.check("%s against dense matrices, precision %g" % (s.name, PRIOR), off == 0,
                         "%d numbers, %d differ, largest distance %.3f" % (len(d), off, max(d)))
            compared.append([s.name, "dense matrices, precision %g" % PRIOR, len(d), off,
                             "%.3f" % max(d)])
    report.table("gee_sets", ["data", "package", "outcome; covariates; cluster", "records",
                              "clusters", "largest", "covariates"], described)
    report.table("gee_fits", ["data", "compared with", "numbers", "not equal",
                              "largest distance, units"], compared)
    report.table("gee_alpha", ["data, [Y\\|X]", "alpha, program", "alpha, gee", "alpha, geepack",
                               "formula of gee and geepack misses by",
                               "estimates move by (empirical errors)"], alphas)
    report.table("gee_sample", ["respiratory, [Y\\|X]", "estimate", "geepack", "model error",
                                "geepack", "empirical error", "geepack"], sample)
    report.finish(program)


if __name__ == "__main__":
    main()
