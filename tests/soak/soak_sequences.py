"""Uses the window at random, as often as that; each use ends with a kill, and every sound is accounted for."""

import os
import secrets
import subprocess
import time
from pathlib import Path

COUNT = 10000
AT_A_TIME = 100
PROGRAM = Path(os.environ["ZEMO_PROGRAM"]).with_name("rescue_sequences_test")


def play(count):
    since = time.monotonic()
    seed = secrets.randbelow(2**31)
    result = subprocess.run([PROGRAM], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                            stdin=subprocess.DEVNULL, check=False,
                            env=os.environ | {"ZEMO_RESCUE_SEQUENCES": str(count),
                                              "ZEMO_RESCUE_SEED": str(seed),
                                              "QT_QPA_PLATFORM": "offscreen"})
    if result.returncode != 0:
        print(result.stdout, flush=True)
        raise AssertionError(f"status {result.returncode} with seed {seed}")
    print(next(line for line in result.stdout.splitlines() if "kills" in line), flush=True)
    return time.monotonic() - since


def run(count, table):
    for done in range(0, count, AT_A_TIME):
        several = min(AT_A_TIME, count - done)
        table.attempt(f"{several} sequences, each ended by a kill", lambda: play(several))
