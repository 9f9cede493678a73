"""Kills zemo-batch so often while it overwrites a file, and looks for a torn one."""

import sys
import tempfile
import time
from pathlib import Path

from window import PROGRAM

sys.path.append(str(Path(__file__).resolve().parent.parent / "save"))
import kill_while_saving  # noqa: E402, beside the tests of saving

COUNT = 10_000
MEBIBYTES = 4
SLICE = 250  # what a save takes is measured anew for each

WHOLE = {"old": "save killed: the old file is whole", "new": "save killed: the new file is whole"}
# Where the file system has no nameless files a hidden one stays, and is harmless.
LEFT = "save killed: a hidden .zemo- file is left"


def report(counts, seconds, table, may_leave):
    for what, count in counts.items():
        for _ in range(count):
            if what in WHOLE:
                table.add(WHOLE[what], seconds=seconds)
            elif what == "left behind" and may_leave:
                table.add(LEFT)
            else:
                table.add("save killed", what)


def next_save_works(overwriting):
    assert kill_while_saving.saves_beside_leftovers(overwriting), "the next save does not work"
    return 0.0


def run(count, table):
    program = Path(PROGRAM).with_name("zemo-batch").resolve()
    with tempfile.TemporaryDirectory(prefix="zemo-kill-") as name:
        overwriting = kill_while_saving.Overwriting(program, Path(name), MEBIBYTES)
        for first in range(0, count, SLICE):
            rounds = min(SLICE, count - first)
            since = time.monotonic()
            counts = kill_while_saving.run(overwriting, rounds, seed=first)
            report(counts, (time.monotonic() - since) / rounds, table,
                   may_leave=not overwriting.has_nameless_files())
        table.attempt("the save after all kills", lambda: next_save_works(overwriting))
