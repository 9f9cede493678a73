"""Play and Stop, in the middle of things."""

import audio
import case
from servers import wait_for
from window import GREEN, PLAY, RED, STOP

setUpModule = case.start_desktop


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
        play = self.assert_exact(heard, samples)
        self.assertEqual(len(heard), play.fade_out + play.last_call)

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
            self.assert_exact(heard[-1], samples)

    def test_opening_another_file_fades_the_play_out(self):
        old = self.load()
        new = self.noise(0.5, seed=2)
        path = audio.write_caf(self.path("new.caf"), self.rate, new)
        self.play()
        self.listener.wait_for_sound(0.2)
        self.window.open(path)
        self.window.wait_for_label("new.caf")
        [heard] = self.listener.wait_for_plays(1)
        self.assert_exact(heard, old)

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
