#!/usr/bin/python3
"""Simulation-based calibration of the sampler, with and without missing data.

In each replicate beta_Y and beta_P are drawn from the program's prior (normal, precision 1), the
[X|Z] tables from beta distributions, and records from the model; cells are deleted at random; the
program analyses the data. If the kept draws came from the posterior, the rank of the true beta_Y
among them would be uniform (Cook, Gelman and Rubin 2006; Talts et al. 2018). They do not quite: the
program draws from a normal approximation and holds beta_P and the tables at estimates. The tables
show by how much. What is checked, strictly, is that the program deviates for these reasons only:

  deviates        on one data set the draws of many seeds, standardised by an independent fit, are
                  independent standard normal deviates;
  complete data   given the data the rank is a binomial number with the chance
                  Phi((truth - mode) / sd), mode and sd from an independent fit;
  missing data    an independent sampler that makes the same approximations gives the same ranks,
                  on the same data, and without the approximations it gives uniform ranks;
  GEE             the draws have the inverse of the empirical covariance, by an independent
                  computation of it: the known fault of that form, here with its size.

False alarms: each check compares its largest |z| or smallest p-value with a limit that a correct
program exceeds with probability 0.001 (Bonferroni over the figures of the check).
"""
import os
import time

import numpy as np
from scipy import stats

from model import draw_records, expit, hide, pearson_clusters
from plots import plt, save
from program import YX_P0, YX_P0_MCMC, fresh_folder, seed_words, write_data
from report import begin
from sampler import Sampler, mode

COVARIATES = 3
Z_RATE = np.array([0.5, 0.4, 0.3])
TABLE_PRIOR = ((2, 6), (6, 2))
PRIOR = 1.0
DRAWS = 199
BURNIN = 100
THINNING = {0.0: 1, 0.15: 3, 0.4: 6}  # by the share of missing cells: the chain gets slower
LEVELS = (50, 80, 95)
FALSE_ALARM = 0.001
SEED = 10
NAMES = ["intercept"] + ["X%d" % (j + 1) for j in range(COVARIATES)]


def moments(draws):
    """Means and standard deviations of the draws, one row each."""
    return np.array([draws.mean(axis=0), draws.std(axis=0, ddof=1)])


class Study:
    """The replicates of one number of records and one share of missing cells."""

    def __init__(self, program, folder, n, missing, replicates, seed):
        self.program, self.n, self.missing = program, n, missing
        self.folder = fresh_folder(folder)
        self.replicates, self.seed = replicates, seed
        self.burnin, self.thinning = BURNIN if missing else 0, THINNING[missing]
        self.ranks, self.moments, self.chances, self.compared = [], [], [], {}
        self.skipped = 0

    def data(self, r):
        stream = np.random.default_rng([self.seed, self.n, int(100 * self.missing), r])
        beta_y, beta_p = stream.normal(0, PRIOR ** -0.5, (2, COVARIATES + 1))
        tables = np.column_stack([stream.beta(*TABLE_PRIOR[z], COVARIATES) for z in (0, 1)])
        whole = draw_records(stream, self.n, Z_RATE, tables, beta_y, beta_p)
        return (beta_y, hide(stream, whole, self.missing, self.missing), seed_words(stream),
                stream)

    def run(self, variants=(), compare=0):
        """All replicates; the first `compare` of them also by the independent samplers."""
        for r in range(self.replicates):
            truth, data, seed, stream = self.data(r)
            complete = ~(np.isnan(data.x).any(axis=1) | np.isnan(data.p))
            if not (complete & (data.p == 0)).any():  # an Analysis needs one such record
                self.skipped += 1
                continue
            write_data(os.path.join(self.folder, "data.csv"), data.y, data.p, data.z, data.x)
            result = self.program.analysis(
                self.folder, prior=PRIOR, seed=seed, burnin=self.burnin,
                steps=DRAWS * self.thinning, thinning=self.thinning, tolerance=1e-8)
            if len(result.x_names) != COVARIATES + 1:  # a column without information was removed
                self.skipped += 1
                continue
            self.ranks.append((result.chain < truth).sum(axis=0))
            self.moments.append(moments(result.chain))
            if not self.missing:
                used = data.p == 0
                design = np.column_stack([np.ones(used.sum()), data.x[used]])
                centre, information = mode(data.y[used], design, PRIOR, np.zeros(COVARIATES + 1))
                sd = np.sqrt(np.diag(np.linalg.inv(information)))
                self.chances.append(stats.norm.cdf((truth - centre) / sd))
            if r < compare:
                for name, settings in variants:
                    sampler = Sampler(stream, data, result.tables, result.estimate[0], PRIOR,
                                      PRIOR, table_prior=TABLE_PRIOR, **settings)
                    draws, _ = sampler.run(self.burnin, DRAWS * self.thinning, self.thinning)
                    ranks, both = self.compared.setdefault(name, ([], []))
                    ranks.append((draws < truth).sum(axis=0))
                    both.append(moments(draws))
        self.ranks, self.moments = np.array(self.ranks), np.array(self.moments)
        self.compared = {name: (np.array(ranks), np.array(both))
                         for name, (ranks, both) in self.compared.items()}

    def label(self):
        return "%.0f %% missing" % (100 * self.missing) if self.missing else "complete"


def coverage(ranks, level):
    """Share of replicates whose truth lies in the central interval of the draws, per column."""
    tail = (DRAWS + 1) * (100 - level) // 200
    return ((ranks >= tail) & (ranks <= DRAWS - tail)).mean(axis=0)


def uniformity(ranks, bins=20):
    """p-values of the chi-squared test for uniform ranks, per column."""
    counts = np.array([np.bincount(column * bins // (DRAWS + 1), minlength=bins)
                       for column in ranks.T])
    return stats.chisquare(counts, axis=1).pvalue


def percent(values):
    return " / ".join("%.1f" % (100 * v) for v in values)


def rows_of(study):
    """One row per coefficient: coverages, shift of the mean rank, p-value of uniformity."""
    ranks, rows = study.ranks, []
    for j, name in enumerate(NAMES):
        cells = ["%.1f" % (100 * coverage(ranks[:, [j]], level)[0]) for level in LEVELS]
        rows.append([study.label(), study.n, len(ranks), name] + cells
                    + ["%+.3f" % (ranks[:, j].mean() / DRAWS - 0.5),
                       "%.2g" % uniformity(ranks[:, [j]])[0]])
    return rows


def check_complete(report, study):
    chance, ranks = np.array(study.chances), study.ranks
    variance = DRAWS * chance * (1 - chance)
    z = (ranks - DRAWS * chance).sum(axis=0) / np.sqrt(variance.sum(axis=0))
    # The squared deviations: their mean is the variance, their variance that of a binomial number.
    q = chance * (1 - chance)
    fourth = variance * (1 + 3 * (DRAWS - 2) * q)
    squares = (((ranks - DRAWS * chance) ** 2 - variance).sum(axis=0)
               / np.sqrt((fourth - variance ** 2).sum(axis=0)))
    largest = np.abs(np.concatenate([z, squares])).max()
    limit = stats.norm.isf(FALSE_ALARM / 2 / (2 * len(z)))
    report.check("complete data, %d records: ranks as the normal draw gives them" % study.n,
                 largest < limit, "largest |z| %.2f, limit %.2f" % (largest, limit))


def check_missing(report, study):
    same, _ = study.compared["program's approximations"]
    mine = study.ranks[:len(same)]
    figures = []
    for measure in (lambda k: k, lambda k: np.abs(k - DRAWS / 2)):
        difference = measure(mine) - measure(same)
        figures.append(difference.mean(axis=0)
                       / (difference.std(axis=0, ddof=1) / np.sqrt(len(same))))
    largest = np.abs(np.concatenate(figures)).max()
    limit = stats.t.isf(FALSE_ALARM / 2 / (2 * len(NAMES)), len(same) - 1)
    report.check("%s, %d records: ranks as an independent sampler gives them" % (
        study.label(), study.n),
                 largest < limit, "largest |z| %.2f, limit %.2f" % (largest, limit))
    p = uniformity(study.compared["exact posterior"][0], 10).min() * len(NAMES)
    report.check("%s, %d records: the exact posterior is calibrated" % (study.label(), study.n),
                 p > FALSE_ALARM, "smallest p-value, Bonferroni: %.3f" % min(1, p))


def attribution_rows(study):
    """The samplers on the same data: coverage, spread and centre beside the exact posterior."""
    _, exact = study.compared["exact posterior"]
    count, rows = len(exact), []
    program = (study.ranks[:count], study.moments[:count])
    for name, (ranks, found) in {"program": program, **study.compared}.items():
        ratio = (found[:, 1] / exact[:, 1]).mean(axis=1)
        # Between two samplers of the same law, what the finite number of draws leaves.
        apart, noise = (np.sqrt((((found[:, 0] - other[:, 0]) / exact[:, 1]) ** 2).mean())
                        for other in (exact, program[1]))
        rows.append([study.label(), study.n, name, count]
                    + ["%.1f" % (100 * coverage(ranks, level).mean()) for level in LEVELS]
                    + ["%.3f" % ratio.mean(), "%.3f" % (ratio.std(ddof=1) / np.sqrt(count)),
                       "%.2f" % apart, "%.2f" % noise])
    return rows


def histograms(folder, studies):
    figure, axes = plt.subplots(len(studies), len(NAMES), figsize=(8, 1.35 * len(studies)),
                                sharex=True, squeeze=False)
    bins = 20
    for row, study in zip(axes, studies):
        n = len(study.ranks)
        low, high = stats.binom.ppf([0.005, 0.995], n, 1 / bins) / n * bins
        for j, axis in enumerate(row):
            axis.axhspan(low, high, color="0.87")
            share = np.bincount(study.ranks[:, j] * bins // (DRAWS + 1), minlength=bins) / n * bins
            axis.bar((np.arange(bins) + 0.5) / bins, share, 0.9 / bins, color="#33658a")
            axis.set_yticks([0, 1])
            axis.set_ylim(0, max(1.8, share.max() * 1.05))
            axis.set_xticks([0, 0.5, 1])
            if j == 0:
                axis.set_ylabel("%s\n%d" % (study.label(), study.n), fontsize=7)
    for j, name in enumerate(NAMES):
        axes[0][j].set_title(name, fontsize=9)
        axes[-1][j].set_xlabel("rank of the truth")
    save(figure, folder, "calibration.svg")


# ---- The deviates of the draw ----

def deviates(program, report, options):
    """Standardised draws of one complete data set: moments, cells, dependence, seeds."""
    seeds, draws = (20, 2000) if options.quick else (200, 5000)
    stream = np.random.default_rng(SEED)
    tables = np.array([[0.3, 0.7]] * COVARIATES)
    data = draw_records(stream, 120, Z_RATE, tables, np.array([0.2, 0.6, -0.4, 0.3]),
                        np.array([-1.5, 0.3, 0.2, -0.2]))
    folder = fresh_folder(options.folder, "deviates")
    write_data(os.path.join(folder, "data.csv"), data.y, data.p, data.z, data.x)
    used = data.p == 0
    design = np.column_stack([np.ones(used.sum()), data.x[used]])
    centre, information = mode(data.y[used], design, PRIOR, np.zeros(COVARIATES + 1))
    root = np.linalg.cholesky(information)
    z = np.array([(program.analysis(folder, prior=PRIOR, seed=seed_words(stream),
                                    steps=draws).chain - centre) @ root
                  for _ in range(seeds)])
    count = seeds * draws
    rows, p_values = [], []
    normal = lambda score: 2 * stats.norm.sf(abs(score))
    for j, name in enumerate(NAMES):
        one = z[:, :, j]
        by_seed = one.sum(axis=1) / np.sqrt(draws)
        cells = np.bincount((stats.norm.cdf(one.ravel()) * 100).astype(int), minlength=100)
        product = (one[:, 1:] * one[:, :-1]).sum() / np.sqrt(seeds * (draws - 1))
        figures = [normal(one.sum() / np.sqrt(count)),
                   normal((one ** 2 - 1).sum() / np.sqrt(2 * count)),
                   stats.chisquare(cells).pvalue,
                   2 * min(stats.chi2.sf((by_seed ** 2).sum(), seeds),
                           stats.chi2.cdf((by_seed ** 2).sum(), seeds)),
                   normal(product)]
        others = [normal((one * z[:, :, k]).sum() / np.sqrt(count))
                  for k in range(len(NAMES)) if k != j]
        figures.append(min(1.0, min(others) * len(others)))
        p_values += figures
        rows.append([name, seeds, draws] + ["%.2g" % p for p in figures])
    smallest = min(p_values) * len(p_values)
    report.check("deviates: standard normal and independent", smallest > FALSE_ALARM,
                 "%d draws, smallest p-value, Bonferroni: %.3f" % (count, min(1.0, smallest)))
    report.table("deviates", ["coefficient", "seeds", "draws a seed", "p: mean", "variance",
                              "100 equal cells", "means by seed", "successive draws",
                              "other coefficients"], rows)


# ---- Generalized estimating equations ----

def empirical_covariance(beta, y, x, cluster):
    """By the closed inverse of the exchangeable correlation, without a prior."""
    c = pearson_clusters(beta, y, x, cluster)
    weight = c.alpha / (1 + (c.n - 1) * c.alpha)
    xs = x * c.s[:, None]
    total = np.array([np.bincount(c.index, weights=column) for column in xs.T]).T
    information = xs.T @ xs - (total.T * weight) @ total
    residuals = x * (y - c.mu)[:, None]
    score = np.array([np.bincount(c.index, weights=column) for column in residuals.T]).T
    score -= (weight * c.sums)[:, None] * total
    bread = np.linalg.inv(information)
    return bread @ score.T @ score @ bread


def gee_width(program, report, options):
    rows, z_values = [], []
    sizes = (500, 2000) if options.quick else (500, 2000, 8000, 32000)
    tables = np.array([[0.2, 0.7]] * COVARIATES)
    for n in sizes:
        figures = []
        for r in range(3 if options.quick else 10):
            stream = np.random.default_rng([77, n, r])
            data = draw_records(stream, n, Z_RATE, tables, np.array([-1.0, 0.6, -0.4, 0.3]),
                                np.array([-1.5, 0.3, 0.2, -0.2]))
            # Hospitals of 20 records with an effect of their own on Y.
            hospital = np.arange(n) // 20
            effect = stream.normal(0, 0.7, hospital.max() + 1)[hospital]
            design = np.column_stack([np.ones(n), data.x])
            chance = expit(design @ np.array([-1.0, 0.6, -0.4, 0.3]) + effect)
            data.y = np.maximum(data.p, stream.random(n) < chance).astype(float)
            folder = fresh_folder(options.folder, "gee%d" % n)
            write_data(os.path.join(folder, "data.csv"), data.y, data.p, data.z, data.x,
                       hospital=hospital)
            draws = 400
            result = program.analysis(folder, gee=True, prior=0.0, seed=seed_words(stream),
                                      steps=draws)
            used = data.p == 0
            covariance = empirical_covariance(result.estimate[YX_P0], data.y[used], design[used],
                                              hospital[used])
            wanted = np.diag(np.linalg.inv(covariance))
            z_values += list((result.chain.var(axis=0, ddof=1) / wanted - 1)
                             / np.sqrt(2 / (draws - 1)))
            figures.append([result.ese[YX_P0], result.ese[YX_P0_MCMC], np.sqrt(wanted)])
        ese, seen, wanted = np.median(figures, axis=0)
        for j in (0, 1):
            rows.append([n, NAMES[j], "%.4f" % ese[j], "%.3g" % wanted[j], "%.3g" % seen[j],
                         "%.3g" % (seen[j] / ese[j])])
    # 400 draws: the standardised sample variance is a chi-squared number; its upper tail is longer
    # than the normal one, so the limit is that of the chi-squared law.
    limit = (stats.chi2.isf(FALSE_ALARM / 2 / len(z_values), 399) / 399 - 1) / np.sqrt(2 / 399)
    largest = np.abs(z_values).max()
    report.check("GEE: draws have the inverse of the empirical covariance", largest < limit,
                 "largest |z| %.2f, limit %.2f" % (largest, limit))
    report.table("gee_draws", ["records", "coefficient", "empirical error, fourth block",
                               "sd by the inverse", "sd of the draws, fifth block",
                               "fifth / fourth"], rows)


def main():
    program, report, options = begin("calibration")
    # Share of missing cells, records, replicates, and how many by the independent samplers too.
    if options.quick:
        plan = [(0.0, 200, 100, 0), (0.0, 800, 50, 0), (0.15, 200, 100, 12), (0.4, 800, 40, 0)]
    else:
        plan = [(0.0, 200, 600, 0), (0.0, 800, 600, 0), (0.0, 3200, 300, 0),
                (0.15, 200, 500, 30), (0.15, 800, 400, 0), (0.15, 3200, 120, 0),
                (0.4, 800, 300, 60), (0.4, 3200, 100, 0)]
    variants = [("program's approximations", {}), ("exact draw", {"exact": True}),
                ("exact posterior", {"exact": True, "learn": True})]
    deviates(program, report, options)
    rows, attribution, studies, summary = [], [], [], []
    for missing, n, replicates, compare in plan:
        folder = os.path.join(options.folder, "study%d" % len(studies))
        study = Study(program, folder, n, missing, replicates, SEED)
        study.run(variants, compare)
        studies.append(study)
        rows += rows_of(study)
        error = 100 * np.sqrt(0.95 * 0.05 / len(study.ranks) / len(NAMES))
        summary.append([study.label(), n, len(study.ranks), study.skipped]
                       + ["%.1f" % (100 * coverage(study.ranks, level).mean()) for level in LEVELS]
                       + ["%.1f" % error])
        if not missing:
            check_complete(report, study)
        if compare:
            check_missing(report, study)
            attribution += attribution_rows(study)
        print("%s %d: %s, %.0f s" % (study.label(), n, percent(
            [coverage(study.ranks, v).mean() for v in LEVELS]), time.time() - report.started),
              flush=True)
    gee_width(program, report, options)
    histograms(options.plots, studies)
    heads = ["50 %", "80 %", "95 %"]
    report.table("calibration_summary", ["data", "records", "replicates", "left out"] + heads
                 + ["error of the last"], summary)
    report.table("calibration_attribution", ["data", "records", "sampler", "replicates"] + heads
                 + ["sd / sd of the exact posterior", "error",
                    "means apart from the exact posterior",
                    "from the program"], attribution)
    report.table("calibration", ["data", "records", "replicates", "coefficient"] + heads
                 + ["mean rank - 0.5", "p, uniform"], rows)
    report.finish(program)


if __name__ == "__main__":
    main()
