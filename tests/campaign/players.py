"""What independent tools make of a file."""

import re
import subprocess

TIMEOUT = 60
LEAP = 3  # seconds: what a gap in a medium may be
PATIENCE = 600  # for a file of many hours, beside other runs


def _run(words, timeout=TIMEOUT):
    try:
        return subprocess.run(words, capture_output=True, timeout=timeout, stdin=subprocess.DEVNULL)
    except subprocess.TimeoutExpired:
        return None


def decoded(path):
    """What a decoder complains of, and how many seconds the file plays."""
    done = _run(["ffmpeg", "-v", "error", "-nostdin", "-progress", "pipe:1", "-i", f"file:{path}",
                 "-enc_time_base", "-1", "-max_muxing_queue_size", "1000000000", "-f", "null", "-"], PATIENCE)
    if done is None:
        return f"not decoded in {PATIENCE} s", float("inf")
    times = re.findall(rb"out_time_us=(\d+)", done.stdout)
    complaint = done.stderr.decode(errors="replace").strip()
    if not complaint and done.returncode != 0:
        complaint = f"ffmpeg ends with {done.returncode}"
    return complaint, int(times[-1]) / 1e6 if times else 0.0


def opened(path):
    """Whether a player finds a stream that it knows."""
    done = _run(["ffprobe", "-v", "quiet", "-show_entries", "stream=codec_name", "-of", "csv=p=0", f"file:{path}"])
    return done is not None and done.returncode == 0 and bool(set(done.stdout.split()) - {b"unknown"})


def stated_seconds(path):
    """The longest length that the file gives of itself."""
    done = _run(["ffprobe", "-v", "quiet", "-show_entries", "format=duration:stream=duration", "-of", "csv=p=0",
                 f"file:{path}"])
    numbers = re.findall(rb"[\d.]+", done.stdout) if done else []
    return max((float(number) for number in numbers), default=0.0)


def steady_seconds(path):
    """How far the packets go, if no stream leaps ahead on the way: 0 where one does."""
    done = _run(["ffprobe", "-v", "quiet", "-show_entries", "packet=stream_index,pts_time", "-of", "csv=p=0",
                 f"file:{path}"])
    last, furthest = {}, 0.0
    for stream, time in re.findall(rb"^(\d+),(-?[\d.]+)", done.stdout if done else b"", re.MULTILINE):
        if float(time) - last.get(stream, float(time)) > LEAP:
            return 0.0
        last[stream] = float(time)
        furthest = max(furthest, float(time))
    return furthest
