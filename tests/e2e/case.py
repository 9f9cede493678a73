"""What the test cases share."""

import signal
import tempfile
import unittest
from pathlib import Path

import audio
from servers import Desktop, wait_for
from sound_servers import PulseServer
from window import PLAY, STOP, Program, Window

desktop = None


def start_desktop():
    """For a module's setUpModule: one desktop for all its tests."""
    global desktop
    desktop = Desktop()
    unittest.addModuleCleanup(desktop.close)


def main():
    """Runs the tests; leaves nothing behind, even when they are interrupted."""
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    try:
        unittest.main()
    finally:
        if desktop is not None:
            desktop.close()


class WindowCase(unittest.TestCase):
    """Tests with the program's window."""

    def setUp(self):
        directory = tempfile.TemporaryDirectory(dir=desktop.directory)
        self.addCleanup(directory.cleanup)
        self.directory = Path(directory.name)
        self.program = None
        self.window = None

    def launch(self, *arguments, environment=None):
        self.program = Program(desktop, *arguments, environment=environment)
        self.addCleanup(self.program.close)
        self.window = Window(self.program)

    def path(self, name):
        return self.directory / name

    def wait_for_log(self, beginning, count=1):
        return wait_for(lambda: self.program.log_lines(beginning)[count - 1:],
                        f"{count} log lines begin with {beginning}")[0]


class SoundCase(WindowCase):
    """Tests with the window and a sound server, all of whose sound is recorded."""

    rate = 48000

    def setUp(self):
        super().setUp()
        self.server = PulseServer(desktop, self.rate)
        self.addCleanup(self.server.close)
        self.listener = audio.Listener(self.server.record())

    def launch(self, *arguments, environment=None):
        super().launch(*arguments, environment=self.server.environment | (environment or {}))
        self.addCleanup(self.server.let_clients_go)
        self.server.wait_for_clients()

    def noise(self, seconds, seed=1):
        return audio.noise(int(seconds * self.rate), seed)

    def play(self):
        self.window.button(PLAY).press()
        self.window.wait_for_title(STOP)

    def stop(self):
        self.window.button(STOP).press()
        self.window.wait_for_title(PLAY)

    def assert_same_samples(self, actual, expected):
        self.assertEqual(len(actual), len(expected))
        differing = (actual.view("u4") != expected.view("u4")).nonzero()[0]
        if len(differing) > 0:
            where = differing[0]
            self.fail(f"{len(differing)} of {len(actual)} samples differ, the first at {where}: "
                      f"{actual[where]!r}, not {expected[where]!r}")

    def assert_whole(self, heard, samples):
        """A play of all of the sound, as the render callback makes it."""
        self.assert_same_samples(heard, audio.heard_of(audio.play(samples)))

    def assert_stopped(self, heard, samples):
        """A play from the sound's first sample on, and one fade at the end of it. None of the
        samples is 0."""
        fade_out = len(heard) - audio.FRAMES
        self.assertEqual(fade_out % audio.FRAMES, 0)
        self.assertGreaterEqual(fade_out, audio.FRAMES)
        self.assertLess(fade_out, audio.fade_out_of(len(samples)))
        self.assert_same_samples(heard, audio.play(samples, fade_out))

    def assert_plays_whole(self, samples):
        """Presses Play and listens to the end."""
        before = self.listener.plays_so_far()
        self.play()
        self.assert_whole(self.listener.wait_for_plays(before + 1)[-1], samples)
