"""Private servers for the tests: an X display, a session bus, a sound server.

All of them live under one temporary directory and end with the process that made them.
"""

import ctypes
import os
import shutil
import signal
import subprocess
import tempfile
import time
from pathlib import Path

import numpy

TIMEOUT = 30.0
POLL = 0.01
SCREEN = (1280, 900)

# Alt with a click is the program's here: a window manager's usual bindings would take it away.
OPENBOX_CONFIGURATION = """<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <mouse>
    <context name="Client">
      <mousebind button="Left" action="Press">
        <action name="Focus"/>
        <action name="Raise"/>
      </mousebind>
    </context>
  </mouse>
</openbox_config>
"""


def wait_for(condition, what, timeout=TIMEOUT):
    """Polls until the condition gives something, and returns that."""
    deadline = time.monotonic() + timeout
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > deadline:
            raise AssertionError(f"after {timeout:g} s, still not: {what}")
        time.sleep(POLL)


def _prctl(option, argument):
    ctypes.CDLL(None).prctl(option, ctypes.c_ulong(argument), 0, 0, 0)


def _end_with_parent():
    set_parent_death_signal = 1
    _prctl(set_parent_death_signal, signal.SIGTERM)


def _adopt_orphans():
    set_child_subreaper = 36
    _prctl(set_child_subreaper, 1)


def _parent_of(process):
    try:
        status = Path(f"/proc/{process}/stat").read_text(encoding="utf-8", errors="replace")
    except OSError:
        return None
    return int(status.rpartition(")")[2].split()[1])


def _children():
    """The direct children of this process; of an orphan among its descendants it is the parent."""
    processes = [int(name) for name in os.listdir("/proc") if name.isdigit()]
    return [process for process in processes if _parent_of(process) == os.getpid()]


def _reap():
    try:
        while os.waitpid(-1, os.WNOHANG)[0] != 0:
            pass
    except ChildProcessError:
        pass


def _is_alone():
    _reap()
    return not _children()


def end(process):
    """Ends one child, politely at first."""
    if process.poll() is None:
        process.terminate()
    try:
        process.wait(5)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()


def end_orphans():
    """Ends what ended children have left behind, generation by generation."""
    for signal_number in (signal.SIGTERM, signal.SIGKILL):
        for child in _children():
            os.kill(child, signal_number)
        try:
            wait_for(_is_alone, "every child has ended", timeout=3)
            return
        except AssertionError:
            continue


class Desktop:
    """A display with a window manager, and a session bus with its assistive technology."""

    def __init__(self):
        _adopt_orphans()
        self.directory = Path(tempfile.mkdtemp(prefix="zemo-e2e-"))
        self._children = []
        try:
            self._make_home()
            self._start_display()
            self._start_bus()
            self._start_window_manager()
        except BaseException:
            self.close()
            raise

    def close(self):
        for child in reversed(self._children):
            end(child)
        end_orphans()
        shutil.rmtree(self.directory, ignore_errors=True)

    def kill_display(self):
        """Takes the display away from all its clients; it does not come back."""
        self._display.kill()
        self._display.wait()

    def start(self, command, **options):
        """Starts a child that ends with this process, without a standard input."""
        return subprocess.Popen(command, stdin=subprocess.DEVNULL, preexec_fn=_end_with_parent,
                                **options)

    def _keep(self, command, **options):
        log = open(self.directory / f"{command[0]}.log", "wb")  # the child's from here on
        with log:
            child = self.start(command, stderr=log, **({"stdout": log} | options))
        self._children.append(child)
        return child

    def _make_home(self):
        runtime = self.directory / "runtime"
        runtime.mkdir(mode=0o700)
        client = self.directory / "pulse-client.conf"
        client.write_text("autospawn = no\n")
        kept = {name: value for name, value in os.environ.items()
                if name in ("PATH", "TMPDIR") or name.endswith("SAN_OPTIONS")}
        # The clients in this very process (xdotool, AT-SPI) are to see nothing else either.
        os.environ.clear()
        os.environ.update(kept)
        os.environ.update({
            "HOME": str(self.directory),
            "LANG": "C.UTF-8",
            "XDG_RUNTIME_DIR": str(runtime),
            "PULSE_CLIENTCONFIG": str(client),
            "JACK_NO_START_SERVER": "1",
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
        })

    def _start_display(self):
        read_end, write_end = os.pipe()
        screen = f"{SCREEN[0]}x{SCREEN[1]}x24"
        self._display = self._keep(
            ["Xvfb", "-displayfd", str(write_end), "-screen", "0", screen, "-nolisten", "tcp",
             "-noreset"], pass_fds=[write_end])
        os.close(write_end)
        with os.fdopen(read_end) as pipe:
            number = pipe.readline().strip()
        assert number, (self.directory / "Xvfb.log").read_text()
        os.environ["DISPLAY"] = f":{number}"

    def _start_bus(self):
        bus = self._keep(["dbus-daemon", "--session", "--nofork", "--print-address=1"],
                         stdout=subprocess.PIPE)
        with bus.stdout:
            os.environ["DBUS_SESSION_BUS_ADDRESS"] = bus.stdout.readline().decode().strip()

    def _start_window_manager(self):
        configuration = self.directory / "openbox.xml"
        configuration.write_text(OPENBOX_CONFIGURATION)
        ready = self.directory / "openbox-is-ready"
        self._keep(["openbox", "--config-file", str(configuration), "--startup", f"touch {ready}"])
        wait_for(ready.exists, "the window manager runs")


class SoundServer:
    """A PulseAudio server whose only sink is in memory."""

    def __init__(self, desktop, rate):
        self._desktop = desktop
        self.rate = rate
        self._directory = Path(tempfile.mkdtemp(prefix="pulse-", dir=desktop.directory))
        self.environment = {"PULSE_SERVER": f"unix:{self._directory}/socket"}
        self._process = None
        self.start()

    def start(self):
        # Without "norewinds" the sink may hold the first play back for two seconds.
        self._process = self._desktop.start(
            ["pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--realtime=no",
             "--high-priority=no", "--log-target=stderr",
             "-L", f"module-native-protocol-unix socket={self._directory}/socket auth-anonymous=1",
             "-L", f"module-null-sink sink_name=out rate={self.rate} channels=2"
                   " format=float32le norewinds=1"],
            env=os.environ | {"PULSE_RUNTIME_PATH": str(self._directory)},
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait_for(self._answers, "the sound server runs")

    def _answers(self):
        return subprocess.run(["pactl", "info"], env=os.environ | self.environment, check=False,
                              stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL).returncode == 0

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

    def record(self, sink="out"):
        return Recording(self._desktop, self, sink)


class Recording:
    """All that the sink plays, from the moment this is made."""

    def __init__(self, desktop, server, sink="out"):
        handle, name = tempfile.mkstemp(suffix=".f32", dir=desktop.directory)
        self._path = Path(name)
        self.rate = server.rate
        with os.fdopen(handle, "wb") as file:
            self._process = desktop.start(
                ["parec", f"--device={sink}.monitor", "--format=float32le", f"--rate={server.rate}",
                 "--channels=2", "--latency-msec=5"],
                env=os.environ | server.environment, stdout=file, stderr=subprocess.DEVNULL)
        wait_for(lambda: self._path.stat().st_size > 0, "the recorder runs")

    def close(self):
        end(self._process)

    def frames(self):
        """What was heard so far: one row a frame, one column a channel."""
        samples = numpy.fromfile(self._path, dtype="<f4")
        return samples[:len(samples) // 2 * 2].reshape(-1, 2)
