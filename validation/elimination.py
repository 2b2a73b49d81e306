#!/usr/bin/python3
"""Column elimination on random designs with planted dependencies, against R's qr and svd.

A design has random independent 0/1 columns for X and for Z. Dependencies of one kind, or several of
different kinds at once, are planted in X, in Z or in both; X and P then lose random cells. The
program runs an Analysis without sampling; elimination.R reads its log and coefficient file and
decides the ranks of the 0/1 matrices by R's means.
"""
import csv
import os

import numpy as np

from program import fresh_folder, write_data
from report import begin, rscript

RECORDS = 400


def columns(stream, n, count):
    return [(stream.random(n) < rate).astype(float) for rate in stream.uniform(0.25, 0.75, count)]


# Each kind returns the columns that it adds; together they bring the stated number of dependencies.
def duplicate(stream, own):
    return [own[stream.integers(len(own))].copy()], 1


def complement(stream, own):
    return [1 - own[stream.integers(len(own))]], 1


def disjoint_sum(stream, own):
    a, b, _ = np.eye(3)[stream.choice(3, size=len(own[0]), p=[0.3, 0.3, 0.4])].T
    return [a, b, a + b], 1


def union_and_intersection(stream, own):
    a, b = columns(stream, len(own[0]), 2)
    return [a, b, a * b, np.maximum(a, b)], 1


def categories(stream, own):
    return list(np.eye(4)[stream.choice(4, size=len(own[0]), p=[0.2, 0.3, 0.3, 0.2])].T), 1


def two_of_three(stream, own):
    pair = stream.choice(4, size=len(own[0]), p=[0.2, 0.2, 0.2, 0.4])
    a, b, c = (np.isin(pair, which).astype(float) for which in ((0, 1), (0, 2), (1, 2)))
    return [a, b, c, (pair < 3).astype(float)], 1


def constant(stream, own):
    return [np.ones(len(own[0]))], 1


KINDS = {"duplicate": duplicate, "complement": complement, "sum of two": disjoint_sum,
         "union and intersection": union_and_intersection,
         "categories that add up to 1": categories,
         "two of three": two_of_three, "all ones": constant}


def plant(stream, kinds):
    own, planted = columns(stream, RECORDS, stream.integers(3, 6)), 0
    for kind in kinds:
        added, k = KINDS[kind](stream, own)
        own, planted = own + added, planted + k
    order = stream.permutation(len(own))
    return [own[k] for k in order], planted


def design(stream, kinds, where):
    """Z, X and P with the kinds planted in "Z", "X" or both, and the planted numbers."""
    z, planted_z = plant(stream, kinds if "Z" in where else [])
    x, planted_x = plant(stream, kinds if "X" in where else [])
    size = max(len(z), len(x))
    z += columns(stream, RECORDS, size - len(z))
    x += columns(stream, RECORDS, size - len(x))
    return np.column_stack(z), np.column_stack(x), planted_z, planted_x


def main():
    program, report, options = begin("elimination")
    stream = np.random.default_rng(20)
    repeat = 2 if options.quick else 12
    plan = [(kind, [kind], where) for kind in KINDS for where in ("X", "Z", "XZ")
            for _ in range(repeat)]
    for _ in range(6 * repeat):
        kinds = list(stream.choice(list(KINDS), size=stream.integers(2, 5), replace=False))
        plan.append(("several at once", kinds, ["X", "Z", "XZ"][stream.integers(3)]))
    plan += [("nothing planted", [], "XZ")] * (2 * repeat)
    plan += [("zero columns", [], "zero")] * (2 * repeat)
    plan += [("only among P = 0", [], "home")] * (2 * repeat)

    planted = []
    for k, (label, kinds, where) in enumerate(plan, 1):
        z, x, in_z, in_x = design(stream, kinds, where)
        p = (stream.random(RECORDS) < 0.2).astype(float)
        y = np.maximum(p, stream.random(RECORDS) < 0.4).astype(float)
        if where == "zero":
            z[:, stream.integers(z.shape[1])] = 0
            x[:, stream.integers(x.shape[1])] = 0
        if where == "home":  # one column is a copy where P = 0, another is zero there
            x[p == 0, 0] = x[p == 0, 1]
            x[p == 0, 2] = 0
            in_x = 2
        x[stream.random(x.shape) < 0.02] = np.nan
        p[stream.random(RECORDS) < 0.05] = np.nan
        folder = fresh_folder(options.folder, "design%04d" % k)
        write_data(os.path.join(folder, "data.csv"), y, p, z, x)
        program.analysis(folder, prior=0.1)
        planted.append((label, in_z, in_x))
    rscript("elimination.R", options.folder, str(len(plan)))
    with open(os.path.join(options.folder, "ranks.csv"), newline="") as f:
        results = list(csv.DictReader(f))
    names = {"zero": "zero columns removed are R's zero columns",
             "z": "Z: rank by qr and svd before = after = number kept",
             "x": "X, complete records with P = 0: the same",
             "final_z": "Z has full rank at the end",
             "intercept": "the intercept stays", "order": "kept columns keep their order"}
    for key, text in names.items():
        wrong = [r["design"] for r in results if r[key] != "TRUE"]
        report.check(text, not wrong, "%d designs%s" % (
            len(results), ", wrong: " + " ".join(wrong) if wrong else ""))
    rows = []
    for label in dict.fromkeys(label for label, _, _ in planted):
        group = [(r, p) for r, p in zip(results, planted) if p[0] == label]
        rows.append([label, len(group), sum(p[1] for _, p in group),
                     sum(int(r["deficit_z"]) for r, _ in group),
                     sum(int(r["removed_z"]) for r, _ in group), sum(p[2] for _, p in group),
                     sum(int(r["deficit_x"]) for r, _ in group),
                     sum(int(r["removed_x"]) for r, _ in group),
                     sum(any(r[key] != "TRUE" for key in names) for r, _ in group)])
    report.table("elimination", ["planted", "designs", "Z: planted", "Z: missing rank by qr",
                                 "Z: removed", "X: planted", "X: missing rank by qr", "X: removed",
                                 "designs that disagree"], rows)
    report.finish(program)


if __name__ == "__main__":
    main()
