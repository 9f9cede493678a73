"""What a screen reader is told of the window."""

import time
from contextlib import suppress

import numpy

import audio
import case
from servers import wait_for
from window import press_keys

setUpModule = case.start_desktop

PAUSE = 0.5  # seconds between two words about the level, at least
FOCUSED = "object:state-changed:focused"
VALUES = {"Length": "0.250 s", "Samples": "12,000", "Rate": "48,000 Hz", "Result": "OK"}


class Events:
    """The events of these kinds, and those of the focus."""

    def __init__(self, technology, *kinds):
        from gi.repository import GLib
        self._loop = GLib.MainContext.default()
        self._error = GLib.Error
        self._found = []
        self._listener = technology.EventListener.new(self._note)
        self._technology = technology
        self._kinds = [*kinds, FOCUSED]
        for kind in self._kinds:
            self._listener.register(kind)

    def _note(self, event):
        with suppress(self._error):  # what has gone meanwhile
            self._found.append((event.type, event.source.get_role_name(),
                                event.source.get_name(), event.detail1))

    def close(self):
        for kind in self._kinds:
            self._listener.deregister(kind)

    def wait_for(self, condition, what):
        def is_so():
            while self._loop.iteration(False):
                pass
            return condition()
        wait_for(is_so, what)

    def wait_for_all(self):
        """Moves the focus, and waits until that is told: all that was told before has come then."""
        before = self._focused()
        press_keys("Tab")
        self.wait_for(lambda: self._focused() > before, "the focus has moved")

    def _focused(self):
        return sum(kind.startswith(FOCUSED) for kind, *_ in self._found)

    def of(self, role, name=None):
        return [event for event in self._found
                if not event[0].startswith(FOCUSED) and event[1] == role
                and (name is None or event[2] == name)]


class ScreenReader(case.SoundCase):

    def load(self, samples, name="noise.caf"):
        self.launch(audio.write_caf(self.path(name), self.rate, samples))
        self.window.wait_for_label(name)

    def listen(self, *kinds):
        events = Events(self.window.technology, *kinds)
        self.addCleanup(events.close)
        return events

    def meter(self):
        return self.window.find("progress bar", "Level meter")

    def test_every_value_is_a_text_with_a_label(self):
        self.load(self.noise(0.25))
        for label, text in VALUES.items():
            with self.subTest(label=label):
                self.assertEqual(self.window.find("label", text).labels(), [label])

    def test_a_result_is_announced(self):
        self.load(self.noise(0.25))
        events = self.listen("object:state-changed:showing", "object:property-change")
        self.window.choose("Resample…")
        sheet = self.window.dialog("Resample")
        self.window.find("push button", "OK", sheet).press()
        self.window.wait_for_label("Done")
        self.window.wait_until_closed("Resample")
        events.wait_for_all()
        shown = [event for event in events.of("notification", "Done") if event[3] == 1]
        self.assertEqual(len(shown), 1)
        self.assertTrue(events.of("label", "Done"))

    def test_a_refusal_is_announced_with_its_reason(self):
        self.load(self.noise(0.25))
        path = audio.write_caf(self.path("other.caf"), 44100, audio.noise(4410, seed=1))
        events = self.listen("object:state-changed:showing")
        self.window.open(path)
        self.window.alert("ZEMO: Error:")
        self.window.button("OK").press()
        self.window.wait_until_closed("ZEMO: Error:", role="alert")
        events.wait_for(lambda: events.of("notification"), "the refusal is announced")
        events.wait_for_all()
        [said] = [event[2] for event in events.of("notification") if event[3] == 1]
        self.assertIn("other.caf is at 44100 Hz, the output at 48000 Hz.", said)

    def test_the_meter_speaks_at_a_civil_rate_while_the_level_changes(self):
        rising = self.noise(4) * numpy.linspace(0.02, 1, 4 * self.rate)
        self.load((numpy.round(rising * 2**20) / 2**20).astype("<f4"))
        events = self.listen("object:property-change:accessible-value")
        since = time.monotonic()
        self.play()
        events.wait_for(lambda: len(events.of("progress bar")) >= 5, "the meter has spoken five times")
        seconds = time.monotonic() - since
        self.assertLessEqual(len(events.of("progress bar")), seconds / PAUSE + 1)

    def test_the_meter_is_silent_when_nothing_changes(self):
        self.load(self.noise(0.25))
        events = self.listen("object:property-change:accessible-value")
        self.window.choose("Resample…")
        self.window.find("push button", "OK", self.window.dialog("Resample")).press()
        self.window.wait_for_label("Done")
        self.window.wait_until_closed("Resample")
        events.wait_for_all()
        self.assertEqual(events.of("progress bar"), [])

    def test_the_meters_value_is_the_level_in_decibels(self):
        self.load(audio.constant(0.5, 30 * self.rate), "constant.caf")
        self.assertEqual((self.meter().value(), self.meter().description), (-60, "silent"))
        self.play()
        wait_for(lambda: abs(self.meter().value() + 6.0) < 0.05, "the level is said")
        self.assertEqual(self.meter().description, "−6.0 dBFS")
        self.stop()
        wait_for(lambda: self.meter().description == "silent", "silence is said")


if __name__ == "__main__":
    case.main()
