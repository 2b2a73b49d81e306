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
empty is NaN. A file that cannot be read is an OSError, one that is not what it should be a ValueError;
both name it.
"""

import os
import re
import stat
import sys
import warnings
from pathlib import Path

import pandas as pd

MODELS = ["[P|X]", "[Y|Z]", "[Y|X]", "[Y|X,P=0]", "[Y|X,P=0,MCMC]"]
# By name, or by number in the coefficient file.
TEXT_COLUMNS = {"Key", "Hospital ID", "Variable", "Estimate", 0, 1}


def chains(folders, coefficients=None, all_chains=False):
    """The draws of one or several chains, a row for each and a column for each coefficient.

    folders: a folder with the results of one chain, several of these, or one with the folders
    chain-1, chain-2, ... in it, as `hovar --chains` makes them. Chain.csv may lie deeper.

    coefficients: a coefficient file of the same model. Its X names then stand for BetaYX[0],
    BetaYX[1], ...; the two are joined by position. Names that occur twice get a number.

    all_chains: read every folder chain-1, chain-2, ... also those that an earlier run with more chains
    has left. Otherwise these are left out, and a warning names them: the file chains.json, which
    `hovar --chains` writes, says how many belong together.

    The rows are indexed by chain, from 1, and step. The burn-in is not in the files. Chains must
    have the same columns and the same steps; otherwise this is a ValueError.
    """
    if isinstance(folders, (str, os.PathLike)):
        folders = [folders]
    files = [file for folder in folders for file in _chain_files(Path(folder), all_chains)]
    draws = [_chain_draws(file) for file in files]
    for file, one in zip(files, draws):
        if not (one.columns.equals(draws[0].columns) and one.index.equals(draws[0].index)):
            raise ValueError(
                f"{_shown(file)} has other columns or other steps than {_shown(files[0])}")
    together = pd.concat(draws, keys=range(1, len(draws) + 1), names=["chain", "step"])
    if coefficients is not None:
        names = _unique(tables(coefficients)["variable"])
        if len(names) != len(together.columns):
            raise ValueError(f"{_shown(coefficients)} has {len(names)} variables, "
                             f"{_shown(files[0])} has {len(together.columns)}")
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
    if _file_size(file) == 0:
        return None
    return _table(file).set_index("Variable")


def _chain_files(folder, all_chains):
    """The chain file of a folder, or those of its folders chain-1, chain-2, ... by their numbers."""
    found = _numbered_chains(folder)
    if not found:
        return [_chain_file(folder)]
    count = None if all_chains else _chain_count(folder)
    if count is not None:
        expected = [f"chain-{number}" for number in range(1, count + 1)]
        if not set(expected).intersection(found):
            raise ValueError(f"{_shown(folder)} has none of the chains that its file chains.json names")
        missing = sorted(set(expected).difference(found), key=_number)
        if missing:
            _warn(f"{_shown(folder)} lacks {_list(missing)}: its file chains.json names {count} chains")
        left = sorted(set(found).difference(expected), key=_number)
        if left:
            _warn(f"{_shown(folder)}: left out {_list(left)} of an earlier run, as its file chains.json "
                  f"names {count} chains; all_chains reads all")
            found = [name for name in found if name not in left]
    return [_chain_file(folder / name) for name in found]


def _numbered_chains(folder):
    """The folders chain-1, chain-2, ... in a folder, in the order of their numbers."""
    found = []
    for name in sorted(_names(folder)):
        if not re.fullmatch("chain-[1-9][0-9]*", name):
            continue
        if os.path.isdir(folder / name):
            found.append(name)
        else:
            _warn(f"{_shown(folder / name)} is not a folder and is left out")
    return sorted(found, key=_number)


def _number(name):
    return int(name[len("chain-"):])


def _chain_count(folder):
    """How many chains belong together by the file chains.json in a folder; None where that says nothing."""
    file = folder / "chains.json"
    if not file.is_file():
        return None
    _file_size(file)
    with open(file, "rb") as stream:
        found = re.match(rb'\{"chains": ([1-9][0-9]{0,3})\}', stream.read(200))
    return int(found[1]) if found else None


def _chain_file(folder):
    """The only file Chain.csv in a folder or deeper.

    Links to folders are not followed: they could lead in a circle, or anywhere.
    """
    waiting, files, links = [folder], [], 0
    while waiting:
        one = waiting.pop()
        for name in _names(one):
            path = one / name
            if not os.path.isdir(path):
                files += [path] if name == "Chain.csv" else []
            elif os.path.islink(path):
                links += 1
            else:
                waiting.append(path)
    if len(files) != 1:
        raise ValueError(f"{_shown(folder)} has {len(files)} files named Chain.csv; one was expected"
                         + ("; links to folders are not followed" if links else ""))
    return files[0]


def _chain_draws(file):
    """The draws of a chain file, by step. A chain that still runs may end within a line."""
    if _file_size(file) == 0:
        raise ValueError(f"{_shown(file)} is empty")
    with open(file, "rb") as stream:
        stream.seek(-1, os.SEEK_END)
        if stream.read() != b"\n":
            raise ValueError(f"{_shown(file)} ends within a line: its run is not complete")
    table = _table(file)
    if table.columns[0] != "Step":
        raise ValueError(f"{_shown(file)} is not a chain: its first column is not Step")
    try:
        return table.set_index("Step").astype(float)
    except ValueError as error:
        raise ValueError(f"{_shown(file)}: {_shown(str(error))}") from error


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
    if _file_size(file) == 0:
        raise ValueError(f"{_shown(file)} is empty")
    options.update(encoding_errors="surrogateescape", lineterminator="\n", keep_default_na=False)
    try:
        if columns is None:
            columns = pd.read_csv(file, nrows=0, **options).columns
        else:
            options.update(header=None, names=columns)
        text = [name for name in columns if name in TEXT_COLUMNS]
        numbers = [name for name in columns if name not in TEXT_COLUMNS]
        return pd.read_csv(file, dtype=dict.fromkeys(text, str), float_precision="round_trip",
                           na_values=dict.fromkeys(numbers, ["", "nan"]), **options)
    except ValueError as error:
        raise ValueError(f"{_shown(file)}: {_shown(str(error).strip())}") from error


def _names(folder):
    """The names in a folder."""
    kind = _kind(folder)
    if kind is None:
        raise FileNotFoundError(f"{_shown(folder)}: there is no such folder")
    if kind != "folder":
        raise NotADirectoryError(f"{_shown(folder)} is not a folder")
    if not os.access(folder, os.R_OK | os.X_OK):
        raise PermissionError(f"{_shown(folder)}: no right to read this folder")
    return os.listdir(folder)


def _file_size(file):
    """The size of a file that can be read. Anything else is an error: a named pipe would be waited for."""
    kind = _kind(file)
    if kind is None:
        raise FileNotFoundError(f"{_shown(file)}: there is no such file")
    if kind != "file":
        raise ValueError(f"{_shown(file)} is not a file of data but a {kind}")
    if not os.access(file, os.R_OK):
        raise PermissionError(f"{_shown(file)}: no right to read this file")
    return os.stat(file).st_size


def _kind(path):
    """"file", "folder" or "device" (which a named pipe is too), links followed; None where nothing is."""
    if not os.path.exists(path):
        return None
    mode = os.stat(path).st_mode
    return "folder" if stat.S_ISDIR(mode) else "file" if stat.S_ISREG(mode) else "device"


def _warn(message):
    """Warns at the place that called this module."""
    level, frame = 2, sys._getframe(1)
    while frame.f_back is not None and frame.f_code.co_filename == __file__:
        level, frame = level + 1, frame.f_back
    warnings.warn(message, stacklevel=level)


def _list(names):
    """Names for a message, which is no place for thousands."""
    more = f" and {len(names) - 10} more" if len(names) > 10 else ""
    return ", ".join(names[:10]) + more


def _shown(path):
    """A path for a message: without characters that would act on a terminal."""
    text = os.fspath(path)
    return text if text.isprintable() else ascii(text)[1:-1]


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
