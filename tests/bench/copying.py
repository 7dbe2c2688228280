#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Usage: copying.py PROGRAM [--files N] [--megabytes N] [--rounds N] [--folder FOLDER]

Measures how long PROGRAM (ravlin-cli) takes to copy a folder's files into another folder of the same drive, compared with
"cp -a". The two take turns, each with the source in memory and no writes pending. PROGRAM waits for the disk at the end and
"cp -a" does not; "cp -a, sync" is the same safety with the system's own tools. The speed is the time of "cp -a" divided by
that of PROGRAM: 1 is as fast, less is slower.
"""

import argparse
import os
import shutil
import statistics
import subprocess
import tempfile
import time
from pathlib import Path


def timed(target, *commands):
    """Seconds that the commands take to fill a new folder, and the number of files in it."""
    target.mkdir()
    os.sync()
    begin = time.monotonic()
    for command in commands:
        subprocess.run(command, check=True)
    seconds = time.monotonic() - begin
    count = len(list(target.iterdir()))
    shutil.rmtree(target)
    os.sync()
    return seconds, count


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program", type=Path)
    parser.add_argument("--files", type=int, default=100)
    parser.add_argument("--megabytes", type=int, default=5)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--folder", help="where to copy; by default the folder for temporary files")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory(dir=arguments.folder) as name:
        source, target = Path(name) / "from", Path(name) / "to"
        source.mkdir()
        for number in range(arguments.files):
            (source / f"{number:04}.mp3").write_bytes(os.urandom(arguments.megabytes * 1_000_000))
        files = sorted(source.iterdir())
        ways = {
            "cp -a": [["cp", "-a", *files, target]],
            "cp -a, sync": [["cp", "-a", *files, target], ["sync", "-f", target]],
            "ravlin-cli": [[arguments.program.resolve(), "copy", "--to", target, *files]],
        }
        times = {way: [] for way in ways}
        for _ in range(arguments.rounds):
            for way, commands in ways.items():
                seconds, count = timed(target, *commands)
                assert count == len(files), way
                times[way].append(seconds)
    for way, seconds in times.items():
        print(f"{way:12} median {statistics.median(seconds):7.3f} s  of " + " ".join(f"{each:.3f}" for each in seconds))
    print(f"speed: {statistics.median(times['cp -a']) / statistics.median(times['ravlin-cli']):.2f} of cp -a, "
          f"{statistics.median(times['cp -a, sync']) / statistics.median(times['ravlin-cli']):.2f} of cp -a, sync")


if __name__ == "__main__":
    main()
