"""What the benchmarks share: the programs, a command under the clock, alternating pairs, tables."""

import os
import statistics
import subprocess
import sys
import time
from pathlib import Path
from typing import NamedTuple

TOP = Path(__file__).resolve().parent.parent
CONSOLE = TOP / "build/release/bin/tessivo-console"
WINDOW = TOP / "build/release/bin/tessivo"


class Run(NamedTuple):
    seconds: float
    peak_mib: int
    processor_seconds: float = 0.0


def require(*programs):
    """Ends the benchmark when something that it measures is missing."""
    for program in programs:
        if not Path(program).exists():
            sys.exit(f"{program} is missing: build with ./run first.")


def start(words, **options):
    """Starts a command whose output is not wanted; `options` are those of subprocess.Popen."""
    quiet = {"stdin": subprocess.DEVNULL, "stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
    return subprocess.Popen([str(word) for word in words], **(quiet | options))


def finish(process, begin):
    """Waits for a command that was started at `begin` (of time.perf_counter): its wall-clock time, the
    peak of its memory, and its processor time, with its children's. Ends the benchmark when the
    command fails."""
    _, status, usage = os.wait4(process.pid, 0)
    seconds = time.perf_counter() - begin
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"Exit status {process.returncode}: {' '.join(process.args)}")
    return Run(seconds, usage.ru_maxrss // 1024, usage.ru_utime + usage.ru_stime)


def run(*words):
    """Runs a command to its end."""
    begin = time.perf_counter()
    return finish(start(words), begin)


def alternate(count, ours, theirs, warm_up=True):
    """Measures `ours` and `theirs` in turn, `count` times; two lists. Each runs once unmeasured
    before, so that the files stand in memory for all of them, unless they already do."""
    if warm_up:
        ours(), theirs()
    pairs = [(ours(), theirs()) for _ in range(count)]
    return [pair[0] for pair in pairs], [pair[1] for pair in pairs]


def median_seconds(runs):
    return statistics.median(run.seconds for run in runs)


def print_table(header, rows):
    """`rows` may be a generator: each row is printed when it has been measured."""
    print(f"| {' | '.join(header)} |")
    print("|---" * len(header) + "|", flush=True)
    for row in rows:
        print(f"| {' | '.join(str(cell) for cell in row)} |", flush=True)
