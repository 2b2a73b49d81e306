#!/usr/bin/python3
"""C-statistics with ties by scikit-learn (area under the ROC curve).

    cstatistic.py        (writes data/cstatistic_predictions.csv and data/cstatistic.csv)

Five columns of predictions of one response: as drawn, rounded to two and to one decimals, all
equal, and perfectly separating.
"""
import random

from sklearn.metrics import roc_auc_score

from small_data import write_table


def main():
    rng = random.Random(11)
    rows = []
    for _ in range(80):
        p = round(rng.random(), 6)
        y = int(rng.random() < 0.2 + 0.5 * p)
        rows.append([y, "%.6f" % p, "%.2f" % p, "%.1f" % p, "0.25", "0.9" if y else "0.3"])
    names = ["Drawn", "TwoDecimals", "OneDecimal", "Equal", "Separating"]
    write_table("cstatistic_predictions.csv", ["Response"] + names, rows)
    response = [row[0] for row in rows]
    write_table("cstatistic.csv", ["Prediction", "CStatistic"],
                [[name, "%.15g" % roc_auc_score(response, [float(row[j + 1]) for row in rows])]
                 for j, name in enumerate(names)])


if __name__ == "__main__":
    main()
