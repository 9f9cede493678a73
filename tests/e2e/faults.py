"""What a window must show after a fault of the sound server, and how long it took to show it."""

import time

import meter
from servers import wait_for
from window import PLAY, STOP

LOST = "The audio device went away: the play was ended"
SILENT = "No audio device: playing silently"
NO_MIDI = "MIDI does not answer: no notes are read"
MIDI_LOST = "MIDI went away: no notes are read. Choose Play ▸ Look for MIDI Again."
TRUTH_SECONDS = 1.0  # for tools/soak: how long it takes says something of a machine at rest only
METER_TOLERANCE = 3  # of 255


def says(window, sentence):
    """Whether one of the window's sentences is this one: of sound and MIDI each has a line."""
    return any(sentence in label.split("\n") for label in window.labels())


def wait_for_sentence(window, sentence):
    wait_for(lambda: says(window, sentence), f"the window says {sentence}", longest_poll=0.01)


def seconds_until(window, sentence, fault):
    """Seconds from the fault's beginning to its sentence in the window."""
    since = time.monotonic()
    fault()
    wait_for_sentence(window, sentence)
    return time.monotonic() - since


class Fault:
    """Made before the fault: `with Fault(window) as fault: server.kill()`, then ask."""

    def __init__(self, window):
        self._window = window
        self._button = window.button(STOP)
        # Beforehand: to look through the whole window takes a part of the second that is measured.
        self._labels = [control for control in window.controls() if control.role == "label"]
        self._since = None
        self.seconds = None

    def __enter__(self):
        self._since = time.monotonic()
        return self

    def __exit__(self, *error):
        pass

    def _shows_the_truth(self):
        return (self._button.name == PLAY and self._is_said(LOST) and
                meter.difference(self._window.meter(), meter.bar(0)) <= METER_TOLERANCE)

    def _is_said(self, sentence):
        return any(sentence in label.name.split("\n") and label.has("SHOWING")
                   for label in self._labels)

    def wait_for_truth(self):
        """Seconds from the fault's beginning to: Play on the button, the meter at rest, the
        sentence in the window."""
        wait_for(self._shows_the_truth, "the window shows that the device is gone", longest_poll=0.01)
        self.seconds = time.monotonic() - self._since
        return self.seconds
