#!/usr/bin/env python3
"""Compares the player with two others on this machine: bench/run.py [options]

Runs alternate, each figure is the median of the runs. All players draw on one Xvfb screen of 1280 x 720 and play
sound into nothing. The first picture, the arrival of a skip and the longest gap are read from the screen itself,
so they are measured alike for everyone. Each line ends with what the figure may be and whether it is; --check
adds the small parts (bench_parts) and ends with 1 when anything is over.

Needs xvfb, mpv, ffmpeg (ffplay), xdotool, nginx-light. What is not installed is left out.
"""
import argparse
import json
import os
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

from rig import ROOT, Run, Screen, cut_in_two, environment, forget_side_files, make_media
from cursor import measure_cursor
from nuvid import Nginx

START_MS = 400    # four ticks of the application's clock, before which nothing is opened
LONG_FILM = 60    # seconds
RATE = 25         # pictures a second of every film here


# --- measurements: each answers figures by name ----------------------------------------------------------
def wait_picture(screen, run, limit=20):
    while screen.is_blank():
        if run.done() or time.monotonic() - run.began > limit:
            raise RuntimeError(f"{run.player} shows nothing")
        time.sleep(0.0005)
    return (time.monotonic() - run.began) * 1000


def opening(run, first):
    """What an opening takes: the player opens after its first ticks, the others as they start."""
    return run.stats()["first_frame_ms"] - START_MS if run.player == "nuvid" else first


def longest_gap(screen, seconds):
    end, gap, last, white = time.monotonic() + seconds, 0.0, None, None
    while time.monotonic() < end:
        is_white = screen.pixel(0.2, 0.5)[0] > 128
        if is_white != white:
            if last is not None:
                gap = max(gap, time.monotonic() - last)
            last, white = time.monotonic(), is_white
        time.sleep(0.001)
    return gap * 1000


def measure_play(screen, player, program, path, seconds, bwdif=False, watch_gap=False):
    run = Run(screen, player, program, path, bwdif)
    try:
        first = wait_picture(screen, run)
        result = {"opening to picture ms": opening(run, first), "start to picture ms": first}
        time.sleep(seconds * 0.2)
        counts, cpu, begin = run.wakeups(), run.cpu(), time.monotonic()
        if watch_gap:
            result["longest gap ms"] = longest_gap(screen, seconds * 0.6)
        else:
            time.sleep(seconds * 0.6)
        span = time.monotonic() - begin
        if run.done():
            raise RuntimeError(f"{player} ended early")
        result["CPU s/min"] = (run.cpu() - cpu) / span * 60
        result["wake-ups/s"] = sum(value - counts.get(thread, 0) for thread, value in run.wakeups().items()) / span
        result["peak MB"] = run.peak()
        return result
    finally:
        run.end()


def measure_first(screen, player, program, path):
    run = Run(screen, player, program, path)
    try:
        first = wait_picture(screen, run)
        return {"opening to picture ms": opening(run, first), "start to picture ms": first}
    finally:
        run.end()


def measure_skip(screen, player, program, path):
    """From the key (or command) to the picture of the new place; for this player also without its own ticks: from
    the engine's reopening to the first new picture."""
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
        return {"command to picture ms": took, "reopening to picture ms": run.stats()["last_seek_ms"] if player == "nuvid" else took}
    finally:
        run.end()


def measure_idle(screen, player, program, path, stopped):
    run = Run(screen, player, program, path)
    try:
        wait_picture(screen, run)
        time.sleep(1)
        if player == "nuvid":
            run.tell("Nuvid stop" if stopped else "Nuvid pause")
        else:
            subprocess.run(["xdotool", "key", "p"], env=environment(screen), check=True)
        time.sleep(3)    # until the texts on the screen are gone
        cpu, counts, begin = run.cpu(), run.wakeups(), time.monotonic()
        time.sleep(5)
        span = time.monotonic() - begin
        return {"CPU %": (run.cpu() - cpu) / span * 100, "wake-ups/s": sum(value - counts.get(thread, 0) for thread, value in run.wakeups().items()) / span}
    finally:
        run.end()


def measure_texts(screen, program, path, seconds):
    """The same film without and with texts and progress bar."""
    cost = []
    for shown in (False, True):
        run = Run(screen, "nuvid", program, path, extra=(["-infotimeout=3600"] if shown else []))
        try:
            wait_picture(screen, run)
            time.sleep(2)
            if shown:
                run.tell("Nuvid info")
            cpu, begin = run.cpu(), time.monotonic()
            time.sleep(seconds * 0.6)
            cost.append((run.cpu() - cpu) / (time.monotonic() - begin) * 60)
        finally:
            run.end()
    return {"CPU s/min": cost[1], "to the film alone": cost[1] / cost[0]}


def measure_smooth(screen, program, path, display=False, busy=0):
    """The long film to its end: how many of its pictures were shown, and the longest time between two, by the player's own count."""
    others = [subprocess.Popen([sys.executable, "-c", "while True: pass"]) for _ in range(busy)]
    run = Run(screen, "nuvid", program, path, extra=(["-infotimeout=3600"] if display else []), stay=True)
    try:
        wait_picture(screen, run)
        if display:
            run.tell("Nuvid info")
        deadline = time.monotonic() + LONG_FILM * 1.3
        stats = run.stats()
        while stats["clock_s"] < LONG_FILM - 0.2 and time.monotonic() < deadline:
            time.sleep(0.1)
            stats = run.stats()
        time.sleep(1)    # the last pictures
        stats = run.stats()
        return {"shown %": stats["total_frames_shown"] / (LONG_FILM * RATE) * 100, "longest gap ms": stats["longest_gap_ms"]}
    finally:
        run.end()
        for other in others:
            other.kill()
            other.wait()


def measure_traffic(screen, program, folder):
    """Plays over HTTP with a skip every two seconds: the bytes that the server sent to those that the decoder was fed."""
    fed, bytes_now = 0, 0
    with Nginx(folder) as server:
        run = Run(screen, "nuvid", program, server.url("long.mpg"))
        try:
            wait_picture(screen, run)
            for _ in range(5):
                time.sleep(2)
                fed += run.stats()["bytes_fed"]
                run.tell("Nuvid forward 5")
                time.sleep(0.5)
            time.sleep(1.5)
            bytes_now = run.stats()["bytes_fed"]
        finally:
            run.end()
        time.sleep(0.3)
        return {"sent to fed": server.bytes_sent() / (fed + bytes_now)}


# --- what the figures may be -----------------------------------------------------------------------------
# title, figure, measure: the ratio to the better peer, to one of them, or the figure itself; at most, or at least
LIMITS = {
    ("MPEG-2 576, program stream", "CPU s/min"): ("best", "<=", 0.70),
    ("MPEG-2 576, program stream", "wake-ups/s"): ("self", "<=", 120),
    ("MPEG-2 576, program stream", "peak MB"): ("mpv", "<=", 0.75),
    ("MPEG-2 576, program stream", "longest gap ms"): ("self", "<=", 60),
    ("MPEG-2 576, program stream", "opening to picture ms"): ("mpv", "<=", 0.30),
    ("MPEG-2 1080i, transport stream", "CPU s/min"): ("best", "<=", 0.80),
    ("MPEG-2 1080i, transport stream", "wake-ups/s"): ("self", "<=", 120),
    ("MPEG-2 1080i, transport stream", "peak MB"): ("mpv", "<=", 0.70),
    ("MPEG-2 1080i, transport stream", "opening to picture ms"): ("mpv", "<=", 0.30),
    ("MPEG-2 1080i, bwdif", "CPU s/min"): ("best", "<=", 0.80),
    ("MPEG-2 1080i, bwdif", "wake-ups/s"): ("self", "<=", 120),
    ("MPEG-1 288", "CPU s/min"): ("best", "<=", 0.75),
    ("MPEG-1 288", "wake-ups/s"): ("self", "<=", 120),
    ("MPEG-1 288", "longest gap ms"): ("self", "<=", 60),
    ("H.264 720p", "CPU s/min"): ("best", "<=", 0.95),
    ("H.264 720p", "wake-ups/s"): ("self", "<=", 120),
    ("H.264 720p", "longest gap ms"): ("self", "<=", 60),
    ("over HTTP", "to the plain file"): ("self", "<=", 1.30),
    ("skip", "reopening to picture ms"): ("ffplay", "<=", 0.90),
    ("skips over HTTP", "sent to fed"): ("self", "<=", 2.00),    # up to 4 MB are read ahead of each place
    ("texts and bar shown", "to the film alone"): ("self", "<=", 1.10),
    ("60 s", "shown %"): ("self", ">=", 100),
    ("60 s", "longest gap ms"): ("self", "<=", 60),
    ("60 s, two parts", "shown %"): ("self", ">=", 100),
    ("60 s, two parts", "longest gap ms"): ("self", "<=", 60),
    ("60 s, texts and bar", "shown %"): ("self", ">=", 100),
    ("60 s, texts and bar", "longest gap ms"): ("self", "<=", 60),
    ("60 s, one core busy", "shown %"): ("self", ">=", 98),
    ("cursor, 1280x720", "step ms"): ("self", "<=", 5),
    ("cursor, 1280x720", "scrolling step ms"): ("self", "<=", 5),
    ("cursor, 3840x2160", "step ms"): ("self", "<=", 5),
    ("cursor, 3840x2160", "scrolling step ms"): ("self", "<=", 5),
    ("paused", "CPU %"): ("self", "<=", 1),
    ("stopped", "CPU %"): ("self", "<=", 1),
}

# name, part, beside what, of which field: the part must be so many times as good
PARTS = [
    ("feed / plain read", "Feed/repair:0/parts:1", "PlainRead", "bytes_per_second", ">=", 0.90),
    ("feed of four parts / of one file", "Feed/repair:0/parts:4", "Feed/repair:0/parts:1", "bytes_per_second", ">=", 0.95),
    ("timestamp repair / bare walk", "Repair", "BareWalk", "bytes_per_second", ">=", 0.50),
    ("repair of garbage, GB/s", "RepairOfGarbage", None, "bytes_per_second", ">=", 0.10),
    ("snapshot of 10,000 files / scandir and stat", "Snapshot", "ScanAndStat", "cpu_time", "<=", 1.30),
]


class Table:
    HEAD = "| | nuvid | mpv | ffplay | measure | limit | |\n|---|---|---|---|---|---|---|"

    def __init__(self):
        self.rows = []
        self.over = []

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
        for name in found["nuvid"]:
            self.add(title, name, {player: statistics.median(found[player][name]) for player in players if found[player].get(name)})
        return found

    def add(self, title, name, values):
        kind, sense, limit = LIMITS.get((title, name), ("best", None, None))
        peers = [value for player, value in values.items() if player != "nuvid"]
        against = 1 if kind == "self" else min(peers, default=0) if kind == "best" else values.get(kind, 0)
        measure = values["nuvid"] / against if against else None
        self.line(f"{title}: {name}", values, kind, measure, sense, limit)

    def line(self, what, values, kind, measure, sense, limit):
        judged = measure is not None and limit is not None
        good = judged and (measure <= limit if sense == "<=" else measure >= limit)
        if judged and not good:
            self.over.append(what)
        cells = [f"{values[player]:.2f}" if player in values else "-" for player in ("nuvid", "mpv", "ffplay")]
        shown = "-" if measure is None else f"{measure:.2f}" + ("" if kind == "self" else f" x {kind}")
        row = f"| {what} | {' | '.join(cells)} | {shown} | {'' if limit is None else f'{sense} {limit:g}'} | {'ok' if good else 'OVER' if judged else ''} |"
        self.rows.append(row)
        print(row, flush=True)


def measure_parts(program, table):
    with tempfile.TemporaryDirectory() as folder:
        out = os.path.join(folder, "parts.json")
        subprocess.run([program, "--benchmark_filter=^(PlainRead|Feed|BareWalk|Repair|RepairOfGarbage|ScanAndStat|Snapshot)(/|$)", "--benchmark_repetitions=5", "--benchmark_min_time=0.1",
                        "--benchmark_report_aggregates_only=true", "--benchmark_enable_random_interleaving=true", f"--benchmark_out={out}", "--benchmark_out_format=json"],
                       check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        with open(out, encoding="utf-8") as file:
            rows = {row["run_name"]: row for row in json.load(file)["benchmarks"] if row["aggregate_name"] == "median"}
    for name, part, beside, field, sense, limit in PARTS:
        table.line(name, {}, "self", rows[part][field] / (rows[beside][field] if beside else 1e9), sense, limit)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("--program", default=os.path.join(ROOT, "build", "nuvid"))
    parser.add_argument("--parts", help="the program bench_parts")
    parser.add_argument("--media", default=os.path.join(ROOT, "build-bench", "media"))
    parser.add_argument("--seconds", type=int, default=20, help="length of the films that are compared")
    parser.add_argument("--runs", type=int, default=3)
    parser.add_argument("--only", default="", help="a regular expression on the titles")
    parser.add_argument("--check", action="store_true", help="the parts too; 1 when a figure is over its limit")
    args = parser.parse_args()
    make_media(args.media, args.seconds)
    first_part = cut_in_two(args.media, "long.mpg")
    players = ["nuvid"] + [name for name in ("mpv", "ffplay") if shutil.which(name)]
    screen = Screen()
    table = Table()
    print(Table.HEAD, flush=True)

    def wanted(title):
        return re.search(args.only, title)

    def media(name):
        forget_side_files(args.media)
        forget_side_files(os.path.dirname(first_part))
        return os.path.join(args.media, name)

    def alone(title, measure):
        if wanted(title):
            table.compare(title, ["nuvid"], args.runs, lambda _: measure())

    try:
        for title, name, bwdif, gap in (("MPEG-2 576, program stream", "sd.mpg", False, True), ("MPEG-2 1080i, transport stream", "hd.ts", False, False),
                                        ("MPEG-2 1080i, bwdif", "hd.ts", True, False), ("MPEG-1 288", "mpeg1.mpg", False, True), ("H.264 720p", "h264.ts", False, True)):
            if wanted(title):
                table.compare(title, players, args.runs, lambda player: measure_play(screen, player, args.program, media(name), args.seconds, bwdif, gap))
        if wanted("over HTTP") and Nginx.BINARY:
            with Nginx(args.media) as server:
                table.compare("over HTTP", players, args.runs, lambda player: measure_first(screen, player, args.program, server.url("sd.mpg")))
                turns = [[measure_first(screen, "nuvid", args.program, place)["opening to picture ms"] for place in (media("sd.mpg"), server.url("sd.mpg"))] for _ in range(3 * args.runs)]
            plain, http = (statistics.median(column) for column in zip(*turns))
            table.add("over HTTP", "to the plain file", {"nuvid": http / plain})
        if wanted("skip") and shutil.which("xdotool"):
            table.compare("skip", players, args.runs, lambda player: measure_skip(screen, player, args.program, media("long.mpg")))
        if Nginx.BINARY:
            alone("skips over HTTP", lambda: measure_traffic(screen, args.program, os.path.dirname(media("long.mpg"))))
        alone("texts and bar shown", lambda: measure_texts(screen, args.program, media("sd.mpg"), args.seconds))
        alone("60 s", lambda: measure_smooth(screen, args.program, media("long.mpg")))
        alone("60 s, two parts", lambda: media("") and measure_smooth(screen, args.program, first_part))
        alone("60 s, texts and bar", lambda: measure_smooth(screen, args.program, media("long.mpg"), display=True))
        alone("60 s, one core busy", lambda: measure_smooth(screen, args.program, media("long.mpg"), busy=1))
        if wanted("paused") and shutil.which("xdotool"):
            table.compare("paused", players, args.runs, lambda player: measure_idle(screen, player, args.program, media("long.mpg"), False))
        alone("stopped", lambda: measure_idle(screen, "nuvid", args.program, media("long.mpg"), True))
        for output in ("1280x720", "3840x2160"):
            alone(f"cursor, {output}", lambda at=output: measure_cursor(args.program, at))
        if args.check and args.parts and wanted("parts"):
            measure_parts(args.parts, table)
    finally:
        screen.close()
    print("\nOver the limit: " + "; ".join(table.over) if table.over else "\nEvery figure is within its limit.")
    return 1 if args.check and table.over else 0


if __name__ == "__main__":
    sys.exit(main())
