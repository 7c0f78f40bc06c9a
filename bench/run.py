#!/usr/bin/env python3
"""Compares the player with two others on this machine: bench/run.py [options]

Everything is a ratio to the better peer (mpv, ffplay) in the same session: runs alternate, each figure is
the median of the runs. All players draw on one Xvfb screen of 1280 x 720 and play sound into nothing. The
first picture and the longest gap are read from the screen itself, so they are measured alike for everyone.

Needs xvfb, mpv, ffmpeg (ffplay), xdotool, nginx-light. What is not installed is left out of the table.
"""
import argparse
import json
import mmap
import os
import re
import shutil
import signal
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, "tests", "program"))
sys.dont_write_bytecode = True
from nuvid import LISTENS, Nginx  # noqa: E402

TICK = os.sysconf("SC_CLK_TCK")
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
        if os.path.exists(path) and os.path.exists(f"{path}.{length}"):
            continue
        print(f"making {name}", flush=True)
        subprocess.run(["ffmpeg", "-v", "error", "-nostdin", "-y", "-threads", "2", "-f", "lavfi", "-i", f"testsrc2=size={size}:rate={rate}:duration={length}", "-f", "lavfi",
                        "-i", f"sine=frequency=440:sample_rate=48000:duration={length}", "-vf", filters + ",format=yuv420p", "-ac", "2", *tail.split(), path], check=True)
        open(f"{path}.{length}", "w", encoding="utf-8").close()


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

    def __init__(self, screen, player, program, path, bwdif=False, extra=()):
        self.state = tempfile.mkdtemp(prefix="nuvid-bench-state-")
        self.player = player
        self.port = None
        self.began = time.monotonic()
        self.log = open(os.path.join(self.state, "log"), "wb")
        self.process = subprocess.Popen([*command(player, program, self.state, path, bwdif), *extra], env=environment(screen, player), stdin=subprocess.DEVNULL, stdout=self.log,
                                        stderr=subprocess.STDOUT)
        self.usage = None

    def done(self):
        if self.usage is None:
            pid, _, usage = os.wait4(self.process.pid, os.WNOHANG)
            if pid:
                self.usage = usage
                self.process.returncode = 0
        return self.usage is not None

    def cpu(self):
        with open(f"/proc/{self.process.pid}/stat", encoding="ascii") as file:
            fields = file.read().rsplit(") ", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / TICK

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
        import socket
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


# --- measurements --------------------------------------------------------------------------------------
def wait_picture(screen, run, limit=20):
    while screen.is_blank():
        if run.done() or time.monotonic() - run.began > limit:
            raise RuntimeError(f"{run.player} shows nothing")
        time.sleep(0.0005)
    return (time.monotonic() - run.began) * 1000


def measure_play(screen, player, program, path, seconds, bwdif=False, watch_gap=False):
    """CPU s per played minute, wake-ups/s, peak MB, first picture in ms, longest gap in ms."""
    run = Run(screen, player, program, path, bwdif)
    try:
        first = wait_picture(screen, run)
        begin, counts, cpu = time.monotonic(), None, None
        gap, last, white = 0.0, None, None
        window = (seconds * 0.2, seconds * 0.8)
        after = None
        while True:
            now = time.monotonic() - begin
            if counts is None and now >= window[0]:
                counts, cpu, at = run.wakeups(), run.cpu(), time.monotonic()
                last = None
            if after is None and now >= window[1]:
                after = run.wakeups()
                span = time.monotonic() - at
                cpu_rate = (run.cpu() - cpu) / span
                break
            if watch_gap and counts is not None:
                is_white = screen.pixel(0.2, 0.5)[0] > 128
                if is_white != white:
                    if last is not None:
                        gap = max(gap, time.monotonic() - last)
                    last, white = time.monotonic(), is_white
                time.sleep(0.001)
            else:
                if run.done():
                    raise RuntimeError(f"{player} ended early")
                time.sleep(0.02)
        wakeups = sum(value - counts.get(thread, 0) for thread, value in after.items()) / span
    finally:
        peak = None
        try:
            with open(f"/proc/{run.process.pid}/status", encoding="ascii") as file:
                peak = int(re.search(r"VmHWM:\s*(\d+)", file.read()).group(1)) / 1024
        except (OSError, AttributeError):
            pass
        run.end()
    return {"CPU s/min": cpu_rate * 60, "wake-ups/s": wakeups, "peak MB": peak, "first picture ms": first, **({"longest gap ms": gap * 1000} if watch_gap else {})}


def measure_first(screen, player, program, path):
    run = Run(screen, player, program, path)
    try:
        return {"first picture ms": wait_picture(screen, run)}
    finally:
        run.end()


def measure_skip(screen, player, program, path):
    """From the key (or command) to the picture of the new place; for this player also without its own
    tick of 100 ms, which is part of its design: from the reopening to the first new picture."""
    run = Run(screen, player, program, path)
    try:
        wait_picture(screen, run)

        def is_blue():
            red, _, blue = screen.pixel(0.9, 0.5)
            return blue > red

        time.sleep(2.5)
        before = is_blue()
        begin = time.monotonic()
        if player == "nuvid":
            run.tell("Nuvid forward 12")
        else:
            subprocess.run(["xdotool", "key", "Right"] if player == "ffplay" else ["xdotool", "key", "Right", "Right"], env=environment(screen), check=True)
        while is_blue() == before:
            if time.monotonic() - begin > 5:
                raise RuntimeError(f"{player} does not skip")
            time.sleep(0.0005)
        took = (time.monotonic() - begin) * 1000
        result = {"skip, command to picture ms": took}
        if player == "nuvid":
            result["skip, reopening to picture ms"] = json.loads(run.tell("Cascade stats"))["last_seek_ms"]
        else:
            result["skip, reopening to picture ms"] = took
        return result
    finally:
        run.end()


def measure_paused(screen, player, program, path):
    run = Run(screen, player, program, path)
    try:
        wait_picture(screen, run)
        time.sleep(1)
        if player == "nuvid":
            run.tell("Nuvid pause")
        else:
            subprocess.run(["xdotool", "key", "p"], env=environment(screen), check=True)
        time.sleep(3)    # until the texts on the screen are gone
        cpu, counts = run.cpu(), run.wakeups()
        time.sleep(5)
        later = run.wakeups()
        return {"paused CPU %": (run.cpu() - cpu) * 20, "paused wake-ups/s": sum(value - counts.get(thread, 0) for thread, value in later.items()) / 5}
    finally:
        run.end()


def measure_osd(screen, program, path, seconds):
    """The same film with and without texts and progress bar; the ratio is to the film alone."""
    result = {}
    for shown in (False, True):
        run = Run(screen, "nuvid", program, path, extra=(["-infotimeout=3600"] if shown else []))
        try:
            wait_picture(screen, run)
            time.sleep(2)
            if shown:
                run.tell("Nuvid info")
            cpu, begin = run.cpu(), time.monotonic()
            time.sleep(seconds * 0.5)
            result[shown] = (run.cpu() - cpu) / (time.monotonic() - begin) * 60
        finally:
            run.end()
    return result


# --- the table -----------------------------------------------------------------------------------------
LIMITS = {"CPU s/min": 1.0, "wake-ups/s": 1.0, "peak MB": 1.1, "first picture ms": 1.2, "longest gap ms": 1.3, "skip, reopening to picture ms": 1.5,
          "skip, command to picture ms": None, "paused CPU %": 1.0, "paused wake-ups/s": 1.0}


class Table:
    def __init__(self):
        self.rows = []

    def compare(self, title, players, runs, measure):
        """`measure(player)` answers figures by name; the players take turns."""
        found = {player: {} for player in players}
        for _ in range(runs):
            for player in players:
                try:
                    for name, value in measure(player).items():
                        if value is not None:
                            found[player].setdefault(name, []).append(value)
                except (RuntimeError, subprocess.SubprocessError, OSError) as error:
                    print(f"{title}, {player}: {error}", file=sys.stderr)
        for name in found.get("nuvid", {}):
            values = {player: statistics.median(found[player][name]) for player in players if found[player].get(name)}
            peers = [value for player, value in values.items() if player != "nuvid"]
            self.add(f"{title}: {name}", values, values["nuvid"] / min(peers) if peers and min(peers) > 0 else None, LIMITS.get(name))

    def add(self, what, values, ratio, limit):
        self.rows.append((what, values, ratio, limit))
        print(self.line(self.rows[-1]), flush=True)

    @staticmethod
    def line(row):
        what, values, ratio, limit = row
        cells = [f"{values[player]:.2f}" if player in values else "-" for player in ("nuvid", "mpv", "ffplay")]
        verdict = "" if ratio is None or limit is None else "ok" if ratio <= limit else "OVER"
        return f"| {what} | {' | '.join(cells)} | {'-' if ratio is None else f'{ratio:.2f}'} | {'-' if limit is None else f'{limit:.2f}'} | {verdict} |"

    def text(self):
        head = "| | nuvid | mpv | ffplay | ratio to the better peer | limit | |\n|---|---|---|---|---|---|---|"
        return "\n".join([head, *map(self.line, self.rows)])


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("--program", default=os.path.join(ROOT, "build", "nuvid"))
    parser.add_argument("--media", default=os.path.join(ROOT, "build-bench", "media"))
    parser.add_argument("--seconds", type=int, default=20, help="length of each film")
    parser.add_argument("--runs", type=int, default=3)
    parser.add_argument("--only", default="", help="a regular expression on the titles")
    args = parser.parse_args()
    make_media(args.media, args.seconds)
    players = ["nuvid"] + [name for name in ("mpv", "ffplay") if shutil.which(name)]
    screen = Screen()
    table = Table()

    def wanted(title):
        return re.search(args.only, title)

    def media(name):
        forget_side_files(args.media)
        return os.path.join(args.media, name)

    try:
        for title, name, bwdif, gap in (("MPEG-2 576i, program stream", "sd.mpg", False, True), ("MPEG-2 1080i, transport stream", "hd.ts", False, False),
                                        ("the same, bwdif", "hd.ts", True, False), ("MPEG-1 288", "mpeg1.mpg", False, True), ("H.264 720p", "h264.ts", False, True)):
            if wanted(title):
                table.compare(title, players, args.runs, lambda player: measure_play(screen, player, args.program, media(name), args.seconds, bwdif, gap))
        if wanted("over HTTP") and Nginx.BINARY:
            with Nginx(args.media) as server:
                table.compare("over HTTP", players, args.runs, lambda player: measure_first(screen, player, args.program, server.url("sd.mpg")))
        if shutil.which("xdotool") and wanted("skip"):
            table.compare("skip", players, args.runs, lambda player: measure_skip(screen, player, args.program, media("long.mpg")))
        if shutil.which("xdotool") and wanted("pause"):
            table.compare("pause", players, args.runs, lambda player: measure_paused(screen, player, args.program, media("long.mpg")))
        if wanted("texts shown"):
            pairs = [measure_osd(screen, args.program, media("sd.mpg"), args.seconds) for _ in range(args.runs)]
            alone, shown = (statistics.median(pair[key] for pair in pairs) for key in (False, True))
            table.add("texts shown: CPU s/min (ratio to the film alone)", {"nuvid": shown}, shown / alone, 1.15)
    finally:
        screen.close()
    print("\n" + table.text())


if __name__ == "__main__":
    main()
