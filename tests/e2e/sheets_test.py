"""The sheets, Revert and the save panel: the window makes what zemo-batch makes, bit for bit."""

import subprocess
from pathlib import Path

import audio
import case
from servers import wait_for
from window import PROGRAM, press_keys

setUpModule = case.start_desktop

BATCH = str(Path(PROGRAM).with_name("zemo-batch"))
RATE = 48000


class SheetCase(case.WindowCase):
    """A sound at the silent output's rate, and what to do with it."""

    def setUp(self):
        super().setUp()
        self.sound = audio.write_caf(self.path("noise.caf"), RATE, audio.noise(RATE // 4, seed=3))
        self.launch(self.sound)
        self.window.wait_for_label("noise.caf")

    def open_sheet(self, item, title):
        self.window.choose(item)
        return self.window.dialog(title)

    def write(self, sheet, fields):
        for name, text in fields.items():
            field = self.window.find("text", name, sheet)
            field.write(text)

    def press(self, sheet, name):
        """A button of any kind: a segment is a button that stays down."""
        next(c for c in sheet.descendants() if c.name == name and c.role != "label").press()

    def confirm(self, sheet, title):
        self.press(sheet, "OK")
        self.window.wait_until_closed(title)
        self.window.wait_for_label("Done")

    def save(self, name):
        self.window.choose("Save As…")
        panel = self.window.dialog("Save As")
        field = self.window.find("text", "File name:", panel)
        field.write(str(self.path(name)))
        self.window.find("push button", "Save", panel).press()
        self.window.wait_until_closed("Save As")
        self.window.wait_for_label(f"Saved as {name}")
        return self.path(name).read_bytes()

    def batch(self, name, *steps):
        path = self.path(f"batch-{name}")
        subprocess.run([BATCH, "--rate", str(RATE), "open", str(self.sound), *steps, "save",
                        str(path)], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL, check=True)
        return path.read_bytes()

    def assert_saves_what_batch_makes(self, *steps):
        self.assertEqual(self.save("window.caf"), self.batch("made.caf", *steps))


class Sheets(SheetCase):

    def test_resample(self):
        sheet = self.open_sheet("Resample…", "Resample")
        self.write(sheet, {"Resampling ratio": "0.75"})
        self.confirm(sheet, "Resample")
        self.assert_saves_what_batch_makes("resample", "0.75")

    def test_amplitude_modulation_and_the_sidebands(self):
        title = "Amplitude and Single-Sideband Modulation"
        for segment in ("AM", "SSB Lower", "SSB Upper"):
            sheet = self.open_sheet("AM…", title)
            self.write(sheet, {"Carrier frequency in hertz": "523.25", "Modulation index": "0.8"})
            self.press(sheet, segment)
            self.confirm(sheet, title)
        self.assert_saves_what_batch_makes("am", "523.25", "0.8", "ssb-lower", "523.25", "0.8",
                                           "ssb-upper", "523.25", "0.8")

    def test_frequency_modulation_shows_the_clamped_envelope(self):
        title = "Frequency Modulation"
        sheet = self.open_sheet("FM…", title)
        self.write(sheet, {"Carrier frequency in hertz": "220", "Modulation index": "1.5",
                           "Envelope rate in hertz": "99"})
        self.confirm(sheet, title)
        self.assert_saves_what_batch_makes("fm", "220", "1.5", "32")
        sheet = self.open_sheet("FM…", title)
        self.assertEqual(self.window.find("text", "Envelope rate in hertz", sheet).text(), "32")
        self.press(sheet, "Cancel")
        self.window.wait_until_closed(title)

    def test_a_sheet_that_does_nothing_clears_the_result_of_another(self):
        title = "Frequency Modulation"
        self.confirm(self.open_sheet("Resample…", "Resample"), "Resample")
        sheet = self.open_sheet("FM…", title)
        self.write(sheet, {"Carrier frequency in hertz": "low"})
        self.press(sheet, "OK")
        self.window.wait_until_closed(title)
        self.assertIsNone(self.window.look_for("label", "Done"))
        sheet = self.open_sheet("FM…", title)
        field = self.window.find("text", "Carrier frequency in hertz", sheet)
        self.assertEqual(field.text(), "0")  # what was read
        self.press(sheet, "Cancel")
        self.window.wait_until_closed(title)

    def test_hd(self):
        sheet = self.open_sheet("HD…", "HD")
        self.press(sheet, "Fourth")
        self.press(sheet, "500 Hz")
        self.write(sheet, {"Attack in samples": "300", "Knee": "0.25"})
        self.confirm(sheet, "HD")
        self.assert_saves_what_batch_makes("hd", "harmonics=2,4", "highpass=500", "attack=300",
                                           "knee=0.25")

    def test_revert_and_revert_again(self):
        sheet = self.open_sheet("Resample…", "Resample")
        self.confirm(sheet, "Resample")
        self.window.choose("Revert")
        self.window.wait_for_label(f"{RATE // 4:,}")
        self.assertEqual(self.save("reverted.caf"),
                         self.batch("reverted.caf", "resample", "1.5", "revert"))
        press_keys("ctrl+z")
        self.assert_saves_what_batch_makes("resample", "1.5")

    def test_an_aiff_c_file_is_saved_too(self):
        self.assertEqual(self.save("window.aif"), self.batch("made.aif"))

    def test_what_was_saved_opens_with_two_more_samples(self):
        self.save("again.caf")
        self.window.open(self.path("again.caf"))
        self.window.wait_for_label("again.caf")
        self.window.wait_for_label(f"{RATE // 4 + 2:,}")

    def test_a_sheet_blocks_real_clicks_on_the_window(self):
        before = len(self.program.log_lines("val = "))
        sheet = self.open_sheet("Resample…", "Resample")
        self.window.button("Test").click()
        self.press(sheet, "Cancel")
        self.window.wait_until_closed("Resample")
        self.assertEqual(len(self.program.log_lines("val = ")), before)
        self.window.button("Test").click()
        self.wait_for_log("val = ", before + 1)


if __name__ == "__main__":
    case.main()
