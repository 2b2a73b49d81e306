#!/usr/bin/python3
"""Makes a small study below data/damage/ and the end of every run of it with one damaged file.

    damage.py            (writes data/damage/; needs ../../examples/quickstart for the last table)

The study has 30 records of 3 hospitals, 2 indicators, an intercept and 3 covariates, and all kinds
of cells that are not plain: quoted names, keys and hospitals, blanks, text after numbers, missing
cells. Every file is damaged in seven ways: cut at every offset, and every byte replaced by NUL, a
double quote, a comma, a line feed, `<` or 0xFF; and each of its lines in four: the line is dropped,
repeated, swapped with the next one, or stays alone with the first line. ends.csv gives the end of
the run for each, as validity.py finds it from the rules of the formats, below a line for each table
of ends:

    > definition, damaged file, change
    last offset or line, counted from 0, end

`end` is `ok` (exit status 0), `numeric` (valid input but not the full study any more: exit status 0 or
one of the errors of a computation) or the error line (exit status 1), with \\xNN for unusual bytes.
`expected "X" at N` stands for the line `Invalid input in file "definition": expected "X", current
"Y"`, where Y are the bytes of the damaged definition from offset N on, as many as X has. Ends that
are both right, because the rules leave the order of two errors open, stand with a bar between them.

quickstart.csv gives the same for a seeded sample of damages to the files of the quick start, read
by the reader of that file alone: file, change, offset, end.
"""
import os
import random
import shutil

import reference
import validity

HERE = os.path.dirname(os.path.abspath(__file__))
FOLDER = os.path.join(HERE, "data", "damage")
QUICKSTART = os.path.join(HERE, "..", "..", "examples", "quickstart")
CHANGES = [("cut", None), ("nul", b"\0"), ("quote", b'"'), ("comma", b","), ("feed", b"\n"),
           ("less", b"<"), ("ff", b"\xff")]
LINE_CHANGES = ["drop", "repeat", "swap", "alone"]
RECORDS = 30
QUICKSTART_DATA_CASES = 1500
QUICKSTART_DEFINITION_CASES = 1500

HEAD = '<?xml version="1.0"?>\n<!-- %s -->\n<%s xmlns:xsi="x">\n'
MCMC = """<Mcmc>
<Seed xsi:type="Vector"><Seed><Element>362436069</Element><Element>521288629</Element></Seed></Seed>
<Thinning>2</Thinning><Burnin>3</Burnin><Steps>12</Steps>
</Mcmc>
"""
PARAMETERS = "<Tolerance>1e-8</Tolerance><MaxIterations>50</MaxIterations><PriorPrecision>0.5</PriorPrecision>"
INPUT = "<Input>\n<Data>data.csv</Data><NumberOfPoaIndicators>2</NumberOfPoaIndicators>\n"
ANALYSIS = (HEAD % ("fit", "Analysis") + INPUT + """</Input>
<Output>
<Folder>out</Folder><RegressionCoefficients>fitted.csv</RegressionCoefficients>
<McmcSubFolder>mcmc</McmcSubFolder><LogFile>analysis.log</LogFile>
</Output>
<Regression>
<UseGeneralizedEstimatingEquations>%s</UseGeneralizedEstimatingEquations>
<LinearDependence><Tolerance>1e-9</Tolerance></LinearDependence>
<Parameters>""" + PARAMETERS + "</Parameters>\n<ParametersMcmc>" + PARAMETERS + """</ParametersMcmc>
</Regression>
""" + MCMC + "</Analysis>\n")
PREDICTION = (HEAD % ("predict", "Prediction") + INPUT + """<RegressionCoefficients>coefficients.csv</RegressionCoefficients>
</Input>
<Output>
<Folder>out</Folder><IndividualPredictions>predicted.csv</IndividualPredictions>
<HospitalPredictions>hospital.csv</HospitalPredictions><LogFile>prediction.log</LogFile>
</Output>
""" + MCMC + "</Prediction>\n")
VALIDATION = (HEAD % ("validate", "Validation") + INPUT + """<RegressionCoefficients>coefficients.csv</RegressionCoefficients>
<IndividualPredictions>individual.csv</IndividualPredictions>
</Input>
<Output>
<Folder>out</Folder><CStatistics>statistics.csv</CStatistics><LogFile>validation.log</LogFile>
</Output>
""" + MCMC + "</Validation>\n")
BATCH = (HEAD % ("all", "Batch") + "<Simulations>\n" + "".join(
    "<Simulation>%s.xml</Simulation>\n" % name for name in ("analysis", "prediction", "validation"))
    + "</Simulations>\n</Batch>\n")
# Which definitions a damaged file is run with.
RUNS = [("analysis.xml", ["analysis.xml", "data.csv"]),
        ("prediction.xml", ["prediction.xml", "data.csv", "coefficients.csv"]),
        ("validation.xml", ["validation.xml", "data.csv", "coefficients.csv", "individual.csv"]),
        ("batch.xml", ["batch.xml"])]


def make_data():
    rng = random.Random(5)
    names = ["Z1", '"Z,2"', "Z3", "X1", '"X ""2"""', "X3"]
    lines = ["Key,Hospital,Y,P1,P2," + ",".join(names)]
    for i in range(RECORDS):
        hospital = ["H1", '"H ""2"""', "H 3"][0 if i < 9 else 1 if i < 20 else 2]
        z = [int(rng.random() < 0.4) for _ in range(3)]
        x = [int(rng.random() < (0.8 if bit else 0.2)) for bit in z]
        y = int(rng.random() < 0.3 + 0.15 * sum(x))
        p = [int(y and rng.random() < 0.2) for _ in range(2)]
        cells = [str(cell) for cell in [y] + p + z + x]
        for j in range(1, 3):
            if rng.random() < 0.05:
                cells[j] = ""
        for j in range(6, 9):
            if rng.random() < 0.08:
                cells[j] = ""
        lines.append(",".join(["%s%d" % ("rk"[i % 2], i), hospital] + cells))
    # Cells that are not plain.
    lines[4] = lines[4].replace(",0,", ", 0,", 1)
    key, rest = lines[11].split(",", 1)
    lines[11] = '"%s",%s' % (key, rest)
    lines[15] = lines[15] + " x"
    lines[22] = lines[22].replace(",1,", ",1 ,", 1)
    # A condition present without the outcome.
    cells = lines[25].split(",")
    cells[2:5] = ["0", "1", "0"]
    lines[25] = ",".join(cells)
    return "".join(line + "\n" for line in lines)


def make_study():
    shutil.rmtree(FOLDER, ignore_errors=True)
    os.makedirs(FOLDER)
    files = {"data.csv": make_data(), "analysis.xml": ANALYSIS % "false",
             "gee.xml": ANALYSIS.replace("analysis.log", "gee.log") % "true",
             "prediction.xml": PREDICTION, "validation.xml": VALIDATION, "batch.xml": BATCH}
    for name, content in files.items():
        with open(os.path.join(FOLDER, name), "w", newline="") as f:
            f.write(content)
    # The files that runs hand on come from the second implementation of the program.
    os.chdir(FOLDER)
    quiet = lambda text: None
    reference.run("analysis.xml", quiet, quiet)
    shutil.copy(os.path.join("out", "fitted.csv"), "coefficients.csv")
    reference.run("prediction.xml", quiet, quiet)
    shutil.copy(os.path.join("out", "predicted.csv"), "individual.csv")
    shutil.rmtree("out")
    result = {}
    for name in list(files) + ["coefficients.csv", "individual.csv"]:
        with open(name, "rb") as f:
            result[name.encode()] = f.read()
    return result


def damaged(content, byte, offset):
    if byte is None:
        return content[:offset]
    return content[:offset] + byte + content[offset + 1:]


def with_changed_line(content, change, k):
    lines = [line + b"\n" for line in content.split(b"\n")[:-1]]
    assert b"".join(lines) == content
    if change == "drop":
        del lines[k]
    elif change == "repeat":
        lines.insert(k, lines[k])
    elif change == "swap":
        lines[k:k + 2] = lines[k:k + 2][::-1]
    else:
        lines = lines[:1] + lines[max(k, 1):k + 1]
    return b"".join(lines)


def shown(end, name):
    def escaped(line):
        line = line.replace(validity.in_file(name), b"")
        return "".join(chr(b) if 32 <= b < 127 and b not in b"\\|" else "\\x%02x" % b for b in line)
    return "|".join(sorted(escaped(line) for line in end))


def write_ends(files):
    study = validity.study_of(files, b"analysis.xml", b"data.csv")
    with open(os.path.join(FOLDER, "ends.csv"), "w", newline="") as out:
        for definition, names in RUNS:
            run = definition.encode()
            assert validity.outcome(files, run, study) == {validity.OK}
            for name in names:
                content = files[name.encode()]
                tables = [(change, [damaged(content, byte, k) for k in range(len(content))])
                          for change, byte in CHANGES]
                tables += [(change, [with_changed_line(content, change, k)
                                     for k in range(content.count(b"\n"))])
                           for change in LINE_CHANGES]
                for change, contents in tables:
                    out.write("> %s,%s,%s\n" % (definition, name, change))
                    ends = [shown(validity.outcome({**files, name.encode(): changed}, run, study),
                                  run) for changed in contents]
                    for k, end in enumerate(ends):
                        if k + 1 == len(ends) or ends[k + 1] != end:
                            out.write("%d,%s\n" % (k, end))


def end_of_definition(content):
    return validity.outcome_of(validity.read_definition.__wrapped__, content, b"d.xml")


def end_of_data(content):
    return validity.outcome_of(validity.read_data.__wrapped__, content, 2)


def write_quickstart():
    rng = random.Random(11)
    with open(os.path.join(FOLDER, "quickstart.csv"), "w", newline="") as out:
        names = ["analysis.xml", "prediction.xml", "validation.xml", "batch.xml"]
        for names, cases, end_of in (
                (names, QUICKSTART_DEFINITION_CASES, end_of_definition),
                (["data.csv"], QUICKSTART_DATA_CASES, end_of_data)):
            contents = {}
            for name in names:
                with open(os.path.join(QUICKSTART, name), "rb") as f:
                    contents[name] = f.read()
                assert end_of(contents[name]) == {validity.OK}, name
            for _ in range(cases):
                name = rng.choice(names)
                change, byte = rng.choice(CHANGES)
                offset = rng.randrange(len(contents[name]))
                end = end_of(damaged(contents[name], byte, offset))
                out.write("%s,%s,%d,%s\n" % (name, change, offset, shown(end, b"d.xml")))


def main():
    write_ends(make_study())
    write_quickstart()


if __name__ == "__main__":
    main()
