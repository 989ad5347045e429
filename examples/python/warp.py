"""Warps a picture for one channel: what the projector must be fed with so that the picture stands on the wall as it is.

warp.py [DISPLAY.xml [PICTURE.png]]
"""

import pathlib
import sys

import matplotlib.pyplot as plt
import numpy as np
import screenmanager

WALL = pathlib.Path(__file__).parents[1] / "warped-wall" / "display.xml"


def chequerboard(height, width, squares=16):
    """A picture (height, width, 3) to recognise: a chequerboard that turns from blue to red, row 0 at the bottom."""
    v, u = np.mgrid[0:height, 0:width] / np.array([height, width]).reshape(2, 1, 1)
    dark = (np.floor(u * squares * 2) + np.floor(v * squares)) % 2
    return np.stack([u, 0.25 + 0.5 * dark, 1 - u], axis=-1)


def warped(picture, warp):
    """What each pixel shows: the pixel of the picture that its place lies on, and black without one."""
    height, width = picture.shape[:2]
    places = np.where(warp.mask[..., None], warp.places, 0.0)
    column = np.minimum((places[..., 0] * width).astype(int), width - 1)
    row = np.minimum((places[..., 1] * height).astype(int), height - 1)
    return np.where(warp.mask[..., None], picture[row, column], 0.0)


def main(display_file=WALL, picture="warp.png"):
    display = screenmanager.Display.load(display_file)
    source = chequerboard(600, 1200)
    channels = display.channels
    figure, axes = plt.subplots(1, 1 + len(channels), figsize=(5 * (1 + len(channels)), 4))
    axes[0].imshow(source, origin="lower")
    axes[0].set_title("the input")
    for plot, channel in zip(axes[1:], channels):
        warp = channel.warp()
        plot.imshow(warped(source, warp), origin="lower")
        plot.set_title(f"what {channel.name} is fed with")
        print(f"{channel.name}: {100 * warp.mask.mean():.1f} % of its pixels show the input")
    figure.tight_layout()
    plt.savefig(picture, dpi=100)


if __name__ == "__main__":
    main(*sys.argv[1:])
