"""Every sentence that the rooms without Qt may give the user can be translated.

The window finds the sentences again by the table in src/app/CoreSentences.cpp. This test seeks them
in the rooms' sources: whatever is written there like a sentence is in the table, or below among what
is only traced. ZEMO_SOURCE names the project.
"""

import os
import re
import unittest
from pathlib import Path

SOURCE = Path(os.environ["ZEMO_SOURCE"]) / "src"
TABLE = SOURCE / "app" / "CoreSentences.cpp"
ROOMS = ["files", "interchange", "dsp", "midi", "overview", "playback", "platform"]

LITERAL = r'"(?:[^"\\\n]|\\.)*"'
COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/", re.DOTALL)
LITERALS = re.compile(rf"{LITERAL}(?:\s*{LITERAL})*")
DIRECTIVE = re.compile(r"%[.\d]*l*[dufsgx]")
ESCAPES = {"n": "\n", "t": "\t"}

# Texts with a capital and a space that are traced and never shown.
TRACED = {
    "Buffer read!\n",
    "Error: %s (%s)\n",
    "Channel: %x, Message: %x\n",
    "NOTE ON\n",
    "MIDI Sources: %ld\n",
    "File %s: %zu\t values\n\n",
    "NULL Buffer!\n",
    "S = %s\n",
    "Nothing to resample",
    "ZEMO runs on little-endian hosts",  # said by the compiler
    "No text",  # a part of "Raw data file: No text"
}


def value(literals):
    """What the adjacent literals hold together."""
    text = "".join(re.findall(LITERAL, literals)).replace('""', "")
    return re.sub(r"\\(.)", lambda found: ESCAPES.get(found.group(1), found.group(1)), text[1:-1])


def literals_of(path):
    source = path.read_text(encoding="utf-8")
    source = re.sub(rf"({LITERAL})|{COMMENT.pattern}", lambda found: found.group(1) or "", source,
                    flags=re.DOTALL)
    return [value(literals) for literals in LITERALS.findall(source)]


def table():
    calls = re.findall(r'QT_TRANSLATE_NOOP\(\s*"core",\s*(.*?)\),\n', TABLE.read_text("utf-8"),
                       re.DOTALL)
    return [value(call) for call in calls]


def is_like_a_sentence(text):
    return re.match(r"[A-Z][^ ]* .*\S|[A-Z][a-z]+\.$", text.rstrip()) is not None


def sentences():
    for room in ROOMS:
        paths = sorted((SOURCE / room).rglob("*.cpp")) + sorted((SOURCE / room).rglob("*.h"))
        for path in paths:
            for text in literals_of(path):
                if is_like_a_sentence(text):
                    yield path, text


def as_pattern(text):
    places = iter(["%1", "%2"])
    return DIRECTIVE.sub(lambda _: next(places), text)


class CoreSentences(unittest.TestCase):

    def test_every_sentence_is_in_the_table(self):
        patterns = table()
        found = list(sentences())
        self.assertGreater(len(found), 40)
        for path, text in found:
            if text not in TRACED:
                with self.subTest(file=str(path), sentence=text):
                    self.assertTrue(any(pattern.startswith(as_pattern(text))
                                        for pattern in patterns))

    def test_nothing_is_in_the_table_that_nobody_says(self):
        said = [as_pattern(text) for _, text in sentences()] + ["OK"]
        for pattern in table():
            with self.subTest(pattern=pattern):
                self.assertTrue(any(pattern.startswith(text) for text in said))

    def test_what_is_traced_is_still_traced(self):
        said = {text for _, text in sentences()}
        self.assertEqual(TRACED - said, set())

    def test_places_come_after_plain_sentences(self):
        has_places = ["%1" in pattern for pattern in table()]
        self.assertEqual(has_places, sorted(has_places))


if __name__ == "__main__":
    unittest.main()
