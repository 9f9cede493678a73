"""zemo-batch between pipes, devices and redirections: streams_test.py ZEMO_BATCH"""

import os
import struct
import subprocess
import threading

from batch import PROGRAM, TIMEOUT, BatchTest, caf, clean_environment, main

SAMPLES = [0.5, -0.25, 0.125]
RAW = struct.pack("<3f", *SAMPLES)
SAVED = caf(44100.0, [*SAMPLES, 0, 0])
FULL = "No space left on device."


class StreamTest(BatchTest):

    def setUp(self):
        super().setUp()
        self.write("in.f32", RAW)

    def run_with(self, *words, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, data=None, **options):
        given = {"input": data} if data is not None else {"stdin": stdin}
        return subprocess.run([PROGRAM, *words], cwd=self.folder, env=clean_environment(),
                              stdout=stdout, stderr=subprocess.PIPE, timeout=TIMEOUT, check=False,
                              **given, **options)

    def output_of(self, *words, **options):
        """What comes out of a pipe."""
        result = self.run_with(*words, **options)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stdout

    def file_of(self, *words, name):
        """What the same steps write as a file."""
        self.done("open", "in.f32", *words)
        content = self.content(name)
        self.path(name).unlink()
        return content


class StandardOutput(StreamTest):

    def test_gets_a_dump_and_nothing_else(self):
        for name in ("-", "/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"):
            self.assertEqual(self.output_of("open", "in.f32", "dump", name), RAW, name)
        self.assertEqual(self.names(), ["in.f32"])

    def test_is_appended_to_as_the_shell_wants(self):
        for name in ("-", "/dev/stdout"):
            self.write("notes.txt", b"notes\n")
            with open(self.path("notes.txt"), "ab") as notes:
                self.output_of("open", "in.f32", "dump", name, stdout=notes)
            self.assertEqual(self.content("notes.txt"), b"notes\n" + RAW, name)
        self.assertEqual(self.names(), ["in.f32", "notes.txt"])

    def test_is_written_to_from_where_it_stands(self):
        with open(self.path("both"), "wb") as both:
            for _ in range(2):
                self.output_of("open", "in.f32", "dump", "-", stdout=both)
        self.assertEqual(self.content("both"), 2 * RAW)

    def test_gets_the_same_bytes_as_a_file(self):
        for words, name in ((("save", "x.caf"), "x.caf"), (("save", "x.aif"), "x.aif"),
                            (("export", "x.wav"), "x.wav"), (("export", "x.flac"), "x.flac"),
                            (("render", "x.caf", "frames=2"), "x.caf")):
            step, extension = words[0], name.rpartition(".")[2]
            expected = self.file_of(*words, name=name)
            kind = [] if step == "render" else [f"as={extension}"]
            for path in ("-", "/dev/stdout"):
                found = self.output_of("open", "in.f32", step, path, *kind, *words[2:])
                self.assertEqual(found, expected, words)

    def test_is_caf_for_save_and_wav_for_export_unless_told(self):
        self.assertEqual(self.output_of("open", "in.f32", "save", "-"), SAVED)
        self.assertEqual(self.output_of("open", "in.f32", "export", "-"),
                         self.file_of("export", "x.wav", name="x.wav"))

    def test_gets_the_levels_of_a_rendering(self):
        levels = self.file_of("render", "x.caf", "levels=x.txt", name="x.txt")
        self.assertEqual(self.output_of("open", "in.f32", "render", "x.caf", "levels=-"), levels)

    def test_gets_one_file_after_the_other(self):
        self.assertEqual(self.output_of("open", "in.f32", "dump", "-", "save", "-"), RAW + SAVED)

    def test_leaves_its_lines_to_standard_error_while_a_file_goes_there(self):
        result = self.run_with("open", "in.f32", "info", "dump", "-")
        self.assertEqual(result.stdout, RAW)
        self.assertIn(b"samples 3\n", result.stderr)
        self.assertIn(b"Buffer read!\n", result.stderr)

    def test_a_large_sound_goes_through_a_pipe_whole(self):
        data = bytes(i * 7 % 63 for i in range(1 << 16)) * 300  # floats below full scale
        self.write("in.f32", data)
        self.assertTrue(self.output_of("open", "in.f32", "dump", "-") == data)

    def test_that_nobody_reads_ends_the_program_as_it_does_others(self):
        read, write = os.pipe()
        os.close(read)
        result = self.run_with("open", "in.f32", "dump", "-", stdout=write)
        os.close(write)
        self.assertEqual(result.returncode, -13)

    def test_that_is_full_is_said(self):
        with open("/dev/full", "wb") as full:
            for words in (("dump", "-"), ("render", "-")):
                result = self.run_with("open", "in.f32", *words, stdout=full)
                self.assertEqual(result.returncode, 1)
                self.assertIn(f"zemo-batch: {words[0]} -: {FULL}\n", result.stderr.decode())
            result = self.run_with("open", "in.f32", "save", "-", stdout=full)
            self.assertEqual(result.returncode, 1)
            self.assertIn(b"zemo-batch: save -: File writing error:  (28) Application will quit\n",
                          result.stderr)

    def test_a_file_whose_name_is_a_hyphen_is_named_with_its_folder(self):
        self.done("open", "in.f32", "dump", "./-", "open", "./-", "dump", "out")
        self.assertEqual(self.content("-"), RAW)
        self.assertEqual(self.content("out"), RAW)

    def test_that_is_closed_gets_into_no_file(self):
        closing = {"preexec_fn": lambda: os.closerange(0, 3)}
        result = self.run_with("open", "in.f32", "dump", "out", "export", "out.wav", **closing)
        self.assertEqual(result.returncode, 0)
        self.assertEqual(self.content("out"), RAW)
        self.assertEqual(self.content("out.wav"), self.file_of("export", "x.wav", name="x.wav"))
        for step in (("dump", "-"), ("info",)):
            self.assertEqual(self.run_with("open", "in.f32", *step, **closing).returncode, 1)


class OtherTargets(StreamTest):

    def test_a_named_pipe_gets_the_file_when_somebody_reads_it(self):
        for name, words, expected in (("pipe", ("dump",), RAW), ("pipe.caf", ("save",), SAVED)):
            os.mkfifo(self.path(name))
            got = []
            reader = threading.Thread(target=lambda path, to: to.append(path.read_bytes()),
                                      args=(self.path(name), got), daemon=True)
            reader.start()
            self.done("open", "in.f32", *words, name)
            reader.join(TIMEOUT)
            self.assertEqual(got, [expected])
            self.assertTrue(self.path(name).is_fifo())

    def test_a_device_takes_what_is_written(self):
        self.done("open", "in.f32", "dump", "/dev/null")
        result = self.batch("open", "in.f32", "dump", "/dev/full")
        self.assertEqual(result.returncode, 1)
        self.assertIn(f"zemo-batch: dump /dev/full: {FULL}\n", result.stderr.decode())

    def test_a_descriptor_that_the_shell_has_opened(self):
        read, write = os.pipe()
        self.output_of("open", "in.f32", "dump", f"/dev/fd/{write}", pass_fds=[write])
        os.close(write)
        with open(read, "rb") as end:
            self.assertEqual(end.read(), RAW)

    def test_a_link_under_proc_stays_and_what_it_leads_to_keeps_its_content(self):
        with open(self.path("notes.txt"), "w+b") as notes:
            notes.write(b"notes\n")
            notes.flush()
            link = f"/proc/{os.getpid()}/fd/{notes.fileno()}"
            inode = os.stat(link).st_ino
            self.output_of("open", "in.f32", "dump", link)
            self.assertEqual(os.stat(self.path("notes.txt")).st_ino, inode)
        self.assertEqual(self.content("notes.txt"), b"notes\n" + RAW)
        self.assertEqual(self.names(), ["in.f32", "notes.txt"])


class StandardInput(StreamTest):

    def test_is_raw_data_for_open(self):
        self.assertEqual(self.output_of("open", "-", "dump", "-", data=RAW), RAW)
        swapped = struct.pack(">3f", *SAMPLES)
        self.assertEqual(self.output_of("open", "-", "swap", "dump", "-", data=swapped), RAW)

    def test_is_an_audio_file_for_open_when_told(self):
        for kind in ("caf", "aif"):  # either is known by its content
            self.assertEqual(self.output_of("open", "-", f"as={kind}", "dump", "-",
                                            data=caf(8000.0, SAMPLES)), RAW)

    def test_sets_the_rate_like_any_first_file(self):
        for words in (("open", "-", "as=caf"), ("import", "-")):
            self.output_of(*words, "save", "x.caf", data=caf(8000.0, SAMPLES))
            self.assertEqual(self.content("x.caf"), caf(8000.0, [*SAMPLES, 0, 0]))

    def test_is_known_by_its_content_for_import(self):
        self.done("open", "in.f32", "export", "x.flac", "export", "x.wav")
        for name in ("x.flac", "x.wav"):
            said = self.output_of("import", "-", "dump", "out", data=self.content(name))
            self.assertIn(b"\nchannels 1\nrate 44100\n", said)
            self.assertEqual(self.content("out"), RAW)

    def test_is_the_same_whenever_it_is_named(self):
        self.output_of("import", "-", "dump", "1", "open", "-", "as=caf", "dump", "2", "open", "-",
                       "dump", "3", data=caf(8000.0, SAMPLES))
        self.assertEqual((self.content("1"), self.content("2")), (RAW, RAW))
        self.assertEqual(len(self.content("3")), len(caf(8000.0, SAMPLES)))

    def test_may_be_a_file(self):
        self.write("x.caf", caf(8000.0, SAMPLES))
        with open(self.path("x.caf"), "rb") as file:
            self.output_of("import", "-", "dump", "out", stdin=file)
        self.assertEqual(self.content("out"), RAW)

    def test_begins_where_the_shell_has_left_it(self):
        with open(self.path("in.f32"), "rb") as file:
            os.lseek(file.fileno(), 4, os.SEEK_SET)
            self.assertEqual(self.output_of("open", "-", "dump", "-", stdin=file), RAW[4:])

    def test_may_have_any_of_its_names_and_so_may_other_pipes(self):
        for name in ("/dev/stdin", "/dev/fd/0", "/proc/self/fd/0"):
            self.assertEqual(self.output_of("open", name, "dump", "-", data=RAW), RAW)
        read, write = os.pipe()
        os.write(write, RAW)
        os.close(write)
        self.assertEqual(self.output_of("open", f"/dev/fd/{read}", "dump", "-", pass_fds=[read]), RAW)
        os.close(read)

    def test_without_anything_in_it_is_refused_like_an_empty_file(self):
        result = self.batch("open", "-")
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"zemo-batch: open -: the file was not opened (Raw data file: size_error).\n",
                      result.stderr)

    def test_that_is_a_folder_or_closed_is_refused(self):
        folder = os.open(self.folder, os.O_RDONLY)
        for options in ({"stdin": folder}, {"preexec_fn": lambda: os.close(0)}):
            result = self.run_with("open", "-", **options)
            self.assertEqual(result.returncode, 1)
            self.assertIn(b"zemo-batch: open -: the file was not opened (Raw data file: error).\n",
                          result.stderr)
        os.close(folder)


class Printing(StreamTest):

    def test_of_what_was_asked_for_is_checked(self):
        self.done("open", "in.f32", "export", "x.wav")
        with open("/dev/full", "wb") as full:
            for words, name in ((("open", "in.f32", "info"), "info"),
                                (("import", "x.wav"), "import x.wav")):
                result = self.run_with(*words, "dump", "out", stdout=full)
                self.assertEqual(result.returncode, 1)
                self.assertIn(f"zemo-batch: {name}: the result cannot be printed: {FULL}\n",
                              result.stderr.decode())
                self.assertNotIn("out", self.names())
            for word in ("--help", "--version"):
                result = self.run_with(word, stdout=full)
                self.assertEqual(result.returncode, 1)
                self.assertEqual(result.stderr.decode(),
                                 f"zemo-batch: Standard output cannot be written: {FULL}\n")

    def test_of_the_trace_is_not(self):
        with open("/dev/full", "wb") as full:
            self.output_of("open", "in.f32", "dump", "out", stdout=full)
        self.assertEqual(self.content("out"), RAW)


class Kinds(StreamTest):

    def test_are_said_where_names_do_not(self):
        self.done("open", "in.f32", "save", "x", "as=caf", "export", "y", "as=flac")
        self.assertEqual(self.content("x"), SAVED)
        self.assertEqual(self.content("y")[:4], b"fLaC")
        self.done("open", "x", "as=caf", "dump", "out")
        self.assertEqual(self.content("out"), RAW + bytes(8))

    def test_that_there_are_not_are_refused(self):
        for words, sentence in (
                (("open", "x", "as=wav"), "open: as is caf or aif."),
                (("save", "x.caf", "as=CAF"), "save: as is caf or aif."),
                (("export", "-", "as=mp3"), "export: as is wav or flac."),
                (("save", "/dev/stdout"), "save /dev/stdout: the file's name must end in .caf, .CAF, "
                                          ".aif or .AIF.")):
            result = self.batch(*words)
            self.assertEqual(result.returncode, 2)
            self.assertEqual(result.stderr.decode(),
                             f"zemo-batch: {sentence} See zemo-batch --help.\n")


if __name__ == "__main__":
    main()
