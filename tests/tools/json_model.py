#!/usr/bin/python3
"""Holds the DICOM JSON Model that the command writes against pydicom's, for the files on standard input.

Usage: json_model.py QUORVEX < names; one line for each difference, then "compared COUNT".

Files that pydicom cannot read or write as JSON are left out, and so are private elements of VR UN, which
each reader may know or not.
"""

import base64
import json
import math
import subprocess
import sys
import warnings

import pydicom

warnings.simplefilter("ignore")
pydicom.config.settings.reading_validation_mode = pydicom.config.IGNORE
KNOWN = {  # where pydicom reads less, or leaves escapes in a name
    "chrGB2312.dcm",
    "no_preamble_dicm_in_data.dcm",
    "emri_small_jpeg_2k_lossless_too_short.dcm",
}
SETTLED = {"00080005"}  # the text is UTF-8, whatever the file's was


def same_number(a, b):
    try:
        a, b = float(a), float(b)
    except (TypeError, ValueError):
        return False
    return (math.isnan(a) and math.isnan(b)) or a == b


def plain(value):
    """What JSON libraries and dictionaries of one empty component make of nothing."""
    if isinstance(value, dict):
        value = {k: v.rstrip() for k, v in value.items() if v}
    return None if value in ("", {}, None) else value


def same_value(a, b):
    a, b = plain(a), plain(b)
    if a == b or same_number(a, b):
        return True
    return isinstance(a, str) and isinstance(b, str) and a.strip(" \0") == b.strip(" \0")


def is_private(key):
    return int(key[3], 16) % 2 == 1


def compare(ours, theirs, place):
    for key in sorted(set(ours) | set(theirs)):
        where = f"{place}/{key}"
        a, b = ours.get(key), theirs.get(key)
        if key in SETTLED or key.endswith("0000") or key.startswith("0002"):
            continue
        if a is None or b is None:
            yield f"{where}: only {'theirs' if a is None else 'ours'}"
            continue
        if a["vr"] != b["vr"]:
            if not is_private(key) and {a["vr"], b["vr"]} - {"US", "SS", "OW", "OB"}:
                yield f"{where}: VR {a['vr']}, not {b['vr']}"
            continue
        if a["vr"] == "SQ":
            items, others = a.get("Value", []), b.get("Value", [])
            if len(items) != len(others):
                yield f"{where}: {len(items)} items, not {len(others)}"
            for i, (item, other) in enumerate(zip(items, others)):
                yield from compare(item, other, f"{where}/Value/{i}")
        elif "BulkDataURI" in a:
            if not a["BulkDataURI"].endswith("#" + where):
                yield f"{where}: URI {a['BulkDataURI']}"
        elif "InlineBinary" in a or "InlineBinary" in b:
            mine, other = (base64.b64decode(x.get("InlineBinary", "")) for x in (a, b))
            if mine.rstrip(b"\0") != other.rstrip(b"\0") and not BIG_ENDIAN:
                yield f"{where}: other bytes"
        else:
            mine, other = a.get("Value", []), b.get("Value", [])
            both = list(zip(mine, other))
            if len(mine) != len(other) and (any(map(plain, mine)) or any(map(plain, other))):
                yield f"{where}: {mine}, not {other}"
            elif not all(same_value(x, y) for x, y in both):
                yield f"{where}: {mine}, not {other}"


def theirs_of(path):
    data_set = pydicom.dcmread(path)
    global BIG_ENDIAN
    BIG_ENDIAN = not data_set.is_little_endian
    return json.loads(data_set.to_json())


compared = 0
for line in sys.stdin:
    path = line.rstrip("\n")
    if path.rsplit("/", 1)[-1] in KNOWN:
        continue
    try:
        theirs = theirs_of(path)
    except Exception:  # whatever it does not like
        continue
    done = subprocess.run([sys.argv[1], "info", "--dicom-json", path], capture_output=True)
    if done.returncode:
        print(path, done.stderr.decode().strip())
        continue
    compared += 1
    for difference in compare(json.loads(done.stdout), theirs, ""):
        print(path, difference)
print("compared", compared)
