"""The manual beside the window."""

import case
from servers import wait_for
from window import is_visible, press_keys

setUpModule = case.start_desktop

TITLE = "ZEMO Manual"


class Manual(case.WindowCase):

    def open_manual(self):
        self.launch()
        press_keys("F1")
        manual = self.window.dialog(TITLE)
        wait_for(lambda: is_visible(TITLE), "the manual is on the screen")
        return self.window.find("label", "Manual", manual)

    def test_f1_opens_it_at_its_first_heading(self):
        text = self.open_manual()
        self.assertEqual(text.text().splitlines()[0], "ZEMO, the manual")
        self.assertTrue(text.has("SHOWING"))
        # Ink on paper, where the heading is: below the window's edge, in large letters.
        heading = text.picture()[20:80, 20:400].astype(int)
        self.assertGreater((abs(heading - heading[0, 0]).max(axis=2) > 100).sum(), 500)

    def test_the_menu_has_it(self):
        self.launch()
        self.window.choose("Manual")
        self.window.dialog(TITLE)

    def test_it_is_read_with_the_keyboard(self):
        text = self.open_manual()
        wait_for(lambda: text.picture().min() < text.picture().max(), "the manual is painted")
        before = text.picture()
        press_keys("Next")
        wait_for(lambda: (text.picture() != before).any(), "the text has moved")

    def test_escape_closes_it_and_the_program_goes_on(self):
        self.open_manual()
        press_keys("Escape")
        self.window.wait_until_closed(TITLE)
        self.assertTrue(self.program.is_running())

    def test_the_program_ends_with_its_window_though_the_manual_is_open(self):
        self.open_manual()
        self.window.choose("Quit")
        self.assertEqual(self.program.status(), 0)


if __name__ == "__main__":
    case.main()
