#!/usr/bin/env python3
"""The images of a folder side by side: contact_sheet.py FOLDER SHEET.png [ACROSS]"""
import sys

import numpy as np

import quorvex

SIDE = 160
GAP = 8


def main(folder, sheet, across=4):
    across = int(across)
    pictures = [image.thumbnail((SIDE, SIDE), frame=image.frames // 2) for image in quorvex.series(folder)]
    if not pictures:
        sys.exit(f"{folder} has no images")
    down = -(-len(pictures) // across)
    step = SIDE + GAP
    page = np.full((down * step + GAP, across * step + GAP, 3), 32, np.uint8)
    for place, picture in enumerate(pictures):
        height, width = picture.shape[:2]
        top = GAP + place // across * step + (SIDE - height) // 2
        left = GAP + place % across * step + (SIDE - width) // 2
        page[top:top + height, left:left + width] = picture
    quorvex.write_png(sheet, page)


if __name__ == "__main__":
    main(*sys.argv[1:4])
