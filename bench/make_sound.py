"""make_sound.py FILE SECONDS: a mono CAF of 32-bit floats at 48 kHz: noise and tones that drift,
the same at each run."""

import struct
import sys

import numpy

RATE = 48000
TONES = ((220.0, 0.2), (1370.0, 0.15), (5210.0, 0.08))
NOISE = 0.1


def block(random, second):
    time = second + numpy.arange(RATE) / RATE
    sound = random.uniform(-NOISE, NOISE, RATE)
    for frequency, amplitude in TONES:
        sound += amplitude * numpy.sin(2 * numpy.pi * frequency * time
                                       + 3 * numpy.sin(0.7 * time))
    # Swells, so that no stretch is as loud as the next.
    return ((0.6 + 0.4 * numpy.sin(0.31 * time)) * sound).astype("<f4")


def write(path, seconds):
    random = numpy.random.default_rng(1)
    with open(path, "wb") as out:
        out.write(struct.pack(">4sHH4sqd4s5L", b"caff", 1, 0, b"desc", 32, float(RATE), b"lpcm",
                              3, 4, 1, 1, 32))
        out.write(struct.pack(">4sqL", b"data", 4 + 4 * RATE * seconds, 0))
        for second in range(seconds):
            out.write(block(random, second).tobytes())


if __name__ == "__main__":
    write(sys.argv[1], int(sys.argv[2]))
