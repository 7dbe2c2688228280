# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: the programs of an optimised build carry what keeps a memory error from becoming a stranger's code, and every
source was compiled with it. The installer for Windows never starts the program with its own rights."""

import json
import os
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PROGRAMS = Path(os.environ["RAVLIN_BIN_DIR"])
BUILD = PROGRAMS.parent

# Writes a number of bytes known only at run time into memory whose size is known: on the stack, and from malloc.
PROBE = """#include <cstdlib>
#include <cstring>
#include <vector>
extern void take(const void *);
void onStack(const char *bytes, std::size_t size) { char room[16]; std::memcpy(room, bytes, size); take(room); }
void allocated(const char *bytes, std::size_t size, std::size_t most)
{
    void *room = std::malloc(most);
    std::memcpy(room, bytes, size);
    take(room);
}
char behind(const std::vector<char> &bytes, std::size_t at) { return bytes[at]; }
"""


def cached(name):
    found = re.search(rf"^{name}:[A-Z]+=(.*)$", (BUILD / "CMakeCache.txt").read_text(), re.MULTILINE)
    return found.group(1) if found else ""


def output(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, check=True, text=True).stdout


@unittest.skipIf(cached("CMAKE_BUILD_TYPE") == "Debug", "a Debug build is not hardened: the checks need optimisation")
@unittest.skipIf(cached("RAVLIN_SANITIZERS"), "the sanitizers do more than these checks")
class HardeningTest(unittest.TestCase):
    def programs(self):
        for name in ("ravlin", "ravlin-cli"):
            with self.subTest(program=name):
                yield str(PROGRAMS / name)

    def compile_commands(self):
        return [entry for entry in json.loads((BUILD / "compile_commands.json").read_text())
                if Path(entry["file"]).is_relative_to(ROOT / "src")]

    def test_the_programs_are_laid_out_safely(self):
        for program in self.programs():
            self.assertIn("DYN (Position-Independent Executable", output("readelf", "-hW", program))
            dynamic = output("readelf", "-dW", program)
            self.assertRegex(dynamic, r"FLAGS_1.*\bNOW\b.*\bPIE\b")
            segments = output("readelf", "-lW", program)
            self.assertIn("GNU_RELRO", segments)
            self.assertRegex(segments, r"GNU_STACK +\S+ \S+ \S+ \S+ \S+ RW ")

    # Checked functions of the C library (_chk) can't be asked for here: nearly all our memory is behind containers, whose
    # sizes the compiler does not know at the call.
    def test_the_programs_check_the_stack_and_the_containers(self):
        for program in self.programs():
            symbols = output("nm", "--dynamic", "--undefined-only", program)
            self.assertIn("__stack_chk_fail", symbols)
            self.assertIn("__glibcxx_assert_fail", symbols)

    def test_every_source_is_compiled_with_the_checks(self):
        commands = self.compile_commands()
        self.assertGreater(len(commands), 100)
        for entry in commands:
            with self.subTest(source=entry["file"]):
                words = entry["command"].split()
                self.assertEqual([word for word in words if re.match("-O", word)][-1:],
                                 ["-O3" if cached("CMAKE_BUILD_TYPE") == "Release" else "-O2"])
                fortified = [word for word in words if "FORTIFY_SOURCE" in word]
                self.assertEqual(fortified, ["-U_FORTIFY_SOURCE", "-D_FORTIFY_SOURCE=3"])
                for word in ("-D_GLIBCXX_ASSERTIONS", "-fstack-protector-strong", "-fstack-clash-protection"):
                    self.assertIn(word, words)
                self.assertTrue("-fPIC" in words or "-fPIE" in words)

    def test_the_flags_take_effect(self):
        words = self.compile_commands()[0]["command"].split()
        compiler = next(word for word in words if not word.endswith("ccache"))
        flags = [word for word in words
                 if re.match(r"-(O|f|U_FORTIFY|D_FORTIFY|D_GLIBCXX|std=)", word) and "pch" not in word]
        with tempfile.TemporaryDirectory() as folder:
            source = Path(folder) / "probe.cpp"
            source.write_text(PROBE)
            made = str(Path(folder) / "probe.o")
            subprocess.run([compiler, *flags, "-c", str(source), "-o", made], check=True)
            calls = re.findall(r"__memcpy_chk|__glibcxx_assert_fail|__stack_chk_fail", output("readelf", "-rW", made))
        self.assertEqual(calls.count("__memcpy_chk"), 2)
        self.assertIn("__glibcxx_assert_fail", calls)
        self.assertIn("__stack_chk_fail", calls)


class InstallerTest(unittest.TestCase):
    def test_the_installer_leaves_starting_the_program_to_the_desktop(self):
        script = (ROOT / "packaging" / "windows" / "ravlin.nsi").read_text(encoding="utf-8")
        started = re.findall(r"^ *(?:!define MUI_FINISHPAGE_RUN|Exec\w*) +(.*)$", script, re.MULTILINE)
        self.assertEqual(started, ['"$WINDIR\\explorer.exe"'])
        self.assertIn(r'!define MUI_FINISHPAGE_RUN_PARAMETERS "$\"$INSTDIR\ravlin.exe$\""', script)


if __name__ == "__main__":
    unittest.main()
