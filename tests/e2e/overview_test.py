"""The picture of the sound, as it is seen on the screen."""

from pathlib import Path

import numpy

import audio
import case
from servers import wait_for
from window import STOP, press_keys

setUpModule = case.start_desktop

VIEW = "Picture of the sound"
PLOT = (0x1B, 0x19, 0x23)
WAVE = ((0x7C, 0x70, 0xC4), (0xC4, 0xBA, 0xFF))  # the peak and the RMS
BEYOND = (0xFF, 0xA9, 0x40)
LINE = (255, 255, 255)
HEAD = 40  # rows of the legend and the button
EXAMPLE = Path(__file__).resolve().parents[2] / "examples" / "harp-48000.caf"


def of_colour(picture, *colours):
    """Where a picture has nearly one of these colours."""
    return numpy.any([abs(picture.astype(int) - colour).max(axis=2) <= 12 for colour in colours],
                     axis=0)


def width_of_wave(picture):
    """How many of the picture's columns have a wave of more than its least height in them."""
    return int((of_colour(picture, *WAVE).sum(axis=0) > 20).sum())


class Overview(case.SoundCase):

    def picture(self):
        return self.window.find("image", VIEW).picture()

    def wait_for_picture(self, condition, what):
        wait_for(lambda: condition(self.picture()), what)

    def launch_with(self, samples, name="sound.f32"):
        self.launch()
        self.window.open(audio.write_raw(self.path(name), samples))
        self.window.wait_for_label(name)

    def test_an_opened_sound_is_seen(self):
        self.launch()
        self.assertEqual(width_of_wave(self.picture()), 0)
        self.window.open(EXAMPLE)
        self.wait_for_picture(lambda p: width_of_wave(p) > 200, "the wave is drawn")
        self.window.wait_for_label("−1.9 dBFS")

    def test_the_wave_is_where_the_sound_is(self):
        samples = self.noise(1)
        samples[self.rate // 2:] = 0
        self.launch_with(samples)
        self.wait_for_picture(lambda p: width_of_wave(p) > 200, "the wave is drawn")
        picture = self.picture()[HEAD:]
        plot = of_colour(picture, PLOT, *WAVE).sum(axis=0).nonzero()[0]
        half = (plot[-1] - plot[0]) / 2
        self.assertAlmostEqual(width_of_wave(picture), half, delta=10)

    def test_a_transformation_is_drawn_and_revert_brings_the_picture_back(self):
        samples = self.noise(1)
        samples[self.rate // 2:] /= numpy.float32(8)
        self.launch_with(samples)
        self.wait_for_picture(lambda p: width_of_wave(p) > 200, "the wave is drawn")
        before = self.picture()
        self.window.choose("HD…")
        sheet = self.window.dialog("HD")
        self.window.find("push button", "OK", sheet).press()
        self.window.wait_for_label("Done")
        self.wait_for_picture(lambda p: (p != before).any(), "the picture is another")
        self.window.choose("Revert")
        self.wait_for_picture(lambda p: (p == before).all(), "the picture is as it was")

    def test_the_keyboard_turns_to_the_spectrogram_and_back(self):
        self.launch_with(self.noise(1))
        self.wait_for_picture(lambda p: width_of_wave(p) > 200, "the wave is drawn")
        before = self.picture()
        press_keys("ctrl+g")
        self.wait_for_picture(lambda p: width_of_wave(p) < 50, "the wave is gone")
        # Noise is bright, whatever the time and nearly whatever the frequency.
        self.wait_for_picture(lambda p: (p.max(axis=2) > 150).mean() > 0.4, "the noise is seen")
        press_keys("ctrl+g")
        self.wait_for_picture(lambda p: (p == before).all(), "the wave is there again")

    def test_the_button_shows_the_spectrogram(self):
        self.launch_with(self.noise(1))
        self.wait_for_picture(lambda p: width_of_wave(p) > 200, "the wave is drawn")
        self.window.find("check box", "Spectrogram").press()
        self.wait_for_picture(lambda p: width_of_wave(p) < 50, "the wave is gone")

    def test_samples_beyond_full_scale_are_marked(self):
        samples = self.noise(1)
        samples[self.rate // 2] = -1.5  # of this sign they are not scaled when they are opened
        self.launch_with(samples)
        self.wait_for_picture(lambda p: of_colour(p, BEYOND).sum() > 10, "it is marked")
        found = of_colour(self.picture()[HEAD:], BEYOND)
        places = found.sum(axis=0).nonzero()[0]
        self.assertLess(places[-1] - places[0], 6)

    def test_a_line_follows_the_play(self):
        self.launch_with(self.noise(6))
        self.wait_for_picture(lambda p: width_of_wave(p) > 200, "the wave is drawn")

        def line():
            return (of_colour(self.picture()[HEAD:], LINE).sum(axis=0) > 60).nonzero()[0]

        self.assertEqual(len(line()), 0)
        self.play()
        first = wait_for(lambda: list(line()), "a line is seen")[0]
        wait_for(lambda: len(line()) > 0 and line()[0] > first + 20, "it moves on")
        self.window.button(STOP).press()
        wait_for(lambda: len(line()) == 0, "it is gone")

    def test_a_refusal_says_both_rates_and_the_remedy(self):
        self.launch()
        self.window.open(audio.write_caf(self.path("other.caf"), 44100, self.noise(0.1)))
        self.window.alert("ZEMO: Error:")
        self.window.button("OK").press()
        self.window.wait_for_label("other.caf is at 44100 Hz, the output at 48000 Hz. "
                                   "Import Audio… converts it.")


if __name__ == "__main__":
    case.main()
