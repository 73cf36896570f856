#!/usr/bin/env python3
"""The Python package beside pydicom's own handlers, and its threads.

Usage: python_package.py QUORVEX LIBRARY [--seconds 2]. Frames are those of the CT sample, 64 a file, in each coding;
prints two tables: milliseconds a frame through pydicom's `pixel_array`, and frames a second of one and four threads.
"""

import argparse
import concurrent.futures
import os
import pathlib
import subprocess
import sys
import tempfile
import time
import warnings

from large_file import long_object

ROOT = pathlib.Path(__file__).resolve().parents[2]
FRAMES = 64
TARGETS = ["rle", "jpeg-lossless", "j2k-lossless", "jpegls-lossless", "htj2k-lossless"]


def best_of(seconds, work):
    """The shortest time of one call, in seconds."""
    end = time.perf_counter() + seconds
    least = float("inf")
    while time.perf_counter() < end:
        start = time.perf_counter()
        work()
        least = min(least, time.perf_counter() - start)
    return least


def compare_with_pydicom(path, seconds):
    import pydicom
    from pydicom.pixel_data_handlers import gdcm_handler, pillow_handler, rle_handler

    import quorvex.pydicom_handler as ours

    def read(handler):
        pydicom.config.pixel_data_handlers = [handler]
        return pydicom.dcmread(path).pixel_array

    def milliseconds(handler):
        try:
            read(handler)
        except Exception:  # whatever a handler raises for what it does not read
            return None
        return best_of(seconds, lambda: read(handler)) * 1000 / FRAMES

    return [milliseconds(handler) for handler in (ours, pillow_handler, gdcm_handler, rle_handler)]


def frames_a_second(path, threads, seconds):
    import quorvex

    with quorvex.open(path) as image, concurrent.futures.ThreadPoolExecutor(threads) as workers:
        return FRAMES / best_of(seconds, lambda: list(workers.map(image.frame, range(FRAMES))))


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("quorvex", type=pathlib.Path)
    arguments.add_argument("library", type=pathlib.Path)
    arguments.add_argument("--seconds", type=float, default=2)
    given = arguments.parse_args()
    os.environ["QUORVEX_LIBRARY"] = str(given.library.resolve())
    sys.path.insert(0, str(ROOT / "python"))
    warnings.simplefilter("ignore")
    tables = {"pydicom": [], "threads": []}
    with tempfile.TemporaryDirectory() as name:
        native = pathlib.Path(name, "native.dcm")
        long_object(native, FRAMES)
        for target in TARGETS:
            file = pathlib.Path(name, f"{target}.dcm")
            command = [given.quorvex.resolve(), "convert", native, "-o", file, "--to", target]
            if subprocess.run(command, check=False, capture_output=True).returncode != 0:
                continue
            times = compare_with_pydicom(file, given.seconds)
            others = " | ".join("-" if each is None else f"{each:.2f} ({each / times[0]:.1f})" for each in times[1:])
            tables["pydicom"].append(f"| {target} | {times[0]:.2f} | {others} |")
            one, four = (frames_a_second(file, threads, given.seconds) for threads in (1, 4))
            tables["threads"].append(f"| {target} | {one:.0f} | {four:.0f} | {four / one:.2f} |")
    print("| ms a frame | QuorvexU | Pillow | GDCM | pydicom's RLE |\n|---|---:|---:|---:|---:|", *tables["pydicom"],
          "", "| frames a second | one thread | four threads | |\n|---|---:|---:|---:|", *tables["threads"], sep="\n")


if __name__ == "__main__":
    main()
