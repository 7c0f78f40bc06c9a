"""Recordings on web servers: a good one, odd ones, and one that never answers."""
import http.client
import os
import re
import time
import unittest

from nuvid import SLOW, MediaServer, Nginx, Player, Shelf, frames, together, wait_for


def web_server(folder):
    """The real one, where there is one."""
    return Nginx(folder) if Nginx.BINARY else MediaServer(folder)


class Http(unittest.TestCase):
    def test_every_picture_comes_whatever_the_server_does(self):
        counts = frames()
        film = "mpeg2_mp2.mpg"

        def play(url, name=film, starves=None):
            with Player("-noresume", url) as player:
                seen = []

                def over(stats):
                    seen.append(stats["starving"])
                    return stats["frames_shown"] >= counts[name]

                stats = player.wait_stats(over, 40, url)
                self.assertEqual((stats["frames_shown"], stats["frames_dropped"] if SLOW == 1 else 0), (counts[name], 0), url)
                self.assertLessEqual(stats["refills"], 4, url)
                if starves is not None and SLOW == 1:
                    self.assertEqual(any(seen), starves, url)

        with Shelf(film, "ts_2audio.ts") as shelf, MediaServer(shelf.folder) as server, web_server(shelf.folder) as real:
            needed = os.path.getsize(shelf.path(film)) // 5    # the bytes of a second
            ways = {f"rate-{needed * 3 // 2}": False, f"rate-{needed // 2}": True, "burst": None, "rest": True, "drop": False, "chunked": False, "no-range": None, "moved": False}
            jobs = {way: lambda way=way, starves=starves: play(server.url(f"{way}/{film}"), starves=starves) for way, starves in ways.items()}
            jobs["a real server"] = lambda: play(real.url(film))
            jobs["transport stream"] = lambda: play(server.url("ts_2audio.ts"), "ts_2audio.ts")
            together(jobs)
            self.assertIn((f"/drop/{film}", "bytes=300000-"), server.requests)    # taken up at the byte where it broke

    def test_the_longer_addresses_do_for_streams_control_and_the_phone_remote(self):
        with Shelf("mpeg2_mp2.mpg") as shelf, MediaServer(shelf.folder, "::1") as server:
            with Player("-noresume", server.url("mpeg2_mp2.mpg"), host="::1", options=("--remote=[::1]:0",)) as player:
                player.wait_stats(lambda s: s["frames_shown"] > 5)
                remote = int(player.wait_output(re.compile(r"Phone remote: http://\[::1\]:(\d+)/")).group(1))
                for name, status in ((f"[::1]:{remote}", 200), (f"[::2]:{remote}", 421), ("[::1]:1", 421)):
                    link = http.client.HTTPConnection("::1", remote, timeout=20 * SLOW)
                    link.request("GET", "/", headers={"Host": name})
                    self.assertEqual(link.getresponse().status, status, name)
                    link.close()

    def test_skips_ask_the_server_for_the_place(self):
        with Shelf() as shelf:
            shelf.put("parts_long_whole.mpg", "film.mpg")
            with web_server(shelf.folder) as server, Player("-noresume", server.url("film.mpg")) as player:
                player.wait_stats(lambda s: s["frames_shown"] > 10)
                seen = player.stats()["total_frames_shown"]
                player.cmd("Nuvid forward 12")
                player.wait_output("To Skip:", 5)
                player.wait_stats(lambda s: s["total_frames_shown"] > seen + 10, what="pictures at the new place")
                self.assertGreater(int(player.cmd("Nuvid currentfileprogress")), 40)

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
    unittest.main(verbosity=2)
