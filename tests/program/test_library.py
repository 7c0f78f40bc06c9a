"""What the box keeps for the couch: pictures of recordings and links to what is mounted."""
import glob
import os
import shutil
import stat
import subprocess
import tempfile
import unittest
import unittest.mock

from nuvid import Player, Shelf, wait_for
from test_browse import Viewer


class LibraryTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="nuvid-library-")
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)

    def test_a_recording_under_the_cursor_gets_its_picture(self):
        cache = os.path.join(self.folder, "cache")
        with unittest.mock.patch.dict(os.environ, XDG_CACHE_HOME=cache), Shelf("ts_1080i.ts") as films, Viewer(films, "-nomenu"):
            picture = wait_for(lambda: glob.glob(cache + "/thumbnails/large/????????????????????????????????.png"), 20, "a thumbnail")[0]
            self.assertEqual(stat.S_IMODE(os.stat(picture).st_mode), 0o600)

    def test_the_folder_of_volumes_follows_the_mounts(self):
        volumes = os.path.join(self.folder, "Volumes")
        with Player("-browsedir=" + volumes, "-browseroot=" + volumes, options=(f"--volumes={volumes}",)):
            wait_for(lambda: os.path.islink(volumes + "/Home") or os.path.islink(volumes + "/Videos"), 20, "links")
            where = tempfile.mkdtemp(prefix="nuvid-disk-", dir="/mnt") if os.access("/mnt", os.W_OK) else None
            if where is None:
                self.skipTest("not allowed to mount")
            self.addCleanup(os.rmdir, where)
            link = os.path.join(volumes, os.path.basename(where))
            if subprocess.run(["mount", "--bind", self.folder, where], stderr=subprocess.DEVNULL, check=False).returncode != 0:
                self.skipTest("not allowed to mount")
            try:
                mounted = subprocess.run(["findmnt", "-n", "-o", "FSTYPE", where], stdout=subprocess.PIPE, text=True, check=True).stdout.strip()
                if mounted not in ("ext4", "btrfs", "xfs"):
                    self.skipTest(f"{mounted} is no disk")
                wait_for(lambda: os.path.islink(link) and os.path.samefile(link, where), 20, "a link to what was mounted")
            finally:
                subprocess.run(["umount", where], check=True)
            wait_for(lambda: not os.path.lexists(link), 20, "the link gone with the mount")


if __name__ == "__main__":
    unittest.main(verbosity=2)
