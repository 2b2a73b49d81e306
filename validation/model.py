"""The hierarchical model as a generator of data with known truth.

For every record the covariates X_j (0/1) are independent given their signs Z_j, with
pr(X_j = 1 | Z_j = z) = t_jz. The condition is present on admission (P = 1) with log-odds
(1, X) . beta_P. Where P = 0 the outcome Y is 1 with log-odds (1, X) . beta_Y; where P = 1, Y is 1.
"""
from types import SimpleNamespace

import numpy as np


def expit(t):
    return 1 / (1 + np.exp(-t))


def draw_records(stream, n, z_rate, tables, beta_y, beta_p):
    """n complete records. `tables` is columns x 2; `z_rate` the chance of Z = 1 per column."""
    v = len(tables)
    z = (stream.random((n, v)) < z_rate).astype(float)
    chance = np.where(z == 1, tables[:, 1], tables[:, 0])
    x = (stream.random((n, v)) < chance).astype(float)
    design = np.column_stack([np.ones(n), x])
    p = (stream.random(n) < expit(design @ beta_p)).astype(float)
    y = np.maximum(p, stream.random(n) < expit(design @ beta_y)).astype(float)
    return SimpleNamespace(y=y, p=p, z=z, x=x)


def hide(stream, data, missing_x, missing_p):
    """A copy with X and P cells deleted; the chances may be arrays (records, records x columns)."""
    x, p = data.x.copy(), data.p.copy()
    x[stream.random(x.shape) < missing_x] = np.nan
    p[stream.random(p.shape) < missing_p] = np.nan
    return SimpleNamespace(y=data.y, p=p, z=data.z, x=x)


def log_odds(probability):
    return np.log(probability / (1 - probability))


def pearson_clusters(beta, y, x, cluster):
    """The Pearson residuals at the coefficients beta summed by cluster, and the working correlation
    alpha that the program's moment formula makes of them. `index` is the cluster of each record,
    `n` the records of each cluster; mu and s = sqrt(mu (1 - mu)) have one entry per record."""
    mu = expit(x @ beta)
    s = np.sqrt(mu * (1 - mu))
    r = (y - mu) / s
    _, index, n = np.unique(cluster, return_inverse=True, return_counts=True)
    sums = np.bincount(index, weights=r)
    p = len(beta)
    phi = (r ** 2).sum() / (len(y) - p)
    alpha = ((sums ** 2).sum() - (r ** 2).sum()) / (((n * (n - 1)).sum() - p) * phi)
    return SimpleNamespace(mu=mu, s=s, index=index, n=n, sums=sums, alpha=alpha)
