# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: in a folder that somebody else may write to, nothing that he exchanges while the program works leads it to a file
of the user's elsewhere. Two real users: one exchanges a song, a playlist's name, a copy's folder or a leftover for links as
fast as he can; the other one saves, writes playlists, copies and cleans. The private files keep content, mode, owner and
times, and none of them is missing. Needs root, to become both."""

import os
import shutil
import signal
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

from clitest import PROGRAM, id3v1, id3v2, mp3

VICTIM = 12345
ATTACKER = 65534
ROUNDS = 8


def become(user):
    def change():
        os.setgroups([])
        os.setgid(user)
        os.setuid(user)
    return change


@unittest.skipUnless(hasattr(os, "geteuid") and os.geteuid() == 0, "only root can be two users")
class SharedFolderTest(unittest.TestCase):
    def setUp(self):
        self.top = Path(tempfile.mkdtemp(prefix="ravlin-shared-", dir="/tmp"))
        self.addCleanup(shutil.rmtree, self.top)
        self.top.chmod(0o755)
        self.shared = self.folder("shared", VICTIM, 0o777)
        self.home = self.folder("home", VICTIM, 0o711)
        self.secret = self.file(self.home / "secret.mp3", mp3(id3v2(TIT2="private"), id3v1(b"private")))
        self.text = self.file(self.home / "secret.txt", b"private\n" * 2000)
        self.tree = self.folder("home/tree", VICTIM, 0o711)
        for number in range(200):
            self.file(self.tree / ("%d.txt" % number), b"private")
        self.before = self.private_state()

    def folder(self, name, owner, mode):
        path = self.top / name
        path.mkdir()
        os.chown(path, owner, owner)
        path.chmod(mode)
        return path

    @staticmethod
    def file(path, content, mode=0o600, owner=VICTIM):
        path.write_bytes(content)
        os.chown(path, owner, owner)
        path.chmod(mode)
        return path

    def private_state(self):
        state = {}
        for path in [self.secret, self.text, self.tree, *self.tree.iterdir()]:
            status = path.lstat()
            content = path.read_bytes() if path.is_file() else b""
            state[path] = (status.st_mode, status.st_uid, status.st_gid, status.st_mtime_ns, content)
        return state

    def run_as_victim(self, *arguments):
        environment = {**os.environ, "XDG_CONFIG_HOME": str(self.home), "HOME": str(self.home), "LC_ALL": "C.UTF-8"}
        return subprocess.run([PROGRAM, *map(str, arguments)], preexec_fn=become(VICTIM), env=environment,
                              capture_output=True, timeout=120, check=False)

    def attack(self, swap):
        """Runs swap() as the other user, over and over, until the test kills it."""
        child = os.fork()
        if child == 0:
            become(ATTACKER)()
            while True:
                try:
                    swap()
                except OSError:
                    pass
        self.addCleanup(self.end, child)
        return child

    @staticmethod
    def end(child):
        try:
            os.kill(child, signal.SIGKILL)
            os.waitpid(child, 0)
        except (ProcessLookupError, ChildProcessError):
            pass

    def swapping(self, name, target):
        """What has the name goes aside, a link takes its place, and it comes back."""
        path, aside, link = self.shared / name, self.shared / "aside", self.shared / "link"

        def swap():
            if not link.is_symlink():
                os.symlink(target, link)
            if not path.is_symlink():
                os.rename(path, aside)
            os.rename(link, path)
            time.sleep(0.0005)
            if aside.exists():
                os.rename(aside, path)
            time.sleep(0.0005)
        return swap

    def assert_private_unchanged(self):
        self.assertEqual(self.private_state(), self.before)

    def test_saving(self):
        for mode in (0o644, 0o444):
            for target in (self.secret, self.text):
                with self.subTest(mode=oct(mode), target=target.name):
                    song = self.shared / "song.mp3"
                    attacker = self.attack(self.swapping("song.mp3", target))
                    for number in range(ROUNDS):
                        if not song.is_file():
                            song.unlink(missing_ok=True)
                            self.file(song, mp3(id3v2(TIT2="old"), id3v1(b"old")), mode)
                        self.run_as_victim("tag", "--mode=3", "--title=%d" % number, "--comment=" + "x" * 3000 * (number % 3),
                                           song)
                        self.assert_private_unchanged()
                    self.end(attacker)

    def test_a_song_whose_temporary_file_is_exchanged(self):
        # Whatever new name appears in the folder becomes a link to the private file.
        def swap():
            for name in os.listdir(self.shared):
                if name.startswith(".ravlin-"):
                    path = self.shared / name
                    os.rename(path, self.shared / "taken")
                    os.symlink(self.text, path)
        song = self.file(self.shared / "song.mp3", mp3(id3v2(TIT2="old"), id3v1(b"old"), 4000), 0o666)
        attacker = self.attack(swap)
        for number in range(ROUNDS):
            if song.is_symlink() or not song.exists():
                song.unlink(missing_ok=True)
                self.file(song, mp3(id3v2(TIT2="old"), id3v1(b"old"), 4000), 0o666)
            self.run_as_victim("tag", "--mode=2", "--title=" + "y" * 900 * (number % 2 + 1), song)
            self.run_as_victim("playlist", self.shared)
            self.assert_private_unchanged()
        self.end(attacker)

    def test_copying(self):
        source = self.file(self.home / "long.mp3", mp3(frames=144_000), 0o644)  # 60 MB
        self.before = self.private_state()

        def swap():
            for name in os.listdir(self.shared):
                if name.startswith(".ravlin-") and not os.path.islink(self.shared / name):
                    os.rename(self.shared / name, self.shared / "taken")
                    os.symlink(self.text, self.shared / name)
        attacker = self.attack(swap)
        for _ in range(3):
            self.run_as_victim("copy", "--to", self.shared, "--clash=replace", source)
            self.assert_private_unchanged()
        self.end(attacker)

    def test_cleaning_leftovers(self):
        name = ".ravlin-00000000000000aa.tmp"
        song = self.file(self.shared / "song.mp3", mp3(id3v2(TIT2="old")), 0o644)
        (self.shared / name).mkdir()
        os.chown(self.shared / name, ATTACKER, ATTACKER)
        attacker = self.attack(self.swapping(name, self.tree))
        for number in range(ROUNDS * 2):
            self.run_as_victim("tag", "--title=%d" % number, song)
            self.assert_private_unchanged()
        self.end(attacker)

    def test_a_redo_file_of_an_archive_changes_no_script(self):
        script = self.file(self.shared / "run.sh", b"#!/bin/sh\necho mine\n", 0o755)
        self.file(self.shared / (".ravlin-%016x.redo" % script.stat().st_ino), b"RavlinRe" + bytes(9000))
        before = script.read_bytes()
        song = self.file(self.shared / "song.mp3", mp3(), 0o644)
        self.run_as_victim("tag", "--title=x", song)
        self.assertEqual(script.read_bytes(), before)

    def test_only_songs_and_folders_get_their_name_back(self):
        mark = " (ravlin-0123456789abcdef)"
        mine, program = self.shared / ("a%s.mp3" % mark), self.shared / ("setup.exe%s" % mark)
        foreign, hidden = self.shared / ("b%s.mp3" % mark), self.shared / (".c%s.mp3" % mark)
        for path, owner in ((mine, VICTIM), (program, VICTIM), (foreign, ATTACKER), (hidden, VICTIM)):
            self.file(path, mp3(id3v2(TIT2="title", TPE1="artist")), 0o644, owner)
        song = self.file(self.shared / "song.mp3", mp3(id3v2(TIT2="title", TPE1="artist")), 0o644)
        self.run_as_victim("rename", "--pattern=%1 - %3", song)
        names = os.listdir(self.shared)
        self.assertIn("a.mp3", names)
        for path in (program, foreign, hidden):
            self.assertIn(path.name, names)


if __name__ == "__main__":
    unittest.main()
