"""Looks at the targets of a display through a camera: which of them it sees, and at which pixels.

camera.py [DISPLAY.xml [PICTURE.png]]
"""

import pathlib
import sys

import matplotlib.pyplot as plt
import numpy as np
import screenmanager

COCKPIT = pathlib.Path(__file__).parents[1] / "cockpit" / "display.xml"


class Camera:
    """A camera without distortion. Its axes in the world: right, forward, up; pixels (x, y) from the bottom left."""

    def __init__(self, position, looks_at, width=1600, height=1200, field_of_view=np.radians(110)):
        self.position = np.array(position, dtype=float)
        forward = np.array(looks_at) - self.position
        forward /= np.linalg.norm(forward)
        right = np.cross(forward, (0, 0, 1))
        right /= np.linalg.norm(right)
        self.axes = np.stack([right, forward, np.cross(right, forward)])
        self.size = np.array([width, height])
        self.focal_length = width / 2 / np.tan(field_of_view / 2)

    def pixels(self, points):
        """Pixels (n, 2) of points (n, 3), and which of them lie in front of the camera and in its picture."""
        x, depth, y = self.axes @ (points - self.position).T
        in_front = depth > 0
        depth = np.where(in_front, depth, np.nan)
        pixels = np.stack([x, y], axis=-1) / depth[:, None] * self.focal_length + self.size / 2
        return pixels, in_front & ((pixels >= 0) & (pixels <= self.size)).all(axis=-1)

    def sees(self, screen, points):
        """Whether nothing of the screen stands between the camera and each point."""
        hits = screen.intersect(self.position, points - self.position)
        # A thousandth: points of the screen are hit to rounding.
        return hits.hit & (hits.distances > 0.999 * np.linalg.norm(points - self.position, axis=-1))


def main(display_file=COCKPIT, picture="camera.png"):
    display = screenmanager.Display.load(display_file)
    targets = display.targets(columns=16, rows=10)
    middle = np.nanmean(np.concatenate([channel.points.reshape(-1, 3) for channel in targets]), axis=0)
    camera = Camera(display.screen.eye_point, middle)
    figure, axes = plt.subplots(figsize=(8, 6))
    for channel in targets:
        points = channel.points[channel.mask]
        pixels, inside = camera.pixels(points)
        seen = inside & camera.sees(display.screen, points)
        axes.plot(*pixels[seen].T, ".", label=f"{channel.name}: {seen.sum()} of {len(points)}")
        print(f"{channel.name}: the camera sees {seen.sum()} of {len(points)} targets")
    axes.set(xlim=(0, camera.size[0]), ylim=(0, camera.size[1]), xlabel="x [pixels]", ylabel="y [pixels]",
             title="Targets in the picture of the camera")
    axes.set_aspect("equal")
    axes.legend(loc="upper left")
    plt.savefig(picture, dpi=120)


if __name__ == "__main__":
    main(*sys.argv[1:])
