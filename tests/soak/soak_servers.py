"""Takes the sound server away in mid-play, kind after kind, and listens to the play after it."""

import audio
import case
from faults import SILENT, TRUTH_SECONDS, Fault
from servers import Desktop
from sound_servers import JackServer, PipeWireServer, PulseServer
from window import PLAY

COUNT = 120
KINDS = {"PulseAudio": PulseServer, "PipeWire": PipeWireServer, "JACK": JackServer}


class Rig(case.SoundCase):
    """One program and one server, for many faults."""

    def __init__(self, desktop, make_server):
        super().__init__("play")
        case.desktop = desktop
        case.WindowCase.setUp(self)
        self.server = make_server(desktop, self.rate)
        self.addCleanup(self.server.close)
        self.samples = self.noise(3)
        self.launch(audio.write_caf(self.path("noise.caf"), self.rate, self.samples))
        self.window.wait_for_label("noise.caf")

    def repeat(self, fault, repair, silently):
        recording = self.server.record()
        self.listener = audio.Listener(recording)
        self.play()
        self.listener.wait_for_sound(0.1)
        with Fault(self.window) as watched:
            fault()
        seconds = watched.wait_for_truth()
        if silently:
            self.play()
            self.window.wait_for_label(SILENT)
            self.window.wait_for_title(PLAY)
        repair()
        recording.close()
        recording = self.server.record()
        self.listener = audio.Listener(recording)
        self.assert_plays_whole(self.samples)
        recording.close()
        assert seconds < TRUTH_SECONDS, f"the truth came after {seconds:.1f} s"
        return seconds

    def faults(self):
        server = self.server
        yield "killed", server.kill, server.start
        if hasattr(server, "remove_sink"):
            yield "unplugged", server.remove_sink, lambda: server.add_sink("out", server.rate)
        yield "stands still", server.freeze, server.thaw


def soak_kind(desktop, kind, count, table):
    """Everything is new after a repetition that went wrong."""
    rig = None
    done = 0
    while done < count:
        rig = rig or Rig(desktop, KINDS[kind])
        for name, fault, repair in list(rig.faults()):
            done += 1
            if not table.attempt(f"{kind} {name}",
                                 lambda: rig.repeat(fault, repair, silently=done % 4 == 0)):
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
