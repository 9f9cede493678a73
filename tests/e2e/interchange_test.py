"""Import, export, and files that are dropped or given at the start."""

import itertools
import os
import subprocess

import numpy

import audio
import case
from servers import TEST_PROGRAMS, end, wait_for
from window import is_visible, move_window

setUpModule = case.start_desktop

DRAG_SOURCE = TEST_PROGRAMS / "drag_source"


def ffmpeg(*arguments):
    subprocess.run(["ffmpeg", "-loglevel", "error", "-y", *map(str, arguments)],
                   stdin=subprocess.DEVNULL, check=True)


def decoded(path, rate):
    """A file's samples by ffmpeg."""
    output = subprocess.run(["ffmpeg", "-loglevel", "error", "-i", path, "-f", "f32le", "-ar",
                             str(rate), "-"], stdin=subprocess.DEVNULL, capture_output=True,
                            check=True).stdout
    return numpy.frombuffer(output, dtype="<f4")


class Interchange(case.SoundCase):

    def stereo(self, name, seconds=1.0, rate=48000, codec=()):
        """A sound file of two channels by ffmpeg: 440 Hz at 0.5 left, at 0.25 right."""
        path = self.path(name)
        sine = f"sine=frequency=440:sample_rate={rate}:duration={seconds}"
        ffmpeg("-f", "lavfi", "-i", sine, "-filter_complex",
               "[0]pan=stereo|c0=4*c0|c1=2*c0", *codec, path)
        return path

    def import_file(self, path):
        self.choose_file("Import Audio", "Import", path)

    def export_to(self, path):
        self.choose_file("Export Audio", "Export", path)

    def choose_file(self, title, button, path):
        self.window.choose(f"{title}…")
        panel = self.window.dialog(title)
        field = self.window.find("text", "File name:", panel)
        field.write(str(path))
        self.window.find("push button", button, panel).press()
        self.window.wait_until_closed(title)

    def wait_for_result(self, beginning):
        return wait_for(lambda: [text for text in self.window.labels()
                                 if text.startswith(beginning)], f"a result {beginning}")[0]

    def test_a_stereo_sound_at_another_rate_is_imported_and_plays(self):
        path = self.stereo("tone.flac", seconds=1.0, rate=44100)
        self.launch()
        self.import_file(path)
        self.window.wait_for_label("tone.flac")
        result = self.wait_for_result("Imported: ")
        self.assertIn("2 channels, 44,100 Hz", result)
        self.window.wait_for_label("48,000")  # samples at the output's rate
        before = self.listener.plays_so_far()
        self.play()
        heard = self.listener.wait_for_plays(before + 1)[-1]
        self.assertAlmostEqual(float(abs(heard).max()), 0.375, delta=0.002)  # the mean of both

    def test_what_is_exported_is_what_other_programs_read(self):
        samples = self.noise(0.5)
        self.launch(audio.write_caf(self.path("noise.caf"), self.rate, samples))
        self.window.wait_for_label("noise.caf")
        for name, tolerance in (("noise.wav", 0.0), ("noise.flac", 2.0 ** -23)):
            self.export_to(self.path(name))
            self.wait_for_result(f"Exported as {name}")
            difference = abs(decoded(self.path(name), self.rate) - samples)
            self.assertLessEqual(float(difference.max()), tolerance)

    def test_a_damaged_file_gives_a_sentence_and_the_sound_stays(self):
        samples = self.noise(0.5)
        path = self.path("damaged.flac")
        path.write_bytes(b"fLaC" + bytes(range(256)) * 40)
        self.launch(audio.write_caf(self.path("old.caf"), self.rate, samples))
        self.window.wait_for_label("old.caf")
        self.import_file(path)
        wait_for(lambda: any(text.endswith(".") for text in self.window.labels()), "a sentence")
        self.window.wait_for_label("old.caf")
        self.assert_plays_whole(samples)

    def test_a_file_given_at_the_start_is_imported_when_it_is_known(self):
        self.launch(self.stereo("tone.ogg", codec=["-c:a", "libvorbis"]))
        self.window.wait_for_label("tone.ogg")
        self.assertIn("2 channels", self.wait_for_result("Imported: "))

    def test_a_file_that_nobody_knows_is_opened_raw_once_the_user_agrees(self):
        samples = self.noise(0.5)
        self.launch(audio.write_raw(self.path("noise.bin"), samples))
        question = self.window.alert("Open as Raw Data")
        self.window.find("label", "noise.bin is no sound file that ZEMO knows.", question)
        self.window.find("push button", "Open as Raw Data", question).press()
        self.window.wait_for_label("noise.bin")
        self.assert_plays_whole(samples)

    def test_a_user_who_does_not_agree_keeps_the_sound(self):
        self.launch(audio.write_raw(self.path("noise.bin"), self.noise(0.5)))
        question = self.window.alert("Open as Raw Data")
        self.window.find("push button", "Cancel", question).press()
        self.window.wait_until_closed("Open as Raw Data", role="alert")
        self.window.wait_for_label("No sound yet")

    def drag(self, path):
        """A real drag from another program's window onto the meter."""
        said = self.path("dragged")
        with open(said, "wb") as output:
            source = case.desktop.start([DRAG_SOURCE, str(path)], stdout=output)
        self.addCleanup(end, source)
        wait_for(lambda: is_visible("Drag source"), "the other window is there")
        move_window("Drag source", 20, 20)
        move_window("ZEMO", 300, 150)
        left, top, width, height = self.window.button("Play").extents()
        goal = (left + width // 2, top - height)
        places = itertools.cycle([(120, 70), goal, (goal[0] + 5, goal[1])])
        self.xdotool("mousemove", 100, 60)
        self.xdotool("mousedown", 1)

        def is_accepted():
            self.xdotool("mousemove", *next(places))
            return "accepted" in said.read_text(encoding="utf-8")

        wait_for(is_accepted, "the window takes what is dragged over it")
        self.xdotool("mousemove", *goal)
        self.xdotool("mouseup", 1)

    @staticmethod
    def xdotool(*words):
        subprocess.run(["xdotool", *map(str, words)], stdin=subprocess.DEVNULL, check=True)

    def test_a_dropped_file_goes_the_way_of_open(self):
        samples = self.noise(0.5)
        self.launch()
        self.drag(audio.write_caf(self.path("dropped.caf"), self.rate, samples))
        self.window.wait_for_label("dropped.caf")
        self.assert_plays_whole(samples)

    def test_a_dropped_file_whose_name_is_not_utf8_opens_too(self):
        samples = self.noise(0.5)
        self.launch()
        self.drag(audio.write_caf(self.path(os.fsdecode(b"caf\xe9 100%.caf")), self.rate, samples))
        self.window.wait_for_label("caf\ufffd 100%.caf")
        self.assert_plays_whole(samples)

    def test_a_file_whose_name_is_not_utf8_is_imported(self):
        self.stereo("tone.wav").rename(self.path(os.fsdecode(b"t\xf6n.wav")))
        self.launch()
        self.import_file(self.path("t%F6n.wav"))
        self.window.wait_for_label("t\ufffdn.wav")
        self.wait_for_result("Imported: ")

    def test_a_dropped_file_of_another_kind_is_imported(self):
        self.launch()
        self.drag(self.stereo("dropped.wav"))
        self.window.wait_for_label("dropped.wav")
        self.wait_for_result("Imported: ")


if __name__ == "__main__":
    case.main()
