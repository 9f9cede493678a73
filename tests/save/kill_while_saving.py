"""Kills zemo-batch at random moments of overwriting a large file, and looks for a torn one and for
files that are left over: kill_while_saving.py ZEMO_BATCH ROUNDS [FOLDER [MEBIBYTES]]"""

import array
import os
import pathlib
import random
import subprocess
import sys
import tempfile
import threading
import time

from batch import caf_head, clean_environment

MEBIBYTE = 1 << 20
SAVE_BEGINS = b"Size in bytes"


class Overwriting:
    """A target that two sounds overwrite by turns."""

    def __init__(self, program, folder, mebibytes):
        self.program = program
        self.folder = folder
        self.target = folder / "target.caf"
        self.sources, self.saved = [], []
        for value in (0.25, -0.5):
            # A block that a shifted copy of itself does not match.
            block = array.array("f", [value + i / (1 << 24) for i in range(MEBIBYTE // 4)]).tobytes()
            data = block * mebibytes
            source = folder / f"source{len(self.sources)}.caf"
            source.write_bytes(caf_head(48000.0, len(data)) + data)
            self.sources.append(source)
            self.saved.append(caf_head(48000.0, len(data) + 8) + data + bytes(8))
        self.target.write_bytes(self.saved[0])

    def has_nameless_files(self):
        """Whether the folder is on a file system where a kill must leave nothing."""
        try:
            os.close(os.open(self.folder, os.O_TMPFILE | os.O_WRONLY))
            return True
        except OSError:
            return False

    def begin(self, which):
        """Starts an overwriting, and returns when the program is about to write."""
        process = subprocess.Popen([self.program, "open", self.sources[which], "save", self.target],
                                   env=clean_environment(), stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        for line in process.stderr:
            if SAVE_BEGINS in line:
                break
        self.reader = threading.Thread(target=process.stderr.read, daemon=True)
        self.reader.start()
        return process

    def kill(self, process):
        """Returns when the process is gone, and the one that it may have had a file put in place by:
        both write to the same pipe."""
        process.kill()
        process.wait()
        self.reader.join()

    def state(self):
        """Which of the two the target is; None: neither."""
        content = self.target.read_bytes()
        return next((i for i, saved in enumerate(self.saved) if content == saved), None)

    def leftovers(self):
        known = {self.target, *self.sources}
        return [path for path in self.folder.iterdir() if path not in known]


def measured(overwriting):
    """Seconds from the first write to the end of the program."""
    process = overwriting.begin(0)
    start = time.monotonic()
    if process.wait() != 0:
        sys.exit("the program does not save")
    return time.monotonic() - start


def run(overwriting, rounds, seed=None):
    length = max(measured(overwriting) for _ in range(3))
    moments = random.Random(rounds if seed is None else seed)
    counts = {"old": 0, "new": 0, "torn": 0, "left behind": 0, "not hidden": 0}
    current = 0
    for _ in range(rounds):
        process = overwriting.begin(1 - current)
        time.sleep(moments.uniform(0.0, 1.1 * length))
        overwriting.kill(process)
        found = overwriting.state()
        counts["torn" if found is None else "old" if found == current else "new"] += 1
        if found is None:
            overwriting.target.write_bytes(overwriting.saved[current])
        else:
            current = found
        for path in overwriting.leftovers():
            counts["left behind" if path.name.startswith(".zemo-") else "not hidden"] += 1
            path.unlink()
    return counts


def saves_beside_leftovers(overwriting):
    """Whether a save works where an earlier one was killed, and leaves its leftovers alone."""
    leftover = overwriting.folder / ".zemo-0000000000000001"
    leftover.write_bytes(b"unfinished")
    process = overwriting.begin(1)
    works = process.wait() == 0 and overwriting.state() == 1
    return works and overwriting.leftovers() == [leftover] \
        and leftover.read_bytes() == b"unfinished"


def main():
    program, rounds = os.path.abspath(sys.argv[1]), int(sys.argv[2])
    place = sys.argv[3] if len(sys.argv) > 3 else None
    mebibytes = int(sys.argv[4]) if len(sys.argv) > 4 else 100
    with tempfile.TemporaryDirectory(prefix="zemo-kill-", dir=place) as name:
        overwriting = Overwriting(program, pathlib.Path(name), mebibytes)
        counts = run(overwriting, rounds)
        works = saves_beside_leftovers(overwriting)
        may_leave = not overwriting.has_nameless_files()
    print(f"{rounds} kills:", ", ".join(f"{count} {what}" for what, count in counts.items()))
    if not works:
        print("the next save does not work")
    # Kills that all come too late or all too early would show nothing.
    good = works and counts["torn"] == 0 and counts["not hidden"] == 0 and counts["old"] > 0 \
        and (counts["left behind"] == 0 or may_leave)
    sys.exit(0 if good else 1)


if __name__ == "__main__":
    main()
