#!/usr/bin/env python3
"""Makes what the Python package knows of the C interface out of its header.

Usage: make_python_declarations.py [--check]

Writes python/quorvex/_declarations.py; --check says whether it is the one of the header, by its exit status.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
HEADER = ROOT / "include/quorvex/quorvex.h"
MADE = ROOT / "python/quorvex/_declarations.py"


def declarations(text):
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.S)
    text = re.sub(r"//.*", "", text)
    text = re.sub(r"#ifdef __cplusplus.*?#endif", "", text, flags=re.S)
    text = re.sub(r"^#.*$", "", text, flags=re.M)
    text = text.replace("QUORVEX_API ", "")
    lines = [line.rstrip() for line in text.splitlines()]
    return "\n".join(line for line in lines if line)


def main():
    made = ('"""The C interface as cffi reads it: made by scripts/make_python_declarations.py."""\n\n'
            f'DECLARATIONS = """\\\n{declarations(HEADER.read_text())}\n"""\n')
    if sys.argv[1:] == ["--check"]:
        if MADE.read_text() == made:
            return 0
        print(f"{MADE.relative_to(ROOT)} is not of the present header", file=sys.stderr)
        return 1
    MADE.write_text(made)
    return 0


if __name__ == "__main__":
    sys.exit(main())
