"""What zemo-batch says and does: batch_program_test.py ZEMO_BATCH"""

import array
import math
import os
import random
import struct

from batch import (SPECIALS, BatchTest, caf, caf_head, floats_of, main, random_words, rounded,
                   words_of)


def said(result):
    """The program's own sentences on standard error, without the trace lines."""
    return [line for line in result.stderr.decode("utf-8", "surrogateescape").splitlines()
            if line.startswith("zemo-batch: ") and line.endswith(".")]


# One press of Play, told from the outside ----------------------------------------------------

def play(samples, frames, rms):
    """What one play delivers and the meter's value after each call, by the rules of playing: a
    call of fade-in, steady calls, a call of fade-out when less than two calls' samples are left,
    silent calls while the idle count runs out. A sound that ends within a call ends the play. The
    fade-out and every silent call leave an empty meter."""
    delivered, levels = [], []
    state, idle, position, running = "fade-in", 2, 0, True
    while running:
        peak, total = 0.0, 0.0
        for i in range(frames):
            frame = 0.0
            if position < len(samples):
                frame = faded(samples[position], state, i, frames)
                if abs(frame) >= abs(peak):
                    peak = frame
                total = rounded(total + rounded(frame * frame))
            else:
                state, running = "silent", False
            delivered.append(frame)
            position += 1
        level = rounded(1.414 * rounded(math.sqrt(rounded(total / frames)))) if rms else peak
        if state == "silent":
            level = 0.0
            if idle > 0:
                idle -= 1
            else:
                running = False
        levels.append(0.0 if state == "fade-out" else level)
        state = following(state, len(samples) - position, frames)
    return delivered, levels


def faded(sample, state, i, frames):
    if state == "fade-in":
        return rounded(rounded(sample * i) / frames)
    if state == "fade-out":
        return rounded(rounded(sample * (frames - i)) / frames)
    return sample if state == "steady" else 0.0


def following(state, left, frames):
    if state == "steady":
        return "fade-out" if left < 2 * frames else "steady"
    return {"fade-in": "steady", "fade-out": "silent", "silent": "silent"}[state]


class Rendering(BatchTest):

    def check(self, count, frames, rms):
        source = random.Random(count * 31 + frames)
        samples = [rounded(source.uniform(-1, 1)) for _ in range(count)]
        self.raw("in.f32", samples)
        self.done("--rate", "48000", "open", "in.f32", "render", "out.caf", f"frames={frames}",
                  "rms=" + ("on" if rms else "off"), "levels=levels.txt")
        delivered, levels = play(samples, frames, rms)
        self.assertEqual(self.content("out.caf"), caf(48000.0, delivered), (count, frames, rms))
        found = [rounded(float(line)) for line in self.content("levels.txt").split()]
        self.assertEqual(found, levels, (count, frames, rms))

    def test_delivers_what_one_press_of_play_delivers(self):
        for frames in (1, 2, 7, 64, 512):
            for calls in (0.5, 1, 1.5, 2, 2.5, 3, 4.25, 9):
                self.check(max(1, round(frames * calls)), frames, rms=False)

    def test_ends_right_around_every_whole_number_of_calls(self):
        for calls in range(1, 6):
            for more in (-1, 0, 1):
                self.check(calls * 32 + more, 32, rms=False)

    def test_shows_the_level_in_either_mode(self):
        for count in (1, 100, 1000, 5000):
            self.check(count, 128, rms=True)
            self.check(count, 128, rms=False)

    def test_has_512_frames_a_call_where_none_are_asked_for(self):
        samples = [rounded(math.sin(i / 10) / 2) for i in range(3000)]
        self.raw("in.f32", samples)
        self.done("open", "in.f32", "render", "out.caf")
        self.assertEqual(self.content("out.caf"), caf(44100.0, play(samples, 512, False)[0]))

    def test_does_not_change_the_sound(self):
        self.raw("in.f32", [0.5] * 2000)
        self.done("open", "in.f32", "render", "out.caf", "dump", "out.f32")
        self.assertEqual(self.content("out.f32"), self.content("in.f32"))

    def test_the_same_sound_twice_delivers_the_same(self):
        self.raw("in.f32", [0.5] * 2000)
        self.done("open", "in.f32", "render", "1.caf", "render", "2.caf")
        self.assertEqual(self.content("1.caf"), self.content("2.caf"))

    def test_of_no_sound_fails(self):
        result = self.batch("render", "out.caf")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(said(result), ["zemo-batch: render out.caf: there is no sound."])
        self.assertEqual(self.names(), [])


# The other steps -----------------------------------------------------------------------------

class Saving(BatchTest):

    def test_and_opening_gives_the_same_sound_and_two_zeros(self):
        words = random_words(1000)
        self.write("in.f32", struct.pack(f"<{len(words)}I", *words))
        for extension in ("caf", "CAF", "aif", "AIF"):
            self.done("--rate", "96000", "open", "in.f32", "save", f"x.{extension}")
            self.done("open", f"x.{extension}", "dump", "out.f32")
            self.assertEqual(list(words_of(self.content("out.f32"))), [*words, 0, 0], extension)

    def test_a_saved_sound_grows_by_the_pair_every_time(self):
        self.raw("in.f32", [0.5, -0.5])
        self.done("open", "in.f32", "save", "1.caf", "open", "1.caf", "save", "2.aif",
                  "open", "2.aif", "dump", "out.f32")
        self.assertEqual(self.content("out.f32"), struct.pack("<6f", 0.5, -0.5, 0, 0, 0, 0))

    def test_takes_the_rate_of_the_first_audio_file(self):
        self.write("8.caf", caf(8000.0, [0.5]))
        self.raw("in.f32", [0.5])
        self.done("open", "in.f32", "open", "8.caf", "save", "x.caf")
        self.assertEqual(self.content("x.caf"), caf(8000.0, [0.5, 0, 0]))

    def test_takes_44100_where_there_is_no_audio_file(self):
        self.raw("in.f32", [0.5])
        self.done("open", "in.f32", "save", "x.caf")
        self.assertEqual(self.content("x.caf"), caf(44100.0, [0.5, 0, 0]))

    def test_replaces_a_file_and_leaves_nothing_beside_it(self):
        self.raw("in.f32", [0.5])
        self.write("x.caf", b"old" * 1000)
        self.done("open", "in.f32", "save", "x.caf")
        self.assertEqual(self.content("x.caf"), caf(44100.0, [0.5, 0, 0]))
        self.assertEqual(self.names(), ["in.f32", "x.caf"])

    def test_over_the_file_that_was_opened_works(self):
        self.write("x.caf", caf(48000.0, [0.5, 0.25]))
        self.done("open", "x.caf", "save", "x.caf")
        self.assertEqual(self.content("x.caf"), caf(48000.0, [0.5, 0.25, 0, 0]))

    def test_a_large_sound_is_saved_whole(self):
        source = random.Random(1)
        mebibyte = array.array("f", [source.uniform(-0.5, 0.5) for _ in range(1 << 18)]).tobytes()
        data = mebibyte * 150
        self.write("in.f32", data)
        self.done("open", "in.f32", "save", "x.caf")
        self.assertTrue(self.content("x.caf") == caf_head(44100.0, len(data) + 8) + data + bytes(8))

    def test_of_no_sound_fails(self):
        result = self.batch("save", "x.caf")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(said(result), ["zemo-batch: save x.caf: there is no sound."])
        self.assertEqual(self.names(), [])

    def test_into_a_folder_that_is_not_there_fails_with_the_step_and_the_file(self):
        self.raw("in.f32", [0.5])
        result = self.batch("open", "in.f32", "save", "absent/x.caf", "dump", "out.f32")
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"Error: Format error:  (2)\n", result.stderr)
        self.assertIn(b"zemo-batch: save absent/x.caf: Format error:  (2) Application will quit\n",
                      result.stderr)
        self.assertIn(b"Format error:  (2)\nApplication will quit\n", result.stdout)
        self.assertEqual(self.names(), ["in.f32"])

    def test_over_a_folder_fails(self):
        self.raw("in.f32", [0.5])
        self.path("x.caf").mkdir()
        result = self.batch("open", "in.f32", "save", "x.caf")
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"Error: Format error:  (22)\n", result.stderr)
        self.assertTrue(self.path("x.caf").is_dir())


class Opening(BatchTest):

    def test_swaps_a_raw_file_when_asked_to(self):
        self.write("in.f32", struct.pack(">3f", 0.5, -0.25, 1e-3))
        self.done("open", "in.f32", "swap", "dump", "out.f32")
        self.assertEqual(self.content("out.f32"), struct.pack("<3f", 0.5, -0.25, 1e-3))

    def test_normalizes_when_asked_to(self):
        samples = [0.25, -0.125, 0.5]
        self.write("in.caf", caf(48000.0, samples))
        self.done("open", "in.caf", "normalize", "dump", "out.f32")
        divisor = rounded(0.5 * 1.1)
        self.assertEqual(list(floats_of(words_of(self.content("out.f32")))),
                         [rounded(sample / divisor) for sample in samples])

    def test_takes_both_boxes(self):
        self.write("in.caf", caf(48000.0, [0.25, 0.5]))
        self.done("open", "in.caf", "swap", "normalize", "dump", "out.f32")
        divisor = rounded(0.5 * 1.1)
        self.assertEqual(list(floats_of(words_of(self.content("out.f32")))),
                         [rounded(0.25 / divisor), rounded(0.5 / divisor)])

    def test_a_file_that_is_not_there_fails_with_the_step_and_the_file(self):
        for name, reason in (("x.caf", "KO"), ("x.f32", "Raw data file: error")):
            result = self.batch("open", name, "dump", "out.f32")
            self.assertEqual(result.returncode, 1)
            self.assertIn(f"zemo-batch: open {name}: the file was not opened ({reason}).",
                          said(result))
            self.assertEqual(self.names(), [])

    def test_an_aiff_c_of_an_unknown_compression_fails(self):
        common = struct.pack(">hLh10s4s2x", 2, 3, 16, bytes.fromhex("400eac44000000000000"), b"QDMC")
        chunks = b"COMM" + struct.pack(">L", len(common)) + common \
            + b"SSND" + struct.pack(">L", 8 + 12) + bytes(8 + 12)
        self.write("x.aif", b"FORM" + struct.pack(">L", 4 + len(chunks)) + b"AIFC" + chunks)
        result = self.batch("--rate", "44100", "open", "x.aif")
        self.assertEqual(result.returncode, 1)
        self.assertIn("zemo-batch: open x.aif: the file was not opened (KO).", said(result))

    def test_a_file_at_another_rate_fails(self):
        self.write("in.caf", caf(48000.0, [0.5]))
        result = self.batch("--rate", "44100", "open", "in.caf", "dump", "out.f32")
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"zemo-batch: open in.caf: ZEMO CAN'T READ THE FILE: in.caf\n",
                      result.stderr)
        self.assertEqual(self.names(), ["in.caf"])


class Reverting(BatchTest):

    def test_without_a_copy_does_nothing(self):
        self.write("in.caf", caf(48000.0, [0.5, 0.25]))
        self.done("revert", "open", "in.caf", "revert", "dump", "out.f32")
        self.assertEqual(self.content("out.f32"), struct.pack("<2f", 0.5, 0.25))

    def test_brings_back_what_was_before_a_transformation(self):
        self.raw("in.f32", [math.sin(i / 5) / 2 for i in range(4000)])
        self.done("open", "in.f32", "am", "440", "0.5", "dump", "am.f32", "revert",
                  "dump", "back.f32", "revert", "dump", "again.f32")
        self.assertEqual(self.content("back.f32"), self.content("in.f32"))
        self.assertNotEqual(self.content("am.f32"), self.content("in.f32"))
        self.assertEqual(self.content("again.f32"), self.content("am.f32"))

    def test_what_came_back_is_saved_with_two_zeros(self):
        samples = [rounded(math.sin(i / 5) / 2) for i in range(4000)]
        self.raw("in.f32", samples)
        self.done("open", "in.f32", "am", "440", "0.5", "revert", "save", "x.caf", "save", "x.aif")
        self.assertEqual(self.content("x.caf"), caf(44100.0, [*samples, 0, 0]))
        self.assertEqual(words_of(self.content("x.aif")[72:], ">"),
                         words_of(self.content("x.caf")[68:]))


class Informing(BatchTest):

    def info(self, *words):
        return self.done(*words, "info").stdout.decode().split("samples ", 1)[1].splitlines()

    def test_tells_count_length_peak_level_and_copy(self):
        self.write("in.caf", caf(8000.0, [0.5, -0.75, 0.25, 0.0]))
        rms = math.sqrt((0.25 + 0.5625 + 0.0625) / 4)
        self.assertEqual(self.info("open", "in.caf"),
                         ["4", "seconds 0.000500", "peak 0.75", f"rms {rms:.9g}", "non-finite 0",
                          "revert 0"])

    def test_leaves_out_and_counts_what_is_not_finite(self):
        not_finite = [word for word in SPECIALS if word & 0x7F800000 == 0x7F800000]
        self.assertEqual(len(not_finite), 4)
        self.write("in.f32", struct.pack("<8I", *not_finite, *[0x3F000000] * 4))
        self.assertEqual(self.info("open", "in.f32"),
                         ["8", f"seconds {8 / 44100:.6f}", "peak 0.5", "rms 0.5", "non-finite 4",
                          "revert 0"])

    def test_tells_the_length_of_the_copy(self):
        self.raw("in.f32", [0.5] * 100)
        self.assertEqual(self.info("open", "in.f32", "am", "440", "0.5")[-1], "revert 100")

    def test_of_no_sound_tells_of_nothing(self):
        self.assertEqual(self.info(),
                         ["0", "seconds 0.000000", "peak 0", "rms 0", "non-finite 0", "revert 0"])


class Dumping(BatchTest):

    def test_gives_the_samples_alone(self):
        data = struct.pack(f"<{len(SPECIALS)}I", *SPECIALS)
        self.write("in.f32", data)
        self.done("open", "in.f32", "dump", "out")
        self.assertEqual(self.content("out"), data)

    def test_of_no_sound_gives_an_empty_file(self):
        self.done("dump", "out")
        self.assertEqual(self.content("out"), b"")

    def test_into_a_folder_that_is_not_there_fails_with_the_step_and_the_file(self):
        result = self.batch("dump", "absent/out")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(said(result),
                         ["zemo-batch: dump absent/out: No such file or directory."])


class Playing(BatchTest):

    def test_without_a_sound_server_ends_by_itself_and_says_so(self):
        self.raw("in.f32", [0.5] * 4410)
        result = self.done("open", "in.f32", "play")
        self.assertIn(b"No audio device: playing silently\n", result.stderr)
        self.assertIn(b"4410 frames\n" + b"_" * 45 + b"\n\n", result.stdout)

    def test_of_no_sound_fails(self):
        result = self.batch("play")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(said(result), ["zemo-batch: play: there is no sound."])


# The command line ----------------------------------------------------------------------------

class CommandLine(BatchTest):

    def refused(self, *words):
        result = self.batch(*words)
        self.assertEqual(result.returncode, 2, words)
        self.assertEqual(result.stdout, b"")
        lines = result.stderr.decode().splitlines()
        self.assertEqual(len(lines), 1, lines)
        return lines[0]

    def test_is_checked_whole_before_anything_runs(self):
        self.write("in.caf", caf(48000.0, [0.5]))
        first = ("open", "in.caf", "save", "x.caf", "dump", "x.f32", "render", "y.caf")
        for wrong in (("leap",), ("open",), ("save",), ("save", "x.wav"), ("save", "x"),
                      ("dump",), ("render",), ("render", "z.caf", "frames=0"),
                      ("render", "z.caf", "frames=1048577"), ("render", "z.caf", "rms=yes"),
                      ("open", "in.caf", "--rate", "48000"), ("resample",), ("resample", "x"),
                      ("am", "440"), ("--help",)):
            self.refused(*first, *wrong)
            self.assertEqual(self.names(), ["in.caf"], wrong)

    def test_is_refused_with_one_sentence(self):
        hint = " See zemo-batch --help."
        for words, sentence in (
                ((), "There is nothing to do."),
                (("--rate", "48000"), "There is nothing to do."),
                (("leap",), 'There is no step named "leap".'),
                (("open",), "open needs a file."),
                (("save",), "save needs a file."),
                (("dump",), "dump needs a file."),
                (("render",), "render needs a file."),
                (("save", "x.wav"),
                 "save x.wav: the file's name must end in .caf, .CAF, .aif or .AIF."),
                (("render", "x.caf", "frames=0"),
                 "render: frames needs a whole number from 1 to 1048576."),
                (("render", "x.caf", "rms=1"), "render: rms is on or off."),
                (("--rate", "0", "info"), "--rate needs a number of hertz from 1 to 1000000."),
                (("--help", "info"), "--help and --version stand alone.")):
            self.assertEqual(self.refused(*words), f"zemo-batch: {sentence}{hint}")

    def test_help_and_version_need_nothing_around_them(self):
        help_text = self.done("--help")
        self.assertTrue(help_text.stdout.startswith(b"zemo-batch [--rate HZ] STEP...\n"))
        self.assertEqual(help_text.stderr, b"")
        version = self.done("--version")
        self.assertRegex(version.stdout, rb"\Azemo-batch \d+\.\d+\.\d+\n\Z")
        self.assertEqual(version.stderr, b"")

    def test_steps_after_one_that_failed_are_not_done(self):
        self.raw("in.f32", [0.5])
        result = self.batch("open", "in.f32", "dump", "1", "open", "absent.f32", "dump", "2")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(self.names(), ["1", "in.f32"])


class FileNames(BatchTest):

    def test_of_any_bytes_are_taken_as_they_stand(self):
        self.raw("in.f32", [0.5, 0.25])
        expected = caf(44100.0, [0.5, 0.25, 0, 0])
        for stem in (b"a b", b"%s%n%d", b"100%", b"-rf", b"--help", b"\xff\xfe\x80", b"e\xcc\x81",
                     b"'\"$(x)`", b"new\nline", b"~", b"*", b"\\", b"\xf0\x9f\x8e\xb5", b" "):
            name = stem + b".caf"
            self.done("open", "in.f32", "save", name)
            self.done("open", name, "dump", stem, "render", stem + b".r")
            self.assertEqual((self.path(os.fsdecode(name))).read_bytes(), expected, name)
            self.assertEqual(self.path(os.fsdecode(stem)).read_bytes(), expected[68:], name)

    def test_with_bytes_that_are_no_text_are_named_byte_for_byte_in_sentences(self):
        result = self.batch("open", b"\xff%s\x80.caf")
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"zemo-batch: open \xff%s\x80.caf: the file was not opened (KO).\n",
                      result.stderr)

    def test_may_be_as_long_as_the_system_lets_them(self):
        self.raw("in.f32", [0.5])
        name = "x" * 251 + ".caf"
        self.done("open", "in.f32", "save", name)
        self.assertEqual(self.content(name), caf(44100.0, [0.5, 0, 0]))


if __name__ == "__main__":
    main()
