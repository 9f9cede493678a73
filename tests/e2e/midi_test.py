"""A keyboard on the MIDI bus: JACK's dummy driver, and a sender in a process of its own."""

import audio
import case
from faults import MIDI_LOST, SILENT, says, wait_for_sentence
from midi_bus import RATE, Bus, Sender, look_for_midi, note_off, note_on, wait_until_connected
from servers import wait_for
from sound_servers import JackServer, PulseServer
from window import PLAY, STOP, Program, Window, press_keys

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
        wait_until_connected(self.bus, self.window)

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

    def test_the_client_has_its_given_name(self):
        self.launch()
        wait_for(lambda: "MIDI_Client:MIDI_Input" in self.bus.ports(), "the client is on the bus")

    def test_a_note_plays_the_sound_that_is_being_opened_at_launch(self):
        sound = audio.write_caf(self.path("long.caf"), RATE, audio.constant(0.25, 600 * RATE))
        self.program = Program(case.desktop, sound, environment=self.bus.environment)
        self.addCleanup(self.program.close)
        def is_heard():
            self.bus.send(bytes([0xB1, 7, 99]))
            return self.lines("Channel: 1, Message: b") > 0
        wait_for(is_heard, "the source is connected", longest_poll=0.01)
        self.addCleanup(self.bus.let_clients_go)
        self.bus.wait_for_clients()
        self.bus.send(note_on(channel=5))
        self.window = Window(self.program)
        self.window.wait_for_title(STOP)

    def test_a_source_that_comes_later_is_heard_after_another_look(self):
        self.launch_with_sound()
        self.bus.let_clients_go()
        later = Sender(self.bus.environment)
        self.addCleanup(later.close)
        self.addCleanup(self.bus.let_clients_go)  # before it closes
        self.bus.wait_for_clients()
        later.send(note_on(channel=2))
        self.bus.send(bytes([0xB1, 7, 99]))
        self.wait_for_lines("Channel: 1, Message: b", 1)
        self.assertEqual(self.lines("NOTE ON"), 0)
        self.bus.let_clients_go()
        look_for_midi(self.window, 2)
        self.bus.wait_for_clients()
        later.send(note_on(channel=2))
        self.window.wait_for_title(STOP)
        self.assertIn("MIDI_Client:MIDI_Input", self.bus.ports())

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


class AnotherServer(case.WindowCase):
    """A JACK server that dies and comes back."""

    def launch_on_the_bus(self, environment=None):
        self.bus = JackServer(case.desktop, RATE, period=4096)
        self.addCleanup(self.bus.close)
        self.send_on_the_bus()
        sound = audio.write_caf(self.path("noise.caf"), RATE, audio.noise(2 * RATE, seed=5))
        self.launch(sound, environment=self.bus.environment | (environment or {}))
        self.addCleanup(self.bus.let_clients_go)
        self.window.wait_for_label("noise.caf")

    def send_on_the_bus(self):
        self.sender = Sender(self.bus.environment)
        self.addCleanup(self.sender.close)
        self.addCleanup(self.bus.let_clients_go)  # before it closes

    def kill_and_look_again(self):
        self.bus.kill()
        wait_for_sentence(self.window, MIDI_LOST)
        self.look_again(0)
        self.sender.close()  # or it would wake the server's next clients as well, once more each
        self.bus.start()
        self.send_on_the_bus()
        self.look_again(1)

    def look_again(self, sources):
        look_for_midi(self.window, sources)
        self.assertFalse(says(self.window, MIDI_LOST))

    def assert_a_note_plays(self, count):
        wait_until_connected(self.sender, self.window)
        self.bus.wait_for_clients()
        self.sender.send(note_on())
        wait_for(lambda: self.program.output().count("IdleCycle = 1") == count, "the sound ends")
        self.assertEqual(self.program.output().count("NOTE ON"), count)
        self.window.wait_for_title(PLAY)

    def test_its_notes_are_heard_after_another_look(self):
        server = PulseServer(case.desktop, RATE)
        self.addCleanup(server.close)
        self.launch_on_the_bus(server.environment)
        self.kill_and_look_again()
        self.assert_a_note_plays(1)

    def test_its_notes_are_heard_where_it_serves_the_sound_as_well(self):
        self.launch_on_the_bus()
        self.assert_a_note_plays(1)
        for count in (2, 3):
            self.kill_and_look_again()
            self.assert_a_note_plays(count)
            self.assertFalse(says(self.window, SILENT))
        self.bus.let_clients_go()
        press_keys("ctrl+q")
        self.assertEqual(self.program.status(), 0)


if __name__ == "__main__":
    case.main()
