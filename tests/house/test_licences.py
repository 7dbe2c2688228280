# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: every source file and every script names its licence in its first or second line."""

import os
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
MARK = b"SPDX-License-Identifier: GPL-3.0-or-later"
SUFFIXES = {".h", ".cpp", ".py", ".cmake", ".bash", ".nsi", ".css"}
NOT_OURS = {".git", "build", "__pycache__"}


def sources(root):
    """The files under root that must name their licence, by suffix, by name, or because they begin with "#!"."""
    for folder, folders, names in os.walk(root):
        folders[:] = sorted(set(folders) - NOT_OURS)
        for name in sorted(names):
            path = Path(folder, name)
            with path.open("rb") as file:
                head = [file.readline(), file.readline()]
            if path.suffix in SUFFIXES or name == "CMakeLists.txt" or head[0].startswith(b"#!"):
                yield path, head


class TestLicences(unittest.TestCase):
    def test_every_source_names_its_licence(self):
        checked = list(sources(ROOT))
        self.assertEqual([], [str(path.relative_to(ROOT)) for path, head in checked if not any(MARK in line for line in head)])
        names = {path.relative_to(ROOT).as_posix() for path, _ in checked}
        # One of each kind, so that a mistake in the search does not pass for an orderly tree.
        self.assertLessEqual({"src/main.cpp", "src/core/app/programstate.h", "run", "tools/check-format", ".ci/run",
                              "tests/support/with-own-home", "tests/CMakeLists.txt", "cmake/RavlinWarnings.cmake",
                              "docs/guide/guide.css", "packaging/windows/ravlin.nsi",
                              "packaging/linux/ravlin-cli.bash", "tests/house/test_licences.py"}, names)


if __name__ == "__main__":
    unittest.main()
