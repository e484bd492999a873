#!/usr/bin/env python3
"""The bytes of every procedural map, computed from the formulas, against those that the library uploads.

Usage: procedural_maps.py DUMP_MAPS"""

import math
import os
import struct
import subprocess
import sys
import tempfile


def single(value):
    """Rounded to single precision."""
    return struct.unpack("f", struct.pack("f", value))[0]


def power(base, exponent):
    try:
        return math.pow(base, exponent)
    except (ValueError, OverflowError):  # 0 to a negative power, or too large
        return math.inf


def as_byte(value):
    return int(single(value * 255)) if value < 1 else 255


def ratio(a, b):
    return single(a / b) if b else math.nan if a == 0 else math.inf


def nhk(n, lo, hi):
    rows = bytes(n)
    for j in range(1, n):
        exponent = single(single(single(j * (hi - lo)) / (n - 1)) + lo)
        rows += bytes(as_byte(single(power(ratio(i, n - 1), exponent))) for i in range(n))
    return rows


def normexp(w, h, p):
    texels = bytearray()
    for j in range(h):
        for i in range(w):
            s, root = single(i / w), math.sqrt(single(j / h))
            base = s / root if root else math.inf if s else math.nan
            value = single(min(power(base, p), 1e30))
            texels.append(as_byte(value) if value >= 0 else 0)
    return bytes(texels)


def unit_vectors(size):
    place = [single(single(single(2 * (k + 0.5)) / size) - 1) for k in range(size)]
    for face in range(6):
        for t in place:
            for s in place:
                v = [(1, -t, -s), (-1, -t, s), (s, 1, t), (s, -1, -t), (s, -t, 1), (-s, -t, -1)][face]
                square = single(single(single(v[0] * v[0]) + single(v[1] * v[1])) + single(v[2] * v[2]))
                scale = single(1 / single(math.sqrt(square)))
                yield [single(c * scale) for c in v]


def normalize_rgb(size):
    return bytes(int(single(single(single(single(c + 1) * 0.5) * 255) + 0.5)) for v in unit_vectors(size) for c in v)


def normalize_hilo(size):
    return b"".join(struct.pack("<H", int(single(single(c * 32767) + 32768))) for v in unit_vectors(size) for c in v[:2])


def attenuation(size):
    place = [single(single((2 * k + 1) / size) - 1) for k in range(size)]
    bell = [single(math.exp(-((4 * x) ** 2))) for x in place]
    distance, exponent = bytearray(), bytearray()
    for j, y in enumerate(place):
        for i, x in enumerate(place):
            d = single(single(x * x) + single(y * y))
            distance += bytes([255 if d > 1 else int(single(d * 255))] * 4)
            exponent += bytes([int(single(255 * single(1 - single(bell[i] * bell[j]))))] * 4)
    return bytes(distance + exponent)


def atten1d():
    inner = [int((1.0 - single(i / 511)) * 256.0) & 255 for i in range(1, 511)]
    return bytes([255, *inner, 0])


KINDS = {
    "nhk": nhk,
    "normexp": normexp,
    "normalize_rgb": normalize_rgb,
    "normalize_hilo": normalize_hilo,
    "attenuation": attenuation,
    "atten1d": atten1d,
    "ramp": lambda: bytes(range(256)),
    "masks": lambda: bytes([0, 255, 255, 0]),
}


def expected(name):
    """By a name such as nhk_64_1_128."""
    kind = next(kind for kind in KINDS if name == kind or name.startswith(kind + "_"))
    return KINDS[kind](*(int(number) for number in name[len(kind) :].split("_")[1:]))


with tempfile.TemporaryDirectory() as folder:
    subprocess.run([sys.argv[1], folder], check=True)
    names = sorted(os.listdir(folder))
    wrong = 0
    for name in names:
        with open(os.path.join(folder, name), "rb") as file:
            ours, theirs = file.read(), expected(name)
        differing = [i for i, (a, b) in enumerate(zip(ours, theirs)) if a != b]
        if len(ours) != len(theirs) or differing:
            wrong += 1
            at = differing[0] if differing else min(len(ours), len(theirs))
            print(f"{name}: {len(ours)} bytes, {len(theirs)} expected, {len(differing)} differ, the first at {at}:", ours[at : at + 4], theirs[at : at + 4])
    print(f"{len(names)} maps, {wrong} wrong")
    sys.exit(wrong > 0 or len(names) != 22)
