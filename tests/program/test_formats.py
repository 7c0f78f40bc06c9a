"""The examples of docs/formats.md do what the page says."""
import os
import re
import unittest

from nuvid import SOURCE, Player, Shelf, read, wait_for, write


def example(kind):
    return re.search(rf"^```{kind}\n(.*?)^```", read(os.path.join(SOURCE, "docs", "formats.md")), re.M | re.S).group(1)


class Formats(unittest.TestCase):
    def test_side_file(self):
        with Shelf("parts_long") as shelf:
            path = shelf.path("parts_long/show.nuvid")
            write(path, example("nuvid"))
            with Player("-noresume", shelf.path("parts_long/show_1.mpg")) as player:
                player.wait_stats(lambda s: s["frames_shown"] > 5)
                self.assertEqual(player.cmd("Nuvid currentzoom"), "3")
                seen = player.stats()["total_frames_shown"]
                player.cmd("Nuvid bookmark next")    # the first one lies in what is read ahead already
                wait_for(lambda: player.cmd("Nuvid currentfilename") == "show_3.mpg", 5, "the bookmark in the third file")
                player.wait_stats(lambda s: s["total_frames_shown"] > seen + 5)
            lines = read(path).splitlines()
            kept = [line for line in example("nuvid").splitlines() if not line.startswith("r ")]
            self.assertEqual([line for line in lines if not line.startswith("r ")], kept)

    def test_playlist(self):
        with Shelf() as shelf:
            first = shelf.put("parts/clip1.mpg", "clip1.mpg")
            second = shelf.put("parts/clip2.mpg", "more/clip2.mpg")
            playlist = shelf.path("sunday.Nuvidlist")
            with open(playlist, "w", encoding="utf-8", newline="\r\n") as file:
                file.write(example("nuvidlist"))
            with Player(playlist) as player:
                player.wait_output(f"About to open {second}", 20)
                player.wait_output(f"About to open {first}", 20, times=2)    # ":repeat"

    def test_settings(self):
        with Player() as player:
            folder = player.state
            player.cmd("Nuvid ping")
            player.cmd("Nuvid quit")
            player.wait_exit()
            written = os.path.join(folder, "settings.ini")
            keys = re.findall(r"^(\w+)=", read(written), re.M)
            for key in re.findall(r"^(\w+)=", example("ini"), re.M):
                self.assertIn(key, keys)
            write(written, example("ini"))
            with Player(options=(f"--state={folder}",)) as again:
                again.cmd("Nuvid ping")
            text = read(written)
            for line in example("ini").splitlines():
                self.assertIn(line, text)


if __name__ == "__main__":
    unittest.main(verbosity=2)
