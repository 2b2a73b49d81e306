#!/usr/bin/python3
"""Reference implementation of the whole program in plain Python and numpy.

    reference.py definition.xml

runs one definition file (Analysis, Prediction, Validation or Batch) from the current folder, writes
the same files as the program and prints the same standard output. It is written for reading, not
for speed, takes valid input for granted (anything else ends in an assertion), and shares no code
with the program. Other scripts import `run`.
"""
import os
import sys

from coefficient_file import (PX, new_results, estimates, prior_table, read_coefficient_file,
                              reconcile_variables, write_coefficient_file)
from data_set import eliminate_columns, read_data_file
from definitions import read_definition
from hierarchical_model import run_chain
from predictions import (c_statistics, individual_predictions, read_individual_predictions,
                         write_c_statistics, write_hospital_predictions,
                         write_individual_predictions)
from random_generator import RandomGenerator
from regression import fit, xz_table
from text_files import join, open_for_writing, system_path


class Console:
    """Standard output and error, and the log files of all runs so far (none is ever detached)."""

    def __init__(self, out, err):
        self.out = out
        self.err = err
        self.logs = []

    def log(self, line):
        self.out(line + "\n")
        for f in self.logs:
            f.write(line + "\n")

    def error(self, message):
        self.err("Error: " + message + "\n")

    def close(self):
        for f in self.logs:
            f.close()


def run_analysis(definition, generator, console):
    data = read_data_file(definition.data, definition.indicators, console)
    eliminate_columns(data, definition.dependence, console)
    gee = " GEE:" if definition.use_gee else ""
    console.out("Regression analysis" + gee + "\n")
    results = new_results(data.x_names, data.z_names)
    results.tables = [xz_table(data, k) for k in range(1, data.variables)]
    complete = ~data.incomplete
    for label, response, cells, records in (
            ("[P|X]", data.p, data.x, complete),
            ("[Y|Z]", data.y, data.z, complete | True),
            ("[Y|X]", data.y, data.x, complete),
            ("[Y|X,P=0]", data.y, data.x, complete & ~data.p)):
        console.out(label + "\n")
        results.blocks.append(fit(definition.parameters, definition.use_gee, response, cells, data,
                                  records, console))
    console.out("MCMC Analysis" + gee + "\n")
    results.blocks.append(run_chain(definition, data, estimates(results, PX), prior_table(results),
                                    generator, console))
    write_coefficient_file(results, join(definition.folder, definition.coefficients))


def run_prediction(definition, generator, console):
    data = read_data_file(definition.data, definition.indicators, console)
    results = read_coefficient_file(definition.coefficients)
    reconcile_variables(data, results, console)
    columns = individual_predictions(data, results, definition.mcmc, generator, console)
    write_individual_predictions(columns, data, definition.data,
                                 join(definition.folder, definition.individual))
    write_hospital_predictions(columns, data, join(definition.folder, definition.hospital), console)


def run_validation(definition, generator, console):
    data = read_data_file(definition.data, definition.indicators, console)
    results = read_coefficient_file(definition.coefficients)
    reconcile_variables(data, results, console)
    columns = read_individual_predictions(definition.individual)
    value = c_statistics(data, results, columns, definition.mcmc, generator, console)
    write_c_statistics(value, join(definition.folder, definition.c_statistics))


def run_definition(path, generator, console):
    definition = read_definition(path, generator)
    if definition.kind == "Batch":
        for simulation in definition.simulations:
            run_definition(simulation, generator, console)
        return
    try:
        os.mkdir(system_path(definition.folder))
    except OSError:
        pass
    console.logs.append(open_for_writing(join(definition.folder, definition.log_file)))
    {"Analysis": run_analysis, "Prediction": run_prediction,
     "Validation": run_validation}[definition.kind](definition, generator, console)


def run(path, out=sys.stdout.write, err=sys.stderr.write):
    """One process: banner, then the definition; `out` and `err` receive the texts."""
    console = Console(out, err)
    out("Target platform: 64-bit\n")
    try:
        run_definition(path, RandomGenerator(), console)
    finally:
        console.close()


if __name__ == "__main__":
    sys.stdout.reconfigure(encoding="latin-1", newline="")
    run(sys.argv[1])
