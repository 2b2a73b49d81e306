"""Runs one process on one core and reports what it printed, took and needed.

The chain is taskset (one core), prlimit (a limit of memory) and time (the peak of the resident
memory; a process started by this interpreter itself would be charged with the interpreter's own).
The kernel's limit of processor time is not used: while it watches a process, the process reads its
own processor time in whole ticks.
"""

import contextlib
import json
import os
import signal
import subprocess
import tempfile
import threading
import time
from dataclasses import asdict, dataclass, field

# A process that waits instead of computing is stopped after this many times its time limit.
WALL_PER_LIMIT = 4


@dataclass
class Measurement:
    status: str = "ok"  # or "timeout", or the last line of what went wrong
    report: dict = field(default_factory=dict)  # the line of JSON that it printed
    peak_mib: float = 0.0   # largest resident set of the whole process
    process_s: float = 0.0  # its processor seconds, start-up included
    wall_s: float = 0.0

    def as_dict(self):
        return asdict(self)


def kernels_of_openblas():
    """What OpenBLAS chooses for this processor, by its own name."""
    lines = ("import ctypes; name = ctypes.CDLL('libblas.so.3').openblas_get_corename; "
             "name.restype = ctypes.c_char_p; print(name().decode())")
    found = subprocess.run(["/usr/bin/python3", "-c", lines], stdout=subprocess.PIPE,
                           stderr=subprocess.DEVNULL, text=True, env=environment(), check=False)
    return found.stdout.strip()


def choose_openblas_kernels():
    """Sets the kernels where OpenBLAS does not know the processor and would take those of a
    processor without wide vectors, which would be no fair comparison. Returns their name."""
    chosen = kernels_of_openblas()
    if chosen in ("Prescott", "Core2", "Nehalem", "Generic"):
        with open("/proc/cpuinfo", encoding="ascii") as info:
            flags = info.read().split()
        wider = "SkylakeX" if "avx512f" in flags else "Haswell" if "avx2" in flags else None
        if wider:
            os.environ["OPENBLAS_CORETYPE"] = wider
            chosen = kernels_of_openblas()
    return chosen


def environment():
    """One thread everywhere."""
    result = dict(os.environ)
    for name in ("OPENBLAS_NUM_THREADS", "OMP_NUM_THREADS", "MKL_NUM_THREADS",
                 "NUMEXPR_NUM_THREADS", "R_DATATABLE_NUM_THREADS"):
        result[name] = "1"
    return result


def processor_seconds_of_group(group):
    """Of all its living processes."""
    ticks = 0
    for name in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{name}/stat", "rb") as file:
                fields = file.read().rpartition(b")")[2].split()
        except OSError:
            continue  # it has ended meanwhile
        if int(fields[2]) == group:
            ticks += int(fields[11]) + int(fields[12])
    return ticks / os.sysconf("SC_CLK_TCK")


class Watchdog(threading.Thread):
    """Kills a process group when it has used up its time."""

    def __init__(self, group, limit):
        super().__init__(daemon=True)
        self.group = group
        self.limit = limit
        self.over = threading.Event()  # the process has ended
        self.has_killed = False

    def run(self):
        start = time.monotonic()
        while not self.over.wait(1.0):
            if (processor_seconds_of_group(self.group) > self.limit
                    or time.monotonic() - start > WALL_PER_LIMIT * self.limit):
                self.has_killed = True
                with contextlib.suppress(ProcessLookupError):
                    os.killpg(self.group, signal.SIGKILL)
                return


@dataclass(frozen=True)
class Limits:
    core: int
    seconds: float     # of the processor
    memory_gib: float  # of addresses


def reason_of_failure(errors):
    """The line that says most about what a process wrote on standard error."""
    errors.seek(0)
    lines = errors.read().decode(errors="replace").strip().splitlines()
    telling = [line for line in lines if line.startswith("Error")] or lines[-1:]
    return telling[0].strip() if telling else "failed without a word"


def measure(command, limits, temporary_folder):
    result = Measurement()
    memory = int(limits.memory_gib * 2 ** 30)
    with tempfile.TemporaryFile() as output, tempfile.TemporaryFile() as errors, \
            tempfile.NamedTemporaryFile() as peak:
        start = time.monotonic()
        process = subprocess.Popen(
            ["taskset", "-c", str(limits.core), "prlimit", f"--as={memory}", "/usr/bin/time", "-q",
             "-f", "%M", "-o", peak.name, *command],
            stdout=output, stderr=errors, stdin=subprocess.DEVNULL, start_new_session=True,
            env=environment() | {"TMPDIR": temporary_folder})
        watchdog = Watchdog(process.pid, limits.seconds)
        watchdog.start()
        _, status, usage = os.wait4(process.pid, 0)
        watchdog.over.set()
        watchdog.join()
        process.returncode = os.waitstatus_to_exitcode(status)
        result.wall_s = round(time.monotonic() - start, 3)
        result.process_s = round(usage.ru_utime + usage.ru_stime, 6)
        lines = peak.read().decode(errors="replace").split()
        result.peak_mib = int(lines[-1]) / 1024 if lines and lines[-1].isdigit() else 0.0
        if process.returncode != 0:
            result.status = "timeout" if watchdog.has_killed else reason_of_failure(errors)
            return result
        output.seek(0)
        last = output.read().decode(errors="replace").strip().splitlines()[-1:]
        if last and last[0].startswith("{"):
            result.report = json.loads(last[0])
    return result
