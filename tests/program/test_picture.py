"""What is on the screen: zoom modes measured in pictures, output resolutions, programs and sound tracks."""
import math
import unittest

from nuvid import Player, Shelf, ffmpeg, read, together, wait_for

HEIGHT = 576
RADIUS = 120    # of the circle, in lines of the film
CIRCLE = 2 * RADIUS * 720 / HEIGHT    # its size on the screen where a picture fills the height

# What a screen of 1280 x 720 shows in each zoom mode: width and height of the picture, and by how much the circle is
# wider and higher than that. Worked out by hand; a mode keeps a part of the picture, fits it into a part of the screen.
KEEPING_SHAPE = {
    "16:9": [(1280, 720, 1, 1), (1280, 720, 1, 1), (884, 720, 1, 1), (1280, 534, 1, 1), (1278, 720, 1.446, 1.446), (992, 558, .775, .775), (992, 558, .775, .775)],
    "4:3": [(960, 720, 1, 1), (960, 720, 1, 1), (884, 720, 1, 1), (1280, 712, 1.333, 1.333), (1278, 720, 1.446, 1.446), (960, 720, 1, 1), (744, 558, .775, .775)],
}
STRETCHED = {    # of 16:9; a picture of 4:3 is a third wider
    "16:9": [(1280, 720, 1, 1), (1280, 720, 1, 1), (1280, 720, 1.448, 1), (1280, 720, 1, 1.348), (1280, 720, 1.448, 1.446), (992, 720, .775, 1), (1280, 558, 1, .775)],
}
STRETCHED["4:3"] = [(width, height, wide * 4 / 3, high) for width, height, wide, high in STRETCHED["16:9"]]


def make_circle(path, shape):
    """Ten seconds of a white circle on grey, round on a screen of the film's shape."""
    wide, high = (int(number) for number in shape.split(":"))
    squeeze = wide / high * HEIGHT / 720
    picture = f"if(lt(hypot((X-359.5)*{squeeze},Y-287.5),{RADIUS}),235,110)"
    ffmpeg("-f", "lavfi", "-i", f"color=gray:size=720x{HEIGHT}:rate=25:duration=0.04,format=gray,geq=lum='{picture}',loop=250:1:0,format=yuv420p", "-t", "10",
           "-c:v", "mpeg2video", "-q:v", "2", "-g", "12", "-aspect", shape, "-f", "vob", path)
    return path


def size_of(path):
    with open(path, "rb") as file:
        head = file.read(24)    # the PNG signature, the first chunk's length and type, width, height
    return int.from_bytes(head[16:20], "big"), int.from_bytes(head[20:24], "big")


def shot(player):
    """The composed screen as rows of brightness."""
    path = player.cmd("Cascade screenshot")
    width, height = size_of(path)
    pixels = ffmpeg("-i", path, "-f", "rawvideo", "-pix_fmt", "gray", "-")
    return [pixels[row * width:(row + 1) * width] for row in range(height)]


def extent(line, darkest):
    """How long the part of a line is that is brighter, and where its middle lies."""
    bright = [at for at, value in enumerate(line) if value > darkest]
    return (bright[-1] - bright[0] + 1, (bright[-1] + bright[0] + 1) / 2) if bright else (0, 0)


def measure(rows):
    """Width and height of the picture and of the circle in it, and how far the circle's centre is off the screen's."""
    across = rows[len(rows) // 2]
    down = bytes(row[len(row) // 2] for row in rows)
    width, middle = extent(across, 50)
    height, _ = extent(down, 50)
    wide, centre_x = extent(across, 170)
    high, centre_y = extent(down, 170)
    return (width, height, wide, high), max(abs(centre_x - len(across) / 2), abs(centre_y - len(down) / 2), abs(middle - len(across) / 2))


def pause(player):
    """Pauses, and waits until nothing but the picture's own corner of texts is on the screen."""
    player.wait_stats(lambda s: s["frames_shown"] > 3)
    player.cmd("Nuvid pause")
    player.wait_stats(lambda s: player.cmd("Nuvid status") == "Paused" and "Progress" not in s["windows"], what="the pause")


class Zoom(unittest.TestCase):
    def check(self, shape, options, table):
        with Shelf() as shelf:
            film = make_circle(shelf.path("circle.mpg"), shape)
            with Player("-noresume", film, options=options) as player:
                pause(player)
                for mode, (width, height, wide, high) in enumerate(table[shape]):
                    while player.cmd("Nuvid currentzoom") != str(mode):
                        player.cmd("Nuvid zoom")
                    expected = (width, height, CIRCLE * wide, CIRCLE * high)
                    wait_for(lambda: self.near(measure(shot(player)), expected), 5,
                             lambda: f"mode {mode}: {measure(shot(player))}, expected {expected}")

    @staticmethod
    def near(measured, expected):
        sizes, off = measured
        return off <= 3 and all(math.isclose(a, b, abs_tol=4) for a, b in zip(sizes, expected))

    def test_every_mode_shows_its_part_in_its_shape(self):
        together({f"{shape} {options}": lambda shape=shape, options=options, table=table: self.check(shape, options, table)
                  for shape in ("16:9", "4:3") for options, table in (((), KEEPING_SHAPE), (("--aspect=stretch",), STRETCHED))}, at_once=2)


class Resolutions(unittest.TestCase):
    """-NTSCRes=6 is 720 x 480, -PALRes=3 is 1920 x 1080: the numbers count from 1."""

    def play(self, film, *arguments):
        return Player("-noresume", "-NTSCRes=6", "-PALRes=3", *arguments, film)

    def screen_is(self, player, size):
        wait_for(lambda: size_of(player.cmd("Cascade screenshot")) == size, 10, f"a screen of {size}")

    def test_playing_paused_and_at_the_end(self):
        with Shelf() as shelf:
            film = shelf.put("parts_long_whole.mpg", "show.mpg")
            with self.play(film) as player:
                player.wait_stats(lambda s: s["frames_shown"] > 30)
                player.choose(resolution=1)
                self.screen_is(player, (720, 480))
                player.wait_output("Need to resume at file " + film)
                player.wait_stats(lambda s: s["frames_shown"] > 30 and s["state"] == "playing", what="playing at the new resolution")
                pause(player)
                player.choose(resolution=1)
                self.screen_is(player, (1920, 1080))
                self.assertEqual(player.cmd("Nuvid status"), "Paused")
                self.assertGreater(sum(shot(player)[540]), 20 * 1920, "the picture stays")
                player.cmd("Nuvid play")
                player.wait_stats(lambda s: s["frames_shown"] > 30, what="playing after the pause")
            self.assertIn("\nv 2\n", read(shelf.path("show.nuvid")))
            with self.play(film) as player:
                self.screen_is(player, (1920, 1080))
            with self.play(shelf.put("mpeg1_mp2.mpg")) as player:
                player.wait_output("EOF")
                player.choose(resolution=1)
                self.screen_is(player, (720, 480))
                wait_for(lambda: player.cmd("Nuvid status") == "Stopped", 15, lambda: f"the end\n{player.output()[-1000:]}")


class Streams(unittest.TestCase):
    def test_programs(self):
        with Shelf("ts_2programs.ts") as shelf, Player("-noresume", shelf.path("ts_2programs.ts")) as player:
            player.wait_stats(lambda s: s["frames_shown"] > 3)
            player.choose(program=1)
            player.wait_output("Program: 2/2")
            # The first bar of the second program is grey from top to bottom; the first program's picture is nowhere.
            wait_for(lambda: max(map(max, self.left_bar(player))) - min(map(min, self.left_bar(player))) < 8, 5, "the bars of the second program")

    @staticmethod
    def left_bar(player):
        return [row[200:280] for row in shot(player)[200:400]]

    def test_what_is_heard(self):
        with Shelf() as shelf:
            path = shelf.path("sounds.ts")
            ffmpeg("-f", "lavfi", "-i", "testsrc2=size=352x288:rate=25:duration=30", "-f", "lavfi", "-i", "sine=440:sample_rate=48000:duration=30", "-map", "0:v", "-map", "1:a",
                   "-map", "1:a", "-c:v", "mpeg2video", "-b:v", "2M", "-c:a:0", "mp2", "-ac:a:0", "2", "-c:a:1", "ac3", "-ac:a:1", "1", "-f", "mpegts", path)
            with Player("-noresume", path) as player:
                for codec, channels in (("mp2", 2), ("ac3", 1), ("mp2", 2)):
                    player.wait_stats(lambda s: (s["audio"]["codec"], s["audio"]["channels"]) == (codec, channels), what=f"{codec} is heard")
                    played = player.stats()["clock_s"]
                    player.wait_stats(lambda s: s["clock_s"] > played + 1 and abs(s["av_offset_ms"]) < 80, what=f"{codec} in step with the picture")
                    player.choose(sound=1)


if __name__ == "__main__":
    unittest.main(verbosity=2)
