"""Times zemo-batch beside other programs that do the like; bench/peers starts it.

Everything is read from and written to memory (/dev/shm). Ours and a step's peers run by turns,
each as a whole process from start to end; only SciPy's spline is timed inside its process. Each
row is printed when its step is done. The times are medians; the ratio is how many times as fast
as the peer ours is, and the range after it that of the single rounds.
"""

import argparse
import dataclasses
import os
import pathlib
import signal
import statistics
import subprocess
import sys
import tempfile
import time

RATE = 48000
MEBIBYTE = 1 << 20
SPARE_BYTES = 32 * MEBIBYTE
WARMTH = 6  # times the sound: more than any program but SciPy uses, its files included
SCIPY_WARMTH = 40
FLOATS = ("-e", "floating-point", "-b", "32")
RATIO = 0.91875
LENGTHS = (1, 10, 60, 600)
LONG = 7200
HERE = pathlib.Path(__file__).resolve().parent


@dataclasses.dataclass
class Peer:
    """A program that does the like. `words` has IN and OUT where the files' names belong."""
    name: str
    words: tuple
    target: float  # at least so many times as fast as it
    times_itself: bool = False
    warmth: int = WARMTH


@dataclasses.dataclass
class Step:
    """What zemo-batch does between opening and saving, under a name, and its peers."""
    name: str
    words: tuple
    peers: tuple
    growth: float = 1.0  # samples of the result for each of the input's


def ffmpeg(name, filters, target):
    return Peer(f"ffmpeg {name}",
                ("ffmpeg", "-nostdin", "-v", "error", "-y", "-i", "IN", "-map", "0:a",
                 "-af", filters, "-c:a", "pcm_f32le", "OUT"), target)


def sox(name, effects, target):
    return Peer(name, ("sox", "-V1", "IN", *FLOATS, "OUT", *effects), target)


def steps(soxr):
    exciter = "aexciter"
    return (
        Step("open-save", (), (sox("sox", (), 1.3), Peer("cp", ("cp", "IN", "OUT"), 1 / 3))),
        Step("resample", ("resample", str(RATIO)), (
            ffmpeg("aresample", "aresample=44100", 1.3),
            Peer("libsoxr", (soxr, "IN", "OUT", "44100"), 1.3),
            Peer("SciPy CubicSpline",
                 (sys.executable, str(HERE / "time_spline.py"), "IN", str(RATIO)), 1.3,
                 times_itself=True, warmth=SCIPY_WARMTH)), RATIO),
        Step("ssb-upper", ("ssb-upper", "120", "1"), (
            ffmpeg("afreqshift", "afreqshift=shift=120:order=8", 5.0),
            sox("sox hilbert", ("hilbert",), 1.2))),
        Step("am", ("am", "440", "0.5"), (ffmpeg("tremolo", "tremolo=f=440:d=0.5", 2.0),)),
        Step("fm", ("fm", "440", "2", "16"), (ffmpeg("vibrato", "vibrato=f=6:d=0.5", 2.0),)),
        Step("hd", ("hd", "harmonics=2,4"), (ffmpeg(exciter, exciter, 2.0),)),
        Step("hd-highpass", ("hd", "harmonics=2,4", "highpass=500"),
             (ffmpeg(exciter, exciter, 1.5),)),
    )


def warm(size):
    """Has the machine get its memory first: a virtual one may have to ask its host for each page,
    which takes longer than all the rest and is no part of any program. In a process of its own,
    whose peak is not ours."""
    size = min(size, os.sysconf("SC_AVPHYS_PAGES") * os.sysconf("SC_PAGE_SIZE") // 2)
    code = ("import mmap; mmap.mmap(-1, %d, flags=mmap.MAP_PRIVATE | mmap.MAP_ANONYMOUS"
            " | mmap.MAP_POPULATE)" % size)
    subprocess.run([sys.executable, "-S", "-c", code], check=True)


@dataclasses.dataclass
class Run:
    """What one process took, and what it said."""
    seconds: float
    own_seconds: float  # of all cores, outside the kernel
    peak: int  # bytes
    text: str


class Failed(Exception):
    """A program ended with another status than 0, or wrote too little."""


def timed(words):
    """Runs a command; the peak is from the kernel's account of it. A child can be accounted the
    peak of the process that started it, so this one stays small and makes no sound itself."""
    with tempfile.TemporaryFile() as said:
        start = time.monotonic()
        process = subprocess.Popen(words, stdin=subprocess.DEVNULL, stdout=said, stderr=said)
        try:
            _, status, usage = os.wait4(process.pid, 0)
        except BaseException:
            process.kill()
            raise
        seconds = time.monotonic() - start
        process.returncode = os.waitstatus_to_exitcode(status)
        said.seek(0)
        text = said.read().decode(errors="replace")
    if process.returncode != 0:
        raise Failed(f"status {process.returncode}: {' '.join(words)}\n{text}")
    return Run(seconds, usage.ru_utime, usage.ru_maxrss * 1024, text)


def least_samples(step, seconds):
    """How many samples any program makes of a sound; converters may drop a few at its ends."""
    return int(0.99 * step.growth * RATE * seconds)


class Bench:
    """Sounds in a folder in memory, and runs of programs on them."""

    def __init__(self, batch, folder):
        self.batch = batch
        self.folder = pathlib.Path(folder)
        self.out = self.folder / "out.caf"

    def sound(self, seconds):
        path = self.folder / f"in-{seconds}.caf"
        if not path.exists():
            subprocess.run([sys.executable, str(HERE / "make_sound.py"), str(path), str(seconds)],
                           check=True)
        return path

    def run(self, words, seconds, samples=0, warmth=WARMTH):
        """Runs a command, which has to write that many samples at least."""
        warm(warmth * 4 * RATE * seconds)
        result = timed(words)
        if samples > 0 and self.out.stat().st_size < 4 * samples:
            raise Failed(f"wrote too little: {' '.join(words)}")
        self.out.unlink(missing_ok=True)
        return result

    def ours(self, step, seconds):
        words = [self.batch, "open", str(self.sound(seconds)), *step.words, "save", str(self.out)]
        return self.run(words, seconds, least_samples(step, seconds))

    def peer(self, step, peer, seconds):
        names = {"IN": str(self.sound(seconds)), "OUT": str(self.out)}
        words = [names.get(word, word) for word in peer.words]
        if peer.times_itself:
            return float(self.run(words, seconds, warmth=peer.warmth).text)
        return self.run(words, seconds, least_samples(step, seconds), peer.warmth).seconds

    def repeated(self, step, seconds, count):
        """Nanoseconds a sample of a step alone, by the clock and outside the kernel, from `count`
        of it in one process: what starting, opening the sound and ending take is subtracted."""
        opened = [self.batch, "open", str(self.sound(seconds))]
        once = [*step.words, "revert"] if step.words else [*opened[1:], "save", str(self.out)]
        base = self.run(opened, seconds)
        steps_too = self.run(opened + once * count, seconds)
        scale = 1e9 / (count * seconds * RATE)
        return ((steps_too.seconds - base.seconds) * scale,
                (steps_too.own_seconds - base.own_seconds) * scale)


def row(*cells):
    print("| " + " | ".join(str(cell) for cell in cells) + " |", flush=True)


def header(*cells):
    row(*cells)
    row(*["---"] * len(cells))


def target_of(peer):
    if peer.target < 1:
        return f"at most {1 / peer.target:g} x its time"
    return f"{peer.target:g} x as fast"


def once(bench, step, seconds):
    return bench.ours(step, seconds), [bench.peer(step, peer, seconds) for peer in step.peers]


def compare(bench, step, seconds, runs):
    """Runs a step and its peers by turns; returns what ours took and each peer's seconds."""
    once(bench, step, 1)  # brings the programs themselves into memory
    ours, theirs = zip(*(once(bench, step, seconds) for _ in range(runs)))
    return ours, list(zip(*theirs))


def print_step(step, seconds, ours, theirs):
    """Prints a row for each peer; returns whether the targets were met."""
    mine = [run.seconds for run in ours]
    median = statistics.median(mine)
    verdicts = []
    for peer, times in zip(step.peers, theirs):
        theirs_median = statistics.median(times)
        ratio = theirs_median / median
        rounds = sorted(t / m for t, m in zip(times, mine))
        verdicts.append(ratio >= peer.target)
        row(step.name, f"{median:.3f}", f"{seconds / median:.0f}", peer.name,
            f"{theirs_median:.3f}", f"{seconds / theirs_median:.0f}", f"{ratio:.2f}",
            f"{rounds[0]:.2f} to {rounds[-1]:.2f}", target_of(peer),
            "yes" if verdicts[-1] else "NO")
    return verdicts


def print_memory(step, seconds, ours):
    sound = 4 * RATE * seconds
    allowed = 2 * sound + int(step.growth * sound) + SPARE_BYTES
    peak = max(run.peak for run in ours)
    row(step.name, f"{peak / MEBIBYTE:.1f}", f"{allowed / MEBIBYTE:.1f}",
        "yes" if peak <= allowed else "NO")
    return peak <= allowed


def print_peers(bench, chosen, seconds, runs):
    print(f"A sound of {seconds} s at {RATE} Hz, mono, 32-bit floats; medians of {runs}.\n")
    header("step", "s", "x real time", "peer", "s", "x real time", "ratio", "of the rounds",
           "target", "met")
    verdicts, transformations = [], []
    for step in chosen:
        ours, theirs = compare(bench, step, seconds, runs)
        verdicts += print_step(step, seconds, ours, theirs)
        if step.words:
            transformations.append((step, ours))
    if transformations:
        print("\nThe most memory in use, in MiB; allowed are the sound, the copy for revert, the "
              f"new sound and {SPARE_BYTES // MEBIBYTE} MiB.\n")
        header("step", "peak", "allowed", "met")
    verdicts += [print_memory(step, seconds, ours) for step, ours in transformations]
    print(f"\n{sum(verdicts)} of {len(verdicts)} targets met.")


def linear_cell(bench, step, length, runs):
    """The medians, unless the step fails: a long sound may be too much for the machine."""
    # Short sounds as often as makes ten minutes, or the clock would see only its own grain.
    count = max(1, LENGTHS[-1] // length)
    try:
        clock, own = zip(*(bench.repeated(step, length, count) for _ in range(runs)))
    except Failed as failure:
        print(failure, file=sys.stderr)
        return "failed"
    return f"{statistics.median(clock):.2f} ({statistics.median(own):.2f})"


def print_linear(bench, chosen, lengths, runs):
    print("\nNanoseconds a sample of the step alone, by the sound's length: by the clock, and in "
          "brackets\nthe time of all cores outside the kernel.\n")
    header("step", *(f"{length} s" for length in lengths))
    for step in chosen:
        row(step.name, *(linear_cell(bench, step, length, runs) for length in lengths))


def positive(text):
    number = int(text)
    if number < 1:
        raise argparse.ArgumentTypeError("must be at least 1")
    return number


def arguments():
    parser = argparse.ArgumentParser(prog="bench/peers", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--batch", required=True, help=argparse.SUPPRESS)
    parser.add_argument("--soxr", required=True, help=argparse.SUPPRESS)
    parser.add_argument("--runs", type=positive, default=7, help="rounds of each step (7)")
    parser.add_argument("--seconds", type=positive, default=600, help="the sound's length (600)")
    parser.add_argument("--linear", action="store_true",
                        help="afterwards, time each step on sounds of 1 s to 10 min")
    parser.add_argument("--long", action="store_true", help="with --linear: of 2 h as well")
    parser.add_argument("--only-linear", action="store_true", help="--linear without the peers")
    parser.add_argument("steps", nargs="*", metavar="STEP",
                        help="only these: " + ", ".join(step.name for step in steps("")))
    return parser, parser.parse_args()


def choose(parser, every, names):
    known = {step.name for step in every}
    for name in names:
        if name not in known:
            parser.error(f"there is no step '{name}'")
    return [step for step in every if not names or step.name in names]


def main():
    # An end from outside, too, is to remove the sounds from memory.
    for number in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, lambda *_: sys.exit("interrupted"))
    parser, options = arguments()
    chosen = choose(parser, steps(options.soxr), options.steps)
    with tempfile.TemporaryDirectory(dir="/dev/shm", prefix="zemo-peers-") as folder:
        bench = Bench(options.batch, folder)
        if not options.only_linear:
            print_peers(bench, chosen, options.seconds, options.runs)
        if options.linear or options.long or options.only_linear:
            print_linear(bench, chosen, LENGTHS + (LONG,) * options.long, min(options.runs, 3))


def run():
    try:
        main()
    except Failed as failure:
        sys.exit(f"bench/peers: {failure}")
    except KeyboardInterrupt:
        sys.exit("interrupted")


if __name__ == "__main__":
    run()
