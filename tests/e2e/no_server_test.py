"""A machine without a sound server, one that loses it, and one whose server does not answer."""

import audio
import case
from servers import wait_for
from window import PLAY, STOP, Program, Window, is_visible

setUpModule = case.start_desktop

NOTICE = "No audio device: playing silently"


class WithoutServer(case.WindowCase):
    """The silent output keeps the time of a device of 48000 Hz."""

    def load(self, seconds):
        samples = audio.noise(int(48000 * seconds), seed=1)
        self.launch(audio.write_caf(self.path("noise.caf"), 48000, samples))
        self.window.wait_for_label("noise.caf")

    def test_the_window_says_so(self):
        self.launch()
        self.window.wait_for_label(NOTICE)

    def test_the_rate_is_48000(self):
        self.launch()
        self.window.wait_for_label("48,000 Hz")

    def test_a_play_ends_by_itself(self):
        self.load(seconds=0.5)
        self.window.button(PLAY).press()
        self.window.wait_for_title(STOP)
        wait_for(lambda: "IdleCycle = 1" in self.program.output(), "the sound's end is reached")
        self.window.wait_for_title(PLAY)

    def test_a_stop_ends_a_play(self):
        self.load(seconds=30)
        self.window.button(PLAY).press()
        self.window.button(STOP).press()
        self.window.wait_for_title(PLAY)


class SilentServer(case.SoundCase):

    def setUp(self):
        super().setUp()
        self.server.freeze()
        self.program = Program(case.desktop, environment=self.server.environment)
        self.addCleanup(self.program.close)

    def test_the_window_does_not_wait_for_the_server(self):
        wait_for(lambda: is_visible("ZEMO"), "the window is there")
        self.assertEqual(self.program.log_lines("Version Minor"), [], "the launch is over")

    def test_the_program_goes_on_without_the_server(self):
        self.wait_for_log("Version Minor")
        self.window = Window(self.program)
        self.window.wait_for_label(NOTICE)


class LostServer(case.SoundCase):

    def setUp(self):
        super().setUp()
        self.samples = self.noise(20)
        self.launch(audio.write_caf(self.path("noise.caf"), self.rate, self.samples))
        self.window.wait_for_label("noise.caf")
        self.play()
        self.listener.wait_for_sound(0.2)
        self.server.kill()

    def test_a_play_that_loses_its_server_is_over(self):
        self.window.wait_for_title(PLAY)

    def test_the_window_answers_after_the_loss(self):
        self.window.wait_for_title(PLAY)
        self.window.button("Test").press()
        self.wait_for_log("val = ")

    def test_a_later_play_is_silent_and_says_so(self):
        self.play()
        self.window.wait_for_label(NOTICE)

    def test_a_play_is_heard_again_once_the_server_is_back(self):
        self.window.wait_for_title(PLAY)
        self.server.start()
        self.listener = audio.Listener(self.server.record())
        self.play()
        self.listener.wait_for_sound(0.3)
        self.stop()
        [heard] = self.listener.wait_for_plays(1)
        self.assert_stopped(heard, self.samples)


if __name__ == "__main__":
    case.main()
