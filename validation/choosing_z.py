#!/usr/bin/python3
"""What the choice of Z does to the coefficients when the covariates are correlated.

The program imputes a missing X from its own Z, from Y and from P; other covariates enter only
through Y and P. Here the covariates of a record are correlated: some patients are frail and have
every condition more often. Z is then chosen in five ways.

    proxy       Z is 1 for 85 % of the X = 1 and for 5 % of the X = 0
    unrelated   Z is 1 for 30 % of the records, whatever X
    copy        Z is X, with 0 where X is missing
    constant    the first Z is 0 everywhere, the others are proxies
    shared      the first Z is the second, which is a proxy, as are the others

Cells of X are deleted completely at random; Y, P and Z are known. All rates and all kinds of Z use
the same records and, for a rate, the same deleted cells, so that each estimate is compared with
that of the same records before any cell was deleted: this difference is what the missing cells do.
Beside it stands R's mice (choosing_z.R), which imputes each X from all other columns.

What is checked: with nothing missing the truth is recovered (within Monte Carlo error); with a copy
all [X|Z] tables are 0 and 1, and the chain is that of a file with 0 in the missing cells, fitted
here by Newton's method; with a constant or shared Z one variable of the two is removed in every
run; from 20 % on a proxy moves the coefficients less than an unrelated Z.
"""
import csv
import os
from types import SimpleNamespace

import numpy as np
from scipy import stats

from model import expit, log_odds
from program import YX_P0, YX_P0_MCMC, fresh_folder, names_of, seed_words, write_data
from report import begin, rscript
from sampler import mode

TRUTH = np.log(2.25)  # of every covariate in beta_Y
IN_P = 0.4            # of every covariate in beta_P
Y_RATE, P_RATE = 0.06, 0.04  # of records without any condition
# Share of frail patients; chance of a condition for the others and for them. phi is about 0.39.
SETTINGS = {"A": SimpleNamespace(variables=2, frail=0.5, chances=(0.1875, 0.8125)),
            "B": SimpleNamespace(variables=4, frail=0.4, chances=(0.07, 0.66))}
RATES = (0.05, 0.20, 0.40)
MICE_RATES = (0.20, 0.40)
KEPT = ("proxy", "unrelated", "copy")
REMOVING = ("constant", "shared")
REMOVING_RATES = (0.0, 0.20)
PROXY = (0.05, 0.85)  # chance of Z = 1 where X is 0, and where it is 1
UNRELATED = 0.30
PRIOR = 0.01
FALSE_ALARM = 0.001


def draw(stream, setting, n):
    frail = stream.random(n) < setting.frail
    chance = np.where(frail, setting.chances[1], setting.chances[0])
    x = (stream.random((n, setting.variables)) < chance[:, None]).astype(float)
    score = x.sum(axis=1)
    p = (stream.random(n) < expit(log_odds(P_RATE) + IN_P * score)).astype(float)
    y = np.maximum(p, stream.random(n) < expit(log_odds(Y_RATE) + TRUTH * score)).astype(float)
    proxy = (stream.random(x.shape) < np.where(x == 1, PROXY[1], PROXY[0])).astype(float)
    unrelated = (stream.random(x.shape) < UNRELATED).astype(float)
    return SimpleNamespace(y=y, p=p, x=x, proxy=proxy, unrelated=unrelated,
                           order=stream.random(x.shape))


def hidden(data, rate):
    """X with a share of its cells deleted; a lower rate deletes a part of the same cells."""
    x = data.x.copy()
    x[data.order < rate] = np.nan
    return x


def signs(data, x, kind):
    if kind == "copy":
        return np.nan_to_num(x)
    z = (data.unrelated if kind == "unrelated" else data.proxy).copy()
    if kind == "constant":
        z[:, 0] = 0
    if kind == "shared":
        z[:, 0] = z[:, 1]
    return z


class Study:
    def __init__(self, program, options):
        self.program, self.quick = program, options.quick
        self.records, self.replicates, self.with_mice, self.burnin, self.steps = (
            (3000, 4, 2, 25, 100) if options.quick else (6000, 40, 8, 25, 100))
        self.folder = fresh_folder(options.folder, "run")
        self.mice_folder = fresh_folder(options.folder, "mice")
        self.runs = {}      # (setting, kind, rate): one result per replicate
        self.zero_fits = {}  # (setting, rate): mode with 0 in the missing cells, per replicate
        self.mice = {}      # (setting, kind, rate): (estimates, errors) per replicate
        self.phi = {name: [] for name in SETTINGS}
        self.mice_files = []

    def analyse(self, name, kind, rate, data, x, stream):
        z = signs(data, x, kind)
        write_data(os.path.join(self.folder, "data.csv"), data.y, data.p, z, x)
        result = self.program.analysis(self.folder, prior=PRIOR, seed=seed_words(stream),
                                       burnin=self.burnin, steps=self.steps, tolerance=1e-6)
        self.runs.setdefault((name, kind, rate), []).append(result)
        return z

    def replicate(self, name, r):
        setting = SETTINGS[name]
        stream = np.random.default_rng([8, setting.variables, r])
        data = draw(stream, setting, self.records)
        pairs = np.corrcoef(data.x.T)[np.triu_indices(setting.variables, 1)]
        self.phi[name].append(pairs.mean())
        self.analyse(name, "proxy", 0.0, data, data.x, stream)
        for kind in REMOVING:
            for rate in REMOVING_RATES:
                self.analyse(name, kind, rate, data, hidden(data, rate), stream)
        for rate in RATES:
            x = hidden(data, rate)
            home = data.p == 0
            design = np.column_stack([np.ones(self.records), np.nan_to_num(x)])[home]
            fit, _ = mode(data.y[home], design, PRIOR, np.zeros(design.shape[1]))
            self.zero_fits.setdefault((name, rate), []).append(fit)
            for kind in KEPT:
                z = self.analyse(name, kind, rate, data, x, stream)
                # mice sees that a copy and its X are collinear, and then imputes no such X.
                if kind != "copy" and rate in MICE_RATES and r < self.with_mice:
                    file = "%s-%s-%.0f-%d.csv" % (name, kind, 100 * rate, r)
                    write_data(os.path.join(self.mice_folder, file), data.y, data.p, z, x)
                    self.mice_files.append(((name, kind, rate), file, r + 1))

    def run_mice(self):
        with open(os.path.join(self.mice_folder, "files.csv"), "w") as f:
            f.write("file,seed\n" + "".join("%s,%d\n" % m[1:] for m in self.mice_files))
        version = rscript("choosing_z.R", self.mice_folder).strip()
        by_file = {}
        with open(os.path.join(self.mice_folder, "mice.csv"), newline="") as f:
            for row in csv.DictReader(f):
                by_file.setdefault(row["file"], []).append(
                    (float(row["estimate"]), float(row["error"])))
        for cell, file, _ in self.mice_files:
            self.mice.setdefault(cell, []).append(np.array(by_file[file]).T)
        return version

    def blocks(self, cell, block):
        """Estimates and errors of the covariates: one pair of arrays per replicate."""
        return [(r.estimate[block][1:], r.mse[block][1:]) for r in self.runs[cell]]

    def moved(self, name, results):
        """Mean estimate, its distance from nothing missing, that one's Monte Carlo error, coverage.

        The average over the covariates, all of which have the same true coefficient.
        """
        whole = [e.mean() for e, _ in self.blocks((name, "proxy", 0.0), YX_P0_MCMC)]
        mean = np.array([e.mean() for e, _ in results])
        apart = mean - whole[:len(mean)]
        noise = apart.std(ddof=1) / np.sqrt(len(apart)) if len(apart) > 1 else np.nan
        covered = np.mean([np.abs(e - TRUTH) <= 1.96 * s for e, s in results])
        return SimpleNamespace(estimate=mean.mean(), apart=apart.mean(), noise=noise,
                               coverage=covered)


def check(study, report):
    runs, replicates = study.runs, study.replicates
    z = []
    for name in SETTINGS:
        mean = np.array([e.mean() for e, _ in study.blocks((name, "proxy", 0.0), YX_P0_MCMC)])
        z.append(abs(mean.mean() - TRUTH) / (mean.std(ddof=1) / np.sqrt(replicates)))
    limit = stats.t.isf(FALSE_ALARM / 2 / len(z), replicates - 1)
    report.check("nothing missing: the truth is recovered", max(z) < limit,
                 "largest |z| %.2f, limit %.2f" % (max(z), limit))
    copies = [r for (_, kind, _), results in runs.items() if kind == "copy" for r in results]
    report.check("copy: every [X|Z] table is 0 and 1",
                 all((r.tables == [0.0, 1.0]).all() for r in copies), "%d runs" % len(copies))
    # Nothing is left to chance in the imputation, so the draws are independent and normal.
    z = [np.abs((r.estimate[YX_P0_MCMC] - fit) / (r.mse[YX_P0_MCMC] / np.sqrt(study.steps)))
         for (name, rate), fits in study.zero_fits.items()
         for r, fit in zip(runs[name, "copy", rate], fits)]
    limit = stats.t.isf(FALSE_ALARM / 2 / sum(len(v) for v in z), study.steps - 1)
    worst = max(v.max() for v in z)
    report.check("copy: the chain is that of a file with 0 in the missing cells", worst < limit,
                 "largest |z| %.2f, limit %.2f" % (worst, limit))
    for kind in REMOVING:
        lost = [removed(r, SETTINGS[name].variables)
                for (name, k, _), results in runs.items() if k == kind for r in results]
        wanted = ({"X1"},) if kind == "constant" else ({"X1"}, {"X2"})
        report.check("%s Z: one variable of the two is removed" % kind,
                     all(names in wanted for names in lost), "%d runs" % len(lost))
    gains = [abs(study.moved(name, study.blocks((name, "unrelated", rate), YX_P0_MCMC)).apart)
             - abs(study.moved(name, study.blocks((name, "proxy", rate), YX_P0_MCMC)).apart)
             for name in SETTINGS for rate in MICE_RATES]
    report.check("from 20 %: a proxy moves the coefficients less than an unrelated Z",
                 min(gains) > 0, "smallest difference %.3f" % min(gains))


def removed(result, variables):
    return set(names_of(variables)[1]) - set(result.x_names)


def tables(study, report, version):
    settings, figures, summary, losses = [], [], [], []
    for name, setting in SETTINGS.items():
        share = setting.frail * setting.chances[1] + (1 - setting.frail) * setting.chances[0]
        settings.append([name, setting.variables, "%.0f %%" % (100 * share),
                         "%.2f" % np.mean(study.phi[name]), study.records, study.replicates,
                         study.with_mice, study.burnin, study.steps])
        whole = study.moved(name, study.blocks((name, "proxy", 0.0), YX_P0_MCMC))
        figures.append([name, "any", "0", "100", "%.3f" % whole.estimate, "", "",
                        "%.0f" % (100 * whole.coverage), "", "", "", ""])
        for kind in KEPT:
            line = [name, kind, "%.2f" % whole.estimate]
            for rate in RATES:
                cell = (name, kind, rate)
                chain = study.moved(name, study.blocks(cell, YX_P0_MCMC))
                row = [name, kind, "%.0f" % (100 * rate),
                       "%.0f" % (100 * (1 - rate) ** setting.variables),
                       "%.3f" % chain.estimate, "%+.3f" % chain.apart, "%.3f" % chain.noise,
                       "%.0f" % (100 * chain.coverage)]
                line.append("%.2f" % chain.estimate)
                if cell in study.mice:
                    mice = study.moved(name, study.mice[cell])
                    row += ["%.3f" % mice.estimate, "%+.3f" % mice.apart, "%.3f" % mice.noise,
                            "%.0f" % (100 * mice.coverage)]
                    if rate == RATES[-1]:
                        line.append("%.2f" % mice.estimate)
                else:
                    row += [""] * 4
                    line += [""] if rate == RATES[-1] else []
                figures.append(row)
            summary.append(line)
        for kind in REMOVING:
            for rate in REMOVING_RATES:
                results = study.runs[name, kind, rate]
                names = [removed(r, setting.variables) for r in results]
                stays = np.array([r.estimate[YX_P0_MCMC][1] for r in results])
                losses.append([name, kind, "%.0f" % (100 * rate), len(results),
                               sum("X1" in n for n in names), sum("X2" in n for n in names),
                               "%.3f" % stays.mean(),
                               "%.3f" % (stays.std(ddof=1) / np.sqrt(len(stays)))])
    report.table("choosing_z_size", ["setting", "covariates", "X = 1", "phi of two covariates",
                                     "records", "replicates", "of these with mice %s" % version,
                                     "burn-in", "steps"], settings)
    report.table("choosing_z", ["setting", "Z", "missing, %", "complete records, %", "chain",
                                "moved by", "error", "cover %", "mice", "moved by", "error",
                                "cover %"], figures)
    report.table("choosing_z_removed", ["setting", "Z", "missing, %", "runs", "X1 removed",
                                        "X2 removed", "coefficient of the one that stays",
                                        "error"], losses)
    report.table("choosing_z_summary", ["setting", "Z", "nothing missing"]
                 + ["%.0f %% missing" % (100 * r) for r in RATES]
                 + ["mice, %.0f %% missing" % (100 * RATES[-1])], summary)


def main():
    program, report, options = begin("choosing_z")
    study = Study(program, options)
    for name in SETTINGS:
        for r in range(study.replicates):
            study.replicate(name, r)
        print("setting", name, "done", flush=True)
    version = study.run_mice()
    check(study, report)
    tables(study, report, version)
    report.finish(program)


if __name__ == "__main__":
    main()
