# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: whatever names, tags, arguments, settings and servers hold, no text begins a line of output or of messages, no
terminal gets what it would obey or what hides, JSON stays JSON, and nothing of that kind gets into new names or into tags
that are filled from names or servers."""

import json
import os
import re
import threading
import unittest
from http.server import BaseHTTPRequestHandler, HTTPServer

from clitest import COMMANDS, CliTest, id3v2, mp3

EVIL = "evil\nFORGED\r\nFORGED\x1b]0;FORGED\x07\x1b[31m\x7f\x85\x9b2J\u2028FORGED\u2029\u202egpj\u2066\ufeff\u200b\u200f.mp3"
BYTES = b"bytes\nFORGED \x9b2J\xff\x1b[2J.mp3"
# What a terminal obeys or does not show, but for the end of a line.
ODD = re.compile("[\x00-\x09\x0b-\x1f\x7f-\x9f\u061c\u200b\u200e\u200f\u2028-\u202e\u2066-\u2069\ufeff]")
ESCAPED = r"evil\nFORGED\r\nFORGED\x1b]0;FORGED\x07\x1b[31m\x7f\u0085\u009b2J\u2028FORGED\u2029\u202egpj\u2066\ufeff" \
          r"\u200b\u200f.mp3"
PLAIN = "evilFORGEDFORGED]0;FORGED[31m2JFORGEDgpj.mp3"


class HostileCase(CliTest):
    def setUp(self):
        super().setUp()
        text = EVIL.replace(".mp3", "")
        self.evil = os.fsdecode(self.make(EVIL, mp3(id3v2(TIT2=text, TPE1=text, TALB=text, TYER=text, TRCK=text,
                                                          TCON=text, COMM=text))))
        self.bytes = self.make(BYTES)
        self.none = os.fsdecode(os.path.join(os.fsencode(self.folder), b"none-" + BYTES))
        (self.folder / "target").mkdir()

    def check_lines(self, output, arguments):
        for line in re.split(b"[\n\r]", output):
            self.assertFalse(line.lstrip().startswith(b"FORGED"), (arguments, output))


class OutputTest(HostileCase):
    def commands(self):
        """Each command with hostile arguments: what succeeds, what fails and what makes no sense."""
        paths = [self.evil, self.bytes, self.none]
        folder = str(self.folder)
        for options in ([], ["--json"]):
            yield from (["list", *options, folder], ["list", *options, "--recursive", self.none],
                        ["list", *options, self.evil], ["show", *options, *paths], ["info", *options, *paths],
                        ["toc", *options, *paths],
                        ["lookup", *options, "--server", EVIL, self.evil],
                        ["lookup", *options, "--server", "http://127.0.0.1:1/" + EVIL, self.evil])
            for command in (["extract", "--pattern", "%1 - " + EVIL], ["extract", "--pattern", "%3"],
                            ["multi", "--comment", EVIL], ["multi", "--year", EVIL, "--genre", EVIL],
                            ["rename", "--pattern", "%1/%6" + EVIL], ["rename", "--rule", "artist-title"],
                            ["rename", "--pattern", "%1/../../../x"], ["copy", "--to", folder], ["move", "--to", self.none],
                            ["copy", "--to", folder + "/target"], ["trash"]):
                yield [*command, "--dry-run", *options, *paths]
            for command in (["renamedir"], ["renamedir", "--pattern", "%1" + EVIL]):
                yield [*command, "--dry-run", *options, folder]
        yield from (["playlist", "--dry-run", folder], ["playlist", self.none], ["playlist", folder],
                    ["case", "--mode=upper", EVIL, BYTES], ["clean", EVIL, BYTES], ["tag", "--year", EVIL, *paths],
                    ["strip", "--v1", "--v2", *paths], ["copy", "--to", folder + "/target", *paths],
                    ["move", "--to", folder + "/target", *paths], ["rename", "--rule", "artist-title", *paths],
                    ["extract", "--pattern", "%1 - %2", *paths], ["multi", "--genre", EVIL, *paths],
                    ["trash", self.none], ["trash", "--delete", self.none])
        yield from ([EVIL], ["--" + EVIL], [BYTES], ["case", "--mode", EVIL, "x"], ["multi", "--track", EVIL, "x"],
                    ["multi", "--case", EVIL, "x"], ["tag", "--mode", EVIL, "x"], ["rename", "--rule", EVIL, "x"],
                    ["rename", "--rule=artist-title", "--clash", EVIL, "x"], ["rename", "--pattern", BYTES, "x"],
                    ["lookup", "--match", EVIL, "x"], ["lookup", "--timeout", EVIL, "x"],
                    ["copy", "--to", folder, "--clash", EVIL, "x"])
        for command in COMMANDS:
            yield from ([command, "--" + EVIL, "x"], [command, "--help=" + EVIL], [command, b"-" + BYTES])

    def test_the_cases_are_of_every_command(self):
        self.assertEqual({command[0] for command in self.commands() if command[0] in COMMANDS}, set(COMMANDS))

    def test_pipes(self):
        for arguments in self.commands():
            result = self.run_cli(*arguments)
            self.assertIn(result.returncode, (0, 1, 2), (arguments, result.stderr))
            self.check_lines(result.stdout, arguments)
            self.check_lines(result.stderr, arguments)
            # Bytes of names that are no text stay in messages, but for those that are controls by themselves.
            messages = result.stderr.decode("utf-8", "surrogateescape")
            self.assertIsNone(ODD.search(messages), (arguments, messages))
            self.assertIsNone(re.search("[\udc80-\udc9f]", messages), (arguments, messages))
            for line in messages.splitlines():
                self.assertRegex(line, r"^(ravlin-cli: |Try ')")
            if "--json" in arguments:
                rows = result.stdout.decode("utf-8")
                self.assertIsNone(ODD.search(rows), arguments)
                self.assertIsInstance(json.loads(rows), list)

    def test_terminals(self):
        for arguments in self.commands():
            seen = self.on_terminal(*arguments, status=None)
            self.assertIsNone(ODD.search(seen), (arguments, seen))
            self.check_lines(seen.encode(), arguments)

    def test_how_a_terminal_shows_them(self):
        self.assertIn("file:    %s\n" % (str(self.folder) + "/" + ESCAPED), self.on_terminal("show", self.evil))
        self.assertIn("\n" + ESCAPED + "  ", self.on_terminal("list", str(self.folder)))
        self.assertIn("\n" + r"bytes\nFORGED \x9b2J\xff\x1b[2J.mp3  ", self.on_terminal("list", str(self.folder)))
        self.assertEqual(self.on_terminal("case", "--mode=lower", r"a\nb", "a\tb"), "a\\nb\na\\tb\n")

    def test_data_goes_into_pipes_as_it_is_but_for_line_breaks(self):
        self.assertEqual(self.succeed("case", "--mode=lower", "a\\b\x1b[31m\u202e\u2028\n\r", b"\x9b\xe9"),
                         "a\\b\x1b[31m\u202e\u2028\\n\\r\n".encode() + b"\x9b\xe9\n")
        lines = self.succeed("list", self.folder).split(b"\n")
        self.assertEqual(lines[1].split(b"\t")[0], BYTES.replace(b"\n", b"\\n"))
        self.assertEqual(lines[2].split(b"\t")[0].decode(), EVIL.replace("\n", "\\n").replace("\r", "\\r"))
        self.assertEqual(len(lines), 4)

    def test_json_comes_back(self):
        self.assertEqual([row["file"] for row in self.json("list", "--json", self.folder)],
                         [os.fsdecode(BYTES), EVIL])

    def test_clean_prints_what_a_name_would_be(self):
        self.assertEqual(self.succeed("clean", EVIL, BYTES), PLAIN.encode() + b"\nbytesFORGED \x9b2J\xff[2J.mp3\n")

    def test_settings(self):
        for name in ("config", "config\nFORGED\x1b[31m"):
            settings = self.folder / name / "ravlin" / "ravlin.ini"
            settings.parent.mkdir(parents=True)
            self.environment["XDG_CONFIG_HOME"] = str(self.folder / name)
            for text in ("[ini]\nservidor=\"a b\\nFORGED\\x1b[31m\"\ncorreo=\"x\\nFORGED\"\ntags=2\n", "[ini\x1b\rFORGED\n",
                         "[ini]\nservidor=a b\x1b\x9b\u202eFORGED\n"):
                settings.write_text(text)
                result = self.run_cli("lookup", self.evil)
                self.assertEqual(result.returncode, 1)
                self.check_lines(result.stderr, text)
                self.assertIsNone(ODD.search(result.stderr.decode()), result.stderr)
            settings.unlink()
            settings.mkdir()
            self.check_lines(self.fail_with(1, "tag", "--title=x", self.evil)[1], name)


class NamesAndValuesTest(HostileCase):
    def test_extracted_values(self):
        path = self.make("Band - Song\ntouch PWNED\x1b[2J\u2028\n#.mp3")
        self.succeed("extract", "--pattern", "%1 - %3", path)
        self.assertEqual([self.show(path)[key] for key in ("artist", "title")], ["Band", "Songtouch PWNED[2J#"])

    def test_bytes_of_names_stay_latin_text(self):
        path = self.make(b"Bj\xf6rk\x85 - \xe9\x9b.mp3")
        row, = json.loads(self.succeed("extract", "--dry-run", "--json", "--pattern", "%1 - %3", path))
        self.assertEqual([row["artist"], row["title"]], ["Björk", "é"])

    def test_new_names(self):
        os.remove(self.bytes)
        row, = json.loads(self.run_cli("rename", "--dry-run", "--json", "--pattern", "a\u202e%3", self.evil).stdout)
        self.assertEqual(os.path.basename(row["newFile"]), "a" + PLAIN)
        self.run_cli("rename", "--pattern", "a\u202e%3", self.evil)
        self.assertEqual(sorted(os.listdir(self.folder)), ["a" + PLAIN, "target"])
        self.run_cli("renamedir", "--pattern", "%2", self.folder)
        self.assertFalse(self.folder.exists())
        self.assertEqual(os.listdir(self.folder.parent), [PLAIN[:-4]])

    def test_a_name_of_nothing_visible_is_refused(self):
        path = self.make("a.mp3", mp3(id3v2(TIT2="\u202e\u200b\n")))
        _, message = self.fail_with(1, "rename", "--pattern", "%3", path)
        self.assertIn(rb"the new name is empty: ", message)
        self.assertTrue(os.path.exists(path))

    def test_playlists(self):
        os.remove(self.evil)
        os.remove(self.bytes)
        for name in ("#EXTVLCOPT:x.mp3", " #b.mp3", "http:/host/c.mp3", "d\ne.mp3", "f\u2028.mp3"):
            self.make(name)
        result = self.run_cli("playlist", "--recursive", self.folder)
        self.assertEqual(result.returncode, 0)
        self.assertEqual(result.stderr, b"ravlin-cli: " + os.fsencode(self.folder) + b"/d\\ne.mp3: left out, because a line "
                         b"of the list can't hold a line break\n")
        lines = ["./ #b.mp3", "./#EXTVLCOPT:x.mp3", "f\u2028.mp3", "./http:/host/c.mp3"]
        self.assertEqual(self.read(result.stdout[:-1]).decode(), "".join(line + "\r\n" for line in lines))
        dry = self.run_cli("playlist", "--recursive", "--dry-run", self.folder)
        self.assertEqual(dry.stdout.decode(), "".join(line + "\r\n" for line in lines))
        self.assertEqual(dry.stderr, result.stderr)


class ServerTest(HostileCase):
    def serve(self, *answers):
        """A server that gives these answers in turn; the last one again and again. Returns its address."""
        left = list(answers)

        class Handler(BaseHTTPRequestHandler):
            def do_GET(self):
                answer = left.pop(0) if len(left) > 1 else left[0]
                if isinstance(answer, tuple):
                    self.wfile.write(answer[0])
                    return
                self.send_response(200)
                self.send_header("Content-Length", str(len(answer)))
                self.end_headers()
                self.wfile.write(answer)

            def log_message(self, *_):
                pass

        server = HTTPServer(("127.0.0.1", 0), Handler)
        thread = threading.Thread(target=server.serve_forever)
        thread.start()
        self.addCleanup(server.server_close)
        self.addCleanup(thread.join)
        self.addCleanup(server.shutdown)
        return "127.0.0.1:%d" % server.server_port

    def check(self, *answers, options=()):
        path = self.make("a.mp3", mp3(frames=400))
        for run in (self.run_cli, self.on_terminal):
            arguments = ["lookup", *options, "--server", self.serve(*answers), path]
            if run == self.run_cli:
                result = run(*arguments)
                self.check_lines(result.stdout, answers)
                self.check_lines(result.stderr, answers)
                self.assertIsNone(ODD.search(result.stderr.decode()), result.stderr)
                said = result.stderr.decode()
            else:
                seen = run(*arguments, status=None)
                self.check_lines(seen.encode(), answers)
                self.assertIsNone(ODD.search(seen), seen)
        return said

    def test_what_servers_answer(self):
        evil = EVIL.encode()
        one_line = evil.replace(b"\n", b"\v").replace(b"\r", b"\f")
        for answer in (evil, b"500 " + one_line + b"\r\n", b"402 " + one_line + b"\n", b"210 " + evil,
                       b"200 " + one_line + b"\n", b"210 x\nDTITLE\n", (b"HTTP/1.0 404 " + one_line + b"\r\n\r\n",),
                       (b"HTTP/1.0 302 x\r\nLocation: " + one_line + b"\r\n\r\n",), (evil,)):
            self.assertTrue(self.check(answer))

    def test_matches_to_choose_from(self):
        evil = EVIL.replace("\n", "\v").replace("\r", "\f").encode()
        said = self.check(b"211 inexact\nrock 0a0b0c0d " + evil + b" / " + evil + b"\nmisc 0a0b0c0e x / y\n.\n", b"401 " + evil)
        self.assertEqual([line[:2] for line in said.splitlines()], ["ra", "1:", "2:"])

    def test_records(self):
        text = EVIL.replace("\n", "\\n").replace("\r", "\\r").encode()
        record = (b"210 rock 0a0b0c0d\n# x\x1b\nDTITLE=" + text + b" / " + text + b"\nDYEAR=1999" + text + b"\nDGENRE=" + text
                  + b"\nTTITLE0=" + text + b"\nEXTD=" + text + b"\n.\n")
        self.check(b"200 rock 0a0b0c0d x / y\n", record, options=["--apply"])
        saved = self.show(self.make("a.mp3", self.read(os.path.join(os.fsencode(self.folder), b"a.mp3"))))
        self.assertTrue(saved["title"].startswith("evil FORGED"))
        for value in saved.values():
            self.assertIsNone(re.search("[\x00-\x1f\x7f-\x9f\u2028\u2029]", str(value)), saved)


if __name__ == "__main__":
    unittest.main()
