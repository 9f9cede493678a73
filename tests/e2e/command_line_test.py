"""The program where there is no display."""

import os
import subprocess
import unittest

from servers import TIMEOUT
from window import PROGRAM


def run(*arguments):
    kept = {name: value for name, value in os.environ.items() if name.endswith("SAN_OPTIONS")}
    return subprocess.run([PROGRAM, *arguments], env=kept, stdin=subprocess.DEVNULL,
                          capture_output=True, text=True, timeout=TIMEOUT, check=False)


class WithoutDisplay(unittest.TestCase):

    def test_help_names_the_usage(self):
        result = run("--help")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertTrue(result.stdout.startswith("zemo [FILE]\n"), result.stdout)

    def test_version_is_one_line(self):
        result = run("--version")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertRegex(result.stdout, r"\Azemo \d+\.\d+\.\d+\n\Z")

    def test_it_ends_with_status_1_and_one_sentence(self):
        result = run()
        self.assertEqual((result.returncode, result.stdout), (1, ""))
        self.assertRegex(result.stderr, r"\A[^\n]*no display[^\n]*\.\n\Z")


if __name__ == "__main__":
    unittest.main()
