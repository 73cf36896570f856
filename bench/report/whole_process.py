#!/usr/bin/env python3
"""Times whole processes, the command beside DCMTK's and GDCM's tools, on the same files.

Usage: whole_process.py QUORVEX RESULTS.json [--files 500] [--runs 9]. The runs of ours and of the
peers take turns; the medians, seconds a file, are written the way
that Google Benchmark writes its own.
"""

import argparse
import json
import pathlib
import shutil
import statistics
import subprocess
import tempfile
import time

SAMPLE = pathlib.Path(__file__).parents[2] / "samples" / "ct.dcm"


def with_value(data, header, value):
    """The bytes with the value behind an element's header put in its place."""
    at = data.index(header) + len(header)
    return data[:at] + value + data[at + len(value):]


def plate(path):
    """A radiograph of 3520 x 4280 words, out of the CT sample's lines."""
    columns, rows = 3520, 4280
    pixels_header = b"\xe0\x7f\x10\x00OW\x00\x00"
    data, pixels = SAMPLE.read_bytes().split(pixels_header)
    data = with_value(data, b"\x28\x00\x10\x00US\x02\x00", rows.to_bytes(2, "little"))
    data = with_value(data, b"\x28\x00\x11\x00US\x02\x00", columns.to_bytes(2, "little"))
    lines = [pixels[4 + y * 1024:4 + (y + 1) * 1024] for y in range(512)]
    length = (columns * rows * 2).to_bytes(4, "little")
    wide = b"".join(([(line * 7)[:columns * 2] for line in lines] * 9)[:rows])
    path.write_bytes(data + pixels_header + length + wide)


def together(command, count):
    """Seconds a file, of `count` files in one process."""
    start = time.perf_counter()
    subprocess.run(command, check=True, capture_output=True)
    return (time.perf_counter() - start) / count


def each(files, command, target):
    """Seconds a file; the peers take one file a process."""
    start = time.perf_counter()
    for file in files:
        subprocess.run([*command, file, target / file.name], check=True, capture_output=True)
    return (time.perf_counter() - start) / len(files)


def time_all(jobs, runs, folder):
    times = {name: [] for name in jobs}
    for _ in range(runs):
        for name, job in jobs.items():
            target = folder / "out"
            target.mkdir()
            times[name].append(job(target))
            shutil.rmtree(target)
    return {name: statistics.median(all_times) for name, all_times in times.items()}


def plan(quorvex, folder, count):
    slices = folder / "slices"
    plates = folder / "plates"
    slices.mkdir()
    plates.mkdir()
    for index in range(count):
        shutil.copy(SAMPLE, slices / f"{index}.dcm")
    plate(plates / "0.dcm")
    few = max(16, count // 25)
    for index in range(1, few):
        shutil.copy(plates / "0.dcm", plates / f"{index}.dcm")
    for source, ending, target in ((slices, "j2k", "j2k-lossless"), (plates, "j2k", "j2k-lossless"),
                                   (slices, "jls", "jpegls-lossless")):
        coded = folder / f"{source.name}_{ending}"
        together([quorvex, "convert", source, "-o", coded, "--to", target], 1)
    slice_files, plate_files = sorted(slices.iterdir()), sorted(plates.iterdir())

    def ours(verb, source, *options):
        files = len(list(source.iterdir()))
        return lambda target: together([quorvex, verb, source, "-o", target, *options], files)

    def peer(files, *command):
        return lambda target: each(files, command, target)

    jpegls_files = sorted((folder / "slices_jls").iterdir())
    convert = ["--jobs", "1", "--no-verify", "--to"]
    scaled = ["dcmj2pnm", "--write-png", "--use-window", "1", "--scale-x-size", "128"]
    return {
        "ConvertLossless/Ours": ours("convert", slices, *convert, "jpeg-lossless"),
        "ConvertLossless/OursVerified": ours("convert", slices, "--jobs", "1", "--to",
                                             "jpeg-lossless"),
        "ConvertLossless/Dcmcjpeg": peer(slice_files, "dcmcjpeg", "+e1"),
        "ConvertLossless/Gdcmconv": peer(slice_files, "gdcmconv", "--jpeg"),
        "ConvertJ2k/Ours": ours("convert", slices, *convert, "j2k-lossless"),
        "ConvertJ2k/OursVerified": ours("convert", slices, "--jobs", "1", "--to", "j2k-lossless"),
        "ConvertJ2k/Gdcmconv": peer(slice_files, "gdcmconv", "--j2k"),
        "ConvertHtj2k/Ours": ours("convert", slices, *convert, "htj2k-lossless"),
        "DecodeJpegLs/Ours": ours("convert", folder / "slices_jls", *convert, "explicit"),
        "DecodeJpegLs/Dcmdjpls": peer(jpegls_files, "dcmdjpls"),
        # Over the range of its values, an image is decoded whole.
        "ThumbnailJ2kSlices/Ours": ours("thumbnail", folder / "slices_j2k"),
        "ThumbnailJ2kSlices/Whole": ours("thumbnail", folder / "slices_j2k", "--data-range"),
        "ThumbnailJ2kPlates/Ours": ours("thumbnail", folder / "plates_j2k"),
        "ThumbnailJ2kPlates/Whole": ours("thumbnail", folder / "plates_j2k", "--data-range"),
        "ThumbnailSlices/Ours": ours("thumbnail", slices, "--size", "128x128"),
        "ThumbnailSlices/Dcmj2pnm": peer(slice_files, *scaled),
        "ThumbnailPlates/Ours": ours("thumbnail", plates, "--size", "128x128"),
        "ThumbnailPlates/Dcmj2pnm": peer(plate_files, *scaled),
    }


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("quorvex", type=pathlib.Path)
    arguments.add_argument("results", type=pathlib.Path)
    arguments.add_argument("--files", type=int, default=500)
    arguments.add_argument("--runs", type=int, default=9)
    given = arguments.parse_args()
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        times = time_all(plan(given.quorvex.resolve(), folder, given.files), given.runs, folder)
    runs = [{"run_name": job, "aggregate_name": "median", "cpu_time": seconds, "time_unit": "s"}
            for job, seconds in times.items()]
    given.results.write_text(json.dumps({"benchmarks": runs}, indent=1))


if __name__ == "__main__":
    main()
