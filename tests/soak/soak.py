"""Runs the soaks: soak.py NAME [COUNT] | all

A soak is a file soak_NAME.py beside this one with
  COUNT             how often, when nobody says
  run(count, table) repeats its faults so often and tells the table of each:
                    table.add(fault, outcome, seconds), outcome "as it should" or what else
Its first line says what it does. Status 0: every outcome was as it should be.
"""

import importlib
import multiprocessing
import signal
import sys
import traceback
from pathlib import Path

HERE = Path(__file__).parent
sys.path[:0] = [str(HERE), str(HERE.parent / "e2e")]

GOOD = "as it should"


class Table:
    """What came of each fault: how often, and the longest that it took."""

    def __init__(self):
        self._rows = {}
        self.failed = False

    def add(self, fault, outcome=GOOD, seconds=0.0):
        outcomes, times = self._rows.setdefault(fault, ({}, []))
        outcomes[outcome] = outcomes.get(outcome, 0) + 1
        times.append(seconds)
        self.failed |= outcome != GOOD

    def attempt(self, fault, repeat):
        """One repetition, which gives its seconds. What it raises is its outcome; True: none."""
        try:
            self.add(fault, GOOD, repeat())
            return True
        except Exception as error:  # a soak goes on
            traceback.print_exc()
            self.add(fault, str(error) or type(error).__name__)
            return False

    def merge(self, other):
        self._rows |= other._rows
        self.failed |= other.failed

    def print(self):
        print(f"{'fault':44} {'runs':>5} {'median s':>9} {'worst s':>8}  outcomes")
        for fault, (outcomes, times) in self._rows.items():
            said = ", ".join(f"{count} {outcome}" for outcome, count in outcomes.items())
            median = sorted(times)[len(times) // 2]
            print(f"{fault:44} {len(times):5} {median:9.3f} {max(times):8.3f}  {said}")


def soaks():
    return sorted(path.stem.removeprefix("soak_") for path in HERE.glob("soak_*.py"))


def usage():
    for name in soaks():
        first = (HERE / f"soak_{name}.py").read_text(encoding="utf-8").splitlines()[0]
        print(f"  {name:10} {first.strip(chr(34))}")
    return 2


def run_here(name, count, sender):
    """A process's whole work: what assistive technology it takes up belongs to one desktop."""
    table = Table()
    try:
        soak = importlib.import_module(f"soak_{name}")
        soak.run(count or soak.COUNT, table)
    except BaseException as error:
        if not isinstance(error, KeyboardInterrupt):
            traceback.print_exc()
        table.failed = True
    sender.send(table)


def run_apart(name, count, table):
    """Whether it came to its own end."""
    receiver, sender = multiprocessing.Pipe(duplex=False)
    process = multiprocessing.Process(target=run_here, args=(name, count, sender))
    process.start()
    sender.close()
    interrupted = False
    try:
        receiver.poll(None)
    except KeyboardInterrupt:
        interrupted = True
        process.terminate()
    try:
        table.merge(receiver.recv())
    except EOFError:
        table.failed = True
    process.join()
    table.failed |= interrupted
    return not interrupted


def main(arguments):
    names = soaks() if arguments[:1] == ["all"] else arguments[:1]
    if not names or not set(names) <= set(soaks()):
        return usage()
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    table = Table()
    for name in names:
        if not run_apart(name, int(arguments[1]) if len(arguments) > 1 else None, table):
            break
    table.print()
    return 1 if table.failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
