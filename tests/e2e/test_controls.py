#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""For screen readers, every control on the screen has a name and a role that fits."""

import itertools
import unittest

from accessibility import TABLES
from collection import Song, make_file
from harness import EndToEndTest

CONTROLS = ("push button", "button menu", "check box", "radio button", "combo box", "text", "slider", "page tab",
            "page tab list", "tool bar", "status bar", "spin button", "link", *TABLES)
NO_CONTROLS = ("label", "filler", "panel", "layered pane")  # can have the focus all the same


class NamesAndRoles(EndToEndTest):
    def check(self, window):
        found = 0
        self.assertIn("showing", window.states)
        for node, role in itertools.chain([(window, window.role)], window.shown()):
            states = node.states
            self.require(role not in ("", "unknown", "invalid"), node)
            if "focusable" in states and role not in NO_CONTROLS:
                self.require(role in CONTROLS, node)
            if role in CONTROLS:
                found += 1
                self.require((node.name or "".join(node.labels)) != "", node)
        return found

    def require(self, condition, node):
        if not condition:
            self.fail(node.describe())  # asks for all below the node: too slow for a node that is right

    def test_every_control_of_every_page_and_dialog_has_a_name_and_a_role(self):
        self.settings(servidor="127.0.0.1:9")  # no CD database listens there
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
