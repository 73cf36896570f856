"""Coded Pixel Data of pydicom 2 decoded by QuorvexU.

    import quorvex.pydicom_handler
    quorvex.pydicom_handler.register()
    array = pydicom.dcmread("image.dcm").pixel_array
"""
from __future__ import annotations

import struct
from typing import Any

import numpy as np
import numpy.typing as npt

from ._image import Image

HANDLER_NAME = "QuorvexU"
DEPENDENCIES = {"numpy": ("http://www.numpy.org/", "NumPy")}

RLE = "1.2.840.10008.1.2.5"
# Encapsulated syntaxes that the library decodes; native ones are left to pydicom.
SUPPORTED_TRANSFER_SYNTAXES = [RLE, "1.2.840.10008.1.2.8.1", "1.2.840.10008.1.2.1.98"] + [
    f"1.2.840.10008.1.2.4.{ending}" for ending in (
        50, 51, 52, 53, 54, 55, 56, 57, 70, 80, 81, 90, 91, 92, 93, 110, 111, 112, 201, 202, 203)]
# pydicom takes the colours of these by pixel, whatever Planar Configuration says.
BY_PIXEL = {f"1.2.840.10008.1.2.4.{ending}" for ending in (50, 51, 57, 70, 80, 81, 90, 91)}
# Their streams may call samples unsigned whose sign is in Bits Stored.
JPEG_2000 = {f"1.2.840.10008.1.2.4.{ending}" for ending in (90, 91, 92, 93, 201, 202, 203)}
# What decoding needs to know.
KEYWORDS = ("SamplesPerPixel", "PhotometricInterpretation", "PlanarConfiguration", "NumberOfFrames", "Rows", "Columns",
            "BitsAllocated", "BitsStored", "HighBit", "PixelRepresentation", "ExtendedOffsetTable",
            "ExtendedOffsetTableLengths", "PixelData")


def is_available() -> bool:
    """Always: this module could not have been imported otherwise."""
    return True


def supports_transfer_syntax(transfer_syntax: str) -> bool:
    """Whether frames of that syntax are decoded here."""
    return transfer_syntax in SUPPORTED_TRANSFER_SYNTAXES


def needs_to_convert_to_RGB(_: Any) -> bool:  # pylint: disable=invalid-name
    """Colours come as they are stored, as from pydicom's own handlers."""
    return False


def should_change_PhotometricInterpretation_to_RGB(_: Any) -> bool:  # pylint: disable=invalid-name
    """As above."""
    return False


def register(first: bool = True) -> None:
    """Puts this handler ahead of pydicom's own, or behind them."""
    import sys

    import pydicom.config

    this = sys.modules[__name__]
    handlers = [handler for handler in pydicom.config.pixel_data_handlers if handler is not this]
    pydicom.config.pixel_data_handlers = [this, *handlers] if first else [*handlers, this]


def _meta_information(syntax: str) -> bytes:
    """Group 0002 with nothing but the transfer syntax: pydicom writes none for a syntax that it does not know."""
    uid = syntax.encode("ascii")
    uid += b"\0" * (len(uid) % 2)
    element = struct.pack("<HH2sH", 0x0002, 0x0010, b"UI", len(uid)) + uid
    return struct.pack("<HH2sHI", 0x0002, 0x0000, b"UL", 4, len(element)) + element


def _file_of(dataset: Any) -> bytes:
    """The image alone as a file, of which the colours stay as they are stored."""
    from pydicom.dataset import Dataset
    from pydicom.filebase import DicomBytesIO
    from pydicom.filewriter import write_dataset

    image = Dataset()
    for keyword in KEYWORDS:
        if keyword in dataset:
            image[keyword] = dataset[keyword]
    if str(dataset.PhotometricInterpretation).startswith("YBR"):
        image.PhotometricInterpretation = "RGB"
    image.is_little_endian, image.is_implicit_VR = True, False
    file = DicomBytesIO()
    file.is_little_endian, file.is_implicit_VR = True, False
    file.write(b"\0" * 128 + b"DICM" + _meta_information(str(dataset.file_meta.TransferSyntaxUID)))
    write_dataset(file, image)
    content: bytes = file.getvalue()
    return content


def _is_planar(dataset: Any) -> bool:
    syntax = str(dataset.file_meta.TransferSyntaxUID)
    if syntax == RLE:
        return True
    return syntax not in BY_PIXEL and getattr(dataset, "PlanarConfiguration", 0) == 1


def _with_sign(frame: npt.NDArray[Any], bits: int) -> npt.NDArray[Any]:
    unused = 8 * frame.dtype.itemsize - bits
    return (frame << unused) >> unused if unused > 0 else frame


def get_pixeldata(dataset: Any) -> npt.NDArray[Any]:
    """The samples of all frames one behind the other, as pydicom's reshape_pixel_array() takes them."""
    from pydicom.pixel_data_handlers.util import pixel_dtype

    if not supports_transfer_syntax(dataset.file_meta.TransferSyntaxUID):
        raise NotImplementedError("native Pixel Data is pydicom's own")
    if dataset.BitsAllocated == 1:
        raise NotImplementedError("coded frames of single bits are not handed to pydicom")
    is_planar = _is_planar(dataset)
    frames = []
    with Image(_file_of(dataset)) as image:
        for index in range(image.frames):
            frame = image.frame(index)
            if str(dataset.file_meta.TransferSyntaxUID) in JPEG_2000 and image.is_signed:
                frame = _with_sign(frame, image.bits_stored)
            if is_planar and frame.ndim == 3:
                frame = np.moveaxis(frame, 2, 0)
            frames.append(frame.reshape(-1))
    samples: npt.NDArray[Any] = np.concatenate(frames).astype(pixel_dtype(dataset), copy=False)
    return samples
