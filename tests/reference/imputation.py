#!/usr/bin/python3
"""Exact stationary distribution of the imputation sweep on tiny records.

    imputation.py        (writes data/imputation_model.csv, imputation_records.csv, imputation.csv)

For each record all states of its missing cells are enumerated and the transition matrix of one
sweep is formed from the sweep's definition: the missing X cells in ascending order, each drawn
given the others and the current P, then P where Y = 1 (with Y = 0 a missing P stays 0). The
distribution that this matrix leaves unchanged is compared with the joint posterior

    prob(x, p) ~ prod q_j^x_j (1 - q_j)^(1 - x_j) * pr(P = p | x) * pr(Y | x, P = p),

pr(Y = 1 | x, P = 1) = 1, and must agree: the conditionals of the sweep are its full conditionals.
"""
import itertools
import math

import numpy as np

from small_data import write_table

BETA_Y = [-0.4, 1.1, -0.9, 0.6, 0.3]
BETA_P = [-0.8, 0.7, 0.5, -1.2, 0.9]
# Prior probability of X = 1 for companion bit 0 and 1, one pair for each column after the
# intercept. The last column has a 0 and a 1, which fix the cell.
PRIOR = [(0.2, 0.7), (0.35, 0.9), (0.1, 0.6), (0.0, 1.0)]
# Y, P, X1..X4, Z1..Z4; None is missing.
RECORDS = [
    (1, None, (None, None, None, 0), (0, 1, 1, 0)),
    (0, None, (None, 1, None, None), (1, 0, 0, 1)),
    (1, 1, (None, None, 0, None), (0, 0, 1, 0)),
    (1, 0, (1, None, None, 1), (1, 1, 0, 0)),
    (1, None, (1, 0, 1, 1), (0, 0, 0, 0)),
]


def sigmoid(t):
    return 1 / (1 + math.exp(-t))


def probability_of_data(y, p, x):
    """pr(P = p | x) pr(Y = y | x, p) for the X cells x after the intercept."""
    eta_y = BETA_Y[0] + sum(b for b, c in zip(BETA_Y[1:], x) if c)
    eta_p = BETA_P[0] + sum(b for b, c in zip(BETA_P[1:], x) if c)
    of_p = sigmoid(eta_p) if p else 1 - sigmoid(eta_p)
    if p:
        return of_p * y
    return of_p * (sigmoid(eta_y) if y else 1 - sigmoid(eta_y))


def states_of(y, p, x):
    """All (p, x) that the sweep can stand in, whatever it started from."""
    ps = [p] if p is not None else ([0, 1] if y else [0])
    return [(q, xs) for q in ps
            for xs in itertools.product(*[[c] if c is not None else [0, 1] for c in x])]


def chance(one, zero):
    return one / (one + zero)


def sweep_matrix(y, p, x, z, states):
    index = {state: k for k, state in enumerate(states)}
    total = np.identity(len(states))
    for j, cell in enumerate(x):
        if cell is not None:
            continue
        q = PRIOR[j][z[j]]
        step = np.zeros_like(total)
        for (q_p, xs), k in index.items():
            one, zero = (xs[:j] + (v,) + xs[j + 1:] for v in (1, 0))
            up = chance(probability_of_data(y, q_p, one) * q,
                        probability_of_data(y, q_p, zero) * (1 - q))
            step[k, index[(q_p, one)]] += up
            step[k, index[(q_p, zero)]] += 1 - up
        total = total @ step
    if y and p is None:
        step = np.zeros_like(total)
        for (_, xs), k in index.items():
            up = chance(probability_of_data(1, 1, xs), probability_of_data(1, 0, xs))
            step[k, index[(1, xs)]] += up
            step[k, index[(0, xs)]] += 1 - up
        total = total @ step
    return total


def stationary(matrix):
    n = len(matrix)
    equations = np.vstack([matrix.T - np.identity(n), np.ones(n)])
    right = np.zeros(n + 1)
    right[-1] = 1
    return np.linalg.lstsq(equations, right, rcond=None)[0]


def posterior(y, x, z, states):
    weights = []
    for p, xs in states:
        weight = probability_of_data(y, p, xs)
        for j, cell in enumerate(x):
            if cell is None:
                q = PRIOR[j][z[j]]
                weight *= q if xs[j] else 1 - q
        weights.append(weight)
    return np.array(weights) / sum(weights)


def main():
    model = [[0, BETA_Y[0], BETA_P[0], "", ""]]
    model += [[j + 1, BETA_Y[j + 1], BETA_P[j + 1], q0, q1] for j, (q0, q1) in enumerate(PRIOR)]
    write_table("imputation_model.csv",
                ["Column", "BetaY", "BetaP", "PriorZ0", "PriorZ1"], model)
    columns = len(PRIOR)
    x_names = ["X%d" % (j + 1) for j in range(columns)]
    records, rows = [], []
    for r, (y, p, x, z) in enumerate(RECORDS):
        records.append([r, y] + ["" if c is None else c for c in (p,) + x] + list(z))
        states = states_of(y, p, x)
        limit = stationary(sweep_matrix(y, p, x, z, states))
        exact = posterior(y, x, z, states)
        assert abs(limit - exact).max() < 1e-12
        rows += [[r, p_state] + list(xs) + ["%.12f" % prob]
                 for (p_state, xs), prob in zip(states, exact)]
    write_table("imputation_records.csv",
                ["Record", "Y", "P"] + x_names + ["Z%d" % (j + 1) for j in range(columns)], records)
    write_table("imputation.csv", ["Record", "P"] + x_names + ["Probability"], rows)


if __name__ == "__main__":
    main()
