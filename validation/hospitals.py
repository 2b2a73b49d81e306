"""Simulated studies whose truth is known: how often the judgement of their hospitals is right.

    validation/hospitals.py --program build/release-tests/validation/hovar_hospital_studies [--studies 300]
                            [--completed 20] [--jobs 2] [--results FOLDER] [--write]

Runs hovar_hospital_studies for every scenario, in chunks, and keeps what each prints in FOLDER; chunks that are there
already are not run again. Prints the table of docs/profiling-model.md; with --write puts it there.
"""

import argparse
import concurrent.futures
import csv
import math
import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[1]
DOCUMENT = ROOT / "docs" / "profiling-model.md"
SCENARIOS = {
    "none": "no differences",
    "normal": "effects normal, SD 0.25",
    "outliers": "SD 0.2 and eight outliers of 0.9",
    "missing": "SD 0.25, P missing in 4 %, in every tenth hospital in 60 %, X in 3 %",
    "size": "no differences, P missing in 4 %, in every tenth hospital in 30 %, X in 3 %",
}
CHUNK = 20

# Scenarios, figure, what it is called, smallest and largest value; None where there is no target.
BANDS = ("below 1", "1 to 5", "5 to 20", "20 to 80", "80 and more")
ROWS = [(("none", "normal", "outliers"), f"coverage 95 %: expected {band}",
         f"coverage of 95 % limits, {band} expected", 0.94, 1 if index < 2 else 0.97)
        for index, band in enumerate(BANDS)]
ROWS += [(("none", "normal", "outliers"), f"coverage 99.8 %: expected {band}",
          f"coverage of 99.8 % limits, {band} expected", None, None) for band in BANDS]
ROWS += [
    (("normal", "missing"), "coverage of shrunken intervals", "coverage of shrunken intervals", 0.93, 0.97),
    (("none", "size"), "flagged by limits: 95 %", "flagged by limits, 95 %", 0.03, 0.06),
    (("none", "size"), "flagged by limits: 99.8 %", "flagged by limits, 99.8 %", 0, 0.004),
    (("none", "size"), "flagged by posterior: 95 %", "flagged by posterior probability", None, None),
    (("none", "size", "normal"), "flagged by differences: 95 %", "flagged beside the differences", None, None),
    (("normal", "missing"), "root mean square error", "error of shrunken over raw ratios", 0, 0.6),
    (("normal", "missing"), "tau over truth", "mean of tau over the true SD", 0.9, 1.1),
    (("normal", "missing"), "coverage of tau", "coverage of the interval of tau", None, None),
    (("none", "size"), "test of tau = 0: below 0.05", "test of tau = 0, p below 0.05", None, None),
    (("none", "size"), "test of tau = 0: below 0.01", "test of tau = 0, p below 0.01", None, None),
    (("none", "normal", "missing"), "test of volume: below 0.05", "test of volume, p below 0.05", None, None),
    (("normal", "missing"), "bias of O in events per expected event", "bias of O per expected event", None, None),
    (("normal", "missing"), "bias of E in events per expected event", "bias of E per expected event", None, None),
    (("missing",), "coverage 95 %: P missing seldom", "coverage of 95 % limits, P missing seldom", None, None),
    (("missing",), "coverage 95 %: P missing often", "coverage of 95 % limits, P missing often", None, None),
    (("missing",), "log ratio per true log ratio: P missing seldom", "log O/E per true log ratio, P missing seldom",
     None, None),
    (("missing",), "log ratio per true log ratio: P missing often", "log O/E per true log ratio, P missing often",
     None, None),
]
CALIBRATION = ("0 to 0.025", "0.025 to 0.2", "0.2 to 0.5", "0.5 to 0.8", "0.8 to 0.975", "0.975 to 1")


def run_chunk(arguments, scenario, first, folder):
    path = folder / f"{scenario}_{first}.csv"
    if not path.exists():
        count = min(CHUNK, arguments.studies - first + 1)
        output = subprocess.run([arguments.program, scenario, str(count), str(arguments.completed), str(first)],
                                check=True, capture_output=True, text=True).stdout
        lines = [line for line in output.splitlines() if line.startswith(scenario + ",")]
        path.write_text(f"#studies,{count},{arguments.completed},0,0\n" + "\n".join(lines) + "\n")
    return path


def read_figures(paths):
    """Chunks of a scenario as one: {figure: (mean, standard error)} and the number of studies."""
    sums, studies, completed = {}, 0, 0
    for path in paths:
        with open(path, encoding="utf-8") as file:
            for name, figure, value, error, count in csv.reader(file):
                if name == "#studies":
                    studies, completed = studies + int(figure), int(value)
                    continue
                if float(count) == 0:
                    continue  # no true log ratios where there are no differences
                total = sums.setdefault(figure, [0, 0, 0])
                total[0] += float(value) * float(count)
                total[1] += (float(error) * float(count)) ** 2
                total[2] += float(count)
    figures = {name: (value / count, math.sqrt(square) / count) for name, (value, square, count) in sums.items()}
    return figures, studies, completed


def add_derived(figures, scenario):
    raw, shrunken = figures["mean square error: raw"], figures["mean square error: shrunken"]
    quotient = math.sqrt(shrunken[0] / raw[0])
    relative = math.hypot(shrunken[1] / shrunken[0], raw[1] / raw[0]) / 2
    figures["root mean square error"] = (quotient, quotient * relative)
    if scenario in ("normal", "missing"):
        tau = figures["tau"]
        figures["tau over truth"] = (tau[0] / 0.25, tau[1] / 0.25)


def table(all_figures):
    lines = ["| figure | scenario | value | standard error | target |", "|---|---|---|---|---|"]
    for scenarios, figure, name, low, high in ROWS:
        for scenario in scenarios:
            if scenario not in all_figures or figure not in all_figures[scenario][0]:
                continue
            value, error = all_figures[scenario][0][figure]
            target = "" if low is None else f"{low:g} to {high:g}"
            if low is not None and not low <= value <= high:
                target += ": **outside**" if not low - 2 * error <= value <= high + 2 * error else ": outside by chance"
            lines.append(f"| {name} | {scenario} | {value:.4f} | {error:.4f} | {target} |")
    lines += ["", "| P(> 1), scenario normal | stated | true |", "|---|---|---|"]
    for band in CALIBRATION:
        figures = all_figures["normal"][0] if "normal" in all_figures else {}
        if f"P(>1) stated: {band}" in figures:
            stated, true = figures[f"P(>1) stated: {band}"], figures[f"P(>1) true: {band}"]
            lines.append(f"| {band} | {stated[0]:.3f} | {true[0]:.3f} ± {true[1]:.3f} |")
    lines += ["", "Scenarios, 100 hospitals each of 5 to 1,000 records (log-normal, median 110):", ""]
    for scenario, meaning in SCENARIOS.items():
        if scenario in all_figures:
            _, studies, completed = all_figures[scenario]
            lines.append(f"- *{scenario}*: {meaning}; {studies} studies, {completed} completed studies of each.")
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", default=str(ROOT / "build/release-tests/validation/hovar_hospital_studies"))
    parser.add_argument("--studies", type=int, default=300)
    parser.add_argument("--completed", type=int, default=20)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--results", type=pathlib.Path, default=ROOT / "build/validation/hospitals")
    parser.add_argument("--write", action="store_true")
    arguments = parser.parse_args()
    arguments.results.mkdir(parents=True, exist_ok=True)
    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        chunks = {scenario: [pool.submit(run_chunk, arguments, scenario, first, arguments.results)
                             for first in range(1, arguments.studies + 1, CHUNK)] for scenario in SCENARIOS}
        all_figures = {}
        for scenario, futures in chunks.items():
            figures, studies, completed = read_figures([future.result() for future in futures])
            add_derived(figures, scenario)
            all_figures[scenario] = (figures, studies, completed)
    text = table(all_figures)
    print(text)
    if arguments.write:
        before, rest = DOCUMENT.read_text(encoding="utf-8").split("<!-- figures -->\n", 1)
        after = rest.split("<!-- end of figures -->", 1)[1]
        DOCUMENT.write_text(f"{before}<!-- figures -->\n{text}\n<!-- end of figures -->{after}", encoding="utf-8")


if __name__ == "__main__":
    main()
