"""zemo-batch from outside, and what its files have to hold. The first argument of a test is the
program."""

import array
import os
import random
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

PROGRAM = os.path.abspath(sys.argv[1])
TIMEOUT = 120

#: NaNs, an infinity, -0, the least and the largest denormal, the largest float: as opening leaves
#: them. A sample of 1 or more, positive, would have all of them scaled.
SPECIALS = (0x7FC00000, 0xFFC00001, 0x7FFFFFFF, 0xFF800000, 0x80000000, 0x00000001, 0x807FFFFF,
            0xFF7FFFFF)


def words_of(data, order="<"):
    return struct.unpack(f"{order}{len(data) // 4}I", data)


def is_left_by_opening(word):
    """Whether the float of that bit pattern is negative, less than 1, or no number."""
    return word < 0x3F800000 or word > 0x7F800000


def is_signalling(word):
    """Whether the float is a NaN that others may quieten where they only mean to copy."""
    return (word & 0x7FC00000) == 0x7F800000 and (word & 0x007FFFFF) != 0


def random_words(count, wanted=is_left_by_opening):
    """The special bit patterns and others that are wanted."""
    source = random.Random(count)
    words = [*SPECIALS]
    while len(words) < count:
        word = source.getrandbits(32)
        if wanted(word):
            words.append(word)
    return words


def floats_of(words):
    return array.array("f", struct.pack(f"<{len(words)}I", *words))


def rounded(number):
    """The number as the nearest 32-bit float."""
    return struct.unpack("f", struct.pack("f", number))[0]


def caf_head(rate, data_bytes):
    return struct.pack(">4sHH4sqd4s5L4sqL", b"caff", 1, 0, b"desc", 32, rate, b"lpcm", 3, 4, 1, 1,
                       32, b"data", 4 + data_bytes, 0)


def caf(rate, samples):
    data = array.array("f", samples).tobytes()
    return caf_head(rate, len(data)) + data


def clean_environment():
    """Nothing of the desktop's, and no sound; only what the sanitizers are told."""
    kept = {name: value for name, value in os.environ.items() if name.endswith("SAN_OPTIONS")}
    return kept | {"PATH": os.environ["PATH"], "PULSE_SERVER": "unix:/nowhere",
                   "JACK_NO_START_SERVER": "1", "ALSA_CONFIG_PATH": "/dev/null"}


class BatchTest(unittest.TestCase):

    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="zemo-batch-"))
        self.addCleanup(shutil.rmtree, self.folder)

    def batch(self, *words, folder=None):
        """Runs the steps in the folder; everything it says as bytes."""
        return subprocess.run([PROGRAM, *words], cwd=folder or self.folder,
                              env=clean_environment(), stdin=subprocess.DEVNULL,
                              capture_output=True, timeout=TIMEOUT, check=False)

    def done(self, *words):
        result = self.batch(*words)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result

    def path(self, name):
        return self.folder / name

    def write(self, name, data):
        self.path(name).write_bytes(data)
        return name

    def raw(self, name, samples):
        return self.write(name, array.array("f", samples).tobytes())

    def content(self, name):
        return self.path(name).read_bytes()

    def names(self):
        return sorted(path.name for path in self.folder.iterdir())


def main():
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]])
