"""What is remembered of a recording survives a crash and a full disk."""
import os
import re
import subprocess
import tempfile
import unittest

from nuvid import FIXTURES, SIGNATURE, Player, Shelf, read, wait_for, write

FILM = os.path.abspath(os.path.join(FIXTURES, "parts_long_whole.mpg"))
BYTES_A_SECOND = os.path.getsize(FILM) / 60


class Crash(unittest.TestCase):
    def test_a_point_is_at_most_ten_seconds_old(self):
        with Shelf() as shelf:
            player = Player("-noresume", shelf.put("parts_long_whole.mpg", "show.mpg"), tidy=False)
            try:
                stats = player.wait_stats(lambda s: s["frames_shown"] > 0 and s["clock_s"] >= 12.5, 25)
            finally:
                player.kill()
            self.assertEqual(sorted(os.listdir(shelf.folder)), ["show.mpg", "show.nuvid"])
            text = read(shelf.path("show.nuvid"))
            self.assertTrue(text.startswith(SIGNATURE), text)
            # Read a buffer at a time, so what was fed may be one buffer further than the point.
            point = int(re.search(r"^r show\.mpg@(\d+)$", text, re.MULTILINE).group(1))
            self.assertGreater(point, stats["bytes_fed"] - 10 * BYTES_A_SECOND - 192512)


@unittest.skipUnless(os.geteuid() == 0, "a disk to fill takes root")
class FullDisk(unittest.TestCase):
    OLD = SIGNATURE + "b show.mpg@2048\nz 0\na 0\n"

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="nuvid-disk-")
        self.addCleanup(os.rmdir, self.folder)
        if subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64k", "none", self.folder], check=False, capture_output=True).returncode != 0:
            self.skipTest("not allowed to mount")
        self.addCleanup(subprocess.run, ["umount", self.folder], check=True)

    def path(self, name):
        return os.path.join(self.folder, name)

    def play(self, until):
        """Plays for so many seconds, pauses and quits: three times to save, if there is time for the first."""
        with Player("-noresume", self.path("show.mpg")) as player:
            player.wait_stats(lambda s: s["frames_shown"] > 0 and s["clock_s"] >= until, 25)
            player.cmd("Nuvid pause")
            wait_for(lambda: player.cmd("Nuvid status") == "Paused", 5, "the pause")
        return player

    def test_nothing_of_the_users_is_lost(self):
        os.symlink(FILM, self.path("show.mpg"))
        write(self.path("show.nuvid"), self.OLD)
        with open(self.path("ballast"), "wb", buffering=0) as file, self.assertRaises(OSError):
            while file.write(b"x" * 512):
                pass
        player = self.play(10)
        self.assertEqual(read(self.path("show.nuvid")), self.OLD)
        self.assertEqual(sorted(os.listdir(self.folder)), ["ballast", "show.mpg", "show.nuvid"])
        self.assertEqual(player.count("Can not open settings file for writing"), 1)
        # Room again: the next evening is remembered.
        os.unlink(self.path("ballast"))
        self.play(0.5)
        self.assertIn("b show.mpg@2048\nz 0\nr show.mpg@", read(self.path("show.nuvid")))


if __name__ == "__main__":
    unittest.main(verbosity=2)
