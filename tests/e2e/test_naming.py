#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Names and tags of real files: tags from names, names from tags, many files at once, folders; with accents, Japanese
and long names."""

import unittest

from collection import Song, has_whole_audio, make_file, read_v2
from harness import EndToEndTest

MASK = "%4 - %1 - %3"
TOO_LONG = "the name is longer than 64 characters"
UNFIT = "the name does not fit the mask; the file stays as it is"


def name_of_length(start, length):
    """A file name of that length, extension included."""
    return start + "ñ" * (length - len(start) - len(".mp3")) + ".mp3"


class NamingTest(EndToEndTest):
    def setUp(self):
        super().setUp()
        self.settings()

    def names(self):
        return sorted(path.name for path in self.folder_at_work.iterdir())

    def previewed(self, program):
        """Opens and closes the preview of the open page. Returns the names, the remarks by name, and row 0."""
        before = {path: path.read_bytes() for path in self.folder_at_work.iterdir()}
        program.open_dialog("preview", "preview")
        table = program.wait_for("tree", "preview")
        parts = [text.partition("; ") for text in program.file_rows(table)]
        first = program.row(0, table)
        program.close_dialog("ok")
        self.assertEqual({path: path.read_bytes() for path in self.folder_at_work.iterdir()}, before)
        return [name for name, _, _ in parts], {name: remark for name, _, remark in parts if remark}, first


class Extraction(NamingTest):
    def test_tags_are_taken_from_the_names_of_200_files(self):
        self.folder_at_work = self.music / "Colección"
        songs = {}
        for number in range(197):
            song = Song(f"Canción {number} 夜", ("Ana Cívica", "夜の図書館")[number % 2], track=f"{number % 99 + 1:02d}")
            songs[f"{song.track} - {song.artist} - {song.title}.mp3"] = song
        for length in (64, 65):
            name = name_of_length("07 - Björk - ", length)
            songs[name] = Song(name[len("07 - Björk - "):-4], "Björk", track="07")
        for name in songs:
            make_file(self.folder_at_work / name, Song("Old", "Nobody", "Álbum", "1999", "3", "Rock", "kept"))
        unfit = make_file(self.folder_at_work / "no mask fits this.mp3", Song("Untouched"))
        untouched = unfit.read_bytes()

        program = self.start(self.folder_at_work)
        program.wait(lambda: program.status()[0] == "200 files", "200 files listed")
        program.open_page("mp3 file name to id3 tag", ("text", "file name mask"))
        program.fill("file name mask", MASK)
        names, remarks, first = self.previewed(program)
        self.assertEqual(sorted(names), self.names())
        self.assertEqual(first, [names[0], "01", songs[names[0]].title, songs[names[0]].artist, "Álbum", "1999", "no",
                                 "yes"])
        self.assertEqual(remarks, {name_of_length("07 - Björk - ", 65): TOO_LONG, unfit.name: UNFIT})
        new = [songs[names[0]].title, songs[names[0]].artist, "Álbum", "1999"]
        program.press("save id3", lambda: program.row(0)[2:6] == new, "the list with the new tags")
        for name, song in songs.items():
            expected = song._replace(album="Álbum", year="1999", track=song.track, genre="Rock", comment="kept")
            found = read_v2(self.folder_at_work / name)
            self.assertEqual(found._replace(track=f"{int(found.track):02d}"), expected)
        self.assertEqual(unfit.read_bytes(), untouched)
        self.close()


class Renaming(NamingTest):
    LONG = "ñ" * (64 - len("Ana Cívica - .mp3"))
    SONGS = (Song("Niebla azul", "Ana Cívica", "Mareas", "1998", "1", "Folk", "muelle"),
             Song("夜の路面電車", "Nocturna", "駅", "2004", "12", "Ambient", "raíl"),
             Song("T.N.T.", "AC/DC", "High Voltage", "1975", "3", "Rock", "live"),
             Song(LONG, "Ana Cívica", "Largo", "2001", "4", "Folk", "corto"),
             Song(LONG + "ñ", "Ana Cívica", "Largo", "2001", "5", "Folk", "largo"))
    # The names by each rule, in the order of the songs, without conversions and with them: capitalized, with
    # underscores for spaces.
    RULES = {
        "artist - title": (
            ["Ana Cívica - Niebla azul", "Nocturna - 夜の路面電車", "ACDC - T.N.T.", f"Ana Cívica - {LONG}",
             f"Ana Cívica - {LONG}ñ"],
            ["Ana_Cívica_-_Niebla_Azul", "Nocturna_-_夜の路面電車", "Acdc_-_T.N.T.", f"Ana_Cívica_-_Ñ{LONG[1:]}",
             f"Ana_Cívica_-_Ñ{LONG}"]),
        "track - title": (
            ["01 - Niebla azul", "12 - 夜の路面電車", "03 - T.N.T.", f"04 - {LONG}", f"05 - {LONG}ñ"],
            ["01_-_Niebla_Azul", "12_-_夜の路面電車", "03_-_T.N.T.", f"04_-_Ñ{LONG[1:]}", f"05_-_Ñ{LONG}"]),
        "advanced": (
            ["é 1998 Mareas 01 Folk [muelle]", "é 2004 駅 12 Ambient [raíl]", "é 1975 High Voltage 03 Rock [live]",
             "é 2001 Largo 04 Folk [corto]", "é 2001 Largo 05 Folk [largo]"],
            ["É_1998_Mareas_01_Folk_[muelle]", "É_2004_駅_12_Ambient_[raíl]", "É_1975_High_Voltage_03_Rock_[live]",
             "É_2001_Largo_04_Folk_[corto]", "É_2001_Largo_05_Folk_[largo]"]),
    }
    PATTERN = "é %5 %2 %4 %7 [%8]"

    def test_files_are_renamed_by_each_rule_with_and_without_conversions(self):
        self.folder_at_work = self.music / "Álbum 夜"
        for number, song in enumerate(self.SONGS):
            make_file(self.folder_at_work / f"file {number}.mp3", song, v1=True)
        content = sorted(path.read_bytes() for path in self.folder_at_work.iterdir())
        program = self.start(self.folder_at_work)
        program.wait_for_rows([f"file {number}.mp3" for number in range(len(self.SONGS))])
        program.open_page("rename mp3 files", ("radio button", "advanced"))
        for converted in (False, True):
            program.switch_conversion("case", *(["End", "Capitalize First Letter"] if converted else []))
            program.switch_conversion("replace", *(["Home", "spaces by underscores"] if converted else []))
            for rule, names in self.RULES.items():
                program.switch("radio button", rule)
                if rule == "advanced":
                    program.fill("advanced", self.PATTERN)
                wanted = sorted(f"{name}.mp3" for name in names[converted])
                shown, remarks, _ = self.previewed(program)
                self.assertEqual(sorted(shown), wanted)
                self.assertEqual(remarks, {name: TOO_LONG for name in wanted if len(name) > 64})
                program.press("rename", lambda wanted=wanted: sorted(program.file_rows()) == wanted,
                              f"the list with {wanted}")
                self.assertEqual(self.names(), wanted)
        self.assertEqual(sorted(path.read_bytes() for path in self.folder_at_work.iterdir()), content)
        self.close()


class ManyFiles(NamingTest):
    def test_150_files_are_numbered_in_the_order_of_the_list(self):
        self.folder_at_work = self.music / "Números"
        before = Song("Título", "夜の図書館", "Álbum", "1999", "42", "Rock", "kept")
        for number in range(150):
            make_file(self.folder_at_work / f"{number:03d} é.mp3", before)
        program = self.start(self.folder_at_work)
        program.wait(lambda: program.status()[0] == "150 files", "150 files listed")
        program.open_page("multi file id3 tag editor", ("check box", "auto track"))
        program.switch("check box", "auto track")
        program.switch("check box", "album")
        program.fill("auto track", "1")
        program.fill("album", "Mareas 夜 ñ")
        new = ["01", before.title, before.artist, "Mareas 夜 ñ"]
        program.press("save id3", lambda: program.row(0)[1:5] == new, "the list with the new tags")
        for number in range(150):
            path = self.folder_at_work / f"{number:03d} é.mp3"
            found = read_v2(path)
            # A track of three digits is not written.
            track = int(found.track or 0)
            self.assertEqual((track, found._replace(track="")),
                             (number + 1 if number < 99 else 0, before._replace(track="", album="Mareas 夜 ñ")))
            self.assertTrue(has_whole_audio(path))
        self.close()


class Folders(NamingTest):
    def test_the_folder_is_renamed_and_tree_and_list_follow(self):
        former = self.music / "nueva carpeta"
        make_file(former / "1.mp3", Song("Niebla", "Ana Cívica", "夜", "1998", "1"))
        program = self.start(former)
        program.wait_for_rows(["1.mp3"])
        for rule, pattern, name in (("artist - album", None, "Ana Cívica - 夜"), ("advanced", "%3 ñ %2", "1998 ñ 夜")):
            program.open_dialog("rename dir", "rename dir")
            program.switch("check box", rule)
            if pattern:
                program.fill("advanced", pattern)
            program.close_dialog("rename")
            folder = self.music / name
            program.wait(lambda folder=folder: program.status()[1] == str(folder / "1.mp3"), f"the list of {folder}")
            program.wait(lambda name=name: "selected" in program.folder_item(name).states, f"'{name}' in the tree")
            program.wait_for_rows(["1.mp3"])
            self.assertEqual([path.name for path in self.music.iterdir()], [name])
            self.assertTrue(has_whole_audio(folder / "1.mp3"))
        self.close()


if __name__ == "__main__":
    unittest.main(verbosity=2)
