#!/usr/bin/python3
"""manual_screenshots.py OUTDIR: pictures of the window and its sheets for the manual.

ZEMO_PROGRAM names the program.
"""

import subprocess
import sys
from pathlib import Path

from screenshots import HARP, Photographer
from servers import Desktop, wait_for
from window import is_visible

SHEETS = {"Resample…": "Resample", "AM…": "Amplitude and Single-Sideband Modulation",
          "FM…": "Frequency Modulation", "HD…": "HD"}


class ManualPhotographer(Photographer):

    def take(self, name, title="ZEMO"):
        """One window; in few colours, for they are few."""
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{title}$"],
                               stdin=subprocess.DEVNULL, capture_output=True, text=True,
                               check=True).stdout.split()
        path = self._directory / f"{name}.png"
        subprocess.run(["import", "-window", found[-1], path], stdin=subprocess.DEVNULL,
                       check=True)
        subprocess.run(["convert", path, "-dither", "None", "-colors", "128", "-strip",
                        f"PNG8:{path}"], stdin=subprocess.DEVNULL, check=True)

    def window_during_a_play(self):
        self.playing()
        (self._directory / "playing.png").rename(self._directory / "window.png")

    def sheets(self):
        for item, title in SHEETS.items():
            program, window = self.launch(HARP)
            window.wait_for_label(HARP.name)
            window.choose(item)
            window.dialog(title)
            wait_for(lambda: is_visible(title), "the sheet is on the screen")
            self.take(f"sheet-{item.rstrip('…').lower()}", title)
            program.close()


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: manual_screenshots.py OUTDIR")
    desktop = Desktop()
    try:
        photographer = ManualPhotographer(desktop, Path(sys.argv[1]).resolve())
        photographer.window_during_a_play()
        photographer.sheets()
    finally:
        desktop.close()


if __name__ == "__main__":
    main()
