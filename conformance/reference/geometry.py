"""Where the pixels of an image lie in a view (PS3.3 C.10.4 displayed areas, C.10.6 turns)."""
import math
from fractions import Fraction

import numpy as np

from .attributes import numbers, words

SPACINGS = ("PixelSpacing", "ImagerPixelSpacing", "NominalScannedPixelSpacing")


def aspect_of(attributes):
    """How much taller than wide a pixel is (PS3.3 C.7.6.3.1.7; the ratio stands ahead)."""
    for keyword in ("PixelAspectRatio",) + SPACINGS:
        pair = numbers(attributes.get(keyword))
        if len(pair) == 2 and pair[0] > 0 and pair[1] > 0:
            return pair[0] / pair[1]
    return Fraction(1)


def aspect_of_area(area):
    for keyword in ("PresentationPixelSpacing", "PresentationPixelAspectRatio"):
        pair = numbers(area.get(keyword))
        if len(pair) == 2:
            return pair[0] / pair[1]
    return Fraction(1)


def rounded(value):
    return math.floor(Fraction(value) + Fraction(1, 2))


def weights(length, start, extent, count, nearest):
    """One row for each of `count` pixels: what it takes of `length` pixels along an axis.

    The pixels show the stretch from `start`, `extent` long, in pixels of the image. One that lies
    outside the image takes nothing.
    """
    result = np.zeros((count, length))
    step = Fraction(extent) / count
    for i in range(count):
        begin = start + i * step
        centre = begin + step / 2
        if step > 1:
            for k in range(max(0, math.floor(begin)), min(length, math.ceil(begin + step))):
                result[i, k] = (min(begin + step, k + 1) - max(begin, k)) / step
        elif 0 <= centre < length:
            place = min(max(centre - Fraction(1, 2), 0), length - 1)
            k = math.floor(centre) if nearest else math.floor(place)
            part = 0 if nearest else place - k
            result[i, k] += 1 - part
            if part:
                result[i, k + 1] += part
    return result


def scale(picture, rows, columns):
    """`rows` and `columns` are the weights of each axis."""
    if picture.ndim == 3:
        return np.stack([scale(picture[:, :, i], rows, columns) for i in range(3)], axis=2)
    return rows @ picture @ columns.T


def turn(picture, quarters, flip):
    """Quarter turns clockwise, then left and right are exchanged (PS3.3 C.10.6)."""
    turned = np.rot90(picture, -quarters)
    return turned[:, ::-1] if flip else turned


class Placement:
    """What part of the image is shown, at what size, before it is turned."""

    def __init__(self, left, top, width, height):
        self.left, self.top, self.width, self.height = left, top, width, height

    @staticmethod
    def whole(picture):
        return Placement(0, 0, picture.shape[1], picture.shape[0])

    @staticmethod
    def of_area(area):
        left, top = (int(value) for value in area.DisplayedAreaTopLeftHandCorner)
        right, bottom = (int(value) for value in area.DisplayedAreaBottomRightHandCorner)
        left, right, top, bottom = *sorted((left, right)), *sorted((top, bottom))
        return Placement(left - 1, top - 1, right - left + 1, bottom - top + 1)


def fitting_zoom(placement, aspect, quarters, view):
    """View pixels for one column, so that all of it is seen and fills the view."""
    width, height = Fraction(placement.width), placement.height * aspect
    if quarters % 2:
        width, height = height, width
    return min(view["width"] / width, view["height"] / height)


def show(picture, area, aspect, turns, view):
    """`turns` are pairs of quarter turns and whether a flip follows, one pair after the other."""
    quarters = sum(pair[0] for pair in turns)
    placement = Placement.of_area(area) if area is not None else Placement.whole(picture)
    zoom = fitting_zoom(placement, aspect, quarters, view)
    if area is not None and words(area.PresentationSizeMode) == ["MAGNIFY"]:
        zoom = Fraction(str(area.PresentationPixelMagnificationRatio))
    columns = max(1, rounded(placement.width * zoom))
    rows = max(1, rounded(placement.height * zoom * aspect))
    nearest = view.get("interpolation") == "nearest"
    scaled = scale(picture,
                   weights(picture.shape[0], placement.top, placement.height, rows, nearest),
                   weights(picture.shape[1], placement.left, placement.width, columns, nearest))
    for pair in turns:
        scaled = turn(scaled, *pair)
    return centred(scaled, view)


def centred(picture, view):
    """Black around what is smaller than the view."""
    result = np.zeros((view["height"], view["width"]) + picture.shape[2:])
    down, across = (view["height"] - picture.shape[0]), (view["width"] - picture.shape[1])
    if down < 0 or across < 0:
        raise ValueError("larger than the view")
    result[down // 2:down // 2 + picture.shape[0],
           across // 2:across // 2 + picture.shape[1]] = picture
    return result
