# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: every command that writes tags writes into MP3 files only, judged by the file's own name and by its content.
What is refused is named, stays as it is to the last byte, and makes the status 1; the other files are dealt with.
"--force" overrides the judgement of the content, never that of the name. "rename" changes names that end in .mp3."""

import json
import os
import stat
import unittest

from clitest import CliTest, FRAME, id3v1, id3v2, mp3


V1 = id3v1(b"Title", b"Artist", b"Album", b"1998", b"", 3, 17)
V2 = id3v2(TIT2="Title", TPE1="Artist")
NOISE = bytes((7 * i + i // 11) & 0x7F for i in range(5000))
PNG = b"\x89PNG\r\n\x1a\n\0\0\0\rIHDR" + NOISE
TEXT = b"export PATH=/bin\nalias ll='ls -l'\n"
OTHERS = {"PNG": PNG, "JPEG": b"\xff\xd8\xff\xe0\0\x10JFIF\0" + NOISE, "FLAC": b"fLaC\0\0\0\x22" + NOISE,
          "MP4": b"\0\0\0\x20ftypM4A " + NOISE, "ZIP": b"PK\x03\x04\x14\0" + NOISE, "ELF": b"\x7fELF\x02\x01\x01\0" + NOISE,
          "RIFF": b"RIFF\x24\0\0\0WAVEfmt \x10\0\0\0\x01\0\x02\0" + NOISE, "text": TEXT}
NAME = b"only mp3 files are changed, and the file's own name does not end in .mp3"
CONTENT = b"only mp3 files are changed, and the file's content is of another format (%s)"
# Each command that writes tags. With the files of these tests all of them have something to write.
WRITERS = (("tag", "--title", "New"), ("tag", "--mode", "1", "--title", "New"), ("tag", "--mode", "5", "--title", "New"),
           ("multi", "--artist", "New"), ("multi", "--track", "1"), ("extract", "--pattern", "%1"),
           ("strip", "--v1"), ("strip", "--v2"), ("strip", "--v1", "--v2"))


class OnlyMp3Test(CliTest):
    def state(self, path):
        """What a refused file must keep: its content, mode, and the time of its last change of any kind."""
        status = os.lstat(path)
        return self.read(path), stat.S_IMODE(status.st_mode), status.st_ino, status.st_ctime_ns

    def refuse(self, reason, path, *command, target=None):
        """The command refuses the file and deals with those before and behind it."""
        first = self.make("first.mp3", mp3(V2, V1))
        last = self.make("last.mp3", mp3(V2, V1))
        before = self.state(target or path)
        _, message = self.fail_with(1, *command, "--", first, path, last)
        self.assertEqual(message, b"ravlin-cli: " + path + b": " + reason + b"\n", command)
        self.assertEqual(self.state(target or path), before, command)
        for other in (first, last):
            self.assertNotEqual(self.read(other), mp3(V2, V1), command)


class ContentTest(OnlyMp3Test):
    def test_other_formats_are_refused(self):
        for name, content in OTHERS.items():
            path = self.make("a.mp3", content + V1)
            for command in WRITERS:
                with self.subTest(name, command=command):
                    self.refuse(CONTENT % name.encode(), path, *command)

    def test_a_file_that_would_stay_the_same_is_refused_too(self):
        path = self.make("a.mp3", PNG)
        for command in (("strip", "--v1"), ("strip", "--v2")):
            self.assertEqual(self.fail_with(1, *command, path)[1], b"ravlin-cli: " + path + b": " + CONTENT % b"PNG" + b"\n")

    def test_force_overrides_it(self):
        for name, content in OTHERS.items():
            for command in WRITERS:
                with self.subTest(name, command=command):
                    path = self.make("a.mp3", V2 + content + V1)
                    self.succeed(*command, "--force", path)
                    written = self.read(path)
                    self.assertNotEqual(written, V2 + content + V1)
                    self.assertIn(content, written)

    def test_what_is_no_other_format_needs_no_force(self):
        riff = b"RIFF\xff\0\0\0WAVEfmt \x1e\0\0\0\x55\0" + bytes(28) + b"data\xff\0\0\0" + FRAME * 5
        for content in (b"", FRAME, NOISE, bytes(500), FRAME[:50], riff, NOISE + FRAME * 5, TEXT + FRAME * 2,
                        PNG + FRAME * 2 + NOISE):
            for command in WRITERS:
                path = self.make("a.mp3", V2 + content + V1)
                self.succeed(*command, path)
                self.assertIn(content, self.read(path))

    def test_a_dry_run_refuses_as_the_run_does(self):
        good = self.make("good.mp3", mp3(V2))
        bad = self.make("bad.mp3", PNG)
        for command in (("multi", "--track", "1"), ("extract", "--pattern", "%1")):
            output, message = self.fail_with(1, *command, "--dry-run", "--json", bad, good)
            self.assertEqual([row["file"] for row in json.loads(output)], [os.fsdecode(good)])
            self.assertEqual(message, b"ravlin-cli: " + bad + b": " + CONTENT % b"PNG" + b"\n")
            rows = self.json(*command, "--dry-run", "--json", "--force", bad, good)
            self.assertEqual(len(rows), 2)

    def test_a_refused_file_gets_no_number(self):
        paths = [self.make(name, content) for name, content in
                 (("1.mp3", mp3()), ("2.mp3", PNG), ("3.jpg", mp3()), ("4.mp3", mp3()))]
        output, _ = self.fail_with(1, "multi", "--track", "1", "--dry-run", "--json", *paths)
        self.assertEqual([row["track"] for row in json.loads(output)], ["1", "2"])
        self.fail_with(1, "multi", "--track", "1", *paths)
        self.assertEqual([self.show(paths[0])["track"], self.show(paths[3])["track"]], ["1", "2"])


class NameTest(OnlyMp3Test):
    def test_other_names_are_refused_whatever_the_content(self):
        for name in ("song", "song.mp2", "song.mp3.txt", "mp3", "cover.jpg", ".profile"):
            path = self.make(name, mp3(V2, V1))
            for command in WRITERS:
                self.refuse(NAME, path, *command)
                self.refuse(NAME, path, *command, "--force")

    def test_the_case_of_the_extension_does_not_matter(self):
        for name in ("a.mp3", "A.MP3", "a.Mp3", ".mp3"):
            path = self.make(name, mp3(V2, V1))
            self.succeed("tag", "--title", "New", path)
            self.assertEqual(self.show(path)["title"], "New")

    def test_the_name_of_a_links_target_counts(self):
        secret = self.make("home/.profile", mp3(V2, V1))
        os.chmod(secret, 0o400)
        for name, target in (("a.mp3", "home/.profile"), ("b.mp3", "a.mp3"), ("folder/c.mp3", "../home/.profile")):
            os.makedirs(self.folder / "folder", exist_ok=True)
            link = os.fsencode(self.folder / name)
            os.symlink(target, link)
            for command in WRITERS:
                self.refuse(NAME, link, *command, target=secret)
                self.refuse(NAME, link, *command, "--force", target=secret)
            self.assertEqual(os.readlink(link), os.fsencode(target))

    def test_links_to_music_are_followed_under_any_name(self):
        song = self.make("song.mp3", mp3(V2))
        for name in ("a.mp3", "a link"):
            link = os.fsencode(self.folder / name)
            os.symlink("song.mp3", link)
            self.succeed("tag", "--title", name, link)
            self.assertEqual(self.show(song)["title"], name)
            self.assertTrue(os.path.islink(link))

    def test_a_link_through_a_folder(self):
        song = self.make("real/song.mp3", mp3(V2))
        os.symlink("real", self.folder / "folder.mp3")
        self.succeed("tag", "--title", "New", os.path.join(os.fsencode(self.folder), b"folder.mp3", b"song.mp3"))
        self.assertEqual(self.show(song)["title"], "New")
        profile = self.make("real/.profile", TEXT)
        _, message = self.fail_with(1, "tag", "--force", "--title", "New",
                                    os.path.join(os.fsencode(self.folder), b"folder.mp3", b".profile"))
        self.assertTrue(message.endswith(NAME + b"\n"), message)
        self.assertEqual(self.read(profile), TEXT)

    def test_an_archive_cannot_write_a_start_up_file(self):
        """A link whose name is a command in lines, and whose target a shell reads."""
        profile = self.make("../home/.profile", TEXT)
        os.chmod(profile, 0o400)
        name = b"Band - Song\ntouch PWNED\n#.mp3"
        os.symlink("../home/.profile", os.path.join(os.fsencode(self.folder), name))
        song = self.make("Other - Tune.mp3", mp3())
        before = self.state(profile)
        for force in ((), ("--force",)):
            result = self.run_cli("extract", "--pattern", "%1 - %3", *force, name, b"Other - Tune.mp3", cwd=self.folder)
            self.assertEqual(result.returncode, 1)
            self.assertIn(NAME, result.stderr)
            self.assertEqual(self.state(profile), before)
        self.assertEqual(self.show(song)["artist"], "Other")


class RenameTest(OnlyMp3Test):
    RULE = ("rename", "--rule", "artist-title")

    def names(self):
        return sorted(os.listdir(self.folder))

    def test_only_names_of_music_are_changed(self):
        for name in ("cover.jpg", "song", "song.mp2", "x.mp3.bak", "mp3"):
            path = self.make(name, mp3(V2))
            before = self.names()
            for command in ((*self.RULE,), ("rename", "--pattern", "x %6")):
                for dry in ((), ("--dry-run",)):
                    _, message = self.fail_with(1, *command, *dry, path)
                    self.assertEqual(message, b"ravlin-cli: " + path + b": " + NAME + b"\n")
                    self.assertEqual(self.names(), before)
            os.remove(path)

    def test_the_others_are_renamed(self):
        paths = [self.make(name, mp3(id3v2(TPE1="A", TIT2=name))) for name in ("1.MP3", "cover.jpg", "2.mp3")]
        self.fail_with(1, *self.RULE, *paths)
        self.assertEqual(self.names(), ["A - 1.MP3.mp3", "A - 2.mp3.mp3", "cover.jpg"])

    def test_a_name_that_is_nothing_but_the_extension(self):
        path = self.make(".mp3", mp3(V2))
        self.succeed(*self.RULE, path)
        self.assertEqual(self.names(), ["Artist - Title.mp3"])

    def test_of_a_link_its_own_name_counts_and_changes(self):
        self.make("real.mp3", mp3(V2))
        self.make("other", mp3(V2))
        for name, target in (("link.mp3", "real.mp3"), ("link", "real.mp3")):
            os.symlink(target, self.folder / name)
        self.fail_with(1, *self.RULE, os.fsencode(self.folder / "link"))
        self.succeed(*self.RULE, os.fsencode(self.folder / "link.mp3"))
        self.assertEqual(self.names(), ["Artist - Title.mp3", "link", "other", "real.mp3"])
        self.assertEqual(os.readlink(self.folder / "Artist - Title.mp3"), "real.mp3")

    def test_folders_keep_their_rule(self):
        self.make("album.d/a.mp3", mp3(id3v2(TPE1="Artist", TALB="Album")))
        self.succeed("renamedir", "--pattern", "%1 %2", os.fsencode(self.folder / "album.d"))
        self.assertEqual(self.names(), ["Artist Album"])


if __name__ == "__main__":
    unittest.main()
