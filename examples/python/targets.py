"""Plots the targets and outlines of all channels of a display in space.

targets.py [DISPLAY.xml [PICTURE.png]]
"""

import pathlib
import sys

import matplotlib.pyplot as plt
import screenmanager

DOME = pathlib.Path(__file__).parents[1] / "spherical-dome" / "display.xml"


def main(display_file=DOME, picture="targets.png"):
    display = screenmanager.Display.load(display_file)
    axes = plt.figure(figsize=(8, 7)).add_subplot(projection="3d")
    for number, targets in enumerate(display.targets(columns=12, rows=8, samples_per_edge=32)):
        colour = f"C{number}"
        axes.scatter(*targets.points[targets.mask].T, s=6, color=colour, label=targets.name)
        axes.plot(*targets.outline.T, color=colour, linewidth=1)
        print(f"{targets.name}: {targets.mask.sum()} of {targets.mask.size} targets on the screen")
    axes.scatter(*display.screen.eye_point, marker="^", color="black", label="eye point")
    axes.set(xlabel=f"x, right [{display.unit}]", ylabel=f"y, forward [{display.unit}]", zlabel=f"z, up [{display.unit}]")
    axes.set_aspect("equal")
    axes.legend()
    plt.savefig(picture, dpi=120)


if __name__ == "__main__":
    main(*sys.argv[1:])
