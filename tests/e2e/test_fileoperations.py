#!/usr/bin/env python3
"""Files copied, moved, put into the trash and listed for a player from the window, and taken back again."""

import unittest
from urllib.parse import unquote

from collection import Song, make_file
from harness import EndToEndTest


class FileOperations(EndToEndTest):
    def setUp(self):
        super().setUp()
        self.settings()
        self.target = self.desktop.home / "Target"
        self.target.mkdir()
        for name in ("a", "b", "c"):
            make_file(self.music / f"{name}.mp3", Song(f"Song {name}", "Ana", "Mareas"))
        self.program = self.start(self.music)
        self.program.wait_for_rows(["a.mp3", "b.mp3", "c.mp3"])

    def content(self, folder):
        return sorted(path.name for path in folder.iterdir())

    def choose_target(self, key, title):
        """Strikes the command's key and gives the folder dialog the target's path."""
        program = self.program
        program.key_until(key, lambda: program.seen("dialog", title), f"the dialog '{title}'")
        program.enter("dialog", title)
        box = program.wait(lambda: next((text for text in program.window.find_all("text") if "showing" in text.states),
                                        None), "the text box of the dialog")
        box.text = str(self.target)
        program.wait(lambda: box.text == str(self.target), "the folder's path in the dialog")
        program.key_until("Return", lambda: program.seen("dialog", title) is None, "the dialog's end")
        program.enter("frame", "ravlin!")

    def test_copied_and_moved_files_come_back(self):
        program = self.program
        program.click_row(0)
        self.choose_target("F7", "copy files")
        program.wait(lambda: self.content(self.target) == ["a.mp3"], "the copy")
        self.assertEqual((self.target / "a.mp3").read_bytes(), (self.music / "a.mp3").read_bytes())
        program.wait(lambda: program.selected_rows() == [0, 1, 2], "the list filled anew")
        program.click_row(1)
        self.choose_target("F6", "move files")
        program.wait_for_rows(["a.mp3", "c.mp3"])
        self.assertEqual(self.content(self.target), ["a.mp3", "b.mp3"])
        program.click_row(0)
        program.desktop.key("ctrl+z")
        program.wait_for_rows(["a.mp3", "b.mp3", "c.mp3"])
        program.click_row(0)
        program.desktop.key("ctrl+z")
        program.wait(lambda: self.content(self.target) == [], "the copy taken away")
        self.close()

    def test_deleted_files_go_into_the_trash_and_come_back(self):
        program = self.program
        program.click_row(1)
        question = "put “b.mp3” into the trash?"
        program.key_until("Delete", lambda: program.seen("label", question), "the question")
        self.assertTrue((self.music / "b.mp3").exists())
        program.press("Yes", lambda: program.seen("label", question) is None, "the question's end")
        program.wait_for_rows(["a.mp3", "c.mp3"])
        trash = self.folder / "data" / "Trash"
        self.assertEqual(self.content(trash / "files"), ["b.mp3"])
        lines = (trash / "info" / "b.mp3.trashinfo").read_text(encoding="ascii").splitlines()
        self.assertEqual(lines[0], "[Trash Info]")
        self.assertEqual(unquote(lines[1]), f"Path={(self.music / 'b.mp3').resolve()}")
        self.assertRegex(lines[2], r"^DeletionDate=\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d$")
        program.enter("frame", "ravlin!")
        program.click_row(0)
        program.desktop.key("ctrl+z")
        program.wait_for_rows(["a.mp3", "b.mp3", "c.mp3"])
        self.assertEqual(self.content(trash / "files"), [])
        self.close()

    def test_shift_l_writes_the_playlist_of_the_selected_rows(self):
        program = self.program
        program.click_row(2)
        program.key_until("shift+l", lambda: (self.music / "Ana - Mareas.m3u").exists(), "the playlist")
        program.wait(lambda: (self.music / "Ana - Mareas.m3u").read_bytes() == b"c.mp3\r\n", "its line")
        self.close()


if __name__ == "__main__":
    unittest.main(verbosity=2)
