"""Turns a data file into what the peers load before their clocks start.

Usage: prepare.py FOLDER INDICATORS

FOLDER holds data.csv; beside it are written
  z.npy, x.npy         the cells with the intercept in column 0, bytes of 0 and 1
  xmissing.npy         which X cells are missing
  y.npy, p.npy         outcome and presence on admission, p corrected as the program does
  pmissing.npy         where P is missing
  hospital.npy         the number of each record's hospital, ascending
  scores.bin           n predictions by [Y|Z], then n outcomes, doubles
  predictions.csv      the columns of an individual predictions file, six digits
  plink.*, phenotype.txt, covariates.txt
                       [Y|Z] for plink2: the first covariate as a variant
  reference.json       the answers: numbers of set cells, coefficients of the three fits of [Y|Z],
                       the C-statistic of scores.bin
"""

import json
import os
import subprocess
import sys

import numpy as np
import pandas as pd

from peer_numpy import fit_gee


def fit_to_the_end(z, y, penalty, beta):
    """[Y|Z] by plain Newton steps until they are lost in rounding."""
    for _ in range(50):
        mu = 1 / (1 + np.exp(-(z @ beta)))
        weight = mu * (1 - mu)
        step = np.linalg.solve((z * weight[:, None]).T @ z + penalty * np.eye(len(beta)),
                               z.T @ (y - mu) - penalty * beta)
        beta = beta + step
        if np.abs(step).max() < 1e-12 * np.abs(beta).max():
            break
    return beta


def c_statistic(predictions, outcomes):
    """From the mean rank of the events; ties share their ranks."""
    ranks = pd.Series(predictions).rank().to_numpy()
    events = int(outcomes.sum())
    others = len(outcomes) - events
    twice = round(2 * ranks[outcomes == 1].sum()) - events * (events + 1)
    return twice / (2 * events * others)


def write_plink_files(folder, z, y):
    names = [f"s{i}" for i in range(len(y))]
    variant = os.path.join(folder, "variant.vcf")
    with open(variant, "w", encoding="ascii") as vcf:
        vcf.write("##fileformat=VCFv4.2\n##contig=<ID=1>\n"
                  '##FORMAT=<ID=GT,Number=1,Type=String,Description="Genotype">\n')
        vcf.write("#CHROM\tPOS\tID\tREF\tALT\tQUAL\tFILTER\tINFO\tFORMAT\t")
        vcf.write("\t".join(names) + "\n1\t1\tv\tA\tC\t.\t.\t.\tGT\t")
        vcf.write("\t".join("0/1" if cell else "0/0" for cell in z[:, 1]) + "\n")
    subprocess.run(["plink2", "--threads", "1", "--vcf", variant, "--make-pgen", "--out",
                    os.path.join(folder, "plink")], check=True, stdout=subprocess.DEVNULL)
    os.remove(variant)
    with open(os.path.join(folder, "phenotype.txt"), "w", encoding="ascii") as phenotype:
        phenotype.write("#IID\tY\n")
        phenotype.writelines(f"{name}\t{value + 1}\n" for name, value in zip(names, y))
    covariates = pd.DataFrame(z[:, 2:], columns=[f"C{j}" for j in range(2, z.shape[1])])
    covariates.insert(0, "#IID", names)
    covariates.to_csv(os.path.join(folder, "covariates.txt"), sep="\t", index=False)


def main():
    folder, indicator_count = sys.argv[1], int(sys.argv[2])
    frame = pd.read_csv(os.path.join(folder, "data.csv"), dtype={0: str, 1: str})
    records = len(frame)
    columns = (frame.shape[1] - 3 - indicator_count) // 2 + 1
    hospital = pd.factorize(frame.iloc[:, 1])[0].astype(np.int32)
    y = frame.iloc[:, 2].to_numpy(np.uint8)

    indicators = frame.iloc[:, 3:3 + indicator_count].to_numpy(float)
    p_missing = np.isnan(indicators).any(axis=1)
    p = (indicators == 1).any(axis=1)
    p &= (y == 1) | p_missing

    def with_intercept(cells):
        matrix = np.ones((records, columns), np.uint8)
        matrix[:, 1:] = cells
        return matrix

    first_x = 3 + indicator_count + columns - 1
    z = with_intercept(frame.iloc[:, 3 + indicator_count:first_x].to_numpy(np.uint8))
    x_cells = frame.iloc[:, first_x:].to_numpy(float)
    x = with_intercept(x_cells == 1)
    x_missing = np.zeros((records, columns), bool)
    x_missing[:, 1:] = np.isnan(x_cells)

    arrays = {"z": z, "x": x, "xmissing": x_missing, "y": y, "p": p.astype(np.uint8),
              "pmissing": p_missing, "hospital": hospital}
    for name, array in arrays.items():
        np.save(os.path.join(folder, name + ".npy"), array)

    dense = z.astype(float)
    fitted = fit_to_the_end(dense, y, 1.0, np.zeros(columns))
    prediction = 1 / (1 + np.exp(-(dense @ fitted)))
    np.concatenate([prediction, y.astype(float)]).tofile(os.path.join(folder, "scores.bin"))
    six_digits = np.array([float("%.6g" % value) for value in prediction])
    pd.DataFrame({
        "Key": frame.iloc[:, 0], "Hospital ID": frame.iloc[:, 1], "Y": y,
        "E[Y|Z]": six_digits, "E[Y|X]": six_digits,
        "E[Y|P=0]": [float("%.6g" % value) for value in y * (1.0 - prediction)],
        "E[Y|X,P=0]": six_digits, "E[Y|X,P=0]-MCMC": six_digits,
        "P": pd.array(np.where(p_missing, 0, p), dtype="Int8"),
        "E[P|X]": six_digits, "E[P|YPXZ]": six_digits,
    }).assign(P=lambda d: d["P"].mask(p_missing)).to_csv(
        os.path.join(folder, "predictions.csv"), index=False)
    write_plink_files(folder, z, y)
    starts = np.flatnonzero(np.diff(hospital, prepend=-1))
    reference = {
        "set_cells": [int(y.sum()), int(p.sum()), int(z.sum()), int(x.sum()),
                      int(p_missing.sum()) + int(x_missing.sum())],
        "logit": list(fitted),
        "logit without prior": list(fit_to_the_end(dense, y, 0.0, fitted)),
        "gee": list(fit_gee(dense, y.astype(float), starts)[0]),
        "cstat": c_statistic(prediction, y),
    }
    with open(os.path.join(folder, "reference.json"), "w", encoding="ascii") as file:
        json.dump(reference, file)


main()
