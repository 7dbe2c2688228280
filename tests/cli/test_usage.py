# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: help and version everywhere, in the man page too; what makes no sense ends with status 2 and a hint; results
that cannot be written end with status 1; a closed stream never lets a message run into a file."""

import os
import re
import subprocess
import unittest

from clitest import COMMANDS, PROGRAM, ROOT, CliTest, id3v2, mp3

HELP = {}  # command: its help, which several tests read
OPTION = re.compile(r"(?<![\w-])--[a-z][a-z0-9-]*")


class HelpReader(CliTest):
    def help_of(self, command):
        if command not in HELP:
            HELP[command] = self.succeed(command, "--help").decode()
        return HELP[command]


class HelpTest(HelpReader):
    def test_the_help_lists_every_command(self):
        text = self.succeed("--help").decode()
        self.assertEqual(tuple(re.findall(r"^  ([a-z]+)  ", text, re.MULTILINE)), COMMANDS)
        self.assertEqual(self.succeed("-h").decode(), text)

    def test_every_command_has_help_and_version(self):
        version = self.succeed("--version")
        self.assertRegex(version, rb"^ravlin-cli \d+\.\d+\.\d+\n$")
        for command in COMMANDS:
            text = self.help_of(command)
            self.assertTrue(text.startswith("Usage: ravlin-cli %s " % command), text)
            self.assertLessEqual(max(map(len, text.split("\n"))), 120)
            self.assertEqual(self.succeed(command, "operand", "-h").decode(), text)
            self.assertEqual(self.succeed(command, "--version"), version)

    def test_the_man_page_tells_of_every_command_and_option(self):
        page = (ROOT / "packaging" / "linux" / "ravlin-cli.1").read_text().replace("\\-", "-")
        synopsis = page[page.index(".SH SYNOPSIS"):page.index(".SH DESCRIPTION")]
        known = set(OPTION.findall(self.succeed("--help").decode()))
        for command in COMMANDS:
            self.assertIn("ravlin-cli " + command, synopsis)
            self.assertRegex(page, r"(?m)^\.B %s$" % command)
            known |= set(OPTION.findall(self.help_of(command)))
        self.assertGreater(len(known), 10)
        self.assertEqual(set(OPTION.findall(page)), known)

    @unittest.skipUnless(os.path.exists("/usr/bin/man"), "man is not installed")
    def test_the_man_page_can_be_read(self):
        page = str(ROOT / "packaging" / "linux" / "ravlin-cli.1")
        result = subprocess.run(["man", "--warnings", "-l", page], capture_output=True, check=False,
                                env={**os.environ, "LC_ALL": "C.UTF-8", "MANPAGER": "cat"})
        self.assertEqual((result.returncode, result.stderr), (0, b""))


class CompletionTest(HelpReader):
    def complete(self, *words):
        """What bash offers when the last of the words is to be completed."""
        script = ('source "$0"; program=$1; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); '
                  '_ravlin_cli "$program" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD-1]}"; '
                  'printf "%s\\n" "${COMPREPLY[@]}"')
        completion = ROOT / "packaging" / "linux" / "ravlin-cli.bash"
        result = subprocess.run(["bash", "-c", script, completion, PROGRAM, "ravlin-cli", *words], check=True,
                                capture_output=True, text=True, timeout=60)
        self.assertEqual(result.stderr, "")
        return result.stdout.split()

    def test_commands(self):
        self.assertEqual(self.complete(""), [*COMMANDS, "--help", "--version"])
        self.assertEqual(self.complete("s"), ["show", "strip"])

    def test_options(self):
        for command in COMMANDS:
            known = set(OPTION.findall(self.help_of(command)))
            self.assertEqual(set(self.complete(command, "-")), known)
        self.assertEqual(self.complete("tag", "--mode", ""), ["1", "2", "3", "4", "5"])
        self.assertEqual(self.complete("multi", "--mode", ""), ["1", "2", "3", "4", "5"])
        self.assertEqual(self.complete("lookup", "--mode", ""), ["1", "2", "3", "4", "5"])
        self.assertEqual(self.complete("multi", "--case", ""), ["upper", "lower", "capitalize"])
        self.assertEqual(self.complete("multi", "--replace", "b"), ["blanks"])
        self.assertEqual(self.complete("move", "--clash", ""), ["skip", "number", "replace"])
        self.assertEqual(self.complete("tag", "--", "-"), [])


class UsageTest(CliTest):
    def test_nonsense_is_refused_with_a_hint(self):
        for arguments in ([], [""], ["nonsense"], ["--nonsense"], ["-x"], ["--", "list", "."]):
            output, message = self.fail_with(2, *arguments)
            self.assertEqual(output, b"")
            self.assertTrue(message.endswith(b"\nTry 'ravlin-cli --help'.\n"), message)

    def test_nonsense_behind_a_command_is_refused_with_its_hint(self):
        for command in COMMANDS:
            missing = [] if command in ("history", "undo", "redo") else [[], ["--"]]
            for arguments in (*missing, ["--nonsense", "x"], ["-x"], ["--mod=2", "x"]):
                output, message = self.fail_with(2, command, *arguments)
                self.assertEqual(output, b"")
                self.assertTrue(message.endswith(("\nTry 'ravlin-cli %s --help'.\n" % command).encode()), message)
        for arguments in (["list", "a", "b"], ["tag", "x", "--title"], ["show", "--json=1", "x"], ["history", "x"], ["redo", "1"],
                          ["undo", "1", "2"]):
            self.fail_with(2, *arguments)

    def test_nothing_is_said_of_the_locale(self):
        self.environment["LC_ALL"] = "C"
        self.make("夜.mp3", mp3(id3v2(TIT2="ñ")))
        self.assertIn("夜.mp3\t\tñ\t".encode(), self.succeed("list", self.folder))


class StreamsTest(CliTest):
    def test_a_full_disk_is_a_failure(self):
        for arguments in (["--version"], ["--help"], ["list", self.folder], ["case", "--mode=upper", "x"],
                          ["show", self.make("a.mp3")]):
            with open("/dev/full", "wb") as full:
                result = self.run_cli(*arguments, stdout=full)
            self.assertEqual(result.returncode, 1)
            self.assertIn(b"the output cannot be written", result.stderr)

    def test_a_reader_that_goes_away_is_no_message(self):
        path = self.make("a.mp3")
        process = subprocess.Popen([PROGRAM, "show", *[path] * 5000], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   env=self.environment)
        process.stdout.read(10)
        process.stdout.close()
        self.assertEqual(process.stderr.read(), b"")
        self.assertEqual(process.wait(timeout=60), 1)
        process.stderr.close()

    def test_work_goes_on_when_nobody_reads_the_messages(self):
        path = self.make("a.mp3")
        reader, writer = os.pipe()
        os.close(reader)
        result = self.run_cli("tag", "--title=x", "none.mp3", path, stderr=writer)
        os.close(writer)
        self.assertEqual(result.returncode, 1)
        self.assertEqual(self.show(path)["title"], "x")

    def test_closed_streams_never_lead_into_a_file(self):
        path = self.make("a.mp3")
        script = 'exec "$0" tag --title=x --genre=Nonsense "$1" none.mp3 <&- >&- 2>&-'
        result = subprocess.run(["sh", "-c", script, PROGRAM, path], env=self.environment, check=False, timeout=60)
        self.assertEqual(result.returncode, 1)
        self.assertEqual(self.show(path)["title"], "x")
        self.assertTrue(self.read(path).endswith(mp3()))
        self.assertNotIn(b"ravlin-cli:", self.read(path))

    def test_a_closed_output_is_a_failure(self):
        script = 'exec "$0" --version >&-'
        result = subprocess.run(["sh", "-c", script, PROGRAM], env=self.environment, check=False, capture_output=True)
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"the output cannot be written", result.stderr)


if __name__ == "__main__":
    unittest.main()
