"""The Markov chain: an imputation sweep, then a draw of the [Y|X,P=0] coefficients."""
import math
import os
import time

import numpy as np

from regression import (NonPositiveMatrix, cholesky, empirical_covariance, exp, logistic, newton,
                        solve_transposed, warn_at_limit)
from text_files import join, lg, open_for_writing, system_path


def ratio(a, b):
    """a / b as IEEE arithmetic has it: 0 / 0 is not a number, which no draw is below."""
    return float(np.float64(a) / np.float64(b))


def row_predictor(row, beta):
    eta = 0.0
    for cell, b in zip(row, beta):
        if cell:
            eta += b
    return eta


def likelihood(y, p, row, beta_y, beta_p):
    """Of the record's Y and P, given its X row as it stands."""
    eta_p = row_predictor(row, beta_p)
    lik_p = logistic(eta_p) if p else 1 / (exp(eta_p) + 1)
    if p:
        assert y
        return 1 * lik_p
    eta_y = row_predictor(row, beta_y)
    lik_y = logistic(eta_y) if y else 1 / (exp(eta_y) + 1)
    return lik_y * lik_p


def impute_record(y, p, p_missing, row, x_missing, z_row, beta_y, beta_p, prior, generator):
    """Draws the missing X cells of `row` in place, in ascending order, then P; returns P."""
    for j in range(1, len(row)):
        if not x_missing[j]:
            continue
        q = prior[2 * (j - 1) + int(z_row[j])]
        if q == 0:
            row[j] = False
        elif q == 1:
            row[j] = True
        else:
            row[j] = True
            l1 = likelihood(y, p, row, beta_y, beta_p)
            row[j] = False
            l0 = likelihood(y, p, row, beta_y, beta_p)
            posterior = ratio(l1 * q, l0 * (1 - q) + l1 * q)
            row[j] = posterior > generator.uniform()
    if y and p_missing:
        p1 = logistic(row_predictor(row, beta_p))
        p0 = logistic(row_predictor(row, beta_y))
        posterior = ratio(p1, p0 * (1 - p1) + p1)
        p = posterior > generator.uniform()
    return p


def imputation_sweep(data, beta_y, beta_p, prior, generator):
    with np.errstate(all="ignore"):
        for i in np.flatnonzero(data.incomplete):
            row = [bool(cell) for cell in data.x[i]]
            data.p[i] = impute_record(bool(data.y[i]), bool(data.p[i]), bool(data.p_missing[i]),
                                      row, data.x_missing[i], data.z[i], beta_y, beta_p, prior,
                                      generator)
            data.x[i] = row


class Chain:
    """One run of the model. `beta` is the current draw, `rows` the recorded ones of a phase."""

    def __init__(self, definition, data, beta_p, prior, generator, console):
        self.definition, self.data, self.console = definition, data, console
        self.beta_p, self.prior, self.generator = beta_p, prior, generator
        self.n = data.variables
        self.beta = [0.0] * self.n
        self.factor = np.identity(self.n).tolist()
        data.prepare_imputation()
        self.start_phase()

    def start_phase(self):
        self.rows, self.accepted = [], 0
        self.sum, self.squares = [0.0] * self.n, [0.0] * self.n

    def step(self):
        imputation_sweep(self.data, self.beta, self.beta_p, self.prior, self.generator)
        data, parameters = self.data, self.definition.parameters_mcmc
        used = ~data.p
        hospital = data.hospital[used] if self.definition.use_gee else None
        state = newton(parameters, data.y[used], data.x[used], hospital, len(data.hospital_ids))
        warn_at_limit(state, parameters, self.console)
        if not self.definition.use_gee:
            self.factor = state.factor
        else:
            try:
                with np.errstate(all="ignore"):
                    self.factor = cholesky(empirical_covariance(state))
            except NonPositiveMatrix:
                self.console.error("Non positive matrix in Cholesky decomposition")
                self.console.out("Exception: Empirical variance\n")
        # Normals are drawn for the last component first, as back substitution needs them.
        z = [self.generator.normal() for _ in range(self.n)][::-1]
        self.beta = [float(b) + r for b, r in zip(state.beta, solve_transposed(self.factor, z))]
        self.accepted += 1

    def record(self):
        self.rows.append(list(self.beta))
        for i, v in enumerate(self.beta):
            self.sum[i] += v
            self.squares[i] += v * v

    def run_phase(self, iterations, label):
        self.start_phase()
        started = time.process_time()
        for i in range(1, iterations + 1):
            self.step()
            if i % self.definition.mcmc.thinning == 0:
                self.record()
            self.console.out("%s: %d Intercept: %s \n" % (label, i, lg(self.beta[0])))
        seconds = int((time.process_time() - started) * 1000) / 1000.0
        self.console.out("\nMCMC: %d iterations in %s seconds\n\n" % (iterations, lg(seconds)))

    def mean(self, i):
        return self.sum[i] / len(self.rows) if self.rows else 0.0

    def variance(self, i):
        kept = len(self.rows)
        if kept < 2:
            return 0.0
        return (self.squares[i] - (self.sum[i] / kept) * self.sum[i]) / (kept - 1)

    def acceptance(self):
        count = len(self.rows) * self.definition.mcmc.thinning
        return self.accepted / count if count >= 1 else 0.0


def run_chain(definition, data, beta_p, prior, generator, console):
    """Writes Chain.csv and Summary.csv; returns the rows of the [Y|X,P=0,MCMC] block."""
    chain = Chain(definition, data, beta_p, prior, generator, console)
    mcmc = definition.mcmc
    folder = join(definition.folder, definition.mcmc_folder)
    try:
        os.mkdir(system_path(folder))
    except OSError:
        pass
    names = ["BetaYX[%d]" % i for i in range(chain.n)]
    with open_for_writing(join(folder, "Summary.csv")) as summary, \
            open_for_writing(join(folder, "Chain.csv")) as draws:
        draws.write(",".join(["Step"] + names) + "\n")
        if mcmc.burnin > 0:
            chain.run_phase(mcmc.burnin, "Burnin")
        if mcmc.steps > 0:
            chain.run_phase(mcmc.steps, "Mcmc")
            for k, row in enumerate(chain.rows, 1):
                draws.write(",".join(["%d" % (k * mcmc.thinning)] + [lg(v) for v in row]) + "\n")
            summary.write("Variable,Mean,Variance,Acceptance\n")
            summary.write("ImputeData,0,0,0\n")
            for i, name in enumerate(names):
                summary.write(",".join([name, lg(chain.mean(i)), lg(chain.variance(i)),
                                        lg(chain.acceptance())]) + "\n")
    block = []
    for i in range(chain.n):
        variance = chain.variance(i)
        error = math.sqrt(variance) if variance >= 0 else math.nan
        errors = (-1.0, error) if definition.use_gee else (error, -1.0)
        block.append((chain.mean(i),) + errors)
    return block
