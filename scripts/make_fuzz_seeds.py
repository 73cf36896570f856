#!/usr/bin/env python3
"""Cuts what the fuzz targets begin with out of real DICOM files.

Usage: make_fuzz_seeds.py OUT FOLDER...   writes OUT/TARGET/*: small whole files for the targets that
read files, coded frames with the facts of their header behind them for those that decode; and
OUT/dicom.dict, the words that mutations are made with.
"""
import hashlib
import io
import pathlib
import re
import struct
import sys
import warnings

import pydicom
from pydicom.datadict import dictionary_VR
from pydicom.encaps import generate_pixel_data_frame

LARGEST_FILE = 40_000
LARGEST_FRAME = 60_000
FILE_TARGETS = ("file_fuzz", "object_fuzz", "stream_fuzz", "convert_fuzz")
STATE = "1.2.840.10008.5.1.4.1.1.11.1"
# As fuzz/coded_frame.h and the targets list them: the place of a word in its list is its byte.
PHOTOMETRICS = ["MONOCHROME2", "RGB", "YBR_FULL", "YBR_FULL_422", "PALETTE COLOR", "YBR_RCT",
                "YBR_PARTIAL_422"]
JPEG = ["1.2.840.10008.1.2.4.50", "1.2.840.10008.1.2.4.51", "1.2.840.10008.1.2.4.57",
        "1.2.840.10008.1.2.4.70"]
J2K = ["1.2.840.10008.1.2.4.91", "1.2.840.10008.1.2.4.90"]
RLE = ["1.2.840.10008.1.2.5"]
DECODERS = {"rle_fuzz": RLE, "jpeg_fuzz": JPEG, "jpeg2000_fuzz": J2K,
            "lossless_jpeg_fuzz": [], "headers_swap_fuzz": RLE + JPEG[:2] + JPEG[3:] + J2K}


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


def save_file(out, path):
    content = path.read_bytes()
    if len(content) <= LARGEST_FILE:
        for target in FILE_TARGETS:
            save(out, target, content + bytes(48))
    try:
        ds = pydicom.dcmread(path, force=True)
        if str(ds.get("SOPClassUID", "")).startswith(STATE):
            save(out, "state_fuzz", content + bytes(40))
        if "PixelData" in ds and ds.file_meta.TransferSyntaxUID in RLE + JPEG + J2K:
            save_frames(out, ds)
    except Exception:  # a file that pydicom cannot read is a good seed all the same
        pass


def item(**attributes):
    made = pydicom.Dataset()
    for keyword, value in attributes.items():
        setattr(made, keyword, value)
    return made


def lut(first=0, bits=16):
    table = item(LUTData=struct.pack("<8H", *range(0, 800, 100)))
    table.add_new("LUTDescriptor", "US", [8, first, bits])
    table["LUTData"].VR = "OW"
    return table


def palette(target, segmented):
    for colour in ("Red", "Green", "Blue"):
        name = f"{colour}PaletteColorLookupTable"
        target.add_new(f"{name}Descriptor", "US", [8, 0, 16])
        words = (0, 4, 0, 9, 8, 7, 1, 4, 900) if segmented else range(0, 800, 100)
        keyword = f"Segmented{name}Data" if segmented else f"{name}Data"
        target.add_new(keyword, "OW", struct.pack(f"<{len(words)}H", *words))
    target.PhotometricInterpretation = "PALETTE COLOR"


def overlay(target):
    target.add_new(0x60000010, "US", 16)
    target.add_new(0x60000011, "US", 16)
    target.add_new(0x60000050, "SS", [1, -3])
    target.add_new(0x60000100, "US", 1)
    target.add_new(0x60000102, "US", 0)
    target.add_new(0x60003000, "OW", bytes(range(32)))


def groups(target):
    target.SharedFunctionalGroupsSequence = [item(
        PixelValueTransformationSequence=[item(RescaleSlope="2", RescaleIntercept="-9")],
        PixelMeasuresSequence=[item(PixelSpacing=["1", "2"])])]
    target.PerFrameFunctionalGroupsSequence = [item(
        FrameVOILUTSequence=[item(WindowCenter="40", WindowWidth="80")])]


SHUTTERS = [
    {"ShutterShape": "RECTANGULAR", "ShutterLeftVerticalEdge": 2, "ShutterRightVerticalEdge": 12,
     "ShutterUpperHorizontalEdge": 3, "ShutterLowerHorizontalEdge": 9},
    {"ShutterShape": "CIRCULAR", "CenterOfCircularShutter": [8, 8], "RadiusOfCircularShutter": 5},
    {"ShutterShape": "POLYGONAL", "VerticesOfThePolygonalShutter": [1, 1, 1, 12, 12, 7]},
    {"ShutterShape": "BITMAP", "ShutterOverlayGroup": 0x6000}]
ANNOTATIONS = [
    {"GraphicObjectSequence": [item(GraphicAnnotationUnits="PIXEL", GraphicDimensions=2,
                                    NumberOfGraphicPoints=3, GraphicData=[1, 1, 9, 2, 5, 8],
                                    GraphicType=kind, GraphicFilled="Y")]}
    for kind in ("POINT", "POLYLINE", "INTERPOLATED", "CIRCLE", "ELLIPSE")]
ANNOTATIONS.append({"TextObjectSequence": [item(
    UnformattedTextValue="text", AnchorPoint=[3, 4], AnchorPointAnnotationUnits="PIXEL",
    AnchorPointVisibility="Y")]})


def set_all(target, values):
    for keyword, value in values.items():
        setattr(target, keyword, value)


def presented():
    """What a state or an image may carry to say how it is shown: one thing at a time."""
    yield lambda ds: setattr(ds, "ModalityLUTSequence", [lut()])
    yield lambda ds: setattr(ds, "VOILUTSequence", [lut(2, 12)])
    yield lambda ds: setattr(ds, "SoftcopyVOILUTSequence", [item(VOILUTSequence=[lut()])])
    yield lambda ds: setattr(ds, "PresentationLUTSequence", [lut()])
    yield lambda ds: setattr(ds, "MaskSubtractionSequence", [item(
        MaskOperation="AVG_SUB", ApplicableFrameRange=[1, 2], MaskFrameNumbers=[1],
        MaskSubPixelShift=[0.5, 1])])
    for values in SHUTTERS:
        yield lambda ds, values=values: (set_all(ds, values), overlay(ds))
    for values in ANNOTATIONS:
        yield lambda ds, values=values: setattr(ds, "GraphicAnnotationSequence", [item(**values)])
    for mode in ("MAGNIFY", "TRUE SIZE"):
        yield lambda ds, mode=mode: setattr(ds, "DisplayedAreaSelectionSequence", [item(
            DisplayedAreaTopLeftHandCorner=[1, 1], DisplayedAreaBottomRightHandCorner=[9, 9],
            PresentationSizeMode=mode, PresentationPixelMagnificationRatio=2.0,
            PresentationPixelSpacing=[1, 1])])


def pixels_of(bits, samples=1, frames=1):
    def change(ds):
        ds.BitsAllocated = bits
        ds.BitsStored = bits
        ds.SamplesPerPixel = samples
        ds.NumberOfFrames = frames
        ds.PixelData = bytes(range(256)) * max(1, bits * samples * frames // 8)
        if samples == 3:
            ds.PhotometricInterpretation = "RGB"
            ds.PlanarConfiguration = 1
    return change


def images():
    yield from presented()
    yield from (overlay, groups, lambda ds: palette(ds, False), lambda ds: palette(ds, True))
    for shape in ((1, 1, 2), (8, 3, 1), (16, 1, 2), (16, 3, 1), (32, 1, 1), (12, 1, 1)):
        yield pixels_of(*shape)


def write(change, **values):
    ds = item(SOPClassUID="1.2.840.10008.5.1.4.1.1.7", SOPInstanceUID="1.2.3.4", **values)
    ds.file_meta = pydicom.dataset.FileMetaDataset()
    ds.file_meta.TransferSyntaxUID = "1.2.840.10008.1.2.1"
    ds.file_meta.MediaStorageSOPClassUID = ds.SOPClassUID
    ds.file_meta.MediaStorageSOPInstanceUID = ds.SOPInstanceUID
    ds.preamble = bytes(128)
    ds.is_little_endian = True
    ds.is_implicit_VR = False
    change(ds)
    stream = io.BytesIO()
    ds.save_as(stream, write_like_original=False)
    return stream.getvalue()


def save_made(out):
    """What the real files lack: small images and states of every kind."""
    for change in images():
        content = write(change, Rows=16, Columns=16, SamplesPerPixel=1, BitsAllocated=8,
                        BitsStored=8, HighBit=7, PixelRepresentation=0,
                        PhotometricInterpretation="MONOCHROME2", PixelData=bytes(range(256)))
        for target in FILE_TARGETS:
            save(out, target, content + bytes([0] * 46 + [1, 1] if "convert" in target else [7] * 48))
    for change in presented():
        save(out, "state_fuzz", write(change) + bytes([7] * 40))


def words():
    """Every tag that our sources name, with its VR; delimiters, syntaxes, texts and codec markers."""
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
