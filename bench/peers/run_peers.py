"""Compares the program with what else one could use, on the same files, in one run, on one core.

Called by run_peers.sh, which installs the packages. Builds the program, makes data files with
hovar_simulate, and runs in turn the program's step driver, the floor and every peer: one round
takes each of them once for each size and task, then the next round begins. Every measurement is
added to a file of JSON lines at once; the table and the plots are made from that file.

A complete run writes docs/performance.md. A run that is narrowed by --sizes, --tasks or --rounds
writes its page to the work folder, unless --docs says otherwise.
"""

import argparse
import json
import os
import platform
import subprocess
import time

import answers
import report
from measure import Limits, Measurement, choose_openblas_kernels, measure
from peer_list import (ANALYSIS_DEFINITION, FLOOR, HERE, INDICATORS, PEERS, PROGRAM, PYTHON, SIZES,
                       TASKS, Size)

PROJECT = os.path.dirname(os.path.dirname(HERE))
ROUNDS = 5
# Runs that take longer than the first number of seconds are made in that many rounds only.
FEWER_ROUNDS = [(120.0, 1), (20.0, 3)]


def options():
    parser = argparse.ArgumentParser(prog="run_peers.sh", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--sizes", help="RECORDSxVARIABLES,... (%s)" % ",".join(
        size.name for size in SIZES))
    parser.add_argument("--tasks", help=",".join(TASKS))
    parser.add_argument("--rounds", type=int, help=f"how often each is run ({ROUNDS})")
    parser.add_argument("--time-limit", type=float, default=180.0, metavar="S",
                        help="processor seconds after which a peer is stopped (180)")
    parser.add_argument("--memory-limit", type=float, default=16.0, metavar="GIB",
                        help="addresses that a peer may take up (16)")
    parser.add_argument("--core", type=int, default=max(os.sched_getaffinity(0)),
                        help="the processor to use (the last one)")
    parser.add_argument("--build-dir", metavar="FOLDER",
                        help="where the release preset is built (build/release)")
    parser.add_argument("--jobs", type=int, default=len(os.sched_getaffinity(0)),
                        help="how many files are compiled at once")
    parser.add_argument("--work", metavar="FOLDER",
                        help="where the data files stay (peers in the build folder)")
    parser.add_argument("--results", metavar="FILE",
                        help="the file of JSON lines (results.jsonl in the work folder)")
    parser.add_argument("--docs", metavar="FOLDER", help="where performance.md and its plots go")
    parser.add_argument("--no-install", action="store_true", help="do not install packages")
    parser.add_argument("--no-build", action="store_true", help="take the programs as they are")
    chosen = parser.parse_args()
    narrowed = chosen.sizes or chosen.tasks or chosen.rounds
    chosen.build_dir = os.path.abspath(chosen.build_dir or os.path.join(PROJECT, "build/release"))
    chosen.work = os.path.abspath(chosen.work or os.path.join(chosen.build_dir, "peers"))
    chosen.results = chosen.results or os.path.join(chosen.work, "results.jsonl")
    chosen.docs = chosen.docs or os.path.join(*([chosen.work] if narrowed else [PROJECT, "docs"]))
    chosen.rounds = chosen.rounds or ROUNDS
    chosen.tasks = chosen.tasks.split(",") if chosen.tasks else list(TASKS)
    try:
        chosen.sizes = [Size.parse(name) for name in chosen.sizes.split(",")] if chosen.sizes \
            else SIZES
    except ValueError:
        parser.error("a size is RECORDSxVARIABLES, for example 100000x60")
    for task in chosen.tasks:
        if task not in TASKS:
            parser.error(f"there is no task {task}; tasks are {', '.join(TASKS)}")
    return chosen


def build(chosen):
    """The release preset, and the loop over pairs."""
    if not chosen.no_build:
        subprocess.run(["cmake", "--preset", "release", "-B", chosen.build_dir], cwd=PROJECT,
                       check=True, stdout=subprocess.DEVNULL)
        subprocess.run(["cmake", "--build", chosen.build_dir, "-j", str(chosen.jobs)], check=True,
                       stdout=subprocess.DEVNULL)
    os.makedirs(chosen.work, exist_ok=True)
    subprocess.run(["g++", "-std=c++20", "-O2", os.path.join(HERE, "pairwise_loop.cpp"), "-o",
                    os.path.join(chosen.work, "pairwise_loop")], check=True)


def prepare(chosen, size):
    """Makes a size's folder unless it is there already. Returns its path."""
    folder = os.path.join(chosen.work, size.name)
    generate = [os.path.join(chosen.build_dir, "tools/simulate/hovar_simulate"),
                "--records", str(size.records), "--hospitals", str(size.hospitals),
                "--variables", str(size.variables), "--indicators", INDICATORS,
                "--missing-x", "0.03", "--missing-p", "0.05", "--seed", "11",
                "--output", os.path.join(folder, "data.csv")]
    stamp = os.path.join(folder, "made_by")
    wanted = " ".join(generate[1:-1])
    if os.path.exists(stamp):
        with open(stamp, encoding="utf-8") as file:
            if file.read() == wanted:
                return folder
    print(f"making {folder}", flush=True)
    os.makedirs(folder, exist_ok=True)
    subprocess.run(generate, check=True)
    with open(os.path.join(folder, "analysis.xml"), "w", encoding="utf-8") as definition:
        definition.write(ANALYSIS_DEFINITION.format(folder=folder, indicators=INDICATORS))
    subprocess.run([PYTHON, "-B", os.path.join(HERE, "prepare.py"), folder, INDICATORS], check=True)
    with open(stamp, "w", encoding="utf-8") as file:
        file.write(wanted)
    return folder


def read_through(path):
    """So that no peer pays for the disk."""
    with open(path, "rb", buffering=0) as file:
        while file.read(1 << 20):
            pass


class Run:
    """All measurements of one run, and the rules which of them are still to be made."""

    def __init__(self, chosen):
        self.chosen = chosen
        self.limits = Limits(chosen.core, chosen.time_limit, chosen.memory_limit)
        self.folders = {size: prepare(chosen, size) for size in chosen.sizes}
        self.references = {size: answers.load_reference(self.folders[size])
                           for size in chosen.sizes}
        self.done = {}    # (size, task, key): the measurements
        self.passes = {}  # (size, task): passes over the data in the program's fit
        os.makedirs(os.path.dirname(os.path.abspath(chosen.results)), exist_ok=True)
        self.file = open(chosen.results, "w", encoding="utf-8", buffering=1)

    def write(self, line):
        self.file.write(json.dumps(line) + "\n")

    def reason_to_skip(self, size, task, peer):
        """None: run it. "": leave it out. Else what the table shall say."""
        if size.records > peer.largest:
            return ""
        if peer.kind == FLOOR and not os.path.exists(
                os.path.join(self.chosen.build_dir, "bench/hovar_floor")):
            return ""
        earlier = self.done.get((size, task, peer.key), [])
        if earlier:
            longest = max(result.wall_s for result in earlier)
            rounds = min([count for limit, count in FEWER_ROUNDS if longest > limit] or [10 ** 9])
            failed = any(result.status != "ok" for result in earlier)
            return "" if failed or len(earlier) >= rounds else None
        for smaller in self.chosen.sizes:
            before = self.done.get((smaller, task, peer.key), [])
            if smaller < size and before and before[-1].status != "ok":
                return f"not started because it failed at {smaller.title}"
        return None

    def take(self, round_number, size, task, peer):
        key = (size, task, peer.key)
        skip = self.reason_to_skip(size, task, peer)
        if skip == "":
            return
        if skip:
            result = Measurement(status=skip)
        else:
            names = {"folder": self.folders[size], "build": self.chosen.build_dir,
                     "work": self.chosen.work, "passes": self.passes.get((size, task), 0)}
            result = measure([part.format(**names) for part in peer.command], self.limits,
                             self.folders[size])
        self.done.setdefault(key, []).append(result)
        reached, words = answers.judge(peer, task, result.report, self.references[size])
        if peer.kind == PROGRAM and task in ("logit", "gee") and result.status == "ok":
            # A fit ends with a pass whose step is not applied.
            self.passes[(size, task)] = result.report["iterations"] + 1
        self.write({"kind": "measurement", "round": round_number, "size": size.name, "task": task,
                    "key": peer.key, "reached": reached, "answer": words} | result.as_dict())
        took = result.report.get("s_per_iter", result.report.get("compute_s", result.process_s))
        print(f"{round_number} {size.name} {task} {peer.key}: {took:.6f} s, "
              f"{result.peak_mib:.0f} MiB, {result.status} {words}", flush=True)

    def make(self):
        for round_number in range(1, self.chosen.rounds + 1):
            for size in sorted(self.chosen.sizes):
                read_through(os.path.join(self.folders[size], "data.csv"))
                for task in self.chosen.tasks:
                    # Short runs are made several times a round, in turn.
                    for turn in range(max(peer.repeats for peer in PEERS[task])):
                        for peer in PEERS[task]:
                            if turn < peer.repeats:
                                self.take(round_number, size, task, peer)
        self.file.close()


def processor_name():
    with open("/proc/cpuinfo", encoding="ascii") as info:
        for line in info:
            if line.startswith("model name"):
                return line.partition(":")[2].strip()
    return platform.processor()


def main():
    chosen = options()
    build(chosen)
    kernels = choose_openblas_kernels()
    run = Run(chosen)
    run.write({"kind": "run", "date": time.strftime("%Y-%m-%d"), "processor": processor_name(),
               "kernel": platform.release(), "openblas": kernels, "rounds": chosen.rounds,
               "time_limit": chosen.time_limit})
    run.make()
    page = report.write(chosen.results, chosen.docs)
    print(f"measurements: {chosen.results}\npage: {page}")


if __name__ == "__main__":
    main()
