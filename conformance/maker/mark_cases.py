"""Overlays and shutters, of images and of presentation states."""
import numpy as np
from pydicom.sequence import Sequence

from . import objects as make
from .patterns import count, letter

OVERLAY = "PS3.3 C.9.2"
ACTIVATION = "PS3.3 C.11.7, C.10.7"
SHUTTER = "PS3.3 C.7.6.11"
BITMAP = "PS3.3 C.7.6.15"


def grey():
    """Neither black nor white, so that every mark is seen."""
    return count() // 2 + 40


def add_own_overlays(book):
    def add(name, reason, bits, sums, **more):
        made = make.image("overlay " + name, grey())
        make.add_overlay(made, bits, **more)
        book.add(f"overlay/{name}", made, reason, OVERLAY, overlays=True, sums=sums)

    f = letter()
    add("own", "an overlay at 1\\1", f, [(1, 1, "255"), (0, 0, "40"), (1, 6, "255")])
    add("placed", "an overlay at row 5, column 3", f, [(5, 3, "255"), (1, 1, "17//2+40")],
        origin=(5, 3))
    add("beyond_top_left", "partly outside: clipped", f, [(0, 0, "255"), (0, 6, "6//2+40")],
        origin=(0, 0))
    add("far_top_left", "an origin below 0", np.ones((8, 8)), [(0, 0, "255"), (4, 2, "255"),
                                                              (5, 0, "80//2+40")], origin=(-2, -4))
    add("beyond_bottom_right", "partly outside below and to the right", np.ones((8, 8)),
        [(15, 15, "255"), (11, 15, "191//2+40")], origin=(13, 11))
    larger = np.zeros((20, 24))
    larger[3, :], larger[:, 15] = 1, 1
    add("larger", "larger than the image: clipped", larger, [(3, 0, "255"), (15, 15, "255"),
                                                             (4, 0, "64//2+40")])
    add("larger_around", "larger than the image on all sides", np.ones((20, 20)),
        [(0, 0, "255"), (15, 15, "255")], origin=(-1, -1))
    add("outside", "wholly outside: nothing is drawn", f, [(0, 0, "40"), (15, 15, "255//2+40")],
        origin=(40, 40))
    add("odd_size", "rows of the overlay that end inside a byte", letter(7, 5),
        [(1, 1, "255"), (5, 1, "255"), (6, 1, "97//2+40")])
    add("group_601e", "the last of the sixteen groups", f, [(1, 1, "255")], group=0x601E)
    add_other_overlays(book)
    add_overlay_frames(book)


def add_other_overlays(book):
    f = letter()
    two = make.image("overlay two", grey())
    make.add_overlay(two, f)
    make.add_overlay(two, f[::-1], origin=(9, 9), group=0x6002)
    book.add("overlay/two", two, "two overlays", OVERLAY, overlays=True,
             sums=[(1, 1, "255"), (14, 9, "255")])
    book.add("overlay/not_asked", two, "overlays are there and not asked for", OVERLAY,
             sums=[(1, 1, "17//2+40")])
    embedded = make.image("overlay embedded", count(step=16), 16, 12, WindowCenter="2048",
                          WindowWidth="4096")
    make.embed_overlay(embedded, np.kron(letter(), np.ones((2, 2), int)), 12)
    book.add("overlay/embedded", embedded, "an overlay in bit 12 of the pixels (retired)", OVERLAY,
             overlays=True, sums=[(2, 2, "255"), (0, 1, "((16-2047.5)/4095+0.5)*255")])
    book.add("overlay/embedded_ignored", embedded, "bits above Bits Stored are no part of a value",
             "PS3.3 C.7.6.3.1", sums=[(2, 2, "((34*16-2047.5)/4095+0.5)*255")])
    colour = make.image("overlay colour", np.stack([grey(), grey()[::-1], grey()], axis=2),
                        photometric="RGB")
    make.add_overlay(colour, f)
    book.add("overlay/colour", colour, "a white overlay over a colour image", OVERLAY,
             overlays=True, sums=[(1, 1, "255")])
    dark = make.image("overlay mono1", grey(), photometric="MONOCHROME1")
    make.add_overlay(dark, f)
    book.add("overlay/mono1", dark, "the overlay stays white where the image is inverted", OVERLAY,
             overlays=True, sums=[(1, 1, "255"), (0, 0, "255-40")])


def add_overlay_frames(book):
    planes = np.stack([letter(), letter()[::-1], letter().T])
    made = make.image("overlay frames", np.stack([grey()] * 3), frames=3)
    make.add_overlay(made, planes, frames=3)
    late = make.image("overlay from frame 2", np.stack([grey()] * 3), frames=3)
    make.add_overlay(late, planes[:2], frames=2, first_frame=2)
    for frame, spot in ((0, (1, 6)), (1, (6, 6)), (2, (6, 1))):
        book.add(f"overlay/frame_{frame + 1}", made, "each frame has its own plane", OVERLAY,
                 overlays=True, frame=frame, sums=[(*spot, "255")])
    for frame, level in ((0, "17//2+40"), (1, "255")):
        book.add(f"overlay/from_frame_2_on_{frame + 1}", late,
                 "planes from the second frame of the image on", OVERLAY, overlays=True,
                 frame=frame, sums=[(1, 1, level)])


def add_state_overlays(book):
    def add(name, reason, build, layers, sums):
        made = make.image("state overlay " + name, grey())
        state = make.state(made, GraphicLayerSequence=Sequence(layers))
        build(made, state)
        book.add(f"overlay/state_{name}", made, reason, ACTIVATION, state=state, overlays=True,
                 sums=sums)

    f = letter()
    add("own", "an overlay of the state, with its layer's grey",
        lambda image, state: make.add_overlay(state, f, layer="ONE"),
        [make.layer("ONE", 1, 32896)], [(1, 1, "32896*255/65535"), (0, 0, "40")])
    add("white", "a white layer", lambda image, state: make.add_overlay(state, f, layer="ONE"),
        [make.layer("ONE", 1, 65535)], [(1, 1, "255")])

    def activate(image, state):
        make.add_overlay(image, f)
        state.add_new((0x6000, 0x1001), "CS", "ONE")
    add("activated", "an overlay of the image that the state activates", activate,
        [make.layer("ONE", 1, 65535)], [(1, 1, "255")])
    add("not_activated", "an overlay of the image that the state does not activate is not shown",
        lambda image, state: make.add_overlay(image, f), [make.layer("ONE", 1, 65535)],
        [(1, 1, "17//2+40")])

    def both(image, state):
        make.add_overlay(state, f, layer="ABOVE")
        make.add_overlay(state, np.ones((8, 8)), group=0x6002, layer="BELOW")
    add("order", "layers are drawn from the lowest order up", both,
        [make.layer("ABOVE", 2, 65535), make.layer("BELOW", 1, 8224)],
        [(1, 1, "255"), (0, 0, "8224*255/65535")])


def shutter(**attributes):
    return dict({"ShutterPresentationValue": 0}, **attributes)


RECTANGLE = {"ShutterLeftVerticalEdge": 3, "ShutterRightVerticalEdge": 12,
             "ShutterUpperHorizontalEdge": 5, "ShutterLowerHorizontalEdge": 14}
WHOLE = {"ShutterLeftVerticalEdge": 1, "ShutterRightVerticalEdge": 16,
         "ShutterUpperHorizontalEdge": 1, "ShutterLowerHorizontalEdge": 16}
CIRCLE = {"CenterOfCircularShutter": [7, 9], "RadiusOfCircularShutter": 5}
SQUARE = {"VerticesOfThePolygonalShutter": [3, 4, 3, 13, 12, 13, 12, 4]}
DIAMOND = {"VerticesOfThePolygonalShutter": [2, 8, 8, 14, 14, 8, 8, 2]}
NOTCHED = {"VerticesOfThePolygonalShutter": [2, 2, 2, 15, 15, 15, 8, 8, 15, 2]}

# Name, shapes, attributes, open spots, hidden spots; rows and columns from 1.
SHUTTERS = (
    ("rectangle", "RECTANGULAR", RECTANGLE, ((5, 3), (14, 12)),
     ((4, 3), (5, 2), (15, 12), (14, 13)),
     "edges are inclusive and counted from 1"),
    ("whole", "RECTANGULAR", WHOLE, ((1, 1), (16, 16), (1, 16), (16, 1)), (),
     "a rectangle over the whole image hides nothing"),
    ("one_pixel", "RECTANGULAR", {key: 8 for key in RECTANGLE}, ((8, 8),), ((8, 9), (7, 8)),
     "a rectangle of one pixel"),
    ("circle", "CIRCULAR", CIRCLE, ((7, 14), (2, 9), (10, 13)), ((7, 15), (1, 9), (11, 13)),
     "the centre is given by row and column; what lies at the radius is open"),
    ("circle_off", "CIRCULAR", {"CenterOfCircularShutter": [1, 1], "RadiusOfCircularShutter": 6},
     ((1, 7), (1, 1)), ((1, 8), (6, 6)), "a circle about the corner"),
    ("square", "POLYGONAL", SQUARE, ((3, 4), (12, 13), (8, 8)), ((2, 4), (12, 14), (13, 13)),
     "a polygon's edges are open"),
    ("diamond", "POLYGONAL", DIAMOND, ((2, 8), (5, 5), (8, 14)), ((2, 7), (4, 5), (8, 15)),
     "slanted edges"),
    ("notched", "POLYGONAL", NOTCHED, ((8, 8), (2, 2), (15, 15)), ((9, 8), (15, 8), (1, 2)),
     "a polygon with a notch"),
    ("rectangle_circle", ["RECTANGULAR", "CIRCULAR"], {**RECTANGLE, **CIRCLE},
     ((7, 12), (5, 9)), ((7, 13), (4, 9), (14, 12)), "two shapes: open where both are"),
    ("three", ["RECTANGULAR", "CIRCULAR", "POLYGONAL"], {**RECTANGLE, **CIRCLE, **SQUARE},
     ((7, 12), (5, 9)), ((7, 13), (4, 9), (13, 9)), "three shapes"),
)


def add_shutters(book):
    for name, shapes, attributes, opened, hidden, reason in SHUTTERS:
        made = make.image("shutter " + name, grey(), ShutterShape=shapes, **shutter(**attributes))
        sums = [(row - 1, column - 1, f"{(row - 1) * 16 + column - 1}//2+40")
                for row, column in opened] + [(row - 1, column - 1, "0") for row, column in hidden]
        book.add(f"shutter/{name}", made, reason, SHUTTER, shutter=True, sums=sums)
    made = make.image("shutter value", grey(), ShutterShape="RECTANGULAR",
                      **shutter(**RECTANGLE, ShutterPresentationValue=32896))
    book.add("shutter/value", made, "the level of what is hidden", SHUTTER, shutter=True,
             sums=[(0, 0, "32896*255/65535"), (4, 2, "66//2+40")])
    book.add("shutter/not_asked", made, "a shutter is there and not asked for", SHUTTER,
             sums=[(0, 0, "40")])
    inverse = make.image("shutter mono1", grey(), photometric="MONOCHROME1",
                         ShutterShape="RECTANGULAR", **shutter(**RECTANGLE))
    book.add("shutter/mono1", inverse, "what is hidden is a P-value: black stays black", SHUTTER,
             shutter=True, sums=[(0, 0, "0"), (4, 2, "255-(66//2+40)")])
    add_state_shutters(book)


def add_state_shutters(book):
    made = make.image("shutter of state", grey())
    for name, more in (("rectangle", shutter(ShutterShape="RECTANGULAR", **RECTANGLE)),
                       ("circle", shutter(ShutterShape="CIRCULAR", **CIRCLE)),
                       ("white", shutter(ShutterShape="RECTANGULAR", **RECTANGLE,
                                         ShutterPresentationValue=65535))):
        level = "255" if name == "white" else "0"
        book.add(f"shutter/state_{name}", made, "a state's shutter", SHUTTER, shutter=True,
                 state=make.state(made, **more), sums=[(0, 0, level), (6, 6, "102//2+40")])
    inverse = make.state(made, shape="INVERSE", **shutter(
        ShutterShape="RECTANGULAR", **RECTANGLE, ShutterPresentationValue=65535))
    book.add("shutter/state_inverse", made, "an inverse state does not invert its shutter",
             SHUTTER, shutter=True, state=inverse,
             sums=[(0, 0, "255"), (6, 6, "255-(102//2+40)")])
    own = make.image("shutter of image under a state", grey(), ShutterShape="RECTANGULAR",
                     **shutter(**RECTANGLE))
    book.add("shutter/state_without", own, "a state without shutter shows all of the image, "
             "whatever shutter the image has", "PS3.4 N.2", shutter=True, state=make.state(own),
             sums=[(0, 0, "40"), (15, 15, "255//2+40")])
    mask = 1 - np.kron(letter(), np.ones((2, 2), int))
    for name, value, bits, origin in (("bitmap", 0, mask, (1, 1)),
                                      ("bitmap_grey", 16448, mask[:9, :9], (4, 6))):
        state = make.state(made, ShutterShape="BITMAP", ShutterOverlayGroup=0x6000,
                           ShutterPresentationValue=value)
        make.add_overlay(state, bits, origin=origin)
        row, column = origin
        book.add(f"shutter/state_{name}", made, "a bitmap: what is set is hidden", BITMAP,
                 shutter=True, state=state,
                 sums=[(row - 1, column - 1, f"{value}*255/65535"),
                       (row + 1, column + 1, f"{(row + 1) * 16 + column + 1}//2+40")])


def add_turned_marks(book):
    made = make.image("marks turned", grey(), ShutterShape="RECTANGULAR", **shutter(**RECTANGLE))
    make.add_overlay(made, letter(), origin=(6, 4))
    book.add("overlay/turned", made, "an overlay turns and flips with its image", OVERLAY,
             overlays=True, rotate=90, flip=True, sums=[(0, 4, "64//2+40"), (4, 6, "255")])
    book.add("shutter/turned", made, "a shutter turns with its image", SHUTTER, shutter=True,
             rotate=90, sums=[(2, 11, "66//2+40"), (1, 11, "0"), (2, 12, "0")])
    book.add("shutter/overlay_within", made, "an image's overlay and its shutter together",
             OVERLAY + ", C.7.6.11", shutter=True, overlays=True,
             sums=[(0, 0, "0"), (6, 4, "255"), (4, 2, "66//2+40")])
    plain = make.image("state marks turned", grey())
    state = make.state(plain, ImageRotation=90, ImageHorizontalFlip="N", **shutter(
        ShutterShape="RECTANGULAR", **RECTANGLE))
    book.add("shutter/state_turned", plain, "a state's shutter is one of the image as stored",
             SHUTTER, shutter=True, state=state, sums=[(2, 11, "66//2+40"), (1, 11, "0")])


def add_cases(book):
    add_own_overlays(book)
    add_state_overlays(book)
    add_shutters(book)
    add_turned_marks(book)
