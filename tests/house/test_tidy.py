# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: tools/check-tidy has each source compiled without precompiled headers, with all its other options, and reports
what clang-tidy finds. clang-tidy is replaced by a script that writes down what it was given."""

import json
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
CHECK = ROOT / "tools" / "check-tidy"
CLANG_TIDY = """#!/bin/sh
# The arguments are --quiet, -p, the folder of the compile commands and the source.
cp "$3/compile_commands.json" "$EVIDENCE"
echo "$4: finding"
exit "$STATUS"
"""


class TestTidy(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.build = self.folder / "build with a blank"
        self.build.mkdir()
        tool = self.folder / "clang-tidy-14"
        tool.write_text(CLANG_TIDY)
        tool.chmod(0o755)

    def check(self, options, status=0):
        """Runs check-tidy on a build of src/main.cpp with these options. Returns the result and the command used."""
        source = str(ROOT / "src" / "main.cpp")
        commands = [{"directory": str(self.build), "file": source, "command": "c++ %s -c %s" % (options, source)},
                    {"directory": str(self.build), "file": "/elsewhere/a.cpp", "command": "c++ -c /elsewhere/a.cpp"}]
        (self.build / "compile_commands.json").write_text(json.dumps(commands))
        evidence = self.folder / "evidence.json"
        environment = os.environ | {"PATH": "%s:%s" % (self.folder, os.environ["PATH"]), "EVIDENCE": str(evidence),
                                    "STATUS": str(status)}
        result = subprocess.run([sys.executable, str(CHECK), str(self.build)], env=environment, capture_output=True,
                                text=True, check=False)
        return result, json.loads(evidence.read_text())

    def test_precompiled_headers_are_left_out_and_all_else_is_kept(self):
        result, commands = self.check('-DTEXT=\\"a\\ b\\" -include own.h -Winvalid-pch -include "/x y/cmake_pch.hxx" '
                                      "-fpch-preprocess -std=c++20")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertEqual(len(commands), 1)
        self.assertEqual(commands[0]["arguments"][:-2], ["c++", '-DTEXT="a b"', "-include", "own.h", "-std=c++20"])

    def test_a_finding_is_reported(self):
        result, _ = self.check("-O0", status=1)
        self.assertEqual(result.returncode, 1)
        self.assertIn("src/main.cpp: finding", result.stdout)


if __name__ == "__main__":
    unittest.main()
