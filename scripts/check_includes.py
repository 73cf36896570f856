#!/usr/bin/env python3
"""The include rule: a room includes only rooms on lower floors, and nothing but foundation/ knows another library.

Usage: check_includes.py   (from the project's folder; one line for each include that breaks the rule)
"""
import pathlib
import re
import sys

# Lowest first; rooms of one floor do not know each other. Every room sees the public headers.
FLOORS = [
    ["quorvex"],
    ["foundation/types"],
    ["foundation/platform", "foundation/raster", "foundation/engines", "foundation/dicom"],
    ["codec", "presentation"],
    ["windowing"],
    ["parser", "render"],
    ["maker"],
    ["pipeline", "states"],
    ["c"],
]
FLOOR = {room: floor for floor, rooms in enumerate(FLOORS) for room in rooms}
# A room of their own: what the standard library has no folder for.
STANDARD = re.compile(r"^[a-z_]+$")
# The one header that is C.
OF_C = {"stddef.h", "stdint.h"}
# The command is a host like any other, with its own field's libraries.
OF_TOOLS = re.compile(r"^(CLI/|openssl/|png\.h|[a-z_]+$|[a-z]+\.h$|sys/)")


def room_of(path):
    parts = path.split("/")
    if parts[0] == "include":
        return "quorvex"
    return "/".join(parts[:2]) if parts[0] == "foundation" else parts[0]


def allows(room, quoted, name):
    if room == "tools":
        return name.startswith(("quorvex/", "tools/")) if quoted else bool(OF_TOOLS.match(name))
    if not quoted:
        return room.startswith("foundation/") or bool(STANDARD.match(name))
    if "/" not in name:
        return False
    other = room_of(name)
    return other == room or FLOOR.get(other, len(FLOORS)) < FLOOR[room]


def main():
    rooms = sorted({room.split("/")[0] for room in FLOOR} - {"quorvex"}) + ["include", "tools"]
    broken = 0
    for top in rooms:
        for path in sorted(pathlib.Path(top).rglob("*")):
            if path.suffix not in (".h", ".cpp", ".inc"):
                continue
            for number, line in enumerate(path.read_text().splitlines(), 1):
                found = re.match(r'\s*#\s*include\s+([<"])([^>"]+)[>"]', line)
                if found and str(path) == "include/quorvex/quorvex.h" and found[2] in OF_C:
                    continue
                if found and not allows(room_of(str(path)), found[1] == '"', found[2]):
                    print(f"{path}:{number}: {room_of(str(path))} may not include {found[2]}")
                    broken += 1
    return 1 if broken else 0


if __name__ == "__main__":
    sys.exit(main())
