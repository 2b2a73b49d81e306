"""Individual and hospital predictions, and C-statistics."""
import numpy as np

from coefficient_file import PX, YX, YX_P0, YX_P0_MCMC, YZ, estimates, prior_table
from hierarchical_model import imputation_sweep
from regression import exp, predictor
from text_files import CsvReader, lg, measure, open_for_writing, quoted, read_text

NAMES = ["Y", "E[Y|Z]", "E[Y|X]", "E[Y|P=0]", "E[Y|X,P=0]", "E[Y|X,P=0]-MCMC", "P", "E[P|X]",
         "E[P|YPXZ]"]
STORED = ["E[Y|Z]", "E[Y|X]", "E[Y|X,P=0]", "E[Y|X,P=0]-MCMC", "E[P|X]", "E[P|YPXZ]"]


def probabilities(cells, beta):
    return np.array([1 / (1 + exp(-t)) for t in predictor(cells, beta)])


def sweep(data, results, generator):
    imputation_sweep(data, estimates(results, YX_P0_MCMC), estimates(results, PX),
                     prior_table(results), generator)


def pass_counts(data, settings):
    complete = data.complete_count == data.records
    return (0, 1) if complete else (settings.burnin, settings.steps)


def individual_predictions(data, results, settings, generator, console):
    """Columns by name, each averaged over the passes of imputation."""
    console.out("Calculating individual predictions\n")
    burnin, steps = pass_counts(data, settings)
    data.prepare_imputation()
    for k in range(burnin):
        console.out("%d/%d\n" % (k, burnin))
        sweep(data, results, generator)
    columns = {"E[Y|Z]": probabilities(data.z, estimates(results, YZ))}
    averaged = STORED[1:]
    sums = {name: np.zeros(data.records) for name in averaged}
    counts = np.zeros(data.records)

    def add(records):
        cells, not_p = data.x[records], 1.0 - data.p[records]
        sums["E[Y|X]"][records] += probabilities(cells, estimates(results, YX))
        sums["E[Y|X,P=0]"][records] += not_p * probabilities(cells, estimates(results, YX_P0))
        sums["E[Y|X,P=0]-MCMC"][records] += not_p * probabilities(
            cells, estimates(results, YX_P0_MCMC))
        sums["E[P|X]"][records] += probabilities(cells, estimates(results, PX))
        sums["E[P|YPXZ]"][records] += data.p[records]
        counts[records] += 1.0

    add(np.arange(data.records))
    for r in range(1, steps):
        console.out("%d/%d\n" % (r, steps))
        sweep(data, results, generator)
        add(np.flatnonzero(data.incomplete))
    for name in averaged:
        columns[name] = sums[name] / counts
    return columns


def record_keys(data_path, records):
    """First cell of every line of the data file; lines are walked by the rules of quoting."""
    reader = CsvReader(read_text(data_path))
    keys = []
    for _ in range(records + 1):
        key, following = reader.next_field()
        keys.append(key)
        while following == ",":
            following = reader.next_field()[1]
    return keys[1:]


def write_individual_predictions(columns, data, data_path, path):
    keys = record_keys(data_path, data.records)
    with open_for_writing(path) as f:
        f.write(",".join(quoted(name) for name in ["Key", "Hospital ID"] + NAMES) + "\n")
        for i in range(data.records):
            p_given_all = columns["E[P|YPXZ]"][i]
            cells = [quoted(keys[i]), quoted(data.hospital_ids[data.hospital[i]]),
                     "%d" % data.y[i], lg(columns["E[Y|Z]"][i]), lg(columns["E[Y|X]"][i]),
                     lg(float(data.y[i]) * (1.0 - p_given_all)), lg(columns["E[Y|X,P=0]"][i]),
                     lg(columns["E[Y|X,P=0]-MCMC"][i]),
                     "" if data.p_missing[i] else "%d" % data.p[i],
                     lg(columns["E[P|X]"][i]), lg(p_given_all)]
            f.write(",".join(cells) + "\n")


def read_individual_predictions(path):
    text = read_text(path)
    rows = measure(text)[2] - 1
    reader = CsvReader(text)
    reader.skip_line()
    columns = {name: [] for name in STORED}
    for _ in range(rows):
        for name in ["Key", "Hospital ID"] + NAMES:
            if name in STORED:
                columns[name].append(reader.real())
            else:
                reader.skip()
    return {name: np.array(values) for name, values in columns.items()}


def write_hospital_predictions(columns, data, path, console):
    console.out("Calculating hospital-aggregated predictions\n")
    values = dict(columns)
    values["Y"] = data.y.astype(float)
    values["E[Y|P=0]"] = values["Y"] * (1 - columns["E[P|YPXZ]"])
    values["P"] = data.p.astype(float)
    with open_for_writing(path) as f:
        header = ["Hospital ID", "Nr. records", "Nr. non missing records",
                  "Nr. non missing records P=0"] + NAMES
        f.write(",".join(quoted(name) for name in header) + "\n")
        for h, identity in enumerate(data.hospital_ids):
            cells = [quoted(identity), "%d" % data.hospital_size[h],
                     "%d" % data.hospital_complete[h], "%d" % data.hospital_complete_p0[h]]
            for name in NAMES:
                total, count = 0.0, 0.0
                for i in np.flatnonzero(data.hospital == h):
                    if name == "P" and data.p_missing[i]:
                        continue
                    total += float(values[name][i])
                    count += 1.0
                cells.append(lg(total / count) if count > 0 else "")
            f.write(",".join(cells) + "\n")


def c_statistic(response, prediction, included):
    """Concordant pairs count 2, ties 1, over twice the number of pairs; -1 without a pair."""
    positive = prediction[included & response]
    negative = prediction[included & ~response]
    score = sum(2 * int((v > negative).sum()) + int((v == negative).sum()) for v in positive)
    pairs = float(len(negative)) * float(len(positive)) * 2.0
    return score / pairs if pairs > 0 else -1.0


def c_statistics(data, results, columns, settings, generator, console):
    everything = np.ones(data.records, dtype=bool)
    complete = ~data.incomplete
    value = {}
    console.out("Y|Z\n")
    value["E[Y|Z]"] = c_statistic(data.y, columns["E[Y|Z]"], everything)
    console.out("Y|X\n")
    value["E[Y|X]"] = c_statistic(data.y, columns["E[Y|X]"], everything)
    console.out("P|X\n")
    value["E[P|X]"] = c_statistic(data.p, columns["E[P|X]"], complete)
    console.out("P|YPZX\n")
    value["E[P|YPXZ]"] = c_statistic(data.p, columns["E[P|YPXZ]"], complete)
    burnin, steps = pass_counts(data, settings)
    data.prepare_imputation()
    for i in range(burnin):
        console.out("%d/%d\n" % (i, burnin))
        sweep(data, results, generator)
    averaged = ["E[Y|X,P=0]", "E[Y|X,P=0]-MCMC"]
    sums = dict.fromkeys(averaged, 0.0)
    for i in range(steps):
        console.out("%d/%d\n" % (i, steps))
        sweep(data, results, generator)
        for name in averaged:
            sums[name] += c_statistic(data.y, columns[name], ~data.p)
    for name in averaged:
        value[name] = sums[name] / steps if steps > 0 else 0.0
    return value


def write_c_statistics(value, path):
    with open_for_writing(path) as f:
        f.write("Estimate,C-Statistics\n")
        for name in STORED:
            f.write("%s,%s\n" % (quoted(name), lg(value[name])))
