#!/usr/bin/python3
"""The six C-statistics of a Validation against the area under the ROC curve by R's pROC.

Analysis, Prediction and Validation run on public data, on data from the model with missing cells,
and on predictions made by hand (few distinct values, so that most pairs are ties). pROC receives
the responses and the printed predictions.

E[Y|X,P=0] and E[Y|X,P=0]-MCMC are means over imputation passes of the areas among the records with
P = 0 in that pass. Where P is missing somewhere, the passes are repeated by the second
implementation under tests/reference, which reproduces the program's random numbers, so that pROC
sees the same records in each pass.

Equal means: the same six-digit text.
"""
import csv
import os
import shutil
import tempfile
import sys
from types import SimpleNamespace

import numpy as np

from model import draw_records, hide
from program import PREDICTIONS, fresh_folder, write_data
from real_data import fetch, load
from recovery import BETA_P, BETA_Y, TABLES, Z_RATE
from report import REFERENCE, begin, rscript

sys.path.insert(0, REFERENCE)
from coefficient_file import read_coefficient_file, reconcile_variables  # noqa: E402
from data_set import read_data_file  # noqa: E402
from predictions import sweep  # noqa: E402
from random_generator import RandomGenerator  # noqa: E402

SEED = (987654321, 123456789)


def quiet():
    """A console for the second implementation that prints nothing."""
    return SimpleNamespace(out=lambda text: None, log=lambda line: None)


def passes(folder, burnin, steps):
    """Per averaged pass the flags of the records with P = 0 (passes x records)."""
    here = os.getcwd()
    os.chdir(folder)
    try:
        data = read_data_file("data.csv", 1, quiet())
        results = read_coefficient_file("out/coefficients.csv")
    finally:
        os.chdir(here)
    reconcile_variables(data, results, quiet())
    if data.complete_count == data.records:
        return np.array([~data.p])
    generator = RandomGenerator()
    generator.seed(*SEED)
    data.prepare_imputation()
    flags = []
    for i in range(burnin + steps):
        sweep(data, results, generator)
        if i >= burnin:
            flags.append(~data.p)
    return np.array(flags)


def write_job(folder, name, response, prediction, flags=()):
    table = np.column_stack([response, prediction] + [np.asarray(f, float) for f in flags])
    header = ",".join(["response", "prediction"] + ["f%d" % k for k in range(len(flags))])
    np.savetxt(os.path.join(folder, name), table, fmt="%.10g", delimiter=",", header=header,
               comments="")


class Case:
    def __init__(self, name, y, p, z, x, handmade=None):
        self.name, self.y, self.p, self.z, self.x = name, y, p, z, x
        self.handmade = handmade  # columns of predictions that replace the program's own

    def run(self, program, options, burnin, steps):
        """Runs the chain; returns the printed statistics and the names of pROC's jobs."""
        os.makedirs(options.folder, exist_ok=True)
        scratch = tempfile.mkdtemp(dir=options.folder)
        folder = fresh_folder(scratch, self.name.replace(" ", "_").replace(",", ""))
        write_data(os.path.join(folder, "data.csv"), self.y, self.p, self.z, self.x)
        program.analysis(folder, prior=0.1, seed=SEED, burnin=20, steps=50)
        columns = program.prediction(folder, seed=SEED, burnin=burnin, steps=steps)
        if self.handmade is not None:
            columns.update(self.handmade)
            path = os.path.join(folder, "out", "individual.csv")
            with open(path, newline="") as f:
                rows = list(csv.reader(f))
            for k, name in enumerate(rows[0]):
                if name in self.handmade:
                    for i, row in enumerate(rows[1:]):
                        row[k] = "%.6g" % self.handmade[name][i]
            with open(path, "w", newline="") as f:
                csv.writer(f, lineterminator="\n").writerows(rows)
        printed = program.validation(folder, seed=SEED, burnin=burnin, steps=steps)
        flags = passes(folder, burnin, steps)
        complete = ~(np.isnan(self.x).any(axis=1) | np.isnan(self.p))
        jobs = {}
        for name in PREDICTIONS:
            job = "%s_%d.csv" % (os.path.basename(folder), PREDICTIONS.index(name))
            if name in ("E[Y|Z]", "E[Y|X]"):
                write_job(options.folder, job, self.y, columns[name])
            elif name.startswith("E[P"):
                write_job(options.folder, job, self.p[complete], columns[name][complete])
            else:
                write_job(options.folder, job, self.y, columns[name], flags)
            jobs[name] = job
        self.records, self.incomplete = len(self.y), int((~complete).sum())
        self.missing_p = int(np.isnan(self.p).sum())
        shutil.rmtree(scratch)
        return printed, jobs


def cases(options):
    stream = np.random.default_rng(31)
    made = []
    for s in fetch(options.folder):
        if s.kind == "logistic":
            d = load(options.folder, s.name)
            made.append(Case(s.name, d.y, d.p, d.z, d.x))
            if s.name in ("Pima", "birthwt"):
                p = d.p.copy()
                p[::7] = np.nan
                made.append(Case(s.name + ", P hidden", d.y, p, d.z, d.x))
    size = 400 if options.quick else 3000
    for missing in (0.0, 0.05, 0.2):
        d = hide(stream, draw_records(stream, size, Z_RATE, TABLES + 0.05, BETA_Y + 0.5, BETA_P),
                 missing, missing)
        made.append(Case("model, %.0f %% missing" % (100 * missing), d.y, d.p, d.z, d.x))
        handmade = {name: stream.integers(0, 4, size) / 4 for name in PREDICTIONS}
        made.append(Case("ties, %.0f %% missing" % (100 * missing), d.y, d.p, d.z, d.x, handmade))
    return made


def main():
    program, report, options = begin("c_statistics")
    burnin, steps = (3, 5) if options.quick else (5, 20)
    done = []
    for case in cases(options):
        done.append((case,) + case.run(program, options, burnin, steps))
    with open(os.path.join(options.folder, "jobs.csv"), "w") as f:
        f.write("file\n" + "".join(job + "\n" for _, _, jobs in done for job in jobs.values()))
    rscript("c_statistics.R", options.folder)
    with open(os.path.join(options.folder, "auc.csv"), newline="") as f:
        area = {row["file"]: float(row["auc"]) for row in csv.DictReader(f)}
    rows = []
    for case, printed, jobs in done:
        wrong = [name for name in PREDICTIONS if printed[name] != "%.6g" % area[jobs[name]]]
        report.check("%s: six statistics" % case.name, not wrong, ", ".join(
            "%s printed %s, pROC %.10g" % (n, printed[n], area[jobs[n]]) for n in wrong))
        rows.append([case.name, case.records, case.incomplete, case.missing_p]
                    + [printed[name] for name in PREDICTIONS] + [len(wrong)])
    report.table("c_statistics", ["data", "records", "incomplete", "P missing"]
                 + [name.replace("|", "\\|") for name in PREDICTIONS] + ["not equal to pROC"], rows)
    report.table("c_statistics_passes", ["burn-in passes", "averaged passes"], [[burnin, steps]])
    report.finish(program)


if __name__ == "__main__":
    main()
