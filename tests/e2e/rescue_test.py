"""Unsaved work outlives the program, however that ends; the next start offers it in one line."""

import os
import re
import signal

import audio
import case
from servers import wait_for
from sheets_test import RATE, SheetCase
from window import is_visible, press_keys

setUpModule = case.start_desktop

OFFER = re.compile(r"Not saved last time: (.*) \(.*, \d\d:\d\d\)")
CLOSE = "Close ZEMO"
NO_COPY = "No rescue copy of the sound can be kept: save it to be safe"
MODULATION = "Amplitude and Single-Sideband Modulation"
STEP = ("am", "300", "0.5")


class RescueCase(SheetCase):

    def setUp(self):
        case.WindowCase.setUp(self)
        self.state = self.path("state")
        self.sound = audio.write_caf(self.path("noise.caf"), RATE, audio.noise(RATE // 4, seed=3))

    def start(self, *arguments):
        self.launch(*arguments, environment={"XDG_STATE_HOME": str(self.state)})

    def start_with_sound(self):
        self.start(self.sound)
        self.window.wait_for_label("noise.caf")

    def modulate(self):
        sheet = self.open_sheet("AM…", MODULATION)
        self.write(sheet, {"Carrier frequency in hertz": "300", "Modulation index": "0.5"})
        self.press(sheet, "AM")
        self.confirm(sheet, MODULATION)

    def open_other(self):
        """Another sound, of the same name in another folder or not."""
        other = audio.write_caf(self.path("other.caf"), RATE, audio.noise(RATE // 8, seed=4))
        self.window.open(other)
        self.window.wait_for_label("other.caf")

    def copies(self):
        return sorted((self.state / "zemo" / "rescue").glob("*/*.caf"))

    def wait_for_copy(self, count=1):
        return wait_for(lambda: self.copies()[count - 1:], f"{count} rescue copies are there")[0]

    def end(self, number=None):
        """Ends the program by a signal, or by its own Quit."""
        if number is None:
            press_keys("ctrl+q")
        else:
            os.kill(self.program.process_id, number)
        return self.program.status()

    @staticmethod
    def audio(caf):
        """What follows the size and the edit count of the last chunk."""
        return caf[caf.index(b"data") + 16:]

    def offer(self):
        matches = [OFFER.fullmatch(label) for label in self.window.labels()]
        return next((match[1] for match in matches if match), None)

    def wait_for_offer(self, name="noise"):
        wait_for(lambda: self.offer() == name, f"{name} is offered")

    def assert_no_offer(self):
        """The copies have been looked for once the last line of the launch is written, or soon."""
        self.window.wait_for_title("Play")
        press_keys("ctrl+t")
        self.wait_for_log("TESTVAL", count=2)
        self.assertIsNone(self.offer())

    def assert_restores_the_work(self):
        self.start()
        self.wait_for_offer()
        self.window.button("Restore").press()
        self.window.wait_for_label("noise.caf")
        wait_for(lambda: self.offer() is None, "the offer has been answered")
        self.assert_saves_what_batch_makes(*STEP)
        self.path("window.caf").unlink()  # the next save is not to ask


class Ends(RescueCase):
    """Of whatever kind the end is, the work is there afterwards."""

    def work_and_end(self, number=None):
        self.start_with_sound()
        self.modulate()
        return self.end(number)

    def test_closing_the_window_just_closes_it(self):
        self.assertEqual(self.work_and_end(), 0)
        self.assert_restores_the_work()

    def test_requests_to_end_are_followed_as_a_user_would(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(number):
                self.assertEqual(self.work_and_end(number), 128 + number)
                self.assert_restores_the_work()
                self.end()

    def test_a_crash_waits_for_the_copy_and_stays_a_crash(self):
        for number in (signal.SIGSEGV, signal.SIGABRT):
            with self.subTest(number):
                self.assertEqual(self.work_and_end(number), -number)
                self.assert_restores_the_work()
                self.end()

    def test_a_kill_finds_the_copy_on_the_disk(self):
        self.start_with_sound()
        self.modulate()
        self.wait_for_copy()
        self.assertEqual(self.end(signal.SIGKILL), -signal.SIGKILL)
        self.assert_restores_the_work()

    def test_a_save_that_ends_the_program(self):
        self.start_with_sound()
        self.modulate()
        self.window.choose("Save As…")
        panel = self.window.dialog("Save As")
        field = self.window.find("text", "File name:", panel)
        field.write("/proc/noise.caf")
        wait_for(lambda: field.text() == "/proc/noise.caf", "the path stands in the panel")
        self.window.find("push button", "Save", panel).press()
        self.window.find("push button", "OK", self.window.alert("ZEMO: Error:")).press()
        self.assertEqual(self.program.status(), 1)
        self.assert_restores_the_work()


class Lost(RescueCase):
    """What a user cannot reach any more is offered at once, and after a kill."""

    def kill(self):
        self.assertEqual(self.end(signal.SIGKILL), -signal.SIGKILL)

    def test_work_before_another_file_survives_two_reverts_and_a_kill(self):
        self.start_with_sound()
        self.modulate()
        self.open_other()
        self.window.wait_for_label("noise was not saved")
        press_keys("ctrl+z")
        self.window.wait_for_label("noise.caf")
        press_keys("ctrl+z")
        self.window.wait_for_label("other.caf")
        self.wait_for_copy()
        self.kill()
        self.assert_restores_the_work()

    def test_two_works_survive_a_kill(self):
        self.start_with_sound()
        self.modulate()
        self.open_other()
        self.modulate()
        self.wait_for_copy(2)
        self.kill()
        self.start()
        self.wait_for_offer("other")
        self.window.button("Discard").press()
        self.wait_for_offer()
        self.window.button("Restore").press()
        self.window.wait_for_label("noise.caf")
        self.assert_saves_what_batch_makes(*STEP)

    def test_work_is_offered_when_an_open_empties_the_window(self):
        self.start_with_sound()
        self.modulate()
        self.path("three.f32").write_bytes(b"abc")
        self.window.open(self.path("three.f32"))
        self.window.wait_for_label("No sound")
        self.window.wait_for_label("noise was not saved")
        self.window.button("Restore").press()
        self.window.wait_for_label("noise.caf")
        self.assert_saves_what_batch_makes(*STEP)

    def test_the_title_has_the_name_and_the_mark(self):
        self.start_with_sound()
        wait_for(lambda: is_visible("noise.caf – ZEMO"), "the title has the name")
        self.modulate()
        wait_for(lambda: is_visible(r"noise.caf\* – ZEMO"), "the title has the mark")
        self.save("saved.caf")
        wait_for(lambda: is_visible("saved.caf – ZEMO"), "the title has the file's name")

    def test_save_as_suggests_the_name(self):
        self.start_with_sound()
        self.modulate()
        self.open_other()
        press_keys("ctrl+z")
        self.window.wait_for_label("noise.caf")
        self.window.choose("Save As…")
        panel = self.window.dialog("Save As")
        field = self.window.find("text", "File name:", panel)
        wait_for(lambda: field.text() == "noise.caf", "the sound's own name is suggested")


class Closing(RescueCase):
    """It asks where no copy could be kept, and nowhere else."""

    def setUp(self):
        super().setUp()
        self.state.mkdir()
        (self.state / "zemo").write_text("in the way", encoding="utf-8")

    def start_with_work(self):
        self.start_with_sound()
        self.modulate()
        wait_for(lambda: any(NO_COPY in label for label in self.window.labels()),
                 "the window says that no copy can be kept")

    def close_and_answer(self, button):
        press_keys("ctrl+q")
        question = self.window.alert(CLOSE)
        self.window.find("push button", button, question).press()

    def test_cancel_leaves_the_window_as_it_was(self):
        self.start_with_work()
        self.close_and_answer("Cancel")
        self.window.wait_until_closed(CLOSE, role="alert")
        self.assert_saves_what_batch_makes(*STEP)
        self.assertEqual(self.end(), 0)

    def test_close_without_saving_closes(self):
        self.start_with_work()
        self.close_and_answer("Close Without Saving")
        self.assertEqual(self.program.status(), 0)

    def test_save_saves_and_closes(self):
        self.start_with_work()
        self.close_and_answer("Save")
        panel = self.window.dialog("Save As")
        field = self.window.find("text", "File name:", panel)
        self.assertEqual(field.text(), "noise.caf")
        field.write(str(self.path("kept.caf")))
        wait_for(lambda: field.text() == str(self.path("kept.caf")), "the path is in the panel")
        self.window.find("push button", "Save", panel).press()
        self.assertEqual(self.program.status(), 0)
        self.assertEqual(self.path("kept.caf").read_bytes(), self.batch("made.caf", *STEP))

    def test_a_sound_that_was_only_opened_is_not_asked_about(self):
        self.start_with_sound()
        self.assertEqual(self.end(), 0)

    def test_a_request_to_end_is_not_answered_by_a_question(self):
        self.start_with_work()
        self.assertEqual(self.end(signal.SIGTERM), 128 + signal.SIGTERM)


class Offer(RescueCase):

    def leave_work(self):
        self.start_with_sound()
        self.modulate()
        self.end()

    def test_a_sound_that_was_only_opened_is_not_kept(self):
        self.start_with_sound()
        self.end()
        self.assertEqual(self.copies(), [])
        self.start()
        self.assert_no_offer()

    def test_a_saved_sound_is_not_kept(self):
        self.start_with_sound()
        self.modulate()
        self.save("saved.caf")
        self.end()
        self.assertEqual(self.copies(), [])

    def test_the_restored_copy_stays_until_it_is_saved(self):
        self.leave_work()
        for _ in range(2):
            self.start()
            self.wait_for_offer()
            self.window.button("Restore").press()
            self.window.wait_for_label("noise.caf")
            self.end()
        self.assert_restores_the_work()
        self.end()
        self.assertEqual(self.copies(), [])

    def test_declined_it_is_gone(self):
        self.leave_work()
        self.start()
        self.wait_for_offer()
        self.window.button("Discard").press()
        wait_for(lambda: self.offer() is None, "the offer has been answered")
        self.end()
        self.assertEqual(list((self.state / "zemo" / "rescue").iterdir()), [])

    def test_without_an_answer_the_next_start_offers_it_again(self):
        self.leave_work()
        self.start()
        self.wait_for_offer()
        self.end()
        self.assert_restores_the_work()

    def test_what_a_running_program_keeps_is_not_offered(self):
        self.start_with_sound()
        self.modulate()
        self.wait_for_copy()
        first = self.program
        self.start()
        self.assert_no_offer()
        first.close()

    def test_the_copy_is_the_sound_itself_in_a_file_of_the_user_alone(self):
        self.leave_work()
        [copy] = self.copies()
        self.assertEqual(copy.name, "noise.caf")
        self.assertEqual(copy.parent.stat().st_mode & 0o777, 0o700)
        kept, saved = self.audio(copy.read_bytes()), self.audio(self.batch("made.caf", *STEP))
        self.assertEqual(kept, saved[:-8], "a save has two samples more")


if __name__ == "__main__":
    case.main()
