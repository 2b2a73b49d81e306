"""What a comparison reports: checks that pass or fail, and tables for the document.

Each item's script writes one JSON file; document.py turns these into docs/validation.md. A table's
cells are texts, so the figures in the document are exactly those that were compared.
"""
import argparse
import json
import os
import subprocess
import sys
import time

from program import Program

HERE = os.path.dirname(os.path.abspath(__file__))
REFERENCE = os.path.join(HERE, "..", "tests", "reference")


class Report:
    def __init__(self, item, options):
        self.item = item
        self.options = options
        self.checks = []
        self.tables = {}
        self.started = time.time()

    def check(self, name, passed, detail=""):
        passed = bool(passed)
        self.checks.append({"name": name, "passed": passed, "detail": detail})
        print("%s  %s%s" % ("ok    " if passed else "FAILED", name,
                            ": " + detail if detail else ""), flush=True)
        return passed

    def table(self, name, header, rows):
        self.tables[name] = {"header": [str(c) for c in header],
                             "rows": [[str(c) for c in row] for row in rows]}

    def finish(self, program):
        """Writes the result file and ends the script: status 1 when a check failed."""
        failed = [c for c in self.checks if not c["passed"]]
        with open(os.path.join(self.options.scratch, self.item + ".json"), "w") as f:
            json.dump({"item": self.item, "quick": self.options.quick, "checks": self.checks,
                       "tables": self.tables, "runs": program.runs,
                       "seconds": processor_seconds()}, f, indent=1)
        print("%s: %d checks, %d failed, %d runs of the program, %.0f s of processor time" % (
            self.item, len(self.checks), len(failed), program.runs, processor_seconds()))
        sys.exit(1 if failed else 0)


def processor_seconds():
    """Of this script and of all processes it has started and waited for."""
    t = os.times()
    return t.user + t.system + t.children_user + t.children_system


def begin(item):
    """Command line of every item: --program PATH --scratch FOLDER [--quick]."""
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", required=True)
    parser.add_argument("--scratch", required=True)
    parser.add_argument("--plots", default=None, help="folder for plots")
    parser.add_argument("--quick", action="store_true")
    options = parser.parse_args()
    options.folder = os.path.join(options.scratch, item)
    os.makedirs(options.folder, exist_ok=True)
    options.plots = options.plots or options.scratch
    os.makedirs(options.plots, exist_ok=True)
    return Program(options.program), Report(item, options), options


def rscript(name, *arguments):
    """Runs an R script of this folder; its standard output is returned."""
    done = subprocess.run(["Rscript", "--vanilla", os.path.join(HERE, name)] + list(arguments),
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, encoding="utf-8",
                          check=False)
    if done.returncode != 0:
        raise RuntimeError("%s failed:\n%s%s" % (name, done.stdout, done.stderr))
    return done.stdout


def six(value):
    return "%.6g" % value


def half_unit(text):
    """Half a unit of the sixth significant digit of a printed number: its rounding error."""
    value = abs(float(text))
    if value == 0:
        return 0.5e-300
    exponent = int(("%.5e" % value).split("e")[1])
    return 0.5 * 10.0 ** (exponent - 5)


def units_off(text, value):
    """Distance of the printed text from the value in units of the sixth digit; 0.5 is rounding."""
    return abs(float(text) - value) / (2 * half_unit(text))
