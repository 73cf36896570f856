"""Slices of a folder as one array."""
from __future__ import annotations

import os
from dataclasses import dataclass
from typing import Any, List, Tuple, Union

import numpy as np
import numpy.typing as npt

from ._image import Image
from ._series import ORIENTATION, POSITION, SERIES, place_along, sorted_images

FRAME_OF_REFERENCE = 0x00200052
TOLERANCE = 1e-3


class VolumeError(ValueError):
    """The slices do not make one volume."""


@dataclass(frozen=True)
class Volume:
    """values: (slices, rows, columns) in modality units, read-only; spacing: mm between slices, rows, columns;
    origin: of the first voxel's centre in mm; orientation: direction of a row and of a column in the patient;
    paths: of the slices."""

    values: npt.NDArray[Any]
    spacing: Tuple[float, float, float]
    origin: Tuple[float, float, float]
    orientation: Tuple[float, ...]
    paths: Tuple[str, ...]

    def __repr__(self) -> str:
        mm = " x ".join(f"{side:g}" for side in self.spacing)
        return f"<quorvex.Volume {self.values.shape} of {self.values.dtype}, {mm} mm>"


@dataclass(frozen=True)
class _Slice:
    path: str
    values: npt.NDArray[Any]
    series: str
    frame_of_reference: str
    orientation: Tuple[float, ...]
    position: Tuple[float, ...]
    spacing: Tuple[float, float]
    place: float


def _slice(path: "os.PathLike[str]") -> _Slice:
    with Image(path) as image:
        name = os.fspath(path)
        if image.frames != 1 or image.samples != 1:
            raise VolumeError(f"{name} is no single grey slice")
        orientation, position = image.numbers(ORIENTATION), image.numbers(POSITION)
        place = place_along(position, orientation)
        if place is None or image.spacing is None:
            raise VolumeError(f"{name} does not say where it lies: position, orientation or spacing is missing")
        return _Slice(name, image.values(0), image.text(SERIES) or "", image.text(FRAME_OF_REFERENCE) or "",
                      tuple(orientation), tuple(position), image.spacing, place)


def _require_like(first: _Slice, other: _Slice) -> None:
    for what, one, two in (("series", first.series, other.series),
                           ("Frame of Reference", first.frame_of_reference, other.frame_of_reference),
                           ("size", first.values.shape, other.values.shape)):
        if one != two:
            raise VolumeError(f"{other.path} is of another {what} than {first.path}")
    for what, a, b in (("orientation", first.orientation, other.orientation),
                       ("pixel spacing", first.spacing, other.spacing)):
        if not np.allclose(a, b, atol=1e-4):
            raise VolumeError(f"{other.path} has another {what} than {first.path}")


def _distance(slices: List[_Slice]) -> float:
    if len(slices) == 1:
        return 0.0
    steps = np.diff([one.place for one in slices])
    same = np.flatnonzero(steps < TOLERANCE)
    if same.size:
        where = int(same[0])
        raise VolumeError(f"{slices[where].path} and {slices[where + 1].path} lie in the same place")
    middle = float(np.median(steps))
    if not np.allclose(steps, middle, atol=max(TOLERANCE, 0.01 * middle)):
        where = int(np.argmax(np.abs(steps - middle)))
        raise VolumeError(f"a slice is missing, or the slices are not evenly apart: {steps[where]:g} mm behind "
                          f"{slices[where].path}, {middle:g} mm elsewhere")
    return middle


def volume(folder: Union[str, "os.PathLike[str]"]) -> Volume:
    """The slices below a folder as one array, in the order in which they lie.

    Raises VolumeError, with a sentence, for what does not belong together.
    """
    slices = [_slice(path) for path in sorted_images(folder)]
    if not slices:
        raise VolumeError(f"{os.fspath(folder)} has no images")
    for other in slices[1:]:
        _require_like(slices[0], other)
    slices.sort(key=lambda one: one.place)
    between = _distance(slices)
    values = np.stack([one.values for one in slices])
    values.setflags(write=False)
    x, y, z = slices[0].position
    return Volume(values, (between, *slices[0].spacing), (x, y, z), slices[0].orientation,
                  tuple(one.path for one in slices))
