"""Sound servers for the tests and the soak, the recorders that they play to, and their faults.

A recorder is its server's clock, and lets it go on only when server and players have answered
everything: so a busy machine plays more slowly, and loses nothing. See recorders/SleepWatch.h.
"""

import os
import signal
import socket
import subprocess
import tempfile
import threading
from contextlib import contextmanager
from pathlib import Path

import numpy

from servers import TEST_PROGRAMS, end, wait_for

FRAME_BYTES = 8  # two channels of 32-bit floats


def _run(command, environment):
    return subprocess.run(command, env=os.environ | environment, check=False,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, text=True)


def start_program(desktop, command, environment, name):
    """A program whose words go to NAME.log in the desktop's folder."""
    with open(desktop.directory / f"{name}.log", "ab") as log:
        return desktop.start([str(word) for word in command], env=os.environ | environment,
                             stdout=log, stderr=log)


class Recorder:
    """A program that records what one device plays, from its beginning on."""

    def __init__(self, desktop, environment, rate, command, watched=None):
        """`command`: the recorder's name and its words, but for the file that it writes. `watched`: the
        process whose children must sleep, this one unless another is named, or 0: none."""
        handle, name = tempfile.mkstemp(suffix=".f32", dir=desktop.directory)
        os.close(handle)
        self.path = Path(name)
        self.rate = rate
        self._start = lambda: start_program(
            desktop, [TEST_PROGRAMS / command[0], os.getpid() if watched is None else watched, *command[1:], name], environment, command[0])
        self._process = self._start()
        wait_for(self._records, f"the {command[0]} records")

    def _records(self):
        if self._process.poll() is not None:  # the server did not take it yet
            self._process = self._start()
        return self.frames_so_far() > 0

    def frames_so_far(self):
        return self.path.stat().st_size // FRAME_BYTES

    def frames(self, first):
        """From there on: one row a frame, one column a channel."""
        samples = numpy.fromfile(self.path, dtype="<f4", offset=first * FRAME_BYTES)
        return samples[:len(samples) // 2 * 2].reshape(-1, 2)

    def signal(self):
        """What this means, each of them says in its own file."""
        self._process.send_signal(signal.SIGUSR1)

    def close(self):
        end(self._process)

    def kill(self):
        """For one whose server was killed: it would wait for that."""
        self._process.kill()
        self._process.wait()


class Recording:
    """What a recorder writes from the moment this is made."""

    def __init__(self, recorder):
        self._recorder = recorder
        self._first = recorder.frames_so_far()
        self.rate = recorder.rate

    def frames(self, first=0):
        """From frame `first` of this recording on: one row a frame, one column a channel."""
        return self._recorder.frames(self._first + first)


class Steered:
    """A server that pactl steers, and its sinks, each with a recorder."""

    def wait_for_clients(self):
        """These always do."""

    def let_clients_go(self):
        """And these."""

    def __init__(self, desktop, rate):
        self._desktop = desktop
        self.rate = rate
        self._recorders = {}

    def _pactl(self, *words):
        result = _run(["pactl", *words], self.environment)
        assert result.returncode == 0, f"pactl {words} has failed"
        return result.stdout.strip()

    def _answers(self):
        return _run(["pactl", "info"], self.environment).returncode == 0

    def add_sink(self, name, rate):
        self._forget(name)
        self._recorders[name] = self._make_sink(name, rate)
        self.make_default(name)

    def make_default(self, name):
        def is_default():
            _run(["pactl", "set-default-sink", name], self.environment)  # once it is there
            return self._pactl("get-default-sink") == name
        wait_for(is_default, f"{name} is the default")

    def record(self, sink="out"):
        return Recording(self._recorders[sink])

    def _forget(self, name):
        if name in self._recorders:
            self._recorders.pop(name).close()

    def _forget_all(self):
        for name in list(self._recorders):
            self._forget(name)

    @contextmanager
    def other_calls(self):
        """Meanwhile the device asks for another number of frames at a time."""
        self._recorders["out"].signal()
        try:
            yield
        finally:
            self._recorders["out"].signal()


class PulseServer(Steered):
    """PulseAudio. Its sinks are pipes, and their rate never changes."""

    def __init__(self, desktop, rate):
        super().__init__(desktop, rate)
        self._directory = Path(tempfile.mkdtemp(prefix="pulse-", dir=desktop.directory))
        self.environment = {"PULSE_SERVER": f"unix:{self._directory}/socket"}
        self._process = None
        self.start()

    def start(self):
        self._process = start_program(
            self._desktop,
            ["pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--realtime=no",
             "--high-priority=no", "--log-target=stderr", "-L",
             f"module-native-protocol-unix socket={self._directory}/socket auth-anonymous=1"],
            {"PULSE_RUNTIME_PATH": str(self._directory)}, "pulseaudio")
        wait_for(self._answers, "PulseAudio runs")
        self.add_sink("out", self.rate)

    def _make_sink(self, name, rate):
        pipe = self._directory / name
        pipe.unlink(missing_ok=True)  # of a server that was killed
        self._pactl("load-module", "module-pipe-sink", f"sink_name={name}", f"file={pipe}",
                    f"rate={rate}", "channels=2", "format=float32le")
        return Recorder(self._desktop, {}, rate, ["pulse_recorder", rate, pipe])

    def remove_sink(self):
        """As when a device is unplugged."""
        self._pactl("unload-module", "module-pipe-sink")

    def suspend(self):
        self._pactl("suspend-sink", "out", "1")

    def resume(self):
        self._pactl("suspend-sink", "out", "0")

    def kill(self):
        """Takes the server away without a word."""
        self._process.kill()
        self._process.wait()

    def freeze(self):
        """From now on the server takes no sound and answers nobody."""
        self._process.send_signal(signal.SIGSTOP)

    def thaw(self):
        self._process.send_signal(signal.SIGCONT)

    def close(self):
        self.thaw()
        end(self._process)
        self._forget_all()


class PipeWireServer(Steered):
    """PipeWire, its session manager, and its PulseAudio side. Its sinks are recorders."""

    period = 1024

    def __init__(self, desktop, rate):
        super().__init__(desktop, rate)
        self._runtime = Path(tempfile.mkdtemp(prefix="pipewire-", dir=desktop.directory))
        self.environment = {"XDG_RUNTIME_DIR": str(self._runtime),
                            "PULSE_SERVER": f"unix:{self._runtime}/pulse/native"}
        self._processes = []
        self.start()

    def start(self):
        (self._runtime / "pipewire-0").unlink(missing_ok=True)  # of one that was killed
        for command in ("pipewire", "wireplumber", "pipewire-pulse"):
            self._processes.append(
                start_program(self._desktop, [command], self.environment, command))
            if command == "pipewire":
                wait_for((self._runtime / "pipewire-0").exists, "PipeWire runs")
        wait_for(self._answers, "PipeWire answers as PulseAudio")
        self._set("clock.force-rate", self.rate)
        self.add_sink("out", self.rate)

    def _make_sink(self, name, rate):
        return Recorder(self._desktop, self.environment, rate,
                        ["pipewire_recorder", name, rate, self.period])

    def remove_sink(self):
        """As when a device is unplugged."""
        self._forget_all()

    def _set(self, name, value):
        command = ["pw-metadata", "-n", "settings", "0", name, str(value)]
        wait_for(lambda: _run(command, self.environment).returncode == 0, f"{name} is set")

    @contextmanager
    def other_rate(self, rate):
        """Meanwhile the device runs at that rate."""
        self._set("clock.force-rate", rate)
        try:
            yield
        finally:
            self._set("clock.force-rate", self.rate)

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

    def close(self):
        self.thaw()
        self._forget_all()
        for process in reversed(self._processes):
            end(process)


class JackServer:
    """JACK with its dummy driver. What it plays is taken by a client that passes for a device."""

    number = 0

    def __init__(self, desktop, rate, period=1024, has_sound=True):
        """Without sound it is for MIDI alone."""
        self._desktop = desktop
        self.rate = rate
        self._period = period
        self._has_sound = has_sound
        JackServer.number += 1
        self.environment = {"JACK_DEFAULT_SERVER": f"zemo-f{os.getpid()}-{JackServer.number}",
                            "JACK_NO_AUDIO_RESERVATION": "1", "JACK_NO_START_SERVER": "1",
                            "PULSE_SERVER": "unix:/nonexistent"}
        self._recorder = None
        self._waits = False
        self.start()

    def start(self):
        name = self.environment["JACK_DEFAULT_SERVER"]
        self._process = start_program(
            self._desktop,
            ["jackd", "-r", "-t", "5000", "-n", name, "-d", "dummy", "-C", "0", "-P", "0",
             "-r", self.rate, "-p", self._period], self.environment, "jackd")
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
        if self._recorder is not None:
            self._recorder.kill()
            self._recorder = None
            self._waits = False

    def freeze(self):
        self._process.send_signal(signal.SIGSTOP)

    def thaw(self):
        self._process.send_signal(signal.SIGCONT)

    def close(self):
        """JACK has room for eight servers on a machine, and one that did not end by itself keeps
        its place until another of its name ends so."""
        self.thaw()
        self.let_clients_go()
        if self._recorder is not None:
            self._recorder.close()
        end(self._process)
        if self._process.returncode != 0:
            self.start()
            end(self._process)
        name = self.environment["JACK_DEFAULT_SERVER"]
        for left in Path("/dev/shm").glob(f"jack*_{name}_*"):
            left.unlink(missing_ok=True)

    def record(self):
        """From now on there is something to hear what is played."""
        if self._recorder is None:
            self._recorder = Recorder(self._desktop, self.environment, self.rate, ["jack_recorder"],
                                      None if self._has_sound else 0)
        return Recording(self._recorder)

    def wait_for_clients(self):
        """From now on no client is left out of a period. All of them are to be there."""
        self.record()
        if not self._waits:
            self._recorder.signal()
            wait_for(self._freewheel_mark().exists, "JACK waits for its clients")
            self._waits = True

    def let_clients_go(self):
        """Before one of them ends."""
        if self._waits:
            self._recorder.signal()
            if self._process.poll() is None:
                wait_for(lambda: not self._freewheel_mark().exists(), "JACK goes by the clock")
            self._waits = False

    def _freewheel_mark(self):
        return self._recorder.path.with_name(self._recorder.path.name + ".freewheel")


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
