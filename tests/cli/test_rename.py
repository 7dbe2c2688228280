# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: "rename" and "renamedir" give files and a folder names made of tags, never overwrite, and with --dry-run change
nothing but print what the run then does."""

import os
import unittest

from clitest import CliTest, id3v2, mp3


class RenamingTest(CliTest):
    def song(self, name, **frames):
        return self.make(name, mp3(id3v2(**frames)))

    def tree(self):
        return {os.path.relpath(os.path.join(folder, name), self.folder): self.read(os.path.join(folder, name))
                for folder, _, names in os.walk(self.folder) for name in names}

    def dry(self, *arguments):
        """The rows of a preview that must say nothing on standard error; it must not touch a file."""
        before = self.tree()
        rows = self.json(arguments[0], "--dry-run", "--json", *arguments[1:])
        self.assertEqual(self.tree(), before)
        return rows

    def names(self):
        return sorted(self.tree())

    def moved(self, rows):
        """The preview's outcomes by file name."""
        return {os.path.basename(row["file"]): (os.path.relpath(row["newFile"], self.folder), row["outcome"])
                for row in rows}


class RenameTest(RenamingTest):
    def test_the_rules(self):
        for options, expected in ((["--rule", "artist-title"], "ACDC - T.N.T..mp3"),
                                  (["--rule=track-title"], "03 - T.N.T..mp3"),
                                  (["--pattern", "%4 %1 - %3 [%2]"], "03 ACDC - T.N.T. [%2].mp3"),
                                  (["--pattern", "%3 (%3) %6"], "T.N.T. (%3) song.mp3"),
                                  (["--pattern=%1 - %3", "--case=lower", "--replace=underscores"], "acdc_-_t.n.t..mp3")):
            path = self.song("song.MP3", TPE1="AC/DC", TIT2="T.N.T.", TRCK="3")
            rows = self.dry("rename", *options, path)
            self.assertEqual(self.moved(rows), {"song.MP3": (expected, "rename")})
            content = self.read(path)
            self.assertEqual(self.succeed("rename", *options, path), b"")
            self.assertEqual(self.tree(), {expected: content})
            os.remove(os.path.join(self.folder, expected))

    def test_the_preview_has_the_tag_and_marks_long_names(self):
        path = self.song("a.mp3", TIT2="夜" * 61, TPE1="Björk", TALB="Álbum", TYER="1998", TRCK="7")
        for pattern, is_long in (("%3", True), ("%1", False)):
            row, = self.dry("rename", "--pattern", pattern, path)
            self.assertEqual(row["longName"], is_long)
            self.assertEqual((row["title"], row["artist"], row["album"], row["year"], row["track"]),
                             ("夜" * 61, "Björk", "Álbum", "1998", "7"))
            self.assertEqual((row["id3v1"], row["id3v2"], row["collision"], row["reason"]), (False, True, False, ""))

    def test_files_that_lack_a_field_stay(self):
        path = self.song("a.mp3", TIT2="Title")
        self.assertEqual(self.moved(self.dry("rename", "--rule=artist-title", path)), {"a.mp3": ("a.mp3", "untouched")})
        self.succeed("rename", "--rule=artist-title", path)
        self.assertEqual(self.names(), ["a.mp3"])

    def test_swaps(self):
        one, other = self.song("a.mp3", TIT2="b"), self.song("b.mp3", TIT2="a")
        contents = self.read(one), self.read(other)
        self.succeed("rename", "--pattern=%3", one, other)
        self.assertEqual((self.read(other), self.read(one)), contents)

    def test_taken_names(self):
        expected = {"skip": (["1.mp3", "b.mp3", "c.mp3", "x.mp3"], 1), "number": (["1.mp3", "3.mp3", "x (2).mp3", "x.mp3"], 0),
                    "stop": (["1.mp3", "b.mp3", "c.mp3", "x.mp3"], 1)}
        for word, (names, status) in expected.items():
            for name in self.names():
                os.remove(os.path.join(self.folder, name))
            paths = [self.song("a.mp3", TIT2="1"), self.song("b.mp3", TIT2="x"), self.song("c.mp3", TIT2="3")]
            self.make("x.mp3")
            if word == "skip":
                names = ["1.mp3", "3.mp3", "b.mp3", "x.mp3"]
            rows = self.dry("rename", "--pattern=%3", "--clash", word, *paths)
            result = self.run_cli("rename", "--pattern=%3", "--clash", word, *paths)
            self.assertEqual(result.returncode, status, result.stderr)
            self.assertIn(b"b.mp3: the new name is taken", result.stderr)
            self.assertEqual(self.names(), names)
            self.assertEqual(sorted([os.path.basename(row["newFile"]) for row in rows] + ["x.mp3"]), names)
            self.assertTrue(rows[1]["collision"])
        self.assertEqual([row["outcome"] for row in rows], ["rename", "stopped", "notTaken"])

    def test_a_name_that_two_files_would_get(self):
        paths = [self.song("a.mp3", TIT2="x"), self.song("b.mp3", TIT2="x")]
        first, second = self.dry("rename", "--pattern=%3", *paths)
        self.assertEqual((first["collision"], first["reason"], "wantedFile" in first), (False, "", False))
        self.assertEqual((second["collision"], second["reason"]), (True, "two files would get this name"))
        self.assertEqual(second["wantedFile"], os.path.join(self.folder, "x.mp3"))
        _, message = self.fail_with(1, "rename", "--pattern=%3", *paths)
        self.assertEqual(message, b"ravlin-cli: " + paths[1] + b": two files would get this name: " +
                         os.fsencode(self.folder) + b"/x.mp3\n")
        self.assertEqual(self.names(), ["b.mp3", "x.mp3"])

    def test_a_file_given_twice(self):
        path = self.song("a.mp3", TIT2="x")
        rows = self.dry("rename", "--pattern=%3", path, path)
        self.assertEqual([(row["outcome"], row["reason"]) for row in rows],
                         [("rename", ""), ("refused", "the same file is given twice")])

    def test_a_track_that_is_no_number_is_none(self):
        for track, by_pattern, by_rule in (("A1", "%4 T.mp3", "a.mp3"), ("3/12", "03 T.mp3", "03 - T.mp3"),
                                           ("007", "07 T.mp3", "07 - T.mp3")):
            path = self.song("a.mp3", TRCK=track, TIT2="T")
            for options, expected in ((["--pattern=%4 %3"], by_pattern), (["--rule=track-title"], by_rule)):
                self.assertEqual(self.moved(self.dry("rename", *options, path))["a.mp3"][0], expected)

    def test_names_that_cannot_be(self):
        paths = [self.song(f"{number}.mp3", TIT2=title)
                 for number, title in enumerate((":", "..", "con", "x" * 300, "..."))]
        for path, row, reason in zip(paths, self.dry("rename", "--pattern=%3", *paths), (
                "is empty", "full stops", "of a device", "too long", "full stops")):
            self.assertEqual(row["outcome"], "refused")
            self.assertIn(reason, row["reason"])
            self.assertEqual(os.fsencode(row["newFile"]), path)
            self.assertTrue(row["wantedFile"].startswith(os.fsdecode(path).rsplit("/", 1)[0] + "/"))
            self.assertNotEqual(row["wantedFile"], row["newFile"])
        before = self.tree()
        _, message = self.fail_with(1, "rename", "--pattern=%3", *paths)
        self.assertEqual(message.count(b"\n"), 5, message)
        self.assertEqual(self.tree(), before)

    def test_a_separator_in_the_pattern_leads_into_a_folder_but_no_value_does(self):
        path = self.song("in/a.mp3", TIT2="Title", TALB="..", TPE1="Band")
        self.fail_with(1, "rename", "--pattern=%2/%3", path)
        self.assertEqual(self.names(), ["in/a.mp3"])
        self.succeed("rename", "--pattern=%1/%3", path)
        self.assertEqual(self.names(), ["in/Band/Title.mp3"])
        self.succeed("rename", "--pattern=../../%1", os.path.join(self.folder, "in/Band/Title.mp3"))
        self.assertEqual(self.names(), ["Band.mp3"])

    def test_relative_paths_and_names_that_are_no_unicode(self):
        self.song(b"caf\xe9.mp3", TIT2="ñ")
        result = self.run_cli("rename", "--pattern=%6 %3", b"caf\xe9.mp3", cwd=self.folder)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        self.assertEqual(os.listdir(os.fsencode(self.folder)), ["caf".encode() + b"\xe9 " + "ñ.mp3".encode()])

    def test_what_an_interrupted_rename_left_gets_its_name_back(self):
        path = self.make("Song (ravlin-0123456789abcdef).mp3")
        self.assertEqual(self.moved(self.dry("rename", "--rule=artist-title", path)),
                         {"Song (ravlin-0123456789abcdef).mp3": ("Song (ravlin-0123456789abcdef).mp3", "untouched")})
        self.succeed("rename", "--rule=artist-title", path)
        self.assertEqual(self.names(), ["Song.mp3"])

    def test_a_file_that_is_not_there(self):
        path = self.song("a.mp3", TIT2="x")
        _, message = self.fail_with(1, "rename", "--pattern=%3", os.path.join(self.folder, "none.mp3"), path)
        self.assertIn(b"none.mp3: the file or folder does not exist\n", message)
        self.assertEqual(self.names(), ["x.mp3"])

    def test_usage(self):
        for arguments in ([], ["--rule=x"], ["--rule=artist-title", "--pattern=%1"], ["--pattern=%1", "--clash=x"],
                          ["--pattern=%1", "--case=x"], ["--pattern", b"\xff"]):
            self.fail_with(2, "rename", *arguments, "a.mp3")


class RenameDirTest(RenamingTest):
    def test_the_rules(self):
        for options, expected in (([], "Band - Live"), (["--pattern", "%3 - %2"], "1999 - Live"),
                                  (["--pattern", "%4 - %2"], "%4 - Live")):
            self.song("New/a.mp3", TPE1="Band", TALB="Live", TYER="1999")
            self.song("New/b.mp3", TPE1="Other", TALB="Other")
            folder = os.path.join(self.folder, "New")
            row, = self.dry("renamedir", *options, folder)
            self.assertEqual((row["newFile"], row["outcome"]), (os.path.join(self.folder, expected), "rename"))
            self.succeed("renamedir", *options, folder + "/")
            self.assertEqual(self.names(), [f"{expected}/a.mp3", f"{expected}/b.mp3"])
            os.rename(os.path.join(self.folder, expected), os.path.join(self.folder, "gone"))
            for name in self.names():
                os.remove(os.path.join(self.folder, name))
            os.rmdir(os.path.join(self.folder, "gone"))

    def test_a_slash_in_a_value(self):
        self.song("New/a.mp3", TALB="A/B")
        folder = os.path.join(self.folder, "New")
        _, message = self.fail_with(1, "renamedir", folder)
        self.assertIn(b"leads into another folder: " + os.fsencode(self.folder) + b"/A/B\n", message)
        self.assertEqual(self.names(), ["New/a.mp3"])
        self.succeed("renamedir", "--pattern=%2", folder)
        self.assertEqual(self.names(), ["AB/a.mp3"])

    def test_a_folder_is_not_put_into_itself(self):
        self.song("N/a.mp3", TALB="Live")
        folder = os.path.join(self.folder, "N")
        words = "a folder cannot be put into itself or into a folder inside it"
        for pattern in ("N/a/b/%2", "N/%2", "./N/../N/%2"):
            row, = self.dry("renamedir", "--pattern", pattern, folder)
            self.assertEqual((row["outcome"], row["reason"], row["newFile"]), ("refused", words, folder))
            self.assertTrue(row["wantedFile"].endswith("/N/Live") or row["wantedFile"].endswith("/N/a/b/Live"))
            _, message = self.fail_with(1, "renamedir", "--pattern", pattern, folder)
            self.assertIn(words.encode(), message)
            self.assertEqual(os.listdir(folder), ["a.mp3"])
        self.succeed("renamedir", "--pattern", "N2/a/%2", folder)
        self.assertEqual(self.names(), ["N2/a/Live/a.mp3"])

    def test_a_taken_name(self):
        self.song("New/a.mp3", TALB="Vol. 1")
        self.make("Vol. 1/a.mp3")
        folder = os.path.join(self.folder, "New")
        self.assertEqual(self.dry("renamedir", folder)[0]["outcome"], "skipped")
        self.fail_with(1, "renamedir", folder)
        self.assertEqual(self.names(), ["New/a.mp3", "Vol. 1/a.mp3"])
        result = self.run_cli("renamedir", "--clash=number", folder)
        self.assertEqual(result.returncode, 0)
        self.assertEqual(self.names(), ["Vol. 1 (2)/a.mp3", "Vol. 1/a.mp3"])

    def test_no_name_no_file_no_folder(self):
        self.make("New/a.mp3")
        self.make("Empty/notes.txt")
        self.assertIn(b"makes no name", self.fail_with(1, "renamedir", os.path.join(self.folder, "New"))[1])
        self.assertIn(b"no MP3 file", self.fail_with(1, "renamedir", os.path.join(self.folder, "Empty"))[1])
        self.assertIn(b"does not exist", self.fail_with(1, "renamedir", os.path.join(self.folder, "None"))[1])
        self.fail_with(1, "renamedir", os.path.join(self.folder, "New", "a.mp3"))
        self.assertEqual(self.names(), ["Empty/notes.txt", "New/a.mp3"])

    def test_the_folder_one_is_in_and_a_relative_one(self):
        self.song("New/a.mp3", TALB="Live")
        result = self.run_cli("renamedir", ".", cwd=os.path.join(self.folder, "New"))
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        self.assertEqual(self.names(), ["Live/a.mp3"])
        result = self.run_cli("renamedir", "--pattern=x %2", "Live", cwd=self.folder)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        self.assertEqual(self.names(), ["x Live/a.mp3"])


if __name__ == "__main__":
    unittest.main()
