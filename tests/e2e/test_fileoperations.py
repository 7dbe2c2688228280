#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Files and folders copied, moved, moved to the trash, listed for a player and played from the window, and undone."""

import os
import unittest
from urllib.parse import unquote, unquote_to_bytes

from collection import Song, make_file
from harness import EndToEndTest
from program import centre

ARROW = 12  # pixels at the right of a button that open its menu
PLAYER_ENTRY = """[Desktop Entry]
Type=Application
Name=Player
Exec={player} %f
MimeType={types}
"""
# Notes what it was given and ends. Renaming makes the note appear whole, whatever else runs.
PLAYER = """#!/bin/sh
cp -- "$1" '{note}'.$$ && mv '{note}'.$$ '{note}'
"""
OPENER = """#!/bin/sh
printf '%s\\n' "$#" "$@" >'{note}'.$$ && mv '{note}'.$$ '{note}'
"""
PLAYLIST_TYPES = ("audio/x-mpegurl", "application/vnd.apple.mpegurl")  # both have the glob *.m3u


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
        """Presses the key of a command and enters the target's path into the folder dialog."""
        program = self.program
        program.key_until(key, lambda: program.seen("dialog", title), f"the dialog '{title}'")
        program.enter("dialog", title)
        box = program.wait_for("text", inside=program.window)
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

    def choose_entry(self, button, entry, condition, what):
        """Chooses an entry of the menu behind a button's arrow until the condition holds."""
        program = self.program

        def choose():
            if condition():
                return
            if not program.seen("menu item", entry):
                left, top, width, height = program.wait_for("button menu", button).extents
                program.again_until(lambda: program.desktop.click(left + width - ARROW // 2, top + height // 2),
                                    lambda: program.seen("menu item", entry), f"the menu with '{entry}'")
            program.click(program.wait_for("menu item", entry))

        program.again_until(choose, condition, what)

    def put_into_the_trash(self, question):
        self.program.press("Yes", lambda: self.program.seen("label", question) is None, "the question's end")
        self.program.enter("frame", "ravlin!")

    def test_buttons_and_menu_entries_do_what_they_say(self):
        program = self.program
        playlist = self.music / "Ana - Mareas.m3u"
        program.click_row(1)
        button = program.wait_for("button menu", "save files to m3u playlist")
        program.again_until(lambda: program.click(button), playlist.exists, "the playlist")
        self.assertEqual(playlist.read_bytes(), b"b.mp3\r\n")
        program.click_row(0)
        self.choose_entry("select all", "select none", lambda: program.selected_rows() == [], "no row selected")
        question = "put “Ana - Mareas.m3u” into the trash?"
        self.choose_entry("save files to m3u playlist", "delete m3u lists",
                          lambda: program.seen("label", question), "the question")
        self.put_into_the_trash(question)
        program.wait(lambda: self.content(self.music) == ["a.mp3", "b.mp3", "c.mp3"], "the playlist gone")
        self.assertEqual(self.content(self.folder / "data" / "Trash" / "files"), ["Ana - Mareas.m3u"])
        self.close()

    def test_a_folder_is_copied_and_deleted(self):
        program = self.program
        program.click_row(0)
        self.choose_target("shift+F7", "copy folder")
        copy = self.target / "Music"
        program.wait(lambda: copy.is_dir() and self.content(copy) == ["a.mp3", "b.mp3", "c.mp3"], "the copy")
        program.wait(lambda: program.selected_rows() == [0, 1, 2], "the list filled anew")
        program.click_row(0)
        question = "put the folder “Music” into the trash, with all that is in it?"
        program.key_until("shift+F8", lambda: program.seen("label", question), "the question")
        self.assertTrue(self.music.is_dir())
        self.put_into_the_trash(question)
        program.wait_for_rows([])
        self.assertFalse(self.music.exists())
        self.assertEqual(self.content(self.folder / "data" / "Trash" / "files" / "Music"), ["a.mp3", "b.mp3", "c.mp3"])
        self.close()


class Playing(EndToEndTest):
    """The desktop's player for playlists gets the selected rows."""

    def setUp(self):
        super().setUp()
        self.settings()
        self.note = self.folder / "played.m3u"
        self.register_player()
        for name in ("a", "b", "c"):
            make_file(self.music / f"{name}.mp3", Song(f"Song {name}"))
        self.program = self.start(self.music)
        self.program.wait_for_rows(["a.mp3", "b.mp3", "c.mp3"])

    def register_player(self):
        """Registers a fake as the only player, on a desktop without an opener of its own."""
        self.desktop.environment["XDG_CURRENT_DESKTOP"] = "X-Generic"
        player = self.folder / "player"
        player.write_text(PLAYER.format(note=self.note), encoding="utf-8")
        player.chmod(0o700)
        applications = self.folder / "data" / "applications"
        applications.mkdir()
        (applications / "player.desktop").write_text(
            PLAYER_ENTRY.format(player=player, types="".join(f"{kind};" for kind in PLAYLIST_TYPES)), encoding="utf-8")
        defaults = [f"{kind}=player.desktop" for kind in PLAYLIST_TYPES]
        (self.desktop.config / "mimeapps.list").write_text(
            "\n".join(["[Default Applications]", *defaults]) + "\n", encoding="utf-8")

    def plays(self, *names):
        """Whether the last playlist that the player got holds these files."""
        lines = "".join(f"{self.music / name}\r\n" for name in names)
        return self.note.exists() and self.note.read_bytes() == lines.encode()

    def test_the_player_of_playlists_gets_the_selected_rows(self):
        program = self.program
        program.wait(lambda: program.selected_rows() == [0, 1, 2], "all rows selected")
        play = program.wait_for("button menu", "play files")
        program.again_until(lambda: program.click(play), lambda: self.plays("a.mp3", "b.mp3", "c.mp3"),
                            "all files played")
        program.click_row(1)
        program.key_until("shift+p", lambda: self.plays("b.mp3"), "the one file played")
        self.close()


class Opening(EndToEndTest):
    """The desktop's opener gets the address of the file that was double-clicked, and nothing else."""

    def test_the_opener_gets_every_byte_of_a_name(self):
        name = b"-caf\xe9 \xff $(touch here) 'x\".mp3"
        note = self.folder / "opened"
        opener = self.folder / "bin" / "xdg-open"
        opener.parent.mkdir()
        opener.write_text(OPENER.format(note=note), encoding="utf-8")
        opener.chmod(0o700)
        self.desktop.environment["PATH"] = f"{opener.parent}:{self.desktop.environment['PATH']}"
        self.settings()
        make_file(self.music / os.fsdecode(name), Song("Song"))
        program = self.start(self.music)
        program.wait(lambda: len(program.file_rows()) == 1, "the row")
        program.again_until(lambda: self.desktop.double_click(*centre(program.list.cell(0).extents)), note.exists,
                            "the file opened")
        count, address = note.read_bytes().splitlines()
        self.assertEqual(count, b"1")
        self.assertTrue(address.startswith(b"file:///"), address)
        self.assertEqual(unquote_to_bytes(address.removeprefix(b"file://")), bytes(self.music) + b"/" + name)
        self.close()


if __name__ == "__main__":
    unittest.main(verbosity=2)
