"""Prints the time from a note on the bus to its first sound: a measurement, not a test.

ZEMO_PROGRAM=.../zemo /usr/bin/python3 measure_midi_latency.py
"""

import case
from midi_test import BusCase, note_on
from window import STOP

setUpModule = case.start_desktop


class Latency(BusCase):
    period = 256

    def test_the_sound_follows_the_note(self):
        self.launch_with_sound()
        latency = self.bus.latency(note_on())
        print(f"note to first sound: {latency * 1000:.1f} ms")
        self.window.wait_for_title(STOP)


if __name__ == "__main__":
    case.main()
