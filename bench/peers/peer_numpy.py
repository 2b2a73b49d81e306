"""The program's own algorithms, written with numpy and scipy as one would write them by hand.

  logit dense   Newton's method, the information as A^T A of the scaled design (one BLAS call)
  logit sparse  the same with compressed sparse rows
  gee dense     sums over hospitals by np.add.reduceat; both covariances
  cstat argsort all predictions in order once, then one pass over runs of equal ones
  cstat sorted  another way: the two groups sorted apart, then np.searchsorted
  mcmc dense    a sweep over the columns, each for all records at once, then Newton's method
"""

import sys

import numpy as np
import scipy
import scipy.linalg
import scipy.sparse

from peer_common import Task

TOLERANCE = 1e-8


def converged(step, beta):
    return np.abs(step).max() <= TOLERANCE * np.abs(beta).max()


def solve(information, score):
    factor = scipy.linalg.cho_factor(information, lower=True)
    return scipy.linalg.cho_solve(factor, score), factor


def fit_dense(design, y, penalty, use=None):
    """`use` is 1 for the records that take part, 0 for the others; None means all."""
    columns = design.shape[1]
    beta = np.zeros(columns)
    scaled = np.empty_like(design)
    passes = 0
    while True:
        mu = 1 / (1 + np.exp(-(design @ beta)))
        weight = mu * (1 - mu)
        residual = y - mu
        if use is not None:
            weight *= use
            residual *= use
        np.multiply(design, np.sqrt(weight)[:, None], out=scaled)
        information = scaled.T @ scaled + penalty * np.eye(columns)
        step, _ = solve(information, design.T @ residual - penalty * beta)
        passes += 1
        if converged(step, beta):
            return beta, information, passes
        beta += step


def fit_sparse(design, y, penalty):
    columns = design.shape[1]
    transposed = design.T.tocsr()
    scaled = design.copy()
    counts = np.diff(design.indptr)
    beta = np.zeros(columns)
    passes = 0
    while True:
        mu = 1 / (1 + np.exp(-(design @ beta)))
        scaled.data = np.repeat(mu * (1 - mu), counts)
        information = (transposed @ scaled).toarray() + penalty * np.eye(columns)
        step, _ = solve(information, transposed @ (y - mu) - penalty * beta)
        passes += 1
        if converged(step, beta):
            return beta, passes
        beta += step


def fit_gee(design, y, starts):
    records, columns = design.shape
    sizes = np.diff(np.append(starts, records))
    pairs = float((sizes * (sizes - 1.0)).sum())
    beta = np.zeros(columns)
    scaled = np.empty_like(design)
    passes = 0
    while True:
        mu = 1 / (1 + np.exp(-(design @ beta)))
        root = np.sqrt(mu * (1 - mu))
        residual = y - mu
        pearson = residual / root
        np.multiply(design, root[:, None], out=scaled)
        information = scaled.T @ scaled
        b = np.add.reduceat(scaled, starts)
        np.multiply(design, residual[:, None], out=scaled)
        a = np.add.reduceat(scaled, starts)
        s = np.add.reduceat(pearson, starts)
        q = pearson @ pearson
        phi = q / (records - columns)
        alpha = (s @ s - q) / ((pairs - columns) * phi)
        c = alpha / ((sizes - 1) * alpha + 1)
        scores = a - (c * s)[:, None] * b
        information -= (b * c[:, None]).T @ b
        step, factor = solve(information, scores.sum(axis=0))
        passes += 1
        if converged(step, beta):
            break
        beta += step
    inverse = scipy.linalg.cho_solve(factor, np.eye(columns))
    model = (1 - alpha) * inverse
    empirical = inverse @ (scores.T @ scores) @ inverse
    return beta, alpha, passes, model, empirical


def c_statistic_by_order(predictions, outcomes):
    order = np.argsort(predictions)
    ordered = predictions[order]
    starts = np.flatnonzero(np.concatenate(([True], ordered[1:] != ordered[:-1])))
    events = np.add.reduceat(outcomes[order], starts)
    others = np.diff(np.append(starts, len(ordered))) - events
    below = np.cumsum(others) - others
    return (events @ (2 * below + others)) / (2 * events.sum() * others.sum())


def c_statistic_by_groups(predictions, outcomes):
    events = np.sort(predictions[outcomes == 1])
    others = np.sort(predictions[outcomes == 0])
    below = np.searchsorted(others, events, "left").sum()
    not_above = np.searchsorted(others, events, "right").sum()
    return (int(below) + int(not_above)) / (2.0 * len(events) * len(others))


def logistic(t):
    return 1 / (1 + np.exp(-t))


class Sampler:
    """The hierarchical model; a record's missing cells are drawn given all its others."""

    def __init__(self, task):
        self.design = task.load("x", float)
        self.z = task.load("z")
        self.y = task.load("y", float)
        self.p = task.load("p", float)
        x_missing = task.load("xmissing")
        p_missing = task.load("pmissing")
        self.missing = [np.flatnonzero(x_missing[:, j]) for j in range(self.design.shape[1])]
        self.missing_p = np.flatnonzero(p_missing & (self.y == 1))
        self.prior = self.tables(x_missing)
        complete = ~(x_missing.any(axis=1) | p_missing)
        self.a, _, _ = fit_dense(self.design, self.p, 1.0, complete.astype(float))
        self.b = np.zeros(self.design.shape[1])
        self.p[p_missing] = 0
        self.random = np.random.default_rng(1)

    def tables(self, x_missing):
        table = np.zeros((self.design.shape[1], 2))
        for j in range(1, self.design.shape[1]):
            for z in (0, 1):
                known = ~x_missing[:, j] & (self.z[:, j] == z)
                table[j, z] = self.design[known, j].mean()
        return table

    def sweep(self):
        eta_a = self.design @ self.a
        eta_b = self.design @ self.b
        sign = 2 * self.y - 1
        for j in range(1, self.design.shape[1]):
            i = self.missing[j]
            before = self.design[i, j]
            a0 = eta_a[i] - before * self.a[j]
            b0 = eta_b[i] - before * self.b[j]
            q = self.prior[j][self.z[i, j]]
            present = self.p[i] == 1
            sign_i = sign[i]

            def likelihood(a, b):
                return np.where(present, logistic(a), logistic(-a) * logistic(sign_i * b))

            one = q * likelihood(a0 + self.a[j], b0 + self.b[j])
            zero = (1 - q) * likelihood(a0, b0)
            value = (one / (one + zero) > self.random.random(len(i))).astype(float)
            self.design[i, j] = value
            eta_a[i] = a0 + value * self.a[j]
            eta_b[i] = b0 + value * self.b[j]
        i = self.missing_p
        p1 = logistic(eta_a[i])
        p0 = logistic(eta_b[i])
        self.p[i] = p1 / (p0 * (1 - p1) + p1) > self.random.random(len(i))

    def iterate(self):
        self.sweep()
        beta, information, _ = fit_dense(self.design, self.y, 1.0, 1 - self.p)
        factor = np.linalg.cholesky(information)
        normal = self.random.standard_normal(len(beta))
        self.b = beta + scipy.linalg.solve_triangular(factor.T, normal, lower=False)


def main():
    task = Task("", np.__version__)
    if task.name == "logit" and task.variant == "dense":
        task.peer = "numpy, by hand"
        design, y = task.load("z", float), task.load("y", float)
        with task:
            beta, _, passes = fit_dense(design, y, 1.0)
        task.report(beta, iterations=passes - 1)
    elif task.name == "logit":
        task.peer = "scipy.sparse, by hand"
        task.version = scipy.__version__
        design, y = scipy.sparse.csr_matrix(task.load("z", float)), task.load("y", float)
        with task:
            beta, passes = fit_sparse(design, y, 1.0)
        task.report(beta, iterations=passes - 1)
    elif task.name == "gee":
        task.peer = "numpy, by hand"
        design, y = task.load("z", float), task.load("y", float)
        starts = np.flatnonzero(np.diff(task.load("hospital"), prepend=-1))
        with task:
            beta, alpha, passes, _, _ = fit_gee(design, y, starts)
        task.report(beta, iterations=passes - 1, alpha=alpha)
    elif task.name == "cstat":
        task.peer = f"numpy, by hand, {task.variant}"
        c_statistic = c_statistic_by_order if task.variant == "argsort" else c_statistic_by_groups
        predictions, outcomes = task.scores()
        with task:
            value = c_statistic(predictions, outcomes)
        task.report(value="%.12f" % value)
    elif task.name == "mcmc":
        task.peer = "numpy, by hand"
        sampler = Sampler(task)
        iterations = 5
        with task:
            for _ in range(iterations):
                sampler.iterate()
        task.report(iterations=iterations, s_per_iter=task.seconds / iterations)
    else:
        sys.exit("unknown task")


if __name__ == "__main__":
    main()
