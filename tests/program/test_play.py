"""Every good recording is shown to its last picture, in step with its sound, with nothing dropped."""
import os
import statistics
import threading
import unittest

from nuvid import FIXTURES, SANITIZE, Player, Shelf, frames, together

# Every picture is shown or told as dropped. On an idle machine none is dropped; the machine of a test run
# is not idle, so two in a hundred may be. What a sanitizer's slowness costs is not the player's fault.
MAY_DROP = 1.0 if SANITIZE else 0.02
IN_STEP_MS = 40


def play_to_end(case, path, expected, options=(), arguments=(), audio=True, at_end=True):
    """Plays alone, watches the sound's offset on the way, answers the last statistics."""
    with Player("-noresume", *arguments, path, options=options) as player:
        offsets = []

        def finished(stats):
            if stats.get("clock_s", 0) > 1.0 and stats.get("state") == "playing" and stats["frames_shown"] < expected:
                offsets.append(abs(stats.get("av_offset_ms") or 0))
            return stats["frames_shown"] + stats["frames_dropped"] >= expected or player.count("EndOfFileReached()")

        stats = player.wait_stats(finished, 40, f"{expected} pictures of {path}")
        if at_end:
            player.wait_output("EndOfFileReached()", 20)
            stats = player.stats()
        case.assertEqual(stats["frames_shown"] + stats["frames_dropped"], expected, f"{path}: {stats}")
        case.assertLessEqual(stats["frames_dropped"], max(2, expected * MAY_DROP), f"{path}: {stats}")
        if audio and not SANITIZE and offsets:
            case.assertLessEqual(statistics.median(offsets), IN_STEP_MS, f"{path}: offsets {offsets}")
        return stats


class Recordings(unittest.TestCase):
    def play_all(self, names, **how):
        counts = frames()
        with Shelf(*names) as shelf:
            together({name: lambda name=name: play_to_end(self, shelf.path(name), how.get("factor", 1) * counts[name],
                                                          audio="video_only" not in name, options=how.get("options", ()), at_end=False) for name in names})

    def test_program_streams(self):
        self.play_all(["mpeg1_mp2.mpg", "mpeg2_mp2.mpg", "mpeg2_ac3x2.vob", "mpeg2_dts.vob", "mpeg2_lpcm.vob", "video_only.mpg", "wrap.mpg", "stills.mpg"])

    def test_transport_streams(self):
        self.play_all(["ts_2audio.ts", "ts_2programs.ts", "ts_188byte.ts", "ts_192byte.ts", "ts_204byte.ts", "ts_h264_aac.ts", "video_only.ts", "wrap.ts",
                       "resolution_change.ts"])

    def test_interlaced_pictures_are_shown_field_by_field(self):
        self.play_all(["ts_1080i.ts"], factor=2, options=("--deinterlace=auto",))
        self.play_all(["ts_1080i.ts"], options=("--deinterlace=off",))

    def test_dvd_image_folder_and_a_title_set_whose_clock_starts_again(self):
        counts = frames()
        with Shelf("dvd", "dvd.iso") as shelf:
            image = shelf.path("dvd.iso")
            largest = counts["dvd/VIDEO_TS/VTS_01_1.VOB"]
            together({"folder": lambda: play_to_end(self, shelf.path("dvd"), largest, at_end=False),
                      "largest": lambda: play_to_end(self, image, largest, at_end=False),
                      "second": lambda: play_to_end(self, image + "~VTS_02", counts["dvd/VIDEO_TS/VTS_02_1.VOB"], at_end=False)})

    def test_single_picture_is_shown_and_sound_alone_plays_to_its_end(self):
        def picture(shelf):
            with Player("-noresume", shelf.path("single_iframe.mpg")) as player:
                player.wait_stats(lambda s: s["frames_shown"] == 1)
                player.wait_output("EndOfFileReached()", 20)

        def sound(shelf, name):
            with Player("-noresume", "-exitatend", shelf.path(name)) as player:
                self.assertEqual(player.wait_exit(30), 0)
                self.assertEqual(player.count("EndOfFileReached()"), 1)

        with Shelf("single_iframe.mpg", "audio_only.mpg", "audio_only.ts") as shelf:
            together({"picture": lambda: picture(shelf), "program stream": lambda: sound(shelf, "audio_only.mpg"),
                      "transport stream": lambda: sound(shelf, "audio_only.ts")})

    def test_names_in_any_script(self):
        with Shelf("names") as shelf:
            names = sorted(os.listdir(shelf.path("names")))
            self.assertGreater(len(names), 4, FIXTURES)

            def play(name):
                with Player("-noresume", shelf.path("names") + "/" + name) as player:
                    player.wait_stats(lambda s: s["frames_shown"] > 5)
                    self.assertEqual(player.cmd("Nuvid currentfilename").rsplit("/", 1)[-1], name)

            together({name: lambda name=name: play(name) for name in names})


class SeveralFiles(unittest.TestCase):
    def test_numbered_files_are_one_recording(self):
        counts = frames()
        three = sum(counts[f"parts/clip{n}.mpg"] for n in (1, 2, 3))
        with Shelf("parts", "parts_cut") as shelf, Shelf("parts") as other:
            together({"clocks of their own": lambda: play_to_end(self, shelf.path("parts/clip1.mpg"), three),
                      "repaired clocks": lambda: play_to_end(self, other.path("parts/clip1.mpg"), three, arguments=("-FixTS",)),
                      "cut inside packets": lambda: play_to_end(self, shelf.path("parts_cut/rec_1.ts"), counts["parts_cut_whole.ts"])})

    def test_a_recording_under_way_is_followed_to_its_end(self):
        """The recorder writes a twentieth of six seconds of film every fifth of a second."""
        expected = frames()["parts_cut_whole.ts"]
        with Shelf() as shelf, open(os.path.join(FIXTURES, "parts_cut_whole.ts"), "rb") as source:
            whole = source.read()
            path = shelf.path("tonight.ts")
            step = len(whole) // 20 + 1
            with open(path, "wb", buffering=0) as target:
                target.write(whole[:4 * step])
                pace = threading.Event()
                with Player("-noresume", path, tidy=False) as player:
                    for begin in range(4 * step, len(whole), step):
                        target.write(whole[begin:begin + step])
                        pace.wait(0.2)
                    player.wait_output("EndOfFileReached()", 20)
                    stats = player.stats()
                    self.assertEqual(stats["frames_shown"] + stats["frames_dropped"], expected)


if __name__ == "__main__":
    unittest.main(verbosity=2)
