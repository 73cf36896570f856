"""A tool's picture beside the expected one."""
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import numpy as np

from .tools import CannotBeAsked, ToolFailed

RIGHT, WRONG, FAILED, NOT_ASKED = "right", "WRONG", "FAILED", "not asked"


class Result:
    def __init__(self, case, verdict, words="", picture=None):
        self.case, self.verdict, self.words, self.picture = case, verdict, words, picture


def judge(case, picture, expected):
    if picture.shape != expected.shape:
        return Result(case, WRONG, f"{picture.shape[1]} x {picture.shape[0]} instead of "
                      f"{expected.shape[1]} x {expected.shape[0]}", picture)
    apart = np.abs(picture.astype(int) - expected)
    off = apart > case.tolerance
    if case.ends_exact:
        off |= ((expected == 0) | (expected == 255)) & (apart > 0)
    if not off.any():
        return Result(case, RIGHT, f"largest difference {apart.max()}", picture)
    pixels = off.any(axis=2)
    row, column = (int(index) for index in np.argwhere(pixels)[0])
    return Result(case, WRONG, f"{pixels.sum()} of {pixels.size} pixels, by up to {apart.max()}; "
                  f"row {row} column {column} is {levels(picture[row, column])} instead of "
                  f"{levels(expected[row, column])}", picture)


def levels(pixel):
    parts = [str(int(value)) for value in pixel]
    return parts[0] if len(set(parts)) == 1 else ",".join(parts)


def try_one(tool, case):
    with tempfile.TemporaryDirectory() as folder:
        try:
            picture = tool.draw(case, Path(folder) / "picture.png")
        except CannotBeAsked as why:
            return Result(case, NOT_ASKED, str(why))
        except ToolFailed as why:
            return Result(case, FAILED, str(why))
    return judge(case, picture, case.expected_picture())


def try_all(tool, cases, jobs):
    with ThreadPoolExecutor(jobs) as workers:
        return list(workers.map(lambda case: try_one(tool, case), cases))


def by_area(results):
    """Area, and how many of each verdict."""
    areas = {}
    for result in results:
        counts = areas.setdefault(result.case.area, dict.fromkeys(
            (RIGHT, WRONG, FAILED, NOT_ASKED), 0))
        counts[result.verdict] += 1
    return areas
