"""Displayed areas, sizes and scaling."""
import numpy as np

from . import objects as make
from .casebook import SCALED
from .patterns import count, letter, line_pairs, mesh, ramp
from .scaled import scaled, spots_of

AREA = "PS3.3 C.10.4"
TURN = "PS3.3 C.10.6"


AREA_PIXELS = count(32, 40) * 255 // 1279
INNER = (11, 5, 30, 20)


def at(row, column):
    return str(AREA_PIXELS[row - 1, column - 1])


def mean(row, column, rows, columns):
    part = AREA_PIXELS[row - 1:row - 1 + rows, column - 1:column - 1 + columns].reshape(-1)
    return "(" + "+".join(map(str, part)) + f")/{len(part)}"


def adder_of_areas(book):
    made = make.image("areas", AREA_PIXELS)

    def add(name, reason, corners, size, tolerance=None, turn=0, flip=False, sums=(), **more):
        state = make.state(made, areas=[make.area(made, corners, **more)], ImageRotation=turn,
                           ImageHorizontalFlip="NY"[flip])
        extra = {"tolerance": tolerance, "tolerance_reason": SCALED} if tolerance else {}
        book.add(f"area/{name}", made, reason, AREA + ("; " + TURN if turn or flip else ""),
                 state=state, width=size[0], height=size[1], sums=sums, **extra)
    return add


def add_areas(book):
    case = adder_of_areas(book)
    # The second pixel of row 5 at twice its size: a quarter of the next column and row.
    quarters = "+".join(f"{share}*{at(row, column)}" for share, row, column in (
        (0.5625, 5, 11), (0.1875, 5, 12), (0.1875, 6, 11), (0.0625, 6, 12)))
    case("fit", "SCALE TO FIT: a part, corners inclusive and counted from 1", INNER, (20, 16),
         sums=[(0, 0, at(5, 11)), (15, 19, at(20, 30))])
    case("fit_double", "SCALE TO FIT: a part at twice its size", INNER, (40, 32), 1,
         sums=[(1, 1, quarters)])
    case("fit_half", "SCALE TO FIT: the whole image at half its size", (1, 1, 40, 32),
         (20, 16), 1, sums=[(2, 3, mean(5, 7, 2, 2))])
    case("one_pixel", "SCALE TO FIT: a single pixel fills the view",
         (7, 9, 7, 9), (1, 1), sums=[(0, 0, at(9, 7))])
    case("beyond_top_left", "corners at 0 and below: what lies outside the image is black",
         (-3, -1, 16, 14), (20, 16), sums=[(0, 0, "0"), (2, 4, at(1, 1)), (1, 4, "0"),
                                           (15, 19, at(14, 16))])
    case("beyond_bottom_right", "corners beyond the last row and column",
         (31, 25, 50, 40), (20, 16), sums=[(0, 0, at(25, 31)), (7, 9, at(32, 40)),
                                           (8, 9, "0"), (7, 10, "0")])
    case("beyond_all", "an area larger than the image on all sides", (-9, -7, 50, 40),
         (60, 48), sums=[(8, 10, at(1, 1)), (39, 49, at(32, 40)), (7, 10, "0")])
    case("magnify", "MAGNIFY by 2", INNER, (40, 32), 1, mode="MAGNIFY",
         sums=[(1, 1, quarters)], PresentationPixelMagnificationRatio=2.0)
    case("magnify_1", "MAGNIFY by 1", INNER, (20, 16), mode="MAGNIFY",
         PresentationPixelMagnificationRatio=1.0,
         sums=[(0, 0, at(5, 11)), (15, 19, at(20, 30))])
    case("magnify_half", "MAGNIFY by 0.5", (1, 1, 40, 32), (20, 16), 1, mode="MAGNIFY",
         sums=[(2, 3, mean(5, 7, 2, 2))], PresentationPixelMagnificationRatio=0.5)


def add_turned_areas(book):
    case = adder_of_areas(book)
    case("turned_90", "turned: the corners are those that come to lie at the upper left and "
         "lower right", (11, 20, 30, 5), (16, 20), turn=90,
         sums=[(0, 0, at(20, 11)), (19, 15, at(5, 30))])
    case("turned_180", "turned by 180 degrees", (30, 20, 11, 5), (20, 16), turn=180,
         sums=[(0, 0, at(20, 30)), (15, 19, at(5, 11))])
    case("turned_270", "turned by 270 degrees", (30, 5, 11, 20), (16, 20), turn=270,
         sums=[(0, 0, at(5, 30)), (19, 15, at(20, 11))])
    case("flipped", "flipped", (30, 5, 11, 20), (20, 16), flip=True,
         sums=[(0, 0, at(5, 30)), (15, 19, at(20, 11))])
    case("turned_flipped", "turned by 90 degrees, then flipped", INNER, (16, 20), turn=90,
         flip=True, sums=[(0, 0, at(5, 11)), (19, 15, at(20, 30))])
    case("turned_beyond", "turned, with corners beyond the image", (-3, 14, 16, -1), (16, 20),
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
    for add in (add_areas, add_turned_areas, add_sizes, add_shrinking, add_enlarging):
        add(book)
