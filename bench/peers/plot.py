"""Draws the plots of docs/performance.md.

Usage: plot.py RESULTS.jsonl FOLDER; writes SVG files and prints "NAME<tab>TITLE" for each. Equal
results give equal files.
"""

import os
import sys

import matplotlib

matplotlib.use("Agg")
matplotlib.rcParams["svg.hashsalt"] = "hovar"
import matplotlib.pyplot as plt

from peer_list import BY_HAND, FLOOR, PACKAGE, PROGRAM
from report import TARGETS, Results

SHORT = {"read": "reading", "logit": "logistic fit", "gee": "GEE fit", "cstat": "C-statistic",
         "mcmc": "MCMC iteration", "write": "writing"}
SERIES = [(PROGRAM, "program", "#1b4f8f"), (FLOOR, "floor", "#8a8a8a"),
          (BY_HAND, "by hand in numpy or scipy", "#d98c1f"),
          (PACKAGE, "fastest package", "#a8322d")]


def save(figure, folder, name, title):
    figure.savefig(os.path.join(folder, name), metadata={"Date": None, "Creator": None},
                   bbox_inches="tight")
    plt.close(figure)
    print(f"{name}\t{title}")


def add_legend(figure, axes, distance):
    """Below all panels, `distance` inches under the figure's edge."""
    handles, labels = axes.get_legend_handles_labels()
    figure.legend(handles, labels, loc="upper center", ncol=len(SERIES), fontsize=8,
                  bbox_to_anchor=(0.5, -distance / figure.get_figheight()))


def plot_times(results, folder):
    """A dot for the seconds of every task, one panel a size."""
    tasks = [task for task in results.tasks if task in TARGETS]
    figure, panels = plt.subplots(1, len(results.sizes), sharey=True, squeeze=False,
                                  figsize=(1.5 + 3.6 * len(results.sizes), 1.0 + 0.45 * len(tasks)))
    for size, axes in zip(results.sizes, panels[0]):
        for kind, label, colour in SERIES:
            rows = [(at, results.fastest(size, task, kind)) for at, task in enumerate(tasks)]
            rows = [(at, row.seconds) for at, row in rows if row]
            axes.plot([s for _, s in rows], [at for at, _ in rows], "o", markersize=7,
                      color=colour, label=label, alpha=0.85)
        axes.set(xscale="log", xlabel="processor seconds", title=size.title,
                 yticks=range(len(tasks)), yticklabels=[SHORT[task] for task in tasks],
                 ylim=(len(tasks) - 0.5, -0.5))
        axes.grid(True, alpha=0.3)
        axes.set_axisbelow(True)
    add_legend(figure, panels[0][0], 0.05)
    save(figure, folder, "times.svg", "Processor seconds of each task")


def plot_growth(results, folder):
    """Seconds against records, for the sizes with equally many variables."""
    widest = max(size.variables for size in results.sizes)
    sizes = [size for size in results.sizes if size.variables == widest]
    tasks = [task for task in results.tasks if task in TARGETS]
    if len(sizes) < 2:
        return
    figure, panels = plt.subplots((len(tasks) + 2) // 3, 3, squeeze=False, sharex=True,
                                  figsize=(10, 3 * ((len(tasks) + 2) // 3)))
    panels = [axes for line in panels for axes in line]
    for axes in panels[len(tasks):]:
        axes.set_visible(False)
    for task, axes in zip(tasks, panels):
        for kind, label, colour in SERIES:
            points = [(size.records, results.fastest(size, task, kind)) for size in sizes]
            points = [(records, row.seconds) for records, row in points if row]
            if points:
                axes.plot(*zip(*points), marker="o", color=colour, label=label,
                          linestyle="--" if kind == FLOOR else "-")
        axes.set(xscale="log", yscale="log", title=SHORT[task])
        axes.grid(True, which="major", alpha=0.3)
    figure.supxlabel("records", fontsize=10)
    figure.supylabel("processor seconds", fontsize=10)
    figure.tight_layout()
    # A task with every series, if there is one, has the complete legend.
    add_legend(figure, max(panels, key=lambda axes: len(axes.lines)), 0.0)
    save(figure, folder, "growth.svg", f"Processor seconds against records, {widest} variables")


def plot_memory(results, folder):
    """Peak memory of the processes that read and fit, for the largest size."""
    size = results.sizes[-1]
    rows = [(f"{SHORT[task]}: {row.name}", row) for task in ("read", "logit", "gee")
            if task in results.tasks for row in results.of(size, task)
            if not row.failure and row.peer.kind != FLOOR]
    if not rows:
        return
    rows.sort(key=lambda pair: pair[1].peak_mib)
    colours = {kind: colour for kind, _, colour in SERIES}
    figure, axes = plt.subplots(figsize=(7, 0.8 + 0.26 * len(rows)))
    axes.barh([name for name, _ in rows], [row.peak_mib for _, row in rows],
              color=[colours[row.peer.kind] for _, row in rows])
    axes.set(xlabel="peak memory of the process, MiB", title=size.title)
    axes.bar_label(axes.containers[0], fmt="%.0f", padding=2, fontsize=7)
    axes.tick_params(axis="y", labelsize=8)
    axes.grid(True, axis="x", alpha=0.3)
    axes.set_axisbelow(True)
    save(figure, folder, "memory.svg", f"Peak memory of whole processes, {size.title}")


def main():
    results, folder = Results(sys.argv[1]), sys.argv[2]
    plot_times(results, folder)
    plot_growth(results, folder)
    plot_memory(results, folder)


main()
