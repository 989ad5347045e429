"""Moves a projector and plots how the part of its picture that lands, and its pixels, follow.

study.py [DISPLAY.xml [PICTURE.png]]
"""

import copy
import pathlib
import sys

import matplotlib.pyplot as plt
import numpy as np
import screenmanager

WALL = pathlib.Path(__file__).parents[1] / "mesh-rays" / "display.xml"


def main(display_file=WALL, picture="study.png"):
    display = copy.copy(screenmanager.Display.load(display_file))
    channel = display.channels[0]
    x, y, z = channel.position
    back = np.linspace(0.0, 1.5, 16)
    measured = []
    for distance in back:
        channel.position = (x, y - distance, z)
        measured.append(display.coverage().channels[0])

    figure, axes = plt.subplots(figsize=(8, 5))
    axes.plot(back, [100 * coverage.landed for coverage in measured], "o-", color="C0")
    axes.set(xlabel=f"{channel.name} moved back by [{display.unit}]", title=f"The place of {channel.name}")
    axes.set_ylabel("part of its picture on the screen [%]", color="C0")
    pixels = axes.twinx()
    pixels.plot(back, [1000 * coverage.pixel_mean for coverage in measured], "s-", color="C1")
    pixels.set_ylabel(f"mean size of a pixel [{display.unit} / 1000]", color="C1")
    print(f"{channel.name}: {100 * measured[0].landed:.1f} % lands at its place, "
          f"{100 * measured[-1].landed:.1f} % {back[-1]} {display.unit} further back")
    figure.tight_layout()
    plt.savefig(picture, dpi=120)


if __name__ == "__main__":
    main(*sys.argv[1:])
