#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""What a screen reader needs: every control that is shown has a name, and a role that says what it is."""

import unittest

from accessibility import TABLES
from collection import Song, make_file
from harness import EndToEndTest

CONTROLS = ("push button", "button menu", "check box", "radio button", "combo box", "text", "slider", "page tab",
            "page tab list", "tool bar", "status bar", "spin button", "link", *TABLES)
NO_CONTROLS = ("label", "filler", "panel", "layered pane")  # that can have the focus all the same


class NamesAndRoles(EndToEndTest):
    def check(self, window):
        found = 0
        for node in window.walk():
            role, states = node.role, node.states
            if "showing" not in states:
                continue
            self.assertNotIn(role, ("", "unknown", "invalid"), node.describe())
            if "focusable" in states and role not in NO_CONTROLS:
                self.assertIn(role, CONTROLS, node.describe())
            if role in CONTROLS:
                found += 1
                self.assertNotEqual(node.name or "".join(node.labels), "", node.describe())
        return found

    def test_every_control_of_every_page_and_dialog_has_a_name_and_a_role(self):
        self.settings(servidor="127.0.0.1:9")  # where no CD database is
        make_file(self.music / "a.mp3", Song("Niebla", "Ana"), v1=True)
        program = self.start(self.music)
        program.wait_for_rows(["a.mp3"])
        tabs = program.wait_for("page tab list")
        for tab in tabs.find_all("page tab"):
            name = tab.name
            program.again_until(lambda tab=tab: program.click(tab), lambda name=name: tabs.name == name,
                                f"page '{name}'")
            self.assertGreater(self.check(program.window), 10)
        for button, title in (("options", "options"), ("info", "info"), ("get album titles from freedb", "freedb")):
            self.assertGreater(self.check(program.open_dialog(button, title)), 2)
            program.key_until("Escape", lambda name=title: program.seen("dialog", name) is None, "the dialog's end")
            program.enter("frame", "ravlin!")
        self.close()


if __name__ == "__main__":
    unittest.main(verbosity=2)
