# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: every command that changes files makes one entry of the history and tells its number; undo gives each file its
former bytes, time, name and place, redo repeats that; what can't be taken back says why; a history that is damaged, newer
or can't be written never stops a change; interrupted changes are finished by whichever command comes next."""

import json
import os
import random
import signal
import subprocess
import time
import unittest

from clitest import PROGRAM, CliTest, id3v1, id3v2, mp3


class HistoryTest(CliTest):
    def setUp(self):
        super().setUp()
        self.database = self.data / "ravlin" / "history.sqlite"

    def song(self, name, title, **more):
        return self.make(name, mp3(id3v2(TIT2=title, TPE1="Artist", **more), id3v1(title=title.encode())))

    def state(self):
        """Every file with its bytes and time, every link with its target."""
        found = {}
        for root, folders, files in os.walk(self.folder):
            for name in folders:
                found[os.path.relpath(os.path.join(root, name), self.folder)] = "folder"
            for name in files:
                path = os.path.join(root, name)
                relative = os.path.relpath(path, self.folder)
                if os.path.islink(path):
                    found[relative] = os.readlink(path)
                else:
                    with open(path, "rb") as file:
                        found[relative] = (os.stat(path).st_mtime_ns, oct(os.stat(path).st_mode), file.read())
        return found

    def entries(self, *options):
        return json.loads(self.succeed("history", "--json", *options))


class EntryTest(HistoryTest):
    def test_each_command_is_one_entry_that_can_be_taken_back_and_repeated(self):
        a, b = self.song("a.mp3", "One"), self.song("b.mp3", "Two")
        self.song("cd/c.mp3", "Three")
        (self.folder / "to").mkdir()
        to = self.folder / "to"
        commands = {
            "single": ("tag", "--title", "New", a),
            "multi": ("multi", "--album", "An album", "--track", "1", a, b),
            "extract": ("extract", "--pattern", "%3", a, b),
            "remove-tags": ("strip", "--v1", "--v2", a, b),
            "rename": ("rename", "--pattern", "%1/%3", a, b),
            "rename-folder": ("renamedir", self.folder / "cd"),
            "copy": ("copy", "--to", to, a, self.folder / "cd"),
            "move": ("move", "--to", to, b, self.folder / "cd"),
            "trash": ("trash", a, self.folder / "cd"),
            "playlist": ("playlist", self.folder),
        }
        for kind, command in commands.items():
            with self.subTest(kind):
                before = self.state()
                rows = json.loads(self.succeed(command[0], "--json", *command[1:]))
                after = self.state()
                self.assertNotEqual(after, before)
                newest = self.entries("--limit", "1")[0]
                self.assertEqual(newest["kind"], kind)
                self.assertGreater(len(rows), 0)
                self.assertEqual({row["history"] for row in rows}, {newest["id"]})
                self.assertEqual(newest["folder"], str(self.folder))
                for _ in range(2):
                    undone = json.loads(self.succeed("undo", "--json"))
                    self.assertEqual({row["action"] for row in undone}, {"undone"})
                    self.assertEqual(self.state(), before)
                    self.succeed("redo")
                    self.assertEqual({path: what[2:] for path, what in self.state().items()},
                                     {path: what[2:] for path, what in after.items()})
                self.succeed("undo", str(newest["id"]))
                self.assertEqual(self.state(), before)

    def test_paths_don_t_depend_on_the_folder_of_the_call(self):
        self.song("a.mp3", "One")
        before = self.state()
        subprocess.run([PROGRAM, "tag", "--title", "New", "./a.mp3"], cwd=self.folder, env=self.environment, check=True)
        self.assertEqual(self.entries()[0]["folder"], str(self.folder))
        row, = json.loads(self.succeed("undo", "--json"))
        self.assertEqual(row["path"], str(self.folder / "a.mp3"))
        self.assertEqual(self.state(), before)

    def test_the_options_of_history(self):
        one, other = self.song("one/a.mp3", "One"), self.song("other/b.mp3", "Two")
        self.succeed("tag", "--title", "New", one)
        self.succeed("tag", "--title", "New", other)
        self.assertEqual([entry["id"] for entry in self.entries()], [2, 1])
        self.assertEqual(list(self.entries()[0]), ["id", "time", "kind", "folder", "files", "undone"])
        self.assertRegex(self.entries()[0]["time"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ$")
        self.assertEqual([entry["id"] for entry in self.entries("--limit", "1")], [2])
        self.assertEqual([entry["id"] for entry in self.entries("--folder", self.folder / "one")], [1])
        self.assertEqual(len(self.entries("--folder", self.folder)), 2)
        self.assertEqual(len(self.entries("--since", "2001-01-01")), 2)
        self.assertEqual(self.entries("--since", "2999-01-01T10:00"), [])
        lines = self.succeed("history").decode().splitlines()
        self.assertEqual(lines[0].split("\t"), ["id", "time", "kind", "folder", "files"])
        for wrong in (["--limit", "0"], ["--limit", "x"], ["--since", "yesterday"], ["--folder", ""], ["operand"]):
            self.assertEqual(self.run_cli("history", *wrong).returncode, 2, wrong)

    def test_without_history(self):
        path = self.song("a.mp3", "One")
        row, = json.loads(self.succeed("tag", "--no-history", "--json", "--title", "New", path))
        self.assertIsNone(row["history"])
        self.assertEqual(row["historyProblem"], "not wanted")
        self.assertEqual(self.entries(), [])

    def test_failures_are_told_beside_the_entry(self):
        path = self.song("a.mp3", "One")
        result = self.run_cli("tag", "--json", "--title", "New", path, self.folder / "none.mp3")
        self.assertEqual(result.returncode, 1)
        rows = json.loads(result.stdout)
        self.assertEqual([(row["action"], row["error"] is None, row["history"]) for row in rows],
                         [("changed", True, 1), ("failed", False, 1)])


class UndoTest(HistoryTest):
    def test_nothing_to_take_back(self):
        for command in ("undo", "redo"):
            result = self.run_cli(command)
            self.assertEqual(result.returncode, 1)
            self.assertIn(b"there is nothing to " + command.encode(), result.stderr)
        self.assertEqual(json.loads(self.run_cli("undo", "--json").stdout), [])
        self.assertIn(b"there is no such entry", self.run_cli("undo", "7").stderr)
        for wrong in ("x", "0", "-1", "1 2", "99999999999999999999999"):
            self.assertEqual(self.run_cli("undo", "--", wrong).returncode, 2, wrong)

    def test_a_file_that_has_changed_since_stays_and_is_named(self):
        a, b = self.song("a.mp3", "One"), self.song("b.mp3", "Two")
        before = self.state()
        self.succeed("multi", "--album", "Album", a, b)
        with open(b, "ab") as file:
            file.write(b"changed")
        edited = self.state()["b.mp3"]
        result = self.run_cli("undo", "--json")
        self.assertEqual(result.returncode, 1)
        self.assertEqual([(os.path.basename(row["path"]), row["action"]) for row in json.loads(result.stdout)],
                         [("a.mp3", "undone"), ("b.mp3", "failed")])
        self.assertIn(b"b.mp3: it has changed since", result.stderr)
        self.assertEqual(self.state(), {"a.mp3": before["a.mp3"], "b.mp3": edited})
        self.assertEqual(self.run_cli("undo").returncode, 1)  # it was tried

    def test_files_are_found_where_they_are_now(self):
        self.song("cd/a.mp3", "One")
        content = self.state()["cd/a.mp3"]
        self.succeed("tag", "--title", "New", self.folder / "cd" / "a.mp3")
        self.succeed("rename", "--pattern", "%3", self.folder / "cd" / "a.mp3")
        self.succeed("renamedir", "--pattern", "disc", self.folder / "cd")
        self.succeed("undo", "1")
        self.assertEqual(self.state()["disc/New.mp3"], content)
        self.succeed("undo")  # the folder
        self.succeed("undo")  # the file
        self.assertEqual(self.state(), {"cd": "folder", "cd/a.mp3": content})

    def test_an_older_entry_waits_for_later_ones(self):
        path = self.song("a.mp3", "One")
        before = self.state()
        self.succeed("tag", "--title", "New", path)
        self.succeed("tag", "--album", "New", path)
        changed = self.state()
        result = self.run_cli("undo", "1")
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"2: single", result.stderr)
        self.assertEqual(self.state(), changed)
        rows = json.loads(self.succeed("undo", "--with-later", "--dry-run", "--json", "1"))
        self.assertEqual(self.state(), changed)
        self.assertEqual({row["action"] for row in rows}, {"undo"})
        self.succeed("undo", "--with-later", "1")
        self.assertEqual(self.state(), before)

    def test_names_are_escaped(self):
        path = self.song("a\u202e\x1b[2J.mp3", "One")
        self.succeed("tag", "--title", "New", path)
        self.assertNotIn(b"\x1b", self.run_cli("undo", "--json").stdout)


class TroubleTest(HistoryTest):
    def spoil(self, content):
        self.database.parent.mkdir(parents=True, exist_ok=True)
        self.database.write_bytes(content)

    def test_a_damaged_database_is_set_aside(self):
        for content in (b"no database at all" * 100, b"SQLite format 3\0" + b"\xff" * 4096, random.Random(1).randbytes(9000)):
            path = self.song("a.mp3", "One")
            self.spoil(content)
            for command in (("list", self.folder), ("history",), ("tag", "--title", "New", path), ("info", path)):
                self.assertIn(self.run_cli(*command).returncode, (0, 1), command)
            self.assertIn("New", self.succeed("show", path).decode())
            self.assertTrue(list(self.database.parent.glob("history.sqlite.damaged-*")))

    def test_a_newer_database_is_left_alone(self):
        path = self.song("a.mp3", "One")
        self.succeed("tag", "--title", "New", path)
        content = bytearray(self.database.read_bytes())
        content[60:64] = (99).to_bytes(4, "big")  # the version that its users keep
        self.database.write_bytes(content)
        result = self.run_cli("tag", "--json", "--title", "Newer", path)
        self.assertEqual(result.returncode, 0)
        row, = json.loads(result.stdout)
        self.assertIsNone(row["history"])
        self.assertTrue(row["historyProblem"])
        self.assertIn(b"this can't be taken back", self.run_cli("tag", "--title", "Newest", path).stderr)
        self.assertIn("Newest", self.succeed("show", path).decode())
        self.assertEqual(self.run_cli("history").returncode, 1)
        self.assertEqual(self.run_cli("undo").returncode, 1)
        self.assertEqual(self.database.read_bytes(), bytes(content))

    def test_a_history_that_can_t_be_written(self):
        path = self.song("a.mp3", "One")
        self.data.write_bytes(b"a file where the folder would have to be")
        result = self.run_cli("tag", "--json", "--title", "New", path)
        self.assertEqual(result.returncode, 0)
        self.assertIsNone(json.loads(result.stdout)[0]["history"])
        self.assertIn("New", self.succeed("show", path).decode())


class KillTest(HistoryTest):
    """Kills a command at random; whichever command comes next, each file is old or new, and nothing is left behind."""

    ROUNDS = int(os.environ.get("RAVLIN_KILL_ROUNDS", "24"))

    def test_kills(self):
        chance = random.Random(int(os.environ.get("RAVLIN_SEED", "17")))
        followers = ("move", "copy", "link", "unlink", "list", "info")
        for number in range(self.ROUNDS):
            with self.subTest(number):
                self.kill_once(chance, followers[number % len(followers)], number)

    def kill_once(self, chance, follower, number):
        folder = self.folder / str(number)
        names = ["%d.mp3" % song for song in range(12)]
        for name in names:
            self.make(os.path.join(str(number), name), mp3(id3v2(TIT2="Old " + name, TPE1="A"), id3v1(title=b"Old"), 40))
        (folder / "links").mkdir()
        for name in names[::2]:
            os.link(folder / name, folder / "links" / name)
        paths = [folder / name for name in names]
        old = {path.name: path.read_bytes() for path in paths}
        mode = chance.choice("2345")
        album = "A longer album than the padding holds " * chance.choice((0, 3))
        command = ("tag", "--mode", mode, "--title", "New", "--album", album, *paths)
        process = subprocess.Popen([PROGRAM, *map(str, command)], env=self.environment, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL)
        time.sleep(chance.uniform(0, 0.06))
        process.send_signal(signal.SIGKILL)
        process.wait()
        self.follow(follower, folder, names, mode)
        self.assertFalse([name for _, _, files in os.walk(self.folder) for name in files if name.startswith(".ravlin-")])
        where = {path.name: path for path in folder.rglob("*.mp3")}
        self.assertEqual(sorted(where), sorted(names))
        for name, path in where.items():
            if path.read_bytes() != old[name]:
                shown, = json.loads(self.succeed("show", "--json", path))
                self.assertEqual(shown["title"], "New", path)
                self.assertEqual((shown["hasV1"], shown["hasV2"]), (mode in "34" or mode == "2", mode in "235"), path)
        while self.run_cli("undo").returncode == 0:
            pass
        where = {path.name: path for path in folder.rglob("*.mp3")}
        self.assertEqual({name: path.read_bytes() for name, path in where.items() if name in old}, old)

    def follow(self, follower, folder, names, mode):
        paths = [folder / name for name in names]
        if follower == "move":
            (folder / "to").mkdir()
            self.succeed("move", "--to", folder / "to", *paths)
        elif follower == "copy":
            (folder / "to").mkdir()
            self.succeed("copy", "--to", folder / "to", *paths)
        elif follower == "link":
            saved = json.loads(self.succeed("tag", "--json", "--mode", mode, "--artist", "By another name",
                                            *[folder / "links" / name for name in names[::2]]))
            self.succeed("undo", str(saved[0]["history"]))
        elif follower == "unlink":
            for name in names[::2]:
                os.unlink(folder / "links" / name)
            self.succeed("list", folder)
        elif follower == "list":
            self.succeed("list", self.folder)
        else:
            self.run_cli("info", *paths)


if __name__ == "__main__":
    unittest.main()
