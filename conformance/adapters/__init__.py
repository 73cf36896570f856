"""Command lines of tools that we know."""
import shlex
from pathlib import Path

HERE = Path(__file__).resolve().parent

QUORVEX = ("{input} -o {output} [--view {width}x{height}] [{default_view}] [--frame {frame}] "
           "[--state {state}] [--window {window}] [--function {function}] [--voi {voi}] "
           "[--rotate {rotate}] [--flip{flip}] [--invert{invert}] [--overlays{overlays}] "
           "[--shutter{shutter}] [--interpolation {interpolation}]")
SCRIPT = ("{input} {output} --size {width}x{height} --frame {frame} [--state {state}] "
          "[--centre={centre} --width={window_width}] [--function {function}] [--voi {voi}] "
          "[--rotate {rotate}] [--flip{flip}] [--invert{invert}] [--overlays{overlays}] "
          "[--shutter{shutter}] [--interpolation {interpolation}]")


def script(name):
    return lambda _: f"/usr/bin/python3 {shlex.quote(str(HERE / name))} {SCRIPT}"


TEMPLATES = {
    "quorvex": lambda program: f"{shlex.quote(program or 'quorvex')} render {QUORVEX}",
    "dcmtk": script("dcmtk.py"),
    "pydicom": script("pydicom_numpy.py"),
}
