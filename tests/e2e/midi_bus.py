"""A MIDI bus: JACK's dummy driver, and a sender in a process of its own."""

import os
import subprocess
import sys
from contextlib import suppress
from pathlib import Path

from faults import NO_MIDI, says
from servers import end, wait_for
from sound_servers import JackServer

RATE = 48000
SENDER = Path(__file__).with_name("midi_sender.py")


class Sender:
    """A MIDI source on the JACK server of an environment. `ear`: the file, if there is to be one, into
    which it writes what it hears."""

    def __init__(self, environment, ear=None):
        self._words = ["keyboard"] + ([] if ear is None else [str(ear)])
        self._environment = os.environ | environment
        self._process = wait_for(self._start, "the source is on the bus")

    def _start(self):
        process = subprocess.Popen([sys.executable, "-B", str(SENDER), *self._words],
                                   env=self._environment, text=True, stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        if process.stdout.readline() == "ready\n":
            return process
        end(process)
        process.stdin.close()
        process.stdout.close()
        return None

    def ports(self):
        """The ports on the server that take MIDI."""
        return self._ask("ports", []).split()

    def is_connected(self):
        """The program counts a source before it connects it."""
        return self._ask("connected", []) == "yes"

    def _ask(self, command, messages):
        self._process.stdin.write(f"{command} {' '.join(m.hex() for m in messages)}\n")
        self._process.stdin.flush()
        return self._process.stdout.readline().strip()

    def send(self, *messages):
        assert self._ask("send", messages) == "sent"

    def send_timed(self, message):
        """The monotonic time in seconds at which the bus took it."""
        return int(self._ask("time", [message])) / 1e9

    def close(self):
        """Also after the server was killed, when it may not end by itself."""
        self._process.stdin.close()
        try:
            self._process.wait(2)
        except subprocess.TimeoutExpired:
            end(self._process)
        self._process.stdout.close()


class Bus:
    """A JACK server and one MIDI source on it. On a busy machine it leaves a client that is late out of
    the period, with the messages in it, until it is asked to wait for them."""

    def __init__(self, desktop, period):
        self._server = JackServer(desktop, RATE, period, has_sound=False)
        self.environment = self._server.environment
        self.let_clients_go = self._server.let_clients_go
        self._sender = Sender(self.environment)
        self.send = self._sender.send
        self.send_timed = self._sender.send_timed
        self.ports = self._sender.ports
        self.is_connected = self._sender.is_connected
        self.wait_for_clients = self._server.wait_for_clients

    def close(self):
        self._sender.close()
        self._server.close()


def look_for_midi(window, sources):
    """As often as it takes: the program gives a server two seconds to answer."""
    def are_counted():
        window.choose("Look for MIDI Again")
        with suppress(AssertionError):
            return wait_for(lambda: window.look_for("label", f"MIDI sources: {sources}"),
                            "they are counted", timeout=5)
        return None
    wait_for(are_counted, f"there are {sources} MIDI sources")


def wait_until_connected(source, window):
    """Looks again where a busy server has not answered the program within two seconds, or has not
    connected the source, which happens beside several other servers."""
    def is_connected():
        with suppress(AssertionError):
            return wait_for(lambda: source.is_connected() or says(window, NO_MIDI), "it answers",
                            timeout=10) and source.is_connected()
        return False

    def is_connected_at_last():
        if is_connected():
            return True
        look_for_midi(window, 1)
        return source.is_connected()
    wait_for(is_connected_at_last, "the source is connected")


def note_on(channel=0, velocity=64):
    return bytes([0x90 | channel, 60, velocity])


def note_off(channel=0):
    return bytes([0x80 | channel, 60, 0])
