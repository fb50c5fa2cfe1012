"""The kinds of runs: each fills a folder and says what is run in it and how it is disturbed."""

import os
import random
import shutil
import signal

import clips
import grammar
import mutation
import times
from case import Case

WALKED = ("mpeg4.avi", "raw.avi", "wmv2.wmv", "wmv1.asf", "sound.wma", "mpeg1.mpg", "sound.mp3", "sound.wav")
ODD_NAMES = ("plain", "two words", "back\\slash", "line\nend", "\udcff\udcfe", "é" * 60, "n" * 240, "-input", "%s%n",
             "a.b.c", "'quote\"", "C:", "x.part")


def _put(clip_folder, name, folder, target=None):
    path = folder / "in" / (target or name)
    path.parent.mkdir(parents=True, exist_ok=True)
    shutil.copyfile(clip_folder / name, path)
    return path


def _output(rng, name=""):
    long = ["-duration", "2"] if name.startswith("still") else []
    return ["-output", "out/made.wmv", *rng.choice(clips.SHAPES), *long]


def mutated(rng, case, clip_folder, folder):
    name = rng.choice(clips.NAMES)
    path = _put(clip_folder, name, folder)
    path.write_bytes(mutation.mutate(rng, path.read_bytes()))
    case.words = ["-input", f"in/{name}", *_output(rng, name)]
    case.seconds = 2 * clips.SECONDS


def cut(rng, case, clip_folder, folder):
    name = rng.choice([name for name in clips.NAMES if not name.startswith("still")])
    path = _put(clip_folder, name, folder)
    os.truncate(path, int(path.stat().st_size * rng.uniform(0.15, 0.4)))
    case.words = ["-input", f"in/{name}", *_output(rng)]
    case.seconds, case.cut = clips.SECONDS, name in clips.STATES_LENGTH


def timed(rng, case, clip_folder, folder):
    name = times.leaping(rng, clip_folder, folder / "in") if rng.random() < 0.7 else None
    name = name or times.stating(rng, clip_folder, folder / "in")
    case.words = ["-input", f"in/{name}", *_output(rng)]
    case.seconds = clips.SECONDS


def repaired(rng, case, clip_folder, folder):
    source = rng.choice(sorted((clip_folder / "parts").iterdir()))
    path = _put(clip_folder / "parts", source.name, folder)
    path.write_bytes(mutation.mutate(rng, path.read_bytes()))
    case.words = ["--repair", f"in/{source.name}"]
    case.may_write = [f"in/{source.name}", f"in/{source.stem}"]
    case.seconds, case.damaged = 30 * clips.SECONDS, True


def _named(words, *options):
    """The files that follow these options; a backslash parts folders too."""
    return {os.path.normpath(value.replace("\\", "/"))
            for option, value in zip(words, words[1:]) if option.lower() in options}


def commanded(rng, case, clip_folder, folder):
    for name in ("mpeg4.avi", "sound.wav", "wmv2.wmv", "still.bmp", "moving.gif"):
        _put(clip_folder, name, folder)
    (folder / "in" / "job.weu").write_text(" ".join(grammar.words(rng)), errors="surrogateescape")
    if rng.random() < 0.2:
        case.words, case.stdin = ["-"], grammar.lines(rng)
    else:
        case.words = grammar.words(rng)
    job = (folder / "in" / "job.weu").read_text(errors="surrogateescape").split()
    for words in (case.words + job, *(line.split() for line in case.stdin.splitlines())):
        saved = _named(words, "-s_config", "-saveprofile")
        case.may_write += (saved | _named(words, "-output", "--repair")) - _named(words, "-input")
        case.may_write += {f"{name}.weu" for name in saved}
    case.may_write.append("home/")
    case.signal, case.moment = signal.SIGTERM, 5  # recordings and long stills last


def stopped(rng, case, clip_folder, folder):
    case.signal = rng.choice((signal.SIGTERM, signal.SIGINT, signal.SIGKILL))
    case.moment = rng.choice((rng.uniform(0, 0.08), rng.uniform(0, 2)))
    source = rng.choice(("long", "long", "walk", "links", "input", "config", "output", "part", "repair", "still"))
    long = _put(clip_folder, "long.avi", folder)
    if source in ("input", "config", "output", "part", "repair"):
        case.signal = rng.choice((signal.SIGTERM, signal.SIGINT))
        pipe = folder / {"output": "out/made.wmv", "part": "out/made.wmv.part"}.get(source, "in/pipe")
        os.mkfifo(pipe)
    if source == "walk":
        for number in range(3):
            os.link(long, folder / "in" / f"{number}.avi")
    if source == "links":
        long.unlink()
        _multiply(folder / "in", 7)
    if source == "still":
        _put(clip_folder, "still.bmp", folder)
    case.words = {
        "walk": ["-input", "in", "-output", "out"], "links": ["-input", "in", "-output", "out"],
        "input": ["-input", "in/pipe", *_output(rng)], "config": ["-config", "in/pipe", *_output(rng)],
        "repair": ["--repair", "in/pipe"], "still": ["-input", "in/still.bmp", *_output(rng), "-duration", "9999"],
    }.get(source, ["-input", "in/long.avi", *_output(rng)])


def limited(rng, case, clip_folder, folder):
    name = rng.choice(clips.NAMES)
    case.words = ["-input", f"in/{_put(clip_folder, name, folder).name}", *_output(rng, name)]
    if rng.random() < 0.2:
        part = _put(clip_folder / "parts", rng.choice(sorted(os.listdir(clip_folder / "parts"))), folder)
        case.words = ["--repair", f"in/{part.name}"]
        case.may_write = [f"in/{part.name}", f"in/{part.stem}"]
    elif rng.random() < 0.2:
        case.words += ["-s_config", "out/job"]
    amount = int(2 ** rng.uniform(0, 18))
    if rng.random() < 0.5:
        case.file_limit = amount
    else:
        case.room = -amount  # behind what stands there already


def _multiply(folder, depth):
    """Folders that lead to each other, so that ways through them multiply."""
    for number in range(depth):
        below = folder / str(number)
        below.mkdir()
        for other in range(depth):
            (below / f"to{other}").symlink_to(f"../{other}")


def walked(rng, case, clip_folder, folder):
    _fill(rng, clip_folder, folder / "in", depth=rng.randrange(3))
    target = rng.choice(("out", "out", "out/new", "in", "in/inside"))
    case.words = ["-input", rng.choice(("in", "in/", "in/.")), "-output", target, *rng.choice(clips.SHAPES)]
    case.may_write.append(target + "/")
    if rng.random() < 0.2:
        (folder / "out" / "victim").write_text("not ours")
        for name in ("plain.wmv", "plain.wmv.part", "plain.wma.part"):
            (folder / "out" / name).symlink_to("victim")


def _fill(rng, clip_folder, folder, depth):
    folder.mkdir(exist_ok=True)
    for _ in range(rng.randrange(1, 5)):
        clip = rng.choice(WALKED)
        path = folder / (rng.choice(ODD_NAMES) + "." + clip.rpartition(".")[2])
        if os.path.lexists(path):
            continue
        what = rng.choice(("clip", "clip", "clip", "pipe", "loop", "link", "empty", "text", "unreadable", "folder"))
        if what in ("clip", "unreadable"):
            shutil.copyfile(clip_folder / clip, path)
            path.chmod(0o000 if what == "unreadable" else 0o644)
        elif what == "pipe":
            os.mkfifo(path)
        elif what in ("loop", "link"):
            path.symlink_to(path.name if what == "loop" else rng.choice((".", "..", "/etc", "gone", "/dev/zero")))
        elif what == "folder":
            path.mkdir()
        else:
            path.write_bytes(b"" if what == "empty" else b"no medium\n" * 100)
    if rng.random() < 0.1:
        _multiply(folder, 5)
    if depth > 0:
        _fill(rng, clip_folder, folder / rng.choice(ODD_NAMES[:6]), depth - 1)
        if rng.random() < 0.1:
            (folder / "closed").mkdir(mode=0o000, exist_ok=True)


KINDS = {"mutated": mutated, "cut": cut, "times": timed, "parts": repaired, "commands": commanded, "signals": stopped,
         "limits": limited, "folders": walked}
SHARES = {"mutated": 30, "cut": 5, "times": 15, "parts": 15, "commands": 15, "signals": 10, "limits": 5, "folders": 5}


def make(kind, name, clip_folder, folder):
    """The case of this name, with its files in `folder`; the same whenever it is made."""
    rng = random.Random(name)
    case = Case(kind, name)
    for below in ("in", "out", "home"):
        (folder / below).mkdir()
    KINDS[kind](rng, case, clip_folder, folder)
    return case
