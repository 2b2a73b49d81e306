"""Logistic regression with a ridge prior, alone or with generalized estimating equations.

Sums run in the order of the records (`ordered_sum` adds one after the other, unlike numpy's
pairwise sum), within a record in ascending order of the columns.
"""
import math
from types import SimpleNamespace

import numpy as np


def exp(t):
    try:
        return math.exp(t)
    except OverflowError:
        return math.inf


def logistic(t):
    return 1 / (exp(-t) + 1)


def ordered_sum(values):
    return np.cumsum(values, axis=0)[-1] if len(values) else np.zeros(np.shape(values)[1:])


def predictor(cells, beta):
    """Sum of the coefficients of the set columns, for every row."""
    eta = np.zeros(len(cells))
    for j, b in enumerate(beta):
        eta = eta + np.where(cells[:, j], b, 0.0)
    return eta


class NonPositiveMatrix(Exception):
    pass


def cholesky(a):
    n = len(a)
    factor = [[0.0] * n for _ in range(n)]
    for j in range(n):
        for i in range(j, n):
            s = float(a[i][j])
            for k in range(j):
                s -= factor[i][k] * factor[j][k]
            if i > j:
                factor[i][j] = s / factor[j][j]
            elif s <= 0:
                raise NonPositiveMatrix()
            else:
                factor[j][j] = math.sqrt(s)
    return factor


def solve(factor, b):
    n = len(b)
    x = [float(t) for t in b]
    for i in range(n):
        for k in range(i):
            x[i] -= factor[i][k] * x[k]
        x[i] /= factor[i][i]
    return solve_transposed(factor, x)


def solve_transposed(factor, y):
    """x with L^T x = y."""
    x = list(y)
    for i in range(len(x) - 1, -1, -1):
        for k in range(i + 1, len(x)):
            x[i] -= factor[k][i] * x[k]
        x[i] /= factor[i][i]
    return x


def inverse(factor):
    """(L L^T)^-1: each column of the identity solved, the lower triangle kept and mirrored."""
    n = len(factor)
    full = np.zeros((n, n))
    for j in range(n):
        column = solve(factor, [1.0 if i == j else 0.0 for i in range(n)])
        full[j:, j] = full[j, j:] = column[j:]
    return full


def independent_pass(beta, y, cells):
    """Information and score of independent records."""
    p = len(beta)
    up = np.array([exp(t) for t in predictor(cells, beta)])
    down = np.array([exp(-t) for t in predictor(cells, beta)])
    w = 1 / (up + 2 + down)
    residual = np.where(y, 1 / (1 + up), -(1 / (1 + down)))
    information = np.zeros((p, p))
    for j in range(p):
        for k in range(j + 1):
            information[j, k] = ordered_sum(w * (cells[:, j] & cells[:, k]))
    return information, ordered_sum(residual[:, None] * cells)


def exchangeable_pass(state, beta, y, cells, hospital, hospitals):
    """Information and score when the records of a hospital share one correlation.

    The working covariance of hospital h is S^(1/2) R S^(1/2), S = diag(mu (1 - mu)),
    R = (1 - alpha) I + alpha 1 1^T; the factor 1 / (1 - alpha) of R^-1 is left out.
    """
    p = len(beta)
    up = np.array([exp(t) for t in predictor(cells, beta)])
    down = np.array([exp(-t) for t in predictor(cells, beta)])
    mu = 1 / (1 + down)
    w = 1 / (up + 2 + down)
    s = np.sqrt(w)
    e = y.astype(float) - mu
    r = e / s

    def by_hospital(values):
        total = np.zeros((hospitals,) + values.shape[1:])
        np.add.at(total, hospital, values)
        return total

    n_h = np.bincount(hospital, minlength=hospitals)
    a = by_hospital(e[:, None] * cells)
    b = by_hospital(s[:, None] * cells)
    residuals = by_hospital(r)
    q = ordered_sum(r * r)
    used = n_h > 0
    pairs = float((n_h * (n_h - 1)).sum())
    phi = q / np.float64(n_h.sum() - p)
    alpha = (ordered_sum(residuals[used] * residuals[used]) - q) / ((pairs - p) * phi)
    c = np.where(used, alpha / ((n_h - 1) * alpha + 1), 0.0)
    state.alpha = alpha
    state.phi = phi
    state.scores = a - (c * residuals)[:, None] * b
    information = np.zeros((p, p))
    for j in range(p):
        for k in range(j + 1):
            information[j, k] = (ordered_sum(w * (cells[:, j] & cells[:, k]))
                                 - ordered_sum(c * b[:, j] * b[:, k]))
    return information, ordered_sum(state.scores)


def newton(parameters, y, cells, hospital=None, hospitals=0):
    """Fits from zero. With `hospital` (the hospital of every record) the exchangeable form.

    The state returned holds beta and, of the last assembled pass, factor, alpha and scores; after
    the iteration limit those stand one step behind beta.
    """
    state = SimpleNamespace(alpha=0.0, scores=None, iterations=0)
    beta = np.zeros(cells.shape[1])
    with np.errstate(all="ignore"):
        while True:
            if hospital is None:
                information, score = independent_pass(beta, y, cells)
            else:
                information, score = exchangeable_pass(state, beta, y, cells, hospital, hospitals)
            for j in range(len(beta)):
                information[j, j] += parameters.prior_precision
                score[j] -= parameters.prior_precision * beta[j]
            state.factor = cholesky(information)
            step = np.array(solve(state.factor, score))
            if parameters.tolerance * largest(beta) >= largest(step):
                break
            beta = beta + step
            state.iterations += 1
            if state.iterations >= parameters.max_iterations:
                break
    state.beta = beta
    return state


def largest(values):
    """Largest absolute value, starting from 0, so that a NaN counts as 0."""
    found = 0.0
    for v in values:
        if abs(v) > found:
            found = abs(v)
    return found


def model_covariance(state):
    h = inverse(state.factor)
    return h if state.alpha == 0 else (1 - state.alpha) * h


def empirical_covariance(state):
    bread = inverse(state.factor)
    meat = sum((np.outer(u, u) for u in state.scores), np.zeros_like(bread))
    return bread @ meat @ bread


def warn_at_limit(state, parameters, console):
    if state.iterations >= parameters.max_iterations:
        console.log("Warning: Maximum number of iterations reached")


def fit(parameters, use_gee, y, cells, data, records, console):
    """One regression on the chosen records; rows of (estimate, model error, empirical error)."""
    hospital = data.hospital[records] if use_gee else None
    state = newton(parameters, y[records], cells[records], hospital, len(data.hospital_ids))
    warn_at_limit(state, parameters, console)
    with np.errstate(all="ignore"):
        model = np.sqrt(np.diag(model_covariance(state)))
        empirical = (np.sqrt(np.diag(empirical_covariance(state))) if use_gee
                     else np.full(len(state.beta), -1.0))
    return [tuple(row) for row in np.column_stack([state.beta, model, empirical])]


def xz_table(data, k):
    """Fractions of X = 1 among the records with Z = 0 and with Z = 1, missing X left out."""
    known = ~data.x_missing[:, k]
    table = []
    for z in (False, True):
        group = known & (data.z[:, k] == z)
        assert group.any()
        table.append(int((group & data.x[:, k]).sum()) / int(group.sum()))
    return tuple(table)
