"""Draws how many projectors light each part of a screen, as its audience sees it: by azimuth and elevation.

coverage.py [DISPLAY.xml [PICTURE.png]]
"""

import pathlib
import sys

import matplotlib.pyplot as plt
import numpy as np
import screenmanager
from matplotlib.collections import PolyCollection

DOME = pathlib.Path(__file__).parents[1] / "spherical-dome" / "display.xml"


def main(display_file=DOME, picture="coverage.png"):
    display = screenmanager.Display.load(display_file)
    coverage = display.coverage(pieces=True)
    x, y, z = np.moveaxis(coverage.piece_corners - display.screen.eye_point, -1, 0)
    azimuth = np.degrees(np.arctan2(x, y))
    elevation = np.degrees(np.arctan2(z, np.hypot(x, y)))
    # Pieces behind the audience reach from one edge of the picture to the other; they are left out.
    whole = np.ptp(azimuth, axis=1) < 180

    figure, axes = plt.subplots(figsize=(9, 5))
    colours = plt.get_cmap("viridis", len(coverage.area_by_count))
    pieces = PolyCollection(np.stack([azimuth, elevation], axis=-1)[whole], array=coverage.piece_counts[whole],
                            cmap=colours, edgecolors="face", linewidths=0.1)
    pieces.set_clim(-0.5, len(coverage.area_by_count) - 0.5)
    axes.add_collection(pieces)
    axes.autoscale()
    axes.set(xlabel="azimuth [deg]", ylabel="elevation [deg]",
             title=f"{100 * coverage.part_lit_by_at_least(1):.1f} % is lit, "
                   f"{100 * coverage.part_lit_by_at_least(2):.1f} % by several projectors")
    axes.set_aspect("equal")
    figure.colorbar(pieces, label="projectors", shrink=0.7, ticks=range(len(coverage.area_by_count)))
    for channel in coverage.channels:
        print(f"{channel.name}: {channel.area:.2f} square {coverage.unit}, pixels of {channel.pixel_least * 1000:.2f} to "
              f"{channel.pixel_most * 1000:.2f} thousandths of {coverage.unit}")
    plt.savefig(picture, dpi=120, bbox_inches="tight")


if __name__ == "__main__":
    main(*sys.argv[1:])
