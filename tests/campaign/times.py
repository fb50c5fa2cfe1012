"""Files whose time stamps leap, begin far off or run backwards, or whose headers state wild lengths."""

import struct

import clips

SOURCES = {"mp4": "mpeg4.mp4", "mov": "mjpeg.mov", "mkv": "mpeg4.mkv", "flv": "flv1.flv", "ts": "mpeg2.ts",
           "mpg": "mpeg1.mpg", "wmv": "wmv2.wmv", "wma": "sound.wma", "asf": "wmv1.asf", "nut": "mpeg4.avi",
           "webm": "vp8.webm", "ogg": "sound.ogg"}
LEAPS = (3, 30, 3600, 86_400, 31_536_000, 3_000_000_000)  # seconds
FIELDS = (
    # clip        bytes before the number                              distance  width in bytes
    ("mpeg4.mp4", b"mvhd",                                                 16, 4),
    ("mpeg4.mp4", b"tkhd",                                                 20, 4),
    ("mpeg4.mp4", b"mdhd",                                                 16, 4),
    ("mpeg4.mp4", b"mdhd",                                                 12, 4),  # its time scale
    ("mpeg4.mp4", b"stts",                                                 12, 4),
    ("mpeg4.mkv", b"\x44\x89\x88",                                          0, 8),
    ("mpeg4.mkv", b"\x2a\xd7\xb1\x83",                                      0, 3),  # its time scale
    ("flv1.flv",  b"duration\x00",                                          0, 8),
    ("mpeg4.avi", b"avih",                                                 20, 4),
    ("mpeg4.avi", b"strh",                                                 24, 4),  # scale
    ("mpeg4.avi", b"strh",                                                 28, 4),  # rate
    ("mpeg4.avi", b"strh",                                                 32, 4),  # start
    ("mpeg4.avi", b"strh",                                                 36, 4),
    ("wmv2.wmv",  bytes.fromhex("a1dcab8c47a9cf118ee400c00c205365"),       48, 8),
    ("wmv2.wmv",  bytes.fromhex("a1dcab8c47a9cf118ee400c00c205365"),       64, 8),  # preroll
    ("sound.wma", bytes.fromhex("a1dcab8c47a9cf118ee400c00c205365"),       48, 8),
    ("sound.wav", b"data",                                                  0, 4),
    ("sound.wav", b"WAVEfmt ",                                              8, 4),  # sampling rate
)


def _expression(rng):
    leap = f"{rng.choice(LEAPS)}/TB"
    frame = rng.randrange(1, 20)
    return rng.choice((
        f"TS+if(gte(N,{frame}),{leap},0)",
        f"TS-if(gte(N,{frame}),{leap},0)",
        f"TS+if(eq(N,{frame}),{leap},0)",
        f"TS+{leap}",
        f"TS-{leap}",
        f"TS+{rng.choice((10, 100))}*N/TB",
        f"TS*{rng.choice((0, 3, 1000, 1_000_000))}",
        f"TS+mod(N*{rng.randrange(1, 1000)},97)/97*{rng.choice((1, 10))}/TB",
        "STARTDTS"))


def leaping(rng, clip_folder, folder):
    """Makes a clip with times out of order; its name, or nothing where the container cannot hold them."""
    suffix, source = rng.choice(list(SOURCES.items()))
    name = f"times.{suffix}"
    expression = _expression(rng).replace(",", r"\,")
    medium = rng.choice((":v", ":a", ""))
    words = ["-copyts", "-i", str(clip_folder / source), "-map", "0", "-c", "copy", "-avoid_negative_ts",
             rng.choice(("disabled", "auto")), f"-bsf{medium}", f"setts=ts={expression}"]
    clips.ffmpeg(words, folder / name)
    return name if (folder / name).exists() and (folder / name).stat().st_size > 0 else None


def stating(rng, clip_folder, folder):
    """A clip with one number of its header replaced; its name."""
    clip, before, distance, width = rng.choice(FIELDS)
    data = bytearray((clip_folder / clip).read_bytes())
    places = [at for at in range(len(data)) if data.startswith(before, at)][:4]
    number = rng.choice((0, 1, 1 << 8 * width - 1, (1 << 8 * width) - 1, rng.getrandbits(8 * width)))
    value = number.to_bytes(width, "big")
    if width == 8 and not clip.startswith(("wmv", "sound")):
        value = struct.pack(">d", rng.choice((1e6, 1e15, 1e300, -1.0, float("nan"), float("inf"))))
    at = rng.choice(places) + len(before) + distance
    data[at:at + width] = value
    (folder / clip).write_bytes(data)
    return clip
