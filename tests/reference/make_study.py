#!/usr/bin/python3
"""Makes the small studies below data/ and everything the program must write for them.

    make_study.py

Seeded and deterministic: running it again gives the same bytes. The expected files come from
reference.py, which shares no code with the program. Every study is also computed three more times
with exp() wrong by up to 1e-14 of its value (at 0 it is 1 everywhere); the script stops when any printed
digit depends on that, so the files can be compared byte for byte on every platform.
"""
import math
import os
import random
import re
import shutil
import tempfile

import hierarchical_model
import predictions
import reference
import regression
from random_generator import RandomGenerator
from text_files import quoted

HERE = os.path.dirname(os.path.abspath(__file__))
DATA = os.path.join(HERE, "data")
TIMING = re.compile(r"(MCMC: \d+ iterations in )\S+( seconds)")
SEEDS = (362436069, 521288629)

MCMC = """  <Mcmc>
    <Seed xsi:type="Vector">
      <Seed>
        <Element>%d</Element>
        <Element>%d</Element>
      </Seed>
    </Seed>
    <Thinning>%d</Thinning>
    <Burnin>%d</Burnin>
    <Steps>%d</Steps>
  </Mcmc>
"""
HEAD = """<?xml version="1.0" encoding="utf-8"?>
<%s xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance">
"""


def element(indent, name, value):
    return "%s<%s>%s</%s>\n" % (" " * indent, name, value, name)


def group(indent, name, children):
    blanks = " " * indent
    return (blanks + "<%s>\n" % name
            + "".join(element(indent + 2, n, v) for n, v in children) + blanks + "</%s>\n" % name)


def parameters(name, values):
    return group(4, name, zip(("Tolerance", "MaxIterations", "PriorPrecision"), values))


def analysis_xml(log, gee, fits, fits_mcmc, seeds, run_length, indicators,
                 coefficients="coefficients.csv", mcmc_folder="mcmc"):
    return (HEAD % "Analysis"
            + group(2, "Input", [("Data", "data.csv"), ("NumberOfPoaIndicators", indicators)])
            + group(2, "Output", [("Folder", "out"), ("RegressionCoefficients", coefficients),
                                  ("McmcSubFolder", mcmc_folder), ("LogFile", log)])
            + "  <Regression>\n"
            + element(4, "UseGeneralizedEstimatingEquations", "true" if gee else "false")
            + group(4, "LinearDependence", [("Tolerance", "1e-9")])
            + parameters("Parameters", fits) + parameters("ParametersMcmc", fits_mcmc)
            + "  </Regression>\n" + MCMC % (tuple(seeds) + tuple(run_length)) + "</Analysis>\n")


def prediction_xml(seeds, run_length, indicators):
    return (HEAD % "Prediction"
            + group(2, "Input", [("Data", "data.csv"), ("NumberOfPoaIndicators", indicators),
                                 ("RegressionCoefficients", "out\\coefficients.csv")])
            + group(2, "Output", [("Folder", "out"), ("IndividualPredictions", "individual.csv"),
                                  ("HospitalPredictions", "hospital.csv"),
                                  ("LogFile", "prediction.log")])
            + MCMC % (tuple(seeds) + tuple(run_length)) + "</Prediction>\n")


def validation_xml(seeds, run_length, indicators):
    return (HEAD % "Validation"
            + group(2, "Input", [("Data", "data.csv"), ("NumberOfPoaIndicators", indicators),
                                 ("RegressionCoefficients", "out\\coefficients.csv"),
                                 ("IndividualPredictions", "out\\individual.csv")])
            + group(2, "Output", [("Folder", "out"), ("CStatistics", "cstatistics.csv"),
                                  ("LogFile", "validation.log")])
            + MCMC % (tuple(seeds) + tuple(run_length)) + "</Validation>\n")


def batch_xml(names):
    return ("<Batch>\n  <Simulations>\n"
            + "".join(element(4, "Simulation", name) for name in names)
            + "  </Simulations>\n</Batch>\n")


# A variable is (Z name, X name, prevalence of Z, P(X = 1 | Z = 0), P(X = 1 | Z = 1)). The X cells
# of "A", "B" and "C" are drawn together: none or two of them are 1, so the sum is 0 or 2, and "D"
# is 1 exactly where two are, hence 2 D = A + B + C with one weight clearly largest.
def simulate(rng, hospitals, size, variables, spread, missing, indicators, planted):
    """Rows of cells, grouped by hospital. `planted` lists records with Y = 0 and P = 1."""
    names = [v[1] for v in variables]
    effects = {n: rng.uniform(-0.8, 1.2) for n in names}
    rows = []
    for h, identity in enumerate(hospitals):
        shift = rng.gauss(0, spread)
        for _ in range(size(h)):
            z = [int(rng.random() < v[2]) for v in variables]
            x = [int(rng.random() < (v[4] if zj else v[3])) for v, zj in zip(variables, z)]
            if "A" in names:
                at = names.index("A")
                pair = rng.random() < 0.55
                out = rng.choices((0, 1, 2), weights=[2 - z[at + k] for k in range(3)])[0]
                for k in range(3):
                    x[at + k] = int(pair and k != out)
                x[at + 3] = int(pair)
            eta = -1.0 + shift + sum(effects[n] * xj for n, xj in zip(names, x))
            p = int(rng.random() < regression.logistic(-2.0 + shift / 2 + 0.7 * x[0] - 0.4 * x[-1]))
            y = int(p or rng.random() < regression.logistic(eta))
            poa = [0] * indicators
            if p:
                poa[rng.randrange(indicators)] = 1
            i = len(rows)
            if i in planted:
                y, poa = 0, [0] * indicators
                poa[planted[i]] = 1
            cells = ["" if rng.random() < missing else str(c) for c in poa]
            xs = ["" if rng.random() < missing else str(c) for c in x]
            if i in planted:  # one indicator is 1; the last planted record also has a missing one
                cells = [str(c) for c in poa]
                if i == max(planted):
                    cells[1 - planted[i]] = ""
            if h == len(hospitals) // 2:
                cells = [""] * indicators  # a hospital that never reports it
            key = "R%04d" % i if i % 7 else 'R"%d"' % i
            rows.append([quoted(key), quoted(identity), str(y)] + cells + [str(c) for c in z] + xs)
    return rows


def table(variables, rows, indicators):
    header = (["Key", "Hospital", "Y"] + ["POA%d" % (k + 1) for k in range(indicators)]
              + [quoted(v[0]) for v in variables] + [quoted(v[1]) for v in variables])
    return "".join(",".join(cells) + "\n" for cells in [header] + rows)


def write(path, text):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="latin-1", newline="") as f:
        f.write(text)


def run(inputs, definitions):
    """Runs each definition as a process of its own in a fresh folder.

    Returns, for every definition in turn, a dictionary of all files below `out` and "stdout.txt".
    """
    results = []
    before = os.getcwd()
    with tempfile.TemporaryDirectory() as scratch:
        for name, text in inputs.items():
            write(os.path.join(scratch, name), text)
        os.chdir(scratch)
        try:
            for definition in definitions:
                pieces = []
                reference.run(definition, pieces.append, pieces.append)
                files = {"stdout.txt": TIMING.sub(r"\1T\2", "".join(pieces))}
                for folder, _, names in os.walk("out"):
                    for name in names:
                        path = os.path.join(folder, name)
                        with open(path, encoding="latin-1", newline="") as f:
                            files[os.path.relpath(path, "out")] = f.read()
                results.append(files)
        finally:
            os.chdir(before)
    return results


def stable(compute, name):
    """The result of `compute`, after making sure that no digit depends on the last bits of exp."""
    result = compute()
    exact = regression.exp
    for trial in range(3):
        rng = random.Random(trial)

        def noisy(t):
            return exact(t) * (1 + rng.uniform(-1e-14, 1e-14)) if t else 1.0

        for module in (regression, hierarchical_model, predictions):
            module.exp = noisy
        try:
            assert compute() == result, name + " depends on rounding: choose another seed"
        finally:
            for module in (regression, hierarchical_model, predictions):
                module.exp = exact
    return result


def make_chain_study(name, inputs):
    """Analysis, prediction and validation, as one batch and as three processes."""
    def compute():
        return (run(inputs, ["batch.xml"])[0],
                run(inputs, ["analysis.xml", "prediction.xml", "validation.xml"]))

    batch, alone = stable(compute, name)
    folder = os.path.join(DATA, name)
    shutil.rmtree(folder, ignore_errors=True)
    for file, text in inputs.items():
        write(os.path.join(folder, file), text)
    for file, text in batch.items():
        write(os.path.join(folder, "expected", os.path.basename(file)), text)
    for kind, files in zip(("analysis", "prediction", "validation"), alone):
        write(os.path.join(folder, "expected", "alone", kind + ".stdout.txt"), files["stdout.txt"])
        write(os.path.join(folder, "expected", "alone", kind + ".log"), files[kind + ".log"])
    for file, text in batch.items():
        if file.endswith(".csv"):
            assert text == alone[-1][file], file
    return batch


def make_study_plain():
    rng = random.Random(20)
    variables = [("ZA", "A", 0.30, 0, 0), ("ZB, any", "B", 0.25, 0, 0), ("ZC", "C", 0.35, 0, 0),
                 ("ZD", "D", 0.30, 0, 0), ("ZEmpty", "XEmpty", 0.20, 0, 0),
                 ("ZF", 'F "late"', 0.40, 0.0, 0.7)]
    hospitals = ["H%02d" % h if h % 5 else 'Clinic "%d"' % h for h in range(14)]
    planted = {11: 0, 40: 1, 60: 0, 104: 1}
    rows = simulate(rng, hospitals, lambda h: 7 + 5 * h % 9, variables, 0.6, 0.05, 2, planted)
    make_chain_study("study_plain", {
        "data.csv": table(variables, rows, 2),
        "analysis.xml": analysis_xml("analysis.log", False, ("1e-8", 50, 1), ("1e-7", 50, 0.5),
                                     SEEDS, (2, 5, 11), 2),
        "prediction.xml": prediction_xml((12345, 67890), (1, 4, 9), 2),
        "validation.xml": validation_xml((2, 4294967295), (1, 3, 6), 2),
        "batch.xml": batch_xml(["analysis.xml", "prediction.xml", "validation.xml"])})


def make_study_gee():
    rng = random.Random(31)
    variables = [("ZA", "A", 0.30, 0, 0), ("ZB", "B", 0.25, 0, 0), ("ZC", "C, mild", 0.35, 0, 0),
                 ("ZD", "D", 0.30, 0, 0), ("ZG", "G", 0.35, 0.2, 1.0)]
    hospitals = ['"East" %d' % h if h % 6 == 1 else "%03d" % h for h in range(16)]
    planted = {8: 1, 63: 0, 120: 0}
    rows = simulate(rng, hospitals, lambda h: 6 + 7 * h % 11, variables, 1.3, 0.06, 2, planted)
    make_chain_study("study_gee", {
        "data.csv": table(variables, rows, 2),
        "analysis.xml": analysis_xml("analysis.log", True, ("1e-9", 60, 0.1), ("1e-8", 60, 1),
                                     (88172645, 463325252), (1, 4, 9), 2),
        "prediction.xml": prediction_xml((5, 7), (1, 3, 7), 2),
        "validation.xml": validation_xml((5, 7), (1, 2, 5), 2),
        "batch.xml": batch_xml(["analysis.xml", "prediction.xml", "validation.xml"])})


def make_two_analyses():
    """3 columns x 7 iterations = 21 normals: the deviate that is left starts the second chain."""
    rng = random.Random(42)
    variables = [("ZU", "U", 0.30, 0.2, 0.7), ("ZV", "V", 0.40, 0.3, 0.6)]
    hospitals = ["Town, %d" % h if h % 3 else "T%d" % h for h in range(8)]
    rows = simulate(rng, hospitals, lambda h: 6 + h % 4, variables, 0.5, 0.06, 1, {})
    inputs = {
        "data.csv": table(variables, rows, 1),
        "first.xml": analysis_xml("first.log", False, ("1e-8", 50, 1), ("1e-7", 50, 1), SEEDS,
                                  (1, 2, 5), 1, "first_coefficients.csv", "first"),
        "second.xml": analysis_xml("second.log", False, ("1e-8", 2, 1), ("1e-7", 3, 1), SEEDS,
                                   (2, 0, 6), 1, "second_coefficients.csv", "second"),
        "batch.xml": batch_xml(["first.xml", "second.xml"])}

    batch, alone = stable(
        lambda: (run(inputs, ["batch.xml"])[0], run(inputs, ["second.xml"])[0]), "two_analyses")
    assert batch["second/Chain.csv"] != alone["second/Chain.csv"]
    folder = os.path.join(DATA, "two_analyses")
    shutil.rmtree(folder, ignore_errors=True)
    for file, text in inputs.items():
        write(os.path.join(folder, file), text)
    for file, text in batch.items():
        write(os.path.join(folder, "expected", "batch", file), text)
    for file, text in alone.items():
        write(os.path.join(folder, "expected", "second_alone", file), text)


def make_random_numbers():
    def draws(file, column, seeds, count, draw):
        lines = ["First,Second,Draw,%s\n" % column]
        for first, second in seeds:
            generator = RandomGenerator()
            generator.seed(first, second)
            for k in range(1, count + 1):
                lines.append("%d,%d,%d,%s\n" % (first, second, k, draw(generator)))
        write(os.path.join(DATA, file), "".join(lines))

    all_seeds = [(1, 1), (0, 0), SEEDS, (4294967295, 2), (65536, 65537)]
    draws("random_words.csv", "Word", all_seeds, 20, lambda g: "%d" % g.next_word())
    draws("uniform_values.csv", "Uniform", all_seeds[:1] + all_seeds[2:3], 12,
          lambda g: "%.17g" % g.uniform())
    draws("normal_deviates.csv", "Normal", all_seeds[:1] + all_seeds[2:3], 12,
          lambda g: "%.17g" % g.normal())


if __name__ == "__main__":
    generator = RandomGenerator()
    assert generator.next_word() == (36969 << 16 & 0xFFFFFFFF) ^ 18000 == 2422818384
    assert math.isclose(2422818384 * 2.0 ** -32, 0.5641063638031483, rel_tol=1e-15)
    make_random_numbers()
    make_study_plain()
    make_study_gee()
    make_two_analyses()
