# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: "show" tells all fields; "tag" changes those given, by the mode given or stored, and nothing else; "strip"
removes tags. A file that fails is named, and the others are dealt with."""

import json
import os
import resource
import unittest

from clitest import CliTest, id3v1, id3v2, mp3

V2 = id3v2(TIT2="Title", TPE1="Artist", TALB="Album", TYER="1998", COMM="Comment", TRCK="3", TCON="(17)")
V1 = id3v1(b"Title", b"Artist", b"Album", b"1998", b"Comment", 3, 17)
ALL = {"title": "Title", "artist": "Artist", "album": "Album", "year": "1998", "comment": "Comment", "track": "3",
       "genre": "Rock"}


class ShowTest(CliTest):
    def test_all_fields(self):
        for v2, v1 in ((V2, b""), (b"", V1), (V2, V1)):
            path = self.make("a.mp3", mp3(v2, v1))
            self.assertEqual(self.show(path), {"file": os.fsdecode(path), **ALL, "hasV1": bool(v1), "hasV2": bool(v2)})

    def test_no_tag(self):
        shown = self.show(self.make("a.mp3"))
        self.assertEqual({shown[key] for key in ALL}, {""})
        self.assertEqual((shown["hasV1"], shown["hasV2"]), (False, False))

    def test_a_line_a_file(self):
        paths = [self.make("a.mp3", mp3(V2)), self.make(b"\xff.mp3", mp3(V2))]
        self.assertEqual(self.succeed("show", *paths).split(b"\n"), [
            b"file\ttitle\tartist\talbum\tyear\tcomment\ttrack\tgenre\thasV1\thasV2",
            *(path + b"\tTitle\tArtist\tAlbum\t1998\tComment\t3\tRock\tno\tyes" for path in paths), b""])

    def test_failures_leave_valid_json(self):
        path = self.make("a.mp3", mp3(V2))
        output, message = self.fail_with(1, "show", "--json", b"no\xff.mp3", path, self.folder, "")
        self.assertEqual([row["title"] for row in json.loads(output)], ["Title"])
        lines = message.split(b"\n")
        self.assertEqual(lines[0], b"ravlin-cli: no\xff.mp3: the file or folder does not exist")
        self.assertTrue(lines[1].startswith(b"ravlin-cli: " + os.fsencode(self.folder) + b": "))
        self.assertTrue(lines[2].startswith(b'ravlin-cli: "": '))
        output, _ = self.fail_with(1, "show", "--json", "none")
        self.assertEqual(json.loads(output), [])

    def test_a_genre_beyond_the_table_is_told_and_the_rest_shown(self):
        path = self.make("a.mp3", mp3(b"", id3v1(b"Old", genre=150)))
        result = self.run_cli("show", "--json", path)
        self.assertEqual([(row["title"], row["genre"]) for row in json.loads(result.stdout)], [("Old", "150")])
        self.assertEqual(result.stderr,
                         b"ravlin-cli: " + path + b": the genre number is not in the genre table\n")
        self.assertEqual(result.returncode, 0)

    def test_names_with_hyphens(self):
        self.make("-x.mp3", mp3(V2))
        self.make("-", mp3(V2))
        for arguments in (("--", "-x.mp3"), ("-",), ("--", "-")):
            result = self.run_cli("show", "--json", *arguments, cwd=self.folder)
            self.assertEqual((result.returncode, len(json.loads(result.stdout))), (0, 1))


class TagTest(CliTest):
    def kinds(self, path):
        content = self.read(path)
        return content[-128:-125] == b"TAG", content[:3] == b"ID3"

    def test_every_field_is_set(self):
        path = self.make("a.mp3")
        values = {"title": "-1-", "artist": "Ñandú", "album": "夜の図書館", "year": "2004", "comment": "--title",
                  "track": "07", "genre": "dance"}
        arguments = []
        for key, value in values.items():
            arguments += ["--" + key, value]
        self.assertEqual(self.succeed("tag", *arguments, path), b"")
        shown = self.show(path)
        self.assertEqual({key: shown[key] for key in values}, {**values, "track": "7", "genre": "Dance"})

    def test_only_what_is_given_changes(self):
        path = self.make("a.mp3", mp3(V2))
        self.succeed("tag", "--album=-x", path)
        self.succeed("tag", path, "--title", "")
        shown = self.show(path)
        self.assertEqual({key: shown[key] for key in ALL}, {**ALL, "album": "-x", "title": ""})
        self.assertTrue(self.read(path).endswith(mp3()))

    def test_every_mode(self):
        for mode, kinds in ((1, (True, False)), (2, (False, True)), (3, (True, True)), (4, (True, False)),
                            (5, (False, True))):
            path = self.make("a.mp3")
            self.succeed("tag", "--mode", str(mode), "--title", "x", path)
            self.assertEqual(self.kinds(path), kinds, mode)

    def test_modes_4_and_5_remove_the_other_tag(self):
        path = self.make("a.mp3", mp3(V2))
        self.succeed("tag", "--mode=4", path)
        self.assertEqual(self.kinds(path), (True, False))
        self.succeed("tag", "--mode=5", path)
        self.assertEqual(self.kinds(path), (False, True))
        self.assertEqual(self.show(path)["title"], "Title")

    def warning(self, *arguments):
        """What standard error says of the one file; the command succeeds."""
        result = self.run_cli(*arguments)
        self.assertEqual(result.returncode, 0, result.stderr)
        prefix = b"ravlin-cli: " + os.fsencode(arguments[-1]) + b": "
        self.assertTrue(not result.stderr or result.stderr.startswith(prefix), result.stderr)
        return result.stderr[len(prefix):].decode().rstrip("\n")

    def test_mode_4_tells_what_id3v1_cannot_hold(self):
        characters = "characters outside Latin-1 (“???” or similar letters)"
        cut = "letters beyond 30 (28 in a comment beside a track)"
        pictures = "pictures"
        picture = id3v2(TIT2="Title", APIC="image/png\0\3cover\0xxxx")
        for content, given, losses in (
                (mp3(), ("--title", "夜"), [characters]), (mp3(), ("--artist", "Dvořák"), [characters]),
                (mp3(), ("--album", "x" * 31), [cut]), (mp3(), ("--album", "x" * 30), []),
                (mp3(), ("--comment", "x" * 30), []), (mp3(), ("--comment", "x" * 29, "--track", "1"), [cut]),
                (mp3(), ("--comment", "x" * 28, "--track", "1"), []), (mp3(), ("--title", "Año, 50 ©"), []),
                (mp3(picture), ("--title", "x"), [pictures]),
                (mp3(id3v2(TIT2="夜" * 40, APIC="image/png\0\3cover\0xxxx")), ("--artist", "x"), [characters, cut, pictures])):
            expected = "lost in ID3v1: " + ", ".join(losses) if losses else ""
            for mode in (1, 2, 3, 5):
                self.succeed("tag", "--mode", str(mode), *given, self.make("b.mp3", content))
            path = self.make("a.mp3", content)
            self.assertEqual(self.warning("tag", "--mode=4", *given, path), expected, given)
            if "--title" in given or given[0] == "--comment":
                continue # multi does not set a title, and numbers the files
            path = self.make("a.mp3", content)
            self.assertEqual(self.warning("multi", "--mode=4", "--dry-run", *given, path), expected, given)
            self.assertEqual(self.read(path), content)
            self.assertEqual(self.warning("multi", "--mode=4", *given, path), expected, given)
        path = self.make("夜.mp3", mp3(picture))
        for options in (["--dry-run"], []):
            self.assertEqual(self.warning("extract", "--mode=4", *options, "--pattern=%3", path),
                             f"lost in ID3v1: {characters}, {pictures}")

    def settings(self, tags):
        file = self.config / "ravlin" / "ravlin.ini"
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(f"[ini]\ntags={tags}\n")

    def test_the_stored_mode_1_tells_that_the_other_tag_is_shown(self):
        told = "ID3v1 is written; the list shows ID3v2"
        for content, expected in ((mp3(V2, V1), told), (mp3(V2), told), (mp3(b"", V1), ""), (mp3(), "")):
            for command in (("tag", "--album=New"), ("multi", "--album=New"), ("multi", "--album=New", "--dry-run"),
                            ("extract", "--pattern=%2"), ("extract", "--pattern=%2", "--dry-run")):
                with self.subTest(command=command, expected=expected):
                    self.settings(tags="1")
                    self.assertEqual(self.warning(*command, self.make("a.mp3", content)), expected)
                    self.succeed(*command, "--mode=1", self.make("a.mp3", content))
                    self.settings(tags="3")
                    self.succeed(*command, self.make("a.mp3", content))

    def test_the_stored_mode_counts_and_is_never_written(self):
        settings = self.config / "ravlin" / "ravlin.ini"
        path = self.make("a.mp3")
        self.succeed("tag", "--title=x", path)
        self.assertEqual(self.kinds(path), (False, True))
        self.assertFalse(self.config.exists())
        settings.parent.mkdir(parents=True)
        for stored, kinds in (("1", (True, False)), ("3", (True, True)), ("9", (False, True))):
            settings.write_text("[ini]\ntags=%s\n" % stored)
            path = self.make("a.mp3")
            self.succeed("tag", "--title=x", path)
            self.assertEqual(self.kinds(path), kinds, stored)
            self.assertEqual(settings.read_text(), "[ini]\ntags=%s\n" % stored)
            self.assertEqual([file.name for file in settings.parent.iterdir()], ["ravlin.ini"])

    def test_settings_that_cannot_be_read_stop_it(self):
        settings = self.config / "ravlin" / "ravlin.ini"
        settings.mkdir(parents=True)
        path = self.make("a.mp3")
        _, message = self.fail_with(1, "tag", "--title=x", path)
        self.assertIn(os.fsencode(settings), message)
        self.assertEqual(self.read(path), mp3())
        self.succeed("tag", "--mode=2", "--title=x", path)

    def test_what_cannot_be_written_is_removed_with_a_warning(self):
        for option, key, value in (("--year", "year", "99"), ("--year", "year", "1999a"), ("--track", "track", "107"),
                                   ("--track", "track", "7/12"), ("--genre", "genre", "Blues"),
                                   ("--genre", "genre", "DanceHall"), ("--genre", "genre", "Nonsense")):
            path = self.make("a.mp3", mp3(V2))
            result = self.run_cli("tag", option, value, path)
            self.assertEqual((result.returncode, result.stdout), (0, b""))
            self.assertIn(("%s '%s' is not saved" % (key, value)).encode(), result.stderr)
            self.assertEqual(self.show(path)[key], "")

    def test_a_free_genre_is_lost_with_a_warning(self):
        path = self.make("a.mp3", mp3(id3v2(TCON="My own")))
        result = self.run_cli("tag", "--title", "x", path)
        self.assertEqual(result.returncode, 0)
        self.assertTrue(result.stderr.startswith(b"ravlin-cli: " + path + b": genre 'My own' is not saved: "))
        self.assertEqual(self.show(path)["genre"], "")

    def test_a_genre_beyond_the_table_does_not_stop_it(self):
        path = self.make("a.mp3", mp3(b"", id3v1(b"Old", genre=150)))
        self.assertEqual(self.run_cli("tag", "--title", "New", path).returncode, 0)
        content = self.read(path)
        self.assertIn(b"TIT2", content)
        self.assertNotIn(b"TRCK", content)

    def test_a_failure_does_not_stop_the_rest(self):
        first, last = self.make("a.mp3"), self.make(b"\xfe.mp3")
        output, message = self.fail_with(1, "tag", "--title", "x", first, "none.mp3", self.folder, "", last)
        self.assertEqual(output, b"")
        self.assertEqual(message.count(b"\n"), 3)
        self.assertEqual([self.show(path)["title"] for path in (first, last)], ["x", "x"])

    def test_read_only_files_are_tagged_and_stay_read_only(self):
        path = self.make("a.mp3")
        os.chmod(path, 0o444)
        self.succeed("tag", "--title", "x", path)
        self.assertEqual(self.show(path)["title"], "x")
        self.assertEqual(os.stat(path).st_mode & 0o777, 0o444)

    def test_texts_that_are_no_unicode_are_refused(self):
        path = self.make("a.mp3")
        _, message = self.fail_with(2, "tag", "--title", b"caf\xe9", path)
        self.assertIn(b"--title", message)
        self.assertEqual(self.read(path), mp3())

    def test_wrong_modes_are_refused(self):
        path = self.make("a.mp3")
        for mode in ("0", "6", "12", "", "x", "٣"):
            self.fail_with(2, "tag", "--mode", mode, "--title=x", path)
            self.assertEqual(self.read(path), mp3())

    def test_saving_twice_writes_once(self):
        path = self.make("a.mp3")
        self.succeed("tag", "--title", "x", path)
        os.utime(path, ns=(1, 1))
        self.succeed("tag", "--title", "x", path)
        self.assertEqual(os.stat(path).st_mtime_ns, 1)

    def test_leftovers_of_interrupted_writes_are_cleared_away(self):
        path = self.make("a.mp3")
        leftover = self.leftover_name()
        for arguments in (("tag", "--title=x"), ("strip", "--v2")):
            stale = self.make(leftover, b"half")
            os.chmod(stale, 0o600)
            os.utime(stale, (0, 0))
            link = os.path.join(os.path.dirname(os.fsencode(self.folder)), b"link.mp3")
            if not os.path.islink(link):
                os.symlink(path, link)
            self.succeed(*arguments, link)
            self.assertFalse(os.path.exists(stale), arguments)

    def test_a_full_drive_is_refused_beforehand(self):
        path, other = self.make("a.mp3"), self.make("b.mp3")
        free = os.statvfs(self.folder)
        os.truncate(path, free.f_bavail * free.f_frsize + 2**30)  # a hole: takes no room
        _, message = self.fail_with(1, "tag", "--mode=3", "--title=x", path, other)
        self.assertEqual(message, b"ravlin-cli: " + path + b": low disk space, operation cancelled\n")
        with open(path, "rb") as file:
            self.assertEqual(file.read(len(mp3())), mp3())
        self.assertEqual(self.show(other)["title"], "x")

    def leftover_name(self):
        """The form of name that core/storage/leftovers.cpp gives."""
        return ".ravlin-0123456789abcdef.tmp"


class StripTest(CliTest):
    def test_each_tag(self):
        for options, expected in ((["--v1"], mp3(V2)), (["--v2"], mp3(b"", V1)), (["--v1", "--v2"], mp3())):
            path = self.make("a.mp3", mp3(V2, V1))
            self.assertEqual(self.succeed("strip", *options, path), b"")
            self.assertEqual(self.read(path), expected)

    def test_a_file_without_tags_stays(self):
        path = self.make("a.mp3")
        self.succeed("strip", "--v1", "--v2", path)
        self.assertEqual(self.read(path), mp3())

    def test_read_only_files_are_left_alone_and_the_rest_is_done(self):
        path, other = self.make("a.mp3", mp3(V2, V1)), self.make("b.mp3", mp3(V2, V1))
        os.chmod(path, 0o444)
        _, message = self.fail_with(1, "strip", "--v1", "--v2", path, "none.mp3", other)
        self.assertEqual(message.split(b"\n")[:2], [
            b"ravlin-cli: " + path + b": the file is read-only",
            b"ravlin-cli: none.mp3: the file or folder does not exist"])
        self.assertEqual((self.read(path), self.read(other)), (mp3(V2, V1), mp3()))

    def test_which_tag_must_be_said(self):
        path = self.make("a.mp3", mp3(V2, V1))
        self.fail_with(2, "strip", path)
        self.assertEqual(self.read(path), mp3(V2, V1))

    def test_a_limit_on_file_sizes_is_an_error_of_one_file(self):
        # Without care the system ends the program that exceeds it.
        large = self.make("large.mp3", mp3(frames=40))
        before = self.read(large)
        small = self.make("small.mp3", mp3(frames=2))
        limit = 10_000
        result = self.run_cli("tag", "--title", "title", large,
            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
        self.assertEqual(result.returncode, 1, result.stderr)
        self.assertIn(b"the file would be larger than the system allows here", result.stderr)
        self.assertEqual(self.read(large), before)
        self.assertEqual(os.listdir(self.folder), [name for name in os.listdir(self.folder) if not name.startswith(".ravlin")])
        result = self.run_cli("tag", "--title", "title", small,
            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(self.show(small)["title"], "title")


if __name__ == "__main__":
    unittest.main()
