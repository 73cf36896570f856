#!/usr/bin/python3
"""Prints every element of DICOM files as pydicom reads them, for comparison with our own reader.

For each file named on standard input: "file NAME", then one line an element, "DEPTH TAG LENGTH CRC",
or "DEPTH TAG items COUNT" for a sequence; "pixels OFFSET" says where Pixel Data begins in the file;
"unread WHY" stands where pydicom gave up.
"""

import sys
import warnings
import zlib

import pydicom
from pydicom.dataelem import RawDataElement
from pydicom.filereader import dcmread

warnings.simplefilter("ignore")
PIXEL_DATA = 0x7FE00010


def is_sequence(raw):
    if raw.VR not in (None, "UN"):
        return raw.VR == "SQ"
    known = pydicom.datadict.dictionary_has_tag(raw.tag)
    return known and pydicom.datadict.dictionary_VR(raw.tag) == "SQ"


def show(data_set, depth):
    for tag in sorted(data_set.keys()):
        raw = data_set.get_item(tag)
        if is_sequence(raw):
            items = data_set[tag].value
            print(depth, f"{int(tag):08X}", "items", len(items))
            for item in items:
                show(item, depth + 1)
            continue
        value = b"" if raw.value is None else raw.value
        if isinstance(value, bytes):
            print(depth, f"{int(tag):08X}", len(value), zlib.crc32(value))
        else:
            print(depth, f"{int(tag):08X}", "converted", 0)


def show_file(path):
    data_set = dcmread(path, force=True)
    for tag in data_set.file_meta.keys():
        data_set._dict[tag] = data_set.file_meta.get_item(tag)
    show(data_set, 0)
    if PIXEL_DATA in data_set and not data_set.file_meta.get("TransferSyntaxUID", "").endswith(".99"):
        raw = data_set.get_item(PIXEL_DATA)
        header = 8 if data_set.is_implicit_VR else 12
        print("pixels", (raw.value_tell if isinstance(raw, RawDataElement) else raw.file_tell) - header)


for line in sys.stdin:
    path = line.rstrip("\n")
    print("file", path)
    try:
        show_file(path)
    except Exception as why:  # whatever a damaged file makes of it
        print("unread", type(why).__name__, why)
