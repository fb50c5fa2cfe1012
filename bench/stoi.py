"""Short-time objective intelligibility (C. H. Taal, R. C. Hendriks, R. Heusdens, J. Jensen: "An algorithm for
intelligibility prediction of time-frequency weighted noisy speech", IEEE Trans. ASLP 19(7), 2011), and the segmental
signal to noise ratio."""

import numpy

RATE = 10000            # that STOI is defined at
FRAME = 256             # samples, half of which frames overlap
SPECTRUM = 512
BANDS = 15              # thirds of an octave ...
LOWEST = 150            # ... from this centre on, Hz
SEGMENT = 30            # frames
DISTORTION = -15        # dB: worse ones count no more
DYNAMIC = 40            # dB: frames so far below the loudest are silence
WORST, BEST = -10, 35   # dB that a segment's ratio is held to


def _frames(sound, size, step):
    count = max((len(sound) - size) // step + 1, 0)
    return numpy.stack([sound[k * step:k * step + size] for k in range(count)]) if count else numpy.zeros((0, size))


def _loud(frames):
    power = 10 * numpy.log10((frames ** 2).sum(axis=1) + 1e-12)
    return power > power.max() - DYNAMIC


def _without_silence(reference, heard):
    """Frames that are silent in the reference are cut out of both."""
    window = numpy.hanning(FRAME + 2)[1:-1]
    step = FRAME // 2
    cut = [_frames(sound, FRAME, step) * window for sound in (reference, heard)]
    kept = _loud(cut[0])
    joined = []
    for frames in cut:
        frames = frames[kept]
        sound = numpy.zeros((len(frames) + 1) * step)
        for k, frame in enumerate(frames):
            sound[k * step:k * step + FRAME] += frame
        joined.append(sound)
    return joined


def _band_magnitudes(sound):
    """Of thirds of an octave, by frame."""
    frames = _frames(sound, FRAME, FRAME // 2) * numpy.hanning(FRAME + 2)[1:-1]
    power = numpy.abs(numpy.fft.rfft(frames, SPECTRUM)) ** 2
    hertz = numpy.arange(SPECTRUM // 2 + 1) * RATE / SPECTRUM
    bands = []
    for k in range(BANDS):
        centre = LOWEST * 2 ** (k / 3)
        edges = [numpy.abs(hertz - centre * 2 ** (side / 6)).argmin() for side in (-1, 1)]
        bands.append(numpy.sqrt(power[:, edges[0]:edges[1]].sum(axis=1)))
    return numpy.stack(bands, axis=1)


def stoi(reference, heard):
    """Of two sounds at RATE that lie on each other: up to 1 = as the reference."""
    clean, coded = (_band_magnitudes(sound) for sound in _without_silence(reference, heard))
    found = []
    for end in range(SEGMENT, len(clean) + 1):
        x, y = clean[end - SEGMENT:end], coded[end - SEGMENT:end]
        y = y * numpy.sqrt((x ** 2).sum(axis=0) / ((y ** 2).sum(axis=0) + 1e-20))
        y = numpy.minimum(y, x * (1 + 10 ** (-DISTORTION / 20)))
        x, y = x - x.mean(axis=0), y - y.mean(axis=0)
        found.append((x * y).sum(axis=0) / numpy.sqrt((x ** 2).sum(axis=0) * (y ** 2).sum(axis=0) + 1e-20))
    return float(numpy.mean(found))


def segmental_snr(reference, heard, sampling_rate):
    """Mean over 20 ms that are no silence, in dB."""
    size = sampling_rate // 50
    wanted, got = (_frames(sound, size, size) for sound in (reference, heard))
    kept = _loud(wanted)
    signal = (wanted[kept] ** 2).sum(axis=1)
    noise = ((wanted[kept] - got[kept]) ** 2).sum(axis=1)
    return float(numpy.clip(10 * numpy.log10((signal + 1e-12) / (noise + 1e-12)), WORST, BEST).mean())
