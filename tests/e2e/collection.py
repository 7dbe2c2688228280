# SPDX-License-Identifier: GPL-3.0-or-later
"""MP3 files for tests, with tags written and read by mutagen."""

from typing import NamedTuple

from mutagen.id3 import COMM, ID3, TALB, TCON, TIT2, TPE1, TRCK, TYER, ID3NoHeaderError, ParseID3v1

FRAME = b"\xff\xfb\x90\x64" + bytes(413)  # silence: MPEG-1 layer III, 128 kbit/s, 44,100 Hz, joint stereo
AUDIO = FRAME * 40
CD_FRAMES = 75  # a second
CD_HEADER = b"\xff\xe3\x18\xc4"  # MPEG-2.5 layer III, 8 kbit/s, 8,000 Hz, mono: 72 bytes, 576 samples


class Song(NamedTuple):
    title: str = ""
    artist: str = ""
    album: str = ""
    year: str = ""
    track: str = ""
    genre: str = ""
    comment: str = ""


def frames_of(song):
    tag = ID3()
    for kind, text in ((TIT2, song.title), (TPE1, song.artist), (TALB, song.album), (TYER, song.year),
                       (TRCK, song.track), (TCON, song.genre)):
        if text:
            tag.add(kind(encoding=1, text=text))
    if song.comment:
        tag.add(COMM(encoding=1, lang="eng", desc="", text=song.comment))
    return tag


def make_file(path, song=None, v1=False, v2=True):
    """Makes a file with the song in the requested tags; without a song it has no tags."""
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(AUDIO)
    if song is None:
        return path
    if v2:
        frames_of(song).save(str(path), v1=0, v2_version=3)
    if v1:
        with open(path, "ab") as file:
            file.write(id3v1(song))
    return path


def make_cd_tracks(folder, marks):
    """Makes 01.mp3, 02.mp3 ... that play as long as a CD's tracks between those frames; Info tags hold the padding."""
    for number, (start, end) in enumerate(zip(marks, marks[1:]), 1):
        samples = (end - start) * 8000 // CD_FRAMES
        count = -(-samples // 576)
        padding = count * 576 - samples
        info = CD_HEADER + bytes(9) + b"Info" + bytes(4) + b"LAME3.100" + bytes(13) + padding.to_bytes(2, "big")
        folder.mkdir(parents=True, exist_ok=True)
        (folder / f"{number:02}.mp3").write_bytes(info.ljust(72, b"\0") + CD_HEADER.ljust(72, b"\0") * count)


def id3v1(song):
    """The 128 bytes of ID3v1.1."""
    def field(text, size):
        return text.encode("latin-1", "replace")[:size].ljust(size, b"\0")

    genre = TCON.GENRES.index(song.genre) if song.genre in TCON.GENRES else 255
    return (b"TAG" + field(song.title, 30) + field(song.artist, 30) + field(song.album, 30) + field(song.year, 4)
            + field(song.comment, 28) + bytes([0, int(song.track or 0), genre]))


def _song(tag):
    def text(kind):
        return next((str(frame.text[0]) for frame in tag.getall(kind)), "")

    genres = tag.getall("TCON")
    return Song(text("TIT2"), text("TPE1"), text("TALB"), text("TYER") or text("TDRC"), text("TRCK"),
                genres[0].genres[0] if genres and genres[0].genres else "", text("COMM"))


def read_v2(path):
    """The ID3v2 tag, or None."""
    try:
        return _song(ID3(str(path), load_v1=False, translate=False))
    except ID3NoHeaderError:
        return None


def read_v1(path):
    """The ID3v1 tag, or None."""
    frames = ParseID3v1(path.read_bytes()[-128:], v2_version=3)
    if frames is None:
        return None
    tag = ID3()
    for frame in frames.values():
        tag.add(frame)
    return _song(tag)


def has_whole_audio(path):
    return path.read_bytes().count(AUDIO) == 1
