"""Transforms a sound in one process so many times and looks that it takes no more memory."""

import random
import subprocess
import tempfile
import threading
import time
from pathlib import Path

from window import PROGRAM

COUNT = 1000
BATCH = Path(PROGRAM).with_name("zemo-batch")
EXAMPLE = Path(__file__).resolve().parents[2] / "examples" / "bell-44100.caf"
WARM_UP = 100  # transformations
MOST_GROWTH = 2048  # KiB


def transformations(count):
    """All kinds at random. A resampling is taken back, and its copy as well, so that the length stays."""
    source = random.Random(count)
    words = []
    for _ in range(count):
        carrier = f"{source.uniform(20, 8000):.2f}"
        longer = source.choice(["1.25", "0.75"])
        words += source.choice([
            ["resample", longer, "revert", "am", carrier, "0.1"], ["am", carrier, "0.7"], ["ssb-lower", carrier, "1"],
            ["ssb-upper", carrier, "0.5"], ["fm", carrier, "2", "16"], ["revert"],
            ["hd", "harmonics=2,4"], ["hd", "highpass=500", "slope=0.9"]])
    return words


class Resident(threading.Thread):
    """Looks how much of a process is in memory. The steps go on meanwhile."""

    def __init__(self, process):
        super().__init__(daemon=True)
        self.process = process
        self.kibibytes = []

    def run(self):
        while self.process.poll() is None:
            try:
                status = Path(f"/proc/{self.process.pid}/status").read_text(encoding="ascii")
            except OSError:
                return
            for line in status.splitlines():
                if line.startswith("VmRSS:"):
                    self.kibibytes.append(int(line.split()[1]))
            time.sleep(0.005)


def one_process(count):
    since = time.monotonic()
    with tempfile.TemporaryFile() as trace:
        process = subprocess.Popen([BATCH, "open", EXAMPLE, *transformations(count + WARM_UP)],
                                   stdout=trace, stderr=trace)
        resident = Resident(process)
        resident.start()
        assert process.wait() == 0, f"status {process.returncode}"
        resident.join()
    seen = resident.kibibytes
    third = len(seen) // 3
    early, late = max(seen[third // 4:third]), max(seen[-third:])
    print(f"{count} transformations: at most {early} KiB early, {late} KiB late")
    assert third >= 4, "the process was too quick to be looked at"
    assert late <= early + MOST_GROWTH, f"grew by {late - early} KiB"
    return time.monotonic() - since


def run(count, table):
    table.attempt(f"{count} transformations in one process", lambda: one_process(count))
