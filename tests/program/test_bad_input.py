"""What is no recording, or a damaged one: the player says so, goes on with the next entry and keeps answering."""
import unittest

from nuvid import SLOW, Player, Shelf, together, wait_for

REFUSED = ["bad/empty.mpg", "bad/text.mpg", "bad/jpeg.mpg", "bad/random.mpg", "bad/missing.mpg", "bad/folder.mpg"]
DAMAGED = ["bad/truncated.mpg", "bad/bitflips.mpg", "bad/bitflips.ts", "bad/scrambled.ts", "bad/no_pat.ts", "bad/pmt_promises.ts", "tiny.mpg"]


class BadInput(unittest.TestCase):
    def next_entry_plays(self, bad, seconds):
        with Shelf() as shelf:
            first = shelf.path(bad) if "missing" in bad else shelf.put(bad)
            good = shelf.put("parts/clip1.mpg", "good/film.mpg")
            with Player("-noresume", first, good) as player:
                slowest = 0.0

                def good_one_plays():
                    nonlocal slowest
                    slowest = max(slowest, player.ping_ms())
                    return player.cmd("Nuvid currentfilename").endswith("film.mpg")

                wait_for(good_one_plays, seconds, lambda: f"the entry after {bad}:\n{player.output()[-2000:]}")
                player.wait_stats(lambda s: s["frames_shown"] > 5)
                self.assertLess(slowest, 400 * SLOW, bad)
                self.assertIn(f"About to open {first}", player.output())
                return player.output()

    def test_what_is_no_recording_is_refused_and_said(self):
        def refuse(bad):
            output = self.next_entry_plays(bad, 10)
            self.assertIn("File open failed!", output, bad)

        together({bad: lambda bad=bad: refuse(bad) for bad in REFUSED})

    def test_damaged_recordings_end_and_the_next_follows(self):
        together({bad: lambda bad=bad: self.next_entry_plays(bad, 25) for bad in DAMAGED}, at_once=6)

    def test_damage_costs_few_pictures(self):
        def play(bad, at_least):
            with Shelf() as shelf, Player("-noresume", shelf.put(bad)) as player:
                player.wait_output("EndOfFileReached()", 25)
                shown = player.stats()["frames_shown"]
                self.assertGreaterEqual(shown, at_least if SLOW == 1 else 1, bad)

        together({"program stream": lambda: play("bad/bitflips.mpg", 100), "transport stream": lambda: play("bad/bitflips.ts", 100),
                  "no sound behind the promise": lambda: play("bad/pmt_promises.ts", 120), "cut short": lambda: play("bad/truncated.mpg", 55)})


if __name__ == "__main__":
    unittest.main(verbosity=2)
