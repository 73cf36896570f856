"""The images of a folder, in order."""
from __future__ import annotations

import os
import pathlib
from typing import Iterator, List, Optional, Sequence, Tuple, Union

from ._errors import Error
from ._image import Image

STUDY, SERIES, INSTANCE = 0x0020000D, 0x0020000E, 0x00200013
POSITION, ORIENTATION = 0x00200032, 0x00200037


def place_along(position: Sequence[float], orientation: Sequence[float]) -> Optional[float]:
    """Where a slice lies across its plane; None where that is not known."""
    if len(position) != 3 or len(orientation) != 6:
        return None
    (a, b, c), (d, e, f) = orientation[:3], orientation[3:]
    normal = (b * f - c * e, c * d - a * f, a * e - b * d)
    return sum(p * n for p, n in zip(position, normal))


def files_of(folder: Union[str, "os.PathLike[str]"]) -> List[pathlib.Path]:
    """All files below a folder, in the order of their names; a file alone stands for itself."""
    root = pathlib.Path(folder)
    if not root.exists():
        raise FileNotFoundError(f"{root} is not there")
    if root.is_file():
        return [root]
    return sorted(path for path in root.rglob("*") if path.is_file())


def _order(image: Image) -> Tuple[str, str, float, float]:
    place = place_along(image.numbers(POSITION), image.numbers(ORIENTATION))
    instance = image.number(INSTANCE)
    return (image.text(STUDY) or "", image.text(SERIES) or "", place if place is not None else float("inf"),
            instance if instance is not None else float("inf"))


def sorted_images(folder: Union[str, "os.PathLike[str]"]) -> List[pathlib.Path]:
    """The files that hold images, by study, series, place across the slice and instance number."""
    found = []
    for path in files_of(folder):
        try:
            with Image(path) as image:
                found.append((_order(image), path))
        except Error:
            continue  # no image
    return [path for _, path in sorted(found)]


def series(folder: Union[str, "os.PathLike[str]"]) -> Iterator[Image]:
    """The images below a folder by study, series, place across the slice and instance number; what is no image is left
    out. Each is closed when the next one comes."""
    for path in sorted_images(folder):
        with Image(path) as image:
            yield image
