# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: tools/make-demo makes a collection of files with an ID3v1 tag, an ID3v2 tag, both and none. It makes the same
files every time and never touches a folder that exists."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
MAKE_DEMO = ROOT / "tools" / "make-demo"


def contents(folder):
    return {path.relative_to(folder).as_posix(): path.read_bytes() for path in sorted(folder.rglob("*.mp3"))}


class TestDemo(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def make(self, *arguments):
        return subprocess.run([sys.executable, str(MAKE_DEMO), *arguments], capture_output=True, text=True, check=False)

    def test_every_combination_of_tags_is_there(self):
        target = self.folder / "a demo"
        result = self.make(str(target))
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))
        files = contents(target)
        kinds = {(data[:3] == b"ID3", data[-128:-125] == b"TAG") for data in files.values()}
        self.assertEqual(kinds, {(False, False), (False, True), (True, False), (True, True)})
        self.assertEqual(len({name.split("/")[0] for name in files}), 2)
        self.assertIn("月と路面電車".encode("utf-16-le"), b"".join(files.values()))
        self.assertEqual([path.name for path in self.folder.iterdir()], ["a demo"])

    def test_it_makes_the_same_files_each_time(self):
        self.make(str(self.folder / "one"))
        self.make(str(self.folder / "two"))
        self.assertEqual(contents(self.folder / "one"), contents(self.folder / "two"))

    def test_an_existing_folder_is_left_alone(self):
        target = self.folder / "demo"
        self.make(str(target))
        removed = next(target.rglob("*.mp3"))
        removed.unlink()
        before = contents(target)
        self.assertEqual(self.make(str(target)).returncode, 0)
        self.assertEqual(contents(target), before)

    def test_a_wrong_call_is_an_error(self):
        self.assertEqual(self.make().returncode, 2)
        self.assertEqual(self.make("--help").returncode, 0)


if __name__ == "__main__":
    unittest.main()
