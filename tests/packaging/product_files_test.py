"""What the desktop gets to read about the program: product_files_test.py ROOT"""

import configparser
import os
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

import numpy

ROOT = pathlib.Path(sys.argv[1])
PACKAGING = ROOT / "packaging"
DESKTOP_ENTRY = PACKAGING / "zemo.desktop"
METAINFO = PACKAGING / "org.example.zemo.metainfo.xml"
MIME_DEFINITION = PACKAGING / "zemo-mime.xml"
SHARED_DATABASE = pathlib.Path("/usr/share/mime/packages/freedesktop.org.xml")
LANGUAGES = ("de", "fr", "ja")
XML_LANG = "{http://www.w3.org/XML/1998/namespace}lang"
ICON_SIZES = (16, 22, 24, 32, 48, 64, 128, 256)


def run(*command, **options):
    environment = os.environ | {"LC_ALL": "C.UTF-8"} | options.pop("env", {})
    return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          env=environment, check=False, **options)


def desktop_entry():
    parser = configparser.RawConfigParser(delimiters="=")
    parser.optionxform = str
    parser.read(DESKTOP_ENTRY, encoding="utf-8")
    return parser["Desktop Entry"]


def parse(path):
    return xml.etree.ElementTree.parse(path).getroot()


class Case(unittest.TestCase):
    def assert_silent(self, *command, **options):
        result = run(*command, **options)
        self.assertEqual((result.returncode, result.stderr), (0, ""), result.stdout)
        return result.stdout


class TheDesktopEntry(Case):
    def test_has_nothing_to_complain_of(self):
        self.assertEqual(self.assert_silent("desktop-file-validate", DESKTOP_ENTRY), "")

    def test_speaks_every_language(self):
        for key in ("GenericName", "Comment", "Keywords"):
            for language in LANGUAGES:
                self.assertIn(f"{key}[{language}]", desktop_entry())

    def test_has_the_name_that_the_window_gives(self):
        self.assertIn(f'setDesktopFileName("{DESKTOP_ENTRY.stem}")',
                      (ROOT / "src/app/main.cpp").read_text(encoding="utf-8"))

    def test_names_types_that_the_system_knows(self):
        known = SHARED_DATABASE.read_text(encoding="utf-8") + \
            MIME_DEFINITION.read_text(encoding="utf-8")
        types = [name for name in desktop_entry()["MimeType"].split(";") if name]
        self.assertGreaterEqual(len(types), 3)
        for name in types:
            self.assertIn(f'type="{name}"', known)


class TheDescriptionForSoftwareCentres(Case):
    def test_has_nothing_to_complain_of(self):
        said = self.assert_silent("appstreamcli", "validate", "--pedantic", "--no-net",
                                  "--no-color", METAINFO)
        self.assertRegex(said.strip(), r"^\S* ?Validation was successful\.$")

    def test_names_this_version_first(self):
        version = re.search(r"project\(zemo VERSION (\S+)",
                            (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")).group(1)
        self.assertEqual(parse(METAINFO).find("releases/release").get("version"), version)

    def test_shows_pictures_of_the_documents(self):
        images = [image.text for image in parse(METAINFO).iter("image")]
        self.assertEqual(len(images), 2)
        for image in images:
            path = image.removeprefix("https://example.org/zemo/")
            self.assertEqual((ROOT / path).read_bytes()[:4], b"\x89PNG", image)

    def test_starts_the_desktop_entry(self):
        self.assertEqual(parse(METAINFO).findtext("launchable"), DESKTOP_ENTRY.name)

    def test_says_everything_in_every_language(self):
        for parent in ("description", "description/ul"):
            texts = [element.get(XML_LANG) for element in parse(METAINFO).find(parent)
                     if element.tag in ("p", "li")]
            for language in LANGUAGES:
                self.assertEqual(texts.count(language), texts.count(None), parent)

    def test_summarizes_as_the_desktop_entry_does(self):
        summaries = {element.get(XML_LANG): element.text
                     for element in parse(METAINFO).findall("summary")}
        entry = desktop_entry()
        self.assertEqual(summaries, {None: entry["Comment"]} |
                         {language: entry[f"Comment[{language}]"] for language in LANGUAGES})


class TheTypeOfCaf(Case):
    """As a program is told it that asks the system, with the shared database and ours."""

    @classmethod
    def setUpClass(cls):
        cls.data = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.data)
        packages = cls.data / "mime/packages"
        packages.mkdir(parents=True)
        shutil.copy(SHARED_DATABASE, packages)
        shutil.copy(MIME_DEFINITION, packages / "zemo.xml")
        cls.environment = {"XDG_DATA_HOME": str(cls.data), "XDG_DATA_DIRS": str(cls.data)}
        cls.update = run("update-mime-database", cls.data / "mime", env=cls.environment)

    def type_of(self, name, content):
        file = self.data / name
        file.write_bytes(content)
        said = self.assert_silent(
            "/usr/bin/python3", "-c",
            "import sys; from gi.repository import Gio; data = open(sys.argv[1], 'rb').read();"
            "print(Gio.content_type_guess(sys.argv[2] or None, data or None)[0])",
            file, "" if name == "nameless" else name, env=self.environment)
        return said.strip()

    def test_is_well_formed(self):
        self.assertEqual(self.assert_silent("xmllint", "--noout", MIME_DEFINITION), "")

    def test_joins_the_database(self):
        self.assertEqual((self.update.returncode, self.update.stderr), (0, ""))

    def test_is_known_by_the_content(self):
        example = (ROOT / "examples/bell-44100.caf").read_bytes()[:4096]
        self.assertEqual(self.type_of("nameless", example), "audio/x-caf")

    def test_is_known_by_the_name(self):
        self.assertEqual(self.type_of("bell.caf", b""), "audio/x-caf")
        self.assertEqual(self.type_of("BELL.CAF", b""), "audio/x-caf")

    def test_is_not_seen_where_it_is_not(self):
        self.assertNotEqual(self.type_of("nameless", b"FORM\0\0\0\0AIFC"), "audio/x-caf")

    def test_is_named_in_every_language(self):
        languages = [element.get(XML_LANG) for element in parse(MIME_DEFINITION).iter()
                     if element.tag.endswith("}comment")]
        self.assertEqual(sorted(languages[1:]), sorted(LANGUAGES))


class TheManualPages(Case):
    PAGES = sorted(PACKAGING.glob("*.1"))

    def test_are_there(self):
        self.assertEqual([page.name for page in self.PAGES], ["zemo-batch.1", "zemo.1"])

    def test_show_without_a_warning(self):
        for page in self.PAGES:
            self.assertNotEqual(self.assert_silent("man", "--warnings", "-l", "-Tutf8", page), "")

    def test_have_nothing_to_complain_of(self):
        for page in self.PAGES:
            self.assertEqual(self.assert_silent("mandoc", "-Tlint", "-Wwarning", page), "")

    def test_are_found_by_their_subject(self):
        for page in self.PAGES:
            self.assertIn(f'"{page.stem} - ', self.assert_silent("lexgrog", page))

    def test_have_one_heading(self):
        headings = {page.read_text(encoding="utf-8").splitlines()[0].split(" ", 3)[3]
                    for page in self.PAGES}
        self.assertEqual(len(headings), 1)

    def test_name_every_key_of_the_window(self):
        window = (ROOT / "src/interface/mainWindow.ui").read_text(encoding="utf-8")
        keys = re.findall(r'name="shortcut"><string>([^<]+)<', window)
        page = (PACKAGING / "zemo.1").read_text(encoding="utf-8")
        self.assertGreaterEqual(len(keys), 8)
        for key in keys:
            self.assertRegex(page, rf"(?m)^\.BR? .*{re.escape(key)}( |$)")


class TheIcons(Case):
    @classmethod
    def setUpClass(cls):
        cls.drawn = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.drawn)
        cls.drawing = run(ROOT / "tools/make-icons", cls.drawn)

    @staticmethod
    def pixels(path):
        picture = subprocess.run(["convert", path, "-depth", "8", "rgba:-"], check=True,
                                 stdin=subprocess.DEVNULL, stdout=subprocess.PIPE).stdout
        return numpy.frombuffer(picture, dtype=numpy.uint8).astype(int)

    def test_have_their_sizes(self):
        for size in ICON_SIZES:
            header = (PACKAGING / f"icons/zemo-{size}.png").read_bytes()[:24]
            self.assertEqual(header[:8], b"\x89PNG\r\n\x1a\n")
            self.assertEqual(struct.unpack(">II", header[16:]), (size, size))

    def test_are_what_the_drawings_give(self):
        self.assertEqual((self.drawing.returncode, self.drawing.stderr), (0, ""))
        for size in ICON_SIZES:
            kept = self.pixels(PACKAGING / f"icons/zemo-{size}.png")
            drawn = self.pixels(self.drawn / f"zemo-{size}.png")
            # Another version of the renderer may round another way.
            self.assertLessEqual(abs(kept - drawn).max(), 2, f"{size}: run tools/make-icons")

    def test_are_all_in_the_list_of_sizes(self):
        names = {path.name for path in (PACKAGING / "icons").glob("*.png")}
        self.assertEqual(names, {f"zemo-{size}.png" for size in ICON_SIZES})


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
