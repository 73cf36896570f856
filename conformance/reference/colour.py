"""Colour samples and palettes to R, G, B of 0 .. 255, not rounded."""
import numpy as np

from .attributes import words

YBR_FULL = ((1, 0, 1.402), (1, -0.114 * 1.772 / 0.587, -0.299 * 1.402 / 0.587), (1, 1.772, 0))


def from_ybr_full(samples, top):
    """PS3.3 C.7.6.3.1.2, solved for R, G and B; what lies outside is clamped."""
    y, cb, cr = (samples[:, :, i].astype(float) for i in range(3))
    middle = (top + 1) / 2
    parts = [a * y + b * (cb - middle) + c * (cr - middle) for a, b, c in YBR_FULL]
    return np.clip(np.stack(parts, axis=2), 0, top)


def from_ybr_partial(samples):
    """The same with 219 steps of Y from 16 and 224 of Cb and Cr about 128, of 8 bits."""
    y = (samples[:, :, 0].astype(float) - 16) * 255 / 219
    cb, cr = ((samples[:, :, i].astype(float) - 128) * 255 / 224 for i in (1, 2))
    return np.clip(np.stack([a * y + b * cb + c * cr for a, b, c in YBR_FULL], axis=2), 0, 255)


def true_colour(image, stored):
    top = (1 << image.BitsStored) - 1
    photometric = words(image.PhotometricInterpretation)[0]
    if photometric.startswith("YBR_PARTIAL"):
        return from_ybr_partial(stored)
    if photometric.startswith("YBR_FULL"):
        return from_ybr_full(stored, top) * 255 / top
    if photometric == "RGB":
        return stored.astype(float) * 255 / top
    raise ValueError(f"photometric interpretation {photometric}")


def expand_segments(data):
    """PS3.3 C.7.9.2: discrete, linear and indirect segments."""
    result, at = [], 0

    def discrete(start):
        result.extend(data[start + 2:start + 2 + data[start + 1]])
        return start + 2 + data[start + 1]

    def linear(start):
        count, end = data[start + 1], data[start + 2]
        begin = result[-1]
        result.extend(begin + (end - begin) * (i + 1) / count for i in range(count))
        return start + 3

    def indirect(start):
        target = (data[start + 2] | data[start + 3] << 16) // 2  # a byte offset
        for _ in range(data[start + 1]):
            target = (discrete, linear)[data[target]](target)
        return start + 4

    while at < len(data):
        at = (discrete, linear, indirect)[data[at]](at)
    return result


def palette_entries(image, colour, count, bits):
    segmented = image.get(f"Segmented{colour}PaletteColorLookupTableData")
    raw = segmented if segmented else image.get(f"{colour}PaletteColorLookupTableData")
    stored = [int(word) for word in np.frombuffer(raw, "<u2")]
    if bits == 8 and (segmented or len(stored) == (count + 1) // 2):
        stored = [part for word in stored for part in (word & 255, word >> 8)]
    return (expand_segments(stored) if segmented else stored)[:count]


def palette_of(image, colour):
    """First value mapped and entries of 0 .. 255 (PS3.3 C.7.6.3.1.5 and C.7.6.3.1.6)."""
    descriptor = image.get(f"{colour}PaletteColorLookupTableDescriptor")
    count, first, bits = (int(value) for value in descriptor)
    count = count & 0xFFFF or 65536
    if image.PixelRepresentation == 1 and first >= 32768:
        first -= 65536
    entries = palette_entries(image, colour, count, bits)
    return first, np.array(entries, float) * 255 / ((1 << bits) - 1)


def through_palette(image, stored):
    result = np.zeros(stored.shape + (3,))
    for i, colour in enumerate(("Red", "Green", "Blue")):
        first, entries = palette_of(image, colour)
        result[:, :, i] = entries[np.clip(stored - first, 0, len(entries) - 1)]
    return result


def with_supplement(image, stored, grey):
    """PS3.3 C.7.6.19: stored values below the palette's first one stay grey."""
    first = palette_of(image, "Red")[0]
    result = np.repeat(grey[:, :, None], 3, axis=2)
    coloured = stored >= first
    result[coloured] = through_palette(image, stored)[coloured]
    return result
