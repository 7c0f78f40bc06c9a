"""A share whose server goes away holds up neither the screen nor the viewer."""
import socket
import unittest

import share
from nuvid import FIXTURES, PROMPT_MS, Player, wait_for

LONG = FIXTURES + "/parts_long_whole.mpg"


def listens(port):
    with socket.socket() as probe:
        return probe.connect_ex(("127.0.0.1", port)) == 0


@unittest.skipUnless(share.available(), "needs root and /dev/fuse")
class DeadShare(unittest.TestCase):
    def hung(self, place):
        """Plays from the share until it has stopped answering and a read of the player waits for it."""
        player = Player("-noresume", place.path("film.mpg"))
        player.wait_stats(lambda s: s["frames_shown"] > 10)
        place.stop()
        player.cmd("Nuvid FF 30")
        if not place.held.wait(20):
            raise AssertionError(f"the share is not asked:\n{player.output()[-2000:]}")
        return player

    def test_what_plays_can_be_paused_stopped_and_left(self):
        for command in ("pause", "stop", "quit"):
            with self.subTest(command), share.StoppingShare({"film.mpg": LONG}) as place, self.hung(place) as player:
                self.assertLess(player.ping_ms(), PROMPT_MS)
                player.cmd(f"Nuvid {command}", 10)
                if command == "quit":
                    wait_for(lambda: not listens(player.port), 10, "the player leaves")
                else:
                    self.assertLess(player.ping_ms(), PROMPT_MS)
                place.go_on()    # the system keeps a process for as long as one of its calls hangs

    def test_a_share_that_comes_back_plays_on(self):
        with share.StoppingShare({"film.mpg": LONG}) as place, self.hung(place) as player:
            before = player.stats()["total_frames_shown"]
            place.go_on()
            player.wait_stats(lambda s: s["total_frames_shown"] > before + 25)

    def test_an_open_that_hangs_is_given_up(self):
        with share.StoppingShare({"film.mpg": LONG}) as place:
            place.stop()
            with Player("-noresume", place.path("film.mpg")) as player:
                self.assertTrue(place.held.wait(20))
                self.assertIn("Cascade", player.cmd("Cascade help", 2))
                player.key("Exit")    # ends the wait, then leaves
                wait_for(lambda: not listens(player.port), 10, "the player leaves")
                place.go_on()
                self.assertEqual(player.wait_exit(), 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
