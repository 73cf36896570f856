"""Takes cases, works out what they expect, and writes them."""
import json
import math
import shutil
from pathlib import Path

import numpy as np
from reference import picture
from suite import png

ROUNDED = "levels that are no whole numbers may be rounded either way"
SCALED = "samples between pixels, and a renderer may round ahead of scaling"


class Casebook:
    def __init__(self, folder, agreed):
        self.folder, self.agreed, self.names = Path(folder), agreed, []

    def clear(self):
        shutil.rmtree(self.folder, ignore_errors=True)

    def add(self, name, image, reason, standard, state=None, sums=(), tolerance=None,
            tolerance_reason=None, default_view=None, **view):
        """`sums`: (row, column, "arithmetic") or (row, column, [three of them]) by hand."""
        assert name not in self.names, name
        self.names.append(name)
        place = self.folder / name
        place.mkdir(parents=True)
        image.save_as(place / "image.dcm", write_like_original=False)
        if state is not None:
            state.save_as(place / "state.dcm", write_like_original=False)
        asked = dict(view)
        if default_view:
            view["width"], view["height"] = default_view
        view.setdefault("width", int(image.Columns))
        view.setdefault("height", int(image.Rows))
        exact = picture.draw(place / "image.dcm", place / "state.dcm" if state else None, view)
        expected = picture.finish(exact)
        png.write(place / "expected.png", expected)
        fraction = float(np.abs(exact - np.round(exact)).max())
        if tolerance is None:
            tolerance = int(fraction > 1e-9)
            tolerance_reason = ROUNDED if tolerance else None
        case = {
            "reason": reason, "standard": standard, "image": "image.dcm",
            "state": "state.dcm" if state is not None else None, "view": view,
            "needs": needs(asked, default_view, state), "expected": "expected.png",
            "tolerance": tolerance, "tolerance_reason": tolerance_reason,
            "ends_exact": ends_are_exact(exact, expected),
            "second_way": self.agreed.get(name),
            "by_hand": [by_hand(name, expected, *one) for one in sums],
        }
        if not case["second_way"] and not sums:
            print(f"{name}: nothing but the reference says so")
        text = json.dumps({key: value for key, value in case.items() if value is not None},
                          indent=1)
        (place / "case.json").write_text(text + "\n")


def needs(asked, default_view, state):
    """What a tool must be able to be asked, beside drawing a file at its own size."""
    wanted = [key for key in asked if key != "frame" or asked["frame"]]
    wanted += ["default_view"] if default_view else []
    return sorted(wanted + (["state"] if state is not None else []))


def ends_are_exact(exact, expected):
    """Whether black and white come out by no rounding, so that a tool must hit them."""
    ends = (expected == 0) | (expected == 255)
    return bool(ends.any() and (np.abs(exact - expected)[ends] < 1e-9).all())


def by_hand(name, expected, row, column, sums):
    """Works out what stands in the case file and holds the expected picture against it."""
    sums = [sums] if isinstance(sums, str) else list(sums)
    results = [eval(one, {"__builtins__": {}}, {"exp": math.exp, "min": min, "max": max})
               for one in sums]
    levels = [math.floor(result + 0.5 + 1e-9) for result in results]
    found = [int(value) for value in np.atleast_1d(expected[row, column])]
    if found != levels and found != levels * 3:
        raise SystemExit(f"{name}: pixel {row},{column} is {found}, by hand {levels}")
    return {"row": row, "column": column, "sum": sums if len(sums) > 1 else sums[0],
            "level": levels if len(levels) > 1 else levels[0]}
