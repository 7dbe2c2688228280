# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: with --only-edited, or when the options say so, commands write only the fields that are given: what else the
file has stays byte for byte, and what no tag can hold is refused. Two programs that save different fields of one file at
once lose nothing. RAVLIN_SAVE_PAIRS: how many such pairs; few by default."""

import json
import os
import subprocess
import unittest

from clitest import CliTest, PROGRAM, id3v2, mp3

KEPT = {"TYER": "2003", "TDAT": "0105", "TRCK": "107", "TCON": "Shoegaze"}
TAG = id3v2(TIT2="Title", TPE1="Artist", **KEPT)


def frames(content):
    """The frames of an ID3v2.3 tag, by identifier."""
    found, offset = {}, 10
    while content[offset:offset + 1].isupper():
        size = int.from_bytes(content[offset + 4:offset + 8], "big")
        found[content[offset:offset + 4].decode()] = content[offset + 10:offset + 10 + size]
        offset += 10 + size
    return found


class OnlyEditedTest(CliTest):
    def choose(self, value):
        """Stores the choice in the options."""
        path = self.config / "ravlin" / "ravlin.ini"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(f"[ini]\ncuida campos={value}\n")

    def kept(self, path):
        """Which of the frames that nobody edited are as they were."""
        now, before = frames(self.read(path)), frames(mp3(TAG))
        return [name for name in KEPT if now.get(name) == before[name]]

    def test_what_is_not_given_stays(self):
        for command in (("tag", "--title", "New"), ("multi", "--artist", "New"), ("multi", "--case", "upper"),
                        ("extract", "--pattern", "%3")):
            path = self.make("a.mp3", mp3(TAG))
            self.succeed(*command, "--only-edited", path)
            self.assertEqual(self.kept(path), list(KEPT), command)
            self.assertNotEqual(self.read(path), mp3(TAG))
            path = self.make("a.mp3", mp3(TAG))
            self.assertEqual(self.run_cli(*command, "--all-fields", path).returncode, 0)
            self.assertEqual(self.kept(path), ["TYER", "TDAT"], command)

    def test_the_options_decide_unless_it_is_said(self):
        for value, options, kept in (("si", (), True), ("no", (), False), ("si", ("--all-fields",), False),
                                     ("no", ("--only-edited",), True), ("si", ("--mode", "2"), True)):
            self.choose(value)
            path = self.make("a.mp3", mp3(TAG))
            self.assertEqual(self.run_cli("tag", "--title", "New", *options, path).returncode, 0)
            self.assertEqual(self.kept(path) == list(KEPT), kept, (value, options))

    def test_nothing_is_warned_of_that_stays(self):
        path = self.make("a.mp3", mp3(TAG))
        result = self.run_cli("tag", "--only-edited", "--title", "New", path)
        self.assertEqual((result.returncode, result.stderr), (0, b""))

    def test_both_options_exclude_each_other(self):
        path = self.make("a.mp3", mp3(TAG))
        self.fail_with(2, "tag", "--only-edited", "--all-fields", "--title", "New", path)
        self.assertEqual(self.read(path), mp3(TAG))

    def test_the_first_and_last_genre(self):
        for genre, number in (("Blues", "(0)"), ("dancehall", "(125)")):
            for command in ("tag", "multi"):
                path = self.make("a.mp3", mp3(TAG))
                self.succeed(command, "--only-edited", "--genre", genre, path)
                self.assertEqual(frames(self.read(path))["TCON"], b"\0" + number.encode())

    def test_what_no_tag_can_hold_is_refused_beforehand(self):
        path = self.make("a.mp3", mp3(TAG))
        for command, option, text in (("tag", "--year", "99"), ("tag", "--track", "107"), ("tag", "--genre", "Own"),
                                      ("multi", "--year", "99"), ("multi", "--genre", "Own")):
            _, message = self.fail_with(2, command, "--only-edited", option, text, path)
            self.assertIn(f"{option} '{text}'".encode(), message)
        self.assertEqual(self.read(path), mp3(TAG))

    def test_numbers_above_99_leave_the_track_and_name_the_file(self):
        paths = [self.make(name, mp3(TAG)) for name in ("a.mp3", "b.mp3", "c.mp3")]
        _, message = self.fail_with(1, "multi", "--only-edited", "--track", "99", "--artist", "New", *paths)
        tracks = [row["track"] for row in json.loads(self.succeed("show", "--json", *paths))]
        self.assertEqual(tracks, ["99", "107", "107"])
        artists = {row["artist"] for row in json.loads(self.succeed("show", "--json", *paths))}
        self.assertEqual(artists, {"New"})
        lines = message.splitlines()
        self.assertEqual([line.split(b": ")[1] for line in lines], paths[1:])
        self.assertIn(b"'100'", lines[0])

    def test_extracted_values_that_no_tag_can_hold_leave_the_files_own(self):
        path = self.make("Own - 5.mp3", mp3(TAG))
        _, message = self.fail_with(1, "extract", "--only-edited", "--pattern", "%6 - %4", path)
        self.assertIn(b"genre 'Own'", message)
        now = frames(self.read(path))
        self.assertEqual((now["TCON"], now["TRCK"]), (frames(mp3(TAG))["TCON"], b"\0" + b"5"))

    def test_a_preview_shows_what_would_be_saved(self):
        path = self.make("Own - 5.mp3", mp3(TAG))
        rows = json.loads(self.succeed("extract", "--only-edited", "--dry-run", "--json", "--pattern", "%6 - %4", path))
        self.assertEqual((rows[0]["genre"], rows[0]["track"]), ("Shoegaze", "5"))
        self.assertIn("Own", rows[0]["remarks"])
        rows = json.loads(self.succeed("multi", "--only-edited", "--dry-run", "--json", "--track", "107", path))
        self.assertEqual((rows[0]["genre"], rows[0]["track"]), ("Shoegaze", "107"))

    def test_two_at_once_lose_nothing(self):
        pairs = int(os.environ.get("RAVLIN_SAVE_PAIRS", "40"))
        path = self.make("a.mp3", mp3(TAG))
        failed = 0
        for pair in range(pairs):
            # Texts of growing and shrinking lengths, so that each way of writing is taken.
            texts = [f"{pair} " + "x" * (pair * 37 % 5000 if pair % 3 else 3) for _ in range(2)]
            programs = [
                subprocess.Popen([PROGRAM, "tag", "--only-edited", "--mode", str(2 + pair % 2), option, text, path],
                                 env=self.environment, stderr=subprocess.DEVNULL)
                for option, text in zip(("--title", "--artist"), texts)]
            done = [program.wait() == 0 for program in programs]
            shown = json.loads(self.succeed("show", "--json", path))[0]
            for field, text, isDone in zip(("title", "artist"), texts, done):
                if isDone:
                    self.assertEqual(shown[field], text, f"pair {pair}")
                failed += not isDone
        self.assertEqual(failed, 0)
        self.assertEqual(self.kept(path), list(KEPT))


if __name__ == "__main__":
    unittest.main()
