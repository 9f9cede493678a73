"""The window without a mouse."""

import audio
import case
from servers import wait_for
from window import PLAY, STOP, move_window, press_keys

setUpModule = case.start_desktop


class Keyboard(case.SoundCase):

    def load(self):
        samples = self.noise(20)
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
        self.assert_stopped(heard, samples)

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


class Tour(case.WindowCase):
    """What Tab comes to, in its order, all around."""

    main = [("push button", "Play"), ("push button", "Peak"), ("push button", "Test"),
            ("image", "Picture of the sound"), ("check box", "Spectrogram"),
            ("progress bar", "Level meter")]
    buttons = [("push button", "OK"), ("push button", "Cancel")]
    carrier = [("text", "Carrier frequency in hertz"), ("text", "Modulation index")]
    sheets = {
        ("r", "Resample"): [("text", "Resampling ratio"), *buttons],
        ("a", "Amplitude and Single-Sideband Modulation"):
            [*carrier, ("check box", "AM"), *buttons],
        ("f", "Frequency Modulation"):
            [*carrier, ("text", "Envelope rate in hertz"), *buttons],
        ("h", "HD"):
            [("check box", "Second"), ("check box", "Off"),
             ("text", "Pole of the DC filter"), ("text", "Attack in samples"), ("slider", "Mix"),
             ("text", "Knee"), ("text", "Compression slope"),
             ("check box", "Keep the sound’s peak level"), *buttons],
    }

    def setUp(self):
        super().setUp()
        sound = audio.write_caf(self.path("noise.caf"), 48000, audio.noise(4800, seed=1))
        self.launch(sound)
        self.window.wait_for_label("noise.caf")

    def wait_for_focus(self, expected):
        found = []

        def is_there():
            found[:] = [self.window.focus()]
            return found[0] == expected

        try:
            wait_for(is_there, f"{expected} has the focus")
        except AssertionError as error:
            raise AssertionError(f"{error}; it is {found[0]}") from None

    def tour(self, stops, key="Tab"):
        self.wait_for_focus(stops[0])
        for stop in [*stops[1:], stops[0]]:
            press_keys(key)
            self.wait_for_focus(stop)

    def open_sheet(self, letter, title):
        press_keys("alt+r")
        self.window.find("menu item", "HD…")
        press_keys(letter)
        sheet = self.window.dialog(title)
        self.wait_for_focus(self.sheets[letter, title][0])
        return sheet

    def test_tab_goes_around_the_main_window(self):
        self.tour(self.main)

    def test_shift_and_tab_goes_back(self):
        self.tour([self.main[0], *reversed(self.main[1:])], "shift+Tab")

    def test_tab_goes_around_every_sheet(self):
        for (letter, title), stops in self.sheets.items():
            with self.subTest(sheet=title):
                self.open_sheet(letter, title)
                self.tour(stops)
                press_keys("Escape")
                self.window.wait_until_closed(title)

    def test_a_sheet_is_filled_in_and_applied_by_keys_alone(self):
        self.open_sheet("r", "Resample")
        press_keys("2", "Return")
        self.window.wait_until_closed("Resample")
        self.window.wait_for_label("9,598")

    def test_arrows_choose_a_segment_and_letters_reach_it(self):
        title = "Amplitude and Single-Sideband Modulation"
        sheet = self.open_sheet("a", title)
        press_keys("alt+m")
        self.wait_for_focus(("check box", "AM"))
        press_keys("Right", "Right")
        self.wait_for_focus(("check box", "SSB Upper"))
        chosen = self.window.find("check box", "SSB Upper", sheet)
        wait_for(lambda: chosen.has("CHECKED"), "the segment is on")

    def test_space_turns_segments_that_do_not_exclude_each_other(self):
        sheet = self.open_sheet("h", "HD")
        press_keys("Right")
        self.wait_for_focus(("check box", "Fourth"))
        press_keys("space")
        for name in ("Second", "Fourth"):
            segment = self.window.find("check box", name, sheet)
            wait_for(lambda: segment.has("CHECKED"), f"{name} is on")

    def test_arrows_move_the_slider(self):
        self.open_sheet("h", "HD")
        press_keys("alt+m", "Right")
        slider = self.window.find("slider", "Mix")
        wait_for(lambda: slider.value() == 501, "the slider is one step further")

    def test_tab_reaches_the_boxes_of_the_open_panel(self):
        press_keys("ctrl+o")
        self.window.dialog("Open")
        self.wait_for_focus(("text", "File name:"))
        for stop in (("combo box", "All Files (*)"), ("push button", "Cancel"),
                     ("check box", "Swap Bytes"), ("check box", "Normalize")):
            press_keys("Tab")
            self.wait_for_focus(stop)

    def test_enter_on_the_picture_turns_to_the_spectrogram(self):
        press_keys("Tab", "Tab", "Tab")
        self.wait_for_focus(self.main[3])
        press_keys("Return")
        button = self.window.find("check box", "Spectrogram")
        wait_for(lambda: button.has("CHECKED"), "the spectrogram is on")

    def test_the_manual_is_opened_scrolled_and_closed(self):
        press_keys("F1")
        self.window.dialog("ZEMO Manual")
        bar = wait_for(lambda: self.window.look_for("scroll bar", ""), "there is a scroll bar")
        press_keys("Next")
        wait_for(lambda: bar.value() > 0, "the text has moved")
        press_keys("Escape")
        self.window.wait_until_closed("ZEMO Manual")

    def test_every_menu_item_is_reached_by_a_letter_and_arrows(self):
        for letter in "ferpvh":
            with self.subTest(menu=letter):
                press_keys(f"alt+{letter}")
                items = wait_for(self.open_items, "a menu is open")
                self.wait_for_focus(items[0])
                for item in items[1:]:
                    press_keys("Down")
                    self.wait_for_focus(item)
                press_keys("Escape", "Escape")
                wait_for(lambda: not self.open_items(), "the menu is closed")

    def open_items(self):
        return [(control.role, control.name) for control in self.window.controls()
                if "menu item" in control.role and control.has("SHOWING")
                and control.name not in ("", "File", "Edit", "Process", "Play", "View", "Help")]


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
