"""Saving onto a disk that is full: full_disk_test.py ZEMO_BATCH

The disk is a small one in memory, mounted where only this test sees it."""

import contextlib
import os
import subprocess
import sys

from batch import BatchTest, main

SKIPPED = 77
INSIDE = "ZEMO_TEST_HAS_ITS_OWN_MOUNTS"
PAGE = 4096
OLD = b"the old file, whole" * 1000


def own_mounts():
    """The words before a command that let it mount, or none."""
    for words in (["unshare", "--mount"], ["unshare", "--mount", "--map-root-user"]):
        probe = "mount -t tmpfs none /mnt && umount /mnt"
        if subprocess.run([*words, "sh", "-c", probe], capture_output=True,
                          check=False).returncode == 0:
            return words
    return []


class FullDisk(BatchTest):

    def setUp(self):
        super().setUp()
        self.disk = self.path("disk")
        self.disk.mkdir()

    @contextlib.contextmanager
    def mounted(self, options):
        """A disk with an old file on it."""
        subprocess.run(["mount", "-t", "tmpfs", "-o", options, "none", str(self.disk)], check=True)
        try:
            (self.disk / "x.caf").write_bytes(OLD)
            yield
        finally:
            subprocess.run(["umount", str(self.disk)], check=True)

    @contextlib.contextmanager
    def disk_with_room_for(self, size):
        """A disk of a mebibyte where so many bytes are left."""
        with self.mounted("size=1m"):
            room = os.statvfs(self.disk)
            (self.disk / "ballast").write_bytes(bytes(room.f_bavail * room.f_frsize - size))
            yield

    def expect_old_file(self):
        self.assertEqual((self.disk / "x.caf").read_bytes(), OLD)
        self.assertEqual(sorted(os.listdir(self.disk)), ["ballast", "x.caf"])

    def saved_size(self):
        self.raw("in.f32", [0.5] * 50000)
        return 68 + 4 * 50002

    def test_a_save_fails_and_the_old_file_stays(self):
        size = self.saved_size()
        for room in (0, PAGE, size // 2 // PAGE * PAGE, size // PAGE * PAGE):
            for extension in ("caf", "aif"):
                with self.subTest(room=room, extension=extension), self.disk_with_room_for(room):
                    name = f"disk/x.{extension}"
                    os.symlink("x.caf", self.disk / "x.aif")
                    result = self.batch("open", "in.f32", "save", name)
                    self.assertEqual(result.returncode, 1)
                    self.assertIn(f"zemo-batch: save {name}: File writing error:  (28) "
                                  "Application will quit\n", result.stderr.decode())
                    os.unlink(self.disk / "x.aif")
                    self.expect_old_file()

    def test_a_save_works_where_the_room_is_just_enough(self):
        pages = -(-self.saved_size() // PAGE)
        with self.disk_with_room_for(pages * PAGE):
            self.done("open", "in.f32", "save", "disk/x.caf")
            self.assertEqual((self.disk / "x.caf").stat().st_size, self.saved_size())

    def test_dump_and_render_fail_with_one_sentence_and_the_old_file_stays(self):
        self.saved_size()
        with self.disk_with_room_for(PAGE):
            for step in ("dump", "render"):
                result = self.batch("open", "in.f32", step, "disk/x.caf")
                self.assertEqual(result.returncode, 1)
                self.assertIn(f"zemo-batch: {step} disk/x.caf: No space left on device.\n",
                              result.stderr.decode())
                self.expect_old_file()

    def test_a_save_fails_where_there_is_room_for_no_more_names(self):
        self.saved_size()
        with self.mounted("size=1m,nr_inodes=2"):
            result = self.batch("open", "in.f32", "save", "disk/x.caf")
            self.assertEqual(result.returncode, 1)
            self.assertIn(b"Error: Format error:  (28)\n", result.stderr)
            self.assertEqual(os.listdir(self.disk), ["x.caf"])
            self.assertEqual((self.disk / "x.caf").read_bytes(), OLD)


if __name__ == "__main__":
    if INSIDE in os.environ:
        main()
    prefix = own_mounts()
    if not prefix:
        print("Skipped: this system lets nobody here mount a disk of their own.")
        sys.exit(SKIPPED)
    os.environ[INSIDE] = "1"
    os.execvp(prefix[0], [*prefix, sys.executable, *sys.argv])
