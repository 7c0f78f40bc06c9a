"""What a viewer does with the browser and the menus, by keys of the remote control alone."""
import os
import re
import tempfile
import unittest

from nuvid import Player, Shelf, read, wait_for, write

ABOUT = """title=The Long Way Home
year=1998
genre=Drama
summary=Two brothers drive across a country that neither of them knows.
"""


class Viewer(Player):
    """Sits on the couch: presses keys and looks at the screen."""

    def __init__(self, shelf, *arguments, options=()):
        super().__init__(f"-browsedir={shelf.folder}", f"-browseroot={shelf.folder}", *arguments, options=options)

    def sees(self, title):
        return title in self.stats()["windows"]

    def wait_window(self, title, there=True):
        self.wait_stats(lambda s: (title in s["windows"]) == there, what=f"{title}: {there}")

    def keys(self, *names):
        for name in names:
            self.key(name)

    def sees_main_menu(self):
        return any(title.startswith("Nuvid v") for title in self.stats()["windows"])

    def wait_main_menu(self):
        wait_for(self.sees_main_menu, 10, "the main menu")

    def menu(self, *path):
        """Opens the main menu, which waits for an action under way, and goes into it; each step is the row to choose."""
        wait_for(lambda: self.sees_main_menu() or self.key("menu") and self.sees_main_menu(), 10, "the main menu")
        for row in path:
            self.keys(*["down"] * row, "select")

    def wait_listed(self):
        """The wait window stands for a moment before each folder, unless that moment has passed already."""
        try:
            wait_for(lambda: self.sees("Browser wait"), 1, "a folder is read")
        except AssertionError:
            pass
        self.wait_window("Browser list")
        self.wait_window("Browser wait", False)

    def enter(self, row):
        """Into the folder of that row, counted from the top of the list."""
        self.keys(*["down"] * row, "select")
        self.wait_listed()

    def choose(self, row):  # pylint: disable=arguments-differ
        self.keys(*["down"] * row, "select")
        self.wait_window("File browser", False)

    def screen(self):
        path = self.cmd("Cascade screenshot")
        wait_for(lambda: os.path.exists(path) and os.path.getsize(path) > 0, 10, "a screenshot")
        with open(path, "rb") as file:
            return file.read()

    def plays(self, name):
        wait_for(lambda: self.cmd("Nuvid currentfilename") == name, 10, f"{name} plays")
        self.wait_stats(lambda s: s["frames_shown"] > 5, what="pictures")


def library():
    """A recording of three files three folders deep with another beside it, and a film that is described."""
    shelf = Shelf()
    for i in (1, 2, 3):
        shelf.put(f"parts_long/show_{i}.mpg", f"Recordings/2011/Autumn/Evening_{i}.mpg")
    shelf.put("ts_2audio.ts", "Recordings/2011/Autumn/Harbour.ts")
    shelf.put("mpeg2_mp2.mpg", "Films/Home.mpg")
    write(shelf.path("Films/Home.nfo"), ABOUT)
    return shelf


class Evening(unittest.TestCase):
    def test_from_the_first_menu_to_the_deletion(self):
        with library() as shelf, tempfile.TemporaryDirectory() as state:
            autumn = shelf.path("Recordings/2011/Autumn")
            with Viewer(shelf, options=(f"--state={state}",)) as viewer:
                self.open_queue_and_save(viewer, autumn)
            with Viewer(shelf, options=(f"--state={state}",)) as viewer:
                self.reopen_and_change(viewer, autumn)
            self.assertIn("Theme=Cascade", read(os.path.join(state, "settings.ini")))
            with Viewer(shelf, options=(f"--state={state}",)) as viewer:
                self.delete(viewer, autumn)

    def open_queue_and_save(self, viewer, autumn):
        viewer.wait_main_menu()
        viewer.key("select")
        viewer.wait_listed()
        viewer.enter(1)  # Films, Recordings
        viewer.enter(1)
        viewer.enter(1)
        viewer.choose(1)
        viewer.plays("Evening_1.mpg")
        self.assertEqual(viewer.count("inReason 0"), 1)

        viewer.menu(1)  # "Queue File": on the recording that plays
        viewer.wait_listed()
        viewer.choose(1)
        self.assertEqual(viewer.cmd("Nuvid currentfilename"), "Evening_1.mpg")
        viewer.menu(4, 1)
        playlist = wait_for(lambda: [name for name in os.listdir(autumn) if name.endswith(".Nuvidlist")], 5, "a playlist")
        with open(os.path.join(autumn, playlist[0]), "rb") as file:
            self.assertEqual(file.read().decode(), f"{autumn}/Evening_1.mpg\r\n{autumn}/Harbour.ts\r\n")

    def reopen_and_change(self, viewer, autumn):
        viewer.wait_main_menu()
        viewer.keys("down", "down", "select", "select")  # "Recent Files", the latest
        viewer.wait_window("Resume Playback")
        viewer.keys("down", "select")  # from the start
        viewer.plays("Evening_1.mpg")
        viewer.menu(0)  # the browser stands on it
        viewer.wait_listed()
        viewer.choose(1)
        viewer.plays("Harbour.ts")
        self.assertRegex(viewer.output(), re.escape(f"About to open {autumn}/Harbour.ts"))
        before = viewer.stats()["frames_shown"]
        super(Viewer, viewer).choose(sound=1)
        viewer.wait_stats(lambda s: s["frames_shown"] > before, what="pictures with the other sound")
        self.assertRegex(viewer.output(), "Audio: 2/2")
        ice = viewer.screen()
        viewer.menu(3)
        viewer.wait_window("Nuvid Options")
        viewer.keys(*["down"] * 5, "right", "down", "select")
        viewer.wait_main_menu()
        self.assertNotEqual(viewer.screen(), ice)
        viewer.key("exit")

    def delete(self, viewer, autumn):
        viewer.wait_main_menu()
        viewer.keys("down", "down", "select", "down", "select")  # the recording again
        viewer.wait_window("Resume Playback")
        viewer.keys("down", "select")
        viewer.plays("Evening_1.mpg")
        viewer.menu(0)
        viewer.wait_listed()
        others = {name for name in os.listdir(autumn) if not name.startswith("Evening")}
        self.assertIn("Harbour.ts", others)
        viewer.keys("stop")  # in the browser: delete
        viewer.wait_window("Delete")
        self.assertEqual(viewer.cmd("Nuvid status"), "Playing")
        # Select is heard once it is known what goes.
        wait_for(lambda: not viewer.sees("Delete") or viewer.key("select") == "OK" and not viewer.sees("Delete"), 10, "the deletion")
        viewer.wait_listed()
        self.assertEqual(viewer.cmd("Nuvid status"), "Stopped")
        self.assertEqual(set(os.listdir(autumn)), others)
        self.assertEqual(viewer.count("Deleted "), 4)
        self.assertEqual(viewer.count("Failed to delete"), 0)


class Looking(unittest.TestCase):
    def test_the_information_of_a_film_is_read_and_left_again(self):
        with library() as shelf, Viewer(shelf, "-nomenu") as viewer:
            viewer.wait_listed()
            viewer.enter(0)
            viewer.key("down")
            viewer.key("info")
            viewer.wait_window("Information")
            self.assertEqual(viewer.count(f"SetFile( {shelf.folder}/Films/Home.mpg );"), 1)
            viewer.key("exit")
            viewer.wait_window("Information", False)
            self.assertTrue(viewer.sees("File browser"))
            viewer.key("info")
            viewer.wait_window("Information")
            viewer.key("select")  # "Play"
            viewer.plays("Home.mpg")

    def test_the_next_filter_keeps_the_place(self):
        with library() as shelf, Viewer(shelf, "-nomenu") as viewer:
            viewer.wait_listed()
            viewer.enter(1)
            viewer.enter(1)
            viewer.enter(1)
            viewer.keys("down")  # Evening_1.mpg, folded
            for times in (1, 2, 3):  # Sequence; Size; All
                viewer.key("menu")
                viewer.wait_output("inReason 2", times=times)
                viewer.wait_listed()
            viewer.choose(1)  # unfolded, so the next row is the second file
            viewer.plays("Evening_2.mpg")

    def test_a_long_folder_is_walked_by_pages(self):
        with Shelf() as shelf:
            for i in range(400):
                shelf.put("tiny.mpg", f"film {i:03} x.mpg")
            with Viewer(shelf, "-nomenu") as viewer:
                viewer.wait_listed()
                viewer.keys(*["previous"] * 100)  # pages, past the end
                viewer.choose(0)
                self.assertIn("film 399 x.mpg", viewer.wait_output("About to open"))


if __name__ == "__main__":
    unittest.main(verbosity=2)
