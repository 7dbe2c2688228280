# SPDX-License-Identifier: GPL-3.0-or-later
"""A desktop of a test's own: display, window manager, session bus, accessibility bus, home folder."""

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
NEEDED = ("Xvfb", "openbox", "dbus-daemon", "xdotool", "xprop", "import", "xdg-open", "mimetype")
BUS_LAUNCHER = "/usr/libexec/at-spi-bus-launcher"
PR_SET_PDEATHSIG = 1
PR_SET_CHILD_SUBREAPER = 36
DOUBLE_CLICK = 0.6  # seconds: two clicks further apart than this are two, by Qt's 0.4 s

# Without mouse bindings: for those the manager stops the pointer at every press until it has looked at it.
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
    """What our children leave behind becomes our child, so that it can be found and ended."""
    _libc.prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)


def children_of(parent):
    try:
        with open(f"/proc/{parent}/task/{parent}/children", encoding="ascii") as file:
            return [int(child) for child in file.read().split()]
    except OSError:
        return []


def end_descendants():
    """Ends every process that this one started, and those they started."""
    deadline = time.monotonic() + LIMIT
    while time.monotonic() < deadline:
        children = children_of(os.getpid())
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
    """Starts everything in the constructor; close() ends it. Its files are under a folder that the caller removes."""

    def __init__(self, folder):
        adopt_orphans()
        self.folder = folder
        self.home = folder / "home"
        self.config = folder / "config"
        self.log = open(folder / "desktop.log", "wb")
        self.bus = None
        self._processes = []
        self._last_click = (0.0, 0, 0)
        runtime = folder / "run"
        for path in (self.home, self.config, folder / "data", folder / "cache", folder / "state", runtime):
            path.mkdir(mode=0o700)
        self.environment = {
            "PATH": os.environ.get("PATH", os.defpath), "LC_ALL": "C.UTF-8", "TMPDIR": str(folder), "TZ": "UTC",
            "HOME": str(self.home), "XDG_CONFIG_HOME": str(self.config), "XDG_DATA_HOME": str(folder / "data"),
            "XDG_CACHE_HOME": str(folder / "cache"), "XDG_STATE_HOME": str(folder / "state"),
            "XDG_RUNTIME_DIR": str(runtime), "GSETTINGS_BACKEND": "memory", "QT_QPA_PLATFORM": "xcb",
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "QT_ACCESSIBILITY": "1",
        }
        try:
            self._start_display()
            self._start_buses()
            self._start_window_manager()
        except BaseException:
            self.close()
            raise

    def start(self, command, **options):
        options = {"stdin": subprocess.DEVNULL, "stdout": self.log, "stderr": self.log, "env": self.environment,
                   "cwd": str(self.home), "preexec_fn": die_with_parent, **options}
        self._processes.append(subprocess.Popen(command, **options))
        return self._processes[-1]

    def run(self, *command):
        """Runs a program of the desktop's to its end and returns what it printed."""
        return subprocess.run(command, env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=self.log, timeout=LIMIT, check=True, preexec_fn=die_with_parent).stdout.decode()

    def _start_display(self):
        """The display number is the server's choice, so that servers started at the same time don't meet."""
        for _ in range(5):
            told, tells = os.pipe()
            # -r: a key that a busy machine releases late must not repeat itself.
            server = self.start(["Xvfb", "-displayfd", str(tells), "-screen", "0", SCREEN, "-nolisten", "tcp",
                                 "-noreset", "-r"], pass_fds=[tells])
            os.close(tells)
            number = self._line_from(told)
            os.close(told)
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
        told, tells = os.pipe()
        self.start(["dbus-daemon", "--session", "--nofork", "--nopidfile",
                    f"--address=unix:dir={self.environment['XDG_RUNTIME_DIR']}", f"--print-address={tells}"],
                   pass_fds=[tells])
        os.close(tells)
        address = self._line_from(told)
        os.close(told)
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

    def click(self, x, y, button=1):
        """The pointer leaves at once: where it rests a tooltip comes up and takes the next click in its place."""
        at, former_x, former_y = self._last_click
        since = time.monotonic() - at
        if abs(x - former_x) < 20 and abs(y - former_y) < 20 and since < DOUBLE_CLICK:
            time.sleep(DOUBLE_CLICK - since)
        self.run("xdotool", "mousemove", str(x), str(y), "click", str(button))
        self.park_pointer()
        self._last_click = (time.monotonic(), x, y)

    def drag(self, *points):
        """Presses the left button at the first place, goes by way of the others and lets go at the last.

        The pointer stays: of the moves that wait for the program, the last makes those before it forgotten.
        """
        command = ["xdotool", "mousemove", *map(str, points[0]), "mousedown", "1"]
        for point in points[1:]:
            command += ["mousemove", *map(str, point)]
        self.run(*command, "mouseup", "1")

    def park_pointer(self):
        self.run("xdotool", "mousemove", "0", "0")

    def take_picture(self, path):
        self.run("import", "-silent", "-window", "root", str(path))

    def close(self):
        if self.bus is not None:
            try:
                self.bus.close()
            except Exception:  # the bus may have gone first
                pass
            self.bus = None
        for process in reversed(self._processes):
            process.kill()
            process.wait()
        end_descendants()
        self.log.close()
