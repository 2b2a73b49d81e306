#!/usr/bin/python3
"""Singular values of a handful of matrices by LAPACK (through numpy).

    svd.py               (writes data/svd.csv)

One line a matrix: name, rows, columns, the entries by rows and the singular values in descending
order, each list separated by blanks. A matrix with fewer rows than columns gets a value for every
column, the missing ones 0. Values that are 0 but for rounding are written as 0.
"""
import numpy as np

from small_data import write_table


def main():
    rng = np.random.RandomState(3)
    low = rng.randint(-3, 4, (5, 2)) @ rng.randint(-3, 4, (2, 5))
    cells = (rng.uniform(size=(40, 6)) < 0.4).astype(float)
    cells[:, 0] = 1
    matrices = [
        ("square", rng.randint(-9, 10, (4, 4))),
        ("square_real", rng.standard_normal((5, 5))),
        ("wide", rng.randint(-9, 10, (3, 7))),
        ("wide_row", np.array([[0, 3, 0, -4, 12]])),
        ("tall", rng.standard_normal((6, 3))),
        ("rank_two", low),
        ("zero", np.zeros((3, 3))),
        ("zero_wide", np.zeros((2, 4))),
        ("diagonal", np.diag([3.0, -2.0])),
        ("negative_number", np.array([[-5.0]])),
        ("identity", np.identity(4)),
        ("hilbert", np.array([[1.0 / (i + j + 1) for j in range(5)] for i in range(5)])),
        ("cross_counts", cells.T @ cells),
    ]
    rows = []
    for name, a in matrices:
        a = np.asarray(a, dtype=float)
        values = np.zeros(a.shape[1])
        found = np.linalg.svd(a, compute_uv=False)
        values[:len(found)] = found
        values[values <= 1e-13 * values.max()] = 0
        rows.append([name, a.shape[0], a.shape[1], " ".join("%.17g" % v for v in a.ravel()),
                     " ".join("%.16g" % v for v in values)])
    write_table("svd.csv", ["Name", "Rows", "Columns", "Entries", "Values"], rows)


if __name__ == "__main__":
    main()
