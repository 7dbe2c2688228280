# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: other programs play our playlists: all files, in order, whatever folder the program is started in.

Usage: playlists.py PROGRAM, the program being ravlin-cli. Exits with code 77 if mpg123 or ffmpeg is missing.
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

NAMES = (" #0 comment.mp3", "#1 comment.mp3", "#EXTINF:1,directive.mp3", "A first.mp3", "Bach: Suite.mp3", "zażółć 日本.mp3", "ñandú 50% (live).mp3", "cd1/tema & más.mp3", "cd1/sub/último.mp3",
         "file:/x.mp3")
MISTAKABLE = {name for name in NAMES if name.lstrip().startswith("#") or ":" in name}  # for a comment or an address
failures = []
checks = 0


def same(got, expected, name):
    global checks
    checks += 1
    if got != expected:
        failures.append(name)
        print(f"FAIL {name}: {got!r}, expected {expected!r}")


def run(*arguments, **options):
    return subprocess.run([os.fspath(argument) for argument in arguments], check=True, capture_output=True, timeout=120,
                          **options)


def encode(path, frequency):
    path.parent.mkdir(parents=True, exist_ok=True)
    run("ffmpeg", "-nostdin", "-v", "error", "-f", "lavfi", "-i", f"sine=frequency={frequency}:duration=0.4", "-f", "mp3",
        "-write_xing", "0", "-id3v2_version", "0", path)


def decoded(source, folder):
    """A checksum of the decoded sound."""
    return run("ffmpeg", "-nostdin", "-v", "error", "-i", source, "-f", "md5", "-", cwd=folder).stdout


def played(playlist, folder):
    """The paths of the files that mpg123 plays."""
    result = run("mpg123", "-v", "-t", "--list", playlist, cwd=folder, env={**os.environ, "LC_ALL": "C.UTF-8"})
    text = result.stderr.decode()
    titles = re.findall(r"^Playing MPEG stream \d+ of \d+: (.*) \.\.\.$", text, re.MULTILINE)
    same(re.findall(r"(?i)^.*(?:error|cannot|can't).*$", text, re.MULTILINE), [], "complaints of mpg123")
    return titles


def check(program, root):
    folder = root / "música"
    for number, name in enumerate(NAMES):
        encode(folder / name, 220 + 110 * number)
    # The expected sound: all files joined into one, without a list.
    joined = root / "joined.mp3"
    joined.write_bytes(b"".join((folder / name).read_bytes() for name in NAMES))
    whole = decoded(joined, root)
    first = root / "first.mp3"
    first.write_bytes((folder / NAMES[0]).read_bytes())
    same(decoded(first, root) == whole, False, "a part sounds different")

    written = run(program, "playlist", "--recursive", folder).stdout
    playlist = Path(os.fsdecode(written.removesuffix(b"\n")))
    lines = [("./" if name in MISTAKABLE else "") + name + "\r\n" for name in NAMES]
    same(playlist.read_bytes(), "".join(lines).encode(), "the list")
    # mpg123 looks for the files relative to the list, ffmpeg relative to the folder it is started in.
    same(played(playlist, root), [Path(name).name for name in NAMES], "mpg123")
    same(decoded(f"concatf:{playlist}", folder), whole, "ffmpeg")


def main():
    if not shutil.which("mpg123") or not shutil.which("ffmpeg"):
        print("mpg123 or ffmpeg is missing")
        return 77
    with tempfile.TemporaryDirectory() as name:
        check(sys.argv[1], Path(name))
    print(f"{checks} checks, {len(failures)} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
