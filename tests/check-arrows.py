#!/usr/bin/env python3
"""Checks which room includes what, and that no text names a folder of one machine.

check-arrows.py [FOLDER]    lists every arrow that is broken with file and line; exit code 1 when there is one.

The table is the plan of docs/architecture.md. A room is a folder; the longest name that fits a path wins.
"""
import os
import re
import sys

# room: the rooms it may include (itself always), and single headers beyond that
ROOMS = {
    "platform": set(),
    "sources": {"platform"},
    "widgets": {"platform"},
    "playback": {"sources", "platform"},
    "browser": {"sources", "widgets", "platform"},
    "app": {"browser", "playback", "sources", "widgets", "platform"},
    "host/base": {"platform"},
    "host/screen": {"platform", "host/base"},
    "host/decoder": {"platform", "host/base"},
    "host/service": {"platform", "host/base"},
    "host/network": {"platform", "host/base", "host/service"},
    "host/upnp": {"platform", "host/base"},
    "host/remote": {"platform", "host/base", "host/service"},
    "host/desktop": {"platform", "host/base", "host/service"},
    "host/store": {"platform", "host/base"},
    "host/library": {"platform", "host/base"},
}
ANYTHING = ("tests", "bench")
HEADERS = {
    "sources": {"widgets/EUtils.h"},
    "widgets/EProgressBar.cpp": {"playback/MDecoder.h", "playback/ProgressMarks.h", "sources/FileList.h"},
}

# library: how its headers begin, and the rooms that may see it
LIBRARIES = {
    "SDL": (r"SDL", {"host/screen", "host/decoder"}),
    "FFmpeg": (r"libav(?!util)|libswresample", {"host/decoder", "host/library"}),
    "libswscale and libavutil": (r"libswscale|libavutil", {"host/decoder", "host/library", "host/screen"}),
    "Cairo and Pango": (r"cairo|pango", {"host/library", "host/screen"}),
    "libjpeg": (r"jpeglib|jerror|turbojpeg", {"host/remote", "host/screen"}),
    "libcurl": (r"curl/", {"host/network"}),
    "GLib": (r"glib|gio/|gobject", {"host/desktop", "host/library", "host/network", "host/remote", "host/screen", "host/service", "host/store", "host/upnp"}),
    "libsoup and GUPnP": (r"libsoup|libgupnp|libgssdp|gupnp", {"host/network", "host/remote", "host/upnp"}),
}

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
# Folders of one developer's machine have no place in code or texts.
FORBIDDEN = re.compile(r"(?<![\w.])/(?:home|root|tmp)/(?:build|work|src)\b")
TEXTS = (".cpp", ".h", ".hpp", ".c", ".md", ".py", ".sh", ".txt", ".cmake", ".svg", ".yml", ".supp", "")
SKIP = re.compile(r"^(\.git|build.*|\.cache|__pycache__)$")


def room_of(path):
    fitting = [room for room in ROOMS if path.startswith(room + "/")]
    return max(fitting, key=len) if fitting else None


def check_include(path, room, bracket, target):
    """The arrow that this include breaks, or None."""
    for library, (begin, rooms) in LIBRARIES.items():
        if re.match(begin, target) and bracket == "<":
            return None if room in rooms else f"{room} -> {library}"
    if bracket == "<":
        return None
    if "/" not in target:
        return f'{room} -> "{target}" (includes name the folder)'
    other = room_of(target)
    if other is None:
        return f"{room} -> {target.rsplit('/', 1)[0]}" if not target.startswith("host/") else f"{room} -> host"
    if other == room or other in ROOMS[room]:
        return None
    if target in HEADERS.get(room, ()) or target in HEADERS.get(path, ()):
        return None
    return f"{room} -> {other} ({target})"


def files(root):
    for folder, folders, names in os.walk(root):
        folders[:] = sorted(name for name in folders if not SKIP.match(name))
        for name in sorted(names):
            yield os.path.relpath(os.path.join(folder, name), root)


def main(root):
    broken = []
    seen = 0
    for path in files(root):
        if os.path.splitext(path)[1] not in TEXTS or path == "tests/check-arrows.py" or "/corpus/" in path:
            continue
        try:
            with open(os.path.join(root, path), encoding="utf-8") as file:
                lines = file.read().split("\n")
        except UnicodeDecodeError:
            continue
        room = room_of(path)
        is_code = path.endswith((".cpp", ".h"))
        for number, line in enumerate(lines, 1):
            include = INCLUDE.match(line) if is_code and room else None
            if include:
                seen += 1
                arrow = check_include(path, room, *include.groups())
                if arrow:
                    broken.append(f"{path}:{number}: {arrow}")
            word = FORBIDDEN.search(line)
            if word:
                broken.append(f"{path}:{number}: the text says '{word.group(0)}'")
    if not seen:
        broken.append(f"{root}: no includes found, nothing was checked")
    print("\n".join(broken) if broken else f"{seen} includes, all arrows hold")
    return 1 if broken else 0


sys.exit(main(sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")))
