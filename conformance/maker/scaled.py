"""Cases whose pixels are scaled, with the arithmetic behind some of them."""
import numpy as np

from .casebook import SCALED


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
