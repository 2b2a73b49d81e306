"""The regression results and their file."""
import bisect
from types import SimpleNamespace

from text_files import CsvReader, lg, measure, open_for_writing, quoted, read_text

BLOCKS = ["[P|X]", "[Y|Z]", "[Y|X]", "[Y|X,P=0]", "[Y|X,P=0,MCMC]"]
PX, YZ, YX, YX_P0, YX_P0_MCMC = range(5)


def new_results(x_names, z_names):
    """`tables` holds (t0, t1) of every variable but the intercept; `blocks` five lists of rows."""
    return SimpleNamespace(x_names=list(x_names), z_names=list(z_names), tables=[], blocks=[])


def estimates(results, block):
    return [row[0] for row in results.blocks[block]]


def prior_table(results):
    return [t for table in results.tables for t in table]


def write_coefficient_file(results, path):
    header = ["Variables Names", "", "[X|Z]", "", "", ""]
    for block in BLOCKS:
        header += [block, "mse", "ese"]
    with open_for_writing(path) as f:
        f.write(",".join(quoted(cell) for cell in header) + "\n")
        for i, names in enumerate(zip(results.x_names, results.z_names)):
            cells = [quoted(name) for name in names]
            if i == 0:
                cells += [""] * 4
            else:
                t0, t1 = results.tables[i - 1]
                cells += [lg(1 - t0), lg(t0), lg(1 - t1), lg(t1)]
            for block in results.blocks:
                cells.append(lg(block[i][0]))
                cells += [lg(error) if error >= 0.0 else "" for error in block[i][1:]]
            f.write(",".join(cells) + "\n")


def read_coefficient_file(path):
    text = read_text(path)
    rows = measure(text)[2] - 1
    results = new_results([], [])
    results.blocks = [[] for _ in BLOCKS]
    reader = CsvReader(text)
    reader.skip_line()
    for r in range(rows):
        results.x_names.append(reader.next_field()[0])
        results.z_names.append(reader.next_field()[0])
        if r == 0:
            for _ in range(4):
                reader.skip()
        else:
            reader.skip()
            t0 = reader.real()
            reader.skip()
            results.tables.append((t0, reader.real()))
        for block in results.blocks:
            estimate = reader.real()
            errors = [reader.next_field()[0] for _ in range(2)]
            block.append((estimate,) + tuple(float(e) if e else -1.0 for e in errors))
    return results


def reconcile_variables(data, results, console):
    def found(names, name):
        at = bisect.bisect_left(names, name)
        return at < len(names) and names[at] == name

    x_names, z_names = sorted(results.x_names), sorted(results.z_names)
    unmatched = [j for j in range(data.variables)
                 if not (found(x_names, data.x_names[j]) and found(z_names, data.z_names[j]))]
    if unmatched:
        data.remove_columns(unmatched, console)
    assert data.variables == len(results.x_names)
