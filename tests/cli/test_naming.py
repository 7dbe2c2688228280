# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: "extract" fills tags from names by a pattern, "multi" sets fields of many files at once and numbers them; both
change nothing else, and with --dry-run they change nothing at all but print what the run then does."""

import json
import os
import unittest

from clitest import CliTest, id3v1, id3v2, mp3

V2 = id3v2(TIT2="Title", TPE1="Artist", TALB="Album", TYER="1998", COMM="Comment", TRCK="3", TCON="(17)")
COLUMNS = ["file", "track", "title", "artist", "album", "year", "comment", "genre", "id3v1", "id3v2", "longName",
           "written", "remarks"]


class NamingTest(CliTest):
    def dry(self, *arguments):
        """The preview of a run that must say nothing on standard error; it must not touch a file."""
        before = {entry.name: (entry.read_bytes(), entry.stat().st_mtime_ns) for entry in self.folder.iterdir()}
        rows = self.json(arguments[0], "--dry-run", "--json", *arguments[1:])
        after = {entry.name: (entry.read_bytes(), entry.stat().st_mtime_ns) for entry in self.folder.iterdir()}
        self.assertEqual(before, after)
        return rows


class ExtractTest(NamingTest):
    def test_fills_what_the_pattern_names_and_keeps_the_rest(self):
        path = self.make("07 - Björk - 夜のうた.mp3", mp3(V2))
        rows = self.dry("extract", "--pattern", "%4 - %1 - %3", path)
        self.assertEqual(rows, [{"file": os.fsdecode(path), "track": "07", "title": "夜のうた", "artist": "Björk",
                                 "album": "Album", "year": "1998", "comment": "Comment", "genre": "Rock",
                                 "id3v1": False, "id3v2": True, "longName": False, "written": True, "remarks": ""}])
        self.assertEqual(self.succeed("extract", "--pattern", "%4 - %1 - %3", path), b"")
        shown = self.show(path)
        self.assertEqual((shown["track"], shown["artist"], shown["title"], shown["album"]),
                         ("7", "Björk", "夜のうた", "Album"))
        self.assertTrue(self.read(path).endswith(mp3()))

    def test_a_name_that_does_not_fit_is_told_and_left_alone(self):
        path, other = self.make("Artist-Song.mp3"), self.make("Artist - Song.mp3")
        self.assertEqual([row["written"] for row in self.dry("extract", "--pattern", "%1 - %3", path, other)],
                         [False, True])
        self.assertEqual([row["remarks"] for row in self.dry("extract", "--pattern", "%1 - %3", path, other)],
                         ["the name does not fit the mask; the file stays as it is", ""])
        result = self.run_cli("extract", "--pattern", "%1 - %3", path, other)
        self.assertEqual((result.returncode, result.stdout), (0, b""))
        self.assertEqual(result.stderr, b"ravlin-cli: " + path +
                         b": the name does not fit the pattern, the file stays as it is\n")
        self.assertEqual(self.read(path), mp3())
        self.assertEqual(self.show(other)["title"], "Song")

    def test_a_failure_does_not_stop_the_rest(self):
        path = self.make("A - B.mp3")
        output, message = self.fail_with(1, "extract", "--dry-run", "--json", "--pattern=%1 - %3", "C - D.mp3", path)
        self.assertEqual([row["file"] for row in json.loads(output)], [os.fsdecode(path)])
        self.assertEqual(message, b"ravlin-cli: C - D.mp3: the file or folder does not exist\n")
        output, again = self.fail_with(1, "extract", "--pattern=%1 - %3", "C - D.mp3", path)
        self.assertEqual((output, again), (b"", message))
        self.assertEqual(self.show(path)["artist"], "A")

    def test_what_cannot_be_saved_is_told(self):
        path = self.make("107 - Song.mp3")
        for options in ([], ["--dry-run"]):
            result = self.run_cli("extract", *options, "--pattern", "%4 - %3", path)
            self.assertEqual(result.returncode, 0)
            self.assertEqual(result.stderr, b"ravlin-cli: " + path +
                             b": track '107' is not saved: a track has one or two digits\n")

    def test_the_preview_says_what_a_save_drops_and_removes(self):
        path = self.make("99 - 100 - Zydeco.mp3", mp3(V2))
        result = self.run_cli("extract", "--dry-run", "--json", "--pattern", "%5 - %4 - %6", path)
        row, = json.loads(result.stdout)
        self.assertEqual((row["year"], row["track"], row["genre"]), ("99", "100", "Zydeco"))
        self.assertEqual(row["remarks"], "the track “100” is not saved: a track has one or two digits; "
                         "the year “99” is not saved: a year has four digits; "
                         "the genre “Zydeco” is not saved: it is not in the table; "
                         "the file loses these fields: track, year, genre")
        self.run_cli("extract", "--pattern", "%5 - %4 - %6", path)
        shown = self.show(path)
        self.assertEqual([shown[key] for key in ("track", "year", "genre", "title")], ["", "", "", "Title"])

    def test_names_that_are_no_unicode(self):
        path = self.make(b"Bj\xf6rk - J\xf3ga.mp3")
        self.succeed("extract", "--pattern", "%1 - %3", path)
        self.assertEqual(self.show(path)["artist"], "Björk")

    def test_long_names_are_marked(self):
        for length, marked in ((64, False), (65, True)):
            path = self.make("é" * (length - 4) + ".mp3")
            self.assertEqual(self.dry("extract", "--pattern", "%3", path)[0]["longName"], marked)

    def test_no_further_file_is_taken_after_a_refusal_for_want_of_space(self):
        path, other = self.make("a.mp3"), self.make("b.mp3")
        free = os.statvfs(self.folder)
        os.truncate(path, free.f_bavail * free.f_frsize + 2**30)  # a hole: takes no room
        _, message = self.fail_with(1, "extract", "--pattern", "%3", path, other)
        self.assertEqual(message, b"ravlin-cli: " + path + b": low disk space, operation cancelled\nravlin-cli: " +
                         other + b": left as it is, and so are the files behind it (1 in all)\n")
        self.assertEqual(self.read(other), mp3())

    def test_the_mode_counts(self):
        path = self.make("Song.mp3")
        self.succeed("extract", "--mode=3", "--pattern=%3", path)
        self.assertEqual((self.show(path)["hasV1"], self.show(path)["hasV2"]), (True, True))

    def test_a_line_a_file_with_tabs(self):
        path = self.make("A - B.mp3")
        lines = self.succeed("extract", "--dry-run", "--pattern", "%1 - %3", path).decode().split("\n")
        self.assertEqual(lines[0].split("\t"), COLUMNS)
        self.assertEqual(lines[1].split("\t"), [os.fsdecode(path), "", "B", "A", "", "", "", "", "no", "no", "no", "yes",
                                                ""])

    def test_nonsense_is_refused(self):
        path = self.make("A - B.mp3")
        for arguments in ([], ["--pattern", b"\xff"], ["--pattern=%3", "--mode=6"]):
            self.fail_with(2, "extract", *arguments, path)
            self.assertEqual(self.read(path), mp3())


class MultiTest(NamingTest):
    def test_sets_the_fields_given_and_keeps_the_others(self):
        paths = [self.make(name, mp3(V2)) for name in ("b.mp3", "a.mp3")]
        arguments = ("multi", "--album", "Neu! – 夜", "--track", "98", *paths)
        rows = self.dry(*arguments)
        self.assertEqual([(row["album"], row["track"], row["artist"], row["written"]) for row in rows],
                         [("Neu! – 夜", "98", "Artist", True), ("Neu! – 夜", "99", "Artist", True)])
        self.assertEqual(self.succeed(*arguments), b"")
        for path, track in zip(paths, ("98", "99")):
            shown = self.show(path)
            self.assertEqual({**shown, "file": "", "hasV1": False, "hasV2": True},
                             {"file": "", "title": "Title", "artist": "Artist", "album": "Neu! – 夜", "year": "1998",
                              "comment": "Comment", "track": track, "genre": "Rock", "hasV1": False, "hasV2": True})
            self.assertTrue(self.read(path).endswith(mp3()))

    def test_conversions_work_on_files_and_texts(self):
        path = self.make("a.mp3", mp3(id3v2(TIT2="my song", TPE1="some one", COMM="a note")))
        arguments = ("multi", "--case", "capitalize", "--replace=underscores", "--album", "the best of", path)
        row = self.dry(*arguments)[0]
        self.assertEqual((row["title"], row["artist"], row["album"], row["comment"]),
                         ("My_Song", "Some_One", "The_Best_Of", "A_Note"))
        self.succeed(*arguments)
        shown = self.show(path)
        self.assertEqual({key: row[key] for key in ("title", "artist", "album", "comment")},
                         {key: shown[key] for key in ("title", "artist", "album", "comment")})
        self.succeed("multi", "--case=lower", "--replace=blanks", path)
        self.assertEqual(self.show(path)["album"], "the best of")

    def test_the_first_failure_ends_the_run(self):
        first, last = self.make("a.mp3"), self.make("b.mp3")
        output, message = self.fail_with(1, "multi", "--album=x", first, "none.mp3", last)
        self.assertEqual(output, b"")
        self.assertEqual(message, b"ravlin-cli: none.mp3: the file or folder does not exist\nravlin-cli: " + last +
                         b": left as it is, and so are the files behind it (1 in all)\n")
        self.assertEqual(self.show(first)["album"], "x")
        self.assertEqual(self.read(last), mp3())
        output, _ = self.fail_with(1, "multi", "--dry-run", "--json", "--album=x", first, "none.mp3", last)
        self.assertEqual([row["file"] for row in json.loads(output)], [os.fsdecode(first)])

    def test_tracks_above_99_are_told_and_removed(self):
        paths = [self.make(name, mp3(V2)) for name in ("a.mp3", "b.mp3")]
        result = self.run_cli("multi", "--track=99", *paths)
        self.assertEqual(result.returncode, 0)
        self.assertEqual(result.stderr, b"ravlin-cli: " + paths[1] +
                         b": track '100' is not saved: a track has one or two digits\n")
        self.assertEqual([self.show(path)["track"] for path in paths], ["99", ""])

    def test_an_empty_text_removes_the_field(self):
        path = self.make("a.mp3", mp3(V2, id3v1(b"Title", b"Artist")))
        self.succeed("multi", "--mode=3", "--artist=", path)
        self.assertEqual((self.show(path)["artist"], self.show(path)["title"]), ("", "Title"))

    def test_nonsense_is_refused(self):
        path = self.make("a.mp3")
        for arguments in ([], ["--mode=2"], ["--track", ""], ["--track=-1"], ["--track=x"], ["--track=٣"],
                          ["--case=10"], ["--replace=x"], ["--album", b"\xff"],
                          ["--album=x", "--mode=0"]):
            self.fail_with(2, "multi", *arguments, path)
            self.assertEqual(self.read(path), mp3(), arguments)


if __name__ == "__main__":
    unittest.main()
