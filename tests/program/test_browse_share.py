"""A share whose server has gone is listed, tried and left again; nothing else waits for it."""
import os
import unittest

import share
from nuvid import FIXTURES, PROMPT_MS, Shelf, wait_for
from test_browse import Viewer

FILM = FIXTURES + "/mpeg2_mp2.mpg"


@unittest.skipUnless(share.available(), "needs root and /dev/fuse")
class DeadShareInTheBrowser(unittest.TestCase):
    def test_the_share_is_tried_and_left(self):
        with share.StoppingShare({"film.mpg": FILM}) as place, Shelf() as shelf:
            shelf.put("mpeg2_mp2.mpg", "Films/film.mpg")
            os.symlink(place.folder, os.path.join(shelf.folder, "Share"))
            place.stop()
            with Viewer(shelf) as viewer:
                # The folder that holds a link to the share is listed all the same.
                viewer.menu(0)
                viewer.wait_listed()
                self.assertTrue(place.held.is_set())
                viewer.keys("down")
                # Select asks whether it is a DVD, Right goes in; neither comes back.
                for key in ("select", "right"):
                    with self.subTest(key):
                        viewer.key(key)
                        viewer.wait_window("Browser wait")
                        self.assertLess(viewer.ping_ms(), PROMPT_MS)
                        self.assertTrue(self.moves(viewer), "the wait window stands still")
                        viewer.keys("up", "select", "menu")    # not heard
                        self.assertTrue(viewer.sees("Browser wait"))
                        viewer.key("exit")
                        viewer.wait_window("Browser wait", False)
                        self.assertTrue(viewer.sees("File browser"))
                # The cursor stands where it stood; another folder opens, and the browser closes.
                viewer.keys("up", "right")
                viewer.wait_listed()
                viewer.keys("left")
                viewer.wait_listed()
                viewer.key("exit")
                viewer.wait_window("File browser", False)
                self.assertLess(viewer.ping_ms(), PROMPT_MS)
                # Back again, the share can be entered.
                place.go_on()
                viewer.menu(0)
                viewer.wait_listed()
                viewer.keys("down", "right")
                viewer.wait_listed()
                viewer.keys("down", "select")
                viewer.wait_stats(lambda s: s["frames_shown"] > 10)

    @staticmethod
    def moves(viewer):
        pictures = set()

        def differs():
            with open(viewer.cmd("Cascade screenshot"), "rb") as file:
                pictures.add(file.read())
            return len(pictures) > 1

        wait_for(differs, 10, "the wait window moves")
        return True

    def test_neither_the_browser_nor_a_deletion_waits_for_a_dead_root(self):
        with share.StoppingShare({"film.mpg": FILM}) as place:
            with Viewer(place, "-nomenu") as viewer:
                viewer.wait_listed()
                place.stop()
                viewer.key("stop")  # delete the film
                viewer.wait_window("Delete")
                self.assertLess(viewer.ping_ms(), PROMPT_MS)
                viewer.keys("select")  # it is not known yet what would go
                self.assertTrue(viewer.sees("Delete"))
                viewer.key("exit")
                viewer.wait_window("Delete", False)
                viewer.wait_window("Browser wait")
                self.assertLess(viewer.ping_ms(), PROMPT_MS)
                self.assertEqual(viewer.count("Invalid"), 0)
                place.go_on()
                viewer.wait_listed()
                self.assertEqual(viewer.count("About to delete"), 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
