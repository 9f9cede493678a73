"""What the two open panels do with files of all kinds."""

import os

import numpy

import audio
import case
from servers import wait_for
from window import press_keys

setUpModule = case.start_desktop

SECONDS = 0.5
ALERT = "ZEMO: Error:"


class Files(case.SoundCase):

    def assert_opened_and_plays(self, path, samples, boxes=()):
        self.launch()
        self.window.open(path, boxes)
        self.window.wait_for_label(path.name)
        self.assert_plays_whole(samples)

    def refuse(self, name):
        """Opens a sound at another rate than the device's."""
        self.window.open(audio.write_caf(self.path(name), 44100, self.noise(SECONDS, seed=9)))
        return self.window.alert(ALERT)

    def dismiss(self):
        self.window.button("OK").press()
        self.window.wait_until_closed(ALERT, role="alert")

    def test_a_sound_at_another_rate_is_refused_by_its_escaped_name(self):
        self.launch()
        alert = self.refuse("other rate.caf")
        self.window.find("label", "ZEMO CAN'T READ THE FILE:\nother%20rate.caf", alert)

    def test_a_refused_sound_leaves_the_old_one(self):
        samples = self.noise(SECONDS)
        self.launch(audio.write_caf(self.path("old.caf"), self.rate, samples))
        self.refuse("other.caf")
        self.dismiss()
        self.window.wait_for_label("old.caf")
        self.assert_plays_whole(samples)

    def test_a_raw_file_is_heard_as_it_is(self):
        samples = self.noise(SECONDS)
        self.assert_opened_and_plays(audio.write_raw(self.path("noise.f32"), samples), samples)

    def test_swap_bytes_reads_big_endian_floats(self):
        samples = self.noise(SECONDS)
        path = audio.write_raw(self.path("noise.f32"), samples, byte_order=">")
        self.assert_opened_and_plays(path, samples, boxes=["Swap Bytes"])

    def test_normalize_divides_by_a_tenth_more_than_the_peak(self):
        samples = abs(self.noise(SECONDS)) / numpy.float32(4)
        path = audio.write_caf(self.path("noise.caf"), self.rate, samples)
        expected = audio.normalized(samples)
        self.assertAlmostEqual(expected.max(), 1 / 1.1, places=6)
        self.assert_opened_and_plays(path, expected, boxes=["Normalize"])

    def test_a_negative_peak_gives_way_to_the_sample_after_it(self):
        samples = self.noise(SECONDS)
        samples[-2:] = -0.96875, 0.5
        path = audio.write_raw(self.path("noise.f32"), samples)
        self.assert_opened_and_plays(path, samples / numpy.float32(0.55), boxes=["Normalize"])

    def test_both_boxes_work_together(self):
        samples = self.noise(SECONDS)
        path = audio.write_raw(self.path("noise.f32"), samples, byte_order=">")
        self.assert_opened_and_plays(path, audio.normalized(samples),
                                     boxes=["Swap Bytes", "Normalize"])

    def test_a_sound_that_is_too_loud_is_normalized_unasked(self):
        samples = 2 * abs(self.noise(SECONDS))
        path = audio.write_raw(self.path("loud.f32"), samples)
        self.assert_opened_and_plays(path, audio.normalized(samples))

    def test_raw_data_is_always_normalized(self):
        samples = abs(self.noise(SECONDS)) / numpy.float32(2)
        path = audio.write_raw(self.path("quiet.f32"), samples)
        self.launch()
        self.window.open_raw(path)
        self.window.wait_for_label("quiet.f32")
        self.assert_plays_whole(audio.normalized(samples))

    def test_raw_data_in_the_other_byte_order_is_swapped_on_request(self):
        samples = self.noise(SECONDS)
        path = audio.write_raw(self.path("noise.f32"), samples, byte_order=">")
        self.launch()
        self.window.open_raw(path, boxes=["Swap Bytes"])
        self.window.wait_for_label("noise.f32")
        self.assert_plays_whole(audio.normalized(samples))

    def odd_file(self):
        """A sound whose name is Latin-1, as old systems have left it, and how the window shows it."""
        samples = self.noise(SECONDS)
        path = audio.write_caf(self.path(os.fsdecode(b"caf\xe9.caf")), self.rate, samples)
        return path, "caf\ufffd.caf", samples

    def test_a_name_that_is_not_utf8_opens_from_the_command_line(self):
        path, shown, samples = self.odd_file()
        self.launch(path)
        self.window.wait_for_label(shown)
        self.assert_plays_whole(samples)

    def test_a_name_that_is_not_utf8_is_chosen_below_the_list_of_the_panel(self):
        path, shown, samples = self.odd_file()
        self.launch()
        self.window.choose("Open…")
        panel = self.window.dialog("Open")
        field = self.window.find("text", "File name:", panel)
        field.write(str(path.parent))
        wait_for(lambda: field.text() == str(path.parent), "the folder stands in the panel")
        self.window.find("push button", "Open", panel).press()
        self.window.find("label", "Names that are not UTF-8:", panel)
        names = self.window.find("combo box", "Choose…", panel)
        names.click()
        press_keys("Down", "Return")
        wait_for(lambda: field.text() == "caf%E9.caf", "the name stands in the panel")
        self.window.find("push button", "Open", panel).press()
        self.window.wait_until_closed("Open")
        self.window.wait_for_label(shown)
        self.assert_plays_whole(samples)

    def test_a_name_that_is_not_utf8_may_be_typed(self):
        path, shown, samples = self.odd_file()
        self.launch()
        self.window.open(f"{path.parent}/caf%E9.caf")
        self.window.wait_for_label(shown)
        self.assert_plays_whole(samples)

    def test_a_caf_opened_as_raw_data_has_its_header_in_the_sound(self):
        path = audio.write_caf(self.path("noise.caf"), self.rate, self.noise(SECONDS))
        words = path.stat().st_size // 4
        self.launch()
        self.window.open_raw(path)
        self.window.wait_for_label(f"{words:,}")


if __name__ == "__main__":
    case.main()
