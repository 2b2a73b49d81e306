#!/usr/bin/python3
"""Makes the studies of numerical faults below data/faults/ and all that the program must write.

    make_faults.py

Data on which a method has no proper answer, but for which the rules of the program still fix one:
separation, equal responses, one hospital, one record, a working correlation that is infinite or not
a number, an empirical variance that cannot be factored. Each study is a batch of an analysis, a
prediction and a validation, so that what comes of the odd coefficients is compared too; where the
fault is a coefficient file that somebody changed, that file is given and the batch is a prediction
and a validation. The expected files come from reference.py; as in make_study.py, none of their digits may depend on the
last bits of exp.
"""
import os
import shutil

from make_study import (DATA, TIMING, analysis_xml, batch_xml, prediction_xml, stable,
                        validation_xml, write)
import reference
import tempfile

FOLDER = os.path.join(DATA, "faults")
CHAIN = (1, 2, 3)  # thinning, burn-in, steps


def table(variables, rows):
    """Rows are (hospital, y, p, z cells, x cells) as text; "." is a missing cell."""
    header = (["Key", "Hospital", "Y", "POA"] + ["Z%d" % (k + 1) for k in range(variables)]
              + ["X%d" % (k + 1) for k in range(variables)])
    lines = [header]
    for i, (hospital, y, p, z, x) in enumerate(rows):
        cells = ["" if c == "." else c for c in [p] + list(z) + list(x)]
        lines.append(["k%d" % i, hospital, y] + cells)
    return "".join(",".join(line) + "\n" for line in lines)


def study(rows, gee=False, fits=("1e-8", 50, 1), fits_mcmc=("1e-8", 50, 1), passes=(1, 1, 3)):
    rows = [row.split() for row in rows]
    rows = [row + ["", ""] if len(row) == 3 else row for row in rows]
    seeds = (2463534242, 362436069)
    return {
        "data.csv": table(len(rows[0][3]), rows),
        "analysis.xml": analysis_xml("analysis.log", gee, fits, fits_mcmc, seeds, CHAIN, 1),
        "prediction.xml": prediction_xml(seeds, passes, 1),
        "validation.xml": validation_xml(seeds, passes, 1),
        "batch.xml": batch_xml(["analysis.xml", "prediction.xml", "validation.xml"])}


def run(inputs):
    """All files of a batch below `out`, with its standard output and standard error."""
    before = os.getcwd()
    out, err = [], []
    with tempfile.TemporaryDirectory() as scratch:
        for name, text in inputs.items():
            write(os.path.join(scratch, name), text)
        os.chdir(scratch)
        try:
            reference.run("batch.xml", out.append, err.append)
            files = {"stdout.txt": TIMING.sub(r"\1T\2", "".join(out)), "stderr.txt": "".join(err)}
            for folder, _, names in os.walk("out"):
                for name in names:
                    with open(os.path.join(folder, name), encoding="latin-1", newline="") as f:
                        files[name] = f.read()
        finally:
            os.chdir(before)
    return files


def changed_model(rows, change):
    """A prediction and a validation with a coefficient file whose lines went through `change`."""
    inputs = study(rows, passes=(1, 2, 5))
    lines = run(dict(inputs, **{"batch.xml": batch_xml(["analysis.xml"])}))["coefficients.csv"]
    lines = change(lines.splitlines(keepends=True))
    for name in ("prediction.xml", "validation.xml"):
        inputs[name] = inputs[name].replace("out\\coefficients.csv", "coefficients.csv")
    del inputs["analysis.xml"]
    return dict(inputs, **{"coefficients.csv": "".join(lines),
                           "batch.xml": batch_xml(["prediction.xml", "validation.xml"])})


def without_intercept(lines):
    assert lines[1].startswith("XIntercept,")
    return lines[:1] + lines[2:]


NO_PRIOR = ("1e-8", 12, 0)  # after more steps rounding would show

STUDIES = {
    # X tells Y apart among all records; P and Z do not. Without a prior the fits of Y on X run to
    # their limit, with one they stay finite.
    "separation": lambda: study([
        "A 1 1 1 1", "A 1 0 0 1", "A 1 1 1 1", "A 0 0 0 0", "B 1 0 1 1", "B 0 0 1 0",
        "B 1 1 0 1", "B 0 0 0 0", "C 1 0 1 1", "C 0 0 0 0", "C 0 0 1 0", "C 1 . 0 1",
        "C 0 0 0 .", "C 1 0 1 ."], fits=NO_PRIOR, fits_mcmc=NO_PRIOR),
    "separation_with_prior": lambda: study([
        "A 1 1 1 1", "A 1 0 0 1", "A 1 1 1 1", "A 0 0 0 0", "B 1 0 1 1", "B 0 0 1 0",
        "B 1 1 0 1", "B 0 0 0 0", "C 1 0 1 1", "C 0 0 0 0", "C 0 0 1 0", "C 1 . 0 1",
        "C 0 0 0 .", "C 1 0 1 ."]),
    "all_respond": lambda: study(
        ["A 1 1", "A 1 0", "A 1 0", "B 1 0", "B 1 1", "B 1 .", "B 1 0"],
        fits=NO_PRIOR, fits_mcmc=NO_PRIOR),
    "none_responds": lambda: study(
        ["A 0 0", "A 0 1", "A 0 0", "B 0 .", "B 0 0"],
        fits=NO_PRIOR, fits_mcmc=("1e-8", 12, 2)),
    "one_record": lambda: study(["A 1 0"]),
    "one_record_gee": lambda: study(["A 1 0"], gee=True),
    "one_hospital": lambda: study([
        "A 1 1 1 1", "A 0 0 0 1", "A 1 0 1 0", "A 0 0 0 0", "A 0 0 1 1", "A 1 . 0 0", "A 1 0 0 .",
        "A 0 0 1 0"]),
    "one_hospital_gee": lambda: study([
        "A 1 1", "A 1 1", "A 0 0", "A 1 0", "A 0 0", "A 0 0", "A 1 .", "A 1 0"],
        gee=True, fits=("1e-8", 50, 1), fits_mcmc=("1e-8", 50, 0.5)),
    # Without P half of the records respond, so the fit in the chain is 0 with scores of exactly 0:
    # the empirical variance is 0 in each iteration, and draws are made with the identity.
    "empirical_variance": lambda: study(
        ["A 1 1", "A 1 1", "A 0 0", "A 1 0", "A 0 0", "A 1 0"], gee=True,
        fits_mcmc=("1e-8", 50, 0)),
    # One record a hospital: no pairs, and a correlation of 0.
    "single_records_gee": lambda: study([
        "A 1 1 1 1", "B 0 0 0 1", "C 1 0 1 0", "D 0 0 0 0", "E 0 0 1 1", "F 1 0 0 1", "G 1 1 0 0",
        "H 0 0 1 0"], gee=True),
    # Two columns and one pair of records: M = 2 and a division by M - 2 = 0.
    "infinite_correlation": lambda: study([
        "A 1 1 1 1", "A 1 0 0 1", "B 0 0 1 0", "C 1 0 1 1", "D 0 0 0 0", "E 0 0 0 1", "F 1 0 0 0"],
        gee=True),
    # Four columns and two pairs, M = 4, one of equal and one of opposite residuals: 0 / 0.
    "correlation_not_a_number": lambda: study([
        "A 1 0 111 100", "A 1 0 000 010", "B 0 0 100 001", "B 1 0 010 000", "C 0 0 001 110",
        "D 1 0 110 011", "E 0 0 011 101", "F 1 0 000 000", "G 0 0 101 111", "H 1 0 010 001"],
        gee=True),
    # Hospital B has no complete record, hospital C none without P.
    "hospital_without_usable_records": lambda: study([
        "A 1 1 1 1", "A 0 0 0 1", "A 1 0 1 0", "A 0 0 0 0", "A 1 0 0 1", "A 1 0 1 1",
        "B 1 . 1 1", "B 0 . 0 0", "B 1 0 0 .", "C 1 1 1 1", "C 1 1 0 0", "C 1 1 0 0",
        "D 0 0 1 1", "D 1 0 0 0", "D 0 0 1 0", "D 1 1 0 1", "D 0 0 0 0", "D 0 0 1 1",
        "E 1 0 1 1", "E 0 0 0 0", "E 0 0 1 0", "E 1 0 1 1", "E 0 0 0 1",
        "F 1 0 0 1", "F 0 0 1 0", "F 1 1 1 1", "F 1 0 0 0"], gee=True),
    # The intercept's row is gone, so the first variable is column 0, which is never imputed: its
    # missing cells count as 0. Some of them stand alone in their record, some beside other cells.
    "no_intercept_row": lambda: changed_model([
        "A 1 1 110 101", "A 0 0 100 .01", "A 1 0 011 .1.", "A 0 0 101 1.0", "A 1 . 000 ..1",
        "B 1 0 111 .11", "B 0 0 010 01.", "B 1 1 100 .0.", "B 1 . 001 101", "B 0 . 110 ...",
        "C 1 0 101 110", "C 0 0 010 001", "C 1 . 100 .10", "C 0 0 011 010", "C 1 1 111 011",
        "C 0 0 000 100"], without_intercept),
    "no_intercept_row_one_variable": lambda: changed_model([
        "A 1 1 1 1", "A 0 0 0 .", "A 1 0 1 .", "A 0 0 0 1", "A 1 . 1 .", "B 1 0 1 1", "B 0 0 0 0",
        "B 1 . 0 .", "B 0 . 1 .", "B 1 0 0 0", "B 0 0 1 0", "C 1 1 1 .", "C 0 0 0 0", "C 1 . 1 1"],
        without_intercept),
}


def main():
    shutil.rmtree(FOLDER, ignore_errors=True)
    for name, make in STUDIES.items():
        inputs = make()
        files = stable(lambda: run(inputs), name)
        for file, text in inputs.items():
            write(os.path.join(FOLDER, name, file), text)
        for file, text in files.items():
            write(os.path.join(FOLDER, name, "expected", file), text)


if __name__ == "__main__":
    main()
