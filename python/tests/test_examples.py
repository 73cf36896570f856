"""The examples, run as they stand."""
import csv
import os
import struct
import subprocess
import sys

from conftest import ROOT


def run(name, *arguments):
    environment = {**os.environ, "PYTHONPATH": str(ROOT / "python")}
    subprocess.run([sys.executable, ROOT / "examples/python" / name, *arguments], check=True, env=environment)


def size_of(png):
    return struct.unpack(">II", png.read_bytes()[16:24])


def test_window_and_states(samples, tmp_path):
    run("window_and_states.py", samples / "ct.dcm", tmp_path)
    pictures = {path.stem: path.read_bytes() for path in tmp_path.glob("*.png")}
    assert set(pictures) == {"soft", "lung", "bone", "state"} and len(set(pictures.values())) == 4


def test_training_export(samples, tmp_path):
    run("training_export.py", samples, tmp_path, "64")
    with open(tmp_path / "table.csv", newline="", encoding="utf-8") as file:
        rows = list(csv.DictReader(file))
    assert len(rows) == 6 and {row["modality"] for row in rows} == {"CT", "CR", "US"}
    assert all(size_of(tmp_path / row["picture"]) == (64, 64) for row in rows)


def test_contact_sheet(samples, tmp_path):
    run("contact_sheet.py", samples, tmp_path / "sheet.png", "2")
    assert size_of(tmp_path / "sheet.png") == (344, 344)
