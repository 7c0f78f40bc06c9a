"""Recordings on web servers: a good one, odd ones, and one that never answers."""
import http.client
import http.server
import os
import re
import threading
import time
import unittest

from nuvid import SLOW, MediaServer, Nginx, Player, Shelf, frames, together, wait_for


class WaywardServer(http.server.ThreadingHTTPServer):
    """Serves FOLDER's files as /WAY/NAME, where the way is

    rate-N   N bytes a second       burst   half a megabyte, then a second of nothing
    rest     half of the file, then three seconds of nothing before the rest
    drop     breaks each connection after 300,000 bytes
    chunked  no length, no ranges   moved   a redirection to the same file
    """
    daemon_threads = True

    def __init__(self, folder):
        self.folder = folder
        self.starts = []
        super().__init__(("127.0.0.1", 0), _Wayward)
        threading.Thread(target=self.serve_forever, args=(0.05,), daemon=True).start()

    def url(self, way, name):
        return f"http://127.0.0.1:{self.server_address[1]}/{way}/{name}"

    def handle_error(self, request, client_address):
        pass

    def __exit__(self, *_):
        self.shutdown()
        self.server_close()


class _Wayward(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def do_GET(self):
        way, _, name = self.path.lstrip("/").partition("/")
        path = os.path.join(self.server.folder, name)
        if not os.path.isfile(path):
            self.send_error(404)
        elif way == "moved":
            self.send_response(302)
            self.send_header("Location", f"/plain/{name}")
            self.send_header("Content-Length", "0")
            self.end_headers()
        else:
            with open(path, "rb") as file:
                self.serve(way, file.read())

    def serve(self, way, data):
        asked = re.match(r"bytes=(\d+)-$", self.headers.get("Range") or "")
        begin = int(asked.group(1)) if asked and way != "chunked" else 0
        self.server.starts.append(begin)
        self.send_response(206 if begin else 200)
        if begin:
            self.send_header("Content-Range", f"bytes {begin}-{len(data) - 1}/{len(data)}")
        if way == "chunked":
            self.send_header("Transfer-Encoding", "chunked")
        else:
            self.send_header("Accept-Ranges", "bytes")
            self.send_header("Content-Length", str(len(data) - begin))
        self.end_headers()
        self.send_paced(way, data[begin:], len(data) // 2 - begin)

    def send_paced(self, way, data, half):
        rate = int(way[5:]) if way.startswith("rate-") else None
        piece = {"burst": 524288, "drop": 300000, "chunked": 65536, "rest": max(half, 1)}.get(way, rate // 50 if rate else len(data))
        started = time.monotonic()
        for at in range(0, len(data), piece):
            part = data[at:at + piece]
            self.wfile.write(f"{len(part):x}\r\n".encode() + part + b"\r\n" if way == "chunked" else part)
            if way == "drop":
                self.close_connection = True
                return
            due = started + (at + piece) / rate if rate else time.monotonic() + {"burst": 1.0, "rest": 3.0}.get(way, 0)
            time.sleep(max(0.0, due - time.monotonic()))
        if way == "chunked":
            self.wfile.write(b"0\r\n\r\n")

    def log_message(self, *_):
        pass


def web_server(folder):
    """The real one, where there is one."""
    return Nginx(folder) if Nginx.BINARY else MediaServer(folder)


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

    def test_every_picture_comes_from_wayward_servers(self):
        expected = frames()["mpeg2_mp2.mpg"]
        with Shelf("mpeg2_mp2.mpg") as shelf, WaywardServer(shelf.folder) as server:
            size = os.path.getsize(shelf.path("mpeg2_mp2.mpg"))
            needed = size // 5  # the bytes of a second

            def play(way, starves):
                with Player("-noresume", server.url(way, "mpeg2_mp2.mpg")) as player:
                    seen = []

                    def over(stats):
                        seen.append(stats["starving"])
                        return stats["frames_shown"] >= expected

                    stats = player.wait_stats(over, 40, way)
                    self.assertEqual((stats["frames_shown"], stats["frames_dropped"] if SLOW == 1 else 0), (expected, 0), way)
                    self.assertLessEqual(stats["refills"], 4, way)
                    if starves is not None and SLOW == 1:
                        self.assertEqual(any(seen), starves, way)

            ways = {f"rate-{needed * 3 // 2}": False, f"rate-{needed // 2}": True, "burst": None, "rest": True, "drop": False, "chunked": False, "moved": False}
            together({way: lambda way=way, starves=starves: play(way, starves) for way, starves in ways.items()})
            # Taken up at the byte where they broke.
            self.assertIn(300000, server.starts)

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

    def test_a_missing_resource_is_refused(self):
        with Shelf("mpeg2_mp2.mpg") as shelf, web_server(shelf.folder) as server:
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
