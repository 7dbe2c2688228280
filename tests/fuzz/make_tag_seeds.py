#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Makes the starting inputs of fuzz_tagreader and fuzz_tagwriter: small tags of every version and form.

Usage: make_tag_seeds.py FOLDER    (writes FOLDER/tagreader/* and FOLDER/tagwriter/*)
Files named regression-* there are findings that were mended; they are not made here.
"""
import pathlib
import sys
import zlib

AUDIO = (b"\xff\xfb\x90\x64" + bytes(60)) * 2


def syncsafe(value, size=4):
    return bytes((value >> (7 * i)) & 0x7F for i in range(size - 1, -1, -1))


def frame(version, name, body, flags=0, size=None):
    size = len(body) if size is None else size
    if version == 2:
        return name + size.to_bytes(3, "big") + body
    length = syncsafe(size) if version == 4 else size.to_bytes(4, "big")
    return name + length + flags.to_bytes(2, "big") + body


def tag(version, frames, padding=20, flags=0, footer=False):
    body = frames + bytes(padding)
    flags |= 0x10 if footer else 0
    rest = bytes([version, 0, flags]) + syncsafe(len(body))
    return b"ID3" + rest + body + (b"3DI" + rest if footer else b"")


def unsynchronised(data):
    out = bytearray()
    for i, byte in enumerate(data):
        out.append(byte)
        following = data[i + 1] if i + 1 < len(data) else 0
        if byte == 0xFF and (following == 0 or following >= 0xE0):
            out.append(0)
    return bytes(out)


def v1(title=b"one", comment=b"note", track=3, genre=17, fill=b"\0"):
    def field(text, size):
        return text.ljust(size, fill)[:size]
    head = b"TAG" + field(title, 30) + field(b"artist", 30) + field(b"album", 30) + b"1999"
    tail = field(comment, 28) + b"\0" + bytes([track]) if track else field(comment, 30)
    return head + tail + bytes([genre])


def usual(version):
    names = {2: (b"TT2", b"TP1", b"TAL", b"TYE", b"TRK", b"TCO", b"COM", b"PIC"),
             3: (b"TIT2", b"TPE1", b"TALB", b"TYER", b"TRCK", b"TCON", b"COMM", b"APIC"),
             4: (b"TIT2", b"TPE1", b"TALB", b"TDRC", b"TRCK", b"TCON", b"COMM", b"APIC")}[version]
    date = b"\x001999-05-01" if version == 4 else b"\x001999"
    bodies = (b"\0title", b"\x01\xff\xfea\0r\0t\0", b"\x03al\xc3\xbcm" if version == 4 else b"\0al\xfcm", date,
              b"\x003/12", b"\0(17)Rock", b"\0eng\0a note", b"\0PNG\x03\0\xff\xd8\xff\xe0picture")
    return b"".join(frame(version, n, b) for n, b in zip(names, bodies))


def files():
    yield "empty", b""
    yield "audio", AUDIO
    for version in (2, 3, 4):
        yield f"v2{version}-usual", tag(version, usual(version)) + AUDIO + v1()
        yield f"v2{version}-no-padding", tag(version, usual(version), 0) + AUDIO
    for version in (2, 3):
        body = unsynchronised(usual(version) + frame(version, b"PRI" if version == 2 else b"PRIV", b"\xff\xfb\xff\0\xff"))
        yield f"v2{version}-unsynchronised", tag(version, body, 9, 0x80) + AUDIO
    private = frame(3, b"COMM", b"\0eng" b"iTunNORM\0 0000") + frame(3, b"COMM", b"\0deuother\0text")
    yield "v23-comments", tag(3, private + frame(3, b"COMM", b"\1eng\xff\xfe\0\0\xff\xfex\0")) + v1(track=0)
    yield "v23-extended", tag(3, bytes([0, 0, 0, 10, 0x80, 0, 0, 0, 0, 5, 1, 2, 3, 4]) + usual(3), 5, 0x40) + AUDIO
    yield "v24-extended", tag(4, syncsafe(13) + b"\x01\x60\0\x05\1\2\3\4\5" + usual(4), 5, 0x40) + AUDIO
    text = b"\0compressed title"
    yield "v23-compressed", tag(3, frame(3, b"TIT2", len(text).to_bytes(4, "big") + zlib.compress(text), 0x80)) + AUDIO
    yield "v24-compressed", tag(4, frame(4, b"TIT2", syncsafe(len(text)) + zlib.compress(text), 0x09)) + AUDIO
    yield "v24-flags", tag(4, frame(4, b"TPE1", unsynchronised(b"\1\xff\xfea\0"), 2) + frame(4, b"TALB", b"\x81\0x", 0x40)
                           + frame(4, b"TIT2", b"\x80secret", 0x04), 0, 0x80) + AUDIO
    yield "v24-footer", tag(4, usual(4), 0, 0, True) + AUDIO + v1(fill=b" ")
    yield "v24-several-values", tag(4, frame(4, b"TPE1", b"\3one\0two\0\0three\0") + frame(4, b"TCON", b"\x0017\0RX")) + AUDIO
    yield "v24-plain-sizes", tag(4, b"TIT2" + (200).to_bytes(4, "big") + b"\0\0" + b"\0" + b"x" * 199
                                 + frame(4, b"TPE1", b"\0a"))
    yield "v23-both-years", tag(3, frame(3, b"TDRC", b"\x002001-02") + frame(3, b"TYER", b"\x001999")) + v1()
    yield "v23-lying-size", tag(3, frame(3, b"TIT2", b"\0one") + frame(3, b"APIC", b"data", 0, 70000) + usual(3)) + AUDIO
    yield "v23-behind-padding", tag(3, usual(3) + bytes(30) + b"rest") + AUDIO
    yield "v23-truncated", tag(3, usual(3), 500)[:120]
    yield "two-tags", tag(3, usual(3)) + tag(4, usual(4)) + AUDIO + v1()
    yield "unknown-version", tag(5, usual(4)) + AUDIO
    yield "ape", AUDIO + b"APETAGEX" + bytes(24) + v1()[1:]
    yield "v1-after-ape-name", AUDIO + b"APE" + v1(title=b"EX")


def commands():
    """A name, and eight command bytes with the texts to put."""
    def command(operation, puts, removals=0, text=b""):
        return bytes([operation, puts, removals, 7, 9, 0, 0, (len(text) + 3) // 4]) + text.ljust((len(text) + 3) // 4 * 4)
    yield "v2-title", command(1, 0x01, 0, b"new")
    yield "v2-all", command(1, 0x7F, 0, "größer\nКино\n日本語 🎵\na / b\n2001".encode())
    yield "v2-remove", command(1, 0x7F, 0x7F)
    yield "v1-all", command(0, 0x7F, 0, "größer\nКино\n日本語 🎵\nnote\n2001".encode())
    yield "v2-strip", command(3, 0)


def main():
    folder = pathlib.Path(sys.argv[1])
    for name in ("tagreader", "tagwriter"):
        (folder / name).mkdir(parents=True, exist_ok=True)
    for name, content in files():
        (folder / "tagreader" / name).write_bytes(content)
        for edit, prefix in commands():
            # Stripping looks at the tag's header alone.
            if edit != "v2-strip" or name in ("two-tags", "v24-footer", "v23-truncated"):
                (folder / "tagwriter" / f"{name}-{edit}").write_bytes(prefix + content)


if __name__ == "__main__":
    main()
