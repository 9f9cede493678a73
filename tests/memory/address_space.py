"""zemo-batch under every limit of its address space, from the one that it just starts with.

    address_space.py ZEMO_BATCH CORPUS [STEP_IN_KIB [TEST]]

Each command line either does what it does without a limit or says one sentence, leaves the old file
and ends with status 1. No process is ended by a signal, whatever library the memory ran out in.
"""

import array
import os
import random
import re
import resource
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

KIB = 1024
STEP = 4096 * KIB
# Files there cost nothing.
FAST = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
OLD = b"the old file"
# Trace lines go to standard error as well.
SAID = re.compile(r"^zemo-batch: .*\b(?:memory|not opened|not saved)\b.*\.$", re.MULTILINE)
FOREIGN = ["aiff-int16", "flac", "mp3", "opus", "vorbis", "wav-int24-stereo"]
TRANSFORMATIONS = ["resample", "1.5", "am", "440", "1", "ssb-upper", "440", "1", "fm", "440", "1", "8",
                   "hd", "harmonics=2,4", "highpass=500", "revert"]


def run(program, words, limit=None):
    def narrow():
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        if limit is not None:
            resource.setrlimit(resource.RLIMIT_AS, (limit, limit))

    return subprocess.run([program, *words], preexec_fn=narrow, capture_output=True, text=True,
                          errors="replace", timeout=60, check=False)


class AddressSpace(unittest.TestCase):
    program = None
    corpus = None
    step = STEP

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory(prefix="zemo-memory-", dir=FAST)
        cls.least = next(limit for limit in range(4096 * KIB, 1 << 32, 256 * KIB)
                         if run(cls.program, ["--version"], limit).returncode == 0)

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def path(self, name):
        return str(Path(self.folder.name) / name)

    def sweep(self, words, output):
        """Returns how many limits refused it, up to the first of four in a row that did not."""
        target = Path(output)
        self.assertEqual(run(self.program, words).returncode, 0)
        new = target.read_bytes()
        limit, refused, done = self.least, 0, 0
        while done < 4:
            target.write_bytes(OLD)
            result = run(self.program, words, limit)
            with self.subTest(words=words, limit=limit):
                said = SAID.findall(result.stderr)
                self.assertIn(result.returncode, (0, 1), result.stderr)
                if result.returncode == 0:
                    self.assertEqual(target.read_bytes(), new)
                    self.assertEqual(said, [])
                else:
                    self.assertEqual(target.read_bytes(), OLD)
                    self.assertIn(len(said), (1, 2), result.stderr)
            self.assertEqual([name for name in os.listdir(self.folder.name)
                              if name.startswith(".zemo")], [])
            refused += result.returncode != 0
            done = done + 1 if result.returncode == 0 else 0
            limit += self.step
        return refused

    def sound(self, samples):
        source = random.Random(1)
        path = self.path("sound.f32")
        data = array.array("f", (source.uniform(-0.9, 0.9) for _ in range(samples)))
        Path(path).write_bytes(data.tobytes())
        return path

    def test_imports_at_another_rate(self):
        output = self.path("out.caf")
        for kind in FOREIGN:
            refused = self.sweep(["--rate", "47999", "import", str(Path(self.corpus) / kind), "save",
                                  output], output)
            self.assertGreater(refused, 2, kind)

    def test_transformations_and_a_save(self):
        output = self.path("out.aif")
        sound = self.sound(1_200_000)
        self.assertGreater(self.sweep(["open", sound, *TRANSFORMATIONS, "save", output], output), 2)

    def test_exports(self):
        sound = self.sound(400_000)
        for name in ("out.wav", "out.flac"):
            output = self.path(name)
            self.assertGreater(self.sweep(["open", sound, "export", output], output), 0)


if __name__ == "__main__":
    AddressSpace.program, AddressSpace.corpus = sys.argv[1:3]
    if len(sys.argv) > 3:
        AddressSpace.step = int(sys.argv[3]) * KIB
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]])
