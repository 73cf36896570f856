"""What is open: its facts, attributes, frames and values."""
from __future__ import annotations

import contextlib
import os
import threading
from dataclasses import dataclass
from typing import Any, Iterator, List, Optional, Tuple, Union

import numpy as np
import numpy.typing as npt

from ._errors import Error, as_bytes, require
from ._library import ffi, lib, new_context, structure
from ._png import png_of

Source = Union[str, "os.PathLike[str]", bytes, bytearray, memoryview]
NOT_THERE = 35
PARTIAL = 3


@dataclass(frozen=True)
class Modality:
    """How stored values become modality units: stored * slope + intercept, unless a table does it."""

    slope: float
    intercept: float
    has_table: bool


class Opened:
    """A DICOM image without the views that show it. Several threads may use it at once.

    frames, rows, columns, samples (a pixel), bits_stored, is_signed, is_lossy, spacing (rows, columns, in mm, or None);
    dtype and shape of one frame.
    """

    def __init__(self, source: Source) -> None:
        self._context = new_context()
        self._lock = threading.Lock()
        self._free: List[Any] = []
        self._is_closed = False
        self._bytes: Any = None
        self.path: Optional[str] = None
        box = ffi.new("quorvex_image **")
        if isinstance(source, (bytes, bytearray, memoryview)):
            self._bytes = ffi.from_buffer(source)
            code = lib.quorvex_open_memory(self._context, self._bytes, len(self._bytes), box)
        else:
            self.path = os.fspath(source)
            code = lib.quorvex_open_file(self._context, as_bytes(source), box)
        require(code, self.path)
        self._handle = ffi.gc(box[0], lib.quorvex_image_free)
        self._free.append(self._handle)
        facts = structure("quorvex_facts")
        require(lib.quorvex_image_facts(self._handle, facts), self.path)
        self.frames: int = facts.frames
        self.rows: int = facts.rows
        self.columns: int = facts.columns
        self.samples: int = facts.samples
        self.bits_stored: int = facts.bits_stored
        self.is_signed = bool(facts.is_signed)
        self.is_lossy = bool(facts.is_lossy)
        self.spacing: Optional[Tuple[float, float]] = None
        if facts.row_spacing > 0 and facts.column_spacing > 0:
            self.spacing = (facts.row_spacing, facts.column_spacing)
        kind = "f" if facts.sample_type != 0 else "i" if self.is_signed else "u"
        self.dtype: np.dtype[Any] = np.dtype(f"{kind}{facts.sample_bytes}")
        self.shape: Tuple[int, ...] = (self.rows, self.columns)
        if self.samples > 1:
            self.shape += (self.samples,)

    def __enter__(self) -> "Opened":
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def close(self) -> None:
        """Gives back the file. What other threads are reading is still read."""
        with self._lock:
            self._is_closed = True
            self._free.clear()
        self._handle = None

    def __len__(self) -> int:
        return self.frames

    def __repr__(self) -> str:
        size = "x".join(str(side) for side in (self.columns, self.rows))
        return (f"<quorvex.Image {self.path or 'of bytes'}: {self.text(0x00080060) or 'no modality'}, "
                f"{self.frames} of {size}, {self.samples} x {self.dtype}>")

    @contextlib.contextmanager
    def _using(self) -> Iterator[Any]:
        """A handle that no other thread uses meanwhile."""
        with self._lock:
            if self._is_closed:
                raise ValueError("the image is closed")
            handle = self._free.pop() if self._free else None
            if handle is None:
                box = ffi.new("quorvex_image **")
                require(lib.quorvex_image_copy(self._handle, box), self.path)
                handle = ffi.gc(box[0], lib.quorvex_image_free)
        try:
            yield handle
        finally:
            with self._lock:
                if not self._is_closed:
                    self._free.append(handle)

    # --- Attributes ---

    def text(self, tag: int, index: int = 0) -> Optional[str]:
        """A value of an attribute as text, or None; 0x00100010 is (0010,0010)."""
        length = ffi.new("size_t *")
        with self._using() as handle:
            code = lib.quorvex_attribute_text(handle, tag, index, ffi.NULL, 0, length)
            if code == NOT_THERE:
                return None
            require(code, self.path)
            room = ffi.new("char[]", length[0] + 1)
            require(lib.quorvex_attribute_text(handle, tag, index, room, length[0] + 1, length), self.path)
            return bytes(ffi.buffer(room, length[0])).decode("utf-8", "replace")

    def texts(self, tag: int) -> List[str]:
        """All values of an attribute as text."""
        found = (self.text(tag, index) for index in range(self._count(tag)))
        return [value for value in found if value is not None]

    def number(self, tag: int, index: int = 0) -> Optional[float]:
        """A value of an attribute as a number, or None."""
        box = ffi.new("double *")
        with self._using() as handle:
            code = lib.quorvex_attribute_number(handle, tag, index, box)
        if code == NOT_THERE:
            return None
        require(code, self.path)
        return float(box[0])

    def numbers(self, tag: int) -> List[float]:
        """All values of an attribute that are numbers."""
        found = (self.number(tag, index) for index in range(self._count(tag)))
        return [value for value in found if value is not None]

    def _count(self, tag: int) -> int:
        box = ffi.new("int32_t *")
        with self._using() as handle:
            require(lib.quorvex_attribute_count(handle, tag, box), self.path)
        return int(box[0])

    # --- Pixels ---

    def frame(self, index: int = 0, *, allow_partial: bool = False) -> npt.NDArray[Any]:
        """Stored values, (rows, columns[, samples]), read-only. A frame that ends early or is damaged is an Error
        unless allow_partial; what is missing of it is 0."""
        pixels = np.empty(self.shape, self.dtype)
        quality = ffi.new("int32_t *")
        with self._using() as handle:
            code = lib.quorvex_read_frame(handle, index, _buffer(pixels), quality)
        require(code, self.path)
        if quality[0] == PARTIAL and not allow_partial:
            raise Error(1, self.path)
        return _read_only(pixels)

    def region(self, left: int, top: int, right: int, bottom: int, *, frame: int = 0,
               level: int = 0) -> npt.NDArray[Any]:
        """A part of a frame at a resolution: each level has half the columns and rows of the one before."""
        if right <= left or bottom <= top:
            raise ValueError("a region has an extent")
        pixels = np.empty((bottom - top, right - left) + self.shape[2:], self.dtype)
        with self._using() as handle:
            code = lib.quorvex_read_region(handle, frame, left, top, right, bottom, level, _buffer(pixels))
        require(code, self.path)
        return _read_only(pixels)

    def levels(self, frame: int = 0) -> int:
        """How many resolutions region() gives."""
        box = ffi.new("int32_t *")
        with self._using() as handle:
            require(lib.quorvex_frame_levels(handle, frame, box), self.path)
        return int(box[0])

    def modality(self, frame: int = 0) -> Modality:
        """How stored values of a frame become modality units."""
        found = structure("quorvex_modality")
        with self._using() as handle:
            require(lib.quorvex_frame_modality(handle, frame, found), self.path)
        return Modality(found.slope, found.intercept, bool(found.has_table))

    def values(self, index: int = 0) -> npt.NDArray[Any]:
        """A frame of one sample in modality units (Hounsfield units of a CT), read-only: int32 where they are whole by
        a slope of 1, else float32."""
        found = self.modality(index)
        is_whole = found.slope == 1 and found.intercept == int(found.intercept) and not found.has_table
        if is_whole and self.dtype.kind in "iu" and self.dtype.itemsize <= 2 and self.samples == 1:
            stored = self.frame(index).astype(np.int32)
            unused = 32 - self.bits_stored
            if self.is_signed:
                stored = (stored << unused) >> unused
            else:
                stored &= (1 << self.bits_stored) - 1
            stored += int(found.intercept)
            return _read_only(stored)
        result = np.empty(self.shape[:2], np.float32)
        with self._using() as handle:
            code = lib.quorvex_read_values(handle, index, ffi.from_buffer("float[]", result), result.size)
        require(code, self.path)
        return _read_only(result)

    # --- Small pictures, and being called off ---

    def thumbnail(self, size: Tuple[int, int] = (128, 128), *, frame: int = 0) -> npt.NDArray[np.uint8]:
        """A small picture, fitted into (width, height): (height, width, 3), red, green, blue."""
        pixels = np.zeros((size[1], size[0], 3), np.uint8)
        picture = structure("quorvex_picture")
        with self._using() as handle:
            require(lib.quorvex_thumbnail(handle, frame, target_of(pixels), picture), self.path)
        return np.ascontiguousarray(pixels[:picture.height, :picture.width, ::-1])

    def _repr_png_(self) -> bytes:
        return png_of(self.thumbnail((512, 512)))

    def cancel(self) -> None:
        """Calls off what other threads do with this image, and what they will: it raises Cancelled, until resume()."""
        lib.quorvex_context_cancel(self._context)

    def resume(self) -> None:
        """Takes cancel() back."""
        lib.quorvex_context_resume(self._context)


def _read_only(array: npt.NDArray[Any]) -> npt.NDArray[Any]:
    array.setflags(write=False)
    return array


def _buffer(pixels: npt.NDArray[Any]) -> Any:
    made = structure("quorvex_buffer")
    made.pixels = ffi.cast("void *", pixels.ctypes.data)
    made.bytes = pixels.nbytes
    return made


def target_of(pixels: npt.NDArray[np.uint8]) -> Any:
    """A picture of blue, green, red as the library draws into it."""
    made = structure("quorvex_target")
    made.pixels = ffi.cast("void *", pixels.ctypes.data)
    made.height, made.width = pixels.shape[:2]
    made.stride = pixels.strides[0]
    made.format = 1
    return made
