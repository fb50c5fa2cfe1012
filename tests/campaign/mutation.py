"""Damage to a file's bytes."""

EXTREMES = (0x00, 0x01, 0x7F, 0x80, 0xFF)
HEAD = 4096  # where containers have their headers


def _place(rng, data):
    return rng.randrange(min(len(data), HEAD) if rng.random() < 0.5 else len(data))


def _length(rng, data):
    return min(1 << rng.randrange(0, 14), len(data) // 2 + 1)


def flip(rng, data):
    for _ in range(rng.choice((1, 1, 1, 2, 8, 64))):
        data[_place(rng, data)] ^= 1 << rng.randrange(8)


def cut(rng, data):
    del data[rng.randrange(1, len(data)):]


def remove(rng, data):
    place = _place(rng, data)
    del data[place:place + _length(rng, data)]


def insert(rng, data):
    place = _place(rng, data)
    data[place:place] = rng.randbytes(_length(rng, data))


def repeat(rng, data):
    place, length = _place(rng, data), _length(rng, data)
    data[place:place] = data[place:place + length]


def swap(rng, data):
    length = _length(rng, data)
    a, b = sorted((_place(rng, data), _place(rng, data)))
    if a + length <= b and b + length <= len(data):
        data[a:a + length], data[b:b + length] = data[b:b + length], data[a:a + length]


def zero(rng, data):
    place = _place(rng, data)
    length = min(_length(rng, data), len(data) - place)
    data[place:place + length] = bytes(length)


def exaggerate(rng, data):
    place, value = _place(rng, data), rng.choice(EXTREMES)
    for offset in range(place, min(place + rng.choice((1, 2, 4, 8)), len(data))):
        data[offset] = value


WAYS = (flip, flip, cut, remove, insert, repeat, swap, zero, exaggerate)


def mutate(rng, data):
    """A damaged copy, never empty."""
    data = bytearray(data)
    for _ in range(rng.choice((1, 1, 1, 2, 3, 8))):
        rng.choice(WAYS)(rng, data)
        if not data:
            data.append(0)
    return bytes(data)
