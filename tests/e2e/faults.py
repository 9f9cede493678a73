"""What a window must show after a fault of the sound server, and how long it took to show it."""

import time

import meter
from servers import wait_for
from window import PLAY, STOP

LOST = "The audio device went away: the play was ended"
SILENT = "No audio device: playing silently"
NO_MIDI = "MIDI does not answer: no notes are read"
TRUTH_SECONDS = 1.0
METER_TOLERANCE = 3  # of 255


class Fault:
    """Made before the fault: `with Fault(window) as fault: server.kill()`, then ask."""

    def __init__(self, window):
        self._window = window
        self._button = window.button(STOP)
        self._since = None
        self.seconds = None

    def __enter__(self):
        self._since = time.monotonic()
        return self

    def __exit__(self, *error):
        pass

    def _shows_the_truth(self):
        return (self._button.name == PLAY and self._window.look_for("label", LOST) is not None and
                meter.difference(self._window.meter(), meter.bar(0)) <= METER_TOLERANCE)

    def wait_for_truth(self, timeout=10):
        """Seconds from the fault's beginning to: Play on the button, the meter at rest, the
        sentence in the window."""
        wait_for(self._shows_the_truth, "the window shows that the device is gone", timeout)
        self.seconds = time.monotonic() - self._since
        return self.seconds
