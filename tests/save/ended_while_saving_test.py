"""zemo-batch, ended at chosen moments of a save: ended_while_saving_test.py ZEMO_BATCH INTERPOSER

INTERPOSER is a library that stops the program at these moments, see SaveInterposer.cpp."""

import os
import signal
import subprocess
import sys
import time
import unittest
from pathlib import Path

from batch import PROGRAM, BatchTest, caf, clean_environment, main

INTERPOSER = os.path.abspath(sys.argv.pop(2))
REQUESTS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)
OLD = b"the old file, whole"
NEW = caf(44100.0, [0.5, 0, 0])


class EndedWhileSaving(BatchTest):

    def setUp(self):
        super().setUp()
        self.raw("in.f32", [0.5])
        self.write("x.caf", OLD)

    def begin(self, stop_at, nameless=True, ignored=None):
        """A save that has stopped itself there, or whose child has."""
        environment = clean_environment() | {"LD_PRELOAD": INTERPOSER, "ZEMO_TEST_STOP_AT": stop_at}
        if not nameless:
            environment["ZEMO_TEST_NO_NAMELESS_FILES"] = "1"
        process = subprocess.Popen(
            [PROGRAM, "open", "in.f32", "save", "x.caf"], cwd=self.folder, env=environment,
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            start_new_session=True, restore_signals=True,
            preexec_fn=(lambda: signal.signal(ignored, signal.SIG_IGN)) if ignored else None)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    @staticmethod
    def wait_until_stopped(process):
        status = os.waitpid(process.pid, os.WUNTRACED)[1]
        assert os.WIFSTOPPED(status), status

    def wait_for_stopped_child(self, process):
        """The pid of the process that puts the file in its place."""
        children = Path(f"/proc/{process.pid}/task/{process.pid}/children")
        while True:
            found = children.read_text().split()
            if found and self.state(found[0]) == "T":
                return int(found[0])
            time.sleep(0.001)

    @staticmethod
    def state(pid):
        try:
            return Path(f"/proc/{pid}/stat").read_text().rpartition(") ")[2][0]
        except (FileNotFoundError, ProcessLookupError):
            return ""

    def expect_files(self, content):
        self.assertEqual(self.names(), ["in.f32", "x.caf"])
        self.assertEqual(self.content("x.caf"), content)

    def end(self, process, number):
        process.send_signal(number)
        process.send_signal(signal.SIGCONT)
        self.assertEqual(process.wait(), -number)

    def test_by_a_request_it_leaves_nothing_but_the_old_file(self):
        for nameless in (True, False):
            for number in REQUESTS:
                with self.subTest(nameless=nameless, number=number):
                    process = self.begin("fsync", nameless)
                    self.wait_until_stopped(process)
                    self.assertEqual(len(self.names()), 2 if nameless else 3, self.names())
                    self.end(process, number)
                    self.expect_files(OLD)

    def test_by_a_kill_it_leaves_nothing_where_there_are_nameless_files(self):
        process = self.begin("fsync")
        self.wait_until_stopped(process)
        self.end(process, signal.SIGKILL)
        self.expect_files(OLD)

    def test_a_request_that_is_ignored_changes_nothing(self):
        process = self.begin("fsync", nameless=False, ignored=signal.SIGHUP)
        self.wait_until_stopped(process)
        process.send_signal(signal.SIGHUP)
        while process.poll() is None:
            process.send_signal(signal.SIGCONT)
            time.sleep(0.001)
        self.assertEqual(process.returncode, 0)
        self.expect_files(NEW)

    def test_killed_while_the_file_has_its_hidden_name_it_has_replaced_the_old_one_all_the_same(self):
        for kill in (lambda process: process.kill(),
                     lambda process: os.killpg(process.pid, signal.SIGKILL)):
            self.write("x.caf", OLD)
            process = self.begin("rename")
            child = self.wait_for_stopped_child(process)
            self.assertEqual(len(self.names()), 3, self.names())
            kill(process)
            self.assertEqual(process.wait(), -signal.SIGKILL)
            os.kill(child, signal.SIGCONT)
            while self.state(child) not in ("", "Z"):
                time.sleep(0.001)
            self.expect_files(NEW)

    def test_a_hidden_file_is_removed_up_to_the_moment_when_it_is_renamed(self):
        for number in REQUESTS:
            process = self.begin("rename", nameless=False)
            self.wait_until_stopped(process)
            self.assertEqual(len(self.names()), 3, self.names())
            self.end(process, number)
            self.expect_files(OLD)


if __name__ == "__main__":
    main()
