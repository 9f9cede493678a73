"""Lets the address space of zemo-batch end in steps of 128 KiB, in every library that it uses."""

import subprocess
import sys
import time
from pathlib import Path

from window import PROGRAM

COUNT = 1
ROOT = Path(__file__).resolve().parents[2]
BATCH = Path(PROGRAM).with_name("zemo-batch")
STEP = 128  # KiB
TESTS = ["test_imports_at_another_rate", "test_transformations_and_a_save", "test_exports"]


def sweep(test):
    since = time.monotonic()
    words = [sys.executable, "-B", ROOT / "tests" / "memory" / "address_space.py", BATCH,
             ROOT / "fuzz" / "corpus" / "interchange", str(STEP), f"AddressSpace.{test}"]
    done = subprocess.run(words, stdout=sys.stderr, check=False)
    assert done.returncode == 0, f"status {done.returncode}"
    return time.monotonic() - since


def run(count, table):
    for _ in range(count):
        for test in TESTS:
            table.attempt(f"limits: {test.removeprefix('test_')}".replace("_", " "),
                          lambda: sweep(test))
