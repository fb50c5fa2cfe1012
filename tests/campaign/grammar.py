"""Random command lines, from the options as the reference page prints them."""

import re
from pathlib import Path

PAGE = Path(__file__).parents[2] / "docs" / "command-reference.md"
NUMBERS = ("0", "1", "2", "3", "4", "5", "16", "24", "100", "320", "333", "1000", "44100", "64000", "250000", "65535",
           "2147483647", "4000000000", "-1", "1.5", "1e9", "0x10", "x", "")
PATHS = ("in/mpeg4.avi", "in/sound.wav", "in/wmv2.wmv", "in/still.bmp", "in/moving.gif", "in", "in/none.avi",
         "in/job.weu", "out/a.wmv", "out/a.wma", "out/b", "out", "out/deep/er/c.wmv", "out/\udcff.wmv", "in\\mpeg4.avi",
         "C:\\out\\d.wmv", "\\\\server\\share\\e.wmv", "file:///etc/passwd", "file://in/mpeg4.avi", "/etc/passwd",
         "/proc/self/mem", "/dev/zero", "/dev/full", "..", "/", ".", "out/" + 250 * "n", "out/" + 300 * "n", "~", "")
TEXTS = ("t", "two words", "%s%n", "\udcfe\udcff", "é" * 40, "x" * 40_000, "")
CODES = ("a64", "a20", "av100", "av350", "v256", "scrna", "av", "avhd", "none")
SETTINGS = ("64_44_2", "Q75_44_2", "128_44_2_24", "16_16_1", "705_22_2", "Q100_44_2_16", "5_8_1", "99999_1_9", "__")
WILD = 0.12  # of the values


def _pool(name, values):
    if "Pixel formats" in values:
        return re.findall(r"\b[A-Z][A-Z0-9]{2,}\b", PAGE.read_text().split("## Pixel formats")[1])
    words = re.findall(r"\b[A-Z][A-Z0-9@]{2,}\b", values)
    if words:
        return words
    for part, pool in (("profile_code", CODES), ("profile code", CODES), ("setting", SETTINGS), ("file", PATHS),
                       ("text", TEXTS)):
        if part in f"{name} {values}":
            return pool
    numbers = re.findall(r"\b\d+\b", values)
    return [*numbers, *numbers, *NUMBERS] if numbers else NUMBERS


def options():
    """(name, pools of its values), in the page's order."""
    page = PAGE.read_text()
    rows = re.findall(r"^### (\S+)\n\n`\S+ ?([^`]*)`\n.*?^- Values: ([^\n]*)", page, re.MULTILINE | re.DOTALL)
    return [(name, [_pool(value, values) for value in re.findall(r"<([^>]*)>", usage)])
            for name, usage, values in rows]


OPTIONS = options()


def _values(rng, pools):
    chosen = [rng.choice(rng.choice((NUMBERS, PATHS, TEXTS)) if rng.random() < WILD else pool) for pool in pools]
    if chosen and rng.random() < 0.03:
        chosen.pop()
    return chosen


def words(rng):
    """A command's words. Most name an input and an output, so that many of them run."""
    chosen = []
    if rng.random() < 0.8:
        chosen += ["-input", rng.choice(PATHS[:6]), "-output", rng.choice(PATHS[8:13])]
    for _ in range(rng.randrange(0, 6)):
        name, pools = rng.choice(OPTIONS)
        chosen += [rng.choice((name, name, name.upper())), *_values(rng, pools)]
    if rng.random() < 0.1:
        chosen.insert(0, rng.choice(("--json", "--explain", "--repair", "-", "--")))
    return [word.replace("\0", "") for word in chosen]


def lines(rng):
    """Commands as they come through the standard input."""
    text = "".join(" ".join(words(rng)) + rng.choice(("\n", "\r\n", "\n\n# \n")) for _ in range(rng.randrange(1, 4)))
    return rng.choice((text, text, text[:-1], "x" * rng.randrange(1, 1 << 24), text + "exit\n" + text, "\0\n" + text))
