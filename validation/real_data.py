"""The public data sets of the fits, from the CSV files that real_data.R writes."""
import csv
import os
from types import SimpleNamespace

import numpy as np

from program import fresh_folder, write_data
from report import rscript


def fetch(folder):
    """Has R write the data sets into `folder`; returns their descriptions."""
    rscript("real_data.R", folder)
    with open(os.path.join(folder, "sets.csv"), newline="") as f:
        return [SimpleNamespace(**row) for row in csv.DictReader(f)]


def load(folder, name):
    """Arrays y, p, x (NaN where missing), z, cluster, and the names of the covariates.

    Z is the X table with its columns reversed and 0 in place of a missing cell, so that [Y|Z] is a
    fit of another design.
    """
    with open(os.path.join(folder, name + ".csv"), newline="") as f:
        rows = list(csv.reader(f))
    table = np.array([[float(c) if c else np.nan for c in row] for row in rows[1:]])
    x = table[:, 3:]
    z = np.nan_to_num(x[:, ::-1], nan=0.0)
    return SimpleNamespace(cluster=table[:, 0].astype(int), y=table[:, 1], p=table[:, 2], x=x, z=z,
                           names=rows[0][3:])


def models(data):
    """The four models as the program defines them: label -> (response, design, records used)."""
    complete = ~np.isnan(data.x).any(axis=1)
    everything = np.ones(len(data.y), dtype=bool)
    return {"[P|X]": (data.p, data.x, complete), "[Y|Z]": (data.y, data.z, everything),
            "[Y|X]": (data.y, data.x, complete),
            "[Y|X;P=0]": (data.y, data.x, complete & (data.p == 0))}


def with_intercept(design, records):
    x = design[records]
    return np.column_stack([np.ones(len(x)), x])


def prepare(scratch, folder, name):
    """Writes the program's data file for a set; returns the run's folder and the arrays."""
    data = load(folder, name)
    run = fresh_folder(scratch, "runs", name)
    names = (["Z_" + n for n in data.names[::-1]], data.names)
    write_data(os.path.join(run, "data.csv"), data.y, data.p, data.z, data.x,
               hospital=data.cluster, names=names)
    return run, data
