#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Everyday work in the main window on real files: open a folder, look at it, edit, save, come back."""

import os
import subprocess
import time
import unittest

from collection import Song, has_whole_audio, make_file, read_v1, read_v2
from harness import EndToEndTest
from program import PROGRAM

CLI = PROGRAM + "-cli"

NIEBLA = Song("Niebla", "Ana Cívica", "Mareas", "1998", "1", "Folk", "muelle")
AMBAR = Song("El Pañuelo de Ámbar", "Ana Cívica", "Mareas", "1998", "2", "Folk", "")
TRAM = Song("夜の路面電車", "Nocturna", "Zenit", "2004", "12", "Ambient", "")


class Opening(EndToEndTest):
    def setUp(self):
        super().setUp()
        self.settings()
        make_file(self.music / "Mareas" / "01 niebla.mp3", NIEBLA, v1=True)
        make_file(self.music / "Mareas" / "02 ámbar.mp3", AMBAR)
        make_file(self.music / "Mareas" / "cd2" / "路面電車.mp3", TRAM)
        make_file(self.music / "Zenit" / "sin etiqueta.mp3")

    def test_the_folder_or_the_file_on_the_command_line_is_opened(self):
        for argument in (self.music / "Mareas", self.music / "Mareas" / "02 ámbar.mp3"):
            program = self.start(argument)
            program.wait_for_rows(["01 niebla.mp3", "02 ámbar.mp3"])
            self.assertEqual(program.row(0), ["01 niebla.mp3", "01", "Niebla", "Ana Cívica", "Mareas", "1998", "yes",
                                              "yes"])
            self.assertEqual(program.row(1), ["02 ámbar.mp3", "02", "El Pañuelo de Ámbar", "Ana Cívica", "Mareas",
                                              "1998", "no", "yes"])
            program.wait(lambda: program.selected_rows() == [0, 1], "all rows selected")
            self.assertEqual(program.status(), ["2 files", str(self.music / "Mareas" / "01 niebla.mp3")])
            self.close()

    @unittest.skipUnless(os.name == "posix", "names with quotes")
    def test_a_quote_belongs_to_the_name_or_surrounds_it_and_an_address_is_taken(self):
        folder = self.music / 'Blue Monday 12"'
        make_file(folder / "inch.mp3", NIEBLA)
        for argument in (folder, f'"{folder}"', f'"{folder / "inch.mp3"}"', folder.as_uri()):
            program = self.start(argument)
            program.wait_for_rows(["inch.mp3"])
            self.close()

    def test_help_version_and_too_many_arguments_print_and_end(self):
        self.settings(idioma="fr")
        home = {"HOME": str(self.desktop.home), "XDG_CONFIG_HOME": str(self.desktop.config)}
        bare = {"PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8", **home}  # no display

        def run(*arguments, env=bare):
            return subprocess.run([PROGRAM, *arguments], env=env, capture_output=True, timeout=60, check=False)

        for option in ("--help", "-h"):
            shown = run(option)
            self.assertEqual((shown.returncode, shown.stderr), (0, b""))
            self.assertIn("[DOSSIER | FICHIER.mp3]", shown.stdout.decode())
            self.assertIn("--version", shown.stdout.decode())
        shown = run("--version")
        self.assertEqual((shown.returncode, shown.stderr), (0, b""))
        self.assertRegex(shown.stdout, rb"\Aravlin [0-9.]+\S*\n\Z")
        shown = run(self.music, self.music, env={**bare, "QT_QPA_PLATFORM": "offscreen"})
        self.assertEqual((shown.returncode, shown.stdout), (2, b""))
        self.assertIn("un seul dossier", shown.stderr.decode())

    def test_a_folder_chosen_in_the_tree_is_opened_and_f2_lists_what_is_below_it(self):
        program = self.start(self.music)
        program.wait_for_rows([])
        program.wait(lambda: {"selected"} <= program.folder_item("Music").states, "the folder shown in the tree")
        program.click_folder("Music")
        program.key_until("Right", lambda: program.folder_item("Mareas"), "the folders below it")
        program.click_folder("Mareas")
        program.wait_for_rows(["01 niebla.mp3", "02 ámbar.mp3"])
        below = ["01 niebla.mp3", "02 ámbar.mp3", "cd2/路面電車.mp3"]
        program.key_until("F2", lambda: program.file_rows() == below, "the files below the folder")
        self.assertEqual(program.row(2)[2:6], ["夜の路面電車", "Nocturna", "Zenit", "2004"])
        program.click_folder("Zenit")
        program.wait_for_rows(["sin etiqueta.mp3"])
        self.close()


class Editing(EndToEndTest):
    NEW = Song("Marea Baja", "Los Faroles", "Orilla", "2001", "7", "Country", "second take")
    OLD = Song("Old title", "Old artist", "Old album", "1970", "3", "Rock", "old comment")

    def edit_and_save(self, program):
        program.wait_for_rows(["both.mp3", "other.mp3"])
        program.click_row(0)
        program.wait(lambda: program.text_of("title") == self.OLD.title, "the file's title on the page")
        for name in ("title", "artist", "year", "track", "comment", "album"):
            program.fill(name, getattr(self.NEW, name))
        genre = program.combo_box("genre")
        program.key_until("Tab", lambda: "focused" in genre.states, "the focus on the genre")
        self.assertEqual(genre.name, self.OLD.genre)
        # Skips the empty entry.
        program.key_until("Home Down Down Down", lambda: genre.name == self.NEW.genre, "the genre chosen")
        # After the save the list is filled anew, with all rows selected.
        program.press("save id3", lambda: program.selected_rows() == [0, 1], "the list filled anew")

    def test_saving_writes_the_tags_that_each_mode_asks_for(self):
        kept = {"1": (self.NEW, self.OLD), "2": (self.OLD, self.NEW), "3": (self.NEW, self.NEW),
                "4": (self.NEW, None), "5": (None, self.NEW)}
        for mode, (v1, v2) in kept.items():
            folder = self.music / f"mode {mode}"
            edited = make_file(folder / "both.mp3", self.OLD, v1=True)
            other = make_file(folder / "other.mp3", self.OLD, v1=True)
            untouched = other.read_bytes()
            self.settings(tags=mode)
            program = self.start(folder)
            self.edit_and_save(program)
            self.assertEqual(read_v1(edited), v1)
            self.assertEqual(read_v2(edited), v2)
            self.assertTrue(has_whole_audio(edited))
            self.assertEqual(other.read_bytes(), untouched)
            cells = ["yes" if tag else "no" for tag in (v1, v2)]
            program.wait(lambda cells=cells: program.row(0)[6:] == cells, f"the tags' columns {cells}")
            self.close()

    def test_next_and_previous_go_from_file_to_file(self):
        self.settings()
        for number in (1, 2, 3):
            make_file(self.music / f"{number}.mp3", Song(f"Song {number}", track=str(number)))
        program = self.start(self.music)
        program.wait_for_rows(["1.mp3", "2.mp3", "3.mp3"])
        program.click_row(0)
        for button, number in (("next", 2), ("next", 3), ("next", 3), ("previous", 2), ("previous", 1)):
            program.press(button, lambda number=number: program.text_of("title") == f"Song {number}", f"file {number}")
            program.wait(lambda number=number: program.selected_rows() == [number - 1], f"row {number} selected")
            self.assertEqual(program.status(), ["3 files", str(self.music / f"{number}.mp3")])
            artist = program.wait_for("text", "artist")
            program.wait(lambda artist=artist: "focused" in artist.states, "the focus on the artist")
        self.close()

    def test_a_tag_is_removed_after_the_question(self):
        self.settings()
        path = make_file(self.music / "a.mp3", self.OLD, v1=True)
        before = path.read_bytes()
        program = self.start(self.music)
        program.wait_for_rows(["a.mp3"])
        program.click_row(0)
        for kind, answer in (("remove id3v1 tag", "No"), ("remove id3v1 tag", "Yes"), ("remove id3v2 tag", "Yes")):
            program.press(kind, lambda kind=kind: program.seen("label", kind + "?"), "the question")
            self.assertEqual(path.read_bytes(), before)
            program.press(answer, lambda kind=kind: program.seen("label", kind + "?") is None, "the question's end")
            if answer == "Yes":
                button = program.wait_for("push button", kind)
                program.wait(lambda button=button: "enabled" not in button.states, "nothing left to remove")
                before = path.read_bytes()
        self.assertIsNone(read_v1(path))
        self.assertIsNone(read_v2(path))
        self.assertTrue(has_whole_audio(path))
        program.wait(lambda: program.row(0) == ["a.mp3", "", "", "", "", "", "no", "no"], "the row without tags")
        self.close()


class Ordering(EndToEndTest):
    def test_the_list_is_sorted_by_its_headers_and_by_hand(self):
        self.settings()
        for name, title in (("a.mp3", "Beta"), ("b.mp3", "alpha"), ("c.mp3", "Gamma"), ("d.mp3", "delta")):
            make_file(self.music / name, Song(title))
        program = self.start(self.music)
        program.wait_for_rows(["a.mp3", "b.mp3", "c.mp3", "d.mp3"])
        program.click_header("title", ["b.mp3", "a.mp3", "d.mp3", "c.mp3"])
        program.click_header("title", ["c.mp3", "d.mp3", "a.mp3", "b.mp3"])
        program.drag_row(0, to=2)
        program.drag_row(1, to=4)
        self.assertEqual(program.file_rows(), ["d.mp3", "a.mp3", "b.mp3", "c.mp3"])
        self.close()


class ComingBack(EndToEndTest):
    def test_the_next_start_finds_the_folder_and_the_window_as_they_were_left(self):
        self.settings(recuerda="si")
        make_file(self.music / "Mareas" / "niebla.mp3", NIEBLA)
        make_file(self.music / "Zenit" / "tram.mp3", TRAM)
        program = self.start(self.music / "Zenit")
        program.wait_for_rows(["tram.mp3"])
        program.click_folder("Mareas")
        program.wait_for_rows(["niebla.mp3"])
        place = self.move_splitter(program)
        self.close()
        self.assertEqual(self.stored("tags"), "2")

        program = self.start()
        program.wait_for_rows(["niebla.mp3"])
        self.assertEqual(program.status(), ["1 files", str(self.music / "Mareas" / "niebla.mp3")])
        self.assertEqual(self.splitter_place(program), place)
        self.close()

    @staticmethod
    def splitter_place(program):
        return program.wait_for("slider", "width of the folders").value

    def move_splitter(self, program):
        """Moves the splitter by keys and returns its new place."""
        before = self.splitter_place(program)
        splitter = program.wait_for("slider", "width of the folders")
        # The focus is on the folders, which were clicked.
        program.key_until("Tab", lambda: "focused" in splitter.states, "the focus on the splitter")
        program.key_until("Right", lambda: self.splitter_place(program) > before, "the splitter moved")
        return self.splitter_place(program)


class Slips(EndToEndTest):
    """An album of 15 files: the first title is corrected and saved, then the next one."""

    def setUp(self):
        super().setUp()
        self.songs = [make_file(self.music / f"{number:02}.mp3", Song(f"Song {number}", "Ana", "Mareas", "1998",
                                                                      str(number), "Blues"))
                      for number in range(1, 16)]
        self.rows = [song.name for song in self.songs]
        self.before = [song.read_bytes() for song in self.songs]

    def open_album(self):
        program = self.start(self.music)
        program.wait_for_rows(self.rows)
        return program

    def correct_two_titles(self, program):
        program.click_row(0)
        program.wait(lambda: program.text_of("title") == "Song 1", "the first file's title")
        program.fill("title", "First")
        program.press("save id3", lambda: program.row(0)[2] == "First", "the first title saved")
        program.press("next", lambda: program.text_of("title") == "Song 2", "the next file's title")
        program.fill("title", "Second")
        program.press("save id3", lambda: program.row(1)[2] == "Second", "the second title saved")

    def changed(self):
        return [song.name for song, bytes_before in zip(self.songs, self.before) if song.read_bytes() != bytes_before]

    def test_with_the_protections_no_other_file_and_no_other_field_changes(self):
        self.settings(**{"cuida campos": "si", "cuida seleccion": "si"})
        self.correct_two_titles(self.open_album())
        self.assertEqual(self.changed(), ["01.mp3", "02.mp3"])
        self.assertEqual(read_v2(self.songs[0]), Song("First", "Ana", "Mareas", "1998", "1", "Blues"))
        self.assertEqual(read_v2(self.songs[1]), Song("Second", "Ana", "Mareas", "1998", "2", "Blues"))

    def test_without_them_one_key_takes_the_slip_back_also_after_a_restart(self):
        for restarts in (False, True):
            self.settings()
            program = self.open_album()
            self.correct_two_titles(program)
            self.assertEqual(self.changed(), self.rows)
            if restarts:
                self.close()
                program = self.open_album()
            program.click_row(3)
            self.desktop.key("ctrl+z")
            program.wait(lambda: self.changed() == ["01.mp3"], "the second save taken back")
            program.wait(lambda: program.row(1)[2] == "Song 2", "the list filled anew")
            self.desktop.key("ctrl+z")
            program.wait(lambda: self.changed() == [], "the first save taken back")
            self.close()


class TwoPrograms(EndToEndTest):
    """The window and the command line save the same file at the same time. RAVLIN_ROUNDS says how often."""

    ROUNDS = int(os.environ.get("RAVLIN_ROUNDS", "3"))

    def test_nothing_that_either_has_saved_is_lost(self):
        self.settings(**{"cuida campos": "si", "cuida seleccion": "si"})
        song = make_file(self.music / "song.mp3", Song("Song", "Ana", "Mareas", "1998", "1", "Blues"))
        program = self.start(self.music)
        program.wait_for_rows([song.name])
        program.click_row(0)
        for number in range(self.ROUNDS):
            title, artist = f"Title {number}", f"Artist {number}"
            program.fill("title", title)
            # Of growing and shrinking lengths, so that each way of writing is met.
            comment = str(number) + "x" * (number * 37 % 3000)
            time.sleep(number % 10 / 200)
            other = subprocess.Popen([CLI, "tag", "--only-edited", "--artist", artist, "--comment", comment, song],
                                     env=self.desktop.environment)
            program.press("save id3", lambda: program.row(0)[2] == title, "the title saved")
            self.assertEqual(other.wait(timeout=60), 0)
            self.assertEqual(read_v2(song), Song(title, artist, "Mareas", "1998", "1", "Blues", comment))


if __name__ == "__main__":
    unittest.main(verbosity=2)
