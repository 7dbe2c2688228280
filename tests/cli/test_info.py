# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: "info" tells the analysis of each file, with an entry for those that fail; "case" and "clean" convert texts."""

import json
import os
import unittest

from clitest import FRAME, CliTest, id3v1, id3v2, mp3


class InfoTest(CliTest):
    def test_a_sound_file(self):
        path = self.make("a.mp3", mp3(id3v2(TIT2="x"), id3v1(b"x"), frames=100))
        self.assertEqual(self.json("info", "--json", path), [{
            "file": os.fsdecode(path), "version": "MPEG1", "mode": "Joint-Stereo", "bitrate": 128, "frequency": 44100,
            "lengthMs": 2612, "samples": 115200, "playedSamples": 115200, "frames": 100, "vbr": False, "code": 0,
            "error": ""}])
        self.assertEqual(self.succeed("info", path).split(b"\n")[1],
                         path + b"\tMPEG1\tJoint-Stereo\t128\t44100\t2612\t115200\t115200\t100\tno\t0\t")

    def test_a_cut_file_is_told_by_its_code(self):
        path = self.make("a.mp3", FRAME * 20 + FRAME[:100])
        info = self.json("info", "--json", path)[0]
        self.assertEqual((info["code"], info["frames"], info["error"]), (-8, 20, ""))
        hole = self.make("b.mp3", FRAME * 20 + bytes([1]) * 1000 + FRAME * 20)
        for name, told in ((path, b"the audio is cut off"), (hole, b"the audio is damaged")):
            done = self.run_cli("info", name)
            self.assertEqual((done.returncode, done.stderr),
                             (0, b"ravlin-cli: " + name + b": " + told + b"; the values hold for what there is\n"))
        self.assertEqual(self.run_cli("info", self.make("c.mp3", FRAME * 20)).stderr, b"")

    def test_failures_have_an_entry_and_a_message(self):
        path, silent = self.make("a.mp3"), self.make(b"\xff.mp3", b"nothing to hear")
        output, message = self.fail_with(1, "info", "--json", "none.mp3", silent, self.folder, path)
        entries = json.loads(output)
        self.assertEqual([entry["code"] for entry in entries], [-4, -9, -5, 0])
        self.assertEqual(entries[0]["error"], "No file was found with the name:\r\nnone.mp3")
        self.assertTrue(entries[1]["error"].startswith("Could not find frame start after looking at 15"))
        self.assertEqual(os.fsencode(entries[1]["file"]), silent)
        for entry in entries[:3]:
            self.assertEqual({entry[key] for key in entry if key not in ("file", "code", "error")}, {None})
        lines = message.split(b"\n")
        self.assertEqual(lines[0], b"ravlin-cli: none.mp3: No file was found with the name")
        self.assertTrue(lines[1].startswith(b"ravlin-cli: " + silent + b": Could not find frame start"))
        self.assertEqual(lines[3:], [b""])


class TextsTest(CliTest):
    def test_case(self):
        for mode, expected in (("upper", "AÑO DON'T"), ("10", "AÑO DON'T"), ("lower", "año don't"),
                               ("11", "año don't"), ("capitalize", "Año Don't"), ("12", "Año Don't")):
            self.assertEqual(self.succeed("case", "--mode", mode, "aÑO dOn't").decode(), expected + "\n")
        self.assertEqual(self.succeed("case", "--mode=upper", "a", "", "--", "-b", "--mode"), b"A\n\n-B\n--MODE\n")

    def test_case_needs_a_mode(self):
        self.fail_with(2, "case", "text")
        for mode in ("13", "", "UPPER"):
            _, message = self.fail_with(2, "case", "--mode", mode, "text")
            self.assertIn(b"capitalize", message)

    def test_clean(self):
        self.assertEqual(self.succeed("clean", "AC/DC", "Who? Me", "a>bc", "a|b|c", "", "x"),
                         b"ACDC\nWho Me\nac\na\n\nx\n")

    def test_bytes_pass_through(self):
        self.assertEqual(self.succeed("clean", b"\xe9?"), b"\xe9\n")


if __name__ == "__main__":
    unittest.main()
