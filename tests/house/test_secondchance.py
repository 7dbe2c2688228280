# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: tools/second-chance returns the verdict of the tests that it runs. It runs a few failed ones again and names
those that then pass. A finding of a sanitizer, a broken build and many failures fail at once. A script that passes or fails
as the test says replaces ctest."""

import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
CTEST = '#!/bin/sh\necho "ctest $*" >>calls\nexit "$SECOND_STATUS"\n'


class TestSecondChance(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.project = Path(folder.name)
        (self.project / "tools").mkdir()
        (self.project / "bin").mkdir()
        shutil.copy(ROOT / "tools" / "second-chance", self.project / "tools")
        ctest = self.project / "bin" / "ctest"
        ctest.write_text(CTEST)
        ctest.chmod(0o755)
        self.results = self.project / "build" / "dev" / "Testing" / "Temporary"
        self.results.mkdir(parents=True)

    def run_tests(self, failed=(), log="", status=8, second_status=0):
        """Runs the script on a command that leaves the files that ctest leaves."""
        lines = "".join(f"{number}:{name}\\n" for number, name in enumerate(failed, 1))
        command = f"printf '{log}' >{self.results}/LastTest.log;"
        if failed:
            command += f"printf '{lines}' >{self.results}/LastTestsFailed.log;"
        command += f"exit {status}"
        environment = os.environ | {
            "PATH": f"{self.project / 'bin'}:{os.environ['PATH']}",
            "SECOND_STATUS": str(second_status),
        }
        script = self.project / "tools" / "second-chance"
        return subprocess.run([script, "dev", "sh", "-c", command], env=environment, capture_output=True, text=True)

    def tries(self):
        calls = self.project / "calls"
        return calls.read_text() if calls.exists() else ""

    def unstable(self):
        names = self.project / "build" / "unstable-tests"
        return names.read_text() if names.exists() else ""

    def test_passing_tests_run_once(self):
        self.assertEqual(self.run_tests(status=0).returncode, 0)
        self.assertEqual((self.tries(), self.unstable()), ("", ""))

    def test_a_test_that_passes_the_second_time_is_named(self):
        result = self.run_tests(failed=["files/undo", "e2e/window"])
        self.assertEqual(result.returncode, 0)
        self.assertIn("files/undo", result.stdout)
        self.assertEqual(self.tries(), "ctest --preset dev --rerun-failed\n")
        self.assertEqual(self.unstable(), "files/undo\ne2e/window\n")

    def test_a_test_that_fails_twice_fails(self):
        self.assertEqual(self.run_tests(failed=["files/undo"], second_status=8).returncode, 8)
        self.assertEqual(self.unstable(), "")

    def test_a_sanitizers_finding_counts_at_once(self):
        for log in ("==1==ERROR: LeakSanitizer: detected memory leaks", "a.cpp:1:2: runtime error: signed overflow"):
            self.assertEqual(self.run_tests(failed=["files/undo"], log=log).returncode, 8)
        self.assertEqual(self.tries(), "")

    def test_many_failures_count_at_once(self):
        self.assertEqual(self.run_tests(failed=["a/a", "b/b", "c/c", "d/d"]).returncode, 8)
        self.assertEqual(self.tries(), "")

    def test_a_broken_build_is_no_failed_test(self):
        (self.results / "LastTestsFailed.log").write_text("1:files/undo\n")
        self.assertEqual(self.run_tests(status=2).returncode, 2)
        self.assertEqual(self.tries(), "")


if __name__ == "__main__":
    unittest.main()
