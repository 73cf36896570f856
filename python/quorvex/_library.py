"""The shared library: where QUORVEX_LIBRARY points, beside this package, or where the loader finds it."""
from __future__ import annotations

import os
import pathlib
from typing import Any

import cffi  # type: ignore[import]

from ._declarations import DECLARATIONS

NAME = "libQuorvexU.so.2"

ffi: Any = cffi.FFI()
ffi.cdef(DECLARATIONS)


def _load() -> Any:
    chosen = os.environ.get("QUORVEX_LIBRARY")
    if chosen:
        return ffi.dlopen(chosen)
    beside = pathlib.Path(__file__).resolve().parent / NAME
    try:
        return ffi.dlopen(str(beside) if beside.exists() else NAME)
    except OSError as failure:
        raise ImportError(f"{NAME} is neither beside the package nor where the loader looks; "
                          f"QUORVEX_LIBRARY may name it ({failure})") from failure


lib: Any = _load()


def text_of(pointer: Any) -> str:
    """UTF-8 of the library; empty for null."""
    return "" if pointer == ffi.NULL else str(ffi.string(pointer).decode("utf-8", "replace"))


def version() -> str:
    """The version of the library."""
    return str(text_of(lib.quorvex_version()))


def structure(name: str) -> Any:
    """A structure of the interface with its size set."""
    made = ffi.new(f"{name} *")
    made.struct_size = ffi.sizeof(name)
    return made


def new_context() -> Any:
    """A context that is freed with its last reference."""
    box = ffi.new("quorvex_context **")
    if lib.quorvex_context_new(box) != 0:
        raise MemoryError
    return ffi.gc(box[0], lib.quorvex_context_free)
