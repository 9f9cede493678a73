"""Private servers for the tests: an X display and a session bus. sound_servers.py has those of sound.

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

# Only what will never come is waited for so long: a busy machine takes a part of it.
TIMEOUT = 180  # seconds: only a defect takes so long
SHORTEST_POLL, LONGEST_POLL = 0.005, 0.05  # seconds
SCREEN = (1280, 900)
# Where a build puts the programs that only the tests need: beside its own, unless those are installed.
TEST_PROGRAMS = Path(os.environ.get("ZEMO_TEST_PROGRAMS") or
                     Path(__file__).resolve().parents[2] / "build/release/bin")

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


def wait_for(condition, what, timeout=TIMEOUT, longest_poll=LONGEST_POLL):
    """Polls, ever less often, until the condition gives something, and returns that."""
    deadline = time.monotonic() + timeout
    pause = SHORTEST_POLL
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > deadline:
            raise AssertionError(f"after {timeout:g} s, still not: {what}")
        time.sleep(pause)
        pause = min(1.5 * pause, longest_poll)


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
