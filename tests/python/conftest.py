"""What the tests of the module share: the examples, the program, and the results of the libraries."""

import os
import pathlib
import subprocess

import numpy as np
import pytest

SOURCES = pathlib.Path(os.environ["SM_SOURCES"])
EXAMPLES = SOURCES / "examples"
# Every kind of display, and every shape of screen.
KINDS = ["closed-cylinder", "cockpit", "collimated", "curved-wall", "cylinder", "dome", "lens-cylinder", "mesh-rays",
         "planar-wall", "spherical-dome", "warped-wall"]


def example(name):
    return EXAMPLES / name / "display.xml"


def program(*arguments):
    """What the program prints."""
    run = subprocess.run([os.environ["SM_PROGRAM"], *map(str, arguments)], capture_output=True, text=True, check=False)
    assert run.returncode in (0, 1), run.stderr
    return run.stdout


def reference(name, columns, *words, rows=None):
    """Rows of doubles from the libraries, which were called without the module."""
    data = b"" if rows is None else np.ascontiguousarray(rows, dtype=np.float64).tobytes()
    run = subprocess.run([os.environ["SM_REFERENCE"], str(example(name)), *map(str, words)], input=data,
                         capture_output=True, check=False)
    assert run.returncode == 0, run.stderr
    return np.frombuffer(run.stdout, dtype=np.float64).reshape(-1, columns)


def assert_same_bits(ours, theirs):
    """Equal to the last bit, NaN included."""
    ours = np.ascontiguousarray(ours, dtype=np.float64)
    theirs = np.ascontiguousarray(theirs, dtype=np.float64)
    assert ours.shape == theirs.shape
    assert np.array_equal(ours.view(np.uint64), theirs.view(np.uint64))


@pytest.fixture
def random():
    """Numbers that are the same in every run."""
    return np.random.default_rng(20260101)
