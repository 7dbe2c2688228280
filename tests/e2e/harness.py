# SPDX-License-Identifier: GPL-3.0-or-later
"""What the end-to-end tests share: one desktop for all tests of a script, a home for each, and evidence of failures."""

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
LONGEST_TEMPORARY = 50  # bytes; paths of sockets below it must stay under 108
DESKTOP = []  # the running one with its folder, or nothing


def close_desktop():
    if DESKTOP:
        desktop, folder = DESKTOP
        DESKTOP.clear()
        desktop.close()
        shutil.rmtree(folder, ignore_errors=True)


def shared_desktop():
    """The desktop of this script, which the first test starts, and its folder."""
    if not DESKTOP:
        missing = desktops.missing_programs()
        if missing:
            raise AssertionError(f"missing: {' '.join(missing)}; tools/install-packages test installs them")
        place = tempfile.gettempdir()
        folder = Path(tempfile.mkdtemp(prefix="e2e", dir=place if len(place) <= LONGEST_TEMPORARY else "/tmp"))
        try:
            DESKTOP.extend((desktops.Desktop(folder), folder))
        except BaseException:
            shutil.rmtree(folder, ignore_errors=True)
            raise
        unittest.addModuleCleanup(close_desktop)
    return DESKTOP


def keeps_evidence(method):
    """Makes a failing test keep a picture, the tree of controls and the programs' output, and end its desktop."""
    @functools.wraps(method)
    def run(self):
        try:
            method(self)
        except unittest.SkipTest:
            raise
        except BaseException:
            self.keep_evidence()
            self.failed = True
            raise
    return run


class EndToEndTest(unittest.TestCase):
    """self.desktop has an empty home for each test; self.music is a folder there for the files that the test makes."""

    def __init_subclass__(cls):
        for name, member in list(vars(cls).items()):
            if name.startswith("test"):
                setattr(cls, name, keeps_evidence(member))

    def setUp(self):
        self.program = None
        self.failed = False
        self.desktop, folder = shared_desktop()
        self.folder = Path(tempfile.mkdtemp(dir=folder))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.addCleanup(self._leave_desktop)
        self.desktop.move_in(self.folder)
        self.music = self.desktop.home / "Music"
        self.music.mkdir()

    def _leave_desktop(self):
        if self.failed:
            close_desktop()  # it may be in any state
        else:
            self.desktop.leave()

    @property
    def settings_file(self):
        return self.desktop.config / "ravlin" / "ravlin.ini"

    def settings(self, **values):
        """Writes the settings for the next start: by default English and tag-save mode 2. The protections were offered."""
        values = {"idioma": "en", "tags": "2", "cuida ofrecido": "si", **values}
        self.settings_file.parent.mkdir(exist_ok=True)
        lines = ["[ini]"] + [f"{key}={value}" for key, value in values.items()]
        self.settings_file.write_text("\n".join(lines) + "\n", encoding="utf-8")

    def stored(self, key):
        """The current value of a key in the settings file; empty if it is not there."""
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
            except Exception as error:  # keep the rest
                print(f"{keep.__name__}: {error}", file=sys.stderr)
        print(f"evidence: {folder}", file=sys.stderr)

    def _keep_picture(self, folder):
        self.desktop.take_picture(folder / "screen.png")

    def _keep_windows(self, folder):
        (folder / "windows.txt").write_text(self.desktop.bus.registry().describe(), encoding="utf-8")

    def _keep_files(self, folder):
        for path in (self.folder / "program.log", Path(self.desktop.log.name), self.settings_file):
            if path.exists():
                shutil.copy(path, folder)
        files = sorted(os.fsencode(path.relative_to(self.desktop.home)) for path in self.desktop.home.rglob("*"))
        (folder / "files.txt").write_bytes(b"".join(path + b"\n" for path in files))
