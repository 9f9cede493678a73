"""A keyboard on the MIDI bus: JACK's dummy driver, and a sender in a process of its own."""

import audio
import case
from midi_bus import RATE, Bus, note_off, note_on
from servers import wait_for
from window import PLAY, STOP

setUpModule = case.start_desktop


class BusCase(case.WindowCase):
    """A window and a bus; a call of the bus comes every `period` frames."""

    period = 1024

    def setUp(self):
        super().setUp()
        self.bus = Bus(case.desktop, self.period)
        self.addCleanup(self.bus.close)

    def launch(self, *arguments):
        super().launch(*arguments, environment=self.bus.environment)
        wait_for(lambda: self.lines("MIDI Sources: 1") == 1, "the source is counted")

    def launch_with_sound(self, seconds=20):
        sound = audio.write_caf(self.path("noise.caf"), RATE, audio.noise(seconds * RATE, seed=5))
        self.launch(sound)
        self.window.wait_for_label("noise.caf")

    def lines(self, text):
        return self.program.output().splitlines().count(text)

    def wait_for_lines(self, text, count):
        wait_for(lambda: self.lines(text) >= count, f"{count} lines {text}")


class Keyboard(BusCase):

    def launch(self, *arguments):
        super().launch(*arguments)
        self.addCleanup(self.bus.let_clients_go)
        self.bus.wait_for_clients()

    def test_a_note_plays_and_the_next_one_stops(self):
        self.launch_with_sound()
        self.bus.send(note_on())
        self.window.wait_for_title(STOP)
        self.bus.send(note_off())
        self.bus.send(note_on(velocity=1))
        # The note's title comes after the press, so it says Stop once more until the fade is over.
        self.wait_for_lines("NOTE ON", 2)
        wait_for(lambda: "IdleCycle" in self.program.output(), "the play has faded")
        self.window.wait_for_title(PLAY)

    def test_notes_play_on_all_sixteen_channels(self):
        self.launch()
        self.bus.send(*[note_on(channel) for channel in range(16)])
        self.wait_for_lines("NOTE ON", 16)
        for channel in range(16):
            self.assertEqual(self.lines(f"Channel: {channel:x}, Message: 9"), 1)

    def test_what_is_no_note_on_plays_nothing(self):
        self.launch_with_sound()
        self.bus.send(note_off(), note_on(velocity=0), bytes([0xB0, 7, 100]), bytes([0xC0, 3]),
                      bytes([0xE0, 0, 64]), bytes([0xF8]), bytes([0xFA]),
                      bytes([0xF0, 0x7E, 0x90, 0x3C, 0x40, 0xF7]))
        self.bus.send(bytes([60, 64]))  # a running status is not followed
        self.bus.send(bytes([0xB1, 7, 99]))
        self.wait_for_lines("Channel: 1, Message: b", 1)
        self.assertEqual(self.lines("NOTE ON"), 0)
        self.assertNotIn("frames", self.program.output())
        self.assertEqual(self.lines("Channel: 0, Message: f"), 0)

    def test_ten_thousand_notes_in_a_burst_are_all_read_once(self):
        self.launch()
        self.bus.send(*[note_on(i % 16) for i in range(10000)])
        self.bus.send(bytes([0xB1, 7, 99]))
        self.wait_for_lines("Channel: 1, Message: b", 1)
        self.assertEqual(self.lines("NOTE ON"), 10000)


if __name__ == "__main__":
    case.main()
