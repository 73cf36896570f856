"""Files and folders brought into another coding."""
from __future__ import annotations

import concurrent.futures
import os
import pathlib
import sys
from dataclasses import dataclass, field
from typing import Callable, List, Union

from ._errors import Error, as_bytes, require
from ._image import open as open_image
from ._library import ffi, lib, structure
from ._series import files_of

Path = Union[str, "os.PathLike[str]"]
Progress = Callable[[int, int], None]


@dataclass(frozen=True)
class ConversionFailure:
    """A file that was not converted, and why."""

    path: str
    error: Exception


@dataclass
class Conversion:
    """What became of the files: the paths that were written, and those that failed."""

    written: List[str] = field(default_factory=list)
    failed: List[ConversionFailure] = field(default_factory=list)

    def __repr__(self) -> str:
        return f"<quorvex.Conversion: {len(self.written)} written, {len(self.failed)} failed>"


def can_write(to: str) -> bool:
    """Whether the library writes a target of that name."""
    return bool(lib.quorvex_writes_target(to.encode()))


def _convert_file(source: pathlib.Path, target: pathlib.Path, to: str, quality: int) -> str:
    wish = structure("quorvex_conversion")
    name = ffi.new("char[]", to.encode())
    wish.target, wish.quality = name, quality
    target.parent.mkdir(parents=True, exist_ok=True)
    with open_image(source) as image, image._using() as handle:
        require(lib.quorvex_convert(handle, wish, as_bytes(target)), os.fspath(source))
    return os.fspath(target)


def _tell(done: int, count: int) -> None:
    print(f"\r{done} of {count}", end="\n" if done == count else "", file=sys.stderr, flush=True)


def convert(source: Path, target: Path, *, to: str, quality: int = 0, jobs: int = 1,
            progress: Union[bool, Progress] = False) -> Conversion:
    """Brings a file, or each file below a folder, into another coding: "j2k-lossless", "explicit", "rle" and what else
    `quorvex convert --to` knows. The files of a folder keep their names below `target`.

    A file that fails is told in the result; a file alone raises. progress: True for a line on standard error, or a
    function of the numbers done and in all.
    """
    if not can_write(to):
        raise ValueError(f"{to!r} is no target that this library writes")
    root = pathlib.Path(source)
    if root.is_file():
        return Conversion([_convert_file(root, pathlib.Path(target), to, quality)])
    files = files_of(root)
    tell = _tell if progress is True else progress or None
    result = Conversion()
    with concurrent.futures.ThreadPoolExecutor(max(1, jobs)) as workers:
        started = {workers.submit(_convert_file, path, pathlib.Path(target) / path.relative_to(root), to, quality): path
                   for path in files}
        for done, future in enumerate(concurrent.futures.as_completed(started), 1):
            try:
                result.written.append(future.result())
            except (Error, OSError, MemoryError) as error:
                result.failed.append(ConversionFailure(os.fspath(started[future]), error))
            if callable(tell):
                tell(done, len(files))
    result.written.sort()
    result.failed.sort(key=lambda failure: failure.path)
    return result
