"""The encoders that are compared, and what a file of one of them takes and is worth."""

import math
import os
import statistics
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import NamedTuple

import measuring

KEY_SECONDS = 10  # the longest time between key frames, of all encoders
LEVELS = ["0", "20", "40", "60", "100"]
# So near each other that curves between them hold: where noise begins to go under, a quantiser may be
# three decibels.
QUALITIES = ["97", "93", "90", "86", "79", "72", "62"]  # of -v_mode 2, for quantisers of about:
QUANTISERS = ["3", "4", "5", "6", "8", "10", "13"]
CRF = ["20", "22.5", "25", "27", "30", "33", "36"]
PACED = 2  # the setting whose speed is measured
LONG_SECONDS = 5     # of a run that is not repeated
LEAST_ERROR = 0.005  # that the psnr filter tells from none

# name, encoder of ffmpeg with what it is asked for, option of the quality, its values
MPEG4 = ("-q:v", QUANTISERS)
X264 = ("-crf", CRF)
NO_COMMENT = ["-bsf:v", "filter_units=remove_types=6"]  # the options, which x264 writes as text
FFMPEG = [
    ("wmv2",                       ["wmv2"],                                            *MPEG4),
    ("wmv2, mbd rd, trellis 2",    ["wmv2", "-mbd", "rd", "-trellis", "2"],             *MPEG4),
    ("mpeg4",                      ["mpeg4"],                                           *MPEG4),
    ("libxvid",                    ["libxvid"],                                         *MPEG4),
    ("libx264 ultrafast",          ["libx264", "-preset", "ultrafast", *NO_COMMENT],    *X264),
    ("libx264 veryfast",           ["libx264", "-preset", "veryfast", *NO_COMMENT],     *X264),
    ("libx264 medium",             ["libx264", "-preset", "medium", *NO_COMMENT],       *X264),
]
PACE = "wmv2"                        # whose speed the others' is compared with
ANCHOR = "wmv2, mbd rd, trellis 2"   # whose bits the others' are compared with


class Coder(NamedTuple):
    name: str
    settings: list   # from fine to coarse
    command: object  # of a clip's file, its frame rate, a setting, a folder and threads: words, output
    console: str = ""  # of ours: program, level, codec as ffprobe calls it
    level: str = ""
    codec: str = ""
    decoder: tuple = ()  # options of ffmpeg


def ours(console, mark, level, qualities):
    def command(file, _rate, quality, folder, _threads):
        output = f"{folder}/out.wmv"
        return [console, "-input", file, "-output", output, "-v_codec", "WMV9", "-v_mode", 2, "-v_quality",
                quality, "-v_performance", level, "-v_keydist", KEY_SECONDS, "-silent"], output
    return Coder(f"WMV9 {level}{mark}", qualities, command, console, level, "wmv3",
                 ("-flags", "+bitexact"))


def _theirs(name, encoder, option, settings):
    def command(file, rate, setting, folder, threads):
        output = f"{folder}/out.mkv"
        return ["ffmpeg", "-y", "-i", file, "-c:v", *encoder, option, setting, "-g", round(KEY_SECONDS * rate),
                "-threads", threads, output], output
    return Coder(name, settings, command)


def theirs():
    """By their names; those that this ffmpeg has."""
    known = subprocess.check_output(["ffmpeg", "-v", "error", "-encoders"], text=True).split()
    return {row[0]: _theirs(*row) for row in FFMPEG if row[1][0] in known}


class Point(NamedTuple):
    setting: str
    kilobits: float  # a second
    psnr: float      # of luma, decibels: of the mean square error over all frames
    ssim: float      # of luma: mean of all frames
    faults: list     # what makes it worth nothing or less


def _packets(file):
    """Codec, and the sizes of the picture's packets in bytes."""
    text = subprocess.check_output(
        ["ffprobe", "-v", "error", "-select_streams", "v:0", "-show_entries", "packet=size:stream=codec_name",
         "-of", "default=nw=1", file], text=True)
    pairs = [line.split("=") for line in text.split()]
    return dict(pairs)["codec_name"], [int(value) for key, value in pairs if key == "size"]


def _column(file, name):
    return [float(word[len(name):]) for line in file.read_text().splitlines() for word in line.split()
            if word.startswith(name)]


def _compare(clip, file, decoder, number, folder):
    """Square errors and SSIM of each decoded frame, beside the clip's frame of the same `number`; and
    what the decoder had to say."""
    graph = (f"[0:v]settb=AVTB,setpts='{number}/TB'[a];[1:v]settb=AVTB,setpts='{number}/TB',split[b][c];"
             "[a][b]psnr=shortest=1:stats_file=psnr.txt[d];[d][c]ssim=shortest=1:stats_file=ssim.txt")
    shown = subprocess.run(
        ["ffmpeg", "-v", "error", *decoder, "-i", file, "-i", clip.file, "-lavfi", graph, "-vsync", "passthrough",
         "-f", "null", "-"], cwd=folder, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
    if shown.returncode != 0:
        sys.exit(f"{file} cannot be decoded:\n{shown.stderr}")
    return _column(Path(folder, "psnr.txt"), "mse_y:"), _column(Path(folder, "ssim.txt"), "Y:"), shown.stderr


def measure(coder, clip, setting):
    """Encodes a clip, decodes it and compares."""
    with tempfile.TemporaryDirectory() as folder:
        words, file = coder.command(clip.file, clip.rate, setting, folder, 1)
        measuring.run(*words)
        codec, sizes = _packets(file)
        errors, likeness, said = _compare(clip, file, coder.decoder, "N", folder)
        faults = []
        if coder.codec not in ("", codec):
            faults.append(f"is {codec}, not {coder.codec}")
        if said:
            faults.append(f"the decoder says: {said.splitlines()[0]}")
        if not len(sizes) == len(errors) == clip.frames:
            faults.append(f"{len(sizes)} packets and {len(errors)} pictures of {clip.frames} frames")
            errors, likeness, _ = _compare(clip, file, coder.decoder, f"round(T*{clip.rate})", folder)
    return Point(setting, sum(sizes) * 8 / 1000 / float(clip.frames / clip.rate),
                 10 * math.log10(255**2 / max(statistics.mean(errors), LEAST_ERROR)),
                 statistics.mean(likeness), faults)


def measure_all(tasks):
    """Points of many (coder, clip, setting), some at a time: the speed does not count here."""
    with ThreadPoolExecutor(len(os.sched_getaffinity(0))) as pool:
        for task, point in zip(tasks, pool.map(lambda task: measure(*task), tasks)):
            coder, clip, setting = task
            print(f"{clip.name}, {coder.name}, {setting}: {point.kilobits:.1f} kbit/s, "
                  f"{point.psnr:.2f} dB, SSIM {point.ssim:.5f}", *point.faults, file=sys.stderr, sep="; ")
            yield point


class Pace(NamedTuple):
    frames_per_second: float
    ratio: float  # to the other's


def pace(coder, other, clip, cores, pairs):
    """Speed from raw frames to a file on so many cores, beside another encoder's, at one
    setting of each. What encoding the first frame alone takes is not counted: start and end of a process.
    One pair does where it takes long."""
    used = ",".join(str(core) for core in sorted(os.sched_getaffinity(0))[:cores])
    with tempfile.TemporaryDirectory() as folder:
        def alternate(count, file, **options):
            def encode(who):
                words, _ = who.command(file, clip.rate, who.settings[PACED], folder, cores)
                return measuring.run("taskset", "-c", used, *words)
            return measuring.alternate(count, lambda: encode(coder), lambda: encode(other), **options)

        starts = [measuring.median_seconds(runs) for runs in alternate(pairs, clip.start)]
        whole = alternate(1, clip.long, warm_up=False)
        if max(runs[0].seconds for runs in whole) < LONG_SECONDS:
            whole = [one + more for one, more in zip(whole, alternate(pairs - 1, clip.long, warm_up=False))]
    seconds = [[run.seconds - start for run in runs] for start, runs in zip(starts, whole)]
    return Pace((clip.frames * clip.copies - 1) / statistics.median(seconds[0]),
                statistics.median(theirs / ours for ours, theirs in zip(*seconds)))
