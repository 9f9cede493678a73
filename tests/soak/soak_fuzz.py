"""Runs the fuzzers so many times together, from where the night before left off; keeps a tally.

Most runs are of a build without sanitizers, which is some ten times as fast; what it finds new is
gone through with them, and every twentieth run is of that build. build/fuzz/tally has the counts.
"""

import re
import shutil
import subprocess
import time
from pathlib import Path

COUNT = 4_000_000
WANTED = 100_000_000
ROUND = 4_000_000
# Of a round: the slow one decodes foreign files, and the raw reader has little left to find.
SHARES = {"container": 0.35, "command_line": 0.30, "raw": 0.25, "interchange": 0.10}
FAST, SANITIZED = "plain", "sanitized"
PLACES = {FAST: "fuzz-fast", SANITIZED: "fuzz"}
SANITIZED_SHARE = 0.05

ROOT = Path(__file__).resolve().parent.parent.parent
FOLDER = ROOT / "build" / "fuzz"
FINDINGS = FOLDER / "findings"


class Finding(Exception):
    """What a fuzzer stopped at."""


class Tally:
    """Executions by target and build, in a file that is whole at every moment."""

    def __init__(self, path):
        self._path = path
        self._counts = {}
        if path.exists():
            for line in path.read_text(encoding="utf-8").splitlines():
                target, build, count = line.split()
                self._counts[target, build] = int(count)

    def add(self, target, build, count):
        self._counts[target, build] = self._counts.get((target, build), 0) + count
        whole = self._path.with_suffix(".new")
        whole.write_text("".join(f"{target} {build} {count}\n" for (target, build), count
                                 in sorted(self._counts.items())), encoding="utf-8")
        whole.replace(self._path)

    def total(self):
        return sum(self._counts.values())

    def print(self):
        print(f"{'target':14} {FAST:>14} {SANITIZED:>12}")
        for target in SHARES:
            fast, sanitized = (self._counts.get((target, build), 0) for build in PLACES)
            print(f"{target:14} {fast:14,} {sanitized:12,}")
        print(f"{self.total():,} executions of {WANTED:,} so far")


def command(target, build):
    return [ROOT / "build" / PLACES[build] / "bin" / f"fuzz_{target}", "-timeout=10",
            "-rss_limit_mb=2048", f"-artifact_prefix={FINDINGS}/"]


def folders(target):
    grown = FOLDER / "corpus" / target
    grown.mkdir(parents=True, exist_ok=True)
    return grown, ROOT / "fuzz" / "corpus" / target


def executions(target, build, runs):
    """Those that there were, which are more than `runs` where the corpus is larger."""
    result = subprocess.run([*command(target, build), f"-runs={runs}", "-print_final_stats=1",
                             *folders(target)], stdin=subprocess.DEVNULL, check=False,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    said = result.stdout.decode("utf-8", errors="replace")
    if result.returncode != 0:
        (FINDINGS / f"{target}.log").write_text(said, encoding="utf-8")
        kept = re.search(r"Test unit written to (\S+)", said)
        raise Finding(f"a finding of the {build} build: {kept[1] if kept else said[-300:]}")
    return int(re.search(r"number_of_executed_units: (\d+)", said)[1])


def minimize(target):
    """Leaves of the grown corpus what the smallest set needs that reaches as far."""
    grown, seeds = folders(target)
    merged = grown.with_name(f"{target}.new")
    shutil.rmtree(merged, ignore_errors=True)
    merged.mkdir()
    subprocess.run([*command(target, SANITIZED), "-merge=1", merged, grown, seeds],
                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                   check=True)
    shutil.rmtree(grown)
    merged.rename(grown)


def fuzz(target, runs, tally):
    """A slice: runs on the corpus that there is, then that corpus with eyes open."""
    since = time.monotonic()
    sanitized = int(runs * SANITIZED_SHARE)
    for build, share in ((FAST, runs - sanitized), (SANITIZED, sanitized)):
        tally.add(target, build, executions(target, build, share))
    minimize(target)
    return time.monotonic() - since


def run(count, table):
    subprocess.run([ROOT / "tools" / "fuzz", "--build"], check=True)
    tally = Tally(FOLDER / "tally")
    wanted = tally.total() + count
    try:
        while tally.total() < wanted and not table.failed:
            size = min(ROUND, wanted - tally.total())
            for target, share in SHARES.items():
                runs = int(size * share)
                if not table.attempt(f"fuzz {target}", lambda: fuzz(target, runs, tally)):
                    break
    finally:
        tally.print()
