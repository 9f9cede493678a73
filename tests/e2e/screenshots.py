#!/usr/bin/python3
"""screenshots.py OUTDIR: pictures of the window with the example sound in it.

ZEMO_PROGRAM names the program.
"""

import subprocess
import sys
from pathlib import Path

import numpy

import audio
from servers import Desktop, wait_for
from sound_servers import PulseServer
from window import GREEN, PLAY, STOP, Program, Window, press_keys, screenshot

RATE = 48000
HARP = Path(__file__).resolve().parents[2] / "examples" / "harp-48000.caf"
PEAK = "−1.9 dBFS"  # said when the wave is drawn


class Photographer:
    """Starts the program afresh for every scene."""

    def __init__(self, desktop, directory):
        self._desktop = desktop
        self._server = PulseServer(desktop, RATE)
        self._directory = directory
        directory.mkdir(parents=True, exist_ok=True)

    def launch(self, *arguments, environment=None):
        program = Program(self._desktop, *arguments,
                          environment=self._server.environment | (environment or {}))
        return program, Window(program)

    @staticmethod
    def resample(window):
        window.choose("Resample…")
        window.find("push button", "OK", window.dialog("Resample")).press()
        window.wait_until_closed("Resample")
        window.wait_for_label("Done")

    def take(self, name):
        subprocess.run(["import", "-window", "root", "-trim", "+repage",
                        str(self._directory / f"{name}.png")],
                       stdin=subprocess.DEVNULL, check=True)

    def idle(self):
        program, window = self.launch()
        window.wait_for_label("No sound yet")
        self.take("idle")
        program.close()

    def loaded(self):
        program, window = self.launch(HARP)
        window.wait_for_label(PEAK)
        self.take("loaded")
        program.close()

    def spectrogram(self):
        program, window = self.launch(HARP)
        window.wait_for_label(PEAK)
        before = screenshot()
        press_keys("ctrl+g")
        wait_for(lambda: (screenshot() != before).mean() > 0.1, "the spectrogram is seen")
        self.take("spectrogram")
        program.close()

    def marks(self):
        samples = audio.noise(RATE, seed=1)
        samples[RATE // 4] = samples[RATE // 2] = -1.5
        samples[3 * RATE // 4] = numpy.nan
        path = audio.write_raw(self._desktop.directory / "marks.f32", samples)
        program, window = self.launch()
        window.open(path)
        window.wait_for_label("+3.5 dBFS")
        self.take("marks")
        program.close()

    def playing(self):
        recording = self._server.record()
        program, window = self.launch(HARP)
        window.button(PLAY).press()
        audio.Listener(recording).wait_for_sound(0.3)
        window.wait_for_title(STOP)
        self.take("playing")
        program.close()

    def stopping(self):
        recording = self._server.record()
        program, window = self.launch(HARP)
        window.button(PLAY).press()
        audio.Listener(recording).wait_for_sound(0.3)
        # The green title lasts for one call of the device. Here that call does not come.
        self._server.freeze()
        window.button(STOP).press()
        wait_for(lambda: window.button(STOP).shows_colour(GREEN), "the title is green")
        self.take("stopping")
        self._server.thaw()
        program.close()

    def refused(self):
        program, window = self.launch(HARP)
        path = self._desktop.directory / "another rate.caf"
        window.open(audio.write_caf(path, 44100, audio.noise(4410, seed=1)))
        window.alert("ZEMO: Error:")
        wait_for(lambda: not window.look_for("dialog", "Open"), "the panel is gone")
        self.take("refused")
        window.button("OK").press()
        window.wait_until_closed("ZEMO: Error:", role="alert")
        self.take("reason")
        program.close()


    def lost(self):
        program, window = self.launch(HARP)
        for _ in range(3):
            self.resample(window)
        window.wait_for_label("harp-48000 was not saved")
        self.take("lost")
        program.close()

    def closing(self):
        state = self._desktop.directory / "no folder"
        state.write_text("in the way", encoding="utf-8")
        program, window = self.launch(HARP, environment={"XDG_STATE_HOME": str(state)})
        self.resample(window)
        press_keys("ctrl+q")
        window.alert("Close ZEMO")
        self.take("closing")
        program.close()


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: screenshots.py OUTDIR")
    desktop = Desktop()
    try:
        photographer = Photographer(desktop, Path(sys.argv[1]).resolve())
        photographer.idle()
        photographer.loaded()
        photographer.spectrogram()
        photographer.marks()
        photographer.playing()
        photographer.stopping()
        photographer.refused()
        photographer.lost()
        photographer.closing()
    finally:
        desktop.close()


if __name__ == "__main__":
    main()
