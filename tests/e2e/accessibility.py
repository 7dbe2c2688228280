# SPDX-License-Identifier: GPL-3.0-or-later
"""The windows as a screen reader sees them: the AT-SPI bus over plain D-Bus calls, which unlike a client library cache
nothing."""

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

CALL_LIMIT = 30_000  # milliseconds; a busy program answers late

LABELLED_BY = 2  # type of relation
# The state numbers of AT-SPI that are used here.
STATES = {1: "active", 4: "checked", 7: "editable", 8: "enabled", 9: "expandable", 10: "expanded", 11: "focusable",
          12: "focused", 16: "modal", 22: "selectable", 23: "selected", 24: "sensitive", 25: "showing", 30: "visible"}
# Their children are rows and cells, possibly many; use cell() instead of walking over them.
TABLES = ("table", "tree table", "tree", "list", "list box")


def connect(address):
    flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
    return Gio.DBusConnection.new_for_address_sync(address, flags, None, None)


class Node:
    """One control. Every property is a call to the program; it raises Gone if the control no longer exists."""

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
        """The names of the labels beside it, by their relation."""
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
        """This node and all below it, hidden ones too; the parts of tables only on request."""
        return (node for node, _ in self._walk(tables))

    def _walk(self, tables=False):
        try:
            role = self.role
        except Gone:
            return
        yield self, role
        if role in TABLES and not tables:
            return
        try:
            children = self.children
        except Gone:
            return
        for child in children:
            yield from child._walk(tables)

    def shown(self):
        """The nodes below this one that are on the screen, with their roles, without the parts of tables.

        What is hidden hides all below it: of a page that is not open, one call is all that is made.
        """
        try:
            children = self.children
        except Gone:
            return
        for child in children:
            try:
                if "showing" not in child.states:
                    continue
                role = child.role
            except Gone:
                continue
            yield child, role
            if role not in TABLES:
                yield from child.shown()

    def find_shown(self, role, name=None):
        """Generates the nodes below this one that are on the screen and have that role, and that name unless None."""
        for node, found in self.shown():
            try:
                if found == role and (name is None or node.name == name):
                    yield node
            except Gone:
                pass

    def find_all(self, role, name=None):
        """This node and those below it, hidden ones too, that have that role, and that name unless None."""
        found = []
        for node, kind in self._walk():
            try:
                if kind == role and (name is None or node.name == name):
                    found.append(node)
            except Gone:
                pass
        return found

    def find(self, role, name=None):
        """The first of that role and name, or None."""
        return next(iter(self.find_all(role, name)), None)

    def describe(self, depth=0):
        """The tree as text, to explain a failure."""
        try:
            head = f"{self.role} {self.name!r} {sorted(self.states)}"
            children = self.children
        except Gone as error:
            return f"{'  ' * depth}({error})\n"
        return f"{'  ' * depth}{head}\n" + "".join(child.describe(depth + 1) for child in children)


class AccessibilityBus:
    """The bus on which programs publish their windows."""

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
        """The program with that process ID, or None if it has not registered yet."""
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
