"""From stored values to grey levels of 0 (black) to 255 (white), by exact fractions.

Modality (PS3.3 C.11.1), values of interest (C.11.2), presentation (C.11.6, C.11.4; PS3.4 N.2).
"""
import math
from fractions import Fraction

import numpy as np

from .attributes import exact, numbers, values, words
from .samples import stored_range


class Table:
    """A look-up table of a sequence's item (PS3.3 C.11.1.1, C.11.2.1.1)."""

    def __init__(self, item, input_is_signed):
        count, first, self.bits = (int(value) for value in item.LUTDescriptor)
        count = count & 0xFFFF or 65536
        if input_is_signed and first >= 32768:
            first -= 65536
        self.first = first
        self.entries = table_entries(item["LUTData"].value, count, self.bits)
        self.highest = (1 << self.bits) - 1

    def at(self, value):
        index = min(max(int(value) - self.first, 0), len(self.entries) - 1)
        return self.entries[index]


def table_entries(data, count, bits):
    """Entries of 8 bits lie one in a word or two in a word, the first in the lower byte."""
    if isinstance(data, (bytes, bytearray)):
        data = np.frombuffer(data[:len(data) // 2 * 2], "<u2")
    stored = [int(value) & 0xFFFF for value in values(data)]
    if bits <= 8 and len(stored) == (count + 1) // 2 and count > 1:
        stored = [part for word in stored for part in (word & 255, word >> 8)]
    return stored[:count]


class Modality:
    def __init__(self, attributes, image):
        sequence = attributes.get("ModalityLUTSequence")
        self.table = Table(sequence[0], image.PixelRepresentation == 1) if sequence else None
        slope = exact(attributes.get("RescaleSlope"))
        self.slope = Fraction(1) if slope is None else slope
        self.intercept = exact(attributes.get("RescaleIntercept")) or Fraction(0)

    def __call__(self, stored):
        if self.table:
            return Fraction(self.table.at(stored))
        return self.slope * int(stored) + self.intercept

    def whole_range(self, image):
        """What can come out, whatever the pixels are."""
        if self.table:
            return Fraction(0), Fraction(self.table.highest)
        return tuple(sorted(self(value) for value in stored_range(image)))


def linear(centre, width):
    """PS3.3 C.11.2.1.2.1"""
    def level(x):
        if x <= centre - Fraction(1, 2) - (width - 1) / 2:
            return Fraction(0)
        if x > centre - Fraction(1, 2) + (width - 1) / 2:
            return Fraction(1)
        return (x - (centre - Fraction(1, 2))) / (width - 1) + Fraction(1, 2)
    return level


def linear_exact(centre, width):
    """PS3.3 C.11.2.1.3.2"""
    def level(x):
        if x <= centre - width / 2:
            return Fraction(0)
        if x > centre + width / 2:
            return Fraction(1)
        return (x - centre) / width + Fraction(1, 2)
    return level


def sigmoid(centre, width):
    """PS3.3 C.11.2.1.3.1"""
    def level(x):
        return 1 / (1 + math.exp(min(700.0, float(-4 * (x - centre) / width))))
    return level


WINDOWS = {"LINEAR": linear, "LINEAR_EXACT": linear_exact, "SIGMOID": sigmoid}
ASKED = {"linear": "LINEAR", "exact": "LINEAR_EXACT", "sigmoid": "SIGMOID"}


def stretch(low, high):
    """All that lies between two values, over the whole grey scale."""
    def level(x):
        return min(max((x - low) / (high - low), 0), 1) if high > low else Fraction(0)
    return level


def by_table(table):
    return lambda x: Fraction(min(table.at(math.floor(x + Fraction(1, 2))), table.highest),
                              table.highest)


def voi_choices(attributes, input_is_signed):
    """Tables first, then windows."""
    choices = [by_table(Table(item, input_is_signed))
               for item in attributes.get("VOILUTSequence") or []]
    function = WINDOWS[(words(attributes.get("VOILUTFunction")) or ["LINEAR"])[0]]
    for centre, width in zip(numbers(attributes.get("WindowCenter")),
                             numbers(attributes.get("WindowWidth"))):
        choices.append(function(centre, width))
    return choices


def is_padding(image):
    """Which stored values are no part of the image (PS3.3 C.7.5.1.1.2)."""
    value = image.get("PixelPaddingValue")
    if value is None:
        return lambda stored: False
    limit = image.get("PixelPaddingRangeLimit")
    low, high = sorted((value, value if limit is None else limit))
    return lambda stored: low <= stored <= high


def range_of_frame(image, modality, stored):
    padding = is_padding(image)
    seen = [modality(value) for value in np.unique(stored) if not padding(value)]
    return (min(seen), max(seen)) if seen else (Fraction(0), Fraction(0))


def default_level(image, modality, stored):
    """Neither window nor table: all that 8 bits hold, or what a deeper frame spans."""
    if image.BitsStored <= 8:
        return stretch(*modality.whole_range(image))
    return stretch(*range_of_frame(image, modality, stored))


def user_window(view):
    centre, width = view["window"]
    function = WINDOWS[ASKED[view.get("function", "linear")]]
    return function(Fraction(str(centre)), Fraction(str(width)))


def image_levels(image, attributes, stored, view):
    """What an image shows by itself: a function from stored values to 0 .. 1."""
    modality = Modality(attributes, image)
    choices = voi_choices(attributes, modality.whole_range(image)[0] < 0)
    if "window" in view:
        voi = user_window(view)
    elif choices:
        voi = choices[view.get("voi", 1) - 1]
    else:
        voi = default_level(image, modality, stored)
    inverse = words(image.PhotometricInterpretation)[0] == "MONOCHROME1"
    return lambda value: (1 - voi(modality(value))) if inverse else voi(modality(value))


def state_presentation(state):
    sequence = state.get("PresentationLUTSequence")
    if sequence:
        table = Table(sequence[0], False)
        last = len(table.entries) - 1
        return lambda y: Fraction(table.entries[math.floor(y * last + Fraction(1, 2))],
                                  table.highest)
    if words(state.get("PresentationLUTShape")) == ["INVERSE"]:
        return lambda y: 1 - y
    return lambda y: y


def state_levels(image, state, voi_item, view):
    """PS3.4 N.2: the state's stages alone; what it leaves out is an identity."""
    modality = Modality(state, image)
    whole = modality.whole_range(image)
    if "window" in view:
        voi = user_window(view)
    else:
        choices = voi_choices(voi_item, whole[0] < 0) if voi_item is not None else []
        voi = choices[0] if choices else stretch(*whole)
    presentation = state_presentation(state)
    return lambda value: presentation(voi(modality(value)))


def paint(stored, level, invert):
    """Grey levels of 0 .. 255, not rounded."""
    distinct, where = np.unique(stored, return_inverse=True)
    levels = [float(255 * level(int(value))) for value in distinct]
    grey = np.array(levels)[where].reshape(stored.shape)
    return 255 - grey if invert else grey
