#!/usr/bin/python3
"""Converts real files to every lossless target and holds the results against their sources.

For each file and target: the stored samples are equal as the command's own decoder gives them and, for the coded
targets, as a decoder of another toolkit gives them; every attribute is equal but for those that the coding demands;
and dciodvfy finds no error that the source does not have. Tools that are not installed are left out.

Usage: roundtrip.py QUORVEX FILE_OR_FOLDER... [--share I/N] [--targets A,B] [--verbose]
"""
import argparse
import collections
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import warnings
from concurrent.futures import ThreadPoolExecutor

import numpy as np
import pydicom

warnings.simplefilter("ignore")

TARGETS = ["implicit", "explicit", "deflated", "rle", "jpeg-lossless", "j2k-lossless"]
# Another toolkit's decoder for each coding.
DECODERS = {"rle": ["dcmdrle"], "jpeg-lossless": ["dcmdjpeg", "+cn"], "j2k-lossless": ["gdcmconv", "--raw"]}
# What a lossless coding may change, and why.
DEMANDED = {
    "TransferSyntaxUID", "PhotometricInterpretation", "PlanarConfiguration",
    # a source that had lost something says so
    "LossyImageCompression", "LossyImageCompressionRatio", "LossyImageCompressionMethod",
}
META_OF_THE_WRITER = {"FileMetaInformationGroupLength", "FileMetaInformationVersion", "ImplementationClassUID",
                      "ImplementationVersionName", "MediaStorageSOPClassUID", "MediaStorageSOPInstanceUID",
                      "SourceApplicationEntityTitle"}


def run(*command):
    return subprocess.run([str(part) for part in command], capture_output=True, check=False, timeout=300)


def flat(dataset, path=""):
    """Every element's place, VR and value; items by number."""
    for element in dataset:
        place = f"{path}{element.tag}"
        if element.VR == "SQ":
            yield place, "SQ", len(element.value)
            for number, item in enumerate(element.value):
                yield from flat(item, f"{place}[{number}]/")
        else:
            yield place, element.VR, element.value


def attributes(path):
    dataset = pydicom.dcmread(path, force=True)
    found = {}
    for place, vr, value in flat(dataset):
        if place.endswith(("(7fe0, 0010)", "(7fe0, 0001)", "(7fe0, 0002)")):
            continue
        found[place] = (vr, value)
    return dataset, found


def same(place, target, one, other):
    if target == "implicit" and int(re.findall(r"\(([0-9a-f]{4}),", place)[-1], 16) % 2:
        return True  # what a private element is depends on pydicom's list of them
    if one == other or (one[1] in (None, "", b"") and other[1] in (None, "", b"")):
        return True
    if isinstance(one[1], bytes) and isinstance(other[1], bytes):
        return one[1].rstrip(b"\0 ") == other[1].rstrip(b"\0 ")
    if "UN" in (one[0], other[0]):  # a private element has no VR in an implicit file
        return True
    # A VR that only a dictionary knows, or that depends on other attributes.
    return one[1] == other[1] and {one[0], other[0]} <= {"US", "SS", "OB", "OW", "UN", "US or SS", "OB or OW"}


def keyword(place):
    group, element = re.findall(r"[0-9a-f]{4}", place.rsplit("/", 1)[-1])[:2]
    return pydicom.datadict.keyword_for_tag(int(group + element, 16))


def changed_attributes(source, result, target):
    before, after = attributes(source)[1], attributes(result)[1]
    if not any(place.startswith("(0008") for place in before):
        return  # pydicom does not read it
    for place in sorted(set(before) | set(after)):
        if re.search(r"\([0-9a-f]{4}, 0000\)$", place):
            continue  # group lengths are made anew
        if place not in before or place not in after or not same(place, target, before[place], after[place]):
            yield place, keyword(place), before.get(place), after.get(place)


def frames(quorvex, path, folder):
    raw = pathlib.Path(folder) / (path.name + ".raw")
    done = run(quorvex, "frame", path, "--all", "-o", raw)
    if done.returncode != 0 or b"warning" in done.stderr.lower():
        return None
    data = raw.read_bytes()
    raw.unlink()
    return data


def by_pixel(path):
    """Native samples, interleaved, little endian."""
    dataset = pydicom.dcmread(path, force=True)
    data = bytes(dataset.PixelData)
    if dataset.get("SamplesPerPixel", 1) == 3 and dataset.get("PlanarConfiguration", 0) == 1:
        frames_in_file = int(dataset.get("NumberOfFrames") or 1)
        bytes_of_sample = dataset.BitsAllocated // 8
        pixels = dataset.Rows * dataset.Columns
        samples = np.frombuffer(data[:3 * frames_in_file * pixels * bytes_of_sample], f"<u{bytes_of_sample}")
        data = samples.reshape(frames_in_file, 3, pixels).transpose(0, 2, 1).tobytes()
    return data


def decoded_by_another(path, decoder, folder):
    plain = pathlib.Path(folder) / "plain.dcm"
    plain.unlink(missing_ok=True)
    if run(*decoder, path, plain).returncode != 0:
        return None
    try:
        return by_pixel(plain)
    except (AttributeError, OSError, ValueError, KeyError):
        return None


def native_samples(quorvex, path, folder):
    """The file as this command decodes it to a native one, which pydicom reads."""
    plain = pathlib.Path(folder) / "native.dcm"
    if run(quorvex, "convert", path, "-o", plain, "--to", "explicit").returncode != 0:
        return None
    return by_pixel(plain)


def errors_of(path):
    """What dciodvfy finds wrong, the meta information aside, which is made anew; None for what it cannot read."""
    lines = run("dciodvfy", path).stderr.decode("latin-1").splitlines()
    if any("read failed" in line or "Object Not found" in line for line in lines):
        return None
    summary = "Dicom dataset contains invalid data values"
    return {line for line in lines if line.startswith("Error") and "(0x0002" not in line and summary not in line}


def check(quorvex, source, target, tools):
    """What became of one file: (outcome, list of complaints)."""
    with tempfile.TemporaryDirectory() as folder:
        result = pathlib.Path(folder) / "result.dcm"
        done = run(quorvex, "convert", source, "-o", result, "--to", target)
        if done.returncode != 0:
            why = done.stderr.decode("utf-8", "replace").strip().splitlines()
            return "refused", [why[-1].split(": ", 2)[-1] if why else "no reason"]
        complaints = []
        before, after = frames(quorvex, source, folder), frames(quorvex, result, folder)
        if before is not None and before != after:
            complaints.append("samples differ")
        for place, name, one, other in changed_attributes(source, result, target):
            if name not in DEMANDED and name not in META_OF_THE_WRITER:
                complaints.append(f"{place} {name}: {str(one)[:60]} is {str(other)[:60]}")
        decoder = DECODERS.get(target)
        if decoder and decoder[0] in tools and before is not None:
            one = native_samples(quorvex, source, folder)
            other = decoded_by_another(result, decoder, folder)
            if other is None or one.rstrip(b"\0") != other.rstrip(b"\0"):
                complaints.append(f"{decoder[0]} " + ("does not decode it" if other is None else "differs"))
        known = errors_of(source) if "dciodvfy" in tools else None
        if known is not None:
            for error in sorted((errors_of(result) or known) - known)[:3]:
                complaints.append("dciodvfy: " + error)
        return ("different" if complaints else "good"), complaints


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("quorvex", type=pathlib.Path)
    parser.add_argument("inputs", nargs="+", type=pathlib.Path)
    parser.add_argument("--share", default="1/1")
    parser.add_argument("--targets", default=",".join(TARGETS))
    parser.add_argument("--verbose", action="store_true")
    options = parser.parse_args()
    tools = {tool for tool in ("dcmdrle", "dcmdjpeg", "gdcmconv", "dciodvfy") if shutil.which(tool)}
    files = []
    for path in options.inputs:
        files += sorted(p for p in path.rglob("*") if p.is_file()) if path.is_dir() else [path]
    share, shares = map(int, options.share.split("/"))
    files = files[share - 1::shares]
    work = [(file, target) for file in files for target in options.targets.split(",")]
    counts = collections.defaultdict(collections.Counter)
    reasons = collections.Counter()
    quorvex = options.quorvex.resolve()
    with ThreadPoolExecutor(2) as pool:
        jobs = [(file, target, pool.submit(check, quorvex, file, target, tools)) for file, target in work]
        for file, target, job in jobs:
            outcome, complaints = job.result()
            counts[target][outcome] += 1
            if outcome == "refused":
                reasons[complaints[0]] += 1
            if outcome == "different" or options.verbose:
                print(f"{file} to {target}: {outcome}")
                for complaint in complaints[:8]:
                    print("    " + complaint)
    print(f"{len(files)} files; checked also with: {', '.join(sorted(tools)) or 'nothing else'}")
    for target, outcomes in counts.items():
        print(f"  {target:14} " + ", ".join(f"{count} {outcome}" for outcome, count in sorted(outcomes.items())))
    for reason, count in reasons.most_common():
        print(f"  refused {count:4}: {reason}")
    return 1 if any(outcomes["different"] for outcomes in counts.values()) else 0


if __name__ == "__main__":
    sys.exit(main())
