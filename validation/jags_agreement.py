#!/usr/bin/python3
"""The sampler beside JAGS on a small data set: posterior means and standard deviations.

JAGS samples the model itself, so it differs from the program in two known ways: the program draws
beta_Y from a normal approximation, and it holds beta_P and the [X|Z] tables at estimates. Four
samplers bridge the gap in steps that can each be checked strictly:

    program             normal approximation, beta_P and tables held
    own, normal         the same by the independent sampler (sampler.py)     equal to the program
    own, exact          exact draws, beta_P and tables held                  equal to JAGS, held
    JAGS, held          the model with beta_P and tables as data
    own, all            exact draws, beta_P and tables drawn too             equal to JAGS, all
    JAGS, all           the full model

Equal means: means and standard deviations differ by no more than the Monte Carlo error allows. The
largest of the z-values is compared with a limit that has a false-alarm probability of 0.001
(Bonferroni).
"""
import os

import numpy as np
from scipy import stats

from model import draw_records, hide
from program import fresh_folder, seed_words, write_data
from report import begin, rscript
from sampler import Sampler, monte_carlo_error

RECORDS = 250
TABLES = np.array([[0.15, 0.8], [0.2, 0.7]])
Z_RATE = np.array([0.5, 0.4])
BETA_Y = np.array([-0.8, 0.9, -0.6])
BETA_P = np.array([-1.2, 0.5, 0.6])
PRIOR = 0.25
MISSING = 0.25
BATCHES = 50
FALSE_ALARM = 0.001


def read_draws(path):
    return np.loadtxt(path, delimiter=",", skiprows=1)


class Posterior:
    def __init__(self, draws):
        self.mean, self.sd = draws.mean(axis=0), draws.std(axis=0, ddof=1)
        self.mean_error, variance_error = monte_carlo_error(draws, BATCHES)
        self.sd_error = variance_error / (2 * self.sd)


def z_values(a, b):
    return np.concatenate([(a.mean - b.mean) / np.hypot(a.mean_error, b.mean_error),
                           (a.sd - b.sd) / np.hypot(a.sd_error, b.sd_error)])


def main():
    program, report, options = begin("jags_agreement")
    steps, own_steps, iterations = ((20000, 4000, 4000) if options.quick
                                    else (400000, 30000, 25000))
    stream = np.random.default_rng(12)
    data = hide(stream, draw_records(stream, RECORDS, Z_RATE, TABLES, BETA_Y, BETA_P),
                MISSING, MISSING)
    folder = fresh_folder(options.folder)
    write_data(os.path.join(folder, "data.csv"), data.y, data.p, data.z, data.x)
    result = program.analysis(folder, prior=PRIOR, seed=seed_words(stream), burnin=1000,
                              steps=steps)
    beta_p = result.estimate[0]
    with open(os.path.join(folder, "fixed.csv"), "w", encoding="ascii") as f:
        f.write("beta_p,t0,t1,prior\n")
        for j, b in enumerate(beta_p):
            t = ",".join("%r" % v for v in result.tables[j - 1]) if j else ","
            f.write("%r,%s,%r\n" % (b, t, PRIOR))
    rscript("jags_agreement.R", folder, str(iterations))
    found = {"program": Posterior(result.chain)}
    for name, settings in (("own, normal", {}), ("own, exact", {"exact": True}),
                           ("own, all", {"exact": True, "learn": True})):
        sampler = Sampler(stream, data, result.tables, beta_p, PRIOR, PRIOR, **settings)
        found[name] = Posterior(sampler.run(500, own_steps)[0])
    found["JAGS, held"] = Posterior(read_draws(os.path.join(folder, "draws_fixed.csv")))
    found["JAGS, all"] = Posterior(read_draws(os.path.join(folder, "draws_full.csv")))

    count = 2 * len(BETA_Y)
    limit = stats.t.isf(FALSE_ALARM / 2 / count, 2 * (BATCHES - 1))
    for a, b in (("program", "own, normal"), ("own, exact", "JAGS, held"),
                 ("own, all", "JAGS, all")):
        largest = np.abs(z_values(found[a], found[b])).max()
        report.check("%s against %s" % (a, b), largest < limit,
                     "largest |z| %.2f, limit %.2f" % (largest, limit))

    order = ["program", "own, normal", "own, exact", "JAGS, held", "own, all", "JAGS, all"]
    rows = []
    for name in order:
        f = found[name]
        rows.append([name] + ["%.4f (%.4f)" % pair for j in range(len(BETA_Y)) for pair in
                              ((f.mean[j], f.mean_error[j]), (f.sd[j], f.sd_error[j]))])
    report.table("jags", ["sampler"] + ["%s %s" % (what, name)
                                        for name in ("intercept", "X1", "X2")
                                        for what in ("mean", "sd")], rows)
    effects = []
    for label, a, b in (("normal approximation of the draw", "own, normal", "own, exact"),
                        ("beta_P and tables held", "JAGS, held", "JAGS, all"),
                        ("both", "program", "JAGS, all")):
        a, b = found[a], found[b]
        effects.append([label] + [cell for j in range(len(BETA_Y)) for cell in (
            "%+.2f" % ((a.mean[j] - b.mean[j]) / b.sd[j]),
            "%+.1f %%" % (100 * (a.sd[j] / b.sd[j] - 1)))])
    report.table("jags_effects", ["deviation"] + [
        "%s: %s" % (name, what) for name in ("intercept", "X1", "X2")
        for what in ("mean, in sd", "sd")], effects)
    report.table("jags_size", ["records", "complete", "prior precision", "steps, program",
                               "steps, own", "iterations, JAGS"],
                 [[RECORDS, int((~np.isnan(data.x).any(axis=1) & ~np.isnan(data.p)).sum()), PRIOR,
                   steps, own_steps, 2 * iterations]])
    report.finish(program)


if __name__ == "__main__":
    main()
