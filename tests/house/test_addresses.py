# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: a build gets the web and the mail address that it is told, in the program and in what is installed and packed;
without one it keeps those of the sources, and it refuses what is none."""

import os
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
HOMEPAGE, CONTACT = "https://ravlin.example/", "ravlin@ravlin.example"
OTHER_HOMEPAGE, OTHER_CONTACT = "https://music.example.org/ravlin?a=b", "tags+help@music.example.org"


class TestAddresses(unittest.TestCase):
    def setUp(self):
        self.place = tempfile.TemporaryDirectory()
        self.addCleanup(self.place.cleanup)
        self.build = Path(self.place.name)

    def configure(self, **variables):
        options = [f"-D{name}={value}" for name, value in
                   {"RAVLIN_BUILD_TESTS": "OFF", "RAVLIN_HOMEPAGE": "", "RAVLIN_CONTACT": "", **variables}.items()]
        return subprocess.run(["cmake", "-G", "Ninja", "-S", str(ROOT), "-B", str(self.build), *options],
                              capture_output=True, text=True, check=False)

    def places(self):
        """Every text of the build that has addresses."""
        packed = self.build / "packaging/linux"
        commands = (self.build / "compile_commands.json").read_text()
        state = re.search(r'"command": "([^\n]*)programstate\.cpp\.o', commands).group(1)
        return [state, (self.build / "CPackConfig.cmake").read_text(),
                *((packed / name).read_text() for name in
                  ("example.ravlin.ravlin.metainfo.xml", "debian/copyright", "debian/changelog"))]

    def check(self, homepage, contact):
        texts = self.places()
        for text in texts[:-1]: # the last one has no web address
            self.assertIn(homepage, text)
        for text in texts:
            self.assertIn(contact, text)
        if homepage != HOMEPAGE:
            self.assertNotRegex("\n".join(texts), r"ravlin\.example")

    def test_a_build_has_the_addresses_it_is_told(self):
        done = self.configure(RAVLIN_HOMEPAGE=OTHER_HOMEPAGE, RAVLIN_CONTACT=OTHER_CONTACT)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.check(OTHER_HOMEPAGE, OTHER_CONTACT)
        for name in ("copyright", "changelog", "ravlin.lintian-overrides"):
            source = (ROOT / "packaging/linux/debian" / name).read_text()
            self.assertEqual((self.build / "packaging/linux/debian" / name).read_text(),
                             source.replace(HOMEPAGE, OTHER_HOMEPAGE).replace(CONTACT, OTHER_CONTACT), name)
        done = self.configure(RAVLIN_HOMEPAGE="", RAVLIN_CONTACT="")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.check(HOMEPAGE, CONTACT)

    def test_what_is_no_address_is_refused(self):
        for variable, values in (("RAVLIN_HOMEPAGE", ("music.example.org", "javascript:alert(1)", 'https://a"b', "https://a<b",
                                                      "https://a b", "https://a\\b", "https://")),
                                 ("RAVLIN_CONTACT", ("nobody", "a@b@c", "<a@b>", "a b@c", '"a"@b', "@b", "a@"))):
            for value in values:
                done = self.configure(**{variable: value})
                self.assertNotEqual(done.returncode, 0, value)
                self.assertIn(f"{variable} is not a", done.stderr)


if __name__ == "__main__":
    unittest.main()
