"""What the measurements stand on: films to play, a screen that can be read, players to start.

A player's processor time is read from its process clock, exact to the nanosecond and with the threads that have
ended; the counts of wake-ups are those of its threads, each time one went to sleep of its own will.
"""
import json
import mmap
import os
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import zlib

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, "tests", "program"))
sys.dont_write_bytecode = True
from nuvid import LISTENS  # noqa: E402

WIDTH, HEIGHT = 1280, 720


# --- media ---------------------------------------------------------------------------------------------
def make_media(folder, seconds):
    """Two marks in each picture: a block that is white in every other picture (longest gap; it also covers
    a fifth of the screen's width in a narrow picture), and one that changes its colour every ten seconds
    (a skip has arrived)."""
    os.makedirs(folder, exist_ok=True)
    marks = ("drawbox=x=iw*0.05:y=ih*0.45:w=iw*0.2:h=ih*0.1:c=black:t=fill,drawbox=x=iw*0.05:y=ih*0.45:w=iw*0.2:h=ih*0.1:c=white:t=fill:enable='mod(n,2)',"
             "drawbox=x=iw*0.85:y=ih*0.45:w=iw*0.1:h=ih*0.1:c=red:t=fill,drawbox=x=iw*0.85:y=ih*0.45:w=iw*0.1:h=ih*0.1:c=blue:t=fill:enable='mod(floor(t/10),2)'")
    noise = "noise=alls=12:allf=t"
    recipes = {
        "sd.mpg": ("720x576", 25, f"{noise},{marks}", "-c:v mpeg2video -b:v 6M -maxrate 8M -bufsize 1835k -g 12 -bf 2 -aspect 16:9 -c:a mp2 -b:a 192k -f vob"),
        "hd.ts": ("1920x1080", 50, f"{noise},{marks},interlace=scan=tff", "-c:v mpeg2video -flags +ilme+ildct -top 1 -b:v 15M -maxrate 15M -bufsize 9M -g 12 -bf 2 "
                  "-aspect 16:9 -c:a ac3 -b:a 384k -f mpegts"),
        "mpeg1.mpg": ("352x288", 25, f"{noise},{marks}", "-c:v mpeg1video -b:v 1500k -maxrate 1500k -bufsize 400k -g 12 -bf 2 -c:a mp2 -b:a 192k -f mpeg"),
        "h264.ts": ("1280x720", 25, f"{noise},{marks}", "-c:v libx264 -preset veryfast -b:v 4M -g 25 -c:a aac -b:a 128k -f mpegts"),
        "long.mpg": ("720x576", 25, marks, "-c:v mpeg2video -b:v 4M -maxrate 6M -bufsize 1835k -g 12 -bf 2 -aspect 16:9 -c:a mp2 -b:a 192k -f vob"),
    }
    for name, (size, rate, filters, tail) in recipes.items():
        path = os.path.join(folder, name)
        length = 60 if name == "long.mpg" else seconds
        mark = f"{path}.{length}-{zlib.crc32(repr((size, rate, filters, tail)).encode()):08x}"    # another recipe makes another film
        if os.path.exists(path) and os.path.exists(mark):
            continue
        print(f"making {name}", flush=True)
        subprocess.run(["ffmpeg", "-v", "error", "-nostdin", "-y", "-threads", "2", "-f", "lavfi", "-i", f"testsrc2=size={size}:rate={rate}:duration={length}", "-f", "lavfi",
                        "-i", f"sine=frequency=440:sample_rate=48000:duration={length}", "-vf", filters + ",format=yuv420p", "-ac", "2", *tail.split(), path], check=True)
        open(mark, "w", encoding="utf-8").close()


def cut_in_two(folder, name):
    """The film as two numbered parts, cut inside a pack; the first part's path."""
    parts = os.path.join(folder, "parts")
    os.makedirs(parts, exist_ok=True)
    first = os.path.join(parts, "part1.mpg")
    with open(os.path.join(folder, name), "rb") as file:
        film = file.read()
    half = len(film) // 2 // 2048 * 2048 + 777
    if not os.path.exists(first) or os.path.getsize(first) != half:
        for path, piece in ((first, film[:half]), (os.path.join(parts, "part2.mpg"), film[half:])):
            with open(path, "wb") as file:
                file.write(piece)
    return first


# --- the screen ----------------------------------------------------------------------------------------
class Screen:
    """Xvfb whose picture lies in a file that can be read at any time (the format of xwd)."""

    def __init__(self):
        self.folder = tempfile.mkdtemp(prefix="nuvid-bench-")
        read, write = os.pipe()
        self.process = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-screen", "0", f"{WIDTH}x{HEIGHT}x24", "-fbdir", self.folder, "-nolisten", "tcp"],
                                        pass_fds=(write,), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as pipe:
            self.display = ":" + pipe.readline().strip()
        with open(os.path.join(self.folder, "Xvfb_screen0"), "rb") as file:
            self.memory = mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ)
        header = int.from_bytes(self.memory[0:4], "big")
        colours = int.from_bytes(self.memory[76:80], "big")
        self.first = header + colours * 12
        self.stride = int.from_bytes(self.memory[48:52], "big")

    def pixel(self, x, y):
        at = self.first + int(y * HEIGHT) * self.stride + int(x * WIDTH) * 4
        return self.memory[at + 2], self.memory[at + 1], self.memory[at]

    def is_blank(self):
        return all(max(self.pixel(x, y)) < 24 for x, y in ((0.3, 0.3), (0.5, 0.25), (0.7, 0.6), (0.45, 0.7), (0.9, 0.5)))

    def close(self):
        self.process.terminate()
        self.process.wait()
        shutil.rmtree(self.folder, ignore_errors=True)


# --- players -------------------------------------------------------------------------------------------
def environment(screen, player=""):
    env = dict(os.environ, DISPLAY=screen.display, SDL_AUDIODRIVER="dummy", SDL_VIDEODRIVER="x11", LC_ALL="C.UTF-8")
    env.pop("WAYLAND_DISPLAY", None)
    if player == "ffplay":    # without this it draws through an emulated GPU, three times as dear
        env.update(SDL_RENDER_DRIVER="software", SDL_FRAMEBUFFER_ACCELERATION="0")
    return env


def command(player, program, state, path, bwdif):
    if player == "nuvid":
        return [program, "--fullscreen", "--ecp=127.0.0.1:0", f"--state={state}", f"--deinterlace={'on' if bwdif else 'off'}", "-noresume", "-exitatend", "-infotimeout=1", path]
    if player == "mpv":
        return ["mpv", "--no-config", "--really-quiet", "--vo=x11", "--ao=null", "--hwdec=no", "--fs", "--deinterlace=no", *(["--vf=bwdif"] if bwdif else []), path]
    return ["ffplay", "-v", "quiet", "-autoexit", "-noborder", "-left", "0", "-top", "0", "-x", str(WIDTH), "-y", str(HEIGHT), *(["-vf", "bwdif"] if bwdif else []), path]


class Run:
    """One process, from its start to its end."""

    def __init__(self, screen, player, program, path, bwdif=False, extra=(), stay=False):
        self.state = tempfile.mkdtemp(prefix="nuvid-bench-state-")
        self.player = player
        self.port = None
        self.began = time.monotonic()
        self.log = open(os.path.join(self.state, "log"), "wb")
        words = [word for word in (*command(player, program, self.state, path, bwdif), *extra) if not (stay and word == "-exitatend")]
        self.process = subprocess.Popen(words, env=environment(screen, player), stdin=subprocess.DEVNULL, stdout=self.log, stderr=subprocess.STDOUT)
        self.usage = None

    def done(self):
        if self.usage is None:
            pid, _, usage = os.wait4(self.process.pid, os.WNOHANG)
            if pid:
                self.usage = usage
                self.process.returncode = 0
        return self.usage is not None

    def cpu(self):
        return time.clock_gettime((~self.process.pid) << 3 | 2)    # the process's own clock, all threads

    def peak(self):
        """Megabytes; nothing when the process has ended."""
        try:
            with open(f"/proc/{self.process.pid}/status", encoding="ascii") as file:
                return int(re.search(r"VmHWM:\s*(\d+)", file.read()).group(1)) / 1024
        except (OSError, AttributeError):
            return None

    def wakeups(self):
        """Of each thread, how often it went to sleep of its own will."""
        counts = {}
        for thread in os.listdir(f"/proc/{self.process.pid}/task"):
            try:
                with open(f"/proc/{self.process.pid}/task/{thread}/status", encoding="ascii") as file:
                    counts[thread] = int(re.search(r"^voluntary_ctxt_switches:\s*(\d+)", file.read(), re.M).group(1))
            except (OSError, AttributeError):
                pass
        return counts

    def tell(self, line):
        """External control of the player under test."""
        while self.port is None:
            with open(os.path.join(self.state, "log"), encoding="utf-8", errors="replace") as file:
                found = LISTENS.search(file.read())
            if found:
                self.port = int(found.group(1))
            elif self.done():
                raise RuntimeError("the player ended")
            else:
                time.sleep(0.005)
        with socket.create_connection(("127.0.0.1", self.port), timeout=5) as link:
            link.sendall(line.encode() + b"\n")
            return link.makefile("r").readline().strip()

    def stats(self):
        return json.loads(self.tell("Cascade stats"))

    def end(self):
        if not self.done():
            self.process.send_signal(signal.SIGTERM if self.player != "nuvid" else signal.SIGINT)
            deadline = time.monotonic() + 5
            while not self.done() and time.monotonic() < deadline:
                time.sleep(0.02)
            if not self.done():
                self.process.kill()
                _, _, self.usage = os.wait4(self.process.pid, 0)
                self.process.returncode = 0
        self.log.close()
        shutil.rmtree(self.state, ignore_errors=True)


def forget_side_files(folder):
    for name in os.listdir(folder):
        if name.endswith(".nuvid"):
            os.unlink(os.path.join(folder, name))
