"""Attributes of a frame, wherever the object keeps them (DICOM PS3.3 C.7.6.16)."""
from fractions import Fraction

FRAME_MACROS = ("PixelValueTransformationSequence", "FrameVOILUTSequence", "PixelMeasuresSequence",
                "FramePixelShiftSequence")


def exact(value):
    """A number as its decimal string says, not as binary floating point holds it."""
    if value is None or value == "":
        return None
    text = getattr(value, "original_string", None) or str(value)
    return Fraction(str(text).strip())


def values(element):
    """An attribute's values as a list, empty where it has none."""
    if element is None or (isinstance(element, str) and not element):
        return []
    if isinstance(element, (str, bytes)) or not hasattr(element, "__iter__"):
        return [element]
    return list(element)


def words(element):
    return [str(value).strip().upper() for value in values(element)]


def numbers(element):
    return [exact(value) for value in values(element)]


class FrameAttributes:
    """Asks the frame's own functional groups first, then the shared ones, then the top level."""

    def __init__(self, dataset, frame):
        self.places = []
        per_frame = dataset.get("PerFrameFunctionalGroupsSequence") or []
        shared = dataset.get("SharedFunctionalGroupsSequence") or []
        for groups in ([per_frame[frame]] if frame < len(per_frame) else []) + list(shared):
            for macro in FRAME_MACROS:
                self.places += list(groups.get(macro) or [])
        self.places.append(dataset)

    def get(self, keyword, default=None):
        for place in self.places:
            value = place.get(keyword)
            if value is not None and value != "":
                return value
        return default
