#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The packed program under Wine, in a window of a virtual desktop: installed, used by mouse and keys, removed; and the
zip's program used from a folder with blanks and accents.

RAVLIN_PACKAGES is the folder of the zip and the installer, RAVLIN_EVIDENCE_DIR where pictures go.
"""

import os
import shutil
import subprocess
import sys
import tempfile
import time
import unittest
import zipfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "e2e"))

from collection import Song, make_file, read_v2  # noqa: E402
from waiting import wait_until  # noqa: E402

GUIDE = Path(__file__).resolve().parents[2] / "docs/guide"
PACKAGES = Path(os.environ["RAVLIN_PACKAGES"])
EVIDENCE = Path(os.environ.get("RAVLIN_EVIDENCE_DIR", "e2e-evidence"))
TRIES = 4
# Where things are in the window of the first start, in pixels from its upper left corner. There is no accessibility bus
# under Wine that could be asked; the layout is the program's own, and the fonts are those that Wine finds.
FIRST_ROW = (300, 69)
TITLE = (360, 511)
RENAME_PAGE = (459, 442)
EFFECT_LIMIT = 45.0  # seconds until a try counts as one whose keys came too early
SERVER = shutil.which("wineserver") or "/usr/lib/wine/wineserver64"


def on_z(path):
    return "Z:" + str(path).replace("/", "\\")


class Display:
    """A virtual screen with a window manager, and keys for what is on it."""

    def __init__(self):
        read, write = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", "1280x900x24", "-nolisten", "tcp"], pass_fds=[write],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as told:
            self.environment = {**os.environ, "DISPLAY": ":" + told.readline().strip()}
        self.manager = subprocess.Popen(["openbox"], env=self.environment, stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)
        wait_until(lambda: self.ask("xprop", "-root", "_NET_SUPPORTING_WM_CHECK").count("window id"), "the manager")

    def close(self):
        for process in (self.manager, self.server):
            process.kill()
            process.wait()

    def ask(self, *command):
        return subprocess.run(command, env=self.environment, capture_output=True, text=True, check=False).stdout

    def windows(self, title):
        return self.ask("xdotool", "search", "--onlyvisible", "--name", title).split()

    def key(self, *keys):
        for key in keys:
            self.ask("xdotool", "key", key)

    def click(self, place):
        window = self.windows("^ravlin!$")[0]
        self.ask("xdotool", "mousemove", "--window", window, str(place[0]), str(place[1]), "click", "1")

    def type(self, text):
        self.ask("xdotool", "type", "--delay", "40", text)

    def picture(self, path):
        path.parent.mkdir(parents=True, exist_ok=True)
        self.ask("import", "-window", "root", str(path))

    def is_calm(self):
        """Nothing on the screen changes for a moment. Not while a text cursor blinks."""
        pictures = []
        for _ in range(3):
            pictures.append(subprocess.run(["import", "-window", "root", "rgb:-"], env=self.environment,
                                           capture_output=True, check=False).stdout)
            time.sleep(0.7)
        return pictures[0] == pictures[1] == pictures[2]


class PackedProgram(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        for program in ("Xvfb", "openbox", "xdotool", "xprop", "import", "wine"):
            if shutil.which(program) is None:
                raise AssertionError(f"{program} is missing; tools/install-packages test windows installs it")

    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="installed"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.display = Display()
        self.addCleanup(self.display.close)
        self.prefix = self.folder / "prefix"
        self.environment = {
            **self.display.environment, "WINEPREFIX": str(self.prefix), "WINEDEBUG": "-all", "USER": "ana",
            "LOGNAME": "ana", "HOME": str(self.folder / "home"), "XDG_DATA_HOME": str(self.folder / "data"),
            "WINEDLLOVERRIDES": "mscoree,mshtml,winemenubuilder.exe="}
        for name in ("WINEPATH", "QT_QPA_PLATFORM", "WINEQT_QPA_PLATFORM", "WINEQT_PLUGIN_PATH"):
            self.environment.pop(name, None)
        (self.folder / "home/.local/share").mkdir(parents=True)  # Wine makes its recycle bin in it
        (self.folder / "data").mkdir()
        self.addCleanup(self.end_wine)
        self.wine("wineboot", "-u")
        self.drive = self.prefix / "drive_c"
        settings = self.drive / "users/ana/AppData/Roaming/ravlin/ravlin.ini"
        settings.parent.mkdir(parents=True, exist_ok=True)
        # None of the protections, and none is offered either.
        settings.write_text("[ini]\nidioma=en\ntags=2\nrename=1\ncuida ofrecido=si\n", encoding="ascii")
        self.music = self.folder / "Años de radio"
        self.music.mkdir()
        self.song = make_file(self.music / "pista.mp3", Song("Vieja", "Ana", "Mareas"))
        self.running = None

    def end_wine(self):
        subprocess.run([SERVER, "-k"], env=self.environment, check=False)
        subprocess.run([SERVER, "-w"], env=self.environment, check=False)

    def wine(self, *command):
        return subprocess.run(["wine", *command], env=self.environment, capture_output=True, timeout=240, check=False)

    def registry(self, key):
        """The default value of a key; empty where there is none."""
        told = self.wine("reg", "query", key, "/ve").stdout.decode("utf-8", "replace")
        return told.partition("REG_SZ")[2].strip()

    # The window

    def start(self, program):
        self.running = subprocess.Popen(["wine", program, on_z(self.music)], env=self.environment,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait_until(lambda: self.display.windows("^ravlin!$"), "the window of " + program, limit=120)
        wait_until(self.display.is_calm, "the window to be through with its start", limit=120)

    def close(self):
        self.display.key("Escape", "alt+F4")
        try:
            self.running.wait(timeout=30)
        except subprocess.TimeoutExpired:
            self.wine("taskkill", "/f", "/im", "ravlin.exe")
            self.running.wait(timeout=60)
        wait_until(lambda: not self.display.windows("^ravlin!$"), "the window to close")

    def achieve(self, program, name, keys, effect):
        """Starts the program, strikes the keys and waits for their effect on the disk; again, if they got lost."""
        for attempt in range(TRIES):
            self.start(program)
            keys()
            try:
                wait_until(effect, name, limit=EFFECT_LIMIT)
                time.sleep(1)  # for the picture's sake: the list shows the outcome
                self.display.picture(EVIDENCE / self._testMethodName / f"{name}.png")
                return
            except AssertionError:
                self.display.picture(EVIDENCE / self._testMethodName / f"{name}-failed-{attempt}.png")
                if attempt == TRIES - 1:
                    raise
            finally:
                self.close()

    def use(self, program):
        """Edits, saves, renames, writes playlists, deletes: each after a start of its own."""
        display = self.display

        def edit():
            display.click(FIRST_ROW)
            wait_until(display.is_calm, "the file on the page")
            self.fill_title("Nueva")
        self.achieve(program, "edit", edit, lambda: read_v2(self.song).title == "Nueva")
        self.assertEqual(read_v2(self.song), Song("Nueva", "Ana", "Mareas"))

        renamed = self.music / "Ana - Nueva.mp3"

        def rename():
            display.click(RENAME_PAGE)
            wait_until(display.is_calm, "the page")
            display.key("alt+r")
        self.achieve(program, "rename", rename, renamed.exists)
        self.assertEqual(os.listdir(self.music), [renamed.name])

        played = self.drive / "lista.m3u"

        def on_row(key):
            display.click(FIRST_ROW)
            wait_until(display.is_calm, "the file on the page")
            display.key(key)
        self.achieve(program, "play", lambda: on_row("shift+p"), played.exists)
        self.assertEqual(played.read_bytes(), (on_z(renamed) + "\r\n").encode("cp1252"))

        written = self.music / "Ana - Mareas.m3u"
        self.achieve(program, "playlist", lambda: on_row("shift+l"), written.exists)
        self.assertEqual(written.read_bytes(), b"Ana - Nueva.mp3\r\n")

        def delete():
            on_row("Delete")
            time.sleep(4)  # the question comes; a key too early costs one more try
            display.key("Return")
        self.achieve(program, "delete", delete, lambda: not renamed.exists())
        in_trash = [path.name for place in ("home", "data")
                    for path in (self.folder / place).rglob("Trash/files/*")]
        self.assertEqual(len(in_trash), 1, in_trash)

    def unpack(self):
        """The zip's program in a folder with blanks and accents."""
        place = self.folder / "Móvil de Ana"
        with zipfile.ZipFile(next(PACKAGES.glob("ravlin-*-windows.zip"))) as packed:
            packed.extractall(place)
        return next(place.rglob("ravlin.exe"))

    def fill_title(self, text):
        self.display.click(TITLE)
        self.display.key("ctrl+a")
        self.display.type(text)
        self.display.key("alt+s")

    # The tests

    def test_the_installed_program_is_used_and_removed(self):
        setup = next(PACKAGES.glob("ravlin-*-setup.exe"))
        target = self.drive / "Música y más" / "ravlin añadido"
        # The folder goes without quotes, which Wine would put around a word that holds a blank.
        folder = "C:\\Música y más\\ravlin añadido"
        installed = self.wine(str(setup), "/S", "/CurrentUser", "/filetypes", *f"/D={folder}".split(" "))
        self.assertEqual(installed.returncode, 0)
        wait_until((target / "uninstall.exe").exists, "the installed files")
        with zipfile.ZipFile(next(PACKAGES.glob("ravlin-*-windows.zip"))) as packed:
            names = {name.partition("/")[2] for name in packed.namelist()}
        present = {str(path.relative_to(target)) for path in target.rglob("*") if path.is_file()}
        self.assertEqual(present, names | {"uninstall.exe"})
        guide = {f"guide/{path.relative_to(GUIDE)}" for path in GUIDE.rglob("*") if path.is_file()}
        self.assertGreaterEqual(present, guide)
        classes = "HKCU\\Software\\Classes\\"
        self.assertEqual(self.registry(classes + ".mp3"), "ravlin.mp3")
        self.assertEqual(self.registry(classes + "ravlin.mp3"), "MP3 audio")
        self.assertIn("ravlin.exe\" \"%1\"", self.registry(classes + "ravlin.mp3\\shell\\open\\command"))
        self.assertEqual(len(list(self.drive.rglob("Start Menu/Programs/ravlin!.lnk"))), 1)

        self.use(folder + "\\ravlin.exe")

        mine = target / "mine.txt"
        mine.write_text("not of the installer", encoding="ascii")
        # "_?=" has the uninstaller work where it is, so that there is something to wait for.
        self.wine(folder + "\\uninstall.exe", "/CurrentUser", "/S", *f"_?={folder}".split(" "))
        left = {path.name for path in target.rglob("*") if path.is_file()}
        self.assertLessEqual(left, {"mine.txt", "uninstall.exe"})
        self.assertIn("mine.txt", left)
        self.assertEqual(self.registry(classes + ".mp3"), "")
        self.assertEqual(self.registry(classes + "ravlin.mp3"), "")
        self.assertEqual(list(self.drive.rglob("Start Menu/Programs/ravlin!.lnk")), [])
        gone = self.wine("reg", "query", "HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\ravlin")
        self.assertNotEqual(gone.returncode, 0)

    def test_the_zips_program_starts_from_a_folder_with_blanks_and_accents(self):
        program = self.unpack()

        def edit():
            self.display.click(FIRST_ROW)
            wait_until(self.display.is_calm, "the file on the page")
            self.fill_title("Otra")
        self.achieve(on_z(program), "edit", edit, lambda: read_v2(self.song).title == "Otra")
        told = self.wine(on_z(program.with_name("ravlin-cli.exe")), "list", on_z(self.music)).stdout.decode("utf-8")
        self.assertIn("pista.mp3\t\tOtra\tAna\tMareas", told)

    def test_one_key_takes_a_slip_back_after_a_restart(self):
        songs = [self.song, *(make_file(self.music / f"z {number}.mp3",
                                        Song(f"Vieja {number}", "Ana", "Mareas", "1998", str(number), "Blues"))
                              for number in (2, 3))]

        def state():  # Windows counts time in steps of 100 ns
            return [(song.read_bytes(), song.stat().st_mtime_ns // 100) for song in songs]
        before = state()
        program = on_z(self.unpack())

        def slip():
            self.display.click(FIRST_ROW)
            wait_until(self.display.is_calm, "the file on the page")
            self.fill_title("Nueva")
            time.sleep(4)  # now all rows are selected
            self.fill_title("Otra")
        self.achieve(program, "slip", slip, lambda: {read_v2(song).title for song in songs} == {"Otra"})

        def take_back():
            self.display.click(FIRST_ROW)
            wait_until(self.display.is_calm, "the file on the page")
            self.display.key("ctrl+z")
        self.achieve(program, "undo", take_back, lambda: state()[1:] == before[1:])
        self.assertEqual(read_v2(self.song).title, "Nueva")
        self.achieve(program, "undo-first", take_back, lambda: state() == before)


if __name__ == "__main__":
    unittest.main()
