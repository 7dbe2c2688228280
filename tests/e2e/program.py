# SPDX-License-Identifier: GPL-3.0-or-later
"""The program as a process with windows, driven by keys and mouse and observed over the accessibility bus."""

import os
import sys

from waiting import LIMIT, Gone, wait_until

PROGRAM = os.path.join(os.environ["RAVLIN_BIN_DIR"], "ravlin")
TRY_AGAIN = 15.0  # seconds before an action without effect is repeated
WINDOWS = ("frame", "dialog", "alert message")  # children of the application


def centre(extents):
    left, top, width, height = extents
    return left + width // 2, top + height // 2


class Program:
    """Controls are found by their names in the language of the program; list_name is the file list's, in English."""

    def __init__(self, desktop, *arguments, window=("frame", "ravlin!")):
        """window: role and name of the first one to appear."""
        self.desktop = desktop
        self.list_name = "file list"
        self._trees = {}
        self.window = None
        with open(desktop.folder / "program.log", "ab") as log:
            self._process = desktop.start([PROGRAM, *map(os.fspath, arguments)], stdout=log, stderr=log)
        self.application = self.wait(lambda: desktop.bus.application(self._process.pid), "the program on the bus")
        self.enter(*window)

    def enter(self, role, name):
        """Waits until that window is active and at its final place."""
        self.window = self.wait_for(role, name)
        self.wait(lambda: "active" in self.window.states, "the window active")
        places = []
        self.wait(lambda: self._rests(places), "the window at its place")

    def open_dialog(self, button, title):
        self.press(button, lambda: self.seen("dialog", title), f"dialog '{title}'")
        self.enter("dialog", title)
        return self.window

    def close_dialog(self, button):
        """Closes the entered dialog by that button and enters the main window."""
        dialog = self.window
        self.press(button, lambda: dialog not in self.application.children, "the dialog's end", inside=dialog)
        self.enter("frame", "ravlin!")

    def _rests(self, places):
        """Whether the place is final: the same three times, and the display knows the same."""
        places.append(self.window.extents)
        if len(places) < 3 or len(set(places[-3:])) > 1:
            return False
        return places[-1] == self.desktop.active_window_extents()

    def wait(self, condition, what, limit=LIMIT):
        return wait_until(condition, what, limit, self._must_run)

    def _must_run(self):
        if self._process.poll() is not None:
            raise AssertionError(f"the program ended by itself: {self._process.returncode}")

    # Controls

    def seen(self, role, name=None, inside=None):
        """The first control of that role and name that is on the screen now, or None."""
        if inside is None and role in WINDOWS:
            return self._window(role, name)
        return next((inside or self.application).find_shown(role, name), None)

    def _window(self, role, name):
        for node in self.application.children:
            try:
                if node.role == role and name in (None, node.name) and "showing" in node.states:
                    return node
            except Gone:
                pass
        return None

    def _seen_tree(self, name):
        """The tree of that name, looked for anew only if the one found last is not shown any more."""
        tree = self._trees.get(name)
        try:
            if tree is not None and "showing" in tree.states and tree.name == name:
                return tree
        except Gone:
            pass
        self._trees[name] = self.seen("tree", name)
        return self._trees[name]

    def wait_for(self, role, name=None, inside=None):
        return self.wait(lambda: self.seen(role, name, inside), f"{role} '{name}'")

    def combo_box(self, label):
        """The combo box with that label; its own name is the chosen entry."""
        def seen():
            return next((box for box in self.application.find_shown("combo box") if label in box.labels), None)

        return self.wait(seen, f"combo box '{label}'")

    @property
    def list(self):
        return self.wait(lambda: self._seen_tree(self.list_name), f"tree '{self.list_name}'")

    @property
    def tree(self):
        return self.wait(lambda: self._seen_tree("folders"), "tree 'folders'")

    def text_of(self, name, inside=None):
        return self.wait_for("text", name, inside).text

    def status(self):
        """The texts of the two panels of the status bar. Behind them stands what an operation reports."""
        return [label.name for label in self.wait_for("status bar").find_all("label")[:2]]

    def file_rows(self, table=None):
        """The texts of the first column, by default of the file list."""
        table = table or self.list
        return [table.cell(row).name for row in range(table.row_count)]

    def row(self, number, table=None, columns=8):
        """All texts of a row."""
        table = table or self.list
        return [table.cell(number, column).name for column in range(columns)]

    def selected_rows(self):
        table = self.list
        return [row for row in range(table.row_count) if "selected" in table.cell(row).states]

    # What a user does

    def click(self, node):
        self.desktop.click(*centre(node.extents))

    def press(self, name, condition, what, inside=None):
        """Clicks on a button, once it is enabled, until the condition holds."""
        def ready():
            # A button with a menu has a role of its own; its centre is the button, not the arrow.
            button = self.seen("push button", name, inside) or self.seen("button menu", name, inside)
            return button if button is not None and "enabled" in button.states else None

        def click():
            button = ready()
            if button is not None:
                self.click(button)

        self.wait(ready, f"button '{name}' to click on")
        self.again_until(click, condition, what)

    def again_until(self, action, condition, what):
        """Repeats an action until the condition holds, after long enough for any action that arrived to take effect.

        On a busy machine a key or a click gets lost if it meets a window that is just getting the focus.
        """
        for _ in range(5):
            action()
            try:
                return self.wait(condition, what, TRY_AGAIN)
            except AssertionError:
                self._must_run()
            print(f"done again: {what() if callable(what) else what}", file=sys.stderr)
        return self.wait(condition, what)

    def key_until(self, keys, condition, what):
        """Presses keys, separated by blanks, until the condition holds."""
        self.again_until(lambda: self.desktop.key(*keys.split()), condition, what)

    def focus(self, role, name, inside=None):
        node = self.wait_for(role, name, inside)
        self.again_until(lambda: self.click(node), lambda: "focused" in node.states,
                         f"the focus on {role} '{name}'")
        return node

    def fill(self, name, text, inside=None):
        """Replaces the content of a text box: ASCII by keys, other text over the bus."""
        box = self.focus("text", name, inside)

        def write():
            self.desktop.key("ctrl+a")
            if text.isascii():
                self.desktop.type(text)
            else:
                box.text = text

        self.again_until(write, lambda: box.text == text, lambda: f"'{text}' in '{name}', but it is '{box.text}'")

    def switch(self, role, name, on=True):
        """Ticks or unticks a check box, or chooses a radio button."""
        box = self.wait_for(role, name)
        is_so = lambda: ("checked" in box.states) == on  # noqa: E731

        def click():
            if not is_so():
                self.click(box)

        self.again_until(click, is_so, f"{role} '{name}' {'on' if on else 'off'}")
        return box

    def switch_conversion(self, name, key=None, entry=None):
        """Ticks a conversion and chooses an entry of its list by a key; without a key, unticks it."""
        box = self.switch("check box", name, on=False)
        if key is None:
            return
        self.switch("check box", name)
        self.wait(lambda: "focused" in box.states, f"the focus on '{name}'")
        self.key_until("Tab", self.focused_combo_box, f"the focus on the list of '{name}'")
        entries = self.focused_combo_box()
        self.key_until(key, lambda: entries.name == entry, f"'{entry}' chosen for '{name}'")

    def focused_combo_box(self):
        return next((box for box in self.application.find_shown("combo box") if "focused" in box.states), None)

    def open_page(self, tab, control):
        """Opens a page by its tab; control is the role and name of a control on it."""
        page = self.wait_for("page tab", tab)
        self.again_until(lambda: self.click(page), lambda: self.seen(*control), f"page '{tab}'")

    def wait_for_rows(self, rows):
        self.wait(lambda: self.file_rows() == rows, lambda: f"the list with {rows}, but it is {self.file_rows()}")

    def click_row(self, number):
        """Clicks on a row and waits until only this row is selected and the status bar shows its file."""
        def click():
            self.click(self.list.cell(number))

        name = self.list.cell(number).name
        self.again_until(click, lambda: self.selected_rows() == [number] and self.status()[1].endswith("/" + name),
                         f"row {number} clicked")

    def click_header(self, name, rows):
        """Clicks on a column header until the rows are in that order."""
        header = next(node for node in self.list.children[:8] if node.name == name)
        self.again_until(lambda: self.click(header), lambda: self.file_rows() == rows, f"the order {rows}")

    def drag_row(self, number, to, table=None):
        """Drops a row before another, or behind the last, and waits for the new order; by default in the file list."""
        table = table or self.list
        left, top, width, height = table.cell(number).extents
        rows = self.file_rows(table)
        below = to >= len(rows)
        edge = table.cell(to - 1 if below else to).extents
        goal = edge[1] + edge[3] + 2 if below else edge[1]
        x = left + min(width // 2, 60)
        start = top + height // 2
        former = list(rows)
        rows.insert(to if to < number else to - 1, rows.pop(number))

        def drag():
            if self.file_rows(table) == former:
                self.desktop.drag((x, start), (x, (start + goal) // 2), (x, goal))

        self.again_until(drag, lambda: self.file_rows(table) == rows, f"the order {rows}")
        self.desktop.park_pointer()

    def folder_item(self, name):
        """The item of the folder tree with that name that is on the screen, or None."""
        return next((node for node in self.tree.children
                     if node.role == "tree item" and node.name == name and "showing" in node.states), None)

    def click_folder(self, name):
        item = self.wait(lambda: self.folder_item(name), f"folder '{name}' in the tree")
        self.again_until(lambda: self.click(item),
                         lambda: {"selected", "focused"} <= item.states, f"folder '{name}' chosen")

    def close(self):
        """Closes the window by the window manager, as a user does. Returns the exit status."""
        for _ in range(6):
            self.desktop.key("alt+F4")
            try:
                return wait_until(lambda: self._process.poll() is not None and [self._process.returncode],
                                  "the program's end", TRY_AGAIN)[0]
            except AssertionError:
                pass
        raise AssertionError("the program does not end")
