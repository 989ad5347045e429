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
    plots = plt.figure(figsize=(4 * len(channels), 8), layout="constrained").subplot_mosaic(
        [["eye"] * len(channels), [channel.id for channel in channels]])
    for number, (channel, view) in enumerate(zip(channels, manifest["views"])):
        # Of a few nodes, to be seen; the folder has as many as keep the error.
        warp = channel.player_warp(nodes=(17, 13), triangles=True)
        plots["eye"].fill(*around(warp.input.frustum), alpha=0.4, color=f"C{number}", label=channel.name)
        u, v = warp.triangles.places.reshape(-1, 2).T
        plots[channel.id].triplot(u, v, np.arange(len(u)).reshape(-1, 3), color=f"C{number}", linewidth=0.6)
        plots[channel.id].set(title=f"{channel.name}: places in its frustum", xlim=(0, 1), ylim=(0, 1), xlabel="u",
                              ylabel="v")
        columns, rows = view["nodes"]["size"]
        print(f"{channel.name}: {columns} x {rows} nodes, within {view['nodes']['error']['largest']:.3f} pixels; "
              f"{', '.join(file['name'] for file in view['files'])}")
    plots["eye"].set(title="frusta, as the eye sees them", xlabel="azimuth [deg]", ylabel="elevation [deg]")
    plots["eye"].set_aspect("equal")
    plots["eye"].legend(loc="center left", bbox_to_anchor=(1.01, 0.5))
    plt.savefig(picture, dpi=110)


if __name__ == "__main__":
    main(*sys.argv[1:])
