"""The window without a mouse."""

import audio
import case
from window import PLAY, STOP, move_window, press_keys

setUpModule = case.start_desktop


class Keyboard(case.SoundCase):

    def load(self):
        samples = self.noise(5)
        self.launch(audio.write_caf(self.path("noise.caf"), self.rate, samples))
        self.window.wait_for_label("noise.caf")
        return samples

    def test_space_plays(self):
        self.load()
        press_keys("space")
        self.window.wait_for_title(STOP)
        self.listener.wait_for_sound(0.1)

    def test_space_stops(self):
        samples = self.load()
        press_keys("space")
        self.listener.wait_for_sound(0.1)
        press_keys("space")
        self.window.wait_for_title(PLAY)
        [heard] = self.listener.wait_for_plays(1)
        self.assert_exact(heard, samples)

    def test_space_plays_while_another_button_has_the_focus(self):
        self.load()
        press_keys("Tab")
        press_keys("space")
        self.window.wait_for_title(STOP)
        self.window.button("Peak")

    def test_enter_presses_the_button_that_has_the_focus(self):
        self.launch()
        press_keys("Tab")
        press_keys("Return")
        self.window.button("RMS")

    def test_ctrl_o_opens_the_panel(self):
        self.launch()
        press_keys("ctrl+o")
        self.window.dialog("Open")

    def test_escape_closes_the_panel(self):
        self.launch()
        press_keys("ctrl+o")
        self.window.dialog("Open")
        press_keys("Escape")
        self.window.wait_until_closed("Open")

    def test_ctrl_m_turns_the_mode(self):
        self.launch()
        press_keys("ctrl+m")
        self.window.button("RMS")

    def test_ctrl_t_tests_the_meter(self):
        self.launch()
        press_keys("ctrl+t")
        self.wait_for_log("val = ")

    def test_every_menu_opens_by_its_letter(self):
        items = {"f": "Open…", "e": "Revert", "r": "HD…", "p": "Play or Stop", "h": "About ZEMO"}
        self.launch()
        for letter, item in items.items():
            with self.subTest(letter=letter):
                press_keys(f"alt+{letter}")
                self.window.find("menu item", item)
                press_keys("Escape", "Escape")

    def test_a_menu_item_is_reached_by_letters_alone(self):
        self.launch()
        press_keys("alt+f")
        self.window.find("menu item", "Open as Raw Data…")
        press_keys("w")
        self.window.dialog("Open as Raw Data")

    def test_ctrl_q_quits_with_status_0(self):
        self.launch()
        press_keys("ctrl+q")
        self.assertEqual(self.program.status(), 0)

    def test_ctrl_q_quits_during_a_play(self):
        self.load()
        self.play()
        self.listener.wait_for_sound(0.1)
        press_keys("ctrl+q")
        self.assertEqual(self.program.status(), 0)


class Mouse(case.SoundCase):

    def test_a_click_plays(self):
        self.launch(audio.write_caf(self.path("noise.caf"), self.rate, self.noise(5)))
        self.window.wait_for_label("noise.caf")
        self.window.button(PLAY).click()
        self.window.wait_for_title(STOP)

    def test_a_click_turns_the_mode(self):
        self.launch()
        self.window.button("Peak").click()
        self.window.button("RMS")

    def test_the_window_takes_no_click_while_the_panel_is_open(self):
        self.launch()
        press_keys("ctrl+o")
        panel = self.window.dialog("Open")
        move_window("Open", 0, 0)  # it covers the button
        self.window.button("Test").click()
        self.window.find("push button", "Cancel", panel).click()
        self.window.wait_until_closed("Open")
        self.assertEqual(self.program.log_lines("val = "), [])


if __name__ == "__main__":
    case.main()
