"""Media servers through the remote control: found, walked, played from, lost."""
import os
import re
import unittest

import upnp
from nuvid import SLOW, MediaServer, Shelf, wait_for
from test_browse import Viewer

ONE = "00000000-1111-2222-3333-000000000001"
TWO = "00000000-1111-2222-3333-000000000002"


class Couch(Viewer):
    """A viewer who opens the browser and counts the servers' answers."""

    answers = 0

    def open_browser(self):
        self.menu(0)
        self.wait_window("Browser list")

    def answered(self, text="OK"):
        self.answers += 1
        self.wait_output(re.compile("Error: "), 15, self.answers)
        last = [line for line in self.lines if line.startswith("Error: ")][self.answers - 1]
        assert last == f"Error: {text}", last
        self.wait_window("Browser wait", False)

    def into(self, row, text="OK"):
        self.keys(*["down"] * row, "select")
        self.answered(text)


@unittest.skipUnless(os.environ.get("NUVID_PRIVATE_NETWORK"), "no network namespace can be had")
class Servers(unittest.TestCase):
    @unittest.skipUnless(upnp.MINIDLNA, "minidlna is not installed")
    def test_an_evening_with_a_server(self):
        with Shelf() as media, Shelf() as top:
            media.put("mpeg2_mp2.mpg", "Movies/alpha.mpg")
            media.put("parts_long_whole.mpg", "Movies/beta.mpg")
            media.put("ts_2audio.ts", "Movies/gamma.ts")
            with upnp.RealServer(media.folder, "First", ONE, 8201) as first, Couch(top) as viewer:
                first.wait_scanned(3)
                viewer.open_browser()
                viewer.wait_output("Mounting UPnP Device: First", 5)
                # The server, its folders, Movies, the second film.
                viewer.into(0)
                viewer.into(1)
                viewer.into(1)
                viewer.choose(2)
                viewer.wait_output("About to open http://127.0.0.1:8201/MediaItems/", 10)
                viewer.wait_stats(lambda s: s["frames_shown"] > 5, what="pictures")
                seen = viewer.stats()["total_frames_shown"]
                viewer.cmd("Nuvid forward 12")
                viewer.wait_output("To Skip:", 5)
                viewer.wait_stats(lambda s: s["total_frames_shown"] > seen + 10, what="pictures after the skip")
                self.assertGreater(int(viewer.cmd("Nuvid currentfileprogress")), 30)

                # Back in the same container, on the same film; what is chosen there plays again.
                viewer.open_browser()
                viewer.answered()
                viewer.choose(0)
                wait_for(lambda: viewer.count("About to open http://127.0.0.1:8201/") >= 2, 10, "the film is opened again")
                opened = re.findall(r"About to open (http://\S+)", viewer.output())
                self.assertEqual(opened[0], opened[1])
                viewer.wait_stats(lambda s: s["frames_shown"] > 5, what="pictures")

                # Up, up, and out to the folder that listed the server: the cursor stands on it.
                viewer.open_browser()
                viewer.answered()
                for _ in range(2):
                    viewer.key("left")
                    viewer.answered()
                viewer.key("left")
                viewer.wait_output("Mounting UPnP Device: First", 5, 2)
                self.another_comes_and_goes(viewer, media.folder)
                viewer.into(0)
                # A server that dies: the list says so and can be left.
                first.stop(kill=True)
                viewer.keys("down", "select")
                viewer.answered("The connection to the server was lost")
                viewer.key("left")
                viewer.answered("The connection to the server was lost")
                viewer.key("left")
                viewer.wait_listed()

    def another_comes_and_goes(self, viewer, folder):
        with upnp.RealServer(folder, "Second", TWO, 8202) as second:
            viewer.wait_output("Mounting UPnP Device: Second", 10)
            # It would not be mounted again if it had not been taken away.
            second.stop()
            second.start()
            viewer.wait_output(re.compile("^Mounting UPnP Device: Second"), 10, 2)
            self.assertEqual(viewer.count("Not mounting"), 0)

    def test_items_of_many_resources_behind_a_link(self):
        with Shelf("mpeg2_mp2.mpg", "mpeg1_mp2.mpg") as media, Shelf() as top, MediaServer(media.folder) as http:
            wanted = http.url("mpeg1_mp2.mpg")
            film = upnp.item("7", "A Film", ("image/jpeg", http.url("cover.jpg"), ""), ("video/mpeg", "http://198.51.100.1/away.mpg", ""),
                             ("video/mpeg", wanted, 'size="847872" duration="0:00:05.010"'), ("video/mpeg", http.url("mpeg2_mp2.mpg"), ""))
            shown = {"0": [upnp.container("1", "Music"), upnp.container("2", "Video")], "1": [], "2": [upnp.container("3", "More"), film]}
            os.mkdir(top.path("Links"))
            os.symlink(f"upnp:{TWO}", top.path("Links/Living room"))
            with upnp.ScriptedServer("Scripted", TWO, lambda identifier, *_: shown[identifier]) as server, Couch(top) as viewer:
                viewer.open_browser()
                viewer.wait_listed()
                viewer.key("select")  # Links: the server may not have been found yet
                viewer.wait_listed()
                viewer.into(1)
                viewer.into(2)
                viewer.key("left")
                viewer.answered()
                viewer.into(0)  # the cursor stands on the container that was left
                viewer.choose(2)
                viewer.wait_output(f"About to open {wanted}", 10)
                viewer.wait_stats(lambda s: s["frames_shown"] > 5, what="pictures")
                self.assertEqual({path for path, _ in http.requests}, {"/mpeg1_mp2.mpg"})
                self.assertEqual([asked for asked in server.asked if asked == "2"], ["2"] * 4)  # each with the question whether there is more

    def test_a_server_that_hangs_is_left(self):
        with Shelf("mpeg2_mp2.mpg") as media, Shelf() as top:
            os.symlink(media.path("mpeg2_mp2.mpg"), top.path("here.mpg"))

            def hang(request):
                request.wfile.write(b"HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n<s:Envelope>")
                request.server.released.wait()

            with upnp.ScriptedServer("Slow", ONE, lambda *_: hang), Couch(top) as viewer:
                viewer.open_browser()
                viewer.wait_output("Mounting UPnP Device: Slow", 5)
                viewer.keys("down", "select")
                viewer.wait_window("Browser wait")
                self.assertLess(max(viewer.ping_ms() for _ in range(20)), 100 * SLOW)
                viewer.key("exit")
                viewer.answered("Cancelled")
                viewer.key("left")
                viewer.wait_listed()
                viewer.keys("down", "select")  # and the player quits in the middle of it
                viewer.wait_window("Browser wait")


if __name__ == "__main__":
    upnp.enter_private_network()
    unittest.main(verbosity=2)
