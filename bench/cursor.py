"""The cursor of the browser: processor time for a step, from the key to the composed screen, without a display."""
import os
import tempfile
import time

import rig  # noqa: F401, for its search path
import nuvid

FILES = 1000
STEPS = 120
PAUSE = 0.05    # each step is painted on its own


def cpu(player):
    # As in rig.Run.cpu: the kernel's number of a process clock is made of the process's (clock_getcpuclockid(3)).
    return time.clock_gettime(~player.process.pid << 3 | 2)


def seen(player, title):
    return title in player.stats()["windows"]


def step_ms(player, keys):
    begin = cpu(player)
    for key in keys:
        player.key(key)
        time.sleep(PAUSE)
    return (cpu(player) - begin) / len(keys) * 1000


def measure_cursor(program, output):
    nuvid.PROGRAM = program
    with tempfile.TemporaryDirectory() as folder:
        for i in range(FILES):
            with open(os.path.join(folder, f"Recording {i:05} of the evening.mpg"), "wb") as file:
                file.write(b"x" * (1000 * (i % 50) + 1))
        with nuvid.Player(f"-browsedir={folder}", f"-browseroot={folder}", "-nomenu", options=(f"--window={output}",)) as player:
            nuvid.wait_for(lambda: seen(player, "Browser list") and not seen(player, "Browser wait"), 20, "the list")
            time.sleep(2)    # icons, the detail pane
            return {"step ms": step_ms(player, ["down", "down", "up", "up"] * (STEPS // 4)), "scrolling step ms": step_ms(player, ["down"] * STEPS)}
