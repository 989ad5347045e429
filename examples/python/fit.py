"""Fits the channels of a display to measured points and draws how far the points were off in its pictures, and are.

The measurement is simulated: light of the display, off by a millimetre or two; the display that is fitted has its
projectors turned and moved. With a table of real measurements it is display.fit("measured.csv").

fit.py [DISPLAY.xml [PICTURE.png]]
"""

import copy
import pathlib
import sys

import matplotlib.pyplot as plt
import numpy as np
import screenmanager

WALL = pathlib.Path(__file__).parents[1] / "mesh-rays" / "display.xml"
DEVIATION = 0.0015  # of each coordinate, in the unit of the display


def measure(display):
    """Where the light of a grid arrives in each channel, with the noise of a good total station."""
    noise = np.random.default_rng(1)
    for targets in display.targets(columns=12, rows=8):
        points = targets.points[targets.mask]
        yield screenmanager.MeasuredPoints(targets.id, targets.picture[targets.mask],
                                           points + noise.normal(0, DEVIATION, points.shape), deviations=(DEVIATION,) * 3)


def draw(axes, picture, residuals, scale, title):
    """Residuals as arrows: from the place in the picture to the one that leads to the measured point."""
    axes.quiver(*picture.T, *residuals.T, angles="xy", scale_units="xy", scale=1 / scale, width=0.003)
    axes.set(title=title + (f", arrows {scale} times as long" if scale > 1 else ""), xlabel="px", ylabel="py",
             xlim=(-150, picture[:, 0].max() + 150), ylim=(-100, picture[:, 1].max() + 100))
    axes.set_aspect("equal")


def main(display_file=WALL, picture="fit.png"):
    real = screenmanager.Display.load(display_file)
    planned = copy.copy(real)
    for channel in planned.channels:
        channel.orientation = np.add(channel.orientation, np.radians((1.5, -0.8, 0.4)))
        channel.position = np.add(channel.position, (0.05, -0.03, 0.02))
    fit = planned.fit(measure(real))
    print(fit.text)
    planned.apply(fit)  # planned.save("fitted.xml") writes it
    figure, rows = plt.subplots(len(fit.channels), 2, figsize=(11, 3.6 * len(fit.channels)), squeeze=False,
                                layout="constrained")
    for (before, after), channel in zip(rows, fit.channels):
        residuals = channel.residuals
        places = residuals.picture * planned.channel(channel.id).resolution
        draw(before, places, residuals.pixels_before, 1, f"{channel.name} as planned")
        draw(after, places, residuals.pixels_after, 50, f"{channel.name} as fitted")
        print(f"{channel.name}: {channel.pixels_before.rms:.1f} -> {channel.pixels_after.rms:.2f} pixels, "
              f"residual factor {channel.residual_factor:.2f}")
    plt.savefig(picture, dpi=110)


if __name__ == "__main__":
    main(*sys.argv[1:])
