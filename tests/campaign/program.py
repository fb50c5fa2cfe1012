"""The console program as it runs in its cage: from the start to what it did."""

import os
import signal
import subprocess
import sys
import time
from dataclasses import dataclass
from pathlib import Path

POLL = 0.03  # seconds between looks at memory and clock
CAGE = Path(__file__).with_name("cage.py")
SANITIZER_STATUS = 86
SANITIZERS = {"ASAN_OPTIONS": f"exitcode={SANITIZER_STATUS}:quarantine_size_mb=16:allocator_may_return_null=1",
              "UBSAN_OPTIONS": f"exitcode={SANITIZER_STATUS}:print_stacktrace=1"}


@dataclass
class Outcome:
    status: int = 0  # below 0: the signal that ended it
    seconds: float = 0.0
    memory: int = 0  # highest, bytes
    ending: float | None = None  # seconds from the first signal to the end
    killed_for: str = ""  # why the campaign had to end it
    stopped: bool = False  # by the campaign, when its time was over
    out: str = ""
    err: str = ""


@dataclass
class Limits:
    memory: int  # bytes
    seconds: float  # of a whole run
    grace: float  # seconds from a signal to the end


def highest_memory(pid):
    try:
        for line in Path(f"/proc/{pid}/status").read_text().splitlines():
            if line.startswith("VmHWM:"):
                return int(line.split()[1]) << 10
    except (OSError, ProcessLookupError):
        pass
    return 0


def environment(folder):
    leaks = Path(__file__).parents[1] / "support" / "leaks.supp"
    return {"PATH": "/usr/bin:/bin", "LANG": "C.UTF-8", "HOME": str(folder / "home"), **SANITIZERS,
            "LSAN_OPTIONS": f"suppressions={leaks}:print_suppressions=0"}


def run(console, case, folder, limits):
    """Runs the case's command in `folder`, disturbs it as the case says, and ends it where it breaks a limit."""
    ready, begins = os.pipe()
    command = [sys.executable, str(CAGE), str(folder), str(begins), str(case.file_limit), str(console)]
    process = subprocess.Popen(command + case.words, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                               stderr=subprocess.PIPE, env=environment(folder), pass_fds=[begins],
                               start_new_session=True)
    os.close(begins)
    os.read(ready, 1)
    os.close(ready)
    start = time.monotonic()
    outcome, signalled, out, err = Outcome(), None, b"", b""
    pending = case.stdin.encode(errors="surrogateescape")

    def send(number):
        nonlocal signalled
        process.send_signal(number)
        signalled = time.monotonic()

    while True:
        to_signal = start + case.moment - time.monotonic() if case.signal and signalled is None else POLL
        try:
            out, err = process.communicate(pending or None, timeout=max(0, min(POLL, to_signal)))
            break
        except subprocess.TimeoutExpired:
            pending = b""  # communicate goes on with what it was given first
        now = time.monotonic()
        outcome.memory = max(outcome.memory, highest_memory(process.pid))
        if case.signal and signalled is None and now >= start + case.moment:
            send(case.signal)
        elif signalled is None and now > start + limits.seconds:
            outcome.stopped = True
            send(signal.SIGTERM)
        if outcome.memory > limits.memory and not outcome.killed_for:
            outcome.killed_for = "memory"
        if signalled is not None and now > signalled + limits.grace and not outcome.killed_for:
            outcome.killed_for = "stuck"
        if outcome.killed_for:
            os.killpg(process.pid, signal.SIGKILL)
    end = time.monotonic()
    outcome.status, outcome.seconds = process.returncode, end - start
    if signalled is not None:
        outcome.ending = end - signalled
    outcome.out, outcome.err = (text.decode(errors="surrogateescape") for text in (out, err))
    return outcome
