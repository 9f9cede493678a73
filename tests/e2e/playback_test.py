"""Sounds in files of another program's making, through a real sound server."""

import audio
import case
from window import PLAY, STOP

setUpModule = case.start_desktop

SECONDS = 0.8


class PlaybackLaws:
    """What holds at every rate of the device."""

    def assert_file_plays(self, path, samples):
        self.launch()
        self.window.open(path)
        self.window.wait_for_label(path.name)
        self.assert_plays_whole(samples)

    def test_a_caf_is_heard_sample_for_sample_between_two_ramps(self):
        samples = self.noise(SECONDS)
        self.assert_file_plays(audio.write_caf(self.path("noise.caf"), self.rate, samples), samples)

    def test_an_aiff_c_is_heard_sample_for_sample_between_two_ramps(self):
        samples = self.noise(SECONDS, seed=2)
        path = audio.write_aiff_c(self.path("noise.aif"), self.rate, samples)
        self.assert_file_plays(path, samples)

    def test_the_title_is_play_again_unless_the_fade_reaches_past_the_end(self):
        samples = self.noise(SECONDS)
        self.launch(audio.write_caf(self.path("noise.caf"), self.rate, samples))
        self.window.wait_for_title(PLAY)
        self.assert_plays_whole(samples)
        past_the_end = audio.fade_reaches_past_the_end(len(samples))
        self.window.wait_for_title(STOP if past_the_end else PLAY)

    def test_the_window_shows_the_rate_of_the_device(self):
        self.launch()
        self.window.wait_for_label(f"{self.rate:,} Hz")


class At44100(PlaybackLaws, case.SoundCase):
    rate = 44100


class At48000(PlaybackLaws, case.SoundCase):
    rate = 48000


class At96000(PlaybackLaws, case.SoundCase):
    rate = 96000


if __name__ == "__main__":
    case.main()
