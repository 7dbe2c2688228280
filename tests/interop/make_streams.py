# SPDX-License-Identifier: GPL-3.0-or-later
"""Makes MPEG audio files of every kind that the stream analysis has to measure, with lame and ffmpeg."""

import random
import struct
import subprocess
from dataclasses import dataclass
from pathlib import Path

SECONDS = 3.3


@dataclass
class Stream:
    """A file made here, and what the tests expect of it."""

    path: Path
    code: int = 0  # the analyser's code
    decoders: tuple = ("mpg123", "ffmpeg")  # those whose sample count is ours
    bit_rate: int | None = None  # kilobits per second, where it is known
    variable: bool | None = None
    gapless: bool = False  # whether the players' gapless lengths are ours too


def run(*command):
    subprocess.run([str(word) for word in command], check=True, stdout=subprocess.DEVNULL)


def syncsafe(size):
    return bytes((size >> shift) & 0x7F for shift in (21, 14, 7, 0))


def id3v2(size, version=3, footer=False):
    """A tag with a private frame and padding. The size is without header and footer."""
    frame = b"PRIV" + (syncsafe if version == 4 else (lambda n: struct.pack(">I", n)))(size // 2) + b"\0\0"
    body = (frame + random.Random(size).randbytes(size // 2)).ljust(size, b"\0")
    tail = bytes([version, 0, 0x10 if footer else 0]) + syncsafe(size)
    return b"ID3" + tail + body + (b"3DI" + tail if footer else b"")


def id3v1():
    return b"TAG" + b"Title".ljust(30, b"\0") + b"\0" * 94 + b"\x11"


def id3v1_extended():
    return b"TAG+" + b"Long title".ljust(223, b"\0") + id3v1()


def ape(version=2000, header=True):
    items = struct.pack("<II", 4, 0) + b"Artist\0" + b"Name"

    def block(flags):
        return b"APETAGEX" + struct.pack("<IIII", version, len(items) + 32, 1, flags) + b"\0" * 8

    if version == 1000:
        return items + block(0)
    present = 0x80000000 if header else 0
    return (block(present | 0x20000000) if header else b"") + items + block(present)


def lyrics3v1():
    return b"LYRICSBEGIN" + b"[00:01]la la la\r\n" * 20 + b"LYRICSEND"


def lyrics3v2():
    body = b"LYRICSBEGIN" + b"IND0000200" + b"LYR00010la la la l"
    return body + b"%06d" % len(body) + b"LYRICS200"


class Maker:
    def __init__(self, folder):
        self.folder = Path(folder)
        self.streams = []
        self.waves = {}

    def wave(self, rate, channels=2):
        """Noise and a tone, loud and soft in turn, so that a variable bit rate varies."""
        key = (rate, channels)
        if key not in self.waves:
            path = self.folder / f"{rate}-{channels}.wav"
            sound = (f"anoisesrc=d={SECONDS}:c=pink:r={rate}:a=0.4:seed=7,tremolo=f=1:d=0.95[n];"
                     f"sine=f=300:d={SECONDS}:r={rate}[s];[n][s]amerge=2")
            run("ffmpeg", "-v", "error", "-f", "lavfi", "-i", sound, "-ac", channels, path)
            self.waves[key] = path
        return self.waves[key]

    def add(self, name, content=None, **facts):
        path = self.folder / f"{name}.mp3"
        if content is not None:
            path.write_bytes(content)
        self.streams.append(Stream(path, **facts))
        return path

    def lame(self, name, *options, rate=44100, channels=2, **facts):
        path = self.folder / f"{name}.mp3"
        run("lame", "--quiet", *options, self.wave(rate, channels), path)
        return self.add(name, **facts)

    def ffmpeg(self, name, *options, rate=44100, **facts):
        path = self.folder / f"{name}.mp3"
        run("ffmpeg", "-v", "error", "-i", self.wave(rate), *options, path)
        return self.add(name, **facts)

    def encodings(self):
        for rate in (64, 128, 320):
            self.lame(f"cbr{rate}", "-b", rate, bit_rate=rate, variable=False, gapless=True)
        self.cbr = self.lame("cbr-bare", "-b", 128, "-t", bit_rate=128, variable=False)
        for quality in (0, 2, 5, 9):
            self.lame(f"vbr{quality}", f"-V{quality}", variable=True, gapless=True)
        self.vbr = self.lame("vbr-bare", "-V2", "-t", variable=True)
        self.lame("vbr-old", "--vbr-old", "-V4", variable=True, gapless=True)
        self.lame("abr", "--abr", 160, variable=True, gapless=True)
        self.lame("abr-bare", "--abr", 90, "-t", variable=True)
        self.lame("checksum", "-p", "-b", 192, bit_rate=192, gapless=True)
        self.lame("checksum-bare", "-p", "-V4", "-t")
        self.lame("stereo", "-m", "s", "-b", 192, bit_rate=192)
        self.lame("dual", "-m", "d", "-b", 192, bit_rate=192)
        self.lame("mono", "-m", "m", "-b", 64, bit_rate=64, gapless=True)
        self.lame("mono-source", "-V3", channels=1, gapless=True)
        self.lame("nothing-reserved", "--nores", "-b", 96, bit_rate=96)
        for rate in (8000, 11025, 12000, 16000, 22050, 24000, 32000, 48000):
            self.lame(f"rate{rate}", "-b", 64 if rate >= 16000 else 32, "--resample", rate / 1000, rate=rate)
            self.lame(f"rate{rate}-vbr", "-V4", "-t", "--resample", rate / 1000, rate=rate)
        # FFmpeg does not decode free format.
        for rate in (200, 320, 430, 640):
            self.lame(f"free{rate}", "--freeformat", "-b", rate, decoders=("mpg123",), bit_rate=rate)
        self.lame("free-bare", "--freeformat", "-t", "-b", 200, decoders=("mpg123",), bit_rate=200)
        self.ffmpeg("lavc-cbr", "-c:a", "libmp3lame", "-b:a", "128k", bit_rate=128, gapless=True)
        self.ffmpeg("lavc-vbr", "-c:a", "libmp3lame", "-q:a", 3, "-id3v2_version", 4, gapless=True)
        self.layer2 = self.ffmpeg("layer2", "-c:a", "mp2", "-b:a", "192k", "-f", "mp2", bit_rate=192)
        self.ffmpeg("layer2-mpeg2", "-c:a", "mp2", "-b:a", "64k", "-f", "mp2", rate=24000, bit_rate=64)

    def with_tags(self):
        cbr, vbr = self.cbr.read_bytes(), self.vbr.read_bytes()
        self.add("id3v2", id3v2(2000) + cbr)
        self.add("id3v2-large", id3v2(12_000_000) + vbr)
        self.add("id3v2-two", id3v2(2000) + id3v2(300, version=4) + cbr)
        self.add("id3v2-footer", id3v2(500, version=4, footer=True) + cbr)
        self.add("id3v2-appended", cbr + id3v2(500, version=4, footer=True))
        self.add("id3v1", cbr + id3v1())
        self.add("id3v1-extended", vbr + id3v1_extended())
        self.add("ape2", cbr + ape())
        self.add("ape2-no-header", cbr + ape(header=False))
        self.add("ape1", cbr + ape(version=1000))
        self.add("ape2-in-front", ape() + cbr)
        self.add("lyrics1", cbr + lyrics3v1() + id3v1())
        self.add("lyrics2", cbr + lyrics3v2() + id3v1())
        self.add("all-behind", vbr + ape() + lyrics3v2() + id3v1())
        self.add("all-around", id3v2(2000) + ape() + vbr + ape() + id3v1())

    def odd(self):
        cbr, vbr = self.cbr.read_bytes(), self.vbr.read_bytes()
        info = (self.folder / "cbr128.mp3").read_bytes()
        junk = bytes(byte % 255 for byte in random.Random(1).randbytes(5000))  # no 0xFF
        self.add("junk-in-front", junk + cbr)
        self.add("zeros-in-front", b"\0" * 5000 + vbr)
        # mpg123 decodes the VBRI frame that Fraunhofer's encoders put in front.
        vbri = (cbr[:4] + b"\0" * 32 + b"VBRI\0\1" + b"\0" * 8 + struct.pack(">I", 77)).ljust(417, b"\0")
        self.add("vbri", vbri + vbr, decoders=("ffmpeg",))
        # FFmpeg recognises an info frame only at the very start.
        self.add("junk-before-info", junk + info, decoders=("mpg123",))
        self.add("starts-inside-a-frame", cbr[10_000:])
        self.add("zeros-behind", cbr + b"\0" * 3000)
        # mpg123 skips a truncated frame, as we do; FFmpeg decodes what is left of it.
        for cut in (1, 100, 400):
            self.add(f"truncated{cut}", cbr[:-cut], code=-8, decoders=("mpg123",))
        # Decoders take the tag for the rest of the truncated frame.
        self.add("truncated-tagged", cbr[:-100] + id3v1(), code=-8, decoders=())
        self.add("joined", cbr + vbr)
        # Both decoders take a second info frame for audio.
        self.add("joined-info", info + info)
        self.add("joined-rates", cbr + (self.folder / "rate48000-vbr.mp3").read_bytes()
                 + (self.folder / "rate22050-vbr.mp3").read_bytes())
        self.add("joined-layers", self.layer2.read_bytes() + cbr)
        # FFmpeg loses the frame after tags in the middle.
        self.add("joined-tagged", id3v2(500) + cbr + id3v1() + id3v2(500) + vbr, decoders=("mpg123",))
        # After a gap FFmpeg skips one more frame than mpg123.
        self.add("zeros-inside", cbr[:20_000] + b"\0" * 3000 + cbr[20_000:], code=-8, decoders=("mpg123",))
        self.add("junk-inside", cbr[:20_000] + junk[:3000] + cbr[20_000:], code=-8, decoders=("mpg123",))
        self.add("part-missing", cbr[:20_000] + cbr[22_000:], code=-8, decoders=("mpg123",))

    def make(self):
        self.encodings()
        self.with_tags()
        self.odd()
        return self.streams
