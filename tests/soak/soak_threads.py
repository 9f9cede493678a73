"""Makes that many million render calls under the thread sanitizer, with every thread of the program beside them."""

import os
import secrets
import subprocess
import time
from pathlib import Path

COUNT = 10
ROOT = Path(__file__).resolve().parents[2]
PROGRAM = ROOT / "build/tsan/bin/threads_stress_test"
CALLS = 1_000_000


def build():
    if "ZEMO_STRESS_PROGRAM" in os.environ:
        return os.environ["ZEMO_STRESS_PROGRAM"]
    subprocess.run(["cmake", "--preset", "tsan"], cwd=ROOT, check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["cmake", "--build", "--preset", "tsan", "--target", PROGRAM.name],
                   cwd=ROOT, check=True, stdout=subprocess.DEVNULL)
    return PROGRAM


def stress(program):
    since = time.monotonic()
    seed = secrets.randbelow(2**32)
    result = subprocess.run([program], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                            env=os.environ | {"ZEMO_STRESS_CALLS": str(CALLS),
                                              "ZEMO_STRESS_SEED": str(seed)})
    if result.returncode != 0:
        print(result.stdout, flush=True)
        raise AssertionError(f"status {result.returncode} with seed {seed}")
    print(next(line for line in result.stdout.splitlines() if "render calls" in line), flush=True)
    return time.monotonic() - since


def run(count, table):
    program = build()
    for _ in range(count):
        table.attempt("a million render calls", lambda: stress(program))
