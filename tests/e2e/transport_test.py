"""Play and Stop, in the middle of things."""

import os
import random
import subprocess

import audio
import case
from servers import wait_for
from window import GREEN, PLAY, RED, STOP, press_keys

setUpModule = case.start_desktop

BURSTS = int(os.environ.get("ZEMO_BURSTS", "10"))


def xdotool(*words):
    subprocess.run(["xdotool", *words], stdin=subprocess.DEVNULL, check=True)


class Transport(case.SoundCase):

    def load(self, seconds=20):
        samples = self.noise(seconds)
        self.launch(audio.write_caf(self.path("noise.caf"), self.rate, samples))
        self.window.wait_for_label("noise.caf")
        return samples

    def test_a_file_named_on_the_command_line_is_open(self):
        samples = self.load(seconds=0.5)
        self.assert_plays_whole(samples)

    def test_stop_fades_out_over_one_call(self):
        samples = self.load()
        self.play()
        self.listener.wait_for_sound(0.3)
        self.stop()
        [heard] = self.listener.wait_for_plays(1)
        self.assert_stopped(heard, samples)

    def test_quitting_fades_out_over_one_call(self):
        samples = self.load()
        self.play()
        self.listener.wait_for_sound(0.3)
        press_keys("ctrl+q")
        self.assertEqual(self.program.status(), 0)
        [heard] = self.listener.wait_for_plays(1)
        self.assert_stopped(heard, samples)

    def test_quitting_does_not_wait_for_a_server_that_stands_still(self):
        self.load()
        self.play()
        self.listener.wait_for_sound(0.1)
        self.server.freeze()
        press_keys("ctrl+q")
        self.assertEqual(self.program.status(), 0)

    def test_a_held_space_is_one_play(self):
        self.load(seconds=0.3)
        xdotool("keydown", "space")
        self.listener.wait_for_plays(1)
        self.listener.wait_for_more(1)
        xdotool("keyup", "space")
        self.assertEqual(self.listener.plays_so_far(), 1)

    def test_after_a_burst_of_space_the_title_says_what_sounds(self):
        self.load(seconds=60)
        recording = self.server.record()
        source = random.Random(16)
        for _ in range(BURSTS):
            presses = source.randrange(2, 9)
            xdotool("key", "--delay", str(source.randrange(10, 60)), *["space"] * presses)
            self.listener.wait_for_more(0.6)  # the last fade, and what the server holds before it
            sounds = recording.frames()[-self.rate // 20:].any()
            self.window.wait_for_title(STOP if sounds else PLAY)

    def test_the_title_is_red_during_a_play(self):
        self.load()
        self.play()
        wait_for(lambda: self.window.button(STOP).shows_colour(RED), "the title is red")

    def test_the_title_is_green_until_the_fade_is_over(self):
        self.load()
        self.play()
        self.listener.wait_for_sound(0.1)
        self.server.freeze()  # so the call that fades does not come
        self.window.button(STOP).press()
        wait_for(lambda: self.window.button(STOP).shows_colour(GREEN), "the title is green")
        self.server.thaw()
        self.window.wait_for_title(PLAY)

    def test_the_title_is_play_after_a_stop(self):
        self.load()
        self.play()
        self.listener.wait_for_sound(0.1)
        self.window.button(STOP).press()
        self.window.wait_for_title(PLAY)

    def test_silent_calls_are_counted_down_after_a_stop(self):
        self.load()
        self.play()
        self.listener.wait_for_sound(0.1)
        self.stop()
        wait_for(lambda: "IdleCycle = 1\nIdleCycle = 0\n" in self.program.output(),
                 "two silent calls are counted")

    def test_a_second_play_begins_at_the_first_sample(self):
        samples = self.load()
        for count in (1, 2):
            self.play()
            self.listener.wait_for_sound(0.2)
            self.stop()
            heard = self.listener.wait_for_plays(count)
            self.assert_stopped(heard[-1], samples)

    def test_opening_another_file_fades_the_play_out(self):
        old = self.load()
        new = self.noise(0.5, seed=2)
        path = audio.write_caf(self.path("new.caf"), self.rate, new)
        self.play()
        self.listener.wait_for_sound(0.2)
        self.window.open(path)
        self.window.wait_for_label("new.caf")
        [heard] = self.listener.wait_for_plays(1)
        self.assert_stopped(heard, old)

    def test_a_file_opened_during_a_play_is_what_plays_next(self):
        self.load()
        new = self.noise(0.5, seed=2)
        path = audio.write_caf(self.path("new.caf"), self.rate, new)
        self.play()
        self.listener.wait_for_sound(0.2)
        self.window.open(path)
        self.window.wait_for_title(PLAY)
        self.listener.wait_for_plays(1)
        self.assert_plays_whole(new)

    def test_nothing_plays_while_nothing_is_open(self):
        self.launch()
        self.window.button(PLAY).press()
        self.listener.wait_for_more(0.5)
        self.assertEqual(self.listener.plays_so_far(), 0)
        self.window.wait_for_title(PLAY)


if __name__ == "__main__":
    case.main()
