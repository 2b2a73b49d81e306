#!/usr/bin/python3
"""Generalized estimating equations with dense cluster covariance matrices.

    gee.py               (writes data/gee.csv)

K.-Y. Liang and S. L. Zeger, Longitudinal data analysis using generalized linear models,
Biometrika 73 (1986). For hospital h with design X_h, means mu_h and S_h = diag(mu_h (1 - mu_h)):

    D_h = S_h X_h,  V_h = S_h^(1/2) R(alpha) S_h^(1/2),  R = (1 - alpha) I + alpha 1 1^T,
    U_h = D_h^T V_h^-1 (y_h - mu_h),  H = sum D_h^T V_h^-1 D_h,  beta solves sum U_h = 0,

model covariance H^-1, empirical covariance H^-1 (sum U_h U_h^T) H^-1. With Pearson residuals r,
N records, p columns and M = sum n_h (n_h - 1) ordered pairs,

    phi = sum r^2 / (N - p),  alpha = sum over ordered pairs r_i r_k / ((M - p) phi).

A prior of precision lambda belongs to the equations as the program states them, that is without
the factor 1 / (1 - alpha) of R^-1; in the scale above it is lambda / (1 - alpha).

The equations are solved by a root finder for beta with alpha a function of beta, so the solution
is the joint fixed point; no step of the program's iteration is used.
"""
import numpy as np
from scipy.optimize import root
from scipy.special import expit

from small_data import load, write_table


def correlation(mu, y, hospital, p):
    r = (y - mu) / np.sqrt(mu * (1 - mu))
    phi = (r ** 2).sum() / (len(y) - p)
    products, pairs = 0.0, 0
    for h in np.unique(hospital):
        cluster = r[hospital == h]
        full = np.outer(cluster, cluster)
        products += full.sum() - np.trace(full)
        pairs += len(cluster) * (len(cluster) - 1)
    return products / ((pairs - p) * phi), phi


def cluster_terms(beta, y, x, hospital):
    """alpha, phi, the matrix H and the rows U_h."""
    mu = expit(x @ beta)
    alpha, phi = correlation(mu, y, hospital, x.shape[1])
    h_sum, scores = np.zeros((x.shape[1],) * 2), []
    for h in np.unique(hospital):
        c = hospital == h
        n = c.sum()
        s = np.diag(mu[c] * (1 - mu[c]))
        r = (1 - alpha) * np.identity(n) + alpha * np.ones((n, n))
        v = np.sqrt(s) @ r @ np.sqrt(s)
        d = s @ x[c]
        scores.append(d.T @ np.linalg.solve(v, y[c] - mu[c]))
        h_sum += d.T @ np.linalg.solve(v, d)
    return alpha, phi, h_sum, np.array(scores)


def solve(y, x, hospital, penalty, start=None, xtol=1e-15, largest=1e-10):
    """Estimates, model and empirical errors, alpha and phi, sought from `start` (zeros) to the root
    finder's tolerance `xtol`; raises when an equation is left with more than `largest`."""
    def equations(beta):
        alpha, _, _, scores = cluster_terms(beta, y, x, hospital)
        return scores.sum(axis=0) - penalty / (1 - alpha) * beta

    start = np.zeros(x.shape[1]) if start is None else start
    beta = root(equations, start, method="hybr", options={"xtol": xtol}).x
    assert np.abs(equations(beta)).max() < largest
    alpha, phi, h, scores = cluster_terms(beta, y, x, hospital)
    bread = np.linalg.inv(h + penalty / (1 - alpha) * np.identity(len(beta)))
    model = np.sqrt(np.diag(bread))
    empirical = np.sqrt(np.diag(bread @ (scores.T @ scores) @ bread))
    return beta, model, empirical, alpha, phi


def main():
    hospital, y, x = load()
    rows = []
    for penalty in (0.0, 0.5):
        beta, model, empirical, alpha, phi = solve(y, x, hospital, penalty)
        rows += [["%g" % penalty, "X%d" % j] + ["%.12g" % v for v in values]
                 for j, values in enumerate(zip(beta, model, empirical))]
        rows += [["%g" % penalty, "alpha", "%.12g" % alpha, "", ""],
                 ["%g" % penalty, "phi", "%.12g" % phi, "", ""]]
    write_table("gee.csv", ["Lambda", "Column", "Estimate", "ModelError", "EmpiricalError"], rows)


if __name__ == "__main__":
    main()
