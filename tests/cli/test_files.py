# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: "copy" and "move" overwrite nothing unasked and lose nothing; "trash" puts files into the desktop's trash;
"playlist" writes a list that other programs read. With --dry-run nothing is done."""

import json
import os
import shutil
import stat
import subprocess
import tempfile
import unittest

from clitest import WITHOUT_PRIVILEGES, CliTest, id3v2, mp3


class FilesTest(CliTest):
    def setUp(self):
        super().setUp()
        self.target = self.folder.parent / "target"
        self.target.mkdir()
        self.environment["XDG_DATA_HOME"] = str(self.folder.parent / "data")
        self.trash = self.folder.parent / "data" / "Trash"

    def tree(self, folder):
        """What is in a folder, hidden files too: relative path to content."""
        return {str(path.relative_to(folder)): path.read_bytes() for path in sorted(folder.rglob("*")) if path.is_file()}

    def test_copy(self):
        self.make("a.mp3", b"one")
        self.make("cd/b.mp3", b"two")
        self.assertEqual(self.succeed("copy", "--to", self.target, self.folder / "a.mp3", self.folder / "cd"), b"")
        self.assertEqual(self.tree(self.target), {"a.mp3": b"one", "cd/b.mp3": b"two"})
        self.assertEqual(self.tree(self.folder), {"a.mp3": b"one", "cd/b.mp3": b"two"})

    def test_move(self):
        self.make("a.mp3", b"one")
        self.make("cd/b.mp3", b"two")
        self.succeed("move", self.folder / "a.mp3", self.folder / "cd", "--to", self.target)
        self.assertEqual(self.tree(self.target), {"a.mp3": b"one", "cd/b.mp3": b"two"})
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_nothing_is_overwritten_unasked(self):
        self.make("a.mp3", b"new")
        (self.target / "a.mp3").write_bytes(b"old")
        for command in ("copy", "move"):
            _, error = self.fail_with(1, command, "--to", self.target, self.folder / "a.mp3")
            self.assertIn(b"skipped", error)
        self.assertEqual(self.tree(self.target), {"a.mp3": b"old"})
        self.assertEqual(self.tree(self.folder), {"a.mp3": b"new"})
        self.succeed("copy", "--clash", "number", "--to", self.target, self.folder / "a.mp3")
        self.assertEqual(self.tree(self.target), {"a.mp3": b"old", "a (2).mp3": b"new"})
        self.succeed("move", "--clash", "replace", "--to", self.target, self.folder / "a.mp3")
        self.assertEqual(self.tree(self.target), {"a.mp3": b"new", "a (2).mp3": b"new"})

    def test_a_folder_never_goes_into_itself(self):
        self.make("cd/sub/a.mp3", b"x")
        for command in ("copy", "move"):
            for target in ("cd", "cd/sub"):
                _, error = self.fail_with(1, command, "--to", self.folder / target, self.folder / "cd")
                self.assertIn(b"into itself", error)
        self.assertEqual(self.tree(self.folder), {"cd/sub/a.mp3": b"x"})

    def test_usage(self):
        path = self.make("a.mp3")
        self.fail_with(2, "copy", path)
        self.fail_with(2, "move", "--to", self.target)
        self.fail_with(2, "move", "--to", self.target, "--clash", "maybe", path)
        self.fail_with(1, "move", "--to", self.target / "none", path)
        self.fail_with(1, "move", "--to", self.target, self.folder / "none.mp3")
        self.assertEqual(self.tree(self.target), {})

    def test_dry_run_does_nothing(self):
        self.make("a.mp3", b"new")
        self.make("b.mp3", b"b")
        (self.target / "a.mp3").write_bytes(b"old")
        before = (self.tree(self.folder), self.tree(self.target))
        rows = self.json("move", "--dry-run", "--json", "--clash", "replace", "--to", self.target,
                         self.folder / "a.mp3", self.folder / "b.mp3")
        self.assertEqual([row["action"] for row in rows], ["replace", "move"])
        self.assertEqual(rows[1]["newPath"], str(self.target / "b.mp3"))
        self.assertEqual([row["action"] for row in self.json("trash", "--dry-run", "--json", self.folder / "a.mp3")],
                         ["trash"])
        self.assertEqual((self.tree(self.folder), self.tree(self.target)), before)
        self.assertFalse(self.trash.exists())

    def rows(self, status, *arguments):
        """The JSON document of a command, an object for each path, with names instead of paths."""
        result = self.run_cli(*arguments)
        self.assertEqual(result.returncode, status, result.stderr)
        rows = json.loads(result.stdout)
        for row in rows:
            self.assertEqual("history" in row, "--dry-run" not in arguments)
            row.pop("history", None)
            row.pop("historyProblem", None)
            self.assertEqual(len(row), 4)
            for key in ("path", "newPath"):
                row[key] = row[key] and os.path.relpath(row[key], self.folder.parent)
        return rows

    def test_copying_and_moving_tell_each_outcome_as_json(self):
        for name in ("a.mp3", "b.mp3", "cd/c.mp3", "cd/d.mp3"):
            self.make(name, name.encode())
        (self.target / "b.mp3").write_bytes(b"old")
        (self.target / "cd").mkdir()
        (self.target / "cd/c.mp3").write_bytes(b"old")
        paths = [self.folder / name for name in ("a.mp3", "b.mp3", "none.mp3", "cd")]
        rows = self.rows(1, "copy", "--json", "--to", self.target, *paths)
        self.assertEqual([(row["path"], row["newPath"], row["action"]) for row in rows], [
            ("music/a.mp3", "target/a.mp3", "copy"), ("music/b.mp3", "target/b.mp3", "skipped"),
            ("music/none.mp3", "target/none.mp3", "failed"), ("music/cd", "target/cd", "skipped")])
        self.assertEqual([row["error"] is None for row in rows], [True, True, False, True])
        planned = self.rows(1, "move", "--json", "--dry-run", "--clash", "replace", "--to", self.target, *paths)
        rows = self.rows(1, "move", "--json", "--clash", "replace", "--to", self.target, *paths)
        self.assertEqual(rows, planned)
        self.assertEqual([(row["path"], row["newPath"], row["action"]) for row in rows], [
            ("music/a.mp3", "target/a.mp3", "replace"), ("music/b.mp3", "target/b.mp3", "replace"),
            ("music/none.mp3", "target/none.mp3", "failed"), ("music/cd/c.mp3", "target/cd/c.mp3", "replace"),
            ("music/cd/d.mp3", "target/cd/d.mp3", "move")])
        self.assertEqual(self.tree(self.folder), {})

    def test_paths_with_one_target_have_an_outcome_each(self):
        path = self.make("a.mp3")
        rows = self.rows(1, "copy", "--json", "--to", self.target, path, path)
        self.assertEqual([row["action"] for row in rows], ["copy", "skipped"])
        rows = self.rows(1, "move", "--json", "--clash", "number", "--to", self.target, path, path)
        self.assertEqual([(row["newPath"], row["action"], row["error"] is None) for row in rows],
                         [("target/a (2).mp3", "move", True), ("target/a (3).mp3", "failed", False)])
        other = self.make("b.mp3")
        rows = self.rows(1, "copy", "--json", "--to", self.target, other, self.folder / "none/b.mp3")
        self.assertEqual([(row["newPath"], row["action"]) for row in rows],
                         [("target/b.mp3", "copy"), ("target/b.mp3", "failed")])
        rows = self.rows(1, "trash", "--json", other, other)
        self.assertEqual([(row["action"], row["error"] is None) for row in rows], [("trash", True), ("failed", False)])

    def test_json_without_a_target_names_every_path(self):
        path = self.make("a.mp3")
        for options in ([], ["--dry-run"]):
            rows = self.rows(1, "copy", "--json", *options, "--to", self.target / "none", path)
            self.assertEqual([(row["path"], row["newPath"], row["action"]) for row in rows],
                             [("music/a.mp3", None, "failed")])
            self.assertTrue(rows[0]["error"])

    def test_a_full_drive_leaves_the_rest_not_done(self):
        drive = self.folder.parent / "drive"
        drive.mkdir()
        mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=256k", "none", drive], capture_output=True,
                                 check=False)
        if mounted.returncode != 0:
            self.skipTest("no small drive can be mounted here")
        self.addCleanup(subprocess.run, ["umount", drive], check=True)
        paths = [self.make("a.mp3", bytes(10_000)), self.make("b.mp3", bytes(1_000_000)), self.make("c.mp3", b"x")]
        rows = self.rows(1, "move", "--json", "--to", drive, *paths)
        self.assertEqual([row["action"] for row in rows], ["move", "failed", "notDone"])
        self.assertEqual([row["error"] is None for row in rows], [True, False, True])
        self.assertEqual(list(self.tree(self.folder)), ["b.mp3", "c.mp3"])

    def test_a_move_that_can_only_copy_says_so(self):
        if not self.can_drop_privileges():
            self.skipTest("the superuser cannot give up his privileges here")
        if not os.access("/dev/shm", os.W_OK) or os.stat("/dev/shm").st_dev == os.stat(self.folder).st_dev:
            self.skipTest("there is no second file system to write to")
        path = self.make("locked/a.mp3", b"x")
        os.chmod(self.folder / "locked", 0o555)
        self.addCleanup(os.chmod, self.folder / "locked", 0o755)
        with tempfile.TemporaryDirectory(dir="/dev/shm") as other:
            self.prefix = WITHOUT_PRIVILEGES
            os.chmod(other, 0o777)
            rows = self.rows(1, "move", "--json", "--to", other, path)
            self.assertEqual([row["action"] for row in rows], ["copy"])
            self.assertTrue(rows[0]["error"])
            self.assertEqual(os.listdir(other), ["a.mp3"])

    def test_trashing_tells_each_outcome_as_json(self):
        paths = [self.make("ñ a.mp3"), self.folder / "none.mp3", self.folder / "cd"]
        self.make("cd/b.mp3")
        rows = self.rows(1, "trash", "--json", *paths)
        self.assertEqual([(row["path"], row["action"], row["newPath"]) for row in rows], [
            ("music/ñ a.mp3", "trash", "data/Trash/files/ñ a.mp3"), ("music/none.mp3", "failed", None),
            ("music/cd", "trash", "data/Trash/files/cd")])
        self.assertEqual([row["error"] is None for row in rows], [True, False, True])
        self.assertEqual(self.tree(self.folder), {})

    def test_trashing_tells_the_paths_as_they_were_given(self):
        for name in ("a.mp3", "b.mp3", "c/d.mp3"):
            self.make(name)
        (self.folder.parent / "link").symlink_to(self.folder)
        given = ["a.mp3", "./none.mp3", "../link/b.mp3", "c/"]
        result = self.run_cli("trash", "--json", *given, cwd=self.folder)
        self.assertEqual(result.returncode, 1)
        rows = json.loads(result.stdout)
        self.assertEqual([(row["path"], row["action"]) for row in rows],
                         list(zip(given, ("trash", "failed", "trash", "trash"), strict=True)))
        self.assertEqual([row["newPath"] and os.path.basename(row["newPath"]) for row in rows],
                         ["a.mp3", None, "b.mp3", "c"])

    def test_a_folder_that_may_not_be_written(self):
        if not self.can_drop_privileges():
            self.skipTest("the superuser cannot give up his privileges here")
        self.prefix = WITHOUT_PRIVILEGES
        self.make("a.mp3", b"x")
        self.make("locked/b.mp3", b"y")
        os.chmod(self.target, 0o555)
        os.chmod(self.folder / "locked", 0o555)
        self.addCleanup(os.chmod, self.folder / "locked", 0o755)
        self.addCleanup(os.chmod, self.target, 0o755)
        for command in ("copy", "move"):
            _, error = self.fail_with(1, command, "--to", self.target, self.folder / "a.mp3")
            self.assertIn(b"refuses access", error)
        # The other way round: what can't be taken away stays.
        self.fail_with(1, "move", "--to", self.folder, self.folder / "locked/b.mp3")
        self.fail_with(1, "trash", self.folder / "locked/b.mp3")
        self.assertEqual(self.tree(self.folder), {"a.mp3": b"x", "locked/b.mp3": b"y"})
        self.assertEqual(self.tree(self.target), {})

    def test_a_file_that_may_not_be_read(self):
        if not self.can_drop_privileges():
            self.skipTest("the superuser cannot give up his privileges here")
        self.prefix = WITHOUT_PRIVILEGES
        self.make("cd/a.mp3", b"x")
        self.make("cd/b.mp3", b"y")
        os.chmod(self.folder / "cd/b.mp3", 0)
        self.fail_with(1, "copy", "--to", self.target, self.folder / "cd")
        self.assertEqual(list(self.target.iterdir()), [])  # all of a folder or nothing
        self.succeed("move", "--to", self.target, self.folder / "cd")
        self.assertEqual(stat.S_IMODE(os.stat(self.target / "cd/b.mp3").st_mode), 0)

    def test_trash(self):
        self.make("ñ a.mp3", b"one")
        self.make("cd/b.mp3", b"two")
        self.assertEqual(self.succeed("trash", self.folder / "ñ a.mp3", self.folder / "cd"), b"")
        self.assertEqual(self.tree(self.folder), {})
        self.assertEqual(self.tree(self.trash / "files"), {"ñ a.mp3": b"one", "cd/b.mp3": b"two"})
        info = (self.trash / "info" / "ñ a.mp3.trashinfo").read_text("ascii").splitlines()
        self.assertEqual(info[0], "[Trash Info]")
        self.assertTrue(info[1].startswith("Path=/") and info[1].endswith("/music/%C3%B1%20a.mp3"), info[1])
        self.assertRegex(info[2], r"^DeletionDate=\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d$")

    def test_trash_is_what_the_desktop_shows(self):
        if shutil.which("gio") is None:
            self.skipTest("gio is not installed")
        self.make("50% #1.mp3", b"one")
        self.succeed("trash", self.folder / "50% #1.mp3")
        listed = subprocess.run(["gio", "trash", "--list"], env=self.environment, capture_output=True, check=False)
        if listed.returncode != 0 or b"not supported" in listed.stderr:
            self.skipTest("gio has no trash without a desktop session")
        self.assertIn(os.fsencode(self.folder / "50% #1.mp3"), listed.stdout)

    def test_without_trash_nothing_is_deleted_unasked(self):
        self.make("a.mp3", b"one")
        (self.folder.parent / "data").write_bytes(b"a file where the trash would have to be")
        _, error = self.fail_with(1, "trash", self.folder / "a.mp3")
        self.assertIn(b"no trash", error)
        self.assertEqual(self.tree(self.folder), {"a.mp3": b"one"})
        rows = self.json("trash", "--dry-run", "--json", self.folder / "a.mp3")
        self.assertEqual(rows[0]["action"], "noTrash")
        rows = self.json("trash", "--delete", "--json", self.folder / "a.mp3")
        self.assertEqual([(row["action"], row["newPath"], row["error"]) for row in rows], [("delete", None, None)])
        self.assertEqual(self.tree(self.folder), {})
        self.make("b.mp3")
        output, _ = self.fail_with(1, "trash", "--json", self.folder / "b.mp3")
        row, = json.loads(output)
        self.assertEqual((row["action"], row["newPath"]), ("noTrash", None))
        self.assertIn("no trash", row["error"])

    def mount(self, name="drive", size="1m"):
        """A small drive of the test's own beside the music folder."""
        drive = self.folder.parent / name
        drive.mkdir()
        options = ["mount", "-t", "tmpfs", "-o", f"size={size}", "tmpfs", str(drive)]
        if shutil.which("mount") is None or subprocess.run(options, capture_output=True, check=False).returncode != 0:
            self.skipTest("mounting a drive is not permitted")
        self.addCleanup(subprocess.run, ["umount", "-l", str(drive)], check=True)
        return drive

    def make_read_only(self, drive):
        subprocess.run(["mount", "-o", "remount,ro", str(drive)], check=True)

    def test_a_full_drive_is_emptied_with_delete(self):
        drive = self.mount()
        for name in ("a.mp3", "b.mp3"):
            (drive / name).write_bytes(b"audio")
        try:
            with open(drive / "filling", "wb", buffering=0) as file:
                while file.write(bytes(4096)) == 4096:
                    pass
        except OSError:
            pass
        _, error = self.fail_with(1, "trash", drive / "a.mp3", drive / "b.mp3")
        self.assertEqual(error.count(b"too full for the trash; with --delete"), 2)
        self.assertIn(b"/drive/a.mp3: ", error)
        self.assertEqual(sorted(os.listdir(drive)), ["a.mp3", "b.mp3", "filling"])  # and no empty trash
        self.succeed("trash", "--delete", drive / "a.mp3", drive / "b.mp3")
        self.assertEqual(os.listdir(drive), ["filling"])

    def test_a_read_only_drive_is_named_once(self):
        drive = self.mount()
        for name in ("a.mp3", "b.mp3", "c.mp3"):
            (drive / name).write_bytes(b"audio")
            self.make(name, b"mine")
        self.make_read_only(drive)
        names = ("a.mp3", "b.mp3", "c.mp3")
        for run in (("trash", *[drive / name for name in names]),
                    ("trash", "--delete", *[drive / name for name in names]),
                    ("copy", "--clash", "number", "--to", drive, *[self.folder / name for name in names])):
            _, error = self.fail_with(1, *run)
            self.assertEqual(error.count(b"the drive is read-only"), 1, error)
            self.assertEqual(error.count(b"not begun"), 2, error)
            self.assertNotIn(b".ravlin-", error)
            self.assertIn(b"a.mp3: the drive is read-only", error)

    def test_a_move_that_can_not_delete_says_where_the_file_is(self):
        drive = self.mount()
        (drive / "a.mp3").write_bytes(b"audio")
        (drive / "b.mp3").write_bytes(b"more")
        self.make_read_only(drive)
        rows = self.fail_with(1, "trash", "--dry-run", "--json", drive / "a.mp3")[0]
        self.assertIn(b'"failed"', rows)
        _, error = self.fail_with(1, "move", "--to", self.target, drive / "a.mp3", drive / "b.mp3")
        both = b"copied in full, but the original is still there: it is now in both places"
        lines = error.splitlines()
        self.assertEqual(len(lines), 2, error)
        self.assertTrue(lines[0].endswith(b"/a.mp3: " + both + b" (the drive is read-only)"), error)
        self.assertTrue(lines[1].endswith(b"/b.mp3: " + both), error)
        self.assertEqual(self.tree(self.target), {"a.mp3": b"audio", "b.mp3": b"more"})

    def test_a_target_that_is_a_file(self):
        self.make("a.mp3", b"one")
        self.make("b.mp3", b"two")
        for command in ("copy", "move"):
            _, error = self.fail_with(1, command, "--to", self.folder / "b.mp3", self.folder / "a.mp3")
            self.assertIn(b"b.mp3: the target is a file, not a folder", error)
        self.assertEqual(self.tree(self.folder), {"a.mp3": b"one", "b.mp3": b"two"})

    def test_what_is_gone_is_not_on_a_drive_without_trash(self):
        for path in (self.folder / "gone.mp3", self.folder / "gone" / "a.mp3"):
            for options in ((), ("--delete",)):
                _, error = self.fail_with(1, "trash", *options, path)
                self.assertIn(b"does not exist", error)
                self.assertNotIn(b"no trash", error)

    def test_a_replaced_file_is_in_the_trash(self):
        for command in ("copy", "move"):
            self.make("a.mp3", b"new")
            (self.target / "a.mp3").write_bytes(b"old")
            self.succeed(command, "--clash", "replace", "--to", self.target, self.folder / "a.mp3")
            self.assertEqual(self.tree(self.target), {"a.mp3": b"new"})
        self.assertEqual(self.tree(self.trash / "files"), {"a.mp3": b"old", "a (2).mp3": b"old"})

    def test_playlist(self):
        self.make("b.mp3", mp3(id3v2(TPE1="Otro", TALB="Otro")))
        self.make("A.mp3", mp3(id3v2(TPE1="Artista", TALB="Disco")))
        self.make("cd1/ñ.mp3")
        path = self.succeed("playlist", self.folder)
        self.assertEqual(path, os.fsencode(self.folder) + b"/Artista - Disco.m3u\n")
        self.assertEqual(self.read(path[:-1]), b"A.mp3\r\nb.mp3\r\n")
        self.succeed("playlist", "--recursive", self.folder)
        self.assertEqual(self.read(path[:-1]), "A.mp3\r\nb.mp3\r\ncd1/ñ.mp3\r\n".encode())
        self.assertEqual(self.succeed("playlist", "--dry-run", self.folder), b"A.mp3\r\nb.mp3\r\n")
        self.fail_with(1, "playlist", self.folder / "none")
        self.fail_with(1, "playlist", self.folder / "b.mp3")

    def test_the_dry_run_of_a_playlist_prints_the_bytes_of_the_run(self):
        for name in (b"caf\xe9 \xff.mp3", "ñ 夜.mp3".encode(), b"#1.mp3", b" x\x1b[31m.mp3", b"cd/a\\b\tc.mp3", b"d\ne.mp3"):
            self.make(name)
        for options in ([], ["--recursive"]):
            dry = self.run_cli("playlist", "--dry-run", *options, self.folder)
            self.assertEqual(os.listdir(os.fsencode(self.folder)).count(b"lista.m3u"), 1 if options else 0)
            run = self.run_cli("playlist", *options, self.folder)
            self.assertEqual((dry.returncode, run.returncode), (0, 0))
            self.assertEqual(dry.stdout, self.read(self.folder / "lista.m3u"))
            self.assertEqual(dry.stdout.count(b"\r\n"), 5 if options else 4)
            self.assertIn(b"/d\\ne.mp3: left out, because", dry.stderr)
            self.assertEqual(dry.stderr, run.stderr)
        self.assertEqual(self.succeed("playlist", "--dry-run", self.target), b"")

    def test_a_playlist_of_nothing(self):
        self.assertEqual(self.succeed("playlist", self.folder), os.fsencode(self.folder) + b"/lista.m3u\n")
        self.assertEqual(self.tree(self.folder), {"lista.m3u": b""})

    def test_moves_to_another_drive(self):
        if not os.access("/dev/shm", os.W_OK) or os.stat("/dev/shm").st_dev == os.stat(self.folder).st_dev:
            self.skipTest("there is no second file system to write to")
        with tempfile.TemporaryDirectory(dir="/dev/shm") as other:
            self.make("cd/a.mp3", b"x" * 100_000)
            self.succeed("move", "--to", other, self.folder / "cd")
            self.assertFalse((self.folder / "cd").exists())
            self.succeed("move", "--to", self.folder, os.path.join(other, "cd"))
            self.assertEqual(os.listdir(other), [])
            self.assertEqual(self.tree(self.folder), {"cd/a.mp3": b"x" * 100_000})


if __name__ == "__main__":
    unittest.main()
