"""The translation files: complete, up to date, and right in what a machine can see.

LUPDATE and LRELEASE name Qt's tools, ZEMO_SOURCE the project.
"""

import os
import re
import shutil
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

PROJECT = Path(os.environ["ZEMO_SOURCE"])
FILES = sorted((PROJECT / "translations").glob("zemo_*.ts"))
LANGUAGES = ["de", "fr", "ja"]
MENUS = PROJECT / "src" / "interface" / "mainWindow.ui"
SHEETS = sorted((PROJECT / "src" / "interface").glob("*Panel.ui"))
SHORTCUT = re.compile(r"((Ctrl|Shift|Alt)\+)*([A-Z]|F\d+|Space)")
PLACES = re.compile(r"%L?\d|%n")


class Message:
    def __init__(self, context, element):
        self.context = context
        self.source = element.findtext("source")
        self.kind = element.find("translation").get("type", "finished")
        forms = [form.text for form in element.iter("numerusform")]
        self.texts = [text or "" for text in forms or [element.findtext("translation")]]


def messages(path):
    for context in ElementTree.parse(path).iter("context"):
        for element in context.findall("message"):
            yield Message(context.findtext("name"), element)


def translations(path):
    """By context and source."""
    return {(message.context, message.source): message.texts[0] for message in messages(path)}


def mnemonic(text):
    found = re.search(r"&([^&])", text)
    return found.group(1).casefold() if found else None


class Translations(unittest.TestCase):

    def each(self):
        for path in FILES:
            for message in messages(path):
                with self.subTest(file=path.name, source=message.source):
                    yield message

    def test_the_languages_are_these(self):
        self.assertEqual([path.stem.removeprefix("zemo_") for path in FILES], LANGUAGES)

    def test_every_text_is_translated(self):
        for message in self.each():
            self.assertEqual(message.kind, "finished")
            self.assertTrue(all(message.texts))

    def test_the_files_hold_the_texts_of_the_sources_and_no_others(self):
        with tempfile.TemporaryDirectory() as directory:
            for path in FILES:
                copy = Path(shutil.copy(path, directory))
                subprocess.run([os.environ["LUPDATE"], "-silent", "-no-obsolete", "-locations",
                                "none", str(PROJECT / "src"), "-ts", str(copy)], check=True)
                with self.subTest(file=path.name):
                    self.assertEqual(translations(copy).keys(), translations(path).keys())

    def test_they_compile_without_a_word(self):
        with tempfile.TemporaryDirectory() as directory:
            for path in FILES:
                said = subprocess.run(
                    [os.environ["LRELEASE"], path, "-qm", f"{directory}/a.qm"], check=True,
                    capture_output=True, text=True)
                self.assertEqual(said.stderr, "")
                self.assertIn("0 unfinished", said.stdout)
                self.assertNotIn("Ignored", said.stdout)

    def test_the_places_to_be_filled_are_those_of_the_source(self):
        for message in self.each():
            for text in message.texts:
                self.assertEqual(sorted(PLACES.findall(text)),
                                 sorted(PLACES.findall(message.source)))

    def test_shortcuts_are_the_same_everywhere(self):
        for message in self.each():
            if SHORTCUT.fullmatch(message.source) and "+" in message.source:
                self.assertEqual(message.texts, [message.source])

    def test_a_text_has_a_mnemonic_when_its_source_has_one(self):
        for message in self.each():
            for text in message.texts:
                self.assertEqual(mnemonic(text) is None, mnemonic(message.source) is None)

    def assert_unique(self, file, texts):
        found = [mnemonic(text) for text in texts if mnemonic(text)]
        with self.subTest(file=file, texts=texts):
            self.assertEqual(len(found), len(set(found)), found)

    def test_mnemonics_are_unique_in_each_menu(self):
        root = ElementTree.parse(MENUS).getroot()
        text_of = {action.get("name"): action.findtext("property[@name='text']/string")
                   for action in root.iter("action")}
        menus = [[text_of[action.get("name")] for action in menu.findall("addaction")
                  if action.get("name") in text_of]
                 for menu in root.iter("widget") if menu.get("class") == "QMenu"]
        menus.append([menu.findtext("property[@name='title']/string")
                      for menu in root.iter("widget") if menu.get("class") == "QMenu"])
        self.assertGreater(len(menus), 5)
        for path in FILES:
            translated = translations(path)
            for menu in menus:
                self.assert_unique(path.name, [translated["mainWindow", text] for text in menu])

    def test_mnemonics_are_unique_in_each_sheet(self):
        self.assertEqual(len(SHEETS), 4)
        for path in FILES:
            for sheet in SHEETS:
                texts = [text for (context, _), text in translations(path).items()
                         if context == sheet.stem]
                self.assert_unique(path.name, [text for text in texts if "&" in text])

    def test_french_puts_a_space_that_does_not_break_before_high_punctuation(self):
        for (_, source), text in translations(PROJECT / "translations/zemo_fr.ts").items():
            with self.subTest(source=source):
                self.assertNotRegex(text, "[^\u00a0\u202f][;?!»]|«[^\u00a0\u202f]")
                self.assertNotRegex(text, "[^\u00a0\u202f]:(\\s|$)")

    def test_german_has_its_own_quotes(self):
        for (_, source), text in translations(PROJECT / "translations/zemo_de.ts").items():
            with self.subTest(source=source):
                self.assertNotRegex(text, "[\"”«»]")
                self.assertEqual(text.count("„"), text.count("“"))

    def test_japanese_sentences_end_as_they_should(self):
        for (_, source), text in translations(PROJECT / "translations/zemo_ja.ts").items():
            with self.subTest(source=source):
                if re.fullmatch(r"[A-Z].* .*\w\.", source, re.DOTALL):
                    self.assertTrue(text.endswith("。"), text)


if __name__ == "__main__":
    unittest.main()
