"""Titles of a DVD, from an image and from a copied folder, with chapters and audio streams."""
import os
import subprocess
import sys
import unittest

from nuvid import FIXTURES, SOURCE, Player, Shelf, read, together, wait_for


def setUpModule():
    subprocess.run([os.path.join(SOURCE, "tests", "fixtures", "make-images.sh"), FIXTURES], check=True)


def information(title_set):
    """What the information file says, as a reader of its own finds it."""
    script = os.path.join(SOURCE, "tests", "fixtures", "ifo-chapters.py")
    path = os.path.join(FIXTURES, "dvd", "VIDEO_TS", title_set + "_0.IFO")
    return subprocess.run([sys.executable, script, path], check=True, capture_output=True, text=True).stdout.splitlines()


def chapters(title_set):
    return [int(line.split()[3]) for line in information(title_set) if line.startswith("chapter")]


def in_files(location, title_set="VTS_01"):
    """The file of a copied folder that holds this byte of the title, and the byte within it."""
    for part in range(1, 10):
        name = f"{title_set}_{part}.VOB"
        size = os.path.getsize(os.path.join(FIXTURES, "dvd", "VIDEO_TS", name))
        if location < size:
            return name, location
        location -= size
    raise AssertionError(location)


def chapter_lines(player):
    return [line for line in player.lines if line.startswith("Chapter")]


class Titles(unittest.TestCase):
    def play_image(self, shelf, location, title_set, side):
        name = os.path.basename(location)
        places = chapters(title_set)
        with Player("-noresume", location) as player:
            stats = player.wait_stats(lambda s: s["frames_shown"] > 10 and s["audio"]["codec"])
            self.assertEqual((stats["audio"]["codec"], stats["video"]["codec"]), ("ac3", "mpeg2video"))
            player.wait_output(f"Found {len(places)} chapters.")
            self.assertEqual(chapter_lines(player), [f"Chapter added {name} @ {place}" for place in places])
            player.wait_output("Audio: 1/2")
            self.assertIn("\t         nSSID: 128", player.output())
            self.assertEqual(player.cmd("Nuvid currentfilename").rsplit("/", 1)[-1], name)
            self.assertEqual(player.cmd("Nuvid totalfileprogress"), "100")
            # The feed runs ahead of the picture: the next chapter is the next one from where it reads.
            player.jump("Nuvid chapter next")
            self.assertGreaterEqual(int(player.cmd("Nuvid currentfileprogress")), 30)  # the second chapter or the third
        text = read(shelf.path(side))
        self.assertEqual([line for line in text.splitlines() if line.startswith("c ")], [f"c {name}@{place}" for place in places])

    def play_folder(self, shelf):
        places = [in_files(place) for place in chapters("VTS_01")]
        with Player("-noresume", shelf.path("dvd")) as player:
            stats = player.wait_stats(lambda s: s["frames_shown"] > 10 and s["audio"]["codec"])
            self.assertEqual(stats["audio"]["codec"], "ac3")
            self.assertEqual(chapter_lines(player), [f"Chapter added {name} @ {place}" for name, place in places])
            total = sum(os.path.getsize(shelf.path(f"dvd/VIDEO_TS/VTS_01_{part}.VOB")) for part in (1, 2, 3))
            player.wait_output(f"fList size: {total}  IFO reported size: {total}")
            player.wait_output("Audio: 1/2")
            wait_for(lambda: player.cmd("Nuvid currentfilename").endswith("VTS_01_2.VOB"), 10, "the feed reads the second file")
            player.jump("Nuvid chapter next")
            self.assertTrue(player.cmd("Nuvid currentfilename").endswith("VTS_01_3.VOB"))
            # Back to the start of that chapter, and in quick presses to those before, from where the feed walks on again.
            player.jump("Nuvid chapter previous")
            self.assertTrue(player.cmd("Nuvid currentfilename").endswith("VTS_01_3.VOB"))
            walked = player.count("Walking into next file")
            wait_for(lambda: player.cmd("Nuvid chapter previous") and player.count("Walking into next file") > walked, 10, "a chapter of the first file")
        self.assertIn(f"c {places[2][0]}@{places[2][1]}\n", read(shelf.path("dvd/VIDEO_TS/VTS_01.nuvid")))

    def test_images_and_folders(self):
        with Shelf("dvd.iso", "dvd") as shelf:
            image = shelf.path("dvd.iso")
            together({"largest": lambda: self.play_image(shelf, image, "VTS_01", "dvd.nuvid"),
                      "second": lambda: self.play_image(shelf, image + "~VTS_02", "VTS_02", "dvd.iso~VTS_02.nuvid"),
                      "folder": lambda: self.play_folder(shelf)}, at_once=3)

    def test_what_is_heard(self):
        with Shelf() as shelf, Player("-noresume", shelf.put("images/sounds.iso", "sounds.iso")) as player:
            for channels in (2, 1, 2):
                player.wait_stats(lambda s: (s["audio"]["codec"], s["audio"]["channels"]) == ("ac3", channels), what=f"{channels} channels")
                player.choose(sound=1)
            self.assertIn("Audio 1: 1: DD 2.0: English\nAudio 2: 2: DD 2.0: Deutsch", player.output())
            side = shelf.path("sounds.nuvid")
            player.cmd("Nuvid pause")
            wait_for(lambda: os.path.exists(side) and "\na 1\n" in read(side), 5, "the choice is kept")

    def test_a_title_set_that_is_not_there(self):
        with Shelf("dvd.iso") as shelf, Player("-noresume", shelf.path("dvd.iso") + "~VTS_09") as player:
            player.wait_output("File open failed!")
            self.assertEqual(player.cmd("Nuvid status"), "Stopped")
            player.cmd(f"Nuvid open {shelf.path('dvd.iso')}")
            player.wait_stats(lambda s: s["frames_shown"] > 5)


if __name__ == "__main__":
    unittest.main(verbosity=2)
