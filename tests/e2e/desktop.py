# SPDX-License-Identifier: GPL-3.0-or-later
"""A desktop for tests: display, window manager, session bus, accessibility bus, and a home folder for each test."""

import ctypes
import os
import select
import shutil
import signal
import subprocess
import time

from accessibility import AccessibilityBus
from waiting import LIMIT, wait_until

SCREEN = "1280x900x24"
NEEDED = ("Xvfb", "openbox", "dbus-daemon", "xdotool", "xprop", "xwininfo", "import", "xdg-open", "mimetype")
BUS_LAUNCHER = "/usr/libexec/at-spi-bus-launcher"
PR_SET_PDEATHSIG = 1
PR_SET_CHILD_SUBREAPER = 36
DOUBLE_CLICK = 0.6  # seconds between clicks that Qt must not take for a double click; its limit is 0.4 s

# No mouse bindings: for them the manager freezes the pointer at every press.
WINDOW_MANAGER_SETTINGS = """<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>yes</focusNew><followMouse>no</followMouse></focus>
  <placement><policy>Smart</policy><center>yes</center></placement>
  <desktops><number>1</number></desktops>
  <keyboard><keybind key="A-F4"><action name="Close"/></keybind></keyboard>
</openbox_config>
"""

_libc = ctypes.CDLL(None, use_errno=True)


def die_with_parent():
    _libc.prctl(PR_SET_PDEATHSIG, signal.SIGKILL, 0, 0, 0)


def adopt_orphans():
    """Orphaned descendants become our children, so that they can be found and killed."""
    _libc.prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)


def children_of(parent):
    try:
        with open(f"/proc/{parent}/task/{parent}/children", encoding="ascii") as file:
            return [int(child) for child in file.read().split()]
    except OSError:
        return []


def end_descendants(spared=()):
    """Kills the children of this process and what they started, except those spared and their children."""
    deadline = time.monotonic() + LIMIT
    while time.monotonic() < deadline:
        children = [child for child in children_of(os.getpid()) if child not in spared]
        if not children:
            return
        for child in children:
            try:
                os.kill(child, signal.SIGKILL)
            except ProcessLookupError:
                pass
        for child in children:
            try:
                os.waitpid(child, 0)
            except ChildProcessError:
                pass


def missing_programs():
    return [name for name in NEEDED if shutil.which(name) is None] + (
        [] if os.access(BUS_LAUNCHER, os.X_OK) else [BUS_LAUNCHER])


class Desktop:
    """The constructor starts everything and moves into the folder; close() ends it. The caller removes the folders.

    Several users can follow one another: leave() ends what one has started, move_in() gives the next a home and an
    environment of its own. They share the display, the buses, the window manager and the place of the pointer.
    """

    def __init__(self, folder):
        adopt_orphans()
        self.log = open(folder / "desktop.log", "wb")
        self.bus = None
        self._processes = []
        self._spared = ()
        self._last_click = (0.0, 0, 0)
        runtime = folder / "run"
        runtime.mkdir(mode=0o700)
        self._basis = {
            "PATH": os.environ.get("PATH", os.defpath), "LC_ALL": "C.UTF-8", "TZ": "UTC",
            "XDG_RUNTIME_DIR": str(runtime), "GSETTINGS_BACKEND": "memory", "QT_QPA_PLATFORM": "xcb",
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "QT_ACCESSIBILITY": "1",
        }
        self.move_in(folder)
        try:
            self._start_display()
            self._start_buses()
            self._start_window_manager()
        except BaseException:
            self.close()
            raise
        self._basis.update({name: self.environment[name] for name in ("DISPLAY", "DBUS_SESSION_BUS_ADDRESS")})
        self._spared = tuple(process.pid for process in self._processes)

    def move_in(self, folder):
        """Makes an empty home below the folder and an environment for it."""
        self.folder = folder
        self.home = folder / "home"
        self.config = folder / "config"
        for path in (self.home, self.config, folder / "data", folder / "cache", folder / "state"):
            path.mkdir(mode=0o700)
        self.environment = {
            **self._basis, "TMPDIR": str(folder), "HOME": str(self.home), "XDG_CONFIG_HOME": str(self.config),
            "XDG_DATA_HOME": str(folder / "data"), "XDG_CACHE_HOME": str(folder / "cache"),
            "XDG_STATE_HOME": str(folder / "state"),
        }

    def leave(self):
        """Kills all that was started since the desktop itself stands."""
        while len(self._processes) > len(self._spared):
            process = self._processes.pop()
            process.kill()
            process.wait()
        end_descendants(self._spared)
        self.park_pointer()

    def start(self, command, **options):
        options = {"stdin": subprocess.DEVNULL, "stdout": self.log, "stderr": self.log, "env": self.environment,
                   "cwd": str(self.home), "preexec_fn": die_with_parent, **options}
        self._processes.append(subprocess.Popen(command, **options))
        return self._processes[-1]

    def run(self, *command):
        """Runs a program on the desktop to its end and returns its output."""
        return subprocess.run(command, env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=self.log, timeout=LIMIT, check=True, preexec_fn=die_with_parent).stdout.decode()

    def _start_display(self):
        """The server chooses the display number, so that servers started at the same time don't collide."""
        for _ in range(5):
            reading, writing = os.pipe()
            # -r: no repetition, for a busy machine releases keys late.
            server = self.start(["Xvfb", "-displayfd", str(writing), "-screen", "0", SCREEN, "-nolisten", "tcp",
                                 "-noreset", "-r"], pass_fds=[writing])
            os.close(writing)
            number = self._line_from(reading)
            os.close(reading)
            if number:
                self.environment["DISPLAY"] = f":{number}"
                return
            server.kill()
            server.wait()
        raise AssertionError("no virtual display could be started")

    @staticmethod
    def _line_from(descriptor):
        deadline = time.monotonic() + LIMIT
        line = b""
        while not line.endswith(b"\n"):
            if not select.select([descriptor], [], [], max(0.0, deadline - time.monotonic()))[0]:
                return ""
            part = os.read(descriptor, 1024)
            if not part:
                return ""
            line += part
        return line.decode().strip()

    def _start_buses(self):
        reading, writing = os.pipe()
        self.start(["dbus-daemon", "--session", "--nofork", "--nopidfile",
                    f"--address=unix:dir={self.environment['XDG_RUNTIME_DIR']}", f"--print-address={writing}"],
                   pass_fds=[writing])
        os.close(writing)
        address = self._line_from(reading)
        os.close(reading)
        if not address:
            raise AssertionError("no session bus could be started")
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = address
        self.start([BUS_LAUNCHER, "--launch-immediately"])
        self.bus = AccessibilityBus(address)

    def _start_window_manager(self):
        settings = self.folder / "openbox.xml"
        settings.write_text(WINDOW_MANAGER_SETTINGS, encoding="utf-8")
        manager = self.start(["openbox", "--sm-disable", "--config-file", str(settings)])
        wait_until(lambda: "window id" in self.run("xprop", "-root", "_NET_SUPPORTING_WM_CHECK"), "the window manager",
                   check=lambda: self._must_run(manager, "the window manager"))

    @staticmethod
    def _must_run(process, what):
        if process.poll() is not None:
            raise AssertionError(f"{what} ended by itself: {process.returncode}")

    # Keys and mouse

    def key(self, *keys):
        self.run("xdotool", "key", "--clearmodifiers", *keys)

    def type(self, text):
        self.run("xdotool", "type", "--clearmodifiers", "--delay", "0", text)

    def double_click(self, x, y):
        self.run("xdotool", "mousemove", str(x), str(y), "click", "--repeat", "2", "--delay", "50", "1")
        self.park_pointer()
        self._last_click = (time.monotonic(), x, y)

    def click(self, x, y, button=1):
        """Moves the pointer away at once: where it rests, a tooltip would appear and take the next click."""
        at, former_x, former_y = self._last_click
        since = time.monotonic() - at
        if abs(x - former_x) < 20 and abs(y - former_y) < 20 and since < DOUBLE_CLICK:
            time.sleep(DOUBLE_CLICK - since)
        self.run("xdotool", "mousemove", str(x), str(y), "click", str(button))
        self.park_pointer()
        self._last_click = (time.monotonic(), x, y)

    def drag(self, *points):
        """Presses the left button at the first point, moves over the others and releases it at the last.

        The pointer stays there: Qt compresses pending moves, and one more would replace the last of the drag.
        """
        command = ["xdotool", "mousemove", *map(str, points[0]), "mousedown", "1"]
        for point in points[1:]:
            command += ["mousemove", *map(str, point)]
        self.run(*command, "mouseup", "1")

    def park_pointer(self):
        self.run("xdotool", "mousemove", "0", "0")

    def active_window_extents(self):
        """Left, top, width and height of the active window as the X server knows them; None if there is none."""
        window = self.run("xprop", "-root", "_NET_ACTIVE_WINDOW").split()[-1]
        try:
            lines = self.run("xwininfo", "-id", window).splitlines()
        except subprocess.CalledProcessError:
            return None  # no window is active, or it has just gone
        values = dict(line.strip().split(":", 1) for line in lines if ":" in line)
        names = ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height")
        return tuple(int(values[name]) for name in names)

    def take_picture(self, path):
        self.run("import", "-silent", "-window", "root", str(path))

    def close(self):
        if self.bus is not None:
            try:
                self.bus.close()
            except Exception:  # the bus may have ended first
                pass
            self.bus = None
        for process in reversed(self._processes):
            process.kill()
            process.wait()
        end_descendants()
        self.log.close()
