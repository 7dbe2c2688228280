#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""An album looked up in a local CD database: found by the files' playing times, put in order and saved; not found and
searched for by a text; and a server that hangs."""

import os
import subprocess
import unittest

from collection import Song, make_cd_tracks, read_v2
from harness import EndToEndTest

SERVER = os.path.join(os.environ["RAVLIN_BIN_DIR"], "..", "tests", "cddb_server")
# A disc of the server: the frames where its tracks begin and the last one ends, and their titles.
MARKS = (175, 18469, 34444, 51154, 70524, 88841, 104824, 124686, 140966, 159454, 177600)
TITLES = ["Puerto", "Sal y Viento", "La Niña del Faro", "Día de Pesca", "Bajamar", "Redes",
          "Canción de los que se fueron y no volvieron nunca más a la orilla de aquella playa larga y blanca del norte",
          "Niebla", "Dos \\ Dos", "Regreso"]
NAMES = [f"{number:02}.mp3" for number in range(1, 11)]


class Lookup(EndToEndTest):
    def open_form(self, *options):
        """Opens the dialog for all files, with a server that has those options."""
        server = self.desktop.start([SERVER, *options], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.addCleanup(server.stdout.close)
        self.addCleanup(server.stdin.close)
        self.settings(servidor=server.stdout.readline().decode().strip())
        program = self.start(self.music)
        program.wait(lambda: len(program.selected_rows()) == program.list.row_count > 0, "the files, all selected")
        program.key_until("F3", lambda: program.seen("dialog", "freedb"), "the window of the CD database")
        return program

    def leave_box(self, program, text):
        """Closes the message box with that text and enters the dialog again."""
        program.wait_for("label", text)
        program.key_until("Return", lambda: program.seen("label", text) is None, "the message's end")
        program.enter("dialog", "freedb")

    def close_form(self, program):
        program.key_until("Escape", lambda: program.seen("dialog", "freedb") is None, "the window's end")
        program.enter("frame", "ravlin!")

    def move_first_down(self, program, tracks):
        """Moves the first track down by keys."""
        def titles():
            return [tracks.cell(row, 1).name for row in range(tracks.row_count)]

        def strike():
            if titles() == TITLES:
                program.desktop.key("alt+Down")

        cell = tracks.cell(0)
        program.again_until(lambda: program.click(cell), lambda: "focused" in cell.states, "the first track focused")
        program.again_until(strike, lambda: titles() == [TITLES[1], TITLES[0], *TITLES[2:]], "the track moved down")

    def save(self, program, count):
        def is_told():
            return any(label.name.startswith(f"saved: {count}") for label in program.window.find_shown("label"))

        program.press("save id3", is_told, "the files saved", inside=program.window)

    def titles(self):
        return [read_v2(self.music / name).title for name in NAMES]

    def test_ten_files_are_looked_up_put_in_order_and_saved(self):
        make_cd_tracks(self.music, MARKS)
        program = self.open_form()
        chooser = "which disc is it?"
        program.enter("dialog", chooser)
        program.press("ok", lambda: program.seen("dialog", chooser) is None, "the disc chosen", inside=program.window)
        program.enter("dialog", "freedb")
        program.wait_for("label", "disc found, tracks: 10")
        self.assertEqual([program.text_of(name, program.window) for name in ("artist", "album", "year", "genre")],
                         ["Las Gaviotas", "Mareas Lentas", "1998", "Rock"])
        files = program.wait_for("tree", "files")
        tracks = program.wait_for("tree", "tracks of the disc")
        self.assertEqual(program.file_rows(files), NAMES)
        self.assertEqual(program.row(0, tracks, 3), ["1", "Puerto", "04:03.9"])
        self.assertEqual(program.row(0, files, 2), ["01.mp3", "04:03.9"])

        program.drag_row(9, 0, files)
        self.move_first_down(program, tracks)
        program.fill("year", "1999", program.window)
        self.save(program, 10)
        # The last file stands beside the second track now, the second file beside the third, and so on.
        self.assertEqual(self.titles(), [TITLES[0], *TITLES[2:], TITLES[1]])
        self.assertEqual(read_v2(self.music / "03.mp3"),
                         Song(TITLES[3], "Las Gaviotas", "Mareas Lentas", "1999", "4", "Rock"))
        self.close_form(program)
        program.wait(lambda: program.row(0, columns=6) ==
                     ["01.mp3", "01", "Puerto", "Las Gaviotas", "Mareas Lentas", "1999"], "the list with the tags")
        self.close()

    def test_what_is_not_found_is_searched_for(self):
        make_cd_tracks(self.music, (0, 750, 1500, 2250))
        program = self.open_form()
        self.leave_box(program, "disc not found")
        program.wait(lambda: "enabled" not in program.seen("push button", "save id3", program.window).states,
                     "nothing to save")
        for text, found in (("nobody / nothing", False), ("the quiet three / reissue", True)):
            program.press("search again", lambda: program.seen("dialog", "search again"), "the window for the text")
            program.enter("dialog", "search again")
            program.fill("artist / album", text)
            program.key_until("Return", lambda: program.seen("dialog", "search again") is None, "the search")
            if found:
                program.enter("dialog", "freedb")
                program.wait_for("label", "disc found, tracks: 3\n"
                                          "files that do not play as long as the track beside them: 3")
            else:
                self.leave_box(program, "disc not found")
        self.save(program, 3)
        self.assertEqual([read_v2(self.music / name) for name in NAMES[:3]],
                         [Song(title, "The Quiet Three", "First Take (reissue)", "1999", str(number), "Jazz")
                          for number, title in enumerate(("One", "Two", "Three (mono)"), 1)])
        self.close_form(program)
        self.close()

    def test_a_server_that_hangs_holds_nothing_up(self):
        make_cd_tracks(self.music, (0, 750))
        before = (self.music / "01.mp3").read_bytes()
        program = self.open_form("--fault", "Silence")
        program.enter("dialog", "freedb")
        program.fill("artist", "Ana", program.window)  # the dialog stays usable
        self.close_form(program)
        self.assertEqual((self.music / "01.mp3").read_bytes(), before)
        program.click_row(0)
        self.close()


if __name__ == "__main__":
    unittest.main(verbosity=2)
