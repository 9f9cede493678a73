"""Ends the program in mid-work, in one way after the other, and looks at the copy of that work."""

import random
import shutil
import signal
import time

import audio
import case
from rescue_test import RATE, STEP, RescueCase
from servers import Desktop

COUNT = 500
ENDS = {"closed": None, "SIGTERM": signal.SIGTERM, "crash (SIGSEGV)": signal.SIGSEGV,
        "SIGKILL within 30 ms of the result": signal.SIGKILL}


class Rig(RescueCase):
    """One sound and what becomes of it, for many programs."""

    def __init__(self, desktop):
        super().__init__("start")
        case.desktop = desktop
        case.WindowCase.setUp(self)
        self.state = self.path("state")
        self.sound = audio.write_caf(self.path("noise.caf"), RATE, audio.noise(RATE, seed=3))
        self.made = self.audio(self.batch("made.caf", *STEP))[:-8]

    def repeat(self, number):
        shutil.rmtree(self.state, ignore_errors=True)
        self.start_with_sound()
        try:
            self.modulate()
            time.sleep(random.uniform(0, 0.03))
            since = time.monotonic()
            self.end(number)
            seconds = time.monotonic() - since
        finally:
            self.program.close()
        copies = self.copies()
        if number != signal.SIGKILL:  # which may come before the copy
            assert copies, "there is no copy"
        for copy in copies:
            assert self.audio(copy.read_bytes()) == self.made, "the copy is not the sound"
        return seconds


def run(count, table):
    desktop = Desktop()
    try:
        rig = Rig(desktop)
        for turn in range(count):
            name = list(ENDS)[turn % len(ENDS)]
            table.attempt(f"unsaved work: {name}", lambda: rig.repeat(ENDS[name]))
    finally:
        desktop.close()
