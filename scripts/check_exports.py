#!/usr/bin/env python3
"""Holds the list of exported symbols (cmake/exports.map) against what the code declares with QUORVEX_API.

Usage: check_exports.py BUILD [--write]

BUILD is a build folder of GCC with its objects. A symbol that is declared and not listed would be missing in
the library; one that is listed and not there any more breaks hosts that were built against it. Either is a
line and exit status 1; --write makes the list anew instead.
"""
import pathlib
import re
import subprocess
import sys

LIST = pathlib.Path("cmake/exports.map")
HEAD = """# Every symbol of libQuorvexU that a host may use; all else stays inside. Kept by scripts/check_exports.py.
QUORVEXU_{abi} {{
    global:
"""
HEAD_OF_CPP = """        extern "C++" {
"""
TAIL = """        };
    local:
        *;
};
"""


def declared(build):
    """Demangled names of the visible symbols of our namespace that the objects define."""
    objects = sorted(map(str, pathlib.Path(build, "CMakeFiles/quorvex_objects.dir").rglob("*.o")))
    if not objects:
        sys.exit(f"check_exports.py: no objects in {build}")
    table = subprocess.run(["readelf", "-sW", *objects], check=True, capture_output=True, text=True).stdout
    mangled = set()
    for line in table.splitlines():
        field = line.split()
        if len(field) < 8 or field[5] != "DEFAULT" or field[6] == "UND" or field[4] == "LOCAL":
            continue
        if field[3] in ("FUNC", "OBJECT"):
            mangled.add(field[7])
    names = subprocess.run(["c++filt"], input="\n".join(sorted(mangled)), check=True, capture_output=True,
                           text=True).stdout.split("\n")
    ours = re.compile(r"^((vtable|typeinfo|typeinfo name) for )?quorvex::|^quorvex_\w+$")
    return {name for name in names if ours.match(name)}


def listed():
    if not LIST.exists():
        return set()
    text = LIST.read_text()
    return set(re.findall(r'"([^+"][^"]*)";', text)) | set(re.findall(r"^ +(quorvex_\w+);", text, re.M))


def main():
    wanted = declared(sys.argv[1])
    if "--write" in sys.argv[2:]:
        abi = re.search(r"set\(QUORVEX_ABI (\d+)\)", pathlib.Path("CMakeLists.txt").read_text())[1]
        of_c = "".join(f"        {name};\n" for name in sorted(wanted) if "::" not in name)
        of_cpp = "".join(f'            "{name}";\n' for name in sorted(wanted) if "::" in name)
        LIST.write_text(HEAD.format(abi=abi) + of_c + HEAD_OF_CPP + of_cpp + TAIL)
        return 0
    there = listed()
    for name in sorted(wanted - there):
        print(f"not listed in {LIST}: {name}")
    for name in sorted(there - wanted):
        print(f"listed in {LIST} and not in the code: {name}")
    return 1 if wanted != there else 0


if __name__ == "__main__":
    sys.exit(main())
