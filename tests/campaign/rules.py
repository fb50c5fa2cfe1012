"""What holds of every run, in one place. Each rule gives nothing, or what is wrong."""

import filecmp
import os
import re
import signal
import stat

import players
from program import SANITIZER_STATUS

STATUSES = {0: "done", 1: "refused", 2: "failed", 130: "stopped"}
SIGNS_OF_SANITIZERS = re.compile(r"(ERROR: \w+Sanitizer|runtime error|SUMMARY: \w+Sanitizer)[^\n]*")
LINE_OF_LIBRARIES = re.compile(r"^\[[\w,./: -]+ @ 0x[0-9a-f]+\].*|^ *Last message repeated .*", re.MULTILINE)
SLACK = 10  # seconds that an output may be longer than its medium
TEXT_SUFFIXES = (".weu", ".prm")


def files_below(folder):
    """Name below the folder: path, of all that is no folder; links are not followed."""
    found = {}
    for place, folders, files in os.walk(folder):
        for name in files + [name for name in folders if os.path.islink(os.path.join(place, name))]:
            path = os.path.join(place, name)
            found[os.path.relpath(path, folder)] = path
    return found


def same(path, other):
    before, after = os.lstat(path), os.lstat(other)
    if stat.S_IFMT(before.st_mode) != stat.S_IFMT(after.st_mode):
        return False
    if stat.S_ISLNK(before.st_mode):
        return os.readlink(path) == os.readlink(other)
    return not stat.S_ISREG(before.st_mode) or filecmp.cmp(path, other, shallow=False)


class Judge:
    """The findings of one run, as (rule, text)."""

    def __init__(self, case, outcome, given, folder):
        self.case, self.outcome, self.findings = case, outcome, []
        self.given, self.left = files_below(given), files_below(folder)
        self.signals = {case.signal, signal.SIGTERM if outcome.stopped else 0} - {0}
        self.new = {name: path for name, path in self.left.items()
                    if name not in self.given or not same(self.given[name], path)}
        self.sanitizers()
        self.limits()
        self.status()
        self.places()
        self.lines()
        self.written()

    def find(self, rule, text):
        self.findings.append((rule, text))

    def sanitizers(self):
        report = SIGNS_OF_SANITIZERS.search(self.outcome.err + self.outcome.out)
        if report or self.outcome.status == SANITIZER_STATUS:
            self.find("sanitizer", report.group(0) if report else "its exit status without a report")

    def limits(self):
        """Memory is bounded, time is, and one signal is enough."""
        outcome = self.outcome
        if outcome.killed_for == "memory":
            self.find("memory", f"{outcome.memory >> 20} MiB")
        elif outcome.killed_for == "stuck":
            self.find("stuck", f"goes on {outcome.ending:.1f} s after a signal")
        elif outcome.stopped and not self.explained(outcome.seconds):
            self.find("endless", f"not done in {outcome.seconds:.0f} s")

    def status(self):
        status = self.outcome.status
        if self.outcome.killed_for or status in STATUSES:
            if status == 130 and not self.signals:
                self.find("status", "130 without a signal")
        elif -status not in self.signals:
            self.find("status", f"ends with {status}")
        elif -status != signal.SIGKILL and self.new:
            self.find("status", f"signal {-status} ends it with files written")
        if self.case.cut and status == 0:
            self.find("cut", "the input ends early, and the status is 0")
        elif self.case.cut and os.path.basename(self.case.words[1]) not in self.outcome.out + self.outcome.err:
            self.find("cut", f"status {status} without a line that names the input")

    def places(self):
        """Inputs stay as they are, and what is new stands where the command says."""
        may = self.case.may_write
        for name in self.given:
            if name not in self.left or name in self.new:
                if name not in may and not name.startswith("out/"):
                    self.find("input", f"{name!r} is {'changed' if name in self.left else 'gone'}")
        for name in self.new:
            if name not in self.given and not name.startswith(tuple(place.removeprefix("./") for place in may)) \
                    and "." not in may:
                self.find("place", f"{name!r} is written")

    def lines(self):
        line = LINE_OF_LIBRARIES.search(self.outcome.err + "\n" + self.outcome.out)
        if line:
            self.find("library", line.group(0)[:150])

    def written(self):
        """What has its final name is whole; a run that ends well leaves no part."""
        for name, path in self.new.items():
            if not os.path.isfile(path) or os.path.islink(path) or name.endswith(TEXT_SUFFIXES):
                continue
            if name.endswith((".part", ".repair")):
                if self.outcome.status in (0, 130) and name not in self.given:
                    self.find("part", f"{name!r} is left at status {self.outcome.status}")
            else:
                self.plays(name, path)

    def plays(self, name, path):
        complaint, seconds = players.decoded(path)
        if self.case.damaged:
            if not players.opened(path):
                self.find("opens", f"{name!r} is called repaired, and no player opens it")
        elif complaint:
            self.find("half", f"{name!r}: {complaint[:200]}")
        if self.case.seconds is not None and seconds > self.case.seconds + SLACK and not self.explained(seconds):
            self.find("length", f"{name!r} plays {seconds:.0f} s of a medium of {self.case.seconds:.0f} s")

    def explained(self, seconds):
        """Whether the input states such a length itself, but for the last frame's: a clip has 20 or more; or
        goes so far without a leap, as when a flipped bit makes another codec or time scale of it."""
        inputs = [path for name, path in self.given.items()
                  if name.startswith("in/") and os.path.isfile(path) and not self.case.damaged]
        return any(length(path) * 1.06 + SLACK >= seconds
                   for length in (players.stated_seconds, players.steady_seconds) for path in inputs)
