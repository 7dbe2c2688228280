# SPDX-License-Identifier: GPL-3.0-or-later
"""The windows as a screen reader sees them: the AT-SPI bus, asked by plain D-Bus calls, so that no answer is an old one
out of a cache."""

from gi.repository import Gio, GLib

from waiting import Gone, wait_until

ACCESSIBLE = "org.a11y.atspi.Accessible"
ACTION = "org.a11y.atspi.Action"
COMPONENT = "org.a11y.atspi.Component"
EDITABLE_TEXT = "org.a11y.atspi.EditableText"
PROPERTIES = "org.freedesktop.DBus.Properties"
SELECTION = "org.a11y.atspi.Selection"
TABLE = "org.a11y.atspi.Table"
TEXT = "org.a11y.atspi.Text"
VALUE = "org.a11y.atspi.Value"

CALL_LIMIT = 30_000  # milliseconds; a program that is at work does not answer at once

LABELLED_BY = 2  # kind of relation
# Of the standard's numbers, those that are used here.
STATES = {1: "active", 4: "checked", 7: "editable", 8: "enabled", 9: "expandable", 10: "expanded", 11: "focusable",
          12: "focused", 16: "modal", 22: "selectable", 23: "selected", 24: "sensitive", 25: "showing", 30: "visible"}
# Their children are rows and cells, which can be many, and are asked for by place.
TABLES = ("table", "tree table", "tree", "list", "list box")


def connect(address):
    flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
    return Gio.DBusConnection.new_for_address_sync(address, flags, None, None)


class Node:
    """One control. Every answer is asked for anew; one that is gone raises Gone."""

    def __init__(self, connection, owner, path):
        self._connection = connection
        self.owner = owner
        self.path = path

    def __eq__(self, other):
        return isinstance(other, Node) and (self.owner, self.path) == (other.owner, other.path)

    def __hash__(self):
        return hash((self.owner, self.path))

    def call(self, interface, method, signature=None, *arguments):
        parameters = GLib.Variant(signature, arguments) if signature else None
        try:
            answer = self._connection.call_sync(self.owner, self.path, interface, method, parameters, None,
                                                Gio.DBusCallFlags.NONE, CALL_LIMIT, None)
        except GLib.Error as error:
            raise Gone(f"{method} of {self.path}: {error.message}") from error
        return answer.unpack()

    def ask(self, interface, name):
        return self.call(PROPERTIES, "Get", "(ss)", interface, name)[0]

    def _node(self, reference):
        return Node(self._connection, *reference)

    @property
    def name(self):
        return self.ask(ACCESSIBLE, "Name")

    @property
    def description(self):
        return self.ask(ACCESSIBLE, "Description")

    @property
    def role(self):
        return self.call(ACCESSIBLE, "GetRoleName")[0]

    @property
    def states(self):
        low, high = self.call(ACCESSIBLE, "GetState")[0]
        bits = low | high << 32
        return {name for bit, name in STATES.items() if bits >> bit & 1}

    @property
    def children(self):
        return [self._node(reference) for reference in self.call(ACCESSIBLE, "GetChildren")[0]]

    @property
    def extents(self):
        """Left, top, width and height on the screen."""
        return self.call(COMPONENT, "GetExtents", "(u)", 0)[0]

    @property
    def text(self):
        return self.call(TEXT, "GetText", "(ii)", 0, -1)[0]

    @text.setter
    def text(self, text):
        self.call(EDITABLE_TEXT, "SetTextContents", "(s)", text)

    @property
    def labels(self):
        """What stands beside it: the names of the labels that it is related to."""
        return [self._node(target).name for kind, targets in self.call(ACCESSIBLE, "GetRelationSet")[0]
                if kind == LABELLED_BY for target in targets]

    @property
    def value(self):
        return self.ask(VALUE, "CurrentValue")

    @property
    def actions(self):
        return [action[0] for action in self.call(ACTION, "GetActions")[0]]

    def act(self, name):
        self.call(ACTION, "DoAction", "(i)", self.actions.index(name))

    @property
    def row_count(self):
        return self.ask(TABLE, "NRows")

    def cell(self, row, column=0):
        return self._node(self.call(TABLE, "GetAccessibleAt", "(ii)", row, column)[0])

    def walk(self, tables=False):
        """This and all below it, the parts of tables only if asked for."""
        yield self
        try:
            if not tables and self.role in TABLES:
                return
            children = self.children
        except Gone:
            return
        for child in children:
            yield from child.walk(tables)

    def find_all(self, role, name=None):
        """All of that role, and of that name where one is given, in the order of the tree."""
        found = []
        for node in self.walk():
            try:
                if node.role == role and (name is None or node.name == name):
                    found.append(node)
            except Gone:
                pass
        return found

    def find(self, role, name=None):
        """The first of that role and name; None where there is none."""
        return next(iter(self.find_all(role, name)), None)

    def describe(self, depth=0):
        """The tree as text, for whoever reads a failure."""
        try:
            head = f"{self.role} {self.name!r} {sorted(self.states)}"
            children = self.children
        except Gone as error:
            return f"{'  ' * depth}({error})\n"
        return f"{'  ' * depth}{head}\n" + "".join(child.describe(depth + 1) for child in children)


class AccessibilityBus:
    """The bus on which programs tell of their windows."""

    def __init__(self, session_address):
        session = connect(session_address)
        self._connection = None
        address = wait_until(lambda: self._address(session), "the accessibility bus")
        self._connection = connect(address)
        wait_until(lambda: self.registry().children is not None, "the accessibility registry")

    @staticmethod
    def _address(session):
        try:
            return session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None,
                                     Gio.DBusCallFlags.NO_AUTO_START, CALL_LIMIT, None).unpack()[0]
        except GLib.Error:
            return None

    def registry(self):
        return Node(self._connection, "org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")

    def application(self, process):
        """The program with that process number; None while it has not announced itself."""
        for node in self.registry().children:
            try:
                if self._process_of(node.owner) == process:
                    return node
            except Gone:
                pass
        return None

    def _process_of(self, owner):
        bus = Node(self._connection, "org.freedesktop.DBus", "/org/freedesktop/DBus")
        return bus.call("org.freedesktop.DBus", "GetConnectionUnixProcessID", "(s)", owner)[0]

    def close(self):
        if self._connection is not None:
            self._connection.close_sync(None)
