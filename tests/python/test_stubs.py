"""The stubs state what is there, and a program that uses the module well has no fault for a checker of types."""

import os
import subprocess
import sys

SOURCE_OF_PUBLIC_NAMES = r"screenmanager\._(arguments|channel|display|export|fit|named|native|records|screen)(\..*)?"

GOOD = """
import numpy as np
import screenmanager

display = screenmanager.Display.load("display.xml")
channel: screenmanager.Channel = display.channel("Left")
channel.position = (0.1, 0.2, 0.3)
x: float = channel.position[0]
left: float = channel.frustum.left
hits = display.screen.intersect(np.zeros(3), [(0.0, 1.0, 0.0)])
total: int = int(hits.hit.sum())
for targets in display.targets(columns=8, rows=5):
    name: str = targets.name
    points = targets.points[targets.mask]
area: float = display.coverage().screen_area
fit = display.fit([screenmanager.MeasuredPoints("Left", np.zeros((9, 2)), np.zeros((9, 3)))], solve=["orientation"])
rms: float = fit.channels[0].pixels_after.rms
lens = fit.channels[0].after.lens
files: tuple[str, ...] = display.apply(fit)
channel.position = np.zeros(3)
channel.position = [0, 1, 2]
channel.frustum = np.array([-0.5, 0.5, -0.25, 0.25])
channel.orientation = screenmanager.Orientation(0.1, 0.0, 0.0)
channel.resolution = np.array([1920, 1200])
height: int = channel.resolution[1]
angle: float = channel.orientation.z
display.screen.eye_point = np.zeros(3)
display.screen.azimuth = np.array([-1.0, 1.0])
display.screen.rails = np.zeros((2, 3)), [(0.0, 0.0, 1.0), (1.0, 0.0, 1.0)]
lower = display.screen.rails[0].shape
display.target_data.yaw_table = [(-0.5, -0.4), (0.5, 0.6)]
display.target_data.position = np.zeros(3)
rows: int = display.target_data.yaw_table.shape[0]
chosen = display.fit("measured.csv", channels=np.array(["Left", "Right"]))
warp = channel.player_warp(screenmanager.Input("fisheye", aperture=3.0), nodes=(9, 7), points=True)
if warp.points is not None:
    places = warp.places[warp.lit]
manifest = display.export("player", convention=screenmanager.Convention(depth="direct3d"), eyes=[(0.0, 0.0, 1.2)])
"""
BAD = """
import screenmanager

display = screenmanager.Display.load("display.xml")
display.channel(5)
display.screen.intersect((0, 0, 0))
display.channels[0].id = "x"
display.screen.radius = "large"
display.fit("measured.csv", "mm")
display.channels[0].player_warp(nodes=5)
display.export("player", convention="opengl")
screenmanager.Input(aperture="wide")
display.channels[0].postion = (0, 0, 0)
text: str = display.channels[0].position
display.channels[0].position = display
"""


def mypy(module, *arguments, cwd):
    return subprocess.run([sys.executable, "-m", module, *arguments], cwd=cwd, capture_output=True, text=True,
                          check=False, env={**os.environ, "MYPYPATH": os.environ["PYTHONPATH"]})


def test_the_stubs_state_what_is_there(tmp_path):
    # What the names of the package come from is not described twice.
    (tmp_path / "allowed").write_text(SOURCE_OF_PUBLIC_NAMES + "\n")
    run = mypy("mypy.stubtest", "screenmanager", "--concise", "--allowlist", "allowed", "--ignore-unused-allowlist",
               cwd=tmp_path)
    assert run.returncode == 0, run.stdout + run.stderr


def test_a_checker_of_types_accepts_good_use_and_finds_every_bad_one(tmp_path):
    (tmp_path / "good.py").write_text(GOOD)
    (tmp_path / "bad.py").write_text(BAD)
    run = mypy("mypy", "--strict", "--cache-dir=cache", "good.py", cwd=tmp_path)
    assert run.returncode == 0, run.stdout + run.stderr
    run = mypy("mypy", "--strict", "--cache-dir=cache", "bad.py", cwd=tmp_path)
    for line in range(5, 16):
        assert f"bad.py:{line}: error" in run.stdout, run.stdout
