"""The documents agree with the program: docs_test.py ROOT ZEMO_BATCH"""

import json
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(sys.argv[1])
BATCH = sys.argv[2]
DOCUMENTS = sorted([ROOT / "README.md", *(ROOT / "docs").glob("*.md")])


def text(path):
    return (ROOT / path).read_text(encoding="utf-8")


def shell_lines(document):
    for block in re.findall(r"```sh\n(.*?)```", document.read_text(encoding="utf-8"), re.S):
        for line in block.splitlines():
            yield line.split("#")[0].strip()


def batch(*words, folder=None):
    return subprocess.run([BATCH, *words], cwd=folder, text=True, capture_output=True, check=False)


class TheDocuments(unittest.TestCase):
    def test_quote_the_help_text_to_the_letter(self):
        self.assertIn("```\n" + batch("--help").stdout + "```", text("docs/BATCH.md"))

    def test_link_only_to_what_is_there(self):
        for document in DOCUMENTS:
            for link in re.findall(r"\]\(([^)#]+)\)", document.read_text(encoding="utf-8")):
                self.assertTrue((document.parent / link).exists(), f"{document.name}: {link}")

    def test_show_batch_commands_that_work(self):
        with tempfile.TemporaryDirectory() as folder:
            place = pathlib.Path(folder)
            (place / "examples").symlink_to(ROOT / "examples")
            (place / "noise.f32").write_bytes(bytes(4000))
            commands = [line for document in DOCUMENTS for line in shell_lines(document)
                        if line.startswith("zemo-batch")]
            self.assertGreaterEqual(len(commands), 6)
            for command in commands:
                words = shlex.split(command)[1:]
                self.assertEqual(batch(*words, folder=place).returncode, 0, command)

    def test_show_commands_of_the_project_that_are_there(self):
        for document in DOCUMENTS:
            for line in shell_lines(document):
                program = line.split(" ")[0] if line else ""
                if program.startswith(("./", "bench/", "tools/")):
                    self.assertTrue((ROOT / program).exists(), f"{document.name}: {line}")

    def test_name_only_presets_that_exist(self):
        presets = {p["name"] for p in json.loads(text("CMakePresets.json"))["configurePresets"]}
        for document in DOCUMENTS:
            for name in re.findall(r"--preset (\S+)", document.read_text(encoding="utf-8")):
                self.assertIn(name, presets, document.name)

    def test_have_the_version_of_the_program(self):
        version = re.search(r"project\(zemo VERSION (\S+)", text("CMakeLists.txt")).group(1)
        self.assertEqual(batch("--version").stdout, f"zemo-batch {version}\n")
        self.assertIn(f'"ZEMO {version}"', text("packaging/zemo-batch.1"))

    def test_describe_every_step_in_the_man_page(self):
        steps = re.findall(r"^  (\w+)", batch("--help").stdout, re.M)
        page = text("packaging/zemo-batch.1").replace("\\-", "-")
        self.assertGreaterEqual(len(steps), 7)
        for step in steps:
            self.assertRegex(page, rf"(?m)^\.BI? {step}\b")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
