# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: mutagen, id3v2 and exiftool read what this program writes, this program reads what they write, and a save changes
nothing but the edited field.

Usage: tags.py PROGRAM, the program being tag_tool. Exits with code 77 if another program is missing.
"""

import hashlib
import json
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

try:
    from mutagen import id3
    from mutagen.id3 import ID3, Encoding
except ImportError:
    print("mutagen is missing")
    sys.exit(77)

AUDIO = (b"\xff\xfb\x90\x64" + bytes(413)) * 40
failures = []
checks = 0


def check(condition, name, message):
    global checks
    checks += 1
    if not condition:
        failures.append(name)
        print(f"FAIL {name}: {message}")


def same(got, expected, name):
    check(got == expected, name, f"{got!r}, expected {expected!r}")


class Program:
    """The program under test."""

    def __init__(self, path):
        self.path = path

    def read(self, file):
        return json.loads(subprocess.run([self.path, "read", str(file)], check=True, capture_output=True).stdout)

    def save(self, mode, file, new_version=3, **fields):
        edits = [f"{name}={value}" for name, value in fields.items()] or ["="]
        environment = os.environ | {"RAVLIN_NEW_TAG_VERSION": str(new_version)}
        subprocess.run([self.path, "save", str(mode), str(file), *edits], check=True, env=environment)


def audio_hash(path):
    """The hash of the bytes between the tags, found without the program and without mutagen."""
    data = path.read_bytes()
    if data[:3] == b"ID3":
        size = 0
        for byte in data[6:10]:
            size = size << 7 | byte
        data = data[10 + size + (10 if data[5] & 0x10 else 0):]
    if data[-128:-125] == b"TAG":
        data = data[:-128]
    return hashlib.sha256(data).hexdigest()


TEXTS = {
    "plain": {"title": "A title", "artist": "An artist", "album": "An album", "comment": "A comment"},
    "accents": {"title": "Canción Größe", "artist": "Björk Dvořák", "album": "Été", "comment": "Žluťoučký kůň"},
    "cyrillic": {"title": "Группа крови", "artist": "Кино", "album": "Ночь", "comment": "Хорошо"},
    "japanese": {"title": "千と千尋の神隠し", "artist": "久石譲", "album": "日本語", "comment": "こんにちは"},
    "emoji": {"title": "🎵 music 👩‍👩‍👧", "artist": "❤️", "album": "🇫🇷", "comment": "👍🏽"},
}
NUMBERS = {"year": "1999", "track": "7", "genre": "Rock"}
# The titles as ID3v1 holds them.
V1_TITLES = {"plain": "A title", "accents": "Canción Größe", "cyrillic": "Gruppa krovi", "japanese": "????????",
             "emoji": "? music ?"}


def mutagen_fields(path):
    tags = ID3(path, translate=False, load_v1=False)
    comments = [frame for frame in tags.getall("COMM") if frame.desc == ""]
    year = tags.getall("TYER") or tags.getall("TDRC")
    return {"title": str(tags["TIT2"]), "artist": str(tags["TPE1"]), "album": str(tags["TALB"]),
            "comment": str(comments[0]), "year": str(year[0]), "track": str(tags["TRCK"]),
            "genre": tags["TCON"].genres[0]}


def exiftool_fields(path):
    output = subprocess.run(["exiftool", "-j", "-charset", "utf8", str(path)], check=True, capture_output=True).stdout
    return json.loads(output)[0]


def id3v2_listing(path):
    return subprocess.run(["id3v2", "-l", str(path)], capture_output=True).stdout.decode("latin-1")


def v1_title(path):
    data = path.read_bytes()
    return data[-125:-95].rstrip(b"\0").decode("latin-1") if data[-128:-125] == b"TAG" else None


def check_written(program, folder):
    """They read what we write, in all five modes."""
    for name, texts in TEXTS.items():
        for mode in range(1, 6):
            for version in (None, 2, 3, 4):
                label = f"written {name}, mode {mode}, version {version}"
                path = folder / "written.mp3"
                path.write_bytes(AUDIO)
                if version == 2:
                    # mutagen does not write ID3v2.2.
                    frame = b"TT2\0\0\x04\0old"
                    path.write_bytes(b"ID3\2\0\0\0\0\0" + bytes([len(frame)]) + frame + AUDIO)
                elif version:
                    tags = ID3()
                    tags.add(id3.TIT2(encoding=Encoding.LATIN1, text="old"))
                    tags.save(path, v2_version=version)
                digest = audio_hash(path)
                fields = texts | NUMBERS
                program.save(mode, path, **fields)
                same(audio_hash(path), digest, label + ": audio")
                check_read_by_others(path, name, fields, mode, version, label)
                result = program.read(path)
                if mode in (2, 3, 5):
                    same({key: result[key] for key in fields}, fields, label + ": by the program itself")


def check_read_by_others(path, name, fields, mode, version, label):
    data = path.read_bytes()
    has_v1 = mode in (1, 3, 4)
    has_v2 = mode in (2, 3, 5) or (mode == 1 and version is not None)
    same(data[:3] == b"ID3", has_v2, label + ": has ID3v2")
    same(data[-128:-125] == b"TAG", has_v1, label + ": has ID3v1")
    shown = exiftool_fields(path)
    if mode in (2, 3, 5):
        same(data[3], version or 3, label + ": the version stays")
        same(mutagen_fields(path), fields, label + ": mutagen")
        # exiftool shows question marks for characters beyond the first 65,536.
        keys = ["genre", "track"] if name == "emoji" and data[3] < 4 else ["title", "artist", "album", "genre", "track"]
        same({key: str(shown.get(key.capitalize())) for key in keys}, {key: fields[key] for key in keys},
             label + ": exiftool")
        if name == "plain" and version in (None, 3): # it reads no other
            check(f": {fields['title']}" in id3v2_listing(path), label + ": id3v2", id3v2_listing(path))
    if has_v1:
        same(v1_title(path), V1_TITLES[name], label + ": ID3v1 title")
    if mode == 4:
        same(shown.get("Title"), V1_TITLES[name], label + ": exiftool reads ID3v1")
        if name == "plain":
            check("id3v1 tag info" in id3v2_listing(path), label + ": id3v2 reads ID3v1", id3v2_listing(path))


def check_new_versions(program, folder):
    """A new tag of either version: mutagen finds that version, its year frame and every value."""
    path = folder / "new.mp3"
    for new_version, year in ((3, "TYER"), (4, "TDRC")):
        for name, texts in TEXTS.items():
            for mode in (2, 3, 5):
                label = f"new 2.{new_version} {name}, mode {mode}"
                path.write_bytes(AUDIO)
                fields = texts | NUMBERS
                program.save(mode, path, new_version, **fields)
                tags = ID3(path, translate=False, load_v1=False)
                same(tags.version[:2], (2, new_version), label + ": version")
                check(year in tags and len(tags) == 7, label + ": frames", sorted(tags))
                check(not tags.unknown_frames, label + ": unknown", tags.unknown_frames)
                same(mutagen_fields(path), fields, label + ": mutagen")
                same(audio_hash(path), hashlib.sha256(AUDIO).hexdigest(), label + ": audio")
                shown = exiftool_fields(path)
                same(shown.get("Warning"), None, label + ": exiftool warns")
                result = program.read(path)
                same({key: result[key] for key in fields}, fields, label + ": by the program itself")


def foreign_frames():
    """One of each frame that editors often lose."""
    yield id3.APIC(encoding=3, mime="image/png", type=3, desc="cover", data=bytes(range(256)) * 20)
    yield id3.TXXX(encoding=3, desc="REPLAYGAIN_TRACK_GAIN", text="-7.5 dB")
    yield id3.USLT(encoding=1, lang="eng", desc="", text="words\nИ слова")
    yield id3.RVA2(desc="album", channel=1, gain=-3.5, peak=0.9)
    yield id3.POPM(email="a@example.org", rating=196, count=12)
    yield id3.UFID(owner="http://musicbrainz.org", data=b"f4e7")
    yield id3.PRIV(owner="WM/Provider", data=b"A\0M\0G\0")
    yield id3.GEOB(encoding=0, mime="application/x", filename="a", desc="b", data=b"\xff\xfb\x90\x64")
    yield id3.WXXX(encoding=0, desc="d", url="http://example.org")
    yield id3.COMM(encoding=0, lang="eng", desc="iTunNORM", text=" 000001")
    yield id3.MCDI(data=bytes(40))
    yield id3.TCOM(encoding=1, text="Composer, Композитор")
    yield id3.CHAP(element_id="c1", start_time=0, end_time=900, start_offset=0, end_offset=0,
                   sub_frames=[id3.TIT2(encoding=3, text="in a chapter")])
    yield id3.CTOC(element_id="toc", flags=3, child_element_ids=["c1"],
                   sub_frames=[id3.TIT2(encoding=3, text="in a table")])


def snapshot(path, edited):
    """Every frame but the edited one, as mutagen reads it; raw for frames that it does not know."""
    tags = ID3(path, translate=False, load_v1=False)
    frames = {key: repr(frame) for key, frame in tags.items() if not key.startswith(edited)}
    return frames, list(tags.unknown_frames)


# A field, its new value, and the frames that change with it.
EDITS = {"title": ("Новое 新 🎵", "TIT2"), "artist": ("x" * 300, "TPE1"), "track": ("8", "TRCK"),
         "year": ("2001", ("TYER", "TDRC")), "genre": ("Pop", "TCON"), "comment": ("other", "COMM::")}


def old_frame(name, body):
    return name + len(body).to_bytes(4, "big") + b"\0\0" + body


def add_old_frames(path):
    """Frames that ID3v2.3 has and ID3v2.4 lacks. mutagen does not write them."""
    data = path.read_bytes()
    size = 0
    for byte in data[6:10]:
        size = size << 7 | byte
    frames = (old_frame(b"TSIZ", b"\x0012345") + old_frame(b"RVAD", bytes([3, 16]) + bytes(8))
              + old_frame(b"EQUA", bytes([16, 1, 2, 3, 4])) + old_frame(b"TRDA", b"\x001999"))
    size += len(frames)
    header = data[:6] + bytes((size >> shift) & 0x7F for shift in (21, 14, 7, 0))
    path.write_bytes(header + frames + data[10:])


def check_kept(program, folder):
    """After a save with one changed field mutagen reads all other frames as before."""
    for version in (3, 4):
        for v1 in (0, 2):
            for field, (value, edited) in EDITS.items():
                for mode in (2, 3):
                    label = f"kept: 2.{version}, v1 {v1}, {field}, mode {mode}"
                    path = folder / "kept.mp3"
                    path.write_bytes(AUDIO)
                    tags = ID3()
                    for frame in [*foreign_frames(), id3.TIT2(encoding=1, text="Title"), id3.TPE1(encoding=0, text="A"),
                                  id3.TCON(encoding=0, text="(17)"), id3.TRCK(encoding=0, text="3/12"),
                                  id3.TDRC(encoding=0, text="1999"), id3.COMM(encoding=0, lang="eng", desc="", text="c")]:
                        tags.add(frame)
                    if version == 3:
                        tags.update_to_v23()
                    tags.save(path, v2_version=version, v1=v1)
                    if version == 3:
                        add_old_frames(path)
                    before = snapshot(path, edited)
                    digest = audio_hash(path)
                    program.save(mode, path, **{field: value})
                    same(snapshot(path, edited), before, label)
                    same(audio_hash(path), digest, label + ": audio")
                    same(program.read(path)[field], value, label + ": read back")
                    if field == "track":
                        same(str(ID3(path)["TRCK"]), "8/12", label + ": the total")
                    once = path.read_bytes(), path.stat().st_mtime_ns, path.stat().st_ino
                    program.save(mode, path)
                    same((path.read_bytes(), path.stat().st_mtime_ns, path.stat().st_ino), once, label + ": again")


def check_dates(program, folder):
    """A new year is a date without day and time for others too; the same year keeps its date."""
    path = folder / "date.mp3"
    for version in (3, 4):
        for year in ("1999", "2001"):
            label = f"date: 2.{version}, {year}"
            path.write_bytes(AUDIO)
            tags = ID3()
            for frame in (id3.TIT2(encoding=0, text="Title"), id3.TDRC(encoding=0, text="1999-05-17T20:15"),
                          id3.TPE1(encoding=0, text="A")):
                tags.add(frame)
            if version == 3:
                tags.update_to_v23()
            tags.save(path, v2_version=version)
            digest = audio_hash(path)
            program.save(2, path, year=year)
            kept = year == "1999"
            # By its own translation mutagen joins the three frames.
            whole = str(ID3(path, load_v1=False).get("TDRC"))
            same(whole.startswith("1999-05-17") if kept else whole, True if kept else "2001", label + ": mutagen")
            frames = ID3(path, translate=False, load_v1=False)
            expected = ({"TYER", "TDAT", "TIME"} if kept else {"TYER"}) if version == 3 else {"TDRC"}
            same(set(frames) - {"TIT2", "TPE1"}, expected, label + ": frames")
            shown = exiftool_fields(path)
            same({"Date", "Time"} & set(shown), {"Date", "Time"} if kept and version == 3 else set(), label + ": exiftool")
            if version == 3:
                same("TDAT" in id3v2_listing(path), kept, label + ": id3v2")
            same(audio_hash(path), digest, label + ": audio")


def check_mutagen(program, folder):
    """We read what mutagen writes."""
    path = folder / "mutagen.mp3"
    for version in (3, 4):
        for encoding in Encoding.LATIN1, Encoding.UTF16, Encoding.UTF16BE, Encoding.UTF8:
            if version == 3 and encoding in (Encoding.UTF16BE, Encoding.UTF8):
                continue
            for name, texts in TEXTS.items():
                if encoding == Encoding.LATIN1 and name not in ("plain",):
                    continue
                path.write_bytes(AUDIO)
                tags = ID3()
                tags.add(id3.TIT2(encoding=encoding, text=texts["title"]))
                tags.add(id3.TPE1(encoding=encoding, text=texts["artist"]))
                tags.add(id3.TALB(encoding=encoding, text=texts["album"]))
                tags.add(id3.COMM(encoding=encoding, lang="deu", desc="", text=texts["comment"]))
                tags.add(id3.COMM(encoding=encoding, lang="eng", desc="other", text="no"))
                tags.add(id3.TDRC(encoding=0, text="1999"))
                tags.add(id3.TRCK(encoding=0, text="7/9"))
                tags.add(id3.TCON(encoding=0, text="17"))
                if version == 3:
                    tags.update_to_v23()
                tags.save(path, v2_version=version, v1=2)
                result = program.read(path)
                label = f"mutagen 2.{version}, {encoding}, {name}"
                same({key: result[key] for key in [*texts, *NUMBERS]}, texts | NUMBERS, label)
                check(result["hasV1"] and result["hasV2"], label, "both tags are seen")
    path.write_bytes(AUDIO)
    tags = ID3()
    tags.add(id3.TPE1(encoding=3, text=["one", "two", "три"]))
    tags.add(id3.TCON(encoding=3, text=["Rock", "Pop"]))
    tags.save(path)
    same(program.read(path)["artist"], "one / two / три", "mutagen: several artists")
    same(program.read(path)["genre"], "Rock", "mutagen: several genres")


def check_id3v2(program, folder):
    path = folder / "id3v2.mp3"
    path.write_bytes(AUDIO)
    subprocess.run(["id3v2", "-t", "Title", "-a", "Artist", "-A", "Album", "-y", "1999", "-T", "7/12", "-g", "17",
                    "-c", "desc:comment:eng", str(path)], check=True, capture_output=True)
    result = program.read(path)
    expected = {"title": "Title", "artist": "Artist", "album": "Album", "year": "1999", "track": "7", "genre": "Rock",
                "comment": "comment", "hasV1": True, "hasV2": True}
    same(result, expected, "id3v2")
    program.save(3, path, title="Other")
    same(program.read(path), expected | {"title": "Other"}, "id3v2, saved")
    check(": Other" in id3v2_listing(path), "id3v2 reads its file again", id3v2_listing(path))


def check_encoders(program, folder):
    """We read the tags of lame and FFmpeg."""
    wave = folder / "silence.wav"
    subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "anullsrc=r=44100:cl=mono", "-t", "1", wave],
                   check=True)
    expected = {"title": "Title", "artist": "Artist", "album": "Album", "year": "1999", "track": "7", "genre": "Rock"}
    for options in (["--add-id3v2"], ["--id3v1-only"], ["--id3v2-only"], ["--id3v2-utf16", "--id3v2-only"]):
        path = folder / "lame.mp3"
        subprocess.run(["lame", "--quiet", "--tt", "Title", "--ta", "Artist", "--tl", "Album", "--ty", "1999", "--tn",
                        "7/12", "--tg", "17", "--tc", "note", *options, wave, path], check=True)
        result = program.read(path)
        same({key: result[key] for key in expected}, expected, f"lame {options}")
        same(result["comment"], "note", f"lame {options}: comment")
        check_saved(program, path, f"lame {options}")
    for version in ("3", "4"):
        for v1 in ("0", "1"):
            path = folder / "ffmpeg.mp3"
            subprocess.run(["ffmpeg", "-v", "error", "-y", "-i", wave, "-id3v2_version", version, "-write_id3v1", v1,
                            "-metadata", "title=Название", "-metadata", "artist=Artist", "-metadata", "album=Album",
                            "-metadata", "date=1999", "-metadata", "track=7/12", "-metadata", "genre=Rock",
                            "-metadata", "other=thing", path], check=True)
            result = program.read(path)
            same({key: result[key] for key in expected}, expected | {"title": "Название"}, f"ffmpeg 2.{version} {v1}")
            check_saved(program, path, f"ffmpeg 2.{version} {v1}")


def check_saved(program, path, label):
    digest = audio_hash(path)
    before = snapshot(path, "TIT2") if path.read_bytes()[:3] == b"ID3" else None
    program.save(2, path, title="新しい")
    same(audio_hash(path), digest, label + ": audio after a save")
    if before:
        same(snapshot(path, "TIT2"), before, label + ": other frames after a save")
    same(str(ID3(path)["TIT2"]), "新しい", label + ": mutagen reads the title")


def main():
    missing = [name for name in ("id3v2", "exiftool", "lame", "ffmpeg") if not shutil.which(name)]
    if missing:
        print("missing:", *missing)
        return 77
    program = Program(sys.argv[1])
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        check_written(program, folder)
        check_new_versions(program, folder)
        check_kept(program, folder)
        check_dates(program, folder)
        check_mutagen(program, folder)
        check_id3v2(program, folder)
        check_encoders(program, folder)
    print(f"{checks} checks, {len(failures)} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
