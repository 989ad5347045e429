"""Exports what a render engine needs of every channel, and draws it: the frusta around the eye, and the warp of each.

export.py [DISPLAY.xml [PICTURE.png [FOLDER]]]
"""

import pathlib
import sys

import matplotlib.pyplot as plt
import numpy as np
import screenmanager

DOME = pathlib.Path(__file__).parents[1] / "spherical-dome" / "display.xml"


def around(frustum, samples=24):
    """Azimuth and elevation, in degrees, of the edge of a frustum as its eye sees it."""
    left, right, bottom, top = frustum.tangents
    across, upwards = np.linspace(left, right, samples), np.linspace(bottom, top, samples)
    edge = np.concatenate([np.column_stack(side) for side in (
        (across, np.full(samples, top)), (np.full(samples, right), upwards[::-1]),
        (across[::-1], np.full(samples, bottom)), (np.full(samples, left), upwards))])
    view = frustum.view
    x, y, z = (view.forward + edge[:, :1] * view.right + edge[:, 1:] * view.up).T
    return np.degrees(np.arctan2(x, y)), np.degrees(np.arctan2(z, np.hypot(x, y)))


def main(display_file=DOME, picture="export.png", folder="player"):
    display = screenmanager.Display.load(display_file)
    convention = screenmanager.Convention(depth="reversed-z", world="y-up")
    manifest = display.export(folder, formats=["obj"], convention=convention, test_pictures=True, force=True)
    channels = display.channels
    figure, (eye, *warps) = plt.subplots(1, 1 + len(channels), figsize=(5 * (1 + len(channels)), 4.5),
                                         layout="constrained")
    for number, (plot, channel, view) in enumerate(zip(warps, channels, manifest["views"])):
        warp = channel.player_warp(triangles=True)
        eye.fill(*around(warp.input.frustum), alpha=0.4, color=f"C{number}", label=channel.name)
        u, v = warp.triangles.places.reshape(-1, 2).T
        plot.triplot(u, v, np.arange(len(u)).reshape(-1, 3), color=f"C{number}", linewidth=0.4)
        plot.set(title=f"what {channel.name} takes from its frustum", xlim=(0, 1), ylim=(0, 1), xlabel="u", ylabel="v")
        files = ", ".join(file["name"] for file in view["files"])
        rows, columns = warp.mask.shape
        print(f"{channel.name}: {columns} x {rows} nodes, within {warp.error.largest:.3f} pixels; {files}")
    eye.set(title="frusta, as the eye sees them", xlabel="azimuth [deg]", ylabel="elevation [deg]")
    eye.set_aspect("equal")
    eye.legend()
    plt.savefig(picture, dpi=110)


if __name__ == "__main__":
    main(*sys.argv[1:])
