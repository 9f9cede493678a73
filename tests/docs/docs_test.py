"""The documents agree with the program: docs_test.py ROOT ZEMO_BATCH"""

import cmath
import json
import math
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as xml
from array import array

ROOT = pathlib.Path(sys.argv[1])
BATCH = sys.argv[2]
MANUAL = ROOT / "docs" / "MANUAL.md"
DOCUMENTS = sorted([ROOT / "README.md", ROOT / "SECURITY.md", *(ROOT / "docs").glob("*.md")])


def text(path):
    return (ROOT / path).read_text(encoding="utf-8")


def shell_lines(document):
    for block in re.findall(r"```sh\n(.*?)```", document.read_text(encoding="utf-8"), re.S):
        for line in block.splitlines():
            yield line.split("#")[0].strip()


def batch(*words, folder=None):
    return subprocess.run([BATCH, *words], cwd=folder, text=True, errors="replace",
                          capture_output=True, check=False)


def run_in_shell(commands, folder):
    """With the program among those that the shell finds."""
    environment = os.environ | {"PATH": f"{pathlib.Path(BATCH).parent}:{os.environ['PATH']}"}
    return subprocess.run(["bash", "-e", "-o", "pipefail", "-c", commands], cwd=folder, text=True,
                          errors="replace", env=environment, capture_output=True, check=False)


def are_known(command):
    """Whether the program has these steps already: import and export may come later."""
    return set(shlex.split(command)) & {"import", "export"} <= set(
        re.findall(r"^  (\w+)", batch("--help").stdout, re.M))


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
            for name in ("noise.f32", "silence.f32"):
                (place / name).write_bytes(bytes(4000))
            commands = [line for document in DOCUMENTS for line in shell_lines(document)
                        if line.startswith("zemo-batch") and are_known(line)]
            self.assertGreaterEqual(len(commands), 6)
            for command in commands:
                self.assertEqual(run_in_shell(command, place).returncode, 0, command)

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

    def test_name_only_tests_that_exist(self):
        build = pathlib.Path(BATCH).parents[1]
        if build.name != "release":
            self.skipTest("the documents speak of the release preset")
        said = subprocess.run(["ctest", "--test-dir", build, "-N"], text=True, capture_output=True,
                              check=True).stdout
        tests = re.findall(r"Test +#\d+: (\S+)", said)
        named = [(document, pattern.replace("\\|", "|")) for document in DOCUMENTS for pattern in
                 re.findall(r" -R '?([\w|\\.]+)|`-R '?([\w|\\.]+)", document.read_text(encoding="utf-8"))
                 for pattern in pattern if pattern]
        self.assertGreater(len(named), 10)
        for document, pattern in named:
            for part in pattern.split("|"):
                name = part.replace("CLASS", "PulseAudio")
                self.assertTrue([test for test in tests if re.search(name, test)],
                                f"{document.name}: {part}")

    def test_name_only_cases_that_exist(self):
        for document in DOCUMENTS:
            for program, patterns in re.findall(r"build/release/bin/(\w+) --gtest_filter='([^']+)'",
                                                document.read_text(encoding="utf-8")):
                listed = pathlib.Path(BATCH).with_name(program)
                if listed.exists() and "NAME" not in patterns:
                    for pattern in patterns.split(":"):
                        said = subprocess.run([listed, "--gtest_list_tests",
                                               f"--gtest_filter={pattern}"], text=True,
                                              capture_output=True, check=True).stdout
                        self.assertIn("\n  ", said, f"{document.name}: {pattern}")

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


def interface(name):
    return xml.parse(ROOT / "src" / "interface" / name).getroot()


def property_of(element, name):
    found = element.find(f"property[@name='{name}']/string")
    return (found.text or "").replace("&", "") if found is not None else None


def menu_items():
    """(menu, item): the item's key, or None."""
    window = interface("mainWindow.ui")
    actions = {action.get("name"): action for action in window.iter("action")}
    return {(property_of(menu, "title"), property_of(actions[entry.get("name")], "text")):
            property_of(actions[entry.get("name")], "shortcut")
            for menu in window.iter("widget") if menu.get("class") == "QMenu"
            for entry in menu.findall("addaction") if entry.get("name") in actions}


def labels():
    """Every text of the interface, as it is read."""
    texts = {string.text.replace("&", "") for file in (ROOT / "src" / "interface").glob("*.ui")
             for string in interface(file.name).iter("string") if string.text}
    for file in (ROOT / "src" / "app").glob("*.cpp"):
        texts |= set(re.findall(r'tr\("([^"]+)"\)', file.read_text(encoding="utf-8")))
    return texts


def tone(frequency, rate=44100, peak=0.8):
    """Two seconds."""
    return [peak * math.sin(2 * math.pi * frequency * i / rate) for i in range(2 * rate)]


def decibels(values, frequency, rate=44100):
    """The amplitude of a partial, from a second in the middle."""
    first = rate // 2
    turn = cmath.exp(-2j * math.pi * frequency / rate)
    total, phase = 0j, 1 + 0j
    for value in values[first:first + rate]:
        total += value * phase
        phase *= turn
    return 20 * math.log10(max(2 * abs(total) / rate, 1e-9))


def samples(data):
    values = array("f")
    values.frombytes(data)
    return values


class TheManual(unittest.TestCase):
    manual = MANUAL.read_text(encoding="utf-8")

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        (self.folder / "examples").symlink_to(ROOT / "examples")
        (self.folder / "noise.f32").write_bytes(bytes(4000))
        (self.folder / "silence.f32").write_bytes(bytes(4000))

    def dumped(self, *words):
        path = self.folder / "samples.f32"
        self.assertEqual(batch(*words, "dump", str(path), folder=self.folder).returncode, 0, words)
        return samples(path.read_bytes())

    def opened(self, values, *words, rate=44100):
        path = self.folder / "raw.f32"
        path.write_bytes(array("f", values).tobytes())
        return list(self.dumped("--rate", str(rate), "open", str(path), *words))

    def test_says_what_its_commands_print(self):
        blocks = re.findall(r"```sh\n(.*?)```\n(?:```text\n(.*?)```)?", self.manual, re.S)
        answered = 0
        for commands, answer in filter(lambda block: are_known(block[0]), blocks):
            result = run_in_shell(commands, self.folder)
            self.assertEqual(result.returncode, 0, commands)
            said = result.stdout.splitlines() + result.stderr.splitlines()
            for line in answer.splitlines():
                self.assertIn(line, said, commands)
                answered += 1
        self.assertGreaterEqual(answered, 15)

    def test_shows_files_that_are_there_and_no_others(self):
        shown = set(re.findall(r"\]\((manual/[^)]+)\)", self.manual))
        there = {f"manual/{file.name}" for file in (ROOT / "docs" / "manual").iterdir()}
        self.assertEqual(shown, there)

    def test_has_small_pictures_and_sounds(self):
        for file in (ROOT / "docs" / "manual").iterdir():
            limit = {".png": 80_000, ".flac": 100_000}[file.suffix]
            self.assertLess(file.stat().st_size, limit, file.name)

    def test_plays_sounds_that_its_commands_make(self):
        commands = [shlex.split(line)[1:] for line in shell_lines(MANUAL) if ".caf" in line]
        sources = {words[words.index("save") + 1]: words[:words.index("save")]
                   for words in commands if "save" in words}
        sources |= {"bell.caf": ["open", "examples/bell-44100.caf"],
                    "harp.caf": ["open", "examples/harp-48000.caf"]}
        for file in sorted((ROOT / "docs" / "manual").glob("*.flac")):
            made = self.dumped(*sources[f"{file.stem}.caf"])
            decoded = subprocess.run(
                ["ffmpeg", "-nostdin", "-loglevel", "error", "-i", file, "-f", "f32le", "-"],
                capture_output=True, check=True).stdout
            pairs = list(zip(samples(decoded)[:50_000], made))
            self.assertEqual(len(pairs), 50_000, file.name)
            self.assertLess(max(abs(a - b) for a, b in pairs), 2 ** -15, file.name)

    def test_names_menu_items_that_are_there(self):
        named = set(re.findall(r"\*\*(\w+) ▸ ([^*]+)\*\*", self.manual))
        self.assertGreaterEqual(len(named), 14)
        self.assertLessEqual(named, set(menu_items()))

    def test_names_labels_that_are_there(self):
        named = set(re.findall(r"(?<!\*)\*([^*\n]+)\*(?!\*)", self.manual))
        self.assertGreaterEqual(len(named), 30)
        self.assertLessEqual(named, labels())

    def test_has_a_section_and_a_picture_for_every_sheet(self):
        for item in (item for menu, item in menu_items() if menu == "Process"):
            self.assertIn(f"**Process ▸ {item}**", self.manual)
            self.assertIn(f"(manual/sheet-{item.rstrip('…').lower()}.png)", self.manual)

    def test_lists_every_key_of_the_menus(self):
        listed = {(menu, item): key for key, menu, item in
                  re.findall(r"^\| (\S+) \| \*\*(\w+) ▸ ([^*]+)\*\* \|$", self.manual, re.M)}
        keys = {name: key for name, key in menu_items().items() if key}
        self.assertEqual(listed, keys)

    def test_gives_the_ratios_of_semitones(self):
        rows = [re.findall(r"[−+]?[\d.]+", row) for row in
                re.findall(r"^\| (?:semitones|\*Ratio\*) \|(.*)$", self.manual, re.M)]
        self.assertGreaterEqual(len(rows[0]), 8)
        for semitones, ratio in zip(*rows, strict=True):
            self.assertAlmostEqual(
                float(ratio), 2 ** (-int(semitones.replace("−", "-")) / 12), places=4)

    def test_says_what_normalizing_does(self):
        self.assertAlmostEqual(max(self.opened([0.1, 0.5, -0.25], "normalize")), 0.909, places=3)
        self.assertAlmostEqual(max(self.opened([0.1, 1.5, 0.25])), 0.909, places=3)
        self.assertEqual(self.opened([0.25, 0.5, -0.75]), [0.25, 0.5, -0.75])
        louder = self.opened([0.1, -0.5, 0.25, 0.1], "normalize")
        self.assertGreater(max(map(abs, louder)), 0.909)
        upside_down = self.opened([0.1, -0.5], "normalize")
        self.assertLess(upside_down[0], 0.0)

    def test_says_how_loud_the_harmonics_are(self):
        def partial(number, peak, *settings):
            made = self.opened(tone(500, peak=peak), "hd", "mix=1", "scale=off", *settings)
            return decibels(made, 500 * number)
        clean = ("knee=1", "comp=1")
        self.assertAlmostEqual(partial(2, 0.8, "harmonics=2", *clean), -6, delta=0.1)
        self.assertAlmostEqual(partial(4, 0.8, "harmonics=4", *clean), -12, delta=0.1)
        self.assertLess(partial(1, 0.8, *clean), -80)
        for knee, comp in (("knee=0", "comp=0.5"), ("knee=0.8", "comp=0.5")):
            self.assertLess(partial(3, 0.8, knee, comp), -80, knee)
        self.assertGreater(partial(3, 0.8, "knee=0.5"), -40)
        quieter = partial(2, 0.8, "highpass=500") - partial(2, 0.4, "highpass=500")
        self.assertAlmostEqual(quieter, 20 * math.log10(4), delta=0.1)

    def test_says_how_far_the_other_sideband_is_down(self):
        for rate, below in ((44100, 79), (48000, 67), (88200, 9.6), (96000, 0)):
            made = self.opened(tone(1000, rate, 0.4), "ssb-upper", "5000", "1", rate=rate)
            difference = decibels(made, 6000, rate) - decibels(made, 4000, rate)
            self.assertAlmostEqual(difference, below, delta=0.2, msg=str(rate))

    def test_says_where_partials_go(self):
        lower = self.opened(tone(1000), "ssb-lower", "100", "1")
        self.assertGreater(decibels(lower, 900), decibels(lower, 1100) + 40)
        product = self.opened(tone(1000), "am", "250", "1")
        self.assertAlmostEqual(decibels(product, 750), decibels(product, 1250), delta=0.1)
        self.assertLess(decibels(product, 1000), -80)
        folded = self.opened(tone(15000), "resample", "0.5")[:44100]
        self.assertGreater(decibels(folded + folded, 14100), -20)

    def test_says_how_loud_fm_is(self):
        made = self.opened(tone(150), "fm", "2000", "2", "16")
        self.assertAlmostEqual(max(map(abs, made)), 0.5, delta=0.001)
        self.assertEqual(set(self.opened(tone(150)[:11025], "fm", "2000", "2", "4")), {0.0})

    def test_says_what_is_refused(self):
        bell = ["open", "examples/bell-44100.caf"]
        for words in (["resample", "0"], ["resample", "-1"], ["resample", "0.000001"],
                      ["resample", "100000"]):
            self.assertNotEqual(batch(*bell, *words, folder=self.folder).returncode, 0, words)
        self.assertEqual(batch("--rate", "48000", *bell, folder=self.folder).returncode, 1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
