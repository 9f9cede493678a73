"""Files that zemo-batch writes, read by ffmpeg, sox and libsndfile:
other_programs_test.py ZEMO_BATCH"""

import ctypes
import json
import random
import struct
import subprocess

from batch import BatchTest, is_left_by_opening, is_signalling, main, random_words, words_of

RATES = (8000, 44100, 48000, 96000)
CODECS = {"caf": "pcm_f32le", "aif": "pcm_f32be"}
EXTENSIONS = ("caf", "CAF", "aif", "AIF")


def quiet_words(count):
    return random_words(count, lambda word: is_left_by_opening(word) and not is_signalling(word))


def output_of(*words):
    result = subprocess.run(words, stdin=subprocess.DEVNULL, capture_output=True, check=False)
    if result.returncode != 0:
        raise AssertionError(f"{' '.join(words)}: {result.stderr.decode()}")
    return result.stdout


def read_with_ffmpeg(path):
    return words_of(output_of("ffmpeg", "-v", "error", "-i", str(path), "-f", "f32le", "-"))


class SoundFileInfo(ctypes.Structure):
    """SF_INFO of libsndfile."""
    _fields_ = [("frames", ctypes.c_int64), ("rate", ctypes.c_int), ("channels", ctypes.c_int),
                ("format", ctypes.c_int), ("sections", ctypes.c_int), ("seekable", ctypes.c_int)]


CONTAINERS = {"caf": 0x180000, "aif": 0x020000}
CONTAINER_MASK, CODING_MASK, FLOAT_CODING = 0x0FFF0000, 0x0000FFFF, 6


def read_with_libsndfile(path):
    library = ctypes.CDLL("libsndfile.so.1")
    library.sf_open.restype = ctypes.c_void_p
    library.sf_open.argtypes = [ctypes.c_char_p, ctypes.c_int, ctypes.POINTER(SoundFileInfo)]
    library.sf_readf_float.restype = ctypes.c_int64
    library.sf_readf_float.argtypes = [ctypes.c_void_p, ctypes.c_void_p, ctypes.c_int64]
    library.sf_close.argtypes = [ctypes.c_void_p]
    info = SoundFileInfo()
    for_reading = 0x10
    file = library.sf_open(str(path).encode(), for_reading, ctypes.byref(info))
    if not file:
        raise AssertionError(f"libsndfile does not open {path}")
    block = (ctypes.c_float * info.frames)()
    read = library.sf_readf_float(file, block, info.frames)
    library.sf_close(file)
    return info, words_of(bytes(block)[:4 * read])


class OtherPrograms(BatchTest):

    def save(self, words, rate, extension):
        self.write("in.f32", struct.pack(f"<{len(words)}I", *words))
        self.done("--rate", str(rate), "open", "in.f32", "save", f"x.{extension}")
        return self.path(f"x.{extension}")

    def each_file(self, words):
        for rate in RATES:
            for extension in EXTENSIONS:
                yield self.save(words, rate, extension), rate, extension.lower()

    def test_ffmpeg_finds_one_channel_of_floats_at_the_rate_and_every_bit(self):
        words = quiet_words(5000)
        for path, rate, extension in self.each_file(words):
            stream = json.loads(output_of("ffprobe", "-v", "error", "-show_streams", "-of", "json",
                                          str(path)))["streams"][0]
            self.assertEqual(stream["codec_name"], CODECS[extension], path)
            self.assertEqual((int(stream["sample_rate"]), stream["channels"]), (rate, 1))
            self.assertEqual(read_with_ffmpeg(path), (*words, 0, 0))

    def test_libsndfile_finds_one_channel_of_floats_at_the_rate_and_every_bit(self):
        words = quiet_words(5000)
        for path, rate, extension in self.each_file(words):
            info, found = read_with_libsndfile(path)
            self.assertEqual(info.format & CONTAINER_MASK, CONTAINERS[extension])
            self.assertEqual(info.format & CODING_MASK, FLOAT_CODING)
            self.assertEqual((info.rate, info.channels), (rate, 1))
            self.assertEqual(found, (*words, 0, 0))

    def test_sox_finds_one_channel_of_floats_at_the_rate_and_every_sample(self):
        # Between -1 and 1 in steps that sox's own 32-bit integers hold exactly.
        source = random.Random(13)
        samples = [source.randrange(-(1 << 23), 1 << 23) / (1 << 23) for _ in range(5000)]
        data = struct.pack(f"<{len(samples)}f", *samples)
        for path, rate, extension in self.each_file(words_of(data)):
            for option, expected in (("-r", str(rate)), ("-c", "1"), ("-s", "5002"), ("-b", "32"),
                                     ("-e", "Floating Point PCM")):
                found = output_of("sox", "--info", option, str(path)).decode().strip()
                self.assertEqual(found, expected, option)
            read = output_of("sox", "-D", str(path), "-t", "f32", "-L", "-")
            if extension == "aif":
                self.assertEqual(read, data + bytes(8))
            else:
                self.expect_scaled(struct.unpack(f"<{len(read) // 4}f", read), [*samples, 0, 0])

    def expect_scaled(self, found, samples):
        """sox scales every CAF of floats so that its peak is 32767/32768 when it reads it."""
        peak = max(map(abs, samples)) * 32768 / 32767
        self.assertEqual(len(found), len(samples))
        for sample, expected in zip(found, samples):
            self.assertAlmostEqual(sample, expected / peak, delta=2.0 ** -23)

    def test_find_both_infinities(self):
        # Opening scales a sound with a positive infinity, so a transformation has to make it.
        self.raw("in.f32", [-3e38] * 1000)
        self.done("open", "in.f32", "am", "1000", "2", "dump", "out.f32", "save", "x.caf",
                  "save", "x.aif")
        words = words_of(self.content("out.f32"))
        self.assertLessEqual({0x7F800000, 0xFF800000}, {*words})
        for name in ("x.caf", "x.aif"):
            self.assertEqual(read_with_ffmpeg(self.path(name)), (*words, 0, 0))
            self.assertEqual(read_with_libsndfile(self.path(name))[1], (*words, 0, 0))


if __name__ == "__main__":
    main()
