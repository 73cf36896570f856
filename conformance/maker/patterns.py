"""Pixels that the cases are made of."""
import numpy as np


def count(rows=16, columns=16, start=0, step=1):
    """start, start + step ... row by row."""
    return start + step * np.arange(rows * columns).reshape(rows, columns)


def ramp(rows, columns):
    """0 .. 255 from left to right, darker by a half further down, so that a turn is seen."""
    line = np.arange(columns) * 255 // max(1, columns - 1)
    return (line[None, :] * (2 * rows - np.arange(rows)[:, None]) // (2 * rows)).astype(int)


def corners(rows=16, columns=16):
    """Four quarters of different levels with one bright and one dark corner."""
    made = np.full((rows, columns), 40)
    made[:rows // 2, columns // 2:] = 100
    made[rows // 2:, :columns // 2] = 160
    made[rows // 2:, columns // 2:] = 220
    made[0, 0], made[-1, -1] = 255, 0
    return made


def disc(rows, columns, row_spacing, column_spacing):
    """What is a circle where pixels are as tall and wide as given."""
    y = (np.arange(rows) + 0.5 - rows / 2)[:, None] * row_spacing
    x = (np.arange(columns) + 0.5 - columns / 2)[None, :] * column_spacing
    radius = 0.4 * min(rows * row_spacing, columns * column_spacing)
    return np.where(x * x + y * y <= radius * radius, 220, 30)


def letter(rows=8, columns=8):
    """An F, which no turn and no flip leaves alike."""
    made = np.zeros((rows, columns), int)
    made[1:rows - 1, 1] = made[1, 1:columns - 1] = made[rows // 2, 1:columns - 3] = 1
    return made


def mesh(rows, columns, low, high):
    y, x = np.mgrid[:rows, :columns]
    return np.where((x + y) % 2, high, low)


def line_pairs(rows, columns, low, high):
    return np.where(np.arange(columns)[None, :] % 2, high, low).repeat(rows, axis=0)
