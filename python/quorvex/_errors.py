"""Results of the library as exceptions."""
from __future__ import annotations

import os
from typing import Any, Optional

from ._library import ffi, lib, text_of

SUCCESSES = (0, 38)  # 38: nothing had to be decoded or coded
CANCELLED = 40


class Error(Exception):
    """What the library has refused or could not do.

    code: the number of the result; name: "QVM_ERROR_FAILED_TO_PARSE_DICOM"; path: of the file, or None.
    """

    def __init__(self, code: int, path: Optional[str] = None) -> None:
        self.code = code
        self.name = text_of(lib.quorvex_result_name(code))
        self.path = path
        sentence = text_of(lib.quorvex_result_sentence(code))
        limit = text_of(lib.quorvex_limit_sentence())
        whole = f"{sentence}: {limit}" if limit else sentence
        super().__init__(f"{path}: {whole}" if path else whole)

    def __reduce__(self) -> Any:
        return type(self), (self.code, self.path)


class Cancelled(Error):
    """The operation was called off."""


def require(code: int, path: Optional[str] = None) -> int:
    """The code of a success; raises for any other."""
    if code in SUCCESSES:
        return code
    raise (Cancelled if code == CANCELLED else Error)(code, path)


def as_bytes(path: "str | os.PathLike[str]") -> bytes:
    """A path as the library takes it."""
    name = os.fsencode(path)
    if b"\0" in name:
        raise ValueError("a path has no zero bytes")
    return name


__all__ = ["Cancelled", "Error", "as_bytes", "ffi", "require"]
