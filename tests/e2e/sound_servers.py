"""Sound servers beside PulseAudio's, and the faults of all of them, for the tests and the soak."""

import os
import signal
import socket
import subprocess
import sys
import tempfile
import threading
from contextlib import contextmanager
from pathlib import Path

from servers import Recording, SoundServer, end, wait_for

HERE = Path(__file__).parent


def _run(command, environment):
    return subprocess.run(command, env=os.environ | environment, check=False,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, text=True)


class Steered:
    """What pactl can do to a server."""

    def _pactl(self, *words):
        result = _run(["pactl", *words], self.environment)
        assert result.returncode == 0, f"pactl {words} has failed"
        return result.stdout.strip()

    def add_sink(self, name, rate):
        self._pactl("load-module", "module-null-sink", f"sink_name={name}", f"rate={rate}",
                    "channels=2", "format=float32le", *self.sink_options)
        self.make_default(name)

    def make_default(self, name):
        def is_default():
            _run(["pactl", "set-default-sink", name], self.environment)  # once it is there
            return self._pactl("get-default-sink") == name
        wait_for(is_default, f"{name} is the default")

    def remove_sink(self):
        """As when a device is unplugged."""
        for line in self._pactl("list", "short", "modules").splitlines():
            words = line.split("\t")
            if words[1:2] == ["module-null-sink"]:
                self._pactl("unload-module", words[0])


class PulseServer(Steered, SoundServer):
    """PulseAudio itself. A sink that plays never changes its rate there."""

    sink_options = ["norewinds=1"]

    def suspend(self):
        self._pactl("suspend-sink", "out", "1")

    def resume(self):
        self._pactl("suspend-sink", "out", "0")

    @contextmanager
    def other_calls(self):
        """Meanwhile another program, which is silent, wants its sound within 10 ms: the device
        asks all of them more often."""
        other = self._desktop.start(
            ["pacat", "--device=out", "--raw", "--format=float32le", f"--rate={self.rate}",
             "--channels=2", "--latency-msec=10", "/dev/zero"],
            env=os.environ | self.environment, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL)
        try:
            wait_for(lambda: self._pactl("list", "short", "sink-inputs").count("\n") > 0,
                     "the other program plays")
            yield
        finally:
            end(other)


class PipeWireServer(Steered):
    """PipeWire, its session manager, and its PulseAudio side."""

    sink_options = []

    def __init__(self, desktop, rate):
        self._desktop = desktop
        self.rate = rate
        self._runtime = Path(tempfile.mkdtemp(prefix="pipewire-", dir=desktop.directory))
        self.environment = {"XDG_RUNTIME_DIR": str(self._runtime),
                            "PULSE_SERVER": f"unix:{self._runtime}/pulse/native"}
        self._processes = []
        self.start()

    def start(self):
        (self._runtime / "pipewire-0").unlink(missing_ok=True)  # of one that was killed
        for command in ("pipewire", "wireplumber", "pipewire-pulse"):
            with open(self._runtime / f"{command}.log", "wb") as log:
                self._processes.append(self._desktop.start(
                    [command], env=os.environ | self.environment, stdout=log, stderr=log))
            if command == "pipewire":
                wait_for((self._runtime / "pipewire-0").exists, "PipeWire runs")
        wait_for(lambda: _run(["pactl", "info"], self.environment).returncode == 0,
                 "PipeWire answers as PulseAudio")
        self.add_sink("out", self.rate)

    def kill(self):
        for process in reversed(self._processes):
            process.kill()
        for process in self._processes:
            process.wait()
        self._processes.clear()

    def freeze(self):
        for process in reversed(self._processes):
            process.send_signal(signal.SIGSTOP)

    def thaw(self):
        for process in self._processes:
            process.send_signal(signal.SIGCONT)

    @contextmanager
    def _setting(self, name, setting, before):
        """One of the server's own settings, for a while."""
        def write(value):
            command = ["pw-metadata", "-n", "settings", "0", name, str(value)]
            assert _run(command, self.environment).returncode == 0, f"{command} has failed"
        write(setting)
        try:
            yield
        finally:
            write(before)

    def other_calls(self):
        """Meanwhile the device asks for as little at a time as none does by itself."""
        return self._setting("clock.force-quantum", 512, before=0)

    def other_rate(self, rate):
        """Meanwhile the device runs at that rate."""
        return self._setting("clock.force-rate", rate, before=self.rate)

    def close(self):
        self.thaw()
        for process in reversed(self._processes):
            end(process)

    def record(self, sink="out"):
        return Recording(self._desktop, self, sink)


class JackServer:
    """JACK with its dummy driver. What it plays is taken by a client that passes for a device."""

    number = 0

    def __init__(self, desktop, rate, period=1024):
        self._desktop = desktop
        self.rate = rate
        self._period = period
        JackServer.number += 1
        self.environment = {"JACK_DEFAULT_SERVER": f"zemo-f{os.getpid()}-{JackServer.number}",
                            "JACK_NO_AUDIO_RESERVATION": "1", "JACK_NO_START_SERVER": "1",
                            "PULSE_SERVER": "unix:/nonexistent"}
        self.start()

    def start(self):
        name = self.environment["JACK_DEFAULT_SERVER"]
        self._process = self._desktop.start(
            ["jackd", "-r", "-t", "5000", "-n", name, "-d", "dummy", "-C", "0", "-P", "0",
             "-r", str(self.rate), "-p", str(self._period)], env=os.environ | self.environment,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait_for(lambda: _run(["jack_lsp"], self.environment).returncode == 0, "jackd runs")

    def set_buffer(self, frames):
        """The frames of a call, changed in the middle of everything."""
        assert _run(["jack_bufsize", str(frames)], self.environment).returncode == 0

    @contextmanager
    def other_calls(self):
        """Meanwhile calls are half as long."""
        self.set_buffer(self._period // 2)
        try:
            yield
        finally:
            self.set_buffer(self._period)

    def kill(self):
        self._process.kill()
        self._process.wait()

    def freeze(self):
        self._process.send_signal(signal.SIGSTOP)

    def thaw(self):
        self._process.send_signal(signal.SIGCONT)

    def close(self):
        """JACK has room for eight servers on a machine, and one that did not end by itself keeps
        its place until another of its name ends so."""
        self.thaw()
        end(self._process)
        if self._process.returncode != 0:
            self.start()
            end(self._process)
        name = self.environment["JACK_DEFAULT_SERVER"]
        for left in Path("/dev/shm").glob(f"jack*_{name}_*"):
            left.unlink(missing_ok=True)

    def record(self):
        return JackRecording(self._desktop, self)


class JackRecording(Recording):
    """All that reaches the recorder's two ports."""

    def __init__(self, desktop, server):  # pylint: disable=super-init-not-called
        handle, name = tempfile.mkstemp(suffix=".f32", dir=desktop.directory)
        os.close(handle)
        self._path = Path(name)
        self.rate = server.rate
        self._process = wait_for(lambda: self._start(desktop, server), "the recorder runs")
        wait_for(lambda: self._path.stat().st_size > 0, "the recorder records")

    def _start(self, desktop, server):
        process = desktop.start(
            [sys.executable, "-B", str(HERE / "jack_recorder.py"), str(self._path)],
            env=os.environ | server.environment, stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL, text=True)
        if process.stdout.readline() == "ready\n":
            return process
        end(process)
        process.stdout.close()
        return None

    def close(self):
        end(self._process)
        self._process.stdout.close()


class DeafSocket:
    """A socket that takes every connection and never says a word."""

    def __init__(self, path):
        self._path = Path(path)
        self._path.unlink(missing_ok=True)
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.bind(str(self._path))
        self._socket.listen(64)
        self._taken = []
        threading.Thread(target=self._take, daemon=True).start()

    def _take(self):
        while True:
            try:
                self._taken.append(self._socket.accept())
            except OSError:
                return

    def close(self):
        self._socket.close()
        for connection, _ in self._taken:
            connection.close()
        self._path.unlink(missing_ok=True)


def deaf_jack(name):
    return DeafSocket(f"/dev/shm/jack_{name}_{os.getuid()}_0")
