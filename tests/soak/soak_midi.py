"""Sends so many MIDI messages, half of them malformed, and then a note that must play."""

import os
import random
import subprocess
import time
from pathlib import Path

import audio
import case
from midi_bus import RATE, Bus, note_on, wait_until_connected
from servers import Desktop, wait_for
from window import PROGRAM, STOP

COUNT = 1_000_000
BATCH = 4000  # a line of the sender's input
PERIOD = 4096  # of the bus
MOST_GROWTH_KB = 4096  # from the first tenth to the end
CHANNELS = [channel for channel in range(16) if channel != 1]
MARK = bytes([0xB1, 7, 99])  # the only message on its channel
MARK_LINE = b"Channel: 1, Message: b"


def well_formed(chance):
    channel, note, value = chance.choice(CHANNELS), chance.randrange(128), chance.randrange(1, 128)
    return chance.choice([
        bytes([0x90 | channel, note, value]), bytes([0x80 | channel, note, value]),
        bytes([0xA0 | channel, note, value]), bytes([0xB0 | channel, note, value]),
        bytes([0xC0 | channel, value]), bytes([0xE0 | channel, note, value]),
        bytes([0xF0, 0x7E, note, value, 0xF7])])


def malformed(chance):
    channel, data = chance.choice(CHANNELS), chance.randbytes(chance.randrange(1, 9))
    stray = bytes(byte & 0x7F for byte in data)
    return chance.choice([
        bytes([0x90 | channel]), bytes([0x90 | channel, 60]),  # cut short
        stray,  # what would follow a running status, or nothing
        bytes([0xF0]) + stray, bytes([0xF7]),  # exclusive without its end, or without its beginning
        bytes([0xF0]) + stray * (200 if chance.randrange(20) == 0 else 1),
        bytes([0x90 | channel, 0xF8, 60, 0xFE, 64]),  # real-time bytes in the middle
        bytes([0x90 | channel, 0xFF, 0xFF]), bytes([0x90 | channel, 60, 0x80]),
        note_on(channel, velocity=0), bytes([0xF4]) + data, bytes([0xFD])])


def lines_for(message):
    """What the program says of it: the first byte of what arrives tells what it is."""
    kind = message[0] >> 4
    if kind == 0xF:
        return []
    line = f"Channel: {message[0] & 0xF:x}, Message: {kind:x}".encode()
    plays = kind == 9 and len(message) > 2 and message[2] & 0x7F != 0
    return [line, b"NOTE ON"] if plays else [line]


class Rig(case.SoundCase):
    """One program and one bus."""

    def __init__(self, desktop):
        super().__init__("play")
        case.desktop = desktop
        super().setUp()
        self.bus = Bus(desktop, PERIOD)
        self.addCleanup(self.bus.close)
        self.launch(environment=self.bus.environment | self.server.environment)
        wait_until_connected(self.bus, self.window)
        self.bus.wait_for_clients()
        self.place = len(self.program.output_from(0))

    def resident(self):
        """KiB."""
        status = Path(f"/proc/{self.program.process_id}/status").read_text(encoding="utf-8")
        return next(int(line.split()[1]) for line in status.splitlines() if "VmRSS" in line)

    def lines_until_mark(self):
        said = b""

        def has_mark():
            nonlocal said
            said += self.program.output_from(self.place + len(said))
            assert self.program.is_running(), "the program has ended"
            return MARK_LINE + b"\n" in said
        wait_for(has_mark, "the messages are read")
        self.place += len(said)
        return said.split()

    def send(self, messages):
        """Gives the seconds until all were read, each as it should be."""
        since = time.monotonic()
        self.bus.send(*messages, MARK)
        said = self.lines_until_mark()
        expected = b"\n".join(line for message in [*messages, MARK] for line in lines_for(message))
        assert said == expected.split(), f"{len(said)} words, not {len(expected.split())}"
        return time.monotonic() - since

    def assert_a_note_plays(self):
        samples = self.noise(2)
        self.window.open(audio.write_caf(self.path("noise.caf"), RATE, samples))
        self.window.wait_for_label("noise.caf")
        self.bus.send(note_on())
        self.window.wait_for_title(STOP)
        self.assert_whole(self.listener.wait_for_plays(1)[-1], samples)
        return 0.0


def soak_bus(count, table):
    chance = random.Random(count)
    desktop = Desktop()
    try:
        rig = Rig(desktop)
        early = None
        for first in range(0, count, BATCH):
            messages = [(malformed if index % 2 else well_formed)(chance)
                        for index in range(min(BATCH, count - first))]
            if not table.attempt(f"MIDI: {BATCH} messages over JACK", lambda: rig.send(messages)):
                break
            early = early or (rig.resident() if first >= count // 10 else None)
        grown = rig.resident() - (early or rig.resident())
        table.add("MIDI: memory stays as it is",
                  *([] if grown < MOST_GROWTH_KB else [f"{grown} KiB more"]))
        table.attempt("MIDI: the note after it plays exactly", rig.assert_a_note_plays)
        rig.doCleanups()
    finally:
        desktop.close()


def soak_reader(count):
    """The reading of packet lists itself, in a process of its own."""
    since = time.monotonic()
    subprocess.run([Path(PROGRAM).with_name("midi_test"), "--gtest_filter=Midi.Random*"], check=True,
                   env=os.environ | {"ZEMO_MIDI_LISTS": str(count)}, stdout=subprocess.DEVNULL)
    return time.monotonic() - since


def run(count, table):
    table.attempt(f"MIDI: {count:,} random packet lists", lambda: soak_reader(count))
    soak_bus(count, table)
