"""Starts and quits the program beside servers of sound and MIDI that never answer."""

import time

import case
from faults import NO_MIDI, SILENT
from server_faults_test import DeafServers
from servers import Desktop

COUNT = 30
LAUNCH_SECONDS = 3.0  # two for the servers, the rest for the program itself
QUIT_SECONDS = 1.0


class Rig(DeafServers):
    """The servers of one repetition."""

    def __init__(self, desktop):
        super().__init__("assert_launches")
        case.desktop = desktop

    def repeat(self, kinds, table):
        self.setUp()
        try:
            sentences = [SILENT]
            self.make_pulse_deaf()
            if "MIDI" in kinds:
                self.make_jack_deaf()
                sentences.append(NO_MIDI)
            since = time.monotonic()
            self.assert_launches(*sentences)
            launched = time.monotonic()
            self.assert_quits()
            quit_seconds = time.monotonic() - launched
            for what, seconds, bound in (("launch", launched - since, LAUNCH_SECONDS),
                                         ("quit", quit_seconds, QUIT_SECONDS)):
                outcome = [] if seconds <= bound else [f"more than {bound:.0f} s"]
                table.add(f"deaf servers of {kinds}: {what}", *outcome, seconds=seconds)
        finally:
            self.doCleanups()


def run(count, table):
    desktop = Desktop()
    try:
        for turn in range(count):
            Rig(desktop).repeat(["sound", "sound and MIDI"][turn % 2], table)
    finally:
        desktop.close()
