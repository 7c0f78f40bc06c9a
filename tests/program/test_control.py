"""Queue, transport commands, skips and what a remote control sees, over external control."""
import unittest

from nuvid import SLOW, Player, Shelf, wait_for, write


class Transport(unittest.TestCase):
    def test_pause_holds_the_picture_and_play_goes_on(self):
        # A film that is not yet read to its end: paused behind that it counts as stopped.
        with Shelf("parts_long_whole.mpg") as shelf, Player("-noresume", shelf.path("parts_long_whole.mpg")) as player:
            player.wait_stats(lambda s: s["frames_shown"] > 25)
            self.assertEqual(player.cmd("Nuvid status"), "Playing")
            self.assertEqual(player.cmd("nuvid PAUSE"), "OK")
            self.assertEqual(player.cmd("Nuvid status"), "Paused")
            held = player.stats()
            # Ten turns of the statistics: no picture comes while others are asked for.
            for _ in range(10):
                player.cmd("Nuvid ping")
            self.assertLessEqual(player.stats()["frames_shown"] - held["frames_shown"], 1)
            self.assertEqual(player.cmd("Nuvid play"), "OK")
            player.wait_stats(lambda s: s["frames_shown"] > held["frames_shown"] + 10)
            self.assertEqual(player.cmd("Nuvid status"), "Playing")
            self.assertEqual(player.cmd("Nuvid stop"), "OK")
            self.assertEqual(player.cmd("Nuvid status"), "Stopped")

    def test_skips_cross_the_files_of_a_recording(self):
        with Shelf("parts_long") as shelf, Player("-noresume", shelf.path("parts_long/show_1.mpg")) as player:
            def skip(command, name):
                seen = player.stats()["total_frames_shown"]
                # A request is dropped while an earlier one settles: asked again until it is taken.
                taken = player.count("To Skip:")
                wait_for(lambda: player.cmd(command) and player.count("To Skip:") > taken, 5, command)
                wait_for(lambda: player.cmd("Nuvid currentfilename").endswith(name), 5, f"{command} reaches {name}")
                stats = player.wait_stats(lambda s: s["total_frames_shown"] > seen + 5, what=f"pictures after {command}")
                return stats["last_seek_ms"]

            player.wait_stats(lambda s: s["frames_shown"] > 10)
            self.assertIn("show_1.mpg", player.cmd("Nuvid currentfilename"))
            took = [skip("Nuvid forward 6", "show_2.mpg"), skip("Nuvid back 4", "show_1.mpg"), skip("Nuvid forward 1000", "show_3.mpg"),
                    skip("Nuvid back 1000", "show_1.mpg")]
            self.assertLess(max(took), 500 * SLOW, took)
            progress = int(player.cmd("Nuvid totalfileprogress"))
            self.assertLessEqual(progress, 40)

    def test_commands_that_mean_nothing(self):
        with Player() as player:
            for line in ("Nuvid", "Nuvid dance", "NuvidX ping", "Cascade dance", "x" * 5000, "\u65e5\u672c", "Cascade key NOSUCHKEY"):
                self.assertNotEqual(player.cmd(line), "OK", line)
            self.assertEqual(player.cmd("Nuvid open"), "Failed")
            self.assertEqual(player.cmd("Nuvid queue "), "Failed")
            self.assertEqual(player.cmd("Nuvid ping"), "pong")
            self.assertEqual(player.cmd("Nuvid status"), "Stopped")
            self.assertIn("Cascade keydown NAME|0xCODE", player.cmd("Cascade help"))


class Queue(unittest.TestCase):
    def test_the_next_entry_follows_and_the_player_leaves_at_the_end(self):
        with Shelf() as shelf:
            first = shelf.put("parts/clip1.mpg", "one/a.mpg")
            second = shelf.put("parts/clip2.mpg", "two/b.mpg")
            with Player("-exitatend", first) as player:
                player.wait_stats(lambda s: s["frames_shown"] > 5)
                self.assertEqual(player.cmd(f"Nuvid queue {second}"), "OK")
                self.assertEqual(player.wait_exit(25), 0)
                output = player.output()
                self.assertLess(output.index(f"About to open {first}"), output.index(f"About to open {second}"))
                self.assertEqual(player.count("File opened OK"), 2)

    def test_open_replaces_what_plays_and_a_playlist_opens_its_entries(self):
        with Shelf() as shelf:
            first = shelf.put("parts_long/show_1.mpg", "one/a.mpg")
            second = shelf.put("parts/clip2.mpg", "two/b.mpg")
            playlist = shelf.path("evening.Nuvidlist")
            write(playlist, f"{second}\n")
            with Player("-noresume", first) as player:
                player.wait_stats(lambda s: s["frames_shown"] > 5)
                self.assertEqual(player.cmd(f"Nuvid open {second}"), "OK")
                wait_for(lambda: player.cmd("Nuvid currentfilename").endswith("b.mpg"), 10, "the other file plays")
                player.cmd("Nuvid stop")
                seen = player.count(f"About to open {second}")
                player.cmd(f"Nuvid open {playlist}")
                player.wait_output(f"About to open {second}", 10, times=seen + 1)


if __name__ == "__main__":
    unittest.main(verbosity=2)
