# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: "list" gives the eight columns of every MP3 file of a folder, of its subfolders if asked, ordered by name
inside each folder; as JSON, with tabs, or aligned on a terminal; whatever the names and tags hold."""

import json
import os
import unittest

from clitest import WITHOUT_PRIVILEGES, CliTest, id3v1, id3v2, mp3


class ListTest(CliTest):
    def names(self, *arguments):
        return [row["file"] for row in self.json("list", "--json", *arguments)]

    def test_all_columns(self):
        self.make("tema.mp3", mp3(id3v2(TIT2="Título", TPE1="Ana \"Q\"", TALB="夜の図書館", TYER="1998", TRCK="7/12")))
        self.make("viejo.mp3", mp3(b"", id3v1(b"Old", b"Artist", b"Album", b"1971", b"", 12, 17)))
        self.assertEqual(self.json("list", "--json", self.folder), [
            {"file": "tema.mp3", "track": "07", "title": "Título", "artist": "Ana \"Q\"", "album": "夜の図書館",
             "year": "1998", "id3v1": False, "id3v2": True},
            {"file": "viejo.mp3", "track": "12", "title": "Old", "artist": "Artist", "album": "Album", "year": "1971",
             "id3v1": True, "id3v2": False}])

    def test_a_folder_without_mp3_files(self):
        self.make("notes.txt", b"")
        self.assertEqual(self.json("list", "--json", self.folder), [])
        self.assertEqual(self.succeed("list", self.folder), b"file\ttrack\ttitle\tartist\talbum\tyear\tid3v1\tid3v2\n")

    def test_order_is_by_name_without_case(self):
        for name in ("b.mp3", "A.mp3", "a.mp3", "C.MP3", "ñ.mp3", "Ñ2.mp3", "sub/A.mp3", "sub/b.mp3", "Other/z.mp3",
                     "sub/deep/0.mp3"):
            self.make(name)
        own = ["A.mp3", "a.mp3", "b.mp3", "C.MP3", "ñ.mp3", "Ñ2.mp3"]
        self.assertEqual(self.names(self.folder), own)
        self.assertEqual(self.names("--recursive", self.folder),
                         own + ["Other/z.mp3", "sub/A.mp3", "sub/b.mp3", "sub/deep/0.mp3"])

    def test_a_separator_behind_the_folder_makes_no_difference(self):
        self.make("sub/a.mp3")
        for folder in (f"{self.folder}", f"{self.folder}/", f"{self.folder}//"):
            self.assertEqual([name.lstrip("/") for name in self.names("--recursive", folder)], ["sub/a.mp3"])

    def test_names_that_are_no_unicode(self):
        self.make(b"caf\xe9 \xff.mp3")
        output = self.succeed("list", "--json", self.folder)
        output.decode("utf-8")
        self.assertIn(b"caf\\udce9 \\udcff.mp3", output)
        self.assertEqual(os.fsencode(json.loads(output)[0]["file"]), b"caf\xe9 \xff.mp3")
        self.assertIn(b"\ncaf\xe9 \xff.mp3\t", self.succeed("list", self.folder))

    def test_names_with_every_odd_character(self):
        name = "".join(chr(code) for code in range(1, 128) if chr(code) != "/") + "\u2028\U0001f3b5.mp3"
        self.make(name)
        self.assertEqual(self.names(self.folder), [name])
        line = self.succeed("list", self.folder).split(b"\n")[1]
        self.assertEqual(len(line.split(b"\t")), 8)

    def test_folders_with_odd_names(self):
        for name in (b"-x", b"--json", b"\xfe"):
            self.make(name + b"/a.mp3")
            result = self.run_cli("list", "--json", "--", name, cwd=self.folder)
            self.assertEqual((result.returncode, len(json.loads(result.stdout))), (0, 1))

    def test_tabs_and_line_ends_in_tags_break_no_line(self):
        self.make("a.mp3", mp3(id3v2(TIT2="one\ttwo\nthree\\four")))
        lines = self.succeed("list", self.folder).decode().split("\n")
        self.assertEqual(lines[1].split("\t")[2], r"one\ttwo\nthree\\four")
        self.assertEqual(len(lines), 3)

    def test_a_terminal_gets_aligned_columns(self):
        self.make("夜.mp3", mp3(id3v2(TIT2="one\x1b[31m")))
        self.make("longer name.mp3")
        self.assertEqual(self.on_terminal("list", str(self.folder)),
                         "file             track  title        artist  album  year  id3v1  id3v2\n"
                         "longer name.mp3                                           no     no\n"
                         "夜.mp3                  one\\x1b[31m                       no     yes\n")

    def test_what_cannot_be_listed(self):
        file = self.make("a.mp3")
        for folder, reason in ((self.folder / "none", b"does not exist"), (file, b"not a folder"),
                               ("", b'"": the file or folder does not exist')):
            for options in ([], ["--recursive"]):
                output, message = self.fail_with(1, "list", "--json", *options, folder)
                self.assertEqual(json.loads(output), [])
                self.assertIn(reason, message)

    def test_a_file_that_cannot_be_read_does_not_stop_the_rest(self):
        if not self.can_drop_privileges():
            self.skipTest("the superuser may read everything, and setpriv cannot change that here")
        os.chmod(self.make("a.mp3"), 0)
        self.make("b.mp3")
        self.prefix = WITHOUT_PRIVILEGES
        output, message = self.fail_with(1, "list", "--json", self.folder)
        self.assertEqual([row["file"] for row in json.loads(output)], ["b.mp3"])
        self.assertEqual(message, b"ravlin-cli: " + os.fsencode(self.folder)
                         + b"/a.mp3: the system refuses access to the file\n")


if __name__ == "__main__":
    unittest.main()
