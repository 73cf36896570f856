#!/usr/bin/env python3
"""Images of a folder as PNG with a table of what they are: training_export.py FOLDER OUTPUT [SIDE]"""
import csv
import pathlib
import sys

import quorvex

COLUMNS = ("picture", "source", "frame", "modality", "rows", "columns", "spacing", "lossy")


def main(folder, output, side=256):
    output = pathlib.Path(output)
    output.mkdir(parents=True, exist_ok=True)
    count = 0
    with open(output / "table.csv", "w", newline="", encoding="utf-8") as file:
        table = csv.writer(file)
        table.writerow(COLUMNS)
        for image in quorvex.series(folder):
            for frame in range(image.frames):
                name = f"{count:06}.png"
                picture = image.render(frame, size=(int(side), int(side)))
                quorvex.write_png(output / name, picture)
                spacing = "" if image.spacing is None else f"{image.spacing[0]:g}x{image.spacing[1]:g}"
                table.writerow((name, image.path, frame, image.text(0x00080060), image.rows, image.columns, spacing,
                                int(image.is_lossy)))
                count += 1
                print(f"\r{count} pictures", end="", file=sys.stderr, flush=True)
    print(file=sys.stderr)


if __name__ == "__main__":
    main(*sys.argv[1:4])
