"""Raw clips for encoders to be compared on: of media files, and generated ones."""

import json
import math
import random
import subprocess
from fractions import Fraction
from pathlib import Path
from typing import NamedTuple

import measuring

RATE = 30               # of the generated ones, frames a second
LONG_PIXELS = 60000000  # some tenths of a second of a fast encoder


class Clip(NamedTuple):
    name: str
    file: Path   # raw 4:2:0 of an even size, at a constant frame rate
    frames: int
    rate: Fraction  # frames a second
    start: Path     # its first frame alone
    long: Path      # as often as it takes for its encoding to be timed
    copies: int


def _probe(file):
    text = subprocess.check_output(
        ["ffprobe", "-v", "error", "-select_streams", "v:0", "-count_packets", "-of", "json",
         "-show_entries", "stream=nb_read_packets,r_frame_rate,width,height", file])
    stream = json.loads(text)["streams"][0]
    return (int(stream["nb_read_packets"]), Fraction(stream["r_frame_rate"]),
            stream["width"] * stream["height"])


def _make(name, folder, frames, source, *picture):
    file, start, long = (Path(folder, f"{name}{part}") for part in (".avi", ".start.avi", ".long.avi"))
    measuring.run("ffmpeg", "-y", *source, *picture, "-frames:v", frames, "-vsync", "cfr", "-pix_fmt", "yuv420p",
                  "-c:v", "rawvideo", "-an", file)
    found, rate, pixels = _probe(file)
    copies = math.ceil(LONG_PIXELS / (found * pixels))
    measuring.run("ffmpeg", "-y", "-i", file, "-frames:v", 1, "-c", "copy", start)
    if copies == 1:
        return Clip(name, file, found, rate, start, file, 1)
    measuring.run("ffmpeg", "-y", "-stream_loop", copies - 1, "-i", file, "-c", "copy", long)
    return Clip(name, file, found, rate, start, long, copies)


def from_file(path, folder, frames):
    """The first frames of a media file."""
    return _make(Path(path).stem, folder, frames, ["-i", path], "-map", "0:v:0", "-vf",
                 "crop=trunc(iw/2)*2:trunc(ih/2)*2:0:0")


def _prose(chance, lines, width):
    """Words that are none, but have the lengths, capitals and marks of text."""
    letters = "etaoinshrdlucmfwypvbgkjqxz"
    weights = range(len(letters) + 2, 2, -1)
    for _ in range(lines):
        line = ""
        while len(line) < width:
            word = "".join(chance.choices(letters, weights, k=chance.randint(1, 9)))
            line += chance.choice([word, word, word.title(), str(chance.randint(0, 9999))])
            line += chance.choice([" ", " ", " ", "  ", ", ", ". "])
        yield line[:width]


def text(folder, frames):
    """Sharp text, 1280x720: a page that moves by two rows of samples a frame beside a terminal that
    moves by a line every fourth frame."""
    halves = [
        # font, its size, space between lines, colour, ground, rows moved by
        ("sans", 18, 6, "0x202020", "0xf8f8f4", "2*n"),
        ("monospace", 15, 4, "0xb8e0c0", "0x101418", "18*floor(n/4)"),
    ]
    chance, graph = random.Random(1), ""
    for i, (font, size, space, colour, ground, rows) in enumerate(halves):
        height = 720 + frames * 5
        words = Path(folder, f"text{i}.txt")
        words.write_text("\n".join(_prose(chance, height // size, 64)))
        graph += (f"color={ground}:640x{height}:{RATE},drawtext=textfile={words}:expansion=none:font={font}:"
                  f"fontsize={size}:line_spacing={space}:fontcolor={colour}:x=16:y=16,format=yuv444p,"
                  f"trim=end_frame=1,loop=-1:1,setpts=N/FR/TB,crop=640:720:0:{rows}[half{i}];")
    return _make("text", folder, frames, ["-filter_complex", graph + "[half0][half1]hstack"])


def fades(folder, frames):
    """Scenes under noise, 640x480, that fade into one another, through black, and out."""
    fade = max(2, frames // 8) / RATE
    scene = (frames / RATE + 2 * fade) / 3
    scenes = [
        f"mandelbrot=640x480:{RATE}:start_scale=0.3:end_scale=0.01:end_pts=300:maxiter=500",
        f"gradients=640x480:{RATE}:seed=1:n=6:speed=0.03:type=circular",
        f"testsrc2=640x480:{RATE}",
    ]
    graph = "".join(
        f"{source},format=yuv420p,trim=duration={scene},noise=all_seed={i + 1}:alls={8 + 4 * i}:allf=t[scene{i}];"
        for i, source in enumerate(scenes))
    graph += (f"[scene0][scene1]xfade=fade:{fade}:{scene - fade}[first];"
              f"[first][scene2]xfade=fadeblack:{fade}:{2 * (scene - fade)},"
              f"fade=out:st={frames / RATE - fade}:d={fade}")
    return _make("fades", folder, frames, ["-filter_complex", graph])


# A camera over a still of fine detail, 352x288; n counts the frames. Noise is a new one in each frame.
STILL = (f"mandelbrot=1280x720:{RATE}:start_scale=0.02:maxiter=400,trim=end_frame=1,gblur=0.7,loop=-1:1,"
         "setpts=N/FR/TB,format=yuv444p")
CAMERA = {
    # name      what the camera does, and its noise
    "noise":  "crop=352:288:460:200,noise=all_seed=1:alls=20:allf=t",
    "grain":  "crop=352:288:x='400+1.6*n':y=210,noise=all_seed=2:alls=10:allf=t+u",
    "pan":    "crop=352:288:x='300+3.3*n':y='150+1.4*n'",
    "zoom":   f"zoompan=z='1+0.012*mod(on,120)':x='iw/2-iw/zoom/2':y='ih/2-ih/zoom/2':d=1:s=1280x720:fps={RATE},"
              "crop=352:288,noise=all_seed=3:alls=3:allf=t",
    "shake":  "crop=352:288:x='460+9*sin(1.7*n)+5*sin(0.61*n)':y='210+7*sin(2.3*n)+4*cos(0.83*n)',"
              "noise=all_seed=4:alls=4:allf=t",
}


def camera(name):
    return lambda folder, frames: _make(name, folder, frames, ["-filter_complex", f"{STILL},{CAMERA[name]}"])


def animation(folder, frames):
    """Smooth colours behind a turning card of sharp edges, 352x288."""
    graph = (f"gradients=352x288:{RATE}:seed=4:n=5:speed=0.02[ground];"
             f"testsrc2=160x120:{RATE},format=yuva444p,rotate=a=0.05*n:ow=200:oh=200:c=none[card];"
             "[ground][card]overlay=x='20+mod(4*n,200)':y='40+30*sin(n/5)'")
    return _make("animation", folder, frames, ["-filter_complex", graph])


def cuts(folder, frames):
    """A scene of its own every half second, 352x288: still, moving and noisy ones in turn."""
    kinds = ["noise", "pan", "zoom", "shake"]
    length = RATE // 2
    graph = "".join(
        f"{STILL},hue=h={50 * i},{CAMERA[kinds[i % len(kinds)]]},trim=end_frame={length},setpts=N/FR/TB[scene{i}];"
        for i in range(math.ceil(frames / length)))
    scenes = "".join(f"[scene{i}]" for i in range(math.ceil(frames / length)))
    return _make("cuts", folder, frames, ["-filter_complex", f"{graph}{scenes}concat={math.ceil(frames / length)},fps={RATE}"])


def still_and_wild(name, order):
    """A still for two thirds, and noise under a shaking camera for the rest, 352x288, in that order."""
    def build(folder, frames):
        wild = max(1, frames // 3)
        graph = (f"{STILL},crop=352:288:460:200,trim=end_frame={frames - wild},setpts=N/FR/TB[still];"
                 f"{STILL},{CAMERA['shake']},noise=all_seed=5:alls=30:allf=t,trim=end_frame={wild},setpts=N/FR/TB[wild];"
                 f"{order}concat,fps={RATE}")
        return _make(name, folder, frames, ["-filter_complex", graph])
    return build


def slides(folder, frames):
    """A still of its own every second and a half, 352x288: sparse, but for a cut now and then."""
    length = RATE * 3 // 2
    count = math.ceil(frames / length)
    graph = "".join(f"{STILL},hue=h={70 * i},crop=352:288:{300 + 80 * (i % 5)}:{150 + 40 * (i % 3)},trim=end_frame={length},"
                    f"setpts=N/FR/TB[slide{i}];" for i in range(count))
    slide_pads = "".join(f"[slide{i}]" for i in range(count))
    return _make("slides", folder, frames, ["-filter_complex", f"{graph}{slide_pads}concat={count},fps={RATE}"])


class CameraFile(NamedTuple):
    width: int
    height: int
    own_rate: int    # bits a second, as cameras of that size write it
    coded_rate: int  # that it is made smaller to
    seconds: int


CAMERA_FILES = {
    "720p":  CameraFile(1280, 720, 6000000, 2000000, 20),
    "1080p": CameraFile(1920, 1080, 14000000, 4000000, 12),
    "2160p": CameraFile(3840, 2160, 45000000, 12000000, 6),
}


def camera_file(name, path, folder):
    """A media file's picture as a camera writes it: H.264 with B frames and a sensor's noise, with AAC sound."""
    what = CAMERA_FILES[name]
    file = Path(folder, f"{name}.mp4")
    measuring.run("ffmpeg", "-y", "-stream_loop", -1, "-i", path, "-f", "lavfi", "-i",
                  "aevalsrc=0.3*sin(2*PI*(200+30*t)*t)|0.1*random(0):s=48000", "-map", "0:v:0", "-map", "1:a", "-vf",
                  f"setpts=N/{RATE}/TB,scale={what.width}:{what.height}:force_original_aspect_ratio=increase,"
                  f"crop={what.width}:{what.height},noise=alls=5:allf=t,format=yuv420p", "-r", RATE, "-t", what.seconds, "-c:v", "libx264", "-preset", "fast", "-b:v",
                  what.own_rate, "-maxrate", what.own_rate, "-bufsize", what.own_rate, "-c:a", "aac", file)
    return file


GENERATED = {"text": text, "fades": fades, **{name: camera(name) for name in CAMERA}, "animation": animation,
             "cuts": cuts, "slides": slides, "wild_end": still_and_wild("wild_end", "[still][wild]"),
             "wild_start": still_and_wild("wild_start", "[wild][still]")}


def make(what, folder, frames):
    """`what`: the path of a media file, or the name of a generated clip."""
    if what in GENERATED:
        return GENERATED[what](folder, frames)
    measuring.require(what)
    return from_file(what, folder, frames)
