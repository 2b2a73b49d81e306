"""Poisson-binomial distributions by plain convolution with 60 decimal digits.

Writes data/poisson_binomial_risks.csv (Set, Risk) and data/poisson_binomial.csv (Set, Events, Mass, Below):
the probabilities that so many patients, and that fewer, have the event.
"""

import decimal
import math
import pathlib
import random

FOLDER = pathlib.Path(__file__).parent / "data"
decimal.getcontext().prec = 60


def masses(risks):
    """P(S = k) for k = 0 .. n: a patient at a time."""
    result = [decimal.Decimal(1)]
    for risk in risks:
        q = decimal.Decimal(risk)  # the double's exact value
        padded = [decimal.Decimal(0), *result, decimal.Decimal(0)]
        result = [padded[k + 1] * (1 - q) + padded[k] * q for k in range(len(result) + 1)]
    return result


def sets(generator):
    logistic = lambda t: 1 / (1 + math.exp(-t))
    yield "one", [0.3]
    yield "certain", [1.0, 0.0, 0.5, 1.0, 0.25]
    yield "binomial", [0.125] * 70
    yield "rare", [1e-9, 1e-3, 2e-12, 0.04, 1e-6]
    yield "block", [logistic(generator.gauss(-2, 1)) for _ in range(64)]
    yield "over a block", [logistic(generator.gauss(-2, 1)) for _ in range(65)]
    yield "hospital", [logistic(generator.gauss(-2.5, 1.2)) for _ in range(300)]
    yield "large", [logistic(generator.gauss(-1.5, 1)) for _ in range(1500)]


def main():
    generator = random.Random(20130441)
    risks_lines, lines = ["Set,Risk"], ["Set,Events,Mass,Below"]
    for name, risks in sets(generator):
        risks_lines += [f"{name},{risk!r}" for risk in risks]
        below = decimal.Decimal(0)
        for events, mass in enumerate(masses(risks)):
            if mass > decimal.Decimal("1e-18"):
                lines.append(f"{name},{events},{float(mass)!r},{float(below)!r}")
            below += mass
    (FOLDER / "poisson_binomial_risks.csv").write_text("\n".join(risks_lines) + "\n")
    (FOLDER / "poisson_binomial.csv").write_text("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
