"""Reads what Hovar writes into Python, as tables of pandas.

    import hovar
    chains = hovar.chains("results", coefficients="results/coefficients.csv")
    chains.describe()

chains         draws of the chains
inference_data the same for ArviZ, where it is installed
coefficients   estimates and standard errors of the five models
tables         how well each Z tells its X
predictions    individual or hospital predictions
c_statistics   C-statistics
summary        Summary.csv

Names, keys and hospital IDs are text, also where they look like numbers; they are taken for UTF-8,
and bytes that are not are kept by the error handler surrogateescape. A value that the program left
empty is NaN.
"""

import re
from pathlib import Path

import pandas as pd

MODELS = ["[P|X]", "[Y|Z]", "[Y|X]", "[Y|X,P=0]", "[Y|X,P=0,MCMC]"]
# By name, or by number in the coefficient file.
TEXT_COLUMNS = {"Key", "Hospital ID", "Variable", "Estimate", 0, 1}


def chains(folders, coefficients=None):
    """The draws of one or several chains, a row for each and a column for each coefficient.

    folders: a folder with the results of one chain, several of these, or one with the folders
    chain-1, chain-2, ... in it, as `hovar --chains` makes them. Chain.csv may lie deeper.

    coefficients: a coefficient file of the same model. Its X names then stand for BetaYX[0],
    BetaYX[1], ...; the two are joined by position. Names that occur twice get a number.

    The rows are indexed by chain, from 1, and step. The burn-in is not in the files. Chains must
    have the same columns and the same steps; otherwise this is a ValueError.
    """
    if isinstance(folders, (str, Path)):
        folders = [folders]
    files = [file for folder in folders for file in _chain_files(Path(folder))]
    draws = [_table(file).set_index("Step").astype(float) for file in files]
    for file, one in zip(files, draws):
        if not (one.columns.equals(draws[0].columns) and one.index.equals(draws[0].index)):
            raise ValueError(f"{file} has other columns or other steps than {files[0]}")
    together = pd.concat(draws, keys=range(1, len(draws) + 1), names=["chain", "step"])
    if coefficients is not None:
        names = _unique(tables(coefficients)["variable"])
        if len(names) != len(together.columns):
            raise ValueError(
                f"{coefficients} has {len(names)} variables, {files[0]} has {len(together.columns)}")
        together.columns = names
    return together


def inference_data(draws):
    """The result of `chains` as what ArviZ works with: one scalar variable for each coefficient."""
    import arviz

    count = len(draws.index.unique("chain"))
    posterior = {name: draws[name].to_numpy().reshape(count, -1) for name in draws.columns}
    # From its version 1 on ArviZ takes all groups in one dictionary.
    if int(arviz.__version__.split(".")[0]) >= 1:
        return arviz.from_dict({"posterior": posterior})
    return arviz.from_dict(posterior=posterior)


def coefficients(file):
    """The estimates of all models, a row for each model and variable.

    Columns: variable (X name), z_variable, model ("[Y|X,P=0]" and so on), estimate, mse and ese
    (model-based and empirical standard error), in log-odds.
    """
    cells = _coefficient_cells(file)
    blocks = []
    for i, model in enumerate(MODELS):
        block = cells[[0, 1, 6 + 3 * i, 7 + 3 * i, 8 + 3 * i]]
        block.columns = ["variable", "z_variable", "estimate", "mse", "ese"]
        block.insert(2, "model", model)
        blocks.append(block)
    return pd.concat(blocks, ignore_index=True)


def tables(file):
    """The shares of X = 0 and X = 1 for Z = 0 and for Z = 1, a row for each variable.

    They are NaN for the intercept.
    """
    cells = _coefficient_cells(file)[range(6)]
    cells.columns = ["variable", "z_variable", "x0_z0", "x1_z0", "x0_z1", "x1_z1"]
    return cells


def predictions(file):
    """Individual or hospital predictions with the names of their header."""
    return _table(file)


def c_statistics(file):
    """The C-statistics by the name of the prediction; NaN where there was no pair to compare."""
    values = _table(file).set_index("Estimate")["C-Statistics"]
    return values.mask(values == -1)


def summary(file):
    """Mean, variance and acceptance of each variable of the sampler, by its name.

    None for the empty file of a run without steps.
    """
    if Path(file).stat().st_size == 0:
        return None
    return _table(file).set_index("Variable")


def _chain_files(folder):
    """The chain file of a folder, or those of its folders chain-1, chain-2, ... by their numbers."""
    numbered = [one for one in folder.iterdir() if re.fullmatch("chain-[0-9]+", one.name)]
    if numbered:
        numbered.sort(key=lambda one: int(one.name[len("chain-"):]))
        return [file for one in numbered for file in _chain_files(one)]
    files = list(folder.rglob("Chain.csv"))
    if len(files) != 1:
        raise ValueError(f"{folder} has {len(files)} files named Chain.csv; one was expected")
    return files


def _coefficient_cells(file):
    """The cells of the coefficient file without its header, by their number from 0.

    A carriage return that a data file with such line ends left in a name is taken out.
    """
    cells = _table(file, columns=range(21), skiprows=1)
    for name in (0, 1):
        cells[name] = cells[name].str.replace("\r", "", regex=False)
    return cells


def _table(file, columns=None, **options):
    """Reads a table, with these columns or those that its header names.

    Only cells of numbers can be NaN: a hospital may be called NA. Only line feeds end lines.
    """
    options.update(encoding_errors="surrogateescape", lineterminator="\n", keep_default_na=False)
    if columns is None:
        columns = pd.read_csv(file, nrows=0, **options).columns
    else:
        options.update(header=None, names=columns)
    text = [name for name in columns if name in TEXT_COLUMNS]
    numbers = [name for name in columns if name not in TEXT_COLUMNS]
    return pd.read_csv(file, dtype=dict.fromkeys(text, str), float_precision="round_trip",
                       na_values=dict.fromkeys(numbers, ["", "nan"]), **options)


def _unique(names):
    """The names; each that occurred before gets a number behind a point, as R's make.unique does."""
    taken, result = set(names), []
    for name in names:
        unique, number = name, 0
        while unique in result or (number > 0 and unique in taken):
            number += 1
            unique = f"{name}.{number}"
        result.append(unique)
    return result
