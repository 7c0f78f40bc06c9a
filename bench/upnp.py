#!/usr/bin/env python3
"""See upnp.sh. Medians; a question asked by curl and the same one by the player take turns."""
import os
import statistics
import subprocess
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, "tests", "program"))
import upnp  # noqa: E402
from nuvid import Shelf  # noqa: E402
from test_browse import Viewer  # noqa: E402

RUNS = 9
UUID = "00000000-1111-2222-3333-000000000009"
QUESTION = """<?xml version="1.0" encoding="utf-8"?><s:Envelope xmlns:s="http://schemas.xmlsoap.org/soap/envelope/" s:encodingStyle="http://schemas.xmlsoap.org/soap/encoding/"><s:Body><u:Browse
 xmlns:u="urn:schemas-upnp-org:service:ContentDirectory:1"><ObjectID>64</ObjectID><BrowseFlag>BrowseDirectChildren</BrowseFlag><Filter>*</Filter><StartingIndex>0</StartingIndex><RequestedCount>0</RequestedCount>
 <SortCriteria>+upnp:class,+dc:title</SortCriteria></u:Browse></s:Body></s:Envelope>"""


def transport_stream_packet():
    """The least that the server takes for a film."""
    return subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "color=size=64x64:rate=25:duration=0.2", "-c:v", "mpeg2video", "-f", "mpeg", "-"], check=True, stdout=subprocess.PIPE).stdout


class Lines(Viewer):
    """Knows when each line was said."""

    def __init__(self, shelf):
        self.times = []
        super().__init__(shelf)

    def _read(self):
        for raw in self.process.stdout:
            with self._changed:
                self.times.append(time.monotonic())
                self.lines.append(raw.decode("utf-8", "replace").rstrip("\n"))
                self._changed.notify_all()

    def said(self, text, times=1, seconds=15):
        self.wait_output(text, seconds, times)
        return [at for line, at in zip(self.lines, self.times) if text in line][times - 1]


def rest():
    """What was painted, or sent, is done with."""
    time.sleep(0.3)


def curl_ms(port):
    reply = subprocess.run(["curl", "-s", "-o", "/dev/null", "-w", "%{time_total}", "-H", 'Content-Type: text/xml; charset="utf-8"', "-H",
                            'SOAPAction: "urn:schemas-upnp-org:service:ContentDirectory:1#Browse"', "--data-binary", QUESTION, f"http://127.0.0.1:{port}/ctl/ContentDir"],
                           check=True, stdout=subprocess.PIPE, text=True)
    return float(reply.stdout) * 1000


def discovery_ms(top):
    with Lines(top) as player:
        player.menu(0)
        found = player.said("Mounting UPnP Device")
        return (found - player.said("should be cataloging")) * 1000


def listing_ms(top, port, items):
    """The player's two times and curl's: from the key to the answer being read, and to the screen showing the list
    (the next command is answered after that)."""
    times = []
    with Lines(top) as player:
        player.menu(0)
        player.said("Mounting UPnP Device")
        player.key("select")
        player.said("Error: ")
        for run in range(RUNS):
            if run:
                player.key("left")
                player.said("Error: ", 2 * run + 1)
            else:
                player.key("down")    # later it stands there already
            rest()
            own = curl_ms(port)
            rest()
            begin = time.monotonic()
            player.key("select")
            listed = player.said("Error: OK", 2 * run + 2)
            assert f"Match Count: {items}" in player.lines[-6:], player.lines[-6:]
            player.cmd("Nuvid ping")
            times.append(((listed - begin) * 1000, (time.monotonic() - begin) * 1000, own))
    return times


def main(items):
    with Shelf() as media, Shelf() as top:
        film = transport_stream_packet()
        first = media.path("Recording 00001.mpg")
        with open(first, "wb") as file:
            file.write(film)
        for number in range(2, items + 1):
            os.link(first, media.path(f"Recording {number:05}.mpg"))
        with upnp.RealServer(media.folder, "Bench", UUID, 8209) as server:
            server.wait_scanned(items)
            found = [discovery_ms(top) for _ in range(3)]
            print(f"a running server is found          {statistics.median(found):6.0f} ms after the top folder is read (worst {max(found):.0f})")
            times = listing_ms(top, server.port, items)
            for what, pick in (("median", statistics.median), ("best", min)):
                listed, shown, own = (pick(column) for column in zip(*times))
                print(f"{items} items, {what:6}  server {own:6.1f} ms (curl), listed {listed:6.1f} ms ({listed / own:.2f} x), on the screen {shown:6.1f} ms ({shown / own:.2f} x)")


if __name__ == "__main__":
    if not upnp.enter_private_network():
        sys.exit("no network namespace can be had")
    if len(sys.argv) > 2:
        for command in ("ip link set lo mtu 1500", f"tc qdisc add dev lo root tbf rate {sys.argv[2]} burst 128k latency 400ms"):
            subprocess.run(command.split(), check=True)
    main(int(sys.argv[1]))
