#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The first start and the options, by keys alone: a choice takes effect at once and lasts after a restart."""

import unittest

from collection import Song, make_file, read_v1, read_v2
from harness import EndToEndTest

SONG = Song("Niebla", "Ana", "Mareas", "1998", "1", "Folk", "muelle")


class FirstRun(EndToEndTest):
    def start_afresh(self, *arguments):
        program = self.start(*arguments, window=("dialog", "options"))
        self.assertIsNone(program.seen("frame", "ravlin!"))
        return program

    def leave(self, program, key):
        """Leaves the options for the main window."""
        program.key_until(key, lambda: program.seen("frame", "ravlin!"), "the main window")
        program.enter("frame", "ravlin!")

    def check_saving(self, program, path):
        """Saves a file's tags by mode 5 in the French window."""
        program.list_name = "liste de fichier"
        program.wait_for_rows(["a.mp3", "b.mp3"])
        program.click_row(0)
        program.press("sauvegarder id3", lambda: program.row(0)[6:] == ["no", "yes"], "the list filled anew")
        self.assertEqual(program.selected_rows(), [0])  # the first run keeps the selection
        self.assertEqual((read_v1(path), read_v2(path)), (None, SONG))

    def choose_last(self, program, label, shown):
        """Chooses the last entry of the focused list until shown() holds."""
        box = program.combo_box(label)
        program.wait(lambda: "focused" in box.states, f"the focus on '{label}'")
        program.again_until(lambda: program.desktop.key("End"), shown, f"the last entry of '{label}' chosen")

    def test_what_is_saved_is_in_force_at_once_and_after_a_restart(self):
        folders = [self.music / "un", self.music / "deux"]
        for folder in folders:
            for name in ("a.mp3", "b.mp3"):
                make_file(folder / name, SONG, v1=True)
        program = self.start_afresh(folders[0])
        self.choose_last(program, "lenguage", lambda: program.seen("push button", "sauvegarder"))
        tags = program.combo_box("tags")
        program.key_until("Tab", lambda: "focused" in tags.states, "the focus on the modes")
        last = "sauvegarder tag id3v2 et supprimer tag id3v1"
        self.choose_last(program, "tags", lambda: program.combo_box("tags").name == last)
        self.leave(program, "Return")
        program.wait_for("page tab", "editeur de tag id3")
        self.assertEqual((self.stored("tags"), self.stored("idioma")), ("5", "fr"))
        self.check_saving(program, folders[0] / "a.mp3")
        self.close()

        program = self.start(folders[1])
        program.wait_for("page tab", "editeur de tag id3")
        self.check_saving(program, folders[1] / "a.mp3")
        self.close()
        self.assertEqual((self.stored("tags"), self.stored("idioma")), ("5", "fr"))

    def test_cancel_keeps_the_language_for_the_run_only(self):
        program = self.start_afresh()
        self.choose_last(program, "lenguage", lambda: program.seen("push button", "annuler"))
        self.leave(program, "Escape")
        program.wait_for("page tab", "editeur de tag id3")
        self.close()
        self.assertEqual((self.stored("tags"), self.stored("idioma")), ("", ""))

        program = self.start_afresh()
        program.wait_for("push button", "cancel")
        self.leave(program, "Escape")
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
        program.enter("dialog", "options")
        program.key_until("Escape", lambda: program.seen("dialog", "options") is None, "the end of the options")
        program.enter("frame", "ravlin!")
        program.again_until(lambda: program.desktop.key("F1"), lambda: program.seen("dialog", "info"), "the about box")
        for name in ("web site", "e-mail to the authors", "TagLib", "freedb", "user guide", "ok"):
            program.wait_for("push button", name)
        program.enter("dialog", "info")
        program.key_until("Return", lambda: program.seen("dialog", "info") is None, "the end of the about box")
        program.enter("frame", "ravlin!")
        self.close()


if __name__ == "__main__":
    unittest.main(verbosity=2)
