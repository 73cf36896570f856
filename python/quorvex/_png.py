"""Pictures as PNG."""
from __future__ import annotations

import os
import pathlib
import struct
import zlib
from typing import Any, Union

import numpy.typing as npt


def _chunk(kind: bytes, data: bytes) -> bytes:
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def png_of(picture: npt.NDArray[Any]) -> bytes:
    """The file of a picture of (height, width, 3) bytes."""
    height, width = picture.shape[:2]
    rows = b"".join(b"\0" + picture[row].tobytes() for row in range(height))
    header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + _chunk(b"IHDR", header) + _chunk(b"IDAT", zlib.compress(rows, 6))
            + _chunk(b"IEND", b""))


def write_png(path: Union[str, "os.PathLike[str]"], picture: npt.NDArray[Any]) -> None:
    """Writes a picture of (height, width, 3) bytes: red, green, blue."""
    pathlib.Path(path).write_bytes(png_of(picture))
