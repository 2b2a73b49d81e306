"""Runs the built program on definition files in scratch folders and reads what it writes.

Every figure of the validation comes through here: data are written as a CSV file, a definition as
XML, the executable is started as a user would start it, and its output files are parsed. Nothing of
the program is linked or imported.
"""
import csv
import io
import os
import re
import subprocess
from types import SimpleNamespace

import numpy as np

BLOCKS = ["[P|X]", "[Y|Z]", "[Y|X]", "[Y|X,P=0]", "[Y|X,P=0,MCMC]"]
PX, YZ, YX, YX_P0, YX_P0_MCMC = range(5)
PREDICTIONS = ["E[Y|Z]", "E[Y|X]", "E[Y|X,P=0]", "E[Y|X,P=0]-MCMC", "E[P|X]", "E[P|YPXZ]"]

NAMESPACE = 'xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"'


def element(name, *content):
    return "<%s>%s</%s>\n" % (name, "".join(str(c) for c in content), name)


def root(name, *content):
    return "<%s %s>\n%s</%s>\n" % (name, NAMESPACE, "".join(content), name)


def fit_settings(name, prior, tolerance=1e-12, iterations=200):
    return element(name, element("Tolerance", repr(tolerance)),
                   element("MaxIterations", iterations), element("PriorPrecision", repr(prior)))


def sampling(seed, burnin, steps, thinning):
    words = element("Seed", *[element("Element", word) for word in seed])
    return element("Mcmc", '<Seed xsi:type="Vector">', words, "</Seed>\n",
                   element("Thinning", thinning), element("Burnin", burnin),
                   element("Steps", steps))


def seed_words(stream):
    """Two 32-bit words for the program's generator from a numpy generator."""
    return [int(w) for w in stream.integers(2, 2 ** 32, size=2)]


def cells(table):
    """Rows of comma-separated text; NaN, a missing cell, is empty."""
    text = np.full(np.shape(table), "", dtype="U1")
    table = np.asarray(table, dtype=float)
    text[table == 0] = "0"
    text[table == 1] = "1"
    return [",".join(row) for row in text]


def write_data(path, y, indicators, z, x, hospital=None, names=None):
    """One data file. `indicators`, `z`, `x` are records x columns; NaN marks a missing cell."""
    n, v = np.shape(x)
    if hospital is None:
        hospital = np.arange(n) // max(1, n // 10)
    indicators = np.reshape(indicators, (n, -1)) if indicators is not None else np.zeros((n, 0))
    names = names or (["Z%d" % (j + 1) for j in range(v)], ["X%d" % (j + 1) for j in range(v)])
    header = ["Key", "Hospital", "Y"] + ["P%d" % (k + 1) for k in range(indicators.shape[1])]
    table = np.column_stack([np.asarray(y, dtype=float), indicators, z, x])
    lines = [",".join(header + names[0] + names[1])]
    lines += ["%d,H%s,%s" % row for row in zip(range(n), hospital, cells(table))]
    with open(path, "w", encoding="ascii", newline="") as f:
        f.write("\n".join(lines) + "\n")


class Program:
    """The executable under test."""

    def __init__(self, path):
        self.path = os.path.abspath(path)
        self.runs = 0

    def start(self, folder, definition):
        """One process in `folder`. The program expects a backslash in the path it is started by."""
        self.runs += 1
        return subprocess.run(["validation\\hovar", definition], executable=self.path, cwd=folder,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, encoding="latin-1", check=False)

    def run(self, folder, definition):
        done = self.start(folder, definition)
        if done.returncode != 0:
            raise RuntimeError("%s in %s: %s" % (definition, folder, done.stderr.strip()))
        return done

    def analysis(self, folder, indicators=1, gee=False, prior=0.0, prior_mcmc=None, seed=(2, 3),
                 burnin=0, steps=0, thinning=1, tolerance=1e-12, iterations=200, dependence=1e-9):
        """An Analysis of data.csv in `folder`. Returns coefficients, chain, log and texts."""
        text = root(
            "Analysis",
            element("Input", element("Data", "data.csv"),
                    element("NumberOfPoaIndicators", indicators)),
            element("Output", element("Folder", "out"),
                    element("RegressionCoefficients", "coefficients.csv"),
                    element("McmcSubFolder", "mcmc"), element("LogFile", "analysis.log")),
            element("Regression",
                    element("UseGeneralizedEstimatingEquations", "true" if gee else "false"),
                    element("LinearDependence", element("Tolerance", repr(dependence))),
                    fit_settings("Parameters", prior, tolerance, iterations),
                    fit_settings("ParametersMcmc", prior if prior_mcmc is None else prior_mcmc,
                                 tolerance, iterations)),
            sampling(seed, burnin, steps, thinning))
        write_text(folder, "analysis.xml", text)
        done = self.run(folder, "analysis.xml")
        out = os.path.join(folder, "out")
        result = read_coefficients(os.path.join(out, "coefficients.csv"))
        result.stdout, result.stderr = done.stdout, done.stderr
        result.log = read_text(os.path.join(out, "analysis.log"))
        result.chain = read_chain(os.path.join(out, "mcmc", "Chain.csv"))
        return result

    def prediction(self, folder, indicators=1, seed=(2, 3), burnin=0, steps=1,
                   coefficients="out/coefficients.csv", name="prediction"):
        text = root(
            "Prediction",
            element("Input", element("Data", "data.csv"),
                    element("NumberOfPoaIndicators", indicators),
                    element("RegressionCoefficients", coefficients)),
            element("Output", element("Folder", "out"),
                    element("IndividualPredictions", "individual.csv"),
                    element("HospitalPredictions", "hospital.csv"),
                    element("LogFile", name + ".log")),
            sampling(seed, burnin, steps, 1))
        write_text(folder, name + ".xml", text)
        self.run(folder, name + ".xml")
        return read_columns(os.path.join(folder, "out", "individual.csv"))

    def validation(self, folder, indicators=1, seed=(2, 3), burnin=0, steps=1,
                   coefficients="out/coefficients.csv", individual="out/individual.csv"):
        """The six C-statistics as printed."""
        text = root(
            "Validation",
            element("Input", element("Data", "data.csv"),
                    element("NumberOfPoaIndicators", indicators),
                    element("RegressionCoefficients", coefficients),
                    element("IndividualPredictions", individual)),
            element("Output", element("Folder", "out"), element("CStatistics", "cstatistics.csv"),
                    element("LogFile", "validation.log")),
            sampling(seed, burnin, steps, 1))
        write_text(folder, "validation.xml", text)
        self.run(folder, "validation.xml")
        with open(os.path.join(folder, "out", "cstatistics.csv"), newline="") as f:
            return dict(list(csv.reader(f))[1:])


def write_text(folder, name, text):
    with open(os.path.join(folder, name), "w", encoding="latin-1", newline="") as f:
        f.write(text)


def read_text(path):
    with open(path, encoding="latin-1", newline="") as f:
        return f.read()


def fresh_folder(*parts):
    """Makes the folder with an output folder `out` in it."""
    folder = os.path.join(*parts)
    os.makedirs(os.path.join(folder, "out"), exist_ok=True)
    return folder


def read_coefficients(path):
    """`x_names`, `z_names`, `tables` (t0, t1 per variable but the intercept), and of every block
    `estimate`, `mse`, `ese` (NaN where the cell is empty); `text[block]` has the cells as printed.
    """
    with open(path, newline="", encoding="latin-1") as f:
        rows = list(csv.reader(f))[1:]
    number = lambda cell: float(cell) if cell else np.nan
    blocks = [np.array([[number(c) for c in row[6 + 3 * b:9 + 3 * b]] for row in rows])
              for b in range(5)]
    return SimpleNamespace(
        x_names=[row[0] for row in rows], z_names=[row[1] for row in rows],
        tables=np.array([[float(row[3]), float(row[5])] for row in rows[1:]]).reshape(-1, 2),
        estimate=[b[:, 0] for b in blocks], mse=[b[:, 1] for b in blocks],
        ese=[b[:, 2] for b in blocks],
        text=[[row[6 + 3 * b:9 + 3 * b] for row in rows] for b in range(5)])


def write_coefficients(path, tables, blocks, names):
    """A coefficient file made by hand, for a Prediction or a Validation.

    `tables` holds (t0, t1) per variable but the intercept, `blocks` five vectors of estimates,
    `names` the pair (Z names, X names) without the intercept.
    """
    header = ["Variables Names", "", "[X|Z]", "", "", ""]
    for block in BLOCKS:
        header += ['"%s"' % block if "," in block else block, "mse", "ese"]
    lines = [",".join(header)]
    for j in range(len(blocks[0])):
        row = ["XIntercept", "ZIntercept"] if j == 0 else [names[1][j - 1], names[0][j - 1]]
        if j == 0:
            row += [""] * 4
        else:
            t0, t1 = tables[j - 1]
            row += ["%r" % (1 - t0), "%r" % t0, "%r" % (1 - t1), "%r" % t1]
        for block in blocks:
            row += ["%r" % float(block[j]), "", ""]
        lines.append(",".join(row))
    with open(path, "w", encoding="ascii", newline="") as f:
        f.write("\n".join(lines) + "\n")


def read_chain(path):
    """Kept draws x coefficients, without the step numbers."""
    head, _, body = read_text(path).partition("\n")
    columns = head.count(",") + 1
    values = np.array(re.split(r"[,\n]", body.rstrip("\n")) if body else [], dtype=float)
    return values.reshape(-1, columns)[:, 1:]


def read_columns(path):
    """The numeric columns of the individual predictions by header; empty cells are NaN."""
    rows = list(csv.reader(io.StringIO(read_text(path))))
    columns = {}
    for k, name in enumerate(rows[0]):
        if k >= 2:
            columns[name] = np.array([float(row[k]) if row[k] else np.nan for row in rows[1:]])
    return columns


def names_of(v):
    return ["Z%d" % (j + 1) for j in range(v)], ["X%d" % (j + 1) for j in range(v)]
