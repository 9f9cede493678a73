"""Sound files by ffmpeg and sox, imported by zemo-batch and decoded by the two others; and what
zemo-batch exports, decoded by them: other_programs_test.py ZEMO_BATCH

With --figures the greatest errors are printed as a table."""

import subprocess
import sys
from pathlib import Path

import numpy

sys.path.insert(0, str(Path(__file__).parent.parent / "save"))
from batch import BatchTest, main  # noqa: E402 (beside the other tests of zemo-batch)

FIGURES = "--figures" in sys.argv
if FIGURES:
    sys.argv.remove("--figures")

#: What ffmpeg writes: the file's name and the words for it.
BY_FFMPEG = {
    "16.wav": ["-c:a", "pcm_s16le"],
    "24.wav": ["-c:a", "pcm_s24le"],
    "float.wav": ["-c:a", "pcm_f32le"],
    "mulaw.wav": ["-c:a", "pcm_mulaw"],
    "adpcm.wav": ["-c:a", "adpcm_ms"],
    "24.flac": ["-sample_fmt", "s32", "-c:a", "flac"],
    "vorbis.ogg": ["-c:a", "libvorbis", "-q:a", "6"],
    "opus.opus": ["-ar", "48000", "-c:a", "libopus", "-b:a", "128k"],
    "layer3.mp3": ["-c:a", "libmp3lame", "-b:a", "192k"],
    "16.aiff": ["-c:a", "pcm_s16be"],
    "24.caf": ["-c:a", "pcm_s24be"],
    "16.au": ["-c:a", "pcm_s16be"],
    "16.w64": ["-c:a", "pcm_s16le"],
}
#: What sox writes.
BY_SOX = {
    "16.wav": ["-b", "16"],
    "24.wav": ["-b", "24"],
    "float.wav": ["-e", "floating-point", "-b", "32"],
    "24.flac": ["-b", "24"],
    "vorbis.ogg": ["-C", "6"],
    "16.aiff": ["-b", "16"],
    "24.aifc": ["-b", "24"],
    "24.caf": ["-b", "24"],
    "16.au": ["-b", "16"],
    "16.w64": ["-b", "16"],
}
#: Decoders of these two do not agree about their delay from one version to the other.
WITH_A_DELAY = ("opus.opus", "layer3.mp3")
#: Their own noise reaches up to where converters of the rate differ.
NOISY = ("mulaw.wav", "adpcm.wav")
#: The least that an error has to be below full scale, decibels.
LIMIT = -100.0


def output_of(*command, data=None):
    result = subprocess.run(command, input=data, capture_output=True, check=False)
    if result.returncode != 0:
        raise AssertionError(f"{command}: {result.stderr.decode(errors='replace')}")
    return result.stdout


def sound(rate, channels, seconds=2.0):
    """Partials up to 12 kHz that begin and end softly, each channel its own: nothing that two good
    converters of the rate could see differently."""
    time = numpy.arange(int(rate * seconds)) / rate
    edge = numpy.clip(numpy.minimum(time, time[-1] - time) / 0.2, 0, 1)
    partials = ((220.5, 0.2), (997, 0.15), (3001, 0.1), (7013, 0.08), (12007, 0.05))
    return numpy.stack([(0.5 - 0.5 * numpy.cos(numpy.pi * edge)) *
                        sum(level * numpy.sin(2 * numpy.pi * (hertz + 31 * channel) * time + hertz)
                            for hertz, level in partials)
                        for channel in range(channels)], axis=1).astype("<f4")


def mono_by_ffmpeg(path, channels):
    data = output_of("ffmpeg", "-nostdin", "-v", "error", "-i", str(path), "-c:a", "pcm_f64le",
                     "-f", "f64le", "-")
    return numpy.frombuffer(data, "<f8").reshape(-1, channels).mean(axis=1)


def mono_by_sox(path, channels):
    data = output_of("sox", "-V1", "-D", str(path), "-t", "f64", "-L", "-")
    return numpy.frombuffer(data, "<f8").reshape(-1, channels).mean(axis=1)


def converted_by_ffmpeg(samples, rate, wanted):
    data = output_of("ffmpeg", "-nostdin", "-v", "error", "-f", "f64le", "-ar", str(rate), "-ac", "1",
                     "-i", "-", "-af", f"aresample={wanted}:resampler=soxr:precision=33",
                     "-c:a", "pcm_f64le", "-f", "f64le", "-", data=samples.astype("<f8").tobytes())
    return numpy.frombuffer(data, "<f8")


def converted_by_sox(samples, rate, wanted):
    data = output_of("sox", "-V1", "-D", "-t", "f64", "-L", "-r", str(rate), "-c", "1", "-",
                     "-t", "f64", "-L", "-", "rate", "-v", str(wanted),
                     data=samples.astype("<f8").tobytes())
    return numpy.frombuffer(data, "<f8")


def delay_between(first, second):
    """By how many samples the first is behind the second: the peak of their correlation."""
    size = 1 << (len(first) + len(second)).bit_length()
    product = numpy.fft.rfft(first, size) * numpy.conj(numpy.fft.rfft(second, size))
    peak = int(numpy.argmax(numpy.fft.irfft(product, size)))
    return peak - size if peak > size // 2 else peak


def decibels(amplitude):
    return 20 * numpy.log10(max(float(amplitude), 1e-30))


class ForeignFiles(BatchTest):
    figures = {}

    def write_by_ffmpeg(self, name, words, rate, channels):
        output_of("ffmpeg", "-nostdin", "-v", "error", "-y", "-f", "f32le", "-ar", str(rate), "-ac",
                  str(channels), "-i", "-", *words, str(self.path(name)),
                  data=sound(rate, channels).tobytes())

    def write_by_sox(self, name, words, rate, channels):
        output_of("sox", "-V1", "-D", "-t", "f32", "-L", "-r", str(rate), "-c", str(channels), "-",
                  *words, str(self.path(name)), data=sound(rate, channels).tobytes())

    def imported(self, name, wanted=None):
        """The sound and the rate of the file that the program names."""
        rate_words = ["--rate", str(wanted)] if wanted else []
        said = self.done(*rate_words, "import", name, "dump", "out.f32").stdout.decode()
        self.assertTrue(said.startswith("imported "), said)
        rate = int(said.split("rate ")[1].split()[0])
        return numpy.frombuffer(self.content("out.f32"), "<f4").astype(float), rate

    def expect_same(self, label, found, expected, name):
        delay = delay_between(found, expected)
        self.assertEqual(delay if name not in WITH_A_DELAY else 0, 0, label)
        found, expected = found[max(delay, 0):], expected[max(-delay, 0):]
        self.assertLessEqual(abs(len(found) - len(expected)), 1 + abs(delay), label)
        common = min(len(found), len(expected))
        error = decibels(numpy.abs(found[:common] - expected[:common]).max())
        self.assertLess(error, LIMIT, label)
        kind = (name, label[0], label[-1])
        self.figures[kind] = max(error, self.figures.get(kind, -600.0))

    def check(self, program, name, rate, channels, decode):
        found, own_rate = self.imported(name)
        mono = decode(self.path(name), channels)
        self.assertEqual(own_rate, 48000 if name == "opus.opus" else rate)
        self.expect_same((program, name, rate, channels, "same rate"), found, mono, name)
        if name in NOISY:
            return
        wanted = 48000 if own_rate == 44100 else 44100
        found, _ = self.imported(name, wanted)
        for reference, convert in (("ffmpeg", converted_by_ffmpeg), ("sox", converted_by_sox)):
            expected = convert(mono, own_rate, wanted)
            self.expect_same((program, name, rate, channels, f"{reference} {own_rate}"), found,
                             expected, name)

    def test_by_ffmpeg_sound_as_ffmpeg_decodes_them(self):
        for rate, channels in ((44100, 2), (48000, 1)):
            for name, words in BY_FFMPEG.items():
                self.write_by_ffmpeg(name, words, rate, channels)
                self.check("ffmpeg", name, rate, channels, mono_by_ffmpeg)

    def test_by_sox_sound_as_sox_decodes_them(self):
        for rate, channels in ((44100, 1), (48000, 2)):
            for name, words in BY_SOX.items():
                self.write_by_sox(name, words, rate, channels)
                # sox decodes Vorbis to 16 bits.
                decode = mono_by_ffmpeg if name == "vorbis.ogg" else mono_by_sox
                self.check("sox", name, rate, channels, decode)

    @classmethod
    def tearDownClass(cls):
        if FIGURES:
            for kind, error in sorted(cls.figures.items()):
                print(f"{kind[1]:7} {kind[0]:11} {kind[2]:13} {error:7.1f} dB")


class Exports(BatchTest):

    def test_as_wav_and_flac_are_the_sound_to_ffmpeg_and_sox(self):
        steps = numpy.random.default_rng(1).integers(-(1 << 23), 1 << 23, 100000)
        samples = (steps / (1 << 23)).astype("<f4")
        self.write("in.f32", samples.tobytes())
        for rate in (8000, 44100, 96000):
            self.done("--rate", str(rate), "open", "in.f32", "export", "x.wav", "export", "x.flac")
            for name in ("x.wav", "x.flac"):
                for decode in (mono_by_ffmpeg, mono_by_sox):
                    self.assertTrue(numpy.array_equal(decode(self.path(name), 1), samples), name)
                self.assertEqual(output_of("sox", "--info", "-r", str(self.path(name))).split(),
                                 [str(rate).encode()])

    def test_of_a_transformed_sound_is_imported_again_bit_for_bit(self):
        self.write("in.f32", sound(44100, 1).tobytes())
        self.done("open", "in.f32", "am", "300", "0.5", "dump", "1.f32", "export", "x.wav",
                  "import", "x.wav", "dump", "2.f32")
        self.assertEqual(self.content("1.f32"), self.content("2.f32"))


class Steps(BatchTest):

    def test_the_file_imported_first_sets_the_rate(self):
        self.write("in.f32", sound(8000, 1).tobytes())
        self.done("--rate", "8000", "open", "in.f32", "export", "x.wav")
        self.done("open", "in.f32", "import", "x.wav", "export", "y.wav")
        self.assertEqual(self.content("x.wav"), self.content("y.wav"))

    def test_a_file_that_cannot_be_imported_is_one_sentence_and_ends_the_steps(self):
        self.write("in.f32", sound(8000, 1).tobytes())
        self.write("words.wav", b"No sound, but some words in a row.")
        for name, reason in (("words.wav", "The file is not of a kind of sound file that is known."),
                             ("absent.wav", "The file cannot be opened: No such file or directory."),
                             (".", "The file cannot be opened: Is a directory.")):
            result = self.batch("open", "in.f32", "import", name, "dump", "out.f32")
            self.assertEqual(result.returncode, 1)
            said = [line for line in result.stderr.decode().splitlines()
                    if line.startswith("zemo-batch: import ")]
            self.assertEqual(said, [f"zemo-batch: import {name}: {reason}"])
            self.assertNotIn("out.f32", self.names())

    def test_an_export_that_cannot_be_is_one_sentence(self):
        self.write("in.f32", sound(8000, 1).tobytes())
        for words, sentence in (
                (["export", "x.wav"], "export x.wav: there is no sound."),
                (["open", "in.f32", "export", "absent/x.wav"],
                 "export absent/x.wav: The file cannot be written: No such file or directory."),
                (["--rate", "44100.5", "open", "in.f32", "export", "x.flac"],
                 "export x.flac: FLAC holds whole rates up to 65535 Hz, and tens up to 655350 Hz, "
                 "and the sound's is 44100.5 Hz.")):
            result = self.batch(*words)
            self.assertEqual(result.returncode, 1)
            self.assertIn(f"zemo-batch: {sentence}\n", result.stderr.decode())
        self.assertEqual(self.names(), ["in.f32"])

    def test_clipped_samples_are_counted(self):
        self.write("in.f32", numpy.array([-2, -1, -3, 0.5], "<f4").tobytes())
        result = self.done("open", "in.f32", "export", "x.flac")
        self.assertIn("zemo-batch: export x.flac: 2 samples beyond full scale were clipped.\n",
                      result.stderr.decode())

    def test_a_file_that_is_cut_off_is_said_to_be(self):
        self.write("in.f32", sound(8000, 1).tobytes())
        self.done("open", "in.f32", "export", "x.flac")
        self.write("cut.flac", self.content("x.flac")[:-9000])
        result = self.done("import", "cut.flac")
        self.assertIn("zemo-batch: import cut.flac: the file is cut off or damaged; what could be "
                      "read was imported.\n", result.stderr.decode())


if __name__ == "__main__":
    main()
