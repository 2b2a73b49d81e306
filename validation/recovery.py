#!/usr/bin/python3
"""Recovery of known coefficients as missingness rises: complete records against the whole data.

Records come from the model with fixed coefficients; the covariates look like the field's: rarer
ones and a common one, each with a sign Z that is known for every record. Cells of X and the
present-on-admission value are then deleted in one of two ways.

    at random       every X cell and P with the same chance
    by outcome      with 1.6 times this chance where Y = 0 and 0.4 times where Y = 1: records with
                    an outcome are looked at more closely

For each rate the estimates of complete records (fourth block) and those of the chain (fifth block)
are compared with the truth: bias, standard deviation over the replicates, root mean squared error,
and how often estimate +- 1.96 standard errors holds the truth.

What is checked: without missing cells both blocks recover the truth (bias within Monte Carlo
error); with cells missing at random the chain is unbiased within Monte Carlo error plus a
hundredth, and from 20 % on its root mean squared error over all coefficients is the smaller one;
with cells missing by outcome its bias in the intercept is smaller than that of complete records.
"""
import os

import numpy as np
from matplotlib.ticker import NullFormatter
from scipy import stats

from model import draw_records, hide, log_odds
from plots import plt, save
from program import YX_P0, YX_P0_MCMC, fresh_folder, seed_words, write_data
from report import begin

NAMES = ["intercept", "X1", "X2", "X3", "X4", "X5"]
TABLES = np.array([[0.02, 0.90], [0.02, 0.80], [0.01, 0.70], [0.02, 0.85], [0.02, 0.75]])
Z_RATE = np.array([0.40, 0.15, 0.12, 0.20, 0.10])
BETA_Y = np.array([log_odds(0.06), 0.8, 0.5, 0.7, -0.4, 0.3])
BETA_P = np.array([log_odds(0.04), 0.5, 0.3, -0.3, 0.4, 0.6])
RATES = (0.0, 0.05, 0.10, 0.20, 0.30, 0.40)
FALSE_ALARM = 0.001
PRIOR = 0.01


def chances(mechanism, rate, data):
    """Chance that an X cell, or P, is deleted."""
    if mechanism == "at random":
        return rate, rate
    by_record = rate * np.where(data.y == 1, 0.4, 1.6)
    return by_record[:, None], by_record


def replicate(program, folder, records, mechanism, rate, burnin, steps, stream):
    """Estimates and standard errors of both blocks, and the share of complete records."""
    whole = draw_records(stream, records, Z_RATE, TABLES, BETA_Y, BETA_P)
    data = hide(stream, whole, *chances(mechanism, rate, whole))
    write_data(os.path.join(folder, "data.csv"), data.y, data.p, data.z, data.x)
    result = program.analysis(folder, prior=PRIOR, seed=seed_words(stream), burnin=burnin,
                              steps=steps, tolerance=1e-6)
    assert len(result.x_names) == len(NAMES), "a column was removed"
    complete = 1 - (np.isnan(data.x).any(axis=1) | np.isnan(data.p)).mean()
    return [(result.estimate[b], result.mse[b]) for b in (YX_P0, YX_P0_MCMC)], complete


def figures(estimates):
    """Bias, its Monte Carlo error, standard deviation, rmse, coverage, mean standard error."""
    beta = np.array([e for e, _ in estimates])
    error = np.array([s for _, s in estimates])
    bias = beta.mean(axis=0) - BETA_Y
    sd = beta.std(axis=0, ddof=1)
    covered = (np.abs(beta - BETA_Y) <= 1.96 * error).mean(axis=0)
    return {"bias": bias, "noise": sd / np.sqrt(len(beta)), "sd": sd,
            "rmse": np.sqrt(((beta - BETA_Y) ** 2).mean(axis=0)), "coverage": covered,
            "error": error.mean(axis=0)}


def plot(folder, results):
    """Bias, error and coverage: the intercept (solid) and the average over the others (dashed)."""
    figure, axes = plt.subplots(2, 3, figsize=(8, 4.6), sharex=True)
    average = {"bias": np.mean, "coverage": np.mean,
               "rmse": lambda values: np.sqrt(np.mean(np.square(values)))}
    for row, mechanism in zip(axes, ("at random", "by outcome")):
        for axis, measure, title in zip(row, ("bias", "rmse", "coverage"),
                                        ("bias", "root mean squared error", "coverage of 95 %")):
            for block, colour, label in ((0, "#c8553d", "complete records"),
                                         (1, "#33658a", "chain")):
                curves = [results[mechanism, rate][block][measure] for rate in RATES]
                for style, name, values in (
                        ("-", "intercept", [c[0] for c in curves]),
                        ("--", "X1 to X5", [average[measure](c[1:]) for c in curves])):
                    axis.plot([100 * r for r in RATES], values, style, marker="o", ms=3,
                              color=colour, label="%s, %s" % (label, name))
            if measure == "rmse":
                axis.set_yscale("log")
                axis.yaxis.set_major_formatter("{x:g}")
                axis.yaxis.set_minor_formatter(NullFormatter())
                axis.set_yticks([0.05, 0.1, 0.2, 0.5, 1, 2, 5] if mechanism == "by outcome"
                                else [0.05, 0.1, 0.2, 0.5])
            else:
                axis.axhline(0 if measure == "bias" else 0.95, color="0.6", lw=0.8)
            if measure == "coverage":
                axis.set_ylim(-0.03, 1.03)
            axis.set_title("%s,\nmissing %s" % (title, mechanism), fontsize=8)
    axes[0][0].set_ylim(-0.15, 0.15)
    for axis in axes[1]:
        axis.set_xlabel("missing cells, %")
    axes[0][0].legend(fontsize=6, frameon=False)
    save(figure, folder, "recovery.svg")


def main():
    program, report, options = begin("recovery")
    records, replicates, burnin, steps = (
        (5000, 6, 15, 40) if options.quick else (20000, 40, 25, 100))
    folder = fresh_folder(options.folder, "run")
    results, rows = {}, []
    for m, mechanism in enumerate(("at random", "by outcome")):
        for rate in RATES:
            runs, shares = [], []
            for r in range(replicates):
                stream = np.random.default_rng([6, m, int(100 * rate), r])
                blocks, complete = replicate(program, folder, records, mechanism, rate, burnin,
                                             steps, stream)
                runs.append(blocks)
                shares.append(complete)
            results[mechanism, rate] = [figures([blocks[b] for blocks in runs]) for b in (0, 1)]
            for j, name in enumerate(NAMES):
                cells = [mechanism, "%.0f" % (100 * rate), "%.1f" % (100 * np.mean(shares)), name]
                for f in results[mechanism, rate]:
                    cells += ["%+.3f" % f["bias"][j], "%.3f" % f["sd"][j], "%.3f" % f["error"][j],
                              "%.0f" % (100 * f["coverage"][j])]
                rows.append(cells)
            print(mechanism, rate, "done", flush=True)

    limit = stats.t.isf(FALSE_ALARM / 2 / (2 * len(NAMES) * len(RATES)), replicates - 1)
    start = [results["at random", 0.0][b] for b in (0, 1)]
    z = max(np.abs(f["bias"] / f["noise"]).max() for f in start)
    report.check("nothing missing: both blocks recover the truth", z < limit,
                 "largest |z| of a bias %.2f, limit %.2f" % (z, limit))
    worst = max(((np.abs(f["bias"]) - 0.01) / f["noise"]).max()
                for (mechanism, _), (_, f) in results.items() if mechanism == "at random")
    report.check("missing at random: the chain is unbiased", worst < limit,
                 "largest z of |bias| - 0.01: %.2f, limit %.2f" % (worst, limit))
    overall = lambda f: np.sqrt((f["rmse"] ** 2).mean())
    gain = [overall(results["at random", rate][0]) / overall(results["at random", rate][1])
            for rate in RATES if rate >= 0.2]
    report.check("missing at random, from 20 %: smaller error than complete records",
                 min(gain) > 1, "smallest ratio of root mean squared errors %.2f" % min(gain))
    bias = lambda rate, block: results["by outcome", rate][block]["bias"][0]
    gain = [abs(bias(rate, 0) / bias(rate, 1)) for rate in RATES if rate > 0]
    report.check("missing by outcome: less bias in the intercept than complete records",
                 min(gain) > 1, "smallest ratio of biases %.1f" % min(gain))
    plot(options.plots, results)
    block_heads = ["bias", "sd", "mean error", "cover %"]
    report.table("recovery", ["missing", "%", "complete records, %", "coefficient"]
                 + ["complete: " + h for h in block_heads] + ["chain: " + h for h in block_heads],
                 rows)
    report.table("recovery_size", ["records", "replicates", "burn-in", "steps"],
                 [[records, replicates, burnin, steps]])
    short = []
    for (mechanism, rate), (a, b) in results.items():
        short.append([mechanism, "%.0f" % (100 * rate)]
                     + ["%.3f" % overall(f) for f in (a, b)]
                     + ["%+.3f" % f["bias"][0] for f in (a, b)]
                     + ["%.0f" % (100 * f["coverage"].mean()) for f in (a, b)])
    report.table("recovery_summary", ["missing", "%", "error, complete", "error, chain",
                                      "bias of the intercept, complete", "chain",
                                      "coverage, complete", "chain"], short)
    report.finish(program)


if __name__ == "__main__":
    main()
