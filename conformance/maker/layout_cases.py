"""Pixel shapes, turns, displayed areas, sizes and scaling."""
import numpy as np
from pydicom.sequence import Sequence

from . import objects as make
from .casebook import SCALED
from .patterns import corners, count, disc, letter, line_pairs, mesh, ramp

ASPECT = "PS3.3 C.7.6.3.1.7, C.10.7"
AREA = "PS3.3 C.10.4"
TURN = "PS3.3 C.10.6"


def axis_terms(at, length, count):
    """The pixels that one of `count` pixels along an axis takes of `length`, with their shares."""
    factor = count / length
    if count < length:
        step = length // count
        return [(at * step + i, f"1/{step}") for i in range(step)]
    place = min(max((at + 0.5) / factor - 0.5, 0), length - 1)
    first = int(place)
    share = round(place - first, 6)
    return [(first, f"{1 - share:g}")] + ([(first + 1, f"{share:g}")] if share else [])


def scaled_sum(pixels, row, column, size):
    """The arithmetic behind a pixel of an image that is scaled to width and height."""
    terms = [(pixels[r, c], down, across)
             for r, down in axis_terms(row, pixels.shape[0], size[1])
             for c, across in axis_terms(column, pixels.shape[1], size[0])]

    def one(levels):
        return "+".join(f"{down}*{across}*{level}" for level, (_, down, across) in
                        zip(levels, terms))
    if pixels.ndim == 2:
        return one([level for level, _, _ in terms])
    return tuple(one([level[i] for level, _, _ in terms]) for i in range(3))


def spots_of(pixels, size, quarters=0, flip=False):
    """By hand: a corner, and pixels beside the steepest rows and columns; after the turn."""
    rows, columns = size[1], size[0]
    plain = pixels.reshape(pixels.shape[0], pixels.shape[1], -1)[:, :, 0].astype(int)
    steep = np.abs(np.diff(plain, axis=0))[:, :-1] + np.abs(np.diff(plain, axis=1))[:-1]
    at = np.unravel_index(steep.argmax(), steep.shape)
    middle = ((at[0] + 1) * rows // plain.shape[0], (at[1] + 1) * columns // plain.shape[1])
    found = []
    for row, column in ((0, 0), middle, (middle[0] - 1, max(0, middle[1] - 1))):
        turned = {0: (row, column), 1: (column, rows - 1 - row),
                  2: (rows - 1 - row, columns - 1 - column), 3: (columns - 1 - column, row)}
        down, across = turned[quarters]
        if flip:
            across = (columns if quarters % 2 == 0 else rows) - 1 - across
        found.append((int(down), int(across), scaled_sum(pixels, row, column, size)))
    return found


def scaled(book, name, made, reason, standard, size, tolerance=1, **more):
    book.add(name, made, reason, standard, tolerance=tolerance, tolerance_reason=SCALED,
             width=size[0], height=size[1], **more)


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


def add_areas(book):
    pixels = count(32, 40) * 255 // 1279
    made = make.image("areas", pixels)

    def area_case(name, reason, corners_, size, tolerance=None, turn=0, flip=False, sums=(),
                  **more):
        state = make.state(made, areas=[make.area(made, corners_, **more)], ImageRotation=turn,
                           ImageHorizontalFlip="NY"[flip])
        extra = {"tolerance": tolerance, "tolerance_reason": SCALED} if tolerance else {}
        book.add(f"area/{name}", made, reason, AREA + ("; " + TURN if turn or flip else ""),
                 state=state, width=size[0], height=size[1], sums=sums, **extra)

    def at(row, column):
        return str(pixels[row - 1, column - 1])

    def mean(row, column, rows, columns):
        part = pixels[row - 1:row - 1 + rows, column - 1:column - 1 + columns].reshape(-1)
        return "(" + "+".join(map(str, part)) + f")/{len(part)}"

    # The second pixel of row 5 at twice its size: a quarter of the next column and row.
    quarters = "+".join(f"{share}*{at(row, column)}" for share, row, column in (
        (0.5625, 5, 11), (0.1875, 5, 12), (0.1875, 6, 11), (0.0625, 6, 12)))

    inner = (11, 5, 30, 20)
    area_case("fit", "SCALE TO FIT: a part, corners inclusive and counted from 1", inner, (20, 16),
              sums=[(0, 0, at(5, 11)), (15, 19, at(20, 30))])
    area_case("fit_double", "SCALE TO FIT: a part at twice its size", inner, (40, 32), 1,
              sums=[(1, 1, quarters)])
    area_case("fit_half", "SCALE TO FIT: the whole image at half its size", (1, 1, 40, 32),
              (20, 16), 1, sums=[(2, 3, mean(5, 7, 2, 2))])
    area_case("one_pixel", "SCALE TO FIT: a single pixel fills the view",
              (7, 9, 7, 9), (1, 1), sums=[(0, 0, at(9, 7))])
    area_case("beyond_top_left", "corners at 0 and below: what lies outside the image is black",
              (-3, -1, 16, 14), (20, 16), sums=[(0, 0, "0"), (2, 4, at(1, 1)), (1, 4, "0"),
                                                (15, 19, at(14, 16))])
    area_case("beyond_bottom_right", "corners beyond the last row and column",
              (31, 25, 50, 40), (20, 16), sums=[(0, 0, at(25, 31)), (7, 9, at(32, 40)),
                                                (8, 9, "0"), (7, 10, "0")])
    area_case("beyond_all", "an area larger than the image on all sides", (-9, -7, 50, 40),
              (60, 48), sums=[(8, 10, at(1, 1)), (39, 49, at(32, 40)), (7, 10, "0")])
    area_case("magnify", "MAGNIFY by 2", inner, (40, 32), 1, mode="MAGNIFY",
              sums=[(1, 1, quarters)], PresentationPixelMagnificationRatio=2.0)
    area_case("magnify_1", "MAGNIFY by 1", inner, (20, 16), mode="MAGNIFY",
              PresentationPixelMagnificationRatio=1.0,
              sums=[(0, 0, at(5, 11)), (15, 19, at(20, 30))])
    area_case("magnify_half", "MAGNIFY by 0.5", (1, 1, 40, 32), (20, 16), 1, mode="MAGNIFY",
              sums=[(2, 3, mean(5, 7, 2, 2))], PresentationPixelMagnificationRatio=0.5)
    area_case("turned_90", "turned: the corners are those that come to lie at the upper left and "
              "lower right", (11, 20, 30, 5), (16, 20), turn=90,
              sums=[(0, 0, at(20, 11)), (19, 15, at(5, 30))])
    area_case("turned_180", "turned by 180 degrees", (30, 20, 11, 5), (20, 16), turn=180,
              sums=[(0, 0, at(20, 30)), (15, 19, at(5, 11))])
    area_case("turned_270", "turned by 270 degrees", (30, 5, 11, 20), (16, 20), turn=270,
              sums=[(0, 0, at(5, 30)), (19, 15, at(20, 11))])
    area_case("flipped", "flipped", (30, 5, 11, 20), (20, 16), flip=True,
              sums=[(0, 0, at(5, 30)), (15, 19, at(20, 11))])
    area_case("turned_flipped", "turned by 90 degrees, then flipped", inner, (16, 20), turn=90,
              flip=True, sums=[(0, 0, at(5, 11)), (19, 15, at(20, 30))])
    area_case("turned_beyond", "turned, with corners beyond the image", (-3, 14, 16, -1), (16, 20),
              turn=90, sums=[(4, 0, at(14, 1)), (0, 0, "0"), (4, 13, at(1, 1)), (4, 14, "0")])


def add_sizes(book):
    for columns in range(1, 8):
        made = make.image(f"columns {columns}", count(16, columns, step=2))
        book.add(f"size/columns_{columns}", made, "no column is lost or added",
                 "PS3.3 C.7.6.3", sums=[(15, columns - 1, str((16 * columns - 1) * 2)),
                                        (1, 0, str(columns * 2))])
    colour = count(8, 5, step=6)[:, :, None] + np.array([0, 5, 10])
    book.add("size/colour_columns_5", make.image("colour 5", colour, photometric="RGB"),
             "five columns of colour", "PS3.3 C.7.6.3", sums=[(7, 4, ("234", "239", "244"))])
    deep = make.image("deep 3", count(16, 3, step=5), 16, 12, WindowCenter="128",
                      WindowWidth="256")
    book.add("size/deep_columns_3", deep, "three columns of 16 bits", "PS3.3 C.7.6.3",
             sums=[(15, 2, "47*5")])
    one = make.image("one pixel", np.array([[200]]))
    book.add("size/one_pixel", one, "an image of one pixel", "PS3.3 C.7.6.3", sums=[(0, 0, "200")])


def add_shrinking(book):
    why = "PS3.3 C.10.4 leaves scaling open; see docs/display-suite.md"

    def shrink(name, pixels, reason, size, sums=(), tolerance=1, **more):
        made = make.image("shrink " + name, pixels, **more)
        scaled(book, f"shrink/{name}", made, reason, why, size, tolerance, sums=sums)

    even = [(0, 0, "(0+255)/2"), (7, 7, "(0+255)/2")]
    shrink("mesh", mesh(64, 64, 0, 255), "a mesh becomes an even grey", (32, 32), even)
    shrink("mesh_4", mesh(64, 64, 0, 255), "a mesh at a quarter", (16, 16), even)
    shrink("mesh_8", mesh(128, 128, 40, 200), "a mesh at an eighth", (16, 16), [(3, 3, "120")])
    shrink("lines", line_pairs(64, 64, 0, 255), "line pairs become an even grey", (32, 32), even)
    shrink("lines_across", line_pairs(64, 64, 0, 255).T, "line pairs that run across", (32, 32),
           even)
    shrink("third", count(48, 48) % 97, "by three: nine pixels each", (16, 16),
           [(0, 0, "((0+1+2)+(48+49+50)+(96+0+1))/9")])
    shrink("two_thirds", mesh(48, 48, 0, 255), "by one and a half: a pixel takes half of its "
           "neighbour", (32, 32), [(0, 0, "255*(0.5+0.5)/(1.5*1.5)")], 2)
    shrink("five_eighths", count(40, 40) % 211, "by 1.6: most pixels are shared by two",
           (25, 25), tolerance=2)
    shrink("windowed", mesh(64, 64, 0, 4000), "the average is one of display values: the mesh is "
           "half black and half white by its window, not the window's white", (32, 32), even,
           allocated=16, stored=12, WindowCenter="100", WindowWidth="200")
    shrink("mono1", mesh(64, 64, 0, 4000), "the same inverted", (32, 32), even, allocated=16,
           stored=12, WindowCenter="100", WindowWidth="200", photometric="MONOCHROME1")
    shrink("1_bit", mesh(64, 64, 0, 1), "1 bit becomes grey", (32, 32), even, allocated=1)
    colours = np.stack([mesh(64, 64, 0, 255), mesh(64, 64, 255, 0), mesh(64, 64, 100, 100)], 2)
    shrink("colour", colours, "a mesh of two colours", (32, 32), photometric="RGB",
           sums=[(4, 4, ("255/2", "255/2", "100"))])
    indices = make.image("shrink palette", mesh(64, 64, 1, 2), photometric="PALETTE COLOR")
    make.add_palette(indices, 0, 16, ([0, 65535, 0, 0], [0, 0, 0, 65535], [0, 0, 65535, 0]))
    scaled(book, "shrink/palette", indices, "colours are averaged, not indices", why, (32, 32),
           sums=[(4, 4, ("255/2", "0", "255/2"))])
    one_way = make.image("shrink one way", line_pairs(32, 64, 0, 255), PixelAspectRatio=[2, 1])
    scaled(book, "shrink/one_axis", one_way, "columns are averaged, rows stay", why, (32, 32),
           sums=even)


def add_enlarging(book):
    why = "PS3.3 C.10.4 leaves scaling open; see docs/display-suite.md"

    def enlarge(name, pixels, reason, size, sums=None, more=None, **view):
        if sums is None:
            upright = size[::-1] if view.get("rotate") else size
            sums = spots_of(pixels, upright, view.get("rotate", 0) // 90)
        made = make.image("enlarge " + name, pixels, **(more or {}))
        scaled(book, f"enlarge/{name}", made, reason, why, size, sums=sums, **view)

    step = np.array([[0, 200], [0, 200]]).repeat(8, 0).repeat(8, 1)
    pair = [(0, 15, "0.75*0+0.25*200"), (0, 16, "0.25*0+0.75*200"), (0, 14, "0"), (0, 17, "200")]
    enlarge("double", step, "twice: samples at a quarter and three quarters", (32, 32), pair)
    enlarge("triple", step, "three times: a pixel's centre keeps its value", (48, 48),
            [(0, 23, "200/3"), (0, 22, "0"), (0, 25, "200")])
    enlarge("quadruple_ramp", ramp(16, 16), "four times", (64, 64))
    enlarge("letter", letter(16, 16) * 255, "four times: fine strokes", (64, 64))
    enlarge("three_halves", ramp(16, 16), "by one and a half", (24, 24))
    enlarge("five_quarters", count() % 199, "by one and a quarter", (20, 20))
    enlarge("windowed", count(), "display values are interpolated, not stored ones", (32, 32),
            [(13, 1, "0.75*(0.75*((96-99.5)/19+0.5)+0.25*((97-99.5)/19+0.5))*255+0.25*255")],
            more={"WindowCenter": "100", "WindowWidth": "20"})
    enlarge("nearest", letter(16, 16) * 255, "nearest: each pixel is a square of 3 x 3", (48, 48),
            [(3, 3, "255"), (2, 2, "0"), (3, 6, "255")], interpolation="nearest")
    colour = np.stack([ramp(16, 16), ramp(16, 16)[::-1], ramp(16, 16).T], axis=2)
    enlarge("colour", colour, "colour at twice its size", (32, 32), more={"photometric": "RGB"})
    enlarge("turned", ramp(16, 24), "twice and turned", (32, 48), rotate=90)


def add_cases(book):
    for add in (add_aspects, add_turns, add_turns_of_both, add_areas, add_sizes, add_shrinking, add_enlarging):
        add(book)
