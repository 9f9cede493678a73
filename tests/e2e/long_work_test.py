"""Work that takes long, in the real window."""

import audio
import case
from servers import wait_for
from window import PLAY, press_keys

setUpModule = case.start_desktop

HALF_AN_HOUR = 30 * 60 * 48000


class LongWork(case.SoundCase):
    """Half an hour of silence: it takes as long as any other sound, and no room on the disk."""

    def setUp(self):
        super().setUp()
        path = self.path("silence.caf")
        audio.write_caf(path, self.rate, self.noise(0.0))
        with open(path, "r+b") as file:  # the data reaches to the end of the file
            file.seek(0, 2)
            file.truncate(file.tell() + 4 * HALF_AN_HOUR)
        self.fix_length(path)
        self.launch(path)
        self.window.wait_for_label("silence.caf")
        self.samples = f"{HALF_AN_HOUR:,}"
        self.window.wait_for_label(self.samples)

    @staticmethod
    def fix_length(path):
        with open(path, "r+b") as file:
            head = file.read(4096)
            place = head.index(b"data") + 4
            file.seek(place)
            file.write((4 + 4 * HALF_AN_HOUR).to_bytes(8, "big"))

    def open_sheet(self, ratio):
        self.window.choose("Resample…")
        panel = self.window.dialog("Resample")
        field = next(control for control in panel.descendants() if control.role == "text")
        field.write(str(ratio))
        return panel

    def stretch(self, ratio):
        self.window.find("push button", "OK", self.open_sheet(ratio)).press()

    def wait_until_stretched(self, ratio):
        self.window.wait_for_label(f"{ratio * (HALF_AN_HOUR - 1) + 1:,}")
        self.window.wait_for_label("Done")

    def progress(self):
        return self.window.dialog("Please wait")

    def test_shows_its_progress_and_is_done(self):
        self.stretch(4)
        panel = self.progress()
        self.assertIsNotNone(self.window.look_for("label", "Transforming the sound…", panel))
        self.window.wait_until_closed("Please wait")
        self.wait_until_stretched(4)

    def test_goes_on_whatever_else_than_escape_is_typed(self):
        self.stretch(4)
        self.progress()
        press_keys("Return", "space", "KP_Enter", "Tab", "space", "Return")
        self.wait_until_stretched(4)

    def test_keys_that_follow_the_one_that_confirms_play_nothing(self):
        self.open_sheet(4)
        wait_for(lambda: self.window.focus() == ("text", "Resampling ratio"), "the field is there")
        press_keys("Return")

        def shows_the_panel_under_keys():
            press_keys("Return", "space", "Return")
            return self.window.look_for("dialog", "Please wait")
        wait_for(shows_the_panel_under_keys, "the panel is shown")
        self.wait_until_stretched(4)
        self.window.wait_for_title(PLAY)
        self.assertEqual(self.listener.plays_so_far(), 0)
        self.play()
        self.stop()

    def test_is_cancelled_by_its_button_and_by_escape(self):
        for cancel in (lambda panel: self.window.find("push button", "Cancel", panel).press(),
                       lambda panel: press_keys("Escape")):
            self.stretch(8)
            cancel(self.progress())
            self.window.wait_until_closed("Please wait")
            self.window.wait_for_label("Cancelled")
            self.window.wait_for_label(self.samples)

    def test_revert_brings_the_whole_sound_back_at_once(self):
        self.stretch(0.5)
        self.window.wait_for_label("Done")
        self.window.choose("Revert")
        self.window.wait_for_label(self.samples)


if __name__ == "__main__":
    case.main()
