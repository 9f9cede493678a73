"""Servers of sound and MIDI that die, go deaf, or lose and change their device."""

import os

import numpy

import audio
import case
from faults import LOST, MIDI_LOST, NO_MIDI, SILENT, Fault, says, seconds_until, wait_for_sentence
from midi_bus import Sender, note_on, wait_until_connected
from servers import wait_for
from sound_servers import DeafSocket, JackServer, PipeWireServer, PulseServer, deaf_jack
from window import PLAY, STOP, press_keys

setUpModule = case.start_desktop

SECONDS = 2


class FaultCase(case.SoundCase):
    """A play under way."""

    make_server = None

    def setUp(self):
        case.WindowCase.setUp(self)
        self.server = self.make_server(case.desktop, self.rate)
        self.addCleanup(self.server.close)
        self.listen()
        self.samples = self.noise(SECONDS)
        self.launch(audio.write_caf(self.path("noise.caf"), self.rate, self.samples))
        self.window.wait_for_label("noise.caf")

    def listen(self):
        self.listener = audio.Listener(self.server.record())

    def begin(self):
        self.play()
        self.listener.wait_for_sound(0.1)

    def assert_truth_after(self, fault):
        self.begin()
        with Fault(self.window) as watched:
            fault()
        watched.wait_for_truth()

    def assert_next_play_is_silent(self):
        self.play()
        wait_for_sentence(self.window, SILENT)
        self.window.wait_for_title(PLAY)  # it keeps time, so it comes to its end

    def assert_next_play_is_heard(self):
        """All of the sound, sample for sample, and nothing to say any more."""
        self.listen()
        self.server.wait_for_clients()
        self.listener.wait_for_silence()
        self.assert_plays_whole(self.samples)
        self.assertFalse(says(self.window, LOST))
        self.assertFalse(says(self.window, SILENT))


class KillLaws:

    def test_a_killed_server_is_said_and_the_next_plays_work(self):
        self.assert_truth_after(self.server.kill)
        self.assert_next_play_is_silent()
        self.server.start()
        self.assert_next_play_is_heard()


class FreezeLaws:

    def test_a_server_that_stands_still_is_said_and_the_window_goes_on(self):
        self.assert_truth_after(self.server.freeze)
        self.play()
        self.window.button("Peak").press()
        self.window.button("RMS")
        wait_for_sentence(self.window, SILENT)
        self.window.wait_for_title(PLAY)
        self.server.thaw()
        self.assert_next_play_is_heard()


class SinkLaws:

    def test_an_unplugged_device_is_said_and_the_next_plays_work(self):
        self.assert_truth_after(self.server.remove_sink)
        self.assert_next_play_is_silent()
        self.server.add_sink("out", self.rate)
        self.assert_next_play_is_heard()

    def test_another_device_at_another_rate_takes_over_in_mid_play(self):
        self.begin()
        self.server.add_sink("other", 44100)
        self.assert_same_loudness(recording := self.server.record("other"))
        self.stop()
        self.assertFalse(says(self.window, LOST))
        self.window.wait_for_label("48,000 Hz")
        audio.Listener(recording).wait_for_more(0.5)  # what the server still holds
        self.server.make_default("out")
        self.assert_next_play_is_heard()

    def assert_same_loudness(self, recording, least=0.7):
        """The other device gets another rate, so not the same samples. Of white noise it loses
        what is above its band, which is a twelfth of the power, and what the server's filter takes
        of the band's upper end, which is a sixth of it in PulseAudio and in PipeWire."""
        listener = audio.Listener(recording)
        listener.wait_for_sound(0.3)
        heard = recording.frames()[:, 0]
        heard = heard[heard.nonzero()[0][0]:][:int(0.25 * self.rate)]
        power = numpy.mean(numpy.square(heard)) / numpy.mean(numpy.square(self.samples))
        self.assertGreater(power, least)
        self.assertLess(power, 1.1)
        return heard


class LengthLaws:

    def test_a_device_that_changes_the_length_of_its_calls_is_heard_exactly(self):
        self.play_with_other_calls()
        self.assert_next_play_is_heard()

    def play_with_other_calls(self):
        before = self.listener.plays_so_far()
        self.begin()
        with self.server.other_calls():
            heard = self.listener.wait_for_plays(before + 1)[-1]
        self.assert_whole(audio.without_pauses(heard), self.samples)


class PulseAudio(KillLaws, FreezeLaws, SinkLaws, LengthLaws, FaultCase):
    make_server = PulseServer

    def test_a_suspended_device_is_said_and_the_next_plays_work(self):
        self.assert_truth_after(self.server.suspend)
        self.server.resume()
        self.assert_next_play_is_heard()


class PipeWire(KillLaws, FreezeLaws, SinkLaws, LengthLaws, FaultCase):
    make_server = PipeWireServer

    def test_a_device_that_changes_its_own_rate_plays_on_as_loud(self):
        self.begin()
        with self.server.other_rate(44100):
            heard = self.assert_same_loudness(self.server.record(), least=0.6)  # two conversions
            self.assertLess(self.share_above(heard, 22_200), 0.02, "the device has its own rate")
            self.stop()
            self.assertFalse(says(self.window, LOST))
            self.window.wait_for_label("48,000 Hz")
        self.assert_next_play_is_heard()

    def share_above(self, heard, frequency):
        """Of the power; of white noise at 48 kHz it is 0.075 above 22 200 Hz."""
        powers = numpy.square(numpy.abs(numpy.fft.rfft(heard)))
        return powers[int(len(heard) * frequency / self.rate):].sum() / powers.sum()


class Jack(KillLaws, FreezeLaws, FaultCase):
    make_server = JackServer

    def test_calls_of_another_length_from_the_middle_on_are_heard_exactly(self):
        self.server.set_buffer(1024)
        self.begin()
        self.server.set_buffer(512)
        [heard] = self.listener.wait_for_plays(1)
        self.assert_whole(audio.without_pauses(heard), self.samples)


class MidiServer(case.SoundCase):
    """Sound through PulseAudio, and JACK for MIDI alone."""

    def setUp(self):
        super().setUp()
        self.bus = JackServer(case.desktop, self.rate, has_sound=False)
        self.addCleanup(self.bus.close)
        self.sender = Sender(self.bus.environment)
        self.addCleanup(self.sender.close)
        self.samples = self.noise(SECONDS)
        self.launch(audio.write_caf(self.path("noise.caf"), self.rate, self.samples),
                    environment=self.bus.environment | self.server.environment)
        self.window.wait_for_label("noise.caf")
        self.addCleanup(self.bus.let_clients_go)
        wait_until_connected(self.sender, self.window)
        self.bus.wait_for_clients()

    def test_one_that_dies_is_said_and_the_play_under_way_goes_on(self):
        before = self.listener.plays_so_far()
        self.play()
        self.listener.wait_for_sound(0.1)
        seconds_until(self.window, MIDI_LOST, self.bus.kill)
        self.assert_whole(self.listener.wait_for_plays(before + 1)[-1], self.samples)
        self.assert_plays_whole(self.samples)
        self.assertTrue(says(self.window, MIDI_LOST))

    def test_one_that_dies_while_nothing_plays_is_said(self):
        seconds_until(self.window, MIDI_LOST, self.bus.kill)
        self.assert_plays_whole(self.samples)

    def test_one_that_stands_still_is_said_and_its_notes_play_when_it_goes_on(self):
        seconds_until(self.window, NO_MIDI, self.bus.freeze)
        self.assert_plays_whole(self.samples)
        self.bus.thaw()
        wait_for(lambda: not says(self.window, NO_MIDI), "MIDI answers again")
        self.sender.send(note_on())
        self.window.wait_for_title(STOP)


class DeafServers(case.WindowCase):
    """Sockets that take a connection and never answer."""

    def setUp(self):
        super().setUp()
        self.name = f"deaf{os.getpid()}"
        self.environment = {"JACK_DEFAULT_SERVER": self.name, "PULSE_SERVER": "unix:/nonexistent"}

    def make_pulse_deaf(self):
        path = self.path("pulse")
        self.addCleanup(DeafSocket(path).close)
        self.environment["PULSE_SERVER"] = f"unix:{path}"

    def make_jack_deaf(self):
        self.addCleanup(deaf_jack(self.name).close)

    def assert_launches(self, *sentences):
        samples = audio.noise(24000, seed=3)
        path = audio.write_caf(self.path("noise.caf"), 48000, samples)
        self.launch(path, environment=self.environment)
        self.wait_for_log("Version Minor")
        self.window.wait_for_label("\n".join(sentences))
        self.window.wait_for_label("noise.caf")

    def assert_plays_silently(self):
        self.window.button(PLAY).press()
        self.window.wait_for_title(STOP)
        wait_for(lambda: "IdleCycle" in self.program.output(), "the sound's end is reached")
        self.window.wait_for_title(PLAY)

    def assert_quits(self):
        press_keys("ctrl+q")
        self.assertEqual(self.program.status(), 0)

    def test_a_deaf_sound_server_leaves_silence(self):
        self.make_pulse_deaf()
        self.assert_launches(SILENT)
        self.assert_plays_silently()
        self.assert_quits()

    def test_a_deaf_jack_leaves_silence_and_no_midi(self):
        self.make_jack_deaf()
        self.assert_launches(SILENT, NO_MIDI)
        self.assert_plays_silently()
        self.assert_quits()

    def test_both_deaf_leave_silence_and_no_midi(self):
        self.make_pulse_deaf()
        self.make_jack_deaf()
        self.assert_launches(SILENT, NO_MIDI)
        self.assert_quits()


if __name__ == "__main__":
    case.main()
