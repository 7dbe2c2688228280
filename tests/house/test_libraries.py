# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: the about box names every library that the programs are linked with and none besides, and the packages for
Windows carry the licence of each."""

import os
import re
import subprocess
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PROGRAMS = Path(os.environ["RAVLIN_BIN_DIR"])

# What the about box calls a library. The system's own need no name, and sanitizers are in no package. Qt's build files ask
# for OpenGL, which a build without optimisation links although nothing uses it.
NAMES = [
    (r"libQt6\w+\.so", "Qt"),
    (r"libz\.so", "zlib"),
    (r"libsqlite3\.so", "SQLite"),
    (r"lib(stdc\+\+|gcc_s|atomic)\.so", "GCC"),
]
UNNAMED = r"(lib(c|m|pthread|GLX|OpenGL)|ld-linux[\w-]*|lib(a|ub|l|t)san)\.so"
# What leaves no trace in a program: templates and drawings.
INVISIBLE = {"tl::expected", "Lucide"}
LICENCES = {"Qt": "qt", "zlib": "zlib", "SQLite": "sqlite", "GCC": "gcc-libraries", "tl::expected": "expected",
            "MinGW-w64": "mingw-w64"}


def linked():
    names = set()
    for program in ("ravlin", "ravlin-cli"):
        dynamic = subprocess.run(["readelf", "-dW", str(PROGRAMS / program)], stdout=subprocess.PIPE, check=True,
                                 text=True).stdout
        names.update(re.findall(r"\(NEEDED\)\s+Shared library: \[(.+?)\]", dynamic))
    return names


def named():
    """What the about box names: a name and a licence in brackets each, here and on Windows."""
    source = (ROOT / "src/ui/app/frmabout.cpp").read_text()
    source = re.sub(r'"\s*\n\s*"', "", source)  # one literal on several lines
    text = re.search(r'QStringLiteral\("(Qt .*?)" RAVLIN_RUNTIME\)', source).group(1)
    build = (ROOT / "src/CMakeLists.txt").read_text()
    everywhere, windows = (re.search(pattern, build).group(1) for pattern in (
        r'set\(RAVLIN_RUNTIME "(.*?)"\)', r'string\(APPEND RAVLIN_RUNTIME "(.*?)"\)'))
    return [re.findall(r"([\w:-]+)(?: %1)? \(", each) for each in (text + everywhere, windows)]


class LibrariesTest(unittest.TestCase):
    def test_the_about_box_names_what_is_linked(self):
        families = set()
        libraries = linked()
        self.assertIn("libz.so.1", libraries)
        for library in libraries:
            if not re.match(UNNAMED, library):
                family = next((name for pattern, name in NAMES if re.match(pattern, library)), None)
                self.assertIsNotNone(family, f"{library} has no name in the about box")
                families.add(family)
        everywhere, _ = named()
        self.assertEqual(sorted(families | INVISIBLE), sorted(everywhere))

    def test_the_packages_for_windows_carry_their_licences(self):
        package = (ROOT / "packaging/windows/package").read_text()
        listed = re.search(r"<<LICENSES\n(.*?)\nLICENSES", package, re.DOTALL).group(1)
        carried = {line.split()[1] for line in listed.splitlines()}
        everywhere, windows = named()
        self.assertEqual({LICENCES[name] for name in everywhere + windows if name != "Lucide"}, carried)
        self.assertIn("assets/icons/LICENSE", package)


if __name__ == "__main__":
    unittest.main()
