# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: the stream analysis counts exactly the samples that decoders produce, for every kind of file that make_streams.py
makes.

Usage: analysis.py PROGRAM, the program being xanalyze_dump. Exits with code 77 if an encoder or decoder is missing.
"""

import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

from make_streams import Maker

failures = []


def check(condition, name, message):
    if not condition:
        failures.append(name)
        print(f"FAIL {name}: {message}")


def analyse(program, paths):
    output = subprocess.run([program, *map(str, paths)], check=True, capture_output=True, text=True).stdout
    return [json.loads(line) for line in output.splitlines()]


def mpg123_samples(path, gapless=False):
    """Samples per channel that mpg123 writes. Its search after lost sync has no limit here."""
    command = ["mpg123", "-q", "--gapless" if gapless else "--no-gapless", "--resync-limit", "-1", "--stereo",
               "-e", "s16", "-s", str(path)]
    return len(subprocess.run(command, capture_output=True).stdout) // 4


def ffmpeg_samples(path, gapless=False):
    """Samples per channel from FFmpeg's decoder, counted before any filter."""
    command = ["ffmpeg", "-v", "info", "-nostdin", *([] if gapless else ["-flags2", "+skip_manual"]), "-i",
               str(path), "-map", "0:a", "-af", "ashowinfo", "-f", "null", "-"]
    log = subprocess.run(command, capture_output=True).stderr.decode(errors="replace")
    return sum(int(count) for count in re.findall(r"nb_samples:(\d+)", log))


DECODERS = {"mpg123": mpg123_samples, "ffmpeg": ffmpeg_samples}


def check_stream(stream, result):
    name = stream.path.stem
    check(result["code"] == stream.code, name, f"code {result['code']}, expected {stream.code}")
    for decoder in stream.decoders:
        expected = DECODERS[decoder](stream.path)
        check(expected > 0, name, f"{decoder} decodes nothing")
        check(result["samples"] == expected, name, f"{result['samples']} samples, {decoder} has {expected}")
    if stream.gapless:
        for decoder, samples in DECODERS.items():
            expected = samples(stream.path, gapless=True)
            check(result["playedSamples"] == expected, name,
                  f"{result['playedSamples']} played samples, {decoder} has {expected}")
    check(result["milliseconds"] <= result["samples"] * 1000 // min(8000, result["frequency"]), name, "too long")
    if stream.bit_rate is not None:
        check(result["bitRate"] == stream.bit_rate, name, f"bit rate {result['bitRate']}, not {stream.bit_rate}")
    if stream.variable is not None:
        check(result["variable"] == stream.variable, name, f"variable is {result['variable']}")


def check_corpus(program):
    """Odd files from elsewhere: each one is analysed, and the results are plausible."""
    source = Path(os.environ.get("RAVLIN_SOURCE_DIR", "."))
    folder = Path(os.environ.get("RAVLIN_CORPUS", source.parent / "shared" / "corpus"))
    paths = sorted(path for path in folder.glob("*") if path.is_file()) if folder.is_dir() else []
    for path, result in zip(paths, analyse(program, paths) if paths else [], strict=True):
        size = path.stat().st_size
        check(result["code"] in (0, -8, -9), path.name, f"code {result['code']}")
        check(0 <= result["audioBytes"] <= size, path.name, f"{result['audioBytes']} bytes of audio in {size}")
        check(0 <= result["playedSamples"] <= result["samples"], path.name, "plays more than there is")
        check(result["frames"] * 384 <= result["samples"] or result["code"] == -9, path.name, "too few samples")
    return len(paths)


def main():
    missing = [program for program in ("lame", "ffmpeg", "mpg123") if shutil.which(program) is None]
    if missing:
        print("not installed:", ", ".join(missing))
        return 77
    program = sys.argv[1]
    with tempfile.TemporaryDirectory() as folder:
        streams = Maker(folder).make()
        results = analyse(program, [stream.path for stream in streams])
        for stream, result in zip(streams, results, strict=True):
            check_stream(stream, result)
    corpus = check_corpus(program)
    print(f"{len(streams)} made files and {corpus} of the corpus, {len(failures)} failures")
    return 1 if failures or len(streams) < 30 else 0


if __name__ == "__main__":
    sys.exit(main())
