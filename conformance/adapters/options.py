"""The options that the adapters share."""
import argparse
import sys

CANNOT = 77


def read():
    parser = argparse.ArgumentParser()
    parser.add_argument("input")
    parser.add_argument("output")
    parser.add_argument("--size", required=True)
    parser.add_argument("--frame", type=int, default=0)
    parser.add_argument("--centre")
    parser.add_argument("--width")
    for word in ("state", "function", "interpolation"):
        parser.add_argument("--" + word)
    parser.add_argument("--voi", type=int)
    parser.add_argument("--rotate", type=int, default=0)
    for word in ("flip", "invert", "overlays", "shutter"):
        parser.add_argument("--" + word, action="store_true")
    options = parser.parse_args()
    options.size = tuple(int(part) for part in options.size.split("x"))
    return options


def cannot(words):
    print(words, file=sys.stderr)
    sys.exit(CANNOT)
