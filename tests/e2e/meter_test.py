"""The level meter on the screen, against the quads that its level calls for."""

import audio
import case
import meter
from servers import wait_for

setUpModule = case.start_desktop

TOLERANCE = 3  # of 255
SECONDS = 30  # longer than any test looks


class Meter(case.SoundCase):

    def wait_for_quads(self, quads):
        last = []

        def shown():
            last[:] = [meter.difference(self.window.meter(), quads)]
            return last[0] <= TOLERANCE

        try:
            wait_for(shown, "the meter shows these quads")
        except AssertionError as error:
            raise AssertionError(f"{error} (off by {last[0]:.0f} of 255)") from None

    def play_constant(self, level):
        samples = audio.constant(level, SECONDS * self.rate)
        self.launch(audio.write_caf(self.path("constant.caf"), self.rate, samples))
        self.window.wait_for_label("constant.caf")
        self.play()

    def clear(self):
        self.window.button("Test").click(holding="alt")
        self.assertEqual(float(self.wait_for_log("val = ")), 0)

    def press_test(self, count):
        """The level that the Test button logs when it is pressed for the n-th time."""
        self.window.button("Test").click()
        return float(self.wait_for_log("val = ", count))

    def test_the_meter_is_empty_from_the_start(self):
        samples = audio.constant(0.5, self.rate)
        self.launch(audio.write_caf(self.path("constant.caf"), self.rate, samples))
        self.window.wait_for_label("constant.caf")
        self.wait_for_quads(meter.bar(0))

    def test_the_menu_clears_the_meter(self):
        self.launch()
        self.press_test(1)
        self.window.choose("Clear the Meter")
        self.assertEqual(float(self.wait_for_log("val = ", 2)), 0)
        self.wait_for_quads(meter.bar(0))

    def test_a_level_in_the_lower_zone_is_one_gradient(self):
        self.play_constant(0.5)
        self.wait_for_quads(meter.bar(0.5))

    def test_a_level_in_the_upper_zone_is_two_gradients(self):
        self.play_constant(0.9)
        self.wait_for_quads(meter.bar(0.9))

    def test_a_negative_level_is_drawn_by_its_magnitude(self):
        self.play_constant(-0.5)
        self.wait_for_quads(meter.bar(0.5))

    def test_rms_of_a_constant_is_1414_thousandths_of_it(self):
        self.play_constant(0.5)
        self.window.button("Peak").press()
        self.window.button("RMS")
        self.wait_for_quads(meter.bar(1.414 * 0.5))

    def test_the_mode_goes_back_to_the_peak(self):
        self.play_constant(0.5)
        self.window.button("Peak").press()
        self.window.button("RMS").press()
        self.window.button("Peak")
        self.wait_for_quads(meter.bar(0.5))

    def test_the_meter_is_empty_after_a_stop(self):
        self.play_constant(0.9)
        self.wait_for_quads(meter.bar(0.9))
        self.stop()
        self.wait_for_quads(meter.bar(0))

    def test_the_test_button_shows_a_level_of_its_own(self):
        self.launch()
        self.clear()
        level = self.press_test(2)
        self.assertNotEqual(level, 0)
        self.wait_for_quads(meter.bar(level))

    def test_alt_and_test_clears_the_meter(self):
        self.launch()
        self.press_test(1)
        self.window.button("Test").click(holding="alt")
        self.assertEqual(float(self.wait_for_log("val = ", 2)), 0)
        self.wait_for_quads(meter.bar(0))

    def test_a_falling_level_leaves_a_ghost_of_the_one_before(self):
        self.launch()
        self.clear()
        levels = [self.press_test(2)]
        while abs(levels[-1]) >= abs(levels[-2:][0]):
            self.assertLess(len(levels), 20, "no level ever fell")
            self.wait_for_quads(meter.bar(levels[-1]))
            levels.append(self.press_test(len(levels) + 2))
        before, level = levels[-2:]
        self.wait_for_quads(meter.bar(level) + meter.ghost(level, before))

    def test_the_test_button_does_nothing_during_a_play(self):
        self.play_constant(0.5)
        self.wait_for_quads(meter.bar(0.5))
        self.window.button("Test").press()
        self.stop()
        self.assertEqual(self.program.log_lines("val = "), [])


if __name__ == "__main__":
    case.main()
