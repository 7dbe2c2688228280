# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: tools/install-packages installs exactly the listed packages that are missing and does not call apt if none is.
It asks for administrator rights only when it needs them, and says what to do where it cannot have them. Scripts that record
their calls replace the programs that it runs (dpkg-query, apt-get, id, sudo)."""

import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
INSTALL = ROOT / "tools" / "install-packages"
LIST = """# GROUP PACKAGE
run   compiler     # builds
run   builder+x
test  player       # run is only a word here
"""
DPKG_QUERY = """#!/bin/sh
# Like the real one: a line for each known package, "not-installed" for a removed one, failure if one is unknown.
for package in "$@"; do
    case "$package" in --*) continue ;; esac
    case " $INSTALLED " in *" $package "*) echo "installed $package" ;; *) echo "not-installed $package" ;; esac
done
exit 1
"""
APT_GET = '#!/bin/sh\necho "apt-get $*" >>"$CALLS"\ncase "$* " in *" update "*) exit "${UPDATE_STATUS:-0}" ;; esac\n'
SUDO = '#!/bin/sh\necho "sudo" >>"$CALLS"\nexec "$@"\n'


class TestPackages(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.bin = self.folder / "bin"
        self.bin.mkdir()
        for tool in ("sh", "sed", "awk", "grep", "dirname", "env", "cat"):
            (self.bin / tool).symlink_to(shutil.which(tool))
        self.program("dpkg-query", DPKG_QUERY)
        self.program("apt-get", APT_GET)
        self.program("id", "#!/bin/sh\necho 0\n")
        self.calls = self.folder / "calls"
        self.calls.write_text("")
        (self.folder / "list").write_text(LIST)

    def program(self, name, text):
        (self.bin / name).write_text(text)
        (self.bin / name).chmod(0o755)

    def install(self, *groups, installed="", update_status=0):
        environment = {"PATH": str(self.bin), "INSTALLED": installed, "CALLS": str(self.calls),
                       "RAVLIN_PACKAGE_LIST": str(self.folder / "list"), "UPDATE_STATUS": str(update_status)}
        return subprocess.run(["/bin/sh", str(INSTALL), *groups], env=environment, capture_output=True, text=True,
                              check=False)

    def called(self):
        return self.calls.read_text().splitlines()

    def test_nothing_missing_leaves_apt_alone(self):
        result = self.install("run", "test", installed="compiler builder+x player")
        self.assertEqual((result.returncode, result.stderr, self.called()), (0, "", []))

    def test_only_what_is_missing_is_installed_after_an_update(self):
        result = self.install("run", "test", installed="compiler")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(len(self.called()), 2)
        self.assertIn(" update", self.called()[0])
        self.assertTrue(self.called()[1].endswith("install --no-install-recommends builder+x player"), self.called())

    def test_a_package_whose_name_only_begins_alike_is_missing(self):
        self.program("dpkg-query", "#!/bin/sh\necho installed compiler-extras\nexit 1\n")
        self.install("run")
        self.assertTrue(self.called()[1].endswith(" compiler builder+x"), self.called())

    def test_the_default_group_is_run(self):
        self.install(installed="player")
        self.assertTrue(self.called()[1].endswith(" compiler builder+x"), self.called())

    def test_an_unreachable_source_does_not_stop_the_others(self):
        result = self.install("run", update_status=100)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(len(self.called()), 2)

    def test_a_user_works_through_sudo(self):
        self.program("id", "#!/bin/sh\necho 1000\n")
        self.program("sudo", SUDO)
        result = self.install("run")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual([call.split()[0] for call in self.called()], ["sudo", "apt-get", "sudo", "apt-get"])

    def test_a_user_without_sudo_is_told_what_to_ask_for(self):
        self.program("id", "#!/bin/sh\necho 1000\n")
        result = self.install("run", installed="compiler")
        self.assertEqual((result.returncode, self.called()), (1, []))
        self.assertIn("apt-get install --no-install-recommends builder+x", result.stderr)

    def test_an_unknown_group_is_an_error(self):
        result = self.install("nowhere")
        self.assertEqual((result.returncode, self.called()), (2, []))

    def test_another_system_is_told_what_is_needed(self):
        (self.bin / "apt-get").unlink()
        result = self.install("run")
        self.assertEqual(result.returncode, 0)
        self.assertIn("compiler builder+x", result.stderr)

    def test_our_own_list_is_well_formed(self):
        seen = set()
        for line in (ROOT / "packaging/linux/packages.txt").read_text("utf-8").splitlines():
            fields = line.partition("#")[0].split()
            if not fields:
                continue
            self.assertEqual(len(fields), 2, line)
            self.assertIn(fields[0], ("run", "test", "check", "bench", "fuzz", "package", "guide", "windows"))
            self.assertRegex(fields[1], r"^[a-z0-9][a-z0-9+.-]+$")
            self.assertNotIn(fields[1], seen)
            seen.add(fields[1])


if __name__ == "__main__":
    unittest.main()
