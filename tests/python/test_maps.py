"""Maps: both ways in bulk as by the library point by point, and whole pictures as the program writes them."""

import csv
import io

import numpy as np
import pytest
import screenmanager

from conftest import KINDS, assert_same_bits, example, program, reference


@pytest.mark.parametrize("name", KINDS)
def test_picture_points_are_mapped_as_by_the_library(name, random):
    picture = random.uniform(-0.1, 1.1, (1500, 2))
    display = screenmanager.Display.load(example(name))
    for index, channel in enumerate(display.channels[:2]):
        theirs = reference(name, 4, "to-layout", index, rows=picture)
        ours = channel.to_layout(picture)
        mapped = theirs[:, 3] == 1
        # What the map leaves to its callers, points that are not finite, are none here.
        mapped &= np.isfinite(theirs[:, :3]).all(axis=1)
        assert np.array_equal(ours.mask, mapped) and mapped.any()
        assert_same_bits(ours.points[mapped], theirs[mapped, :3])
        assert np.isnan(ours.points[~mapped]).all()


@pytest.mark.parametrize("name", [kind for kind in KINDS if kind != "collimated"])
def test_layout_points_are_mapped_as_by_the_library(name, random):
    display = screenmanager.Display.load(example(name))
    channel = display.channels[0]
    places = channel.to_layout(random.uniform(0, 1, (300, 2)))
    points = np.concatenate([places.points[places.mask], random.normal(0, 2, (50, 3))])
    theirs = reference(name, 3, "from-layout", 0, rows=points)
    ours = channel.from_layout(points)
    assert np.array_equal(ours.mask, theirs[:, 2] == 1) and ours.mask.any()
    assert_same_bits(ours.places[ours.mask], theirs[ours.mask, :2])
    assert np.isnan(ours.places[~ours.mask]).all()


def test_a_collimated_display_remembers_pixels_without_any_effect_on_them():
    channel = screenmanager.Display.load(example("collimated")).channels[0]
    points = channel.to_layout([(0.5, 0.5), (0.25, 0.75)]).points
    plain, remembered = channel.from_layout(points), channel.from_layout(points, cache=True)
    assert plain.mask.all()
    assert_same_bits(plain.places, remembered.places)


@pytest.mark.parametrize("name", ["planar-wall", "spherical-dome", "warped-wall", "mesh-rays", "lens-cylinder"])
def test_places_on_the_screen_are_those_that_the_program_prints(name, tmp_path, random):
    channel = screenmanager.Display.load(example(name)).channels[0]
    picture = random.uniform(-0.05, 1.05, (200, 2))
    (tmp_path / "points.csv").write_text("".join(f"{float(u)!r},{float(v)!r}\n" for u, v in picture))
    printed = program("map", example(name), "--quiet", "--channel", channel.id, "--xyz", "screen", "--points",
                      tmp_path / "points.csv")
    rows = list(csv.DictReader(line for line in io.StringIO(printed) if not line.startswith("#")))
    ours = channel.to_screen(picture)
    assert [row["mapped"] == "1" for row in rows] == ours.mask.tolist()
    theirs = [[float(row[axis]) for axis in "xyz"] for row in rows if row["mapped"] == "1"]
    assert_same_bits(ours.points[ours.mask], theirs)


@pytest.mark.parametrize("name", KINDS)
def test_the_way_back_from_the_screen_leads_to_the_same_place(name, random):
    channel = screenmanager.Display.load(example(name)).channels[0]
    picture = random.uniform(0.05, 0.95, (40, 2))
    there = channel.to_screen(picture)
    back = channel.from_screen(there.points[there.mask])
    assert back.mask.sum() > 0.9 * there.mask.sum() > 0
    # Fractions of a pixel; a picture may lie twice on the same place of a screen.
    distance = np.abs(back.places[back.mask] - picture[there.mask][back.mask]).max(axis=1)
    assert np.median(distance) < 1e-4


@pytest.mark.parametrize("name", ["planar-wall", "spherical-dome", "mesh-rays"])
def test_a_whole_picture_is_made_of_the_middles_of_its_pixels(name):
    display = screenmanager.Display.load(example(name))
    channel = display.channels[0]
    channel.resolution = (97, 61)
    whole = channel.layout_picture()
    assert whole.points.shape == (61, 97, 3) and whole.mask.shape == (61, 97)
    u, v = np.meshgrid((np.arange(97) + 0.5) / 97, (np.arange(61) + 0.5) / 61)
    points = channel.to_layout(np.stack([u, v], axis=-1))
    assert_same_bits(whole.points, points.points)
    assert np.array_equal(whole.mask, points.mask)
    assert_same_bits(channel.screen_picture().points, channel.to_screen(np.stack([u, v], axis=-1)).points)


def test_row_0_is_the_bottom_of_the_picture():
    channel = screenmanager.Display.load(example("planar-wall")).channels[0]
    channel.resolution = (8, 6)
    z = channel.screen_picture().points[:, :, 2]
    x = channel.screen_picture().points[:, :, 0]
    assert (np.diff(z, axis=0) > 0).all() and (np.diff(x, axis=1) > 0).all()


@pytest.mark.parametrize(("name", "panorama"), [("planar-wall", "fisheye"), ("spherical-dome", "fisheye"),
                                                ("spherical-dome", "equirectangular"), ("warped-wall", "fisheye")])
def test_a_warp_is_the_one_that_the_program_writes(name, panorama, tmp_path):
    channel = screenmanager.Display.load(example(name)).channels[0]
    mesh = tmp_path / "warp.txt"
    options = ["--input", panorama] if name == "spherical-dome" else []
    program("map", example(name), "--quiet", "--channel", channel.id, "--grid", "--nodes", "17x11", "--format", "mesh",
            "-o", mesh, *options)
    lines = mesh.read_text().splitlines()
    assert lines[1] == "17 11"
    nodes = np.array([[float(word) for word in line.split()] for line in lines[2:2 + 17 * 11]]).reshape(11, 17, 5)
    ours = channel.warp(panorama, nodes=(17, 11))
    # The program leaves out samples at the seam of a panorama.
    used = nodes[:, :, 4] >= 0
    assert used.any() and ours.mask[used].all()
    assert_same_bits(ours.places[used], nodes[used][:, 2:4])


def test_a_warp_has_one_place_per_pixel_without_nodes():
    channel = screenmanager.Display.load(example("spherical-dome")).channels[0]
    channel.resolution = (40, 30)
    warp = channel.warp()
    assert warp.places.shape == (30, 40, 2) and warp.mask.any()
    assert np.nanmin(warp.places) >= 0 and np.nanmax(warp.places) <= 1
    with pytest.raises(screenmanager.ArgumentError, match="panorama: expected fisheye or equirectangular, found x"):
        channel.warp("x")
    with pytest.raises(screenmanager.ArgumentError, match="nodes: expected two columns"):
        channel.warp(nodes=(1, 5))


def test_maps_follow_what_is_set():
    display = screenmanager.Display.load(example("mesh-rays"))
    channel = display.channels[0]
    before = channel.to_screen((0.5, 0.5)).points
    channel.position = (-0.5, 0.25, 1.3)
    after = channel.to_screen((0.5, 0.5)).points
    assert np.linalg.norm(after - before) > 0.01
    channel.position = (-0.6, 0, 1.2)
    assert_same_bits(channel.to_screen((0.5, 0.5)).points, before)


def test_maps_follow_a_screen_that_is_set():
    display = screenmanager.Display.load(example("spherical-dome"))
    channel = display.channels[0]
    channel.to_layout((0.5, 0.5))
    display.screen.radius = 6
    point = channel.to_layout((0.5, 0.5)).points
    assert np.linalg.norm(point - display.screen.centre) == pytest.approx(6, abs=1e-9)


def test_what_a_map_lacks_is_named():
    display = screenmanager.Display.load(example("planar-wall"))
    channel = display.channels[0]
    channel.layout = (1, 1, 0, 1)
    with pytest.raises(screenmanager.Error, match="channel Upper left .*: its layout rectangle has no extent"):
        channel.to_layout((0.5, 0.5))
