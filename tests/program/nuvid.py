"""Runs the real player without a display and talks to it over external control.

    with Player("recording.mpg") as player:
        player.wait_stats(lambda s: s["frames_shown"] > 25)
        player.cmd("Nuvid pause")

Leaving the block quits the player and checks what every run must keep: exit code 0 and no report of a
sanitizer. Nothing here rests for a fixed time: every wait has a condition and a deadline.
"""
import contextlib
import http.server
import json
import os
import re
import shutil
import socket
import subprocess
import tempfile
import threading
import time

PROGRAM = os.environ.get("NUVID_PROGRAM", "build-test/nuvid")
FIXTURES = os.environ.get("NUVID_FIXTURES", "build-test/fixtures")
SOURCE = os.environ.get("NUVID_SOURCE", os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", ".."))
SANITIZE = os.environ.get("NUVID_SANITIZE", "")
# Media servers of the network that the tests happen to run in are none of theirs.
os.environ["NUVID_UPNP_INTERFACE"] = "lo" if os.environ.get("NUVID_PRIVATE_NETWORK") else "none"
SLOW = {"": 1, "address": 3, "thread": 8}[SANITIZE]  # how much longer deadlines are
PROMPT_MS = 500 * (8 if SANITIZE else 1)    # within which a command is answered, whatever hangs
SIGNATURE = "#Nuvid File. Do not modify\n"    # of a side file

REPORTS = re.compile(r"AddressSanitizer|LeakSanitizer|ThreadSanitizer|runtime error:|Assertion .* failed|GLib-CRITICAL|G_IS_")
LISTENS = re.compile(r"External control listens on (?:127\.0\.0\.1|\[::1\]):(\d+)")


def frames():
    """How many pictures each fixture has, as a full decode counts them."""
    with open(os.path.join(FIXTURES, "frames.txt"), encoding="utf-8") as file:
        return {line.rsplit(" ", 1)[0]: int(line.rsplit(" ", 1)[1]) for line in file if line.strip()}


def wait_for(condition, seconds, what):
    """Asks until the condition gives something true, and answers that."""
    deadline = time.monotonic() + seconds * SLOW
    pause = threading.Event()
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise AssertionError(f"not within {seconds * SLOW} s: {what() if callable(what) else what}")
        pause.wait(0.02)


def together(actions, at_once=4):
    """Runs the actions in threads, some at once; the first failure of each is raised at the end."""
    turns = threading.Semaphore(at_once if not SANITIZE else 2)
    failures = []

    def run(name, action):
        with turns:
            try:
                action()
            except BaseException as error:  # pylint: disable=broad-except
                failures.append(f"{name}: {error}")

    threads = [threading.Thread(target=run, args=item) for item in actions.items()]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    if failures:
        raise AssertionError("\n".join(failures))


def read(path):
    """A text file's text, empty where there is none."""
    with contextlib.suppress(FileNotFoundError), open(path, encoding="utf-8") as file:
        return file.read()
    return ""


def ffmpeg(*arguments, data=None):
    """Answers what it writes to "-"; `data` goes to its standard input."""
    return subprocess.run(["ffmpeg", "-hide_banner", "-loglevel", "error", "-y", *arguments], check=True, input=data or b"", stdout=subprocess.PIPE).stdout


def write(path, text):
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)


class Player:
    def __init__(self, *arguments, options=(), tidy=True, host="127.0.0.1"):
        """`arguments` go to the player, `options` are the host's words beside the usual ones. `tidy`: the
        player must come to its end by "Nuvid quit" with exit code 0."""
        self.folder = tempfile.mkdtemp(prefix="nuvid-test-")
        self.state = os.path.join(self.folder, "state")
        self.tidy = tidy
        self.host = host
        self.lines = []
        self.port = 0
        self._changed = threading.Condition()
        self._link = None
        self._lock = threading.Lock()
        command = [PROGRAM, "--headless", f"--ecp=[{host}]:0" if ":" in host else f"--ecp={host}:0", "--volumes=off", f"--state={self.state}", *options, *arguments]
        self.process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()
        try:
            self.port = int(self.wait_output(LISTENS, 20).group(1))
        except AssertionError:
            self.kill()
            raise

    # --- what it says
    def _read(self):
        for raw in self.process.stdout:
            with self._changed:
                self.lines.append(raw.decode("utf-8", "replace").rstrip("\n"))
                self._changed.notify_all()
        with self._changed:
            self._changed.notify_all()

    def output(self):
        return "\n".join(self.lines)

    def count(self, text):
        return sum(text in line for line in self.lines)

    def wait_output(self, pattern, seconds=10, times=1):
        """Waits for a line with the text or the regular expression; answers the match or the line."""
        def find():
            found = [hit for hit in (pattern.search(line) if hasattr(pattern, "search") else (pattern in line and line) for line in self.lines) if hit]
            return found[times - 1] if len(found) >= times else None

        deadline = time.monotonic() + seconds * SLOW
        with self._changed:
            while True:
                hit = find()
                if hit:
                    return hit
                left = deadline - time.monotonic()
                if left <= 0 or self.process.poll() is not None and not self._reader.is_alive():
                    raise AssertionError(f"the player never said {pattern!r}:\n{self.output()[-3000:]}")
                self._changed.wait(min(left, 0.5))

    # --- external control
    def cmd(self, line, seconds=10):
        with self._lock:
            try:
                if self._link is None:
                    with socket.create_connection((self.host, self.port), timeout=seconds * SLOW) as connection:
                        self._link = connection.makefile("rwb", buffering=0)    # holds the connection open
                self._link.write(line.encode() + b"\n")
                reply = self._link.readline()
            except OSError as error:
                raise AssertionError(f"no reply to {line!r}: {error}\n{self.output()[-2000:]}") from error
        if not reply:
            raise AssertionError(f"the player hung up on {line!r}\n{self.output()[-2000:]}")
        return reply.decode().rstrip("\n")

    def stats(self):
        return json.loads(self.cmd("Cascade stats"))

    def wait_stats(self, condition, seconds=15, what="the statistics"):
        last = {}

        def ask():
            last.clear()
            last.update(self.stats())
            return dict(last) if condition(last) else None

        return wait_for(ask, seconds, lambda: f"{what}\n{json.dumps(last)}\n{self.output()[-1500:]}")

    def key(self, name):
        return self.cmd(f"Cascade key {name}")

    def jump(self, line):
        """A step to another place. It is dropped while an earlier request settles, so it is asked for until it is taken."""
        taken = self.count("Resumed playback")
        wait_for(lambda: self.cmd(line) == "OK" and self.count("Resumed playback") > taken, 10, line)
        seen = self.stats()["total_frames_shown"]
        self.wait_stats(lambda s: s["total_frames_shown"] > seen + 2, what=f"pictures after {line}")

    def ping_ms(self):
        begin = time.monotonic()
        reply = self.cmd("Nuvid ping")
        assert reply == "pong", reply
        return (time.monotonic() - begin) * 1000

    def choose(self, program=0, sound=0, resolution=0):
        """Goes through the playback options; each number says how often Select is pressed on that row."""
        title = "Nuvid Playback Options"
        wait_for(lambda: self.key("info") and title in self.stats()["windows"], 10, title)
        for presses in (program, sound, resolution):
            for _ in range(presses):
                self.key("select")
            self.key("down")
        self.key("select")
        self.wait_stats(lambda s: title not in s["windows"], what="the menu to close")

    # --- its end
    def wait_exit(self, seconds=10):
        try:
            code = self.process.wait(seconds * SLOW)
        except subprocess.TimeoutExpired:
            raise AssertionError(f"the player does not end:\n{self.output()[-3000:]}") from None
        self._reader.join(10)
        return code

    def kill(self):
        self.process.kill()
        self.process.wait()
        self._reader.join(10)
        self.process.stdout.close()
        if self._link is not None:
            self._link.close()
        shutil.rmtree(self.folder, ignore_errors=True)

    def close(self):
        try:
            if self.process.poll() is None:
                with contextlib.suppress(AssertionError):
                    self.cmd("Nuvid quit")
            code = self.wait_exit()
            report = REPORTS.search(self.output())
            assert not report, f"{report.group(0)}:\n{self.output()[-8000:]}"
            if self.tidy:
                assert code == 0, f"exit code {code}:\n{self.output()[-3000:]}"
        finally:
            self.kill()

    def __enter__(self):
        return self

    def __exit__(self, kind, value, trace):
        if kind is None:
            self.close()
        else:
            self.kill()


class Shelf:
    """A folder of its own for the fixtures of one test: the player writes side files beside what it plays."""

    def __init__(self, *names):
        self.folder = tempfile.mkdtemp(prefix="nuvid-media-")
        for name in names:
            self.put(name)

    def put(self, name, as_name=None):
        """A file of the fixtures, or a whole folder of them; answers its path here."""
        source = os.path.join(FIXTURES, name)
        target = os.path.join(self.folder, as_name or name)
        os.makedirs(os.path.dirname(target), exist_ok=True)
        if os.path.isdir(source):
            shutil.copytree(source, target, copy_function=self._link)
        else:
            self._link(source, target)
        return target

    @staticmethod
    def _link(source, target):
        try:
            os.link(source, target)
        except OSError:
            shutil.copyfile(source, target)
        return target

    def path(self, name):
        return os.path.join(self.folder, name)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.folder, ignore_errors=True)


class LocalServer(http.server.ThreadingHTTPServer):
    """Serves in threads of its own until the block is left; `released` then lets go of whatever hangs."""
    daemon_threads = True

    def __init__(self, handler, host="127.0.0.1"):
        self.released = threading.Event()
        self.address_family = socket.AF_INET6 if ":" in host else socket.AF_INET
        super().__init__((host, 0), handler)
        threading.Thread(target=self.serve_forever, args=(0.05,), daemon=True).start()

    def handle_error(self, request, client_address):
        pass  # a player that hangs up is an ordinary thing

    def __exit__(self, *_):
        self.released.set()
        self.shutdown()
        self.server_close()


class MediaServer(LocalServer):
    """Serves a folder with ranges, and misbehaves when told so by the path:

    /NAME            as it should be          /chunked/NAME   no length, no ranges
    /hang/NAME       accepts, never answers   /stall/NAME     answers the first half, then nothing
    /rate-N/NAME     N bytes a second         /rest/NAME      the first half, three seconds of nothing, the rest
    /burst/NAME      half a megabyte, then a second of nothing
    /drop/NAME       breaks the connection after 300,000 bytes
    /no-range/NAME   ignores ranges, as some proxies do
    /moved/NAME      a redirection to the same file
    """

    def __init__(self, folder, host="127.0.0.1"):
        self.folder = folder
        self.requests = []
        super().__init__(_Handler, host)

    def url(self, name):
        host = self.server_address[0]
        return f"http://{f'[{host}]' if ':' in host else host}:{self.server_address[1]}/{name}"


class _Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def do_GET(self):
        self.server.requests.append((self.path, self.headers.get("Range")))
        way, _, name = self.path.lstrip("/").rpartition("/")
        path = os.path.join(self.server.folder, name)
        if way == "hang":
            self.hang()
        elif not os.path.isfile(path):
            self.send_error(404)
        elif way == "moved":
            self.send_response(302)
            self.send_header("Location", f"/{name}")
            self.send_header("Content-Length", "0")
            self.end_headers()
        else:
            with open(path, "rb") as file:
                self.serve(way, file.read())

    def hang(self):
        self.server.released.wait()
        self.close_connection = True

    def serve(self, way, data):
        asked = re.match(r"bytes=(\d+)-$", self.headers.get("Range") or "") if way not in ("chunked", "no-range") else None
        begin = int(asked.group(1)) if asked else 0
        self.send_response(200 if not asked else 206 if begin < len(data) else 416)
        if asked:
            self.send_header("Content-Range", f"bytes {begin}-{len(data) - 1}/{len(data)}" if begin < len(data) else f"bytes */{len(data)}")
        if way == "chunked":
            self.send_header("Transfer-Encoding", "chunked")
        else:
            if way != "no-range":
                self.send_header("Accept-Ranges", "bytes")
            self.send_header("Content-Length", str(max(0, len(data) - begin)))
        self.end_headers()
        self.send_paced(way, data[begin:])

    def send_paced(self, way, data):
        rate = int(way[5:]) if way.startswith("rate-") else 0
        half = len(data) // 2 + 1
        piece = {"burst": 524288, "chunked": 65536, "drop": 300000, "rest": half, "stall": half}.get(way, rate // 50 or max(1, len(data)))
        started = time.monotonic()
        for at in range(0, len(data), piece):
            part = data[at:at + piece]
            self.wfile.write(f"{len(part):x}\r\n".encode() + part + b"\r\n" if way == "chunked" else part)
            if way == "stall":
                self.hang()
                return
            if way == "drop":
                self.close_connection = True
                return
            due = started + (at + piece) / rate if rate else time.monotonic() + {"burst": 1.0, "rest": 3.0}.get(way, 0)
            time.sleep(max(0.0, due - time.monotonic()))    # the server's slowness, not the test's
        if way == "chunked":
            self.wfile.write(b"0\r\n\r\n")

    def log_message(self, *_):
        pass


class Nginx:
    """The real server on a port of its own, with nothing outside its own folder."""

    BINARY = next((path for path in ("/usr/sbin/nginx", shutil.which("nginx")) if path and os.path.exists(path)), None)

    def __init__(self, folder):
        self.folder = tempfile.mkdtemp(prefix="nuvid-nginx-")
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            self.port = probe.getsockname()[1]
        places = "".join(f"{kind}_temp_path {self.folder}/{kind};\n" for kind in ("client_body", "proxy", "fastcgi", "uwsgi", "scgi"))
        with open(os.path.join(self.folder, "nginx.conf"), "w", encoding="utf-8") as file:
            file.write(f"""{'user root;' if os.geteuid() == 0 else ''}
daemon off; worker_processes 1; pid {self.folder}/pid; error_log {self.folder}/error.log;
events {{ worker_connections 64; }}
http {{
 log_format bytes '$bytes_sent'; access_log {self.folder}/bytes.log bytes; {places}
 server {{ listen 127.0.0.1:{self.port}; root {folder}; }}
}}
""")
        self.process = subprocess.Popen([self.BINARY, "-p", self.folder, "-e", f"{self.folder}/error.log", "-c", f"{self.folder}/nginx.conf"],
                                        stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait_for(self._answers, 10, "nginx answers")

    def _answers(self):
        assert self.process.poll() is None, "nginx ended"
        with contextlib.suppress(OSError), socket.create_connection(("127.0.0.1", self.port), timeout=1):
            return True
        return False

    def url(self, name):
        return f"http://127.0.0.1:{self.port}/{name}"

    def bytes_sent(self):
        """In all answers that have ended; one that was cut off counts what had gone out."""
        with open(os.path.join(self.folder, "bytes.log"), encoding="ascii") as file:
            return sum(int(line) for line in file)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait(10)
        shutil.rmtree(self.folder, ignore_errors=True)
