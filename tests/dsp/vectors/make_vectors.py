#!/usr/bin/python3
"""Makes the vectors that the transformations are held against, with SciPy: make_vectors.py

Needs python3-scipy. Writes spline.txt, high_pass.txt and hilbert.txt beside itself: blocks of a
line "name count" and the numbers, one a line.
"""

import pathlib

import numpy
from scipy.interpolate import CubicSpline
from scipy.signal import hilbert, lfilter

FOLDER = pathlib.Path(__file__).parent
RANDOM = numpy.random.RandomState(1)


def write(name, blocks):
    with open(FOLDER / name, "w", encoding="ascii") as file:
        for title, numbers in blocks.items():
            file.write(f"{title} {len(numbers)}\n")
            file.writelines(f"{number:.17g}\n" for number in numbers)


def float_noise(count):
    return RANDOM.uniform(-1, 1, count).astype(numpy.float32).astype(float)


def even_splines():
    blocks = {}
    for count, ratio, rate in [(4, 7.5, 44100), (5, 3, 48000), (40, 0.3, 22050), (40, 2.5, 96000),
                               (300, 1.01, 88200)]:
        y = float_noise(count)
        ratio = float(numpy.float32(ratio))
        length = int(numpy.float32(count - 1) * numpy.float32(ratio))
        knots = numpy.arange(count) / rate
        points = numpy.arange(length) / (rate * ratio)
        title = f"even{len(blocks) // 3}"
        blocks[f"{title}.parameters"] = [ratio, rate]
        blocks[f"{title}.y"] = y
        blocks[f"{title}.values"] = CubicSpline(knots, y, bc_type="not-a-knot")(points)
    return blocks


def uneven_spline(title, first_two):
    distances = RANDOM.uniform(0.2, 2, 30)
    distances[:2] = first_two
    x = numpy.concatenate([[0], numpy.cumsum(distances)])
    y = float_noise(len(x))
    points = numpy.sort(RANDOM.uniform(x[0], x[-1], 200))
    return {f"{title}.x": x, f"{title}.y": y, f"{title}.points": points,
            f"{title}.values": CubicSpline(x, y, bc_type="not-a-knot")(points)}


def high_passes():
    x = float_noise(1000)
    blocks = {"input": x}
    for number, (two_back, one_back, gain) in enumerate([
            (-0.9041630409, 1.8993334201, 1.051663921), (-0.8175124034, 1.7990964095, 1.106008476)]):
        blocks[f"set{number}"] = lfilter([1 / gain, -2 / gain, 1 / gain],
                                         [1, -one_back, -two_back], x)
    return blocks


def hilbert_pair():
    """One period of a sound without its lowest and highest frequencies, and its transform."""
    period = 1024
    spectrum = numpy.zeros(period // 2 + 1, complex)
    spectrum[12:500] = numpy.exp(2j * numpy.pi * RANDOM.uniform(0, 1, 488))
    x = numpy.fft.irfft(spectrum, period)
    x = (x / abs(x).max()).astype(numpy.float32).astype(float)
    return {"input": x, "transform": hilbert(x).imag}


write("spline.txt", {**even_splines(), **uneven_spline("uneven", [0.75, 0.75]),
                     **uneven_spline("departing", [0.75, 1.5])})
write("high_pass.txt", high_passes())
write("hilbert.txt", hilbert_pair())
