"""Clips of every container, made once for a campaign."""

import signal
import subprocess
import time

SECONDS = 2
PICTURE = ["-f", "lavfi", "-i", f"testsrc=size=64x48:rate=10:duration={SECONDS}"]
SOUND = ["-f", "lavfi", "-i", f"sine=frequency=440:sample_rate=22050:duration={SECONDS}"]
BOTH, STILL = PICTURE + SOUND, PICTURE + ["-frames:v", "1"]
ROWS = (
    # name         ffmpeg's words                                                  states its length
    ("mpeg4.avi",  BOTH + ["-c:v", "mpeg4", "-c:a", "mp2"],                                   True),
    ("raw.avi",    BOTH + ["-c:v", "rawvideo", "-c:a", "pcm_s16le"],                          True),
    ("wmv2.wmv",   BOTH + ["-c:v", "wmv2", "-c:a", "wmav2"],                                  True),
    ("wmv1.asf",   BOTH + ["-c:v", "wmv1", "-c:a", "wmav1"],                                  True),
    ("sound.wma",  SOUND + ["-c:a", "wmav2"],                                                 True),
    ("mpeg4.mp4",  BOTH + ["-c:v", "mpeg4", "-c:a", "aac", "-movflags", "+faststart"],        True),
    ("frag.mp4",   BOTH + ["-c:v", "mpeg4", "-c:a", "aac", "-movflags", "frag_keyframe+empty_moov"], False),
    ("mjpeg.mov",  BOTH + ["-c:v", "mjpeg", "-c:a", "pcm_s16le"],                             False),
    ("mpeg4.mkv",  BOTH + ["-c:v", "mpeg4", "-c:a", "flac"],                                  True),
    ("vp8.webm",   BOTH + ["-c:v", "libvpx", "-c:a", "libopus", "-ar", "48000"],              True),
    ("flv1.flv",   BOTH + ["-c:v", "flv", "-c:a", "adpcm_swf"],                               True),
    ("mpeg2.ts",   BOTH + ["-c:v", "mpeg2video", "-c:a", "mp2", "-r", "25"],                  False),
    ("mpeg1.mpg",  BOTH + ["-c:v", "mpeg1video", "-c:a", "mp2", "-r", "25"],                  False),
    ("sound.mp3",  SOUND + ["-c:a", "libmp3lame"],                                            False),
    ("sound.wav",  SOUND,                                                                     True),
    ("sound.ogg",  SOUND + ["-c:a", "libvorbis"],                                             False),
    ("sound.flac", SOUND,                                                                     True),
    ("moving.gif", PICTURE,                                                                   False),
    ("still.bmp",  STILL,                                                                     False),
    ("still.jpg",  STILL,                                                                     False),
    ("still.png",  STILL,                                                                     False),
)
STATES_LENGTH = {name for name, _, states in ROWS if states}
NAMES = [name for name, _, _ in ROWS]
SHAPES = (["-profile", "av100"], ["-v_codec", "WMV7"], ["-v_codec", "WMV8"], ["-v_mode", "1"], ["-audioonly"],
          ["-videoonly"], ["-v_codec", "UNCOMP", "-a_codec", "PCM"], ["-v_mode", "2", "-a_mode", "2"], [])


def ffmpeg(words, path):
    done = subprocess.run(["ffmpeg", "-v", "error", "-nostdin", "-y", *words, str(path)], capture_output=True)
    return done.returncode == 0


def _part(console, folder, name, source, shape, size):
    """A run's part, killed when it has `size` bytes."""
    target = folder / name
    part = target.with_name(name + ".part")
    process = subprocess.Popen([console, "-input", source, "-output", target, *shape], stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    while process.poll() is None and (not part.exists() or part.stat().st_size < size):
        time.sleep(0.002)
    process.send_signal(signal.SIGKILL)
    process.wait()
    if target.exists():  # the run was quicker; its file with the numbers of one that is not finished yet
        target.rename(part)


def make(folder, console):
    """Fills the folder: the clips, long.avi of a minute, and parts of several codecs."""
    if (folder / "made").exists():
        return
    folder.mkdir(parents=True, exist_ok=True)
    for name, words, _ in ROWS:
        if not ffmpeg([*words, "-fflags", "+bitexact", "-flags:v", "+bitexact", "-flags:a", "+bitexact"],
                      folder / name):
            raise SystemExit(f"ffmpeg cannot make {name}")
    ffmpeg(["-stream_loop", "29", "-i", str(folder / "mpeg4.avi"), "-c", "copy"], folder / "long.avi")
    (folder / "parts").mkdir(exist_ok=True)
    for number, shape in enumerate(SHAPES):
        suffix = "wma" if "-audioonly" in shape else "wmv"
        for size in (20_000, 60_000, 150_000):
            _part(console, folder / "parts", f"{number}_{size}.{suffix}", folder / "long.avi", shape, size)
    (folder / "made").touch()
