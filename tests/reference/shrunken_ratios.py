"""Posterior distributions of hospitals' shrunken ratios on dense grids, with numpy.

Writes data/shrunken_data.csv (Hospital, LogOdds, Patients, Events) and data/shrunken_ratios.csv (Hospital, Mean,
Lower95, Upper95, AboveOne, AboveThreshold, BelowInverse, PredictiveP) and data/shrunken_tau.csv (Lower95, Upper95).

The model: logit = log-odds + mu + u, u normal with SD tau; flat priors of mu, and of tau from 0 to 3. Nothing is
adaptive: sums over mu, tau and eta at fixed steps.
"""

import pathlib

import numpy as np

FOLDER = pathlib.Path(__file__).parent / "data"
THRESHOLD = 1.2


def simulate(generator):
    """Groups of patients per hospital: log-odds, number, events."""
    hospitals = []
    for size in (2, 3, 4, 6, 8, 12, 15, 20, 30, 40, 60, 100, 150, 12):
        effect = generator.normal(0.1, 0.35)
        groups = []
        for _ in range(5):
            log_odds = round(generator.normal(-2, 0.8), 4)
            patients = 1 + int(generator.poisson(size))
            risk = 1 / (1 + np.exp(-(log_odds + effect)))
            groups.append((log_odds, patients, int(generator.binomial(patients, risk))))
        hospitals.append(groups)
    return hospitals


def softplus(x):
    return np.logaddexp(0, x)


def masses(groups, eta):
    """P(S = k) of a hospital under a shift."""
    result = np.ones(1)
    for log_odds, patients, _ in groups:
        q = 1 / (1 + np.exp(-(log_odds + eta)))
        for _ in range(patients):
            result = np.convolve(result, [1 - q, q])
    return result


def main():
    hospitals = simulate(np.random.default_rng(20170044))
    eta = np.linspace(-6, 6, 6001)
    step = eta[1] - eta[0]
    mu = np.linspace(-1.4, 1.6, 101)
    tau_step = 0.02
    tau = np.arange(tau_step / 2, 3, tau_step)
    log_likelihood = np.array([sum(e * eta - n * (softplus(l + eta) - softplus(l)) for l, n, e in groups)
                               for groups in hospitals])
    events = np.array([sum(n / (1 + np.exp(-(l + eta))) for l, n, e in groups) for groups in hospitals])
    likelihood = np.exp(log_likelihood - log_likelihood.max(axis=1, keepdims=True))

    cuts = np.exp(np.linspace(-4, 4, 3201))
    log_weights = np.empty((len(mu), len(tau)))
    for a, m in enumerate(mu):
        for b, t in enumerate(tau):
            prior = np.exp(-((eta - m) / t) ** 2 / 2) * (step / t / np.sqrt(2 * np.pi))
            log_weights[a, b] = np.log(likelihood @ prior).sum()
    weights = np.exp(log_weights - log_weights.max())
    weights /= weights.sum()
    lines = ["Hospital,Mean,Lower95,Upper95,AboveOne,AboveThreshold,BelowInverse,PredictiveP"]
    means = np.zeros(len(hospitals))
    distribution = np.zeros((len(hospitals), len(cuts)))
    points = {name: np.zeros(len(hospitals)) for name in ("one", "threshold", "inverse")}
    predictive = np.zeros((len(hospitals), len(eta)))
    for a, m in enumerate(mu):
        for b, t in enumerate(tau):
            w = weights[a, b]
            if w < 1e-9:
                continue
            prior = np.exp(-((eta - m) / t) ** 2 / 2) * (step / t / np.sqrt(2 * np.pi))
            posterior = likelihood * prior
            posterior /= posterior.sum(axis=1, keepdims=True)
            cumulated = np.cumsum(posterior, axis=1) - posterior / 2
            expected = events @ prior
            means += w * (posterior * events).sum(axis=1) / expected
            predictive += w * prior
            for h in range(len(hospitals)):
                ratios = events[h] / expected[h]
                distribution[h] += w * np.interp(cuts, ratios, cumulated[h])
                for name, c in (("one", 1), ("threshold", THRESHOLD), ("inverse", 1 / THRESHOLD)):
                    points[name][h] += w * np.interp(c, ratios, cumulated[h])
    bins = eta[:-1].reshape(-1, 10).mean(axis=1)
    for h, groups in enumerate(hospitals):
        observed = sum(e for _, _, e in groups)
        share = 0.5 if events[h][3000] >= 5 else 1
        upper = lower = 0
        weight = predictive[h][:-1].reshape(-1, 10).sum(axis=1)
        for x, w in zip(bins, weight / weight.sum()):
            if w > 1e-12:
                f = masses(groups, x)
                upper += w * (f[observed + 1:].sum() + share * f[observed])
                lower += w * (f[:observed].sum() + share * f[observed])
        quantile = [np.interp(p, distribution[h], np.log(cuts)) for p in (0.025, 0.975)]
        values = [means[h], *np.exp(quantile), 1 - points["one"][h], 1 - points["threshold"][h],
                  points["inverse"][h], min(1, 2 * min(upper, lower))]
        lines.append(f"{h + 1}," + ",".join(f"{value:.10g}" for value in values))
    (FOLDER / "shrunken_ratios.csv").write_text("\n".join(lines) + "\n")
    cumulated = np.concatenate([[0], np.cumsum(weights.sum(axis=0))])
    edges = np.concatenate([[0], tau + tau_step / 2])
    limits = np.interp([0.025, 0.975], cumulated, edges)
    (FOLDER / "shrunken_tau.csv").write_text(f"Lower95,Upper95\n{limits[0]:.8g},{limits[1]:.8g}\n")
    data = ["Hospital,LogOdds,Patients,Events"]
    data += [f"{h + 1},{l},{n},{e}" for h, groups in enumerate(hospitals) for l, n, e in groups]
    (FOLDER / "shrunken_data.csv").write_text("\n".join(data) + "\n")


if __name__ == "__main__":
    main()
