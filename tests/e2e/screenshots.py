#!/usr/bin/python3
"""screenshots.py OUTDIR: pictures of the window with the example sound in it.

ZEMO_PROGRAM names the program.
"""

import subprocess
import sys
from pathlib import Path

import audio
from servers import Desktop, SoundServer, wait_for
from window import GREEN, PLAY, STOP, Program, Window

RATE = 48000
HARP = Path(__file__).resolve().parents[2] / "examples" / "harp-48000.caf"


class Photographer:
    """Starts the program afresh for every scene."""

    def __init__(self, desktop, directory):
        self._desktop = desktop
        self._server = SoundServer(desktop, RATE)
        self._directory = directory
        directory.mkdir(parents=True, exist_ok=True)

    def launch(self, *arguments):
        program = Program(self._desktop, *arguments, environment=self._server.environment)
        return program, Window(program)

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
        window.wait_for_label(HARP.name)
        self.take("loaded")
        program.close()

    def playing(self):
        recording = self._server.record()
        program, window = self.launch(HARP)
        window.button(PLAY).press()
        audio.Listener(recording).wait_for_sound(0.3)
        window.wait_for_title(STOP)
        self.take("playing")
        program.close()
        recording.close()

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
        recording.close()

    def refused(self):
        program, window = self.launch(HARP)
        path = self._desktop.directory / "another rate.caf"
        window.open(audio.write_caf(path, 44100, audio.noise(4410, seed=1)))
        window.alert("ZEMO: Error:")
        wait_for(lambda: not window.look_for("dialog", "Open"), "the panel is gone")
        self.take("refused")
        program.close()


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: screenshots.py OUTDIR")
    desktop = Desktop()
    try:
        photographer = Photographer(desktop, Path(sys.argv[1]).resolve())
        photographer.idle()
        photographer.loaded()
        photographer.playing()
        photographer.stopping()
        photographer.refused()
    finally:
        desktop.close()


if __name__ == "__main__":
    main()
