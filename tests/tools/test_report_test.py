"""tools/test-report, which ./test ends with, on what the four kinds of test programs print."""

import json
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as xml
from pathlib import Path

REPORT = Path(sys.argv.pop(1))

GOOGLE = """[==========] Running 4 tests from 2 test suites.
[ RUN      ] Normalize.APeakIsKept
[       OK ] Normalize.APeakIsKept (0 ms)
[ RUN      ] Normalize.Halves
HERE/tests/files/NormalizeTest.cpp:52: Failure
Expected equality of these values:
  half
    Which is: 0.25
  0.5F
[  FAILED  ] Normalize.Halves (1 ms)
[ RUN      ] Normalize.NeedsAPrivilege
[  SKIPPED ] Normalize.NeedsAPrivilege (0 ms)
"""
GOOGLE_END = """[==========] 3 tests from 2 test suites ran. (1 ms total)
[  PASSED  ] 1 test.
[  SKIPPED ] 1 test, listed below:
[  SKIPPED ] Normalize.NeedsAPrivilege
[  FAILED  ] 1 test, listed below:
[  FAILED  ] Normalize.Halves
"""
GOOGLE_CRASH = """[ RUN      ] Normalize.Crashes
about to crash
"""
QT = """********* Start testing of SheetTest *********
PASS   : SheetTest::initTestCase()
PASS   : SheetTest::opens(AM)
FAIL!  : SheetTest::opens(FM) Compared values are not the same
   Actual   (title): "FM"
   Expected (wanted): "AM"
   Loc: [../../tests/window/sheet_test.cpp(12)]
SKIP   : SheetTest::isDragged() no pointer here
PASS   : SheetTest::cleanupTestCase()
Totals: 3 passed, 1 failed, 1 skipped, 0 blacklisted, 5ms
"""
UNITTEST = """..F.s
======================================================================
FAIL: test_stop_fades (__main__.Transport.test_stop_fades)
----------------------------------------------------------------------
Traceback (most recent call last):
  File "HERE/tests/e2e/transport_test.py", line 5, in test_stop_fades
    self.assertEqual(1, 2)
AssertionError: 1 != 2

----------------------------------------------------------------------
Ran 5 tests in 0.001s

FAILED (failures=1, skipped=1)
"""


class Report(unittest.TestCase):
    """A copy of the tool in a folder with results of its own."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name).resolve()
        self.results = self.root / "build" / "test-results"
        self.results.mkdir(parents=True)
        (self.root / "tools").mkdir()
        shutil.copy(REPORT, self.root / "tools")
        self.tests = []
        self.cases = xml.Element("testsuite")

    def program(self, name, output, command, status="fail", message="Failed", environment=()):
        here = str(self.root)
        case = xml.SubElement(self.cases, "testcase", name=name, status=status)
        if status != "run":
            kind = "failure" if status == "fail" else "skipped"
            xml.SubElement(case, kind, message=message)
        xml.SubElement(case, "system-out").text = output.replace("HERE", here)
        properties = [{"name": "ENVIRONMENT", "value": list(environment)}] if environment else []
        self.tests.append({"name": name, "properties": properties,
                           "command": [word.replace("HERE", here) for word in command]})

    def report(self):
        """The exit status and the lines."""
        (self.results / "release.json").write_text(json.dumps({"tests": self.tests}))
        xml.ElementTree(self.cases).write(self.results / "release.xml")
        result = subprocess.run([self.root / "tools/test-report", "release"], check=False, text=True,
                                stdout=subprocess.PIPE)
        return result.returncode, result.stdout.splitlines()

    def test_all_that_passes_is_counted(self):
        self.program("files_tests", "[==========] Running 1 test\n[       OK ] A.B (0 ms)\n",
                     ["HERE/files_tests"], status="run")
        self.program("include_rules", "", ["HERE/rules.sh"], status="run")
        self.assertEqual(self.report(), (0, ["release: 2 passed, 0 failed", "2 passed, 0 failed"]))

    def test_a_failed_case_of_google_test_is_named_with_its_sentence_and_command(self):
        self.program("files_tests", GOOGLE + GOOGLE_END, ["HERE/build/release/bin/files_tests"])
        status, lines = self.report()
        self.assertEqual(status, 1)
        self.assertEqual(lines, [
            "release: 1 passed, 1 failed, 1 skipped", "",
            "FAILED Normalize.Halves",
            "  tests/files/NormalizeTest.cpp:52: Failure Expected equality of these values: half "
            "Which is: 0.25 0.5F",
            "  build/release/bin/files_tests --gtest_filter=Normalize.Halves", "",
            "1 passed, 1 failed, 1 skipped"])

    def test_a_crash_is_the_failure_of_the_case_under_way(self):
        self.program("files_tests", GOOGLE + GOOGLE_CRASH, ["HERE/files_tests"], message="SEGFAULT")
        lines = self.report()[1]
        self.assertIn("release: 1 passed, 2 failed, 1 skipped", lines)
        self.assertIn("FAILED Normalize.Crashes", lines)
        self.assertIn("  SEGFAULT about to crash", lines)

    def test_a_failed_row_of_qt_test_is_named_with_its_environment(self):
        self.program("sheet_test", QT, ["HERE/sheet_test"], environment=["QT_QPA_PLATFORM=offscreen"])
        lines = self.report()[1]
        self.assertEqual(lines[0], "release: 1 passed, 1 failed, 1 skipped")
        self.assertIn("FAILED SheetTest::opens(FM)", lines)
        self.assertIn('  Compared values are not the same Actual   (title): "FM" Expected (wanted): "AM" '
                      "Loc: [../../tests/window/sheet_test.cpp(12)]", lines)
        self.assertIn("  QT_QPA_PLATFORM=offscreen sheet_test opens", lines)

    def test_a_failed_case_of_unittest_is_repeated_without_its_class_mates(self):
        self.program("e2e_transport", UNITTEST,
                     ["/usr/bin/python3", "-B", "HERE/tests/e2e/transport_test.py", "Transport"],
                     environment=[f"ZEMO_PROGRAM={self.root}/build/release/bin/zemo"])
        lines = self.report()[1]
        self.assertEqual(lines[0], "release: 3 passed, 1 failed, 1 skipped")
        self.assertIn("  AssertionError: 1 != 2", lines)
        self.assertIn("  /usr/bin/python3 -B tests/e2e/transport_test.py Transport.test_stop_fades", lines)

    def test_a_program_that_says_nothing_of_cases_is_one_test(self):
        self.program("model", "first\nsecond\n", ["HERE/check.sh", "Model"])
        self.program("needs_mount", "", ["HERE/full_disk"], status="notrun",
                     message="SKIP_RETURN_CODE=77")
        self.program("missing", "", ["HERE/missing"], status="notrun", message="Unable to find it")
        lines = self.report()[1]
        self.assertEqual(lines[0], "release: 0 passed, 2 failed, 1 skipped")
        self.assertIn("  Failed first second", lines)
        self.assertIn("  check.sh Model", lines)
        self.assertIn("  It could not be started.", lines)

    def test_what_goes_wrong_after_all_cases_passed_is_a_failure(self):
        self.program("files_tests", "[==========] Running 1 test\n[       OK ] A.B (0 ms)\n"
                     "[==========] 1 test ran.\nERROR: LeakSanitizer\n", ["HERE/files_tests"])
        lines = self.report()[1]
        self.assertEqual(lines[0], "release: 1 passed, 1 failed")
        self.assertIn("FAILED files_tests", lines)

    def test_a_check_that_is_no_test_of_ctest_is_told(self):
        (self.results / "release.txt").write_text("passed format\nfailed tidy tools/check-style tidy\n")
        lines = self.report()[1]
        self.assertEqual(lines[0], "release: 1 passed, 1 failed")
        self.assertIn("FAILED tidy", lines)
        self.assertIn("  tools/check-style tidy", lines)


if __name__ == "__main__":
    unittest.main()
