"""Samplers for the hierarchical model, independent of the program, to tell its parts apart.

`Sampler` imputes and draws with numpy, whole columns at a time and from numpy's own generator. Its
switches are the places where the program departs from the full posterior of the model:

    exact     False: beta_Y is drawn from the normal approximation N(mode, information^-1), as the
              program does. True: a Metropolis step with that proposal, widened, leaves the exact
              conditional posterior unchanged.
    learn     False: beta_P and the [X|Z] tables stay as given. True: they are drawn with the rest:
              beta_P by Metropolis with its normal prior, each table entry from its beta posterior.

With exact and learn both True the chain has the full posterior.
"""
import numpy as np

from model import expit

WIDEN = 1.15  # standard deviations of a Metropolis proposal over those of the approximation
METROPOLIS_STEPS = 2


def mode(y, x, prior, beta):
    """Posterior mode of a logistic regression by Newton's method, and the information there."""
    for _ in range(100):
        mu = expit(x @ beta)
        information = (x.T * (mu * (1 - mu))) @ x + prior * np.identity(x.shape[1])
        step = np.linalg.solve(information, x.T @ (y - mu) - prior * beta)
        size = np.abs(step).max()
        beta = beta + step * min(1.0, 5.0 / max(size, 1e-300))
        if size < 1e-9:
            return beta, information
    raise RuntimeError("no convergence")


def log_posterior(beta, y, x, prior):
    eta = x @ beta
    return y @ eta - np.logaddexp(0, eta).sum() - prior / 2 * beta @ beta


def metropolis(stream, beta, y, x, prior, centre, information):
    root = np.linalg.cholesky(information)
    for _ in range(METROPOLIS_STEPS):
        normal = stream.standard_normal(len(beta))
        proposal = centre + WIDEN * np.linalg.solve(root.T, normal)
        here = root.T @ (beta - centre) / WIDEN
        ratio = (log_posterior(proposal, y, x, prior) + normal @ normal / 2
                 - log_posterior(beta, y, x, prior) - here @ here / 2)
        if np.log(stream.random()) < ratio:
            beta = proposal
    return beta


class Sampler:
    def __init__(self, stream, data, tables, beta_p, prior, prior_p=1.0, exact=False, learn=False,
                 table_prior=((1, 1), (1, 1))):
        """`table_prior` holds the beta priors of the table entries for Z = 0 and Z = 1."""
        self.stream, self.exact, self.learn = stream, exact, learn
        self.table_prior = table_prior
        self.prior, self.prior_p = prior, prior_p
        self.y, self.z = data.y, data.z
        self.x_missing, self.p_missing = np.isnan(data.x), np.isnan(data.p)
        self.x = np.column_stack([np.ones(len(data.y)), np.nan_to_num(data.x)])
        self.p = np.nan_to_num(data.p)
        self.tables, self.beta_p = np.array(tables), np.array(beta_p)
        self.beta = np.zeros(self.x.shape[1])
        self.centre = np.zeros(self.x.shape[1])
        self.centre_p = np.array(beta_p)
        self.rows = [np.flatnonzero(self.x_missing[:, j]) for j in range(self.x_missing.shape[1])]
        self.p_rows = np.flatnonzero(self.p_missing & (self.y == 1))

    def impute(self):
        for j, rows in enumerate(self.rows):
            if len(rows) == 0:
                continue
            x = self.x[rows]
            x[:, j + 1] = 0
            eta_y0, eta_p0 = x @ self.beta, x @ self.beta_p
            eta_y1, eta_p1 = eta_y0 + self.beta[j + 1], eta_p0 + self.beta_p[j + 1]
            y, p = self.y[rows], self.p[rows]
            ratio = p * (eta_p1 - eta_p0) - np.logaddexp(0, eta_p1) + np.logaddexp(0, eta_p0)
            of_y = y * (eta_y1 - eta_y0) - np.logaddexp(0, eta_y1) + np.logaddexp(0, eta_y0)
            ratio += np.where(p == 1, 0.0, of_y)
            q = np.where(self.z[rows, j] == 1, self.tables[j, 1], self.tables[j, 0])
            with np.errstate(divide="ignore"):
                ratio += np.log(q) - np.log1p(-q)
            self.x[rows, j + 1] = self.stream.random(len(rows)) < expit(ratio)
        rows = self.p_rows
        if len(rows):
            p1, p0 = expit(self.x[rows] @ self.beta_p), expit(self.x[rows] @ self.beta)
            self.p[rows] = self.stream.random(len(rows)) < p1 / (p1 + p0 * (1 - p1))

    def draw(self):
        used = self.p == 0
        y, x = self.y[used], self.x[used]
        self.centre, information = mode(y, x, self.prior, self.centre)
        if self.exact:
            self.beta = metropolis(self.stream, self.beta, y, x, self.prior, self.centre,
                                   information)
        else:
            root = np.linalg.cholesky(information)
            self.beta = self.centre + np.linalg.solve(
                root.T, self.stream.standard_normal(len(self.beta)))
        if self.learn:
            self.centre_p, information = mode(self.p, self.x, self.prior_p, self.centre_p)
            self.beta_p = metropolis(self.stream, self.beta_p, self.p, self.x, self.prior_p,
                                     self.centre_p, information)
            for j in range(len(self.tables)):
                for z in (0, 1):
                    group = self.x[self.z[:, j] == z, j + 1]
                    ones = group.sum()
                    a, b = self.table_prior[z]
                    self.tables[j, z] = self.stream.beta(a + ones, b + len(group) - ones)

    def run(self, burnin, steps, thinning=1):
        """Kept draws of beta_Y, and of beta_P beside them."""
        kept, kept_p = [], []
        for i in range(1, burnin + steps + 1):
            self.impute()
            self.draw()
            if i > burnin and (i - burnin) % thinning == 0:
                kept.append(self.beta.copy())
                kept_p.append(self.beta_p.copy())
        return np.array(kept), np.array(kept_p)


def monte_carlo_error(chain, batches=50):
    """Standard error of the chain's mean and of its variance by batch means, per column."""
    length = len(chain) // batches
    cut = chain[:length * batches].reshape(batches, length, -1)
    mean_error = cut.mean(axis=1).std(axis=0, ddof=1) / np.sqrt(batches)
    centred = (cut - chain.mean(axis=0)) ** 2
    variance_error = centred.mean(axis=1).std(axis=0, ddof=1) / np.sqrt(batches)
    return mean_error, variance_error
