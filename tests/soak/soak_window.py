"""Measures how long the window's events wait while half an hour of sound is worked on."""

import os
import re
import subprocess
from pathlib import Path

from window import PROGRAM

COUNT = 5
GAPS = Path(PROGRAM).with_name("window_gaps")
LONGEST_GAP = 0.050  # seconds: what a person may notice
LONGEST_CANCEL = 0.100


def measure(table):
    said = subprocess.run([GAPS], env=os.environ | {"QT_QPA_PLATFORM": "offscreen"}, check=False,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT).stdout.decode()
    for pattern, bound in ((r"\w\([^)]*\) (.*): \d+ ms, longest gap (\d+) ms", LONGEST_GAP),
                           (r"\w\([^)]*\) (cancel .*): (\d+) ms$", LONGEST_CANCEL)):
        found = re.findall(pattern, said, re.M)
        assert found, f"it measured nothing: {said[-300:]}"
        for what, milliseconds in found:
            seconds = int(milliseconds) / 1000
            outcome = [] if seconds <= bound else [f"more than {bound:.3f} s"]
            table.add(f"window: {what}", *outcome, seconds=seconds)


def run(count, table):
    for _ in range(count):
        measure(table)
