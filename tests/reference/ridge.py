#!/usr/bin/python3
"""Ridge-penalised logistic fits of data/small_regression.csv, intercept penalised like the rest.

    ridge.py             (writes data/ridge.csv)

The minimum of the penalised negative log-likelihood is found by BFGS, which never sees a second
derivative, and polished by Powell's hybrid root finder on the gradient with a numerical Jacobian.
Errors are the square roots of the diagonal of the inverse of X^T W X + lambda I.
"""
import numpy as np
from scipy.optimize import minimize, root
from scipy.special import expit

from small_data import load, write_table


def ridge(y, x, penalty):
    """Estimates and errors of the outcomes y on the columns of x; raises when no minimum is found."""
    def loss(beta):
        eta = x @ beta
        return np.logaddexp(0, eta).sum() - y @ eta + penalty / 2 * beta @ beta

    def gradient(beta):
        return x.T @ (expit(x @ beta) - y) + penalty * beta

    start = minimize(loss, np.zeros(x.shape[1]), jac=gradient, method="BFGS",
                     options={"gtol": 1e-7}).x
    beta = root(gradient, start, method="hybr", options={"xtol": 1e-15}).x
    assert np.abs(gradient(beta)).max() < 1e-14 * len(y)
    mu = expit(x @ beta)
    information = (x.T * (mu * (1 - mu))) @ x + penalty * np.identity(x.shape[1])
    return beta, np.sqrt(np.diag(np.linalg.inv(information)))


def main():
    _, y, x = load()
    rows = []
    for penalty in (0.5, 2.0):
        rows += [["%g" % penalty, "X%d" % j, "%.13g" % b, "%.13g" % e]
                 for j, (b, e) in enumerate(zip(*ridge(y, x, penalty)))]
    write_table("ridge.csv", ["Lambda", "Column", "Estimate", "ModelError"], rows)


if __name__ == "__main__":
    main()
