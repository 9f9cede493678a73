"""Sounds to play, the files that they come in, and what a recording has of them."""

import subprocess

import numpy

from servers import wait_for

# Silence that lasts this long ends a play. The calls at its end are far shorter.
QUIET_SECONDS = 0.3
FRAMES = 512  # of a render call, and so of a fade, whatever a device asks for


def noise(count, seed):
    """Samples that are never zero, so that a play is one unbroken run.

    They are multiples of 2**-20: no program that goes through 24 or 32 bits can change them.
    """
    generator = numpy.random.default_rng(seed)
    magnitudes = generator.integers(2**17, 15 * 2**16, count)
    signs = generator.choice([-1, 1], count)
    return (signs * magnitudes / 2**20).astype(numpy.float32)


def constant(level, count):
    return numpy.full(count, level, numpy.float32)


def write_raw(path, samples, byte_order="<"):
    samples.astype(f"{byte_order}f4").tofile(path)
    return path


def _write_with_sox(path, rate, samples, file_type, byte_order):
    subprocess.run(
        ["sox", "-t", "raw", "-e", "floating-point", "-b", "32", "-L", "-r", str(rate), "-c", "1",
         "-", "-t", file_type, "-e", "floating-point", "-b", "32", str(path)],
        input=samples.astype("<f4").tobytes(), check=True)
    with open(path, "rb") as file:
        assert samples.astype(f"{byte_order}f4").tobytes() in file.read(), "sox has other samples"
    return path


def write_caf(path, rate, samples):
    """A CAF of another program's making. It is big-endian."""
    return _write_with_sox(path, rate, samples, "caf", ">")


def write_aiff_c(path, rate, samples):
    """An AIFF-C of another program's making."""
    return _write_with_sox(path, rate, samples, "aifc", ">")


def normalized(samples):
    """Divided by 1.1 times the peak, which is the last sample that was larger than the peak
    before it; the peak keeps its sign, so that after a negative one any sample is larger."""
    peak = numpy.float32(0)
    for sample in samples:
        if abs(sample) > peak:
            peak = sample
    return samples / numpy.float32(float(peak) * 1.1)


def _ramp(samples, factors):
    """In 32-bit floats from first to last."""
    factors = numpy.asarray(factors, numpy.float32)[:len(samples)]
    return samples[:len(factors)] * factors / numpy.float32(FRAMES)


def fade_out_of(count):
    """The frame that a whole play of so many samples begins to fade out at: that of the first call,
    after the two that a play begins with, before which fewer than two calls' frames are left."""
    begin = 2 * FRAMES
    while count - begin >= 2 * FRAMES:
        begin += FRAMES
    return begin


def fade_reaches_past_the_end(count):
    """Whether the call that fades out has not all its frames."""
    return fade_out_of(count) + FRAMES > count


def play(samples, fade_out=None):
    """What the device is to get of a sound: all of a play, or up to the fade-out of a stop."""
    begin = fade_out_of(len(samples)) if fade_out is None else fade_out
    result = samples[:begin + FRAMES].copy()
    result[:FRAMES] = _ramp(result[:FRAMES], range(FRAMES))
    result[begin:] = _ramp(result[begin:], range(FRAMES, 0, -1))
    return result


def heard_of(frames):
    """From the silent frame before the first that sounds, with which a fade-in begins, to the last
    that sounds."""
    sounding = numpy.flatnonzero(frames)
    return frames[max(sounding[0] - 1, 0):sounding[-1] + 1]


def without_pauses(heard):
    """Without the silence while a server stood still, or while JACK held its clients to change the
    length of a call. None of the sound's samples is 0 but that which the fade-in begins with."""
    return numpy.concatenate([heard[:1], heard[1:][heard[1:] != 0]])


def _breaks(sounding, rate):
    """Where, among the frames that sound, a silence lies before one."""
    return numpy.flatnonzero(numpy.diff(sounding) > QUIET_SECONDS * rate) + 1


class Listener:
    """Waits for what is heard in a recording."""

    def __init__(self, recording):
        self._recording = recording
        self._rate = recording.rate
        self._track = numpy.empty(0, numpy.float32)
        self._plays = []  # of each its first frame that sounds, and its last so far

    def _listen(self):
        """Takes what has come since."""
        frames = self._recording.frames(len(self._track))
        assert numpy.array_equal(frames[:, 0], frames[:, 1]), "the two channels differ"
        sounding = numpy.flatnonzero(frames[:, 0]) + len(self._track)
        for run in numpy.split(sounding, _breaks(sounding, self._rate)):
            if self._plays and len(run) and run[0] - self._plays[-1][1] <= QUIET_SECONDS * self._rate:
                self._plays[-1][1] = run[-1]
            elif len(run):
                self._plays.append([run[0], run[-1]])
        self._track = numpy.concatenate([self._track, frames[:, 0]])

    def wait_for_sound(self, seconds):
        """Until so much of a play has been heard, be it the first or a later one."""
        def heard_enough():
            self._listen()
            return self._is_in_a_play() and \
                self._plays[-1][1] - self._plays[-1][0] > seconds * self._rate
        wait_for(heard_enough, f"{seconds} s of sound are heard")

    def _is_in_a_play(self):
        return self._plays and \
            len(self._track) - self._plays[-1][1] < QUIET_SECONDS * self._rate

    def are_over(self, count):
        """Whether so many plays have been heard to their ends."""
        self._listen()
        return len(self._plays) >= count and not self._is_in_a_play()

    def wait_for_plays(self, count):
        """Each play's frames, the silent first one of the fade-in included."""
        wait_for(lambda: self.are_over(count), f"{count} plays are over")
        return [self._track[max(first - 1, 0):last + 1] for first, last in self._plays]

    def wait_for_silence(self):
        """Until nothing is heard of a play any more, such as the rest of one that was cut off."""
        self.wait_for_more(QUIET_SECONDS)
        self.wait_for_plays(0)

    def plays_so_far(self):
        self._listen()
        return len(self._plays)

    def wait_for_more(self, seconds):
        """Until so much more has been recorded, sound or silence."""
        self._listen()
        end = len(self._track) + seconds * self._rate

        def is_there():
            self._listen()
            return len(self._track) >= end
        wait_for(is_there, f"{seconds} s more are recorded")
