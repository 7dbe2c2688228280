#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""New versions, from the button in the options to the downloaded files: found, downloaded, cancelled, cut off."""

import hashlib
import os
import random
import subprocess
import unittest

from harness import EndToEndTest
from updateserver import UpdateServer

MEGABYTE = 1024 * 1024
SIZE = 20 * MEGABYTE
VERSION_FILE = "/ravlin/app/ravlin.ver"
UPDATE = "ravlin! update"


def running_version():
    program = os.path.join(os.environ["RAVLIN_BIN_DIR"], "ravlin-cli")
    return subprocess.run([program, "--version"], stdout=subprocess.PIPE, check=True).stdout.decode().split()[1]


class Update(EndToEndTest):
    def setUp(self):
        super().setUp()
        self.server = UpdateServer()
        self.addCleanup(self.server.stop)
        self.desktop.environment["RAVLIN_UPDATE_URL"] = self.server.address
        self.target = self.desktop.home / "Target"
        self.target.mkdir()
        self.contents = {name: random.Random(name).randbytes(SIZE) for name in ("a.zip", "b.zip", "c.zip")}
        for name, content in self.contents.items():
            self.server.files[f"/ravlin/app/files/{name}"] = content
        digest = hashlib.sha256(self.contents["a.zip"]).hexdigest()
        self.server.files["/ravlin/app/files/a.zip.sha256"] = f"{digest}  a.zip\n".encode("ascii")
        self.settings()

    def offer(self, version):
        lines = [f'"{version}",""'] + [f'"{name}","file {name}","{version}","files/",""' for name in self.contents]
        self.server.files[VERSION_FILE] = ("\r\n".join(lines) + "\r\n").encode("ascii")

    # The window

    def open_update(self, told):
        """Opens the window from the options and answers the box about the version."""
        program = self.program
        program.enter("dialog", "options")
        program.press("check for new version", lambda: self.box(told), f"the box '{told}'")
        self.answer_box(told)

    def close_update(self):
        program = self.program
        program.key_until("Escape", lambda: program.seen("dialog", UPDATE) is None, "the end of the update window")

    def box(self, text):
        """The message box with that text, or None."""
        return next((box for box in self.program.application.find_shown("alert message", UPDATE)
                     if box.find("label", text)), None)

    def answer_box(self, text):
        program = self.program
        program.wait(lambda: "active" in self.box(text).states, f"the box '{text}' active")
        program.key_until("Return", lambda: self.box(text) is None, f"the end of the box '{text}'")
        program.enter("dialog", UPDATE)

    @property
    def table(self):
        return self.program.wait_for("tree", "file list", inside=self.program.window)

    def select(self, first, last):
        """Selects the rows from first to last."""
        program = self.program
        table = self.table

        def choose():
            program.click(table.cell(first))
            for _ in range(first, last):
                program.desktop.key("shift+Down")

        def is_chosen():
            return [row for row in range(3) if "selected" in table.cell(row).states] == list(range(first, last + 1))

        program.again_until(choose, is_chosen, f"rows {first} to {last} selected")

    def start_download(self):
        program = self.program
        program.press("download", lambda: program.seen("dialog", "select dir"), "the folder dialog")
        program.enter("dialog", "select dir")
        box = program.wait_for("text", inside=program.window)
        box.text = str(self.target)
        program.wait(lambda: box.text == str(self.target), "the folder's path in the dialog")
        program.key_until("Return", lambda: program.seen("dialog", "select dir") is None, "the dialog's end")
        program.enter("dialog", UPDATE)

    def wait_for_progress(self, row, percent):
        """Waits for the exact number of bytes; the rounded percentage appears a little earlier."""
        program = self.program
        bar = program.wait_for("progress bar", "download", inside=program.window)
        program.wait(lambda: bar.value == SIZE * percent // 100 and self.table.cell(row, 1).name == f"{percent}%",
                     lambda: f"{percent}% of row {row}, but it is '{self.table.cell(row, 1).name}' and {bar.value}")

    def names(self):
        """The target folder's entries, hidden files too."""
        return sorted(path.name for path in self.target.iterdir())

    # The tests

    def test_a_new_version_is_found_and_downloaded(self):
        program = self.start()
        program.again_until(lambda: program.desktop.key("ctrl+comma"), lambda: program.seen("dialog", "options"),
                            "the options")
        version = running_version()
        self.offer(version)
        self.open_update(f"you have the last version: {version}")
        self.close_update()
        self.offer("9.0.0")
        self.open_update("new version: 9.0.0")
        self.assertEqual(program.file_rows(self.table), list(self.contents))
        self.check_download()
        self.check_cancel()
        self.check_server_stopped()
        self.close_update()
        program.enter("dialog", "options")
        program.close_dialog("cancel")
        self.close()

    def check_download(self):
        """Downloads two of three files and sees the progress move."""
        program = self.program
        self.select(0, 1)
        self.start_download()
        self.server.allow(5 * MEGABYTE)
        self.wait_for_progress(0, 25)
        program.wait_for("label", "20.00 Mb", program.window)
        program.wait_for("label", "status: (5.00 MB of 20.00 MB)", program.window)
        self.server.allow(12 * MEGABYTE)
        self.wait_for_progress(0, 60)
        self.assertEqual([name for name in self.names() if not name.startswith(".")], [])
        self.server.allow(SIZE)
        program.wait_for("label", "download finished", program.window)
        self.assertEqual(self.names(), ["a.zip", "b.zip"])
        for name in self.names():
            self.assertTrue((self.target / name).read_bytes() == self.contents[name], name)
        self.assertEqual([self.table.cell(row, 1).name for row in range(3)], ["100%", "100%", ""])
        program.wait_for("label", "has no checksum: b.zip; matches its checksum: a.zip", program.window)

    def check_cancel(self):
        program = self.program
        self.server.allow(0)
        self.select(2, 2)
        self.start_download()
        self.server.allow(5 * MEGABYTE)
        self.wait_for_progress(2, 25)
        program.press("cancel", lambda: program.seen("label", "download aborted", program.window),
                      "the end of the download", inside=program.window)
        self.assertEqual(self.names(), ["a.zip", "b.zip"])

    def check_server_stopped(self):
        program = self.program
        self.server.allow(0)
        self.start_download()
        self.server.allow(10 * MEGABYTE)
        self.wait_for_progress(2, 50)
        self.server.stop()
        self.answer_box("error")
        program.wait_for("label", " an error occurred in communicating with the host computer.12", program.window)
        self.assertEqual(self.names(), ["a.zip", "b.zip"])


if __name__ == "__main__":
    unittest.main(verbosity=2)
