"""Targets and outlines are those that the program prints, to the last digit."""

import csv
import io
import json

import numpy as np
import pytest
import screenmanager

from conftest import KINDS, assert_same_bits, example, program, reference


@pytest.mark.parametrize("name", KINDS)
def test_targets_are_those_that_the_program_prints(name):
    printed = json.loads(program("targets", example(name), "--quiet", "--format", "json", "--grid",
                                 "7x5", "--boundary", "4"))
    ours = screenmanager.Display.load(example(name)).targets(7, 5, 4)
    assert len(printed["channels"]) == len(ours) > 0
    for theirs, channel in zip(printed["channels"], ours):
        assert (channel.name, channel.id) == (theirs["name"], theirs["projector"])
        assert channel.points.shape == (5, 7, 3) and channel.mask.sum() == len(theirs["grid"]) > 0
        for target in theirs["grid"]:
            at = target["row"], target["column"]
            assert channel.mask[at]
            assert_same_bits(channel.points[at], target["point"])
            assert_same_bits(channel.picture[at], (target["u"], target["v"]))
        assert np.isnan(channel.points[~channel.mask]).all()
        assert_same_bits(channel.outline, theirs["boundary"])
        assert channel.outline_missed == theirs["missed"]["boundary"]


@pytest.mark.parametrize("name", KINDS)
def test_outlines_are_those_of_the_locators(name):
    for index, channel in enumerate(screenmanager.Display.load(example(name)).targets(4, 3, 6)):
        assert_same_bits(channel.outline, reference(name, 3, "outline", index, 6))


@pytest.mark.parametrize("name", KINDS)
def test_an_outline_with_a_mask_lies_where_light_arrives(name):
    display = screenmanager.Display.load(example(name))
    outline = display.channels[0].outline(5)
    assert outline.picture.shape == (20, 2) and outline.points.shape == (20, 3) and outline.mask.shape == (20,)
    # On the edges of the picture, once around.
    assert (np.isin(outline.picture[:, 0], (0, 1)) | np.isin(outline.picture[:, 1], (0, 1))).all()
    assert len(np.unique(outline.picture, axis=0)) == 20
    assert outline.mask.any() and np.isnan(outline.points[~outline.mask]).all()
    assert_same_bits(outline.points, display.channels[0].to_screen(outline.picture).points)


def test_targets_that_miss_the_screen_are_masked():
    display = screenmanager.Display.load(example("lens-cylinder"))
    channels = {channel.name: channel for channel in display.targets(9, 9)}
    missed = [channel for channel in channels.values() if not channel.mask.all()]
    assert missed, "the centre projector passes above the wall"
    for channel in missed:
        assert np.isnan(channel.points[~channel.mask]).all() and np.isfinite(channel.points[channel.mask]).all()


def test_a_channel_that_cannot_be_placed_keeps_its_fault_to_itself():
    display = screenmanager.Display.load(example("planar-wall"))
    display.channels[0].screen_area = (2, 3, 2, 3)
    targets = display.targets(4, 3)
    assert "outside the screen" in targets[0].fault and not targets[0].mask.any()
    assert all(channel.fault == "" and channel.mask.all() for channel in targets[1:])


@pytest.mark.parametrize(("arguments", "text"), [
    ((0, 3), "columns: expected 1 to 10000, found 0"),
    ((3, -1), "rows: expected 1 to 10000, found -1"),
    ((3, 3, 20000), "samples_per_edge: expected 1 to 10000, found 20000"),
    ((2001, 2000), "columns, rows: expected 4000000 targets of a channel at most, found 2001 x 2000"),
    ((2.5, 3), "columns: expected a whole number, found float"),
    (("4", 3), "columns: expected a whole number, found str"),
])
def test_counts_are_whole_numbers_in_a_range(arguments, text):
    with pytest.raises(screenmanager.Error, match=text):
        screenmanager.Display.load(example("dome")).targets(*arguments)


def test_targets_follow_what_is_set():
    display = screenmanager.Display.load(example("mesh-rays"))
    before = display.targets(4, 3)[0].points
    display.channels[0].orientation = (-0.4, 0, 0)
    after = display.targets(4, 3)[0].points
    assert not np.allclose(before, after, equal_nan=True)
    table = program("targets", example("mesh-rays"), "--quiet", "--grid", "4x3")
    rows = list(csv.DictReader(line for line in io.StringIO(table) if not line.startswith("#")))
    assert len(rows) > 0 and "x" in rows[0]
