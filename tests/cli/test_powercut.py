# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: a power cut during saves leaves every song with a content that some save gave it, whole, once the next command
has run. Songs of all kinds (either tag, both, none, no room in the tag, two names) lie with the user's data folder on a
file system inside an image; while the command line saves them over and over, the image is cloned, which takes what has
reached the disk so far and nothing else. Each clone is mounted like after a power cut, and its songs are compared with all
contents that the saves made. ext4 with blocks of 4K and 1K, XFS and btrfs.

RAVLIN_POWER_CUTS sets how many clones of each file system are looked at. Needs root, loop devices and the tools that make
the file systems."""

import contextlib
import hashlib
import os
import shutil
import subprocess
import tempfile
import threading
import time
import unittest
from pathlib import Path

from clitest import PROGRAM, id3v1, id3v2, mp3

CLONES = int(os.environ.get("RAVLIN_POWER_CUTS", "8"))
MEGABYTE = 1024 * 1024
# Each with the options that bring data to the disk soon, so that many states of the disk are seen in a short time.
FILE_SYSTEMS = {
    "ext4 4K": (["mkfs.ext4", "-q", "-b", "4096"], "commit=1", 64),
    "ext4 1K": (["mkfs.ext4", "-q", "-b", "1024"], "commit=1", 64),
    "xfs": (["mkfs.xfs", "-q"], "nouuid", 320),
    "btrfs": (["mkfs.btrfs", "-q"], "commit=1", 160),
}


def run(*command):
    result = subprocess.run(command, capture_output=True, check=False)
    if result.returncode != 0:
        raise OSError("%s: %s" % (" ".join(map(str, command)), result.stderr.decode(errors="replace").strip()))


def without_padding(tag):
    body = tag[10:-64]
    return tag[:6] + bytes((len(body) >> shift) & 0x7F for shift in (21, 14, 7, 0)) + body


def songs():
    """Every way of saving is among them."""
    long = 60
    return {
        "none": mp3(frames=long),
        "v1": mp3(v1=id3v1(b"title 00000"), frames=long),
        "v2": mp3(id3v2(TIT2="title 00000"), frames=long),
        "both": mp3(id3v2(TIT2="title 00000"), id3v1(b"title 00000"), frames=long),
        "full": mp3(without_padding(id3v2(TIT2="t")), frames=long),
        "large": mp3(id3v2(COMM="c" * 5000, TIT2="title 00000"), id3v1(b"title 00000"), frames=long),
        "aligned": mp3(frames=1).ljust(3 * 4096, b"\xff"),
        "linked": mp3(id3v2(TIT2="title 00000"), id3v1(b"title 00000"), frames=long),
    }


def states(folder):
    return {path.name: hashlib.sha256(path.read_bytes()).hexdigest() for path in folder.glob("*.mp3")}


class Saving(threading.Thread):
    """Saves all songs again and again, and knows every content that they had."""

    def __init__(self, folder, home):
        super().__init__()
        self.folder = folder
        self.environment = {**os.environ, "XDG_CONFIG_HOME": str(home), "XDG_DATA_HOME": str(home), "LC_ALL": "C.UTF-8"}
        self.known = {}
        self.rounds = 0
        self.failures = []
        self.is_over = threading.Event()
        self.learn()

    def learn(self):
        for name, state in states(self.folder).items():
            self.known.setdefault(name, set()).add(state)

    def cli(self, *arguments):
        result = subprocess.run([PROGRAM, *arguments], capture_output=True, env=self.environment, check=False)
        if result.returncode != 0:
            self.failures.append(result.stderr.decode(errors="replace"))

    def run(self):
        while not self.is_over.is_set():
            self.rounds += 1
            mode = ("4", "3", "5", "1", "2")[self.rounds % 5]
            paths = sorted(map(str, self.folder.glob("*.mp3")))
            # One by one: the contents in between are known, too.
            for path in paths:
                if self.rounds % 5 == 0:
                    self.cli("strip", "--v1", path)
                    self.learn()
                self.cli("tag", "--mode", mode, "--title", "title %05d" % self.rounds, path)
                self.learn()
                if self.is_over.is_set():
                    return


@unittest.skipUnless(hasattr(os, "geteuid") and os.geteuid() == 0, "only root can mount images")
class PowerCutTest(unittest.TestCase):
    def setUp(self):
        for tool in ("mkfs.btrfs", "losetup"):
            if shutil.which(tool, path=os.environ["PATH"] + ":/usr/sbin:/sbin") is None:
                self.skipTest("there is no " + tool)
        os.environ["PATH"] += ":/usr/sbin:/sbin"
        self.top = Path(tempfile.mkdtemp(prefix="ravlin-power-", dir="/tmp"))
        self.addCleanup(shutil.rmtree, self.top)
        self.images = self.top / "images"
        self.images.mkdir()
        try:
            self.make_image(self.top / "outer.img", ["mkfs.btrfs", "-q"], 1024)
            self.enterContext(self.mounted(self.top / "outer.img", self.images, "noatime"))
        except OSError as error:
            self.skipTest("no image can be mounted here: %s" % error)

    def enterContext(self, context):  # as in Python 3.11
        value = context.__enter__()
        self.addCleanup(context.__exit__, None, None, None)
        return value

    def make_image(self, path, command, megabytes):
        with open(path, "wb") as file:
            file.truncate(megabytes * MEGABYTE)
        run(*command, str(path))

    @contextlib.contextmanager
    def mounted(self, image, folder, options):
        folder.mkdir(exist_ok=True)
        run("mount", "-o", "loop," + options, str(image), str(folder))
        try:
            yield folder
        finally:
            subprocess.run(["umount", str(folder)], check=False)

    def look_at(self, clone, options, saving):
        """What is wrong in a clone after the next command."""
        with self.mounted(clone, self.top / "after", options) as after:
            environment = {**saving.environment, "XDG_CONFIG_HOME": str(after / "home"), "XDG_DATA_HOME": str(after / "home")}
            subprocess.run([PROGRAM, "list", str(after / "music")], capture_output=True, env=environment, check=False)
            found = states(after / "music")
            missing = ["%s is missing" % name for name in saving.known if name not in found]
            torn = [name for name, state in found.items() if state not in saving.known[name]]
            return missing + ["%s is neither old nor new" % name for name in torn]

    def power_cuts(self, name):
        command, options, megabytes = FILE_SYSTEMS[name]
        if shutil.which(command[0]) is None:
            self.skipTest("there is no " + command[0])
        image = self.images / "inner.img"
        self.make_image(image, command, megabytes)
        clones = []
        with self.mounted(image, self.top / "inner", options) as inner:
            music = inner / "music"
            music.mkdir()
            (inner / "home").mkdir()
            for song, content in songs().items():
                (music / (song + ".mp3")).write_bytes(content)
            os.link(music / "linked.mp3", music / "second link.mp3")
            run("sync", "-f", str(inner))
            saving = Saving(music, inner / "home")
            saving.start()
            try:
                for number in range(CLONES):
                    time.sleep(0.05 + 0.31 * (number % 7) / 7)
                    clones.append(self.images / ("clone %d.img" % number))
                    run("cp", "--reflink=always", str(image), str(clones[-1]))
            finally:
                saving.is_over.set()
                saving.join()
        self.assertEqual(saving.failures, [])
        wrong = {}
        for clone in clones:
            for what in self.look_at(clone, options, saving):
                wrong.setdefault(what, []).append(clone.name)
            clone.unlink()
        print("%s: %d clones, %d songs in each, %d rounds of saves, %d states wrong" % (
            name, len(clones), len(saving.known), saving.rounds, sum(map(len, wrong.values()))))
        self.assertEqual(wrong, {})
        self.assertGreater(max(map(len, saving.known.values())), 1)

    def test_ext4_4k(self):
        self.power_cuts("ext4 4K")

    def test_ext4_1k(self):
        self.power_cuts("ext4 1K")

    def test_xfs(self):
        self.power_cuts("xfs")

    def test_btrfs(self):
        self.power_cuts("btrfs")


if __name__ == "__main__":
    unittest.main()
