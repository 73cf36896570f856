#!/usr/bin/env python3
"""Times one frame of a long object, and the slices of a study, beside DCMTK's tool and pydicom.

Usage: large_file.py QUORVEX RESULTS.json [--runs 9]. Each run is a process of its own, those of ours
and of the peers in turn; medians and the largest peak of memory are printed as a table, and the
medians written the way that Google Benchmark writes its own.
"""

import argparse
import json
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

SAMPLE = pathlib.Path(__file__).parents[2] / "samples" / "ct.dcm"
FRAMES = 600
SLICES = 1000  # that pydicom opens; ours and dcmdata's are in archive_bench

SHOW = "import sys, pydicom; pydicom.dcmread(sys.argv[1]).pixel_array[1].tofile(sys.argv[2])"
READ = """
import sys, pydicom
file = pydicom.dcmread(sys.argv[1], stop_before_pixels=True)
words = file.Rows * file.Columns * 2
with open(sys.argv[1], "rb") as stream:
    stream.seek(-(file.NumberOfFrames - 1) * words, 2)
    open(sys.argv[2], "wb").write(stream.read(words))
"""
SORT = """
import pathlib, sys, time, pydicom
names = ["SeriesInstanceUID", "SOPInstanceUID", "InstanceNumber", "ImagePositionPatient",
         "ImageOrientationPatient"]
files = sorted(pathlib.Path(sys.argv[1]).iterdir())
start = time.process_time()
for file in files:
    data = pydicom.dcmread(file, stop_before_pixels=True)
    [data.get(name) for name in names]
print((time.process_time() - start) / len(files))
"""


def long_object(path, frames=FRAMES):
    """The CT sample as an object of many frames; 600 are 315 MB."""
    header = b"\xe0\x7f\x10\x00OW\x00\x00"
    rows = b"\x28\x00\x10\x00US\x02\x00"
    number = str(frames).encode() + b" " * (len(str(frames)) % 2)
    count = b"\x28\x00\x08\x00IS" + len(number).to_bytes(2, "little") + number
    data, pixels = SAMPLE.read_bytes().split(header)
    data = data.replace(rows, count + rows, 1)
    with path.open("wb") as file:
        file.write(data + header + (frames * len(pixels[4:])).to_bytes(4, "little"))
        for _ in range(frames):
            file.write(pixels[4:])


def run(command, output):
    """Seconds, and the peak in megabytes, of one process.

    A process begins with the peak of the one that it came from: `time` is small, this one is not.
    """
    told = output.with_suffix(".peak")
    measured = ["/usr/bin/time", "-f", "%M", "-o", told, *command]
    start = time.perf_counter()
    with output.open("wb") as file:
        done = subprocess.run(measured, stdout=file, check=False)
    took = time.perf_counter() - start
    if done.returncode != 0:
        sys.exit(f"large_file: {command[0]} failed")
    return took, int(told.read_text()) / 1024


def measure(jobs, runs, output):
    took = {name: [] for name in jobs}
    for _ in range(runs):
        for name, command in jobs.items():
            took[name].append(run(command, output))
    return {name: (statistics.median(seconds for seconds, _ in both), max(peak for _, peak in both))
            for name, both in took.items()}


def plan(quorvex, folder):
    file = folder / "long.dcm"
    long_object(file)
    python = "/usr/bin/python3"
    raw = folder / "frame.raw"
    return {
        "FrameOf600/Ours": [quorvex, "render", file, "--frame", "1", "-o", folder / "frame.png"],
        "FrameOf600/Dcmj2pnm": ["dcmj2pnm", "+F", "2", "--use-window", "1", "--write-png", file,
                                folder / "peer.png"],
        "FrameOf600/OursRaw": [quorvex, "frame", file, "--frame", "1", "-o", raw],
        "FrameOf600/Pydicom": [python, "-c", SHOW, file, raw],
        "FrameOf600/PydicomByHand": [python, "-c", READ, file, raw],
    }


def slice_by_pydicom(folder):
    links = folder / "links"
    links.mkdir()
    first = links / "0.dcm"
    first.write_bytes(SAMPLE.read_bytes())
    for index in range(1, SLICES):
        os.link(first, links / f"{index}.dcm")
    told = folder / "told"
    run(["/usr/bin/python3", "-c", SORT, links], told)
    return float(told.read_text())


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("quorvex", type=pathlib.Path)
    arguments.add_argument("results", type=pathlib.Path)
    arguments.add_argument("--runs", type=int, default=9)
    given = arguments.parse_args()
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        took = measure(plan(given.quorvex.resolve(), folder), given.runs, folder / "out")
        times = {name: seconds for name, (seconds, _) in took.items()}
        times["SortPydicom"] = slice_by_pydicom(folder)
    print("| Job | ms | Peak, MB |\n|---|---:|---:|")
    for name, (seconds, peak) in took.items():
        print(f"| {name} | {seconds * 1e3:.1f} | {peak:.1f} |")
    print(f"| SortPydicom, a slice | {times['SortPydicom'] * 1e3:.3f} | |")
    runs = [{"run_name": job, "aggregate_name": "median", "cpu_time": seconds, "time_unit": "s"}
            for job, seconds in times.items()]
    given.results.write_text(json.dumps({"benchmarks": runs}, indent=1))


if __name__ == "__main__":
    main()
