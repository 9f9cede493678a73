"""The program as the package installs it, in its window and with a sound server.

tools/check-package runs this; ZEMO_PROGRAM enters the system that the package is installed in, and
ZEMO_EXAMPLES is where the tests see that system's examples.
"""

import os
import re
import subprocess
import sys
import unittest
from pathlib import Path

import numpy

sys.path.append(str(Path(__file__).resolve().parents[1] / "e2e"))

import audio  # noqa: E402
import case  # noqa: E402

setUpModule = case.start_desktop

PACKAGING = Path(__file__).resolve().parents[2] / "packaging"
EXAMPLES = Path("/usr/share/doc/zemo/examples")
EXAMPLES_HERE = Path(os.environ["ZEMO_EXAMPLES"])


def samples_of(path):
    """As another program reads them."""
    raw = subprocess.run(["ffmpeg", "-v", "error", "-i", str(path), "-f", "f32le", "-"], check=True,
                         stdin=subprocess.DEVNULL, stdout=subprocess.PIPE).stdout
    return numpy.frombuffer(raw, dtype="<f4")


class TheInstalledProgram(case.SoundCase):
    def test_opens_and_plays_an_example(self):
        samples = samples_of(EXAMPLES_HERE / "harp-48000.caf")
        self.launch(EXAMPLES / "harp-48000.caf")
        self.window.wait_for_label("harp-48000.caf")
        self.window.wait_for_label("48,000 Hz")
        self.play()
        [heard] = self.listener.wait_for_plays(1)
        self.assert_whole(heard, samples)

    def property(self, name):
        return subprocess.run(["xprop", "-name", "ZEMO", name], check=True, text=True,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE).stdout

    def test_has_its_icon_on_its_window(self):
        self.launch()
        self.assertIn("Icon (128 x 128)", self.property("_NET_WM_ICON"))

    def test_is_the_window_of_its_desktop_entry(self):
        self.launch()
        entry = (PACKAGING / "zemo.desktop").read_text(encoding="utf-8")
        window_class = re.search(r"^StartupWMClass=(.*)$", entry, re.M).group(1)
        self.assertIn(f'"{window_class}"', self.property("WM_CLASS"))


if __name__ == "__main__":
    case.main()
