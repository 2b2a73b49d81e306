#!/usr/bin/python3
"""The small clustered data set that the regression references share.

    small_data.py        (writes data/small_regression.csv)

210 records in 15 hospitals, an intercept and three 0/1 covariates, the outcome with a strong
hospital effect. Imported, it gives the arrays of that file.
"""
import csv
import math
import os
import random

import numpy as np

DATA = os.path.join(os.path.dirname(os.path.abspath(__file__)), "data")
PATH = os.path.join(DATA, "small_regression.csv")


def load():
    with open(PATH, newline="") as f:
        rows = np.array([[int(c) for c in row] for row in list(csv.reader(f))[1:]])
    hospital, y, x = rows[:, 0], rows[:, 1].astype(float), rows[:, 2:].astype(float)
    return hospital, y, x


def write_table(name, header, rows):
    with open(os.path.join(DATA, name), "w", newline="") as f:
        csv.writer(f, lineterminator="\n").writerows([header] + rows)


def main():
    rng = random.Random(7)
    rows = []
    for hospital in range(15):
        shift = rng.gauss(0, 0.9)
        for _ in range(8 + 5 * hospital % 13):
            x = [1] + [int(rng.random() < p) for p in (0.45, 0.3, 0.6)]
            eta = -0.7 + shift + 0.8 * x[1] - 0.6 * x[2] + 0.3 * x[3]
            rows.append([hospital, int(rng.random() < 1 / (1 + math.exp(-eta)))] + x)
    write_table("small_regression.csv", ["Hospital", "Y", "X0", "X1", "X2", "X3"], rows)


if __name__ == "__main__":
    main()
