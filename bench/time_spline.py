"""time_spline.py FILE RATIO: prints the seconds that SciPy takes for a not-a-knot cubic spline
through a sound of make_sound.py and its values on a grid RATIO times as dense."""

import sys
import time

import numpy
from scipy.interpolate import CubicSpline

HEADER_BYTES = 68
RATE = 48000.0


def main():
    ratio = float(sys.argv[2])
    samples = numpy.fromfile(sys.argv[1], dtype="<f4", offset=HEADER_BYTES)
    start = time.monotonic()
    knots = numpy.arange(len(samples)) / RATE
    points = numpy.arange(int((len(samples) - 1) * ratio)) / (RATE * ratio)
    CubicSpline(knots, samples, bc_type="not-a-knot")(points).astype("<f4")
    print(time.monotonic() - start)


if __name__ == "__main__":
    main()
