#!/usr/bin/python3
"""Writes the cases of the display suite into cases/.

Usage: make_cases.py [FOLDER]. Which independent tool agreed with a case stands in
maker/agreed.json; `confirm` measures it.
"""
import json
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE))
sys.dont_write_bytecode = True

from maker import AREAS  # noqa: E402  (after the path is set)
from maker.casebook import Casebook  # noqa: E402


def main():
    agreed_file = HERE / "maker" / "agreed.json"
    agreed = json.loads(agreed_file.read_text()) if agreed_file.exists() else {}
    book = Casebook(sys.argv[1] if len(sys.argv) > 1 else HERE / "cases", agreed)
    book.clear()
    for add_cases in AREAS:
        add_cases(book)
    print(f"{len(book.names)} cases")


if __name__ == "__main__":
    main()
