"""Images as a host has them."""
from __future__ import annotations

from typing import Any, Optional, Tuple

import numpy as np
import numpy.typing as npt

from ._opened import Modality, Opened, Source
from ._view import View


class Image(Opened):
    """A DICOM image; quorvex.open() makes one. Several threads may use it at once.

    frames, rows, columns, samples (a pixel), bits_stored, is_signed, is_lossy, spacing (rows, columns, in mm, or None);
    dtype and shape of one frame.
    """

    def __enter__(self) -> "Image":
        return self

    def render(self, frame: int = 0, *, size: Optional[Tuple[int, int]] = None, **how: Any) -> npt.NDArray[np.uint8]:
        """A picture, (height, width, 3), red, green, blue; size is (width, height), else one pixel for each stored one.

        how: as View.set() takes it: window, voi, zoom, pan, rotation, flip, invert, interpolation, overlays, shutter,
        annotations, state.
        """
        with View(size or (self.columns, self.rows)) as view:
            view.show(self, frame)
            view.set(**how)
            return view.render()


def open(source: Source) -> Image:  # pylint: disable=redefined-builtin
    """Opens a file, or the bytes of one, which must not change while the image is used."""
    return Image(source)


__all__ = ["Image", "Modality", "open"]
