"""What sound servers get of plays: what zemo-batch renders, sample for sample, whatever they ask for.

ZEMO_MONITOR=all plays every length at every rate and through periods of every size, and stops 50 times;
otherwise a few of each."""

import os
import random
import subprocess
import time
from pathlib import Path

import numpy

import audio
import case
from faults import SILENT, says
from servers import wait_for
from sound_servers import JackServer, PipeWireServer, PulseServer
from window import PLAY, PROGRAM, STOP

setUpModule = case.start_desktop

BATCH = str(Path(PROGRAM).with_name("zemo-batch"))
ALL = os.environ.get("ZEMO_MONITOR") == "all"
RATES = (44100, 48000, 96000) if ALL else (44100, 48000)
SECONDS = (0.001, 0.01, 0.011, 0.022, 0.05, 0.2, 0.5, 1, 2) if ALL else (0.001, 0.05, 0.5)
PERIODS = (64, 128, 256, 512, 1024, 2048, 4096) if ALL else (256, 4096)
STOPS = 50 if ALL else 5
PAUSE_SECONDS = 0.12
LONGEST_PAUSE_SECONDS = 0.3  # one of half a second is told, and ends the play


class MonitorCase(case.SoundCase):
    """A program that plays one sound after the other."""

    make_server = None
    program = None

    def setUp(self):
        case.WindowCase.setUp(self)

    def begin(self, rate, seconds, **server):
        """A server, and the program with a sound of so many seconds."""
        self.rate = rate
        self.server = self.make_server(case.desktop, rate, **server)
        self.addCleanup(self.server.close)
        self.listener = audio.Listener(self.server.record())
        self.samples, path = self.make_sound(seconds)
        self.launch(path)
        self.window.wait_for_label(path.name)

    def end(self):
        self.server.let_clients_go()
        self.program.close()
        self.server.close()

    def make_sound(self, seconds):
        samples = self.noise(seconds, seed=int(1e6 * seconds))
        path = audio.write_caf(self.path(f"{self.rate} {seconds}.caf"), self.rate, samples)
        return samples, path

    def open(self, seconds):
        self.samples, path = self.make_sound(seconds)
        self.window.open(path)
        self.window.wait_for_label(path.name)

    def rendered(self):
        """Of the sound that is open, by the program's headless twin."""
        source, result, raw = (self.path(name) for name in ("play.caf", "rendered.caf", "rendered.f32"))
        audio.write_caf(source, self.rate, self.samples)
        for steps in ([source, "render", result, "frames=512"], [result, "dump", raw]):
            subprocess.run([BATCH, "--rate", str(self.rate), "open", *steps], check=True,
                           stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                           stderr=subprocess.DEVNULL)
        return numpy.fromfile(raw, "<f4")

    def press_play(self):
        """Of a play so short that its title may be gone already. After a fade that the sound's end has
        cut the title stays, and it takes another press."""
        before = self.listener.plays_so_far()
        self.play_button().press()
        return before

    def play_aloud(self):
        """A long sound; again where a server was so slow that it plays silently."""
        before = self.press_play()
        wait_for(lambda: self.listener.plays_so_far() > before or says(self.window, SILENT),
                 "a play is heard, or silent")
        if self.listener.plays_so_far() == before:
            self.listener.wait_for_more(0.5)  # that may have been said of an earlier play
        if self.listener.plays_so_far() == before:
            self.stop()
            self.listener.wait_for_silence()
            self.play_aloud()

    def play_button(self):
        return wait_for(lambda: self.window.look_for("push button", PLAY) or
                        self.window.look_for("push button", STOP), "there is a play button")

    def heard_after(self, before):
        return self.listener.wait_for_plays(before + 1)[-1]

    def assert_rendered(self, heard):
        self.assert_same_samples(heard, audio.heard_of(self.rendered()))
        self.assert_whole(heard, self.samples)

    def assert_plays_as_rendered(self):
        """Again where a server was so slow that the play went on silently, which the window says."""
        before = self.press_play()
        wait_for(lambda: self.listener.are_over(before + 1) or says(self.window, SILENT),
                 "a play is over, or silent")
        if self.listener.plays_so_far() == before:
            self.listener.wait_for_more(len(self.samples) / self.rate + 0.5)
            return self.assert_plays_as_rendered()
        self.assert_rendered(self.heard_after(before))


class MonitorLaws:

    pauses = (None, 0.3, 0.9)  # before the first sample, in the middle, near the end

    def test_sounds_of_every_length(self):
        for rate in RATES:
            self.begin(rate, SECONDS[0])
            self.assert_plays_as_rendered()
            for seconds in SECONDS[1:]:
                with self.subTest(rate=rate, seconds=seconds):
                    self.open(seconds)
                    self.assert_plays_as_rendered()
            self.end()

    def test_a_stop_at_any_moment_is_one_fade(self):
        self.begin(48000, 20)
        source = random.Random(16)
        for _ in range(STOPS):
            self.play_aloud()
            self.listener.wait_for_sound(source.uniform(0.01, 0.6))
            self.stop()
            self.assert_stopped(self.listener.wait_for_plays(1)[-1], self.samples)

    def test_a_server_that_stops_for_a_moment_gets_all_of_it(self):
        self.begin(48000, 1)
        for seconds in self.pauses:
            with self.subTest(seconds=seconds):
                self.assert_plays_through_a_pause(seconds)

    def assert_plays_through_a_pause(self, seconds):
        """Again where a busy machine has made the pause too long: such a server has gone away."""
        while True:
            before = self.listener.plays_so_far()
            if seconds is not None:
                self.press_play()
                self.listener.wait_for_sound(seconds)
            since = time.monotonic()
            self.server.freeze()
            if seconds is None:
                self.press_play()
            time.sleep(max(0, since + PAUSE_SECONDS - time.monotonic()))
            self.server.thaw()
            if time.monotonic() - since < LONGEST_PAUSE_SECONDS:
                heard = self.heard_after(before)
                return self.assert_rendered(audio.without_pauses(heard))
            self.window.wait_for_title(PLAY)
            self.listener.wait_for_silence()


class LengthLaws:

    def test_requests_that_change_in_mid_play(self):
        self.begin(48000, 1)
        before = self.press_play()
        self.listener.wait_for_sound(0.2)
        with self.server.other_calls():
            self.assert_rendered(self.heard_after(before))


class PulseAudio(MonitorLaws, LengthLaws, MonitorCase):
    make_server = PulseServer


class PipeWire(MonitorLaws, LengthLaws, MonitorCase):
    make_server = PipeWireServer


class Jack(MonitorLaws, MonitorCase):
    """It cuts its clients off for a moment when its periods change: see server_faults_test.py."""

    make_server = JackServer
    pauses = (0.3, 0.9)  # a stream that is made meanwhile may be refused

    def test_periods_of_every_size(self):
        for period in PERIODS:
            with self.subTest(period=period):
                self.begin(48000, 0.05, period=period)
                self.assert_plays_as_rendered()
                self.end()


del MonitorCase

if __name__ == "__main__":
    case.main()
