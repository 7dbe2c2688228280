#!/usr/bin/env python3
"""The very first start and the options, by keys alone: what is chosen holds at once and after a restart."""

import unittest

from harness import EndToEndTest
from program import Program


class FirstRun(EndToEndTest):
    def start_afresh(self):
        self.program = Program(self.desktop, window=("dialog", "options"))
        self.assertIsNone(self.program.seen("frame", "ravlin!"))
        return self.program

    def choose_last(self, program, label, shown):
        """The last entry of the list that has the focus; waits for what then shows."""
        box = program.combo_box(label)
        program.wait(lambda: "focused" in box.states, f"the focus on '{label}'")
        program.again_until(lambda: program.desktop.key("End"), shown, f"the last entry of '{label}' chosen")

    def test_what_is_saved_is_in_force_at_once_and_after_a_restart(self):
        program = self.start_afresh()
        self.choose_last(program, "lenguage", lambda: program.seen("push button", "sauvegarder"))
        program.desktop.key("Tab")
        last = "sauvegarder tag id3v2 et supprimer tag id3v1"
        self.choose_last(program, "tags", lambda: program.combo_box("tags").name == last)
        program.desktop.key("Return")
        program.enter("frame", "ravlin!")
        program.wait_for("page tab", "editeur de tag id3")
        self.assertEqual((self.stored("tags"), self.stored("idioma")), ("5", "fr"))
        self.close()

        program = self.start()
        program.wait_for("page tab", "editeur de tag id3")
        self.close()
        self.assertEqual((self.stored("tags"), self.stored("idioma")), ("5", "fr"))

    def test_cancel_keeps_the_language_for_the_run_only(self):
        program = self.start_afresh()
        self.choose_last(program, "lenguage", lambda: program.seen("push button", "annuler"))
        program.desktop.key("Escape")
        program.enter("frame", "ravlin!")
        program.wait_for("page tab", "editeur de tag id3")
        self.close()
        self.assertEqual((self.stored("tags"), self.stored("idioma")), ("", ""))

        program = self.start_afresh()
        program.wait_for("push button", "cancel")
        program.desktop.key("Escape")
        program.enter("frame", "ravlin!")
        program.wait_for("page tab", "id3 tag editor")
        self.close()


class Options(EndToEndTest):
    def test_keys_open_the_options_and_the_about_box(self):
        self.settings()
        program = self.start()
        program.again_until(lambda: program.desktop.key("ctrl+comma"), lambda: program.seen("dialog", "options"),
                            "the options")
        for name in ("general", "freedb"):
            program.wait_for("panel", name)
        for name in ("server", "email"):
            program.wait_for("text", name)
        program.wait_for("check box", "remember last directory")
        program.wait(lambda: "active" in program.wait_for("dialog", "options").states, "the options active")
        program.desktop.key("Escape")
        program.wait(lambda: program.seen("dialog", "options") is None, "the end of the options")
        program.enter("frame", "ravlin!")
        program.again_until(lambda: program.desktop.key("F1"), lambda: program.seen("dialog", "info"), "the about box")
        for name in ("web site", "e-mail to the authors", "TagLib", "freedb", "ok"):
            program.wait_for("push button", name)
        program.wait(lambda: "active" in program.wait_for("dialog", "info").states, "the about box active")
        program.desktop.key("Return")
        program.wait(lambda: program.seen("dialog", "info") is None, "the end of the about box")
        program.enter("frame", "ravlin!")
        self.close()


if __name__ == "__main__":
    unittest.main(verbosity=2)
