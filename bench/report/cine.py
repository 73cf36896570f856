#!/usr/bin/env python3
"""Frames a second of a loop by its coding, with no, one and two frames brought in ahead by other threads.

Usage: cine.py QUORVEX CINE_HOST [--seconds 2]; CINE_HOST is the program of docs/cine.md. The loop has frames of the CT
sample, which a thread draws into a view of 1024 x 1024. Prints a table.
"""

import argparse
import pathlib
import re
import subprocess
import sys
import tempfile

from large_file import long_object

FRAMES = 60
TARGETS = ["rle", "jpeg-lossless", "jpegls-lossless", "j2k-lossless", "htj2k-lossless", "jpegxl-lossless"]


def loops(quorvex, folder):
    native = folder / "native.dcm"
    long_object(native, FRAMES)
    yield "native", native
    for target in TARGETS:
        file = folder / f"{target}.dcm"
        if subprocess.run([quorvex, "convert", native, "-o", file, "--to", target], check=False).returncode == 0:
            yield target, file


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("quorvex", type=pathlib.Path)
    arguments.add_argument("host", type=pathlib.Path)
    arguments.add_argument("--seconds", default="2")
    given = arguments.parse_args()
    print("| Coding | One thread | One frame ahead | Two frames ahead |\n|---|---:|---:|---:|")
    with tempfile.TemporaryDirectory() as name:
        for coding, file in loops(given.quorvex.resolve(), pathlib.Path(name)):
            command = [given.host.resolve(), file, given.seconds]
            told = subprocess.run(command, capture_output=True, text=True, check=False)
            rates = re.findall(r"([0-9.]+) frames", told.stdout)
            if len(rates) != 3:
                sys.exit(f"cine: {coding} is not played")
            first = float(rates[0])
            ahead = " | ".join(f"{float(rate):.0f} ({float(rate) / first:.2f})" for rate in rates[1:])
            print(f"| {coding} | {first:.0f} | {ahead} |")


if __name__ == "__main__":
    main()
