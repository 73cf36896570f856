"""Overlays and shutters, in pixels of the image (PS3.3 C.9.2, C.7.6.11, C.7.6.15, C.11.7)."""
import numpy as np

from .attributes import values, words
from .samples import unused_bits

GROUPS = range(0x6000, 0x6020, 2)


def overlay_bits(source, group, image, frame):
    """The bits of an overlay's plane and where its upper left pixel lies, from 0; or None."""
    def get(element, default=None):
        found = source.get((group, element))
        return default if found is None else found.value

    rows, columns = get(0x0010), get(0x0011)
    if rows is None:
        return None
    top, left = (int(value) - 1 for value in get(0x0050))
    count, first = int(get(0x0015, 1)), int(get(0x0051, 1))
    index = frame - (first - 1) if get(0x0015) is not None else 0
    if not 0 <= index < count:
        return None
    if get(0x3000) is None:
        return unused_bits(image, frame) >> get(0x0102) & 1, top, left
    bits = np.unpackbits(np.frombuffer(get(0x3000), np.uint8), bitorder="little")
    size = rows * columns
    return bits[index * size:(index + 1) * size].reshape(rows, columns), top, left


def mask_of(plane, shape):
    """Where the plane's bits are set in the image; what lies outside it is left out."""
    bits, top, left = plane
    mask = np.zeros(shape[:2], bool)
    for row, column in zip(*np.nonzero(bits)):
        if 0 <= row + top < shape[0] and 0 <= column + left < shape[1]:
            mask[row + top, column + left] = True
    return mask


def draw_own_overlays(picture, image, frame):
    for group in GROUPS:
        plane = overlay_bits(image, group, image, frame)
        if plane:
            picture[mask_of(plane, picture.shape)] = 255


def draw_state_overlays(picture, image, state, frame):
    """Those that the state activates, by its graphic layers from the lowest order up."""
    layers = sorted(state.get("GraphicLayerSequence") or [], key=lambda one: one.GraphicLayerOrder)
    for layer in layers:
        grey = layer.get("GraphicLayerRecommendedDisplayGrayscaleValue", 65535)
        for group in GROUPS:
            active = state.get((group, 0x1001))
            if active is None or active.value != layer.GraphicLayer:
                continue
            source = state if (group, 0x0010) in state else image
            plane = overlay_bits(source, group, image, frame)
            if plane:
                picture[mask_of(plane, picture.shape)] = grey * 255 / 65535


def in_polygon(row, column, vertices):
    """Inside or on an edge."""
    inside = False
    for (r1, c1), (r2, c2) in zip(vertices, vertices[1:] + vertices[:1]):
        cross = (c2 - c1) * (row - r1) - (r2 - r1) * (column - c1)
        if cross == 0 and min(r1, r2) <= row <= max(r1, r2) and (
                min(c1, c2) <= column <= max(c1, c2)):
            return True
        if (r1 > row) != (r2 > row) and column < c1 + (row - r1) * (c2 - c1) / (r2 - r1):
            inside = not inside
    return inside


def is_open(shape, source, row, column):
    """Whether a shape leaves a pixel open. Rows and columns count from 1."""
    if shape == "RECTANGULAR":
        return (source.ShutterUpperHorizontalEdge <= row <= source.ShutterLowerHorizontalEdge and
                source.ShutterLeftVerticalEdge <= column <= source.ShutterRightVerticalEdge)
    if shape == "CIRCULAR":
        centre_row, centre_column = (int(value) for value in source.CenterOfCircularShutter)
        return ((row - centre_row) ** 2 + (column - centre_column) ** 2 <=
                int(source.RadiusOfCircularShutter) ** 2)
    if shape == "POLYGONAL":
        flat = [int(value) for value in values(source.VerticesOfThePolygonalShutter)]
        return in_polygon(row, column, list(zip(flat[::2], flat[1::2])))
    return True


def shut(picture, source, image, frame):
    shapes = words(source.get("ShutterShape"))
    if not shapes:
        return
    hidden = np.zeros(picture.shape[:2], bool)
    for row in range(picture.shape[0]):
        for column in range(picture.shape[1]):
            hidden[row, column] = not all(
                is_open(shape, source, row + 1, column + 1) for shape in shapes)
    if "BITMAP" in shapes:
        hidden |= mask_of(overlay_bits(source, source.ShutterOverlayGroup, image, frame),
                          picture.shape)
    picture[hidden] = source.get("ShutterPresentationValue", 0) * 255 / 65535
