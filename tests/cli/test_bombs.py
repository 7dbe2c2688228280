# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: a tag that is made to eat memory or time costs little. What is found of it is shown and marked, nothing is
written into its file, and the other files are dealt with."""

import json
import os
import subprocess
import sys
import unittest
import zlib

from clitest import PROGRAM, CliTest, frame, id3v1, id3v2, mp3

MEBI = 1 << 20
MARK = b": tag too large: only a part of it is read, and the file is left as it is\n"


# Runs a program and prints its peak. Starts it from a small process, whose own memory is the least that counts.
MEASURE = """
import os, subprocess, sys
process = subprocess.Popen(sys.argv[1:], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
print(os.wait4(process.pid, 0)[2].ru_maxrss)
process.returncode = 0
"""


def syncsafe(number):
    return bytes((number >> shift) & 0x7F for shift in (21, 14, 7, 0))


def tag(body, version=3, flags=0, claimed=None):
    return b"ID3" + bytes((version, 0, flags)) + syncsafe(len(body) if claimed is None else claimed) + body


def compressed(identifier, version=3, content=bytes(MEBI)):
    """A compressed frame: a kilobyte for a mebibyte of zeros."""
    packed = zlib.compress(content, 9)
    if version == 3:
        body = len(content).to_bytes(4, "big") + packed
        return identifier + len(body).to_bytes(4, "big") + b"\0\x80" + body
    body = syncsafe(len(content)) + packed
    return identifier + syncsafe(len(body)) + b"\0\x09" + body


def bomb(identifier=b"TIT2", version=3, count=200):
    artist = frame("TPE1", "Artist") if version == 3 else b"TPE1" + syncsafe(7) + b"\0\0\0Artist"
    return tag(artist + compressed(identifier, version) * count, version) + mp3()


class BombTest(CliTest):
    def peak_of(self, *arguments):
        """Most kilobytes of memory that a run had."""
        # The address sanitizer holds back memory that was freed; of that there shall be little.
        options = os.environ.get("ASAN_OPTIONS", "") + ":quarantine_size_mb=1:thread_local_quarantine_size_kb=64"
        result = subprocess.run([sys.executable, "-c", MEASURE, PROGRAM, *arguments], check=True, timeout=60,
                                capture_output=True, env={**self.environment, "ASAN_OPTIONS": options})
        return int(result.stdout)

    def test_show_tells_what_was_found_and_marks_it(self):
        for version in (3, 4):
            path = self.make("a.mp3", bomb(version=version))
            output, message = self.fail_with(1, "show", "--json", path)
            shown = json.loads(output)[0]
            self.assertEqual((shown["artist"], shown["title"], shown["tagTooLarge"]), ("Artist", "", True))
            self.assertEqual(message, b"ravlin-cli: " + path + MARK)
            output, _ = self.fail_with(1, "show", path)
            self.assertEqual(output.split(b"\n")[0].count(b"\t"), 9)

    def test_ordinary_files_bear_no_mark(self):
        path = self.make("a.mp3", mp3(id3v2(TIT2="Title")))
        self.assertNotIn("tagTooLarge", self.show(path))
        self.assertNotIn("tagTooLarge", self.json("list", "--json", self.folder)[0])

    def test_list_goes_on_with_the_others(self):
        bombs = [self.make(f"b{version}.mp3", bomb(version=version)) for version in (3, 4)]
        self.make("c.mp3", mp3(id3v2(TIT2="Title")))
        output, message = self.fail_with(1, "list", "--json", self.folder)
        rows = json.loads(output)
        self.assertEqual([row["artist"] for row in rows], ["Artist", "Artist", ""])
        self.assertEqual([row.get("tagTooLarge") for row in rows], [True, True, None])
        self.assertEqual(message, b"".join(b"ravlin-cli: " + path + MARK for path in bombs))

    def test_every_writer_refuses_the_file_and_goes_on(self):
        hostile = bomb(b"COMM")
        usual = mp3(id3v2(TIT2="Title", TPE1="Artist"), id3v1(b"Title"))
        for arguments in (("tag", "--title", "New"), ("tag", "--mode", "1", "--title", "New"), ("strip", "--v1"),
                          ("strip", "--v2"), ("multi", "--album", "New"), ("extract", "--pattern", "%1"),
                          ("rename", "--pattern", "new %3")):
            with self.subTest(arguments):
                path = self.make("a.mp3", hostile)
                other = self.make("b.mp3", usual)
                result = self.run_cli(*arguments, path, other)
                self.assertEqual((result.returncode, result.stderr), (1, b"ravlin-cli: " + path + MARK))
                self.assertEqual(self.read(path), hostile)
                self.assertFalse(os.path.exists(other) and self.read(other) == usual)

    def test_a_refused_song_keeps_its_number(self):
        paths = [self.make("1.mp3", mp3()), self.make("2.mp3", bomb()), self.make("3.mp3", mp3())]
        self.fail_with(1, "multi", "--track", "1", *paths)
        self.assertEqual([self.show(paths[0])["track"], self.show(paths[2])["track"]], ["1", "3"])

    def test_memory_stays_within_bounds(self):
        ordinary = self.make("plain/a.mp3", mp3(id3v2(TIT2="Title")))
        usual = max(self.peak_of("list", os.path.dirname(ordinary)), self.peak_of("show", ordinary))
        text = compressed(b"TIT2", content=b"\0A" + bytes(MEBI - 3) + b"B")  # each zero becomes a separator
        huge = 200 * MEBI
        hostile = {
            "zeros": bomb(), "zeros of 2.4": bomb(version=4), "comments": bomb(b"COMM"),
            "separators": tag(text * 200) + mp3(), "wide": tag(compressed(b"TALB", content=b"\1" + b"a\0" * 524287) * 200),
            "plain": tag((b"TCON" + MEBI.to_bytes(4, "big") + bytes(2) + b"\0" + b"x" * (MEBI - 1)) * 100),
            "tiny": tag(b"COMM\0\0\0\x05\0\0\0eng\0" * 1_000_000),
            "one text": tag(b"TIT2" + huge.to_bytes(4, "big") + bytes(2), claimed=huge + 10),
            "unsynchronised": tag(b"APIC" + huge.to_bytes(4, "big") + bytes(2), flags=0x80, claimed=huge + 10),
            "frames of 2.4": tag(b"APIC" + syncsafe(huge) + b"\0\2", 4, 0x80, huge + 10),
            "chain": tag(b"") * 100_000,
        }
        for name, content in hostile.items():
            with self.subTest(name):
                paths = [self.make(f"{name}/{number}.mp3", content) for number in range(3)]
                if len(content) < 1000:
                    for path in paths:
                        os.truncate(path, huge + 20)  # a sparse file
                # 64 MiB for each of the threads, whose number is that of the cores.
                bound = 64 * 1024 * (os.cpu_count() or 1)
                self.assertLess(self.peak_of("list", os.path.dirname(paths[0])) - usual, bound)
                self.assertLess(self.peak_of("show", *paths) - usual, 64 * 1024)
                for path in paths:
                    os.unlink(path)


if __name__ == "__main__":
    unittest.main()
