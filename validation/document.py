#!/usr/bin/python3
"""Writes the result tables into the documents, between their marker comments.

    document.py [--only ITEM] RESULTS DOCUMENT...
                                RESULTS is the folder with the items' JSON files

A table NAME of any item replaces what stands between the lines

    <!-- table NAME -->
    <!-- end -->

in every document that has them. Everything else in the documents stays as it is. `checks`, `run`
and `versions` are tables made here: all checks with their outcome, what the items cost, the
software. With --only the tables of one item are replaced, and its rows in `checks` and `run`. Exit
status 1 when a marker has no table or a table has no marker in any document.
"""
import argparse
import glob
import json
import os
import platform
import re
import subprocess
import sys

ORDER = ["fits_logistic", "fits_gee", "elimination", "sweep_enumeration", "calibration", "recovery",
         "choosing_z", "jags_agreement", "c_statistics"]
MARKED = re.compile(r"(<!-- table (\w+) -->\n).*?(<!-- end -->)", re.S)


def markdown(table):
    lines = ["| " + " | ".join(table["header"]) + " |", "|" + "---|" * len(table["header"])]
    lines += ["| " + " | ".join(row) + " |" for row in table["rows"]]
    return "\n".join(lines)


def escape(text):
    return re.sub(r"(?<!\\)\|", r"\\|", text)


def versions():
    command = ["Rscript", "--vanilla", "-e",
               'cat(R.version$major, ".", R.version$minor, sep = "");'
               'for (p in c("MASS", "geepack", "gee", "pROC", "rjags", "mice"))'
               ' cat(",", p, as.character(packageVersion(p)))']
    r = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                       encoding="utf-8", check=True).stdout
    import numpy
    import scipy
    import statsmodels
    return "R %s; Python %s, numpy %s, scipy %s, statsmodels %s" % (
        r, platform.python_version(), numpy.__version__, scipy.__version__,
        statsmodels.__version__)


def row_of(line):
    """The cells of a line of a table, as they stand in it."""
    return [cell.strip() for cell in re.split(r"(?<!\\)\|", line)[1:-1]]


def rows_in(text, name):
    """The rows of a table that a document has."""
    for match in MARKED.finditer(text):
        if match.group(2) == name:
            return [row_of(line) for line in match.group(0).splitlines()[3:-1]]
    return []


def total(rows):
    return ["all"] + [str(sum(int(row[k]) for row in rows)) for k in range(1, 5)]


def with_others(rows, name, item, texts):
    """The rows of an item among those that the documents have of the others, in their order."""
    others = [row for text in texts for row in rows_in(text, name) if row[0] in ORDER]
    merged = [row for row in others if row[0] != item] + rows
    return sorted(merged, key=lambda row: ORDER.index(row[0]))


def tables_of(items, only, texts):
    tables = {}
    for item in items.values():
        tables.update(item["tables"])
    checks = [[name, escape(c["name"]), "passed" if c["passed"] else "**failed**",
               escape(c["detail"])] for name, item in items.items() for c in item["checks"]]
    run = [[name, str(len(item["checks"])), str(sum(not c["passed"] for c in item["checks"])),
            str(item["runs"]), "%.0f" % item["seconds"]] for name, item in items.items()]
    if only:
        checks = with_others(checks, "checks", only, texts)
        run = with_others(run, "run", only, texts)
    else:
        tables["versions"] = {"header": ["length of the run", "versions"],
                              "rows": [["quick" if any(i["quick"] for i in items.values())
                                        else "full", versions()]]}
    tables["checks"] = {"header": ["script", "check", "outcome", "figures"], "rows": checks}
    tables["run"] = {"header": ["script", "checks", "failed", "runs of the program",
                                "processor seconds"], "rows": run + [total(run)]}
    return tables


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--only")
    parser.add_argument("results")
    parser.add_argument("documents", nargs="+")
    options = parser.parse_args()
    items = {}
    for path in glob.glob(os.path.join(options.results, "*.json")):
        with open(path) as f:
            item = json.load(f)
        items[item["item"]] = item
    items = {name: items[name] for name in ORDER
             if name in items and options.only in (None, name)}
    texts = []
    for document in options.documents:
        with open(document, encoding="utf-8") as f:
            texts.append(f.read())
    tables = tables_of(items, options.only, texts)
    marked = set(m.group(2) for text in texts for m in MARKED.finditer(text))
    unfilled = set() if options.only else marked - set(tables)
    for name in sorted(unfilled):
        print("document: no figures for table", name)
    for name in sorted(set(tables) - marked):
        print("document: no place for table", name)
    fill = lambda m: (m.group(1) + markdown(tables[m.group(2)]) + "\n" + m.group(3)
                      if m.group(2) in tables else m.group(0))
    for document, text in zip(options.documents, texts):
        with open(document, "w", encoding="utf-8") as f:
            f.write(MARKED.sub(fill, text))
    return 1 if unfilled or set(tables) - marked else 0


if __name__ == "__main__":
    sys.exit(main())
