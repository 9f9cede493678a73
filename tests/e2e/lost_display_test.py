"""A log-out: the display goes, and the program with it. A file of its own: the display is gone then."""

import case
from rescue_test import STEP, RescueCase

setUpModule = case.start_desktop


class LostDisplay(RescueCase):
    def test_the_work_is_there_afterwards(self):
        self.start_with_sound()
        self.modulate()
        case.desktop.kill_display()
        self.assertNotEqual(self.program.status(), 0)
        [copy] = self.copies()
        saved = self.batch("made.caf", *STEP)
        self.assertEqual(copy.stat().st_size, len(saved) - 8, "a save has two samples more")


if __name__ == "__main__":
    case.main()
