"""Another user watches the folder of a private file while it is saved again and again, and reads what
can be read: private_file_test.py ZEMO_BATCH [INTERPOSER [SAVES]]

With INTERPOSER, a library of these tests, the saves are made without nameless files as well."""

import array
import multiprocessing
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

from batch import caf, clean_environment

SKIPPED = 77
NOBODY = 65534
WATCHERS = 2
SAVES_OF_ONE_RUN = 250
CONTROL = "may be read"


def watch(folder, pipe):
    """Reads every file of the folder that another user can, until it is told to end. Tells how many
    bytes of others than the control there were, and how often that one was read."""
    os.setgroups([])
    os.setresgid(NOBODY, NOBODY, NOBODY)
    os.setresuid(NOBODY, NOBODY, NOBODY)
    stolen = looked = 0
    while not pipe.poll():
        for name in os.listdir(folder):
            try:
                with open(os.path.join(folder, name), "rb", buffering=0) as file:
                    got = file.read(1 << 20)
            except OSError:
                continue
            if name == CONTROL:
                looked += len(got) > 0
            else:
                stolen += len(got)
    pipe.send((stolen, looked))


class Watcher:

    def __init__(self, folder):
        forking = multiprocessing.get_context("fork")  # who is nobody may not read what Python is made of
        self.pipe, end = forking.Pipe()
        self.process = forking.Process(target=watch, args=(folder, end), daemon=True)
        self.process.start()

    def end(self):
        self.pipe.send("end")
        found = self.pipe.recv()
        self.process.join()
        return found


def make_private_file(folder):
    target = folder / "private.caf"
    target.touch(0o600)
    target.write_bytes(b"old")
    return target


def save_again_and_again(program, folder, target, saves, environment):
    while saves > 0:
        count = min(saves, SAVES_OF_ONE_RUN)
        subprocess.run([program, "open", folder / "source.caf"] + ["save", target] * count,
                       env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL, check=True)
        assert target.stat().st_mode & 0o777 == 0o600
        saves -= count


def watched(program, saves, environment):
    """How many bytes were stolen, and how often the watchers have looked."""
    folder = pathlib.Path(tempfile.mkdtemp(prefix="zemo-private-"))
    try:
        folder.chmod(0o755)
        (folder / CONTROL).write_text("for everybody")
        (folder / "source.caf").touch(0o600)
        (folder / "source.caf").write_bytes(caf(44100.0, array.array("f", [0.25] * 5000)))
        target = make_private_file(folder)
        watchers = [Watcher(folder) for _ in range(WATCHERS)]
        save_again_and_again(program, folder, target, saves, environment)
        stolen, looked = map(sum, zip(*(watcher.end() for watcher in watchers)))
        return stolen, looked
    finally:
        shutil.rmtree(folder)


def main():
    program = os.path.abspath(sys.argv[1])
    saves = int(sys.argv[3]) if len(sys.argv) > 3 else 1000
    if os.geteuid() != 0:
        print("Skipped: only root can become the other user.")
        sys.exit(SKIPPED)
    environments = {"without a name": clean_environment()}
    if len(sys.argv) > 2:
        environments["under a hidden name"] = clean_environment() | {
            "LD_PRELOAD": os.path.abspath(sys.argv[2]), "ZEMO_TEST_NO_NAMELESS_FILES": "1"}
    good = True
    for way, environment in environments.items():
        stolen, looked = watched(program, saves, environment)
        print(f"{saves} saves {way}: {stolen} bytes read by another user, who looked {looked} times")
        good = good and stolen == 0 and looked > 0
    sys.exit(0 if good else 1)


if __name__ == "__main__":
    os.umask(0o022)
    main()
