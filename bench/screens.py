"""Displays of their own (Xvfb) for what is drawn and recorded in a benchmark."""

import contextlib
import os
import signal

import measuring


@contextlib.contextmanager
def running(words, **options):
    process = measuring.start(words, **options)
    try:
        yield process
    finally:
        process.kill()
        process.wait()


@contextlib.contextmanager
def display(width, height):
    read, write = os.pipe()
    with running(["Xvfb", "-displayfd", write, "-noreset", "-nolisten", "tcp", "-screen", 0,
                  f"{width}x{height}x24"], pass_fds=[write]) as server:
        os.close(write)
        with os.fdopen(read) as shown:
            os.environ["DISPLAY"] = ":" + shown.readline().strip()
        yield server


def end(process):
    """Ends a process that was started in a session of its own, with those that it has started."""
    with contextlib.suppress(ProcessLookupError):
        os.killpg(process.pid, signal.SIGKILL)
    process.wait()
