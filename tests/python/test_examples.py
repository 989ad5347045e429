"""The examples run as they stand, make their pictures, and the pages show what runs."""

import os
import re
import shutil
import subprocess
import sys

import pytest
import screenmanager

from conftest import SOURCES

FOLDER = SOURCES / "examples" / "python"
# What each prints, in part.
PRINTS = {
    "targets.py": "Left: 96 of 96 targets on the screen",
    "coverage.py": "square m, pixels of",
    "study.py": "% of its picture lands",
    "warp.py": "of its pixels show the input",
    "camera.py": "the camera sees 160 of 160 targets",
    "fit.py": "pixels, residual factor ",
    "export.py": " nodes, within 0.",
}


def run(command, folder):
    ended = subprocess.run(command, cwd=folder, capture_output=True, text=True, check=False)
    assert ended.returncode == 0, ended.stderr
    return ended.stdout


def requires_picture(path):
    data = path.read_bytes()
    assert data.startswith(b"\x89PNG") and len(data) > 10_000


def test_every_example_is_known():
    assert sorted(path.name for path in FOLDER.glob("*.py")) == sorted(PRINTS)
    page = (SOURCES / "docs" / "python.md").read_text(encoding="utf-8")
    for name in PRINTS:
        assert f"| `{name}` |" in page


@pytest.mark.parametrize("name", sorted(PRINTS))
def test_an_example_makes_its_picture(name, tmp_path):
    assert PRINTS[name] in run([sys.executable, FOLDER / name], tmp_path)
    requires_picture(tmp_path / name.replace(".py", ".png"))


def blocks(page):
    return re.findall(r"^```python\n(.*?)^```$", (SOURCES / page).read_text(encoding="utf-8"), re.M | re.S)


@pytest.mark.parametrize("page", ["README.md", "docs/python.md"])
def test_a_page_shows_what_runs(page, tmp_path):
    shutil.copytree(SOURCES / "examples" / "spherical-dome", tmp_path / "examples" / "spherical-dome")
    programs = blocks(page)
    assert len(programs) == 1
    run([sys.executable, "-c", programs[0]], tmp_path)
    requires_picture(tmp_path / "targets.png")


def test_the_page_names_what_there_is():
    """The calls of its table, and the attributes that it lists with them."""
    page = (SOURCES / "docs" / "python.md").read_text(encoding="utf-8")
    kinds = {"Display": screenmanager.Display, "display": screenmanager.Display, "channel": screenmanager.Channel,
             "screen": screenmanager.Screen}
    names = re.findall(r"`(Display|display|channel|screen)\.(\w+)", page)
    assert len(set(names)) > 25
    for owner, name in names:
        assert hasattr(kinds[owner], name), f"{owner}.{name}"
    for kind in (screenmanager.Display, screenmanager.Channel, screenmanager.Screen, screenmanager.TargetData):
        for name in vars(kind):
            if not name.startswith("_") and name not in ("path", "id", "section_id", "old_id", "shape", "type"):
                assert name in page or name.startswith("mirror_") or name.endswith("_table"), f"{kind.__name__}.{name}"
    for name in screenmanager.__all__:
        if issubclass(getattr(screenmanager, name), screenmanager.Error) and name != "Error":
            assert f"`{name}`" in page


def test_the_program_of_the_readme_is_ten_lines():
    assert len(blocks("README.md")[0].splitlines()) <= 10


# Behind the ten lines: what else the module does.
MORE = """
measured = [screenmanager.MeasuredPoints(channel.id, channel.picture[channel.mask], channel.points[channel.mask])
            for channel in display.targets(columns=12, rows=8)]
fit = display.fit(measured)
display.apply(fit)
manifest = display.export("player", formats=["mesh"], nodes=(9, 7), test_pictures=True)
print(fit.outcome, manifest["version"])
with open("/proc/self/maps") as maps:
    print(maps.read())
"""


# Sources and build are empty folders for the command behind it. A container may forbid that; then it is the libraries
# alone that are looked at.
HIDE = " && ".join(f"mount -t tmpfs none '{folder}'" for folder in (os.environ["SM_BUILD"], SOURCES))
WITHOUT = ["unshare", "--user", "--map-root-user", "--mount", "bash", "-c",
           HIDE + f" && test -z \"$(ls -A '{SOURCES}')\" && eval \"$1\"", "bash"]
if subprocess.run([*WITHOUT[:4], "true"], capture_output=True, check=False).returncode != 0:
    WITHOUT = ["bash", "-c", "eval \"$1\"", "bash"]


def test_what_is_installed_needs_neither_sources_nor_build(tmp_path):
    """The same ten lines from an installed tree, by the command of the page."""
    run(["cmake", "--install", os.environ["SM_BUILD"], "--prefix", tmp_path / "screenmanager"], tmp_path)
    shutil.copytree(SOURCES / "examples" / "spherical-dome", tmp_path / "examples" / "spherical-dome")
    command, = re.findall(r"^```sh\n(PYTHONPATH=.*)\n```$", (SOURCES / "docs" / "python.md").read_text(), re.M)
    (tmp_path / "script.py").write_text(blocks("README.md")[0] + MORE, encoding="utf-8")
    ended = subprocess.run([*WITHOUT, command], cwd=tmp_path, env={"HOME": str(tmp_path), "MPLBACKEND": "Agg"},
                           capture_output=True, text=True, check=False)
    assert ended.returncode == 0, ended.stderr
    requires_picture(tmp_path / "targets.png")
    libraries = [line for line in ended.stdout.splitlines() if "libScreenManager" in line or "_native" in line]
    assert libraries and all(str(tmp_path) in line for line in libraries)
    # What is opened on demand is found, too.
    assert any("libScreenManagerFit-" in line for line in libraries)
    assert "good 1" in ended.stdout and (tmp_path / "player" / "manifest.json").is_file()
    package, = tmp_path.rglob("screenmanager/_native*.so")
    assert sorted(path.name for path in package.parent.iterdir() if path.suffix in (".py", ".pyi", ".typed", "")) == [
        "__init__.py", "__init__.pyi", "__pycache__", "_arguments.py", "_channel.py", "_display.py", "_export.py", "_fit.py", "_named.py", "_native.pyi", "_records.py",
        "_screen.py", "py.typed"]
