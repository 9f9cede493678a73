"""Takes the sound server away in mid-play, kind after kind, and listens to the play after it."""

import os
import sys

import audio
import case
from faults import SILENT, TRUTH_SECONDS, Fault, wait_for_sentence
from servers import Desktop, wait_for
from sound_servers import JackServer, PipeWireServer, PulseServer
from window import PLAY, STOP

COUNT = 120
KINDS = {"PulseAudio": PulseServer, "PipeWire": PipeWireServer, "JACK": JackServer}


class Rig(case.SoundCase):
    """One program and one server, for many faults."""

    def __init__(self, desktop, kind, seconds):
        super().__init__("play")
        case.desktop = desktop
        case.WindowCase.setUp(self)
        self.server = KINDS[kind](desktop, self.rate)
        self.addCleanup(self.server.close)
        self.samples = self.noise(seconds)
        self.launch(audio.write_caf(self.path("noise.caf"), self.rate, self.samples))
        self.window.wait_for_label("noise.caf")

    def repeat(self, fault, repair, silently):
        self.listener = audio.Listener(self.server.record())
        self.begin()
        with Fault(self.window) as watched:
            fault()
        seconds = watched.wait_for_truth()
        if silently:
            self.play()
            wait_for_sentence(self.window, SILENT)
            self.window.wait_for_title(PLAY)
        repair()
        self.assert_next_play_is_exact()
        assert seconds < TRUTH_SECONDS, f"the truth came after {seconds:.1f} s"
        return seconds

    def begin(self):
        """A play whose fade-out the sound's end cut short leaves its title behind."""
        wait_for(lambda: self.window.look_for("push button", PLAY) or
                 self.window.look_for("push button", STOP), "the button is there").press()
        self.window.wait_for_title(STOP)
        self.listener.wait_for_sound(0.1)

    def assert_next_play_is_exact(self):
        self.listener = audio.Listener(self.server.record())
        self.server.wait_for_clients()
        self.listener.wait_for_silence()
        self.assert_plays_whole(self.samples)

    def assert_plays_whole(self, samples):
        before = self.listener.plays_so_far()
        self.begin()
        return self.assert_whole(self.listener.wait_for_plays(before + 1)[-1], samples)

    def state(self):
        """For whoever looks for the reason."""
        return "\n".join([f"load {os.getloadavg()}", f"labels {self.window.labels()}",
                          f"focus {self.window.focus()}", f"runs {self.program.is_running()}",
                          self.program.output()[-500:], self.program.log()[-500:]])

    def faults(self):
        server = self.server
        yield "killed", server.kill, server.start
        if hasattr(server, "remove_sink"):
            yield "unplugged", server.remove_sink, lambda: server.add_sink("out", server.rate)
        if hasattr(server, "suspend"):
            yield "suspended", server.suspend, server.resume
        yield "stands still", server.freeze, server.thaw


def soak_kind(desktop, kind, count, table, names=None, seconds=3):
    """Everything is new after a repetition that went wrong. Only the faults named, if any are."""
    rig = None
    done = 0
    while done < count:
        rig = rig or Rig(desktop, kind, seconds)
        for name, fault, repair in list(rig.faults()):
            if names and name not in names:
                continue
            done += 1
            silently = done % 4 == 0 and name != "suspended"  # that one takes a play, and ends it
            good = table.attempt(f"{kind} {name}", lambda: rig.repeat(fault, repair, silently))
            if not good:
                print(rig.state(), file=sys.stderr)
                rig.doCleanups()
                rig = None
                break
    if rig is not None:
        rig.doCleanups()


def run(count, table):
    desktop = Desktop()
    try:
        for kind in KINDS:
            soak_kind(desktop, kind, -(-count // len(KINDS)), table)
    finally:
        desktop.close()
