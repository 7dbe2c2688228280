#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Measures the start of ravlin: the time until its window is visible and until a folder is listed, and the memory used.

Usage: startup.py BIN_FOLDER [--files N] [--runs R]

BIN_FOLDER holds ravlin and barewindow; the preset bench builds both. Runs on its own virtual display (Xvfb, xwininfo) with
its own home, over N small tagged files that it makes. Times differ between machines, so the program takes turns with a bare
window of the same toolkit, and the script prints the ratios of the medians. CPU time is that of all threads.
"""
import argparse
import os
import pathlib
import re
import signal
import statistics
import subprocess
import sys
import tempfile
import time

TICKS = os.sysconf("SC_CLK_TCK")
PAGE = os.sysconf("SC_PAGE_SIZE")
PATIENCE = 120  # seconds for a start


def frame(name, text):
    body = b"\0" + text.encode("latin-1")
    return name + len(body).to_bytes(4, "big") + b"\0\0" + body


def mp3(number):
    album = number // 12
    frames = (frame(b"TIT2", f"Title of the song {number}") + frame(b"TPE1", f"Artist {album // 10}")
              + frame(b"TALB", f"Album {album}") + frame(b"TYER", str(1970 + album % 50))
              + frame(b"TRCK", str(number % 12 + 1)))
    size = len(frames)
    syncsafe = bytes((size >> shift) & 0x7F for shift in (21, 14, 7, 0))
    return b"ID3\3\0\0" + syncsafe + frames


def make_collection(folder, count):
    folder.mkdir()
    for number in range(count):
        name = f"Artist {number // 120} - Title of the song {number}.mp3"
        (folder / name).write_bytes(mp3(number))


class Display:
    """A virtual display for as long as the block lasts."""

    def __enter__(self):
        read, write = os.pipe()
        # Without -noreset the server resets when a program ends, while the next one starts.
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", "1280x1024x24", "-nolisten", "tcp", "-noreset"],
            pass_fds=[write], stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as answer:
            self.name = ":" + answer.readline().strip()
        return self

    def __exit__(self, *_):
        self.server.terminate()
        self.server.wait()


def cpu_seconds(pid):
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / TICKS


def resident_megabytes(pid):
    return int(pathlib.Path(f"/proc/{pid}/statm").read_text().split()[1]) * PAGE / 1e6


def peak_megabytes(pid):
    for line in pathlib.Path(f"/proc/{pid}/status").read_text().splitlines():
        if line.startswith("VmHWM:"):
            return int(line.split()[1]) * 1024 / 1e6
    raise RuntimeError("no VmHWM in /proc")


def is_visible(title, environment):
    def ask(*what):
        return subprocess.run(["xwininfo", *what], env=environment, capture_output=True, text=True).stdout

    # A program also has small windows of the same name that are never shown.
    windows = re.findall(rf'(0x[0-9a-f]+) "{re.escape(title)}".*? (\d+)x\d+\+', ask("-root", "-tree"))
    return any(int(width) > 100 and "IsViewable" in ask("-id", window) for window, width in windows)


def until_idle(pid):
    """Waits until the program has used no CPU time for a second. Returns when it last used any."""
    last, since = cpu_seconds(pid), time.monotonic()
    while time.monotonic() - since < 1.0:
        time.sleep(0.02)
        now = cpu_seconds(pid)
        if now != last:
            last, since = now, time.monotonic()
    return since


def measure(command, title, environment):
    start = time.monotonic()
    process = subprocess.Popen(command, env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        while not is_visible(title, environment):
            if process.poll() is not None or time.monotonic() - start > PATIENCE:
                sys.exit(f"startup.py: no window of {command[0]}")
            time.sleep(0.005)
        visible = time.monotonic() - start
        loaded = until_idle(process.pid) - start
        memory, peak = resident_megabytes(process.pid), peak_megabytes(process.pid)
        process.kill()
        # Finer than the ticks of /proc, and includes threads that have ended.
        usage = os.wait4(process.pid, 0)[2]
        process.returncode = -signal.SIGKILL
        return {"visible, s": visible, "loaded, s": loaded, "CPU, s": usage.ru_utime + usage.ru_stime,
                "memory, MB": memory, "peak, MB": peak}
    finally:
        if process.returncode is None:
            process.kill()
            process.wait()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("bin", type=pathlib.Path)
    parser.add_argument("--files", type=int, default=10_000)
    parser.add_argument("--runs", type=int, default=5)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as scratch, Display() as display:
        root = pathlib.Path(scratch)
        home = root / "home"
        home.mkdir(mode=0o700)
        # Without settings the first start would ask for the options.
        (home / "ravlin").mkdir()
        (home / "ravlin" / "ravlin.ini").write_text("[ini]\ntags=2\n", encoding="utf-8")
        environment = {**os.environ, "DISPLAY": display.name, "QT_QPA_PLATFORM": "xcb", "HOME": str(home),
                       "XDG_CONFIG_HOME": str(home), "XDG_CACHE_HOME": str(home), "XDG_DATA_HOME": str(home),
                       "XDG_RUNTIME_DIR": str(home)}
        collection = root / "collection"
        make_collection(collection, options.files)
        programs = {"bare window": ([options.bin / "barewindow"], "bare window"),
                    "ravlin, no folder": ([options.bin / "ravlin"], "ravlin!"),
                    f"ravlin, {options.files} files": ([options.bin / "ravlin", collection], "ravlin!")}
        results = {name: [] for name in programs}
        for _ in range(options.runs):
            for name, (command, title) in programs.items():
                results[name].append(measure(command, title, environment))
    bare = None
    for name, runs in results.items():
        medians = {what: statistics.median(run[what] for run in runs) for what in runs[0]}
        bare = bare or medians
        print(name)
        for what, value in medians.items():
            print(f"  {what:12} {value:8.2f}   {value / bare[what]:6.2f} of a bare window")


if __name__ == "__main__":
    main()
