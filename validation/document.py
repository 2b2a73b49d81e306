#!/usr/bin/python3
"""Writes the result tables into the document, between its marker comments.

    document.py RESULTS DOCUMENT        RESULTS is the folder with the items' JSON files

A table NAME of any item replaces what stands between the lines

    <!-- table NAME -->
    <!-- end -->

Everything else in the document stays as it is. `checks`, `run` and `versions` are tables made here:
all checks with their outcome, what the items cost, the software. Exit status 1 when a marker has no
table or a table has no marker.
"""
import glob
import json
import os
import platform
import re
import subprocess
import sys

ORDER = ["fits_logistic", "fits_gee", "elimination", "sweep_enumeration", "calibration", "recovery",
         "jags_agreement", "c_statistics"]
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
               'for (p in c("MASS", "geepack", "gee", "pROC", "rjags"))'
               ' cat(",", p, as.character(packageVersion(p)))']
    r = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                       encoding="utf-8", check=True).stdout
    import numpy
    import scipy
    import statsmodels
    return "R %s; Python %s, numpy %s, scipy %s, statsmodels %s" % (
        r, platform.python_version(), numpy.__version__, scipy.__version__,
        statsmodels.__version__)


def main():
    results, document = sys.argv[1:3]
    items = {}
    for path in glob.glob(os.path.join(results, "*.json")):
        with open(path) as f:
            item = json.load(f)
        items[item["item"]] = item
    items = {name: items[name] for name in ORDER if name in items}
    tables = {}
    for item in items.values():
        tables.update(item["tables"])
    tables["checks"] = {
        "header": ["script", "check", "outcome", "figures"],
        "rows": [[name, escape(c["name"]), "passed" if c["passed"] else "**failed**",
                  escape(c["detail"])] for name, item in items.items() for c in item["checks"]]}
    tables["run"] = {
        "header": ["script", "checks", "failed", "runs of the program",
                   "processor seconds"],
        "rows": [[name, str(len(item["checks"])), str(sum(not c["passed"] for c in item["checks"])),
                  str(item["runs"]), "%.0f" % item["seconds"]] for name, item in items.items()]}
    tables["run"]["rows"].append(["all"] + [
        str(sum(int(row[k]) for row in tables["run"]["rows"])) for k in range(1, 5)])
    tables["versions"] = {"header": ["length of the run", "versions"],
                          "rows": [["quick" if any(i["quick"] for i in items.values()) else "full",
                                    versions()]]}
    with open(document, encoding="utf-8") as f:
        text = f.read()
    marked = set(m.group(2) for m in MARKED.finditer(text))
    for name in sorted(marked - set(tables)):
        print("document: no figures for table", name)
    for name in sorted(set(tables) - marked):
        print("document: no place for table", name)
    fill = lambda m: (m.group(1) + markdown(tables[m.group(2)]) + "\n" + m.group(3)
                      if m.group(2) in tables else m.group(0))
    with open(document, "w", encoding="utf-8") as f:
        f.write(MARKED.sub(fill, text))
    return 1 if marked != set(tables) else 0


if __name__ == "__main__":
    sys.exit(main())
