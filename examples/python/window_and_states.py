#!/usr/bin/env python3
"""A slice in three windows and by a presentation state: window_and_states.py IMAGE FOLDER"""
import pathlib
import sys

import quorvex

WINDOWS = {"soft": (40, 400), "lung": (-600, 1500), "bone": (400, 1800)}


def main(path, folder):
    folder = pathlib.Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    # %% An image tells what it is
    with quorvex.open(path) as image:
        print(image)
        values = image.values()
        print(f"{values.min()} to {values.max()}, {values.mean():.1f} on average")
        # %% The same values in windows
        for name, window in WINDOWS.items():
            quorvex.write_png(folder / f"{name}.png", image.render(window=window, size=(512, 512)))
        # %% A view that is kept as a state, with a note
        with quorvex.View((512, 512)) as view:
            view.show(image)
            view.set(window=WINDOWS["soft"], rotation=90, invert=True)
            middle = (image.columns / 2, image.rows / 2)
            view.write_state(folder / "state.dcm", label="TURNED", texts=((*middle, "middle"),),
                             lines=(((10, 10), middle),))
        # %% And opened again
        picture = image.render(state=folder / "state.dcm", annotations=True, size=(512, 512))
        quorvex.write_png(folder / "state.png", picture)


if __name__ == "__main__":
    main(*sys.argv[1:3])
