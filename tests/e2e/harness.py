# SPDX-License-Identifier: GPL-3.0-or-later
"""What the end-to-end tests share: a desktop, a home folder and a collection for each, and evidence when one fails."""

import functools
import os
import shutil
import sys
import tempfile
import unittest
from pathlib import Path

try:
    import desktop as desktops
    import mutagen  # noqa: F401
except ImportError as error:
    sys.exit(f"{error}; tools/install-packages test installs it")

from program import Program

EVIDENCE = Path(os.environ.get("RAVLIN_EVIDENCE_DIR", "e2e-evidence"))
LONGEST_TEMPORARY = 50  # the sockets' paths below it must stay under 108 bytes


def keeps_evidence(method):
    """A test that leaves a picture, the tree of controls and what the programs printed when it fails."""
    @functools.wraps(method)
    def run(self):
        try:
            method(self)
        except unittest.SkipTest:
            raise
        except BaseException:
            self.keep_evidence()
            raise
    return run


class EndToEndTest(unittest.TestCase):
    """self.desktop is the test's own; self.music is a folder in its home for the files that it makes."""

    def __init_subclass__(cls):
        for name, member in list(vars(cls).items()):
            if name.startswith("test"):
                setattr(cls, name, keeps_evidence(member))

    def setUp(self):
        missing = desktops.missing_programs()
        if missing:
            self.fail(f"missing: {' '.join(missing)}; tools/install-packages test installs them")
        place = tempfile.gettempdir()
        self.folder = Path(tempfile.mkdtemp(prefix="e2e", dir=place if len(place) <= LONGEST_TEMPORARY else "/tmp"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.program = None
        self.desktop = desktops.Desktop(self.folder)
        self.addCleanup(self.desktop.close)
        self.music = self.desktop.home / "Music"
        self.music.mkdir()

    @property
    def settings_file(self):
        return self.desktop.config / "ravlin" / "ravlin.ini"

    def settings(self, **values):
        """The settings that the next start finds: English and the tag-save mode 2 unless told otherwise."""
        values = {"idioma": "en", "tags": "2", **values}
        self.settings_file.parent.mkdir(exist_ok=True)
        lines = ["[ini]"] + [f"{key}={value}" for key, value in values.items()]
        self.settings_file.write_text("\n".join(lines) + "\n", encoding="utf-8")

    def stored(self, key):
        """A value of the settings file as it is now."""
        for line in self.settings_file.read_text(encoding="utf-8").splitlines():
            name, _, value = line.partition("=")
            if name.strip() == key:
                return value.strip()
        return ""

    def start(self, *arguments, **options):
        self.program = Program(self.desktop, *arguments, **options)
        return self.program

    def close(self):
        self.assertEqual(self.program.close(), 0)
        self.program = None

    def keep_evidence(self):
        folder = EVIDENCE / self.id().rpartition("__main__.")[2]
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        for keep in (self._keep_picture, self._keep_windows, self._keep_files):
            try:
                keep(folder)
            except Exception as error:  # the others may tell more
                print(f"{keep.__name__}: {error}", file=sys.stderr)
        print(f"evidence: {folder}", file=sys.stderr)

    def _keep_picture(self, folder):
        self.desktop.take_picture(folder / "screen.png")

    def _keep_windows(self, folder):
        (folder / "windows.txt").write_text(self.desktop.bus.registry().describe(), encoding="utf-8")

    def _keep_files(self, folder):
        for path in (self.folder / "program.log", self.folder / "desktop.log", self.settings_file):
            if path.exists():
                shutil.copy(path, folder)
        files = sorted(os.fsencode(path.relative_to(self.desktop.home)) for path in self.desktop.home.rglob("*"))
        (folder / "files.txt").write_bytes(b"".join(path + b"\n" for path in files))
