"""The picture that an image, perhaps with a presentation state, shows in a view."""
import numpy as np
import pydicom

from . import colour, geometry, grey, marks
from .attributes import FrameAttributes, values, words
from .samples import stored_values


def refers_to(item, image, frame):
    """Whether an item means this frame: it lists it, or lists nothing."""
    references = item.get("ReferencedImageSequence") or []
    for reference in references:
        if reference.ReferencedSOPInstanceUID == image.SOPInstanceUID:
            frames = [int(value) for value in values(reference.get("ReferencedFrameNumber"))]
            if not frames or frame + 1 in frames:
                return True
    return not references


def item_for(sequence, image, frame):
    return next((item for item in sequence or [] if refers_to(item, image, frame)), None)


def applies(state, image, frame):
    return any(refers_to(series, image, frame) for series in state.ReferencedSeriesSequence)


def unmarked(image, state, frame, view):
    """The pixels as grey levels or R, G, B of 0 .. 255."""
    attributes = FrameAttributes(image, frame)
    stored = stored_values(image, frame)
    photometric = words(image.PhotometricInterpretation)[0]
    if photometric == "PALETTE COLOR":
        return colour.through_palette(image, stored)
    if image.SamplesPerPixel == 3:
        return colour.true_colour(image, stored)
    if state is not None:
        item = item_for(state.get("SoftcopyVOILUTSequence"), image, frame)
        level = grey.state_levels(image, state, item, view)
    else:
        level = grey.image_levels(image, attributes, stored, view)
    picture = grey.paint(stored, level, bool(view.get("invert")))
    if words(image.get("PixelPresentation")) == ["COLOR"]:
        return colour.with_supplement(image, stored, picture)
    return picture


def with_marks(picture, image, state, frame, view):
    if view.get("overlays") and state is not None:
        marks.draw_state_overlays(picture, image, state, frame)
    elif view.get("overlays"):
        marks.draw_own_overlays(picture, image, frame)
    if view.get("shutter"):
        marks.shut(picture, state if state is not None else image, image, frame)
    return picture


def draw(image_path, state_path, view):
    """Rows x columns, or rows x columns x 3, of 0 .. 255, not rounded."""
    image = pydicom.dcmread(image_path)
    frame = view.get("frame", 0)
    state = pydicom.dcmread(state_path) if state_path else None
    if state is not None and not applies(state, image, frame):
        state = None
    picture = with_marks(unmarked(image, state, frame, view), image, state, frame, view)
    aspect, area, turns = geometry.aspect_of(FrameAttributes(image, frame)), None, []
    if state is not None:
        area = item_for(state.get("DisplayedAreaSelectionSequence"), image, frame)
        turns.append((int(state.get("ImageRotation", 0)) // 90,
                      words(state.get("ImageHorizontalFlip")) == ["Y"]))
    if area is not None:
        aspect = geometry.aspect_of_area(area)
    turns.append((view.get("rotate", 0) // 90, bool(view.get("flip"))))
    return geometry.show(picture, area, aspect, turns, view)


def finish(picture):
    """Whole levels, halves upward."""
    return np.floor(np.clip(picture, 0, 255) + 0.5 + 1e-9).astype(np.uint8)
