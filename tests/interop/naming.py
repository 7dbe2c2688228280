# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: after extraction and after editing many files, mutagen reads the requested fields, all other frames unchanged, and
the same audio byte for byte.

Usage: naming.py PROGRAM, the program being ravlin-cli. Exits with code 77 if mutagen is missing.
"""

import hashlib
import subprocess
import sys
import tempfile
from pathlib import Path

try:
    from mutagen import id3
    from mutagen.id3 import ID3, ID3NoHeaderError
except ImportError:
    print("mutagen is missing")
    sys.exit(77)

AUDIO = (b"\xff\xfb\x90\x64" + bytes(413)) * 40
TEXTS = {"title": "TIT2", "artist": "TPE1", "album": "TALB", "track": "TRCK", "comment": "COMM", "genre": "TCON"}
failures = []
checks = 0


def same(got, expected, name):
    global checks
    checks += 1
    if got != expected:
        failures.append(name)
        print(f"FAIL {name}: {got!r}, expected {expected!r}")


def make(folder, name, version=3, **frames):
    """A file that mutagen made, with these frames and some that the program does not edit."""
    path = folder / name
    path.write_bytes(AUDIO)
    if frames:
        tag = ID3()
        for kind, text in frames.items():
            if kind == "COMM":
                tag.add(id3.COMM(encoding=1, lang="eng", desc="", text=[text]))
            else:
                tag.add(getattr(id3, kind)(encoding=1, text=[text]))
        tag.add(id3.APIC(encoding=0, mime="image/png", type=3, desc="cover", data=bytes(range(256)) * 20))
        tag.add(id3.TXXX(encoding=1, desc="mood", text=["静か"]))
        tag.add(id3.UFID(owner="http://example.org", data=b"id"))
        tag.save(path, v2_version=version)
    return path


def audio(path):
    """The bytes after the tag, found without mutagen."""
    data = path.read_bytes()
    if data[:3] == b"ID3":
        size = 0
        for byte in data[6:10]:
            size = size << 7 | byte
        data = data[10 + size:]
    return hashlib.sha256(data[:len(AUDIO)]).hexdigest(), len(data)


def fields(path):
    """The fields that the program edits, as mutagen reads them, and the bytes of all other frames."""
    try:
        tag = ID3(path)
    except ID3NoHeaderError:
        return {}, {}
    texts = {}
    others = {}
    for key, value in tag.items():
        name = next((name for name, kind in TEXTS.items() if key.split(":")[0] == kind), None)
        if name == "genre":
            texts[name] = value.genres[0]
        elif name:
            texts[name] = str(value)
        elif key in ("TDRC", "TYER"):
            texts["year"] = str(value)[:4]
        else:
            others[key] = repr(value)
    return texts, others


def run(program, *arguments):
    result = subprocess.run([program, *arguments], check=False, capture_output=True, text=True)
    same(result.returncode, 0, f"exit status of {arguments}: {result.stderr}")
    return result


def check_extraction(program, folder):
    own = {"TIT2": "old title", "TPE1": "old artist", "TALB": "Álbum", "TRCK": "9", "COMM": "註", "TCON": "Rock"}
    for version in (3, 4):
        names = ["01 - Ana Cívica - Ñandú.mp3", "12 - 坂本龍一 - 戦場のメリークリスマス.mp3", "3 - Björk - Jóga \U0001f600.mp3",
                 "07 - X - " + "é" * 51 + ".mp3", "07 - X - " + "é" * 52 + ".mp3"]  # of 64 and 65 characters
        same([len(name) for name in names[3:]], [64, 65], "lengths")
        for name in names:
            path = make(folder, name, version, **own)
            before, others = fields(path)
            sound = audio(path)
            track, artist, title = path.stem.split(" - ")
            run(program, "extract", "--pattern", "%4 - %1 - %3", path)
            texts, others_after = fields(path)
            label = f"extraction 2.{version} of {name}"
            same(texts, before | {"track": str(int(track)), "artist": artist, "title": title}, label)
            same(others_after, others, label + ": other frames")
            same(audio(path), sound, label + ": audio")
            same(ID3(path).version[1], version, label + ": version of the tag")


def check_extraction_without_tag(program, folder):
    path = make(folder, "1999_Jazz_Nota_Song.mp3")
    run(program, "extract", "--pattern", "%5_%6_%7_%3", path)
    same(fields(path)[0], {"year": "1999", "genre": "Jazz", "comment": "Nota", "title": "Song"}, "into a file without tag")
    same(audio(path), (hashlib.sha256(AUDIO).hexdigest(), len(AUDIO)), "without tag: audio")
    other = make(folder, "no fit.mp3")
    run(program, "extract", "--pattern", "%5_%6_%7_%3", other)
    same(other.read_bytes(), AUDIO, "a name that does not fit")


def check_multi(program, folder):
    paths = [make(folder, f"multi {number:03}.mp3", TIT2=f"canción {number}", TPE1="ana cívica", TRCK="5", TCON="Rock",
                  COMM="a note") for number in range(1, 151)]
    before = [(fields(path), audio(path)) for path in paths]
    run(program, "multi", "--track", "1", "--album", "海 y mar", "--year", "1998", "--case", "capitalize", *paths)
    for number, (path, ((texts, others), sound)) in enumerate(zip(paths, before), 1):
        expected = texts | {"title": f"Canción {number}", "artist": "Ana Cívica", "comment": "A Note", "album": "海 Y Mar",
                            "year": "1998", "track": str(number)}
        if number > 99:
            del expected["track"]
        after, others_after = fields(path)
        same(after, expected, f"multi, file {number}")
        same(others_after, others, f"multi, file {number}: other frames")
        same(audio(path), sound, f"multi, file {number}: audio")


def main():
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        check_extraction(sys.argv[1], folder)
        check_extraction_without_tag(sys.argv[1], folder)
        check_multi(sys.argv[1], folder)
    print(f"{checks} checks, {len(failures)} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
