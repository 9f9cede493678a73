"""What a desktop shows of the program's stream, and sorts it by."""

import json
import os
import re
import subprocess

import audio
import case
from servers import wait_for
from sound_servers import PipeWireServer, PulseServer
from window import PROGRAM

setUpModule = case.start_desktop

OURS = {
    "application.name": "ZEMO",
    "application.id": "zemo",
    "application.icon_name": "zemo",
}
BATCH = os.path.join(os.path.dirname(PROGRAM), "zemo-batch")


def version(program):
    said = subprocess.run([program, "--version"], capture_output=True, text=True, check=True)
    return said.stdout.split()[1]


class NameLaws:
    """A window, and a server that shows what it is told of a stream."""

    make_server = None

    def setUp(self):
        case.WindowCase.setUp(self)
        self.server = self.make_server(case.desktop, self.rate)
        self.addCleanup(self.server.close)
        self.listener = audio.Listener(self.server.record())
        self.own = OURS | {"application.version": version(PROGRAM)}

    def streams(self):
        """Of each the properties. (As JSON, pactl leaves out what is not ASCII.)"""
        listed = subprocess.run(["pactl", "list", "sink-inputs"], text=True,
                                env=os.environ | self.server.environment, capture_output=True,
                                check=True).stdout
        return [dict(re.findall(r'^\t\t(\S+) = "(.*)"$', stream, re.M))
                for stream in listed.split("Sink Input #")[1:]]

    def our_stream(self, name):
        """The one that is called so."""
        def found():
            return [stream for stream in self.streams() if stream.get("media.name") == name]
        return wait_for(found, f"a stream named {name} plays")[0]

    def assert_ours(self, name):
        stream = self.our_stream(name)
        self.assertEqual({key: stream.get(key) for key in self.own}, self.own)
        self.assertEqual(stream.get("media.role", "").lower(), "production")

    def test_the_stream_has_the_programs_names_and_the_sounds(self):
        samples = self.noise(60)
        path = audio.write_caf(self.path("Glöckchen 鐘.caf"), self.rate, samples)
        self.launch(path)
        self.window.wait_for_label(path.name)
        self.play()
        self.assert_ours(path.name)

    def test_the_next_sound_has_its_own(self):
        first = audio.write_caf(self.path("first.caf"), self.rate, self.noise(60))
        second = audio.write_caf(self.path("second.caf"), self.rate, self.noise(60))
        self.launch(first)
        self.window.wait_for_label("first.caf")
        self.play()
        self.our_stream("first.caf")
        self.window.open(second)
        self.window.wait_for_label("second.caf")
        self.play()
        self.assert_ours("second.caf")

    def test_what_the_user_has_set_stays(self):
        path = audio.write_caf(self.path("noise.caf"), self.rate, self.noise(60))
        self.launch(path, environment={"PULSE_PROP_media.role": "music"})
        self.window.wait_for_label("noise.caf")
        self.play()
        self.assertEqual(self.our_stream("noise.caf")["media.role"].lower(), "music")

    def test_zemo_batch_has_them_too(self):
        for name, shown in (("noise.caf", "noise.caf"), (b"no\xffise.caf", "ZEMO")):
            path = os.path.join(os.fsencode(self.directory), os.fsencode(name))
            with open(audio.write_caf(self.path("sox.caf"), self.rate, self.noise(60)), "rb") as made:
                with open(path, "wb") as file:
                    file.write(made.read())
            playing = case.desktop.start([BATCH, "open", path, "play"],
                                         env=os.environ | self.server.environment,
                                         stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            try:
                self.assert_ours(shown)
            finally:
                playing.kill()
                playing.wait()


class PulseAudio(NameLaws, case.SoundCase):
    make_server = PulseServer


class PipeWire(NameLaws, case.SoundCase):
    make_server = PipeWireServer

    def test_pipewires_own_list_has_them(self):
        path = audio.write_caf(self.path("noise.caf"), self.rate, self.noise(60))
        self.launch(path)
        self.window.wait_for_label("noise.caf")
        self.play()
        self.our_stream("noise.caf")
        dump = subprocess.run(["pw-dump"], env=os.environ | self.server.environment,
                              capture_output=True, check=True).stdout
        nodes = [item["info"]["props"] for item in json.loads(dump)
                 if item["type"] == "PipeWire:Interface:Node"]
        [ours] = [node for node in nodes if node.get("media.name") == "noise.caf"]
        for key, value in self.own.items():
            self.assertEqual(ours.get(key, ours.get(key.replace("_", "-"))), value)
        self.assertEqual(ours["media.role"].lower(), "production")


if __name__ == "__main__":
    case.main()
