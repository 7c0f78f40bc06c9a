"""Marks in recordings of several files: the point to resume from, bookmarks, chapters. The film's own pictures tell where it is."""
import os
import shutil
import subprocess
import tempfile
import unittest

from nuvid import SIGNATURE, Player, Shelf, ffmpeg, read, together, wait_for, write

NAME = "it's 100% @ home, 日本"
PART = NAME + "_{}.mpg"
SECONDS = 45
RESUME = "Resume Playback"    # the title of the question


class Film:
    """A film in three files whose lower half is grey, a step brighter each second."""

    def __init__(self):
        self.folder = tempfile.mkdtemp(prefix="nuvid-film-")
        whole = os.path.join(self.folder, "whole.mpg")
        step = f"color=black:size=16x16:rate=25:duration={SECONDS},format=gray,geq=lum='40+4*floor(T)',scale=352:144:flags=neighbor"
        noise = f"color=gray:size=352x144:rate=25:duration={SECONDS},format=gray,noise=alls=90:allf=t"
        ffmpeg("-f", "lavfi", "-i", noise, "-f", "lavfi", "-i", step, "-f", "lavfi", "-i", f"sine=440:sample_rate=48000:duration={SECONDS}",
               "-filter_complex", "[0][1]vstack,format=yuv420p", "-c:v", "mpeg2video", "-b:v", "4M", "-maxrate", "4M", "-bufsize", "1835k",
               "-g", "12", "-bf", "2", "-c:a", "mp2", "-f", "vob", whole)
        shown = subprocess.run(["ffprobe", "-v", "error", "-select_streams", "v", "-show_entries", "packet=pos,flags", "-of", "csv=p=0", whole], check=True,
                               capture_output=True, text=True).stdout.split()
        # Packets come in the order of decoding, which is that of the pictures but for two or three.
        self.keys = [(int(line.split(",")[0]), number / 25) for number, line in enumerate(shown) if "K" in line]
        size = os.path.getsize(whole)
        cuts = [0, size // 3 // 2048 * 2048, size * 2 // 3 // 2048 * 2048, size]
        self.parts = []
        with open(whole, "rb") as file:
            for number, (begin, end) in enumerate(zip(cuts, cuts[1:]), 1):
                with open(os.path.join(self.folder, PART.format(number)), "wb") as part:
                    part.write(file.read(end - begin))
                self.parts.append((begin, end - begin))
        os.unlink(whole)

    def put(self, shelf):
        for number in (1, 2, 3):
            shutil.copy(os.path.join(self.folder, PART.format(number)), shelf.path(PART.format(number)))
        return shelf.path(PART.format(1))

    def time_at(self, part, position):
        """When the first picture is shown that can be decoded from there on."""
        place = self.parts[part - 1][0] + position // 2048 * 2048
        return next(time for at, time in self.keys if at >= place)


def setUpModule():
    Film.one = Film()
    unittest.addModuleCleanup(shutil.rmtree, Film.one.folder, ignore_errors=True)


def seconds_shown(player):
    """The second of the film that is on the screen."""
    path = player.cmd("Cascade screenshot")
    pixel = ffmpeg("-i", path, "-vf", "crop=2:2:640:500", "-f", "rawvideo", "-pix_fmt", "gray", "-")[0]
    return round((pixel - 40) / 4)    # brightness as the film has it, not as the screen has


def current(player):
    return player.cmd("Nuvid currentfilename").rsplit("/", 1)[-1]


class Resume(unittest.TestCase):
    POSITION = 1234567

    def ask(self, answer):
        """Opens a film with a saved point, answers the question, and gives the second that is shown then."""
        with Shelf() as shelf:
            path = Film.one.put(shelf)
            write(shelf.path(NAME + ".nuvid"), f"{SIGNATURE}b {PART.format(3)}@2048\nz 0\nr {PART.format(2)}@{self.POSITION}\na 0\n")
            state = shelf.path("state")
            os.mkdir(state)
            write(os.path.join(state, "settings.ini"), "[orvandi.nuvid.settings]\nResumeTimeout=5\n")
            with Player(path, options=(f"--state={state}",)) as player:
                player.wait_stats(lambda s: RESUME in s["windows"] and s["frames_shown"] > 3, what="the question")
                before = player.stats()["total_frames_shown"]
                answer(player)
                player.wait_stats(lambda s: RESUME not in s["windows"], what="the question to go")
                player.wait_stats(lambda s: s["state"] == "playing" and s["total_frames_shown"] > before + 2)
                return seconds_shown(player)

    def yes(self):
        expected = Film.one.time_at(2, self.POSITION)

        def answer(player):
            player.key("select")
            player.wait_output("Resumed playback")
            player.wait_stats(lambda s: s["frames_shown"] > 0)

        shown = self.ask(answer)
        self.assertTrue(int(expected) <= shown <= expected + 2, f"{shown} instead of {expected}")

    def no(self):
        def answer(player):
            player.key("right")
            player.key("select")

        self.assertLess(self.ask(answer), 6)

    def time_out(self):
        self.assertLess(self.ask(lambda player: None), 10)

    def test_yes_no_and_no_answer(self):
        together({"yes": self.yes, "no": self.no, "no answer": self.time_out}, at_once=2)


class Bookmarks(unittest.TestCase):
    def test_over_a_film_in_several_files(self):
        with Shelf() as shelf:
            with Player("-noresume", Film.one.put(shelf)) as player:
                player.wait_stats(lambda s: s["frames_shown"] > 10)
                player.cmd("Nuvid bookmark add")
                for part in (2, 3):
                    player.jump("Nuvid chapter next")    # there are none, so it is the next file
                    self.assertEqual(current(player), PART.format(part))
                    self.assertGreaterEqual(seconds_shown(player), int(Film.one.time_at(part, 0)))
                    player.wait_stats(lambda s: s["clock_s"] > 3, what="until the key sets again and does not delete")
                    player.cmd("Nuvid bookmark add")
                side = shelf.path(NAME + ".nuvid")
                player.cmd("Nuvid pause")
                lines = wait_for(lambda: os.path.exists(side) and [line for line in read(side).splitlines() if line[0] == "b"], 5, "the side file")
                self.assertEqual([line.rsplit("@", 1)[0] for line in lines], ["b " + PART.format(part) for part in (1, 2, 3)])
                places = [int(line.rsplit("@", 1)[1]) for line in lines]
                player.cmd("Nuvid play")

                for part in (1, 2):    # behind the last it begins again with the first
                    player.jump("Nuvid bookmark next")
                    self.assertEqual(current(player), PART.format(part))
                    shown, expected = seconds_shown(player), Film.one.time_at(part, places[part - 1])
                    self.assertTrue(int(expected) <= shown <= expected + 2, f"{shown} instead of {expected}")
                # Back to the mark just reached, and pressed again soon to the one before.
                player.jump("Nuvid bookmark previous")
                self.assertEqual(current(player), PART.format(2))
                player.jump("Nuvid bookmark previous")
                self.assertEqual(current(player), PART.format(1))
                player.key("select")    # so soon after a jump it deletes the first
            text = read(side)
            self.assertNotIn(lines[0], text)
            self.assertIn(f"{lines[1]}\n{lines[2]}\n", text)


if __name__ == "__main__":
    unittest.main(verbosity=2)
