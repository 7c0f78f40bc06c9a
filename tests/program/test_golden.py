"""What the couch sees, beside pictures of how it should look (tests/golden).

    python3 tests/program/test_golden.py            compares
    python3 tests/program/test_golden.py --renew    takes what is seen now: look at each picture before committing it
"""
import os
import sys
import tempfile
import time
import types
import unittest

import pictures
from nuvid import PROGRAM, SOURCE, Shelf, ffmpeg, wait_for, write
from test_browse import Viewer

GOLDEN = os.path.join(SOURCE, "tests", "golden")
FAILED = os.path.join(os.path.dirname(os.path.abspath(PROGRAM)), "golden")
RENEW = "--renew" in sys.argv
WHEN = 1_300_000_000    # of all files

ABOUT = """title=The Long Way Home
year=1998
genre=Drama, Family
rating=PG
director=A. Nonymous
writer=B. Nonymous
actors=First Actor, Second Actor, Third Actor
summary=Two brothers drive across a country that neither of them knows, in a car that neither of them owns. Nobody has told them that it is winter there.
"""
FILMS = ("A Short Film", "Harbour at Night", "Home", "Letters from the Other Side of the Mountain, Read Aloud by Those Who Stayed", "Mondays", "Nobody Knows",
         "Ordinary Weather", "Quiet Rivers", "Seven Doors", "The Garden", "Uphill", "Winter")


def cinema(shelf):
    for i, film in enumerate(FILMS):
        shelf.put("stills.mpg" if film == "Home" else "tiny.mpg", f"Cinema/Films/{film}.mpg")
        os.utime(shelf.path(f"Cinema/Films/{film}.mpg"), (WHEN, WHEN + i * 86400))
    write(shelf.path("Cinema/Films/Home.nfo"), ABOUT)
    os.makedirs(shelf.path("Cinema/Films/Locked"))
    write(shelf.path("Cinema/Films/Locked/folder.cfg"), "password=open sesame\n")
    ffmpeg("-f", "lavfi", "-i", "smptebars=size=640x360", "-frames:v", "1", shelf.path("Cinema/Films/Home.jpg"))


class Looks(unittest.TestCase):
    def setUp(self):
        self.troubles = []

    def look(self, viewer, name):
        """The detail pane follows the cursor, and loaders bring icons and pictures: there is a while to come to look so."""
        golden = os.path.join(GOLDEN, f"{name}.png")
        trouble = []

        def right():
            with tempfile.NamedTemporaryFile(suffix=".png") as file:
                file.write(self.at_rest(viewer) if RENEW else viewer.screen())
                file.flush()
                trouble[:] = [pictures.check(file.name, golden, FAILED, RENEW)]
                return not trouble[0]

        try:
            wait_for(right, 5, name)
        except AssertionError:
            self.troubles += trouble

    @staticmethod
    def at_rest(viewer):
        before = b""
        since = time.monotonic()
        while time.monotonic() < since + 2:
            picture = viewer.screen()
            if picture != before:
                before, since = picture, time.monotonic()
        return before

    def test_everything_looks_as_it_did(self):
        with tempfile.TemporaryDirectory() as cache, Shelf() as shelf:
            os.environ.update(TZ="UTC", XDG_CACHE_HOME=cache, LC_ALL="C.UTF-8")
            cinema(shelf)
            with Viewer(types.SimpleNamespace(folder=shelf.path("Cinema")), "-infotimeout=3600", "-noresume") as viewer:
                self.menus(viewer)
                self.browser(viewer)
                self.film(viewer)
        self.assertFalse(self.troubles, "\n".join(self.troubles))

    def menus(self, viewer):
        viewer.wait_main_menu()
        self.look(viewer, "main-menu")
        viewer.keys("down", "down", "down", "select")
        viewer.wait_window("Nuvid Options")
        viewer.keys("down", "down")
        self.look(viewer, "options")
        viewer.key("exit")
        viewer.wait_window("Nuvid Options", False)

    def browser(self, viewer):
        viewer.menu(0)
        viewer.wait_listed()
        viewer.enter(0)
        viewer.keys("down", "select")  # "Locked"
        viewer.wait_window("Enter Password")
        viewer.keys("select", "right", "right", "select")
        self.look(viewer, "keyboard")
        viewer.key("exit")
        viewer.wait_window("Enter Password", False)
        viewer.keys("up", "up", "up", *["down"] * 5)  # "Home.mpg"
        self.look(viewer, "browser-small")
        viewer.key("zoom")
        viewer.key("zoom")
        self.look(viewer, "browser-large")
        viewer.key("info")
        viewer.wait_window("Information")
        self.look(viewer, "information")
        viewer.key("exit")
        viewer.wait_window("Information", False)
        viewer.key("stop")
        viewer.wait_window("Delete")
        self.look(viewer, "delete")
        viewer.key("exit")
        viewer.wait_window("Delete", False)
        viewer.wait_listed()

    def film(self, viewer):
        viewer.choose(0)
        viewer.wait_stats(lambda s: s["frames_shown"] > 0, what="the first picture, which stands for two seconds")
        viewer.keys("pause", "info")
        self.look(viewer, "film")


if __name__ == "__main__":
    unittest.main(argv=[argument for argument in sys.argv if argument != "--renew"], verbosity=2)
