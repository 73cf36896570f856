"""Pixels that are not square, and turns."""
import numpy as np
from pydicom.sequence import Sequence

from . import objects as make
from .casebook import SCALED
from .patterns import count, disc, ramp
from .scaled import scaled, spots_of

ASPECT = "PS3.3 C.7.6.3.1.7, C.10.7"
AREA = "PS3.3 C.10.4"
TURN = "PS3.3 C.10.6"

# Name, attributes, height of 32 rows, what it is for.
SHAPES = (
    ("ratio", {"PixelAspectRatio": [2, 1]}, 64, "Pixel Aspect Ratio: twice as tall as wide"),
    ("ratio_flat", {"PixelAspectRatio": [1, 2]}, 16, "Pixel Aspect Ratio: half as tall as wide"),
    ("ratio_large", {"PixelAspectRatio": [1500, 1000]}, 48, "Pixel Aspect Ratio in large numbers"),
    ("spacing", {"PixelSpacing": ["1.0", "0.5"]}, 64, "Pixel Spacing: between rows, then columns"),
    ("imager", {"ImagerPixelSpacing": ["0.3", "0.2"]}, 48, "Imager Pixel Spacing"),
    ("nominal", {"NominalScannedPixelSpacing": ["0.2", "0.1"]}, 64,
     "Nominal Scanned Pixel Spacing"),
    ("spacing_first", {"PixelSpacing": ["1.0", "0.5"], "ImagerPixelSpacing": ["0.5", "0.5"]}, 64,
     "Pixel Spacing comes ahead of Imager Pixel Spacing"),
    ("fraction", {"PixelSpacing": ["0.703125", "0.5625"]}, 40, "a ratio of 1.25"),
)


def add_aspects(book):
    for name, attributes, height, reason in SHAPES:
        pixels = disc(32, 32, height / 32, 1)
        sums = spots_of(pixels, (32, height))
        made = make.image("aspect " + name, pixels, **attributes)
        scaled(book, f"aspect/{name}", made, reason + ": the disc is round", ASPECT, (32, height),
               sums=sums)
        book.add(f"aspect/default_{name}", made, reason + ": without a size asked for, as many "
                 "columns as stored and as many rows as make the disc round", ASPECT,
                 tolerance=1, tolerance_reason=SCALED, default_view=(32, height), sums=sums)
    add_turned_aspects(book)
    add_state_aspects(book)
    add_aspect_of_frames(book)


def add_turned_aspects(book):
    pixels = disc(16, 32, 2, 1)
    made = make.image("aspect turned", pixels, PixelSpacing=["2", "1"])
    for turn in (90, 180, 270):
        size = (32, 32)
        scaled(book, f"aspect/turned_{turn}", made, "a disc stays round when it is turned", ASPECT,
               size, rotate=turn, sums=spots_of(pixels, size, turn // 90))
    tall = make.image("aspect tall", ramp(8, 4), PixelAspectRatio=[2, 1])
    scaled(book, "aspect/tall_turned_90", tall, "8 rows of 4 tall pixels, turned: 16 x 4", ASPECT,
           (16, 4), rotate=90, sums=spots_of(ramp(8, 4), (4, 16), 1))
    scaled(book, "aspect/tall_turned_flipped", tall, "turned, then left and right exchanged",
           ASPECT, (16, 4), rotate=270, flip=True,
           sums=spots_of(ramp(8, 4), (4, 16), 3, True))
    colour = np.stack([disc(16, 16, 2, 1)] * 2 + [255 - disc(16, 16, 2, 1)], axis=2)
    scaled(book, "aspect/colour", make.image("aspect colour", colour, photometric="RGB",
                                             PixelAspectRatio=[2, 1]),
           "tall pixels of a colour image", ASPECT, (16, 32), sums=spots_of(colour, (16, 32)))


def add_state_aspects(book):
    pixels, tall = disc(32, 32, 2, 1), (32, 64)
    sums = spots_of(pixels, tall)
    own = make.image("aspect in state", pixels, PixelSpacing=["2", "1"])
    scaled(book, "aspect/state_without_area", own,
           "a state without displayed area leaves the image's own pixel shape", ASPECT, tall,
           state=make.state(own, areas=[]), sums=sums)
    made = make.image("aspect of area", pixels)
    scaled(book, "aspect/state_area", made, "the pixel shape of a state's displayed area", AREA,
           tall, state=make.state(made, areas=[make.area(made, aspect=(2, 1))]), sums=sums)
    scaled(book, "aspect/state_spacing", made, "the pixel spacing of a state's displayed area",
           AREA, tall, state=make.state(made, areas=[spaced_area(made, ["0.6", "0.3"])]),
           sums=sums)
    scaled(book, "aspect/state_area_turned", made, "the same with a quarter turn",
           AREA + "; " + TURN, (64, 32), sums=spots_of(pixels, tall, 1),
           state=make.state(made, areas=[make.area(made, (1, 32, 32, 1), aspect=(2, 1))],
                            ImageRotation=90, ImageHorizontalFlip="N"))


def add_aspect_of_frames(book):
    pixels = np.stack([disc(32, 32, 1, 1), disc(32, 32, 2, 1)])
    made = make.image("aspect of frames", pixels, frames=2, sop_class=make.ENHANCED_CT)
    made.SharedFunctionalGroupsSequence = Sequence([make.item()])
    made.PerFrameFunctionalGroupsSequence = Sequence([
        make.item(PixelMeasuresSequence=make.sequence(PixelSpacing=spacing))
        for spacing in (["1", "1"], ["2", "1"])])
    scaled(book, "aspect/of_frame_2", made, "Pixel Spacing of the frame's functional groups",
           ASPECT + ", C.7.6.16.2.1", (32, 64), frame=1, sums=spots_of(pixels[1], (32, 64)))


def spaced_area(made, spacing):
    one = make.area(made)
    del one.PresentationPixelAspectRatio
    one.PresentationPixelSpacing = spacing
    return one


def add_turns(book):
    pixels = count(12, 20)
    made = make.image("turns", pixels)
    for turn in (0, 90, 180, 270):
        for flip in (False, True):
            name = f"{turn}" + ("_flip" if flip else "")
            size = {"width": 12, "height": 20} if turn % 180 else {}
            after = {0: (0, 0), 90: (11, 0), 180: (11, 19), 270: (0, 19)}[turn]
            if flip:
                after = {0: (0, 19), 90: (0, 0), 180: (11, 0), 270: (11, 19)}[turn]
            first = [(0, 0, str(pixels[after]))]
            state = make.state(made, ImageRotation=turn, ImageHorizontalFlip="NY"[flip])
            if turn or flip:
                asked = dict(size, **({"rotate": turn} if turn else {}),
                             **({"flip": True} if flip else {}))
                book.add(f"turn/asked_{name}", made, "turned clockwise, then left and right "
                         "exchanged, as the user asks", TURN, sums=first, **asked)
            book.add(f"turn/state_{name}", made, "a state turns clockwise, then flips", TURN,
                     state=state, sums=first, **size)


def add_turns_of_both(book):
    pixels = count(12, 20)
    made = make.image("turns of both", pixels)
    for name, turn, flip, asked, size, first in (
            ("90_then_90", 90, False, {"rotate": 90}, (20, 12), (11, 19)),
            ("90_then_flip", 90, False, {"flip": True}, (12, 20), (0, 0)),
            ("flip_then_90", 0, True, {"rotate": 90}, (12, 20), (11, 19)),
            ("90_flip_then_90", 90, True, {"rotate": 90}, (20, 12), (0, 19)),
            ("270_flip_then_flip", 270, True, {"flip": True}, (12, 20), (0, 19))):
        state = make.state(made, ImageRotation=turn, ImageHorizontalFlip="NY"[flip])
        book.add(f"turn/both_{name}", made, "the user turns and flips what a state shows", TURN,
                 state=state, width=size[0], height=size[1],
                 sums=[(0, 0, str(pixels[first]))], **asked)


def add_cases(book):
    add_aspects(book)
    add_turns(book)
    add_turns_of_both(book)
