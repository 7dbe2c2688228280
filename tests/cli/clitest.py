# SPDX-License-Identifier: GPL-3.0-or-later
"""What the tests of the command line share: running the program, and MP3 files made byte by byte."""

import json
import os
import pty
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PROGRAM = os.path.join(os.environ["RAVLIN_BIN_DIR"], "ravlin-cli")
# The superuser may read and write everything; the tests of refused access must not.
WITHOUT_PRIVILEGES = (["setpriv", "--bounding-set=-dac_override,-dac_read_search"] if os.geteuid() == 0 else [])
COMMANDS = ("list", "show", "tag", "extract", "multi", "rename", "renamedir", "copy", "move", "trash", "playlist", "strip",
            "info", "toc", "lookup", "history", "undo", "redo", "case", "clean")
FRAME = b"\xff\xfb\x90\x64" + bytes(413)  # silence: MPEG-1 layer III, 128 kbit/s, 44,100 Hz, joint stereo


def frame(identifier, text):
    """A text or comment frame of ID3v2.3 in UTF-16."""
    body = b"\x01" + text.encode("utf-16")
    if identifier == "COMM":
        body = b"\x01eng" + "".encode("utf-16") + b"\0\0" + text.encode("utf-16")
    return identifier.encode() + len(body).to_bytes(4, "big") + b"\0\0" + body


def id3v2(**frames):
    body = b"".join(frame(identifier, text) for identifier, text in frames.items()) + bytes(64)
    size = bytes((len(body) >> shift) & 0x7F for shift in (21, 14, 7, 0))
    return b"ID3\x03\x00\x00" + size + body


def id3v1(title=b"", artist=b"", album=b"", year=b"", comment=b"", track=0, genre=255):
    return (b"TAG" + title.ljust(30, b"\0") + artist.ljust(30, b"\0") + album.ljust(30, b"\0") + year.ljust(4, b"\0")
            + comment.ljust(28, b"\0") + bytes([0, track, genre]))


def mp3(v2=b"", v1=b"", frames=10):
    return v2 + FRAME * frames + v1


class CliTest(unittest.TestCase):
    """Each test has an empty folder and a configuration of its own."""

    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = Path(scratch.name) / "music"
        self.folder.mkdir()
        self.config = Path(scratch.name) / "config"
        data = tempfile.TemporaryDirectory()
        self.addCleanup(data.cleanup)
        self.data = Path(data.name) / "data"
        self.prefix = []
        self.environment = {**os.environ, "XDG_CONFIG_HOME": str(self.config),
                            "XDG_DATA_HOME": str(self.data), "LC_ALL": "C.UTF-8"}

    def make(self, name, content=None):
        """A file under the folder; its name may be bytes. Returns its path as bytes."""
        path = os.path.join(os.fsencode(self.folder), os.fsencode(name))
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(mp3() if content is None else content)
        return path

    def read(self, path):
        with open(path, "rb") as file:
            return file.read()

    def run_cli(self, *arguments, **options):
        options = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, "env": self.environment, **options}
        return subprocess.run([*self.prefix, PROGRAM, *arguments], check=False, timeout=60, **options)

    def on_terminal(self, *arguments, status=0):
        """What a person sees of standard output and standard error. status: the one expected; None if it may be any."""
        master, slave = pty.openpty()
        process = subprocess.Popen([PROGRAM, *arguments], stdout=slave, stderr=slave, env=self.environment)
        os.close(slave)
        seen = b""
        while True:
            try:
                piece = os.read(master, 65536)
            except OSError:  # the other side is closed
                break
            if not piece:
                break
            seen += piece
        os.close(master)
        self.assertIn(process.wait(timeout=60), (0, 1, 2) if status is None else (status,), seen)
        return seen.decode("utf-8").replace("\r\n", "\n")

    def can_drop_privileges(self):
        return not WITHOUT_PRIVILEGES or (shutil.which("setpriv") is not None and subprocess.run(
            [*WITHOUT_PRIVILEGES, "true"], capture_output=True, check=False).returncode == 0)

    def succeed(self, *arguments):
        """Standard output of a run that must say nothing on standard error."""
        result = self.run_cli(*arguments)
        self.assertEqual((result.returncode, result.stderr), (0, b""), arguments)
        return result.stdout

    def fail_with(self, status, *arguments):
        """Standard output and standard error of a run that must fail."""
        result = self.run_cli(*arguments)
        self.assertEqual(result.returncode, status, (arguments, result.stderr))
        self.assertTrue(result.stderr.startswith(b"ravlin-cli: "), result.stderr)
        return result.stdout, result.stderr

    def json(self, *arguments):
        return json.loads(self.succeed(*arguments))

    def show(self, path):
        return self.json("show", "--json", "--", path)[0]
