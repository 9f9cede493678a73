"""Starts the program, plays, and quits by the keyboard, alternately with a server and without."""

import shutil
import tempfile
import time
from pathlib import Path

from servers import Desktop, wait_for
from sound_servers import PulseServer
from window import Program, is_visible, press_keys

COUNT = 1000


def start_and_quit(desktop, environment):
    since = time.monotonic()
    program = Program(desktop, environment=environment)
    try:
        wait_for(lambda: program.log_lines("Version Minor"), "the launch is over")
        wait_for(lambda: is_visible("ZEMO"), "the window is there")
        press_keys("space")

        def has_ended():
            press_keys("ctrl+q")  # a window may not have the keyboard yet
            return not program.is_running()

        wait_for(has_ended, "the program has ended")
        assert program.status() == 0, f"status {program.status()}"
        return time.monotonic() - since
    finally:
        program.close()


def run(count, table):
    desktop = Desktop()
    try:
        server = PulseServer(desktop, 48000)
        environments = {"start and quit": server.environment,
                        "start and quit without a server": {"PULSE_SERVER": "unix:/nonexistent"}}
        for turn in range(count):
            fault = list(environments)[turn % 2]
            table.attempt(fault, lambda: start_and_quit(desktop, environments[fault]))
            for left in Path(desktop.directory).glob("program-*"):
                shutil.rmtree(left)
        server.close()
    finally:
        desktop.close()
