"""Recordings on web servers: a good one, odd ones, and one that never answers."""
import threading
import time
import unittest

from nuvid import SLOW, MediaServer, Nginx, Player, Shelf, frames, together, wait_for


class Http(unittest.TestCase):
    def test_every_picture_comes_over_http(self):
        counts = frames()

        def play(url, expected):
            with Player("-noresume", url) as player:
                stats = player.wait_stats(lambda s: s["frames_shown"] >= expected, 25, url)
                self.assertEqual((stats["frames_shown"], stats["frames_dropped"] if SLOW == 1 else 0), (expected, 0), url)

        with Shelf("mpeg2_mp2.mpg", "ts_2audio.ts") as shelf, MediaServer(shelf.folder) as server:
            jobs = {"ranges": lambda: play(server.url("mpeg2_mp2.mpg"), counts["mpeg2_mp2.mpg"]),
                    "transport stream": lambda: play(server.url("ts_2audio.ts"), counts["ts_2audio.ts"]),
                    "no ranges": lambda: play(server.url("no-range/mpeg2_mp2.mpg"), counts["mpeg2_mp2.mpg"])}
            if Nginx.BINARY:
                with Nginx(shelf.folder) as nginx:
                    jobs["nginx"] = lambda: play(nginx.url("mpeg2_mp2.mpg"), counts["mpeg2_mp2.mpg"])
                    together(jobs)
            else:
                together(jobs)

    def test_skips_ask_the_server_for_the_place(self):
        with Shelf() as shelf:
            shelf.put("parts_long_whole.mpg", "film.mpg")
            with MediaServer(shelf.folder) as server, Player("-noresume", server.url("film.mpg")) as player:
                player.wait_stats(lambda s: s["frames_shown"] > 10)
                seen = player.stats()["total_frames_shown"]
                player.cmd("Nuvid forward 12")
                player.wait_output("To Skip:", 5)
                player.wait_stats(lambda s: s["total_frames_shown"] > seen + 10, what="pictures at the new place")
                self.assertGreater(int(player.cmd("Nuvid currentfileprogress")), 40)

    def test_a_missing_resource_is_refused(self):
        with Shelf("mpeg2_mp2.mpg") as shelf, MediaServer(shelf.folder) as server:
            with Player("-noresume", server.url("missing/film.mpg"), shelf.path("mpeg2_mp2.mpg")) as player:
                player.wait_output("failed to http open", 10)
                player.wait_stats(lambda s: s["frames_shown"] > 5)

    def test_a_server_that_never_answers_holds_nothing_up(self):
        with Shelf("mpeg2_mp2.mpg") as shelf, MediaServer(shelf.folder) as server, Player("-noresume") as player:
            player.cmd(f"Nuvid open {server.url('hang/film.mpg')}")
            wait_for(lambda: server.requests, 10, "the player asks the server")
            slowest = max(player.ping_ms() for _ in range(20))
            self.assertLess(slowest, 200 * SLOW)
            begin = time.monotonic()
            self.assertEqual(player.cmd("Nuvid stop"), "OK")
            player.wait_output("failed to http open", 5)
            self.assertLess(time.monotonic() - begin, 1.0 * SLOW)
            # And the player is as good as new.
            self.assertEqual(player.cmd(f"Nuvid open {shelf.path('mpeg2_mp2.mpg')}"), "OK")
            player.wait_stats(lambda s: s["frames_shown"] > 5)

    def test_quit_does_not_wait_for_a_server(self):
        def leave(way):
            with Shelf() as shelf:
                shelf.put("parts_long_whole.mpg", "film.mpg")
                with MediaServer(shelf.folder) as server, Player("-noresume") as player:
                    player.cmd(f"Nuvid open {server.url(way + '/film.mpg')}")
                    wait_for(lambda: server.requests, 10, "the player asks the server")
                    if way == "stall":
                        player.wait_stats(lambda s: s["frames_shown"] > 5)
                    begin = time.monotonic()
                    player.cmd("Nuvid quit")
                    self.assertEqual(player.wait_exit(10), 0)
                    self.assertLess(time.monotonic() - begin, 2.0 * SLOW, way)

        together({way: lambda way=way: leave(way) for way in ("hang", "stall")})


if __name__ == "__main__":
    threading.excepthook = lambda _: None
    unittest.main(verbosity=2)
