"""One run: what stands in its folder, the command, what disturbs it, and what the rules need to know."""

import dataclasses
import json
from dataclasses import dataclass, field


LEAST_BLOCK = 4096  # of a file system in memory


@dataclass
class Case:
    kind: str
    name: str  # KIND-SEED-NUMBER
    words: list = field(default_factory=list)
    stdin: str = ""
    room: int = 256 << 20  # bytes of the folder's file system
    file_limit: int = -1  # bytes that a file may have, -1 = any
    signal: int = 0  # sent `moment` seconds after the start
    moment: float = 0.0
    may_write: list = field(default_factory=lambda: ["out/"])  # beginnings of names below the folder
    seconds: float | None = None  # what the media holds, where the output is bounded by it
    cut: bool = False  # the input ends before the length that it states
    damaged: bool = False  # what is written keeps damage of the input, and only has to open

    def save(self, path):
        path.write_text(json.dumps(dataclasses.asdict(self), indent=1))

    @staticmethod
    def load(path):
        return Case(**json.loads(path.read_text()))
