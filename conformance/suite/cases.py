"""The cases as they lie on disk."""
import json
from pathlib import Path

from . import png


class Case:
    def __init__(self, place, name):
        self.place, self.name = place, name
        self.__dict__.update(json.loads((place / "case.json").read_text()))
        self.image_path = place / self.image
        self.state_path = place / "state.dcm" if "state" in self.needs else None

    @property
    def area(self):
        return self.name.split("/")[0]

    def expected_picture(self):
        return png.read(self.place / self.expected)

    def values(self):
        """What the placeholders of a tool's command stand for."""
        known = {"input": str(self.image_path), "state": str(self.state_path or "")}
        known.update((key, as_text(value)) for key, value in self.view.items())
        known.setdefault("frame", "0")
        known["frame_from_1"] = str(int(known["frame"]) + 1)
        if "window" in self.view:
            known["centre"], known["window_width"] = (as_text(v) for v in self.view["window"])
        return known


def as_text(value):
    if isinstance(value, bool):
        return ""
    return ",".join(map(str, value)) if isinstance(value, list) else str(value)


def load(folder, pattern=""):
    folder = Path(folder)
    found = sorted(folder.glob("*/*/case.json"))
    names = [(path.parent, path.parent.relative_to(folder).as_posix()) for path in found]
    return [Case(place, name) for place, name in names if pattern in name]
