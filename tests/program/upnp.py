"""Media servers in a network namespace of the tests' own: a real one, and one that does as a test tells it."""
import http.server
import os
import re
import shutil
import socket
import struct
import subprocess
import sys
import tempfile
import threading
from xml.sax.saxutils import escape

from nuvid import LocalServer, wait_for

MINIDLNA = next((path for path in ("/usr/sbin/minidlnad", shutil.which("minidlnad")) if path and os.path.exists(path)), None)
GROUP = "239.255.255.250"
TYPE = "urn:schemas-upnp-org:device:MediaServer:1"
UP = "ip link set lo up multicast on && ip route add 239.0.0.0/8 dev lo && exec \"$@\""


def enter_private_network():
    """Starts this program anew in a namespace where only loopback is. False: none can be had."""
    if os.environ.get("NUVID_PRIVATE_NETWORK"):
        return True
    if subprocess.run(["unshare", "-n", "true"], check=False, stderr=subprocess.DEVNULL).returncode != 0:
        return False
    os.environ["NUVID_PRIVATE_NETWORK"] = "1"
    os.execvp("unshare", ["unshare", "-n", "sh", "-c", UP, "sh", sys.executable, *sys.argv])
    return True


class RealServer:
    """minidlna over a folder."""

    def __init__(self, folder, name, uuid, port):
        self.folder = tempfile.mkdtemp(prefix="nuvid-dlna-")
        for part in ("db", "log"):
            os.mkdir(os.path.join(self.folder, part))
        self.conf = os.path.join(self.folder, "conf")
        with open(self.conf, "w", encoding="utf-8") as file:
            file.write(f"port={port}\nmedia_dir=V,{folder}\nfriendly_name={name}\ndb_dir={self.folder}/db\nlog_dir={self.folder}/log\ninotify=no\nnotify_interval=30\nuuid={uuid}\n")
        self.port = port
        self.process = None
        self.start()

    def start(self):
        self.process = subprocess.Popen([MINIDLNA, "-S", "-f", self.conf, "-P", os.path.join(self.folder, "pid"), "-i", "lo"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def wait_scanned(self, files):
        """Until it says on its page that it has so many video files."""
        def has():
            try:
                with socket.create_connection(("127.0.0.1", self.port), 1) as link:
                    link.sendall(b"GET / HTTP/1.0\r\n\r\n")
                    page = link.makefile("rb").read().decode("utf-8", "replace")
            except OSError:
                return False
            return f"Video files</td><td>{files}<" in page

        wait_for(has, 20, f"{files} files in the server")

    def stop(self, kill=False):
        if self.process:
            self.process.kill() if kill else self.process.terminate()
            self.process.wait(10)
            self.process = None

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()
        shutil.rmtree(self.folder, ignore_errors=True)


def container(identifier, title):
    return f'<container id="{identifier}" parentID="0"><dc:title>{escape(title)}</dc:title><upnp:class>object.container</upnp:class></container>'


def item(identifier, title, *resources):
    """A resource is (type, url, attributes)."""
    places = "".join(f'<res protocolInfo="http-get:*:{kind}:*" {more}>{escape(url)}</res>' for kind, url, more in resources)
    return f'<item id="{identifier}" parentID="0"><dc:title>{escape(title)}</dc:title><upnp:class>object.item.videoItem</upnp:class>{places}</item>'


class ScriptedServer(LocalServer):
    """Announces itself, and answers Browse with what `answer(object id, start, count)` gives: a list of objects, or a
    function that is called with the request's handler."""

    def __init__(self, name, uuid, answer):
        self.name, self.uuid, self.answer = name, uuid, answer
        self.asked = []
        super().__init__(_Soap)
        self.ssdp = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.ssdp.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        self.ssdp.bind((GROUP, 1900))
        self.ssdp.setsockopt(socket.IPPROTO_IP, socket.IP_ADD_MEMBERSHIP, struct.pack("4s4s", socket.inet_aton(GROUP), socket.inet_aton("127.0.0.1")))
        threading.Thread(target=self._respond, daemon=True).start()
        self.notify("alive")

    def _head(self):
        return f"CACHE-CONTROL: max-age=1800\r\nLOCATION: http://127.0.0.1:{self.server_address[1]}/desc.xml\r\nSERVER: test\r\nUSN: uuid:{self.uuid}::{TYPE}\r\n"

    def notify(self, what):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as out:
            out.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_IF, socket.inet_aton("127.0.0.1"))
            out.sendto(f"NOTIFY * HTTP/1.1\r\nHOST: {GROUP}:1900\r\nNT: {TYPE}\r\nNTS: ssdp:{what}\r\n{self._head()}\r\n".encode(), (GROUP, 1900))

    def _respond(self):
        while True:
            try:
                data, sender = self.ssdp.recvfrom(4096)
            except OSError:
                return
            if data.startswith(b"M-SEARCH") and (b"MediaServer" in data or b"ssdp:all" in data):
                self.ssdp.sendto(f"HTTP/1.1 200 OK\r\nST: {TYPE}\r\nEXT:\r\n{self._head()}\r\n".encode(), sender)

    def __exit__(self, *_):
        self.notify("byebye")
        self.ssdp.close()
        super().__exit__()


class _Soap(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def reply(self, body):
        data = body.encode()
        self.send_response(200)
        self.send_header("Content-Type", "text/xml")
        self.send_header("Content-Length", str(len(data)))
        self.end_headers()
        self.wfile.write(data)

    def do_GET(self):
        self.reply(f"<root><device><friendlyName>{escape(self.server.name)}</friendlyName><UDN>uuid:{self.server.uuid}</UDN><serviceList><service>"
                   "<serviceType>urn:schemas-upnp-org:service:ContentDirectory:1</serviceType><controlURL>/ctl</controlURL></service></serviceList></device></root>")

    def do_POST(self):
        body = self.rfile.read(int(self.headers.get("Content-Length", 0))).decode()
        identifier, start, count = (re.search(f"<{name}>(.*?)</{name}>", body).group(1) for name in ("ObjectID", "StartingIndex", "RequestedCount"))
        self.server.asked.append(identifier)
        answer = self.server.answer(identifier, int(start), int(count))
        if callable(answer):
            answer(self)
            return
        shown = answer[int(start):int(start) + int(count) if int(count) else None]
        didl = '<DIDL-Lite xmlns:dc="d" xmlns:upnp="u" xmlns="x">' + "".join(shown) + "</DIDL-Lite>"
        self.reply(f'<s:Envelope xmlns:s="e"><s:Body><u:BrowseResponse xmlns:u="u"><Result>{escape(didl)}</Result><NumberReturned>{len(shown)}</NumberReturned>'
                   f"<TotalMatches>{len(answer)}</TotalMatches></u:BrowseResponse></s:Body></s:Envelope>")

    def log_message(self, *_):
        pass
