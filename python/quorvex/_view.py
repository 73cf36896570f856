"""Views: an image as a viewer shows it."""
from __future__ import annotations

import os
from typing import Any, Optional, Tuple, Union

import numpy as np
import numpy.typing as npt

from ._errors import as_bytes, require
from ._library import ffi, lib, new_context
from ._opened import Opened, target_of

FUNCTIONS = {None: 0, "linear": 1, "linear-exact": 2, "sigmoid": 3}
INTERPOLATIONS = {"linear": 0, "nearest": 1, "cubic": 2}
OVERLAYS, SHUTTER, ANNOTATIONS = 1, 2, 4


class View:
    """A pane of (width, height) pixels that shows an image. For one thread at a time."""

    def __init__(self, size: Tuple[int, int]) -> None:
        self._context = new_context()
        box = ffi.new("quorvex_view **")
        require(lib.quorvex_view_new(self._context, size[0], size[1], box))
        self._handle = ffi.gc(box[0], lib.quorvex_view_free)
        self._size = (int(size[0]), int(size[1]))
        self._image: Optional[Opened] = None  # its bytes must live as long
        self._orientation = (0, False)
        self._layers = 0

    def __enter__(self) -> "View":
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def __repr__(self) -> str:
        return f"<quorvex.View {self._size[0]} x {self._size[1]} of {self._image!r}>"

    def close(self) -> None:
        """Shows nothing any more."""
        self._handle = ffi.NULL
        self._image = None

    def show(self, image: Opened, frame: int = 0) -> None:
        """Another frame of the same image keeps what was set, another image does not."""
        with image._using() as handle:
            require(lib.quorvex_view_show(self._handle, handle, frame), image.path)
        if image is not self._image:
            self._orientation = (0, False)
        self._image = image

    def set(self, *, window: Optional[Tuple[float, float]] = None, function: Optional[str] = None,
            voi: Optional[int] = None, zoom: Optional[float] = None, pan: Optional[Tuple[int, int]] = None,
            rotation: Optional[int] = None, flip: Optional[bool] = None, invert: Optional[bool] = None,
            interpolation: Optional[str] = None, overlays: Optional[bool] = None, shutter: Optional[bool] = None,
            annotations: Optional[bool] = None, state: Union[Opened, str, "os.PathLike[str]", None] = None) -> None:
        """Changes how the image is seen; what is None stays.

        window: (centre, width) in modality units, with a function "linear", "linear-exact" or "sigmoid"; voi: a table
        or window of the image by number, -1 the one over its values; zoom: pixels of the pane per column, 0 fits; pan:
        (x, y) from the centred place; rotation: 0, 90, 180, 270 clockwise, then flip left to right; state: a
        presentation state, by which all else is set anew.
        """
        view = self._handle
        if state is not None:
            self._apply(state)
        self._set_layers(overlays, shutter, annotations)
        if interpolation is not None:
            require(lib.quorvex_view_set_interpolation(view, INTERPOLATIONS[interpolation]))
        if voi is not None:
            require(lib.quorvex_view_select_voi(view, voi))
        if window is not None:
            require(lib.quorvex_view_set_window(view, window[0], window[1], FUNCTIONS[function]))
        if rotation is not None or flip is not None:
            turned, flipped = self._orientation
            self._orientation = (turned if rotation is None else rotation % 360, flipped if flip is None else flip)
            require(lib.quorvex_view_set_orientation(view, *map(int, self._orientation)))
        if invert is not None:
            require(lib.quorvex_view_set_inverted(view, int(invert)))
        if zoom is not None:
            require(lib.quorvex_view_set_zoom(view, zoom))
        if pan is not None:
            require(lib.quorvex_view_set_pan(view, pan[0], pan[1]))

    def _apply(self, state: Union[Opened, str, "os.PathLike[str]"]) -> None:
        box = ffi.new("quorvex_image **")
        if isinstance(state, Opened):
            if state.path is None:
                raise TypeError("a state is given by its path")
            state = state.path
        require(lib.quorvex_open_file(self._context, as_bytes(state), box), os.fspath(state))
        opened = ffi.gc(box[0], lib.quorvex_image_free)
        require(lib.quorvex_view_apply_state(self._handle, opened))
        self._orientation = (0, False)

    def _set_layers(self, overlays: Optional[bool], shutter: Optional[bool], annotations: Optional[bool]) -> None:
        for bit, wanted in ((OVERLAYS, overlays), (SHUTTER, shutter), (ANNOTATIONS, annotations)):
            if wanted is not None:
                self._layers = self._layers | bit if wanted else self._layers & ~bit
        require(lib.quorvex_view_set_layers(self._handle, self._layers))

    @property
    def window(self) -> Tuple[float, float]:
        """Centre and width that stand."""
        box = ffi.new("double[2]")
        require(lib.quorvex_view_get_window(self._handle, box, box + 1))
        return (box[0], box[1])

    @property
    def zoom(self) -> float:
        """Pixels of the pane per column of the image."""
        box = ffi.new("double *")
        require(lib.quorvex_view_get_zoom(self._handle, box))
        return float(box[0])

    def render(self, out: Optional[npt.NDArray[np.uint8]] = None) -> npt.NDArray[np.uint8]:
        """The pane, (height, width, 3), red, green, blue; into `out` where it is given."""
        width, height = self._size
        pixels = np.empty((height, width, 3), np.uint8)
        require(lib.quorvex_view_render(self._handle, target_of(pixels)))
        if out is None:
            return np.ascontiguousarray(pixels[:, :, ::-1])
        out[...] = pixels[:, :, ::-1]
        return out

    def write_state(self, path: Union[str, "os.PathLike[str]"], *, label: str = "VIEW",
                    texts: Tuple[Tuple[float, float, str], ...] = (),
                    lines: Tuple[Tuple[Tuple[float, float], ...], ...] = ()) -> None:
        """Writes a presentation state of window, orientation and inversion, with texts (column, row, text) and lines of
        (column, row) points."""
        count = len(texts) + len(lines)
        marks = ffi.new("quorvex_mark[]", max(count, 1))
        keep: Any = []
        for mark, (x, y, text) in zip(marks, texts):
            keep.append((ffi.new("double[]", [x, y]), ffi.new("char[]", text.encode())))
            mark.kind, mark.points, mark.text, mark.point_count = 0, keep[-1][0], keep[-1][1], 1
        for i, line in enumerate(lines, len(texts)):
            keep.append(ffi.new("double[]", [float(number) for point in line for number in point]))
            marks[i].kind, marks[i].points, marks[i].point_count = 2, keep[-1], len(line)
        for i in range(count):
            marks[i].struct_size = ffi.sizeof("quorvex_mark")
        code = lib.quorvex_write_state(self._handle, label.encode(), marks if count else ffi.NULL, count,
                                       as_bytes(path))
        require(code, os.fspath(path))


__all__ = ["View"]
