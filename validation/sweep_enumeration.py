#!/usr/bin/python3
"""The imputation sweep, and the chain as a whole, against exact enumeration.

The sweep. Records whose missing cells have at most 2^5 states are imputed with known
coefficients and [X|Z] tables, which a Prediction takes from a coefficient file made here. The
posterior of the cells is summed in full. How often the program visits each state is seen through
the blocks [Y|X] and [Y|X,P=0], which the sweep does not use: with the estimates

    intercept 40 - 80 * (ones of s),  +80 where s has a 1,  -80 where s has a 0

the prediction is 1 when X equals the state s and 0 otherwise (up to e^-40), and with P = 0 as a
further condition in the second block. All runs of a model share a seed, so they see the same
passes, and a mean times the number of passes is a whole number.

The counts of a record's states are compared by a chi-squared statistic whose covariance is exact:
it follows from the transition matrix of one sweep, so the autocorrelation of the chain is in it.
False alarms: with a correct program and a seed drawn at random each of the two checks below (the
smallest p-value after Bonferroni, and uniformity of the p-values by Kolmogorov and Smirnov) fails
with probability 0.001.

The chain. A data set of 30 records with one covariate and eight missing cells is analysed.
The chain (impute, fit, draw) is a Markov chain on the 2^8 imputations; its transition matrix is
found by integrating over the two coefficients (Gauss and Hermite's rule), its stationary law gives
the law of the drawn coefficients as a mixture of 2^8 normal ones, and the program's long chain is
compared with that: means, standard deviations, and the distribution function at nine points, each
against its Monte Carlo error by batch means. Largest of the z-values after Bonferroni: false-alarm
probability 0.001.
"""
import itertools
import os

import numpy as np
from scipy import stats

from model import expit
from program import fresh_folder, names_of, seed_words, write_coefficients, write_data
from report import begin, six
from sampler import mode

COLUMNS = 4
FALSE_ALARM = 0.001


# ---- The sweep ----

class Model:
    """Coefficients and tables of one Prediction; some table entries are exactly 0 or 1."""

    def __init__(self, stream):
        self.beta_y = np.round(stream.normal(0, 1.2, COLUMNS + 1), 3)
        self.beta_p = np.round(stream.normal(0, 1.2, COLUMNS + 1), 3)
        self.tables = np.round(stream.uniform(0.05, 0.95, (COLUMNS, 2)), 3)
        self.tables[COLUMNS - 1] = (0, 1)

    def weight(self, y, p, x):
        """pr(P = p | x) pr(Y = y | x, p)."""
        x = np.concatenate([[1], x])
        of_p = expit(x @ self.beta_p)
        if p:
            return of_p if y else 0.0
        of_y = expit(x @ self.beta_y)
        return (1 - of_p) * (of_y if y else 1 - of_y)


def random_record(stream):
    """(y, p, x, z); None is missing. Nothing contradicts P = 1 implies Y = 1."""
    y = int(stream.random() < 0.7)
    p = [None, 0, 1][stream.integers(3)] if y else [None, 0][stream.integers(2)]
    x = [None if stream.random() < 0.65 else int(stream.integers(2)) for _ in range(COLUMNS)]
    if p is not None and None not in x:
        x[stream.integers(COLUMNS)] = None
    return y, p, tuple(x), tuple(int(b) for b in stream.integers(0, 2, COLUMNS))


def states_of(y, p, x):
    ps = [p] if p is not None else ([0, 1] if y else [0])
    return [(q,) + xs for q in ps
            for xs in itertools.product(*[[c] if c is not None else [0, 1] for c in x])]


def exact_posterior(model, record, states):
    y, _, x, z = record
    weights = []
    for p, *xs in states:
        w = model.weight(y, p, xs)
        for j in range(COLUMNS):
            if x[j] is None:
                q = model.tables[j, z[j]]
                w *= q if xs[j] else 1 - q
        weights.append(w)
    return np.array(weights) / np.sum(weights)


def sweep_matrix(model, record, states):
    """Transition matrix of one sweep: missing X in ascending order, then P where Y = 1."""
    y, p, x, z = record
    index = {s: k for k, s in enumerate(states)}
    total = np.identity(len(states))
    cells = [j + 1 for j in range(COLUMNS) if x[j] is None]
    if y and p is None:
        cells.append(0)
    for cell in cells:
        step = np.zeros_like(total)
        for s, k in index.items():
            one, zero = (s[:cell] + (v,) + s[cell + 1:] for v in (1, 0))
            w1, w0 = (model.weight(y, t[0], t[1:]) for t in (one, zero))
            if cell:
                q = model.tables[cell - 1, z[cell - 1]]
                w1, w0 = w1 * q, w0 * (1 - q)
            step[k, index[one]] += w1 / (w1 + w0)
            step[k, index[zero]] += w0 / (w1 + w0)
        total = total @ step
    return total


def count_covariance(matrix, pi, passes):
    """Covariance of the numbers of visits to the states in so many stationary passes."""
    centre = np.outer(pi, pi)
    total = passes * (np.diag(pi) - centre)
    power = matrix
    for k in range(1, passes):
        term = pi[:, None] * power - centre
        if np.abs(term).max() < 1e-15:
            break
        total += (passes - k) * (term + term.T)
        power = power @ matrix
    return total


def visits(program, folder, model, records, copies, passes, seed):
    """records x copies x 2^COLUMNS x 2: counts of X = s with P = 0, and with P = 1."""
    rows = [r for r in records for _ in range(copies)]
    cell = lambda c: np.nan if c is None else c
    write_data(os.path.join(folder, "data.csv"), [r[0] for r in rows],
               [cell(r[1]) for r in rows], [r[3] for r in rows],
               [[cell(c) for c in r[2]] for r in rows])
    counts = np.zeros((len(rows), 2 ** COLUMNS, 2))
    for k, s in enumerate(itertools.product([0, 1], repeat=COLUMNS)):
        probe = [40.0 - 80 * sum(s)] + [80.0 if c else -80.0 for c in s]
        write_coefficients(os.path.join(folder, "out", "coefficients.csv"), model.tables,
                           [model.beta_p, model.beta_y, probe, probe, model.beta_y],
                           names_of(COLUMNS))
        columns = program.prediction(folder, seed=seed, burnin=50, steps=passes)
        for at, name in ((0, "E[Y|X,P=0]"), (1, "E[Y|X]")):
            value = columns[name] * passes
            assert np.abs(value - np.round(value)).max() < 0.05
            counts[:, k, at] = np.round(value)
    counts[:, :, 1] -= counts[:, :, 0]
    return counts.reshape(len(records), copies, 2 ** COLUMNS, 2)


def check_sweep(program, report, options):
    stream = np.random.default_rng(4)
    models, copies, passes, patterns = (2, 10, 1000, 10) if options.quick else (8, 25, 2000, 12)
    rows, p_values, stray = [], [], 0
    for m in range(models):
        model = Model(stream)
        records = [random_record(stream) for _ in range(patterns)]
        folder = fresh_folder(options.folder, "model%d" % m)
        counts = visits(program, folder, model, records, copies, passes, seed_words(stream))
        here, sizes, worst = [], [], 0.0
        for record, seen in zip(records, counts.sum(axis=1)):
            states = states_of(*record[:3])
            pi = exact_posterior(model, record, states)
            matrix = sweep_matrix(model, record, states)
            assert np.abs(pi @ matrix - pi).max() < 1e-12
            visited = np.array([seen[int("".join(map(str, s[1:])), 2), s[0]] for s in states])
            possible = pi > 0
            stray += int(round(copies * passes - visited[possible].sum()))
            # A record always in one of its states; a state that the tables rule out never.
            covariance = copies * count_covariance(matrix, pi, passes)
            difference = visited - copies * passes * pi
            values, vectors = np.linalg.eigh(covariance)
            solid = values > 1e-9 * max(values.max(), 1)
            freedom = int(solid.sum())
            sizes.append(int(possible.sum()))
            worst = max(worst, np.abs(difference / (copies * passes)).max())
            if freedom:
                score = ((vectors.T @ difference)[solid] ** 2 / values[solid]).sum()
                here.append(stats.chi2.sf(score, freedom))
        p_values += here
        rows.append([m + 1, len(records), "%d to %d" % (min(sizes), max(sizes)),
                     "%.1e" % (len(records) * copies * passes), "%.5f" % worst,
                     "%.3f" % min(here), "%.3f" % np.median(here)])
    smallest = min(1.0, min(p_values) * len(p_values))
    uniform = stats.kstest(p_values, "uniform").pvalue
    report.check("sweep: no impossible state is visited", stray == 0, "%d visits" % stray)
    report.check("sweep: smallest of %d p-values, Bonferroni" % len(p_values),
                 smallest > FALSE_ALARM, "%.3f" % smallest)
    report.check("sweep: p-values are uniform", uniform > FALSE_ALARM, "p = %.3f" % uniform)
    rows.append(["all", models * patterns, "", "%.1e" % (models * patterns * copies * passes), "",
                 "Bonferroni %.3f" % smallest, "uniformity %.3f" % uniform])
    report.table("sweep", ["model", "records", "states a record", "imputations of a record",
                           "largest difference of a frequency", "smallest p", "median p"], rows)


# ---- The chain ----

TINY = {  # y, p, x, z: how many records
    (0, 0, 0, 0): 6, (0, 0, 1, 1): 2, (0, 0, 0, 1): 1, (0, 0, 1, 0): 1, (1, 0, 0, 0): 2,
    (1, 0, 1, 1): 5, (1, 0, 1, 0): 1, (1, 1, 0, 0): 2, (1, 1, 1, 1): 3, (1, 1, 0, 1): 1,
    (1, None, 0, 0): 1, (1, None, 1, 1): 1, (1, None, None, 0): 1, (1, None, None, 1): 1,
    (0, 0, None, 1): 1, (1, 1, None, 0): 1,
}


def tiny_chain_law(records, tables, beta_p, prior, nodes=24):
    """Stationary law of the program's chain: weights, modes and covariances of the imputations."""
    free = [(i, cell) for i, r in enumerate(records) for cell in ("x", "p") if
            (r[2] is None if cell == "x" else r[1] is None and r[0] == 1)]
    y = np.array([r[0] for r in records], dtype=float)
    fixed_x = np.array([r[2] or 0 for r in records], dtype=float)
    fixed_p = np.array([r[1] or 0 for r in records], dtype=float)
    points, weights = np.polynomial.hermite_e.hermegauss(nodes)
    grid = np.array(list(itertools.product(points, points)))
    grid_weight = np.outer(weights, weights).ravel() / (2 * np.pi)
    everything = list(itertools.product([0, 1], repeat=len(free)))
    centres, covariances = [], []
    transition = np.zeros((len(everything), len(everything)))
    for k, values in enumerate(everything):
        x, p = fixed_x.copy(), fixed_p.copy()
        for (i, cell), v in zip(free, values):
            (x if cell == "x" else p)[i] = v
        used = p == 0
        design = np.column_stack([np.ones(used.sum()), x[used]])
        centre, information = mode(y[used], design, prior, np.zeros(2))
        covariance = np.linalg.inv(information)
        centres.append(centre)
        covariances.append(covariance)
        beta = centre + grid @ np.linalg.cholesky(covariance).T
        move = np.ones((len(everything), len(grid)))
        to = np.array(everything)
        for at, (i, cell) in enumerate(free):
            # X is drawn given the P of the last sweep, P given the X just drawn.
            p_old = p[i]
            if cell == "x":
                q = tables[0][records[i][3]]
                like = []
                for v in (0, 1):
                    eta_p = beta_p[0] + beta_p[1] * v
                    eta_y = beta[:, 0] + beta[:, 1] * v
                    of_y = expit(eta_y) if y[i] else 1 - expit(eta_y)
                    like.append(expit(eta_p) * np.ones(len(beta)) if p_old
                                else (1 - expit(eta_p)) * of_y)
                up = like[1] * q / (like[1] * q + like[0] * (1 - q))
                move *= np.where(to[:, [at]] == 1, up, 1 - up)
            else:
                both = (i, "x") in free
                new_x = to[:, free.index((i, "x"))] if both else np.full(len(to), fixed_x[i])
                for v in (0, 1):
                    p1 = expit(beta_p[0] + beta_p[1] * v)
                    p0 = expit(beta[:, 0] + beta[:, 1] * v)
                    up = p1 / (p0 * (1 - p1) + p1)
                    rows = new_x == v
                    move[rows] *= np.where(to[rows][:, [at]] == 1, up, 1 - up)
        transition[k] = move @ grid_weight
    assert np.abs(transition.sum(axis=1) - 1).max() < 1e-9
    n = len(transition)
    equations = np.vstack([transition.T - np.identity(n), np.ones(n)])
    right = np.append(np.zeros(n), 1)
    pi = np.linalg.lstsq(equations, right, rcond=None)[0]
    return pi, np.array(centres), np.array(covariances)


def check_chain(program, report, options):
    records = [key for key, count in TINY.items() for _ in range(count)]
    cell = lambda c: np.nan if c is None else c
    folder = fresh_folder(options.folder, "tiny")
    write_data(os.path.join(folder, "data.csv"), [r[0] for r in records],
               [cell(r[1]) for r in records], [[r[3]] for r in records],
               [[cell(r[2])] for r in records])
    steps = 100000 if options.quick else 1000000
    prior = 0.5
    result = program.analysis(folder, prior=prior, seed=(362436069, 521288629), burnin=1000,
                              steps=steps)
    pi, centres, covariances = tiny_chain_law(records, result.tables, result.estimate[0], prior)
    mean = pi @ centres
    second = np.einsum("k,kij->ij", pi, covariances + centres[:, :, None] * centres[:, None, :])
    sd = np.sqrt(np.diag(second) - mean ** 2)
    chain, batches = result.chain, 100
    length = len(chain) // batches

    def compare(values, exact):
        """Mean over the chain, its Monte Carlo error by batch means, and the z-value."""
        batch = values[:length * batches].reshape(batches, length).mean(axis=1)
        error = batch.std(ddof=1) / np.sqrt(batches)
        return values.mean(), error, (values.mean() - exact) / error

    rows, z_values = [], []
    for j, name in enumerate(("intercept", "X")):
        seen, error, z = compare(chain[:, j], mean[j])
        rows.append(["mean, " + name, six(mean[j]), six(seen), "%.2g" % error, "%.2f" % z])
        z_values.append(z)
        seen, error, z = compare((chain[:, j] - mean[j]) ** 2, sd[j] ** 2)
        rows.append(["standard deviation, " + name, six(sd[j]), six(np.sqrt(seen)),
                     "%.2g" % (error / (2 * sd[j])), "%.2f" % z])
        z_values.append(z)
        for level in (-2, -1.5, -1, -0.5, 0, 0.5, 1, 1.5, 2):
            at = mean[j] + level * sd[j]
            exact = pi @ stats.norm.cdf((at - centres[:, j]) / np.sqrt(covariances[:, j, j]))
            seen, error, z = compare((chain[:, j] <= at).astype(float), exact)
            rows.append(["pr(%s <= mean %+.1f sd)" % (name, level), six(exact), six(seen),
                         "%.2g" % error, "%.2f" % z])
            z_values.append(z)
    largest = np.abs(z_values).max()
    limit = stats.t.isf(FALSE_ALARM / 2 / len(z_values), batches - 1)
    report.check("chain: %d quantities against the exact law" % len(z_values), largest < limit,
                 "largest |z| %.2f, limit %.2f, %d steps" % (largest, limit, steps))
    report.table("tiny_chain", ["quantity", "exact", "program, %d steps" % steps,
                                "Monte Carlo error", "z"], rows)


def main():
    program, report, options = begin("sweep_enumeration")
    check_sweep(program, report, options)
    check_chain(program, report, options)
    report.finish(program)


if __name__ == "__main__":
    main()
