# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: an installation and the Debian package contain the programs and every file that the desktop, the shell and the
reader look for, in its place and well formed, and nothing of the machine that built them."""

import configparser
import os
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BIN = Path(os.environ["RAVLIN_BIN_DIR"])
BUILD = BIN.parent
LINUX = ROOT / "packaging" / "linux"
SIZES = (16, 24, 32, 48, 64, 128, 256)
GUIDE = {f"share/doc/ravlin/guide/{path.relative_to(ROOT / 'docs/guide')}"
         for path in (ROOT / "docs/guide").rglob("*") if path.is_file()}
COMMON = {"bin/ravlin", "bin/ravlin-cli", "share/applications/ravlin.desktop",
          "share/bash-completion/completions/ravlin-cli", "share/metainfo/example.ravlin.ravlin.metainfo.xml",
          "share/icons/hicolor/scalable/apps/ravlin.svg",
          *(f"share/icons/hicolor/{size}x{size}/apps/ravlin.png" for size in SIZES), *GUIDE}
PAGES = {"share/man/man1/ravlin.1", "share/man/man1/ravlin-cli.1"}


def run(*command, **options):
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False, **options)
    if result.returncode:
        raise AssertionError(f"{command[0]}: {result.stdout.decode()}")
    return result.stdout.decode()


def files_below(folder):
    return {path.relative_to(folder).as_posix() for path in folder.rglob("*") if not path.is_dir()}


def version():
    return run(str(BIN / "ravlin-cli"), "--version").split()[1]


class TestInstallation(unittest.TestCase):
    def test_every_file_has_its_place(self):
        with tempfile.TemporaryDirectory() as folder:
            run("cmake", "--install", str(BUILD), "--prefix", "/usr", env={**os.environ, "DESTDIR": folder})
            self.assertEqual(files_below(Path(folder) / "usr"),
                             COMMON | PAGES | {"share/doc/ravlin/LICENSE", "share/doc/ravlin/CHANGELOG.md"})


class TestDebianPackage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        place = Path(cls.folder.name)
        # The umask of a careful user must not matter.
        run("cpack", "--config", str(BUILD / "CPackConfig.cmake"), "-G", "DEB", "-B", str(place), umask=0o077)
        cls.package = next(place.glob("*.deb"))
        cls.unpacked = place / "unpacked"
        run("dpkg-deb", "--extract", str(cls.package), str(cls.unpacked))
        cls.fields = {}
        for line in run("dpkg-deb", "--field", str(cls.package)).splitlines():
            name, colon, value = line.partition(": ")
            if colon and not line.startswith(" "):
                cls.fields[name] = value

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def test_its_name_holds_program_version_and_architecture(self):
        machine = run("dpkg", "--print-architecture").strip()
        self.assertEqual(self.package.name, f"ravlin_{version()}-1_{machine}.deb")
        self.assertEqual((self.fields["Package"], self.fields["Version"], self.fields["Architecture"]),
                         ("ravlin", version() + "-1", machine))

    def test_it_names_its_maintainer_and_purpose(self):
        self.assertEqual((self.fields["Section"], self.fields["Priority"]), ("sound", "optional"))
        self.assertRegex(self.fields["Maintainer"], r"^[^<>]+ <[^@ ]+@[^@ ]+>$")
        self.assertRegex(self.fields["Homepage"], r"^https://")
        self.assertLess(len(self.fields["Description"]), 80)

    def test_it_needs_the_libraries_that_its_programs_are_linked_with(self):
        needed = {entry.split()[0] for entry in self.fields["Depends"].split(", ")}
        self.assertLessEqual({"libc6", "libqt6core6", "libqt6gui6", "libqt6network6", "libqt6widgets6", "libstdc++6",
                              "libsqlite3-0", "zlib1g"}, needed)
        self.assertNotIn("qt6-base-dev", needed)

    def test_it_recommends_what_the_program_uses_at_run_time(self):
        self.assertEqual({"ca-certificates", "qt6-translations-l10n", "xdg-utils"},
                         set(self.fields["Recommends"].split(", ")))

    def test_every_file_has_its_place(self):
        documentation = {f"share/doc/ravlin/{name}" for name in ("copyright", "changelog.gz", "changelog.Debian.gz")}
        self.assertEqual(files_below(self.unpacked / "usr"),
                         COMMON | {page + ".gz" for page in PAGES} | documentation | {"share/lintian/overrides/ravlin"})
        self.assertEqual([path.name for path in self.unpacked.iterdir()], ["usr"])

    def test_everybody_can_read_it_and_only_root_change_it(self):
        for line in run("dpkg-deb", "--contents", str(self.package)).splitlines():
            mode, owner, name = line.split()[0], line.split()[1], line.split()[5]
            program = name.startswith("./usr/bin/") and name != "./usr/bin/"
            self.assertEqual(owner, "root/root", line)
            self.assertEqual(mode, "drwxr-xr-x" if name.endswith("/") else "-rwxr-xr-x" if program else "-rw-r--r--", line)

    def test_its_programs_start_and_know_nothing_of_where_they_were_built(self):
        for name in ("ravlin", "ravlin-cli"):
            program = self.unpacked / "usr/bin" / name
            self.assertNotRegex(run("readelf", "--dynamic", str(program)), "RUNPATH|RPATH")
            self.assertNotIn(".debug_info", run("readelf", "--sections", "--wide", str(program)))
        self.assertEqual(run(str(self.unpacked / "usr/bin/ravlin-cli"), "--version"), f"ravlin-cli {version()}\n")

    def test_each_program_has_its_page_of_the_manual(self):
        for page in ("ravlin", "ravlin-cli"):
            text = run("gzip", "-dc", str(self.unpacked / f"usr/share/man/man1/{page}.1.gz"))
            self.assertEqual(text.split()[:3], [".TH", page.upper(), "1"])

    def test_the_change_log_of_the_package_is_that_of_this_version(self):
        text = run("gzip", "-dc", str(self.unpacked / "usr/share/doc/ravlin/changelog.Debian.gz"))
        self.assertTrue(text.startswith(f"ravlin ({version()}-1) "), text[:60])


class TestDesktopFiles(unittest.TestCase):
    def setUp(self):
        entry = configparser.ConfigParser(interpolation=None, delimiters=("=",))
        entry.optionxform = str
        entry.read(LINUX / "ravlin.desktop", encoding="utf-8")
        self.entry = entry["Desktop Entry"]
        self.metainfo = ElementTree.parse(LINUX / "example.ravlin.ravlin.metainfo.xml").getroot()

    def test_the_desktop_entry_is_valid(self):
        self.assertEqual(run("desktop-file-validate", str(LINUX / "ravlin.desktop")), "")

    def test_the_metainfo_is_valid(self):
        run("appstreamcli", "validate", "--no-net", str(LINUX / "example.ravlin.ravlin.metainfo.xml"))

    def test_a_broken_desktop_entry_or_metainfo_would_be_found(self):
        with tempfile.TemporaryDirectory() as folder:
            for name, old, new, command in (
                    ("ravlin.desktop", "Terminal=false", "Terminal=perhaps", ["desktop-file-validate"]),
                    ("example.ravlin.ravlin.metainfo.xml", "<name>ravlin!</name>", "",
                     ["appstreamcli", "validate", "--no-net"])):
                text = (LINUX / name).read_text("utf-8")
                self.assertIn(old, text)
                (Path(folder) / name).write_text(text.replace(old, new), encoding="utf-8")
                with self.assertRaises(AssertionError):
                    run(*command, str(Path(folder) / name))

    def test_both_describe_the_same_program(self):
        self.assertEqual(self.metainfo.findtext("launchable"), "ravlin.desktop")
        self.assertEqual(self.entry["Exec"].split()[0], "ravlin")
        self.assertEqual(self.entry["Icon"], self.metainfo.findtext("icon"))
        self.assertEqual(self.entry["Name"], self.metainfo.findtext("name"))
        types = {"audio/mpeg", "inode/directory"}
        self.assertEqual(set(filter(None, self.entry["MimeType"].split(";"))), types)
        self.assertEqual({node.text for node in self.metainfo.iter("mediatype")}, types)

    def test_all_three_languages_are_there(self):
        language = "{http://www.w3.org/XML/1998/namespace}lang"
        for key in ("GenericName", "Comment"):
            for code in ("es", "fr"):
                self.assertTrue(self.entry.get(f"{key}[{code}]"), f"{key}[{code}]")
        counts = {}
        for node in self.metainfo.iter():
            if node.tag in ("summary", "p", "li"):
                code = node.get(language, "en")
                counts[node.tag, code] = counts.get((node.tag, code), 0) + 1
        for tag in ("summary", "p", "li"):
            self.assertEqual(counts[tag, "en"], counts[tag, "es"], tag)
            self.assertEqual(counts[tag, "en"], counts[tag, "fr"], tag)

    def test_the_metainfo_names_this_version(self):
        self.assertEqual(self.metainfo.find("releases").find("release").get("version"), version())


if __name__ == "__main__":
    unittest.main()
