# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: whatever somebody put into a folder, no command changes anything outside it, and inside it only what the command
is for.

Every round fills a folder with hostile names, links, tags, and with what looks like leftovers of interrupted writes, then
runs one command over it. RAVLIN_HOSTILE_ROUNDS sets the rounds for each command, RAVLIN_HOSTILE_SEED the first of them."""

import hashlib
import os
import random
import re
import shutil
import stat
import struct
import unittest
import zlib
from pathlib import Path

import clitest

ROUNDS = int(os.environ.get("RAVLIN_HOSTILE_ROUNDS", "3"))
FIRST = int(os.environ.get("RAVLIN_HOSTILE_SEED", "1"))
BAIT = b"BAIT touch bait"  # begins a line of its own in every name and text that has a line break

TEXT = b"#!/bin/sh\n# start-up file\nexport PATH=/usr/bin\n" * 4
PNG = b"\x89PNG\r\n\x1a\n" + b"\0\0\0\rIHDR" + bytes(range(200))
M4A = b"\0\0\0\x20ftypM4A \0\0\0\0M4A mp42isom" + bytes(300)
FLAC = b"fLaC\0\0\0\x22" + bytes(300)
WAVE = b"RIFF\x24\x01\0\0WAVEfmt \x10\0\0\0\x01\0\x02\0" + bytes(300)
ELF = b"\x7fELF\x02\x01\x01" + bytes(300)
ZIP = b"PK\x03\x04\x14\0" + bytes(300)
DATA = bytes(range(7, 250)) * 3 + clitest.id3v1(b"no tag at all")

EVIL_TEXTS = [
    "Band", "Song\n" + BAIT.decode() + "\n#", "\x1b]0;owned\x07\x1b[2J", "<img src=/dev/zero>", "../../../outside/run.sh", "/etc/passwd",
    "a" * 300, "\u202egpj.exe", "\u2028" + BAIT.decode(), "-rf", "--force", "#EXTM3U", "%1%2%3", "", ".", "..", "CON", "\u0085x", "  ",
    "\ud800".encode("utf-16-le", "surrogatepass").decode("utf-16-le", "replace"), "NUL.mp3", "a/b/c", "\\\\host\\share", "`touch x`"]
STEMS = [b"Band - Song", b"Band - Song\n" + BAIT + b"\n#", b"-rf", b"--mode", b"#EXTINF", b"\x1b[2J", b"a\xff\xfe - b\x80", b".hidden", b"CON",
         b"x" * 200, b"<img src=q>", b"\xe2\x80\xaegpj", b"\xe2\x80\xa8" + BAIT, b"%s%n", b"$(touch x)", b" lead", b"trail ", b"01 - A"]
SUFFIXES = [b".mp3", b".MP3", b".mp3", b".mp3", b".jpg", b".sh", b"", b".mp3.exe"]
PATTERNS = ["%1 - %3", "%3", "%1/%2/%3", "../%3", "%4%3", "..%1", "%7 - %5", "#%3"]


def synchsafe(number):
    return bytes((number >> shift) & 0x7F for shift in (21, 14, 7, 0))


def raw_frame(identifier, body, flags=b"\0\0"):
    return identifier + len(body).to_bytes(4, "big") + flags + body


def evil_tag(dice):
    """An ID3v2.3 tag of hostile texts, or one that lies."""
    kind = dice.randrange(8)
    if kind == 0:
        return b"ID3\x03\0\0" + b"\x7f\x7f\x7f\x7f" + raw_frame(b"TIT2", b"\0x")
    if kind == 1:
        body = b"".join(raw_frame(b"TIT2", struct.pack(">I", 1 << 20) + zlib.compress(bytes(1 << 20)), b"\0\x80") for _ in range(40))
        return b"ID3\x03\0\0" + synchsafe(len(body)) + body
    if kind == 2:
        return dice.randbytes(dice.randrange(200))
    frames = {name: dice.choice(EVIL_TEXTS) for name in ("TIT2", "TPE1", "TALB", "TYER", "TRCK", "TCON", "COMM") if dice.random() < 0.8}
    return clitest.id3v2(**frames)


def content(dice):
    tag = evil_tag(dice) if dice.random() < 0.7 else b""
    v1 = clitest.id3v1(b"a\nb", b"\x1b[2J") if dice.random() < 0.4 else b""
    body = dice.choice([clitest.FRAME * 6] * 5 + [PNG, M4A, FLAC, WAVE, ELF, ZIP, TEXT, DATA, b""])
    return tag + body + v1


def redo_file(inode, name, old, new):
    """A complete file for finishing an interrupted overwriting of the file of that inode and name."""
    def padded(block):
        return block + bytes(-len(block) % 4096)
    header = struct.pack(">QIQqqqB", 0x5261766c696e5265, 1, inode, len(new), len(old), 0, 0) + struct.pack(">I", len(name)) + name
    body = padded(header) + padded(new) + old
    return body + struct.pack(">Q", 0x5261766c696e4f6b) + hashlib.blake2b(body, digest_size=32).digest()


def snapshot(folder):
    """Every path below folder with what it is: mode, owner, time and content."""
    found = {}
    for at, folders, names in os.walk(folder):
        for name in folders + names:
            path = os.path.join(at, name)
            status = os.lstat(path)
            what = (status.st_mode, status.st_uid, status.st_gid)
            if stat.S_ISLNK(status.st_mode):
                what += (os.readlink(path),)
            elif stat.S_ISREG(status.st_mode):
                with open(path, "rb") as file:
                    what += (status.st_mtime_ns, hashlib.sha256(file.read()).digest())
            found[os.path.relpath(path, folder)] = what
    return found


def own_files(found):
    """Of a snapshot of the music folder, what no command may touch: plain files that are neither MP3 files nor playlists nor
    named like our own leftovers."""
    return {name: what for name, what in found.items()
            if stat.S_ISREG(what[0]) and not name.lower().endswith((b".mp3", b".m3u")) and not re.search(rb"(^|/)\.ravlin-", name)}


class HostileFolder(clitest.CliTest):
    def setUp(self):
        super().setUp()
        self.environment.update(XDG_DATA_HOME=str(self.config.parent / "data"), HOME=str(self.config.parent / "home"))
        self.outside = os.fsencode(self.folder.parent / "outside")
        self.target = os.fsencode(self.folder.parent / "target")
        self.music = os.fsencode(self.folder)

    def put(self, path, data, mode=0o644):
        with open(path, "wb") as file:
            file.write(data)
        os.chmod(path, mode)
        return path

    def make_outside(self):
        """What must not change. None of it is named as an MP3 file is."""
        os.makedirs(self.outside + b"/private")
        for name, data, mode in ((b".profile", TEXT, 0o400), (b"run.sh", TEXT, 0o755), (b"cover.png", PNG, 0o600), (b"film.m4a", M4A, 0o600),
                                 (b"data", DATA, 0o600), (b"song", clitest.mp3(), 0o600), (b"empty", b"", 0o600)):
            self.put(self.outside + b"/" + name, data, mode)
        for number in range(10):
            self.put(self.outside + b"/private/%d" % number, b"secret %d" % number, 0o600)
        os.chmod(self.outside + b"/private", 0o700)

    def victim(self, dice):
        return dice.choice([b".profile", b"run.sh", b"cover.png", b"film.m4a", b"data", b"song", b"empty", b"private", b"private/3", b"none"])

    def leftover(self, dice, folder):
        """Something that looks as if an interrupted write had left it."""
        number = dice.choice([b"%016x" % dice.getrandbits(64), b"%016x" % os.stat(self.outside + b"/run.sh").st_ino])
        path = folder + b"/.ravlin-" + number + dice.choice([b".tmp", b".redo"])
        if os.path.lexists(path):
            return
        kind = dice.randrange(6)
        if kind == 0:
            os.symlink(self.outside + b"/" + self.victim(dice), path)
        elif kind == 1:
            os.link(self.outside + b"/" + dice.choice([b".profile", b"data"]), path)
        elif kind == 2:
            os.mkdir(path)
            os.symlink(self.outside + b"/private", path + b"/in")
        elif kind == 3:
            self.put(path, b"left", dice.choice([0o600, 0o644]))
        elif kind == 4:
            # It fits a script of this folder, or one that a link here leads to.
            name = dice.choice([b"run.sh", b"go.sh", b"go.mp3"])
            script = self.put(folder + b"/" + name, TEXT, 0o755) if name != b"go.mp3" else folder + b"/" + name
            if name == b"go.mp3" and not os.path.lexists(script):
                os.symlink(self.outside + b"/run.sh", script)
            inode = os.stat(script).st_ino
            self.put(folder + b"/.ravlin-%016x.redo" % inode, redo_file(inode, name, TEXT, TEXT[:50] + b"\ntouch bait\n"), 0o600)
        else:
            aside = dice.choice([b"setup (ravlin-%016x).exe", b".profile (ravlin-%016x)", b"Song (ravlin-%016x).mp3", b"dir (ravlin-%016x)"])
            aside = folder + b"/" + aside % dice.getrandbits(64)
            dice.choice([lambda: self.put(aside, TEXT), lambda: os.symlink(self.outside + b"/private", aside)])()

    def entry(self, dice, folder):
        name = folder + b"/" + (dice.choice(STEMS) + dice.choice(SUFFIXES))[:250]
        kind = dice.randrange(12)
        if os.path.lexists(name) and kind != 9:
            return
        if kind < 6:
            self.put(name, content(dice), dice.choice([0o644, 0o444, 0o600]))
        elif kind == 6:
            os.symlink(os.path.relpath(self.outside, folder) + b"/" + self.victim(dice), name)
        elif kind == 7:  # not to run.sh: with a redo file beside it nobody could tell it from an interrupted save
            os.link(self.outside + b"/" + dice.choice([b".profile", b"cover.png", b"film.m4a"]), name)
        elif kind == 8:
            os.mkfifo(name)
        elif kind == 9:
            self.leftover(dice, folder)
        elif kind == 10:
            os.mkdir(name)
            self.put(name + b"/in.mp3", content(dice))
        else:
            os.symlink(dice.choice([b".", b"..", name, b"/dev/zero", b"/proc/self/mem"]), name)

    def make_music(self, dice):
        for folder in (self.music, self.music + b"/sub", self.target):
            os.makedirs(folder, exist_ok=True)
            for _ in range(dice.randrange(3, 14)):
                self.entry(dice, folder)
            for name in (b"lista.m3u", b"Band - Song.mp3"):
                if dice.random() < 0.3 and not os.path.lexists(folder + b"/" + name):
                    os.symlink(self.outside + b"/" + self.victim(dice), folder + b"/" + name)

    def expect_same(self, before, after):
        changed = {path for path in before.keys() | after.keys() if before.get(path) != after.get(path)}
        self.assertEqual(set(), changed)

    def rounds(self, name, arguments, inside_too=True):
        """Runs a command over folders made anew. arguments(dice, paths) gives its options and operands."""
        for seed in range(FIRST, FIRST + ROUNDS):
            with self.subTest(command=name, seed=seed):
                dice = random.Random("%s %d" % (name, seed))
                self.clear()
                self.make_outside()
                self.make_music(dice)
                before = snapshot(self.outside)
                music = own_files(snapshot(self.music))
                paths = [self.music + b"/" + entry for entry in sorted(os.listdir(self.music))]
                result = self.run_cli(name, *arguments(dice, paths), cwd=self.music)
                self.expect_same(before, snapshot(self.outside))
                if inside_too:
                    self.expect_same(music, own_files(snapshot(self.music)))
                self.assertIn(result.returncode, (0, 1), result.stderr)
                self.assertIsNone(re.search(rb"^BAIT", result.stdout + b"\n" + result.stderr, re.MULTILINE), result.stdout)

    def clear(self):
        for folder in (self.outside, self.music, self.target):
            shutil.rmtree(folder, ignore_errors=True)

    def test_reading(self):
        self.rounds("list", lambda dice, paths: [*dice.choice([[], ["--recursive"], ["--json"]]), self.music])
        for command in ("show", "info"):
            self.rounds(command, lambda dice, paths: [*dice.choice([[], ["--json"]]), "--", *paths])

    def test_tags(self):
        modes = ["1", "2", "3", "4", "5"]
        self.rounds("tag", lambda dice, paths: ["--mode", dice.choice(modes), "--title", dice.choice(EVIL_TEXTS).replace("\0", ""), "--", *paths])
        self.rounds("extract", lambda dice, paths: ["--mode", dice.choice(modes), "--pattern", dice.choice(PATTERNS[:2]), "--", *paths])
        self.rounds("multi", lambda dice, paths: ["--mode", dice.choice(modes), "--artist", "A", "--track", "1", "--", *paths])
        self.rounds("strip", lambda dice, paths: [dice.choice(["--v1", "--v2"]), "--", *paths])

    def test_names(self):
        self.rounds("rename", lambda dice, paths: ["--pattern", dice.choice(PATTERNS), "--clash", dice.choice(["skip", "number"]), "--", *paths])
        self.rounds("renamedir", lambda dice, paths: ["--pattern", "%2", "--", self.music + b"/sub"], inside_too=False)

    def test_files(self):
        clash = ["skip", "number", "replace"]
        self.rounds("copy", lambda dice, paths: ["--to", self.target, "--clash", dice.choice(clash), "--", *paths])
        self.rounds("move", lambda dice, paths: ["--to", self.target, "--clash", dice.choice(clash), "--", *paths], inside_too=False)
        self.rounds("trash", lambda dice, paths: ["--delete", "--", *paths], inside_too=False)
        self.rounds("playlist", lambda dice, paths: [*dice.choice([[], ["--recursive"]]), "--", self.music])


if __name__ == "__main__":
    unittest.main()
