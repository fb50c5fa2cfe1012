"""Perceived quality of a sound beside its original: the basic version of ITU-R BS.1387 (PEAQ), with the clarifications of
P. Kabal, "An Examination and Interpretation of ITU-R BS.1387" (2003). Arrays of samples are at 48 kHz, a column a
channel, as 16-bit numbers. `grade` gives 0 where no difference is heard, down to -4."""

import numpy

RATE, SIZE, HOP = 48000, 2048, 1024
FRAMES_A_SECOND = RATE / HOP

# Weights of the neural network, a row a model output variable: its range, then its weight for each hidden node.
NETWORK = numpy.array([
    [393.916656, 921.0, -0.502657, 0.436333, 1.219602],           # BandwidthRef
    [361.965332, 881.131226, 4.307481, 3.246017, 1.123743],       # BandwidthTest
    [-24.045116, 16.212030, 4.984241, -2.211189, -0.192096],      # Total NMR
    [1.110661, 107.137772, 0.051056, -1.762424, 4.331315],        # WinModDiff1
    [-0.206623, 2.886017, 2.321580, 1.789971, -0.754560],         # ADB
    [0.074318, 13.933351, -5.303901, -3.452257, -10.814982],      # EHS
    [1.113683, 63.257874, 2.730991, -6.111805, 1.519223],         # AvgModDiff1
    [0.950345, 1145.018555, 0.624950, -1.331523, -5.955151],      # AvgModDiff2
    [0.029985, 14.819740, 3.102889, 0.871260, -5.922878],         # RmsNoiseLoud
    [0.000101, 1.0, -1.051468, -0.939882, -0.142913],             # MFPD
    [0.0, 1.0, -1.804679, -0.503610, -0.620456],                  # RelDistFrames
])
HIDDEN_BIAS = numpy.array([-2.518254, 0.654841, -2.207228])
OUTPUT = numpy.array([-3.817048, 4.107138, 4.629582])
OUTPUT_BIAS = -0.307594
GRADES = (-3.98, 0.22)


def _bands():
    step = 0.25
    low, high = 7 * numpy.arcsinh(80 / 650), 7 * numpy.arcsinh(18000 / 650)
    count = int(numpy.ceil((high - low) / step))
    edges = numpy.minimum(low + step * numpy.arange(count + 1), high)
    hz = 650 * numpy.sinh(edges / 7)
    centres = 650 * numpy.sinh((edges[:-1] + edges[1:]) / 2 / 7)
    return hz[:-1], hz[1:], centres


LOWER, UPPER, CENTRES = _bands()
BANDS = len(CENTRES)
KHZ = CENTRES / 1000
INTERNAL_NOISE = 10 ** (0.1456 * KHZ ** -0.8)


def _grouping():
    bin_hz = RATE / SIZE
    edges = (numpy.arange(SIZE // 2 + 1) - 0.5) * bin_hz
    shared = numpy.minimum(UPPER[:, None], edges + bin_hz) - numpy.maximum(LOWER[:, None], edges)
    return numpy.maximum(shared, 0) / bin_hz


def _ear():
    khz = numpy.maximum(numpy.arange(SIZE // 2 + 1) * RATE / SIZE, 1e-3) / 1000
    return -2.184 * khz ** -0.8 + 6.5 * numpy.exp(-0.6 * (khz - 3.3) ** 2) - 0.001 * khz ** 3.6


GROUPING = _grouping()
EAR = 10 ** (_ear() / 10)
WINDOW = 0.5 * (1 - numpy.cos(2 * numpy.pi * numpy.arange(SIZE) / (SIZE - 1)))
LEVEL = 10 ** (92 / 20) / (0.84971762641205 * 32768 / 4 * (SIZE - 1))


def _decay(least, at_100_hz):
    return numpy.exp(-1 / (FRAMES_A_SECOND * (least + 100 / CENTRES * (at_100_hz - least))))


FORWARD, SMOOTHING = _decay(0.008, 0.030), _decay(0.008, 0.050)


def _spread(energy):
    """Over the bands of a row; rows are frames."""
    step = 0.25
    down = 10 ** (-2.7 * step)
    up = 10 ** ((-2.4 - 23 / CENTRES) * step) * energy ** (0.2 * step)
    place = numpy.arange(BANDS)
    gain = (1 - down ** (place + 1)) / (1 - down) + (1 - up ** (BANDS - place)) / (1 - up) - 1
    low, high = energy / gain, up ** 0.4
    total = numpy.zeros_like(energy)
    for band in range(BANDS):
        part = low[:, band] ** 0.4
        total[:, :band] += part[:, None] * down ** (0.4 * (band - place[:band]))
        total[:, band:] += part[:, None] * high[:, band, None] ** (place[band:] - band)
    return total ** 2.5


SPREAD_ONE = _spread(numpy.ones((1, BANDS)))


def _smooth(rows, decay, gain=None):
    """A first-order low-pass along the frames."""
    state, result = numpy.zeros(BANDS), numpy.empty_like(rows)
    scaled = rows * ((1 - decay) if gain is None else gain)
    for i, row in enumerate(scaled):
        state = decay * state + row
        result[i] = state
    return result


class Heard:
    """What the model of the ear makes of one channel."""

    def __init__(self, samples):
        frames = numpy.lib.stride_tricks.sliding_window_view(samples, SIZE)[::HOP]
        spectrum = numpy.fft.rfft(frames * WINDOW) * LEVEL
        self.power = numpy.abs(spectrum) ** 2
        self.weighted = self.power * EAR
        banded = numpy.maximum(self.weighted @ GROUPING.T, 1e-12) + INTERNAL_NOISE
        self.unsmeared = _spread(banded) / SPREAD_ONE
        self.excitation = numpy.maximum(_smooth(self.unsmeared, FORWARD), self.unsmeared)
        loudness = self.unsmeared ** 0.3
        change = numpy.abs(numpy.diff(loudness, axis=0, prepend=0)) * FRAMES_A_SECOND
        self.mean_loudness = _smooth(loudness, SMOOTHING)
        self.modulation = _smooth(change, SMOOTHING) / (1 + self.mean_loudness / 0.3)
        self.energy = (frames[:, SIZE // 2:] ** 2).sum(axis=1)
        self.loudness = self._loudness()

    def _loudness(self):
        index = 10 ** (0.1 * (-2 - 2.05 * numpy.arctan(KHZ / 4) - 0.75 * numpy.arctan((KHZ / 1.6) ** 2)))
        threshold = 10 ** (0.364 * KHZ ** -0.8)
        bands = 1.07664 * (threshold / (index * 1e4)) ** 0.23 * (
            (1 - index + index * self.excitation / threshold) ** 0.23 - 1)
        return 24 / BANDS * numpy.maximum(bands, 0).sum(axis=1)


def _adapted(reference, test):
    """Excitations without what differs in level and in linear filtering."""
    ref_mean, test_mean = _smooth(reference.excitation, SMOOTHING), _smooth(test.excitation, SMOOTHING)
    level = (numpy.sqrt(test_mean * ref_mean).sum(axis=1) / test_mean.sum(axis=1)) ** 2
    ref = reference.excitation / numpy.maximum(level, 1)[:, None]
    tested = test.excitation * numpy.minimum(level, 1)[:, None]
    both, own = _smooth(tested * ref, SMOOTHING, 1), _smooth(ref * ref, SMOOTHING, 1)
    ratio_test = numpy.where(both >= own, own / both, 1)
    ratio_ref = numpy.where(both >= own, 1, both / own)
    result = []
    for rows, ratio in ((ref, ratio_ref), (tested, ratio_test)):
        sums = numpy.cumsum(numpy.pad(ratio, ((0, 0), (1, 0))), axis=1)
        first = numpy.maximum(numpy.arange(BANDS) - 3, 0)
        last = numpy.minimum(numpy.arange(BANDS) + 4, BANDS - 1) + 1
        result.append(rows * _smooth((sums[:, last] - sums[:, first]) / (last - first), SMOOTHING))
    return result


def _noise_loudness(reference, test, adapted):
    ref, tested = adapted
    ref_index, test_index = 0.15 * reference.modulation + 0.5, 0.15 * test.modulation + 0.5
    beta = numpy.exp(-1.5 * (tested - ref) / ref)
    excess = numpy.maximum(test_index * tested - ref_index * ref, 0)
    bands = (INTERNAL_NOISE / test_index) ** 0.23 * (
        (1 + excess / (INTERNAL_NOISE + ref_index * ref * beta)) ** 0.23 - 1)
    return numpy.maximum(24 / BANDS * bands.sum(axis=1), 0)


def _bandwidths(reference, test):
    ref, tested = 10 * numpy.log10(reference.power + 1e-30), 10 * numpy.log10(test.power + 1e-30)
    floor = tested[:, 921:1024].max(axis=1)
    wide = []
    for frame, level in enumerate(floor):
        above = numpy.nonzero(ref[frame, :921] >= 10 + level)[0]
        ref_width = above[-1] + 1 if len(above) else 0
        above = numpy.nonzero(tested[frame, :ref_width] >= 5 + level)[0]
        if ref_width > 346:
            wide.append((ref_width, above[-1] + 1 if len(above) else 0))
    return numpy.mean(wide, axis=0) if wide else (0, 0)


def _harmonic_structure(reference, test):
    most = 256
    loud = (reference.energy > 8000) | (test.energy > 8000)
    if not loud.any():
        return 0.0
    logs = numpy.log((test.weighted[loud] + 1e-30) / (reference.weighted[loud] + 1e-30))[:, :2 * most]
    rows = numpy.lib.stride_tricks.sliding_window_view(logs, most, axis=1)[:, :most]
    first = rows[:, 0]
    norms = numpy.sqrt((first ** 2).sum(axis=1)[:, None] * (rows ** 2).sum(axis=2))
    correlation = numpy.einsum("fi,fli->fl", first, rows) / numpy.maximum(norms, 1e-30)
    window = numpy.sqrt(8 / 3) * 0.5 * (1 - numpy.cos(2 * numpy.pi * numpy.arange(most) / (most - 1))) / most
    spectrum = numpy.abs(numpy.fft.rfft((correlation - correlation.mean(axis=1, keepdims=True)) * window)) ** 2
    rising = numpy.diff(spectrum, axis=1) > 0
    peaks = []
    for row, up in zip(spectrum, rising):
        valley = numpy.argmax(up) if up.any() else len(row) - 1
        peaks.append(row[valley + 1:].max(initial=0.0))
    return 1000 * numpy.mean(peaks)


def _detection(references, tests):
    chance, steps = None, None
    for reference, test in zip(references, tests):
        ref, tested = 10 * numpy.log10(reference.excitation), 10 * numpy.log10(test.excitation)
        level = 0.3 * numpy.maximum(ref, tested) + 0.7 * tested
        safe = numpy.maximum(level, 1e-9)
        step = 5.95072 * (6.39468 / safe) ** 1.71332 + 9.01033e-11 * safe ** 4 + 5.05622e-6 * safe ** 3 \
            - 0.00102438 * safe ** 2 + 0.0550197 * safe - 0.198719
        step = numpy.where(level > 0, step, 1e30)
        error = ref - tested
        power = numpy.where(ref > tested, 4, 6)
        own_chance = 1 - 0.5 ** (numpy.minimum(numpy.abs(error / step), 1e3) ** power)
        own_steps = numpy.abs(numpy.trunc(error)) / step
        chance = own_chance if chance is None else numpy.maximum(chance, own_chance)
        steps = own_steps if steps is None else numpy.maximum(steps, own_steps)
    detected = 1 - numpy.prod(1 - chance, axis=1)
    most, smooth = 0.0, 0.0
    for value in detected:
        smooth = 0.9 * smooth + 0.1 * value
        most = max(most, smooth)
    clear = detected > 0.5
    if not clear.any():
        return 0.0, most
    total = steps.sum(axis=1)[clear].sum()
    return (numpy.log10(total / clear.sum()) if total > 0 else -0.5), most


def _bounds(reference):
    """The first and the last sample that belong to the sound."""
    sums = numpy.abs(reference).sum(axis=1)
    runs = numpy.convolve(sums, numpy.ones(5), "valid") > 200 * reference.shape[1]
    if not runs.any():
        return 0, len(reference)
    return int(numpy.argmax(runs)), len(reference) - int(numpy.argmax(runs[::-1]))


def variables(reference, test):
    """The eleven model output variables."""
    count = min(len(reference), len(test))
    begin, end = _bounds(reference[:count])
    pad = ((0, SIZE + HOP), (0, 0))
    reference, test = (numpy.pad(samples[begin:end].astype(float), pad) for samples in (reference, test))
    references = [Heard(channel) for channel in reference.T]
    tests = [Heard(channel) for channel in test.T]
    loud = numpy.any([(r.loudness > 0.1) & (t.loudness > 0.1) for r, t in zip(references, tests)], axis=0)
    late = int(numpy.ceil(0.5 * FRAMES_A_SECOND))
    start = max(late, (int(numpy.argmax(loud)) if loud.any() else 0) + int(numpy.ceil(0.05 * FRAMES_A_SECOND)))
    per_channel = [_channel_variables(r, t, late, start) for r, t in zip(references, tests)]
    mean = numpy.mean(per_channel, axis=0)
    distance, most = _detection(references, tests)
    return numpy.array([mean[0], mean[1], mean[2], mean[3], distance, mean[4], mean[5], mean[6], mean[7], most, mean[8]])


def _channel_variables(reference, test, late, start):
    ref_width, test_width = _bandwidths(reference, test)
    noise = (numpy.sqrt(reference.weighted) - numpy.sqrt(test.weighted)) ** 2
    noise = numpy.maximum(noise @ GROUPING.T, 1e-12)
    place = 0.25 * numpy.arange(BANDS)
    masked = reference.excitation / 10 ** (numpy.where(place <= 12, 3, 0.25 * place) / 10)
    to_mask = noise / masked
    nmr = 10 * numpy.log10(to_mask.mean())
    disturbed = (10 * numpy.log10(to_mask.max(axis=1)) >= 1.5).mean()

    difference = numpy.abs(test.modulation - reference.modulation)
    first = 100 / BANDS * (difference / (1 + reference.modulation)).sum(axis=1)
    weight = numpy.where(test.modulation >= reference.modulation, 1, 0.1)
    second = 100 / BANDS * (weight * difference / (0.01 + reference.modulation)).sum(axis=1)
    weights = (reference.mean_loudness / (reference.mean_loudness + 100 * INTERNAL_NOISE ** 0.3)).sum(axis=1)
    first, second, weights = first[late:], second[late:], weights[late:]
    if len(first) < 4:
        raise ValueError("a clip is shorter than a second")
    roots = numpy.convolve(numpy.sqrt(first), numpy.ones(4) / 4, "valid")
    windowed = numpy.sqrt((roots ** 4).mean())
    loudness = _noise_loudness(reference, test, _adapted(reference, test))[start:]
    return (ref_width, test_width, nmr, windowed, _harmonic_structure(reference, test),
            numpy.average(first, weights=weights), numpy.average(second, weights=weights),
            numpy.sqrt((loudness ** 2).mean()), disturbed)


def grade(reference, test):
    """Objective difference grade of the basic version."""
    values = variables(reference, test)
    scaled = (values - NETWORK[:, 0]) / (NETWORK[:, 1] - NETWORK[:, 0])
    hidden = 1 / (1 + numpy.exp(-(HIDDEN_BIAS + scaled @ NETWORK[:, 2:])))
    index = OUTPUT_BIAS + hidden @ OUTPUT
    return GRADES[0] + (GRADES[1] - GRADES[0]) / (1 + numpy.exp(-index))
