#!/usr/bin/python3
"""Draws a case by DCMTK: dcmp2pgm where there is a presentation state, dcmj2pnm otherwise.

The command chooses what DCMTK leaves to its user: the file's first VOI LUT, else its first window,
else the smallest and largest value where there are more than 8 bits.
"""
import subprocess
import sys
import tempfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))

import numpy as np  # noqa: E402  (after the path is set)
import pydicom  # noqa: E402
from adapters import options as given  # noqa: E402
from suite import png  # noqa: E402


def read_pgm(path):
    head, rest = [], path.read_bytes()
    while len(head) < 4:
        line, rest = rest.split(b"\n", 1)
        head += [] if line.startswith(b"#") else line.split()
    columns, rows = int(head[1]), int(head[2])
    return np.frombuffer(rest, np.uint8)[:rows * columns].reshape(rows, columns)


def call(command, folder=None):
    done = subprocess.run(command, capture_output=True, text=True, cwd=folder)
    if done.returncode:
        sys.exit(f"{command[0]}: {done.stderr.strip()[-200:]}")


def shows_whole_image(state, image):
    image = pydicom.dcmread(image, stop_before_pixels=True)
    areas = pydicom.dcmread(state).get("DisplayedAreaSelectionSequence") or []
    corners = [tuple(sorted((area.DisplayedAreaTopLeftHandCorner[i],
                             area.DisplayedAreaBottomRightHandCorner[i])))
               for area in areas for i in (0, 1)]
    return all(pair in ((1, image.Columns), (1, image.Rows)) for pair in corners)


def by_state(options):
    if options.centre or options.voi or options.rotate or options.flip or options.invert:
        given.cannot("dcmp2pgm shows a state as it is")
    state, image = (str(Path(path).resolve()) for path in (options.state, options.input))
    if not shows_whole_image(state, image):
        given.cannot("dcmp2pgm cuts no displayed area")
    bitmap = pydicom.dcmread(state).get("ShutterShape") == "BITMAP"
    if options.overlays or (options.shutter and not bitmap):
        given.cannot("dcmp2pgm draws no overlays, and no shutter but a bitmap")
    with tempfile.TemporaryDirectory() as folder:  # it writes overlays into files beside
        call(["dcmp2pgm", "-p", state, "-f", str(options.frame + 1), image, "picture.pgm"], folder)
        picture = read_pgm(Path(folder) / "picture.pgm")
    if picture.shape != (options.size[1], options.size[0]):
        given.cannot("dcmp2pgm does not scale")
    png.write(options.output, picture)


def window_options(options, image):
    tables = len(image.get("VOILUTSequence") or [])
    chosen = options.voi or 1
    if options.centre:
        return ["+Ww", options.centre, options.width]
    if image.SamplesPerPixel > 1 or "PALETTE" in image.PhotometricInterpretation.upper():
        return []
    if chosen <= tables:
        return ["+Wl", str(chosen)]
    if image.get("WindowCenter") not in (None, ""):
        return ["+Wi", str(chosen - tables)]
    return ["+Wm"] if image.BitsStored > 8 else []


def function_options(options):
    if options.function == "exact":
        given.cannot("DCMTK has no LINEAR_EXACT")
    return {"linear": ["+Wfl"], "sigmoid": ["+Wfs"], None: []}[options.function]


def turn_options(options):
    turned = {0: [], 90: ["+Rr"], 180: ["+Rtd"], 270: ["+Rl"]}[options.rotate]
    flipped = ["+Lh"] if options.flip else []
    return turned + flipped


def scale_options(options, image):
    own = (image.Columns, image.Rows)
    if options.size == (own[::-1] if options.rotate % 180 else own):
        return []
    shrinks = options.size[0] * options.size[1] < own[0] * own[1]
    method = "1" if shrinks else "3"  # area average, bilinear
    interpolate = ["-i"] if options.interpolation == "nearest" else ["+i", method]
    return interpolate + ["+a", "+Sxv", str(options.size[0])]


def by_image(options):
    image = pydicom.dcmread(options.input, stop_before_pixels=True)
    if options.shutter:
        given.cannot("dcmj2pnm knows no shutters")
    command = ["dcmj2pnm", "+on", "+F", str(options.frame + 1)]
    command += window_options(options, image) + function_options(options)
    command += turn_options(options) + scale_options(options, image)
    command += ["+P"] if options.invert else []
    command += ["+O", "0", "+Omr"] if options.overlays else ["-O"]
    call(command + [options.input, options.output])


if __name__ == "__main__":
    asked = given.read()
    by_state(asked) if asked.state else by_image(asked)
