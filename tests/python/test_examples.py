"""The examples run as they stand, make their pictures, and the pages show what runs."""

import os
import pathlib
import re
import shutil
import subprocess
import sys

import pytest

from conftest import SOURCES

FOLDER = SOURCES / "examples" / "python"
# What each prints, in part.
PRINTS = {
    "targets.py": "Left: 96 of 96 targets on the screen",
    "coverage.py": "square m, pixels of",
    "study.py": "lands at its place",
    "warp.py": "of its pixels show the input",
    "camera.py": "the camera sees 160 of 160 targets",
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


def test_the_program_of_the_readme_is_ten_lines():
    assert len(blocks("README.md")[0].splitlines()) <= 10


def test_what_is_installed_needs_neither_sources_nor_build(tmp_path):
    """The same ten lines from an installed tree, which names no folder of sources or build."""
    prefix = tmp_path / "prefix"
    run(["cmake", "--install", os.environ["SM_BUILD"], "--prefix", prefix], tmp_path)
    package, = pathlib.Path(prefix).rglob("screenmanager/_native*.so")
    shutil.copytree(SOURCES / "examples" / "spherical-dome", tmp_path / "examples" / "spherical-dome")
    ours = {name: value for name, value in os.environ.items() if not name.startswith("SM_")}
    ours["PYTHONPATH"] = str(package.parents[1])
    loaded = "\nimport screenmanager\nprint(open('/proc/self/maps').read())\n"
    ended = subprocess.run([sys.executable, "-c", blocks("README.md")[0] + loaded], cwd=tmp_path, env=ours,
                           capture_output=True, text=True, check=False)
    assert ended.returncode == 0, ended.stderr
    requires_picture(tmp_path / "targets.png")
    libraries = [line for line in ended.stdout.splitlines() if "libScreenManager" in line or "_native" in line]
    assert libraries and all(str(prefix) in line for line in libraries)
