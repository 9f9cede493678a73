"""The built programs have the protections that distributions build their packages with:
hardening_test.py BUILD_TREE"""

import pathlib
import platform
import re
import subprocess
import sys
import unittest

PROGRAMS = [pathlib.Path(sys.argv[1]) / "bin" / name for name in ("zemo", "zemo-batch")]
PAGE = 4096
ON_X86 = platform.machine() == "x86_64"


def output(*command):
    return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          check=True).stdout


def code(program):
    return output("objdump", "--disassemble", "--no-show-raw-insn", program)


def flags(program):
    """What the dynamic linker is told."""
    return re.findall(r"FLAGS_1\) +(.*)", output("readelf", "--dynamic", "--wide", program))[0]


def imported(program):
    """The names of the functions that the C library gives."""
    symbols = output("readelf", "--dyn-syms", "--wide", program)
    return set(re.findall(r" UND (\w+)@GLIBC", symbols))


class EveryProgram(unittest.TestCase):

    def check(self, test):
        for program in PROGRAMS:
            with self.subTest(program=program.name):
                test(program)

    def test_can_be_loaded_anywhere(self):
        def test(program):
            self.assertIn("DYN", output("readelf", "--file-header", program))
            self.assertIn("PIE", flags(program))
        self.check(test)

    def test_binds_all_names_at_once_and_then_closes_their_table(self):
        def test(program):
            self.assertIn("GNU_RELRO", output("readelf", "--program-headers", "--wide", program))
            self.assertIn("NOW", flags(program))
        self.check(test)

    def test_has_no_memory_that_is_both_written_and_run(self):
        def test(program):
            headers = output("readelf", "--program-headers", "--wide", program)
            self.assertRegex(headers, r"GNU_STACK .* RW +0x")
            self.assertNotRegex(headers, r"LOAD .* RWE +0x")
        self.check(test)

    def test_looks_for_overwritten_return_addresses(self):
        self.check(lambda program: self.assertTrue("__stack_chk_fail" in imported(program)))

    def test_calls_the_checked_forms_of_functions(self):
        # The others are not called where the compiler sees that they need no check.
        self.check(lambda program: self.assertTrue("__vsnprintf_chk" in imported(program)))

    @unittest.skipUnless(ON_X86, "these are the instructions of another processor")
    def test_touches_every_page_of_its_stack(self):
        def test(program):
            steps = [int(step, 16) for step in re.findall(r"sub +\$0x([0-9a-f]+),%rsp", code(program))]
            down = [step for step in steps if step < 1 << 63]
            self.assertGreater(len(down), 100)
            self.assertLessEqual(max(down), PAGE)
        self.check(test)

    @unittest.skipUnless(ON_X86, "these are the instructions of another processor")
    def test_marks_where_indirect_calls_may_go(self):
        def test(program):
            symbols = output("readelf", "--symbols", "--wide", program)
            functions = re.findall(r": 0*([0-9a-f]+) +\d+ FUNC +(?:GLOBAL|WEAK) +\w+ +\d+ _ZNK?4zemo",
                                   symbols)
            instructions = dict(re.findall(r"^ *([0-9a-f]+):\t(\w+)", code(program), re.MULTILINE))
            self.assertGreater(len(functions), 100)
            self.assertEqual({instructions[address] for address in functions}, {"endbr64"})
        self.check(test)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
