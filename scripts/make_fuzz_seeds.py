#!/usr/bin/env python3
"""Cuts what the fuzz targets begin with out of real DICOM files.

Usage: make_fuzz_seeds.py OUT FOLDER...
Writes OUT/TARGET/*: small whole files for the targets that read files, coded frames with the facts of
their header behind them for those that decode; and OUT/dicom.dict, the words that mutations are made
with.
"""
import hashlib
import pathlib
import re
import struct
import sys
import warnings

import pydicom
from pydicom.datadict import dictionary_VR
from pydicom.encaps import generate_pixel_data_frame

from fuzz_images import PLAIN_IMAGE, images, presented, write

LARGEST_FILE = 40_000
LARGEST_FRAME = 60_000
# What each target that reads whole files draws from their end, at its best: every layer shown, lossless
# JPEG as the form to convert into.
OPTIONS = {"file_fuzz": bytes([7] * 48), "object_fuzz": bytes([7] * 40), "stream_fuzz": bytes(16),
           "convert_fuzz": bytes([2] * 2)}
STATE_OPTIONS = bytes([7] * 40)
STATE = "1.2.840.10008.5.1.4.1.1.11.1"
# As fuzz/codec.h and the targets list them: the place of a word in its list is its byte.
PHOTOMETRICS = ["MONOCHROME2", "RGB", "YBR_FULL", "YBR_FULL_422", "PALETTE COLOR", "YBR_RCT",
                "YBR_PARTIAL_422"]
JPEG = ["1.2.840.10008.1.2.4.50", "1.2.840.10008.1.2.4.51", "1.2.840.10008.1.2.4.57",
        "1.2.840.10008.1.2.4.70"]
J2K = ["1.2.840.10008.1.2.4.91", "1.2.840.10008.1.2.4.90"]
# Any of these is a codestream for the targets of the decoder's stages.
CODESTREAMS = [*J2K, *(f"1.2.840.10008.1.2.4.{number}" for number in (92, 93, 201, 202, 203))]
RLE = ["1.2.840.10008.1.2.5"]
JPEG_LS = ["1.2.840.10008.1.2.4.80", "1.2.840.10008.1.2.4.81"]
FRAGMENTS = ["1.2.840.10008.1.2.8.1", "1.2.840.10008.1.2.1.98"]
JPEG_XL = [f"1.2.840.10008.1.2.4.{number}" for number in (110, 111, 112)]
DECODERS = {"rle_fuzz": RLE, "jpeg_fuzz": JPEG, "jpeg2000_fuzz": J2K,
            "jpegls_fuzz": JPEG_LS, "fragment_fuzz": FRAGMENTS,
            "jpegxl_fuzz": JPEG_XL, "lossless_jpeg_fuzz": [],
            "headers_swap_fuzz": [*RLE, *JPEG[:2], JPEG[3], *J2K, "", "", JPEG[2],
                                  "1.2.840.10008.1.2.4.203", JPEG_LS[0], FRAGMENTS[0], JPEG_XL[2]]}
CODED = {syntax for syntaxes in DECODERS.values() for syntax in syntaxes} - {""}


def save(out, target, content):
    folder = out / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / hashlib.sha1(content).hexdigest()).write_bytes(content)


def facts(ds, syntaxes):
    """The bytes that DrawFacts() takes, the first one last."""
    def word(number):
        return [number & 255, number >> 8]
    photometric = ds.get("PhotometricInterpretation", "")
    index = PHOTOMETRICS.index(photometric) if photometric in PHOTOMETRICS else 7
    flags = ds.get("PlanarConfiguration", 0) + 2 * ds.get("PixelRepresentation", 0)
    drawn = [syntaxes.index(ds.file_meta.TransferSyntaxUID), index, *word(ds.Rows),
             *word(ds.Columns), ds.SamplesPerPixel, ds.BitsAllocated, flags]
    return bytes(reversed(drawn))


def save_frames(out, ds):
    frames = list(generate_pixel_data_frame(ds.PixelData, int(ds.get("NumberOfFrames", 1))))
    for target, syntaxes in DECODERS.items():
        if ds.file_meta.TransferSyntaxUID not in syntaxes:
            continue
        room = {"headers_swap_fuzz": 36}.get(target, 12)  # all that the target draws
        for frame in frames[:2]:
            tail = facts(ds, syntaxes)
            if len(frame) <= LARGEST_FRAME:
                save(out, target, frame + bytes(room - len(tail)) + tail)


def save_codestreams(out, ds):
    """Whole streams, their packets, and pieces of those as bytes of one block in a whole segment."""
    frames = generate_pixel_data_frame(ds.PixelData, int(ds.get("NumberOfFrames", 1)))
    stream = next(frames)
    if len(stream) > LARGEST_FRAME:
        return
    save(out, "jpeg2000_parts_fuzz", stream + bytes(16))
    packets = stream[stream.find(b"\xff\x93") + 2:]
    save(out, "jpeg2000_packets_fuzz", packets[:8000] + bytes([63] * 64))
    for begin in range(0, min(len(packets), 12_000), 3000):
        piece = packets[begin:begin + 3000]
        # 64 x 64 coefficients of up to 29 planes, no style, one segment.
        shape = bytes([33, 20, 63, 63, 1])
        save(out, "jpeg2000_mq_block_fuzz", piece + bytes(23) + bytes([30, 0, 0, 0]) + shape)
        save(out, "jpeg2000_ht_block_fuzz", piece + bytes([1] * 19) + shape)


def save_file(out, path):
    content = path.read_bytes()
    if len(content) <= LARGEST_FILE:
        for target, options in OPTIONS.items():
            save(out, target, content + options)
    try:
        ds = pydicom.dcmread(path, force=True)
        if str(ds.get("SOPClassUID", "")).startswith(STATE):
            save(out, "state_fuzz", content + STATE_OPTIONS)
        if "PixelData" in ds and ds.file_meta.TransferSyntaxUID in CODED:
            save_frames(out, ds)
        if "PixelData" in ds and ds.file_meta.TransferSyntaxUID in CODESTREAMS:
            save_codestreams(out, ds)
    except Exception:  # a file that pydicom cannot read is a good seed all the same
        pass


def save_made(out):
    """What the real files lack: small images and states of every kind."""
    for change in images():
        content = write(change, **PLAIN_IMAGE)
        for target, options in OPTIONS.items():
            save(out, target, content + options)
    for change in presented():
        save(out, "state_fuzz", write(change) + STATE_OPTIONS)


def words():
    """Every tag that our sources name, with its VR; delimiters, texts and codec markers."""
    root = pathlib.Path(__file__).parent.parent
    sources = [path for room in ("foundation", "parser", "presentation", "pipeline", "maker")
               for path in (root / room).rglob("*") if path.suffix in (".h", ".cpp")]
    found = {int(tag, 16) for path in sources
             for tag in re.findall(r"0x([0-9A-F]{8})\b", path.read_text())}
    for tag in sorted(found | {0x60000010, 0x60000050, 0x60003000}):
        try:
            vr = dictionary_VR(tag)[:2].encode()
        except KeyError:
            continue
        yield struct.pack("<HH", tag >> 16, tag & 0xFFFF) + vr
        yield struct.pack(">HH", tag >> 16, tag & 0xFFFF) + vr
    for item in (0xE000, 0xE00D, 0xE0DD):
        yield struct.pack("<HHI", 0xFFFE, item, 0xFFFFFFFF if item == 0xE000 else 0)
    yield from (b"DICM", b"\xff\xff\xff\xff", b"SQ\0\0\xff\xff\xff\xff", b"1.2.840.10008.1.2")
    yield from (text.encode() for text in PHOTOMETRICS + RLE + JPEG + J2K + [
        "1.2.840.10008.1.2.1.99", "1.2.840.10008.1.2.2", "RECTANGULAR", "CIRCULAR", "POLYGONAL",
        "BITMAP", "SCALE TO FIT", "TRUE SIZE", "MAGNIFY", "POLYLINE", "ELLIPSE", "DISPLAY",
        "INVERSE", "ISO_IR 192", "\\ISO 2022 IR 87", "AVG_SUB", "TID"])
    yield from (bytes([0xFF, marker]) for marker in (*range(0xC0, 0xE0), 0xEE, *range(0x4F, 0x65),
                                                     0x90, 0x91, 0x92, 0x93))


def save_words(path):
    quoted = ("".join(f"\\x{byte:02x}" for byte in word) for word in words())
    path.write_text("".join(f'"{word}"\n' for word in quoted))


def main():
    warnings.simplefilter("ignore")
    if len(sys.argv) < 2 or sys.argv[1].startswith("-"):
        sys.exit(__doc__)
    out = pathlib.Path(sys.argv[1])
    out.mkdir(parents=True, exist_ok=True)
    save_words(out / "dicom.dict")
    save_made(out)
    for folder in sys.argv[2:]:
        for path in sorted(pathlib.Path(folder).rglob("*")):
            if path.is_file() and path.suffix not in (".py", ".pyc", ".txt", ".json", ".gz"):
                save_file(out, path)


if __name__ == "__main__":
    main()
