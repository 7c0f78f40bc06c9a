"""The player on a session bus, driven as a desktop does it."""
import os
import shutil
import signal
import subprocess
import unittest
import unittest.mock

from nuvid import SLOW, Player, Shelf, wait_for


class SessionBus:
    """A bus of its own, with which the players and tools of this test speak."""

    def __enter__(self):
        self.process = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address=1"], stdout=subprocess.PIPE,
                                        stderr=subprocess.DEVNULL, text=True)
        self.environment = unittest.mock.patch.dict(os.environ, DBUS_SESSION_BUS_ADDRESS=self.process.stdout.readline().strip())
        self.environment.start()
        return self

    def __exit__(self, *_):
        self.environment.stop()
        self.end()
        self.process.stdout.close()

    def end(self):
        self.process.kill()
        self.process.wait()


def ctl(*words):
    answer = subprocess.run(["playerctl", "-p", "nuvid", *words], capture_output=True, text=True, timeout=20 * SLOW, check=False)
    return answer.stdout.strip()


@unittest.skipUnless(shutil.which("playerctl") and shutil.which("dbus-daemon"), "needs playerctl and a bus")
class Desktop(unittest.TestCase):
    def test_a_desktop_sees_and_drives_the_player(self):
        with Shelf("parts_long", "mpeg2_mp2.mpg") as shelf, SessionBus(), Player("-noresume", shelf.path("parts_long/show_1.mpg")) as player:
            wait_for(lambda: ctl("status") == "Playing", 10, "the player on the bus")
            self.assertEqual(ctl("metadata", "xesam:url"), "file://" + shelf.path("parts_long/show_1.mpg"))
            length = wait_for(lambda: ctl("metadata", "mpris:length"), 15, "a length, once the rate has been measured")
            self.assertGreater(int(length), 1000000)

            ctl("pause")
            wait_for(lambda: ctl("status") == "Paused", 5, "paused")
            ctl("pause")
            ctl("play")
            wait_for(lambda: ctl("status") == "Playing", 5, "playing")
            ctl("play-pause")
            wait_for(lambda: ctl("status") == "Paused", 5, "paused again")
            ctl("play-pause")

            monitor = subprocess.Popen(["dbus-monitor", "interface='org.mpris.MediaPlayer2.Player',member='Seeked'"], stdout=subprocess.PIPE, text=True)
            self.addCleanup(monitor.stdout.close)
            ctl("position", "6+")
            wait_for(lambda: player.count("To Skip:") >= 1, 5, "a skip")
            for line in monitor.stdout:
                if "member=Seeked" in line:
                    break
            monitor.kill()
            monitor.wait()

            ctl("open", "ftp://elsewhere/a.mpg")
            ctl("open", "file://" + shelf.path("mpeg2_mp2.mpg"))
            wait_for(lambda: ctl("metadata", "xesam:title") == "mpeg2_mp2.mpg", 10, "the other film")
            ctl("stop")
            wait_for(lambda: ctl("status") == "Stopped", 5, "stopped")

    def test_two_players_have_a_name_each_and_survive_the_bus(self):
        with SessionBus() as bus, Player() as first, Player() as second:
            def names():
                answer = subprocess.run(["playerctl", "-l"], capture_output=True, text=True, timeout=20 * SLOW, check=False)
                return sorted(answer.stdout.split())

            wait_for(lambda: len(names()) == 2, 10, "two names")
            self.assertEqual(names()[0], "nuvid")
            bus.end()
            self.assertEqual(first.cmd("Nuvid ping"), "pong")
            self.assertEqual(second.cmd("Nuvid ping"), "pong")

    def test_quit_and_signals_end_with_everything_saved(self):
        with Shelf("parts_long_whole.mpg") as shelf, SessionBus():
            def play(end):
                with Player("-noresume", shelf.path("parts_long_whole.mpg")) as player:
                    player.wait_stats(lambda s: s["frames_shown"] > 50)
                    end(player)
                    self.assertEqual(player.wait_exit(), 0)
                    self.assertTrue(os.path.exists(os.path.join(player.state, "settings.ini")))
                sides = [name for name in os.listdir(shelf.folder) if not name.endswith(".mpg")]
                self.assertTrue(sides, "no side file")
                for name in sides:
                    os.remove(shelf.path(name))

            def quit_by_bus(_):
                wait_for(lambda: ctl("status"), 10, "the player on the bus")
                subprocess.run(["dbus-send", "--session", "--print-reply", "--dest=org.mpris.MediaPlayer2.nuvid", "/org/mpris/MediaPlayer2",
                                "org.mpris.MediaPlayer2.Quit"], check=True, stdout=subprocess.DEVNULL, timeout=20 * SLOW)

            play(quit_by_bus)
            play(lambda player: player.process.send_signal(signal.SIGTERM))
            play(lambda player: player.process.send_signal(signal.SIGINT))


if __name__ == "__main__":
    unittest.main()
