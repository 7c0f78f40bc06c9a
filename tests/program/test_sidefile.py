"""What is remembered of a recording survives a crash, a folder that cannot be written and a full disk."""
import contextlib
import os
import re
import shutil
import subprocess
import tempfile
import unittest

from nuvid import FIXTURES, Player, Shelf, read, together, wait_for, write

SIGNATURE = "#Nuvid File. Do not modify\n"
UNWRITABLE = "Can not open settings file for writing"
BYTES_A_SECOND = os.path.getsize(os.path.join(FIXTURES, "parts_long_whole.mpg")) / 60


def point(text):
    found = re.search(r"^r show\.mpg@(\d+)$", text, re.MULTILINE)
    return int(found.group(1)) if found else None


class Disk:
    """A tiny disk in memory for root, a folder for everybody else."""

    def __init__(self):
        self.folder = tempfile.mkdtemp(prefix="nuvid-disk-")
        self.mounted = os.geteuid() == 0 and self._mount("-t", "tmpfs", "-o", "size=64k", "none")

    def _mount(self, *words):
        return subprocess.run(["mount", *words, self.folder], check=False, capture_output=True).returncode == 0

    def path(self, name):
        return os.path.join(self.folder, name)

    def put_film(self):
        os.symlink(os.path.abspath(os.path.join(FIXTURES, "parts_long_whole.mpg")), self.path("show.mpg"))
        return self.path("show.mpg")

    @contextlib.contextmanager
    def read_only(self):
        if self.mounted:
            assert self._mount("-o", "remount,ro")
        else:
            os.chmod(self.folder, 0o555)
            if os.geteuid() == 0:  # nothing else stops a root that may not mount
                os.rename(self.path("show.nuvid"), self.path("kept"))
                os.mkdir(self.path("show.nuvid"))
        try:
            yield
        finally:
            if not self.mounted:
                os.chmod(self.folder, 0o755)
                if os.path.exists(self.path("kept")):
                    os.rmdir(self.path("show.nuvid"))
                    os.rename(self.path("kept"), self.path("show.nuvid"))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.mounted:
            subprocess.run(["umount", self.folder], check=False)
        shutil.rmtree(self.folder, ignore_errors=True)


class Crash(unittest.TestCase):
    def play_and_kill(self, when, seconds=25, old=""):
        """Plays a minute of film until `when` is true, takes the player's life, answers its statistics and the side file."""
        with Shelf() as shelf:
            path = shelf.put("parts_long_whole.mpg", "show.mpg")
            side = shelf.path("show.nuvid")
            if old:
                write(side, old)
            player = Player("-noresume", path, tidy=False)
            try:
                stats = player.wait_stats(lambda s: s["frames_shown"] > 0 and when(player, s, side), seconds)
            finally:
                player.kill()
            self.assertEqual([name for name in os.listdir(shelf.folder) if name not in ("show.mpg", "show.nuvid")], [])
            return stats, read(side)

    def recent_point(self):
        stats, text = self.play_and_kill(lambda player, stats, side: stats["clock_s"] >= 12.5)
        self.assertTrue(text.startswith(SIGNATURE), text)
        # Read a buffer at a time, so what was fed may be one buffer further than the point.
        self.assertGreater(point(text), stats["bytes_fed"] - 10 * BYTES_A_SECOND - 192512)

    def first_seconds(self):
        old = SIGNATURE + "z 2\nr show.mpg@4096000\na 0\n"

        def paused(player, stats, side):
            if stats["frames_shown"] < 25:
                return False
            if player.cmd("Nuvid status") == "Playing":
                player.cmd("Nuvid bookmark add")
                player.cmd("Nuvid pause")
            return "\nb show.mpg@" in read(side)

        _, text = self.play_and_kill(paused, old=old)
        self.assertEqual(point(text), 4096000, text)
        _, text = self.play_and_kill(paused)
        self.assertGreater(point(text), 0, text)

    def test_a_point_is_at_most_ten_seconds_old_and_an_old_one_outlives_the_first_seconds(self):
        together({"recent point": self.recent_point, "first seconds": self.first_seconds})


class Places(unittest.TestCase):
    """Folders in which nothing can be saved, and files that are somebody else's."""

    def play(self, path, until=10):
        """Plays for so many seconds, pauses and quits: three times to save, if there is time for the first."""
        with Player("-noresume", path) as player:
            player.wait_stats(lambda s: s["frames_shown"] > 0 and s["clock_s"] >= until, 25)
            player.cmd("Nuvid pause")
            wait_for(lambda: player.cmd("Nuvid status") == "Paused", 5, "the pause")
        return player

    def foreign(self):
        with Shelf() as shelf:
            path = shelf.put("parts_long_whole.mpg", "show.mpg")
            write(shelf.path("show.nuvid"), "my own notes\n")
            player = self.play(path)
            self.assertEqual(read(shelf.path("show.nuvid")), "my own notes\n")
            self.assertEqual(player.count(UNWRITABLE), 0)

    def read_only(self):
        with Disk() as disk:
            path = disk.put_film()
            write(disk.path("show.nuvid"), SIGNATURE + "z 1\n")
            with disk.read_only():
                player = self.play(path)
            self.assertEqual(read(disk.path("show.nuvid")), SIGNATURE + "z 1\n")
            self.assertEqual(player.count(UNWRITABLE), 1)

    def full_disk(self):
        with Disk() as disk:
            if not disk.mounted:
                return  # a disk to fill takes root; a read-only folder goes the same way
            path = disk.put_film()
            old = SIGNATURE + "b show.mpg@2048\nz 0\na 0\n"
            write(disk.path("show.nuvid"), old)
            with open(disk.path("ballast"), "wb", buffering=0) as file, self.assertRaises(OSError):
                while file.write(b"x" * 512):
                    pass
            player = self.play(path)
            self.assertEqual(read(disk.path("show.nuvid")), old)
            self.assertEqual(sorted(os.listdir(disk.folder)), ["ballast", "show.mpg", "show.nuvid"])
            self.assertEqual(player.count(UNWRITABLE), 1)
            # Room again: the next evening is remembered.
            os.unlink(disk.path("ballast"))
            self.play(path, until=0.5)
            self.assertIn("b show.mpg@2048\nz 0\nr show.mpg@", read(disk.path("show.nuvid")))

    def test_nothing_of_the_users_is_lost(self):
        together({"foreign": self.foreign, "read-only": self.read_only, "full disk": self.full_disk})


if __name__ == "__main__":
    unittest.main(verbosity=2)
