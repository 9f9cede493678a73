"""The window on Wayland, without an X server."""

import os
import subprocess
import tempfile
from pathlib import Path

import numpy

import audio
import case
from servers import end, wait_for
from window import PLAY, STOP, Program, Window, press_keys

TITLE = "Amplitude and Single-Sideband Modulation"


def setUpModule():
    case.start_desktop()


class Wayland(case.SoundCase):

    def setUp(self):
        super().setUp()
        name = Path(tempfile.mkdtemp(dir=case.desktop.directory)).name
        self.pictures = case.desktop.directory / name
        log = open(self.pictures / "weston.log", "wb")
        with log:
            # Its screen is a window of the X server: so it has a keyboard and a mouse, which the
            # program's toolkit relies on. With its debug protocol anybody may take screenshots.
            compositor = case.desktop.start(
                ["weston", "--backend=x11-backend.so", "--use-pixman", "--width=1200",
                 "--height=800", f"--socket={name}", "--no-config", "--idle-time=0", "--debug"],
                stdout=log, stderr=log)
        self.addCleanup(end, compositor)
        socket = Path(os.environ["XDG_RUNTIME_DIR"]) / name
        wait_for(socket.exists, "the compositor runs")
        self.environment = {"WAYLAND_DISPLAY": name, "QT_QPA_PLATFORM": "wayland",
                            "DISPLAY": ""}

    def launch(self, *arguments, environment=None):
        self.program = Program(case.desktop, *arguments, environment=self.server.environment
                               | self.environment | (environment or {}))
        self.addCleanup(self.program.close)
        self.window = Window(self.program)
        self.window.wait_for_label("48,000 Hz")  # the launch is over

    def screenshot(self):
        """The whole screen: rows, columns, colour."""
        folder = tempfile.mkdtemp(dir=self.pictures)
        subprocess.run(["weston-screenshooter"], cwd=folder, check=True,
                       env=os.environ | self.environment, stdin=subprocess.DEVNULL)
        [picture] = Path(folder).glob("*.png")
        size = subprocess.run(["identify", "-format", "%w %h", picture], check=True,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE).stdout.split()
        pixels = subprocess.run(["convert", picture, "-depth", "8", "rgb:-"], check=True,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE).stdout
        return numpy.frombuffer(pixels, numpy.uint8).reshape(int(size[1]), int(size[0]), 3)

    def load(self, level=0.8, seconds=5):
        samples = audio.noise(int(seconds * self.rate), seed=1) * numpy.float32(level)
        self.launch(audio.write_caf(self.path("noise.caf"), self.rate, samples))
        self.window.wait_for_label("noise.caf")
        return samples

    def test_the_program_is_a_client_of_the_compositor(self):
        self.launch()
        wait_for(lambda: self.share_of((0x26, 0x24, 0x30)) > 0.1, "the window is on the screen")

    def test_keys_play_and_open_the_manual(self):
        self.load()
        press_keys("space")
        self.window.wait_for_title(STOP)
        press_keys("F1")
        self.window.dialog("ZEMO Manual")

    def share_of(self, colour):
        return (abs(self.screenshot().astype(int) - colour).max(axis=2) <= 2).mean()

    def test_a_file_is_opened_by_the_panel_and_played_sample_for_sample(self):
        samples = self.noise(1)
        self.launch()
        self.window.open(audio.write_caf(self.path("noise.caf"), self.rate, samples))
        self.window.wait_for_label("noise.caf")
        self.assert_plays_whole(samples)

    def test_the_meter_moves(self):
        self.load()
        before = self.screenshot()
        self.window.button(PLAY).press()
        self.listener.wait_for_sound(0.2)
        meter = self.window.find("progress bar", "Level meter")
        self.assertGreater(meter.value(), -20)
        green = self.screenshot()
        # The bar is the one thing on this screen in which green outdoes red by so much.
        def bar(picture):
            return int((picture[..., 1].astype(int) - picture[..., 0] > 60).sum())
        self.assertGreater(bar(green), bar(before) + 500)

    def test_a_sheet_opens_and_applies(self):
        self.load()
        self.window.choose("AM…")
        sheet = self.window.dialog(TITLE)
        self.screenshot()
        self.window.find("push button", "OK", sheet).press()
        self.window.wait_until_closed(TITLE)
        self.window.wait_for_label("Done")

    def test_every_sheet_opens_and_is_cancelled(self):
        self.load()
        for item, title in (("Resample…", "Resample"), ("FM…", "Frequency Modulation"),
                            ("HD…", "HD")):
            self.window.choose(item)
            sheet = self.window.dialog(title)
            self.window.find("push button", "Cancel", sheet).press()
            self.window.wait_until_closed(title)


if __name__ == "__main__":
    case.main()
