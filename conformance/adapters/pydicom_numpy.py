#!/usr/bin/python3
"""Draws a case as a short script with pydicom and numpy does, by what pydicom offers."""
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))

import numpy as np  # noqa: E402  (after the path is set)
import pydicom  # noqa: E402
from adapters import options as given  # noqa: E402
from pydicom.pixel_data_handlers import util  # noqa: E402
from suite import png  # noqa: E402


def frame_of(array, image, number):
    return array[number] if int(image.get("NumberOfFrames", 1)) > 1 else array


def window(image, values, options):
    if options.centre:
        image.WindowCenter, image.WindowWidth = options.centre, options.width
        image.VOILUTFunction = {"exact": "LINEAR_EXACT", "sigmoid": "SIGMOID"}.get(
            options.function, "LINEAR")
        return util.apply_windowing(values, image)
    tables = len(image.get("VOILUTSequence") or [])
    chosen = (options.voi or 1) - 1
    if chosen < tables:
        return util.apply_voi(values, image, chosen)
    return util.apply_windowing(values, image, chosen - tables)


def output_range(image, values, options):
    """What `window` gives at least and at most."""
    tables = image.get("VOILUTSequence") or []
    if tables and not options.centre and (options.voi or 1) <= len(tables):
        return 0, (1 << int(tables[(options.voi or 1) - 1].LUTDescriptor[2])) - 1
    lowest, highest = (0, (1 << image.BitsStored) - 1)
    if image.PixelRepresentation:
        lowest, highest = -(1 << (image.BitsStored - 1)), (1 << (image.BitsStored - 1)) - 1
    if image.get("ModalityLUTSequence"):
        return 0, (1 << int(image.ModalityLUTSequence[0].LUTDescriptor[2])) - 1
    slope, intercept = image.get("RescaleSlope", 1), image.get("RescaleIntercept", 0)
    return sorted((lowest * slope + intercept, highest * slope + intercept))


def grey(image, options):
    values = util.apply_modality_lut(frame_of(image.pixel_array, image, options.frame), image)
    has_voi = options.centre or image.get("VOILUTSequence") or (
        image.get("WindowCenter") not in (None, ""))
    if has_voi:
        values = window(image, values, options)
    if has_voi or image.BitsStored <= 8:
        low, high = output_range(image, values, options)
    else:
        low, high = values.min(), values.max()
    levels = (values.astype(float) - low) * 255 / max(high - low, 1e-9)
    white_first = image.PhotometricInterpretation == "MONOCHROME1"
    return 255 - levels if white_first != options.invert else levels


def colour(image, options):
    photometric = image.PhotometricInterpretation
    pixels = frame_of(image.pixel_array, image, options.frame)
    if photometric == "PALETTE COLOR":
        entries = util.apply_color_lut(pixels, image)
        return entries * (255 / (65535 if entries.dtype == np.uint16 else 255))
    if photometric.startswith("YBR"):
        return util.convert_color_space(pixels, photometric, "RGB")
    return pixels * (255 / ((1 << image.BitsStored) - 1))


def main(options):
    if options.state or options.shutter:
        given.cannot("pydicom knows neither presentation states nor shutters")
    image = pydicom.dcmread(options.input)
    if options.size != (image.Columns, image.Rows) or options.rotate or options.flip:
        given.cannot("pydicom neither scales nor turns")
    is_colour = image.SamplesPerPixel > 1 or image.PhotometricInterpretation == "PALETTE COLOR"
    picture = np.array(colour(image, options) if is_colour else grey(image, options), float)
    if options.overlays:
        bits = image.overlay_array(0x6000)
        if bits.shape != picture.shape[:2]:
            given.cannot("pydicom does not place overlays")
        picture[bits > 0] = 255
    png.write(options.output, np.clip(np.round(picture), 0, 255).astype(np.uint8))


if __name__ == "__main__":
    main(given.read())
