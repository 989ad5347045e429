"""Moves a projector and plots how the part of its picture that lands on the screen, and its pixels, follow its place.

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
    figure, (parts, pixels) = plt.subplots(1, 2, figsize=(10, 4.5), layout="constrained")
    raised = np.linspace(-1.2, 1.2, 13)
    for back in (0.0, 0.5, 1.0):
        measured = []
        for height in raised:
            channel.position = (x, y - back, z + height)
            measured.append(display.coverage().channels[0])
        label = f"{back} {display.unit} back"
        parts.plot(raised, [100 * coverage.landed for coverage in measured], "o-", label=label)
        pixels.plot(raised, [1000 * coverage.pixel_mean for coverage in measured], "o-", label=label)
        print(f"{channel.name}, {label}: {100 * min(coverage.landed for coverage in measured):.1f} to "
              f"{100 * max(coverage.landed for coverage in measured):.1f} % of its picture lands")
    for axes in (parts, pixels):
        axes.set_xlabel(f"{channel.name} raised by [{display.unit}]")
    parts.legend()
    parts.set_ylabel("part of its picture on the screen [%]")
    pixels.set_ylabel(f"mean size of a pixel [{display.unit} / 1000]")
    plt.savefig(picture, dpi=120)


if __name__ == "__main__":
    main(*sys.argv[1:])
