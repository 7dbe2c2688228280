# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: "toc" tells the table of contents that files make up; "lookup" asks a CD database for it or for a text, prints
what is found beside the files, writes it only with --apply, and says what is wrong with a server without writing. The
server is one of the tests' own, on this computer."""

import json
import os
import subprocess
import unittest
import wave
from concurrent.futures import ThreadPoolExecutor

from clitest import PROGRAM, CliTest, id3v2, mp3

SERVER = os.path.join(os.environ["RAVLIN_BIN_DIR"], "..", "tests", "cddb_server")
HEADER = b"\xff\xe3\x18\xc4"  # MPEG-2.5 layer III, 8 kbit/s, 8,000 Hz, mono: 72 bytes, 576 samples
RATE, SAMPLES, SIZE = 8000, 576, 72
# Discs of the server: the starts of their tracks and their end.
HARBOUR = (150, 20000, 40000, 60000)
FIRST_TAKE = (150, 15000, 30100, 45225)
LIBRARY = (150, 9000, 33000)


def track(frames, tells_padding=True):
    """An MP3 file that plays for that many frames of a CD and, if wanted, tells what its encoder added."""
    samples = frames * RATE // 75
    count = -(-samples // SAMPLES)
    audio = HEADER + bytes(SIZE - len(HEADER))
    info = HEADER + bytes(9) + b"Info" + bytes(4) + b"LAME3.100" + bytes(12)
    padding = count * SAMPLES - samples
    info = (info + bytes([0, padding >> 8, padding & 0xFF])).ljust(SIZE, b"\0")
    return (info if tells_padding else b"") + audio * count


class Server:
    def __init__(self, *options):
        self.process = subprocess.Popen([SERVER, *options], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.address = self.process.stdout.readline().strip()

    def stop(self):
        """Ends the server. Returns what it was asked."""
        asked, _ = self.process.communicate(timeout=60)
        return asked.splitlines()


class LookupTest(CliTest):
    def setUp(self):
        super().setUp()
        for name in [*self.environment]:
            if name.lower().endswith("_proxy"):
                del self.environment[name]

    def serve(self, *options):
        server = Server(*options)
        self.addCleanup(lambda: server.process.poll() is None and server.stop())
        return server

    def files(self, marks, **options):
        return [self.make("%d.mp3" % number, track(end - start, **options))
                for number, (start, end) in enumerate(zip(marks, marks[1:]), 1)]


class TocTest(LookupTest):
    def test_one_file_of_a_minute(self):
        path = self.make("a.mp3", track(60 * 75))
        self.assertEqual(self.json("toc", "--json", path), [{
            "discId": "02003c01", "tracks": 1, "seconds": 62, "offsets": "150 4650", "offsetsWithUsualDelay": ""}])
        self.assertEqual(self.succeed("toc", path), b"discId\ttracks\tseconds\toffsets\toffsetsWithUsualDelay\n"
                                                    b"02003c01\t1\t62\t150 4650\t\n")

    def test_the_order_is_that_given(self):
        short, long = self.make("a.mp3", track(75)), self.make("b.mp3", track(150))
        self.assertEqual(self.json("toc", "--json", short, long)[0]["offsets"], "150 225 375")
        self.assertEqual(self.json("toc", "--json", long, short)[0]["offsets"], "150 300 375")

    def test_the_usual_delay(self):
        path = self.make("a.mp3", track(4650, tells_padding=False))
        toc = self.json("toc", "--json", path)[0]
        frames = [int(toc[key].split()[1]) for key in ("offsets", "offsetsWithUsualDelay")]
        self.assertIn(frames[0] - frames[1], (16, 17))  # 1,728 samples of 8,000 a second

    def test_encoded_tracks_give_back_the_offsets(self):
        lengths = (100, 333, 751)  # frames of a CD: 588 samples of 44,100 a second
        for encoder in (("lame", "--quiet", "-b", "64"), ("ffmpeg", "-loglevel", "error", "-i")):
            paths = []
            for number, frames in enumerate(lengths):
                sound = os.path.join(self.folder, "%d.wav" % number)
                with wave.open(sound, "wb") as file:
                    file.setparams((2, 2, 44100, 0, "NONE", ""))
                    file.writeframes(bytes(range(84)) * (frames * 588 * 4 // 84))
                paths.append(os.path.join(self.folder, "%s%d.mp3" % (encoder[0], number)))
                subprocess.run([*encoder, sound, paths[-1]], check=True, stdin=subprocess.DEVNULL)
            toc = self.json("toc", "--json", *paths)[0]
            self.assertEqual((toc["offsets"], toc["offsetsWithUsualDelay"]), ("150 250 583 1334", ""), encoder)

    def test_a_file_that_is_none(self):
        output, message = self.fail_with(1, "toc", "--json", self.make("a.mp3"), self.make("b.mp3", b"nothing"), "none")
        self.assertEqual(json.loads(output), [])
        self.assertIn(b"b.mp3: Could not find frame start", message)
        self.assertIn(b"none: No file was found with the name", message)

    def test_more_files_than_tracks_of_a_disc(self):
        path = self.make("a.mp3")
        self.assertEqual(self.json("toc", "--json", *[path] * 99)[0]["tracks"], 99)
        _, message = self.fail_with(1, "toc", *[path] * 100)
        self.assertIn(b"no more than 99 tracks", message)


class FoundTest(LookupTest):
    def test_what_is_found_stands_beside_the_files(self):
        server = self.serve()
        paths = self.files(HARBOUR)
        before = [self.read(path) for path in paths]
        rows = self.json("lookup", "--json", "--server", server.address, *paths)
        self.assertEqual(rows[0], {"file": os.fsdecode(paths[0]), "track": 1, "title": "Faro", "artist": "Ana Mar",
                                   "album": "Harbour Songs", "year": "1987", "genre": "Pop", "differenceMs": 0})
        self.assertEqual([(row["title"], row["artist"]) for row in rows[1:]],
                         [("Phare", "Les Marées"), ("Interlude", "Various")])
        self.assertEqual([self.read(path) for path in paths], before)
        asked = server.stop()
        self.assertEqual(len(asked), 2)
        self.assertRegex(asked[0], r"^/~cddb/cddb\.cgi\?cmd=cddb\+query\+[0-9a-f]{8}\+3\+150\+20000\+40000\+800&"
                                   r"hello=ravlin\+ravlin\.example\+ravlin\+\d+\.\d+&proto=6$")

    def test_apply_writes_it(self):
        server = self.serve()
        paths = self.files(HARBOUR)
        self.succeed("tag", "--comment=mine", "--title=old", "--mode=2", *paths)
        output = self.succeed("lookup", "--apply", "--server", server.address, *paths)
        self.assertTrue(output.startswith(b"file\ttrack\ttitle\t"))
        shown = [self.show(path) for path in paths]
        self.assertEqual([(tag["track"], tag["title"], tag["artist"]) for tag in shown],
                         [("1", "Faro", "Ana Mar"), ("2", "Phare", "Les Marées"), ("3", "Interlude", "Various")])
        self.assertEqual({(tag["album"], tag["year"], tag["genre"], tag["comment"]) for tag in shown},
                         {("Harbour Songs", "1987", "Pop", "mine")})

    def test_apply_writes_only_mp3_files(self):
        server = self.serve()
        paths = self.files(HARBOUR)
        picture = b"\x89PNG\r\n\x1a\n" + bytes(2000000) + track(HARBOUR[1] - HARBOUR[0])
        self.make("1.mp3", picture)
        os.rename(paths[2], paths[2][:-1] + b"2")
        paths[2] = paths[2][:-1] + b"2"
        other = self.read(paths[2])
        for force in ((), ("--force",)):
            result = self.run_cli("lookup", "--apply", *force, "--server", server.address, *paths)
            self.assertEqual(result.returncode, 1)
            refused = [line.split(b": ")[1] for line in result.stderr.splitlines()]
            self.assertEqual(refused, paths[2:] if force else [paths[0], paths[2]])
            self.assertEqual(self.read(paths[0]).endswith(picture), True)
            self.assertEqual(self.read(paths[0]).startswith(b"ID3"), bool(force))
            self.assertEqual(self.show(paths[1])["title"], "Phare")
            self.assertEqual(self.read(paths[2]), other)

    def test_letters_of_all_languages(self):
        server = self.serve()
        paths = self.files(LIBRARY)
        self.environment["LC_ALL"] = "C"
        output = self.succeed("lookup", "--apply", "--server=http://%s/~cddb/cddb.cgi" % server.address, *paths)
        self.assertIn("\t序\t夜の図書館\t静かな海\t2011\t".encode(), output)
        self.assertEqual(self.show(paths[1])["title"], "終わり")

    def test_year_and_genre_that_the_disc_lacks_stay(self):
        server = self.serve()
        paths = self.files((150, 15040, 30110, 45300))
        self.succeed("tag", "--genre=Rock", "--year=1990", *paths)
        self.succeed("lookup", "--apply", "--search=somebody else / almost", "--server", server.address, *paths)
        shown = self.show(paths[2])
        self.assertEqual([shown[key] for key in ("title", "album", "year", "genre")],
                         ["z", "Almost as Long", "1990", "Rock"])

    def test_server_and_address_of_the_options(self):
        server = self.serve()
        settings = self.config / "ravlin" / "ravlin.ini"
        settings.parent.mkdir(parents=True)
        settings.write_text("[ini]\nservidor=%s\ncorreo=ana@mail.example\ntags=3\n" % server.address)
        paths = self.files(HARBOUR)
        self.succeed("lookup", "--apply", *paths)
        self.assertEqual([self.show(paths[0])[key] for key in ("hasV1", "hasV2")], [True, True])
        self.assertIn("&hello=ana+mail.example+ravlin+", server.stop()[0])

    def test_older_server(self):
        server = self.serve("--level", "1")
        rows = self.json("lookup", "--json", "--server", server.address, *self.files(HARBOUR))
        self.assertEqual([(row["title"], row["year"]) for row in rows][1], ("Phare", "1987"))

    def test_second_try(self):
        server = self.serve()
        # So far beside the disc that only the other offsets come close to it.
        paths = [self.make("%d.mp3" % n, track(frames, tells_padding=False))
                 for n, frames in enumerate((19850 + 145, 20000 + 150, 20000 + 95), 1)]
        _, message = self.fail_with(1, "lookup", "--server", server.address, *paths)
        self.assertIn(b"1: misc", message)
        self.assertEqual(sum("query" in address for address in server.stop()), 2)


class ChoiceTest(LookupTest):
    def test_several_are_listed(self):
        server = self.serve()
        paths = self.files(FIRST_TAKE)
        output, message = self.fail_with(1, "lookup", "--apply", "--json", "--server", server.address, *paths)
        self.assertEqual(json.loads(output), [])
        lines = message.decode().splitlines()
        self.assertIn("choose with --match", lines[0])
        self.assertRegex(lines[1], r"^1: jazz [0-9a-f]{8} The Quiet Three / First Take \(lengths differ by up to 0\.")
        self.assertRegex(lines[2], r"^2: misc [0-9a-f]{8} The Quiet Three / First Take \(reissue\) \(lengths")
        self.assertEqual(self.show(paths[0])["hasV2"], False)

    def test_match_takes_one(self):
        server = self.serve()
        paths = self.files(FIRST_TAKE)
        rows = self.json("lookup", "--json", "--match", "2", "--server", server.address, *paths)
        self.assertEqual(rows[2]["title"], "Three (mono)")
        _, message = self.fail_with(1, "lookup", "--match=3", "--server", server.address, *paths)
        self.assertIn(b"there is no match 3", message)

    def test_search_by_text(self):
        server = self.serve()
        path = self.make("a.mp3", track(7500))
        rows = self.json("lookup", "--json", "--search", "quiet three / reissue", "--server", server.address, path)
        self.assertEqual([row["title"] for row in rows], ["One", "Two", "Three (mono)"])
        self.assertEqual([row["file"] for row in rows], [os.fsdecode(path), None, None])
        self.assertEqual([row["differenceMs"] for row in rows], [-98000, None, None])
        before = self.read(path)
        _, message = self.fail_with(1, "lookup", "--apply", "--search=quiet three / reissue", "--server",
                                    server.address, path)
        self.assertIn(b"the disc has 3 tracks and there are 1 files; nothing is written", message)
        self.assertEqual(self.read(path), before)

    def test_nonsense(self):
        path = self.make("a.mp3")
        for arguments in (["--search", " "], ["--match", "0"], ["--match=x"], ["--timeout=0"]):
            self.fail_with(2, "lookup", *arguments, path)


class FailureTest(LookupTest):
    def test_no_disc(self):
        server = self.serve()
        path = self.make("a.mp3", track(1234))
        for arguments in ([], ["--search=nobody"]):
            output, message = self.fail_with(1, "lookup", "--json", *arguments, "--server", server.address, path)
            self.assertEqual(json.loads(output), [])
            self.assertTrue(message.endswith(b": disc not found\n"), message)

    def test_bad_servers_write_nothing(self):
        before = [self.read(path) for path in self.files(LIBRARY)]
        faults = {"Silence": "did not answer in time", "Stalls": "did not answer in time", "HangsUp": "is not complete",
                  "HalfSent": "is not complete", "CutList": "is not complete", "WebPage": "makes no sense",
                  "Zeros": "makes no sense", "TooLong": "is too long", "Endless": "is too long",
                  "RedirectLoop": "another address", "RedirectToFile": "not on the web", "HttpRefused": "HTTP 503",
                  "Code403": "is damaged on the server", "Code530": "try again later"}

        def look_up(fault):
            paths = [self.make("%s/%d.mp3" % (fault, number), content) for number, content in enumerate(before)]
            server = self.serve("--fault", fault, "--only", "cddb read")
            limit = ["--timeout=1"] if "in time" in faults[fault] else []
            result = self.run_cli("lookup", "--json", "--apply", *limit, "--server", server.address, *paths)
            return result, [self.read(path) for path in paths]

        with ThreadPoolExecutor() as pool:  # so that the time limits pass at the same time
            results = dict(zip(faults, pool.map(look_up, faults)))
        for fault, words in faults.items():
            with self.subTest(fault):
                result, after = results[fault]
                self.assertEqual((result.returncode, json.loads(result.stdout)), (1, []))
                self.assertTrue(result.stderr.startswith(b"ravlin-cli: "), result.stderr)
                self.assertIn(words, result.stderr.decode())
                self.assertEqual(after, before)

    def test_nobody_there(self):
        server = self.serve()
        server.stop()
        _, message = self.fail_with(1, "lookup", "--server", server.address, self.make("a.mp3"))
        self.assertIn(b"the server cannot be reached", message)

    def test_bad_addresses(self):
        path = self.make("a.mp3")
        for address in ("ftp://db.example", "", "db example"):
            _, message = self.fail_with(1, "lookup", "--server", address, path)
            self.assertIn(b"the server's address is not valid", message)

    def test_certificate_that_nobody_trusts(self):
        server = self.serve("--encrypted")
        _, message = self.fail_with(1, "lookup", "--server=https://" + server.address, self.make("a.mp3"))
        self.assertIn(b"certificate", message)
        self.assertEqual(server.stop(), [])

    def test_settings_that_cannot_be_read(self):
        (self.config / "ravlin" / "ravlin.ini").mkdir(parents=True)
        _, message = self.fail_with(1, "lookup", "--server=127.0.0.1:1", self.make("a.mp3"))
        self.assertIn(b"ravlin.ini: ", message)


if __name__ == "__main__":
    unittest.main()
