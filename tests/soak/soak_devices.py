"""Changes the length of the device's calls, and its rate, in mid-play; kills JACK for MIDI alone."""

import time

import audio
import case
from faults import LOST, MIDI_LOST, TRUTH_SECONDS, says, seconds_until
from servers import Desktop
from soak_servers import KINDS, Rig
from sound_servers import JackServer

COUNT = 60


class DeviceRig(Rig):
    """A program and a server whose device changes."""

    def listen(self):
        self.listener = audio.Listener(self.server.record())

    def other_calls(self):
        """Seconds of the play, which must be the sound from its first sample on."""
        self.listen()
        since = time.monotonic()
        self.begin()
        with self.server.other_calls():
            [heard] = self.listener.wait_for_plays(1)
        self.assert_whole(audio.without_pauses(heard), self.samples)
        return time.monotonic() - since

    def other_rate(self):
        self.listen()
        since = time.monotonic()
        self.begin()
        with self.server.other_rate(44100):
            self.listener.wait_for_sound(0.5)
            assert not says(self.window, LOST), "the device went away"
            self.stop()
        self.assert_next_play_is_exact()
        return time.monotonic() - since

    def changes(self):
        yield "other calls", self.other_calls
        if hasattr(self.server, "other_rate"):
            yield "other rate", self.other_rate


class MidiRig(case.SoundCase):
    """Sound through PulseAudio, and JACK for MIDI alone."""

    def __init__(self, desktop):
        super().__init__("play")
        case.desktop = desktop
        super().setUp()
        self.samples = self.noise(2)
        self.path_of_sound = audio.write_caf(self.path("noise.caf"), self.rate, self.samples)

    def kill(self):
        """Seconds until it is said, in mid-play."""
        bus = JackServer(case.desktop, self.rate, has_sound=False)
        try:
            self.launch(self.path_of_sound, environment=bus.environment | self.server.environment)
            self.window.wait_for_label("noise.caf")
            bus.wait_for_clients()
            before = self.listener.plays_so_far()
            self.play()
            self.listener.wait_for_sound(0.1)
            seconds = seconds_until(self.window, MIDI_LOST, bus.kill)
            self.assert_whole(self.listener.wait_for_plays(before + 1)[-1], self.samples)
            assert seconds < TRUTH_SECONDS, f"the truth came after {seconds:.1f} s"
            return seconds
        finally:
            self.program.close()
            bus.close()


def soak_kind(desktop, kind, count, table):
    rig = DeviceRig(desktop, kind, 2)
    for _ in range(count):
        for name, change in rig.changes():
            table.attempt(f"{kind} {name}", change)
    rig.doCleanups()


def run(count, table):
    desktop = Desktop()
    try:
        for kind in KINDS:
            soak_kind(desktop, kind, -(-count // 4), table)
        rig = MidiRig(desktop)
        for _ in range(-(-count // 4)):
            table.attempt("JACK killed, for MIDI alone", rig.kill)
        rig.doCleanups()
    finally:
        desktop.close()
